// Scores of one observation against one Gaussian: argument checks, the
// choice of kernel by alignment, and the loops that run in the wrappers
// themselves (the double-precision members without a kernel, the unaligned
// distance and the block-diagonal scores).
#include <climits>
#include <cstdint>

#include "base/base.h"
#include "base/simd.h"
#include "frame/frame.h"
#include "gauss/gauss.h"
#include "model/model.h"

namespace {

using qelsr::isAligned16;

// The order of additions of every double-precision path: two accumulators of
// two lanes, vectors 0 and 2 of each group of 8 terms into p, 1 and 3 into q;
// then (p0 + q0) + (p1 + q1) and the remaining terms one at a time. The
// kernels hold p and q in registers; these scalar copies add in the same
// order, so a wrapper's loop and a kernel agree bit for bit. `term(i, x)`
// forms term i in x and returns a status; the first non-zero status ends
// the sum and is returned.
template <typename Term>
qelStatus sumInPairsOfLanes(int len, Term term, double* pSum) {
  double p0 = 0.0, p1 = 0.0, q0 = 0.0, q1 = 0.0;
  double x[8];
  int i = 0;
  for (; i + 8 <= len; i += 8) {
    for (int k = 0; k < 8; ++k)
      if (const qelStatus st = term(i + k, x[k]); st != qelStatusOk) return st;
    p0 = p0 + x[0];
    p1 = p1 + x[1];
    q0 = q0 + x[2];
    q1 = q1 + x[3];
    p0 = p0 + x[4];
    p1 = p1 + x[5];
    q0 = q0 + x[6];
    q1 = q1 + x[7];
  }
  double s = (p0 + q0) + (p1 + q1);
  for (; i < len; ++i) {
    if (const qelStatus st = term(i, x[0]); st != qelStatusOk) return st;
    s = s + x[0];
  }
  *pSum = s;
  return qelStatusOk;
}

// Σ (s - m)²·w in double with w = pVar[i] (Weighted; otherwise 1 and pVar
// is not read): the double paths that need no division, in the order above.
template <bool Weighted, typename S>
double sumOfTerms(const S* pSrc, const S* pMean, const S* pVar, int len) {
  double s = 0.0;
  sumInPairsOfLanes(
      len,
      [&](int i, double& x) {
        const double d = static_cast<double>(pSrc[i]) - static_cast<double>(pMean[i]);
        x = Weighted ? d * d * static_cast<double>(pVar[i]) : d * d;
        return qelStatusOk;
      },
      &s);
  return s;
}

// Every member checks its pointers, then the length.
template <typename... P>
inline qelStatus checkArgs(int len, const P*... p) {
  if (((p == nullptr) || ...)) return qelStatusNullPtr;
  if (len < 1) return qelStatusSize;
  return qelStatusOk;
}

// The aligned twin when `aligned` holds, else the general one.
template <typename Kernel, typename... A>
inline qelStatus runKernel(bool aligned, Kernel* al, Kernel* un, A... a) {
  (aligned ? al : un)(a...);
  return qelStatusOk;
}

// The distance of sMahDistSingle_32f_M7 for data off 16 bytes, in scalar
// code with the kernel's lanes and order, so the result does not depend on
// where the caller's vectors lie.
float mahDistSingleLoop32f(const float* pSrc, const float* pMean, const float* pVar, int len) {
  float a[4] = {0.0f, 0.0f, 0.0f, 0.0f};
  float b[4] = {0.0f, 0.0f, 0.0f, 0.0f};
  auto term = [&](int i) {
    const float d = pSrc[i] - pMean[i];
    return d * d * pVar[i];
  };
  int i = 0;
  for (; i + 16 <= len; i += 16) {
    for (int l = 0; l < 4; ++l) a[l] = a[l] + term(i + l);
    for (int l = 0; l < 4; ++l) a[l] = a[l] + term(i + 4 + l);
    for (int l = 0; l < 4; ++l) b[l] = b[l] + term(i + 8 + l);
    for (int l = 0; l < 4; ++l) b[l] = b[l] + term(i + 12 + l);
  }
  if (i + 8 <= len) {
    for (int l = 0; l < 4; ++l) a[l] = a[l] + term(i + l);
    for (int l = 0; l < 4; ++l) a[l] = a[l] + term(i + 4 + l);
    i += 8;
  }
  for (; i < len; ++i) a[0] = a[0] + term(i);
  float t[4];
  for (int l = 0; l < 4; ++l) t[l] = a[l] + b[l];
  return (t[0] + t[2]) + (t[1] + t[3]);
}

// ---- block-diagonal scores

// Up to this many differences live on the stack; longer vectors take their
// scratch from the allocator.
constexpr int kBlockStackLen = 112;

// Elements j..j+3 of a row and of the differences as lanes; lanes behind the
// end of the row hold 0 in both.
inline void partialPair(const float* d, const float* row, int j, int side, __m128* dv, __m128* rv) {
  alignas(16) float dl[4] = {0.0f, 0.0f, 0.0f, 0.0f};
  alignas(16) float rl[4] = {0.0f, 0.0f, 0.0f, 0.0f};
  for (int l = 0; j + l < side && l < 4; ++l) {
    dl[l] = d[j + l];
    rl[l] = row[j + l];
  }
  *dv = _mm_load_ps(dl);
  *rv = _mm_load_ps(rl);
}

// Row product t of one row with its block's differences: element j goes to
// lane j mod 4. Rows lie on 16 bytes; the differences may not.
inline __m128 rowProduct32f(const float* d, const float* row, int side) {
  __m128 t = _mm_setzero_ps();
  int j = 0;
  for (; j + 4 <= side; j += 4)
    t = _mm_add_ps(t, _mm_mul_ps(_mm_loadu_ps(d + j), _mm_load_ps(row + j)));
  if (j < side) {
    __m128 dv, rv;
    partialPair(d, row, j, side, &dv, &rv);
    t = _mm_add_ps(t, _mm_mul_ps(dv, rv));
  }
  return t;
}

// Calls row(o, k, side, pRow) for every matrix row in order: row k of the
// block of the given side that starts at element o.
template <typename Row>
inline void forEachBlockRow(const BlockDMatrix* m, Row row) {
  int o = 0, r = 0;
  for (int b = 0; b < m->nBlocks; ++b) {
    const int side = m->pBlockSize[b];
    for (int k = 0; k < side; ++k, ++r) row(o, k, side, m->ppRow[r]);
    o += side;
  }
}

// dᵀ·M·d of single differences held in four single lanes, folded as
// (l0 + l2) + (l1 + l3).
float blockQuadraticForm32f(const BlockDMatrix* m, const float* d) {
  __m128 total = _mm_setzero_ps();
  forEachBlockRow(m, [&](int o, int k, int side, const void* row) {
    const __m128 t = rowProduct32f(d + o, static_cast<const float*>(row), side);
    total = _mm_add_ps(total, _mm_mul_ps(t, _mm_set1_ps(d[o + k])));
  });
  const __m128 h = _mm_add_ps(total, _mm_movehl_ps(total, total));
  return _mm_cvtss_f32(_mm_add_ss(h, _mm_shuffle_ps(h, h, _MM_SHUFFLE(1, 1, 1, 1))));
}

// As above, but each product t·d[k] is widened and summed in four double
// lanes, folded as (l0 + l2) + (l1 + l3).
double blockQuadraticForm32f64f(const BlockDMatrix* m, const float* d) {
  __m128d lo = _mm_setzero_pd();
  __m128d hi = _mm_setzero_pd();
  forEachBlockRow(m, [&](int o, int k, int side, const void* row) {
    const __m128 t = rowProduct32f(d + o, static_cast<const float*>(row), side);
    const __m128 p = _mm_mul_ps(t, _mm_set1_ps(d[o + k]));
    lo = _mm_add_pd(lo, _mm_cvtps_pd(p));
    hi = _mm_add_pd(hi, _mm_cvtps_pd(_mm_movehl_ps(p, p)));
  });
  const __m128d t = _mm_add_pd(lo, hi);
  return _mm_cvtsd_f64(t) + _mm_cvtsd_f64(_mm_unpackhi_pd(t, t));
}

// Double differences in two lanes: element j of a row goes to lane j mod 2,
// the total is folded as l0 + l1.
double blockQuadraticForm64f(const BlockDMatrix* m, const double* d) {
  __m128d total = _mm_setzero_pd();
  forEachBlockRow(m, [&](int o, int k, int side, const void* pRow) {
    const double* row = static_cast<const double*>(pRow);
    const double* dd = d + o;
    __m128d t = _mm_setzero_pd();
    int j = 0;
    for (; j + 2 <= side; j += 2)
      t = _mm_add_pd(t, _mm_mul_pd(_mm_loadu_pd(dd + j), _mm_load_pd(row + j)));
    if (j < side) t = _mm_add_pd(t, _mm_mul_pd(_mm_set_pd(0.0, dd[j]), _mm_set_pd(0.0, row[j])));
    total = _mm_add_pd(total, _mm_mul_pd(t, _mm_set1_pd(d[o + k])));
  });
  return _mm_cvtsd_f64(total) + _mm_cvtsd_f64(_mm_unpackhi_pd(total, total));
}

template <typename S>
S* allocScratch(int len);
template <>
float* allocScratch<float>(int len) {
  return qelsMalloc_32f(len);
}
template <>
double* allocScratch<double>(int len) {
  return qelsMalloc_64f(len);
}

// Checks, scratch of differences D (single or double), the quadratic form
// and the release of the scratch; `finish` turns dᵀ·M·d into the result.
template <typename Src, typename D, typename Res, typename Form, typename Finish>
qelStatus blockScore(const Src* pSrc, const Src* pMean, const BlockDMatrix* pBlockDVar, int len,
                     Res* pResult, Form form, Finish finish) {
  if (const qelStatus st = checkArgs(len, pSrc, pMean, pBlockDVar, pResult); st != qelStatusOk)
    return st;
  if (len != pBlockDVar->nRows) return qelStatusSize;
  alignas(16) D onStack[kBlockStackLen];
  D* d = onStack;
  D* heap = nullptr;
  if (len >= kBlockStackLen) {
    heap = allocScratch<D>(len);
    if (heap == nullptr) return qelStatusMemAlloc;
    d = heap;
  }
  for (int i = 0; i < len; ++i) d[i] = pSrc[i] - pMean[i];
  *pResult = finish(form(pBlockDVar, d));
  if (heap != nullptr) qelsFree(heap);
  return qelStatusOk;
}

}  // namespace

