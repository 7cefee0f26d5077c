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

enum { kComponents = 4 };

/* A small diagonal-covariance mixture over the feature space: component c
 * is centred on the feature offsets shifted by (c - 1.5), with its own
 * spread. pVal holds each component's constant term: log weight minus half
 * the log determinant and the normalisation. */
typedef struct {
  qel32f mean[kComponents][kCoeffs];
  qel32f invVar[kComponents][kCoeffs];
  qel32f val[kComponents];
} Mixture;

static void makeMixture(Mixture* m) {
  const double log2pi = log(2.0 * 3.14159265358979323846);
  int c, k;
  for (c = 0; c < kComponents; ++c) {
    double logDet = 0.0;
    for (k = 0; k < kCoeffs; ++k) {
      const double var = 0.5 + 0.25 * c + 0.05 * k;
      m->mean[c][k] = (qel32f)(0.5 * k - 3.0 + (c - 1.5));
      m->invVar[c][k] = (qel32f)(1.0 / var);
      logDet += log(var);
    }
    m->val[c] = (qel32f)(log(1.0 / kComponents) - 0.5 * (kCoeffs * log2pi + logDet));
  }
}

/* One frame against each Gaussian alone, then the log-sum of the scores. */
static int scoreOneFrame(const qel32f* frame, const Mixture* m) {
  qel32f score[kComponents], total;
  int c;
  printf("\nOne frame against %d Gaussians (log likelihoods):\n ", kComponents);
  for (c = 0; c < kComponents; ++c) {
    if (qelsLogGaussSingle_32f(frame, m->mean[c], m->invVar[c], kCoeffs, &score[c], m->val[c]) !=
        qelStatusOk)
      return 1;
    printf("  g%d %9.3f", c, score[c]);
  }
  if (qelsLogSum_32f(score, &total, kComponents) != qelStatusOk) return 1;
  printf("\n  log-sum of the four: %.4f\n", total);
  return 0;
}

/* A block of frames against the mixture: one block score per component,
 * the best component per frame, and the mixture likelihood of each frame. */
static int scoreBlock(const qel32f* block, const Mixture* m) {
  qel32f scores[kComponents][kFrames];
  int t, c, counts[kComponents] = {0};
  double total = 0.0;
  for (c = 0; c < kComponents; ++c)
    if (qelsLogGauss_32f_D2(block, kCoeffs, m->mean[c], m->invVar[c], kCoeffs, scores[c], kFrames,
                            m->val[c]) != qelStatusOk)
      return 1;
  printf("\nBlock of %d frames against the %d-component mixture:\n", kFrames, kComponents);
  printf("  frame   log p(x)   best  its score\n");
  for (t = 0; t < kFrames; ++t) {
    qel32f mix;
    int best = 0;
    if (qelsLogGaussMixture_32f_D2(block + t * kCoeffs, &m->mean[0][0], &m->invVar[0][0],
                                   kComponents, kCoeffs, kCoeffs, m->val, &mix) != qelStatusOk)
      return 1;
    for (c = 1; c < kComponents; ++c)
      if (scores[c][t] > scores[best][t]) best = c;
    counts[best]++;
    total += mix;
    if (t < 5 || t == kFrames - 1)
      printf("  %5d %10.3f   g%d  %9.3f\n", t, mix, best, scores[best][t]);
    else if (t == 5)
      printf("  ...\n");
  }
  printf("  average log likelihood %.4f; frames won:", total / kFrames);
  for (c = 0; c < kComponents; ++c) printf(" g%d %d", c, counts[c]);
  printf("\n");
  return 0;
}

int main(void) {
  qel32f block[kFrames * kCoeffs];
  Mixture mixture;
  printVersion();
  if (columnStatistics() != 0) return 1;
  makeFeatures(block);
  makeMixture(&mixture);
  if (scoreOneFrame(block + 40 * kCoeffs, &mixture) != 0) return 1;
  return scoreBlock(block, &mixture);
}
