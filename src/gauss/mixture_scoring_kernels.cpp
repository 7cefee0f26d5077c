// Kernels of the mixture scores: one observation against many components.
//
// The order of additions is part of every result, so it is fixed here:
//
// 32f, four components per pass. Each component has a 4-lane accumulator;
// the observation is loaded once per group of 4 columns and shared by the
// four components. Columns left over after the groups of 4 go one at a time
// into lane 0. The four accumulators fold with horizontal additions, which
// gives each component (l0 + l1) + (l2 + l3).
//
// 32f, the last one to three components, one at a time: columns in groups
// of 8, where the two products of a group are added to each other before
// they join the accumulator (acc + (t0 + t1)), then a group of 4, then
// single columns into lane 0, and the same horizontal fold.
//
// 64f, two components per pass with a 2-lane accumulator each: columns in
// pairs, an odd last column into lane 0, and a horizontal fold l0 + l1; a
// last odd component alone with the same arithmetic.
//
// The identity-covariance 32f kernel follows the four-row passes of the
// frame-block scores instead, so that a component scores as the same row
// would there: vectors of columns added in column order, the lanes folded,
// and the width mod 4 last columns added after the fold.
//
// Every product is (d * d) * var with d = x - mean, and a score is
// ((v + v) - sum) * 0.5 in the element type.
#include <cstddef>

#include "base/simd.h"
#include "gauss.h"

