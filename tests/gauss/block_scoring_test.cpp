// Block scores: every member against the scalar reference of the path its
// wrapper must take (bit for bit), over every height class and width class,
// in aligned and misaligned layouts, so that every kernel the wrappers choose
// runs (the 16-byte twins of the 256-bit kernels are held to them bit for bit
// in wide_scoring_test); argument checks with canary buffers; NaN.
#include <cmath>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "block_scoring_reference.h"
#include "frame/frame.h"
#include "gauss/gauss.h"
#include "log_add_reference.h"
#include "test_support.h"

namespace {

using namespace qtest;
namespace br = qtest::blockref;

enum class Fam { Gauss, Max, Add, Dist };
// How a wrapper chooses: which reference its rows must match.
enum class Rule {
  Kernel,        // kernels at every size
  ScalarBelow4,  // own scalar loop for width below 4
  OwnFrom1000,   // own scalar loop from height 1000
  AddBelow4,     // narrow log-adding path below width 4, chunk loop above
  AddChunk,      // chunk loop at every size
};
enum class Path { Kernel, Scalar, AddScalar, AddChunk };

template <typename T>
struct Args {
  const T* pSrc;
  int step;
  const T** ppSrc;
  const T* pMean;
  const T* pVar;
  int width;
  T* pDst;
  int height;
  T val;
};

template <typename T>
struct Member {
  const char* name;
  Fam fam;
  bool d2l;
  bool var;
  Rule rule;
  qelStatus (*call)(const Args<T>&);
  bool alignedOnly = false;  // an _Al kernel: given aligned data only
};

#define D2(f)                                                                    \
  [](const Args<T>& a) {                                                         \
    return f(a.pSrc, a.step, a.pMean, a.pVar, a.width, a.pDst, a.height, a.val); \
  }
#define D2I(f) \
  [](const Args<T>& a) { return f(a.pSrc, a.step, a.pMean, a.width, a.pDst, a.height, a.val); }
#define D2L(f) \
  [](const Args<T>& a) { return f(a.ppSrc, a.pMean, a.pVar, a.width, a.pDst, a.height, a.val); }
#define D2LI(f) \
  [](const Args<T>& a) { return f(a.ppSrc, a.pMean, a.width, a.pDst, a.height, a.val); }
#define DD2(f) \
  [](const Args<T>& a) { return f(a.pSrc, a.step, a.pMean, a.pVar, a.width, a.pDst, a.height); }
#define DD2L(f) \
  [](const Args<T>& a) { return f(a.ppSrc, a.pMean, a.pVar, a.width, a.pDst, a.height); }

// The fourteen members of one type. `g` is the rule of the scoring forms
// but the identity-variance row-pointer one, `mi` that of the
// identity-variance maxima, `ad` that of the strided log-adding forms.
#define MEMBERS(TY, g, mi, ad)                                                                       \
  {"LogGauss_" #TY "_D2", Gauss, false, true, g, D2(qelsLogGauss_##TY##_D2)},                        \
      {"LogGauss_" #TY "_D2L", Gauss, true, true, g, D2L(qelsLogGauss_##TY##_D2L)},                  \
      {"LogGauss_IdVar_" #TY "_D2", Gauss, false, false, g, D2I(qelsLogGauss_IdVar_##TY##_D2)},      \
      {"LogGauss_IdVar_" #TY "_D2L",       Gauss, true, false, Kernel,                               \
       D2LI(qelsLogGauss_IdVar_##TY##_D2L)},                                                         \
      {"LogGaussMax_" #TY "_D2", Max, false, true, Kernel, D2(qelsLogGaussMax_##TY##_D2)},           \
      {"LogGaussMax_" #TY "_D2L", Max, true, true, Kernel, D2L(qelsLogGaussMax_##TY##_D2L)},         \
      {"LogGaussMax_IdVar_" #TY "_D2", Max, false, false, mi, D2I(qelsLogGaussMax_IdVar_##TY##_D2)}, \
      {"LogGaussMax_IdVar_" #TY "_D2L",       Max, true, false, mi,                                  \
       D2LI(qelsLogGaussMax_IdVar_##TY##_D2L)},                                                      \
      {"LogGaussAdd_" #TY "_D2", Add, false, true, ad, D2(qelsLogGaussAdd_##TY##_D2)},               \
      {"LogGaussAdd_" #TY "_D2L", Add, true, true, AddChunk, D2L(qelsLogGaussAdd_##TY##_D2L)},       \
      {"LogGaussAdd_IdVar_" #TY "_D2", Add, false, false, ad, D2I(qelsLogGaussAdd_IdVar_##TY##_D2)}, \
      {"LogGaussAdd_IdVar_" #TY "_D2L",       Add, true, false, AddChunk,                            \
       D2LI(qelsLogGaussAdd_IdVar_##TY##_D2L)},                                                      \
      {"MahDist_" #TY "_D2", Dist, false, true, Kernel, DD2(qelsMahDist_##TY##_D2)}, {               \
    "MahDist_" #TY "_D2L", Dist, true, true, Kernel, DD2L(qelsMahDist_##TY##_D2L)                    \
  }

template <typename T>
std::vector<Member<T>> members() {
  using enum Fam;
  using enum Rule;
  if constexpr (sizeof(T) == 4)
    return {MEMBERS(32f, ScalarBelow4, Kernel, AddBelow4)};
  else
    return {MEMBERS(64f, Kernel, OwnFrom1000, AddChunk)};
}

// Every named kernel, called directly: some paths of theirs (the narrow
// widths of the scoring kernels) no wrapper takes.
#define K(...)                        \
  [](const Args<T>& a) -> qelStatus { \
    __VA_ARGS__;                      \
    return qelStatusOk;               \
  }
#define KD2(f) K(f(a.pSrc, a.step, a.pMean, a.pVar, a.width, a.pDst, a.height, &a.val))
#define KD2I(f) K(f(a.pSrc, a.step, a.pMean, a.width, a.pDst, a.height, &a.val))
#define KD2L(f) K(f(a.ppSrc, a.pMean, a.pVar, a.width, a.pDst, a.height, &a.val))
#define KD2LI(f) K(f(a.ppSrc, a.pMean, a.width, a.pDst, a.height, &a.val))
#define KDD2(f) K(f(a.pSrc, a.step, a.pMean, a.pVar, a.width, a.pDst, a.height))
#define KDD2L(f) K(f(a.ppSrc, a.pMean, a.pVar, a.width, a.pDst, a.height))
#define KPAIR(fam, d2l, var, call, f) \
  {#f, fam, d2l, var, Kernel, call(f)}, { #f "_Al", fam, d2l, var, Kernel, call(f##_Al), true }
#define KERNELS(TY, G)                                                   \
  KPAIR(Gauss, false, true, KD2, G##_##TY##_D2_M7),                      \
      KPAIR(Gauss, false, false, KD2I, qelsLGauss_IdVar_##TY##_D2_M7),   \
      KPAIR(Max, false, true, KD2, qelsLGaussMax_##TY##_D2_M7),          \
      KPAIR(Max, false, false, KD2I, qelsLGaussMax_IdVar_##TY##_D2_M7),  \
      KPAIR(Dist, false, true, KDD2, sMahDist_##TY##_D2_M7),             \
      KPAIR(Gauss, true, true, KD2L, G##_##TY##_D2L_M7),                 \
      KPAIR(Gauss, true, false, KD2LI, qelsLGauss_IdVar_##TY##_D2L_M7),  \
      KPAIR(Max, true, true, KD2L, qelsLGaussMax_##TY##_D2L_M7),         \
      KPAIR(Max, true, false, KD2LI, qelsLGaussMax_IdVar_##TY##_D2L_M7), \
      KPAIR(Dist, true, true, KDD2L, sMahDist_##TY##_D2L_M7)

template <typename T>
std::vector<Member<T>> kernels() {
  using enum Fam;
  using enum Rule;
  if constexpr (sizeof(T) == 4)
    return {KERNELS(32f, qelsLogGauss)};
  else
    return {KERNELS(64f, qelsLGauss)};
}

// ------------------------------------------------------------ data and layouts

constexpr int kHeights[] = {1, 2, 3, 4, 5, 127, 128, 129, 999, 1000};
constexpr int kWidths[] = {1, 2, 3, 4, 13, 36, 37, 39, 40, 64};

// One problem: rows, Gaussian, constant and the prior destination.
template <typename T>
struct Problem {
  int width, height;
  std::vector<std::vector<T>> rows;
  std::vector<T> mean, var, prior;
  T val;
};

template <typename T>
T logZero() {
  if constexpr (sizeof(T) == 4)
    return LOGZERO_F;
  else
    return LOGZERO;
}

// The prior destination lies within +-20 of the kernel score (so the maxima
// and log-adds go both ways and through every polynomial segment), and every
// seventh element is log zero.
template <typename T>
Problem<T> makeProblem(int width, int height, uint32_t seed) {
  Rng rng(seed);
  Problem<T> p{width, height, {}, rng.vec<T>(width, -2, 2), rng.vec<T>(width, 0.25, 4), {}, 0};
  p.val = static_cast<T>(rng.uniformD(-30, 30));
  for (int r = 0; r < height; ++r) {
    p.rows.push_back(rng.vec<T>(width, -2, 2));
    const T s = br::kernelScore(p.rows[r].data(), p.mean.data(), p.var.data(), width, p.val);
    p.prior.push_back(r % 7 == 3 ? logZero<T>() : s + static_cast<T>(rng.uniformD(-20, 20)));
  }
  return p;
}

// Aligned: rows, tables and destination on 16 bytes, stride a multiple of 4.
// The others break one thing each: source and destination one element off,
// an odd stride, a packed stride (equal to the width), mean and variance one
// element off, the destination alone one element off; for row pointers, one
// row off among aligned ones, the tables off, the destination off.
enum class Layout {
  Aligned,
  SrcDstOff,
  OddStep,
  Packed,
  TablesOff,
  DstOff,
  Rows,
  RowsOneOff,
  RowsTablesOff,
  RowsDstOff
};
constexpr Layout kD2Layouts[] = {Layout::Aligned, Layout::SrcDstOff, Layout::OddStep,
                                 Layout::Packed,  Layout::TablesOff, Layout::DstOff};
constexpr Layout kD2LLayouts[] = {Layout::Rows, Layout::RowsOneOff, Layout::RowsTablesOff,
                                  Layout::RowsDstOff};

// A problem placed in guarded memory in one layout.
template <typename T>
struct Placed {
  std::unique_ptr<Guarded<T>> src, mean, var, dst;
  std::unique_ptr<RowSet<T>> rowSet;
  std::vector<const T*> rowPtrs;
  Args<T> args{};

  Placed(const Problem<T>& p, Layout layout) {
    const int w = p.width, h = p.height;
    const size_t tOff =
        layout == Layout::TablesOff || layout == Layout::RowsTablesOff ? sizeof(T) : 0;
    const size_t sOff = layout == Layout::SrcDstOff ? sizeof(T) : 0;
    const size_t dOff =
        layout == Layout::SrcDstOff || layout == Layout::DstOff || layout == Layout::RowsDstOff
            ? sizeof(T)
            : 0;
    mean = std::make_unique<Guarded<T>>(w, tOff);
    var = std::make_unique<Guarded<T>>(w, tOff);
    dst = std::make_unique<Guarded<T>>(h, dOff);
    mean->assign(p.mean);
    var->assign(p.var);
    dst->assign(p.prior);
    int step = (w + 3) / 4 * 4;
    if (layout == Layout::OddStep) step = w + 1;
    if (layout == Layout::Packed) step = w;
    if (layout >= Layout::Rows) {
      rowSet = std::make_unique<RowSet<T>>(h, w, layout == Layout::RowsOneOff ? h / 2 : -1);
      for (int r = 0; r < h; ++r) {
        rowSet->row(r).assign(p.rows[r]);
        rowPtrs.push_back(rowSet->row(r).data());
      }
    } else {
      src = std::make_unique<Guarded<T>>(static_cast<size_t>(h) * step, sOff);
      for (int r = 0; r < h; ++r)
        for (int c = 0; c < w; ++c) (*src)[static_cast<size_t>(r) * step + c] = p.rows[r][c];
    }
    args = {src ? src->data() : nullptr,
            step,
            rowPtrs.data(),
            mean->data(),
            var->data(),
            w,
            dst->data(),
            h,
            p.val};
  }
  bool guardsIntact() const {
    return mean->guardsIntact() && var->guardsIntact() && dst->guardsIntact() &&
           (!src || src->guardsIntact()) && (!rowSet || rowSet->guardsIntact());
  }
};

// ------------------------------------------------------------ expectations

template <typename T>
Path pathOf(Rule rule, int width, int height) {
  switch (rule) {
    case Rule::ScalarBelow4:
      return width < 4 ? Path::Scalar : Path::Kernel;
    case Rule::OwnFrom1000:
      return height >= 1000 ? Path::Scalar : Path::Kernel;
    case Rule::AddBelow4:
      return width < 4 ? Path::AddScalar : Path::AddChunk;
    case Rule::AddChunk:
      return Path::AddChunk;
    default:
      return Path::Kernel;
  }
}

// The destination a member must leave, taking `path`.
template <typename T>
std::vector<T> expected(const Problem<T>& p, Fam fam, bool var, Path path) {
  const T* v = var ? p.var.data() : nullptr;
  std::vector<T> out(p.height);
  for (int r = 0; r < p.height; ++r) {
    const T* x = p.rows[r].data();
    if (fam == Fam::Dist) {
      out[r] = br::kernelSum(x, p.mean.data(), v, p.width);
      continue;
    }
    const T score = path == Path::Scalar || path == Path::AddScalar
                        ? br::scalarScore(x, p.mean.data(), v, p.width, p.val)
                        : br::kernelScore(x, p.mean.data(), v, p.width, p.val);
    if (fam == Fam::Gauss) out[r] = score;
    if (fam == Fam::Max) out[r] = br::maxOf(score, p.prior[r]);
    if (fam == Fam::Add) {
      out[r] = score;
      if constexpr (sizeof(T) == 4)
        if (path == Path::AddScalar) out[r] = br::addScalarPath(score, p.prior[r]);
    }
  }
  if (fam == Fam::Add && path == Path::AddChunk) {
    // The score buffer is folded into the destination chunk by chunk.
    std::vector<T> acc = p.prior;
    for (int off = 0; off < p.height; off += 128) {
      const size_t n = std::min(128, p.height - off);
      if constexpr (sizeof(T) == 4)
        refLogAddVec32f(out.data() + off, acc.data() + off, n);
      else
        refLogAddVec64f(out.data() + off, acc.data() + off, n);
    }
    out = acc;
  }
  return out;
}

std::string where(const char* name, int w, int h, Layout l) {
  return std::string(name) + " width " + std::to_string(w) + " height " + std::to_string(h) +
         " layout " + std::to_string(static_cast<int>(l));
}

// ------------------------------------------------------------ tests

template <typename T>
void checkAllMembers() {
  std::vector<Member<T>> all = members<T>(), ks = kernels<T>();
  all.insert(all.end(), ks.begin(), ks.end());
  for (const Member<T>& m : all) {
    bool discriminated = m.rule == Rule::Kernel || m.rule == Rule::AddChunk;
    for (int h : kHeights)
      for (int w : kWidths) {
        const Problem<T> p = makeProblem<T>(w, h, 1000u * w + h);
        const Path path = pathOf<T>(m.rule, w, h);
        const std::vector<T> want = expected(p, m.fam, m.var, path);
        // The data must tell the chosen path from the other one.
        const Path other = path == Path::Kernel      ? Path::Scalar
                           : path == Path::Scalar    ? Path::Kernel
                           : path == Path::AddScalar ? Path::AddChunk
                                                     : Path::AddScalar;
        if (!discriminated && !sameArrays(expected(p, m.fam, m.var, other).data(), want.data(), h))
          discriminated = true;
        std::vector<Layout> layouts(m.d2l ? std::begin(kD2LLayouts) : std::begin(kD2Layouts),
                                    m.d2l ? std::end(kD2LLayouts) : std::end(kD2Layouts));
        if (m.alignedOnly) layouts.resize(1);  // Aligned or Rows
        for (Layout l : layouts) {
          Placed<T> d(p, l);
          ASSERT_EQ(m.call(d.args), qelStatusOk) << where(m.name, w, h, l);
          ASSERT_TRUE(sameArrays(d.dst->data(), want.data(), h)) << where(m.name, w, h, l);
          ASSERT_TRUE(d.guardsIntact()) << where(m.name, w, h, l);
        }
      }
    EXPECT_TRUE(discriminated) << m.name << ": no case told its two paths apart";
  }
}

TEST(BlockScoring, EveryMemberAndKernelFollowsItsPath32f) { checkAllMembers<float>(); }
TEST(BlockScoring, EveryMemberAndKernelFollowsItsPath64f) { checkAllMembers<double>(); }

// The references against the formula in extended precision. A score sums
// `width` products, each within 4 roundings of its exact value, in a chain of
// at most width - 1 additions, then one subtraction: the error stays below
// (width + 6) units of 2^-24 (2^-53) of |val| + S/2. The distance alone: of S.
template <typename T>
void checkReferencesAgainstFormula() {
  const long double u = std::numeric_limits<T>::epsilon() / 2;
  for (int w : {1, 2, 3, 4, 5, 13, 36, 37, 39, 40, 64, 200}) {
    const Problem<T> p = makeProblem<T>(w, 64, 99u + w);
    for (int r = 0; r < p.height; ++r)
      for (const T* v : {p.var.data(), static_cast<const T*>(nullptr)}) {
        const T* x = p.rows[r].data();
        const long double s = br::exactSum(x, p.mean.data(), v, w);
        const long double score = p.val - s / 2;
        const long double bound =
            (w + 6) * u * (std::fabs(static_cast<long double>(p.val)) + s / 2);
        EXPECT_LE(std::fabs(br::kernelScore(x, p.mean.data(), v, w, p.val) - score), bound) << w;
        EXPECT_LE(std::fabs(br::scalarScore(x, p.mean.data(), v, w, p.val) - score), bound) << w;
        EXPECT_LE(std::fabs(br::kernelSum(x, p.mean.data(), v, w) - s), (w + 4) * u * s) << w;
      }
  }
}

TEST(BlockScoring, ReferencesAgreeWithTheFormula) {
  checkReferencesAgainstFormula<float>();
  checkReferencesAgainstFormula<double>();
}

// The narrow log-adding path against log(exp(a) + exp(b)) in double: the
// polynomial is within 4.6e-9, the difference is rounded once in single
// (at most |d| 2^-24, which f' <= 1 passes on), the result once more.
TEST(BlockScoring, NarrowLogAddPathAgreesWithTheFormula) {
  Rng rng(5);
  for (int i = 0; i < 20000; ++i) {
    const float a = rng.uniform(-60, 10);
    const float b = i % 3 == 0 ? a + rng.uniform(-0.5f, 0.5f) : rng.uniform(-60, 10);
    const double hi = std::max<double>(a, b), lo = std::min<double>(a, b);
    const double exact = hi + std::log1p(std::exp(lo - hi));
    const double bound = 4.6e-9 + 0x1p-24 * (hi - lo) + 0x1p-24 * std::fabs(exact);
    const double got = br::addScalarPath(a, b);
    EXPECT_LE(std::fabs(got - exact),
              lo - hi < -15.3195879547406 ? std::exp(lo - hi) + bound : bound)
        << a << " " << b;
  }
  // Below log zero the smaller term is ignored and the result rises to it.
  EXPECT_EQ(br::addScalarPath(-5000000.0f, -6000000.0f), -4500000.0f);
  EXPECT_EQ(br::addScalarPath(-100.0f, LOGZERO_F), -100.0f);
}

// ------------------------------------------------------------ argument checks

template <typename T>
void checkArgumentOrder() {
  const Problem<T> p = makeProblem<T>(8, 6, 3);
  for (const Member<T>& m : members<T>()) {
    struct Fault {
      const char* what;
      int width, step, height;
      int nullArg;  // 0 none, 1 source, 2 mean, 3 var, 4 dst, 5 all
      qelStatus want;
    };
    std::vector<Fault> faults = {
        {"null source", 8, 8, 6, 1, qelStatusNullPtr},
        {"null mean", 8, 8, 6, 2, qelStatusNullPtr},
        {"null dst", 8, 8, 6, 4, qelStatusNullPtr},
        {"null and width 0", 0, 8, 6, 1, qelStatusNullPtr},
        {"null and height 0", 8, 8, 0, 2, qelStatusNullPtr},
        {"width 0", 0, 8, 6, 0, qelStatusSize},
        {"height 0", 8, 8, 0, 0, qelStatusSize},
        {"height -1", 8, 8, -1, 0, qelStatusSize},
        {"width -3", -3, 8, 6, 0, qelStatusSize},
    };
    if (m.var) faults.push_back({"null var", 8, 8, 6, 3, qelStatusNullPtr});
    if (!m.d2l) {
      faults.push_back({"width above step", 9, 8, 6, 0, qelStatusStride});
      faults.push_back({"width above step, all null", 9, 8, 6, 5, qelStatusStride});
      faults.push_back({"width above step, height 0", 9, 8, 0, 0, qelStatusStride});
      faults.push_back({"width above step, null dst", 9, 8, 6, 4, qelStatusStride});
      faults.push_back({"step 0, width 0", 0, 0, 6, 0, qelStatusSize});
      faults.push_back({"width above negative step", 1, -4, 6, 1, qelStatusStride});
    }
    for (const Fault& f : faults) {
      Placed<T> d(p, m.d2l ? Layout::Rows : Layout::Aligned);
      d.dst->poison();
      Args<T> a = d.args;
      a.width = f.width;
      a.step = f.step;
      a.height = f.height;
      if (f.nullArg == 1 || f.nullArg == 5) a.pSrc = nullptr, a.ppSrc = nullptr;
      if (f.nullArg == 2 || f.nullArg == 5) a.pMean = nullptr;
      if (f.nullArg == 3 || f.nullArg == 5) a.pVar = nullptr;
      if (f.nullArg == 4 || f.nullArg == 5) a.pDst = nullptr;
      EXPECT_EQ(m.call(a), f.want) << m.name << ": " << f.what;
      EXPECT_TRUE(d.dst->untouched()) << m.name << ": " << f.what;
    }
  }
}

TEST(BlockScoring, ArgumentChecksInOrderAndNothingWritten) {
  checkArgumentOrder<float>();
  checkArgumentOrder<double>();
}

// ------------------------------------------------------------ behaviour

// A NaN score leaves the maximum where it was; a NaN destination stays NaN.
template <typename T>
void checkMaxWithNaN() {
  const T nan = std::numeric_limits<T>::quiet_NaN();
  for (const Member<T>& m : members<T>()) {
    if (m.fam != Fam::Max) continue;
    for (int h : {1, 2, 3, 4, 5, 9, 1000})
      for (int w : {3, 36, 39}) {
        Problem<T> p = makeProblem<T>(w, h, 11u * w + h);
        for (int r = 0; r < h; r += 2) p.rows[r][w / 2] = nan;  // even rows score NaN
        for (int r = 1; r < h; r += 4) p.prior[r] = nan;        // some priors are NaN
        Placed<T> d(p, m.d2l ? Layout::Rows : Layout::Aligned);
        ASSERT_EQ(m.call(d.args), qelStatusOk);
        for (int r = 0; r < h; ++r) {
          if (r % 2 == 0)
            EXPECT_TRUE(sameBits((*d.dst)[r], p.prior[r])) << m.name << " row " << r;
          else if (r % 4 == 1)
            EXPECT_TRUE(std::isnan((*d.dst)[r])) << m.name << " row " << r;
          else
            EXPECT_FALSE(std::isnan((*d.dst)[r])) << m.name << " row " << r;
        }
      }
  }
}

TEST(BlockScoring, MaxKeepsTheDestinationOnNaNScores) {
  checkMaxWithNaN<float>();
  checkMaxWithNaN<double>();
}

}  // namespace
