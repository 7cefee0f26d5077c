// Conversions between element types: every rounding mode with its ties,
// saturation limits, NaN, the clamps of the scale factors, the caller's
// rounding mode left as it was, and every head/group/tail layout.
#include <xmmintrin.h>

#include <cfenv>
#include <cmath>
#include <cstdint>
#include <limits>
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

qel16s ref32s16s(qel32s x, int s) { return qtest::rescale16Ref(x, clampFactor(s, -15, 31)); }

// x to the nearest float, ties to even, in integers: independent of the
// rounding mode the test runs in.
float nearestFloat(qel32s x) {
  int64_t m = x < 0 ? -int64_t{x} : x;
  int shift = 0;
  while ((m >> shift) >= (int64_t{1} << 24)) ++shift;
  if (shift > 0) {
    const int64_t half = int64_t{1} << (shift - 1), rem = m & ((half << 1) - 1);
    m >>= shift;
    if (rem > half || (rem == half && (m & 1))) ++m;
  }
  const float f = std::ldexp(static_cast<float>(m), shift);
  return x < 0 ? -f : f;
}

// ------------------------------------------------------------ data

// Ties, near-ties, limits and specials of the float to integer paths.
std::vector<float> floatCases() {
  std::vector<float> v = {
      0.0f,        -0.0f,        0.5f,       -0.5f,       1.5f,       -1.5f,       2.5f,
      -2.5f,       3.5f,         -3.5f,      2.9f,        -2.9f,      1e-40f,      -1e-40f,
      0.49999997f, -0.49999997f, 8388607.5f, -8388607.5f, 8388609.0f, 16777215.0f, 32766.5f,
      32767.0f,    32767.5f,     32768.0f,   -32767.5f,   -32768.0f,  -32768.5f,   -32769.0f,
      40000.0f,    -40000.0f,    3e9f,       -3e9f,       kInff,      -kInff,      kNaNf,
      -kNaNf,      1e38f,        -1e38f,     123.456f,    -77.75f};
  const float m = 2147483648.0f;
  v.insert(v.end(), {m - 128, m, -m, -m - 256});
  qtest::Rng rng(11);
  for (int i = 0; i < 60; ++i) v.push_back(rng.uniform(-70000.0f, 70000.0f));
  for (int i = 0; i < 20; ++i) v.push_back(std::round(rng.uniform(-1000.0f, 1000.0f)) + 0.5f);
  return v;
}

// Around both limits of the 32-bit range, ties, and specials.
std::vector<double> doubleCases() {
  std::vector<double> v = {
      0.0,    -0.0, 1.5,   -1.5, 2.5,     -2.5,  0.49999999999999994, 4503599627370497.0, 1e300,
      -1e300, kInf, -kInf, kNaN, 123.456, -77.75};
  const double m = 2147483648.0;
  v.insert(v.end(),
           {m - 1.5, m - 1, m - 0.6, m - 0.5, m, -m, -m - 0.4, -m - 0.5, -m - 1, 0.5, -0.5});
  qtest::Rng rng(12);
  for (int i = 0; i < 60; ++i) v.push_back(rng.uniformD(-3e9, 3e9));
  for (int i = 0; i < 20; ++i) v.push_back(std::round(rng.uniformD(-1e6, 1e6)) + 0.5);
  return v;
}

template <typename T>
std::vector<T> withRandom(std::vector<T> v, int lo, int hi, uint32_t seed) {
  qtest::Rng rng(seed);
  for (int i = 0; i < 60; ++i) v.push_back(static_cast<T>(rng.integer(lo, hi)));
  return v;
}

// Unary conversion over every layout against a per-element reference.
template <typename TS, typename TD, typename Call, typename Ref>
void checkUnary(const char* what, const std::vector<TS>& base, Call call, Ref ref) {
  qtest::checkEveryLayout<TS, TD>(
      what, base, base, false, [&](const TS* p, TS*, TD* d, int n) { return call(p, d, n); },
      elementwise([&](TS x, TS) { return static_cast<TD>(ref(x)); }));
}

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
TEST(ConvertReference, AgreesWithDoublePrecisionRounding) {
  qtest::Rng rng(5);
  for (int i = 0; i < 2000; ++i) {
    const float x = rng.uniform(-4e6f, 4e6f);
    EXPECT_EQ(ref32f32s(x, 2, 0), std::lround(double(x))) << x;
    EXPECT_EQ(ref32f32s(x, 0, 0), static_cast<long>(double(x))) << x;
    const double r = std::nearbyint(double(x));
    EXPECT_LE(std::fabs(r - x), 0.5);
    EXPECT_EQ(ref32f32s(x, 1, 0), static_cast<long>(r)) << x;
    // The integer rounding to float is the nearest of the neighbours.
    const qel32s k = rng.integer(INT32_MIN, INT32_MAX);
    const float f = nearestFloat(k);
    const double e = static_cast<double>(k);
    EXPECT_LE(std::fabs(f - e), std::fabs(double(std::nextafter(f, -kInff)) - e)) << k;
    EXPECT_LE(std::fabs(f - e), std::fabs(double(std::nextafter(f, kInff)) - e)) << k;
    EXPECT_EQ(f, static_cast<float>(k)) << k;  // the test runs in round-to-nearest
  }
  // Where x + 0.5 rounds in float, ties-away rounds one step further.
  EXPECT_EQ(ref32f32s(0.49999997f, 2, 0), 1);
  EXPECT_EQ(ref32f32s(8388609.0f, 2, 0), 8388610);
  EXPECT_EQ(nearestFloat(16777219), 16777220.0f);
  EXPECT_EQ(nearestFloat(16777217), 16777216.0f);
  const int64_t ps[] = {3, 5, 7, -3, -5, 6, -32768LL * -32768, -32768LL * -32768, -3};
  const int ss[] = {1, 1, 1, 1, 2, 2, 15, 16, -16};
  const int want[] = {2, 2, 4, -2, -1, 2, 32767, 16384, -32768};
  for (int i = 0; i < 9; ++i) EXPECT_EQ(qtest::rescale16Ref(ps[i], ss[i]), want[i]) << i;
}

