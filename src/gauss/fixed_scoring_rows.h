// Row arithmetic of the 16-bit scores, shared by their kernels and wrappers.
//
// Every member forms d = pSrc[c] - pMean[c] saturated to 16 bits and squares
// the saturated value, so -32768 squares to 2^30. What follows is one of
// three sums of the weighted squares:
//   - single precision: each square converted to single (exact as an
//     integer first, so it equals single(d) * single(d)) and weighted in
//     single, or for the identity pair sums d0^2 + d1^2 added as 32-bit
//     integers before the conversion;
//   - 32-bit integers split high/low: d^2 / 2 = h * 2^15 + l with h the high
//     half of d^2 and l its low half shifted right by one; negated pair sums
//     of h*v and l*v wrap in four lanes and are shifted into the units of
//     the result;
//   - identity pair sums shifted by scaleFactor + 1 and subtracted.
// The orders of additions below are part of the results: a wrapper's own
// loop and a kernel use the same routine, so twins and paths agree bit for
// bit. Private to the fixed-point scoring files.
#ifndef QELSR_GAUSS_FIXED_SCORING_ROWS_H
#define QELSR_GAUSS_FIXED_SCORING_ROWS_H

#include <climits>
#include <cstddef>
#include <cstdint>

#include "base/simd.h"
#include "frame/frame.h"
#include "qelsr.h"

namespace qelsr::fixedpt {

using simd::loadps;
using simd::loadsi;

// What weighs the square of column c.
enum class Wt {
  Inv,     // pVar: 16-bit scaled inverse variances, single products
  Unit,    // identity: each square converted to single
  Pairs,   // identity: squares of adjacent columns added as 32-bit integers
  Direct,  // single inverse variances formed by the wrapper
};

inline int satDiff(qel16s s, qel16s m) {
  const int d = static_cast<int>(s) - static_cast<int>(m);
  return d > 32767 ? 32767 : (d < -32768 ? -32768 : d);
}

// d0^2 + d1^2 in a 32-bit lane: two differences of -32768 reach 2^31, which
// wraps to -2^31 as the vector addition of the kernels does.
inline qel32s pairOfSquares(int d0, int d1) {
  return static_cast<qel32s>(static_cast<std::uint32_t>(d0 * d0) +
                             static_cast<std::uint32_t>(d1 * d1));
}

template <Wt W>
inline float termAt(const qel16s* s, const qel16s* m, const void* w, int c) {
  const int d = satDiff(s[c], m[c]);
  const float q = static_cast<float>(d * d);
  if constexpr (W == Wt::Inv)
    return q * static_cast<float>(static_cast<const qel16s*>(w)[c]);
  else if constexpr (W == Wt::Direct)
    return q * static_cast<const float*>(w)[c];
  else
    return q;
}

template <bool Al>
inline __m128i diff8(const qel16s* s, const qel16s* m, int c) {
  return _mm_subs_epi16(loadsi<Al>(s + c), loadsi<Al>(m + c));
}

inline __m128 lo16ToPs(__m128i v) {
  return _mm_cvtepi32_ps(_mm_srai_epi32(_mm_unpacklo_epi16(v, v), 16));
}
inline __m128 hi16ToPs(__m128i v) {
  return _mm_cvtepi32_ps(_mm_srai_epi32(_mm_unpackhi_epi16(v, v), 16));
}

// Squares of 8 saturated differences as two vectors of 32-bit integers.
inline void squares8(__m128i d, __m128i* lo, __m128i* hi) {
  const __m128i l = _mm_mullo_epi16(d, d);
  const __m128i h = _mm_mulhi_epi16(d, d);
  *lo = _mm_unpacklo_epi16(l, h);
  *hi = _mm_unpackhi_epi16(l, h);
}

// Terms of columns c..c+7: t0 holds columns 0-3, t1 columns 4-7; for Pairs
// t0 holds the four pair sums and t1 is zero.
template <Wt W, bool Al>
inline void terms8(const qel16s* s, const qel16s* m, const void* w, int c, __m128* t0, __m128* t1) {
  const __m128i d = diff8<Al>(s, m, c);
  if constexpr (W == Wt::Pairs) {
    *t0 = _mm_cvtepi32_ps(_mm_madd_epi16(d, d));
    *t1 = _mm_setzero_ps();
  } else {
    __m128i lo, hi;
    squares8(d, &lo, &hi);
    __m128 q0 = _mm_cvtepi32_ps(lo), q1 = _mm_cvtepi32_ps(hi);
    if constexpr (W == Wt::Inv) {
      const __m128i v = loadsi<Al>(static_cast<const qel16s*>(w) + c);
      q0 = _mm_mul_ps(q0, lo16ToPs(v));
      q1 = _mm_mul_ps(q1, hi16ToPs(v));
    } else if constexpr (W == Wt::Direct) {
      const float* f = static_cast<const float*>(w) + c;
      q0 = _mm_mul_ps(q0, _mm_loadu_ps(f));
      q1 = _mm_mul_ps(q1, _mm_loadu_ps(f + 4));
    }
    *t0 = q0;
    *t1 = q1;
  }
}

// Terms of columns c..c+3 (not for Pairs).
template <Wt W>
inline __m128 terms4(const qel16s* s, const qel16s* m, const void* w, int c) {
  const __m128i d = _mm_subs_epi16(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(s + c)),
                                   _mm_loadl_epi64(reinterpret_cast<const __m128i*>(m + c)));
  __m128i lo, hi;
  squares8(d, &lo, &hi);
  __m128 q = _mm_cvtepi32_ps(lo);
  if constexpr (W == Wt::Inv)
    q = _mm_mul_ps(q, lo16ToPs(_mm_loadl_epi64(
                          reinterpret_cast<const __m128i*>(static_cast<const qel16s*>(w) + c))));
  else if constexpr (W == Wt::Direct)
    q = _mm_mul_ps(q, _mm_loadu_ps(static_cast<const float*>(w) + c));
  return q;
}

