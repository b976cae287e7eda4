#include "elementary/twiddles.h"

#include "elementary/circle.h"
#include "instruction_set.h"

namespace sarnum {

namespace {

/// e^(2πi/2^k) for k = 2 … 30, rounded to two doubles a part; computed with mpmath in 400 bits.
constexpr Point roots[] = {
    {{0.0, 0.0}, {1.0, 0.0}},
    {{0x1.6a09e667f3bcdp-1, -0x1.bdd3413b26456p-55},
     {0x1.6a09e667f3bcdp-1, -0x1.bdd3413b26456p-55}},
    {{0x1.d906bcf328d46p-1, 0x1.457e610231ac2p-56}, {0x1.87de2a6aea963p-2, -0x1.72cedd3d5a61p-57}},
    {{0x1.f6297cff75cbp-1, 0x1.562172a361fd3p-56}, {0x1.8f8b83c69a60bp-3, -0x1.26d19b9ff8d82p-57}},
    {{0x1.fd88da3d12526p-1, -0x1.87df6378811c7p-55},
     {0x1.917a6bc29b42cp-4, -0x1.e2718d26ed688p-60}},
    {{0x1.ff621e3796d7ep-1, -0x1.c57bc2e24aa15p-57}, {0x1.91f65f10dd814p-5, -0x1.912bd0d569a9p-61}},
    {{0x1.ffd886084cd0dp-1, -0x1.1354d4556e4cbp-55}, {0x1.92155f7a3667ep-6, -0x1.b1d63091a013p-64}},
    {{0x1.fff62169b92dbp-1, 0x1.5dda3c81fbd0dp-55}, {0x1.921d1fcdec784p-7, 0x1.9878ebe836d9dp-61}},
    {{0x1.fffd8858e8a92p-1, 0x1.359c71883bcf7p-55}, {0x1.921f0fe670071p-8, 0x1.ab967fe6b7a9bp-64}},
    {{0x1.ffff621621d02p-1, -0x1.6acfcebc82813p-56}, {0x1.921f8becca4bap-9, 0x1.2ba407bcab5b2p-63}},
    {{0x1.ffffd88586ee6p-1, 0x1.1af64f173ae5bp-55},
     {0x1.921faaee6472ep-10, -0x1.ee52e284a9df8p-64}},
    {{0x1.fffff62161a34p-1, -0x1.136dcb1f9b9c4p-57}, {0x1.921fb2aecb36p-11, 0x1.876157e566b4cp-65}},
    {{0x1.fffffd8858675p-1, -0x1.79f0e54748eabp-55},
     {0x1.921fb49ee4ea6p-12, 0x1.e894d744a453ep-66}},
    {{0x1.ffffff621619cp-1, -0x1.7507dbbbd8fe6p-55},
     {0x1.921fb51aeb57cp-13, -0x1.a6e1d4916c435p-67}},
    {{0x1.ffffffd885867p-1, -0x1.7d55623a32e63p-56}, {0x1.921fb539ecf31p-14, 0x1.6b111fcd23a3p-70}},
    {{0x1.fffffff62161ap-1, -0x1.35c137ea469b2p-55},
     {0x1.921fb541ad59ep-15, 0x1.e9860b8cee262p-69}},
    {{0x1.fffffffd88586p-1, 0x1.b22e494b3ddd2p-55},
     {0x1.921fb5439d73ap-16, -0x1.63c7ff8a3b73dp-71}},
    {{0x1.ffffffff62162p-1, -0x1.937a8438d3925p-55},
     {0x1.921fb544197a1p-17, -0x1.58b02a5d27f7ap-71}},
    {{0x1.ffffffffd8858p-1, 0x1.9b20fd8910eadp-55}, {0x1.921fb544387bap-18, 0x1.7d9db0809d04dp-72}},
    {{0x1.fffffffff6216p-1, 0x1.9b20e52ee25eap-57},
     {0x1.921fb544403c1p-19, -0x1.999d94df6a86ap-74}},
    {{0x1.fffffffffd886p-1, -0x1.e64df20e7a944p-55},
     {0x1.921fb544422c2p-20, 0x1.a09617b9b9f23p-74}},
    {{0x1.ffffffffff621p-1, 0x1.866c83764acf5p-55},
     {0x1.921fb54442a83p-21, -0x1.88215f5b2407fp-76}},
    {{0x1.ffffffffffd88p-1, 0x1.619b20dd314b2p-55},
     {0x1.921fb54442c73p-22, -0x1.74e98619fdf6ep-78}},
    {{0x1.fffffffffff62p-1, 0x1.619b20dd18f0fp-57},
     {0x1.921fb54442cefp-23, -0x1.0e1337f2b20fbp-79}},
    {{0x1.fffffffffffd9p-1, -0x1.e9e64df22ed26p-55},
     {0x1.921fb54442d0ep-24, -0x1.e8bb48d1b6ffbp-81}},
    {{0x1.ffffffffffff6p-1, 0x1.0b0cd906e88aap-56},
     {0x1.921fb54442d16p-25, -0x1.3b7c0fe19968ap-79}},
    {{0x1.ffffffffffffep-1, -0x1.de9e64df22ef1p-55},
     {0x1.921fb54442d18p-26, -0x1.7b1539937209ep-80}},
    {{0x1.fffffffffffffp-1, 0x1.885866c837443p-55}, {0x1.921fb54442d18p-27, 0x1.d411f0005f376p-83}},
    {{1.0, -0x1.3bd3cc9be45dep-56}, {0x1.921fb54442d18p-28, 0x1.e215d2c9f4879p-83}},
};

constexpr Circle make_circle() {
  Circle made{};
  for (int k = 2; k <= 30; ++k) {
    made.root[k] = roots[k - 2];
  }
  made.group[0] = {{{1.0, 0.0}, {0.0, 0.0}}, 0.0};
  double turns = 0.25;
  for (int b = 0; b < group_bits; ++b, turns /= 2) {
    for (int low = 0; low < 1 << b; ++low) {
      const auto& without = made.group[low];
      made.group[low + (1 << b)] = {without.point * made.root[b + 2], without.turns + turns};
    }
  }
  for (int k = 1; k <= 30; ++k) {
    Point point[most_lanes] = {made.group[0].point};
    for (int b = 0; 1 << b < most_lanes && k - b >= 2; ++b) {
      for (int low = 0; low < 1 << b; ++low) {
        point[low + (1 << b)] = point[low] * made.root[k - b];
      }
    }
    for (int lane = 0; lane < most_lanes; ++lane) {
      made.lanes[k].c_hi[lane] = point[lane].c.hi;
      made.lanes[k].c_lo[lane] = point[lane].c.lo;
      made.lanes[k].s_hi[lane] = point[lane].s.hi;
      made.lanes[k].s_lo[lane] = point[lane].s.lo;
    }
  }
  return made;
}

}  // namespace

constinit const Circle circle = make_circle();

#if !defined(SARNUM_PLAIN_FORMS)
extern const TwiddleLevel twiddle_level_baseline;
#if defined(__x86_64__)
extern const TwiddleLevel twiddle_level_avx2;
extern const TwiddleLevel twiddle_level_avx512;
#endif
#endif
extern const TwiddleLevel twiddle_level_scalar;

namespace {

constexpr Levels<TwiddleLevel>::List tables = {
    &twiddle_level_scalar,
#if !defined(SARNUM_PLAIN_FORMS)
    &twiddle_level_baseline,
#if defined(__x86_64__)
    &twiddle_level_avx2,
    &twiddle_level_avx512,
#endif
#endif
};

}  // namespace

constinit Levels<TwiddleLevel> twiddle_levels(tables);

const TwiddleLevel& twiddle_level_in_use() {
  return twiddle_levels.in_use();
}

}  // namespace sarnum
