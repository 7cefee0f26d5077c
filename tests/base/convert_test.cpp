// Conversions between element types: every rounding mode with its ties,
// saturation limits, NaN, the clamps of the scale factors, the caller's
// rounding mode left as it was, and every head/group/tail layout.
#include <xmmintrin.h>

#include <cfenv>
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

// ------------------------------------------------------------ references

int clampFactor(int s, int lo, int hi) { return s < lo ? lo : (s > hi ? hi : s); }

// 2^(-s) as a single, +infinity at s <= -128 and 0 at s >= 150.
float powerF(int s) { return std::ldexp(1.0f, -clampFactor(s, -128, 150)); }

// Rounds an already scaled value the way the conversions define it: 0
// truncates, 1 nearest even, anything else adds 0.5 with the value's sign in
// the value's own precision and truncates.
template <typename T>
double roundRef(T v, int mode) {
  if (mode == 0) return std::trunc(static_cast<double>(v));
  if (mode == 1) return std::nearbyint(static_cast<double>(v));
  const T t = v + std::copysign(T(0.5), v);
  return std::trunc(static_cast<double>(t));
}

double clampTo(double v, double lo, double hi) { return v < lo ? lo : (v > hi ? hi : v); }

qel16s ref32f16s(float x, int mode, int s) {
  if (std::isnan(x)) return 0;
  float v = s == 0 ? x : x * powerF(s);
  if (!(v < 32767.0f)) v = 32767.0f;  // includes the NaN of 0 * infinity
  return static_cast<qel16s>(clampTo(roundRef(v, mode), -32768.0, 32767.0));
}

qel32s ref32f32s(float x, int mode, int s) {
  if (std::isnan(x)) return 0;
  const float v = s == 0 ? x : x * powerF(s);
  if (std::isnan(v)) return INT32_MIN;  // 0 * infinity converts as the NaN it is
  return static_cast<qel32s>(clampTo(roundRef(v, mode), -2147483648.0, 2147483647.0));
}

qel32s ref64f32s(double x, int mode, int s) {
  if (std::isnan(x)) return 0;
  double v = s == 0 ? x : x * static_cast<double>(powerF(s));
  if (!(v < 2147483647.0)) v = 2147483647.0;
  return static_cast<qel32s>(clampTo(roundRef(v, mode), -2147483648.0, 2147483647.0));
}

// Nearest even of x / 2^s, or x * 2^-s, saturated to 16 bits.
qel16s ref32s16s(qel32s x, int s) {
  if (s > 31) s = 31;
  if (s < -15) s = -15;
  if (s <= 0) return static_cast<qel16s>(clampTo(std::ldexp(double(x), -s), -32768.0, 32767.0));
  const int64_t d = int64_t{1} << s;
  int64_t q = x >= 0 ? x / d : -((-int64_t{x} + d - 1) / d);  // floor
  const int64_t rem = x - q * d;
  if (2 * rem > d || (2 * rem == d && (q & 1))) ++q;
  return static_cast<qel16s>(clampTo(double(q), -32768.0, 32767.0));
}

// ------------------------------------------------------------ data

// Ties, near-ties, limits and specials of the float to integer paths.
std::vector<float> floatCases() {
  std::vector<float> v = {0.0f,          -0.0f,         0.5f,           -0.5f,          1.5f,
                          -1.5f,         2.5f,          -2.5f,          3.5f,           -3.5f,
                          2.9f,          -2.9f,         0.49999997f,    -0.49999997f,   1e-40f,
                          -1e-40f,       8388607.5f,    -8388607.5f,    8388609.0f,     16777215.0f,
                          32766.5f,      32767.0f,      32767.5f,       32768.0f,       -32767.5f,
                          -32768.0f,     -32768.5f,     -32769.0f,      40000.0f,       -40000.0f,
                          2147483520.0f, 2147483648.0f, -2147483648.0f, -2147483904.0f, 3e9f,
                          -3e9f,         kInff,         -kInff,         kNaNf,          -kNaNf,
                          1e38f,         -1e38f,        123.456f,       -77.75f};
  qtest::Rng rng(11);
  for (int i = 0; i < 60; ++i) v.push_back(rng.uniform(-70000.0f, 70000.0f));
  for (int i = 0; i < 20; ++i) v.push_back(std::round(rng.uniform(-1000.0f, 1000.0f)) + 0.5f);
  return v;
}

