// Row and column sums of a packed feature matrix (stride equal to the
// width, so the general twins run for widths 13 and 39) against plain
// scalar loops built for the host: GB/s of source read.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <random>
#include <type_traits>

#include "baseline/rows_columns_baseline.h"
#include "qelsr.h"

namespace {

template <typename T>
struct Matrix {
  int width, height;
  T* src;
  float* dst;
  Matrix(int w, int h) : width(w), height(h) {
    const size_t n = static_cast<size_t>(w) * h;
    src = static_cast<T*>(std::aligned_alloc(64, (n * sizeof(T) + 63) / 64 * 64));
    dst = static_cast<float*>(std::aligned_alloc(64, ((w > h ? w : h) * 4 + 63) / 64 * 64));
    std::mt19937 gen(w * 7919 + h);
    std::uniform_real_distribution<float> u(-100.0f, 100.0f);
    for (size_t i = 0; i < n; ++i) src[i] = static_cast<T>(u(gen));
  }
  ~Matrix() {
    std::free(src);
    std::free(dst);
  }
};

template <typename T, typename F>
void run(benchmark::State& state, F f) {
  Matrix<T> m(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)));
  for (auto _ : state) {
    f(m);
    benchmark::DoNotOptimize(m.dst);
    benchmark::ClobberMemory();
  }
  state.counters["GB/s"] =
      benchmark::Counter(static_cast<double>(m.width) * m.height * sizeof(T) * 1e-9,
                         benchmark::Counter::kIsIterationInvariantRate);
}

using M32 = Matrix<float>;
using M16 = Matrix<short>;

void BM_SumRow_32f_D2(benchmark::State& s) {
  run<float>(s, [](M32& m) { qelsSumRow_32f_D2(m.src, m.width, m.width, m.dst, m.height); });
}
void BM_Baseline_SumRow_32f(benchmark::State& s) {
  run<float>(s, [](M32& m) { baselineSumRow32f(m.src, m.width, m.width, m.dst, m.height); });
}
void BM_SumColumn_32f_D2(benchmark::State& s) {
  run<float>(s, [](M32& m) { qelsSumColumn_32f_D2(m.src, m.width, m.height, m.dst, m.width); });
}
void BM_Baseline_SumColumn_32f(benchmark::State& s) {
  run<float>(s, [](M32& m) { baselineSumColumn32f(m.src, m.width, m.height, m.dst, m.width); });
}
void BM_SumRow_16s32f_D2(benchmark::State& s) {
  run<short>(s, [](M16& m) { qelsSumRow_16s32f_D2(m.src, m.width, m.width, m.dst, m.height); });
}
void BM_Baseline_SumRow_16s32f(benchmark::State& s) {
  run<short>(s, [](M16& m) { baselineSumRow16s32f(m.src, m.width, m.width, m.dst, m.height); });
}
void BM_SumColumn_16s32f_D2(benchmark::State& s) {
  run<short>(s, [](M16& m) { qelsSumColumn_16s32f_D2(m.src, m.width, m.height, m.dst, m.width); });
}
void BM_Baseline_SumColumn_16s32f(benchmark::State& s) {
  run<short>(s, [](M16& m) { baselineSumColumn16s32f(m.src, m.width, m.height, m.dst, m.width); });
}

void shapes(benchmark::internal::Benchmark* b) {
  b->ArgNames({"width", "height"});
  for (int w : {13, 39})
    for (int h : {100, 1000, 10000}) b->Args({w, h});
}

BENCHMARK(BM_SumRow_32f_D2)->Apply(shapes);
BENCHMARK(BM_Baseline_SumRow_32f)->Apply(shapes);
BENCHMARK(BM_SumColumn_32f_D2)->Apply(shapes);
BENCHMARK(BM_Baseline_SumColumn_32f)->Apply(shapes);
BENCHMARK(BM_SumRow_16s32f_D2)->Apply(shapes);
BENCHMARK(BM_Baseline_SumRow_16s32f)->Apply(shapes);
BENCHMARK(BM_SumColumn_16s32f_D2)->Apply(shapes);
BENCHMARK(BM_Baseline_SumColumn_16s32f)->Apply(shapes);

}  // namespace

BENCHMARK_MAIN();
