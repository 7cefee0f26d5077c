// Scalar references of the log-add, written from the algorithm and kept
// independent of the library: own copies of the coefficient rows, one element
// at a time, the same operations in the same order as the library's lanes,
// so that results compare bit for bit.
//
// Operand convention everywhere: `a` is the incoming value (source element),
// `b` the accumulator (destination element). The greater is taken as SSE
// max(a, b) and the smaller as SSE min(b, a); with a NaN in `a` the result is
// b's dead-lane value, with a NaN in `b` it is NaN.
#ifndef QELSR_TEST_LOG_ADD_REFERENCE_H
#define QELSR_TEST_LOG_ADD_REFERENCE_H

#include <bit>
#include <cstddef>
#include <cstdint>

namespace qtest {

namespace logref {

inline constexpr double kLogZero = -1.0e10;
inline constexpr double kLogSmall = -9.0e9;
inline constexpr double kMinLogExp = -23.0258509299405;
inline constexpr float kLogZeroF = -4500000.0f;
inline constexpr float kLogSmallF = -4500000.0f;
inline constexpr double kMinLogExpFDouble = -15.3195879547406;
inline constexpr float kMinLogExpF = std::bit_cast<float>(0xC1751D08u);

// Rows, highest power first; the last entry is f at the left border.
inline constexpr double kP[3][22] = {
    {2.4223551556971103e-14, 1.2811707930131747e-12,  2.979508062290527e-11,  4.091290155130968e-10,
     3.717428002038248e-09,  2.3532270503994952e-08,  1.055613856863438e-07,  3.320992500314504e-07,
     7.091358966640867e-07,  1.0406444519836742e-06,  1.6353412792505214e-06, 3.844457955118119e-06,
     1.3867656181255913e-06, -2.5487163524155248e-05, 4.065812849423804e-07,  0.0003473626701744988,
     3.4289110129737e-08,    -0.005208327741081266,   5.587714108476228e-10,  0.12500000002958675,
     0.5000000000006226,     0.6931471805599475},
    {1.3708407243051937e-19,  9.601624129865304e-18,  3.191870701452749e-16,
     6.702281854356589e-15,   9.973092519816427e-14,  1.1165229253200852e-12,
     9.711578249998531e-12,   6.632489267913665e-11,  3.487750749690926e-10,
     1.277933984587361e-09,   1.6292813548790022e-09, -1.909513758655842e-08,
     -1.8820558187982419e-07, -9.461042535100208e-07, -2.209235331735495e-06,
     9.625041106025868e-06,   0.00014699683220535022, 0.0009831490265710303,
     0.004464163447126563,    0.014226511939950807,   0.0293122307513593,
     0.02975041827262059},
    {1.7034225392923792e-27, 3.0781354635598557e-25, 2.6542272637469554e-23, 1.4576061250276504e-21,
     5.745038767733748e-20,  1.73794899924144e-18,   4.217783891653166e-17,  8.4810302862868775e-16,
     1.4486369363407485e-14, 2.1432698000428128e-13, 2.7867099954008822e-12, 3.2140356172044866e-11,
     3.300948845025808e-10,  3.0140517373824124e-09, 2.4295529030919333e-08, 1.7072955802867207e-07,
     1.0263887628748916e-06, 5.137002703123242e-06,  2.0558151089723745e-05, 6.168967511733263e-05,
     0.00012339457601536868, 0.00012340218972425103}};
inline constexpr double kBorder[3] = {0.0, -3.5, -9.0};

inline constexpr double kPF[3][11] = {
    {-6.780103715801104e-07, -8.27710395983359e-06, -3.1261214564328406e-05, 2.1955075181092877e-05,
     0.0004062108907165097, 6.910012478334781e-05, -0.005163737400850404, 1.5878560708463796e-05,
     0.125002818406354, 0.5000001923981635, 0.6931471827215062},
    {-7.083237702375219e-09, -1.8491608098957698e-07, -2.094649399521823e-06,
     -1.2793327302109763e-05, -3.4842057389070787e-05, 0.00010764583059022215,
     0.0016847989052690858, 0.009582361774741538, 0.033592464138937767, 0.07242669818681209,
     0.07518323027822499},
    {6.536044962123068e-12, 3.4510675551141127e-10, 8.230386128280675e-09, 1.183290602139997e-07,
     1.157908356720776e-06, 8.25762745567427e-06, 4.458031414389642e-05, 0.00018342101716467817,
     0.0005549481290265323, 0.0011123966452324845, 0.0011131507706311817}};
inline constexpr double kBorderF[3] = {0.0, -2.55, -6.8};

// SSE max/min: the second operand wins on NaN and on equality.
template <typename T>
inline T sseMax(T x, T y) {
  return x > y ? x : y;
}
template <typename T>
inline T sseMin(T x, T y) {
  return x < y ? x : y;
}

// Segment of a live difference, double and single borders.
inline int segment(double d) { return d > -3.5 ? 0 : d > -9.0 ? 1 : 2; }
inline int segmentF(float d) { return d > -2.55f ? 0 : d > -6.8f ? 1 : 2; }
inline int segmentFInDouble(double d) { return d > -2.55 ? 0 : d > -6.8 ? 1 : 2; }

// Single lane with `liveAtBorder` deciding whether d equal to the border is
// live (vector lanes) or counts as below it (scalar step of the sums).
inline float logAdd32f(float a, float b, bool liveAtBorder) {
  const float m = sseMax(a, b);
  const float d = sseMin(b, a) - m;
  const bool live = liveAtBorder ? (d >= kMinLogExpF) : (d > kMinLogExpF);
  if (!live) return m < kLogSmallF ? kLogZeroF : m;
  const int seg = segmentF(d);
  const float y = d - static_cast<float>(kBorderF[seg]);
  const double* c = kPF[seg];
  float p = static_cast<float>(c[0]);
  for (int k = 1; k < 11; ++k) p = p * y + static_cast<float>(c[k]);
  return m + p;
}

}  // namespace logref

// One lane of the single-precision vector routines (qelsLogAddVec_32f_*_sp,
// qelsLogAdd_32f, the lane accumulators of qelsLogSum_32f_M7): d equal to
// MINLOGEXP_F is live; the sum is m + (11-term Horner chain in single).
inline float refLogAdd32f(float a, float b) { return logref::logAdd32f(a, b, true); }

// The scalar step of qelsLogSum_32f_M7 (short vectors, lane fold, leftover
// elements): the same arithmetic, but d equal to MINLOGEXP_F is ignored.
inline float refLogAddStep32f(float a, float b) { return logref::logAdd32f(a, b, false); }

// Scalar double log-add (qelsLogAdd_64f, scalar steps of qelsLogSum_64f_M7,
// the odd last element of qelsLogAddVec_64f_M7):
// (m + c[21]) + y * Horner(c[0..20]).
inline double refLogAdd64f(double a, double b) {
  const double m = logref::sseMax(a, b);
  const double d = logref::sseMin(b, a) - m;
  if (!(d >= logref::kMinLogExp)) return m < logref::kLogSmall ? logref::kLogZero : m;
  const int seg = logref::segment(d);
  const double y = d - logref::kBorder[seg];
  const double* c = logref::kP[seg];
  double q = c[0];
  for (int k = 1; k < 21; ++k) q = q * y + c[k];
  return (m + c[21]) + q * y;
}

// One lane of qelsLogAddVec_64f_M7 and of the lane accumulators of
// qelsLogSum_64f_M7: two Horner chains in z = y*y, the odd powers (even
// indices c[0], c[2], ..., c[20]) and the even powers (c[1], ..., c[21]);
// result (m + odd * y) + even.
inline double refLogAddLane64f(double a, double b) {
  const double m = logref::sseMax(a, b);
  const double d = logref::sseMin(b, a) - m;
  if (!(d >= logref::kMinLogExp)) return m < logref::kLogSmall ? logref::kLogZero : m;
  const int seg = logref::segment(d);
  const double y = d - logref::kBorder[seg];
  const double z = y * y;
  const double* c = logref::kP[seg];
  double odd = c[0], even = c[1];
  for (int k = 2; k < 22; k += 2) {
    odd = odd * z + c[k];
    even = even * z + c[k + 1];
  }
  return (m + odd * y) + even;
}

// Double arithmetic with the single rows and borders -2.55, -6.8 (as
// doubles): the step of the short integer sums. Same form as the scalar
// double log-add, (m + c[10]) + y * Horner(c[0..9]); a difference below
// -15.3195879547406 gives max(m, -4500000.0).
inline double refLogAddSingleRowsInDouble(double a, double b) {
  const double m = logref::sseMax(a, b);
  const double d = logref::sseMin(b, a) - m;
  if (!(d >= logref::kMinLogExpFDouble)) return m < -4500000.0 ? -4500000.0 : m;
  const int seg = logref::segmentFInDouble(d);
  const double y = d - logref::kBorderF[seg];
  const double* c = logref::kPF[seg];
  double q = c[0];
  for (int k = 1; k < 10; ++k) q = q * y + c[k];
  return (m + c[10]) + q * y;
}

// qelsLogAddVec_32f_M7_sp / _U8_sp: every element is one lane.
inline void refLogAddVec32f(const float* src, float* srcDst, size_t len) {
  for (size_t i = 0; i < len; ++i) srcDst[i] = refLogAdd32f(src[i], srcDst[i]);
}

// qelsLogAddVec_64f_M7: pairs in lanes, an odd last element by the scalar form.
inline void refLogAddVec64f(const double* src, double* srcDst, size_t len) {
  const size_t even = len & ~size_t{1};
  for (size_t i = 0; i < even; ++i) srcDst[i] = refLogAddLane64f(src[i], srcDst[i]);
  if (len & 1) srcDst[len - 1] = refLogAdd64f(src[len - 1], srcDst[len - 1]);
}

// qelsLogSum_32f_M7: below 8 elements a sequential scalar chain; from 8 on,
// four lane accumulators over groups of 4, fold l0 with l2 and l1 with l3
// (lane form), then the two by the scalar step, then the leftovers.
inline float refLogSum32f(const float* src, int len) {
  if (len < 8) {
    float acc = src[0];
    for (int i = 1; i < len; ++i) acc = refLogAddStep32f(src[i], acc);
    return acc;
  }
  float lane[4] = {src[0], src[1], src[2], src[3]};
  const int groups = len / 4;
  for (int g = 1; g < groups; ++g)
    for (int l = 0; l < 4; ++l) lane[l] = refLogAdd32f(src[4 * g + l], lane[l]);
  const float r0 = refLogAdd32f(lane[2], lane[0]);
  const float r1 = refLogAdd32f(lane[3], lane[1]);
  float acc = refLogAddStep32f(r1, r0);
  for (int i = groups * 4; i < len; ++i) acc = refLogAddStep32f(src[i], acc);
  return acc;
}

// qelsLogSum_64f_M7: up to 4 elements sequentially; otherwise two lane
// accumulators over pairs, then the scalar step over the lanes and the odd
// last element.
inline double refLogSum64f(const double* src, int len) {
  if (len <= 4) {
    double acc = src[0];
    for (int i = 1; i < len; ++i) acc = refLogAdd64f(src[i], acc);
    return acc;
  }
  double l0 = src[0], l1 = src[1];
  const int pairs = len / 2;
  for (int g = 1; g < pairs; ++g) {
    l0 = refLogAddLane64f(src[2 * g], l0);
    l1 = refLogAddLane64f(src[2 * g + 1], l1);
  }
  double acc = refLogAdd64f(l1, l0);
  if (len & 1) acc = refLogAdd64f(src[len - 1], acc);
  return acc;
}

}  // namespace qtest

#endif
