// Reductions: sums, dot products, extremes with and without their index,
// and element-wise extremes. Where a result depends on the grouping of the
// additions, the grouping below is the one the results carry.
#include <cstdint>
#include <cstring>

#include "base/base.h"
#include "base/simd.h"
#include "frame/frame.h"

namespace {

// Elements before the next 16-byte boundary (0 when `p` is not on a 4-byte
// boundary: such data are read unaligned from the start).
template <typename T>
int headToBoundary(const T* p, int len) {
  const auto a = reinterpret_cast<std::uintptr_t>(p);
  if (a % sizeof(T) != 0) return 0;
  const int h = static_cast<int>(((16 - (a & 15)) & 15) / sizeof(T));
  return h < len ? h : len;
}

inline float lanesSum(__m128 v) {  // (l0 + l1) + (l2 + l3)
  alignas(16) float l[4];
  _mm_store_ps(l, v);
  return (l[0] + l[1]) + (l[2] + l[3]);
}

// ---------------------------------------------------------------------------
// Single-precision lane sums (qelsSum_32f with hint 1, qelsDotProd_32f).
//
// A scalar head up to the 16-byte boundary of the first source is summed in
// order into its own single; the rest is read aligned into four vector
// accumulators, 16 elements a step (elements 4k..4k+3 of a step to
// accumulator k), then remaining groups of four into accumulator 0. The
// accumulators combine as (a0 + a1) + (a2 + a3), their lanes as
// (l0 + l1) + (l2 + l3), and the last up to 3 elements are added to that in
// order. The grouping, and so the last bits, follow the alignment of the
// first source.
// ---------------------------------------------------------------------------
template <bool Aligned2, typename Term>
float laneBlockSum(const float* p1, const float* p2, int n, Term term) {
  using qelsr::simd::loadps;
  __m128 a0 = _mm_setzero_ps(), a1 = a0, a2 = a0, a3 = a0;
  int i = 0;
  for (; i + 16 <= n; i += 16) {
    a0 = _mm_add_ps(a0, term(_mm_load_ps(p1 + i), loadps<Aligned2>(p2 + i)));
    a1 = _mm_add_ps(a1, term(_mm_load_ps(p1 + i + 4), loadps<Aligned2>(p2 + i + 4)));
    a2 = _mm_add_ps(a2, term(_mm_load_ps(p1 + i + 8), loadps<Aligned2>(p2 + i + 8)));
    a3 = _mm_add_ps(a3, term(_mm_load_ps(p1 + i + 12), loadps<Aligned2>(p2 + i + 12)));
  }
  for (; i + 4 <= n; i += 4)
    a0 = _mm_add_ps(a0, term(_mm_load_ps(p1 + i), loadps<Aligned2>(p2 + i)));
  float s = lanesSum(_mm_add_ps(_mm_add_ps(a0, a1), _mm_add_ps(a2, a3)));
  for (; i < n; ++i) s += _mm_cvtss_f32(term(_mm_set_ss(p1[i]), _mm_set_ss(p2[i])));
  return s;
}

// The same with unaligned loads, for a first source that is not on a 4-byte
// boundary. Same grouping.
template <typename Term>
float laneBlockSumUnaligned(const float* p1, const float* p2, int n, Term term) {
  __m128 a0 = _mm_setzero_ps(), a1 = a0, a2 = a0, a3 = a0;
  int i = 0;
  for (; i + 16 <= n; i += 16) {
    a0 = _mm_add_ps(a0, term(_mm_loadu_ps(p1 + i), _mm_loadu_ps(p2 + i)));
    a1 = _mm_add_ps(a1, term(_mm_loadu_ps(p1 + i + 4), _mm_loadu_ps(p2 + i + 4)));
    a2 = _mm_add_ps(a2, term(_mm_loadu_ps(p1 + i + 8), _mm_loadu_ps(p2 + i + 8)));
    a3 = _mm_add_ps(a3, term(_mm_loadu_ps(p1 + i + 12), _mm_loadu_ps(p2 + i + 12)));
  }
  for (; i + 4 <= n; i += 4) a0 = _mm_add_ps(a0, term(_mm_loadu_ps(p1 + i), _mm_loadu_ps(p2 + i)));
  float s = lanesSum(_mm_add_ps(_mm_add_ps(a0, a1), _mm_add_ps(a2, a3)));
  for (; i < n; ++i) s += _mm_cvtss_f32(term(_mm_set_ss(p1[i]), _mm_set_ss(p2[i])));
  return s;
}

template <typename Term>
float laneSum(const float* p1, const float* p2, int n, Term term) {
  if (reinterpret_cast<std::uintptr_t>(p1) % 16 != 0) return laneBlockSumUnaligned(p1, p2, n, term);
  return qelsr::isAligned16(p2) ? laneBlockSum<true>(p1, p2, n, term)
                                : laneBlockSum<false>(p1, p2, n, term);
}

constexpr int kSumBlock = 32768;

float sumHint1(const float* p, int len) {
  const auto first = [](__m128 a, __m128) { return a; };
  const int h = headToBoundary(p, len);
  float head = 0.0f;
  for (int i = 0; i < h; ++i) head += p[i];
  // Each block of 32768 elements is summed in single precision; the head
  // and the block sums are added in double.
  double total = head;
  for (int done = h; done < len; done += kSumBlock) {
    const int n = len - done < kSumBlock ? len - done : kSumBlock;
    total += laneSum(p + done, p + done, n, first);
  }
  return static_cast<float>(total);
}

// Eight double lanes: element i to lane i % 8; the lanes combine as
// ((l0 + l2) + (l4 + l6)) + ((l1 + l3) + (l5 + l7)).
float sumDouble8(const float* p, int len) {
  __m128d a0 = _mm_setzero_pd(), a1 = a0, a2 = a0, a3 = a0;
  int i = 0;
  for (; i + 8 <= len; i += 8) {
    const __m128 x = _mm_loadu_ps(p + i), y = _mm_loadu_ps(p + i + 4);
    a0 = _mm_add_pd(a0, _mm_cvtps_pd(x));
    a1 = _mm_add_pd(a1, _mm_cvtps_pd(_mm_movehl_ps(x, x)));
    a2 = _mm_add_pd(a2, _mm_cvtps_pd(y));
    a3 = _mm_add_pd(a3, _mm_cvtps_pd(_mm_movehl_ps(y, y)));
  }
  alignas(16) double l[8];
  _mm_store_pd(l, a0);
  _mm_store_pd(l + 2, a1);
  _mm_store_pd(l + 4, a2);
  _mm_store_pd(l + 6, a3);
  for (int k = 0; i < len; ++i, ++k) l[k] += static_cast<double>(p[i]);
  return static_cast<float>(((l[0] + l[2]) + (l[4] + l[6])) + ((l[1] + l[3]) + (l[5] + l[7])));
}

// Round-half-even of an integral-or-not double already inside the int32
// range; independent of the caller's rounding mode.
qel32s roundHalfEven(double v) {
  double r = __builtin_floor(v);
  const double diff = v - r;  // exact: |v| < 2^31
  if (diff > 0.5 || (diff == 0.5 && static_cast<std::int64_t>(r) % 2 != 0)) r += 1.0;
  return static_cast<qel32s>(r);
}

// A 64-bit integer times 2^(-scaleFactor), rounded to nearest even and
// saturated to 32 bits, exactly.
qel32s scaleSaturate64(std::int64_t s, int scaleFactor) {
  constexpr std::int64_t kMax = INT32_MAX, kMin = INT32_MIN;
  if (scaleFactor > 0) {
    if (scaleFactor > 63) scaleFactor = 63;   // |s| < 2^63: the result is 0 anyway
    const std::int64_t q = s >> scaleFactor;  // floor
    const std::uint64_t rem =
        static_cast<std::uint64_t>(s) - (static_cast<std::uint64_t>(q) << scaleFactor);
    const std::uint64_t half = std::uint64_t{1} << (scaleFactor - 1);
    std::int64_t r = q;
    if (rem > half || (rem == half && (q & 1) != 0)) ++r;
    return static_cast<qel32s>(r > kMax ? kMax : r < kMin ? kMin : r);
  }
  if (s == 0) return 0;
  const int up = -scaleFactor;
  if (up >= 32) return s > 0 ? INT32_MAX : INT32_MIN;
  const __int128 v = static_cast<__int128>(s) << up;
  return static_cast<qel32s>(v > kMax ? kMax : v < kMin ? kMin : static_cast<std::int64_t>(v));
}

// Sign-extends the four int32 lanes of `v` and adds them to two int64 lanes.
inline __m128i addWidened(__m128i acc, __m128i v) {
  const __m128i sign = _mm_srai_epi32(v, 31);
  return _mm_add_epi64(acc,
                       _mm_add_epi64(_mm_unpacklo_epi32(v, sign), _mm_unpackhi_epi32(v, sign)));
}

inline std::int64_t lanes64(__m128i v) {
  alignas(16) std::int64_t l[2];
  _mm_store_si128(reinterpret_cast<__m128i*>(l), v);
  return l[0] + l[1];
}

// Exact sum of the products of two 16-bit vectors. _mm_madd_epi16 adds two
// products into 32 bits; the only pair that does not fit is
// (-32768)^2 + (-32768)^2 = 2^31, which reads as INT32_MIN and is widened as
// an unsigned value (no true pair sum can be INT32_MIN).
std::int64_t dot16s(const qel16s* a, const qel16s* b, int len) {
  __m128i acc = _mm_setzero_si128();
  const __m128i minInt = _mm_set1_epi32(INT32_MIN);
  int i = 0;
  for (; i + 8 <= len; i += 8) {
    const __m128i p = _mm_madd_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(a + i)),
                                     _mm_loadu_si128(reinterpret_cast<const __m128i*>(b + i)));
    const __m128i sign = _mm_andnot_si128(_mm_cmpeq_epi32(p, minInt), _mm_srai_epi32(p, 31));
    acc =
        _mm_add_epi64(acc, _mm_add_epi64(_mm_unpacklo_epi32(p, sign), _mm_unpackhi_epi32(p, sign)));
  }
  std::int64_t s = lanes64(acc);
  for (; i < len; ++i) s += static_cast<std::int64_t>(a[i]) * b[i];
  return s;
}

