// Mixture scores: one observation against the `height` components of a
// mixture. The wrappers check their arguments in the family's order, pick
// the kernel twin by alignment, and run the chunk loops that bound the
// stack buffers to 100 (101) elements however large the mixture is.
#include <cstddef>
#include <cstdint>

#include "base/base.h"
#include "base/simd.h"
#include "gauss.h"

namespace {

using qelsr::isAligned16;

// Components per chunk of the accumulating loops.
constexpr int kChunk = 100;
// From this many components on, the double MultiMix and maximum wrappers
// (and the log-add of the row-pointer form) run their own loop.
constexpr int kOwnLoopHeight = 1000;

// A stack buffer of N elements starting on 32 bytes inside the frame.
template <typename T, int N>
class StackBuffer {
 public:
  T* data() {
    const auto p = reinterpret_cast<std::uintptr_t>(raw_);
    return reinterpret_cast<T*>((p + 31) & ~static_cast<std::uintptr_t>(31));
  }

 private:
  alignas(T) unsigned char raw_[N * sizeof(T) + 32];
};

template <typename... P>
bool anyNull(const P*... p) {
  return ((p == nullptr) || ...);
}

template <typename T>
bool rowsAligned(const T* const* pp, int n) {
  return RowMatrAlErr(reinterpret_cast<const void* const*>(pp), n) == 0;
}

// The aligned rule of the `_D2` families: observation, mean and variance on
// 16 bytes and a stride of a multiple of 4 elements (both element types).
template <typename T>
bool d2Aligned(const T* pSrc, const T* pMean, const T* pVar, int step) {
  return isAligned16(pSrc) && isAligned16(pMean) && isAligned16(pVar) && step % 4 == 0;
}

template <typename T>
bool d2lAligned(const T* pSrc, const T* const* ppMean, const T* const* ppVar, int n) {
  return isAligned16(pSrc) && rowsAligned(ppMean, n) && rowsAligned(ppVar, n);
}

// Check orders. MultiMix `_D2`: stride, pointers, sizes. Mixture `_D2`:
// pointers, stride, sizes. `_D2L`: pointers, sizes.
inline qelStatus checkStrideFirst(bool anyNullPtr, int step, int width, int height) {
  if (width > step) return qelStatusStride;
  if (anyNullPtr) return qelStatusNullPtr;
  if (width < 1 || height < 1) return qelStatusSize;
  return qelStatusOk;
}

inline qelStatus checkPointersFirst(bool anyNullPtr, int step, int width, int height) {
  if (anyNullPtr) return qelStatusNullPtr;
  if (width > step) return qelStatusStride;
  if (width < 1 || height < 1) return qelStatusSize;
  return qelStatusOk;
}

inline qelStatus checkRowPointers(bool anyNullPtr, int width, int height) {
  if (anyNullPtr) return qelStatusNullPtr;
  if (width < 1 || height < 1) return qelStatusSize;
  return qelStatusOk;
}

inline std::ptrdiff_t rowOffset(int m, int step) {
  return static_cast<std::ptrdiff_t>(m) * static_cast<std::ptrdiff_t>(step);
}

// ---------------------------------------------------------------- own loops, double
//
// Components in groups of 4 (then singly), each with a two-lane sum over
// the columns in pairs, an odd last column in lane 0 and the lanes folded
// l0 + l1: the arithmetic of the double kernels, so both paths agree.

template <typename T>
struct RowsD2 {
  const T* mean;
  const T* var;
  int step;
  const T* m(int i) const { return mean + rowOffset(i, step); }
  const T* v(int i) const { return var + rowOffset(i, step); }
};

template <typename T>
struct RowsD2L {
  const T* const* mean;
  const T* const* var;
  const T* m(int i) const { return mean[i]; }
  const T* v(int i) const { return var[i]; }
};

template <int N, class Rows>
inline void ownSums64f(const Rows& rows, const double* x, int width, int m, double* s) {
  const double* mr[N];
  const double* vr[N];
  __m128d a[N];
  for (int k = 0; k < N; ++k) {
    mr[k] = rows.m(m + k);
    vr[k] = rows.v(m + k);
    a[k] = _mm_setzero_pd();
  }
  int c = 0;
  for (; c + 2 <= width; c += 2) {
    const __m128d xa = _mm_loadu_pd(x + c);
    for (int k = 0; k < N; ++k) {
      const __m128d d = _mm_sub_pd(xa, _mm_loadu_pd(mr[k] + c));
      a[k] = _mm_add_pd(a[k], _mm_mul_pd(_mm_mul_pd(d, d), _mm_loadu_pd(vr[k] + c)));
    }
  }
  if (c < width) {
    const __m128d xa = _mm_load_sd(x + c);
    for (int k = 0; k < N; ++k) {
      const __m128d d = _mm_sub_sd(xa, _mm_load_sd(mr[k] + c));
      a[k] = _mm_add_sd(a[k], _mm_mul_sd(_mm_mul_sd(d, d), _mm_load_sd(vr[k] + c)));
    }
  }
  for (int k = 0; k < N; ++k) s[k] = _mm_cvtsd_f64(_mm_hadd_pd(a[k], a[k]));
}

// Runs `store(m, sum)` for every component in the order of the groups.
template <class Rows, class Store>
inline void ownLoop64f(const Rows& rows, const double* x, int width, int height, Store store) {
  double s[4];
  int m = 0;
  for (; m + 4 <= height; m += 4) {
    ownSums64f<4>(rows, x, width, m, s);
    for (int k = 0; k < 4; ++k) store(m + k, s[k]);
  }
  for (; m < height; ++m) {
    ownSums64f<1>(rows, x, width, m, s);
    store(m, s[0]);
  }
}

inline double score64f(double v, double sum) { return ((v + v) - sum) * 0.5; }

// Scalar double log-add through the coefficient rows:
// (m + c[21]) + y * Horner(c[0..20]). A difference that is not at least
// MINLOGEXP (NaN included) ignores the smaller term.
inline double logAddScalar64f(double a, double b, const qel64f* const rows[3]) {
  const double m = a > b ? a : b;
  const double d = (b < a ? b : a) - m;
  if (!(d >= -23.0258509299405)) return m < -9.0e9 ? LOGZERO : m;
  int seg = 2;
  double s = -9.0;
  if (d > -3.5) {
    seg = 0;
    s = 0.0;
  } else if (d > -9.0) {
    seg = 1;
    s = -3.5;
  }
  const qel64f* c = rows[seg];
  const double y = d - s;
  double q = c[0];
  for (int k = 1; k < 21; ++k) q = q * y + c[k];
  return (m + c[21]) + q * y;
}

// The fold of the identity-covariance float mixture: both values widened,
// the single-precision rows evaluated in double as (m + c[10]) + y *
// Horner(c[0..9]) with the borders -2.55 and -6.8 as doubles, and the sum
// narrowed to single. A difference not at least -15.3195879547406 gives the
// greater of m and -4500000.0.
inline float logAddInDouble32f(float a, float b, const qel64f* const rows[3]) {
  const double x = a, z = b;
  const double m = x > z ? x : z;
  const double d = (z < x ? z : x) - m;
  if (!(d >= -15.3195879547406)) return static_cast<float>(m < -4500000.0 ? -4500000.0 : m);
  int seg = 2;
  double s = -6.8;
  if (d > -2.55) {
    seg = 0;
    s = 0.0;
  } else if (d > -6.8) {
    seg = 1;
    s = -2.55;
  }
  const qel64f* c = rows[seg];
  const double y = d - s;
  double q = c[0];
  for (int k = 1; k < 10; ++k) q = q * y + c[k];
  return static_cast<float>((m + c[10]) + q * y);
}

// ---------------------------------------------------------------- chunk loops

inline void copyVals(const qel32f* src, qel32f* dst, int n) { qelsCopy_32f(src, dst, n); }
inline void copyVals(const qel64f* src, qel64f* dst, int n) { qelsCopy_64f(src, dst, n); }
inline void logAddVec(const qel32f* src, qel32f* srcDst, int n) {
  qelsLogAddVec_32f_M7_sp(src, srcDst, n);
}
inline void logAddVec(const qel64f* src, qel64f* srcDst, int n) {
  qelsLogAddVec_64f_M7(src, srcDst, n);
}
inline void logSum(const qel32f* src, qel32f* dst, int n) { qelsLogSum_32f_M7(src, dst, n); }
inline void logSum(const qel64f* src, qel64f* dst, int n) { qelsLogSum_64f_M7(src, dst, n); }

// Log-add of the scores into pSrcDst, 100 components at a time:
// `scoreChunk(m0, n, buf)` leaves the scores of components m0..m0+n-1 in
// buf, whose first n elements hold a copy of their constants.
template <typename T, class ScoreChunk>
inline void addChunks(const T* pVal, T* pSrcDst, int height, ScoreChunk scoreChunk) {
  StackBuffer<T, kChunk> sb;
  T* buf = sb.data();
  for (int m0 = 0; m0 < height; m0 += kChunk) {
    const int n = height - m0 < kChunk ? height - m0 : kChunk;
    copyVals(pVal + m0, buf, n);
    scoreChunk(m0, n, buf);
    logAddVec(buf, pSrcDst + m0, n);
  }
}

// Log sum of all scores: slot 0 of the 101-element buffer carries the
// running sum, slots 1..n the chunk. `scoreChunk(m0, n, buf + 1)` writes the
// chunk's scores. The first chunk is summed alone; each later one with the
// running sum as one more element, the result going back to slot 0.
template <typename T, class ScoreChunk>
inline T mixtureChunks(int height, ScoreChunk scoreChunk) {
  StackBuffer<T, kChunk + 1> sb;
  T* buf = sb.data();
  for (int m0 = 0; m0 < height; m0 += kChunk) {
    const int n = height - m0 < kChunk ? height - m0 : kChunk;
    scoreChunk(m0, n, buf + 1);
    if (m0 == 0)
      logSum(buf + 1, buf, n);
    else
      logSum(buf, buf, n + 1);
  }
  return buf[0];
}

// ---------------------------------------------------------------- kernel choice

// The twin by alignment; single data also have 256-bit passes, taken where
// the processor has them (they keep the order of additions of the twins).
template <typename F>
F pick(bool al, F plain, F aligned) {
  return al ? aligned : plain;
}
template <typename F>
F pick(bool al, F plain, F aligned, F wide, F wideAligned) {
  return ownGaussWideKernels() ? (al ? wideAligned : wide) : (al ? aligned : plain);
}

template <typename T>
struct Kernels;

template <>
struct Kernels<qel32f> {
  static auto multiD2(bool al) {
    return pick(al, qelsLGaussMultiMix_32f_D2_M7, qelsLGaussMultiMix_32f_D2_M7_Al,
                qelsLGaussMultiMix_32f_D2_M7_Avx2, qelsLGaussMultiMix_32f_D2_M7_Al_Avx2);
  }
  static auto multiD2L(bool al) {
    return pick(al, qelsLGaussMultiMix_32f_D2L_M7, qelsLGaussMultiMix_32f_D2L_M7_Al,
                qelsLGaussMultiMix_32f_D2L_M7_Avx2, qelsLGaussMultiMix_32f_D2L_M7_Al_Avx2);
  }
  static auto maxD2(bool al) {
    return pick(al, qelsLGaussMaxMultiMix_32f_D2_M7, qelsLGaussMaxMultiMix_32f_D2_M7_Al,
                qelsLGaussMaxMultiMix_32f_D2_M7_Avx2, qelsLGaussMaxMultiMix_32f_D2_M7_Al_Avx2);
  }
  static auto maxD2L(bool al) {
    return pick(al, qelsLGaussMaxMultiMix_32f_D2L_M7, qelsLGaussMaxMultiMix_32f_D2L_M7_Al,
                qelsLGaussMaxMultiMix_32f_D2L_M7_Avx2, qelsLGaussMaxMultiMix_32f_D2L_M7_Al_Avx2);
  }
  static auto distD2(bool al) {
    return pick(al, sMahDistMultiMix_32f_D2_M7, sMahDistMultiMix_32f_D2_M7_Al);
  }
  static auto distD2L(bool al) {
    return pick(al, sMahDistMultiMix_32f_D2L_M7, sMahDistMultiMix_32f_D2L_M7_Al);
  }
};

template <>
struct Kernels<qel64f> {
  static auto multiD2(bool al) {
    return pick(al, qelsLGaussMultiMix_64f_D2_M7, qelsLGaussMultiMix_64f_D2_M7_Al);
  }
  static auto multiD2L(bool al) {
    return pick(al, qelsLGaussMultiMix_64f_D2L_M7, qelsLGaussMultiMix_64f_D2L_M7_Al);
  }
  static auto maxD2(bool al) {
    return pick(al, qelsLGaussMaxMultiMix_64f_D2_M7, qelsLGaussMaxMultiMix_64f_D2_M7_Al);
  }
  static auto maxD2L(bool al) {
    return pick(al, qelsLGaussMaxMultiMix_64f_D2L_M7, qelsLGaussMaxMultiMix_64f_D2L_M7_Al);
  }
  static auto distD2(bool al) {
    return pick(al, sMahDistMultiMix_64f_D2_M7, sMahDistMultiMix_64f_D2_M7_Al);
  }
  static auto distD2L(bool al) {
    return pick(al, sMahDistMultiMix_64f_D2L_M7, sMahDistMultiMix_64f_D2L_M7_Al);
  }
};

template <typename T>
constexpr bool kDouble = sizeof(T) == sizeof(qel64f);

// The own loops' stores: a score in place, and the greater of score and
// destination (a NaN score keeps the destination).
inline auto inPlace(qel64f* pSrcDst) {
  return [pSrcDst](int m, double s) { pSrcDst[m] = score64f(pSrcDst[m], s); };
}
inline auto greater(const qel64f* pVal, qel64f* pSrcDst) {
  return [pVal, pSrcDst](int m, double s) {
    const double sc = score64f(pVal[m], s);
    pSrcDst[m] = sc > pSrcDst[m] ? sc : pSrcDst[m];
  };
}

// ---------------------------------------------------------------- the wrappers of both types

template <typename T>
qelStatus multiMixD2(const T* pMean, const T* pVar, int step, const T* pSrc, int width, T* pSrcDst,
                     int height) {
  const qelStatus st = checkStrideFirst(anyNull(pMean, pVar, pSrc, pSrcDst), step, width, height);
  if (st != qelStatusOk) return st;
  if constexpr (kDouble<T>) {
    if (height >= kOwnLoopHeight) {
      ownLoop64f(RowsD2<T>{pMean, pVar, step}, pSrc, width, height, inPlace(pSrcDst));
      return qelStatusOk;
    }
  }
  Kernels<T>::multiD2(d2Aligned(pSrc, pMean, pVar, step))(pMean, pVar, step, pSrc, width, pSrcDst,
                                                          height);
  return qelStatusOk;
}

template <typename T>
qelStatus multiMixD2L(const T** ppMean, const T** ppVar, const T* pSrc, int width, T* pSrcDst,
                      int height) {
  const qelStatus st = checkRowPointers(anyNull(ppMean, ppVar, pSrc, pSrcDst), width, height);
  if (st != qelStatusOk) return st;
  if constexpr (kDouble<T>) {
    if (height >= kOwnLoopHeight) {
      ownLoop64f(RowsD2L<T>{ppMean, ppVar}, pSrc, width, height, inPlace(pSrcDst));
      return qelStatusOk;
    }
  }
  Kernels<T>::multiD2L(d2lAligned(pSrc, ppMean, ppVar, height))(ppMean, ppVar, pSrc, width, pSrcDst,
                                                                height);
  return qelStatusOk;
}

// The aligned single kernels of the maximum also load the constants four at
// a time on 16 bytes.
template <typename T>
bool valAligned(const T* pVal) {
  return kDouble<T> || isAligned16(pVal);
}

template <typename T>
qelStatus maxMultiMixD2(const T* pMean, const T* pVar, int step, const T* pSrc, int width,
                        const T* pVal, T* pSrcDst, int height) {
  const qelStatus st =
      checkStrideFirst(anyNull(pMean, pVar, pSrc, pVal, pSrcDst), step, width, height);
  if (st != qelStatusOk) return st;
  if constexpr (kDouble<T>) {
    if (height >= kOwnLoopHeight) {
      ownLoop64f(RowsD2<T>{pMean, pVar, step}, pSrc, width, height, greater(pVal, pSrcDst));
      return qelStatusOk;
    }
  }
  Kernels<T>::maxD2(d2Aligned(pSrc, pMean, pVar, step) && valAligned(pVal))(
      pMean, pVar, step, pSrc, width, pVal, pSrcDst, height);
  return qelStatusOk;
}

template <typename T>
qelStatus maxMultiMixD2L(const T** ppMean, const T** ppVar, const T* pSrc, int width, const T* pVal,
                         T* pSrcDst, int height) {
  const qelStatus st = checkRowPointers(anyNull(ppMean, ppVar, pSrc, pVal, pSrcDst), width, height);
  if (st != qelStatusOk) return st;
  if constexpr (kDouble<T>) {
    if (height >= kOwnLoopHeight) {
      ownLoop64f(RowsD2L<T>{ppMean, ppVar}, pSrc, width, height, greater(pVal, pSrcDst));
      return qelStatusOk;
    }
  }
  Kernels<T>::maxD2L(d2lAligned(pSrc, ppMean, ppVar, height) && valAligned(pVal))(
      ppMean, ppVar, pSrc, width, pVal, pSrcDst, height);
  return qelStatusOk;
}

template <typename T>
qelStatus addMultiMixD2(const T* pMean, const T* pVar, int step, const T* pSrc, int width,
                        const T* pVal, T* pSrcDst, int height) {
  const qelStatus st =
      checkStrideFirst(anyNull(pMean, pVar, pSrc, pVal, pSrcDst), step, width, height);
  if (st != qelStatusOk) return st;
  // The double log-add wants only an even stride, which keeps every double
  // row on 16 bytes.
  const bool al =
      kDouble<T> ? isAligned16(pSrc) && isAligned16(pMean) && isAligned16(pVar) && step % 2 == 0
                 : d2Aligned(pSrc, pMean, pVar, step);
  const auto kernel = Kernels<T>::multiD2(al);
  addChunks(pVal, pSrcDst, height, [&](int m0, int n, T* buf) {
    kernel(pMean + rowOffset(m0, step), pVar + rowOffset(m0, step), step, pSrc, width, buf, n);
  });
  return qelStatusOk;
}

template <typename T>
qelStatus addMultiMixD2L(const T** ppMean, const T** ppVar, const T* pSrc, int width, const T* pVal,
                         T* pSrcDst, int height) {
  const qelStatus st = checkRowPointers(anyNull(ppMean, ppVar, pSrc, pVal, pSrcDst), width, height);
  if (st != qelStatusOk) return st;
  if constexpr (kDouble<T>) {
    if (height >= kOwnLoopHeight) {
      const qel64f* rows[3];
      GetLogAddConst(&rows[0], &rows[1], &rows[2]);
      ownLoop64f(RowsD2L<T>{ppMean, ppVar}, pSrc, width, height, [&](int m, double s) {
        pSrcDst[m] = logAddScalar64f(score64f(pVal[m], s), pSrcDst[m], rows);
      });
      return qelStatusOk;
    }
  }
  addChunks(pVal, pSrcDst, height, [&](int m0, int n, T* buf) {
    // The rows of each chunk decide its twin on their own.
    Kernels<T>::multiD2L(d2lAligned(pSrc, ppMean + m0, ppVar + m0, n))(ppMean + m0, ppVar + m0,
                                                                       pSrc, width, buf, n);
  });
  return qelStatusOk;
}

template <typename T>
qelStatus mahDistMultiMixD2(const T* pMean, const T* pVar, int step, const T* pSrc, int width,
                            T* pDst, int height) {
  const qelStatus st = checkStrideFirst(anyNull(pMean, pVar, pSrc, pDst), step, width, height);
  if (st != qelStatusOk) return st;
  Kernels<T>::distD2(d2Aligned(pSrc, pMean, pVar, step))(pMean, pVar, step, pSrc, width, pDst,
                                                         height);
  return qelStatusOk;
}

template <typename T>
qelStatus mahDistMultiMixD2L(const T** ppMean, const T** ppVar, const T* pSrc, int width, T* pDst,
                             int height) {
  const qelStatus st = checkRowPointers(anyNull(ppMean, ppVar, pSrc, pDst), width, height);
  if (st != qelStatusOk) return st;
  Kernels<T>::distD2L(d2lAligned(pSrc, ppMean, ppVar, height))(ppMean, ppVar, pSrc, width, pDst,
                                                               height);
  return qelStatusOk;
}

template <typename T>
qelStatus mixtureD2(const T* pSrc, const T* pMean, const T* pVar, int height, int step, int width,
                    const T* pVal, T* pResult) {
  const qelStatus st =
      checkPointersFirst(anyNull(pSrc, pMean, pVar, pVal, pResult), step, width, height);
  if (st != qelStatusOk) return st;
  const auto kernel = Kernels<T>::multiD2(d2Aligned(pSrc, pMean, pVar, step));
  *pResult = mixtureChunks<T>(height, [&](int m0, int n, T* chunk) {
    copyVals(pVal + m0, chunk, n);
    kernel(pMean + rowOffset(m0, step), pVar + rowOffset(m0, step), step, pSrc, width, chunk, n);
  });
  return qelStatusOk;
}

template <typename T>
qelStatus mixtureD2L(const T* pSrc, const T** ppMean, const T** ppVar, int height, int width,
                     const T* pVal, T* pResult) {
  const qelStatus st = checkRowPointers(anyNull(pSrc, ppMean, ppVar, pVal, pResult), width, height);
  if (st != qelStatusOk) return st;
  *pResult = mixtureChunks<T>(height, [&](int m0, int n, T* chunk) {
    copyVals(pVal + m0, chunk, n);
    Kernels<T>::multiD2L(d2lAligned(pSrc, ppMean + m0, ppVar + m0, n))(ppMean + m0, ppVar + m0,
                                                                       pSrc, width, chunk, n);
  });
  return qelStatusOk;
}

}  // namespace