std::vector<double> doubleCases() {
  std::vector<double> v = {0.0,           -0.0,          0.5,
                           -0.5,          1.5,           -1.5,
                           2.5,           -2.5,          0.49999999999999994,
                           2147483646.5,  2147483647.0,  2147483647.4,
                           2147483647.5,  2147483648.0,  -2147483648.0,
                           -2147483648.4, -2147483648.5, -2147483649.0,
                           1e300,         -1e300,        kInf,
                           -kInf,         kNaN,          4503599627370497.0,
                           123.456,       -77.75};
  qtest::Rng rng(12);
  for (int i = 0; i < 60; ++i) v.push_back(rng.uniformD(-3e9, 3e9));
  for (int i = 0; i < 20; ++i) v.push_back(std::round(rng.uniformD(-1e6, 1e6)) + 0.5);
  return v;
}

template <typename T>
std::vector<T> cycled(const std::vector<T>& base, int len, int shift) {
  std::vector<T> v(len);
  for (int i = 0; i < len; ++i) v[i] = base[(i + shift) % base.size()];
  return v;
}

// Runs `call(src, dst, len)` over every layout and compares with `ref` per
// element; checks the guards and the status.
template <typename TS, typename TD, typename Call, typename Ref>
void checkAllLayouts(const std::vector<TS>& base, Call call, Ref ref, const char* what) {
  qtest::forLayouts<TS, TD>([&](int len, size_t so, size_t dso) {
    Guarded<TS> src(len, so);
    Guarded<TD> dst(len, dso);
    src.assign(cycled(base, len, len));
    ASSERT_EQ(call(src.data(), dst.data(), len), qelStatusOk) << what;
    for (int i = 0; i < len; ++i) {
      const TD want = ref(src[i]);
      ASSERT_TRUE(qtest::sameBits(dst[i], want))
          << what << " len " << len << " offsets " << so << "/" << dso << " element " << i
          << " src " << +src[i] << ": got " << +dst[i] << ", want " << +want;
    }
    ASSERT_TRUE(dst.guardsIntact()) << what << " len " << len;
  });
}

const int kModes[] = {0, 1, 2, -1, 7};
const int kFactors[] = {0,   1,   -1,  3,   -3,  15,   -15,  16,   31,  -31,
                        126, 127, 149, 150, 151, -126, -127, -128, -129};

// ------------------------------------------------------------ tests

TEST(ConvertFloatToInt, EdgeValuesStatedForTheConversion) {
  struct Case {
    float x;
    int mode;
    qel16s want;
  } cases[] = {
      {2.5f, 1, 2},         {3.5f, 1, 4},           {40000.0f, 1, 32767}, {-40000.0f, 1, -32768},
      {kNaNf, 1, 0},        {2.9f, 0, 2},           {-2.9f, 0, -2},       {2.5f, 2, 3},
      {-2.5f, 2, -3},       {kNaNf, 0, 0},          {kNaNf, 2, 0},        {-0.5f, 1, 0},
      {32767.5f, 2, 32767}, {-32768.5f, 2, -32768}, {kInff, 0, 32767},    {-kInff, 1, -32768}};
  for (const Case& c : cases) {
    qel16s out = 99;
    ASSERT_EQ(qelsConvert_32f16s_Sfs(&c.x, &out, 1, c.mode, 0), qelStatusOk);
    EXPECT_EQ(out, c.want) << c.x << " mode " << c.mode;
  }
}

