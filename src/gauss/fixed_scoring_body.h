// Bodies of the 16-bit block and mixture kernels: which rows are walked, what
// sum each row takes and what becomes of it. The named kernels are thin
// instantiations of these. Private to the fixed-point scoring files.
#ifndef QELSR_GAUSS_FIXED_SCORING_BODY_H
#define QELSR_GAUSS_FIXED_SCORING_BODY_H

#include <cstddef>
#include <type_traits>

#include "gauss/fixed_scoring_rows.h"

namespace qelsr::fixedpt {

// Where row r's observation, mean and variance lie.
struct FramesD2 {  // frames at a stride against one Gaussian
  const qel16s* src;
  std::ptrdiff_t step;
  const qel16s* mean;
  const qel16s* var;
  const qel16s* s(int r) const { return src + static_cast<std::ptrdiff_t>(r) * step; }
  const qel16s* m(int) const { return mean; }
  const qel16s* v(int) const { return var; }
};
struct FramesD2L {  // frames by row pointers against one Gaussian
  const qel16s* const* ppSrc;
  const qel16s* mean;
  const qel16s* var;
  const qel16s* s(int r) const { return ppSrc[r]; }
  const qel16s* m(int) const { return mean; }
  const qel16s* v(int) const { return var; }
};
// Frames whose 16-bit weights were converted to single once for the call:
// single(v) is exact, so weighting by it gives the same products.
template <class Frames>
struct FramesSingleWeights {
  Frames f;
  const float* wf;
  const qel16s* s(int r) const { return f.s(r); }
  const qel16s* m(int r) const { return f.m(r); }
  const float* v(int) const { return wf; }
};
template <class Rows>
inline constexpr bool kSharedWeights = false;
template <>
inline constexpr bool kSharedWeights<FramesD2> = true;
template <>
inline constexpr bool kSharedWeights<FramesD2L> = true;

// Up to this many columns the frame kernels convert the weights once.
inline constexpr int kSingleWeightsMax = 512;

struct MixD2 {  // one observation against components at a stride
  const qel16s* src;
  std::ptrdiff_t step;
  const qel16s* mean;
  const qel16s* var;
  const qel16s* s(int) const { return src; }
  const qel16s* m(int r) const { return mean + static_cast<std::ptrdiff_t>(r) * step; }
  const qel16s* v(int r) const { return var + static_cast<std::ptrdiff_t>(r) * step; }
};
struct MixD2L {  // one observation against components by row pointers
  const qel16s* src;
  const qel16s* const* ppMean;
  const qel16s* const* ppVar;
  const qel16s* s(int) const { return src; }
  const qel16s* m(int r) const { return ppMean[r]; }
  const qel16s* v(int r) const { return ppVar[r]; }
};

// What a row computes.
enum class Fl {
  InvP32s,     // weighted single sum; single(val) - S / 2^(sf+1) by the integer power; truncated
  PairsP32s,   // identity pair sums in single, the same scaling and conversion
  InvK32f,     // weighted single sum; val - S * k
  UnitK32f,    // identity, each square converted; val - S * k
  InvK32sRz,   // weighted single sum, single(val) - S * k towards zero (maxima only)
  UnitK32sRz,  // identity, each square converted, likewise
  Low32s,      // split 32-bit sums for sf >= 0; else the weighted single sum truncated
  Low32f,      // split 32-bit sums converted and added to val; else val - S * 2^-(sf+1)
  IdLow32s,    // identity pair sums shifted by sf + 1, integer score
  IdLow32f,    // identity pair sums in single; val - S / 2^(sf+1) by the integer power
};

// What becomes of a row's score.
enum class Mode { Store, Max };

// The weights of a kind's single-precision sum.
template <Fl F>
inline constexpr Wt kWeight = (F == Fl::PairsP32s || F == Fl::IdLow32f)    ? Wt::Pairs
                              : (F == Fl::UnitK32f || F == Fl::UnitK32sRz) ? Wt::Unit
                                                                           : Wt::Inv;

// Whether the row's sum is the single-precision one (the Low members with
// pVar fall back to it for negative factors).
template <Fl F>
inline bool floatSum(int sf) {
  if constexpr (F == Fl::IdLow32s)
    return false;
  else if constexpr (F == Fl::Low32s || F == Fl::Low32f)
    return sf < 0;
  else
    return true;
}

// The score from a single-precision sum S.
template <Fl F, class T>
inline T fromSum(float S, T val, long long e, float k) {
  if constexpr (F == Fl::InvP32s || F == Fl::PairsP32s || F == Fl::Low32s)
    return truncSat(static_cast<float>(val) - scaleByIntPow2(S, e));
  else if constexpr (F == Fl::InvK32f || F == Fl::UnitK32f)
    return val - S * k;
  else
    return val - scaleByIntPow2(S, e);
}

// The score from the 32-bit integer sums.
template <Fl F, bool Al, class Rows, class T>
inline T fromIntegers(const Rows& rows, int r, int width, T val, int sf) {
  if constexpr (F == Fl::Low32s)
    return addWrap(val,
                   lowBlockRow<false, Al>(rows.s(r), rows.m(r), rows.v(r), width, lowShift(sf)));
  else if constexpr (F == Fl::Low32f)
    return val + static_cast<float>(static_cast<qel32s>(
                     lowBlockRow<false, Al>(rows.s(r), rows.m(r), rows.v(r), width, lowShift(sf))));
  else if constexpr (F == Fl::IdLow32s)
    return addWrap(val,
                   idLowBlockRow<Al>(rows.s(r), rows.m(r), width, static_cast<long long>(sf) + 1));
  else
    return val;
}

// Single-precision sums of the rows, two rows a pass (the last odd one
// alone); emit(r, S) takes each.
template <Wt W, bool Al, bool G4, class Rows, class Emit>
inline void sumRows(const Rows& rows, int width, int height, Emit emit) {
  int r = 0;
  for (; r + 2 <= height; r += 2) {
    const qel16s* s[2] = {rows.s(r), rows.s(r + 1)};
    const qel16s* m[2] = {rows.m(r), rows.m(r + 1)};
    const void* w[2] = {rows.v(r), rows.v(r + 1)};
    float S[2];
    blockSums<W, Al, G4, 2>(s, m, w, width, S);
    emit(r, S[0]);
    emit(r + 1, S[1]);
  }
  if (r < height) {
    const qel16s* s[1] = {rows.s(r)};
    const qel16s* m[1] = {rows.m(r)};
    const void* w[1] = {rows.v(r)};
    float S[1];
    blockSums<W, Al, G4, 1>(s, m, w, width, S);
    emit(r, S[0]);
  }
}

// The maxima of the 32-bit members formed in single towards zero. Kept out
// of line so that none of its arithmetic can move across the change of the
// rounding mode in its caller.
template <Fl F, bool Al, bool G4, class Rows>
__attribute__((noinline)) void maxTowardZeroRows(Rows rows, int width, qel32s* pDst, int height,
                                                 const qel32s* pVal, std::ptrdiff_t valStride,
                                                 float k) {
  sumRows<kWeight<F>, Al, G4>(rows, width, height, [&](int r, float S) {
    const float v = static_cast<float>(pVal[r * valStride]) - S * k;
    pDst[r] = clampedMax(v, pDst[r]);
  });
}

// One score for each of `height` rows. pVal[r * valStride] is row r's
// constant (stride 0: one constant for all rows); pDst may be pVal itself
// (the in-place mixtures). Store writes the score; Max keeps the greater of
// score and destination, the integer scores comparing as integers and the
// single ones as singles, a NaN score keeping the destination.
template <Fl F, Mode M, bool Al, bool G4 = false, class Rows, class T>
void rowsKernel(Rows rows, int width, T* pDst, int height, const T* pVal, std::ptrdiff_t valStride,
                int sf, float k) {
  if constexpr (F == Fl::InvK32sRz || F == Fl::UnitK32sRz) {
    static_assert(M == Mode::Max);
    RoundTowardZero rz;
    maxTowardZeroRows<F, Al, G4>(rows, width, pDst, height, pVal, valStride, k);
  } else {
    auto emit = [&](int r, T score) {
      if constexpr (M == Mode::Store) {
        pDst[r] = score;
      } else {
        if (score > pDst[r]) pDst[r] = score;
      }
    };
    if (floatSum<F>(sf)) {
      const long long e = static_cast<long long>(sf) + 1;
      auto take = [&](int r, float S) { emit(r, fromSum<F>(S, pVal[r * valStride], e, k)); };
      if constexpr (kWeight<F> == Wt::Inv && kSharedWeights<Rows>) {
        if (width <= kSingleWeightsMax && height > 1) {
          alignas(16) float wf[kSingleWeightsMax];
          const qel16s* v = rows.v(0);
          for (int c = 0; c < width; ++c) wf[c] = static_cast<float>(v[c]);
          sumRows<Wt::Direct, Al, G4>(FramesSingleWeights<Rows>{rows, wf}, width, height, take);
          return;
        }
      }
      sumRows<kWeight<F>, Al, G4>(rows, width, height, take);
    } else {
      for (int r = 0; r < height; ++r)
        emit(r, fromIntegers<F, Al>(rows, r, width, pVal[r * valStride], sf));
    }
  }
}

}  // namespace qelsr::fixedpt

#endif
