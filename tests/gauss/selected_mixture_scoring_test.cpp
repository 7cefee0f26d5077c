// Mixture scores under Gaussian selection against a reference that scores
// only the selected components and log-adds them in component order: bit for
// bit, since the order is fixed. The reference itself is checked against a
// double-precision log-sum-exp; with every bit set the result is compared
// with full mixture scoring within a stated rounding bound.
#include <algorithm>
#include <climits>
#include <cmath>
#include <functional>
#include <string>
#include <vector>

#include "bit_table_reference.h"
#include "gauss/gauss.h"
#include "log_add_reference.h"
#include "single_scoring_reference.h"
#include "test_support.h"

namespace {

using qtest::Guarded;
using qtest::Rng;
namespace bitref = qtest::bitref;

// ---------------------------------------------------------------- data

// Frames, means and variances as matrices at one shared stride, the first
// row `offset` elements past a 64-byte boundary, with row-pointer views of
// the same storage for the _D2L members.
template <typename T>
struct Mixture {
  int nMix, nFrames, width, step;
  Guarded<T> src, mean, var;
  std::vector<qel32f> val;
  std::vector<const T*> srcRows, meanRows, varRows;
  Mixture(int nMix_, int nFrames_, int width_, int step_, size_t offset, uint32_t seed)
      : nMix(nMix_),
        nFrames(nFrames_),
        width(width_),
        step(step_),
        src(static_cast<size_t>(nFrames_) * step_, offset * sizeof(T)),
        mean(static_cast<size_t>(nMix_) * step_, offset * sizeof(T)),
        var(static_cast<size_t>(nMix_) * step_, offset * sizeof(T)) {
    Rng rng(seed);
    auto fill = [&](Guarded<T>& g, double lo, double hi) {
      const auto v = rng.vec<T>(g.size(), lo, hi);
      g.assign(v);
    };
    if constexpr (sizeof(T) == 2) {
      fill(src, -30, 30);
      fill(mean, -30, 30);
      fill(var, 1, 8);
    } else {
      fill(src, -2, 2);
      fill(mean, -2, 2);
      fill(var, 0.2, 1.5);
    }
    val = rng.vec<qel32f>(static_cast<size_t>(nMix), -20, -5);
    for (int f = 0; f < nFrames; ++f) srcRows.push_back(src.data() + f * step);
    for (int m = 0; m < nMix; ++m) {
      meanRows.push_back(mean.data() + m * step);
      varRows.push_back(var.data() + m * step);
    }
  }
};

// A sign table of nFrames rows of ceil8(nMix) bytes with each bit set with
// probability `density`; bits beyond nMix in the last byte are set at
// random too, to show that they are never read as components.
std::vector<qel8u> signTable(int nMix, int nFrames, double density, Rng& rng) {
  const int rb = bitref::ceil8(nMix);
  std::vector<qel8u> t(static_cast<size_t>(rb) * nFrames, 0);
  for (int f = 0; f < nFrames; ++f)
    for (int b = 0; b < rb * 8; ++b)
      if (b >= nMix ? rng.integer(0, 1) == 1 : rng.uniformD(0, 1) < density)
        bitref::setBit(t.data() + f * rb, b);
  return t;
}

// ---------------------------------------------------------------- reference

// Frame by frame, the selected components in increasing order: the first
// score starts the value, each further one is log-added by the single vector
// lane step; no selected component gives `val`.
std::vector<qel32f> referenceSelect(const std::vector<qel8u>& sign, int nMix, int nFrames,
                                    qel32f val, const std::function<qel32f(int, int)>& score) {
  const int rb = bitref::ceil8(nMix);
  std::vector<qel32f> out(static_cast<size_t>(nFrames));
  for (int f = 0; f < nFrames; ++f) {
    bool any = false;
    qel32f acc = 0.0f;
    for (int m = 0; m < nMix; ++m) {
      if (!bitref::getBit(sign.data() + f * rb, m)) continue;
      const qel32f s = score(f, m);
      acc = any ? qtest::refLogAdd32f(s, acc) : s;
      any = true;
    }
    out[f] = any ? acc : val;
  }
  return out;
}

// The score of frame f against component m in double, for the check of the
// reference: val - S / 2 (Scaled: val - S * 2^-(sf + 1)).
template <typename T>
double exactScore(const Mixture<T>& x, bool idVar, int f, int m, int scaleFactor) {
  double s = 0.0;
  for (int c = 0; c < x.width; ++c) {
    double d = static_cast<double>(x.srcRows[f][c]) - static_cast<double>(x.meanRows[m][c]);
    s += d * d * (idVar ? 1.0 : static_cast<double>(x.varRows[m][c]));
  }
  const double k = sizeof(T) == 2 ? std::ldexp(1.0, -(scaleFactor + 1)) : 0.5;
  return x.val[m] - s * k;
}

// How far a selected mixture score in single may lie from the exact
// log-sum-exp of its nSel components, `mag` being the largest magnitude of a
// score or the result. A score is a recursive single sum of `width` products
// (worst case width - 1 roundings of the running sum and two per product)
// plus the constant and the halving: (width + 4) units of 2^-24 of mag. Each
// log-add rounds its result (one unit), evaluates its 11-term polynomial in
// single with coefficients rounded to single (below 1e-6 absolute, the value
// being at most ln 2), and may drop a term smaller than the greater by more
// than -MINLOGEXP_F, which is worth at most exp(MINLOGEXP_F) = 1/4500000.
double selectBound(int width, int nSel, double mag) {
  return (width + 4 + nSel) * 0x1p-24 * mag + nSel * (1e-6 + 1.0 / 4500000.0);
}

// ---------------------------------------------------------------- members

enum class Flavour { Inv32f, Unit32f, Inv16s, Unit16s };

const char* name(Flavour fl) {
  switch (fl) {
    case Flavour::Inv32f:
      return "Select_32f";
    case Flavour::Unit32f:
      return "SelectIdVar_32f";
    case Flavour::Inv16s:
      return "SelectScaled_16s32f";
    default:
      return "SelectIdVarScaled_16s32f";
  }
}

// Runs one member on the mixture in _D2 or _D2L layout.
template <typename T>
qelStatus runSelect(Flavour fl, bool rows, const Mixture<T>& x, const qel8u* sign, qel32f* dst,
                    qel32f val, int sf) {
  if constexpr (sizeof(T) == 4) {
    if (fl == Flavour::Inv32f)
      return rows ? qelsLogGaussMixture_Select_32f_D2L(x.srcRows.data(), x.meanRows.data(),
                                                       x.varRows.data(), x.width, x.val.data(),
                                                       sign, x.nMix, dst, x.nFrames, val)
                  : qelsLogGaussMixture_Select_32f_D2(x.src.data(), x.mean.data(), x.var.data(),
                                                      x.step, x.width, x.val.data(), sign, x.nMix,
                                                      dst, x.nFrames, val);
    return rows ? qelsLogGaussMixture_SelectIdVar_32f_D2L(x.srcRows.data(), x.meanRows.data(),
                                                          x.width, x.val.data(), sign, x.nMix, dst,
                                                          x.nFrames, val)
                : qelsLogGaussMixture_SelectIdVar_32f_D2(x.src.data(), x.mean.data(), x.step,
                                                         x.width, x.val.data(), sign, x.nMix, dst,
                                                         x.nFrames, val);
  } else {
    if (fl == Flavour::Inv16s)
      return rows ? qelsLogGaussMixture_SelectScaled_16s32f_D2L(
                        x.srcRows.data(), x.meanRows.data(), x.varRows.data(), x.width,
                        x.val.data(), sign, x.nMix, dst, x.nFrames, val, sf)
                  : qelsLogGaussMixture_SelectScaled_16s32f_D2(
                        x.src.data(), x.mean.data(), x.var.data(), x.step, x.width, x.val.data(),
                        sign, x.nMix, dst, x.nFrames, val, sf);
    return rows ? qelsLogGaussMixture_SelectIdVarScaled_16s32f_D2L(
                      x.srcRows.data(), x.meanRows.data(), x.width, x.val.data(), sign, x.nMix, dst,
                      x.nFrames, val, sf)
                : qelsLogGaussMixture_SelectIdVarScaled_16s32f_D2(
                      x.src.data(), x.mean.data(), x.step, x.width, x.val.data(), sign, x.nMix, dst,
                      x.nFrames, val, sf);
  }
}

// The score of one component: for single data the scalar reference of the
// single-observation kernel's lanes; for 16-bit data the single-observation
// primitive of the flavour itself.
template <typename T>
qel32f componentScore(Flavour fl, const Mixture<T>& x, int f, int m, int sf) {
  qel32f r = 0.0f;
  if constexpr (sizeof(T) == 4) {
    r = qref::single32f(fl == Flavour::Inv32f ? qref::Single::Weighted : qref::Single::Identity,
                        x.srcRows[f], x.meanRows[m], x.varRows[m], x.width, x.val[m]);
  } else {
    const qelStatus st =
        fl == Flavour::Inv16s
            ? qelsLogGaussSingle_Scaled_16s32f(x.srcRows[f], x.meanRows[m], x.varRows[m], x.width,
                                               &r, x.val[m], sf)
            : qelsLogGaussSingle_IdVarScaled_16s32f(x.srcRows[f], x.meanRows[m], x.width, &r,
                                                    x.val[m], sf);
    EXPECT_EQ(st, qelStatusOk);
  }
  return r;
}

// ---------------------------------------------------------------- sweeps

template <typename T>
void sweep(Flavour fl, uint32_t seed) {
  Rng rng(seed);
  const bool idVar = fl == Flavour::Unit32f || fl == Flavour::Unit16s;
  int cases = 0;
  double worstRefError = 0.0;
  for (int nMix : {1, 7, 9, 16, 37})
    for (int nFrames : {1, 5, 13, 300})  // 300: more log-adds than one batch
      for (int width : {1, 3, 8, 17, 39})
        for (double density : {0.0, 0.1, 0.5, 1.0})
          for (int placement = 0; placement < 3; ++placement) {
            // 0: aligned rows at a stride of whole vectors; 1: packed rows,
            // most of them off 16 bytes; 2: everything one element off.
            const int vec = 16 / static_cast<int>(sizeof(T));
            const int step = placement == 1 ? width : (width + vec - 1) / vec * vec;
            const size_t offset = placement == 2 ? 1 : 0;
            const int sf = sizeof(T) == 2 ? rng.integer(-1, 8) : 0;
            const Mixture<T> x(nMix, nFrames, width, step, offset, rng.integer(1, 1 << 30));
            const auto sign = signTable(nMix, nFrames, density, rng);
            const qel32f val = rng.uniform(-9.0f, 9.0f);
            const auto want = referenceSelect(sign, nMix, nFrames, val, [&](int f, int m) {
              return componentScore(fl, x, f, m, sf);
            });
            for (bool rows : {false, true}) {
              Guarded<qel32f> dst(static_cast<size_t>(nFrames));
              const std::string where =
                  std::string(name(fl)) + (rows ? "_D2L" : "_D2") + " nMix " +
                  std::to_string(nMix) + " nFrames " + std::to_string(nFrames) + " width " +
                  std::to_string(width) + " density " + std::to_string(density) + " placement " +
                  std::to_string(placement);
              qtest::FailingAllocator watch(-1);
              ASSERT_EQ(runSelect(fl, rows, x, sign.data(), dst.data(), val, sf), qelStatusOk)
                  << where;
              ASSERT_TRUE(qtest::sameArrays(dst.data(), want.data(), want.size())) << where;
              ASSERT_TRUE(dst.guardsIntact()) << where;
              ASSERT_TRUE(watch.nothingLeaked()) << where;
              ++cases;
            }
            // The reference against log-sum-exp in double, within
            // selectBound.
            const int rb = bitref::ceil8(nMix);
            for (int f = 0; f < nFrames; ++f) {
              double mx = -INFINITY, mag = std::fabs(want[f]);
              int nSel = 0;
              std::vector<double> s;
              for (int m = 0; m < nMix; ++m)
                if (bitref::getBit(sign.data() + f * rb, m)) {
                  s.push_back(exactScore(x, idVar, f, m, sf));
                  mx = std::max(mx, s.back());
                  ++nSel;
                }
              if (nSel == 0) {
                EXPECT_EQ(want[f], val);
                continue;
              }
              double sum = 0.0;
              for (double v : s) {
                sum += std::exp(v - mx);
                mag = std::max(mag, std::fabs(v));
              }
              const double exact = mx + std::log(sum);
              const double bound = selectBound(width, nSel, mag);
              const double err = std::fabs(static_cast<double>(want[f]) - exact);
              ASSERT_LE(err, bound) << "reference of frame " << f << " nSel " << nSel;
              worstRefError = std::max(worstRefError, err / bound);
            }
          }
  EXPECT_EQ(cases, 5 * 4 * 5 * 4 * 3 * 2);
  ::testing::Test::RecordProperty("worst_reference_error_of_bound", std::to_string(worstRefError));
}

TEST(SelectedMixture, SingleFlavoursMatchReference) {
  sweep<qel32f>(Flavour::Inv32f, 3611);
  sweep<qel32f>(Flavour::Unit32f, 3612);
}

TEST(SelectedMixture, ScaledFlavoursMatchReference) {
  sweep<qel16s>(Flavour::Inv16s, 3613);
  sweep<qel16s>(Flavour::Unit16s, 3614);
}

// One bit in a frame's row gives exactly the single-observation primitive's
// score; an empty row gives `val`, not log zero; nMix 9 reads the second
// byte of each row for component 8.
TEST(SelectedMixture, OneBitIsTheSingleScoreAndNoBitIsTheDefault) {
  const Mixture<qel32f> x(9, 3, 13, 13, 1, 77);
  std::vector<qel8u> sign = {0x00, 0x80,   // frame 0: component 8 only
                             0x00, 0x7F,   // frame 1: no component (bits past 9 set)
                             0x10, 0x00};  // frame 2: component 3 only
  Guarded<qel32f> dst(3), idDst(3);
  ASSERT_EQ(runSelect(Flavour::Inv32f, false, x, sign.data(), dst.data(), 2.5f, 0), qelStatusOk);
  ASSERT_EQ(runSelect(Flavour::Unit32f, true, x, sign.data(), idDst.data(), -1.0f, 0), qelStatusOk);
  qel32f s8, s3, i8, i3;
  ASSERT_EQ(qelsLogGaussSingle_32f(x.srcRows[0], x.meanRows[8], x.varRows[8], 13, &s8, x.val[8]),
            qelStatusOk);
  ASSERT_EQ(qelsLogGaussSingle_32f(x.srcRows[2], x.meanRows[3], x.varRows[3], 13, &s3, x.val[3]),
            qelStatusOk);
  ASSERT_EQ(qelsLogGaussSingle_IdVar_32f(x.srcRows[0], x.meanRows[8], 13, &i8, x.val[8]),
            qelStatusOk);
  ASSERT_EQ(qelsLogGaussSingle_IdVar_32f(x.srcRows[2], x.meanRows[3], 13, &i3, x.val[3]),
            qelStatusOk);
  EXPECT_TRUE(qtest::sameBits(dst[0], s8));
  EXPECT_EQ(dst[1], 2.5f);
  EXPECT_TRUE(qtest::sameBits(dst[2], s3));
  EXPECT_TRUE(qtest::sameBits(idDst[0], i8));
  EXPECT_EQ(idDst[1], -1.0f);
  EXPECT_TRUE(qtest::sameBits(idDst[2], i3));
}

// All bits set: the same log likelihood as full mixture scoring of each
// frame. The two differ in the order of the score additions (single kernel
// against four-component passes) and of the log-adds (component order
// against the lanes of the log sum), so they agree within a rounding bound:
// each differs from the exact value by the bound of the reference check
// above, hence twice that bound between them.
TEST(SelectedMixture, AllBitsSetEqualsFullMixtureScoring) {
  Rng rng(3615);
  for (int nMix : {1, 4, 9, 64, 150})
    for (int width : {3, 16, 39}) {
      const int nFrames = 6;
      const Mixture<qel32f> x(nMix, nFrames, width, width, 0, rng.integer(1, 1 << 30));
      const auto sign = signTable(nMix, nFrames, 1.0, rng);
      for (bool idVar : {false, true}) {
        Guarded<qel32f> dst(nFrames);
        ASSERT_EQ(runSelect(idVar ? Flavour::Unit32f : Flavour::Inv32f, false, x, sign.data(),
                            dst.data(), 0.0f, 0),
                  qelStatusOk);
        for (int f = 0; f < nFrames; ++f) {
          qel32f full;
          const qelStatus st =
              idVar ? qelsLogGaussMixture_IdVar_32f_D2(x.srcRows[f], x.mean.data(), nMix, width,
                                                       width, x.val.data(), &full)
                    : qelsLogGaussMixture_32f_D2(x.srcRows[f], x.mean.data(), x.var.data(), nMix,
                                                 width, width, x.val.data(), &full);
          ASSERT_EQ(st, qelStatusOk);
          double mag = 0.0;
          for (int m = 0; m < nMix; ++m)
            mag = std::max(mag, std::fabs(exactScore(x, idVar, f, m, 0)));
          const double bound = 2.0 * selectBound(width, nMix, mag);
          EXPECT_LE(std::fabs(static_cast<double>(dst[f]) - full), bound)
              << "nMix " << nMix << " width " << width << " idVar " << idVar << " frame " << f;
        }
      }
    }
}

// The 16-bit counters: with 65536 components selected in one frame the
// counter returns to 0, and the next selected score replaces the sum.
TEST(SelectedMixture, CounterWrapsAfter65536Components) {
  const int nMix = 65537;
  const Mixture<qel32f> x(nMix, 1, 1, 1, 0, 91);
  const std::vector<qel8u> sign(static_cast<size_t>(bitref::ceil8(nMix)), 0xFF);
  qel32f dst, last;
  ASSERT_EQ(runSelect(Flavour::Inv32f, false, x, sign.data(), &dst, 0.0f, 0), qelStatusOk);
  ASSERT_EQ(qelsLogGaussSingle_32f(x.srcRows[0], x.meanRows[nMix - 1], x.varRows[nMix - 1], 1,
                                   &last, x.val[nMix - 1]),
            qelStatusOk);
  EXPECT_TRUE(qtest::sameBits(dst, last));
}

// ---------------------------------------------------------------- checks

TEST(SelectedMixture, CheckOrderAndNothingWrittenOnError) {
  const Mixture<qel32f> x(4, 3, 5, 5, 0, 5);
  const Mixture<qel16s> y(4, 3, 5, 5, 0, 6);
  const std::vector<qel8u> sign(3, 0xF0);
  Guarded<qel32f> dst(3);
  qel32f* d = dst.data();
  const qel8u* s = sign.data();
  const qel32f* pv = x.val.data();
  const qel32f* pv16 = y.val.data();
  auto nullAt = [](std::vector<const float*> v, int i) {
    v[static_cast<size_t>(i)] = nullptr;
    return v;
  };
  const auto srcNull = nullAt(x.srcRows, 2), meanNull = nullAt(x.meanRows, 3),
             varNull = nullAt(x.varRows, 1);
  std::vector<const qel16s*> varNull16 = y.varRows;
  varNull16[3] = nullptr;
  struct Case {
    const char* what;
    qelStatus want;
    std::function<qelStatus()> call;
  };
  const Case cases[] = {
      // _D2: pointers, sizes, stride last.
      {"D2 null dst + size", qelStatusNullPtr,
       [&] {
         return qelsLogGaussMixture_Select_32f_D2(x.src.data(), x.mean.data(), x.var.data(), 5, 0,
                                                  pv, s, 4, nullptr, 3, 0.0f);
       }},
      {"D2 null sign + stride", qelStatusNullPtr,
       [&] {
         return qelsLogGaussMixture_SelectIdVar_32f_D2(x.src.data(), x.mean.data(), 4, 5, pv,
                                                       nullptr, 4, d, 3, 0.0f);
       }},
      {"D2 nMix 0 + stride", qelStatusSize,
       [&] {
         return qelsLogGaussMixture_Select_32f_D2(x.src.data(), x.mean.data(), x.var.data(), 4, 5,
                                                  pv, s, 0, d, 3, 0.0f);
       }},
      {"D2 nFrames 0 + stride", qelStatusSize,
       [&] {
         return qelsLogGaussMixture_SelectScaled_16s32f_D2(
             y.src.data(), y.mean.data(), y.var.data(), 4, 5, pv16, s, 4, d, 0, 0.0f, 0);
       }},
      {"D2 stride", qelStatusStride,
       [&] {
         return qelsLogGaussMixture_SelectIdVarScaled_16s32f_D2(y.src.data(), y.mean.data(), 4, 5,
                                                                pv16, s, 4, d, 3, 0.0f, 0);
       }},
      {"D2 null var (Scaled)", qelStatusNullPtr,
       [&] {
         return qelsLogGaussMixture_SelectScaled_16s32f_D2(y.src.data(), y.mean.data(), nullptr, 5,
                                                           5, pv16, s, 4, d, 3, 0.0f, 0);
       }},
      // _D2L: arrays, sizes, then the row pointers.
      {"D2L null array + size", qelStatusNullPtr,
       [&] {
         return qelsLogGaussMixture_Select_32f_D2L(x.srcRows.data(), x.meanRows.data(), nullptr, 0,
                                                   pv, s, 4, d, 3, 0.0f);
       }},
      {"D2L width 0 + null row", qelStatusSize,
       [&] {
         return qelsLogGaussMixture_Select_32f_D2L(srcNull.data(), x.meanRows.data(),
                                                   x.varRows.data(), 0, pv, s, 4, d, 3, 0.0f);
       }},
      {"D2L null source row", qelStatusNullPtr,
       [&] {
         return qelsLogGaussMixture_SelectIdVar_32f_D2L(srcNull.data(), x.meanRows.data(), 5, pv, s,
                                                        4, d, 3, 0.0f);
       }},
      {"D2L null mean row", qelStatusNullPtr,
       [&] {
         return qelsLogGaussMixture_Select_32f_D2L(x.srcRows.data(), meanNull.data(),
                                                   x.varRows.data(), 5, pv, s, 4, d, 3, 0.0f);
       }},
      {"D2L null variance row", qelStatusNullPtr,
       [&] {
         return qelsLogGaussMixture_Select_32f_D2L(x.srcRows.data(), x.meanRows.data(),
                                                   varNull.data(), 5, pv, s, 4, d, 3, 0.0f);
       }},
      {"D2L null variance row (Scaled)", qelStatusNullPtr,
       [&] {
         return qelsLogGaussMixture_SelectScaled_16s32f_D2L(
             y.srcRows.data(), y.meanRows.data(), varNull16.data(), 5, pv16, s, 4, d, 3, 0.0f, 0);
       }},
      {"D2L null val (IdVarScaled)", qelStatusNullPtr,
       [&] {
         return qelsLogGaussMixture_SelectIdVarScaled_16s32f_D2L(
             y.srcRows.data(), y.meanRows.data(), 5, nullptr, s, 4, d, 3, 0.0f, 0);
       }},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(c.call(), c.want) << c.what;
    EXPECT_TRUE(dst.untouched()) << c.what;
  }
  // Rows beyond nFrames and nMix are not looked at: the null rows sit at
  // index 2 (frames) and 3 (components), so 2 frames and 3 components pass.
  EXPECT_EQ(qelsLogGaussMixture_Select_32f_D2L(srcNull.data(), meanNull.data(), x.varRows.data(), 5,
                                               pv, s, 3, d, 2, 0.0f),
            qelStatusOk);
}

TEST(SelectedMixture, AllocationFailureLeavesDestinationUntouched) {
  const Mixture<qel32f> x(4, 3, 5, 5, 0, 8);
  const Mixture<qel16s> y(4, 3, 5, 5, 0, 9);
  const std::vector<qel8u> sign(3, 0xF0);
  for (int member = 0; member < 8; ++member) {
    Guarded<qel32f> dst(3);
    qtest::FailingAllocator fail(0);
    const Flavour fl = static_cast<Flavour>(member / 2);
    const bool rows = member % 2 == 1;
    const qelStatus st = fl == Flavour::Inv32f || fl == Flavour::Unit32f
                             ? runSelect(fl, rows, x, sign.data(), dst.data(), 0.0f, 0)
                             : runSelect(fl, rows, y, sign.data(), dst.data(), 0.0f, 0);
    EXPECT_EQ(st, qelStatusMemAlloc) << name(fl) << (rows ? "_D2L" : "_D2");
    EXPECT_TRUE(dst.untouched());
    EXPECT_TRUE(fail.nothingLeaked());
  }
}

}  // namespace
