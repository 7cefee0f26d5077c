// The real FFT: plan sizes, plan construction, the forward and inverse
// transforms and the recombination between the half-length complex
// spectrum and the real one.
//
// Which length takes which path (C = N/2 complex points):
//   order 0..4    straight-line real transforms (fft_small.cpp)
//   order 5, 6    straight-line complex transforms, then recombination
//   order 7..13   the core in cache: radix-4 and radix-8 stages (fft_complex.cpp)
//   order 14..18  eight decimated columns + a radix-8 pass, on up to 2 threads
//   order 19..27  blocked: bit reversal, blocks in cache, merge levels
//
// Plan memory, after the plan itself (each table on a 32-byte boundary):
//   pRealRec, pCcsRec   N/4 complex each
//   order 7..13:  pTwiddle (core of C points), pBitRev (first pass)
//   order 14..18: pTwiddleLast (7C/8 complex), pTwiddle and pBitRev of the
//                 C/8-point columns
//   order 19..27: pTwiddle (core of the innermost block), pStepTwiddle[level]
//                 (merge twiddles of each level of blocking), pBitRev
// Everything fits the sizes that qelsFFTGetSize_R_32f reports.
#include <cmath>
#include <cstring>

#include "base/base.h"
#include "base/fft/fft_kernels.h"
#include "core/qelcore.h"

using namespace qelsr::fft;

