// Mixture scores under Gaussian selection against a reference that scores
// only the selected components and log-adds them in component order: bit for
// bit, since the order is fixed. The reference itself is checked against a
// double-precision log-sum-exp.
#include <algorithm>
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

// Arguments of every member; the _D2 members read the matrices, the _D2L
// members the row pointers.
template <typename T>
struct Args {
  const T *src, *mean, *var;
  const T *const *ppSrc, *const *ppMean, *const *ppVar;
  int step, width;
  const qel32f* val;
  const qel8u* sign;
  int nMix;
  qel32f* dst;
  int nFrames;
  qel32f def;
  int sf;
};

// Frames, means and variances as matrices at one shared stride, the first
// row `offset` elements past a 64-byte boundary (the variances `varOffset`),
// with row-pointer views of the same storage.
template <typename T>
struct Mixture {
  int nMix, nFrames, width, step;
  Guarded<T> src, mean, var;
  std::vector<qel32f> val;
  std::vector<const T*> srcRows, meanRows, varRows;
  Mixture(int nMix_, int nFrames_, int width_, int step_, size_t offset, size_t varOffset,
          uint32_t seed)
      : nMix(nMix_),
        nFrames(nFrames_),
        width(width_),
        step(step_),
        src(size_t(nFrames_) * step_, offset * sizeof(T)),
        mean(size_t(nMix_) * step_, offset * sizeof(T)),
        var(size_t(nMix_) * step_, varOffset * sizeof(T)) {
    Rng rng(seed);
    const bool i16 = sizeof(T) == 2;
    src.assign(rng.vec<T>(src.size(), i16 ? -30 : -2, i16 ? 30 : 2));
    mean.assign(rng.vec<T>(mean.size(), i16 ? -30 : -2, i16 ? 30 : 2));
    var.assign(rng.vec<T>(var.size(), i16 ? 1 : 0.2, i16 ? 8 : 1.5));
    val = rng.vec<qel32f>(size_t(nMix), -20, -5);
    for (int f = 0; f < nFrames; ++f) srcRows.push_back(src.data() + f * step);
    for (int m = 0; m < nMix; ++m) {
      meanRows.push_back(mean.data() + m * step);
      varRows.push_back(var.data() + m * step);
    }
  }
  Args<T> args(const qel8u* sign, qel32f* dst, qel32f def, int sf) const {
    return {src.data(),
            mean.data(),
            var.data(),
            srcRows.data(),
            meanRows.data(),
            varRows.data(),
            step,
            width,
            val.data(),
            sign,
            nMix,
            dst,
            nFrames,
            def,
            sf};
  }
};

// A sign table of nFrames rows of ceil8(nMix) bytes with each bit set with
// probability `density`; bits beyond nMix in the last byte are set at
// random too, to show that they are never read as components.
std::vector<qel8u> signTable(int nMix, int nFrames, double density, Rng& rng) {
  const int rb = bitref::ceil8(nMix);
  std::vector<qel8u> t(size_t(rb) * nFrames, 0);
  for (int f = 0; f < nFrames; ++f)
    for (int b = 0; b < rb * 8; ++b)
      if (b >= nMix ? rng.integer(0, 1) == 1 : rng.uniformD(0, 1) < density)
        bitref::setBit(t.data() + f * rb, b);
  return t;
}

// ---------------------------------------------------------------- members

template <typename T>
struct Member {
  const char* name;
  bool idVar, rows;
  qelStatus (*call)(const Args<T>&);
};

