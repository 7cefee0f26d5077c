// Log-add, log-sum and log-subtract: coefficient rows against the exact
// function, the scalar references against the exact function, the vector
// routines and exported primitives bit for bit against the references for
// every length class and alignment, borders, special values, fixed-point
// forms with their chunks and saturation, argument checks.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
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

// ---------------------------------------------------------------- helpers

// The exact function in extended precision: max + log1p(exp(-|d|)). Long
// double (64-bit significand) keeps its own error near 1e-19, far below the
// bounds under test.
long double exactLogAdd(long double a, long double b) {
  const long double m = std::max(a, b);
  return m + log1pl(expl(-fabsl(a - b)));
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

// Pairs (a incoming, b accumulator) that visit every segment, both sides of
// every cut-off, equal values, log zero and values below it.
template <typename T>
void makePairs(Rng& rng, size_t n, std::vector<T>& a, std::vector<T>& b) {
  const bool single = sizeof(T) == 4;
  const double span = single ? 18.0 : 26.0;
  const T lz = single ? T(-4500000.0) : T(-1.0e10);
  a.resize(n);
  b.resize(n);
  for (size_t i = 0; i < n; ++i) {
    const T base = static_cast<T>(rng.uniformD(-60.0, 10.0));
    const int kind = rng.integer(0, 19);
    T other;
    if (kind < 12)
      other = static_cast<T>(base + rng.uniformD(-span, span));
    else if (kind == 12)
      other = base;
    else if (kind == 13)
      other = static_cast<T>(base + rng.uniformD(-1e4, 1e4));
    else if (kind == 14)
      other = lz;
    else if (kind == 15)
      other = static_cast<T>(lz * rng.uniformD(1.0, 3.0));
    else if (kind == 16)
      other = static_cast<T>(base - (single ? 2.55 : 3.5));
    else if (kind == 17)
      other = static_cast<T>(base - (single ? 6.8 : 9.0));
    else if (kind == 18)
      other = static_cast<T>(base + (single ? 15.3195879547406 : 23.0258509299405));
    else
      other = static_cast<T>(base - rng.uniformD(0.0, 1.0));
    if (rng.integer(0, 1))
      a[i] = base, b[i] = other;
    else
      a[i] = other, b[i] = base;
  }
}

const size_t kLengths[] = {1,  2,  3,  4,  5,  6,  7,  8,  9,  11,  12,  15,  16,  17,   19,
                           24, 31, 32, 33, 47, 48, 63, 64, 65, 100, 127, 128, 129, 1000, 4099};

// ---------------------------------------------------------------- tables

TEST(LogAddTables, RowsAreTheStoredCoefficients) {
  const qel64f *p1, *p2, *p3;
  GetLogAddConst(&p1, &p2, &p3);
  const qel64f* rows[3] = {p1, p2, p3};
  for (int s = 0; s < 3; ++s) EXPECT_TRUE(sameArrays(rows[s], lr::kP[s], 22)) << "row " << s;
  GetLogAddConst_F(&p1, &p2, &p3);
  const qel64f* rowsF[3] = {p1, p2, p3};
  for (int s = 0; s < 3; ++s) EXPECT_TRUE(sameArrays(rowsF[s], lr::kPF[s], 11)) << "row " << s;
}

TEST(LogAddTables, LaneTablesGiveEveryLaneItsSegment) {
  for (int m2 = 0; m2 < 16; ++m2)
    for (int m3 = 0; m3 < 16; ++m3) {
      if (m2 & m3) continue;
      const int idx = m2 * 16 + m3;
      ASSERT_EQ(Biasing_F[idx] % 16, 0);
      const qel32f* c = P_F.data() + Biasing_F[idx] / 4;
      for (int l = 0; l < 4; ++l) {
        const int seg = (m3 >> l & 1) ? 2 : (m2 >> l & 1) ? 1 : 0;
        EXPECT_TRUE(sameBits(INT_S_F[idx * 4 + l], static_cast<float>(lr::kBorderF[seg])));
        for (int k = 0; k < 11; ++k)
          ASSERT_TRUE(sameBits(c[4 * k + l], static_cast<float>(lr::kPF[seg][k])))
              << "m2 " << m2 << " m3 " << m3 << " lane " << l << " k " << k;
      }
    }
  for (int m2 = 0; m2 < 4; ++m2)
    for (int m3 = 0; m3 < 4; ++m3) {
      if (m2 & m3) continue;
      const int idx = m2 * 4 + m3;
      ASSERT_EQ(Biasing_D[idx] % 16, 0);
      const qel64f* c = P_D.data() + Biasing_D[idx] / 8;
      for (int l = 0; l < 2; ++l) {
        const int seg = (m3 >> l & 1) ? 2 : (m2 >> l & 1) ? 1 : 0;
        EXPECT_TRUE(sameBits(INT_S_D[idx * 2 + l], lr::kBorder[seg]));
        for (int k = 0; k < 22; ++k) ASSERT_TRUE(sameBits(c[2 * k + l], lr::kP[seg][k]));
      }
    }
}

TEST(LogAddTables, ConstantsAreTheLogZeroConventions) {
  EXPECT_EQ(LOGZERO, -1.0e10);
  EXPECT_EQ(LOGSMALL, -9.0e9);
  EXPECT_EQ(LOGZERO_F, -4500000.0f);
  EXPECT_EQ(LOGSMALL_F, LOGZERO_F);
  EXPECT_EQ(std::bit_cast<uint32_t>(MINLOGEXP_F_SP), 0xC1751D08u);
  EXPECT_NEAR(MINLOGEXP, std::log(1e-10), 1e-13);
  EXPECT_NEAR(MINLOGEXP_F, -std::log(4500000.0), 1e-13);
}

// ---------------------------------------------------------------- accuracy

// Each row, evaluated exactly (long double), stays within the stated bound
// of log(1 + exp(d)) over its segment: 3.2e-15 for the double rows and
// 4.6e-9 for the single rows (with their double coefficients).
TEST(LogAddAccuracy, RowsWithinStatedBoundOverTheirSegments) {
  const double lo[3] = {-3.5, -9.0, MINLOGEXP}, hi[3] = {0.0, -3.5, -9.0};
  const double loF[3] = {-2.55, -6.8, MINLOGEXP_F}, hiF[3] = {0.0, -2.55, -6.8};
  const int steps = 100000;
  for (int s = 0; s < 3; ++s) {
    long double worst = 0, worstF = 0;
    for (int i = 0; i <= steps; ++i) {
      const long double d = lo[s] + (hi[s] - lo[s]) * static_cast<long double>(i) / steps;
      long double p = lr::kP[s][0];
      for (int k = 1; k < 22; ++k) p = p * (d - lr::kBorder[s]) + lr::kP[s][k];
      worst = std::max(worst, fabsl(p - log1pl(expl(d))));
      const long double dF = loF[s] + (hiF[s] - loF[s]) * static_cast<long double>(i) / steps;
      long double q = lr::kPF[s][0];
      for (int k = 1; k < 11; ++k) q = q * (dF - lr::kBorderF[s]) + lr::kPF[s][k];
      worstF = std::max(worstF, fabsl(q - log1pl(expl(dF))));
    }
    EXPECT_LE(worst, 3.2e-15L) << "double row " << s;
    EXPECT_LE(worstF, 4.6e-9L) << "single row " << s;
  }
}

// The double references against the exact log-add. Bound: the row's 3.2e-15
// plus the rounding of the evaluation, bounded by gamma * sum|c_k||y|^k with
// gamma = 44u for the 21-step Horner chain (two roundings a step, one more
// for the constant) and 66u for the two chains in y*y (the rounding of y*y
// is raised to the tenth power), plus the two roundings of the final
// additions at the result's magnitude and that of d = smaller - greater.
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
    // Two additions at the magnitude of the result (m + c[21] or m + odd*y,
    // then the rest) round by at most u|value| each; d itself is rounded
    // (half an ulp, times a slope of at most 1/2).
    const long double half = 2 * kU64 * (fabsl(exact) + 1) + 0.5L * kU64 * fabsl(dd);
    const double gotS = qtest::refLogAdd64f(a, b), gotL = qtest::refLogAddLane64f(a, b);
    ASSERT_LE(fabsl(gotS - exact), 3.2e-15L + 44 * kU64 * scale + half) << a << " " << b;
    ASSERT_LE(fabsl(gotL - exact), 3.2e-15L + 66 * kU64 * scale + half) << a << " " << b;
  }
}

