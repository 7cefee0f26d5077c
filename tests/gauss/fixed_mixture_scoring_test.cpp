// 16-bit mixture scores (qelsLogGaussMultiMix_*, qelsLogGaussMaxMultiMix_*,
// qelsLogGaussAddMultiMix_*, qelsLogGaussMixture_*), every member in both
// layouts against the scalar reference, bit for bit.
#include <gtest/gtest.h>

#include <string>

#include "fixed_scoring_data.h"
#include "gauss/gauss.h"

namespace {

using fxdata::Kind;

enum class Op { InPlace, Max, Add, Mixture, IdMixture };

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

#define MM_D2(fn, T)                                                                         \
  [](const qel16s* m, const qel16s* v, int st, const qel16s* s, int w, const void*, void* d, \
     int h, int sf) { return fn(m, v, st, s, w, static_cast<T*>(d), h, sf); }
#define MM_D2L(fn, T)                                                                         \
  [](const qel16s** m, const qel16s** v, const qel16s* s, int w, const void*, void* d, int h, \
     int sf) { return fn(m, v, s, w, static_cast<T*>(d), h, sf); }
#define MX_D2(fn, T)                                                                            \
  [](const qel16s* m, const qel16s* v, int st, const qel16s* s, int w, const void* pv, void* d, \
     int h,                                                                                     \
     int sf) { return fn(m, v, st, s, w, static_cast<const T*>(pv), static_cast<T*>(d), h, sf); }
#define MX_D2L(fn, T)                                                                            \
  [](const qel16s** m, const qel16s** v, const qel16s* s, int w, const void* pv, void* d, int h, \
     int sf) { return fn(m, v, s, w, static_cast<const T*>(pv), static_cast<T*>(d), h, sf); }
#define MIX_D2(fn)                                                                              \
  [](const qel16s* m, const qel16s* v, int st, const qel16s* s, int w, const void* pv, void* d, \
     int h, int sf) {                                                                           \
    return fn(s, m, v, h, st, w, static_cast<const qel32f*>(pv), static_cast<qel32f*>(d), sf);  \
  }
#define MIX_D2L(fn)                                                                              \
  [](const qel16s** m, const qel16s** v, const qel16s* s, int w, const void* pv, void* d, int h, \
     int sf) {                                                                                   \
    return fn(s, m, v, h, w, static_cast<const qel32f*>(pv), static_cast<qel32f*>(d), sf);       \
  }
#define IDMIX_D2(fn)                                                                          \
  [](const qel16s* m, const qel16s*, int st, const qel16s* s, int w, const void* pv, void* d, \
     int h, int sf) {                                                                         \
    return fn(s, m, h, st, w, static_cast<const qel32f*>(pv), static_cast<qel32f*>(d), sf);   \
  }
#define IDMIX_D2L(fn)                                                                          \
  [](const qel16s** m, const qel16s**, const qel16s* s, int w, const void* pv, void* d, int h, \
     int sf) {                                                                                 \
    return fn(s, m, h, w, static_cast<const qel32f*>(pv), static_cast<qel32f*>(d), sf);        \
  }

const Member kMembers[] = {
    {"qelsLogGaussMultiMix_16s32s", Kind::InvP32s, Op::InPlace, true,
     MM_D2(qelsLogGaussMultiMix_16s32s_D2Sfs, qel32s),
     MM_D2L(qelsLogGaussMultiMix_16s32s_D2LSfs, qel32s)},
    {"qelsLogGaussMultiMix_Scaled", Kind::InvK32f, Op::InPlace, true,
     MM_D2(qelsLogGaussMultiMix_Scaled_16s32f_D2, qel32f),
     MM_D2L(qelsLogGaussMultiMix_Scaled_16s32f_D2L, qel32f)},
    {"qelsLogGaussMultiMix_Low", Kind::Low32s, Op::InPlace, true,
     MM_D2(qelsLogGaussMultiMix_Low_16s32s_D2Sfs, qel32s),
     MM_D2L(qelsLogGaussMultiMix_Low_16s32s_D2LSfs, qel32s)},
    {"qelsLogGaussMultiMix_LowScaled", Kind::Low32f, Op::InPlace, true,
     MM_D2(qelsLogGaussMultiMix_LowScaled_16s32f_D2, qel32f),
     MM_D2L(qelsLogGaussMultiMix_LowScaled_16s32f_D2L, qel32f)},
    {"qelsLogGaussMaxMultiMix_16s32s", Kind::InvRz, Op::Max, false,
     MX_D2(qelsLogGaussMaxMultiMix_16s32s_D2Sfs, qel32s),
     MX_D2L(qelsLogGaussMaxMultiMix_16s32s_D2LSfs, qel32s)},
    {"qelsLogGaussMaxMultiMix_Scaled", Kind::InvK32f, Op::Max, false,
     MX_D2(qelsLogGaussMaxMultiMix_Scaled_16s32f_D2, qel32f),
     MX_D2L(qelsLogGaussMaxMultiMix_Scaled_16s32f_D2L, qel32f)},
    {"qelsLogGaussMaxMultiMix_Low", Kind::Low32s, Op::Max, false,
     MX_D2(qelsLogGaussMaxMultiMix_Low_16s32s_D2Sfs, qel32s),
     MX_D2L(qelsLogGaussMaxMultiMix_Low_16s32s_D2LSfs, qel32s)},
    {"qelsLogGaussMaxMultiMix_LowScaled", Kind::Low32f, Op::Max, false,
     MX_D2(qelsLogGaussMaxMultiMix_LowScaled_16s32f_D2, qel32f),
     MX_D2L(qelsLogGaussMaxMultiMix_LowScaled_16s32f_D2L, qel32f)},
    {"qelsLogGaussAddMultiMix_Scaled", Kind::InvK32f, Op::Add, true,
     MX_D2(qelsLogGaussAddMultiMix_Scaled_16s32f_D2, qel32f),
     MX_D2L(qelsLogGaussAddMultiMix_Scaled_16s32f_D2L, qel32f)},
    {"qelsLogGaussAddMultiMix_LowScaled", Kind::Low32f, Op::Add, true,
     MX_D2(qelsLogGaussAddMultiMix_LowScaled_16s32f_D2, qel32f),
     MX_D2L(qelsLogGaussAddMultiMix_LowScaled_16s32f_D2L, qel32f)},
    {"qelsLogGaussMixture_Scaled", Kind::InvK32f, Op::Mixture, true,
     MIX_D2(qelsLogGaussMixture_Scaled_16s32f_D2), MIX_D2L(qelsLogGaussMixture_Scaled_16s32f_D2L)},
    {"qelsLogGaussMixture_LowScaled", Kind::Low32f, Op::Mixture, true,
     MIX_D2(qelsLogGaussMixture_LowScaled_16s32f_D2),
     MIX_D2L(qelsLogGaussMixture_LowScaled_16s32f_D2L)},
    {"qelsLogGaussMixture_IdVarScaled", Kind::UnitK32f, Op::IdMixture, false,
     IDMIX_D2(qelsLogGaussMixture_IdVarScaled_16s32f_D2),
     IDMIX_D2L(qelsLogGaussMixture_IdVarScaled_16s32f_D2L)},
    {"qelsLogGaussMixture_IdVarLowScaled", Kind::IdLow32f, Op::IdMixture, false,
     IDMIX_D2(qelsLogGaussMixture_IdVarLowScaled_16s32f_D2),
     IDMIX_D2L(qelsLogGaussMixture_IdVarLowScaled_16s32f_D2L)},
};

// The identity mixtures score each component with the single-observation
// order.
uint32_t singleOrderScore(Kind k, const qel16s* s, const qel16s* m, int width, float val, int sf) {
  using namespace fxref;
  const long long e = (long long)sf + 1;
  const float r = k == Kind::UnitK32f
                      ? val - singleSum(W::Unit, s, m, nullptr, width) * pow2neg(e)
                      : val - byIntPow(singleSum(W::Pairs, s, m, nullptr, width), e);
  return std::bit_cast<uint32_t>(r);
}

// The log sum in chunks of 100: the first chunk alone, each later one with
// the running sum as its first element.
float chunkedLogSum(const std::vector<float>& scores) {
  const int h = int(scores.size());
  float run = 0.0f;
  for (int m0 = 0; m0 < h; m0 += 100) {
    const int n = std::min(100, h - m0);
    std::vector<float> buf;
    if (m0 > 0) buf.push_back(run);
    buf.insert(buf.end(), scores.begin() + m0, scores.begin() + m0 + n);
    qelsLogSum_32f_M7(buf.data(), &run, int(buf.size()));
  }
  return run;
}

std::vector<uint32_t> expected(const Member& mb, const std::vector<const qel16s*>& means,
                               const std::vector<const qel16s*>& vars, const qel16s* src, int width,
                               const std::vector<uint32_t>& val, const std::vector<uint32_t>& prior,
                               int sf, bool rowPointers) {
  const int h = int(means.size());
  std::vector<uint32_t> sc(h);
  const bool g4 = mb.g4 && rowPointers;
  for (int i = 0; i < h; ++i) {
    if (mb.op == Op::IdMixture)
      sc[i] = singleOrderScore(mb.kind, src, means[i], width, std::bit_cast<float>(val[i]), sf);
    else
      sc[i] = fxdata::blockScore(mb.kind, src, means[i], vars[i], width, val[i], sf, g4, prior[i]);
  }
  if (mb.op == Op::InPlace) return sc;
  if (mb.op == Op::Max) {
    for (int i = 0; i < h; ++i) sc[i] = fxdata::maxOf(mb.kind, sc[i], prior[i]);
    return sc;
  }
  std::vector<float> f(h);
  for (int i = 0; i < h; ++i) f[i] = std::bit_cast<float>(sc[i]);
  if (mb.op == Op::Add) {
    std::vector<float> acc(h);
    for (int i = 0; i < h; ++i) acc[i] = std::bit_cast<float>(prior[i]);
    qelsLogAddVec_32f_M7_sp(f.data(), acc.data(), h);
    for (int i = 0; i < h; ++i) sc[i] = std::bit_cast<uint32_t>(acc[i]);
    return sc;
  }
  return {std::bit_cast<uint32_t>(chunkedLogSum(f))};
}

struct Shape {
  int width, height, extraStep, misalign;
};

// Every member, both layouts, widths across the column groups (8, the group
// of 4 of the row-pointer kernels, single columns), heights across the
// 100-component chunks, aligned and misaligned data, all scale factors.
TEST(FixedMixtureScores, EveryMemberMatchesTheReferenceBitForBit) {
  qtest::Rng rng(3502);
  const Shape shapes[] = {{1, 1, 0, 0},    {3, 2, 0, 2},  {4, 3, 4, 0},  {12, 5, 4, 0},
                          {13, 4, 1, 2},   {16, 1, 0, 0}, {39, 7, 1, 2}, {20, 100, 4, 0},
                          {11, 101, 0, 2}, {6, 201, 2, 0}};
  for (const Member& mb : kMembers) {
    const bool f32 = fxdata::isFloat(mb.kind);
    for (const Shape& sh : shapes) {
      for (int sf : fxdata::kScaleFactors) {
        SCOPED_TRACE(std::string(mb.name) + " width " + std::to_string(sh.width) + " height " +
                     std::to_string(sh.height) + " sf " + std::to_string(sf));
        const int step = sh.width + sh.extraStep, h = sh.height;
        qtest::Guarded<qel16s> mean(size_t(step) * h, sh.misalign),
            var(size_t(step) * h, sh.misalign), src(sh.width, sh.misalign);
        mean.assign(fxdata::data16(rng, step * h));
        var.assign(fxdata::data16(rng, step * h, -100, 3000));
        src.assign(fxdata::data16(rng, sh.width));
        std::vector<uint32_t> val(h), prior(h);
        for (auto& x : val)
          x = (mb.op == Op::Mixture || mb.op == Op::IdMixture)
                  ? std::bit_cast<uint32_t>(rng.uniform(-2.0e5f, 10.0f))
                  : fxdata::valBits(rng, f32);
        for (auto& x : prior)
          x = mb.op == Op::Add ? std::bit_cast<uint32_t>(rng.uniform(-3.0e5f, 10.0f))
                               : fxdata::valBits(rng, f32);
        std::vector<const qel16s*> means(h), vars(h);
        for (int i = 0; i < h; ++i) {
          means[i] = mean.data() + size_t(i) * step;
          vars[i] = var.data() + size_t(i) * step;
        }
        qtest::Guarded<uint32_t> pv(h);
        pv.assign(val);
        const bool one = mb.op == Op::Mixture || mb.op == Op::IdMixture;
        qtest::Guarded<uint32_t> dst(one ? 1 : h);
        const std::vector<uint32_t>& start = mb.op == Op::InPlace ? val : prior;
        auto run = [&](bool rowPointers) {
          const auto want =
              expected(mb, means, vars, src.data(), sh.width, val, prior, sf, rowPointers);
          dst.poison();
          if (!one) dst.assign(start);
          qelStatus st;
          if (!rowPointers) {
            st = mb.d2(mean.data(), var.data(), step, src.data(), sh.width, pv.data(), dst.data(),
                       h, sf);
          } else {
            // Copies of the rows; one of them off 16 bytes when misaligned.
            qtest::RowSet<qel16s> rm(h, sh.width, sh.misalign ? h - 1 : -1, 2), rv(h, sh.width);
            for (int i = 0; i < h; ++i)
              for (int c = 0; c < sh.width; ++c) {
                rm.row(i)[c] = means[i][c];
                rv.row(i)[c] = vars[i][c];
              }
            std::vector<const qel16s*> pm(rm.ptrs(), rm.ptrs() + h), pw(rv.ptrs(), rv.ptrs() + h);
            st = mb.d2l(pm.data(), pw.data(), src.data(), sh.width, pv.data(), dst.data(), h, sf);
          }
          ASSERT_EQ(st, qelStatusOk);
          EXPECT_EQ(dst.vec(), want) << (rowPointers ? "D2L" : "D2");
          EXPECT_TRUE(dst.guardsIntact());
          EXPECT_EQ(pv.vec(), val) << "constants changed";
        };
        run(false);
        run(true);
      }
    }
  }
}

// Strided forms, the mixtures included: stride (-37) before null pointers
// (-8) before sizes (-6); row-pointer forms: null pointers, then sizes.
// Nothing is written on any error.
TEST(FixedMixtureScores, ArgumentChecksInOrderWriteNothing) {
  qtest::Guarded<qel16s> mean(64), var(64), src(8);
  qtest::Guarded<uint32_t> pv(8), dst(8);
  const qel16s* rm[8];
  const qel16s* rv[8];
  for (int r = 0; r < 8; ++r) {
    rm[r] = mean.data() + 8 * r;
    rv[r] = var.data() + 8 * r;
  }
  for (const Member& mb : kMembers) {
    SCOPED_TRACE(mb.name);
    const bool needVar = mb.op != Op::IdMixture;
    const bool needVal = mb.op != Op::InPlace;
    dst.poison();
    EXPECT_EQ(mb.d2(nullptr, nullptr, 3, nullptr, 4, nullptr, nullptr, 0, 0), qelStatusStride);
    EXPECT_EQ(mb.d2(mean.data(), var.data(), 8, src.data(), 0, pv.data(), nullptr, 2, 0),
              qelStatusNullPtr);
    EXPECT_EQ(mb.d2(nullptr, var.data(), 8, src.data(), 4, pv.data(), dst.data(), 2, 0),
              qelStatusNullPtr);
    EXPECT_EQ(mb.d2(mean.data(), var.data(), 8, nullptr, 4, pv.data(), dst.data(), 2, 0),
              qelStatusNullPtr);
    if (needVar)
      EXPECT_EQ(mb.d2(mean.data(), nullptr, 8, src.data(), 4, pv.data(), dst.data(), 2, 0),
                qelStatusNullPtr);
    if (needVal)
      EXPECT_EQ(mb.d2(mean.data(), var.data(), 8, src.data(), 4, nullptr, dst.data(), 2, 0),
                qelStatusNullPtr);
    EXPECT_EQ(mb.d2(mean.data(), var.data(), 8, src.data(), 0, pv.data(), dst.data(), 2, 0),
              qelStatusSize);
    EXPECT_EQ(mb.d2(mean.data(), var.data(), 8, src.data(), 4, pv.data(), dst.data(), 0, 0),
              qelStatusSize);
    EXPECT_EQ(mb.d2l(nullptr, rv, src.data(), 0, pv.data(), dst.data(), 2, 0), qelStatusNullPtr);
    EXPECT_EQ(mb.d2l(rm, rv, src.data(), 4, pv.data(), nullptr, 0, 0), qelStatusNullPtr);
    if (needVar)
      EXPECT_EQ(mb.d2l(rm, nullptr, src.data(), 4, pv.data(), dst.data(), 0, 0), qelStatusNullPtr);
    if (needVal)
      EXPECT_EQ(mb.d2l(rm, rv, src.data(), 4, nullptr, dst.data(), 0, 0), qelStatusNullPtr);
    EXPECT_EQ(mb.d2l(rm, rv, src.data(), 4, pv.data(), dst.data(), 0, 0), qelStatusSize);
    EXPECT_EQ(mb.d2l(rm, rv, src.data(), -2, pv.data(), dst.data(), 3, 0), qelStatusSize);
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
