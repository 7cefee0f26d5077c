// 16-bit scores of one observation: argument checks, the choice of kernel by
// alignment, the allocating DirectVar members, the block-diagonal scores and
// the distance loop for data off 16 bytes.
//
// Check order: null pointers (-8), then len below 1 (-6); BlockDVar then
// wants len equal to the matrix order (-6).
#include <climits>
#include <cstdint>

#include "base/base.h"
#include "gauss/fixed_scoring_rows.h"
#include "gauss/gauss.h"
#include "model/model.h"

namespace {

using namespace qelsr::fixedpt;
using qelsr::isAligned16;

bool aligned(const void* a, const void* b, const void* c = nullptr) {
  return isAligned16(a) && isAligned16(b) && isAligned16(c);
}

float* roundUp32(float* p) {
  const std::uintptr_t u = reinterpret_cast<std::uintptr_t>(p);
  return reinterpret_cast<float*>((u + 31u) & ~static_cast<std::uintptr_t>(31u));
}

int roundUp8(int n) { return static_cast<int>((static_cast<long long>(n) + 7) / 8 * 8); }

// qelsMalloc_32f for a count formed in 64 bits; a count beyond the 32-bit
// argument of the allocator fails like an allocation.
float* allocSingles(long long count) {
  if (count > INT_MAX) return nullptr;
  return qelsMalloc_32f(static_cast<int>(count));
}

qel32s saturate32(long long x) {
  return x > INT_MAX ? INT_MAX : (x < INT_MIN ? INT_MIN : static_cast<qel32s>(x));
}

// The checks of the single-observation members (null pointers, then len)
// and the choice of twin: `run(al)` with al when pSrc, pMean and pVar lie on
// 16 bytes. The identity members pass pMean for pVar.
template <typename Run>
qelStatus checkedSingle(const qel16s* pSrc, const qel16s* pMean, const qel16s* pVar, int len,
                        const void* pResult, Run run) {
  if (pSrc == nullptr || pMean == nullptr || pVar == nullptr || pResult == nullptr)
    return qelStatusNullPtr;
  if (len < 1) return qelStatusSize;
  run(aligned(pSrc, pMean, pVar));
  return qelStatusOk;
}

// A kernel and its aligned twin, chosen by `al`.
#define FX_PICK(al, kernel) ((al) ? kernel##_Al : kernel)

// dᵀ·M·d of the saturated 16-bit differences d: for each row of each block
// the products d[j]·row[j], exact in 32 bits and converted to single, go to
// lane j mod 4 of the row product t; the total adds t·single(d[k]) lane by
// lane and folds as (l0 + l2) + (l1 + l3).
float blockForm16s(const BlockDMatrix* mx, const qel16s* d) {
  float total[4] = {0.0f, 0.0f, 0.0f, 0.0f};
  int o = 0, r = 0;
  for (int b = 0; b < mx->nBlocks; ++b) {
    const int side = mx->pBlockSize[b];
    for (int k = 0; k < side; ++k, ++r) {
      const qel16s* row = static_cast<const qel16s*>(mx->ppRow[r]);
      float t[4] = {0.0f, 0.0f, 0.0f, 0.0f};
      for (int j = 0; j < side; ++j)
        t[j & 3] =
            t[j & 3] + static_cast<float>(static_cast<int>(d[o + j]) * static_cast<int>(row[j]));
      const float dk = static_cast<float>(d[o + k]);
      for (int l = 0; l < 4; ++l) total[l] = total[l] + t[l] * dk;
    }
    o += side;
  }
  return (total[0] + total[2]) + (total[1] + total[3]);
}

// Up to this many differences live on the stack; longer vectors allocate.
constexpr int kBlockStackLen = 112;

template <typename Finish>
qelStatus blockScore16s(const qel16s* pSrc, const qel16s* pMean, const BlockDMatrix* pBlockDVar,
                        int len, const void* pResult, Finish finish) {
  if (pSrc == nullptr || pMean == nullptr || pBlockDVar == nullptr || pResult == nullptr)
    return qelStatusNullPtr;
  if (len < 1) return qelStatusSize;
  if (len != pBlockDVar->nRows) return qelStatusSize;
  alignas(16) qel16s onStack[kBlockStackLen];
  qel16s* d = onStack;
  qel16s* heap = nullptr;
  if (len >= kBlockStackLen) {
    heap = qelsMalloc_16s(len + 1);
    if (heap == nullptr) return qelStatusMemAlloc;
    d = heap;
  }
  for (int i = 0; i < len; ++i) d[i] = static_cast<qel16s>(satDiff(pSrc[i], pMean[i]));
  finish(blockForm16s(pBlockDVar, d));
  if (heap != nullptr) qelsFree(heap);
  return qelStatusOk;
}

}  // namespace

