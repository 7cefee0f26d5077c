// Mixture scores under Gaussian selection: for each frame only the
// components whose bit is set in the frame's sign row are scored and
// log-added; a frame with no component selected receives the caller's
// default score.
//
// Components form the outer loop and frames the inner one, so each mean and
// variance row is fetched once for all the frames that select it, and a
// clear bit costs one byte test. Each selected score is exactly that of the
// single-observation primitive of the flavour (the same kernel twin chosen
// by the same alignment rule), and the scores of a frame join its running
// value in increasing component order: the order of the log-adds is part of
// the result. The log-adds of one component into different frames are
// independent, so they run as one element-wise vector call whose every
// element has the bits of a call of length 1.
#include <climits>
#include <cstddef>
#include <cstdint>

#include "base/base.h"
#include "frame/frame.h"
#include "gauss/gauss.h"

namespace {

using qelsr::isAligned16;

// Where the observation of frame f and the rows of component m lie.
template <typename T>
struct RowsD2 {
  const T* src;
  const T* mean;
  const T* var;  // null in the identity-covariance flavours
  std::ptrdiff_t step;
  const T* s(int f) const { return src + static_cast<std::ptrdiff_t>(f) * step; }
  const T* m(int c) const { return mean + static_cast<std::ptrdiff_t>(c) * step; }
  const T* v(int c) const { return var + static_cast<std::ptrdiff_t>(c) * step; }
};

template <typename T>
struct RowsD2L {
  const T* const* ppSrc;
  const T* const* ppMean;
  const T* const* ppVar;  // null in the identity-covariance flavours
  const T* s(int f) const { return ppSrc[f]; }
  const T* m(int c) const { return ppMean[c]; }
  const T* v(int c) const { return ppVar[c]; }
};

// The four scores, each the single-observation primitive of its flavour:
// aligned twin when the rows it reads lie on 16 bytes.
struct ScoreInv32f {
  void operator()(const qel32f* x, const qel32f* mu, const qel32f* var, int width, qel32f val,
                  qel32f* out) const {
    if (isAligned16(x) && isAligned16(mu) && isAligned16(var))
      qelsLGaussSingle_32f_M7_Al(x, mu, var, width, out, &val);
    else
      qelsLGaussSingle_32f_M7(x, mu, var, width, out, &val);
  }
};

struct ScoreUnit32f {
  void operator()(const qel32f* x, const qel32f* mu, const qel32f*, int width, qel32f val,
                  qel32f* out) const {
    if (isAligned16(x) && isAligned16(mu))
      qelsLGaussSingle_IdVar_32f_M7_Al(x, mu, width, out, &val);
    else
      qelsLGaussSingle_IdVar_32f_M7(x, mu, width, out, &val);
  }
};

// 16-bit scores in single: val - S * k with k = 2^-(scaleFactor + 1), formed
// once per call as the single-observation wrapper forms it per call. The
// factor saturates before the increment; the power is clamped far below
// the top of the range anyway.
inline qel32f scaledK(int scaleFactor) {
  return GetScale_32s32f(scaleFactor == INT_MAX ? INT_MAX : scaleFactor + 1);
}

struct ScoreInv16s32f {
  qel32f k;
  void operator()(const qel16s* x, const qel16s* mu, const qel16s* var, int width, qel32f val,
                  qel32f* out) const {
    if (isAligned16(x) && isAligned16(mu) && isAligned16(var))
      qelsLGaussSingle_16s32f_M7_Al(x, mu, var, width, out, &val, &k);
    else
      qelsLGaussSingle_16s32f_M7(x, mu, var, width, out, &val, &k);
  }
};

struct ScoreUnit16s32f {
  qel32f k;
  void operator()(const qel16s* x, const qel16s* mu, const qel16s*, int width, qel32f val,
                  qel32f* out) const {
    if (isAligned16(x) && isAligned16(mu))
      qelsLGaussSingle_IdVar_16s32f_M7_Al(x, mu, width, out, &val, &k);
    else
      qelsLGaussSingle_IdVar_16s32f_M7(x, mu, width, out, &val, &k);
  }
};

// Log-adds waiting for their vector call: the scores of one component for
// frames that already hold a value, and those values. The log-add is
// element-wise with the same arithmetic in every lane, so one call on a
// batch gives each frame exactly what a call of length 1 would give, at a
// fraction of the cost. A batch never holds a frame twice: it is emptied at
// the end of every component, before a later component can reach the frame.
class PendingLogAdds {
 public:
  static constexpr int kCapacity = 128;

  void add(qel32f score, qel32f* pSlot) {
    scores_[n_] = score;
    acc_[n_] = *pSlot;
    slots_[n_] = pSlot;
    if (++n_ == kCapacity) flush();
  }
  void flush() {
    if (n_ == 0) return;
    qelsLogAddVec_32f_M7_sp(scores_, acc_, n_);
    for (int i = 0; i < n_; ++i) *slots_[i] = acc_[i];
    n_ = 0;
  }

