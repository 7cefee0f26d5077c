// Kernels of the block scores: one diagonal Gaussian against many rows.
//
// A term is (d*d)*v with d = x - mean, v the inverse variance (absent for the
// identity).
//
// Single precision runs four rows at a time while four remain, so that each
// load of the mean and the variance serves four row streams. Each row has a
// 4-lane accumulator; the first vector of columns starts it, the following
// vectors are added in column order (8 columns a step, then 4). The lanes are
// folded by horizontal additions, (l0 + l1) + (l2 + l3), and the columns left
// over (width mod 4) are added one at a time after the fold, so the four rows
// of a pass take their single columns as one vector. The score is
// (2*val - S)*0.5 with the multiplication last.
//
// qelsLogGauss_32f_D2_M7 and its twin finish with a pair of rows and a single
// row, the others with single rows. The maxima of the strided layout and
// qelsLogGauss_32f_D2_M7_Al have fully unrolled four-row passes for widths 36
// and 40; the maxima prefetch ahead in the mean and variance tables.
// The tail rows and the unrolled passes add in exactly the same order as the
// general pass, so every
// row of a kernel gets the same bits whichever pass it falls in. The wrappers'
// own scalar paths keep 2*val minus the terms instead and may differ from the
// kernels in the last bits.
//
// Double precision runs two rows at a time with 2-lane accumulators (4
// columns a step, then 2), folds l0 + l1 and adds a last odd column after the
// fold; a last odd row runs alone in the same order.
#include <cstddef>

#include "base/simd.h"
#include "gauss/gauss.h"