extern "C" {

qelStatus qelsLogGaussSingle_16s32s_Sfs(const qel16s* pSrc, const qel16s* pMean, const qel16s* pVar,
                                        int len, qel32s* pResult, qel32s val, int scaleFactor) {
  return checkedSingle(pSrc, pMean, pVar, len, pResult, [&](bool al) {
    FX_PICK(al, qelsLGaussSingle_16s32s_Sfs_M7)(pSrc, pMean, pVar, len, pResult, &val, scaleFactor);
  });
}

qelStatus qelsLogGaussSingle_Scaled_16s32f(const qel16s* pSrc, const qel16s* pMean,
                                           const qel16s* pVar, int len, qel32f* pResult, qel32f val,
                                           int scaleFactor) {
  return checkedSingle(pSrc, pMean, pVar, len, pResult, [&](bool al) {
    const qel32f k = GetScale_32s32f(incSat(scaleFactor));
    FX_PICK(al, qelsLGaussSingle_16s32f_M7)(pSrc, pMean, pVar, len, pResult, &val, &k);
  });
}

qelStatus qelsLogGaussSingle_Low_16s32s_Sfs(const qel16s* pSrc, const qel16s* pMean,
                                            const qel16s* pVar, int len, qel32s* pResult,
                                            qel32s val, int scaleFactor) {
  return checkedSingle(pSrc, pMean, pVar, len, pResult, [&](bool al) {
    FX_PICK(al, qelsLGaussSingleLow_16s32s_Sfs_M7)
    (pSrc, pMean, pVar, len, pResult, &val, scaleFactor);
  });
}

qelStatus qelsLogGaussSingle_LowScaled_16s32f(const qel16s* pSrc, const qel16s* pMean,
                                              const qel16s* pVar, int len, qel32f* pResult,
                                              qel32f val, int scaleFactor) {
  return checkedSingle(pSrc, pMean, pVar, len, pResult, [&](bool al) {
    FX_PICK(al, qelsLGaussSingleLow_16s32f_M7)(pSrc, pMean, pVar, len, pResult, &val, scaleFactor);
  });
}

qelStatus qelsLogGaussSingle_IdVar_16s32s_Sfs(const qel16s* pSrc, const qel16s* pMean, int len,
                                              qel32s* pResult, qel32s val, int scaleFactor) {
  return checkedSingle(pSrc, pMean, pMean, len, pResult, [&](bool al) {
    FX_PICK(al, qelsLGaussSingle_IdVar_16s32s_Sfs_M7)(pSrc, pMean, len, pResult, &val, scaleFactor);
  });
}

qelStatus qelsLogGaussSingle_IdVarScaled_16s32f(const qel16s* pSrc, const qel16s* pMean, int len,
                                                qel32f* pResult, qel32f val, int scaleFactor) {
  return checkedSingle(pSrc, pMean, pMean, len, pResult, [&](bool al) {
    const qel32f k = GetScale_32s32f(incSat(scaleFactor));
    FX_PICK(al, qelsLGaussSingle_IdVar_16s32f_M7)(pSrc, pMean, len, pResult, &val, &k);
  });
}

qelStatus qelsLogGaussSingle_IdVarLow_16s32s_Sfs(const qel16s* pSrc, const qel16s* pMean, int len,
                                                 qel32s* pResult, qel32s val, int scaleFactor) {
  return checkedSingle(pSrc, pMean, pMean, len, pResult, [&](bool al) {
    FX_PICK(al, qelsLGaussSingleLow_IdVar_16s32s_Sfs_M7)
    (pSrc, pMean, len, pResult, &val, scaleFactor);
  });
}

qelStatus qelsLogGaussSingle_IdVarLowScaled_16s32f(const qel16s* pSrc, const qel16s* pMean, int len,
                                                   qel32f* pResult, qel32f val, int scaleFactor) {
  return checkedSingle(pSrc, pMean, pMean, len, pResult, [&](bool al) {
    FX_PICK(al, qelsLGaussSingle_IdVarLow_16s32f_M7)(pSrc, pMean, len, pResult, &val, scaleFactor);
  });
}

// Scratch of 2·len + 16 singles: the converted variances from the first
// 32-byte boundary, their inverses from the next multiple of 8 singles.
qelStatus qelsLogGaussSingle_DirectVarScaled_16s32f(const qel16s* pSrc, const qel16s* pMean,
                                                    const qel16s* pVar, int len, qel32f* pResult,
                                                    qel32f val, int scaleFactor) {
  if (pSrc == nullptr || pMean == nullptr || pVar == nullptr || pResult == nullptr)
    return qelStatusNullPtr;
  if (len < 1) return qelStatusSize;
  float* block = allocSingles(2LL * len + 16);
  if (block == nullptr) return qelStatusMemAlloc;
  float* var = roundUp32(block);
  float* inv = var + roundUp8(len);
  qelsConvert_16s32f(pVar, var, len);
  qelsSet_32f(1.0f, inv, len);
  const qelStatus st = qelsDiv_32f_I(var, inv, len);
  const qel32f k = GetScale_32s32f(scaleFactor);
  FX_PICK(aligned(pSrc, pMean), qelsLGaussSingle_DirectVar_16s32f_M7)
  (pSrc, pMean, inv, len, pResult, &val, &k);
  qelsFree(block);
  return st;
}

// Scratch of 5·len + 80 singles in five areas of len rounded up to 8 from
// the first 32-byte boundary: variances, their inverses, means and
// observations as singles (the fifth area is reserve). The difference is
// formed in single, so it does not saturate.
qelStatus qelsLogGaussSingle_DirectVar_16s32s_Sfs(const qel16s* pSrc, const qel16s* pMean,
                                                  const qel16s* pVar, int len, qel32s* pResult,
                                                  qel32s val, int scaleFactor) {
  if (pSrc == nullptr || pMean == nullptr || pVar == nullptr || pResult == nullptr)
    return qelStatusNullPtr;
  if (len < 1) return qelStatusSize;
  float* block = allocSingles(5LL * len + 80);
  if (block == nullptr) return qelStatusMemAlloc;
  const int area = roundUp8(len);
  float* var = roundUp32(block);
  float* inv = var + area;
  float* mean = inv + area;
  float* src = mean + area;
  qelsConvert_16s32f(pVar, var, len);
  qelsSet_32f(1.0f, inv, len);
  const qelStatus st = qelsDiv_32f_I(var, inv, len);
  qelsConvert_16s32f(pMean, mean, len);
  qelsConvert_16s32f(pSrc, src, len);
  qel32f S;
  sMahDistSingle_32f_M7(src, mean, inv, len, &S);
  qel32s q;
  qelsConvert_32f32s_Sfs(&S, &q, 1, 1, incSat(scaleFactor));
  *pResult = saturate32(static_cast<long long>(val) - q);
  qelsFree(block);
  return st;
}

qelStatus qelsLogGaussSingle_BlockDVar_16s32s_Sfs(const qel16s* pSrc, const qel16s* pMean,
                                                  const BlockDMatrix* pBlockDVar, int len,
                                                  qel32s* pResult, qel32s val, int scaleFactor) {
  return blockScore16s(pSrc, pMean, pBlockDVar, len, pResult, [&](float total) {
    // The half separately, the power as the integer 1 << |scaleFactor|.
    const float v = static_cast<float>(val) - scaleByIntPow2(total * 0.5f, scaleFactor);
    if (v >= 2147483648.0f)
      *pResult = INT_MAX;
    else if (v <= -2147483648.0f)
      *pResult = INT_MIN;
    else
      *pResult = _mm_cvttss_si32(_mm_set_ss(v));
  });
}

qelStatus qelsLogGaussSingle_BlockDVarScaled_16s32f(const qel16s* pSrc, const qel16s* pMean,
                                                    const BlockDMatrix* pBlockDVar, int len,
                                                    qel32f* pResult, qel32f val, int scaleFactor) {
  return blockScore16s(pSrc, pMean, pBlockDVar, len, pResult, [&](float total) {
    *pResult = val - (total * 0.5f) * GetScale_32s32f(scaleFactor);
  });
}

qelStatus qelsMahDistSingle_16s32f(const qel16s* pSrc, const qel16s* pMean, const qel16s* pVar,
                                   int len, qel32f* pResult) {
  return checkedSingle(pSrc, pMean, pVar, len, pResult, [&](bool al) {
    if (al)
      sMahDistSingle_16s32f_M7(pSrc, pMean, pVar, len, pResult);
    else  // the kernel's order with unaligned loads: the same value
      *pResult = singleSum<Wt::Inv, false>(pSrc, pMean, pVar, len);
  });
}

// Off 16 bytes the sum is exact in 64-bit integers (wrapping only beyond
// 2^63) and the factor is a bare shift, right for positive and left for
// negative factors (64 or more places give the sign, or 0 to the left),
// saturated to 32 bits.
qelStatus qelsMahDistSingle_16s32s_Sfs(const qel16s* pSrc, const qel16s* pMean, const qel16s* pVar,
                                       int len, qel32s* pResult, int scaleFactor) {
  return checkedSingle(pSrc, pMean, pVar, len, pResult, [&](bool al) {
    if (al) {
      sMahDistSingle_16s32s_Sfs_M7(pSrc, pMean, pVar, len, pResult, scaleFactor);
      return;
    }
    std::uint64_t sum = 0;
    for (int i = 0; i < len; ++i) {
      const int d = satDiff(pSrc[i], pMean[i]);
      sum += static_cast<std::uint64_t>(static_cast<long long>(d * d) * pVar[i]);
    }
    long long s = static_cast<long long>(sum);
    if (scaleFactor >= 0)
      s = s >> (scaleFactor > 63 ? 63 : scaleFactor);
    else
      s = scaleFactor < -63 ? 0 : static_cast<long long>(sum << -scaleFactor);
    *pResult = saturate32(s);
  });
}

}  // extern "C"
