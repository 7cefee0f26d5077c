// 256-bit twins of the single-precision mixture kernels (scores in place and
// maxima, both layouts).
//
// The passes of four components of the 16-byte kernels give component k a
// 4-lane accumulator that starts at zero, takes the products of the columns
// in groups of 4 in column order, then each leftover column (width mod 4)
// into lane 0, and folds as (l0 + l1) + (l2 + l3). Here two components share
// one 256-bit accumulator, component k in the low half and component k + 4
// in the high half. Where eight columns remain, the products of eight
// columns of each component are formed in one register (one load of the
// mean row, the variance row and the observation each) and their halves
// regrouped, columns c..c+3 of both components first, c+4..c+7 next; a last
// group of four takes the two rows' columns into the two halves against the
// observation broadcast into both. Every operation acts lane by lane (the
// leftover columns through a blend that keeps lanes 0 and 4 only), so each
// component gets the bits the 16-byte pass gives it. The horizontal
// additions of 256-bit registers act on each half by itself: one fold of
// four registers gives components m..m+3 in the low half and m+4..m+7 in
// the high half.
//
// A pass takes eight components. The components after the last eight-pass,
// and every width below 4, go to the 16-byte kernel itself; since
// eight-passes cover a multiple of four components, the 16-byte kernel still
// takes the same components in passes of four and the same last one to
// three one at a time.
//
// Built with -mavx2 -mno-fma and without contraction: nothing is fused. It
// must only run where the processor has AVX2 (ownGaussWideKernels); all
// helpers have internal linkage, so no AVX2 code can be picked up elsewhere.
#include <immintrin.h>

#include <cstddef>

#include "gauss/gauss.h"

namespace {

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

// Sums of components m..m+7: lanes 0..3 hold m..m+3, lanes 4..7 m+4..m+7.
template <bool Al, class Rows>
inline __m256 sums8(const Rows& rows, int m, const float* x, int width) {
  const float* mr[8];
  const float* vr[8];
  for (int k = 0; k < 8; ++k) {
    mr[k] = rows.m(m + k);
    vr[k] = rows.v(m + k);
  }
  __m256 a[4] = {_mm256_setzero_ps(), _mm256_setzero_ps(), _mm256_setzero_ps(),
                 _mm256_setzero_ps()};
  int c = 0;
  // Eight columns of one component per register, so that each load serves
  // eight columns; the halves of two components then meet in one register,
  // columns c..c+3 first, c+4..c+7 next, as the 16-byte pass adds them.
  for (; c + 8 <= width; c += 8) {
    const __m256 xa = _mm256_loadu_ps(x + c);
    for (int k = 0; k < 4; ++k) {
      const __m256 d0 = _mm256_sub_ps(xa, _mm256_loadu_ps(mr[k] + c));
      const __m256 d1 = _mm256_sub_ps(xa, _mm256_loadu_ps(mr[k + 4] + c));
      const __m256 t0 = _mm256_mul_ps(_mm256_mul_ps(d0, d0), _mm256_loadu_ps(vr[k] + c));
      const __m256 t1 = _mm256_mul_ps(_mm256_mul_ps(d1, d1), _mm256_loadu_ps(vr[k + 4] + c));
      a[k] = _mm256_add_ps(a[k], _mm256_insertf128_ps(t0, _mm256_castps256_ps128(t1), 1));
      a[k] = _mm256_add_ps(a[k], _mm256_permute2f128_ps(t0, t1, 0x31));
    }
  }
  if (c + 4 <= width) {
    const __m256 xa = _mm256_broadcast_ps(reinterpret_cast<const __m128*>(x + c));
    for (int k = 0; k < 4; ++k) {
      const __m256 d = _mm256_sub_ps(xa, loadPair<Al>(mr[k] + c, mr[k + 4] + c));
      const __m256 t = _mm256_mul_ps(_mm256_mul_ps(d, d), loadPair<Al>(vr[k] + c, vr[k + 4] + c));
      a[k] = _mm256_add_ps(a[k], t);
    }
    c += 4;
  }
  if (const int nTail = width - c) {
    // The products of the last four columns (lane j: column width-4+j);
    // each leftover column joins lane 0 of its component in column order.
    // Every lane of the sum is computed, lanes 0 and 4 alone are kept.
    const int c0 = width - 4;
    const __m256 xa = _mm256_broadcast_ps(reinterpret_cast<const __m128*>(x + c0));
    for (int k = 0; k < 4; ++k) {
      const __m256 d = _mm256_sub_ps(xa, loadPair<false>(mr[k] + c0, mr[k + 4] + c0));
      const __m256 t =
          _mm256_mul_ps(_mm256_mul_ps(d, d), loadPair<false>(vr[k] + c0, vr[k + 4] + c0));
      if (nTail == 3) {
        a[k] = _mm256_blend_ps(a[k], _mm256_add_ps(a[k], _mm256_permute_ps(t, 0x55)), 0x11);
        a[k] = _mm256_blend_ps(a[k], _mm256_add_ps(a[k], _mm256_permute_ps(t, 0xAA)), 0x11);
      } else if (nTail == 2) {
        a[k] = _mm256_blend_ps(a[k], _mm256_add_ps(a[k], _mm256_permute_ps(t, 0xAA)), 0x11);
      }
      a[k] = _mm256_blend_ps(a[k], _mm256_add_ps(a[k], _mm256_permute_ps(t, 0xFF)), 0x11);
    }
  }
  return _mm256_hadd_ps(_mm256_hadd_ps(a[0], a[1]), _mm256_hadd_ps(a[2], a[3]));
}

struct ScoreInPlace {
  float* io;
  void eight(int m, __m256 s) const {
    const __m256 v = _mm256_loadu_ps(io + m);
    _mm256_storeu_ps(io + m,
                     _mm256_mul_ps(_mm256_sub_ps(_mm256_add_ps(v, v), s), _mm256_set1_ps(0.5f)));
  }
};

struct ScoreMax {
  const float* val;
  float* dst;
  // maxps keeps its second operand when either is NaN: a NaN score leaves
  // the destination as it was.
  void eight(int m, __m256 s) const {
    const __m256 v = _mm256_loadu_ps(val + m);
    const __m256 sc = _mm256_mul_ps(_mm256_sub_ps(_mm256_add_ps(v, v), s), _mm256_set1_ps(0.5f));
    _mm256_storeu_ps(dst + m, _mm256_max_ps(sc, _mm256_loadu_ps(dst + m)));
  }
};

// `rest(m)` runs the 16-byte kernel on components m..height-1.
template <bool Al, class Rows, class Op, class Rest>
inline void mix(const Rows& rows, const float* x, int width, const Op& op, int height, Rest rest) {
  // The leftover columns are read as part of the last four columns, so a
  // width below 4 goes to the 16-byte kernel entirely.
  if (width < 4) {
    rest(0);
    return;
  }
  int m = 0;
  for (; m + 8 <= height; m += 8) op.eight(m, sums8<Al>(rows, m, x, width));
  if (m < height) rest(m);
}

}  // namespace

