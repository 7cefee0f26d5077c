// Row and column primitives: every member against its scalar reference,
// bit for bit, on both layouts with aligned and misaligned data (so that
// both kernel twins run), the order of the argument checks with canary
// buffers, and the edge cases of the family.
#include "frame/rows_columns.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
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

// How a matrix and the destination lie in memory. The aligned shapes run the
// aligned twin; the others break exactly one condition of the alignment
// rule and run the general twin.
enum class Shape {
  D2Aligned,
  D2SrcOff,
  D2OddStride,
  D2DstOff,
  D2LAligned,
  D2LOneRowOff,
  D2LDstOff
};
const Shape kShapes[] = {Shape::D2Aligned, Shape::D2SrcOff,   Shape::D2OddStride,
                         Shape::D2DstOff,  Shape::D2LAligned, Shape::D2LOneRowOff,
                         Shape::D2LDstOff};
const char* shapeName(Shape s) {
  const char* names[] = {"D2 aligned",  "D2 src off",      "D2 odd stride", "D2 dst off",
                         "D2L aligned", "D2L one row off", "D2L dst off"};
  return names[static_cast<int>(s)];
}
bool isListed(Shape s) { return s >= Shape::D2LAligned; }
bool dstOff(Shape s) { return s == Shape::D2DstOff || s == Shape::D2LDstOff; }

template <typename T>
constexpr int kLanes = 16 / static_cast<int>(sizeof(T));

// Values that make the order of additions visible in the last bits. 16-bit
// sums stay exact in single below 2^24, so long 16-bit data are large and
// positive: their sums pass 2^24 and round.
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

template <typename T>
T padding() {
  if constexpr (std::is_same_v<T, qel16s>)
    return 12345;
  else
    return static_cast<T>(1e20);
}

// A height x width matrix in the layout of `shape`; padding past the width
// holds a large value that would spoil any sum reading it.
template <typename T>
struct TestMatrix {
  TestMatrix(Shape shape, int height, int width, const std::vector<T>& data)
      : height(height), width(width), listed(isListed(shape)) {
    if (listed) {
      set = std::make_unique<RowSet<T>>(height, width,
                                        shape == Shape::D2LOneRowOff ? height / 2 : -1);
      for (int r = 0; r < height; ++r) rows.push_back(set->ptrs()[r]);
    } else {
      step = (width + kLanes<T> - 1) / kLanes<T> * kLanes<T> + (shape == Shape::D2OddStride);
      block = std::make_unique<Guarded<T>>(static_cast<size_t>(height) * step,
                                           shape == Shape::D2SrcOff ? sizeof(T) : 0);
      for (int r = 0; r < height; ++r) {
        rows.push_back(block->data() + static_cast<size_t>(r) * step);
        for (int c = width; c < step; ++c)
          block->data()[static_cast<size_t>(r) * step + c] = padding<T>();
      }
    }
    for (int r = 0; r < height; ++r)
      for (int c = 0; c < width; ++c) row(r)[c] = data[static_cast<size_t>(r) * width + c];
  }
  T* row(int r) { return const_cast<T*>(rows[r]); }
  T* base() { return block->data(); }
  T** ptrs() { return set->ptrs(); }
  bool guardsIntact() const { return listed ? set->guardsIntact() : block->guardsIntact(); }

  int height, width, step = 0;
  bool listed;
  std::unique_ptr<Guarded<T>> block;
  std::unique_ptr<RowSet<T>> set;
  rowref::Rows<T> rows;
};

// ---------------------------------------------------------------- sums

// One member of the row or column sums: both layouts, and the reference of
// one result.
template <typename TS, typename TD>
struct SumMember {
  const char* name;
  bool perRow;  // one result per row (SumRow) or per column (SumColumn)
  std::function<qelStatus(TestMatrix<TS>&, TD*)> call;
  std::function<TD(const rowref::Rows<TS>&, int)> ref;
};