extern "C" {

// ---- diagonal scores

QELSR_API qelStatus qelsLogGaussSingle_32f(const qel32f* pSrc, const qel32f* pMean,
                                           const qel32f* pVar, int len, qel32f* pResult,
                                           qel32f val) {
  if (const qelStatus st = checkArgs(len, pSrc, pMean, pVar, pResult); st != qelStatusOk) return st;
  return runKernel(isAligned16(pSrc) && isAligned16(pMean) && isAligned16(pVar),
                   qelsLGaussSingle_32f_M7_Al, qelsLGaussSingle_32f_M7, pSrc, pMean, pVar, len,
                   pResult, &val);
}

QELSR_API qelStatus qelsLogGaussSingle_32f64f(const qel32f* pSrc, const qel32f* pMean,
                                              const qel32f* pVar, int len, qel64f* pResult,
                                              qel64f val) {
  if (const qelStatus st = checkArgs(len, pSrc, pMean, pVar, pResult); st != qelStatusOk) return st;
  *pResult = val - sumOfTerms<true>(pSrc, pMean, pVar, len) * 0.5;
  return qelStatusOk;
}

QELSR_API qelStatus qelsLogGaussSingle_64f(const qel64f* pSrc, const qel64f* pMean,
                                           const qel64f* pVar, int len, qel64f* pResult,
                                           qel64f val) {
  if (const qelStatus st = checkArgs(len, pSrc, pMean, pVar, pResult); st != qelStatusOk) return st;
  *pResult = val - sumOfTerms<true>(pSrc, pMean, pVar, len) * 0.5;
  return qelStatusOk;
}

// The inverse variances are formed by the library's division, in a scratch
// block on 32 bytes, and the plain kernel runs on them; the division's
// status (+6 for a zero variance, the score then written from its infinite
// inverse) is the call's.
QELSR_API qelStatus qelsLogGaussSingle_DirectVar_32f(const qel32f* pSrc, const qel32f* pMean,
                                                     const qel32f* pVar, int len, qel32f* pResult,
                                                     qel32f val) {
  if (const qelStatus st = checkArgs(len, pSrc, pMean, pVar, pResult); st != qelStatusOk) return st;
  // len + 32 singles must be countable by the allocator.
  if (len > INT_MAX - 32) return qelStatusMemAlloc;
  qel32f* block = qelsMalloc_32f(len + 32);
  if (block == nullptr) return qelStatusMemAlloc;
  const unsigned skip =
      static_cast<unsigned>((32u - (reinterpret_cast<uintptr_t>(block) & 31u)) & 31u);
  qel32f* inv = reinterpret_cast<qel32f*>(reinterpret_cast<qel8u*>(block) + skip);
  for (int i = 0; i < len; ++i) inv[i] = 1.0f;
  const qelStatus st = qelsDiv_32f(pVar, inv, inv, len);
  runKernel(isAligned16(pSrc) && isAligned16(pMean), qelsLGaussSingle_32f_M7_Al,
            qelsLGaussSingle_32f_M7, pSrc, pMean, inv, len, pResult, &val);
  qelsFree(block);
  return st;
}

// One division per element through the library's double division; the first
// warning ends the call with the result unwritten.
QELSR_API qelStatus qelsLogGaussSingle_DirectVar_32f64f(const qel32f* pSrc, const qel32f* pMean,
                                                        const qel32f* pVar, int len,
                                                        qel64f* pResult, qel64f val) {
  if (const qelStatus st = checkArgs(len, pSrc, pMean, pVar, pResult); st != qelStatusOk) return st;
  double s = 0.0;
  const qelStatus st = sumInPairsOfLanes(
      len,
      [&](int i, double& x) {
        const double d = static_cast<double>(pSrc[i]) - static_cast<double>(pMean[i]);
        const double dd = d * d;
        const double var = pVar[i];
        return qelsDiv_64f(&var, &dd, &x, 1);
      },
      &s);
  if (st != qelStatusOk) return st;
  *pResult = val - s * 0.5;
  return qelStatusOk;
}

QELSR_API qelStatus qelsLogGaussSingle_DirectVar_64f(const qel64f* pSrc, const qel64f* pMean,
                                                     const qel64f* pVar, int len, qel64f* pResult,
                                                     qel64f val) {
  if (const qelStatus st = checkArgs(len, pSrc, pMean, pVar, pResult); st != qelStatusOk) return st;
  return runKernel(isAligned16(pSrc) && isAligned16(pMean) && isAligned16(pVar),
                   ownqelsLogGaussSingle_DirectVar_64f_W7Al, ownqelsLogGaussSingle_DirectVar_64f_W7,
                   pSrc, pMean, pVar, len, pResult, &val);
}

QELSR_API qelStatus qelsLogGaussSingle_IdVar_32f(const qel32f* pSrc, const qel32f* pMean, int len,
                                                 qel32f* pResult, qel32f val) {
  if (const qelStatus st = checkArgs(len, pSrc, pMean, pResult); st != qelStatusOk) return st;
  return runKernel(isAligned16(pSrc) && isAligned16(pMean), qelsLGaussSingle_IdVar_32f_M7_Al,
                   qelsLGaussSingle_IdVar_32f_M7, pSrc, pMean, len, pResult, &val);
}

QELSR_API qelStatus qelsLogGaussSingle_IdVar_32f64f(const qel32f* pSrc, const qel32f* pMean,
                                                    int len, qel64f* pResult, qel64f val) {
  if (const qelStatus st = checkArgs(len, pSrc, pMean, pResult); st != qelStatusOk) return st;
  *pResult = val - sumOfTerms<false>(pSrc, pMean, pSrc, len) * 0.5;
  return qelStatusOk;
}

// Short vectors do not repay the kernel's set-up: up to this length the
// wrapper sums itself, in the kernel's order.
constexpr int kIdVar64fOwnLoopMax = 54;

QELSR_API qelStatus qelsLogGaussSingle_IdVar_64f(const qel64f* pSrc, const qel64f* pMean, int len,
                                                 qel64f* pResult, qel64f val) {
  if (const qelStatus st = checkArgs(len, pSrc, pMean, pResult); st != qelStatusOk) return st;
  if (len <= kIdVar64fOwnLoopMax) {
    *pResult = val - sumOfTerms<false>(pSrc, pMean, pSrc, len) * 0.5;
    return qelStatusOk;
  }
  return runKernel(isAligned16(pSrc) && isAligned16(pMean), ownqelsLogGaussSingle_IdVar_64f_W7Al,
                   ownqelsLogGaussSingle_IdVar_64f_W7, pSrc, pMean, len, pResult, &val);
}

// ---- block-diagonal scores

QELSR_API qelStatus qelsLogGaussSingle_BlockDVar_32f(const qel32f* pSrc, const qel32f* pMean,
                                                     const BlockDMatrix* pBlockDVar, int len,
                                                     qel32f* pResult, qel32f val) {
  // The subtraction from val is done in double and narrowed once.
  return blockScore<qel32f, float>(
      pSrc, pMean, pBlockDVar, len, pResult, blockQuadraticForm32f, [val](float q) {
        return static_cast<qel32f>(static_cast<double>(val) - static_cast<double>(q) * 0.5);
      });
}

QELSR_API qelStatus qelsLogGaussSingle_BlockDVar_32f64f(const qel32f* pSrc, const qel32f* pMean,
                                                        const BlockDMatrix* pBlockDVar, int len,
                                                        qel64f* pResult, qel64f val) {
  return blockScore<qel32f, float>(pSrc, pMean, pBlockDVar, len, pResult, blockQuadraticForm32f64f,
                                   [val](double q) { return val - q * 0.5; });
}

QELSR_API qelStatus qelsLogGaussSingle_BlockDVar_64f(const qel64f* pSrc, const qel64f* pMean,
                                                     const BlockDMatrix* pBlockDVar, int len,
                                                     qel64f* pResult, qel64f val) {
  return blockScore<qel64f, double>(pSrc, pMean, pBlockDVar, len, pResult, blockQuadraticForm64f,
                                    [val](double q) { return val - q * 0.5; });
}

// ---- distances and accumulators

QELSR_API qelStatus qelsMahDistSingle_32f(const qel32f* pSrc, const qel32f* pMean,
                                          const qel32f* pVar, int len, qel32f* pResult) {
  if (const qelStatus st = checkArgs(len, pSrc, pMean, pVar, pResult); st != qelStatusOk) return st;
  if (isAligned16(pSrc) && isAligned16(pMean) && isAligned16(pVar))
    sMahDistSingle_32f_M7(pSrc, pMean, pVar, len, pResult);
  else
    *pResult = mahDistSingleLoop32f(pSrc, pMean, pVar, len);
  return qelStatusOk;
}

QELSR_API qelStatus qelsMahDistSingle_32f64f(const qel32f* pSrc, const qel32f* pMean,
                                             const qel32f* pVar, int len, qel64f* pResult) {
  if (const qelStatus st = checkArgs(len, pSrc, pMean, pVar, pResult); st != qelStatusOk) return st;
  *pResult = sumOfTerms<true>(pSrc, pMean, pVar, len);
  return qelStatusOk;
}

QELSR_API qelStatus qelsMahDistSingle_64f(const qel64f* pSrc, const qel64f* pMean,
                                          const qel64f* pVar, int len, qel64f* pResult) {
  if (const qelStatus st = checkArgs(len, pSrc, pMean, pVar, pResult); st != qelStatusOk) return st;
  return runKernel(isAligned16(pSrc) && isAligned16(pMean) && isAligned16(pVar),
                   sMahDistSingle_64f_M7_Al, sMahDistSingle_64f_M7, pSrc, pMean, pVar, len,
                   pResult);
}

QELSR_API qelStatus qelsMeanVarAcc_32f(const qel32f* pSrc, const qel32f* pMean, qel32f* pMeanAcc,
                                       qel32f* pVarAcc, int len, qel32f val) {
  if (const qelStatus st = checkArgs(len, pSrc, pMean, pMeanAcc, pVarAcc); st != qelStatusOk)
    return st;
  sMahAcc_32f_M7(pSrc, pMean, pMeanAcc, pVarAcc, len, &val);
  return qelStatusOk;
}

QELSR_API qelStatus qelsMeanVarAcc_64f(const qel64f* pSrc, const qel64f* pMean, qel64f* pMeanAcc,
                                       qel64f* pVarAcc, int len, qel64f val) {
  if (const qelStatus st = checkArgs(len, pSrc, pMean, pMeanAcc, pVarAcc); st != qelStatusOk)
    return st;
  return runKernel(
      isAligned16(pSrc) && isAligned16(pMean) && isAligned16(pMeanAcc) && isAligned16(pVarAcc),
      sMeanVarAcc_64f_M7_Al, sMeanVarAcc_64f_M7, pSrc, pMean, pMeanAcc, pVarAcc, len, &val);
}

}  // extern "C"
