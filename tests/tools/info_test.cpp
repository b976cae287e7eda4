// sarnum info: the equivalent looks of simulated speckle.
#include <sys/resource.h>

#include <cmath>
#include <cstdlib>
#include <random>

#include "tool_run.h"

using ::testing::ContainsRegex;

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
  // As a product stores them: with scale and offset, and no word on the quantity.
  for (const auto& [from, to] : {std::pair{"amplitude", "counts"}, {"intensity", "power"}}) {
    Raster detected = read(std::string(from) + ".tif");
    auto stored = make(std::string(to) + ".tif", 512, 512, GDT_UInt16, [&](int x, int y) {
      return Sample(std::round(detected.at(x, y).real() * 100 + 300));
    });
    stored->GetRasterBand(1)->SetScale(0.01);
    stored->GetRasterBand(1)->SetOffset(-3);
  }
  const auto expect_looks = [&](double looks, const std::vector<std::string>& inputs) {
    for (const std::string& input : inputs) {
      const std::string out = run("info " + input).out;
      EXPECT_NEAR(std::atof(out.c_str() + out.find("looks: ") + 7), looks, 0.06 * looks) << out;
    }
  };
  expect_looks(1, {"slc.tif", "amplitude.tif", "intensity.tif", "counts.tif", "power.tif",
                   "counts.tif --amplitude", "power.tif --intensity"});
  expect_looks(3.66, {"counts.tif --intensity"});
  EXPECT_THAT(run("info counts.tif").out,
              MatchesRegex(".*a guess: amplitude; 3\\.[0-9]+ if intensity;.*"));
  EXPECT_THAT(
      run("info --json power.tif").out,
      ContainsRegex("\"quantity\": \"intensity\",\n *\"quantity_is_guessed\": true,\n"
                    " *\"other_quantity\": \"amplitude\",\n *\"other_equivalent_looks\": 0\\.2"));
  expect_looks(16, {"looks.tif", "decibel.tif", "decibel.tif --decibel"});
}

TEST_F(ToolTest, InfoOfAWideImageNeedsLittleMemory) {
  make_virtual("low.vrt", 20000000, 3, "Float32", "", "");
  run_silently("info low.vrt");
  // Has more blocks than are looked at.
  make_virtual("high.vrt", 20000000, 8, "CFloat64", "", "");
  run_silently("info high.vrt");
  struct rusage used {};
  getrusage(RUSAGE_CHILDREN, &used);
  EXPECT_LT(used.ru_maxrss, 500000);  // kilobytes; one row of doubles has 160000
}

}  // namespace