// The single references against the exact log-add. Bound: the row's 4.6e-9,
// plus single rounding: the coefficients rounded to single (u * scale), the
// 10-step Horner chain in single (22u * scale), the border held as a single
// (|s - single(s)| times the slope of f, at most 1/2), the rounding of
// y = d - s and of d itself (u|y|/2, u|d|/2), and half an ulp of the result. The step of the short
// integer sums (single rows in double) gets the double evaluation terms.
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
    const long double scale = termScale(lr::kPF[s], 11, y);
    const long double exact = exactLogAdd(a, b);
    const long double bound = 4.6e-9L + 23 * kU32 * scale +
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

using Vec32Fn = void (*)(const qel32f*, qel32f*, qel64s);

TEST(LogAddVector32f, MatchesLaneReferenceForEveryLengthAndAlignment) {
  const struct {
    const char* name;
    Vec32Fn fn;
  } routines[] = {{"M7_sp", qelsLogAddVec_32f_M7_sp}, {"U8_sp", qelsLogAddVec_32f_U8_sp}};
  Rng rng(21);
  for (size_t len : kLengths)
    for (size_t misSrc : {0, 4})
      for (size_t misDst : {0, 8}) {
        std::vector<float> a, b;
        makePairs(rng, len, a, b);
        std::vector<float> want = b;
        qtest::refLogAddVec32f(a.data(), want.data(), len);
        for (auto& r : routines) {
          Guarded<float> src(len, misSrc), dst(len, misDst);
          src.assign(a);
          dst.assign(b);
          r.fn(src.data(), dst.data(), static_cast<qel64s>(len));
          ASSERT_TRUE(sameArrays(dst.data(), want.data(), len)) << r.name << " len " << len;
          ASSERT_TRUE(dst.guardsIntact() && src.guardsIntact()) << r.name << " len " << len;
          ASSERT_TRUE(sameArrays(src.data(), a.data(), len));
        }
        Guarded<float> src(len, misSrc), dst(len, misDst);
        src.assign(a);
        dst.assign(b);
        ASSERT_EQ(qelsLogAdd_32f(src.data(), dst.data(), static_cast<int>(len)), qelStatusOk);
        ASSERT_TRUE(sameArrays(dst.data(), want.data(), len)) << "qelsLogAdd_32f len " << len;
        ASSERT_TRUE(dst.guardsIntact());
      }
}

