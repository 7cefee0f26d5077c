// Lengths and alignments that walk every path of the element-wise base
// kernels: all-scalar short inputs, each head length up to the destination's
// 16-byte boundary, aligned and unaligned groups, and the tails.
#ifndef QELSR_TEST_BASE_KERNEL_LAYOUTS_H
#define QELSR_TEST_BASE_KERNEL_LAYOUTS_H

#include <cfenv>
#include <cstddef>
#include <vector>

namespace qtest {

// 1..40 crosses the scalar thresholds (11 and 23) with every tail length;
// the long ones have many groups.
inline std::vector<int> sweepLengths() {
  std::vector<int> v;
  for (int n = 1; n <= 40; ++n) v.push_back(n);
  for (int n : {63, 64, 65, 257, 1003}) v.push_back(n);
  return v;
}

// Offsets in bytes from a 64-byte boundary: every element position within a
// 16-byte vector, so every head length occurs.
template <typename T>
inline std::vector<size_t> elementOffsets() {
  std::vector<size_t> v;
  for (size_t b = 0; b < 16; b += sizeof(T)) v.push_back(b);
  if (v.size() == 1) v.push_back(sizeof(T));  // 16-byte elements: one unaligned layout
  return v;
}

// Runs f(len, srcOffset, dstOffset) over every length and the pairs of
// offsets: equal (both aligned together) and unequal (groups unaligned).
template <typename TS, typename TD, typename F>
void forLayouts(F f) {
  for (int len : sweepLengths())
    for (size_t so : elementOffsets<TS>())
      for (size_t dso : elementOffsets<TD>()) f(len, so, dso);
}

// Sets the caller's rounding mode for a scope and puts round-to-nearest
// back afterwards.
class RoundingScope {
 public:
  explicit RoundingScope(int mode) { std::fesetround(mode); }
  ~RoundingScope() { std::fesetround(FE_TONEAREST); }
  RoundingScope(const RoundingScope&) = delete;
  RoundingScope& operator=(const RoundingScope&) = delete;
};

}  // namespace qtest

#endif
