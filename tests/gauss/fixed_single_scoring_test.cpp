// 16-bit scores of one observation (qelsLogGaussSingle_* and
// qelsMahDistSingle_* with 16s tags) against the scalar reference, bit for
// bit, with their allocation failures and edge cases.
#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "base/base.h"
#include "fixed_scoring_data.h"
#include "gauss/gauss.h"

namespace {

using namespace fxref;

enum class SKind { P32s, K32f, Low32s, Low32f, IdP32s, IdK32f, IdLow32s, IdLow32f };

using Fn = qelStatus (*)(const qel16s*, const qel16s*, const qel16s*, int, void*, uint32_t, int);

struct Member {
  const char* name;
  SKind kind;
  Fn fn;
};

#define VAR_FN(fn, T)                                                                          \
  [](const qel16s* s, const qel16s* m, const qel16s* v, int n, void* r, uint32_t vb, int sf) { \
    return fn(s, m, v, n, static_cast<T*>(r), std::bit_cast<T>(vb), sf);                       \
  }
#define ID_FN(fn, T)                                                                         \
  [](const qel16s* s, const qel16s* m, const qel16s*, int n, void* r, uint32_t vb, int sf) { \
    return fn(s, m, n, static_cast<T*>(r), std::bit_cast<T>(vb), sf);                        \
  }
#define I32(pre, A, kind) \
  { #pre, SKind::kind, A##_FN(pre##_16s32s_Sfs, qel32s) }
#define F32(pre, A, kind) \
  { #pre, SKind::kind, A##_FN(pre##_16s32f, qel32f) }

const Member kMembers[] = {
    I32(qelsLogGaussSingle, VAR, P32s),
    F32(qelsLogGaussSingle_Scaled, VAR, K32f),
    I32(qelsLogGaussSingle_Low, VAR, Low32s),
    F32(qelsLogGaussSingle_LowScaled, VAR, Low32f),
    I32(qelsLogGaussSingle_IdVar, ID, IdP32s),
    F32(qelsLogGaussSingle_IdVarScaled, ID, IdK32f),
    I32(qelsLogGaussSingle_IdVarLow, ID, IdLow32s),
    F32(qelsLogGaussSingle_IdVarLowScaled, ID, IdLow32f),
};

bool isFloat(SKind k) {
  return k == SKind::K32f || k == SKind::Low32f || k == SKind::IdK32f || k == SKind::IdLow32f;
}
bool hasVar(SKind k) { return k < SKind::IdP32s; }

uint32_t reference(SKind k, const qel16s* s, const qel16s* m, const qel16s* v, int n, uint32_t vb,
                   int sf) {
  const long long e = (long long)sf + 1;
  const int32_t vi = std::bit_cast<int32_t>(vb);
  const float vf = std::bit_cast<float>(vb);
  auto F = [](float x) { return std::bit_cast<uint32_t>(x); };
  auto I = [](int32_t x) { return std::bit_cast<uint32_t>(x); };
  switch (k) {
    case SKind::P32s:
      return I(nearestSat(float(vi) - byIntPow(singleSum(W::Inv, s, m, v, n), e)));
    case SKind::K32f:
      return F(vf - singleSum(W::Inv, s, m, v, n) * pow2neg(e));
    case SKind::Low32s:
      if (sf >= 0) return I(addWrap(vi, lowSingle(s, m, v, n, sf)));
      return I(truncSat(float(vi) - byIntPow(singleSum(W::Inv, s, m, v, n), e)));
    case SKind::Low32f:
      if (sf >= 0) return F(vf + float(int32_t(lowSingle(s, m, v, n, sf))));
      return F(vf - byIntPow(singleSum(W::Inv, s, m, v, n), e));
    case SKind::IdP32s:
      return I(nearestSat(float(vi) - byIntPow(singleSum(W::Unit, s, m, v, n), e)));
    case SKind::IdK32f:
      return F(vf - singleSum(W::Unit, s, m, v, n) * pow2neg(e));
    case SKind::IdLow32s:
      return I(addWrap(vi, lowSingle(s, m, nullptr, n, sf)));
    case SKind::IdLow32f:
      return F(vf - byIntPow(singleSum(W::Pairs, s, m, v, n), e));
  }
  return 0;
}

const int kLens[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 15, 16, 17, 23, 24, 31, 32, 33, 39, 40, 111, 112};

TEST(FixedSingleScores, EveryMemberMatchesTheReferenceBitForBit) {
  qtest::Rng rng(3503);
  for (const Member& mb : kMembers)
    for (int n : kLens)
      for (int misalign : {0, 2})
        for (int sf : fxdata::kScaleFactors) {
          SCOPED_TRACE(std::string(mb.name) + " len " + std::to_string(n) + " sf " +
                       std::to_string(sf) + " misalign " + std::to_string(misalign));
          qtest::Guarded<qel16s> s(n, misalign), m(n), v(n, misalign);
          s.assign(fxdata::data16(rng, n));
          m.assign(fxdata::data16(rng, n));
          v.assign(fxdata::data16(rng, n, -300, 5000));
          const uint32_t vb = fxdata::valBits(rng, isFloat(mb.kind));
          qtest::Guarded<uint32_t> res(1);
          ASSERT_EQ(mb.fn(s.data(), m.data(), v.data(), n, res.data(), vb, sf), qelStatusOk);
          EXPECT_EQ(res[0], reference(mb.kind, s.data(), m.data(), v.data(), n, vb, sf));
          EXPECT_TRUE(res.guardsIntact());
        }
}

// The references themselves (single-observation and block orders) against
// exact arithmetic: with small data every single sum is exact, so the score is val - S·2^-(sf+1)
// computed in double (rounded as each member says), and the Low sums differ from it only by the
// dropped lowest bits and the shifts' rounding.
TEST(FixedSingleScores, ReferenceAgreesWithExactArithmetic) {
  qtest::Rng rng(3504);
  for (int trial = 0; trial < 200; ++trial) {
    const int n = rng.integer(1, 40), sf = rng.integer(0, 6);
    std::vector<qel16s> s(n), m(n), v(n);
    long long exact = 0;
    for (int i = 0; i < n; ++i) {
      s[i] = qel16s(rng.integer(-20, 20));
      m[i] = qel16s(rng.integer(-20, 20));
      v[i] = qel16s(rng.integer(0, 100));
      exact += (long long)(s[i] - m[i]) * (s[i] - m[i]) * v[i];
    }
    const double want = 1000.0 - double(exact) / std::ldexp(1.0, sf + 1);
    EXPECT_EQ(std::bit_cast<float>(reference(SKind::K32f, s.data(), m.data(), v.data(), n,
                                             std::bit_cast<uint32_t>(1000.0f), sf)),
              float(want));
    EXPECT_EQ(std::bit_cast<float>(fxdata::blockScore(fxdata::Kind::InvK32f, s.data(), m.data(),
                                                      v.data(), n, std::bit_cast<uint32_t>(1000.0f),
                                                      sf, n % 2 == 0)),
              float(want));
    // Each column loses at most one half unit (its dropped bit times v / 2)
    // and each lane or tail pair at most one unit to its shift.
    const double slack = 0.5 * 100 * n / std::ldexp(1.0, sf) + n + 4;
    for (uint32_t low : {reference(SKind::Low32s, s.data(), m.data(), v.data(), n, 1000u, sf),
                         fxdata::blockScore(fxdata::Kind::Low32s, s.data(), m.data(), v.data(), n,
                                            1000u, sf, false)})
      EXPECT_LE(std::abs(std::bit_cast<int32_t>(low) - want), slack);
  }
}

TEST(FixedSingleScores, ArgumentChecksInOrderWriteNothing) {
  qtest::Guarded<qel16s> s(8), m(8), v(8);
  qtest::Guarded<uint32_t> res(1);
  for (const Member& mb : kMembers) {
    SCOPED_TRACE(mb.name);
    EXPECT_EQ(mb.fn(nullptr, m.data(), v.data(), 0, res.data(), 0, 0), qelStatusNullPtr);
    EXPECT_EQ(mb.fn(s.data(), nullptr, v.data(), 4, res.data(), 0, 0), qelStatusNullPtr);
    if (hasVar(mb.kind))
      EXPECT_EQ(mb.fn(s.data(), m.data(), nullptr, 4, res.data(), 0, 0), qelStatusNullPtr);
    EXPECT_EQ(mb.fn(s.data(), m.data(), v.data(), 4, nullptr, 0, 0), qelStatusNullPtr);
    EXPECT_EQ(mb.fn(s.data(), m.data(), v.data(), 0, res.data(), 0, 0), qelStatusSize);
    EXPECT_TRUE(res.untouched());
  }
  qel32f rf;
  qel32s ri;
  EXPECT_EQ(qelsMahDistSingle_16s32f(s.data(), m.data(), nullptr, 0, &rf), qelStatusNullPtr);
  EXPECT_EQ(qelsMahDistSingle_16s32s_Sfs(s.data(), m.data(), v.data(), -1, &ri, 0), qelStatusSize);
  EXPECT_EQ(qelsLogGaussSingle_DirectVar_16s32s_Sfs(s.data(), m.data(), v.data(), 4, nullptr, 0, 0),
            qelStatusNullPtr);
  EXPECT_EQ(qelsLogGaussSingle_DirectVarScaled_16s32f(s.data(), m.data(), v.data(), 0, &rf, 0, 0),
            qelStatusSize);
}

// The worked cases: d = 3, v = 2, sf 0 gives val - 8 with Low (l = 9 >> 1)
// and val - 9 without; Low at sf -1 is val - S; -1.5 rounds to -2 here.
TEST(FixedSingleScores, WorkedCases) {
  const qel16s s[1] = {3}, m[1] = {0}, v[1] = {2};
  qel32f r = 0;
  ASSERT_EQ(qelsLogGaussSingle_LowScaled_16s32f(s, m, v, 1, &r, 100.0f, 0), qelStatusOk);
  EXPECT_EQ(r, 92.0f);
  ASSERT_EQ(qelsLogGaussSingle_Scaled_16s32f(s, m, v, 1, &r, 100.0f, 0), qelStatusOk);
  EXPECT_EQ(r, 91.0f);
  qel32s ri = 0;
  ASSERT_EQ(qelsLogGaussSingle_Low_16s32s_Sfs(s, m, v, 1, &ri, 100, -1), qelStatusOk);
  EXPECT_EQ(ri, 100 - 18);
  const qel16s one[1] = {1}, three[1] = {3};
  ASSERT_EQ(qelsLogGaussSingle_16s32s_Sfs(one, m, three, 1, &ri, 0, 0), qelStatusOk);
  EXPECT_EQ(ri, -2);
  // Equal vectors give val in every member.
  const qel16s a[9] = {1, -32768, 32767, 5, 0, 9, -9, 4, 2}, w[9] = {3, 3, 3, 3, 3, 3, 3, 3, 3};
  for (const Member& mb : kMembers) {
    uint32_t out = 0;
    const uint32_t vb = isFloat(mb.kind) ? std::bit_cast<uint32_t>(-7.25f) : uint32_t(-77);
    for (int sf : {-4, 0, 9}) {
      ASSERT_EQ(mb.fn(a, a, w, 9, &out, vb, sf), qelStatusOk);
      EXPECT_EQ(out, vb) << mb.name;
    }
  }
}

// The inverses as the members form them: 1.0 divided by the variance
// converted to single, through the library's vector division.
std::vector<float> inverses(const qel16s* v, int n) {
  std::vector<float> var(n), inv(n, 1.0f);
  for (int i = 0; i < n; ++i) var[i] = float(v[i]);
  qelsDiv_32f_I(var.data(), inv.data(), n);
  return inv;
}

// DirectVar members: inverses formed in single, the scaled one weighting d^2
// in the single-observation order, the integer one through the
// single-precision distance kernel and a 64-bit saturated subtraction.
float directScaledRef(const qel16s* s, const qel16s* m, const qel16s* v, int n, float val, int sf) {
  const std::vector<float> inv = inverses(v, n);
  const float S = singleOrder(n, [&](int c) {
    const int d = diff(s[c], m[c]);
    return float(d * d) * inv[c];
  });
  return val - (S * 0.5f) * pow2neg(sf);
}

// The single-precision distance is the float family's kernel (tested bit
// for bit there) on the converted, unsaturated data.
int32_t directIntRef(const qel16s* s, const qel16s* m, const qel16s* v, int n, int32_t val,
                     int sf) {
  // 16-byte aligned (operator new) and padded to the kernel's areas.
  std::vector<float> inv = inverses(v, n), fs(s, s + n), fm(m, m + n);
  for (auto* x : {&inv, &fs, &fm}) x->resize((n + 7) / 8 * 8, 0.0f);
  float S;
  sMahDistSingle_32f_M7(fs.data(), fm.data(), inv.data(), n, &S);
  qel32s q;
  qelsConvert_32f32s_Sfs(&S, &q, 1, 1, sf + 1);
  const long long r = (long long)val - q;
  return r > INT32_MAX ? INT32_MAX : (r < INT32_MIN ? INT32_MIN : int32_t(r));
}

TEST(FixedSingleScores, DirectVarMembersAndTheirAllocation) {
  qtest::Rng rng(3505);
  for (int n : kLens)
    for (int sf : {-20, -3, 0, 2, 9, 30}) {
      SCOPED_TRACE("len " + std::to_string(n) + " sf " + std::to_string(sf));
      qtest::Guarded<qel16s> s(n, 2), m(n, 2), v(n);
      s.assign(fxdata::data16(rng, n));
      m.assign(fxdata::data16(rng, n));
      std::vector<qel16s> vv(n);
      for (auto& x : vv) x = qel16s(rng.integer(1, 30000) * (rng.integer(0, 7) ? 1 : -1));
      v.assign(vv);
      qel32f rf;
      ASSERT_EQ(qelsLogGaussSingle_DirectVarScaled_16s32f(s.data(), m.data(), v.data(), n, &rf,
                                                          -3.5f, sf),
                qelStatusOk);
      EXPECT_TRUE(qtest::sameBits(rf, directScaledRef(s.data(), m.data(), v.data(), n, -3.5f, sf)));
      const int32_t val = fxdata::valBits(rng, false);
      qel32s ri;
      ASSERT_EQ(
          qelsLogGaussSingle_DirectVar_16s32s_Sfs(s.data(), m.data(), v.data(), n, &ri, val, sf),
          qelStatusOk);
      EXPECT_EQ(ri, directIntRef(s.data(), m.data(), v.data(), n, val, sf));
    }
  // A zero variance: +6 with the result written from the infinite inverse.
  const qel16s s[3] = {1, 2, 3}, m[3] = {0, 0, 0}, v[3] = {1, 0, 1};
  qel32f rf = 0;
  qel32s ri = 0;
  EXPECT_EQ(qelsLogGaussSingle_DirectVarScaled_16s32f(s, m, v, 3, &rf, 0.0f, 0),
            qelStatusWarnDivZero);
  EXPECT_EQ(rf, -std::numeric_limits<float>::infinity());
  EXPECT_EQ(qelsLogGaussSingle_DirectVar_16s32s_Sfs(s, m, v, 3, &ri, 5, 0), qelStatusWarnDivZero);
  EXPECT_EQ(ri, 5 - INT32_MAX);  // the infinite sum saturates upwards
  // Allocation failure: -9, the result untouched, nothing leaked.
  rf = 42.0f, ri = 42;
  qtest::FailingAllocator fail(0);
  EXPECT_EQ(qelsLogGaussSingle_DirectVarScaled_16s32f(s, m, v, 3, &rf, 0, 0), qelStatusMemAlloc);
  EXPECT_EQ(qelsLogGaussSingle_DirectVar_16s32s_Sfs(s, m, v, 3, &ri, 0, 0), qelStatusMemAlloc);
  EXPECT_EQ(rf, 42.0f);
  EXPECT_EQ(ri, 42);
  EXPECT_TRUE(fail.nothingLeaked());
}

// Block-diagonal members: lanes j mod 4 of each row product, the total
// folded (l0 + l2) + (l1 + l3); scratch on the stack below 112, allocated
// from there on.
float blockTotalRef(const std::vector<std::vector<qel16s>>& rows, const std::vector<int>& sizes,
                    const std::vector<int>& d) {
  float tot[4] = {0, 0, 0, 0};
  int o = 0, r = 0;
  for (int side : sizes) {
    for (int k = 0; k < side; ++k, ++r) {
      float t[4] = {0, 0, 0, 0};
      for (int j = 0; j < side; ++j) t[j % 4] = t[j % 4] + float(d[o + j] * rows[r][j]);
      for (int l = 0; l < 4; ++l) tot[l] = tot[l] + t[l] * float(d[o + k]);
    }
    o += side;
  }
  return (tot[0] + tot[2]) + (tot[1] + tot[3]);
}

TEST(FixedSingleScores, BlockDVarMembersAndTheirAllocation) {
  qtest::Rng rng(3506);
  for (int n : {1, 5, 17, 111, 112, 130}) {
    std::vector<int> sizes;
    for (int left = n; left > 0;) {
      const int b = std::min(left, rng.integer(1, 9));
      sizes.push_back(b);
      left -= b;
    }
    std::vector<std::vector<qel16s>> rows;
    for (int side : sizes)
      for (int k = 0; k < side; ++k) rows.push_back(fxdata::data16(rng, side, -50, 50));
    std::vector<const qel16s*> rp;
    for (auto& r : rows) rp.push_back(r.data());
    BlockDMatrix* mx = nullptr;
    ASSERT_EQ(qelsBlockDMatrixInitAlloc_16s(&mx, rp.data(), sizes.data(), int(sizes.size())),
              qelStatusOk);
    const auto s = fxdata::data16(rng, n), m = fxdata::data16(rng, n);
    std::vector<int> d(n);
    for (int i = 0; i < n; ++i) d[i] = diff(s[i], m[i]);
    const float total = blockTotalRef(rows, sizes, d);
    for (int sf : {-40, -2, 0, 5, 24, 31, 40}) {
      SCOPED_TRACE("len " + std::to_string(n) + " sf " + std::to_string(sf));
      qel32f rf;
      ASSERT_EQ(qelsLogGaussSingle_BlockDVarScaled_16s32f(s.data(), m.data(), mx, n, &rf, 2.5f, sf),
                qelStatusOk);
      EXPECT_TRUE(qtest::sameBits(rf, 2.5f - (total * 0.5f) * pow2neg(sf)));
      qel32s ri;
      ASSERT_EQ(qelsLogGaussSingle_BlockDVar_16s32s_Sfs(s.data(), m.data(), mx, n, &ri, -1000, sf),
                qelStatusOk);
      EXPECT_EQ(ri, truncSat(float(-1000) - byIntPow(total * 0.5f, sf)));  // held at ±2^31
    }
    // Checks: len not the matrix order; allocation failure from 112 on.
    qel32f rf = 1.0f;
    EXPECT_EQ(qelsLogGaussSingle_BlockDVarScaled_16s32f(s.data(), m.data(), mx, n + 1, &rf, 0, 0),
              qelStatusSize);
    EXPECT_EQ(qelsLogGaussSingle_BlockDVarScaled_16s32f(s.data(), m.data(), nullptr, 0, &rf, 0, 0),
              qelStatusNullPtr);
    EXPECT_EQ(rf, 1.0f);
    {
      qtest::FailingAllocator fail(0);
      const qelStatus st =
          qelsLogGaussSingle_BlockDVarScaled_16s32f(s.data(), m.data(), mx, n, &rf, 0, 0);
      EXPECT_EQ(st, n >= 112 ? qelStatusMemAlloc : qelStatusOk);
      if (n >= 112) EXPECT_EQ(rf, 1.0f);
      EXPECT_TRUE(fail.nothingLeaked());
    }
    qelsBlockDMatrixFree_16s(mx);
  }
}

// The distance: the same single-precision value for aligned and unaligned
// data; the integer member equal on both paths while the sum is exact in a
// single and the factor is 0 or negative, and exact 64-bit shifts off 16
// bytes otherwise.
TEST(FixedSingleScores, MahDistSingleOnBothPaths) {
  qtest::Rng rng(3507);
  for (int n : kLens) {
    qtest::Guarded<qel16s> sa(n), ma(n), va(n), su(n, 2), mu(n, 2), vu(n, 2);
    const auto s = fxdata::data16(rng, n), m = fxdata::data16(rng, n),
               v = fxdata::data16(rng, n, 0, 3000);
    sa.assign(s), ma.assign(m), va.assign(v), su.assign(s), mu.assign(m), vu.assign(v);
    qel32f a, u;
    ASSERT_EQ(qelsMahDistSingle_16s32f(sa.data(), ma.data(), va.data(), n, &a), qelStatusOk);
    ASSERT_EQ(qelsMahDistSingle_16s32f(su.data(), mu.data(), vu.data(), n, &u), qelStatusOk);
    EXPECT_TRUE(qtest::sameBits(a, singleSum(W::Inv, s.data(), m.data(), v.data(), n)));
    EXPECT_TRUE(qtest::sameBits(a, u));
    for (int sf : {-70, -3, 0, 4, 17, 70}) {
      SCOPED_TRACE("len " + std::to_string(n) + " sf " + std::to_string(sf));
      qel32s ia, iu;
      ASSERT_EQ(qelsMahDistSingle_16s32s_Sfs(sa.data(), ma.data(), va.data(), n, &ia, sf),
                qelStatusOk);
      ASSERT_EQ(qelsMahDistSingle_16s32s_Sfs(su.data(), mu.data(), vu.data(), n, &iu, sf),
                qelStatusOk);
      const float S = singleSum(W::Inv, s.data(), m.data(), v.data(), n);
      qel32s want;
      qelsConvert_32f32s_Sfs(&S, &want, 1, 1, sf);
      EXPECT_EQ(ia, want);
      long long ex = 0;
      for (int i = 0; i < n; ++i) ex += (long long)diff(s[i], m[i]) * diff(s[i], m[i]) * v[i];
      const long long sh = sf >= 0 ? ex >> std::min(sf, 63)
                                   : (sf < -63 ? 0 : (long long)((unsigned long long)ex << -sf));
      EXPECT_EQ(iu, sh > INT32_MAX ? INT32_MAX : (sh < INT32_MIN ? INT32_MIN : int32_t(sh)));
    }
  }
  // Exact in single and sf 0: both paths agree.
  alignas(16) qel16s sa[16] = {3, 1, 4, 1, 5, 0, 0, 0, 0, 3, 1, 4, 1, 5}, ma[16] = {0},
                     va[16] = {2, 7, 1, 8, 2, 0, 0, 0, 0, 2, 7, 1, 8, 2};
  qel32s x, y;
  ASSERT_EQ(qelsMahDistSingle_16s32s_Sfs(sa + 9, ma + 9, va + 9, 5, &x, 0), qelStatusOk);
  ASSERT_EQ(qelsMahDistSingle_16s32s_Sfs(sa, ma, va, 5, &y, 0), qelStatusOk);
  EXPECT_EQ(x, 18 + 7 + 16 + 8 + 50);
  EXPECT_EQ(x, y);
}

}  // namespace
