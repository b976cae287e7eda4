// sarnum detect: pixels of every type of GDAL against the plain definition.
#include <cmath>
#include <tuple>

#include "tool_run.h"

namespace {

TEST_F(ToolTest, DetectGivesIntensityAndAmplitudeOfEveryType) {
  for (const GDALDataType type :
       {GDT_Byte, GDT_UInt16, GDT_Int16, GDT_UInt32, GDT_Int32, GDT_UInt64, GDT_Int64, GDT_Float32,
        GDT_Float64, GDT_CInt16, GDT_CInt32, GDT_CFloat32, GDT_CFloat64}) {
    SCOPED_TRACE(GDALGetDataTypeName(type));
    const int parts = GDALDataTypeIsComplex(type) != 0 ? 2 : 1;
    const int lowest = GDALDataTypeIsSigned(type) != 0 ? -100 : 0;
    // Integers fill their range; floats have fractions.
    const int power =
        GDALDataTypeIsInteger(type) != 0 ? GDALGetDataTypeSizeBits(type) / parts - 8 : -3;
    const auto value = [&](int x, int y) {
      const int im = parts == 2 ? (x * 13 + y) % 200 - 100 : 0;
      return Sample(lowest + (x * 7 + y * 31) % 200, im) * std::ldexp(1.0, power);
    };
    const auto intensity = [&](int x, int y) { return static_cast<float>(std::norm(value(x, y))); };
    const auto amplitude = [&](int x, int y) {
      return static_cast<float>(parts == 2 ? std::sqrt(std::norm(value(x, y)))
                                           : value(x, y).real());
    };
    make("in.tif", 61, 17, type, value);
    run_silently("detect in.tif out.tif -q --overwrite");
    expect_samples("out.tif", 61, 17, intensity);
    run_silently("detect in.tif out.tif -q --overwrite --amplitude");
    expect_samples("out.tif", 61, 17, amplitude);
  }
}

TEST_F(ToolTest, DetectKeepsNodataApartAndTheDescriptionTrue) {
  make("ramp.tif", 8, 4, GDT_Float64, [](int x, int) { return Sample(x - 3); });
  for (const auto& [type, option, nodata, result, rest] :
       {std::tuple{"CInt16", "--intensity", "nan", 9, "Offset: 0,   Scale:0.25"},
        {"CInt16", "--amplitude", "nan", 3, "Unit Type: V"},
        {"Int16", "--amplitude", "-3", 3, "Unit Type: V"}}) {
    make_virtual("in.vrt", 8, 4, type, "<GeoTransform>5, 1, 0, 7, 0, -1</GeoTransform>",
                 "<NoDataValue>-3</NoDataValue><UnitType>V</UnitType><Scale>-0.5</Scale>"
                 "<SimpleSource><SourceFilename>ramp.tif</SourceFilename></SimpleSource>");
    run_silently(std::string("detect in.vrt out.tif -q --overwrite ") + option);
    Raster output = read("out.tif");
    EXPECT_THAT(output.at(0, 0).real(), ::testing::NanSensitiveDoubleEq(std::stod(nodata)));
    EXPECT_EQ(output.at(6, 0), Sample(result));
    const std::string about = expect_report(
        "out.tif", {std::string("NoData Value=") + nodata + "\n", rest, "Type=Float32",
                    std::string("SARNUM_QUANTITY=") + (option + 2), "Origin = (5.0000"});
    EXPECT_EQ(about.find("Unit Type") == about.npos, option == std::string("--intensity"));
  }
  run_silently("detect ramp.tif power.tif -q");
  run_silently("detect power.tif square.tif -q --force");
  EXPECT_EQ(read("square.tif").at(7, 0), Sample(256));
}

}  // namespace
