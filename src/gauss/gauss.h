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

}  // extern "C"

#include <array>

// Log-domain constants. LOGZERO and LOGZERO_F (the values that stand for
// log 0) live in frame/frame.h.
//
// Double: anything below LOGSMALL counts as log 0; a difference below
// MINLOGEXP (ln 1e-10) lets the smaller term be ignored.
inline constexpr qel64f LOGSMALL = -9.0e9;
inline constexpr qel64f MINLOGEXP = -23.0258509299405;
// Single: log 0 and "counts as log 0" are the same value, not a smaller one.
// MINLOGEXP_F is -ln 4500000; the vector kernels and the single-precision
// scalar step hold it as the single with bits 0xC1751D08, which lies just
// above the decimal value, so a strict comparison of a single against either
// gives the same answer.
inline constexpr qel32f LOGSMALL_F = -4500000.0f;
inline constexpr qel64f MINLOGEXP_F = -15.3195879547406;
inline constexpr qel32f MINLOGEXP_F_SP = std::bit_cast<qel32f>(0xC1751D08u);

// Segment borders of the difference d = smaller - greater (d <= 0): the first
// segment is d above the first border, the second d above the second border,
// the third the rest; the polynomial runs in y = d - (left-hand border).
inline constexpr qel64f INT_S1 = -3.5;
inline constexpr qel64f INT_S2 = -9.0;
inline constexpr qel64f INT_S1_F = -2.55;
inline constexpr qel64f INT_S2_F = -6.8;

// Polynomial rows: 22 coefficients of the double log-add, 11 of the single
// one, highest power first; the last one is f at the segment's left border.
inline constexpr int kLogAddTerms = 22;
inline constexpr int kLogAddTerms_F = 11;

