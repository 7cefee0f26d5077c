// The loop shape shared by the element-wise base kernels: a scalar head up
// to the destination's 16-byte boundary, whole groups of lanes, a scalar
// tail, and short inputs scalar throughout.
#ifndef QELSR_LANE_SWEEP_H
#define QELSR_LANE_SWEEP_H

#include <cstdint>
#include <type_traits>

#include "frame/frame.h"
#include "simd.h"

namespace qelsr {

// Below this many elements the element-wise kernels stay scalar: the head
// and tail would leave too few groups to pay for the set-up.
inline constexpr int kScalarBelow = 11;

// Elements before `dst` reaches a 16-byte boundary, at most `len`. A
// destination that is not even on its element size never gets there; it
// takes no head and runs the unaligned groups.
template <typename T>
inline int headToBoundary(const T* dst, int len) {
  const auto a = reinterpret_cast<std::uintptr_t>(dst);
  if (a % sizeof(T) != 0) return 0;
  const int head = static_cast<int>(((16 - (a & 15)) & 15) / sizeof(T));
  return head < len ? head : len;
}

// Runs scalar(i) over the head, group(std::bool_constant<A>{}, i) over
// whole groups of `Lanes` elements and scalar(i) over the tail; `len` below
// `scalarBelow` runs scalar(i) throughout. A is true when the destination
// and every source in `srcs` are 16-byte aligned at the first group, so the
// group may use aligned loads and stores (the aligned twin).
template <int Lanes, typename TD, typename Scalar, typename Group, typename... Src>
inline void sweep(TD* dst, int len, int scalarBelow, Scalar scalar, Group group,
                  const Src*... srcs) {
  int i = 0;
  if (len >= scalarBelow) {
    const int head = headToBoundary(dst, len);
    for (; i < head; ++i) scalar(i);
    const int end = i + (len - i) / Lanes * Lanes;
    const bool aligned = isAligned16(dst + i) && (isAligned16(srcs + i) && ...);
    if (aligned) {
      for (; i < end; i += Lanes) group(std::true_type{}, i);
    } else {
      for (; i < end; i += Lanes) group(std::false_type{}, i);
    }
  }
  for (; i < len; ++i) scalar(i);
}

// The 16-byte vector of T (4 floats or 2 doubles) and its loads, stores
// and broadcast, overloaded on the element type so that one kernel body
// serves both precisions. GCC's vector types take the arithmetic operators
// lane by lane, so a lambda written with + - * serves scalars and vectors.
template <typename T>
inline constexpr int kLanes = 16 / static_cast<int>(sizeof(T));

template <bool A>
inline __m128 loadv(const float* p) {
  return simd::loadps<A>(p);
}
template <bool A>
inline __m128d loadv(const double* p) {
  return simd::loadpd<A>(p);
}
template <bool A>
inline void storev(float* p, __m128 v) {
  simd::storeps<A>(p, v);
}
template <bool A>
inline void storev(double* p, __m128d v) {
  simd::storepd<A>(p, v);
}

// The scalar `v` in the shape of X: itself, or broadcast to the lanes.
template <typename X, typename T>
inline X like(T v) {
  if constexpr (std::is_same_v<X, T>)
    return v;
  else if constexpr (std::is_same_v<T, float>)
    return _mm_set1_ps(v);
  else
    return _mm_set1_pd(v);
}

// x times `scale` when Scaled, x itself otherwise; scalar or vector.
template <bool Scaled, typename X, typename T>
inline X scaled(X x, T scale) {
  if constexpr (Scaled)
    return x * like<X>(scale);
  else
    return x;
}

}  // namespace qelsr

#endif
