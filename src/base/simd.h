// The vector vocabulary of the kernels: 16-byte SSE registers, with loads
// and stores chosen at compile time so one kernel body serves both twins.
#ifndef QELSR_SIMD_H
#define QELSR_SIMD_H

#include <emmintrin.h>
#include <pmmintrin.h>
#include <tmmintrin.h>
#include <xmmintrin.h>

namespace qelsr::simd {

template <bool Aligned>
inline __m128 loadps(const float* p) {
  if constexpr (Aligned) return _mm_load_ps(p);
  else return _mm_loadu_ps(p);
}

template <bool Aligned>
inline void storeps(float* p, __m128 v) {
  if constexpr (Aligned) _mm_store_ps(p, v);
  else _mm_storeu_ps(p, v);
}

template <bool Aligned>
inline __m128d loadpd(const double* p) {
  if constexpr (Aligned) return _mm_load_pd(p);
  else return _mm_loadu_pd(p);
}

template <bool Aligned>
inline void storepd(double* p, __m128d v) {
  if constexpr (Aligned) _mm_store_pd(p, v);
  else _mm_storeu_pd(p, v);
}

template <bool Aligned>
inline __m128i loadsi(const void* p) {
  if constexpr (Aligned) return _mm_load_si128(static_cast<const __m128i*>(p));
  else return _mm_loadu_si128(static_cast<const __m128i*>(p));
}

template <bool Aligned>
inline void storesi(void* p, __m128i v) {
  if constexpr (Aligned) _mm_store_si128(static_cast<__m128i*>(p), v);
  else _mm_storeu_si128(static_cast<__m128i*>(p), v);
}

}  // namespace qelsr::simd

#endif
