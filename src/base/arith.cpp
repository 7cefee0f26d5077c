// Element-wise arithmetic of the base kernels: sums, products, quotients,
// square roots and absolute values, 4 single or 2 double lanes at a time.
#include <cmath>
#include <cstdint>
#include <type_traits>

#include "base.h"
#include "frame/frame.h"
#include "int_rescale.h"
#include "lane_sweep.h"
#include "parallel.h"
#include "simd.h"

namespace {

using qelsr::kScalarBelow;
using qelsr::sweep;

// Below this many elements the 16-bit product stays scalar.
constexpr int kMul16sScalarBelow = 23;

// Lengths from which the long-vector kernels split across two threads.
constexpr int kDiv32fParallelFrom = 4096;
constexpr int kDiv64fParallelFrom = 1024;
constexpr int kSqrt64fParallelFrom = 512;

// Flag bit a stretch reports when it met a zero divisor or a negative root.
constexpr int kMetSpecial = 1;

using qelsr::like;
using qelsr::loadv;
using qelsr::storev;

// dst[i] = op(src[i]); `op` takes a scalar or a vector of lanes.
template <typename T, typename Op>
void mapUnary(const T* pSrc, T* pDst, int len, Op op) {
  sweep<qelsr::kLanes<T>>(
      pDst, len, kScalarBelow, [&](int i) { pDst[i] = op(pSrc[i]); },
      [&](auto al, int i) {
        constexpr bool A = decltype(al)::value;
        storev<A>(pDst + i, op(loadv<A>(pSrc + i)));
      },
      pSrc);
}

// dst[i] = op(a[i], b[i]).
template <typename T, typename Op>
void mapBinary(const T* pA, const T* pB, T* pDst, int len, Op op) {
  sweep<qelsr::kLanes<T>>(
      pDst, len, kScalarBelow, [&](int i) { pDst[i] = op(pA[i], pB[i]); },
      [&](auto al, int i) {
        constexpr bool A = decltype(al)::value;
        storev<A>(pDst + i, op(loadv<A>(pA + i), loadv<A>(pB + i)));
      },
      pA, pB);
}

// pSrcDst[i] = op(pSrcDst[i], pSrc[i]) after the pointer and length checks.
template <typename T, typename Op>
qelStatus intoPlace(const T* pSrc, T* pSrcDst, int len, Op op) {
  if (!pSrc || !pSrcDst) return qelStatusNullPtr;
  if (len < 1) return qelStatusSize;
  mapBinary(pSrcDst, pSrc, pSrcDst, len, op);
  return qelStatusOk;
}

// The copies and clears of the constant shortcuts, by element type.
inline qelStatus copyOf(const qel32f* s, qel32f* d, int n) { return qelsCopy_32f(s, d, n); }
inline qelStatus copyOf(const qel64f* s, qel64f* d, int n) { return qelsCopy_64f(s, d, n); }
inline qelStatus zeroOf(qel32f* d, int n) { return qelsZero_32f(d, n); }
inline qelStatus zeroOf(qel64f* d, int n) { return qelsZero_64f(d, n); }

// The product by a constant after the checks: 1 copies (in place: returns
// at once, NaNs and all), 0 clears, anything else multiplies.
template <typename T>
qelStatus timesConstant(const T* pSrc, T val, T* pDst, int len) {
  if (!pSrc || !pDst) return qelStatusNullPtr;
  if (len < 1) return qelStatusSize;
  if (val == T(1)) return pSrc == pDst ? qelStatusOk : copyOf(pSrc, pDst, len);
  if (val == T(0)) return zeroOf(pDst, len);
  mapUnary(pSrc, pDst, len, [val](auto x) { return x * like<decltype(x)>(val); });
  return qelStatusOk;
}

// Division by a constant: after the checks a zero divisor is an error with
// nothing written; otherwise the reciprocal, formed once, multiplies.
template <typename T>
qelStatus overConstant(const T* pSrc, T val, T* pDst, int len) {
  if (!pSrc || !pDst) return qelStatusNullPtr;
  if (len < 1) return qelStatusSize;
  if (val == T(0)) return qelStatusDivByZero;
  return timesConstant(pSrc, T(1) / val, pDst, len);
}

// ---------------------------------------------------------------- division

// The quotient of a zero divisor: the sign of the zero plays no part, and
// the NaN of a zero or NaN dividend is the library's NaN constant.
inline float zeroDivisorQuotient(float n) {
  if (n > 0.0f) return qelConstantOfINF_32f;
  if (n < 0.0f) return qelConstantOfINF_NEG_32f;
  return qelConstantOfNAN_32f;
}

// n / d from the 12-bit reciprocal estimate r of d, refined once: with
// e = 1 - d*r and q = n*r the quotient is q + e*(q + e*q). Algebraically
// that is (n/d)(1 - e^3); what remains is the rounding of q and e, a few
// units in the last place. The head, the tail and short inputs use the same
// formula one element at a time, so a quotient does not depend on where
// its element falls; only a group with a zero divisor divides exactly.
// The estimate covers normal divisors below about 2^126: a larger divisor
// has a zero estimate and gives 0, a denormal or infinite one gives NaN.
// That range is the price of the estimate and part of the result.
inline float refinedQuotient(float n, float d) {
  const float r = _mm_cvtss_f32(_mm_rcp_ss(_mm_set_ss(d)));
  const float e = 1.0f - d * r;
  const float q = n * r;
  return q + e * (q + e * q);
}

inline __m128 refinedQuotient(__m128 n, __m128 d) {
  const __m128 r = _mm_rcp_ps(d);
  const __m128 e = _mm_sub_ps(_mm_set1_ps(1.0f), _mm_mul_ps(d, r));
  const __m128 q = _mm_mul_ps(n, r);
  return _mm_add_ps(q, _mm_mul_ps(e, _mm_add_ps(q, _mm_mul_ps(e, q))));
}

// pDst[i] = pNum[i] / pDen[i] over one stretch; returns kMetSpecial when a
// divisor was zero.
int divideStretch32f(const float* pDen, const float* pNum, float* pDst, int len) {
  int met = 0;
  sweep<4>(
      pDst, len, kScalarBelow,
      [&](int i) {
        const float d = pDen[i];
        if (d == 0.0f) {
          met = kMetSpecial;
          pDst[i] = zeroDivisorQuotient(pNum[i]);
        } else {
          pDst[i] = refinedQuotient(pNum[i], d);
        }
      },
      [&](auto al, int i) {
        constexpr bool A = decltype(al)::value;
        const __m128 d = loadv<A>(pDen + i);
        if (_mm_movemask_ps(_mm_cmpeq_ps(d, _mm_setzero_ps())) == 0) {
          storev<A>(pDst + i, refinedQuotient(loadv<A>(pNum + i), d));
          return;
        }
        met = kMetSpecial;
        for (int k = i; k < i + 4; ++k) {
          const float dk = pDen[k];
          pDst[k] = dk == 0.0f ? zeroDivisorQuotient(pNum[k]) : pNum[k] / dk;
        }
      },
      pDen, pNum);
  return met;
}

// True division throughout; a zero divisor gives the IEEE result (its sign
// counts here) and is reported.
int divideStretch64f(const double* pDen, const double* pNum, double* pDst, int len) {
  int met = 0;
  sweep<2>(
      pDst, len, kScalarBelow,
      [&](int i) {
        if (pDen[i] == 0.0) met = kMetSpecial;
        pDst[i] = pNum[i] / pDen[i];
      },
      [&](auto al, int i) {
        constexpr bool A = decltype(al)::value;
        const __m128d d = loadv<A>(pDen + i);
        if (_mm_movemask_pd(_mm_cmpeq_pd(d, _mm_setzero_pd())) != 0) met = kMetSpecial;
        storev<A>(pDst + i, _mm_div_pd(loadv<A>(pNum + i), d));
      },
      pDen, pNum);
  return met;
}

// Correctly rounded roots; a negative element (not -0) becomes the
// hardware's NaN and is reported.
int sqrtStretch64f(double* pSrcDst, int len) {
  int met = 0;
  sweep<2>(
      pSrcDst, len, kScalarBelow,
      [&](int i) {
        const double x = pSrcDst[i];
        if (x < 0.0) met = kMetSpecial;
        pSrcDst[i] = _mm_cvtsd_f64(_mm_sqrt_sd(_mm_setzero_pd(), _mm_set_sd(x)));
      },
      [&](auto al, int i) {
        constexpr bool A = decltype(al)::value;
        const __m128d x = loadv<A>(pSrcDst + i);
        if (_mm_movemask_pd(_mm_cmplt_pd(x, _mm_setzero_pd())) != 0) met = kMetSpecial;
        storev<A>(pSrcDst + i, _mm_sqrt_pd(x));
      },
      pSrcDst);
  return met;
}

// ---------------------------------------------------------------- 16-bit product

// 32-bit products of eight 16-bit lanes, rescaled to 16 bits by `s`.
template <typename Rescale>
void multiply16s(const qel16s* pA, const qel16s* pB, qel16s* pDst, int len, Rescale rescale) {
  sweep<8>(
      pDst, len, kMul16sScalarBelow,
      [&](int i) { pDst[i] = rescale(static_cast<int32_t>(pA[i]) * pB[i]); },
      [&](auto al, int i) {
        constexpr bool A = decltype(al)::value;
        const __m128i a = qelsr::simd::loadsi<A>(pA + i), b = qelsr::simd::loadsi<A>(pB + i);
        const __m128i lo = _mm_mullo_epi16(a, b), hi = _mm_mulhi_epi16(a, b);
        qelsr::simd::storesi<A>(pDst + i,
                                rescale(_mm_unpacklo_epi16(lo, hi), _mm_unpackhi_epi16(lo, hi)));
      },
      pA, pB);
}

// One rescaling per factor class, the factor fixed at compile time where the
// class has one value.
template <int S>
struct FixedFactor {
  qel16s operator()(int32_t p) const { return qelsr::rescale16(p, S); }
  __m128i operator()(__m128i p0, __m128i p1) const { return qelsr::rescale16(p0, p1, S); }
};

struct RuntimeFactor {
  int s;
  qel16s operator()(int32_t p) const { return qelsr::rescale16(p, s); }
  __m128i operator()(__m128i p0, __m128i p1) const { return qelsr::rescale16(p0, p1, s); }
};

// Below -15 every non-zero product saturates by its sign, a zero product
// stays 0.
struct SignSaturation {
  qel16s operator()(int32_t p) const {
    return static_cast<qel16s>(p > 0 ? 32767 : (p < 0 ? -32768 : 0));
  }
  __m128i operator()(__m128i p0, __m128i p1) const {
    const __m128i zero = _mm_setzero_si128();
    auto sat = [&](__m128i p) {
      const __m128i pos = _mm_and_si128(_mm_cmpgt_epi32(p, zero), _mm_set1_epi32(32767));
      const __m128i neg = _mm_and_si128(_mm_cmplt_epi32(p, zero), _mm_set1_epi32(-32768));
      return _mm_or_si128(pos, neg);
    };
    return _mm_packs_epi32(sat(p0), sat(p1));
  }
};

// The quotients over one or two threads; a stretch that met a zero divisor
// makes the call warn.
template <typename T, typename Stretch>
qelStatus divide(const T* pSrc1, const T* pSrc2, T* pDst, int len, int parallelFrom,
                 Stretch stretch) {
  if (!pSrc1 || !pSrc2 || !pDst) return qelStatusNullPtr;
  if (len < 1) return qelStatusSize;
  const int met = qelsr::splitAcrossThreads(len, parallelFrom, [&](int at, int count) {
    return stretch(pSrc1 + at, pSrc2 + at, pDst + at, count);
  });
  return met ? qelStatusWarnDivZero : qelStatusOk;
}

}  // namespace

