// Vector log-add and log-sum routines. Every lane picks its own polynomial
// through the lane tables (no per-lane branch), and a vector in which no lane
// is close enough to its partner to matter skips the polynomial altogether.
// Lane order, the Horner chains and the fold order of the sums are part of
// the results: the scoring families compare against them bit for bit.
#include <cstring>

#include "base/simd.h"
#include "gauss/gauss.h"
#include "gauss/log_add_scalar.h"

namespace {

using namespace qelsr::logdomain;

// Base addresses of the single lane tables, taken once per call.
struct TablesF {
  const char* coef;
  const qel32s* bias;
  const qel32f* border;
  static TablesF get() {
    return {reinterpret_cast<const char*>(P_F.data()), Biasing_F.data(), INT_S_F.data()};
  }
};

// One vector of four single lanes before its polynomial: a incoming, b
// accumulator.
struct Lanes4 {
  __m128 m;         // the greater
  __m128 d;         // smaller - greater
  __m128 live;      // lanes whose d is not below MINLOGEXP_F
  __m128 y;         // d minus the lane's left border (dead lanes: d = 0)
  const qel32f* c;  // the 11 coefficient vectors of this lane assignment
  int liveMask;
};

inline Lanes4 front4(__m128 a, __m128 b, const TablesF& t) {
  Lanes4 v;
  v.m = _mm_max_ps(a, b);
  v.d = _mm_sub_ps(_mm_min_ps(b, a), v.m);
  // d equal to the border is live; a NaN fails and takes the log-zero path.
  v.live = _mm_cmpge_ps(v.d, _mm_set1_ps(MINLOGEXP_F_SP));
  v.liveMask = _mm_movemask_ps(v.live);
  const __m128 dz = _mm_and_ps(v.d, v.live);  // dead lanes take d = 0
  // Lanes at or below the second border are also at or below the first, so
  // m2 = s1 & ~m3 and m2 * 16 + m3 = s1 * 16 - m3 * 15.
  const int m3 = _mm_movemask_ps(_mm_cmple_ps(dz, _mm_set1_ps(static_cast<qel32f>(INT_S2_F))));
  const int s1 = _mm_movemask_ps(_mm_cmple_ps(dz, _mm_set1_ps(static_cast<qel32f>(INT_S1_F))));
  const int idx = s1 * 16 - m3 * 15;
  v.c = reinterpret_cast<const qel32f*>(t.coef + t.bias[idx]);
  v.y = _mm_sub_ps(dz, _mm_load_ps(t.border + 4 * idx));
  return v;
}

// What a dead lane stores: LOGZERO_F where m is below LOGSMALL_F, else m.
inline __m128 deadValue4(__m128 m) {
  const __m128 low = _mm_cmplt_ps(m, _mm_set1_ps(LOGSMALL_F));
  return _mm_or_ps(_mm_and_ps(low, _mm_set1_ps(LOGZERO_F)), _mm_andnot_ps(low, m));
}

inline __m128 finish4(const Lanes4& v, __m128 p) {
  const __m128 r = _mm_add_ps(v.m, p);
  if (v.liveMask == 15) return r;
  return _mm_or_ps(_mm_and_ps(v.live, r), _mm_andnot_ps(v.live, deadValue4(v.m)));
}

// K vectors side by side: their Horner chains run in lockstep so that the
// long dependency chains overlap. When no lane of the K vectors is live the
// polynomials are skipped; otherwise a vector without live lanes runs its
// chain on d = 0 and discards it, which changes no stored bit.
template <int K>
[[gnu::always_inline]] inline void logAddVectors(const qel32f* pSrc, const qel32f* pAcc,
                                                 qel32f* pOut, const TablesF& t) {
  Lanes4 v[K];
  int any = 0;
  for (int j = 0; j < K; ++j) {
    v[j] = front4(_mm_loadu_ps(pSrc + 4 * j), _mm_loadu_ps(pAcc + 4 * j), t);
    any |= v[j].liveMask;
  }
  if (any == 0) {
    for (int j = 0; j < K; ++j) _mm_storeu_ps(pOut + 4 * j, deadValue4(v[j].m));
    return;
  }
  __m128 p[K];
  for (int j = 0; j < K; ++j) p[j] = _mm_load_ps(v[j].c);
  for (int k = 1; k < kLogAddTerms_F; ++k) {
    for (int j = 0; j < K; ++j)
      p[j] = _mm_add_ps(_mm_mul_ps(p[j], v[j].y), _mm_load_ps(v[j].c + 4 * k));
    // Keep the chains interleaved step by step in the instruction stream
    // (the compiler would otherwise emit them one after the other), so the
    // processor's scheduler holds K short pieces rather than K whole chains.
    for (int j = 0; j < K; ++j) asm("" : "+x"(p[j]));
  }
  for (int j = 0; j < K; ++j) _mm_storeu_ps(pOut + 4 * j, finish4(v[j], p[j]));
}

// Four single lanes: a incoming, b accumulator.
inline __m128 logAdd4(__m128 a, __m128 b, const TablesF& t) {
  const Lanes4 v = front4(a, b, t);
  if (v.liveMask == 0) return deadValue4(v.m);
  __m128 p = _mm_load_ps(v.c);
  for (int k = 1; k < kLogAddTerms_F; ++k)
    p = _mm_add_ps(_mm_mul_ps(p, v.y), _mm_load_ps(v.c + 4 * k));
  return finish4(v, p);
}

// Two double lanes: the row split into the odd powers (even indices) and the
// even powers (odd indices), both Horner chains in y*y; m + odd * y first,
// then the even chain.
inline __m128d logAdd2(__m128d a, __m128d b) {
  const __m128d m = _mm_max_pd(a, b);
  const __m128d d = _mm_sub_pd(_mm_min_pd(b, a), m);
  const __m128d live = _mm_cmpge_pd(d, _mm_set1_pd(MINLOGEXP));
  const __m128d low = _mm_cmplt_pd(m, _mm_set1_pd(LOGSMALL));
  const __m128d dead = _mm_or_pd(_mm_and_pd(low, _mm_set1_pd(LOGZERO)), _mm_andnot_pd(low, m));
  if (_mm_movemask_pd(live) == 0) return dead;

  const __m128d dz = _mm_and_pd(d, live);
  const int m3 = _mm_movemask_pd(_mm_cmple_pd(dz, _mm_set1_pd(INT_S2)));
  const int m2 = _mm_movemask_pd(_mm_cmple_pd(dz, _mm_set1_pd(INT_S1))) & ~m3;
  const int idx = m2 * 4 + m3;
  const qel64f* c =
      reinterpret_cast<const qel64f*>(reinterpret_cast<const char*>(P_D.data()) + Biasing_D[idx]);
  const __m128d y = _mm_sub_pd(dz, _mm_load_pd(INT_S_D.data() + 2 * idx));
  const __m128d z = _mm_mul_pd(y, y);
  __m128d odd = _mm_load_pd(c);
  __m128d even = _mm_load_pd(c + 2);
  for (int k = 2; k < kLogAddTerms; k += 2) {
    odd = _mm_add_pd(_mm_mul_pd(odd, z), _mm_load_pd(c + 2 * k));
    even = _mm_add_pd(_mm_mul_pd(even, z), _mm_load_pd(c + 2 * k + 2));
  }
  const __m128d r = _mm_add_pd(_mm_add_pd(m, _mm_mul_pd(odd, y)), even);
  return _mm_or_pd(_mm_and_pd(live, r), _mm_andnot_pd(live, dead));
}

// A tail of 1..3 elements: the same lanes on a partly loaded vector (the
// unused lanes hold zeros and are not stored).
inline void logAddTail4(const qel32f* pSrc, qel32f* pSrcDst, size_t n, const TablesF& t) {
  alignas(16) qel32f a[4] = {0.0f, 0.0f, 0.0f, 0.0f};
  alignas(16) qel32f b[4] = {0.0f, 0.0f, 0.0f, 0.0f};
  std::memcpy(a, pSrc, n * sizeof(qel32f));
  std::memcpy(b, pSrcDst, n * sizeof(qel32f));
  _mm_store_ps(b, logAdd4(_mm_load_ps(a), _mm_load_ps(b), t));
  std::memcpy(pSrcDst, b, n * sizeof(qel32f));
}

}  // namespace

