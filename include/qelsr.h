/*
 * qelsr: signal-processing and statistical primitives for speech recognition.
 *
 * One flat C interface: every primitive returns a qelStatus (0 success,
 * negative error with nothing written, positive warning with the output
 * finished), takes its arrays by pointer and its scalars by value, and keeps
 * nothing between calls except in the state objects that the caller owns.
 *
 * Matrices come in two layouts: `_D2` is one block with a row stride counted
 * in elements, `_D2L` is an array of row pointers.
 */
#ifndef QELSR_H
#define QELSR_H

#ifdef __cplusplus
extern "C" {
#endif

#if defined(__GNUC__)
#define QELSR_API __attribute__((visibility("default")))
#else
#define QELSR_API
#endif

/* ------------------------------------------------------------------------
 * Element types
 * ------------------------------------------------------------------------ */
typedef unsigned char qel8u;
typedef short qel16s;
typedef int qel32s;
typedef long long qel64s;
typedef float qel32f;
typedef double qel64f;

/* ------------------------------------------------------------------------
 * Status values
 * ------------------------------------------------------------------------ */
typedef int qelStatus;

enum {
  /* errors */
  qelStatusCdbkType = -9999,
  qelStatusNonPositiveError = -117,
  qelStatusNotMinPhase = -116,
  qelStatusLspOrder = -115,
  qelStatusNoRoot = -114,
  qelStatusValueRange = -119,
  qelStatusFreqRange = -71,
  qelStatusMelFlag = -70,
  qelStatusFBankEmpty = -69,
  qelStatusNegOccupancy = -67,
  qelStatusCdbkFlag = -66,
  qelStatusNoConvergence = -65,
  qelStatusStride = -37,
  qelStatusContextMatch = -17,
  qelStatusFFTFlag = -16,
  qelStatusFFTOrder = -15,
  qelStatusDivByZero = -10,
  qelStatusMemAlloc = -9,
  qelStatusNullPtr = -8,
  qelStatusRange = -7,
  qelStatusSize = -6,
  qelStatusBadArg = -5,
  qelStatusFailed = -2,
  /* success */
  qelStatusOk = 0,
  /* warnings: the call finished and its output is complete */
  qelStatusWarnSqrtNeg = 3,
  qelStatusWarnZeroInput = 4,
  qelStatusWarnDivZero = 6,
  qelStatusWarnLogZero = 7,
  qelStatusWarnLogNeg = 8,
  qelStatusWarnVarFloor = 11,
  qelStatusWarnZeroOccupancy = 16,
  qelStatusWarnCdbkSize = 31
};

/* ------------------------------------------------------------------------
 * Version record
 * ------------------------------------------------------------------------ */
typedef struct LibVersion {
  int major;
  int minor;
  int majorBuild;
  int build;
  char targetCpu[4];
  const char* name;
  const char* version;
  const char* buildDate;
} LibVersion;

/* The same constant record on every call. */
QELSR_API const LibVersion* qelsrGetLibVersion(void);

/* ------------------------------------------------------------------------
 * Row and column primitives
 * ------------------------------------------------------------------------ */
/* Sum of selected rows: pDst[j] = val + the sum over i of row
 * (pAddInd[i] + pInd[i]), column offset + j, rows added in the order of i.
 * A row number is a 32-bit base plus an unsigned 16-bit index above it.
 * Row-pointer (_D2L) arguments are arrays of row pointers that the call does
 * not change; `T* const*` also accepts a plain `T**`. */
QELSR_API qelStatus qelsAddNRows_32f_D2(const qel32f* pSrc, int height, int offset, int step,
                                        const qel32s* pInd, const unsigned short* pAddInd,
                                        int nRows, qel32f* pDst, int width, qel32f val);

/* pSrcDst[c] += every row's element c: the destination accumulates. */
QELSR_API qelStatus qelsAddAllRowSum_32f_D2(const qel32f* pSrc, int step, int height,
                                            qel32f* pSrcDst, int width);
QELSR_API qelStatus qelsAddAllRowSum_32f_D2L(const qel32f* const* ppSrc, int height,
                                             qel32f* pSrcDst, int width);

/* Every row -= pSrc; the 16-bit forms saturate. */
QELSR_API qelStatus qelsSubRow_32f_D2(const qel32f* pSrc, int width, qel32f* pSrcDst, int step,
                                      int height);
QELSR_API qelStatus qelsSubRow_32f_D2L(const qel32f* pSrc, qel32f* const* ppSrcDst, int width,
                                       int height);
QELSR_API qelStatus qelsSubRow_16s_D2(const qel16s* pSrc, int width, qel16s* pSrcDst, int step,
                                      int height);
QELSR_API qelStatus qelsSubRow_16s_D2L(const qel16s* pSrc, qel16s* const* ppSrcDst, int width,
                                       int height);

/* pDst[r] = sum of row r (height results). */
QELSR_API qelStatus qelsSumRow_32f_D2(const qel32f* pSrc, int width, int step, qel32f* pDst,
                                      int height);
QELSR_API qelStatus qelsSumRow_64f_D2(const qel64f* pSrc, int width, int step, qel64f* pDst,
                                      int height);
QELSR_API qelStatus qelsSumRow_16s32f_D2(const qel16s* pSrc, int width, int step, qel32f* pDst,
                                         int height);
QELSR_API qelStatus qelsSumRow_32f_D2L(const qel32f* const* ppSrc, int width, qel32f* pDst,
                                       int height);
QELSR_API qelStatus qelsSumRow_64f_D2L(const qel64f* const* ppSrc, int width, qel64f* pDst,
                                       int height);
QELSR_API qelStatus qelsSumRow_16s32f_D2L(const qel16s* const* ppSrc, int width, qel32f* pDst,
                                          int height);
QELSR_API qelStatus qelsSumRow_16s32s_D2Sfs(const qel16s* pSrc, int width, int step,
                                            qel32s* pDst, int height, int scaleFactor);
QELSR_API qelStatus qelsSumRow_16s32s_D2LSfs(const qel16s* const* ppSrc, int width, qel32s* pDst,
                                             int height, int scaleFactor);

/* pDst[c] = sum of column c (width results). */
QELSR_API qelStatus qelsSumColumn_32f_D2(const qel32f* pSrc, int step, int height, qel32f* pDst,
                                         int width);
QELSR_API qelStatus qelsSumColumn_64f_D2(const qel64f* pSrc, int step, int height, qel64f* pDst,
                                         int width);
QELSR_API qelStatus qelsSumColumn_16s32f_D2(const qel16s* pSrc, int step, int height,
                                            qel32f* pDst, int width);
QELSR_API qelStatus qelsSumColumn_32f_D2L(const qel32f* const* ppSrc, int height, qel32f* pDst,
                                          int width);
QELSR_API qelStatus qelsSumColumn_64f_D2L(const qel64f* const* ppSrc, int height, qel64f* pDst,
                                          int width);
QELSR_API qelStatus qelsSumColumn_16s32f_D2L(const qel16s* const* ppSrc, int height,
                                             qel32f* pDst, int width);
QELSR_API qelStatus qelsSumColumn_16s32s_D2Sfs(const qel16s* pSrc, int step, int height,
                                               qel32s* pDst, int width, int scaleFactor);
QELSR_API qelStatus qelsSumColumn_16s32s_D2LSfs(const qel16s* const* ppSrc, int height,
                                                qel32s* pDst, int width, int scaleFactor);

/* A packed matrix (height rows of width) into a strided one. */
QELSR_API qelStatus qelsCopyColumn_32f_D2(const qel32f* pSrc, int width, qel32f* pDst, int step,
                                          int height);
QELSR_API qelStatus qelsCopyColumn_16s_D2(const qel16s* pSrc, int width, qel16s* pDst, int step,
                                          int height);

/* pDst row r, i = pSrc row r, pInd[i] for i below dstLen. The indices are
 * checked while row 0 is copied: a bad one returns qelStatusSize with the
 * entries of row 0 before it already written. */
QELSR_API qelStatus qelsCopyColumn_Indirect_32f_D2(const qel32f* pSrc, int srcLen, int srcStep,
                                                   qel32f* pDst, const qel32s* pInd, int dstLen,
                                                   int dstStep, int height);
QELSR_API qelStatus qelsCopyColumn_Indirect_64f_D2(const qel64f* pSrc, int srcLen, int srcStep,
                                                   qel64f* pDst, const qel32s* pInd, int dstLen,
                                                   int dstStep, int height);
QELSR_API qelStatus qelsCopyColumn_Indirect_16s_D2(const qel16s* pSrc, int srcLen, int srcStep,
                                                   qel16s* pDst, const qel32s* pInd, int dstLen,
                                                   int dstStep, int height);
QELSR_API qelStatus qelsCopyColumn_Indirect_32f_D2L(const qel32f* const* ppSrc, int srcLen,
                                                    qel32f* const* ppDst, const qel32s* pInd,
                                                    int dstLen, int height);
QELSR_API qelStatus qelsCopyColumn_Indirect_64f_D2L(const qel64f* const* ppSrc, int srcLen,
                                                    qel64f* const* ppDst, const qel32s* pInd,
                                                    int dstLen, int height);
QELSR_API qelStatus qelsCopyColumn_Indirect_16s_D2L(const qel16s* const* ppSrc, int srcLen,
                                                    qel16s* const* ppDst, const qel32s* pInd,
                                                    int dstLen, int height);

/* ------------------------------------------------------------------------
 * Log-domain arithmetic
 * ------------------------------------------------------------------------ */
/* Natural-log likelihoods. Log zero is -1e10 in double and -4500000 in
   single; a difference below ln 1e-10 (double) or -ln 4500000 (single) lets
   the smaller term be ignored. Checks: len below 1 first, then null pointers.
   The integer forms hold log values with the binary point at scaleFactor
   (x stands for x * 2^-scaleFactor), truncate toward zero and saturate. */
/* pSrcDst[i] = log(exp(pSrc[i]) + exp(pSrcDst[i])). */
QELSR_API qelStatus qelsLogAdd_32f(const qel32f* pSrc, qel32f* pSrcDst, int len);
/* hint 0, 1 or 2 (same arithmetic); any other value returns qelStatusOk
   with pSrcDst untouched. */
QELSR_API qelStatus qelsLogAdd_64f(const qel64f* pSrc, qel64f* pSrcDst, int len, int hint);
QELSR_API qelStatus qelsLogAdd_16s_Sfs(const qel16s* pSrc, qel16s* pSrcDst, int len,
                                       int scaleFactor);
QELSR_API qelStatus qelsLogAdd_32s_Sfs(const qel32s* pSrc, qel32s* pSrcDst, int len,
                                       int scaleFactor);
/* pDst[0] = log of the sum of exp(pSrc[i]). */
QELSR_API qelStatus qelsLogSum_32f(const qel32f* pSrc, qel32f* pDst, int len);
QELSR_API qelStatus qelsLogSum_64f(const qel64f* pSrc, qel64f* pDst, int len);
QELSR_API qelStatus qelsLogSum_16s_Sfs(const qel16s* pSrc, qel16s* pDst, int len,
                                       int scaleFactor);
QELSR_API qelStatus qelsLogSum_32s_Sfs(const qel32s* pSrc, qel32s* pDst, int len,
                                       int scaleFactor);
/* pSrcDst[i] = log(exp(pSrc[i]) - exp(pSrcDst[i])); every pSrcDst[i] must lie
   below pSrc[i], else qelStatusRange with nothing written. */
QELSR_API qelStatus qelsLogSub_32f(const qel32f* pSrc, qel32f* pSrcDst, int len);
QELSR_API qelStatus qelsLogSub_64f(const qel64f* pSrc, qel64f* pSrcDst, int len);
QELSR_API qelStatus qelsLogSub_16s_Sfs(const qel16s* pSrc, qel16s* pSrcDst, int len,
                                       int scaleFactor);
QELSR_API qelStatus qelsLogSub_32s_Sfs(const qel32s* pSrc, qel32s* pSrcDst, int len,
                                       int scaleFactor);

/* ------------------------------------------------------------------------
 * Block-diagonal matrices
 * ------------------------------------------------------------------------ */
/* A symmetric matrix that is non-zero only in square blocks along its
   diagonal; each block's rows are stored, 16-byte aligned, and nothing of the
   zeros. One object type serves the 16s, 32f and 64f flavours: the flavour of
   the InitAlloc call decides the element type of its rows. */
typedef struct BlockDMatrix BlockDMatrix;

/* ppSrc holds one pointer per matrix row (the sum of pBlockSize rows); row r
   of block b gives the pBlockSize[b] elements of that block only. */
QELSR_API qelStatus qelsBlockDMatrixInitAlloc_16s(BlockDMatrix** ppBlockDMatrix,
                                                  const qel16s* const* ppSrc,
                                                  const int* pBlockSize, int nBlocks);
QELSR_API qelStatus qelsBlockDMatrixInitAlloc_32f(BlockDMatrix** ppBlockDMatrix,
                                                  const qel32f* const* ppSrc,
                                                  const int* pBlockSize, int nBlocks);
QELSR_API qelStatus qelsBlockDMatrixInitAlloc_64f(BlockDMatrix** ppBlockDMatrix,
                                                  const qel64f* const* ppSrc,
                                                  const int* pBlockSize, int nBlocks);
QELSR_API qelStatus qelsBlockDMatrixFree_16s(BlockDMatrix* pBlockDMatrix);
QELSR_API qelStatus qelsBlockDMatrixFree_32f(BlockDMatrix* pBlockDMatrix);
QELSR_API qelStatus qelsBlockDMatrixFree_64f(BlockDMatrix* pBlockDMatrix);


/* ------------------------------------------------------------------------
 * Single-observation Gaussian scores
 * ------------------------------------------------------------------------ */
/* One observation against one diagonal Gaussian. The scores are
   val - 0.5 * sum((pSrc[i] - pMean[i])^2 * w[i]), where w is pVar (inverse
   variances), 1 / pVar (DirectVar: variances), 1 (IdVar) or the
   block-diagonal inverse covariance (BlockDVar). MahDistSingle gives the
   weighted squared distance alone. MeanVarAcc adds d * val to pMeanAcc and
   d * (d * val) to pVarAcc, d = pSrc - pMean. Null pointers give
   qelStatusNullPtr, then len below 1 gives qelStatusSize. */
QELSR_API qelStatus qelsLogGaussSingle_32f(const qel32f* pSrc, const qel32f* pMean,
                                           const qel32f* pVar, int len, qel32f* pResult,
                                           qel32f val);
QELSR_API qelStatus qelsLogGaussSingle_32f64f(const qel32f* pSrc, const qel32f* pMean,
                                              const qel32f* pVar, int len, qel64f* pResult,
                                              qel64f val);
QELSR_API qelStatus qelsLogGaussSingle_64f(const qel64f* pSrc, const qel64f* pMean,
                                           const qel64f* pVar, int len, qel64f* pResult,
                                           qel64f val);
/* A zero variance gives qelStatusWarnDivZero: the 32f member writes the
   result from the infinite inverse, the 32f64f member leaves it unwritten,
   the 64f member returns qelStatusOk. */
QELSR_API qelStatus qelsLogGaussSingle_DirectVar_32f(const qel32f* pSrc, const qel32f* pMean,
                                                     const qel32f* pVar, int len,
                                                     qel32f* pResult, qel32f val);
QELSR_API qelStatus qelsLogGaussSingle_DirectVar_32f64f(const qel32f* pSrc, const qel32f* pMean,
                                                        const qel32f* pVar, int len,
                                                        qel64f* pResult, qel64f val);
QELSR_API qelStatus qelsLogGaussSingle_DirectVar_64f(const qel64f* pSrc, const qel64f* pMean,
                                                     const qel64f* pVar, int len,
                                                     qel64f* pResult, qel64f val);
QELSR_API qelStatus qelsLogGaussSingle_IdVar_32f(const qel32f* pSrc, const qel32f* pMean, int len,
                                                 qel32f* pResult, qel32f val);
QELSR_API qelStatus qelsLogGaussSingle_IdVar_32f64f(const qel32f* pSrc, const qel32f* pMean,
                                                    int len, qel64f* pResult, qel64f val);
QELSR_API qelStatus qelsLogGaussSingle_IdVar_64f(const qel64f* pSrc, const qel64f* pMean, int len,
                                                 qel64f* pResult, qel64f val);
/* len must equal the matrix order, else qelStatusSize. */
QELSR_API qelStatus qelsLogGaussSingle_BlockDVar_32f(const qel32f* pSrc, const qel32f* pMean,
                                                     const BlockDMatrix* pBlockDVar, int len,
                                                     qel32f* pResult, qel32f val);
QELSR_API qelStatus qelsLogGaussSingle_BlockDVar_32f64f(const qel32f* pSrc, const qel32f* pMean,
                                                        const BlockDMatrix* pBlockDVar, int len,
                                                        qel64f* pResult, qel64f val);
QELSR_API qelStatus qelsLogGaussSingle_BlockDVar_64f(const qel64f* pSrc, const qel64f* pMean,
                                                     const BlockDMatrix* pBlockDVar, int len,
                                                     qel64f* pResult, qel64f val);
QELSR_API qelStatus qelsMahDistSingle_32f(const qel32f* pSrc, const qel32f* pMean,
                                          const qel32f* pVar, int len, qel32f* pResult);
QELSR_API qelStatus qelsMahDistSingle_32f64f(const qel32f* pSrc, const qel32f* pMean,
                                             const qel32f* pVar, int len, qel64f* pResult);
QELSR_API qelStatus qelsMahDistSingle_64f(const qel64f* pSrc, const qel64f* pMean,
                                          const qel64f* pVar, int len, qel64f* pResult);
QELSR_API qelStatus qelsMeanVarAcc_32f(const qel32f* pSrc, const qel32f* pMean, qel32f* pMeanAcc,
                                       qel32f* pVarAcc, int len, qel32f val);
QELSR_API qelStatus qelsMeanVarAcc_64f(const qel64f* pSrc, const qel64f* pMean, qel64f* pMeanAcc,
                                       qel64f* pVarAcc, int len, qel64f val);


/* ------------------------------------------------------------------------
 * Frame-block Gaussian scores
 * ------------------------------------------------------------------------ */
/* Block scores: one score per row of a `height` x `width` matrix against one
   diagonal Gaussian. pVar holds inverse variances, IdVar takes the identity.
   LogGauss stores (2*val - sum(d*d*pVar))*0.5, LogGaussMax keeps the greater
   of that and pDst (a NaN score leaves pDst), LogGaussAdd log-adds it into
   pDst, MahDist stores sum(d*d*pVar). */
QELSR_API qelStatus qelsLogGauss_32f_D2(const qel32f* pSrc, int step, const qel32f* pMean,
                                        const qel32f* pVar, int width, qel32f* pDst, int height,
                                        qel32f val);
QELSR_API qelStatus qelsLogGauss_32f_D2L(const qel32f** ppSrc, const qel32f* pMean,
                                         const qel32f* pVar, int width, qel32f* pDst, int height,
                                         qel32f val);
QELSR_API qelStatus qelsLogGauss_IdVar_32f_D2(const qel32f* pSrc, int step, const qel32f* pMean,
                                              int width, qel32f* pDst, int height, qel32f val);
QELSR_API qelStatus qelsLogGauss_IdVar_32f_D2L(const qel32f** ppSrc, const qel32f* pMean, int width,
                                               qel32f* pDst, int height, qel32f val);
QELSR_API qelStatus qelsLogGaussMax_32f_D2(const qel32f* pSrc, int step, const qel32f* pMean,
                                           const qel32f* pVar, int width, qel32f* pDst, int height,
                                           qel32f val);
QELSR_API qelStatus qelsLogGaussMax_32f_D2L(const qel32f** ppSrc, const qel32f* pMean,
                                            const qel32f* pVar, int width, qel32f* pDst, int height,
                                            qel32f val);
QELSR_API qelStatus qelsLogGaussMax_IdVar_32f_D2(const qel32f* pSrc, int step, const qel32f* pMean,
                                                 int width, qel32f* pDst, int height, qel32f val);
QELSR_API qelStatus qelsLogGaussMax_IdVar_32f_D2L(const qel32f** ppSrc, const qel32f* pMean,
                                                  int width, qel32f* pDst, int height, qel32f val);
QELSR_API qelStatus qelsLogGaussAdd_32f_D2(const qel32f* pSrc, int step, const qel32f* pMean,
                                           const qel32f* pVar, int width, qel32f* pDst, int height,
                                           qel32f val);
QELSR_API qelStatus qelsLogGaussAdd_32f_D2L(const qel32f** ppSrc, const qel32f* pMean,
                                            const qel32f* pVar, int width, qel32f* pDst, int height,
                                            qel32f val);
QELSR_API qelStatus qelsLogGaussAdd_IdVar_32f_D2(const qel32f* pSrc, int step, const qel32f* pMean,
                                                 int width, qel32f* pDst, int height, qel32f val);
QELSR_API qelStatus qelsLogGaussAdd_IdVar_32f_D2L(const qel32f** ppSrc, const qel32f* pMean,
                                                  int width, qel32f* pDst, int height, qel32f val);
QELSR_API qelStatus qelsMahDist_32f_D2(const qel32f* pSrc, int step, const qel32f* pMean,
                                       const qel32f* pVar, int width, qel32f* pDst, int height);
QELSR_API qelStatus qelsMahDist_32f_D2L(const qel32f** ppSrc, const qel32f* pMean,
                                        const qel32f* pVar, int width, qel32f* pDst, int height);
QELSR_API qelStatus qelsLogGauss_64f_D2(const qel64f* pSrc, int step, const qel64f* pMean,
                                        const qel64f* pVar, int width, qel64f* pDst, int height,
                                        qel64f val);
QELSR_API qelStatus qelsLogGauss_64f_D2L(const qel64f** ppSrc, const qel64f* pMean,
                                         const qel64f* pVar, int width, qel64f* pDst, int height,
                                         qel64f val);
QELSR_API qelStatus qelsLogGauss_IdVar_64f_D2(const qel64f* pSrc, int step, const qel64f* pMean,
                                              int width, qel64f* pDst, int height, qel64f val);
QELSR_API qelStatus qelsLogGauss_IdVar_64f_D2L(const qel64f** ppSrc, const qel64f* pMean, int width,
                                               qel64f* pDst, int height, qel64f val);
QELSR_API qelStatus qelsLogGaussMax_64f_D2(const qel64f* pSrc, int step, const qel64f* pMean,
                                           const qel64f* pVar, int width, qel64f* pDst, int height,
                                           qel64f val);
QELSR_API qelStatus qelsLogGaussMax_64f_D2L(const qel64f** ppSrc, const qel64f* pMean,
                                            const qel64f* pVar, int width, qel64f* pDst, int height,
                                            qel64f val);
QELSR_API qelStatus qelsLogGaussMax_IdVar_64f_D2(const qel64f* pSrc, int step, const qel64f* pMean,
                                                 int width, qel64f* pDst, int height, qel64f val);
QELSR_API qelStatus qelsLogGaussMax_IdVar_64f_D2L(const qel64f** ppSrc, const qel64f* pMean,
                                                  int width, qel64f* pDst, int height, qel64f val);
QELSR_API qelStatus qelsLogGaussAdd_64f_D2(const qel64f* pSrc, int step, const qel64f* pMean,
                                           const qel64f* pVar, int width, qel64f* pDst, int height,
                                           qel64f val);
QELSR_API qelStatus qelsLogGaussAdd_64f_D2L(const qel64f** ppSrc, const qel64f* pMean,
                                            const qel64f* pVar, int width, qel64f* pDst, int height,
                                            qel64f val);
QELSR_API qelStatus qelsLogGaussAdd_IdVar_64f_D2(const qel64f* pSrc, int step, const qel64f* pMean,
                                                 int width, qel64f* pDst, int height, qel64f val);
QELSR_API qelStatus qelsLogGaussAdd_IdVar_64f_D2L(const qel64f** ppSrc, const qel64f* pMean,
                                                  int width, qel64f* pDst, int height, qel64f val);
QELSR_API qelStatus qelsMahDist_64f_D2(const qel64f* pSrc, int step, const qel64f* pMean,
                                       const qel64f* pVar, int width, qel64f* pDst, int height);
QELSR_API qelStatus qelsMahDist_64f_D2L(const qel64f** ppSrc, const qel64f* pMean,
                                        const qel64f* pVar, int width, qel64f* pDst, int height);

/* ------------------------------------------------------------------------
 * Mixture scores
 * ------------------------------------------------------------------------ */
/* One observation against `height` components whose means and inverse
   variances are rows of two matrices. MultiMix: pSrcDst holds the constant
   terms on entry and the scores on return. */
QELSR_API qelStatus qelsLogGaussMultiMix_32f_D2(const qel32f* pMean, const qel32f* pVar, int step,
                                                const qel32f* pSrc, int width, qel32f* pSrcDst,
                                                int height);
QELSR_API qelStatus qelsLogGaussMultiMix_32f_D2L(const qel32f** ppMean, const qel32f** ppVar,
                                                 const qel32f* pSrc, int width, qel32f* pSrcDst,
                                                 int height);
QELSR_API qelStatus qelsLogGaussMultiMix_64f_D2(const qel64f* pMean, const qel64f* pVar, int step,
                                                const qel64f* pSrc, int width, qel64f* pSrcDst,
                                                int height);
QELSR_API qelStatus qelsLogGaussMultiMix_64f_D2L(const qel64f** ppMean, const qel64f** ppVar,
                                                 const qel64f* pSrc, int width, qel64f* pSrcDst,
                                                 int height);
/* pSrcDst[m] keeps the greater of itself and the score of component m. */
QELSR_API qelStatus qelsLogGaussMaxMultiMix_32f_D2(const qel32f* pMean, const qel32f* pVar,
                                                   int step, const qel32f* pSrc, int width,
                                                   const qel32f* pVal, qel32f* pSrcDst, int height);
QELSR_API qelStatus qelsLogGaussMaxMultiMix_32f_D2L(const qel32f** ppMean, const qel32f** ppVar,
                                                    const qel32f* pSrc, int width,
                                                    const qel32f* pVal, qel32f* pSrcDst, int height);
QELSR_API qelStatus qelsLogGaussMaxMultiMix_64f_D2(const qel64f* pMean, const qel64f* pVar,
                                                   int step, const qel64f* pSrc, int width,
                                                   const qel64f* pVal, qel64f* pSrcDst, int height);
QELSR_API qelStatus qelsLogGaussMaxMultiMix_64f_D2L(const qel64f** ppMean, const qel64f** ppVar,
                                                    const qel64f* pSrc, int width,
                                                    const qel64f* pVal, qel64f* pSrcDst, int height);
/* pSrcDst[m] becomes the log-add of itself and the score of component m. */
QELSR_API qelStatus qelsLogGaussAddMultiMix_32f_D2(const qel32f* pMean, const qel32f* pVar,
                                                   int step, const qel32f* pSrc, int width,
                                                   const qel32f* pVal, qel32f* pSrcDst, int height);
QELSR_API qelStatus qelsLogGaussAddMultiMix_32f_D2L(const qel32f** ppMean, const qel32f** ppVar,
                                                    const qel32f* pSrc, int width,
                                                    const qel32f* pVal, qel32f* pSrcDst, int height);
QELSR_API qelStatus qelsLogGaussAddMultiMix_64f_D2(const qel64f* pMean, const qel64f* pVar,
                                                   int step, const qel64f* pSrc, int width,
                                                   const qel64f* pVal, qel64f* pSrcDst, int height);
QELSR_API qelStatus qelsLogGaussAddMultiMix_64f_D2L(const qel64f** ppMean, const qel64f** ppVar,
                                                    const qel64f* pSrc, int width,
                                                    const qel64f* pVal, qel64f* pSrcDst, int height);
/* Weighted squared distance of the observation to each component mean. */
QELSR_API qelStatus qelsMahDistMultiMix_32f_D2(const qel32f* pMean, const qel32f* pVar, int step,
                                               const qel32f* pSrc, int width, qel32f* pDst,
                                               int height);
QELSR_API qelStatus qelsMahDistMultiMix_32f_D2L(const qel32f** ppMean, const qel32f** ppVar,
                                                const qel32f* pSrc, int width, qel32f* pDst,
                                                int height);
QELSR_API qelStatus qelsMahDistMultiMix_64f_D2(const qel64f* pMean, const qel64f* pVar, int step,
                                               const qel64f* pSrc, int width, qel64f* pDst,
                                               int height);
QELSR_API qelStatus qelsMahDistMultiMix_64f_D2L(const qel64f** ppMean, const qel64f** ppVar,
                                                const qel64f* pSrc, int width, qel64f* pDst,
                                                int height);
/* Log likelihood of a whole mixture: log of the sum of exp(score). */
QELSR_API qelStatus qelsLogGaussMixture_32f_D2(const qel32f* pSrc, const qel32f* pMean,
                                               const qel32f* pVar, int height, int step, int width,
                                               const qel32f* pVal, qel32f* pResult);
QELSR_API qelStatus qelsLogGaussMixture_32f_D2L(const qel32f* pSrc, const qel32f** ppMean,
                                                const qel32f** ppVar, int height, int width,
                                                const qel32f* pVal, qel32f* pResult);
QELSR_API qelStatus qelsLogGaussMixture_64f_D2(const qel64f* pSrc, const qel64f* pMean,
                                               const qel64f* pVar, int height, int step, int width,
                                               const qel64f* pVal, qel64f* pResult);
QELSR_API qelStatus qelsLogGaussMixture_64f_D2L(const qel64f* pSrc, const qel64f** ppMean,
                                                const qel64f** ppVar, int height, int width,
                                                const qel64f* pVal, qel64f* pResult);
QELSR_API qelStatus qelsLogGaussMixture_IdVar_32f_D2(const qel32f* pSrc, const qel32f* pMean,
                                                     int height, int step, int width,
                                                     const qel32f* pVal, qel32f* pResult);
QELSR_API qelStatus qelsLogGaussMixture_IdVar_32f_D2L(const qel32f* pSrc, const qel32f** ppMean,
                                                      int height, int width, const qel32f* pVal,
                                                      qel32f* pResult);
QELSR_API qelStatus qelsLogGaussMixture_IdVar_64f_D2(const qel64f* pSrc, const qel64f* pMean,
                                                     int height, int step, int width,
                                                     const qel64f* pVal, qel64f* pResult);
QELSR_API qelStatus qelsLogGaussMixture_IdVar_64f_D2L(const qel64f* pSrc, const qel64f** ppMean,
                                                      int height, int width, const qel64f* pVal,
                                                      qel64f* pResult);

/* ------------------------------------------------------------------------
 * Fixed-point Gaussian scores
 * ------------------------------------------------------------------------ */
/* 16-bit members of the single, block and mixture scores: pSrc, pMean, pVar
   are 16-bit integers, d = pSrc - pMean saturates at the 16-bit limits, and
   the score is val - 0.5 * S * 2^-scaleFactor with S = sum(d*d*pVar) (pVar
   holds scaled inverse variances; DirectVar: variances; IdVar: none). Scaled
   members take and give singles, the others 32-bit integers (Sfs). Low
   members form S in 32-bit integers for scaleFactor >= 0 (the lowest bit of
   each d*d/2 is dropped). Checks as the 32f twins; the strided mixture
   (qelsLogGaussMixture_*_D2) looks at the stride first. */
QELSR_API qelStatus qelsLogGaussSingle_16s32s_Sfs(const qel16s* pSrc, const qel16s* pMean,
                                                  const qel16s* pVar, int len, qel32s* pResult,
                                                  qel32s val, int scaleFactor);
QELSR_API qelStatus qelsLogGaussSingle_Scaled_16s32f(const qel16s* pSrc, const qel16s* pMean,
                                                     const qel16s* pVar, int len, qel32f* pResult,
                                                     qel32f val, int scaleFactor);
QELSR_API qelStatus qelsLogGaussSingle_Low_16s32s_Sfs(const qel16s* pSrc, const qel16s* pMean,
                                                      const qel16s* pVar, int len, qel32s* pResult,
                                                      qel32s val, int scaleFactor);
QELSR_API qelStatus qelsLogGaussSingle_LowScaled_16s32f(const qel16s* pSrc, const qel16s* pMean,
                                                        const qel16s* pVar, int len,
                                                        qel32f* pResult, qel32f val,
                                                        int scaleFactor);
QELSR_API qelStatus qelsLogGaussSingle_IdVar_16s32s_Sfs(const qel16s* pSrc, const qel16s* pMean,
                                                        int len, qel32s* pResult, qel32s val,
                                                        int scaleFactor);
QELSR_API qelStatus qelsLogGaussSingle_IdVarScaled_16s32f(const qel16s* pSrc, const qel16s* pMean,
                                                          int len, qel32f* pResult, qel32f val,
                                                          int scaleFactor);
QELSR_API qelStatus qelsLogGaussSingle_IdVarLow_16s32s_Sfs(const qel16s* pSrc, const qel16s* pMean,
                                                           int len, qel32s* pResult, qel32s val,
                                                           int scaleFactor);
QELSR_API qelStatus qelsLogGaussSingle_IdVarLowScaled_16s32f(const qel16s* pSrc,
                                                             const qel16s* pMean, int len,
                                                             qel32f* pResult, qel32f val,
                                                             int scaleFactor);
QELSR_API qelStatus qelsLogGaussSingle_DirectVar_16s32s_Sfs(const qel16s* pSrc, const qel16s* pMean,
                                                            const qel16s* pVar, int len,
                                                            qel32s* pResult, qel32s val,
                                                            int scaleFactor);
QELSR_API qelStatus qelsLogGaussSingle_DirectVarScaled_16s32f(const qel16s* pSrc,
                                                              const qel16s* pMean,
                                                              const qel16s* pVar, int len,
                                                              qel32f* pResult, qel32f val,
                                                              int scaleFactor);
QELSR_API qelStatus qelsLogGaussSingle_BlockDVar_16s32s_Sfs(const qel16s* pSrc, const qel16s* pMean,
                                                            const BlockDMatrix* pBlockDVar, int len,
                                                            qel32s* pResult, qel32s val,
                                                            int scaleFactor);
QELSR_API qelStatus qelsLogGaussSingle_BlockDVarScaled_16s32f(const qel16s* pSrc,
                                                              const qel16s* pMean,
                                                              const BlockDMatrix* pBlockDVar,
                                                              int len, qel32f* pResult, qel32f val,
                                                              int scaleFactor);
QELSR_API qelStatus qelsLogGauss_16s32s_D2Sfs(const qel16s* pSrc, int step, const qel16s* pMean,
                                              const qel16s* pVar, int width, qel32s* pDst,
                                              int height, qel32s val, int scaleFactor);
QELSR_API qelStatus qelsLogGauss_16s32s_D2LSfs(const qel16s** ppSrc, const qel16s* pMean,
                                               const qel16s* pVar, int width, qel32s* pDst,
                                               int height, qel32s val, int scaleFactor);
QELSR_API qelStatus qelsLogGauss_Scaled_16s32f_D2(const qel16s* pSrc, int step, const qel16s* pMean,
                                                  const qel16s* pVar, int width, qel32f* pDst,
                                                  int height, qel32f val, int scaleFactor);
QELSR_API qelStatus qelsLogGauss_Scaled_16s32f_D2L(const qel16s** ppSrc, const qel16s* pMean,
                                                   const qel16s* pVar, int width, qel32f* pDst,
                                                   int height, qel32f val, int scaleFactor);
QELSR_API qelStatus qelsLogGauss_Low_16s32s_D2Sfs(const qel16s* pSrc, int step, const qel16s* pMean,
                                                  const qel16s* pVar, int width, qel32s* pDst,
                                                  int height, qel32s val, int scaleFactor);
QELSR_API qelStatus qelsLogGauss_Low_16s32s_D2LSfs(const qel16s** ppSrc, const qel16s* pMean,
                                                   const qel16s* pVar, int width, qel32s* pDst,
                                                   int height, qel32s val, int scaleFactor);
QELSR_API qelStatus qelsLogGauss_LowScaled_16s32f_D2(const qel16s* pSrc, int step,
                                                     const qel16s* pMean, const qel16s* pVar,
                                                     int width, qel32f* pDst, int height,
                                                     qel32f val, int scaleFactor);
QELSR_API qelStatus qelsLogGauss_LowScaled_16s32f_D2L(const qel16s** ppSrc, const qel16s* pMean,
                                                      const qel16s* pVar, int width, qel32f* pDst,
                                                      int height, qel32f val, int scaleFactor);
QELSR_API qelStatus qelsLogGauss_IdVar_16s32s_D2Sfs(const qel16s* pSrc, int step,
                                                    const qel16s* pMean, int width, qel32s* pDst,
                                                    int height, qel32s val, int scaleFactor);
QELSR_API qelStatus qelsLogGauss_IdVar_16s32s_D2LSfs(const qel16s** ppSrc, const qel16s* pMean,
                                                     int width, qel32s* pDst, int height,
                                                     qel32s val, int scaleFactor);
QELSR_API qelStatus qelsLogGauss_IdVarScaled_16s32f_D2(const qel16s* pSrc, int step,
                                                       const qel16s* pMean, int width, qel32f* pDst,
                                                       int height, qel32f val, int scaleFactor);
QELSR_API qelStatus qelsLogGauss_IdVarScaled_16s32f_D2L(const qel16s** ppSrc, const qel16s* pMean,
                                                        int width, qel32f* pDst, int height,
                                                        qel32f val, int scaleFactor);
QELSR_API qelStatus qelsLogGauss_IdVarLow_16s32s_D2Sfs(const qel16s* pSrc, int step,
                                                       const qel16s* pMean, int width, qel32s* pDst,
                                                       int height, qel32s val, int scaleFactor);
QELSR_API qelStatus qelsLogGauss_IdVarLow_16s32s_D2LSfs(const qel16s** ppSrc, const qel16s* pMean,
                                                        int width, qel32s* pDst, int height,
                                                        qel32s val, int scaleFactor);
QELSR_API qelStatus qelsLogGauss_IdVarLowScaled_16s32f_D2(const qel16s* pSrc, int step,
                                                          const qel16s* pMean, int width,
                                                          qel32f* pDst, int height, qel32f val,
                                                          int scaleFactor);
QELSR_API qelStatus qelsLogGauss_IdVarLowScaled_16s32f_D2L(const qel16s** ppSrc,
                                                           const qel16s* pMean, int width,
                                                           qel32f* pDst, int height, qel32f val,
                                                           int scaleFactor);
QELSR_API qelStatus qelsLogGaussMax_16s32s_D2Sfs(const qel16s* pSrc, int step, const qel16s* pMean,
                                                 const qel16s* pVar, int width, qel32s* pDst,
                                                 int height, qel32s val, int scaleFactor);
QELSR_API qelStatus qelsLogGaussMax_16s32s_D2LSfs(const qel16s** ppSrc, const qel16s* pMean,
                                                  const qel16s* pVar, int width, qel32s* pDst,
                                                  int height, qel32s val, int scaleFactor);
QELSR_API qelStatus qelsLogGaussMax_Scaled_16s32f_D2(const qel16s* pSrc, int step,
                                                     const qel16s* pMean, const qel16s* pVar,
                                                     int width, qel32f* pDst, int height,
                                                     qel32f val, int scaleFactor);
QELSR_API qelStatus qelsLogGaussMax_Scaled_16s32f_D2L(const qel16s** ppSrc, const qel16s* pMean,
                                                      const qel16s* pVar, int width, qel32f* pDst,
                                                      int height, qel32f val, int scaleFactor);
QELSR_API qelStatus qelsLogGaussMax_Low_16s32s_D2Sfs(const qel16s* pSrc, int step,
                                                     const qel16s* pMean, const qel16s* pVar,
                                                     int width, qel32s* pDst, int height,
                                                     qel32s val, int scaleFactor);
QELSR_API qelStatus qelsLogGaussMax_Low_16s32s_D2LSfs(const qel16s** ppSrc, const qel16s* pMean,
                                                      const qel16s* pVar, int width, qel32s* pDst,
                                                      int height, qel32s val, int scaleFactor);
QELSR_API qelStatus qelsLogGaussMax_LowScaled_16s32f_D2(const qel16s* pSrc, int step,
                                                        const qel16s* pMean, const qel16s* pVar,
                                                        int width, qel32f* pDst, int height,
                                                        qel32f val, int scaleFactor);
QELSR_API qelStatus qelsLogGaussMax_LowScaled_16s32f_D2L(const qel16s** ppSrc, const qel16s* pMean,
                                                         const qel16s* pVar, int width,
                                                         qel32f* pDst, int height, qel32f val,
                                                         int scaleFactor);
QELSR_API qelStatus qelsLogGaussMax_IdVar_16s32s_D2Sfs(const qel16s* pSrc, int step,
                                                       const qel16s* pMean, int width, qel32s* pDst,
                                                       int height, qel32s val, int scaleFactor);
QELSR_API qelStatus qelsLogGaussMax_IdVar_16s32s_D2LSfs(const qel16s** ppSrc, const qel16s* pMean,
                                                        int width, qel32s* pDst, int height,
                                                        qel32s val, int scaleFactor);
QELSR_API qelStatus qelsLogGaussMax_IdVarScaled_16s32f_D2(const qel16s* pSrc, int step,
                                                          const qel16s* pMean, int width,
                                                          qel32f* pDst, int height, qel32f val,
                                                          int scaleFactor);
QELSR_API qelStatus qelsLogGaussMax_IdVarScaled_16s32f_D2L(const qel16s** ppSrc,
                                                           const qel16s* pMean, int width,
                                                           qel32f* pDst, int height, qel32f val,
                                                           int scaleFactor);
QELSR_API qelStatus qelsLogGaussMax_IdVarLow_16s32s_D2Sfs(const qel16s* pSrc, int step,
                                                          const qel16s* pMean, int width,
                                                          qel32s* pDst, int height, qel32s val,
                                                          int scaleFactor);
QELSR_API qelStatus qelsLogGaussMax_IdVarLow_16s32s_D2LSfs(const qel16s** ppSrc,
                                                           const qel16s* pMean, int width,
                                                           qel32s* pDst, int height, qel32s val,
                                                           int scaleFactor);
QELSR_API qelStatus qelsLogGaussMax_IdVarLowScaled_16s32f_D2(const qel16s* pSrc, int step,
                                                             const qel16s* pMean, int width,
                                                             qel32f* pDst, int height, qel32f val,
                                                             int scaleFactor);
QELSR_API qelStatus qelsLogGaussMax_IdVarLowScaled_16s32f_D2L(const qel16s** ppSrc,
                                                              const qel16s* pMean, int width,
                                                              qel32f* pDst, int height, qel32f val,
                                                              int scaleFactor);
QELSR_API qelStatus qelsLogGaussAdd_Scaled_16s32f_D2(const qel16s* pSrc, int step,
                                                     const qel16s* pMean, const qel16s* pVar,
                                                     int width, qel32f* pDst, int height,
                                                     qel32f val, int scaleFactor);
QELSR_API qelStatus qelsLogGaussAdd_Scaled_16s32f_D2L(const qel16s** ppSrc, const qel16s* pMean,
                                                      const qel16s* pVar, int width, qel32f* pDst,
                                                      int height, qel32f val, int scaleFactor);
QELSR_API qelStatus qelsLogGaussAdd_LowScaled_16s32f_D2(const qel16s* pSrc, int step,
                                                        const qel16s* pMean, const qel16s* pVar,
                                                        int width, qel32f* pDst, int height,
                                                        qel32f val, int scaleFactor);
QELSR_API qelStatus qelsLogGaussAdd_LowScaled_16s32f_D2L(const qel16s** ppSrc, const qel16s* pMean,
                                                         const qel16s* pVar, int width,
                                                         qel32f* pDst, int height, qel32f val,
                                                         int scaleFactor);
QELSR_API qelStatus qelsLogGaussAdd_IdVarScaled_16s32f_D2(const qel16s* pSrc, int step,
                                                          const qel16s* pMean, int width,
                                                          qel32f* pDst, int height, qel32f val,
                                                          int scaleFactor);
QELSR_API qelStatus qelsLogGaussAdd_IdVarScaled_16s32f_D2L(const qel16s** ppSrc,
                                                           const qel16s* pMean, int width,
                                                           qel32f* pDst, int height, qel32f val,
                                                           int scaleFactor);
QELSR_API qelStatus qelsLogGaussAdd_IdVarLowScaled_16s32f_D2(const qel16s* pSrc, int step,
                                                             const qel16s* pMean, int width,
                                                             qel32f* pDst, int height, qel32f val,
                                                             int scaleFactor);
QELSR_API qelStatus qelsLogGaussAdd_IdVarLowScaled_16s32f_D2L(const qel16s** ppSrc,
                                                              const qel16s* pMean, int width,
                                                              qel32f* pDst, int height, qel32f val,
                                                              int scaleFactor);
QELSR_API qelStatus qelsLogGaussMixture_Scaled_16s32f_D2(const qel16s* pSrc, const qel16s* pMean,
                                                         const qel16s* pVar, int height, int step,
                                                         int width, const qel32f* pVal,
                                                         qel32f* pResult, int scaleFactor);
QELSR_API qelStatus qelsLogGaussMixture_Scaled_16s32f_D2L(const qel16s* pSrc, const qel16s** ppMean,
                                                          const qel16s** ppVar, int height,
                                                          int width, const qel32f* pVal,
                                                          qel32f* pResult, int scaleFactor);
QELSR_API qelStatus qelsLogGaussMixture_LowScaled_16s32f_D2(const qel16s* pSrc, const qel16s* pMean,
                                                            const qel16s* pVar, int height,
                                                            int step, int width, const qel32f* pVal,
                                                            qel32f* pResult, int scaleFactor);
QELSR_API qelStatus qelsLogGaussMixture_LowScaled_16s32f_D2L(const qel16s* pSrc,
                                                             const qel16s** ppMean,
                                                             const qel16s** ppVar, int height,
                                                             int width, const qel32f* pVal,
                                                             qel32f* pResult, int scaleFactor);
QELSR_API qelStatus qelsLogGaussMixture_IdVarScaled_16s32f_D2(const qel16s* pSrc,
                                                              const qel16s* pMean, int height,
                                                              int step, int width,
                                                              const qel32f* pVal, qel32f* pResult,
                                                              int scaleFactor);
QELSR_API qelStatus qelsLogGaussMixture_IdVarScaled_16s32f_D2L(const qel16s* pSrc,
                                                               const qel16s** ppMean, int height,
                                                               int width, const qel32f* pVal,
                                                               qel32f* pResult, int scaleFactor);
QELSR_API qelStatus qelsLogGaussMixture_IdVarLowScaled_16s32f_D2(const qel16s* pSrc,
                                                                 const qel16s* pMean, int height,
                                                                 int step, int width,
                                                                 const qel32f* pVal,
                                                                 qel32f* pResult, int scaleFactor);
QELSR_API qelStatus qelsLogGaussMixture_IdVarLowScaled_16s32f_D2L(const qel16s* pSrc,
                                                                  const qel16s** ppMean, int height,
                                                                  int width, const qel32f* pVal,
                                                                  qel32f* pResult, int scaleFactor);
QELSR_API qelStatus qelsLogGaussMultiMix_16s32s_D2Sfs(const qel16s* pMean, const qel16s* pVar,
                                                      int step, const qel16s* pSrc, int width,
                                                      qel32s* pSrcDst, int height, int scaleFactor);
QELSR_API qelStatus qelsLogGaussMultiMix_16s32s_D2LSfs(const qel16s** ppMean, const qel16s** ppVar,
                                                       const qel16s* pSrc, int width,
                                                       qel32s* pSrcDst, int height,
                                                       int scaleFactor);
QELSR_API qelStatus qelsLogGaussMultiMix_Scaled_16s32f_D2(const qel16s* pMean, const qel16s* pVar,
                                                          int step, const qel16s* pSrc, int width,
                                                          qel32f* pSrcDst, int height,
                                                          int scaleFactor);
QELSR_API qelStatus qelsLogGaussMultiMix_Scaled_16s32f_D2L(const qel16s** ppMean,
                                                           const qel16s** ppVar, const qel16s* pSrc,
                                                           int width, qel32f* pSrcDst, int height,
                                                           int scaleFactor);
QELSR_API qelStatus qelsLogGaussMultiMix_Low_16s32s_D2Sfs(const qel16s* pMean, const qel16s* pVar,
                                                          int step, const qel16s* pSrc, int width,
                                                          qel32s* pSrcDst, int height,
                                                          int scaleFactor);
QELSR_API qelStatus qelsLogGaussMultiMix_Low_16s32s_D2LSfs(const qel16s** ppMean,
                                                           const qel16s** ppVar, const qel16s* pSrc,
                                                           int width, qel32s* pSrcDst, int height,
                                                           int scaleFactor);
QELSR_API qelStatus qelsLogGaussMultiMix_LowScaled_16s32f_D2(const qel16s* pMean,
                                                             const qel16s* pVar, int step,
                                                             const qel16s* pSrc, int width,
                                                             qel32f* pSrcDst, int height,
                                                             int scaleFactor);
QELSR_API qelStatus qelsLogGaussMultiMix_LowScaled_16s32f_D2L(const qel16s** ppMean,
                                                              const qel16s** ppVar,
                                                              const qel16s* pSrc, int width,
                                                              qel32f* pSrcDst, int height,
                                                              int scaleFactor);
QELSR_API qelStatus qelsLogGaussMaxMultiMix_16s32s_D2Sfs(const qel16s* pMean, const qel16s* pVar,
                                                         int step, const qel16s* pSrc, int width,
                                                         const qel32s* pVal, qel32s* pSrcDst,
                                                         int height, int scaleFactor);
QELSR_API qelStatus qelsLogGaussMaxMultiMix_16s32s_D2LSfs(const qel16s** ppMean,
                                                          const qel16s** ppVar, const qel16s* pSrc,
                                                          int width, const qel32s* pVal,
                                                          qel32s* pSrcDst, int height,
                                                          int scaleFactor);
QELSR_API qelStatus qelsLogGaussMaxMultiMix_Scaled_16s32f_D2(const qel16s* pMean,
                                                             const qel16s* pVar, int step,
                                                             const qel16s* pSrc, int width,
                                                             const qel32f* pVal, qel32f* pSrcDst,
                                                             int height, int scaleFactor);
QELSR_API qelStatus qelsLogGaussMaxMultiMix_Scaled_16s32f_D2L(const qel16s** ppMean,
                                                              const qel16s** ppVar,
                                                              const qel16s* pSrc, int width,
                                                              const qel32f* pVal, qel32f* pSrcDst,
                                                              int height, int scaleFactor);
QELSR_API qelStatus qelsLogGaussMaxMultiMix_Low_16s32s_D2Sfs(const qel16s* pMean,
                                                             const qel16s* pVar, int step,
                                                             const qel16s* pSrc, int width,
                                                             const qel32s* pVal, qel32s* pSrcDst,
                                                             int height, int scaleFactor);
QELSR_API qelStatus qelsLogGaussMaxMultiMix_Low_16s32s_D2LSfs(const qel16s** ppMean,
                                                              const qel16s** ppVar,
                                                              const qel16s* pSrc, int width,
                                                              const qel32s* pVal, qel32s* pSrcDst,
                                                              int height, int scaleFactor);
QELSR_API qelStatus qelsLogGaussMaxMultiMix_LowScaled_16s32f_D2(const qel16s* pMean,
                                                                const qel16s* pVar, int step,
                                                                const qel16s* pSrc, int width,
                                                                const qel32f* pVal, qel32f* pSrcDst,
                                                                int height, int scaleFactor);
QELSR_API qelStatus qelsLogGaussMaxMultiMix_LowScaled_16s32f_D2L(
    const qel16s** ppMean, const qel16s** ppVar, const qel16s* pSrc, int width, const qel32f* pVal,
    qel32f* pSrcDst, int height, int scaleFactor);
QELSR_API qelStatus qelsLogGaussAddMultiMix_Scaled_16s32f_D2(const qel16s* pMean,
                                                             const qel16s* pVar, int step,
                                                             const qel16s* pSrc, int width,
                                                             const qel32f* pVal, qel32f* pSrcDst,
                                                             int height, int scaleFactor);
QELSR_API qelStatus qelsLogGaussAddMultiMix_Scaled_16s32f_D2L(const qel16s** ppMean,
                                                              const qel16s** ppVar,
                                                              const qel16s* pSrc, int width,
                                                              const qel32f* pVal, qel32f* pSrcDst,
                                                              int height, int scaleFactor);
QELSR_API qelStatus qelsLogGaussAddMultiMix_LowScaled_16s32f_D2(const qel16s* pMean,
                                                                const qel16s* pVar, int step,
                                                                const qel16s* pSrc, int width,
                                                                const qel32f* pVal, qel32f* pSrcDst,
                                                                int height, int scaleFactor);
QELSR_API qelStatus qelsLogGaussAddMultiMix_LowScaled_16s32f_D2L(
    const qel16s** ppMean, const qel16s** ppVar, const qel16s* pSrc, int width, const qel32f* pVal,
    qel32f* pSrcDst, int height, int scaleFactor);
QELSR_API qelStatus qelsMahDistSingle_16s32f(const qel16s* pSrc, const qel16s* pMean,
                                             const qel16s* pVar, int len, qel32f* pResult);
QELSR_API qelStatus qelsMahDistSingle_16s32s_Sfs(const qel16s* pSrc, const qel16s* pMean,
                                                 const qel16s* pVar, int len, qel32s* pResult,
                                                 int scaleFactor);

/* ------------------------------------------------------------------------
 * Gaussian selection
 * ------------------------------------------------------------------------ */
/* Bit tables. Bit p of a row lies in byte p / 8 under the mask
   0x80 >> (p % 8): the first bit of a row is the most significant bit of its
   first byte. A shortlist row has `rowBytes` bytes with its bits starting at
   `bitOffset`; a sign table holds one row of (n + 7) / 8 bytes per frame, one
   after the other. Index arrays hold the entries of all rows in sequence;
   the `Var` forms take pCounts[r] (at least 1) entries for row r. */
/* Sign row r = OR of the table rows named by its indices, over the nBits bits
   from bitOffset, shifted to start at bit 0; unused bits of the last byte 0. */
QELSR_API qelStatus qelsBuildSignTable_8u1u(const qel32s* pIndx, int nPerRow,
                                            const qel8u* const* ppTable, int tableRows,
                                            int rowBytes, int bitOffset, qel8u* pSign, int height,
                                            int nBits);
QELSR_API qelStatus qelsBuildSignTable_Var_8u1u(const qel32s* pIndx, const qel32s* pCounts,
                                                const qel8u* const* ppTable, int tableRows,
                                                int rowBytes, int bitOffset, qel8u* pSign,
                                                int height, int nBits);
/* Shortlists toggle (exclusive-or) the named bits and touch nothing else:
   Row forms bit bitOffset + index of row r, Column forms bit bitOffset + c of
   the row each index names. */
QELSR_API qelStatus qelsFillShortlist_Row_1u(const qel32s* pIndx, int nCols, int nPerRow,
                                             qel8u* const* ppDst, int height, int rowBytes,
                                             int bitOffset);
QELSR_API qelStatus qelsFillShortlist_RowVar_1u(const qel32s* pIndx, const qel32s* pCounts,
                                                int nCols, qel8u* const* ppDst, int height,
                                                int rowBytes, int bitOffset);
QELSR_API qelStatus qelsFillShortlist_Column_1u(const qel32s* pIndx, int nPerCol,
                                                qel8u* const* ppDst, int height, int rowBytes,
                                                int bitOffset, int nCols);
QELSR_API qelStatus qelsFillShortlist_ColumnVar_1u(const qel32s* pIndx, const qel32s* pCounts,
                                                   qel8u* const* ppDst, int height, int rowBytes,
                                                   int bitOffset, int nCols);
/* Mixture score of each of nFrames frames over the components whose bit is
   set in the frame's sign row (nMix bits), log-added in increasing component
   order; a frame with no bit set receives `val`. pVal holds the constant
   term of each component; `step` is the stride of frames, means and
   variances alike. Allocates one 16-bit counter per frame. */
QELSR_API qelStatus qelsLogGaussMixture_Select_32f_D2(const qel32f* pSrc, const qel32f* pMean,
                                                      const qel32f* pVar, int step, int width,
                                                      const qel32f* pVal, const qel8u* pSign,
                                                      int nMix, qel32f* pDst, int nFrames,
                                                      qel32f val);
QELSR_API qelStatus qelsLogGaussMixture_Select_32f_D2L(const qel32f* const* ppSrc,
                                                       const qel32f* const* ppMean,
                                                       const qel32f* const* ppVar, int width,
                                                       const qel32f* pVal, const qel8u* pSign,
                                                       int nMix, qel32f* pDst, int nFrames,
                                                       qel32f val);
QELSR_API qelStatus qelsLogGaussMixture_SelectIdVar_32f_D2(const qel32f* pSrc, const qel32f* pMean,
                                                           int step, int width, const qel32f* pVal,
                                                           const qel8u* pSign, int nMix,
                                                           qel32f* pDst, int nFrames, qel32f val);
QELSR_API qelStatus qelsLogGaussMixture_SelectIdVar_32f_D2L(const qel32f* const* ppSrc,
                                                            const qel32f* const* ppMean, int width,
                                                            const qel32f* pVal, const qel8u* pSign,
                                                            int nMix, qel32f* pDst, int nFrames,
                                                            qel32f val);
/* 16-bit data, single scores: val - S * 2^-(scaleFactor + 1) per component. */
QELSR_API qelStatus qelsLogGaussMixture_SelectScaled_16s32f_D2(
    const qel16s* pSrc, const qel16s* pMean, const qel16s* pVar, int step, int width,
    const qel32f* pVal, const qel8u* pSign, int nMix, qel32f* pDst, int nFrames, qel32f val,
    int scaleFactor);
QELSR_API qelStatus qelsLogGaussMixture_SelectScaled_16s32f_D2L(
    const qel16s* const* ppSrc, const qel16s* const* ppMean, const qel16s* const* ppVar,
    int width, const qel32f* pVal, const qel8u* pSign, int nMix, qel32f* pDst, int nFrames,
    qel32f val, int scaleFactor);
QELSR_API qelStatus qelsLogGaussMixture_SelectIdVarScaled_16s32f_D2(
    const qel16s* pSrc, const qel16s* pMean, int step, int width, const qel32f* pVal,
    const qel8u* pSign, int nMix, qel32f* pDst, int nFrames, qel32f val, int scaleFactor);
QELSR_API qelStatus qelsLogGaussMixture_SelectIdVarScaled_16s32f_D2L(
    const qel16s* const* ppSrc, const qel16s* const* ppMean, int width, const qel32f* pVal,
    const qel8u* pSign, int nMix, qel32f* pDst, int nFrames, qel32f val, int scaleFactor);

#ifdef __cplusplus
}
#endif

#endif /* QELSR_H */
