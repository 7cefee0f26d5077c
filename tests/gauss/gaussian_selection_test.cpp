// Shortlists and sign tables against a bit-by-bit reference of the packing,
// the word-at-a-time sign-table path against the byte path, the order of the
// argument and index checks, and canaries proving that failing calls write
// nothing and that no call writes beyond its rows or its table.
#include <functional>
#include <string>

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
  int rowBytes;
  Table(int rows, int rowBytes_, Rng& rng) : set(rows, rowBytes_), rowBytes(rowBytes_) {
    for (int r = 0; r < rows; ++r)
      for (int b = 0; b < rowBytes; ++b) set.row(r)[b] = static_cast<qel8u>(rng.integer(0, 255));
  }
  std::vector<std::vector<unsigned char>> contents(int rows) {
    std::vector<std::vector<unsigned char>> c(rows);
    for (int r = 0; r < rows; ++r) c[r] = set.row(r).vec();
    return c;
  }
};

std::vector<int> randomIndices(Rng& rng, long n, int limit) {
  std::vector<int> v(static_cast<size_t>(n));
  for (auto& x : v) x = rng.integer(0, limit - 1);
  return v;
}

// ---- shortlists

TEST(FillShortlist, NamedBitsAndTogglingRule) {
  // bitOffset 3: index 5 is bit 8, the top bit of byte 1; index 4 is bit 7,
  // the lowest bit of byte 0.
  qel8u row[4] = {0, 0, 0, 0};
  qel8u* rows[1] = {row};
  const qel32s five = 5, four = 4;
  ASSERT_EQ(qelsFillShortlist_Row_1u(&five, 20, 1, rows, 1, 4, 3), qelStatusOk);
  EXPECT_EQ(row[0], 0x00);
  EXPECT_EQ(row[1], 0x80);
  ASSERT_EQ(qelsFillShortlist_Row_1u(&four, 20, 1, rows, 1, 4, 3), qelStatusOk);
  EXPECT_EQ(row[0], 0x01);
  EXPECT_EQ(row[1], 0x80);

  // The same index twice within a row leaves the bit as it was, set or clear.
  const qel32s twice[2] = {5, 5};
  ASSERT_EQ(qelsFillShortlist_Row_1u(twice, 20, 2, rows, 1, 4, 3), qelStatusOk);
  EXPECT_EQ(row[1], 0x80);
  const qel32s twiceClear[2] = {6, 6};
  ASSERT_EQ(qelsFillShortlist_Row_1u(twiceClear, 20, 2, rows, 1, 4, 3), qelStatusOk);
  EXPECT_EQ(row[1], 0x80);
  EXPECT_EQ(row[0], 0x01);

  // An index equal to nCols is outside the table: -5, row unchanged.
  Guarded<qel8u> g(4);
  qel8u* grows[1] = {g.data()};
  const qel32s atEnd = 20;
  EXPECT_EQ(qelsFillShortlist_Row_1u(&atEnd, 20, 1, grows, 1, 4, 3), qelStatusBadArg);
  EXPECT_TRUE(g.untouched());
}

