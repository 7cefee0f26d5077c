// Block scores: one diagonal Gaussian against `height` rows, one score per
// row. The wrappers check their arguments, choose between a short scalar
// path of their own, the aligned kernel and the general kernel, and for the
// log-adding family run the score kernel over chunks of 128 rows into a stack
// buffer that the vector log-add then folds into the destination.
//
// Check order of the strided forms: a width above the stride (-37) before
// anything else, then null pointers (-8), then sizes (-6). The row-pointer
// forms have no stride: null pointers, then sizes. The array of row pointers
// itself is not searched for nulls.
#include <algorithm>
#include <cstddef>

#include "gauss/gauss.h"

namespace {

using qelsr::isAligned16;

constexpr int kChunk = 128;

// Rows from which the own loops read: a stride or an array of pointers.
template <typename T>
const T* rowOf(const T* pSrc, int step, int r) {
  return pSrc + static_cast<std::ptrdiff_t>(r) * step;
}

// The wrappers' scalar form: the running value is 2*val minus the terms, and
// the halving is the last step. Its order of additions differs from the
// kernels', so the last bits may differ from theirs.
template <bool Var, typename T>
T scalarScore(const T* x, const T* pMean, const T* pVar, int width, T twoVal) {
  T acc = twoVal;
  for (int c = 0; c < width; ++c) {
    const T d = x[c] - pMean[c];
    T t = d * d;
    if constexpr (Var) t = t * pVar[c];
    acc = acc - t;
  }
  return acc * T(0.5);
}

// Log-add of one single-precision score into its destination element, in
// double arithmetic over the single-precision polynomial rows. The difference
// is formed in single before it is widened; the sum is narrowed at the end.
// The sum is (m + c[10]) + y * Horner(c[0..9]), the same order as the scalar
// double log-add.
float logAddScalar(float score, float prior) {
  const float diff = prior - score;
  double d = static_cast<double>(diff);
  const double m = static_cast<double>(prior > score ? prior : score);
  if (d > 0.0) d = -d;
  if (d < MINLOGEXP_F) return static_cast<float>(m > -4500000.0 ? m : -4500000.0);
  const qel64f *p1, *p2, *p3;
  GetLogAddConst_F(&p1, &p2, &p3);
  const qel64f* c;
  double s;
  if (d > INT_S1_F) {
    c = p1;
    s = 0.0;
  } else if (d > INT_S2_F) {
    c = p2;
    s = INT_S1_F;
  } else {
    c = p3;
    s = INT_S2_F;
  }
  const double y = d - s;
  double q = c[0];
  for (int k = 1; k < kLogAddTerms_F - 1; ++k) q = q * y + c[k];
  return static_cast<float>((m + c[kLogAddTerms_F - 1]) + q * y);
}

template <typename T>
bool rowsAligned(const T** ppSrc, int height) {
  return RowMatrAlErr(reinterpret_cast<const void* const*>(ppSrc), height) == 0;
}

// Checks of the strided forms; 0 when the call may proceed.
inline qelStatus checkD2(int width, int step, bool anyNull, int height) {
  if (width > step) return qelStatusStride;
  if (anyNull) return qelStatusNullPtr;
  if (width < 1 || height < 1) return qelStatusSize;
  return qelStatusOk;
}

inline qelStatus checkD2L(bool anyNull, int width, int height) {
  if (anyNull) return qelStatusNullPtr;
  if (width < 1 || height < 1) return qelStatusSize;
  return qelStatusOk;
}

// A 128-element score buffer in the wrapper's frame, on 32 bytes.
template <typename T>
struct alignas(32) ChunkBuffer {
  T v[kChunk];
};

inline void logAddVec(const qel32f* src, qel32f* srcDst, int n) {
  qelsLogAddVec_32f_M7_sp(src, srcDst, n);
}
inline void logAddVec(const qel64f* src, qel64f* srcDst, int n) {
  qelsLogAddVec_64f_M7(src, srcDst, n);
}

// Chunk loop of the strided log-adding forms: `score(src, buf, n)` fills
// the buffer for n rows starting at `src`.
template <typename T, class Score>
void chunkLoopD2(const T* pSrc, int step, T* pDst, int height, Score score) {
  ChunkBuffer<T> buf;
  for (int off = 0; off < height; off += kChunk) {
    const int n = std::min(kChunk, height - off);
    score(rowOf(pSrc, step, off), buf.v, n);
    logAddVec(buf.v, pDst + off, n);
  }
}

// Chunk loop of the row-pointer forms: the alignment of the row pointers is
// looked at chunk by chunk, so one chunk may take the aligned kernel and the
// next the general one.
template <typename T, class Score>
void chunkLoopD2L(const T** ppSrc, bool tablesAligned, T* pDst, int height, Score score) {
  ChunkBuffer<T> buf;
  for (int off = 0; off < height; off += kChunk) {
    const int n = std::min(kChunk, height - off);
    const bool al = tablesAligned && rowsAligned(ppSrc + off, n);
    score(ppSrc + off, al, buf.v, n);
    logAddVec(buf.v, pDst + off, n);
  }
}

// The own loop of the identity-variance double maxima; a NaN score keeps the
// destination, as in the kernels.
constexpr int kOwnLoopRows = 1000;

inline void maxIdVarOwnRow(const qel64f* x, const qel64f* pMean, int width, qel64f* dst,
                           qel64f val) {
  const qel64f score = scalarScore<false>(x, pMean, pMean, width, 2.0 * val);
  if (score > *dst) *dst = score;
}

}  // namespace