TEST(LogAddVector64f, MatchesReferencesForEveryLengthAndAlignment) {
  Rng rng(22);
  for (size_t len : kLengths)
    for (size_t misSrc : {0, 8})
      for (size_t misDst : {0, 8}) {
        std::vector<double> a, b;
        makePairs(rng, len, a, b);
        std::vector<double> wantVec = b, wantScalar = b;
        qtest::refLogAddVec64f(a.data(), wantVec.data(), len);
        for (size_t i = 0; i < len; ++i) wantScalar[i] = qtest::refLogAdd64f(a[i], b[i]);
        Guarded<double> src(len, misSrc), dst(len, misDst);
        src.assign(a);
        dst.assign(b);
        qelsLogAddVec_64f_M7(src.data(), dst.data(), static_cast<qel64s>(len));
        ASSERT_TRUE(sameArrays(dst.data(), wantVec.data(), len)) << "vector len " << len;
        ASSERT_TRUE(dst.guardsIntact() && src.guardsIntact());
        for (int hint : {0, 1, 2}) {
          dst.assign(b);
          ASSERT_EQ(qelsLogAdd_64f(src.data(), dst.data(), static_cast<int>(len), hint), 0);
          ASSERT_TRUE(sameArrays(dst.data(), wantScalar.data(), len)) << "len " << len;
          ASSERT_TRUE(dst.guardsIntact());
        }
      }
}

// The two double forms are different evaluation orders of the same row; on
// these data they must disagree somewhere, or the lanes are not the two
// chains they claim to be.
TEST(LogAddVector64f, LanesAndScalarFormAreDistinctOrders) {
  Rng rng(23);
  std::vector<double> a(4096), b(4096);
  for (size_t i = 0; i < a.size(); ++i)
    b[i] = rng.uniformD(-5, 5), a[i] = b[i] + rng.uniformD(-20, 0);
  std::vector<double> vec = b;
  qelsLogAddVec_64f_M7(a.data(), vec.data(), 4096);
  int differ = 0;
  for (size_t i = 0; i < a.size(); ++i)
    differ += !sameBits(vec[i], qtest::refLogAdd64f(a[i], b[i]));
  EXPECT_GT(differ, 0);
}

TEST(LogSum, MatchesFoldReferenceForEveryLengthAndAlignment) {
  Rng rng(31);
  std::vector<size_t> lens(kLengths, kLengths + std::size(kLengths));
  for (size_t l = 1; l <= 40; ++l) lens.push_back(l);
  for (size_t len : lens)
    for (size_t mis : {0, 4, 8}) {
      std::vector<float> a, b;
      makePairs(rng, len, a, b);
      for (auto* v : {&a, &b}) {
        Guarded<float> src(len, mis);
        Guarded<float> dst(1, mis);
        src.assign(*v);
        const float want = qtest::refLogSum32f(v->data(), static_cast<int>(len));
        ASSERT_EQ(qelsLogSum_32f(src.data(), dst.data(), static_cast<int>(len)), qelStatusOk);
        ASSERT_TRUE(sameBits(dst[0], want))
            << "len " << len << " got " << dst[0] << " want " << want;
        dst.poison();
        qelsLogSum_32f_M7(src.data(), dst.data(), static_cast<int>(len));
        ASSERT_TRUE(sameBits(dst[0], want)) << "M7 len " << len;
        ASSERT_TRUE(dst.guardsIntact() && src.guardsIntact());
      }
      std::vector<double> da, db;
      makePairs(rng, len, da, db);
      const size_t misD = mis == 4 ? 8 : mis;  // a double stays 8-byte aligned
      for (auto* v : {&da, &db}) {
        Guarded<double> src(len, misD);
        Guarded<double> dst(1, misD);
        src.assign(*v);
        const double want = qtest::refLogSum64f(v->data(), static_cast<int>(len));
        ASSERT_EQ(qelsLogSum_64f(src.data(), dst.data(), static_cast<int>(len)), qelStatusOk);
        ASSERT_TRUE(sameBits(dst[0], want)) << "len " << len;
        dst.poison();
        qelsLogSum_64f_M7(src.data(), dst.data(), static_cast<int>(len));
        ASSERT_TRUE(sameBits(dst[0], want)) << "M7 len " << len;
        ASSERT_TRUE(dst.guardsIntact() && src.guardsIntact());
      }
    }
}

// The sums write their result once, after reading: it may land in pSrc[0].
TEST(LogSum, ResultMayOverwriteTheFirstSource) {
  Rng rng(33);
  for (int len : {1, 2, 7, 8, 13, 130}) {
    std::vector<float> a, b;
    makePairs(rng, len, a, b);
    const float want = qtest::refLogSum32f(a.data(), len);
    qelsLogSum_32f_M7(a.data(), a.data(), len);
    EXPECT_TRUE(sameBits(a[0], want)) << len;
    std::vector<double> da, db;
    makePairs(rng, len, da, db);
    const double wantD = qtest::refLogSum64f(da.data(), len);
    qelsLogSum_64f_M7(da.data(), da.data(), len);
    EXPECT_TRUE(sameBits(da[0], wantD)) << len;
  }
}

// Lengths 7 (sequential) and 8 (lanes) both approximate the exact log-sum
// to within the single log-add error of each of their len - 1 steps.
TEST(LogSum, ShortAndLaneFormsAgreeWithExactSum) {
  Rng rng(32);
  for (int len : {7, 8}) {
    for (int rep = 0; rep < 2000; ++rep) {
      std::vector<float> v(len);
      for (auto& x : v) x = rng.uniform(-12.0f, 0.0f);
      long double exact = v[0];
      for (int i = 1; i < len; ++i) exact = exactLogAdd(exact, v[i]);
      float got;
      ASSERT_EQ(qelsLogSum_32f(v.data(), &got, len), qelStatusOk);
      // Each step: up to 2e-7 of polynomial in single (see the single bound)
      // plus half an ulp of a result below 8 (4.8e-7).
      EXPECT_LE(fabsl(got - exact), (len - 1) * 7e-7L) << "len " << len;
    }
  }
}

// ---------------------------------------------------------------- borders

