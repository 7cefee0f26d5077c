// Log-add into an accumulator and log-sum of a vector against plain scalar
// loops over exp and log1p. The data are log-likelihoods spread over 20
// nats, so most pairs are close enough to need the polynomial. The
// accumulator is restored from a copy before every call (in both programs),
// so repeated calls see the same data.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <cstring>
#include <random>

#include "baseline/log_domain_baseline.h"
#include "qelsr.h"

namespace {

struct Data {
  float* src;
  float* acc;
  float* accInit;
  int len;
  explicit Data(int n) : len(n) {
    const size_t bytes = (static_cast<size_t>(n) * sizeof(float) + 63) / 64 * 64;
    src = static_cast<float*>(std::aligned_alloc(64, bytes));
    acc = static_cast<float*>(std::aligned_alloc(64, bytes));
    accInit = static_cast<float*>(std::aligned_alloc(64, bytes));
    std::mt19937 gen(n);
    std::uniform_real_distribution<float> u(-20.0f, 0.0f);
    for (int i = 0; i < n; ++i) src[i] = u(gen), accInit[i] = u(gen);
  }
  ~Data() {
    std::free(src);
    std::free(acc);
    std::free(accInit);
  }
  void reset() { std::memcpy(acc, accInit, static_cast<size_t>(len) * sizeof(float)); }
};

void BM_LogAdd_32f(benchmark::State& state) {
  Data d(static_cast<int>(state.range(0)));
  for (auto _ : state) {
    d.reset();
    qelsLogAdd_32f(d.src, d.acc, d.len);
    benchmark::DoNotOptimize(d.acc);
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

void BM_Baseline_LogAdd(benchmark::State& state) {
  Data d(static_cast<int>(state.range(0)));
  for (auto _ : state) {
    d.reset();
    baseline::logAdd32f(d.src, d.acc, d.len);
    benchmark::DoNotOptimize(d.acc);
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

void BM_LogSum_32f(benchmark::State& state) {
  Data d(static_cast<int>(state.range(0)));
  float r = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(d.src);
    qelsLogSum_32f(d.src, &r, d.len);
    benchmark::DoNotOptimize(r);
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

void BM_Baseline_LogSum(benchmark::State& state) {
  Data d(static_cast<int>(state.range(0)));
  float r = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(d.src);
    r = baseline::logSum32f(d.src, d.len);
    benchmark::DoNotOptimize(r);
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

void BM_ResetOnly(benchmark::State& state) {
  Data d(static_cast<int>(state.range(0)));
  for (auto _ : state) {
    d.reset();
    benchmark::DoNotOptimize(d.acc);
    benchmark::ClobberMemory();
  }
}
}  // namespace

BENCHMARK(BM_LogAdd_32f)->RangeMultiplier(4)->Range(64, 4096);
BENCHMARK(BM_Baseline_LogAdd)->RangeMultiplier(4)->Range(64, 4096);
BENCHMARK(BM_LogSum_32f)->RangeMultiplier(4)->Range(64, 4096);
BENCHMARK(BM_Baseline_LogSum)->RangeMultiplier(4)->Range(64, 4096);

BENCHMARK(BM_ResetOnly)->RangeMultiplier(4)->Range(64, 4096);

BENCHMARK_MAIN();
