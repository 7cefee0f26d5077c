// Mixture scores: one observation against many components. Every result is
// compared bit for bit with a scalar reference of the kernels' orders of
// addition, and the references with plain double formulas.
#include <cmath>
#include <limits>
#include <vector>

#include "gauss/gauss.h"
#include "mixture_scoring_reference.h"
#include "test_support.h"

namespace {

using namespace qtest;
using namespace qtest::mixref;

// ---------------------------------------------------------------- data

template <typename T>
constexpr T kLogZero = sizeof(T) == 4 ? T(-4500000.0) : T(-1.0e10);

// Some accumulators start at log zero and take the score; where the score is
// far below log zero too, the result is log zero itself.
template <typename T>
struct Model {
  int h, w;
  std::vector<T> src, val, dst0;
  std::vector<std::vector<T>> mean, var;
  Model(int height, int width, uint32_t seed) : h(height), w(width) {
    Rng rng(seed);
    src = rng.vec<T>(w, -2, 2);
    val = rng.vec<T>(h, -20, -5);
    dst0 = rng.vec<T>(h, -70, -5);
    for (int m = 0; m < h; ++m) {
      mean.push_back(rng.vec<T>(w, -2, 2));
      var.push_back(rng.vec<T>(w, 0.2, 1.5));
      if (m % 5 >= 2 && m % 5 <= 3) dst0[m] = kLogZero<T>;
      if (m % 5 == 3) val[m] = 2 * kLogZero<T>;
    }
  }
};

// Where the data lie: offsets in elements from a 64-byte boundary, the
// stride (0: rounded up to 4, 1: packed, 2: rounded up to 4 plus 2) and
// which row pointers of the `_D2L` arrays are off 16 bytes.
struct Placement {
  const char* name;
  size_t meanOff, varOff, srcOff, valOff;
  int stepMode;
  bool misMeanRow, misVarRow;
};
const Placement kPlacements[] = {
    {"aligned", 0, 0, 0, 0, 0, false, false},     {"src off", 0, 0, 1, 0, 0, false, false},
    {"mean off", 1, 0, 0, 0, 0, true, false},     {"var off", 0, 1, 0, 0, 0, false, true},
    {"packed step", 0, 0, 0, 0, 1, false, false}, {"even step", 0, 0, 0, 0, 2, true, true},
    {"val off", 0, 0, 0, 1, 0, false, false},
};

inline int stepFor(int w, int mode) {
  const int up = (w + 3) / 4 * 4;
  return mode == 0 ? up : mode == 1 ? w : up + 2;
}

template <typename T>
struct Args {
  const T *mean, *var, *src, *val;
  T *dst, *res;
  const T **ppMean, **ppVar;
  int step, width, height;
};

template <typename T>
struct Placed {
  int step;
  Guarded<T> meanD2, varD2, src, val, dst, res;
  RowSet<T> meanL, varL;
  std::vector<const T*> mL, vL;
  Placed(const Model<T>& md, const Placement& p)
      : step(stepFor(md.w, p.stepMode)),
        meanD2(size_t(md.h) * step, p.meanOff * sizeof(T)),
        varD2(size_t(md.h) * step, p.varOff * sizeof(T)),
        src(md.w, p.srcOff * sizeof(T)),
        val(md.h, p.valOff * sizeof(T)),
        dst(md.h, p.valOff * sizeof(T)),
        res(1),
        meanL(md.h, md.w, p.misMeanRow ? md.h * 2 / 3 : -1),
        varL(md.h, md.w, p.misVarRow ? md.h / 3 : -1) {
    src.assign(md.src);
    val.assign(md.val);
    for (int m = 0; m < md.h; ++m) {
      for (int c = 0; c < md.w; ++c) {
        meanD2[size_t(m) * step + c] = meanL.row(m)[c] = md.mean[m][c];
        varD2[size_t(m) * step + c] = varL.row(m)[c] = md.var[m][c];
      }
      mL.push_back(meanL.ptrs()[m]);
      vL.push_back(varL.ptrs()[m]);
    }
  }
  Args<T> args(int w, int h) {
    return {meanD2.data(), varD2.data(), src.data(), val.data(), dst.data(), res.data(),
            mL.data(),     vL.data(),    step,       w,          h};
  }
  bool guardsIntact() const {
    return meanD2.guardsIntact() && varD2.guardsIntact() && dst.guardsIntact() &&
           res.guardsIntact() && meanL.guardsIntact() && varL.guardsIntact();
  }
};

// ---------------------------------------------------------------- members

enum Kind { kStrideFirst, kPointersFirst, kRowPointers };
// What a member computes: which reference, and from which start (constants
// in pSrcDst, or the accumulators) into pSrcDst or *pResult.
enum Want { kMulti, kMax, kDist, kAdd, kAddL, kMix, kId, kIdL };

template <typename T>
struct Member {
  const char* name;
  Kind kind;
  unsigned ptrs;
  Want want;
  qelStatus (*call)(const Args<T>&);
};

// clang-format off
enum Ptr : unsigned { MEAN = 1, VAR = 2, SRC = 4, VAL = 8, DST = 16, RES = 32, PPM = 64, PPV = 128 };

#define QELS_MEMBERS(F)                                                                            \
  {                                                                                                \
    {"MultiMix_D2", kStrideFirst, MEAN | VAR | SRC | DST, kMulti, [](const G& a) { return qelsLogGaussMultiMix_##F##_D2(a.mean, a.var, a.step, a.src, a.width, a.dst, a.height); }}, \
    {"MultiMix_D2L", kRowPointers, PPM | PPV | SRC | DST, kMulti, [](const G& a) { return qelsLogGaussMultiMix_##F##_D2L(a.ppMean, a.ppVar, a.src, a.width, a.dst, a.height); }}, \
    {"Max_D2", kStrideFirst, MEAN | VAR | SRC | VAL | DST, kMax, [](const G& a) { return qelsLogGaussMaxMultiMix_##F##_D2(a.mean, a.var, a.step, a.src, a.width, a.val, a.dst, a.height); }}, \
    {"Max_D2L", kRowPointers, PPM | PPV | SRC | VAL | DST, kMax, [](const G& a) { return qelsLogGaussMaxMultiMix_##F##_D2L(a.ppMean, a.ppVar, a.src, a.width, a.val, a.dst, a.height); }}, \
    {"Add_D2", kStrideFirst, MEAN | VAR | SRC | VAL | DST, kAdd, [](const G& a) { return qelsLogGaussAddMultiMix_##F##_D2(a.mean, a.var, a.step, a.src, a.width, a.val, a.dst, a.height); }}, \
    {"Add_D2L", kRowPointers, PPM | PPV | SRC | VAL | DST, kAddL, [](const G& a) { return qelsLogGaussAddMultiMix_##F##_D2L(a.ppMean, a.ppVar, a.src, a.width, a.val, a.dst, a.height); }}, \
    {"MahDist_D2", kStrideFirst, MEAN | VAR | SRC | DST, kDist, [](const G& a) { return qelsMahDistMultiMix_##F##_D2(a.mean, a.var, a.step, a.src, a.width, a.dst, a.height); }}, \
    {"MahDist_D2L", kRowPointers, PPM | PPV | SRC | DST, kDist, [](const G& a) { return qelsMahDistMultiMix_##F##_D2L(a.ppMean, a.ppVar, a.src, a.width, a.dst, a.height); }}, \
    {"Mixture_D2", kPointersFirst, SRC | MEAN | VAR | VAL | RES, kMix, [](const G& a) { return qelsLogGaussMixture_##F##_D2(a.src, a.mean, a.var, a.height, a.step, a.width, a.val, a.res); }}, \
    {"Mixture_D2L", kRowPointers, SRC | PPM | PPV | VAL | RES, kMix, [](const G& a) { return qelsLogGaussMixture_##F##_D2L(a.src, a.ppMean, a.ppVar, a.height, a.width, a.val, a.res); }}, \
    {"Mixture_IdVar_D2", kPointersFirst, SRC | MEAN | VAL | RES, kId, [](const G& a) { return qelsLogGaussMixture_IdVar_##F##_D2(a.src, a.mean, a.height, a.step, a.width, a.val, a.res); }}, \
    {"Mixture_IdVar_D2L", kRowPointers, SRC | PPM | VAL | RES, kIdL, [](const G& a) { return qelsLogGaussMixture_IdVar_##F##_D2L(a.src, a.ppMean, a.height, a.width, a.val, a.res); }}, \
  }

template <typename T>
std::vector<Member<T>> members() {
  using G = Args<T>;
  if constexpr (sizeof(T) == 4)
    return QELS_MEMBERS(32f);
  else
    return QELS_MEMBERS(64f);
}
#undef QELS_MEMBERS
// clang-format on

// ---------------------------------------------------------------- references

// Expected results of every member for one model, indexed by Want; the
// scalar results are vectors of one element.
template <typename T>
struct Expected {
  std::vector<T> want[8];
  explicit Expected(const Model<T>& md) {
    std::vector<const T*> ms, vs;
    for (int m = 0; m < md.h; ++m) {
      ms.push_back(md.mean[m].data());
      vs.push_back(md.var[m].data());
    }
    const T* x = md.src.data();
    // One kernel call over all components, and calls of 100 components.
    const auto whole = chunkedSums(x, ms.data(), vs.data(), md.w, md.h, md.h);
    const auto chunkScores =
        scores(md.val, chunkedSums(x, ms.data(), vs.data(), md.w, md.h, kChunk));
    want[kDist] = whole;
    want[kMulti] = scores(md.val, whole);
    want[kMax] = want[kAdd] = want[kAddL] = md.dst0;
    for (int m = 0; m < md.h; ++m) want[kMax][m] = logref::sseMax(want[kMulti][m], md.dst0[m]);
    chunkLogAdd(chunkScores, want[kAdd].data());
    // From 1000 components the double row-pointer log-add runs its own loop
    // with the scalar log-add.
    if (sizeof(T) == 8 && md.h >= 1000)
      for (int m = 0; m < md.h; ++m) want[kAddL][m] = refLogAdd64f(chunkScores[m], md.dst0[m]);
    else
      want[kAddL] = want[kAdd];
    want[kMix] = {chunkLogSum(chunkScores)};
    std::vector<T> idScores(md.h);
    for (int m = 0; m < md.h; ++m) idScores[m] = singleIdVar(x, ms[m], md.w, md.val[m]);
    want[kIdL] = {chunkLogSum(idScores)};
    if constexpr (sizeof(T) == 4) {
      std::vector<float> s(md.h);
      for (int m = 0; m < md.h; ++m) s[m] = idVarSum32f(x, ms[m], md.w);
      want[kId] = {foldInDouble32f(scores(md.val, s))};
    } else {
      want[kId] = want[kIdL];
    }
    checkAgainstExact(md, ms, vs, chunkScores, idScores);
  }

  // The references against double formulas: each score within (w + 6)
  // units of |v| + S/2 (every term of S is positive), and each log sum
  // within the largest score error plus, for every log-add step, two units
  // of the magnitude reached, the polynomial's error and the smaller term
  // that a step may ignore, exp(MINLOGEXP): 2.2e-7 in single, 1e-10 in
  // double. Each log-add of the accumulating family within its score's
  // error plus one step.
  void checkAgainstExact(const Model<T>& md, const std::vector<const T*>& ms,
                         const std::vector<const T*>& vs, const std::vector<T>& sc,
                         const std::vector<T>& idSc) const {
    const double u = sizeof(T) == 4 ? 0x1p-24 : 0x1p-53;
    const double stepErr = sizeof(T) == 4 ? 4.6e-9 + 2.3e-7 : 3.2e-15 + 1.0e-10;
    std::vector<double> exact(md.h), exactId(md.h);
    double scoreErr = 0, idErr = 0;
    for (int m = 0; m < md.h; ++m) {
      const double s = exactSum(md.src.data(), ms[m], vs[m], md.w);
      const double sId = exactSum<T>(md.src.data(), ms[m], nullptr, md.w);
      exact[m] = md.val[m] - 0.5 * s;
      exactId[m] = md.val[m] - 0.5 * sId;
      const double bound = (md.w + 6) * u * (std::fabs(md.val[m]) + 0.5 * s);
      const double boundId = (md.w + 6) * u * (std::fabs(md.val[m]) + 0.5 * sId);
      scoreErr = std::max(scoreErr, bound);
      idErr = std::max(idErr, boundId);
      ASSERT_LE(std::fabs(sc[m] - exact[m]), bound) << "score " << m;
      ASSERT_LE(std::fabs(idSc[m] - exactId[m]), boundId) << "identity score " << m;
      const double lae = exactLogSumExp({exact[m], double(md.dst0[m])});
      ASSERT_LE(std::fabs(want[kAdd][m] - lae), bound + 2 * u * (std::fabs(lae) + 1) + stepErr)
          << "log-add " << m;
    }
    auto sumBound = [&](double err, double lse) {
      return err + md.h * (2 * u * (std::fabs(lse) + std::log(md.h) + 2) + stepErr);
    };
    const double lse = exactLogSumExp(exact), lseId = exactLogSumExp(exactId);
    ASSERT_LE(std::fabs(want[kMix][0] - lse), sumBound(scoreErr, lse));
    ASSERT_LE(std::fabs(want[kIdL][0] - lseId), sumBound(idErr, lseId));
    ASSERT_LE(std::fabs(want[kId][0] - lseId), sumBound(idErr, lseId));
  }
};

// Every member on every placement of one model, bit for bit.
template <typename T>
void checkModel(const Model<T>& md) {
  const Expected<T> ex(md);
  if (testing::Test::HasFatalFailure()) return;
  // One component: the log sum of one element is the component's score.
  if (md.h == 1) ASSERT_TRUE(sameBits(ex.want[kMix][0], ex.want[kMulti][0]));
  for (const Placement& p : kPlacements) {
    Placed<T> pl(md, p);
    for (const auto& e : members<T>()) {
      SCOPED_TRACE(testing::Message()
                   << e.name << " height " << md.h << " width " << md.w << " " << p.name);
      pl.dst.assign(e.want == kMulti ? md.val : md.dst0);
      ASSERT_EQ(e.call(pl.args(md.w, md.h)), qelStatusOk);
      const auto& want = ex.want[e.want];
      ASSERT_TRUE(
          sameArrays(e.ptrs & RES ? pl.res.data() : pl.dst.data(), want.data(), want.size()));
      ASSERT_TRUE(pl.guardsIntact());
    }
  }
}

template <typename T>
void sweep(const std::vector<int>& heights, const std::vector<int>& widths) {
  uint32_t seed = sizeof(T) * 1000;
  for (int h : heights)
    for (int w : widths) {
      checkModel(Model<T>(h, w, ++seed));
      if (testing::Test::HasFatalFailure()) return;
    }
}

const std::vector<int> kHeights = {1, 2, 3, 4, 5, 99, 100, 101, 201, 250};
const std::vector<int> kWidths = {1, 2, 3, 4, 13, 39, 64};

TEST(MixtureScoring, SingleFamiliesMatchReferenceBitForBit) { sweep<float>(kHeights, kWidths); }
TEST(MixtureScoring, DoubleFamiliesMatchReferenceBitForBit) { sweep<double>(kHeights, kWidths); }

// The double MultiMix, maximum and row-pointer log-add switch to the
// wrappers' own loops at 1000 components; both sides of the border match
// the same reference.
TEST(MixtureScoring, DoubleOwnLoopsFromOneThousandComponents) {
  sweep<double>({999, 1000, 1001, 1003}, {3, 39});
}

// ---------------------------------------------------------------- argument checks

// Every fault alone, and pairs of faults where the first check in the
// member's order decides; the outputs stay canary-filled on every error.
template <typename T>
void checkOrders() {
  const int h = 6, w = 5;
  const Model<T> md(h, w, 9);
  Placed<T> pl(md, kPlacements[0]);
  for (const auto& e : members<T>()) {
    SCOPED_TRACE(e.name);
    const Args<T> good = pl.args(w, h);
    auto expectError = [&](const Args<T>& a, qelStatus want, const char* what) {
      pl.dst.poison();
      pl.res.poison();
      EXPECT_EQ(e.call(a), want) << what;
      EXPECT_TRUE(pl.dst.untouched() && pl.res.untouched()) << what;
    };
    for (unsigned bit = 1; bit <= PPV; bit <<= 1) {
      if (!(e.ptrs & bit)) continue;
      Args<T> a = good;
      if (bit == MEAN) a.mean = nullptr;
      if (bit == VAR) a.var = nullptr;
      if (bit == SRC) a.src = nullptr;
      if (bit == VAL) a.val = nullptr;
      if (bit == DST) a.dst = nullptr;
      if (bit == RES) a.res = nullptr;
      if (bit == PPM) a.ppMean = nullptr;
      if (bit == PPV) a.ppVar = nullptr;
      expectError(a, qelStatusNullPtr, "null pointer");
      a.width = 0;
      expectError(a, qelStatusNullPtr, "null pointer and width 0");
      a.width = w;
      a.step = w - 1;
      if (e.kind != kRowPointers)
        expectError(a, e.kind == kStrideFirst ? qelStatusStride : qelStatusNullPtr,
                    "null pointer and width above step");
    }
    for (auto [wd, ht] : {std::pair{0, h}, {w, 0}, {-1, h}, {w, -5}}) {
      Args<T> a = good;
      a.width = wd;
      a.height = ht;
      expectError(a, qelStatusSize, "size");
    }
    if (e.kind != kRowPointers) {
      Args<T> a = good;
      a.step = w - 1;
      expectError(a, qelStatusStride, "width above step");
      a.height = 0;
      expectError(a, qelStatusStride, "width above step and height 0");
    }
  }
}

TEST(MixtureScoring, ArgumentChecksInFamilyOrderWriteNothing) {
  checkOrders<float>();
  checkOrders<double>();
}

// ---------------------------------------------------------------- behaviour

// The MultiMix scores replace their constants: a second call without
// restoring them takes the first call's scores as constants.
TEST(MixtureScoring, MultiMixOverwritesItsConstants) {
  Model<float> md(7, 13, 11);
  Placed<float> pl(md, kPlacements[1]);
  pl.dst.assign(md.val);
  for (int pass = 0; pass < 2; ++pass) ASSERT_EQ(members<float>()[0].call(pl.args(13, 7)), 0);
  md.val = Expected<float>(md).want[kMulti];
  EXPECT_TRUE(sameArrays(pl.dst.data(), Expected<float>(md).want[kMulti].data(), 7));
}

// A NaN score leaves the maximum's destination as it was, in a
// four-component pass (component 1) and in the tail (component 5), for every
// maximum member.
template <typename T>
void maximumKeepsDestinationOnNaN() {
  Model<T> md(6, 13, 13);
  md.mean[1][4] = md.mean[5][12] = std::numeric_limits<T>::quiet_NaN();
  Placed<T> pl(md, kPlacements[0]);
  for (const auto& e : members<T>()) {
    if (e.want != kMax) continue;
    pl.dst.assign(md.dst0);
    ASSERT_EQ(e.call(pl.args(13, 6)), qelStatusOk);
    for (int m : {1, 5}) EXPECT_TRUE(sameBits(pl.dst[m], md.dst0[m])) << e.name << " " << m;
    EXPECT_GE(pl.dst[0], md.dst0[0]);
  }
}

TEST(MixtureScoring, MaximumKeepsDestinationOnNaNScore) {
  maximumKeepsDestinationOnNaN<float>();
  maximumKeepsDestinationOnNaN<double>();
}

}  // namespace
