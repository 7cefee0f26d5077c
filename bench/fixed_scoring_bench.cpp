// 16-bit block scores of one Gaussian against many rows, against plain
// scalar integer loops built for the host: ns per row.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <random>

#include "baseline/fixed_scoring_baseline.h"
#include "qelsr.h"

namespace {

// Rows on 16 bytes with a stride of the width rounded up to 8, so the
// aligned kernels run.
struct Block {
  int width, height, step;
  qel16s *src, *mean, *var;
  qel32s* dst32s;
  qel32f* dst32f;
  Block(int w, int h) : width(w), height(h), step((w + 7) / 8 * 8) {
    src = alloc<qel16s>(static_cast<size_t>(h) * step);
    mean = alloc<qel16s>(w);
    var = alloc<qel16s>(w);
    dst32s = alloc<qel32s>(h);
    dst32f = alloc<qel32f>(h);
    std::mt19937 gen(w * 7919 + h);
    std::uniform_int_distribution<int> u(-2000, 2000), iv(1, 300);
    for (size_t i = 0; i < static_cast<size_t>(h) * step; ++i) src[i] = qel16s(u(gen));
    for (int i = 0; i < w; ++i) mean[i] = qel16s(u(gen)), var[i] = qel16s(iv(gen));
  }
  ~Block() {
    std::free(src);
    std::free(mean);
    std::free(var);
    std::free(dst32s);
    std::free(dst32f);
  }
  template <typename T>
  static T* alloc(size_t n) {
    return static_cast<T*>(std::aligned_alloc(64, (n * sizeof(T) + 63) / 64 * 64));
  }
};

void perRow(benchmark::State& state, const Block& b) {
  state.counters["ns/row"] = benchmark::Counter(
      static_cast<double>(b.height) * 1e-9,
      benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void BM_LogGauss_16s32s_D2Sfs(benchmark::State& state) {
  Block b(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)));
  for (auto _ : state) {
    qelsLogGauss_16s32s_D2Sfs(b.src, b.step, b.mean, b.var, b.width, b.dst32s, b.height, -20, 6);
    benchmark::DoNotOptimize(b.dst32s);
    benchmark::ClobberMemory();
  }
  perRow(state, b);
}

void BM_Baseline_LogGauss16s32s(benchmark::State& state) {
  Block b(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)));
  for (auto _ : state) {
    baselineLogGauss16s32s(b.src, b.step, b.mean, b.var, b.width, b.dst32s, b.height, -20, 6);
    benchmark::DoNotOptimize(b.dst32s);
    benchmark::ClobberMemory();
  }
  perRow(state, b);
}

void BM_LogGauss_Scaled_16s32f_D2(benchmark::State& state) {
  Block b(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)));
  for (auto _ : state) {
    qelsLogGauss_Scaled_16s32f_D2(b.src, b.step, b.mean, b.var, b.width, b.dst32f, b.height, -20.0f,
                                  6);
    benchmark::DoNotOptimize(b.dst32f);
    benchmark::ClobberMemory();
  }
  perRow(state, b);
}

void BM_Baseline_LogGaussScaled16s32f(benchmark::State& state) {
  Block b(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)));
  for (auto _ : state) {
    baselineLogGaussScaled16s32f(b.src, b.step, b.mean, b.var, b.width, b.dst32f, b.height, -20.0f,
                                 1.0f / 128.0f);
    benchmark::DoNotOptimize(b.dst32f);
    benchmark::ClobberMemory();
  }
  perRow(state, b);
}

void BM_LogGauss_Low_16s32s_D2Sfs(benchmark::State& state) {
  Block b(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)));
  for (auto _ : state) {
    qelsLogGauss_Low_16s32s_D2Sfs(b.src, b.step, b.mean, b.var, b.width, b.dst32s, b.height, -20,
                                  6);
    benchmark::DoNotOptimize(b.dst32s);
    benchmark::ClobberMemory();
  }
  perRow(state, b);
}

// Width 39 (a 13-dimensional feature with deltas and delta-deltas) and 1000
// frames.
#define ROWS Args({39, 1000})
BENCHMARK(BM_LogGauss_16s32s_D2Sfs)->ROWS;
BENCHMARK(BM_Baseline_LogGauss16s32s)->ROWS;
BENCHMARK(BM_LogGauss_Scaled_16s32f_D2)->ROWS;
BENCHMARK(BM_Baseline_LogGaussScaled16s32f)->ROWS;
BENCHMARK(BM_LogGauss_Low_16s32s_D2Sfs)->ROWS;

}  // namespace

BENCHMARK_MAIN();
