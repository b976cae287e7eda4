// Raster layers on files that are missing, foreign, short or cannot be written: each is refused
// or filled with NaN, and a line that names the file says so.
#include <fstream>
#include <thread>

#include "raster_files.h"

namespace {

using ::testing::StartsWith;

void shorten(const std::string& path, std::uintmax_t bytes) {
  std::filesystem::resize_file(path, std::filesystem::file_size(path) - bytes);
}

TEST_F(LayerTest, WhatCannotBeOpenedOrCreatedIsRefusedInOneLineThatStays) {
  std::ofstream(folder_.file("text.tif")) << "not a raster\n";
  std::ofstream(folder_.file("empty.vrt")) << "<VRTDataset rasterXSize='2' rasterYSize='2'/>";
  for (const std::string& path :
       {folder_.file("text.tif"), folder_.file("empty.vrt"), folder_.path().string(), std::string(),
        folder_.file("two\nlines.tif"), path_}) {
    EXPECT_EQ(open(layer_, path), 0) << path;
    EXPECT_THAT(failure(), StartsWith("cannot open " + path.substr(0, path.find('\n'))));
    EXPECT_EQ(failure().find('\n'), std::string::npos) << failure();
  }
  layer_.Open("later.tif", 272, 0, 0x80000000UL);
  std::thread([this] { EXPECT_EQ(open(layer_, "no.tif"), 0); }).join();
  EXPECT_EQ(failure(), "cannot open " + path_ + ": No such file or directory");

  std::filesystem::remove(folder_.file("text.tif"));
  std::filesystem::remove(folder_.file("empty.vrt"));
  EXPECT_EQ(create(layer_, path_, 100000, 100000, {"BIGTIFF=NO"}), 0);
  EXPECT_EQ(create(layer_, folder_.path().string(), 4, 4), 0);
  EXPECT_THAT(failure(), StartsWith("cannot create " + folder_.path().string() + ": "));
  EXPECT_TRUE(folder_.names().empty());
}

TEST_F(LayerTest, TruncatedFileIsNaNFromTheFirstBlockThatIsMissing) {
  for (const char* const layout : {"COMPRESS=DEFLATE", "TILED=YES BLOCKXSIZE=16"}) {
    make_raster(path_, 40, 61, (std::string(layout) + " BLOCKYSIZE=16 INTERLEAVE=PIXEL").c_str());
    shorten(path_, std::filesystem::file_size(path_) / 3);
    for (const int rows : {1, 3, 61}) {
      ASSERT_NE(open(layer_, path_) * set_band(rows), 0) << failure();
      int good = 0;
      for (int i = 0; i < 61; ++i) {
        const std::vector<float> samples = row(i);
        good += samples == noise(40, i) ? 1 : 0;
        EXPECT_EQ(std::count_if(samples.begin(), samples.end(), [](float v) { return v != v; }),
                  i < good ? 0 : 40);
        layer_.ShiftBlock(i % rows == rows - 1 ? rows : 0, 1);
      }
      EXPECT_TRUE(good == 16 || good == 32) << good;
      const std::string start = "cannot read row " + std::to_string(good) + " of " + path_ + ": ";
      EXPECT_THAT(failure(), StartsWith(start));
    }
  }
}

TEST_F(LayerTest, ShortRawFileIsRefusedAndACompleteOneAccepted) {
  const std::string path = folder_.file("raster.img");
  for (const auto& [driver, interleave] : {std::pair("ENVI", "BSQ"),
                                           {"ENVI", "BIL"},
                                           {"ENVI", "BIP"},
                                           {"EHdr", ""},
                                           {"GTiff", "BAND"}}) {
    const std::string options = *interleave ? std::string("INTERLEAVE=") + interleave : "";
    make_raster(path, 100, 50, options.c_str(), GDT_Float32, driver);
    ASSERT_NE(open(layer_, path) * set_band(50), 0) << failure();
    EXPECT_EQ(row(49), noise(100, 49));
    for (const std::uintmax_t bytes : {1u, 30000u}) {
      shorten(path, bytes);
      EXPECT_EQ(open(layer_, path), 0) << driver << ' ' << interleave;
      EXPECT_THAT(failure(), StartsWith("cannot open " + path + ": '" + path + "' is truncated: "));
    }
  }
}

}  // namespace