 private:
  alignas(16) qel32f scores_[kCapacity];
  alignas(16) qel32f acc_[kCapacity];
  qel32f* slots_[kCapacity];
  int n_ = 0;
};

// Frames whose bits are tested in one sweep before their scores.
constexpr int kFrameBlock = 256;

// The selection loop shared by every member; the arguments have been checked.
template <bool HasVar, typename Rows, typename Score>
qelStatus selectMixture(const Rows& rows, int width, const qel32f* pVal, const qel8u* pSign,
                        int nMix, qel32f* pDst, int nFrames, qel32f val, const Score& score) {
  // One counter per frame of selected components so far. They are 16 bits
  // wide: a frame with 65536 selected components would see its counter
  // return to 0 and its sum restart, far beyond any real mixture.
  qel16s* counts = qelsMalloc_16s(nFrames);
  if (counts == nullptr) return qelStatusMemAlloc;
  qelsZero_16s(counts, nFrames);
  qelsSet_32f(LOGZERO_F, pDst, nFrames);

  PendingLogAdds pending;
  const std::ptrdiff_t signBytes = (static_cast<std::ptrdiff_t>(nMix) + 7) / 8;
  for (int m = 0; m < nMix; ++m) {
    const qel8u* test = pSign + m / 8;
    const unsigned mask = 0x80u >> (m % 8);
    const auto* mean = rows.m(m);
    const auto* var = HasVar ? rows.v(m) : nullptr;
    // The frames that select this component are listed first, a block at a
    // time, without a branch on the bit: a half-full table would otherwise
    // mispredict every other test.
    for (int f0 = 0, f1; f0 < nFrames; f0 = f1) {
      f1 = nFrames - f0 < kFrameBlock ? nFrames : f0 + kFrameBlock;
      int selected[kFrameBlock];
      int n = 0;
      for (int f = f0; f < f1; ++f) {
        selected[n] = f;
        n += (test[f * signBytes] & mask) != 0 ? 1 : 0;
      }
      for (int i = 0; i < n; ++i) {
        const int f = selected[i];
        qel32f s;
        score(rows.s(f), mean, var, width, pVal[m], &s);
        // The first selected component gives the frame its value; the later
        // ones are log-added into it, in increasing component order.
        if (counts[f] == 0)
          pDst[f] = s;
        else
          pending.add(s, pDst + f);
        counts[f] = static_cast<qel16s>(static_cast<std::uint16_t>(counts[f]) + 1u);
      }
    }
    pending.flush();
  }
  for (int f = 0; f < nFrames; ++f)
    if (counts[f] == 0) pDst[f] = val;
  qelsFree(counts);
  return qelStatusOk;
}

template <typename... P>
bool anyNull(const P*... p) {
  return ((p == nullptr) || ...);
}

inline bool sizesBad(int width, int nMix, int nFrames) {
  return width < 1 || nMix < 1 || nFrames < 1;
}

// _D2: pointers, then sizes, then the stride (last, unlike the frame-block
// scores). The identity-covariance members pass no variance matrix.
template <bool HasVar, typename T, typename Score>
qelStatus selectD2(const T* pSrc, const T* pMean, const T* pVar, int step, int width,
                   const qel32f* pVal, const qel8u* pSign, int nMix, qel32f* pDst, int nFrames,
                   qel32f val, const Score& score) {
  if ((HasVar && pVar == nullptr) || anyNull(pSrc, pMean, pVal, pSign, pDst))
    return qelStatusNullPtr;
  if (sizesBad(width, nMix, nFrames)) return qelStatusSize;
  if (step < width) return qelStatusStride;
  return selectMixture<HasVar>(RowsD2<T>{pSrc, pMean, pVar, step}, width, pVal, pSign, nMix, pDst,
                               nFrames, val, score);
}

// _D2L: the arrays, the sizes, then every row pointer that will be read.
template <bool HasVar, typename T, typename Score>
qelStatus selectD2L(const T* const* ppSrc, const T* const* ppMean, const T* const* ppVar, int width,
                    const qel32f* pVal, const qel8u* pSign, int nMix, qel32f* pDst, int nFrames,
                    qel32f val, const Score& score) {
  if ((HasVar && ppVar == nullptr) || anyNull(ppSrc, ppMean, pVal, pSign, pDst))
    return qelStatusNullPtr;
  if (sizesBad(width, nMix, nFrames)) return qelStatusSize;
  for (int f = 0; f < nFrames; ++f)
    if (ppSrc[f] == nullptr) return qelStatusNullPtr;
  for (int m = 0; m < nMix; ++m)
    if (ppMean[m] == nullptr || (HasVar && ppVar[m] == nullptr)) return qelStatusNullPtr;
  return selectMixture<HasVar>(RowsD2L<T>{ppSrc, ppMean, ppVar}, width, pVal, pSign, nMix, pDst,
                               nFrames, val, score);
}

}  // namespace