namespace {

using qelsr::simd::loadpd;
using qelsr::simd::loadps;

// Row access of the two layouts.
template <typename T>
struct RowsD2 {
  const T* mean;
  const T* var;
  std::ptrdiff_t step;
  const T* m(int i) const { return mean + static_cast<std::ptrdiff_t>(i) * step; }
  const T* v(int i) const { return var + static_cast<std::ptrdiff_t>(i) * step; }
};

template <typename T>
struct RowsD2L {
  const T* const* mean;
  const T* const* var;
  const T* m(int i) const { return mean[i]; }
  const T* v(int i) const { return var[i]; }
};

// ---------------------------------------------------------------- 32f sums

// Products of columns c..c+3 (term4) or of column c in lane 0 (term1); the
// variance row is not touched without `Var`.
template <bool Al, bool Var>
inline __m128 term4(__m128 x, const float* mean, const float* var, int c) {
  __m128 d = _mm_sub_ps(x, loadps<Al>(mean + c));
  __m128 t = _mm_mul_ps(d, d);
  if constexpr (Var) t = _mm_mul_ps(t, loadps<Al>(var + c));
  return t;
}

template <bool Var>
inline __m128 term1(__m128 x, const float* mean, const float* var, int c) {
  __m128 d = _mm_sub_ss(x, _mm_load_ss(mean + c));
  __m128 t = _mm_mul_ss(d, d);
  if constexpr (Var) t = _mm_mul_ss(t, _mm_load_ss(var + c));
  return t;
}

// Sums of four components m..m+3 in the lanes of the result: columns 4, 1.
template <bool Al, class Rows>
inline __m128 sums4(const Rows& rows, int m, const float* x, int width) {
  const float* m0 = rows.m(m);
  const float* m1 = rows.m(m + 1);
  const float* m2 = rows.m(m + 2);
  const float* m3 = rows.m(m + 3);
  const float* v0 = rows.v(m);
  const float* v1 = rows.v(m + 1);
  const float* v2 = rows.v(m + 2);
  const float* v3 = rows.v(m + 3);
  __m128 a0 = _mm_setzero_ps(), a1 = _mm_setzero_ps();
  __m128 a2 = _mm_setzero_ps(), a3 = _mm_setzero_ps();
  int c = 0;
  for (; c + 4 <= width; c += 4) {
    const __m128 xa = loadps<Al>(x + c);
    a0 = _mm_add_ps(a0, term4<Al, true>(xa, m0, v0, c));
    a1 = _mm_add_ps(a1, term4<Al, true>(xa, m1, v1, c));
    a2 = _mm_add_ps(a2, term4<Al, true>(xa, m2, v2, c));
    a3 = _mm_add_ps(a3, term4<Al, true>(xa, m3, v3, c));
  }
  for (; c < width; ++c) {
    const __m128 xa = _mm_load_ss(x + c);
    a0 = _mm_add_ss(a0, term1<true>(xa, m0, v0, c));
    a1 = _mm_add_ss(a1, term1<true>(xa, m1, v1, c));
    a2 = _mm_add_ss(a2, term1<true>(xa, m2, v2, c));
    a3 = _mm_add_ss(a3, term1<true>(xa, m3, v3, c));
  }
  return _mm_hadd_ps(_mm_hadd_ps(a0, a1), _mm_hadd_ps(a2, a3));
}

// Sum of one component: columns 8, 4, 1.
template <bool Al, class Rows>
inline float sum1(const Rows& rows, int m, const float* x, int width) {
  const float* mr = rows.m(m);
  const float* vr = rows.v(m);
  __m128 a = _mm_setzero_ps();
  int c = 0;
  for (; c + 8 <= width; c += 8) {
    a = _mm_add_ps(a, _mm_add_ps(term4<Al, true>(loadps<Al>(x + c), mr, vr, c),
                                 term4<Al, true>(loadps<Al>(x + c + 4), mr, vr, c + 4)));
  }
  if (c + 4 <= width) {
    a = _mm_add_ps(a, term4<Al, true>(loadps<Al>(x + c), mr, vr, c));
    c += 4;
  }
  for (; c < width; ++c) a = _mm_add_ss(a, term1<true>(_mm_load_ss(x + c), mr, vr, c));
  a = _mm_hadd_ps(a, a);
  a = _mm_hadd_ps(a, a);
  return _mm_cvtss_f32(a);
}

// The identity-covariance layout of the frame-block passes: vectors of
// columns added in column order (8 a step, then 4), the lanes folded, and
// the width mod 4 last columns added after the fold, one at a time. A pass
// of four components and a single component add in the same order.
template <bool Al, class Rows>
inline __m128 sums4IdVar(const Rows& rows, int m, const float* x, int width) {
  const float* mr[4] = {rows.m(m), rows.m(m + 1), rows.m(m + 2), rows.m(m + 3)};
  __m128 a[4] = {_mm_setzero_ps(), _mm_setzero_ps(), _mm_setzero_ps(), _mm_setzero_ps()};
  int c = 0;
  for (; c + 8 <= width; c += 8) {
    const __m128 xa = loadps<Al>(x + c);
    const __m128 xb = loadps<Al>(x + c + 4);
    for (int k = 0; k < 4; ++k) {
      a[k] = _mm_add_ps(a[k], term4<Al, false>(xa, mr[k], nullptr, c));
      a[k] = _mm_add_ps(a[k], term4<Al, false>(xb, mr[k], nullptr, c + 4));
    }
  }
  if (c + 4 <= width) {
    const __m128 xa = loadps<Al>(x + c);
    for (int k = 0; k < 4; ++k) a[k] = _mm_add_ps(a[k], term4<Al, false>(xa, mr[k], nullptr, c));
    c += 4;
  }
  __m128 s = _mm_hadd_ps(_mm_hadd_ps(a[0], a[1]), _mm_hadd_ps(a[2], a[3]));
  for (; c < width; ++c) {
    const __m128 d =
        _mm_sub_ps(_mm_set1_ps(x[c]), _mm_setr_ps(mr[0][c], mr[1][c], mr[2][c], mr[3][c]));
    s = _mm_add_ps(s, _mm_mul_ps(d, d));
  }
  return s;
}

template <bool Al, class Rows>
inline float sum1IdVar(const Rows& rows, int m, const float* x, int width) {
  const float* mr = rows.m(m);
  __m128 a = _mm_setzero_ps();
  int c = 0;
  for (; c + 4 <= width; c += 4)
    a = _mm_add_ps(a, term4<Al, false>(loadps<Al>(x + c), mr, nullptr, c));
  a = _mm_hadd_ps(a, a);
  float s = _mm_cvtss_f32(_mm_hadd_ps(a, a));
  for (; c < width; ++c) {
    const float d = x[c] - mr[c];
    s = s + d * d;
  }
  return s;
}

// What happens to the sums: the three destinations of the 32f kernels.
struct ScoreInPlace32f {
  float* io;
  template <bool Al>
  void four(int m, __m128 s) const {
    const __m128 v = _mm_loadu_ps(io + m);
    _mm_storeu_ps(io + m, _mm_mul_ps(_mm_sub_ps(_mm_add_ps(v, v), s), _mm_set1_ps(0.5f)));
  }
  void one(int m, float s) const {
    const float v = io[m];
    io[m] = ((v + v) - s) * 0.5f;
  }
};

struct ScoreMax32f {
  const float* val;
  float* dst;
  // maxps keeps its second operand when either is NaN: a NaN score leaves
  // the destination as it was.
  template <bool Al>
  void four(int m, __m128 s) const {
    const __m128 v = loadps<Al>(val + m);
    const __m128 sc = _mm_mul_ps(_mm_sub_ps(_mm_add_ps(v, v), s), _mm_set1_ps(0.5f));
    _mm_storeu_ps(dst + m, _mm_max_ps(sc, _mm_loadu_ps(dst + m)));
  }
  void one(int m, float s) const {
    const float v = val[m];
    const float sc = ((v + v) - s) * 0.5f;
    const float old = dst[m];
    dst[m] = sc > old ? sc : old;
  }
};

struct Distance32f {
  float* dst;
  template <bool Al>
  void four(int m, __m128 s) const {
    _mm_storeu_ps(dst + m, s);
  }
  void one(int m, float s) const { dst[m] = s; }
};

template <bool Al, class Rows, class Op>
inline void mix32f(const Rows& rows, const float* x, int width, const Op& op, int height) {
  int m = 0;
  for (; m + 4 <= height; m += 4) op.template four<Al>(m, sums4<Al>(rows, m, x, width));
  for (; m < height; ++m) op.one(m, sum1<Al>(rows, m, x, width));
}

template <bool Al, class Rows, class Op>
inline void mixIdVar32f(const Rows& rows, const float* x, int width, const Op& op, int height) {
  int m = 0;
  for (; m + 4 <= height; m += 4) op.template four<Al>(m, sums4IdVar<Al>(rows, m, x, width));
  for (; m < height; ++m) op.one(m, sum1IdVar<Al>(rows, m, x, width));
}

// ---------------------------------------------------------------- 64f sums

template <bool Al>
inline __m128d term2(__m128d x, const double* mean, const double* var) {
  const __m128d d = _mm_sub_pd(x, loadpd<Al>(mean));
  return _mm_mul_pd(_mm_mul_pd(d, d), loadpd<Al>(var));
}

inline __m128d termsd(__m128d x, const double* mean, const double* var) {
  const __m128d d = _mm_sub_sd(x, _mm_load_sd(mean));
  return _mm_mul_sd(_mm_mul_sd(d, d), _mm_load_sd(var));
}

// Sums of components m and m+1 in the two lanes of the result.
template <bool Al, class Rows>
inline __m128d sums2(const Rows& rows, int m, const double* x, int width) {
  const double* m0 = rows.m(m);
  const double* m1 = rows.m(m + 1);
  const double* v0 = rows.v(m);
  const double* v1 = rows.v(m + 1);
  __m128d a0 = _mm_setzero_pd(), a1 = _mm_setzero_pd();
  int c = 0;
  for (; c + 2 <= width; c += 2) {
    const __m128d xa = loadpd<Al>(x + c);
    a0 = _mm_add_pd(a0, term2<Al>(xa, m0 + c, v0 + c));
    a1 = _mm_add_pd(a1, term2<Al>(xa, m1 + c, v1 + c));
  }
  if (c < width) {
    const __m128d xa = _mm_load_sd(x + c);
    a0 = _mm_add_sd(a0, termsd(xa, m0 + c, v0 + c));
    a1 = _mm_add_sd(a1, termsd(xa, m1 + c, v1 + c));
  }
  return _mm_hadd_pd(a0, a1);
}

template <bool Al, class Rows>
inline double sum1d(const Rows& rows, int m, const double* x, int width) {
  const double* mr = rows.m(m);
  const double* vr = rows.v(m);
  __m128d a = _mm_setzero_pd();
  int c = 0;
  for (; c + 2 <= width; c += 2) a = _mm_add_pd(a, term2<Al>(loadpd<Al>(x + c), mr + c, vr + c));
  if (c < width) a = _mm_add_sd(a, termsd(_mm_load_sd(x + c), mr + c, vr + c));
  return _mm_cvtsd_f64(_mm_hadd_pd(a, a));
}

struct ScoreInPlace64f {
  double* io;
  template <bool Al>
  void two(int m, __m128d s) const {
    const __m128d v = _mm_loadu_pd(io + m);
    _mm_storeu_pd(io + m, _mm_mul_pd(_mm_sub_pd(_mm_add_pd(v, v), s), _mm_set1_pd(0.5)));
  }
  void one(int m, double s) const {
    const double v = io[m];
    io[m] = ((v + v) - s) * 0.5;
  }
};

struct ScoreMax64f {
  const double* val;
  double* dst;
  template <bool Al>
  void two(int m, __m128d s) const {
    const __m128d v = _mm_loadu_pd(val + m);
    const __m128d sc = _mm_mul_pd(_mm_sub_pd(_mm_add_pd(v, v), s), _mm_set1_pd(0.5));
    _mm_storeu_pd(dst + m, _mm_max_pd(sc, _mm_loadu_pd(dst + m)));
  }
  void one(int m, double s) const {
    const double v = val[m];
    const double sc = ((v + v) - s) * 0.5;
    const double old = dst[m];
    dst[m] = sc > old ? sc : old;
  }
};

struct Distance64f {
  double* dst;
  template <bool Al>
  void two(int m, __m128d s) const {
    _mm_storeu_pd(dst + m, s);
  }
  void one(int m, double s) const { dst[m] = s; }
};

template <bool Al, class Rows, class Op>
inline void mix64f(const Rows& rows, const double* x, int width, const Op& op, int height) {
  int m = 0;
  for (; m + 2 <= height; m += 2) op.template two<Al>(m, sums2<Al>(rows, m, x, width));
  if (m < height) op.one(m, sum1d<Al>(rows, m, x, width));
}

}  // namespace

