// Vector building blocks of the transform: complex products, the 4- and
// 8-point DFTs on two lanes of interleaved (re, im) singles, and twiddle
// picking from a quarter-wave sine table. Internal to src/base/fft.
#ifndef QELSR_BASE_FFT_KERNELS_H
#define QELSR_BASE_FFT_KERNELS_H

#include <cstdint>

#include "base/base.h"
#include "base/fft/fft.h"
#include "base/simd.h"

namespace qelsr::fft {

// sin(pi/4) as a single; the same value the sine tables hold for 45 degrees.
inline constexpr float kSqrtHalf = 0.70710677f;

inline __m128 signMaskIm() { return _mm_castsi128_ps(_mm_set_epi32(INT32_MIN, 0, INT32_MIN, 0)); }
inline __m128 signMaskRe() { return _mm_castsi128_ps(_mm_set_epi32(0, INT32_MIN, 0, INT32_MIN)); }

// a * w for two complex lanes (SSE3: duplicate real and imaginary parts of
// w, swap a, one addsub).
inline __m128 cmul(__m128 a, __m128 w) {
  const __m128 wr = _mm_moveldup_ps(w);
  const __m128 wi = _mm_movehdup_ps(w);
  const __m128 as = _mm_shuffle_ps(a, a, _MM_SHUFFLE(2, 3, 0, 1));
  return _mm_addsub_ps(_mm_mul_ps(a, wr), _mm_mul_ps(as, wi));
}
// a * conj(w).
inline __m128 cmulConj(__m128 a, __m128 w) {
  const __m128 wr = _mm_moveldup_ps(w);
  const __m128 wi = _mm_movehdup_ps(w);
  const __m128 as = _mm_shuffle_ps(a, a, _MM_SHUFFLE(2, 3, 0, 1));
  const __m128 neg = _mm_castsi128_ps(_mm_set1_epi32(INT32_MIN));
  return _mm_addsub_ps(_mm_mul_ps(a, wr), _mm_xor_ps(_mm_mul_ps(as, wi), neg));
}
// The twiddle product of a direction: forward twiddles are stored, the
// inverse uses their conjugates.
template <bool Inv>
inline __m128 twMul(__m128 a, __m128 w) {
  if constexpr (Inv)
    return cmulConj(a, w);
  else
    return cmul(a, w);
}
// v * (-i) forward, v * (+i) inverse: the quarter turn of the direction.
template <bool Inv>
inline __m128 quarter(__m128 v) {
  const __m128 s = _mm_shuffle_ps(v, v, _MM_SHUFFLE(2, 3, 0, 1));
  if constexpr (Inv)
    return _mm_xor_ps(s, signMaskRe());
  else
    return _mm_xor_ps(s, signMaskIm());
}

// 4-point DFT of inputs in natural order, in place.
template <bool Inv>
inline void dft4(__m128& y0, __m128& y1, __m128& y2, __m128& y3) {
  const __m128 t0 = _mm_add_ps(y0, y2), t1 = _mm_sub_ps(y0, y2);
  const __m128 t2 = _mm_add_ps(y1, y3), t3 = quarter<Inv>(_mm_sub_ps(y1, y3));
  y0 = _mm_add_ps(t0, t2);
  y2 = _mm_sub_ps(t0, t2);
  y1 = _mm_add_ps(t1, t3);
  y3 = _mm_sub_ps(t1, t3);
}

// 8-point DFT of inputs in natural order, in place: two 4-point DFTs of the
// even and odd inputs joined by the eighth-turn twiddles.
template <bool Inv>
inline void dft8(__m128* y) {
  __m128 e0 = y[0], e1 = y[2], e2 = y[4], e3 = y[6];
  __m128 o0 = y[1], o1 = y[3], o2 = y[5], o3 = y[7];
  dft4<Inv>(e0, e1, e2, e3);
  dft4<Inv>(o0, o1, o2, o3);
  const __m128 r = _mm_set1_ps(kSqrtHalf);
  const __m128 q1 = quarter<Inv>(o1);
  o1 = _mm_mul_ps(_mm_add_ps(o1, q1), r);  // o1 * (1 -+ i) / sqrt 2
  o2 = quarter<Inv>(o2);
  const __m128 q3 = quarter<Inv>(o3);
  o3 = _mm_mul_ps(_mm_sub_ps(q3, o3), r);  // o3 * (-1 -+ i) / sqrt 2
  y[0] = _mm_add_ps(e0, o0);
  y[4] = _mm_sub_ps(e0, o0);
  y[1] = _mm_add_ps(e1, o1);
  y[5] = _mm_sub_ps(e1, o1);
  y[2] = _mm_add_ps(e2, o2);
  y[6] = _mm_sub_ps(e2, o2);
  y[3] = _mm_add_ps(e3, o3);
  y[7] = _mm_sub_ps(e3, o3);
}

// A quarter-wave sine table: sin(2*pi*i/n) at base[i * stride], i = 0..n/4.
struct SineBase {
  const float* base;
  long n;
  long stride;
  float s(long i) const { return base[i * stride]; }
};

// The forward twiddle exp(-2*pi*i*idx/len) for 0 <= idx < len, where len
// divides the table's n; both parts are table entries, possibly negated.
inline void twiddle(const SineBase& t, long len, long idx, float* w) {
  const long step = t.n / len;
  const long q = t.n / 4;
  long a = idx * step;  // angle in table units
  const long quad = a / q;
  const long r = a % q;
  const float sn = t.s(r), cs = t.s(q - r);
  switch (quad) {
    case 0:
      w[0] = cs;
      w[1] = -sn;
      break;
    case 1:
      w[0] = -sn;
      w[1] = -cs;
      break;
    case 2:
      w[0] = -cs;
      w[1] = sn;
      break;
    default:
      w[0] = sn;
      w[1] = cs;
      break;
  }
}

// Radices of the core of 2^logC points: the levels are eaten by radix 8,
// with one or two radix-4 levels first where log2 C is not a multiple of 3
// (fewer passes over the data than radix 4 alone). The first pass is fused
// with the bit reversal; coreStageLog gives the log2 radix of the stage
// that follows `done` levels.
constexpr int coreFirstLog(int logC) { return logC % 3 == 0 ? 3 : 2; }
constexpr int coreStageLog(int logC, int done) { return (logC - done) % 3 == 0 ? 3 : 2; }

inline bool aligned16(const void* p) { return (reinterpret_cast<std::uintptr_t>(p) & 15u) == 0; }

template <typename T>
inline T* alignUp32(T* p) {
  return reinterpret_cast<T*>((reinterpret_cast<std::uintptr_t>(p) + 31u) & ~std::uintptr_t{31});
}

// One bin pair (k, M-k) of the forward recombination of a half-length
// spectrum in z, with the halved twiddle A = (ar, ai): with F = Z[k],
// G = conj Z[M-k], D = F - G, P = A*D: X[k] = G + P, X[M-k] = conj(F - P).
inline void recFwdPair(float* z, long m, long k, float ar, float ai) {
  const float fr = z[2 * k], fi = z[2 * k + 1];
  const float gr = z[2 * (m - k)], gi = -z[2 * (m - k) + 1];
  const float dr = fr - gr, di = fi - gi;
  const float pr = dr * ar - di * ai, pi = di * ar + dr * ai;
  z[2 * k] = gr + pr;
  z[2 * k + 1] = gi + pi;
  z[2 * (m - k)] = fr - pr;
  z[2 * (m - k) + 1] = -(fi - pi);
}

// The inverse pair, with B = 2*conj(A) = (br, bi) and P = B*D:
// 2Z[k] = 2G + P, 2Z[M-k] = conj(2F - P).
inline void recInvPair(float* z, long m, long k, float br, float bi) {
  const float fr = z[2 * k], fi = z[2 * k + 1];
  const float gr = z[2 * (m - k)], gi = -z[2 * (m - k) + 1];
  const float dr = fr - gr, di = fi - gi;
  const float pr = dr * br - di * bi, pi = di * br + dr * bi;
  z[2 * k] = (gr + gr) + pr;
  z[2 * k + 1] = (gi + gi) + pi;
  z[2 * (m - k)] = (fr + fr) - pr;
  z[2 * (m - k) + 1] = -((fi + fi) - pi);
}

// Plan allocation shared by both plan types: ask the sizes, take the plan
// block and (when the order needs one) a temporary init buffer from
// qelMalloc, whose 64-byte alignment puts the plan at the block's first byte
// so the plan's Free can release it by its address; build the plan in them,
// drop the init buffer, and release everything on every failure.
template <typename Plan>
qelStatus allocatePlan(Plan** ppSpec, int fftOrder, int flag, int hint,
                       qelStatus (*getSize)(int, int, int, int*, int*, int*),
                       qelStatus (*init)(Plan**, int, int, int, qel8u*, qel8u*)) {
  if (!ppSpec) return qelStatusNullPtr;
  int specSize = 0, initSize = 0, workSize = 0;
  qelStatus st = getSize(fftOrder, flag, hint, &specSize, &initSize, &workSize);
  if (st != qelStatusOk) return st;
  qel8u* mem = qelsMalloc_8u(specSize);
  if (!mem) return qelStatusMemAlloc;
  qel8u* initBuf = nullptr;
  if (initSize > 0) {
    initBuf = qelsMalloc_8u(initSize);
    if (!initBuf) {
      qelsFree(mem);
      return qelStatusMemAlloc;
    }
  }
  Plan* s = nullptr;
  st = init(&s, fftOrder, flag, hint, mem, initBuf);
  if (initBuf) qelsFree(initBuf);
  if (st != qelStatusOk) {
    qelsFree(mem);
    return st;
  }
  s->ownsMemory = 1;
  *ppSpec = s;
  return qelStatusOk;
}

}  // namespace qelsr::fft

#endif
