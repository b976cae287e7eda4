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
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "temporary_folder.h"

namespace {

struct Figure {
  double measured = NAN, theory = NAN;
};
using Target = std::map<std::string, Figure>;

/// Runs the example, which has to succeed, and gives what it printed.
std::string run(const TemporaryFolder& folder) {
  const std::string command = "'" RANGE_COMPRESSION_PROGRAM "' '" + folder.path().string() + "'";
  std::string output;
  FILE* const pipe = popen(command.c_str(), "r");
  if (pipe == nullptr) {
    ADD_FAILURE() << "cannot run " << command;
    return output;
  }
  for (int c = std::fgetc(pipe); c != EOF; c = std::fgetc(pipe)) {
    output += static_cast<char>(c);
  }
  EXPECT_EQ(pclose(pipe), 0) << command;
  return output;
}

/// "target ..." begins a target; every other line is a name and, in the last two words, numbers.
std::vector<Target> parse(const std::string& output) {
  std::vector<Target> targets;
  std::istringstream lines(output);
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with("target ")) {
      targets.emplace_back();
      continue;
    }
    std::istringstream words(line);
    std::vector<std::string> all;
    for (std::string word; words >> word;) {
      all.push_back(word);
    }
    if (targets.empty() || all.size() < 3) {
      ADD_FAILURE() << "not understood: " << line;
      continue;
    }
    std::string name = all[0];
    for (std::size_t i = 1; i + 2 < all.size(); ++i) {
      name += " " + all[i];
    }
    targets.back()[name] = {std::stod(all[all.size() - 2]), std::stod(all[all.size() - 1])};
  }
  return targets;
}

TEST(RangeCompression, MeasuresWhatTheoryPredicts) {
  constexpr double light = 299792458.0, bandwidth = 56.5e6, sampling_rate = 64.35e6;
  const double sample = light / 2.0 / sampling_rate;  // in metres of slant range
  const double range[] = {846800.2, 850900.7, 856200.9};
  const double amplitude[] = {1.0, 0.7, 0.5};

  const TemporaryFolder folder;
  std::vector<Target> targets = parse(run(folder));
  ASSERT_EQ(targets.size(), 3u);
  for (std::size_t i = 0; i < 3; ++i) {
    SCOPED_TRACE("target " + std::to_string(i + 1));
    Target& target = targets[i];
    EXPECT_NEAR(target["width at -3 dB [ns]"].measured * 1e-9 * bandwidth, 0.886, 0.03 * 0.886);
    EXPECT_NEAR(target["width at -3 dB [m]"].measured * 2.0 / light * bandwidth, 0.886,
                0.03 * 0.886);
    EXPECT_NEAR(target["peak sidelobe [dB]"].measured, -13.26, 0.3);
    // Two things disturb it, both by some 0.01 dB: the far sidelobes of the other targets, which
    // lie 70 dB below this peak, and the ripple that a finite chirp leaves in the spectrum.
    EXPECT_NEAR(target["integrated sidelobes [dB]"].measured, -9.91, 0.2);
    // On the line nearest to closest approach, the range is the least one but for 0.2 mm.
    EXPECT_NEAR(target["slant range [m]"].measured, range[i], 0.01 * sample);
    EXPECT_NEAR(target["amplitude"].measured, amplitude[i], 0.01 * amplitude[i]);
    const Figure phase = target["phase [deg]"];
    EXPECT_NEAR(std::remainder(phase.measured - phase.theory, 360.0), 0.0, 0.5);
  }
}

/// The share of the pixels in some rows that are brighter than a tenth of full scale.
double bright_share(GDALDataset& image, int first, int rows) {
  const int width = image.GetRasterXSize();
  std::vector<std::uint8_t> pixels(static_cast<std::size_t>(width) *
                                   static_cast<std::size_t>(rows));
  EXPECT_EQ(image.GetRasterBand(1)->RasterIO(GF_Read, 0, first, width, rows, pixels.data(), width,
                                             rows, GDT_Byte, 0, 0, nullptr),
            CE_None);
  const auto bright = std::count_if(pixels.begin(), pixels.end(), [](int v) { return v > 25; });
  return static_cast<double>(bright) / static_cast<double>(pixels.size());
}

TEST(RangeCompression, PictureShowsBroadBandsAboveThinLines) {
  const TemporaryFolder folder;
  run(folder);
  ASSERT_THAT(folder.names(), testing::ElementsAre("range_compression.png"));
  GDALAllRegister();
  const GDALDatasetUniquePtr image(
      GDALDataset::Open(folder.file("range_compression.png").c_str(), GDAL_OF_RASTER));
  ASSERT_NE(image, nullptr);
  ASSERT_EQ(image->GetRasterYSize(), 256 + 8 + 256);
  EXPECT_GT(bright_share(*image, 0, 256), 0.5);
  EXPECT_GT(bright_share(*image, 264, 256), 0.001);
  EXPECT_LT(bright_share(*image, 264, 256), 0.02);
}

}  // namespace
