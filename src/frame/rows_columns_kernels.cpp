// Kernels of the row and column primitives. One templated body serves both
// twins of a pair: the aligned twin differs only in its load and store
// instructions, so the two compute bit-identical results.
//
// The orders of additions of the row and column sums are part of their
// results. Vectors here run across independent sums (four rows side by side,
// or four columns), never inside one sum beyond the lane structure that the
// order itself prescribes, so every sum is formed exactly in its fixed order.
#include <cstddef>

#include "base/simd.h"
#include "frame/rows_columns.h"

namespace {

using qelsr::simd::loadpd;
using qelsr::simd::loadps;
using qelsr::simd::loadsi;
using qelsr::simd::storeps;
using qelsr::simd::storesi;
using std::ptrdiff_t;

// Row r of a matrix in one block with a stride.
template <typename T>
struct StridedRows {
  T* base;
  ptrdiff_t step;
  T* operator[](ptrdiff_t r) const { return base + r * step; }
};

// Row r of a matrix given by row pointers.
template <typename T>
struct ListedRows {
  T* const* rows;
  T* operator[](ptrdiff_t r) const { return rows[r]; }
};

// The first n (1..3) floats at p in the low lanes, zeros above: never reads
// past the end of a row.
inline __m128 loadPartial(const float* p, int n) {
  if (n == 1) return _mm_load_ss(p);
  const __m128 two = _mm_loadl_pi(_mm_setzero_ps(), reinterpret_cast<const __m64*>(p));
  if (n == 2) return two;
  return _mm_movelh_ps(two, _mm_load_ss(p + 2));
}

// ---------------------------------------------------------------- AddNRows

// Row numbers of twelve consecutive entries times the stride. The aligned
// twin reads the 32-bit bases as whole vectors: twelve entries are 48 bytes,
// so every pass starts on 16 bytes again.
template <bool Al>
inline void rowOffsets12(const qel32s* pInd, const unsigned short* pAddInd, ptrdiff_t step,
                         ptrdiff_t* off) {
  if constexpr (Al) {
    alignas(16) qel32s rows[12];
    const __m128i zero = _mm_setzero_si128();
    const __m128i add07 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(pAddInd));
    const __m128i add811 = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(pAddInd + 8));
    const __m128i a0 = _mm_unpacklo_epi16(add07, zero);
    const __m128i a1 = _mm_unpackhi_epi16(add07, zero);
    const __m128i a2 = _mm_unpacklo_epi16(add811, zero);
    _mm_store_si128(reinterpret_cast<__m128i*>(rows), _mm_add_epi32(loadsi<true>(pInd), a0));
    _mm_store_si128(reinterpret_cast<__m128i*>(rows + 4),
                    _mm_add_epi32(loadsi<true>(pInd + 4), a1));
    _mm_store_si128(reinterpret_cast<__m128i*>(rows + 8),
                    _mm_add_epi32(loadsi<true>(pInd + 8), a2));
    for (int k = 0; k < 12; ++k) off[k] = static_cast<ptrdiff_t>(rows[k]) * step;
  } else {
    for (int k = 0; k < 12; ++k) off[k] = (static_cast<ptrdiff_t>(pInd[k]) + pAddInd[k]) * step;
  }
}

// A block of NV vectors (4 * NV columns) stays in registers while the rows
// stream past, twelve to an unrolled pass. Every column is a plain
// left-to-right sum starting at val.
template <bool Al, int NV>
inline void calcDistBlock(const float* pSrc, ptrdiff_t step, const qel32s* pInd,
                          const unsigned short* pAddInd, int nRows, float* pDst, float val) {
  __m128 acc[NV];
  for (int v = 0; v < NV; ++v) acc[v] = _mm_set1_ps(val);
  int i = 0;
  for (; i + 12 <= nRows; i += 12) {
    ptrdiff_t off[12];
    rowOffsets12<Al>(pInd + i, pAddInd + i, step, off);
    for (int k = 0; k < 12; ++k)
      for (int v = 0; v < NV; ++v) acc[v] = _mm_add_ps(acc[v], loadps<Al>(pSrc + off[k] + 4 * v));
  }
  for (; i < nRows; ++i) {
    const float* row = pSrc + (static_cast<ptrdiff_t>(pInd[i]) + pAddInd[i]) * step;
    for (int v = 0; v < NV; ++v) acc[v] = _mm_add_ps(acc[v], loadps<Al>(row + 4 * v));
  }
  for (int v = 0; v < NV; ++v) _mm_storeu_ps(pDst + 4 * v, acc[v]);
}

