// Integer rescaling to 16 bits by a power of two, shared by the 32-bit to
// 16-bit conversion and the 16-bit product.
#ifndef QELSR_INT_RESCALE_H
#define QELSR_INT_RESCALE_H

#include <cstdint>

#include "qelsr.h"
#include "simd.h"

namespace qelsr {

inline qel16s saturate16(int64_t v) {
  return static_cast<qel16s>(v < -32768 ? -32768 : (v > 32767 ? 32767 : v));
}

// A positive factor s (1..31) rounds to nearest even: x + 2^(s-1) - 1 +
// ((x >> s) & 1), shifted right by s in a width that cannot wrap, then
// saturated. A negative one (-1..-15) saturates, shifts left and saturates
// again. Zero only saturates.
inline qel16s rescale16(int32_t x, int s) {
  if (s > 0) {
    const int64_t t = static_cast<int64_t>(x) + (int64_t{1} << (s - 1)) - 1 + ((x >> s) & 1);
    return saturate16(t >> s);
  }
  if (s < 0) return saturate16(static_cast<int32_t>(saturate16(x)) * (1 << -s));
  return saturate16(x);
}

// The same on eight 32-bit lanes (x0 then x1) to eight 16-bit lanes. The
// lanes split x into q = x >> s and its low s bits r; the rounded result is
// q + ((r + 2^(s-1) - 1 + (q & 1)) >> s), whose inner sum stays below 2^32
// and so is formed without a wider type.
inline __m128i rescale16(__m128i x0, __m128i x1, int s) {
  if (s > 0) {
    const __m128i count = _mm_cvtsi32_si128(s);
    const __m128i low = _mm_set1_epi32(static_cast<int32_t>((uint32_t{1} << s) - 1));
    const __m128i bias = _mm_set1_epi32(static_cast<int32_t>((uint32_t{1} << (s - 1)) - 1));
    const __m128i one = _mm_set1_epi32(1);
    auto round = [&](__m128i x) {
      const __m128i q = _mm_sra_epi32(x, count);
      const __m128i t =
          _mm_add_epi32(_mm_add_epi32(_mm_and_si128(x, low), bias), _mm_and_si128(q, one));
      return _mm_add_epi32(q, _mm_srl_epi32(t, count));
    };
    return _mm_packs_epi32(round(x0), round(x1));
  }
  if (s < 0) {
    const __m128i count = _mm_cvtsi32_si128(-s);
    const __m128i y = _mm_packs_epi32(x0, x1);
    const __m128i lo = _mm_srai_epi32(_mm_unpacklo_epi16(y, y), 16);
    const __m128i hi = _mm_srai_epi32(_mm_unpackhi_epi16(y, y), 16);
    return _mm_packs_epi32(_mm_sll_epi32(lo, count), _mm_sll_epi32(hi, count));
  }
  return _mm_packs_epi32(x0, x1);
}

}  // namespace qelsr

#endif