TEST(FillShortlist, AllFormsMatchBitReference) {
  Rng rng(3601);
  int cases = 0;
  for (int bitOffset : {0, 1, 3, 7, 8, 13})
    for (int nCols : {1, 5, 8, 9, 33})
      for (int height : {1, 3, 6})
        for (int extra : {0, 2})
          for (int per : {1, 2, 5}) {
            const int rowBytes = bitref::ceil8(static_cast<long long>(nCols) + bitOffset) + extra;
            const std::string where = "bitOffset " + std::to_string(bitOffset) + " nCols " +
                                      std::to_string(nCols) + " height " + std::to_string(height) +
                                      " per " + std::to_string(per);
            // Counts of the Var forms vary around `per`.
            std::vector<int> rowCounts(height), colCounts(nCols);
            for (auto& c : rowCounts) c = rng.integer(1, per);
            for (auto& c : colCounts) c = rng.integer(1, per);
            long rowTotal = 0, colTotal = 0;
            for (int c : rowCounts) rowTotal += c;
            for (int c : colCounts) colTotal += c;

            struct Form {
              const char* name;
              std::vector<int> idx;
              std::vector<std::vector<int>> runs;
              bool byColumn;
              std::function<qelStatus(qel8u* const*)> call;
            };
            std::vector<Form> forms;
            {
              auto idx = randomIndices(rng, static_cast<long>(per) * height, nCols);
              forms.push_back({"Row", idx, bitref::fixedRuns(idx, per, height), false, nullptr});
              idx = randomIndices(rng, rowTotal, nCols);
              forms.push_back({"RowVar", idx, bitref::countedRuns(idx, rowCounts), false, nullptr});
              idx = randomIndices(rng, static_cast<long>(per) * nCols, height);
              forms.push_back({"Column", idx, bitref::fixedRuns(idx, per, nCols), true, nullptr});
              idx = randomIndices(rng, colTotal, height);
              forms.push_back(
                  {"ColumnVar", idx, bitref::countedRuns(idx, colCounts), true, nullptr});
            }
            forms[0].call = [&, p = forms[0].idx.data()](qel8u* const* rows) {
              return qelsFillShortlist_Row_1u(p, nCols, per, rows, height, rowBytes, bitOffset);
            };
            forms[1].call = [&, p = forms[1].idx.data()](qel8u* const* rows) {
              return qelsFillShortlist_RowVar_1u(p, rowCounts.data(), nCols, rows, height, rowBytes,
                                                 bitOffset);
            };
            forms[2].call = [&, p = forms[2].idx.data()](qel8u* const* rows) {
              return qelsFillShortlist_Column_1u(p, per, rows, height, rowBytes, bitOffset, nCols);
            };
            forms[3].call = [&, p = forms[3].idx.data()](qel8u* const* rows) {
              return qelsFillShortlist_ColumnVar_1u(p, colCounts.data(), rows, height, rowBytes,
                                                    bitOffset, nCols);
            };
            for (auto& form : forms) {
              Table t(height, rowBytes, rng);
              auto want = t.contents(height);
              if (form.byColumn)
                bitref::toggleColumns(want, form.runs, bitOffset);
              else
                bitref::toggleRows(want, form.runs, bitOffset);
              ASSERT_EQ(form.call(t.set.ptrs()), qelStatusOk) << form.name << " " << where;
              for (int r = 0; r < height; ++r)
                ASSERT_TRUE(qtest::sameArrays(t.set.row(r).data(), want[r].data(),
                                              static_cast<size_t>(rowBytes)))
                    << form.name << " " << where << " row " << r;
              ASSERT_TRUE(t.set.guardsIntact()) << form.name << " " << where;
              ++cases;
            }
          }
  EXPECT_EQ(cases, 6 * 5 * 3 * 2 * 3 * 4);
}