// clang-format off
template <typename T>
std::vector<Member<T>> members() {
  using G = Args<T>;
  if constexpr (sizeof(T) == 4)
    return {
      {"Select_32f_D2", false, false, [](const G& a) { return qelsLogGaussMixture_Select_32f_D2(a.src, a.mean, a.var, a.step, a.width, a.val, a.sign, a.nMix, a.dst, a.nFrames, a.def); }},
      {"Select_32f_D2L", false, true, [](const G& a) { return qelsLogGaussMixture_Select_32f_D2L(a.ppSrc, a.ppMean, a.ppVar, a.width, a.val, a.sign, a.nMix, a.dst, a.nFrames, a.def); }},
      {"SelectIdVar_32f_D2", true, false, [](const G& a) { return qelsLogGaussMixture_SelectIdVar_32f_D2(a.src, a.mean, a.step, a.width, a.val, a.sign, a.nMix, a.dst, a.nFrames, a.def); }},
      {"SelectIdVar_32f_D2L", true, true, [](const G& a) { return qelsLogGaussMixture_SelectIdVar_32f_D2L(a.ppSrc, a.ppMean, a.width, a.val, a.sign, a.nMix, a.dst, a.nFrames, a.def); }},
    };
  else
    return {
      {"SelectScaled_16s32f_D2", false, false, [](const G& a) { return qelsLogGaussMixture_SelectScaled_16s32f_D2(a.src, a.mean, a.var, a.step, a.width, a.val, a.sign, a.nMix, a.dst, a.nFrames, a.def, a.sf); }},
      {"SelectScaled_16s32f_D2L", false, true, [](const G& a) { return qelsLogGaussMixture_SelectScaled_16s32f_D2L(a.ppSrc, a.ppMean, a.ppVar, a.width, a.val, a.sign, a.nMix, a.dst, a.nFrames, a.def, a.sf); }},
      {"SelectIdVarScaled_16s32f_D2", true, false, [](const G& a) { return qelsLogGaussMixture_SelectIdVarScaled_16s32f_D2(a.src, a.mean, a.step, a.width, a.val, a.sign, a.nMix, a.dst, a.nFrames, a.def, a.sf); }},
      {"SelectIdVarScaled_16s32f_D2L", true, true, [](const G& a) { return qelsLogGaussMixture_SelectIdVarScaled_16s32f_D2L(a.ppSrc, a.ppMean, a.width, a.val, a.sign, a.nMix, a.dst, a.nFrames, a.def, a.sf); }},
    };
}
// clang-format on

// ---------------------------------------------------------------- reference

// The score of one component: for single data the scalar reference of the
// single-observation kernel's lanes; for 16-bit data the single-observation
// primitive of the flavour itself.
template <typename T>
qel32f componentScore(bool idVar, const Mixture<T>& x, int f, int m, int sf) {
  qel32f r = 0.0f;
  if constexpr (sizeof(T) == 4) {
    r = qref::single32f(idVar ? qref::Single::Identity : qref::Single::Weighted, x.srcRows[f],
                        x.meanRows[m], x.varRows[m], x.width, x.val[m]);
  } else {
    const qelStatus st =
        idVar ? qelsLogGaussSingle_IdVarScaled_16s32f(x.srcRows[f], x.meanRows[m], x.width, &r,
                                                      x.val[m], sf)
              : qelsLogGaussSingle_Scaled_16s32f(x.srcRows[f], x.meanRows[m], x.varRows[m], x.width,
                                                 &r, x.val[m], sf);
    EXPECT_EQ(st, qelStatusOk);
  }
  return r;
}

// Frame by frame, the selected components in increasing order: the first
// score starts the value, each further one is log-added by the single vector
// lane step; no selected component gives `def`.
std::vector<qel32f> referenceSelect(const std::vector<qel8u>& sign, int nMix, int nFrames,
                                    qel32f def, const std::function<qel32f(int, int)>& score) {
  const int rb = bitref::ceil8(nMix);
  std::vector<qel32f> out(size_t(nFrames), def);
  for (int f = 0; f < nFrames; ++f)
    for (int m = 0, n = 0; m < nMix; ++m)
      if (bitref::getBit(sign.data() + f * rb, m)) {
        const qel32f s = score(f, m);
        out[f] = n++ ? qtest::refLogAdd32f(s, out[f]) : s;
      }
  return out;
}

