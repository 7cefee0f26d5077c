// Logarithms: element-wise single precision, the integer flavour with its
// nearest-integer table and float path, and the sum of logarithms.
#include <xmmintrin.h>

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstdint>

#include "base/base.h"
#include "frame/frame.h"
#include "test_support.h"

namespace {

using qtest::Guarded;

float fromBits(uint32_t b) { return std::bit_cast<float>(b); }

// ln x in double, rounded once to single: what the single logarithm is
// measured against.
float refLn(float x) { return static_cast<float>(std::log(static_cast<double>(x))); }

float lnOne(float x) {
  float v = x;
  qelsLn_32f_I(&v, 1);
  return v;
}

// --------------------------------------------------------------- qelsLn_32f_I

// Every 61st positive finite bit pattern (denormals included), in calls of
// 4093 elements: within 1 ulp of the double logarithm rounded to single.
TEST(Ln32f, WithinOneUlpOverThePositiveRange) {
  std::vector<float> buf;
  int64_t worst = 0;
  float worstX = 0;
  for (uint64_t b = 1; b < 0x7f800000u; b += 61) buf.push_back(fromBits(static_cast<uint32_t>(b)));
  for (float x : {FLT_MAX, FLT_MIN, fromBits(1), fromBits(0x007fffff), 1.0f, 2.0f, 0.5f})
    buf.push_back(x);
  std::vector<float> out = buf;
  for (size_t i = 0; i < out.size(); i += 4093) {
    const int n = static_cast<int>(std::min<size_t>(4093, out.size() - i));
    ASSERT_EQ(qelsLn_32f_I(out.data() + i, n), qelStatusOk);
  }
  for (size_t i = 0; i < buf.size(); ++i) {
    const int64_t d = qtest::ulpDistance(out[i], refLn(buf[i]));
    if (d > worst) worst = d, worstX = buf[i];
  }
  EXPECT_LE(worst, 1) << "at x = " << worstX;
  // Near 1 the result is small and the relative accuracy matters most.
  int64_t worstNearOne = 0;
  for (uint32_t b = 0x3f700000u; b < 0x3f880000u; ++b) {
    const int64_t d = qtest::ulpDistance(lnOne(fromBits(b)), refLn(fromBits(b)));
    if (d > worstNearOne) worstNearOne = d;
  }
  EXPECT_LE(worstNearOne, 1);
}

TEST(Ln32f, SpecialValues) {
  struct Case {
    float x;
    uint32_t want;
    qelStatus status;
  };
  const Case table[] = {
      {1.0f, 0x00000000u, qelStatusOk},
      {0.0f, 0xff800000u, qelStatusWarnLogZero},
      {-0.0f, 0xff800000u, qelStatusWarnLogZero},
      {-1.0f, 0xffc00000u, qelStatusWarnLogNeg},
      {-fromBits(1), 0xffc00000u, qelStatusWarnLogNeg},
      {-INFINITY, 0xffc00000u, qelStatusWarnLogNeg},
      {INFINITY, 0x7f800000u, qelStatusOk},
      {fromBits(0x7fc12345u), 0x7fc12345u, qelStatusOk},  // NaNs pass unchanged
      {fromBits(0xffc00001u), 0xffc00001u, qelStatusOk},
  };
  for (const Case& c : table) {
    // The value in every lane position and in the scalar tail.
    for (int len : {1, 4, 7}) {
      for (int at = 0; at < len; ++at) {
        std::vector<float> v(len, 2.0f);
        v[at] = c.x;
        EXPECT_EQ(qelsLn_32f_I(v.data(), len), c.status) << c.x;
        EXPECT_EQ(std::bit_cast<uint32_t>(v[at]), c.want) << c.x << " at " << at << "/" << len;
        for (int k = 0; k < len; ++k)
          if (k != at) EXPECT_EQ(v[k], refLn(2.0f));
      }
    }
  }
}

// Every length class (passes of 256, lane groups, tails) and alignment, with
// bad elements planted: only the first bad element decides the status, every
// element is written and gets the arithmetic it gets alone, within 1 ulp.
// Bad elements planted in positive data, across passes of 256 and lane
// groups, and the status the first of them decides (a NaN is no bad
// element: it passes). Shared by the single and the integer logarithm.
struct FlagCase {
  int len;
  std::vector<std::pair<int, double>> bad;
  qelStatus want;
};
const std::vector<FlagCase> kFlagCases = {
    {2, {{0, -1}, {1, 0}}, qelStatusWarnLogNeg},
    {2, {{0, 0}, {1, -1}}, qelStatusWarnLogZero},
    {5, {{4, INT32_MIN}}, qelStatusWarnLogNeg},
    {8, {{2, 0}, {1, -3}}, qelStatusWarnLogNeg},
    {8, {{3, 0}, {2, NAN}, {5, -3}}, qelStatusWarnLogZero},
    {600, {{300, 0}, {500, -1}}, qelStatusWarnLogZero},
    {600, {{255, -1}, {256, 0}}, qelStatusWarnLogNeg},
    {600, {{256, -1}, {599, 0}}, qelStatusWarnLogNeg},
    {600, {{599, 0}}, qelStatusWarnLogZero},
    {600, {{512, NAN}}, qelStatusOk},
    {700, {{257, -5}, {600, 0}}, qelStatusWarnLogNeg},
};

// Every length class (passes, lane groups, tails) and alignment, clean and
// with the bad elements: the status, and every element written with the
// arithmetic it gets alone, within 1 ulp.
TEST(Ln32f, FirstFlagWinsOverLengthsAndAlignment) {
  std::vector<FlagCase> table = kFlagCases;
  for (int len : {1, 2, 3, 4, 5, 7, 8, 15, 16, 17, 255, 256, 257, 511, 512, 513, 1000})
    table.push_back({len, {}, qelStatusOk});
  for (const FlagCase& c : table) {
    for (size_t mis : {0, 4, 8, 12}) {
      Guarded<float> g(c.len, mis);
      qtest::Rng rng(c.len);
      for (int i = 0; i < c.len; ++i) g[i] = std::exp(rng.uniform(-80.0f, 80.0f));
      for (auto [at, x] : c.bad) g[at] = static_cast<float>(x);
      const std::vector<float> in = g.vec();
      ASSERT_EQ(qelsLn_32f_I(g.data(), c.len), c.want) << c.len << " misalign " << mis;
      for (int i = 0; i < c.len; ++i) {
        ASSERT_TRUE(qtest::sameBits(g[i], lnOne(in[i]))) << c.len << "/" << mis << " at " << i;
        if (in[i] > 0) ASSERT_LE(qtest::ulpDistance(g[i], refLn(in[i])), 1) << in[i];
      }
      EXPECT_TRUE(g.guardsIntact());
    }
  }
}

// ------------------------------------------------------------- qelsLn_32s_Sfs

constexpr qel32s kBounds[21] = {2,         5,         13,       34,      91,       245,
                                666,       1809,      4915,     13360,   36316,    98716,
                                268338,    729417,    1982760,  5389699, 14650720, 39824785,
                                108254988, 294267567, 799902178};

// The nearest integer of ln x, from the double logarithm.
int nearestLn(qel32s x) {
  return static_cast<int>(std::floor(std::log(static_cast<double>(x)) + 0.5));
}

TEST(Ln32s, BoundTableIsTheNearestInteger) {
  for (int n = 1; n <= 21; ++n) {
    EXPECT_EQ(nearestLn(kBounds[n - 1]), n);
    EXPECT_EQ(nearestLn(kBounds[n - 1] - 1), n - 1);
  }
}

// Reference of the non-negative factor: nearest integer of ln x, shifted.
qel32s refLn32sTree(qel32s x, int sf) {
  if (x <= 0) return INT32_MIN;
  const int n = nearestLn(x);
  return sf > 31 ? 0 : n >> sf;
}

// Reference of the negative factor: the single logarithm of float(x), times
// 2^(-sf) in single precision, rounded to nearest even and saturated.
qel32s refLn32sFloat(qel32s x, int sf) {
  if (x <= 0) return INT32_MIN;
  const float y = lnOne(static_cast<float>(x)) * GetScale_32s32f(sf);
  if (y != y) return 0;
  if (y >= 2147483648.0f) return INT32_MAX;
  return static_cast<qel32s>(std::nearbyint(y));  // the test runs in round-to-nearest
}

std::vector<qel32s> ln32sInputs() {
  std::vector<qel32s> v = {1, 2, 3, 4, INT32_MAX, INT32_MAX - 1, 1 << 30};
  for (qel32s b : kBounds) v.insert(v.end(), {b - 1, b, b + 1});
  qtest::Rng rng(11);
  for (int i = 0; i < 300; ++i) v.push_back(static_cast<qel32s>(std::exp(rng.uniformD(0.0, 21.4))));
  return v;
}

TEST(Ln32s, BothPathsMatchTheirReferences) {
  const std::vector<qel32s> in = ln32sInputs();
  const int len = static_cast<int>(in.size());
  for (int sf : {0, 1, 2, 3, 4, 5, 31, 40, -1, -2, -8, -16, -26, -27, -28, -127, -128, -300}) {
    for (size_t mis : {0, 4}) {
      Guarded<qel32s> src(len, mis), dst(len, mis);
      src.assign(in);
      ASSERT_EQ(qelsLn_32s_Sfs(src.data(), dst.data(), len, sf), qelStatusOk);
      for (int i = 0; i < len; ++i) {
        const qel32s want = sf >= 0 ? refLn32sTree(in[i], sf) : refLn32sFloat(in[i], sf);
        ASSERT_EQ(dst[i], want) << "x " << in[i] << " sf " << sf;
        const double exact = std::log(static_cast<double>(in[i])) * std::ldexp(1.0, -sf);
        if (sf < 0 && exact < 2147483000.0) {
          // Against the double logarithm: the single log is within 1 ulp,
          // float(x) within 2^-24 relative, then half a unit of rounding.
          const double lnf = std::log(static_cast<double>(in[i]));
          const double tol =
              0.5 +
              std::ldexp(1.0, -sf) * (2.0 * std::ldexp(1.0, std::ilogb(std::max(lnf, 1e-30)) - 23) +
                                      std::ldexp(1.0, -24));
          ASSERT_LE(std::fabs(dst[i] - exact), tol) << in[i] << " sf " << sf;
        }
      }
      EXPECT_TRUE(dst.guardsIntact());
      // In place gives the same.
      Guarded<qel32s> io(len, mis);
      io.assign(in);
      ASSERT_EQ(qelsLn_32s_ISfs(io.data(), len, sf), qelStatusOk);
      EXPECT_TRUE(qtest::sameArrays(io.data(), dst.data(), len));
    }
  }
}

// Hand values: factor 1 halves, -1 doubles; saturation at the top.
TEST(Ln32s, ScaleFactorSignsAndSaturation) {
  const qel32s x[3] = {403, 162755, 2147483647};  // ln: 6.0, 12.0, 21.49
  const std::pair<int, std::vector<qel32s>> table[] = {
      {0, {6, 12, 21}}, {1, {3, 6, 10}}, {-1, {12, 24, 43}}};
  std::vector<qel32s> y(3);
  for (const auto& [sf, want] : table) {
    ASSERT_EQ(qelsLn_32s_Sfs(x, y.data(), 3, sf), qelStatusOk);
    EXPECT_EQ(y, want) << sf;
  }
  ASSERT_EQ(qelsLn_32s_Sfs(x, y.data(), 3, -27), qelStatusOk);
  EXPECT_EQ(y[2], INT32_MAX);
}

TEST(Ln32s, NonPositiveAndFirstFlag) {
  for (const FlagCase& c : kFlagCases) {
    if (std::any_of(c.bad.begin(), c.bad.end(), [](auto b) { return std::isnan(b.second); }))
      continue;  // integers have no NaN
    for (int sf : {0, 2, -3}) {
      std::vector<qel32s> in(c.len, 1000), out(c.len);
      for (auto [at, x] : c.bad) in[at] = static_cast<qel32s>(x);
      EXPECT_EQ(qelsLn_32s_Sfs(in.data(), out.data(), c.len, sf), c.want);
      for (int i = 0; i < c.len; ++i)
        EXPECT_EQ(out[i], sf >= 0 ? refLn32sTree(in[i], sf) : refLn32sFloat(in[i], sf));
      EXPECT_EQ(qelsLn_32s_ISfs(in.data(), c.len, sf), c.want);
      EXPECT_EQ(in, out);
    }
  }
}

// The float path rounds to nearest whatever the caller's mode, and gives the
// mode back.
TEST(Ln32s, RoundingModeIsForcedAndRestored) {
  const std::vector<qel32s> in = ln32sInputs();
  const int len = static_cast<int>(in.size());
  std::vector<qel32s> want(len), got(len);
  ASSERT_EQ(qelsLn_32s_Sfs(in.data(), want.data(), len, -5), qelStatusOk);
  const unsigned saved = _mm_getcsr();
  _mm_setcsr((saved & ~_MM_ROUND_MASK) | _MM_ROUND_DOWN);
  const qelStatus st = qelsLn_32s_Sfs(in.data(), got.data(), len, -5);
  const unsigned after = _mm_getcsr();
  _mm_setcsr(saved);
  EXPECT_EQ(st, qelStatusOk);
  EXPECT_EQ(after & _MM_ROUND_MASK, static_cast<unsigned>(_MM_ROUND_DOWN));
  EXPECT_EQ(got, want);
}

// ------------------------------------------------------------ qelsSumLn_*

// Sum of logarithms in long double, and the sum of their magnitudes.
template <typename T>
std::pair<long double, long double> refSumLn(const std::vector<T>& v) {
  long double s = 0, m = 0;
  for (T x : v) {
    const long double l = std::log(static_cast<long double>(x));
    s += l;
    m += std::fabs(l);
  }
  return {s, m};
}

// Error bound of the double result: each pass multiplies at most 256
// mantissas a lane (a relative error of 2^-53 each becomes an absolute one in
// the logarithm), each pass logarithm is within a few ulps of its magnitude,
// and P pass results added one after the other can lose (P - 1) half-ulps of
// the running sum: |err| <= 2^-52 * (n + (4 + P) * sum |ln x|), P = ceil(n / 512).
template <typename T>
long double sumLnBound(const std::vector<T>& v, long double mag) {
  const long double passes = static_cast<long double>((v.size() + 511) / 512);
  return std::ldexp(1.0L, -52) * (static_cast<long double>(v.size()) + (4 + passes) * mag);
}

template <typename T>
std::vector<T> positiveData(int n, uint32_t seed, double lo, double hi) {
  qtest::Rng rng(seed);
  std::vector<T> v(n);
  for (auto& x : v) x = static_cast<T>(std::exp(rng.uniformD(lo, hi)));
  return v;
}

TEST(SumLn, MatchesLongDoubleSum) {
  struct Case {
    double lo, hi;  // range of ln x
  };
  const Case ranges[] = {{-5, 5}, {1.0, 7.0}, {-700, 700}, {-0.01, 0.01}, {-80, 80}};
  for (int len : {1, 2, 3, 4, 5, 8, 100, 511, 512, 513, 1023, 1024, 1025, 5000}) {
    for (const Case& r : ranges) {
      for (size_t mis : {0, 8}) {
        const auto v = positiveData<double>(len, len * 3 + 1, r.lo, r.hi);
        Guarded<double> g(len, mis);
        g.assign(v);
        double got = 0;
        ASSERT_EQ(qelsSumLn_64f(g.data(), len, &got), qelStatusOk);
        const auto [want, mag] = refSumLn(v);
        EXPECT_LE(std::fabs(got - want), sumLnBound(v, mag))
            << len << " [" << r.lo << "," << r.hi << "]";
        if (r.lo >= 1.0)  // no cancellation: a few ulps of the result
          EXPECT_LE(qtest::ulpDistance(got, static_cast<double>(want)), 4) << len;
      }
      if (std::fabs(r.lo) > 85) continue;  // singles only hold up to e^88
      for (size_t mis : {0, 4}) {
        const auto v = positiveData<float>(len, len * 5 + 2, r.lo, r.hi);
        Guarded<float> g(len, mis);
        g.assign(v);
        float got = 0;
        ASSERT_EQ(qelsSumLn_32f(g.data(), len, &got), qelStatusOk);
        const auto [want, mag] = refSumLn(v);
        // Half an ulp of single for the final rounding, and the double bound.
        const long double tol =
            0.5L * std::ldexp(1.0L, std::ilogb(static_cast<float>(want)) - 23) + sumLnBound(v, mag);
        EXPECT_LE(std::fabs(got - want), tol) << len << " [" << r.lo << "," << r.hi << "]";
      }
    }
  }
}

// Denormals are split by their true exponent; the extremes of the range do
// not overflow a pass.
TEST(SumLn, DenormalsAndExtremes) {
  const std::vector<std::vector<double>> cases = {
      std::vector<double>(512, DBL_MAX),
      std::vector<double>(513, DBL_MIN),
      std::vector<double>(700, 0x1p-1074),
      {0x1p-1074, 0x1.8p-1060, DBL_MAX, 3.0, 0x1p-1030},
      std::vector<double>(1030, 1.9999999999999998),
  };
  for (const auto& v : cases) {
    double got;
    ASSERT_EQ(qelsSumLn_64f(v.data(), static_cast<int>(v.size()), &got), qelStatusOk);
    const auto [want, mag] = refSumLn(v);
    EXPECT_LE(std::fabs(got - want), sumLnBound(v, mag)) << v[0];
    EXPECT_LE(qtest::ulpDistance(got, static_cast<double>(want)), 4) << v[0];
  }
  const std::vector<std::vector<float>> fcases = {
      std::vector<float>(600, fromBits(1)),
      {fromBits(1), fromBits(0x007fffff), FLT_MAX, 2.0f, fromBits(0x00012345)},
      std::vector<float>(1030, FLT_MAX),
  };
  for (const auto& v : fcases) {
    float got;
    ASSERT_EQ(qelsSumLn_32f(v.data(), static_cast<int>(v.size()), &got), qelStatusOk);
    const auto [want, mag] = refSumLn(v);
    EXPECT_LE(qtest::ulpDistance(got, static_cast<float>(want)), 1) << v[0];
  }
}

// Zero gives +inf (+7), negative NaN (+8), NaN NaN (0); the first of them
// stops the scan, so a later one is never looked at.
TEST(SumLn, StopsAtTheFirstSpecialElement) {
  struct Case {
    int len;
    std::vector<std::pair<int, double>> special;
    qelStatus want;
    uint64_t bits64;
    uint32_t bits32;
  };
  const uint64_t inf64 = 0x7ff0000000000000ull, nan64 = 0xfff8000000000000ull;
  const uint32_t inf32 = 0x7f800000u, nan32 = 0xffc00000u;
  const Case table[] = {
      {1, {{0, 0.0}}, qelStatusWarnLogZero, inf64, inf32},
      {1, {{0, -0.0}}, qelStatusWarnLogZero, inf64, inf32},
      {1, {{0, -2.0}}, qelStatusWarnLogNeg, nan64, nan32},
      {1, {{0, -INFINITY}}, qelStatusWarnLogNeg, nan64, nan32},
      {1, {{0, NAN}}, qelStatusOk, nan64, nan32},
      {6, {{2, 0.0}, {3, -1.0}}, qelStatusWarnLogZero, inf64, inf32},
      {6, {{2, -1.0}, {3, 0.0}}, qelStatusWarnLogNeg, nan64, nan32},
      {6, {{1, NAN}, {4, 0.0}}, qelStatusOk, nan64, nan32},
      {6, {{5, 0.0}}, qelStatusWarnLogZero, inf64, inf32},
      {1500, {{700, 0.0}, {1400, -3.0}}, qelStatusWarnLogZero, inf64, inf32},
      {1500, {{511, -3.0}, {512, 0.0}}, qelStatusWarnLogNeg, nan64, nan32},
      {1500, {{1499, NAN}}, qelStatusOk, nan64, nan32},
      {1500, {{3, INFINITY}}, qelStatusOk, inf64, inf32},
      {1500, {{3, INFINITY}, {1000, 0.0}}, qelStatusWarnLogZero, inf64, inf32},
      {1500, {{3, INFINITY}, {1000, -1.0}}, qelStatusWarnLogNeg, nan64, nan32},
  };
  for (const Case& c : table) {
    std::vector<double> d(c.len, 1.5);
    std::vector<float> f(c.len, 1.5f);
    for (auto [at, x] : c.special) d[at] = x, f[at] = static_cast<float>(x);
    double sd = 0;
    float sf = 0;
    EXPECT_EQ(qelsSumLn_64f(d.data(), c.len, &sd), c.want) << c.len;
    EXPECT_EQ(std::bit_cast<uint64_t>(sd), c.bits64) << c.len;
    EXPECT_EQ(qelsSumLn_32f(f.data(), c.len, &sf), c.want) << c.len;
    EXPECT_EQ(std::bit_cast<uint32_t>(sf), c.bits32) << c.len;
  }
}

// Every logarithm: a null pointer first (even with a bad length), then the
// length; nothing written.
TEST(Logarithms, ArgumentErrorsWriteNothing) {
  Guarded<float> g(8), f(4), sf(1);
  Guarded<qel32s> src(8), dst(8);
  Guarded<double> d(4), sd(1);
  EXPECT_EQ(qelsLn_32f_I(nullptr, 8), qelStatusNullPtr);
  EXPECT_EQ(qelsLn_32f_I(nullptr, 0), qelStatusNullPtr);
  EXPECT_EQ(qelsLn_32f_I(g.data(), 0), qelStatusSize);
  EXPECT_EQ(qelsLn_32f_I(g.data(), -3), qelStatusSize);
  EXPECT_EQ(qelsLn_32s_Sfs(nullptr, dst.data(), 8, 0), qelStatusNullPtr);
  EXPECT_EQ(qelsLn_32s_Sfs(src.data(), nullptr, 8, 0), qelStatusNullPtr);
  EXPECT_EQ(qelsLn_32s_Sfs(src.data(), nullptr, 0, 0), qelStatusNullPtr);
  EXPECT_EQ(qelsLn_32s_Sfs(src.data(), dst.data(), 0, 0), qelStatusSize);
  EXPECT_EQ(qelsLn_32s_ISfs(nullptr, 0, 0), qelStatusNullPtr);
  EXPECT_EQ(qelsLn_32s_ISfs(dst.data(), 0, -1), qelStatusSize);
  EXPECT_EQ(qelsSumLn_64f(nullptr, 4, sd.data()), qelStatusNullPtr);
  EXPECT_EQ(qelsSumLn_64f(d.data(), 4, nullptr), qelStatusNullPtr);
  EXPECT_EQ(qelsSumLn_64f(nullptr, 0, sd.data()), qelStatusNullPtr);
  EXPECT_EQ(qelsSumLn_64f(d.data(), 0, sd.data()), qelStatusSize);
  EXPECT_EQ(qelsSumLn_32f(nullptr, 4, sf.data()), qelStatusNullPtr);
  EXPECT_EQ(qelsSumLn_32f(f.data(), 4, nullptr), qelStatusNullPtr);
  EXPECT_EQ(qelsSumLn_32f(f.data(), -1, sf.data()), qelStatusSize);
  EXPECT_TRUE(g.untouched() && f.untouched() && sf.untouched() && src.untouched());
  EXPECT_TRUE(dst.untouched() && d.untouched() && sd.untouched());
}

}  // namespace