// kStep > 0 fixes the stride at compile time (the loop copy for a stride
// of 8, where the row offsets become shifts).
template <bool Al, int kStep>
void calcDist(const float* pSrc, int stepArg, const qel32s* pInd, const unsigned short* pAddInd,
              int nRows, float* pDst, int width, float val) {
  const ptrdiff_t step = kStep > 0 ? kStep : stepArg;
  int c = 0;
  for (; c + 8 <= width; c += 8)
    calcDistBlock<Al, 2>(pSrc + c, step, pInd, pAddInd, nRows, pDst + c, val);
  if (c + 4 <= width) {
    calcDistBlock<Al, 1>(pSrc + c, step, pInd, pAddInd, nRows, pDst + c, val);
    c += 4;
  }
  for (; c < width; ++c) {
    float s = val;
    for (int i = 0; i < nRows; ++i)
      s += pSrc[(static_cast<ptrdiff_t>(pInd[i]) + pAddInd[i]) * step + c];
    pDst[c] = s;
  }
}

template <bool Al>
void calcDistDispatch(const float* pSrc, int step, const qel32s* pInd,
                      const unsigned short* pAddInd, int nRows, float* pDst, int width,
                      const float* pVal) {
  if (step == 8)
    calcDist<Al, 8>(pSrc, step, pInd, pAddInd, nRows, pDst, width, *pVal);
  else
    calcDist<Al, 0>(pSrc, step, pInd, pAddInd, nRows, pDst, width, *pVal);
}

// ---------------------------------------------------------------- AddAllRowSum

template <bool Al, int NV, class Rows>
inline void addAllRowsBlock(Rows rows, int height, int c, float* pSrcDst) {
  __m128 acc[NV];
  for (int v = 0; v < NV; ++v) acc[v] = loadps<Al>(pSrcDst + c + 4 * v);
  for (int r = 0; r < height; ++r) {
    const float* x = rows[r] + c;
    for (int v = 0; v < NV; ++v) acc[v] = _mm_add_ps(acc[v], loadps<Al>(x + 4 * v));
  }
  for (int v = 0; v < NV; ++v) storeps<Al>(pSrcDst + c + 4 * v, acc[v]);
}

// The destination is an accumulator, so no column may be visited twice:
// the last width % 4 columns run singly.
template <bool Al, class Rows>
void addAllRowSum(Rows rows, int height, float* pSrcDst, int width) {
  int c = 0;
  for (; c + 16 <= width; c += 16) addAllRowsBlock<Al, 4>(rows, height, c, pSrcDst);
  for (; c + 4 <= width; c += 4) addAllRowsBlock<Al, 1>(rows, height, c, pSrcDst);
  for (; c < width; ++c) {
    float s = pSrcDst[c];
    for (int r = 0; r < height; ++r) s += rows[r][c];
    pSrcDst[c] = s;
  }
}

// ---------------------------------------------------------------- SubRow

template <bool Al>
inline void subRow32f(const float* pSrc, float* y, int width) {
  int c = 0;
  for (; c + 8 <= width; c += 8) {
    storeps<Al>(y + c, _mm_sub_ps(loadps<Al>(y + c), loadps<Al>(pSrc + c)));
    storeps<Al>(y + c + 4, _mm_sub_ps(loadps<Al>(y + c + 4), loadps<Al>(pSrc + c + 4)));
  }
  if (c + 4 <= width) {
    storeps<Al>(y + c, _mm_sub_ps(loadps<Al>(y + c), loadps<Al>(pSrc + c)));
    c += 4;
  }
  for (; c < width; ++c) y[c] -= pSrc[c];
}

inline qel16s subSat16s(qel16s a, qel16s b) {
  int d = static_cast<int>(a) - static_cast<int>(b);
  if (d > 32767) d = 32767;
  if (d < -32768) d = -32768;
  return static_cast<qel16s>(d);
}

template <bool Al>
inline void subRow16s(const qel16s* pSrc, qel16s* y, int width) {
  int c = 0;
  for (; c + 8 <= width; c += 8)
    storesi<Al>(y + c, _mm_subs_epi16(loadsi<Al>(y + c), loadsi<Al>(pSrc + c)));
  for (; c < width; ++c) y[c] = subSat16s(y[c], pSrc[c]);
}

// ---------------------------------------------------------------- SumRow 32f

// Lane l of a row: the sum over its groups of 8 of (x[8k + l] + x[8k + 4 + l]),
// starting at 0.
inline float foldLanes01_23(__m128 acc) {
  const __m128 swapped = _mm_shuffle_ps(acc, acc, _MM_SHUFFLE(2, 3, 0, 1));
  const __m128 pairs = _mm_add_ps(acc, swapped);  // lane 0: l0 + l1, lane 2: l2 + l3
  return _mm_cvtss_f32(_mm_add_ss(pairs, _mm_movehl_ps(pairs, pairs)));
}