namespace {

constexpr long kPlanBytes = (sizeof(FFTSpec) + 31) & ~31L;

inline long align32down(long v) { return v & ~31L; }

bool validFlag(int flag) { return flag == 1 || flag == 2 || flag == 4 || flag == 8; }

// Table bytes T and work bytes W of the large path for 2^k points.
void largeSizes(int k, long* t, long* w) {
  const int b = qels_fftBlockOrder(k), f = qels_fftBufOrder(k), m = k - b;
  long t0, w0;
  if (m < 18) {
    t0 = align32down(8 * (1L << m) + 39);
    w0 = align32down(8 * (1L << m) + 31);
  } else {
    largeSizes(m, &t0, &w0);
  }
  *t = t0 + 8 * (1L << k);
  *w = w0 > 8 * (1L << f) ? w0 : 8 * (1L << f);
}

void planSizes(int order, long* planBytes, long* init, long* work) {
  const long n = 1L << order;
  if (order <= 4) {
    *planBytes = 168;
    *init = *work = 0;
    return;
  }
  const int k = order - 1;
  const long c2 = 1L << k;
  const long r = 2 * align32down(2 * n + 31);
  const long c = align32down(c2 + 35);
  *init = order <= 10 ? 0 : align32down(n + 35) + 32;
  if (order <= 6) {
    *planBytes = r + 192;
    *init = *work = 0;
  } else if (order <= 13) {
    *planBytes = align32down(8 * c2 + 39) + c + r + 192;
    *work = align32down(8 * c2 + 31) + 32;
  } else if (order <= 18) {
    *planBytes = align32down(7 * c2 + 31) + align32down(c2 + 39) + c + r + 192;
    *work = align32down(8 * c2 + 31) + 32;
  } else {
    long t, w;
    largeSizes(k, &t, &w);
    if (w < 65536) w = 65536;
    *planBytes = t + c + r + 192;
    *work = w + 32;
  }
}

// Bump allocator of the tables behind the plan.
struct Cursor {
  qel8u* p;
  template <typename T>
  T* take(long count) {
    T* r = reinterpret_cast<T*>(p);
    p = alignUp32(p + count * static_cast<long>(sizeof(T)));
    return r;
  }
};

// Merge twiddles of one level of blocking of 2^logC points.
float* buildMerge(float* tw, int logC, const SineBase& base) {
  const int b = qels_fftBlockOrder(logC);
  long l = 1L << (logC - b);
  int remaining = b;
  while (remaining > 0) {
    const int radix = (remaining == 2 || remaining == 4) ? 4 : 8;
    tw += qels_buildStageTwiddles(tw, radix, l, base.base, base.n, base.stride);
    l *= radix;
    remaining -= radix == 8 ? 3 : 2;
  }
  return tw;
}

long mergeFloats(int logC) {
  const int b = qels_fftBlockOrder(logC);
  long l = 1L << (logC - b), total = 0;
  int remaining = b;
  while (remaining > 0) {
    const int radix = (remaining == 2 || remaining == 4) ? 4 : 8;
    total += 2 * (radix - 1) * l;
    l *= radix;
    remaining -= radix == 8 ? 3 : 2;
  }
  return total;
}

// First-pass bit-reversal table of the radix-4 core of 2^logC points.
qel32s* buildCoreBitRev(Cursor& cur, int logC) {
  const int fl = coreFirstLog(logC);
  const int count = static_cast<int>(1L << (logC - fl - 1));
  qel32s* tab = cur.take<qel32s>(count);
  qels_initTabBitRevNorm(tab, logC - fl, count);
  return tab;
}

float* buildCore(Cursor& cur, int logC, const SineBase& base) {
  float* tw = cur.take<float>(qels_coreTwiddleFloats(logC));
  qels_initCoreTwiddles(tw, logC, base.base, base.n, base.stride);
  return tw;
}

// Recombination tables: per bin k < N/4 the forward pair
// (0.5 - 0.5*sin, 0.5*cos) and the inverse pair (1 - sin, cos) of the angle
// 2*pi*k/N. The halves are exact, so the inverse pair is twice the forward.
void buildRecombination(FFTSpec* s, Cursor& cur, long n, const SineBase& base) {
  s->pRealRec = cur.take<float>(n / 2);
  s->pCcsRec = cur.take<float>(n / 2);
  for (long k = 0; k < n / 4; ++k) {
    const float sn = base.s(k), cs = base.s(n / 4 - k);
    s->pRealRec[2 * k] = 0.5f - 0.5f * sn;
    s->pRealRec[2 * k + 1] = 0.5f * cs;
    s->pCcsRec[2 * k] = 1.0f - sn;
    s->pCcsRec[2 * k + 1] = cs;
  }
}

// ---- recombination ---------------------------------------------------------

// Bins 2..N/4 - 1 two from each end per loop turn, so four complex values
// move per turn; the forward and inverse turns differ only in the product
// and in the doubled F and G of the inverse (see recFwdPair/recInvPair).
template <bool Inv>
inline void recombinePairs(qel32f* pData, const qel32f* pTab, long m) {
  const __m128 conjMask = signMaskIm();
  for (long k = 2; k + 1 < m / 2; k += 2) {
    float* lo = pData + 2 * k;
    float* hi = pData + 2 * (m - k - 1);
    const __m128 f = _mm_loadu_ps(lo);
    const __m128 h = _mm_loadu_ps(hi);
    const __m128 g = _mm_xor_ps(_mm_shuffle_ps(h, h, _MM_SHUFFLE(1, 0, 3, 2)), conjMask);
    const __m128 d = _mm_sub_ps(f, g);
    const __m128 w = _mm_load_ps(pTab + 2 * k);
    const __m128 p = Inv ? cmul(d, w) : cmulConj(d, w);
    const __m128 xl = _mm_add_ps(Inv ? _mm_add_ps(g, g) : g, p);
    const __m128 xh = _mm_xor_ps(_mm_sub_ps(Inv ? _mm_add_ps(f, f) : f, p), conjMask);
    _mm_storeu_ps(lo, xl);
    _mm_storeu_ps(hi, _mm_shuffle_ps(xh, xh, _MM_SHUFFLE(1, 0, 3, 2)));
  }
}

// ---- transforms ----------------------------------------------------------------

void forwardPerm(const float* src, float* dst, const FFTSpec* s, float* work) {
  const int order = s->order;
  const long n = 1L << order;
  if (order <= 4) {
    (s->fwdScaled ? tbl_rFFTfwd_small_scale : tbl_rFFTfwd_small)[order](src, dst, s->scale);
    return;
  }
  if (order <= 6) {
    (s->fwdScaled ? tbl_cFFTfwd_small_scale : tbl_cFFTfwd_small)[order - 5](src, dst, s->scale);
  } else if (order <= 13) {
    float* core = (src == dst || !aligned16(dst)) ? work : dst;
    qels_cRadix4FwdNorm_32fc(src, 1, core, dst, s->pBitRev, s->pTwiddle, order - 1);
    if (s->fwdScaled) qelsMulC_32f_I(s->scale, dst, static_cast<int>(n));
  } else if (order <= 18) {
    qels_cFftFwd_MT_32fc(src, dst, s, work);
  } else {
    qels_cFftFwd_Large_32fc(src, dst, s, work);
  }
  const float a = dst[0], b = dst[1];
  dst[0] = a + b;
  dst[1] = a - b;
  qels_cRealRecombine_32f(dst, s->pRealRec, static_cast<int>(n));
}

// The inverse scale goes where the forward one goes on each path: folded
// into the small transforms, over the N floats after the in-cache core, per
// group of columns on the threaded path and per block on the large path.
void inversePack(const float* src, float* dst, const FFTSpec* s, float* work) {
  const int order = s->order;
  const long n = 1L << order;
  // Pack to Perm from the top down, so that src == dst works.
  if (n == 1) {
    dst[0] = src[0];
  } else {
    const float last = src[n - 1];
    for (long i = n - 1; i >= 2; --i) dst[i] = src[i - 1];
    dst[1] = last;
    dst[0] = src[0];
  }
  if (order <= 4) {
    (s->invScaled ? tbl_rFFTinv_small_scale : tbl_rFFTinv_small)[order](dst, dst, s->scale);
    return;
  }
  const float a = dst[0], b = dst[1];
  dst[0] = a + b;
  dst[1] = a - b;
  qels_cCcsRecombine_32f(dst, s->pCcsRec, static_cast<int>(n));
  if (order <= 6) {
    (s->invScaled ? tbl_cFFTinv_small_scale : tbl_cFFTinv_small)[order - 5](dst, dst, s->scale);
  } else if (order <= 13) {
    qels_cRadix4InvNorm_32fc(dst, 1, work, dst, s->pBitRev, s->pTwiddle, order - 1);
    if (s->invScaled) qelsMulC_32f_I(s->scale, dst, static_cast<int>(n));
  } else if (order <= 18) {
    qels_cFftInv_MT_32fc(dst, dst, s, work);
  } else {
    qels_cFftInv_Large_32fc(dst, dst, s, work);
  }
}

enum class Format { CCS, Pack, Perm, Inverse };

template <Format F>
qelStatus transform(const qel32f* pSrc, qel32f* pDst, const FFTSpec* pSpec, qel8u* pBuffer) {
  if (!pSpec) return qelStatusNullPtr;
  if (pSpec->specTag != kFFTSpecTag) return qelStatusContextMatch;
  if (!pSrc || !pDst) return qelStatusNullPtr;
  qel8u* owned = nullptr;
  float* work = nullptr;
  if (pSpec->workSize > 0) {
    if (pBuffer) {
      work = reinterpret_cast<float*>(alignUp32(pBuffer));
    } else {
      owned = qelsMalloc_8u(pSpec->workSize);
      if (!owned) return qelStatusMemAlloc;
      work = reinterpret_cast<float*>(owned);
    }
  }
  const long n = 1L << pSpec->order;
  if constexpr (F == Format::Inverse) {
    inversePack(pSrc, pDst, pSpec, work);
  } else {
    forwardPerm(pSrc, pDst, pSpec, work);
    if constexpr (F == Format::Pack) {
      if (n > 1) {
        const float t = pDst[1];
        std::memmove(pDst + 1, pDst + 2, (n - 2) * sizeof(float));
        pDst[n - 1] = t;
      }
    } else if constexpr (F == Format::CCS) {
      if (n > 1) {
        pDst[n] = pDst[1];
        pDst[n + 1] = 0.0f;
      }
      pDst[1] = 0.0f;
    }
  }
  if (owned) qelsFree(owned);
  return qelStatusOk;
}

}  // namespace

