// Natural logarithms: element-wise in single precision (float and integer
// flavours) and the sum of logarithms, which multiplies mantissas and adds
// exponents so that one logarithm serves a whole pass.
#include <cstdint>
#include <cstring>

#include "base/base.h"
#include "base/simd.h"
#include "frame/frame.h"

namespace {

using qelsr::simd::loadps;
using qelsr::simd::storeps;

// ---------------------------------------------------------------------------
// Single-precision logarithm of four lanes.
//
// x = 2^k * m with m in [sqrt(1/2), sqrt(2)), f = m - 1 (exact), and
// s = (m - 1) / (m + 1) = f / (2 + f), |s| <= 0.1716. Then
//   ln m = 2 atanh(s) = 2s + s*R(s^2),  R(z) = 2z/3 + 2z^2/5 + 2z^3/7 + 2z^4/9,
// (the Taylor coefficients; the first omitted term is below 2^-28 of the
// result). It is evaluated as f - (hfsq - s*(hfsq + R)) with hfsq = f*f/2, an
// algebraically equal form in which the leading term f is exact and all
// rounding falls on corrections smaller than a fifth of the result; k*ln 2 is
// added as k*ln2_hi (exact: ln2_hi has 15 significant bits) plus k*ln2_lo.
// Measured error: at most 1 ulp from the correctly rounded single result over
// the whole positive range, denormals included (about 0.6% of the inputs are
// 1 ulp off); the tests check it against the double logarithm.
// ---------------------------------------------------------------------------
constexpr float kLn2HiF = 0x1.62e4p-1f;
constexpr float kLn2LoF = 1.4286068203094173e-06f;
constexpr float kTwoThirds = 2.0f / 3.0f;
constexpr float kTwoFifths = 2.0f / 5.0f;
constexpr float kTwoSevenths = 2.0f / 7.0f;
constexpr float kTwoNinths = 2.0f / 9.0f;

struct LnLanes {
  __m128 value;
  int zeroMask;  // lanes that held a zero (either sign)
  int negMask;   // lanes that held a negative number (including -inf)
};

inline __m128i bitsOf(__m128 v) { return _mm_castps_si128(v); }
inline __m128 floatsOf(__m128i v) { return _mm_castsi128_ps(v); }

inline __m128 blend(__m128 mask, __m128 a, __m128 b) {  // mask ? a : b
  return _mm_or_ps(_mm_and_ps(mask, a), _mm_andnot_ps(mask, b));
}

// ln x for lanes that hold positive, normal, finite values; `kAdjust` is
// subtracted from the exponent (it undoes a prescaling of denormals).
inline __m128 lnCore(__m128 x, __m128i kAdjust) {
  // Shift the exponent split so the mantissa lands in [sqrt(1/2), sqrt(2)).
  const __m128i ix = _mm_add_epi32(bitsOf(x), _mm_set1_epi32(0x3f800000 - 0x3f3504f3));
  const __m128i k =
      _mm_sub_epi32(_mm_sub_epi32(_mm_srai_epi32(ix, 23), _mm_set1_epi32(0x7f)), kAdjust);
  const __m128 m = floatsOf(
      _mm_add_epi32(_mm_and_si128(ix, _mm_set1_epi32(0x007fffff)), _mm_set1_epi32(0x3f3504f3)));
  const __m128 kf = _mm_cvtepi32_ps(k);

  const __m128 f = _mm_sub_ps(m, _mm_set1_ps(1.0f));
  const __m128 s = _mm_div_ps(f, _mm_add_ps(_mm_set1_ps(2.0f), f));
  const __m128 z = _mm_mul_ps(s, s);
  __m128 r = _mm_add_ps(_mm_set1_ps(kTwoSevenths), _mm_mul_ps(z, _mm_set1_ps(kTwoNinths)));
  r = _mm_add_ps(_mm_set1_ps(kTwoFifths), _mm_mul_ps(z, r));
  r = _mm_add_ps(_mm_set1_ps(kTwoThirds), _mm_mul_ps(z, r));
  r = _mm_mul_ps(z, r);
  const __m128 hfsq = _mm_mul_ps(_mm_mul_ps(_mm_set1_ps(0.5f), f), f);
  // k*ln2_hi - ((hfsq - (s*(hfsq + R) + k*ln2_lo)) - f)
  const __m128 corr =
      _mm_add_ps(_mm_mul_ps(s, _mm_add_ps(hfsq, r)), _mm_mul_ps(kf, _mm_set1_ps(kLn2LoF)));
  return _mm_sub_ps(_mm_mul_ps(kf, _mm_set1_ps(kLn2HiF)), _mm_sub_ps(_mm_sub_ps(hfsq, corr), f));
}

// True in lanes whose bit pattern is a positive, normal, finite single.
inline int normalPositiveMask(__m128 x) {
  const __m128i b = bitsOf(x);
  return _mm_movemask_ps(floatsOf(_mm_and_si128(_mm_cmpgt_epi32(b, _mm_set1_epi32(0x007fffff)),
                                                _mm_cmplt_epi32(b, _mm_set1_epi32(0x7f800000)))));
}

// Any lanes: zero, negative, NaN, infinite and denormal ones included.
inline LnLanes lnLanes(__m128 x) {
  const __m128 zero = _mm_setzero_ps();
  const __m128 isZero = _mm_cmpeq_ps(x, zero);
  const __m128 isNeg = _mm_cmplt_ps(x, zero);
  const __m128 isNan = _mm_cmpunord_ps(x, x);
  const __m128 isInf = _mm_cmpeq_ps(x, _mm_set1_ps(qelConstantOfINF_32f));

  // Denormals are brought into the normal range first (2^25 is exact).
  const __m128 isTiny = _mm_cmplt_ps(x, _mm_set1_ps(0x1p-126f));
  const __m128 scaled = blend(isTiny, _mm_mul_ps(x, _mm_set1_ps(0x1p25f)), x);
  const __m128i kAdjust = _mm_and_si128(bitsOf(isTiny), _mm_set1_epi32(25));
  __m128 y = lnCore(scaled, kAdjust);

  y = blend(isInf, x, y);
  y = blend(isZero, _mm_set1_ps(qelConstantOfINF_NEG_32f), y);
  y = blend(isNeg, _mm_set1_ps(qelConstantOfNAN_32f), y);
  y = blend(isNan, x, y);  // a NaN passes through unchanged
  return {y, _mm_movemask_ps(isZero), _mm_movemask_ps(_mm_andnot_ps(isZero, isNeg))};
}

// Only the first bad element of the whole vector decides the status: 2 for
// a zero, 4 for a negative value, in element order across all passes.
inline void noteFirstFlag(int& flag, int zeroMask, int negMask) {
  if (flag != 0) return;
  const int any = zeroMask | negMask;
  if (any == 0) return;
  const int lowest = __builtin_ctz(static_cast<unsigned>(any));
  flag = ((zeroMask >> lowest) & 1) ? 2 : 4;
}

inline qelStatus statusOfFlag(int flag) {
  return flag == 2 ? qelStatusWarnLogZero : flag == 4 ? qelStatusWarnLogNeg : qelStatusOk;
}

// The work goes in passes of at most 256 elements; the flag carries over.
constexpr int kLnPass = 256;

template <bool Aligned>
void lnPass32f(float* p, int n, int& flag) {
  int i = 0;
  for (; i + 4 <= n; i += 4) {
    // Groups of ordinary values skip the special cases; both ways give the
    // same bits for an ordinary value.
    const __m128 x = loadps<Aligned>(p + i);
    if (normalPositiveMask(x) == 0xf) {
      storeps<Aligned>(p + i, lnCore(x, _mm_setzero_si128()));
    } else {
      const LnLanes r = lnLanes(x);
      noteFirstFlag(flag, r.zeroMask, r.negMask);
      storeps<Aligned>(p + i, r.value);
    }
  }
  if (i < n) {
    // The tail runs through the same lanes, padded with ones, so every
    // element gets the same arithmetic wherever it lies.
    alignas(16) float tmp[4] = {1.0f, 1.0f, 1.0f, 1.0f};
    const int rest = n - i;
    std::memcpy(tmp, p + i, sizeof(float) * rest);
    const LnLanes r = lnLanes(_mm_load_ps(tmp));
    noteFirstFlag(flag, r.zeroMask, r.negMask);
    _mm_store_ps(tmp, r.value);
    std::memcpy(p + i, tmp, sizeof(float) * rest);
  }
}

template <bool Aligned>
int lnKernel32f(float* p, int len) {
  int flag = 0;
  for (int done = 0; done < len; done += kLnPass) {
    const int n = len - done < kLnPass ? len - done : kLnPass;
    lnPass32f<Aligned>(p + done, n, flag);
  }
  return flag;
}

// ---------------------------------------------------------------------------
// Integer logarithm.
// ---------------------------------------------------------------------------

// Lower bounds of the nearest integer n of ln x for n = 1..21: the smallest
// integer x with ln x >= n - 1/2.
constexpr qel32s kLnBounds[21] = {2,         5,         13,       34,      91,       245,
                                  666,       1809,      4915,     13360,   36316,    98716,
                                  268338,    729417,    1982760,  5389699, 14650720, 39824785,
                                  108254988, 294267567, 799902178};

inline __m128i blendi(__m128i mask, __m128i a, __m128i b) {
  return _mm_or_si128(_mm_and_si128(mask, a), _mm_andnot_si128(mask, b));
}

// Four integer logarithms. scaleFactor >= 0: the count of bounds at or below
// x is the nearest integer of ln x (the vector form of the comparison tree),
// shifted right by the factor. scaleFactor < 0: the single-precision
// logarithm of float(x), times 2^(-scaleFactor), rounded to nearest even and
// saturated. Non-positive x gives INT32_MIN in both.
inline __m128i ln32sLanes(__m128i x, int scaleFactor, __m128 scale, int& flag) {
  const __m128i zero = _mm_setzero_si128();
  const __m128i isZero = _mm_cmpeq_epi32(x, zero);
  const __m128i isNeg = _mm_cmplt_epi32(x, zero);
  noteFirstFlag(flag, _mm_movemask_ps(_mm_castsi128_ps(isZero)),
                _mm_movemask_ps(_mm_castsi128_ps(isNeg)));
  __m128i n;
  if (scaleFactor >= 0) {
    n = _mm_set1_epi32(21);
    for (qel32s b : kLnBounds)  // cmpgt(b, x) is -1 for every bound above x
      n = _mm_add_epi32(n, _mm_cmpgt_epi32(_mm_set1_epi32(b), x));
    n = _mm_srl_epi32(n, _mm_cvtsi32_si128(scaleFactor > 31 ? 31 : scaleFactor));
  } else {
    const __m128 y = _mm_mul_ps(lnLanes(_mm_cvtepi32_ps(x)).value, scale);
    n = _mm_cvtps_epi32(y);  // round to nearest even: the caller forced the mode
    const __m128 over = _mm_cmpge_ps(y, _mm_set1_ps(2147483648.0f));
    n = blendi(_mm_castps_si128(over), _mm_set1_epi32(0x7fffffff), n);
    // 0 * inf (ln 1 under an infinite scale) is NaN and stands for 0.
    n = _mm_andnot_si128(_mm_castps_si128(_mm_cmpunord_ps(y, y)), n);
  }
  return blendi(_mm_or_si128(isZero, isNeg), _mm_set1_epi32(INT32_MIN), n);
}

int lnKernel32s(const qel32s* pSrc, qel32s* pDst, int len, int scaleFactor) {
  // The float path converts and rounds by the hardware in round-to-nearest;
  // the caller's mode is restored on the way out.
  const unsigned csr = _mm_getcsr();
  const bool forceNearest = scaleFactor < 0 && (csr & _MM_ROUND_MASK) != _MM_ROUND_NEAREST;
  if (forceNearest) _mm_setcsr((csr & ~_MM_ROUND_MASK) | _MM_ROUND_NEAREST);
  const __m128 scale = _mm_set1_ps(GetScale_32s32f(scaleFactor));

  int flag = 0;
  for (int done = 0; done < len; done += kLnPass) {
    const int n = len - done < kLnPass ? len - done : kLnPass;
    const qel32s* s = pSrc + done;
    qel32s* d = pDst + done;
    int i = 0;
    for (; i + 4 <= n; i += 4)
      _mm_storeu_si128(reinterpret_cast<__m128i*>(d + i),
                       ln32sLanes(_mm_loadu_si128(reinterpret_cast<const __m128i*>(s + i)),
                                  scaleFactor, scale, flag));
    if (i < n) {
      alignas(16) qel32s tmp[4] = {1, 1, 1, 1};
      const int rest = n - i;
      std::memcpy(tmp, s + i, sizeof(qel32s) * rest);
      _mm_store_si128(reinterpret_cast<__m128i*>(tmp),
                      ln32sLanes(_mm_load_si128(reinterpret_cast<const __m128i*>(tmp)), scaleFactor,
                                 scale, flag));
      std::memcpy(d + i, tmp, sizeof(qel32s) * rest);
    }
  }
  if (forceNearest) _mm_setcsr(csr);
  return flag;
}

// ---------------------------------------------------------------------------
// Sum of logarithms.
//
// A pass of at most 512 elements multiplies the mantissas (each forced into
// [1, 2)) in two double lanes, even elements in lane 0 and odd ones in lane 1,
// and adds the exponents as integers: 256 factors below 2 cannot overflow a
// lane. At the end of the pass the lanes are multiplied (below 2^512), and
// one table-driven double logarithm gives ln(product) + exponentSum * ln 2.
// The pass results are added in double.
// ---------------------------------------------------------------------------
constexpr int kSumLnPass = 512;

// ln(1 + (j + 1/2)/128) for j = 0..127 as a double plus its remainder,
// computed to 50 digits and rounded to double twice.
constexpr double kLnTable[128][2] = {
    {0x1.ff00aa2b10bc0p-9, 0x1.2821ad5a6d353p-63},  {0x1.7dc475f810a77p-7, -0x1.16d7687d3df21p-62},
    {0x1.3cea44346a575p-6, -0x1.0cb5a902b3a1cp-62}, {0x1.b9fc027af9198p-6, -0x1.0ae69229dc868p-64},
    {0x1.1b0d98923d980p-5, -0x1.e9ae889bac481p-60}, {0x1.58a5bafc8e4d5p-5, -0x1.ce55c2b4e2b72p-59},
    {0x1.95c830ec8e3ebp-5, 0x1.f5a0e80520bf2p-59},  {0x1.d276b8adb0b52p-5, 0x1.1e3c53257fd47p-61},
    {0x1.075983598e471p-4, 0x1.80da5333c45b8p-59},  {0x1.253f62f0a1417p-4, -0x1.c125963fc4cfdp-62},
    {0x1.42edcbea646f0p-4, 0x1.ddd4f935996c9p-59},  {0x1.60658a93750c4p-4, -0x1.388458ec21b6ap-58},
    {0x1.7da766d7b12cdp-4, -0x1.eeedfcdd94131p-58}, {0x1.9ab42462033adp-4, -0x1.2099e1c184e8ep-59},
    {0x1.b78c82bb0eda1p-4, 0x1.0878cf0327e21p-61},  {0x1.d4313d66cb35dp-4, 0x1.790dd951d90fap-58},
    {0x1.f0a30c01162a6p-4, 0x1.85f325c5bbacdp-58},  {0x1.0671512ca596ep-3, 0x1.50c647eb86499p-58},
    {0x1.14785846742acp-3, 0x1.a28813e3a7f07p-57},  {0x1.2266f190a5acbp-3, 0x1.f547bf1809e88p-57},
    {0x1.303d718e47fd3p-3, -0x1.6b9c7d96091fap-63}, {0x1.3dfc2b0ecc62ap-3, -0x1.ab3a8e7d81017p-58},
    {0x1.4ba36f39a55e5p-3, 0x1.68981bcc36756p-57},  {0x1.59338d9982086p-3, -0x1.65d22aa8ad7cfp-58},
    {0x1.66acd4272ad51p-3, -0x1.0900e4e1ea8b2p-58}, {0x1.740f8f54037a5p-3, -0x1.b264062a84cdbp-58},
    {0x1.815c0a14357ebp-3, -0x1.4be48073a0564p-58}, {0x1.8e928de886d41p-3, -0x1.569d851a56770p-57},
    {0x1.9bb362e7dfb83p-3, 0x1.575e31f003e0cp-57},  {0x1.a8becfc882f19p-3, -0x1.e8c37918c39ebp-58},
    {0x1.b5b519e8fb5a4p-3, 0x1.ba27fdc19e1a0p-57},  {0x1.c2968558c18c1p-3, -0x1.73dee38a3fb6bp-57},
    {0x1.cf6354e09c5dcp-3, 0x1.239a07d55b695p-57},  {0x1.dc1bca0abec7dp-3, 0x1.834c51998b6fcp-57},
    {0x1.e8c0252aa5a60p-3, -0x1.6e03a39bfc89bp-59}, {0x1.f550a564b7b37p-3, 0x1.c5f6dfd018c37p-61},
    {0x1.00e6c45ad501dp-2, -0x1.cb9568ff6feadp-57}, {0x1.071b85fcd590dp-2, 0x1.d1707f97bde80p-58},
    {0x1.0d46b579ab74bp-2, 0x1.03ec81c3cbd92p-57},  {0x1.136870293a8b0p-2, 0x1.7b66298edd24ap-56},
    {0x1.1980d2dd4236fp-2, 0x1.9d3d1b0e4d147p-56},  {0x1.1f8ff9e48a2f3p-2, -0x1.c9fdf9a0c4b07p-56},
    {0x1.2596010df763ap-2, -0x1.0f76c57075e9ep-58}, {0x1.2b9303ab89d25p-2, -0x1.896b5fd852ad4p-56},
    {0x1.31871c9544185p-2, -0x1.51acc4c09b379p-60}, {0x1.3772662bfd85bp-2, -0x1.b5629d8117de7p-59},
    {0x1.3d54fa5c1f710p-2, -0x1.e3265c6a1c98dp-56}, {0x1.432ef2a04e814p-2, -0x1.29931715ac903p-56},
    {0x1.49006804009d1p-2, -0x1.9ffc341f177dcp-57}, {0x1.4ec973260026ap-2, -0x1.42a87d977dc5ep-56},
    {0x1.548a2c3add263p-2, -0x1.819cf7e308ddbp-57}, {0x1.5a42ab0f4cfe2p-2, -0x1.8ebcb7dee9a3dp-56},
    {0x1.5ff3070a793d4p-2, -0x1.bc60efafc6f6ep-57}, {0x1.659b57303e1f3p-2, -0x1.f893d41c411f1p-56},
    {0x1.6b3bb2235943ep-2, -0x1.da856ccd987b3p-56}, {0x1.70d42e2789236p-2, -0x1.52cc811d78d59p-57},
    {0x1.7664e1239dbcfp-2, -0x1.f6d5d64f5daf8p-57}, {0x1.7bede0a37afc0p-2, -0x1.8783cb9801a5cp-56},
    {0x1.816f41da0d496p-2, -0x1.2923ca04b701cp-56}, {0x1.86e919a330ba0p-2, 0x1.3f9b16feb7dd8p-59},
    {0x1.8c5b7c858b48bp-2, -0x1.e0ab4fdfa0595p-56}, {0x1.91c67eb45a83ep-2, -0x1.e0e0ae234ae11p-56},
    {0x1.972a341135158p-2, 0x1.a5c09d24b70d9p-56},  {0x1.9c86b02dc0863p-2, -0x1.917eeb69dd421p-56},
    {0x1.a1dc064d5b995p-2, 0x1.90128698ba0b8p-56},  {0x1.a72a4966bd9eap-2, 0x1.6a76b1a7d87c3p-58},
    {0x1.ac718c258b0e4p-2, 0x1.8163d6f46f714p-59},  {0x1.b1b1e0ebdfc5bp-2, 0x1.a4479608a2c55p-56},
    {0x1.b6eb59d3cf35ep-2, -0x1.8adbccd326a3cp-56}, {0x1.bc1e08b0dad0ap-2, 0x1.09e8707055996p-56},
    {0x1.c149ff115f027p-2, -0x1.4cbcb90c06305p-56}, {0x1.c66f4e3ff6ff8p-2, -0x1.82947258b688bp-58},
    {0x1.cb8e0744d7acap-2, -0x1.48879a214a2afp-61}, {0x1.d0a63ae721e64p-2, 0x1.2acce112c40f2p-57},
    {0x1.d5b7f9ae2c684p-2, -0x1.a7be7f84ac06ap-57}, {0x1.dac353e2c5954p-2, 0x1.18734b81a1bf8p-57},
    {0x1.dfc859906d5b5p-2, 0x1.01e1399f96398p-56},  {0x1.e4c71a8687704p-2, 0x1.667923e1f5a8ep-57},
    {0x1.e9bfa659861f5p-2, 0x1.91bafc7dbe130p-56},  {0x1.eeb20c640ddf4p-2, 0x1.ac371d7c8f7f5p-57},
    {0x1.f39e5bc811e5cp-2, -0x1.97fc777bb19e5p-57}, {0x1.f884a36fe9ec2p-2, 0x1.6315c9e010800p-57},
    {0x1.fd64f20f61572p-2, -0x1.adb0ac2cead1bp-57}, {0x1.011fab125ff8ap-1, 0x1.810dd40845ddep-57},
    {0x1.0389eefce633bp-1, 0x1.e155c53483748p-56},  {0x1.05f14bd26459cp-1, 0x1.535b8ee4f9efep-58},
    {0x1.0855c884b450ep-1, 0x1.705826e49f318p-55},  {0x1.0ab76bece14d2p-1, -0x1.fd6c935453f66p-56},
    {0x1.0d163ccb9d6b8p-1, -0x1.f7b9a9a8bc30fp-57}, {0x1.0f7241c9b497dp-1, 0x1.3a8443b9db19dp-55},
    {0x1.11cb81787ccf8p-1, 0x1.02387ab1fcc90p-55},  {0x1.1422025243d45p-1, -0x1.ad0e24adb489ep-58},
    {0x1.1675cababa60ep-1, 0x1.ce63eab883717p-60},  {0x1.18c6e0ff5cf06p-1, 0x1.765142c2c671fp-58},
    {0x1.1b154b57da29fp-1, -0x1.011eb47db6a99p-57}, {0x1.1d610fe677003p-1, 0x1.09d58d91e58f2p-58},
    {0x1.1faa34b87094cp-1, 0x1.817b8f7a193b0p-58},  {0x1.21f0bfc65beecp-1, -0x1.e24f0c9187c92p-57},
    {0x1.2434b6f483934p-1, -0x1.debb8cf0f6d11p-57}, {0x1.26762013430e0p-1, -0x1.96a95781c6727p-56},
    {0x1.28b500df60783p-1, -0x1.43f60605aaab3p-55}, {0x1.2af15f02640adp-1, 0x1.cb064524aceb0p-57},
    {0x1.2d2b4012edc9ep-1, -0x1.51162c99b1cabp-55}, {0x1.2f62a99509546p-1, 0x1.6c686739ffd99p-56},
    {0x1.3197a0fa7fe6ap-1, 0x1.d6348fb97128fp-57},  {0x1.33ca2ba328995p-1, -0x1.bf28b3205ede1p-56},
    {0x1.35fa4edd36ea0p-1, 0x1.27d4680964362p-60},  {0x1.38280fe58797fp-1, -0x1.015bd362a6e5dp-55},
    {0x1.3a5373e7ebdfap-1, -0x1.cd8f775b8f76ep-55}, {0x1.3c7c7fff73206p-1, -0x1.be80db7025bedp-56},
    {0x1.3ea33936b2f5cp-1, -0x1.f099168a1360bp-55}, {0x1.40c7a4880dce9p-1, 0x1.14f22de7fc9e1p-56},
    {0x1.42e9c6ddf80bfp-1, 0x1.657dc7a65061dp-56},  {0x1.4509a5133bb0ap-1, 0x1.40fe2852d7b5ap-55},
    {0x1.472743f33aaadp-1, 0x1.8d6cf012a2948p-56},  {0x1.4942a83a2fc07p-1, 0x1.ed0c544652b5ap-55},
    {0x1.4b5bd6956e274p-1, -0x1.c87a06beea773p-55}, {0x1.4d72d3a39fd00p-1, 0x1.1cd4d414e008dp-55},
    {0x1.4f87a3f5026e9p-1, -0x1.e8ca8b1bcea9dp-55}, {0x1.519a4c0ba3446p-1, 0x1.9b32128e4a77fp-55},
    {0x1.53aad05b99b7dp-1, -0x1.55c8b052e2539p-55}, {0x1.55b9354b40bcdp-1, 0x1.e4197a357cb37p-56},
    {0x1.57c57f336f191p-1, -0x1.e953a3bc88192p-55}, {0x1.59cfb25fae87ep-1, -0x1.172904559c6b6p-58},
    {0x1.5bd7d30e71c73p-1, 0x1.bf8da6db2b45cp-57},  {0x1.5ddde57149923p-1, 0x1.dcfa37d75ef28p-55},
    {0x1.5fe1edad18919p-1, -0x1.ca8b610e18dbfp-55}, {0x1.61e3efda46467p-1, -0x1.a1b727edefae3p-55},
};

constexpr double kLn2Hi = 0x1.62e42feep-1;  // 32 significant bits
constexpr double kLn2Lo = 0x1.a39ef35793c76p-33;

// ln(p) for a finite p >= 1 (the product of the lanes) plus e * ln 2.
// p = 2^q * m, m in [1, 2); c = 1 + (j + 1/2)/128 is the centre of the
// table interval holding m, f = m - c is exact, s = f / (m + c) has |s| below
// 2^-9 and ln(m / c) = 2 atanh(s) = 2s + 2s^3/3 + 2s^5/5 within 2^-66.
// The error is within about 1 ulp of the pass result.
double logOfPass(double p, std::int64_t e) {
  std::uint64_t bits;
  std::memcpy(&bits, &p, sizeof bits);
  e += static_cast<std::int64_t>(bits >> 52) - 1023;
  const std::uint64_t mbits = (bits & 0x000fffffffffffffull) | 0x3ff0000000000000ull;
  double m;
  std::memcpy(&m, &mbits, sizeof m);
  const int j = static_cast<int>((mbits >> 45) & 127);
  const double c = 1.0 + (j + 0.5) / 128.0;
  const double f = m - c;
  const double s = f / (m + c);
  const double z = s * s;
  const double poly = s * z * (2.0 / 3.0 + z * (2.0 / 5.0));
  const double ed = static_cast<double>(e);
  const double hi = ed * kLn2Hi + kLnTable[j][0];
  const double lo = 2.0 * s + (poly + (kLnTable[j][1] + ed * kLn2Lo));
  return hi + lo;
}

// What stops the scan, or lets it go on.
enum class Scan { Go, Zero, Negative, NotANumber };

// The running state of one pass.
struct SumLnPassState {
  __m128d product = _mm_set1_pd(1.0);
  __m128i exponents = _mm_setzero_si128();  // two 64-bit lanes of biased exponents
  std::int64_t bias = 0;                    // what to subtract from the exponent sum
  bool sawInfinity = false;
};

// Classifies one element for the careful path: stops the scan, or yields a
// mantissa in [1, 2) and an unbiased exponent. +inf contributes 1 * 2^0 and
// sets the infinity mark (the sum is then +inf unless a later element stops
// the scan).
template <typename T>
Scan splitOne(T x, double& mant, std::int64_t& expo, bool& sawInfinity) {
  if (x != x) return Scan::NotANumber;
  if (x == 0) return Scan::Zero;
  if (x < 0) return Scan::Negative;
  double d = static_cast<double>(x);
  expo = 0;
  if (d == qelConstantOfINF_64f) {
    sawInfinity = true;
    mant = 1.0;
    return Scan::Go;
  }
  if (d < 0x1p-1022) {  // only a double can be denormal here
    d *= 0x1p54;
    expo = -54;
  }
  std::uint64_t bits;
  std::memcpy(&bits, &d, sizeof bits);
  expo += static_cast<std::int64_t>(bits >> 52) - 1023;
  bits = (bits & 0x000fffffffffffffull) | 0x3ff0000000000000ull;
  std::memcpy(&mant, &bits, sizeof mant);
  return Scan::Go;
}

// The slow path of four elements of either type: each split on its own
// (denormals by their true exponent), the first special element ending the
// scan; mantissas to the lanes as (m0, m1) and (m2, m3), so that the pass
// product takes (m0*m2, m1*m3) as on the fast paths.
template <typename T>
inline Scan splitQuad(const T* p, SumLnPassState& st, __m128d& lo, __m128d& hi) {
  double mant[4];
  std::int64_t expo[4];
  for (int k = 0; k < 4; ++k) {
    const Scan s = splitOne(p[k], mant[k], expo[k], st.sawInfinity);
    if (s != Scan::Go) return s;
  }
  st.exponents = _mm_add_epi64(st.exponents, _mm_set_epi64x(expo[1] + expo[3], expo[0] + expo[2]));
  lo = _mm_set_pd(mant[1], mant[0]);
  hi = _mm_set_pd(mant[3], mant[2]);
  return Scan::Go;
}

// Four singles. Fast path: all four positive, normal and finite; the
// mantissas of elements 0..3 go to the lanes as (m0*m2, m1*m3), products of
// two 24-bit mantissas being exact in double.
inline Scan sumLnQuad(const float* p, SumLnPassState& st) {
  const __m128i bits = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
  const __m128i ok = _mm_and_si128(_mm_cmpgt_epi32(bits, _mm_set1_epi32(0x007fffff)),
                                   _mm_cmplt_epi32(bits, _mm_set1_epi32(0x7f800000)));
  __m128d lo, hi;
  if (_mm_movemask_ps(_mm_castsi128_ps(ok)) == 0xf) {
    const __m128i e = _mm_srli_epi32(bits, 23);
    // Exponent fields of elements (0, 2) and (1, 3) summed into 64-bit lanes.
    const __m128i e64 = _mm_add_epi64(_mm_unpacklo_epi32(e, _mm_setzero_si128()),
                                      _mm_unpackhi_epi32(e, _mm_setzero_si128()));
    st.exponents = _mm_add_epi64(st.exponents, e64);
    st.bias += 4 * 127;
    const __m128 m = _mm_castsi128_ps(
        _mm_or_si128(_mm_and_si128(bits, _mm_set1_epi32(0x007fffff)), _mm_set1_epi32(0x3f800000)));
    lo = _mm_cvtps_pd(m);
    hi = _mm_cvtps_pd(_mm_movehl_ps(m, m));
  } else if (const Scan s = splitQuad(p, st, lo, hi); s != Scan::Go) {
    return s;
  }
  st.product = _mm_mul_pd(st.product, _mm_mul_pd(lo, hi));
  return Scan::Go;
}

// Four doubles: lanes (m0*m2, m1*m3) as above; the pair products round.
inline Scan sumLnQuad(const double* p, SumLnPassState& st) {
  const __m128d a = _mm_loadu_pd(p), b = _mm_loadu_pd(p + 2);
  const __m128d lowest = _mm_set1_pd(0x1p-1022), highest = _mm_set1_pd(0x1.fffffffffffffp1023);
  const int ok = _mm_movemask_pd(_mm_and_pd(_mm_cmpge_pd(a, lowest), _mm_cmple_pd(a, highest))) &
                 _mm_movemask_pd(_mm_and_pd(_mm_cmpge_pd(b, lowest), _mm_cmple_pd(b, highest)));
  __m128d ma, mb;
  if (ok == 3) {
    const __m128i mantMask = _mm_set1_epi64x(0x000fffffffffffffll);
    const __m128i one = _mm_set1_epi64x(0x3ff0000000000000ll);
    const __m128i ba = _mm_castpd_si128(a), bb = _mm_castpd_si128(b);
    st.exponents =
        _mm_add_epi64(st.exponents, _mm_add_epi64(_mm_srli_epi64(ba, 52), _mm_srli_epi64(bb, 52)));
    st.bias += 4 * 1023;
    ma = _mm_castsi128_pd(_mm_or_si128(_mm_and_si128(ba, mantMask), one));
    mb = _mm_castsi128_pd(_mm_or_si128(_mm_and_si128(bb, mantMask), one));
  } else if (const Scan s = splitQuad(p, st, ma, mb); s != Scan::Go) {
    return s;
  }
  st.product = _mm_mul_pd(st.product, _mm_mul_pd(ma, mb));
  return Scan::Go;
}

// Returns the status; *sum receives the double result.
template <typename T>
qelStatus sumLnKernel(const T* pSrc, int len, double* sum) {
  double total = 0.0;
  bool sawInfinity = false;
  for (int done = 0; done < len; done += kSumLnPass) {
    const int n = len - done < kSumLnPass ? len - done : kSumLnPass;
    const T* p = pSrc + done;
    SumLnPassState st;
    int i = 0;
    Scan s = Scan::Go;
    for (; i + 4 <= n && s == Scan::Go; i += 4) s = sumLnQuad(p + i, st);
    if (s == Scan::Go && i < n) {
      T tmp[4] = {T(1), T(1), T(1), T(1)};  // ones contribute 1 * 2^0
      for (int k = 0; k < n - i; ++k) tmp[k] = p[i + k];
      s = sumLnQuad(tmp, st);
    }
    switch (s) {
      case Scan::Go:
        break;
      case Scan::Zero:
        *sum = qelConstantOfINF_64f;
        return qelStatusWarnLogZero;
      case Scan::Negative:
        *sum = qelConstantOfNAN_64f;
        return qelStatusWarnLogNeg;
      case Scan::NotANumber:
        *sum = qelConstantOfNAN_64f;
        return qelStatusOk;
    }
    sawInfinity = sawInfinity || st.sawInfinity;
    alignas(16) double lanes[2];
    alignas(16) std::int64_t ex[2];
    _mm_store_pd(lanes, st.product);
    _mm_store_si128(reinterpret_cast<__m128i*>(ex), st.exponents);
    total += logOfPass(lanes[0] * lanes[1], ex[0] + ex[1] - st.bias);
  }
  *sum = sawInfinity ? qelConstantOfINF_64f : total;
  return qelStatusOk;
}

}  // namespace

