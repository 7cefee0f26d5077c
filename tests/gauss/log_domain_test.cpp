// Log-add, log-sum and log-subtract: coefficient rows and the scalar
// references against the exact function, the vector routines and exported
// primitives bit for bit against the references for every length class and
// alignment, borders, special values, fixed-point forms with their chunks and
// saturation, argument checks.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <tuple>
#include <utility>
#include <vector>

#include "gauss/gauss.h"
#include "log_add_reference.h"
#include "test_support.h"

namespace {

using qtest::Guarded;
using qtest::Rng;
using qtest::sameArrays;
using qtest::sameBits;
namespace lr = qtest::logref;

// The exact function in extended precision: max + log1p(exp(-|d|)). Long
// double (64-bit significand) keeps its own error near 1e-19, far below the
// bounds under test.
long double exactLogAdd(long double a, long double b) {
  return std::max(a, b) + log1pl(expl(-fabsl(a - b)));
}

// Sum of |c_k| |y|^power: the scale of the rounding errors of any
// evaluation order of the row at y.
long double termScale(const double* c, int n, long double y) {
  long double s = 0;
  for (int k = 0; k < n; ++k) s += fabsl(c[k]) * powl(fabsl(y), n - 1 - k);
  return s;
}

constexpr long double kU64 = 0x1p-53L;
constexpr long double kU32 = 0x1p-24L;

// Edge pairs: one ulp either side of each segment border and of the cut-off
// (against 0 both ways, and shifted by 7), NaN, infinities and log zero.
template <typename T>
std::vector<std::pair<T, T>> edgePairs() {
  const bool single = sizeof(T) == 4;
  const T nan = std::numeric_limits<T>::quiet_NaN(), inf = std::numeric_limits<T>::infinity();
  const T lz = single ? T(LOGZERO_F) : T(LOGZERO);
  std::vector<std::pair<T, T>> e = {
      {nan, 1},  {1, nan},  {inf, 3}, {-inf, 4},    {-inf, -inf},  {2, -inf},
      {nan, lz}, {lz, nan}, {lz, lz}, {lz, lz * 2}, {-3, lz - 10}, {T(-9.5e9), T(-8.5e9)}};
  for (T border : {T(single ? -2.55 : -3.5), T(single ? -6.8 : -9.0),
                   single ? T(MINLOGEXP_F_SP) : T(MINLOGEXP)})
    for (T d : {std::nextafter(border, T(0)), border, std::nextafter(border, T(-100))})
      e.insert(e.end(), {{d, 0}, {0, d}, {T(7) + d, 7}});
  return e;
}

// Pairs (a incoming, b accumulator) that visit every segment, both sides of
// every cut-off, equal values, log zero and values below it, and the edges.
template <typename T>
void makePairs(Rng& rng, size_t n, std::vector<T>& a, std::vector<T>& b) {
  const bool single = sizeof(T) == 4;
  const double lz = single ? -4500000.0 : -1.0e10, span = single ? 18.0 : 26.0;
  const double offsets[] = {0.0, single ? -2.55 : -3.5, single ? -6.8 : -9.0,
                            single ? 15.3195879547406 : 23.0258509299405};
  static const auto edges = edgePairs<T>();
  a.resize(n);
  b.resize(n);
  for (size_t i = 0; i < n; ++i) {
    const double base = rng.uniformD(-60.0, 10.0);
    const int kind = rng.integer(0, 21);
    if (kind >= 20) {
      std::tie(a[i], b[i]) = edges[rng.integer(0, static_cast<int>(edges.size()) - 1)];
      continue;
    }
    const double other = kind < 12    ? base + rng.uniformD(-span, span)
                         : kind < 16  ? base + offsets[kind - 12]  // equal, borders, cut-off
                         : kind == 16 ? base + rng.uniformD(-1e4, 1e4)
                         : kind == 17 ? lz
                         : kind == 18 ? lz * rng.uniformD(1.0, 3.0)
                                      : base - rng.uniformD(0.0, 1.0);
    const T x = static_cast<T>(base), y = static_cast<T>(other);
    if (rng.integer(0, 1))
      a[i] = x, b[i] = y;
    else
      a[i] = y, b[i] = x;
  }
}

const size_t kLengths[] = {1,  2,  3,  4,  5,  6,  7,  8,  9,  11,  12,  15,  16,  17,   19,
                           24, 31, 32, 33, 47, 48, 63, 64, 65, 100, 127, 128, 129, 1000, 4099};

// ---------------------------------------------------------------- tables

// A lane table: set m2 * 2^lanes + m3 gives lane l the row of its segment
// (bit l of m3: the third, of m2: the second, else the first).
template <typename T, class Row>
void checkLaneTables(const qel32s* biasing, const T* table, const T* borders, int lanes, int terms,
                     Row row, const double* rowBorders) {
  for (int m2 = 0; m2 < (1 << lanes); ++m2)
    for (int m3 = 0; m3 < (1 << lanes); ++m3) {
      if (m2 & m3) continue;
      const int idx = m2 * (1 << lanes) + m3;
      ASSERT_EQ(biasing[idx] % 16, 0);
      const T* c = table + biasing[idx] / static_cast<int>(sizeof(T));
      for (int l = 0; l < lanes; ++l) {
        const int seg = (m3 >> l & 1) ? 2 : (m2 >> l & 1) ? 1 : 0;
        EXPECT_TRUE(sameBits(borders[idx * lanes + l], static_cast<T>(rowBorders[seg])));
        for (int k = 0; k < terms; ++k)
          ASSERT_TRUE(sameBits(c[lanes * k + l], static_cast<T>(row(seg, k))))
              << "set " << idx << " lane " << l << " k " << k;
      }
    }
}

TEST(LogAddTables, StoredRowsLaneTablesAndConstants) {
  const qel64f* rows[6];
  GetLogAddConst(&rows[0], &rows[1], &rows[2]);
  GetLogAddConst_F(&rows[3], &rows[4], &rows[5]);
  for (int s = 0; s < 3; ++s) {
    EXPECT_TRUE(sameArrays(rows[s], lr::kP[s], 22)) << "row " << s;
    EXPECT_TRUE(sameArrays(rows[3 + s], lr::kPF[s], 11)) << "single row " << s;
  }
  checkLaneTables(
      Biasing_D.data(), P_D.data(), INT_S_D.data(), 2, 22,
      [](int s, int k) { return lr::kP[s][k]; }, lr::kBorder);
  checkLaneTables(
      Biasing_F.data(), P_F.data(), INT_S_F.data(), 4, 11,
      [](int s, int k) { return lr::kPF[s][k]; }, lr::kBorderF);
  EXPECT_EQ(LOGZERO, -1.0e10);
  EXPECT_EQ(LOGSMALL, -9.0e9);
  EXPECT_EQ(LOGZERO_F, -4500000.0f);
  EXPECT_EQ(LOGSMALL_F, LOGZERO_F);
  EXPECT_EQ(std::bit_cast<uint32_t>(MINLOGEXP_F_SP), 0xC1751D08u);
  EXPECT_NEAR(MINLOGEXP, std::log(1e-10), 1e-13);
  EXPECT_NEAR(MINLOGEXP_F, -std::log(4500000.0), 1e-13);
}

// ---------------------------------------------------------------- accuracy

// The double references (and so the stored rows) against the exact log-add.
// Bound: the row's stated 3.2e-15
// plus the rounding of the evaluation, bounded by gamma * sum|c_k||y|^k with
// gamma = 44u for the 21-step Horner chain (two roundings a step, one more
// for the constant) and 66u for the two chains in y*y (the rounding of y*y
// is raised to the tenth power), plus two roundings of the final additions at
// the result's magnitude and half an ulp of d = smaller - greater (times a
// slope of at most 1/2).
TEST(LogAddAccuracy, DoubleReferencesAgainstExact) {
  Rng rng(11);
  for (int i = 0; i < 200000; ++i) {
    const double d = i < 100000 ? MINLOGEXP * i / 100000.0 : rng.uniformD(MINLOGEXP, 0.0);
    const double m = i % 3 == 0 ? 0.0 : rng.uniformD(-80.0, 20.0);
    const double a = m + d, b = m;
    const double dd = std::min(a, b) - std::max(a, b);
    const int s = lr::segment(dd);
    const long double scale = termScale(lr::kP[s], 22, dd - lr::kBorder[s]);
    const long double exact = exactLogAdd(a, b);
    const long double half = 2 * kU64 * (fabsl(exact) + 1) + 0.5L * kU64 * fabsl(dd);
    const double gotS = qtest::refLogAdd64f(a, b), gotL = qtest::refLogAddLane64f(a, b);
    ASSERT_LE(fabsl(gotS - exact), 3.2e-15L + 44 * kU64 * scale + half) << a << " " << b;
    ASSERT_LE(fabsl(gotL - exact), 3.2e-15L + 66 * kU64 * scale + half) << a << " " << b;
  }
}

// The single references against the exact log-add. Bound: the row's stated
// 4.6e-9,
// plus single rounding: the coefficients rounded to single (u * scale), the
// 10-step Horner chain in single (22u * scale), the border held as a single
// (|s - single(s)| times the slope of f, at most 1/2), the rounding of
// y = d - s and of d itself (u|y|/2, u|d|/2), and half an ulp of the result.
// The step of the short integer sums (single rows in double) gets the double
// evaluation terms.
TEST(LogAddAccuracy, SingleReferencesAgainstExact) {
  Rng rng(12);
  for (int i = 0; i < 200000; ++i) {
    const float dv = i < 100000 ? static_cast<float>(MINLOGEXP_F * i / 100000.0)
                                : rng.uniform(MINLOGEXP_F_SP, 0.0f);
    if (!(dv >= MINLOGEXP_F_SP)) continue;
    const float m = i % 3 == 0 ? 0.0f : std::round(rng.uniform(-80.0f, 20.0f));
    const float a = m + dv, b = m;  // m integral, so a - b is exactly dv
    const float d = std::min(a, b) - std::max(a, b);
    const int s = lr::segmentF(d);
    const float sF = static_cast<float>(lr::kBorderF[s]);
    const float y = d - sF;
    const long double exact = exactLogAdd(a, b);
    const long double bound = 4.6e-9L + 23 * kU32 * termScale(lr::kPF[s], 11, y) +
                              0.5L * fabsl(lr::kBorderF[s] - static_cast<long double>(sF)) +
                              0.5L * kU32 * (fabsl(y) + fabsl(d)) + kU32 * fabsl(exact);
    if (d >= MINLOGEXP_F_SP)
      ASSERT_LE(fabsl(qtest::refLogAdd32f(a, b) - exact), bound) << a << " " << b;
    if (d > MINLOGEXP_F_SP) ASSERT_LE(fabsl(qtest::refLogAddStep32f(a, b) - exact), bound);
    const long double boundD =
        4.6e-9L + 44 * kU64 * termScale(lr::kPF[s], 11, d - lr::kBorderF[s]) + kU64 * fabsl(exact);
    if (d >= MINLOGEXP_F)
      ASSERT_LE(fabsl(qtest::refLogAddSingleRowsInDouble(a, b) - exact), boundD) << a << " " << b;
  }
}

// ---------------------------------------------------------------- vectors

// One routine of the vector log-add under test and the reference of its
// order of operations.
template <typename T>
struct AddRoutine {
  const char* name;
  void (*call)(const T*, T*, int);
  void (*ref)(const T*, T*, size_t);
};

void scalarRef64f(const double* a, double* b, size_t n) {
  for (size_t i = 0; i < n; ++i) b[i] = qtest::refLogAdd64f(a[i], b[i]);
}

const AddRoutine<float> kAdd32f[] = {
    {"M7_sp", [](const float* a, float* b, int n) { qelsLogAddVec_32f_M7_sp(a, b, n); },
     qtest::refLogAddVec32f},
    {"U8_sp", [](const float* a, float* b, int n) { qelsLogAddVec_32f_U8_sp(a, b, n); },
     qtest::refLogAddVec32f},
    {"qelsLogAdd_32f",
     [](const float* a, float* b, int n) { ASSERT_EQ(qelsLogAdd_32f(a, b, n), 0); },
     qtest::refLogAddVec32f}};
const AddRoutine<double> kAdd64f[] = {
    {"Vec_64f_M7", [](const double* a, double* b, int n) { qelsLogAddVec_64f_M7(a, b, n); },
     qtest::refLogAddVec64f},
    {"hint 0", [](const double* a, double* b, int n) { ASSERT_EQ(qelsLogAdd_64f(a, b, n, 0), 0); },
     scalarRef64f},
    {"hint 1", [](const double* a, double* b, int n) { ASSERT_EQ(qelsLogAdd_64f(a, b, n, 1), 0); },
     scalarRef64f},
    {"hint 2", [](const double* a, double* b, int n) { ASSERT_EQ(qelsLogAdd_64f(a, b, n, 2), 0); },
     scalarRef64f}};

template <typename T, size_t N>
void checkVectorAdds(const AddRoutine<T> (&routines)[N], uint32_t seed) {
  Rng rng(seed);
  for (size_t len : kLengths)
    for (size_t misSrc : {size_t{0}, sizeof(T) == 4 ? size_t{4} : size_t{8}})
      for (size_t misDst : {0, 8}) {
        std::vector<T> a, b;
        makePairs(rng, len, a, b);
        for (const auto& r : routines) {
          std::vector<T> want = b;
          r.ref(a.data(), want.data(), len);
          Guarded<T> src(len, misSrc), dst(len, misDst);
          src.assign(a);
          dst.assign(b);
          r.call(src.data(), dst.data(), static_cast<int>(len));
          ASSERT_TRUE(sameArrays(dst.data(), want.data(), len)) << r.name << " len " << len;
          ASSERT_TRUE(dst.guardsIntact() && src.guardsIntact()) << r.name << " len " << len;
          ASSERT_TRUE(sameArrays(src.data(), a.data(), len)) << r.name;
        }
      }
}

TEST(LogAddVector, EveryRoutineMatchesItsReferenceForEveryLengthAndAlignment) {
  checkVectorAdds(kAdd32f, 21);
  checkVectorAdds(kAdd64f, 22);
  // The two double forms are different evaluation orders of the same row; on
  // these data they must disagree somewhere, or the test above could not
  // tell the lanes from the scalar form.
  Rng rng(23);
  int differ = 0;
  for (int i = 0; i < 4096; ++i) {
    const double b = rng.uniformD(-5, 5), a = b + rng.uniformD(-20, 0);
    differ += !sameBits(qtest::refLogAddLane64f(a, b), qtest::refLogAdd64f(a, b));
  }
  EXPECT_GT(differ, 0);
}

// Both sums against their fold references, exported and kernel, at every
// length and alignment, and in place (the result written over pSrc[0]).
template <typename T>
void checkLogSums(qelStatus (*exported)(const T*, T*, int), void (*kernel)(const T*, T*, int),
                  T (*ref)(const T*, int), uint32_t seed) {
  Rng rng(seed);
  std::vector<size_t> lens(std::begin(kLengths), std::end(kLengths));
  for (size_t l = 1; l <= 40; ++l) lens.push_back(l);
  for (size_t len : lens)
    for (size_t mis : {size_t{0}, sizeof(T) == 4 ? size_t{4} : size_t{8}}) {
      std::vector<T> a, b;
      makePairs(rng, len, a, b);
      for (auto* v : {&a, &b}) {
        const int n = static_cast<int>(len);
        const T want = ref(v->data(), n);
        Guarded<T> src(len, mis), dst(1, mis);
        src.assign(*v);
        ASSERT_EQ(exported(src.data(), dst.data(), n), qelStatusOk);
        ASSERT_TRUE(sameBits(dst[0], want)) << "len " << len << " got " << dst[0];
        dst.poison();
        kernel(src.data(), dst.data(), n);
        ASSERT_TRUE(sameBits(dst[0], want)) << "kernel len " << len;
        ASSERT_TRUE(dst.guardsIntact() && src.guardsIntact());
        kernel(src.data(), src.data(), n);
        ASSERT_TRUE(sameBits(src[0], want)) << "in place, len " << len;
      }
    }
}

TEST(LogSum, MatchesFoldReferenceForEveryLengthAlignmentAndInPlace) {
  checkLogSums<float>(qelsLogSum_32f, qelsLogSum_32f_M7, qtest::refLogSum32f, 31);
  checkLogSums<double>(qelsLogSum_64f, qelsLogSum_64f_M7, qtest::refLogSum64f, 33);
}

// ---------------------------------------------------------------- borders and special values

// The routines meet the edge pairs in the drivers above; here the reference
// itself is held to the conventions. On a border the lower segment's row runs
// with y = 0 (its last coefficient). The single cut-off is live when equal
// for a vector lane, ignored by the scalar step of the sums; one ulp below is
// ignored by both. The double cut-off is live when equal on both forms. NaN
// fails the live comparison and takes the log-zero path (a NaN accumulator
// stays NaN, a NaN incoming value leaves the accumulator's log-zero value);
// infinities take the same path; two log zeros are added, not clamped.
TEST(LogAddReference, BordersCutoffsAndSpecialValues) {
  EXPECT_TRUE(sameBits(qtest::refLogAdd32f(-2.55f, 0.0f), static_cast<float>(lr::kPF[1][10])));
  EXPECT_TRUE(sameBits(qtest::refLogAdd32f(-6.8f, 0.0f), static_cast<float>(lr::kPF[2][10])));
  for (int s : {1, 2}) {
    EXPECT_TRUE(sameBits(qtest::refLogAdd64f(lr::kBorder[s], 0.0), lr::kP[s][21]));
    EXPECT_TRUE(sameBits(qtest::refLogAddLane64f(lr::kBorder[s], 0.0), lr::kP[s][21]));
  }
  const float at = MINLOGEXP_F_SP, below = std::nextafter(at, -100.0f);
  EXPECT_GT(qtest::refLogAdd32f(at, 0.0f), 0.0f);
  EXPECT_TRUE(sameBits(qtest::refLogAddStep32f(at, 0.0f), 0.0f));
  EXPECT_TRUE(sameBits(qtest::refLogAdd32f(below, 0.0f), 0.0f));
  const double dat = MINLOGEXP, dbelow = std::nextafter(dat, -100.0);
  EXPECT_TRUE(qtest::refLogAdd64f(dat, 0.0) > 0.0 && qtest::refLogAddLane64f(dat, 0.0) > 0.0);
  EXPECT_TRUE(sameBits(qtest::refLogAdd64f(dbelow, 0.0), 0.0));
  EXPECT_TRUE(sameBits(qtest::refLogAddLane64f(dbelow, 0.0), 0.0));
  float s;  // and the library's sum takes the step: log-sum(0, cut-off) is 0
  const float x[2] = {0.0f, at};
  ASSERT_EQ(qelsLogSum_32f(x, &s, 2), qelStatusOk);
  EXPECT_TRUE(sameBits(s, 0.0f));

  const auto fe = edgePairs<float>();
  const float nan = std::numeric_limits<float>::quiet_NaN(), lzf = LOGZERO_F;
  const float fexp[12] = {
      1.0f, nan,   HUGE_VALF, 4.0f, lzf, 2.0f, lzf, nan, lzf + static_cast<float>(lr::kPF[0][10]),
      lzf,  -3.0f, lzf};
  for (int i = 0; i < 12; ++i)
    EXPECT_TRUE(sameBits(qtest::refLogAdd32f(fe[i].first, fe[i].second), fexp[i])) << i;
  const auto de = edgePairs<double>();
  const double dexp[12] = {
      1.0,     NAN,  HUGE_VAL, 4.0, LOGZERO, 2.0, LOGZERO, NAN, LOGZERO + lr::kP[0][21],
      LOGZERO, -3.0, -8.5e9};
  for (int i = 0; i < 12; ++i) {
    const double want = dexp[i], a = de[i].first, b = de[i].second;
    EXPECT_TRUE(std::isnan(want) ? std::isnan(qtest::refLogAdd64f(a, b))
                                 : sameBits(qtest::refLogAdd64f(a, b), want))
        << i;
    EXPECT_TRUE(std::isnan(want) ? std::isnan(qtest::refLogAddLane64f(a, b))
                                 : sameBits(qtest::refLogAddLane64f(a, b), want))
        << i;
  }
  double a = 0.0, b = 0.0;
  ASSERT_EQ(qelsLogAdd_64f(&a, &b, 1, 0), 0);
  EXPECT_NEAR(b, std::log(2.0), 3.2e-15 + 2.3e-16);
}

// ---------------------------------------------------------------- log-subtract

// The log-subtract of single data given d = y - x (formed by the caller):
// below -ln 4500000 the minuend, risen to log zero; 1 - exp(d) too small for
// a single logarithm gives log zero.
float refLogSub32f(float x, double d) {
  if (d < -15.3195879547406) return std::max(x, -4500000.0f);
  const double oneMinus = 1.0 - std::exp(d);
  return oneMinus <= 1.0057e-37 ? -4500000.0f : static_cast<float>(x + std::log(oneMinus));
}

TEST(LogSub, FloatFormsFollowTheFormulaAndCutoffs) {
  Rng rng(41);
  std::vector<float> x(300), y(300);
  std::vector<double> dx(300), dy(300);
  for (size_t i = 0; i < x.size(); ++i) {
    const bool far = i % 5 == 0;
    x[i] = rng.uniform(-50.0f, 10.0f);
    y[i] = x[i] - (far ? rng.uniform(15.0f, 40.0f) : rng.uniform(1e-6f, 15.3f));
    dx[i] = rng.uniformD(-50.0, 10.0);
    dy[i] = dx[i] - (far ? rng.uniformD(23.0, 40.0) : rng.uniformD(1e-9, 23.0));
  }
  // Ignored (minuend rises to log zero / below LOGSMALL), ignored (kept),
  // 1 - exp(d) rounds to 0, on the cut-off: computed.
  x[0] = -5e6f, y[0] = -6e6f, dx[0] = -9.5e9, dy[0] = -2e10;
  x[1] = 3.0f, y[1] = -20.0f, dx[1] = -8.5e9, dy[1] = -2e10;
  x[2] = 1e-30f, y[2] = std::nextafter(1e-30f, -1.0f), dx[2] = 1e-300;
  dy[2] = std::nextafter(1e-300, -1.0);
  x[3] = 0.0f, y[3] = MINLOGEXP_F_SP, dx[3] = 0.0, dy[3] = MINLOGEXP;
  Guarded<float> dst(x.size(), 4);
  Guarded<double> ddst(dx.size(), 8);
  dst.assign(y);
  ddst.assign(dy);
  ASSERT_EQ(qelsLogSub_32f(x.data(), dst.data(), 300), qelStatusOk);
  ASSERT_EQ(qelsLogSub_64f(dx.data(), ddst.data(), 300), qelStatusOk);
  EXPECT_TRUE(dst.guardsIntact() && ddst.guardsIntact());
  const float fixedF[3] = {-4500000.0f, 3.0f, -4500000.0f};
  const double fixedD[3] = {LOGZERO, -8.5e9, LOGZERO};
  for (int i = 0; i < 3; ++i) EXPECT_EQ(dst[i], fixedF[i]) << i;
  for (int i = 0; i < 3; ++i) EXPECT_EQ(ddst[i], fixedD[i]) << i;
  EXPECT_LT(dst[3], 0.0f);
  EXPECT_LT(ddst[3], 0.0);
  for (size_t i = 3; i < x.size(); ++i) {
    const float d = y[i] - x[i];
    ASSERT_TRUE(sameBits(dst[i], refLogSub32f(x[i], d))) << i;
    if (d >= MINLOGEXP_F_SP) {  // and it is the log of the difference
      const long double exact = x[i] + log1pl(-expl(static_cast<long double>(y[i]) - x[i]));
      ASSERT_LE(fabsl(dst[i] - exact), 1e-5L * std::max(1.0L, fabsl(exact))) << i;
    }
    const double dd = dy[i] - dx[i];
    ASSERT_TRUE(sameBits(ddst[i], dd < MINLOGEXP ? dx[i] : dx[i] + std::log(1.0 - std::exp(dd))));
  }
}

// ---------------------------------------------------------------- fixed point

template <typename T>
T truncSat(long double v) {
  if (v >= std::numeric_limits<T>::max()) return std::numeric_limits<T>::max();
  if (v <= std::numeric_limits<T>::min()) return std::numeric_limits<T>::min();
  return static_cast<T>(v);
}

// Log values as integers with sf fraction bits; large 32-bit values are kept
// on multiples of 128, exact in single.
template <typename T>
std::vector<T> fixedData(Rng& rng, size_t n, int sf, double lo = -40.0, double hi = 4.0) {
  std::vector<T> v(n);
  for (auto& e : v) {
    double raw = std::ldexp(rng.uniformD(lo, hi), sf);
    if (std::fabs(raw) >= 16777216.0) raw = std::round(raw / 128.0) * 128.0;
    e = static_cast<T>(std::clamp(raw, double(std::numeric_limits<T>::min()),
                                  double(std::numeric_limits<T>::max())));
  }
  return v;
}

// Models. Add: integers to single, times 2^-sf in single, the single lane
// log-add, back times 2^sf, truncated toward zero, saturated. Sum: up to 6
// elements a chain of the single rows in double with the running value held
// in single; longer, chunks of 128 through the single log-sum, each later
// chunk preceded by the running result.
template <typename T>
std::vector<T> modelLogAdd(const std::vector<T>& x, const std::vector<T>& y, int sf) {
  const float scale = std::ldexp(1.0f, -sf);
  std::vector<T> out(x.size());
  for (size_t i = 0; i < x.size(); ++i)
    out[i] = truncSat<T>(
        std::ldexp(static_cast<long double>(qtest::refLogAdd32f(static_cast<float>(x[i]) * scale,
                                                                static_cast<float>(y[i]) * scale)),
                   sf));
  return out;
}

template <typename T>
T modelLogSum(const std::vector<T>& x, int sf, bool chain) {
  const int len = static_cast<int>(x.size());
  if (len == 1) return x[0];
  const double scale = std::ldexp(1.0, -sf);
  float v = static_cast<float>(x[0] * scale);
  if (chain) {
    for (int i = 1; i < len; ++i)
      v = static_cast<float>(qtest::refLogAddSingleRowsInDouble(x[i] * scale, v));
  } else {
    std::vector<float> buf;
    for (int off = 0; off < len; off += 128) {
      buf.clear();
      if (off > 0) buf.push_back(v);
      for (int i = off; i < std::min(len, off + 128); ++i)
        buf.push_back(static_cast<float>(x[i]) * static_cast<float>(scale));
      v = qtest::refLogSum32f(buf.data(), static_cast<int>(buf.size()));
    }
  }
  return truncSat<T>(static_cast<long double>(v) / scale);
}

// Add, sum and subtract at every chunk and path length; the short lengths
// run many draws with values close together, so that the chain and the
// chunk model of the sum differ on some of them (`told` records that one
// did). The subtrahends lie 2^-10 to 20 below their minuends.
template <typename T>
void checkFixed(std::initializer_list<int> sfs, qelStatus (*add)(const T*, T*, int, int),
                qelStatus (*sum)(const T*, T*, int, int), qelStatus (*sub)(const T*, T*, int, int),
                uint32_t seed, bool& told) {
  Rng rng(seed);
  for (size_t len : {1, 2, 3, 5, 6, 7, 8, 127, 128, 129, 130, 255, 256, 257, 300})
    for (int sf : sfs)
      for (int rep = 0; rep < (len <= 7 ? 40 : 1); ++rep) {
        const auto x = fixedData<T>(rng, len, sf, len <= 7 ? -3.0 : -40.0);
        const auto y = fixedData<T>(rng, len, sf);
        const int n = static_cast<int>(len);
        Guarded<T> dst(len, sizeof(T)), one(1), diff(len, sizeof(T));  // off 16 bytes
        dst.assign(y);
        ASSERT_EQ(add(x.data(), dst.data(), n, sf), 0);
        ASSERT_TRUE(sameArrays(dst.data(), modelLogAdd(x, y, sf).data(), len))
            << "add len " << len << " sf " << sf;
        ASSERT_EQ(sum(x.data(), one.data(), n, sf), 0);
        const T want = modelLogSum(x, sf, len <= 6);
        ASSERT_EQ(one[0], want) << "sum len " << len << " sf " << sf;
        told = told || (len > 1 && len <= 7 && modelLogSum(x, sf, len > 6) != want);
        const float scale = std::ldexp(1.0f, -sf);
        std::vector<T> z(len), wantSub(len);
        for (size_t i = 0; i < len; ++i) {
          const double gap = std::max(1.0, std::round(std::ldexp(rng.uniformD(1e-3, 20.0), sf)));
          z[i] = static_cast<T>(std::max<double>(std::numeric_limits<T>::min(), x[i] - gap));
          const float xs = static_cast<float>(x[i]), zs = static_cast<float>(z[i]);
          const float r = refLogSub32f(xs * scale, (zs - xs) * scale);
          wantSub[i] = truncSat<T>(std::ldexp(static_cast<long double>(r), sf));
        }
        diff.assign(z);
        ASSERT_EQ(sub(x.data(), diff.data(), n, sf), 0);
        ASSERT_TRUE(sameArrays(diff.data(), wantSub.data(), len)) << "sub len " << len;
        ASSERT_TRUE(dst.guardsIntact() && one.guardsIntact() && diff.guardsIntact());
      }
}

TEST(LogFixed, AddSumAndSubMatchModelsAcrossPathsAndChunks) {
  bool told = false;
  checkFixed<qel16s>({0, 4, -2, 9}, qelsLogAdd_16s_Sfs, qelsLogSum_16s_Sfs, qelsLogSub_16s_Sfs, 51,
                     told);
  // 32-bit values with 24 fraction bits: every bit of the single result shows.
  checkFixed<qel32s>({24, 0, 12}, qelsLogAdd_32s_Sfs, qelsLogSum_32s_Sfs, qelsLogSub_32s_Sfs, 52,
                     told);
  EXPECT_TRUE(told) << "no short sum told the chain from the chunk model";
}

// Saturation at both ends, the log-zero floor, and a single element copied.
TEST(LogFixed, SaturationAndEdgeCases) {
  qel32s big[3] = {INT32_MAX, INT32_MIN, INT32_MIN}, acc[3] = {INT32_MAX, -100000000, INT32_MIN};
  ASSERT_EQ(qelsLogAdd_32s_Sfs(big, acc, 3, 0), 0);
  EXPECT_EQ(acc[0], INT32_MAX);                      // 2^31 + ln 2 saturates
  EXPECT_EQ(acc[1], static_cast<qel32s>(-4500000));  // ignored, rises to log zero
  EXPECT_EQ(acc[2], INT32_MIN);                      // equal: added, not clamped
  qel16s r = 99, one = -1234;
  ASSERT_EQ(qelsLogSum_16s_Sfs(&one, &r, 1, 7), 0);
  EXPECT_EQ(r, -1234);  // copied unchanged, no scaling
  std::vector<qel16s> top(300, 32767);
  ASSERT_EQ(qelsLogSum_16s_Sfs(top.data(), &r, 300, 0), 0);
  EXPECT_EQ(r, 32767);  // 32767 + ln 300 saturates
  std::vector<qel32s> wtop(129, INT32_MAX);
  qel32s w = 0;
  ASSERT_EQ(qelsLogSum_32s_Sfs(wtop.data(), &w, 129, 0), 0);
  EXPECT_EQ(w, INT32_MAX);
  qel16s neg[3] = {-30000, -32768, -31000};  // truncates, no saturation
  ASSERT_EQ(qelsLogSum_16s_Sfs(neg, &r, 3, 0), 0);
  EXPECT_EQ(r, -30000);
  qel16s sx = -32768 + 1, sy = -32768;  // log(1 - exp(-2^-20)) = -13.86, times 2^20 saturates
  ASSERT_EQ(qelsLogSub_16s_Sfs(&sx, &sy, 1, 20), 0);
  EXPECT_EQ(sy, -32768);
  qel32s wx[2] = {1000, 5}, wy[2] = {-1000, 4};  // d = -2000 ignored; 5 + log(1 - 1/e) = 4.54
  ASSERT_EQ(qelsLogSub_32s_Sfs(wx, wy, 2, 0), 0);
  EXPECT_EQ(wy[0], 1000);
  EXPECT_EQ(wy[1], 4);
}

// ---------------------------------------------------------------- checks

// Buffers of every type; src holds -1 and dst -3 so that every call succeeds.
struct Bufs {
  static constexpr int kLen = 300;
  Guarded<float> f{kLen};
  Guarded<double> d{kLen};
  Guarded<qel16s> s{kLen};
  Guarded<qel32s> w{kLen};
  void fill(int v) {
    for (int i = 0; i < kLen; ++i) f[i] = float(v), d[i] = v, s[i] = qel16s(v), w[i] = v;
  }
  bool untouched() const {
    return f.untouched() && d.untouched() && s.untouched() && w.untouched();
  }
};
template <typename T>
T* orNull(bool null, Guarded<T>& g) {
  return null ? nullptr : g.data();
}
using Call = qelStatus (*)(Bufs& src, Bufs& dst, bool nullSrc, bool nullDst, int len);
#define CALL(f, buf, ...)                                                   \
  {                                                                         \
#f, [](Bufs& a, Bufs& b, bool ns, bool nd, int len) {                     \
     return f(orNull(ns, a.buf), orNull(nd, b.buf), len __VA_OPT__(, ) __VA_ARGS__); \
   } \
  }