// Four double lanes: element i to lane i % 4, combined as (l0 + l2) + (l1 + l3).
template <typename T>
double dotDouble4(const T* a, const T* b, int len) {
  const auto pair = [](const T* p) {
    if constexpr (sizeof(T) == 4)
      return _mm_cvtps_pd(_mm_castsi128_ps(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p))));
    else
      return _mm_loadu_pd(p);
  };
  __m128d a0 = _mm_setzero_pd(), a1 = a0;
  int i = 0;
  for (; i + 4 <= len; i += 4) {
    a0 = _mm_add_pd(a0, _mm_mul_pd(pair(a + i), pair(b + i)));
    a1 = _mm_add_pd(a1, _mm_mul_pd(pair(a + i + 2), pair(b + i + 2)));
  }
  alignas(16) double l[4];
  _mm_store_pd(l, a0);
  _mm_store_pd(l + 2, a1);
  for (int k = 0; i < len; ++i, ++k) l[k] += static_cast<double>(a[i]) * static_cast<double>(b[i]);
  return (l[0] + l[2]) + (l[1] + l[3]);
}

// ---------------------------------------------------------------------------
// Extremes. One rule for every path: the result is what a scan from the
// first element with a strict comparison keeps. So ties keep the lowest
// index, and a NaN never wins unless it is the first element, in which case
// it is the result. In the vector forms every lane starts from the first
// element and is updated by max(v, best) / min(v, best), which keep `best`
// unless v is strictly beyond it. Which zero comes out when the extreme is
// +0 and -0 at once is not fixed for the forms without an index.
// ---------------------------------------------------------------------------
struct MaxOp {
  static __m128 pick(__m128 v, __m128 best) { return _mm_max_ps(v, best); }
  static __m128d pick(__m128d v, __m128d best) { return _mm_max_pd(v, best); }
  static __m128 beyond(__m128 v, __m128 best) { return _mm_cmpgt_ps(v, best); }
  template <typename T>
  static bool beyond(T v, T best) {
    return v > best;
  }
  static constexpr float pad = -__builtin_inff();
};
struct MinOp {
  static __m128 pick(__m128 v, __m128 best) { return _mm_min_ps(v, best); }
  static __m128d pick(__m128d v, __m128d best) { return _mm_min_pd(v, best); }
  static __m128 beyond(__m128 v, __m128 best) { return _mm_cmplt_ps(v, best); }
  template <typename T>
  static bool beyond(T v, T best) {
    return v < best;
  }
  static constexpr float pad = __builtin_inff();
};

