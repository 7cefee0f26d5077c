// Plain scalar logarithm loops, as a user would write them with the math
// library: the yardstick of the library's logarithm kernels.
#ifndef QELSR_BASE_LOG_BASELINE_H
#define QELSR_BASE_LOG_BASELINE_H

namespace baseline {

// srcDst[i] = std::log(srcDst[i])
void ln32f(float* srcDst, int len);
// sum of std::log(src[i]), accumulated in single precision
float sumLn32f(const float* src, int len);

}  // namespace baseline

#endif
