// Runs the range compression example and holds what it measures against theory. Its echoes are
// computed from the geometry, not with the library, so that a SyntAlmaz that conjugated the wrong
// spectrum, or whose output had another order, sign or scale, shows as a target that is out of
// focus or has the wrong range, amplitude or phase.
#include <gdal_priv.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "temporary_folder.h"

namespace {

/// Runs the example, which has to succeed, and gives what it printed.
std::string run(const TemporaryFolder& folder) {
  const std::string output = folder.path().string() + ".txt";
  const std::string command =
      "'" RANGE_COMPRESSION_PROGRAM "' '" + folder.path().string() + "' >'" + output + "'";
  EXPECT_EQ(std::system(command.c_str()), 0) << command;
  std::ostringstream text;
  text << std::ifstream(output).rdbuf();
  std::remove(output.c_str());
  return text.str();
}

/// The numbers after a name, measured and predicted, one pair for each target.
std::vector<std::pair<double, double>> figures(const std::string& output, const std::string& name) {
  std::vector<std::pair<double, double>> pairs;
  for (auto at = output.find(name); at != std::string::npos; at = output.find(name, at + 1)) {
    std::istringstream numbers(output.substr(at + name.size()));
    numbers >> pairs.emplace_back(NAN, NAN).first >> pairs.back().second;
  }
  EXPECT_EQ(pairs.size(), 3u) << name;
  pairs.resize(3);
  return pairs;
}

TEST(RangeCompression, MeasuresWhatTheoryPredictsAndDrawsIt) {
  constexpr double light = 299792458.0, bandwidth = 56.5e6, sampling_rate = 64.35e6;
  const double sample = light / 2.0 / sampling_rate;  // in metres of slant range
  const double range[] = {846800.2, 850900.7, 856200.9};
  const double amplitude[] = {1.0, 0.7, 0.5};

  const TemporaryFolder folder;
  const std::string output = run(folder);
  const auto measured = [&](auto name, std::size_t i) { return figures(output, name)[i].first; };
  for (std::size_t i = 0; i < 3; ++i) {
    SCOPED_TRACE("target " + std::to_string(i + 1));
    EXPECT_NEAR(measured("width at -3 dB [ns]", i) * 1e-9 * bandwidth, 0.886, 0.03 * 0.886);
    EXPECT_NEAR(measured("width at -3 dB [m]", i) * 2.0 / light * bandwidth, 0.886, 0.03 * 0.886);
    EXPECT_NEAR(measured("peak sidelobe [dB]", i), -13.26, 0.3);
    // Two things disturb it, both by some 0.01 dB: the far sidelobes of the other targets, which
    // lie 70 dB below this peak, and the ripple that a finite chirp leaves in the spectrum.
    EXPECT_NEAR(measured("integrated sidelobes [dB]", i), -9.91, 0.2);
    // On the line nearest to closest approach, the range is the least one but for 0.2 mm.
    EXPECT_NEAR(measured("slant range [m]", i), range[i], 0.01 * sample);
    EXPECT_NEAR(measured("amplitude", i), amplitude[i], 0.01 * amplitude[i]);
    const auto [phase, predicted] = figures(output, "phase [deg]")[i];
    EXPECT_NEAR(std::remainder(phase - predicted, 360.0), 0.0, 0.5);
  }

  // Above, the echoes are broad bands; below, compressed to thin lines.
  ASSERT_THAT(folder.names(), testing::ElementsAre("range_compression.png"));
  GDALAllRegister();
  const GDALDatasetUniquePtr image(
      GDALDataset::Open(folder.file("range_compression.png").c_str(), GDAL_OF_RASTER));
  ASSERT_NE(image, nullptr);
  const int width = image->GetRasterXSize(), height = image->GetRasterYSize();
  ASSERT_EQ(height, 256 + 8 + 256);
  std::vector<std::uint8_t> pixels(static_cast<std::size_t>(width * height));
  EXPECT_EQ(image->GetRasterBand(1)->RasterIO(GF_Read, 0, 0, width, height, pixels.data(), width,
                                              height, GDT_Byte, 0, 0, nullptr),
            CE_None);
  const auto bright = [&](auto first) {
    return std::count_if(first, first + 256 * width, [](int v) { return v > 25; });
  };
  EXPECT_GT(bright(pixels.begin()), 128 * width);
  EXPECT_GT(bright(pixels.begin() + 264 * width), width / 4);
  EXPECT_LT(bright(pixels.begin() + 264 * width), 5 * width);
}

}  // namespace
