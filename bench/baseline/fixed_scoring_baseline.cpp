#include "baseline/fixed_scoring_baseline.h"

#include <cstddef>

namespace {

inline int satDiff(int16_t a, int16_t b) {
  const int d = int(a) - int(b);
  return d > 32767 ? 32767 : (d < -32768 ? -32768 : d);
}

inline int64_t rowSum(const int16_t* x, const int16_t* pMean, const int16_t* pVar, int width) {
  int64_t acc = 0;
  for (int c = 0; c < width; ++c) {
    const int64_t d = satDiff(x[c], pMean[c]);
    acc += d * d * pVar[c];
  }
  return acc;
}

}  // namespace

void baselineLogGauss16s32s(const int16_t* pSrc, int step, const int16_t* pMean,
                            const int16_t* pVar, int width, int32_t* pDst, int height, int32_t val,
                            int scaleFactor) {
  for (int r = 0; r < height; ++r) {
    const int64_t s = rowSum(pSrc + static_cast<ptrdiff_t>(r) * step, pMean, pVar, width);
    const int64_t v = int64_t(val) - (s >> (scaleFactor + 1));
    pDst[r] = v > INT32_MAX ? INT32_MAX : (v < INT32_MIN ? INT32_MIN : int32_t(v));
  }
}

void baselineLogGaussScaled16s32f(const int16_t* pSrc, int step, const int16_t* pMean,
                                  const int16_t* pVar, int width, float* pDst, int height,
                                  float val, float scale) {
  for (int r = 0; r < height; ++r) {
    const int64_t s = rowSum(pSrc + static_cast<ptrdiff_t>(r) * step, pMean, pVar, width);
    pDst[r] = val - static_cast<float>(s) * scale;
  }
}
