// Scalar references of the block scores, one row at a time, each in the
// fixed order of additions of the path it models, so that results compare
// bit for bit:
//   kernelSum   the kernels (every pass): lane accumulators of 4 (single) or
//               2 (double) columns started by the first vector and fed in
//               column order, folded (l0 + l1) + (l2 + l3) or l0 + l1, then
//               the leftover columns one at a time;
//   scalarScore the wrappers' own loops: 2*val minus the terms in order;
//   addScalarPath the single log-add of the narrow log-adding path, double
//               arithmetic over the single-precision polynomial rows.
// A null `var` means the identity.
#ifndef QELSR_TEST_BLOCK_SCORING_REFERENCE_H
#define QELSR_TEST_BLOCK_SCORING_REFERENCE_H

#include <cmath>

#include "log_add_reference.h"

namespace qtest::blockref {

template <typename T>
inline T term(const T* x, const T* mean, const T* var, int c) {
  const T d = x[c] - mean[c];
  T t = d * d;
  if (var) t = t * var[c];
  return t;
}

template <typename T>
inline T kernelSum(const T* x, const T* mean, const T* var, int width) {
  constexpr int kLanes = 16 / sizeof(T);
  const int vectors = width / kLanes;
  T s = T(0);
  if (vectors > 0) {
    T lane[kLanes];
    for (int l = 0; l < kLanes; ++l) lane[l] = term(x, mean, var, l);
    for (int k = 1; k < vectors; ++k)
      for (int l = 0; l < kLanes; ++l) lane[l] = lane[l] + term(x, mean, var, k * kLanes + l);
    if constexpr (kLanes == 4)
      s = (lane[0] + lane[1]) + (lane[2] + lane[3]);
    else
      s = lane[0] + lane[1];
  }
  for (int c = vectors * kLanes; c < width; ++c) s = s + term(x, mean, var, c);
  return s;
}

template <typename T>
inline T kernelScore(const T* x, const T* mean, const T* var, int width, T val) {
  return (T(2) * val - kernelSum(x, mean, var, width)) * T(0.5);
}

template <typename T>
inline T scalarScore(const T* x, const T* mean, const T* var, int width, T val) {
  T acc = T(2) * val;
  for (int c = 0; c < width; ++c) acc = acc - term(x, mean, var, c);
  return acc * T(0.5);
}

// The greater of score and prior; a NaN in either keeps the prior.
template <typename T>
inline T maxOf(T score, T prior) {
  return score > prior ? score : prior;
}

// Narrow log-adding path: d = prior - score in single, widened and made
// non-positive; below -15.3195879547406 the result is max(m, -4500000);
// else (m + c[10]) + y * Horner(c[0..9]) in double, narrowed.
inline float addScalarPath(float score, float prior) {
  const float diff = prior - score;
  double d = diff;
  const double m = prior > score ? prior : score;
  if (d > 0) d = -d;
  if (d < logref::kMinLogExpFDouble) return static_cast<float>(m > -4500000.0 ? m : -4500000.0);
  const int seg = logref::segmentFInDouble(d);
  const double y = d - logref::kBorderF[seg];
  const double* c = logref::kPF[seg];
  double q = c[0];
  for (int k = 1; k < 10; ++k) q = q * y + c[k];
  return static_cast<float>((m + c[10]) + q * y);
}

// The formula itself in extended precision, for checking the references.
template <typename T>
inline long double exactSum(const T* x, const T* mean, const T* var, int width) {
  long double s = 0;
  for (int c = 0; c < width; ++c) {
    const long double d = static_cast<long double>(x[c]) - mean[c];
    s += d * d * (var ? static_cast<long double>(var[c]) : 1.0L);
  }
  return s;
}

}  // namespace qtest::blockref

#endif