// Lane merge in lane order with the strict rule.
template <typename Op>
float mergeLanes(__m128 v) {
  alignas(16) float l[4];
  _mm_store_ps(l, v);
  float b = l[0];
  for (int k = 1; k < 4; ++k)
    if (Op::beyond(l[k], b)) b = l[k];
  return b;
}
template <typename Op>
double mergeLanes(__m128d v) {
  alignas(16) double l[2];
  _mm_store_pd(l, v);
  return Op::beyond(l[1], l[0]) ? l[1] : l[0];
}

inline __m128 splat(float x) { return _mm_set1_ps(x); }
inline __m128d splat(double x) { return _mm_set1_pd(x); }
inline __m128 loadu(const float* p) { return _mm_loadu_ps(p); }
inline __m128d loadu(const double* p) { return _mm_loadu_pd(p); }

// Extreme value of singles or doubles: two vectors of running extremes over
// groups of two vectors, merged in lane order, then the tail in order.
template <typename Op, typename T>
T extremeOf(const T* p, int len) {
  constexpr int w = 16 / sizeof(T);
  auto b0 = splat(p[0]), b1 = b0;
  int i = 0;
  for (; i + 2 * w <= len; i += 2 * w) {
    b0 = Op::pick(loadu(p + i), b0);
    b1 = Op::pick(loadu(p + i + w), b1);
  }
  T b = mergeLanes<Op>(Op::pick(b1, b0));
  for (; i < len; ++i)
    if (Op::beyond(p[i], b)) b = p[i];
  return b;
}

