#include "baseline/mixture_scoring_baseline.h"

#include <cmath>

namespace baseline {

float logGaussMixture(const float* src, const float* mean, const float* invVar, int height,
                      int step, int width, const float* val, float* scratch) {
  for (int m = 0; m < height; ++m) {
    const float* mr = mean + static_cast<long>(m) * step;
    const float* vr = invVar + static_cast<long>(m) * step;
    float sum = 0.0f;
    for (int c = 0; c < width; ++c) {
      const float d = src[c] - mr[c];
      sum += d * d * vr[c];
    }
    scratch[m] = val[m] - 0.5f * sum;
  }
  int best = 0;
  for (int m = 1; m < height; ++m)
    if (scratch[m] > scratch[best]) best = m;
  const float mx = scratch[best];
  float rest = 0.0f;
  for (int m = 0; m < height; ++m)
    if (m != best) rest += std::exp(scratch[m] - mx);
  return mx + std::log1p(rest);
}

}  // namespace baseline
