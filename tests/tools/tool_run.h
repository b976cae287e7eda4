// Runs the tool in a folder of its own, and makes and reads the rasters it works on.
#pragma once

#include <gdal_priv.h>
#include <gdal_utils.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <array>
#include <cmath>
#include <complex>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include "temporary_folder.h"

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::MatchesRegex;

using Sample = std::complex<double>;
using SampleAt = std::function<Sample(int x, int y)>;

struct ToolRun {
  int status;  // as a shell sees it: 128 + number after a signal
  std::string out;
  std::string err;
};

struct Raster {
  int width;
  int height;
  std::vector<Sample> samples = std::vector<Sample>(static_cast<std::size_t>(width * height));

  Sample& at(int x, int y) { return samples.at(static_cast<std::size_t>(y * width + x)); }

  void transfer(GDALRWFlag way, GDALDataset& dataset) {
    EXPECT_EQ(dataset.GetRasterBand(1)->RasterIO(way, 0, 0, width, height, samples.data(), width,
                                                 height, GDT_CFloat64, 0, 0, nullptr),
              CE_None);
  }
};

class ToolTest : public ::testing::Test, protected TemporaryFolder {
 protected:
  ToolTest() {
    GDALAllRegister();
    setenv("tool", SARNUM_TOOL, 1);  // spares quoting a path that may hold anything
    setenv("streams", streams_.path().c_str(), 1);
    // The helpers leave nothing beside the rasters, so that what appears there is the tool's.
    CPLSetConfigOption("GDAL_PAM_ENABLED", "NO");
  }

  /// Runs the tool in the folder from a shell, which does what `before` says first.
  ToolRun run(const std::string& arguments, const std::string& before = "") const {
    const std::string command = "cd '" + path().string() + "' && " + before + " exec \"$tool\" " +
                                arguments + " >\"$streams\"/out 2>\"$streams\"/err";
    const int status = std::system(command.c_str());
    return {WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status),
            bytes(streams_.file("out")), bytes(streams_.file("err"))};
  }

  /// A run that must succeed and has nothing to say.
  void run_silently(const std::string& arguments) const {
    const ToolRun finished = run(arguments);
    EXPECT_EQ(std::pair(finished.status, finished.err), std::pair(0, std::string())) << arguments;
  }

  std::string bytes(const std::string& name) const {
    std::ifstream stream(file(name), std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
  }
  void put_bytes(const std::string& name, const std::string& content) const {
    std::ofstream(file(name), std::ios::binary) << content;
  }

  /// A GeoTIFF of one band; further description may be given to it before it is let go.
  GDALDatasetUniquePtr make(const std::string& name, int width, int height, GDALDataType type,
                            const SampleAt& sample_at, const char* option = nullptr) const {
    std::array<const char*, 2> options{option, nullptr};
    GDALDatasetUniquePtr dataset(GetGDALDriverManager()->GetDriverByName("GTiff")->Create(
        file(name).c_str(), width, height, 1, type, const_cast<char**>(options.data())));
    Raster raster{width, height};
    for (int i = 0; i < width * height; ++i) {
      raster.at(i % width, i / width) = sample_at(i % width, i / width);
    }
    raster.transfer(GF_Write, *dataset);
    return dataset;
  }

  /// A virtual raster without pixels, which reads as nodata or zero, described in its XML.
  void make_virtual(const std::string& name, int width, int height, const std::string& type,
                    const std::string& dataset_xml, const std::string& band_xml) const {
    put_bytes(name, "<VRTDataset rasterXSize='" + std::to_string(width) + "' rasterYSize='" +
                        std::to_string(height) + "'>" + dataset_xml + "<VRTRasterBand dataType='" +
                        type + "' band='1'>" + band_xml + "</VRTRasterBand></VRTDataset>");
  }

  GDALDatasetUniquePtr open(const std::string& name) const {
    GDALDatasetUniquePtr dataset(GDALDataset::Open(file(name).c_str(), GDAL_OF_RASTER));
    if (dataset == nullptr) {
      throw std::runtime_error("cannot open " + name);
    }
    return dataset;
  }

  /// Copies a raster as gdal_translate does.
  void translate(const std::string& from, const std::string& to, const char* arguments = "") const {
    GDALTranslateOptions* const options =
        GDALTranslateOptionsNew(CPLStringList(CSLTokenizeString(arguments)).List(), nullptr);
    GDALClose(
        GDALTranslate(file(to).c_str(), GDALDataset::ToHandle(open(from).get()), options, nullptr));
    GDALTranslateOptionsFree(options);
  }

  Raster read(const std::string& name) const {
    const GDALDatasetUniquePtr dataset = open(name);
    Raster raster{dataset->GetRasterXSize(), dataset->GetRasterYSize()};
    raster.transfer(GF_Read, *dataset);
    return raster;
  }

  void expect_samples(const std::string& name, int width, int height, const SampleAt& expected,
                      double tolerance = 0) const {
    Raster raster = read(name);
    ASSERT_EQ(std::pair(raster.width, raster.height), std::pair(width, height));
    for (int i = 0; i < width * height; ++i) {
      const Sample found = raster.at(i % width, i / width);
      const Sample wanted = expected(i % width, i / width);
      ASSERT_TRUE(std::isnan(wanted.real()) ? std::isnan(found.real())
                                            : std::abs(found - wanted) <= tolerance)
          << name << " at " << i % width << ", " << i / width << ": " << found << " for " << wanted;
    }
  }

  /// Looks for these parts in all that GDAL knows about a raster, as gdalinfo prints it.
  std::string expect_report(const std::string& name, const std::vector<std::string>& parts) const {
    char* const text = GDALInfo(GDALDataset::ToHandle(open(name).get()), nullptr);
    const std::string report = text;
    CPLFree(text);
    for (const std::string& part : parts) {
      EXPECT_THAT(report, HasSubstr(part));
    }
    return report;
  }

  TemporaryFolder streams_;
};