TEST(LogAddBorders, SegmentBordersAndCutoffOneUlpEitherSide) {
  std::vector<float> ds;
  for (float border : {-2.55f, -6.8f, MINLOGEXP_F_SP})
    for (float d : {std::nextafter(border, 0.0f), border, std::nextafter(border, -100.0f)})
      ds.push_back(d);
  // Incoming d against an accumulator 0 and, in the other lanes, mixed.
  std::vector<float> a, b;
  for (float d : ds) {
    a.push_back(d), b.push_back(0.0f);
    a.push_back(0.0f), b.push_back(d);
    a.push_back(7.0f + d), b.push_back(7.0f);
  }
  std::vector<float> want = b, got = b;
  qtest::refLogAddVec32f(a.data(), want.data(), a.size());
  qelsLogAddVec_32f_M7_sp(a.data(), got.data(), static_cast<qel64s>(a.size()));
  EXPECT_TRUE(sameArrays(got.data(), want.data(), a.size()));
  got = b;
  qelsLogAddVec_32f_U8_sp(a.data(), got.data(), static_cast<qel64s>(a.size()));
  EXPECT_TRUE(sameArrays(got.data(), want.data(), a.size()));

  // On a border the lower segment's row runs with y = 0: its last coefficient.
  EXPECT_TRUE(sameBits(qtest::refLogAdd32f(-2.55f, 0.0f), static_cast<float>(lr::kPF[1][10])));
  EXPECT_TRUE(sameBits(qtest::refLogAdd32f(-6.8f, 0.0f), static_cast<float>(lr::kPF[2][10])));
  EXPECT_TRUE(sameBits(qtest::refLogAdd64f(-3.5, 0.0), lr::kP[1][21]));
  EXPECT_TRUE(sameBits(qtest::refLogAdd64f(-9.0, 0.0), lr::kP[2][21]));
  EXPECT_TRUE(sameBits(qtest::refLogAddLane64f(-3.5, 0.0), lr::kP[1][21]));
  EXPECT_TRUE(sameBits(qtest::refLogAddLane64f(-9.0, 0.0), lr::kP[2][21]));

  // The cut-off: equal is live for a vector lane, ignored by the scalar step
  // of the sum; one ulp below is ignored by both.
  const float at = MINLOGEXP_F_SP, below = std::nextafter(at, -100.0f);
  float x[2] = {0.0f, at}, y[2] = {0.0f, at}, s;
  qelsLogAdd_32f(x, y + 1, 1);  // log-add(0, border)
  EXPECT_GT(y[1], 0.0f);
  ASSERT_EQ(qelsLogSum_32f(x, &s, 2), qelStatusOk);
  EXPECT_TRUE(sameBits(s, 0.0f));
  x[1] = below;
  y[1] = below;
  qelsLogAdd_32f(x, y + 1, 1);
  EXPECT_TRUE(sameBits(y[1], 0.0f));

  // Double: the cut-off at MINLOGEXP is live when equal, on both forms.
  for (double d : {std::nextafter(MINLOGEXP, 0.0), MINLOGEXP, std::nextafter(MINLOGEXP, -100.0),
                   std::nextafter(-3.5, 0.0), -3.5, std::nextafter(-3.5, -100.0),
                   std::nextafter(-9.0, 0.0), -9.0, std::nextafter(-9.0, -100.0)}) {
    double src[2] = {d, d}, dst[2] = {0.0, 0.0}, one = 0.0;
    qelsLogAddVec_64f_M7(src, dst, 2);
    EXPECT_TRUE(sameBits(dst[0], qtest::refLogAddLane64f(d, 0.0))) << d;
    ASSERT_EQ(qelsLogAdd_64f(src, &one, 1, 0), 0);
    EXPECT_TRUE(sameBits(one, qtest::refLogAdd64f(d, 0.0))) << d;
    if (d >= MINLOGEXP)
      EXPECT_GT(one, 0.0) << d;
    else
      EXPECT_TRUE(sameBits(one, 0.0)) << d;
  }
}

// ---------------------------------------------------------------- special values

TEST(LogAddSpecialValues, LogZeroConventionsAndDocumentedCases) {
  double a = 0.0, b = 0.0;
  ASSERT_EQ(qelsLogAdd_64f(&a, &b, 1, 0), 0);
  EXPECT_NEAR(b, std::log(2.0), 3.2e-15 + 2.3e-16);

  a = -1e10, b = -2e10;
  qelsLogAdd_64f(&a, &b, 1, 1);
  EXPECT_EQ(b, LOGZERO);
  a = -100, b = -200;
  qelsLogAdd_64f(&a, &b, 1, 2);
  EXPECT_EQ(b, -100.0);
  a = LOGZERO, b = LOGZERO;  // two log zeros are added, not clamped
  qelsLogAdd_64f(&a, &b, 1, 0);
  EXPECT_EQ(b, LOGZERO + lr::kP[0][21]);
  a = -9.5e9, b = -8.5e9;  // d ignored, m above LOGSMALL stays
  qelsLogAdd_64f(&a, &b, 1, 0);
  EXPECT_EQ(b, -8.5e9);

  float fa[4] = {-100.0f, -5000000.0f, LOGZERO_F, -3.0f};
  float fb[4] = {-200.0f, -6000000.0f, LOGZERO_F, -4500010.0f};
  ASSERT_EQ(qelsLogAdd_32f(fa, fb, 4), 0);
  EXPECT_EQ(fb[0], -100.0f);
  EXPECT_EQ(fb[1], -4500000.0f);  // below log zero rises to it
  EXPECT_EQ(fb[2], LOGZERO_F + static_cast<float>(lr::kPF[0][10]));
  EXPECT_EQ(fb[3], -3.0f);
}

