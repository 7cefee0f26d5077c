// Block-diagonal matrices for tests: the flavour chosen by element type,
// owning handles, and matrices with known rows to score against.
#ifndef QELSR_BLOCK_DIAG_MATRIX_REFERENCE_H
#define QELSR_BLOCK_DIAG_MATRIX_REFERENCE_H

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <type_traits>
#include <vector>

#include "model/model.h"
#include "test_support.h"

namespace qblk {

template <typename T>
using Rows = std::vector<std::vector<T>>;

template <typename T>
qelStatus initAlloc(BlockDMatrix** pp, const T* const* src, const int* sizes, int n) {
  if constexpr (std::is_same_v<T, qel16s>)
    return qelsBlockDMatrixInitAlloc_16s(pp, src, sizes, n);
  else if constexpr (std::is_same_v<T, qel32f>)
    return qelsBlockDMatrixInitAlloc_32f(pp, src, sizes, n);
  else
    return qelsBlockDMatrixInitAlloc_64f(pp, src, sizes, n);
}

// Any flavour releases any object.
struct Release {
  void operator()(BlockDMatrix* m) const { qelsBlockDMatrixFree_32f(m); }
};
using Handle = std::unique_ptr<BlockDMatrix, Release>;

template <typename T>
std::vector<const T*> pointers(const Rows<T>& rows) {
  std::vector<const T*> p;
  for (auto& r : rows) p.push_back(r.data());
  return p;
}

template <typename T>
Handle build(const std::vector<int>& sizes, const Rows<T>& rows) {
  BlockDMatrix* m = nullptr;
  EXPECT_EQ(initAlloc<T>(&m, pointers(rows).data(), sizes.data(), static_cast<int>(sizes.size())),
            qelStatusOk);
  return Handle(m);
}

// A symmetric block-diagonal inverse covariance with a dominant diagonal,
// given as the rows of its blocks.
template <typename T>
Rows<T> symmetricRows(const std::vector<int>& sizes, uint32_t seed) {
  qtest::Rng rng(seed);
  Rows<T> rows;
  for (int side : sizes) {
    Rows<T> blk(side, std::vector<T>(side));
    for (int k = 0; k < side; ++k)
      for (int j = 0; j <= k; ++j)
        blk[k][j] = blk[j][k] =
            static_cast<T>(j == k ? rng.uniformD(1, 3) : rng.uniformD(-0.3, 0.3));
    for (auto& r : blk) rows.push_back(r);
  }
  return rows;
}

}  // namespace qblk

#endif
