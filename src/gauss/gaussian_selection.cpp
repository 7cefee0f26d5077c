// Bit tables of Gaussian selection: shortlists set up as bit rows, and sign
// tables that OR shortlist rows into one bit row for each frame.
//
// Bit p of a row lives in byte p / 8 under the mask 0x80 >> (p % 8), so the
// first bit of a row is the most significant bit of its first byte. Every
// check, including the ones that must read the index data, runs before the
// first byte is written: a failing call leaves every table as it was.
#include <cstdint>
#include <cstring>

#include "gauss/gauss.h"

namespace {

// Bytes that hold `bits` bits; 64-bit so that offset plus length cannot wrap.
inline std::int64_t ceil8(std::int64_t bits) { return (bits + 7) / 8; }

inline qel8u bitMask(std::int64_t p) { return static_cast<qel8u>(0x80u >> (p & 7)); }

// True when every one of the `count` entries lies in 0..limit-1.
bool indicesInRange(const qel32s* pIndx, std::int64_t count, int limit) {
  for (std::int64_t i = 0; i < count; ++i)
    if (pIndx[i] < 0 || pIndx[i] >= limit) return false;
  return true;
}

// Every count at least 1; the total is returned through pTotal.
bool countsPositive(const qel32s* pCounts, int n, std::int64_t* pTotal) {
  std::int64_t total = 0;
  for (int i = 0; i < n; ++i) {
    if (pCounts[i] < 1) return false;
    total += pCounts[i];
  }
  *pTotal = total;
  return true;
}

// The fast path pays off for short rows only: the whole sign row comes from
// one 32-bit word per selected table row. The 32-byte margin guarantees that
// the word read at byte bitOffset / 8 stays inside every table row.
constexpr int kFastMinBits = 4;
constexpr int kFastMaxBits = 24;
constexpr std::int64_t kFastRowMargin = 32;
constexpr std::int64_t kFastMinTableBytes = 4;

// The plain path. pSign must hold height * ceil8(nBits) bytes; `next(r)`
// returns the run of indices of sign row r and its length. The indices have
// been checked.
template <typename NextRun>
void buildSignTablePlain(const qel8u* const* ppTable, int bitOffset, qel8u* pSign, int height,
                         int nBits, NextRun next) {
  const std::int64_t rowBytes = ceil8(nBits);
  std::memset(pSign, 0, static_cast<std::size_t>(height * rowBytes));
  const std::int64_t byteOff = bitOffset / 8;
  const int shift = bitOffset % 8;
  // Source bytes that carry bits of the range, counted from byteOff; the
  // byte after the last of them is never read.
  const std::int64_t srcBytes = ceil8(shift + static_cast<std::int64_t>(nBits));
  // Bits of the last byte beyond nBits stay 0.
  const qel8u lastMask = static_cast<qel8u>(0xFFu << (rowBytes * 8 - nBits));
  for (int r = 0; r < height; ++r) {
    qel8u* dst = pSign + r * rowBytes;
    int count;
    const qel32s* idx = next(r, &count);
    for (int j = 0; j < count; ++j) {
      const qel8u* src = ppTable[idx[j]] + byteOff;
      if (shift == 0) {
        for (std::int64_t k = 0; k < rowBytes; ++k) dst[k] |= src[k];
      } else {
        for (std::int64_t k = 0; k < rowBytes; ++k) {
          unsigned v = static_cast<unsigned>(src[k]) << shift;
          if (k + 1 < srcBytes) v |= static_cast<unsigned>(src[k + 1]) >> (8 - shift);
          dst[k] |= static_cast<qel8u>(v);
        }
      }
    }
    dst[rowBytes - 1] &= lastMask;
  }
}

// Size and stride checks shared by both sign-table builders.
qelStatus checkSignTableSizes(int tableRows, int rowBytes, int bitOffset, int height, int nBits) {
  if (tableRows < 1 || rowBytes < 1 || nBits < 1 || height < 1 || bitOffset < 0)
    return qelStatusSize;
  if (rowBytes < ceil8(static_cast<std::int64_t>(bitOffset) + nBits)) return qelStatusStride;
  return qelStatusOk;
}

qelStatus checkShortlistSizes(int height, int nCols, int rowBytes, int bitOffset) {
  if (height < 1 || nCols < 1 || rowBytes < 1 || bitOffset < 0) return qelStatusSize;
  return qelStatusOk;
}

bool shortlistStrideOk(int rowBytes, int nCols, int bitOffset) {
  return rowBytes >= ceil8(static_cast<std::int64_t>(nCols) + bitOffset);
}

// Toggles, not sets: a bit named twice returns to its former state.
inline void toggleBit(qel8u* row, std::int64_t p) { row[p >> 3] ^= bitMask(p); }

// The four shortlist fills: the checks in their order, then the toggles.
// `n` consecutive runs of indices, run r holding pCounts[r] entries (the
// Var forms) or `per`. By row, each index names bit bitOffset + index of
// row r; by column, bit bitOffset + r of the row the index names. The row
// form with counts looks at them before the stride, the column form after.
template <bool ByColumn>
qelStatus fillShortlist(const qel32s* pIndx, bool var, const qel32s* pCounts, int per,
                        qel8u* const* ppDst, int height, int rowBytes, int bitOffset, int nCols) {
  if (ppDst == nullptr || pIndx == nullptr || (var && pCounts == nullptr)) return qelStatusNullPtr;
  if (!var && per < 1) return qelStatusSize;
  if (const qelStatus st = checkShortlistSizes(height, nCols, rowBytes, bitOffset);
      st != qelStatusOk)
    return st;
  const int n = ByColumn ? nCols : height;
  std::int64_t total = static_cast<std::int64_t>(per) * n;
  if (var && !ByColumn && !countsPositive(pCounts, n, &total)) return qelStatusSize;
  if (!shortlistStrideOk(rowBytes, nCols, bitOffset)) return qelStatusStride;
  if (var && ByColumn && !countsPositive(pCounts, n, &total)) return qelStatusSize;
  if (!indicesInRange(pIndx, total, ByColumn ? height : nCols)) return qelStatusBadArg;
  const qel32s* idx = pIndx;
  for (int r = 0; r < n; ++r)
    for (int j = 0, count = var ? pCounts[r] : per; j < count; ++j, ++idx) {
      if constexpr (ByColumn)
        toggleBit(ppDst[*idx], static_cast<std::int64_t>(bitOffset) + r);
      else
        toggleBit(ppDst[r], static_cast<std::int64_t>(bitOffset) + *idx);
    }
  return qelStatusOk;
}

}  // namespace