extern "C" {

qelStatus qelsAdd_32f_I(const qel32f* pSrc, qel32f* pSrcDst, int len) {
  return intoPlace(pSrc, pSrcDst, len, [](auto d, auto s) { return d + s; });
}

qelStatus qelsAdd_64f_I(const qel64f* pSrc, qel64f* pSrcDst, int len) {
  return intoPlace(pSrc, pSrcDst, len, [](auto d, auto s) { return d + s; });
}

qelStatus qelsSub_32f_I(const qel32f* pSrc, qel32f* pSrcDst, int len) {
  return intoPlace(pSrc, pSrcDst, len, [](auto d, auto s) { return d - s; });
}

qelStatus qelsSub_64f_I(const qel64f* pSrc, qel64f* pSrcDst, int len) {
  return intoPlace(pSrc, pSrcDst, len, [](auto d, auto s) { return d - s; });
}

qelStatus qelsAddC_32f(const qel32f* pSrc, qel32f val, qel32f* pDst, int len) {
  if (!pSrc || !pDst) return qelStatusNullPtr;
  if (len < 1) return qelStatusSize;
  if (val == 0.0f) return qelsCopy_32f(pSrc, pDst, len);
  mapUnary(pSrc, pDst, len, [val](auto x) { return x + like<decltype(x)>(val); });
  return qelStatusOk;
}

qelStatus qelsMul_32f(const qel32f* pSrc1, const qel32f* pSrc2, qel32f* pDst, int len) {
  if (!pSrc1 || !pSrc2 || !pDst) return qelStatusNullPtr;
  if (len < 1) return qelStatusSize;
  mapBinary(pSrc1, pSrc2, pDst, len, [](auto a, auto b) { return a * b; });
  return qelStatusOk;
}
qelStatus qelsMul_16s_Sfs(const qel16s* pSrc1, const qel16s* pSrc2, qel16s* pDst, int len,
                          int scaleFactor) {
  if (!pSrc1 || !pSrc2 || !pDst) return qelStatusNullPtr;
  if (len < 1) return qelStatusSize;
  if (scaleFactor > 30) return qelsZero_16s(pDst, len);
  if (scaleFactor == 0)
    multiply16s(pSrc1, pSrc2, pDst, len, FixedFactor<0>{});
  else if (scaleFactor == 1)
    multiply16s(pSrc1, pSrc2, pDst, len, FixedFactor<1>{});
  else if (scaleFactor >= -15)  // 2..30 and -1..-15
    multiply16s(pSrc1, pSrc2, pDst, len, RuntimeFactor{scaleFactor});
  else
    multiply16s(pSrc1, pSrc2, pDst, len, SignSaturation{});
  return qelStatusOk;
}

qelStatus qelsMulC_32f(const qel32f* pSrc, qel32f val, qel32f* pDst, int len) {
  return timesConstant(pSrc, val, pDst, len);
}

qelStatus qelsMulC_64f(const qel64f* pSrc, qel64f val, qel64f* pDst, int len) {
  return timesConstant(pSrc, val, pDst, len);
}

qelStatus qelsMulC_32f_I(qel32f val, qel32f* pSrcDst, int len) {
  return timesConstant<qel32f>(pSrcDst, val, pSrcDst, len);
}

qelStatus qelsMulC_64f_I(qel64f val, qel64f* pSrcDst, int len) {
  return timesConstant<qel64f>(pSrcDst, val, pSrcDst, len);
}

qelStatus qelsDiv_32f(const qel32f* pSrc1, const qel32f* pSrc2, qel32f* pDst, int len) {
  return divide(pSrc1, pSrc2, pDst, len, kDiv32fParallelFrom, divideStretch32f);
}

qelStatus qelsDiv_64f(const qel64f* pSrc1, const qel64f* pSrc2, qel64f* pDst, int len) {
  return divide(pSrc1, pSrc2, pDst, len, kDiv64fParallelFrom, divideStretch64f);
}

qelStatus qelsDiv_32f_I(const qel32f* pSrc, qel32f* pSrcDst, int len) {
  return qelsDiv_32f(pSrc, pSrcDst, pSrcDst, len);
}

qelStatus qelsDivC_32f(const qel32f* pSrc, qel32f val, qel32f* pDst, int len) {
  return overConstant(pSrc, val, pDst, len);
}

qelStatus qelsDivC_64f(const qel64f* pSrc, qel64f val, qel64f* pDst, int len) {
  return overConstant(pSrc, val, pDst, len);
}

qelStatus qelsDivC_32f_I(qel32f val, qel32f* pSrcDst, int len) {
  return overConstant<qel32f>(pSrcDst, val, pSrcDst, len);
}

qelStatus qelsDivC_64f_I(qel64f val, qel64f* pSrcDst, int len) {
  return overConstant<qel64f>(pSrcDst, val, pSrcDst, len);
}

qelStatus qelsSqrt_64f_I(qel64f* pSrcDst, int len) {
  if (!pSrcDst) return qelStatusNullPtr;
  if (len < 1) return qelStatusSize;
  const int met = qelsr::splitAcrossThreads(len, kSqrt64fParallelFrom, [&](int at, int count) {
    return sqrtStretch64f(pSrcDst + at, count);
  });
  return met ? qelStatusWarnSqrtNeg : qelStatusOk;
}

qelStatus qelsAbs_64f(const qel64f* pSrc, qel64f* pDst, int len) {
  if (!pSrc || !pDst) return qelStatusNullPtr;
  if (len < 1) return qelStatusSize;
  mapUnary(pSrc, pDst, len, [](auto x) {
    if constexpr (std::is_same_v<decltype(x), double>)
      return std::bit_cast<double>(std::bit_cast<uint64_t>(x) & 0x7FFFFFFFFFFFFFFFull);
    else
      return _mm_andnot_pd(_mm_set1_pd(-0.0), x);
  });
  return qelStatusOk;
}

}  // extern "C"