// The score of frame f against component m in double, for the check of the
// reference: val - S / 2 (Scaled: val - S * 2^-(sf + 1)).
template <typename T>
double exactScore(const Mixture<T>& x, bool idVar, int f, int m, int sf) {
  double s = 0.0;
  for (int c = 0; c < x.width; ++c) {
    double d = double(x.srcRows[f][c]) - double(x.meanRows[m][c]);
    s += d * d * (idVar ? 1.0 : double(x.varRows[m][c]));
  }
  return x.val[m] - s * (sizeof(T) == 2 ? std::ldexp(1.0, -(sf + 1)) : 0.5);
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

// The reference against log-sum-exp in double, frame by frame.
template <typename T>
void checkReference(const Mixture<T>& x, bool idVar, const std::vector<qel8u>& sign, int sf,
                    qel32f def, const std::vector<qel32f>& want) {
  const int rb = bitref::ceil8(x.nMix);
  for (int f = 0; f < x.nFrames; ++f) {
    std::vector<double> s;
    for (int m = 0; m < x.nMix; ++m)
      if (bitref::getBit(sign.data() + f * rb, m)) s.push_back(exactScore(x, idVar, f, m, sf));
    if (s.empty()) {
      ASSERT_EQ(want[f], def) << "a frame with no component takes the default, not log zero";
      continue;
    }
    const double mx = *std::max_element(s.begin(), s.end());
    double sum = 0.0, mag = std::fabs(want[f]);
    for (double v : s) {
      sum += std::exp(v - mx);
      mag = std::max(mag, std::fabs(v));
    }
    const double exact = mx + std::log(sum);
    ASSERT_LE(std::fabs(want[f] - exact), selectBound(x.width, int(s.size()), mag))
        << "reference of frame " << f;
  }
}

// ---------------------------------------------------------------- sweeps

// Every member of the type over mixture sizes, frame counts (300: more
// log-adds than one batch), widths, densities and placements: 0, aligned
// rows at a stride of whole vectors; 1, packed rows, most of them off 16
// bytes; 2, everything one element off; 3, only the variances off.
template <typename T>
void sweep(uint32_t seed) {
  Rng rng(seed);
  int cases = 0;
  for (int nMix : {1, 7, 9, 16, 37})
    for (int nFrames : {1, 5, 13, 300})
      for (int width : {1, 3, 8, 17, 39})
        for (double density : {0.0, 0.1, 0.5, 1.0})
          for (int placement = 0; placement < 4; ++placement) {
            const int vec = 16 / int(sizeof(T));
            const int step = placement == 1 ? width : (width + vec - 1) / vec * vec;
            const size_t offset = placement == 2 ? 1 : 0;
            const int sf = sizeof(T) == 2 ? rng.integer(-1, 8) : 0;
            const Mixture<T> x(nMix, nFrames, width, step, offset, placement >= 2 ? 1 : 0,
                               rng.integer(1, 1 << 30));
            const auto sign = signTable(nMix, nFrames, density, rng);
            const qel32f def = rng.uniform(-9.0f, 9.0f);
            for (bool idVar : {false, true}) {
              const auto want = referenceSelect(sign, nMix, nFrames, def, [&](int f, int m) {
                return componentScore(idVar, x, f, m, sf);
              });
              checkReference(x, idVar, sign, sf, def, want);
              if (testing::Test::HasFatalFailure()) return;
              for (const auto& e : members<T>()) {
                if (e.idVar != idVar) continue;
                SCOPED_TRACE(testing::Message()
                             << e.name << " nMix " << nMix << " nFrames " << nFrames << " width "
                             << width << " density " << density << " placement " << placement);
                Guarded<qel32f> dst{size_t(nFrames)};
                qtest::FailingAllocator watch(-1);
                ASSERT_EQ(e.call(x.args(sign.data(), dst.data(), def, sf)), qelStatusOk);
                ASSERT_TRUE(qtest::sameArrays(dst.data(), want.data(), want.size()));
                ASSERT_TRUE(dst.guardsIntact());
                ASSERT_TRUE(watch.nothingLeaked());
                ++cases;
              }
            }
          }
  EXPECT_EQ(cases, 5 * 4 * 5 * 4 * 4 * 4);
}

TEST(SelectedMixture, SingleMembersMatchReference) { sweep<qel32f>(3611); }
TEST(SelectedMixture, ScaledMembersMatchReference) { sweep<qel16s>(3613); }

// The 16-bit counters: with 65536 components selected in one frame the
// counter returns to 0, and the next selected score replaces the sum.
TEST(SelectedMixture, CounterWrapsAfter65536Components) {
  const int nMix = 65537;
  const Mixture<qel32f> x(nMix, 1, 1, 1, 0, 0, 91);
  const std::vector<qel8u> sign(size_t(bitref::ceil8(nMix)), 0xFF);
  qel32f dst, last;
  ASSERT_EQ(members<qel32f>()[0].call(x.args(sign.data(), &dst, 0.0f, 0)), qelStatusOk);
  ASSERT_EQ(qelsLogGaussSingle_32f(x.srcRows[0], x.meanRows[nMix - 1], x.varRows[nMix - 1], 1,
                                   &last, x.val[nMix - 1]),
            qelStatusOk);
  EXPECT_TRUE(qtest::sameBits(dst, last));
}

// ---------------------------------------------------------------- checks

// Each member: every array argument null (with a size fault behind it), the
// sizes before the stride (_D2) or before the row pointers (_D2L), each kind
// of null row, rows beyond nFrames and nMix never read, and a failing
// allocation; on every error the destination is untouched.
template <typename T>
void checkOrders() {
  const Mixture<T> x(4, 3, 5, 5, 0, 0, 5);
  const std::vector<qel8u> sign(3, 0xF0);
  Guarded<qel32f> dst(3);
  auto nullAt = [](std::vector<const T*> v, int i) {
    v[size_t(i)] = nullptr;
    return v;
  };
  const auto srcNull = nullAt(x.srcRows, 2), meanNull = nullAt(x.meanRows, 3),
             varNull = nullAt(x.varRows, 1);
  for (const auto& e : members<T>()) {
    SCOPED_TRACE(e.name);
    const Args<T> good = x.args(sign.data(), dst.data(), 0.0f, 0);
    auto expect = [&](qelStatus want, const char* what, auto change) {
      Args<T> a = good;
      change(a);
      EXPECT_EQ(e.call(a), want) << what;
      EXPECT_TRUE(dst.untouched()) << what;
    };
    using A = Args<T>&;
    const auto n = qelStatusNullPtr;
    if (!e.rows) {
      expect(n, "null src + size", [](A a) { a.src = nullptr, a.width = 0; });
      expect(n, "null mean + stride", [](A a) { a.mean = nullptr, a.step = 1; });
      if (!e.idVar) expect(n, "null var + size", [](A a) { a.var = nullptr, a.nMix = 0; });
      expect(qelStatusSize, "nMix 0 + stride", [](A a) { a.nMix = 0, a.step = 1; });
      expect(qelStatusSize, "nFrames 0 + stride", [](A a) { a.nFrames = 0, a.step = 1; });
      expect(qelStatusStride, "stride", [](A a) { a.step = 4; });
    } else {
      expect(n, "null ppSrc + size", [](A a) { a.ppSrc = nullptr, a.width = 0; });
      expect(n, "null ppMean + size", [](A a) { a.ppMean = nullptr, a.nMix = 0; });
      if (!e.idVar) expect(n, "null ppVar + size", [](A a) { a.ppVar = nullptr, a.nFrames = 0; });
      expect(qelStatusSize, "size + row", [&](A a) { a.ppSrc = srcNull.data(), a.width = 0; });
      expect(n, "null source row", [&](A a) { a.ppSrc = srcNull.data(); });
      expect(n, "null mean row", [&](A a) { a.ppMean = meanNull.data(); });
      if (!e.idVar) expect(n, "null variance row", [&](A a) { a.ppVar = varNull.data(); });
      Args<T> a = good;
      a.ppSrc = srcNull.data(), a.ppMean = meanNull.data(), a.ppVar = varNull.data();
      a.nFrames = 2, a.nMix = e.idVar ? 3 : 1;
      EXPECT_EQ(e.call(a), qelStatusOk) << "rows beyond nFrames and nMix are not read";
      dst.poison();
    }
    expect(n, "null val + size", [](A a) { a.val = nullptr, a.nMix = 0; });
    expect(n, "null sign + size", [](A a) { a.sign = nullptr, a.nFrames = 0; });
    expect(n, "null dst + size", [](A a) { a.dst = nullptr, a.width = 0; });
    qtest::FailingAllocator fail(0);
    expect(qelStatusMemAlloc, "allocation failure", [](A) {});
    EXPECT_TRUE(fail.nothingLeaked());
  }
}

TEST(SelectedMixture, CheckOrderAndNothingWrittenOnError) {
  checkOrders<qel32f>();
  checkOrders<qel16s>();
}

}  // namespace
