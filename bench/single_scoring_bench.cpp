// Single-observation scores against plain scalar loops, on 16-byte aligned
// vectors of typical feature lengths.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <random>

#include "baseline/single_scoring_baseline.h"
#include "qelsr.h"

namespace {

struct Vectors {
  float* src;
  float* mean;
  float* invVar;
  explicit Vectors(int len) {
    const size_t bytes = (static_cast<size_t>(len) * sizeof(float) + 63) / 64 * 64;
    src = static_cast<float*>(std::aligned_alloc(64, bytes));
    mean = static_cast<float*>(std::aligned_alloc(64, bytes));
    invVar = static_cast<float*>(std::aligned_alloc(64, bytes));
    std::mt19937 gen(len);
    std::uniform_real_distribution<float> u(-3.0f, 3.0f), w(0.1f, 4.0f);
    for (int i = 0; i < len; ++i) {
      src[i] = u(gen);
      mean[i] = u(gen);
      invVar[i] = w(gen);
    }
  }
  ~Vectors() {
    std::free(src);
    std::free(mean);
    std::free(invVar);
  }
};

void BM_LogGaussSingle_32f(benchmark::State& state) {
  const int len = static_cast<int>(state.range(0));
  Vectors v(len);
  float r = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(v.src);
    qelsLogGaussSingle_32f(v.src, v.mean, v.invVar, len, &r, -10.0f);
    benchmark::DoNotOptimize(r);
  }
}

void BM_Baseline_LogGaussSingle(benchmark::State& state) {
  const int len = static_cast<int>(state.range(0));
  Vectors v(len);
  float r = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(v.src);
    r = baseline::logGaussSingle(v.src, v.mean, v.invVar, len, -10.0f);
    benchmark::DoNotOptimize(r);
  }
}

void BM_MahDistSingle_32f(benchmark::State& state) {
  const int len = static_cast<int>(state.range(0));
  Vectors v(len);
  float r = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(v.src);
    qelsMahDistSingle_32f(v.src, v.mean, v.invVar, len, &r);
    benchmark::DoNotOptimize(r);
  }
}

void BM_Baseline_MahDistSingle(benchmark::State& state) {
  const int len = static_cast<int>(state.range(0));
  Vectors v(len);
  float r = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(v.src);
    r = baseline::mahDistSingle(v.src, v.mean, v.invVar, len);
    benchmark::DoNotOptimize(r);
  }
}

// Latency: each call's constant depends on the previous result (times 0,
// which the compiler may not fold away), so calls cannot overlap.
void BM_LogGaussSingle_32f_Chained(benchmark::State& state) {
  const int len = static_cast<int>(state.range(0));
  Vectors v(len);
  float r = 0;
  for (auto _ : state) qelsLogGaussSingle_32f(v.src, v.mean, v.invVar, len, &r, r * 0.0f - 10.0f);
  benchmark::DoNotOptimize(r);
}

void BM_Baseline_LogGaussSingle_Chained(benchmark::State& state) {
  const int len = static_cast<int>(state.range(0));
  Vectors v(len);
  float r = 0;
  for (auto _ : state) r = baseline::logGaussSingle(v.src, v.mean, v.invVar, len, r * 0.0f - 10.0f);
  benchmark::DoNotOptimize(r);
}

}  // namespace

BENCHMARK(BM_LogGaussSingle_32f_Chained)->Arg(13)->Arg(39)->Arg(64);
BENCHMARK(BM_Baseline_LogGaussSingle_Chained)->Arg(13)->Arg(39)->Arg(64);
BENCHMARK(BM_LogGaussSingle_32f)->Arg(13)->Arg(39)->Arg(64);
BENCHMARK(BM_Baseline_LogGaussSingle)->Arg(13)->Arg(39)->Arg(64);
BENCHMARK(BM_MahDistSingle_32f)->Arg(13)->Arg(39)->Arg(64);
BENCHMARK(BM_Baseline_MahDistSingle)->Arg(13)->Arg(39)->Arg(64);

BENCHMARK_MAIN();
