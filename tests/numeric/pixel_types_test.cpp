// Raw pixels to double: every code against element-wise reading of the same bytes.
#include <gtest/gtest.h>
#include <sarnum/sarnum.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

#include "pixel_cases.h"
#include "same_value.h"

namespace {

constexpr double untouched = -12345.0;

TEST(PixelTypes, AreWidenedExactlyAndAmplitudesComputedInDouble) {
  // Any bits: of every sign and size, and NaN among the floats. Pixels begin at an odd address.
  std::mt19937 engine(1);
  std::vector<unsigned char> bytes(65537);
  std::ranges::generate(bytes, [&] { return static_cast<unsigned char>(engine()); });
  for (const PixelType& type : pixel_types) {
    SCOPED_TRACE(type.code);
    const std::size_t n = 65536 / type.bytes();
    std::vector<double> re(n + 1, untouched), im = re, out = re;
    Transform_to_double(&bytes[1], type.code, re.data(), im.data(), static_cast<int>(n));
    Transform_to_double(&bytes[1], type.code, out.data(), static_cast<int>(n));
    for (std::size_t i = 0; i < n; ++i) {
      const double x = type.element(&bytes[1], i << type.is_complex);
      const double y = type.is_complex ? type.element(&bytes[1], 2 * i + 1) : 0.0;
      ASSERT_PRED2(same_value, re[i], x);
      ASSERT_PRED2(same_value, im[i], y);
      ASSERT_PRED2(same_value, out[i], type.is_complex ? std::sqrt(x * x + y * y) : x);
    }
    EXPECT_EQ(re[n] + im[n] + out[n], 3 * untouched);
  }
}

}  // namespace