namespace {

using qelsr::simd::loadpd;
using qelsr::simd::loadps;
using qelsr::simd::storepd;

// What a kernel does with the sum S of a row.
enum class Fate {
  Store,  // pDst[r] = (2*val - S)*0.5
  Max,    // pDst[r] = greater of that and pDst[r]; a NaN score keeps pDst[r]
  Dist,   // pDst[r] = S
};

template <typename T>
struct StridedRows {
  const T* base;
  std::ptrdiff_t step;
  const T* operator[](int r) const { return base + static_cast<std::ptrdiff_t>(r) * step; }
};

template <typename T>
struct PointerRows {
  const T* const* rows;
  const T* operator[](int r) const { return rows[r]; }
};

// ------------------------------------------------------------ single precision

struct Options32 {
  bool aligned;  // 16-byte loads of rows, mean and variance
  bool var;      // inverse variances present (else the identity)
  Fate fate;
  bool pairTail;  // a pair of rows before the last single row
  bool unrolled;  // straight-through passes for widths 36 and 40
  bool prefetch;  // prefetch ahead in mean and variance
};

// One body of the term and the column loop serves both precisions: the
// vector operations by overload on the register type.
inline __m128 vadd(__m128 a, __m128 b) { return _mm_add_ps(a, b); }
inline __m128d vadd(__m128d a, __m128d b) { return _mm_add_pd(a, b); }
inline __m128 vsub(__m128 a, __m128 b) { return _mm_sub_ps(a, b); }
inline __m128d vsub(__m128d a, __m128d b) { return _mm_sub_pd(a, b); }
inline __m128 vmul(__m128 a, __m128 b) { return _mm_mul_ps(a, b); }
inline __m128d vmul(__m128d a, __m128d b) { return _mm_mul_pd(a, b); }
template <bool Al>
inline __m128 loadv(const float* p) {
  return loadps<Al>(p);
}
template <bool Al>
inline __m128d loadv(const double* p) {
  return loadpd<Al>(p);
}

// d*d*v for one vector of columns of one row.
template <bool Var, class V>
inline V term(V x, V m, V v) {
  const V d = vsub(x, m);
  V t = vmul(d, d);
  if constexpr (Var) t = vmul(t, v);
  return t;
}

template <bool Var, typename T>
inline T term1(T x, T m, const T* v, int c) {
  const T d = x - m;
  T t = d * d;
  if constexpr (Var) t = t * v[c];
  return t;
}

// Sums the whole vectors of NR rows into a[]: the first vector starts each
// accumulator, then two vectors a step, then one. Returns the first column
// left.
template <int NR, bool Al, bool Var, bool Prefetch, typename T, class V>
inline int sumVectors(const T* const (&x)[NR], const T* m, const T* v, int width, V (&a)[NR]) {
  constexpr int L = 16 / sizeof(T);
  V v0{}, v1{};
  if (width < L) {
    for (int r = 0; r < NR; ++r) a[r] = V{};
    return 0;
  }
  const V m0 = loadv<Al>(m);
  if constexpr (Var) v0 = loadv<Al>(v);
  for (int r = 0; r < NR; ++r) a[r] = term<Var>(loadv<Al>(x[r]), m0, v0);
  int c = L;
  for (; c + 2 * L <= width; c += 2 * L) {
    if constexpr (Prefetch) {
      _mm_prefetch(reinterpret_cast<const char*>(m + c + 32), _MM_HINT_T0);
      if constexpr (Var) _mm_prefetch(reinterpret_cast<const char*>(v + c + 32), _MM_HINT_T0);
    }
    const V ma = loadv<Al>(m + c), mb = loadv<Al>(m + c + L);
    if constexpr (Var) {
      v0 = loadv<Al>(v + c);
      v1 = loadv<Al>(v + c + L);
    }
    for (int r = 0; r < NR; ++r) {
      a[r] = vadd(a[r], term<Var>(loadv<Al>(x[r] + c), ma, v0));
      a[r] = vadd(a[r], term<Var>(loadv<Al>(x[r] + c + L), mb, v1));
    }
  }
  if (c + L <= width) {
    const V ma = loadv<Al>(m + c);
    if constexpr (Var) v0 = loadv<Al>(v + c);
    for (int r = 0; r < NR; ++r) a[r] = vadd(a[r], term<Var>(loadv<Al>(x[r] + c), ma, v0));
    c += L;
  }
  return c;
}

// The NV vectors of a row summed straight through, no column loop; the same
// order of additions as sumVectors.
template <int NV, Options32 O>
inline void sumStraight(const float* const (&x)[4], const float* m, const float* v,
                        __m128 (&a)[4]) {
  constexpr bool Al = O.aligned;
  __m128 vk = _mm_setzero_ps();
  if constexpr (O.prefetch) {
    // The later cache lines of the tables, ahead of their loads in this pass.
    _mm_prefetch(reinterpret_cast<const char*>(m + 16), _MM_HINT_T0);
    _mm_prefetch(reinterpret_cast<const char*>(m + 32), _MM_HINT_T0);
    if constexpr (O.var) {
      _mm_prefetch(reinterpret_cast<const char*>(v + 16), _MM_HINT_T0);
      _mm_prefetch(reinterpret_cast<const char*>(v + 32), _MM_HINT_T0);
    }
  }
  {
    const __m128 mk = loadps<Al>(m);
    if constexpr (O.var) vk = loadps<Al>(v);
    for (int r = 0; r < 4; ++r) a[r] = term<O.var>(loadps<Al>(x[r]), mk, vk);
  }
#pragma GCC unroll 10
  for (int k = 1; k < NV; ++k) {
    const __m128 mk = loadps<Al>(m + 4 * k);
    if constexpr (O.var) vk = loadps<Al>(v + 4 * k);
    for (int r = 0; r < 4; ++r)
      a[r] = _mm_add_ps(a[r], term<O.var>(loadps<Al>(x[r] + 4 * k), mk, vk));
    // Keeps the steps in order: left alone, the compiler forms all 4*NV
    // differences first and spills them to the stack.
    asm("" : "+x"(a[0]), "+x"(a[1]), "+x"(a[2]), "+x"(a[3]));
  }
}

template <Options32 O>
inline float finish1(float s, float twoVal, float prior) {
  if constexpr (O.fate == Fate::Dist) {
    return s;
  } else {
    const float score = (twoVal - s) * 0.5f;
    if constexpr (O.fate == Fate::Max) return score > prior ? score : prior;
    return score;
  }
}

// One row or a pair of rows.
template <int NR, Options32 O, class Rows>
inline void tailPass(const Rows& rows, int r0, const float* m, const float* v, int width,
                     float* dst, float twoVal) {
  const float* x[NR];
  for (int r = 0; r < NR; ++r) x[r] = rows[r0 + r];
  __m128 a[NR];
  int c = sumVectors<NR, O.aligned, O.var, O.prefetch>(x, m, v, width, a);
  float s[NR];
  if constexpr (NR == 2) {
    const __m128 h = _mm_hadd_ps(a[0], a[1]);
    const __m128 f = _mm_hadd_ps(h, h);
    s[0] = _mm_cvtss_f32(f);
    s[1] = _mm_cvtss_f32(_mm_shuffle_ps(f, f, 1));
  } else {
    const __m128 h = _mm_hadd_ps(a[0], a[0]);
    s[0] = _mm_cvtss_f32(_mm_hadd_ps(h, h));
  }
  for (; c < width; ++c)
    for (int r = 0; r < NR; ++r) s[r] = s[r] + term1<O.var>(x[r][c], m[c], v, c);
  for (int r = 0; r < NR; ++r) dst[r0 + r] = finish1<O>(s[r], twoVal, dst[r0 + r]);
}

template <Options32 O, class Rows>
void block32(const Rows& rows, const float* m, const float* v, int width, float* dst, int height,
             float val) {
  // 2*val is exact, so it matches val + val and any other spelling.
  const float twoVal = 2.0f * val;
  const __m128 twoValV = _mm_set1_ps(twoVal);
  const __m128 half = _mm_set1_ps(0.5f);
  // The leftover columns (width mod 4) with mean and variance broadcast once
  // for all passes.
  const int cTail = width & ~3, nTail = width & 3;
  __m128 tailM[3], tailV[3];
  for (int j = 0; j < nTail; ++j) {
    tailM[j] = _mm_set1_ps(m[cTail + j]);
    tailV[j] = _mm_setzero_ps();
    if constexpr (O.var) tailV[j] = _mm_set1_ps(v[cTail + j]);
  }
  int r = 0;
  for (; r + 4 <= height; r += 4) {
    const float* const x[4] = {rows[r], rows[r + 1], rows[r + 2], rows[r + 3]};
    __m128 a[4];
    int c;
    if (O.unrolled && width == 36) {
      sumStraight<9, O>(x, m, v, a);
      c = 36;
    } else if (O.unrolled && width == 40) {
      sumStraight<10, O>(x, m, v, a);
      c = 40;
    } else {
      c = sumVectors<4, O.aligned, O.var, O.prefetch>(x, m, v, width, a);
    }
    // Lane r of s is the folded sum of row r.
    __m128 s = _mm_hadd_ps(_mm_hadd_ps(a[0], a[1]), _mm_hadd_ps(a[2], a[3]));
    for (int j = 0; j < nTail; ++j, ++c) {
      const __m128 xc = _mm_setr_ps(x[0][c], x[1][c], x[2][c], x[3][c]);
      s = _mm_add_ps(s, term<O.var>(xc, tailM[j], tailV[j]));
    }
    if constexpr (O.fate == Fate::Dist) {
      _mm_storeu_ps(dst + r, s);
    } else {
      const __m128 score = _mm_mul_ps(_mm_sub_ps(twoValV, s), half);
      // maxps hands back its second operand when either is NaN: a NaN
      // score leaves the destination as it was.
      if constexpr (O.fate == Fate::Max)
        _mm_storeu_ps(dst + r, _mm_max_ps(score, _mm_loadu_ps(dst + r)));
      else
        _mm_storeu_ps(dst + r, score);
    }
  }
  if constexpr (O.pairTail) {
    if (r + 2 <= height) {
      tailPass<2, O>(rows, r, m, v, width, dst, twoVal);
      r += 2;
    }
  }
  for (; r < height; ++r) tailPass<1, O>(rows, r, m, v, width, dst, twoVal);
}

// ------------------------------------------------------------ double precision

struct Options64 {
  bool aligned;
  bool var;
  Fate fate;
  bool dstAligned;  // pDst on 16 bytes: the pair of scores is loaded and stored aligned
};

template <Options64 O, class Rows>
void block64(const Rows& rows, const double* m, const double* v, int width, double* dst, int height,
             double val) {
  const double twoVal = 2.0 * val;
  const __m128d twoValV = _mm_set1_pd(twoVal);
  const __m128d half = _mm_set1_pd(0.5);
  int r = 0;
  for (; r + 2 <= height; r += 2) {
    const double* const x[2] = {rows[r], rows[r + 1]};
    __m128d a[2];
    int c = sumVectors<2, O.aligned, O.var, false>(x, m, v, width, a);
    __m128d s = _mm_hadd_pd(a[0], a[1]);
    if (c < width) {
      __m128d vc = _mm_setzero_pd();
      if constexpr (O.var) vc = _mm_set1_pd(v[c]);
      s = _mm_add_pd(s, term<O.var>(_mm_setr_pd(x[0][c], x[1][c]), _mm_set1_pd(m[c]), vc));
    }
    if constexpr (O.fate == Fate::Dist) {
      _mm_storeu_pd(dst + r, s);
    } else {
      const __m128d score = _mm_mul_pd(_mm_sub_pd(twoValV, s), half);
      if constexpr (O.fate == Fate::Max)
        storepd<O.dstAligned>(dst + r, _mm_max_pd(score, loadpd<O.dstAligned>(dst + r)));
      else
        _mm_storeu_pd(dst + r, score);
    }
  }
  if (r < height) {
    const double* const x[1] = {rows[r]};
    __m128d a[1];
    int c = sumVectors<1, O.aligned, O.var, false>(x, m, v, width, a);
    double s = _mm_cvtsd_f64(_mm_hadd_pd(a[0], a[0]));
    if (c < width) s = s + term1<O.var>(x[0][c], m[c], v, c);
    if constexpr (O.fate == Fate::Dist) {
      dst[r] = s;
    } else {
      const double score = (twoVal - s) * 0.5;
      if constexpr (O.fate == Fate::Max)
        dst[r] = score > dst[r] ? score : dst[r];
      else
        dst[r] = score;
    }
  }
}

// Kernel flavours by name.
constexpr Options32 kGauss32{false, true, Fate::Store, true, false, false};
constexpr Options32 kGauss32Al{true, true, Fate::Store, true, true, false};
constexpr Options32 kGaussId32{false, false, Fate::Store, false, false, false};
constexpr Options32 kGaussId32Al{true, false, Fate::Store, false, false, false};
constexpr Options32 kMax32{false, true, Fate::Max, false, true, true};
constexpr Options32 kMax32Al{true, true, Fate::Max, false, true, true};
constexpr Options32 kMaxId32{false, false, Fate::Max, false, true, true};
constexpr Options32 kMaxId32Al{true, false, Fate::Max, false, true, true};
constexpr Options32 kDist32{false, true, Fate::Dist, false, false, false};
constexpr Options32 kDist32Al{true, true, Fate::Dist, false, false, false};
// The row-pointer kernels share the general pass only.
constexpr Options32 kGauss32L{false, true, Fate::Store, false, false, false};
constexpr Options32 kGauss32LAl{true, true, Fate::Store, false, false, false};
constexpr Options32 kMax32L{false, true, Fate::Max, false, false, false};
constexpr Options32 kMax32LAl{true, true, Fate::Max, false, false, false};
constexpr Options32 kMaxId32L{false, false, Fate::Max, false, false, false};
constexpr Options32 kMaxId32LAl{true, false, Fate::Max, false, false, false};

constexpr Options64 kGauss64{false, true, Fate::Store, false};
constexpr Options64 kGauss64Al{true, true, Fate::Store, false};
constexpr Options64 kGaussId64{false, false, Fate::Store, false};
constexpr Options64 kGaussId64Al{true, false, Fate::Store, false};
constexpr Options64 kMax64{false, true, Fate::Max, false};
constexpr Options64 kMax64Al{true, true, Fate::Max, false};
constexpr Options64 kMaxId64{false, false, Fate::Max, false};
constexpr Options64 kMaxId64Al{true, false, Fate::Max, true};
constexpr Options64 kDist64{false, true, Fate::Dist, false};
constexpr Options64 kDist64Al{true, true, Fate::Dist, false};

}  // namespace

