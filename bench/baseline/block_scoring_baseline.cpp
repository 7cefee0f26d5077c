#include "baseline/block_scoring_baseline.h"

#include <cstddef>

namespace {
inline float rowScore(const float* x, const float* pMean, const float* pVar, int width, float val) {
  float s = 0.0f;
  for (int c = 0; c < width; ++c) {
    const float d = x[c] - pMean[c];
    s += d * d * pVar[c];
  }
  return val - 0.5f * s;
}
}  // namespace

void baselineLogGauss32f(const float* pSrc, int step, const float* pMean, const float* pVar,
                         int width, float* pDst, int height, float val) {
  for (int r = 0; r < height; ++r)
    pDst[r] = rowScore(pSrc + static_cast<std::ptrdiff_t>(r) * step, pMean, pVar, width, val);
}

void baselineLogGaussMax32f(const float* pSrc, int step, const float* pMean, const float* pVar,
                            int width, float* pDst, int height, float val) {
  for (int r = 0; r < height; ++r) {
    const float s = rowScore(pSrc + static_cast<std::ptrdiff_t>(r) * step, pMean, pVar, width, val);
    if (s > pDst[r]) pDst[r] = s;
  }
}
