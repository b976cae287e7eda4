// What layers make of GDAL: its formats and types, the files that it creates, and files that are
// short.
#include "raster_files.h"

namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::StartsWith;

void shorten(const std::string& path, std::uintmax_t bytes) {
  std::filesystem::resize_file(path, std::filesystem::file_size(path) - bytes);
}

TEST_F(LayerTest, CreatesGeoTiffAndLeavesNothingBesideWhatItReads) {
  std::vector<float> values = {0.1f, 2, 3, 4, 5};
  ASSERT_NE(create(layer_, path_, 5, 1) * layer_.WriteRow(values.data(), 0, 0, 5, 1), 0);
  layer_.Close();
  const GDALDatasetUniquePtr dataset(GDALDataset::Open(path_.c_str()));
  ASSERT_NE(dataset, nullptr);
  EXPECT_STREQ(dataset->GetDriverName(), "GTiff");
  EXPECT_EQ(dataset->GetRasterBand(1)->GetRasterDataType(), GDT_Float32);
  // GDAL likes to note the size of a zipped file beside it.
  const std::string zipped = "/vsigzip/" + folder_.file("raster.gz");
  ASSERT_EQ(CPLCopyFile(zipped.c_str(), path_.c_str()), 0);
  ASSERT_NE(open(layer_, zipped), 0);
  EXPECT_EQ(row(0), values);
  EXPECT_THAT(folder_.names(), ElementsAre("raster.gz", "raster.tif"));
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

TEST_F(LayerTest, DeliversEveryRealTypeAsStoredAndRefusesComplexOnes) {
  for (int type = GDT_Byte; type <= GDT_CFloat64; ++type) {
    GDALDatasetUniquePtr dataset = make_raster(path_, 10, 1, "", static_cast<GDALDataType>(type));
    // These describe the samples and do not change them.
    dataset->GetRasterBand(1)->SetNoDataValue(noise(10, 0)[0]);
    dataset->GetRasterBand(1)->SetScale(2.0);
    dataset.reset();
    const bool is_real = type < GDT_CInt16;
    EXPECT_EQ(open(layer_, path_) != 0, is_real) << type;
    EXPECT_EQ(row(0), is_real ? noise(10, 0) : std::vector<float>()) << type;
    EXPECT_THAT(failure(), HasSubstr(is_real ? "" : path_ + ": its pixels are complex"));
    EXPECT_THAT(failure(), HasSubstr(is_real ? "" : "detect"));
  }
}

TEST_F(LayerTest, BytesAreSignedWhereTheFileSaysSo) {
  for (const char* const layout : {"", "TILED=YES BLOCKXSIZE=16 BLOCKYSIZE=16"}) {
    GDALDatasetUniquePtr dataset = make_raster(
        path_, 4, 20, (std::string("PIXELTYPE=SIGNEDBYTE ") + layout).c_str(), GDT_Byte);
    std::array<unsigned char, 4> bytes = {0, 127, 128, 255};
    EXPECT_EQ(dataset->GetRasterBand(1)->RasterIO(GF_Write, 0, 19, 4, 1, bytes.data(), 4, 1,
                                                  GDT_Byte, 0, 0, nullptr),
              CE_None);
    dataset.reset();
    ASSERT_NE(open(layer_, path_) * set_band(20), 0) << failure();
    EXPECT_THAT(row(19), ElementsAre(0, 127, -128, -1));
    EXPECT_EQ(row(18), noise(4, 18));
  }
}

TEST_F(LayerTest, CreationOptionsServeOneFileAndAreChecked) {
  const auto is_big_tiff = [this] {
    layer_.Close();
    std::ifstream file(path_, std::ios::binary);
    file.seekg(2);
    return file.get() == 43;
  };
  const char* const replaced = "COMPRES=DEFLATE";
  ASSERT_TRUE(sarnum::host::set_creation_options(&replaced, 1));
  EXPECT_NE(create(layer_, path_, 8, 8, {"bigtiff=YES"}), 0);
  EXPECT_TRUE(is_big_tiff());
  EXPECT_EQ(create(layer_, folder_.file("no/out.tif"), 8, 8, {"BIGTIFF=YES"}), 0);
  EXPECT_NE(create(layer_, path_, 8, 8), 0);
  EXPECT_FALSE(is_big_tiff());
  // Larger than the 2 GiB from which a BigTIFF is the safer choice, smaller than needs one.
  float one = 1.0f;
  for (const int written : {-1, 0, 29999}) {
    EXPECT_NE(create(layer_, path_, 30000, 30000, {"SPARSE_OK=TRUE"}), 0);
    EXPECT_EQ(layer_.WriteRow(&one, 0, written, 1, 1) != 0, written >= 0);
    EXPECT_TRUE(is_big_tiff());
    ASSERT_NE(open(layer_, path_), 0) << "a sparse file is whole: " << failure();
    EXPECT_EQ(row(0)[0], written == 0 ? 1.0f : 0.0f);
  }
  EXPECT_EQ(create(layer_, path_, 100000, 100000, {"BIGTIFF=NO"}), 0);
  for (const char* const option : {"COMPRES=DEFLATE", "COMPRESS=UNHEARD_OF", "COMPRESS"}) {
    EXPECT_EQ(create(layer_, path_, 8, 8, {option}), 0) << option;
    EXPECT_THAT(failure(), ::testing::AllOf(HasSubstr(path_), HasSubstr("COMPRES")));
    EXPECT_NE(open(layer_, path_), 0) << "the former file is lost";
  }
}

}  // namespace