// Extreme and first index of singles.
constexpr int kIndxVectorFrom = 34;
constexpr int kIndxBlock = 2048;

template <typename Op>
float extremeIndx32f(const float* p, int len, int* pIndx) {
  if (len < kIndxVectorFrom) {
    // One pass with value and index in the lanes; the tail is padded with
    // the value that never wins; lanes merge by value, ties by index.
    const __m128 first = _mm_set1_ps(p[0]);
    __m128 best = first;
    __m128i idx = _mm_setzero_si128(), cur = _mm_set_epi32(3, 2, 1, 0);
    const __m128i four = _mm_set1_epi32(4);
    int i = 0;
    const auto step = [&](__m128 v) {
      const __m128 m = Op::beyond(v, best);
      best = _mm_or_ps(_mm_and_ps(m, v), _mm_andnot_ps(m, best));
      const __m128i mi = _mm_castps_si128(m);
      idx = _mm_or_si128(_mm_and_si128(mi, cur), _mm_andnot_si128(mi, idx));
      cur = _mm_add_epi32(cur, four);
    };
    for (; i + 4 <= len; i += 4) step(_mm_loadu_ps(p + i));
    if (i < len) {
      alignas(16) float tmp[4] = {Op::pad, Op::pad, Op::pad, Op::pad};
      for (int k = 0; i + k < len; ++k) tmp[k] = p[i + k];
      step(_mm_load_ps(tmp));
    }
    alignas(16) float bv[4];
    alignas(16) int bi[4];
    _mm_store_ps(bv, best);
    _mm_store_si128(reinterpret_cast<__m128i*>(bi), idx);
    int w = 0;
    for (int k = 1; k < 4; ++k)
      if (Op::beyond(bv[k], bv[w]) || (bv[k] == bv[w] && bi[k] < bi[w])) w = k;
    *pIndx = bi[w];
    return bv[w];
  }

  // Scalar up to the 16-byte boundary, then blocks of 2048 (whole groups of
  // eight) whose extreme is found without indices; only a block whose
  // extreme strictly beats the best so far is searched for its first
  // position. The last up to 7 elements are scalar again.
  float best = p[0];
  int at = 0;
  const int h = headToBoundary(p, len);
  for (int i = 1; i < h; ++i)
    if (Op::beyond(p[i], best)) best = p[i], at = i;
  const int body = h + ((len - h) & ~7);
  const bool aligned = qelsr::isAligned16(p + h);
  for (int start = h; start < body; start += kIndxBlock) {
    const int end = body - start < kIndxBlock ? body : start + kIndxBlock;
    __m128 b0 = _mm_set1_ps(best), b1 = b0;
    if (aligned) {
      for (int i = start; i < end; i += 8) {
        b0 = Op::pick(_mm_load_ps(p + i), b0);
        b1 = Op::pick(_mm_load_ps(p + i + 4), b1);
      }
    } else {
      for (int i = start; i < end; i += 8) {
        b0 = Op::pick(_mm_loadu_ps(p + i), b0);
        b1 = Op::pick(_mm_loadu_ps(p + i + 4), b1);
      }
    }
    const float blockBest = mergeLanes<Op>(Op::pick(b1, b0));
    if (Op::beyond(blockBest, best)) {
      int j = start;
      while (!(p[j] == blockBest)) ++j;
      best = p[j];
      at = j;
    }
  }
  for (int i = body; i < len; ++i)
    if (Op::beyond(p[i], best)) best = p[i], at = i;
  *pIndx = at;
  return best;
}