template <bool Al>
inline float sumRow32fOne(const float* x, int width) {
  __m128 acc = _mm_setzero_ps();
  int c = 0;
  for (; c + 8 <= width; c += 8)
    acc = _mm_add_ps(acc, _mm_add_ps(loadps<Al>(x + c), loadps<Al>(x + c + 4)));
  float s = foldLanes01_23(acc);
  for (; c < width; ++c) s += x[c];
  return s;
}

// Adds the next n (1..4) elements of four rows, one element at a time, to
// the four row sums in s.
template <bool Al>
inline __m128 addColumnsOfFour(__m128 s, const float* x0, const float* x1, const float* x2,
                               const float* x3, int n) {
  __m128 t0, t1, t2, t3;
  if (n == 4) {
    t0 = loadps<Al>(x0);
    t1 = loadps<Al>(x1);
    t2 = loadps<Al>(x2);
    t3 = loadps<Al>(x3);
  } else {
    t0 = loadPartial(x0, n);
    t1 = loadPartial(x1, n);
    t2 = loadPartial(x2, n);
    t3 = loadPartial(x3, n);
  }
  _MM_TRANSPOSE4_PS(t0, t1, t2, t3);
  s = _mm_add_ps(s, t0);
  if (n > 1) s = _mm_add_ps(s, t1);
  if (n > 2) s = _mm_add_ps(s, t2);
  if (n > 3) s = _mm_add_ps(s, t3);
  return s;
}

template <bool Al, class Rows>
void sumRow32f(Rows rows, int width, float* pDst, int height) {
  if (width == 1) {
    for (int r = 0; r < height; ++r) pDst[r] = rows[r][0];
    return;
  }
  const int body = width / 8 * 8;
  int r = 0;
  for (; r + 4 <= height; r += 4) {
    const float* x0 = rows[r];
    const float* x1 = rows[r + 1];
    const float* x2 = rows[r + 2];
    const float* x3 = rows[r + 3];
    __m128 l0 = _mm_setzero_ps(), l1 = l0, l2 = l0, l3 = l0;
    for (int c = 0; c < body; c += 8) {
      l0 = _mm_add_ps(l0, _mm_add_ps(loadps<Al>(x0 + c), loadps<Al>(x0 + c + 4)));
      l1 = _mm_add_ps(l1, _mm_add_ps(loadps<Al>(x1 + c), loadps<Al>(x1 + c + 4)));
      l2 = _mm_add_ps(l2, _mm_add_ps(loadps<Al>(x2 + c), loadps<Al>(x2 + c + 4)));
      l3 = _mm_add_ps(l3, _mm_add_ps(loadps<Al>(x3 + c), loadps<Al>(x3 + c + 4)));
    }
    // Lane l of the four rows side by side, then the fold of every row.
    _MM_TRANSPOSE4_PS(l0, l1, l2, l3);
    __m128 s = _mm_add_ps(_mm_add_ps(l0, l1), _mm_add_ps(l2, l3));
    int c = body;
    if (width - c >= 4) {
      s = addColumnsOfFour<Al>(s, x0 + c, x1 + c, x2 + c, x3 + c, 4);
      c += 4;
    }
    if (c < width) s = addColumnsOfFour<false>(s, x0 + c, x1 + c, x2 + c, x3 + c, width - c);
    _mm_storeu_ps(pDst + r, s);
  }
  for (; r < height; ++r) pDst[r] = sumRow32fOne<Al>(rows[r], width);
}

// ---------------------------------------------------------------- SumRow 64f

// Lane l of a row: per group of 8, += x[8k + l] + x[8k + 2 + l], then
// += x[8k + 4 + l] + x[8k + 6 + l]. Unlike the single and 16-bit sums, a
// width of 1 has no copy of its own here: it is 0 + 0 + x[0], which only
// differs from a copy for x[0] = -0 (giving +0).
template <bool Al>
inline __m128d laneSums64f(const double* x, int body) {
  __m128d acc = _mm_setzero_pd();
  for (int c = 0; c < body; c += 8) {
    acc = _mm_add_pd(acc, _mm_add_pd(loadpd<Al>(x + c), loadpd<Al>(x + c + 2)));
    acc = _mm_add_pd(acc, _mm_add_pd(loadpd<Al>(x + c + 4), loadpd<Al>(x + c + 6)));
  }
  return acc;
}

