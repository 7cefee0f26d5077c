// Unnormalised autocorrelation r[k] = sum over i of x[i]*x[i+k]: a direct
// kernel for fewer than 856 lags, the FFT (|X|^2 and back) from there on.
#include <cstring>

#include "base/base.h"
#include "base/fft/fft.h"
#include "base/simd.h"

namespace {

constexpr int kFftFromLags = 856;

// Lags k0..k0+3 at once: the samples are broadcast and multiplied by the
// four neighbouring samples at distances k0..k0+3, four samples a turn
// (the group sum is formed first, then added to the lag accumulators).
// Products that only some of the four lags reach are added one by one.
void fourLags(const float* x, int len, float* r, int k0) {
  const long common = static_cast<long>(len) - k0 - 3;  // i < common serves all four lags
  __m128 acc = _mm_setzero_ps();
  long i = 0;
  for (; i + 4 <= common; i += 4) {
    const __m128 p0 = _mm_mul_ps(_mm_set1_ps(x[i]), _mm_loadu_ps(x + i + k0));
    const __m128 p1 = _mm_mul_ps(_mm_set1_ps(x[i + 1]), _mm_loadu_ps(x + i + 1 + k0));
    const __m128 p2 = _mm_mul_ps(_mm_set1_ps(x[i + 2]), _mm_loadu_ps(x + i + 2 + k0));
    const __m128 p3 = _mm_mul_ps(_mm_set1_ps(x[i + 3]), _mm_loadu_ps(x + i + 3 + k0));
    acc = _mm_add_ps(acc, _mm_add_ps(_mm_add_ps(_mm_add_ps(p0, p1), p2), p3));
  }
  for (; i < common; ++i)
    acc = _mm_add_ps(acc, _mm_mul_ps(_mm_set1_ps(x[i]), _mm_loadu_ps(x + i + k0)));
  float lanes[4];
  _mm_storeu_ps(lanes, acc);
  const long start = common > 0 ? common : 0;
  for (int t = 0; t < 4; ++t) {
    float s = lanes[t];
    const int k = k0 + t;
    for (long j = start; j < len - k; ++j) s += x[j] * x[j + k];
    r[k] = s;
  }
}

}  // namespace

extern "C" {

void ownAutoCorr_32f(const qel32f* pSrc, int len, qel32f* pDst, int m) {
  for (int k = 0; k < m; ++k) pDst[k] = 0.0f;
  if (len >= 7 && m >= 6) {
    int k = 0;
    for (; k + 4 <= m; k += 4) fourLags(pSrc, len, pDst, k);
    // the last one to three lags
    for (; k < m; ++k) {
      float s = 0.0f;
      for (int i = 0; i < len - k; ++i) s += pSrc[i] * pSrc[i + k];
      pDst[k] = s;
    }
    return;
  }
  for (int k = 0; k < m; ++k) {
    float s = 0.0f;
    for (int i = 0; i < len - k; ++i) s += pSrc[i] * pSrc[i + k];
    pDst[k] = s;
  }
}

qelStatus qelsMulPackConj_32f_I(const qel32f* pSrc, qel32f* pSrcDst, int len) {
  if (!pSrc || !pSrcDst) return qelStatusNullPtr;
  if (len < 1) return qelStatusSize;
  pSrcDst[0] = pSrcDst[0] * pSrc[0];
  if ((len & 1) == 0) pSrcDst[len - 1] = pSrcDst[len - 1] * pSrc[len - 1];
  for (int p = 1; p <= (len - 1) / 2; ++p) {
    const float sr = pSrc[2 * p - 1], si = pSrc[2 * p];
    const float dr = pSrcDst[2 * p - 1], di = pSrcDst[2 * p];
    pSrcDst[2 * p - 1] = sr * dr + si * di;
    pSrcDst[2 * p] = si * dr - sr * di;
  }
  return qelStatusOk;
}

qelStatus qelsAutoCorr_32f(const qel32f* pSrc, int len, qel32f* pDst, int dstLen) {
  if (!pSrc || !pDst) return qelStatusNullPtr;
  if (len < 1 || dstLen < 1) return qelStatusSize;
  const int m = len < dstLen ? len : dstLen;
  if (m < kFftFromLags) {
    for (int k = m; k < dstLen; ++k) pDst[k] = 0.0f;
    ownAutoCorr_32f(pSrc, len, pDst, m);
    return qelStatusOk;
  }
  // The transform length depends on len alone: 2^order >= 2*len makes the
  // circular correlation equal the linear one at every lag below len.
  int order = 1;
  while ((1LL << order) < 2LL * len) ++order;
  FFTSpec* plan = nullptr;
  qelStatus st = qelsFFTInitAlloc_R_32f(&plan, order, QEL_FFT_DIV_INV_BY_N, 0);
  if (st != qelStatusOk) return st;
  int bufSize = 0;
  qelsFFTGetBufSize_R_32f(plan, &bufSize);
  // A missing work buffer is no error: the transforms then allocate for
  // themselves.
  qel8u* work = bufSize > 0 ? qelsMalloc_8u(bufSize) : nullptr;
  const int n = 1 << order;
  qel32f* a = qelsMalloc_32f(n);
  if (!a) {
    if (work) qelsFree(work);
    qelsFFTFree_R_32f(plan);
    return qelStatusMemAlloc;
  }
  std::memcpy(a, pSrc, static_cast<size_t>(len) * sizeof(float));
  std::memset(a + len, 0, static_cast<size_t>(n - len) * sizeof(float));
  st = qelsFFTFwd_RToPack_32f(a, a, plan, work);
  if (st == qelStatusOk) {
    qelsMulPackConj_32f_I(a, a, n);
    st = qelsFFTInv_PackToR_32f(a, a, plan, work);
  }
  if (st == qelStatusOk) {
    std::memcpy(pDst, a, static_cast<size_t>(m) * sizeof(float));
    for (int k = m; k < dstLen; ++k) pDst[k] = 0.0f;
  }
  qelsFree(a);
  if (work) qelsFree(work);
  qelsFFTFree_R_32f(plan);
  return st;
}

}  // extern "C"
