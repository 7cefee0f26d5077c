#include "baseline/base_log_baseline.h"

#include <cmath>

namespace baseline {

void ln32f(float* srcDst, int len) {
  for (int i = 0; i < len; ++i) srcDst[i] = std::log(srcDst[i]);
}

float sumLn32f(const float* src, int len) {
  float s = 0.0f;
  for (int i = 0; i < len; ++i) s += std::log(src[i]);
  return s;
}

}  // namespace baseline
