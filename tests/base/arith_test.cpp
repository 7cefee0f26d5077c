// Element-wise arithmetic: sums, products, the 16-bit product's factor
// classes, constants, quotients (the refined reciprocal of the single
// precision quotient bit for bit and against true division), roots and
// absolute values, over every head/group/tail layout and across the
// two-thread split of the long-vector kernels.
#include <xmmintrin.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <functional>
#include <limits>
#include <vector>

#include "base/base.h"
#include "base_kernel_layouts.h"
#include "test_support.h"

namespace {

using qtest::Guarded;

constexpr float kNaNf = std::numeric_limits<float>::quiet_NaN();
constexpr float kInff = std::numeric_limits<float>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

template <typename T>
std::vector<T> specialsAndRandom(uint32_t seed) {
  std::vector<T> v = {T(0),
                      -T(0),
                      T(1),
                      T(-1),
                      T(0.5),
                      T(3.25),
                      T(-7.5),
                      T(1e-3),
                      T(-2e5),
                      std::numeric_limits<T>::infinity(),
                      -std::numeric_limits<T>::infinity(),
                      std::numeric_limits<T>::quiet_NaN(),
                      std::numeric_limits<T>::denorm_min(),
                      std::numeric_limits<T>::max()};
  qtest::Rng rng(seed);
  for (int i = 0; i < 80; ++i) v.push_back(static_cast<T>(rng.uniformD(-100.0, 100.0)));
  return v;
}

template <typename T>
std::vector<T> cycled(const std::vector<T>& base, int len, int shift) {
  std::vector<T> v(len);
  for (int i = 0; i < len; ++i) v[i] = base[(i + shift) % base.size()];
  return v;
}

// Runs call(a, b, dst, len) over every layout, b starting either with a or
// with dst; compares with ref(a[i], b[i]) bit for bit. `inPlace` makes dst
// the b buffer itself (pSrcDst kernels).
template <typename T, typename Call, typename Ref>
void checkBinary(const char* what, bool inPlace, Call call, Ref ref,
                 std::function<qelStatus(const std::vector<T>&, const std::vector<T>&)> status) {
  const auto baseA = specialsAndRandom<T>(1), baseB = specialsAndRandom<T>(2);
  qtest::forLayouts<T, T>([&](int len, size_t so, size_t dso) {
    for (size_t bo : {so, dso}) {
      Guarded<T> a(len, so), b(len, inPlace ? dso : bo), d(len, dso);
      a.assign(cycled(baseA, len, len));
      b.assign(cycled(baseB, len, 3 * len));
      const auto av = a.vec(), bv = b.vec();
      T* out = inPlace ? b.data() : d.data();
      ASSERT_EQ(call(a.data(), b.data(), out, len), status(av, bv)) << what << " len " << len;
      for (int i = 0; i < len; ++i)
        ASSERT_TRUE(qtest::sameBits(out[i], ref(av[i], bv[i])))
            << what << " len " << len << " offsets " << so << "/" << bo << "/" << dso << " at " << i
            << ": " << av[i] << ", " << bv[i] << " gave " << out[i] << " want "
            << ref(av[i], bv[i]);
      ASSERT_TRUE(a.guardsIntact() && b.guardsIntact() && d.guardsIntact()) << what;
    }
  });
}

template <typename T>
qelStatus okStatus(const std::vector<T>&, const std::vector<T>&) {
  return qelStatusOk;
}

// ------------------------------------------------------------ sums and products

TEST(ArithFloat, AddSubMulEveryLayout) {
  checkBinary<float>(
      "Add_32f_I", true,
      [](const float* s, float*, float* sd, int n) { return qelsAdd_32f_I(s, sd, n); },
      [](float s, float d) { return d + s; }, okStatus<float>);
  checkBinary<double>(
      "Add_64f_I", true,
      [](const double* s, double*, double* sd, int n) { return qelsAdd_64f_I(s, sd, n); },
      [](double s, double d) { return d + s; }, okStatus<double>);
  checkBinary<float>(
      "Sub_32f_I", true,
      [](const float* s, float*, float* sd, int n) { return qelsSub_32f_I(s, sd, n); },
      [](float s, float d) { return d - s; }, okStatus<float>);
  checkBinary<double>(
      "Sub_64f_I", true,
      [](const double* s, double*, double* sd, int n) { return qelsSub_64f_I(s, sd, n); },
      [](double s, double d) { return d - s; }, okStatus<double>);
  checkBinary<float>(
      "Mul_32f", false,
      [](const float* a, float* b, float* d, int n) { return qelsMul_32f(a, b, d, n); },
      [](float a, float b) { return a * b; }, okStatus<float>);
  checkBinary<double>(
      "Abs_64f", false,
      [](const double* a, double*, double* d, int n) { return qelsAbs_64f(a, d, n); },
      [](double a, double) { return std::fabs(a); }, okStatus<double>);
}

// The sign bit goes, the NaN payload stays.
TEST(ArithFloat, AbsClearsOnlyTheSignBit) {
  const double in[] = {-kNaN, -0.0, -kInf, -1e-310, 5.0};
  double out[5];
  ASSERT_EQ(qelsAbs_64f(in, out, 5), qelStatusOk);
  for (int i = 0; i < 5; ++i)
    EXPECT_EQ(std::bit_cast<uint64_t>(out[i]), std::bit_cast<uint64_t>(in[i]) & ~(1ull << 63));
}

// Constants: 1 copies (or returns at once in place), 0 clears, anything else
// multiplies; a divisor constant becomes its reciprocal once.
TEST(ArithFloat, ConstantsEveryLayoutAndSpecialValues) {
  for (float val : {2.5f, -0.75f, 1.0f, 0.0f, -0.0f, 3.0f, kInff, kNaNf}) {
    auto mulRef = [val](float a, float) {
      return val == 1.0f ? a : (val == 0.0f ? 0.0f : a * val);
    };
    checkBinary<float>(
        "MulC_32f", false,
        [val](const float* a, float*, float* d, int n) { return qelsMulC_32f(a, val, d, n); },
        mulRef, okStatus<float>);
    checkBinary<float>(
        "MulC_32f_I", true,
        [val](const float*, float*, float* sd, int n) { return qelsMulC_32f_I(val, sd, n); },
        [&](float, float b) { return mulRef(b, 0); }, okStatus<float>);
    checkBinary<float>(
        "AddC_32f", false,
        [val](const float* a, float*, float* d, int n) { return qelsAddC_32f(a, val, d, n); },
        [val](float a, float) { return val == 0.0f ? a : a + val; }, okStatus<float>);
    if (val != 0.0f) {
      const float r = 1.0f / val;
      auto divRef = [r](float a, float) { return r == 1.0f ? a : (r == 0.0f ? 0.0f : a * r); };
      checkBinary<float>(
          "DivC_32f", false,
          [val](const float* a, float*, float* d, int n) { return qelsDivC_32f(a, val, d, n); },
          divRef, okStatus<float>);
      checkBinary<float>(
          "DivC_32f_I", true,
          [val](const float*, float*, float* sd, int n) { return qelsDivC_32f_I(val, sd, n); },
          [&](float, float b) { return divRef(b, 0); }, okStatus<float>);
    }
  }
  for (double val : {2.5, -0.75, 1.0, 0.0, 3.0, kInf, kNaN}) {
    auto mulRef = [val](double a, double) { return val == 1.0 ? a : (val == 0.0 ? 0.0 : a * val); };
    checkBinary<double>(
        "MulC_64f", false,
        [val](const double* a, double*, double* d, int n) { return qelsMulC_64f(a, val, d, n); },
        mulRef, okStatus<double>);
    checkBinary<double>(
        "MulC_64f_I", true,
        [val](const double*, double*, double* sd, int n) { return qelsMulC_64f_I(val, sd, n); },
        [&](double, double b) { return mulRef(b, 0); }, okStatus<double>);
    if (val != 0.0) {
      const double r = 1.0 / val;
      auto divRef = [r](double a, double) { return r == 1.0 ? a : (r == 0.0 ? 0.0 : a * r); };
      checkBinary<double>(
          "DivC_64f", false,
          [val](const double* a, double*, double* d, int n) { return qelsDivC_64f(a, val, d, n); },
          divRef, okStatus<double>);
      checkBinary<double>(
          "DivC_64f_I", true,
          [val](const double*, double*, double* sd, int n) { return qelsDivC_64f_I(val, sd, n); },
          [&](double, double b) { return divRef(b, 0); }, okStatus<double>);
    }
  }
}

TEST(ArithFloat, MulCInPlaceOneKeepsNaNAndZeroClearsIt) {
  const uint64_t payload = 0x7FF8000000012345ull;
  double v[3] = {std::bit_cast<double>(payload), -kNaN, -0.0};
  ASSERT_EQ(qelsMulC_64f_I(1.0, v, 3), qelStatusOk);
  EXPECT_EQ(std::bit_cast<uint64_t>(v[0]), payload);
  EXPECT_TRUE(std::isnan(v[1]) && std::signbit(v[1]));
  EXPECT_EQ(std::bit_cast<uint64_t>(v[2]), 1ull << 63);
  ASSERT_EQ(qelsMulC_64f_I(0.0, v, 3), qelStatusOk);
  for (double x : v) EXPECT_EQ(std::bit_cast<uint64_t>(x), 0u);
  // Adding a zero constant is a copy: a negative zero stays negative.
  const float src[2] = {-0.0f, kNaNf};
  float dst[2];
  ASSERT_EQ(qelsAddC_32f(src, 0.0f, dst, 2), qelStatusOk);
  EXPECT_EQ(std::bit_cast<uint32_t>(dst[0]), 0x80000000u);
}

// Nearest even of p / 2^s (or p * 2^-s) saturated, from 64-bit arithmetic.
qel16s mul16Ref(qel16s a, qel16s b, int s) {
  const int64_t p = int64_t{a} * b;
  auto sat = [](int64_t v) {
    return static_cast<qel16s>(v < -32768 ? -32768 : (v > 32767 ? 32767 : v));
  };
  if (s > 30) return 0;
  if (s < -15) return sat(p > 0 ? 40000 : (p < 0 ? -40000 : 0));
  if (s <= 0) return sat(p * (int64_t{1} << -s));
  const int64_t d = int64_t{1} << s;
  int64_t q = p >= 0 ? p / d : -((-p + d - 1) / d);
  const int64_t rem = p - q * d;
  if (2 * rem > d || (2 * rem == d && (q & 1))) ++q;
  return sat(q);
}

TEST(ArithInt, Mul16sEveryFactorClassAndLayout) {
  std::vector<qel16s> baseA = {0, 1, -1, 3, -3, 32767, -32768, 181, -182, 255, 1000, -1000, 7};
  std::vector<qel16s> baseB = {5, 0, 32767, -32768, -32768, 2, 3, -1, 181, 129, -33, 7, 1};
  qtest::Rng rng(21);
  for (int i = 0; i < 70; ++i) {
    baseA.push_back(static_cast<qel16s>(rng.integer(-32768, 32767)));
    baseB.push_back(static_cast<qel16s>(rng.integer(i % 2 ? -300 : -32768, i % 2 ? 300 : 32767)));
  }
  for (int s : {0, 1, 2, 3, 8, 15, 16, 29, 30, 31, 45, -1, -2, -8, -15, -16, -40}) {
    qtest::forLayouts<qel16s, qel16s>([&](int len, size_t so, size_t dso) {
      Guarded<qel16s> a(len, so), b(len, dso), d(len, dso);
      a.assign(cycled(baseA, len, len));
      b.assign(cycled(baseB, len, len));
      ASSERT_EQ(qelsMul_16s_Sfs(a.data(), b.data(), d.data(), len, s), qelStatusOk);
      for (int i = 0; i < len; ++i)
        ASSERT_EQ(d[i], mul16Ref(a[i], b[i], s))
            << "factor " << s << " len " << len << " " << a[i] << "*" << b[i];
      ASSERT_TRUE(d.guardsIntact());
    });
  }
  // The reference's rounding against hand-worked cases.
  EXPECT_EQ(mul16Ref(3, 1, 1), 2);  // 1.5 -> 2
  EXPECT_EQ(mul16Ref(5, 1, 1), 2);  // 2.5 -> 2
  EXPECT_EQ(mul16Ref(-5, 1, 1), -2);
  EXPECT_EQ(mul16Ref(-7, 1, 1), -4);
  EXPECT_EQ(mul16Ref(6, 1, 2), 2);  // 1.5 -> 2
  EXPECT_EQ(mul16Ref(-32768, -32768, 15), 32767);
  EXPECT_EQ(mul16Ref(-32768, -32768, 16), 16384);
  EXPECT_EQ(mul16Ref(3, -1, -16), -32768);
}

// ------------------------------------------------------------ quotients

float refinedQuotient(float n, float d) {
  const float r = _mm_cvtss_f32(_mm_rcp_ss(_mm_set_ss(d)));
  const float e = 1.0f - d * r;
  const float q = n * r;
  return q + e * (q + e * q);
}

float zeroDivisorQuotient(float n) { return n > 0 ? kInff : (n < 0 ? -kInff : kNaNf); }

// One stretch: head to the 16-byte boundary of `dstAddr`, groups of four
// (a group holding a zero divisor divides exactly), tail; all scalar below
// 11 elements.
void divStretchRef(const float* den, const float* num, float* out, const float* dstAddr, int len) {
  auto scalar = [&](int i) {
    out[i] = den[i] == 0 ? zeroDivisorQuotient(num[i]) : refinedQuotient(num[i], den[i]);
  };
  int i = 0;
  if (len >= 11) {
    const int head =
        std::min<int>(len, ((16 - (reinterpret_cast<uintptr_t>(dstAddr) & 15)) & 15) / 4);
    for (; i < head; ++i) scalar(i);
    for (; i + 4 <= len; i += 4) {
      bool zero = false;
      for (int k = i; k < i + 4; ++k) zero |= den[k] == 0;
      for (int k = i; k < i + 4; ++k)
        out[k] = !zero ? refinedQuotient(num[k], den[k])
                       : (den[k] == 0 ? zeroDivisorQuotient(num[k]) : num[k] / den[k]);
    }
  }
  for (; i < len; ++i) scalar(i);
}

// Two stretches of len / 2 and the rest from the parallel length on.
void divRef(const float* den, const float* num, float* out, const float* dst, int len, int from) {
  if (len < from) return divStretchRef(den, num, out, dst, len);
  const int half = len / 2;
  divStretchRef(den, num, out, dst, half);
  divStretchRef(den + half, num + half, out + half, dst + half, len - half);
}

template <typename T>
qelStatus divStatus(const std::vector<T>& den, const std::vector<T>&) {
  for (T d : den)
    if (d == 0) return qelStatusWarnDivZero;
  return qelStatusOk;
}

TEST(ArithDivide, Div32fMatchesTheRefinedReciprocalEveryLayout) {
  const auto den = specialsAndRandom<float>(31), num = specialsAndRandom<float>(32);
  qtest::forLayouts<float, float>([&](int len, size_t so, size_t dso) {
    for (bool inPlace : {false, true}) {
      Guarded<float> d(len, so), n(len, dso), out(len, dso);
      d.assign(cycled(den, len, len));
      n.assign(cycled(num, len, 2 * len));
      const auto dv = d.vec(), nv = n.vec();
      float* dst = inPlace ? n.data() : out.data();
      std::vector<float> want(len);
      divRef(dv.data(), nv.data(), want.data(), dst, len, 4096);
      const qelStatus st = inPlace ? qelsDiv_32f_I(d.data(), n.data(), len)
                                   : qelsDiv_32f(d.data(), n.data(), out.data(), len);
      ASSERT_EQ(st, divStatus(dv, nv)) << len;
      ASSERT_TRUE(qtest::sameArrays(dst, want.data(), len))
          << "len " << len << " " << so << "/" << dso;
      ASSERT_TRUE(d.guardsIntact() && n.guardsIntact() && out.guardsIntact());
    }
  });
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
  Guarded<float> den(16), num(16), out(16);
  den.assign({3, -0.0f, 0, 7, 1, 1, 1, 1, 1, 1, 1, 1, 0, 5, -0.0f, 3});
  num.assign({1, 2, -2, 1, 1, 2, 3, 4, 5, 6, 7, 8, 0, 1, kNaNf, 10});
  ASSERT_EQ(qelsDiv_32f(den.data(), num.data(), out.data(), 16), qelStatusWarnDivZero);
  EXPECT_EQ(out[0], 1.0f / 3.0f);
  EXPECT_EQ(out[1], kInff);
  EXPECT_EQ(out[2], -kInff);
  EXPECT_EQ(out[3], 1.0f / 7.0f);
  EXPECT_TRUE(std::isnan(out[12]));
  EXPECT_EQ(out[13], 1.0f / 5.0f);
  EXPECT_TRUE(std::isnan(out[14]));
  EXPECT_EQ(out[15], 10.0f / 3.0f);
  for (int i = 4; i < 12; ++i) EXPECT_NEAR(out[i], num[i], 1e-6f);
  EXPECT_TRUE(out.guardsIntact());
}

TEST(ArithDivide, Div64fTrueDivisionEveryLayout) {
  checkBinary<double>(
      "Div_64f", false,
      [](const double* a, double* b, double* d, int n) { return qelsDiv_64f(a, b, d, n); },
      [](double den, double num) { return num / den; }, divStatus<double>);
}

qelStatus sqrtStatus(const std::vector<double>&, const std::vector<double>& v) {
  for (double x : v)
    if (x < 0) return qelStatusWarnSqrtNeg;
  return qelStatusOk;
}

TEST(ArithRoot, Sqrt64fEveryLayout) {
  checkBinary<double>(
      "Sqrt_64f_I", true,
      [](const double*, double*, double* sd, int n) { return qelsSqrt_64f_I(sd, n); },
      [](double, double x) { return std::sqrt(x); }, sqrtStatus);
  double v[4] = {-0.0, kNaN, 2.0, -kInf};
  ASSERT_EQ(qelsSqrt_64f_I(v, 3), qelStatusOk);  // -0 and NaN are not negative
  EXPECT_TRUE(std::signbit(v[0]) && v[0] == 0);
  EXPECT_EQ(v[2], std::sqrt(2.0));
  ASSERT_EQ(qelsSqrt_64f_I(v + 3, 1), qelStatusWarnSqrtNeg);
  EXPECT_TRUE(std::isnan(v[3]));
}

// ------------------------------------------------------------ two threads

// Lengths just below and at each kernel's parallel length: a zero divisor
// or negative root placed only in the second half must still be reported,
// and the results must be those of the stretches.
TEST(ArithParallel, SecondHalfReportsAndResultsMatch) {
  ASSERT_EQ(ownGetNumThreads(), 2) << "run with OMP_NUM_THREADS=2";
  qtest::Rng rng(51);
  for (int len : {4095, 4096, 4097, 9001}) {
    for (int where : {-1, 5, len - 1, len / 2 + 1, len / 2 - 1}) {
      Guarded<float> d(len, 4), n(len), out(len, 8);
      d.assign(rng.vec<float>(len, 0.5, 8.0));
      n.assign(rng.vec<float>(len, -8.0, 8.0));
      if (where >= 0) d[where] = 0.0f;
      const auto dv = d.vec(), nv = n.vec();
      std::vector<float> want(len);
      divRef(dv.data(), nv.data(), want.data(), out.data(), len, 4096);
      ASSERT_EQ(qelsDiv_32f(d.data(), n.data(), out.data(), len),
                where >= 0 ? qelStatusWarnDivZero : qelStatusOk)
          << len << " zero at " << where;
      ASSERT_TRUE(qtest::sameArrays(out.data(), want.data(), len)) << len;
      ASSERT_TRUE(out.guardsIntact());
    }
  }
  for (int len : {1023, 1024, 1025, 5000}) {
    for (int where : {-1, 3, len - 1, len / 2 + 1}) {
      Guarded<double> d(len, 8), n(len), out(len);
      d.assign(rng.vec<double>(len, 0.5, 8.0));
      n.assign(rng.vec<double>(len, -8.0, 8.0));
      if (where >= 0) d[where] = 0.0;
      ASSERT_EQ(qelsDiv_64f(d.data(), n.data(), out.data(), len),
                where >= 0 ? qelStatusWarnDivZero : qelStatusOk)
          << len << " zero at " << where;
      for (int i = 0; i < len; ++i) ASSERT_TRUE(qtest::sameBits(out[i], n[i] / d[i])) << i;
    }
  }
  for (int len : {511, 512, 513, 3001}) {
    for (int where : {-1, 0, len - 1, len / 2}) {
      Guarded<double> v(len, 8);
      v.assign(rng.vec<double>(len, 0.0, 100.0));
      if (where >= 0) v[where] = -4.0;
      const auto in = v.vec();
      ASSERT_EQ(qelsSqrt_64f_I(v.data(), len), where >= 0 ? qelStatusWarnSqrtNeg : qelStatusOk)
          << len << " negative at " << where;
      for (int i = 0; i < len; ++i) ASSERT_TRUE(qtest::sameBits(v[i], std::sqrt(in[i]))) << i;
      ASSERT_TRUE(v.guardsIntact());
    }
  }
}

// ------------------------------------------------------------ errors

TEST(ArithErrors, CheckOrderAndNothingWritten) {
  Guarded<float> f1(16), f2(16), f3(16);
  Guarded<double> d1(16), d2(16), d3(16);
  Guarded<qel16s> s1(16), s2(16), s3(16);
  auto P = [](bool null, auto* p) { return null ? nullptr : p; };
  // run(nullMask, len): bit k of nullMask nulls pointer argument k.
  struct Call {
    const char* name;
    int pointers;
    std::function<qelStatus(int, int)> run;
  };
  const std::vector<Call> calls = {
      {"Add_32f_I", 2,
       [&](int m, int n) { return qelsAdd_32f_I(P(m & 1, f1.data()), P(m & 2, f2.data()), n); }},
      {"Add_64f_I", 2,
       [&](int m, int n) { return qelsAdd_64f_I(P(m & 1, d1.data()), P(m & 2, d2.data()), n); }},
      {"Sub_32f_I", 2,
       [&](int m, int n) { return qelsSub_32f_I(P(m & 1, f1.data()), P(m & 2, f2.data()), n); }},
      {"Sub_64f_I", 2,
       [&](int m, int n) { return qelsSub_64f_I(P(m & 1, d1.data()), P(m & 2, d2.data()), n); }},
      {"AddC_32f", 2,
       [&](int m, int n) {
         return qelsAddC_32f(P(m & 1, f1.data()), 2.0f, P(m & 2, f2.data()), n);
       }},
      {"Mul_32f", 3,
       [&](int m, int n) {
         return qelsMul_32f(P(m & 1, f1.data()), P(m & 2, f2.data()), P(m & 4, f3.data()), n);
       }},
      {"Mul_16s_Sfs", 3,
       [&](int m, int n) {
         return qelsMul_16s_Sfs(P(m & 1, s1.data()), P(m & 2, s2.data()), P(m & 4, s3.data()), n,
                                31);
       }},
      {"MulC_32f", 2,
       [&](int m, int n) {
         return qelsMulC_32f(P(m & 1, f1.data()), 0.0f, P(m & 2, f2.data()), n);
       }},
      {"MulC_64f", 2,
       [&](int m, int n) {
         return qelsMulC_64f(P(m & 1, d1.data()), 0.0, P(m & 2, d2.data()), n);
       }},
      {"MulC_32f_I", 1, [&](int m, int n) { return qelsMulC_32f_I(0.0f, P(m & 1, f1.data()), n); }},
      {"MulC_64f_I", 1, [&](int m, int n) { return qelsMulC_64f_I(0.0, P(m & 1, d1.data()), n); }},
      {"Div_32f", 3,
       [&](int m, int n) {
         return qelsDiv_32f(P(m & 1, f1.data()), P(m & 2, f2.data()), P(m & 4, f3.data()), n);
       }},
      {"Div_64f", 3,
       [&](int m, int n) {
         return qelsDiv_64f(P(m & 1, d1.data()), P(m & 2, d2.data()), P(m & 4, d3.data()), n);
       }},
      {"Div_32f_I", 2,
       [&](int m, int n) { return qelsDiv_32f_I(P(m & 1, f1.data()), P(m & 2, f2.data()), n); }},
      {"DivC_32f", 2,
       [&](int m, int n) {
         return qelsDivC_32f(P(m & 1, f1.data()), 0.0f, P(m & 2, f2.data()), n);
       }},
      {"DivC_64f", 2,
       [&](int m, int n) {
         return qelsDivC_64f(P(m & 1, d1.data()), 0.0, P(m & 2, d2.data()), n);
       }},
      {"DivC_32f_I", 1, [&](int m, int n) { return qelsDivC_32f_I(0.0f, P(m & 1, f1.data()), n); }},
      {"DivC_64f_I", 1, [&](int m, int n) { return qelsDivC_64f_I(0.0, P(m & 1, d1.data()), n); }},
      {"Sqrt_64f_I", 1, [&](int m, int n) { return qelsSqrt_64f_I(P(m & 1, d1.data()), n); }},
      {"Abs_64f", 2,
       [&](int m, int n) { return qelsAbs_64f(P(m & 1, d1.data()), P(m & 2, d2.data()), n); }},
  };
  auto untouched = [&] {
    return f1.untouched() && f2.untouched() && f3.untouched() && d1.untouched() && d2.untouched() &&
           d3.untouched() && s1.untouched() && s2.untouched() && s3.untouched();
  };
  for (const Call& c : calls) {
    const int all = (1 << c.pointers) - 1;
    for (int m = 1; m <= all; ++m) EXPECT_EQ(c.run(m, 8), qelStatusNullPtr) << c.name << " " << m;
    EXPECT_EQ(c.run(all, 0), qelStatusNullPtr) << c.name;  // the null check comes first
    EXPECT_EQ(c.run(1, -1), qelStatusNullPtr) << c.name;
    EXPECT_EQ(c.run(0, 0), qelStatusSize) << c.name;
    EXPECT_EQ(c.run(0, -5), qelStatusSize) << c.name;
    EXPECT_TRUE(untouched()) << c.name;
  }
  // A zero divisor constant comes after both checks and writes nothing.
  EXPECT_EQ(qelsDivC_32f(f1.data(), 0.0f, f2.data(), 8), qelStatusDivByZero);
  EXPECT_EQ(qelsDivC_64f(d1.data(), -0.0, d2.data(), 8), qelStatusDivByZero);
  EXPECT_EQ(qelsDivC_32f_I(0.0f, f1.data(), 8), qelStatusDivByZero);
  EXPECT_EQ(qelsDivC_64f_I(0.0, d1.data(), 8), qelStatusDivByZero);
  EXPECT_TRUE(untouched());
  // Each pointer on its own, with a valid length, is caught.
  EXPECT_EQ(qelsMul_32f(f1.data(), f2.data(), nullptr, 8), qelStatusNullPtr);
  EXPECT_EQ(qelsDiv_32f(f1.data(), nullptr, f3.data(), 8), qelStatusNullPtr);
  EXPECT_EQ(qelsMul_16s_Sfs(s1.data(), s2.data(), nullptr, 8, 0), qelStatusNullPtr);
  EXPECT_TRUE(untouched());
}

}  // namespace