extern "C" {

qelStatus qelsFFTGetSize_R_32f(int fftOrder, int flag, int hint, int* pSpecSize, int* pInitBufSize,
                               int* pWorkBufSize) {
  (void)hint;
  if (fftOrder < 0 || fftOrder > 30) return qelStatusFFTOrder;
  if (!pSpecSize || !pInitBufSize || !pWorkBufSize) return qelStatusNullPtr;
  if (!validFlag(flag)) return qelStatusFFTFlag;
  if ((1L << fftOrder) > 0x0FFFFFFF) return qelStatusFFTOrder;
  long planBytes, init, work;
  planSizes(fftOrder, &planBytes, &init, &work);
  *pSpecSize = static_cast<int>(planBytes);
  *pInitBufSize = static_cast<int>(init);
  *pWorkBufSize = static_cast<int>(work);
  return qelStatusOk;
}

// ppSpec is tested first, as in the other init calls; the order test
// covers the whole accepted range 0..27 before anything is touched.
qelStatus qelsFFTInit_R_32f(FFTSpec** ppSpec, int fftOrder, int flag, int hint, qel8u* pSpecMem,
                            qel8u* pInitBuf) {
  if (!ppSpec) return qelStatusNullPtr;
  if (fftOrder < 0 || fftOrder > 27) return qelStatusFFTOrder;
  if (!pSpecMem) return qelStatusNullPtr;
  FFTSpec* s = reinterpret_cast<FFTSpec*>(alignUp32(pSpecMem));
  if (!validFlag(flag)) {
    s->specTag = 0;
    return qelStatusFFTFlag;
  }
  if (fftOrder > 10 && !pInitBuf) return qelStatusNullPtr;

  const long n = 1L << fftOrder;
  std::memset(s, 0, sizeof(FFTSpec));
  s->order = fftOrder;
  s->fwdScaled = (flag == 1 || flag == 4) ? 1 : 0;
  s->invScaled = (flag == 2 || flag == 4) ? 1 : 0;
  if (flag == 4)
    s->scale = static_cast<float>(1.0 / std::sqrt(static_cast<double>(n)));
  else if (flag == 8)
    s->scale = 1.0f;
  else
    s->scale = 1.0f / static_cast<float>(n);
  s->hint = hint;
  long specBytes, initBytes, workBytes;
  planSizes(fftOrder, &specBytes, &initBytes, &workBytes);
  // The reported work size includes 32 bytes for rounding a caller's
  // buffer up; the plan keeps what a transform uses, so that
  // qelsFFTGetBufSize_R_32f (workSize + 32) equals the reported size.
  s->workSize = workBytes > 0 ? static_cast<int>(workBytes - 32) : 0;
  s->ownsMemory = 0;
  const int threads = ownGetNumThreads();
  s->numThreads = threads < 2 ? 1 : 2;

  if (fftOrder >= 5) {
    // The quarter-wave sine base: the fixed table up to 1024 points, else
    // built here in double precision and rounded once.
    SineBase base{fft_fix_twiddle_table_32f, n, fftOrder <= 10 ? 1024 / n : 1};
    if (fftOrder > 10) {
      float* sine = alignUp32(reinterpret_cast<float*>(pInitBuf));
      const double w = 2.0 * 3.14159265358979323846 / static_cast<double>(n);
      for (long i = 0; i <= n / 4; ++i)
        sine[i] = static_cast<float>(i <= n / 8 ? std::sin(w * static_cast<double>(i))
                                                : std::cos(w * static_cast<double>(n / 4 - i)));
      base.base = sine;
    }
    Cursor cur{reinterpret_cast<qel8u*>(s) + kPlanBytes};
    buildRecombination(s, cur, n, base);
    const int logC = fftOrder - 1;
    if (fftOrder >= 7 && fftOrder <= 13) {
      s->pTwiddle = buildCore(cur, logC, base);
      s->pBitRev = buildCoreBitRev(cur, logC);
    } else if (fftOrder >= 14 && fftOrder <= 18) {
      s->pTwiddleLast = cur.take<float>(2 * 7 * (1L << (logC - 3)));
      qels_buildStageTwiddles(s->pTwiddleLast, 8, 1L << (logC - 3), base.base, base.n, base.stride);
      s->pTwiddle = buildCore(cur, logC - 3, base);
      s->pBitRev = buildCoreBitRev(cur, logC - 3);
    } else if (fftOrder >= 19) {
      int inner = logC, level = 0;
      while (inner >= 18) {
        const int b = qels_fftBlockOrder(inner);
        s->pStepTwiddle[level] = cur.take<float>(mergeFloats(inner));
        buildMerge(s->pStepTwiddle[level], inner, base);
        inner -= b;
        ++level;
      }
      s->pTwiddle = buildCore(cur, inner, base);
      if (logC < 19) {
        const int lo = logC - logC / 2;
        s->pBitRev = cur.take<qel32s>(1L << lo);
        qels_initTabBitRevNorm(s->pBitRev, lo, 1 << lo);
      } else {
        s->pBitRev = cur.take<qel32s>(64 + (1L << (logC - 12)));
        qels_initTabBitRevLarge(s->pBitRev, logC, 6);
      }
    }
  }
  s->specTag = kFFTSpecTag;
  *ppSpec = s;
  return qelStatusOk;
}

qelStatus qelsFFTInitAlloc_R_32f(FFTSpec** ppSpec, int fftOrder, int flag, int hint) {
  return allocatePlan(ppSpec, fftOrder, flag, hint, qelsFFTGetSize_R_32f, qelsFFTInit_R_32f);
}

// A plan without its identification value (never made, or released
// already) gives qelStatusContextMatch and is not released twice.
qelStatus qelsFFTFree_R_32f(FFTSpec* pSpec) {
  if (!pSpec) return qelStatusNullPtr;
  if (pSpec->specTag != kFFTSpecTag) return qelStatusContextMatch;
  pSpec->specTag = 0;
  if (pSpec->ownsMemory) qelsFree(pSpec);
  return qelStatusOk;
}

qelStatus qelsFFTGetBufSize_R_32f(const FFTSpec* pSpec, int* pSize) {
  if (!pSpec) return qelStatusNullPtr;
  if (pSpec->specTag != kFFTSpecTag) return qelStatusContextMatch;
  if (!pSize) return qelStatusNullPtr;
  *pSize = pSpec->workSize < 1 ? 0 : pSpec->workSize + 32;
  return qelStatusOk;
}

qelStatus qelsFFTFwd_RToCCS_32f(const qel32f* pSrc, qel32f* pDst, const FFTSpec* pSpec,
                                qel8u* pBuffer) {
  return transform<Format::CCS>(pSrc, pDst, pSpec, pBuffer);
}
qelStatus qelsFFTFwd_RToPack_32f(const qel32f* pSrc, qel32f* pDst, const FFTSpec* pSpec,
                                 qel8u* pBuffer) {
  return transform<Format::Pack>(pSrc, pDst, pSpec, pBuffer);
}
qelStatus qelsFFTFwd_RToPerm_32f(const qel32f* pSrc, qel32f* pDst, const FFTSpec* pSpec,
                                 qel8u* pBuffer) {
  return transform<Format::Perm>(pSrc, pDst, pSpec, pBuffer);
}
qelStatus qelsFFTInv_PackToR_32f(const qel32f* pSrc, qel32f* pDst, const FFTSpec* pSpec,
                                 qel8u* pBuffer) {
  return transform<Format::Inverse>(pSrc, pDst, pSpec, pBuffer);
}

// Bin 1 and the middle bin alone, the others by recombinePairs.
void qels_cRealRecombine_32f(qel32f* pData, const qel32f* pRealRec, int n) {
  const long m = n / 2;
  recFwdPair(pData, m, 1, pRealRec[2], -pRealRec[3]);
  recombinePairs<false>(pData, pRealRec, m);
  // the middle bin: X[M/2] = conj Z[M/2]
  pData[2 * (m / 2) + 1] = -pData[2 * (m / 2) + 1];
}

void qels_cCcsRecombine_32f(qel32f* pData, const qel32f* pCcsRec, int n) {
  const long m = n / 2;
  recInvPair(pData, m, 1, pCcsRec[2], pCcsRec[3]);
  recombinePairs<true>(pData, pCcsRec, m);
  // the middle bin: 2 Z[M/2] = 2 conj X[M/2]
  const long mid = 2 * (m / 2);
  pData[mid] = pData[mid] + pData[mid];
  pData[mid + 1] = -(pData[mid + 1] + pData[mid + 1]);
}

}  // extern "C"
