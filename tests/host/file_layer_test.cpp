// Raster layers on sound files: what is accepted, how a band walks, and that the values on disk
// are the values in memory.
#include "sarnum/host/file_layer.h"

#include <array>
#include <climits>
#include <thread>

#include "raster_files.h"

namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::StartsWith;

TEST_F(LayerTest, KnowsTheStatedValuesOnly) {
  // One argument of the smallest good call at a time is one less.
  for (std::size_t wrong = 0; wrong < 7; ++wrong) {
    std::array<int, 7> v = {1, 1, 7, 273, 7, 0, 0};
    --v[wrong];
    auto* const extra = reinterpret_cast<CFileLayer::ExtraTag*>(v[5] != 0 ? &layer_ : nullptr);
    EXPECT_EQ(layer_.Create(path_.c_str(), v[0], v[1], v[2], static_cast<unsigned long>(v[3]),
                            static_cast<unsigned long>(v[4]), extra, v[6]),
              0);
  }
  EXPECT_EQ(layer_.Create(nullptr, 1, 1, 7, 273, 7, nullptr, 0), 0);
  EXPECT_TRUE(folder_.names().empty());
  make_raster(path_, 10, 7);
  ASSERT_NE(open(layer_, path_) * set_band(2) * layer_.ShiftBlock(1, 1), 0);
  for (std::size_t wrong = 0; wrong < 6; ++wrong) {
    std::array<int, 6> v = {256, 0, 0, 10, 1, 1};
    --v[wrong];
    EXPECT_EQ(layer_.SetBlockMode(v[0], v[1], v[2], v[3], v[4], v[5]), 0) << wrong;
  }
  EXPECT_EQ(layer_.ShiftBlock(-1, 1) + layer_.ShiftBlock(1, 0), 0);
  EXPECT_TRUE(row(0).empty() && row(3).empty());
  EXPECT_EQ(row(2), noise(10, 2));
  EXPECT_EQ(layer_.Open(path_.c_str(), 273, 0, 0x80000000UL), 0);
  EXPECT_EQ(layer_.Width() + set_band(2) + layer_.ShiftBlock(1, 1), 0);
  EXPECT_EQ(layer_.Open(path_.c_str(), 272, 1, 0x80000000UL), 0);
  EXPECT_EQ(layer_.Open(path_.c_str(), 272, 0, 0x40000000UL), 0);
  EXPECT_EQ(layer_.Open(nullptr, 272, 0, 0x80000000UL), 0);
}

TEST_F(LayerTest, StoresPartsOfRowsInAnyOrderAndNothingOutside) {
  using Places = std::vector<std::array<int, 3>>;
  std::vector<float> values = {0.1f, 2, 3, 4, 5};
  ASSERT_NE(create(layer_, path_, 5, 40), 0);
  for (const auto& [column, row, count] : Places{{0, 39, 5}, {3, 0, 2}, {0, 20, 1}, {0, 0, 1}}) {
    EXPECT_NE(layer_.WriteRow(values.data(), column, row, count, 1), 0) << failure();
  }
  EXPECT_EQ(row(0), std::vector<float>(5, 0.0f)) << "the band of a new file is the caller's";
  EXPECT_EQ(layer_.WriteRow(values.data(), 0, 0, 5, 0), 0);
  EXPECT_EQ(layer_.WriteRow(nullptr, 0, 0, 5, 1), 0);
  const int far = INT_MAX;
  for (const auto& [column, row, count] :
       Places{{0, 40, 5}, {0, -1, 5}, {1, 0, 5}, {1, 0, far}, {far, 0, 5}, {0, 0, -5}}) {
    sarnum::host::clear_raster_failure();
    EXPECT_EQ(layer_.WriteRow(values.data(), column, row, count, 1), 0);
    EXPECT_THAT(failure(), HasSubstr(path_));
  }
  layer_.Close();
  ASSERT_NE(open(layer_, path_) * set_band(40), 0);
  EXPECT_EQ(layer_.WriteRow(values.data(), 0, 0, 5, 1), 0);
  EXPECT_THAT(row(0), ElementsAre(0.1f, 0, 0, 0.1f, 2));
  EXPECT_THAT(row(20), ElementsAre(0.1f, 0, 0, 0, 0));
  EXPECT_EQ(row(39), values);
}