inline float hsumAdjacent(__m128 v) {
  const __m128 h = _mm_hadd_ps(v, v);
  return _mm_cvtss_f32(_mm_hadd_ps(h, h));
}

// Shape of the single-observation kernels: each group of 8 columns is
// folded to a scalar, (u0 + u1) + (u2 + u3) with u = columns 0-3 plus
// columns 4-7 (for Pairs u is the four pair sums), and added to the running
// sum in column order; the rest column by column (for Pairs: pair by pair,
// then a last odd column alone). Returns the positive sum S.
template <Wt W>
__attribute__((always_inline)) inline void tailTerms(const qel16s* s, const qel16s* m,
                                                     const void* w, int width, int tail, float* out,
                                                     qel32s* sq);

template <Wt W, bool Al>
inline float singleSum(const qel16s* s, const qel16s* m, const void* w, int len) {
  float sum = 0.0f;
  int c = 0;
  for (; c + 8 <= len; c += 8) {
    __m128 t0, t1;
    terms8<W, Al>(s, m, w, c, &t0, &t1);
    sum = sum + hsumAdjacent(W == Wt::Pairs ? t0 : _mm_add_ps(t0, t1));
  }
  const int tail = len - c;
  if (tail > 0) {
    alignas(16) float t[8];
    alignas(16) qel32s q[8];
    tailTerms<W>(s, m, w, len, tail, t, q);
    int i = 8 - tail;
    if constexpr (W == Wt::Pairs) {
      for (; i + 2 <= 8; i += 2)
        sum = sum + static_cast<float>(static_cast<qel32s>(static_cast<std::uint32_t>(q[i]) +
                                                           static_cast<std::uint32_t>(q[i + 1])));
      if (i < 8) sum = sum + static_cast<float>(q[i]);
    } else {
      for (; i < 8; ++i) sum = sum + t[i];
    }
  }
  return sum;
}

