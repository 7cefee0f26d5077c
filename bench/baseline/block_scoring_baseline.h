// Plain scalar loops that score a block of rows against one diagonal
// Gaussian, as a user would write them: the yardstick for the block scores.
#ifndef QELSR_BENCH_BLOCK_SCORING_BASELINE_H
#define QELSR_BENCH_BLOCK_SCORING_BASELINE_H

// dst[r] = val - 0.5 * sum((x - mean)^2 * var) for each row.
void baselineLogGauss32f(const float* pSrc, int step, const float* pMean, const float* pVar,
                         int width, float* pDst, int height, float val);

// dst[r] = max(dst[r], the same score).
void baselineLogGaussMax32f(const float* pSrc, int step, const float* pMean, const float* pVar,
                            int width, float* pDst, int height, float val);

#endif