const struct {
  const char* name;
  Call call;
} kCalls[] = {
    CALL(qelsLogAdd_32f, f),        CALL(qelsLogAdd_64f, d, 0),     CALL(qelsLogAdd_64f, d, 3),
    CALL(qelsLogAdd_16s_Sfs, s, 0), CALL(qelsLogAdd_32s_Sfs, w, 1), CALL(qelsLogSum_32f, f),
    CALL(qelsLogSum_64f, d),        CALL(qelsLogSum_16s_Sfs, s, 1), CALL(qelsLogSum_32s_Sfs, w, 0),
    CALL(qelsLogSub_32f, f),        CALL(qelsLogSub_64f, d),        CALL(qelsLogSub_16s_Sfs, s, 1),
    CALL(qelsLogSub_32s_Sfs, w, 0)};

// Length first, then pointers, for every routine (two faults at once: the
// length decides); nothing written.
TEST(LogDomainChecks, LengthBeforeNullAndNothingWritten) {
  const struct {
    bool nullSrc, nullDst;
    int len;
    qelStatus want;
  } faults[] = {{true, true, 0, qelStatusSize},
                {false, false, -1, qelStatusSize},
                {true, false, 0, qelStatusSize},
                {true, false, 4, qelStatusNullPtr},
                {false, true, 4, qelStatusNullPtr}};
  for (const auto& c : kCalls)
    for (const auto& f : faults) {
      Bufs src, dst;
      EXPECT_EQ(c.call(src, dst, f.nullSrc, f.nullDst, f.len), f.want) << c.name << " " << f.len;
      EXPECT_TRUE(dst.untouched()) << c.name;
    }
  // An unknown hint of the double log-add is looked at after the checks: it
  // succeeds and writes nothing.
  const double src[4] = {0, 0, 0, 0};
  Guarded<double> d(4);
  for (int hint : {3, -1, 100}) {
    EXPECT_EQ(qelsLogAdd_64f(src, d.data(), 4, hint), qelStatusOk);
    EXPECT_TRUE(d.untouched()) << hint;
  }
}