constexpr int kIndx64VectorFrom = 32;

double maxIndx64f(const double* p, int len, int* pIndx) {
  if (len < kIndx64VectorFrom || reinterpret_cast<std::uintptr_t>(p) % 8 != 0) {
    double best = p[0];
    int at = 0;
    for (int i = 1; i < len; ++i)
      if (p[i] > best) best = p[i], at = i;
    *pIndx = at;
    return best;
  }
  // Value pass, then the first element with the extreme's bit pattern. A
  // zero extreme is searched by value instead, so that the first of +0 and
  // -0 is found whatever zero the lanes kept.
  const double m = extremeOf<MaxOp>(p, len);
  int j = 0;
  if (m == 0.0) {
    while (!(p[j] == 0.0)) ++j;
  } else {
    std::uint64_t mb;
    std::memcpy(&mb, &m, sizeof mb);
    for (;; ++j) {
      std::uint64_t b;
      std::memcpy(&b, p + j, sizeof b);
      if (b == mb) break;
    }
  }
  *pIndx = j;
  return p[j];
}

// Element-wise extremes: pSrcDst[i] keeps its value unless pSrc[i] is
// strictly beyond it, so a NaN in pSrc leaves pSrcDst as it was and a NaN in
// pSrcDst stays (the vector instruction returns its second operand when
// either is a NaN).
template <typename Op>
void extremeEvery32f(const float* pSrc, float* pSrcDst, int len) {
  int i = 0;
  for (; i + 4 <= len; i += 4)
    _mm_storeu_ps(pSrcDst + i, Op::pick(_mm_loadu_ps(pSrc + i), _mm_loadu_ps(pSrcDst + i)));
  for (; i < len; ++i)
    if (Op::beyond(pSrc[i], pSrcDst[i])) pSrcDst[i] = pSrc[i];
}

// The checks of every reduction, in this order: a null pointer, then a
// length below 1. `compute` runs (and writes) only when both pass.
template <typename Compute>
inline qelStatus checkedReduce(bool anyNull, int len, Compute compute) {
  if (anyNull) return qelStatusNullPtr;
  if (len < 1) return qelStatusSize;
  compute();
  return qelStatusOk;
}

}  // namespace

extern "C" {

qelStatus qelsSum_32f(const qel32f* pSrc, int len, qel32f* pSum, int hint) {
  return checkedReduce(!pSrc || !pSum, len,
                       [&] { *pSum = hint == 1 ? sumHint1(pSrc, len) : sumDouble8(pSrc, len); });
}

qelStatus qelsSum_16s32s_Sfs(const qel16s* pSrc, int len, qel32s* pSum, int scaleFactor) {
  if (pSrc == nullptr || pSum == nullptr) return qelStatusNullPtr;
  if (len < 1) return qelStatusSize;
  // Pairs of elements land in 32-bit lanes (at most 2^16 each), flushed to
  // 64 bits before they could wrap. The sum is exact, so a double holds it
  // exactly (below 2^47).
  const __m128i ones = _mm_set1_epi16(1);
  __m128i wide = _mm_setzero_si128();
  int i = 0;
  while (i + 8 <= len) {
    __m128i acc = _mm_setzero_si128();
    for (int k = 0; k < 16384 && i + 8 <= len; ++k, i += 8)
      acc = _mm_add_epi32(
          acc, _mm_madd_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(pSrc + i)), ones));
    wide = addWidened(wide, acc);
  }
  std::int64_t s = lanes64(wide);
  for (; i < len; ++i) s += pSrc[i];
  // The factor's exponent is kept to what a double holds (2^1023 down to
  // 2^-1074), so the product is never 0 * inf.
  if (scaleFactor < -1023) scaleFactor = -1023;
  if (scaleFactor > 1074) scaleFactor = 1074;
  double v = static_cast<double>(s) * GetScale_32s64f(scaleFactor);
  if (v > 2147483647.0) v = 2147483647.0;
  if (v < -2147483648.0) v = -2147483648.0;
  *pSum = roundHalfEven(v);
  return qelStatusOk;
}

