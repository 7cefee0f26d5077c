// Forward real FFT to CCS, orders 6..16, against FFTW's single-precision
// real-to-complex plan (FFTW_MEASURE, out of place) as the yardstick.
#include <benchmark/benchmark.h>

#include <cstring>
#include <random>
#include <vector>

#include "base/base.h"
#include "base/fft/fft.h"

#ifdef QELSR_HAVE_FFTW
#include <fftw3.h>
#endif

namespace {

std::vector<float> signal(size_t n) {
  std::mt19937 gen(7);
  std::uniform_real_distribution<float> d(-1.0f, 1.0f);
  std::vector<float> x(n);
  for (auto& v : x) v = d(gen);
  return x;
}

void BM_QelsFFTFwd_RToCCS_32f(benchmark::State& state) {
  const int order = static_cast<int>(state.range(0));
  const size_t n = size_t{1} << order;
  FFTSpec* plan = nullptr;
  if (qelsFFTInitAlloc_R_32f(&plan, order, QEL_FFT_NODIV_BY_ANY, 0) != qelStatusOk) {
    state.SkipWithError("plan");
    return;
  }
  int bufSize = 0;
  qelsFFTGetBufSize_R_32f(plan, &bufSize);
  qel8u* buf = bufSize > 0 ? qelsMalloc_8u(bufSize) : nullptr;
  const auto x = signal(n);
  float* src = qelsMalloc_32f(static_cast<int>(n));
  float* dst = qelsMalloc_32f(static_cast<int>(n + 2));
  std::memcpy(src, x.data(), n * sizeof(float));
  for (auto _ : state) {
    qelsFFTFwd_RToCCS_32f(src, dst, plan, buf);
    benchmark::DoNotOptimize(dst);
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(n));
  qelsFree(src);
  qelsFree(dst);
  if (buf) qelsFree(buf);
  qelsFFTFree_R_32f(plan);
}
BENCHMARK(BM_QelsFFTFwd_RToCCS_32f)->DenseRange(6, 16);

#ifdef QELSR_HAVE_FFTW
void BM_FftwRealToComplex(benchmark::State& state) {
  const int order = static_cast<int>(state.range(0));
  const int n = 1 << order;
  float* in = fftwf_alloc_real(n);
  fftwf_complex* out = fftwf_alloc_complex(n / 2 + 1);
  fftwf_plan plan = fftwf_plan_dft_r2c_1d(n, in, out, FFTW_MEASURE);
  const auto x = signal(n);
  std::memcpy(in, x.data(), n * sizeof(float));
  for (auto _ : state) {
    fftwf_execute(plan);
    benchmark::DoNotOptimize(out);
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(n));
  fftwf_destroy_plan(plan);
  fftwf_free(in);
  fftwf_free(out);
}
BENCHMARK(BM_FftwRealToComplex)->DenseRange(6, 16);
#endif

}  // namespace

BENCHMARK_MAIN();
