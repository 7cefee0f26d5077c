// Row and column primitives: argument checks in each family's order, then
// the choice between a kernel and its aligned twin. None of them allocates.
//
// The families whose unaligned case could stay in the wrapper
// (AddAllRowSum, SubRow_32f, CopyColumn_32f) run a general kernel instead,
// the same body as the aligned twin with unaligned loads and stores.
#include "frame/rows_columns.h"

#include <cstddef>

#include "base/base.h"
#include "frame/frame.h"

namespace {

using qelsr::isAligned16;
using qelsr::stepAligned16;

// The families' common check order: null pointers, sizes, then (one block)
// the stride against the row length.
template <typename... P>
inline bool anyNull(const P*... p) {
  return ((p == nullptr) || ...);
}

// Every row pointer on 16 bytes.
template <typename Row>
inline bool rowsAligned(Row* const* ppRows, int height) {
  return RowMatrAlErr(reinterpret_cast<const void* const*>(ppRows), height) == 0;
}

// Null pointers, then width and height below 1, then (D2 only) the stride;
// on success the aligned twin runs when `aligned` holds. Every D2 wrapper's
// alignment rule reads only pointer values, so it may be formed before the
// checks.
template <typename Kernel, typename... A>
inline qelStatus runD2(bool nullFound, int width, int height, int step, bool aligned, Kernel* al,
                       Kernel* un, A... a) {
  if (nullFound) return qelStatusNullPtr;
  if (width < 1 || height < 1) return qelStatusSize;
  if (step < width) return qelStatusStride;
  (aligned ? al : un)(a...);
  return qelStatusOk;
}

// The D2L rule also needs every row pointer on 16 bytes, so the row list is
// read only once the checks have passed.
template <typename Row, typename Kernel, typename... A>
inline qelStatus runD2L(bool nullFound, int width, int height, Row* const* ppRows,
                        bool othersAligned, Kernel* al, Kernel* un, A... a) {
  if (nullFound) return qelStatusNullPtr;
  if (width < 1 || height < 1) return qelStatusSize;
  (othersAligned && rowsAligned(ppRows, height) ? al : un)(a...);
  return qelStatusOk;
}

// The 16s32s sums: the 16s32f sums written into pDst and converted there in
// place, rounding to nearest even with saturation, so the result carries the
// precision of a single. `sum` writes n singles at pDst and returns a status.
template <typename Sum>
inline qelStatus sumThenConvert(qel32s* pDst, int n, int scaleFactor, Sum sum) {
  qel32f* sums = reinterpret_cast<qel32f*>(pDst);
  const qelStatus st = sum(sums);
  if (st != qelStatusOk) return st;
  qelsConvert_32f32s_Sfs(sums, pDst, n, 1, scaleFactor);
  return qelStatusOk;
}

// The indirect copies: row 0 checks every index as it copies it (a bad one
// stops the call with row 0 written up to there); later rows trust them.
template <typename T>
qelStatus copyIndirectRow0(const T* src, int srcLen, T* dst, const qel32s* pInd, int dstLen) {
  for (int i = 0; i < dstLen; ++i) {
    const int k = pInd[i];
    if (k < 0 || k >= srcLen) return qelStatusSize;
    dst[i] = src[k];
  }
  return qelStatusOk;
}

template <typename T>
void copyIndirectRow(const T* src, T* dst, const qel32s* pInd, int dstLen) {
  for (int i = 0; i < dstLen; ++i) dst[i] = src[pInd[i]];
}

template <typename T>
qelStatus copyIndirectD2(const T* pSrc, int srcLen, int srcStep, T* pDst, const qel32s* pInd,
                         int dstLen, int dstStep, int height) {
  if (anyNull(pSrc, pDst, pInd)) return qelStatusNullPtr;
  if (srcLen < 1) return qelStatusSize;
  if (srcLen > srcStep) return qelStatusStride;
  if (dstLen < 1) return qelStatusSize;
  if (dstLen > dstStep) return qelStatusStride;
  if (height < 1) return qelStatusSize;
  const qelStatus st = copyIndirectRow0(pSrc, srcLen, pDst, pInd, dstLen);
  if (st != qelStatusOk) return st;
  for (int r = 1; r < height; ++r)
    copyIndirectRow(pSrc + static_cast<std::ptrdiff_t>(r) * srcStep,
                    pDst + static_cast<std::ptrdiff_t>(r) * dstStep, pInd, dstLen);
  return qelStatusOk;
}

template <typename T>
qelStatus copyIndirectD2L(const T* const* ppSrc, int srcLen, T* const* ppDst, const qel32s* pInd,
                          int dstLen, int height) {
  if (anyNull(ppSrc, ppDst, pInd)) return qelStatusNullPtr;
  if (srcLen < 1 || dstLen < 1 || height < 1) return qelStatusSize;
  const qelStatus st = copyIndirectRow0(ppSrc[0], srcLen, ppDst[0], pInd, dstLen);
  if (st != qelStatusOk) return st;
  for (int r = 1; r < height; ++r) copyIndirectRow(ppSrc[r], ppDst[r], pInd, dstLen);
  return qelStatusOk;
}

}  // namespace

