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

// One definition serves each pair of twins: the general form and its `_Al`
// twin differ only in the template flag `Al` that selects aligned loads.
#define QEL_FX_TWINS(name, params, ...) \
  void name params {                    \
    constexpr bool Al = false;          \
    __VA_ARGS__;                        \
  }                                     \
  void name##_Al params {               \
    constexpr bool Al = true;           \
    __VA_ARGS__;                        \
  }

// Argument lists by layout; T is the element of val and of the results,
// LAST the factor (int scaleFactor) or the wrapper's single k (pScale).
#define FX_SINGLE(T, LAST)                                                           \
  (const qel16s* pSrc, const qel16s* pMean, const qel16s* pVar, int len, T* pResult, \
   const T* pVal, LAST)
#define FX_SINGLE_ID(T, LAST) \
  (const qel16s* pSrc, const qel16s* pMean, int len, T* pResult, const T* pVal, LAST)
#define FX_FRAMES_D2(T, LAST)                                                                 \
  (const qel16s* pSrc, int step, const qel16s* pMean, const qel16s* pVar, int width, T* pDst, \
   int height, const T* pVal, LAST)
#define FX_FRAMES_ID_D2(T, LAST)                                                      \
  (const qel16s* pSrc, int step, const qel16s* pMean, int width, T* pDst, int height, \
   const T* pVal, LAST)
#define FX_FRAMES_D2L(T, LAST)                                                              \
  (const qel16s* const* ppSrc, const qel16s* pMean, const qel16s* pVar, int width, T* pDst, \
   int height, const T* pVal, LAST)
#define FX_FRAMES_ID_D2L(T, LAST)                                                                  \
  (const qel16s* const* ppSrc, const qel16s* pMean, int width, T* pDst, int height, const T* pVal, \
   LAST)
#define FX_MIX_D2(T, LAST)                                                                       \
  (const qel16s* pMean, const qel16s* pVar, int step, const qel16s* pSrc, int width, T* pSrcDst, \
   int height, LAST)
#define FX_MIX_D2L(T, LAST)                                                                \
  (const qel16s* const* ppMean, const qel16s* const* ppVar, const qel16s* pSrc, int width, \
   T* pSrcDst, int height, LAST)
#define FX_MIXMAX_D2(T, LAST)                                                        \
  (const qel16s* pMean, const qel16s* pVar, int step, const qel16s* pSrc, int width, \
   const T* pVal, T* pSrcDst, int height, LAST)
#define FX_MIXMAX_D2L(T, LAST)                                                             \
  (const qel16s* const* ppMean, const qel16s* const* ppVar, const qel16s* pSrc, int width, \
   const T* pVal, T* pSrcDst, int height, LAST)