// Every mode (0, 1 and the others) and factor over every layout; then a
// caller in another rounding mode, with the invalid flag already raised,
// gets the same results and keeps its mode in both control words.
template <typename TS, typename TD>
void checkToInt(const char* what, const std::vector<TS>& base,
                qelStatus (*fn)(const TS*, TD*, int, int, int), TD (*ref)(TS, int, int)) {
  for (int mode : {0, 1, 2, -1, 7})
    for (int s :
         {0, 1, -1, 3, -3, 15, -15, 16, 31, -31, 126, 127, 149, 150, 151, -126, -127, -128, -129})
      checkUnary<TS, TD>(
          what, base, [&](const TS* p, TD* d, int n) { return fn(p, d, n, mode, s); },
          [&](TS x) { return ref(x, mode, s); });
  const int n = static_cast<int>(base.size());
  for (int fe : {FE_TONEAREST, FE_DOWNWARD, FE_UPWARD, FE_TOWARDZERO})
    for (int mode : {0, 1, 2})
      for (int s : {0, 3, -5}) {
        std::vector<TD> got(n);
        {
          qtest::RoundingScope scope(fe);
          std::feraiseexcept(FE_INVALID);
          const unsigned csrMode = _mm_getcsr() & 0x6000u;
          ASSERT_EQ(fn(base.data(), got.data(), n, mode, s), qelStatusOk);
          EXPECT_EQ(_mm_getcsr() & 0x6000u, csrMode) << what;
          EXPECT_EQ(std::fegetround(), fe) << what;
        }
        for (int i = 0; i < n; ++i)
          ASSERT_EQ(got[i], ref(base[i], mode, s)) << what << " " << base[i] << " fe " << fe;
      }
}

TEST(ConvertFloatToInt, EveryKernelModeFactorLayoutAndCallerMode) {
  checkToInt<qel32f, qel16s>("32f16s", floatCases(), qelsConvert_32f16s_Sfs, ref32f16s);
  checkToInt<qel32f, qel32s>("32f32s", floatCases(), qelsConvert_32f32s_Sfs, ref32f32s);
  checkToInt<qel64f, qel32s>("64f32s", doubleCases(), qelsConvert_64f32s_Sfs, ref64f32s);
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
        qel32s* out = reinterpret_cast<qel32s*>(buf.data());
        ASSERT_EQ(qelsConvert_32f32s_Sfs(buf.data(), out, len, mode, s), qelStatusOk);
        EXPECT_TRUE(qtest::sameArrays<qel32s>(out, want.data(), len))
            << "len " << len << " mode " << mode << " factor " << s;
      }
  }
}

TEST(ConvertIntToInt, Int32To16sEveryFactorAndLayout) {
  auto base = withRandom<qel32s>(
      {0,     1,     -1,        2,         3,       5,          7,          -3,
       -5,    -7,    32767,     32768,     -32768,  -32769,     65535,      -65536,
       98303, 98304, INT32_MAX, INT32_MIN, 1 << 30, -(1 << 30), 1073741823, -1073741825},
      INT32_MIN, INT32_MAX, 7);
  base = withRandom(base, -70000, 70000, 8);
  for (int s : {0, 1, 2, 3, 7, 15, 16, 17, 30, 31, 32, 40, -1, -2, -7, -15, -16, -40})
    checkUnary<qel32s, qel16s>(
        "32s16s", base,
        [&](const qel32s* p, qel16s* d, int n) { return qelsConvert_32s16s_Sfs(p, d, n, s); },
        [&](qel32s x) { return ref32s16s(x, s); });
}