template <typename TS, typename TD>
void runSumMembers(const std::vector<SumMember<TS, TD>>& members, uint32_t seed,
                   const std::vector<std::pair<int, int>>& sizes) {
  qtest::Rng rng(seed);
  for (const auto& m : members)
    for (auto [height, width] : sizes)
      for (Shape shape : kShapes) {
        SCOPED_TRACE(std::string(m.name) + ", " + shapeName(shape) + ", height " +
                     std::to_string(height) + ", width " + std::to_string(width));
        TestMatrix<TS> mat(shape, height, width, testData<TS>(rng, size_t(height) * width));
        const int n = m.perRow ? height : width;
        Guarded<TD> dst(n, dstOff(shape) ? sizeof(TD) : 0);
        ASSERT_EQ(m.call(mat, dst.data()), qelStatusOk);
        std::vector<TD> want(n);
        for (int i = 0; i < n; ++i)
          want[i] = m.perRow ? m.ref({mat.rows[i]}, width) : m.ref(mat.rows, i);
        EXPECT_TRUE(qtest::sameArrays(dst.data(), want.data(), n));
        EXPECT_TRUE(dst.guardsIntact());
      }
}

std::vector<std::pair<int, int>> gridSizes() {
  std::vector<std::pair<int, int>> s;
  for (int h : kHeights)
    for (int w : kWidths) s.push_back({h, w});
  return s;
}

template <typename TD, typename FD2, typename FD2L>
auto rowSumCall(FD2 d2, FD2L d2l) {
  return [=](auto& m, TD* dst) {
    return m.listed ? d2l(m.rows.data(), m.width, dst, m.height)
                    : d2(m.base(), m.width, m.step, dst, m.height);
  };
}
template <typename TD, typename FD2, typename FD2L>
auto columnSumCall(FD2 d2, FD2L d2l) {
  return [=](auto& m, TD* dst) {
    return m.listed ? d2l(m.rows.data(), m.height, dst, m.width)
                    : d2(m.base(), m.step, m.height, dst, m.width);
  };
}

float rowRef32f(const rowref::Rows<float>& r, int w) { return rowref::sumRow32f(r[0], w); }
double rowRef64f(const rowref::Rows<double>& r, int w) { return rowref::sumRow64f(r[0], w); }
float rowRef16s(const rowref::Rows<qel16s>& r, int w) { return rowref::sumRow16s32f(r[0], w); }

// Beyond the grid: tall matrices that the column sums take in several
// slabs of rows, and rows so long that a slab is two rows.
std::vector<std::pair<int, int>> floatSizes() {
  auto s = gridSizes();
  for (auto hw : {std::pair{1031, 13}, {1031, 39}, {333, 5}, {7, 2049}, {9, 4099}}) s.push_back(hw);
  return s;
}

TEST(RowsColumns, FloatSumsMatchReferenceOnEveryLayout) {
  runSumMembers<float, float>(
      {{"SumRow_32f", true, rowSumCall<float>(qelsSumRow_32f_D2, qelsSumRow_32f_D2L), rowRef32f},
       {"SumColumn_32f", false, columnSumCall<float>(qelsSumColumn_32f_D2, qelsSumColumn_32f_D2L),
        rowref::sumColumn<float>}},
      101, floatSizes());
  runSumMembers<double, double>(
      {{"SumRow_64f", true, rowSumCall<double>(qelsSumRow_64f_D2, qelsSumRow_64f_D2L), rowRef64f},
       {"SumColumn_64f", false, columnSumCall<double>(qelsSumColumn_64f_D2, qelsSumColumn_64f_D2L),
        rowref::sumColumn<double>}},
      102, floatSizes());
}

