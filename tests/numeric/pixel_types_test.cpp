// Raw pixels to double: every code against element-wise reading of the same bytes.
#include <gtest/gtest.h>
#include <sarnum/sarnum.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <vector>

namespace {

constexpr double untouched = -12345.0;

struct PixelCase {
  int type;
  int element_size;
  bool is_complex;
  double (*element)(const unsigned char*);
};

template <class Element>
double read_as(const unsigned char* bytes) {
  Element element;
  std::memcpy(&element, bytes, sizeof element);
  return static_cast<double>(element);
}

template <class Element>
PixelCase pixel_case(int type, bool is_complex) {
  return {type, static_cast<int>(sizeof(Element)), is_complex, read_as<Element>};
}

class PixelTypes : public testing::TestWithParam<PixelCase> {};

// Bytes that make every sign, and the extremes of every integer width, appear; a NaN and an
// infinity of each float width too. Read from odd addresses.
std::vector<unsigned char> sample_bytes() {
  std::vector<unsigned char> bytes;
  const auto append = [&](auto value) {
    unsigned char raw[sizeof value];
    std::memcpy(raw, &value, sizeof value);
    bytes.insert(bytes.end(), raw, raw + sizeof value);
  };
  append(std::numeric_limits<double>::quiet_NaN());
  append(-std::numeric_limits<double>::infinity());
  append(1e300);
  append(-2.5);
  append(std::numeric_limits<float>::infinity());
  append(-0.0F);
  append(3.0F);
  append(-4.0F);
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

void expect_same(double actual, double expected) {
  if (std::isnan(expected)) {
    EXPECT_TRUE(std::isnan(actual));
  } else {
    EXPECT_EQ(actual, expected);
    EXPECT_EQ(std::signbit(actual), std::signbit(expected));
  }
}

TEST_P(PixelTypes, AreWidenedExactlyAndAmplitudesComputedInDouble) {
  const PixelCase& pixel = GetParam();
  const std::vector<unsigned char> bytes = sample_bytes();
  const int pixel_size = pixel.element_size * (pixel.is_complex ? 2 : 1);
  const int n = static_cast<int>(bytes.size()) / pixel_size;
  std::vector<unsigned char> storage(bytes.size() + 1);
  std::memcpy(storage.data() + 1, bytes.data(), bytes.size());
  std::vector<double> re(static_cast<std::size_t>(n) + 1, untouched);
  std::vector<double> im = re;
  std::vector<double> out = re;
  Transform_to_double(storage.data() + 1, pixel.type, re.data(), im.data(), n);
  Transform_to_double(storage.data() + 1, pixel.type, out.data(), n);
  for (int i = 0; i < n; ++i) {
    SCOPED_TRACE(i);
    const auto at = static_cast<std::size_t>(i);
    const unsigned char* const raw = bytes.data() + i * pixel_size;
    const double x = pixel.element(raw);
    const double y = pixel.is_complex ? pixel.element(raw + pixel.element_size) : 0.0;
    expect_same(re[at], x);
    expect_same(im[at], y);
    const volatile double xx = x * x;  // keeps the square from being fused into the sum
    expect_same(out[at], pixel.is_complex ? std::sqrt(xx + y * y) : x);
  }
  EXPECT_EQ(re.back(), untouched);
  EXPECT_EQ(im.back(), untouched);
  EXPECT_EQ(out.back(), untouched);
}

INSTANTIATE_TEST_SUITE_P(
    AllCodes, PixelTypes,
    testing::Values(
        pixel_case<std::uint8_t>(TD_UINT8, false), pixel_case<std::int8_t>(TD_INT8, false),
        pixel_case<std::uint16_t>(TD_UINT16, false), pixel_case<std::int16_t>(TD_INT16, false),
        pixel_case<std::uint32_t>(TD_UINT32, false), pixel_case<std::int32_t>(TD_INT32, false),
        pixel_case<float>(TD_FLOAT32, false), pixel_case<double>(TD_FLOAT64, false),
        pixel_case<float>(TD_COMPLEX_FLOAT32, true), pixel_case<double>(TD_COMPLEX_FLOAT64, true),
        pixel_case<std::uint8_t>(TD_COMPLEX_UINT8, true),
        pixel_case<std::int8_t>(TD_COMPLEX_INT8, true),
        pixel_case<std::uint16_t>(TD_COMPLEX_UINT16, true),
        pixel_case<std::int16_t>(TD_COMPLEX_INT16, true),
        pixel_case<std::uint32_t>(TD_COMPLEX_UINT32, true),
        pixel_case<std::int32_t>(TD_COMPLEX_INT32, true)),
    [](const auto& tested) { return "code" + std::to_string(tested.param.type); });

TEST(PixelTypes, CodesAreTheSuitesNumbers) {
  const int codes[] = {
      TD_UINT8,         TD_INT8,         TD_UINT16,         TD_INT16,           TD_UINT32,
      TD_INT32,         TD_FLOAT32,      TD_FLOAT64,        TD_COMPLEX_FLOAT32, TD_COMPLEX_FLOAT64,
      TD_COMPLEX_UINT8, TD_COMPLEX_INT8, TD_COMPLEX_UINT16, TD_COMPLEX_INT16,   TD_COMPLEX_UINT32,
      TD_COMPLEX_INT32};
  int expected = 1;
  for (const int code : codes) {
    EXPECT_EQ(code, expected++);
  }
}

TEST(PixelTypes, UnknownCodesAndEmptyRunsWriteNothing) {
  unsigned char bytes[64] = {1, 2, 3};
  for (const auto& [type, n] : {std::pair{0, 2}, {17, 2}, {-1, 2}, {TD_INT16, 0}, {TD_INT16, -3}}) {
    double re[2] = {untouched, untouched};
    double im[2] = {untouched, untouched};
    double out[2] = {untouched, untouched};
    Transform_to_double(bytes, type, re, im, n);
    Transform_to_double(bytes, type, out, n);
    for (int i = 0; i < 2; ++i) {
      EXPECT_EQ(re[i], untouched);
      EXPECT_EQ(im[i], untouched);
      EXPECT_EQ(out[i], untouched);
    }
  }
}

}  // namespace
