// Scalar reference of the 16-bit scores, written from the arithmetic they
// promise: saturated differences, the single-precision sums in their fixed
// orders, the high/low split of the 32-bit sums with their shifts, the
// powers of two and the conversions. Bit-exact: every float operation below
// is one single operation in the order the scores make it.
#ifndef QELSR_TESTS_FIXED_SCORING_REFERENCE_H
#define QELSR_TESTS_FIXED_SCORING_REFERENCE_H

#include <xmmintrin.h>

#include <cfenv>
#include <climits>
#include <cmath>
#include <cstdint>
#include <vector>

#include "qelsr.h"

namespace fxref {

inline int diff(qel16s s, qel16s m) {
  int d = int(s) - int(m);
  if (d > 32767) d = 32767;
  if (d < -32768) d = -32768;
  return d;
}

enum class W { Inv, Unit, Pairs };

// Term of one column in single: the square converted, times the weight.
inline float term(W w, const qel16s* s, const qel16s* m, const qel16s* v, int c) {
  const int d = diff(s[c], m[c]);
  const float q = float(d * d);
  return w == W::Inv ? q * float(v[c]) : q;
}
// Adjacent squares added in a 32-bit lane (2^31 wraps to -2^31).
inline float pairTerm(const qel16s* s, const qel16s* m, int c) {
  const int a = diff(s[c], m[c]), b = diff(s[c + 1], m[c + 1]);
  return float(int32_t(uint32_t(a * a) + uint32_t(b * b)));
}

// Single-observation order over the column terms t(c): groups of 8 folded
// as ((t0+t4)+(t1+t5)) + ((t2+t6)+(t3+t7)) and added in column order, the
// tail column by column.
template <typename Term>
inline float singleOrder(int len, Term t) {
  float S = 0.0f;
  int c = 0;
  for (; c + 8 <= len; c += 8) {
    float u[4];
    for (int l = 0; l < 4; ++l) u[l] = t(c + l) + t(c + 4 + l);
    S = S + ((u[0] + u[1]) + (u[2] + u[3]));
  }
  for (; c < len; ++c) S = S + t(c);
  return S;
}
// The same for the members; the pair sums fold as (p0+p1)+(p2+p3), their
// tail pair by pair, then the odd column.
inline float singleSum(W w, const qel16s* s, const qel16s* m, const qel16s* v, int len) {
  if (w != W::Pairs) return singleOrder(len, [&](int c) { return term(w, s, m, v, c); });
  auto p = [&](int c) { return pairTerm(s, m, c); };
  float S = 0.0f;
  int c = 0;
  for (; c + 8 <= len; c += 8) S = S + ((p(c) + p(c + 2)) + (p(c + 4) + p(c + 6)));
  for (; c + 2 <= len; c += 2) S = S + p(c);
  if (c < len) S = S + term(W::Unit, s, m, v, c);
  return S;
}

// Block and mixture order: lane l of one accumulator takes column 8g+l then
// 8g+4+l (pairs: the pair 8g+2l); with g4 one group of 4 more; the tail to
// lane 0; folded (a0+a1)+(a2+a3).
inline float blockSum(W w, const qel16s* s, const qel16s* m, const qel16s* v, int width,
                      bool g4 = false) {
  float a[4] = {0, 0, 0, 0};
  int c = 0;
  for (; c + 8 <= width; c += 8)
    for (int l = 0; l < 4; ++l)
      a[l] = w == W::Pairs ? a[l] + pairTerm(s, m, c + 2 * l)
                           : (a[l] + term(w, s, m, v, c + l)) + term(w, s, m, v, c + 4 + l);
  if (g4 && w != W::Pairs && c + 4 <= width) {
    for (int l = 0; l < 4; ++l) a[l] = a[l] + term(w, s, m, v, c + l);
    c += 4;
  }
  if (w == W::Pairs) {
    for (; c + 2 <= width; c += 2) a[0] = a[0] + pairTerm(s, m, c);
    if (c < width) a[0] = a[0] + term(W::Unit, s, m, v, c);
  } else {
    for (; c < width; ++c) a[0] = a[0] + term(w, s, m, v, c);
  }
  return (a[0] + a[1]) + (a[2] + a[3]);
}

// ---- powers, scalings, conversions

// The single 2^-e for the library's clamped scale (exact powers).
inline float pow2neg(long long e) {
  if (e < -128) e = -128;
  if (e > 150) e = 150;
  return float(std::ldexp(1.0, int(-e)));
}
// The 32-bit integer 1 << |e| (count modulo 32), converted to single.
inline float intPow(long long e) {
  const unsigned long long n = e < 0 ? -e : e;
  return float(int32_t(uint32_t(1) << (n % 32)));
}
inline float byIntPow(float S, long long e) { return e > 0 ? S / intPow(e) : S * intPow(e); }

inline int32_t truncSat(float x) {
  if (std::isnan(x)) return 0;
  if (x >= 2147483648.0f) return INT_MAX;
  if (x <= -2147483648.0f) return INT_MIN;
  return int32_t(std::trunc(x));
}
inline int32_t nearestSat(float x) {
  if (std::isnan(x)) return 0;
  if (x >= 2147483648.0f) return INT_MAX;
  if (x <= -2147483648.0f) return INT_MIN;
  return int32_t(std::nearbyint(x));  // default mode: ties to even
}

// ---- 32-bit integer sums

inline int32_t shl(int32_t x, long long n) { return n >= 32 ? 0 : int32_t(uint32_t(x) << n); }
inline int32_t sar(int32_t x, long long n) { return x >> (n > 31 ? 31 : n); }
// R of one lane from the negated sums A (units 2^15) and B.
inline int32_t lowR(int32_t A, int32_t B, int sf) {
  const long long f = sf;
  const int32_t a = f <= 15 ? shl(A, 15 - f) : sar(A, f - 15);
  const int32_t b = f >= 0 ? sar(B, f) : shl(B, -f);
  return int32_t(uint32_t(a) + uint32_t(b));
}
// h·w and l·w of column c: d^2 / 2 = h·2^15 + l.
inline void hl(const qel16s* s, const qel16s* m, const qel16s* v, int c, uint32_t* h, uint32_t* l) {
  const int d = diff(s[c], m[c]);
  const uint32_t q = uint32_t(d * d);
  const int w = v ? v[c] : 1;
  *h = uint32_t(int(q / 65536) * w);
  *l = uint32_t(int((q % 65536) / 2) * w);
}
// Block rows: pair j of the row in lane j mod 4 (a last odd column alone in
// its pair), one shift per lane; returns the wrapped sum of R.
inline uint32_t lowBlock(const qel16s* s, const qel16s* m, const qel16s* v, int width, int sf) {
  uint32_t A[4] = {0, 0, 0, 0}, B[4] = {0, 0, 0, 0};
  for (int c = 0; c < width; ++c) {
    uint32_t h, l;
    hl(s, m, v, c, &h, &l);
    A[(c / 2) % 4] -= h;
    B[(c / 2) % 4] -= l;
  }
  uint32_t r = 0;
  for (int k = 0; k < 4; ++k) r += uint32_t(lowR(int32_t(A[k]), int32_t(B[k]), sf));
  return r;
}
// Single rows: lanes over the complete groups of 8, then each tail pair (and
// the odd column) formed positive, shifted and subtracted.
inline uint32_t lowSingle(const qel16s* s, const qel16s* m, const qel16s* v, int len, int sf) {
  const int full = len / 8 * 8;
  uint32_t r = lowBlock(s, m, v, full, sf);
  for (int c = full; c < len; c += 2) {
    uint32_t H = 0, L = 0;
    for (int k = c; k < c + 2 && k < len; ++k) {
      uint32_t h, l;
      hl(s, m, v, k, &h, &l);
      H += h;
      L += l;
    }
    r -= uint32_t(lowR(int32_t(H), int32_t(L), sf));
  }
  return r;
}
// Identity pair sums shifted by e = sf + 1 each, subtracted.
inline uint32_t idLowBlock(const qel16s* s, const qel16s* m, int width, int sf) {
  const long long e = (long long)sf + 1;
  uint32_t r = 0;
  for (int c = 0; c < width; c += 2) {
    const int a = diff(s[c], m[c]);
    const int b = c + 1 < width ? diff(s[c + 1], m[c + 1]) : 0;
    const int32_t p = int32_t(uint32_t(a * a) + uint32_t(b * b));
    r -= uint32_t(e >= 0 ? sar(p, e) : shl(p, -e));
  }
  return r;
}
inline int32_t addWrap(int32_t val, uint32_t r) { return int32_t(uint32_t(val) + r); }

// ---- the maxima of the 32-bit members, in single towards zero

// Runs f with rounding towards zero (conversions, products and sums alike).
template <typename F>
__attribute__((noinline)) void towardZero(F f) {
  const int saved = std::fegetround();
  std::fesetround(FE_TOWARDZERO);
  f();
  std::fesetround(saved);
}

// Under rounding towards zero: v = single(val) - S·k held to [-2^31, 2^31]
// (NaN to -2^31), the greater of v and single(dst) truncated.
__attribute__((noinline)) inline int32_t maxTowardZeroScore(float S, float k, int32_t val,
                                                            int32_t dst) {
  volatile float vv = float(val);
  float v = vv - S * k;
  if (!(v >= -2147483648.0f)) v = -2147483648.0f;
  if (v > 2147483648.0f) v = 2147483648.0f;
  volatile float df = float(dst);
  const float g = v > df ? v : df;
  return g >= 2147483648.0f ? INT_MAX : int32_t(g);
}

}  // namespace fxref

#endif
