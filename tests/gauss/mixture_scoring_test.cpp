// Mixture scores: one observation against many components. Every result is
// compared bit for bit with a scalar reference of the kernels' orders of
// addition, and the references with plain double formulas.
#include <cmath>
#include <string>
#include <vector>

#include "gauss/gauss.h"
#include "mixture_scoring_reference.h"
#include "test_support.h"

namespace {

using namespace qtest;
using namespace qtest::mixref;

template <typename T>
constexpr double kUnit = sizeof(T) == 4 ? 0x1p-24 : 0x1p-53;

// ---------------------------------------------------------------- data

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
    }
  }
};

// Where the data lie: offsets in elements from a 64-byte boundary, the
// stride (0: rounded up to 4, 1: packed, 2: rounded up to 4 plus 2) and
// whether one row pointer of each `_D2L` array is off 16 bytes.
struct Placement {
  const char* name;
  size_t matOff, srcOff, valOff;
  int stepMode;
  bool misRow;
};
const Placement kPlacements[] = {
    {"aligned", 0, 0, 0, 0, false},   {"src off", 0, 1, 0, 0, false},
    {"matrix off", 1, 0, 0, 0, true}, {"packed step", 0, 0, 0, 1, false},
    {"even step", 0, 0, 0, 2, true},  {"val off", 0, 0, 1, 0, false},
};

inline int stepFor(int w, int mode) {
  const int up = (w + 3) / 4 * 4;
  return mode == 0 ? up : mode == 1 ? w : up + 2;
}

template <typename T>
struct Placed {
  int h, w, step;
  Guarded<T> meanD2, varD2, src, val, dst;
  RowSet<T> meanL, varL;
  std::vector<const T*> mD2, vD2, mL, vL;
  Placed(const Model<T>& md, const Placement& p)
      : h(md.h),
        w(md.w),
        step(stepFor(md.w, p.stepMode)),
        meanD2(size_t(md.h) * step, p.matOff * sizeof(T)),
        varD2(size_t(md.h) * step, p.matOff * sizeof(T)),
        src(md.w, p.srcOff * sizeof(T)),
        val(md.h, p.valOff * sizeof(T)),
        dst(md.h, p.valOff * sizeof(T)),
        meanL(md.h, md.w, p.misRow ? md.h * 2 / 3 : -1),
        varL(md.h, md.w, p.misRow ? md.h / 3 : -1) {
    src.assign(md.src);
    val.assign(md.val);
    dst.assign(md.dst0);
    for (int m = 0; m < h; ++m)
      for (int c = 0; c < w; ++c) {
        meanD2[size_t(m) * step + c] = meanL.row(m)[c] = md.mean[m][c];
        varD2[size_t(m) * step + c] = varL.row(m)[c] = md.var[m][c];
      }
    for (int m = 0; m < h; ++m) {
      mD2.push_back(meanD2.data() + size_t(m) * step);
      vD2.push_back(varD2.data() + size_t(m) * step);
      mL.push_back(meanL.ptrs()[m]);
      vL.push_back(varL.ptrs()[m]);
    }
  }
  bool guardsIntact() const {
    return meanD2.guardsIntact() && varD2.guardsIntact() && dst.guardsIntact() &&
           meanL.guardsIntact() && varL.guardsIntact();
  }
};

