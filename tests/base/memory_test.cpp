// Clearing, filling, copying and moving: exact bit patterns, every length
// and offset, overlapping moves in both directions, and nothing written on
// an error.
#include <bit>
#include <cstdint>
#include <cstring>
#include <vector>

#include "base/base.h"
#include "base_kernel_layouts.h"
#include "test_support.h"

namespace {

using qtest::kLen;

// Distinct bit patterns for every element width.
template <typename T>
std::vector<T> patterns() {
  std::vector<T> v(97);
  for (size_t i = 0; i < v.size(); ++i) {
    const uint64_t p = 0x9E3779B97F4A7C15ull * (i + 1);
    std::memcpy(&v[i], &p, sizeof(T));
  }
  return v;
}

// Clears, then fills with each value; bit patterns compared with memcmp so
// that NaN payloads and negative zero count.
template <typename T, typename Zero, typename Set>
void checkFill(Zero zero, Set set, std::vector<T> vals) {
  auto bitsAre = [](const T* p, int n, T v) {
    for (int i = 0; i < n; ++i)
      if (std::memcmp(p + i, &v, sizeof(T)) != 0) return false;
    return true;
  };
  qtest::forLayouts<T, T>([&](int len, size_t, size_t off) {
    qtest::Guarded<T> d(len, off);
    ASSERT_EQ(zero(d.data(), len), qelStatusOk);
    ASSERT_TRUE(bitsAre(d.data(), len, T(0))) << len;
    for (T v : vals) {
      ASSERT_EQ(set(v, d.data(), len), qelStatusOk);
      ASSERT_TRUE(bitsAre(d.data(), len, v)) << len;
    }
    ASSERT_TRUE(d.guardsIntact());
  });
}

TEST(MemoryFill, ZeroAndSetKeepBitPatternsEveryLengthAndOffset) {
  checkFill<qel8u>(qelsZero_8u, qelsSet_8u, {0xC3});
  checkFill<qel16s>(qelsZero_16s, qelsSet_16s, {-12345});
  checkFill<qel32f>(qelsZero_32f, qelsSet_32f,
                    {-2.75f, std::bit_cast<float>(0x7FC01234u), std::bit_cast<float>(0xFFC00000u),
                     -0.0f, std::bit_cast<float>(1u)});
  checkFill<qel64f>(qelsZero_64f, qelsSet_64f,
                    {1.0 / 3.0, std::bit_cast<double>(0x7FF8000000ABCDEFull), -0.0, 5e-324});
  // qelsSet_32s has no zero of its own; clear through the float one.
  checkFill<qel32s>([](qel32s* p, int n) { return qelsZero_32f(reinterpret_cast<qel32f*>(p), n); },
                    qelsSet_32s, {INT32_MIN + 7});
}

template <typename T>
void checkCopy(const char* what, qelStatus (*copy)(const T*, T*, int)) {
  qtest::checkEveryLayout<T, T>(what, patterns<T>(), patterns<T>(), false, qtest::srcDst(copy),
                                [](const auto& a, const auto&, const T*) { return a; });
}

TEST(MemoryCopy, EveryTypeLengthAndOffset) {
  checkCopy<qel8u>("Copy_8u", qelsCopy_8u);
  checkCopy<qel16s>("Copy_16s", qelsCopy_16s);
  checkCopy<qel32s>("Copy_32s", qelsCopy_32s);
  checkCopy<qel32f>("Copy_32f", qelsCopy_32f);
  checkCopy<qel64f>("Copy_64f", qelsCopy_64f);
  checkCopy<qel32f>("Move_32f", qelsMove_32f);
}

// Overlap with the destination ahead of and behind the source.
TEST(MemoryCopy, MoveOverlappingBothDirections) {
  for (int shift : {1, 3, 4, 17, -1, -4, -17}) {
    for (int len : {1, 5, 16, 40, 100}) {
      std::vector<float> buf(len + 40);
      for (size_t i = 0; i < buf.size(); ++i) buf[i] = static_cast<float>(i) + 0.25f;
      std::vector<float> want = buf;
      const int from = 20, to = from + shift;
      for (int i = 0; i < len; ++i) want[to + i] = buf[from + i];
      ASSERT_EQ(qelsMove_32f(buf.data() + from, buf.data() + to, len), qelStatusOk);
      ASSERT_EQ(buf, want) << "shift " << shift << " len " << len;
    }
  }
}

TEST(MemoryErrors, CheckOrderAndNothingWritten) {
  qtest::OrderBuffers b;
  using qtest::orderCase;
  qtest::checkArgumentOrder(
      {orderCase("Zero_8u", qelsZero_8u, b.u8.data(), kLen),
       orderCase("Zero_16s", qelsZero_16s, b.s16a.data(), kLen),
       orderCase("Zero_32f", qelsZero_32f, b.fa.data(), kLen),
       orderCase("Zero_64f", qelsZero_64f, b.da.data(), kLen),
       orderCase("Set_8u", qelsSet_8u, qel8u{1}, b.u8.data(), kLen),
       orderCase("Set_16s", qelsSet_16s, qel16s{1}, b.s16a.data(), kLen),
       orderCase("Set_32s", qelsSet_32s, qel32s{1}, b.s32.data(), kLen),
       orderCase("Set_32f", qelsSet_32f, 1.0f, b.fa.data(), kLen),
       orderCase("Set_64f", qelsSet_64f, 1.0, b.da.data(), kLen),
       orderCase("Copy_8u", qelsCopy_8u, b.u8.data(), b.u8.data() + 8, kLen),
       orderCase("Copy_16s", qelsCopy_16s, b.s16a.data(), b.s16b.data(), kLen),
       orderCase("Copy_32s", qelsCopy_32s, b.s32.data(), b.s32.data() + 8, kLen),
       orderCase("Copy_32f", qelsCopy_32f, b.fa.data(), b.fb.data(), kLen),
       orderCase("Copy_64f", qelsCopy_64f, b.da.data(), b.db.data(), kLen),
       orderCase("Move_32f", qelsMove_32f, b.fa.data(), b.fa.data() + 1, kLen)},
      b);
}

}  // namespace
