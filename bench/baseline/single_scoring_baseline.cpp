#include "baseline/single_scoring_baseline.h"

namespace baseline {

float logGaussSingle(const float* src, const float* mean, const float* invVar, int len, float val) {
  float sum = 0.0f;
  for (int i = 0; i < len; ++i) {
    const float d = src[i] - mean[i];
    sum += d * d * invVar[i];
  }
  return val - 0.5f * sum;
}

float mahDistSingle(const float* src, const float* mean, const float* invVar, int len) {
  float sum = 0.0f;
  for (int i = 0; i < len; ++i) {
    const float d = src[i] - mean[i];
    sum += d * d * invVar[i];
  }
  return sum;
}

}  // namespace baseline
