// sarnum info: what it prints, and the equivalent looks of simulated speckle.
#include <gmock/gmock.h>

#include <cmath>
#include <cstdlib>
#include <random>

#include "tool_run.h"

namespace {

using ::testing::HasSubstr;

class Info : public ToolTest {
 protected:
  /// The text after a label.
  std::string value_of(const std::string& label, const std::string& text) const {
    const std::size_t at = text.find(label + ":");
    const std::size_t begin = text.find_first_not_of(' ', at + label.size() + 1);
    return at == std::string::npos ? "" : text.substr(begin, text.find('\n', begin) - begin);
  }

  double looks_of(const std::vector<std::string>& arguments) const {
    const ToolRun finished = run(arguments);
    EXPECT_EQ(finished.status, 0);
    const std::string value = value_of("Equivalent looks", finished.out);
    EXPECT_TRUE(!value.empty() && std::isdigit(value.front()) != 0) << value;
    return std::atof(value.c_str());
  }
};

TEST_F(Info, DescribesARaster) {
  {
    const auto input =
        make("in.tif", 30, 20, GDT_CInt16, [](int x, int y) { return Sample(x, y); });
    std::array<double, 6> transform{500000, 10, 0, 4600000, 0, -20};
    input->SetGeoTransform(transform.data());
    OGRSpatialReference reference;
    reference.importFromEPSG(32631);
    input->SetSpatialRef(&reference);
    input->GetRasterBand(1)->SetNoDataValue(-7);
    input->GetRasterBand(1)->SetUnitType("V");
  }
  const ToolRun finished = run({"info", "in.tif"});
  EXPECT_THAT(finished, IsSilentSuccess());
  EXPECT_EQ(value_of("File", finished.out), "in.tif");
  EXPECT_EQ(value_of("Driver", finished.out), "GTiff (GeoTIFF)");
  EXPECT_EQ(value_of("Size", finished.out), "30 x 20 pixels, 1 band");
  EXPECT_EQ(value_of("Pixel type", finished.out), "CInt16, TypeData 14 (TD_COMPLEX_INT16)");
  EXPECT_EQ(value_of("Georeferencing", finished.out),
            "WGS 84 / UTM zone 31N (EPSG:32631), origin 500000, 4600000, pixel size 10 x -20");
  EXPECT_EQ(value_of("Nodata", finished.out), "-7");
  EXPECT_EQ(value_of("Unit", finished.out), "V");
  EXPECT_EQ(names(), std::vector<std::string>{"in.tif"});
}

TEST_F(Info, FindsTheLooksOfSimulatedSpeckle) {
  std::mt19937 generator(20240607);
  std::normal_distribution<double> normal;
  std::gamma_distribution<double> sixteen_looks(16.0);
  // Two fields, so that most but not all blocks are homogeneous.
  const auto brightness = [](int x) { return x < 150 ? 1.0 : 6.0; };
  make("one.tif", 512, 512, GDT_CFloat32,
       [&](int x, int) { return brightness(x) * Sample(normal(generator), normal(generator)); });
  make("sixteen.tif", 512, 512, GDT_Float32,
       [&](int x, int) { return Sample(brightness(x) * sixteen_looks(generator)); });
  EXPECT_NEAR(looks_of({"info", "one.tif"}), 1.0, 0.05);
  EXPECT_NEAR(looks_of({"info", "sixteen.tif"}), 16.0, 0.8);

  // The same speckle as amplitude and as decibels, and averaged 4 x 4.
  run({"detect", "one.tif", "amplitude.tif", "--amplitude"});
  run({"detect", "one.tif", "intensity.tif"});
  run({"multilook", "intensity.tif", "looks.tif", "--looks", "4x4"});
  const Raster sixteen = read("sixteen.tif");
  make("decibel.tif", 512, 512, GDT_Float32,
       [&](int x, int y) { return Sample(10 * std::log10(sixteen.at(x, y).real()) - 40); });
  EXPECT_NEAR(looks_of({"info", "amplitude.tif"}), 1.0, 0.05);
  EXPECT_NEAR(looks_of({"info", "intensity.tif"}), 1.0, 0.05);
  EXPECT_NEAR(looks_of({"info", "looks.tif"}), 16.0, 2.0);
  EXPECT_NEAR(looks_of({"info", "decibel.tif", "--decibel"}), 16.0, 0.8);
  EXPECT_THAT(run({"info", "decibel.tif"}).out, HasSubstr("taken as decibel"));
}

TEST_F(Info, LeavesOutNodataAndSaysWhenNothingIsLeft) {
  std::mt19937 generator(5);
  std::exponential_distribution<double> speckle;
  make("gaps.tif", 512, 256, GDT_Float32,
       [&](int x, int y) { return Sample(x % 64 < 32 && y % 5 == 0 ? -1 : speckle(generator)); })
      ->GetRasterBand(1)
      ->SetNoDataValue(-1);
  EXPECT_NEAR(looks_of({"info", "gaps.tif"}), 1.0, 0.1);
  make("flat.tif", 128, 128, GDT_Byte, [](int, int) { return Sample(7); });
  EXPECT_THAT(run({"info", "flat.tif"}).out, HasSubstr("not enough homogeneous blocks"));
}

}  // namespace
