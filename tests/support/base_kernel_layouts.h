// Drivers shared by the element-wise base kernel tests: the lengths and
// alignments that walk every path (all-scalar short inputs, each head length
// up to the destination's 16-byte boundary, aligned and unaligned groups,
// the tails), a bit-exact comparison over all of them, the table of argument
// check orders, and the nearest-even rescaling reference of the 16-bit
// kernels.
#ifndef QELSR_TEST_BASE_KERNEL_LAYOUTS_H
#define QELSR_TEST_BASE_KERNEL_LAYOUTS_H

#include <gtest/gtest.h>

#include <cfenv>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <tuple>
#include <type_traits>
#include <vector>

#include "test_support.h"

namespace qtest {

inline constexpr float kNaNf = std::numeric_limits<float>::quiet_NaN();
inline constexpr float kInff = std::numeric_limits<float>::infinity();
inline constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
inline constexpr double kInf = std::numeric_limits<double>::infinity();

// Runs f(len, srcOffset, dstOffset) over the lengths 1..40 (across the
// scalar thresholds 11 and 23 with every tail length) and some long ones,
// and every pair of element positions within a 16-byte vector (every head
// length; the groups aligned together or not), in bytes from a 64-byte
// boundary.
template <typename TS, typename TD, typename F>
void forLayouts(F f) {
  std::vector<int> lens;
  for (int n = 1; n <= 40; ++n) lens.push_back(n);
  lens.insert(lens.end(), {63, 64, 65, 257, 1003});
  for (int len : lens)
    for (size_t so = 0; so < 16; so += sizeof(TS))
      for (size_t dso = 0; dso < 16; dso += sizeof(TD)) f(len, so, dso);
}

template <typename T>
std::vector<T> cycled(const std::vector<T>& base, int len, int shift) {
  std::vector<T> v(len);
  for (int i = 0; i < len; ++i) v[i] = base[(i + shift) % base.size()];
  return v;
}

// The expected output of a whole call from its inputs and the destination's
// address (which fixes the head); `elementwise` adapts a per-element rule.
template <typename F>
auto elementwise(F f) {
  return [f](const auto& a, const auto& b, const auto*) {
    std::vector<decltype(f(a[0], b[0]))> out(a.size());
    for (size_t i = 0; i < a.size(); ++i) out[i] = f(a[i], b[i]);
    return out;
  };
}

// Adapts a kernel of (source, destination or source-destination, len) to
// the driver's call.
template <typename TS, typename TD>
auto srcDst(qelStatus (*fn)(const TS*, TD*, int)) {
  return [fn](const TS* a, const auto*, TD* out, int n) { return fn(a, out, n); };
}

inline auto alwaysOk = [](const auto&, const auto&) { return qelStatusOk; };

// Runs call(a, b, dst, len) on guarded buffers over every layout; b sits at
// a's offset or at the destination's, and `inPlace` makes b the destination.
// The output must equal expect(a, b, dst) bit for bit (any NaN matches any
// NaN), the status status(a, b), and nothing may be written outside.
template <typename TA, typename TD, typename TB = TA, typename Call, typename Expect,
          typename Status = decltype(alwaysOk)>
void checkEveryLayout(const char* what, const std::vector<TA>& baseA, const std::vector<TB>& baseB,
                      bool inPlace, Call call, Expect expect, Status status = alwaysOk) {
  forLayouts<TA, TD>([&](int len, size_t so, size_t dso) {
    for (size_t bo : {so, dso}) {
      if (bo % sizeof(TB) != 0) continue;  // b's elements stay on their own size
      Guarded<TA> a(len, so);
      Guarded<TB> b(len, inPlace ? dso : bo);
      Guarded<TD> d(len, dso);
      a.assign(cycled(baseA, len, len));
      b.assign(cycled(baseB, len, 3 * len));
      const auto av = a.vec();
      const auto bv = b.vec();
      TD* out = inPlace ? reinterpret_cast<TD*>(b.data()) : d.data();
      const std::vector<TD> want = expect(av, bv, static_cast<const TD*>(out));
      ASSERT_EQ(call(a.data(), b.data(), out, len), status(av, bv)) << what << " len " << len;
      ASSERT_TRUE(sameArrays(out, want.data(), len))
          << what << " len " << len << " offsets " << so << "/" << bo << "/" << dso;
      ASSERT_TRUE(a.guardsIntact() && b.guardsIntact() && d.guardsIntact()) << what << " " << len;
      if (inPlace || bo == dso) break;
    }
  });
}

// Marks the length among the arguments of an argument-order case.
struct LenArg {};
inline constexpr LenArg kLen{};

// One kernel of an argument-order table: run(nullMask, len) calls it with
// pointer argument k null where bit k of nullMask is set.
struct OrderCase {
  const char* name;
  int pointers;
  std::function<qelStatus(int, int)> run;
};

template <typename... P, typename... A>
OrderCase orderCase(const char* name, qelStatus (*fn)(P...), A... args) {
  static_assert(sizeof...(P) == sizeof...(A));
  constexpr int pointers = (0 + ... + int(std::is_pointer_v<A>));
  return {name, pointers, [=](int mask, int len) {
            int k = 0;
            auto pass = [&](auto a) {
              if constexpr (std::is_same_v<decltype(a), LenArg>)
                return len;
              else if constexpr (std::is_pointer_v<decltype(a)>)
                return (mask >> k++) & 1 ? decltype(a){} : a;
              else
                return a;
            };
            const std::tuple<P...> t{pass(args)...};  // braces: left to right
            return std::apply(fn, t);
          }};
}

// One guarded buffer of every element type for the argument-order tables;
// nothing may ever be written to them.
struct OrderBuffers {
  Guarded<qel8u> u8{16};
  Guarded<qel16s> s16a{16}, s16b{16}, s16c{16};
  Guarded<qel32s> s32{16};
  Guarded<qel32f> fa{16}, fb{16}, fc{16};
  Guarded<qel64f> da{16}, db{16}, dc{16};
  bool untouched() const {
    return u8.untouched() && s16a.untouched() && s16b.untouched() && s16c.untouched() &&
           s32.untouched() && fa.untouched() && fb.untouched() && fc.untouched() &&
           da.untouched() && db.untouched() && dc.untouched();
  }
};

// Null pointers are checked before the length: every set of null pointers
// gives NullPtr with a good and with a bad length; then a zero or negative
// length gives Size; no call writes anything.
inline void checkArgumentOrder(const std::vector<OrderCase>& cases, const OrderBuffers& bufs) {
  for (const OrderCase& c : cases) {
    for (int m = 1; m < (1 << c.pointers); ++m) {
      EXPECT_EQ(c.run(m, 8), qelStatusNullPtr) << c.name << " mask " << m;
      EXPECT_EQ(c.run(m, 0), qelStatusNullPtr) << c.name << " mask " << m;
    }
    EXPECT_EQ(c.run(0, 0), qelStatusSize) << c.name;
    EXPECT_EQ(c.run(0, -3), qelStatusSize) << c.name;
    EXPECT_TRUE(bufs.untouched()) << c.name;
  }
}

// Nearest even of p / 2^s for s > 0, p * 2^-s otherwise, saturated to 16
// bits; worked in 64-bit integers by floor division and the remainder.
inline qel16s rescale16Ref(int64_t p, int s) {
  auto sat = [](int64_t v) {
    return static_cast<qel16s>(v < -32768 ? -32768 : (v > 32767 ? 32767 : v));
  };
  if (s <= 0) return sat(p * (int64_t{1} << -s));
  const int64_t d = int64_t{1} << s;
  int64_t q = p >= 0 ? p / d : -((-p + d - 1) / d);
  const int64_t rem = p - q * d;
  if (2 * rem > d || (2 * rem == d && (q & 1))) ++q;
  return sat(q);
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