extern "C" {

qelStatus qelsLogGaussMultiMix_32f_D2(const qel32f* pMean, const qel32f* pVar, int step,
                                      const qel32f* pSrc, int width, qel32f* pSrcDst, int height) {
  return multiMixD2(pMean, pVar, step, pSrc, width, pSrcDst, height);
}
qelStatus qelsLogGaussMultiMix_32f_D2L(const qel32f** ppMean, const qel32f** ppVar,
                                       const qel32f* pSrc, int width, qel32f* pSrcDst, int height) {
  return multiMixD2L(ppMean, ppVar, pSrc, width, pSrcDst, height);
}
qelStatus qelsLogGaussMultiMix_64f_D2(const qel64f* pMean, const qel64f* pVar, int step,
                                      const qel64f* pSrc, int width, qel64f* pSrcDst, int height) {
  return multiMixD2(pMean, pVar, step, pSrc, width, pSrcDst, height);
}
qelStatus qelsLogGaussMultiMix_64f_D2L(const qel64f** ppMean, const qel64f** ppVar,
                                       const qel64f* pSrc, int width, qel64f* pSrcDst, int height) {
  return multiMixD2L(ppMean, ppVar, pSrc, width, pSrcDst, height);
}

qelStatus qelsLogGaussMaxMultiMix_32f_D2(const qel32f* pMean, const qel32f* pVar, int step,
                                         const qel32f* pSrc, int width, const qel32f* pVal,
                                         qel32f* pSrcDst, int height) {
  return maxMultiMixD2(pMean, pVar, step, pSrc, width, pVal, pSrcDst, height);
}
qelStatus qelsLogGaussMaxMultiMix_32f_D2L(const qel32f** ppMean, const qel32f** ppVar,
                                          const qel32f* pSrc, int width, const qel32f* pVal,
                                          qel32f* pSrcDst, int height) {
  return maxMultiMixD2L(ppMean, ppVar, pSrc, width, pVal, pSrcDst, height);
}
qelStatus qelsLogGaussMaxMultiMix_64f_D2(const qel64f* pMean, const qel64f* pVar, int step,
                                         const qel64f* pSrc, int width, const qel64f* pVal,
                                         qel64f* pSrcDst, int height) {
  return maxMultiMixD2(pMean, pVar, step, pSrc, width, pVal, pSrcDst, height);
}
qelStatus qelsLogGaussMaxMultiMix_64f_D2L(const qel64f** ppMean, const qel64f** ppVar,
                                          const qel64f* pSrc, int width, const qel64f* pVal,
                                          qel64f* pSrcDst, int height) {
  return maxMultiMixD2L(ppMean, ppVar, pSrc, width, pVal, pSrcDst, height);
}

qelStatus qelsLogGaussAddMultiMix_32f_D2(const qel32f* pMean, const qel32f* pVar, int step,
                                         const qel32f* pSrc, int width, const qel32f* pVal,
                                         qel32f* pSrcDst, int height) {
  return addMultiMixD2(pMean, pVar, step, pSrc, width, pVal, pSrcDst, height);
}
qelStatus qelsLogGaussAddMultiMix_32f_D2L(const qel32f** ppMean, const qel32f** ppVar,
                                          const qel32f* pSrc, int width, const qel32f* pVal,
                                          qel32f* pSrcDst, int height) {
  return addMultiMixD2L(ppMean, ppVar, pSrc, width, pVal, pSrcDst, height);
}
qelStatus qelsLogGaussAddMultiMix_64f_D2(const qel64f* pMean, const qel64f* pVar, int step,
                                         const qel64f* pSrc, int width, const qel64f* pVal,
                                         qel64f* pSrcDst, int height) {
  return addMultiMixD2(pMean, pVar, step, pSrc, width, pVal, pSrcDst, height);
}
qelStatus qelsLogGaussAddMultiMix_64f_D2L(const qel64f** ppMean, const qel64f** ppVar,
                                          const qel64f* pSrc, int width, const qel64f* pVal,
                                          qel64f* pSrcDst, int height) {
  return addMultiMixD2L(ppMean, ppVar, pSrc, width, pVal, pSrcDst, height);
}

qelStatus qelsMahDistMultiMix_32f_D2(const qel32f* pMean, const qel32f* pVar, int step,
                                     const qel32f* pSrc, int width, qel32f* pDst, int height) {
  return mahDistMultiMixD2(pMean, pVar, step, pSrc, width, pDst, height);
}
qelStatus qelsMahDistMultiMix_32f_D2L(const qel32f** ppMean, const qel32f** ppVar,
                                      const qel32f* pSrc, int width, qel32f* pDst, int height) {
  return mahDistMultiMixD2L(ppMean, ppVar, pSrc, width, pDst, height);
}
qelStatus qelsMahDistMultiMix_64f_D2(const qel64f* pMean, const qel64f* pVar, int step,
                                     const qel64f* pSrc, int width, qel64f* pDst, int height) {
  return mahDistMultiMixD2(pMean, pVar, step, pSrc, width, pDst, height);
}
qelStatus qelsMahDistMultiMix_64f_D2L(const qel64f** ppMean, const qel64f** ppVar,
                                      const qel64f* pSrc, int width, qel64f* pDst, int height) {
  return mahDistMultiMixD2L(ppMean, ppVar, pSrc, width, pDst, height);
}

qelStatus qelsLogGaussMixture_32f_D2(const qel32f* pSrc, const qel32f* pMean, const qel32f* pVar,
                                     int height, int step, int width, const qel32f* pVal,
                                     qel32f* pResult) {
  return mixtureD2(pSrc, pMean, pVar, height, step, width, pVal, pResult);
}
qelStatus qelsLogGaussMixture_32f_D2L(const qel32f* pSrc, const qel32f** ppMean,
                                      const qel32f** ppVar, int height, int width,
                                      const qel32f* pVal, qel32f* pResult) {
  return mixtureD2L(pSrc, ppMean, ppVar, height, width, pVal, pResult);
}
qelStatus qelsLogGaussMixture_64f_D2(const qel64f* pSrc, const qel64f* pMean, const qel64f* pVar,
                                     int height, int step, int width, const qel64f* pVal,
                                     qel64f* pResult) {
  return mixtureD2(pSrc, pMean, pVar, height, step, width, pVal, pResult);
}
qelStatus qelsLogGaussMixture_64f_D2L(const qel64f* pSrc, const qel64f** ppMean,
                                      const qel64f** ppVar, int height, int width,
                                      const qel64f* pVal, qel64f* pResult) {
  return mixtureD2L(pSrc, ppMean, ppVar, height, width, pVal, pResult);
}

// ---------------------------------------------------------------- identity covariance

// Four components per pass over the observation, then the last ones singly;
// the scores fold into the running result one at a time in component order
// by the scalar log-add in double, the first score starting it. The chunks
// of 100 keep the groups of four on the same components as one long pass.
qelStatus qelsLogGaussMixture_IdVar_32f_D2(const qel32f* pSrc, const qel32f* pMean, int height,
                                           int step, int width, const qel32f* pVal,
                                           qel32f* pResult) {
  const qelStatus st = checkPointersFirst(anyNull(pSrc, pMean, pVal, pResult), step, width, height);
  if (st != qelStatusOk) return st;
  const bool al = isAligned16(pSrc) && isAligned16(pMean) && step % 4 == 0;
  const qel64f* rows[3];
  GetLogAddConst_F(&rows[0], &rows[1], &rows[2]);
  StackBuffer<qel32f, kChunk + 1> sb;
  qel32f* buf = sb.data();
  for (int m0 = 0; m0 < height; m0 += kChunk) {
    const int n = height - m0 < kChunk ? height - m0 : kChunk;
    const qel32f* mean = pMean + rowOffset(m0, step);
    qelsCopy_32f(pVal + m0, buf + 1, n);
    if (al)
      sLGaussMultiMix_IdVar_32f_D2_M7_Al(mean, step, pSrc, width, buf + 1, n);
    else
      sLGaussMultiMix_IdVar_32f_D2_M7(mean, step, pSrc, width, buf + 1, n);
    int k = 0;
    if (m0 == 0) {
      buf[0] = buf[1];
      k = 1;
    }
    for (; k < n; ++k) buf[0] = logAddInDouble32f(buf[1 + k], buf[0], rows);
  }
  *pResult = buf[0];
  return qelStatusOk;
}

// Each component scored alone; the twin follows pSrc and that component's
// row.
qelStatus qelsLogGaussMixture_IdVar_32f_D2L(const qel32f* pSrc, const qel32f** ppMean, int height,
                                            int width, const qel32f* pVal, qel32f* pResult) {
  const qelStatus st = checkRowPointers(anyNull(pSrc, ppMean, pVal, pResult), width, height);
  if (st != qelStatusOk) return st;
  const bool srcAl = isAligned16(pSrc);
  *pResult = mixtureChunks<qel32f>(height, [&](int m0, int n, qel32f* chunk) {
    for (int k = 0; k < n; ++k) {
      const qel32f* mean = ppMean[m0 + k];
      if (srcAl && isAligned16(mean))
        qelsLGaussSingle_IdVar_32f_M7_Al(pSrc, mean, width, chunk + k, pVal + m0 + k);
      else
        qelsLGaussSingle_IdVar_32f_M7(pSrc, mean, width, chunk + k, pVal + m0 + k);
    }
  });
  return qelStatusOk;
}

qelStatus qelsLogGaussMixture_IdVar_64f_D2(const qel64f* pSrc, const qel64f* pMean, int height,
                                           int step, int width, const qel64f* pVal,
                                           qel64f* pResult) {
  const qelStatus st = checkPointersFirst(anyNull(pSrc, pMean, pVal, pResult), step, width, height);
  if (st != qelStatusOk) return st;
  const bool al = isAligned16(pSrc) && isAligned16(pMean) && step % 4 == 0;
  *pResult = mixtureChunks<qel64f>(height, [&](int m0, int n, qel64f* chunk) {
    for (int k = 0; k < n; ++k) {
      const qel64f* mean = pMean + rowOffset(m0 + k, step);
      if (al)
        ownqelsLogGaussSingle_IdVar_64f_W7Al(pSrc, mean, width, chunk + k, pVal + m0 + k);
      else
        ownqelsLogGaussSingle_IdVar_64f_W7(pSrc, mean, width, chunk + k, pVal + m0 + k);
    }
  });
  return qelStatusOk;
}

// The row-pointer form decides the twin chunk by chunk, like the other
// chunked row-pointer families.
qelStatus qelsLogGaussMixture_IdVar_64f_D2L(const qel64f* pSrc, const qel64f** ppMean, int height,
                                            int width, const qel64f* pVal, qel64f* pResult) {
  const qelStatus st = checkRowPointers(anyNull(pSrc, ppMean, pVal, pResult), width, height);
  if (st != qelStatusOk) return st;
  *pResult = mixtureChunks<qel64f>(height, [&](int m0, int n, qel64f* chunk) {
    const bool al = isAligned16(pSrc) && rowsAligned(ppMean + m0, n);
    for (int k = 0; k < n; ++k) {
      const qel64f* mean = ppMean[m0 + k];
      if (al)
        ownqelsLogGaussSingle_IdVar_64f_W7Al(pSrc, mean, width, chunk + k, pVal + m0 + k);
      else
        ownqelsLogGaussSingle_IdVar_64f_W7(pSrc, mean, width, chunk + k, pVal + m0 + k);
    }
  });
  return qelStatusOk;
}

}  // extern "C"
