// Exported log-domain primitives of floating-point data: log-add into an
// accumulator, log-sum of a vector and log-subtract. The checks run in the
// order length, then pointers; the log-subtract looks at every element
// before it writes anything.
#include "gauss/gauss.h"
#include "gauss/log_add_scalar.h"

using namespace qelsr::logdomain;

namespace {

// The log-subtracts look at every element before they write one.
template <typename T>
qelStatus logSub(const T* pSrc, T* pSrcDst, int len) {
  if (const qelStatus st = checkLogArgs(pSrc, pSrcDst, len); st != qelStatusOk) return st;
  if (!subtrahendsBelow(pSrc, pSrcDst, len)) return qelStatusRange;
  for (int i = 0; i < len; ++i) {
    const T d = pSrcDst[i] - pSrc[i];  // in the precision of the data
    pSrcDst[i] = logSubStep(pSrc[i], static_cast<qel64f>(d));
  }
  return qelStatusOk;
}

}  // namespace

extern "C" {

QELSR_API qelStatus qelsLogAdd_32f(const qel32f* pSrc, qel32f* pSrcDst, int len) {
  if (const qelStatus st = checkLogArgs(pSrc, pSrcDst, len); st != qelStatusOk) return st;
  qelsLogAddVec_32f_U8_sp(pSrc, pSrcDst, len);
  return qelStatusOk;
}

// The hint is looked at after the argument checks: an unknown one ends the
// call with success and nothing written.
QELSR_API qelStatus qelsLogAdd_64f(const qel64f* pSrc, qel64f* pSrcDst, int len, int hint) {
  if (const qelStatus st = checkLogArgs(pSrc, pSrcDst, len); st != qelStatusOk) return st;
  if (hint < 0 || hint > 2) return qelStatusOk;
  const Rows rows = doubleRows();
  for (int i = 0; i < len; ++i) pSrcDst[i] = logAdd64f(pSrc[i], pSrcDst[i], rows);
  return qelStatusOk;
}

QELSR_API qelStatus qelsLogSum_32f(const qel32f* pSrc, qel32f* pDst, int len) {
  if (const qelStatus st = checkLogArgs(pSrc, pDst, len); st != qelStatusOk) return st;
  pDst[0] = pSrc[0];
  if (len > 1) qelsLogSum_32f_M7(pSrc, pDst, len);
  return qelStatusOk;
}

QELSR_API qelStatus qelsLogSum_64f(const qel64f* pSrc, qel64f* pDst, int len) {
  if (const qelStatus st = checkLogArgs(pSrc, pDst, len); st != qelStatusOk) return st;
  pDst[0] = pSrc[0];
  if (len > 1) qelsLogSum_64f_M7(pSrc, pDst, len);
  return qelStatusOk;
}

// d = y - x in single; below -ln 4500000 the subtrahend is ignored (and a
// minuend below log zero rises to it); a difference of 1 - exp(d) too small
// for a single logarithm gives log zero.
QELSR_API qelStatus qelsLogSub_32f(const qel32f* pSrc, qel32f* pSrcDst, int len) {
  return logSub(pSrc, pSrcDst, len);
}

QELSR_API qelStatus qelsLogSub_64f(const qel64f* pSrc, qel64f* pSrcDst, int len) {
  return logSub(pSrc, pSrcDst, len);
}

}  // extern "C"
