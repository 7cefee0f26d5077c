// Version record, scale factors, row-pointer alignment, special values and
// the allocator calls.
#include <cstring>

#include "base/base.h"
#include "frame/frame.h"
#include "test_support.h"

namespace {

TEST(LibraryFrame, VersionRecordIsConstantAndExact) {
  const LibVersion* v = qelsrGetLibVersion();
  ASSERT_NE(v, nullptr);
  EXPECT_EQ(v, qelsrGetLibVersion());
  EXPECT_EQ(v->major, 6);
  EXPECT_EQ(v->minor, 1);
  EXPECT_EQ(v->majorBuild, 137);
  EXPECT_EQ(v->build, 818);
  EXPECT_EQ(0, std::memcmp(v->targetCpu, "u8\0\0", 4));
  EXPECT_STREQ(v->name, "libqelsru8.so.6.1");
  EXPECT_STREQ(v->version, "6.1 build 137.56");
  EXPECT_STREQ(v->buildDate, "Mar 17 2010");
}

TEST(LibraryFrame, StatusValues) {
  const std::pair<int, int> table[] = {
      {qelStatusOk, 0},
      {qelStatusFailed, -2},
      {qelStatusBadArg, -5},
      {qelStatusSize, -6},
      {qelStatusRange, -7},
      {qelStatusNullPtr, -8},
      {qelStatusMemAlloc, -9},
      {qelStatusDivByZero, -10},
      {qelStatusFFTOrder, -15},
      {qelStatusFFTFlag, -16},
      {qelStatusContextMatch, -17},
      {qelStatusStride, -37},
      {qelStatusNoConvergence, -65},
      {qelStatusCdbkFlag, -66},
      {qelStatusNegOccupancy, -67},
      {qelStatusFBankEmpty, -69},
      {qelStatusMelFlag, -70},
      {qelStatusFreqRange, -71},
      {qelStatusNoRoot, -114},
      {qelStatusLspOrder, -115},
      {qelStatusNotMinPhase, -116},
      {qelStatusNonPositiveError, -117},
      {qelStatusValueRange, -119},
      {qelStatusCdbkType, -9999},
      {qelStatusWarnSqrtNeg, 3},
      {qelStatusWarnZeroInput, 4},
      {qelStatusWarnDivZero, 6},
      {qelStatusWarnLogZero, 7},
      {qelStatusWarnLogNeg, 8},
      {qelStatusWarnVarFloor, 11},
      {qelStatusWarnZeroOccupancy, 16},
      {qelStatusWarnCdbkSize, 31},
  };
  for (auto [got, want] : table) EXPECT_EQ(got, want);
  static_assert(sizeof(qelStatus) == 4);
}

TEST(LibraryFrame, SpecialValueBitPatterns) {
  EXPECT_EQ(qtest::bits(qelConstantOfNAN_32f), 0xFFC00000u);
  EXPECT_EQ(qtest::bits(qelConstantOfINF_32f), 0x7F800000u);
  EXPECT_EQ(qtest::bits(qelConstantOfINF_NEG_32f), 0xFF800000u);
  EXPECT_EQ(qtest::bits(qelConstantOfNAN_64f), 0xFFF8000000000000ull);
  EXPECT_EQ(qtest::bits(qelConstantOfINF_64f), 0x7FF0000000000000ull);
  EXPECT_EQ(qtest::bits(qelConstantOfINF_NEG_64f), 0xFFF0000000000000ull);
}

TEST(LibraryFrame, ScaleFactorPowersAreExactAndClamped) {
  for (int sf = -127; sf <= 149; ++sf)
    EXPECT_EQ(GetScale_32s32f(sf), std::ldexp(1.0f, -sf)) << sf;
  for (int sf : {-128, -129, -1000}) EXPECT_EQ(qtest::bits(GetScale_32s32f(sf)), 0x7F800000u);
  for (int sf : {150, 151, 5000}) EXPECT_EQ(qtest::bits(GetScale_32s32f(sf)), 0u);

  for (int sf = -1023; sf <= 1074; ++sf)
    EXPECT_EQ(GetScale_32s64f(sf), std::ldexp(1.0, -sf)) << sf;
  for (int sf : {-1024, -1025, -100000})
    EXPECT_EQ(qtest::bits(GetScale_32s64f(sf)), 0x7FF0000000000000ull);
  for (int sf : {1075, 1087, 1088, 100000}) EXPECT_EQ(qtest::bits(GetScale_32s64f(sf)), 0ull);
}

TEST(LibraryFrame, RowMatrAlErrFindsTheFirstUnalignedRow) {
  alignas(16) float block[64];
  const void* rows[5] = {block, block + 4, block + 8, block + 12, block + 16};
  EXPECT_EQ(RowMatrAlErr(rows, 5), 0);
  EXPECT_EQ(RowMatrAlErr(rows, 0), 0);
  EXPECT_EQ(RowMatrAlErr(rows, -3), 0);
  rows[4] = block + 17;
  EXPECT_EQ(RowMatrAlErr(rows, 5), 1);
  EXPECT_EQ(RowMatrAlErr(rows, 4), 0);  // the bad row lies beyond the length
  rows[0] = reinterpret_cast<const char*>(block) + 8;
  EXPECT_EQ(RowMatrAlErr(rows, 1), 1);
}

TEST(LibraryFrame, AllocatorCallsTakeElementCounts) {
  {
    qtest::FailingAllocator failAll(0);  // any call reaching the core fails
    // A count below 1 returns null without asking the core allocator, so
    // the failing allocator cannot be what produced these nulls: the live
    // count stays put either way, and the positive count proves the core is
    // asked (and fails) otherwise.
    EXPECT_EQ(qelsMalloc_32f(0), nullptr);
    EXPECT_EQ(qelsMalloc_8u(-5), nullptr);
    EXPECT_EQ(qelsMalloc_64f(1), nullptr);
  }
  qel64f* d = qelsMalloc_64f(1000);
  qel16s* s = qelsMalloc_16s(3);
  qel8u* b = qelsMalloc_8u(1);
  qel32s* i = qelsMalloc_32s(7);
  qel32f* f = qelsMalloc_32f(9);
  for (void* p : {static_cast<void*>(d), static_cast<void*>(s), static_cast<void*>(b),
                  static_cast<void*>(i), static_cast<void*>(f)}) {
    ASSERT_NE(p, nullptr);
    EXPECT_TRUE(qelsr::isAligned16(p));
  }
  d[999] = 1.0;  // the whole element count is usable
  for (void* p : {static_cast<void*>(d), static_cast<void*>(s), static_cast<void*>(b),
                  static_cast<void*>(i), static_cast<void*>(f)})
    qelsFree(p);
  qelsFree(nullptr);
}

TEST(LibraryFrame, CountBelowOneNeverReachesTheCoreAllocator) {
  // With one success left, a count of 0 must not use it up.
  qtest::FailingAllocator failAfterOne(1);
  EXPECT_EQ(qelsMalloc_32f(0), nullptr);
  qel32f* p = qelsMalloc_32f(4);
  EXPECT_NE(p, nullptr);
  qelsFree(p);
  EXPECT_TRUE(failAfterOne.nothingLeaked());
}

}  // namespace
