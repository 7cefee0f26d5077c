// Conversions between the element types. Float to integer results are fixed
// to the bit: the rounding is done by the hardware conversion in
// round-to-nearest mode, whatever mode the caller runs in, and a NaN element
// becomes 0 in every rounding mode.
#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "base.h"
#include "frame/frame.h"
#include "int_rescale.h"
#include "lane_sweep.h"
#include "simd.h"

namespace {

using qelsr::saturate16;
using qelsr::scaled;
using qelsr::storev;
using qelsr::sweep;
using qelsr::simd::loadpd;
using qelsr::simd::loadps;
using qelsr::simd::loadsi;
using qelsr::simd::storepd;
using qelsr::simd::storeps;
using qelsr::simd::storesi;

constexpr unsigned kRoundingBits = 0x6000u;  // MXCSR RC field; 0 is to-nearest
constexpr unsigned kInvalidFlag = 0x0001u;   // MXCSR IE, sticky

// Round-to-nearest with a clear invalid-operation flag for the length of a
// conversion. The caller's control and status word is written back at the
// end whenever it had to be changed; a caller already in round-to-nearest
// with a clear flag keeps whatever flags the pass raised, as after any
// other floating-point work.
class NearestRounding {
 public:
  NearestRounding() : saved_(_mm_getcsr()) {
    const unsigned want = saved_ & ~(kRoundingBits | kInvalidFlag);
    changed_ = want != saved_;
    if (changed_) _mm_setcsr(want);
  }
  ~NearestRounding() {
    if (changed_) _mm_setcsr(saved_);
  }
  NearestRounding(const NearestRounding&) = delete;
  NearestRounding& operator=(const NearestRounding&) = delete;
  // True when an operation of the pass met a NaN or an out-of-range value.
  static bool invalidRaised() { return (_mm_getcsr() & kInvalidFlag) != 0; }

