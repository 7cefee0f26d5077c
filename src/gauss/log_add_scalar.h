// Scalar log-add steps shared by the vector routines (their tails and folds)
// and the wrappers. Private to the scoring files.
//
// Operand convention: `a` is the incoming value, `b` the accumulator. The
// greater is max(a, b) and the smaller min(b, a) with the SSE rule (the
// second operand wins on NaN or equality), exactly as the vector lanes take
// them, so a NaN in either operand makes d NaN and the step takes the
// log-zero path: a NaN accumulator stays NaN, a NaN incoming value is
// ignored. The order of operations below is part of the results.
#ifndef QELSR_GAUSS_LOG_ADD_SCALAR_H
#define QELSR_GAUSS_LOG_ADD_SCALAR_H

#include <cmath>

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

// The rows of one precision in double arithmetic: the segment of d by the
// borders s1 > s2 (a NaN falls to the third), y = d - border, and
// (m + c[Terms-1]) + y * Horner(c[0..Terms-2]).
template <int Terms>
inline qel64f rowsPolynomial(qel64f m, qel64f d, const Rows& rows, qel64f s1, qel64f s2) {
  int seg;
  qel64f s;
  if (d > s1)
    seg = 0, s = 0.0;
  else if (d > s2)
    seg = 1, s = s1;
  else
    seg = 2, s = s2;
  const qel64f* c = rows.row[seg];
  const qel64f y = d - s;
  qel64f q = c[0];
  for (int k = 1; k < Terms - 1; ++k) q = q * y + c[k];
  return (m + c[Terms - 1]) + q * y;
}

// The single rows with the borders -2.55 and -6.8 as doubles.
inline qel64f singleRowsPolynomial(qel64f m, qel64f d) {
  return rowsPolynomial<kLogAddTerms_F>(m, d, singleRows(), INT_S1_F, INT_S2_F);
}

// Double log-add: (m + c[21]) + y * Horner(c[0..20]); no test of the result
// against LOGSMALL. A difference equal to MINLOGEXP is still added.
inline qel64f logAdd64f(qel64f a, qel64f b, const Rows& rows) {
  const qel64f m = sseMax(a, b);
  const qel64f d = sseMin(b, a) - m;
  if (!(d >= MINLOGEXP)) return m < LOGSMALL ? LOGZERO : m;
  return rowsPolynomial<kLogAddTerms>(m, d, rows, INT_S1, INT_S2);
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
// doubles, in the form of the double log-add. A difference below
// -15.3195879547406 gives max(m, -4500000.0).
inline qel64f logAddSingleRowsInDouble(qel64f a, qel64f b, const Rows& rows) {
  const qel64f m = sseMax(a, b);
  const qel64f d = sseMin(b, a) - m;
  if (!(d >= MINLOGEXP_F)) return m < -4500000.0 ? -4500000.0 : m;
  return rowsPolynomial<kLogAddTerms_F>(m, d, rows, INT_S1_F, INT_S2_F);
}

// Log-subtract of one element given d = y - x, formed by the caller in the
// precision of the data: below the cut-off the subtrahend is ignored (and a
// minuend below log zero rises to it); a difference 1 - exp(d) at or below
// `tiny` (too small for a logarithm in T) gives log zero. The logarithm is
// taken in double and the sum narrowed to T.
template <typename T>
inline T logSubStep(T x, qel64f d) {
  constexpr bool single = sizeof(T) == 4;
  if (d < (single ? MINLOGEXP_F : MINLOGEXP)) {
    if constexpr (single)
      return x < LOGZERO_F ? LOGZERO_F : x;
    else
      return x < LOGSMALL ? LOGZERO : x;
  }
  const qel64f oneMinus = 1.0 - std::exp(d);
  if (oneMinus <= (single ? 1.0057e-37 : 2.45e-308)) return single ? LOGZERO_F : LOGZERO;
  return static_cast<T>(static_cast<qel64f>(x) + std::log(oneMinus));
}

// The checks of the log-domain primitives: length, then pointers.
template <typename T>
inline qelStatus checkLogArgs(const T* pSrc, const T* pSrcDst, int len) {
  if (len < 1) return qelStatusSize;
  if (pSrc == nullptr || pSrcDst == nullptr) return qelStatusNullPtr;
  return qelStatusOk;
}

// A subtrahend must lie strictly below its minuend; NaN fails too.
template <typename T>
inline bool subtrahendsBelow(const T* pSrc, const T* pSrcDst, int len) {
  for (int i = 0; i < len; ++i)
    if (!(pSrcDst[i] < pSrc[i])) return false;
  return true;
}

}  // namespace qelsr::logdomain

#endif
