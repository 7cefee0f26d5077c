// The two-thread split of the long-vector kernels: a region of at most two
// OpenMP threads, each running the serial kernel on its own stretch.
#ifndef QELSR_PARALLEL_H
#define QELSR_PARALLEL_H

#include <omp.h>

#include "core/qelcore.h"

namespace qelsr {

// Runs `kernel(offset, count)` over [0, len) and returns the bitwise OR of
// what the calls returned (each call reports its own warnings as flag
// bits). Serial when len is below `threshold`, or when ownGetNumThreads()
// is below 2 or above len. Otherwise a region of two threads is requested;
// the master reads the team size, every thread takes len / team elements
// from thread * chunk and the last thread also the len % team rest. A runtime
// that does not fork (a nested region, say) runs the same body on one thread.
template <typename Kernel>
int splitAcrossThreads(int len, int threshold, Kernel kernel) {
  if (len < threshold) return kernel(0, len);
  const int threads = ownGetNumThreads();
  if (threads < 2 || threads > len) return kernel(0, len);

  int flags = 0;
  int team = 1, chunk = len, rest = 0;
#pragma omp parallel num_threads(2) shared(team, chunk, rest) reduction(| : flags)
  {
#pragma omp master
    {
      team = omp_get_num_threads();
      chunk = len / team;
      rest = len % team;
    }
#pragma omp barrier
    const int t = omp_get_thread_num();
    const int count = chunk + (t == team - 1 ? rest : 0);
    flags |= kernel(t * chunk, count);
  }
  return flags;
}

}  // namespace qelsr

#endif
