// Kernels of the 16-bit scores. The single-observation kernels fold each
// group of 8 columns into a running sum; the block and mixture kernels give
// every row a 4-lane accumulator (fixed_scoring_rows.h has the orders). Each
// `_Al` twin differs from its general form only in its loads, so the twins
// agree bit for bit. Arguments are not checked.
#include "base/base.h"
#include "gauss/fixed_scoring_body.h"
#include "gauss/gauss.h"

using namespace qelsr::fixedpt;

namespace {

// Single observation, single-precision sum with the integer power of two:
// single(val) - S / 2^(sf+1), converted by rounding to nearest with
// saturation.
template <Wt W, bool Al>
void singleIntPow(const qel16s* pSrc, const qel16s* pMean, const qel16s* pVar, int len,
                  qel32s* pResult, const qel32s* pVal, int scaleFactor) {
  const float S = singleSum<W, Al>(pSrc, pMean, pVar, len);
  const float v =
      static_cast<float>(*pVal) - scaleByIntPow2(S, static_cast<long long>(scaleFactor) + 1);
  qelsConvert_32f32s_Sfs(&v, pResult, 1, 1, 0);
}

// Split 32-bit sums for sf >= 0; a negative sf (pVar members) takes the
// single-precision sum with the integer power and truncation.
template <bool Unit, bool Al>
void singleLow32s(const qel16s* pSrc, const qel16s* pMean, const qel16s* pVar, int len,
                  qel32s* pResult, const qel32s* pVal, int scaleFactor) {
  if (scaleFactor >= 0 || Unit) {
    *pResult =
        addWrap(*pVal, lowSingleRow<Unit, Al>(pSrc, pMean, pVar, len, lowShift(scaleFactor)));
    return;
  }
  const float S = singleSum<Wt::Inv, Al>(pSrc, pMean, pVar, len);
  *pResult = truncSat(static_cast<float>(*pVal) -
                      scaleByIntPow2(S, static_cast<long long>(scaleFactor) + 1));
}

template <bool Al>
void singleLow32f(const qel16s* pSrc, const qel16s* pMean, const qel16s* pVar, int len,
                  qel32f* pResult, const qel32f* pVal, int scaleFactor) {
  if (scaleFactor >= 0) {
    const std::uint32_t r = lowSingleRow<false, Al>(pSrc, pMean, pVar, len, lowShift(scaleFactor));
    *pResult = *pVal + static_cast<float>(static_cast<qel32s>(r));
    return;
  }
  const float S = singleSum<Wt::Inv, Al>(pSrc, pMean, pVar, len);
  *pResult = *pVal - scaleByIntPow2(S, static_cast<long long>(scaleFactor) + 1);
}

}  // namespace