// Terms of the last `tail` (1..7) columns of a row of `width` columns, in
// lanes 8 - tail .. 7 of `out`: for rows of 8 or more columns from a load
// that ends at the row's end, else from zero-padded copies, so nothing
// beyond a row is read. Pairs gives the squares as integers instead.
template <Wt W>
__attribute__((always_inline)) inline void tailTerms(const qel16s* s, const qel16s* m,
                                                     const void* w, int width, int tail, float* out,
                                                     qel32s* sq) {
  alignas(16) qel16s ps[8], pm[8], pv[8];
  alignas(16) float pf[8];
  const void* wv = w;
  if (width >= 8) {
    s += width - 8;
    m += width - 8;
    if constexpr (W == Wt::Inv) wv = static_cast<const qel16s*>(w) + (width - 8);
    if constexpr (W == Wt::Direct) wv = static_cast<const float*>(w) + (width - 8);
  } else {
    for (int k = 0; k < 8; ++k) ps[k] = pm[k] = pv[k] = 0, pf[k] = 0.0f;
    const int c = width - tail;
    for (int k = 0; k < tail; ++k) {
      ps[8 - tail + k] = s[c + k];
      pm[8 - tail + k] = m[c + k];
      if constexpr (W == Wt::Inv) pv[8 - tail + k] = static_cast<const qel16s*>(w)[c + k];
      if constexpr (W == Wt::Direct) pf[8 - tail + k] = static_cast<const float*>(w)[c + k];
    }
    s = ps;
    m = pm;
    if constexpr (W == Wt::Inv) wv = pv;
    if constexpr (W == Wt::Direct) wv = pf;
  }
  if constexpr (W == Wt::Pairs) {
    __m128i lo, hi;
    squares8(diff8<false>(s, m, 0), &lo, &hi);
    _mm_store_si128(reinterpret_cast<__m128i*>(sq), lo);
    _mm_store_si128(reinterpret_cast<__m128i*>(sq + 4), hi);
  } else {
    __m128 t0, t1;
    terms8<W, false>(s, m, wv, 0, &t0, &t1);
    _mm_store_ps(out, t0);
    _mm_store_ps(out + 4, t1);
  }
}

// Shape of the block and mixture kernels, for R rows at once (row k reads
// s[k], m[k], w[k]): one 4-lane accumulator per row; each group of 8
// columns adds columns 0-3 then 4-7 (Pairs: the four pair sums); with G4 a
// following group of 4 columns is added once; the column tail goes to lane
// 0 one column at a time (Pairs: pair by pair, then the odd column); the
// lanes fold as (a0 + a1) + (a2 + a3). out[k] is row k's positive sum S.
template <Wt W, bool Al, bool G4, int R>
inline void blockSums(const qel16s* const* s, const qel16s* const* m, const void* const* w,
                      int width, float* out) {
  __m128 acc[R];
  for (int k = 0; k < R; ++k) acc[k] = _mm_setzero_ps();
  int c = 0;
  for (; c + 8 <= width; c += 8) {
    for (int k = 0; k < R; ++k) {
      __m128 t0, t1;
      terms8<W, Al>(s[k], m[k], w[k], c, &t0, &t1);
      acc[k] = _mm_add_ps(acc[k], t0);
      if constexpr (W != Wt::Pairs) acc[k] = _mm_add_ps(acc[k], t1);
    }
  }
  if constexpr (G4 && W != Wt::Pairs) {
    if (c + 4 <= width) {
      for (int k = 0; k < R; ++k) acc[k] = _mm_add_ps(acc[k], terms4<W>(s[k], m[k], w[k], c));
      c += 4;
    }
  }
  const int tail = width - c;
  for (int k = 0; k < R; ++k) {
    alignas(16) float a[4];
    _mm_store_ps(a, acc[k]);
    if (tail > 0) {
      alignas(16) float t[8];
      alignas(16) qel32s q[8];
      tailTerms<W>(s[k], m[k], w[k], width, tail, t, q);
      int i = 8 - tail;
      if constexpr (W == Wt::Pairs) {
        for (; i + 2 <= 8; i += 2)
          a[0] =
              a[0] + static_cast<float>(static_cast<qel32s>(static_cast<std::uint32_t>(q[i]) +
                                                            static_cast<std::uint32_t>(q[i + 1])));
        if (i < 8) a[0] = a[0] + static_cast<float>(q[i]);
      } else {
        for (; i < 8; ++i) a[0] = a[0] + t[i];
      }
    }
    out[k] = (a[0] + a[1]) + (a[2] + a[3]);
  }
}