// The log-subtracts look at every element before writing: one subtrahend
// not below its minuend (equal, above, NaN) anywhere fails the call.
TEST(LogDomainChecks, AnySubtrahendNotBelowFailsBeforeAnyWrite) {
  const int len = 37;
  for (int bad : {0, 17, len - 1})
    for (int how : {0, 1, 2}) {
      Guarded<float> f(len);
      Guarded<double> d(len);
      Guarded<qel16s> s(len);
      Guarded<qel32s> w(len);
      // Minuends far above the canary values, except the bad one.
      std::vector<float> fx(len, 1e30f);
      std::vector<double> dx(len, 1e300);
      std::vector<qel16s> sx(len, 32767);
      std::vector<qel32s> wx(len, INT32_MAX);
      fx[bad] = how == 0 ? f[bad] : how == 1 ? f[bad] - 1.0f : std::nanf("");
      dx[bad] = how == 0 ? d[bad] : how == 1 ? d[bad] - 1.0 : std::nan("");
      sx[bad] = how == 1 ? static_cast<qel16s>(s[bad] - 1) : s[bad];
      wx[bad] = how == 1 ? w[bad] - 1 : w[bad];
      EXPECT_EQ(qelsLogSub_32f(fx.data(), f.data(), len), qelStatusRange);
      EXPECT_EQ(qelsLogSub_64f(dx.data(), d.data(), len), qelStatusRange);
      EXPECT_EQ(qelsLogSub_16s_Sfs(sx.data(), s.data(), len, 0), qelStatusRange);
      EXPECT_EQ(qelsLogSub_32s_Sfs(wx.data(), w.data(), len, 3), qelStatusRange);
      EXPECT_TRUE(f.untouched() && d.untouched() && s.untouched() && w.untouched())
          << "bad " << bad << " how " << how;
    }
}

// Nothing here allocates: every call succeeds with an allocator that fails
// at once, and no block is left.
TEST(LogDomainChecks, NoCallAllocates) {
  qtest::FailingAllocator failing(0);
  Bufs src, dst;
  src.fill(-1);
  for (const auto& c : kCalls) {
    dst.fill(-3);
    EXPECT_EQ(c.call(src, dst, false, false, Bufs::kLen), qelStatusOk) << c.name;
  }
  EXPECT_TRUE(failing.nothingLeaked());
}

}  // namespace
