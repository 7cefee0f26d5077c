// A plain scalar mixture likelihood, as a user would write it: the yardstick
// of the library's mixture scores.
#ifndef QELSR_MIXTURE_SCORING_BASELINE_H
#define QELSR_MIXTURE_SCORING_BASELINE_H

namespace baseline {

// log sum_m exp(val[m] - 0.5 * sum_c (src[c] - mean[m][c])^2 * invVar[m][c]),
// the rows of mean and invVar `step` apart. The scores go to `scratch`
// (height elements); the log sum takes the greatest score and adds
// log1p of the sum of the others' exp(score - max).
float logGaussMixture(const float* src, const float* mean, const float* invVar, int height,
                      int step, int width, const float* val, float* scratch);

}  // namespace baseline

#endif
