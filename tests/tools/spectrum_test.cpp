// sarnum spectrum: a tone of known frequency, for single and double precision.
#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <numbers>

#include "tool_run.h"

namespace {

using ::testing::HasSubstr;

class Spectrum : public ToolTest {};

TEST_F(Spectrum, AToneIsOneLineOfItsAmplitude) {
  const auto tone = [](int x, int y) {
    return std::polar(4.0, 2 * std::numbers::pi * (5.0 * x / 64 + 3.0 * y / 32));
  };
  for (const GDALDataType type : {GDT_CFloat32, GDT_CFloat64}) {
    make("in.tif", 64, 32, type, tone);
    EXPECT_THAT(run({"spectrum", "in.tif", "out.tif", "--overwrite"}), IsSilentSuccess());
    EXPECT_EQ(open("out.tif")->GetRasterBand(1)->GetRasterDataType(), type);
    const Raster spectrum = read("out.tif");
    ASSERT_EQ(spectrum.width, 64);
    ASSERT_EQ(spectrum.height, 32);
    const double tolerance = type == GDT_CFloat32 ? 1e-5 : 1e-13;
    for (int y = 0; y < 32; ++y) {
      for (int x = 0; x < 64; ++x) {
        ASSERT_NEAR(std::abs(spectrum.at(x, y) - Sample(x == 5 && y == 3 ? 4 : 0)), 0, tolerance);
      }
    }
  }
}

TEST_F(Spectrum, PadsToPowersOfTwoAndDropsThePlace) {
  for (const GDALDataType type : {GDT_Byte, GDT_CInt32, GDT_Float64, GDT_Int64}) {
    SCOPED_TRACE(GDALGetDataTypeName(type));
    std::array<double, 6> transform{5, 1, 0, 7, 0, -1};
    make("in.tif", 33, 20, type, [](int, int) {
      return Sample(2);
    })->SetGeoTransform(transform.data());
    EXPECT_THAT(run({"spectrum", "in.tif", "out.tif", "--overwrite"}), IsSilentSuccess());
    const Raster spectrum = read("out.tif");
    ASSERT_EQ(spectrum.width, 64);
    ASSERT_EQ(spectrum.height, 32);
    EXPECT_NEAR(std::abs(spectrum.at(0, 0) - Sample(2.0 * 33 * 20 / (64 * 32))), 0, 1e-6);
    const auto output = open("out.tif");
    EXPECT_EQ(output->GetRasterBand(1)->GetRasterDataType(),
              type == GDT_Float64 || type == GDT_Int64 ? GDT_CFloat64 : GDT_CFloat32);
    EXPECT_EQ(output->GetGeoTransform(transform.data()), CE_Failure);
    EXPECT_STREQ(output->GetMetadataItem("SARNUM_IMAGE_SIZE"), "33 x 20");
  }
}

TEST_F(Spectrum, ThePictureHasTheZeroFrequencyInTheMiddle) {
  make("in.tif", 64, 16, GDT_Float32, [](int x, int y) { return Sample(9 + (x * 5 + y) % 3); });
  EXPECT_THAT(run({"spectrum", "in.tif", "out.tif", "--picture", "out.png"}), IsSilentSuccess());
  const Raster picture = read("out.png");
  ASSERT_EQ(picture.width, 64);
  ASSERT_EQ(picture.height, 16);
  EXPECT_EQ(picture.at(32, 8).real(), 255);
  EXPECT_LT(picture.at(0, 0).real(), 255);
}

TEST_F(Spectrum, CentredHasTheZeroFrequencyInTheMiddleOfFileAndPicture) {
  for (const GDALDataType type : {GDT_Int16, GDT_Float64}) {
    make("in.tif", 40, 16, type, [](int x, int y) { return Sample(100 + (x * 5 + y * 3) % 7); });
    ASSERT_EQ(run({"spectrum", "in.tif", "plain.tif", "--overwrite"}).status, 0);
    EXPECT_THAT(
        run({"spectrum", "in.tif", "out.tif", "--centred", "--overwrite", "--picture", "out.png"}),
        IsSilentSuccess());
    const Raster plain = read("plain.tif");
    const Raster centred = read("out.tif");
    for (int y = 0; y < 16; ++y) {
      for (int x = 0; x < 64; ++x) {
        ASSERT_NEAR(std::abs(centred.at((x + 32) % 64, (y + 8) % 16) - plain.at(x, y)), 0, 1e-5);
      }
    }
    EXPECT_EQ(read("out.png").at(32, 8).real(), 255);
    EXPECT_LT(read("out.png").at(0, 0).real(), 255);
  }
}

TEST_F(Spectrum, InverseBringsThePaddedImageBack) {
  const auto image = [](int x, int y) { return Sample(x - 3.0 * y, (x * y) % 11); };
  for (const GDALDataType type : {GDT_CFloat32, GDT_CFloat64}) {
    for (const bool centred : {false, true}) {
      make("in.tif", 50, 30, type, image);
      std::vector<std::string> forward = {"spectrum", "in.tif", "spectrum.tif", "--overwrite"};
      if (centred) {
        forward.emplace_back("--centred");
      }
      ASSERT_EQ(run(forward).status, 0);
      const ToolRun back = run({"spectrum", "--inverse", "spectrum.tif", "out.tif", "--overwrite",
                                "--picture", "out.png"});
      EXPECT_EQ(back.status, 0);
      EXPECT_THAT(back.err, HasSubstr("the upper left 50 x 30 pixels"));
      EXPECT_EQ(open("out.tif")->GetRasterBand(1)->GetRasterDataType(), type);
      const Raster output = read("out.tif");
      ASSERT_EQ(output.width, 64);
      ASSERT_EQ(output.height, 32);
      for (int y = 0; y < 32; ++y) {
        for (int x = 0; x < 64; ++x) {
          ASSERT_NEAR(std::abs(output.at(x, y) - (x < 50 && y < 30 ? image(x, y) : Sample(0))), 0,
                      1e-4);
        }
      }
    }
  }
}

TEST_F(Spectrum, InverseRefusesWhatIsNoSpectrum) {
  const auto zero = [](int, int) { return Sample(0); };
  make("sides.tif", 48, 32, GDT_CFloat32, zero);
  make("real.tif", 32, 32, GDT_Float32, zero);
  make("integers.tif", 32, 32, GDT_CInt16, zero);
  for (const auto& [name, message] : {std::pair{"sides.tif", "powers of two"},
                                      {"real.tif", "TD_FLOAT32"},
                                      {"integers.tif", "TD_COMPLEX_INT16"}}) {
    const auto before = names();
    const ToolRun refused = run({"spectrum", "--inverse", name, "out.tif"});
    EXPECT_EQ(refused.status, 1);
    EXPECT_THAT(refused.err, HasSubstr(message));
    EXPECT_THAT(refused.err, HasSubstr(name));
    EXPECT_EQ(std::count(refused.err.begin(), refused.err.end(), '\n'), 1);
    EXPECT_EQ(names(), before);
  }
}

}  // namespace
