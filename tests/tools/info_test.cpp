// sarnum info: the equivalent looks of simulated speckle.
#include <cmath>
#include <cstdlib>
#include <random>

#include "tool_run.h"

namespace {

TEST_F(ToolTest, InfoFindsTheLooksOfSimulatedSpeckle) {
  std::mt19937 generator(20240607);
  std::normal_distribution<double> normal;
  std::gamma_distribution<double> sixteen_looks(16.0);
  // Two fields, so that most but not all blocks are homogeneous.
  const auto brightness = [](int x) { return x < 150 ? 1.0 : 6.0; };
  make("slc.tif", 512, 512, GDT_CFloat32,
       [&](int x, int) { return brightness(x) * Sample(normal(generator), normal(generator)); });
  make("decibel.tif", 512, 512, GDT_Float32, [&](int x, int) {
    return Sample(10 * std::log10(brightness(x) * sixteen_looks(generator)) - 40);
  });
  run("detect slc.tif amplitude.tif --amplitude");
  run("detect slc.tif intensity.tif");
  run("multilook intensity.tif looks.tif --looks 4x4");
  const auto expect_looks = [&](double looks, const std::vector<std::string>& inputs) {
    for (const std::string& input : inputs) {
      const std::string out = run("info " + input).out;
      EXPECT_NEAR(std::atof(out.c_str() + out.find("looks: ") + 7), looks, 0.06 * looks) << out;
    }
  };
  expect_looks(1, {"slc.tif", "amplitude.tif", "intensity.tif"});
  expect_looks(16, {"looks.tif", "decibel.tif", "decibel.tif --decibel"});
}

}  // namespace
