// 16-bit block scores (frames against one Gaussian: qelsLogGauss_*,
// qelsLogGaussMax_*, qelsLogGaussAdd_*), every member in both layouts
// against the scalar reference, bit for bit.
#include <gtest/gtest.h>
#include <xmmintrin.h>

#include <string>

#include "fixed_scoring_data.h"
#include "gauss/gauss.h"

namespace {

using fxdata::Kind;

enum class Op { Store, Max, Add };

using D2Fn = qelStatus (*)(const qel16s*, int, const qel16s*, const qel16s*, int, void*, int,
                           uint32_t, int);
using D2LFn = qelStatus (*)(const qel16s**, const qel16s*, const qel16s*, int, void*, int, uint32_t,
                            int);

struct Member {
  const char* name;
  Kind kind;
  Op op;
  D2Fn d2;
  D2LFn d2l;
};

#define VAR_D2(fn, T)                                                                  \
  [](const qel16s* s, int st, const qel16s* m, const qel16s* v, int w, void* d, int h, \
     uint32_t vb,                                                                      \
     int sf) { return fn(s, st, m, v, w, static_cast<T*>(d), h, std::bit_cast<T>(vb), sf); }
#define VAR_D2L(fn, T)                                                                       \
  [](const qel16s** s, const qel16s* m, const qel16s* v, int w, void* d, int h, uint32_t vb, \
     int sf) { return fn(s, m, v, w, static_cast<T*>(d), h, std::bit_cast<T>(vb), sf); }
#define ID_D2(fn, T)                                                                              \
  [](const qel16s* s, int st, const qel16s* m, const qel16s*, int w, void* d, int h, uint32_t vb, \
     int sf) { return fn(s, st, m, w, static_cast<T*>(d), h, std::bit_cast<T>(vb), sf); }
#define ID_D2L(fn, T)                                                                      \
  [](const qel16s** s, const qel16s* m, const qel16s*, int w, void* d, int h, uint32_t vb, \
     int sf) { return fn(s, m, w, static_cast<T*>(d), h, std::bit_cast<T>(vb), sf); }

const Member kMembers[] = {
    {"qelsLogGauss_16s32s", Kind::InvP32s, Op::Store, VAR_D2(qelsLogGauss_16s32s_D2Sfs, qel32s),
     VAR_D2L(qelsLogGauss_16s32s_D2LSfs, qel32s)},
    {"qelsLogGauss_Scaled", Kind::InvK32f, Op::Store, VAR_D2(qelsLogGauss_Scaled_16s32f_D2, qel32f),
     VAR_D2L(qelsLogGauss_Scaled_16s32f_D2L, qel32f)},
    {"qelsLogGauss_Low", Kind::Low32s, Op::Store, VAR_D2(qelsLogGauss_Low_16s32s_D2Sfs, qel32s),
     VAR_D2L(qelsLogGauss_Low_16s32s_D2LSfs, qel32s)},
    {"qelsLogGauss_LowScaled", Kind::Low32f, Op::Store,
     VAR_D2(qelsLogGauss_LowScaled_16s32f_D2, qel32f),
     VAR_D2L(qelsLogGauss_LowScaled_16s32f_D2L, qel32f)},
    {"qelsLogGauss_IdVar", Kind::PairsP32s, Op::Store,
     ID_D2(qelsLogGauss_IdVar_16s32s_D2Sfs, qel32s),
     ID_D2L(qelsLogGauss_IdVar_16s32s_D2LSfs, qel32s)},
    {"qelsLogGauss_IdVarScaled", Kind::UnitK32f, Op::Store,
     ID_D2(qelsLogGauss_IdVarScaled_16s32f_D2, qel32f),
     ID_D2L(qelsLogGauss_IdVarScaled_16s32f_D2L, qel32f)},
    {"qelsLogGauss_IdVarLow", Kind::IdLow32s, Op::Store,
     ID_D2(qelsLogGauss_IdVarLow_16s32s_D2Sfs, qel32s),
     ID_D2L(qelsLogGauss_IdVarLow_16s32s_D2LSfs, qel32s)},
    {"qelsLogGauss_IdVarLowScaled", Kind::IdLow32f, Op::Store,
     ID_D2(qelsLogGauss_IdVarLowScaled_16s32f_D2, qel32f),
     ID_D2L(qelsLogGauss_IdVarLowScaled_16s32f_D2L, qel32f)},
    {"qelsLogGaussMax_16s32s", Kind::InvRz, Op::Max, VAR_D2(qelsLogGaussMax_16s32s_D2Sfs, qel32s),
     VAR_D2L(qelsLogGaussMax_16s32s_D2LSfs, qel32s)},
    {"qelsLogGaussMax_Scaled", Kind::InvK32f, Op::Max,
     VAR_D2(qelsLogGaussMax_Scaled_16s32f_D2, qel32f),
     VAR_D2L(qelsLogGaussMax_Scaled_16s32f_D2L, qel32f)},
    {"qelsLogGaussMax_Low", Kind::Low32s, Op::Max, VAR_D2(qelsLogGaussMax_Low_16s32s_D2Sfs, qel32s),
     VAR_D2L(qelsLogGaussMax_Low_16s32s_D2LSfs, qel32s)},
    {"qelsLogGaussMax_LowScaled", Kind::Low32f, Op::Max,
     VAR_D2(qelsLogGaussMax_LowScaled_16s32f_D2, qel32f),
     VAR_D2L(qelsLogGaussMax_LowScaled_16s32f_D2L, qel32f)},
    {"qelsLogGaussMax_IdVar", Kind::UnitRz, Op::Max,
     ID_D2(qelsLogGaussMax_IdVar_16s32s_D2Sfs, qel32s),
     ID_D2L(qelsLogGaussMax_IdVar_16s32s_D2LSfs, qel32s)},
    {"qelsLogGaussMax_IdVarScaled", Kind::UnitK32f, Op::Max,
     ID_D2(qelsLogGaussMax_IdVarScaled_16s32f_D2, qel32f),
     ID_D2L(qelsLogGaussMax_IdVarScaled_16s32f_D2L, qel32f)},
    {"qelsLogGaussMax_IdVarLow", Kind::IdLow32s, Op::Max,
     ID_D2(qelsLogGaussMax_IdVarLow_16s32s_D2Sfs, qel32s),
     ID_D2L(qelsLogGaussMax_IdVarLow_16s32s_D2LSfs, qel32s)},
    {"qelsLogGaussMax_IdVarLowScaled", Kind::IdLow32f, Op::Max,
     ID_D2(qelsLogGaussMax_IdVarLowScaled_16s32f_D2, qel32f),
     ID_D2L(qelsLogGaussMax_IdVarLowScaled_16s32f_D2L, qel32f)},
    {"qelsLogGaussAdd_Scaled", Kind::InvK32f, Op::Add,
     VAR_D2(qelsLogGaussAdd_Scaled_16s32f_D2, qel32f),
     VAR_D2L(qelsLogGaussAdd_Scaled_16s32f_D2L, qel32f)},
    {"qelsLogGaussAdd_LowScaled", Kind::Low32f, Op::Add,
     VAR_D2(qelsLogGaussAdd_LowScaled_16s32f_D2, qel32f),
     VAR_D2L(qelsLogGaussAdd_LowScaled_16s32f_D2L, qel32f)},
    {"qelsLogGaussAdd_IdVarScaled", Kind::UnitK32f, Op::Add,
     ID_D2(qelsLogGaussAdd_IdVarScaled_16s32f_D2, qel32f),
     ID_D2L(qelsLogGaussAdd_IdVarScaled_16s32f_D2L, qel32f)},
    {"qelsLogGaussAdd_IdVarLowScaled", Kind::IdLow32f, Op::Add,
     ID_D2(qelsLogGaussAdd_IdVarLowScaled_16s32f_D2, qel32f),
     ID_D2L(qelsLogGaussAdd_IdVarLowScaled_16s32f_D2L, qel32f)},
};

// The destination bits the member must leave, row by row.
std::vector<uint32_t> expected(const Member& mb, const std::vector<const qel16s*>& rows,
                               const qel16s* mean, const qel16s* var, int width, uint32_t vb,
                               int sf, const std::vector<uint32_t>& prior) {
  const int h = int(rows.size());
  std::vector<uint32_t> out(h);
  for (int r = 0; r < h; ++r) {
    const uint32_t s =
        fxdata::blockScore(mb.kind, rows[r], mean, var, width, vb, sf, false, prior[r]);
    out[r] = mb.op == Op::Max ? fxdata::maxOf(mb.kind, s, prior[r]) : s;
  }
  if (mb.op == Op::Add) {
    std::vector<float> sc(h), acc(h);
    for (int r = 0; r < h; ++r) {
      sc[r] = std::bit_cast<float>(out[r]);
      acc[r] = std::bit_cast<float>(prior[r]);
    }
    qelsLogAddVec_32f_M7_sp(sc.data(), acc.data(), h);
    for (int r = 0; r < h; ++r) out[r] = std::bit_cast<uint32_t>(acc[r]);
  }
  return out;
}

std::vector<uint32_t> priorDst(qtest::Rng& rng, const Member& mb, int h) {
  std::vector<uint32_t> p(h);
  const bool f = fxdata::isFloat(mb.kind);
  for (auto& x : p) x = fxdata::valBits(rng, f);
  if (mb.op == Op::Add)  // log values near the scores and log zero
    for (auto& x : p)
      x = std::bit_cast<uint32_t>(rng.integer(0, 3) == 0 ? -4500000.0f
                                                         : rng.uniform(-3.0e5f, 1.0e3f));
  return p;
}

struct Shape {
  int width, height, extraStep, misalign;
};

// Every member, both layouts, widths across the 8/4 column groups and
// beyond 512 (where the frame kernels stop converting the weights once),
// heights across the 128-row chunk, aligned and misaligned data, all scale
// factors.
TEST(FixedBlockScores, EveryMemberMatchesTheReferenceBitForBit) {
  qtest::Rng rng(3501);
  const Shape shapes[] = {
      {1, 1, 0, 0},   {2, 3, 0, 2},  {7, 5, 1, 0},  {8, 4, 0, 0},    {9, 2, 7, 2},
      {16, 3, 0, 0},  {23, 6, 1, 2}, {39, 7, 1, 0}, {40, 130, 0, 0}, {13, 129, 3, 2},
      {520, 3, 0, 0}, {521, 2, 3, 2}};  // beyond the weights converted once
  for (const Member& mb : kMembers) {
    for (const Shape& sh : shapes) {
      for (int sf : fxdata::kScaleFactors) {
        SCOPED_TRACE(std::string(mb.name) + " width " + std::to_string(sh.width) + " height " +
                     std::to_string(sh.height) + " sf " + std::to_string(sf));
        const int step = sh.width + sh.extraStep;
        qtest::Guarded<qel16s> src(size_t(step) * sh.height, sh.misalign),
            mean(sh.width, sh.misalign), var(sh.width, sh.misalign);
        src.assign(fxdata::data16(rng, step * sh.height));
        mean.assign(fxdata::data16(rng, sh.width));
        var.assign(fxdata::data16(rng, sh.width, -200, 4000));
        const uint32_t vb = fxdata::valBits(rng, fxdata::isFloat(mb.kind));
        const std::vector<uint32_t> prior = priorDst(rng, mb, sh.height);
        std::vector<const qel16s*> rows(sh.height);
        for (int r = 0; r < sh.height; ++r) rows[r] = src.data() + size_t(r) * step;
        const auto want = expected(mb, rows, mean.data(), var.data(), sh.width, vb, sf, prior);

        qtest::Guarded<uint32_t> dst(sh.height);
        dst.assign(prior);
        ASSERT_EQ(mb.d2(src.data(), step, mean.data(), var.data(), sh.width, dst.data(), sh.height,
                        vb, sf),
                  qelStatusOk);
        EXPECT_EQ(dst.vec(), want) << "D2";
        EXPECT_TRUE(dst.guardsIntact());

        // Row pointers, one of them off 16 bytes when misaligned.
        qtest::RowSet<qel16s> rs(sh.height, sh.width, sh.misalign ? sh.height / 2 : -1, 2);
        for (int r = 0; r < sh.height; ++r)
          for (int c = 0; c < sh.width; ++c) rs.row(r)[c] = rows[r][c];
        std::vector<const qel16s*> pp(rs.ptrs(), rs.ptrs() + sh.height);
        dst.assign(prior);
        ASSERT_EQ(
            mb.d2l(pp.data(), mean.data(), var.data(), sh.width, dst.data(), sh.height, vb, sf),
            qelStatusOk);
        EXPECT_EQ(dst.vec(), want) << "D2L";
        EXPECT_TRUE(dst.guardsIntact());
      }
    }
  }
}

// Strided forms: stride first (-37, even with null pointers), then null
// pointers (-8, even with sizes 0), then sizes (-6); row-pointer forms: null
// pointers, then sizes. Nothing is written on any error.
TEST(FixedBlockScores, ArgumentChecksInOrderWriteNothing) {
  qtest::Guarded<qel16s> src(64), mean(8), var(8);
  qtest::Guarded<uint32_t> dst(8);
  const qel16s* rows[8];
  for (int r = 0; r < 8; ++r) rows[r] = src.data() + 8 * r;
  for (const Member& mb : kMembers) {
    SCOPED_TRACE(mb.name);
    const bool v = fxdata::hasVar(mb.kind);
    dst.poison();
    EXPECT_EQ(mb.d2(nullptr, 3, nullptr, nullptr, 4, nullptr, 0, 0, 0), qelStatusStride);
    EXPECT_EQ(mb.d2(src.data(), 3, mean.data(), var.data(), 4, dst.data(), 2, 0, 0),
              qelStatusStride);
    EXPECT_EQ(mb.d2(nullptr, 8, mean.data(), var.data(), 0, dst.data(), 2, 0, 0), qelStatusNullPtr);
    EXPECT_EQ(mb.d2(src.data(), 8, nullptr, var.data(), 4, dst.data(), 2, 0, 0), qelStatusNullPtr);
    EXPECT_EQ(mb.d2(src.data(), 8, mean.data(), nullptr, 4, dst.data(), 2, 0, 0),
              v ? qelStatusNullPtr : qelStatusOk);
    dst.poison();
    EXPECT_EQ(mb.d2(src.data(), 8, mean.data(), var.data(), 4, nullptr, 0, 0, 0), qelStatusNullPtr);
    EXPECT_EQ(mb.d2(src.data(), 8, mean.data(), var.data(), 0, dst.data(), 2, 0, 0), qelStatusSize);
    EXPECT_EQ(mb.d2(src.data(), 8, mean.data(), var.data(), 4, dst.data(), 0, 0, 0), qelStatusSize);
    EXPECT_EQ(mb.d2l(nullptr, mean.data(), var.data(), 0, dst.data(), 2, 0, 0), qelStatusNullPtr);
    EXPECT_EQ(mb.d2l(rows, mean.data(), var.data(), 4, nullptr, 0, 0, 0), qelStatusNullPtr);
    if (v) EXPECT_EQ(mb.d2l(rows, mean.data(), nullptr, 4, dst.data(), 0, 0, 0), qelStatusNullPtr);
    EXPECT_EQ(mb.d2l(rows, mean.data(), var.data(), 0, dst.data(), 2, 0, 0), qelStatusSize);
    EXPECT_EQ(mb.d2l(rows, mean.data(), var.data(), 4, dst.data(), -1, 0, 0), qelStatusSize);
    EXPECT_TRUE(dst.untouched());
  }
}

// pSrc equal to pMean gives val exactly in the storing members, Low ones
// included; the d = 32767 of 32767 - (-32768) also in a row's last column.
TEST(FixedBlockScores, EqualVectorsGiveValAndDifferencesSaturate) {
  for (const Member& mb : kMembers) {
    if (mb.op != Op::Store) continue;
    SCOPED_TRACE(mb.name);
    std::vector<qel16s> a = {5, -7, 32767, -32768, 0, 12, 9, 1, 3}, var(9, 3);
    for (int sf : {-3, 0, 4, 15}) {
      const uint32_t vb =
          fxdata::isFloat(mb.kind) ? std::bit_cast<uint32_t>(-12.5f) : uint32_t(-1234);
      uint32_t out[2] = {0, 0};
      ASSERT_EQ(mb.d2(a.data(), 9, a.data(), var.data(), 9, out, 1, vb, sf), qelStatusOk);
      EXPECT_EQ(out[0], vb);
    }
    std::vector<qel16s> s(9, 0), m(9, 0);
    s[8] = 32767;
    m[8] = -32768;
    std::vector<qel16s> s2(9, 0), m2(9, 0);
    s2[8] = 32767;
    m2[8] = 0;
    uint32_t o1 = 0, o2 = 0;
    ASSERT_EQ(mb.d2(s.data(), 9, m.data(), var.data(), 9, &o1, 1, 0, 2), qelStatusOk);
    ASSERT_EQ(mb.d2(s2.data(), 9, m2.data(), var.data(), 9, &o2, 1, 0, 2), qelStatusOk);
    EXPECT_EQ(o1, o2);
  }
}

// -1.5 truncates to -1 in the block member (the single member rounds it to
// -2, see the single-observation tests). d = 1, v = 3, sf = 0: S = 3, 3/2.
TEST(FixedBlockScores, BlockScoresTruncate) {
  const qel16s s[1] = {1}, m[1] = {0}, v[1] = {3};
  qel32s out = 7;
  ASSERT_EQ(qelsLogGauss_16s32s_D2Sfs(s, 1, m, v, 1, &out, 1, 0, 0), qelStatusOk);
  EXPECT_EQ(out, -1);
}

// A 32-bit maximum whose destination lies above every score keeps it up to
// the rounding of its single image; a Low maximum keeps it exactly. The
// rounding mode of the caller is restored.
TEST(FixedBlockScores, MaximaKeepHigherDestinations) {
  const qel16s s[8] = {1, 2, 3, 4, 5, 6, 7, 8}, m[8] = {0}, v[8] = {1, 1, 1, 1, 1, 1, 1, 1};
  const qel32s high = 123456789;  // not a single: its image rounds
  qel32s a = high, b = high;
  const unsigned csr = _mm_getcsr();
  _mm_setcsr((csr & ~0x6000u) | 0x2000u);  // round down, to see it come back
  ASSERT_EQ(qelsLogGaussMax_16s32s_D2Sfs(s, 8, m, v, 8, &a, 1, 0, 0), qelStatusOk);
  EXPECT_EQ(_mm_getcsr() & 0x6000u, 0x2000u);
  _mm_setcsr(csr);
  ASSERT_EQ(qelsLogGaussMax_Low_16s32s_D2Sfs(s, 8, m, v, 8, &b, 1, 0, 0), qelStatusOk);
  EXPECT_EQ(b, high);
  EXPECT_EQ(a, qel32s(123456784));  // truncated towards zero in single
}

}  // namespace