 private:
  unsigned saved_;
  bool changed_;
};

enum class Round { Trunc, NearestEven, NearestAway };
template <Round R>
using RoundC = std::integral_constant<Round, R>;

// rndMode 0 truncates, 1 rounds to nearest even, anything else rounds to
// nearest with ties away from zero. `f(RoundC, bool_constant scaled)`.
template <typename F>
inline void withRounding(int rndMode, bool scaled, F f) {
  auto pick = [&](auto r) {
    if (scaled)
      f(r, std::true_type{});
    else
      f(r, std::false_type{});
  };
  if (rndMode == 0)
    pick(RoundC<Round::Trunc>{});
  else if (rndMode == 1)
    pick(RoundC<Round::NearestEven>{});
  else
    pick(RoundC<Round::NearestAway>{});
}

// Float to 32-bit integer by the hardware conversions: out of range and NaN
// give the integer indefinite 0x80000000. Ties away from zero add 0.5 with
// the value's sign (a float addition, itself rounded) and truncate.
template <Round R>
inline int32_t toInt(float v) {
  if constexpr (R == Round::NearestEven)
    return _mm_cvtss_si32(_mm_set_ss(v));
  else if constexpr (R == Round::Trunc)
    return _mm_cvttss_si32(_mm_set_ss(v));
  else
    return _mm_cvttss_si32(_mm_set_ss(v + std::copysign(0.5f, v)));
}

template <Round R>
inline int32_t toInt(double v) {
  if constexpr (R == Round::NearestEven)
    return _mm_cvtsd_si32(_mm_set_sd(v));
  else if constexpr (R == Round::Trunc)
    return _mm_cvttsd_si32(_mm_set_sd(v));
  else
    return _mm_cvttsd_si32(_mm_set_sd(v + std::copysign(0.5, v)));
}

template <Round R>
inline __m128i toInt(__m128 v) {
  if constexpr (R == Round::NearestEven) {
    return _mm_cvtps_epi32(v);
  } else if constexpr (R == Round::Trunc) {
    return _mm_cvttps_epi32(v);
  } else {
    const __m128 sign = _mm_and_ps(v, _mm_set1_ps(-0.0f));
    return _mm_cvttps_epi32(_mm_add_ps(v, _mm_or_ps(sign, _mm_set1_ps(0.5f))));
  }
}

// Two doubles to two 32-bit integers in the low half.
template <Round R>
inline __m128i toInt(__m128d v) {
  if constexpr (R == Round::NearestEven) {
    return _mm_cvtpd_epi32(v);
  } else if constexpr (R == Round::Trunc) {
    return _mm_cvttpd_epi32(v);
  } else {
    const __m128d sign = _mm_and_pd(v, _mm_set1_pd(-0.0));
    return _mm_cvttpd_epi32(_mm_add_pd(v, _mm_or_pd(sign, _mm_set1_pd(0.5))));
  }
}

// The NaN walk: a pass that raised the invalid flag may have met NaNs, and
// those elements become 0.
template <typename TS, typename TD>
inline void zeroWhereNaN(const TS* pSrc, TD* pDst, int len) {
  if (!NearestRounding::invalidRaised()) return;
  for (int i = 0; i < len; ++i)
    if (std::isnan(pSrc[i])) pDst[i] = 0;
}

// 2^(-scaleFactor) assembled in the exponent field, the factor clamped to
// the range where the power and every converted source stay normal.
inline float powerOfTwo32f(int scaleFactor, int lo, int hi) {
  const int s = scaleFactor < lo ? lo : (scaleFactor > hi ? hi : scaleFactor);
  return std::bit_cast<float>(static_cast<uint32_t>(127 - s) << 23);
}

inline double powerOfTwo64f(int scaleFactor, int lo, int hi) {
  const int s = scaleFactor < lo ? lo : (scaleFactor > hi ? hi : scaleFactor);
  return std::bit_cast<double>(static_cast<uint64_t>(1023 - s) << 52);
}

// ---------------------------------------------------------------- to float

// Widening with the exact power-of-two product when Scaled. `convert(A, p)`
// turns the group at p into an array of vectors of TD, stored one after
// another. The group's own loads decide whether the source's alignment
// counts for the aligned twin (`SrcAligned`): a 64-bit load does not need it.
template <int Group, bool Scaled, bool SrcAligned, typename TS, typename TD, typename Convert>
void widen(const TS* pSrc, TD* pDst, int len, TD scale, Convert convert) {
  auto scalar = [&](int i) { pDst[i] = scaled<Scaled>(static_cast<TD>(pSrc[i]), scale); };
  auto group = [&](auto al, int i) {
    constexpr bool A = decltype(al)::value;
    const auto vs = convert(al, pSrc + i);
    for (size_t k = 0; k < vs.size(); ++k)
      storev<A>(pDst + i + k * qelsr::kLanes<TD>, scaled<Scaled>(vs[k], scale));
  };
  if constexpr (SrcAligned)
    sweep<Group>(pDst, len, qelsr::kScalarBelow, scalar, group, pSrc);
  else
    sweep<Group>(pDst, len, qelsr::kScalarBelow, scalar, group);
}

// Sign-extends the 16-bit lanes of x, low half or high half, to 32 bits.
inline __m128i low16to32(__m128i x) { return _mm_srai_epi32(_mm_unpacklo_epi16(x, x), 16); }
inline __m128i high16to32(__m128i x) { return _mm_srai_epi32(_mm_unpackhi_epi16(x, x), 16); }

// The group conversions of the widening kernels.
constexpr auto from8u = [](auto, const qel8u* p) {
  int32_t four;
  std::memcpy(&four, p, 4);
  const __m128i zero = _mm_setzero_si128();
  const __m128i x = _mm_unpacklo_epi16(_mm_unpacklo_epi8(_mm_cvtsi32_si128(four), zero), zero);
  return std::array{_mm_cvtepi32_ps(x)};
};

constexpr auto from16s = [](auto al, const qel16s* p) {
  const __m128i x = loadsi<decltype(al)::value>(p);
  return std::array{_mm_cvtepi32_ps(low16to32(x)), _mm_cvtepi32_ps(high16to32(x))};
};

constexpr auto from32s = [](auto al, const qel32s* p) {
  return std::array{_mm_cvtepi32_ps(loadsi<decltype(al)::value>(p))};
};

constexpr auto from16sTo64f = [](auto, const qel16s* p) {
  const __m128i w = low16to32(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p)));
  return std::array{_mm_cvtepi32_pd(w), _mm_cvtepi32_pd(_mm_srli_si128(w, 8))};
};