TEST_F(LayerTest, BandsDeliverEveryRowAndNoneBeyondTheFile) {
  for (const char* const layout : layouts) {
    for (const int height : {1, 7, 50, 64}) {
      make_raster(path_, 37, height, layout);
      for (const int rows : {1, 3, 16, 36, INT_MAX}) {
        SCOPED_TRACE(testing::Message() << layout << ' ' << height << " rows by " << rows);
        ASSERT_NE(open(layer_, path_), 0);
        EXPECT_EQ(row(0), noise(37, 0));
        EXPECT_TRUE(row(1).empty()) << "a band of one row until another is set";
        ASSERT_NE(set_band(rows), 0);
        for (int i = 0; i < height; ++i) {
          EXPECT_EQ(row(i), noise(37, i)) << i;
          if (i % rows == rows - 1 || i == height - 1) {
            EXPECT_TRUE(row(i + 1).empty());
            EXPECT_NE(layer_.ShiftBlock(rows, 1), 0);
            EXPECT_TRUE(row(i).empty());
          }
        }
        EXPECT_NE(layer_.ShiftBlock(INT_MAX, 1), 0);
        EXPECT_TRUE(row(height - 1).empty() && row(height).empty() && row(INT_MAX).empty());
        ASSERT_NE(set_band(1), 0);
        EXPECT_EQ(row(0), noise(37, 0));
        EXPECT_EQ(failure(), "");
      }
    }
  }
}

TEST_F(LayerTest, WhatCannotBeOpenedOrCreatedIsRefusedInOneLine) {
  std::ofstream(folder_.file("text.tif")) << "not a raster\n";
  std::ofstream(folder_.file("empty.vrt")) << "<VRTDataset rasterXSize='2' rasterYSize='2'/>";
  for (const std::string& path :
       {folder_.file("text.tif"), folder_.file("empty.vrt"), folder_.path().string(), std::string(),
        folder_.file("two\nlines.tif"), path_}) {
    EXPECT_EQ(open(layer_, path), 0) << path;
    EXPECT_THAT(failure(), StartsWith("cannot open " + path.substr(0, path.find('\n'))));
    EXPECT_EQ(failure().find('\n'), std::string::npos) << failure();
  }
  std::thread([this] { EXPECT_EQ(open(layer_, "no.tif"), 0); }).join();
  EXPECT_EQ(failure(), "cannot open " + path_ + ": No such file or directory");

  std::filesystem::remove(folder_.file("text.tif"));
  std::filesystem::remove(folder_.file("empty.vrt"));
  EXPECT_EQ(create(layer_, path_, 100000, 100000, {"BIGTIFF=NO"}), 0);
  EXPECT_EQ(create(layer_, "", 4, 4), 0);
  EXPECT_THAT(failure(), StartsWith("cannot create : "));
  EXPECT_EQ(create(layer_, folder_.path().string(), 4, 4), 0);
  EXPECT_THAT(failure(), StartsWith("cannot create " + folder_.path().string() + ": "));
  EXPECT_TRUE(folder_.names().empty());
}

TEST_F(LayerTest, AFailureIsShownUntilTheNextFileIsOpened) {
  CFileLayer other(nullptr);
  const auto fail = [this] { EXPECT_EQ(layer_.WriteRow(nullptr, 0, 0, 1, 1), 0); };
  const std::string own = folder_.file("own"), others = folder_.file("other");
  EXPECT_EQ(open(other, "missing"), 0);
  EXPECT_THAT(failure(), HasSubstr("missing"));
  ASSERT_NE(create(layer_, own, 5, 4), 0);
  EXPECT_EQ(failure(), "");
  fail();
  ASSERT_NE(create(other, others, 5, 4), 0);
  EXPECT_THAT(failure(), HasSubstr(own)) << "the file that failed is still in use";
  layer_.Close();
  EXPECT_THAT(failure(), HasSubstr(own));
  ASSERT_NE(open(other, others), 0);
  EXPECT_EQ(failure(), "");
  ASSERT_NE(create(layer_, own, 5, 4), 0);
  fail();
  ASSERT_NE(open(layer_, others), 0);
  EXPECT_EQ(failure(), "") << "opening another file ends the one that failed";
}

}  // namespace
