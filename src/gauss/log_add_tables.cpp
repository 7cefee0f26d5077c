// Coefficient rows of the log-add f(d) = log(1 + exp(d)), d <= 0, and the
// lane tables that let a vector kernel give each lane its own segment
// without a branch. The lane tables hold nothing but the rows regrouped, so
// they are generated here at compile time.
#include <array>

#include "gauss/gauss.h"

namespace {

// Double rows, highest power first; the last coefficient is f at the
// segment's left border (0, -3.5, -9.0).
constexpr qel64f kP1[kLogAddTerms] = {
    2.4223551556971103e-14, 1.2811707930131747e-12,  2.979508062290527e-11,  4.091290155130968e-10,
    3.717428002038248e-09,  2.3532270503994952e-08,  1.055613856863438e-07,  3.320992500314504e-07,
    7.091358966640867e-07,  1.0406444519836742e-06,  1.6353412792505214e-06, 3.844457955118119e-06,
    1.3867656181255913e-06, -2.5487163524155248e-05, 4.065812849423804e-07,  0.0003473626701744988,
    3.4289110129737e-08,    -0.005208327741081266,   5.587714108476228e-10,  0.12500000002958675,
    0.5000000000006226,     0.6931471805599475};
constexpr qel64f kP2[kLogAddTerms] = {
    1.3708407243051937e-19,  9.601624129865304e-18,  3.191870701452749e-16,  6.702281854356589e-15,
    9.973092519816427e-14,   1.1165229253200852e-12, 9.711578249998531e-12,  6.632489267913665e-11,
    3.487750749690926e-10,   1.277933984587361e-09,  1.6292813548790022e-09, -1.909513758655842e-08,
    -1.8820558187982419e-07, -9.461042535100208e-07, -2.209235331735495e-06, 9.625041106025868e-06,
    0.00014699683220535022,  0.0009831490265710303,  0.004464163447126563,   0.014226511939950807,
    0.0293122307513593,      0.02975041827262059};
constexpr qel64f kP3[kLogAddTerms] = {
    1.7034225392923792e-27, 3.0781354635598557e-25, 2.6542272637469554e-23, 1.4576061250276504e-21,
    5.745038767733748e-20,  1.73794899924144e-18,   4.217783891653166e-17,  8.4810302862868775e-16,
    1.4486369363407485e-14, 2.1432698000428128e-13, 2.7867099954008822e-12, 3.2140356172044866e-11,
    3.300948845025808e-10,  3.0140517373824124e-09, 2.4295529030919333e-08, 1.7072955802867207e-07,
    1.0263887628748916e-06, 5.137002703123242e-06,  2.0558151089723745e-05, 6.168967511733263e-05,
    0.00012339457601536868, 0.00012340218972425103};

// Single rows (kept in double; the vector kernels round them to single),
// left borders 0, -2.55, -6.8.
constexpr qel64f kP1_F[kLogAddTerms_F] = {
    -6.780103715801104e-07, -8.27710395983359e-06, -3.1261214564328406e-05, 2.1955075181092877e-05,
    0.0004062108907165097,  6.910012478334781e-05, -0.005163737400850404,   1.5878560708463796e-05,
    0.125002818406354,      0.5000001923981635,    0.6931471827215062};
constexpr qel64f kP2_F[kLogAddTerms_F] = {
    -7.083237702375219e-09,  -1.8491608098957698e-07, -2.094649399521823e-06,
    -1.2793327302109763e-05, -3.4842057389070787e-05, 0.00010764583059022215,
    0.0016847989052690858,   0.009582361774741538,    0.033592464138937767,
    0.07242669818681209,     0.07518323027822499};
constexpr qel64f kP3_F[kLogAddTerms_F] = {
    6.536044962123068e-12, 3.4510675551141127e-10, 8.230386128280675e-09, 1.183290602139997e-07,
    1.157908356720776e-06, 8.25762745567427e-06,   4.458031414389642e-05, 0.00018342101716467817,
    0.0005549481290265323, 0.0011123966452324845,  0.0011131507706311817};

// A segment assignment of the lanes is numbered sum(seg[l] * 3^l); its
// coefficient set lies at that number times the set size.
template <typename T, int Lanes, int Terms>
struct LaneTables {
  static constexpr int kSets = Lanes == 4 ? 81 : 9;
  static constexpr int kMasks = 1 << (2 * Lanes);
  std::array<T, kSets * Terms * Lanes> coef{};
  std::array<qel32s, kMasks> offset{};
  std::array<T, kMasks * Lanes> border{};
};

template <typename T, int Lanes, int Terms>
constexpr LaneTables<T, Lanes, Terms> buildLaneTables(const qel64f (&r1)[Terms],
                                                      const qel64f (&r2)[Terms],
                                                      const qel64f (&r3)[Terms], qel64f s1,
                                                      qel64f s2) {
  LaneTables<T, Lanes, Terms> t;
  const qel64f* rows[3] = {r1, r2, r3};
  const T borders[3] = {T(0), static_cast<T>(s1), static_cast<T>(s2)};
  constexpr int kSets = LaneTables<T, Lanes, Terms>::kSets;
  for (int set = 0; set < kSets; ++set) {
    int seg[Lanes] = {};
    for (int l = 0, v = set; l < Lanes; ++l, v /= 3) seg[l] = v % 3;
    for (int k = 0; k < Terms; ++k)
      for (int l = 0; l < Lanes; ++l)
        t.coef[(set * Terms + k) * Lanes + l] = static_cast<T>(rows[seg[l]][k]);
  }
  // Index m2 << Lanes | m3. Masks with a lane in both segments never occur;
  // their entries point at the first-segment set and a zero border.
  for (int m2 = 0; m2 < (1 << Lanes); ++m2)
    for (int m3 = 0; m3 < (1 << Lanes); ++m3) {
      const int idx = (m2 << Lanes) | m3;
      int set = 0;
      if ((m2 & m3) == 0) {
        for (int l = Lanes - 1; l >= 0; --l) {
          const int seg = (m3 >> l & 1) ? 2 : (m2 >> l & 1) ? 1 : 0;
          set = set * 3 + seg;
        }
      }
      t.offset[idx] = static_cast<qel32s>(set * Terms * Lanes * sizeof(T));
      for (int l = 0; l < Lanes; ++l) {
        const int seg = (m2 & m3) ? 0 : (m3 >> l & 1) ? 2 : (m2 >> l & 1) ? 1 : 0;
        t.border[idx * Lanes + l] = borders[seg];
      }
    }
  return t;
}

constexpr auto kTablesF =
    buildLaneTables<qel32f, 4, kLogAddTerms_F>(kP1_F, kP2_F, kP3_F, INT_S1_F, INT_S2_F);
constexpr auto kTablesD = buildLaneTables<qel64f, 2, kLogAddTerms>(kP1, kP2, kP3, INT_S1, INT_S2);

}  // namespace

extern "C" {

alignas(16) constinit const std::array<qel32f, 81 * kLogAddTerms_F* 4> P_F = kTablesF.coef;
alignas(16) constinit const std::array<qel32s, 256> Biasing_F = kTablesF.offset;
alignas(16) constinit const std::array<qel32f, 256 * 4> INT_S_F = kTablesF.border;
alignas(16) constinit const std::array<qel64f, 9 * kLogAddTerms* 2> P_D = kTablesD.coef;
alignas(16) constinit const std::array<qel32s, 16> Biasing_D = kTablesD.offset;
alignas(16) constinit const std::array<qel64f, 16 * 2> INT_S_D = kTablesD.border;

void GetLogAddConst(const qel64f** pP1, const qel64f** pP2, const qel64f** pP3) {
  *pP1 = kP1;
  *pP2 = kP2;
  *pP3 = kP3;
}

void GetLogAddConst_F(const qel64f** pP1, const qel64f** pP2, const qel64f** pP3) {
  *pP1 = kP1_F;
  *pP2 = kP2_F;
  *pP3 = kP3_F;
}

}  // extern "C"
