// Magnitudes of complex pairs: the float form bit for bit against the same
// estimate-and-refine formula and within a stated relative error of the
// double result; the integer form against double arithmetic; both around
// their two-thread thresholds, aligned and not.
#include <omp.h>
#include <xmmintrin.h>

#include <cfloat>
#include <cmath>
#include <cstdint>

#include "base/base.h"
#include "test_support.h"

namespace {

using qtest::Guarded;

// The float formula of one pair with the same estimate instruction.
float refMagnitude(float re, float im) {
  const float s = re * re + im * im;
  if (s < FLT_MIN) return std::sqrt(s);
  const float r = _mm_cvtss_f32(_mm_rsqrt_ss(_mm_set_ss(s)));
  const float t = s * r;
  const float u = t * r;
  return (-0.5f * t) * (u - 3.0f);
}

// The estimate has a relative error below 1.5 * 2^-12; one refinement step
// leaves (3/2) e^2 < 3.4 * 2^-24, and the rounding of s and of the four
// products adds at most 2.5 * 2^-24: 6 * 2^-24 in all.
constexpr double kMagnitudeRel = 6.0 * 0x1p-24;

std::vector<float> pairData(int len, uint32_t seed) {
  qtest::Rng rng(seed);
  std::vector<float> v(2 * len);
  for (auto& x : v) x = rng.uniform(-1.0f, 1.0f) * std::exp2(rng.uniform(-60.0f, 60.0f));
  return v;
}

// Pairs whose squared sums lie around the smallest normal number, where the
// path changes: the refined estimate and the true root differ in the last
// bit for some of them.
std::vector<float> pathChangeData() {
  std::vector<float> src;
  for (int k = -300; k <= 300; ++k) {
    const float re = std::sqrt(FLT_MIN) * (1.0f + k * 0.0021f);
    src.insert(src.end(), {re, re * 0.001f * (k % 7)});
  }
  return src;
}

TEST(Magnitude32fc, FormulaAndAccuracyOverLengthsAndAlignment) {
  double worst = 0;
  int differFromRoot = 0;
  for (int len : {1, 2, 3, 4, 5, 7, 8, 9, 100, 2047, 2048, 2049, 2051, 5003, 601}) {
    const auto data = len == 601 ? pathChangeData() : pairData(len, len);
    for (auto [ms, md] : {std::pair<size_t, size_t>{0, 0}, {4, 0}, {0, 8}, {12, 4}}) {
      Guarded<float> src(2 * len, ms), dst(len, md);
      src.assign(data);
      ASSERT_EQ(qelsMagnitude_32fc(src.data(), dst.data(), len), qelStatusOk);
      for (int i = 0; i < len; ++i) {
        const float re = src[2 * i], im = src[2 * i + 1];
        ASSERT_TRUE(qtest::sameBits(dst[i], refMagnitude(re, im))) << len << " at " << i;
        if (len == 601) {  // squares near underflow: the bound below assumes normal ones
          differFromRoot += dst[i] != std::sqrt(re * re + im * im);
          continue;
        }
        const double exact = std::hypot(static_cast<double>(re), static_cast<double>(im));
        const double rel = std::fabs(dst[i] - exact) / exact;
        worst = std::max(worst, rel);
        ASSERT_LE(rel, kMagnitudeRel) << re << "," << im;
      }
      EXPECT_TRUE(dst.guardsIntact());
    }
  }
  EXPECT_GT(worst, 0x1p-24);     // the estimate really is in the path
  EXPECT_GT(differFromRoot, 0);  // and the path change is in the data
}

TEST(Magnitude32fc, SpecialPairs) {
  const float tiny = std::ldexp(1.0f, -70);  // its square is denormal
  struct Case {
    float re, im;
    float want;  // NaN: any NaN
  };
  const Case table[] = {
      {0.0f, 0.0f, 0.0f},
      {-0.0f, 0.0f, 0.0f},
      {3.0f, 4.0f, refMagnitude(3.0f, 4.0f)},
      {tiny, 0.0f, std::sqrt(tiny * tiny)},  // below the smallest normal: true root
      {tiny, -tiny, std::sqrt(2 * tiny * tiny)},
      {std::sqrt(FLT_MIN), 0.0f, refMagnitude(std::sqrt(FLT_MIN), 0.0f)},
      {NAN, 1.0f, NAN},
      {1.0f, NAN, NAN},
      // s overflows to +inf: the estimate is 0 and inf * 0 makes the result NaN.
      {3e19f, 0.0f, NAN},
      {INFINITY, 0.0f, NAN},
  };
  for (const Case& c : table) {
    for (int len : {1, 4, 6}) {
      for (int at = 0; at < len; ++at) {
        std::vector<float> src(2 * len, 1.0f), dst(len, -7.0f);
        src[2 * at] = c.re;
        src[2 * at + 1] = c.im;
        ASSERT_EQ(qelsMagnitude_32fc(src.data(), dst.data(), len), qelStatusOk);
        EXPECT_TRUE(qtest::sameBits(dst[at], c.want)) << c.re << "," << c.im << " got " << dst[at];
        for (int k = 0; k < len; ++k)
          if (k != at) EXPECT_TRUE(qtest::sameBits(dst[k], refMagnitude(1.0f, 1.0f)));
      }
    }
  }
  EXPECT_EQ(std::sqrt(tiny * tiny), tiny);
}

// The same results on one thread, on two, and inside a region that cannot
// fork again.
TEST(Magnitude, ThreadCountsGiveTheSameResults) {
  const int lens[] = {255, 256, 257, 2047, 2048, 2049, 9001};
  for (int len : lens) {
    const auto f = pairData(len, 3 * len);
    std::vector<qel32s> p(2 * len);
    qtest::Rng rng(len);
    for (auto& x : p) x = rng.integer(INT32_MIN, INT32_MAX);
    std::vector<float> f1(len), f2(len), f3(len);
    std::vector<qel32s> i1(len), i2(len), i3(len);
    auto both = [&](std::vector<float>& fo, std::vector<qel32s>& io) {
      return qelsMagnitude_32fc(f.data(), fo.data(), len) == qelStatusOk &&
             qelsMagnitude_32sc_Sfs(p.data(), io.data(), len, 3) == qelStatusOk;
    };
    const int saved = omp_get_max_threads();
    omp_set_num_threads(1);
    ASSERT_TRUE(both(f1, i1));
    omp_set_num_threads(2);
    ASSERT_TRUE(both(f2, i2));
    bool nested = false;
#pragma omp parallel num_threads(2)
#pragma omp single
    nested = both(f3, i3);
    omp_set_num_threads(saved);
    ASSERT_TRUE(nested);
    EXPECT_TRUE(qtest::sameArrays(f2.data(), f1.data(), len)) << len;
    EXPECT_TRUE(qtest::sameArrays(f3.data(), f1.data(), len)) << len;
    EXPECT_EQ(i2, i1) << len;
    EXPECT_EQ(i3, i1) << len;
    for (int i = 0; i < len; ++i)
      ASSERT_TRUE(qtest::sameBits(f1[i], refMagnitude(f[2 * i], f[2 * i + 1])))
          << len << " at " << i;
  }
}

// The integer form in double: root of the sum of squares, times
// 2^(-scaleFactor), limited to 2147483647, rounded to nearest even.
qel32s refMagnitude32s(qel32s re, qel32s im, int sf) {
  if (sf > 32) return 0;
  if (sf < -30) return (re != 0 || im != 0) ? INT32_MAX : 0;
  const double r = re, i = im;
  double v = std::sqrt(r * r + i * i) * std::ldexp(1.0, -sf);
  if (v > 2147483647.0) v = 2147483647.0;
  return static_cast<qel32s>(std::nearbyint(v));  // the test runs in round-to-nearest
}

TEST(Magnitude32sc, ScaledRoundedSaturated) {
  struct Case {
    qel32s re, im;
    int sf;
    qel32s want;
  };
  const Case table[] = {
      {3, 4, 0, 5},
      {3, 4, 1, 2},  // 2.5 -> 2
      {0, 7, 1, 4},  // 3.5 -> 4
      {3, 4, -1, 10},
      {1, 0, -30, 1 << 30},
      {1, 1, -30, 1518500250},
      {2, 0, -30, INT32_MAX},
      {1, 0, -31, INT32_MAX},
      {0, -1, -31, INT32_MAX},
      {0, 0, -31, 0},
      {INT32_MIN, INT32_MIN, 32, 1},
      {INT32_MIN, INT32_MIN, 33, 0},
      {INT32_MAX, 0, 0, INT32_MAX},
      {INT32_MIN, 0, 0, INT32_MAX},
      {-5, 12, 0, 13},
  };
  for (const Case& c : table) {
    for (int len : {1, 2, 3, 300}) {
      for (int at : {0, len - 1}) {
        std::vector<qel32s> src(2 * len, 0), dst(len, -7);
        src[2 * at] = c.re;
        src[2 * at + 1] = c.im;
        ASSERT_EQ(qelsMagnitude_32sc_Sfs(src.data(), dst.data(), len, c.sf), qelStatusOk);
        EXPECT_EQ(dst[at], c.want) << c.re << "," << c.im << " sf " << c.sf << " len " << len;
        EXPECT_EQ(refMagnitude32s(c.re, c.im, c.sf), c.want);
      }
    }
  }
  for (int len : {1, 2, 3, 255, 256, 257, 1001}) {
    for (int sf : {-31, -30, -20, -1, 0, 1, 5, 16, 31, 32, 33, 100}) {
      for (size_t mis : {0, 4}) {
        Guarded<qel32s> src(2 * len, mis), dst(len, 12 - mis);
        qtest::Rng rng(len + sf);
        for (int i = 0; i < 2 * len; ++i)
          src[i] = rng.integer(INT32_MIN, INT32_MAX) >> rng.integer(0, 31);
        if (len > 2) src[2] = src[3] = 0;
        ASSERT_EQ(qelsMagnitude_32sc_Sfs(src.data(), dst.data(), len, sf), qelStatusOk);
        for (int i = 0; i < len; ++i)
          ASSERT_EQ(dst[i], refMagnitude32s(src[2 * i], src[2 * i + 1], sf)) << len << " sf " << sf;
        EXPECT_TRUE(dst.guardsIntact());
      }
    }
  }
}

TEST(Magnitude32sc, RoundingModeIsForcedAndRestored) {
  const qel32s src[6] = {3, 4, 0, 7, 1, 1};
  qel32s dst[3];
  const unsigned saved = _mm_getcsr();
  _mm_setcsr((saved & ~_MM_ROUND_MASK) | _MM_ROUND_UP);
  const qelStatus st = qelsMagnitude_32sc_Sfs(src, dst, 3, 1);
  const unsigned after = _mm_getcsr();
  _mm_setcsr(saved);
  EXPECT_EQ(st, qelStatusOk);
  EXPECT_EQ(after & _MM_ROUND_MASK, static_cast<unsigned>(_MM_ROUND_UP));
  const qel32s want[3] = {2, 4, 1};  // 2.5 and 3.5 to even, 1.41 down
  EXPECT_TRUE(qtest::sameArrays(dst, want, 3));
}

TEST(Magnitude, ArgumentErrorsWriteNothing) {
  Guarded<float> fs(8), fd(4);
  Guarded<qel32s> is(8), id(4);
  EXPECT_EQ(qelsMagnitude_32fc(nullptr, fd.data(), 4), qelStatusNullPtr);
  EXPECT_EQ(qelsMagnitude_32fc(fs.data(), nullptr, 4), qelStatusNullPtr);
  EXPECT_EQ(qelsMagnitude_32fc(fs.data(), nullptr, 0), qelStatusNullPtr);
  EXPECT_EQ(qelsMagnitude_32fc(fs.data(), fd.data(), 0), qelStatusSize);
  EXPECT_EQ(qelsMagnitude_32sc_Sfs(nullptr, id.data(), 4, 0), qelStatusNullPtr);
  EXPECT_EQ(qelsMagnitude_32sc_Sfs(is.data(), nullptr, -1, 0), qelStatusNullPtr);
  EXPECT_EQ(qelsMagnitude_32sc_Sfs(is.data(), id.data(), -1, 40), qelStatusSize);
  EXPECT_TRUE(fs.untouched() && fd.untouched() && is.untouched() && id.untouched());
}

}  // namespace
