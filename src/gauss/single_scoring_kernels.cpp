// Kernels of the single-observation scores. The order of additions is part
// of each result: the twins of a pair share one body and differ only in
// their loads, so they agree bit for bit, and the tests reproduce the order
// in scalar code.
#include "base/simd.h"
#include "gauss/gauss.h"

namespace {

using qelsr::simd::loadpd;
using qelsr::simd::loadps;
using qelsr::simd::storepd;
using qelsr::simd::storeps;

// Lane L of x, in every lane.
template <int L>
inline __m128 laneOf(__m128 x) {
  return _mm_shuffle_ps(x, x, _MM_SHUFFLE(L, L, L, L));
}

// (t0 + t1) + (t2 + t3) in lane 0.
inline __m128 foldAdjacent(__m128 t) {
  const __m128 h = _mm_add_ps(t, _mm_shuffle_ps(t, t, _MM_SHUFFLE(2, 3, 0, 1)));
  return _mm_add_ss(h, _mm_movehl_ps(h, h));
}

// (t0 + t2) + (t1 + t3) in lane 0.
inline __m128 foldHalves(__m128 t) {
  const __m128 h = _mm_add_ps(t, _mm_movehl_ps(t, t));
  return _mm_add_ss(h, _mm_shuffle_ps(h, h, _MM_SHUFFLE(1, 1, 1, 1)));
}

enum class SingleForm { Weighted, Identity, Distance };

// The one body of the single kernels. Weighted and Identity keep a negative
// sum so that one multiplication by 0.5 ends the score; Distance keeps a
// positive one. Two accumulators keep two dependency chains in flight.
template <SingleForm Form, bool Aligned>
inline void singleBody(const float* pSrc, const float* pMean, const float* pVar, int len,
                       float* pResult, const float* pVal) {
  auto term = [&](int i) {
    const __m128 d = _mm_sub_ps(loadps<Aligned>(pSrc + i), loadps<Aligned>(pMean + i));
    const __m128 dd = _mm_mul_ps(d, d);
    if constexpr (Form == SingleForm::Identity)
      return dd;
    else
      return _mm_mul_ps(dd, loadps<Aligned>(pVar + i));
  };
  auto into = [](__m128 acc, __m128 x) {
    if constexpr (Form == SingleForm::Distance)
      return _mm_add_ps(acc, x);
    else
      return _mm_sub_ps(acc, x);
  };
  auto intoLane0 = [](__m128 acc, __m128 x) {
    if constexpr (Form == SingleForm::Distance)
      return _mm_add_ss(acc, x);
    else
      return _mm_sub_ss(acc, x);
  };
  __m128 a = _mm_setzero_ps();
  __m128 b = _mm_setzero_ps();
  int i = 0;
  for (; i + 16 <= len; i += 16) {
    a = into(a, term(i));
    a = into(a, term(i + 4));
    b = into(b, term(i + 8));
    b = into(b, term(i + 12));
  }
  if (i + 8 <= len) {
    a = into(a, term(i));
    a = into(a, term(i + 4));
    i += 8;
  }
  // The last len mod 8 terms go to lane 0 one at a time. Their products are
  // formed four at a time where the data allow it (the last partial vector
  // is read so that it ends at len, with unaligned loads); only the chain
  // of subtractions stays serial.
  auto tailTerm = [&](int at) {
    const __m128 d = _mm_sub_ps(_mm_loadu_ps(pSrc + at), _mm_loadu_ps(pMean + at));
    const __m128 dd = _mm_mul_ps(d, d);
    if constexpr (Form == SingleForm::Identity)
      return dd;
    else
      return _mm_mul_ps(dd, _mm_loadu_ps(pVar + at));
  };
  if (len >= 4) {
    if (len - i >= 4) {
      const __m128 x = tailTerm(i);
      a = intoLane0(a, x);
      a = intoLane0(a, laneOf<1>(x));
      a = intoLane0(a, laneOf<2>(x));
      a = intoLane0(a, laneOf<3>(x));
      i += 4;
    }
    if (i < len) {
      const __m128 x = tailTerm(len - 4);
      switch (len - i) {
        case 3:
          a = intoLane0(a, laneOf<1>(x));
          [[fallthrough]];
        case 2:
          a = intoLane0(a, laneOf<2>(x));
          [[fallthrough]];
        default:
          a = intoLane0(a, laneOf<3>(x));
          break;
      }
    }
  } else {
    for (; i < len; ++i) {
      const float d = pSrc[i] - pMean[i];
      float x = d * d;
      if constexpr (Form != SingleForm::Identity) x = x * pVar[i];
      a = intoLane0(a, _mm_set_ss(x));
    }
  }
  const __m128 t = _mm_add_ps(a, b);
  if constexpr (Form == SingleForm::Weighted) {
    const float s = _mm_cvtss_f32(foldAdjacent(t));
    *pResult = (s + 2.0f * *pVal) * 0.5f;
  } else {
    const float s = _mm_cvtss_f32(foldHalves(t));
    if constexpr (Form == SingleForm::Identity)
      *pResult = (s + 2.0f * *pVal) * 0.5f;
    else
      *pResult = s;
  }
}

enum class DoubleForm { DirectVar, Identity, Distance };

// The one body of the double kernels: vectors 0 and 2 of a group of 8 go to
// p, 1 and 3 to q; after the fold the remainder is added element by element.
template <DoubleForm Form, bool Aligned>
inline double doubleSum(const double* pSrc, const double* pMean, const double* pVar, int len) {
  auto term = [&](int i) {
    const __m128d d = _mm_sub_pd(loadpd<Aligned>(pSrc + i), loadpd<Aligned>(pMean + i));
    const __m128d dd = _mm_mul_pd(d, d);
    if constexpr (Form == DoubleForm::Identity)
      return dd;
    else if constexpr (Form == DoubleForm::DirectVar)
      return _mm_div_pd(dd, loadpd<Aligned>(pVar + i));
    else
      return _mm_mul_pd(dd, loadpd<Aligned>(pVar + i));
  };
  __m128d p = _mm_setzero_pd();
  __m128d q = _mm_setzero_pd();
  int i = 0;
  for (; i + 8 <= len; i += 8) {
    p = _mm_add_pd(p, term(i));
    q = _mm_add_pd(q, term(i + 2));
    p = _mm_add_pd(p, term(i + 4));
    q = _mm_add_pd(q, term(i + 6));
  }
  const __m128d t = _mm_add_pd(p, q);
  double s = _mm_cvtsd_f64(t) + _mm_cvtsd_f64(_mm_unpackhi_pd(t, t));
  for (; i < len; ++i) {
    const double d = pSrc[i] - pMean[i];
    const double dd = d * d;
    if constexpr (Form == DoubleForm::Identity)
      s = s + dd;
    else if constexpr (Form == DoubleForm::DirectVar)
      s = s + dd / pVar[i];
    else
      s = s + dd * pVar[i];
  }
  return s;
}

template <bool Aligned>
inline void meanVarAcc64(const double* pSrc, const double* pMean, double* pMeanAcc, double* pVarAcc,
                         int len, const double* pVal) {
  const __m128d v = _mm_set1_pd(*pVal);
  int i = 0;
  for (; i + 2 <= len; i += 2) {
    const __m128d d = _mm_sub_pd(loadpd<Aligned>(pSrc + i), loadpd<Aligned>(pMean + i));
    const __m128d dv = _mm_mul_pd(d, v);
    storepd<Aligned>(pMeanAcc + i, _mm_add_pd(loadpd<Aligned>(pMeanAcc + i), dv));
    storepd<Aligned>(pVarAcc + i, _mm_add_pd(loadpd<Aligned>(pVarAcc + i), _mm_mul_pd(d, dv)));
  }
  for (; i < len; ++i) {
    const double d = pSrc[i] - pMean[i];
    const double dv = d * *pVal;
    pMeanAcc[i] = pMeanAcc[i] + dv;
    pVarAcc[i] = pVarAcc[i] + d * dv;
  }
}

}  // namespace