extern "C" {

// ---- single observation

QEL_FX_TWINS(qelsLGaussSingle_16s32s_Sfs_M7, FX_SINGLE(qel32s, int scaleFactor),
             singleIntPow<Wt::Inv, Al>(pSrc, pMean, pVar, len, pResult, pVal, scaleFactor))

QEL_FX_TWINS(qelsLGaussSingle_16s32f_M7, FX_SINGLE(qel32f, const qel32f* pScale),
             *pResult = *pVal - singleSum<Wt::Inv, Al>(pSrc, pMean, pVar, len) * *pScale)

QEL_FX_TWINS(qelsLGaussSingleLow_16s32s_Sfs_M7, FX_SINGLE(qel32s, int scaleFactor),
             singleLow32s<false, Al>(pSrc, pMean, pVar, len, pResult, pVal, scaleFactor))

QEL_FX_TWINS(qelsLGaussSingleLow_16s32f_M7, FX_SINGLE(qel32f, int scaleFactor),
             singleLow32f<Al>(pSrc, pMean, pVar, len, pResult, pVal, scaleFactor))

QEL_FX_TWINS(qelsLGaussSingle_IdVar_16s32s_Sfs_M7, FX_SINGLE_ID(qel32s, int scaleFactor),
             singleIntPow<Wt::Unit, Al>(pSrc, pMean, nullptr, len, pResult, pVal, scaleFactor))

QEL_FX_TWINS(qelsLGaussSingle_IdVar_16s32f_M7, FX_SINGLE_ID(qel32f, const qel32f* pScale),
             *pResult = *pVal - singleSum<Wt::Unit, Al>(pSrc, pMean, nullptr, len) * *pScale)

QEL_FX_TWINS(qelsLGaussSingleLow_IdVar_16s32s_Sfs_M7, FX_SINGLE_ID(qel32s, int scaleFactor),
             singleLow32s<true, Al>(pSrc, pMean, nullptr, len, pResult, pVal, scaleFactor))

QEL_FX_TWINS(qelsLGaussSingle_IdVarLow_16s32f_M7, FX_SINGLE_ID(qel32f, int scaleFactor),
             const float S = singleSum<Wt::Pairs, Al>(pSrc, pMean, nullptr, len);
             *pResult = *pVal - scaleByIntPow2(S, static_cast<long long>(scaleFactor) + 1))

QEL_FX_TWINS(qelsLGaussSingle_DirectVar_16s32f_M7,
             (const qel16s* pSrc, const qel16s* pMean, const qel32f* pInvVar, int len,
              qel32f* pResult, const qel32f* pVal, const qel32f* pScale),
             *pResult = *pVal -
                        (singleSum<Wt::Direct, Al>(pSrc, pMean, pInvVar, len) * 0.5f) * *pScale)

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

QEL_FX_TWINS(qelsLGauss_16s32s_D2_M7, FX_FRAMES_D2(qel32s, int scaleFactor),
             rowsKernel<Fl::InvP32s, Mode::Store, Al>(FramesD2{pSrc, step, pMean, pVar}, width,
                                                      pDst, height, pVal, 0, scaleFactor, 0.0f))

QEL_FX_TWINS(qelsLGauss_16s32s_D2L_M7, FX_FRAMES_D2L(qel32s, int scaleFactor),
             rowsKernel<Fl::InvP32s, Mode::Store, Al>(FramesD2L{ppSrc, pMean, pVar}, width, pDst,
                                                      height, pVal, 0, scaleFactor, 0.0f))

QEL_FX_TWINS(qelsLGauss_16s32f_M7, FX_FRAMES_D2(qel32f, const qel32f* pScale),
             rowsKernel<Fl::InvK32f, Mode::Store, Al>(FramesD2{pSrc, step, pMean, pVar}, width,
                                                      pDst, height, pVal, 0, 0, *pScale))

QEL_FX_TWINS(qelsLGauss_16s32f_D2L_M7, FX_FRAMES_D2L(qel32f, const qel32f* pScale),
             rowsKernel<Fl::InvK32f, Mode::Store, Al>(FramesD2L{ppSrc, pMean, pVar}, width, pDst,
                                                      height, pVal, 0, 0, *pScale))

QEL_FX_TWINS(qelsLGaussLow_16s32s_D2_M7, FX_FRAMES_D2(qel32s, int scaleFactor),
             rowsKernel<Fl::Low32s, Mode::Store, Al>(FramesD2{pSrc, step, pMean, pVar}, width, pDst,
                                                     height, pVal, 0, scaleFactor, 0.0f))

QEL_FX_TWINS(qelsLGaussLow_16s32s_D2L_M7, FX_FRAMES_D2L(qel32s, int scaleFactor),
             rowsKernel<Fl::Low32s, Mode::Store, Al>(FramesD2L{ppSrc, pMean, pVar}, width, pDst,
                                                     height, pVal, 0, scaleFactor, 0.0f))

QEL_FX_TWINS(qelsLGaussLow_16s32f_D2_M7, FX_FRAMES_D2(qel32f, int scaleFactor),
             rowsKernel<Fl::Low32f, Mode::Store, Al>(FramesD2{pSrc, step, pMean, pVar}, width, pDst,
                                                     height, pVal, 0, scaleFactor, 0.0f))

QEL_FX_TWINS(qelsLGaussLow_16s32f_D2L_M7, FX_FRAMES_D2L(qel32f, int scaleFactor),
             rowsKernel<Fl::Low32f, Mode::Store, Al>(FramesD2L{ppSrc, pMean, pVar}, width, pDst,
                                                     height, pVal, 0, scaleFactor, 0.0f))

QEL_FX_TWINS(qelsLGauss_IdVar_16s32s_D2_Sfs_M7, FX_FRAMES_ID_D2(qel32s, int scaleFactor),
             rowsKernel<Fl::PairsP32s, Mode::Store, Al>(FramesD2{pSrc, step, pMean, nullptr}, width,
                                                        pDst, height, pVal, 0, scaleFactor, 0.0f))

QEL_FX_TWINS(qelsLGauss_IdVar_16s32s_D2L_Sfs_M7, FX_FRAMES_ID_D2L(qel32s, int scaleFactor),
             rowsKernel<Fl::PairsP32s, Mode::Store, Al>(FramesD2L{ppSrc, pMean, nullptr}, width,
                                                        pDst, height, pVal, 0, scaleFactor, 0.0f))

QEL_FX_TWINS(qelsLGauss_IdVar_16s32f_D2_M7, FX_FRAMES_ID_D2(qel32f, const qel32f* pScale),
             rowsKernel<Fl::UnitK32f, Mode::Store, Al>(FramesD2{pSrc, step, pMean, nullptr}, width,
                                                       pDst, height, pVal, 0, 0, *pScale))

QEL_FX_TWINS(qelsLGauss_IdVar_16s32f_D2L_M7, FX_FRAMES_ID_D2L(qel32f, const qel32f* pScale),
             rowsKernel<Fl::UnitK32f, Mode::Store, Al>(FramesD2L{ppSrc, pMean, nullptr}, width,
                                                       pDst, height, pVal, 0, 0, *pScale))

QEL_FX_TWINS(qelsLGaussLow_IdVar_16s32s_D2_Sfs_M7, FX_FRAMES_ID_D2(qel32s, int scaleFactor),
             rowsKernel<Fl::IdLow32s, Mode::Store, Al>(FramesD2{pSrc, step, pMean, nullptr}, width,
                                                       pDst, height, pVal, 0, scaleFactor, 0.0f))

QEL_FX_TWINS(qelsLGaussLow_IdVar_16s32s_D2L_Sfs_M7, FX_FRAMES_ID_D2L(qel32s, int scaleFactor),
             rowsKernel<Fl::IdLow32s, Mode::Store, Al>(FramesD2L{ppSrc, pMean, nullptr}, width,
                                                       pDst, height, pVal, 0, scaleFactor, 0.0f))

QEL_FX_TWINS(qelsLGaussLow_IdVar_16s32f_D2_M7, FX_FRAMES_ID_D2(qel32f, int scaleFactor),
             rowsKernel<Fl::IdLow32f, Mode::Store, Al>(FramesD2{pSrc, step, pMean, nullptr}, width,
                                                       pDst, height, pVal, 0, scaleFactor, 0.0f))

QEL_FX_TWINS(qelsLGaussLow_IdVar_16s32f_D2L_M7, FX_FRAMES_ID_D2L(qel32f, int scaleFactor),
             rowsKernel<Fl::IdLow32f, Mode::Store, Al>(FramesD2L{ppSrc, pMean, nullptr}, width,
                                                       pDst, height, pVal, 0, scaleFactor, 0.0f))

QEL_FX_TWINS(qelsLGaussMax_16s32s_M7, FX_FRAMES_D2(qel32s, const qel32f* pScale),
             rowsKernel<Fl::InvK32sRz, Mode::Max, Al>(FramesD2{pSrc, step, pMean, pVar}, width,
                                                      pDst, height, pVal, 0, 0, *pScale))

QEL_FX_TWINS(qelsLGaussMax_16s32s_D2LSfs_M7, FX_FRAMES_D2L(qel32s, const qel32f* pScale),
             rowsKernel<Fl::InvK32sRz, Mode::Max, Al>(FramesD2L{ppSrc, pMean, pVar}, width, pDst,
                                                      height, pVal, 0, 0, *pScale))

QEL_FX_TWINS(qelsLGaussMax_16s32f_D2_M7, FX_FRAMES_D2(qel32f, const qel32f* pScale),
             rowsKernel<Fl::InvK32f, Mode::Max, Al>(FramesD2{pSrc, step, pMean, pVar}, width, pDst,
                                                    height, pVal, 0, 0, *pScale))

QEL_FX_TWINS(qelsLGaussMax_16s32f_D2L_M7, FX_FRAMES_D2L(qel32f, const qel32f* pScale),
             rowsKernel<Fl::InvK32f, Mode::Max, Al>(FramesD2L{ppSrc, pMean, pVar}, width, pDst,
                                                    height, pVal, 0, 0, *pScale))

QEL_FX_TWINS(qelsLGaussMaxLow_16s32s_D2_M7, FX_FRAMES_D2(qel32s, int scaleFactor),
             rowsKernel<Fl::Low32s, Mode::Max, Al>(FramesD2{pSrc, step, pMean, pVar}, width, pDst,
                                                   height, pVal, 0, scaleFactor, 0.0f))

QEL_FX_TWINS(qelsLGaussMaxLow_16s32s_D2L_M7, FX_FRAMES_D2L(qel32s, int scaleFactor),
             rowsKernel<Fl::Low32s, Mode::Max, Al>(FramesD2L{ppSrc, pMean, pVar}, width, pDst,
                                                   height, pVal, 0, scaleFactor, 0.0f))

QEL_FX_TWINS(qelsLGaussMaxLow_16s32f_D2_M7, FX_FRAMES_D2(qel32f, int scaleFactor),
             rowsKernel<Fl::Low32f, Mode::Max, Al>(FramesD2{pSrc, step, pMean, pVar}, width, pDst,
                                                   height, pVal, 0, scaleFactor, 0.0f))

QEL_FX_TWINS(qelsLGaussMaxLow_16s32f_D2L_M7, FX_FRAMES_D2L(qel32f, int scaleFactor),
             rowsKernel<Fl::Low32f, Mode::Max, Al>(FramesD2L{ppSrc, pMean, pVar}, width, pDst,
                                                   height, pVal, 0, scaleFactor, 0.0f))

QEL_FX_TWINS(qelsLGaussMax_IdVar_16s32s_D2Sfs_M7, FX_FRAMES_ID_D2(qel32s, const qel32f* pScale),
             rowsKernel<Fl::UnitK32sRz, Mode::Max, Al>(FramesD2{pSrc, step, pMean, nullptr}, width,
                                                       pDst, height, pVal, 0, 0, *pScale))

QEL_FX_TWINS(qelsLGaussMax_IdVar_16s32s_D2LSfs_M7, FX_FRAMES_ID_D2L(qel32s, const qel32f* pScale),
             rowsKernel<Fl::UnitK32sRz, Mode::Max, Al>(FramesD2L{ppSrc, pMean, nullptr}, width,
                                                       pDst, height, pVal, 0, 0, *pScale))

QEL_FX_TWINS(qelsLGaussMax_IdVar_16s32f_D2_M7, FX_FRAMES_ID_D2(qel32f, const qel32f* pScale),
             rowsKernel<Fl::UnitK32f, Mode::Max, Al>(FramesD2{pSrc, step, pMean, nullptr}, width,
                                                     pDst, height, pVal, 0, 0, *pScale))

QEL_FX_TWINS(qelsLGaussMax_IdVar_16s32f_D2L_M7, FX_FRAMES_ID_D2L(qel32f, const qel32f* pScale),
             rowsKernel<Fl::UnitK32f, Mode::Max, Al>(FramesD2L{ppSrc, pMean, nullptr}, width, pDst,
                                                     height, pVal, 0, 0, *pScale))

QEL_FX_TWINS(qelsLGaussMaxLow_IdVar_16s32s_D2_Sfs_M7, FX_FRAMES_ID_D2(qel32s, int scaleFactor),
             rowsKernel<Fl::IdLow32s, Mode::Max, Al>(FramesD2{pSrc, step, pMean, nullptr}, width,
                                                     pDst, height, pVal, 0, scaleFactor, 0.0f))

QEL_FX_TWINS(qelsLGaussMaxLow_IdVar_16s32s_D2L_Sfs_M7, FX_FRAMES_ID_D2L(qel32s, int scaleFactor),
             rowsKernel<Fl::IdLow32s, Mode::Max, Al>(FramesD2L{ppSrc, pMean, nullptr}, width, pDst,
                                                     height, pVal, 0, scaleFactor, 0.0f))

QEL_FX_TWINS(qelsLGaussMaxLow_IdVar_16s32f_D2_M7, FX_FRAMES_ID_D2(qel32f, int scaleFactor),
             rowsKernel<Fl::IdLow32f, Mode::Max, Al>(FramesD2{pSrc, step, pMean, nullptr}, width,
                                                     pDst, height, pVal, 0, scaleFactor, 0.0f))

QEL_FX_TWINS(qelsLGaussMaxLow_IdVar_16s32f_D2L_M7, FX_FRAMES_ID_D2L(qel32f, int scaleFactor),
             rowsKernel<Fl::IdLow32f, Mode::Max, Al>(FramesD2L{ppSrc, pMean, nullptr}, width, pDst,
                                                     height, pVal, 0, scaleFactor, 0.0f))

QEL_FX_TWINS(qelsLGaussMultiMix_16s32s_D2Sfs_M7, FX_MIX_D2(qel32s, int scaleFactor),
             rowsKernel<Fl::InvP32s, Mode::Store, Al, false>(MixD2{pSrc, step, pMean, pVar}, width,
                                                             pSrcDst, height, pSrcDst, 1,
                                                             scaleFactor, 0.0f))

QEL_FX_TWINS(qelsLGaussMultiMix_16s32s_D2LSfs_M7, FX_MIX_D2L(qel32s, int scaleFactor),
             rowsKernel<Fl::InvP32s, Mode::Store, Al, true>(MixD2L{pSrc, ppMean, ppVar}, width,
                                                            pSrcDst, height, pSrcDst, 1,
                                                            scaleFactor, 0.0f))

QEL_FX_TWINS(qelsLGaussMultiMix_16s32f_D2_M7, FX_MIX_D2(qel32f, const qel32f* pScale),
             rowsKernel<Fl::InvK32f, Mode::Store, Al, false>(MixD2{pSrc, step, pMean, pVar}, width,
                                                             pSrcDst, height, pSrcDst, 1, 0,
                                                             *pScale))

QEL_FX_TWINS(qelsLGaussMultiMix_16s32f_D2L_M7, FX_MIX_D2L(qel32f, const qel32f* pScale),
             rowsKernel<Fl::InvK32f, Mode::Store, Al, true>(MixD2L{pSrc, ppMean, ppVar}, width,
                                                            pSrcDst, height, pSrcDst, 1, 0,
                                                            *pScale))

QEL_FX_TWINS(qelsLGaussMultiMixLow_16s32s_D2Sfs_M7, FX_MIX_D2(qel32s, int scaleFactor),
             rowsKernel<Fl::Low32s, Mode::Store, Al, false>(MixD2{pSrc, step, pMean, pVar}, width,
                                                            pSrcDst, height, pSrcDst, 1,
                                                            scaleFactor, 0.0f))

QEL_FX_TWINS(qelsLGaussMultiMixLow_16s32s_D2LSfs_M7, FX_MIX_D2L(qel32s, int scaleFactor),
             rowsKernel<Fl::Low32s, Mode::Store, Al, true>(MixD2L{pSrc, ppMean, ppVar}, width,
                                                           pSrcDst, height, pSrcDst, 1, scaleFactor,
                                                           0.0f))

QEL_FX_TWINS(qelsLGaussMultiMixLow_16s32f_D2_M7, FX_MIX_D2(qel32f, int scaleFactor),
             rowsKernel<Fl::Low32f, Mode::Store, Al, false>(MixD2{pSrc, step, pMean, pVar}, width,
                                                            pSrcDst, height, pSrcDst, 1,
                                                            scaleFactor, 0.0f))

QEL_FX_TWINS(qelsLGaussMultiMixLow_16s32f_D2L_M7, FX_MIX_D2L(qel32f, int scaleFactor),
             rowsKernel<Fl::Low32f, Mode::Store, Al, true>(MixD2L{pSrc, ppMean, ppVar}, width,
                                                           pSrcDst, height, pSrcDst, 1, scaleFactor,
                                                           0.0f))

QEL_FX_TWINS(qelsLGaussMaxMultiMix_16s32s_D2Sfs_M7, FX_MIXMAX_D2(qel32s, const qel32f* pScale),
             rowsKernel<Fl::InvK32sRz, Mode::Max, Al, false>(MixD2{pSrc, step, pMean, pVar}, width,
                                                             pSrcDst, height, pVal, 1, 0, *pScale))

QEL_FX_TWINS(qelsLGaussMaxMultiMix_16s32s_D2LSfs_M7, FX_MIXMAX_D2L(qel32s, const qel32f* pScale),
             rowsKernel<Fl::InvK32sRz, Mode::Max, Al, false>(MixD2L{pSrc, ppMean, ppVar}, width,
                                                             pSrcDst, height, pVal, 1, 0, *pScale))

QEL_FX_TWINS(qelsLGaussMaxMultiMix_16s32f_D2_M7, FX_MIXMAX_D2(qel32f, const qel32f* pScale),
             rowsKernel<Fl::InvK32f, Mode::Max, Al, false>(MixD2{pSrc, step, pMean, pVar}, width,
                                                           pSrcDst, height, pVal, 1, 0, *pScale))

QEL_FX_TWINS(qelsLGaussMaxMultiMix_16s32f_D2L_M7, FX_MIXMAX_D2L(qel32f, const qel32f* pScale),
             rowsKernel<Fl::InvK32f, Mode::Max, Al, false>(MixD2L{pSrc, ppMean, ppVar}, width,
                                                           pSrcDst, height, pVal, 1, 0, *pScale))

QEL_FX_TWINS(qelsLGaussMaxMultiMixLow_16s32s_D2Sfs_M7, FX_MIXMAX_D2(qel32s, int scaleFactor),
             rowsKernel<Fl::Low32s, Mode::Max, Al, false>(MixD2{pSrc, step, pMean, pVar}, width,
                                                          pSrcDst, height, pVal, 1, scaleFactor,
                                                          0.0f))

QEL_FX_TWINS(qelsLGaussMaxMultiMixLow_16s32s_D2LSfs_M7, FX_MIXMAX_D2L(qel32s, int scaleFactor),
             rowsKernel<Fl::Low32s, Mode::Max, Al, false>(MixD2L{pSrc, ppMean, ppVar}, width,
                                                          pSrcDst, height, pVal, 1, scaleFactor,
                                                          0.0f))

QEL_FX_TWINS(qelsLGaussMaxMultiMixLow_16s32f_D2_M7, FX_MIXMAX_D2(qel32f, int scaleFactor),
             rowsKernel<Fl::Low32f, Mode::Max, Al, false>(MixD2{pSrc, step, pMean, pVar}, width,
                                                          pSrcDst, height, pVal, 1, scaleFactor,
                                                          0.0f))

QEL_FX_TWINS(qelsLGaussMaxMultiMixLow_16s32f_D2L_M7, FX_MIXMAX_D2L(qel32f, int scaleFactor),
             rowsKernel<Fl::Low32f, Mode::Max, Al, false>(MixD2L{pSrc, ppMean, ppVar}, width,
                                                          pSrcDst, height, pVal, 1, scaleFactor,
                                                          0.0f))

}  // extern "C"
