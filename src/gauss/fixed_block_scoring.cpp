// 16-bit scores of blocks of frames and of mixtures: argument checks, the
// choice of kernel by alignment (16-bit strides a multiple of 8 elements),
// and the chunk loops of the log-adding families and of the mixtures.
//
// Check orders. Strided forms, the mixture qelsLogGaussMixture_*_D2
// included: width above step (-37), null pointers (-8), width or height
// below 1 (-6). Row-pointer forms: null pointers, then sizes. The arrays of
// row pointers are not searched for nulls.
//
// Unlike some of their single-precision twins, these members have no
// scalar path of their own for narrow rows: the kernels serve every width.
#include <cstddef>
#include <initializer_list>

#include "base/base.h"
#include "gauss/fixed_scoring_rows.h"
#include "gauss/gauss.h"

namespace {

using namespace qelsr::fixedpt;
using qelsr::isAligned16;

constexpr int kFrameChunk = 128;
constexpr int kMixChunk = 100;

bool stepOk(int step) { return step % 8 == 0; }
bool rowsOk(const qel16s* const* pp, int n) {
  return RowMatrAlErr(reinterpret_cast<const void* const*>(pp), n) == 0;
}

// The checks of the row-pointer forms, in order: null pointers (-8), then
// width or height below 1 (-6); the strided forms look at the stride
// first (-37). Both give 0 (qelStatusOk) when the arguments pass.
qelStatus checkD2L(int width, int height, std::initializer_list<const void*> ptrs) {
  for (const void* p : ptrs)
    if (p == nullptr) return qelStatusNullPtr;
  return width < 1 || height < 1 ? qelStatusSize : qelStatusOk;
}
qelStatus checkD2(int width, int step, int height, std::initializer_list<const void*> ptrs) {
  return width > step ? qelStatusStride : checkD2L(width, height, ptrs);
}

// The kernels take either the factor itself or the single k = 2^-(sf+1)
// that the wrapper forms, by address.
struct Param {
  int sf;
  float k;
  explicit Param(int scaleFactor) : sf(scaleFactor), k(GetScale_32s32f(incSat(scaleFactor))) {}
  int get(int) const { return sf; }
  const float* get(const float*) const { return &k; }
};
template <typename P>
P pick(const Param& p) {
  return p.get(P{});
}

template <typename T, typename P>
using FrameK = void (*)(const qel16s*, int, const qel16s*, const qel16s*, int, T*, int, const T*,
                        P);
template <typename T, typename P>
using FrameIdK = void (*)(const qel16s*, int, const qel16s*, int, T*, int, const T*, P);
template <typename T, typename P>
using FrameLK = void (*)(const qel16s* const*, const qel16s*, const qel16s*, int, T*, int, const T*,
                         P);
template <typename T, typename P>
using FrameLIdK = void (*)(const qel16s* const*, const qel16s*, int, T*, int, const T*, P);

// ---- frames against one Gaussian

template <typename T, typename P>
qelStatus framesD2(FrameK<T, P> k, FrameK<T, P> kAl, const qel16s* pSrc, int step,
                   const qel16s* pMean, const qel16s* pVar, int width, T* pDst, int height, T val,
                   int sf) {
  if (const qelStatus st = checkD2(width, step, height, {pSrc, pMean, pVar, pDst})) return st;
  const Param p(sf);
  const bool al = isAligned16(pSrc) && isAligned16(pMean) && isAligned16(pVar) && stepOk(step);
  (al ? kAl : k)(pSrc, step, pMean, pVar, width, pDst, height, &val, pick<P>(p));
  return qelStatusOk;
}

template <typename T, typename P>
qelStatus framesIdD2(FrameIdK<T, P> k, FrameIdK<T, P> kAl, const qel16s* pSrc, int step,
                     const qel16s* pMean, int width, T* pDst, int height, T val, int sf) {
  if (const qelStatus st = checkD2(width, step, height, {pSrc, pMean, pDst})) return st;
  const Param p(sf);
  const bool al = isAligned16(pSrc) && isAligned16(pMean) && stepOk(step);
  (al ? kAl : k)(pSrc, step, pMean, width, pDst, height, &val, pick<P>(p));
  return qelStatusOk;
}

template <typename T, typename P>
qelStatus framesD2L(FrameLK<T, P> k, FrameLK<T, P> kAl, const qel16s** ppSrc, const qel16s* pMean,
                    const qel16s* pVar, int width, T* pDst, int height, T val, int sf) {
  if (const qelStatus st = checkD2L(width, height, {ppSrc, pMean, pVar, pDst})) return st;
  const Param p(sf);
  const bool al = rowsOk(ppSrc, height) && isAligned16(pMean) && isAligned16(pVar);
  (al ? kAl : k)(ppSrc, pMean, pVar, width, pDst, height, &val, pick<P>(p));
  return qelStatusOk;
}

template <typename T, typename P>
qelStatus framesIdD2L(FrameLIdK<T, P> k, FrameLIdK<T, P> kAl, const qel16s** ppSrc,
                      const qel16s* pMean, int width, T* pDst, int height, T val, int sf) {
  if (const qelStatus st = checkD2L(width, height, {ppSrc, pMean, pDst})) return st;
  const Param p(sf);
  const bool al = rowsOk(ppSrc, height) && isAligned16(pMean);
  (al ? kAl : k)(ppSrc, pMean, width, pDst, height, &val, pick<P>(p));
  return qelStatusOk;
}

// Log-add families: chunks of 128 rows scored into a stack buffer aligned
// to 32 bytes, then log-added into the destination by the vector routine.
// A null pVar stands for the identity members.
template <typename P>
qelStatus addD2(FrameK<qel32f, P> k, FrameK<qel32f, P> kAl, FrameIdK<qel32f, P> ki,
                FrameIdK<qel32f, P> kiAl, const qel16s* pSrc, int step, const qel16s* pMean,
                const qel16s* pVar, bool idVar, int width, qel32f* pDst, int height, qel32f val,
                int sf) {
  if (const qelStatus st = checkD2(width, step, height, {pSrc, pMean, idVar ? pMean : pVar, pDst}))
    return st;
  const Param p(sf);
  const bool al =
      isAligned16(pSrc) && isAligned16(pMean) && (idVar || isAligned16(pVar)) && stepOk(step);
  alignas(32) qel32f buf[kFrameChunk];
  for (int r0 = 0; r0 < height; r0 += kFrameChunk) {
    const int n = height - r0 < kFrameChunk ? height - r0 : kFrameChunk;
    const qel16s* src = pSrc + static_cast<std::ptrdiff_t>(r0) * step;
    if (idVar)
      (al ? kiAl : ki)(src, step, pMean, width, buf, n, &val, pick<P>(p));
    else
      (al ? kAl : k)(src, step, pMean, pVar, width, buf, n, &val, pick<P>(p));
    qelsLogAddVec_32f_M7_sp(buf, pDst + r0, n);
  }
  return qelStatusOk;
}

// The alignment of the row pointers is examined chunk by chunk.
template <typename P>
qelStatus addD2L(FrameLK<qel32f, P> k, FrameLK<qel32f, P> kAl, FrameLIdK<qel32f, P> ki,
                 FrameLIdK<qel32f, P> kiAl, const qel16s** ppSrc, const qel16s* pMean,
                 const qel16s* pVar, bool idVar, int width, qel32f* pDst, int height, qel32f val,
                 int sf) {
  if (const qelStatus st = checkD2L(width, height, {ppSrc, pMean, idVar ? pMean : pVar, pDst}))
    return st;
  const Param p(sf);
  alignas(32) qel32f buf[kFrameChunk];
  for (int r0 = 0; r0 < height; r0 += kFrameChunk) {
    const int n = height - r0 < kFrameChunk ? height - r0 : kFrameChunk;
    const qel16s* const* src = ppSrc + r0;
    const bool al = rowsOk(src, n) && isAligned16(pMean) && (idVar || isAligned16(pVar));
    if (idVar)
      (al ? kiAl : ki)(src, pMean, width, buf, n, &val, pick<P>(p));
    else
      (al ? kAl : k)(src, pMean, pVar, width, buf, n, &val, pick<P>(p));
    qelsLogAddVec_32f_M7_sp(buf, pDst + r0, n);
  }
  return qelStatusOk;
}

// ---- one observation against components

template <typename T, typename P>
using MixK = void (*)(const qel16s*, const qel16s*, int, const qel16s*, int, T*, int, P);
template <typename T, typename P>
using MixLK = void (*)(const qel16s* const*, const qel16s* const*, const qel16s*, int, T*, int, P);
template <typename T, typename P>
using MixMaxK = void (*)(const qel16s*, const qel16s*, int, const qel16s*, int, const T*, T*, int,
                         P);
template <typename T, typename P>
using MixMaxLK = void (*)(const qel16s* const*, const qel16s* const*, const qel16s*, int, const T*,
                          T*, int, P);

template <typename T, typename P>
qelStatus multiMixD2(MixK<T, P> k, MixK<T, P> kAl, const qel16s* pMean, const qel16s* pVar,
                     int step, const qel16s* pSrc, int width, T* pSrcDst, int height, int sf) {
  if (const qelStatus st = checkD2(width, step, height, {pMean, pVar, pSrc, pSrcDst})) return st;
  const Param p(sf);
  const bool al = isAligned16(pSrc) && isAligned16(pMean) && isAligned16(pVar) && stepOk(step);
  (al ? kAl : k)(pMean, pVar, step, pSrc, width, pSrcDst, height, pick<P>(p));
  return qelStatusOk;
}

template <typename T, typename P>
qelStatus multiMixD2L(MixLK<T, P> k, MixLK<T, P> kAl, const qel16s** ppMean, const qel16s** ppVar,
                      const qel16s* pSrc, int width, T* pSrcDst, int height, int sf) {
  if (const qelStatus st = checkD2L(width, height, {ppMean, ppVar, pSrc, pSrcDst})) return st;
  const Param p(sf);
  const bool al = isAligned16(pSrc) && rowsOk(ppMean, height) && rowsOk(ppVar, height);
  (al ? kAl : k)(ppMean, ppVar, pSrc, width, pSrcDst, height, pick<P>(p));
  return qelStatusOk;
}

// As with the single-precision maximum, the aligned kernel also wants pVal
// on 16 bytes (the twins give the same bits either way).
template <typename T, typename P>
qelStatus maxMultiMixD2(MixMaxK<T, P> k, MixMaxK<T, P> kAl, const qel16s* pMean, const qel16s* pVar,
                        int step, const qel16s* pSrc, int width, const T* pVal, T* pSrcDst,
                        int height, int sf) {
  if (const qelStatus st = checkD2(width, step, height, {pMean, pVar, pSrc, pVal, pSrcDst}))
    return st;
  const Param p(sf);
  const bool al = isAligned16(pSrc) && isAligned16(pMean) && isAligned16(pVar) && stepOk(step) &&
                  isAligned16(pVal);
  (al ? kAl : k)(pMean, pVar, step, pSrc, width, pVal, pSrcDst, height, pick<P>(p));
  return qelStatusOk;
}

template <typename T, typename P>
qelStatus maxMultiMixD2L(MixMaxLK<T, P> k, MixMaxLK<T, P> kAl, const qel16s** ppMean,
                         const qel16s** ppVar, const qel16s* pSrc, int width, const T* pVal,
                         T* pSrcDst, int height, int sf) {
  if (const qelStatus st = checkD2L(width, height, {ppMean, ppVar, pSrc, pVal, pSrcDst})) return st;
  const Param p(sf);
  const bool al =
      isAligned16(pSrc) && rowsOk(ppMean, height) && rowsOk(ppVar, height) && isAligned16(pVal);
  (al ? kAl : k)(ppMean, ppVar, pSrc, width, pVal, pSrcDst, height, pick<P>(p));
  return qelStatusOk;
}

// Log-add of the component scores: chunks of 100 components, the constants
// copied into a stack buffer, scored in place by the MultiMix kernel (for
// row pointers the one with the extra group of 4 columns) and log-added into
// pSrcDst.
template <typename P>
qelStatus addMultiMixD2(MixK<qel32f, P> k, MixK<qel32f, P> kAl, const qel16s* pMean,
                        const qel16s* pVar, int step, const qel16s* pSrc, int width,
                        const qel32f* pVal, qel32f* pSrcDst, int height, int sf) {
  if (const qelStatus st = checkD2(width, step, height, {pMean, pVar, pSrc, pVal, pSrcDst}))
    return st;
  const Param p(sf);
  const bool al = isAligned16(pSrc) && isAligned16(pMean) && isAligned16(pVar) && stepOk(step);
  alignas(32) qel32f buf[kMixChunk];
  for (int m0 = 0; m0 < height; m0 += kMixChunk) {
    const int n = height - m0 < kMixChunk ? height - m0 : kMixChunk;
    const std::ptrdiff_t off = static_cast<std::ptrdiff_t>(m0) * step;
    qelsCopy_32f(pVal + m0, buf, n);
    (al ? kAl : k)(pMean + off, pVar + off, step, pSrc, width, buf, n, pick<P>(p));
    qelsLogAddVec_32f_M7_sp(buf, pSrcDst + m0, n);
  }
  return qelStatusOk;
}

template <typename P>
qelStatus addMultiMixD2L(MixLK<qel32f, P> k, MixLK<qel32f, P> kAl, const qel16s** ppMean,
                         const qel16s** ppVar, const qel16s* pSrc, int width, const qel32f* pVal,
                         qel32f* pSrcDst, int height, int sf) {
  if (const qelStatus st = checkD2L(width, height, {ppMean, ppVar, pSrc, pVal, pSrcDst})) return st;
  const Param p(sf);
  alignas(32) qel32f buf[kMixChunk];
  for (int m0 = 0; m0 < height; m0 += kMixChunk) {
    const int n = height - m0 < kMixChunk ? height - m0 : kMixChunk;
    const bool al = isAligned16(pSrc) && rowsOk(ppMean + m0, n) && rowsOk(ppVar + m0, n);
    qelsCopy_32f(pVal + m0, buf, n);
    (al ? kAl : k)(ppMean + m0, ppVar + m0, pSrc, width, buf, n, pick<P>(p));
    qelsLogAddVec_32f_M7_sp(buf, pSrcDst + m0, n);
  }
  return qelStatusOk;
}

// Mixture log likelihood: slot 0 of a 101-element stack buffer holds the
// running sum, slots 1..n a chunk of up to 100 scores; the first chunk is
// summed alone, each later one together with the running sum. `score(m0,
// n, dst)` scores components m0..m0+n-1 in place over their constants.
template <typename Score>
void mixtureChunks(const qel32f* pVal, int height, qel32f* pResult, Score score) {
  alignas(32) qel32f buf[kMixChunk + 1];
  for (int m0 = 0; m0 < height; m0 += kMixChunk) {
    const int n = height - m0 < kMixChunk ? height - m0 : kMixChunk;
    qelsCopy_32f(pVal + m0, buf + 1, n);
    score(m0, n, buf + 1);
    if (m0 == 0)
      qelsLogSum_32f_M7(buf + 1, buf, n);
    else
      qelsLogSum_32f_M7(buf, buf, n + 1);
  }
  *pResult = buf[0];
}

template <typename P>
qelStatus mixtureD2(MixK<qel32f, P> k, MixK<qel32f, P> kAl, const qel16s* pSrc, const qel16s* pMean,
                    const qel16s* pVar, int height, int step, int width, const qel32f* pVal,
                    qel32f* pResult, int sf) {
  if (const qelStatus st = checkD2(width, step, height, {pSrc, pMean, pVar, pVal, pResult}))
    return st;
  const Param p(sf);
  const bool al = isAligned16(pSrc) && isAligned16(pMean) && isAligned16(pVar) && stepOk(step);
  mixtureChunks(pVal, height, pResult, [&](int m0, int n, qel32f* dst) {
    const std::ptrdiff_t off = static_cast<std::ptrdiff_t>(m0) * step;
    (al ? kAl : k)(pMean + off, pVar + off, step, pSrc, width, dst, n, pick<P>(p));
  });
  return qelStatusOk;
}

template <typename P>
qelStatus mixtureD2L(MixLK<qel32f, P> k, MixLK<qel32f, P> kAl, const qel16s* pSrc,
                     const qel16s** ppMean, const qel16s** ppVar, int height, int width,
                     const qel32f* pVal, qel32f* pResult, int sf) {
  if (const qelStatus st = checkD2L(width, height, {pSrc, ppMean, ppVar, pVal, pResult})) return st;
  const Param p(sf);
  mixtureChunks(pVal, height, pResult, [&](int m0, int n, qel32f* dst) {
    const bool al = isAligned16(pSrc) && rowsOk(ppMean + m0, n) && rowsOk(ppVar + m0, n);
    (al ? kAl : k)(ppMean + m0, ppVar + m0, pSrc, width, dst, n, pick<P>(p));
  });
  return qelStatusOk;
}

// Identity mixtures score each component alone with the single-observation
// kernel, the aligned twin when pSrc and the component's row lie on 16 bytes.
template <typename P>
using SingleIdK = void (*)(const qel16s*, const qel16s*, int, qel32f*, const qel32f*, P);

template <typename P, typename Row>
void idMixtureChunks(SingleIdK<P> k, SingleIdK<P> kAl, const qel16s* pSrc, Row row, int height,
                     int width, const qel32f* pVal, qel32f* pResult, int sf) {
  const Param p(sf);
  mixtureChunks(pVal, height, pResult, [&](int m0, int n, qel32f* dst) {
    for (int i = 0; i < n; ++i) {
      const qel16s* mean = row(m0 + i);
      (isAligned16(pSrc) && isAligned16(mean) ? kAl : k)(pSrc, mean, width, dst + i, dst + i,
                                                         pick<P>(p));
    }
  });
}

template <typename P>
qelStatus idMixtureD2(SingleIdK<P> k, SingleIdK<P> kAl, const qel16s* pSrc, const qel16s* pMean,
                      int height, int step, int width, const qel32f* pVal, qel32f* pResult,
                      int sf) {
  if (const qelStatus st = checkD2(width, step, height, {pSrc, pMean, pVal, pResult})) return st;
  idMixtureChunks<P>(
      k, kAl, pSrc, [&](int m) { return pMean + static_cast<std::ptrdiff_t>(m) * step; }, height,
      width, pVal, pResult, sf);
  return qelStatusOk;
}

template <typename P>
qelStatus idMixtureD2L(SingleIdK<P> k, SingleIdK<P> kAl, const qel16s* pSrc, const qel16s** ppMean,
                       int height, int width, const qel32f* pVal, qel32f* pResult, int sf) {
  if (const qelStatus st = checkD2L(width, height, {pSrc, ppMean, pVal, pResult})) return st;
  idMixtureChunks<P>(
      k, kAl, pSrc, [&](int m) { return ppMean[m]; }, height, width, pVal, pResult, sf);
  return qelStatusOk;
}

// A kernel and its aligned twin, as the dispatch helpers take them.
#define FX_TWIN(kernel) kernel, kernel##_Al

using PK = const qel32f*;  // kernels that take k
using PS = int;            // kernels that take the factor

}  // namespace

