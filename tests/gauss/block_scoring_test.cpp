// Block scores: every member against the scalar reference of the path its
// wrapper must take (bit for bit), over every height class and width class,
// in aligned and misaligned layouts; the kernels directly; argument checks
// with canary buffers; NaN, log-zero and the documented edge cases.
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
// Kernels take the constant by address and return nothing.
#define K(expr)                       \
  [](const Args<T>& a) -> qelStatus { \
    expr;                             \
    return qelStatusOk;               \
  }
#define KD2(f) K(f(a.pSrc, a.step, a.pMean, a.pVar, a.width, a.pDst, a.height, &a.val))
#define KD2I(f) K(f(a.pSrc, a.step, a.pMean, a.width, a.pDst, a.height, &a.val))
#define KD2L(f) K(f(a.ppSrc, a.pMean, a.pVar, a.width, a.pDst, a.height, &a.val))
#define KD2LI(f) K(f(a.ppSrc, a.pMean, a.width, a.pDst, a.height, &a.val))
#define KDD2(f) K(f(a.pSrc, a.step, a.pMean, a.pVar, a.width, a.pDst, a.height))
#define KDD2L(f) K(f(a.ppSrc, a.pMean, a.pVar, a.width, a.pDst, a.height))

template <typename T>
std::vector<Member<T>> members();

template <>
std::vector<Member<float>> members<float>() {
  using T = float;
  using enum Fam;
  using enum Rule;
  return {
      {"LogGauss_32f_D2", Gauss, false, true, ScalarBelow4, D2(qelsLogGauss_32f_D2)},
      {"LogGauss_32f_D2L", Gauss, true, true, ScalarBelow4, D2L(qelsLogGauss_32f_D2L)},
      {"LogGauss_IdVar_32f_D2", Gauss, false, false, ScalarBelow4, D2I(qelsLogGauss_IdVar_32f_D2)},
      {"LogGauss_IdVar_32f_D2L", Gauss, true, false, Kernel, D2LI(qelsLogGauss_IdVar_32f_D2L)},
      {"LogGaussMax_32f_D2", Max, false, true, Kernel, D2(qelsLogGaussMax_32f_D2)},
      {"LogGaussMax_32f_D2L", Max, true, true, Kernel, D2L(qelsLogGaussMax_32f_D2L)},
      {"LogGaussMax_IdVar_32f_D2", Max, false, false, Kernel, D2I(qelsLogGaussMax_IdVar_32f_D2)},
      {"LogGaussMax_IdVar_32f_D2L", Max, true, false, Kernel, D2LI(qelsLogGaussMax_IdVar_32f_D2L)},
      {"LogGaussAdd_32f_D2", Add, false, true, AddBelow4, D2(qelsLogGaussAdd_32f_D2)},
      {"LogGaussAdd_32f_D2L", Add, true, true, AddChunk, D2L(qelsLogGaussAdd_32f_D2L)},
      {"LogGaussAdd_IdVar_32f_D2", Add, false, false, AddBelow4, D2I(qelsLogGaussAdd_IdVar_32f_D2)},
      {"LogGaussAdd_IdVar_32f_D2L", Add, true, false, AddChunk,
       D2LI(qelsLogGaussAdd_IdVar_32f_D2L)},
      {"MahDist_32f_D2", Dist, false, true, Kernel, DD2(qelsMahDist_32f_D2)},
      {"MahDist_32f_D2L", Dist, true, true, Kernel, DD2L(qelsMahDist_32f_D2L)},
  };
}