// The checks, then `widen(Scaled, power)`: no product at factor 0 (the
// unscaled conversions pass 0), otherwise the power of two.
template <typename TS, typename TD, typename Widen>
qelStatus widenChecked(const TS* pSrc, TD* pDst, int len, int scaleFactor, TD power, Widen widen) {
  if (!pSrc || !pDst) return qelStatusNullPtr;
  if (len < 1) return qelStatusSize;
  if (scaleFactor == 0)
    widen(std::false_type{}, TD(1));
  else
    widen(std::true_type{}, power);
  return qelStatusOk;
}

// ---------------------------------------------------------------- to integer

// x * scale limited from above to 32767.0 (a NaN product takes the limit:
// the limit is the second operand of the minimum), rounded, saturated.
template <Round R, bool Scaled>
void narrow32f16s(const qel32f* pSrc, qel16s* pDst, int len, float scale) {
  constexpr float kLimit = 32767.0f;
  const __m128 vl = _mm_set1_ps(kLimit);
  sweep<8>(
      pDst, len, qelsr::kScalarBelow,
      [&](int i) {
        float v = scaled<Scaled>(pSrc[i], scale);
        v = v < kLimit ? v : kLimit;
        pDst[i] = saturate16(toInt<R>(v));
      },
      [&](auto al, int i) {
        constexpr bool A = decltype(al)::value;
        const __m128 v0 = _mm_min_ps(scaled<Scaled>(loadps<A>(pSrc + i), scale), vl);
        const __m128 v1 = _mm_min_ps(scaled<Scaled>(loadps<A>(pSrc + i + 4), scale), vl);
        storesi<A>(pDst + i, _mm_packs_epi32(toInt<R>(v0), toInt<R>(v1)));
      },
      pSrc);
}

// Positive overflow turns the indefinite 0x80000000 into 0x7FFFFFFF;
// negative overflow keeps it as -2147483648.
template <Round R, bool Scaled>
void narrow32f32s(const qel32f* pSrc, qel32s* pDst, int len, float scale) {
  constexpr float kOverflow = 2147483648.0f;
  const __m128 vo = _mm_set1_ps(kOverflow);
  sweep<4>(
      pDst, len, qelsr::kScalarBelow,
      [&](int i) {
        const float v = scaled<Scaled>(pSrc[i], scale);
        pDst[i] = v >= kOverflow ? 2147483647 : toInt<R>(v);
      },
      [&](auto al, int i) {
        constexpr bool A = decltype(al)::value;
        const __m128 v = scaled<Scaled>(loadps<A>(pSrc + i), scale);
        const __m128i over = _mm_castps_si128(_mm_cmpge_ps(v, vo));
        storesi<A>(pDst + i, _mm_xor_si128(toInt<R>(v), over));
      },
      pSrc);
}

