// sarnum spectrum, there and back: the plain definition on a small image of every precision.
#include <cmath>
#include <numbers>

#include "tool_run.h"

namespace {

constexpr int width = 16;
constexpr int height = 8;

/// A sample of the spectrum of an image that is padded with zeros to width x height.
Sample transformed(Raster& image, int u, int v) {
  Sample sum;
  for (int i = 0; i < image.width * image.height; ++i) {
    const int x = i % image.width;
    const int y = i / image.width;
    const double turns = static_cast<double>(u * x) / width + static_cast<double>(v * y) / height;
    sum += image.at(x, y) * std::polar(1.0, -2 * std::numbers::pi * turns);
  }
  return sum / static_cast<double>(width * height);
}

TEST_F(ToolTest, SpectrumIsTheDefinitionAndComesBack) {
  for (const GDALDataType type :
       {GDT_Byte, GDT_Int16, GDT_CInt32, GDT_CFloat32, GDT_Int64, GDT_Float64, GDT_CFloat64}) {
    const bool is_double = type == GDT_Int64 || type == GDT_Float64 || type == GDT_CFloat64;
    const std::string type_out = is_double ? "Type=CFloat64" : "Type=CFloat32";
    // Beyond the range of 32-bit floats, where it can be.
    const double unit = type == GDT_CFloat64 ? 1e39 : 1;
    const double tolerance = unit * (is_double ? 1e-12 : 1e-4);
    std::array<double, 6> transform{5, 1, 0, 7, 0, -1};
    make("in.tif", 13, 6, type, [unit](int x, int y) {
      return unit * Sample(100 + (x * 7 + y * 31) % 50, (x * 13 + y) % 40);
    })->SetGeoTransform(transform.data());
    Raster input = read("in.tif");
    for (const bool centred : {false, true}) {
      SCOPED_TRACE(std::string(GDALGetDataTypeName(type)) + (centred ? " centred" : ""));
      run_silently(std::string("spectrum in.tif out.tif --overwrite --picture out.png") +
                   (centred ? " --centred" : ""));
      const auto expected = [&](int x, int y) {
        return centred ? transformed(input, x - 8, y - 4) : transformed(input, x, y);
      };
      expect_samples("out.tif", width, height, expected, tolerance);
      EXPECT_THAT(expect_report("out.tif", {type_out}), ::testing::Not(HasSubstr("Origin")));
      EXPECT_EQ(read("out.png").at(width / 2, height / 2), 255.0);

      EXPECT_THAT(run("spectrum --inverse out.tif back.tif --overwrite").err,
                  HasSubstr("the upper left 13 x 6 pixels"));
      const auto padded = [&](int x, int y) {
        return x < input.width && y < input.height ? input.at(x, y) : Sample(0);
      };
      expect_samples("back.tif", width, height, padded, tolerance);
      expect_report("back.tif", {type_out});
      if (centred) {
        Raster spectrum = read("out.tif");
        make("bare.tif", width, height, is_double ? GDT_CFloat64 : GDT_CFloat32,
             [&](int x, int y) { return spectrum.at(x, y); });
        run_silently("spectrum --inverse --centred bare.tif back.tif --overwrite");
        expect_samples("back.tif", width, height, padded, tolerance);
      }
    }
  }
}

TEST_F(ToolTest, SpectrumRefusesWhatIsNotFiniteOrMakesItZero) {
  const double bad[] = {NAN, INFINITY, -INFINITY, NAN};
  for (const GDALDataType type : {GDT_Float32, GDT_CFloat64}) {
    const auto filled = [&](bool with_bad) {
      return [&, with_bad](int x, int y) {
        const bool is_bad = y == 2 && x % 5 == 0;
        const double value = !is_bad ? 1 + x * y : with_bad ? bad[x / 5] : 0;
        return type == GDT_CFloat64 ? Sample(is_bad ? 0 : x, value) : Sample(value);
      };
    };
    make("in.tif", width, height, type, filled(true));
    make("zeros.tif", width, height, type, filled(false));
    for (const std::string option : {"", " --centred"}) {
      const ToolRun refused = run("spectrum -q in.tif none.tif" + option);
      EXPECT_EQ(refused.status, 1);
      EXPECT_THAT(refused.err, HasSubstr(": 4 samples of 'in.tif' are NaN or infinite"));
      run_silently("spectrum zeros.tif expected.tif --overwrite" + option);
      run_silently("spectrum in.tif out.tif --overwrite --nodata zero" + option);
      Raster expected = read("expected.tif");
      expect_samples("out.tif", width, height, [&](int x, int y) { return expected.at(x, y); });
    }
    EXPECT_THAT(names(), ::testing::Not(::testing::Contains("none.tif")));
  }
}

}  // namespace