template <Wt W, bool Al, bool G4 = false>
inline float blockSum(const qel16s* s, const qel16s* m, const void* w, int width) {
  float out;
  blockSums<W, Al, G4, 1>(&s, &m, &w, width, &out);
  return out;
}

// ---- powers and conversions

// scaleFactor + 1 without overflow at the top of the range (GetScale_32s32f
// clamps far below it anyway).
inline int incSat(int sf) { return sf == INT_MAX ? INT_MAX : sf + 1; }

// The 32-bit integer 1 << |e| as the processor forms it, converted to single:
// exact powers up to 2^30; the count is taken modulo 32 as the shift
// instruction takes it, so |e| of 31 gives the bit pattern of -2^31 and 32 gives 1.
inline float intPow2(long long e) {
  const unsigned long long n =
      e < 0 ? static_cast<unsigned long long>(-e) : static_cast<unsigned long long>(e);
  return static_cast<float>(static_cast<qel32s>(1u << (n & 31u)));
}

// S * 2^-e with the power formed as an integer: a division for a positive
// exponent, a multiplication otherwise.
inline float scaleByIntPow2(float s, long long e) {
  const float p = intPow2(e);
  return e > 0 ? s / p : s * p;
}

// Truncation towards zero saturated at the 32-bit limits, NaN giving 0: the
// conversion qelsConvert_32f32s_Sfs makes with rounding argument 0 and factor 0.
inline qel32s truncSat(float x) {
  if (x != x) return 0;
  if (x >= 2147483648.0f) return INT_MAX;
  if (x <= -2147483648.0f) return INT_MIN;
  return _mm_cvttss_si32(_mm_set_ss(x));
}

// ---- 32-bit integer sums (Low)

// Shifts of the two accumulators into the units of the result, per lane:
// A (units of 2^15) left by 15 - sf, or for sf above 15 arithmetically right
// by sf - 15; B right by sf, or left by -sf for negative sf. Above 15, B
// keeps its shift by sf rather than a constant 15, so that both halves stay
// in the units of the result. Counts of 32 or more give 0 to the left and
// the sign to the right, as the vector shifts do.
struct LowShift {
  bool aLeft;
  int aCount;
  bool bLeft;
  int bCount;
};

inline int capCount(long long n, int cap) { return n > cap ? cap : static_cast<int>(n); }

inline LowShift lowShift(int sf) {
  const long long f = sf;
  LowShift sh;
  sh.aLeft = f <= 15;
  sh.aCount = sh.aLeft ? capCount(15 - f, 32) : capCount(f - 15, 31);
  sh.bLeft = f < 0;
  sh.bCount = sh.bLeft ? capCount(-f, 32) : capCount(f, 31);
  return sh;
}

inline __m128i shiftLanes(__m128i x, bool left, int n) {
  const __m128i cnt = _mm_cvtsi32_si128(n);
  return left ? _mm_sll_epi32(x, cnt) : _mm_sra_epi32(x, cnt);
}

inline qel32s shiftLane(qel32s x, bool left, int n) {
  if (left) return n >= 32 ? 0 : static_cast<qel32s>(static_cast<std::uint32_t>(x) << n);
  return x >> (n > 31 ? 31 : n);
}

inline std::uint32_t laneSum(__m128i v) {
  alignas(16) std::uint32_t a[4];
  _mm_store_si128(reinterpret_cast<__m128i*>(a), v);
  return a[0] + a[1] + a[2] + a[3];
}

// A -= h[c]*w[c] + h[c+1]*w[c+1], B -= l[c]*w[c] + l[c+1]*w[c+1] for the 8
// differences d and weights w.
inline void lowAccumulate(__m128i d, __m128i w, __m128i* A, __m128i* B) {
  const __m128i h = _mm_mulhi_epi16(d, d);
  const __m128i l = _mm_srli_epi16(_mm_mullo_epi16(d, d), 1);
  *A = _mm_sub_epi32(*A, _mm_madd_epi16(h, w));
  *B = _mm_sub_epi32(*B, _mm_madd_epi16(l, w));
}