// Two faults at once: the first check in the family's order decides, and no
// row is written on any error.
TEST(FillShortlist, CheckOrderAndNothingWritten) {
  RowSet<qel8u> rows(3, 8);
  qel8u* const* d = rows.ptrs();
  const qel32s ok[6] = {0, 1, 2, 0, 1, 2};
  const qel32s badCol[6] = {0, 1, 2, 0, 1, 16};  // 16 == nCols
  const qel32s negative[6] = {0, -1, 2, 0, 1, 2};
  const qel32s badRow[6] = {0, 1, 3, 0, 1, 2};  // 3 == height
  const qel32s ones[3] = {1, 1, 1};
  const qel32s zeroCount[3] = {1, 0, 1};
  struct Case {
    const char* what;
    qelStatus want;
    std::function<qelStatus()> call;
  };
  // Row: pIndx, nCols, nPerRow, ppDst, height, rowBytes, bitOffset.
  // Column: pIndx, nPerCol, ppDst, height, rowBytes, bitOffset, nCols.
  const Case cases[] = {
      {"Row null dst + size", qelStatusNullPtr,
       [&] { return qelsFillShortlist_Row_1u(ok, 16, 2, nullptr, 0, 8, 0); }},
      {"Row null idx + size", qelStatusNullPtr,
       [&] { return qelsFillShortlist_Row_1u(nullptr, 0, 2, d, 3, 8, 0); }},
      {"Row nPerRow 0 + stride", qelStatusSize,
       [&] { return qelsFillShortlist_Row_1u(ok, 16, 0, d, 3, 1, 0); }},
      {"Row bitOffset -1 + index", qelStatusSize,
       [&] { return qelsFillShortlist_Row_1u(badCol, 16, 2, d, 3, 8, -1); }},
      {"Row stride + index", qelStatusStride,
       [&] { return qelsFillShortlist_Row_1u(badCol, 16, 2, d, 3, 2, 1); }},
      {"Row index == nCols", qelStatusBadArg,
       [&] { return qelsFillShortlist_Row_1u(badCol, 16, 2, d, 3, 8, 0); }},
      {"Row negative index", qelStatusBadArg,
       [&] { return qelsFillShortlist_Row_1u(negative, 16, 2, d, 3, 8, 0); }},
      {"RowVar null counts + size", qelStatusNullPtr,
       [&] { return qelsFillShortlist_RowVar_1u(ok, nullptr, 0, d, 3, 8, 0); }},
      {"RowVar height 0 + null row table", qelStatusNullPtr,
       [&] { return qelsFillShortlist_RowVar_1u(ok, ones, 16, nullptr, 0, 8, 0); }},
      {"RowVar count 0 + stride", qelStatusSize,
       [&] { return qelsFillShortlist_RowVar_1u(ok, zeroCount, 16, d, 3, 1, 0); }},
      {"RowVar stride + index", qelStatusStride,
       [&] { return qelsFillShortlist_RowVar_1u(negative, ones, 16, d, 3, 1, 0); }},
      {"RowVar index", qelStatusBadArg,
       [&] { return qelsFillShortlist_RowVar_1u(negative, ones, 16, d, 3, 8, 0); }},
      {"Column null + size", qelStatusNullPtr,
       [&] { return qelsFillShortlist_Column_1u(nullptr, 0, d, 3, 8, 0, 3); }},
      {"Column nPerCol 0 + stride", qelStatusSize,
       [&] { return qelsFillShortlist_Column_1u(ok, 0, d, 3, 1, 0, 16); }},
      {"Column stride + index", qelStatusStride,
       [&] { return qelsFillShortlist_Column_1u(badRow, 2, d, 3, 1, 6, 3); }},
      {"Column index == height", qelStatusBadArg,
       [&] { return qelsFillShortlist_Column_1u(badRow, 2, d, 3, 8, 0, 3); }},
      {"ColumnVar null counts + size", qelStatusNullPtr,
       [&] { return qelsFillShortlist_ColumnVar_1u(ok, nullptr, d, 0, 8, 0, 3); }},
      {"ColumnVar stride + count 0", qelStatusStride,
       [&] { return qelsFillShortlist_ColumnVar_1u(ok, zeroCount, d, 3, 1, 6, 3); }},
      {"ColumnVar count 0 + index", qelStatusSize,
       [&] { return qelsFillShortlist_ColumnVar_1u(badRow, zeroCount, d, 3, 8, 0, 3); }},
      {"ColumnVar index", qelStatusBadArg,
       [&] { return qelsFillShortlist_ColumnVar_1u(badRow, ones, d, 3, 8, 0, 3); }},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(c.call(), c.want) << c.what;
    EXPECT_TRUE(rows.untouched()) << c.what;
  }
  // The index check reads only the entries in use: a bad value just beyond
  // them is never looked at.
  const qel32s counts2[3] = {1, 1, 1};
  EXPECT_EQ(qelsFillShortlist_RowVar_1u(badCol, counts2, 16, d, 3, 8, 0), qelStatusOk);
}

