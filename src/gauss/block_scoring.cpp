// Block scores: one diagonal Gaussian against `height` rows, one score per
// row. The wrappers check their arguments, choose between a short scalar
// path of their own, the aligned kernel and the general kernel, and for the
// log-adding family run the score kernel over chunks of 128 rows into a stack
// buffer that the vector log-add then folds into the destination.
//
// Check order of the strided forms: a width above the stride (-37) before
// anything else, then null pointers (-8), then sizes (-6). The row-pointer
// forms have no stride: null pointers, then sizes. The array of row pointers
// itself is not searched for nulls. The identity-variance forms pass their
// mean where the others pass the variance to the shared checks, which then
// look at it twice.
#include <algorithm>
#include <cstddef>

#include "gauss/gauss.h"
#include "gauss/log_add_scalar.h"

namespace {

using qelsr::isAligned16;

constexpr int kChunk = 128;

// The rows the own loops read: a stride or an array of pointers.
template <typename T>
struct Strided {
  const T* base;
  int step;
  const T* operator[](int r) const { return base + static_cast<std::ptrdiff_t>(r) * step; }
};

template <typename T>
struct Listed {
  const T* const* rows;
  const T* operator[](int r) const { return rows[r]; }
};

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
// is formed in single before it is widened, so a NaN in it runs the third
// row; the sum is narrowed at the end.
float logAddScalar(float score, float prior) {
  const float diff = prior - score;
  double d = static_cast<double>(diff);
  const double m = static_cast<double>(prior > score ? prior : score);
  if (d > 0.0) d = -d;
  if (d < MINLOGEXP_F) return static_cast<float>(m > -4500000.0 ? m : -4500000.0);
  return static_cast<float>(qelsr::logdomain::singleRowsPolynomial(m, d));
}

// The single-precision narrow path of the scoring and log-adding forms.
template <bool Var, bool Add, class Rows>
void scalarRows(const Rows& rows, const qel32f* pMean, const qel32f* pVar, int width, qel32f* pDst,
                int height, qel32f val) {
  for (int r = 0; r < height; ++r) {
    const qel32f score = scalarScore<Var>(rows[r], pMean, pVar, width, 2.0f * val);
    pDst[r] = Add ? logAddScalar(score, pDst[r]) : score;
  }
}

// The identity-variance double maxima from 1000 rows on: their own scalar
// loop; a NaN score keeps the destination, as in the kernels.
constexpr int kOwnLoopRows = 1000;

template <class Rows>
void maxIdVarRows(const Rows& rows, const qel64f* pMean, int width, qel64f* pDst, int height,
                  qel64f val) {
  for (int r = 0; r < height; ++r) {
    const qel64f score = scalarScore<false>(rows[r], pMean, pMean, width, 2.0 * val);
    if (score > pDst[r]) pDst[r] = score;
  }
}

template <typename T>
bool rowsAligned(const T* const* ppSrc, int height) {
  return RowMatrAlErr(reinterpret_cast<const void* const*>(ppSrc), height) == 0;
}

// The aligned twin serves the strided forms when the rows and tables lie on
// 16 bytes and the stride is a multiple of `mult` elements, the row-pointer
// forms when every row and both tables do.
template <typename T>
bool alignedD2(const T* pSrc, int step, const T* pMean, const T* pVar, int mult = 4) {
  return isAligned16(pSrc) && isAligned16(pMean) && isAligned16(pVar) && step % mult == 0;
}

template <typename T>
bool alignedD2L(const T* const* ppSrc, int height, const T* pMean, const T* pVar) {
  return rowsAligned(ppSrc, height) && isAligned16(pMean) && isAligned16(pVar);
}

// The kernel of a pair, and of two pairs the 256-bit one when the processor
// runs it.
template <class F>
F* pick(bool aligned, F* al, F* general) {
  return aligned ? al : general;
}

template <class F>
F* pick(bool aligned, F* al, F* general, F* alWide, F* generalWide) {
  return ownGaussWideKernels() ? pick(aligned, alWide, generalWide) : pick(aligned, al, general);
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

// Chunk loop of the strided log-adding forms over the score kernel `kernel`,
// whose arguments between the stride and the score buffer are `mid`.
template <typename T, class F, class... Mid>
void addChunksD2(F* kernel, const T* pSrc, int step, T* pDst, int height, const T* pVal,
                 Mid... mid) {
  ChunkBuffer<T> buf;
  for (int off = 0; off < height; off += kChunk) {
    const int n = std::min(kChunk, height - off);
    kernel(Strided<T>{pSrc, step}[off], step, mid..., buf.v, n, pVal);
    logAddVec(buf.v, pDst + off, n);
  }
}

// Chunk loop of the row-pointer forms: the alignment of the row pointers is
// looked at chunk by chunk, so one chunk may take the aligned kernel and the
// next the general one.
template <typename T, class F, class... Mid>
void addChunksD2L(F* al, F* general, bool tablesAligned, const T** ppSrc, T* pDst, int height,
                  const T* pVal, Mid... mid) {
  ChunkBuffer<T> buf;
  for (int off = 0; off < height; off += kChunk) {
    const int n = std::min(kChunk, height - off);
    pick(tablesAligned && rowsAligned(ppSrc + off, n), al, general)(ppSrc + off, mid..., buf.v, n,
                                                                    pVal);
    logAddVec(buf.v, pDst + off, n);
  }
}

}  // namespace

extern "C" {

// ------------------------------------------------------------ qelsLogGauss_*

QELSR_API qelStatus qelsLogGauss_32f_D2(const qel32f* pSrc, int step, const qel32f* pMean,
                                        const qel32f* pVar, int width, qel32f* pDst, int height,
                                        qel32f val) {
  if (qelStatus st = checkD2(width, step, !pSrc || !pMean || !pVar || !pDst, height)) return st;
  if (width < 4)
    scalarRows<true, false>(Strided<qel32f>{pSrc, step}, pMean, pVar, width, pDst, height, val);
  else
    pick(alignedD2(pSrc, step, pMean, pVar), qelsLogGauss_32f_D2_M7_Al, qelsLogGauss_32f_D2_M7,
         qelsLogGauss_32f_D2_M7_Al_Avx2,
         qelsLogGauss_32f_D2_M7_Avx2)(pSrc, step, pMean, pVar, width, pDst, height, &val);
  return qelStatusOk;
}

QELSR_API qelStatus qelsLogGauss_32f_D2L(const qel32f** ppSrc, const qel32f* pMean,
                                         const qel32f* pVar, int width, qel32f* pDst, int height,
                                         qel32f val) {
  if (qelStatus st = checkD2L(!ppSrc || !pMean || !pVar || !pDst, width, height)) return st;
  if (width < 4)
    scalarRows<true, false>(Listed<qel32f>{ppSrc}, pMean, pVar, width, pDst, height, val);
  else
    pick(alignedD2L(ppSrc, height, pMean, pVar), qelsLogGauss_32f_D2L_M7_Al,
         qelsLogGauss_32f_D2L_M7)(ppSrc, pMean, pVar, width, pDst, height, &val);
  return qelStatusOk;
}

QELSR_API qelStatus qelsLogGauss_IdVar_32f_D2(const qel32f* pSrc, int step, const qel32f* pMean,
                                              int width, qel32f* pDst, int height, qel32f val) {
  if (qelStatus st = checkD2(width, step, !pSrc || !pMean || !pDst, height)) return st;
  if (width < 4)
    scalarRows<false, false>(Strided<qel32f>{pSrc, step}, pMean, pMean, width, pDst, height, val);
  else
    pick(alignedD2(pSrc, step, pMean, pMean), qelsLGauss_IdVar_32f_D2_M7_Al,
         qelsLGauss_IdVar_32f_D2_M7, qelsLGauss_IdVar_32f_D2_M7_Al_Avx2,
         qelsLGauss_IdVar_32f_D2_M7_Avx2)(pSrc, step, pMean, width, pDst, height, &val);
  return qelStatusOk;
}

// The identity-variance row-pointer form runs its kernels for every width.
QELSR_API qelStatus qelsLogGauss_IdVar_32f_D2L(const qel32f** ppSrc, const qel32f* pMean, int width,
                                               qel32f* pDst, int height, qel32f val) {
  if (qelStatus st = checkD2L(!ppSrc || !pMean || !pDst, width, height)) return st;
  pick(alignedD2L(ppSrc, height, pMean, pMean), qelsLGauss_IdVar_32f_D2L_M7_Al,
       qelsLGauss_IdVar_32f_D2L_M7)(ppSrc, pMean, width, pDst, height, &val);
  return qelStatusOk;
}

// Double strides are asked to be a multiple of 4 elements (32 bytes).
QELSR_API qelStatus qelsLogGauss_64f_D2(const qel64f* pSrc, int step, const qel64f* pMean,
                                        const qel64f* pVar, int width, qel64f* pDst, int height,
                                        qel64f val) {
  if (qelStatus st = checkD2(width, step, !pSrc || !pMean || !pVar || !pDst, height)) return st;
  pick(alignedD2(pSrc, step, pMean, pVar), qelsLGauss_64f_D2_M7_Al, qelsLGauss_64f_D2_M7)(
      pSrc, step, pMean, pVar, width, pDst, height, &val);
  return qelStatusOk;
}

QELSR_API qelStatus qelsLogGauss_64f_D2L(const qel64f** ppSrc, const qel64f* pMean,
                                         const qel64f* pVar, int width, qel64f* pDst, int height,
                                         qel64f val) {
  if (qelStatus st = checkD2L(!ppSrc || !pMean || !pVar || !pDst, width, height)) return st;
  pick(alignedD2L(ppSrc, height, pMean, pVar), qelsLGauss_64f_D2L_M7_Al, qelsLGauss_64f_D2L_M7)(
      ppSrc, pMean, pVar, width, pDst, height, &val);
  return qelStatusOk;
}

QELSR_API qelStatus qelsLogGauss_IdVar_64f_D2(const qel64f* pSrc, int step, const qel64f* pMean,
                                              int width, qel64f* pDst, int height, qel64f val) {
  if (qelStatus st = checkD2(width, step, !pSrc || !pMean || !pDst, height)) return st;
  pick(alignedD2(pSrc, step, pMean, pMean), qelsLGauss_IdVar_64f_D2_M7_Al,
       qelsLGauss_IdVar_64f_D2_M7)(pSrc, step, pMean, width, pDst, height, &val);
  return qelStatusOk;
}

QELSR_API qelStatus qelsLogGauss_IdVar_64f_D2L(const qel64f** ppSrc, const qel64f* pMean, int width,
                                               qel64f* pDst, int height, qel64f val) {
  if (qelStatus st = checkD2L(!ppSrc || !pMean || !pDst, width, height)) return st;
  pick(alignedD2L(ppSrc, height, pMean, pMean), qelsLGauss_IdVar_64f_D2L_M7_Al,
       qelsLGauss_IdVar_64f_D2L_M7)(ppSrc, pMean, width, pDst, height, &val);
  return qelStatusOk;
}

// ------------------------------------------------------------ qelsLogGaussMax_*

// The single-precision maxima have no scalar path: narrow widths run the
// general kernel.
QELSR_API qelStatus qelsLogGaussMax_32f_D2(const qel32f* pSrc, int step, const qel32f* pMean,
                                           const qel32f* pVar, int width, qel32f* pDst, int height,
                                           qel32f val) {
  if (qelStatus st = checkD2(width, step, !pSrc || !pMean || !pVar || !pDst, height)) return st;
  pick(width >= 4 && alignedD2(pSrc, step, pMean, pVar), qelsLGaussMax_32f_D2_M7_Al,
       qelsLGaussMax_32f_D2_M7, qelsLGaussMax_32f_D2_M7_Al_Avx2,
       qelsLGaussMax_32f_D2_M7_Avx2)(pSrc, step, pMean, pVar, width, pDst, height, &val);
  return qelStatusOk;
}

QELSR_API qelStatus qelsLogGaussMax_32f_D2L(const qel32f** ppSrc, const qel32f* pMean,
                                            const qel32f* pVar, int width, qel32f* pDst, int height,
                                            qel32f val) {
  if (qelStatus st = checkD2L(!ppSrc || !pMean || !pVar || !pDst, width, height)) return st;
  pick(alignedD2L(ppSrc, height, pMean, pVar), qelsLGaussMax_32f_D2L_M7_Al,
       qelsLGaussMax_32f_D2L_M7)(ppSrc, pMean, pVar, width, pDst, height, &val);
  return qelStatusOk;
}

QELSR_API qelStatus qelsLogGaussMax_IdVar_32f_D2(const qel32f* pSrc, int step, const qel32f* pMean,
                                                 int width, qel32f* pDst, int height, qel32f val) {
  if (qelStatus st = checkD2(width, step, !pSrc || !pMean || !pDst, height)) return st;
  pick(width >= 4 && alignedD2(pSrc, step, pMean, pMean), qelsLGaussMax_IdVar_32f_D2_M7_Al,
       qelsLGaussMax_IdVar_32f_D2_M7, qelsLGaussMax_IdVar_32f_D2_M7_Al_Avx2,
       qelsLGaussMax_IdVar_32f_D2_M7_Avx2)(pSrc, step, pMean, width, pDst, height, &val);
  return qelStatusOk;
}

QELSR_API qelStatus qelsLogGaussMax_IdVar_32f_D2L(const qel32f** ppSrc, const qel32f* pMean,
                                                  int width, qel32f* pDst, int height, qel32f val) {
  if (qelStatus st = checkD2L(!ppSrc || !pMean || !pDst, width, height)) return st;
  pick(alignedD2L(ppSrc, height, pMean, pMean), qelsLGaussMax_IdVar_32f_D2L_M7_Al,
       qelsLGaussMax_IdVar_32f_D2L_M7)(ppSrc, pMean, width, pDst, height, &val);
  return qelStatusOk;
}

QELSR_API qelStatus qelsLogGaussMax_64f_D2(const qel64f* pSrc, int step, const qel64f* pMean,
                                           const qel64f* pVar, int width, qel64f* pDst, int height,
                                           qel64f val) {
  if (qelStatus st = checkD2(width, step, !pSrc || !pMean || !pVar || !pDst, height)) return st;
  pick(alignedD2(pSrc, step, pMean, pVar), qelsLGaussMax_64f_D2_M7_Al, qelsLGaussMax_64f_D2_M7)(
      pSrc, step, pMean, pVar, width, pDst, height, &val);
  return qelStatusOk;
}

QELSR_API qelStatus qelsLogGaussMax_64f_D2L(const qel64f** ppSrc, const qel64f* pMean,
                                            const qel64f* pVar, int width, qel64f* pDst, int height,
                                            qel64f val) {
  if (qelStatus st = checkD2L(!ppSrc || !pMean || !pVar || !pDst, width, height)) return st;
  pick(alignedD2L(ppSrc, height, pMean, pVar), qelsLGaussMax_64f_D2L_M7_Al,
       qelsLGaussMax_64f_D2L_M7)(ppSrc, pMean, pVar, width, pDst, height, &val);
  return qelStatusOk;
}

// From 1000 rows on the identity-variance double maxima run their own scalar
// loop; below that the kernels, the aligned one also wanting pDst on 16 bytes.
QELSR_API qelStatus qelsLogGaussMax_IdVar_64f_D2(const qel64f* pSrc, int step, const qel64f* pMean,
                                                 int width, qel64f* pDst, int height, qel64f val) {
  if (qelStatus st = checkD2(width, step, !pSrc || !pMean || !pDst, height)) return st;
  if (height >= kOwnLoopRows)
    maxIdVarRows(Strided<qel64f>{pSrc, step}, pMean, width, pDst, height, val);
  else
    pick(alignedD2(pSrc, step, pMean, pDst), qelsLGaussMax_IdVar_64f_D2_M7_Al,
         qelsLGaussMax_IdVar_64f_D2_M7)(pSrc, step, pMean, width, pDst, height, &val);
  return qelStatusOk;
}

QELSR_API qelStatus qelsLogGaussMax_IdVar_64f_D2L(const qel64f** ppSrc, const qel64f* pMean,
                                                  int width, qel64f* pDst, int height, qel64f val) {
  if (qelStatus st = checkD2L(!ppSrc || !pMean || !pDst, width, height)) return st;
  if (height >= kOwnLoopRows)
    maxIdVarRows(Listed<qel64f>{ppSrc}, pMean, width, pDst, height, val);
  else
    pick(alignedD2L<qel64f>(ppSrc, height, pMean, pDst), qelsLGaussMax_IdVar_64f_D2L_M7_Al,
         qelsLGaussMax_IdVar_64f_D2L_M7)(ppSrc, pMean, width, pDst, height, &val);
  return qelStatusOk;
}

// ------------------------------------------------------------ qelsLogGaussAdd_*

QELSR_API qelStatus qelsLogGaussAdd_32f_D2(const qel32f* pSrc, int step, const qel32f* pMean,
                                           const qel32f* pVar, int width, qel32f* pDst, int height,
                                           qel32f val) {
  if (qelStatus st = checkD2(width, step, !pSrc || !pMean || !pVar || !pDst, height)) return st;
  if (width < 4) {
    scalarRows<true, true>(Strided<qel32f>{pSrc, step}, pMean, pVar, width, pDst, height, val);
    return qelStatusOk;
  }
  addChunksD2(
      pick(alignedD2(pSrc, step, pMean, pVar), qelsLogGauss_32f_D2_M7_Al, qelsLogGauss_32f_D2_M7,
           qelsLogGauss_32f_D2_M7_Al_Avx2, qelsLogGauss_32f_D2_M7_Avx2),
      pSrc, step, pDst, height, &val, pMean, pVar, width);
  return qelStatusOk;
}

QELSR_API qelStatus qelsLogGaussAdd_32f_D2L(const qel32f** ppSrc, const qel32f* pMean,
                                            const qel32f* pVar, int width, qel32f* pDst, int height,
                                            qel32f val) {
  if (qelStatus st = checkD2L(!ppSrc || !pMean || !pVar || !pDst, width, height)) return st;
  addChunksD2L(qelsLogGauss_32f_D2L_M7_Al, qelsLogGauss_32f_D2L_M7,
               isAligned16(pMean) && isAligned16(pVar), ppSrc, pDst, height, &val, pMean, pVar,
               width);
  return qelStatusOk;
}

QELSR_API qelStatus qelsLogGaussAdd_IdVar_32f_D2(const qel32f* pSrc, int step, const qel32f* pMean,
                                                 int width, qel32f* pDst, int height, qel32f val) {
  if (qelStatus st = checkD2(width, step, !pSrc || !pMean || !pDst, height)) return st;
  if (width < 4) {
    scalarRows<false, true>(Strided<qel32f>{pSrc, step}, pMean, pMean, width, pDst, height, val);
    return qelStatusOk;
  }
  addChunksD2(pick(alignedD2(pSrc, step, pMean, pMean), qelsLGauss_IdVar_32f_D2_M7_Al,
                   qelsLGauss_IdVar_32f_D2_M7, qelsLGauss_IdVar_32f_D2_M7_Al_Avx2,
                   qelsLGauss_IdVar_32f_D2_M7_Avx2),
              pSrc, step, pDst, height, &val, pMean, width);
  return qelStatusOk;
}

QELSR_API qelStatus qelsLogGaussAdd_IdVar_32f_D2L(const qel32f** ppSrc, const qel32f* pMean,
                                                  int width, qel32f* pDst, int height, qel32f val) {
  if (qelStatus st = checkD2L(!ppSrc || !pMean || !pDst, width, height)) return st;
  addChunksD2L(qelsLGauss_IdVar_32f_D2L_M7_Al, qelsLGauss_IdVar_32f_D2L_M7, isAligned16(pMean),
               ppSrc, pDst, height, &val, pMean, width);
  return qelStatusOk;
}

// The double log-adding forms take the chunk loop at every width, aligned
// when the stride is even.
QELSR_API qelStatus qelsLogGaussAdd_64f_D2(const qel64f* pSrc, int step, const qel64f* pMean,
                                           const qel64f* pVar, int width, qel64f* pDst, int height,
                                           qel64f val) {
  if (qelStatus st = checkD2(width, step, !pSrc || !pMean || !pVar || !pDst, height)) return st;
  addChunksD2(
      pick(alignedD2(pSrc, step, pMean, pVar, 2), qelsLGauss_64f_D2_M7_Al, qelsLGauss_64f_D2_M7),
      pSrc, step, pDst, height, &val, pMean, pVar, width);
  return qelStatusOk;
}

QELSR_API qelStatus qelsLogGaussAdd_64f_D2L(const qel64f** ppSrc, const qel64f* pMean,
                                            const qel64f* pVar, int width, qel64f* pDst, int height,
                                            qel64f val) {
  if (qelStatus st = checkD2L(!ppSrc || !pMean || !pVar || !pDst, width, height)) return st;
  addChunksD2L(qelsLGauss_64f_D2L_M7_Al, qelsLGauss_64f_D2L_M7,
               isAligned16(pMean) && isAligned16(pVar), ppSrc, pDst, height, &val, pMean, pVar,
               width);
  return qelStatusOk;
}

QELSR_API qelStatus qelsLogGaussAdd_IdVar_64f_D2(const qel64f* pSrc, int step, const qel64f* pMean,
                                                 int width, qel64f* pDst, int height, qel64f val) {
  if (qelStatus st = checkD2(width, step, !pSrc || !pMean || !pDst, height)) return st;
  addChunksD2(pick(alignedD2(pSrc, step, pMean, pMean, 2), qelsLGauss_IdVar_64f_D2_M7_Al,
                   qelsLGauss_IdVar_64f_D2_M7),
              pSrc, step, pDst, height, &val, pMean, width);
  return qelStatusOk;
}

QELSR_API qelStatus qelsLogGaussAdd_IdVar_64f_D2L(const qel64f** ppSrc, const qel64f* pMean,
                                                  int width, qel64f* pDst, int height, qel64f val) {
  if (qelStatus st = checkD2L(!ppSrc || !pMean || !pDst, width, height)) return st;
  addChunksD2L(qelsLGauss_IdVar_64f_D2L_M7_Al, qelsLGauss_IdVar_64f_D2L_M7, isAligned16(pMean),
               ppSrc, pDst, height, &val, pMean, width);
  return qelStatusOk;
}

// ------------------------------------------------------------ qelsMahDist_*

QELSR_API qelStatus qelsMahDist_32f_D2(const qel32f* pSrc, int step, const qel32f* pMean,
                                       const qel32f* pVar, int width, qel32f* pDst, int height) {
  if (qelStatus st = checkD2(width, step, !pSrc || !pMean || !pVar || !pDst, height)) return st;
  pick(alignedD2(pSrc, step, pMean, pVar), sMahDist_32f_D2_M7_Al, sMahDist_32f_D2_M7)(
      pSrc, step, pMean, pVar, width, pDst, height);
  return qelStatusOk;
}

QELSR_API qelStatus qelsMahDist_32f_D2L(const qel32f** ppSrc, const qel32f* pMean,
                                        const qel32f* pVar, int width, qel32f* pDst, int height) {
  if (qelStatus st = checkD2L(!ppSrc || !pMean || !pVar || !pDst, width, height)) return st;
  pick(alignedD2L(ppSrc, height, pMean, pVar), sMahDist_32f_D2L_M7_Al, sMahDist_32f_D2L_M7)(
      ppSrc, pMean, pVar, width, pDst, height);
  return qelStatusOk;
}

// The aligned double distance wants the rows packed at the width rounded up
// to 4 elements; any other stride takes the general kernel.
QELSR_API qelStatus qelsMahDist_64f_D2(const qel64f* pSrc, int step, const qel64f* pMean,
                                       const qel64f* pVar, int width, qel64f* pDst, int height) {
  if (qelStatus st = checkD2(width, step, !pSrc || !pMean || !pVar || !pDst, height)) return st;
  const long long packed = (static_cast<long long>(width) + 3) & ~3LL;
  const bool al = isAligned16(pSrc) && isAligned16(pMean) && isAligned16(pVar) && step == packed;
  pick(al, sMahDist_64f_D2_M7_Al, sMahDist_64f_D2_M7)(pSrc, step, pMean, pVar, width, pDst, height);
  return qelStatusOk;
}

QELSR_API qelStatus qelsMahDist_64f_D2L(const qel64f** ppSrc, const qel64f* pMean,
                                        const qel64f* pVar, int width, qel64f* pDst, int height) {
  if (qelStatus st = checkD2L(!ppSrc || !pMean || !pVar || !pDst, width, height)) return st;
  pick(alignedD2L(ppSrc, height, pMean, pVar), sMahDist_64f_D2L_M7_Al, sMahDist_64f_D2L_M7)(
      ppSrc, pMean, pVar, width, pDst, height);
  return qelStatusOk;
}

}  // extern "C"
