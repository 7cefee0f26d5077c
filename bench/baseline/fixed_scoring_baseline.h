// Plain scalar loops that score 16-bit rows against one 16-bit diagonal
// Gaussian, as a user would write them: the yardstick for the fixed-point
// block scores.
#ifndef QELSR_BENCH_FIXED_SCORING_BASELINE_H
#define QELSR_BENCH_FIXED_SCORING_BASELINE_H

#include <cstdint>

// dst[r] = val - (sum(d*d*var) >> (scaleFactor + 1)), d = x - mean saturated
// to 16 bits, the sum in 64-bit integers, the result saturated to 32 bits.
void baselineLogGauss16s32s(const int16_t* pSrc, int step, const int16_t* pMean,
                            const int16_t* pVar, int width, int32_t* pDst, int height, int32_t val,
                            int scaleFactor);

// dst[r] = val - sum(d*d*var) * scale, the sum in 64-bit integers.
void baselineLogGaussScaled16s32f(const int16_t* pSrc, int step, const int16_t* pMean,
                                  const int16_t* pVar, int width, float* pDst, int height,
                                  float val, float scale);

#endif
