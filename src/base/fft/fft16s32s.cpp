// The 16-bit-in, 32-bit-out real transform: a float transform on the
// converted samples, rounded once to integers at the end. Its plan holds a
// float plan (made with hint 0) right behind itself.
#include <cstring>

#include "base/base.h"
#include "base/fft/fft_kernels.h"

using namespace qelsr::fft;

namespace {

constexpr long kPlan16Bytes = (sizeof(FFTSpec16s32s) + 31) & ~31L;

}  // namespace

extern "C" {

qelStatus qelsFFTGetSize_R_16s32s(int fftOrder, int flag, int hint, int* pSpecSize,
                                  int* pInitBufSize, int* pWorkBufSize) {
  (void)hint;
  const qelStatus st =
      qelsFFTGetSize_R_32f(fftOrder, flag, 0, pSpecSize, pInitBufSize, pWorkBufSize);
  if (st != qelStatusOk) return st;
  const int n = 1 << fftOrder;
  *pWorkBufSize += 4 * n + 8;
  *pSpecSize += 64;
  if (*pInitBufSize != 0) *pInitBufSize += 32;
  // The scratch always holds the N converted samples, so the work size is
  // never zero here: the further 32 bytes pay for rounding pBuffer up.
  if (*pWorkBufSize != 0) *pWorkBufSize += 32;
  return qelStatusOk;
}

qelStatus qelsFFTInit_R_16s32s(FFTSpec16s32s** ppSpec, int fftOrder, int flag, int hint,
                               qel8u* pSpecMem, qel8u* pInitBuf) {
  if (!ppSpec) return qelStatusNullPtr;
  if (fftOrder < 0 || fftOrder > 27) return qelStatusFFTOrder;
  if (!pSpecMem) return qelStatusNullPtr;
  FFTSpec16s32s* s = reinterpret_cast<FFTSpec16s32s*>(alignUp32(pSpecMem));
  FFTSpec* inner = nullptr;
  const qelStatus st = qelsFFTInit_R_32f(&inner, fftOrder, flag, 0,
                                         reinterpret_cast<qel8u*>(s) + kPlan16Bytes, pInitBuf);
  if (st != qelStatusOk) {
    s->specTag = 0;
    return st;
  }
  s->order = fftOrder;
  s->hint = hint;
  s->workSize = inner->workSize + 4 * (1 << fftOrder) + 8;
  s->ownsMemory = 0;
  s->pSpec32f = inner;
  s->specTag = kFFTSpec16s32sTag;
  *ppSpec = s;
  return qelStatusOk;
}

qelStatus qelsFFTInitAlloc_R_16s32s(FFTSpec16s32s** ppSpec, int fftOrder, int flag, int hint) {
  return allocatePlan(ppSpec, fftOrder, flag, hint, qelsFFTGetSize_R_16s32s, qelsFFTInit_R_16s32s);
}

qelStatus qelsFFTFree_R_16s32s(FFTSpec16s32s* pSpec) {
  if (!pSpec) return qelStatusNullPtr;
  if (pSpec->specTag != kFFTSpec16s32sTag) return qelStatusContextMatch;
  pSpec->specTag = 0;
  if (pSpec->pSpec32f) pSpec->pSpec32f->specTag = 0;
  if (pSpec->ownsMemory) qelsFree(pSpec);
  return qelStatusOk;
}

qelStatus qelsFFTFwd_RToCCS_16s32s_Sfs(const qel16s* pSrc, qel32s* pDst, const FFTSpec16s32s* pSpec,
                                       int scaleFactor, qel8u* pBuffer) {
  if (!pSpec) return qelStatusNullPtr;
  if (pSpec->specTag != kFFTSpec16s32sTag) return qelStatusContextMatch;
  if (!pSrc || !pDst) return qelStatusNullPtr;
  qel8u* owned = nullptr;
  float* scratch;
  if (pBuffer) {
    scratch = reinterpret_cast<float*>(alignUp32(pBuffer));
  } else {
    owned = qelsMalloc_8u(pSpec->workSize);
    if (!owned) return qelStatusMemAlloc;
    scratch = reinterpret_cast<float*>(owned);
  }
  const int n = 1 << pSpec->order;
  qelsConvert_16s32f(pSrc, scratch, n);
  qelStatus st = qelsFFTFwd_RToPerm_32f(scratch, scratch, pSpec->pSpec32f,
                                        reinterpret_cast<qel8u*>(scratch + n));
  if (st == qelStatusOk) {
    qelsConvert_32f32s_Sfs(scratch, pDst, n, 1, scaleFactor);
    if (n > 1) {
      pDst[n] = pDst[1];
      pDst[n + 1] = 0;
    }
    pDst[1] = 0;
  }
  if (owned) qelsFree(owned);
  return st;
}

}  // extern "C"