// ------------------------------------------------------------ named kernels

#define QELSR_BLOCK_D2(NAME, T, BODY, OPT)                                                         \
  extern "C" void NAME(const T* pSrc, int step, const T* pMean, const T* pVar, int width, T* pDst, \
                       int height, const T* pVal) {                                                \
    BODY<OPT>(StridedRows<T>{pSrc, step}, pMean, pVar, width, pDst, height, *pVal);                \
  }
#define QELSR_BLOCK_D2L(NAME, T, BODY, OPT)                                                      \
  extern "C" void NAME(const T* const* ppSrc, const T* pMean, const T* pVar, int width, T* pDst, \
                       int height, const T* pVal) {                                              \
    BODY<OPT>(PointerRows<T>{ppSrc}, pMean, pVar, width, pDst, height, *pVal);                   \
  }
#define QELSR_BLOCK_ID_D2(NAME, T, BODY, OPT)                                                   \
  extern "C" void NAME(const T* pSrc, int step, const T* pMean, int width, T* pDst, int height, \
                       const T* pVal) {                                                         \
    BODY<OPT>(StridedRows<T>{pSrc, step}, pMean, nullptr, width, pDst, height, *pVal);          \
  }
#define QELSR_BLOCK_ID_D2L(NAME, T, BODY, OPT)                                                \
  extern "C" void NAME(const T* const* ppSrc, const T* pMean, int width, T* pDst, int height, \
                       const T* pVal) {                                                       \
    BODY<OPT>(PointerRows<T>{ppSrc}, pMean, nullptr, width, pDst, height, *pVal);             \
  }
