// Real FFT: accuracy against a double-precision reference on every path,
// the packed layouts, the scale flags, the plan sizes, the error statuses
// and the multi-threaded path.
#include <omp.h>

#include <algorithm>
#include <cstring>
#include <memory>

#include "base/base.h"
#include "base/fft/fft.h"
#include "fft_reference.h"
#include "test_support.h"

namespace {

using qtest::cplx;

constexpr int kFlags[] = {1, 2, 4, 8};

struct PlanDeleter {
  void operator()(FFTSpec* s) const { qelsFFTFree_R_32f(s); }
};
using Plan = std::unique_ptr<FFTSpec, PlanDeleter>;

Plan makePlan(int order, int flag) {
  FFTSpec* s = nullptr;
  EXPECT_EQ(qelsFFTInitAlloc_R_32f(&s, order, flag, 0), qelStatusOk) << "order " << order;
  return Plan(s);
}

double forwardScale(int flag, size_t n) {
  if (flag == 1) return 1.0 / static_cast<double>(n);
  if (flag == 4) return 1.0 / std::sqrt(static_cast<double>(n));
  return 1.0;
}
double inverseScale(int flag, size_t n) {
  if (flag == 2) return 1.0 / static_cast<double>(n);
  if (flag == 4) return 1.0 / std::sqrt(static_cast<double>(n));
  return 1.0;
}

// Orders of the property sweeps: every in-cache order and both ends of the
// threaded path (whose every order the forward test and the thread test
// cover); 19 stands for the large path.
std::vector<int> sweepOrders() {
  std::vector<int> o;
  for (int i = 0; i <= 14; ++i) o.push_back(i);
  o.push_back(18);
  o.push_back(19);
  return o;
}

std::vector<cplx> ccsOf(const std::vector<float>& x, const FFTSpec* s) {
  const size_t n = x.size();
  std::vector<float> out(n + 2);
  EXPECT_EQ(qelsFFTFwd_RToCCS_32f(x.data(), out.data(), s, nullptr), qelStatusOk);
  return qtest::fromCCS(out.data(), n);
}

::testing::AssertionResult closeSpectra(const std::vector<cplx>& got, const std::vector<cplx>& want,
                                        size_t n) {
  const double err = qtest::l2Diff(got, want), norm = qtest::l2Norm(want);
  if (err <= qtest::fftTolerance(n) * norm) return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << "N " << n << ": error " << err << " vs norm " << norm;
}

TEST(RealFft, ReferenceAgreesWithTheDefinition) {
  qtest::Rng rng(11);
  for (size_t n : {1u, 2u, 8u, 128u, 512u}) {
    std::vector<cplx> x(n);
    for (auto& v : x) v = cplx(rng.uniformD(-1, 1), rng.uniformD(-1, 1));
    const auto a = qtest::naiveDft(x), b = qtest::fftDouble(x);
    EXPECT_LE(qtest::l2Diff(a, b), 1e-12 * (1 + qtest::l2Norm(a))) << n;
    const auto back = qtest::fftDouble(b, true);
    for (size_t i = 0; i < n; ++i) EXPECT_NEAR(std::abs(back[i] / double(n) - x[i]), 0, 1e-12);
  }
}

// The sizes, from the formulas written out afresh here.
struct Sizes {
  long planBytes, init, work;
};
long al(long v) { return v & ~31L; }
void largeT(int k, long* t, long* w) {
  static const int b[] = {3, 4, 4, 4, 5, 8}, f[] = {9, 10, 10, 10, 13, 15};
  const int i = std::min(k, 22) - 17, m = k - b[i];
  long t0 = al(8 * (1L << m) + 39), w0 = al(8 * (1L << m) + 31);
  if (m >= 18) largeT(m, &t0, &w0);
  *t = t0 + 8 * (1L << k);
  *w = std::max(w0, 8 * (1L << f[i]));
}
Sizes expectedSizes(int order) {
  const long n = 1L << order, k = order - 1, p = order > 0 ? 1L << k : 0;
  const long r = 2 * al(2 * n + 31), c = al(p + 35), i = order <= 10 ? 0 : al(n + 35) + 32;
  if (order <= 4) return {168, 0, 0};
  if (order <= 6) return {r + 192, 0, 0};
  if (order <= 13) return {al(8 * p + 39) + c + r + 192, i, al(8 * p + 31) + 32};
  if (order <= 18) return {al(7 * p + 31) + al(p + 39) + c + r + 192, i, al(8 * p + 31) + 32};
  long t, w;
  largeT(static_cast<int>(k), &t, &w);
  return {t + c + r + 192, i, std::max(w, 65536L) + 32};
}

TEST(RealFft, SizesFollowTheFormulasForEveryOrder) {
  for (int order = 0; order <= 27; ++order) {
    const Sizes e = expectedSizes(order);
    for (int flag : kFlags) {
      int s = -1, i = -1, w = -1;
      ASSERT_EQ(qelsFFTGetSize_R_32f(order, flag, 0, &s, &i, &w), qelStatusOk);
      EXPECT_EQ(s, e.planBytes) << order;
      EXPECT_EQ(i, e.init) << order;
      EXPECT_EQ(w, e.work) << order;
      int s16 = -1, i16 = -1, w16 = -1;
      ASSERT_EQ(qelsFFTGetSize_R_16s32s(order, flag, 7, &s16, &i16, &w16), qelStatusOk);
      EXPECT_EQ(s16, e.planBytes + 64) << order;
      EXPECT_EQ(i16, e.init ? e.init + 32 : 0) << order;
      EXPECT_EQ(w16, e.work + 4 * (1L << order) + 8 + 32) << order;
    }
  }
  // some values by hand: order 7 has k = 6, N = 128
  int s, i, w;
  ASSERT_EQ(qelsFFTGetSize_R_32f(7, 8, 0, &s, &i, &w), qelStatusOk);
  EXPECT_EQ(s, 544 + 96 + 512 + 192);
  EXPECT_EQ(w, 512 + 32);
  ASSERT_EQ(qelsFFTGetSize_R_32f(11, 8, 0, &s, &i, &w), qelStatusOk);
  EXPECT_EQ(i, 2048 + 32 + 32);
}

TEST(RealFft, ForwardMatchesTheReferenceOnEveryPath) {
  qtest::Rng rng(21);
  for (int order = 0; order <= 20; ++order) {
    const size_t n = size_t{1} << order;
    const auto x = rng.vec<float>(n, -1, 1);
    const auto want = qtest::realSpectrum(x);
    for (int flag : kFlags) {
      // all four flags up to the in-cache path; two on the threaded and large ones
      if (order > 13 && flag != 8 && flag != 1) continue;
      Plan p = makePlan(order, flag);
      auto got = ccsOf(x, p.get());
      const double sc = forwardScale(flag, n);
      for (auto& v : got) v /= sc;
      EXPECT_TRUE(closeSpectra(got, want, n)) << "order " << order << " flag " << flag;
    }
  }
}

TEST(RealFft, SmallOrdersExactly) {
  Plan p0 = makePlan(0, 8), p1 = makePlan(1, 8), p2 = makePlan(2, 8), p0s = makePlan(0, 4);
  float x0[1] = {3.5f}, ccs[4] = {9, 9, 9, 9};
  ASSERT_EQ(qelsFFTFwd_RToCCS_32f(x0, ccs, p0.get(), nullptr), qelStatusOk);
  EXPECT_EQ(ccs[0], 3.5f);
  EXPECT_EQ(ccs[1], 0.0f);
  EXPECT_EQ(ccs[2], 9.0f);  // N = 1 writes two floats
  float scaled[1];
  Plan p0f = makePlan(0, 1);
  ASSERT_EQ(qelsFFTFwd_RToPerm_32f(x0, scaled, p0f.get(), nullptr), qelStatusOk);
  EXPECT_EQ(scaled[0], 3.5f);  // 1/N = 1
  float x1[2] = {1.25f, -2.0f}, y1[2];
  ASSERT_EQ(qelsFFTFwd_RToPerm_32f(x1, y1, p1.get(), nullptr), qelStatusOk);
  EXPECT_EQ(y1[0], -0.75f);
  EXPECT_EQ(y1[1], 3.25f);
  float x2[4] = {1, 2, 4, 8}, y2[4];
  ASSERT_EQ(qelsFFTFwd_RToPerm_32f(x2, y2, p2.get(), nullptr), qelStatusOk);
  const float want2[4] = {15, -5, 1 - 4, 8 - 2};  // X0, X2, x0 - x2, x3 - x1
  EXPECT_TRUE(qtest::sameArrays(y2, want2, 4));
  const float pack2[4] = {15, -3, 6, -5};  // X0, Re X1, Im X1, X2
  float back[4];
  ASSERT_EQ(qelsFFTInv_PackToR_32f(pack2, back, p2.get(), nullptr), qelStatusOk);
  const float fourX[4] = {4, 8, 16, 32};
  EXPECT_TRUE(qtest::sameArrays(back, fourX, 4));
  float y0s[1];
  ASSERT_EQ(qelsFFTFwd_RToPerm_32f(x0, y0s, p0s.get(), nullptr), qelStatusOk);
  EXPECT_EQ(y0s[0], 3.5f);  // 1/sqrt(1)
}

// CCS, Pack and Perm hold the same numbers; the recombination is shared, so
// bit for bit.
TEST(RealFft, PackedLayoutsExactly) {
  qtest::Rng rng(31);
  for (int order = 0; order <= 15; ++order) {
    const size_t n = size_t{1} << order;
    const auto x = rng.vec<float>(n, -4, 4);
    Plan p = makePlan(order, 8);
    std::vector<float> ccs(n + 2, 7.0f), pack(n + 1, 7.0f), perm(n + 1, 7.0f);
    ASSERT_EQ(qelsFFTFwd_RToCCS_32f(x.data(), ccs.data(), p.get(), nullptr), qelStatusOk);
    ASSERT_EQ(qelsFFTFwd_RToPack_32f(x.data(), pack.data(), p.get(), nullptr), qelStatusOk);
    ASSERT_EQ(qelsFFTFwd_RToPerm_32f(x.data(), perm.data(), p.get(), nullptr), qelStatusOk);
    EXPECT_EQ(pack[n], 7.0f);
    EXPECT_EQ(perm[n], 7.0f);
    if (n == 1) {
      EXPECT_EQ(ccs[1], 0.0f);
      EXPECT_EQ(ccs[2], 7.0f);
      EXPECT_EQ(pack[0], ccs[0]);
      EXPECT_EQ(perm[0], ccs[0]);
      continue;
    }
    EXPECT_EQ(ccs[1], 0.0f);
    EXPECT_EQ(ccs[n + 1], 0.0f);
    std::vector<float> wantPack(n), wantPerm(n);
    wantPack[0] = ccs[0];
    for (size_t i = 1; i + 1 < n; ++i) wantPack[i] = ccs[i + 1];
    wantPack[n - 1] = ccs[n];
    wantPerm[0] = ccs[0];
    wantPerm[1] = ccs[n];
    for (size_t i = 2; i < n; ++i) wantPerm[i] = ccs[i];
    EXPECT_TRUE(qtest::sameArrays(pack.data(), wantPack.data(), n)) << order;
    EXPECT_TRUE(qtest::sameArrays(perm.data(), wantPerm.data(), n)) << order;
  }
}

// In place, out of place, and on a misaligned destination (which moves the
// core and the MT columns into the work buffer): the same numbers.
TEST(RealFft, PlacementAndBuffersGiveTheSameResult) {
  qtest::Rng rng(41);
  for (int order : {3, 5, 7, 8, 12, 13, 14, 15, 19, 20}) {
    const size_t n = size_t{1} << order;
    const auto x = rng.vec<float>(n, -1, 1);
    Plan p = makePlan(order, 1);
    int bufSize = 0;
    ASSERT_EQ(qelsFFTGetBufSize_R_32f(p.get(), &bufSize), qelStatusOk);
    std::vector<float> ref(n);
    ASSERT_EQ(qelsFFTFwd_RToPerm_32f(x.data(), ref.data(), p.get(), nullptr), qelStatusOk);
    for (size_t mis : {0u, 4u, 8u}) {
      if (order >= 19 && mis != 4) continue;  // the large path: once, misaligned
      qtest::Guarded<float> dst(n, mis);
      qtest::Guarded<qel8u> buf(std::max(bufSize, 1), mis + 1);
      ASSERT_EQ(
          qelsFFTFwd_RToPerm_32f(x.data(), dst.data(), p.get(), bufSize ? buf.data() : nullptr),
          qelStatusOk);
      EXPECT_TRUE(qtest::sameArrays(dst.data(), ref.data(), n)) << order << " " << mis;
      EXPECT_TRUE(dst.guardsIntact());
      EXPECT_TRUE(buf.guardsIntact());
      dst.assign(x);
      ASSERT_EQ(qelsFFTFwd_RToPerm_32f(dst.data(), dst.data(), p.get(), nullptr), qelStatusOk);
      EXPECT_TRUE(qtest::sameArrays(dst.data(), ref.data(), n)) << order << " in place " << mis;
      // the inverse, in place (blocked bit reversal from order 20) and out of
      // place, with the caller's buffer
      std::vector<float> back(n);
      ASSERT_EQ(qelsFFTInv_PackToR_32f(ref.data(), back.data(), p.get(), nullptr), qelStatusOk);
      qtest::Guarded<float> inv(n, mis);
      inv.assign(ref);
      ASSERT_EQ(
          qelsFFTInv_PackToR_32f(inv.data(), inv.data(), p.get(), bufSize ? buf.data() : nullptr),
          qelStatusOk);
      EXPECT_TRUE(qtest::sameArrays(inv.data(), back.data(), n)) << order << " inverse " << mis;
      EXPECT_TRUE(inv.guardsIntact());
      EXPECT_TRUE(buf.guardsIntact());
    }
  }
}

TEST(RealFft, InverseOfForwardWithEveryFlag) {
  qtest::Rng rng(51);
  for (int order : sweepOrders()) {
    const size_t n = size_t{1} << order;
    const auto x = rng.vec<float>(n, -1, 1);
    for (int flag : kFlags) {
      if (order > 13 && flag != 2 && flag != 8) continue;
      Plan p = makePlan(order, flag);
      std::vector<float> y(n), back(n);
      ASSERT_EQ(qelsFFTFwd_RToPack_32f(x.data(), y.data(), p.get(), nullptr), qelStatusOk);
      // out of place, then in place
      ASSERT_EQ(qelsFFTInv_PackToR_32f(y.data(), back.data(), p.get(), nullptr), qelStatusOk);
      ASSERT_EQ(qelsFFTInv_PackToR_32f(y.data(), y.data(), p.get(), nullptr), qelStatusOk);
      EXPECT_TRUE(qtest::sameArrays(y.data(), back.data(), n));
      const double total = forwardScale(flag, n) * inverseScale(flag, n) * double(n);
      double err = 0, norm = 0;
      for (size_t i = 0; i < n; ++i) {
        err += std::pow(back[i] / total - x[i], 2);
        norm += double(x[i]) * x[i];
      }
      EXPECT_LE(std::sqrt(err), 2 * qtest::fftTolerance(n) * std::sqrt(norm))
          << "order " << order << " flag " << flag;
    }
  }
}

// The inverse alone against the reference: x[n] = sum X[k] e^(+...).
TEST(RealFft, InverseMatchesTheReference) {
  qtest::Rng rng(55);
  for (int order : {1, 2, 3, 4, 5, 6, 7, 10, 13, 14, 17, 19}) {
    const size_t n = size_t{1} << order;
    std::vector<float> pack(n);
    for (auto& v : pack) v = rng.uniform(-1, 1);
    std::vector<cplx> full(n);
    full[0] = pack[0];
    if (n > 1) full[n / 2] = pack[n - 1];
    for (size_t k = 1; k < n / 2; ++k) {
      full[k] = cplx(pack[2 * k - 1], pack[2 * k]);
      full[n - k] = std::conj(full[k]);
    }
    const auto want = n <= 64 ? qtest::naiveDft(full, true) : qtest::fftDouble(full, true);
    Plan p = makePlan(order, 8);
    std::vector<float> got(n);
    ASSERT_EQ(qelsFFTInv_PackToR_32f(pack.data(), got.data(), p.get(), nullptr), qelStatusOk);
    std::vector<cplx> g(got.begin(), got.end());
    EXPECT_TRUE(closeSpectra(g, want, n)) << order;
  }
}

// FFTW-style properties: linearity, impulse response, time shift.
TEST(RealFft, LinearityImpulseAndShift) {
  qtest::Rng rng(61);
  for (int order : sweepOrders()) {
    const size_t n = size_t{1} << order;
    Plan p = makePlan(order, 8);
    const auto x = rng.vec<float>(n, -1, 1), y = rng.vec<float>(n, -1, 1);
    const float a = 0.75f, b = -1.5f;
    std::vector<float> z(n);
    for (size_t i = 0; i < n; ++i) z[i] = a * x[i] + b * y[i];
    const auto fx = ccsOf(x, p.get()), fy = ccsOf(y, p.get()), fz = ccsOf(z, p.get());
    std::vector<cplx> comb(fx.size());
    for (size_t k = 0; k < fx.size(); ++k) comb[k] = double(a) * fx[k] + double(b) * fy[k];
    EXPECT_TRUE(closeSpectra(fz, comb, n)) << "linearity, order " << order;

    // impulse at position s: X[k] = exp(-2 pi i s k / N)
    const size_t s = n > 1 ? 1 + static_cast<size_t>(rng.integer(0, static_cast<int>(n) - 2)) : 0;
    std::vector<float> imp(n, 0.0f);
    imp[s] = 1.0f;
    const auto fi = ccsOf(imp, p.get());
    std::vector<cplx> wantImp(fi.size());
    for (size_t k = 0; k < fi.size(); ++k) {
      const double ang = -2.0 * M_PI * double((s * k) % n) / double(n);
      wantImp[k] = cplx(std::cos(ang), std::sin(ang));
    }
    EXPECT_TRUE(closeSpectra(fi, wantImp, n)) << "impulse, order " << order;

    // circular shift by s: X'[k] = X[k] exp(-2 pi i s k / N)
    std::vector<float> sh(n);
    for (size_t i = 0; i < n; ++i) sh[(i + s) % n] = x[i];
    const auto fs = ccsOf(sh, p.get());
    std::vector<cplx> wantShift(fs.size());
    for (size_t k = 0; k < fs.size(); ++k) wantShift[k] = fx[k] * wantImp[k];
    EXPECT_TRUE(closeSpectra(fs, wantShift, n)) << "shift, order " << order;
  }
}

TEST(RealFft, MultiThreadedPathDoesNotDependOnTheThreadCount) {
  const int saved = omp_get_max_threads();
  qtest::Rng rng(71);
  for (int order = 14; order <= 18; ++order) {
    const size_t n = size_t{1} << order;
    const auto x = rng.vec<float>(n, -1, 1);
    std::vector<float> one(n), two(n), inv1(n), inv2(n);
    for (int flag : {1, 2}) {
      omp_set_num_threads(1);
      Plan p1 = makePlan(order, flag);
      EXPECT_EQ(p1->numThreads, 1);
      ASSERT_EQ(qelsFFTFwd_RToPack_32f(x.data(), one.data(), p1.get(), nullptr), qelStatusOk);
      ASSERT_EQ(qelsFFTInv_PackToR_32f(one.data(), inv1.data(), p1.get(), nullptr), qelStatusOk);
      omp_set_num_threads(2);
      Plan p2 = makePlan(order, flag);
      EXPECT_EQ(p2->numThreads, 2);
      ASSERT_EQ(qelsFFTFwd_RToPack_32f(x.data(), two.data(), p2.get(), nullptr), qelStatusOk);
      ASSERT_EQ(qelsFFTInv_PackToR_32f(two.data(), inv2.data(), p2.get(), nullptr), qelStatusOk);
      EXPECT_TRUE(qtest::sameArrays(one.data(), two.data(), n)) << order;
      EXPECT_TRUE(qtest::sameArrays(inv1.data(), inv2.data(), n)) << order;
    }
  }
  omp_set_num_threads(saved);
}

// A plan in caller memory stays inside the reported sizes, wherever the
// memory starts, and transforms equal those of an allocated plan.
TEST(RealFft, PlanInCallerMemoryFitsTheReportedSizes) {
  qtest::Rng rng(81);
  for (int order : {0, 4, 5, 6, 7, 10, 11, 13, 14, 18, 19}) {
    const size_t n = size_t{1} << order;
    int s, i, w;
    ASSERT_EQ(qelsFFTGetSize_R_32f(order, 2, 0, &s, &i, &w), qelStatusOk);
    const auto x = rng.vec<float>(n, -1, 1);
    Plan ref = makePlan(order, 2);
    std::vector<float> want(n + 2);
    ASSERT_EQ(qelsFFTFwd_RToCCS_32f(x.data(), want.data(), ref.get(), nullptr), qelStatusOk);
    for (size_t mis : {1u, 31u}) {
      qtest::Guarded<qel8u> mem(s, mis), init(std::max(i, 1), mis);
      qtest::Guarded<qel8u> work(std::max(w, 1), mis);
      FFTSpec* p = nullptr;
      ASSERT_EQ(qelsFFTInit_R_32f(&p, order, 2, 5, mem.data(), i ? init.data() : nullptr),
                qelStatusOk);
      EXPECT_EQ(reinterpret_cast<uintptr_t>(p) % 32, 0u);
      EXPECT_EQ(p->specTag, 6);
      EXPECT_EQ(p->hint, 5);
      EXPECT_EQ(p->ownsMemory, 0);
      EXPECT_TRUE(mem.guardsIntact()) << order;
      EXPECT_TRUE(init.guardsIntact()) << order;
      std::vector<float> got(n + 2);
      ASSERT_EQ(qelsFFTFwd_RToCCS_32f(x.data(), got.data(), p, w ? work.data() : nullptr),
                qelStatusOk);
      EXPECT_TRUE(work.guardsIntact()) << order;
      EXPECT_TRUE(qtest::sameArrays(got.data(), want.data(), n + 2)) << order;
      int bs = -1;
      ASSERT_EQ(qelsFFTGetBufSize_R_32f(p, &bs), qelStatusOk);
      EXPECT_EQ(bs, w);
      EXPECT_EQ(qelsFFTFree_R_32f(p), qelStatusOk);
      EXPECT_EQ(p->specTag, 0);
      EXPECT_EQ(qelsFFTFwd_RToCCS_32f(x.data(), got.data(), p, nullptr), qelStatusContextMatch);
    }
  }
}

TEST(RealFft, ScaleValuesOfThePlan) {
  for (int order : {0, 3, 9, 12}) {
    const int n = 1 << order;
    EXPECT_EQ(makePlan(order, 1)->scale, 1.0f / float(n));
    EXPECT_EQ(makePlan(order, 2)->scale, 1.0f / float(n));
    EXPECT_EQ(makePlan(order, 4)->scale, float(1.0 / std::sqrt(double(n))));
    Plan p1 = makePlan(order, 1), p2 = makePlan(order, 2), p4 = makePlan(order, 4),
         p8 = makePlan(order, 8);
    EXPECT_EQ(p1->fwdScaled * 10 + p1->invScaled, 10);
    EXPECT_EQ(p2->fwdScaled * 10 + p2->invScaled, 1);
    EXPECT_EQ(p4->fwdScaled * 10 + p4->invScaled, 11);
    EXPECT_EQ(p8->fwdScaled * 10 + p8->invScaled, 0);
  }
}

TEST(RealFft, SizeQueryStatusesInOrder) {
  int s = -1, i = -1, w = -1;
  EXPECT_EQ(qelsFFTGetSize_R_32f(-1, 8, 0, &s, &i, &w), qelStatusFFTOrder);
  EXPECT_EQ(qelsFFTGetSize_R_32f(31, 3, 0, nullptr, &i, &w), qelStatusFFTOrder);
  EXPECT_EQ(qelsFFTGetSize_R_32f(30, 3, 0, nullptr, &i, &w), qelStatusNullPtr);
  EXPECT_EQ(qelsFFTGetSize_R_32f(5, 8, 0, &s, nullptr, &w), qelStatusNullPtr);
  EXPECT_EQ(qelsFFTGetSize_R_32f(5, 8, 0, &s, &i, nullptr), qelStatusNullPtr);
  EXPECT_EQ(qelsFFTGetSize_R_32f(28, 3, 0, &s, &i, &w), qelStatusFFTFlag);
  EXPECT_EQ(qelsFFTGetSize_R_32f(5, 0, 0, &s, &i, &w), qelStatusFFTFlag);
  EXPECT_EQ(qelsFFTGetSize_R_32f(28, 8, 0, &s, &i, &w), qelStatusFFTOrder);
  EXPECT_EQ(qelsFFTGetSize_R_32f(30, 1, 0, &s, &i, &w), qelStatusFFTOrder);
  EXPECT_EQ(s, -1);
  EXPECT_EQ(i, -1);
  EXPECT_EQ(w, -1);
  EXPECT_EQ(qelsFFTGetSize_R_16s32s(28, 3, 0, &s, &i, &w), qelStatusFFTFlag);
  EXPECT_EQ(qelsFFTGetSize_R_16s32s(-2, 3, 0, &s, &i, &w), qelStatusFFTOrder);
  EXPECT_EQ(s, -1);
}

TEST(RealFft, InitStatusesInOrder) {
  qtest::Guarded<qel8u> mem(4096), init(4096);
  FFTSpec* p = nullptr;
  EXPECT_EQ(qelsFFTInit_R_32f(nullptr, 3, 8, 0, mem.data(), init.data()), qelStatusNullPtr);
  EXPECT_EQ(qelsFFTInit_R_32f(&p, 28, 3, 0, nullptr, init.data()), qelStatusFFTOrder);
  EXPECT_EQ(qelsFFTInit_R_32f(&p, -1, 8, 0, mem.data(), init.data()), qelStatusFFTOrder);
  EXPECT_EQ(qelsFFTInit_R_32f(&p, 3, 3, 0, nullptr, init.data()), qelStatusNullPtr);
  EXPECT_TRUE(mem.untouched());
  EXPECT_EQ(qelsFFTInit_R_32f(&p, 11, 8, 0, mem.data(), nullptr), qelStatusNullPtr);
  EXPECT_EQ(p, nullptr);
  // a good plan, then a bad flag on the same memory clears its tag
  ASSERT_EQ(qelsFFTInit_R_32f(&p, 3, 8, 0, mem.data(), nullptr), qelStatusOk);
  ASSERT_EQ(p->specTag, 6);
  FFTSpec* q = nullptr;
  EXPECT_EQ(qelsFFTInit_R_32f(&q, 3, 16, 0, mem.data(), nullptr), qelStatusFFTFlag);
  EXPECT_EQ(q, nullptr);
  EXPECT_EQ(p->specTag, 0);
  EXPECT_TRUE(init.untouched());

  EXPECT_EQ(qelsFFTInitAlloc_R_32f(nullptr, 99, 3, 0), qelStatusNullPtr);
  EXPECT_EQ(qelsFFTInitAlloc_R_32f(&q, 31, 8, 0), qelStatusFFTOrder);
  EXPECT_EQ(qelsFFTInitAlloc_R_32f(&q, 5, 7, 0), qelStatusFFTFlag);
  EXPECT_EQ(qelsFFTInitAlloc_R_32f(&q, 28, 8, 0), qelStatusFFTOrder);
  EXPECT_EQ(q, nullptr);
}

TEST(RealFft, TransformStatusesWithCanaries) {
  Plan p = makePlan(8, 8);
  qtest::Guarded<float> src(256), dst(258);
  for (size_t i = 0; i < 256; ++i) src[i] = float(i);
  dst.poison();
  using Fn = qelStatus (*)(const qel32f*, qel32f*, const FFTSpec*, qel8u*);
  for (Fn fn : {qelsFFTFwd_RToCCS_32f, qelsFFTFwd_RToPack_32f, qelsFFTFwd_RToPerm_32f,
                qelsFFTInv_PackToR_32f}) {
    EXPECT_EQ(fn(nullptr, nullptr, nullptr, nullptr), qelStatusNullPtr);
    FFTSpec fake = *p;
    fake.specTag = 5;
    EXPECT_EQ(fn(nullptr, dst.data(), &fake, nullptr), qelStatusContextMatch);
    EXPECT_EQ(fn(nullptr, dst.data(), p.get(), nullptr), qelStatusNullPtr);
    EXPECT_EQ(fn(src.data(), nullptr, p.get(), nullptr), qelStatusNullPtr);
    EXPECT_TRUE(dst.untouched());
  }
  int size = -1;
  EXPECT_EQ(qelsFFTGetBufSize_R_32f(nullptr, &size), qelStatusNullPtr);
  EXPECT_EQ(qelsFFTGetBufSize_R_32f(p.get(), nullptr), qelStatusNullPtr);
  Plan small = makePlan(4, 8);
  ASSERT_EQ(qelsFFTGetBufSize_R_32f(small.get(), &size), qelStatusOk);
  EXPECT_EQ(size, 0);
  EXPECT_EQ(qelsFFTFree_R_32f(nullptr), qelStatusNullPtr);
}

TEST(RealFft, AllocationFailuresLeakNothing) {
  for (int order : {5, 12, 15}) {
    for (long successes = 0; successes < 2; ++successes) {
      qtest::FailingAllocator fail(successes);
      FFTSpec* p = nullptr;
      const qelStatus st = qelsFFTInitAlloc_R_32f(&p, order, 2, 0);
      if (order <= 10 && successes == 1) {  // one block only: it succeeded
        ASSERT_EQ(st, qelStatusOk);
        qelsFFTFree_R_32f(p);
      } else {
        EXPECT_EQ(st, qelStatusMemAlloc) << order << " " << successes;
        EXPECT_EQ(p, nullptr);
      }
      EXPECT_TRUE(fail.nothingLeaked());
    }
  }
  // the transform's own work buffer
  Plan p = makePlan(12, 8);
  qtest::Guarded<float> src(4096), dst(4096);
  dst.poison();
  {
    qtest::FailingAllocator fail(0);
    EXPECT_EQ(qelsFFTFwd_RToPerm_32f(src.data(), dst.data(), p.get(), nullptr), qelStatusMemAlloc);
    EXPECT_EQ(qelsFFTInv_PackToR_32f(src.data(), dst.data(), p.get(), nullptr), qelStatusMemAlloc);
    EXPECT_TRUE(fail.nothingLeaked());
  }
  EXPECT_TRUE(dst.untouched());
  // a transform whose plan needs no work buffer allocates nothing
  Plan q = makePlan(6, 8);
  {
    qtest::FailingAllocator fail(0);
    EXPECT_EQ(qelsFFTFwd_RToPerm_32f(src.data(), dst.data(), q.get(), nullptr), qelStatusOk);
  }
}

// ---- the 16-bit flavour ---------------------------------------------------------

TEST(RealFft16s32s, EqualsTheFloatTransformRoundedOnce) {
  qtest::Rng rng(91);
  for (int order : {0, 1, 2, 4, 5, 7, 11, 14}) {
    const int n = 1 << order;
    for (int flag : {1, 8}) {
      FFTSpec16s32s* p = nullptr;
      ASSERT_EQ(qelsFFTInitAlloc_R_16s32s(&p, order, flag, 3), qelStatusOk);
      EXPECT_EQ(p->hint, 3);
      EXPECT_EQ(p->pSpec32f->hint, 0);
      const auto x = rng.vec<qel16s>(n, -32768, 32767);
      std::vector<float> xf(x.begin(), x.end()), perm(n);
      ASSERT_EQ(qelsFFTFwd_RToPerm_32f(xf.data(), perm.data(), p->pSpec32f, nullptr), qelStatusOk);
      for (int sf : {-2, 0, 3}) {
        std::vector<qel32s> got(n + 3, 12345);
        ASSERT_EQ(qelsFFTFwd_RToCCS_16s32s_Sfs(x.data(), got.data(), p, sf, nullptr), qelStatusOk);
        std::vector<qel32s> want(n + 3, 12345);
        for (int i = 0; i < n; ++i) {
          const double v = std::nearbyint(double(perm[i]) * std::ldexp(1.0, -sf));
          want[i] = static_cast<qel32s>(std::clamp(v, -2147483648.0, 2147483647.0));
        }
        if (n > 1) {
          want[n] = want[1];
          want[n + 1] = 0;
        }
        want[1] = 0;
        EXPECT_TRUE(qtest::sameArrays(got.data(), want.data(), n + 3)) << order << " sf " << sf;
      }
      // with a caller buffer of the reported size, misaligned
      int s, i, w;
      ASSERT_EQ(qelsFFTGetSize_R_16s32s(order, flag, 0, &s, &i, &w), qelStatusOk);
      qtest::Guarded<qel8u> buf(w, 3);
      std::vector<qel32s> a(n + 2), b(n + 2);
      ASSERT_EQ(qelsFFTFwd_RToCCS_16s32s_Sfs(x.data(), a.data(), p, 1, buf.data()), qelStatusOk);
      ASSERT_EQ(qelsFFTFwd_RToCCS_16s32s_Sfs(x.data(), b.data(), p, 1, nullptr), qelStatusOk);
      EXPECT_TRUE(buf.guardsIntact());
      EXPECT_TRUE(qtest::sameArrays(a.data(), b.data(), n + 2));
      EXPECT_EQ(qelsFFTFree_R_16s32s(p), qelStatusOk);
    }
  }
}

TEST(RealFft16s32s, StatusesAndCallerMemory) {
  FFTSpec16s32s* p = nullptr;
  qtest::Guarded<qel8u> mem(8192), init(8192);
  EXPECT_EQ(qelsFFTInit_R_16s32s(nullptr, 99, 8, 0, nullptr, nullptr), qelStatusNullPtr);
  EXPECT_EQ(qelsFFTInit_R_16s32s(&p, 99, 8, 0, nullptr, nullptr), qelStatusFFTOrder);
  EXPECT_EQ(qelsFFTInit_R_16s32s(&p, 3, 99, 0, nullptr, nullptr), qelStatusNullPtr);
  EXPECT_TRUE(mem.untouched());
  EXPECT_EQ(qelsFFTInit_R_16s32s(&p, 3, 99, 0, mem.data(), nullptr), qelStatusFFTFlag);
  EXPECT_EQ(reinterpret_cast<FFTSpec16s32s*>(mem.data())->specTag, 0);  // cleared
  EXPECT_EQ(p, nullptr);
  int s, i, w;
  ASSERT_EQ(qelsFFTGetSize_R_16s32s(11, 8, 0, &s, &i, &w), qelStatusOk);
  qtest::Guarded<qel8u> m2(s, 17), i2(i, 9);
  ASSERT_EQ(qelsFFTInit_R_16s32s(&p, 11, 8, 0, m2.data(), i2.data()), qelStatusOk);
  EXPECT_TRUE(m2.guardsIntact());
  EXPECT_TRUE(i2.guardsIntact());
  EXPECT_EQ(p->specTag, 0x434D414F);
  EXPECT_EQ(p->workSize, p->pSpec32f->workSize + 4 * 2048 + 8);

  qtest::Guarded<qel16s> src(2048);
  qtest::Guarded<qel32s> dst(2050);
  for (size_t k = 0; k < 2048; ++k) src[k] = qel16s(k);
  dst.poison();
  EXPECT_EQ(qelsFFTFwd_RToCCS_16s32s_Sfs(src.data(), dst.data(), nullptr, 0, nullptr),
            qelStatusNullPtr);
  FFTSpec16s32s fake = *p;
  fake.specTag = 6;
  EXPECT_EQ(qelsFFTFwd_RToCCS_16s32s_Sfs(nullptr, dst.data(), &fake, 0, nullptr),
            qelStatusContextMatch);
  EXPECT_EQ(qelsFFTFwd_RToCCS_16s32s_Sfs(nullptr, dst.data(), p, 0, nullptr), qelStatusNullPtr);
  EXPECT_EQ(qelsFFTFwd_RToCCS_16s32s_Sfs(src.data(), nullptr, p, 0, nullptr), qelStatusNullPtr);
  {
    qtest::FailingAllocator fail(0);
    EXPECT_EQ(qelsFFTFwd_RToCCS_16s32s_Sfs(src.data(), dst.data(), p, 0, nullptr),
              qelStatusMemAlloc);
    EXPECT_TRUE(fail.nothingLeaked());
  }
  EXPECT_TRUE(dst.untouched());
  EXPECT_EQ(qelsFFTFree_R_16s32s(p), qelStatusOk);
  EXPECT_EQ(qelsFFTFwd_RToCCS_16s32s_Sfs(src.data(), dst.data(), p, 0, nullptr),
            qelStatusContextMatch);
  EXPECT_EQ(qelsFFTFree_R_16s32s(p), qelStatusContextMatch);
  for (long successes = 0; successes < 2; ++successes) {
    qtest::FailingAllocator fail(successes);
    EXPECT_EQ(qelsFFTInitAlloc_R_16s32s(&p, 12, 8, 0), qelStatusMemAlloc);
    EXPECT_TRUE(fail.nothingLeaked());
  }
}

}  // namespace
