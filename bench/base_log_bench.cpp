// Element-wise logarithm and sum of logarithms against plain loops over
// std::log. The data are positive values spread over many octaves. The
// in-place vector is restored from a copy before every call (in both
// programs), so repeated calls see the same data.
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <random>

#include "base/base.h"
#include "baseline/base_log_baseline.h"

namespace {

struct Data {
  float* src;
  float* work;
  int len;
  explicit Data(int n) : len(n) {
    const size_t bytes = (static_cast<size_t>(n) * sizeof(float) + 63) / 64 * 64;
    src = static_cast<float*>(std::aligned_alloc(64, bytes));
    work = static_cast<float*>(std::aligned_alloc(64, bytes));
    std::mt19937 gen(n);
    std::uniform_real_distribution<float> u(-20.0f, 20.0f);
    for (int i = 0; i < n; ++i) src[i] = std::exp(u(gen));
  }
  ~Data() {
    std::free(src);
    std::free(work);
  }
  void reset() { std::memcpy(work, src, static_cast<size_t>(len) * sizeof(float)); }
};

void BM_Ln_32f_I(benchmark::State& state) {
  Data d(static_cast<int>(state.range(0)));
  for (auto _ : state) {
    d.reset();
    qelsLn_32f_I(d.work, d.len);
    benchmark::DoNotOptimize(d.work);
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

void BM_Baseline_Ln(benchmark::State& state) {
  Data d(static_cast<int>(state.range(0)));
  for (auto _ : state) {
    d.reset();
    baseline::ln32f(d.work, d.len);
    benchmark::DoNotOptimize(d.work);
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

void BM_SumLn_32f(benchmark::State& state) {
  Data d(static_cast<int>(state.range(0)));
  for (auto _ : state) {
    float s;
    qelsSumLn_32f(d.src, d.len, &s);
    benchmark::DoNotOptimize(s);
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

void BM_Baseline_SumLn(benchmark::State& state) {
  Data d(static_cast<int>(state.range(0)));
  for (auto _ : state) benchmark::DoNotOptimize(baseline::sumLn32f(d.src, d.len));
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

}  // namespace

BENCHMARK(BM_Ln_32f_I)->RangeMultiplier(4)->Range(64, 16384);
BENCHMARK(BM_Baseline_Ln)->RangeMultiplier(4)->Range(64, 16384);
BENCHMARK(BM_SumLn_32f)->RangeMultiplier(4)->Range(64, 16384);
BENCHMARK(BM_Baseline_SumLn)->RangeMultiplier(4)->Range(64, 16384);

BENCHMARK_MAIN();
