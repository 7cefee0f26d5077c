// Internal base vector kernels: memory, conversion, arithmetic and
// reductions that the families call. None of them is exported.
//
// Unless a kernel says otherwise: any null pointer gives qelStatusNullPtr,
// then `len` below 1 gives qelStatusSize, and nothing is written in either
// case.
#ifndef QELSR_BASE_H
#define QELSR_BASE_H

#include "qelsr.h"

extern "C" {

// Memory. A count below 1 gives null without calling the core allocator.
qel8u* qelsMalloc_8u(int len);
qel16s* qelsMalloc_16s(int len);
qel32s* qelsMalloc_32s(int len);
qel32f* qelsMalloc_32f(int len);
qel64f* qelsMalloc_64f(int len);
void qelsFree(void* ptr);

qelStatus qelsZero_8u(qel8u* pDst, int len);
qelStatus qelsZero_16s(qel16s* pDst, int len);
qelStatus qelsZero_32f(qel32f* pDst, int len);
qelStatus qelsZero_64f(qel64f* pDst, int len);

qelStatus qelsSet_8u(qel8u val, qel8u* pDst, int len);
qelStatus qelsSet_16s(qel16s val, qel16s* pDst, int len);
qelStatus qelsSet_32s(qel32s val, qel32s* pDst, int len);
qelStatus qelsSet_32f(qel32f val, qel32f* pDst, int len);
qelStatus qelsSet_64f(qel64f val, qel64f* pDst, int len);

qelStatus qelsCopy_8u(const qel8u* pSrc, qel8u* pDst, int len);
qelStatus qelsCopy_16s(const qel16s* pSrc, qel16s* pDst, int len);
qelStatus qelsCopy_32s(const qel32s* pSrc, qel32s* pDst, int len);
qelStatus qelsCopy_32f(const qel32f* pSrc, qel32f* pDst, int len);
qelStatus qelsCopy_64f(const qel64f* pSrc, qel64f* pDst, int len);
qelStatus qelsMove_32f(const qel32f* pSrc, qel32f* pDst, int len);

// Conversions. rndMode: 0 truncates toward zero, 1 rounds to nearest with
// ties to even, any other value rounds to nearest with ties away from zero.
qelStatus qelsConvert_8u32f(const qel8u* pSrc, qel32f* pDst, int len);
qelStatus qelsConvert_16s32f(const qel16s* pSrc, qel32f* pDst, int len);
qelStatus qelsConvert_32s32f(const qel32s* pSrc, qel32f* pDst, int len);
qelStatus qelsConvert_64f32f(const qel64f* pSrc, qel32f* pDst, int len);
qelStatus qelsConvert_16s32f_Sfs(const qel16s* pSrc, qel32f* pDst, int len, int scaleFactor);
qelStatus qelsConvert_32s32f_Sfs(const qel32s* pSrc, qel32f* pDst, int len, int scaleFactor);
qelStatus qelsConvert_16s64f_Sfs(const qel16s* pSrc, qel64f* pDst, int len, int scaleFactor);
qelStatus qelsConvert_32f16s_Sfs(const qel32f* pSrc, qel16s* pDst, int len, int rndMode,
                                 int scaleFactor);
qelStatus qelsConvert_32f32s_Sfs(const qel32f* pSrc, qel32s* pDst, int len, int rndMode,
                                 int scaleFactor);
qelStatus qelsConvert_64f32s_Sfs(const qel64f* pSrc, qel32s* pDst, int len, int rndMode,
                                 int scaleFactor);
qelStatus qelsConvert_32s16s_Sfs(const qel32s* pSrc, qel16s* pDst, int len, int scaleFactor);

// Arithmetic.
qelStatus qelsAdd_32f_I(const qel32f* pSrc, qel32f* pSrcDst, int len);
qelStatus qelsAdd_64f_I(const qel64f* pSrc, qel64f* pSrcDst, int len);
qelStatus qelsSub_32f_I(const qel32f* pSrc, qel32f* pSrcDst, int len);
qelStatus qelsSub_64f_I(const qel64f* pSrc, qel64f* pSrcDst, int len);
qelStatus qelsAddC_32f(const qel32f* pSrc, qel32f val, qel32f* pDst, int len);
qelStatus qelsMul_32f(const qel32f* pSrc1, const qel32f* pSrc2, qel32f* pDst, int len);
qelStatus qelsMul_16s_Sfs(const qel16s* pSrc1, const qel16s* pSrc2, qel16s* pDst, int len,
                          int scaleFactor);
qelStatus qelsMulC_32f(const qel32f* pSrc, qel32f val, qel32f* pDst, int len);
qelStatus qelsMulC_64f(const qel64f* pSrc, qel64f val, qel64f* pDst, int len);
qelStatus qelsMulC_32f_I(qel32f val, qel32f* pSrcDst, int len);
qelStatus qelsMulC_64f_I(qel64f val, qel64f* pSrcDst, int len);
// pDst[i] = pSrc2[i] / pSrc1[i]: the first argument is the divisor.
qelStatus qelsDiv_32f(const qel32f* pSrc1, const qel32f* pSrc2, qel32f* pDst, int len);
qelStatus qelsDiv_64f(const qel64f* pSrc1, const qel64f* pSrc2, qel64f* pDst, int len);
qelStatus qelsDiv_32f_I(const qel32f* pSrc, qel32f* pSrcDst, int len);
qelStatus qelsDivC_32f(const qel32f* pSrc, qel32f val, qel32f* pDst, int len);
qelStatus qelsDivC_64f(const qel64f* pSrc, qel64f val, qel64f* pDst, int len);
qelStatus qelsDivC_32f_I(qel32f val, qel32f* pSrcDst, int len);
qelStatus qelsDivC_64f_I(qel64f val, qel64f* pSrcDst, int len);
qelStatus qelsSqrt_64f_I(qel64f* pSrcDst, int len);
qelStatus qelsAbs_64f(const qel64f* pSrc, qel64f* pDst, int len);
qelStatus qelsLn_32f_I(qel32f* pSrcDst, int len);
qelStatus qelsLn_32s_Sfs(const qel32s* pSrc, qel32s* pDst, int len, int scaleFactor);
qelStatus qelsLn_32s_ISfs(qel32s* pSrcDst, int len, int scaleFactor);
qelStatus qelsSumLn_32f(const qel32f* pSrc, int len, qel32f* pSum);
qelStatus qelsSumLn_64f(const qel64f* pSrc, int len, qel64f* pSum);

// Reductions.
qelStatus qelsSum_32f(const qel32f* pSrc, int len, qel32f* pSum, int hint);
qelStatus qelsSum_16s32s_Sfs(const qel16s* pSrc, int len, qel32s* pSum, int scaleFactor);
qelStatus qelsSum_32s_Sfs(const qel32s* pSrc, int len, qel32s* pSum, int scaleFactor);
qelStatus qelsDotProd_32f(const qel32f* pSrc1, const qel32f* pSrc2, int len, qel32f* pDp);
qelStatus qelsDotProd_32f64f(const qel32f* pSrc1, const qel32f* pSrc2, int len, qel64f* pDp);
qelStatus qelsDotProd_64f(const qel64f* pSrc1, const qel64f* pSrc2, int len, qel64f* pDp);
qelStatus qelsDotProd_16s64s(const qel16s* pSrc1, const qel16s* pSrc2, int len, qel64s* pDp);
qelStatus qelsDotProd_16s32f(const qel16s* pSrc1, const qel16s* pSrc2, int len, qel32f* pDp);
qelStatus qelsMax_32f(const qel32f* pSrc, int len, qel32f* pVal);
qelStatus qelsMax_64f(const qel64f* pSrc, int len, qel64f* pVal);
qelStatus qelsMin_32f(const qel32f* pSrc, int len, qel32f* pVal);
qelStatus qelsMin_64f(const qel64f* pSrc, int len, qel64f* pVal);
qelStatus qelsMinMax_32f(const qel32f* pSrc, int len, qel32f* pMin, qel32f* pMax);
// A null pIndx is allowed and reduces the call to the plain extreme.
qelStatus qelsMaxIndx_32f(const qel32f* pSrc, int len, qel32f* pVal, int* pIndx);
qelStatus qelsMaxIndx_64f(const qel64f* pSrc, int len, qel64f* pVal, int* pIndx);
qelStatus qelsMinIndx_32f(const qel32f* pSrc, int len, qel32f* pVal, int* pIndx);
qelStatus qelsMaxEvery_32f_I(const qel32f* pSrc, qel32f* pSrcDst, int len);
qelStatus qelsMinEvery_32f_I(const qel32f* pSrc, qel32f* pSrcDst, int len);
qelStatus qelsMinEvery_32s_I(const qel32s* pSrc, qel32s* pSrcDst, int len);
// Interleaved (re, im) pairs; `len` counts pairs.
qelStatus qelsMagnitude_32fc(const qel32f* pSrc, qel32f* pDst, int len);
qelStatus qelsMagnitude_32sc_Sfs(const qel32s* pSrc, qel32s* pDst, int len, int scaleFactor);

}  // extern "C"

#endif
