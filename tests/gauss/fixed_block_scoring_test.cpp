// 16-bit block scores (frames against one Gaussian: qelsLogGauss_*,
// qelsLogGaussMax_*, qelsLogGaussAdd_*), every member in both layouts
// against the scalar reference, bit for bit.
#include <gtest/gtest.h>
#include <xmmintrin.h>

#include "fixed_scoring_data.h"

namespace {

using namespace fxdata;

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

// Adapters to one signature; the identity members ignore the variances.
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
// Both layouts of a 32-bit member (tags _D2Sfs, _D2LSfs) or a single one.
#define I32(pre, A, kind, op)                                     \
  {                                                               \
#pre, Kind::kind, Op::op, A##_D2(pre##_16s32s_D2Sfs, qel32s), \
        A##_D2L(pre##_16s32s_D2LSfs, qel32s)                      \
  }
#define F32(pre, A, kind, op) \
  { #pre, Kind::kind, Op::op, A##_D2(pre##_16s32f_D2, qel32f), A##_D2L(pre##_16s32f_D2L, qel32f) }

const Member kMembers[] = {
    I32(qelsLogGauss, VAR, InvP32s, Store),
    F32(qelsLogGauss_Scaled, VAR, InvK32f, Store),
    I32(qelsLogGauss_Low, VAR, Low32s, Store),
    F32(qelsLogGauss_LowScaled, VAR, Low32f, Store),
    I32(qelsLogGauss_IdVar, ID, PairsP32s, Store),
    F32(qelsLogGauss_IdVarScaled, ID, UnitK32f, Store),
    I32(qelsLogGauss_IdVarLow, ID, IdLow32s, Store),
    F32(qelsLogGauss_IdVarLowScaled, ID, IdLow32f, Store),
    I32(qelsLogGaussMax, VAR, InvRz, Max),
    F32(qelsLogGaussMax_Scaled, VAR, InvK32f, Max),
    I32(qelsLogGaussMax_Low, VAR, Low32s, Max),
    F32(qelsLogGaussMax_LowScaled, VAR, Low32f, Max),
    I32(qelsLogGaussMax_IdVar, ID, UnitRz, Max),
    F32(qelsLogGaussMax_IdVarScaled, ID, UnitK32f, Max),
    I32(qelsLogGaussMax_IdVarLow, ID, IdLow32s, Max),
    F32(qelsLogGaussMax_IdVarLowScaled, ID, IdLow32f, Max),
    F32(qelsLogGaussAdd_Scaled, VAR, InvK32f, Add),
    F32(qelsLogGaussAdd_LowScaled, VAR, Low32f, Add),
    F32(qelsLogGaussAdd_IdVarScaled, ID, UnitK32f, Add),
    F32(qelsLogGaussAdd_IdVarLowScaled, ID, IdLow32f, Add),
};

// Every member, both layouts, widths across the 8/4 column groups and
// beyond 512 (where the frame kernels stop converting the weights once),
// heights across the 128-row chunk, aligned and misaligned data (a row
// pointer off 16 bytes), all scale factors; prior destinations of the
// log-adding members are log values near the scores and log zero.
TEST(FixedBlockScores, EveryMemberMatchesTheReferenceBitForBit) {
  qtest::Rng rng(3501);
  const Shape shapes[] = {{1, 1, 0, 0},    {2, 3, 0, 2},    {9, 5, 3, 0},   {8, 4, 0, 0},
                          {9, 2, 7, 2},    {16, 3, 0, 0},   {23, 6, 1, 2},  {39, 7, 1, 0},
                          {40, 130, 0, 0}, {13, 129, 3, 2}, {520, 3, 0, 0}, {521, 2, 3, 2}};
  for (const Member& mb : kMembers)
    for (const Shape& sh : shapes)
      for (int sf : kScaleFactors) {
        SCOPED_TRACE(trace(mb.name, sh, sf));
        const int step = sh.width + sh.extraStep, w = sh.width, h = sh.height;
        qtest::Guarded<qel16s> src(size_t(step) * h, sh.misalign), mean(w, sh.misalign),
            var(w, sh.misalign);
        src.assign(data16(rng, step * h));
        mean.assign(data16(rng, w));
        var.assign(data16(rng, w, -200, 4000));
        const uint32_t vb = valBits(rng, isFloat(mb.kind));
        std::vector<uint32_t> prior(h), sc(h);
        for (auto& x : prior)
          x = mb.op != Op::Add
                  ? valBits(rng, isFloat(mb.kind))
                  : std::bit_cast<uint32_t>(rng.integer(0, 3) == 0 ? -4500000.0f
                                                                   : rng.uniform(-3.0e5f, 1.0e3f));
        const auto rows = rowsOf(src.data(), h, step);
        for (int r = 0; r < h; ++r)
          sc[r] = blockScore(mb.kind, rows[r], mean.data(), var.data(), w, vb, sf, false, prior[r]);
        const auto want = finish(mb.kind, mb.op, sc, prior);

        qtest::Guarded<uint32_t> dst(h);
        dst.assign(prior);
        ASSERT_EQ(mb.d2(src.data(), step, mean.data(), var.data(), w, dst.data(), h, vb, sf),
                  qelStatusOk);
        EXPECT_EQ(dst.vec(), want) << "D2";
        EXPECT_TRUE(dst.guardsIntact());
        RowCopies rc(rows, w, sh.misalign ? h / 2 : -1);
        dst.assign(prior);
        ASSERT_EQ(mb.d2l(rc.ptrs.data(), mean.data(), var.data(), w, dst.data(), h, vb, sf),
                  qelStatusOk);
        EXPECT_EQ(dst.vec(), want) << "D2L";
        EXPECT_TRUE(dst.guardsIntact());
      }
}

// Strided forms: stride first (-37, even with null pointers), then null
// pointers (-8, even with sizes 0), then sizes (-6); row-pointer forms: null
// pointers, then sizes. Nothing is written on any error.
TEST(FixedBlockScores, ArgumentChecksInOrderWriteNothing) {
  qtest::Guarded<qel16s> src(64), mean(8), var(8);
  qtest::Guarded<uint32_t> dst(8);
  const auto rv = rowsOf(src.data(), 8, 8);
  const qel16s** rows = const_cast<const qel16s**>(rv.data());
  qel16s *s = src.data(), *m = mean.data(), *v = var.data();
  for (const Member& mb : kMembers) {
    SCOPED_TRACE(mb.name);
    const bool hasV = hasVar(mb.kind);
    dst.poison();
    void* d = dst.data();
    EXPECT_EQ(mb.d2(nullptr, 3, nullptr, nullptr, 4, nullptr, 0, 0, 0), qelStatusStride);
    EXPECT_EQ(mb.d2(s, 3, m, v, 4, d, 2, 0, 0), qelStatusStride);
    EXPECT_EQ(mb.d2(nullptr, 8, m, v, 0, d, 2, 0, 0), qelStatusNullPtr);
    EXPECT_EQ(mb.d2(s, 8, nullptr, v, 4, d, 2, 0, 0), qelStatusNullPtr);
    if (hasV) EXPECT_EQ(mb.d2(s, 8, m, nullptr, 4, d, 2, 0, 0), qelStatusNullPtr);
    EXPECT_EQ(mb.d2(s, 8, m, v, 4, nullptr, 0, 0, 0), qelStatusNullPtr);
    EXPECT_EQ(mb.d2(s, 8, m, v, 0, d, 2, 0, 0), qelStatusSize);
    EXPECT_EQ(mb.d2(s, 8, m, v, 4, d, 0, 0, 0), qelStatusSize);
    EXPECT_EQ(mb.d2l(nullptr, m, v, 0, d, 2, 0, 0), qelStatusNullPtr);
    EXPECT_EQ(mb.d2l(rows, m, v, 4, nullptr, 0, 0, 0), qelStatusNullPtr);
    if (hasV) EXPECT_EQ(mb.d2l(rows, m, nullptr, 4, d, 0, 0, 0), qelStatusNullPtr);
    EXPECT_EQ(mb.d2l(rows, m, v, 0, d, 2, 0, 0), qelStatusSize);
    EXPECT_EQ(mb.d2l(rows, m, v, 4, d, -1, 0, 0), qelStatusSize);
    EXPECT_TRUE(dst.untouched());
    if (!hasV) EXPECT_EQ(mb.d2(s, 8, m, nullptr, 4, d, 2, 0, 0), qelStatusOk);
  }
}

// pSrc equal to pMean gives val exactly in the storing members, Low ones
// included; 32767 - (-32768) saturates to 32767 also in a row's last column.
// -1.5 truncates to -1 in the block member (the single-observation member
// rounds it to -2). A 32-bit maximum whose destination lies above every
// score keeps it up to the rounding of its single image, a Low maximum
// keeps it exactly, and the caller's rounding mode comes back.
TEST(FixedBlockScores, WorkedCases) {
  const std::vector<qel16s> a = {5, -7, 32767, -32768, 0, 12, 9, 1, 3}, var(9, 3);
  std::vector<qel16s> s(9, 0), m(9, 0), m2(9, 0);
  s[8] = 32767;
  m[8] = -32768;
  for (const Member& mb : kMembers) {
    if (mb.op != Op::Store) continue;
    SCOPED_TRACE(mb.name);
    const uint32_t vb = isFloat(mb.kind) ? std::bit_cast<uint32_t>(-12.5f) : uint32_t(-1234);
    for (int sf : {-3, 0, 4, 15}) {
      uint32_t out = 0;
      ASSERT_EQ(mb.d2(a.data(), 9, a.data(), var.data(), 9, &out, 1, vb, sf), qelStatusOk);
      EXPECT_EQ(out, vb);
    }
    uint32_t o1 = 0, o2 = 0;
    ASSERT_EQ(mb.d2(s.data(), 9, m.data(), var.data(), 9, &o1, 1, 0, 2), qelStatusOk);
    ASSERT_EQ(mb.d2(s.data(), 9, m2.data(), var.data(), 9, &o2, 1, 0, 2), qelStatusOk);
    EXPECT_EQ(o1, o2);
  }
  const qel16s one[1] = {1}, zero[1] = {0}, three[1] = {3};
  qel32s out = 7;
  ASSERT_EQ(qelsLogGauss_16s32s_D2Sfs(one, 1, zero, three, 1, &out, 1, 0, 0), qelStatusOk);
  EXPECT_EQ(out, -1);

  const qel16s r[8] = {1, 2, 3, 4, 5, 6, 7, 8}, z[8] = {0}, u[8] = {1, 1, 1, 1, 1, 1, 1, 1};
  const qel32s high = 123456789;  // not a single: its image rounds
  qel32s x = high, y = high;
  const unsigned csr = _mm_getcsr();
  _mm_setcsr((csr & ~0x6000u) | 0x2000u);  // round down, to see it come back
  ASSERT_EQ(qelsLogGaussMax_16s32s_D2Sfs(r, 8, z, u, 8, &x, 1, 0, 0), qelStatusOk);
  EXPECT_EQ(_mm_getcsr() & 0x6000u, 0x2000u);
  _mm_setcsr(csr);
  ASSERT_EQ(qelsLogGaussMax_Low_16s32s_D2Sfs(r, 8, z, u, 8, &y, 1, 0, 0), qelStatusOk);
  EXPECT_EQ(y, high);
  EXPECT_EQ(x, qel32s(123456784));  // truncated towards zero in single
}

}  // namespace
