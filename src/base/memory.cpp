// Memory of the library: the allocator calls (counts of elements in, the
// core allocator's memory out), fills, copies and the overlapping move.
#include <bit>
#include <cstring>

#include "../core/qelcore.h"
#include "base.h"

namespace {

template <typename T>
T* allocateElements(int len) {
  if (len < 1) return nullptr;
  return static_cast<T*>(qelMalloc(static_cast<size_t>(static_cast<long long>(len) * sizeof(T))));
}

}  // namespace

extern "C" {

qel8u* qelsMalloc_8u(int len) { return allocateElements<qel8u>(len); }
qel16s* qelsMalloc_16s(int len) { return allocateElements<qel16s>(len); }
qel32s* qelsMalloc_32s(int len) { return allocateElements<qel32s>(len); }
qel32f* qelsMalloc_32f(int len) { return allocateElements<qel32f>(len); }
qel64f* qelsMalloc_64f(int len) { return allocateElements<qel64f>(len); }
void qelsFree(void* ptr) { qelFree(ptr); }

}  // extern "C"

// Fills and copies. The float fills store the value's bit pattern through
// the integer fill of the same width, so a NaN payload or a negative zero
// arrives unchanged.
namespace {

template <typename T>
qelStatus fill(T val, T* pDst, int len) {
  if (!pDst) return qelStatusNullPtr;
  if (len < 1) return qelStatusSize;
  if constexpr (sizeof(T) == 1)
    std::memset(pDst, val, static_cast<size_t>(len));
  else
    for (int i = 0; i < len; ++i) pDst[i] = val;
  return qelStatusOk;
}

// Every copy is one byte copy of len * sizeof(T) bytes, counted in size_t
// so that long vectors of wide elements cannot wrap the count. A block
// copied onto itself is left as it is; the move allows any overlap.
template <typename T, bool Overlap = false>
qelStatus copyBytes(const T* pSrc, T* pDst, int len) {
  if (!pSrc || !pDst) return qelStatusNullPtr;
  if (len < 1) return qelStatusSize;
  const size_t bytes = static_cast<size_t>(len) * sizeof(T);
  if constexpr (Overlap)
    std::memmove(pDst, pSrc, bytes);
  else if (pSrc != pDst)
    std::memcpy(pDst, pSrc, bytes);
  return qelStatusOk;
}

}  // namespace

extern "C" {

qelStatus qelsZero_8u(qel8u* pDst, int len) { return qelsSet_8u(0, pDst, len); }
qelStatus qelsZero_16s(qel16s* pDst, int len) { return qelsSet_16s(0, pDst, len); }
qelStatus qelsZero_32f(qel32f* pDst, int len) {
  return qelsSet_32s(0, reinterpret_cast<qel32s*>(pDst), len);
}
qelStatus qelsZero_64f(qel64f* pDst, int len) { return qelsSet_64f(0.0, pDst, len); }

qelStatus qelsSet_8u(qel8u val, qel8u* pDst, int len) { return fill(val, pDst, len); }
qelStatus qelsSet_16s(qel16s val, qel16s* pDst, int len) { return fill(val, pDst, len); }
qelStatus qelsSet_32s(qel32s val, qel32s* pDst, int len) { return fill(val, pDst, len); }

qelStatus qelsSet_32f(qel32f val, qel32f* pDst, int len) {
  return qelsSet_32s(std::bit_cast<qel32s>(val), reinterpret_cast<qel32s*>(pDst), len);
}

qelStatus qelsSet_64f(qel64f val, qel64f* pDst, int len) {
  return fill(std::bit_cast<qel64s>(val), reinterpret_cast<qel64s*>(pDst), len);
}

qelStatus qelsCopy_8u(const qel8u* pSrc, qel8u* pDst, int len) {
  return copyBytes(pSrc, pDst, len);
}
qelStatus qelsCopy_16s(const qel16s* pSrc, qel16s* pDst, int len) {
  return copyBytes(pSrc, pDst, len);
}
qelStatus qelsCopy_32s(const qel32s* pSrc, qel32s* pDst, int len) {
  return copyBytes(pSrc, pDst, len);
}
qelStatus qelsCopy_32f(const qel32f* pSrc, qel32f* pDst, int len) {
  return copyBytes(pSrc, pDst, len);
}
qelStatus qelsCopy_64f(const qel64f* pSrc, qel64f* pDst, int len) {
  return copyBytes(pSrc, pDst, len);
}

qelStatus qelsMove_32f(const qel32f* pSrc, qel32f* pDst, int len) {
  return copyBytes<qel32f, true>(pSrc, pDst, len);
}

}  // extern "C"
