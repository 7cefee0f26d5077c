// Scalar references of the single-observation scores, written from the
// algorithm: each reproduces the fixed lanes and order of additions of its
// score, so a vector kernel must match it bit for bit. Also a long-double
// evaluation of the plain formulas, against which the references themselves
// are checked within a stated rounding bound.
#ifndef QELSR_SINGLE_SCORING_REFERENCE_H
#define QELSR_SINGLE_SCORING_REFERENCE_H

#include <cmath>
#include <type_traits>
#include <vector>

namespace qref {

// ---- single precision: accumulators A and B of four lanes

enum class Single { Weighted, Identity, Distance };

// Weighted and Identity keep a negative sum and end with (fold + 2 val) * 0.5;
// Distance keeps a positive sum. Weighted folds (T0 + T1) + (T2 + T3), the
// other two (T0 + T2) + (T1 + T3).
inline float single32f(Single form, const float* s, const float* m, const float* v, int len,
                       float val) {
  auto term = [&](int i) {
    float d = s[i] - m[i];
    float x = d * d;
    if (form != Single::Identity) x = x * v[i];
    return x;
  };
  auto acc = [&](float a, float x) { return form == Single::Distance ? a + x : a - x; };
  float a[4] = {0, 0, 0, 0}, b[4] = {0, 0, 0, 0};
  int i = 0;
  for (; i + 16 <= len; i += 16)
    for (int l = 0; l < 4; ++l) {
      a[l] = acc(a[l], term(i + l));
      a[l] = acc(a[l], term(i + 4 + l));
      b[l] = acc(b[l], term(i + 8 + l));
      b[l] = acc(b[l], term(i + 12 + l));
    }
  if (i + 8 <= len) {
    for (int l = 0; l < 4; ++l) {
      a[l] = acc(a[l], term(i + l));
      a[l] = acc(a[l], term(i + 4 + l));
    }
    i += 8;
  }
  for (; i < len; ++i) a[0] = acc(a[0], term(i));
  float t[4];
  for (int l = 0; l < 4; ++l) t[l] = a[l] + b[l];
  float f =
      form == Single::Weighted ? (t[0] + t[1]) + (t[2] + t[3]) : (t[0] + t[2]) + (t[1] + t[3]);
  if (form == Single::Distance) return f;
  return (f + 2.0f * val) * 0.5f;
}

// ---- double precision: accumulators P and Q of two lanes

// Vectors 0 and 2 of each group of 8 terms to P, 1 and 3 to Q; then
// (P0 + Q0) + (P1 + Q1) and the remaining terms one by one.
template <typename Term>
double pairsOfLanes(int len, Term term) {
  double p[2] = {0, 0}, q[2] = {0, 0};
  int i = 0;
  for (; i + 8 <= len; i += 8)
    for (int l = 0; l < 2; ++l) {
      p[l] = p[l] + term(i + l);
      q[l] = q[l] + term(i + 2 + l);
      p[l] = p[l] + term(i + 4 + l);
      q[l] = q[l] + term(i + 6 + l);
    }
  double s = (p[0] + q[0]) + (p[1] + q[1]);
  for (; i < len; ++i) s = s + term(i);
  return s;
}

// Terms of the double paths; S is float (widened first) or double.
enum class Double { Weighted, Identity, DirectVar };

template <typename S>
double doubleSum(Double form, const S* s, const S* m, const S* v, int len) {
  return pairsOfLanes(len, [&](int i) {
    double d = static_cast<double>(s[i]) - static_cast<double>(m[i]);
    double dd = d * d;
    if (form == Double::Identity) return dd;
    if (form == Double::DirectVar) return dd / static_cast<double>(v[i]);
    return dd * static_cast<double>(v[i]);
  });
}

// ---- block-diagonal quadratic forms dᵀ·M·d from the caller's rows

// One row per matrix row, each holding its own block's columns.
using Rows32f = std::vector<std::vector<float>>;
using Rows64f = std::vector<std::vector<double>>;

// Single rows: element j of a row product goes to lane j mod 4, a partial
// last vector adds 0 to the lanes behind the row's end. The products t·d[k]
// go to four single lanes (Widen false) or, widened, to four double lanes
// (Widen true); the fold is (l0 + l2) + (l1 + l3).
template <bool Widen, typename Total = std::conditional_t<Widen, double, float>>
Total blockForm32f(const std::vector<int>& sizes, const Rows32f& rows, const float* d) {
  Total tot[4] = {0, 0, 0, 0};
  int o = 0, r = 0;
  for (int side : sizes) {
    for (int k = 0; k < side; ++k, ++r) {
      float t[4] = {0, 0, 0, 0};
      for (int j = 0; j < side; j += 4)
        for (int l = 0; l < 4; ++l)
          t[l] = t[l] + (j + l < side ? d[o + j + l] * rows[r][j + l] : 0.0f * 0.0f);
      for (int l = 0; l < 4; ++l) tot[l] = tot[l] + static_cast<Total>(t[l] * d[o + k]);
    }
    o += side;
  }
  return (tot[0] + tot[2]) + (tot[1] + tot[3]);
}

// Double rows in two lanes, folded l0 + l1.
inline double blockForm64f(const std::vector<int>& sizes, const Rows64f& rows, const double* d) {
  double tot[2] = {0, 0};
  int o = 0, r = 0;
  for (int side : sizes) {
    for (int k = 0; k < side; ++k, ++r) {
      double t[2] = {0, 0};
      for (int j = 0; j < side; j += 2)
        for (int l = 0; l < 2; ++l)
          t[l] = t[l] + (j + l < side ? d[o + j + l] * rows[r][j + l] : 0.0 * 0.0);
      for (int l = 0; l < 2; ++l) tot[l] = tot[l] + t[l] * d[o + k];
    }
    o += side;
  }
  return tot[0] + tot[1];
}

// ---- accumulation

template <typename T>
void meanVarAcc(const T* s, const T* m, T* meanAcc, T* varAcc, int len, T val) {
  for (int i = 0; i < len; ++i) {
    T d = s[i] - m[i];
    T dv = d * val;
    meanAcc[i] = meanAcc[i] + dv;
    varAcc[i] = varAcc[i] + d * dv;
  }
}

// ---- the plain formulas in long double

// Σ (s - m)² · w with w = v, 1/v or 1; also Σ|term| for error bounds.
template <typename S>
long double exactSum(Double form, const S* s, const S* m, const S* v, int len,
                     long double* absSum = nullptr) {
  long double sum = 0, abs = 0;
  for (int i = 0; i < len; ++i) {
    long double d = static_cast<long double>(s[i]) - static_cast<long double>(m[i]);
    long double x = d * d;
    if (form == Double::Weighted) x *= v[i];
    if (form == Double::DirectVar) x /= v[i];
    sum += x;
    abs += std::fabs(x);
  }
  if (absSum) *absSum = abs;
  return sum;
}

template <typename R, typename S>
long double exactBlockForm(const std::vector<int>& sizes, const std::vector<std::vector<R>>& rows,
                           const S* s, const S* m, long double* absSum = nullptr) {
  long double sum = 0, abs = 0;
  int o = 0, r = 0;
  for (int side : sizes) {
    for (int k = 0; k < side; ++k, ++r)
      for (int j = 0; j < side; ++j) {
        long double x = (static_cast<long double>(s[o + k]) - m[o + k]) * rows[r][j] *
                        (static_cast<long double>(s[o + j]) - m[o + j]);
        sum += x;
        abs += std::fabs(x);
      }
    o += side;
  }
  if (absSum) *absSum = abs;
  return sum;
}

}  // namespace qref

#endif