// ---- sign tables

TEST(BuildSignTable, TenBitsTwoBytesLowBitsClear) {
  Rng rng(3602);
  const int used = 2, rowBytes = used + 32;  // bitOffset 5 + 10 bits: 15 bits
  Table t(4, rowBytes, rng);
  for (int r = 0; r < 4; ++r)
    for (int b = 0; b < rowBytes; ++b) t.set.row(r)[b] = 0xFF;  // every bit set
  const qel32s idx[3] = {0, 2, 3};
  for (int rb : {used, rowBytes}) {  // byte path and word path
    Guarded<qel8u> sign(3 * 2);
    ASSERT_EQ(qelsBuildSignTable_8u1u(idx, 1, t.set.cptrs(), 4, rb, 5, sign.data(), 3, 10),
              qelStatusOk);
    for (int r = 0; r < 3; ++r) {
      EXPECT_EQ(sign[2 * r], 0xFF) << "rowBytes " << rb;
      EXPECT_EQ(sign[2 * r + 1], 0xC0) << "rowBytes " << rb;  // low 6 bits 0
    }
    EXPECT_TRUE(sign.guardsIntact());
  }
}

// Every nBits from 1 to 32, every bit position in a byte and a few further
// offsets, row byte counts on both sides of the 32-byte margin, and table
// heights that end the table in every possible position of the last word.
// The plain and the word path must give the reference's bytes and nothing
// beyond the table.
TEST(BuildSignTable, MatchesBitReferenceOnBothPaths) {
  Rng rng(3603);
  const int tableRows = 6;
  int fastCases = 0, allCases = 0;
  for (int nBits = 1; nBits <= 32; ++nBits)
    for (int bitOffset : {0, 1, 2, 3, 4, 5, 6, 7, 8, 13, 29})
      for (int height : {1, 2, 3, 4, 5, 6, 9})
        for (int per : {1, 3}) {
          const int used = bitref::ceil8(static_cast<long long>(bitOffset) + nBits);
          Table t(tableRows, used + 40, rng);
          const auto idx = randomIndices(rng, static_cast<long>(per) * height, tableRows);
          const auto want = bitref::signTable(bitref::fixedRuns(idx, per, height), t.set.cptrs(),
                                              bitOffset, nBits);
          const int rb = bitref::ceil8(nBits);
          for (int margin : {0, 1, 31, 32, 33}) {
            Guarded<qel8u> sign(want.size());
            const qelStatus st =
                qelsBuildSignTable_8u1u(idx.data(), per, t.set.cptrs(), tableRows, used + margin,
                                        bitOffset, sign.data(), height, nBits);
            const std::string where = "nBits " + std::to_string(nBits) + " bitOffset " +
                                      std::to_string(bitOffset) + " height " +
                                      std::to_string(height) + " margin " + std::to_string(margin);
            ASSERT_EQ(st, qelStatusOk) << where;
            ASSERT_TRUE(qtest::sameArrays(sign.data(), want.data(), want.size())) << where;
            ASSERT_TRUE(sign.guardsIntact()) << where;
            ++allCases;
          }
          // Where the word path's conditions hold, run it directly too.
          if (nBits >= 4 && nBits <= 24 && rb * height > 4) {
            Guarded<qel8u> sign(want.size());
            ASSERT_EQ(qelsBuildSignTable_8u1u_M7(idx.data(), per, t.set.cptrs(), tableRows,
                                                 bitOffset, sign.data(), height, nBits),
                      0);
            ASSERT_TRUE(qtest::sameArrays(sign.data(), want.data(), want.size()))
                << "word path nBits " << nBits << " bitOffset " << bitOffset << " height "
                << height;
            ASSERT_TRUE(sign.guardsIntact()) << "word path nBits " << nBits << " height " << height;
            ++fastCases;
          }
        }
  EXPECT_EQ(allCases, 32 * 11 * 7 * 2 * 5);
  EXPECT_GT(fastCases, 2000);
}

