/*
 * qelsr: signal-processing and statistical primitives for speech recognition.
 *
 * One flat C interface: every primitive returns a qelStatus (0 success,
 * negative error with nothing written, positive warning with the output
 * finished), takes its arrays by pointer and its scalars by value, and keeps
 * nothing between calls except in the state objects that the caller owns.
 *
 * Matrices come in two layouts: `_D2` is one block with a row stride counted
 * in elements, `_D2L` is an array of row pointers.
 */
#ifndef QELSR_H
#define QELSR_H

#ifdef __cplusplus
extern "C" {
#endif

#if defined(__GNUC__)
#define QELSR_API __attribute__((visibility("default")))
#else
#define QELSR_API
#endif

/* ------------------------------------------------------------------------
 * Element types
 * ------------------------------------------------------------------------ */
typedef unsigned char qel8u;
typedef short qel16s;
typedef int qel32s;
typedef long long qel64s;
typedef float qel32f;
typedef double qel64f;

/* ------------------------------------------------------------------------
 * Status values
 * ------------------------------------------------------------------------ */
typedef int qelStatus;

enum {
  /* errors */
  qelStatusCdbkType = -9999,
  qelStatusNonPositiveError = -117,
  qelStatusNotMinPhase = -116,
  qelStatusLspOrder = -115,
  qelStatusNoRoot = -114,
  qelStatusValueRange = -119,
  qelStatusFreqRange = -71,
  qelStatusMelFlag = -70,
  qelStatusFBankEmpty = -69,
  qelStatusNegOccupancy = -67,
  qelStatusCdbkFlag = -66,
  qelStatusNoConvergence = -65,
  qelStatusStride = -37,
  qelStatusContextMatch = -17,
  qelStatusFFTFlag = -16,
  qelStatusFFTOrder = -15,
  qelStatusDivByZero = -10,
  qelStatusMemAlloc = -9,
  qelStatusNullPtr = -8,
  qelStatusRange = -7,
  qelStatusSize = -6,
  qelStatusBadArg = -5,
  qelStatusFailed = -2,
  /* success */
  qelStatusOk = 0,
  /* warnings: the call finished and its output is complete */
  qelStatusWarnSqrtNeg = 3,
  qelStatusWarnZeroInput = 4,
  qelStatusWarnDivZero = 6,
  qelStatusWarnLogZero = 7,
  qelStatusWarnLogNeg = 8,
  qelStatusWarnVarFloor = 11,
  qelStatusWarnZeroOccupancy = 16,
  qelStatusWarnCdbkSize = 31
};

/* ------------------------------------------------------------------------
 * Version record
 * ------------------------------------------------------------------------ */
typedef struct LibVersion {
  int major;
  int minor;
  int majorBuild;
  int build;
  char targetCpu[4];
  const char* name;
  const char* version;
  const char* buildDate;
} LibVersion;

/* The same constant record on every call. */
QELSR_API const LibVersion* qelsrGetLibVersion(void);

/* ------------------------------------------------------------------------
 * Row and column primitives
 * ------------------------------------------------------------------------ */
/* @@rows-and-columns@@ */

/* ------------------------------------------------------------------------
 * Log-domain arithmetic
 * ------------------------------------------------------------------------ */
/* @@log-domain@@ */

/* ------------------------------------------------------------------------
 * Block-diagonal matrices
 * ------------------------------------------------------------------------ */
/* @@block-diagonal@@ */

/* ------------------------------------------------------------------------
 * Single-observation Gaussian scores
 * ------------------------------------------------------------------------ */
/* @@single-scores@@ */

/* ------------------------------------------------------------------------
 * Frame-block Gaussian scores
 * ------------------------------------------------------------------------ */
/* @@block-scores@@ */

/* ------------------------------------------------------------------------
 * Mixture scores
 * ------------------------------------------------------------------------ */
/* @@mixture-scores@@ */

#ifdef __cplusplus
}
#endif

#endif /* QELSR_H */
