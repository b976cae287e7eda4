// Raster files made and examined with GDAL alone, and layers used as the library uses them.
#pragma once

#include <gdal_priv.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "sarnum/host/file_layer.h"

inline int open_layer(CFileLayer& layer, const std::string& path) {
  return layer.Open(path.c_str(), 272, 0, 0x80000000UL);
}

inline int create_layer(CFileLayer& layer, const std::string& path, int width, int height) {
  return layer.Create(path.c_str(), width, height, 7, 273, 7, nullptr, 0);
}

struct RasterSpec {
  int width = 10;
  int height = 7;
  int bands = 1;
  GDALDataType type = GDT_Float32;
  const char* driver = "GTiff";
  std::vector<const char*> options = {};
};

/// Sample value that differs from all its neighbours, exact in every type.
inline double ramp(int column, int row) {
  return (column * 7 + row * 31) % 127;
}

/// Writes a raster whose band b holds value(column, row) + b − 1.
inline void make_raster(const std::string& path, const RasterSpec& spec,
                        const std::function<double(int, int)>& value = ramp,
                        const std::function<void(GDALDataset&)>& finish = {}) {
  GDALAllRegister();
  std::vector<const char*> options = spec.options;
  options.push_back(nullptr);
  GDALDriver* const driver = GetGDALDriverManager()->GetDriverByName(spec.driver);
  ASSERT_NE(driver, nullptr) << spec.driver;
  const GDALDatasetUniquePtr dataset(driver->Create(path.c_str(), spec.width, spec.height,
                                                    spec.bands, spec.type,
                                                    const_cast<char**>(options.data())));
  ASSERT_NE(dataset, nullptr) << path;
  std::vector<double> samples(static_cast<std::size_t>(spec.width));
  for (int band = 1; band <= spec.bands; ++band) {
    for (int row = 0; row < spec.height; ++row) {
      for (int column = 0; column < spec.width; ++column) {
        samples[static_cast<std::size_t>(column)] = value(column, row) + band - 1;
      }
      ASSERT_EQ(
          dataset->GetRasterBand(band)->RasterIO(GF_Write, 0, row, spec.width, 1, samples.data(),
                                                 spec.width, 1, GDT_Float64, 0, 0, nullptr),
          CE_None);
    }
  }
  if (finish) {
    finish(*dataset);
  }
}

/// A row of an opened layer, empty when it has no address.
inline std::vector<float> row_of(CFileLayer& layer, int row) {
  const auto* const samples = static_cast<const float*>(layer.GetRowAddr(row));
  return samples == nullptr ? std::vector<float>()
                            : std::vector<float>(samples, samples + layer.Width());
}

inline std::vector<float> ramp_row(int width, int row) {
  std::vector<float> samples;
  for (int column = 0; column < width; ++column) {
    samples.push_back(static_cast<float>(ramp(column, row)));
  }
  return samples;
}
