// Scalar references of the mixture scores, one element at a time in the
// order of the library's lanes, so that results compare bit for bit; and
// plain double formulas that check the references themselves.
#ifndef QELSR_TEST_MIXTURE_SCORING_REFERENCE_H
#define QELSR_TEST_MIXTURE_SCORING_REFERENCE_H

#include <algorithm>
#include <cmath>
#include <vector>

#include "log_add_reference.h"

namespace qtest::mixref {

inline constexpr int kChunk = 100;

// Weighted squared term of column c; no variance row means identity.
template <typename T>
inline T term(const T* x, const T* mean, const T* var, int c) {
  const T d = x[c] - mean[c];
  const T p = d * d;
  return var ? p * var[c] : p;
}

// The four lanes of a 32f component: with `cols8` groups of 8 columns add
// their two products before joining the lane; groups of 4; single columns
// into lane 0; fold (l0 + l1) + (l2 + l3).
inline float laneSum32f(const float* x, const float* mean, const float* var, int width,
                        bool cols8) {
  float l[4] = {0.0f, 0.0f, 0.0f, 0.0f};
  int c = 0;
  if (cols8)
    for (; c + 8 <= width; c += 8)
      for (int j = 0; j < 4; ++j)
        l[j] = l[j] + (term(x, mean, var, c + j) + term(x, mean, var, c + 4 + j));
  for (; c + 4 <= width; c += 4)
    for (int j = 0; j < 4; ++j) l[j] = l[j] + term(x, mean, var, c + j);
  for (; c < width; ++c) l[0] = l[0] + term(x, mean, var, c);
  return (l[0] + l[1]) + (l[2] + l[3]);
}

// Two lanes of a 64f component: column pairs, an odd last column into lane 0.
inline double laneSum64f(const double* x, const double* mean, const double* var, int width) {
  double l0 = 0.0, l1 = 0.0;
  int c = 0;
  for (; c + 2 <= width; c += 2) {
    l0 = l0 + term(x, mean, var, c);
    l1 = l1 + term(x, mean, var, c + 1);
  }
  if (c < width) l0 = l0 + term(x, mean, var, c);
  return l0 + l1;
}

// Sums of the `height` components of one MultiMix kernel call: four-component
// passes (columns 4, 1) and a tail of 1-3 components (columns 8, 4, 1).
inline std::vector<float> kernelSums32f(const float* x, const float* const* means,
                                        const float* const* vars, int width, int height) {
  std::vector<float> s(height);
  const int full = height / 4 * 4;
  for (int m = 0; m < height; ++m) s[m] = laneSum32f(x, means[m], vars[m], width, m >= full);
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

inline std::vector<double> kernelSums64f(const double* x, const double* const* means,
                                         const double* const* vars, int width, int height) {
  std::vector<double> s(height);
  for (int m = 0; m < height; ++m) s[m] = laneSum64f(x, means[m], vars[m], width);
  return s;
}

// Sums of a whole mixture whose kernel calls cover chunks of `chunk`
// components (the four-component passes restart in each call).
template <typename T>
inline std::vector<T> chunkedSums(const T* x, const T* const* means, const T* const* vars,
                                  int width, int height, int chunk) {
  std::vector<T> s;
  for (int m0 = 0; m0 < height; m0 += chunk) {
    const int n = std::min(chunk, height - m0);
    std::vector<T> part;
    if constexpr (sizeof(T) == 4)
      part = kernelSums32f(x, means + m0, vars + m0, width, n);
    else
      part = kernelSums64f(x, means + m0, vars + m0, width, n);
    s.insert(s.end(), part.begin(), part.end());
  }
  return s;
}

template <typename T>
inline T score(T v, T sum) {
  return ((v + v) - sum) * T(0.5);
}

template <typename T>
inline std::vector<T> scores(const std::vector<T>& vals, const std::vector<T>& sums) {
  std::vector<T> r(sums.size());
  for (size_t m = 0; m < sums.size(); ++m) r[m] = score(vals[m], sums[m]);
  return r;
}

// The single-observation identity kernels as their interface states them.
// 32f: accumulators A, B; per 16 elements vectors 0, 1 to A and 2, 3 to B;
// one group of 8 of the rest to A; the last len mod 8 to lane 0 of A;
// T = A + B folded (T0 + T2) + (T1 + T3); result ((v + v) - fold) * 0.5.
inline float singleIdVar32f(const float* x, const float* mean, int len, float v) {
  float a[4] = {0, 0, 0, 0}, b[4] = {0, 0, 0, 0};
  int c = 0;
  for (; c + 16 <= len; c += 16)
    for (int q = 0; q < 4; ++q)
      for (int j = 0; j < 4; ++j) {
        float* acc = q < 2 ? a : b;
        acc[j] = acc[j] + term<float>(x, mean, nullptr, c + 4 * q + j);
      }
  if (c + 8 <= len) {
    for (int q = 0; q < 2; ++q)
      for (int j = 0; j < 4; ++j) a[j] = a[j] + term<float>(x, mean, nullptr, c + 4 * q + j);
    c += 8;
  }
  for (; c < len; ++c) a[0] = a[0] + term<float>(x, mean, nullptr, c);
  float t[4];
  for (int j = 0; j < 4; ++j) t[j] = a[j] + b[j];
  return score(v, (t[0] + t[2]) + (t[1] + t[3]));
}

// 64f: two-lane P, Q; per 8 elements vectors 0, 2 to P and 1, 3 to Q;
// s = (P0 + Q0) + (P1 + Q1), then the rest one at a time; v - s * 0.5.
inline double singleIdVar64f(const double* x, const double* mean, int len, double v) {
  double p[2] = {0, 0}, q[2] = {0, 0};
  int c = 0;
  for (; c + 8 <= len; c += 8)
    for (int k = 0; k < 4; ++k)
      for (int j = 0; j < 2; ++j) {
        double* acc = (k % 2 == 0) ? p : q;
        acc[j] = acc[j] + term<double>(x, mean, nullptr, c + 2 * k + j);
      }
  double s = (p[0] + q[0]) + (p[1] + q[1]);
  for (; c < len; ++c) s = s + term<double>(x, mean, nullptr, c);
  return v - s * 0.5;
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
