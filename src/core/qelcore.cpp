#include "qelcore.h"

#include <omp.h>

#include <cstdlib>

#ifdef QELCORE_TESTING
#include <atomic>
#endif

namespace {

// 64 bytes covers a cache line and the widest vector loads, so every
// aligned kernel twin is reachable for allocated buffers.
constexpr size_t kAlignment = 64;

#ifdef QELCORE_TESTING
std::atomic<long> failCountdown{-1};
std::atomic<long> liveBlocks{0};

bool injectFailure() {
  long left = failCountdown.load();
  while (left >= 0) {
    if (left == 0) return true;
    if (failCountdown.compare_exchange_weak(left, left - 1)) return false;
  }
  return false;
}
#endif

}  // namespace

extern "C" void* qelMalloc(size_t size) {
  if (size == 0) return nullptr;
#ifdef QELCORE_TESTING
  if (injectFailure()) return nullptr;
#endif
  if (size > ~size_t{0} - kAlignment) return nullptr;
  size_t rounded = (size + kAlignment - 1) & ~(kAlignment - 1);
  void* p = std::aligned_alloc(kAlignment, rounded);
#ifdef QELCORE_TESTING
  if (p) liveBlocks.fetch_add(1);
#endif
  return p;
}

extern "C" void qelFree(void* ptr) {
  if (!ptr) return;
#ifdef QELCORE_TESTING
  liveBlocks.fetch_sub(1);
#endif
  std::free(ptr);
}

extern "C" int ownGetNumThreads(void) { return omp_get_max_threads(); }

#ifdef QELCORE_TESTING
extern "C" void qelcoreTestFailAfter(long successes) { failCountdown.store(successes); }
extern "C" long qelcoreTestLiveBlocks(void) { return liveBlocks.load(); }
#endif
