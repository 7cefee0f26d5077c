// Autocorrelation, direct and through the FFT, against a double sum; the
// spectral product of Pack spectra; argument checks.
#include <cmath>
#include <vector>

#include "base/fft/fft.h"
#include "test_support.h"

namespace {

// r[k] in double, with the sum of |x[i] x[i+k]| that bounds float error.
struct RefLag {
  double value, absSum;
};
std::vector<RefLag> referenceLags(const std::vector<float>& x, int lags) {
  std::vector<RefLag> r(lags, RefLag{0, 0});
  const int n = static_cast<int>(x.size());
  for (int k = 0; k < lags && k < n; ++k)
    for (int i = 0; i + k < n; ++i) {
      const double p = double(x[i]) * x[i + k];
      r[k].value += p;
      r[k].absSum += std::fabs(p);
    }
  return r;
}

// Direct way: each lag is a float sum of len - k products, so its error is
// at most (len + 4) * 2^-24 times the sum of the absolute products.
// FFT way: the error of each lag is bounded by the transform error,
// 8 * log2(N) * 2^-24 times r[0] = |x|^2 (forward, product and inverse).
void checkLags(const std::vector<float>& x, int dstLen, const float* got, bool viaFft) {
  const int len = static_cast<int>(x.size());
  const auto ref = referenceLags(x, dstLen);
  int order = 1;
  while ((1 << order) < 2 * len) ++order;
  for (int k = 0; k < dstLen; ++k) {
    if (k >= len) {
      EXPECT_EQ(got[k], 0.0f) << "lag " << k;
      continue;
    }
    const double bound = viaFft ? 8.0 * order * std::ldexp(1.0, -24) * ref[0].value
                                : (len + 4) * std::ldexp(1.0, -24) * ref[k].absSum;
    EXPECT_LE(std::fabs(got[k] - ref[k].value), bound) << "len " << len << " lag " << k;
  }
}

TEST(Autocorrelation, BothWaysAgainstTheDoubleSum) {
  struct Case {
    int len, dstLen;
    bool fft;
  };
  const Case cases[] = {{1, 3, false},      {2, 2, false},      {6, 6, false},
                        {7, 5, false},      {7, 6, false},      {9, 8, false},
                        {10, 13, false},    {33, 17, false},    {200, 11, false},
                        {855, 855, false},  {856, 856, true},   {856, 900, true},
                        {1000, 2000, true}, {3000, 1200, true}, {100000, 20, false}};
  qtest::Rng rng(3);
  for (const Case& c : cases) {
    const auto x = rng.vec<float>(c.len, -1, 1);
    for (size_t mis : {0u, 4u}) {
      qtest::Guarded<float> dst(c.dstLen, mis);
      ASSERT_EQ(qelsAutoCorr_32f(x.data(), c.len, dst.data(), c.dstLen), qelStatusOk);
      EXPECT_TRUE(dst.guardsIntact());
      checkLags(x, c.dstLen, dst.data(), c.fft);
    }
  }
}

// The way taken shows in allocation: the direct way allocates nothing, the
// FFT way fails with qelStatusMemAlloc when its plan cannot be allocated
// (plan: one block at order 11, two above; then work buffer, then array; a
// missing work buffer is no error). Every failure leaks nothing and leaves
// pDst unwritten.
TEST(Autocorrelation, ThresholdBetweenTheWays) {
  qtest::Rng rng(4);
  const auto x = rng.vec<float>(100000, -1, 1);
  std::vector<float> out(900);
  for (auto [len, dstLen] : {std::pair{855, 855}, {100000, 20}, {855, 5000}, {3000, 855}}) {
    qtest::FailingAllocator fail(0);
    EXPECT_EQ(qelsAutoCorr_32f(x.data(), len, out.data(), std::min(dstLen, 900)), qelStatusOk);
  }
  for (auto [len, dstLen] : {std::pair{856, 856}, {2000, 856}}) {
    for (long successes = 0; successes < 6; ++successes) {
      qtest::Guarded<float> dst(dstLen);
      qtest::FailingAllocator fail(successes);
      const qelStatus st = qelsAutoCorr_32f(x.data(), len, dst.data(), dstLen);
      if (successes == 0 || st != qelStatusOk) {
        EXPECT_EQ(st, qelStatusMemAlloc) << len << " " << successes;
        EXPECT_TRUE(dst.untouched());
      } else {
        checkLags(std::vector<float>(x.begin(), x.begin() + len), dstLen, dst.data(), true);
      }
      EXPECT_TRUE(fail.nothingLeaked());
    }
  }
}

// len 1: r[0] = x[0]^2, the rest 0; small integers, whose sums are exact
// on the direct kernel, past the end of the signal.
TEST(Autocorrelation, EdgeCases) {
  const float x[1] = {-3.0f}, want1[3] = {9.0f, 0.0f, 0.0f};
  float r[3] = {7, 7, 7};
  ASSERT_EQ(qelsAutoCorr_32f(x, 1, r, 3), qelStatusOk);
  EXPECT_TRUE(qtest::sameArrays(r, want1, 3));
  std::vector<float> v(40), got(45);
  for (int i = 0; i < 40; ++i) v[i] = float(i % 7 - 3);
  ASSERT_EQ(qelsAutoCorr_32f(v.data(), 40, got.data(), 45), qelStatusOk);
  for (int k = 0; k < 45; ++k) {
    double s = 0;
    for (int i = 0; i + k < 40; ++i) s += v[i] * v[i + k];
    EXPECT_EQ(got[k], float(s)) << k;
  }
}

TEST(Autocorrelation, StatusesInOrder) {
  qtest::Guarded<float> src(8), dst(8);
  dst.poison();
  EXPECT_EQ(qelsAutoCorr_32f(nullptr, 0, dst.data(), 0), qelStatusNullPtr);
  EXPECT_EQ(qelsAutoCorr_32f(src.data(), 8, nullptr, 8), qelStatusNullPtr);
  EXPECT_EQ(qelsAutoCorr_32f(src.data(), 0, dst.data(), 8), qelStatusSize);
  EXPECT_EQ(qelsAutoCorr_32f(src.data(), 8, dst.data(), 0), qelStatusSize);
  EXPECT_EQ(qelsAutoCorr_32f(src.data(), -1, dst.data(), -1), qelStatusSize);
  EXPECT_TRUE(dst.untouched());
  EXPECT_EQ(qelsMulPackConj_32f_I(nullptr, dst.data(), 0), qelStatusNullPtr);
  EXPECT_EQ(qelsMulPackConj_32f_I(src.data(), nullptr, 4), qelStatusNullPtr);
  EXPECT_EQ(qelsMulPackConj_32f_I(src.data(), dst.data(), 0), qelStatusSize);
  EXPECT_TRUE(dst.untouched());
}

TEST(Autocorrelation, PackSpectralProduct) {
  qtest::Rng rng(5);
  for (int len : {1, 2, 3, 4, 7, 8, 64}) {
    const auto s = rng.vec<float>(len, -2, 2), d = rng.vec<float>(len, -2, 2);
    std::vector<float> got = d;
    ASSERT_EQ(qelsMulPackConj_32f_I(s.data(), got.data(), len), qelStatusOk);
    std::vector<float> want(len);
    want[0] = d[0] * s[0];
    if (len % 2 == 0) want[len - 1] = d[len - 1] * s[len - 1];
    for (int p = 1; p <= (len - 1) / 2; ++p) {
      const float sr = s[2 * p - 1], si = s[2 * p], dr = d[2 * p - 1], di = d[2 * p];
      want[2 * p - 1] = sr * dr + si * di;
      want[2 * p] = si * dr - sr * di;
    }
    EXPECT_TRUE(qtest::sameArrays(got.data(), want.data(), len)) << len;
    // the same array on both sides gives the squared magnitude
    std::vector<float> sq = s;
    ASSERT_EQ(qelsMulPackConj_32f_I(sq.data(), sq.data(), len), qelStatusOk);
    for (int p = 1; p <= (len - 1) / 2; ++p) {
      EXPECT_EQ(sq[2 * p - 1], s[2 * p - 1] * s[2 * p - 1] + s[2 * p] * s[2 * p]);
      EXPECT_EQ(sq[2 * p], 0.0f);
    }
  }
}

}  // namespace
