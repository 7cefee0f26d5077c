// Core services the signal library stands on: memory and the thread budget
// of its parallel regions.
#ifndef QELCORE_H
#define QELCORE_H

#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

#if defined(__GNUC__)
#define QELCORE_API __attribute__((visibility("default")))
#else
#define QELCORE_API
#endif

// Returns `size` bytes aligned on 64 bytes, or null when `size` is 0 or the
// memory cannot be had.
QELCORE_API void* qelMalloc(size_t size);

// Releases what qelMalloc returned; null is ignored.
QELCORE_API void qelFree(void* ptr);

// Number of threads a parallel region may use: the OpenMP runtime's
// maximum, which OMP_NUM_THREADS sets.
QELCORE_API int ownGetNumThreads(void);

#ifdef QELCORE_TESTING
// Test-only controls, present in the testing build of the core library.
// After `successes` more successful allocations, every qelMalloc fails until
// the countdown is reset with a negative value (the default: never fail).
QELCORE_API void qelcoreTestFailAfter(long successes);
// Blocks handed out by qelMalloc and not yet released.
QELCORE_API long qelcoreTestLiveBlocks(void);
#endif

#ifdef __cplusplus
}
#endif

#endif
