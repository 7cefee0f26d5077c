// Real FFT: accuracy against a double-precision reference on every path and
// flag, the packed layouts, the plan sizes, plans in caller memory, the
// error statuses and the multi-threaded path.
#include <omp.h>

#include <algorithm>
#include <memory>

#include "base/base.h"
#include "base/fft/fft.h"
#include "fft_reference.h"
#include "test_support.h"

namespace {

using qtest::cplx;
using qtest::Guarded;
using qtest::sameArrays;

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

// The factor a flag puts on the forward or the inverse transform.
double flagScale(int flag, size_t n, bool inverse) {
  if (flag == 4) return 1.0 / std::sqrt(static_cast<double>(n));
  return flag == (inverse ? 2 : 1) ? 1.0 / static_cast<double>(n) : 1.0;
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
      int s = -1, i = -1, w = -1, s16 = -1, i16 = -1, w16 = -1;
      ASSERT_EQ(qelsFFTGetSize_R_32f(order, flag, 0, &s, &i, &w), qelStatusOk);
      ASSERT_EQ(qelsFFTGetSize_R_16s32s(order, flag, 7, &s16, &i16, &w16), qelStatusOk);
      EXPECT_EQ(std::vector<long>({s, i, w, s16, i16, w16}),
                std::vector<long>({e.planBytes, e.init, e.work, e.planBytes + 64,
                                   e.init ? e.init + 32 : 0, e.work + 4 * (1L << order) + 40}))
          << order;
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

// Every order, every flag up to the in-cache path (flags 1 and 2, which
// between them scale and leave unscaled each direction, on the threaded and
// large paths): the forward transform against the reference; Pack and Perm
// as exact rearrangements of CCS, writing N floats; the inverse, out of place
// and in place, back to the signal; with flag 2 the inverse of a random Pack
// spectrum against the reference.
TEST(RealFft, EveryOrderAndFlagAgainstTheReference) {
  qtest::Rng rng(21);
  for (int order = 0; order <= 20; ++order) {
    const size_t n = size_t{1} << order;
    const auto x = rng.vec<float>(n, -1, 1);
    const auto want = qtest::realSpectrum(x);
    for (int flag : kFlags) {
      if (order > 13 && flag > 2) continue;
      const std::string at = "order " + std::to_string(order) + " flag " + std::to_string(flag);
      Plan p = makePlan(order, flag);
      if (flag != 8)
        EXPECT_EQ(p->scale, flag == 4 ? float(1.0 / std::sqrt(double(n))) : 1.0f / float(n)) << at;
      std::vector<float> ccs(n + 2, 7.0f), pack(n + 1, 7.0f), perm(n + 1, 7.0f);
      ASSERT_EQ(qelsFFTFwd_RToCCS_32f(x.data(), ccs.data(), p.get(), nullptr), qelStatusOk);
      ASSERT_EQ(qelsFFTFwd_RToPack_32f(x.data(), pack.data(), p.get(), nullptr), qelStatusOk);
      ASSERT_EQ(qelsFFTFwd_RToPerm_32f(x.data(), perm.data(), p.get(), nullptr), qelStatusOk);
      auto got = qtest::fromCCS(ccs.data(), n);
      for (auto& v : got) v /= flagScale(flag, n, false);
      EXPECT_TRUE(closeSpectra(got, want, n)) << at;
      EXPECT_EQ(ccs[1], 0.0f) << at;
      EXPECT_EQ(n == 1 ? ccs[2] : ccs[n + 1], n == 1 ? 7.0f : 0.0f) << at;
      EXPECT_EQ(pack[n], 7.0f) << at;
      EXPECT_EQ(perm[n], 7.0f) << at;
      std::vector<float> wantPack(n), wantPerm(n);
      wantPack[0] = wantPerm[0] = ccs[0];
      if (n > 1) {
        for (size_t i = 1; i + 1 < n; ++i) wantPack[i] = ccs[i + 1];
        wantPack[n - 1] = wantPerm[1] = ccs[n];
        for (size_t i = 2; i < n; ++i) wantPerm[i] = ccs[i];
      }
      EXPECT_TRUE(sameArrays(pack.data(), wantPack.data(), n)) << at;
      EXPECT_TRUE(sameArrays(perm.data(), wantPerm.data(), n)) << at;

      std::vector<float> back(n);
      ASSERT_EQ(qelsFFTInv_PackToR_32f(pack.data(), back.data(), p.get(), nullptr), qelStatusOk);
      ASSERT_EQ(qelsFFTInv_PackToR_32f(pack.data(), pack.data(), p.get(), nullptr), qelStatusOk);
      EXPECT_TRUE(sameArrays(pack.data(), back.data(), n)) << at;
      const double total = flagScale(flag, n, false) * flagScale(flag, n, true) * double(n);
      double err = 0, norm = 0;
      for (size_t i = 0; i < n; ++i) {
        err += std::pow(back[i] / total - x[i], 2);
        norm += double(x[i]) * x[i];
      }
      EXPECT_LE(std::sqrt(err), 2 * qtest::fftTolerance(n) * std::sqrt(norm)) << at;

      if (flag != 2) continue;
      // x[n] = sum X[k] e^(+...), with X from a random Pack array
      std::vector<float> packed(n), sig(n);
      for (auto& v : packed) v = rng.uniform(-1, 1);
      std::vector<cplx> full(n);
      full[0] = packed[0];
      if (n > 1) full[n / 2] = packed[n - 1];
      for (size_t k = 1; k < n / 2; ++k) {
        full[k] = cplx(packed[2 * k - 1], packed[2 * k]);
        full[n - k] = std::conj(full[k]);
      }
      const auto wantSig = n <= 64 ? qtest::naiveDft(full, true) : qtest::fftDouble(full, true);
      ASSERT_EQ(qelsFFTInv_PackToR_32f(packed.data(), sig.data(), p.get(), nullptr), qelStatusOk);
      std::vector<cplx> g(n);
      for (size_t i = 0; i < n; ++i) g[i] = double(sig[i]) * double(n);
      EXPECT_TRUE(closeSpectra(g, wantSig, n)) << at << " inverse";
    }
  }
}

// In place, out of place, and on a misaligned destination (which moves the
// core and the MT columns into the work buffer): the same numbers, the
// caller's buffer and the destination never overrun.
TEST(RealFft, PlacementAndBuffersGiveTheSameResult) {
  qtest::Rng rng(41);
  for (int order : {3, 5, 7, 8, 12, 13, 14, 15, 19, 20}) {
    const size_t n = size_t{1} << order;
    const auto x = rng.vec<float>(n, -1, 1);
    Plan p = makePlan(order, 1);
    int bufSize = 0;
    ASSERT_EQ(qelsFFTGetBufSize_R_32f(p.get(), &bufSize), qelStatusOk);
    std::vector<float> ref(n), back(n);
    ASSERT_EQ(qelsFFTFwd_RToPerm_32f(x.data(), ref.data(), p.get(), nullptr), qelStatusOk);
    ASSERT_EQ(qelsFFTInv_PackToR_32f(ref.data(), back.data(), p.get(), nullptr), qelStatusOk);
    for (size_t mis : {0u, 4u, 8u}) {
      if (order >= 19 && mis != 4) continue;  // the large path: once, misaligned
      Guarded<float> dst(n, mis), inv(n, mis);
      Guarded<qel8u> buf(std::max(bufSize, 1), mis + 1);
      qel8u* const b = bufSize ? buf.data() : nullptr;
      ASSERT_EQ(qelsFFTFwd_RToPerm_32f(x.data(), dst.data(), p.get(), b), qelStatusOk);
      EXPECT_TRUE(sameArrays(dst.data(), ref.data(), n)) << order << " " << mis;
      dst.assign(x);
      ASSERT_EQ(qelsFFTFwd_RToPerm_32f(dst.data(), dst.data(), p.get(), nullptr), qelStatusOk);
      EXPECT_TRUE(sameArrays(dst.data(), ref.data(), n)) << order << " in place " << mis;
      // the inverse in place (blocked bit reversal from order 20), with the caller's buffer
      inv.assign(ref);
      ASSERT_EQ(qelsFFTInv_PackToR_32f(inv.data(), inv.data(), p.get(), b), qelStatusOk);
      EXPECT_TRUE(sameArrays(inv.data(), back.data(), n)) << order << " inverse " << mis;
      EXPECT_TRUE(dst.guardsIntact() && inv.guardsIntact() && buf.guardsIntact()) << order;
    }
  }
}

TEST(RealFft, MultiThreadedPathDoesNotDependOnTheThreadCount) {
  const int saved = omp_get_max_threads();
  qtest::Rng rng(71);
  for (int order = 14; order <= 18; ++order) {
    const size_t n = size_t{1} << order;
    const auto x = rng.vec<float>(n, -1, 1);
    for (int flag : {1, 2}) {
      std::vector<float> fwd[2], inv[2];
      for (int threads : {1, 2}) {
        omp_set_num_threads(threads);
        Plan p = makePlan(order, flag);
        EXPECT_EQ(p->numThreads, threads);
        fwd[threads - 1].resize(n);
        inv[threads - 1].resize(n);
        ASSERT_EQ(qelsFFTFwd_RToPack_32f(x.data(), fwd[threads - 1].data(), p.get(), nullptr),
                  qelStatusOk);
        ASSERT_EQ(qelsFFTInv_PackToR_32f(fwd[threads - 1].data(), inv[threads - 1].data(), p.get(),
                                         nullptr),
                  qelStatusOk);
      }
      EXPECT_TRUE(sameArrays(fwd[0].data(), fwd[1].data(), n)) << order;
      EXPECT_TRUE(sameArrays(inv[0].data(), inv[1].data(), n)) << order;
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
    std::vector<float> want(n + 2), got(n + 2);
    ASSERT_EQ(qelsFFTFwd_RToCCS_32f(x.data(), want.data(), ref.get(), nullptr), qelStatusOk);
    for (size_t mis : {1u, 31u}) {
      Guarded<qel8u> mem(s, mis), init(std::max(i, 1), mis), work(std::max(w, 1), mis);
      FFTSpec* p = nullptr;
      ASSERT_EQ(qelsFFTInit_R_32f(&p, order, 2, 5, mem.data(), i ? init.data() : nullptr),
                qelStatusOk);
      EXPECT_EQ(reinterpret_cast<uintptr_t>(p) % 32, 0u);
      EXPECT_EQ(std::vector<int>({p->specTag, p->hint, p->ownsMemory}),
                std::vector<int>({6, 5, 0}));
      ASSERT_EQ(qelsFFTFwd_RToCCS_32f(x.data(), got.data(), p, w ? work.data() : nullptr),
                qelStatusOk);
      EXPECT_TRUE(mem.guardsIntact() && init.guardsIntact() && work.guardsIntact()) << order;
      EXPECT_TRUE(sameArrays(got.data(), want.data(), n + 2)) << order;
      int bs = -1;
      ASSERT_EQ(qelsFFTGetBufSize_R_32f(p, &bs), qelStatusOk);
      EXPECT_EQ(bs, w);
      EXPECT_EQ(qelsFFTFree_R_32f(p), qelStatusOk);
      EXPECT_EQ(p->specTag, 0);
      EXPECT_EQ(qelsFFTFwd_RToCCS_32f(x.data(), got.data(), p, nullptr), qelStatusContextMatch);
    }
  }
}

// Two faults at once: the first check in the order decides; nothing is
// written on any error.
TEST(RealFft, StatusesInCheckOrder) {
  int s = -1, i = -1, w = -1;
  const std::pair<qelStatus, qelStatus> sizeCases[] = {
      {qelsFFTGetSize_R_32f(-1, 8, 0, &s, &i, &w), qelStatusFFTOrder},
      {qelsFFTGetSize_R_32f(31, 3, 0, nullptr, &i, &w), qelStatusFFTOrder},
      {qelsFFTGetSize_R_32f(30, 3, 0, nullptr, &i, &w), qelStatusNullPtr},
      {qelsFFTGetSize_R_32f(5, 8, 0, &s, nullptr, &w), qelStatusNullPtr},
      {qelsFFTGetSize_R_32f(5, 8, 0, &s, &i, nullptr), qelStatusNullPtr},
      {qelsFFTGetSize_R_32f(28, 3, 0, &s, &i, &w), qelStatusFFTFlag},
      {qelsFFTGetSize_R_32f(5, 0, 0, &s, &i, &w), qelStatusFFTFlag},
      {qelsFFTGetSize_R_32f(28, 8, 0, &s, &i, &w), qelStatusFFTOrder},
      {qelsFFTGetSize_R_32f(30, 1, 0, &s, &i, &w), qelStatusFFTOrder},
      {qelsFFTGetSize_R_16s32s(28, 3, 0, &s, &i, &w), qelStatusFFTFlag},
      {qelsFFTGetSize_R_16s32s(-2, 3, 0, &s, &i, &w), qelStatusFFTOrder},
  };
  for (size_t k = 0; k < std::size(sizeCases); ++k)
    EXPECT_EQ(sizeCases[k].first, sizeCases[k].second) << "case " << k;
  EXPECT_EQ(std::vector<int>({s, i, w}), std::vector<int>({-1, -1, -1}));

  Guarded<qel8u> mem(4096), init(4096);
  FFTSpec *p = nullptr, *q = nullptr;
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
  EXPECT_EQ(qelsFFTInit_R_32f(&q, 3, 16, 0, mem.data(), nullptr), qelStatusFFTFlag);
  EXPECT_EQ(p->specTag, 0);
  EXPECT_TRUE(init.untouched());
  EXPECT_EQ(qelsFFTInitAlloc_R_32f(nullptr, 99, 3, 0), qelStatusNullPtr);
  EXPECT_EQ(qelsFFTInitAlloc_R_32f(&q, 31, 8, 0), qelStatusFFTOrder);
  EXPECT_EQ(qelsFFTInitAlloc_R_32f(&q, 5, 7, 0), qelStatusFFTFlag);
  EXPECT_EQ(qelsFFTInitAlloc_R_32f(&q, 28, 8, 0), qelStatusFFTOrder);
  EXPECT_EQ(q, nullptr);

  Plan plan = makePlan(8, 8), small = makePlan(4, 8);
  Guarded<float> src(256), dst(258);
  for (size_t k = 0; k < 256; ++k) src[k] = float(k);
  FFTSpec fake = *plan;
  fake.specTag = 5;
  using Fn = qelStatus (*)(const qel32f*, qel32f*, const FFTSpec*, qel8u*);
  for (Fn fn : {qelsFFTFwd_RToCCS_32f, qelsFFTFwd_RToPack_32f, qelsFFTFwd_RToPerm_32f,
                qelsFFTInv_PackToR_32f}) {
    EXPECT_EQ(fn(nullptr, nullptr, nullptr, nullptr), qelStatusNullPtr);
    EXPECT_EQ(fn(nullptr, dst.data(), &fake, nullptr), qelStatusContextMatch);
    EXPECT_EQ(fn(nullptr, dst.data(), plan.get(), nullptr), qelStatusNullPtr);
    EXPECT_EQ(fn(src.data(), nullptr, plan.get(), nullptr), qelStatusNullPtr);
  }
  EXPECT_TRUE(dst.untouched());
  int size = -1;
  EXPECT_EQ(qelsFFTGetBufSize_R_32f(nullptr, &size), qelStatusNullPtr);
  EXPECT_EQ(qelsFFTGetBufSize_R_32f(plan.get(), nullptr), qelStatusNullPtr);
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
  // the transform's own work buffer; a plan that needs none allocates nothing
  Plan p = makePlan(12, 8), q = makePlan(6, 8);
  Guarded<float> src(4096), dst(4096);
  {
    qtest::FailingAllocator fail(0);
    EXPECT_EQ(qelsFFTFwd_RToPerm_32f(src.data(), dst.data(), p.get(), nullptr), qelStatusMemAlloc);
    EXPECT_EQ(qelsFFTInv_PackToR_32f(src.data(), dst.data(), p.get(), nullptr), qelStatusMemAlloc);
    EXPECT_TRUE(fail.nothingLeaked());
    EXPECT_TRUE(dst.untouched());
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
        std::vector<qel32s> got(n + 3, 12345), want(n + 3, 12345);
        ASSERT_EQ(qelsFFTFwd_RToCCS_16s32s_Sfs(x.data(), got.data(), p, sf, nullptr), qelStatusOk);
        for (int i = 0; i < n; ++i) {
          const double v = std::nearbyint(double(perm[i]) * std::ldexp(1.0, -sf));
          want[i] = static_cast<qel32s>(std::clamp(v, -2147483648.0, 2147483647.0));
        }
        if (n > 1) want[n] = want[1], want[n + 1] = 0;
        want[1] = 0;
        EXPECT_EQ(got, want) << order << " sf " << sf;
      }
      // with a caller buffer of the reported size, misaligned
      int s, i, w;
      ASSERT_EQ(qelsFFTGetSize_R_16s32s(order, flag, 0, &s, &i, &w), qelStatusOk);
      Guarded<qel8u> buf(w, 3);
      std::vector<qel32s> a(n + 2), b(n + 2);
      ASSERT_EQ(qelsFFTFwd_RToCCS_16s32s_Sfs(x.data(), a.data(), p, 1, buf.data()), qelStatusOk);
      ASSERT_EQ(qelsFFTFwd_RToCCS_16s32s_Sfs(x.data(), b.data(), p, 1, nullptr), qelStatusOk);
      EXPECT_TRUE(buf.guardsIntact());
      EXPECT_EQ(a, b);
      EXPECT_EQ(qelsFFTFree_R_16s32s(p), qelStatusOk);
    }
  }
}

TEST(RealFft16s32s, StatusesAndCallerMemory) {
  FFTSpec16s32s* p = nullptr;
  Guarded<qel8u> mem(8192);
  EXPECT_EQ(qelsFFTInit_R_16s32s(nullptr, 99, 8, 0, nullptr, nullptr), qelStatusNullPtr);
  EXPECT_EQ(qelsFFTInit_R_16s32s(&p, 99, 8, 0, nullptr, nullptr), qelStatusFFTOrder);
  EXPECT_EQ(qelsFFTInit_R_16s32s(&p, 3, 99, 0, nullptr, nullptr), qelStatusNullPtr);
  EXPECT_TRUE(mem.untouched());
  EXPECT_EQ(qelsFFTInit_R_16s32s(&p, 3, 99, 0, mem.data(), nullptr), qelStatusFFTFlag);
  EXPECT_EQ(reinterpret_cast<FFTSpec16s32s*>(mem.data())->specTag, 0);  // cleared
  EXPECT_EQ(p, nullptr);
  int s, i, w;
  ASSERT_EQ(qelsFFTGetSize_R_16s32s(11, 8, 0, &s, &i, &w), qelStatusOk);
  Guarded<qel8u> m2(s, 17), i2(i, 9);
  ASSERT_EQ(qelsFFTInit_R_16s32s(&p, 11, 8, 0, m2.data(), i2.data()), qelStatusOk);
  EXPECT_TRUE(m2.guardsIntact() && i2.guardsIntact());
  EXPECT_EQ(p->specTag, 0x434D414F);
  EXPECT_EQ(p->workSize, p->pSpec32f->workSize + 4 * 2048 + 8);

  Guarded<qel16s> src(2048);
  Guarded<qel32s> dst(2050);
  for (size_t k = 0; k < 2048; ++k) src[k] = qel16s(k);
  FFTSpec16s32s fake = *p;
  fake.specTag = 6;
  EXPECT_EQ(qelsFFTFwd_RToCCS_16s32s_Sfs(src.data(), dst.data(), nullptr, 0, nullptr),
            qelStatusNullPtr);
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