// The exported functions of one element type.
template <typename T>
struct Api;
template <>
struct Api<float> {
  static constexpr auto multiD2 = qelsLogGaussMultiMix_32f_D2;
  static constexpr auto multiD2L = qelsLogGaussMultiMix_32f_D2L;
  static constexpr auto maxD2 = qelsLogGaussMaxMultiMix_32f_D2;
  static constexpr auto maxD2L = qelsLogGaussMaxMultiMix_32f_D2L;
  static constexpr auto addD2 = qelsLogGaussAddMultiMix_32f_D2;
  static constexpr auto addD2L = qelsLogGaussAddMultiMix_32f_D2L;
  static constexpr auto distD2 = qelsMahDistMultiMix_32f_D2;
  static constexpr auto distD2L = qelsMahDistMultiMix_32f_D2L;
  static constexpr auto mixD2 = qelsLogGaussMixture_32f_D2;
  static constexpr auto mixD2L = qelsLogGaussMixture_32f_D2L;
  static constexpr auto idD2 = qelsLogGaussMixture_IdVar_32f_D2;
  static constexpr auto idD2L = qelsLogGaussMixture_IdVar_32f_D2L;
  static constexpr float kLogZero = -4500000.0f;
};
template <>
struct Api<double> {
  static constexpr auto multiD2 = qelsLogGaussMultiMix_64f_D2;
  static constexpr auto multiD2L = qelsLogGaussMultiMix_64f_D2L;
  static constexpr auto maxD2 = qelsLogGaussMaxMultiMix_64f_D2;
  static constexpr auto maxD2L = qelsLogGaussMaxMultiMix_64f_D2L;
  static constexpr auto addD2 = qelsLogGaussAddMultiMix_64f_D2;
  static constexpr auto addD2L = qelsLogGaussAddMultiMix_64f_D2L;
  static constexpr auto distD2 = qelsMahDistMultiMix_64f_D2;
  static constexpr auto distD2L = qelsMahDistMultiMix_64f_D2L;
  static constexpr auto mixD2 = qelsLogGaussMixture_64f_D2;
  static constexpr auto mixD2L = qelsLogGaussMixture_64f_D2L;
  static constexpr auto idD2 = qelsLogGaussMixture_IdVar_64f_D2;
  static constexpr auto idD2L = qelsLogGaussMixture_IdVar_64f_D2L;
  static constexpr double kLogZero = -1.0e10;
};

// Expected results of every family for one model, from the references.
template <typename T>
struct Expected {
  std::vector<T> multi, max, dist, add, addScalar;
  T mix, id;
  explicit Expected(const Model<T>& md) {
    std::vector<const T*> ms, vs;
    for (int m = 0; m < md.h; ++m) {
      ms.push_back(md.mean[m].data());
      vs.push_back(md.var[m].data());
    }
    const T* x = md.src.data();
    // One kernel call over all components, and calls of 100 components.
    const auto whole = chunkedSums(x, ms.data(), vs.data(), md.w, md.h, md.h);
    const auto chunked = chunkedSums(x, ms.data(), vs.data(), md.w, md.h, kChunk);
    dist = whole;
    multi = scores(md.val, whole);
    max = md.dst0;
    for (int m = 0; m < md.h; ++m) max[m] = logref::sseMax(multi[m], md.dst0[m]);
    const auto chunkScores = scores(md.val, chunked);
    add = md.dst0;
    chunkLogAdd(chunkScores, add.data());
    addScalar = md.dst0;
    if constexpr (sizeof(T) == 8)
      for (int m = 0; m < md.h; ++m) addScalar[m] = refLogAdd64f(chunkScores[m], md.dst0[m]);
    mix = chunkLogSum(chunkScores);
    std::vector<T> idScores(md.h);
    if constexpr (sizeof(T) == 4) {
      std::vector<float> s(md.h);
      for (int m = 0; m < md.h; ++m) s[m] = idVarSum32f(x, ms[m], md.w);
      id = foldInDouble32f(scores(md.val, s));
      for (int m = 0; m < md.h; ++m) idScores[m] = singleIdVar32f(x, ms[m], md.w, md.val[m]);
      idL = chunkLogSum(idScores);
    } else {
      for (int m = 0; m < md.h; ++m) idScores[m] = singleIdVar64f(x, ms[m], md.w, md.val[m]);
      id = idL = chunkLogSum(idScores);
    }
    checkAgainstExact(md, ms, vs, chunkScores, idScores);
  }
  T idL;

