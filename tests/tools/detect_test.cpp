// sarnum detect: pixels of every type of GDAL against the plain definition.
#include <gmock/gmock.h>

#include <cmath>
#include <ostream>

#include "tool_run.h"

namespace {

using ::testing::HasSubstr;

struct TypeCase {
  GDALDataType type;
  bool is_signed;
  std::vector<const char*> options;
  double factor;

  friend void PrintTo(const TypeCase& tested, std::ostream* out) {
    *out << GDALGetDataTypeName(tested.type) << (tested.is_signed ? " signed" : "");
  }
};

class DetectType : public ToolTest, public ::testing::WithParamInterface<TypeCase> {};

TEST_P(DetectType, GivesIntensityAndAmplitude) {
  const TypeCase& param = GetParam();
  const bool is_complex = GDALDataTypeIsComplex(param.type) != 0;
  const int lowest = param.is_signed ? -100 : 0;
  const bool is_signed_byte = param.type == GDT_Byte && param.is_signed;
  const auto value = [&](int x, int y) {
    return Sample((lowest + (x * 7 + y * 31) % 200) * param.factor,
                  is_complex ? ((x * 13 + y) % 200 - 100) * param.factor : 0.0);
  };
  const auto stored = [&](int x, int y) {
    const Sample sample = value(x, y);
    return is_signed_byte && sample.real() < 0 ? sample + 256.0 : sample;
  };
  make("in.tif", 61, 17, param.type, stored, "GTiff", param.options);
  for (const bool amplitude : {false, true}) {
    const ToolRun finished = run({"detect", "in.tif", "out.tif", "--overwrite", "-q",
                                  amplitude ? "--amplitude" : "--intensity"});
    EXPECT_THAT(finished, IsSilentSuccess());
    const auto input = open("in.tif");
    const Raster output = read("out.tif");
    ASSERT_EQ(output.width, 61);
    ASSERT_EQ(output.height, 17);
    for (int y = 0; y < 17; ++y) {
      for (int x = 0; x < 61; ++x) {
        Sample sample = value(x, y);
        if (param.type == GDT_Float32 || param.type == GDT_CFloat32) {
          sample = {static_cast<float>(sample.real()), static_cast<float>(sample.imag())};
        }
        const double power = sample.real() * sample.real() + sample.imag() * sample.imag();
        const double expected = !amplitude ? power : is_complex ? std::sqrt(power) : sample.real();
        ASSERT_EQ(output.at(x, y).real(), static_cast<float>(expected)) << x << ", " << y;
      }
    }
  }
  EXPECT_EQ(open("out.tif")->GetRasterBand(1)->GetRasterDataType(), GDT_Float32);
}

INSTANTIATE_TEST_SUITE_P(
    Types, DetectType,
    ::testing::Values(TypeCase{GDT_Byte, false, {}, 1},
                      TypeCase{GDT_Byte, true, {"PIXELTYPE=SIGNEDBYTE"}, 1},
                      TypeCase{GDT_UInt16, false, {}, 300}, TypeCase{GDT_Int16, true, {}, 150},
                      TypeCase{GDT_UInt32, false, {}, 2e7}, TypeCase{GDT_Int32, true, {}, 1e7},
                      TypeCase{GDT_UInt64, false, {}, 3e9}, TypeCase{GDT_Int64, true, {}, 3e9},
                      TypeCase{GDT_Float32, true, {}, 0.1}, TypeCase{GDT_Float64, true, {}, 0.1},
                      TypeCase{GDT_CInt16, true, {}, 150}, TypeCase{GDT_CInt32, true, {}, 1e7},
                      TypeCase{GDT_CFloat32, true, {}, 0.1}, TypeCase{GDT_CFloat64, true, {}, 0.1}),
    [](const ::testing::TestParamInfo<TypeCase>& test) {
      return std::string(GDALGetDataTypeName(test.param.type)) +
             (test.param.is_signed && test.param.type == GDT_Byte ? "_signed" : "");
    });

class Detect : public ToolTest {};

TEST_F(Detect, NodataBecomesWhatItsSamplesBecome) {
  for (const GDALDataType type : {GDT_CInt16, GDT_Int16}) {
    {
      const auto input = make("in.tif", 4, 4, type, [](int x, int) { return Sample(x - 3); });
      std::array<double, 6> transform{5, 1, 0, 7, 0, -1};
      input->SetGeoTransform(transform.data());
      input->GetRasterBand(1)->SetNoDataValue(-3);
      input->GetRasterBand(1)->SetUnitType("V");
    }
    for (const bool amplitude : {false, true}) {
      EXPECT_EQ(run({"detect", "in.tif", "out.tif", "--overwrite",
                     amplitude ? "--amplitude" : "--intensity"})
                    .status,
                0);
      const auto output = open("out.tif");
      GDALRasterBand& band = *output->GetRasterBand(1);
      EXPECT_EQ(band.GetNoDataValue(), read("out.tif").at(0, 0).real());
      EXPECT_STREQ(band.GetUnitType(), amplitude ? "V" : "");
      EXPECT_STREQ(output->GetMetadataItem("SARNUM_QUANTITY"),
                   amplitude ? "amplitude" : "intensity");
      std::array<double, 6> transform{};
      output->GetGeoTransform(transform.data());
      EXPECT_EQ(transform, (std::array<double, 6>{5, 1, 0, 7, 0, -1}));
    }
  }
}

TEST_F(Detect, SaysWhatItAssumes) {
  make("real.tif", 4, 4, GDT_Float32, [](int x, int) { return Sample(x); });
  make("large.tif", 4, 4, GDT_CFloat64, [](int x, int) { return Sample(1e30 * x, 1.0); });
  EXPECT_THAT(run({"detect", "real.tif", "a.tif"}).err, HasSubstr("taken as amplitudes"));
  EXPECT_THAT(run({"detect", "large.tif", "b.tif"}).err, HasSubstr("12 samples"));
  EXPECT_TRUE(std::isinf(read("b.tif").at(1, 0).real()));
}

}  // namespace