extern "C" {

// ------------------------------------------------------------ qelsLogGauss_*

QELSR_API qelStatus qelsLogGauss_32f_D2(const qel32f* pSrc, int step, const qel32f* pMean,
                                        const qel32f* pVar, int width, qel32f* pDst, int height,
                                        qel32f val) {
  if (qelStatus st = checkD2(width, step, !pSrc || !pMean || !pVar || !pDst, height)) return st;
  if (width < 4) {
    for (int r = 0; r < height; ++r)
      pDst[r] = scalarScore<true>(rowOf(pSrc, step, r), pMean, pVar, width, 2.0f * val);
  } else if (isAligned16(pSrc) && isAligned16(pMean) && isAligned16(pVar) && step % 4 == 0) {
    (ownGaussWideKernels() ? qelsLogGauss_32f_D2_M7_Al_Avx2 : qelsLogGauss_32f_D2_M7_Al)(
        pSrc, step, pMean, pVar, width, pDst, height, &val);
  } else {
    (ownGaussWideKernels() ? qelsLogGauss_32f_D2_M7_Avx2 : qelsLogGauss_32f_D2_M7)(
        pSrc, step, pMean, pVar, width, pDst, height, &val);
  }
  return qelStatusOk;
}

QELSR_API qelStatus qelsLogGauss_32f_D2L(const qel32f** ppSrc, const qel32f* pMean,
                                         const qel32f* pVar, int width, qel32f* pDst, int height,
                                         qel32f val) {
  if (qelStatus st = checkD2L(!ppSrc || !pMean || !pVar || !pDst, width, height)) return st;
  if (width < 4) {
    for (int r = 0; r < height; ++r)
      pDst[r] = scalarScore<true>(ppSrc[r], pMean, pVar, width, 2.0f * val);
  } else if (rowsAligned(ppSrc, height) && isAligned16(pMean) && isAligned16(pVar)) {
    qelsLogGauss_32f_D2L_M7_Al(ppSrc, pMean, pVar, width, pDst, height, &val);
  } else {
    qelsLogGauss_32f_D2L_M7(ppSrc, pMean, pVar, width, pDst, height, &val);
  }
  return qelStatusOk;
}

QELSR_API qelStatus qelsLogGauss_IdVar_32f_D2(const qel32f* pSrc, int step, const qel32f* pMean,
                                              int width, qel32f* pDst, int height, qel32f val) {
  if (qelStatus st = checkD2(width, step, !pSrc || !pMean || !pDst, height)) return st;
  if (width < 4) {
    for (int r = 0; r < height; ++r)
      pDst[r] = scalarScore<false>(rowOf(pSrc, step, r), pMean, pMean, width, 2.0f * val);
  } else if (isAligned16(pSrc) && isAligned16(pMean) && step % 4 == 0) {
    (ownGaussWideKernels() ? qelsLGauss_IdVar_32f_D2_M7_Al_Avx2 : qelsLGauss_IdVar_32f_D2_M7_Al)(
        pSrc, step, pMean, width, pDst, height, &val);
  } else {
    (ownGaussWideKernels() ? qelsLGauss_IdVar_32f_D2_M7_Avx2 : qelsLGauss_IdVar_32f_D2_M7)(
        pSrc, step, pMean, width, pDst, height, &val);
  }
  return qelStatusOk;
}

// The identity-variance row-pointer form runs its kernels for every width.
QELSR_API qelStatus qelsLogGauss_IdVar_32f_D2L(const qel32f** ppSrc, const qel32f* pMean, int width,
                                               qel32f* pDst, int height, qel32f val) {
  if (qelStatus st = checkD2L(!ppSrc || !pMean || !pDst, width, height)) return st;
  if (rowsAligned(ppSrc, height) && isAligned16(pMean))
    qelsLGauss_IdVar_32f_D2L_M7_Al(ppSrc, pMean, width, pDst, height, &val);
  else
    qelsLGauss_IdVar_32f_D2L_M7(ppSrc, pMean, width, pDst, height, &val);
  return qelStatusOk;
}

// Double strides are asked to be a multiple of 4 elements (32 bytes).
QELSR_API qelStatus qelsLogGauss_64f_D2(const qel64f* pSrc, int step, const qel64f* pMean,
                                        const qel64f* pVar, int width, qel64f* pDst, int height,
                                        qel64f val) {
  if (qelStatus st = checkD2(width, step, !pSrc || !pMean || !pVar || !pDst, height)) return st;
  if (isAligned16(pSrc) && isAligned16(pMean) && isAligned16(pVar) && step % 4 == 0)
    qelsLGauss_64f_D2_M7_Al(pSrc, step, pMean, pVar, width, pDst, height, &val);
  else
    qelsLGauss_64f_D2_M7(pSrc, step, pMean, pVar, width, pDst, height, &val);
  return qelStatusOk;
}

QELSR_API qelStatus qelsLogGauss_64f_D2L(const qel64f** ppSrc, const qel64f* pMean,
                                         const qel64f* pVar, int width, qel64f* pDst, int height,
                                         qel64f val) {
  if (qelStatus st = checkD2L(!ppSrc || !pMean || !pVar || !pDst, width, height)) return st;
  if (rowsAligned(ppSrc, height) && isAligned16(pMean) && isAligned16(pVar))
    qelsLGauss_64f_D2L_M7_Al(ppSrc, pMean, pVar, width, pDst, height, &val);
  else
    qelsLGauss_64f_D2L_M7(ppSrc, pMean, pVar, width, pDst, height, &val);
  return qelStatusOk;
}

QELSR_API qelStatus qelsLogGauss_IdVar_64f_D2(const qel64f* pSrc, int step, const qel64f* pMean,
                                              int width, qel64f* pDst, int height, qel64f val) {
  if (qelStatus st = checkD2(width, step, !pSrc || !pMean || !pDst, height)) return st;
  if (isAligned16(pSrc) && isAligned16(pMean) && step % 4 == 0)
    qelsLGauss_IdVar_64f_D2_M7_Al(pSrc, step, pMean, width, pDst, height, &val);
  else
    qelsLGauss_IdVar_64f_D2_M7(pSrc, step, pMean, width, pDst, height, &val);
  return qelStatusOk;
}

QELSR_API qelStatus qelsLogGauss_IdVar_64f_D2L(const qel64f** ppSrc, const qel64f* pMean, int width,
                                               qel64f* pDst, int height, qel64f val) {
  if (qelStatus st = checkD2L(!ppSrc || !pMean || !pDst, width, height)) return st;
  if (rowsAligned(ppSrc, height) && isAligned16(pMean))
    qelsLGauss_IdVar_64f_D2L_M7_Al(ppSrc, pMean, width, pDst, height, &val);
  else
    qelsLGauss_IdVar_64f_D2L_M7(ppSrc, pMean, width, pDst, height, &val);
  return qelStatusOk;
}

// ------------------------------------------------------------ qelsLogGaussMax_*

// The single-precision maxima have no scalar path: narrow widths run the
// general kernel.
QELSR_API qelStatus qelsLogGaussMax_32f_D2(const qel32f* pSrc, int step, const qel32f* pMean,
                                           const qel32f* pVar, int width, qel32f* pDst, int height,
                                           qel32f val) {
  if (qelStatus st = checkD2(width, step, !pSrc || !pMean || !pVar || !pDst, height)) return st;
  if (width >= 4 && step % 4 == 0 && isAligned16(pSrc) && isAligned16(pMean) && isAligned16(pVar))
    (ownGaussWideKernels() ? qelsLGaussMax_32f_D2_M7_Al_Avx2 : qelsLGaussMax_32f_D2_M7_Al)(
        pSrc, step, pMean, pVar, width, pDst, height, &val);
  else
    (ownGaussWideKernels() ? qelsLGaussMax_32f_D2_M7_Avx2 : qelsLGaussMax_32f_D2_M7)(
        pSrc, step, pMean, pVar, width, pDst, height, &val);
  return qelStatusOk;
}

QELSR_API qelStatus qelsLogGaussMax_32f_D2L(const qel32f** ppSrc, const qel32f* pMean,
                                            const qel32f* pVar, int width, qel32f* pDst, int height,
                                            qel32f val) {
  if (qelStatus st = checkD2L(!ppSrc || !pMean || !pVar || !pDst, width, height)) return st;
  if (rowsAligned(ppSrc, height) && isAligned16(pMean) && isAligned16(pVar))
    qelsLGaussMax_32f_D2L_M7_Al(ppSrc, pMean, pVar, width, pDst, height, &val);
  else
    qelsLGaussMax_32f_D2L_M7(ppSrc, pMean, pVar, width, pDst, height, &val);
  return qelStatusOk;
}

QELSR_API qelStatus qelsLogGaussMax_IdVar_32f_D2(const qel32f* pSrc, int step, const qel32f* pMean,
                                                 int width, qel32f* pDst, int height, qel32f val) {
  if (qelStatus st = checkD2(width, step, !pSrc || !pMean || !pDst, height)) return st;
  if (width >= 4 && step % 4 == 0 && isAligned16(pSrc) && isAligned16(pMean))
    (ownGaussWideKernels()
         ? qelsLGaussMax_IdVar_32f_D2_M7_Al_Avx2
         : qelsLGaussMax_IdVar_32f_D2_M7_Al)(pSrc, step, pMean, width, pDst, height, &val);
  else
    (ownGaussWideKernels() ? qelsLGaussMax_IdVar_32f_D2_M7_Avx2 : qelsLGaussMax_IdVar_32f_D2_M7)(
        pSrc, step, pMean, width, pDst, height, &val);
  return qelStatusOk;
}

QELSR_API qelStatus qelsLogGaussMax_IdVar_32f_D2L(const qel32f** ppSrc, const qel32f* pMean,
                                                  int width, qel32f* pDst, int height, qel32f val) {
  if (qelStatus st = checkD2L(!ppSrc || !pMean || !pDst, width, height)) return st;
  if (rowsAligned(ppSrc, height) && isAligned16(pMean))
    qelsLGaussMax_IdVar_32f_D2L_M7_Al(ppSrc, pMean, width, pDst, height, &val);
  else
    qelsLGaussMax_IdVar_32f_D2L_M7(ppSrc, pMean, width, pDst, height, &val);
  return qelStatusOk;
}

QELSR_API qelStatus qelsLogGaussMax_64f_D2(const qel64f* pSrc, int step, const qel64f* pMean,
                                           const qel64f* pVar, int width, qel64f* pDst, int height,
                                           qel64f val) {
  if (qelStatus st = checkD2(width, step, !pSrc || !pMean || !pVar || !pDst, height)) return st;
  if (isAligned16(pSrc) && isAligned16(pMean) && isAligned16(pVar) && step % 4 == 0)
    qelsLGaussMax_64f_D2_M7_Al(pSrc, step, pMean, pVar, width, pDst, height, &val);
  else
    qelsLGaussMax_64f_D2_M7(pSrc, step, pMean, pVar, width, pDst, height, &val);
  return qelStatusOk;
}

QELSR_API qelStatus qelsLogGaussMax_64f_D2L(const qel64f** ppSrc, const qel64f* pMean,
                                            const qel64f* pVar, int width, qel64f* pDst, int height,
                                            qel64f val) {
  if (qelStatus st = checkD2L(!ppSrc || !pMean || !pVar || !pDst, width, height)) return st;
  if (rowsAligned(ppSrc, height) && isAligned16(pMean) && isAligned16(pVar))
    qelsLGaussMax_64f_D2L_M7_Al(ppSrc, pMean, pVar, width, pDst, height, &val);
  else
    qelsLGaussMax_64f_D2L_M7(ppSrc, pMean, pVar, width, pDst, height, &val);
  return qelStatusOk;
}

// From 1000 rows on the identity-variance double maxima run their own scalar
// loop; below that the kernels, the aligned one also wanting pDst on 16 bytes.
QELSR_API qelStatus qelsLogGaussMax_IdVar_64f_D2(const qel64f* pSrc, int step, const qel64f* pMean,
                                                 int width, qel64f* pDst, int height, qel64f val) {
  if (qelStatus st = checkD2(width, step, !pSrc || !pMean || !pDst, height)) return st;
  if (height >= kOwnLoopRows) {
    for (int r = 0; r < height; ++r)
      maxIdVarOwnRow(rowOf(pSrc, step, r), pMean, width, pDst + r, val);
  } else if (isAligned16(pSrc) && isAligned16(pMean) && isAligned16(pDst) && step % 4 == 0) {
    qelsLGaussMax_IdVar_64f_D2_M7_Al(pSrc, step, pMean, width, pDst, height, &val);
  } else {
    qelsLGaussMax_IdVar_64f_D2_M7(pSrc, step, pMean, width, pDst, height, &val);
  }
  return qelStatusOk;
}

QELSR_API qelStatus qelsLogGaussMax_IdVar_64f_D2L(const qel64f** ppSrc, const qel64f* pMean,
                                                  int width, qel64f* pDst, int height, qel64f val) {
  if (qelStatus st = checkD2L(!ppSrc || !pMean || !pDst, width, height)) return st;
  if (height >= kOwnLoopRows) {
    for (int r = 0; r < height; ++r) maxIdVarOwnRow(ppSrc[r], pMean, width, pDst + r, val);
  } else if (rowsAligned(ppSrc, height) && isAligned16(pMean) && isAligned16(pDst)) {
    qelsLGaussMax_IdVar_64f_D2L_M7_Al(ppSrc, pMean, width, pDst, height, &val);
  } else {
    qelsLGaussMax_IdVar_64f_D2L_M7(ppSrc, pMean, width, pDst, height, &val);
  }
  return qelStatusOk;
}

// ------------------------------------------------------------ qelsLogGaussAdd_*

QELSR_API qelStatus qelsLogGaussAdd_32f_D2(const qel32f* pSrc, int step, const qel32f* pMean,
                                           const qel32f* pVar, int width, qel32f* pDst, int height,
                                           qel32f val) {
  if (qelStatus st = checkD2(width, step, !pSrc || !pMean || !pVar || !pDst, height)) return st;
  if (width < 4) {
    for (int r = 0; r < height; ++r) {
      const qel32f score = scalarScore<true>(rowOf(pSrc, step, r), pMean, pVar, width, 2.0f * val);
      pDst[r] = logAddScalar(score, pDst[r]);
    }
    return qelStatusOk;
  }
  const bool al = isAligned16(pSrc) && isAligned16(pMean) && isAligned16(pVar) && step % 4 == 0;
  chunkLoopD2(pSrc, step, pDst, height, [&](const qel32f* src, qel32f* buf, int n) {
    if (al)
      (ownGaussWideKernels() ? qelsLogGauss_32f_D2_M7_Al_Avx2 : qelsLogGauss_32f_D2_M7_Al)(
          src, step, pMean, pVar, width, buf, n, &val);
    else
      (ownGaussWideKernels() ? qelsLogGauss_32f_D2_M7_Avx2 : qelsLogGauss_32f_D2_M7)(
          src, step, pMean, pVar, width, buf, n, &val);
  });
  return qelStatusOk;
}

QELSR_API qelStatus qelsLogGaussAdd_32f_D2L(const qel32f** ppSrc, const qel32f* pMean,
                                            const qel32f* pVar, int width, qel32f* pDst, int height,
                                            qel32f val) {
  if (qelStatus st = checkD2L(!ppSrc || !pMean || !pVar || !pDst, width, height)) return st;
  chunkLoopD2L(ppSrc, isAligned16(pMean) && isAligned16(pVar), pDst, height,
               [&](const qel32f** rows, bool al, qel32f* buf, int n) {
                 if (al)
                   qelsLogGauss_32f_D2L_M7_Al(rows, pMean, pVar, width, buf, n, &val);
                 else
                   qelsLogGauss_32f_D2L_M7(rows, pMean, pVar, width, buf, n, &val);
               });
  return qelStatusOk;
}

QELSR_API qelStatus qelsLogGaussAdd_IdVar_32f_D2(const qel32f* pSrc, int step, const qel32f* pMean,
                                                 int width, qel32f* pDst, int height, qel32f val) {
  if (qelStatus st = checkD2(width, step, !pSrc || !pMean || !pDst, height)) return st;
  if (width < 4) {
    for (int r = 0; r < height; ++r) {
      const qel32f score =
          scalarScore<false>(rowOf(pSrc, step, r), pMean, pMean, width, 2.0f * val);
      pDst[r] = logAddScalar(score, pDst[r]);
    }
    return qelStatusOk;
  }
  const bool al = isAligned16(pSrc) && isAligned16(pMean) && step % 4 == 0;
  chunkLoopD2(pSrc, step, pDst, height, [&](const qel32f* src, qel32f* buf, int n) {
    if (al)
      (ownGaussWideKernels() ? qelsLGauss_IdVar_32f_D2_M7_Al_Avx2 : qelsLGauss_IdVar_32f_D2_M7_Al)(
          src, step, pMean, width, buf, n, &val);
    else
      (ownGaussWideKernels() ? qelsLGauss_IdVar_32f_D2_M7_Avx2 : qelsLGauss_IdVar_32f_D2_M7)(
          src, step, pMean, width, buf, n, &val);
  });
  return qelStatusOk;
}

QELSR_API qelStatus qelsLogGaussAdd_IdVar_32f_D2L(const qel32f** ppSrc, const qel32f* pMean,
                                                  int width, qel32f* pDst, int height, qel32f val) {
  if (qelStatus st = checkD2L(!ppSrc || !pMean || !pDst, width, height)) return st;
  chunkLoopD2L(ppSrc, isAligned16(pMean), pDst, height,
               [&](const qel32f** rows, bool al, qel32f* buf, int n) {
                 if (al)
                   qelsLGauss_IdVar_32f_D2L_M7_Al(rows, pMean, width, buf, n, &val);
                 else
                   qelsLGauss_IdVar_32f_D2L_M7(rows, pMean, width, buf, n, &val);
               });
  return qelStatusOk;
}

// The double log-adding forms take the chunk loop at every width, aligned
// when the stride is even.
QELSR_API qelStatus qelsLogGaussAdd_64f_D2(const qel64f* pSrc, int step, const qel64f* pMean,
                                           const qel64f* pVar, int width, qel64f* pDst, int height,
                                           qel64f val) {
  if (qelStatus st = checkD2(width, step, !pSrc || !pMean || !pVar || !pDst, height)) return st;
  const bool al = isAligned16(pSrc) && isAligned16(pMean) && isAligned16(pVar) && step % 2 == 0;
  chunkLoopD2(pSrc, step, pDst, height, [&](const qel64f* src, qel64f* buf, int n) {
    if (al)
      qelsLGauss_64f_D2_M7_Al(src, step, pMean, pVar, width, buf, n, &val);
    else
      qelsLGauss_64f_D2_M7(src, step, pMean, pVar, width, buf, n, &val);
  });
  return qelStatusOk;
}

QELSR_API qelStatus qelsLogGaussAdd_64f_D2L(const qel64f** ppSrc, const qel64f* pMean,
                                            const qel64f* pVar, int width, qel64f* pDst, int height,
                                            qel64f val) {
  if (qelStatus st = checkD2L(!ppSrc || !pMean || !pVar || !pDst, width, height)) return st;
  chunkLoopD2L(ppSrc, isAligned16(pMean) && isAligned16(pVar), pDst, height,
               [&](const qel64f** rows, bool al, qel64f* buf, int n) {
                 if (al)
                   qelsLGauss_64f_D2L_M7_Al(rows, pMean, pVar, width, buf, n, &val);
                 else
                   qelsLGauss_64f_D2L_M7(rows, pMean, pVar, width, buf, n, &val);
               });
  return qelStatusOk;
}

QELSR_API qelStatus qelsLogGaussAdd_IdVar_64f_D2(const qel64f* pSrc, int step, const qel64f* pMean,
                                                 int width, qel64f* pDst, int height, qel64f val) {
  if (qelStatus st = checkD2(width, step, !pSrc || !pMean || !pDst, height)) return st;
  const bool al = isAligned16(pSrc) && isAligned16(pMean) && step % 2 == 0;
  chunkLoopD2(pSrc, step, pDst, height, [&](const qel64f* src, qel64f* buf, int n) {
    if (al)
      qelsLGauss_IdVar_64f_D2_M7_Al(src, step, pMean, width, buf, n, &val);
    else
      qelsLGauss_IdVar_64f_D2_M7(src, step, pMean, width, buf, n, &val);
  });
  return qelStatusOk;
}

QELSR_API qelStatus qelsLogGaussAdd_IdVar_64f_D2L(const qel64f** ppSrc, const qel64f* pMean,
                                                  int width, qel64f* pDst, int height, qel64f val) {
  if (qelStatus st = checkD2L(!ppSrc || !pMean || !pDst, width, height)) return st;
  chunkLoopD2L(ppSrc, isAligned16(pMean), pDst, height,
               [&](const qel64f** rows, bool al, qel64f* buf, int n) {
                 if (al)
                   qelsLGauss_IdVar_64f_D2L_M7_Al(rows, pMean, width, buf, n, &val);
                 else
                   qelsLGauss_IdVar_64f_D2L_M7(rows, pMean, width, buf, n, &val);
               });
  return qelStatusOk;
}

// ------------------------------------------------------------ qelsMahDist_*

QELSR_API qelStatus qelsMahDist_32f_D2(const qel32f* pSrc, int step, const qel32f* pMean,
                                       const qel32f* pVar, int width, qel32f* pDst, int height) {
  if (qelStatus st = checkD2(width, step, !pSrc || !pMean || !pVar || !pDst, height)) return st;
  if (isAligned16(pSrc) && isAligned16(pMean) && isAligned16(pVar) && step % 4 == 0)
    sMahDist_32f_D2_M7_Al(pSrc, step, pMean, pVar, width, pDst, height);
  else
    sMahDist_32f_D2_M7(pSrc, step, pMean, pVar, width, pDst, height);
  return qelStatusOk;
}

QELSR_API qelStatus qelsMahDist_32f_D2L(const qel32f** ppSrc, const qel32f* pMean,
                                        const qel32f* pVar, int width, qel32f* pDst, int height) {
  if (qelStatus st = checkD2L(!ppSrc || !pMean || !pVar || !pDst, width, height)) return st;
  if (rowsAligned(ppSrc, height) && isAligned16(pMean) && isAligned16(pVar))
    sMahDist_32f_D2L_M7_Al(ppSrc, pMean, pVar, width, pDst, height);
  else
    sMahDist_32f_D2L_M7(ppSrc, pMean, pVar, width, pDst, height);
  return qelStatusOk;
}

// The aligned double distance wants the rows packed at the width rounded up
// to 4 elements; any other stride takes the general kernel.
QELSR_API qelStatus qelsMahDist_64f_D2(const qel64f* pSrc, int step, const qel64f* pMean,
                                       const qel64f* pVar, int width, qel64f* pDst, int height) {
  if (qelStatus st = checkD2(width, step, !pSrc || !pMean || !pVar || !pDst, height)) return st;
  const long long packed = (static_cast<long long>(width) + 3) & ~3LL;
  if (isAligned16(pSrc) && isAligned16(pMean) && isAligned16(pVar) && step == packed)
    sMahDist_64f_D2_M7_Al(pSrc, step, pMean, pVar, width, pDst, height);
  else
    sMahDist_64f_D2_M7(pSrc, step, pMean, pVar, width, pDst, height);
  return qelStatusOk;
}

QELSR_API qelStatus qelsMahDist_64f_D2L(const qel64f** ppSrc, const qel64f* pMean,
                                        const qel64f* pVar, int width, qel64f* pDst, int height) {
  if (qelStatus st = checkD2L(!ppSrc || !pMean || !pVar || !pDst, width, height)) return st;
  if (rowsAligned(ppSrc, height) && isAligned16(pMean) && isAligned16(pVar))
    sMahDist_64f_D2L_M7_Al(ppSrc, pMean, pVar, width, pDst, height);
  else
    sMahDist_64f_D2L_M7(ppSrc, pMean, pVar, width, pDst, height);
  return qelStatusOk;
}

}  // extern "C"