template <bool Al, class Rows>
void sumRow64f(Rows rows, int width, double* pDst, int height) {
  const int body = width / 8 * 8;
  int r = 0;
  for (; r + 2 <= height; r += 2) {
    const double* x0 = rows[r];
    const double* x1 = rows[r + 1];
    const __m128d a = laneSums64f<Al>(x0, body);
    const __m128d b = laneSums64f<Al>(x1, body);
    __m128d s = _mm_add_pd(_mm_unpacklo_pd(a, b), _mm_unpackhi_pd(a, b));
    for (int c = body; c < width; ++c) s = _mm_add_pd(s, _mm_loadh_pd(_mm_load_sd(x0 + c), x1 + c));
    _mm_storeu_pd(pDst + r, s);
  }
  if (r < height) {
    const double* x = rows[r];
    const __m128d a = laneSums64f<Al>(x, body);
    double s = _mm_cvtsd_f64(_mm_add_sd(a, _mm_unpackhi_pd(a, a)));
    for (int c = body; c < width; ++c) s += x[c];
    pDst[r] = s;
  }
}

// ---------------------------------------------------------------- SumRow 16s32f

// Pair sums x[2m] + x[2m + 1] of eight 16-bit values, exact as 32-bit
// integers, then converted to single.
inline __m128 pairSums8(__m128i v) { return _mm_cvtepi32_ps(_mm_madd_epi16(v, _mm_set1_epi16(1))); }

// Lanes of a row: every group of 16 adds two vectors of pair sums in element
// order; every group of 4 of the rest adds its two pair sums to lanes 0 and 1
// (lanes 2 and 3 get +0, which leaves them unchanged: they never hold -0).
// Returns the number of elements consumed.
template <bool Al>
inline __m128 laneSums16s(const qel16s* x, int width, int* consumed) {
  __m128 acc = _mm_setzero_ps();
  int c = 0;
  for (; c + 16 <= width; c += 16) {
    acc = _mm_add_ps(acc, pairSums8(loadsi<Al>(x + c)));
    acc = _mm_add_ps(acc, pairSums8(loadsi<Al>(x + c + 8)));
  }
  for (; c + 4 <= width; c += 4)
    acc = _mm_add_ps(acc, pairSums8(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(x + c))));
  *consumed = c;
  return acc;
}

template <bool SrcAl, bool DstAl, class Rows>
void sumRow16s32f(Rows rows, int width, float* pDst, int height) {
  int r = 0;
  for (; r + 4 <= height; r += 4) {
    const qel16s* x0 = rows[r];
    const qel16s* x1 = rows[r + 1];
    const qel16s* x2 = rows[r + 2];
    const qel16s* x3 = rows[r + 3];
    int c = 0;
    __m128 l0 = laneSums16s<SrcAl>(x0, width, &c);
    __m128 l1 = laneSums16s<SrcAl>(x1, width, &c);
    __m128 l2 = laneSums16s<SrcAl>(x2, width, &c);
    __m128 l3 = laneSums16s<SrcAl>(x3, width, &c);
    _MM_TRANSPOSE4_PS(l0, l1, l2, l3);
    __m128 s = _mm_add_ps(_mm_add_ps(l0, l2), _mm_add_ps(l1, l3));
    for (; c < width; ++c)
      s = _mm_add_ps(s, _mm_setr_ps(static_cast<float>(x0[c]), static_cast<float>(x1[c]),
                                    static_cast<float>(x2[c]), static_cast<float>(x3[c])));
    storeps<DstAl>(pDst + r, s);
  }
  for (; r < height; ++r) {
    const qel16s* x = rows[r];
    int c = 0;
    const __m128 acc = laneSums16s<SrcAl>(x, width, &c);
    const __m128 halves = _mm_add_ps(acc, _mm_movehl_ps(acc, acc));  // l0 + l2, l1 + l3
    float s =
        _mm_cvtss_f32(_mm_add_ss(halves, _mm_shuffle_ps(halves, halves, _MM_SHUFFLE(1, 1, 1, 1))));
    for (; c < width; ++c) s += static_cast<float>(x[c]);
    pDst[r] = s;
  }
}

// ---------------------------------------------------------------- SumColumn 32f, 64f

template <typename T>
struct VecType;
template <>
struct VecType<float> {
  using type = __m128;
};
template <>
struct VecType<double> {
  using type = __m128d;
};
template <typename T>
using VecOf = typename VecType<T>::type;
template <bool Al>
inline __m128 vload(const float* p) {
  return loadps<Al>(p);
}
template <bool Al>
inline __m128d vload(const double* p) {
  return loadpd<Al>(p);
}
inline __m128 vadd(__m128 a, __m128 b) { return _mm_add_ps(a, b); }
inline __m128d vadd(__m128d a, __m128d b) { return _mm_add_pd(a, b); }
inline void vstoreu(float* p, __m128 v) { _mm_storeu_ps(p, v); }
inline void vstoreu(double* p, __m128d v) { _mm_storeu_pd(p, v); }