template <>
std::vector<Member<double>> members<double>() {
  using T = double;
  using enum Fam;
  using enum Rule;
  return {
      {"LogGauss_64f_D2", Gauss, false, true, Kernel, D2(qelsLogGauss_64f_D2)},
      {"LogGauss_64f_D2L", Gauss, true, true, Kernel, D2L(qelsLogGauss_64f_D2L)},
      {"LogGauss_IdVar_64f_D2", Gauss, false, false, Kernel, D2I(qelsLogGauss_IdVar_64f_D2)},
      {"LogGauss_IdVar_64f_D2L", Gauss, true, false, Kernel, D2LI(qelsLogGauss_IdVar_64f_D2L)},
      {"LogGaussMax_64f_D2", Max, false, true, Kernel, D2(qelsLogGaussMax_64f_D2)},
      {"LogGaussMax_64f_D2L", Max, true, true, Kernel, D2L(qelsLogGaussMax_64f_D2L)},
      {"LogGaussMax_IdVar_64f_D2", Max, false, false, OwnFrom1000,
       D2I(qelsLogGaussMax_IdVar_64f_D2)},
      {"LogGaussMax_IdVar_64f_D2L", Max, true, false, OwnFrom1000,
       D2LI(qelsLogGaussMax_IdVar_64f_D2L)},
      {"LogGaussAdd_64f_D2", Add, false, true, AddChunk, D2(qelsLogGaussAdd_64f_D2)},
      {"LogGaussAdd_64f_D2L", Add, true, true, AddChunk, D2L(qelsLogGaussAdd_64f_D2L)},
      {"LogGaussAdd_IdVar_64f_D2", Add, false, false, AddChunk, D2I(qelsLogGaussAdd_IdVar_64f_D2)},
      {"LogGaussAdd_IdVar_64f_D2L", Add, true, false, AddChunk,
       D2LI(qelsLogGaussAdd_IdVar_64f_D2L)},
      {"MahDist_64f_D2", Dist, false, true, Kernel, DD2(qelsMahDist_64f_D2)},
      {"MahDist_64f_D2L", Dist, true, true, Kernel, DD2L(qelsMahDist_64f_D2L)},
  };
}

// Every named kernel; `aligned` marks the _Al twins, which are only given
// aligned data.
template <typename T>
struct KernelEntry {
  const char* name;
  Fam fam;
  bool d2l;
  bool var;
  bool aligned;
  qelStatus (*call)(const Args<T>&);
};

