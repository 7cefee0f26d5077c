// The 256-bit kernels against their 16-byte twins: the same bits for every
// height, width and alignment, and nothing written outside the destination.
//
// A NaN result must be a NaN in both. Its payload is not compared: where two
// NaNs meet in an addition or a product the processor keeps the first
// operand's, and the compiler may swap the operands of these commutative
// operations in either kernel, so the payload is not a property of the
// order of additions. Every other result is compared bit for bit.
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include "gauss/gauss.h"
#include "test_support.h"

namespace {

using qtest::Guarded;

bool haveAvx2() {
  __builtin_cpu_init();
  return __builtin_cpu_supports("avx2");
}

#define REQUIRE_AVX2() \
  if (!haveAvx2()) GTEST_SKIP() << "the processor has no AVX2: the 256-bit kernels cannot run"

const int kHeights[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 127, 128, 129};
const int kWidths[] = {1, 2, 3, 4, 13, 35, 36, 37, 38, 39, 40, 41, 64};

::testing::AssertionResult sameBitsOrBothNaN(const float* got, const float* want, int n) {
  for (int i = 0; i < n; ++i) {
    uint32_t g, w;
    std::memcpy(&g, got + i, 4);
    std::memcpy(&w, want + i, 4);
    if (g != w && !(std::isnan(got[i]) && std::isnan(want[i])))
      return ::testing::AssertionFailure()
             << "element " << i << ": got " << got[i] << " (0x" << std::hex << g << "), want "
             << want[i] << " (0x" << w << ")" << std::dec;
  }
  return ::testing::AssertionSuccess();
}

const float kNaN = std::numeric_limits<float>::quiet_NaN();
const float kInf = std::numeric_limits<float>::infinity();

// Scatters NaN, +-Inf and a NaN with a payload over a few elements.
void sprinkleSpecials(qtest::Rng& rng, float* p, int n, int count) {
  const float specials[] = {kNaN, kInf, -kInf, std::bit_cast<float>(0x7fc12345u)};
  for (int i = 0; i < count; ++i) p[rng.integer(0, n - 1)] = specials[rng.integer(0, 3)];
}

// Input data next to an inaccessible page, so that a kernel reading before
// the first element (atEnd false) or after the last one (atEnd true) stops
// the test. Lying flush with the fence, data at the end may be off 16 bytes,
// so only the general twins see that placement.
class Fenced {
 public:
  Fenced(size_t count, size_t misalignBytes, bool atEnd) : count_(count) {
    const size_t page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    const size_t bytes = count * sizeof(float) + misalignBytes;
    span_ = ((bytes + page - 1) / page + 2) * page;
    void* p = mmap(nullptr, span_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    base_ = p == MAP_FAILED ? nullptr : static_cast<unsigned char*>(p);
    if (!base_) return;
    mprotect(base_, page, PROT_NONE);
    mprotect(base_ + span_ - page, page, PROT_NONE);
    data_ = reinterpret_cast<float*>(atEnd ? base_ + span_ - page - count * sizeof(float)
                                           : base_ + page + misalignBytes);
  }
  Fenced(const Fenced&) = delete;
  Fenced& operator=(const Fenced&) = delete;
  ~Fenced() {
    if (base_) munmap(base_, span_);
  }
  bool ok() const { return base_ != nullptr; }
  float* data() { return data_; }
  size_t size() const { return count_; }
  float& operator[](size_t i) { return data_[i]; }

 private:
  unsigned char* base_ = nullptr;
  size_t span_ = 0, count_;
  float* data_ = nullptr;
};

// Where the inputs lie. The aligned twins see 16-byte data with strides
// that are multiples of 4; the general ones also see data 4 to 12 bytes off,
// packed odd strides, and data that ends at an inaccessible page.
struct Layout {
  int misalign;
  bool packed;  // stride equal to the width (else rounded up to 4, plus 4)
  bool atEnd;   // inputs end at a fence (else they start at one)
};

std::vector<Layout> layoutsFor(bool aligned) {
  if (aligned) return {{0, false, false}};
  return {{0, false, false}, {4, false, false}, {4, true, false},
          {12, true, false}, {0, true, true},   {0, false, true}};
}

std::string where(const char* name, int width, int height, const Layout& lay) {
  return std::string(name) + " width " + std::to_string(width) + " height " +
         std::to_string(height) + " misalign " + std::to_string(lay.misalign) +
         (lay.packed ? " packed" : "") + (lay.atEnd ? " at the end" : "");
}

// Everything one call needs; a table entry runs one kernel on it.
struct Data {
  const float *src, *mean, *var, *val;
  const float *const *pm, *const *pv;  // row pointers of the mixture D2L forms
  int step, width, height;
};
using Run = void (*)(const Data&, float* dst);

struct Case {
  const char* name;
  Run sse, wide;
  bool aligned;      // the _Al twin: 16-byte data, step a multiple of 4
  bool accumulates;  // reads the destination (maxima)
  bool inPlace;      // the destination holds the constants on entry
};

// One score per row, or one per mixture component, into dst: the 16-byte
// kernel and its 256-bit twin see the same inputs and the same destination.
template <class Fill>
void checkTwins(const Case* cases, size_t count, uint32_t seed, bool mixture, Fill fill) {
  qtest::Rng rng(seed);
  for (const Case* k = cases; k != cases + count; ++k)
    for (const Layout& lay : layoutsFor(k->aligned))
      for (int width : kWidths)
        for (int height : kHeights) {
          const int step = lay.packed ? width : (width + 3) / 4 * 4 + 4;
          const size_t n = static_cast<size_t>(height) * step;
          // Block scores: rows in src, one Gaussian in mean/var. Mixtures:
          // one frame in src, a Gaussian per row of mean/var.
          const size_t srcN = mixture ? width : n, tabN = mixture ? n : width;
          Fenced src(srcN, lay.misalign, lay.atEnd), mean(tabN, lay.misalign, lay.atEnd),
              var(tabN, lay.misalign, lay.atEnd), val(height, lay.misalign, lay.atEnd);
          ASSERT_TRUE(src.ok() && mean.ok() && var.ok() && val.ok());
          Guarded<float> dstSse(height), dstWide(height);
          fill(rng, src, mean, var, width, height);
          for (int r = 0; r < height; ++r) {
            val[r] = rng.uniform(-30.0f, 5.0f);
            const float d = rng.integer(0, 9) == 0 ? kNaN : rng.uniform(-80.0f, 10.0f);
            dstSse[r] = k->inPlace ? val[r] : k->accumulates ? d : 0.0f;
            dstWide[r] = dstSse[r];
          }
          // The general twins of the row-pointer forms see a row 4 bytes off.
          std::vector<const float*> pm(height), pv(height);
          for (int r = 0; r < height; ++r) {
            pm[r] = mean.data() + static_cast<size_t>(r) * step;
            pv[r] = var.data() + static_cast<size_t>(r) * step;
          }
          if (mixture && !k->aligned && height > 1 && !lay.packed && step > width) {
            pm[height / 2] += 1;
            pv[height / 2] += 1;
          }
          const Data data{src.data(), mean.data(), var.data(), val.data(), pm.data(),
                          pv.data(),  step,        width,      height};
          k->sse(data, dstSse.data());
          k->wide(data, dstWide.data());
          SCOPED_TRACE(where(k->name, width, height, lay));
          ASSERT_TRUE(sameBitsOrBothNaN(dstWide.data(), dstSse.data(), height));
          ASSERT_TRUE(dstWide.guardsIntact());
        }
}

// ------------------------------------------------------------ block scores

#define BLOCK(f) \
  [](const Data& a, float* d) { f(a.src, a.step, a.mean, a.var, a.width, d, a.height, a.val); }
#define BLOCK_ID(f) \
  [](const Data& a, float* d) { f(a.src, a.step, a.mean, a.width, d, a.height, a.val); }
#define TWINS(M, f, ...) M(f), M(f##_Avx2), __VA_ARGS__

// The block kernels read the constant from val[0].
const Case kBlockCases[] = {
    {"LogGauss", TWINS(BLOCK, qelsLogGauss_32f_D2_M7, false, false, false)},
    {"LogGauss_Al", TWINS(BLOCK, qelsLogGauss_32f_D2_M7_Al, true, false, false)},
    {"LGauss_IdVar", TWINS(BLOCK_ID, qelsLGauss_IdVar_32f_D2_M7, false, false, false)},
    {"LGauss_IdVar_Al", TWINS(BLOCK_ID, qelsLGauss_IdVar_32f_D2_M7_Al, true, false, false)},
    {"LGaussMax", TWINS(BLOCK, qelsLGaussMax_32f_D2_M7, false, true, false)},
    {"LGaussMax_Al", TWINS(BLOCK, qelsLGaussMax_32f_D2_M7_Al, true, true, false)},
    {"LGaussMax_IdVar", TWINS(BLOCK_ID, qelsLGaussMax_IdVar_32f_D2_M7, false, true, false)},
    {"LGaussMax_IdVar_Al", TWINS(BLOCK_ID, qelsLGaussMax_IdVar_32f_D2_M7_Al, true, true, false)},
};

TEST(WideScoring, BlockKernelsMatchTheirTwinsBitForBit) {
  REQUIRE_AVX2();
  checkTwins(kBlockCases, std::size(kBlockCases), 2026, false,
             [](qtest::Rng& rng, Fenced& src, Fenced& mean, Fenced& var, int width, int height) {
               for (size_t i = 0; i < src.size(); ++i) src[i] = rng.uniform(-4.0f, 4.0f);
               for (int c = 0; c < width; ++c) {
                 mean[c] = rng.uniform(-2.0f, 2.0f);
                 var[c] = rng.uniform(0.05f, 3.0f);
               }
               // Specials in a few rows; the rows are independent, so the
               // other rows still check ordinary sums.
               if (height >= 3) sprinkleSpecials(rng, src.data(), static_cast<int>(src.size()), 3);
             });
}

// ------------------------------------------------------------ mixture scores

#define MIX(f) \
  [](const Data& a, float* d) { f(a.mean, a.var, a.step, a.src, a.width, d, a.height); }
#define MIX_L(f) [](const Data& a, float* d) { f(a.pm, a.pv, a.src, a.width, d, a.height); }
#define MAX(f) \
  [](const Data& a, float* d) { f(a.mean, a.var, a.step, a.src, a.width, a.val, d, a.height); }
#define MAX_L(f) [](const Data& a, float* d) { f(a.pm, a.pv, a.src, a.width, a.val, d, a.height); }

// The plain mixtures work in place over the constants.
const Case kMixCases[] = {
    {"MultiMix_D2", TWINS(MIX, qelsLGaussMultiMix_32f_D2_M7, false, false, true)},
    {"MultiMix_D2_Al", TWINS(MIX, qelsLGaussMultiMix_32f_D2_M7_Al, true, false, true)},
    {"MultiMix_D2L", TWINS(MIX_L, qelsLGaussMultiMix_32f_D2L_M7, false, false, true)},
    {"MultiMix_D2L_Al", TWINS(MIX_L, qelsLGaussMultiMix_32f_D2L_M7_Al, true, false, true)},
    {"MaxMultiMix_D2", TWINS(MAX, qelsLGaussMaxMultiMix_32f_D2_M7, false, true, false)},
    {"MaxMultiMix_D2_Al", TWINS(MAX, qelsLGaussMaxMultiMix_32f_D2_M7_Al, true, true, false)},
    {"MaxMultiMix_D2L", TWINS(MAX_L, qelsLGaussMaxMultiMix_32f_D2L_M7, false, true, false)},
    {"MaxMultiMix_D2L_Al", TWINS(MAX_L, qelsLGaussMaxMultiMix_32f_D2L_M7_Al, true, true, false)},
};

TEST(WideScoring, MixtureKernelsMatchTheirTwinsBitForBit) {
  REQUIRE_AVX2();
  checkTwins(kMixCases, std::size(kMixCases), 1247, true,
             [](qtest::Rng& rng, Fenced& src, Fenced& mean, Fenced& var, int width, int height) {
               for (size_t i = 0; i < mean.size(); ++i) {
                 mean[i] = rng.uniform(-2.0f, 2.0f);
                 var[i] = rng.uniform(0.05f, 3.0f);
               }
               for (int c = 0; c < width; ++c) src[c] = rng.uniform(-3.0f, 3.0f);
               if (height >= 3)
                 sprinkleSpecials(rng, mean.data(), static_cast<int>(mean.size()), 2);
               if (height >= 5) sprinkleSpecials(rng, var.data(), static_cast<int>(var.size()), 1);
               if (height == 129 && width == 39) src[rng.integer(0, width - 1)] = kNaN;
             });
}

// The one-time answer agrees with the processor; on this machine it decides
// which kernels the block and mixture tests exercise through the wrappers.
TEST(WideScoring, ChoiceFollowsTheProcessor) {
  EXPECT_EQ(ownGaussWideKernels() != 0, haveAvx2());
  EXPECT_EQ(ownGaussWideKernels(), ownGaussWideKernels());
}

}  // namespace
