// Straight-line transforms of the small lengths: real transforms of 1 to 16
// points (Perm output) and complex transforms of 16 and 32 points. The real
// ones loop over compile-time bounds and unroll, reading twiddles from the
// fixed 1024-point sine table. The complex ones run the vector core of the
// longer lengths on stage and bit-reversal tables that are picked from the
// same fixed table at compile time. Each function reads its whole input
// before it writes, so src may equal dst.
#include <array>

#include "base/fft/fft_fix_table.h"
#include "base/fft/fft_kernels.h"

using namespace qelsr::fft;

namespace {

const SineBase kFixBase{fft_fix_twiddle_table_32f, 1024, 1};

constexpr int bitrev(int i, int bits) {
  int r = 0;
  for (int b = 0; b < bits; ++b) r |= ((i >> b) & 1) << (bits - 1 - b);
  return r;
}
constexpr int log2i(int n) { return n <= 1 ? 0 : 1 + log2i(n / 2); }

// Complex DFT of C points (radix-2, decimation in time) on a local copy.
template <int C, bool Inv>
inline void cfftLocal(float* z) {
  constexpr int bits = log2i(C);
  float t[2 * C];
  for (int i = 0; i < C; ++i) {
    const int r = bitrev(i, bits);
    t[2 * i] = z[2 * r];
    t[2 * i + 1] = z[2 * r + 1];
  }
  for (int l = 1; l < C; l *= 2) {
    for (int g = 0; g < C; g += 2 * l) {
      for (int j = 0; j < l; ++j) {
        float w[2];
        twiddle(kFixBase, 2 * l, j, w);
        if (Inv) w[1] = -w[1];
        float* a = t + 2 * (g + j);
        float* b = t + 2 * (g + j + l);
        const float br = b[0] * w[0] - b[1] * w[1];
        const float bi = b[1] * w[0] + b[0] * w[1];
        b[0] = a[0] - br;
        b[1] = a[1] - bi;
        a[0] = a[0] + br;
        a[1] = a[1] + bi;
      }
    }
  }
  for (int i = 0; i < 2 * C; ++i) z[i] = t[i];
}

constexpr float kFixSine[257] = {QELS_FFT_FIX_SINE_1024};

// exp(-2*pi*i*idx/len) from the fixed table, as twiddle() picks it.
constexpr void fixTwiddle(long len, long idx, float* w) {
  const long a = idx * (1024 / len), quad = a / 256, r = a % 256;
  const float sn = kFixSine[r], cs = kFixSine[256 - r];
  if (quad == 0)
    w[0] = cs, w[1] = -sn;
  else if (quad == 1)
    w[0] = -sn, w[1] = -cs;
  else if (quad == 2)
    w[0] = -cs, w[1] = sn;
  else
    w[0] = sn, w[1] = cs;
}

// The stage tables of the core for 2^LogC points, laid out as
// qels_initCoreTwiddles lays them out.
template <int LogC>
constexpr std::array<float, 2 * ((1 << LogC) - (1 << coreFirstLog(LogC)))> coreTables() {
  std::array<float, 2 * ((1 << LogC) - (1 << coreFirstLog(LogC)))> t{};
  long pos = 0;
  int done = coreFirstLog(LogC);
  for (long l = 1L << done; l < (1L << LogC);) {
    const int lg = coreStageLog(LogC, done);
    const long r = 1L << lg;
    for (long j = 0; j < l; j += 2)
      for (long u = 1; u < r; ++u) {
        fixTwiddle(r * l, u * j, &t[pos]);
        fixTwiddle(r * l, u * (j + 1), &t[pos + 2]);
        pos += 4;
      }
    l <<= lg;
    done += lg;
  }
  return t;
}

template <int LogC>
constexpr std::array<qel32s, (1 << (LogC - coreFirstLog(LogC) - 1))> coreBitRev() {
  std::array<qel32s, (1 << (LogC - coreFirstLog(LogC) - 1))> t{};
  for (int i = 0; i < static_cast<int>(t.size()); ++i) t[i] = bitrev(i, LogC - coreFirstLog(LogC));
  return t;
}

alignas(32) constexpr auto kTw16 = coreTables<4>();
alignas(32) constexpr auto kTw32 = coreTables<5>();
constexpr auto kRev16 = coreBitRev<4>();
constexpr auto kRev32 = coreBitRev<5>();

template <int C, bool Inv, bool Scaled>
void cfftSmall(const float* src, float* dst, float scale) {
  constexpr int logC = log2i(C);
  const float* tw = logC == 4 ? kTw16.data() : kTw32.data();
  const qel32s* rev = logC == 4 ? kRev16.data() : kRev32.data();
  alignas(32) float work[2 * C];
  if (Inv)
    qels_cRadix4InvNorm_32fc(src, 1, work, dst, rev, tw, logC);
  else
    qels_cRadix4FwdNorm_32fc(src, 1, work, dst, rev, tw, logC);
  if (Scaled)
    for (int i = 0; i < 2 * C; ++i) dst[i] *= scale;
}

// Sine and cosine of 2*pi*k/N from the fixed table.
template <int N>
inline float fixSin(int k) {
  return fft_fix_twiddle_table_32f[k * (1024 / N)];
}
template <int N>
inline float fixCos(int k) {
  return fft_fix_twiddle_table_32f[(N / 4 - k) * (1024 / N)];
}

// Forward recombination of a half-length spectrum of M = N/2 points held in
// z (N floats), with the halved twiddles A_k = (0.5 - 0.5*sin, -0.5*cos) of
// angle 2*pi*k/N; X[0], X[N/2] go to the first two floats (Perm).
template <int N>
inline void recombineFwd(float* z) {
  const float a = z[0], b = z[1];
  z[0] = a + b;
  z[1] = a - b;
  for (int k = 1; k <= N / 4; ++k)
    recFwdPair(z, N / 2, k, 0.5f - 0.5f * fixSin<N>(k), -(0.5f * fixCos<N>(k)));
}

// Inverse recombination: from X (Perm) to twice the half-length spectrum,
// with B_k = (1 - sin, cos).
template <int N>
inline void recombineInv(float* z) {
  const float a = z[0], b = z[1];
  z[0] = a + b;
  z[1] = a - b;
  for (int k = 1; k <= N / 4; ++k) recInvPair(z, N / 2, k, 1.0f - fixSin<N>(k), fixCos<N>(k));
}

// The real transform of N points, forward into Perm or inverse from Perm,
// scaled at the end when the plan says so. Lengths 1, 2 and 4 are written
// out; from 8 on a complex transform of N/2 points and the recombination.
template <int N, bool Inv, bool Scaled>
void rfft(const float* src, float* dst, float scale) {
  float x[N > 1 ? N : 2];
  for (int i = 0; i < N; ++i) x[i] = src[i];
  if constexpr (N == 1) {
  } else if constexpr (N == 2) {
    const float a = x[0], b = x[1];
    x[0] = a + b;
    x[1] = a - b;
  } else if constexpr (N == 4 && !Inv) {
    const float s02 = x[0] + x[2], s13 = x[1] + x[3];
    const float d02 = x[0] - x[2], d31 = x[3] - x[1];
    x[0] = s02 + s13;
    x[1] = s02 - s13;
    x[2] = d02;
    x[3] = d31;
  } else if constexpr (N == 4) {
    // Perm: X0, X2, Re X1, Im X1
    const float s = x[0] + x[1], d = x[0] - x[1];
    const float r2 = x[2] + x[2], i2 = x[3] + x[3];
    x[0] = s + r2;
    x[1] = d - i2;
    x[2] = s - r2;
    x[3] = d + i2;
  } else if constexpr (Inv) {
    recombineInv<N>(x);
    cfftLocal<N / 2, true>(x);
  } else {
    cfftLocal<N / 2, false>(x);
    recombineFwd<N>(x);
  }
  for (int i = 0; i < N; ++i) dst[i] = Scaled ? x[i] * scale : x[i];
}

}  // namespace