// Adds rows [r, end) of NV vectors of columns from c to acc, rows in pairs;
// from row 0 the sum starts as row0 + row1. An odd row left over is added
// alone: it can only be the last row of the matrix.
template <bool Al, int NV, typename T, class Rows>
inline void addRowPairs(Rows rows, int r, int end, int c, VecOf<T>* acc) {
  constexpr int L = 16 / sizeof(T);
  if (r == 0) {
    const T* a = rows[0] + c;
    const T* b = rows[1] + c;
    for (int v = 0; v < NV; ++v) acc[v] = vadd(vload<Al>(a + L * v), vload<Al>(b + L * v));
    r = 2;
  }
  for (; r + 2 <= end; r += 2) {
    const T* a = rows[r] + c;
    const T* b = rows[r + 1] + c;
    for (int v = 0; v < NV; ++v)
      acc[v] = vadd(acc[v], vadd(vload<Al>(a + L * v), vload<Al>(b + L * v)));
  }
  if (r < end) {
    const T* a = rows[r] + c;
    for (int v = 0; v < NV; ++v) acc[v] = vadd(acc[v], vload<Al>(a + L * v));
  }
}

template <bool Al, int NV, typename T, class Rows>
inline void sumColumnBlock(Rows rows, int r0, int end, int c, T* pDst) {
  constexpr int L = 16 / sizeof(T);
  VecOf<T> acc[NV];
  if (r0 > 0)
    for (int v = 0; v < NV; ++v) acc[v] = vload<false>(pDst + c + L * v);
  addRowPairs<Al, NV, T>(rows, r0, end, c, acc);
  for (int v = 0; v < NV; ++v) vstoreu(pDst + c + L * v, acc[v]);
}

// Rows go in slabs that stay in cache while every column block passes over
// them; between slabs the partial sums wait in pDst, which is exact. A slab
// has an even number of rows, so the pairs are those of the whole matrix.
inline constexpr int kSlabBytes = 16384;

template <bool Al, typename T, class Rows>
void sumColumnPairs(Rows rows, int height, T* pDst, int width) {
  if (height == 1) {
    const T* x = rows[0];
    for (int c = 0; c < width; ++c) pDst[c] = x[c];
    return;
  }
  constexpr int L = 16 / sizeof(T);
  if (width < L) {
    for (int c = 0; c < width; ++c) {
      T s = rows[0][c] + rows[1][c];
      int r = 2;
      for (; r + 2 <= height; r += 2) s += rows[r][c] + rows[r + 1][c];
      if (r < height) s += rows[r][c];
      pDst[c] = s;
    }
    return;
  }
  const long long rowBytes = static_cast<long long>(width) * sizeof(T);
  const int slab = rowBytes >= kSlabBytes / 2 ? 2 : static_cast<int>(kSlabBytes / rowBytes) & ~1;
  // The last L columns again when the width is not a whole number of
  // vectors: every column's sum is independent of its neighbours, so the
  // columns computed twice get the same value twice. Their running sum
  // stays in a register across the slabs.
  const bool tail = width % L != 0;
  VecOf<T> tailAcc[1] = {};
  for (int r0 = 0; r0 < height; r0 += slab) {
    const int end = height - r0 > slab ? r0 + slab : height;
    int c = 0;
    for (; c + 4 * L <= width; c += 4 * L) sumColumnBlock<Al, 4, T>(rows, r0, end, c, pDst);
    for (; c + L <= width; c += L) sumColumnBlock<Al, 1, T>(rows, r0, end, c, pDst);
    if (tail) addRowPairs<false, 1, T>(rows, r0, end, width - L, tailAcc);
  }
  if (tail) vstoreu(pDst + width - L, tailAcc[0]);
}

template <bool Al, class Rows>
void sumColumn32f(Rows rows, int height, float* pDst, int width) {
  sumColumnPairs<Al, float>(rows, height, pDst, width);
}

template <bool Al, class Rows>
void sumColumn64f(Rows rows, int height, double* pDst, int width) {
  sumColumnPairs<Al, double>(rows, height, pDst, width);
}

// ---------------------------------------------------------------- SumColumn 16s32f

inline __m128i widenLo(__m128i v) { return _mm_srai_epi32(_mm_unpacklo_epi16(v, v), 16); }
inline __m128i widenHi(__m128i v) { return _mm_srai_epi32(_mm_unpackhi_epi16(v, v), 16); }

