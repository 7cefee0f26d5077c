// Row and column primitives: every member against its scalar reference,
// bit for bit, on both layouts with aligned and misaligned data (so that
// both kernel twins run), the order of the argument checks with canary
// buffers, and the rounding and saturation of the 16-bit forms.
#include "frame/rows_columns.h"

#include <cmath>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "rows_columns_reference.h"
#include "test_support.h"

namespace {

using qtest::Guarded;
using qtest::RowSet;

const int kWidths[] = {1, 2, 3, 4, 5, 7, 8, 9, 13, 15, 16, 17, 39};
const int kHeights[] = {1, 2, 3, 4, 5, 13, 100};

// How a matrix and the vector beside it lie in memory. The aligned shapes
// run the aligned twin; the others break exactly one condition of the
// alignment rule and run the general twin.
struct Shape {
  const char* name;
  bool listed, srcOff, oddStride, dstOff, rowOff;
};
const Shape kShapes[] = {{"D2 aligned", false, false, false, false, false},
                         {"D2 src off", false, true, false, false, false},
                         {"D2 odd stride", false, false, true, false, false},
                         {"D2 dst off", false, false, false, true, false},
                         {"D2L aligned", true, false, false, false, false},
                         {"D2L one row off", true, false, false, false, true},
                         {"D2L dst off", true, false, false, true, false}};
const Shape& kD2Aligned = kShapes[0];
const Shape& kD2SrcOff = kShapes[1];
const Shape& kD2LAligned = kShapes[4];
const Shape& kD2LOneRowOff = kShapes[5];

template <typename T>
constexpr int kLanes = 16 / static_cast<int>(sizeof(T));

// Values that make the order of additions visible in the last bits. 16-bit
// sums stay exact in single below 2^24, so long 16-bit data are large and
// positive: their sums pass 2^24 and round. Short 16-bit data span the whole
// range, so subtractions saturate often, in vector bodies and tails alike.
template <typename T>
std::vector<T> testData(qtest::Rng& rng, size_t n) {
  std::vector<T> v(n);
  for (auto& x : v) {
    if constexpr (std::is_same_v<T, qel16s>)
      x = static_cast<qel16s>(n > 3000 ? rng.integer(20000, 32767) : rng.integer(-32768, 32767));
    else
      x = static_cast<T>(rng.uniformD(-1.0, 1.0) * std::ldexp(1.0, rng.integer(-12, 12)));
  }
  return v;
}

// Stride padding holds a large value that would spoil any sum reading it.
template <typename T>
T padding() {
  if constexpr (std::is_same_v<T, qel16s>)
    return 12345;
  else
    return static_cast<T>(1e20);
}

// A height x width matrix in the layout of `shape`.
template <typename T>
struct TestMatrix {
  TestMatrix(const Shape& shape, int height, int width, const std::vector<T>& data)
      : height(height), width(width), listed(shape.listed) {
    if (listed) {
      set = std::make_unique<RowSet<T>>(height, width, shape.rowOff ? height / 2 : -1);
      for (int r = 0; r < height; ++r) rows.push_back(set->ptrs()[r]);
    } else {
      step = (width + kLanes<T> - 1) / kLanes<T> * kLanes<T> + shape.oddStride;
      block = std::make_unique<Guarded<T>>(static_cast<size_t>(height) * step,
                                           shape.srcOff ? sizeof(T) : 0);
      for (int r = 0; r < height; ++r) {
        rows.push_back(block->data() + static_cast<size_t>(r) * step);
        for (int c = width; c < step; ++c) row(r)[c] = padding<T>();
      }
    }
    for (int r = 0; r < height; ++r)
      for (int c = 0; c < width; ++c) row(r)[c] = data[static_cast<size_t>(r) * width + c];
  }
  T* row(int r) { return const_cast<T*>(rows[r]); }
  T* base() { return block->data(); }
  T** ptrs() { return set->ptrs(); }
  bool guardsIntact() const { return listed ? set->guardsIntact() : block->guardsIntact(); }
  // The padding past the width of every row of a block is as it was.
  bool paddingIntact() {
    for (int r = 0; r < height; ++r)
      for (int c = width; c < step; ++c)
        if (!qtest::sameBits(row(r)[c], padding<T>())) return false;
    return true;
  }