// The word path writes whole words; a sign table filled with canaries before
// the call and followed directly by a canary zone proves that the rows near
// the end are merged rather than overrunning, for 1, 2 and 3 bytes a row.
TEST(BuildSignTable, WordPathNeverWritesPastTable) {
  Rng rng(3604);
  for (int nBits : {4, 8, 9, 16, 17, 24})
    for (int height = 1; height <= 12; ++height) {
      const int rb = bitref::ceil8(nBits);
      if (rb * height <= 4) continue;
      Table t(3, 40, rng);
      const auto idx = randomIndices(rng, height, 3);
      Guarded<qel8u> sign(static_cast<size_t>(rb * height));
      ASSERT_EQ(qelsBuildSignTable_8u1u(idx.data(), 1, t.set.cptrs(), 3, 40, 0, sign.data(), height,
                                        nBits),
                qelStatusOk);
      EXPECT_TRUE(sign.guardsIntact()) << "nBits " << nBits << " height " << height;
      const auto want =
          bitref::signTable(bitref::fixedRuns(idx, 1, height), t.set.cptrs(), 0, nBits);
      EXPECT_TRUE(qtest::sameArrays(sign.data(), want.data(), want.size()));
    }
}

TEST(BuildSignTable, VarFormTakesConsecutiveRuns) {
  Rng rng(3605);
  // Counts 1 and 2: row 0 is table row idx[0], row 1 the OR of idx[1], idx[2].
  qel8u r0[2] = {0x12, 0x34}, r1[2] = {0x40, 0x01}, r2[2] = {0x08, 0x80};
  const qel8u* table[3] = {r0, r1, r2};
  const qel32s idx[3] = {2, 0, 1};
  const qel32s counts[2] = {1, 2};
  qel8u sign[4] = {0xEE, 0xEE, 0xEE, 0xEE};
  ASSERT_EQ(qelsBuildSignTable_Var_8u1u(idx, counts, table, 3, 2, 0, sign, 2, 16), qelStatusOk);
  EXPECT_EQ(sign[0], 0x08);
  EXPECT_EQ(sign[1], 0x80);
  EXPECT_EQ(sign[2], 0x52);
  EXPECT_EQ(sign[3], 0x35);

  for (int nBits : {1, 7, 8, 12, 31, 70})
    for (int bitOffset : {0, 3, 9})
      for (int height : {1, 4, 7}) {
        const int used = bitref::ceil8(static_cast<long long>(bitOffset) + nBits);
        Table t(5, used + 3, rng);
        std::vector<int> cnt(height);
        long total = 0;
        for (auto& c : cnt) total += (c = rng.integer(1, 4));
        const auto ix = randomIndices(rng, total, 5);
        const auto want =
            bitref::signTable(bitref::countedRuns(ix, cnt), t.set.cptrs(), bitOffset, nBits);
        Guarded<qel8u> s(want.size());
        ASSERT_EQ(qelsBuildSignTable_Var_8u1u(ix.data(), cnt.data(), t.set.cptrs(), 5, used,
                                              bitOffset, s.data(), height, nBits),
                  qelStatusOk);
        EXPECT_TRUE(qtest::sameArrays(s.data(), want.data(), want.size()))
            << "nBits " << nBits << " bitOffset " << bitOffset << " height " << height;
        EXPECT_TRUE(s.guardsIntact());
      }
}