// The references against plain double-precision rounding where the float
// addition of ties-away is exact, and at the points where it is not.
TEST(ConvertFloatToInt, ReferenceAgreesWithDoubleRounding) {
  qtest::Rng rng(5);
  for (int i = 0; i < 2000; ++i) {
    const float x = rng.uniform(-4e6f, 4e6f);
    EXPECT_EQ(ref32f32s(x, 2, 0), std::lround(double(x))) << x;
    EXPECT_EQ(ref32f32s(x, 0, 0), static_cast<long>(double(x))) << x;
    const double r = std::nearbyint(double(x));
    EXPECT_LE(std::fabs(r - x), 0.5);
    EXPECT_EQ(ref32f32s(x, 1, 0), static_cast<long>(r)) << x;
  }
  // Where x + 0.5 rounds in float, ties-away rounds one step further.
  EXPECT_EQ(ref32f32s(0.49999997f, 2, 0), 1);
  EXPECT_EQ(ref32f32s(8388609.0f, 2, 0), 8388610);
  EXPECT_EQ(ref32s16s(3, 1), 2);
  EXPECT_EQ(ref32s16s(5, 1), 2);
  EXPECT_EQ(ref32s16s(7, 1), 4);
  EXPECT_EQ(ref32s16s(-3, 1), -2);
  EXPECT_EQ(ref32s16s(-5, 2), -1);
}

TEST(ConvertFloatToInt, Float16sEveryModeFactorAndLayout) {
  const auto base = floatCases();
  for (int mode : kModes)
    for (int s : kFactors)
      checkAllLayouts<qel32f, qel16s>(
          base,
          [&](const qel32f* p, qel16s* d, int n) {
            return qelsConvert_32f16s_Sfs(p, d, n, mode, s);
          },
          [&](float x) { return ref32f16s(x, mode, s); }, "32f16s");
}

TEST(ConvertFloatToInt, Float32sEveryModeFactorAndLayout) {
  const auto base = floatCases();
  for (int mode : kModes)
    for (int s : kFactors)
      checkAllLayouts<qel32f, qel32s>(
          base,
          [&](const qel32f* p, qel32s* d, int n) {
            return qelsConvert_32f32s_Sfs(p, d, n, mode, s);
          },
          [&](float x) { return ref32f32s(x, mode, s); }, "32f32s");
}

// The integer sums convert their float results in place: saturating and
// NaN elements among ordinary ones, across the stack stretches of 256, must
// give what the out-of-place conversion gives.
TEST(ConvertFloatToInt, Float32sInPlaceEqualsOutOfPlace) {
  qtest::Rng rng(77);
  for (int len : {5, 11, 300, 513}) {
    std::vector<qel32f> src = rng.vec<qel32f>(len, -3.0e9, 3.0e9);
    for (int i = 0; i < len; i += 7) src[i] = -196608.0f;
    src[len / 2] = kNaNf;
    src[len - 1] = 4.0e9f;
    for (int mode : {0, 1, 2})
      for (int s : {-1, 0, 1}) {
        std::vector<qel32s> want(len);
        for (int i = 0; i < len; ++i) want[i] = ref32f32s(src[i], mode, s);
        std::vector<qel32f> buf = src;
        ASSERT_EQ(qelsConvert_32f32s_Sfs(buf.data(), reinterpret_cast<qel32s*>(buf.data()), len,
                                         mode, s),
                  qelStatusOk);
        EXPECT_TRUE(qtest::sameArrays(reinterpret_cast<const qel32s*>(buf.data()), want.data(),
                                      len))
            << "len " << len << " mode " << mode << " factor " << s;
      }
  }
}