#define QELSR_DIST_D2(NAME, T, BODY, OPT)                                                          \
  extern "C" void NAME(const T* pSrc, int step, const T* pMean, const T* pVar, int width, T* pDst, \
                       int height) {                                                               \
    BODY<OPT>(StridedRows<T>{pSrc, step}, pMean, pVar, width, pDst, height, T(0));                 \
  }
#define QELSR_DIST_D2L(NAME, T, BODY, OPT)                                                       \
  extern "C" void NAME(const T* const* ppSrc, const T* pMean, const T* pVar, int width, T* pDst, \
                       int height) {                                                             \
    BODY<OPT>(PointerRows<T>{ppSrc}, pMean, pVar, width, pDst, height, T(0));                    \
  }

QELSR_BLOCK_D2(qelsLogGauss_32f_D2_M7, qel32f, block32, kGauss32)
QELSR_BLOCK_D2(qelsLogGauss_32f_D2_M7_Al, qel32f, block32, kGauss32Al)
QELSR_BLOCK_ID_D2(qelsLGauss_IdVar_32f_D2_M7, qel32f, block32, kGaussId32)
QELSR_BLOCK_ID_D2(qelsLGauss_IdVar_32f_D2_M7_Al, qel32f, block32, kGaussId32Al)
QELSR_BLOCK_D2(qelsLGaussMax_32f_D2_M7, qel32f, block32, kMax32)
QELSR_BLOCK_D2(qelsLGaussMax_32f_D2_M7_Al, qel32f, block32, kMax32Al)
QELSR_BLOCK_ID_D2(qelsLGaussMax_IdVar_32f_D2_M7, qel32f, block32, kMaxId32)
QELSR_BLOCK_ID_D2(qelsLGaussMax_IdVar_32f_D2_M7_Al, qel32f, block32, kMaxId32Al)
QELSR_DIST_D2(sMahDist_32f_D2_M7, qel32f, block32, kDist32)
QELSR_DIST_D2(sMahDist_32f_D2_M7_Al, qel32f, block32, kDist32Al)

