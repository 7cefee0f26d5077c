// Gaussian selection against scoring every component: 100 frames of 39
// dimensions against a mixture of 128 (and 512) diagonal components, with 10%,
// 50% and 100% of the sign-table bits set, against one full mixture call per
// frame. The saving should follow the share of clear bits.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdlib>
#include <random>
#include <vector>

#include "qelsr.h"

namespace {

constexpr int kWidth = 39;
constexpr int kStep = 40;  // rows on 16 bytes: the aligned kernels run
constexpr int kFrames = 100;

float* alignedFloats(size_t n) {
  return static_cast<float*>(std::aligned_alloc(64, (n * sizeof(float) + 63) / 64 * 64));
}

struct Data {
  int nMix;
  float *src, *mean, *invVar, *val;
  std::vector<unsigned char> sign;
  Data(int h, int percent) : nMix(h) {
    src = alignedFloats(static_cast<size_t>(kFrames) * kStep);
    mean = alignedFloats(static_cast<size_t>(h) * kStep);
    invVar = alignedFloats(static_cast<size_t>(h) * kStep);
    val = alignedFloats(h);
    std::mt19937 gen(h + percent);
    std::uniform_real_distribution<float> u(-2.0f, 2.0f), w(0.2f, 1.5f), c(-20.0f, -5.0f);
    for (int i = 0; i < kFrames * kStep; ++i) src[i] = u(gen);
    for (int i = 0; i < h * kStep; ++i) {
      mean[i] = u(gen);
      invVar[i] = w(gen);
    }
    for (int i = 0; i < h; ++i) val[i] = c(gen);
    // Exactly `percent` of each frame's bits, at random places.
    const int rb = (h + 7) / 8;
    sign.assign(static_cast<size_t>(rb) * kFrames, 0);
    std::vector<int> order(h);
    for (int f = 0; f < kFrames; ++f) {
      for (int m = 0; m < h; ++m) order[m] = m;
      std::shuffle(order.begin(), order.end(), gen);
      for (int k = 0; k < h * percent / 100; ++k)
        sign[f * rb + order[k] / 8] |= static_cast<unsigned char>(0x80u >> (order[k] % 8));
    }
  }
  ~Data() {
    std::free(src);
    std::free(mean);
    std::free(invVar);
    std::free(val);
  }
};

void BM_FullMixturePerFrame_32f_D2(benchmark::State& state) {
  Data d(static_cast<int>(state.range(0)), 100);
  std::vector<float> out(kFrames);
  for (auto _ : state) {
    for (int f = 0; f < kFrames; ++f)
      qelsLogGaussMixture_32f_D2(d.src + f * kStep, d.mean, d.invVar, d.nMix, kStep, kWidth, d.val,
                                 &out[f]);
    benchmark::DoNotOptimize(out.data());
  }
  state.SetItemsProcessed(state.iterations() * kFrames);
}

void BM_Select_32f_D2(benchmark::State& state) {
  Data d(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)));
  std::vector<float> out(kFrames);
  for (auto _ : state) {
    qelsLogGaussMixture_Select_32f_D2(d.src, d.mean, d.invVar, kStep, kWidth, d.val, d.sign.data(),
                                      d.nMix, out.data(), kFrames, -1.0e4f);
    benchmark::DoNotOptimize(out.data());
  }
  state.SetItemsProcessed(state.iterations() * kFrames);
}

void BM_SelectIdVar_32f_D2(benchmark::State& state) {
  Data d(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)));
  std::vector<float> out(kFrames);
  for (auto _ : state) {
    qelsLogGaussMixture_SelectIdVar_32f_D2(d.src, d.mean, kStep, kWidth, d.val, d.sign.data(),
                                           d.nMix, out.data(), kFrames, -1.0e4f);
    benchmark::DoNotOptimize(out.data());
  }
  state.SetItemsProcessed(state.iterations() * kFrames);
}

void BM_FullMixtureIdVarPerFrame_32f_D2(benchmark::State& state) {
  Data d(static_cast<int>(state.range(0)), 100);
  std::vector<float> out(kFrames);
  for (auto _ : state) {
    for (int f = 0; f < kFrames; ++f)
      qelsLogGaussMixture_IdVar_32f_D2(d.src + f * kStep, d.mean, d.nMix, kStep, kWidth, d.val,
                                       &out[f]);
    benchmark::DoNotOptimize(out.data());
  }
  state.SetItemsProcessed(state.iterations() * kFrames);
}

}  // namespace

BENCHMARK(BM_FullMixturePerFrame_32f_D2)->Arg(128)->Arg(512);
BENCHMARK(BM_Select_32f_D2)->ArgsProduct({{128, 512}, {10, 50, 100}});
BENCHMARK(BM_FullMixtureIdVarPerFrame_32f_D2)->Arg(128);
BENCHMARK(BM_SelectIdVar_32f_D2)->ArgsProduct({{128}, {10, 50, 100}});
BENCHMARK_MAIN();
