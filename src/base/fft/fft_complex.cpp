// The complex core of the real transform: a decimation-in-time FFT with a
// first pass fused with the bit reversal, then twiddled stages; radix 4 and
// radix 8 mix as coreFirstLog/coreStageLog say. Two complex points ride
// in one 16-byte register, so every butterfly works on two neighbouring
// positions at once.
//
// Stage twiddle layout (shared by the core, the merge levels of the large
// path and the last pass of the multi-threaded path): for a stage that
// joins r sub-transforms of length L, the table holds for each pair of
// positions (j, j+1) the twiddles w_t(j), w_t(j+1) of t = 1..r-1 in turn,
// w_t(j) = exp(-2*pi*i*t*j/(r*L)). A stage's table does not depend on the
// transform length, only on L, so the same builder serves all users.
#include <omp.h>

#include <cstring>

#include "base/base.h"
#include "base/fft/fft_kernels.h"
#include "core/qelcore.h"

using namespace qelsr::fft;

namespace {

inline int rev3(int t) { return ((t & 1) << 2) | (t & 2) | ((t >> 2) & 1); }

// Builds the table of one stage of radix r joining sub-transforms of length
// L; returns the floats written.
long buildStage(float* tw, int r, long L, const SineBase& base) {
  float* p = tw;
  for (long j = 0; j < L; j += 2) {
    for (int t = 1; t < r; ++t) {
      twiddle(base, r * L, t * j, p);
      twiddle(base, r * L, t * (j + 1), p + 2);
      p += 4;
    }
  }
  return p - tw;
}

// Loads points i and i+1 of a sequence with complex stride `stride`.
template <bool Contig>
inline __m128 load2(const float* src, long i, long stride) {
  if constexpr (Contig) {
    return _mm_loadu_ps(src + 2 * i);
  } else {
    __m128 v = _mm_setzero_ps();
    v = _mm_loadl_pi(v, reinterpret_cast<const __m64*>(src + 2 * i * stride));
    return _mm_loadh_pi(v, reinterpret_cast<const __m64*>(src + 2 * (i + 1) * stride));
  }
}

// First pass fused with the bit reversal. Output block m (4 or 8 points)
// holds the DFT of x[r + j*C/R], j < R, where r is the reversal of m over
// logC - log2(R) bits. Blocks m and m + C/(2R) have neighbouring r, so they
// share one load per input.
template <bool Inv, bool Contig>
void firstPass4(const float* src, long stride, float* dst, const qel32s* rev, long c) {
  const long q = c / 4, half = c / 8;
  for (long m = 0; m < half; ++m) {
    const long r = rev[m];
    __m128 u0 = load2<Contig>(src, r, stride), u1 = load2<Contig>(src, r + q, stride);
    __m128 u2 = load2<Contig>(src, r + 2 * q, stride), u3 = load2<Contig>(src, r + 3 * q, stride);
    dft4<Inv>(u0, u1, u2, u3);
    float* d0 = dst + 8 * m;
    float* d1 = dst + 8 * (m + half);
    _mm_storeu_ps(d0, _mm_movelh_ps(u0, u1));
    _mm_storeu_ps(d0 + 4, _mm_movelh_ps(u2, u3));
    _mm_storeu_ps(d1, _mm_movehl_ps(u1, u0));
    _mm_storeu_ps(d1 + 4, _mm_movehl_ps(u3, u2));
  }
}

template <bool Inv, bool Contig>
void firstPass8(const float* src, long stride, float* dst, const qel32s* rev, long c) {
  const long q = c / 8, half = c / 16;
  for (long m = 0; m < half; ++m) {
    const long r = rev[m];
    __m128 u[8];
    for (int j = 0; j < 8; ++j) u[j] = load2<Contig>(src, r + j * q, stride);
    dft8<Inv>(u);
    float* d0 = dst + 16 * m;
    float* d1 = dst + 16 * (m + half);
    for (int j = 0; j < 8; j += 2) {
      _mm_storeu_ps(d0 + 2 * j, _mm_movelh_ps(u[j], u[j + 1]));
      _mm_storeu_ps(d1 + 2 * j, _mm_movehl_ps(u[j + 1], u[j]));
    }
  }
}

// First pass in place on data that are already bit-reversed: each block of
// R points holds its inputs in bit-reversed residue order. Two blocks are
// transposed into the two lanes.
template <bool Inv>
void firstPassInPlace4(float* d, long c) {
  for (long m = 0; m < c; m += 8) {
    float* p = d + 2 * m;
    const __m128 a0 = _mm_loadu_ps(p), a1 = _mm_loadu_ps(p + 4);
    const __m128 b0 = _mm_loadu_ps(p + 8), b1 = _mm_loadu_ps(p + 12);
    // positions 0..3 hold residues 0, 2, 1, 3
    __m128 y0 = _mm_movelh_ps(a0, b0), y2 = _mm_movehl_ps(b0, a0);
    __m128 y1 = _mm_movelh_ps(a1, b1), y3 = _mm_movehl_ps(b1, a1);
    dft4<Inv>(y0, y1, y2, y3);
    _mm_storeu_ps(p, _mm_movelh_ps(y0, y1));
    _mm_storeu_ps(p + 4, _mm_movelh_ps(y2, y3));
    _mm_storeu_ps(p + 8, _mm_movehl_ps(y1, y0));
    _mm_storeu_ps(p + 12, _mm_movehl_ps(y3, y2));
  }
}

template <bool Inv>
void firstPassInPlace8(float* d, long c) {
  for (long m = 0; m < c; m += 16) {
    float* p = d + 2 * m;
    __m128 a[4], b[4], y[8];
    for (int i = 0; i < 4; ++i) {
      a[i] = _mm_loadu_ps(p + 4 * i);
      b[i] = _mm_loadu_ps(p + 16 + 4 * i);
    }
    for (int t = 0; t < 8; ++t) {
      const int s = rev3(t);
      y[t] = (s & 1) ? _mm_movehl_ps(b[s >> 1], a[s >> 1]) : _mm_movelh_ps(a[s >> 1], b[s >> 1]);
    }
    dft8<Inv>(y);
    for (int j = 0; j < 8; j += 2) {
      _mm_storeu_ps(p + 2 * j, _mm_movelh_ps(y[j], y[j + 1]));
      _mm_storeu_ps(p + 16 + 2 * j, _mm_movehl_ps(y[j + 1], y[j]));
    }
  }
}

template <bool Inv>
void fact4(const float* const* in, float* const* out, const float* tw, long n) {
  const float *i0 = in[0], *i1 = in[1], *i2 = in[2], *i3 = in[3];
  float *o0 = out[0], *o1 = out[1], *o2 = out[2], *o3 = out[3];
  for (long j = 0; j < 2 * n; j += 4, tw += 12) {
    __m128 y0 = _mm_loadu_ps(i0 + j);
    __m128 y1 = twMul<Inv>(_mm_loadu_ps(i1 + j), _mm_load_ps(tw));
    __m128 y2 = twMul<Inv>(_mm_loadu_ps(i2 + j), _mm_load_ps(tw + 4));
    __m128 y3 = twMul<Inv>(_mm_loadu_ps(i3 + j), _mm_load_ps(tw + 8));
    dft4<Inv>(y0, y1, y2, y3);
    _mm_storeu_ps(o0 + j, y0);
    _mm_storeu_ps(o1 + j, y1);
    _mm_storeu_ps(o2 + j, y2);
    _mm_storeu_ps(o3 + j, y3);
  }
}

template <bool Inv>
void fact8(const float* const* in, float* const* out, const float* tw, long n) {
  for (long j = 0; j < 2 * n; j += 4, tw += 28) {
    __m128 y[8];
    y[0] = _mm_loadu_ps(in[0] + j);
    for (int t = 1; t < 8; ++t)
      y[t] = twMul<Inv>(_mm_loadu_ps(in[t] + j), _mm_load_ps(tw + 4 * (t - 1)));
    dft8<Inv>(y);
    for (int t = 0; t < 8; ++t) _mm_storeu_ps(out[t] + j, y[t]);
  }
}

// Twiddled radix-4 stage over the whole sequence, joining bit-reversed
// blocks of L: block positions 0, 1, 2, 3 hold residues 0, 2, 1, 3.
template <bool Inv>
void stage4(float* in, float* out, const float* tw, long c, long l) {
  for (long g = 0; g < c; g += 4 * l) {
    const float* pi[4] = {in + 2 * g, in + 2 * (g + 2 * l), in + 2 * (g + l), in + 2 * (g + 3 * l)};
    float* po[4] = {out + 2 * g, out + 2 * (g + l), out + 2 * (g + 2 * l), out + 2 * (g + 3 * l)};
    fact4<Inv>(pi, po, tw, l);
  }
}

// Twiddled radix-8 stage: block positions s hold residues rev3(s).
template <bool Inv>
void stage8(float* in, float* out, const float* tw, long c, long l) {
  for (long g = 0; g < c; g += 8 * l) {
    const float* pi[8];
    float* po[8];
    for (int t = 0; t < 8; ++t) {
      pi[t] = in + 2 * (g + rev3(t) * l);
      po[t] = out + 2 * (g + t * l);
    }
    fact8<Inv>(pi, po, tw, l);
  }
}

// Stages after the first pass: in `work`, the last one into `out`.
template <bool Inv>
void coreStages(float* work, float* out, const float* tw, int logC) {
  const long c = 1L << logC;
  int done = coreFirstLog(logC);
  long l = 1L << done;
  while (l < c) {
    const int lg = coreStageLog(logC, done);
    const long r = 1L << lg;
    float* dst = (r * l == c) ? out : work;
    if (lg == 3)
      stage8<Inv>(work, dst, tw, c, l);
    else
      stage4<Inv>(work, dst, tw, c, l);
    tw += 2 * (r - 1) * l;
    l *= r;
    done += lg;
  }
}

template <bool Inv>
void radix4Norm(const float* src, long stride, float* work, float* out, const qel32s* rev,
                const float* tw, int logC) {
  const long c = 1L << logC;
  // a transform of one pass writes its output directly
  const bool onePass = c == (1L << coreFirstLog(logC));
  float* first = onePass ? out : work;
  if (coreFirstLog(logC) == 3) {
    if (stride == 1)
      firstPass8<Inv, true>(src, 1, first, rev, c);
    else
      firstPass8<Inv, false>(src, stride, first, rev, c);
  } else {
    if (stride == 1)
      firstPass4<Inv, true>(src, 1, first, rev, c);
    else
      firstPass4<Inv, false>(src, stride, first, rev, c);
  }
  if (!onePass) coreStages<Inv>(work, out, tw, logC);
}

template <bool Inv>
void radix4InPlace(float* d, const float* tw, int logC) {
  const long c = 1L << logC;
  if (coreFirstLog(logC) == 3)
    firstPassInPlace8<Inv>(d, c);
  else
    firstPassInPlace4<Inv>(d, c);
  coreStages<Inv>(d, d, tw, logC);
}

// ---- multi-threaded path ---------------------------------------------------

template <bool Inv>
void coreMT(const float* src, float* cols, const FFTSpec* s, int group) {
  const int logC = s->order - 1;
  const long c8 = 1L << (logC - 3);
  for (int col = 4 * group; col < 4 * group + 4; ++col) {
    float* dst = cols + 2 * col * c8;
    radix4Norm<Inv>(src + 2 * col, 8, dst, dst, s->pBitRev, s->pTwiddle, logC - 3);
  }
  const bool scaled = Inv ? s->invScaled : s->fwdScaled;
  if (scaled) qelsMulC_32f_I(s->scale, cols + 2 * 4 * group * c8, static_cast<int>(8 * c8));
}

// The last pass: output q + p*C/8 = sum over columns c of
// w^(c*q) * Y_c[q] * exp(-+2*pi*i*c*p/8).
template <bool Inv>
void fact8Last(const float* cols, float* dst, const float* tw, long c8, long q0, long q1) {
  const float* in[8];
  float* out[8];
  for (int t = 0; t < 8; ++t) {
    in[t] = cols + 2 * (t * c8 + q0);
    out[t] = dst + 2 * (t * c8 + q0);
  }
  fact8<Inv>(in, out, tw + 14 * q0, q1 - q0);
}

template <bool Inv>
void cfftMT(const float* src, float* dst, const FFTSpec* s, float* work) {
  const int logC = s->order - 1;
  const long c8 = 1L << (logC - 3);
  float* cols = (src == dst || !aligned16(dst)) ? work : dst;
  if (s->numThreads == 2) {
    const int want = ownGetNumThreads() < 2 ? 1 : 2;
    int team = 1;
#pragma omp parallel num_threads(want) shared(team)
    {
#pragma omp master
      team = omp_get_num_threads();
#pragma omp barrier
      const int t = omp_get_thread_num();
      // two groups of four columns, shared evenly
      for (int g = t * 2 / team; g < (t + 1) * 2 / team; ++g) coreMT<Inv>(src, cols, s, g);
    }
    team = 1;
#pragma omp parallel num_threads(want) shared(team)
    {
      long chunk = 0;
#pragma omp master
      team = omp_get_num_threads();
#pragma omp barrier
      const int t = omp_get_thread_num();
      chunk = (c8 / team) & ~3L;  // multiples of 4; the last thread takes the rest
      const long q0 = t * chunk, q1 = (t == team - 1) ? c8 : q0 + chunk;
      if (q1 > q0) fact8Last<Inv>(cols, dst, s->pTwiddleLast, c8, q0, q1);
    }
  } else {
    coreMT<Inv>(src, cols, s, 0);
    coreMT<Inv>(src, cols, s, 1);
    fact8Last<Inv>(cols, dst, s->pTwiddleLast, c8, 0, c8);
  }
}

// ---- large path ----------------------------------------------------------------

constexpr int kTileOrder = 6;

// One complex point as a unit of permutation; the data are only 4-byte
// aligned when the caller's buffers are.
struct Point {
  float re, im;
};  // tiles of 64 x 64 points for the blocked reversal

void bitRevPlain(const float* src, float* dst, const qel32s* rev, int logC) {
  const int h = logC / 2, lo = logC - h;
  // rev over logC bits = rev_h of the high part, joined with rev_lo of the
  // low part; the table holds the reversal over `lo` bits, and a reversal
  // over h = lo or lo - 1 bits is that shifted right.
  const long c = 1L << logC;
  const long maskLo = (1L << lo) - 1;
  auto rv = [&](long i) {
    const long a = rev[i & maskLo];           // low lo bits reversed, as lo bits
    const long b = rev[i >> lo] >> (lo - h);  // high h bits reversed
    return (a << h) | b;
  };
  const Point* s = reinterpret_cast<const Point*>(src);
  Point* d = reinterpret_cast<Point*>(dst);
  if (src == dst) {
    for (long i = 0; i < c; ++i) {
      const long j = rv(i);
      if (i < j) {
        const Point t = d[i];
        d[i] = d[j];
        d[j] = t;
      }
    }
  } else {
    for (long i = 0; i < c; ++i) d[rv(i)] = s[i];
  }
}

// Blocked reversal: index (a, mid, c) with 6-bit a and c goes to
// (rev c, rev mid, rev a); one tile is all (a, c) of one mid.
void bitRevLarge(const float* src, float* dst, const qel32s* tab, int logC, float* tmp) {
  const int midBits = logC - 2 * kTileOrder;
  const long tile = 1L << kTileOrder;
  const long rowStride = 1L << (logC - kTileOrder);
  const qel32s* r6 = tab;
  const qel32s* rm = tab + tile;
  const Point* s = reinterpret_cast<const Point*>(src);
  Point* d = reinterpret_cast<Point*>(dst);
  Point* t = reinterpret_cast<Point*>(tmp);
  auto permute = [&](const Point* from, long fromMid, long fromRow, Point* to, long toMid) {
    // from[(a * fromRow) + fromMid*64 + c] -> to[rev c * rowStride + toMid*64 + rev a]
    for (long a = 0; a < tile; ++a) {
      const Point* f = from + a * fromRow + fromMid * tile;
      const long ra = r6[a];
      for (long c = 0; c < tile; ++c) to[r6[c] * rowStride + toMid * tile + ra] = f[c];
    }
  };
  const long mids = 1L << midBits;
  if (src != dst) {
    for (long mid = 0; mid < mids; ++mid) permute(s, mid, rowStride, d, rm[mid]);
    return;
  }
  for (long mid = 0; mid < mids; ++mid) {
    const long rmid = rm[mid];
    if (rmid < mid) continue;
    // save tile mid, fill it from tile rmid, then fill tile rmid from the copy
    for (long a = 0; a < tile; ++a)
      std::memcpy(t + a * tile, d + a * rowStride + mid * tile, tile * sizeof(Point));
    if (rmid != mid) permute(d, rmid, rowStride, d, mid);
    // the copy is laid out with row stride 64 and mid 0
    for (long a = 0; a < tile; ++a) {
      const Point* f = t + a * tile;
      const long ra = r6[a];
      for (long c = 0; c < tile; ++c) d[r6[c] * rowStride + rmid * tile + ra] = f[c];
    }
  }
}

// Merge levels of the blocks of one level of blocking: 2^b rows of 2^m
// columns, strips of 2^(f-b) columns gathered into buf.
template <bool Inv>
void mergeLevels(float* data, int logC, int b, int f, const float* tw, float* buf) {
  const int m = logC - b;
  const long cols = 1L << m, rows = 1L << b, width = 1L << (f - b);
  for (long col0 = 0; col0 < cols; col0 += width) {
    qels_cFft_BlkMerge_32fc(data, buf, rows, cols, col0, width);
    const float* t = tw;
    long lr = 1;
    int remaining = b;
    while (remaining > 0) {
      const int radix = (remaining == 2 || remaining == 4) ? 4 : 8;
      const long l = lr * cols;
      for (long g = 0; g < rows; g += radix * lr) {
        for (long rl = 0; rl < lr; ++rl) {
          const float* in[8];
          float* out[8];
          for (int s = 0; s < radix; ++s) {
            const int blk = radix == 8 ? rev3(s) : ((s & 1) << 1) | (s >> 1);
            in[s] = buf + 2 * ((g + blk * lr + rl) * width);
            out[s] = buf + 2 * ((g + s * lr + rl) * width);
          }
          const float* tj = t + 2 * (radix - 1) * (rl * cols + col0);
          if (radix == 8)
            fact8<Inv>(in, out, tj, width);
          else
            fact4<Inv>(in, out, tj, width);
        }
      }
      t += 2 * (radix - 1) * l;
      lr *= radix;
      remaining -= radix == 8 ? 3 : 2;
    }
    qels_cFft_BlkSplit_32fc(buf, data, rows, cols, col0, width);
  }
}

// A block of 2^logC bit-reversed points, in place: the radix-4 core up to
// 2^17 points, else blocks of its own and merge levels.
template <bool Inv>
void largeBlock(float* data, int logC, int level, const FFTSpec* s, float* buf) {
  if (logC < 18) {
    radix4InPlace<Inv>(data, s->pTwiddle, logC);
    const bool scaled = Inv ? s->invScaled : s->fwdScaled;
    if (scaled) qelsMulC_32f_I(s->scale, data, static_cast<int>(2L << logC));
    return;
  }
  const int b = qels_fftBlockOrder(logC), f = qels_fftBufOrder(logC);
  const long blk = 1L << (logC - b);
  for (long i = 0; i < (1L << b); ++i)
    largeBlock<Inv>(data + 2 * i * blk, logC - b, level + 1, s, buf);
  mergeLevels<Inv>(data, logC, b, f, s->pStepTwiddle[level], buf);
}

template <bool Inv>
void cfftLarge(const float* src, float* dst, const FFTSpec* s, float* work) {
  const int logC = s->order - 1;
  if (logC < 19)
    bitRevPlain(src, dst, s->pBitRev, logC);
  else
    bitRevLarge(src, dst, s->pBitRev, logC, work);
  largeBlock<Inv>(dst, logC, 0, s, work);
}

}  // namespace