QELSR_BLOCK_D2L(qelsLogGauss_32f_D2L_M7, qel32f, block32, kGauss32L)
QELSR_BLOCK_D2L(qelsLogGauss_32f_D2L_M7_Al, qel32f, block32, kGauss32LAl)
QELSR_BLOCK_ID_D2L(qelsLGauss_IdVar_32f_D2L_M7, qel32f, block32, kGaussId32)
QELSR_BLOCK_ID_D2L(qelsLGauss_IdVar_32f_D2L_M7_Al, qel32f, block32, kGaussId32Al)
QELSR_BLOCK_D2L(qelsLGaussMax_32f_D2L_M7, qel32f, block32, kMax32L)
QELSR_BLOCK_D2L(qelsLGaussMax_32f_D2L_M7_Al, qel32f, block32, kMax32LAl)
QELSR_BLOCK_ID_D2L(qelsLGaussMax_IdVar_32f_D2L_M7, qel32f, block32, kMaxId32L)
QELSR_BLOCK_ID_D2L(qelsLGaussMax_IdVar_32f_D2L_M7_Al, qel32f, block32, kMaxId32LAl)
QELSR_DIST_D2L(sMahDist_32f_D2L_M7, qel32f, block32, kDist32)
QELSR_DIST_D2L(sMahDist_32f_D2L_M7_Al, qel32f, block32, kDist32Al)

