// Internal frame shared by every family: alignment tests, scale factors,
// special values and the log-zero conventions.
#ifndef QELSR_FRAME_H
#define QELSR_FRAME_H

#include <bit>
#include <cstdint>

#include "qelsr.h"

extern "C" {

// 2^(-scaleFactor) as a single; the factor is clamped to -128..150, so -128
// gives +infinity and 150 gives 0. Exact wherever the power is representable.
qel32f GetScale_32s32f(int scaleFactor);

// 2^(-scaleFactor) as a double; the factor is clamped to -1024..1087.
qel64f GetScale_32s64f(int scaleFactor);

// 1 at the first of `len` row pointers that is not on 16 bytes, else 0.
int RowMatrAlErr(const void* const* ppRows, int len);

}  // extern "C"

// The special values that families write on warnings. The NaNs are negative
// quiet NaNs.
inline constexpr qel32f qelConstantOfNAN_32f = std::bit_cast<qel32f>(0xFFC00000u);
inline constexpr qel32f qelConstantOfINF_32f = std::bit_cast<qel32f>(0x7F800000u);
inline constexpr qel32f qelConstantOfINF_NEG_32f = std::bit_cast<qel32f>(0xFF800000u);
inline constexpr qel64f qelConstantOfNAN_64f = std::bit_cast<qel64f>(0xFFF8000000000000ull);
inline constexpr qel64f qelConstantOfINF_64f = std::bit_cast<qel64f>(0x7FF0000000000000ull);
inline constexpr qel64f qelConstantOfINF_NEG_64f = std::bit_cast<qel64f>(0xFFF0000000000000ull);

// Log zero of double and single scores.
inline constexpr qel64f LOGZERO = -1.0e10;
inline constexpr qel32f LOGZERO_F = -4500000.0f;

namespace qelsr {

inline bool isAligned16(const void* p) { return (reinterpret_cast<std::uintptr_t>(p) & 15u) == 0; }

// True when `step` elements of T span a whole number of 16-byte vectors.
template <typename T>
inline bool stepAligned16(int step) {
  return (static_cast<long long>(step) * static_cast<long long>(sizeof(T))) % 16 == 0;
}

}  // namespace qelsr

#endif