// The same over columns c..c+7.
template <bool Unit, bool Al>
inline void lowStep8(const qel16s* s, const qel16s* m, const qel16s* v, int c, __m128i* A,
                     __m128i* B) {
  lowAccumulate(diff8<Al>(s, m, c), Unit ? _mm_set1_epi16(1) : loadsi<Al>(v + c), A, B);
}

// Moves 16-bit element k + j of v to element j and fills the top k
// elements with zeros (k of 0..7).
inline __m128i shiftDownWords(__m128i v, int k) {
  alignas(16) static constexpr signed char kMask[8][16] = {
      {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15},
      {2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, -1, -1},
      {4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, -1, -1, -1, -1},
      {6, 7, 8, 9, 10, 11, 12, 13, 14, 15, -1, -1, -1, -1, -1, -1},
      {8, 9, 10, 11, 12, 13, 14, 15, -1, -1, -1, -1, -1, -1, -1, -1},
      {10, 11, 12, 13, 14, 15, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1},
      {12, 13, 14, 15, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1},
      {14, 15, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1}};
  return _mm_shuffle_epi8(v, _mm_load_si128(reinterpret_cast<const __m128i*>(kMask[k])));
}

// The saturated differences (and weights) of the last width mod 8 columns
// as a group padded with zeros: column c + k at element k, so it goes to
// lane k / 2 like the columns of a full group. Rows of 8 or more columns
// are read by a load that ends at the row's end; nothing beyond a row is read.
template <bool Unit>
inline void tailGroup(const qel16s* s, const qel16s* m, const qel16s* v, int c, int width,
                      __m128i* d, __m128i* w) {
  const int tail = width - c;
  if (width >= 8) {
    const int at = width - 8;
    *d = shiftDownWords(diff8<false>(s, m, at), 8 - tail);
    if constexpr (!Unit) *w = shiftDownWords(loadsi<false>(v + at), 8 - tail);
    return;
  }
  alignas(16) qel16s ts[8] = {0, 0, 0, 0, 0, 0, 0, 0};
  alignas(16) qel16s tm[8] = {0, 0, 0, 0, 0, 0, 0, 0};
  alignas(16) qel16s tv[8] = {0, 0, 0, 0, 0, 0, 0, 0};
  for (int k = 0; k < tail; ++k) {
    ts[k] = s[c + k];
    tm[k] = m[c + k];
    if constexpr (!Unit) tv[k] = v[c + k];
  }
  *d = diff8<true>(ts, tm, 0);
  if constexpr (!Unit) *w = _mm_load_si128(reinterpret_cast<const __m128i*>(tv));
}

template <bool Unit>
inline void lowTail8(const qel16s* s, const qel16s* m, const qel16s* v, int c, int width,
                     __m128i* A, __m128i* B) {
  __m128i d, w = _mm_set1_epi16(1);
  tailGroup<Unit>(s, m, v, c, width, &d, &w);
  lowAccumulate(d, w, A, B);
}

inline __m128i lowCombine(__m128i A, __m128i B, const LowShift& sh) {
  return _mm_add_epi32(shiftLanes(A, sh.aLeft, sh.aCount), shiftLanes(B, sh.bLeft, sh.bCount));
}

// Block and mixture rows: all columns into A and B, shifted once; returns
// the wrapped sum of the lanes of R (negative for a positive distance).
template <bool Unit, bool Al>
inline std::uint32_t lowBlockRow(const qel16s* s, const qel16s* m, const qel16s* v, int width,
                                 const LowShift& sh) {
  __m128i A = _mm_setzero_si128(), B = _mm_setzero_si128();
  int c = 0;
  for (; c + 8 <= width; c += 8) lowStep8<Unit, Al>(s, m, v, c, &A, &B);
  if (c < width) lowTail8<Unit>(s, m, v, c, width, &A, &B);
  return laneSum(lowCombine(A, B, sh));
}

