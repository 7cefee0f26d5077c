// Internal routines of the Gaussian scoring subsystem: log-domain vectors
// and coefficient tables, and the score kernels the wrappers choose between.
#ifndef QELSR_GAUSS_H
#define QELSR_GAUSS_H

#include "frame/frame.h"
#include "qelsr.h"

extern "C" {

// ---- log-domain arithmetic
// Element-wise log-add of pSrc into pSrcDst; arguments are not checked.
void qelsLogAddVec_32f_M7_sp(const qel32f* pSrc, qel32f* pSrcDst, qel64s len);
void qelsLogAddVec_32f_U8_sp(const qel32f* pSrc, qel32f* pSrcDst, qel64s len);
void qelsLogAddVec_64f_M7(const qel64f* pSrc, qel64f* pSrcDst, qel64s len);
// Log-add of all `len` (at least 1) elements into pDst[0].
void qelsLogSum_32f_M7(const qel32f* pSrc, qel32f* pDst, int len);
void qelsLogSum_64f_M7(const qel64f* pSrc, qel64f* pDst, int len);
// Addresses of the three polynomial rows of the double (22 coefficients)
// and single (11 coefficients) log-add, highest power first.
void GetLogAddConst(const qel64f** pP1, const qel64f** pP2, const qel64f** pP3);
void GetLogAddConst_F(const qel64f** pP1, const qel64f** pP2, const qel64f** pP3);
// @@gauss-log-domain@@

// ---- single-observation scores
// @@gauss-single@@

// ---- frame-block scores
// @@gauss-block@@

// ---- mixture scores
// @@gauss-mixture@@

}  // extern "C"

#endif