TEST(ConvertFloatToInt, Double32sEveryModeFactorAndLayout) {
  const auto base = doubleCases();
  for (int mode : kModes)
    for (int s : kFactors)
      checkAllLayouts<qel64f, qel32s>(
          base,
          [&](const qel64f* p, qel32s* d, int n) {
            return qelsConvert_64f32s_Sfs(p, d, n, mode, s);
          },
          [&](double x) { return ref64f32s(x, mode, s); }, "64f32s");
}

// A caller in another rounding mode gets the same results and keeps its
// mode; a NaN still gives 0 when the caller's invalid flag already stands.
TEST(ConvertFloatToInt, CallerRoundingModeIsKeptAndIgnored) {
  const auto base = floatCases();
  const auto dbase = doubleCases();
  const int n = static_cast<int>(base.size()), dn = static_cast<int>(dbase.size());
  for (int fe : {FE_DOWNWARD, FE_UPWARD, FE_TOWARDZERO}) {
    for (int mode : {0, 1, 2}) {
      for (int s : {0, 3, -5}) {
        std::vector<qel16s> d16(n);
        std::vector<qel32s> d32(n), d64(dn);
        {
          qtest::RoundingScope scope(fe);
          std::feraiseexcept(FE_INVALID);
          ASSERT_EQ(qelsConvert_32f16s_Sfs(base.data(), d16.data(), n, mode, s), qelStatusOk);
          EXPECT_EQ(std::fegetround(), fe);
          EXPECT_EQ(_MM_GET_ROUNDING_MODE(),
                    fe == FE_DOWNWARD ? _MM_ROUND_DOWN
                                      : (fe == FE_UPWARD ? _MM_ROUND_UP : _MM_ROUND_TOWARD_ZERO));
          ASSERT_EQ(qelsConvert_32f32s_Sfs(base.data(), d32.data(), n, mode, s), qelStatusOk);
          EXPECT_EQ(std::fegetround(), fe);
          ASSERT_EQ(qelsConvert_64f32s_Sfs(dbase.data(), d64.data(), dn, mode, s), qelStatusOk);
          EXPECT_EQ(std::fegetround(), fe);
        }
        for (int i = 0; i < n; ++i) {
          ASSERT_EQ(d16[i], ref32f16s(base[i], mode, s)) << base[i] << " fe " << fe;
          ASSERT_EQ(d32[i], ref32f32s(base[i], mode, s)) << base[i] << " fe " << fe;
        }
        for (int i = 0; i < dn; ++i) ASSERT_EQ(d64[i], ref64f32s(dbase[i], mode, s)) << dbase[i];
      }
    }
  }
  EXPECT_EQ(std::fegetround(), FE_TONEAREST);
}

TEST(ConvertIntToInt, Int32To16sEveryFactorAndLayout) {
  std::vector<qel32s> base = {0,         1,         -1,      2,          3,          5,
                              7,         -3,        -5,      -7,         32767,      32768,
                              -32768,    -32769,    65535,   -65536,     98303,      98304,
                              INT32_MAX, INT32_MIN, 1 << 30, -(1 << 30), 1073741823, -1073741825};
  qtest::Rng rng(7);
  for (int i = 0; i < 60; ++i) base.push_back(rng.integer(INT32_MIN, INT32_MAX));
  for (int i = 0; i < 30; ++i) base.push_back(rng.integer(-70000, 70000));
  for (int s : {0, 1, 2, 3, 7, 15, 16, 17, 30, 31, 32, 40, -1, -2, -7, -15, -16, -40})
    checkAllLayouts<qel32s, qel16s>(
        base, [&](const qel32s* p, qel16s* d, int n) { return qelsConvert_32s16s_Sfs(p, d, n, s); },
        [&](qel32s x) { return ref32s16s(x, s); }, "32s16s");
}