qelStatus qelsSum_32s_Sfs(const qel32s* pSrc, int len, qel32s* pSum, int scaleFactor) {
  if (pSrc == nullptr || pSum == nullptr) return qelStatusNullPtr;
  if (len < 1) return qelStatusSize;
  __m128i wide = _mm_setzero_si128();
  int i = 0;
  for (; i + 4 <= len; i += 4)
    wide = addWidened(wide, _mm_loadu_si128(reinterpret_cast<const __m128i*>(pSrc + i)));
  std::int64_t s = lanes64(wide);
  for (; i < len; ++i) s += pSrc[i];
  *pSum = scaleSaturate64(s, scaleFactor);
  return qelStatusOk;
}

qelStatus qelsDotProd_32f(const qel32f* pSrc1, const qel32f* pSrc2, int len, qel32f* pDp) {
  if (pSrc1 == nullptr || pSrc2 == nullptr || pDp == nullptr) return qelStatusNullPtr;
  if (len < 1) return qelStatusSize;
  if (len < 16) {
    float s = 0.0f;
    for (int i = 0; i < len; ++i) s += pSrc1[i] * pSrc2[i];
    *pDp = s;
    return qelStatusOk;
  }
  const int h = headToBoundary(pSrc1, len);
  float head = 0.0f;
  for (int i = 0; i < h; ++i) head += pSrc1[i] * pSrc2[i];
  const float body =
      laneSum(pSrc1 + h, pSrc2 + h, len - h, [](__m128 a, __m128 b) { return _mm_mul_ps(a, b); });
  *pDp = head + body;
  return qelStatusOk;
}

qelStatus qelsDotProd_32f64f(const qel32f* pSrc1, const qel32f* pSrc2, int len, qel64f* pDp) {
  return checkedReduce(!pSrc1 || !pSrc2 || !pDp, len,
                       [&] { *pDp = dotDouble4(pSrc1, pSrc2, len); });
}

qelStatus qelsDotProd_64f(const qel64f* pSrc1, const qel64f* pSrc2, int len, qel64f* pDp) {
  return checkedReduce(!pSrc1 || !pSrc2 || !pDp, len,
                       [&] { *pDp = dotDouble4(pSrc1, pSrc2, len); });
}

qelStatus qelsDotProd_16s64s(const qel16s* pSrc1, const qel16s* pSrc2, int len, qel64s* pDp) {
  return checkedReduce(!pSrc1 || !pSrc2 || !pDp, len, [&] { *pDp = dot16s(pSrc1, pSrc2, len); });
}

qelStatus qelsDotProd_16s32f(const qel16s* pSrc1, const qel16s* pSrc2, int len, qel32f* pDp) {
  return checkedReduce(!pSrc1 || !pSrc2 || !pDp, len,
                       [&] { *pDp = static_cast<qel32f>(dot16s(pSrc1, pSrc2, len)); });
}

qelStatus qelsMax_32f(const qel32f* pSrc, int len, qel32f* pVal) {
  return checkedReduce(!pSrc || !pVal, len, [&] { *pVal = extremeOf<MaxOp>(pSrc, len); });
}

qelStatus qelsMax_64f(const qel64f* pSrc, int len, qel64f* pVal) {
  return checkedReduce(!pSrc || !pVal, len, [&] { *pVal = extremeOf<MaxOp>(pSrc, len); });
}