extern "C" {

// ---- single observation

void qelsLGaussSingle_16s32s_Sfs_M7(const qel16s* pSrc, const qel16s* pMean, const qel16s* pVar,
                                    int len, qel32s* pResult, const qel32s* pVal, int scaleFactor) {
  singleIntPow<Wt::Inv, false>(pSrc, pMean, pVar, len, pResult, pVal, scaleFactor);
}
void qelsLGaussSingle_16s32s_Sfs_M7_Al(const qel16s* pSrc, const qel16s* pMean, const qel16s* pVar,
                                       int len, qel32s* pResult, const qel32s* pVal,
                                       int scaleFactor) {
  singleIntPow<Wt::Inv, true>(pSrc, pMean, pVar, len, pResult, pVal, scaleFactor);
}
void qelsLGaussSingle_16s32f_M7(const qel16s* pSrc, const qel16s* pMean, const qel16s* pVar,
                                int len, qel32f* pResult, const qel32f* pVal,
                                const qel32f* pScale) {
  *pResult = *pVal - singleSum<Wt::Inv, false>(pSrc, pMean, pVar, len) * *pScale;
}
void qelsLGaussSingle_16s32f_M7_Al(const qel16s* pSrc, const qel16s* pMean, const qel16s* pVar,
                                   int len, qel32f* pResult, const qel32f* pVal,
                                   const qel32f* pScale) {
  *pResult = *pVal - singleSum<Wt::Inv, true>(pSrc, pMean, pVar, len) * *pScale;
}
void qelsLGaussSingleLow_16s32s_Sfs_M7(const qel16s* pSrc, const qel16s* pMean, const qel16s* pVar,
                                       int len, qel32s* pResult, const qel32s* pVal,
                                       int scaleFactor) {
  singleLow32s<false, false>(pSrc, pMean, pVar, len, pResult, pVal, scaleFactor);
}
void qelsLGaussSingleLow_16s32s_Sfs_M7_Al(const qel16s* pSrc, const qel16s* pMean,
                                          const qel16s* pVar, int len, qel32s* pResult,
                                          const qel32s* pVal, int scaleFactor) {
  singleLow32s<false, true>(pSrc, pMean, pVar, len, pResult, pVal, scaleFactor);
}
void qelsLGaussSingleLow_16s32f_M7(const qel16s* pSrc, const qel16s* pMean, const qel16s* pVar,
                                   int len, qel32f* pResult, const qel32f* pVal, int scaleFactor) {
  singleLow32f<false>(pSrc, pMean, pVar, len, pResult, pVal, scaleFactor);
}
void qelsLGaussSingleLow_16s32f_M7_Al(const qel16s* pSrc, const qel16s* pMean, const qel16s* pVar,
                                      int len, qel32f* pResult, const qel32f* pVal,
                                      int scaleFactor) {
  singleLow32f<true>(pSrc, pMean, pVar, len, pResult, pVal, scaleFactor);
}
void qelsLGaussSingle_IdVar_16s32s_Sfs_M7(const qel16s* pSrc, const qel16s* pMean, int len,
                                          qel32s* pResult, const qel32s* pVal, int scaleFactor) {
  singleIntPow<Wt::Unit, false>(pSrc, pMean, nullptr, len, pResult, pVal, scaleFactor);
}
void qelsLGaussSingle_IdVar_16s32s_Sfs_M7_Al(const qel16s* pSrc, const qel16s* pMean, int len,
                                             qel32s* pResult, const qel32s* pVal, int scaleFactor) {
  singleIntPow<Wt::Unit, true>(pSrc, pMean, nullptr, len, pResult, pVal, scaleFactor);
}
void qelsLGaussSingle_IdVar_16s32f_M7(const qel16s* pSrc, const qel16s* pMean, int len,
                                      qel32f* pResult, const qel32f* pVal, const qel32f* pScale) {
  *pResult = *pVal - singleSum<Wt::Unit, false>(pSrc, pMean, nullptr, len) * *pScale;
}
void qelsLGaussSingle_IdVar_16s32f_M7_Al(const qel16s* pSrc, const qel16s* pMean, int len,
                                         qel32f* pResult, const qel32f* pVal,
                                         const qel32f* pScale) {
  *pResult = *pVal - singleSum<Wt::Unit, true>(pSrc, pMean, nullptr, len) * *pScale;
}
void qelsLGaussSingleLow_IdVar_16s32s_Sfs_M7(const qel16s* pSrc, const qel16s* pMean, int len,
                                             qel32s* pResult, const qel32s* pVal, int scaleFactor) {
  singleLow32s<true, false>(pSrc, pMean, nullptr, len, pResult, pVal, scaleFactor);
}
void qelsLGaussSingleLow_IdVar_16s32s_Sfs_M7_Al(const qel16s* pSrc, const qel16s* pMean, int len,
                                                qel32s* pResult, const qel32s* pVal,
                                                int scaleFactor) {
  singleLow32s<true, true>(pSrc, pMean, nullptr, len, pResult, pVal, scaleFactor);
}
void qelsLGaussSingle_IdVarLow_16s32f_M7(const qel16s* pSrc, const qel16s* pMean, int len,
                                         qel32f* pResult, const qel32f* pVal, int scaleFactor) {
  const float S = singleSum<Wt::Pairs, false>(pSrc, pMean, nullptr, len);
  *pResult = *pVal - scaleByIntPow2(S, static_cast<long long>(scaleFactor) + 1);
}
void qelsLGaussSingle_IdVarLow_16s32f_M7_Al(const qel16s* pSrc, const qel16s* pMean, int len,
                                            qel32f* pResult, const qel32f* pVal, int scaleFactor) {
  const float S = singleSum<Wt::Pairs, true>(pSrc, pMean, nullptr, len);
  *pResult = *pVal - scaleByIntPow2(S, static_cast<long long>(scaleFactor) + 1);
}
void qelsLGaussSingle_DirectVar_16s32f_M7(const qel16s* pSrc, const qel16s* pMean,
                                          const qel32f* pInvVar, int len, qel32f* pResult,
                                          const qel32f* pVal, const qel32f* pScale) {
  *pResult = *pVal - (singleSum<Wt::Direct, false>(pSrc, pMean, pInvVar, len) * 0.5f) * *pScale;
}
void qelsLGaussSingle_DirectVar_16s32f_M7_Al(const qel16s* pSrc, const qel16s* pMean,
                                             const qel32f* pInvVar, int len, qel32f* pResult,
                                             const qel32f* pVal, const qel32f* pScale) {
  *pResult = *pVal - (singleSum<Wt::Direct, true>(pSrc, pMean, pInvVar, len) * 0.5f) * *pScale;
}
void sMahDistSingle_16s32f_M7(const qel16s* pSrc, const qel16s* pMean, const qel16s* pVar, int len,
                              qel32f* pResult) {
  *pResult = singleSum<Wt::Inv, true>(pSrc, pMean, pVar, len);
}
void sMahDistSingle_16s32s_Sfs_M7(const qel16s* pSrc, const qel16s* pMean, const qel16s* pVar,
                                  int len, qel32s* pResult, int scaleFactor) {
  const float S = singleSum<Wt::Inv, true>(pSrc, pMean, pVar, len);
  qelsConvert_32f32s_Sfs(&S, pResult, 1, 1, scaleFactor);
}

// ---- blocks of frames and mixtures

void qelsLGauss_16s32s_D2_M7(const qel16s* pSrc, int step, const qel16s* pMean, const qel16s* pVar,
                             int width, qel32s* pDst, int height, const qel32s* pVal,
                             int scaleFactor) {
  rowsKernel<Fl::InvP32s, Mode::Store, false>(FramesD2{pSrc, step, pMean, pVar}, width, pDst,
                                              height, pVal, 0, scaleFactor, 0.0f);
}

void qelsLGauss_16s32s_D2_M7_Al(const qel16s* pSrc, int step, const qel16s* pMean,
                                const qel16s* pVar, int width, qel32s* pDst, int height,
                                const qel32s* pVal, int scaleFactor) {
  rowsKernel<Fl::InvP32s, Mode::Store, true>(FramesD2{pSrc, step, pMean, pVar}, width, pDst, height,
                                             pVal, 0, scaleFactor, 0.0f);
}

void qelsLGauss_16s32s_D2L_M7(const qel16s* const* ppSrc, const qel16s* pMean, const qel16s* pVar,
                              int width, qel32s* pDst, int height, const qel32s* pVal,
                              int scaleFactor) {
  rowsKernel<Fl::InvP32s, Mode::Store, false>(FramesD2L{ppSrc, pMean, pVar}, width, pDst, height,
                                              pVal, 0, scaleFactor, 0.0f);
}

void qelsLGauss_16s32s_D2L_M7_Al(const qel16s* const* ppSrc, const qel16s* pMean,
                                 const qel16s* pVar, int width, qel32s* pDst, int height,
                                 const qel32s* pVal, int scaleFactor) {
  rowsKernel<Fl::InvP32s, Mode::Store, true>(FramesD2L{ppSrc, pMean, pVar}, width, pDst, height,
                                             pVal, 0, scaleFactor, 0.0f);
}

void qelsLGauss_16s32f_M7(const qel16s* pSrc, int step, const qel16s* pMean, const qel16s* pVar,
                          int width, qel32f* pDst, int height, const qel32f* pVal,
                          const qel32f* pScale) {
  rowsKernel<Fl::InvK32f, Mode::Store, false>(FramesD2{pSrc, step, pMean, pVar}, width, pDst,
                                              height, pVal, 0, 0, *pScale);
}

void qelsLGauss_16s32f_M7_Al(const qel16s* pSrc, int step, const qel16s* pMean, const qel16s* pVar,
                             int width, qel32f* pDst, int height, const qel32f* pVal,
                             const qel32f* pScale) {
  rowsKernel<Fl::InvK32f, Mode::Store, true>(FramesD2{pSrc, step, pMean, pVar}, width, pDst, height,
                                             pVal, 0, 0, *pScale);
}

void qelsLGauss_16s32f_D2L_M7(const qel16s* const* ppSrc, const qel16s* pMean, const qel16s* pVar,
                              int width, qel32f* pDst, int height, const qel32f* pVal,
                              const qel32f* pScale) {
  rowsKernel<Fl::InvK32f, Mode::Store, false>(FramesD2L{ppSrc, pMean, pVar}, width, pDst, height,
                                              pVal, 0, 0, *pScale);
}

void qelsLGauss_16s32f_D2L_M7_Al(const qel16s* const* ppSrc, const qel16s* pMean,
                                 const qel16s* pVar, int width, qel32f* pDst, int height,
                                 const qel32f* pVal, const qel32f* pScale) {
  rowsKernel<Fl::InvK32f, Mode::Store, true>(FramesD2L{ppSrc, pMean, pVar}, width, pDst, height,
                                             pVal, 0, 0, *pScale);
}

void qelsLGaussLow_16s32s_D2_M7(const qel16s* pSrc, int step, const qel16s* pMean,
                                const qel16s* pVar, int width, qel32s* pDst, int height,
                                const qel32s* pVal, int scaleFactor) {
  rowsKernel<Fl::Low32s, Mode::Store, false>(FramesD2{pSrc, step, pMean, pVar}, width, pDst, height,
                                             pVal, 0, scaleFactor, 0.0f);
}

void qelsLGaussLow_16s32s_D2_M7_Al(const qel16s* pSrc, int step, const qel16s* pMean,
                                   const qel16s* pVar, int width, qel32s* pDst, int height,
                                   const qel32s* pVal, int scaleFactor) {
  rowsKernel<Fl::Low32s, Mode::Store, true>(FramesD2{pSrc, step, pMean, pVar}, width, pDst, height,
                                            pVal, 0, scaleFactor, 0.0f);
}

void qelsLGaussLow_16s32s_D2L_M7(const qel16s* const* ppSrc, const qel16s* pMean,
                                 const qel16s* pVar, int width, qel32s* pDst, int height,
                                 const qel32s* pVal, int scaleFactor) {
  rowsKernel<Fl::Low32s, Mode::Store, false>(FramesD2L{ppSrc, pMean, pVar}, width, pDst, height,
                                             pVal, 0, scaleFactor, 0.0f);
}

void qelsLGaussLow_16s32s_D2L_M7_Al(const qel16s* const* ppSrc, const qel16s* pMean,
                                    const qel16s* pVar, int width, qel32s* pDst, int height,
                                    const qel32s* pVal, int scaleFactor) {
  rowsKernel<Fl::Low32s, Mode::Store, true>(FramesD2L{ppSrc, pMean, pVar}, width, pDst, height,
                                            pVal, 0, scaleFactor, 0.0f);
}

void qelsLGaussLow_16s32f_D2_M7(const qel16s* pSrc, int step, const qel16s* pMean,
                                const qel16s* pVar, int width, qel32f* pDst, int height,
                                const qel32f* pVal, int scaleFactor) {
  rowsKernel<Fl::Low32f, Mode::Store, false>(FramesD2{pSrc, step, pMean, pVar}, width, pDst, height,
                                             pVal, 0, scaleFactor, 0.0f);
}

void qelsLGaussLow_16s32f_D2_M7_Al(const qel16s* pSrc, int step, const qel16s* pMean,
                                   const qel16s* pVar, int width, qel32f* pDst, int height,
                                   const qel32f* pVal, int scaleFactor) {
  rowsKernel<Fl::Low32f, Mode::Store, true>(FramesD2{pSrc, step, pMean, pVar}, width, pDst, height,
                                            pVal, 0, scaleFactor, 0.0f);
}

void qelsLGaussLow_16s32f_D2L_M7(const qel16s* const* ppSrc, const qel16s* pMean,
                                 const qel16s* pVar, int width, qel32f* pDst, int height,
                                 const qel32f* pVal, int scaleFactor) {
  rowsKernel<Fl::Low32f, Mode::Store, false>(FramesD2L{ppSrc, pMean, pVar}, width, pDst, height,
                                             pVal, 0, scaleFactor, 0.0f);
}

void qelsLGaussLow_16s32f_D2L_M7_Al(const qel16s* const* ppSrc, const qel16s* pMean,
                                    const qel16s* pVar, int width, qel32f* pDst, int height,
                                    const qel32f* pVal, int scaleFactor) {
  rowsKernel<Fl::Low32f, Mode::Store, true>(FramesD2L{ppSrc, pMean, pVar}, width, pDst, height,
                                            pVal, 0, scaleFactor, 0.0f);
}

void qelsLGauss_IdVar_16s32s_D2_Sfs_M7(const qel16s* pSrc, int step, const qel16s* pMean, int width,
                                       qel32s* pDst, int height, const qel32s* pVal,
                                       int scaleFactor) {
  rowsKernel<Fl::PairsP32s, Mode::Store, false>(FramesD2{pSrc, step, pMean, nullptr}, width, pDst,
                                                height, pVal, 0, scaleFactor, 0.0f);
}

void qelsLGauss_IdVar_16s32s_D2_Sfs_M7_Al(const qel16s* pSrc, int step, const qel16s* pMean,
                                          int width, qel32s* pDst, int height, const qel32s* pVal,
                                          int scaleFactor) {
  rowsKernel<Fl::PairsP32s, Mode::Store, true>(FramesD2{pSrc, step, pMean, nullptr}, width, pDst,
                                               height, pVal, 0, scaleFactor, 0.0f);
}

void qelsLGauss_IdVar_16s32s_D2L_Sfs_M7(const qel16s* const* ppSrc, const qel16s* pMean, int width,
                                        qel32s* pDst, int height, const qel32s* pVal,
                                        int scaleFactor) {
  rowsKernel<Fl::PairsP32s, Mode::Store, false>(FramesD2L{ppSrc, pMean, nullptr}, width, pDst,
                                                height, pVal, 0, scaleFactor, 0.0f);
}

void qelsLGauss_IdVar_16s32s_D2L_Sfs_M7_Al(const qel16s* const* ppSrc, const qel16s* pMean,
                                           int width, qel32s* pDst, int height, const qel32s* pVal,
                                           int scaleFactor) {
  rowsKernel<Fl::PairsP32s, Mode::Store, true>(FramesD2L{ppSrc, pMean, nullptr}, width, pDst,
                                               height, pVal, 0, scaleFactor, 0.0f);
}

void qelsLGauss_IdVar_16s32f_D2_M7(const qel16s* pSrc, int step, const qel16s* pMean, int width,
                                   qel32f* pDst, int height, const qel32f* pVal,
                                   const qel32f* pScale) {
  rowsKernel<Fl::UnitK32f, Mode::Store, false>(FramesD2{pSrc, step, pMean, nullptr}, width, pDst,
                                               height, pVal, 0, 0, *pScale);
}

void qelsLGauss_IdVar_16s32f_D2_M7_Al(const qel16s* pSrc, int step, const qel16s* pMean, int width,
                                      qel32f* pDst, int height, const qel32f* pVal,
                                      const qel32f* pScale) {
  rowsKernel<Fl::UnitK32f, Mode::Store, true>(FramesD2{pSrc, step, pMean, nullptr}, width, pDst,
                                              height, pVal, 0, 0, *pScale);
}

void qelsLGauss_IdVar_16s32f_D2L_M7(const qel16s* const* ppSrc, const qel16s* pMean, int width,
                                    qel32f* pDst, int height, const qel32f* pVal,
                                    const qel32f* pScale) {
  rowsKernel<Fl::UnitK32f, Mode::Store, false>(FramesD2L{ppSrc, pMean, nullptr}, width, pDst,
                                               height, pVal, 0, 0, *pScale);
}

void qelsLGauss_IdVar_16s32f_D2L_M7_Al(const qel16s* const* ppSrc, const qel16s* pMean, int width,
                                       qel32f* pDst, int height, const qel32f* pVal,
                                       const qel32f* pScale) {
  rowsKernel<Fl::UnitK32f, Mode::Store, true>(FramesD2L{ppSrc, pMean, nullptr}, width, pDst, height,
                                              pVal, 0, 0, *pScale);
}

void qelsLGaussLow_IdVar_16s32s_D2_Sfs_M7(const qel16s* pSrc, int step, const qel16s* pMean,
                                          int width, qel32s* pDst, int height, const qel32s* pVal,
                                          int scaleFactor) {
  rowsKernel<Fl::IdLow32s, Mode::Store, false>(FramesD2{pSrc, step, pMean, nullptr}, width, pDst,
                                               height, pVal, 0, scaleFactor, 0.0f);
}

void qelsLGaussLow_IdVar_16s32s_D2_Sfs_M7_Al(const qel16s* pSrc, int step, const qel16s* pMean,
                                             int width, qel32s* pDst, int height,
                                             const qel32s* pVal, int scaleFactor) {
  rowsKernel<Fl::IdLow32s, Mode::Store, true>(FramesD2{pSrc, step, pMean, nullptr}, width, pDst,
                                              height, pVal, 0, scaleFactor, 0.0f);
}

void qelsLGaussLow_IdVar_16s32s_D2L_Sfs_M7(const qel16s* const* ppSrc, const qel16s* pMean,
                                           int width, qel32s* pDst, int height, const qel32s* pVal,
                                           int scaleFactor) {
  rowsKernel<Fl::IdLow32s, Mode::Store, false>(FramesD2L{ppSrc, pMean, nullptr}, width, pDst,
                                               height, pVal, 0, scaleFactor, 0.0f);
}

void qelsLGaussLow_IdVar_16s32s_D2L_Sfs_M7_Al(const qel16s* const* ppSrc, const qel16s* pMean,
                                              int width, qel32s* pDst, int height,
                                              const qel32s* pVal, int scaleFactor) {
  rowsKernel<Fl::IdLow32s, Mode::Store, true>(FramesD2L{ppSrc, pMean, nullptr}, width, pDst, height,
                                              pVal, 0, scaleFactor, 0.0f);
}

void qelsLGaussLow_IdVar_16s32f_D2_M7(const qel16s* pSrc, int step, const qel16s* pMean, int width,
                                      qel32f* pDst, int height, const qel32f* pVal,
                                      int scaleFactor) {
  rowsKernel<Fl::IdLow32f, Mode::Store, false>(FramesD2{pSrc, step, pMean, nullptr}, width, pDst,
                                               height, pVal, 0, scaleFactor, 0.0f);
}

void qelsLGaussLow_IdVar_16s32f_D2_M7_Al(const qel16s* pSrc, int step, const qel16s* pMean,
                                         int width, qel32f* pDst, int height, const qel32f* pVal,
                                         int scaleFactor) {
  rowsKernel<Fl::IdLow32f, Mode::Store, true>(FramesD2{pSrc, step, pMean, nullptr}, width, pDst,
                                              height, pVal, 0, scaleFactor, 0.0f);
}

void qelsLGaussLow_IdVar_16s32f_D2L_M7(const qel16s* const* ppSrc, const qel16s* pMean, int width,
                                       qel32f* pDst, int height, const qel32f* pVal,
                                       int scaleFactor) {
  rowsKernel<Fl::IdLow32f, Mode::Store, false>(FramesD2L{ppSrc, pMean, nullptr}, width, pDst,
                                               height, pVal, 0, scaleFactor, 0.0f);
}

void qelsLGaussLow_IdVar_16s32f_D2L_M7_Al(const qel16s* const* ppSrc, const qel16s* pMean,
                                          int width, qel32f* pDst, int height, const qel32f* pVal,
                                          int scaleFactor) {
  rowsKernel<Fl::IdLow32f, Mode::Store, true>(FramesD2L{ppSrc, pMean, nullptr}, width, pDst, height,
                                              pVal, 0, scaleFactor, 0.0f);
}

void qelsLGaussMax_16s32s_M7(const qel16s* pSrc, int step, const qel16s* pMean, const qel16s* pVar,
                             int width, qel32s* pDst, int height, const qel32s* pVal,
                             const qel32f* pScale) {
  rowsKernel<Fl::InvK32sRz, Mode::Max, false>(FramesD2{pSrc, step, pMean, pVar}, width, pDst,
                                              height, pVal, 0, 0, *pScale);
}

void qelsLGaussMax_16s32s_M7_Al(const qel16s* pSrc, int step, const qel16s* pMean,
                                const qel16s* pVar, int width, qel32s* pDst, int height,
                                const qel32s* pVal, const qel32f* pScale) {
  rowsKernel<Fl::InvK32sRz, Mode::Max, true>(FramesD2{pSrc, step, pMean, pVar}, width, pDst, height,
                                             pVal, 0, 0, *pScale);
}

void qelsLGaussMax_16s32s_D2LSfs_M7(const qel16s* const* ppSrc, const qel16s* pMean,
                                    const qel16s* pVar, int width, qel32s* pDst, int height,
                                    const qel32s* pVal, const qel32f* pScale) {
  rowsKernel<Fl::InvK32sRz, Mode::Max, false>(FramesD2L{ppSrc, pMean, pVar}, width, pDst, height,
                                              pVal, 0, 0, *pScale);
}

void qelsLGaussMax_16s32s_D2LSfs_M7_Al(const qel16s* const* ppSrc, const qel16s* pMean,
                                       const qel16s* pVar, int width, qel32s* pDst, int height,
                                       const qel32s* pVal, const qel32f* pScale) {
  rowsKernel<Fl::InvK32sRz, Mode::Max, true>(FramesD2L{ppSrc, pMean, pVar}, width, pDst, height,
                                             pVal, 0, 0, *pScale);
}

void qelsLGaussMax_16s32f_D2_M7(const qel16s* pSrc, int step, const qel16s* pMean,
                                const qel16s* pVar, int width, qel32f* pDst, int height,
                                const qel32f* pVal, const qel32f* pScale) {
  rowsKernel<Fl::InvK32f, Mode::Max, false>(FramesD2{pSrc, step, pMean, pVar}, width, pDst, height,
                                            pVal, 0, 0, *pScale);
}

void qelsLGaussMax_16s32f_D2_M7_Al(const qel16s* pSrc, int step, const qel16s* pMean,
                                   const qel16s* pVar, int width, qel32f* pDst, int height,
                                   const qel32f* pVal, const qel32f* pScale) {
  rowsKernel<Fl::InvK32f, Mode::Max, true>(FramesD2{pSrc, step, pMean, pVar}, width, pDst, height,
                                           pVal, 0, 0, *pScale);
}

void qelsLGaussMax_16s32f_D2L_M7(const qel16s* const* ppSrc, const qel16s* pMean,
                                 const qel16s* pVar, int width, qel32f* pDst, int height,
                                 const qel32f* pVal, const qel32f* pScale) {
  rowsKernel<Fl::InvK32f, Mode::Max, false>(FramesD2L{ppSrc, pMean, pVar}, width, pDst, height,
                                            pVal, 0, 0, *pScale);
}

void qelsLGaussMax_16s32f_D2L_M7_Al(const qel16s* const* ppSrc, const qel16s* pMean,
                                    const qel16s* pVar, int width, qel32f* pDst, int height,
                                    const qel32f* pVal, const qel32f* pScale) {
  rowsKernel<Fl::InvK32f, Mode::Max, true>(FramesD2L{ppSrc, pMean, pVar}, width, pDst, height, pVal,
                                           0, 0, *pScale);
}

void qelsLGaussMaxLow_16s32s_D2_M7(const qel16s* pSrc, int step, const qel16s* pMean,
                                   const qel16s* pVar, int width, qel32s* pDst, int height,
                                   const qel32s* pVal, int scaleFactor) {
  rowsKernel<Fl::Low32s, Mode::Max, false>(FramesD2{pSrc, step, pMean, pVar}, width, pDst, height,
                                           pVal, 0, scaleFactor, 0.0f);
}

void qelsLGaussMaxLow_16s32s_D2_M7_Al(const qel16s* pSrc, int step, const qel16s* pMean,
                                      const qel16s* pVar, int width, qel32s* pDst, int height,
                                      const qel32s* pVal, int scaleFactor) {
  rowsKernel<Fl::Low32s, Mode::Max, true>(FramesD2{pSrc, step, pMean, pVar}, width, pDst, height,
                                          pVal, 0, scaleFactor, 0.0f);
}

void qelsLGaussMaxLow_16s32s_D2L_M7(const qel16s* const* ppSrc, const qel16s* pMean,
                                    const qel16s* pVar, int width, qel32s* pDst, int height,
                                    const qel32s* pVal, int scaleFactor) {
  rowsKernel<Fl::Low32s, Mode::Max, false>(FramesD2L{ppSrc, pMean, pVar}, width, pDst, height, pVal,
                                           0, scaleFactor, 0.0f);
}

void qelsLGaussMaxLow_16s32s_D2L_M7_Al(const qel16s* const* ppSrc, const qel16s* pMean,
                                       const qel16s* pVar, int width, qel32s* pDst, int height,
                                       const qel32s* pVal, int scaleFactor) {
  rowsKernel<Fl::Low32s, Mode::Max, true>(FramesD2L{ppSrc, pMean, pVar}, width, pDst, height, pVal,
                                          0, scaleFactor, 0.0f);
}

void qelsLGaussMaxLow_16s32f_D2_M7(const qel16s* pSrc, int step, const qel16s* pMean,
                                   const qel16s* pVar, int width, qel32f* pDst, int height,
                                   const qel32f* pVal, int scaleFactor) {
  rowsKernel<Fl::Low32f, Mode::Max, false>(FramesD2{pSrc, step, pMean, pVar}, width, pDst, height,
                                           pVal, 0, scaleFactor, 0.0f);
}

void qelsLGaussMaxLow_16s32f_D2_M7_Al(const qel16s* pSrc, int step, const qel16s* pMean,
                                      const qel16s* pVar, int width, qel32f* pDst, int height,
                                      const qel32f* pVal, int scaleFactor) {
  rowsKernel<Fl::Low32f, Mode::Max, true>(FramesD2{pSrc, step, pMean, pVar}, width, pDst, height,
                                          pVal, 0, scaleFactor, 0.0f);
}

void qelsLGaussMaxLow_16s32f_D2L_M7(const qel16s* const* ppSrc, const qel16s* pMean,
                                    const qel16s* pVar, int width, qel32f* pDst, int height,
                                    const qel32f* pVal, int scaleFactor) {
  rowsKernel<Fl::Low32f, Mode::Max, false>(FramesD2L{ppSrc, pMean, pVar}, width, pDst, height, pVal,
                                           0, scaleFactor, 0.0f);
}

void qelsLGaussMaxLow_16s32f_D2L_M7_Al(const qel16s* const* ppSrc, const qel16s* pMean,
                                       const qel16s* pVar, int width, qel32f* pDst, int height,
                                       const qel32f* pVal, int scaleFactor) {
  rowsKernel<Fl::Low32f, Mode::Max, true>(FramesD2L{ppSrc, pMean, pVar}, width, pDst, height, pVal,
                                          0, scaleFactor, 0.0f);
}

void qelsLGaussMax_IdVar_16s32s_D2Sfs_M7(const qel16s* pSrc, int step, const qel16s* pMean,
                                         int width, qel32s* pDst, int height, const qel32s* pVal,
                                         const qel32f* pScale) {
  rowsKernel<Fl::UnitK32sRz, Mode::Max, false>(FramesD2{pSrc, step, pMean, nullptr}, width, pDst,
                                               height, pVal, 0, 0, *pScale);
}

void qelsLGaussMax_IdVar_16s32s_D2Sfs_M7_Al(const qel16s* pSrc, int step, const qel16s* pMean,
                                            int width, qel32s* pDst, int height, const qel32s* pVal,
                                            const qel32f* pScale) {
  rowsKernel<Fl::UnitK32sRz, Mode::Max, true>(FramesD2{pSrc, step, pMean, nullptr}, width, pDst,
                                              height, pVal, 0, 0, *pScale);
}

void qelsLGaussMax_IdVar_16s32s_D2LSfs_M7(const qel16s* const* ppSrc, const qel16s* pMean,
                                          int width, qel32s* pDst, int height, const qel32s* pVal,
                                          const qel32f* pScale) {
  rowsKernel<Fl::UnitK32sRz, Mode::Max, false>(FramesD2L{ppSrc, pMean, nullptr}, width, pDst,
                                               height, pVal, 0, 0, *pScale);
}

void qelsLGaussMax_IdVar_16s32s_D2LSfs_M7_Al(const qel16s* const* ppSrc, const qel16s* pMean,
                                             int width, qel32s* pDst, int height,
                                             const qel32s* pVal, const qel32f* pScale) {
  rowsKernel<Fl::UnitK32sRz, Mode::Max, true>(FramesD2L{ppSrc, pMean, nullptr}, width, pDst, height,
                                              pVal, 0, 0, *pScale);
}

void qelsLGaussMax_IdVar_16s32f_D2_M7(const qel16s* pSrc, int step, const qel16s* pMean, int width,
                                      qel32f* pDst, int height, const qel32f* pVal,
                                      const qel32f* pScale) {
  rowsKernel<Fl::UnitK32f, Mode::Max, false>(FramesD2{pSrc, step, pMean, nullptr}, width, pDst,
                                             height, pVal, 0, 0, *pScale);
}

void qelsLGaussMax_IdVar_16s32f_D2_M7_Al(const qel16s* pSrc, int step, const qel16s* pMean,
                                         int width, qel32f* pDst, int height, const qel32f* pVal,
                                         const qel32f* pScale) {
  rowsKernel<Fl::UnitK32f, Mode::Max, true>(FramesD2{pSrc, step, pMean, nullptr}, width, pDst,
                                            height, pVal, 0, 0, *pScale);
}

void qelsLGaussMax_IdVar_16s32f_D2L_M7(const qel16s* const* ppSrc, const qel16s* pMean, int width,
                                       qel32f* pDst, int height, const qel32f* pVal,
                                       const qel32f* pScale) {
  rowsKernel<Fl::UnitK32f, Mode::Max, false>(FramesD2L{ppSrc, pMean, nullptr}, width, pDst, height,
                                             pVal, 0, 0, *pScale);
}

void qelsLGaussMax_IdVar_16s32f_D2L_M7_Al(const qel16s* const* ppSrc, const qel16s* pMean,
                                          int width, qel32f* pDst, int height, const qel32f* pVal,
                                          const qel32f* pScale) {
  rowsKernel<Fl::UnitK32f, Mode::Max, true>(FramesD2L{ppSrc, pMean, nullptr}, width, pDst, height,
                                            pVal, 0, 0, *pScale);
}

void qelsLGaussMaxLow_IdVar_16s32s_D2_Sfs_M7(const qel16s* pSrc, int step, const qel16s* pMean,
                                             int width, qel32s* pDst, int height,
                                             const qel32s* pVal, int scaleFactor) {
  rowsKernel<Fl::IdLow32s, Mode::Max, false>(FramesD2{pSrc, step, pMean, nullptr}, width, pDst,
                                             height, pVal, 0, scaleFactor, 0.0f);
}

void qelsLGaussMaxLow_IdVar_16s32s_D2_Sfs_M7_Al(const qel16s* pSrc, int step, const qel16s* pMean,
                                                int width, qel32s* pDst, int height,
                                                const qel32s* pVal, int scaleFactor) {
  rowsKernel<Fl::IdLow32s, Mode::Max, true>(FramesD2{pSrc, step, pMean, nullptr}, width, pDst,
                                            height, pVal, 0, scaleFactor, 0.0f);
}

void qelsLGaussMaxLow_IdVar_16s32s_D2L_Sfs_M7(const qel16s* const* ppSrc, const qel16s* pMean,
                                              int width, qel32s* pDst, int height,
                                              const qel32s* pVal, int scaleFactor) {
  rowsKernel<Fl::IdLow32s, Mode::Max, false>(FramesD2L{ppSrc, pMean, nullptr}, width, pDst, height,
                                             pVal, 0, scaleFactor, 0.0f);
}

void qelsLGaussMaxLow_IdVar_16s32s_D2L_Sfs_M7_Al(const qel16s* const* ppSrc, const qel16s* pMean,
                                                 int width, qel32s* pDst, int height,
                                                 const qel32s* pVal, int scaleFactor) {
  rowsKernel<Fl::IdLow32s, Mode::Max, true>(FramesD2L{ppSrc, pMean, nullptr}, width, pDst, height,
                                            pVal, 0, scaleFactor, 0.0f);
}

void qelsLGaussMaxLow_IdVar_16s32f_D2_M7(const qel16s* pSrc, int step, const qel16s* pMean,
                                         int width, qel32f* pDst, int height, const qel32f* pVal,
                                         int scaleFactor) {
  rowsKernel<Fl::IdLow32f, Mode::Max, false>(FramesD2{pSrc, step, pMean, nullptr}, width, pDst,
                                             height, pVal, 0, scaleFactor, 0.0f);
}

void qelsLGaussMaxLow_IdVar_16s32f_D2_M7_Al(const qel16s* pSrc, int step, const qel16s* pMean,
                                            int width, qel32f* pDst, int height, const qel32f* pVal,
                                            int scaleFactor) {
  rowsKernel<Fl::IdLow32f, Mode::Max, true>(FramesD2{pSrc, step, pMean, nullptr}, width, pDst,
                                            height, pVal, 0, scaleFactor, 0.0f);
}

void qelsLGaussMaxLow_IdVar_16s32f_D2L_M7(const qel16s* const* ppSrc, const qel16s* pMean,
                                          int width, qel32f* pDst, int height, const qel32f* pVal,
                                          int scaleFactor) {
  rowsKernel<Fl::IdLow32f, Mode::Max, false>(FramesD2L{ppSrc, pMean, nullptr}, width, pDst, height,
                                             pVal, 0, scaleFactor, 0.0f);
}

void qelsLGaussMaxLow_IdVar_16s32f_D2L_M7_Al(const qel16s* const* ppSrc, const qel16s* pMean,
                                             int width, qel32f* pDst, int height,
                                             const qel32f* pVal, int scaleFactor) {
  rowsKernel<Fl::IdLow32f, Mode::Max, true>(FramesD2L{ppSrc, pMean, nullptr}, width, pDst, height,
                                            pVal, 0, scaleFactor, 0.0f);
}

void qelsLGaussMultiMix_16s32s_D2Sfs_M7(const qel16s* pMean, const qel16s* pVar, int step,
                                        const qel16s* pSrc, int width, qel32s* pSrcDst, int height,
                                        int scaleFactor) {
  rowsKernel<Fl::InvP32s, Mode::Store, false, false>(MixD2{pSrc, step, pMean, pVar}, width, pSrcDst,
                                                     height, pSrcDst, 1, scaleFactor, 0.0f);
}

void qelsLGaussMultiMix_16s32s_D2Sfs_M7_Al(const qel16s* pMean, const qel16s* pVar, int step,
                                           const qel16s* pSrc, int width, qel32s* pSrcDst,
                                           int height, int scaleFactor) {
  rowsKernel<Fl::InvP32s, Mode::Store, true, false>(MixD2{pSrc, step, pMean, pVar}, width, pSrcDst,
                                                    height, pSrcDst, 1, scaleFactor, 0.0f);
}

void qelsLGaussMultiMix_16s32s_D2LSfs_M7(const qel16s* const* ppMean, const qel16s* const* ppVar,
                                         const qel16s* pSrc, int width, qel32s* pSrcDst, int height,
                                         int scaleFactor) {
  rowsKernel<Fl::InvP32s, Mode::Store, false, true>(MixD2L{pSrc, ppMean, ppVar}, width, pSrcDst,
                                                    height, pSrcDst, 1, scaleFactor, 0.0f);
}

void qelsLGaussMultiMix_16s32s_D2LSfs_M7_Al(const qel16s* const* ppMean, const qel16s* const* ppVar,
                                            const qel16s* pSrc, int width, qel32s* pSrcDst,
                                            int height, int scaleFactor) {
  rowsKernel<Fl::InvP32s, Mode::Store, true, true>(MixD2L{pSrc, ppMean, ppVar}, width, pSrcDst,
                                                   height, pSrcDst, 1, scaleFactor, 0.0f);
}

void qelsLGaussMultiMix_16s32f_D2_M7(const qel16s* pMean, const qel16s* pVar, int step,
                                     const qel16s* pSrc, int width, qel32f* pSrcDst, int height,
                                     const qel32f* pScale) {
  rowsKernel<Fl::InvK32f, Mode::Store, false, false>(MixD2{pSrc, step, pMean, pVar}, width, pSrcDst,
                                                     height, pSrcDst, 1, 0, *pScale);
}

void qelsLGaussMultiMix_16s32f_D2_M7_Al(const qel16s* pMean, const qel16s* pVar, int step,
                                        const qel16s* pSrc, int width, qel32f* pSrcDst, int height,
                                        const qel32f* pScale) {
  rowsKernel<Fl::InvK32f, Mode::Store, true, false>(MixD2{pSrc, step, pMean, pVar}, width, pSrcDst,
                                                    height, pSrcDst, 1, 0, *pScale);
}

void qelsLGaussMultiMix_16s32f_D2L_M7(const qel16s* const* ppMean, const qel16s* const* ppVar,
                                      const qel16s* pSrc, int width, qel32f* pSrcDst, int height,
                                      const qel32f* pScale) {
  rowsKernel<Fl::InvK32f, Mode::Store, false, true>(MixD2L{pSrc, ppMean, ppVar}, width, pSrcDst,
                                                    height, pSrcDst, 1, 0, *pScale);
}

void qelsLGaussMultiMix_16s32f_D2L_M7_Al(const qel16s* const* ppMean, const qel16s* const* ppVar,
                                         const qel16s* pSrc, int width, qel32f* pSrcDst, int height,
                                         const qel32f* pScale) {
  rowsKernel<Fl::InvK32f, Mode::Store, true, true>(MixD2L{pSrc, ppMean, ppVar}, width, pSrcDst,
                                                   height, pSrcDst, 1, 0, *pScale);
}

void qelsLGaussMultiMixLow_16s32s_D2Sfs_M7(const qel16s* pMean, const qel16s* pVar, int step,
                                           const qel16s* pSrc, int width, qel32s* pSrcDst,
                                           int height, int scaleFactor) {
  rowsKernel<Fl::Low32s, Mode::Store, false, false>(MixD2{pSrc, step, pMean, pVar}, width, pSrcDst,
                                                    height, pSrcDst, 1, scaleFactor, 0.0f);
}

void qelsLGaussMultiMixLow_16s32s_D2Sfs_M7_Al(const qel16s* pMean, const qel16s* pVar, int step,
                                              const qel16s* pSrc, int width, qel32s* pSrcDst,
                                              int height, int scaleFactor) {
  rowsKernel<Fl::Low32s, Mode::Store, true, false>(MixD2{pSrc, step, pMean, pVar}, width, pSrcDst,
                                                   height, pSrcDst, 1, scaleFactor, 0.0f);
}

void qelsLGaussMultiMixLow_16s32s_D2LSfs_M7(const qel16s* const* ppMean, const qel16s* const* ppVar,
                                            const qel16s* pSrc, int width, qel32s* pSrcDst,
                                            int height, int scaleFactor) {
  rowsKernel<Fl::Low32s, Mode::Store, false, true>(MixD2L{pSrc, ppMean, ppVar}, width, pSrcDst,
                                                   height, pSrcDst, 1, scaleFactor, 0.0f);
}

void qelsLGaussMultiMixLow_16s32s_D2LSfs_M7_Al(const qel16s* const* ppMean,
                                               const qel16s* const* ppVar, const qel16s* pSrc,
                                               int width, qel32s* pSrcDst, int height,
                                               int scaleFactor) {
  rowsKernel<Fl::Low32s, Mode::Store, true, true>(MixD2L{pSrc, ppMean, ppVar}, width, pSrcDst,
                                                  height, pSrcDst, 1, scaleFactor, 0.0f);
}

void qelsLGaussMultiMixLow_16s32f_D2_M7(const qel16s* pMean, const qel16s* pVar, int step,
                                        const qel16s* pSrc, int width, qel32f* pSrcDst, int height,
                                        int scaleFactor) {
  rowsKernel<Fl::Low32f, Mode::Store, false, false>(MixD2{pSrc, step, pMean, pVar}, width, pSrcDst,
                                                    height, pSrcDst, 1, scaleFactor, 0.0f);
}

void qelsLGaussMultiMixLow_16s32f_D2_M7_Al(const qel16s* pMean, const qel16s* pVar, int step,
                                           const qel16s* pSrc, int width, qel32f* pSrcDst,
                                           int height, int scaleFactor) {
  rowsKernel<Fl::Low32f, Mode::Store, true, false>(MixD2{pSrc, step, pMean, pVar}, width, pSrcDst,
                                                   height, pSrcDst, 1, scaleFactor, 0.0f);
}

void qelsLGaussMultiMixLow_16s32f_D2L_M7(const qel16s* const* ppMean, const qel16s* const* ppVar,
                                         const qel16s* pSrc, int width, qel32f* pSrcDst, int height,
                                         int scaleFactor) {
  rowsKernel<Fl::Low32f, Mode::Store, false, true>(MixD2L{pSrc, ppMean, ppVar}, width, pSrcDst,
                                                   height, pSrcDst, 1, scaleFactor, 0.0f);
}

void qelsLGaussMultiMixLow_16s32f_D2L_M7_Al(const qel16s* const* ppMean, const qel16s* const* ppVar,
                                            const qel16s* pSrc, int width, qel32f* pSrcDst,
                                            int height, int scaleFactor) {
  rowsKernel<Fl::Low32f, Mode::Store, true, true>(MixD2L{pSrc, ppMean, ppVar}, width, pSrcDst,
                                                  height, pSrcDst, 1, scaleFactor, 0.0f);
}

void qelsLGaussMaxMultiMix_16s32s_D2Sfs_M7(const qel16s* pMean, const qel16s* pVar, int step,
                                           const qel16s* pSrc, int width, const qel32s* pVal,
                                           qel32s* pSrcDst, int height, const qel32f* pScale) {
  rowsKernel<Fl::InvK32sRz, Mode::Max, false, false>(MixD2{pSrc, step, pMean, pVar}, width, pSrcDst,
                                                     height, pVal, 1, 0, *pScale);
}

void qelsLGaussMaxMultiMix_16s32s_D2Sfs_M7_Al(const qel16s* pMean, const qel16s* pVar, int step,
                                              const qel16s* pSrc, int width, const qel32s* pVal,
                                              qel32s* pSrcDst, int height, const qel32f* pScale) {
  rowsKernel<Fl::InvK32sRz, Mode::Max, true, false>(MixD2{pSrc, step, pMean, pVar}, width, pSrcDst,
                                                    height, pVal, 1, 0, *pScale);
}

void qelsLGaussMaxMultiMix_16s32s_D2LSfs_M7(const qel16s* const* ppMean, const qel16s* const* ppVar,
                                            const qel16s* pSrc, int width, const qel32s* pVal,
                                            qel32s* pSrcDst, int height, const qel32f* pScale) {
  rowsKernel<Fl::InvK32sRz, Mode::Max, false, false>(MixD2L{pSrc, ppMean, ppVar}, width, pSrcDst,
                                                     height, pVal, 1, 0, *pScale);
}

void qelsLGaussMaxMultiMix_16s32s_D2LSfs_M7_Al(const qel16s* const* ppMean,
                                               const qel16s* const* ppVar, const qel16s* pSrc,
                                               int width, const qel32s* pVal, qel32s* pSrcDst,
                                               int height, const qel32f* pScale) {
  rowsKernel<Fl::InvK32sRz, Mode::Max, true, false>(MixD2L{pSrc, ppMean, ppVar}, width, pSrcDst,
                                                    height, pVal, 1, 0, *pScale);
}

void qelsLGaussMaxMultiMix_16s32f_D2_M7(const qel16s* pMean, const qel16s* pVar, int step,
                                        const qel16s* pSrc, int width, const qel32f* pVal,
                                        qel32f* pSrcDst, int height, const qel32f* pScale) {
  rowsKernel<Fl::InvK32f, Mode::Max, false, false>(MixD2{pSrc, step, pMean, pVar}, width, pSrcDst,
                                                   height, pVal, 1, 0, *pScale);
}

void qelsLGaussMaxMultiMix_16s32f_D2_M7_Al(const qel16s* pMean, const qel16s* pVar, int step,
                                           const qel16s* pSrc, int width, const qel32f* pVal,
                                           qel32f* pSrcDst, int height, const qel32f* pScale) {
  rowsKernel<Fl::InvK32f, Mode::Max, true, false>(MixD2{pSrc, step, pMean, pVar}, width, pSrcDst,
                                                  height, pVal, 1, 0, *pScale);
}

void qelsLGaussMaxMultiMix_16s32f_D2L_M7(const qel16s* const* ppMean, const qel16s* const* ppVar,
                                         const qel16s* pSrc, int width, const qel32f* pVal,
                                         qel32f* pSrcDst, int height, const qel32f* pScale) {
  rowsKernel<Fl::InvK32f, Mode::Max, false, false>(MixD2L{pSrc, ppMean, ppVar}, width, pSrcDst,
                                                   height, pVal, 1, 0, *pScale);
}

void qelsLGaussMaxMultiMix_16s32f_D2L_M7_Al(const qel16s* const* ppMean, const qel16s* const* ppVar,
                                            const qel16s* pSrc, int width, const qel32f* pVal,
                                            qel32f* pSrcDst, int height, const qel32f* pScale) {
  rowsKernel<Fl::InvK32f, Mode::Max, true, false>(MixD2L{pSrc, ppMean, ppVar}, width, pSrcDst,
                                                  height, pVal, 1, 0, *pScale);
}

void qelsLGaussMaxMultiMixLow_16s32s_D2Sfs_M7(const qel16s* pMean, const qel16s* pVar, int step,
                                              const qel16s* pSrc, int width, const qel32s* pVal,
                                              qel32s* pSrcDst, int height, int scaleFactor) {
  rowsKernel<Fl::Low32s, Mode::Max, false, false>(MixD2{pSrc, step, pMean, pVar}, width, pSrcDst,
                                                  height, pVal, 1, scaleFactor, 0.0f);
}

void qelsLGaussMaxMultiMixLow_16s32s_D2Sfs_M7_Al(const qel16s* pMean, const qel16s* pVar, int step,
                                                 const qel16s* pSrc, int width, const qel32s* pVal,
                                                 qel32s* pSrcDst, int height, int scaleFactor) {
  rowsKernel<Fl::Low32s, Mode::Max, true, false>(MixD2{pSrc, step, pMean, pVar}, width, pSrcDst,
                                                 height, pVal, 1, scaleFactor, 0.0f);
}

void qelsLGaussMaxMultiMixLow_16s32s_D2LSfs_M7(const qel16s* const* ppMean,
                                               const qel16s* const* ppVar, const qel16s* pSrc,
                                               int width, const qel32s* pVal, qel32s* pSrcDst,
                                               int height, int scaleFactor) {
  rowsKernel<Fl::Low32s, Mode::Max, false, false>(MixD2L{pSrc, ppMean, ppVar}, width, pSrcDst,
                                                  height, pVal, 1, scaleFactor, 0.0f);
}

void qelsLGaussMaxMultiMixLow_16s32s_D2LSfs_M7_Al(const qel16s* const* ppMean,
                                                  const qel16s* const* ppVar, const qel16s* pSrc,
                                                  int width, const qel32s* pVal, qel32s* pSrcDst,
                                                  int height, int scaleFactor) {
  rowsKernel<Fl::Low32s, Mode::Max, true, false>(MixD2L{pSrc, ppMean, ppVar}, width, pSrcDst,
                                                 height, pVal, 1, scaleFactor, 0.0f);
}

void qelsLGaussMaxMultiMixLow_16s32f_D2_M7(const qel16s* pMean, const qel16s* pVar, int step,
                                           const qel16s* pSrc, int width, const qel32f* pVal,
                                           qel32f* pSrcDst, int height, int scaleFactor) {
  rowsKernel<Fl::Low32f, Mode::Max, false, false>(MixD2{pSrc, step, pMean, pVar}, width, pSrcDst,
                                                  height, pVal, 1, scaleFactor, 0.0f);
}

void qelsLGaussMaxMultiMixLow_16s32f_D2_M7_Al(const qel16s* pMean, const qel16s* pVar, int step,
                                              const qel16s* pSrc, int width, const qel32f* pVal,
                                              qel32f* pSrcDst, int height, int scaleFactor) {
  rowsKernel<Fl::Low32f, Mode::Max, true, false>(MixD2{pSrc, step, pMean, pVar}, width, pSrcDst,
                                                 height, pVal, 1, scaleFactor, 0.0f);
}

void qelsLGaussMaxMultiMixLow_16s32f_D2L_M7(const qel16s* const* ppMean, const qel16s* const* ppVar,
                                            const qel16s* pSrc, int width, const qel32f* pVal,
                                            qel32f* pSrcDst, int height, int scaleFactor) {
  rowsKernel<Fl::Low32f, Mode::Max, false, false>(MixD2L{pSrc, ppMean, ppVar}, width, pSrcDst,
                                                  height, pVal, 1, scaleFactor, 0.0f);
}

void qelsLGaussMaxMultiMixLow_16s32f_D2L_M7_Al(const qel16s* const* ppMean,
                                               const qel16s* const* ppVar, const qel16s* pSrc,
                                               int width, const qel32f* pVal, qel32f* pSrcDst,
                                               int height, int scaleFactor) {
  rowsKernel<Fl::Low32f, Mode::Max, true, false>(MixD2L{pSrc, ppMean, ppVar}, width, pSrcDst,
                                                 height, pVal, 1, scaleFactor, 0.0f);
}

}  // extern "C"
