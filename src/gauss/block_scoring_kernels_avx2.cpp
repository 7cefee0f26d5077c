// 256-bit twins of the hottest single-precision block kernels (strided rows:
// plain and identity scores, stored and maximised).
//
// Every row keeps the 4-lane accumulator of the 16-byte kernels and sees
// exactly their sequence of operations; only the register that carries it
// is wider. One 256-bit accumulator holds two rows, row r in the low half
// and row r + 4 in the high half. The products reach it in one of two ways,
// both giving the same lanes: four columns of the two rows against the mean
// and inverse variance broadcast into both halves, or, where eight columns
// remain, the products of eight columns of each row (one load of the row,
// the mean and the variance each) whose halves are then regrouped, columns
// c..c+3 of both rows first and c+4..c+7 next. Subtractions, products and
// additions act lane by lane, so each lane gets the bits it gets in the
// 16-byte kernel:
//
//   acc = t(0..3); acc += t(4..7); acc += t(8..11); ...  (column order)
//   S = (l0 + l1) + (l2 + l3)                            (horizontal adds)
//   S += t(c) for the width mod 4 last columns, in order
//   score = (2*val - S) * 0.5
//
// with t = ((x - mean) * (x - mean)) * var. The horizontal additions of
// 256-bit registers act on each half by itself, so one fold of four
// registers gives rows r..r+3 in the low half and r+4..r+7 in the high half,
// each summed as the 16-byte fold sums it.
//
// A pass takes eight rows: four accumulators, enough independent additions
// to cover their latency. The rows left after the eight-row passes (fewer
// than eight), and every width below 4, go to the 16-byte kernel itself.
// The eight-row passes cover a multiple of four rows, so the 16-byte kernel
// still puts every row in the same kind of pass as it would alone (and its
// passes give a row the same bits anyway).
//
// The aligned twins differ from the general ones only in their 16-byte
// loads; 16-byte data is not 32-byte data, so the 32-byte loads are
// unaligned in both.
//
// This file is built with -mavx2 -mno-fma and without contraction: nothing
// is fused. It must only run where the processor has AVX2 (the wrappers ask
// once, see ownGaussWideKernels); nothing here is shared with other files
// (all helpers have internal linkage), so no AVX2 code can be picked up
// elsewhere.
#include <immintrin.h>

#include <cstddef>

#include "gauss/gauss.h"