// NaN fails the live comparison and takes the log-zero path: a NaN
// accumulator stays NaN, a NaN incoming value leaves the accumulator's
// log-zero value. Infinities take the same path.
TEST(LogAddSpecialValues, NaNAndInfinityTakeTheDeadLanePath) {
  const float nan = std::numeric_limits<float>::quiet_NaN();
  const float inf = std::numeric_limits<float>::infinity();
  float a[8] = {nan, 1.0f, inf, -inf, -inf, 2.0f, nan, -6e6f};
  float b[8] = {1.0f, nan, 3.0f, 4.0f, -inf, -inf, -6e6f, nan};
  float want[8];
  for (int i = 0; i < 8; ++i) want[i] = qtest::refLogAdd32f(a[i], b[i]);
  const float expect[8] = {1.0f, nan, inf, 4.0f, LOGZERO_F, 2.0f, LOGZERO_F, nan};
  EXPECT_TRUE(sameArrays(want, expect, 8));
  for (int n : {8, 7, 3}) {
    float got[8];
    std::copy(b, b + 8, got);
    qelsLogAddVec_32f_M7_sp(a, got, n);
    EXPECT_TRUE(sameArrays(got, expect, n)) << n;
    std::copy(b, b + 8, got);
    qelsLogAdd_32f(a, got, n);
    EXPECT_TRUE(sameArrays(got, expect, n)) << n;
  }
  const double dnan = std::numeric_limits<double>::quiet_NaN();
  double da[4] = {dnan, 1.0, HUGE_VAL, -HUGE_VAL};
  double db[4] = {1.0, dnan, 3.0, -HUGE_VAL};
  const double dexp[4] = {1.0, dnan, HUGE_VAL, LOGZERO};
  double got[4];
  std::copy(db, db + 4, got);
  qelsLogAddVec_64f_M7(da, got, 4);
  EXPECT_TRUE(sameArrays(got, dexp, 4));
  std::copy(db, db + 4, got);
  qelsLogAdd_64f(da, got, 4, 0);
  EXPECT_TRUE(sameArrays(got, dexp, 4));
}

// ---------------------------------------------------------------- log-subtract

TEST(LogSub, FloatFormsFollowTheFormulaAndCutoffs) {
  Rng rng(41);
  std::vector<float> x(300), y(300);
  for (size_t i = 0; i < x.size(); ++i) {
    x[i] = rng.uniform(-50.0f, 10.0f);
    y[i] = x[i] - (i % 5 == 0 ? rng.uniform(15.0f, 40.0f) : rng.uniform(1e-6f, 15.3f));
  }
  x[0] = -5e6f, y[0] = -6e6f;                           // ignored, minuend rises to log zero
  x[1] = 3.0f, y[1] = -20.0f;                           // ignored
  x[2] = 1e-30f, y[2] = std::nextafter(1e-30f, -1.0f);  // exp(d) rounds to 1
  x[3] = 0.0f, y[3] = MINLOGEXP_F_SP;                   // on the cut-off: computed
  Guarded<float> dst(x.size(), 4);
  dst.assign(y);
  ASSERT_EQ(qelsLogSub_32f(x.data(), dst.data(), static_cast<int>(x.size())), qelStatusOk);
  EXPECT_EQ(dst[0], -4500000.0f);
  EXPECT_EQ(dst[1], 3.0f);
  EXPECT_EQ(dst[2], -4500000.0f);
  EXPECT_LT(dst[3], 0.0f);
  for (size_t i = 3; i < x.size(); ++i) {
    const float d = y[i] - x[i];
    float want;
    if (static_cast<double>(d) < -15.3195879547406)
      want = std::max(x[i], -4500000.0f);
    else
      want = static_cast<float>(x[i] + std::log(1.0 - std::exp(static_cast<double>(d))));
    ASSERT_TRUE(sameBits(dst[i], want)) << i;
    if (d >= MINLOGEXP_F_SP) {  // and it is the log of the difference
      const long double exact = x[i] + log1pl(-expl(static_cast<long double>(y[i]) - x[i]));
      ASSERT_LE(fabsl(dst[i] - exact), 1e-5L * std::max(1.0L, fabsl(exact))) << i;
    }
  }
  EXPECT_TRUE(dst.guardsIntact());

  std::vector<double> dx(300), dy(300);
  for (size_t i = 0; i < dx.size(); ++i) {
    dx[i] = rng.uniformD(-50.0, 10.0);
    dy[i] = dx[i] - (i % 5 == 0 ? rng.uniformD(23.0, 40.0) : rng.uniformD(1e-9, 23.0));
  }
  dx[0] = -9.5e9, dy[0] = -2e10;                         // ignored, minuend below LOGSMALL
  dx[1] = -8.5e9, dy[1] = -2e10;                         // ignored, minuend kept
  dx[2] = 1e-300, dy[2] = std::nextafter(1e-300, -1.0);  // 1 - exp(d) is 0
  dx[3] = 0.0, dy[3] = MINLOGEXP;                        // on the cut-off: computed
  Guarded<double> ddst(dx.size(), 8);
  ddst.assign(dy);
  ASSERT_EQ(qelsLogSub_64f(dx.data(), ddst.data(), 300), qelStatusOk);
  EXPECT_EQ(ddst[0], LOGZERO);
  EXPECT_EQ(ddst[1], -8.5e9);
  EXPECT_EQ(ddst[2], LOGZERO);
  EXPECT_LT(ddst[3], 0.0);
  for (size_t i = 3; i < dx.size(); ++i) {
    const double d = dy[i] - dx[i];
    const double want = d < MINLOGEXP ? dx[i] : dx[i] + std::log(1.0 - std::exp(d));
    ASSERT_TRUE(sameBits(ddst[i], want)) << i;
  }
}