qelStatus qelsMin_32f(const qel32f* pSrc, int len, qel32f* pVal) {
  return checkedReduce(!pSrc || !pVal, len, [&] { *pVal = extremeOf<MinOp>(pSrc, len); });
}

qelStatus qelsMin_64f(const qel64f* pSrc, int len, qel64f* pVal) {
  return checkedReduce(!pSrc || !pVal, len, [&] { *pVal = extremeOf<MinOp>(pSrc, len); });
}

qelStatus qelsMinMax_32f(const qel32f* pSrc, int len, qel32f* pMin, qel32f* pMax) {
  if (pSrc == nullptr || pMin == nullptr || pMax == nullptr) return qelStatusNullPtr;
  if (len < 1) return qelStatusSize;
  __m128 lo = _mm_set1_ps(pSrc[0]), hi = lo;
  int i = 0;
  for (; i + 4 <= len; i += 4) {
    const __m128 v = _mm_loadu_ps(pSrc + i);
    lo = MinOp::pick(v, lo);
    hi = MaxOp::pick(v, hi);
  }
  float mn = mergeLanes<MinOp>(lo), mx = mergeLanes<MaxOp>(hi);
  for (; i < len; ++i) {
    if (pSrc[i] < mn) mn = pSrc[i];
    if (pSrc[i] > mx) mx = pSrc[i];
  }
  *pMin = mn;
  *pMax = mx;
  return qelStatusOk;
}

qelStatus qelsMaxIndx_32f(const qel32f* pSrc, int len, qel32f* pVal, int* pIndx) {
  if (pIndx == nullptr) return qelsMax_32f(pSrc, len, pVal);
  if (pSrc == nullptr || pVal == nullptr) return qelStatusNullPtr;
  if (len < 1) return qelStatusSize;
  *pVal = extremeIndx32f<MaxOp>(pSrc, len, pIndx);
  return qelStatusOk;
}

qelStatus qelsMaxIndx_64f(const qel64f* pSrc, int len, qel64f* pVal, int* pIndx) {
  if (pIndx == nullptr) return qelsMax_64f(pSrc, len, pVal);
  if (pSrc == nullptr || pVal == nullptr) return qelStatusNullPtr;
  if (len < 1) return qelStatusSize;
  *pVal = maxIndx64f(pSrc, len, pIndx);
  return qelStatusOk;
}

qelStatus qelsMinIndx_32f(const qel32f* pSrc, int len, qel32f* pVal, int* pIndx) {
  if (pIndx == nullptr) return qelsMin_32f(pSrc, len, pVal);
  if (pSrc == nullptr || pVal == nullptr) return qelStatusNullPtr;
  if (len < 1) return qelStatusSize;
  *pVal = extremeIndx32f<MinOp>(pSrc, len, pIndx);
  return qelStatusOk;
}

qelStatus qelsMaxEvery_32f_I(const qel32f* pSrc, qel32f* pSrcDst, int len) {
  return checkedReduce(!pSrc || !pSrcDst, len, [&] { extremeEvery32f<MaxOp>(pSrc, pSrcDst, len); });
}

qelStatus qelsMinEvery_32f_I(const qel32f* pSrc, qel32f* pSrcDst, int len) {
  return checkedReduce(!pSrc || !pSrcDst, len, [&] { extremeEvery32f<MinOp>(pSrc, pSrcDst, len); });
}

qelStatus qelsMinEvery_32s_I(const qel32s* pSrc, qel32s* pSrcDst, int len) {
  if (pSrc == nullptr || pSrcDst == nullptr) return qelStatusNullPtr;
  if (len < 1) return qelStatusSize;
  int i = 0;
  for (; i + 4 <= len; i += 4) {
    const __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i*>(pSrc + i));
    const __m128i b = _mm_loadu_si128(reinterpret_cast<const __m128i*>(pSrcDst + i));
    const __m128i aLess = _mm_cmplt_epi32(a, b);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(pSrcDst + i),
                     _mm_or_si128(_mm_and_si128(aLess, a), _mm_andnot_si128(aLess, b)));
  }
  for (; i < len; ++i)
    if (pSrc[i] < pSrcDst[i]) pSrcDst[i] = pSrc[i];
  return qelStatusOk;
}

}  // extern "C"
