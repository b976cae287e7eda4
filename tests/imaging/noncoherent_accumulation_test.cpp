// Multilooking of files through the standalone host.
#include <gdal.h>
#include <gtest/gtest.h>
#include <sarnum/sarnum.h>

#include <filesystem>
#include <string>
#include <vector>

#include "multilook_oracle.h"
#include "temporary_folder.h"

namespace {

oracle::Image ramp(int width, int height) {
  oracle::Image image{width, height, {}};
  for (int i = 0; i < width * height; ++i) {
    image.samples.push_back(static_cast<float>(i % 97) * 0.37F + static_cast<float>(i) * 1e-3F);
  }
  return image;
}

void write_tiff(const std::string& path, oracle::Image image) {
  GDALAllRegister();
  const GDALDatasetH file = GDALCreate(GDALGetDriverByName("GTiff"), path.c_str(), image.width,
                                       image.height, 1, GDT_Float32, nullptr);
  ASSERT_NE(file, nullptr);
  ASSERT_EQ(GDALRasterIO(GDALGetRasterBand(file, 1), GF_Write, 0, 0, image.width, image.height,
                         image.samples.data(), image.width, image.height, GDT_Float32, 0, 0),
            CE_None);
  GDALClose(file);
}

oracle::Image read_raster(const std::string& path) {
  const GDALDatasetH file = GDALOpen(path.c_str(), GA_ReadOnly);
  if (file == nullptr) {
    return {};
  }
  oracle::Image image{GDALGetRasterXSize(file), GDALGetRasterYSize(file), {}};
  image.samples.resize(static_cast<std::size_t>(image.width) *
                       static_cast<std::size_t>(image.height));
  const GDALRasterBandH band = GDALGetRasterBand(file, 1);
  EXPECT_EQ(GDALGetRasterDataType(band), GDT_Float32);
  EXPECT_EQ(GDALRasterIO(band, GF_Read, 0, 0, image.width, image.height, image.samples.data(),
                         image.width, image.height, GDT_Float32, 0, 0),
            CE_None);
  GDALClose(file);
  return image;
}

TEST(NoncoherentAccumulation, MultilooksAFileOfAnySize) {
  const TemporaryFolder folder;
  CCustomMeterInfo meter;
  for (const auto& [width, height] : {std::pair{1, 1}, {10, 5}, {101, 67}, {1000, 3}}) {
    const oracle::Image image = ramp(width, height);
    const std::string input = folder.file("input.tif");
    write_tiff(input, image);
    for (const auto& [across, down] : {std::pair{1, 1}, {4, 4}, {3, 2}, {2000, 36}}) {
      SCOPED_TRACE(testing::Message()
                   << width << " x " << height << " by " << across << " x " << down);
      const std::string output = folder.file("output.tif");
      ASSERT_EQ(NoncoherentAccumulationR(output.c_str(), input.c_str(), across, down, &meter), 1);
      const oracle::Image expected = oracle::multilook(image, across, down);
      const oracle::Image actual = read_raster(output);
      EXPECT_EQ(actual.width, expected.width);
      EXPECT_EQ(actual.height, expected.height);
      EXPECT_EQ(actual.samples, expected.samples);
    }
  }
  EXPECT_EQ(folder.names(), (std::vector<std::string>{"input.tif", "output.tif"}));
}

TEST(NoncoherentAccumulation, AMissingInputCreatesNoOutput) {
  const TemporaryFolder folder;
  CCustomMeterInfo meter;
  EXPECT_EQ(NoncoherentAccumulationR(folder.file("output.tif").c_str(),
                                     folder.file("missing.tif").c_str(), 2, 2, &meter),
            0);
  EXPECT_TRUE(folder.names().empty());
}

}  // namespace