extern "C" {

void qelsLogAddVec_32f_M7_sp(const qel32f* pSrc, qel32f* pSrcDst, qel64s len) {
  const size_t n = len > 0 ? static_cast<size_t>(len) : 0;
  const TablesF t = TablesF::get();
  size_t i = 0;
  for (; i + 4 <= n; i += 4)
    _mm_storeu_ps(pSrcDst + i, logAdd4(_mm_loadu_ps(pSrc + i), _mm_loadu_ps(pSrcDst + i), t));
  if (i < n) logAddTail4(pSrc + i, pSrcDst + i, n - i, t);
}

// Eight elements a pass, and while at least sixteen remain two such passes
// fused so that four Horner chains overlap; every lane is computed as in the
// _M7_sp form, so the two give the same bits.
void qelsLogAddVec_32f_U8_sp(const qel32f* pSrc, qel32f* pSrcDst, qel64s len) {
  const size_t n = len > 0 ? static_cast<size_t>(len) : 0;
  const TablesF t = TablesF::get();
  size_t i = 0;
  for (; i + 16 <= n; i += 16) logAddVectors<4>(pSrc + i, pSrcDst + i, pSrcDst + i, t);
  for (; i + 8 <= n; i += 8) logAddVectors<2>(pSrc + i, pSrcDst + i, pSrcDst + i, t);
  if (i + 4 <= n) {
    logAddVectors<1>(pSrc + i, pSrcDst + i, pSrcDst + i, t);
    i += 4;
  }
  if (i < n) logAddTail4(pSrc + i, pSrcDst + i, n - i, t);
}

// Pairs in two lanes; an odd last element takes the scalar form, whose
// single Horner chain may differ from the lanes in the last bit.
void qelsLogAddVec_64f_M7(const qel64f* pSrc, qel64f* pSrcDst, qel64s len) {
  const size_t n = len > 0 ? static_cast<size_t>(len) : 0;
  size_t i = 0;
  for (; i + 2 <= n; i += 2)
    _mm_storeu_pd(pSrcDst + i, logAdd2(_mm_loadu_pd(pSrc + i), _mm_loadu_pd(pSrcDst + i)));
  if (i < n) pSrcDst[i] = logAdd64f(pSrc[i], pSrcDst[i], doubleRows());
}

// pDst[0] is written once, after every element has been read, so pDst may
// be any element of pSrc (callers fold a running result kept in slot 0).
// Short vectors chain one element at a time; longer ones run four lane
// accumulators over groups of 4, fold lane 2 onto lane 0 and lane 3 onto
// lane 1 by the vector step, join the two by the scalar step, and add the
// len % 4 leftovers one at a time. The scalar step ignores a difference equal
// to MINLOGEXP_F, the vector step adds it.
void qelsLogSum_32f_M7(const qel32f* pSrc, qel32f* pDst, int len) {
  if (len < 8) {
    qel32f acc = pSrc[0];
    for (int i = 1; i < len; ++i) acc = logAdd32f<false>(pSrc[i], acc);
    pDst[0] = acc;
    return;
  }
  const TablesF t = TablesF::get();
  const int groups = len / 4;
  __m128 lanes = _mm_loadu_ps(pSrc);
  for (int g = 1; g < groups; ++g) lanes = logAdd4(_mm_loadu_ps(pSrc + 4 * g), lanes, t);
  const __m128 folded = logAdd4(_mm_movehl_ps(lanes, lanes), lanes, t);
  alignas(16) qel32f r[4];
  _mm_store_ps(r, folded);
  qel32f acc = logAdd32f<false>(r[1], r[0]);
  for (int i = groups * 4; i < len; ++i) acc = logAdd32f<false>(pSrc[i], acc);
  pDst[0] = acc;
}

// Up to 4 elements chain one at a time; longer vectors run two lane
// accumulators over pairs, then the scalar step joins the lanes and adds an
// odd last element.
void qelsLogSum_64f_M7(const qel64f* pSrc, qel64f* pDst, int len) {
  const Rows rows = doubleRows();
  if (len <= 4) {
    qel64f acc = pSrc[0];
    for (int i = 1; i < len; ++i) acc = logAdd64f(pSrc[i], acc, rows);
    pDst[0] = acc;
    return;
  }
  const int pairs = len / 2;
  __m128d lanes = _mm_loadu_pd(pSrc);
  for (int g = 1; g < pairs; ++g) lanes = logAdd2(_mm_loadu_pd(pSrc + 2 * g), lanes);
  alignas(16) qel64f r[2];
  _mm_store_pd(r, lanes);
  qel64f acc = logAdd64f(r[1], r[0], rows);
  if (len & 1) acc = logAdd64f(pSrc[len - 1], acc, rows);
  pDst[0] = acc;
}

}  // extern "C"