extern "C" {

void qelsLGaussSingle_32f_M7(const qel32f* pSrc, const qel32f* pMean, const qel32f* pVar, int len,
                             qel32f* pResult, const qel32f* pVal) {
  singleBody<SingleForm::Weighted, false>(pSrc, pMean, pVar, len, pResult, pVal);
}

void qelsLGaussSingle_32f_M7_Al(const qel32f* pSrc, const qel32f* pMean, const qel32f* pVar,
                                int len, qel32f* pResult, const qel32f* pVal) {
  singleBody<SingleForm::Weighted, true>(pSrc, pMean, pVar, len, pResult, pVal);
}

void qelsLGaussSingle_IdVar_32f_M7(const qel32f* pSrc, const qel32f* pMean, int len,
                                   qel32f* pResult, const qel32f* pVal) {
  singleBody<SingleForm::Identity, false>(pSrc, pMean, nullptr, len, pResult, pVal);
}

void qelsLGaussSingle_IdVar_32f_M7_Al(const qel32f* pSrc, const qel32f* pMean, int len,
                                      qel32f* pResult, const qel32f* pVal) {
  singleBody<SingleForm::Identity, true>(pSrc, pMean, nullptr, len, pResult, pVal);
}

void sMahDistSingle_32f_M7(const qel32f* pSrc, const qel32f* pMean, const qel32f* pVar, int len,
                           qel32f* pResult) {
  singleBody<SingleForm::Distance, true>(pSrc, pMean, pVar, len, pResult, nullptr);
}

void sMahAcc_32f_M7(const qel32f* pSrc, const qel32f* pMean, qel32f* pMeanAcc, qel32f* pVarAcc,
                    int len, const qel32f* pVal) {
  const __m128 v = _mm_set1_ps(*pVal);
  int i = 0;
  for (; i + 4 <= len; i += 4) {
    const __m128 d = _mm_sub_ps(loadps<false>(pSrc + i), loadps<false>(pMean + i));
    const __m128 dv = _mm_mul_ps(d, v);
    storeps<false>(pMeanAcc + i, _mm_add_ps(loadps<false>(pMeanAcc + i), dv));
    storeps<false>(pVarAcc + i, _mm_add_ps(loadps<false>(pVarAcc + i), _mm_mul_ps(d, dv)));
  }
  for (; i < len; ++i) {
    const float d = pSrc[i] - pMean[i];
    const float dv = d * *pVal;
    pMeanAcc[i] = pMeanAcc[i] + dv;
    pVarAcc[i] = pVarAcc[i] + d * dv;
  }
}

void ownqelsLogGaussSingle_DirectVar_64f_W7(const qel64f* pSrc, const qel64f* pMean,
                                            const qel64f* pVar, int len, qel64f* pResult,
                                            const qel64f* pVal) {
  *pResult = *pVal - doubleSum<DoubleForm::DirectVar, false>(pSrc, pMean, pVar, len) * 0.5;
}

void ownqelsLogGaussSingle_DirectVar_64f_W7Al(const qel64f* pSrc, const qel64f* pMean,
                                              const qel64f* pVar, int len, qel64f* pResult,
                                              const qel64f* pVal) {
  *pResult = *pVal - doubleSum<DoubleForm::DirectVar, true>(pSrc, pMean, pVar, len) * 0.5;
}

void ownqelsLogGaussSingle_IdVar_64f_W7(const qel64f* pSrc, const qel64f* pMean, int len,
                                        qel64f* pResult, const qel64f* pVal) {
  *pResult = *pVal - doubleSum<DoubleForm::Identity, false>(pSrc, pMean, nullptr, len) * 0.5;
}

void ownqelsLogGaussSingle_IdVar_64f_W7Al(const qel64f* pSrc, const qel64f* pMean, int len,
                                          qel64f* pResult, const qel64f* pVal) {
  *pResult = *pVal - doubleSum<DoubleForm::Identity, true>(pSrc, pMean, nullptr, len) * 0.5;
}

void sMahDistSingle_64f_M7(const qel64f* pSrc, const qel64f* pMean, const qel64f* pVar, int len,
                           qel64f* pResult) {
  *pResult = doubleSum<DoubleForm::Distance, false>(pSrc, pMean, pVar, len);
}

void sMahDistSingle_64f_M7_Al(const qel64f* pSrc, const qel64f* pMean, const qel64f* pVar, int len,
                              qel64f* pResult) {
  *pResult = doubleSum<DoubleForm::Distance, true>(pSrc, pMean, pVar, len);
}

void sMeanVarAcc_64f_M7(const qel64f* pSrc, const qel64f* pMean, qel64f* pMeanAcc, qel64f* pVarAcc,
                        int len, const qel64f* pVal) {
  meanVarAcc64<false>(pSrc, pMean, pMeanAcc, pVarAcc, len, pVal);
}

void sMeanVarAcc_64f_M7_Al(const qel64f* pSrc, const qel64f* pMean, qel64f* pMeanAcc,
                           qel64f* pVarAcc, int len, const qel64f* pVal) {
  meanVarAcc64<true>(pSrc, pMean, pMeanAcc, pVarAcc, len, pVal);
}

}  // extern "C"
