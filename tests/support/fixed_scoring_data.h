// Test data and the table vocabulary shared by the 16-bit score tests.
#ifndef QELSR_TESTS_FIXED_SCORING_DATA_H
#define QELSR_TESTS_FIXED_SCORING_DATA_H

#include <algorithm>
#include <bit>
#include <climits>
#include <cstdint>
#include <string>
#include <vector>

#include "fixed_scoring_reference.h"
#include "gauss/gauss.h"
#include "test_support.h"

namespace fxdata {

// What a member computes for one row (or one component).
enum class Kind {
  InvP32s,    // weighted single sum, single(val) - S / 2^(sf+1) by the integer power
  PairsP32s,  // identity pair sums, the same scaling
  InvK32f,    // val - S * 2^-(sf+1)
  UnitK32f,   // identity, each square converted
  InvRz,      // 32-bit maximum towards zero, weighted
  UnitRz,     // the same, identity
  Low32s,     // split integer sums (sf >= 0), else truncated single sum
  Low32f,     // split integer sums converted and added, else val - S * 2^-(sf+1)
  IdLow32s,   // identity pair sums shifted
  IdLow32f,   // identity pair sums in single, integer power
};

inline bool isFloat(Kind k) {
  return k == Kind::InvK32f || k == Kind::UnitK32f || k == Kind::Low32f || k == Kind::IdLow32f;
}
inline bool hasVar(Kind k) {
  return k == Kind::InvP32s || k == Kind::InvK32f || k == Kind::InvRz || k == Kind::Low32s ||
         k == Kind::Low32f;
}

// Score of one row in the block order; `dst` is the prior destination bits
// for the maxima (towards-zero members compare inside).
inline uint32_t blockScore(Kind k, const qel16s* s, const qel16s* m, const qel16s* v, int width,
                           uint32_t valBits, int sf, bool g4, uint32_t dst = 0) {
  using namespace fxref;
  const long long e = (long long)sf + 1;
  const int32_t vi = std::bit_cast<int32_t>(valBits);
  const float vf = std::bit_cast<float>(valBits);
  auto F = [](float x) { return std::bit_cast<uint32_t>(x); };
  auto I = [](int32_t x) { return std::bit_cast<uint32_t>(x); };
  switch (k) {
    case Kind::InvP32s:
      return I(truncSat(float(vi) - byIntPow(blockSum(W::Inv, s, m, v, width, g4), e)));
    case Kind::PairsP32s:
      return I(truncSat(float(vi) - byIntPow(blockSum(W::Pairs, s, m, v, width), e)));
    case Kind::InvK32f:
      return F(vf - blockSum(W::Inv, s, m, v, width, g4) * pow2neg(e));
    case Kind::UnitK32f:
      return F(vf - blockSum(W::Unit, s, m, v, width, g4) * pow2neg(e));
    case Kind::InvRz:
    case Kind::UnitRz: {
      int32_t r = 0;
      const W w = k == Kind::InvRz ? W::Inv : W::Unit;
      towardZero([&] {
        r = maxTowardZeroScore(blockSum(w, s, m, v, width, g4), pow2neg(e), vi,
                               std::bit_cast<int32_t>(dst));
      });
      return I(r);
    }
    case Kind::Low32s:
      if (sf >= 0) return I(addWrap(vi, lowBlock(s, m, v, width, sf)));
      return I(truncSat(float(vi) - byIntPow(blockSum(W::Inv, s, m, v, width, g4), e)));
    case Kind::Low32f:
      if (sf >= 0) return F(vf + float(int32_t(lowBlock(s, m, v, width, sf))));
      return F(vf - byIntPow(blockSum(W::Inv, s, m, v, width, g4), e));
    case Kind::IdLow32s:
      return I(addWrap(vi, idLowBlock(s, m, width, sf)));
    case Kind::IdLow32f:
      return F(vf - byIntPow(blockSum(W::Pairs, s, m, v, width), e));
  }
  return 0;
}

// The greater of score and destination: integers as integers, singles as
// singles (a NaN score keeps the destination); the towards-zero members
// have compared already.
inline uint32_t maxOf(Kind k, uint32_t score, uint32_t dst) {
  if (k == Kind::InvRz || k == Kind::UnitRz) return score;
  if (isFloat(k)) return std::bit_cast<float>(score) > std::bit_cast<float>(dst) ? score : dst;
  return std::bit_cast<int32_t>(score) > std::bit_cast<int32_t>(dst) ? score : dst;
}

// Random 16-bit vectors: a mix of full-range values, small values and the
// two limits.
inline std::vector<qel16s> data16(qtest::Rng& rng, int n, int lo = -32768, int hi = 32767) {
  std::vector<qel16s> v(n);
  for (auto& x : v) {
    const int pick = rng.integer(0, 9);
    if (pick == 0)
      x = -32768;
    else if (pick == 1)
      x = 32767;
    else if (pick < 5)
      x = qel16s(rng.integer(lo, hi));
    else
      x = qel16s(rng.integer(-60, 60));
  }
  return v;
}

// A random constant of either element type.
inline uint32_t valBits(qtest::Rng& rng, bool f32) {
  if (f32) return std::bit_cast<uint32_t>(rng.uniform(-1.0e6f, 1.0e6f));
  const int pick = rng.integer(0, 5);
  if (pick == 0) return std::bit_cast<uint32_t>(INT32_MAX - rng.integer(0, 1000));
  if (pick == 1) return std::bit_cast<uint32_t>(INT32_MIN + rng.integer(0, 1000));
  return std::bit_cast<uint32_t>(rng.integer(-100000000, 100000000));
}

// What a member does with its scores: stores them, keeps the greater of
// score and destination, log-adds them into the destination, or log-sums a
// mixture (with pVar, or the identity mixtures scored in the
// single-observation order).
enum class Op { Store, Max, Add, Mixture, IdMixture };

// The destination bits a member leaves, given its scores and the prior
// destination (Store and the mixtures return the scores unchanged).
inline std::vector<uint32_t> finish(Kind k, Op op, std::vector<uint32_t> sc,
                                    const std::vector<uint32_t>& prior) {
  const int h = int(sc.size());
  if (op == Op::Max)
    for (int i = 0; i < h; ++i) sc[i] = maxOf(k, sc[i], prior[i]);
  if (op == Op::Add) {
    std::vector<float> f(h), acc(h);
    for (int i = 0; i < h; ++i) {
      f[i] = std::bit_cast<float>(sc[i]);
      acc[i] = std::bit_cast<float>(prior[i]);
    }
    qelsLogAddVec_32f_M7_sp(f.data(), acc.data(), h);
    for (int i = 0; i < h; ++i) sc[i] = std::bit_cast<uint32_t>(acc[i]);
  }
  return sc;
}

// Pointers to the rows of a matrix with stride `step`.
inline std::vector<const qel16s*> rowsOf(const qel16s* p, int height, int step) {
  std::vector<const qel16s*> r(height);
  for (int i = 0; i < height; ++i) r[i] = p + size_t(i) * step;
  return r;
}

// Guarded copies of rows for the row-pointer members; row `odd` (none for
// -1) lies 2 bytes off 16.
struct RowCopies {
  qtest::RowSet<qel16s> set;
  std::vector<const qel16s*> ptrs;
  RowCopies(const std::vector<const qel16s*>& rows, int width, int odd)
      : set(int(rows.size()), width, odd, 2) {
    for (int r = 0; r < int(rows.size()); ++r) {
      std::copy(rows[r], rows[r] + width, set.row(r).data());
      ptrs.push_back(set.row(r).data());
    }
  }
};

struct Shape {
  int width, height, extraStep, misalign;
};

inline std::string trace(const char* name, const Shape& sh, int sf) {
  return std::string(name) + " width " + std::to_string(sh.width) + " height " +
         std::to_string(sh.height) + " sf " + std::to_string(sf) + " misalign " +
         std::to_string(sh.misalign);
}

inline const int kScaleFactors[] = {INT_MIN, INT_MAX, -200, -40, -31, -17, -5, -1, 0,  1,
                                    3,       7,       12,   15,  16,  20,  31, 40, 200};

}  // namespace fxdata

#endif