extern "C" {

// Finds the index range first and reports 1, with nothing written, when it
// leaves the table. Each sign row is one 32-bit word: the OR of the words
// read at byte bitOffset / 8 of the selected rows, turned to
// most-significant-byte-first order, shifted by bitOffset % 8, cut to nBits
// and turned back. All four bytes are stored and the next row overwrites the
// excess; the rows whose word would reach past the end of the table are
// merged into the last four bytes of the table instead, so no byte beyond
// it is ever written. Needs 4 <= nBits <= 24, a 32-byte margin in every table
// row behind the bits in use, and a table of more than 4 bytes.
int qelsBuildSignTable_8u1u_M7(const qel32s* pIndx, int nPerRow, const qel8u* const* ppTable,
                               int tableRows, int bitOffset, qel8u* pSign, int height, int nBits) {
  const std::int64_t count = static_cast<std::int64_t>(nPerRow) * height;
  qel32s lo = pIndx[0], hi = pIndx[0];
  for (std::int64_t i = 1; i < count; ++i) {
    lo = pIndx[i] < lo ? pIndx[i] : lo;
    hi = pIndx[i] > hi ? pIndx[i] : hi;
  }
  if (lo < 0 || hi >= tableRows) return 1;

  const std::int64_t rowBytes = ceil8(nBits);
  const std::int64_t total = rowBytes * height;
  const std::int64_t byteOff = bitOffset / 8;
  const int shift = bitOffset % 8;
  const std::uint32_t mask = ~std::uint32_t{0} << (32 - nBits);
  const qel32s* idx = pIndx;
  for (int r = 0; r < height; ++r, idx += nPerRow) {
    std::uint32_t w = 0;
    for (int j = 0; j < nPerRow; ++j) {
      std::uint32_t v;
      std::memcpy(&v, ppTable[idx[j]] + byteOff, 4);
      w |= v;
    }
    const std::uint32_t out = __builtin_bswap32((__builtin_bswap32(w) << shift) & mask);
    const std::int64_t pos = r * rowBytes;
    if (pos + 4 <= total) {
      std::memcpy(pSign + pos, &out, 4);
    } else {
      qel8u window[4];
      qel8u* const end4 = pSign + total - 4;
      std::memcpy(window, end4, 4);
      std::memcpy(window + (pos - (total - 4)), &out, static_cast<std::size_t>(rowBytes));
      std::memcpy(end4, window, 4);
    }
  }
  return 0;
}

QELSR_API qelStatus qelsBuildSignTable_8u1u(const qel32s* pIndx, int nPerRow,
                                            const qel8u* const* ppTable, int tableRows,
                                            int rowBytes, int bitOffset, qel8u* pSign, int height,
                                            int nBits) {
  if (pIndx == nullptr || ppTable == nullptr || pSign == nullptr) return qelStatusNullPtr;
  if (nPerRow < 1) return qelStatusSize;
  if (const qelStatus st = checkSignTableSizes(tableRows, rowBytes, bitOffset, height, nBits);
      st != qelStatusOk)
    return st;

  const std::int64_t usedBytes = ceil8(static_cast<std::int64_t>(bitOffset) + nBits);
  const bool fast = nBits >= kFastMinBits && nBits <= kFastMaxBits &&
                    rowBytes - usedBytes >= kFastRowMargin &&
                    ceil8(nBits) * height > kFastMinTableBytes;
  if (fast) {
    if (qelsBuildSignTable_8u1u_M7(pIndx, nPerRow, ppTable, tableRows, bitOffset, pSign, height,
                                   nBits) != 0)
      return qelStatusBadArg;
    return qelStatusOk;
  }
  if (!indicesInRange(pIndx, static_cast<std::int64_t>(nPerRow) * height, tableRows))
    return qelStatusBadArg;
  buildSignTablePlain(ppTable, bitOffset, pSign, height, nBits, [&](int r, int* pCount) {
    *pCount = nPerRow;
    return pIndx + static_cast<std::int64_t>(r) * nPerRow;
  });
  return qelStatusOk;
}

QELSR_API qelStatus qelsBuildSignTable_Var_8u1u(const qel32s* pIndx, const qel32s* pCounts,
                                                const qel8u* const* ppTable, int tableRows,
                                                int rowBytes, int bitOffset, qel8u* pSign,
                                                int height, int nBits) {
  if (pIndx == nullptr || pCounts == nullptr || ppTable == nullptr || pSign == nullptr)
    return qelStatusNullPtr;
  if (const qelStatus st = checkSignTableSizes(tableRows, rowBytes, bitOffset, height, nBits);
      st != qelStatusOk)
    return st;
  std::int64_t total;
  if (!countsPositive(pCounts, height, &total)) return qelStatusSize;
  if (!indicesInRange(pIndx, total, tableRows)) return qelStatusBadArg;
  // Row r takes the run of pCounts[r] indices that follows the earlier rows'.
  const qel32s* run = pIndx;
  buildSignTablePlain(ppTable, bitOffset, pSign, height, nBits, [&](int r, int* pCount) {
    const qel32s* here = run;
    *pCount = pCounts[r];
    run += pCounts[r];
    return here;
  });
  return qelStatusOk;
}

QELSR_API qelStatus qelsFillShortlist_Row_1u(const qel32s* pIndx, int nCols, int nPerRow,
                                             qel8u* const* ppDst, int height, int rowBytes,
                                             int bitOffset) {
  return fillShortlist<false>(pIndx, false, nullptr, nPerRow, ppDst, height, rowBytes, bitOffset,
                              nCols);
}

QELSR_API qelStatus qelsFillShortlist_RowVar_1u(const qel32s* pIndx, const qel32s* pCounts,
                                                int nCols, qel8u* const* ppDst, int height,
                                                int rowBytes, int bitOffset) {
  return fillShortlist<false>(pIndx, true, pCounts, 0, ppDst, height, rowBytes, bitOffset, nCols);
}

QELSR_API qelStatus qelsFillShortlist_Column_1u(const qel32s* pIndx, int nPerCol,
                                                qel8u* const* ppDst, int height, int rowBytes,
                                                int bitOffset, int nCols) {
  return fillShortlist<true>(pIndx, false, nullptr, nPerCol, ppDst, height, rowBytes, bitOffset,
                             nCols);
}

QELSR_API qelStatus qelsFillShortlist_ColumnVar_1u(const qel32s* pIndx, const qel32s* pCounts,
                                                   qel8u* const* ppDst, int height, int rowBytes,
                                                   int bitOffset, int nCols) {
  return fillShortlist<true>(pIndx, true, pCounts, 0, ppDst, height, rowBytes, bitOffset, nCols);
}

}  // extern "C"