#define KERNELS(TY, G, GI, M, MI, S, L)                                                   \
  {#G "_" #TY "_D2_M7", Gauss, false, true, false, KD2(G##_##TY##_D2_M7)},                \
      {#G "_" #TY "_D2_M7_Al", Gauss, false, true, true, KD2(G##_##TY##_D2_M7_Al)},       \
      {#GI "_" #TY "_D2_M7", Gauss, false, false, false, KD2I(GI##_##TY##_D2_M7)},        \
      {#GI "_" #TY "_D2_M7_Al", Gauss, false, false, true, KD2I(GI##_##TY##_D2_M7_Al)},   \
      {#M "_" #TY "_D2_M7", Max, false, true, false, KD2(M##_##TY##_D2_M7)},              \
      {#M "_" #TY "_D2_M7_Al", Max, false, true, true, KD2(M##_##TY##_D2_M7_Al)},         \
      {#MI "_" #TY "_D2_M7", Max, false, false, false, KD2I(MI##_##TY##_D2_M7)},          \
      {#MI "_" #TY "_D2_M7_Al", Max, false, false, true, KD2I(MI##_##TY##_D2_M7_Al)},     \
      {#S "_" #TY "_D2_M7", Dist, false, true, false, KDD2(S##_##TY##_D2_M7)},            \
      {#S "_" #TY "_D2_M7_Al", Dist, false, true, true, KDD2(S##_##TY##_D2_M7_Al)},       \
      {#L "_" #TY "_D2L_M7", Gauss, true, true, false, KD2L(L##_##TY##_D2L_M7)},          \
      {#L "_" #TY "_D2L_M7_Al", Gauss, true, true, true, KD2L(L##_##TY##_D2L_M7_Al)},     \
      {#GI "_" #TY "_D2L_M7", Gauss, true, false, false, KD2LI(GI##_##TY##_D2L_M7)},      \
      {#GI "_" #TY "_D2L_M7_Al", Gauss, true, false, true, KD2LI(GI##_##TY##_D2L_M7_Al)}, \
      {#M "_" #TY "_D2L_M7", Max, true, true, false, KD2L(M##_##TY##_D2L_M7)},            \
      {#M "_" #TY "_D2L_M7_Al", Max, true, true, true, KD2L(M##_##TY##_D2L_M7_Al)},       \
      {#MI "_" #TY "_D2L_M7", Max, true, false, false, KD2LI(MI##_##TY##_D2L_M7)},        \
      {#MI "_" #TY "_D2L_M7_Al", Max, true, false, true, KD2LI(MI##_##TY##_D2L_M7_Al)},   \
      {#S "_" #TY "_D2L_M7", Dist, true, true, false, KDD2L(S##_##TY##_D2L_M7)}, {        \
#S "_" #TY "_D2L_M7_Al", Dist, true, true, true, KDD2L(S##_##TY##_D2L_M7_Al)          \
  }

template <typename T>
std::vector<KernelEntry<T>> kernels();
template <>
std::vector<KernelEntry<float>> kernels<float>() {
  using T = float;
  using enum Fam;
  return {KERNELS(32f, qelsLogGauss, qelsLGauss_IdVar, qelsLGaussMax, qelsLGaussMax_IdVar, sMahDist,
                  qelsLogGauss)};
}
template <>
std::vector<KernelEntry<double>> kernels<double>() {
  using T = double;
  using enum Fam;
  return {KERNELS(64f, qelsLGauss, qelsLGauss_IdVar, qelsLGaussMax, qelsLGaussMax_IdVar, sMahDist,
                  qelsLGauss)};
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
  for (const Member<T>& m : members<T>()) {
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
        for (Layout l : m.d2l ? std::vector<Layout>(std::begin(kD2LLayouts), std::end(kD2LLayouts))
                              : std::vector<Layout>(std::begin(kD2Layouts), std::end(kD2Layouts))) {
          Placed<T> d(p, l);
          ASSERT_EQ(m.call(d.args), qelStatusOk) << where(m.name, w, h, l);
          ASSERT_TRUE(sameArrays(d.dst->data(), want.data(), h)) << where(m.name, w, h, l);
          ASSERT_TRUE(d.guardsIntact()) << where(m.name, w, h, l);
        }
      }
    EXPECT_TRUE(discriminated) << m.name << ": no case told its two paths apart";
  }
}

TEST(BlockScoring, EveryMemberFollowsItsPath32f) { checkAllMembers<float>(); }
TEST(BlockScoring, EveryMemberFollowsItsPath64f) { checkAllMembers<double>(); }

template <typename T>
void checkAllKernels() {
  const int heights[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 129};
  const int widths[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 11, 12, 13, 16, 35, 36, 37, 39, 40, 41, 64};
  for (const KernelEntry<T>& k : kernels<T>())
    for (int h : heights)
      for (int w : widths) {
        const Problem<T> p = makeProblem<T>(w, h, 7u * w + 131u * h);
        const std::vector<T> want = expected(p, k.fam, k.var, Path::Kernel);
        std::vector<Layout> layouts;
        if (k.d2l)
          layouts = {Layout::Rows};
        else
          layouts = {Layout::Aligned};
        if (!k.aligned)
          layouts.insert(
              layouts.end(),
              k.d2l ? std::initializer_list<Layout>{Layout::RowsOneOff, Layout::RowsTablesOff}
                    : std::initializer_list<Layout>{Layout::SrcDstOff, Layout::OddStep,
                                                    Layout::TablesOff});
        for (Layout l : layouts) {
          Placed<T> d(p, l);
          k.call(d.args);
          ASSERT_TRUE(sameArrays(d.dst->data(), want.data(), h)) << where(k.name, w, h, l);
          ASSERT_TRUE(d.guardsIntact()) << where(k.name, w, h, l);
        }
      }
}

TEST(BlockScoring, EveryKernelInEveryPass32f) { checkAllKernels<float>(); }
TEST(BlockScoring, EveryKernelInEveryPass64f) { checkAllKernels<double>(); }

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

// Each row of a block scores as it does alone, bit for bit, except the double
// log-adds: a row alone is an odd last element and takes the scalar form of
// the log-add instead of the lane form. Each is within 3.2e-15 of the function
// plus the rounding of its 22-step evaluation, at most 44 u sum|c_k||y|^k
// (u = 2^-53), which at the far end of the third segment (|y| near 14)
// reaches some 1e-14; then a few roundings of the result.
double twoFormsBound(const Problem<double>& p, bool var, int r, double want) {
  const double s = br::kernelScore(p.rows[r].data(), p.mean.data(), var ? p.var.data() : nullptr,
                                   p.width, p.val);
  const double d = std::min(s, p.prior[r]) - std::max(s, p.prior[r]);
  double evaluation = 0;
  if (d >= logref::kMinLogExp) {
    const int seg = logref::segment(d);
    const double y = std::fabs(d - logref::kBorder[seg]);
    double sum = 0;
    for (int k = 0; k < 22; ++k) sum = sum * y + std::fabs(logref::kP[seg][k]);
    evaluation = 44 * 0x1p-53 * sum;
  }
  return 2 * (3.2e-15 + evaluation) + 4 * 0x1p-53 * std::fabs(want);
}
template <typename T>
void checkRowsAlone() {
  for (const Member<T>& m : members<T>())
    for (int h : {1, 3, 4, 5, 129})
      for (int w : {3, 4, 13, 39}) {
        const Problem<T> p = makeProblem<T>(w, h, 17u * h + w);
        Placed<T> block(p, m.d2l ? Layout::RowsOneOff : Layout::OddStep);
        ASSERT_EQ(m.call(block.args), qelStatusOk);
        for (int r = 0; r < h; ++r) {
          Problem<T> one{w, 1, {p.rows[r]}, p.mean, p.var, {p.prior[r]}, p.val};
          Placed<T> alone(one, m.d2l ? Layout::Rows : Layout::Aligned);
          ASSERT_EQ(m.call(alone.args), qelStatusOk);
          const T got = (*block.dst)[r], want = (*alone.dst)[0];
          if constexpr (sizeof(T) == 8)
            if (m.fam == Fam::Add) {
              EXPECT_NEAR(got, want, twoFormsBound(p, m.var, r, want)) << m.name << " row " << r;
              continue;
            }
          EXPECT_TRUE(sameBits(got, want)) << m.name << " row " << r << " of " << h;
        }
      }
}

TEST(BlockScoring, EachRowScoresAsItDoesAlone) {
  checkRowsAlone<float>();
  checkRowsAlone<double>();
}

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

// Log-adding into log zero gives the score itself: the smaller term is ignored.
template <typename T>
void checkAddIntoLogZero() {
  for (const Member<T>& m : members<T>()) {
    if (m.fam != Fam::Add) continue;
    for (int w : {1, 3, 4, 39})
      for (int h : {1, 5, 200}) {
        Problem<T> p = makeProblem<T>(w, h, 23u * w + h);
        for (T& x : p.prior) x = logZero<T>();
        Placed<T> d(p, m.d2l ? Layout::Rows : Layout::Aligned);
        ASSERT_EQ(m.call(d.args), qelStatusOk);
        const Path path = pathOf<T>(m.rule, w, h);
        const std::vector<T> scores =
            expected(p, Fam::Gauss, m.var, path == Path::AddScalar ? Path::Scalar : Path::Kernel);
        EXPECT_TRUE(sameArrays(d.dst->data(), scores.data(), h)) << m.name << " width " << w;
      }
  }
}

TEST(BlockScoring, AddIntoLogZeroGivesTheScore) {
  checkAddIntoLogZero<float>();
  checkAddIntoLogZero<double>();
}

// Width 3 (narrow path) and width 4 (chunk loop) both log-add: the result is
// log(exp(score) + exp(prior)) within single rounding and polynomial error.
TEST(BlockScoring, AddNarrowAndWideBothLogAdd) {
  for (int w : {3, 4}) {
    const Problem<float> p = makeProblem<float>(w, 300, 77u + w);
    Placed<float> d(p, Layout::Aligned);
    ASSERT_EQ(qelsLogGaussAdd_32f_D2(d.args.pSrc, d.args.step, d.args.pMean, d.args.pVar, w,
                                     d.args.pDst, p.height, p.val),
              qelStatusOk);
    for (int r = 0; r < p.height; ++r) {
      const double s = p.val - br::exactSum(p.rows[r].data(), p.mean.data(), p.var.data(), w) / 2;
      const double b = p.prior[r];
      const double hi = std::max(s, b), lo = std::min(s, b);
      const double exact = std::max(hi + std::log1p(std::exp(lo - hi)), -4500000.0);
      EXPECT_NEAR((*d.dst)[r], exact, 1e-5 * (1 + std::fabs(exact)))
          << "width " << w << " row " << r;
    }
  }
}

// A maximum started at log zero is the plain score after one call.
TEST(BlockScoring, MaxFromLogZeroEqualsLogGauss) {
  for (int w : {4, 36, 37, 39, 40})
    for (int h : {1, 4, 7, 129}) {
      Problem<float> p = makeProblem<float>(w, h, 5u * w + h);
      for (float& x : p.prior) x = LOGZERO_F;
      Placed<float> mx(p, Layout::Aligned), plain(p, Layout::SrcDstOff);
      const Args<float>& a = mx.args;
      const Args<float>& b = plain.args;
      ASSERT_EQ(qelsLogGaussMax_32f_D2(a.pSrc, a.step, a.pMean, a.pVar, w, a.pDst, h, p.val), 0);
      ASSERT_EQ(qelsLogGauss_32f_D2(b.pSrc, b.step, b.pMean, b.pVar, w, b.pDst, h, p.val), 0);
      EXPECT_TRUE(sameArrays(mx.dst->data(), plain.dst->data(), h)) << w << " " << h;
    }
}

// Double log-add into LOGZERO with a score near 0 yields the score.
TEST(BlockScoring, Add64fIntoLogZeroNearZeroScore) {
  const double x[4] = {0.001, -0.002, 0.003, 0.0}, mean[4] = {0, 0, 0, 0}, var[4] = {1, 1, 1, 1};
  double dst[1] = {LOGZERO};
  ASSERT_EQ(qelsLogGaussAdd_64f_D2(x, 4, mean, var, 4, dst, 1, 0.0), qelStatusOk);
  EXPECT_EQ(dst[0], br::kernelScore(x, mean, var, 4, 0.0));
  EXPECT_NEAR(dst[0], -0.5 * (1e-6 + 4e-6 + 9e-6), 1e-18);
}

// The double distance with a stride of width + 4 runs the general kernel and
// agrees with the packed stride.
TEST(BlockScoring, MahDist64fWiderStrideAgrees) {
  for (int w : {1, 4, 13, 39}) {
    const Problem<double> p = makeProblem<double>(w, 33, 3u * w);
    Placed<double> packed(p, Layout::Aligned);
    Guarded<double> wide(static_cast<size_t>(33) * (w + 4)), out(33);
    for (int r = 0; r < 33; ++r)
      for (int c = 0; c < w; ++c) wide[static_cast<size_t>(r) * (w + 4) + c] = p.rows[r][c];
    const Args<double>& a = packed.args;
    ASSERT_EQ(qelsMahDist_64f_D2(a.pSrc, a.step, a.pMean, a.pVar, w, a.pDst, 33), 0);
    ASSERT_EQ(qelsMahDist_64f_D2(wide.data(), w + 4, a.pMean, a.pVar, w, out.data(), 33), 0);
    EXPECT_TRUE(sameArrays(out.data(), a.pDst, 33)) << w;
  }
}

}  // namespace