// The long rows and columns are where the order of the 16-bit sums shows.
TEST(RowsColumns, SixteenBitSumsMatchReferenceOnEveryLayout) {
  auto sizes = gridSizes();
  sizes.push_back({5, 4099});
  sizes.push_back({1031, 21});
  sizes.push_back({1030, 3});
  const std::vector<SumMember<qel16s, float>> members = {
      {"SumRow_16s32f", true, rowSumCall<float>(qelsSumRow_16s32f_D2, qelsSumRow_16s32f_D2L),
       rowRef16s},
      {"SumColumn_16s32f", false,
       columnSumCall<float>(qelsSumColumn_16s32f_D2, qelsSumColumn_16s32f_D2L),
       rowref::sumColumn16s32f}};
  runSumMembers(members, 103, sizes);

  for (int sf : {0, 3, -2}) {
    SCOPED_TRACE("scaleFactor " + std::to_string(sf));
    const std::vector<SumMember<qel16s, qel32s>> sfs = {
        {"SumRow_16s32s", true,
         rowSumCall<qel32s>([=](auto... a) { return qelsSumRow_16s32s_D2Sfs(a..., sf); },
                            [=](auto... a) { return qelsSumRow_16s32s_D2LSfs(a..., sf); }),
         [=](const rowref::Rows<qel16s>& r, int w) {
           return rowref::scaleRound(rowref::sumRow16s32f(r[0], w), sf);
         }},
        {"SumColumn_16s32s", false,
         columnSumCall<qel32s>([=](auto... a) { return qelsSumColumn_16s32s_D2Sfs(a..., sf); },
                               [=](auto... a) { return qelsSumColumn_16s32s_D2LSfs(a..., sf); }),
         [=](const rowref::Rows<qel16s>& r, int c) {
           return rowref::scaleRound(rowref::sumColumn16s32f(r, c), sf);
         }}};
    runSumMembers(sfs, 104 + sf, sizes);
  }
}

// The references themselves: each is a sum within the error bound of any
// order, and the fixed order is visible (it differs from a plain
// left-to-right sum on some rows), so the bit comparisons above can fail.
TEST(RowsColumns, ReferencesAreSumsInTheirOwnOrder) {
  qtest::Rng rng(105);
  int rowsDiffer = 0, columnsDiffer = 0;
  for (int w : {13, 39, 100}) {
    for (int trial = 0; trial < 50; ++trial) {
      const auto x = testData<float>(rng, w);
      double exact = 0, mag = 0;
      float plain = 0;
      for (float v : x) exact += v, mag += std::fabs(v), plain += v;
      const float got = rowref::sumRow32f(x.data(), w);
      EXPECT_LE(std::fabs(got - exact), w * std::ldexp(1.0, -24) * mag);
      rowsDiffer += got != plain;
      rowref::Rows<float> col;
      for (const float& v : x) col.push_back(&v);
      const float colSum = rowref::sumColumn<float>(col, 0);
      EXPECT_LE(std::fabs(colSum - exact), w * std::ldexp(1.0, -24) * mag);
      columnsDiffer += colSum != plain;
    }
  }
  EXPECT_GT(rowsDiffer, 0);
  EXPECT_GT(columnsDiffer, 0);
  // Long 16-bit rows pass 2^24, where the single accumulators round.
  for (int w : {1031, 2000}) {
    const auto x = testData<qel16s>(rng, w);
    double exact = 0, mag = 0;
    for (qel16s v : x) exact += v, mag += std::abs(v);
    EXPECT_LE(std::fabs(rowref::sumRow16s32f(x.data(), w) - exact), w * std::ldexp(1.0, -24) * mag);
    rowref::Rows<qel16s> col;
    for (const qel16s& v : x) col.push_back(&v);
    EXPECT_LE(std::fabs(rowref::sumColumn16s32f(col, 0) - exact), w * std::ldexp(1.0, -24) * mag);
  }
}

// ---------------------------------------------------------------- accumulate, subtract, copy

