// Scalar log-add loops through std::exp and std::log1p, built for speed.
#include "baseline/log_domain_baseline.h"

#include <algorithm>
#include <cmath>

namespace baseline {

void logAdd32f(const float* src, float* srcDst, int len) {
  for (int i = 0; i < len; ++i) {
    const float a = src[i], b = srcDst[i];
    srcDst[i] = std::max(a, b) + std::log1p(std::exp(-std::fabs(a - b)));
  }
}

float logSum32f(const float* src, int len) {
  float acc = src[0];
  for (int i = 1; i < len; ++i) {
    const float x = src[i];
    acc = std::max(acc, x) + std::log1p(std::exp(-std::fabs(acc - x)));
  }
  return acc;
}

}  // namespace baseline