extern "C" {

// ---------------------------------------------------------------- scores in place

void qelsLGaussMultiMix_32f_D2_M7(const qel32f* pMean, const qel32f* pVar, int step,
                                  const qel32f* pSrc, int width, qel32f* pSrcDst, int height) {
  mix32f<false>(RowsD2<float>{pMean, pVar, step}, pSrc, width, ScoreInPlace32f{pSrcDst}, height);
}

void qelsLGaussMultiMix_32f_D2_M7_Al(const qel32f* pMean, const qel32f* pVar, int step,
                                     const qel32f* pSrc, int width, qel32f* pSrcDst, int height) {
  mix32f<true>(RowsD2<float>{pMean, pVar, step}, pSrc, width, ScoreInPlace32f{pSrcDst}, height);
}

void qelsLGaussMultiMix_32f_D2L_M7(const qel32f* const* ppMean, const qel32f* const* ppVar,
                                   const qel32f* pSrc, int width, qel32f* pSrcDst, int height) {
  mix32f<false>(RowsD2L<float>{ppMean, ppVar}, pSrc, width, ScoreInPlace32f{pSrcDst}, height);
}

void qelsLGaussMultiMix_32f_D2L_M7_Al(const qel32f* const* ppMean, const qel32f* const* ppVar,
                                      const qel32f* pSrc, int width, qel32f* pSrcDst, int height) {
  mix32f<true>(RowsD2L<float>{ppMean, ppVar}, pSrc, width, ScoreInPlace32f{pSrcDst}, height);
}

void qelsLGaussMultiMix_64f_D2_M7(const qel64f* pMean, const qel64f* pVar, int step,
                                  const qel64f* pSrc, int width, qel64f* pSrcDst, int height) {
  mix64f<false>(RowsD2<double>{pMean, pVar, step}, pSrc, width, ScoreInPlace64f{pSrcDst}, height);
}

void qelsLGaussMultiMix_64f_D2_M7_Al(const qel64f* pMean, const qel64f* pVar, int step,
                                     const qel64f* pSrc, int width, qel64f* pSrcDst, int height) {
  mix64f<true>(RowsD2<double>{pMean, pVar, step}, pSrc, width, ScoreInPlace64f{pSrcDst}, height);
}

void qelsLGaussMultiMix_64f_D2L_M7(const qel64f* const* ppMean, const qel64f* const* ppVar,
                                   const qel64f* pSrc, int width, qel64f* pSrcDst, int height) {
  mix64f<false>(RowsD2L<double>{ppMean, ppVar}, pSrc, width, ScoreInPlace64f{pSrcDst}, height);
}

void qelsLGaussMultiMix_64f_D2L_M7_Al(const qel64f* const* ppMean, const qel64f* const* ppVar,
                                      const qel64f* pSrc, int width, qel64f* pSrcDst, int height) {
  mix64f<true>(RowsD2L<double>{ppMean, ppVar}, pSrc, width, ScoreInPlace64f{pSrcDst}, height);
}

// ---------------------------------------------------------------- maximum

void qelsLGaussMaxMultiMix_32f_D2_M7(const qel32f* pMean, const qel32f* pVar, int step,
                                     const qel32f* pSrc, int width, const qel32f* pVal,
                                     qel32f* pSrcDst, int height) {
  mix32f<false>(RowsD2<float>{pMean, pVar, step}, pSrc, width, ScoreMax32f{pVal, pSrcDst}, height);
}

void qelsLGaussMaxMultiMix_32f_D2_M7_Al(const qel32f* pMean, const qel32f* pVar, int step,
                                        const qel32f* pSrc, int width, const qel32f* pVal,
                                        qel32f* pSrcDst, int height) {
  mix32f<true>(RowsD2<float>{pMean, pVar, step}, pSrc, width, ScoreMax32f{pVal, pSrcDst}, height);
}

void qelsLGaussMaxMultiMix_32f_D2L_M7(const qel32f* const* ppMean, const qel32f* const* ppVar,
                                      const qel32f* pSrc, int width, const qel32f* pVal,
                                      qel32f* pSrcDst, int height) {
  mix32f<false>(RowsD2L<float>{ppMean, ppVar}, pSrc, width, ScoreMax32f{pVal, pSrcDst}, height);
}

void qelsLGaussMaxMultiMix_32f_D2L_M7_Al(const qel32f* const* ppMean, const qel32f* const* ppVar,
                                         const qel32f* pSrc, int width, const qel32f* pVal,
                                         qel32f* pSrcDst, int height) {
  mix32f<true>(RowsD2L<float>{ppMean, ppVar}, pSrc, width, ScoreMax32f{pVal, pSrcDst}, height);
}

void qelsLGaussMaxMultiMix_64f_D2_M7(const qel64f* pMean, const qel64f* pVar, int step,
                                     const qel64f* pSrc, int width, const qel64f* pVal,
                                     qel64f* pSrcDst, int height) {
  mix64f<false>(RowsD2<double>{pMean, pVar, step}, pSrc, width, ScoreMax64f{pVal, pSrcDst}, height);
}

void qelsLGaussMaxMultiMix_64f_D2_M7_Al(const qel64f* pMean, const qel64f* pVar, int step,
                                        const qel64f* pSrc, int width, const qel64f* pVal,
                                        qel64f* pSrcDst, int height) {
  mix64f<true>(RowsD2<double>{pMean, pVar, step}, pSrc, width, ScoreMax64f{pVal, pSrcDst}, height);
}

void qelsLGaussMaxMultiMix_64f_D2L_M7(const qel64f* const* ppMean, const qel64f* const* ppVar,
                                      const qel64f* pSrc, int width, const qel64f* pVal,
                                      qel64f* pSrcDst, int height) {
  mix64f<false>(RowsD2L<double>{ppMean, ppVar}, pSrc, width, ScoreMax64f{pVal, pSrcDst}, height);
}

void qelsLGaussMaxMultiMix_64f_D2L_M7_Al(const qel64f* const* ppMean, const qel64f* const* ppVar,
                                         const qel64f* pSrc, int width, const qel64f* pVal,
                                         qel64f* pSrcDst, int height) {
  mix64f<true>(RowsD2L<double>{ppMean, ppVar}, pSrc, width, ScoreMax64f{pVal, pSrcDst}, height);
}

// ---------------------------------------------------------------- distances

void sMahDistMultiMix_32f_D2_M7(const qel32f* pMean, const qel32f* pVar, int step,
                                const qel32f* pSrc, int width, qel32f* pDst, int height) {
  mix32f<false>(RowsD2<float>{pMean, pVar, step}, pSrc, width, Distance32f{pDst}, height);
}

void sMahDistMultiMix_32f_D2_M7_Al(const qel32f* pMean, const qel32f* pVar, int step,
                                   const qel32f* pSrc, int width, qel32f* pDst, int height) {
  mix32f<true>(RowsD2<float>{pMean, pVar, step}, pSrc, width, Distance32f{pDst}, height);
}

void sMahDistMultiMix_32f_D2L_M7(const qel32f* const* ppMean, const qel32f* const* ppVar,
                                 const qel32f* pSrc, int width, qel32f* pDst, int height) {
  mix32f<false>(RowsD2L<float>{ppMean, ppVar}, pSrc, width, Distance32f{pDst}, height);
}

void sMahDistMultiMix_32f_D2L_M7_Al(const qel32f* const* ppMean, const qel32f* const* ppVar,
                                    const qel32f* pSrc, int width, qel32f* pDst, int height) {
  mix32f<true>(RowsD2L<float>{ppMean, ppVar}, pSrc, width, Distance32f{pDst}, height);
}

void sMahDistMultiMix_64f_D2_M7(const qel64f* pMean, const qel64f* pVar, int step,
                                const qel64f* pSrc, int width, qel64f* pDst, int height) {
  mix64f<false>(RowsD2<double>{pMean, pVar, step}, pSrc, width, Distance64f{pDst}, height);
}

void sMahDistMultiMix_64f_D2_M7_Al(const qel64f* pMean, const qel64f* pVar, int step,
                                   const qel64f* pSrc, int width, qel64f* pDst, int height) {
  mix64f<true>(RowsD2<double>{pMean, pVar, step}, pSrc, width, Distance64f{pDst}, height);
}

void sMahDistMultiMix_64f_D2L_M7(const qel64f* const* ppMean, const qel64f* const* ppVar,
                                 const qel64f* pSrc, int width, qel64f* pDst, int height) {
  mix64f<false>(RowsD2L<double>{ppMean, ppVar}, pSrc, width, Distance64f{pDst}, height);
}

void sMahDistMultiMix_64f_D2L_M7_Al(const qel64f* const* ppMean, const qel64f* const* ppVar,
                                    const qel64f* pSrc, int width, qel64f* pDst, int height) {
  mix64f<true>(RowsD2L<double>{ppMean, ppVar}, pSrc, width, Distance64f{pDst}, height);
}

// ---------------------------------------------------------------- identity covariance

void sLGaussMultiMix_IdVar_32f_D2_M7(const qel32f* pMean, int step, const qel32f* pSrc, int width,
                                     qel32f* pSrcDst, int height) {
  mixIdVar32f<false>(RowsD2<float>{pMean, nullptr, step}, pSrc, width, ScoreInPlace32f{pSrcDst},
                     height);
}

void sLGaussMultiMix_IdVar_32f_D2_M7_Al(const qel32f* pMean, int step, const qel32f* pSrc,
                                        int width, qel32f* pSrcDst, int height) {
  mixIdVar32f<true>(RowsD2<float>{pMean, nullptr, step}, pSrc, width, ScoreInPlace32f{pSrcDst},
                    height);
}

}  // extern "C"
