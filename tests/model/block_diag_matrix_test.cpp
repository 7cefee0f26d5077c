// Building and releasing block-diagonal matrices: layout, alignment,
// contents, argument checks and allocation failure.
#include <cstdint>
#include <cstring>
#include <vector>

#include "block_diag_matrix_reference.h"
#include "model/model.h"
#include "test_support.h"

namespace {

uintptr_t addr(const void* p) { return reinterpret_cast<uintptr_t>(p); }

// Caller rows of a block-diagonal matrix: row r of block b holds sizes[b]
// values, all distinct so a misplaced copy shows.
template <typename T>
std::vector<std::vector<T>> makeRows(const std::vector<int>& sizes) {
  std::vector<std::vector<T>> rows;
  int n = 0;
  for (int side : sizes)
    for (int k = 0; k < side; ++k) {
      std::vector<T> row(side);
      for (int j = 0; j < side; ++j) row[j] = static_cast<T>(++n * 3 - 1000);
      rows.push_back(row);
    }
  return rows;
}

using qblk::initAlloc;

template <typename T>
qelStatus release(BlockDMatrix* m) {
  if constexpr (std::is_same_v<T, qel16s>)
    return qelsBlockDMatrixFree_16s(m);
  else if constexpr (std::is_same_v<T, qel32f>)
    return qelsBlockDMatrixFree_32f(m);
  else
    return qelsBlockDMatrixFree_64f(m);
}

template <typename T>
void checkLayoutAndContents(const std::vector<int>& sizes) {
  SCOPED_TRACE(::testing::Message() << "element size " << sizeof(T) << ", blocks " << sizes.size());
  auto rows = makeRows<T>(sizes);
  const std::vector<const T*> src = qblk::pointers(rows);
  const long live = qelcoreTestLiveBlocks();
  BlockDMatrix* m = nullptr;
  ASSERT_EQ(initAlloc<T>(&m, src.data(), sizes.data(), static_cast<int>(sizes.size())),
            qelStatusOk);
  ASSERT_NE(m, nullptr);
  EXPECT_EQ(qelcoreTestLiveBlocks(), live + 1);  // one allocation

  // Fixed fields at the first 16-byte boundary of the block, the sizes right
  // behind them, the row pointers at the next boundary, then the rows.
  EXPECT_EQ(addr(m) % 16, 0u);
  EXPECT_GE(addr(m), addr(m->pAlloc));
  EXPECT_LT(addr(m) - addr(m->pAlloc), 16u);
  EXPECT_EQ(addr(m->pBlockSize), addr(m) + sizeof(BlockDMatrix));
  const uintptr_t sizesEnd = addr(m->pBlockSize) + sizeof(qel32s) * sizes.size();
  EXPECT_EQ(addr(m->ppRow), (sizesEnd + 15) / 16 * 16);
  EXPECT_EQ(m->nBlocks, sizes.size());
  ASSERT_EQ(m->nRows, rows.size());
  for (size_t b = 0; b < sizes.size(); ++b) EXPECT_EQ(m->pBlockSize[b], sizes[b]);

  uintptr_t next = (addr(m->ppRow) + sizeof(void*) * rows.size() + 15) / 16 * 16;
  for (size_t r = 0; r < rows.size(); ++r) {
    EXPECT_EQ(addr(m->ppRow[r]), next) << "row " << r;
    EXPECT_EQ(addr(m->ppRow[r]) % 16, 0u);
    EXPECT_TRUE(
        qtest::sameArrays(static_cast<const T*>(m->ppRow[r]), rows[r].data(), rows[r].size()))
        << "row " << r;
    next = (next + sizeof(T) * rows[r].size() + 15) / 16 * 16;
  }
  // The caller's rows may go once the object is built.
  for (auto& r : rows) std::fill(r.begin(), r.end(), T(7));
  EXPECT_NE(static_cast<const T*>(m->ppRow[0])[0], T(7));

  EXPECT_EQ(release<T>(m), qelStatusOk);
  EXPECT_EQ(qelcoreTestLiveBlocks(), live);
}

TEST(BlockDiagMatrix, LayoutAlignmentAndContentsOfEveryFlavour) {
  const std::vector<std::vector<int>> cases = {{3},  {1, 1, 1, 1}, {5, 2, 7, 1, 4}, {1},
                                               {16}, {13, 3, 9},   {111},           {2, 40, 1}};
  for (auto& sizes : cases) {
    checkLayoutAndContents<qel16s>(sizes);
    checkLayoutAndContents<qel32f>(sizes);
    checkLayoutAndContents<qel64f>(sizes);
  }
}

TEST(BlockDiagMatrix, ArgumentChecksInOrderWriteNothing) {
  const int sizes[] = {2, 3};
  const int badSizes[] = {2, 0, 3};
  const int negSizes[] = {-1};
  const qel32f row[3] = {1, 2, 3};
  const qel32f* src[5] = {row, row, row, row, row};
  BlockDMatrix* const canary = reinterpret_cast<BlockDMatrix*>(uintptr_t{0xA5A5A5A5A5A5A5A5u});
  struct Case {
    const char* what;
    bool nullOut;
    const qel32f* const* src;
    const int* sizes;
    int n;
    qelStatus want;
  } cases[] = {
      {"null destination", true, src, sizes, 2, qelStatusNullPtr},
      {"null rows", false, nullptr, sizes, 2, qelStatusNullPtr},
      {"null sizes", false, src, nullptr, 2, qelStatusNullPtr},
      {"null sizes and no blocks", false, src, nullptr, 0, qelStatusNullPtr},
      {"null destination and zero size", true, src, badSizes, 3, qelStatusNullPtr},
      {"no blocks", false, src, sizes, 0, qelStatusSize},
      {"negative block count", false, src, sizes, -3, qelStatusSize},
      {"zero block size", false, src, badSizes, 3, qelStatusSize},
      {"negative block size", false, src, negSizes, 1, qelStatusSize},
  };
  for (const Case& c : cases) {
    const long live = qelcoreTestLiveBlocks();
    BlockDMatrix* out = canary;
    EXPECT_EQ(qelsBlockDMatrixInitAlloc_32f(c.nullOut ? nullptr : &out, c.src, c.sizes, c.n),
              c.want)
        << c.what;
    EXPECT_EQ(out, canary) << c.what;
    EXPECT_EQ(qelcoreTestLiveBlocks(), live) << c.what << ": nothing may be allocated";
  }
  EXPECT_EQ(qelsBlockDMatrixFree_16s(nullptr), qelStatusNullPtr);
  EXPECT_EQ(qelsBlockDMatrixFree_32f(nullptr), qelStatusNullPtr);
  EXPECT_EQ(qelsBlockDMatrixFree_64f(nullptr), qelStatusNullPtr);
}

template <typename T>
void checkFailedAllocation() {
  const std::vector<int> sizes = {4, 1, 3};
  const auto rows = makeRows<T>(sizes);
  BlockDMatrix* const canary = reinterpret_cast<BlockDMatrix*>(uintptr_t{0x5A5A5A5A5A5A5A5Au});
  qtest::FailingAllocator failing(0);
  BlockDMatrix* out = canary;
  EXPECT_EQ(initAlloc<T>(&out, qblk::pointers(rows).data(), sizes.data(), 3), qelStatusMemAlloc);
  EXPECT_EQ(out, canary);
  EXPECT_TRUE(failing.nothingLeaked());
}

TEST(BlockDiagMatrix, FailedAllocationReturnsMemAllocAndLeaksNothing) {
  checkFailedAllocation<qel16s>();
  checkFailedAllocation<qel32f>();
  checkFailedAllocation<qel64f>();
}

TEST(BlockDiagMatrix, AnyFlavourReleasesAnyObject) {
  const std::vector<int> sizes = {2, 2};
  const auto rows = makeRows<qel64f>(sizes);
  const long live = qelcoreTestLiveBlocks();
  BlockDMatrix* m = nullptr;
  ASSERT_EQ(qelsBlockDMatrixInitAlloc_64f(&m, qblk::pointers(rows).data(), sizes.data(), 2),
            qelStatusOk);
  EXPECT_EQ(qelsBlockDMatrixFree_16s(m), qelStatusOk);
  EXPECT_EQ(qelcoreTestLiveBlocks(), live);
}

}  // namespace
