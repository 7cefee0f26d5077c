// Scores of one observation against one Gaussian: every kernel and every
// member against scalar references that repeat the fixed order of additions
// (bit for bit), the references against the plain formulas, alignment
// paths, argument checks, zero variances and allocation failure.
#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include "base/base.h"
#include "gauss/gauss.h"
#include "model/model.h"
#include "single_scoring_reference.h"
#include "test_support.h"

namespace {

using qref::Double;
using qref::Single;
using qtest::Guarded;

const int kLengths[] = {1,  2,  3,  4,  5,  7,  8,  9,  13, 15, 16,  17, 24,
                        31, 32, 39, 40, 47, 54, 55, 57, 64, 89, 100, 120};
constexpr double kU32 = 0x1p-24;
constexpr double kU64 = 0x1p-53;

// How the test data are drawn: ordinary values, or differences so small that
// their squares and products are denormal.
enum class Kind { Ordinary, Denormal };

// Observation, mean and weights in guarded buffers at chosen misalignments
// (bytes past a 64-byte boundary).
template <typename T>
struct Inputs {
  Guarded<T> s, m, v;
  Inputs(int len, size_t ms, size_t mm, size_t mv, uint32_t seed, Kind kind = Kind::Ordinary)
      : s(len, ms), m(len, mm), v(len, mv) {
    qtest::Rng rng(seed);
    for (int i = 0; i < len; ++i) {
      m[i] = static_cast<T>(rng.uniformD(-3, 3));
      if (kind == Kind::Ordinary) {
        s[i] = static_cast<T>(m[i] + rng.uniformD(-2, 2));
      } else {
        const double scale = sizeof(T) == 4 ? 1e-20 : 1e-160;
        m[i] = static_cast<T>(rng.uniformD(-1, 1) * scale);
        s[i] = static_cast<T>(rng.uniformD(-1, 1) * scale);
      }
      v[i] = static_cast<T>(rng.uniformD(0.1, 4));
    }
  }
};

struct Misalign {
  size_t s, m, v;
};
// Every pointer off 16 bytes in turn, then all of them: a wrapper that took
// the aligned twin for any of these would fault on its aligned loads.
const Misalign kMis32[] = {{0, 0, 0}, {4, 0, 0}, {0, 8, 0}, {0, 0, 12}, {4, 8, 12}};
const Misalign kMis64[] = {{0, 0, 0}, {8, 0, 0}, {0, 8, 0}, {0, 0, 8}, {8, 8, 8}};

bool allAligned(const Misalign& a) { return a.s % 16 == 0 && a.m % 16 == 0 && a.v % 16 == 0; }

std::string where(int len, const Misalign& a, Kind k) {
  return "len " + std::to_string(len) + ", misalign " + std::to_string(a.s) + "/" +
         std::to_string(a.m) + "/" + std::to_string(a.v) +
         (k == Kind::Denormal ? ", denormal" : "");
}

// ---- the references against the plain formulas

// Each term (s - m)²·w carries at most 4 roundings and passes through at most
// `len` additions in one lane plus 3 of the fold and constant, so the error
// of a sum is below (len + 8)·u·Σ|term|; the score halves it and adds |val|.
TEST(SingleScoringReference, AgreesWithPlainFormulasWithinRoundingBound) {
  for (int len : kLengths) {
    Inputs<float> f(len, 0, 0, 0, 100 + len);
    Inputs<double> d(len, 0, 0, 0, 200 + len);
    const float val = -17.25f;
    const double bound = (len + 8);
    long double abs = 0, exact = 0;

    exact = qref::exactSum(Double::Weighted, f.s.data(), f.m.data(), f.v.data(), len, &abs);
    EXPECT_NEAR(qref::single32f(Single::Weighted, f.s.data(), f.m.data(), f.v.data(), len, val),
                double(val - 0.5L * exact), 0.5 * bound * kU32 * double(abs + 2 * std::fabs(val)))
        << len;
    EXPECT_NEAR(qref::single32f(Single::Distance, f.s.data(), f.m.data(), f.v.data(), len, val),
                double(exact), bound * kU32 * double(abs))
        << len;
    EXPECT_NEAR(qref::doubleSum(Double::Weighted, f.s.data(), f.m.data(), f.v.data(), len),
                double(exact), bound * kU64 * double(abs))
        << len;
    exact = qref::exactSum(Double::Identity, f.s.data(), f.m.data(), f.v.data(), len, &abs);
    EXPECT_NEAR(qref::single32f(Single::Identity, f.s.data(), f.m.data(), nullptr, len, val),
                double(val - 0.5L * exact), 0.5 * bound * kU32 * double(abs + 2 * std::fabs(val)))
        << len;
    for (Double form : {Double::Weighted, Double::Identity, Double::DirectVar}) {
      exact = qref::exactSum(form, d.s.data(), d.m.data(), d.v.data(), len, &abs);
      EXPECT_NEAR(qref::doubleSum(form, d.s.data(), d.m.data(), d.v.data(), len), double(exact),
                  bound * kU64 * double(abs))
          << len;
    }
  }
}

// ---- kernels

TEST(SingleScoringKernels, EveryTwinMatchesTheReferenceBitForBit) {
  for (Kind kind : {Kind::Ordinary, Kind::Denormal})
    for (int len : kLengths) {
      for (const Misalign& a : kMis32) {
        SCOPED_TRACE(where(len, a, kind));
        Inputs<float> in(len, a.s, a.m, a.v, 300 + len, kind);
        const float val = 2.5f;
        const float* s = in.s.data();
        const float* m = in.m.data();
        const float* v = in.v.data();
        const float wantW = qref::single32f(Single::Weighted, s, m, v, len, val);
        const float wantI = qref::single32f(Single::Identity, s, m, v, len, val);
        const float wantD = qref::single32f(Single::Distance, s, m, v, len, val);
        float got = 0;
        qelsLGaussSingle_32f_M7(s, m, v, len, &got, &val);
        EXPECT_TRUE(qtest::sameBits(got, wantW)) << got << " " << wantW;
        qelsLGaussSingle_IdVar_32f_M7(s, m, len, &got, &val);
        EXPECT_TRUE(qtest::sameBits(got, wantI)) << got << " " << wantI;
        if (allAligned(a)) {
          qelsLGaussSingle_32f_M7_Al(s, m, v, len, &got, &val);
          EXPECT_TRUE(qtest::sameBits(got, wantW)) << got << " " << wantW;
          qelsLGaussSingle_IdVar_32f_M7_Al(s, m, len, &got, &val);
          EXPECT_TRUE(qtest::sameBits(got, wantI)) << got << " " << wantI;
          sMahDistSingle_32f_M7(s, m, v, len, &got);
          EXPECT_TRUE(qtest::sameBits(got, wantD)) << got << " " << wantD;
        }
      }
      for (const Misalign& a : kMis64) {
        SCOPED_TRACE(where(len, a, kind));
        Inputs<double> in(len, a.s, a.m, a.v, 400 + len, kind);
        const double val = -3.75;
        const double* s = in.s.data();
        const double* m = in.m.data();
        const double* v = in.v.data();
        const double wantDV = val - qref::doubleSum(Double::DirectVar, s, m, v, len) * 0.5;
        const double wantI = val - qref::doubleSum(Double::Identity, s, m, v, len) * 0.5;
        const double wantD = qref::doubleSum(Double::Weighted, s, m, v, len);
        double got = 0;
        ownqelsLogGaussSingle_DirectVar_64f_W7(s, m, v, len, &got, &val);
        EXPECT_TRUE(qtest::sameBits(got, wantDV)) << got << " " << wantDV;
        ownqelsLogGaussSingle_IdVar_64f_W7(s, m, len, &got, &val);
        EXPECT_TRUE(qtest::sameBits(got, wantI)) << got << " " << wantI;
        sMahDistSingle_64f_M7(s, m, v, len, &got);
        EXPECT_TRUE(qtest::sameBits(got, wantD)) << got << " " << wantD;
        if (allAligned(a)) {
          ownqelsLogGaussSingle_DirectVar_64f_W7Al(s, m, v, len, &got, &val);
          EXPECT_TRUE(qtest::sameBits(got, wantDV)) << got << " " << wantDV;
          ownqelsLogGaussSingle_IdVar_64f_W7Al(s, m, len, &got, &val);
          EXPECT_TRUE(qtest::sameBits(got, wantI)) << got << " " << wantI;
          sMahDistSingle_64f_M7_Al(s, m, v, len, &got);
          EXPECT_TRUE(qtest::sameBits(got, wantD)) << got << " " << wantD;
        }
      }
    }
}

// ---- the exported members

// Every member's result against its reference, for every length class, each
// pointer off 16 bytes in turn, ordinary and denormal data.
TEST(SingleScoring, EveryMemberMatchesItsReferenceBitForBit) {
  for (Kind kind : {Kind::Ordinary, Kind::Denormal})
    for (int len : kLengths) {
      for (const Misalign& a : kMis32) {
        SCOPED_TRACE(where(len, a, kind));
        Inputs<float> in(len, a.s, a.m, a.v, 500 + len, kind);
        const float* s = in.s.data();
        const float* m = in.m.data();
        const float* v = in.v.data();
        Guarded<float> r32(1);
        Guarded<double> r64(1);
        const float val = 1.125f;
        const double dval = -0.3;

        ASSERT_EQ(qelsLogGaussSingle_32f(s, m, v, len, r32.data(), val), qelStatusOk);
        EXPECT_TRUE(qtest::sameBits(r32[0], qref::single32f(Single::Weighted, s, m, v, len, val)));
        ASSERT_EQ(qelsLogGaussSingle_IdVar_32f(s, m, len, r32.data(), val), qelStatusOk);
        EXPECT_TRUE(qtest::sameBits(r32[0], qref::single32f(Single::Identity, s, m, v, len, val)));
        ASSERT_EQ(qelsMahDistSingle_32f(s, m, v, len, r32.data()), qelStatusOk);
        EXPECT_TRUE(qtest::sameBits(r32[0], qref::single32f(Single::Distance, s, m, v, len, val)));
        EXPECT_TRUE(r32.guardsIntact());

        ASSERT_EQ(qelsLogGaussSingle_32f64f(s, m, v, len, r64.data(), dval), qelStatusOk);
        EXPECT_TRUE(
            qtest::sameBits(r64[0], dval - qref::doubleSum(Double::Weighted, s, m, v, len) * 0.5));
        ASSERT_EQ(qelsLogGaussSingle_IdVar_32f64f(s, m, len, r64.data(), dval), qelStatusOk);
        EXPECT_TRUE(
            qtest::sameBits(r64[0], dval - qref::doubleSum(Double::Identity, s, m, v, len) * 0.5));
        ASSERT_EQ(qelsLogGaussSingle_DirectVar_32f64f(s, m, v, len, r64.data(), dval), qelStatusOk);
        EXPECT_TRUE(
            qtest::sameBits(r64[0], dval - qref::doubleSum(Double::DirectVar, s, m, v, len) * 0.5));
        ASSERT_EQ(qelsMahDistSingle_32f64f(s, m, v, len, r64.data()), qelStatusOk);
        EXPECT_TRUE(qtest::sameBits(r64[0], qref::doubleSum(Double::Weighted, s, m, v, len)));
        EXPECT_TRUE(r64.guardsIntact());

        // The inverse variances of DirectVar come from the library's division.
        std::vector<float> ones(len, 1.0f), inv(len);
        ASSERT_EQ(qelsDiv_32f(v, ones.data(), inv.data(), len), qelStatusOk);
        ASSERT_EQ(qelsLogGaussSingle_DirectVar_32f(s, m, v, len, r32.data(), val), qelStatusOk);
        EXPECT_TRUE(
            qtest::sameBits(r32[0], qref::single32f(Single::Weighted, s, m, inv.data(), len, val)));
      }
      for (const Misalign& a : kMis64) {
        SCOPED_TRACE(where(len, a, kind));
        Inputs<double> in(len, a.s, a.m, a.v, 600 + len, kind);
        const double* s = in.s.data();
        const double* m = in.m.data();
        const double* v = in.v.data();
        Guarded<double> r(1);
        const double val = 12.5;
        ASSERT_EQ(qelsLogGaussSingle_64f(s, m, v, len, r.data(), val), qelStatusOk);
        EXPECT_TRUE(
            qtest::sameBits(r[0], val - qref::doubleSum(Double::Weighted, s, m, v, len) * 0.5));
        ASSERT_EQ(qelsLogGaussSingle_IdVar_64f(s, m, len, r.data(), val), qelStatusOk);
        EXPECT_TRUE(
            qtest::sameBits(r[0], val - qref::doubleSum(Double::Identity, s, m, v, len) * 0.5));
        ASSERT_EQ(qelsLogGaussSingle_DirectVar_64f(s, m, v, len, r.data(), val), qelStatusOk);
        EXPECT_TRUE(
            qtest::sameBits(r[0], val - qref::doubleSum(Double::DirectVar, s, m, v, len) * 0.5));
        ASSERT_EQ(qelsMahDistSingle_64f(s, m, v, len, r.data()), qelStatusOk);
        EXPECT_TRUE(qtest::sameBits(r[0], qref::doubleSum(Double::Weighted, s, m, v, len)));
        EXPECT_TRUE(r.guardsIntact());
      }
    }
}

// The accumulators: element-wise, so the reference is the plain loop.
TEST(SingleScoring, MeanVarAccMatchesReferenceOnAnyAlignment) {
  const size_t mis32[][2] = {{0, 0}, {4, 0}, {0, 8}, {12, 4}};
  const size_t mis64[][2] = {{0, 0}, {8, 0}, {0, 8}, {8, 8}};
  for (int len : kLengths)
    for (int k = 0; k < 4; ++k) {
      SCOPED_TRACE(::testing::Message() << "len " << len << ", case " << k);
      Inputs<float> f(len, mis32[k][0], mis32[k][1], 0, 700 + len);
      Guarded<float> ma(len, mis32[k][1]), va(len, mis32[k][0]);
      qtest::Rng rng(800 + len);
      std::vector<float> wantM = rng.vec<float>(len, -5, 5), wantV = rng.vec<float>(len, 0, 5);
      ma.assign(wantM);
      va.assign(wantV);
      ASSERT_EQ(qelsMeanVarAcc_32f(f.s.data(), f.m.data(), ma.data(), va.data(), len, 0.7f),
                qelStatusOk);
      qref::meanVarAcc(f.s.data(), f.m.data(), wantM.data(), wantV.data(), len, 0.7f);
      EXPECT_TRUE(qtest::sameArrays(ma.data(), wantM.data(), len));
      EXPECT_TRUE(qtest::sameArrays(va.data(), wantV.data(), len));
      EXPECT_TRUE(ma.guardsIntact() && va.guardsIntact());

      Inputs<double> d(len, mis64[k][0], mis64[k][1], 0, 900 + len);
      Guarded<double> mad(len, mis64[k][1]), vad(len, mis64[k][0]);
      std::vector<double> wantMd = rng.vec<double>(len, -5, 5), wantVd = rng.vec<double>(len, 0, 5);
      mad.assign(wantMd);
      vad.assign(wantVd);
      ASSERT_EQ(qelsMeanVarAcc_64f(d.s.data(), d.m.data(), mad.data(), vad.data(), len, 1.3),
                qelStatusOk);
      qref::meanVarAcc(d.s.data(), d.m.data(), wantMd.data(), wantVd.data(), len, 1.3);
      EXPECT_TRUE(qtest::sameArrays(mad.data(), wantMd.data(), len));
      EXPECT_TRUE(qtest::sameArrays(vad.data(), wantVd.data(), len));
      EXPECT_TRUE(mad.guardsIntact() && vad.guardsIntact());

      // A weight of 0 leaves both accumulators as they were.
      const std::vector<float> beforeM = ma.vec(), beforeV = va.vec();
      ASSERT_EQ(qelsMeanVarAcc_32f(f.s.data(), f.m.data(), ma.data(), va.data(), len, 0.0f),
                qelStatusOk);
      EXPECT_TRUE(qtest::sameArrays(ma.data(), beforeM.data(), len));
      EXPECT_TRUE(qtest::sameArrays(va.data(), beforeV.data(), len));
      const std::vector<double> beforeMd = mad.vec(), beforeVd = vad.vec();
      ASSERT_EQ(qelsMeanVarAcc_64f(d.s.data(), d.m.data(), mad.data(), vad.data(), len, 0.0),
                qelStatusOk);
      EXPECT_TRUE(qtest::sameArrays(mad.data(), beforeMd.data(), len));
      EXPECT_TRUE(qtest::sameArrays(vad.data(), beforeVd.data(), len));
    }
}

// ---- argument checks

// Each member with one fault or two at once; the pointers are looked at
// before the length. The result (or the accumulators) must stay untouched.
TEST(SingleScoring, ArgumentChecksComeInOrderAndWriteNothing) {
  Inputs<float> f(8, 0, 0, 0, 1);
  Inputs<double> d(8, 0, 0, 0, 2);
  const int sizes[] = {8};
  std::vector<std::vector<double>> rows64(8, std::vector<double>(8, 0.5));
  std::vector<std::vector<float>> rows32(8, std::vector<float>(8, 0.5f));
  std::vector<const double*> src64;
  std::vector<const float*> src32;
  for (int r = 0; r < 8; ++r) {
    src64.push_back(rows64[r].data());
    src32.push_back(rows32[r].data());
  }
  BlockDMatrix *b32 = nullptr, *b64 = nullptr;
  ASSERT_EQ(qelsBlockDMatrixInitAlloc_32f(&b32, src32.data(), sizes, 1), qelStatusOk);
  ASSERT_EQ(qelsBlockDMatrixInitAlloc_64f(&b64, src64.data(), sizes, 1), qelStatusOk);

  Guarded<float> r32(1), acc32(8);
  Guarded<double> r64(1), acc64(8);
  // Pointer selector: bit k set makes pointer k of the member null.
  using Call = std::function<qelStatus(unsigned nulls, int len)>;
  auto F = [](unsigned nulls, int k, auto* p) { return (nulls >> k & 1) ? nullptr : p; };
  const float* fs = f.s.data();
  const float* fm = f.m.data();
  const float* fv = f.v.data();
  const double* ds = d.s.data();
  const double* dm = d.m.data();
  const double* dv = d.v.data();
  struct Member {
    const char* name;
    int pointers;
    Call call;
  } members[] = {
      {"LogGaussSingle_32f", 4,
       [&](unsigned n, int len) {
         return qelsLogGaussSingle_32f(F(n, 0, fs), F(n, 1, fm), F(n, 2, fv), len,
                                       F(n, 3, r32.data()), 1);
       }},
      {"LogGaussSingle_32f64f", 4,
       [&](unsigned n, int len) {
         return qelsLogGaussSingle_32f64f(F(n, 0, fs), F(n, 1, fm), F(n, 2, fv), len,
                                          F(n, 3, r64.data()), 1);
       }},
      {"LogGaussSingle_64f", 4,
       [&](unsigned n, int len) {
         return qelsLogGaussSingle_64f(F(n, 0, ds), F(n, 1, dm), F(n, 2, dv), len,
                                       F(n, 3, r64.data()), 1);
       }},
      {"DirectVar_32f", 4,
       [&](unsigned n, int len) {
         return qelsLogGaussSingle_DirectVar_32f(F(n, 0, fs), F(n, 1, fm), F(n, 2, fv), len,
                                                 F(n, 3, r32.data()), 1);
       }},
      {"DirectVar_32f64f", 4,
       [&](unsigned n, int len) {
         return qelsLogGaussSingle_DirectVar_32f64f(F(n, 0, fs), F(n, 1, fm), F(n, 2, fv), len,
                                                    F(n, 3, r64.data()), 1);
       }},
      {"DirectVar_64f", 4,
       [&](unsigned n, int len) {
         return qelsLogGaussSingle_DirectVar_64f(F(n, 0, ds), F(n, 1, dm), F(n, 2, dv), len,
                                                 F(n, 3, r64.data()), 1);
       }},
      {"IdVar_32f", 3,
       [&](unsigned n, int len) {
         return qelsLogGaussSingle_IdVar_32f(F(n, 0, fs), F(n, 1, fm), len, F(n, 2, r32.data()), 1);
       }},
      {"IdVar_32f64f", 3,
       [&](unsigned n, int len) {
         return qelsLogGaussSingle_IdVar_32f64f(F(n, 0, fs), F(n, 1, fm), len, F(n, 2, r64.data()),
                                                1);
       }},
      {"IdVar_64f", 3,
       [&](unsigned n, int len) {
         return qelsLogGaussSingle_IdVar_64f(F(n, 0, ds), F(n, 1, dm), len, F(n, 2, r64.data()), 1);
       }},
      {"BlockDVar_32f", 4,
       [&](unsigned n, int len) {
         return qelsLogGaussSingle_BlockDVar_32f(F(n, 0, fs), F(n, 1, fm), F(n, 2, b32), len,
                                                 F(n, 3, r32.data()), 1);
       }},
      {"BlockDVar_32f64f", 4,
       [&](unsigned n, int len) {
         return qelsLogGaussSingle_BlockDVar_32f64f(F(n, 0, fs), F(n, 1, fm), F(n, 2, b32), len,
                                                    F(n, 3, r64.data()), 1);
       }},
      {"BlockDVar_64f", 4,
       [&](unsigned n, int len) {
         return qelsLogGaussSingle_BlockDVar_64f(F(n, 0, ds), F(n, 1, dm), F(n, 2, b64), len,
                                                 F(n, 3, r64.data()), 1);
       }},
      {"MahDistSingle_32f", 4,
       [&](unsigned n, int len) {
         return qelsMahDistSingle_32f(F(n, 0, fs), F(n, 1, fm), F(n, 2, fv), len,
                                      F(n, 3, r32.data()));
       }},
      {"MahDistSingle_32f64f", 4,
       [&](unsigned n, int len) {
         return qelsMahDistSingle_32f64f(F(n, 0, fs), F(n, 1, fm), F(n, 2, fv), len,
                                         F(n, 3, r64.data()));
       }},
      {"MahDistSingle_64f", 4,
       [&](unsigned n, int len) {
         return qelsMahDistSingle_64f(F(n, 0, ds), F(n, 1, dm), F(n, 2, dv), len,
                                      F(n, 3, r64.data()));
       }},
      {"MeanVarAcc_32f", 4,
       [&](unsigned n, int len) {
         return qelsMeanVarAcc_32f(F(n, 0, fs), F(n, 1, fm), F(n, 2, acc32.data()),
                                   F(n, 3, acc32.data()), len, 1);
       }},
      {"MeanVarAcc_64f", 4,
       [&](unsigned n, int len) {
         return qelsMeanVarAcc_64f(F(n, 0, ds), F(n, 1, dm), F(n, 2, acc64.data()),
                                   F(n, 3, acc64.data()), len, 1);
       }},
  };
  auto untouched = [&] {
    return r32.untouched() && r64.untouched() && acc32.untouched() && acc64.untouched();
  };
  const bool blockMember[] = {0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 1, 1, 0, 0, 0, 0, 0};
  int idx = 0;
  for (const Member& mem : members) {
    SCOPED_TRACE(mem.name);
    const bool block = blockMember[idx++];
    for (int k = 0; k < mem.pointers; ++k) {
      EXPECT_EQ(mem.call(1u << k, 8), qelStatusNullPtr) << "null pointer " << k;
      EXPECT_EQ(mem.call(1u << k, 0), qelStatusNullPtr) << "null pointer " << k << " and len 0";
      if (block) EXPECT_EQ(mem.call(1u << k, 5), qelStatusNullPtr) << "null " << k << ", wrong len";
    }
    EXPECT_EQ(mem.call(0, 0), qelStatusSize);
    EXPECT_EQ(mem.call(0, -1), qelStatusSize);
    if (block) {
      EXPECT_EQ(mem.call(0, 7), qelStatusSize) << "len below the matrix order";
      EXPECT_EQ(mem.call(0, 9), qelStatusSize) << "len above the matrix order";
    }
    EXPECT_TRUE(untouched());
  }
  EXPECT_EQ(qelsBlockDMatrixFree_32f(b32), qelStatusOk);
  EXPECT_EQ(qelsBlockDMatrixFree_64f(b64), qelStatusOk);
}

// ---- special values

TEST(SingleScoring, ObservationEqualToMeanGivesExactlyTheConstant) {
  for (int len : {1, 7, 16, 39, 100, 150}) {
    Inputs<float> f(len, 0, 0, 0, 11);
    Inputs<double> d(len, 0, 0, 0, 12);
    const int sizes[] = {len};
    std::vector<std::vector<float>> rows32(len, std::vector<float>(len, 0.25f));
    std::vector<std::vector<double>> rows64(len, std::vector<double>(len, 0.25));
    std::vector<const float*> s32;
    std::vector<const double*> s64;
    for (int r = 0; r < len; ++r) {
      s32.push_back(rows32[r].data());
      s64.push_back(rows64[r].data());
    }
    BlockDMatrix *b32 = nullptr, *b64 = nullptr;
    ASSERT_EQ(qelsBlockDMatrixInitAlloc_32f(&b32, s32.data(), sizes, 1), qelStatusOk);
    ASSERT_EQ(qelsBlockDMatrixInitAlloc_64f(&b64, s64.data(), sizes, 1), qelStatusOk);
    const float* m = f.m.data();
    const double* md = d.m.data();
    const float v = -123.375f;
    const double vd = -98765.4321;
    float r = 0;
    double rd = 0;
    EXPECT_EQ(qelsLogGaussSingle_32f(m, m, f.v.data(), len, &r, v), qelStatusOk);
    EXPECT_EQ(r, v);
    EXPECT_EQ(qelsLogGaussSingle_IdVar_32f(m, m, len, &r, v), qelStatusOk);
    EXPECT_EQ(r, v);
    EXPECT_EQ(qelsLogGaussSingle_DirectVar_32f(m, m, f.v.data(), len, &r, v), qelStatusOk);
    EXPECT_EQ(r, v);
    EXPECT_EQ(qelsLogGaussSingle_BlockDVar_32f(m, m, b32, len, &r, v), qelStatusOk);
    EXPECT_EQ(r, v);
    EXPECT_EQ(qelsMahDistSingle_32f(m, m, f.v.data(), len, &r), qelStatusOk);
    EXPECT_EQ(r, 0.0f);
    for (auto fn : {qelsLogGaussSingle_32f64f, qelsLogGaussSingle_DirectVar_32f64f}) {
      EXPECT_EQ(fn(m, m, f.v.data(), len, &rd, vd), qelStatusOk);
      EXPECT_EQ(rd, vd);
    }
    EXPECT_EQ(qelsLogGaussSingle_IdVar_32f64f(m, m, len, &rd, vd), qelStatusOk);
    EXPECT_EQ(rd, vd);
    EXPECT_EQ(qelsLogGaussSingle_BlockDVar_32f64f(m, m, b32, len, &rd, vd), qelStatusOk);
    EXPECT_EQ(rd, vd);
    EXPECT_EQ(qelsMahDistSingle_32f64f(m, m, f.v.data(), len, &rd), qelStatusOk);
    EXPECT_EQ(rd, 0.0);
    for (auto fn : {qelsLogGaussSingle_64f, qelsLogGaussSingle_DirectVar_64f}) {
      EXPECT_EQ(fn(md, md, d.v.data(), len, &rd, vd), qelStatusOk);
      EXPECT_EQ(rd, vd);
    }
    EXPECT_EQ(qelsLogGaussSingle_IdVar_64f(md, md, len, &rd, vd), qelStatusOk);
    EXPECT_EQ(rd, vd);
    EXPECT_EQ(qelsLogGaussSingle_BlockDVar_64f(md, md, b64, len, &rd, vd), qelStatusOk);
    EXPECT_EQ(rd, vd);
    EXPECT_EQ(qelsMahDistSingle_64f(md, md, d.v.data(), len, &rd), qelStatusOk);
    EXPECT_EQ(rd, 0.0);
    qelsBlockDMatrixFree_32f(b32);
    qelsBlockDMatrixFree_64f(b64);
  }
}

// A zero variance: the single member warns and scores from the infinite
// inverse, the mixed member warns and leaves the result alone, the double
// member divides in its kernel and does not warn.
TEST(SingleScoring, ZeroVarianceInDirectVar) {
  for (int len : {1, 5, 16, 39}) {
    for (int at : {0, len - 1}) {
      SCOPED_TRACE(::testing::Message() << "len " << len << ", zero at " << at);
      Inputs<float> f(len, 0, 4, 0, 21);
      Inputs<double> d(len, 0, 8, 0, 22);
      f.v[at] = 0.0f;
      d.v[at] = 0.0;
      Guarded<float> r32(1);
      Guarded<double> r64(1);
      EXPECT_EQ(
          qelsLogGaussSingle_DirectVar_32f(f.s.data(), f.m.data(), f.v.data(), len, r32.data(), 3),
          qelStatusWarnDivZero);
      EXPECT_EQ(qtest::bits(r32[0]), qtest::bits(qelConstantOfINF_NEG_32f));
      EXPECT_EQ(qelsLogGaussSingle_DirectVar_32f64f(f.s.data(), f.m.data(), f.v.data(), len,
                                                    r64.data(), 3),
                qelStatusWarnDivZero);
      EXPECT_TRUE(r64.untouched());
      EXPECT_EQ(
          qelsLogGaussSingle_DirectVar_64f(d.s.data(), d.m.data(), d.v.data(), len, r64.data(), 3),
          qelStatusOk);
      EXPECT_TRUE(std::isinf(r64[0]) && r64[0] < 0);
      // With the observation on the mean there, 0 times infinity is NaN.
      f.s[at] = f.m[at];
      EXPECT_EQ(
          qelsLogGaussSingle_DirectVar_32f(f.s.data(), f.m.data(), f.v.data(), len, r32.data(), 3),
          qelStatusWarnDivZero);
      EXPECT_TRUE(std::isnan(r32[0]));
    }
  }
}

// The data are not examined: a NaN or infinity anywhere, the tail included,
// reaches the result.
TEST(SingleScoring, NanAndInfinityFlowThrough) {
  const float inf = std::numeric_limits<float>::infinity();
  for (int len : {1, 3, 8, 13, 16, 31, 64}) {
    for (int at : {0, len / 2, len - 1}) {
      SCOPED_TRACE(::testing::Message() << "len " << len << ", at " << at);
      Inputs<float> f(len, 0, 0, 0, 31);
      Inputs<double> d(len, 0, 0, 0, 32);
      float r = 0;
      double rd = 0;
      f.s[at] = std::numeric_limits<float>::quiet_NaN();
      d.s[at] = std::numeric_limits<double>::quiet_NaN();
      qelsLogGaussSingle_32f(f.s.data(), f.m.data(), f.v.data(), len, &r, 0);
      EXPECT_TRUE(std::isnan(r));
      qelsLogGaussSingle_IdVar_32f(f.s.data(), f.m.data(), len, &r, 0);
      EXPECT_TRUE(std::isnan(r));
      qelsMahDistSingle_32f(f.s.data(), f.m.data(), f.v.data(), len, &r);
      EXPECT_TRUE(std::isnan(r));
      qelsLogGaussSingle_32f64f(f.s.data(), f.m.data(), f.v.data(), len, &rd, 0);
      EXPECT_TRUE(std::isnan(rd));
      qelsLogGaussSingle_IdVar_64f(d.s.data(), d.m.data(), len, &rd, 0);
      EXPECT_TRUE(std::isnan(rd));
      qelsMahDistSingle_64f(d.s.data(), d.m.data(), d.v.data(), len, &rd);
      EXPECT_TRUE(std::isnan(rd));
      f.s[at] = inf;
      qelsLogGaussSingle_32f(f.s.data(), f.m.data(), f.v.data(), len, &r, 0);
      EXPECT_EQ(r, -inf);
      qelsMahDistSingle_32f(f.s.data(), f.m.data(), f.v.data(), len, &r);
      EXPECT_EQ(r, inf);
    }
  }
}

// ---- block-diagonal scores

struct BlockCase {
  std::vector<int> sizes;
  uint32_t seed;
};

// A symmetric positive block-diagonal inverse covariance, given as the rows
// of its blocks.
template <typename T>
std::vector<std::vector<T>> blockRows(const std::vector<int>& sizes, uint32_t seed) {
  qtest::Rng rng(seed);
  std::vector<std::vector<T>> rows;
  for (int side : sizes) {
    std::vector<std::vector<T>> blk(side, std::vector<T>(side));
    for (int k = 0; k < side; ++k)
      for (int j = 0; j <= k; ++j)
        blk[k][j] = blk[j][k] =
            static_cast<T>(j == k ? rng.uniformD(1, 3) : rng.uniformD(-0.3, 0.3));
    for (auto& r : blk) rows.push_back(r);
  }
  return rows;
}

template <typename T>
BlockDMatrix* buildBlock(const std::vector<int>& sizes, const std::vector<std::vector<T>>& rows) {
  std::vector<const T*> src;
  for (auto& r : rows) src.push_back(r.data());
  BlockDMatrix* m = nullptr;
  qelStatus st;
  if constexpr (sizeof(T) == 4)
    st = qelsBlockDMatrixInitAlloc_32f(&m, src.data(), sizes.data(), int(sizes.size()));
  else
    st = qelsBlockDMatrixInitAlloc_64f(&m, src.data(), sizes.data(), int(sizes.size()));
  EXPECT_EQ(st, qelStatusOk);
  return m;
}

int order(const std::vector<int>& sizes) {
  int n = 0;
  for (int s : sizes) n += s;
  return n;
}

const BlockCase kBlockCases[] = {{{3}, 1},           {{1, 1, 1, 1}, 2}, {{5, 2, 7, 1, 4}, 3},
                                 {{16}, 4},          {{13}, 5},         {{4, 4, 4, 4}, 6},
                                 {{9, 31}, 7},       {{111}, 8},        {{112}, 9},
                                 {{39, 64, 17}, 10}, {{2, 3}, 11},      {{100, 13}, 12},
                                 {{1}, 13},          {{8, 15, 1}, 14}};

TEST(SingleScoringBlockDiagonal, MatchesReferenceBitForBitAndPlainFormula) {
  for (const BlockCase& c : kBlockCases)
    for (size_t mis : {0u, 4u, 8u}) {
      const int len = order(c.sizes);
      SCOPED_TRACE(::testing::Message()
                   << "order " << len << ", blocks " << c.sizes.size() << ", misalign " << mis);
      auto rows32 = blockRows<float>(c.sizes, c.seed);
      auto rows64 = blockRows<double>(c.sizes, c.seed);
      BlockDMatrix* b32 = buildBlock(c.sizes, rows32);
      BlockDMatrix* b64 = buildBlock(c.sizes, rows64);
      Inputs<float> f(len, mis, 0, 0, c.seed + 50);
      // Doubles stay on 8 bytes: 0, 8 or 24 bytes past the boundary.
      const size_t misD = mis == 0 ? 0 : mis == 4 ? 8 : 24;
      Inputs<double> d(len, 0, misD, 0, c.seed + 60);
      std::vector<float> df(len);
      std::vector<double> dd(len);
      for (int i = 0; i < len; ++i) {
        df[i] = f.s[i] - f.m[i];
        dd[i] = d.s[i] - d.m[i];
      }
      const float val = 4.5f;
      const double vald = -2.25;
      float r = 0;
      double rd = 0;

      ASSERT_EQ(qelsLogGaussSingle_BlockDVar_32f(f.s.data(), f.m.data(), b32, len, &r, val),
                qelStatusOk);
      const float q32 = qref::blockForm32f<false>(c.sizes, rows32, df.data());
      EXPECT_TRUE(qtest::sameBits(r, static_cast<float>(double(val) - double(q32) * 0.5)));
      ASSERT_EQ(qelsLogGaussSingle_BlockDVar_32f64f(f.s.data(), f.m.data(), b32, len, &rd, vald),
                qelStatusOk);
      const double q3264 = qref::blockForm32f<true>(c.sizes, rows32, df.data());
      EXPECT_TRUE(qtest::sameBits(rd, vald - q3264 * 0.5));
      ASSERT_EQ(qelsLogGaussSingle_BlockDVar_64f(d.s.data(), d.m.data(), b64, len, &rd, vald),
                qelStatusOk);
      const double q64 = qref::blockForm64f(c.sizes, rows64, dd.data());
      EXPECT_TRUE(qtest::sameBits(rd, vald - q64 * 0.5));

      // The references against dᵀ·M·d in long double: each term has at most
      // 4 roundings and passes through at most (block side + order) additions.
      int side = 0;
      for (int s : c.sizes) side = std::max(side, s);
      long double abs = 0;
      long double exact = qref::exactBlockForm(c.sizes, rows32, f.s.data(), f.m.data(), &abs);
      EXPECT_NEAR(q32, double(exact), (side + len + 8) * kU32 * double(abs));
      EXPECT_NEAR(q3264, double(exact), (side + len + 8) * kU32 * double(abs));
      exact = qref::exactBlockForm(c.sizes, rows64, d.s.data(), d.m.data(), &abs);
      EXPECT_NEAR(q64, double(exact), (side + len + 8) * kU64 * double(abs));

      qelsBlockDMatrixFree_32f(b32);
      qelsBlockDMatrixFree_64f(b64);
    }
}

// Blocks of one element are a diagonal Gaussian: the score agrees with the
// plain flavour up to the rounding of their different orders.
TEST(SingleScoringBlockDiagonal, UnitBlocksAgreeWithTheDiagonalScore) {
  for (int len : {1, 4, 9, 17, 64, 120}) {
    Inputs<float> f(len, 0, 0, 0, 41);
    Inputs<double> d(len, 0, 0, 0, 42);
    std::vector<int> sizes(len, 1);
    std::vector<std::vector<float>> r32;
    std::vector<std::vector<double>> r64;
    for (int i = 0; i < len; ++i) {
      r32.push_back({f.v[i]});
      r64.push_back({d.v[i]});
    }
    BlockDMatrix* b32 = buildBlock(sizes, r32);
    BlockDMatrix* b64 = buildBlock(sizes, r64);
    long double abs32 = 0, abs64 = 0;
    qref::exactSum(Double::Weighted, f.s.data(), f.m.data(), f.v.data(), len, &abs32);
    qref::exactSum(Double::Weighted, d.s.data(), d.m.data(), d.v.data(), len, &abs64);
    float a = 0, b = 0;
    double ad = 0, bd = 0;
    qelsLogGaussSingle_BlockDVar_32f(f.s.data(), f.m.data(), b32, len, &a, 1.5f);
    qelsLogGaussSingle_32f(f.s.data(), f.m.data(), f.v.data(), len, &b, 1.5f);
    EXPECT_NEAR(a, b, (len + 8) * kU32 * double(abs32 + 3)) << len;
    qelsLogGaussSingle_BlockDVar_32f64f(f.s.data(), f.m.data(), b32, len, &ad, 1.5);
    qelsLogGaussSingle_32f64f(f.s.data(), f.m.data(), f.v.data(), len, &bd, 1.5);
    EXPECT_NEAR(ad, bd, (len + 8) * kU32 * double(abs32)) << len;
    qelsLogGaussSingle_BlockDVar_64f(d.s.data(), d.m.data(), b64, len, &ad, 1.5);
    qelsLogGaussSingle_64f(d.s.data(), d.m.data(), d.v.data(), len, &bd, 1.5);
    EXPECT_NEAR(ad, bd, (len + 8) * kU64 * double(abs64 + 3)) << len;
    qelsBlockDMatrixFree_32f(b32);
    qelsBlockDMatrixFree_64f(b64);
  }
}

// ---- allocation

// DirectVar_32f always allocates; the block-diagonal members from order 112
// on. A failed allocation gives -9, the result untouched, nothing leaked.
TEST(SingleScoring, FailedAllocationReturnsMemAllocAndLeaksNothing) {
  for (int len : {1, 13, 111, 112, 200}) {
    SCOPED_TRACE(len);
    Inputs<float> f(len, 0, 0, 0, 51);
    Inputs<double> d(len, 0, 0, 0, 52);
    const std::vector<int> sizes = {len};
    BlockDMatrix* b32 = buildBlock(sizes, blockRows<float>(sizes, 53));
    BlockDMatrix* b64 = buildBlock(sizes, blockRows<double>(sizes, 54));
    Guarded<float> r32(1);
    Guarded<double> r64(1);
    const qelStatus blockWant = len >= 112 ? qelStatusMemAlloc : qelStatusOk;
    {
      qtest::FailingAllocator failing(0);
      EXPECT_EQ(
          qelsLogGaussSingle_DirectVar_32f(f.s.data(), f.m.data(), f.v.data(), len, r32.data(), 1),
          qelStatusMemAlloc);
      EXPECT_TRUE(r32.untouched());
      EXPECT_EQ(qelsLogGaussSingle_BlockDVar_32f(f.s.data(), f.m.data(), b32, len, r32.data(), 1),
                blockWant);
      EXPECT_EQ(
          qelsLogGaussSingle_BlockDVar_32f64f(f.s.data(), f.m.data(), b32, len, r64.data(), 1),
          blockWant);
      EXPECT_EQ(qelsLogGaussSingle_BlockDVar_64f(d.s.data(), d.m.data(), b64, len, r64.data(), 1),
                blockWant);
      if (blockWant != qelStatusOk) EXPECT_TRUE(r32.untouched() && r64.untouched());
      EXPECT_TRUE(failing.nothingLeaked());
    }
    {
      // With memory, each call takes and returns exactly its own scratch.
      qtest::FailingAllocator counting(1);
      EXPECT_EQ(
          qelsLogGaussSingle_DirectVar_32f(f.s.data(), f.m.data(), f.v.data(), len, r32.data(), 1),
          qelStatusOk);
      EXPECT_EQ(qelsLogGaussSingle_BlockDVar_32f(f.s.data(), f.m.data(), b32, len, r32.data(), 1),
                blockWant);
      EXPECT_TRUE(counting.nothingLeaked());
    }
    qelsBlockDMatrixFree_32f(b32);
    qelsBlockDMatrixFree_64f(b64);
  }
}

}  // namespace
