// sarnum multilook: the values, and everything that must follow the pixels.
#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <cmath>

#include "tool_run.h"

namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;

double texture(int x, int y) {
  return 3.0 + ((x * 37 + y * 101) % 113) / 7.0;
}

Sample texture_sample(int x, int y) {
  return texture(x, y);
}

class Multilook : public ToolTest {};

/// The definition: a sum in double, row by row, divided in single precision.
float mean_of(const Raster& input, int first_x, int first_y, int across, int down) {
  double sum = 0;
  int count = 0;
  for (int y = first_y; y < std::min(first_y + down, input.height); ++y) {
    for (int x = first_x; x < std::min(first_x + across, input.width); ++x) {
      sum += static_cast<float>(input.at(x, y).real());
      ++count;
    }
  }
  return static_cast<float>(sum) / static_cast<float>(count);
}

TEST_F(Multilook, AveragesRealPixelsOfEveryType) {
  for (const GDALDataType type : {GDT_Float32, GDT_Float64, GDT_Byte, GDT_UInt16, GDT_Int32}) {
    make("in.tif", 37, 41, type, texture_sample);
    const Raster input = read("in.tif");
    for (const auto& [across, down] :
         std::array<std::pair<int, int>, 5>{{{1, 1}, {4, 3}, {5, 7}, {2, 36}, {50, 1}}}) {
      const std::string looks = std::to_string(across) + "x" + std::to_string(down);
      SCOPED_TRACE(std::string(GDALGetDataTypeName(type)) + " " + looks);
      EXPECT_THAT(run({"multilook", "in.tif", "out.tif", "--looks", looks, "--overwrite"}),
                  IsSilentSuccess());
      const Raster output = read("out.tif");
      ASSERT_EQ(output.width, (37 + across - 1) / across);
      ASSERT_EQ(output.height, (41 + down - 1) / down);
      for (int y = 0; y < output.height; ++y) {
        for (int x = 0; x < output.width; ++x) {
          ASSERT_EQ(output.at(x, y).real(), mean_of(input, x * across, y * down, across, down))
              << x << ", " << y;
        }
      }
    }
  }
}

TEST_F(Multilook, ScalesTheGeotransformAndKeepsWhatStaysTrue) {
  {
    const auto input = make("in.tif", 20, 20, GDT_Float32, texture_sample);
    std::array<double, 6> transform{500000, 10, 1, 4600000, -2, -20};
    input->SetGeoTransform(transform.data());
    OGRSpatialReference reference;
    reference.importFromEPSG(32631);
    input->SetSpatialRef(&reference);
    input->SetMetadataItem("MISSION", "S1");
    input->SetMetadataItem("STATISTICS_MEAN", "5");
    GDALRasterBand& band = *input->GetRasterBand(1);
    band.SetMetadataItem("POLARISATION", "VV");
    band.SetMetadataItem("STATISTICS_MAXIMUM", "5");
    band.SetDescription("sigma0");
    band.SetUnitType("m2/m2");
    band.SetNoDataValue(-1);
    band.SetScale(0.5);
    band.SetOffset(2);
  }
  const ToolRun finished = run({"multilook", "in.tif", "out.tif", "--looks", "4x5"});
  EXPECT_EQ(finished.status, 0);
  EXPECT_THAT(finished.err, HasSubstr("nodata value -1"));

  const auto output = open("out.tif");
  std::array<double, 6> transform{};
  ASSERT_EQ(output->GetGeoTransform(transform.data()), CE_None);
  EXPECT_EQ(transform, (std::array<double, 6>{500000, 40, 5, 4600000, -8, -100}));
  EXPECT_STREQ(output->GetSpatialRef()->GetAuthorityCode(nullptr), "32631");
  EXPECT_STREQ(output->GetMetadataItem("MISSION"), "S1");
  EXPECT_EQ(output->GetMetadataItem("STATISTICS_MEAN"), nullptr);
  GDALRasterBand& band = *output->GetRasterBand(1);
  EXPECT_STREQ(band.GetMetadataItem("POLARISATION"), "VV");
  EXPECT_EQ(band.GetMetadataItem("STATISTICS_MAXIMUM"), nullptr);
  EXPECT_STREQ(band.GetDescription(), "sigma0");
  EXPECT_STREQ(band.GetUnitType(), "m2/m2");
  EXPECT_EQ(band.GetNoDataValue(), -1);
  EXPECT_EQ(band.GetScale(), 0.5);
  EXPECT_EQ(band.GetOffset(), 2);
}