// Widening is exact but for 32-bit integers beyond 2^24, which round to
// nearest even whatever the caller's mode; 64f to 32f narrows in the
// caller's mode with no limit. The powers of two are clamped so that every
// product stays exact.
TEST(ConvertToFloat, EveryKernelLayoutAndCallerMode) {
  std::vector<qel8u> b8;
  for (int i = 0; i < 256; i += 7) b8.push_back(static_cast<qel8u>(i));
  b8.push_back(255);
  checkUnary<qel8u, qel32f>("8u32f", b8, qelsConvert_8u32f, [](qel8u x) { return x; });
  const auto b16 = withRandom<qel16s>({0, 1, -1, 32767, -32768, 12345, -12345}, -32768, 32767, 3);
  checkUnary<qel16s, qel32f>("16s32f", b16, qelsConvert_16s32f, [](qel16s x) { return x; });
  for (int s : {0, 1, -1, 15, -15, 112, -112, 113, -113, 126, 127, -200, 300}) {
    const float p = std::ldexp(1.0f, -clampFactor(s, -112, 126));
    checkUnary<qel16s, qel32f>(
        "16s32f_Sfs", b16,
        [&](const qel16s* q, qel32f* d, int n) { return qelsConvert_16s32f_Sfs(q, d, n, s); },
        [&](qel16s x) { return static_cast<float>(x) * p; });
    const double pd = std::ldexp(1.0, -clampFactor(s * 8, -1008, 1022));
    checkUnary<qel16s, qel64f>(
        "16s64f_Sfs", b16,
        [&](const qel16s* q, qel64f* d, int n) { return qelsConvert_16s64f_Sfs(q, d, n, s * 8); },
        [&](qel16s x) { return static_cast<double>(x) * pd; });
  }
  const auto b32 = withRandom<qel32s>({16777217, 16777219, -16777217, INT32_MAX, INT32_MIN,
                                       2147483583, 2147483584, 33554435, 0, -1, 7},
                                      INT32_MIN, INT32_MAX, 9);
  std::vector<double> b64 = {1.0 + 1e-9, -1.0 - 1e-9,           1e300, -1e300, 1e-50, kInf, -kInf,
                             kNaN,       3.4028235677973366e38, 0.1,   -0.1};
  qtest::Rng rng(4);
  for (int i = 0; i < 60; ++i) b64.push_back(rng.uniformD(-1e6, 1e6));
  for (int fe : {FE_TONEAREST, FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO}) {
    qtest::RoundingScope scope(fe);
    for (int s : {0, 1, -1, 96, -96, 97, -97, 126, 200}) {
      const float p = std::ldexp(1.0f, -clampFactor(s, -96, 126));
      checkUnary<qel32s, qel32f>(
          "32s32f", b32,
          [&](const qel32s* q, qel32f* d, int n) {
            const qelStatus st =
                s == 0 ? qelsConvert_32s32f(q, d, n) : qelsConvert_32s32f_Sfs(q, d, n, s);
            EXPECT_EQ(std::fegetround(), fe);
            return st;
          },
          [&](qel32s x) { return nearestFloat(x) * p; });
    }
    checkUnary<qel64f, qel32f>("64f32f", b64, qelsConvert_64f32f, [](double x) {
      volatile double v = x;  // narrowed at run time, in the scope's mode
      return static_cast<float>(v);
    });
  }
}

TEST(ConvertErrors, CheckOrderAndNothingWritten) {
  qtest::OrderBuffers b;
  using qtest::orderCase;
  qtest::checkArgumentOrder(
      {orderCase("8u32f", qelsConvert_8u32f, b.u8.data(), b.fa.data(), kLen),
       orderCase("16s32f", qelsConvert_16s32f, b.s16a.data(), b.fa.data(), kLen),
       orderCase("32s32f", qelsConvert_32s32f, b.s32.data(), b.fa.data(), kLen),
       orderCase("64f32f", qelsConvert_64f32f, b.da.data(), b.fa.data(), kLen),
       orderCase("16s32f_Sfs", qelsConvert_16s32f_Sfs, b.s16a.data(), b.fa.data(), kLen, 1),
       orderCase("32s32f_Sfs", qelsConvert_32s32f_Sfs, b.s32.data(), b.fa.data(), kLen, 1),
       orderCase("16s64f_Sfs", qelsConvert_16s64f_Sfs, b.s16a.data(), b.da.data(), kLen, 1),
       orderCase("32f16s_Sfs", qelsConvert_32f16s_Sfs, b.fa.data(), b.s16a.data(), kLen, 1, 0),
       orderCase("32f32s_Sfs", qelsConvert_32f32s_Sfs, b.fa.data(), b.s32.data(), kLen, 1, 0),
       orderCase("64f32s_Sfs", qelsConvert_64f32s_Sfs, b.da.data(), b.s32.data(), kLen, 1, 0),
       orderCase("32s16s_Sfs", qelsConvert_32s16s_Sfs, b.s32.data(), b.s16a.data(), kLen, 1)},
      b);
}

}  // namespace