  // The references against double formulas: each score within (w + 6)
  // units of |v| + S/2 (every term of S is positive), and each log sum
  // within the largest score error plus, for every log-add step, two units
  // of the magnitude reached, the polynomial's error and the smaller term
  // that a step may ignore, exp(MINLOGEXP): 2.2e-7 in single, 1e-10 in
  // double.
  // Each log-add of the accumulating family within its score's error plus
  // one step.
  void checkAgainstExact(const Model<T>& md, const std::vector<const T*>& ms,
                         const std::vector<const T*>& vs, const std::vector<T>& sc,
                         const std::vector<T>& idSc) const {
    const double u = kUnit<T>;
    std::vector<double> exact(md.h), exactId(md.h);
    const double stepErr = sizeof(T) == 4 ? 4.6e-9 + 2.3e-7 : 3.2e-15 + 1.0e-10;
    double scoreErr = 0, idErr = 0;
    for (int m = 0; m < md.h; ++m) {
      const double s = exactSum(md.src.data(), ms[m], vs[m], md.w);
      const double sId = exactSum<T>(md.src.data(), ms[m], nullptr, md.w);
      exact[m] = md.val[m] - 0.5 * s;
      exactId[m] = md.val[m] - 0.5 * sId;
      const double bound = (md.w + 6) * u * (std::fabs(md.val[m]) + 0.5 * s);
      scoreErr = std::max(scoreErr, bound);
      ASSERT_LE(std::fabs(sc[m] - exact[m]), bound) << "score " << m;
      const double boundId = (md.w + 6) * u * (std::fabs(md.val[m]) + 0.5 * sId);
      idErr = std::max(idErr, boundId);
      ASSERT_LE(std::fabs(idSc[m] - exactId[m]), boundId) << "identity score " << m;
      const double lae = exactLogSumExp({exact[m], double(md.dst0[m])});
      ASSERT_LE(std::fabs(add[m] - lae), bound + 2 * u * (std::fabs(lae) + 1) + stepErr)
          << "log-add " << m;
    }
    auto sumBound = [&](double err, double lse) {
      return err + md.h * (2 * u * (std::fabs(lse) + std::log(md.h) + 2) + stepErr);
    };
    const double lse = exactLogSumExp(exact), lseId = exactLogSumExp(exactId);
    ASSERT_LE(std::fabs(chunkLogSum(sc) - lse), sumBound(scoreErr, lse));
    ASSERT_LE(std::fabs(chunkLogSum(idSc) - lseId), sumBound(idErr, lseId));
    ASSERT_LE(std::fabs(id - lseId), sumBound(idErr, lseId));
  }
};