QELSR_BLOCK_D2(qelsLGauss_64f_D2_M7, qel64f, block64, kGauss64)
QELSR_BLOCK_D2(qelsLGauss_64f_D2_M7_Al, qel64f, block64, kGauss64Al)
QELSR_BLOCK_ID_D2(qelsLGauss_IdVar_64f_D2_M7, qel64f, block64, kGaussId64)
QELSR_BLOCK_ID_D2(qelsLGauss_IdVar_64f_D2_M7_Al, qel64f, block64, kGaussId64Al)
QELSR_BLOCK_D2(qelsLGaussMax_64f_D2_M7, qel64f, block64, kMax64)
QELSR_BLOCK_D2(qelsLGaussMax_64f_D2_M7_Al, qel64f, block64, kMax64Al)
QELSR_BLOCK_ID_D2(qelsLGaussMax_IdVar_64f_D2_M7, qel64f, block64, kMaxId64)
QELSR_BLOCK_ID_D2(qelsLGaussMax_IdVar_64f_D2_M7_Al, qel64f, block64, kMaxId64Al)
QELSR_DIST_D2(sMahDist_64f_D2_M7, qel64f, block64, kDist64)
QELSR_DIST_D2(sMahDist_64f_D2_M7_Al, qel64f, block64, kDist64Al)

QELSR_BLOCK_D2L(qelsLGauss_64f_D2L_M7, qel64f, block64, kGauss64)
QELSR_BLOCK_D2L(qelsLGauss_64f_D2L_M7_Al, qel64f, block64, kGauss64Al)
QELSR_BLOCK_ID_D2L(qelsLGauss_IdVar_64f_D2L_M7, qel64f, block64, kGaussId64)
QELSR_BLOCK_ID_D2L(qelsLGauss_IdVar_64f_D2L_M7_Al, qel64f, block64, kGaussId64Al)
QELSR_BLOCK_D2L(qelsLGaussMax_64f_D2L_M7, qel64f, block64, kMax64)
QELSR_BLOCK_D2L(qelsLGaussMax_64f_D2L_M7_Al, qel64f, block64, kMax64Al)
QELSR_BLOCK_ID_D2L(qelsLGaussMax_IdVar_64f_D2L_M7, qel64f, block64, kMaxId64)
QELSR_BLOCK_ID_D2L(qelsLGaussMax_IdVar_64f_D2L_M7_Al, qel64f, block64, kMaxId64Al)
QELSR_DIST_D2L(sMahDist_64f_D2L_M7, qel64f, block64, kDist64)
QELSR_DIST_D2L(sMahDist_64f_D2L_M7_Al, qel64f, block64, kDist64Al)
