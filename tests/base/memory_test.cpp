// Clearing, filling, copying and moving: exact bit patterns, every length
// and offset, overlapping moves in both directions, and nothing written on
// an error.
#include <bit>
#include <cstdint>
#include <cstring>
#include <functional>
#include <vector>

#include "base/base.h"
#include "base_kernel_layouts.h"
#include "test_support.h"

namespace {

using qtest::Guarded;

template <typename T>
bool allBitsEqual(const Guarded<T>& g, T val) {
  for (size_t i = 0; i < g.size(); ++i)
    if (std::memcmp(&g[i], &val, sizeof(T)) != 0) return false;
  return true;
}

template <typename T, typename Zero, typename Set>
void checkFill(Zero zero, Set set, T val) {
  qtest::forLayouts<T, T>([&](int len, size_t, size_t off) {
    Guarded<T> d(len, off);
    ASSERT_EQ(zero(d.data(), len), qelStatusOk);
    ASSERT_TRUE(allBitsEqual(d, T(0))) << len;
    ASSERT_TRUE(d.guardsIntact());
    ASSERT_EQ(set(val, d.data(), len), qelStatusOk);
    ASSERT_TRUE(allBitsEqual(d, val)) << len;
    ASSERT_TRUE(d.guardsIntact());
  });
}

TEST(MemoryFill, ZeroAndSetEveryLengthAndOffset) {
  checkFill<qel8u>(qelsZero_8u, qelsSet_8u, 0xC3);
  checkFill<qel16s>(qelsZero_16s, qelsSet_16s, -12345);
  checkFill<qel32f>(qelsZero_32f, qelsSet_32f, -2.75f);
  checkFill<qel64f>(qelsZero_64f, qelsSet_64f, 1.0 / 3.0);
  // qelsSet_32s has no zero of its own; clear through the float one.
  checkFill<qel32s>([](qel32s* p, int n) { return qelsZero_32f(reinterpret_cast<qel32f*>(p), n); },
                    qelsSet_32s, INT32_MIN + 7);
}

// The float fills store the bit pattern: NaN payloads and negative zero
// arrive unchanged.
TEST(MemoryFill, FloatFillsKeepTheBitPattern) {
  for (uint32_t bits : {0x7FC01234u, 0xFFC00000u, 0x80000000u, 0x00000001u}) {
    Guarded<qel32f> d(13, 4);
    ASSERT_EQ(qelsSet_32f(std::bit_cast<float>(bits), d.data(), 13), qelStatusOk);
    for (int i = 0; i < 13; ++i) EXPECT_EQ(std::bit_cast<uint32_t>(d[i]), bits);
  }
  for (uint64_t bits : {0x7FF8000000ABCDEFull, 0x8000000000000000ull, 0x0000000000000001ull}) {
    Guarded<qel64f> d(13, 8);
    ASSERT_EQ(qelsSet_64f(std::bit_cast<double>(bits), d.data(), 13), qelStatusOk);
    for (int i = 0; i < 13; ++i) EXPECT_EQ(std::bit_cast<uint64_t>(d[i]), bits);
  }
}

template <typename T, typename Copy>
void checkCopy(Copy copy, const char* name) {
  qtest::forLayouts<T, T>([&](int len, size_t so, size_t dso) {
    Guarded<T> s(len, so), d(len, dso);
    for (int i = 0; i < len; ++i) {
      const uint64_t pattern = 0x9E3779B97F4A7C15ull * static_cast<uint64_t>(i + 1);
      std::memcpy(&s[i], &pattern, sizeof(T));
    }
    ASSERT_EQ(copy(s.data(), d.data(), len), qelStatusOk) << name;
    ASSERT_EQ(0, std::memcmp(s.data(), d.data(), len * sizeof(T))) << name << " len " << len;
    ASSERT_TRUE(d.guardsIntact() && s.guardsIntact()) << name;
  });
}

TEST(MemoryCopy, EveryTypeLengthAndOffset) {
  checkCopy<qel8u>(qelsCopy_8u, "8u");
  checkCopy<qel16s>(qelsCopy_16s, "16s");
  checkCopy<qel32s>(qelsCopy_32s, "32s");
  checkCopy<qel32f>(qelsCopy_32f, "32f");
  checkCopy<qel64f>(qelsCopy_64f, "64f");
  checkCopy<qel32f>(qelsMove_32f, "move 32f");
}

// Overlap with the destination ahead of and behind the source.
TEST(MemoryCopy, MoveOverlappingBothDirections) {
  for (int shift : {1, 3, 4, 17, -1, -4, -17}) {
    for (int len : {1, 5, 16, 40, 100}) {
      const int n = len + 40;
      std::vector<float> buf(n), want;
      for (int i = 0; i < n; ++i) buf[i] = static_cast<float>(i) + 0.25f;
      want = buf;
      const int from = 20, to = from + shift;
      for (int i = 0; i < len; ++i) want[to + i] = buf[from + i];
      ASSERT_EQ(qelsMove_32f(buf.data() + from, buf.data() + to, len), qelStatusOk);
      ASSERT_EQ(buf, want) << "shift " << shift << " len " << len;
    }
  }
}

TEST(MemoryErrors, CheckOrderAndNothingWritten) {
  Guarded<qel8u> b(16);
  Guarded<qel16s> s(16);
  Guarded<qel32s> i(16);
  Guarded<qel32f> f(16), g(16);
  Guarded<qel64f> d(16), e(16);
  auto P = [](bool null, auto* p) { return null ? nullptr : p; };
  struct Call {
    const char* name;
    int pointers;
    std::function<qelStatus(int, int)> run;
  };
  const std::vector<Call> calls = {
      {"Zero_8u", 1, [&](int m, int n) { return qelsZero_8u(P(m & 1, b.data()), n); }},
      {"Zero_16s", 1, [&](int m, int n) { return qelsZero_16s(P(m & 1, s.data()), n); }},
      {"Zero_32f", 1, [&](int m, int n) { return qelsZero_32f(P(m & 1, f.data()), n); }},
      {"Zero_64f", 1, [&](int m, int n) { return qelsZero_64f(P(m & 1, d.data()), n); }},
      {"Set_8u", 1, [&](int m, int n) { return qelsSet_8u(1, P(m & 1, b.data()), n); }},
      {"Set_16s", 1, [&](int m, int n) { return qelsSet_16s(1, P(m & 1, s.data()), n); }},
      {"Set_32s", 1, [&](int m, int n) { return qelsSet_32s(1, P(m & 1, i.data()), n); }},
      {"Set_32f", 1, [&](int m, int n) { return qelsSet_32f(1, P(m & 1, f.data()), n); }},
      {"Set_64f", 1, [&](int m, int n) { return qelsSet_64f(1, P(m & 1, d.data()), n); }},
      {"Copy_8u", 2,
       [&](int m, int n) { return qelsCopy_8u(P(m & 1, b.data()), P(m & 2, b.data() + 8), n); }},
      {"Copy_16s", 2,
       [&](int m, int n) { return qelsCopy_16s(P(m & 1, s.data()), P(m & 2, s.data() + 8), n); }},
      {"Copy_32s", 2,
       [&](int m, int n) { return qelsCopy_32s(P(m & 1, i.data()), P(m & 2, i.data() + 8), n); }},
      {"Copy_32f", 2,
       [&](int m, int n) { return qelsCopy_32f(P(m & 1, f.data()), P(m & 2, g.data()), n); }},
      {"Copy_64f", 2,
       [&](int m, int n) { return qelsCopy_64f(P(m & 1, d.data()), P(m & 2, e.data()), n); }},
      {"Move_32f", 2,
       [&](int m, int n) { return qelsMove_32f(P(m & 1, f.data()), P(m & 2, f.data() + 1), n); }},
  };
  auto untouched = [&] {
    return b.untouched() && s.untouched() && i.untouched() && f.untouched() && g.untouched() &&
           d.untouched() && e.untouched();
  };
  for (const Call& c : calls) {
    const int all = (1 << c.pointers) - 1;
    for (int m = 1; m <= all; ++m) EXPECT_EQ(c.run(m, 4), qelStatusNullPtr) << c.name;
    EXPECT_EQ(c.run(all, 0), qelStatusNullPtr) << c.name;
    EXPECT_EQ(c.run(0, 0), qelStatusSize) << c.name;
    EXPECT_EQ(c.run(0, -1), qelStatusSize) << c.name;
    EXPECT_TRUE(untouched()) << c.name;
  }
}

}  // namespace