TEST(BuildSignTable, CheckOrderAndNothingWritten) {
  Rng rng(3606);
  Table t(4, 40, rng);
  const qel8u* const* tab = t.set.cptrs();
  Guarded<qel8u> sign(16);
  qel8u* s = sign.data();
  const qel32s ok[8] = {0, 1, 2, 3, 0, 1, 2, 3};
  const qel32s late[8] = {0, 1, 2, 3, 0, 1, 2, 4};  // last entry == tableRows
  const qel32s negative[8] = {0, -1, 2, 3, 0, 1, 2, 3};
  const qel32s counts[4] = {2, 2, 2, 2};
  const qel32s zeroCount[4] = {2, 2, 0, 2};
  // pIndx, nPerRow, ppTable, tableRows, rowBytes, bitOffset, pSign, height, nBits
  struct Case {
    const char* what;
    qelStatus want;
    std::function<qelStatus()> call;
  };
  const Case cases[] = {
      {"null sign + size", qelStatusNullPtr,
       [&] { return qelsBuildSignTable_8u1u(ok, 2, tab, 4, 40, 0, nullptr, 0, 8); }},
      {"null table + stride", qelStatusNullPtr,
       [&] { return qelsBuildSignTable_8u1u(ok, 2, nullptr, 4, 1, 0, s, 4, 30); }},
      {"nPerRow 0 + stride", qelStatusSize,
       [&] { return qelsBuildSignTable_8u1u(ok, 0, tab, 4, 1, 0, s, 4, 30); }},
      {"tableRows 0 + index", qelStatusSize,
       [&] { return qelsBuildSignTable_8u1u(late, 2, tab, 0, 40, 0, s, 4, 8); }},
      {"bitOffset -1 + stride", qelStatusSize,
       [&] { return qelsBuildSignTable_8u1u(ok, 2, tab, 4, 1, -1, s, 4, 30); }},
      {"stride + index", qelStatusStride,
       [&] { return qelsBuildSignTable_8u1u(late, 2, tab, 4, 2, 3, s, 4, 14); }},
      {"index == tableRows, byte path", qelStatusBadArg,
       [&] { return qelsBuildSignTable_8u1u(late, 2, tab, 4, 2, 0, s, 4, 8); }},
      {"negative index, byte path", qelStatusBadArg,
       [&] { return qelsBuildSignTable_8u1u(negative, 2, tab, 4, 2, 0, s, 4, 8); }},
      {"index == tableRows, word path", qelStatusBadArg,
       [&] { return qelsBuildSignTable_8u1u(late, 2, tab, 4, 40, 0, s, 4, 9); }},
      {"negative index, word path", qelStatusBadArg,
       [&] { return qelsBuildSignTable_8u1u(negative, 2, tab, 4, 40, 0, s, 4, 9); }},
      {"Var null counts + size", qelStatusNullPtr,
       [&] { return qelsBuildSignTable_Var_8u1u(ok, nullptr, tab, 4, 40, 0, s, 0, 8); }},
      {"Var stride + count 0", qelStatusStride,
       [&] { return qelsBuildSignTable_Var_8u1u(ok, zeroCount, tab, 4, 1, 0, s, 4, 30); }},
      {"Var count 0 + index", qelStatusSize,
       [&] { return qelsBuildSignTable_Var_8u1u(late, zeroCount, tab, 4, 40, 0, s, 4, 8); }},
      {"Var index in the last run", qelStatusBadArg,
       [&] { return qelsBuildSignTable_Var_8u1u(late, counts, tab, 4, 40, 0, s, 4, 8); }},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(c.call(), c.want) << c.what;
    EXPECT_TRUE(sign.untouched()) << c.what;
  }
  // The word path checks its index range before writing too.
  Guarded<qel8u> sign2(4);
  EXPECT_EQ(qelsBuildSignTable_8u1u_M7(late, 2, tab, 4, 0, sign2.data(), 4, 8), 1);
  EXPECT_TRUE(sign2.untouched());
  // Only the entries of the runs are looked at.
  const qel32s shortCounts[4] = {2, 2, 2, 1};
  EXPECT_EQ(qelsBuildSignTable_Var_8u1u(late, shortCounts, tab, 4, 40, 0, s, 4, 8), qelStatusOk);
}

}  // namespace
