// Scalar references of the mixture scores, one element at a time in the
// order of the library's lanes, so that results compare bit for bit; and
// plain double formulas that check the references themselves.
#ifndef QELSR_TEST_MIXTURE_SCORING_REFERENCE_H
#define QELSR_TEST_MIXTURE_SCORING_REFERENCE_H

#include <algorithm>
#include <cmath>
#include <vector>

#include "log_add_reference.h"
#include "single_scoring_reference.h"

namespace qtest::mixref {

inline constexpr int kChunk = 100;

// Weighted squared term of column c; no variance row means identity.
template <typename T>
inline T term(const T* x, const T* mean, const T* var, int c) {
  const T d = x[c] - mean[c];
  const T p = d * d;
  return var ? p * var[c] : p;
}

// Sum of one component as a MultiMix kernel adds it.
// 32f, four lanes: with `tail` (the last 1-3 components of a call) groups of
// 8 columns add their two products before joining the lane; groups of 4;
// single columns into lane 0; fold (l0 + l1) + (l2 + l3).
// 64f, two lanes: column pairs, an odd last column into lane 0, l0 + l1.
template <typename T>
inline T kernelSum(const T* x, const T* mean, const T* var, int width, bool tail) {
  constexpr int L = sizeof(T) == 4 ? 4 : 2;
  T l[4] = {0, 0, 0, 0};
  int c = 0;
  if (L == 4 && tail)
    for (; c + 8 <= width; c += 8)
      for (int j = 0; j < 4; ++j)
        l[j] = l[j] + (term(x, mean, var, c + j) + term(x, mean, var, c + 4 + j));
  for (; c + L <= width; c += L)
    for (int j = 0; j < L; ++j) l[j] = l[j] + term(x, mean, var, c + j);
  for (; c < width; ++c) l[0] = l[0] + term(x, mean, var, c);
  return L == 4 ? (l[0] + l[1]) + (l[2] + l[3]) : l[0] + l[1];
}

// Sums of a whole mixture whose kernel calls cover chunks of `chunk`
// components (the four-component passes restart in each call).
template <typename T>
inline std::vector<T> chunkedSums(const T* x, const T* const* means, const T* const* vars,
                                  int width, int height, int chunk) {
  std::vector<T> s(height);
  for (int m0 = 0; m0 < height; m0 += chunk) {
    const int n = std::min(chunk, height - m0);
    for (int k = 0; k < n; ++k)
      s[m0 + k] = kernelSum(x, means[m0 + k], vars[m0 + k], width, k >= n / 4 * 4);
  }
  return s;
}

// The identity kernel of the float mixture, added as the frame-block passes
// add a row: lanes over the whole vectors of columns in column order, fold
// (l0 + l1) + (l2 + l3), then the width mod 4 last columns one at a time.
inline float idVarSum32f(const float* x, const float* mean, int width) {
  float l[4] = {0.0f, 0.0f, 0.0f, 0.0f};
  int c = 0;
  for (; c + 4 <= width; c += 4)
    for (int j = 0; j < 4; ++j) l[j] = l[j] + term<float>(x, mean, nullptr, c + j);
  float s = (l[0] + l[1]) + (l[2] + l[3]);
  for (; c < width; ++c) s = s + term<float>(x, mean, nullptr, c);
  return s;
}

// The single-observation identity scores that the row-pointer float and
// both double identity mixtures use for each component.
inline float singleIdVar(const float* x, const float* mean, int len, float v) {
  return qref::single32f(qref::Single::Identity, x, mean, nullptr, len, v);
}
inline double singleIdVar(const double* x, const double* mean, int len, double v) {
  return v - qref::doubleSum(qref::Double::Identity, x, mean, mean, len) * 0.5;
}

template <typename T>
inline std::vector<T> scores(const std::vector<T>& vals, const std::vector<T>& sums) {
  std::vector<T> r(sums.size());
  for (size_t m = 0; m < sums.size(); ++m) r[m] = ((vals[m] + vals[m]) - sums[m]) * T(0.5);
  return r;
}

// Log sum of a whole mixture through the 101-slot chunk loop.
template <typename T>
inline T chunkLogSum(const std::vector<T>& sc) {
  std::vector<T> buf;
  T run = 0;
  for (size_t m0 = 0; m0 < sc.size(); m0 += kChunk) {
    const size_t n = std::min<size_t>(kChunk, sc.size() - m0);
    buf.clear();
    if (m0 > 0) buf.push_back(run);
    buf.insert(buf.end(), sc.begin() + m0, sc.begin() + m0 + n);
    if constexpr (sizeof(T) == 4)
      run = refLogSum32f(buf.data(), static_cast<int>(buf.size()));
    else
      run = refLogSum64f(buf.data(), static_cast<int>(buf.size()));
  }
  return run;
}

// Sequential fold of the identity float mixture: scalar log-add in double
// with the single rows, narrowed after every step.
inline float foldInDouble32f(const std::vector<float>& sc) {
  float run = sc[0];
  for (size_t m = 1; m < sc.size(); ++m)
    run = static_cast<float>(refLogAddSingleRowsInDouble(sc[m], run));
  return run;
}

// The log-add chunk loop: vector log-add of each chunk of 100 scores.
template <typename T>
inline void chunkLogAdd(const std::vector<T>& sc, T* dst) {
  for (size_t m0 = 0; m0 < sc.size(); m0 += kChunk) {
    const size_t n = std::min<size_t>(kChunk, sc.size() - m0);
    if constexpr (sizeof(T) == 4)
      refLogAddVec32f(sc.data() + m0, dst + m0, n);
    else
      refLogAddVec64f(sc.data() + m0, dst + m0, n);
  }
}

// ---------------------------------------------------------------- exact

template <typename T>
inline double exactSum(const T* x, const T* mean, const T* var, int width) {
  double s = 0;
  for (int c = 0; c < width; ++c) {
    const double d = static_cast<double>(x[c]) - mean[c];
    s += d * d * (var ? static_cast<double>(var[c]) : 1.0);
  }
  return s;
}

inline double exactLogSumExp(const std::vector<double>& s) {
  const double mx = *std::max_element(s.begin(), s.end());
  double acc = 0;
  for (double v : s) acc += std::exp(v - mx);
  return mx + std::log(acc);
}

}  // namespace qtest::mixref

#endif
