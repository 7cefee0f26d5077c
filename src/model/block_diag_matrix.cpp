// Building and releasing block-diagonal matrices.
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "base/base.h"
#include "model/model.h"

namespace {

inline std::size_t roundUp16(std::size_t n) { return (n + 15u) & ~static_cast<std::size_t>(15u); }

// Builds the object in one allocation. The element type only sets the row
// lengths in bytes; the three flavours share the layout.
template <typename T>
qelStatus initAlloc(BlockDMatrix** ppBlockDMatrix, const T* const* ppSrc, const int* pBlockSize,
                    int nBlocks) {
  if (ppBlockDMatrix == nullptr || ppSrc == nullptr || pBlockSize == nullptr)
    return qelStatusNullPtr;
  if (nBlocks < 1) return qelStatusSize;
  long long rows = 0;
  for (int b = 0; b < nBlocks; ++b) {
    if (pBlockSize[b] < 1) return qelStatusSize;
    rows += pBlockSize[b];
  }

  // Offsets from the first 16-byte boundary of the block; 15 bytes of slack
  // let that boundary lie anywhere in the first 16 bytes.
  const std::size_t sizesAt = sizeof(BlockDMatrix);
  const std::size_t pointersAt =
      roundUp16(sizesAt + sizeof(qel32s) * static_cast<std::size_t>(nBlocks));
  std::size_t end = roundUp16(pointersAt + sizeof(void*) * static_cast<std::size_t>(rows));
  for (int b = 0; b < nBlocks; ++b)
    end += static_cast<std::size_t>(pBlockSize[b]) * roundUp16(sizeof(T) * pBlockSize[b]);
  const std::size_t bytes = end + 15u;
  // The allocator takes a 32-bit count: a larger matrix cannot be had.
  if (bytes > static_cast<std::size_t>(INT32_MAX)) return qelStatusMemAlloc;
  qel8u* block = qelsMalloc_8u(static_cast<int>(bytes));
  if (block == nullptr) return qelStatusMemAlloc;
  // Zero the whole block so the padding behind short rows holds no garbage.
  std::memset(block, 0, bytes);

  qel8u* base = block + ((16u - (reinterpret_cast<std::uintptr_t>(block) & 15u)) & 15u);
  BlockDMatrix* m = reinterpret_cast<BlockDMatrix*>(base);
  m->pBlockSize = reinterpret_cast<qel32s*>(base + sizesAt);
  m->ppRow = reinterpret_cast<void**>(base + pointersAt);
  m->pAlloc = block;
  // Both counts are 16 bits wide by layout; larger matrices are outside the
  // object's range and are the caller's to avoid.
  m->nBlocks = static_cast<std::uint16_t>(nBlocks);
  m->nRows = static_cast<std::uint16_t>(rows);
  std::memcpy(m->pBlockSize, pBlockSize, sizeof(qel32s) * static_cast<std::size_t>(nBlocks));

  std::size_t at = roundUp16(pointersAt + sizeof(void*) * static_cast<std::size_t>(rows));
  std::size_t r = 0;
  for (int b = 0; b < nBlocks; ++b) {
    const std::size_t side = static_cast<std::size_t>(pBlockSize[b]);
    for (std::size_t k = 0; k < side; ++k, ++r) {
      T* row = reinterpret_cast<T*>(base + at);
      m->ppRow[r] = row;
      std::memcpy(row, ppSrc[r], sizeof(T) * side);
      at = roundUp16(at + sizeof(T) * side);
    }
  }
  *ppBlockDMatrix = m;
  return qelStatusOk;
}

qelStatus release(BlockDMatrix* pBlockDMatrix) {
  if (pBlockDMatrix == nullptr) return qelStatusNullPtr;
  qelsFree(pBlockDMatrix->pAlloc);
  return qelStatusOk;
}

}  // namespace

extern "C" {

QELSR_API qelStatus qelsBlockDMatrixInitAlloc_16s(BlockDMatrix** ppBlockDMatrix,
                                                  const qel16s* const* ppSrc, const int* pBlockSize,
                                                  int nBlocks) {
  return initAlloc<qel16s>(ppBlockDMatrix, ppSrc, pBlockSize, nBlocks);
}

QELSR_API qelStatus qelsBlockDMatrixInitAlloc_32f(BlockDMatrix** ppBlockDMatrix,
                                                  const qel32f* const* ppSrc, const int* pBlockSize,
                                                  int nBlocks) {
  return initAlloc<qel32f>(ppBlockDMatrix, ppSrc, pBlockSize, nBlocks);
}

QELSR_API qelStatus qelsBlockDMatrixInitAlloc_64f(BlockDMatrix** ppBlockDMatrix,
                                                  const qel64f* const* ppSrc, const int* pBlockSize,
                                                  int nBlocks) {
  return initAlloc<qel64f>(ppBlockDMatrix, ppSrc, pBlockSize, nBlocks);
}

QELSR_API qelStatus qelsBlockDMatrixFree_16s(BlockDMatrix* pBlockDMatrix) {
  return release(pBlockDMatrix);
}

QELSR_API qelStatus qelsBlockDMatrixFree_32f(BlockDMatrix* pBlockDMatrix) {
  return release(pBlockDMatrix);
}

QELSR_API qelStatus qelsBlockDMatrixFree_64f(BlockDMatrix* pBlockDMatrix) {
  return release(pBlockDMatrix);
}

}  // extern "C"
