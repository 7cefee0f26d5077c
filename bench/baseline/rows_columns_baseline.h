// Plain scalar loops that sum the rows and the columns of a feature matrix,
// as a user would write them: the yardstick for the row and column sums.
#ifndef QELSR_BENCH_ROWS_COLUMNS_BASELINE_H
#define QELSR_BENCH_ROWS_COLUMNS_BASELINE_H

// dst[r] = sum of row r.
void baselineSumRow32f(const float* pSrc, int width, int step, float* pDst, int height);
void baselineSumRow16s32f(const short* pSrc, int width, int step, float* pDst, int height);

// dst[c] = sum of column c.
void baselineSumColumn32f(const float* pSrc, int step, int height, float* pDst, int width);
void baselineSumColumn16s32f(const short* pSrc, int step, int height, float* pDst, int width);

#endif
