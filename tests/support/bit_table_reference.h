// Bit-by-bit references of the selection tables, written from the packing
// rule alone: bit p of a row is in byte p / 8 under the mask 0x80 >> (p % 8).
// Nothing here works on more than one bit at a time, so the byte and word
// paths of the library are checked against the rule itself.
#ifndef QELSR_TEST_BIT_TABLE_REFERENCE_H
#define QELSR_TEST_BIT_TABLE_REFERENCE_H

#include <cstdint>
#include <vector>

namespace qtest::bitref {

inline bool getBit(const unsigned char* row, long long p) {
  return (row[p / 8] & (0x80u >> (p % 8))) != 0;
}
inline void setBit(unsigned char* row, long long p) {
  row[p / 8] = static_cast<unsigned char>(row[p / 8] | (0x80u >> (p % 8)));
}
inline void flipBit(unsigned char* row, long long p) {
  row[p / 8] = static_cast<unsigned char>(row[p / 8] ^ (0x80u >> (p % 8)));
}

inline int ceil8(long long bits) { return static_cast<int>((bits + 7) / 8); }

// Index runs: row r of the result takes runs[r] (the Var forms) or a fixed
// number of consecutive entries.
inline std::vector<std::vector<int>> countedRuns(const std::vector<int>& idx,
                                                 const std::vector<int>& counts) {
  std::vector<std::vector<int>> runs;
  size_t at = 0;
  for (int c : counts) {
    runs.emplace_back(idx.begin() + static_cast<long>(at), idx.begin() + static_cast<long>(at + c));
    at += static_cast<size_t>(c);
  }
  return runs;
}
inline std::vector<std::vector<int>> fixedRuns(const std::vector<int>& idx, int perRow, int rows) {
  return countedRuns(idx, std::vector<int>(static_cast<size_t>(rows), perRow));
}

// Sign table: row r, bit b below nBits, is set when bit bitOffset + b is set
// in any table row its run names; everything else is 0.
inline std::vector<unsigned char> signTable(const std::vector<std::vector<int>>& runs,
                                            const unsigned char* const* table, int bitOffset,
                                            int nBits) {
  const int rowBytes = ceil8(nBits);
  std::vector<unsigned char> out(runs.size() * static_cast<size_t>(rowBytes), 0);
  for (size_t r = 0; r < runs.size(); ++r)
    for (int b = 0; b < nBits; ++b)
      for (int t : runs[r])
        if (getBit(table[t], static_cast<long long>(bitOffset) + b)) {
          setBit(out.data() + r * rowBytes, b);
          break;
        }
  return out;
}

// Row shortlists: row r toggles bit bitOffset + index for each of its
// entries. `rows` holds the prior contents and is changed in place.
inline void toggleRows(std::vector<std::vector<unsigned char>>& rows,
                       const std::vector<std::vector<int>>& runs, int bitOffset) {
  for (size_t r = 0; r < runs.size(); ++r)
    for (int i : runs[r]) flipBit(rows[r].data(), static_cast<long long>(bitOffset) + i);
}

// Column shortlists: column c toggles bit bitOffset + c of the row each of its
// entries names.
inline void toggleColumns(std::vector<std::vector<unsigned char>>& rows,
                          const std::vector<std::vector<int>>& runs, int bitOffset) {
  for (size_t c = 0; c < runs.size(); ++c)
    for (int row : runs[c])
      flipBit(rows[static_cast<size_t>(row)].data(),
              static_cast<long long>(bitOffset) + static_cast<long long>(c));
}

}  // namespace qtest::bitref

#endif
