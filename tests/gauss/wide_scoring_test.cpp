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

// ------------------------------------------------------------ block scores

using BlockFn = void (*)(const qel32f*, int, const qel32f*, const qel32f*, int, qel32f*, int,
                         const qel32f*);
using BlockIdFn = void (*)(const qel32f*, int, const qel32f*, int, qel32f*, int, const qel32f*);

struct BlockCase {
  const char* name;
  BlockFn sse, wide;        // with inverse variances
  BlockIdFn sseId, wideId;  // identity
  bool aligned;             // the _Al twin: 16-byte data, step a multiple of 4
  bool accumulates;         // maxima read the destination
};

const BlockCase kBlockCases[] = {
    {"LogGauss", qelsLogGauss_32f_D2_M7, qelsLogGauss_32f_D2_M7_Avx2, nullptr, nullptr, false,
     false},
    {"LogGauss_Al", qelsLogGauss_32f_D2_M7_Al, qelsLogGauss_32f_D2_M7_Al_Avx2, nullptr, nullptr,
     true, false},
    {"LGauss_IdVar", nullptr, nullptr, qelsLGauss_IdVar_32f_D2_M7, qelsLGauss_IdVar_32f_D2_M7_Avx2,
     false, false},
    {"LGauss_IdVar_Al", nullptr, nullptr, qelsLGauss_IdVar_32f_D2_M7_Al,
     qelsLGauss_IdVar_32f_D2_M7_Al_Avx2, true, false},
    {"LGaussMax", qelsLGaussMax_32f_D2_M7, qelsLGaussMax_32f_D2_M7_Avx2, nullptr, nullptr, false,
     true},
    {"LGaussMax_Al", qelsLGaussMax_32f_D2_M7_Al, qelsLGaussMax_32f_D2_M7_Al_Avx2, nullptr, nullptr,
     true, true},
    {"LGaussMax_IdVar", nullptr, nullptr, qelsLGaussMax_IdVar_32f_D2_M7,
     qelsLGaussMax_IdVar_32f_D2_M7_Avx2, false, true},
    {"LGaussMax_IdVar_Al", nullptr, nullptr, qelsLGaussMax_IdVar_32f_D2_M7_Al,
     qelsLGaussMax_IdVar_32f_D2_M7_Al_Avx2, true, true},
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

TEST(WideScoring, BlockKernelsMatchTheirTwinsBitForBit) {
  REQUIRE_AVX2();
  qtest::Rng rng(2026);
  for (const BlockCase& k : kBlockCases) {
    for (const Layout& lay : layoutsFor(k.aligned))
      for (int width : kWidths)
        for (int height : kHeights) {
          const int step = lay.packed ? width : (width + 3) / 4 * 4 + 4;
          Fenced src(static_cast<size_t>(height) * step, lay.misalign, lay.atEnd);
          Fenced mean(width, lay.misalign, lay.atEnd), var(width, lay.misalign, lay.atEnd);
          ASSERT_TRUE(src.ok() && mean.ok() && var.ok());
          Guarded<float> dstSse(height), dstWide(height);
          for (size_t i = 0; i < src.size(); ++i) src[i] = rng.uniform(-4.0f, 4.0f);
          for (int c = 0; c < width; ++c) {
            mean[c] = rng.uniform(-2.0f, 2.0f);
            var[c] = rng.uniform(0.05f, 3.0f);
          }
          // Specials in a few rows; the rows are independent, so the other
          // rows still check ordinary sums.
          if (height >= 3) sprinkleSpecials(rng, src.data(), static_cast<int>(src.size()), 3);
          for (int r = 0; r < height; ++r) {
            const float d = rng.integer(0, 9) == 0 ? kNaN : rng.uniform(-80.0f, 10.0f);
            dstSse[r] = k.accumulates ? d : 0.0f;
            dstWide[r] = dstSse[r];
          }
          const float val = rng.uniform(-30.0f, 5.0f);
          if (k.sse) {
            k.sse(src.data(), step, mean.data(), var.data(), width, dstSse.data(), height, &val);
            k.wide(src.data(), step, mean.data(), var.data(), width, dstWide.data(), height, &val);
          } else {
            k.sseId(src.data(), step, mean.data(), width, dstSse.data(), height, &val);
            k.wideId(src.data(), step, mean.data(), width, dstWide.data(), height, &val);
          }
          SCOPED_TRACE(where(k.name, width, height, lay));
          ASSERT_TRUE(sameBitsOrBothNaN(dstWide.data(), dstSse.data(), height));
          ASSERT_TRUE(dstWide.guardsIntact());
        }
  }
}

// ------------------------------------------------------------ mixture scores

using MixD2Fn = void (*)(const qel32f*, const qel32f*, int, const qel32f*, int, qel32f*, int);
using MixD2LFn = void (*)(const qel32f* const*, const qel32f* const*, const qel32f*, int, qel32f*,
                          int);
using MaxD2Fn = void (*)(const qel32f*, const qel32f*, int, const qel32f*, int, const qel32f*,
                         qel32f*, int);
using MaxD2LFn = void (*)(const qel32f* const*, const qel32f* const*, const qel32f*, int,
                          const qel32f*, qel32f*, int);

struct MixCase {
  const char* name;
  MixD2Fn sseD2 = nullptr, wideD2 = nullptr;
  MixD2LFn sseD2L = nullptr, wideD2L = nullptr;
  MaxD2Fn sseMaxD2 = nullptr, wideMaxD2 = nullptr;
  MaxD2LFn sseMaxD2L = nullptr, wideMaxD2L = nullptr;
  bool aligned = false;
};

std::vector<MixCase> mixCases() {
  std::vector<MixCase> v(8);
  v[0].name = "MultiMix_D2";
  v[0].sseD2 = qelsLGaussMultiMix_32f_D2_M7;
  v[0].wideD2 = qelsLGaussMultiMix_32f_D2_M7_Avx2;
  v[1].name = "MultiMix_D2_Al";
  v[1].sseD2 = qelsLGaussMultiMix_32f_D2_M7_Al;
  v[1].wideD2 = qelsLGaussMultiMix_32f_D2_M7_Al_Avx2;
  v[1].aligned = true;
  v[2].name = "MultiMix_D2L";
  v[2].sseD2L = qelsLGaussMultiMix_32f_D2L_M7;
  v[2].wideD2L = qelsLGaussMultiMix_32f_D2L_M7_Avx2;
  v[3].name = "MultiMix_D2L_Al";
  v[3].sseD2L = qelsLGaussMultiMix_32f_D2L_M7_Al;
  v[3].wideD2L = qelsLGaussMultiMix_32f_D2L_M7_Al_Avx2;
  v[3].aligned = true;
  v[4].name = "MaxMultiMix_D2";
  v[4].sseMaxD2 = qelsLGaussMaxMultiMix_32f_D2_M7;
  v[4].wideMaxD2 = qelsLGaussMaxMultiMix_32f_D2_M7_Avx2;
  v[5].name = "MaxMultiMix_D2_Al";
  v[5].sseMaxD2 = qelsLGaussMaxMultiMix_32f_D2_M7_Al;
  v[5].wideMaxD2 = qelsLGaussMaxMultiMix_32f_D2_M7_Al_Avx2;
  v[5].aligned = true;
  v[6].name = "MaxMultiMix_D2L";
  v[6].sseMaxD2L = qelsLGaussMaxMultiMix_32f_D2L_M7;
  v[6].wideMaxD2L = qelsLGaussMaxMultiMix_32f_D2L_M7_Avx2;
  v[7].name = "MaxMultiMix_D2L_Al";
  v[7].sseMaxD2L = qelsLGaussMaxMultiMix_32f_D2L_M7_Al;
  v[7].wideMaxD2L = qelsLGaussMaxMultiMix_32f_D2L_M7_Al_Avx2;
  v[7].aligned = true;
  return v;
}

TEST(WideScoring, MixtureKernelsMatchTheirTwinsBitForBit) {
  REQUIRE_AVX2();
  qtest::Rng rng(1247);
  for (const MixCase& k : mixCases()) {
    for (const Layout& lay : layoutsFor(k.aligned))
      for (int width : kWidths)
        for (int height : kHeights) {
          const int step = lay.packed ? width : (width + 3) / 4 * 4 + 4;
          const size_t n = static_cast<size_t>(height) * step;
          Fenced mean(n, lay.misalign, lay.atEnd), var(n, lay.misalign, lay.atEnd);
          Fenced src(width, lay.misalign, lay.atEnd), val(height, lay.misalign, lay.atEnd);
          ASSERT_TRUE(mean.ok() && var.ok() && src.ok() && val.ok());
          Guarded<float> dstSse(height), dstWide(height);
          for (size_t i = 0; i < n; ++i) {
            mean[i] = rng.uniform(-2.0f, 2.0f);
            var[i] = rng.uniform(0.05f, 3.0f);
          }
          for (int c = 0; c < width; ++c) src[c] = rng.uniform(-3.0f, 3.0f);
          if (height >= 3) sprinkleSpecials(rng, mean.data(), static_cast<int>(n), 2);
          if (height >= 5) sprinkleSpecials(rng, var.data(), static_cast<int>(n), 1);
          if (height == 129 && width == 39) src[rng.integer(0, width - 1)] = kNaN;
          for (int m = 0; m < height; ++m) {
            val[m] = rng.uniform(-30.0f, 5.0f);
            dstSse[m] = rng.integer(0, 9) == 0 ? kNaN : rng.uniform(-80.0f, 10.0f);
            if (k.sseD2 || k.sseD2L) dstSse[m] = val[m];  // in place: the constants
            dstWide[m] = dstSse[m];
          }
          // Row pointers of the D2L forms; the aligned twin keeps each row on
          // 16 bytes, the general one sees a row 4 bytes off.
          std::vector<const float*> pm(height), pv(height);
          for (int m = 0; m < height; ++m) {
            pm[m] = mean.data() + static_cast<size_t>(m) * step;
            pv[m] = var.data() + static_cast<size_t>(m) * step;
          }
          if (!k.aligned && height > 1 && !lay.packed && step > width) {
            pm[height / 2] += 1;
            pv[height / 2] += 1;
          }
          if (k.sseD2) {
            k.sseD2(mean.data(), var.data(), step, src.data(), width, dstSse.data(), height);
            k.wideD2(mean.data(), var.data(), step, src.data(), width, dstWide.data(), height);
          } else if (k.sseD2L) {
            k.sseD2L(pm.data(), pv.data(), src.data(), width, dstSse.data(), height);
            k.wideD2L(pm.data(), pv.data(), src.data(), width, dstWide.data(), height);
          } else if (k.sseMaxD2) {
            k.sseMaxD2(mean.data(), var.data(), step, src.data(), width, val.data(), dstSse.data(),
                       height);
            k.wideMaxD2(mean.data(), var.data(), step, src.data(), width, val.data(),
                        dstWide.data(), height);
          } else {
            k.sseMaxD2L(pm.data(), pv.data(), src.data(), width, val.data(), dstSse.data(), height);
            k.wideMaxD2L(pm.data(), pv.data(), src.data(), width, val.data(), dstWide.data(),
                         height);
          }
          SCOPED_TRACE(where(k.name, width, height, lay));
          ASSERT_TRUE(sameBitsOrBothNaN(dstWide.data(), dstSse.data(), height));
          ASSERT_TRUE(dstWide.guardsIntact());
        }
  }
}

// The one-time answer agrees with the processor; on this machine it decides
// which kernels the block and mixture tests exercise through the wrappers.
TEST(WideScoring, ChoiceFollowsTheProcessor) {
  EXPECT_EQ(ownGaussWideKernels() != 0, haveAvx2());
  EXPECT_EQ(ownGaussWideKernels(), ownGaussWideKernels());
}

}  // namespace
