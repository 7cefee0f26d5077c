// Exported log-domain primitives of floating-point data: log-add into an
// accumulator, log-sum of a vector and log-subtract. The checks run in the
// order length, then pointers; the log-subtract looks at every element
// before it writes anything.
#include <cmath>

#include "gauss/gauss.h"
#include "gauss/log_add_scalar.h"

using namespace qelsr::logdomain;

namespace {

template <typename T>
inline qelStatus checkArgs(const T* pSrc, const T* pSrcDst, int len) {
  if (len < 1) return qelStatusSize;
  if (pSrc == nullptr || pSrcDst == nullptr) return qelStatusNullPtr;
  return qelStatusOk;
}

// A subtrahend must lie strictly below its minuend; NaN fails too.
template <typename T>
inline bool subtrahendsBelow(const T* pSrc, const T* pSrcDst, int len) {
  for (int i = 0; i < len; ++i)
    if (!(pSrcDst[i] < pSrc[i])) return false;
  return true;
}

}  // namespace

extern "C" {

QELSR_API qelStatus qelsLogAdd_32f(const qel32f* pSrc, qel32f* pSrcDst, int len) {
  if (const qelStatus st = checkArgs(pSrc, pSrcDst, len); st != qelStatusOk) return st;
  qelsLogAddVec_32f_U8_sp(pSrc, pSrcDst, len);
  return qelStatusOk;
}

// The hint is looked at after the argument checks: an unknown one ends the
// call with success and nothing written.
QELSR_API qelStatus qelsLogAdd_64f(const qel64f* pSrc, qel64f* pSrcDst, int len, int hint) {
  if (const qelStatus st = checkArgs(pSrc, pSrcDst, len); st != qelStatusOk) return st;
  if (hint < 0 || hint > 2) return qelStatusOk;
  const Rows rows = doubleRows();
  for (int i = 0; i < len; ++i) pSrcDst[i] = logAdd64f(pSrc[i], pSrcDst[i], rows);
  return qelStatusOk;
}

QELSR_API qelStatus qelsLogSum_32f(const qel32f* pSrc, qel32f* pDst, int len) {
  if (const qelStatus st = checkArgs(pSrc, pDst, len); st != qelStatusOk) return st;
  pDst[0] = pSrc[0];
  if (len > 1) qelsLogSum_32f_M7(pSrc, pDst, len);
  return qelStatusOk;
}

QELSR_API qelStatus qelsLogSum_64f(const qel64f* pSrc, qel64f* pDst, int len) {
  if (const qelStatus st = checkArgs(pSrc, pDst, len); st != qelStatusOk) return st;
  pDst[0] = pSrc[0];
  if (len > 1) qelsLogSum_64f_M7(pSrc, pDst, len);
  return qelStatusOk;
}

// d = y - x in single; below -ln 4500000 the subtrahend is ignored (and a
// minuend below log zero rises to it); a difference of 1 - exp(d) too small
// for a single logarithm gives log zero.
QELSR_API qelStatus qelsLogSub_32f(const qel32f* pSrc, qel32f* pSrcDst, int len) {
  if (const qelStatus st = checkArgs(pSrc, pSrcDst, len); st != qelStatusOk) return st;
  if (!subtrahendsBelow(pSrc, pSrcDst, len)) return qelStatusRange;
  for (int i = 0; i < len; ++i) {
    const qel32f x = pSrc[i];
    const qel32f d = pSrcDst[i] - x;
    if (static_cast<qel64f>(d) < MINLOGEXP_F) {
      pSrcDst[i] = x < LOGZERO_F ? LOGZERO_F : x;
      continue;
    }
    const qel64f oneMinus = 1.0 - std::exp(static_cast<qel64f>(d));
    pSrcDst[i] = oneMinus <= 1.0057e-37
                     ? LOGZERO_F
                     : static_cast<qel32f>(static_cast<qel64f>(x) + std::log(oneMinus));
  }
  return qelStatusOk;
}

QELSR_API qelStatus qelsLogSub_64f(const qel64f* pSrc, qel64f* pSrcDst, int len) {
  if (const qelStatus st = checkArgs(pSrc, pSrcDst, len); st != qelStatusOk) return st;
  if (!subtrahendsBelow(pSrc, pSrcDst, len)) return qelStatusRange;
  for (int i = 0; i < len; ++i) {
    const qel64f x = pSrc[i];
    const qel64f d = pSrcDst[i] - x;
    if (d < MINLOGEXP) {
      pSrcDst[i] = x < LOGSMALL ? LOGZERO : x;
      continue;
    }
    const qel64f oneMinus = 1.0 - std::exp(d);
    pSrcDst[i] = oneMinus <= 2.45e-308 ? LOGZERO : x + std::log(oneMinus);
  }
  return qelStatusOk;
}

}  // extern "C"