extern "C" {

// ---------------------------------------------------------------- AddNRows

qelStatus qelsAddNRows_32f_D2(const qel32f* pSrc, int height, int offset, int step,
                              const qel32s* pInd, const unsigned short* pAddInd, int nRows,
                              qel32f* pDst, int width, qel32f val) {
  if (anyNull(pSrc, pDst, pAddInd, pInd)) return qelStatusNullPtr;
  if (nRows < 1 || height < 1 || width < 1 || offset < 0) return qelStatusSize;
  if (static_cast<long long>(step) < static_cast<long long>(offset) + width) return qelStatusStride;
  // Every row number is inspected before anything is written.
  for (int i = 0; i < nRows; ++i) {
    const long long row = static_cast<long long>(pAddInd[i]) + pInd[i];
    if (row < 0 || row >= height) return qelStatusSize;
  }
  const qel32f* first = pSrc + offset;
  if (isAligned16(pSrc) && isAligned16(pInd) && step % 4 == 0 && offset % 4 == 0)
    qelsCalcDist_M7_Al(first, step, pInd, pAddInd, nRows, pDst, width, &val);
  else
    qelsCalcDist_M7(first, step, pInd, pAddInd, nRows, pDst, width, &val);
  return qelStatusOk;
}

// ---------------------------------------------------------------- AddAllRowSum

qelStatus qelsAddAllRowSum_32f_D2(const qel32f* pSrc, int step, int height, qel32f* pSrcDst,
                                  int width) {
  return runD2(anyNull(pSrc, pSrcDst), width, height, step,
               isAligned16(pSrc) && isAligned16(pSrcDst) && stepAligned16<qel32f>(step),
               qelsAddAllRowSum_32f_D2_M7_Al, qelsAddAllRowSum_32f_D2_M7, pSrc, step, height,
               pSrcDst, width);
}

qelStatus qelsAddAllRowSum_32f_D2L(const qel32f* const* ppSrc, int height, qel32f* pSrcDst,
                                   int width) {
  return runD2L(anyNull(ppSrc, pSrcDst), width, height, ppSrc, isAligned16(pSrcDst),
                qelsAddAllRowSum_32f_D2L_M7_Al, qelsAddAllRowSum_32f_D2L_M7, ppSrc, height, pSrcDst,
                width);
}

// ---------------------------------------------------------------- SubRow

qelStatus qelsSubRow_32f_D2(const qel32f* pSrc, int width, qel32f* pSrcDst, int step, int height) {
  return runD2(anyNull(pSrc, pSrcDst), width, height, step,
               isAligned16(pSrc) && isAligned16(pSrcDst) && stepAligned16<qel32f>(step),
               qelsSubRow_32f_D2_M7_Al, qelsSubRow_32f_D2_M7, pSrc, width, pSrcDst, step, height);
}

qelStatus qelsSubRow_32f_D2L(const qel32f* pSrc, qel32f* const* ppSrcDst, int width, int height) {
  return runD2L(anyNull(pSrc, ppSrcDst), width, height, ppSrcDst, isAligned16(pSrc),
                qelsSubRow_32f_D2L_M7_Al, qelsSubRow_32f_D2L_M7, pSrc, ppSrcDst, width, height);
}

qelStatus qelsSubRow_16s_D2(const qel16s* pSrc, int width, qel16s* pSrcDst, int step, int height) {
  return runD2(anyNull(pSrc, pSrcDst), width, height, step,
               isAligned16(pSrc) && isAligned16(pSrcDst) && stepAligned16<qel16s>(step),
               qelsSubRow_16s_D2_M7_Al, qelsSubRow_16s_D2_M7, pSrc, width, pSrcDst, step, height);
}

qelStatus qelsSubRow_16s_D2L(const qel16s* pSrc, qel16s* const* ppSrcDst, int width, int height) {
  return runD2L(anyNull(pSrc, ppSrcDst), width, height, ppSrcDst, isAligned16(pSrc),
                qelsSubRow_16s_D2L_M7_Al, qelsSubRow_16s_D2L_M7, pSrc, ppSrcDst, width, height);
}

// ---------------------------------------------------------------- SumRow, SumColumn

qelStatus qelsSumRow_32f_D2(const qel32f* pSrc, int width, int step, qel32f* pDst, int height) {
  return runD2(anyNull(pSrc, pDst), width, height, step,
               isAligned16(pSrc) && stepAligned16<qel32f>(step), qelsSumRow_32f_D2_M7_Al,
               qelsSumRow_32f_D2_M7, pSrc, width, step, pDst, height);
}

qelStatus qelsSumRow_32f_D2L(const qel32f* const* ppSrc, int width, qel32f* pDst, int height) {
  return runD2L(anyNull(ppSrc, pDst), width, height, ppSrc, true, qelsSumRow_32f_D2L_M7_Al,
                qelsSumRow_32f_D2L_M7, ppSrc, width, pDst, height);
}

qelStatus qelsSumRow_64f_D2(const qel64f* pSrc, int width, int step, qel64f* pDst, int height) {
  return runD2(anyNull(pSrc, pDst), width, height, step,
               isAligned16(pSrc) && stepAligned16<qel64f>(step), qelsSumRow_64f_D2_M7_Al,
               qelsSumRow_64f_D2_M7, pSrc, width, step, pDst, height);
}

qelStatus qelsSumRow_64f_D2L(const qel64f* const* ppSrc, int width, qel64f* pDst, int height) {
  return runD2L(anyNull(ppSrc, pDst), width, height, ppSrc, true, qelsSumRow_64f_D2L_M7_Al,
                qelsSumRow_64f_D2L_M7, ppSrc, width, pDst, height);
}

qelStatus qelsSumRow_16s32f_D2(const qel16s* pSrc, int width, int step, qel32f* pDst, int height) {
  return runD2(anyNull(pSrc, pDst), width, height, step,
               isAligned16(pSrc) && isAligned16(pDst) && stepAligned16<qel16s>(step),
               qelsSumRow_16s32f_D2_M7_Al, qelsSumRow_16s32f_D2_M7, pSrc, width, step, pDst,
               height);
}

qelStatus qelsSumRow_16s32f_D2L(const qel16s* const* ppSrc, int width, qel32f* pDst, int height) {
  return runD2L(anyNull(ppSrc, pDst), width, height, ppSrc, true, qelsSumRow_16s32f_D2L_M7_Al,
                qelsSumRow_16s32f_D2L_M7, ppSrc, width, pDst, height);
}

qelStatus qelsSumColumn_32f_D2(const qel32f* pSrc, int step, int height, qel32f* pDst, int width) {
  return runD2(anyNull(pSrc, pDst), width, height, step,
               isAligned16(pSrc) && stepAligned16<qel32f>(step), qelsSumColumn_32f_D2_M7_Al,
               qelsSumColumn_32f_D2_M7, pSrc, step, height, pDst, width);
}

qelStatus qelsSumColumn_32f_D2L(const qel32f* const* ppSrc, int height, qel32f* pDst, int width) {
  return runD2L(anyNull(ppSrc, pDst), width, height, ppSrc, true, qelsSumColumn_32f_D2L_M7_Al,
                qelsSumColumn_32f_D2L_M7, ppSrc, height, pDst, width);
}

qelStatus qelsSumColumn_64f_D2(const qel64f* pSrc, int step, int height, qel64f* pDst, int width) {
  return runD2(anyNull(pSrc, pDst), width, height, step,
               isAligned16(pSrc) && stepAligned16<qel64f>(step), qelsSumColumn_64f_D2_M7_Al,
               qelsSumColumn_64f_D2_M7, pSrc, step, height, pDst, width);
}

qelStatus qelsSumColumn_64f_D2L(const qel64f* const* ppSrc, int height, qel64f* pDst, int width) {
  return runD2L(anyNull(ppSrc, pDst), width, height, ppSrc, true, qelsSumColumn_64f_D2L_M7_Al,
                qelsSumColumn_64f_D2L_M7, ppSrc, height, pDst, width);
}

qelStatus qelsSumColumn_16s32f_D2(const qel16s* pSrc, int step, int height, qel32f* pDst,
                                  int width) {
  return runD2(anyNull(pSrc, pDst), width, height, step,
               isAligned16(pSrc) && isAligned16(pDst) && stepAligned16<qel16s>(step),
               qelsSumColumn_16s32f_D2_M7_Al, qelsSumColumn_16s32f_D2_M7, pSrc, step, height, pDst,
               width);
}

qelStatus qelsSumColumn_16s32f_D2L(const qel16s* const* ppSrc, int height, qel32f* pDst,
                                   int width) {
  return runD2L(anyNull(ppSrc, pDst), width, height, ppSrc, true, qelsSumColumn_16s32f_D2L_M7_Al,
                qelsSumColumn_16s32f_D2L_M7, ppSrc, height, pDst, width);
}

qelStatus qelsSumRow_16s32s_D2Sfs(const qel16s* pSrc, int width, int step, qel32s* pDst, int height,
                                  int scaleFactor) {
  return sumThenConvert(pDst, height, scaleFactor, [&](qel32f* sums) {
    return qelsSumRow_16s32f_D2(pSrc, width, step, sums, height);
  });
}

qelStatus qelsSumRow_16s32s_D2LSfs(const qel16s* const* ppSrc, int width, qel32s* pDst, int height,
                                   int scaleFactor) {
  return sumThenConvert(pDst, height, scaleFactor, [&](qel32f* sums) {
    return qelsSumRow_16s32f_D2L(ppSrc, width, sums, height);
  });
}

qelStatus qelsSumColumn_16s32s_D2Sfs(const qel16s* pSrc, int step, int height, qel32s* pDst,
                                     int width, int scaleFactor) {
  return sumThenConvert(pDst, width, scaleFactor, [&](qel32f* sums) {
    return qelsSumColumn_16s32f_D2(pSrc, step, height, sums, width);
  });
}

qelStatus qelsSumColumn_16s32s_D2LSfs(const qel16s* const* ppSrc, int height, qel32s* pDst,
                                      int width, int scaleFactor) {
  return sumThenConvert(pDst, width, scaleFactor, [&](qel32f* sums) {
    return qelsSumColumn_16s32f_D2L(ppSrc, height, sums, width);
  });
}

// ---------------------------------------------------------------- CopyColumn

qelStatus qelsCopyColumn_32f_D2(const qel32f* pSrc, int width, qel32f* pDst, int step, int height) {
  return runD2(anyNull(pSrc, pDst), width, height, step,
               isAligned16(pSrc) && isAligned16(pDst) && stepAligned16<qel32f>(step) &&
                   stepAligned16<qel32f>(width),
               qelsCopyColumn_32f_D2_M7_Al, qelsCopyColumn_32f_D2_M7, pSrc, width, pDst, step,
               height);
}

qelStatus qelsCopyColumn_16s_D2(const qel16s* pSrc, int width, qel16s* pDst, int step, int height) {
  return runD2(anyNull(pSrc, pDst), width, height, step,
               isAligned16(pDst) && stepAligned16<qel16s>(step), qelsCopyColumn_16s_D2_M7_Al,
               qelsCopyColumn_16s_D2_M7, pSrc, width, pDst, step, height);
}

qelStatus qelsCopyColumn_Indirect_32f_D2(const qel32f* pSrc, int srcLen, int srcStep, qel32f* pDst,
                                         const qel32s* pInd, int dstLen, int dstStep, int height) {
  return copyIndirectD2(pSrc, srcLen, srcStep, pDst, pInd, dstLen, dstStep, height);
}
qelStatus qelsCopyColumn_Indirect_64f_D2(const qel64f* pSrc, int srcLen, int srcStep, qel64f* pDst,
                                         const qel32s* pInd, int dstLen, int dstStep, int height) {
  return copyIndirectD2(pSrc, srcLen, srcStep, pDst, pInd, dstLen, dstStep, height);
}
qelStatus qelsCopyColumn_Indirect_16s_D2(const qel16s* pSrc, int srcLen, int srcStep, qel16s* pDst,
                                         const qel32s* pInd, int dstLen, int dstStep, int height) {
  return copyIndirectD2(pSrc, srcLen, srcStep, pDst, pInd, dstLen, dstStep, height);
}
qelStatus qelsCopyColumn_Indirect_32f_D2L(const qel32f* const* ppSrc, int srcLen,
                                          qel32f* const* ppDst, const qel32s* pInd, int dstLen,
                                          int height) {
  return copyIndirectD2L(ppSrc, srcLen, ppDst, pInd, dstLen, height);
}
qelStatus qelsCopyColumn_Indirect_64f_D2L(const qel64f* const* ppSrc, int srcLen,
                                          qel64f* const* ppDst, const qel32s* pInd, int dstLen,
                                          int height) {
  return copyIndirectD2L(ppSrc, srcLen, ppDst, pInd, dstLen, height);
}
qelStatus qelsCopyColumn_Indirect_16s_D2L(const qel16s* const* ppSrc, int srcLen,
                                          qel16s* const* ppDst, const qel32s* pInd, int dstLen,
                                          int height) {
  return copyIndirectD2L(ppSrc, srcLen, ppDst, pInd, dstLen, height);
}

}  // extern "C"