template <typename T>
void checkAllFamilies(const Model<T>& md, const Expected<T>& ex, const Placement& p) {
  using A = Api<T>;
  Placed<T> pl(md, p);
  const T* x = pl.src.data();
  const T* v = pl.val.data();
  const T** mL = pl.mL.data();
  const T** vL = pl.vL.data();
  const int h = md.h, w = md.w, st = pl.step;
  const bool scalarAdd = sizeof(T) == 8 && h >= 1000;
  T* d = pl.dst.data();
  auto run = [&](const char* what, const std::vector<T>& init, auto call,
                 const std::vector<T>& want) {
    pl.dst.assign(init);
    ASSERT_EQ(call(), qelStatusOk) << what;
    ASSERT_TRUE(sameArrays(pl.dst.data(), want.data(), h)) << what;
  };
  const auto& v0 = md.val;
  const auto& d0 = md.dst0;
  run(
      "MultiD2", v0, [&] { return A::multiD2(pl.mD2[0], pl.vD2[0], st, x, w, d, h); }, ex.multi);
  run(
      "MultiD2L", v0, [&] { return A::multiD2L(mL, vL, x, w, d, h); }, ex.multi);
  run(
      "MaxD2", d0, [&] { return A::maxD2(pl.mD2[0], pl.vD2[0], st, x, w, v, d, h); }, ex.max);
  run(
      "MaxD2L", d0, [&] { return A::maxD2L(mL, vL, x, w, v, d, h); }, ex.max);
  run(
      "DistD2", d0, [&] { return A::distD2(pl.mD2[0], pl.vD2[0], st, x, w, d, h); }, ex.dist);
  run(
      "DistD2L", d0, [&] { return A::distD2L(mL, vL, x, w, d, h); }, ex.dist);
  run(
      "AddD2", d0, [&] { return A::addD2(pl.mD2[0], pl.vD2[0], st, x, w, v, d, h); }, ex.add);
  run(
      "AddD2L", d0, [&] { return A::addD2L(mL, vL, x, w, v, d, h); },
      scalarAdd ? ex.addScalar : ex.add);
  T r = 0;
  ASSERT_EQ(A::mixD2(x, pl.mD2[0], pl.vD2[0], h, st, w, v, &r), qelStatusOk);
  ASSERT_TRUE(sameBits(r, ex.mix)) << r << " vs " << ex.mix;
  ASSERT_EQ(A::mixD2L(x, mL, vL, h, w, v, &r), qelStatusOk);
  ASSERT_TRUE(sameBits(r, ex.mix)) << r << " vs " << ex.mix;
  ASSERT_EQ(A::idD2(x, pl.mD2[0], h, st, w, v, &r), qelStatusOk);
  ASSERT_TRUE(sameBits(r, ex.id)) << r << " vs " << ex.id;
  ASSERT_EQ(A::idD2L(x, mL, h, w, v, &r), qelStatusOk);
  ASSERT_TRUE(sameBits(r, ex.idL)) << r << " vs " << ex.idL;
  ASSERT_TRUE(pl.guardsIntact());
}

template <typename T>
void sweep(const std::vector<int>& heights, const std::vector<int>& widths, bool logZeros = false) {
  uint32_t seed = sizeof(T) * 1000;
  for (int h : heights)
    for (int w : widths) {
      Model<T> md(h, w, ++seed);
      // Accumulators at log zero take the score; where the score is far
      // below log zero too, the result is log zero itself.
      for (int m = 0; logZeros && m < 10; ++m) {
        md.dst0[m] = Api<T>::kLogZero;
        if (m >= 5) md.val[m] = 2 * Api<T>::kLogZero;
      }
      const Expected<T> ex(md);
      for (const Placement& p : kPlacements) {
        SCOPED_TRACE(testing::Message() << "height " << h << " width " << w << " " << p.name);
        checkAllFamilies(md, ex, p);
        if (testing::Test::HasFatalFailure()) return;
      }
    }
}

const std::vector<int> kHeights = {1, 2, 3, 4, 5, 99, 100, 101, 201, 250};
const std::vector<int> kWidths = {1, 2, 3, 4, 13, 39, 64};

TEST(MixtureScoring, SingleFamiliesMatchReferenceBitForBit) { sweep<float>(kHeights, kWidths); }
TEST(MixtureScoring, DoubleFamiliesMatchReferenceBitForBit) { sweep<double>(kHeights, kWidths); }

// The double MultiMix, maximum and row-pointer log-add switch to the
// wrappers' own loops at 1000 components.
TEST(MixtureScoring, DoubleOwnLoopsFromOneThousandComponents) {
  sweep<double>({999, 1000, 1001, 1003}, {3, 39}, true);
  // The maximum at 999 and at 1000 components, on the same first 999.
  const Model<double> md(1000, 39, 7);
  Placed<double> pl(md, kPlacements[1]);
  auto call = [&](int h) {
    pl.dst.assign(md.dst0);
    EXPECT_EQ(qelsLogGaussMaxMultiMix_64f_D2(pl.mD2[0], pl.vD2[0], pl.step, pl.src.data(), 39,
                                             pl.val.data(), pl.dst.data(), h),
              qelStatusOk);
    return pl.dst.vec();
  };
  const auto below = call(999), above = call(1000);
  for (int m = 0; m < 999; ++m) EXPECT_NEAR(below[m], above[m], 1e-13 * std::fabs(below[m])) << m;
}