namespace {

enum class Fate {
  Store,  // pDst[r] = (2*val - S)*0.5
  Max,    // pDst[r] = greater of that and pDst[r]; a NaN score keeps pDst[r]
};

struct Options {
  bool aligned;  // rows, mean and variance on 16 bytes
  bool var;      // inverse variances present (else the identity)
  Fate fate;
};

template <bool Al>
inline __m128 load4(const float* p) {
  if constexpr (Al)
    return _mm_load_ps(p);
  else
    return _mm_loadu_ps(p);
}

// Columns c..c+3 of two rows: `lo` in the low half, `hi` in the high half.
template <bool Al>
inline __m256 loadPair(const float* lo, const float* hi) {
  return _mm256_insertf128_ps(_mm256_castps128_ps256(load4<Al>(lo)), load4<Al>(hi), 1);
}

// Four columns broadcast into both halves.
inline __m256 both(const float* p) {
  return _mm256_broadcast_ps(reinterpret_cast<const __m128*>(p));
}

template <bool Var>
inline __m256 term(__m256 x, __m256 m, __m256 v) {
  const __m256 d = _mm256_sub_ps(x, m);
  __m256 t = _mm256_mul_ps(d, d);
  if constexpr (Var) t = _mm256_mul_ps(t, v);
  return t;
}

// Eight rows x[0..7], width at least 4; writes dst[0..7].
template <Options O>
inline void pass8(const float* const (&x)[8], const float* m, const float* v, int width, float* dst,
                  __m256 twoVal, __m256 half) {
  constexpr bool Al = O.aligned;
  __m256 vk = _mm256_setzero_ps();
  __m256 a[4];
  {
    const __m256 mk = both(m);
    if constexpr (O.var) vk = both(v);
    for (int k = 0; k < 4; ++k) a[k] = term<O.var>(loadPair<Al>(x[k], x[k + 4]), mk, vk);
  }
  int c = 4;
  // Eight columns of a row in one register where eight remain, so that each
  // load serves eight columns; the halves of rows k and k+4 then meet in one
  // register, columns c..c+3 first and c+4..c+7 next, as the 16-byte pass
  // adds them.
  for (; c + 8 <= width; c += 8) {
    const __m256 m8 = _mm256_loadu_ps(m + c);
    __m256 v8 = _mm256_setzero_ps();
    if constexpr (O.var) v8 = _mm256_loadu_ps(v + c);
    for (int k = 0; k < 4; ++k) {
      const __m256 t0 = term<O.var>(_mm256_loadu_ps(x[k] + c), m8, v8);
      const __m256 t1 = term<O.var>(_mm256_loadu_ps(x[k + 4] + c), m8, v8);
      a[k] = _mm256_add_ps(a[k], _mm256_insertf128_ps(t0, _mm256_castps256_ps128(t1), 1));
      a[k] = _mm256_add_ps(a[k], _mm256_permute2f128_ps(t0, t1, 0x31));
    }
  }
  if (c + 4 <= width) {
    const __m256 mk = both(m + c);
    if constexpr (O.var) vk = both(v + c);
    for (int k = 0; k < 4; ++k)
      a[k] = _mm256_add_ps(a[k], term<O.var>(loadPair<Al>(x[k] + c, x[k + 4] + c), mk, vk));
    c += 4;
  }
  // Low half: rows 0..3 in lanes 0..3; high half: rows 4..7.
  __m256 s = _mm256_hadd_ps(_mm256_hadd_ps(a[0], a[1]), _mm256_hadd_ps(a[2], a[3]));
  if (const int nTail = width & 3) {
    // The last four columns of each row, transposed so that col[j] holds
    // column width-4+j of rows 0..7; the leftover columns are the last nTail.
    const int c0 = width - 4;
    __m256 p[4];
    for (int k = 0; k < 4; ++k) p[k] = loadPair<false>(x[k] + c0, x[k + 4] + c0);
    const __m256 t0 = _mm256_unpacklo_ps(p[0], p[1]);
    const __m256 t1 = _mm256_unpacklo_ps(p[2], p[3]);
    const __m256 t2 = _mm256_unpackhi_ps(p[0], p[1]);
    const __m256 t3 = _mm256_unpackhi_ps(p[2], p[3]);
    const __m256 col[4] = {_mm256_shuffle_ps(t0, t1, _MM_SHUFFLE(1, 0, 1, 0)),
                           _mm256_shuffle_ps(t0, t1, _MM_SHUFFLE(3, 2, 3, 2)),
                           _mm256_shuffle_ps(t2, t3, _MM_SHUFFLE(1, 0, 1, 0)),
                           _mm256_shuffle_ps(t2, t3, _MM_SHUFFLE(3, 2, 3, 2))};
    for (int j = 4 - nTail; j < 4; ++j) {
      __m256 vc = _mm256_setzero_ps();
      if constexpr (O.var) vc = _mm256_set1_ps(v[c0 + j]);
      s = _mm256_add_ps(s, term<O.var>(col[j], _mm256_set1_ps(m[c0 + j]), vc));
    }
  }
  const __m256 score = _mm256_mul_ps(_mm256_sub_ps(twoVal, s), half);
  // maxps hands back its second operand when either is NaN: a NaN score
  // leaves the destination as it was.
  if constexpr (O.fate == Fate::Max)
    _mm256_storeu_ps(dst, _mm256_max_ps(score, _mm256_loadu_ps(dst)));
  else
    _mm256_storeu_ps(dst, score);
}

// `rest(r)` runs the 16-byte kernel on rows r..height-1.
template <Options O, class Rest>
inline void block(const float* src, int step, const float* m, const float* v, int width, float* dst,
                  int height, float val, Rest rest) {
  if (width < 4) {
    rest(0);
    return;
  }
  // 2*val is exact, so it matches val + val and any other spelling.
  const __m256 twoVal = _mm256_set1_ps(2.0f * val);
  const __m256 half = _mm256_set1_ps(0.5f);
  const std::ptrdiff_t st = step;
  int r = 0;
  for (; r + 8 <= height; r += 8) {
    const float* b = src + r * st;
    const float* const x[8] = {b,          b + st,     b + 2 * st, b + 3 * st,
                               b + 4 * st, b + 5 * st, b + 6 * st, b + 7 * st};
    pass8<O>(x, m, v, width, dst + r, twoVal, half);
  }
  if (r < height) rest(r);
}

constexpr Options kGauss{false, true, Fate::Store};
constexpr Options kGaussAl{true, true, Fate::Store};
constexpr Options kGaussId{false, false, Fate::Store};
constexpr Options kGaussIdAl{true, false, Fate::Store};
constexpr Options kMax{false, true, Fate::Max};
constexpr Options kMaxAl{true, true, Fate::Max};
constexpr Options kMaxId{false, false, Fate::Max};
constexpr Options kMaxIdAl{true, false, Fate::Max};

}  // namespace

