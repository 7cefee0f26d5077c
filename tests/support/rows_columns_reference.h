// Plain scalar references of the row and column primitives, one element at
// a time in the fixed order of additions of each member. Rows are given as
// row pointers so the same reference serves both layouts.
#ifndef QELSR_ROWS_COLUMNS_REFERENCE_H
#define QELSR_ROWS_COLUMNS_REFERENCE_H

#include <cmath>
#include <cstdint>
#include <vector>

#include "qelsr.h"

namespace rowref {

template <typename T>
using Rows = std::vector<const T*>;

// val, then the selected rows in the order of i: a plain left-to-right sum.
inline void addNRows(const float* pSrc, int offset, int step, const int* pInd,
                     const unsigned short* pAddInd, int nRows, float* pDst, int width, float val) {
  for (int j = 0; j < width; ++j) {
    float s = val;
    for (int i = 0; i < nRows; ++i)
      s += pSrc[(static_cast<long long>(pAddInd[i]) + pInd[i]) * step + offset + j];
    pDst[j] = s;
  }
}

inline void addAllRowSum(const Rows<float>& rows, float* acc, int width) {
  for (int c = 0; c < width; ++c)
    for (const float* x : rows) acc[c] += x[c];
}

inline qel16s subSat(qel16s a, qel16s b) {
  const int d = int{a} - int{b};
  return static_cast<qel16s>(d > 32767 ? 32767 : (d < -32768 ? -32768 : d));
}

// Four lanes from 0; lane l takes x[8k + l] + x[8k + 4 + l] per group of 8;
// fold (l0 + l1) + (l2 + l3); the rest one at a time. Width 1 copies.
inline float sumRow32f(const float* x, int width) {
  if (width == 1) return x[0];
  float lane[4] = {0.0f, 0.0f, 0.0f, 0.0f};
  int c = 0;
  for (; c + 8 <= width; c += 8)
    for (int l = 0; l < 4; ++l) lane[l] += x[c + l] + x[c + 4 + l];
  float s = (lane[0] + lane[1]) + (lane[2] + lane[3]);
  for (; c < width; ++c) s += x[c];
  return s;
}

// Two lanes; per group of 8: += x[8k + l] + x[8k + 2 + l], then
// += x[8k + 4 + l] + x[8k + 6 + l]; fold l0 + l1; the rest one at a time.
inline double sumRow64f(const double* x, int width) {
  double lane[2] = {0.0, 0.0};
  int c = 0;
  for (; c + 8 <= width; c += 8) {
    for (int l = 0; l < 2; ++l) lane[l] += x[c + l] + x[c + 2 + l];
    for (int l = 0; l < 2; ++l) lane[l] += x[c + 4 + l] + x[c + 6 + l];
  }
  double s = lane[0] + lane[1];
  for (; c < width; ++c) s += x[c];
  return s;
}

// Pair sums exact in 32 bits, converted to single; per group of 16 the two
// vectors of 4 pair sums in element order; per group of 4 of the rest its
// two pair sums to lanes 0 and 1; fold (l0 + l2) + (l1 + l3); the rest one
// at a time after conversion.
inline float sumRow16s32f(const qel16s* x, int width) {
  auto pair = [&](int i) { return static_cast<float>(int{x[i]} + int{x[i + 1]}); };
  float lane[4] = {0.0f, 0.0f, 0.0f, 0.0f};
  int c = 0;
  for (; c + 16 <= width; c += 16) {
    for (int l = 0; l < 4; ++l) lane[l] += pair(c + 2 * l);
    for (int l = 0; l < 4; ++l) lane[l] += pair(c + 8 + 2 * l);
  }
  for (; c + 4 <= width; c += 4) {
    lane[0] += pair(c);
    lane[1] += pair(c + 2);
  }
  float s = (lane[0] + lane[2]) + (lane[1] + lane[3]);
  for (; c < width; ++c) s += static_cast<float>(x[c]);
  return s;
}

// Rows in pairs: row0 + row1, then each later pair summed first, an odd
// last row alone. Height 1 copies.
template <typename T>
inline T sumColumn(const Rows<T>& rows, int c) {
  const int height = static_cast<int>(rows.size());
  if (height == 1) return rows[0][c];
  T s = rows[0][c] + rows[1][c];
  int r = 2;
  for (; r + 2 <= height; r += 2) s += rows[r][c] + rows[r + 1][c];
  if (r < height) s += rows[r][c];
  return s;
}

// Groups of up to four rows from row 0, each exact in 32 bits, converted
// and accumulated in single.
inline float sumColumn16s32f(const Rows<qel16s>& rows, int c) {
  const int height = static_cast<int>(rows.size());
  float s = 0.0f;
  for (int g = 0; g < height; g += 4) {
    int group = 0;
    for (int r = g; r < g + 4 && r < height; ++r) group += rows[r][c];
    s += static_cast<float>(group);
  }
  return s;
}

// round(sum * 2^-scaleFactor), ties to even, saturated to 32 bits. The
// product is exact in double for the factors used in tests.
inline qel32s scaleRound(float sum, int scaleFactor) {
  const double v = std::ldexp(static_cast<double>(sum), -scaleFactor);
  if (v >= 2147483648.0) return INT32_MAX;
  if (v <= -2147483648.0) return INT32_MIN;
  return static_cast<qel32s>(std::nearbyint(v));
}

}  // namespace rowref

#endif
