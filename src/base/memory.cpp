// Allocator calls of the library: counts of elements in, the core
// allocator's memory out.
#include "base.h"
#include "../core/qelcore.h"

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