// Groups of four rows from row 0 (the last group takes what is left) are
// summed exactly as 32-bit integers; each group sum is converted to single
// and added to the running sum.
// NV8 vectors of 8 columns each.
template <bool SrcAl, bool DstAl, int NV8, class Rows>
inline void sumColumnBlock16s(Rows rows, int height, int c, float* pDst) {
  __m128 acc[2 * NV8];
  for (int v = 0; v < 2 * NV8; ++v) acc[v] = _mm_setzero_ps();
  for (int g = 0; g < height; g += 4) {
    const int end = g + 4 < height ? g + 4 : height;
    __m128i sum[2 * NV8];
    for (int v = 0; v < 2 * NV8; ++v) sum[v] = _mm_setzero_si128();
    for (int r = g; r < end; ++r) {
      const qel16s* x = rows[r] + c;
      for (int v = 0; v < NV8; ++v) {
        const __m128i w = loadsi<SrcAl>(x + 8 * v);
        sum[2 * v] = _mm_add_epi32(sum[2 * v], widenLo(w));
        sum[2 * v + 1] = _mm_add_epi32(sum[2 * v + 1], widenHi(w));
      }
    }
    for (int v = 0; v < 2 * NV8; ++v) acc[v] = _mm_add_ps(acc[v], _mm_cvtepi32_ps(sum[v]));
  }
  for (int v = 0; v < 2 * NV8; ++v) storeps<DstAl>(pDst + c + 4 * v, acc[v]);
}

// Four columns; the 8-byte loads have no alignment to keep.
template <bool DstAl, class Rows>
inline void sumColumnQuad16s(Rows rows, int height, int c, float* pDst) {
  __m128 acc = _mm_setzero_ps();
  for (int g = 0; g < height; g += 4) {
    const int end = g + 4 < height ? g + 4 : height;
    __m128i sum = _mm_setzero_si128();
    for (int r = g; r < end; ++r)
      sum = _mm_add_epi32(sum,
                          widenLo(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(rows[r] + c))));
    acc = _mm_add_ps(acc, _mm_cvtepi32_ps(sum));
  }
  storeps<DstAl>(pDst + c, acc);
}

template <bool SrcAl, bool DstAl, class Rows>
void sumColumn16s32f(Rows rows, int height, float* pDst, int width) {
  int c = 0;
  for (; c + 16 <= width; c += 16) sumColumnBlock16s<SrcAl, DstAl, 2>(rows, height, c, pDst);
  for (; c + 8 <= width; c += 8) sumColumnBlock16s<SrcAl, DstAl, 1>(rows, height, c, pDst);
  if (c + 4 <= width) {
    sumColumnQuad16s<DstAl>(rows, height, c, pDst);
    c += 4;
  }
  if (c == width) return;
  if (width >= 4) {
    sumColumnQuad16s<false>(rows, height, width - 4, pDst);  // last four again
    return;
  }
  for (; c < width; ++c) {
    float s = 0.0f;
    for (int g = 0; g < height; g += 4) {
      const int end = g + 4 < height ? g + 4 : height;
      int sum = 0;
      for (int r = g; r < end; ++r) sum += rows[r][c];
      s += static_cast<float>(sum);
    }
    pDst[c] = s;
  }
}

// ---------------------------------------------------------------- CopyColumn

template <bool Al>
void copyColumn32f(const float* pSrc, int width, float* pDst, int step, int height) {
  for (int r = 0; r < height; ++r) {
    const float* x = pSrc + static_cast<ptrdiff_t>(r) * width;
    float* y = pDst + static_cast<ptrdiff_t>(r) * step;
    int c = 0;
    for (; c + 8 <= width; c += 8) {
      storeps<Al>(y + c, loadps<Al>(x + c));
      storeps<Al>(y + c + 4, loadps<Al>(x + c + 4));
    }
    if (c + 4 <= width) {
      storeps<Al>(y + c, loadps<Al>(x + c));
      c += 4;
    }
    for (; c < width; ++c) y[c] = x[c];
  }
}

// The packed 16-bit source keeps no alignment from row to row; only the
// destination rows are aligned in the aligned twin.
template <bool Al>
void copyColumn16s(const qel16s* pSrc, int width, qel16s* pDst, int step, int height) {
  for (int r = 0; r < height; ++r) {
    const qel16s* x = pSrc + static_cast<ptrdiff_t>(r) * width;
    qel16s* y = pDst + static_cast<ptrdiff_t>(r) * step;
    int c = 0;
    for (; c + 8 <= width; c += 8) storesi<Al>(y + c, loadsi<false>(x + c));
    for (; c < width; ++c) y[c] = x[c];
  }
}

template <typename T>
StridedRows<const T> strided(const T* p, int step) {
  return {p, step};
}
template <typename T>
ListedRows<const T> listed(const T* const* pp) {
  return {pp};
}

}  // namespace