TEST(RowsColumns, AddAllRowSumAccumulatesInRowOrder) {
  qtest::Rng rng(201);
  for (Shape shape : kShapes)
    for (int h : kHeights)
      for (int w : kWidths) {
        SCOPED_TRACE(std::string(shapeName(shape)) + " " + std::to_string(h) + "x" +
                     std::to_string(w));
        TestMatrix<float> m(shape, h, w, testData<float>(rng, size_t(h) * w));
        const auto prior = testData<float>(rng, w);
        Guarded<float> acc(w, dstOff(shape) ? 4 : 0);
        acc.assign(prior);
        const qelStatus st = m.listed ? qelsAddAllRowSum_32f_D2L(m.rows.data(), h, acc.data(), w)
                                      : qelsAddAllRowSum_32f_D2(m.base(), m.step, h, acc.data(), w);
        ASSERT_EQ(st, qelStatusOk);
        auto want = prior;
        rowref::addAllRowSum(m.rows, want.data(), w);
        EXPECT_TRUE(qtest::sameArrays(acc.data(), want.data(), w));
        EXPECT_TRUE(acc.guardsIntact());
      }
}

// Subtracts in place; the stride padding must survive.
template <typename T, typename FD2, typename FD2L>
void checkSubRow(FD2 d2, FD2L d2l, uint32_t seed) {
  qtest::Rng rng(seed);
  for (Shape shape : kShapes)
    for (int h : kHeights)
      for (int w : kWidths) {
        SCOPED_TRACE(std::string(shapeName(shape)) + " " + std::to_string(h) + "x" +
                     std::to_string(w));
        const auto data = testData<T>(rng, size_t(h) * w);
        TestMatrix<T> m(shape, h, w, data);
        Guarded<T> vec(w, dstOff(shape) ? sizeof(T) : 0);
        vec.assign(testData<T>(rng, w));
        ASSERT_EQ(
            m.listed ? d2l(vec.data(), m.ptrs(), w, h) : d2(vec.data(), w, m.base(), m.step, h),
            qelStatusOk);
        for (int r = 0; r < h; ++r) {
          std::vector<T> want(w);
          for (int c = 0; c < w; ++c) {
            const T a = data[size_t(r) * w + c];
            if constexpr (std::is_same_v<T, qel16s>)
              want[c] = rowref::subSat(a, vec[c]);
            else
              want[c] = a - vec[c];
          }
          ASSERT_TRUE(qtest::sameArrays(m.row(r), want.data(), w)) << "row " << r;
          for (int c = w; c < m.step; ++c) ASSERT_EQ(m.row(r)[c], padding<T>());
        }
        EXPECT_TRUE(m.guardsIntact());
      }
}

TEST(RowsColumns, SubRowSubtractsFromEveryRow) {
  checkSubRow<float>(qelsSubRow_32f_D2, qelsSubRow_32f_D2L, 211);
  checkSubRow<qel16s>(qelsSubRow_16s_D2, qelsSubRow_16s_D2L, 212);
}

// The 16-bit subtraction saturates in the vector body and in the tail.
TEST(RowsColumns, SubRow16sSaturatesInFirstAndLastColumn) {
  struct Case {
    qel16s start, sub, want;
  };
  for (Case c : {Case{32767, -1, 32767}, Case{-32768, 1, -32768}})
    for (int w : {16, 17, 9})
      for (bool listed : {false, true}) {
        SCOPED_TRACE(std::to_string(c.start) + " width " + std::to_string(w));
        TestMatrix<qel16s> m(listed ? Shape::D2LAligned : Shape::D2Aligned, 2, w,
                             std::vector<qel16s>(size_t(2) * w, c.start));
        Guarded<qel16s> vec(w);
        vec.assign(std::vector<qel16s>(w, 0));
        vec[0] = vec[w - 1] = c.sub;
        ASSERT_EQ(listed ? qelsSubRow_16s_D2L(vec.data(), m.ptrs(), w, 2)
                         : qelsSubRow_16s_D2(vec.data(), w, m.base(), m.step, 2),
                  qelStatusOk);
        for (int r = 0; r < 2; ++r) {
          EXPECT_EQ(m.row(r)[0], c.want);
          EXPECT_EQ(m.row(r)[w - 1], c.want);
          EXPECT_EQ(m.row(r)[w / 2], c.start);
        }
      }
}