extern "C" {

const qelsSmallFftFn tbl_rFFTfwd_small[5] = {rfft<1, false, false>, rfft<2, false, false>,
                                             rfft<4, false, false>, rfft<8, false, false>,
                                             rfft<16, false, false>};
const qelsSmallFftFn tbl_rFFTfwd_small_scale[5] = {rfft<1, false, true>, rfft<2, false, true>,
                                                   rfft<4, false, true>, rfft<8, false, true>,
                                                   rfft<16, false, true>};
const qelsSmallFftFn tbl_rFFTinv_small[5] = {rfft<1, true, false>, rfft<2, true, false>,
                                             rfft<4, true, false>, rfft<8, true, false>,
                                             rfft<16, true, false>};
const qelsSmallFftFn tbl_rFFTinv_small_scale[5] = {rfft<1, true, true>, rfft<2, true, true>,
                                                   rfft<4, true, true>, rfft<8, true, true>,
                                                   rfft<16, true, true>};
const qelsSmallFftFn tbl_cFFTfwd_small[2] = {cfftSmall<16, false, false>,
                                             cfftSmall<32, false, false>};
const qelsSmallFftFn tbl_cFFTfwd_small_scale[2] = {cfftSmall<16, false, true>,
                                                   cfftSmall<32, false, true>};
const qelsSmallFftFn tbl_cFFTinv_small[2] = {cfftSmall<16, true, false>,
                                             cfftSmall<32, true, false>};
const qelsSmallFftFn tbl_cFFTinv_small_scale[2] = {cfftSmall<16, true, true>,
                                                   cfftSmall<32, true, true>};

}  // extern "C"
