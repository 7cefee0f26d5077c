// Exported log-domain primitives of fixed-point data. An integer x stands
// for the log value x * 2^-scaleFactor: sources are scaled by that power on
// the way in, results by its inverse on the way out, truncated toward zero
// and saturated. Work runs in single precision through 128-element stack
// buffers, so nothing is allocated.
#include <cmath>
#include <limits>
#include <type_traits>

#include "base/base.h"
#include "gauss/gauss.h"
#include "gauss/log_add_scalar.h"

using namespace qelsr::logdomain;

namespace {

constexpr int kChunk = 128;

inline qelStatus toSingle(const qel16s* p, qel32f* q, int n) { return qelsConvert_16s32f(p, q, n); }
inline qelStatus toSingle(const qel32s* p, qel32f* q, int n) { return qelsConvert_32s32f(p, q, n); }
inline qelStatus fromSingle(const qel32f* p, qel16s* q, int n, int sf) {
  return qelsConvert_32f16s_Sfs(p, q, n, 0, sf);
}
inline qelStatus fromSingle(const qel32f* p, qel32s* q, int n, int sf) {
  return qelsConvert_32f32s_Sfs(p, q, n, 0, sf);
}

// 2^-scaleFactor as a single, exact wherever representable.
inline qel32f inScale(int scaleFactor) { return static_cast<qel32f>(GetScale_32s64f(scaleFactor)); }

// Integer to single, then times the scale, into `dst`.
template <typename T>
inline void loadScaled(const T* src, qel32f* dst, int n, qel32f scale) {
  toSingle(src, dst, n);
  for (int i = 0; i < n; ++i) dst[i] *= scale;
}

// Truncation toward zero with saturation at the limits of T. A NaN, which
// only an infinite scale can produce, becomes 0.
template <typename T>
inline T truncSat(qel64f v) {
  constexpr qel64f hi = std::numeric_limits<T>::max();
  constexpr qel64f lo = std::numeric_limits<T>::min();
  if (std::isnan(v)) return 0;
  if (v >= hi) return std::numeric_limits<T>::max();
  if (v <= lo) return std::numeric_limits<T>::min();
  return static_cast<T>(v);
}

template <typename T>
qelStatus logAddFixed(const T* pSrc, T* pSrcDst, int len, int scaleFactor) {
  if (const qelStatus st = checkLogArgs(pSrc, pSrcDst, len); st != qelStatusOk) return st;
  alignas(32) qel32f bufSrc[kChunk];
  alignas(32) qel32f bufDst[kChunk];
  const qel32f scale = inScale(scaleFactor);
  for (int off = 0; off < len; off += kChunk) {
    const int n = len - off < kChunk ? len - off : kChunk;
    loadScaled(pSrc + off, bufSrc, n, scale);
    loadScaled(pSrcDst + off, bufDst, n, scale);
    qelsLogAddVec_32f_U8_sp(bufSrc, bufDst, n);
    fromSingle(bufDst, pSrcDst + off, n, -scaleFactor);
  }
  return qelStatusOk;
}

// Short vectors: a chain in double with the single rows, the running sum
// held in single (rounded after every step, and the first element taken as
// a single too). Longer ones: 128-element chunks through the single sum,
// each later chunk preceded by the running result.
template <typename T>
qelStatus logSumFixed(const T* pSrc, T* pDst, int len, int scaleFactor) {
  if (const qelStatus st = checkLogArgs(pSrc, pDst, len); st != qelStatusOk) return st;
  if (len == 1) {
    pDst[0] = pSrc[0];
    return qelStatusOk;
  }
  const qel64f scale = GetScale_32s64f(scaleFactor);
  qel32f v;
  if (len <= 6) {
    const Rows rows = singleRows();
    v = static_cast<qel32f>(static_cast<qel64f>(pSrc[0]) * scale);
    for (int i = 1; i < len; ++i)
      v = static_cast<qel32f>(
          logAddSingleRowsInDouble(static_cast<qel64f>(pSrc[i]) * scale, v, rows));
  } else {
    alignas(32) qel32f buf[kChunk + 4];
    const qel32f scaleF = static_cast<qel32f>(scale);
    int n = len < kChunk ? len : kChunk;
    loadScaled(pSrc, buf, n, scaleF);
    qelsLogSum_32f_M7(buf, &v, n);
    for (int off = n; off < len; off += n) {
      n = len - off < kChunk ? len - off : kChunk;
      buf[0] = v;
      loadScaled(pSrc + off, buf + 1, n, scaleF);
      qelsLogSum_32f_M7(buf, &v, n + 1);
    }
  }
  pDst[0] = truncSat<T>(static_cast<qel64f>(v) / scale);
  return qelStatusOk;
}

// As the single log-subtract on the scaled values: d is formed from the
// singles of the integers and scaled in single; the result is scaled back by
// 2^scaleFactor in double (exact), truncated and saturated.
template <typename T>
qelStatus logSubFixed(const T* pSrc, T* pSrcDst, int len, int scaleFactor) {
  if (const qelStatus st = checkLogArgs(pSrc, pSrcDst, len); st != qelStatusOk) return st;
  if (!subtrahendsBelow(pSrc, pSrcDst, len)) return qelStatusRange;
  const qel32f scale = inScale(scaleFactor);
  const qel64f outScale = GetScale_32s64f(-scaleFactor);
  for (int i = 0; i < len; ++i) {
    const qel32f xs = static_cast<qel32f>(pSrc[i]);
    const qel32f ys = static_cast<qel32f>(pSrcDst[i]);
    const qel32f r = logSubStep(xs * scale, static_cast<qel64f>((ys - xs) * scale));
    pSrcDst[i] = truncSat<T>(static_cast<qel64f>(r) * outScale);
  }
  return qelStatusOk;
}

}  // namespace

extern "C" {

QELSR_API qelStatus qelsLogAdd_16s_Sfs(const qel16s* pSrc, qel16s* pSrcDst, int len,
                                       int scaleFactor) {
  return logAddFixed(pSrc, pSrcDst, len, scaleFactor);
}

QELSR_API qelStatus qelsLogAdd_32s_Sfs(const qel32s* pSrc, qel32s* pSrcDst, int len,
                                       int scaleFactor) {
  return logAddFixed(pSrc, pSrcDst, len, scaleFactor);
}

QELSR_API qelStatus qelsLogSum_16s_Sfs(const qel16s* pSrc, qel16s* pDst, int len, int scaleFactor) {
  return logSumFixed(pSrc, pDst, len, scaleFactor);
}

QELSR_API qelStatus qelsLogSum_32s_Sfs(const qel32s* pSrc, qel32s* pDst, int len, int scaleFactor) {
  return logSumFixed(pSrc, pDst, len, scaleFactor);
}

QELSR_API qelStatus qelsLogSub_16s_Sfs(const qel16s* pSrc, qel16s* pSrcDst, int len,
                                       int scaleFactor) {
  return logSubFixed(pSrc, pSrcDst, len, scaleFactor);
}

QELSR_API qelStatus qelsLogSub_32s_Sfs(const qel32s* pSrc, qel32s* pSrcDst, int len,
                                       int scaleFactor) {
  return logSubFixed(pSrc, pSrcDst, len, scaleFactor);
}

}  // extern "C"
