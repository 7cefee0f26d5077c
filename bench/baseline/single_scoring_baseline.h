// Plain scalar single-observation scores, as a user would write them: the
// yardstick of the library's kernels.
#ifndef QELSR_SINGLE_SCORING_BASELINE_H
#define QELSR_SINGLE_SCORING_BASELINE_H

namespace baseline {

// val - 0.5 * sum((src - mean)^2 * invVar)
float logGaussSingle(const float* src, const float* mean, const float* invVar, int len, float val);
// sum((src - mean)^2 * invVar)
float mahDistSingle(const float* src, const float* mean, const float* invVar, int len);

}  // namespace baseline

#endif
