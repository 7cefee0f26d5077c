// Double-precision references for the real FFT tests: a naive DFT (the
// definition itself) and a radix-2 FFT in double for long lengths, whose
// own error (about log2(N) * 2^-53 of the signal norm) is far below the
// single-precision tolerances it checks.
#ifndef QELSR_TEST_FFT_REFERENCE_H
#define QELSR_TEST_FFT_REFERENCE_H

#include <cmath>
#include <complex>
#include <vector>

namespace qtest {

using cplx = std::complex<double>;

// X[k] = sum x[n] exp(-+2 pi i n k / N), k = 0..N-1, by the definition; the
// angle is reduced exactly in integers before the sine is taken.
inline std::vector<cplx> naiveDft(const std::vector<cplx>& x, bool inverse = false) {
  const size_t n = x.size();
  std::vector<cplx> out(n);
  const double sign = inverse ? 1.0 : -1.0;
  for (size_t k = 0; k < n; ++k) {
    cplx s = 0;
    for (size_t j = 0; j < n; ++j) {
      const double a = 2.0 * M_PI * static_cast<double>((j * k) % n) / static_cast<double>(n);
      s += x[j] * cplx(std::cos(a), sign * std::sin(a));
    }
    out[k] = s;
  }
  return out;
}

// Iterative radix-2 FFT in double, twiddles from std::sin/std::cos of the
// exactly reduced angle.
inline std::vector<cplx> fftDouble(std::vector<cplx> a, bool inverse = false) {
  const size_t n = a.size();
  for (size_t i = 1, j = 0; i < n; ++i) {
    size_t bit = n >> 1;
    for (; j & bit; bit >>= 1) j ^= bit;
    j ^= bit;
    if (i < j) std::swap(a[i], a[j]);
  }
  const double sign = inverse ? 1.0 : -1.0;
  for (size_t len = 2; len <= n; len <<= 1) {
    std::vector<cplx> w(len / 2);
    for (size_t j = 0; j < len / 2; ++j) {
      const double ang = 2.0 * M_PI * static_cast<double>(j) / static_cast<double>(len);
      w[j] = cplx(std::cos(ang), sign * std::sin(ang));
    }
    for (size_t i = 0; i < n; i += len)
      for (size_t j = 0; j < len / 2; ++j) {
        const cplx u = a[i + j], b = a[i + j + len / 2];
        // the plain product: std::complex's operator* checks for NaNs
        const cplx v(b.real() * w[j].real() - b.imag() * w[j].imag(),
                     b.real() * w[j].imag() + b.imag() * w[j].real());
        a[i + j] = u + v;
        a[i + j + len / 2] = u - v;
      }
  }
  return a;
}

// The half spectrum X[0..N/2] of a real signal, in double.
inline std::vector<cplx> realSpectrum(const std::vector<float>& x) {
  std::vector<cplx> a(x.begin(), x.end());
  std::vector<cplx> full = a.size() <= 64 ? naiveDft(a) : fftDouble(a);
  full.resize(a.size() / 2 + 1);
  return full;
}

// The half spectrum from a CCS array (N + 2 floats; 2 for N = 1).
inline std::vector<cplx> fromCCS(const float* ccs, size_t n) {
  std::vector<cplx> out(n / 2 + 1);
  for (size_t k = 0; k <= n / 2; ++k) out[k] = cplx(ccs[2 * k], ccs[2 * k + 1]);
  return out;
}

// sqrt(sum |a - b|^2) and sqrt(sum |b|^2).
inline double l2Diff(const std::vector<cplx>& a, const std::vector<cplx>& b) {
  double s = 0;
  for (size_t i = 0; i < a.size(); ++i) s += std::norm(a[i] - b[i]);
  return std::sqrt(s);
}
inline double l2Norm(const std::vector<cplx>& b) {
  double s = 0;
  for (const auto& v : b) s += std::norm(v);
  return std::sqrt(s);
}

// The tolerance of a single-precision FFT of N points relative to the norm
// of the exact result: 3 * log2(N) * 2^-24 (at least one level). Float FFTs
// show about 0.5 * sqrt(log2 N) * 2^-24 in practice; a wrong twiddle or
// butterfly errs by whole units of the signal norm.
inline double fftTolerance(size_t n) {
  double levels = std::log2(static_cast<double>(n));
  if (levels < 1) levels = 1;
  return 3.0 * levels * std::ldexp(1.0, -24);
}

}  // namespace qtest

#endif
