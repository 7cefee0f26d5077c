// The values of the quarter-wave sine table of 1024 points:
// sin(2*pi*i/1024) for i = 0..256, rounded to single from double precision
// (the sine for i <= 128, the cosine of the complementary angle above, the
// same rule by which init builds the tables of longer lengths). A macro, so
// that the exported-to-the-library table and the compile-time tables of the
// straight-line transforms hold the very same literals.
#ifndef QELSR_BASE_FFT_FIX_TABLE_H
#define QELSR_BASE_FFT_FIX_TABLE_H

#define QELS_FFT_FIX_SINE_1024                                                                     \
  0.0f, 0x1.921f1p-8f, 0x1.921d2p-7f, 0x1.2d936cp-6f, 0x1.92156p-6f, 0x1.f69374p-6f,               \
      0x1.2d8658p-5f, 0x1.5fc00ep-5f, 0x1.91f66p-5f, 0x1.c428d2p-5f, 0x1.f656e8p-5f,               \
      0x1.144014p-4f, 0x1.2d520ap-4f, 0x1.466118p-4f, 0x1.5f6dp-4f, 0x1.787586p-4f,                \
      0x1.917a6cp-4f, 0x1.aa7b72p-4f, 0x1.c3785cp-4f, 0x1.dc70ecp-4f, 0x1.f564e6p-4f,              \
      0x1.072a04p-3f, 0x1.139f0cp-3f, 0x1.20116ep-3f, 0x1.2c8106p-3f, 0x1.38edbcp-3f,              \
      0x1.45576cp-3f, 0x1.51bdf8p-3f, 0x1.5e2144p-3f, 0x1.6a813p-3f, 0x1.76dd9ep-3f,               \
      0x1.83366ep-3f, 0x1.8f8b84p-3f, 0x1.9bdccp-3f, 0x1.a82a02p-3f, 0x1.b4732ep-3f,               \
      0x1.c0b826p-3f, 0x1.ccf8ccp-3f, 0x1.d934fep-3f, 0x1.e56ca2p-3f, 0x1.f19f98p-3f,              \
      0x1.fdcdc2p-3f, 0x1.04fb8p-2f, 0x1.0b0d9cp-2f, 0x1.111d26p-2f, 0x1.172a0ep-2f,               \
      0x1.1d3444p-2f, 0x1.233bbap-2f, 0x1.294062p-2f, 0x1.2f422ep-2f, 0x1.35410cp-2f,              \
      0x1.3b3cfp-2f, 0x1.4135cap-2f, 0x1.472b8ap-2f, 0x1.4d1e24p-2f, 0x1.530d88p-2f,               \
      0x1.58f9a8p-2f, 0x1.5ee274p-2f, 0x1.64c7dep-2f, 0x1.6aa9d8p-2f, 0x1.708854p-2f,              \
      0x1.76634p-2f, 0x1.7c3a94p-2f, 0x1.820e3cp-2f, 0x1.87de2ap-2f, 0x1.8daa52p-2f,               \
      0x1.9372a6p-2f, 0x1.993716p-2f, 0x1.9ef794p-2f, 0x1.a4b412p-2f, 0x1.aa6c82p-2f,              \
      0x1.b020d6p-2f, 0x1.b5d1p-2f, 0x1.bb7cf2p-2f, 0x1.c1249ep-2f, 0x1.c6c7f4p-2f,                \
      0x1.cc66eap-2f, 0x1.d2016ep-2f, 0x1.d79776p-2f, 0x1.dd28f2p-2f, 0x1.e2b5d4p-2f,              \
      0x1.e83e0ep-2f, 0x1.edc196p-2f, 0x1.f3405ap-2f, 0x1.f8ba4ep-2f, 0x1.fe2f64p-2f,              \
      0x1.01cfc8p-1f, 0x1.048562p-1f, 0x1.07387ap-1f, 0x1.09e908p-1f, 0x1.0c9704p-1f,              \
      0x1.0f426cp-1f, 0x1.11eb36p-1f, 0x1.14915ap-1f, 0x1.1734d6p-1f, 0x1.19d5ap-1f,               \
      0x1.1c73b4p-1f, 0x1.1f0f08p-1f, 0x1.21a79ap-1f, 0x1.243d6p-1f, 0x1.26d054p-1f,               \
      0x1.296072p-1f, 0x1.2bedb2p-1f, 0x1.2e780ep-1f, 0x1.30ff8p-1f, 0x1.3384p-1f, 0x1.36058cp-1f, \
      0x1.388418p-1f, 0x1.3affa2p-1f, 0x1.3d7824p-1f, 0x1.3fed96p-1f, 0x1.425ff2p-1f,              \
      0x1.44cf32p-1f, 0x1.473b52p-1f, 0x1.49a44ap-1f, 0x1.4c0a14p-1f, 0x1.4e6cacp-1f,              \
      0x1.50cc0ap-1f, 0x1.53282ap-1f, 0x1.558104p-1f, 0x1.57d694p-1f, 0x1.5a28d2p-1f,              \
      0x1.5c77bcp-1f, 0x1.5ec34ap-1f, 0x1.610b76p-1f, 0x1.63503ap-1f, 0x1.659192p-1f,              \
      0x1.67cf78p-1f, 0x1.6a09e6p-1f, 0x1.6c40d8p-1f, 0x1.6e7446p-1f, 0x1.70a42cp-1f,              \
      0x1.72d084p-1f, 0x1.74f948p-1f, 0x1.771e76p-1f, 0x1.794006p-1f, 0x1.7b5df2p-1f,              \
      0x1.7d7836p-1f, 0x1.7f8ecep-1f, 0x1.81a1b4p-1f, 0x1.83b0ep-1f, 0x1.85bc52p-1f, 0x1.87c4p-1f, \
      0x1.89c7eap-1f, 0x1.8bc806p-1f, 0x1.8dc454p-1f, 0x1.8fbccap-1f, 0x1.91b166p-1f,              \
      0x1.93a224p-1f, 0x1.958efep-1f, 0x1.9777fp-1f, 0x1.995cf2p-1f, 0x1.9b3e04p-1f,               \
      0x1.9d1b2p-1f, 0x1.9ef43ep-1f, 0x1.a0c95ep-1f, 0x1.a29a7ap-1f, 0x1.a4678cp-1f,               \
      0x1.a63092p-1f, 0x1.a7f586p-1f, 0x1.a9b662p-1f, 0x1.ab7326p-1f, 0x1.ad2bcap-1f,              \
      0x1.aee04cp-1f, 0x1.b090a6p-1f, 0x1.b23cd4p-1f, 0x1.b3e4d4p-1f, 0x1.b588ap-1f,               \
      0x1.b72834p-1f, 0x1.b8c38ep-1f, 0x1.ba5aa6p-1f, 0x1.bbed7cp-1f, 0x1.bd7c0ap-1f,              \
      0x1.bf064ep-1f, 0x1.c08c42p-1f, 0x1.c20de4p-1f, 0x1.c38b3p-1f, 0x1.c5042p-1f,                \
      0x1.c678b4p-1f, 0x1.c7e8e6p-1f, 0x1.c954b2p-1f, 0x1.cabc16p-1f, 0x1.cc1f1p-1f,               \
      0x1.cd7d98p-1f, 0x1.ced7bp-1f, 0x1.d02d5p-1f, 0x1.d17e78p-1f, 0x1.d2cb22p-1f,                \
      0x1.d4134ep-1f, 0x1.d556f6p-1f, 0x1.d69618p-1f, 0x1.d7d0bp-1f, 0x1.d906bcp-1f,               \
      0x1.da383ap-1f, 0x1.db6526p-1f, 0x1.dc8d7cp-1f, 0x1.ddb13cp-1f, 0x1.ded06p-1f,               \
      0x1.dfeae6p-1f, 0x1.e100ccp-1f, 0x1.e2121p-1f, 0x1.e31eaep-1f, 0x1.e426a4p-1f,               \
      0x1.e529fp-1f, 0x1.e6288ep-1f, 0x1.e7227ep-1f, 0x1.e817bap-1f, 0x1.e90844p-1f,               \
      0x1.e9f416p-1f, 0x1.eadb2ep-1f, 0x1.ebbd8cp-1f, 0x1.ec9b2ep-1f, 0x1.ed740ep-1f,              \
      0x1.ee482ep-1f, 0x1.ef178ap-1f, 0x1.efe22p-1f, 0x1.f0a7fp-1f, 0x1.f168f6p-1f, 0x1.f2253p-1f, \
      0x1.f2dc9cp-1f, 0x1.f38f3ap-1f, 0x1.f43d08p-1f, 0x1.f4e604p-1f, 0x1.f58a2cp-1f,              \
      0x1.f6297cp-1f, 0x1.f6c3f8p-1f, 0x1.f7599ap-1f, 0x1.f7ea62p-1f, 0x1.f8765p-1f,               \
      0x1.f8fd6p-1f, 0x1.f97f92p-1f, 0x1.f9fce6p-1f, 0x1.fa7558p-1f, 0x1.fae8e8p-1f,               \
      0x1.fb5798p-1f, 0x1.fbc162p-1f, 0x1.fc2648p-1f, 0x1.fc8646p-1f, 0x1.fce16p-1f,               \
      0x1.fd3792p-1f, 0x1.fd88dap-1f, 0x1.fdd53ap-1f, 0x1.fe1cbp-1f, 0x1.fe5f3ap-1f,               \
      0x1.fe9cdap-1f, 0x1.fed58ep-1f, 0x1.ff0956p-1f, 0x1.ff383p-1f, 0x1.ff621ep-1f,               \
      0x1.ff871ep-1f, 0x1.ffa72ep-1f, 0x1.ffc252p-1f, 0x1.ffd886p-1f, 0x1.ffe9ccp-1f,              \
      0x1.fff622p-1f, 0x1.fffd88p-1f, 0x1.0p+0f

#endif
