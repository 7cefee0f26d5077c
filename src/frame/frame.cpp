#include "frame.h"

#include <cstdint>

// Powers of two are assembled directly in the exponent field: no libm call,
// no errno, and exact for every representable power.
extern "C" qel32f GetScale_32s32f(int scaleFactor) {
  if (scaleFactor < -128) scaleFactor = -128;
  if (scaleFactor > 150) scaleFactor = 150;
  const int e = -scaleFactor;  // -150..128
  if (e >= 128) return std::bit_cast<qel32f>(0x7F800000u);
  if (e >= -126) return std::bit_cast<qel32f>(static_cast<std::uint32_t>(e + 127) << 23);
  if (e >= -149) return std::bit_cast<qel32f>(1u << (e + 149));
  return 0.0f;
}

extern "C" qel64f GetScale_32s64f(int scaleFactor) {
  if (scaleFactor < -1024) scaleFactor = -1024;
  if (scaleFactor > 1087) scaleFactor = 1087;
  const int e = -scaleFactor;  // -1087..1024
  if (e >= 1024) return std::bit_cast<qel64f>(0x7FF0000000000000ull);
  if (e >= -1022) return std::bit_cast<qel64f>(static_cast<std::uint64_t>(e + 1023) << 52);
  if (e >= -1074) return std::bit_cast<qel64f>(1ull << (e + 1074));
  return 0.0;
}

extern "C" int RowMatrAlErr(const void* const* ppRows, int len) {
  for (int i = 0; i < len; ++i)
    if (!qelsr::isAligned16(ppRows[i])) return 1;
  return 0;
}
