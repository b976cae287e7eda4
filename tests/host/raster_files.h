// Layers used as the library uses them, on files made without them: by GDAL where the host has it,
// byte by byte where it stores flat samples.
#pragma once

#if defined(SARNUM_TESTS_GDAL)
#include <cpl_string.h>
#include <gdal_priv.h>
#endif
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "sarnum/host/file_layer.h"
#include "sarnum/host/standalone.h"
#include "temporary_folder.h"

/// A row of noise that every pixel type holds exactly.
inline std::vector<float> noise(int width, int row) {
  std::minstd_rand random(static_cast<unsigned>(row) + 1);
  std::vector<float> samples(static_cast<std::size_t>(width));
  std::generate(samples.begin(), samples.end(), [&] { return static_cast<float>(random() % 128); });
  return samples;
}

// Three bands of noise, the rows of each going on where those of the last one ended.
#if defined(SARNUM_TESTS_GDAL)
constexpr const char* layouts[] = {"", "BLOCKYSIZE=5", "TILED=YES BLOCKXSIZE=16 BLOCKYSIZE=16"};

inline GDALDatasetUniquePtr make_raster(const std::string& path, int width, int height,
                                        const char* options = "", GDALDataType type = GDT_Float32,
                                        const char* driver = "GTiff") {
  GDALAllRegister();
  const CPLStringList list(CSLTokenizeString(options));
  GDALDatasetUniquePtr dataset(GetGDALDriverManager()->GetDriverByName(driver)->Create(
      path.c_str(), width, height, 3, type, list.List()));
  for (int i = 0; i < 3 * height; ++i) {
    GDALRasterBand* const band = dataset->GetRasterBand(i / height + 1);
    EXPECT_EQ(band->RasterIO(GF_Write, 0, i % height, width, 1, noise(width, i).data(), width, 1,
                             GDT_Float32, 0, 0, nullptr),
              CE_None);
  }
  return dataset;
}
#else
constexpr const char* layouts[] = {"bsq", "bil", "bip"};

inline void make_raster(const std::string& path, int width, int height,
                        std::string_view interleave = "bsq") {
  std::ofstream(path + ".hdr") << "ENVI\nsamples = " << width << "\nlines = " << height
                               << "\nbands = 3\ndata type = 4\ninterleave = " << interleave << '\n';
  std::vector<std::vector<float>> rows;
  for (int i = 0; i < 3 * height; ++i) {
    rows.push_back(noise(width, i));
  }
  std::vector<float> samples;
  for (int i = 0; i < 3 * height * width; ++i) {
    const int band = interleave == "bsq"   ? i / width / height
                     : interleave == "bil" ? i / width % 3
                                           : i % 3;
    const int x = interleave == "bip" ? i / 3 % width : i % width;
    const int y = interleave == "bsq" ? i / width % height : i / width / 3;
    samples.push_back(
        rows[static_cast<std::size_t>(band * height + y)][static_cast<std::size_t>(x)]);
  }
  std::ofstream(path, std::ios::binary)
      .write(reinterpret_cast<const char*>(samples.data()),
             static_cast<std::streamsize>(samples.size() * sizeof(float)));
}
#endif

class LayerTest : public ::testing::Test {
 protected:
  static int open(CFileLayer& layer, const std::string& path) {
    sarnum::host::clear_raster_failure();
    return layer.Open(path.c_str(), 272, 0, 0x80000000UL);
  }
  static int create(CFileLayer& layer, const std::string& path, int width, int height,
                    const std::vector<const char*>& options = {}) {
    sarnum::host::clear_raster_failure();
    if (!options.empty()) {
      sarnum::host::set_creation_options(options.data(), static_cast<int>(options.size()));
    }
    return layer.Create(path.c_str(), width, height, 7, 273, 7, nullptr, 0);
  }
  static std::string failure() { return sarnum::host::raster_failure(); }

  int set_band(int rows) { return layer_.SetBlockMode(256, 0, 0, layer_.Width(), rows, 1); }
  /// A row of the layer, empty when it has no address.
  std::vector<float> row(int number) {
    const auto* const samples = static_cast<const float*>(layer_.GetRowAddr(number));
    return samples == nullptr ? std::vector<float>()
                              : std::vector<float>(samples, samples + layer_.Width());
  }

  TemporaryFolder folder_;
  const std::string path_ = folder_.file("raster.tif");
  CFileLayer layer_{nullptr};
};
