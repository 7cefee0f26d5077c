// Scores of one observation against one Gaussian. One table lists every
// member and kernel; drivers run it against scalar references that repeat
// the fixed order of additions (bit for bit) on every length and alignment
// path, through the argument checks, and through the special values. The
// references are checked against the plain formulas.
#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include "base/base.h"
#include "block_diag_matrix_reference.h"
#include "gauss/gauss.h"
#include "single_scoring_reference.h"
#include "test_support.h"

namespace {

using qref::Double;
using qref::Single;
using qtest::Guarded;

// Every remainder class of the lane groups, the own-loop limit of
// IdVar_64f (54) and the stack limit of the block scores (112).
const int kLengths[] = {1,  2,  3,  4,  5,  7,  8,  9,  13, 15, 16,  17,  24,
                        31, 32, 39, 40, 47, 54, 55, 57, 64, 89, 100, 120, 150};
constexpr double kU32 = 0x1p-24;
constexpr double kU64 = 0x1p-53;

// Ordinary values, or differences so small that their squares are denormal.
enum class Kind { Ordinary, Denormal };

// Observation, mean and weights at chosen misalignments, and a block-diagonal
// matrix of the same order whose blocks cover short, partial and long rows.
template <typename T>
struct Inputs {
  Guarded<T> s, m, v;
  std::vector<int> sizes;
  qblk::Rows<T> rows;
  qblk::Handle block;
  Inputs(int len, size_t ms, size_t mm, size_t mv, uint32_t seed, Kind kind = Kind::Ordinary)
      : s(len, ms), m(len, mm), v(len, mv) {
    qtest::Rng rng(seed);
    const double tiny = sizeof(T) == 4 ? 1e-20 : 1e-160;
    for (int i = 0; i < len; ++i) {
      m[i] =
          static_cast<T>(kind == Kind::Ordinary ? rng.uniformD(-3, 3) : rng.uniformD(-1, 1) * tiny);
      s[i] = static_cast<T>(kind == Kind::Ordinary ? m[i] + rng.uniformD(-2, 2)
                                                   : rng.uniformD(-1, 1) * tiny);
      v[i] = static_cast<T>(rng.uniformD(0.1, 4));
    }
    const int cycle[] = {5, 2, 7, 1, 4, 16, 3};
    for (int left = len, k = 0; left > 0; ++k) {
      const int side = k == 0 && len >= 39 ? len * 2 / 3 : std::min(left, cycle[k % 7]);
      sizes.push_back(side);
      left -= side;
    }
    rows = qblk::symmetricRows<T>(sizes, seed + 1);
    block = qblk::build(sizes, rows);
  }
  int maxSide() const { return *std::max_element(sizes.begin(), sizes.end()); }
};

// ---- the table of members

enum class Shape { Weighted, Identity, Block, Distance, Accumulate };

// The pointers of one call in argument order (Identity: s, m, r).
using Args = std::array<void*, 4>;
template <typename T>
const T* in(void* p) {
  return static_cast<const T*>(p);
}
// The expected result from s, m and v (or the block data) and val.
template <typename S>
using Ref = std::function<double(const Inputs<S>&, int, double)>;

struct Member {
  std::string name;
  bool f64, r64;  // doubles in, double out
  Shape shape;
  bool kernel, alignedOnly;
  std::function<qelStatus(const Args&, int, double)> call;
  Ref<float> ref32;
  Ref<double> ref64;
  int pointers() const { return shape == Shape::Identity ? 3 : 4; }
  bool directVar() const { return name.find("DirectVar") != std::string::npos; }
};

template <typename S, typename R, typename Fn>
Member member(std::string name, Shape shape, Fn fn, Ref<S> ref = {}, bool kernel = false,
              bool alignedOnly = false) {
  Member mb{name, sizeof(S) == 8, sizeof(R) == 8, shape, kernel, alignedOnly, {}, {}, {}};
  if constexpr (sizeof(S) == 8)
    mb.ref64 = ref;
  else
    mb.ref32 = ref;
  mb.call = [fn](const Args& a, int n, double val) -> qelStatus {
    const S* s = in<S>(a[0]);
    const S* m = in<S>(a[1]);
    R* r = static_cast<R*>(a[3]);
    const R v = static_cast<R>(val);
    if constexpr (std::is_invocable_r_v<qelStatus, Fn, const S*, const S*, int, R*, R>)
      return fn(s, m, n, static_cast<R*>(a[2]), v);  // Identity member
    else if constexpr (std::is_invocable_v<Fn, const S*, const S*, int, R*, const R*>)
      return fn(s, m, n, static_cast<R*>(a[2]), &v), qelStatusOk;  // Identity kernel
    else if constexpr (std::is_invocable_r_v<qelStatus, Fn, const S*, const S*, const BlockDMatrix*,
                                             int, R*, R>)
      return fn(s, m, static_cast<const BlockDMatrix*>(a[2]), n, r, v);
    else if constexpr (std::is_invocable_r_v<qelStatus, Fn, const S*, const S*, R*, R*, int, R>)
      return fn(s, m, static_cast<R*>(a[2]), r, n, v);  // accumulators
    else if constexpr (std::is_invocable_r_v<qelStatus, Fn, const S*, const S*, const S*, int, R*>)
      return fn(s, m, in<S>(a[2]), n, r);  // distance member
    else if constexpr (std::is_invocable_v<Fn, const S*, const S*, const S*, int, R*>)
      return fn(s, m, in<S>(a[2]), n, r), qelStatusOk;  // distance kernel
    else if constexpr (std::is_invocable_r_v<qelStatus, Fn, const S*, const S*, const S*, int, R*,
                                             R>)
      return fn(s, m, in<S>(a[2]), n, r, v);
    else
      return fn(s, m, in<S>(a[2]), n, r, &v), qelStatusOk;  // weighted kernel
  };
  return mb;
}

Ref<float> single(Single form) {
  return [=](const Inputs<float>& d, int n, double val) -> double {
    return qref::single32f(form, d.s.data(), d.m.data(), d.v.data(), n, static_cast<float>(val));
  };
}
template <typename S>
Ref<S> dbl(Double form, bool score = true) {
  return [=](const Inputs<S>& d, int n, double val) {
    const double q = qref::doubleSum(form, d.s.data(), d.m.data(), d.v.data(), n);
    return score ? val - q * 0.5 : q;
  };
}
// The inverse variances of DirectVar_32f come from the library's division.
double directVar32f(const Inputs<float>& d, int n, double val) {
  std::vector<float> ones(n, 1.0f), inv(n);
  EXPECT_EQ(qelsDiv_32f(d.v.data(), ones.data(), inv.data(), n), qelStatusOk);
  return qref::single32f(Single::Weighted, d.s.data(), d.m.data(), inv.data(), n, float(val));
}
template <bool Widen>
double block32f(const Inputs<float>& d, int n, double val) {
  std::vector<float> diff(n);
  for (int i = 0; i < n; ++i) diff[i] = d.s[i] - d.m[i];
  const double q = qref::blockForm32f<Widen>(d.sizes, d.rows, diff.data());
  // The single score subtracts in double and narrows once.
  return Widen ? val - q * 0.5 : static_cast<float>(val - q * 0.5);
}
double block64f(const Inputs<double>& d, int n, double val) {
  std::vector<double> diff(n);
  for (int i = 0; i < n; ++i) diff[i] = d.s[i] - d.m[i];
  return val - qref::blockForm64f(d.sizes, d.rows, diff.data()) * 0.5;
}

const std::vector<Member>& members() {
  using F = float;
  using D = double;
  using S = Shape;
  // clang-format off
  static const std::vector<Member> table = {
      member<F, F>("LogGaussSingle_32f", S::Weighted, qelsLogGaussSingle_32f, single(Single::Weighted)),
      member<F, D>("LogGaussSingle_32f64f", S::Weighted, qelsLogGaussSingle_32f64f, dbl<F>(Double::Weighted)),
      member<D, D>("LogGaussSingle_64f", S::Weighted, qelsLogGaussSingle_64f, dbl<D>(Double::Weighted)),
      member<F, F>("DirectVar_32f", S::Weighted, qelsLogGaussSingle_DirectVar_32f, Ref<F>(directVar32f)),
      member<F, D>("DirectVar_32f64f", S::Weighted, qelsLogGaussSingle_DirectVar_32f64f, dbl<F>(Double::DirectVar)),
      member<D, D>("DirectVar_64f", S::Weighted, qelsLogGaussSingle_DirectVar_64f, dbl<D>(Double::DirectVar)),
      member<F, F>("IdVar_32f", S::Identity, qelsLogGaussSingle_IdVar_32f, single(Single::Identity)),
      member<F, D>("IdVar_32f64f", S::Identity, qelsLogGaussSingle_IdVar_32f64f, dbl<F>(Double::Identity)),
      member<D, D>("IdVar_64f", S::Identity, qelsLogGaussSingle_IdVar_64f, dbl<D>(Double::Identity)),
      member<F, F>("BlockDVar_32f", S::Block, qelsLogGaussSingle_BlockDVar_32f, Ref<F>(block32f<false>)),
      member<F, D>("BlockDVar_32f64f", S::Block, qelsLogGaussSingle_BlockDVar_32f64f, Ref<F>(block32f<true>)),
      member<D, D>("BlockDVar_64f", S::Block, qelsLogGaussSingle_BlockDVar_64f, Ref<D>(block64f)),
      member<F, F>("MahDistSingle_32f", S::Distance, qelsMahDistSingle_32f, single(Single::Distance)),
      member<F, D>("MahDistSingle_32f64f", S::Distance, qelsMahDistSingle_32f64f, dbl<F>(Double::Weighted, false)),
      member<D, D>("MahDistSingle_64f", S::Distance, qelsMahDistSingle_64f, dbl<D>(Double::Weighted, false)),
      member<F, F>("MeanVarAcc_32f", S::Accumulate, qelsMeanVarAcc_32f),
      member<D, D>("MeanVarAcc_64f", S::Accumulate, qelsMeanVarAcc_64f),
      member<F, F>("LGaussSingle_32f_M7", S::Weighted, qelsLGaussSingle_32f_M7, single(Single::Weighted), true),
      member<F, F>("LGaussSingle_32f_M7_Al", S::Weighted, qelsLGaussSingle_32f_M7_Al, single(Single::Weighted), true, true),
      member<F, F>("LGaussSingle_IdVar_32f_M7", S::Identity, qelsLGaussSingle_IdVar_32f_M7, single(Single::Identity), true),
      member<F, F>("LGaussSingle_IdVar_32f_M7_Al", S::Identity, qelsLGaussSingle_IdVar_32f_M7_Al, single(Single::Identity), true, true),
      member<F, F>("sMahDistSingle_32f_M7", S::Distance, sMahDistSingle_32f_M7, single(Single::Distance), true, true),
      member<D, D>("DirectVar_64f_W7", S::Weighted, ownqelsLogGaussSingle_DirectVar_64f_W7, dbl<D>(Double::DirectVar), true),
      member<D, D>("DirectVar_64f_W7Al", S::Weighted, ownqelsLogGaussSingle_DirectVar_64f_W7Al, dbl<D>(Double::DirectVar), true, true),
      member<D, D>("IdVar_64f_W7", S::Identity, ownqelsLogGaussSingle_IdVar_64f_W7, dbl<D>(Double::Identity), true),
      member<D, D>("IdVar_64f_W7Al", S::Identity, ownqelsLogGaussSingle_IdVar_64f_W7Al, dbl<D>(Double::Identity), true, true),
      member<D, D>("sMahDistSingle_64f_M7", S::Distance, sMahDistSingle_64f_M7, dbl<D>(Double::Weighted, false), true),
      member<D, D>("sMahDistSingle_64f_M7_Al", S::Distance, sMahDistSingle_64f_M7_Al, dbl<D>(Double::Weighted, false), true, true),
  };
  // clang-format on
  return table;
}

// The call's pointers for data d and result (or accumulators) r, r2.
template <typename S>
Args argsOf(const Member& mb, Inputs<S>& d, void* r, void* r2 = nullptr) {
  if (mb.shape == Shape::Identity) return {d.s.data(), d.m.data(), r, nullptr};
  if (mb.shape == Shape::Accumulate) return {d.s.data(), d.m.data(), r, r2};
  void* third = mb.shape == Shape::Block ? static_cast<void*>(d.block.get()) : d.v.data();
  return {d.s.data(), d.m.data(), third, r};
}

// Guarded room for one result of either type.
struct Out {
  Guarded<float> f{1};
  Guarded<double> d{1};
  void* at(const Member& mb) { return mb.r64 ? static_cast<void*>(d.data()) : f.data(); }
  double value(const Member& mb) const { return mb.r64 ? d[0] : f[0]; }
  bool same(const Member& mb, double want) const {
    return mb.r64 ? qtest::sameBits(d[0], want) : qtest::sameBits(f[0], static_cast<float>(want));
  }
  bool guardsIntact() const { return f.guardsIntact() && d.guardsIntact(); }
};

// One call of a member on the data of its type.
qelStatus run(const Member& mb, Inputs<float>& f, Inputs<double>& d, int len, double val, void* r,
              void* r2 = nullptr) {
  return mb.f64 ? mb.call(argsOf(mb, d, r, r2), len, val) : mb.call(argsOf(mb, f, r, r2), len, val);
}

struct Misalign {
  size_t s, m, v;
};
// Every pointer off 16 bytes in turn, then all of them: a wrapper that took
// the aligned twin for any of these would fault on its aligned loads.
const Misalign kMis32[] = {{0, 0, 0}, {4, 0, 0}, {0, 8, 0}, {0, 0, 12}, {4, 8, 12}};
const Misalign kMis64[] = {{0, 0, 0}, {8, 0, 0}, {0, 8, 0}, {0, 0, 8}, {8, 8, 8}};

// ---- the references against the plain formulas

// Each term carries at most 4 roundings and passes through at most `len`
// additions in one lane (block forms: side + len) plus 3 of the fold and
// constant, so a sum errs by less than (len + 8)·u·Σ|term|; a score halves
// that and adds |val|.
TEST(SingleScoringReference, AgreesWithPlainFormulasWithinRoundingBound) {
  for (int len : kLengths) {
    SCOPED_TRACE(len);
    Inputs<float> f(len, 0, 0, 0, 100 + len);
    Inputs<double> d(len, 0, 0, 0, 200 + len);
    const float val = -17.25f;
    const double b = len + 8, scoreTol = 0.5 * b * kU32;
    long double abs = 0;
    long double exact =
        qref::exactSum(Double::Weighted, f.s.data(), f.m.data(), f.v.data(), len, &abs);
    EXPECT_NEAR(single(Single::Weighted)(f, len, val), double(val - 0.5L * exact),
                scoreTol * double(abs + 2 * std::fabs(val)));
    EXPECT_NEAR(single(Single::Distance)(f, len, val), double(exact), b * kU32 * double(abs));
    EXPECT_NEAR(dbl<float>(Double::Weighted, false)(f, len, 0), double(exact),
                b * kU64 * double(abs));
    exact = qref::exactSum(Double::Identity, f.s.data(), f.m.data(), f.v.data(), len, &abs);
    EXPECT_NEAR(single(Single::Identity)(f, len, val), double(val - 0.5L * exact),
                scoreTol * double(abs + 2 * std::fabs(val)));
    for (Double form : {Double::Weighted, Double::Identity, Double::DirectVar}) {
      exact = qref::exactSum(form, d.s.data(), d.m.data(), d.v.data(), len, &abs);
      EXPECT_NEAR(dbl<double>(form, false)(d, len, 0), double(exact), b * kU64 * double(abs));
    }
    const double bb = f.maxSide() + len + 8;
    exact = qref::exactBlockForm(f.sizes, f.rows, f.s.data(), f.m.data(), &abs);
    EXPECT_NEAR(-2 * block32f<true>(f, len, 0), double(exact), bb * kU32 * double(abs));
    EXPECT_NEAR(-2 * block32f<false>(f, len, 0), double(exact), bb * kU32 * double(abs));
    exact = qref::exactBlockForm(d.sizes, d.rows, d.s.data(), d.m.data(), &abs);
    EXPECT_NEAR(-2 * block64f(d, len, 0), double(exact), bb * kU64 * double(abs));
  }
}

// ---- every member and kernel, bit for bit

TEST(SingleScoring, EveryMemberAndKernelMatchesItsReferenceBitForBit) {
  for (Kind kind : {Kind::Ordinary, Kind::Denormal})
    for (int len : kLengths)
      for (int k = 0; k < 5; ++k) {
        const Misalign a = kMis32[k], b = kMis64[k];
        SCOPED_TRACE(::testing::Message() << "len " << len << ", misalignment case " << k
                                          << (kind == Kind::Denormal ? ", denormal" : ""));
        Inputs<float> f(len, a.s, a.m, a.v, 300 + len, kind);
        Inputs<double> d(len, b.s, b.m, b.v, 400 + len, kind);
        for (const Member& mb : members()) {
          if (mb.shape == Shape::Accumulate || (mb.alignedOnly && k != 0)) continue;
          Out r;
          const double val = mb.r64 ? -0.3 : 1.125;
          ASSERT_EQ(run(mb, f, d, len, val, r.at(mb)), qelStatusOk) << mb.name;
          const double want = mb.f64 ? mb.ref64(d, len, val) : mb.ref32(f, len, val);
          EXPECT_TRUE(r.same(mb, want)) << mb.name << ": " << r.value(mb) << " against " << want;
          EXPECT_TRUE(r.guardsIntact()) << mb.name;
        }
      }
}

// The accumulators work element by element: the reference is the plain
// loop, and a weight of 0 leaves both accumulators as they were.
template <typename T>
void checkMeanVarAcc(const size_t (&mis)[4][2], T weight, uint32_t seed) {
  for (int len : kLengths)
    for (int k = 0; k < 4; ++k) {
      SCOPED_TRACE(::testing::Message() << "len " << len << ", case " << k << ", " << sizeof(T));
      Inputs<T> d(len, mis[k][0], mis[k][1], 0, seed + len);
      Guarded<T> ma(len, mis[k][1]), va(len, mis[k][0]);
      qtest::Rng rng(seed + 100 + len);
      std::vector<T> wantM = rng.vec<T>(len, -5, 5), wantV = rng.vec<T>(len, 0, 5);
      for (T w : {weight, T(0)}) {
        ma.assign(wantM);
        va.assign(wantV);
        qelStatus st;
        if constexpr (sizeof(T) == 4)
          st = qelsMeanVarAcc_32f(d.s.data(), d.m.data(), ma.data(), va.data(), len, w);
        else
          st = qelsMeanVarAcc_64f(d.s.data(), d.m.data(), ma.data(), va.data(), len, w);
        ASSERT_EQ(st, qelStatusOk);
        std::vector<T> m2 = wantM, v2 = wantV;
        qref::meanVarAcc(d.s.data(), d.m.data(), m2.data(), v2.data(), len, w);
        EXPECT_TRUE(qtest::sameArrays(ma.data(), m2.data(), len));
        EXPECT_TRUE(qtest::sameArrays(va.data(), v2.data(), len));
        if (w == T(0)) EXPECT_TRUE(qtest::sameArrays(ma.data(), wantM.data(), len));
        EXPECT_TRUE(ma.guardsIntact() && va.guardsIntact());
      }
    }
}

TEST(SingleScoring, MeanVarAccMatchesReferenceOnAnyAlignment) {
  checkMeanVarAcc<float>({{0, 0}, {4, 0}, {0, 8}, {12, 4}}, 0.7f, 700);
  checkMeanVarAcc<double>({{0, 0}, {8, 0}, {0, 8}, {8, 8}}, 1.3, 900);
}

// ---- argument checks

// Each member with one fault or two at once: the pointers are looked at
// before the length, and (block members) the length before the matrix
// order. The result or the accumulators stay untouched.
TEST(SingleScoring, ArgumentChecksComeInOrderAndWriteNothing) {
  Inputs<float> f(8, 0, 0, 0, 1);
  Inputs<double> d(8, 0, 0, 0, 2);
  ASSERT_EQ(f.sizes, std::vector<int>({5, 2, 1}));
  Out r;
  Guarded<double> acc(8), acc2(8);
  for (const Member& mb : members()) {
    if (mb.kernel) continue;
    SCOPED_TRACE(mb.name);
    void* r1 = mb.shape == Shape::Accumulate ? acc.data() : r.at(mb);
    const Args base = mb.f64 ? argsOf(mb, d, r1, acc2.data()) : argsOf(mb, f, r1, acc2.data());
    const bool block = mb.shape == Shape::Block;
    auto call = [&](int nullAt, int len) {
      Args a = base;
      if (nullAt >= 0) a[nullAt] = nullptr;
      return mb.call(a, len, 1.0);
    };
    for (int k = 0; k < mb.pointers(); ++k) {
      EXPECT_EQ(call(k, 8), qelStatusNullPtr) << "null pointer " << k;
      EXPECT_EQ(call(k, 0), qelStatusNullPtr) << "null pointer " << k << " and len 0";
      if (block) EXPECT_EQ(call(k, 5), qelStatusNullPtr) << "null " << k << ", wrong order";
    }
    EXPECT_EQ(call(-1, 0), qelStatusSize);
    EXPECT_EQ(call(-1, -1), qelStatusSize);
    if (block) {
      EXPECT_EQ(call(-1, 7), qelStatusSize) << "len below the matrix order";
      EXPECT_EQ(call(-1, 9), qelStatusSize) << "len above the matrix order";
    }
    EXPECT_TRUE(r.f.untouched() && r.d.untouched() && acc.untouched() && acc2.untouched());
  }
}

// ---- special values

// Observation on the mean: a score is exactly val, a distance exactly 0.
TEST(SingleScoring, ObservationEqualToMeanGivesExactlyTheConstant) {
  for (int len : {1, 7, 16, 39, 100, 150}) {
    Inputs<float> f(len, 0, 0, 0, 11);
    Inputs<double> d(len, 0, 0, 0, 12);
    f.s.assign(f.m.vec());
    d.s.assign(d.m.vec());
    for (const Member& mb : members()) {
      if (mb.shape == Shape::Accumulate) continue;
      Out r;
      const double val = -123.375;
      ASSERT_EQ(run(mb, f, d, len, val, r.at(mb)), qelStatusOk) << mb.name;
      EXPECT_EQ(r.value(mb), mb.shape == Shape::Distance ? 0.0 : val) << mb.name << ", len " << len;
    }
  }
}

// The data are not examined: a NaN anywhere, the tail included, reaches the
// result; so does an infinity (a score of -inf, a distance of +inf).
TEST(SingleScoring, NanAndInfinityFlowThrough) {
  for (int len : {1, 3, 8, 13, 16, 31, 64})
    for (int at : {0, len / 2, len - 1})
      for (double x : {std::numeric_limits<double>::quiet_NaN(), HUGE_VAL}) {
        Inputs<float> f(len, 0, 0, 0, 31);
        Inputs<double> d(len, 0, 0, 0, 32);
        f.s[at] = static_cast<float>(x);
        d.s[at] = x;
        for (const Member& mb : members()) {
          // Cross terms of a block form meet +inf and -inf.
          if (mb.shape == Shape::Accumulate || mb.directVar() ||
              (mb.shape == Shape::Block && !std::isnan(x)))
            continue;
          Out r;
          ASSERT_EQ(run(mb, f, d, len, 0, r.at(mb)), qelStatusOk) << mb.name;
          const double got = r.value(mb);
          if (std::isnan(x))
            EXPECT_TRUE(std::isnan(got)) << mb.name << ", len " << len << ", at " << at;
          else
            EXPECT_EQ(got, mb.shape == Shape::Distance ? x : -x) << mb.name << ", len " << len;
        }
      }
}

// A zero variance: the single member warns and scores from the infinite
// inverse, the mixed member warns and leaves the result alone, the double
// member divides in its kernel and does not warn.
TEST(SingleScoring, ZeroVarianceInDirectVar) {
  for (int len : {1, 5, 16, 39})
    for (int at : {0, len - 1}) {
      SCOPED_TRACE(::testing::Message() << "len " << len << ", zero at " << at);
      Inputs<float> f(len, 0, 4, 0, 21);
      Inputs<double> d(len, 0, 8, 0, 22);
      f.v[at] = 0.0f;
      d.v[at] = 0.0;
      Guarded<float> r32(1);
      Guarded<double> r64(1);
      const float* s = f.s.data();
      EXPECT_EQ(qelsLogGaussSingle_DirectVar_32f(s, f.m.data(), f.v.data(), len, r32.data(), 3),
                qelStatusWarnDivZero);
      EXPECT_EQ(qtest::bits(r32[0]), qtest::bits(qelConstantOfINF_NEG_32f));
      EXPECT_EQ(qelsLogGaussSingle_DirectVar_32f64f(s, f.m.data(), f.v.data(), len, r64.data(), 3),
                qelStatusWarnDivZero);
      EXPECT_TRUE(r64.untouched());
      EXPECT_EQ(
          qelsLogGaussSingle_DirectVar_64f(d.s.data(), d.m.data(), d.v.data(), len, r64.data(), 3),
          qelStatusOk);
      EXPECT_TRUE(std::isinf(r64[0]) && r64[0] < 0);
      // With the observation on the mean there, 0 times infinity is NaN.
      f.s[at] = f.m[at];
      EXPECT_EQ(qelsLogGaussSingle_DirectVar_32f(s, f.m.data(), f.v.data(), len, r32.data(), 3),
                qelStatusWarnDivZero);
      EXPECT_TRUE(std::isnan(r32[0]));
    }
}

// ---- allocation

// DirectVar_32f always allocates; the block-diagonal members from order 112
// on. A failed allocation gives -9, the result untouched, nothing leaked;
// with memory, each call returns exactly the scratch it took.
TEST(SingleScoring, FailedAllocationReturnsMemAllocAndLeaksNothing) {
  for (int len : {1, 13, 111, 112, 200}) {
    SCOPED_TRACE(len);
    Inputs<float> f(len, 0, 0, 0, 51);
    Inputs<double> d(len, 0, 0, 0, 52);
    const std::vector<int> sizes = {len};
    f.block = qblk::build(sizes, qblk::symmetricRows<float>(sizes, 53));
    d.block = qblk::build(sizes, qblk::symmetricRows<double>(sizes, 54));
    const qelStatus blockWant = len >= 112 ? qelStatusMemAlloc : qelStatusOk;
    for (long successes : {0, 1})
      for (const Member& mb : members()) {
        if (mb.shape != Shape::Block && mb.name != "DirectVar_32f") continue;
        qtest::FailingAllocator allocator(successes);
        Out r;
        const qelStatus want = successes > 0              ? qelStatusOk
                               : mb.shape == Shape::Block ? blockWant
                                                          : qelStatusMemAlloc;
        EXPECT_EQ(run(mb, f, d, len, 1, r.at(mb)), want) << mb.name;
        if (want != qelStatusOk) EXPECT_TRUE(r.f.untouched() && r.d.untouched()) << mb.name;
        EXPECT_TRUE(allocator.nothingLeaked()) << mb.name;
      }
  }
}

}  // namespace
