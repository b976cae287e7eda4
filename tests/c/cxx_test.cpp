// The C++ layer: what it adds to the C interface. Compiled as C++17 and as C++20, against the
// shared library.
#include <gtest/gtest.h>

#include <sarnum/cxx.hpp>
#include <stdexcept>
#include <type_traits>

namespace {

using sarnum::Direction;
using sarnum::Image;
using sarnum::Scaling;

template <class Real>
std::vector<std::complex<Real>> numbers(std::size_t count) {
  std::vector<std::complex<Real>> values(count);
  for (std::size_t i = 0; i < count; ++i) {
    values[i] = {static_cast<Real>(i * 37 % 101), static_cast<Real>(i * 53 % 97)};
  }
  return values;
}

TEST(Cxx, PlansAreMovedAndTransformWhatContainersHold) {
  static_assert(!std::is_copy_constructible_v<sarnum::Plan<float>>);
  sarnum::Plan<double> made(8);
  const sarnum::Plan<double> plan = std::move(made);
  ASSERT_EQ(plan.size(), 8U);
  std::array<std::complex<double>, 8> line{};
  line[1] = 1.0;
  plan.forward(line);
  EXPECT_EQ(line[4], -1.0);
  EXPECT_NEAR(line[2].imag(), -1.0, 1e-15);
  plan.inverse(line);
  EXPECT_NEAR(std::abs(line[1] - 1.0), 0.0, 1e-15);
}

TEST(Cxx, RowsAndColumnsAreThoseOfTheImage) {
  const std::size_t width = 4, height = 8;
  const auto image = numbers<float>(width * height);
  auto rows = image, columns = image;
  const sarnum::Plan<float> of_rows(width), of_columns(height);
  of_rows.transform(Direction::forward, Scaling::by_root, sarnum::rows_of(rows, width));
  of_columns.transform(Direction::forward, Scaling::by_root, sarnum::columns_of(columns, width));
  for (std::size_t row = 0; row < height; ++row) {
    std::vector<std::complex<float>> line(&image[row * width], &image[row * width] + width);
    of_rows.forward(line, Scaling::by_root);
    EXPECT_TRUE(std::equal(line.begin(), line.end(), &rows[row * width]));
  }
  for (std::size_t column = 0; column < width; ++column) {
    std::vector<std::complex<float>> line(height), expected(height);
    for (std::size_t row = 0; row < height; ++row) {
      line[row] = image[row * width + column];
      expected[row] = columns[row * width + column];
    }
    of_columns.forward(line, Scaling::by_root);
    EXPECT_EQ(line, expected);
  }
}

TEST(Cxx, FailuresAreExceptionsWithTheReason) {
  try {
    sarnum::Plan<float>(1000);
    FAIL();
  } catch (const sarnum::Error& error) {
    EXPECT_EQ(error.status(), SARNUM_UNSUPPORTED);
    EXPECT_EQ(std::string(error.what()).substr(0, 10), "n is 1000:");
  }
  const sarnum::Plan<double> plan(8);
  auto line = numbers<double>(9);
  EXPECT_THROW(plan.forward(line), sarnum::Error);
  const auto pixels = numbers<double>(64);
  auto spectrum = numbers<double>(64);
  EXPECT_THROW(sarnum::transform_2d(plan, plan, Direction::forward, Scaling::none,
                                    Image(pixels.data(), 8, 8), Image(spectrum.data(), 16, 4)),
               sarnum::Error);
}

TEST(Cxx, ProgressStopsTheWorkAndItsExceptionsLeaveIt) {
  const sarnum::Plan<float> plan(256);
  auto image = numbers<float>(256 * 256);
  const auto lines = sarnum::rows_of(image, 256);
  double last = -1;
  plan.compress(numbers<float>(5), lines, {2, [&](double fraction) {
                                             last = fraction;
                                             return true;
                                           }});
  EXPECT_EQ(last, 1.0);
  EXPECT_THROW(plan.transform(Direction::forward, Scaling::none, lines,
                              {1, [](double fraction) { return fraction < 0.5; }}),
               sarnum::Cancelled);
  const auto throwing = [](double) -> bool { throw std::domain_error("of the caller"); };
  EXPECT_THROW(plan.transform(Direction::forward, Scaling::none, lines, {1, throwing}),
               std::domain_error);
}

template <class Pixel>
class Pixels : public testing::Test {};
using PixelTypes =
    testing::Types<std::uint8_t, std::int8_t, std::uint16_t, std::int16_t, std::uint32_t,
                   std::int32_t, float, double, std::complex<float>, std::complex<double>,
                   std::array<std::uint8_t, 2>, std::array<std::int8_t, 2>,
                   std::array<std::uint16_t, 2>, std::array<std::int16_t, 2>,
                   std::array<std::uint32_t, 2>, std::array<std::int32_t, 2>>;
TYPED_TEST_SUITE(Pixels, PixelTypes);

template <class Pixel>
std::complex<double> value_of(const Pixel& pixel) {
  if constexpr (std::is_arithmetic_v<Pixel>) {
    return static_cast<double>(pixel);
  } else if constexpr (std::is_same_v<decltype(pixel[0]), const typename Pixel::value_type&>) {
    return {static_cast<double>(pixel[0]), static_cast<double>(pixel[1])};
  }
}
template <class Real>
std::complex<double> value_of(const std::complex<Real>& pixel) {
  return pixel;
}

/// Each type is converted on the way; the classic values are those of its double or float numbers.
TYPED_TEST(Pixels, AreTakenAsTheirNumbers) {
  constexpr std::size_t width = 5, height = 7, side = 8;
  static_assert(sarnum::type_of<TypeParam>() >= 1 && sarnum::type_of<TypeParam>() <= 16);
  static_assert(sarnum::type_of<std::int64_t>() == 0);
  std::vector<TypeParam> pixels(width * height);
  auto* const bytes = reinterpret_cast<unsigned char*>(pixels.data());
  for (std::size_t i = 0; i < pixels.size() * sizeof(TypeParam); ++i) {
    bytes[i] = static_cast<unsigned char>(i * 89 % 127);  // a number in floating point, too
  }
  for (std::size_t i = sizeof(TypeParam) - 1; i < pixels.size() * sizeof(TypeParam);
       i += sizeof(TypeParam)) {
    bytes[i] = static_cast<unsigned char>(
        std::is_integral_v<TypeParam> || sarnum::type_of<TypeParam>() > 10 ? bytes[i] + 120 : 64);
  }
  std::vector<std::complex<double>> values;
  for (const TypeParam& pixel : pixels) {
    values.push_back(value_of(pixel));
  }
  const sarnum::Plan<double> plan(side);
  std::vector<std::complex<double>> actual(side * side), expected(side * side);
  sarnum::transform_2d(plan, plan, Direction::forward, Scaling::none,
                       Image(pixels.data(), width, height), Image(actual.data(), side, side));
  sarnum::transform_2d(plan, plan, Direction::forward, Scaling::none,
                       Image(values.data(), width, height), Image(expected.data(), side, side));
  EXPECT_EQ(actual, expected);
  EXPECT_NE(actual[0], 0.0);

  constexpr bool is_double =
      std::is_same_v<TypeParam, double> || std::is_same_v<TypeParam, std::complex<double>>;
  using Real = std::conditional_t<is_double, double, float>;
  std::vector<std::complex<Real>> raster(side * side), of_values(side * side);
  const std::vector<std::complex<Real>> rounded(values.begin(), values.end());
  sarnum::transform_raster(Direction::forward, Image(pixels.data(), width, height),
                           Image(raster.data(), side, side));
  sarnum::transform_raster(Direction::forward, Image(rounded.data(), width, height),
                           Image(of_values.data(), side, side));
  EXPECT_EQ(raster, of_values);
  EXPECT_NE(raster[0], Real{0});

  std::vector<double> intensity(6), of_numbers(6);
  const sarnum::Looks looks{2, 4, sarnum::Detection::intensity};
  sarnum::multilook(Image(pixels.data(), width, height), Image(intensity.data(), 3, 2), looks);
  sarnum::multilook(Image(values.data(), width, height), Image(of_numbers.data(), 3, 2), looks);
  EXPECT_EQ(intensity, of_numbers);
  EXPECT_GT(intensity[5], 0.0);
}

}  // namespace