// The kernel twins run on data that suits both; each matches the reference.
TEST(MixtureScoring, KernelTwinsAgreeOnAlignedData) {
  const Model<float> md(11, 39, 3);
  const Expected<float> ex(md);
  Placed<float> pl(md, kPlacements[0]);
  using K = void (*)(const float*, const float*, int, const float*, int, float*, int);
  for (K k : {K(qelsLGaussMultiMix_32f_D2_M7), K(qelsLGaussMultiMix_32f_D2_M7_Al)}) {
    pl.dst.assign(md.val);
    k(pl.mD2[0], pl.vD2[0], pl.step, pl.src.data(), 39, pl.dst.data(), 11);
    EXPECT_TRUE(sameArrays(pl.dst.data(), ex.multi.data(), 11));
  }
  const Model<double> mdd(7, 13, 4);
  const Expected<double> exd(mdd);
  Placed<double> pd(mdd, kPlacements[0]);
  using KD = void (*)(const double* const*, const double* const*, const double*, int, double*, int);
  for (KD k : {KD(qelsLGaussMultiMix_64f_D2L_M7), KD(qelsLGaussMultiMix_64f_D2L_M7_Al)}) {
    pd.dst.assign(mdd.val);
    k(pd.mL.data(), pd.vL.data(), pd.src.data(), 13, pd.dst.data(), 7);
    EXPECT_TRUE(sameArrays(pd.dst.data(), exd.multi.data(), 7));
  }
}

// ---------------------------------------------------------------- argument checks

enum Kind { kStrideFirst, kPointersFirst, kRowPointers };
enum Ptr : unsigned {
  MEAN = 1,
  VAR = 2,
  SRC = 4,
  VAL = 8,
  DST = 16,
  RES = 32,
  PPM = 64,
  PPV = 128
};

template <typename T>
struct Args {
  const T *mean, *var, *src, *val;
  T *dst, *res;
  const T **ppMean, **ppVar;
  int step, width, height;
};

template <typename T>
struct Entry {
  const char* name;
  Kind kind;
  unsigned ptrs;
  qelStatus (*call)(const Args<T>&);
};

// clang-format off
template <typename T>
std::vector<Entry<T>> allEntries() {
  using A = Api<T>;
  using G = Args<T>;
  return {
    {"MultiMix_D2", kStrideFirst, MEAN | VAR | SRC | DST, [](const G& a) { return A::multiD2(a.mean, a.var, a.step, a.src, a.width, a.dst, a.height); }},
    {"MultiMix_D2L", kRowPointers, PPM | PPV | SRC | DST, [](const G& a) { return A::multiD2L(a.ppMean, a.ppVar, a.src, a.width, a.dst, a.height); }},
    {"Max_D2", kStrideFirst, MEAN | VAR | SRC | VAL | DST, [](const G& a) { return A::maxD2(a.mean, a.var, a.step, a.src, a.width, a.val, a.dst, a.height); }},
    {"Max_D2L", kRowPointers, PPM | PPV | SRC | VAL | DST, [](const G& a) { return A::maxD2L(a.ppMean, a.ppVar, a.src, a.width, a.val, a.dst, a.height); }},
    {"Add_D2", kStrideFirst, MEAN | VAR | SRC | VAL | DST, [](const G& a) { return A::addD2(a.mean, a.var, a.step, a.src, a.width, a.val, a.dst, a.height); }},
    {"Add_D2L", kRowPointers, PPM | PPV | SRC | VAL | DST, [](const G& a) { return A::addD2L(a.ppMean, a.ppVar, a.src, a.width, a.val, a.dst, a.height); }},
    {"MahDist_D2", kStrideFirst, MEAN | VAR | SRC | DST, [](const G& a) { return A::distD2(a.mean, a.var, a.step, a.src, a.width, a.dst, a.height); }},
    {"MahDist_D2L", kRowPointers, PPM | PPV | SRC | DST, [](const G& a) { return A::distD2L(a.ppMean, a.ppVar, a.src, a.width, a.dst, a.height); }},
    {"Mixture_D2", kPointersFirst, SRC | MEAN | VAR | VAL | RES, [](const G& a) { return A::mixD2(a.src, a.mean, a.var, a.height, a.step, a.width, a.val, a.res); }},
    {"Mixture_D2L", kRowPointers, SRC | PPM | PPV | VAL | RES, [](const G& a) { return A::mixD2L(a.src, a.ppMean, a.ppVar, a.height, a.width, a.val, a.res); }},
    {"Mixture_IdVar_D2", kPointersFirst, SRC | MEAN | VAL | RES, [](const G& a) { return A::idD2(a.src, a.mean, a.height, a.step, a.width, a.val, a.res); }},
    {"Mixture_IdVar_D2L", kRowPointers, SRC | PPM | VAL | RES, [](const G& a) { return A::idD2L(a.src, a.ppMean, a.height, a.width, a.val, a.res); }},
  };
}
// clang-format on