#define QELSR_WIDE_D2(NAME, OPT, SSE)                                                         \
  extern "C" void NAME(const qel32f* pSrc, int step, const qel32f* pMean, const qel32f* pVar, \
                       int width, qel32f* pDst, int height, const qel32f* pVal) {             \
    block<OPT>(pSrc, step, pMean, pVar, width, pDst, height, *pVal, [&](int r) {              \
      SSE(pSrc + static_cast<std::ptrdiff_t>(r) * step, step, pMean, pVar, width, pDst + r,   \
          height - r, pVal);                                                                  \
    });                                                                                       \
  }
#define QELSR_WIDE_ID_D2(NAME, OPT, SSE)                                                           \
  extern "C" void NAME(const qel32f* pSrc, int step, const qel32f* pMean, int width, qel32f* pDst, \
                       int height, const qel32f* pVal) {                                           \
    block<OPT>(pSrc, step, pMean, nullptr, width, pDst, height, *pVal, [&](int r) {                \
      SSE(pSrc + static_cast<std::ptrdiff_t>(r) * step, step, pMean, width, pDst + r, height - r,  \
          pVal);                                                                                   \
    });                                                                                            \
  }

QELSR_WIDE_D2(qelsLogGauss_32f_D2_M7_Avx2, kGauss, qelsLogGauss_32f_D2_M7)
QELSR_WIDE_D2(qelsLogGauss_32f_D2_M7_Al_Avx2, kGaussAl, qelsLogGauss_32f_D2_M7_Al)
QELSR_WIDE_ID_D2(qelsLGauss_IdVar_32f_D2_M7_Avx2, kGaussId, qelsLGauss_IdVar_32f_D2_M7)
QELSR_WIDE_ID_D2(qelsLGauss_IdVar_32f_D2_M7_Al_Avx2, kGaussIdAl, qelsLGauss_IdVar_32f_D2_M7_Al)
QELSR_WIDE_D2(qelsLGaussMax_32f_D2_M7_Avx2, kMax, qelsLGaussMax_32f_D2_M7)
QELSR_WIDE_D2(qelsLGaussMax_32f_D2_M7_Al_Avx2, kMaxAl, qelsLGaussMax_32f_D2_M7_Al)
QELSR_WIDE_ID_D2(qelsLGaussMax_IdVar_32f_D2_M7_Avx2, kMaxId, qelsLGaussMax_IdVar_32f_D2_M7)
QELSR_WIDE_ID_D2(qelsLGaussMax_IdVar_32f_D2_M7_Al_Avx2, kMaxIdAl, qelsLGaussMax_IdVar_32f_D2_M7_Al)