template <Round R, bool Scaled>
void narrow64f32s(const qel64f* pSrc, qel32s* pDst, int len, double scale) {
  constexpr double kLimit = 2147483647.0;
  const __m128d vl = _mm_set1_pd(kLimit);
  sweep<4>(
      pDst, len, qelsr::kScalarBelow,
      [&](int i) {
        double v = scaled<Scaled>(pSrc[i], scale);
        v = v < kLimit ? v : kLimit;
        pDst[i] = toInt<R>(v);
      },
      [&](auto al, int i) {
        constexpr bool A = decltype(al)::value;
        const __m128d v0 = _mm_min_pd(scaled<Scaled>(loadpd<A>(pSrc + i), scale), vl);
        const __m128d v1 = _mm_min_pd(scaled<Scaled>(loadpd<A>(pSrc + i + 2), scale), vl);
        storesi<A>(pDst + i, _mm_unpacklo_epi64(toInt<R>(v0), toInt<R>(v1)));
      },
      pSrc);
}

}  // namespace

extern "C" {

qelStatus qelsConvert_8u32f(const qel8u* pSrc, qel32f* pDst, int len) {
  return widenChecked(pSrc, pDst, len, 0, 1.0f,
                      [&](auto, float) { widen<4, false, false>(pSrc, pDst, len, 1.0f, from8u); });
}

qelStatus qelsConvert_16s32f(const qel16s* pSrc, qel32f* pDst, int len) {
  return qelsConvert_16s32f_Sfs(pSrc, pDst, len, 0);
}

// Integers beyond 2^24 round; the rounding is to nearest even whatever mode
// the caller has set.
qelStatus qelsConvert_32s32f(const qel32s* pSrc, qel32f* pDst, int len) {
  return qelsConvert_32s32f_Sfs(pSrc, pDst, len, 0);
}

// Rounds in the caller's mode, as the hardware narrowing does; overflow
// gives an infinity, no limit is applied.
qelStatus qelsConvert_64f32f(const qel64f* pSrc, qel32f* pDst, int len) {
  if (!pSrc || !pDst) return qelStatusNullPtr;
  if (len < 1) return qelStatusSize;
  sweep<4>(
      pDst, len, qelsr::kScalarBelow, [&](int i) { pDst[i] = static_cast<float>(pSrc[i]); },
      [&](auto al, int i) {
        constexpr bool A = decltype(al)::value;
        const __m128 lo = _mm_cvtpd_ps(loadpd<A>(pSrc + i));
        const __m128 hi = _mm_cvtpd_ps(loadpd<A>(pSrc + i + 2));
        storeps<A>(pDst + i, _mm_movelh_ps(lo, hi));
      },
      pSrc);
  return qelStatusOk;
}

// The factor is clamped to -112..126: every 16-bit value times the power
// stays a normal float, so the product is exact.
qelStatus qelsConvert_16s32f_Sfs(const qel16s* pSrc, qel32f* pDst, int len, int scaleFactor) {
  return widenChecked(pSrc, pDst, len, scaleFactor, powerOfTwo32f(scaleFactor, -112, 126),
                      [&](auto scaled, float power) {
                        widen<8, decltype(scaled)::value, true>(pSrc, pDst, len, power, from16s);
                      });
}

qelStatus qelsConvert_32s32f_Sfs(const qel32s* pSrc, qel32f* pDst, int len, int scaleFactor) {
  return widenChecked(pSrc, pDst, len, scaleFactor, powerOfTwo32f(scaleFactor, -96, 126),
                      [&](auto scaled, float power) {
                        NearestRounding nearest;
                        widen<4, decltype(scaled)::value, true>(pSrc, pDst, len, power, from32s);
                      });
}

qelStatus qelsConvert_16s64f_Sfs(const qel16s* pSrc, qel64f* pDst, int len, int scaleFactor) {
  return widenChecked(pSrc, pDst, len, scaleFactor, powerOfTwo64f(scaleFactor, -1008, 1022),
                      [&](auto scaled, double power) {
                        widen<4, decltype(scaled)::value, false>(pSrc, pDst, len, power,
                                                                 from16sTo64f);
                      });
}

// The power of two is that of GetScale_32s32f, clamped to -128..150: at the
// extremes it is +infinity or 0. A zero element times an infinite power is a
// NaN that no source NaN explains; it takes the upper limit, 32767.
qelStatus qelsConvert_32f16s_Sfs(const qel32f* pSrc, qel16s* pDst, int len, int rndMode,
                                 int scaleFactor) {
  if (!pSrc || !pDst) return qelStatusNullPtr;
  if (len < 1) return qelStatusSize;
  const float scale = GetScale_32s32f(scaleFactor);
  NearestRounding nearest;
  withRounding(rndMode, scaleFactor != 0, [&](auto r, auto scaled) {
    narrow32f16s<decltype(r)::value, decltype(scaled)::value>(pSrc, pDst, len, scale);
  });
  zeroWhereNaN(pSrc, pDst, len);
  return qelStatusOk;
}

// A zero element times an infinite power (factor -128 and below) converts
// as the NaN it is, to the indefinite -2147483648.
qelStatus qelsConvert_32f32s_Sfs(const qel32f* pSrc, qel32s* pDst, int len, int rndMode,
                                 int scaleFactor) {
  if (!pSrc || !pDst) return qelStatusNullPtr;
  if (len < 1) return qelStatusSize;
  const float scale = GetScale_32s32f(scaleFactor);
  NearestRounding nearest;
  auto convert = [&](const qel32f* src, qel32s* dst, int n) {
    withRounding(rndMode, scaleFactor != 0, [&](auto r, auto scaled) {
      narrow32f32s<decltype(r)::value, decltype(scaled)::value>(src, dst, n, scale);
    });
    zeroWhereNaN(src, dst, n);
  };
  if (static_cast<const void*>(pSrc) != static_cast<const void*>(pDst)) {
    convert(pSrc, pDst, len);
    return qelStatusOk;
  }
  // In place (the integer row and column sums convert their own float
  // results this way) the NaN walk must still see the floats: each stretch
  // is converted from a copy on the stack.
  alignas(16) qel32f stretch[256];
  for (int done = 0; done < len; done += 256) {
    const int n = len - done < 256 ? len - done : 256;
    std::memcpy(stretch, pSrc + done, static_cast<size_t>(n) * sizeof(qel32f));
    convert(stretch, pDst + done, n);
  }
  return qelStatusOk;
}

// The power is the single-precision one widened to double. +infinity takes
// the upper limit, -infinity saturates to -2147483648, and the NaN of a zero
// element times an infinite power takes the upper limit.
qelStatus qelsConvert_64f32s_Sfs(const qel64f* pSrc, qel32s* pDst, int len, int rndMode,
                                 int scaleFactor) {
  if (!pSrc || !pDst) return qelStatusNullPtr;
  if (len < 1) return qelStatusSize;
  const double scale = static_cast<double>(GetScale_32s32f(scaleFactor));
  NearestRounding nearest;
  withRounding(rndMode, scaleFactor != 0, [&](auto r, auto scaled) {
    narrow64f32s<decltype(r)::value, decltype(scaled)::value>(pSrc, pDst, len, scale);
  });
  zeroWhereNaN(pSrc, pDst, len);
  return qelStatusOk;
}

qelStatus qelsConvert_32s16s_Sfs(const qel32s* pSrc, qel16s* pDst, int len, int scaleFactor) {
  if (!pSrc || !pDst) return qelStatusNullPtr;
  if (len < 1) return qelStatusSize;
  const int s = scaleFactor > 31 ? 31 : (scaleFactor < -15 ? -15 : scaleFactor);
  sweep<8>(
      pDst, len, qelsr::kScalarBelow, [&](int i) { pDst[i] = qelsr::rescale16(pSrc[i], s); },
      [&](auto al, int i) {
        constexpr bool A = decltype(al)::value;
        storesi<A>(pDst + i, qelsr::rescale16(loadsi<A>(pSrc + i), loadsi<A>(pSrc + i + 4), s));
      },
      pSrc);
  return qelStatusOk;
}

}  // extern "C"