extern "C" {

void qelsCalcDist_M7(const qel32f* pSrc, int step, const qel32s* pInd,
                     const unsigned short* pAddInd, int nRows, qel32f* pDst, int width,
                     const qel32f* pVal) {
  calcDistDispatch<false>(pSrc, step, pInd, pAddInd, nRows, pDst, width, pVal);
}
void qelsCalcDist_M7_Al(const qel32f* pSrc, int step, const qel32s* pInd,
                        const unsigned short* pAddInd, int nRows, qel32f* pDst, int width,
                        const qel32f* pVal) {
  calcDistDispatch<true>(pSrc, step, pInd, pAddInd, nRows, pDst, width, pVal);
}

void qelsAddAllRowSum_32f_D2_M7(const qel32f* pSrc, int step, int height, qel32f* pSrcDst,
                                int width) {
  addAllRowSum<false>(strided(pSrc, step), height, pSrcDst, width);
}
void qelsAddAllRowSum_32f_D2_M7_Al(const qel32f* pSrc, int step, int height, qel32f* pSrcDst,
                                   int width) {
  addAllRowSum<true>(strided(pSrc, step), height, pSrcDst, width);
}
void qelsAddAllRowSum_32f_D2L_M7(const qel32f* const* ppSrc, int height, qel32f* pSrcDst,
                                 int width) {
  addAllRowSum<false>(listed(ppSrc), height, pSrcDst, width);
}
void qelsAddAllRowSum_32f_D2L_M7_Al(const qel32f* const* ppSrc, int height, qel32f* pSrcDst,
                                    int width) {
  addAllRowSum<true>(listed(ppSrc), height, pSrcDst, width);
}

void qelsSubRow_32f_D2_M7(const qel32f* pSrc, int width, qel32f* pSrcDst, int step, int height) {
  for (int r = 0; r < height; ++r)
    subRow32f<false>(pSrc, pSrcDst + static_cast<ptrdiff_t>(r) * step, width);
}
void qelsSubRow_32f_D2_M7_Al(const qel32f* pSrc, int width, qel32f* pSrcDst, int step, int height) {
  for (int r = 0; r < height; ++r)
    subRow32f<true>(pSrc, pSrcDst + static_cast<ptrdiff_t>(r) * step, width);
}
void qelsSubRow_32f_D2L_M7(const qel32f* pSrc, qel32f* const* ppSrcDst, int width, int height) {
  for (int r = 0; r < height; ++r) subRow32f<false>(pSrc, ppSrcDst[r], width);
}
void qelsSubRow_32f_D2L_M7_Al(const qel32f* pSrc, qel32f* const* ppSrcDst, int width, int height) {
  for (int r = 0; r < height; ++r) subRow32f<true>(pSrc, ppSrcDst[r], width);
}
void qelsSubRow_16s_D2_M7(const qel16s* pSrc, int width, qel16s* pSrcDst, int step, int height) {
  for (int r = 0; r < height; ++r)
    subRow16s<false>(pSrc, pSrcDst + static_cast<ptrdiff_t>(r) * step, width);
}
void qelsSubRow_16s_D2_M7_Al(const qel16s* pSrc, int width, qel16s* pSrcDst, int step, int height) {
  for (int r = 0; r < height; ++r)
    subRow16s<true>(pSrc, pSrcDst + static_cast<ptrdiff_t>(r) * step, width);
}
void qelsSubRow_16s_D2L_M7(const qel16s* pSrc, qel16s* const* ppSrcDst, int width, int height) {
  for (int r = 0; r < height; ++r) subRow16s<false>(pSrc, ppSrcDst[r], width);
}
void qelsSubRow_16s_D2L_M7_Al(const qel16s* pSrc, qel16s* const* ppSrcDst, int width, int height) {
  for (int r = 0; r < height; ++r) subRow16s<true>(pSrc, ppSrcDst[r], width);
}

void qelsSumRow_32f_D2_M7(const qel32f* pSrc, int width, int step, qel32f* pDst, int height) {
  sumRow32f<false>(strided(pSrc, step), width, pDst, height);
}
void qelsSumRow_32f_D2_M7_Al(const qel32f* pSrc, int width, int step, qel32f* pDst, int height) {
  sumRow32f<true>(strided(pSrc, step), width, pDst, height);
}
void qelsSumRow_32f_D2L_M7(const qel32f* const* ppSrc, int width, qel32f* pDst, int height) {
  sumRow32f<false>(listed(ppSrc), width, pDst, height);
}
void qelsSumRow_32f_D2L_M7_Al(const qel32f* const* ppSrc, int width, qel32f* pDst, int height) {
  sumRow32f<true>(listed(ppSrc), width, pDst, height);
}
void qelsSumRow_64f_D2_M7(const qel64f* pSrc, int width, int step, qel64f* pDst, int height) {
  sumRow64f<false>(strided(pSrc, step), width, pDst, height);
}
void qelsSumRow_64f_D2_M7_Al(const qel64f* pSrc, int width, int step, qel64f* pDst, int height) {
  sumRow64f<true>(strided(pSrc, step), width, pDst, height);
}
void qelsSumRow_64f_D2L_M7(const qel64f* const* ppSrc, int width, qel64f* pDst, int height) {
  sumRow64f<false>(listed(ppSrc), width, pDst, height);
}
void qelsSumRow_64f_D2L_M7_Al(const qel64f* const* ppSrc, int width, qel64f* pDst, int height) {
  sumRow64f<true>(listed(ppSrc), width, pDst, height);
}
void qelsSumRow_16s32f_D2_M7(const qel16s* pSrc, int width, int step, qel32f* pDst, int height) {
  sumRow16s32f<false, false>(strided(pSrc, step), width, pDst, height);
}
void qelsSumRow_16s32f_D2_M7_Al(const qel16s* pSrc, int width, int step, qel32f* pDst, int height) {
  sumRow16s32f<true, true>(strided(pSrc, step), width, pDst, height);
}
void qelsSumRow_16s32f_D2L_M7(const qel16s* const* ppSrc, int width, qel32f* pDst, int height) {
  sumRow16s32f<false, false>(listed(ppSrc), width, pDst, height);
}
void qelsSumRow_16s32f_D2L_M7_Al(const qel16s* const* ppSrc, int width, qel32f* pDst, int height) {
  sumRow16s32f<true, false>(listed(ppSrc), width, pDst, height);
}

void qelsSumColumn_32f_D2_M7(const qel32f* pSrc, int step, int height, qel32f* pDst, int width) {
  sumColumn32f<false>(strided(pSrc, step), height, pDst, width);
}
void qelsSumColumn_32f_D2_M7_Al(const qel32f* pSrc, int step, int height, qel32f* pDst, int width) {
  sumColumn32f<true>(strided(pSrc, step), height, pDst, width);
}
void qelsSumColumn_32f_D2L_M7(const qel32f* const* ppSrc, int height, qel32f* pDst, int width) {
  sumColumn32f<false>(listed(ppSrc), height, pDst, width);
}
void qelsSumColumn_32f_D2L_M7_Al(const qel32f* const* ppSrc, int height, qel32f* pDst, int width) {
  sumColumn32f<true>(listed(ppSrc), height, pDst, width);
}
void qelsSumColumn_64f_D2_M7(const qel64f* pSrc, int step, int height, qel64f* pDst, int width) {
  sumColumn64f<false>(strided(pSrc, step), height, pDst, width);
}
void qelsSumColumn_64f_D2_M7_Al(const qel64f* pSrc, int step, int height, qel64f* pDst, int width) {
  sumColumn64f<true>(strided(pSrc, step), height, pDst, width);
}
void qelsSumColumn_64f_D2L_M7(const qel64f* const* ppSrc, int height, qel64f* pDst, int width) {
  sumColumn64f<false>(listed(ppSrc), height, pDst, width);
}
void qelsSumColumn_64f_D2L_M7_Al(const qel64f* const* ppSrc, int height, qel64f* pDst, int width) {
  sumColumn64f<true>(listed(ppSrc), height, pDst, width);
}
void qelsSumColumn_16s32f_D2_M7(const qel16s* pSrc, int step, int height, qel32f* pDst, int width) {
  sumColumn16s32f<false, false>(strided(pSrc, step), height, pDst, width);
}
void qelsSumColumn_16s32f_D2_M7_Al(const qel16s* pSrc, int step, int height, qel32f* pDst,
                                   int width) {
  sumColumn16s32f<true, true>(strided(pSrc, step), height, pDst, width);
}
void qelsSumColumn_16s32f_D2L_M7(const qel16s* const* ppSrc, int height, qel32f* pDst, int width) {
  sumColumn16s32f<false, false>(listed(ppSrc), height, pDst, width);
}
void qelsSumColumn_16s32f_D2L_M7_Al(const qel16s* const* ppSrc, int height, qel32f* pDst,
                                    int width) {
  sumColumn16s32f<true, false>(listed(ppSrc), height, pDst, width);
}

void qelsCopyColumn_32f_D2_M7(const qel32f* pSrc, int width, qel32f* pDst, int step, int height) {
  copyColumn32f<false>(pSrc, width, pDst, step, height);
}
void qelsCopyColumn_32f_D2_M7_Al(const qel32f* pSrc, int width, qel32f* pDst, int step,
                                 int height) {
  copyColumn32f<true>(pSrc, width, pDst, step, height);
}
void qelsCopyColumn_16s_D2_M7(const qel16s* pSrc, int width, qel16s* pDst, int step, int height) {
  copyColumn16s<false>(pSrc, width, pDst, step, height);
}
void qelsCopyColumn_16s_D2_M7_Al(const qel16s* pSrc, int width, qel16s* pDst, int step,
                                 int height) {
  copyColumn16s<true>(pSrc, width, pDst, step, height);
}

}  // extern "C"