// Every fault alone, and pairs of faults where the first check in the
// family's order decides; the output stays canary-filled on every error.
template <typename T>
void checkOrders() {
  using A = Args<T>;
  const int h = 6, w = 5;
  Guarded<T> mean(h * 8), var(h * 8), src(w), val(h), dst(h), res(1);
  for (size_t i = 0; i < size_t(h) * 8; ++i) mean[i] = var[i] = T(0.5);
  for (int i = 0; i < w; ++i) src[i] = T(1);
  for (int i = 0; i < h; ++i) val[i] = T(-3);
  std::vector<const T*> rows(h, mean.data());
  for (const auto& e : allEntries<T>()) {
    SCOPED_TRACE(e.name);
    const A good{mean.data(), var.data(),  src.data(), val.data(), dst.data(), res.data(),
                 rows.data(), rows.data(), 8,          w,          h};
    auto expectError = [&](const A& a, qelStatus want, const char* what) {
      dst.poison();
      res.poison();
      EXPECT_EQ(e.call(a), want) << what;
      EXPECT_TRUE(dst.untouched() && res.untouched()) << what;
    };
    EXPECT_EQ(e.call(good), qelStatusOk);
    for (unsigned bit = 1; bit <= PPV; bit <<= 1) {
      if (!(e.ptrs & bit)) continue;
      A a = good;
      if (bit == MEAN) a.mean = nullptr;
      if (bit == VAR) a.var = nullptr;
      if (bit == SRC) a.src = nullptr;
      if (bit == VAL) a.val = nullptr;
      if (bit == DST) a.dst = nullptr;
      if (bit == RES) a.res = nullptr;
      if (bit == PPM) a.ppMean = nullptr;
      if (bit == PPV) a.ppVar = nullptr;
      expectError(a, qelStatusNullPtr, "null pointer");
      A zero = a;
      zero.width = 0;
      expectError(zero, qelStatusNullPtr, "null pointer and width 0");
      A wide = a;
      wide.step = w - 1;
      if (e.kind != kRowPointers)
        expectError(wide, e.kind == kStrideFirst ? qelStatusStride : qelStatusNullPtr,
                    "null pointer and width above step");
    }
    for (auto [wd, ht] : {std::pair{0, h}, {w, 0}, {-1, h}, {w, -5}}) {
      A a = good;
      a.width = wd;
      a.height = ht;
      expectError(a, qelStatusSize, "size");
    }
    if (e.kind != kRowPointers) {
      A a = good;
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
  // The two families differ: pointers first in the mixture, stride first in
  // the maximum.
  Guarded<float> m(16), r(1);
  EXPECT_EQ(qelsLogGaussMixture_32f_D2(m.data(), m.data(), m.data(), 2, 4, 5, m.data(), nullptr),
            qelStatusNullPtr);
  EXPECT_EQ(
      qelsLogGaussMaxMultiMix_32f_D2(m.data(), m.data(), 4, m.data(), 5, nullptr, r.data(), 2),
      qelStatusStride);
  EXPECT_TRUE(r.untouched());
}

// ---------------------------------------------------------------- behaviour

TEST(MixtureScoring, MultiMixOverwritesItsConstants) {
  const Model<float> md(7, 13, 11);
  const Expected<float> ex(md);
  Placed<float> pl(md, kPlacements[1]);
  pl.dst.assign(md.val);
  for (int pass = 0; pass < 2; ++pass)
    ASSERT_EQ(qelsLogGaussMultiMix_32f_D2(pl.mD2[0], pl.vD2[0], pl.step, pl.src.data(), 13,
                                          pl.dst.data(), 7),
              qelStatusOk);
  std::vector<const float*> ms(pl.mD2), vs(pl.vD2);
  const auto again = scores(ex.multi, kernelSums32f(pl.src.data(), ms.data(), vs.data(), 13, 7));
  EXPECT_TRUE(sameArrays(pl.dst.data(), again.data(), 7));
}

template <typename T>
void logZeroAccumulatorTakesTheScore() {
  const Model<T> md(9, 39, 12);
  const Expected<T> ex(md);
  Placed<T> pl(md, kPlacements[0]);
  for (int m = 0; m < 9; ++m) pl.dst[m] = Api<T>::kLogZero;
  ASSERT_EQ(Api<T>::addD2(pl.mD2[0], pl.vD2[0], pl.step, pl.src.data(), 39, pl.val.data(),
                          pl.dst.data(), 9),
            qelStatusOk);
  EXPECT_TRUE(sameArrays(pl.dst.data(), ex.multi.data(), 9));
  T r = 0;  // one component: the log sum of one element is the score
  ASSERT_EQ(Api<T>::mixD2(pl.src.data(), pl.mD2[0], pl.vD2[0], 1, pl.step, 39, pl.val.data(), &r),
            0);
  EXPECT_TRUE(sameBits(r, ex.multi[0]));
}

TEST(MixtureScoring, LogZeroAccumulatorTakesTheScoreAndOneComponentIsItsScore) {
  logZeroAccumulatorTakesTheScore<float>();
  logZeroAccumulatorTakesTheScore<double>();
}

// A NaN score leaves the maximum's destination as it was, in a
// four-component pass (component 1) and in the tail (component 5).
TEST(MixtureScoring, MaximumKeepsDestinationOnNaNScore) {
  Model<float> md(6, 13, 13);
  md.mean[1][4] = md.mean[5][12] = std::nanf("");
  Model<double> mdd(6, 13, 13);
  mdd.mean[1][4] = mdd.mean[5][12] = std::nan("");
  Placed<float> pl(md, kPlacements[0]);
  Placed<double> pd(mdd, kPlacements[0]);
  ASSERT_EQ(qelsLogGaussMaxMultiMix_32f_D2L(pl.mL.data(), pl.vL.data(), pl.src.data(), 13,
                                            pl.val.data(), pl.dst.data(), 6),
            0);
  ASSERT_EQ(qelsLogGaussMaxMultiMix_64f_D2(pd.mD2[0], pd.vD2[0], pd.step, pd.src.data(), 13,
                                           pd.val.data(), pd.dst.data(), 6),
            0);
  for (int m : {1, 5}) {
    EXPECT_TRUE(sameBits(pl.dst[m], md.dst0[m]));
    EXPECT_TRUE(sameBits(pd.dst[m], mdd.dst0[m]));
  }
  EXPECT_GE(pl.dst[0], md.dst0[0]);
}

}  // namespace