// Packed source into a strided destination; the destination's padding
// keeps its canary bytes. Offsets: {src misalign, dst misalign, extra step}.
template <typename T, typename F>
void checkCopyColumn(F copy, uint32_t seed) {
  qtest::Rng rng(seed);
  const int cases[][3] = {{0, 0, 0}, {0, 0, 1}, {int(sizeof(T)), 0, 0}, {0, int(sizeof(T)), 0}};
  for (auto& cs : cases)
    for (int h : kHeights)
      for (int w : kWidths) {
        SCOPED_TRACE(std::to_string(h) + "x" + std::to_string(w) + " case " +
                     std::to_string(&cs - cases));
        const int step = (w + kLanes<T> - 1) / kLanes<T> * kLanes<T> + cs[2];
        Guarded<T> src(size_t(h) * w, cs[0]);
        src.assign(testData<T>(rng, size_t(h) * w));
        Guarded<T> dst(size_t(h) * step, cs[1]);
        Guarded<T> canary(1);
        ASSERT_EQ(copy(src.data(), w, dst.data(), step, h), qelStatusOk);
        for (int r = 0; r < h; ++r) {
          ASSERT_TRUE(
              qtest::sameArrays(dst.data() + size_t(r) * step, src.data() + size_t(r) * w, w));
          for (int c = w; c < step; ++c)
            ASSERT_TRUE(qtest::sameBits(dst.data()[size_t(r) * step + c], canary[0]));
        }
        EXPECT_TRUE(dst.guardsIntact());
      }
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

template <typename T>
void checkIndirect(uint32_t seed,
                   qelStatus (*d2)(const T*, int, int, T*, const qel32s*, int, int, int),
                   qelStatus (*d2l)(const T* const*, int, T* const*, const qel32s*, int, int)) {
  qtest::Rng rng(seed);
  for (int srcLen : {1, 7, 39})
    for (int dstLen : {1, 5, 13})
      for (int h : {1, 3, 13})
        for (bool listed : {false, true}) {
          SCOPED_TRACE(std::to_string(srcLen) + " " + std::to_string(dstLen) + " " +
                       std::to_string(h) + (listed ? " D2L" : " D2"));
          const int srcStep = srcLen + 2, dstStep = dstLen + 1;
          Guarded<T> src(size_t(h) * srcStep, sizeof(T));
          src.assign(testData<T>(rng, size_t(h) * srcStep));
          Guarded<T> dst(size_t(h) * dstStep);
          std::vector<int> ind(dstLen);
          for (auto& i : ind) i = rng.integer(0, srcLen - 1);
          std::vector<const T*> srcRows;
          std::vector<T*> dstRows;
          for (int r = 0; r < h; ++r) {
            srcRows.push_back(src.data() + size_t(r) * srcStep);
            dstRows.push_back(dst.data() + size_t(r) * dstStep);
          }
          ASSERT_EQ(
              listed ? d2l(srcRows.data(), srcLen, dstRows.data(), ind.data(), dstLen, h)
                     : d2(src.data(), srcLen, srcStep, dst.data(), ind.data(), dstLen, dstStep, h),
              qelStatusOk);
          Guarded<T> canary(1);
          for (int r = 0; r < h; ++r) {
            for (int i = 0; i < dstLen; ++i)
              ASSERT_TRUE(qtest::sameBits(dstRows[r][i], srcRows[r][ind[i]]));
            ASSERT_TRUE(qtest::sameBits(dstRows[r][dstLen], canary[0]));
          }
          EXPECT_TRUE(dst.guardsIntact());
        }
}

TEST(RowsColumns, IndirectCopiesGatherColumns) {
  checkIndirect<float>(401, qelsCopyColumn_Indirect_32f_D2, qelsCopyColumn_Indirect_32f_D2L);
  checkIndirect<double>(402, qelsCopyColumn_Indirect_64f_D2, qelsCopyColumn_Indirect_64f_D2L);
  checkIndirect<qel16s>(403, qelsCopyColumn_Indirect_16s_D2, qelsCopyColumn_Indirect_16s_D2L);
}

// A bad index at i stops the call with row 0 written before i and nothing
// else touched.
TEST(RowsColumns, IndirectCopyStopsAtBadIndexInRowZero) {
  for (int bad : {-1, 6, 1000})
    for (int at : {0, 3})
      for (bool listed : {false, true}) {
        qtest::Rng rng(404);
        Guarded<float> src(3 * 8);
        src.assign(testData<float>(rng, 24));
        Guarded<float> dst(3 * 5);
        int ind[5] = {5, 0, 2, 4, 1};
        ind[at] = bad;
        const float* srcRows[3] = {src.data(), src.data() + 8, src.data() + 16};
        float* dstRows[3] = {dst.data(), dst.data() + 5, dst.data() + 10};
        ASSERT_EQ(listed
                      ? qelsCopyColumn_Indirect_32f_D2L(srcRows, 6, dstRows, ind, 5, 3)
                      : qelsCopyColumn_Indirect_32f_D2(src.data(), 6, 8, dst.data(), ind, 5, 5, 3),
                  qelStatusSize);
        for (int i = 0; i < at; ++i) EXPECT_EQ(dst[i], src[ind[i]]);
        Guarded<float> canary(1);
        for (int k = at; k < 15; ++k) EXPECT_TRUE(qtest::sameBits(dst[k], canary[0])) << k;
        EXPECT_TRUE(dst.guardsIntact());
      }
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

// ---------------------------------------------------------------- edge cases

TEST(RowsColumns, AddNRowsStrideBoundary) {
  Guarded<float> src(4 * 8);
  src.assign(std::vector<float>(32, 1.5f));
  const int ind[2] = {0, 3};
  const unsigned short add[2] = {0, 0};
  float dst[3] = {0, 0, 0};
  EXPECT_EQ(qelsAddNRows_32f_D2(src.data(), 4, 5, 8, ind, add, 2, dst, 3, 2.0f), qelStatusOk);
  EXPECT_EQ(dst[0], 5.0f);
  EXPECT_EQ(dst[2], 5.0f);
  EXPECT_EQ(qelsAddNRows_32f_D2(src.data(), 4, 5, 7, ind, add, 2, dst, 3, 2.0f), qelStatusStride);
}

TEST(RowsColumns, AddAllRowSumOfZeroMatrixKeepsAccumulator) {
  for (Shape shape : {Shape::D2Aligned, Shape::D2OddStride, Shape::D2LOneRowOff}) {
    TestMatrix<float> m(shape, 5, 13, std::vector<float>(65, 0.0f));
    qtest::Rng rng(501);
    const auto prior = testData<float>(rng, 13);
    Guarded<float> acc(13);
    acc.assign(prior);
    ASSERT_EQ(m.listed ? qelsAddAllRowSum_32f_D2L(m.rows.data(), 5, acc.data(), 13)
                       : qelsAddAllRowSum_32f_D2(m.base(), m.step, 5, acc.data(), 13),
              qelStatusOk);
    EXPECT_TRUE(qtest::sameArrays(acc.data(), prior.data(), 13));
  }
}

TEST(RowsColumns, SumRowOfWidthOneCopies) {
  const std::vector<float> col = {-0.0f, 3.5f, -1e-40f, std::numeric_limits<float>::infinity(),
                                  7.0f};
  for (Shape shape : {Shape::D2Aligned, Shape::D2SrcOff, Shape::D2LOneRowOff}) {
    TestMatrix<float> m(shape, 5, 1, col);
    float dst[5];
    ASSERT_EQ(m.listed ? qelsSumRow_32f_D2L(m.rows.data(), 1, dst, 5)
                       : qelsSumRow_32f_D2(m.base(), 1, m.step, dst, 5),
              qelStatusOk);
    EXPECT_TRUE(qtest::sameArrays(dst, col.data(), 5));
  }
}

// Rounding to nearest even after the scale, and saturation at both limits.
TEST(RowsColumns, SixteenBitScaledSumsRoundToEvenAndSaturate) {
  struct Case {
    std::vector<qel16s> column;
    int scaleFactor;
    qel32s want;
  };
  const Case cases[] = {{{1, 2}, 1, 2},
                        {{2, 3}, 1, 2},
                        {{3, 4}, 1, 4},
                        {{-1, -2}, 1, -2},
                        {{5, 0}, 1, 2},
                        {{7}, 1, 4},
                        {{7, 1}, -1, 16},
                        {{32767, 32767}, 0, 65534},
                        {{-3, 0, 0}, 2, -1},
                        {{32767, 32767, 32767, 32767, 32767}, -15, INT32_MAX},
                        {{-32768, -32768, -32768}, -15, INT32_MIN},
                        {{32767, 32767, 32767, 32767}, -14, 131068 << 14},
                        {{-32768, -32768}, -15, INT32_MIN}};
  for (const auto& c : cases) {
    const int h = static_cast<int>(c.column.size());
    SCOPED_TRACE("height " + std::to_string(h) + " first " + std::to_string(c.column[0]) +
                 " scaleFactor " + std::to_string(c.scaleFactor));
    for (Shape shape : {Shape::D2Aligned, Shape::D2SrcOff, Shape::D2LAligned}) {
      // The values as one column (three copies side by side) and as one row.
      std::vector<qel16s> asColumns;
      for (qel16s x : c.column) asColumns.insert(asColumns.end(), 3, x);
      TestMatrix<qel16s> mc(shape, h, 3, asColumns);
      TestMatrix<qel16s> mr(shape, 1, h, c.column);
      Guarded<qel32s> cols(3), row(1);
      ASSERT_EQ(
          mc.listed
              ? qelsSumColumn_16s32s_D2LSfs(mc.rows.data(), h, cols.data(), 3, c.scaleFactor)
              : qelsSumColumn_16s32s_D2Sfs(mc.base(), mc.step, h, cols.data(), 3, c.scaleFactor),
          qelStatusOk);
      ASSERT_EQ(mr.listed
                    ? qelsSumRow_16s32s_D2LSfs(mr.rows.data(), h, row.data(), 1, c.scaleFactor)
                    : qelsSumRow_16s32s_D2Sfs(mr.base(), h, mr.step, row.data(), 1, c.scaleFactor),
                qelStatusOk);
      for (int k = 0; k < 3; ++k) EXPECT_EQ(cols[k], c.want) << shapeName(shape);
      EXPECT_EQ(row[0], c.want) << shapeName(shape);
    }
  }
}

// Saturated and small negative results side by side in one long
// destination: the in-place conversion must keep every one of them.
TEST(RowsColumns, SixteenBitScaledSumsSaturateAmongOrdinaryResults) {
  const int w = 24, h = 3;
  std::vector<qel16s> data(size_t(h) * w);
  for (int r = 0; r < h; ++r)
    for (int c = 0; c < w; ++c)
      data[size_t(r) * w + c] =
          static_cast<qel16s>(c % 3 == 0 ? 32767 : (c % 3 == 1 ? -1 : -32768));
  for (int sf : {-16, 0}) {
    for (Shape shape : {Shape::D2Aligned, Shape::D2SrcOff, Shape::D2LAligned}) {
      SCOPED_TRACE(std::string(shapeName(shape)) + " scaleFactor " + std::to_string(sf));
      TestMatrix<qel16s> m(shape, h, w, data);
      Guarded<qel32s> dst(w);
      ASSERT_EQ(m.listed ? qelsSumColumn_16s32s_D2LSfs(m.rows.data(), h, dst.data(), w, sf)
                         : qelsSumColumn_16s32s_D2Sfs(m.base(), m.step, h, dst.data(), w, sf),
                qelStatusOk);
      for (int c = 0; c < w; ++c) {
        const qel32s want = c % 3 == 0
                                ? (sf == 0 ? 3 * 32767 : INT32_MAX)
                                : (c % 3 == 1 ? -3 << -sf : (sf == 0 ? -3 * 32768 : INT32_MIN));
        EXPECT_EQ(dst[c], want) << "column " << c;
      }
    }
  }
}

}  // namespace