TEST(ConvertToFloat, WideningEveryLayout) {
  std::vector<qel8u> b8;
  for (int i = 0; i < 256; i += 7) b8.push_back(static_cast<qel8u>(i));
  b8.push_back(255);
  checkAllLayouts<qel8u, qel32f>(
      b8, [](const qel8u* p, qel32f* d, int n) { return qelsConvert_8u32f(p, d, n); },
      [](qel8u x) { return static_cast<float>(x); }, "8u32f");

  std::vector<qel16s> b16 = {0, 1, -1, 32767, -32768, 12345, -12345};
  qtest::Rng rng(3);
  for (int i = 0; i < 50; ++i) b16.push_back(static_cast<qel16s>(rng.integer(-32768, 32767)));
  checkAllLayouts<qel16s, qel32f>(
      b16, [](const qel16s* p, qel32f* d, int n) { return qelsConvert_16s32f(p, d, n); },
      [](qel16s x) { return static_cast<float>(x); }, "16s32f");

  for (int s : {0, 1, -1, 15, -15, 112, -112, 113, -113, 126, 127, -200, 300}) {
    const float p = std::ldexp(1.0f, -clampFactor(s, -112, 126));
    checkAllLayouts<qel16s, qel32f>(
        b16, [&](const qel16s* q, qel32f* d, int n) { return qelsConvert_16s32f_Sfs(q, d, n, s); },
        [&](qel16s x) { return static_cast<float>(x) * p; }, "16s32f_Sfs");
    const double pd = std::ldexp(1.0, -clampFactor(s * 8, -1008, 1022));
    checkAllLayouts<qel16s, qel64f>(
        b16,
        [&](const qel16s* q, qel64f* d, int n) { return qelsConvert_16s64f_Sfs(q, d, n, s * 8); },
        [&](qel16s x) { return static_cast<double>(x) * pd; }, "16s64f_Sfs");
  }
}

// Integers beyond 2^24 round to nearest even in the float format, whatever
// the caller's mode.
TEST(ConvertToFloat, Int32RoundsToNearestEvenInEveryCallerMode) {
  std::vector<qel32s> base = {16777217,   16777219, -16777217, INT32_MAX, INT32_MIN, 2147483583,
                              2147483584, 33554435, 0,         -1,        7};
  qtest::Rng rng(9);
  for (int i = 0; i < 60; ++i) base.push_back(rng.integer(INT32_MIN, INT32_MAX));
  for (int fe : {FE_TONEAREST, FE_UPWARD, FE_DOWNWARD}) {
    for (int s : {0, 1, -1, 96, -96, 97, -97, 126, 200}) {
      const float p = std::ldexp(1.0f, -clampFactor(s, -96, 126));
      qtest::RoundingScope scope(fe);
      checkAllLayouts<qel32s, qel32f>(
          base,
          [&](const qel32s* q, qel32f* d, int n) {
            const qelStatus st =
                s == 0 ? qelsConvert_32s32f(q, d, n) : qelsConvert_32s32f_Sfs(q, d, n, s);
            EXPECT_EQ(std::fegetround(), fe);
            return st;
          },
          [&](qel32s x) {
            // The reference converts in round-to-nearest whatever the scope.
            std::fesetround(FE_TONEAREST);
            volatile double vx = static_cast<double>(x);
            const float f = static_cast<float>(vx);
            std::fesetround(fe);
            const double exact = static_cast<double>(x);
            const float lo = std::nextafter(f, -kInff), hi = std::nextafter(f, kInff);
            EXPECT_LE(std::fabs(f - exact), std::fabs(double(lo) - exact));
            EXPECT_LE(std::fabs(f - exact), std::fabs(double(hi) - exact));
            return f * p;
          },
          "32s32f");
    }
  }
}

