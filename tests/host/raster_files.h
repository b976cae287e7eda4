// Layers used as the library uses them, on files made without them: by the driver of GDAL that
// SARNUM_TESTS_GDAL names, byte by byte where there is no GDAL.
#pragma once

#if defined(SARNUM_TESTS_GDAL)
#include <cpl_string.h>
#include <gdal_priv.h>
#endif
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
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
constexpr std::array<const char*, 3> layouts =
    std::string_view(SARNUM_TESTS_GDAL) == "ENVI"
        ? std::array{"INTERLEAVE=BSQ", "INTERLEAVE=BIL", "INTERLEAVE=BIP"}
        : std::array{"", "BLOCKYSIZE=5", "TILED=YES BLOCKXSIZE=16 BLOCKYSIZE=16"};

inline GDALDatasetUniquePtr make_raster(const std::string& path, int width, int height,
                                        const char* options = "", GDALDataType type = GDT_Float32,
                                        const char* driver = SARNUM_TESTS_GDAL) {
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
  std::vector<float> samples(static_cast<std::size_t>(3 * height * width));
  for (int i = 0; i < 3 * height; ++i) {
    const int band = i / height, y = i % height;
    int at = interleave == "bsq"   ? i * width
             : interleave == "bil" ? (3 * y + band) * width
                                   : 3 * y * width + band;
    for (const float sample : noise(width, i)) {
      samples[static_cast<std::size_t>(at)] = sample;
      at += interleave == "bip" ? 3 : 1;
    }
  }
  std::ofstream(path, std::ios::binary)
      .write(reinterpret_cast<const char*>(samples.data()),
             static_cast<std::streamsize>(samples.size() * sizeof(float)));
}
#endif

class LayerTest : public ::testing::Test {
 protected:
  static int open(CFileLayer& layer, const std::string& path) {
    return layer.Open(path.c_str(), 272, 0, 0x80000000UL);
  }
  static int create(CFileLayer& layer, const std::string& path, int width, int height,
                    const std::vector<const char*>& options = {}) {
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