extern "C" {

QELSR_API qelStatus qelsLogGaussMixture_Select_32f_D2(const qel32f* pSrc, const qel32f* pMean,
                                                      const qel32f* pVar, int step, int width,
                                                      const qel32f* pVal, const qel8u* pSign,
                                                      int nMix, qel32f* pDst, int nFrames,
                                                      qel32f val) {
  return selectD2<true>(pSrc, pMean, pVar, step, width, pVal, pSign, nMix, pDst, nFrames, val,
                        ScoreInv32f{});
}

QELSR_API qelStatus qelsLogGaussMixture_Select_32f_D2L(
    const qel32f* const* ppSrc, const qel32f* const* ppMean, const qel32f* const* ppVar, int width,
    const qel32f* pVal, const qel8u* pSign, int nMix, qel32f* pDst, int nFrames, qel32f val) {
  return selectD2L<true>(ppSrc, ppMean, ppVar, width, pVal, pSign, nMix, pDst, nFrames, val,
                         ScoreInv32f{});
}

QELSR_API qelStatus qelsLogGaussMixture_SelectIdVar_32f_D2(const qel32f* pSrc, const qel32f* pMean,
                                                           int step, int width, const qel32f* pVal,
                                                           const qel8u* pSign, int nMix,
                                                           qel32f* pDst, int nFrames, qel32f val) {
  return selectD2<false>(pSrc, pMean, static_cast<const qel32f*>(nullptr), step, width, pVal, pSign,
                         nMix, pDst, nFrames, val, ScoreUnit32f{});
}

QELSR_API qelStatus qelsLogGaussMixture_SelectIdVar_32f_D2L(const qel32f* const* ppSrc,
                                                            const qel32f* const* ppMean, int width,
                                                            const qel32f* pVal, const qel8u* pSign,
                                                            int nMix, qel32f* pDst, int nFrames,
                                                            qel32f val) {
  return selectD2L<false>(ppSrc, ppMean, static_cast<const qel32f* const*>(nullptr), width, pVal,
                          pSign, nMix, pDst, nFrames, val, ScoreUnit32f{});
}

QELSR_API qelStatus qelsLogGaussMixture_SelectScaled_16s32f_D2(
    const qel16s* pSrc, const qel16s* pMean, const qel16s* pVar, int step, int width,
    const qel32f* pVal, const qel8u* pSign, int nMix, qel32f* pDst, int nFrames, qel32f val,
    int scaleFactor) {
  return selectD2<true>(pSrc, pMean, pVar, step, width, pVal, pSign, nMix, pDst, nFrames, val,
                        ScoreInv16s32f{scaledK(scaleFactor)});
}

QELSR_API qelStatus qelsLogGaussMixture_SelectScaled_16s32f_D2L(
    const qel16s* const* ppSrc, const qel16s* const* ppMean, const qel16s* const* ppVar, int width,
    const qel32f* pVal, const qel8u* pSign, int nMix, qel32f* pDst, int nFrames, qel32f val,
    int scaleFactor) {
  return selectD2L<true>(ppSrc, ppMean, ppVar, width, pVal, pSign, nMix, pDst, nFrames, val,
                         ScoreInv16s32f{scaledK(scaleFactor)});
}

QELSR_API qelStatus qelsLogGaussMixture_SelectIdVarScaled_16s32f_D2(
    const qel16s* pSrc, const qel16s* pMean, int step, int width, const qel32f* pVal,
    const qel8u* pSign, int nMix, qel32f* pDst, int nFrames, qel32f val, int scaleFactor) {
  return selectD2<false>(pSrc, pMean, static_cast<const qel16s*>(nullptr), step, width, pVal, pSign,
                         nMix, pDst, nFrames, val, ScoreUnit16s32f{scaledK(scaleFactor)});
}

QELSR_API qelStatus qelsLogGaussMixture_SelectIdVarScaled_16s32f_D2L(
    const qel16s* const* ppSrc, const qel16s* const* ppMean, int width, const qel32f* pVal,
    const qel8u* pSign, int nMix, qel32f* pDst, int nFrames, qel32f val, int scaleFactor) {
  return selectD2L<false>(ppSrc, ppMean, static_cast<const qel16s* const*>(nullptr), width, pVal,
                          pSign, nMix, pDst, nFrames, val, ScoreUnit16s32f{scaledK(scaleFactor)});
}

}  // extern "C"