extern "C" {

// ---- qelsLogGauss_*

qelStatus qelsLogGauss_16s32s_D2Sfs(const qel16s* pSrc, int step, const qel16s* pMean,
                                    const qel16s* pVar, int width, qel32s* pDst, int height,
                                    qel32s val, int scaleFactor) {
  return framesD2<qel32s, PS>(FX_TWIN(qelsLGauss_16s32s_D2_M7), pSrc, step, pMean, pVar, width,
                              pDst, height, val, scaleFactor);
}
qelStatus qelsLogGauss_16s32s_D2LSfs(const qel16s** ppSrc, const qel16s* pMean, const qel16s* pVar,
                                     int width, qel32s* pDst, int height, qel32s val,
                                     int scaleFactor) {
  return framesD2L<qel32s, PS>(FX_TWIN(qelsLGauss_16s32s_D2L_M7), ppSrc, pMean, pVar, width, pDst,
                               height, val, scaleFactor);
}
qelStatus qelsLogGauss_Scaled_16s32f_D2(const qel16s* pSrc, int step, const qel16s* pMean,
                                        const qel16s* pVar, int width, qel32f* pDst, int height,
                                        qel32f val, int scaleFactor) {
  return framesD2<qel32f, PK>(FX_TWIN(qelsLGauss_16s32f_M7), pSrc, step, pMean, pVar, width, pDst,
                              height, val, scaleFactor);
}
qelStatus qelsLogGauss_Scaled_16s32f_D2L(const qel16s** ppSrc, const qel16s* pMean,
                                         const qel16s* pVar, int width, qel32f* pDst, int height,
                                         qel32f val, int scaleFactor) {
  return framesD2L<qel32f, PK>(FX_TWIN(qelsLGauss_16s32f_D2L_M7), ppSrc, pMean, pVar, width, pDst,
                               height, val, scaleFactor);
}
qelStatus qelsLogGauss_Low_16s32s_D2Sfs(const qel16s* pSrc, int step, const qel16s* pMean,
                                        const qel16s* pVar, int width, qel32s* pDst, int height,
                                        qel32s val, int scaleFactor) {
  return framesD2<qel32s, PS>(FX_TWIN(qelsLGaussLow_16s32s_D2_M7), pSrc, step, pMean, pVar, width,
                              pDst, height, val, scaleFactor);
}
qelStatus qelsLogGauss_Low_16s32s_D2LSfs(const qel16s** ppSrc, const qel16s* pMean,
                                         const qel16s* pVar, int width, qel32s* pDst, int height,
                                         qel32s val, int scaleFactor) {
  return framesD2L<qel32s, PS>(FX_TWIN(qelsLGaussLow_16s32s_D2L_M7), ppSrc, pMean, pVar, width,
                               pDst, height, val, scaleFactor);
}
qelStatus qelsLogGauss_LowScaled_16s32f_D2(const qel16s* pSrc, int step, const qel16s* pMean,
                                           const qel16s* pVar, int width, qel32f* pDst, int height,
                                           qel32f val, int scaleFactor) {
  return framesD2<qel32f, PS>(FX_TWIN(qelsLGaussLow_16s32f_D2_M7), pSrc, step, pMean, pVar, width,
                              pDst, height, val, scaleFactor);
}
qelStatus qelsLogGauss_LowScaled_16s32f_D2L(const qel16s** ppSrc, const qel16s* pMean,
                                            const qel16s* pVar, int width, qel32f* pDst, int height,
                                            qel32f val, int scaleFactor) {
  return framesD2L<qel32f, PS>(FX_TWIN(qelsLGaussLow_16s32f_D2L_M7), ppSrc, pMean, pVar, width,
                               pDst, height, val, scaleFactor);
}
qelStatus qelsLogGauss_IdVar_16s32s_D2Sfs(const qel16s* pSrc, int step, const qel16s* pMean,
                                          int width, qel32s* pDst, int height, qel32s val,
                                          int scaleFactor) {
  return framesIdD2<qel32s, PS>(FX_TWIN(qelsLGauss_IdVar_16s32s_D2_Sfs_M7), pSrc, step, pMean,
                                width, pDst, height, val, scaleFactor);
}
qelStatus qelsLogGauss_IdVar_16s32s_D2LSfs(const qel16s** ppSrc, const qel16s* pMean, int width,
                                           qel32s* pDst, int height, qel32s val, int scaleFactor) {
  return framesIdD2L<qel32s, PS>(FX_TWIN(qelsLGauss_IdVar_16s32s_D2L_Sfs_M7), ppSrc, pMean, width,
                                 pDst, height, val, scaleFactor);
}
qelStatus qelsLogGauss_IdVarScaled_16s32f_D2(const qel16s* pSrc, int step, const qel16s* pMean,
                                             int width, qel32f* pDst, int height, qel32f val,
                                             int scaleFactor) {
  return framesIdD2<qel32f, PK>(FX_TWIN(qelsLGauss_IdVar_16s32f_D2_M7), pSrc, step, pMean, width,
                                pDst, height, val, scaleFactor);
}
qelStatus qelsLogGauss_IdVarScaled_16s32f_D2L(const qel16s** ppSrc, const qel16s* pMean, int width,
                                              qel32f* pDst, int height, qel32f val,
                                              int scaleFactor) {
  return framesIdD2L<qel32f, PK>(FX_TWIN(qelsLGauss_IdVar_16s32f_D2L_M7), ppSrc, pMean, width, pDst,
                                 height, val, scaleFactor);
}
qelStatus qelsLogGauss_IdVarLow_16s32s_D2Sfs(const qel16s* pSrc, int step, const qel16s* pMean,
                                             int width, qel32s* pDst, int height, qel32s val,
                                             int scaleFactor) {
  return framesIdD2<qel32s, PS>(FX_TWIN(qelsLGaussLow_IdVar_16s32s_D2_Sfs_M7), pSrc, step, pMean,
                                width, pDst, height, val, scaleFactor);
}
qelStatus qelsLogGauss_IdVarLow_16s32s_D2LSfs(const qel16s** ppSrc, const qel16s* pMean, int width,
                                              qel32s* pDst, int height, qel32s val,
                                              int scaleFactor) {
  return framesIdD2L<qel32s, PS>(FX_TWIN(qelsLGaussLow_IdVar_16s32s_D2L_Sfs_M7), ppSrc, pMean,
                                 width, pDst, height, val, scaleFactor);
}
qelStatus qelsLogGauss_IdVarLowScaled_16s32f_D2(const qel16s* pSrc, int step, const qel16s* pMean,
                                                int width, qel32f* pDst, int height, qel32f val,
                                                int scaleFactor) {
  return framesIdD2<qel32f, PS>(FX_TWIN(qelsLGaussLow_IdVar_16s32f_D2_M7), pSrc, step, pMean, width,
                                pDst, height, val, scaleFactor);
}
qelStatus qelsLogGauss_IdVarLowScaled_16s32f_D2L(const qel16s** ppSrc, const qel16s* pMean,
                                                 int width, qel32f* pDst, int height, qel32f val,
                                                 int scaleFactor) {
  return framesIdD2L<qel32f, PS>(FX_TWIN(qelsLGaussLow_IdVar_16s32f_D2L_M7), ppSrc, pMean, width,
                                 pDst, height, val, scaleFactor);
}

// ---- qelsLogGaussMax_*

qelStatus qelsLogGaussMax_16s32s_D2Sfs(const qel16s* pSrc, int step, const qel16s* pMean,
                                       const qel16s* pVar, int width, qel32s* pDst, int height,
                                       qel32s val, int scaleFactor) {
  return framesD2<qel32s, PK>(FX_TWIN(qelsLGaussMax_16s32s_M7), pSrc, step, pMean, pVar, width,
                              pDst, height, val, scaleFactor);
}
qelStatus qelsLogGaussMax_16s32s_D2LSfs(const qel16s** ppSrc, const qel16s* pMean,
                                        const qel16s* pVar, int width, qel32s* pDst, int height,
                                        qel32s val, int scaleFactor) {
  return framesD2L<qel32s, PK>(FX_TWIN(qelsLGaussMax_16s32s_D2LSfs_M7), ppSrc, pMean, pVar, width,
                               pDst, height, val, scaleFactor);
}
qelStatus qelsLogGaussMax_Scaled_16s32f_D2(const qel16s* pSrc, int step, const qel16s* pMean,
                                           const qel16s* pVar, int width, qel32f* pDst, int height,
                                           qel32f val, int scaleFactor) {
  return framesD2<qel32f, PK>(FX_TWIN(qelsLGaussMax_16s32f_D2_M7), pSrc, step, pMean, pVar, width,
                              pDst, height, val, scaleFactor);
}
qelStatus qelsLogGaussMax_Scaled_16s32f_D2L(const qel16s** ppSrc, const qel16s* pMean,
                                            const qel16s* pVar, int width, qel32f* pDst, int height,
                                            qel32f val, int scaleFactor) {
  return framesD2L<qel32f, PK>(FX_TWIN(qelsLGaussMax_16s32f_D2L_M7), ppSrc, pMean, pVar, width,
                               pDst, height, val, scaleFactor);
}
qelStatus qelsLogGaussMax_Low_16s32s_D2Sfs(const qel16s* pSrc, int step, const qel16s* pMean,
                                           const qel16s* pVar, int width, qel32s* pDst, int height,
                                           qel32s val, int scaleFactor) {
  return framesD2<qel32s, PS>(FX_TWIN(qelsLGaussMaxLow_16s32s_D2_M7), pSrc, step, pMean, pVar,
                              width, pDst, height, val, scaleFactor);
}
qelStatus qelsLogGaussMax_Low_16s32s_D2LSfs(const qel16s** ppSrc, const qel16s* pMean,
                                            const qel16s* pVar, int width, qel32s* pDst, int height,
                                            qel32s val, int scaleFactor) {
  return framesD2L<qel32s, PS>(FX_TWIN(qelsLGaussMaxLow_16s32s_D2L_M7), ppSrc, pMean, pVar, width,
                               pDst, height, val, scaleFactor);
}
qelStatus qelsLogGaussMax_LowScaled_16s32f_D2(const qel16s* pSrc, int step, const qel16s* pMean,
                                              const qel16s* pVar, int width, qel32f* pDst,
                                              int height, qel32f val, int scaleFactor) {
  return framesD2<qel32f, PS>(FX_TWIN(qelsLGaussMaxLow_16s32f_D2_M7), pSrc, step, pMean, pVar,
                              width, pDst, height, val, scaleFactor);
}
qelStatus qelsLogGaussMax_LowScaled_16s32f_D2L(const qel16s** ppSrc, const qel16s* pMean,
                                               const qel16s* pVar, int width, qel32f* pDst,
                                               int height, qel32f val, int scaleFactor) {
  return framesD2L<qel32f, PS>(FX_TWIN(qelsLGaussMaxLow_16s32f_D2L_M7), ppSrc, pMean, pVar, width,
                               pDst, height, val, scaleFactor);
}
qelStatus qelsLogGaussMax_IdVar_16s32s_D2Sfs(const qel16s* pSrc, int step, const qel16s* pMean,
                                             int width, qel32s* pDst, int height, qel32s val,
                                             int scaleFactor) {
  return framesIdD2<qel32s, PK>(FX_TWIN(qelsLGaussMax_IdVar_16s32s_D2Sfs_M7), pSrc, step, pMean,
                                width, pDst, height, val, scaleFactor);
}
qelStatus qelsLogGaussMax_IdVar_16s32s_D2LSfs(const qel16s** ppSrc, const qel16s* pMean, int width,
                                              qel32s* pDst, int height, qel32s val,
                                              int scaleFactor) {
  return framesIdD2L<qel32s, PK>(FX_TWIN(qelsLGaussMax_IdVar_16s32s_D2LSfs_M7), ppSrc, pMean, width,
                                 pDst, height, val, scaleFactor);
}
qelStatus qelsLogGaussMax_IdVarScaled_16s32f_D2(const qel16s* pSrc, int step, const qel16s* pMean,
                                                int width, qel32f* pDst, int height, qel32f val,
                                                int scaleFactor) {
  return framesIdD2<qel32f, PK>(FX_TWIN(qelsLGaussMax_IdVar_16s32f_D2_M7), pSrc, step, pMean, width,
                                pDst, height, val, scaleFactor);
}
qelStatus qelsLogGaussMax_IdVarScaled_16s32f_D2L(const qel16s** ppSrc, const qel16s* pMean,
                                                 int width, qel32f* pDst, int height, qel32f val,
                                                 int scaleFactor) {
  return framesIdD2L<qel32f, PK>(FX_TWIN(qelsLGaussMax_IdVar_16s32f_D2L_M7), ppSrc, pMean, width,
                                 pDst, height, val, scaleFactor);
}
qelStatus qelsLogGaussMax_IdVarLow_16s32s_D2Sfs(const qel16s* pSrc, int step, const qel16s* pMean,
                                                int width, qel32s* pDst, int height, qel32s val,
                                                int scaleFactor) {
  return framesIdD2<qel32s, PS>(FX_TWIN(qelsLGaussMaxLow_IdVar_16s32s_D2_Sfs_M7), pSrc, step, pMean,
                                width, pDst, height, val, scaleFactor);
}
qelStatus qelsLogGaussMax_IdVarLow_16s32s_D2LSfs(const qel16s** ppSrc, const qel16s* pMean,
                                                 int width, qel32s* pDst, int height, qel32s val,
                                                 int scaleFactor) {
  return framesIdD2L<qel32s, PS>(FX_TWIN(qelsLGaussMaxLow_IdVar_16s32s_D2L_Sfs_M7), ppSrc, pMean,
                                 width, pDst, height, val, scaleFactor);
}
qelStatus qelsLogGaussMax_IdVarLowScaled_16s32f_D2(const qel16s* pSrc, int step,
                                                   const qel16s* pMean, int width, qel32f* pDst,
                                                   int height, qel32f val, int scaleFactor) {
  return framesIdD2<qel32f, PS>(FX_TWIN(qelsLGaussMaxLow_IdVar_16s32f_D2_M7), pSrc, step, pMean,
                                width, pDst, height, val, scaleFactor);
}
qelStatus qelsLogGaussMax_IdVarLowScaled_16s32f_D2L(const qel16s** ppSrc, const qel16s* pMean,
                                                    int width, qel32f* pDst, int height, qel32f val,
                                                    int scaleFactor) {
  return framesIdD2L<qel32f, PS>(FX_TWIN(qelsLGaussMaxLow_IdVar_16s32f_D2L_M7), ppSrc, pMean, width,
                                 pDst, height, val, scaleFactor);
}

// ---- qelsLogGaussAdd_*

qelStatus qelsLogGaussAdd_Scaled_16s32f_D2(const qel16s* pSrc, int step, const qel16s* pMean,
                                           const qel16s* pVar, int width, qel32f* pDst, int height,
                                           qel32f val, int scaleFactor) {
  return addD2<PK>(FX_TWIN(qelsLGauss_16s32f_M7), nullptr, nullptr, pSrc, step, pMean, pVar, false,
                   width, pDst, height, val, scaleFactor);
}
qelStatus qelsLogGaussAdd_Scaled_16s32f_D2L(const qel16s** ppSrc, const qel16s* pMean,
                                            const qel16s* pVar, int width, qel32f* pDst, int height,
                                            qel32f val, int scaleFactor) {
  return addD2L<PK>(FX_TWIN(qelsLGauss_16s32f_D2L_M7), nullptr, nullptr, ppSrc, pMean, pVar, false,
                    width, pDst, height, val, scaleFactor);
}
qelStatus qelsLogGaussAdd_LowScaled_16s32f_D2(const qel16s* pSrc, int step, const qel16s* pMean,
                                              const qel16s* pVar, int width, qel32f* pDst,
                                              int height, qel32f val, int scaleFactor) {
  return addD2<PS>(FX_TWIN(qelsLGaussLow_16s32f_D2_M7), nullptr, nullptr, pSrc, step, pMean, pVar,
                   false, width, pDst, height, val, scaleFactor);
}
qelStatus qelsLogGaussAdd_LowScaled_16s32f_D2L(const qel16s** ppSrc, const qel16s* pMean,
                                               const qel16s* pVar, int width, qel32f* pDst,
                                               int height, qel32f val, int scaleFactor) {
  return addD2L<PS>(FX_TWIN(qelsLGaussLow_16s32f_D2L_M7), nullptr, nullptr, ppSrc, pMean, pVar,
                    false, width, pDst, height, val, scaleFactor);
}
qelStatus qelsLogGaussAdd_IdVarScaled_16s32f_D2(const qel16s* pSrc, int step, const qel16s* pMean,
                                                int width, qel32f* pDst, int height, qel32f val,
                                                int scaleFactor) {
  return addD2<PK>(nullptr, nullptr, FX_TWIN(qelsLGauss_IdVar_16s32f_D2_M7), pSrc, step, pMean,
                   nullptr, true, width, pDst, height, val, scaleFactor);
}
qelStatus qelsLogGaussAdd_IdVarScaled_16s32f_D2L(const qel16s** ppSrc, const qel16s* pMean,
                                                 int width, qel32f* pDst, int height, qel32f val,
                                                 int scaleFactor) {
  return addD2L<PK>(nullptr, nullptr, FX_TWIN(qelsLGauss_IdVar_16s32f_D2L_M7), ppSrc, pMean,
                    nullptr, true, width, pDst, height, val, scaleFactor);
}
qelStatus qelsLogGaussAdd_IdVarLowScaled_16s32f_D2(const qel16s* pSrc, int step,
                                                   const qel16s* pMean, int width, qel32f* pDst,
                                                   int height, qel32f val, int scaleFactor) {
  return addD2<PS>(nullptr, nullptr, FX_TWIN(qelsLGaussLow_IdVar_16s32f_D2_M7), pSrc, step, pMean,
                   nullptr, true, width, pDst, height, val, scaleFactor);
}
qelStatus qelsLogGaussAdd_IdVarLowScaled_16s32f_D2L(const qel16s** ppSrc, const qel16s* pMean,
                                                    int width, qel32f* pDst, int height, qel32f val,
                                                    int scaleFactor) {
  return addD2L<PS>(nullptr, nullptr, FX_TWIN(qelsLGaussLow_IdVar_16s32f_D2L_M7), ppSrc, pMean,
                    nullptr, true, width, pDst, height, val, scaleFactor);
}

// ---- qelsLogGaussMixture_*

qelStatus qelsLogGaussMixture_Scaled_16s32f_D2(const qel16s* pSrc, const qel16s* pMean,
                                               const qel16s* pVar, int height, int step, int width,
                                               const qel32f* pVal, qel32f* pResult,
                                               int scaleFactor) {
  return mixtureD2<PK>(FX_TWIN(qelsLGaussMultiMix_16s32f_D2_M7), pSrc, pMean, pVar, height, step,
                       width, pVal, pResult, scaleFactor);
}
qelStatus qelsLogGaussMixture_Scaled_16s32f_D2L(const qel16s* pSrc, const qel16s** ppMean,
                                                const qel16s** ppVar, int height, int width,
                                                const qel32f* pVal, qel32f* pResult,
                                                int scaleFactor) {
  return mixtureD2L<PK>(FX_TWIN(qelsLGaussMultiMix_16s32f_D2L_M7), pSrc, ppMean, ppVar, height,
                        width, pVal, pResult, scaleFactor);
}
qelStatus qelsLogGaussMixture_LowScaled_16s32f_D2(const qel16s* pSrc, const qel16s* pMean,
                                                  const qel16s* pVar, int height, int step,
                                                  int width, const qel32f* pVal, qel32f* pResult,
                                                  int scaleFactor) {
  return mixtureD2<PS>(FX_TWIN(qelsLGaussMultiMixLow_16s32f_D2_M7), pSrc, pMean, pVar, height, step,
                       width, pVal, pResult, scaleFactor);
}
qelStatus qelsLogGaussMixture_LowScaled_16s32f_D2L(const qel16s* pSrc, const qel16s** ppMean,
                                                   const qel16s** ppVar, int height, int width,
                                                   const qel32f* pVal, qel32f* pResult,
                                                   int scaleFactor) {
  return mixtureD2L<PS>(FX_TWIN(qelsLGaussMultiMixLow_16s32f_D2L_M7), pSrc, ppMean, ppVar, height,
                        width, pVal, pResult, scaleFactor);
}
qelStatus qelsLogGaussMixture_IdVarScaled_16s32f_D2(const qel16s* pSrc, const qel16s* pMean,
                                                    int height, int step, int width,
                                                    const qel32f* pVal, qel32f* pResult,
                                                    int scaleFactor) {
  return idMixtureD2<PK>(FX_TWIN(qelsLGaussSingle_IdVar_16s32f_M7), pSrc, pMean, height, step,
                         width, pVal, pResult, scaleFactor);
}
qelStatus qelsLogGaussMixture_IdVarScaled_16s32f_D2L(const qel16s* pSrc, const qel16s** ppMean,
                                                     int height, int width, const qel32f* pVal,
                                                     qel32f* pResult, int scaleFactor) {
  return idMixtureD2L<PK>(FX_TWIN(qelsLGaussSingle_IdVar_16s32f_M7), pSrc, ppMean, height, width,
                          pVal, pResult, scaleFactor);
}
qelStatus qelsLogGaussMixture_IdVarLowScaled_16s32f_D2(const qel16s* pSrc, const qel16s* pMean,
                                                       int height, int step, int width,
                                                       const qel32f* pVal, qel32f* pResult,
                                                       int scaleFactor) {
  return idMixtureD2<PS>(FX_TWIN(qelsLGaussSingle_IdVarLow_16s32f_M7), pSrc, pMean, height, step,
                         width, pVal, pResult, scaleFactor);
}
qelStatus qelsLogGaussMixture_IdVarLowScaled_16s32f_D2L(const qel16s* pSrc, const qel16s** ppMean,
                                                        int height, int width, const qel32f* pVal,
                                                        qel32f* pResult, int scaleFactor) {
  return idMixtureD2L<PS>(FX_TWIN(qelsLGaussSingle_IdVarLow_16s32f_M7), pSrc, ppMean, height, width,
                          pVal, pResult, scaleFactor);
}

// ---- qelsLogGaussMultiMix_*, qelsLogGaussMaxMultiMix_*, qelsLogGaussAddMultiMix_*

qelStatus qelsLogGaussMultiMix_16s32s_D2Sfs(const qel16s* pMean, const qel16s* pVar, int step,
                                            const qel16s* pSrc, int width, qel32s* pSrcDst,
                                            int height, int scaleFactor) {
  return multiMixD2<qel32s, PS>(FX_TWIN(qelsLGaussMultiMix_16s32s_D2Sfs_M7), pMean, pVar, step,
                                pSrc, width, pSrcDst, height, scaleFactor);
}
qelStatus qelsLogGaussMultiMix_16s32s_D2LSfs(const qel16s** ppMean, const qel16s** ppVar,
                                             const qel16s* pSrc, int width, qel32s* pSrcDst,
                                             int height, int scaleFactor) {
  return multiMixD2L<qel32s, PS>(FX_TWIN(qelsLGaussMultiMix_16s32s_D2LSfs_M7), ppMean, ppVar, pSrc,
                                 width, pSrcDst, height, scaleFactor);
}
qelStatus qelsLogGaussMultiMix_Scaled_16s32f_D2(const qel16s* pMean, const qel16s* pVar, int step,
                                                const qel16s* pSrc, int width, qel32f* pSrcDst,
                                                int height, int scaleFactor) {
  return multiMixD2<qel32f, PK>(FX_TWIN(qelsLGaussMultiMix_16s32f_D2_M7), pMean, pVar, step, pSrc,
                                width, pSrcDst, height, scaleFactor);
}
qelStatus qelsLogGaussMultiMix_Scaled_16s32f_D2L(const qel16s** ppMean, const qel16s** ppVar,
                                                 const qel16s* pSrc, int width, qel32f* pSrcDst,
                                                 int height, int scaleFactor) {
  return multiMixD2L<qel32f, PK>(FX_TWIN(qelsLGaussMultiMix_16s32f_D2L_M7), ppMean, ppVar, pSrc,
                                 width, pSrcDst, height, scaleFactor);
}
qelStatus qelsLogGaussMultiMix_Low_16s32s_D2Sfs(const qel16s* pMean, const qel16s* pVar, int step,
                                                const qel16s* pSrc, int width, qel32s* pSrcDst,
                                                int height, int scaleFactor) {
  return multiMixD2<qel32s, PS>(FX_TWIN(qelsLGaussMultiMixLow_16s32s_D2Sfs_M7), pMean, pVar, step,
                                pSrc, width, pSrcDst, height, scaleFactor);
}
qelStatus qelsLogGaussMultiMix_Low_16s32s_D2LSfs(const qel16s** ppMean, const qel16s** ppVar,
                                                 const qel16s* pSrc, int width, qel32s* pSrcDst,
                                                 int height, int scaleFactor) {
  return multiMixD2L<qel32s, PS>(FX_TWIN(qelsLGaussMultiMixLow_16s32s_D2LSfs_M7), ppMean, ppVar,
                                 pSrc, width, pSrcDst, height, scaleFactor);
}
qelStatus qelsLogGaussMultiMix_LowScaled_16s32f_D2(const qel16s* pMean, const qel16s* pVar,
                                                   int step, const qel16s* pSrc, int width,
                                                   qel32f* pSrcDst, int height, int scaleFactor) {
  return multiMixD2<qel32f, PS>(FX_TWIN(qelsLGaussMultiMixLow_16s32f_D2_M7), pMean, pVar, step,
                                pSrc, width, pSrcDst, height, scaleFactor);
}
qelStatus qelsLogGaussMultiMix_LowScaled_16s32f_D2L(const qel16s** ppMean, const qel16s** ppVar,
                                                    const qel16s* pSrc, int width, qel32f* pSrcDst,
                                                    int height, int scaleFactor) {
  return multiMixD2L<qel32f, PS>(FX_TWIN(qelsLGaussMultiMixLow_16s32f_D2L_M7), ppMean, ppVar, pSrc,
                                 width, pSrcDst, height, scaleFactor);
}
qelStatus qelsLogGaussMaxMultiMix_16s32s_D2Sfs(const qel16s* pMean, const qel16s* pVar, int step,
                                               const qel16s* pSrc, int width, const qel32s* pVal,
                                               qel32s* pSrcDst, int height, int scaleFactor) {
  return maxMultiMixD2<qel32s, PK>(FX_TWIN(qelsLGaussMaxMultiMix_16s32s_D2Sfs_M7), pMean, pVar,
                                   step, pSrc, width, pVal, pSrcDst, height, scaleFactor);
}
qelStatus qelsLogGaussMaxMultiMix_16s32s_D2LSfs(const qel16s** ppMean, const qel16s** ppVar,
                                                const qel16s* pSrc, int width, const qel32s* pVal,
                                                qel32s* pSrcDst, int height, int scaleFactor) {
  return maxMultiMixD2L<qel32s, PK>(FX_TWIN(qelsLGaussMaxMultiMix_16s32s_D2LSfs_M7), ppMean, ppVar,
                                    pSrc, width, pVal, pSrcDst, height, scaleFactor);
}
qelStatus qelsLogGaussMaxMultiMix_Scaled_16s32f_D2(const qel16s* pMean, const qel16s* pVar,
                                                   int step, const qel16s* pSrc, int width,
                                                   const qel32f* pVal, qel32f* pSrcDst, int height,
                                                   int scaleFactor) {
  return maxMultiMixD2<qel32f, PK>(FX_TWIN(qelsLGaussMaxMultiMix_16s32f_D2_M7), pMean, pVar, step,
                                   pSrc, width, pVal, pSrcDst, height, scaleFactor);
}
qelStatus qelsLogGaussMaxMultiMix_Scaled_16s32f_D2L(const qel16s** ppMean, const qel16s** ppVar,
                                                    const qel16s* pSrc, int width,
                                                    const qel32f* pVal, qel32f* pSrcDst, int height,
                                                    int scaleFactor) {
  return maxMultiMixD2L<qel32f, PK>(FX_TWIN(qelsLGaussMaxMultiMix_16s32f_D2L_M7), ppMean, ppVar,
                                    pSrc, width, pVal, pSrcDst, height, scaleFactor);
}
qelStatus qelsLogGaussMaxMultiMix_Low_16s32s_D2Sfs(const qel16s* pMean, const qel16s* pVar,
                                                   int step, const qel16s* pSrc, int width,
                                                   const qel32s* pVal, qel32s* pSrcDst, int height,
                                                   int scaleFactor) {
  return maxMultiMixD2<qel32s, PS>(FX_TWIN(qelsLGaussMaxMultiMixLow_16s32s_D2Sfs_M7), pMean, pVar,
                                   step, pSrc, width, pVal, pSrcDst, height, scaleFactor);
}
qelStatus qelsLogGaussMaxMultiMix_Low_16s32s_D2LSfs(const qel16s** ppMean, const qel16s** ppVar,
                                                    const qel16s* pSrc, int width,
                                                    const qel32s* pVal, qel32s* pSrcDst, int height,
                                                    int scaleFactor) {
  return maxMultiMixD2L<qel32s, PS>(FX_TWIN(qelsLGaussMaxMultiMixLow_16s32s_D2LSfs_M7), ppMean,
                                    ppVar, pSrc, width, pVal, pSrcDst, height, scaleFactor);
}
qelStatus qelsLogGaussMaxMultiMix_LowScaled_16s32f_D2(const qel16s* pMean, const qel16s* pVar,
                                                      int step, const qel16s* pSrc, int width,
                                                      const qel32f* pVal, qel32f* pSrcDst,
                                                      int height, int scaleFactor) {
  return maxMultiMixD2<qel32f, PS>(FX_TWIN(qelsLGaussMaxMultiMixLow_16s32f_D2_M7), pMean, pVar,
                                   step, pSrc, width, pVal, pSrcDst, height, scaleFactor);
}
qelStatus qelsLogGaussMaxMultiMix_LowScaled_16s32f_D2L(const qel16s** ppMean, const qel16s** ppVar,
                                                       const qel16s* pSrc, int width,
                                                       const qel32f* pVal, qel32f* pSrcDst,
                                                       int height, int scaleFactor) {
  return maxMultiMixD2L<qel32f, PS>(FX_TWIN(qelsLGaussMaxMultiMixLow_16s32f_D2L_M7), ppMean, ppVar,
                                    pSrc, width, pVal, pSrcDst, height, scaleFactor);
}
qelStatus qelsLogGaussAddMultiMix_Scaled_16s32f_D2(const qel16s* pMean, const qel16s* pVar,
                                                   int step, const qel16s* pSrc, int width,
                                                   const qel32f* pVal, qel32f* pSrcDst, int height,
                                                   int scaleFactor) {
  return addMultiMixD2<PK>(FX_TWIN(qelsLGaussMultiMix_16s32f_D2_M7), pMean, pVar, step, pSrc, width,
                           pVal, pSrcDst, height, scaleFactor);
}
qelStatus qelsLogGaussAddMultiMix_Scaled_16s32f_D2L(const qel16s** ppMean, const qel16s** ppVar,
                                                    const qel16s* pSrc, int width,
                                                    const qel32f* pVal, qel32f* pSrcDst, int height,
                                                    int scaleFactor) {
  return addMultiMixD2L<PK>(FX_TWIN(qelsLGaussMultiMix_16s32f_D2L_M7), ppMean, ppVar, pSrc, width,
                            pVal, pSrcDst, height, scaleFactor);
}
qelStatus qelsLogGaussAddMultiMix_LowScaled_16s32f_D2(const qel16s* pMean, const qel16s* pVar,
                                                      int step, const qel16s* pSrc, int width,
                                                      const qel32f* pVal, qel32f* pSrcDst,
                                                      int height, int scaleFactor) {
  return addMultiMixD2<PS>(FX_TWIN(qelsLGaussMultiMixLow_16s32f_D2_M7), pMean, pVar, step, pSrc,
                           width, pVal, pSrcDst, height, scaleFactor);
}
qelStatus qelsLogGaussAddMultiMix_LowScaled_16s32f_D2L(const qel16s** ppMean, const qel16s** ppVar,
                                                       const qel16s* pSrc, int width,
                                                       const qel32f* pVal, qel32f* pSrcDst,
                                                       int height, int scaleFactor) {
  return addMultiMixD2L<PS>(FX_TWIN(qelsLGaussMultiMixLow_16s32f_D2L_M7), ppMean, ppVar, pSrc,
                            width, pVal, pSrcDst, height, scaleFactor);
}

}  // extern "C"
