// Shared test helpers: guarded buffers with canary zones and chosen
// misalignment, seeded random data, bit comparisons and the failing
// allocator of the testing core.
#ifndef QELSR_TEST_SUPPORT_H
#define QELSR_TEST_SUPPORT_H

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <random>
#include <type_traits>
#include <vector>

#include "core/qelcore.h"
#include "qelsr.h"

namespace qtest {

inline constexpr unsigned char kCanaryByte = 0xA5;

// A buffer of `count` elements that starts `misalignBytes` past a 64-byte
// boundary, with canary zones on both sides. Payload and guards start as
// canary bytes, so a test can prove that an erroring call wrote nothing.
template <typename T>
class Guarded {
 public:
  static constexpr size_t kGuardBytes = 64;

  explicit Guarded(size_t count, size_t misalignBytes = 0)
      : count_(count), misalign_(misalignBytes) {
    total_ = kGuardBytes + misalign_ + count_ * sizeof(T) + kGuardBytes;
    raw_ = static_cast<unsigned char*>(std::aligned_alloc(64, (total_ + 63) / 64 * 64));
    std::memset(raw_, kCanaryByte, total_);
  }
  ~Guarded() { std::free(raw_); }
  Guarded(const Guarded&) = delete;
  Guarded& operator=(const Guarded&) = delete;

  T* data() { return reinterpret_cast<T*>(raw_ + kGuardBytes + misalign_); }
  const T* data() const { return reinterpret_cast<const T*>(raw_ + kGuardBytes + misalign_); }
  size_t size() const { return count_; }
  T& operator[](size_t i) { return data()[i]; }
  const T& operator[](size_t i) const { return data()[i]; }

  void assign(const std::vector<T>& v) {
    for (size_t i = 0; i < count_ && i < v.size(); ++i) data()[i] = v[i];
  }
  std::vector<T> vec() const { return std::vector<T>(data(), data() + count_); }

  // Refills payload and guards with canary bytes.
  void poison() { std::memset(raw_, kCanaryByte, total_); }
  // True when nothing outside the payload was written.
  bool guardsIntact() const { return allCanary(0, kGuardBytes + misalign_) && allCanary(total_ - kGuardBytes, total_); }
  // True when neither payload nor guards were written since the last poison.
  bool untouched() const { return allCanary(0, total_); }

 private:
  bool allCanary(size_t from, size_t to) const {
    for (size_t i = from; i < to; ++i)
      if (raw_[i] != kCanaryByte) return false;
    return true;
  }
  size_t count_, misalign_, total_;
  unsigned char* raw_;
};

// Seeded generator of test data; every test names its seed so a failure
// reproduces.
class Rng {
 public:
  explicit Rng(uint32_t seed) : gen_(seed) {}
  float uniform(float lo, float hi) { return std::uniform_real_distribution<float>(lo, hi)(gen_); }
  double uniformD(double lo, double hi) { return std::uniform_real_distribution<double>(lo, hi)(gen_); }
  int integer(int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(gen_); }
  template <typename T>
  std::vector<T> vec(size_t n, double lo, double hi) {
    std::vector<T> v(n);
    for (auto& x : v) {
      if constexpr (std::is_integral_v<T>)
        x = static_cast<T>(integer(static_cast<int>(lo), static_cast<int>(hi)));
      else
        x = static_cast<T>(uniformD(lo, hi));
    }
    return v;
  }
  std::mt19937& engine() { return gen_; }

 private:
  std::mt19937 gen_;
};

template <typename T>
inline auto bits(T x) {
  if constexpr (sizeof(T) == 4) return std::bit_cast<uint32_t>(x);
  else return std::bit_cast<uint64_t>(x);
}

// Bit-for-bit equality, with every NaN equal to every NaN.
template <typename T>
inline bool sameBits(T a, T b) {
  if constexpr (std::is_floating_point_v<T>) {
    if (std::isnan(a) && std::isnan(b)) return true;
    return bits(a) == bits(b);
  } else {
    return a == b;
  }
}

template <typename T>
::testing::AssertionResult sameArrays(const T* got, const T* want, size_t n) {
  for (size_t i = 0; i < n; ++i)
    if (!sameBits(got[i], want[i]))
      return ::testing::AssertionFailure() << "element " << i << ": got " << +got[i] << ", want " << +want[i];
  return ::testing::AssertionSuccess();
}

// Distance in units in the last place between two finite floats.
inline int64_t ulpDistance(float a, float b) {
  auto key = [](float x) {
    int32_t i = std::bit_cast<int32_t>(x);
    return i < 0 ? int64_t{INT32_MIN} - i : int64_t{i};
  };
  int64_t d = key(a) - key(b);
  return d < 0 ? -d : d;
}
inline int64_t ulpDistance(double a, double b) {
  auto key = [](double x) {
    int64_t i = std::bit_cast<int64_t>(x);
    return i < 0 ? INT64_MIN - i : i;
  };
  __int128 d = static_cast<__int128>(key(a)) - key(b);
  if (d < 0) d = -d;
  return d > INT64_MAX ? INT64_MAX : static_cast<int64_t>(d);
}

// Makes qelMalloc fail after `successes` more allocations for the scope's
// lifetime, and checks on exit that every block was released.
class FailingAllocator {
 public:
  explicit FailingAllocator(long successes) : live_(qelcoreTestLiveBlocks()) {
    qelcoreTestFailAfter(successes);
  }
  ~FailingAllocator() { qelcoreTestFailAfter(-1); }
  bool nothingLeaked() const { return qelcoreTestLiveBlocks() == live_; }

 private:
  long live_;
};

// Row pointers into a matrix of guarded rows; `misalignedRow` (if below
// `height`) starts `misalignBytes` off 16 bytes while the others are aligned.
template <typename T>
class RowSet {
 public:
  RowSet(int height, int width, int misalignedRow = -1, size_t misalignBytes = sizeof(T)) {
    for (int r = 0; r < height; ++r)
      rows_.emplace_back(std::make_unique<Guarded<T>>(width, r == misalignedRow ? misalignBytes : 0));
    for (auto& r : rows_) ptrs_.push_back(r->data());
  }
  T** ptrs() { return ptrs_.data(); }
  const T* const* cptrs() const { return ptrs_.data(); }
  Guarded<T>& row(int r) { return *rows_[r]; }
  bool guardsIntact() const {
    for (auto& r : rows_)
      if (!r->guardsIntact()) return false;
    return true;
  }
  bool untouched() const {
    for (auto& r : rows_)
      if (!r->untouched()) return false;
    return true;
  }

 private:
  std::vector<std::unique_ptr<Guarded<T>>> rows_;
  std::vector<T*> ptrs_;
};

}  // namespace qtest

#endif
