// Plain scalar log-add and log-sum, as a user would write them with the math
// library: the yardstick of the library's log-domain routines.
#ifndef QELSR_LOG_DOMAIN_BASELINE_H
#define QELSR_LOG_DOMAIN_BASELINE_H

namespace baseline {

// srcDst[i] = max + log1p(exp(-|src[i] - srcDst[i]|))
void logAdd32f(const float* src, float* srcDst, int len);
// acc = src[0]; acc = max + log1p(exp(-|acc - src[i]|)) for the rest
float logSum32f(const float* src, int len);

}  // namespace baseline

#endif
