// The likelihood of a whole mixture, one 39-dimensional observation against
// 8, 32 and 128 diagonal components, against a plain scalar loop.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <random>
#include <vector>

#include "baseline/mixture_scoring_baseline.h"
#include "qelsr.h"

namespace {

constexpr int kWidth = 39;
constexpr int kStep = 40;  // rows on 16 bytes: the aligned kernels run

float* alignedFloats(size_t n) {
  return static_cast<float*>(std::aligned_alloc(64, (n * sizeof(float) + 63) / 64 * 64));
}

struct Mixture {
  int height;
  float *src, *mean, *invVar, *val;
  explicit Mixture(int h) : height(h) {
    src = alignedFloats(kStep);
    mean = alignedFloats(static_cast<size_t>(h) * kStep);
    invVar = alignedFloats(static_cast<size_t>(h) * kStep);
    val = alignedFloats(h);
    std::mt19937 gen(h);
    std::uniform_real_distribution<float> u(-2.0f, 2.0f), w(0.2f, 1.5f), c(-20.0f, -5.0f);
    for (int i = 0; i < kStep; ++i) src[i] = u(gen);
    for (int i = 0; i < h * kStep; ++i) {
      mean[i] = u(gen);
      invVar[i] = w(gen);
    }
    for (int i = 0; i < h; ++i) val[i] = c(gen);
  }
  ~Mixture() {
    std::free(src);
    std::free(mean);
    std::free(invVar);
    std::free(val);
  }
};

void BM_LogGaussMixture_32f_D2(benchmark::State& state) {
  Mixture mx(static_cast<int>(state.range(0)));
  float r = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(mx.src);
    qelsLogGaussMixture_32f_D2(mx.src, mx.mean, mx.invVar, mx.height, kStep, kWidth, mx.val, &r);
    benchmark::DoNotOptimize(r);
  }
}

void BM_Baseline_LogGaussMixture(benchmark::State& state) {
  Mixture mx(static_cast<int>(state.range(0)));
  std::vector<float> scratch(mx.height);
  float r = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(mx.src);
    r = baseline::logGaussMixture(mx.src, mx.mean, mx.invVar, mx.height, kStep, kWidth, mx.val,
                                  scratch.data());
    benchmark::DoNotOptimize(r);
  }
}

// The two halves of a mixture call, to show where its time goes: the scores
// of all components, and the log sum of as many scores, whose fixed order
// of log-adds (four lane accumulators, each step waiting for the last) is a
// chain of dependent polynomial evaluations.
void BM_Part_LogGaussMultiMix_32f_D2(benchmark::State& state) {
  Mixture mx(static_cast<int>(state.range(0)));
  std::vector<float> scores(mx.height);
  for (auto _ : state) {
    for (int m = 0; m < mx.height; ++m) scores[m] = mx.val[m];
    qelsLogGaussMultiMix_32f_D2(mx.mean, mx.invVar, kStep, mx.src, kWidth, scores.data(),
                                mx.height);
    benchmark::DoNotOptimize(scores.data());
  }
}

void BM_Part_LogSum_32f(benchmark::State& state) {
  Mixture mx(static_cast<int>(state.range(0)));
  std::vector<float> scores(mx.height);
  for (int m = 0; m < mx.height; ++m) scores[m] = mx.val[m] - 30.0f * mx.invVar[m];
  float r = 0;
  for (auto _ : state) {
    qelsLogSum_32f(scores.data(), &r, mx.height);
    benchmark::DoNotOptimize(r);
  }
}

}  // namespace

BENCHMARK(BM_LogGaussMixture_32f_D2)->Arg(8)->Arg(32)->Arg(128);
BENCHMARK(BM_Baseline_LogGaussMixture)->Arg(8)->Arg(32)->Arg(128);
BENCHMARK(BM_Part_LogGaussMultiMix_32f_D2)->Arg(8)->Arg(32)->Arg(128);
BENCHMARK(BM_Part_LogSum_32f)->Arg(8)->Arg(32)->Arg(128);

BENCHMARK_MAIN();
