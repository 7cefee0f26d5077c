// Internal layout of the model-estimation objects that other subsystems
// read directly.
#ifndef QELSR_MODEL_H
#define QELSR_MODEL_H

#include <cstdint>

#include "qelsr.h"

// One allocation holds, from its first 16-byte boundary on: these fixed
// fields; the nBlocks block sizes right behind them; the nRows row pointers
// at the next 16-byte boundary; then the rows in matrix order, each on a
// 16-byte boundary and each as long as its own block. The scores load the
// rows with aligned instructions, so the alignment is part of the contract.
struct BlockDMatrix {
  void** ppRow;        // nRows entries: the stored columns of matrix row r
  qel32s* pBlockSize;  // nBlocks entries: side lengths down the diagonal
  void* pAlloc;        // start of the allocation, handed back on release
  std::uint16_t nBlocks;
  std::uint16_t nRows;  // sum of the block sizes: the matrix order
};

#endif
