// Scalar log-add steps shared by the vector routines (their tails and folds)
// and the wrappers. Private to the log-domain files.
//
// Operand convention: `a` is the incoming value, `b` the accumulator. The
// greater is max(a, b) and the smaller min(b, a) with the SSE rule (the
// second operand wins on NaN or equality), exactly as the vector lanes take
// them, so a NaN in either operand makes d NaN and the step takes the
// log-zero path: a NaN accumulator stays NaN, a NaN incoming value is
// ignored. The order of operations below is part of the results.
#ifndef QELSR_GAUSS_LOG_ADD_SCALAR_H
#define QELSR_GAUSS_LOG_ADD_SCALAR_H

#include "gauss/gauss.h"

namespace qelsr::logdomain {

template <typename T>
inline T sseMax(T x, T y) {
  return x > y ? x : y;
}
template <typename T>
inline T sseMin(T x, T y) {
  return x < y ? x : y;
}

// The three rows of one precision, highest power first.
struct Rows {
  const qel64f* row[3];
};

inline Rows doubleRows() {
  Rows r;
  GetLogAddConst(&r.row[0], &r.row[1], &r.row[2]);
  return r;
}

inline Rows singleRows() {
  Rows r;
  GetLogAddConst_F(&r.row[0], &r.row[1], &r.row[2]);
  return r;
}

// Double log-add: (m + c[21]) + y * Horner(c[0..20]); no test of the result
// against LOGSMALL. A difference equal to MINLOGEXP is still added.
inline qel64f logAdd64f(qel64f a, qel64f b, const Rows& rows) {
  const qel64f m = sseMax(a, b);
  const qel64f d = sseMin(b, a) - m;
  if (!(d >= MINLOGEXP)) return m < LOGSMALL ? LOGZERO : m;
  int seg;
  qel64f s;
  if (d > INT_S1)
    seg = 0, s = 0.0;
  else if (d > INT_S2)
    seg = 1, s = INT_S1;
  else
    seg = 2, s = INT_S2;
  const qel64f* c = rows.row[seg];
  const qel64f y = d - s;
  qel64f q = c[0];
  for (int k = 1; k < kLogAddTerms - 1; ++k) q = q * y + c[k];
  return (m + c[kLogAddTerms - 1]) + q * y;
}

// Single log-add in single arithmetic with the rows rounded to single (taken
// from lane 0 of the uniform sets of the lane table): m + Horner(c[0..10]),
// the same chain as a vector lane. `LiveAtBorder` says whether d equal to
// MINLOGEXP_F is added (vector lanes) or ignored (the scalar step of sums).
template <bool LiveAtBorder>
inline qel32f logAdd32f(qel32f a, qel32f b) {
  const qel32f m = sseMax(a, b);
  const qel32f d = sseMin(b, a) - m;
  const bool live = LiveAtBorder ? (d >= MINLOGEXP_F_SP) : (d > MINLOGEXP_F_SP);
  if (!live) return m < LOGSMALL_F ? LOGZERO_F : m;
  // Sets with every lane in segment 0, 1, 2 are numbered 0, 40, 80.
  int set;
  qel32f s;
  if (d > static_cast<qel32f>(INT_S1_F))
    set = 0, s = 0.0f;
  else if (d > static_cast<qel32f>(INT_S2_F))
    set = 40, s = static_cast<qel32f>(INT_S1_F);
  else
    set = 80, s = static_cast<qel32f>(INT_S2_F);
  const qel32f* c = P_F.data() + set * kLogAddTerms_F * 4;
  const qel32f y = d - s;
  qel32f p = c[0];
  for (int k = 1; k < kLogAddTerms_F; ++k) p = p * y + c[4 * k];
  return m + p;
}

// The single rows in double arithmetic with the borders -2.55 and -6.8 as
// doubles, in the form of the double log-add: (m + c[10]) + y * Horner(c[0..9]).
// A difference below -15.3195879547406 gives max(m, -4500000.0).
inline qel64f logAddSingleRowsInDouble(qel64f a, qel64f b, const Rows& rows) {
  const qel64f m = sseMax(a, b);
  const qel64f d = sseMin(b, a) - m;
  if (!(d >= MINLOGEXP_F)) return m < -4500000.0 ? -4500000.0 : m;
  int seg;
  qel64f s;
  if (d > INT_S1_F)
    seg = 0, s = 0.0;
  else if (d > INT_S2_F)
    seg = 1, s = INT_S1_F;
  else
    seg = 2, s = INT_S2_F;
  const qel64f* c = rows.row[seg];
  const qel64f y = d - s;
  qel64f q = c[0];
  for (int k = 1; k < kLogAddTerms_F - 1; ++k) q = q * y + c[k];
  return (m + c[kLogAddTerms_F - 1]) + q * y;
}

}  // namespace qelsr::logdomain

#endif