TEST(LogSub, AnyElementNotBelowItsMinuendFailsBeforeAnyWrite) {
  const int len = 37;
  for (int bad : {0, 17, len - 1})
    for (int how : {0, 1, 2}) {  // equal, above, NaN
      Guarded<float> f(len);
      Guarded<double> d(len);
      Guarded<qel16s> s(len);
      Guarded<qel32s> w(len);
      std::vector<float> fx(len, 1.0f);
      std::vector<double> dx(len, 1.0);
      std::vector<qel16s> sx(len, 100);
      std::vector<qel32s> wx(len, 100);
      // The canary bytes read as values below the minuends, except the bad one.
      for (int i = 0; i < len; ++i) {
        fx[i] = 1e30f, dx[i] = 1e300, sx[i] = 32767, wx[i] = INT32_MAX;
      }
      const float fbad = how == 0 ? f[bad] : how == 1 ? f[bad] - 1.0f : std::nanf("");
      fx[bad] = fbad;
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

// ---------------------------------------------------------------- fixed point

template <typename T>
T truncSat(long double v) {
  if (v >= std::numeric_limits<T>::max()) return std::numeric_limits<T>::max();
  if (v <= std::numeric_limits<T>::min()) return std::numeric_limits<T>::min();
  return static_cast<T>(v);
}

// Model: integers to single (exact here: 16-bit values, or 32-bit multiples
// of 128 below 2^31), times 2^-sf in single, the single lane log-add,
// back times 2^sf, truncated toward zero, saturated.
template <typename T>
std::vector<T> modelLogAdd(const std::vector<T>& x, const std::vector<T>& y, int sf) {
  const float scale = std::ldexp(1.0f, -sf);
  std::vector<T> out(x.size());
  for (size_t i = 0; i < x.size(); ++i) {
    const float r =
        qtest::refLogAdd32f(static_cast<float>(x[i]) * scale, static_cast<float>(y[i]) * scale);
    out[i] = truncSat<T>(std::ldexp(static_cast<long double>(r), sf));
  }
  return out;
}

template <typename T>
T modelLogSum(const std::vector<T>& x, int sf) {
  const int len = static_cast<int>(x.size());
  if (len == 1) return x[0];
  const double scale = std::ldexp(1.0, -sf);
  float v;
  if (len <= 6) {
    v = static_cast<float>(x[0] * scale);
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

template <typename T>
std::vector<T> fixedData(Rng& rng, size_t n, int sf) {
  std::vector<T> v(n);
  for (auto& e : v) {
    const double val = rng.uniformD(-40.0, 4.0);  // log values
    double raw = std::ldexp(val, sf);
    // Large 32-bit values are kept on multiples of 128, exact in single.
    if (std::fabs(raw) >= 16777216.0) raw = std::round(raw / 128.0) * 128.0;
    e = static_cast<T>(std::clamp(raw, double(std::numeric_limits<T>::min()),
                                  double(std::numeric_limits<T>::max())));
  }
  return v;
}

TEST(LogFixed, LogAddMatchesModelAcrossChunkBorders) {
  Rng rng(51);
  for (size_t len : {1, 5, 127, 128, 129, 300})
    for (int sf : {0, 4, -2, 9}) {
      const auto x = fixedData<qel16s>(rng, len, sf), y = fixedData<qel16s>(rng, len, sf);
      Guarded<qel16s> dst(len, 2);
      dst.assign(y);
      ASSERT_EQ(qelsLogAdd_16s_Sfs(x.data(), dst.data(), static_cast<int>(len), sf), 0);
      const auto want = modelLogAdd(x, y, sf);
      ASSERT_TRUE(sameArrays(dst.data(), want.data(), len)) << "len " << len << " sf " << sf;
      ASSERT_TRUE(dst.guardsIntact());
    }
  // 32-bit values with 24 fraction bits: every bit of the single result shows.
  for (size_t len : {1, 5, 127, 128, 129, 300})
    for (int sf : {24, 0, 12}) {
      const auto x = fixedData<qel32s>(rng, len, sf), y = fixedData<qel32s>(rng, len, sf);
      Guarded<qel32s> dst(len, 4);
      dst.assign(y);
      ASSERT_EQ(qelsLogAdd_32s_Sfs(x.data(), dst.data(), static_cast<int>(len), sf), 0);
      const auto want = modelLogAdd(x, y, sf);
      ASSERT_TRUE(sameArrays(dst.data(), want.data(), len)) << "len " << len << " sf " << sf;
      ASSERT_TRUE(dst.guardsIntact());
    }
}

TEST(LogFixed, LogAddTruncatesTowardZeroAndSaturates) {
  qel16s x[3] = {0, -5, 10}, y[3] = {0, -5, -30000};
  ASSERT_EQ(qelsLogAdd_16s_Sfs(x, y, 3, 0), 0);
  EXPECT_EQ(y[0], 0);   // ln 2 truncated
  EXPECT_EQ(y[1], -4);  // -5 + ln 2 = -4.31 toward zero
  EXPECT_EQ(y[2], 10);
  qel16s p[1] = {1}, q[1] = {1};
  ASSERT_EQ(qelsLogAdd_16s_Sfs(p, q, 1, 1), 0);  // 0.5 + ln 2 = 1.19 -> 2.39 -> 2
  EXPECT_EQ(q[0], 2);
  qel32s big[3] = {INT32_MAX, INT32_MIN, INT32_MIN}, acc[3] = {INT32_MAX, -100000000, INT32_MIN};
  ASSERT_EQ(qelsLogAdd_32s_Sfs(big, acc, 3, 0), 0);
  EXPECT_EQ(acc[0], INT32_MAX);                      // 2^31 + ln 2 saturates
  EXPECT_EQ(acc[1], static_cast<qel32s>(-4500000));  // ignored, rises to log zero
  EXPECT_EQ(acc[2], INT32_MIN);                      // equal: added, not clamped
}

TEST(LogFixed, LogSumMatchesModelAcrossPathsAndChunks) {
  Rng rng(52);
  for (size_t len : {1, 2, 3, 6, 7, 8, 127, 128, 129, 130, 255, 256, 257, 300})
    for (int sf : {0, 5, -1}) {
      const auto x = fixedData<qel16s>(rng, len, sf);
      Guarded<qel16s> dst(1);
      ASSERT_EQ(qelsLogSum_16s_Sfs(x.data(), dst.data(), static_cast<int>(len), sf), 0);
      EXPECT_EQ(dst[0], modelLogSum(x, sf)) << "len " << len << " sf " << sf;
      EXPECT_TRUE(dst.guardsIntact());
    }
  for (size_t len : {1, 2, 5, 6, 7, 127, 128, 129, 300})
    for (int sf : {24, 10}) {
      const auto x = fixedData<qel32s>(rng, len, sf);
      Guarded<qel32s> dst(1);
      ASSERT_EQ(qelsLogSum_32s_Sfs(x.data(), dst.data(), static_cast<int>(len), sf), 0);
      EXPECT_EQ(dst[0], modelLogSum(x, sf)) << "len " << len << " sf " << sf;
    }
}

TEST(LogFixed, LogSumEdgeCases) {
  qel16s z[2] = {0, 0}, r = 99;
  ASSERT_EQ(qelsLogSum_16s_Sfs(z, &r, 2, 0), 0);
  EXPECT_EQ(r, 0);  // ln 2 truncated toward zero
  qel16s one = -1234;
  ASSERT_EQ(qelsLogSum_16s_Sfs(&one, &r, 1, 7), 0);
  EXPECT_EQ(r, -1234);  // copied unchanged, no scaling
  std::vector<qel16s> top(300, 32767);
  ASSERT_EQ(qelsLogSum_16s_Sfs(top.data(), &r, 300, 0), 0);
  EXPECT_EQ(r, 32767);  // 32767 + ln 300 saturates
  std::vector<qel32s> wtop(129, INT32_MAX);
  qel32s w = 0;
  ASSERT_EQ(qelsLogSum_32s_Sfs(wtop.data(), &w, 129, 0), 0);
  EXPECT_EQ(w, INT32_MAX);
  qel16s neg[3] = {-30000, -32768, -31000};  // -32768 + ln 2 ... truncates, no saturation
  ASSERT_EQ(qelsLogSum_16s_Sfs(neg, &r, 3, 0), 0);
  EXPECT_EQ(r, -30000);
}

TEST(LogFixed, LogSubMatchesModelAndSaturates) {
  Rng rng(53);
  for (int sf : {0, 6, -3}) {
    std::vector<qel16s> x(64), y(64);
    for (int i = 0; i < 64; ++i) {
      x[i] = static_cast<qel16s>(rng.integer(-2000, 2000));
      y[i] = static_cast<qel16s>(x[i] - rng.integer(1, 3000));
    }
    std::vector<qel16s> got = y;
    ASSERT_EQ(qelsLogSub_16s_Sfs(x.data(), got.data(), 64, sf), 0);
    const float scale = std::ldexp(1.0f, -sf);
    for (int i = 0; i < 64; ++i) {
      const float xs = static_cast<float>(x[i]), ys = static_cast<float>(y[i]);
      const float xv = xs * scale;
      const double d = (ys - xs) * scale;
      float r;
      if (d < -15.3195879547406)
        r = std::max(xv, -4500000.0f);
      else if (1.0 - std::exp(d) <= 1.0057e-37)
        r = -4500000.0f;
      else
        r = static_cast<float>(xv + std::log(1.0 - std::exp(d)));
      ASSERT_EQ(got[i], truncSat<qel16s>(std::ldexp(static_cast<long double>(r), sf)))
          << i << " sf " << sf;
    }
  }
  // x - 2^-20 against x: log(1 - exp(-2^-20)) = -13.86, times 2^20 saturates.
  qel16s x = -32768 + 1, y = -32768;
  ASSERT_EQ(qelsLogSub_16s_Sfs(&x, &y, 1, 20), 0);
  EXPECT_EQ(y, -32768);
  qel32s wx = 1000, wy = -1000;  // d = -2000: ignored, x kept
  ASSERT_EQ(qelsLogSub_32s_Sfs(&wx, &wy, 1, 0), 0);
  EXPECT_EQ(wy, 1000);
  wx = 5, wy = 4;  // 5 + log(1 - e^-1) = 4.54 -> 4
  ASSERT_EQ(qelsLogSub_32s_Sfs(&wx, &wy, 1, 0), 0);
  EXPECT_EQ(wy, 4);
}

// ---------------------------------------------------------------- checks

// Length first, then pointers, for all twelve; an unknown hint of the double
// log-add is looked at after both and writes nothing.
TEST(LogDomainChecks, LengthBeforeNullAndNothingWritten) {
  Guarded<float> f(4);
  Guarded<double> d(4);
  Guarded<qel16s> s(4);
  Guarded<qel32s> w(4);
  const float* fn = nullptr;
  const double* dn = nullptr;
  const qel16s* sn = nullptr;
  const qel32s* wn = nullptr;
  for (int len : {0, -1}) {
    EXPECT_EQ(qelsLogAdd_32f(fn, nullptr, len), qelStatusSize);
    EXPECT_EQ(qelsLogAdd_64f(dn, nullptr, len, 0), qelStatusSize);
    EXPECT_EQ(qelsLogAdd_64f(dn, nullptr, len, 3), qelStatusSize);
    EXPECT_EQ(qelsLogAdd_16s_Sfs(sn, nullptr, len, 0), qelStatusSize);
    EXPECT_EQ(qelsLogAdd_32s_Sfs(wn, nullptr, len, 0), qelStatusSize);
    EXPECT_EQ(qelsLogSum_32f(fn, nullptr, len), qelStatusSize);
    EXPECT_EQ(qelsLogSum_64f(dn, nullptr, len), qelStatusSize);
    EXPECT_EQ(qelsLogSum_16s_Sfs(sn, nullptr, len, 0), qelStatusSize);
    EXPECT_EQ(qelsLogSum_32s_Sfs(wn, nullptr, len, 0), qelStatusSize);
    EXPECT_EQ(qelsLogSub_32f(fn, nullptr, len), qelStatusSize);
    EXPECT_EQ(qelsLogSub_64f(dn, nullptr, len), qelStatusSize);
    EXPECT_EQ(qelsLogSub_16s_Sfs(sn, nullptr, len, 0), qelStatusSize);
    EXPECT_EQ(qelsLogSub_32s_Sfs(wn, nullptr, len, 0), qelStatusSize);
    EXPECT_EQ(qelsLogAdd_32f(f.data(), f.data(), len), qelStatusSize);
    EXPECT_EQ(qelsLogSum_64f(d.data(), d.data(), len), qelStatusSize);
    EXPECT_EQ(qelsLogSub_32s_Sfs(w.data(), w.data(), len, 0), qelStatusSize);
  }
  const float* fs = f.data();
  const double* ds = d.data();
  const qel16s* ss = s.data();
  const qel32s* ws = w.data();
  for (int which : {0, 1}) {
    float* fd = which ? nullptr : f.data();
    double* dd = which ? nullptr : d.data();
    qel16s* sd = which ? nullptr : s.data();
    qel32s* wd = which ? nullptr : w.data();
    const float* fsrc = which ? fs : nullptr;
    const double* dsrc = which ? ds : nullptr;
    const qel16s* ssrc = which ? ss : nullptr;
    const qel32s* wsrc = which ? ws : nullptr;
    EXPECT_EQ(qelsLogAdd_32f(fsrc, fd, 4), qelStatusNullPtr);
    EXPECT_EQ(qelsLogAdd_64f(dsrc, dd, 4, 0), qelStatusNullPtr);
    EXPECT_EQ(qelsLogAdd_64f(dsrc, dd, 4, 7), qelStatusNullPtr);
    EXPECT_EQ(qelsLogAdd_16s_Sfs(ssrc, sd, 4, 0), qelStatusNullPtr);
    EXPECT_EQ(qelsLogAdd_32s_Sfs(wsrc, wd, 4, 0), qelStatusNullPtr);
    EXPECT_EQ(qelsLogSum_32f(fsrc, fd, 4), qelStatusNullPtr);
    EXPECT_EQ(qelsLogSum_64f(dsrc, dd, 4), qelStatusNullPtr);
    EXPECT_EQ(qelsLogSum_16s_Sfs(ssrc, sd, 4, 0), qelStatusNullPtr);
    EXPECT_EQ(qelsLogSum_32s_Sfs(wsrc, wd, 4, 0), qelStatusNullPtr);
    EXPECT_EQ(qelsLogSub_32f(fsrc, fd, 4), qelStatusNullPtr);
    EXPECT_EQ(qelsLogSub_64f(dsrc, dd, 4), qelStatusNullPtr);
    EXPECT_EQ(qelsLogSub_16s_Sfs(ssrc, sd, 4, 0), qelStatusNullPtr);
    EXPECT_EQ(qelsLogSub_32s_Sfs(wsrc, wd, 4, 0), qelStatusNullPtr);
  }
  EXPECT_TRUE(f.untouched() && d.untouched() && s.untouched() && w.untouched());

  const double src[4] = {0, 0, 0, 0};
  for (int hint : {3, -1, 100}) {
    EXPECT_EQ(qelsLogAdd_64f(src, d.data(), 4, hint), qelStatusOk);
    EXPECT_TRUE(d.untouched()) << hint;
  }
}

// Nothing here allocates: every call succeeds with an allocator that fails
// at once, and no block is left.
TEST(LogDomainChecks, NoCallAllocates) {
  qtest::FailingAllocator failing(0);
  std::vector<float> f1(300, -1.0f), f2(300, -2.0f);
  std::vector<double> d1(300, -1.0), d2(300, -2.0);
  std::vector<qel16s> s1(300, -10), s2(300, -20);
  std::vector<qel32s> w1(300, -10), w2(300, -20);
  float fr;
  double dr;
  qel16s sr;
  qel32s wr;
  EXPECT_EQ(qelsLogAdd_32f(f1.data(), f2.data(), 300), 0);
  EXPECT_EQ(qelsLogAdd_64f(d1.data(), d2.data(), 300, 0), 0);
  EXPECT_EQ(qelsLogAdd_16s_Sfs(s1.data(), s2.data(), 300, 1), 0);
  EXPECT_EQ(qelsLogAdd_32s_Sfs(w1.data(), w2.data(), 300, 1), 0);
  EXPECT_EQ(qelsLogSum_32f(f1.data(), &fr, 300), 0);
  EXPECT_EQ(qelsLogSum_64f(d1.data(), &dr, 300), 0);
  EXPECT_EQ(qelsLogSum_16s_Sfs(s1.data(), &sr, 300, 1), 0);
  EXPECT_EQ(qelsLogSum_32s_Sfs(w1.data(), &wr, 300, 1), 0);
  std::vector<float> f3(300, -3.0f);
  std::vector<double> d3(300, -3.0);
  std::vector<qel16s> s3(300, -30);
  std::vector<qel32s> w3(300, -30);
  EXPECT_EQ(qelsLogSub_32f(f1.data(), f3.data(), 300), 0);
  EXPECT_EQ(qelsLogSub_64f(d1.data(), d3.data(), 300), 0);
  EXPECT_EQ(qelsLogSub_16s_Sfs(s1.data(), s3.data(), 300, 1), 0);
  EXPECT_EQ(qelsLogSub_32s_Sfs(w1.data(), w3.data(), 300, 1), 0);
  EXPECT_TRUE(failing.nothingLeaked());
}

}  // namespace