extern "C" {

void qels_initTabBitRevNorm(qel32s* pTab, int bits, int count) {
  for (int i = 0; i < count; ++i) {
    int r = 0;
    for (int b = 0; b < bits; ++b) r |= ((i >> b) & 1) << (bits - 1 - b);
    pTab[i] = r;
  }
}

void qels_initTabBitRevLarge(qel32s* pTab, int logC, int blockOrder) {
  qels_initTabBitRevNorm(pTab, blockOrder, 1 << blockOrder);
  const int mid = logC - 2 * blockOrder;
  qels_initTabBitRevNorm(pTab + (1 << blockOrder), mid, 1 << mid);
}

long qels_coreTwiddleFloats(int logC) {
  // the stage tables telescope: (r - 1) * l complex per stage from l to r * l
  return 2 * ((1L << logC) - (1L << coreFirstLog(logC)));
}

void qels_initCoreTwiddles(qel32f* pTw, int logC, const qel32f* pBase, long baseN,
                           long baseStride) {
  const SineBase base{pBase, baseN, baseStride};
  const long c = 1L << logC;
  int done = coreFirstLog(logC);
  for (long l = 1L << done; l < c;) {
    const int lg = coreStageLog(logC, done);
    pTw += buildStage(pTw, 1 << lg, l, base);
    l <<= lg;
    done += lg;
  }
}

// Merge twiddles (pStepTwiddle) and the last-pass twiddles of the MT path
// use the same stage builder; see fft_real.cpp for the layout of a plan.
long qels_buildStageTwiddles(qel32f* pTw, int radix, long l, const qel32f* pBase, long baseN,
                             long baseStride) {
  return buildStage(pTw, radix, l, SineBase{pBase, baseN, baseStride});
}

void qels_cRadix4FwdNorm_32fc(const qel32f* pSrc, long srcStride, qel32f* pWork, qel32f* pOut,
                              const qel32s* pBitRev, const qel32f* pTw, int logC) {
  radix4Norm<false>(pSrc, srcStride, pWork, pOut, pBitRev, pTw, logC);
}
void qels_cRadix4InvNorm_32fc(const qel32f* pSrc, long srcStride, qel32f* pWork, qel32f* pOut,
                              const qel32s* pBitRev, const qel32f* pTw, int logC) {
  radix4Norm<true>(pSrc, srcStride, pWork, pOut, pBitRev, pTw, logC);
}
void qels_cRadix4Fwd_32fc(qel32f* pData, const qel32f* pTw, int logC) {
  radix4InPlace<false>(pData, pTw, logC);
}
void qels_cRadix4Inv_32fc(qel32f* pData, const qel32f* pTw, int logC) {
  radix4InPlace<true>(pData, pTw, logC);
}

void qels_cFftFwd_Fact4_32fc(const qel32f* const* ppIn, qel32f* const* ppOut, const qel32f* pTw,
                             long n) {
  fact4<false>(ppIn, ppOut, pTw, n);
}
void qels_cFftInv_Fact4_32fc(const qel32f* const* ppIn, qel32f* const* ppOut, const qel32f* pTw,
                             long n) {
  fact4<true>(ppIn, ppOut, pTw, n);
}
void qels_cFftFwd_Fact8_32fc(const qel32f* const* ppIn, qel32f* const* ppOut, const qel32f* pTw,
                             long n) {
  fact8<false>(ppIn, ppOut, pTw, n);
}
void qels_cFftInv_Fact8_32fc(const qel32f* const* ppIn, qel32f* const* ppOut, const qel32f* pTw,
                             long n) {
  fact8<true>(ppIn, ppOut, pTw, n);
}

void qels_cFftFwd_CoreMT_32fc(const qel32f* pSrc, qel32f* pCols, const FFTSpec* pSpec, int group) {
  coreMT<false>(pSrc, pCols, pSpec, group);
}
void qels_cFftInv_CoreMT_32fc(const qel32f* pSrc, qel32f* pCols, const FFTSpec* pSpec, int group) {
  coreMT<true>(pSrc, pCols, pSpec, group);
}
void qels_cFftFwd_Fact8_Last_32fc(const qel32f* pCols, qel32f* pDst, const qel32f* pTw, long c8,
                                  long q0, long q1) {
  fact8Last<false>(pCols, pDst, pTw, c8, q0, q1);
}
void qels_cFftInv_Fact8_Last_32fc(const qel32f* pCols, qel32f* pDst, const qel32f* pTw, long c8,
                                  long q0, long q1) {
  fact8Last<true>(pCols, pDst, pTw, c8, q0, q1);
}
void qels_cFftFwd_MT_32fc(const qel32f* pSrc, qel32f* pDst, const FFTSpec* pSpec, qel32f* pWork) {
  cfftMT<false>(pSrc, pDst, pSpec, pWork);
}
void qels_cFftInv_MT_32fc(const qel32f* pSrc, qel32f* pDst, const FFTSpec* pSpec, qel32f* pWork) {
  cfftMT<true>(pSrc, pDst, pSpec, pWork);
}

void qels_cFft_BlkMerge_32fc(const qel32f* pData, qel32f* pBuf, long rows, long rowLen, long col0,
                             long width) {
  for (long r = 0; r < rows; ++r)
    std::memcpy(pBuf + 2 * r * width, pData + 2 * (r * rowLen + col0), 2 * width * sizeof(float));
}
void qels_cFft_BlkSplit_32fc(const qel32f* pBuf, qel32f* pData, long rows, long rowLen, long col0,
                             long width) {
  for (long r = 0; r < rows; ++r)
    std::memcpy(pData + 2 * (r * rowLen + col0), pBuf + 2 * r * width, 2 * width * sizeof(float));
}
void qels_cFftFwd_Large_32fc(const qel32f* pSrc, qel32f* pDst, const FFTSpec* pSpec,
                             qel32f* pWork) {
  cfftLarge<false>(pSrc, pDst, pSpec, pWork);
}
void qels_cFftInv_Large_32fc(const qel32f* pSrc, qel32f* pDst, const FFTSpec* pSpec,
                             qel32f* pWork) {
  cfftLarge<true>(pSrc, pDst, pSpec, pWork);
}

int qels_fftBlockOrder(int logC) {
  static constexpr int tbl_blk_order[] = {3, 4, 4, 4, 5, 8};  // logC 17..22+
  return tbl_blk_order[(logC > 22 ? 22 : logC) - 17];
}
int qels_fftBufOrder(int logC) {
  static constexpr int tbl_buf_order[] = {9, 10, 10, 10, 13, 15};
  return tbl_buf_order[(logC > 22 ? 22 : logC) - 17];
}

}  // extern "C"