extern "C" {

#define QELSR_WIDE_MIX_D2(NAME, AL, SSE)                                                      \
  void NAME(const qel32f* pMean, const qel32f* pVar, int step, const qel32f* pSrc, int width, \
            qel32f* pSrcDst, int height) {                                                    \
    mix<AL>(RowsD2<float>{pMean, pVar, step}, pSrc, width, ScoreInPlace{pSrcDst}, height,     \
            [&](int m) {                                                                      \
              const std::ptrdiff_t o = static_cast<std::ptrdiff_t>(m) * step;                 \
              SSE(pMean + o, pVar + o, step, pSrc, width, pSrcDst + m, height - m);           \
            });                                                                               \
  }
#define QELSR_WIDE_MIX_D2L(NAME, AL, SSE)                                                      \
  void NAME(const qel32f* const* ppMean, const qel32f* const* ppVar, const qel32f* pSrc,       \
            int width, qel32f* pSrcDst, int height) {                                          \
    mix<AL>(RowsD2L<float>{ppMean, ppVar}, pSrc, width, ScoreInPlace{pSrcDst}, height,         \
            [&](int m) { SSE(ppMean + m, ppVar + m, pSrc, width, pSrcDst + m, height - m); }); \
  }
#define QELSR_WIDE_MAX_D2(NAME, AL, SSE)                                                      \
  void NAME(const qel32f* pMean, const qel32f* pVar, int step, const qel32f* pSrc, int width, \
            const qel32f* pVal, qel32f* pSrcDst, int height) {                                \
    mix<AL>(RowsD2<float>{pMean, pVar, step}, pSrc, width, ScoreMax{pVal, pSrcDst}, height,   \
            [&](int m) {                                                                      \
              const std::ptrdiff_t o = static_cast<std::ptrdiff_t>(m) * step;                 \
              SSE(pMean + o, pVar + o, step, pSrc, width, pVal + m, pSrcDst + m, height - m); \
            });                                                                               \
  }
#define QELSR_WIDE_MAX_D2L(NAME, AL, SSE)                                                 \
  void NAME(const qel32f* const* ppMean, const qel32f* const* ppVar, const qel32f* pSrc,  \
            int width, const qel32f* pVal, qel32f* pSrcDst, int height) {                 \
    mix<AL>(RowsD2L<float>{ppMean, ppVar}, pSrc, width, ScoreMax{pVal, pSrcDst}, height,  \
            [&](int m) {                                                                  \
              SSE(ppMean + m, ppVar + m, pSrc, width, pVal + m, pSrcDst + m, height - m); \
            });                                                                           \
  }

QELSR_WIDE_MIX_D2(qelsLGaussMultiMix_32f_D2_M7_Avx2, false, qelsLGaussMultiMix_32f_D2_M7)
QELSR_WIDE_MIX_D2(qelsLGaussMultiMix_32f_D2_M7_Al_Avx2, true, qelsLGaussMultiMix_32f_D2_M7_Al)
QELSR_WIDE_MIX_D2L(qelsLGaussMultiMix_32f_D2L_M7_Avx2, false, qelsLGaussMultiMix_32f_D2L_M7)
QELSR_WIDE_MIX_D2L(qelsLGaussMultiMix_32f_D2L_M7_Al_Avx2, true, qelsLGaussMultiMix_32f_D2L_M7_Al)
QELSR_WIDE_MAX_D2(qelsLGaussMaxMultiMix_32f_D2_M7_Avx2, false, qelsLGaussMaxMultiMix_32f_D2_M7)
QELSR_WIDE_MAX_D2(qelsLGaussMaxMultiMix_32f_D2_M7_Al_Avx2, true, qelsLGaussMaxMultiMix_32f_D2_M7_Al)
QELSR_WIDE_MAX_D2L(qelsLGaussMaxMultiMix_32f_D2L_M7_Avx2, false, qelsLGaussMaxMultiMix_32f_D2L_M7)
QELSR_WIDE_MAX_D2L(qelsLGaussMaxMultiMix_32f_D2L_M7_Al_Avx2, true,
                   qelsLGaussMaxMultiMix_32f_D2L_M7_Al)

}  // extern "C"