extern "C" {

// Lane tables of the vector kernels. Biasing_F[m2 * 16 + m3] is the byte
// offset into P_F of the 11 coefficient vectors (4 lanes each, lowest lane
// first) that give every lane its own segment, where m2 and m3 are the lane
// masks (bit l = lane l) of the second and third segment; INT_S_F holds the
// matching per-lane left borders. The double form is indexed m2 * 4 + m3 with
// 22 coefficient vectors of 2 lanes.
// All six are 16-byte aligned, and internal to the library (hidden, so the
// kernels address them directly rather than through the symbol table).
#pragma GCC visibility push(hidden)
extern const std::array<qel32f, 81 * kLogAddTerms_F * 4> P_F;
extern const std::array<qel32s, 256> Biasing_F;
extern const std::array<qel32f, 256 * 4> INT_S_F;
extern const std::array<qel64f, 9 * kLogAddTerms * 2> P_D;
extern const std::array<qel32s, 16> Biasing_D;
extern const std::array<qel64f, 16 * 2> INT_S_D;
#pragma GCC visibility pop

// ---- single-observation scores
// Kernels of one observation against one diagonal Gaussian; `len` is at
// least 1 and nothing is checked. The constant term comes by address. The
// `_Al` twins need pSrc, pMean and pVar (and the accumulators) on 16 bytes;
// sMahDistSingle_32f_M7 is only run on such data. Each pair follows one
// order of additions, so the twins agree bit for bit.
//
// Single kernels: accumulators A and B of four lanes; per group of 16
// elements vectors 0 and 1 go to A, 2 and 3 to B; one group of 8 of the rest
// to A; the last len mod 8 elements to lane 0 of A; T = A + B is folded.
// *pResult = (((T0 + T1) + (T2 + T3)) + 2 * val) * 0.5, the sum held negative.
void qelsLGaussSingle_32f_M7(const qel32f* pSrc, const qel32f* pMean, const qel32f* pVar, int len,
                             qel32f* pResult, const qel32f* pVal);
void qelsLGaussSingle_32f_M7_Al(const qel32f* pSrc, const qel32f* pMean, const qel32f* pVar,
                                int len, qel32f* pResult, const qel32f* pVal);
// As above without the weights, folded as ((T0 + T2) + (T1 + T3)).
void qelsLGaussSingle_IdVar_32f_M7(const qel32f* pSrc, const qel32f* pMean, int len,
                                   qel32f* pResult, const qel32f* pVal);
void qelsLGaussSingle_IdVar_32f_M7_Al(const qel32f* pSrc, const qel32f* pMean, int len,
                                      qel32f* pResult, const qel32f* pVal);
// The weighted distance with positive sums, folded as ((T0 + T2) + (T1 + T3)).
void sMahDistSingle_32f_M7(const qel32f* pSrc, const qel32f* pMean, const qel32f* pVar, int len,
                           qel32f* pResult);
// pMeanAcc[i] += d * val; pVarAcc[i] += d * (d * val), any alignment.
void sMahAcc_32f_M7(const qel32f* pSrc, const qel32f* pMean, qel32f* pMeanAcc, qel32f* pVarAcc,
                    int len, const qel32f* pVal);

// Double kernels: accumulators P and Q of two lanes; per group of 8 elements
// vectors 0 and 2 go to P, 1 and 3 to Q; s = (P0 + Q0) + (P1 + Q1), then
// the last len mod 8 terms are added to s one at a time.
// *pResult = val - s * 0.5 with the term d * d / pVar[i].
void ownqelsLogGaussSingle_DirectVar_64f_W7(const qel64f* pSrc, const qel64f* pMean,
                                            const qel64f* pVar, int len, qel64f* pResult,
                                            const qel64f* pVal);
void ownqelsLogGaussSingle_DirectVar_64f_W7Al(const qel64f* pSrc, const qel64f* pMean,
                                              const qel64f* pVar, int len, qel64f* pResult,
                                              const qel64f* pVal);
// *pResult = val - s * 0.5 with the term d * d.
void ownqelsLogGaussSingle_IdVar_64f_W7(const qel64f* pSrc, const qel64f* pMean, int len,
                                        qel64f* pResult, const qel64f* pVal);
void ownqelsLogGaussSingle_IdVar_64f_W7Al(const qel64f* pSrc, const qel64f* pMean, int len,
                                          qel64f* pResult, const qel64f* pVal);
// *pResult = s with the term d * d * pVar[i].
void sMahDistSingle_64f_M7(const qel64f* pSrc, const qel64f* pMean, const qel64f* pVar, int len,
                           qel64f* pResult);
void sMahDistSingle_64f_M7_Al(const qel64f* pSrc, const qel64f* pMean, const qel64f* pVar,
                              int len, qel64f* pResult);
void sMeanVarAcc_64f_M7(const qel64f* pSrc, const qel64f* pMean, qel64f* pMeanAcc,
                        qel64f* pVarAcc, int len, const qel64f* pVal);
void sMeanVarAcc_64f_M7_Al(const qel64f* pSrc, const qel64f* pMean, qel64f* pMeanAcc,
                           qel64f* pVarAcc, int len, const qel64f* pVal);

// ---- frame-block scores
// Block kernels: one score per row, rows taken four at a time (32f) or two at
// a time (64f) so that each load of pMean and pVar serves several rows. The
// constant term comes by address. Arguments are not checked; any width and
// height of at least 1 are served. The _Al twins need pSrc (every row),
// pMean and pVar on 16 bytes; the Max IdVar 64f _Al twins also need pDst.
void qelsLogGauss_32f_D2_M7(const qel32f* pSrc, int step, const qel32f* pMean, const qel32f* pVar,
                            int width, qel32f* pDst, int height, const qel32f* pVal);
void qelsLogGauss_32f_D2_M7_Al(const qel32f* pSrc, int step, const qel32f* pMean,
                               const qel32f* pVar, int width, qel32f* pDst, int height,
                               const qel32f* pVal);
void qelsLGauss_IdVar_32f_D2_M7(const qel32f* pSrc, int step, const qel32f* pMean, int width,
                                qel32f* pDst, int height, const qel32f* pVal);
void qelsLGauss_IdVar_32f_D2_M7_Al(const qel32f* pSrc, int step, const qel32f* pMean, int width,
                                   qel32f* pDst, int height, const qel32f* pVal);
void qelsLGaussMax_32f_D2_M7(const qel32f* pSrc, int step, const qel32f* pMean, const qel32f* pVar,
                             int width, qel32f* pDst, int height, const qel32f* pVal);
void qelsLGaussMax_32f_D2_M7_Al(const qel32f* pSrc, int step, const qel32f* pMean,
                                const qel32f* pVar, int width, qel32f* pDst, int height,
                                const qel32f* pVal);
void qelsLGaussMax_IdVar_32f_D2_M7(const qel32f* pSrc, int step, const qel32f* pMean, int width,
                                   qel32f* pDst, int height, const qel32f* pVal);
void qelsLGaussMax_IdVar_32f_D2_M7_Al(const qel32f* pSrc, int step, const qel32f* pMean, int width,
                                      qel32f* pDst, int height, const qel32f* pVal);
void sMahDist_32f_D2_M7(const qel32f* pSrc, int step, const qel32f* pMean, const qel32f* pVar,
                        int width, qel32f* pDst, int height);
void sMahDist_32f_D2_M7_Al(const qel32f* pSrc, int step, const qel32f* pMean, const qel32f* pVar,
                           int width, qel32f* pDst, int height);
void qelsLogGauss_32f_D2L_M7(const qel32f* const* ppSrc, const qel32f* pMean, const qel32f* pVar,
                             int width, qel32f* pDst, int height, const qel32f* pVal);
void qelsLogGauss_32f_D2L_M7_Al(const qel32f* const* ppSrc, const qel32f* pMean, const qel32f* pVar,
                                int width, qel32f* pDst, int height, const qel32f* pVal);
void qelsLGauss_IdVar_32f_D2L_M7(const qel32f* const* ppSrc, const qel32f* pMean, int width,
                                 qel32f* pDst, int height, const qel32f* pVal);
void qelsLGauss_IdVar_32f_D2L_M7_Al(const qel32f* const* ppSrc, const qel32f* pMean, int width,
                                    qel32f* pDst, int height, const qel32f* pVal);
void qelsLGaussMax_32f_D2L_M7(const qel32f* const* ppSrc, const qel32f* pMean, const qel32f* pVar,
                              int width, qel32f* pDst, int height, const qel32f* pVal);
void qelsLGaussMax_32f_D2L_M7_Al(const qel32f* const* ppSrc, const qel32f* pMean,
                                 const qel32f* pVar, int width, qel32f* pDst, int height,
                                 const qel32f* pVal);
void qelsLGaussMax_IdVar_32f_D2L_M7(const qel32f* const* ppSrc, const qel32f* pMean, int width,
                                    qel32f* pDst, int height, const qel32f* pVal);
void qelsLGaussMax_IdVar_32f_D2L_M7_Al(const qel32f* const* ppSrc, const qel32f* pMean, int width,
                                       qel32f* pDst, int height, const qel32f* pVal);
void sMahDist_32f_D2L_M7(const qel32f* const* ppSrc, const qel32f* pMean, const qel32f* pVar,
                         int width, qel32f* pDst, int height);
void sMahDist_32f_D2L_M7_Al(const qel32f* const* ppSrc, const qel32f* pMean, const qel32f* pVar,
                            int width, qel32f* pDst, int height);
void qelsLGauss_64f_D2_M7(const qel64f* pSrc, int step, const qel64f* pMean, const qel64f* pVar,
                          int width, qel64f* pDst, int height, const qel64f* pVal);
void qelsLGauss_64f_D2_M7_Al(const qel64f* pSrc, int step, const qel64f* pMean, const qel64f* pVar,
                             int width, qel64f* pDst, int height, const qel64f* pVal);
void qelsLGauss_IdVar_64f_D2_M7(const qel64f* pSrc, int step, const qel64f* pMean, int width,
                                qel64f* pDst, int height, const qel64f* pVal);
void qelsLGauss_IdVar_64f_D2_M7_Al(const qel64f* pSrc, int step, const qel64f* pMean, int width,
                                   qel64f* pDst, int height, const qel64f* pVal);
void qelsLGaussMax_64f_D2_M7(const qel64f* pSrc, int step, const qel64f* pMean, const qel64f* pVar,
                             int width, qel64f* pDst, int height, const qel64f* pVal);
void qelsLGaussMax_64f_D2_M7_Al(const qel64f* pSrc, int step, const qel64f* pMean,
                                const qel64f* pVar, int width, qel64f* pDst, int height,
                                const qel64f* pVal);
void qelsLGaussMax_IdVar_64f_D2_M7(const qel64f* pSrc, int step, const qel64f* pMean, int width,
                                   qel64f* pDst, int height, const qel64f* pVal);
void qelsLGaussMax_IdVar_64f_D2_M7_Al(const qel64f* pSrc, int step, const qel64f* pMean, int width,
                                      qel64f* pDst, int height, const qel64f* pVal);
void sMahDist_64f_D2_M7(const qel64f* pSrc, int step, const qel64f* pMean, const qel64f* pVar,
                        int width, qel64f* pDst, int height);
void sMahDist_64f_D2_M7_Al(const qel64f* pSrc, int step, const qel64f* pMean, const qel64f* pVar,
                           int width, qel64f* pDst, int height);
void qelsLGauss_64f_D2L_M7(const qel64f* const* ppSrc, const qel64f* pMean, const qel64f* pVar,
                           int width, qel64f* pDst, int height, const qel64f* pVal);
void qelsLGauss_64f_D2L_M7_Al(const qel64f* const* ppSrc, const qel64f* pMean, const qel64f* pVar,
                              int width, qel64f* pDst, int height, const qel64f* pVal);
void qelsLGauss_IdVar_64f_D2L_M7(const qel64f* const* ppSrc, const qel64f* pMean, int width,
                                 qel64f* pDst, int height, const qel64f* pVal);
void qelsLGauss_IdVar_64f_D2L_M7_Al(const qel64f* const* ppSrc, const qel64f* pMean, int width,
                                    qel64f* pDst, int height, const qel64f* pVal);
void qelsLGaussMax_64f_D2L_M7(const qel64f* const* ppSrc, const qel64f* pMean, const qel64f* pVar,
                              int width, qel64f* pDst, int height, const qel64f* pVal);
void qelsLGaussMax_64f_D2L_M7_Al(const qel64f* const* ppSrc, const qel64f* pMean,
                                 const qel64f* pVar, int width, qel64f* pDst, int height,
                                 const qel64f* pVal);
void qelsLGaussMax_IdVar_64f_D2L_M7(const qel64f* const* ppSrc, const qel64f* pMean, int width,
                                    qel64f* pDst, int height, const qel64f* pVal);
void qelsLGaussMax_IdVar_64f_D2L_M7_Al(const qel64f* const* ppSrc, const qel64f* pMean, int width,
                                       qel64f* pDst, int height, const qel64f* pVal);
void sMahDist_64f_D2L_M7(const qel64f* const* ppSrc, const qel64f* pMean, const qel64f* pVar,
                         int width, qel64f* pDst, int height);
void sMahDist_64f_D2L_M7_Al(const qel64f* const* ppSrc, const qel64f* pMean, const qel64f* pVar,
                            int width, qel64f* pDst, int height);

// ---- mixture scores
// One observation pSrc against `height` components (rows of pMean/pVar at
// `step`, or row pointers). Components go four at a time (two at a time in
// 64f) sharing each observation load. Arguments are not checked; the _Al
// twins want pSrc and every mean and variance row on 16 bytes (and, in the
// 32f maximum kernels, pVal too).
// Scores in place: pSrcDst holds the constant terms on entry.
void qelsLGaussMultiMix_32f_D2_M7(const qel32f* pMean, const qel32f* pVar, int step,
                                  const qel32f* pSrc, int width, qel32f* pSrcDst, int height);
void qelsLGaussMultiMix_32f_D2_M7_Al(const qel32f* pMean, const qel32f* pVar, int step,
                                     const qel32f* pSrc, int width, qel32f* pSrcDst, int height);
void qelsLGaussMultiMix_32f_D2L_M7(const qel32f* const* ppMean, const qel32f* const* ppVar,
                                   const qel32f* pSrc, int width, qel32f* pSrcDst, int height);
void qelsLGaussMultiMix_32f_D2L_M7_Al(const qel32f* const* ppMean, const qel32f* const* ppVar,
                                      const qel32f* pSrc, int width, qel32f* pSrcDst, int height);
void qelsLGaussMultiMix_64f_D2_M7(const qel64f* pMean, const qel64f* pVar, int step,
                                  const qel64f* pSrc, int width, qel64f* pSrcDst, int height);
void qelsLGaussMultiMix_64f_D2_M7_Al(const qel64f* pMean, const qel64f* pVar, int step,
                                     const qel64f* pSrc, int width, qel64f* pSrcDst, int height);
void qelsLGaussMultiMix_64f_D2L_M7(const qel64f* const* ppMean, const qel64f* const* ppVar,
                                   const qel64f* pSrc, int width, qel64f* pSrcDst, int height);
void qelsLGaussMultiMix_64f_D2L_M7_Al(const qel64f* const* ppMean, const qel64f* const* ppVar,
                                      const qel64f* pSrc, int width, qel64f* pSrcDst, int height);
// pSrcDst[m] = max(score with constant pVal[m], pSrcDst[m]); a NaN score
// keeps pSrcDst[m].
void qelsLGaussMaxMultiMix_32f_D2_M7(const qel32f* pMean, const qel32f* pVar, int step,
                                     const qel32f* pSrc, int width, const qel32f* pVal,
                                     qel32f* pSrcDst, int height);
void qelsLGaussMaxMultiMix_32f_D2_M7_Al(const qel32f* pMean, const qel32f* pVar, int step,
                                        const qel32f* pSrc, int width, const qel32f* pVal,
                                        qel32f* pSrcDst, int height);
void qelsLGaussMaxMultiMix_32f_D2L_M7(const qel32f* const* ppMean, const qel32f* const* ppVar,
                                      const qel32f* pSrc, int width, const qel32f* pVal,
                                      qel32f* pSrcDst, int height);
void qelsLGaussMaxMultiMix_32f_D2L_M7_Al(const qel32f* const* ppMean, const qel32f* const* ppVar,
                                         const qel32f* pSrc, int width, const qel32f* pVal,
                                         qel32f* pSrcDst, int height);
void qelsLGaussMaxMultiMix_64f_D2_M7(const qel64f* pMean, const qel64f* pVar, int step,
                                     const qel64f* pSrc, int width, const qel64f* pVal,
                                     qel64f* pSrcDst, int height);
void qelsLGaussMaxMultiMix_64f_D2_M7_Al(const qel64f* pMean, const qel64f* pVar, int step,
                                        const qel64f* pSrc, int width, const qel64f* pVal,
                                        qel64f* pSrcDst, int height);
void qelsLGaussMaxMultiMix_64f_D2L_M7(const qel64f* const* ppMean, const qel64f* const* ppVar,
                                      const qel64f* pSrc, int width, const qel64f* pVal,
                                      qel64f* pSrcDst, int height);
void qelsLGaussMaxMultiMix_64f_D2L_M7_Al(const qel64f* const* ppMean, const qel64f* const* ppVar,
                                         const qel64f* pSrc, int width, const qel64f* pVal,
                                         qel64f* pSrcDst, int height);
// pDst[m] = weighted squared distance of pSrc to component m.
void sMahDistMultiMix_32f_D2_M7(const qel32f* pMean, const qel32f* pVar, int step,
                                const qel32f* pSrc, int width, qel32f* pDst, int height);
void sMahDistMultiMix_32f_D2_M7_Al(const qel32f* pMean, const qel32f* pVar, int step,
                                   const qel32f* pSrc, int width, qel32f* pDst, int height);
void sMahDistMultiMix_32f_D2L_M7(const qel32f* const* ppMean, const qel32f* const* ppVar,
                                 const qel32f* pSrc, int width, qel32f* pDst, int height);
void sMahDistMultiMix_32f_D2L_M7_Al(const qel32f* const* ppMean, const qel32f* const* ppVar,
                                    const qel32f* pSrc, int width, qel32f* pDst, int height);
void sMahDistMultiMix_64f_D2_M7(const qel64f* pMean, const qel64f* pVar, int step,
                                const qel64f* pSrc, int width, qel64f* pDst, int height);
void sMahDistMultiMix_64f_D2_M7_Al(const qel64f* pMean, const qel64f* pVar, int step,
                                   const qel64f* pSrc, int width, qel64f* pDst, int height);
void sMahDistMultiMix_64f_D2L_M7(const qel64f* const* ppMean, const qel64f* const* ppVar,
                                 const qel64f* pSrc, int width, qel64f* pDst, int height);
void sMahDistMultiMix_64f_D2L_M7_Al(const qel64f* const* ppMean, const qel64f* const* ppVar,
                                    const qel64f* pSrc, int width, qel64f* pDst, int height);
// Identity-covariance scores in place, added like the four-row passes of
// the frame-block scores: four components per pass, columns in order (8,
// then 4), lanes folded, the width mod 4 last columns after the fold; then
// the last components one at a time in the same order.
void sLGaussMultiMix_IdVar_32f_D2_M7(const qel32f* pMean, int step, const qel32f* pSrc, int width,
                                     qel32f* pSrcDst, int height);
void sLGaussMultiMix_IdVar_32f_D2_M7_Al(const qel32f* pMean, int step, const qel32f* pSrc,
                                        int width, qel32f* pSrcDst, int height);

// ---- 16-bit scores
// Kernels of the fixed-point members; nothing is checked and the _Al twins
// want the 16-bit rows they read (and the strides) on 16 bytes. d is the
// saturated 16-bit difference. Constants come by address; pScale is the
// single 2^-(scaleFactor + 1) that the wrapper forms (for the DirectVar
// kernel 2^-scaleFactor, with the half applied in the kernel).
// Single observation: groups of 8 columns folded into a running sum.
void qelsLGaussSingle_16s32s_Sfs_M7(const qel16s* pSrc, const qel16s* pMean, const qel16s* pVar,
                                    int len, qel32s* pResult, const qel32s* pVal, int scaleFactor);
void qelsLGaussSingle_16s32s_Sfs_M7_Al(const qel16s* pSrc, const qel16s* pMean, const qel16s* pVar,
                                       int len, qel32s* pResult, const qel32s* pVal,
                                       int scaleFactor);
void qelsLGaussSingle_16s32f_M7(const qel16s* pSrc, const qel16s* pMean, const qel16s* pVar,
                                int len, qel32f* pResult, const qel32f* pVal, const qel32f* pScale);
void qelsLGaussSingle_16s32f_M7_Al(const qel16s* pSrc, const qel16s* pMean, const qel16s* pVar,
                                   int len, qel32f* pResult, const qel32f* pVal,
                                   const qel32f* pScale);
void qelsLGaussSingleLow_16s32s_Sfs_M7(const qel16s* pSrc, const qel16s* pMean, const qel16s* pVar,
                                       int len, qel32s* pResult, const qel32s* pVal,
                                       int scaleFactor);
void qelsLGaussSingleLow_16s32s_Sfs_M7_Al(const qel16s* pSrc, const qel16s* pMean,
                                          const qel16s* pVar, int len, qel32s* pResult,
                                          const qel32s* pVal, int scaleFactor);
void qelsLGaussSingleLow_16s32f_M7(const qel16s* pSrc, const qel16s* pMean, const qel16s* pVar,
                                   int len, qel32f* pResult, const qel32f* pVal, int scaleFactor);
void qelsLGaussSingleLow_16s32f_M7_Al(const qel16s* pSrc, const qel16s* pMean, const qel16s* pVar,
                                      int len, qel32f* pResult, const qel32f* pVal,
                                      int scaleFactor);
void qelsLGaussSingle_IdVar_16s32s_Sfs_M7(const qel16s* pSrc, const qel16s* pMean, int len,
                                          qel32s* pResult, const qel32s* pVal, int scaleFactor);
void qelsLGaussSingle_IdVar_16s32s_Sfs_M7_Al(const qel16s* pSrc, const qel16s* pMean, int len,
                                             qel32s* pResult, const qel32s* pVal, int scaleFactor);
void qelsLGaussSingle_IdVar_16s32f_M7(const qel16s* pSrc, const qel16s* pMean, int len,
                                      qel32f* pResult, const qel32f* pVal, const qel32f* pScale);
void qelsLGaussSingle_IdVar_16s32f_M7_Al(const qel16s* pSrc, const qel16s* pMean, int len,
                                         qel32f* pResult, const qel32f* pVal, const qel32f* pScale);
void qelsLGaussSingleLow_IdVar_16s32s_Sfs_M7(const qel16s* pSrc, const qel16s* pMean, int len,
                                             qel32s* pResult, const qel32s* pVal, int scaleFactor);
void qelsLGaussSingleLow_IdVar_16s32s_Sfs_M7_Al(const qel16s* pSrc, const qel16s* pMean, int len,
                                                qel32s* pResult, const qel32s* pVal,
                                                int scaleFactor);
void qelsLGaussSingle_IdVarLow_16s32f_M7(const qel16s* pSrc, const qel16s* pMean, int len,
                                         qel32f* pResult, const qel32f* pVal, int scaleFactor);
void qelsLGaussSingle_IdVarLow_16s32f_M7_Al(const qel16s* pSrc, const qel16s* pMean, int len,
                                            qel32f* pResult, const qel32f* pVal, int scaleFactor);
void qelsLGaussSingle_DirectVar_16s32f_M7(const qel16s* pSrc, const qel16s* pMean,
                                          const qel32f* pInvVar, int len, qel32f* pResult,
                                          const qel32f* pVal, const qel32f* pScale);
void qelsLGaussSingle_DirectVar_16s32f_M7_Al(const qel16s* pSrc, const qel16s* pMean,
                                             const qel32f* pInvVar, int len, qel32f* pResult,
                                             const qel32f* pVal, const qel32f* pScale);
void sMahDistSingle_16s32f_M7(const qel16s* pSrc, const qel16s* pMean, const qel16s* pVar, int len,
                              qel32f* pResult);
void sMahDistSingle_16s32s_Sfs_M7(const qel16s* pSrc, const qel16s* pMean, const qel16s* pVar,
                                  int len, qel32s* pResult, int scaleFactor);
// Frames against one Gaussian (_D2, _D2L) and one observation against
// components (MultiMix, in place in pSrcDst; MaxMultiMix with pVal), one
// 4-lane accumulator per row. The 32-bit maxima qelsLGaussMax_16s32s_M7,
// qelsLGaussMax_IdVar_16s32s_D2Sfs_M7, qelsLGaussMaxMultiMix_16s32s_D2Sfs_M7
// and their twins run with rounding towards zero and restore the mode.
void qelsLGauss_16s32s_D2_M7(const qel16s* pSrc, int step, const qel16s* pMean, const qel16s* pVar,
                             int width, qel32s* pDst, int height, const qel32s* pVal,
                             int scaleFactor);
void qelsLGauss_16s32s_D2_M7_Al(const qel16s* pSrc, int step, const qel16s* pMean,
                                const qel16s* pVar, int width, qel32s* pDst, int height,
                                const qel32s* pVal, int scaleFactor);
void qelsLGauss_16s32s_D2L_M7(const qel16s* const* ppSrc, const qel16s* pMean, const qel16s* pVar,
                              int width, qel32s* pDst, int height, const qel32s* pVal,
                              int scaleFactor);
void qelsLGauss_16s32s_D2L_M7_Al(const qel16s* const* ppSrc, const qel16s* pMean,
                                 const qel16s* pVar, int width, qel32s* pDst, int height,
                                 const qel32s* pVal, int scaleFactor);
void qelsLGauss_16s32f_M7(const qel16s* pSrc, int step, const qel16s* pMean, const qel16s* pVar,
                          int width, qel32f* pDst, int height, const qel32f* pVal,
                          const qel32f* pScale);
void qelsLGauss_16s32f_M7_Al(const qel16s* pSrc, int step, const qel16s* pMean, const qel16s* pVar,
                             int width, qel32f* pDst, int height, const qel32f* pVal,
                             const qel32f* pScale);
void qelsLGauss_16s32f_D2L_M7(const qel16s* const* ppSrc, const qel16s* pMean, const qel16s* pVar,
                              int width, qel32f* pDst, int height, const qel32f* pVal,
                              const qel32f* pScale);
void qelsLGauss_16s32f_D2L_M7_Al(const qel16s* const* ppSrc, const qel16s* pMean,
                                 const qel16s* pVar, int width, qel32f* pDst, int height,
                                 const qel32f* pVal, const qel32f* pScale);
void qelsLGaussLow_16s32s_D2_M7(const qel16s* pSrc, int step, const qel16s* pMean,
                                const qel16s* pVar, int width, qel32s* pDst, int height,
                                const qel32s* pVal, int scaleFactor);
void qelsLGaussLow_16s32s_D2_M7_Al(const qel16s* pSrc, int step, const qel16s* pMean,
                                   const qel16s* pVar, int width, qel32s* pDst, int height,
                                   const qel32s* pVal, int scaleFactor);
void qelsLGaussLow_16s32s_D2L_M7(const qel16s* const* ppSrc, const qel16s* pMean,
                                 const qel16s* pVar, int width, qel32s* pDst, int height,
                                 const qel32s* pVal, int scaleFactor);
void qelsLGaussLow_16s32s_D2L_M7_Al(const qel16s* const* ppSrc, const qel16s* pMean,
                                    const qel16s* pVar, int width, qel32s* pDst, int height,
                                    const qel32s* pVal, int scaleFactor);
void qelsLGaussLow_16s32f_D2_M7(const qel16s* pSrc, int step, const qel16s* pMean,
                                const qel16s* pVar, int width, qel32f* pDst, int height,
                                const qel32f* pVal, int scaleFactor);
void qelsLGaussLow_16s32f_D2_M7_Al(const qel16s* pSrc, int step, const qel16s* pMean,
                                   const qel16s* pVar, int width, qel32f* pDst, int height,
                                   const qel32f* pVal, int scaleFactor);
void qelsLGaussLow_16s32f_D2L_M7(const qel16s* const* ppSrc, const qel16s* pMean,
                                 const qel16s* pVar, int width, qel32f* pDst, int height,
                                 const qel32f* pVal, int scaleFactor);
void qelsLGaussLow_16s32f_D2L_M7_Al(const qel16s* const* ppSrc, const qel16s* pMean,
                                    const qel16s* pVar, int width, qel32f* pDst, int height,
                                    const qel32f* pVal, int scaleFactor);
void qelsLGauss_IdVar_16s32s_D2_Sfs_M7(const qel16s* pSrc, int step, const qel16s* pMean, int width,
                                       qel32s* pDst, int height, const qel32s* pVal,
                                       int scaleFactor);
void qelsLGauss_IdVar_16s32s_D2_Sfs_M7_Al(const qel16s* pSrc, int step, const qel16s* pMean,
                                          int width, qel32s* pDst, int height, const qel32s* pVal,
                                          int scaleFactor);
void qelsLGauss_IdVar_16s32s_D2L_Sfs_M7(const qel16s* const* ppSrc, const qel16s* pMean, int width,
                                        qel32s* pDst, int height, const qel32s* pVal,
                                        int scaleFactor);
void qelsLGauss_IdVar_16s32s_D2L_Sfs_M7_Al(const qel16s* const* ppSrc, const qel16s* pMean,
                                           int width, qel32s* pDst, int height, const qel32s* pVal,
                                           int scaleFactor);
void qelsLGauss_IdVar_16s32f_D2_M7(const qel16s* pSrc, int step, const qel16s* pMean, int width,
                                   qel32f* pDst, int height, const qel32f* pVal,
                                   const qel32f* pScale);
void qelsLGauss_IdVar_16s32f_D2_M7_Al(const qel16s* pSrc, int step, const qel16s* pMean, int width,
                                      qel32f* pDst, int height, const qel32f* pVal,
                                      const qel32f* pScale);
void qelsLGauss_IdVar_16s32f_D2L_M7(const qel16s* const* ppSrc, const qel16s* pMean, int width,
                                    qel32f* pDst, int height, const qel32f* pVal,
                                    const qel32f* pScale);
void qelsLGauss_IdVar_16s32f_D2L_M7_Al(const qel16s* const* ppSrc, const qel16s* pMean, int width,
                                       qel32f* pDst, int height, const qel32f* pVal,
                                       const qel32f* pScale);
void qelsLGaussLow_IdVar_16s32s_D2_Sfs_M7(const qel16s* pSrc, int step, const qel16s* pMean,
                                          int width, qel32s* pDst, int height, const qel32s* pVal,
                                          int scaleFactor);
void qelsLGaussLow_IdVar_16s32s_D2_Sfs_M7_Al(const qel16s* pSrc, int step, const qel16s* pMean,
                                             int width, qel32s* pDst, int height,
                                             const qel32s* pVal, int scaleFactor);
void qelsLGaussLow_IdVar_16s32s_D2L_Sfs_M7(const qel16s* const* ppSrc, const qel16s* pMean,
                                           int width, qel32s* pDst, int height, const qel32s* pVal,
                                           int scaleFactor);
void qelsLGaussLow_IdVar_16s32s_D2L_Sfs_M7_Al(const qel16s* const* ppSrc, const qel16s* pMean,
                                              int width, qel32s* pDst, int height,
                                              const qel32s* pVal, int scaleFactor);
void qelsLGaussLow_IdVar_16s32f_D2_M7(const qel16s* pSrc, int step, const qel16s* pMean, int width,
                                      qel32f* pDst, int height, const qel32f* pVal,
                                      int scaleFactor);
void qelsLGaussLow_IdVar_16s32f_D2_M7_Al(const qel16s* pSrc, int step, const qel16s* pMean,
                                         int width, qel32f* pDst, int height, const qel32f* pVal,
                                         int scaleFactor);
void qelsLGaussLow_IdVar_16s32f_D2L_M7(const qel16s* const* ppSrc, const qel16s* pMean, int width,
                                       qel32f* pDst, int height, const qel32f* pVal,
                                       int scaleFactor);
void qelsLGaussLow_IdVar_16s32f_D2L_M7_Al(const qel16s* const* ppSrc, const qel16s* pMean,
                                          int width, qel32f* pDst, int height, const qel32f* pVal,
                                          int scaleFactor);
void qelsLGaussMax_16s32s_M7(const qel16s* pSrc, int step, const qel16s* pMean, const qel16s* pVar,
                             int width, qel32s* pDst, int height, const qel32s* pVal,
                             const qel32f* pScale);
void qelsLGaussMax_16s32s_M7_Al(const qel16s* pSrc, int step, const qel16s* pMean,
                                const qel16s* pVar, int width, qel32s* pDst, int height,
                                const qel32s* pVal, const qel32f* pScale);
void qelsLGaussMax_16s32s_D2LSfs_M7(const qel16s* const* ppSrc, const qel16s* pMean,
                                    const qel16s* pVar, int width, qel32s* pDst, int height,
                                    const qel32s* pVal, const qel32f* pScale);
void qelsLGaussMax_16s32s_D2LSfs_M7_Al(const qel16s* const* ppSrc, const qel16s* pMean,
                                       const qel16s* pVar, int width, qel32s* pDst, int height,
                                       const qel32s* pVal, const qel32f* pScale);
void qelsLGaussMax_16s32f_D2_M7(const qel16s* pSrc, int step, const qel16s* pMean,
                                const qel16s* pVar, int width, qel32f* pDst, int height,
                                const qel32f* pVal, const qel32f* pScale);
void qelsLGaussMax_16s32f_D2_M7_Al(const qel16s* pSrc, int step, const qel16s* pMean,
                                   const qel16s* pVar, int width, qel32f* pDst, int height,
                                   const qel32f* pVal, const qel32f* pScale);
void qelsLGaussMax_16s32f_D2L_M7(const qel16s* const* ppSrc, const qel16s* pMean,
                                 const qel16s* pVar, int width, qel32f* pDst, int height,
                                 const qel32f* pVal, const qel32f* pScale);
void qelsLGaussMax_16s32f_D2L_M7_Al(const qel16s* const* ppSrc, const qel16s* pMean,
                                    const qel16s* pVar, int width, qel32f* pDst, int height,
                                    const qel32f* pVal, const qel32f* pScale);
void qelsLGaussMaxLow_16s32s_D2_M7(const qel16s* pSrc, int step, const qel16s* pMean,
                                   const qel16s* pVar, int width, qel32s* pDst, int height,
                                   const qel32s* pVal, int scaleFactor);
void qelsLGaussMaxLow_16s32s_D2_M7_Al(const qel16s* pSrc, int step, const qel16s* pMean,
                                      const qel16s* pVar, int width, qel32s* pDst, int height,
                                      const qel32s* pVal, int scaleFactor);
void qelsLGaussMaxLow_16s32s_D2L_M7(const qel16s* const* ppSrc, const qel16s* pMean,
                                    const qel16s* pVar, int width, qel32s* pDst, int height,
                                    const qel32s* pVal, int scaleFactor);
void qelsLGaussMaxLow_16s32s_D2L_M7_Al(const qel16s* const* ppSrc, const qel16s* pMean,
                                       const qel16s* pVar, int width, qel32s* pDst, int height,
                                       const qel32s* pVal, int scaleFactor);
void qelsLGaussMaxLow_16s32f_D2_M7(const qel16s* pSrc, int step, const qel16s* pMean,
                                   const qel16s* pVar, int width, qel32f* pDst, int height,
                                   const qel32f* pVal, int scaleFactor);
void qelsLGaussMaxLow_16s32f_D2_M7_Al(const qel16s* pSrc, int step, const qel16s* pMean,
                                      const qel16s* pVar, int width, qel32f* pDst, int height,
                                      const qel32f* pVal, int scaleFactor);
void qelsLGaussMaxLow_16s32f_D2L_M7(const qel16s* const* ppSrc, const qel16s* pMean,
                                    const qel16s* pVar, int width, qel32f* pDst, int height,
                                    const qel32f* pVal, int scaleFactor);
void qelsLGaussMaxLow_16s32f_D2L_M7_Al(const qel16s* const* ppSrc, const qel16s* pMean,
                                       const qel16s* pVar, int width, qel32f* pDst, int height,
                                       const qel32f* pVal, int scaleFactor);
void qelsLGaussMax_IdVar_16s32s_D2Sfs_M7(const qel16s* pSrc, int step, const qel16s* pMean,
                                         int width, qel32s* pDst, int height, const qel32s* pVal,
                                         const qel32f* pScale);
void qelsLGaussMax_IdVar_16s32s_D2Sfs_M7_Al(const qel16s* pSrc, int step, const qel16s* pMean,
                                            int width, qel32s* pDst, int height, const qel32s* pVal,
                                            const qel32f* pScale);
void qelsLGaussMax_IdVar_16s32s_D2LSfs_M7(const qel16s* const* ppSrc, const qel16s* pMean,
                                          int width, qel32s* pDst, int height, const qel32s* pVal,
                                          const qel32f* pScale);
void qelsLGaussMax_IdVar_16s32s_D2LSfs_M7_Al(const qel16s* const* ppSrc, const qel16s* pMean,
                                             int width, qel32s* pDst, int height,
                                             const qel32s* pVal, const qel32f* pScale);
void qelsLGaussMax_IdVar_16s32f_D2_M7(const qel16s* pSrc, int step, const qel16s* pMean, int width,
                                      qel32f* pDst, int height, const qel32f* pVal,
                                      const qel32f* pScale);
void qelsLGaussMax_IdVar_16s32f_D2_M7_Al(const qel16s* pSrc, int step, const qel16s* pMean,
                                         int width, qel32f* pDst, int height, const qel32f* pVal,
                                         const qel32f* pScale);
void qelsLGaussMax_IdVar_16s32f_D2L_M7(const qel16s* const* ppSrc, const qel16s* pMean, int width,
                                       qel32f* pDst, int height, const qel32f* pVal,
                                       const qel32f* pScale);
void qelsLGaussMax_IdVar_16s32f_D2L_M7_Al(const qel16s* const* ppSrc, const qel16s* pMean,
                                          int width, qel32f* pDst, int height, const qel32f* pVal,
                                          const qel32f* pScale);
void qelsLGaussMaxLow_IdVar_16s32s_D2_Sfs_M7(const qel16s* pSrc, int step, const qel16s* pMean,
                                             int width, qel32s* pDst, int height,
                                             const qel32s* pVal, int scaleFactor);
void qelsLGaussMaxLow_IdVar_16s32s_D2_Sfs_M7_Al(const qel16s* pSrc, int step, const qel16s* pMean,
                                                int width, qel32s* pDst, int height,
                                                const qel32s* pVal, int scaleFactor);
void qelsLGaussMaxLow_IdVar_16s32s_D2L_Sfs_M7(const qel16s* const* ppSrc, const qel16s* pMean,
                                              int width, qel32s* pDst, int height,
                                              const qel32s* pVal, int scaleFactor);
void qelsLGaussMaxLow_IdVar_16s32s_D2L_Sfs_M7_Al(const qel16s* const* ppSrc, const qel16s* pMean,
                                                 int width, qel32s* pDst, int height,
                                                 const qel32s* pVal, int scaleFactor);
void qelsLGaussMaxLow_IdVar_16s32f_D2_M7(const qel16s* pSrc, int step, const qel16s* pMean,
                                         int width, qel32f* pDst, int height, const qel32f* pVal,
                                         int scaleFactor);
void qelsLGaussMaxLow_IdVar_16s32f_D2_M7_Al(const qel16s* pSrc, int step, const qel16s* pMean,
                                            int width, qel32f* pDst, int height, const qel32f* pVal,
                                            int scaleFactor);
void qelsLGaussMaxLow_IdVar_16s32f_D2L_M7(const qel16s* const* ppSrc, const qel16s* pMean,
                                          int width, qel32f* pDst, int height, const qel32f* pVal,
                                          int scaleFactor);
void qelsLGaussMaxLow_IdVar_16s32f_D2L_M7_Al(const qel16s* const* ppSrc, const qel16s* pMean,
                                             int width, qel32f* pDst, int height,
                                             const qel32f* pVal, int scaleFactor);
void qelsLGaussMultiMix_16s32s_D2Sfs_M7(const qel16s* pMean, const qel16s* pVar, int step,
                                        const qel16s* pSrc, int width, qel32s* pSrcDst, int height,
                                        int scaleFactor);
void qelsLGaussMultiMix_16s32s_D2Sfs_M7_Al(const qel16s* pMean, const qel16s* pVar, int step,
                                           const qel16s* pSrc, int width, qel32s* pSrcDst,
                                           int height, int scaleFactor);
void qelsLGaussMultiMix_16s32s_D2LSfs_M7(const qel16s* const* ppMean, const qel16s* const* ppVar,
                                         const qel16s* pSrc, int width, qel32s* pSrcDst, int height,
                                         int scaleFactor);
void qelsLGaussMultiMix_16s32s_D2LSfs_M7_Al(const qel16s* const* ppMean, const qel16s* const* ppVar,
                                            const qel16s* pSrc, int width, qel32s* pSrcDst,
                                            int height, int scaleFactor);
void qelsLGaussMultiMix_16s32f_D2_M7(const qel16s* pMean, const qel16s* pVar, int step,
                                     const qel16s* pSrc, int width, qel32f* pSrcDst, int height,
                                     const qel32f* pScale);
void qelsLGaussMultiMix_16s32f_D2_M7_Al(const qel16s* pMean, const qel16s* pVar, int step,
                                        const qel16s* pSrc, int width, qel32f* pSrcDst, int height,
                                        const qel32f* pScale);
void qelsLGaussMultiMix_16s32f_D2L_M7(const qel16s* const* ppMean, const qel16s* const* ppVar,
                                      const qel16s* pSrc, int width, qel32f* pSrcDst, int height,
                                      const qel32f* pScale);
void qelsLGaussMultiMix_16s32f_D2L_M7_Al(const qel16s* const* ppMean, const qel16s* const* ppVar,
                                         const qel16s* pSrc, int width, qel32f* pSrcDst, int height,
                                         const qel32f* pScale);
void qelsLGaussMultiMixLow_16s32s_D2Sfs_M7(const qel16s* pMean, const qel16s* pVar, int step,
                                           const qel16s* pSrc, int width, qel32s* pSrcDst,
                                           int height, int scaleFactor);
void qelsLGaussMultiMixLow_16s32s_D2Sfs_M7_Al(const qel16s* pMean, const qel16s* pVar, int step,
                                              const qel16s* pSrc, int width, qel32s* pSrcDst,
                                              int height, int scaleFactor);
void qelsLGaussMultiMixLow_16s32s_D2LSfs_M7(const qel16s* const* ppMean, const qel16s* const* ppVar,
                                            const qel16s* pSrc, int width, qel32s* pSrcDst,
                                            int height, int scaleFactor);
void qelsLGaussMultiMixLow_16s32s_D2LSfs_M7_Al(const qel16s* const* ppMean,
                                               const qel16s* const* ppVar, const qel16s* pSrc,
                                               int width, qel32s* pSrcDst, int height,
                                               int scaleFactor);
void qelsLGaussMultiMixLow_16s32f_D2_M7(const qel16s* pMean, const qel16s* pVar, int step,
                                        const qel16s* pSrc, int width, qel32f* pSrcDst, int height,
                                        int scaleFactor);
void qelsLGaussMultiMixLow_16s32f_D2_M7_Al(const qel16s* pMean, const qel16s* pVar, int step,
                                           const qel16s* pSrc, int width, qel32f* pSrcDst,
                                           int height, int scaleFactor);
void qelsLGaussMultiMixLow_16s32f_D2L_M7(const qel16s* const* ppMean, const qel16s* const* ppVar,
                                         const qel16s* pSrc, int width, qel32f* pSrcDst, int height,
                                         int scaleFactor);
void qelsLGaussMultiMixLow_16s32f_D2L_M7_Al(const qel16s* const* ppMean, const qel16s* const* ppVar,
                                            const qel16s* pSrc, int width, qel32f* pSrcDst,
                                            int height, int scaleFactor);
void qelsLGaussMaxMultiMix_16s32s_D2Sfs_M7(const qel16s* pMean, const qel16s* pVar, int step,
                                           const qel16s* pSrc, int width, const qel32s* pVal,
                                           qel32s* pSrcDst, int height, const qel32f* pScale);
void qelsLGaussMaxMultiMix_16s32s_D2Sfs_M7_Al(const qel16s* pMean, const qel16s* pVar, int step,
                                              const qel16s* pSrc, int width, const qel32s* pVal,
                                              qel32s* pSrcDst, int height, const qel32f* pScale);
void qelsLGaussMaxMultiMix_16s32s_D2LSfs_M7(const qel16s* const* ppMean, const qel16s* const* ppVar,
                                            const qel16s* pSrc, int width, const qel32s* pVal,
                                            qel32s* pSrcDst, int height, const qel32f* pScale);
void qelsLGaussMaxMultiMix_16s32s_D2LSfs_M7_Al(const qel16s* const* ppMean,
                                               const qel16s* const* ppVar, const qel16s* pSrc,
                                               int width, const qel32s* pVal, qel32s* pSrcDst,
                                               int height, const qel32f* pScale);
void qelsLGaussMaxMultiMix_16s32f_D2_M7(const qel16s* pMean, const qel16s* pVar, int step,
                                        const qel16s* pSrc, int width, const qel32f* pVal,
                                        qel32f* pSrcDst, int height, const qel32f* pScale);
void qelsLGaussMaxMultiMix_16s32f_D2_M7_Al(const qel16s* pMean, const qel16s* pVar, int step,
                                           const qel16s* pSrc, int width, const qel32f* pVal,
                                           qel32f* pSrcDst, int height, const qel32f* pScale);
void qelsLGaussMaxMultiMix_16s32f_D2L_M7(const qel16s* const* ppMean, const qel16s* const* ppVar,
                                         const qel16s* pSrc, int width, const qel32f* pVal,
                                         qel32f* pSrcDst, int height, const qel32f* pScale);
void qelsLGaussMaxMultiMix_16s32f_D2L_M7_Al(const qel16s* const* ppMean, const qel16s* const* ppVar,
                                            const qel16s* pSrc, int width, const qel32f* pVal,
                                            qel32f* pSrcDst, int height, const qel32f* pScale);
void qelsLGaussMaxMultiMixLow_16s32s_D2Sfs_M7(const qel16s* pMean, const qel16s* pVar, int step,
                                              const qel16s* pSrc, int width, const qel32s* pVal,
                                              qel32s* pSrcDst, int height, int scaleFactor);
void qelsLGaussMaxMultiMixLow_16s32s_D2Sfs_M7_Al(const qel16s* pMean, const qel16s* pVar, int step,
                                                 const qel16s* pSrc, int width, const qel32s* pVal,
                                                 qel32s* pSrcDst, int height, int scaleFactor);
void qelsLGaussMaxMultiMixLow_16s32s_D2LSfs_M7(const qel16s* const* ppMean,
                                               const qel16s* const* ppVar, const qel16s* pSrc,
                                               int width, const qel32s* pVal, qel32s* pSrcDst,
                                               int height, int scaleFactor);
void qelsLGaussMaxMultiMixLow_16s32s_D2LSfs_M7_Al(const qel16s* const* ppMean,
                                                  const qel16s* const* ppVar, const qel16s* pSrc,
                                                  int width, const qel32s* pVal, qel32s* pSrcDst,
                                                  int height, int scaleFactor);
void qelsLGaussMaxMultiMixLow_16s32f_D2_M7(const qel16s* pMean, const qel16s* pVar, int step,
                                           const qel16s* pSrc, int width, const qel32f* pVal,
                                           qel32f* pSrcDst, int height, int scaleFactor);
void qelsLGaussMaxMultiMixLow_16s32f_D2_M7_Al(const qel16s* pMean, const qel16s* pVar, int step,
                                              const qel16s* pSrc, int width, const qel32f* pVal,
                                              qel32f* pSrcDst, int height, int scaleFactor);
void qelsLGaussMaxMultiMixLow_16s32f_D2L_M7(const qel16s* const* ppMean, const qel16s* const* ppVar,
                                            const qel16s* pSrc, int width, const qel32f* pVal,
                                            qel32f* pSrcDst, int height, int scaleFactor);
void qelsLGaussMaxMultiMixLow_16s32f_D2L_M7_Al(const qel16s* const* ppMean,
                                               const qel16s* const* ppVar, const qel16s* pSrc,
                                               int width, const qel32f* pVal, qel32f* pSrcDst,
                                               int height, int scaleFactor);

// ---- Gaussian selection
// Sign table of short rows, one 32-bit word per selected table row. Returns
// 1 with nothing written when an index leaves 0..tableRows-1, else 0. Only
// for 4 <= nBits <= 24, table rows with at least 32 bytes behind
// ceil8(bitOffset + nBits), and height * ceil8(nBits) above 4; never writes
// beyond the height * ceil8(nBits) bytes of the table.
int qelsBuildSignTable_8u1u_M7(const qel32s* pIndx, int nPerRow, const qel8u* const* ppTable,
                               int tableRows, int bitOffset, qel8u* pSign, int height, int nBits);

// 256-bit twins of the hottest single-precision kernels, for processors
// with AVX2. Each gives the same bits as its 16-byte namesake (the name
// without _Avx2) on every input: every row or component keeps its 4-lane
// accumulator and its order of operations, two of them sharing one
// register. They must only run where ownGaussWideKernels() is nonzero.
//
// ownGaussWideKernels: nonzero when the processor (and the system) support
// AVX2. The answer is asked on the first call and kept in a function-local
// constant: the only state, set once and never changed. It lives in a file
// built for the baseline instruction set.
int ownGaussWideKernels(void);
void qelsLogGauss_32f_D2_M7_Avx2(const qel32f* pSrc, int step, const qel32f* pMean,
                                 const qel32f* pVar, int width, qel32f* pDst, int height,
                                 const qel32f* pVal);
void qelsLogGauss_32f_D2_M7_Al_Avx2(const qel32f* pSrc, int step, const qel32f* pMean,
                                    const qel32f* pVar, int width, qel32f* pDst, int height,
                                    const qel32f* pVal);
void qelsLGauss_IdVar_32f_D2_M7_Avx2(const qel32f* pSrc, int step, const qel32f* pMean, int width,
                                     qel32f* pDst, int height, const qel32f* pVal);
void qelsLGauss_IdVar_32f_D2_M7_Al_Avx2(const qel32f* pSrc, int step, const qel32f* pMean,
                                        int width, qel32f* pDst, int height, const qel32f* pVal);
void qelsLGaussMax_32f_D2_M7_Avx2(const qel32f* pSrc, int step, const qel32f* pMean,
                                  const qel32f* pVar, int width, qel32f* pDst, int height,
                                  const qel32f* pVal);
void qelsLGaussMax_32f_D2_M7_Al_Avx2(const qel32f* pSrc, int step, const qel32f* pMean,
                                     const qel32f* pVar, int width, qel32f* pDst, int height,
                                     const qel32f* pVal);
void qelsLGaussMax_IdVar_32f_D2_M7_Avx2(const qel32f* pSrc, int step, const qel32f* pMean,
                                        int width, qel32f* pDst, int height, const qel32f* pVal);
void qelsLGaussMax_IdVar_32f_D2_M7_Al_Avx2(const qel32f* pSrc, int step, const qel32f* pMean,
                                           int width, qel32f* pDst, int height,
                                           const qel32f* pVal);
void qelsLGaussMultiMix_32f_D2_M7_Avx2(const qel32f* pMean, const qel32f* pVar, int step,
                                       const qel32f* pSrc, int width, qel32f* pSrcDst, int height);
void qelsLGaussMultiMix_32f_D2_M7_Al_Avx2(const qel32f* pMean, const qel32f* pVar, int step,
                                          const qel32f* pSrc, int width, qel32f* pSrcDst,
                                          int height);
void qelsLGaussMultiMix_32f_D2L_M7_Avx2(const qel32f* const* ppMean, const qel32f* const* ppVar,
                                        const qel32f* pSrc, int width, qel32f* pSrcDst,
                                        int height);
void qelsLGaussMultiMix_32f_D2L_M7_Al_Avx2(const qel32f* const* ppMean,
                                           const qel32f* const* ppVar, const qel32f* pSrc,
                                           int width, qel32f* pSrcDst, int height);
void qelsLGaussMaxMultiMix_32f_D2_M7_Avx2(const qel32f* pMean, const qel32f* pVar, int step,
                                          const qel32f* pSrc, int width, const qel32f* pVal,
                                          qel32f* pSrcDst, int height);
void qelsLGaussMaxMultiMix_32f_D2_M7_Al_Avx2(const qel32f* pMean, const qel32f* pVar, int step,
                                             const qel32f* pSrc, int width, const qel32f* pVal,
                                             qel32f* pSrcDst, int height);
void qelsLGaussMaxMultiMix_32f_D2L_M7_Avx2(const qel32f* const* ppMean,
                                           const qel32f* const* ppVar, const qel32f* pSrc,
                                           int width, const qel32f* pVal, qel32f* pSrcDst,
                                           int height);
void qelsLGaussMaxMultiMix_32f_D2L_M7_Al_Avx2(const qel32f* const* ppMean,
                                              const qel32f* const* ppVar, const qel32f* pSrc,
                                              int width, const qel32f* pVal, qel32f* pSrcDst,
                                              int height);

}  // extern "C"

#endif
