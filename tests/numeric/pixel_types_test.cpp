// Raw pixels to double: every code against element-wise reading of the same bytes.
#include <gtest/gtest.h>
#include <sarnum/sarnum.h>

#include <cmath>
#include <limits>
#include <vector>

#include "pixel_cases.h"
#include "same_value.h"

namespace {

constexpr double untouched = -12345.0;

/// Bytes in which every sign, the extremes of every integer, a NaN and infinities appear. They
/// begin at an odd address.
std::vector<unsigned char> sample_bytes() {
  std::vector<unsigned char> bytes(128);
  std::size_t end = 1;
  const auto append = [&](auto value) {
    std::memcpy(bytes.data() + end, &value, sizeof value);
    end += sizeof value;
  };
  for (const double value : {std::nan(""), -HUGE_VAL, 1e300, -2.5}) {
    append(value);
  }
  for (const float value : {HUGE_VALF, -0.0F, 3.0F, -4.0F}) {
    append(value);
  }
  append(std::numeric_limits<std::int32_t>::min());
  append(std::numeric_limits<std::uint32_t>::max());
  append(std::numeric_limits<std::int16_t>::min());
  append(std::uint16_t{0x8000});
  append(std::int8_t{3});
  append(std::int8_t{-4});
  append(std::uint8_t{0xFF});
  append(std::uint8_t{0x80});
  return bytes;
}

TEST(PixelTypes, AreWidenedExactlyAndAmplitudesComputedInDouble) {
  std::vector<unsigned char> bytes = sample_bytes();
  unsigned char* const pixels = bytes.data() + 1;
  for (const PixelType& type : pixel_types) {
    SCOPED_TRACE(type.code);
    const std::size_t n = (bytes.size() - 1) / type.bytes();
    std::vector<double> re(n + 1, untouched);
    std::vector<double> im = re;
    std::vector<double> out = re;
    Transform_to_double(pixels, type.code, re.data(), im.data(), static_cast<int>(n));
    Transform_to_double(pixels, type.code, out.data(), static_cast<int>(n));
    for (std::size_t i = 0; i < n; ++i) {
      const double x = type.element(pixels, i << type.is_complex);
      const double y = type.is_complex ? type.element(pixels, 2 * i + 1) : 0.0;
      EXPECT_PRED2(same_value, re[i], x);
      EXPECT_PRED2(same_value, im[i], y);
      EXPECT_PRED2(same_value, out[i], type.is_complex ? std::sqrt(x * x + y * y) : x);
    }
    EXPECT_EQ(re[n] + im[n] + out[n], 3 * untouched);
  }
}

TEST(PixelTypes, CodesAreTheSuitesNumbers) {
  const int codes[] = {
      TD_UINT8,         TD_INT8,         TD_UINT16,         TD_INT16,           TD_UINT32,
      TD_INT32,         TD_FLOAT32,      TD_FLOAT64,        TD_COMPLEX_FLOAT32, TD_COMPLEX_FLOAT64,
      TD_COMPLEX_UINT8, TD_COMPLEX_INT8, TD_COMPLEX_UINT16, TD_COMPLEX_INT16,   TD_COMPLEX_UINT32,
      TD_COMPLEX_INT32};
  for (int i = 0; i < 16; ++i) {
    EXPECT_EQ(codes[i], i + 1);
  }
}

TEST(PixelTypes, UnknownCodesAndEmptyRunsWriteNothing) {
  unsigned char bytes[64] = {1, 2, 3};
  for (const auto& [type, n] : {std::pair{0, 2}, {17, 2}, {-1, 2}, {TD_INT16, 0}, {TD_INT16, -3}}) {
    double out[6] = {untouched, untouched, untouched, untouched, untouched, untouched};
    Transform_to_double(bytes, type, out, out + 2, n);
    Transform_to_double(bytes, type, out + 4, n);
    for (const double value : out) {
      EXPECT_EQ(value, untouched);
    }
  }
}

}  // namespace
