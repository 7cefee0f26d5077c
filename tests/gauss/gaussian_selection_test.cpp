// Shortlists and sign tables against a bit-by-bit reference of the packing,
// the word-at-a-time sign-table path against the byte path, the order of
// the argument and index checks, and canaries proving that failing calls
// write nothing and that no call writes beyond its rows or its table.
#include <string>
#include <vector>

#include "bit_table_reference.h"
#include "gauss/gauss.h"
#include "test_support.h"

namespace {

using qtest::Guarded;
using qtest::Rng;
using qtest::RowSet;
namespace bitref = qtest::bitref;

// Table rows of `rowBytes` bytes in guarded buffers, filled with random bytes.
struct Table {
  RowSet<qel8u> set;
  Table(int rows, int rowBytes, Rng& rng) : set(rows, rowBytes) {
    for (int r = 0; r < rows; ++r)
      for (int b = 0; b < rowBytes; ++b) set.row(r)[b] = qel8u(rng.integer(0, 255));
  }
};

std::vector<int> randomIndices(Rng& rng, long n, int limit) {
  std::vector<int> v(static_cast<size_t>(n));
  for (auto& x : v) x = rng.integer(0, limit - 1);
  return v;
}

// Runs of 1..per entries for `n` rows or columns; returns their total.
long randomCounts(Rng& rng, std::vector<int>& counts, int n, int per) {
  counts.resize(size_t(n));
  long total = 0;
  for (auto& c : counts) total += (c = rng.integer(1, per));
  return total;
}

// ---- shortlists

// The four fills under one signature: `per` is nPerRow or nPerCol for the
// fixed forms, `counts` pCounts for the Var forms.
using Fill = qelStatus (*)(const qel32s* idx, const qel32s* counts, int per, qel8u* const* rows,
                           int height, int rowBytes, int bitOffset, int nCols);
struct FillForm {
  const char* name;
  bool byColumn, var;
  Fill call;
};
// clang-format off
const FillForm kFills[] = {
  {"Row", false, false, [](const qel32s* i, const qel32s*, int per, qel8u* const* d, int h, int rb, int off, int nc) { return qelsFillShortlist_Row_1u(i, nc, per, d, h, rb, off); }},
  {"RowVar", false, true, [](const qel32s* i, const qel32s* c, int, qel8u* const* d, int h, int rb, int off, int nc) { return qelsFillShortlist_RowVar_1u(i, c, nc, d, h, rb, off); }},
  {"Column", true, false, [](const qel32s* i, const qel32s*, int per, qel8u* const* d, int h, int rb, int off, int nc) { return qelsFillShortlist_Column_1u(i, per, d, h, rb, off, nc); }},
  {"ColumnVar", true, true, [](const qel32s* i, const qel32s* c, int, qel8u* const* d, int h, int rb, int off, int nc) { return qelsFillShortlist_ColumnVar_1u(i, c, d, h, rb, off, nc); }},
};
// clang-format on
enum { kRow, kRowVar, kColumn, kColumnVar };

TEST(FillShortlist, NamedBitsAndTogglingRule) {
  // bitOffset 3: index 5 is bit 8, the top bit of byte 1; index 4 is bit 7,
  // the lowest bit of byte 0. The same index twice leaves its bit as it
  // was, set (5) or clear (6).
  qel8u row[4] = {0, 0, 0, 0};
  qel8u* rows[1] = {row};
  const qel32s idx[] = {5, 4, 5, 5, 6, 6};
  const qel8u want[][2] = {{0x00, 0x80}, {0x01, 0x80}, {0x01, 0x80}, {0x01, 0x80}};
  for (int k = 0; k < 4; ++k) {
    const int at = k < 2 ? k : 2 * k - 2, per = k < 2 ? 1 : 2;
    ASSERT_EQ(qelsFillShortlist_Row_1u(idx + at, 20, per, rows, 1, 4, 3), qelStatusOk);
    EXPECT_EQ(row[0], want[k][0]) << k;
    EXPECT_EQ(row[1], want[k][1]) << k;
  }
}

TEST(FillShortlist, AllFormsMatchBitReference) {
  Rng rng(3601);
  int cases = 0;
  for (int bitOffset : {0, 1, 3, 7, 8, 13})
    for (int nCols : {1, 5, 8, 9, 33})
      for (int height : {1, 3, 6})
        for (int extra : {0, 2})
          for (int per : {1, 2, 5})
            for (const FillForm& form : kFills) {
              const int rowBytes = bitref::ceil8(nCols + bitOffset) + extra;
              const int runs = form.byColumn ? nCols : height;
              std::vector<int> counts;
              const long total = form.var ? randomCounts(rng, counts, runs, per) : long(per) * runs;
              const auto idx = randomIndices(rng, total, form.byColumn ? height : nCols);
              const auto runList =
                  form.var ? bitref::countedRuns(idx, counts) : bitref::fixedRuns(idx, per, runs);
              Table t(height, rowBytes, rng);
              std::vector<std::vector<unsigned char>> want;
              for (int r = 0; r < height; ++r) want.push_back(t.set.row(r).vec());
              if (form.byColumn)
                bitref::toggleColumns(want, runList, bitOffset);
              else
                bitref::toggleRows(want, runList, bitOffset);
              SCOPED_TRACE(testing::Message() << form.name << " bitOffset " << bitOffset
                                              << " nCols " << nCols << " height " << height);
              ASSERT_EQ(form.call(idx.data(), counts.data(), per, t.set.ptrs(), height, rowBytes,
                                  bitOffset, nCols),
                        qelStatusOk);
              for (int r = 0; r < height; ++r)
                ASSERT_TRUE(qtest::sameArrays(t.set.row(r).data(), want[r].data(), rowBytes));
              ASSERT_TRUE(t.set.guardsIntact());
              ++cases;
            }
  EXPECT_EQ(cases, 6 * 5 * 3 * 2 * 3 * 4);
}

// Two faults at once: the first check in the form's order decides, and no
// row is written on any error. Only the entries in use are looked at.
TEST(FillShortlist, CheckOrderAndNothingWritten) {
  RowSet<qel8u> rows(3, 8);
  qel8u* const* d = rows.ptrs();
  const qel32s ok[6] = {0, 1, 2, 0, 1, 2};
  const qel32s badCol[6] = {0, 1, 2, 0, 1, 16};  // 16 == nCols
  const qel32s negative[6] = {0, -1, 2, 0, 1, 2};
  const qel32s badRow[6] = {0, 1, 3, 0, 1, 2};  // 3 == height
  const qel32s ones[3] = {1, 1, 1};
  const qel32s zero[3] = {1, 0, 1};
  struct Case {
    int form;
    qelStatus want;
    const qel32s *idx, *counts;
    int per;
    bool nullRows;
    int height, rowBytes, bitOffset, nCols;
  };
  // clang-format off
  const Case cases[] = {
    {kRow, qelStatusNullPtr, ok, nullptr, 2, true, 0, 8, 0, 16},          // null rows + size
    {kRow, qelStatusNullPtr, nullptr, nullptr, 2, false, 3, 8, 0, 0},     // null idx + size
    {kRow, qelStatusSize, ok, nullptr, 0, false, 3, 1, 0, 16},            // nPerRow 0 + stride
    {kRow, qelStatusSize, badCol, nullptr, 2, false, 3, 8, -1, 16},       // bitOffset -1 + index
    {kRow, qelStatusStride, badCol, nullptr, 2, false, 3, 2, 1, 16},      // stride + index
    {kRow, qelStatusBadArg, badCol, nullptr, 2, false, 3, 8, 0, 16},      // index == nCols
    {kRow, qelStatusBadArg, negative, nullptr, 2, false, 3, 8, 0, 16},    // negative index
    {kRow, qelStatusOk, badCol, nullptr, 1, false, 3, 8, 0, 16},          // bad entry unused
    {kRowVar, qelStatusNullPtr, ok, nullptr, 0, false, 3, 8, 0, 0},       // null counts + size
    {kRowVar, qelStatusNullPtr, ok, ones, 0, true, 0, 8, 0, 16},          // null rows + size
    {kRowVar, qelStatusSize, ok, zero, 0, false, 3, 1, 0, 16},            // count 0 + stride
    {kRowVar, qelStatusStride, negative, ones, 0, false, 3, 1, 0, 16},    // stride + index
    {kRowVar, qelStatusBadArg, negative, ones, 0, false, 3, 8, 0, 16},    // index
    {kRowVar, qelStatusOk, badCol, ones, 0, false, 3, 8, 0, 16},          // bad entry unused
    {kColumn, qelStatusNullPtr, nullptr, nullptr, 2, false, 3, 8, 0, 0},  // null idx + size
    {kColumn, qelStatusSize, ok, nullptr, 0, false, 3, 1, 0, 16},         // nPerCol 0 + stride
    {kColumn, qelStatusStride, badRow, nullptr, 2, false, 3, 1, 6, 3},    // stride + index
    {kColumn, qelStatusBadArg, badRow, nullptr, 2, false, 3, 8, 0, 3},    // index == height
    {kColumnVar, qelStatusNullPtr, ok, nullptr, 0, false, 0, 8, 0, 3},    // null counts + size
    {kColumnVar, qelStatusStride, ok, zero, 0, false, 3, 1, 6, 3},        // stride + count 0
    {kColumnVar, qelStatusSize, badRow, zero, 0, false, 3, 8, 0, 3},      // count 0 + index
    {kColumnVar, qelStatusBadArg, badRow, ones, 0, false, 3, 8, 0, 3},    // index
  };
  // clang-format on
  for (const auto& c : cases) {
    for (int r = 0; r < 3; ++r) rows.row(r).poison();
    EXPECT_EQ(kFills[c.form].call(c.idx, c.counts, c.per, c.nullRows ? nullptr : d, c.height,
                                  c.rowBytes, c.bitOffset, c.nCols),
              c.want)
        << kFills[c.form].name << " case " << (&c - cases);
    if (c.want != qelStatusOk) EXPECT_TRUE(rows.untouched()) << (&c - cases);
  }
}

// ---- sign tables

// Every nBits from 1 to 33 and some longer rows, every bit position in a
// byte and a few further offsets, heights that end the table in every
// position of the last word, row byte counts on both sides of the 32-byte
// margin of the word path, and the word path called directly where its
// conditions hold. The Var form takes runs of 1 to 4 entries. Each result
// must be the reference's bytes (bits beyond nBits 0) and nothing beyond
// the table may be written.
TEST(BuildSignTable, BothFormsAndPathsMatchBitReference) {
  Rng rng(3603);
  const int tableRows = 6;
  int fastCases = 0, allCases = 0;
  std::vector<int> nBitsList;
  for (int b = 1; b <= 33; ++b) nBitsList.push_back(b);
  nBitsList.insert(nBitsList.end(), {47, 70});
  for (int nBits : nBitsList)
    for (int bitOffset : {0, 1, 2, 3, 4, 5, 6, 7, 8, 13, 29})
      for (int height = 1; height <= 12; ++height)
        for (int per : {1, 3}) {
          const int used = bitref::ceil8(bitOffset + nBits);
          Table t(tableRows, used + 40, rng);
          const auto idx = randomIndices(rng, long(per) * height, tableRows);
          const auto want = bitref::signTable(bitref::fixedRuns(idx, per, height), t.set.cptrs(),
                                              bitOffset, nBits);
          SCOPED_TRACE(testing::Message() << "nBits " << nBits << " bitOffset " << bitOffset
                                          << " height " << height << " per " << per);
          auto expectTable = [&](int status, const Guarded<qel8u>& sign,
                                 const std::vector<unsigned char>& ref, const char* what) {
            ASSERT_EQ(status, 0) << what;
            ASSERT_TRUE(qtest::sameArrays(sign.data(), ref.data(), ref.size())) << what;
            ASSERT_TRUE(sign.guardsIntact()) << what;
          };
          for (int margin : {0, 1, 31, 32, 33}) {
            Guarded<qel8u> sign(want.size());
            expectTable(
                qelsBuildSignTable_8u1u(idx.data(), per, t.set.cptrs(), tableRows, used + margin,
                                        bitOffset, sign.data(), height, nBits),
                sign, want, margin < 32 ? "byte path" : "word path");
            ++allCases;
          }
          if (nBits >= 4 && nBits <= 24 && bitref::ceil8(nBits) * height > 4) {
            Guarded<qel8u> sign(want.size());
            expectTable(qelsBuildSignTable_8u1u_M7(idx.data(), per, t.set.cptrs(), tableRows,
                                                   bitOffset, sign.data(), height, nBits),
                        sign, want, "word kernel");
            ++fastCases;
          }
          if (per == 1) {
            std::vector<int> counts;
            const auto ix = randomIndices(rng, randomCounts(rng, counts, height, 4), tableRows);
            const auto wantVar =
                bitref::signTable(bitref::countedRuns(ix, counts), t.set.cptrs(), bitOffset, nBits);
            Guarded<qel8u> sign(wantVar.size());
            expectTable(
                qelsBuildSignTable_Var_8u1u(ix.data(), counts.data(), t.set.cptrs(), tableRows,
                                            used, bitOffset, sign.data(), height, nBits),
                sign, wantVar, "Var form");
          }
          if (testing::Test::HasFatalFailure()) return;
        }
  EXPECT_EQ(allCases, 35 * 11 * 12 * 2 * 5);
  EXPECT_EQ(fastCases, 4576);
}

TEST(BuildSignTable, CheckOrderAndNothingWritten) {
  Rng rng(3606);
  Table t(4, 40, rng);
  const qel8u* const* tab = t.set.cptrs();
  Guarded<qel8u> sign(16);
  const qel32s ok[8] = {0, 1, 2, 3, 0, 1, 2, 3};
  const qel32s late[8] = {0, 1, 2, 3, 0, 1, 2, 4};  // last entry == tableRows
  const qel32s negative[8] = {0, -1, 2, 3, 0, 1, 2, 3};
  const qel32s counts[4] = {2, 2, 2, 2};
  const qel32s shortCounts[4] = {2, 2, 2, 1};  // the bad last entry is not in a run
  const qel32s zero[4] = {2, 2, 0, 2};
  struct Case {
    const char* what;
    qelStatus want;
    const qel32s *idx, *counts;  // counts null: the fixed form
    int per;
    bool nullTable, nullSign;
    int tableRows, rowBytes, bitOffset, height, nBits;
  };
  // clang-format off
  const Case cases[] = {
    {"null sign + size", qelStatusNullPtr, ok, nullptr, 2, false, true, 4, 40, 0, 0, 8},
    {"null table + stride", qelStatusNullPtr, ok, nullptr, 2, true, false, 4, 1, 0, 4, 30},
    {"null idx + size", qelStatusNullPtr, nullptr, nullptr, 0, false, false, 4, 40, 0, 4, 8},
    {"nPerRow 0 + stride", qelStatusSize, ok, nullptr, 0, false, false, 4, 1, 0, 4, 30},
    {"tableRows 0 + index", qelStatusSize, late, nullptr, 2, false, false, 0, 40, 0, 4, 8},
    {"bitOffset -1 + stride", qelStatusSize, ok, nullptr, 2, false, false, 4, 1, -1, 4, 30},
    {"stride + index", qelStatusStride, late, nullptr, 2, false, false, 4, 2, 3, 4, 14},
    {"index == tableRows, byte path", qelStatusBadArg, late, nullptr, 2, false, false, 4, 2, 0, 4, 8},
    {"negative index, byte path", qelStatusBadArg, negative, nullptr, 2, false, false, 4, 2, 0, 4, 8},
    {"index == tableRows, word path", qelStatusBadArg, late, nullptr, 2, false, false, 4, 40, 0, 4, 9},
    {"negative index, word path", qelStatusBadArg, negative, nullptr, 2, false, false, 4, 40, 0, 4, 9},
    {"Var null counts + size", qelStatusNullPtr, ok, nullptr, -1, false, false, 4, 40, 0, 0, 8},
    {"Var stride + count 0", qelStatusStride, ok, zero, 0, false, false, 4, 1, 0, 4, 30},
    {"Var count 0 + index", qelStatusSize, late, zero, 0, false, false, 4, 40, 0, 4, 8},
    {"Var index in the last run", qelStatusBadArg, late, counts, 0, false, false, 4, 40, 0, 4, 8},
    {"Var entry beyond the runs", qelStatusOk, late, shortCounts, 0, false, false, 4, 40, 0, 4, 8},
  };
  // clang-format on
  for (const auto& c : cases) {
    sign.poison();
    const qel8u* const* table = c.nullTable ? nullptr : tab;
    qel8u* s = c.nullSign ? nullptr : sign.data();
    // per -1 marks a Var call with null counts.
    const qelStatus st =
        c.counts || c.per < 0
            ? qelsBuildSignTable_Var_8u1u(c.idx, c.counts, table, c.tableRows, c.rowBytes,
                                          c.bitOffset, s, c.height, c.nBits)
            : qelsBuildSignTable_8u1u(c.idx, c.per, table, c.tableRows, c.rowBytes, c.bitOffset, s,
                                      c.height, c.nBits);
    EXPECT_EQ(st, c.want) << c.what;
    if (c.want != qelStatusOk) EXPECT_TRUE(sign.untouched()) << c.what;
  }
  // The word path checks its index range before writing too.
  Guarded<qel8u> sign2(4);
  EXPECT_EQ(qelsBuildSignTable_8u1u_M7(late, 2, tab, 4, 0, sign2.data(), 4, 8), 1);
  EXPECT_TRUE(sign2.untouched());
}

}  // namespace
