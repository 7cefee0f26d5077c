// 16-bit mixture scores (qelsLogGaussMultiMix_*, qelsLogGaussMaxMultiMix_*,
// qelsLogGaussAddMultiMix_*, qelsLogGaussMixture_*), every member in both
// layouts against the scalar reference, bit for bit.
#include <gtest/gtest.h>

#include "fixed_scoring_data.h"

namespace {

using namespace fxdata;

// One signature for all: the component matrices (mean, var) at `step` or as
// row pointers, the observation, the constants pVal (ignored in place) and
// the destination (pSrcDst, or pResult of the mixtures).
using D2Fn = qelStatus (*)(const qel16s*, const qel16s*, int, const qel16s*, int, const void*,
                           void*, int, int);
using D2LFn = qelStatus (*)(const qel16s**, const qel16s**, const qel16s*, int, const void*, void*,
                            int, int);

struct Member {
  const char* name;
  Kind kind;
  Op op;
  bool g4;  // the row-pointer kernel adds a group of 4 columns
  D2Fn d2;
  D2LFn d2l;
};

#define ARGS_D2                                                                              \
  const qel16s *m, const qel16s *v, int st, const qel16s *s, int w, const void *pv, void *d, \
      int h, int sf
#define ARGS_D2L \
  const qel16s **m, const qel16s **v, const qel16s *s, int w, const void *pv, void *d, int h, int sf
#define OUT(T) static_cast<T*>(d)
#define VAL(T) static_cast<const T*>(pv)
#define IN_D2(fn, T) [](ARGS_D2) { return (void)pv, fn(m, v, st, s, w, OUT(T), h, sf); }
#define IN_D2L(fn, T) [](ARGS_D2L) { return (void)pv, fn(m, v, s, w, OUT(T), h, sf); }
#define MX_D2(fn, T) [](ARGS_D2) { return fn(m, v, st, s, w, VAL(T), OUT(T), h, sf); }
#define MX_D2L(fn, T) [](ARGS_D2L) { return fn(m, v, s, w, VAL(T), OUT(T), h, sf); }
#define MIX_D2(fn, T) [](ARGS_D2) { return fn(s, m, v, h, st, w, VAL(T), OUT(T), sf); }
#define MIX_D2L(fn, T) [](ARGS_D2L) { return fn(s, m, v, h, w, VAL(T), OUT(T), sf); }
#define ID_D2(fn, T) [](ARGS_D2) { return (void)v, fn(s, m, h, st, w, VAL(T), OUT(T), sf); }
#define ID_D2L(fn, T) [](ARGS_D2L) { return (void)v, fn(s, m, h, w, VAL(T), OUT(T), sf); }
// Both layouts of a 32-bit member (tags _D2Sfs, _D2LSfs) or a single one.
#define I32(pre, A, kind, op, g4)                                     \
  {                                                                   \
#pre, Kind::kind, Op::op, g4, A##_D2(pre##_16s32s_D2Sfs, qel32s), \
        A##_D2L(pre##_16s32s_D2LSfs, qel32s)                          \
  }
#define F32(pre, A, kind, op, g4)                                  \
  {                                                                \
#pre, Kind::kind, Op::op, g4, A##_D2(pre##_16s32f_D2, qel32f), \
        A##_D2L(pre##_16s32f_D2L, qel32f)                          \
  }

const Member kMembers[] = {
    I32(qelsLogGaussMultiMix, IN, InvP32s, Store, true),
    F32(qelsLogGaussMultiMix_Scaled, IN, InvK32f, Store, true),
    I32(qelsLogGaussMultiMix_Low, IN, Low32s, Store, true),
    F32(qelsLogGaussMultiMix_LowScaled, IN, Low32f, Store, true),
    I32(qelsLogGaussMaxMultiMix, MX, InvRz, Max, false),
    F32(qelsLogGaussMaxMultiMix_Scaled, MX, InvK32f, Max, false),
    I32(qelsLogGaussMaxMultiMix_Low, MX, Low32s, Max, false),
    F32(qelsLogGaussMaxMultiMix_LowScaled, MX, Low32f, Max, false),
    F32(qelsLogGaussAddMultiMix_Scaled, MX, InvK32f, Add, true),
    F32(qelsLogGaussAddMultiMix_LowScaled, MX, Low32f, Add, true),
    F32(qelsLogGaussMixture_Scaled, MIX, InvK32f, Mixture, true),
    F32(qelsLogGaussMixture_LowScaled, MIX, Low32f, Mixture, true),
    F32(qelsLogGaussMixture_IdVarScaled, ID, UnitK32f, IdMixture, false),
    F32(qelsLogGaussMixture_IdVarLowScaled, ID, IdLow32f, IdMixture, false),
};

bool mixture(Op op) { return op == Op::Mixture || op == Op::IdMixture; }

// The identity mixtures score each component in the single-observation
// order.
uint32_t singleOrderScore(Kind k, const qel16s* s, const qel16s* m, int width, float val, int sf) {
  using namespace fxref;
  const long long e = (long long)sf + 1;
  return std::bit_cast<uint32_t>(
      k == Kind::UnitK32f ? val - singleSum(W::Unit, s, m, nullptr, width) * pow2neg(e)
                          : val - byIntPow(singleSum(W::Pairs, s, m, nullptr, width), e));
}

// The log sum in chunks of 100: the first chunk alone, each later one with
// the running sum as its first element.
uint32_t chunkedLogSum(const std::vector<uint32_t>& scores) {
  const int h = int(scores.size());
  float run = 0.0f;
  for (int m0 = 0; m0 < h; m0 += 100) {
    std::vector<float> buf;
    if (m0 > 0) buf.push_back(run);
    for (int i = m0; i < std::min(h, m0 + 100); ++i) buf.push_back(std::bit_cast<float>(scores[i]));
    qelsLogSum_32f_M7(buf.data(), &run, int(buf.size()));
  }
  return std::bit_cast<uint32_t>(run);
}

// Every member, both layouts, widths across the column groups (8, the group
// of 4 of the row-pointer kernels, single columns), heights across the
// 100-component chunks, aligned and misaligned data, all scale factors. The
// mixtures' constants lie close together, so that every component counts
// in the log sum and the chunking shows in its rounding.
TEST(FixedMixtureScores, EveryMemberMatchesTheReferenceBitForBit) {
  qtest::Rng rng(3502);
  const Shape shapes[] = {{1, 1, 0, 0},    {3, 2, 0, 2},    {4, 3, 4, 0},  {12, 5, 4, 0},
                          {13, 4, 1, 2},   {16, 1, 0, 0},   {10, 3, 1, 0}, {39, 7, 1, 2},
                          {20, 100, 4, 0}, {11, 101, 0, 2}, {6, 201, 2, 0}};
  for (const Member& mb : kMembers)
    for (const Shape& sh : shapes)
      for (int sf : kScaleFactors) {
        SCOPED_TRACE(trace(mb.name, sh, sf));
        const int step = sh.width + sh.extraStep, w = sh.width, h = sh.height;
        qtest::Guarded<qel16s> mean(size_t(step) * h, sh.misalign),
            var(size_t(step) * h, sh.misalign), src(w, sh.misalign);
        mean.assign(data16(rng, step * h));
        var.assign(data16(rng, step * h, -100, 3000));
        src.assign(data16(rng, w));
        std::vector<uint32_t> val(h), prior(h), sc(h);
        for (auto& x : val)
          x = mixture(mb.op) ? std::bit_cast<uint32_t>(rng.uniform(-8.0f, 8.0f))
                             : valBits(rng, isFloat(mb.kind));
        for (auto& x : prior)
          x = mb.op == Op::Add ? std::bit_cast<uint32_t>(rng.uniform(-3.0e5f, 10.0f))
                               : valBits(rng, isFloat(mb.kind));
        const auto means = rowsOf(mean.data(), h, step), vars = rowsOf(var.data(), h, step);
        qtest::Guarded<uint32_t> pv(h), dst(mixture(mb.op) ? 1 : h);
        pv.assign(val);
        for (bool rowPointers : {false, true}) {
          for (int i = 0; i < h; ++i)
            sc[i] = mb.op == Op::IdMixture ? singleOrderScore(mb.kind, src.data(), means[i], w,
                                                              std::bit_cast<float>(val[i]), sf)
                                           : blockScore(mb.kind, src.data(), means[i], vars[i], w,
                                                        val[i], sf, mb.g4 && rowPointers, prior[i]);
          const auto want = mixture(mb.op) ? std::vector<uint32_t>{chunkedLogSum(sc)}
                                           : finish(mb.kind, mb.op, sc, prior);
          dst.poison();
          if (!mixture(mb.op)) dst.assign(mb.op == Op::Store ? val : prior);
          if (rowPointers) {
            RowCopies rm(means, w, sh.misalign ? h - 1 : -1), rv(vars, w, -1);
            ASSERT_EQ(
                mb.d2l(rm.ptrs.data(), rv.ptrs.data(), src.data(), w, pv.data(), dst.data(), h, sf),
                qelStatusOk);
          } else {
            ASSERT_EQ(
                mb.d2(mean.data(), var.data(), step, src.data(), w, pv.data(), dst.data(), h, sf),
                qelStatusOk);
          }
          EXPECT_EQ(dst.vec(), want) << (rowPointers ? "D2L" : "D2");
          EXPECT_TRUE(dst.guardsIntact());
          EXPECT_EQ(pv.vec(), val) << "constants changed";
        }
      }
}

// Strided forms, the mixtures included: stride (-37) before null pointers
// (-8) before sizes (-6); row-pointer forms: null pointers, then sizes.
// Nothing is written on any error.
TEST(FixedMixtureScores, ArgumentChecksInOrderWriteNothing) {
  qtest::Guarded<qel16s> mean(64), var(64), src(8);
  qtest::Guarded<uint32_t> pvals(8), dst(8);
  const auto rmv = rowsOf(mean.data(), 8, 8), rvv = rowsOf(var.data(), 8, 8);
  const qel16s** rm = const_cast<const qel16s**>(rmv.data());
  const qel16s** rv = const_cast<const qel16s**>(rvv.data());
  const qel16s *m = mean.data(), *v = var.data(), *s = src.data();
  const void* pv = pvals.data();
  for (const Member& mb : kMembers) {
    SCOPED_TRACE(mb.name);
    const bool needVar = mb.op != Op::IdMixture, needVal = mb.op != Op::Store;
    dst.poison();
    void* d = dst.data();
    EXPECT_EQ(mb.d2(nullptr, nullptr, 3, nullptr, 4, nullptr, nullptr, 0, 0), qelStatusStride);
    EXPECT_EQ(mb.d2(m, v, 8, s, 0, pv, nullptr, 2, 0), qelStatusNullPtr);
    EXPECT_EQ(mb.d2(nullptr, v, 8, s, 4, pv, d, 2, 0), qelStatusNullPtr);
    EXPECT_EQ(mb.d2(m, v, 8, nullptr, 4, pv, d, 2, 0), qelStatusNullPtr);
    if (needVar) EXPECT_EQ(mb.d2(m, nullptr, 8, s, 4, pv, d, 2, 0), qelStatusNullPtr);
    if (needVal) EXPECT_EQ(mb.d2(m, v, 8, s, 4, nullptr, d, 2, 0), qelStatusNullPtr);
    EXPECT_EQ(mb.d2(m, v, 8, s, 0, pv, d, 2, 0), qelStatusSize);
    EXPECT_EQ(mb.d2(m, v, 8, s, 4, pv, d, 0, 0), qelStatusSize);
    EXPECT_EQ(mb.d2l(nullptr, rv, s, 0, pv, d, 2, 0), qelStatusNullPtr);
    EXPECT_EQ(mb.d2l(rm, rv, s, 4, pv, nullptr, 0, 0), qelStatusNullPtr);
    if (needVar) EXPECT_EQ(mb.d2l(rm, nullptr, s, 4, pv, d, 0, 0), qelStatusNullPtr);
    if (needVal) EXPECT_EQ(mb.d2l(rm, rv, s, 4, nullptr, d, 0, 0), qelStatusNullPtr);
    EXPECT_EQ(mb.d2l(rm, rv, s, 4, pv, d, 0, 0), qelStatusSize);
    EXPECT_EQ(mb.d2l(rm, rv, s, -2, pv, d, 3, 0), qelStatusSize);
    EXPECT_TRUE(dst.untouched());
  }
}

// A mixture of one component is that component's score; the in-place
// members use their earlier scores as constants when called twice.
TEST(FixedMixtureScores, OneComponentAndRepeatedInPlaceCalls) {
  const qel16s s[5] = {3, -4, 100, 32767, -32768}, m[5] = {1, 2, 3, -32768, 32767},
               v[5] = {2, 3, 1, 1, 1};
  const qel32f val = -10.0f;
  qel32f mix = 0.0f, single = 0.0f;
  ASSERT_EQ(qelsLogGaussMixture_Scaled_16s32f_D2(s, m, v, 1, 5, 5, &val, &mix, 20), qelStatusOk);
  ASSERT_EQ(qelsLogGaussMultiMix_Scaled_16s32f_D2(m, v, 5, s, 5, &single, 1, 20), qelStatusOk);
  EXPECT_EQ(mix, val + single);  // the second call started from 0
  qel32s acc = 1000;
  ASSERT_EQ(qelsLogGaussMultiMix_Low_16s32s_D2Sfs(m, v, 5, s, 5, &acc, 1, 3), qelStatusOk);
  const qel32s once = acc;
  ASSERT_EQ(qelsLogGaussMultiMix_Low_16s32s_D2Sfs(m, v, 5, s, 5, &acc, 1, 3), qelStatusOk);
  EXPECT_EQ(acc - once, once - 1000);
}

}  // namespace