extern "C" {

qelStatus qelsLn_32f_I(qel32f* pSrcDst, int len) {
  if (pSrcDst == nullptr) return qelStatusNullPtr;
  if (len < 1) return qelStatusSize;
  const int flag = qelsr::isAligned16(pSrcDst) ? lnKernel32f<true>(pSrcDst, len)
                                               : lnKernel32f<false>(pSrcDst, len);
  return statusOfFlag(flag);
}

qelStatus qelsLn_32s_Sfs(const qel32s* pSrc, qel32s* pDst, int len, int scaleFactor) {
  if (pSrc == nullptr || pDst == nullptr) return qelStatusNullPtr;
  if (len < 1) return qelStatusSize;
  return statusOfFlag(lnKernel32s(pSrc, pDst, len, scaleFactor));
}

qelStatus qelsLn_32s_ISfs(qel32s* pSrcDst, int len, int scaleFactor) {
  if (pSrcDst == nullptr) return qelStatusNullPtr;
  if (len < 1) return qelStatusSize;
  return statusOfFlag(lnKernel32s(pSrcDst, pSrcDst, len, scaleFactor));
}

qelStatus qelsSumLn_32f(const qel32f* pSrc, int len, qel32f* pSum) {
  if (pSrc == nullptr || pSum == nullptr) return qelStatusNullPtr;
  if (len < 1) return qelStatusSize;
  double sum;
  const qelStatus st = sumLnKernel(pSrc, len, &sum);
  // One rounding to single at the end; the special results keep their
  // single-precision bit patterns.
  if (st == qelStatusWarnLogZero)
    *pSum = qelConstantOfINF_32f;
  else if (sum != sum)
    *pSum = qelConstantOfNAN_32f;
  else
    *pSum = static_cast<qel32f>(sum);
  return st;
}

qelStatus qelsSumLn_64f(const qel64f* pSrc, int len, qel64f* pSum) {
  if (pSrc == nullptr || pSum == nullptr) return qelStatusNullPtr;
  if (len < 1) return qelStatusSize;
  return sumLnKernel(pSrc, len, pSum);
}

}  // extern "C"