  int height, width, step = 0;
  bool listed;
  std::unique_ptr<Guarded<T>> block;
  std::unique_ptr<RowSet<T>> set;
  rowref::Rows<T> rows;
};

std::vector<std::pair<int, int>> gridSizes(std::vector<std::pair<int, int>> extra = {}) {
  for (int h : kHeights)
    for (int w : kWidths) extra.push_back({h, w});
  return extra;
}

// Runs `body(matrix, misalignment of the vector beside it, rng)` for every
// size and every shape.
template <typename T, typename Body>
void forEachLayout(const std::vector<std::pair<int, int>>& sizes, uint32_t seed, Body body,
                   bool d2Only = false) {
  qtest::Rng rng(seed);
  for (auto [height, width] : sizes)
    for (const Shape& shape : kShapes) {
      if (d2Only && shape.listed) continue;
      SCOPED_TRACE(std::string(shape.name) + ", height " + std::to_string(height) + ", width " +
                   std::to_string(width));
      TestMatrix<T> mat(shape, height, width, testData<T>(rng, size_t(height) * width));
      body(mat, shape.dstOff ? sizeof(T) : 0, rng);
    }
}

// ---------------------------------------------------------------- sums

// One member of the row or column sums over both layouts, and the reference
// of result i.
template <typename TS, typename TD>
struct SumMember {
  const char* name;
  bool perRow;  // one result per row (SumRow) or per column (SumColumn)
  std::function<qelStatus(TestMatrix<TS>&, TD*)> call;
  std::function<TD(const rowref::Rows<TS>&, int)> ref;
};

template <typename TS, typename TD>
void runSums(const std::vector<SumMember<TS, TD>>& members, uint32_t seed,
             const std::vector<std::pair<int, int>>& sizes) {
  for (const auto& m : members) {
    SCOPED_TRACE(m.name);
    forEachLayout<TS>(sizes, seed, [&](TestMatrix<TS>& mat, size_t off, qtest::Rng&) {
      const int n = m.perRow ? mat.height : mat.width;
      Guarded<TD> dst(n, off == 0 ? 0 : sizeof(TD));
      ASSERT_EQ(m.call(mat, dst.data()), qelStatusOk);
      std::vector<TD> want(n);
      for (int i = 0; i < n; ++i)
        want[i] = m.perRow ? m.ref({mat.rows[i]}, mat.width) : m.ref(mat.rows, i);
      EXPECT_TRUE(qtest::sameArrays(dst.data(), want.data(), n));
      EXPECT_TRUE(dst.guardsIntact());
    });
  }
}

template <typename TD, typename FD2, typename FD2L>
auto rowSum(FD2 d2, FD2L d2l) {
  return [=](auto& m, TD* dst) {
    return m.listed ? d2l(m.rows.data(), m.width, dst, m.height)
                    : d2(m.base(), m.width, m.step, dst, m.height);
  };
}
template <typename TD, typename FD2, typename FD2L>
auto columnSum(FD2 d2, FD2L d2l) {
  return [=](auto& m, TD* dst) {
    return m.listed ? d2l(m.rows.data(), m.height, dst, m.width)
                    : d2(m.base(), m.step, m.height, dst, m.width);
  };
}
template <typename T, typename R, R (*Sum)(const T*, int)>
R rowRef(const rowref::Rows<T>& r, int w) {
  return Sum(r[0], w);
}

// Beyond the grid: tall matrices that the column sums take in several slabs
// of rows, and rows so long that a slab is two rows.
TEST(RowsColumns, FloatSumsMatchReferenceOnEveryLayout) {
  const auto sizes = gridSizes({{1031, 13}, {1031, 39}, {333, 5}, {7, 2049}, {9, 4099}});
  runSums<float, float>(
      {{"SumRow_32f", true, rowSum<float>(qelsSumRow_32f_D2, qelsSumRow_32f_D2L),
        rowRef<float, float, rowref::sumRow32f>},
       {"SumColumn_32f", false, columnSum<float>(qelsSumColumn_32f_D2, qelsSumColumn_32f_D2L),
        rowref::sumColumn<float>}},
      101, sizes);
  runSums<double, double>(
      {{"SumRow_64f", true, rowSum<double>(qelsSumRow_64f_D2, qelsSumRow_64f_D2L),
        rowRef<double, double, rowref::sumRow64f>},
       {"SumColumn_64f", false, columnSum<double>(qelsSumColumn_64f_D2, qelsSumColumn_64f_D2L),
        rowref::sumColumn<double>}},
      102, sizes);
}

// The long rows and columns are where the order of the 16-bit sums shows.
TEST(RowsColumns, SixteenBitSumsMatchReferenceOnEveryLayout) {
  const auto sizes = gridSizes({{5, 4099}, {1031, 21}, {1030, 3}});
  runSums<qel16s, float>(
      {{"SumRow_16s32f", true, rowSum<float>(qelsSumRow_16s32f_D2, qelsSumRow_16s32f_D2L),
        rowRef<qel16s, float, rowref::sumRow16s32f>},
       {"SumColumn_16s32f", false,
        columnSum<float>(qelsSumColumn_16s32f_D2, qelsSumColumn_16s32f_D2L),
        rowref::sumColumn16s32f}},
      103, sizes);
  for (int sf : {0, 3, -2}) {
    SCOPED_TRACE("scaleFactor " + std::to_string(sf));
    runSums<qel16s, qel32s>(
        {{"SumRow_16s32s", true,
          rowSum<qel32s>([=](auto... a) { return qelsSumRow_16s32s_D2Sfs(a..., sf); },
                         [=](auto... a) { return qelsSumRow_16s32s_D2LSfs(a..., sf); }),
          [=](const rowref::Rows<qel16s>& r, int w) {
            return rowref::scaleRound(rowref::sumRow16s32f(r[0], w), sf);
          }},
         {"SumColumn_16s32s", false,
          columnSum<qel32s>([=](auto... a) { return qelsSumColumn_16s32s_D2Sfs(a..., sf); },
                            [=](auto... a) { return qelsSumColumn_16s32s_D2LSfs(a..., sf); }),
          [=](const rowref::Rows<qel16s>& r, int c) {
            return rowref::scaleRound(rowref::sumColumn16s32f(r, c), sf);
          }}},
        104 + sf, sizes);
  }
}

// A row of width 1 is copied, not added to 0: -0.0 stays -0.0.
TEST(RowsColumns, SumRowOfWidthOneCopies) {
  const std::vector<float> col = {-0.0f, 3.5f, -1e-40f, HUGE_VALF, 7.0f};
  for (const Shape& shape : {kD2Aligned, kD2SrcOff, kD2LOneRowOff}) {
    TestMatrix<float> m(shape, 5, 1, col);
    float dst[5];
    ASSERT_EQ(m.listed ? qelsSumRow_32f_D2L(m.rows.data(), 1, dst, 5)
                       : qelsSumRow_32f_D2(m.base(), 1, m.step, dst, 5),
              qelStatusOk);
    EXPECT_TRUE(qtest::sameArrays(dst, col.data(), 5)) << shape.name;
  }
}

// The scaled 16-bit sums round to nearest even after the scale and saturate
// at both limits. The cases of one scale factor stand side by side as the
// columns (and, transposed, the rows) of one matrix, repeated to 24 results
// so the in-place conversion runs over a long destination.
TEST(RowsColumns, SixteenBitScaledSumsRoundToEvenAndSaturate) {
  struct Case {
    std::vector<qel16s> values;
    qel32s want;
  };
  const std::vector<std::pair<int, std::vector<Case>>> groups = {
      {1, {{{1, 2}, 2}, {{2, 3}, 2}, {{3, 4}, 4}, {{-1, -2}, -2}, {{5, 0}, 2}, {{7}, 4}}},
      {-1, {{{7, 1}, 16}}},
      {0,
       {{{32767, 32767}, 65534},
        {{32767, 32767, 32767}, 98301},
        {{-1, -1, -1}, -3},
        {{-32768, -32768, -32768}, -98304}}},
      {2, {{{-3, 0, 0}, -1}}},
      {-14, {{{32767, 32767, 32767, 32767}, 131068 << 14}}},
      {-15,
       {{{32767, 32767, 32767, 32767, 32767}, INT32_MAX},
        {{-32768, -32768, -32768}, INT32_MIN},
        {{-32768, -32768}, INT32_MIN}}},
      {-16,
       {{{32767, 32767, 32767}, INT32_MAX},
        {{-1, -1, -1}, -3 << 16},
        {{-32768, -32768, -32768}, INT32_MIN}}}};
  for (const auto& [sf, cases] : groups) {
    const int n = static_cast<int>(cases.size()), w = (24 + n - 1) / n * n;
    size_t h = 0;
    for (const Case& c : cases) h = std::max(h, c.values.size());
    // Column c holds case c mod n, zeros below its values.
    std::vector<qel16s> byColumn(h * w, 0), byRow(h * w, 0);
    for (int c = 0; c < w; ++c)
      for (size_t r = 0; r < cases[c % n].values.size(); ++r)
        byColumn[r * w + c] = byRow[c * h + r] = cases[c % n].values[r];
    for (const Shape& shape : {kD2Aligned, kD2SrcOff, kD2LAligned}) {
      SCOPED_TRACE(std::string(shape.name) + ", scaleFactor " + std::to_string(sf));
      TestMatrix<qel16s> mc(shape, int(h), w, byColumn), mr(shape, w, int(h), byRow);
      Guarded<qel32s> cols(w), rows(w);
      ASSERT_EQ(mc.listed
                    ? qelsSumColumn_16s32s_D2LSfs(mc.rows.data(), int(h), cols.data(), w, sf)
                    : qelsSumColumn_16s32s_D2Sfs(mc.base(), mc.step, int(h), cols.data(), w, sf),
                qelStatusOk);
      ASSERT_EQ(mr.listed ? qelsSumRow_16s32s_D2LSfs(mr.rows.data(), int(h), rows.data(), w, sf)
                          : qelsSumRow_16s32s_D2Sfs(mr.base(), int(h), mr.step, rows.data(), w, sf),
                qelStatusOk);
      for (int c = 0; c < w; ++c) {
        EXPECT_EQ(cols[c], cases[c % n].want) << "column " << c;
        EXPECT_EQ(rows[c], cases[c % n].want) << "row " << c;
      }
    }
  }
}

// The references themselves: each is a sum within the error bound of any
// order, and the fixed order is visible (it differs from a plain
// left-to-right sum on some rows), so the bit comparisons above can fail.
TEST(RowsColumns, ReferencesAreSumsInTheirOwnOrder) {
  qtest::Rng rng(105);
  int rowsDiffer = 0, columnsDiffer = 0;
  auto check = [](auto got, const auto& x) {
    double exact = 0, mag = 0;
    for (auto v : x) exact += v, mag += std::fabs(double(v));
    EXPECT_LE(std::fabs(got - exact), x.size() * std::ldexp(1.0, -24) * mag);
  };
  auto column = [](const auto& x) {
    rowref::Rows<typename std::decay_t<decltype(x)>::value_type> col;
    for (const auto& v : x) col.push_back(&v);
    return col;
  };
  for (int w : {13, 39, 100})
    for (int trial = 0; trial < 50; ++trial) {
      const auto x = testData<float>(rng, w);
      float plain = 0;
      for (float v : x) plain += v;
      const float row = rowref::sumRow32f(x.data(), w), col = rowref::sumColumn(column(x), 0);
      check(row, x);
      check(col, x);
      rowsDiffer += row != plain;
      columnsDiffer += col != plain;
    }
  EXPECT_GT(rowsDiffer, 0);
  EXPECT_GT(columnsDiffer, 0);
  // Long 16-bit rows pass 2^24, where the single accumulators round.
  for (int w : {1031, 2000}) {
    const auto x = testData<qel16s>(rng, w);
    check(rowref::sumRow16s32f(x.data(), w), x);
    check(rowref::sumColumn16s32f(column(x), 0), x);
  }
}

// ---------------------------------------------------------------- accumulate, subtract, copy

TEST(RowsColumns, AddAllRowSumAccumulatesInRowOrder) {
  forEachLayout<float>(gridSizes(), 201, [](TestMatrix<float>& m, size_t off, qtest::Rng& rng) {
    const int w = m.width, h = m.height;
    const auto prior = testData<float>(rng, w);
    Guarded<float> acc(w, off);
    acc.assign(prior);
    ASSERT_EQ(m.listed ? qelsAddAllRowSum_32f_D2L(m.rows.data(), h, acc.data(), w)
                       : qelsAddAllRowSum_32f_D2(m.base(), m.step, h, acc.data(), w),
              qelStatusOk);
    auto want = prior;
    rowref::addAllRowSum(m.rows, want.data(), w);
    EXPECT_TRUE(qtest::sameArrays(acc.data(), want.data(), w));
    EXPECT_TRUE(acc.guardsIntact());
  });
}

// Subtracts in place (the 16-bit form saturating); the stride padding must
// survive.
template <typename T, typename FD2, typename FD2L>
void checkSubRow(FD2 d2, FD2L d2l, uint32_t seed) {
  forEachLayout<T>(gridSizes(), seed, [&](TestMatrix<T>& m, size_t off, qtest::Rng& rng) {
    const int w = m.width, h = m.height;
    std::vector<std::vector<T>> before;
    for (int r = 0; r < h; ++r) before.emplace_back(m.row(r), m.row(r) + w);
    Guarded<T> vec(w, off);
    vec.assign(testData<T>(rng, w));
    ASSERT_EQ(m.listed ? d2l(vec.data(), m.ptrs(), w, h) : d2(vec.data(), w, m.base(), m.step, h),
              qelStatusOk);
    for (int r = 0; r < h; ++r) {
      std::vector<T> want(w);
      for (int c = 0; c < w; ++c)
        if constexpr (std::is_same_v<T, qel16s>)
          want[c] = rowref::subSat(before[r][c], vec[c]);
        else
          want[c] = before[r][c] - vec[c];
      ASSERT_TRUE(qtest::sameArrays(m.row(r), want.data(), w)) << "row " << r;
    }
    EXPECT_TRUE(m.paddingIntact());
    EXPECT_TRUE(m.guardsIntact());
  });
}

TEST(RowsColumns, SubRowSubtractsFromEveryRow) {
  checkSubRow<float>(qelsSubRow_32f_D2, qelsSubRow_32f_D2L, 211);
  checkSubRow<qel16s>(qelsSubRow_16s_D2, qelsSubRow_16s_D2L, 212);
}

// A packed source into the rows of a strided destination (the matrix); the
// destination's padding keeps its values.
template <typename T, typename F>
void checkCopyColumn(F copy, uint32_t seed) {
  forEachLayout<T>(
      gridSizes(), seed,
      [&](TestMatrix<T>& m, size_t off, qtest::Rng& rng) {
        const int w = m.width, h = m.height;
        Guarded<T> src(size_t(h) * w, off);
        src.assign(testData<T>(rng, size_t(h) * w));
        ASSERT_EQ(copy(src.data(), w, m.base(), m.step, h), qelStatusOk);
        for (int r = 0; r < h; ++r)
          ASSERT_TRUE(qtest::sameArrays(m.row(r), src.data() + size_t(r) * w, w)) << "row " << r;
        EXPECT_TRUE(m.paddingIntact());
        EXPECT_TRUE(m.guardsIntact());
      },
      true);
}

TEST(RowsColumns, CopyColumnSpreadsPackedRows) {
  checkCopyColumn<float>(qelsCopyColumn_32f_D2, 221);
  checkCopyColumn<qel16s>(qelsCopyColumn_16s_D2, 222);
}

// ---------------------------------------------------------------- AddNRows

TEST(RowsColumns, AddNRowsIsAPlainSumOfSelectedRows) {
  qtest::Rng rng(301);
  const int height = 20;
  for (int offset : {0, 1, 4, 5})
    for (int w : kWidths)
      for (int extra : {0, 3, 4})
        for (int nRows : {1, 5, 11, 12, 13, 24, 25, 37})
          for (int misalign : {0, 1, 2}) {  // none, pSrc off, pInd off
            // extra 0 puts the stride exactly at offset + width.
            const int step = offset + w <= 8 && extra == 0 ? 8 : offset + w + extra;
            SCOPED_TRACE("offset " + std::to_string(offset) + " width " + std::to_string(w) +
                         " step " + std::to_string(step) + " nRows " + std::to_string(nRows) +
                         " misalign " + std::to_string(misalign));
            Guarded<float> src(size_t(height) * step, misalign == 1 ? 4 : 0);
            src.assign(testData<float>(rng, size_t(height) * step));
            Guarded<int> ind(nRows, misalign == 2 ? 4 : 0);
            Guarded<unsigned short> add(nRows);
            for (int i = 0; i < nRows; ++i) {
              add[i] = static_cast<unsigned short>(rng.integer(0, 6));
              ind[i] = rng.integer(0, height - 1) - add[i];  // bases may be negative
            }
            const float val = rng.uniform(-3, 3);
            Guarded<float> dst(w, 4);
            ASSERT_EQ(qelsAddNRows_32f_D2(src.data(), height, offset, step, ind.data(), add.data(),
                                          nRows, dst.data(), w, val),
                      qelStatusOk);
            std::vector<float> want(w);
            rowref::addNRows(src.data(), offset, step, ind.data(), add.data(), nRows, want.data(),
                             w, val);
            ASSERT_TRUE(qtest::sameArrays(dst.data(), want.data(), w));
            ASSERT_TRUE(dst.guardsIntact());
          }
}

// ---------------------------------------------------------------- indirect copies

// Gathers; with a bad index at position `at` of row 0 (at < 0: none), the
// call stops with row 0 written before it and nothing else touched.
template <typename T>
void checkIndirect(uint32_t seed,
                   qelStatus (*d2)(const T*, int, int, T*, const qel32s*, int, int, int),
                   qelStatus (*d2l)(const T* const*, int, T* const*, const qel32s*, int, int)) {
  qtest::Rng rng(seed);
  for (int srcLen : {1, 7, 39})
    for (int dstLen : {1, 5, 13})
      for (int h : {1, 3, 13})
        for (int at : {-1, 0, dstLen - 1})
          for (int bad : {-1, srcLen, 1000})
            for (bool listed : {false, true}) {
              if (at < 0 && bad != -1) continue;
              SCOPED_TRACE(::testing::Message()
                           << srcLen << " " << dstLen << " " << h << " bad " << bad << " at " << at
                           << (listed ? " D2L" : " D2"));
              const int srcStep = srcLen + 2, dstStep = dstLen + 1;
              Guarded<T> src(size_t(h) * srcStep, sizeof(T));
              src.assign(testData<T>(rng, size_t(h) * srcStep));
              Guarded<T> dst(size_t(h) * dstStep);
              std::vector<int> ind(dstLen);
              for (auto& i : ind) i = rng.integer(0, srcLen - 1);
              if (at >= 0) ind[at] = bad;
              std::vector<const T*> srcRows;
              std::vector<T*> dstRows;
              for (int r = 0; r < h; ++r) {
                srcRows.push_back(src.data() + size_t(r) * srcStep);
                dstRows.push_back(dst.data() + size_t(r) * dstStep);
              }
              ASSERT_EQ(listed ? d2l(srcRows.data(), srcLen, dstRows.data(), ind.data(), dstLen, h)
                               : d2(src.data(), srcLen, srcStep, dst.data(), ind.data(), dstLen,
                                    dstStep, h),
                        at < 0 ? qelStatusOk : qelStatusSize);
              const Guarded<T> canary(1);
              for (int r = 0; r < h; ++r)
                for (int i = 0; i <= dstLen; ++i) {
                  const bool written = i < dstLen && (at < 0 || (r == 0 && i < at));
                  ASSERT_TRUE(
                      qtest::sameBits(dstRows[r][i], written ? srcRows[r][ind[i]] : canary[0]))
                      << "row " << r << ", element " << i;
                }
              EXPECT_TRUE(dst.guardsIntact());
            }
}

TEST(RowsColumns, IndirectCopiesGatherColumnsAndStopAtABadIndex) {
  checkIndirect<float>(401, qelsCopyColumn_Indirect_32f_D2, qelsCopyColumn_Indirect_32f_D2L);
  checkIndirect<double>(402, qelsCopyColumn_Indirect_64f_D2, qelsCopyColumn_Indirect_64f_D2L);
  checkIndirect<qel16s>(403, qelsCopyColumn_Indirect_16s_D2, qelsCopyColumn_Indirect_16s_D2L);
}

// ---------------------------------------------------------------- argument checks

struct ErrorCase {
  std::string what;
  std::function<qelStatus()> call;
  qelStatus want;
};

// Every buffer that an erroring call could reach, canary-filled.
struct Buffers {
  Guarded<float> f{64};
  Guarded<double> d{64};
  Guarded<qel16s> s{64};
  Guarded<qel32s> i{64};
  Guarded<unsigned short> u{64};
  RowSet<float> rf{4, 16};
  RowSet<double> rd{4, 16};
  RowSet<qel16s> rs{4, 16};
  void poison() {
    f.poison(), d.poison(), s.poison(), i.poison(), u.poison();
    for (int r = 0; r < 4; ++r) rf.row(r).poison(), rd.row(r).poison(), rs.row(r).poison();
  }
  bool untouched() const {
    return f.untouched() && d.untouched() && s.untouched() && i.untouched() && u.untouched() &&
           rf.untouched() && rd.untouched() && rs.untouched();
  }
};

// The families with null pointers, then sizes, then (D2) the stride: each
// pair of faults is decided by the earlier check. `call(srcNull, dstNull,
// width, height, step)`.
template <typename F>
void addCommonOrder(std::vector<ErrorCase>& v, const std::string& name, bool d2, F call) {
  v.push_back({name + " null src and width 0", [=] { return call(true, false, 0, 2, 4); },
               qelStatusNullPtr});
  v.push_back({name + " null dst and height 0", [=] { return call(false, true, 2, 0, 4); },
               qelStatusNullPtr});
  v.push_back({name + " width 0 and bad stride", [=] { return call(false, false, 0, 2, -3); },
               qelStatusSize});
  v.push_back({name + " height -1 and bad stride", [=] { return call(false, false, 2, -1, 1); },
               qelStatusSize});
  if (d2)
    v.push_back({name + " stride one below width", [=] { return call(false, false, 5, 2, 4); },
                 qelStatusStride});
}

std::vector<ErrorCase> errorCases(Buffers& b) {
  std::vector<ErrorCase> v;
  auto F = [&b](bool n) { return n ? nullptr : b.f.data(); };
  auto D = [&b](bool n) { return n ? nullptr : b.d.data(); };
  auto S = [&b](bool n) { return n ? nullptr : b.s.data(); };
  auto I = [&b](bool n) { return n ? nullptr : b.i.data(); };
  auto RF = [&b](bool n) { return n ? nullptr : b.rf.ptrs(); };
  auto RD = [&b](bool n) { return n ? nullptr : b.rd.ptrs(); };
  auto RS = [&b](bool n) { return n ? nullptr : b.rs.ptrs(); };
  using CF = const float* const*;
  using CD = const double* const*;
  using CS = const qel16s* const*;
  // clang-format off
  addCommonOrder(v, "SumRow_32f_D2", true, [=](bool a, bool z, int w, int h, int s) { return qelsSumRow_32f_D2(F(a), w, s, F(z), h); });
  addCommonOrder(v, "SumRow_64f_D2", true, [=](bool a, bool z, int w, int h, int s) { return qelsSumRow_64f_D2(D(a), w, s, D(z), h); });
  addCommonOrder(v, "SumRow_16s32f_D2", true, [=](bool a, bool z, int w, int h, int s) { return qelsSumRow_16s32f_D2(S(a), w, s, F(z), h); });
  addCommonOrder(v, "SumRow_16s32s_D2Sfs", true, [=](bool a, bool z, int w, int h, int s) { return qelsSumRow_16s32s_D2Sfs(S(a), w, s, I(z), h, 1); });
  addCommonOrder(v, "SumRow_32f_D2L", false, [=](bool a, bool z, int w, int h, int) { return qelsSumRow_32f_D2L(CF(RF(a)), w, F(z), h); });
  addCommonOrder(v, "SumRow_64f_D2L", false, [=](bool a, bool z, int w, int h, int) { return qelsSumRow_64f_D2L(CD(RD(a)), w, D(z), h); });
  addCommonOrder(v, "SumRow_16s32f_D2L", false, [=](bool a, bool z, int w, int h, int) { return qelsSumRow_16s32f_D2L(CS(RS(a)), w, F(z), h); });
  addCommonOrder(v, "SumRow_16s32s_D2LSfs", false, [=](bool a, bool z, int w, int h, int) { return qelsSumRow_16s32s_D2LSfs(CS(RS(a)), w, I(z), h, 1); });
  addCommonOrder(v, "SumColumn_32f_D2", true, [=](bool a, bool z, int w, int h, int s) { return qelsSumColumn_32f_D2(F(a), s, h, F(z), w); });
  addCommonOrder(v, "SumColumn_64f_D2", true, [=](bool a, bool z, int w, int h, int s) { return qelsSumColumn_64f_D2(D(a), s, h, D(z), w); });
  addCommonOrder(v, "SumColumn_16s32f_D2", true, [=](bool a, bool z, int w, int h, int s) { return qelsSumColumn_16s32f_D2(S(a), s, h, F(z), w); });
  addCommonOrder(v, "SumColumn_16s32s_D2Sfs", true, [=](bool a, bool z, int w, int h, int s) { return qelsSumColumn_16s32s_D2Sfs(S(a), s, h, I(z), w, 1); });
  addCommonOrder(v, "SumColumn_32f_D2L", false, [=](bool a, bool z, int w, int h, int) { return qelsSumColumn_32f_D2L(CF(RF(a)), h, F(z), w); });
  addCommonOrder(v, "SumColumn_64f_D2L", false, [=](bool a, bool z, int w, int h, int) { return qelsSumColumn_64f_D2L(CD(RD(a)), h, D(z), w); });
  addCommonOrder(v, "SumColumn_16s32f_D2L", false, [=](bool a, bool z, int w, int h, int) { return qelsSumColumn_16s32f_D2L(CS(RS(a)), h, F(z), w); });
  addCommonOrder(v, "SumColumn_16s32s_D2LSfs", false, [=](bool a, bool z, int w, int h, int) { return qelsSumColumn_16s32s_D2LSfs(CS(RS(a)), h, I(z), w, 1); });
  addCommonOrder(v, "AddAllRowSum_32f_D2", true, [=](bool a, bool z, int w, int h, int s) { return qelsAddAllRowSum_32f_D2(F(a), s, h, F(z), w); });
  addCommonOrder(v, "AddAllRowSum_32f_D2L", false, [=](bool a, bool z, int w, int h, int) { return qelsAddAllRowSum_32f_D2L(CF(RF(a)), h, F(z), w); });
  addCommonOrder(v, "SubRow_32f_D2", true, [=](bool a, bool z, int w, int h, int s) { return qelsSubRow_32f_D2(F(a), w, F(z), s, h); });
  addCommonOrder(v, "SubRow_16s_D2", true, [=](bool a, bool z, int w, int h, int s) { return qelsSubRow_16s_D2(S(a), w, S(z), s, h); });
  addCommonOrder(v, "SubRow_32f_D2L", false, [=](bool a, bool z, int w, int h, int) { return qelsSubRow_32f_D2L(F(a), RF(z), w, h); });
  addCommonOrder(v, "SubRow_16s_D2L", false, [=](bool a, bool z, int w, int h, int) { return qelsSubRow_16s_D2L(S(a), RS(z), w, h); });
  addCommonOrder(v, "CopyColumn_32f_D2", true, [=](bool a, bool z, int w, int h, int s) { return qelsCopyColumn_32f_D2(F(a), w, F(z), s, h); });
  addCommonOrder(v, "CopyColumn_16s_D2", true, [=](bool a, bool z, int w, int h, int s) { return qelsCopyColumn_16s_D2(S(a), w, S(z), s, h); });

  // AddNRows: pointers, sizes and offset, stride, then the row numbers.
  // Rows 0..3 of a 4 x 16 block; the first three entries are good.
  auto addN = [](const float* src, int h, int off, int step, const int* ind, const unsigned short* add, int n, float* dst, int w) {
    return [=] { return qelsAddNRows_32f_D2(src, h, off, step, ind, add, n, dst, w, 1.0f); };
  };
  static int goodInd[4] = {0, 1, 2, 3}, badLast[4] = {0, 1, 2, 4}, negative[4] = {0, -1, 2, 3}, tooHigh[4] = {0, 1, 2, 65535 + 3};
  static unsigned short zeros[4] = {0, 0, 0, 0}, ones[4] = {0, 0, 1, 1}, big[4] = {0, 0, 0, 65535};
  float* dst = b.f.data() + 32;
  const float* src = b.rf.row(0).data();
  v.push_back({"AddNRows null pInd and nRows 0", addN(src, 4, 0, 16, nullptr, zeros, 0, dst, 4), qelStatusNullPtr});
  v.push_back({"AddNRows null pAddInd and width 0", addN(src, 4, 0, 16, goodInd, nullptr, 4, dst, 0), qelStatusNullPtr});
  v.push_back({"AddNRows null pSrc", addN(nullptr, 4, 0, 16, goodInd, zeros, 4, dst, 4), qelStatusNullPtr});
  v.push_back({"AddNRows null pDst", addN(src, 4, 0, 16, goodInd, zeros, 4, nullptr, 4), qelStatusNullPtr});
  v.push_back({"AddNRows nRows 0 and bad stride", addN(src, 4, 0, 2, goodInd, zeros, 0, dst, 4), qelStatusSize});
  v.push_back({"AddNRows height 0 and bad stride", addN(src, 0, 0, 2, goodInd, zeros, 4, dst, 4), qelStatusSize});
  v.push_back({"AddNRows offset -1 and bad index", addN(src, 4, -1, 16, badLast, zeros, 4, dst, 4), qelStatusSize});
  v.push_back({"AddNRows stride one short and bad index", addN(src, 4, 3, 6, badLast, zeros, 4, dst, 4), qelStatusStride});
  v.push_back({"AddNRows row number equal to height, last entry", addN(src, 4, 0, 16, badLast, zeros, 4, dst, 4), qelStatusSize});
  v.push_back({"AddNRows base plus index equal to height", addN(src, 4, 0, 16, goodInd, ones, 4, dst, 4), qelStatusSize});
  v.push_back({"AddNRows negative row number", addN(src, 4, 0, 16, negative, zeros, 4, dst, 4), qelStatusSize});
  v.push_back({"AddNRows 16-bit index far above height", addN(src, 4, 0, 16, tooHigh, big, 4, dst, 4), qelStatusSize});

  // Indirect copies, D2: pointers, srcLen, srcLen > srcStep, dstLen, dstLen > dstStep, height.
  auto ind2 = [=](bool nSrc, bool nDst, bool nInd, int srcLen, int srcStep, int dstLen, int dstStep, int h) {
    return [=] { return qelsCopyColumn_Indirect_32f_D2(F(nSrc), srcLen, srcStep, F(nDst), nInd ? nullptr : goodInd, dstLen, dstStep, h); };
  };
  v.push_back({"Indirect_D2 null pInd and srcLen 0", ind2(false, false, true, 0, 8, 4, 4, 2), qelStatusNullPtr});
  v.push_back({"Indirect_D2 null pSrc", ind2(true, false, false, 4, 8, 4, 4, 2), qelStatusNullPtr});
  v.push_back({"Indirect_D2 null pDst", ind2(false, true, false, 4, 8, 4, 4, 2), qelStatusNullPtr});
  v.push_back({"Indirect_D2 srcLen 0 and dstLen 0", ind2(false, false, false, 0, -1, 0, 4, 2), qelStatusSize});
  v.push_back({"Indirect_D2 srcLen above srcStep and dstLen 0", ind2(false, false, false, 9, 8, 0, 4, 2), qelStatusStride});
  v.push_back({"Indirect_D2 dstLen 0 and height 0", ind2(false, false, false, 4, 8, 0, -1, 0), qelStatusSize});
  v.push_back({"Indirect_D2 dstLen above dstStep and height 0", ind2(false, false, false, 4, 8, 5, 4, 0), qelStatusStride});
  v.push_back({"Indirect_D2 height 0", ind2(false, false, false, 4, 8, 4, 4, 0), qelStatusSize});
  auto indL = [=](bool nSrc, bool nDst, bool nInd, int srcLen, int dstLen, int h) {
    return [=] { return qelsCopyColumn_Indirect_32f_D2L(CF(RF(nSrc)), srcLen, RF(nDst), nInd ? nullptr : goodInd, dstLen, h); };
  };
  v.push_back({"Indirect_D2L null ppSrc and height 0", indL(true, false, false, 4, 4, 0), qelStatusNullPtr});
  v.push_back({"Indirect_D2L null ppDst", indL(false, true, false, 4, 4, 2), qelStatusNullPtr});
  v.push_back({"Indirect_D2L null pInd", indL(false, false, true, 4, 4, 2), qelStatusNullPtr});
  v.push_back({"Indirect_D2L srcLen 0", indL(false, false, false, 0, 4, 2), qelStatusSize});
  v.push_back({"Indirect_D2L dstLen 0", indL(false, false, false, 4, 0, 2), qelStatusSize});
  v.push_back({"Indirect_D2L height 0", indL(false, false, false, 4, 4, 0), qelStatusSize});
  v.push_back({"Indirect_64f_D2 srcLen above srcStep", [=] { return qelsCopyColumn_Indirect_64f_D2(D(false), 5, 4, D(false), goodInd, 2, 2, 1); }, qelStatusStride});
  v.push_back({"Indirect_16s_D2L null pInd", [=] { return qelsCopyColumn_Indirect_16s_D2L(CS(RS(false)), 4, RS(false), nullptr, 2, 1); }, qelStatusNullPtr});
  // clang-format on
  return v;
}

TEST(RowsColumns, ArgumentChecksRunInOrderAndWriteNothing) {
  Buffers b;
  const auto cases = errorCases(b);
  EXPECT_GT(cases.size(), 130u);
  for (const auto& c : cases) {
    EXPECT_EQ(c.call(), c.want) << c.what;
    EXPECT_TRUE(b.untouched()) << c.what;
    b.poison();
  }
}

}  // namespace
