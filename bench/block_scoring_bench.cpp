// Block scores of one Gaussian against many rows, against plain scalar loops
// built for the host: ns per row and GFLOP/s (4 flops per element: subtract,
// square, weight, accumulate).
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <random>

#include "baseline/block_scoring_baseline.h"
#include "qelsr.h"

namespace {

// Rows on 16 bytes with a stride of the width rounded up to 4, so the
// aligned kernels run; `packed` gives a stride equal to the width instead.
struct Block {
  int width, height, step;
  float *src, *mean, *var, *dst;
  Block(int w, int h, bool packed) : width(w), height(h), step(packed ? w : (w + 3) / 4 * 4) {
    src = alloc(static_cast<size_t>(h) * step);
    mean = alloc(w);
    var = alloc(w);
    dst = alloc(h);
    std::mt19937 gen(w * 7919 + h);
    std::uniform_real_distribution<float> u(-3.0f, 3.0f), iv(0.1f, 4.0f);
    for (size_t i = 0; i < static_cast<size_t>(h) * step; ++i) src[i] = u(gen);
    for (int i = 0; i < w; ++i) mean[i] = u(gen), var[i] = iv(gen);
    for (int i = 0; i < h; ++i) dst[i] = -4500000.0f;
  }
  ~Block() {
    std::free(src);
    std::free(mean);
    std::free(var);
    std::free(dst);
  }
  static float* alloc(size_t n) {
    return static_cast<float*>(std::aligned_alloc(64, (n * sizeof(float) + 63) / 64 * 64));
  }
};

void counters(benchmark::State& state, const Block& b) {
  state.counters["ns/row"] = benchmark::Counter(
      static_cast<double>(b.height) * 1e-9,
      benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
  state.counters["GFLOP/s"] = benchmark::Counter(4.0 * b.width * b.height * 1e-9,
                                                 benchmark::Counter::kIsIterationInvariantRate);
}

template <bool Packed>
void BM_LogGauss_32f_D2(benchmark::State& state) {
  Block b(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)), Packed);
  for (auto _ : state) {
    qelsLogGauss_32f_D2(b.src, b.step, b.mean, b.var, b.width, b.dst, b.height, -20.0f);
    benchmark::DoNotOptimize(b.dst);
    benchmark::ClobberMemory();
  }
  counters(state, b);
}

void BM_Baseline_LogGauss(benchmark::State& state) {
  Block b(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)), false);
  for (auto _ : state) {
    baselineLogGauss32f(b.src, b.step, b.mean, b.var, b.width, b.dst, b.height, -20.0f);
    benchmark::DoNotOptimize(b.dst);
    benchmark::ClobberMemory();
  }
  counters(state, b);
}

void BM_LogGaussMax_32f_D2(benchmark::State& state) {
  Block b(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)), false);
  for (auto _ : state) {
    qelsLogGaussMax_32f_D2(b.src, b.step, b.mean, b.var, b.width, b.dst, b.height, -20.0f);
    benchmark::DoNotOptimize(b.dst);
    benchmark::ClobberMemory();
  }
  counters(state, b);
}

void BM_Baseline_LogGaussMax(benchmark::State& state) {
  Block b(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)), false);
  for (auto _ : state) {
    baselineLogGaussMax32f(b.src, b.step, b.mean, b.var, b.width, b.dst, b.height, -20.0f);
    benchmark::DoNotOptimize(b.dst);
    benchmark::ClobberMemory();
  }
  counters(state, b);
}

void shapes(benchmark::internal::Benchmark* b) {
  b->ArgNames({"width", "height"});
  for (int w : {39, 36, 40})
    for (int h : {128, 512, 1024, 4096}) b->Args({w, h});
}

BENCHMARK(BM_LogGauss_32f_D2<false>)->Apply(shapes);
BENCHMARK(BM_LogGauss_32f_D2<true>)->Args({39, 1024})->Args({39, 4096});
BENCHMARK(BM_Baseline_LogGauss)->Apply(shapes);
BENCHMARK(BM_LogGaussMax_32f_D2)->Apply(shapes);
BENCHMARK(BM_Baseline_LogGaussMax)->Apply(shapes);

}  // namespace

BENCHMARK_MAIN();
