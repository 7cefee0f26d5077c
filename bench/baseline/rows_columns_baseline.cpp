#include "baseline/rows_columns_baseline.h"

#include <cstddef>

void baselineSumRow32f(const float* pSrc, int width, int step, float* pDst, int height) {
  for (int r = 0; r < height; ++r) {
    const float* x = pSrc + static_cast<std::ptrdiff_t>(r) * step;
    float s = 0.0f;
    for (int c = 0; c < width; ++c) s += x[c];
    pDst[r] = s;
  }
}

void baselineSumRow16s32f(const short* pSrc, int width, int step, float* pDst, int height) {
  for (int r = 0; r < height; ++r) {
    const short* x = pSrc + static_cast<std::ptrdiff_t>(r) * step;
    float s = 0.0f;
    for (int c = 0; c < width; ++c) s += static_cast<float>(x[c]);
    pDst[r] = s;
  }
}

void baselineSumColumn32f(const float* pSrc, int step, int height, float* pDst, int width) {
  for (int c = 0; c < width; ++c) pDst[c] = 0.0f;
  for (int r = 0; r < height; ++r) {
    const float* x = pSrc + static_cast<std::ptrdiff_t>(r) * step;
    for (int c = 0; c < width; ++c) pDst[c] += x[c];
  }
}

void baselineSumColumn16s32f(const short* pSrc, int step, int height, float* pDst, int width) {
  for (int c = 0; c < width; ++c) pDst[c] = 0.0f;
  for (int r = 0; r < height; ++r) {
    const short* x = pSrc + static_cast<std::ptrdiff_t>(r) * step;
    for (int c = 0; c < width; ++c) pDst[c] += static_cast<float>(x[c]);
  }
}
