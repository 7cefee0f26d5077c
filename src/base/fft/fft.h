// Internal real FFT of power-of-two length and the autocorrelation built on
// it. Nothing here is exported; the library's own callers (autocorrelation,
// LP spectrum, filter banks) and the tests reach it through the static
// library.
//
// A length-N real transform runs as a complex transform of C = N/2 points on
// the pairs (x[2n], x[2n+1]) followed by a recombination. Complex data are
// interleaved (re, im) singles throughout.
#ifndef QELSR_BASE_FFT_H
#define QELSR_BASE_FFT_H

#include "qelsr.h"

extern "C" {

// Identification values of live plans.
enum { kFFTSpecTag = 6, kFFTSpec16s32sTag = 0x434D414F };

// Normalisation flags: which direction is scaled and by what.
enum {
  QEL_FFT_DIV_FWD_BY_N = 1,
  QEL_FFT_DIV_INV_BY_N = 2,
  QEL_FFT_DIV_BY_SQRTN = 4,
  QEL_FFT_NODIV_BY_ANY = 8
};

// Plan of the float transform. It lies at a 32-byte boundary of the memory
// given to qelsFFTInit_R_32f and is followed there by its tables, each on a
// 32-byte boundary. Read-only after init.
typedef struct FFTSpec {
  qel32s specTag;           // kFFTSpecTag in a live plan, 0 after release or a bad flag
  qel32s order;             // fftOrder
  qel32s fwdScaled;         // 1 when forward results are scaled
  qel32s invScaled;         // 1 when inverse results are scaled
  qel32f scale;             // the scale value
  qel32s hint;              // stored, read by no path
  qel32s workSize;          // bytes of work buffer a transform needs, 0 if none
  qel32s ownsMemory;        // 1 when qelsFFTFree_R_32f releases the memory
  qel32s numThreads;        // threads of the multi-threaded path, at most 2
  qel32s* pBitRev;          // bit-reversal index table
  qel32f* pTwiddle;         // stage twiddles of the radix-4 core (MT: of the columns)
  qel32f* pTwiddleLast;     // twiddles of the last radix-8 pass of the MT path
  qel32f* pRealRec;         // forward recombination: 0.5 - 0.5*sin, 0.5*cos per bin
  qel32f* pCcsRec;          // inverse recombination: 1 - sin, cos per bin
  qel32f* pStepTwiddle[7];  // large path: merge twiddles of each level of blocking
} FFTSpec;

// Plan of the 16-bit-in, 32-bit-out flavour; the float plan follows it.
typedef struct FFTSpec16s32s {
  qel32s specTag;  // kFFTSpec16s32sTag in a live plan
  qel32s order;
  qel32s hint;
  qel32s workSize;  // float plan's work size + 4*N + 8
  qel32s ownsMemory;
  FFTSpec* pSpec32f;
} FFTSpec16s32s;

// ---- plans and sizes --------------------------------------------------------
qelStatus qelsFFTGetSize_R_32f(int fftOrder, int flag, int hint, int* pSpecSize, int* pInitBufSize,
                               int* pWorkBufSize);
qelStatus qelsFFTInit_R_32f(FFTSpec** ppSpec, int fftOrder, int flag, int hint, qel8u* pSpecMem,
                            qel8u* pInitBuf);
qelStatus qelsFFTInitAlloc_R_32f(FFTSpec** ppSpec, int fftOrder, int flag, int hint);
qelStatus qelsFFTFree_R_32f(FFTSpec* pSpec);
qelStatus qelsFFTGetBufSize_R_32f(const FFTSpec* pSpec, int* pSize);

// ---- float transforms ---------------------------------------------------------
// CCS writes N+2 floats, Pack and Perm N. pSrc may equal pDst; no alignment
// is required. A null pBuffer makes the call allocate its own work memory.
qelStatus qelsFFTFwd_RToCCS_32f(const qel32f* pSrc, qel32f* pDst, const FFTSpec* pSpec,
                                qel8u* pBuffer);
qelStatus qelsFFTFwd_RToPack_32f(const qel32f* pSrc, qel32f* pDst, const FFTSpec* pSpec,
                                 qel8u* pBuffer);
qelStatus qelsFFTFwd_RToPerm_32f(const qel32f* pSrc, qel32f* pDst, const FFTSpec* pSpec,
                                 qel8u* pBuffer);
qelStatus qelsFFTInv_PackToR_32f(const qel32f* pSrc, qel32f* pDst, const FFTSpec* pSpec,
                                 qel8u* pBuffer);

// ---- 16-bit flavour -------------------------------------------------------------
qelStatus qelsFFTGetSize_R_16s32s(int fftOrder, int flag, int hint, int* pSpecSize,
                                  int* pInitBufSize, int* pWorkBufSize);
qelStatus qelsFFTInit_R_16s32s(FFTSpec16s32s** ppSpec, int fftOrder, int flag, int hint,
                               qel8u* pSpecMem, qel8u* pInitBuf);
qelStatus qelsFFTInitAlloc_R_16s32s(FFTSpec16s32s** ppSpec, int fftOrder, int flag, int hint);
qelStatus qelsFFTFree_R_16s32s(FFTSpec16s32s* pSpec);
qelStatus qelsFFTFwd_RToCCS_16s32s_Sfs(const qel16s* pSrc, qel32s* pDst, const FFTSpec16s32s* pSpec,
                                       int scaleFactor, qel8u* pBuffer);

// ---- autocorrelation ---------------------------------------------------------------
// r[k] = sum over i of x[i]*x[i+k], k < dstLen; lags at or beyond len are 0.
qelStatus qelsAutoCorr_32f(const qel32f* pSrc, int len, qel32f* pDst, int dstLen);
// Pack spectra: pSrcDst[k] = pSrc[k] * conj(pSrcDst[k]).
qelStatus qelsMulPackConj_32f_I(const qel32f* pSrc, qel32f* pSrcDst, int len);
// The direct lag kernel: m lags, unchecked.
void ownAutoCorr_32f(const qel32f* pSrc, int len, qel32f* pDst, int m);

// ---- kernels of the transform (unchecked) ---------------------------------------------
// Quarter-wave sine table of 1024 points: sin(2*pi*i/1024), i = 0..256.
extern const qel32f fft_fix_twiddle_table_32f[257];

// Straight-line transforms of the small lengths, indexed by order. Real ones
// (orders 0..4) write Perm; complex ones (index 0, 1 for 16 and 32 points)
// write natural order. The _scale forms multiply by `scale`; the others
// ignore it. Every one of them accepts src == dst.
typedef void (*qelsSmallFftFn)(const qel32f* pSrc, qel32f* pDst, qel32f scale);
extern const qelsSmallFftFn tbl_rFFTfwd_small[5];
extern const qelsSmallFftFn tbl_rFFTfwd_small_scale[5];
extern const qelsSmallFftFn tbl_rFFTinv_small[5];
extern const qelsSmallFftFn tbl_rFFTinv_small_scale[5];
extern const qelsSmallFftFn tbl_cFFTfwd_small[2];
extern const qelsSmallFftFn tbl_cFFTfwd_small_scale[2];
extern const qelsSmallFftFn tbl_cFFTinv_small[2];
extern const qelsSmallFftFn tbl_cFFTinv_small_scale[2];

// pTab[i] = bit reversal of i over `bits` bits, for i < count.
void qels_initTabBitRevNorm(qel32s* pTab, int bits, int count);
// Blocked bit reversal of 2^logC points with 2^blockOrder-point tile edges:
// the reversal of blockOrder bits, then that of the middle logC - 2*blockOrder.
void qels_initTabBitRevLarge(qel32s* pTab, int logC, int blockOrder);
// Floats of the stage twiddle table of the radix-4 core for 2^logC points.
long qels_coreTwiddleFloats(int logC);
// Builds it from a quarter-wave sine table of `baseN` points (sin(2*pi*i/baseN)
// at pBase[i * baseStride], i = 0..baseN/4).
void qels_initCoreTwiddles(qel32f* pTw, int logC, const qel32f* pBase, long baseN, long baseStride);

// Builds the table of one stage of radix 4 or 8 joining sub-transforms of
// length l (see fft_complex.cpp for the layout); returns the floats written.
long qels_buildStageTwiddles(qel32f* pTw, int radix, long l, const qel32f* pBase, long baseN,
                             long baseStride);

// The core (radix-4 and radix-8 stages): the first pass reads natural-order input (complex stride
// srcStride) through the bit-reversal table into pWork, the later stages
// run in pWork and the last one writes pOut (which may be pWork).
void qels_cRadix4FwdNorm_32fc(const qel32f* pSrc, long srcStride, qel32f* pWork, qel32f* pOut,
                              const qel32s* pBitRev, const qel32f* pTw, int logC);
void qels_cRadix4InvNorm_32fc(const qel32f* pSrc, long srcStride, qel32f* pWork, qel32f* pOut,
                              const qel32s* pBitRev, const qel32f* pTw, int logC);
// The same core in place on bit-reversed data.
void qels_cRadix4Fwd_32fc(qel32f* pData, const qel32f* pTw, int logC);
void qels_cRadix4Inv_32fc(qel32f* pData, const qel32f* pTw, int logC);

// Twiddled butterflies over n (even) consecutive points: input t (natural
// residue order) is multiplied by its twiddle, then a 4- or 8-point DFT
// writes output q. Twiddles per pair of points: w1(j), w1(j+1), w2(j), ...
void qels_cFftFwd_Fact4_32fc(const qel32f* const* ppIn, qel32f* const* ppOut, const qel32f* pTw,
                             long n);
void qels_cFftInv_Fact4_32fc(const qel32f* const* ppIn, qel32f* const* ppOut, const qel32f* pTw,
                             long n);
void qels_cFftFwd_Fact8_32fc(const qel32f* const* ppIn, qel32f* const* ppOut, const qel32f* pTw,
                             long n);
void qels_cFftInv_Fact8_32fc(const qel32f* const* ppIn, qel32f* const* ppOut, const qel32f* pTw,
                             long n);

// Multi-threaded path (C = 2^13..2^17 points): 8 decimated columns, then a
// radix-8 pass. CoreMT transforms one group of four columns into pCols.
void qels_cFftFwd_CoreMT_32fc(const qel32f* pSrc, qel32f* pCols, const FFTSpec* pSpec, int group);
void qels_cFftInv_CoreMT_32fc(const qel32f* pSrc, qel32f* pCols, const FFTSpec* pSpec, int group);
// Positions q0..q1-1 (multiples of 4 apart from the end) of the last pass.
void qels_cFftFwd_Fact8_Last_32fc(const qel32f* pCols, qel32f* pDst, const qel32f* pTw, long c8,
                                  long q0, long q1);
void qels_cFftInv_Fact8_Last_32fc(const qel32f* pCols, qel32f* pDst, const qel32f* pTw, long c8,
                                  long q0, long q1);
void qels_cFftFwd_MT_32fc(const qel32f* pSrc, qel32f* pDst, const FFTSpec* pSpec, qel32f* pWork);
void qels_cFftInv_MT_32fc(const qel32f* pSrc, qel32f* pDst, const FFTSpec* pSpec, qel32f* pWork);

// Large path (C = 2^18 and above): blocked bit reversal, blocks in cache,
// merge levels on strips gathered into the work buffer.
void qels_cFft_BlkMerge_32fc(const qel32f* pData, qel32f* pBuf, long rows, long rowLen, long col0,
                             long width);
void qels_cFft_BlkSplit_32fc(const qel32f* pBuf, qel32f* pData, long rows, long rowLen, long col0,
                             long width);
void qels_cFftFwd_Large_32fc(const qel32f* pSrc, qel32f* pDst, const FFTSpec* pSpec, qel32f* pWork);
void qels_cFftInv_Large_32fc(const qel32f* pSrc, qel32f* pDst, const FFTSpec* pSpec, qel32f* pWork);

// Recombination between the half-length complex spectrum and the real one,
// in place on N floats, bins 1..N/4 from both ends towards the middle.
void qels_cRealRecombine_32f(qel32f* pData, const qel32f* pRealRec, int n);
void qels_cCcsRecombine_32f(qel32f* pData, const qel32f* pCcsRec, int n);

// Block order b and strip order f of the large path, indexed by log2(C).
int qels_fftBlockOrder(int logC);
int qels_fftBufOrder(int logC);

}  // extern "C"

#endif