// Single-observation rows: the complete groups of 8 into A and B, shifted;
// then the tail pairs (groups of 4 and 2) and a last single column, each
// formed positive, shifted the same way and subtracted.
template <bool Unit, bool Al>
inline std::uint32_t lowSingleRow(const qel16s* s, const qel16s* m, const qel16s* v, int len,
                                  const LowShift& sh) {
  __m128i A = _mm_setzero_si128(), B = _mm_setzero_si128();
  int c = 0;
  for (; c + 8 <= len; c += 8) lowStep8<Unit, Al>(s, m, v, c, &A, &B);
  std::uint32_t r = laneSum(lowCombine(A, B, sh));
  for (; c < len; c += 2) {
    std::uint32_t hs = 0, ls = 0;
    for (int k = c; k < c + 2 && k < len; ++k) {
      const int d = satDiff(s[k], m[k]);
      const std::uint32_t sq = static_cast<std::uint32_t>(d * d);
      const int h = static_cast<int>(sq >> 16), l = static_cast<int>((sq & 0xFFFFu) >> 1);
      const int w = Unit ? 1 : v[k];
      hs += static_cast<std::uint32_t>(h * w);
      ls += static_cast<std::uint32_t>(l * w);
    }
    const std::uint32_t t =
        static_cast<std::uint32_t>(shiftLane(static_cast<qel32s>(hs), sh.aLeft, sh.aCount)) +
        static_cast<std::uint32_t>(shiftLane(static_cast<qel32s>(ls), sh.bLeft, sh.bCount));
    r -= t;
  }
  return r;
}

// Identity pair sums, each vector shifted right by e = scaleFactor + 1
// (left by -e for negative e) before it is subtracted; returns the wrapped
// lane sum. The column tail is a zero-padded group.
template <bool Al>
inline std::uint32_t idLowBlockRow(const qel16s* s, const qel16s* m, int width, long long e) {
  const bool left = e < 0;
  const int n = left ? capCount(-e, 32) : capCount(e, 31);
  __m128i acc = _mm_setzero_si128();
  int c = 0;
  for (; c + 8 <= width; c += 8) {
    const __m128i d = diff8<Al>(s, m, c);
    acc = _mm_sub_epi32(acc, shiftLanes(_mm_madd_epi16(d, d), left, n));
  }
  if (c < width) {
    __m128i d, w;
    tailGroup<true>(s, m, nullptr, c, width, &d, &w);
    acc = _mm_sub_epi32(acc, shiftLanes(_mm_madd_epi16(d, d), left, n));
  }
  return laneSum(acc);
}

inline qel32s addWrap(qel32s val, std::uint32_t r) {
  return static_cast<qel32s>(static_cast<std::uint32_t>(val) + r);
}

// ---- rounding towards zero for the 32-bit maxima

// Sets the rounding control of the calling thread to towards-zero for the
// scope's lifetime and puts the saved word back at its end.
class RoundTowardZero {
 public:
  RoundTowardZero() : saved_(_mm_getcsr()) { _mm_setcsr((saved_ & ~0x6000u) | 0x6000u); }
  ~RoundTowardZero() { _mm_setcsr(saved_); }
  RoundTowardZero(const RoundTowardZero&) = delete;
  RoundTowardZero& operator=(const RoundTowardZero&) = delete;

 private:
  unsigned saved_;
};

// The clamped maximum of a 16s32s score v (already formed in single) and
// the destination, compared in single: v is held at -2^31 from below (a NaN
// takes the bound) and 2^31 from above, the greater of it and single(dst)
// is kept and truncated, 2^31 storing 2147483647.
inline qel32s clampedMax(float v, qel32s dst) {
  __m128 x = _mm_max_ss(_mm_set_ss(v), _mm_set_ss(-2147483648.0f));
  x = _mm_min_ss(x, _mm_set_ss(2147483648.0f));
  const float s = _mm_cvtss_f32(x);
  const float df = static_cast<float>(dst);
  const float g = s > df ? s : df;
  return g >= 2147483648.0f ? INT_MAX : _mm_cvttss_si32(_mm_set_ss(g));
}

}  // namespace qelsr::fixedpt

#endif
