// Whether the 256-bit kernels may run. Built for the baseline instruction
// set like the wrappers that call it.
#include "gauss/gauss.h"

extern "C" int ownGaussWideKernels(void) {
  // Asked once and kept: a function-local constant, initialised on the first
  // call (thread-safe) and never changed. __builtin_cpu_init makes the answer
  // right even when the first call comes from another library's constructor.
  // The test of "avx2" includes the system's support for the 256-bit state.
  static const int wide = [] {
    __builtin_cpu_init();
    return __builtin_cpu_supports("avx2") ? 1 : 0;
  }();
  return wide;
}
