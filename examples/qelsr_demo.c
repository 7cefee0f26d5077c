/* qelsr-demo: a small tour of the library as a front end would use it. */
#include <math.h>
#include <stdio.h>
#include <stdlib.h>

#include "qelsr.h"

static void printVersion(void) {
  const LibVersion* v = qelsrGetLibVersion();
  printf("%s  version %d.%d (%s), build %d.%d, target %s, built %s\n", v->name, v->major, v->minor,
         v->version, v->majorBuild, v->build, v->targetCpu, v->buildDate);
}

enum { kFrames = 100, kCoeffs = 13 };

/* A synthetic block of cepstral-like features: one row per frame, each
 * coefficient a slow oscillation around its own offset. */
static void makeFeatures(qel32f* block) {
  int t, k;
  for (t = 0; t < kFrames; ++t)
    for (k = 0; k < kCoeffs; ++k)
      block[t * kCoeffs + k] = (qel32f)(2.0 / (k + 1) * sin(0.07 * (k + 1) * t) + 0.5 * k - 3.0);
}

static void printRow(const char* label, const qel32f* v) {
  int k;
  printf("  %-13s", label);
  for (k = 0; k < kCoeffs; ++k) printf(" %7.2f", v[k]);
  printf("\n");
}

/* Column sums on both layouts: one block with a stride (_D2) and an array
 * of row pointers (_D2L); the means follow from the sums. */
static int columnStatistics(void) {
  qel32f* block = (qel32f*)malloc(sizeof(qel32f) * kFrames * kCoeffs);
  const qel32f* rows[kFrames];
  qel32f sumD2[kCoeffs], sumD2L[kCoeffs], mean[kCoeffs];
  int t, k, same = 1;
  qelStatus st;
  if (!block) return 1;
  makeFeatures(block);
  for (t = 0; t < kFrames; ++t) rows[t] = block + t * kCoeffs;

  st = qelsSumColumn_32f_D2(block, kCoeffs, kFrames, sumD2, kCoeffs);
  if (st == qelStatusOk) st = qelsSumColumn_32f_D2L(rows, kFrames, sumD2L, kCoeffs);
  if (st != qelStatusOk) {
    printf("column sums failed with status %d\n", st);
    free(block);
    return 1;
  }
  for (k = 0; k < kCoeffs; ++k) {
    mean[k] = sumD2[k] / kFrames;
    same = same && sumD2[k] == sumD2L[k];
  }
  printf("\nFeature matrix: %d frames x %d coefficients\n", kFrames, kCoeffs);
  printRow("sum (_D2)", sumD2);
  printRow("sum (_D2L)", sumD2L);
  printRow("mean", mean);
  printf("  the two layouts give %s sums\n", same ? "identical" : "DIFFERENT");
  free(block);
  return same ? 0 : 1;
}

int main(void) {
  printVersion();
  return columnStatistics();
}