TEST_F(Multilook, DividesControlPointsAndTheRationalModel) {
  const std::string zeros = "1 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0";
  {
    const auto input = make("in.tif", 20, 20, GDT_Float32, texture_sample);
    std::array<GDAL_GCP, 4> points{};
    GDALInitGCPs(4, points.data());
    for (std::size_t i = 0; i < points.size(); ++i) {
      points[i].dfGCPPixel = static_cast<double>(i % 2) * 18 + 1;
      points[i].dfGCPLine = static_cast<double>(i / 2) * 10 + 5;
      points[i].dfGCPX = 3 + points[i].dfGCPPixel / 100;
      points[i].dfGCPY = 40 - points[i].dfGCPLine / 100;
    }
    OGRSpatialReference reference;
    reference.importFromEPSG(4326);
    input->SetGCPs(4, points.data(), &reference);
    GDALDeinitGCPs(4, points.data());
    CPLStringList model;
    for (const auto& [name, value] :
         std::vector<std::pair<const char*, std::string>>{{"LINE_OFF", "9.5"},
                                                          {"SAMP_OFF", "7"},
                                                          {"LAT_OFF", "40"},
                                                          {"LONG_OFF", "3"},
                                                          {"HEIGHT_OFF", "0"},
                                                          {"LINE_SCALE", "10"},
                                                          {"SAMP_SCALE", "8"},
                                                          {"LAT_SCALE", "1"},
                                                          {"LONG_SCALE", "1"},
                                                          {"HEIGHT_SCALE", "500"},
                                                          {"LINE_NUM_COEFF", zeros},
                                                          {"LINE_DEN_COEFF", zeros},
                                                          {"SAMP_NUM_COEFF", zeros},
                                                          {"SAMP_DEN_COEFF", zeros}}) {
      model.SetNameValue(name, value.c_str());
    }
    input->SetMetadata(model.List(), "RPC");
  }
  EXPECT_THAT(run({"multilook", "in.tif", "out.tif", "--looks", "2x5"}), IsSilentSuccess());
  const auto output = open("out.tif");
  ASSERT_EQ(output->GetGCPCount(), 4);
  EXPECT_STREQ(output->GetGCPSpatialRef()->GetAuthorityCode(nullptr), "4326");
  const GDAL_GCP& last = output->GetGCPs()[3];
  EXPECT_DOUBLE_EQ(last.dfGCPPixel, 19.0 / 2);
  EXPECT_DOUBLE_EQ(last.dfGCPLine, 15.0 / 5);
  EXPECT_DOUBLE_EQ(last.dfGCPX, 3.19);
  const auto model_value = [&](const char* name) {
    const char* const text = output->GetMetadataItem(name, "RPC");
    return text == nullptr ? std::nan("") : std::atof(text);
  };
  EXPECT_DOUBLE_EQ(model_value("LINE_OFF"), 10.0 / 5 - 0.5);
  EXPECT_DOUBLE_EQ(model_value("SAMP_OFF"), 7.5 / 2 - 0.5);
  EXPECT_DOUBLE_EQ(model_value("LINE_SCALE"), 2);
  EXPECT_DOUBLE_EQ(model_value("SAMP_SCALE"), 4);
  EXPECT_DOUBLE_EQ(model_value("HEIGHT_SCALE"), 500);
  EXPECT_EQ(names(), (std::vector<std::string>{"in.tif", "out.tif"}));
}

TEST_F(Multilook, WarnsOfDecibels) {
  make("negative.tif", 16, 16, GDT_Float32, [](int x, int) { return Sample(x - 8); });
  make("labelled.tif", 16, 16, GDT_Float32, texture_sample)->GetRasterBand(1)->SetUnitType("dB");
  make("power.tif", 16, 16, GDT_Float32,
       [](int x, int y) { return x == y ? Sample(-99) : texture_sample(x, y); })
      ->GetRasterBand(1)
      ->SetNoDataValue(-99);
  for (const char* const name : {"negative.tif", "labelled.tif"}) {
    const ToolRun finished = run({"multilook", name, "out.tif", "--looks", "2x2", "--overwrite"});
    EXPECT_EQ(finished.status, 0);
    EXPECT_THAT(finished.err, AllOf(HasSubstr("sarnum: warning: "), HasSubstr("decibels")));
    EXPECT_EQ(std::count(finished.err.begin(), finished.err.end(), '\n'), 1);
  }
  EXPECT_THAT(run({"multilook", "power.tif", "out.tif", "--looks", "2x2", "--overwrite"}).err,
              ::testing::Not(HasSubstr("decibels")));
  EXPECT_THAT(run({"multilook", "negative.tif", "out.tif", "--looks", "2x2", "--overwrite", "-q"}),
              IsSilentSuccess());
}

}  // namespace
