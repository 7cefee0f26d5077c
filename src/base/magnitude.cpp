// Magnitudes of complex pairs, float and 32-bit integer, with a two-thread
// split for long vectors.
#include <cstdint>
#include <cstring>

#include "base/base.h"
#include "base/parallel.h"
#include "base/simd.h"
#include "frame/frame.h"

namespace {

using qelsr::simd::loadps;
using qelsr::simd::storeps;

constexpr int kParallel32fc = 2048;
constexpr int kParallel32sc = 256;

// Four magnitudes from the squared sums s = re^2 + im^2. From the smallest
// normal number up the result comes from the hardware's reciprocal square
// root estimate r with one refinement step: t = s*r, u = t*r,
// result = (-0.5*t)*(u - 3). Below it (zero and denormal sums, where the
// estimate is useless) a true square root.
inline __m128 magnitudeLanes(__m128 re, __m128 im) {
  const __m128 s = _mm_add_ps(_mm_mul_ps(re, re), _mm_mul_ps(im, im));
  const __m128 r = _mm_rsqrt_ps(s);
  const __m128 t = _mm_mul_ps(s, r);
  const __m128 u = _mm_mul_ps(t, r);
  const __m128 refined =
      _mm_mul_ps(_mm_mul_ps(_mm_set1_ps(-0.5f), t), _mm_sub_ps(u, _mm_set1_ps(3.0f)));
  const __m128 tiny = _mm_cmplt_ps(s, _mm_set1_ps(0x1p-126f));
  return _mm_or_ps(_mm_and_ps(tiny, _mm_sqrt_ps(s)), _mm_andnot_ps(tiny, refined));
}

// Eight floats (four pairs) split into their real and imaginary parts.
inline __m128 magnitudeOfPairs(__m128 a, __m128 b) {
  return magnitudeLanes(_mm_shuffle_ps(a, b, _MM_SHUFFLE(2, 0, 2, 0)),
                        _mm_shuffle_ps(a, b, _MM_SHUFFLE(3, 1, 3, 1)));
}

template <bool Aligned>
void magnitude32fc(const float* pSrc, float* pDst, int len) {
  int i = 0;
  for (; i + 4 <= len; i += 4)
    storeps<Aligned>(pDst + i, magnitudeOfPairs(loadps<Aligned>(pSrc + 2 * i),
                                                loadps<Aligned>(pSrc + 2 * i + 4)));
  if (i < len) {
    // The tail goes through the same lanes, so every element gets the same
    // arithmetic wherever it lies.
    alignas(16) float src[8] = {};
    alignas(16) float dst[4];
    const int rest = len - i;
    std::memcpy(src, pSrc + 2 * i, sizeof(float) * 2 * rest);
    _mm_store_ps(dst, magnitudeOfPairs(_mm_load_ps(src), _mm_load_ps(src + 4)));
    std::memcpy(pDst + i, dst, sizeof(float) * rest);
  }
}

void magnitude32fcSerial(const float* pSrc, float* pDst, int len) {
  if (qelsr::isAligned16(pSrc) && qelsr::isAligned16(pDst))
    magnitude32fc<true>(pSrc, pDst, len);
  else
    magnitude32fc<false>(pSrc, pDst, len);
}

// Two magnitudes of integer pairs in double: sqrt(re^2 + im^2) * scale,
// limited to 2147483647 and rounded to nearest even by the conversion (the
// caller forced the rounding mode).
inline __m128i magnitude32scLanes(__m128i pairs, __m128d scale) {
  const __m128d re = _mm_cvtepi32_pd(_mm_shuffle_epi32(pairs, _MM_SHUFFLE(3, 1, 2, 0)));
  const __m128d im = _mm_cvtepi32_pd(_mm_shuffle_epi32(pairs, _MM_SHUFFLE(2, 0, 3, 1)));
  __m128d v = _mm_sqrt_pd(_mm_add_pd(_mm_mul_pd(re, re), _mm_mul_pd(im, im)));
  v = _mm_min_pd(_mm_mul_pd(v, scale), _mm_set1_pd(2147483647.0));
  return _mm_cvtpd_epi32(v);  // two results in the low lanes
}

// Serial kernel for a stretch of pairs. It runs on whichever thread the
// split gives it, so it sets and restores that thread's rounding mode.
void magnitude32scSerial(const qel32s* pSrc, qel32s* pDst, int len, int scaleFactor) {
  if (scaleFactor > 32) {
    std::memset(pDst, 0, sizeof(qel32s) * static_cast<size_t>(len));
    return;
  }
  if (scaleFactor < -30) {
    for (int i = 0; i < len; ++i)
      pDst[i] = (pSrc[2 * i] != 0 || pSrc[2 * i + 1] != 0) ? INT32_MAX : 0;
    return;
  }
  const unsigned csr = _mm_getcsr();
  const bool force = (csr & _MM_ROUND_MASK) != _MM_ROUND_NEAREST;
  if (force) _mm_setcsr((csr & ~_MM_ROUND_MASK) | _MM_ROUND_NEAREST);
  const __m128d scale = _mm_set1_pd(GetScale_32s64f(scaleFactor));
  int i = 0;
  for (; i + 2 <= len; i += 2)
    _mm_storel_epi64(
        reinterpret_cast<__m128i*>(pDst + i),
        magnitude32scLanes(_mm_loadu_si128(reinterpret_cast<const __m128i*>(pSrc + 2 * i)), scale));
  if (i < len) {
    const __m128i one = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(pSrc + 2 * i));
    pDst[i] = _mm_cvtsi128_si32(magnitude32scLanes(one, scale));
  }
  if (force) _mm_setcsr(csr);
}

}  // namespace

extern "C" {

qelStatus qelsMagnitude_32fc(const qel32f* pSrc, qel32f* pDst, int len) {
  if (pSrc == nullptr || pDst == nullptr) return qelStatusNullPtr;
  if (len < 1) return qelStatusSize;
  qelsr::splitAcrossThreads(len, kParallel32fc, [=](int offset, int count) {
    magnitude32fcSerial(pSrc + 2 * offset, pDst + offset, count);
    return 0;
  });
  return qelStatusOk;
}

qelStatus qelsMagnitude_32sc_Sfs(const qel32s* pSrc, qel32s* pDst, int len, int scaleFactor) {
  if (pSrc == nullptr || pDst == nullptr) return qelStatusNullPtr;
  if (len < 1) return qelStatusSize;
  qelsr::splitAcrossThreads(len, kParallel32sc, [=](int offset, int count) {
    magnitude32scSerial(pSrc + 2 * offset, pDst + offset, count, scaleFactor);
    return 0;
  });
  return qelStatusOk;
}

}  // extern "C"
