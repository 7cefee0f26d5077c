// Reductions: sums and dot products against scalar references with the
// same grouping (bit for bit) and against long double with stated bounds;
// extremes and their indices with the tie and NaN rules; element-wise
// extremes.
#include <cfloat>
#include <cmath>
#include <cstdint>
#include <functional>

#include "base/base.h"
#include "test_support.h"

namespace {

using qtest::Guarded;

const int kLengths[] = {1,    2,    3,    4,    5,    7,     8,     9,     15,    16,   17,
                        31,   32,   33,   34,   35,   40,    63,    64,    100,   2047, 2048,
                        2049, 2055, 2056, 4100, 5000, 32767, 32768, 32769, 32790, 70001};
const size_t kFloatMisalign[] = {0, 4, 8, 12};

// Elements before the 16-byte boundary, as the kernels count them.
template <typename T>
int headOf(const T* p, int len) {
  const auto a = reinterpret_cast<uintptr_t>(p);
  if (a % sizeof(T) != 0) return 0;
  return std::min<int>(len, static_cast<int>(((16 - (a & 15)) & 15) / sizeof(T)));
}

// Four accumulators of four lanes, 16 elements a step, leftover groups of
// four into the first, (a0 + a1) + (a2 + a3), lanes (l0 + l1) + (l2 + l3),
// then the last elements in order.
template <typename Term>
float refLaneBlock(int n, Term term) {
  float acc[4][4] = {};
  int i = 0;
  for (; i + 16 <= n; i += 16)
    for (int k = 0; k < 4; ++k)
      for (int l = 0; l < 4; ++l) acc[k][l] += term(i + 4 * k + l);
  for (; i + 4 <= n; i += 4)
    for (int l = 0; l < 4; ++l) acc[0][l] += term(i + l);
  float c[4];
  for (int l = 0; l < 4; ++l) c[l] = (acc[0][l] + acc[1][l]) + (acc[2][l] + acc[3][l]);
  float s = (c[0] + c[1]) + (c[2] + c[3]);
  for (; i < n; ++i) s += term(i);
  return s;
}

float refSumHint1(const float* p, int len) {
  const int h = headOf(p, len);
  float head = 0;
  for (int i = 0; i < h; ++i) head += p[i];
  double total = head;
  for (int d = h; d < len; d += 32768)
    total += refLaneBlock(std::min(32768, len - d), [&](int i) { return p[d + i]; });
  return static_cast<float>(total);
}

float refSumHint2(const float* p, int len) {
  double l[8] = {};
  for (int i = 0; i < len; ++i) l[i % 8] += p[i];
  return static_cast<float>(((l[0] + l[2]) + (l[4] + l[6])) + ((l[1] + l[3]) + (l[5] + l[7])));
}

float refDot32f(const float* a, const float* b, int len) {
  if (len < 16) {
    float s = 0;
    for (int i = 0; i < len; ++i) s += a[i] * b[i];
    return s;
  }
  const int h = headOf(a, len);
  float head = 0;
  for (int i = 0; i < h; ++i) head += a[i] * b[i];
  return head + refLaneBlock(len - h, [&](int i) { return a[h + i] * b[h + i]; });
}

template <typename T>
double refDotDouble4(const T* a, const T* b, int len) {
  double l[4] = {};
  for (int i = 0; i < len; ++i) l[i % 4] += static_cast<double>(a[i]) * static_cast<double>(b[i]);
  return (l[0] + l[2]) + (l[1] + l[3]);
}

// Long double sum and sum of magnitudes, for the accuracy checks.
template <typename F>
std::pair<long double, long double> exactSum(int n, F term) {
  long double s = 0, m = 0;
  for (int i = 0; i < n; ++i) {
    const long double t = term(i);
    s += t;
    m += std::fabs(t);
  }
  return {s, m};
}

TEST(Sum32f, BothHintsMatchTheirGroupingAndBounds) {
  for (int len : kLengths) {
    for (size_t mis : kFloatMisalign) {
      Guarded<float> g(len, mis);
      g.assign(qtest::Rng(len).vec<float>(len, -100.0, 100.0));
      const auto [exact, mag] =
          exactSum(len, [&](int i) { return static_cast<long double>(g[i]); });
      float s1 = 0, s2 = 0;
      ASSERT_EQ(qelsSum_32f(g.data(), len, &s1, 1), qelStatusOk);
      ASSERT_EQ(qelsSum_32f(g.data(), len, &s2, 2), qelStatusOk);
      float s7 = 0;
      ASSERT_EQ(qelsSum_32f(g.data(), len, &s7, 7), qelStatusOk);  // any hint but 1
      EXPECT_TRUE(qtest::sameBits(s1, refSumHint1(g.data(), len))) << len << "/" << mis;
      EXPECT_TRUE(qtest::sameBits(s2, refSumHint2(g.data(), len))) << len << "/" << mis;
      EXPECT_TRUE(qtest::sameBits(s7, s2));
      // Single accumulation: each lane adds at most len/16 + 4 terms, each
      // addition losing 2^-24 of the running magnitude; then one rounding.
      const long double ulpOut = std::ldexp(1.0L, std::ilogb(std::max(1e-30f, std::fabs(s1))) - 24);
      EXPECT_LE(std::fabs(s1 - exact), (len / 16.0L + 8) * std::ldexp(1.0L, -24) * mag + ulpOut);
      // Double accumulation: only the final rounding counts.
      EXPECT_LE(std::fabs(s2 - exact), ulpOut + len * std::ldexp(1.0L, -52) * mag);
    }
  }
}

// Two blocks of +1e34 and two of -1e34: the running sum passes FLT_MAX,
// which only double block sums survive; the final 1 is then exact.
TEST(Sum32f, BlockSumsInDouble) {
  const int len = 4 * 32768 + 1;
  Guarded<float> g(len);
  for (int i = 0; i < len - 1; ++i) g[i] = i < 2 * 32768 ? 1e34f : -1e34f;
  g[len - 1] = 1.0f;
  for (int hint : {1, 2}) {
    float s = 0;
    ASSERT_EQ(qelsSum_32f(g.data(), len, &s, hint), qelStatusOk);
    EXPECT_EQ(s, 1.0f) << hint;
  }
  std::vector<float> big(40000, 1e35f);  // a true sum beyond FLT_MAX
  float s = 0;
  ASSERT_EQ(qelsSum_32f(big.data(), 40000, &s, 1), qelStatusOk);
  EXPECT_EQ(s, INFINITY);
}

// Integer sums: exact in 64 bits, scaled, rounded to nearest even,
// saturated.
long double scaleRef(long double s, int sf) { return std::ldexp(s, -sf); }
qel32s roundSat(long double v) {
  if (v >= 2147483647.0L) return INT32_MAX;
  if (v <= -2147483648.0L) return INT32_MIN;
  return static_cast<qel32s>(std::nearbyintl(v));  // the test runs in round-to-nearest
}

TEST(SumInt, ScaledRoundedSaturated) {
  struct Case {
    std::vector<int> values;
    int repeat;
    int sf;
  };
  const Case table[] = {
      {{5}, 1, 1},            // 2.5 -> 2
      {{7}, 1, 1},            // 3.5 -> 4
      {{-5}, 1, 1},           // -2.5 -> -2
      {{3, 4}, 1, -1},        // doubles
      {{32767}, 70001, 0},    // saturates up
      {{-32768}, 300000, 4},  // wide exact sum, in range after scaling
      {{-32768}, 300000, 0},  // saturates down
      {{12345, -321, 7}, 1001, 3},
      {{1}, 1, 2000},   // scale far below: 0
      {{1}, 3, -2000},  // scale far above: saturates
      {{-1}, 3, -40},
      {{0}, 9, -2000},
  };
  for (const Case& c : table) {
    std::vector<qel16s> v16;
    std::vector<qel32s> v32;
    for (int r = 0; r < c.repeat; ++r)
      for (int x : c.values) v16.push_back(static_cast<qel16s>(x)), v32.push_back(x * 65535);
    long double s16 = 0, s32 = 0;
    for (auto x : v16) s16 += x;
    for (auto x : v32) s32 += x;
    qel32s got16 = 0, got32 = 0;
    ASSERT_EQ(qelsSum_16s32s_Sfs(v16.data(), static_cast<int>(v16.size()), &got16, c.sf),
              qelStatusOk);
    ASSERT_EQ(qelsSum_32s_Sfs(v32.data(), static_cast<int>(v32.size()), &got32, c.sf), qelStatusOk);
    EXPECT_EQ(got16, roundSat(scaleRef(s16, c.sf)))
        << c.values[0] << " x" << c.repeat << " sf " << c.sf;
    EXPECT_EQ(got32, roundSat(scaleRef(s32, c.sf)))
        << c.values[0] << " x" << c.repeat << " sf " << c.sf;
  }
  // Ties of the 32-bit path in integer arithmetic: 3, 5, 7 at factor 1.
  for (auto [x, want] : {std::pair{3, 2}, {5, 2}, {7, 4}, {-3, -2}, {-7, -4}}) {
    qel32s got;
    ASSERT_EQ(qelsSum_32s_Sfs(&x, 1, &got, 1), qelStatusOk);
    EXPECT_EQ(got, want) << x;
  }
}

TEST(DotProd, FloatFlavoursMatchGroupingAndBounds) {
  for (int len : kLengths) {
    for (size_t mis : kFloatMisalign) {
      Guarded<float> a(len, mis), b(len, (mis + 4) % 16);
      a.assign(qtest::Rng(len).vec<float>(len, -10.0, 10.0));
      b.assign(qtest::Rng(len + 7).vec<float>(len, -10.0, 10.0));
      const auto [exact, mag] =
          exactSum(len, [&](int i) { return static_cast<long double>(a[i]) * b[i]; });
      float d32 = 0;
      double d64 = 0;
      ASSERT_EQ(qelsDotProd_32f(a.data(), b.data(), len, &d32), qelStatusOk);
      ASSERT_EQ(qelsDotProd_32f64f(a.data(), b.data(), len, &d64), qelStatusOk);
      EXPECT_TRUE(qtest::sameBits(d32, refDot32f(a.data(), b.data(), len))) << len << "/" << mis;
      EXPECT_TRUE(qtest::sameBits(d64, refDotDouble4(a.data(), b.data(), len)))
          << len << "/" << mis;
      // Single: one product rounding plus at most len/16 + 8 additions a lane.
      EXPECT_LE(std::fabs(d32 - exact), (len / 16.0L + 9) * std::ldexp(1.0L, -24) * mag) << len;
      // Double with exact products: len/4 + 2 additions a lane.
      EXPECT_LE(std::fabs(d64 - exact), (len / 4.0L + 2) * std::ldexp(1.0L, -53) * mag) << len;
    }
    Guarded<double> a(len, 8), b(len);
    a.assign(qtest::Rng(len).vec<double>(len, -1e3, 1e3));
    b.assign(qtest::Rng(len + 3).vec<double>(len, -1e3, 1e3));
    const auto [exact, mag] =
        exactSum(len, [&](int i) { return static_cast<long double>(a[i]) * b[i]; });
    double d = 0;
    ASSERT_EQ(qelsDotProd_64f(a.data(), b.data(), len, &d), qelStatusOk);
    EXPECT_TRUE(qtest::sameBits(d, refDotDouble4(a.data(), b.data(), len))) << len;
    EXPECT_LE(std::fabs(d - exact), (len / 4.0L + 3) * std::ldexp(1.0L, -53) * mag) << len;
  }
}

// Integer sums and dot products over every length: exact in 64 bits.
TEST(IntegerReductions, ExactOverLengths) {
  for (int len : kLengths) {
    Guarded<qel16s> a(len, 2), b(len);
    Guarded<qel32s> c(len, 4);
    a.assign(qtest::Rng(len).vec<qel16s>(len, -32768, 32767));
    b.assign(qtest::Rng(len + 5).vec<qel16s>(len, -32768, 32767));
    c.assign(qtest::Rng(len + 1).vec<qel32s>(len, -2000000000, 2000000000));
    int64_t dot = 0;
    long double sa = 0, sc = 0;
    for (int i = 0; i < len; ++i) dot += int64_t{a[i]} * b[i], sa += a[i], sc += c[i];
    qel64s got = 0;
    qel32f gotf = 0;
    qel32s ga, gc;
    ASSERT_EQ(qelsDotProd_16s64s(a.data(), b.data(), len, &got), qelStatusOk);
    ASSERT_EQ(qelsDotProd_16s32f(a.data(), b.data(), len, &gotf), qelStatusOk);
    ASSERT_EQ(qelsSum_16s32s_Sfs(a.data(), len, &ga, 2), qelStatusOk);
    ASSERT_EQ(qelsSum_32s_Sfs(c.data(), len, &gc, 12), qelStatusOk);
    EXPECT_EQ(got, dot) << len;
    EXPECT_EQ(gotf, static_cast<float>(dot)) << len;
    EXPECT_EQ(ga, roundSat(scaleRef(sa, 2))) << len;
    EXPECT_EQ(gc, roundSat(scaleRef(sc, 12))) << len;
  }
  // Two products of -32768 * -32768 side by side exceed 32 bits.
  std::vector<qel16s> m(1000, -32768);
  qel64s got;
  ASSERT_EQ(qelsDotProd_16s64s(m.data(), m.data(), 1000, &got), qelStatusOk);
  EXPECT_EQ(got, 1000LL << 30);
  m[3] = 32767;
  ASSERT_EQ(qelsDotProd_16s64s(m.data(), m.data(), 1000, &got), qelStatusOk);
  EXPECT_EQ(got, (999LL << 30) + 32767LL * 32767);
}

// ------------------------------------------------------------- extremes

// The rule of every extreme: a scan from the first element with a strict
// comparison (ties keep the lowest index, a NaN wins only as first element).
template <typename T, bool Max>
std::pair<T, int> refExtreme(const T* p, int len) {
  T best = p[0];
  int at = 0;
  for (int i = 1; i < len; ++i)
    if (Max ? p[i] > best : p[i] < best) best = p[i], at = i;
  return {best, at};
}

template <typename T>
bool sameValue(T a, T b) {
  return (std::isnan(a) && std::isnan(b)) || a == b;
}

// Data with planted features: a random vector, optionally with the extreme
// at chosen places, NaNs, infinities or signed zeros.
template <typename T>
std::vector<std::vector<T>> extremeCases(int len, uint32_t seed) {
  std::vector<std::vector<T>> out;
  const auto base = qtest::Rng(seed).vec<T>(len, -1000.0, 1000.0);
  out.push_back(base);
  for (int at :
       {0, 1, 2, 3, 4, 7, 8, 33, 34, 40, 2047, 2048, 2049, 2100, len - 8, len - 7, len - 1}) {
    if (at < 0 || at >= len) continue;
    auto v = base;
    v[at] = 5000;
    if (at + 5 < len) v[at + 5] = 5000;  // a later tie
    v[len - 1 - at / 2] = -5000;
    out.push_back(v);
    auto w = base;
    w[at] = static_cast<T>(NAN);
    out.push_back(w);
  }
  out.push_back(std::vector<T>(len, static_cast<T>(7)));
  out.push_back(std::vector<T>(len, -std::numeric_limits<T>::infinity()));
  out.push_back(std::vector<T>(len, std::numeric_limits<T>::infinity()));
  auto z = std::vector<T>(len, static_cast<T>(-1));
  z[len / 3] = -0.0;
  z[len - 1] = 0.0;
  out.push_back(z);
  auto z2 = std::vector<T>(len, static_cast<T>(1));
  z2[len / 2] = 0.0;
  z2[0] = len > 1 ? 1 : 0;
  z2[len - 1] = -0.0;
  out.push_back(z2);
  // A first zero followed by zeros of the other sign in the next seven
  // places (so in other lanes): the first one is the answer, sign included.
  for (int at : {1, 5, 40, 2100}) {
    if (at + 8 > len) continue;
    for (T first : {T(-0.0), T(0.0)}) {
      for (T fill : {T(-1), T(1)}) {
        auto w = std::vector<T>(len, fill);
        w[at] = first;
        for (int k = 1; k < 8; ++k) w[at + k] = -first;
        out.push_back(w);
      }
    }
  }
  return out;
}

// The kernels of one type; a null entry is a flavour the library lacks.
template <typename T>
struct ExtremeFns {
  qelStatus (*maxIndx)(const T*, int, T*, int*);
  qelStatus (*minIndx)(const T*, int, T*, int*);
  qelStatus (*max)(const T*, int, T*);
  qelStatus (*min)(const T*, int, T*);
  qelStatus (*minMax)(const T*, int, T*, T*);
};

// Value and index of each kernel against the strict scan; the value-only
// kernels (and the index kernels with a null index) give the same value.
template <typename T>
void checkExtremes(const ExtremeFns<T>& fn, std::initializer_list<size_t> misaligns,
                   uint32_t salt) {
  for (int len : kLengths) {
    if (len > 5000) continue;
    for (size_t mis : misaligns) {
      for (const auto& v : extremeCases<T>(len, len + salt)) {
        Guarded<T> g(len, mis);
        g.assign(v);
        const std::string at = std::to_string(len) + "/" + std::to_string(mis);
        for (bool isMax : {true, false}) {
          const auto [want, wantAt] =
              isMax ? refExtreme<T, true>(g.data(), len) : refExtreme<T, false>(g.data(), len);
          T val = 0, only = 0;
          int idx = -1;
          ASSERT_EQ((isMax ? fn.max : fn.min)(g.data(), len, &only), qelStatusOk);
          ASSERT_TRUE(sameValue(only, want)) << at;
          if (auto f = isMax ? fn.maxIndx : fn.minIndx) {
            ASSERT_EQ(f(g.data(), len, &val, &idx), qelStatusOk);
            ASSERT_TRUE(qtest::sameBits(val, want) && idx == wantAt)
                << (isMax ? "max " : "min ") << at << ": " << val << "@" << idx << " want " << want
                << "@" << wantAt;
            // without an index it gives what the value-only kernel gives
            ASSERT_EQ(f(g.data(), len, &val, nullptr), qelStatusOk);
            ASSERT_TRUE(qtest::sameBits(val, only)) << at;
          }
        }
        if (fn.minMax) {
          T lo = 0, hi = 0;
          ASSERT_EQ(fn.minMax(g.data(), len, &lo, &hi), qelStatusOk);
          ASSERT_TRUE(sameValue(lo, refExtreme<T, false>(g.data(), len).first) &&
                      sameValue(hi, refExtreme<T, true>(g.data(), len).first))
              << at;
        }
      }
    }
  }
}

TEST(Extremes, ValueAndIndexFollowTheStrictScan) {
  checkExtremes<float>({qelsMaxIndx_32f, qelsMinIndx_32f, qelsMax_32f, qelsMin_32f, qelsMinMax_32f},
                       {0, 4, 8, 12}, 0);
  checkExtremes<double>({qelsMaxIndx_64f, nullptr, qelsMax_64f, qelsMin_64f, nullptr}, {0, 8}, 1);
}

TEST(Extremes, ElementWise) {
  const float nan = NAN;
  for (int len : kLengths) {
    if (len > 5000) continue;
    for (size_t mis : kFloatMisalign) {
      auto a = qtest::Rng(len).vec<float>(len, -10.0, 10.0);
      auto b = qtest::Rng(len + 1).vec<float>(len, -10.0, 10.0);
      if (len > 3) a[1] = nan, b[2] = nan, a[3] = b[3] = nan;
      a[len - 1] = nan;
      for (int which = 0; which < 2; ++which) {
        Guarded<float> src(len, mis), dst(len, (mis + 8) % 16);
        src.assign(a);
        dst.assign(b);
        ASSERT_EQ(which ? qelsMaxEvery_32f_I(src.data(), dst.data(), len)
                        : qelsMinEvery_32f_I(src.data(), dst.data(), len),
                  qelStatusOk);
        for (int i = 0; i < len; ++i) {
          const bool take = which ? a[i] > b[i] : a[i] < b[i];
          ASSERT_TRUE(qtest::sameBits(dst[i], take ? a[i] : b[i])) << len << " at " << i;
        }
        EXPECT_TRUE(dst.guardsIntact() && src.guardsIntact());
      }
      Guarded<qel32s> si(len, mis), di(len);
      const auto ai = qtest::Rng(len).vec<qel32s>(len, INT32_MIN, INT32_MAX);
      const auto bi = qtest::Rng(len + 9).vec<qel32s>(len, INT32_MIN, INT32_MAX);
      si.assign(ai);
      di.assign(bi);
      ASSERT_EQ(qelsMinEvery_32s_I(si.data(), di.data(), len), qelStatusOk);
      for (int i = 0; i < len; ++i) ASSERT_EQ(di[i], std::min(ai[i], bi[i]));
    }
  }
}

// The buffer, or a null pointer in its place.
template <typename T>
T* P(bool keep, Guarded<T>& g) {
  return keep ? g.data() : nullptr;
}

// Every kernel: a null pointer first, then the size; nothing written.
TEST(Reductions, ArgumentErrorsWriteNothing) {
  Guarded<float> f(8), f2(8), of(1), of2(1);
  Guarded<double> d(8), od(1);
  Guarded<qel16s> s(8);
  Guarded<qel32s> i32(8), oi(1);
  Guarded<qel64s> o64(1);
  Guarded<int> idx(1);
  // a: the first pointer checked, b: the second; n: the length.
  using C = std::function<qelStatus(bool, bool, int)>;
  const C calls[] = {
      [&](bool a, bool b, int n) { return qelsSum_32f(P(a, f), n, P(b, of), 1); },
      [&](bool a, bool b, int n) { return qelsSum_16s32s_Sfs(P(a, s), n, P(b, oi), 0); },
      [&](bool a, bool b, int n) { return qelsSum_32s_Sfs(P(a, i32), n, P(b, oi), 0); },
      [&](bool a, bool b, int n) { return qelsDotProd_32f(f.data(), P(a, f2), n, P(b, of)); },
      [&](bool a, bool b, int n) { return qelsDotProd_32f(P(a, f), f2.data(), n, P(b, of)); },
      [&](bool a, bool b, int n) { return qelsDotProd_32f64f(P(a, f), f2.data(), n, P(b, od)); },
      [&](bool a, bool b, int n) { return qelsDotProd_64f(d.data(), P(a, d), n, P(b, od)); },
      [&](bool a, bool b, int n) { return qelsDotProd_16s64s(P(a, s), s.data(), n, P(b, o64)); },
      [&](bool a, bool b, int n) { return qelsDotProd_16s32f(s.data(), P(a, s), n, P(b, of)); },
      [&](bool a, bool b, int n) { return qelsMax_32f(P(a, f), n, P(b, of)); },
      [&](bool a, bool b, int n) { return qelsMax_64f(P(a, d), n, P(b, od)); },
      [&](bool a, bool b, int n) { return qelsMin_32f(P(a, f), n, P(b, of)); },
      [&](bool a, bool b, int n) { return qelsMin_64f(P(a, d), n, P(b, od)); },
      [&](bool a, bool b, int n) { return qelsMinMax_32f(P(a, f), n, of.data(), P(b, of2)); },
      [&](bool a, bool b, int n) { return qelsMinMax_32f(f.data(), n, P(a, of), P(b, of2)); },
      [&](bool a, bool b, int n) { return qelsMaxIndx_32f(P(a, f), n, P(b, of), idx.data()); },
      [&](bool a, bool b, int n) { return qelsMaxIndx_32f(P(a, f), n, P(b, of), nullptr); },
      [&](bool a, bool b, int n) { return qelsMaxIndx_64f(P(a, d), n, P(b, od), idx.data()); },
      [&](bool a, bool b, int n) { return qelsMinIndx_32f(P(a, f), n, P(b, of), idx.data()); },
      [&](bool a, bool b, int n) { return qelsMaxEvery_32f_I(P(a, f), P(b, f2), n); },
      [&](bool a, bool b, int n) { return qelsMinEvery_32f_I(P(a, f), P(b, f2), n); },
      [&](bool a, bool b, int n) { return qelsMinEvery_32s_I(P(a, i32), P(b, oi), n); },
  };
  for (size_t k = 0; k < std::size(calls); ++k) {
    EXPECT_EQ(calls[k](false, true, 8), qelStatusNullPtr) << k;
    EXPECT_EQ(calls[k](true, false, 8), qelStatusNullPtr) << k;
    EXPECT_EQ(calls[k](false, true, 0), qelStatusNullPtr) << k;  // null before size
    EXPECT_EQ(calls[k](true, true, 0), qelStatusSize) << k;
    EXPECT_EQ(calls[k](true, true, -1), qelStatusSize) << k;
  }
  EXPECT_TRUE(f.untouched() && f2.untouched() && of.untouched() && of2.untouched());
  EXPECT_TRUE(d.untouched() && od.untouched() && s.untouched() && i32.untouched());
  EXPECT_TRUE(oi.untouched() && o64.untouched() && idx.untouched());
}

}  // namespace
