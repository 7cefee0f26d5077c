// Element-wise arithmetic: sums, products, the 16-bit product's factor
// classes, constants, quotients (the refined reciprocal of the single
// precision quotient bit for bit and against true division), roots and
// absolute values, over every head/group/tail layout and across the
// two-thread split of the long-vector kernels.
#include <xmmintrin.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <type_traits>
#include <vector>

#include "base/base.h"
#include "base_kernel_layouts.h"
#include "test_support.h"

namespace {

using qtest::elementwise;
using qtest::kLen;

using qtest::kInf;
using qtest::kInff;
using qtest::kNaN;
using qtest::kNaNf;

template <typename T>
std::vector<T> specialsAndRandom(uint32_t seed) {
  using L = std::numeric_limits<T>;
  std::vector<T> v = {
      T(0),    -T(0),   T(1),          T(-1),          T(0.5),         T(3.25),         T(-7.5),
      T(1e-3), T(-2e5), L::infinity(), -L::infinity(), L::quiet_NaN(), L::denorm_min(), L::max()};
  qtest::Rng rng(seed);
  for (int i = 0; i < 80; ++i) v.push_back(static_cast<T>(rng.uniformD(-100.0, 100.0)));
  return v;
}

// Runs a kernel of two float arrays (the second often in place) over every
// layout against the rule ref(a, b) or a whole-call expectation.
template <typename T, typename Call, typename Expect, typename Status = decltype(qtest::alwaysOk)>
void checkFloat(const char* what, bool inPlace, Call call, Expect expect,
                Status status = qtest::alwaysOk) {
  qtest::checkEveryLayout<T, T>(what, specialsAndRandom<T>(1), specialsAndRandom<T>(2), inPlace,
                                call, expect, status);
}

// ------------------------------------------------------------ sums and products

TEST(ArithFloat, AddSubMulAbsEveryLayout) {
  using qtest::srcDst;
  checkFloat<float>("Add_32f_I", true, srcDst(qelsAdd_32f_I),
                    elementwise([](float s, float d) { return d + s; }));
  checkFloat<double>("Add_64f_I", true, srcDst(qelsAdd_64f_I),
                     elementwise([](double s, double d) { return d + s; }));
  checkFloat<float>("Sub_32f_I", true, srcDst(qelsSub_32f_I),
                    elementwise([](float s, float d) { return d - s; }));
  checkFloat<double>("Sub_64f_I", true, srcDst(qelsSub_64f_I),
                     elementwise([](double s, double d) { return d - s; }));
  checkFloat<float>("Mul_32f", false, qelsMul_32f,
                    elementwise([](float a, float b) { return a * b; }));
  checkFloat<double>("Abs_64f", false, srcDst(qelsAbs_64f),
                     elementwise([](double a, double) { return std::fabs(a); }));
  // The sign bit goes, a NaN payload stays.
  const double in[] = {-kNaN, -0.0, -kInf, -1e-310, 5.0};
  double out[5];
  ASSERT_EQ(qelsAbs_64f(in, out, 5), qelStatusOk);
  for (int i = 0; i < 5; ++i)
    EXPECT_EQ(std::bit_cast<uint64_t>(out[i]), std::bit_cast<uint64_t>(in[i]) & ~(1ull << 63));
}

// The driver's call for a kernel of a constant, out of place or in place.
template <typename T>
auto withConst(qelStatus (*fn)(const T*, T, T*, int), T v) {
  return [=](const T* a, const T*, T* out, int n) { return fn(a, v, out, n); };
}
template <typename T>
auto withConst(qelStatus (*fn)(T, T*, int), T v) {
  return [=](const T*, const T*, T* out, int n) { return fn(v, out, n); };
}

// Constants: 1 copies (or returns at once in place), 0 clears, anything else
// multiplies; a divisor constant becomes its reciprocal once.
template <typename T, typename MulC, typename MulCI, typename DivC, typename DivCI>
void checkConstants(std::vector<T> vals, MulC mulC, MulCI mulCI, DivC divC, DivCI divCI) {
  // The product rule on the source (a) or on the in-place data (b).
  auto mulRef = [](T c, bool onSource) {
    return elementwise([c, onSource](T a, T b) {
      const T x = onSource ? a : b;
      return c == T(1) ? x : (c == T(0) ? T(0) : x * c);
    });
  };
  for (T val : vals) {
    checkFloat<T>("MulC", false, withConst(mulC, val), mulRef(val, true));
    checkFloat<T>("MulC_I", true, withConst(mulCI, val), mulRef(val, false));
    if constexpr (std::is_same_v<T, float>)
      checkFloat<T>("AddC_32f", false, withConst(qelsAddC_32f, val),
                    elementwise([val](T a, T) { return val == 0 ? a : a + val; }));
    if (val == T(0)) continue;
    checkFloat<T>("DivC", false, withConst(divC, val), mulRef(T(1) / val, true));
    checkFloat<T>("DivC_I", true, withConst(divCI, val), mulRef(T(1) / val, false));
  }
}

TEST(ArithFloat, ConstantsEveryLayoutAndSpecialValues) {
  checkConstants<float>({2.5f, -0.75f, 1.0f, 0.0f, -0.0f, 3.0f, kInff, kNaNf}, qelsMulC_32f,
                        qelsMulC_32f_I, qelsDivC_32f, qelsDivC_32f_I);
  checkConstants<double>({2.5, -0.75, 1.0, 0.0, 3.0, kInf, kNaN}, qelsMulC_64f, qelsMulC_64f_I,
                         qelsDivC_64f, qelsDivC_64f_I);
  // In place, 1 leaves even NaN payloads alone and 0 clears them; adding a
  // zero constant is a copy, so a negative zero stays negative.
  const uint64_t payload = 0x7FF8000000012345ull;
  double v[3] = {std::bit_cast<double>(payload), -kNaN, -0.0};
  ASSERT_EQ(qelsMulC_64f_I(1.0, v, 3), qelStatusOk);
  EXPECT_EQ(std::bit_cast<uint64_t>(v[0]), payload);
  EXPECT_TRUE(std::isnan(v[1]) && std::signbit(v[1]));
  EXPECT_EQ(std::bit_cast<uint64_t>(v[2]), 1ull << 63);
  ASSERT_EQ(qelsMulC_64f_I(0.0, v, 3), qelStatusOk);
  for (double x : v) EXPECT_EQ(std::bit_cast<uint64_t>(x), 0u);
  const float negZero = -0.0f;
  float dst;
  ASSERT_EQ(qelsAddC_32f(&negZero, 0.0f, &dst, 1), qelStatusOk);
  EXPECT_EQ(std::bit_cast<uint32_t>(dst), 0x80000000u);
}

// Above 30 all zero, below -15 saturation by the product's sign, otherwise
// the nearest-even rescaling of the 32-bit product.
qel16s mul16Ref(qel16s a, qel16s b, int s) {
  const int64_t p = int64_t{a} * b;
  if (s > 30) return 0;
  if (s < -15) return static_cast<qel16s>(p > 0 ? 32767 : (p < 0 ? -32768 : 0));
  return qtest::rescale16Ref(p, s);
}

TEST(ArithInt, Mul16sEveryFactorClassAndLayout) {
  std::vector<qel16s> baseA = {0, 1, -1, 3, -3, 32767, -32768, 181, -182, 255, 1000, -1000, 7};
  std::vector<qel16s> baseB = {5, 0, 32767, -32768, -32768, 2, 3, -1, 181, 129, -33, 7, 1};
  qtest::Rng rng(21);
  for (int i = 0; i < 70; ++i) {
    baseA.push_back(static_cast<qel16s>(rng.integer(-32768, 32767)));
    baseB.push_back(static_cast<qel16s>(rng.integer(i % 2 ? -300 : -32768, i % 2 ? 300 : 32767)));
  }
  for (int s : {0, 1, 2, 3, 8, 15, 16, 29, 30, 31, 45, -1, -2, -8, -15, -16, -40})
    qtest::checkEveryLayout<qel16s, qel16s>(
        "Mul_16s_Sfs", baseA, baseB, false,
        [s](const qel16s* a, qel16s* b, qel16s* d, int n) {
          return qelsMul_16s_Sfs(a, b, d, n, s);
        },
        elementwise([s](qel16s a, qel16s b) { return mul16Ref(a, b, s); }));
}

// ------------------------------------------------------------ quotients

float refinedQuotient(float n, float d) {
  const float r = _mm_cvtss_f32(_mm_rcp_ss(_mm_set_ss(d)));
  const float e = 1.0f - d * r;
  const float q = n * r;
  return q + e * (q + e * q);
}

float zeroDivisorQuotient(float n) { return n > 0 ? kInff : (n < 0 ? -kInff : kNaNf); }

// One stretch: head to the 16-byte boundary of `dst`, groups of four (a
// group holding a zero divisor divides exactly), tail; all scalar below 11
// elements.
void divStretchRef(const float* den, const float* num, float* out, const float* dst, int len) {
  auto scalar = [&](int i) {
    out[i] = den[i] == 0 ? zeroDivisorQuotient(num[i]) : refinedQuotient(num[i], den[i]);
  };
  int i = 0;
  if (len >= 11) {
    const int head = std::min<int>(len, ((16 - (reinterpret_cast<uintptr_t>(dst) & 15)) & 15) / 4);
    for (; i < head; ++i) scalar(i);
    for (; i + 4 <= len; i += 4) {
      const bool zero = std::any_of(den + i, den + i + 4, [](float d) { return d == 0; });
      for (int k = i; k < i + 4; ++k)
        out[k] = !zero ? refinedQuotient(num[k], den[k])
                       : (den[k] == 0 ? zeroDivisorQuotient(num[k]) : num[k] / den[k]);
    }
  }
  for (; i < len; ++i) scalar(i);
}

// Two stretches of len / 2 and the rest from 4096 elements on.
std::vector<float> divRef(const std::vector<float>& den, const std::vector<float>& num,
                          const float* dst) {
  const int len = static_cast<int>(den.size()), half = len < 4096 ? len : len / 2;
  std::vector<float> out(len);
  divStretchRef(den.data(), num.data(), out.data(), dst, half);
  divStretchRef(den.data() + half, num.data() + half, out.data() + half, dst + half, len - half);
  return out;
}

template <typename T>
qelStatus divStatus(const std::vector<T>& den, const std::vector<T>&) {
  return std::count(den.begin(), den.end(), T(0)) ? qelStatusWarnDivZero : qelStatusOk;
}

qelStatus sqrtStatus(const std::vector<double>&, const std::vector<double>& v) {
  return std::any_of(v.begin(), v.end(), [](double x) { return x < 0; }) ? qelStatusWarnSqrtNeg
                                                                         : qelStatusOk;
}

const auto div64Ref = elementwise([](double den, double num) { return num / den; });
const auto sqrtRef = elementwise([](double, double x) { return std::sqrt(x); });
const auto sqrtInPlace = [](const double*, double*, double* sd, int n) {
  return qelsSqrt_64f_I(sd, n);
};

// Every layout; the divisors hold a zero in every window, so a group with a
// zero divisor (exact division) is met at every length from 11 on.
TEST(ArithDivide, QuotientsAndRootsEveryLayout) {
  auto den = specialsAndRandom<float>(31);
  for (size_t i = 5; i < den.size(); i += 7) den[i] = (i & 8) ? -0.0f : 0.0f;
  const auto num = specialsAndRandom<float>(32);
  for (bool inPlace : {false, true})
    qtest::checkEveryLayout<float, float>(
        "Div_32f", den, num, inPlace,
        [inPlace](const float* d, float* n, float* out, int len) {
          return inPlace ? qelsDiv_32f_I(d, out, len) : qelsDiv_32f(d, n, out, len);
        },
        divRef, divStatus<float>);
  checkFloat<double>("Div_64f", false, qelsDiv_64f,
                     elementwise([](double den, double num) { return num / den; }),
                     divStatus<double>);
  checkFloat<double>(
      "Sqrt_64f_I", true,
      [](const double*, double*, double* sd, int n) { return qelsSqrt_64f_I(sd, n); },
      elementwise([](double, double x) { return std::sqrt(x); }), sqrtStatus);
  double v[4] = {-0.0, kNaN, 2.0, -kInf};
  ASSERT_EQ(qelsSqrt_64f_I(v, 3), qelStatusOk);  // -0 and NaN are not negative
  EXPECT_TRUE(std::signbit(v[0]) && v[0] == 0);
  ASSERT_EQ(qelsSqrt_64f_I(v + 3, 1), qelStatusWarnSqrtNeg);
  EXPECT_TRUE(std::isnan(v[3]));
}

// The refinement leaves (n/d)(1 - e^3), |e| <= 1.5 * 2^-12, plus the
// rounding of q = n*r and of 1 - d*r (each at most 2^-24 relative) before
// the final rounding: under 2.5 ulp from the true quotient, so at most 3
// ulp from the correctly rounded one, for normal operands and quotients.
TEST(ArithDivide, Div32fWithinThreeUlpOfTrueDivision) {
  qtest::Rng rng(41);
  const int len = 20000;
  std::vector<float> den(len), num(len), out(len);
  for (int i = 0; i < len; ++i) {
    den[i] = std::ldexp(rng.uniform(1.0f, 2.0f), rng.integer(-60, 60)) * (i % 3 ? 1 : -1);
    num[i] = std::ldexp(rng.uniform(1.0f, 2.0f), rng.integer(-60, 60)) * (i % 5 ? 1 : -1);
  }
  ASSERT_EQ(qelsDiv_32f(den.data(), num.data(), out.data(), len), qelStatusOk);
  int64_t worst = 0;
  for (int i = 0; i < len; ++i) {
    const float exact = static_cast<float>(static_cast<double>(num[i]) / den[i]);
    worst = std::max(worst, qtest::ulpDistance(out[i], exact));
    ASSERT_LE(qtest::ulpDistance(out[i], exact), 3) << num[i] << " / " << den[i];
  }
  EXPECT_GE(worst, 1) << "the estimate should not be exact everywhere";
}

// Zero divisors: +inf, -inf or NaN by the dividend's sign, whatever the
// divisor's sign; the others of the group divide exactly; +6 comes back.
TEST(ArithDivide, ZeroDivisorsComputeEverythingAndWarn) {
  qtest::Guarded<float> den(16), num(16), out(16);
  den.assign({3, -0.0f, 0, 7, 1, 1, 1, 1, 1, 1, 1, 1, 0, 5, -0.0f, 3});
  num.assign({1, 2, -2, 1, 1, 2, 3, 4, 5, 6, 7, 8, 0, 1, kNaNf, 10});
  ASSERT_EQ(qelsDiv_32f(den.data(), num.data(), out.data(), 16), qelStatusWarnDivZero);
  const float want[] = {1.0f / 3, kInff, -kInff, 1.0f / 7, kNaNf, 1.0f / 5, kNaNf, 10.0f / 3};
  const int at[] = {0, 1, 2, 3, 12, 13, 14, 15};
  for (int k = 0; k < 8; ++k) EXPECT_TRUE(qtest::sameBits(out[at[k]], want[k])) << at[k];
  for (int i = 4; i < 12; ++i) EXPECT_NEAR(out[i], num[i], 1e-6f);
  EXPECT_TRUE(out.guardsIntact());
}

// ------------------------------------------------------------ two threads

// Lengths just below and at each kernel's parallel length: a zero divisor
// or negative root placed only in the second half must still be reported,
// and the results must be those of the stretches.
template <typename T, typename Call, typename Expect, typename Status>
void checkAcrossThreads(T special, std::vector<int> lens, bool inPlace, Call call, Expect expect,
                        Status status) {
  qtest::Rng rng(51);
  for (int len : lens)
    for (int where : {-1, 0, 5, len / 2 - 1, len / 2, len / 2 + 1, len - 1}) {
      qtest::Guarded<T> a(len, sizeof(T)), b(len, inPlace ? sizeof(T) : 0),
          d(len, 2 * sizeof(T) % 16);
      a.assign(rng.vec<T>(len, 0.5, 8.0));
      b.assign(rng.vec<T>(len, inPlace ? 0.0 : -8.0, 8.0));
      if (where >= 0) (inPlace ? b : a)[where] = special;
      T* out = inPlace ? b.data() : d.data();
      const auto av = a.vec(), bv = b.vec();
      const auto want = expect(av, bv, out);
      ASSERT_EQ(call(a.data(), b.data(), out, len), status(av, bv)) << len << " at " << where;
      ASSERT_TRUE(qtest::sameArrays(out, want.data(), len)) << len << " at " << where;
      ASSERT_TRUE(a.guardsIntact() && b.guardsIntact() && d.guardsIntact());
    }
}

TEST(ArithParallel, SecondHalfReportsAndResultsMatch) {
  ASSERT_EQ(ownGetNumThreads(), 2) << "run with OMP_NUM_THREADS=2";
  checkAcrossThreads(0.0f, {4095, 4096, 4097, 9001}, false, qelsDiv_32f, divRef, divStatus<float>);
  checkAcrossThreads(0.0, {1023, 1024, 1025, 5000}, false, qelsDiv_64f, div64Ref,
                     divStatus<double>);
  checkAcrossThreads(-4.0, {511, 512, 513, 3001}, true, sqrtInPlace, sqrtRef, sqrtStatus);
}

// ------------------------------------------------------------ errors

TEST(ArithErrors, CheckOrderAndNothingWritten) {
  qtest::OrderBuffers b;
  float *f1 = b.fa.data(), *f2 = b.fb.data(), *f3 = b.fc.data();
  double *d1 = b.da.data(), *d2 = b.db.data(), *d3 = b.dc.data();
  using qtest::orderCase;
  // The constants are those that would take a shortcut (a zero divisor, a
  // clearing or out-of-range factor): the checks still come first.
  qtest::checkArgumentOrder({orderCase("Add_32f_I", qelsAdd_32f_I, f1, f2, kLen),
                             orderCase("Add_64f_I", qelsAdd_64f_I, d1, d2, kLen),
                             orderCase("Sub_32f_I", qelsSub_32f_I, f1, f2, kLen),
                             orderCase("Sub_64f_I", qelsSub_64f_I, d1, d2, kLen),
                             orderCase("AddC_32f", qelsAddC_32f, f1, 0.0f, f2, kLen),
                             orderCase("Mul_32f", qelsMul_32f, f1, f2, f3, kLen),
                             orderCase("Mul_16s_Sfs", qelsMul_16s_Sfs, b.s16a.data(), b.s16b.data(),
                                       b.s16c.data(), kLen, 31),
                             orderCase("MulC_32f", qelsMulC_32f, f1, 0.0f, f2, kLen),
                             orderCase("MulC_64f", qelsMulC_64f, d1, 0.0, d2, kLen),
                             orderCase("MulC_32f_I", qelsMulC_32f_I, 0.0f, f1, kLen),
                             orderCase("MulC_64f_I", qelsMulC_64f_I, 0.0, d1, kLen),
                             orderCase("Div_32f", qelsDiv_32f, f1, f2, f3, kLen),
                             orderCase("Div_64f", qelsDiv_64f, d1, d2, d3, kLen),
                             orderCase("Div_32f_I", qelsDiv_32f_I, f1, f2, kLen),
                             orderCase("DivC_32f", qelsDivC_32f, f1, 0.0f, f2, kLen),
                             orderCase("DivC_64f", qelsDivC_64f, d1, 0.0, d2, kLen),
                             orderCase("DivC_32f_I", qelsDivC_32f_I, 0.0f, f1, kLen),
                             orderCase("DivC_64f_I", qelsDivC_64f_I, 0.0, d1, kLen),
                             orderCase("Sqrt_64f_I", qelsSqrt_64f_I, d1, kLen),
                             orderCase("Abs_64f", qelsAbs_64f, d1, d2, kLen)},
                            b);
  // A zero divisor constant comes after both checks and writes nothing.
  EXPECT_EQ(qelsDivC_32f(f1, 0.0f, f2, 8), qelStatusDivByZero);
  EXPECT_EQ(qelsDivC_64f(d1, -0.0, d2, 8), qelStatusDivByZero);
  EXPECT_EQ(qelsDivC_32f_I(0.0f, f1, 8), qelStatusDivByZero);
  EXPECT_EQ(qelsDivC_64f_I(0.0, d1, 8), qelStatusDivByZero);
  EXPECT_TRUE(b.untouched());
}

}  // namespace
