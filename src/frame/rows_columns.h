// Kernels of the row and column primitives. Each pair computes the same
// formula; the `_Al` twin may assume what its wrapper's alignment rule
// guarantees. Arguments are not checked: sizes are at least 1, strides hold
// their rows and indices lie inside the matrix.
#ifndef QELSR_ROWS_COLUMNS_H
#define QELSR_ROWS_COLUMNS_H

#include "qelsr.h"

extern "C" {

// pDst[j] = *pVal + sum over i of pSrc[(pAddInd[i] + pInd[i]) * step + j],
// rows added in the order of i. pSrc already points at the first column.
// The aligned twin needs pSrc and pInd on 16 bytes and step a multiple of 4.
void qelsCalcDist_M7(const qel32f* pSrc, int step, const qel32s* pInd,
                     const unsigned short* pAddInd, int nRows, qel32f* pDst, int width,
                     const qel32f* pVal);
void qelsCalcDist_M7_Al(const qel32f* pSrc, int step, const qel32s* pInd,
                        const unsigned short* pAddInd, int nRows, qel32f* pDst, int width,
                        const qel32f* pVal);

// pSrcDst[c] += row r, c for r in order.
void qelsAddAllRowSum_32f_D2_M7(const qel32f* pSrc, int step, int height, qel32f* pSrcDst,
                                int width);
void qelsAddAllRowSum_32f_D2_M7_Al(const qel32f* pSrc, int step, int height, qel32f* pSrcDst,
                                   int width);
void qelsAddAllRowSum_32f_D2L_M7(const qel32f* const* ppSrc, int height, qel32f* pSrcDst,
                                 int width);
void qelsAddAllRowSum_32f_D2L_M7_Al(const qel32f* const* ppSrc, int height, qel32f* pSrcDst,
                                    int width);

// Row r, c -= pSrc[c]; the 16-bit forms saturate.
void qelsSubRow_32f_D2_M7(const qel32f* pSrc, int width, qel32f* pSrcDst, int step, int height);
void qelsSubRow_32f_D2_M7_Al(const qel32f* pSrc, int width, qel32f* pSrcDst, int step, int height);
void qelsSubRow_32f_D2L_M7(const qel32f* pSrc, qel32f* const* ppSrcDst, int width, int height);
void qelsSubRow_32f_D2L_M7_Al(const qel32f* pSrc, qel32f* const* ppSrcDst, int width, int height);
void qelsSubRow_16s_D2_M7(const qel16s* pSrc, int width, qel16s* pSrcDst, int step, int height);
void qelsSubRow_16s_D2_M7_Al(const qel16s* pSrc, int width, qel16s* pSrcDst, int step, int height);
void qelsSubRow_16s_D2L_M7(const qel16s* pSrc, qel16s* const* ppSrcDst, int width, int height);
void qelsSubRow_16s_D2L_M7_Al(const qel16s* pSrc, qel16s* const* ppSrcDst, int width, int height);

// pDst[r] = sum of row r in the fixed lane order of each element type.
void qelsSumRow_32f_D2_M7(const qel32f* pSrc, int width, int step, qel32f* pDst, int height);
void qelsSumRow_32f_D2_M7_Al(const qel32f* pSrc, int width, int step, qel32f* pDst, int height);
void qelsSumRow_32f_D2L_M7(const qel32f* const* ppSrc, int width, qel32f* pDst, int height);
void qelsSumRow_32f_D2L_M7_Al(const qel32f* const* ppSrc, int width, qel32f* pDst, int height);
void qelsSumRow_64f_D2_M7(const qel64f* pSrc, int width, int step, qel64f* pDst, int height);
void qelsSumRow_64f_D2_M7_Al(const qel64f* pSrc, int width, int step, qel64f* pDst, int height);
void qelsSumRow_64f_D2L_M7(const qel64f* const* ppSrc, int width, qel64f* pDst, int height);
void qelsSumRow_64f_D2L_M7_Al(const qel64f* const* ppSrc, int width, qel64f* pDst, int height);
// The aligned 16-bit twins also need pDst on 16 bytes for the D2 layout.
void qelsSumRow_16s32f_D2_M7(const qel16s* pSrc, int width, int step, qel32f* pDst, int height);
void qelsSumRow_16s32f_D2_M7_Al(const qel16s* pSrc, int width, int step, qel32f* pDst, int height);
void qelsSumRow_16s32f_D2L_M7(const qel16s* const* ppSrc, int width, qel32f* pDst, int height);
void qelsSumRow_16s32f_D2L_M7_Al(const qel16s* const* ppSrc, int width, qel32f* pDst, int height);

// pDst[c] = sum of column c, rows taken in pairs (16-bit: groups of 4 rows).
void qelsSumColumn_32f_D2_M7(const qel32f* pSrc, int step, int height, qel32f* pDst, int width);
void qelsSumColumn_32f_D2_M7_Al(const qel32f* pSrc, int step, int height, qel32f* pDst, int width);
void qelsSumColumn_32f_D2L_M7(const qel32f* const* ppSrc, int height, qel32f* pDst, int width);
void qelsSumColumn_32f_D2L_M7_Al(const qel32f* const* ppSrc, int height, qel32f* pDst, int width);
void qelsSumColumn_64f_D2_M7(const qel64f* pSrc, int step, int height, qel64f* pDst, int width);
void qelsSumColumn_64f_D2_M7_Al(const qel64f* pSrc, int step, int height, qel64f* pDst, int width);
void qelsSumColumn_64f_D2L_M7(const qel64f* const* ppSrc, int height, qel64f* pDst, int width);
void qelsSumColumn_64f_D2L_M7_Al(const qel64f* const* ppSrc, int height, qel64f* pDst, int width);
void qelsSumColumn_16s32f_D2_M7(const qel16s* pSrc, int step, int height, qel32f* pDst, int width);
void qelsSumColumn_16s32f_D2_M7_Al(const qel16s* pSrc, int step, int height, qel32f* pDst,
                                   int width);
void qelsSumColumn_16s32f_D2L_M7(const qel16s* const* ppSrc, int height, qel32f* pDst, int width);
void qelsSumColumn_16s32f_D2L_M7_Al(const qel16s* const* ppSrc, int height, qel32f* pDst,
                                    int width);

// pDst[r * step + c] = pSrc[r * width + c].
void qelsCopyColumn_32f_D2_M7(const qel32f* pSrc, int width, qel32f* pDst, int step, int height);
void qelsCopyColumn_32f_D2_M7_Al(const qel32f* pSrc, int width, qel32f* pDst, int step, int height);
void qelsCopyColumn_16s_D2_M7(const qel16s* pSrc, int width, qel16s* pDst, int step, int height);
void qelsCopyColumn_16s_D2_M7_Al(const qel16s* pSrc, int width, qel16s* pDst, int step, int height);

}  // extern "C"

#endif