// Narrowing follows the caller's rounding mode and applies no limit.
TEST(ConvertToFloat, DoubleNarrowsInTheCallersMode) {
  std::vector<double> base = {1.0 + 1e-9, -1.0 - 1e-9,           1e300, -1e300, 1e-50, kInf, -kInf,
                              kNaN,       3.4028235677973366e38, 0.1,   -0.1};
  qtest::Rng rng(4);
  for (int i = 0; i < 60; ++i) base.push_back(rng.uniformD(-1e6, 1e6));
  for (int fe : {FE_TONEAREST, FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO}) {
    qtest::RoundingScope scope(fe);
    checkAllLayouts<qel64f, qel32f>(
        base, [](const qel64f* p, qel32f* d, int n) { return qelsConvert_64f32f(p, d, n); },
        [](double x) {
          volatile double v = x;
          return static_cast<float>(v);
        },
        "64f32f");
  }
}

// Null pointers first, then the length; nothing written on either.
TEST(ConvertErrors, CheckOrderAndNothingWritten) {
  Guarded<qel32f> f(16);
  Guarded<qel16s> s16(16);
  Guarded<qel32s> s32(16);
  Guarded<qel64f> d64(16);
  Guarded<qel8u> u8(16);
  struct Call {
    const char* name;
    std::function<qelStatus(bool nullSrc, bool nullDst, int len)> run;
  };
  auto P = [](bool null, auto* p) { return null ? nullptr : p; };
  const std::vector<Call> calls = {
      {"8u32f", [&](bool a, bool b,
                    int n) { return qelsConvert_8u32f(P(a, u8.data()), P(b, f.data()), n); }},
      {"16s32f", [&](bool a, bool b,
                     int n) { return qelsConvert_16s32f(P(a, s16.data()), P(b, f.data()), n); }},
      {"32s32f", [&](bool a, bool b,
                     int n) { return qelsConvert_32s32f(P(a, s32.data()), P(b, f.data()), n); }},
      {"64f32f", [&](bool a, bool b,
                     int n) { return qelsConvert_64f32f(P(a, d64.data()), P(b, f.data()), n); }},
      {"16s32f_Sfs",
       [&](bool a, bool b, int n) {
         return qelsConvert_16s32f_Sfs(P(a, s16.data()), P(b, f.data()), n, 1);
       }},
      {"32s32f_Sfs",
       [&](bool a, bool b, int n) {
         return qelsConvert_32s32f_Sfs(P(a, s32.data()), P(b, f.data()), n, 1);
       }},
      {"16s64f_Sfs",
       [&](bool a, bool b, int n) {
         return qelsConvert_16s64f_Sfs(P(a, s16.data()), P(b, d64.data()), n, 1);
       }},
      {"32f16s_Sfs",
       [&](bool a, bool b, int n) {
         return qelsConvert_32f16s_Sfs(P(a, f.data()), P(b, s16.data()), n, 1, 0);
       }},
      {"32f32s_Sfs",
       [&](bool a, bool b, int n) {
         return qelsConvert_32f32s_Sfs(P(a, f.data()), P(b, s32.data()), n, 1, 0);
       }},
      {"64f32s_Sfs",
       [&](bool a, bool b, int n) {
         return qelsConvert_64f32s_Sfs(P(a, d64.data()), P(b, s32.data()), n, 1, 0);
       }},
      {"32s16s_Sfs",
       [&](bool a, bool b, int n) {
         return qelsConvert_32s16s_Sfs(P(a, s32.data()), P(b, s16.data()), n, 1);
       }},
  };
  auto untouched = [&] {
    return f.untouched() && s16.untouched() && s32.untouched() && d64.untouched() && u8.untouched();
  };
  for (const Call& c : calls) {
    EXPECT_EQ(c.run(true, false, 8), qelStatusNullPtr) << c.name;
    EXPECT_EQ(c.run(false, true, 8), qelStatusNullPtr) << c.name;
    EXPECT_EQ(c.run(true, true, 0), qelStatusNullPtr) << c.name;
    EXPECT_EQ(c.run(false, false, 0), qelStatusSize) << c.name;
    EXPECT_EQ(c.run(false, false, -3), qelStatusSize) << c.name;
    EXPECT_TRUE(untouched()) << c.name;
  }
}

}  // namespace
