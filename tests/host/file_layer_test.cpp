// Raster layers on sound files: what is accepted, how a band walks, and that the values on disk
// are the values in memory. GDAL, used directly, makes and checks the files.
#include "sarnum/host/file_layer.h"

#include <gmock/gmock.h>

#include <climits>
#include <cmath>
#include <cstdint>
#include <fstream>
#include <thread>

#include "raster_files.h"
#include "sarnum/host/standalone.h"
#include "temporary_folder.h"

namespace {

using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

class FileLayer : public ::testing::Test {
 protected:
  FileLayer() { sarnum::host::clear_raster_failure(); }
  TemporaryFolder folder_;
};

TEST_F(FileLayer, OpensWithTheStatedValuesOnly) {
  const std::string path = folder_.file("in.tif");
  make_raster(path, {});
  CFileLayer layer(nullptr);
  EXPECT_EQ(layer.Open(path.c_str(), 273, 0, 0x80000000UL), 0);
  EXPECT_EQ(layer.Open(path.c_str(), 272, 1, 0x80000000UL), 0);
  EXPECT_EQ(layer.Open(path.c_str(), 272, 0, 0x40000000UL), 0);
  EXPECT_EQ(layer.Open(nullptr, 272, 0, 0x80000000UL), 0);
  EXPECT_EQ(layer.Width(), 0);
  EXPECT_NE(layer.Open(path.c_str(), 272, 0, 0x80000000UL), 0);
  EXPECT_EQ(layer.Width(), 10);
  EXPECT_EQ(layer.Height(), 7);
}

TEST_F(FileLayer, CreatesWithTheStatedValuesOnly) {
  const std::string path = folder_.file("out.tif");
  CFileLayer layer(nullptr);
  CFileLayer::ExtraTag* const some_tag = reinterpret_cast<CFileLayer::ExtraTag*>(&layer);
  EXPECT_EQ(layer.Create(nullptr, 4, 3, 7, 273, 7, nullptr, 0), 0);
  EXPECT_EQ(layer.Create(path.c_str(), 0, 3, 7, 273, 7, nullptr, 0), 0);
  EXPECT_EQ(layer.Create(path.c_str(), 4, -3, 7, 273, 7, nullptr, 0), 0);
  EXPECT_EQ(layer.Create(path.c_str(), 4, 3, 8, 273, 7, nullptr, 0), 0);
  EXPECT_EQ(layer.Create(path.c_str(), 4, 3, 7, 272, 7, nullptr, 0), 0);
  EXPECT_EQ(layer.Create(path.c_str(), 4, 3, 7, 273, 6, nullptr, 0), 0);
  EXPECT_EQ(layer.Create(path.c_str(), 4, 3, 7, 273, 7, some_tag, 0), 0);
  EXPECT_EQ(layer.Create(path.c_str(), 4, 3, 7, 273, 7, nullptr, 1), 0);
  EXPECT_TRUE(folder_.names().empty());
  EXPECT_NE(layer.Create(path.c_str(), 4, 3, 7, 273, 7, nullptr, 0), 0);
}

TEST_F(FileLayer, RefusedBandValuesLeaveTheBandAsItWas) {
  const std::string path = folder_.file("in.tif");
  make_raster(path, {});
  CFileLayer layer(nullptr);
  EXPECT_EQ(layer.SetBlockMode(256, 0, 0, 10, 2, 1), 0);
  EXPECT_EQ(layer.ShiftBlock(1, 1), 0);
  EXPECT_EQ(layer.GetRowAddr(0), nullptr);
  ASSERT_NE(open_layer(layer, path), 0);
  ASSERT_NE(layer.SetBlockMode(256, 0, 0, 10, 2, 1), 0);
  ASSERT_NE(layer.ShiftBlock(1, 1), 0);

  EXPECT_EQ(layer.SetBlockMode(255, 0, 0, 10, 3, 1), 0);
  EXPECT_EQ(layer.SetBlockMode(256, 1, 0, 10, 3, 1), 0);
  EXPECT_EQ(layer.SetBlockMode(256, 0, 1, 10, 3, 1), 0);
  EXPECT_EQ(layer.SetBlockMode(256, 0, 0, 9, 3, 1), 0);
  EXPECT_EQ(layer.SetBlockMode(256, 0, 0, 10, 0, 1), 0);
  EXPECT_EQ(layer.SetBlockMode(256, 0, 0, 10, 3, 0), 0);
  EXPECT_EQ(layer.ShiftBlock(-1, 1), 0);
  EXPECT_EQ(layer.ShiftBlock(1, 0), 0);
  EXPECT_EQ(layer.GetRowAddr(0), nullptr);
  EXPECT_EQ(row_of(layer, 1), ramp_row(10, 1));
  EXPECT_EQ(row_of(layer, 2), ramp_row(10, 2));
  EXPECT_EQ(layer.GetRowAddr(3), nullptr);
}

TEST_F(FileLayer, CreatedFileIsCompleteAfterClose) {
  const std::string path = folder_.file("out.tif");
  CFileLayer layer(nullptr);
  ASSERT_NE(create_layer(layer, path, 5, 3), 0);
  ASSERT_NE(layer.SetBlockMode(256, 0, 0, 5, 1, 1), 0);
  for (int row = 0; row < 3; ++row) {
    auto* const samples = static_cast<float*>(layer.GetRowAddr(row));
    ASSERT_NE(samples, nullptr);
    if (row == 0) {
      EXPECT_THAT(std::vector<float>(samples, samples + 5), Each(0.0f));
    }
    for (int column = 0; column < 5; ++column) {
      samples[column] = static_cast<float>(row) + 0.1f * static_cast<float>(column);
    }
    EXPECT_NE(layer.WriteRow(samples, 0, row, 5, 1), 0);
    EXPECT_NE(layer.ShiftBlock(1, 1), 0);
  }
  EXPECT_EQ(layer.GetRowAddr(3), nullptr);
  layer.Close();
  layer.Close();
  EXPECT_STREQ(sarnum::host::raster_failure(), "");

  const GDALDatasetUniquePtr dataset(GDALDataset::Open(path.c_str()));
  ASSERT_NE(dataset, nullptr);
  EXPECT_STREQ(dataset->GetDriverName(), "GTiff");
  EXPECT_EQ(dataset->GetRasterCount(), 1);
  EXPECT_EQ(dataset->GetRasterXSize(), 5);
  EXPECT_EQ(dataset->GetRasterYSize(), 3);
  EXPECT_EQ(dataset->GetRasterBand(1)->GetRasterDataType(), GDT_Float32);
  ASSERT_NE(open_layer(layer, path), 0);
  for (int row = 0; row < 3; ++row) {
    std::vector<float> stored(5);
    ASSERT_EQ(dataset->GetRasterBand(1)->RasterIO(GF_Read, 0, row, 5, 1, stored.data(), 5, 1,
                                                  GDT_Float32, 0, 0, nullptr),
              CE_None);
    const auto r = static_cast<float>(row);
    EXPECT_THAT(stored, ElementsAre(r, r + 0.1f, r + 0.2f, r + 0.1f * 3.0f, r + 0.4f));
    EXPECT_EQ(row_of(layer, row), stored);
    layer.ShiftBlock(1, 1);
  }
}

TEST_F(FileLayer, WritesPartsOfRowsInAnyOrderAndNothingOutside) {
  const std::string path = folder_.file("out.tif");
  std::vector<float> values = {1, 2, 3, 4, 5};
  {
    CFileLayer layer(nullptr);
    ASSERT_NE(create_layer(layer, path, 5, 40), 0);
    EXPECT_NE(layer.WriteRow(values.data(), 0, 39, 5, 1), 0);
    EXPECT_NE(layer.WriteRow(values.data(), 3, 0, 2, 1), 0);
    EXPECT_NE(layer.WriteRow(values.data(), 0, 20, 1, 1), 0);
    EXPECT_NE(layer.WriteRow(values.data(), 0, 0, 1, 1), 0);
    EXPECT_STREQ(sarnum::host::raster_failure(), "");

    EXPECT_EQ(layer.WriteRow(nullptr, 0, 0, 5, 1), 0);
    EXPECT_EQ(layer.WriteRow(values.data(), 0, 40, 5, 1), 0);
    EXPECT_EQ(layer.WriteRow(values.data(), 0, -1, 5, 1), 0);
    EXPECT_EQ(layer.WriteRow(values.data(), 1, 0, 5, 1), 0);
    EXPECT_EQ(layer.WriteRow(values.data(), 1, 0, INT_MAX, 1), 0);
    EXPECT_EQ(layer.WriteRow(values.data(), INT_MAX, 0, 5, 1), 0);
    EXPECT_EQ(layer.WriteRow(values.data(), 0, 0, -5, 1), 0);
    EXPECT_EQ(layer.WriteRow(values.data(), 0, 0, 5, 0), 0);
    EXPECT_THAT(sarnum::host::raster_failure(), HasSubstr(path));
  }
  CFileLayer layer(nullptr);
  ASSERT_NE(open_layer(layer, path), 0);
  EXPECT_EQ(layer.WriteRow(values.data(), 0, 0, 5, 1), 0);
  ASSERT_NE(layer.SetBlockMode(256, 0, 0, 5, 40, 1), 0);
  EXPECT_THAT(row_of(layer, 0), ElementsAre(1, 0, 0, 1, 2));
  EXPECT_THAT(row_of(layer, 20), ElementsAre(1, 0, 0, 0, 0));
  EXPECT_THAT(row_of(layer, 39), ElementsAre(1, 2, 3, 4, 5));
}

struct Walk {
  int height;
  int band_rows;
  std::vector<const char*> options;

  friend void PrintTo(const Walk& walk, std::ostream* out) {
    *out << walk.height << " rows by " << walk.band_rows;
    for (const char* const option : walk.options) {
      *out << ' ' << option;
    }
  }
};

class BandWalk : public FileLayer, public ::testing::WithParamInterface<Walk> {};

TEST_P(BandWalk, DeliversEveryRowOnceAndNoneBeyondTheFile) {
  const auto& [height, band_rows, options] = GetParam();
  const std::string path = folder_.file("in.tif");
  RasterSpec spec;
  spec.width = 37;
  spec.height = height;
  spec.bands = 2;
  spec.options = options;
  make_raster(path, spec);
  CFileLayer layer(nullptr);
  ASSERT_NE(open_layer(layer, path), 0);
  EXPECT_EQ(row_of(layer, 0), ramp_row(37, 0));
  EXPECT_EQ(layer.GetRowAddr(1), nullptr);
  ASSERT_NE(layer.SetBlockMode(256, 0, 0, 37, band_rows, 1), 0);
  for (std::int64_t first = 0; first < height; first += band_rows) {
    const auto begin = static_cast<int>(first);
    EXPECT_EQ(layer.GetRowAddr(begin - 1), nullptr);
    const int end = band_rows < height - begin ? begin + band_rows : height;
    for (int row = begin; row < end; ++row) {
      EXPECT_EQ(row_of(layer, row), ramp_row(37, row)) << row;
    }
    EXPECT_EQ(layer.GetRowAddr(end), nullptr);
    EXPECT_NE(layer.ShiftBlock(band_rows, 1), 0);
  }
  EXPECT_NE(layer.ShiftBlock(INT_MAX, 1), 0);
  EXPECT_EQ(layer.GetRowAddr(height - 1), nullptr);
  EXPECT_EQ(layer.GetRowAddr(height), nullptr);
  EXPECT_EQ(layer.GetRowAddr(INT_MAX), nullptr);
  ASSERT_NE(layer.SetBlockMode(256, 0, 0, 37, 1, 1), 0);
  EXPECT_EQ(row_of(layer, 0), ramp_row(37, 0));
  EXPECT_STREQ(sarnum::host::raster_failure(), "");
}

const std::vector<const char*> small_tiles = {"TILED=YES", "BLOCKXSIZE=16", "BLOCKYSIZE=16"};
INSTANTIATE_TEST_SUITE_P(Layouts, BandWalk,
                         ::testing::Values(Walk{1, 1, {}}, Walk{1, 36, {}}, Walk{7, 2, {}},
                                           Walk{7, 7, {}}, Walk{7, 8, {}}, Walk{7, INT_MAX, {}},
                                           Walk{50, 3, {"BLOCKYSIZE=5"}}, Walk{50, 3, small_tiles},
                                           Walk{64, 16, small_tiles}, Walk{50, 36, small_tiles}));

class PixelType : public FileLayer, public ::testing::WithParamInterface<GDALDataType> {};

TEST_P(PixelType, IsDeliveredAsStoredFloats) {
  const std::string path = folder_.file("in.tif");
  RasterSpec spec;
  spec.type = GetParam();
  // Nodata, scale and offset describe the samples; they do not change them.
  make_raster(path, spec, ramp, [](GDALDataset& dataset) {
    dataset.GetRasterBand(1)->SetNoDataValue(31);
    dataset.GetRasterBand(1)->SetScale(2.0);
    dataset.GetRasterBand(1)->SetOffset(10.0);
  });
  CFileLayer layer(nullptr);
  ASSERT_NE(open_layer(layer, path), 0);
  layer.ShiftBlock(1, 1);
  EXPECT_EQ(row_of(layer, 1), ramp_row(10, 1));
  EXPECT_EQ(row_of(layer, 1)[0], 31.0f);
}

INSTANTIATE_TEST_SUITE_P(All, PixelType,
                         ::testing::Values(GDT_Byte, GDT_UInt16, GDT_Int16, GDT_UInt32, GDT_Int32,
                                           GDT_Float32, GDT_Float64),
                         [](const auto& type) { return GDALGetDataTypeName(type.param); });

TEST_F(FileLayer, DoublesAreRoundedToFloats) {
  const std::string path = folder_.file("in.tif");
  RasterSpec spec;
  spec.width = 3;
  spec.type = GDT_Float64;
  make_raster(path, spec, [](int column, int) {
    return column == 0 ? 0.1 : column == 1 ? NAN : -1e-3;
  });
  CFileLayer layer(nullptr);
  ASSERT_NE(open_layer(layer, path), 0);
  const std::vector<float> row = row_of(layer, 0);
  ASSERT_EQ(row.size(), 3u);
  EXPECT_EQ(row[0], 0.1f);
  EXPECT_TRUE(std::isnan(row[1]));
  EXPECT_EQ(row[2], -1e-3f);
}

TEST_F(FileLayer, ComplexRasterIsRefusedWithAdvice) {
  for (const GDALDataType type : {GDT_CInt16, GDT_CInt32, GDT_CFloat32, GDT_CFloat64}) {
    const std::string path = folder_.file(GDALGetDataTypeName(type));
    RasterSpec spec;
    spec.type = type;
    make_raster(path, spec);
    sarnum::host::clear_raster_failure();
    CFileLayer layer(nullptr);
    EXPECT_EQ(open_layer(layer, path), 0);
    EXPECT_THAT(sarnum::host::raster_failure(), HasSubstr(path + ": its pixels are complex"));
    EXPECT_THAT(sarnum::host::raster_failure(), HasSubstr("detect"));
  }
}

// --- Creation options

std::string compression_of(const std::string& path) {
  const GDALDatasetUniquePtr dataset(GDALDataset::Open(path.c_str()));
  const char* const name =
      dataset == nullptr ? nullptr : dataset->GetMetadataItem("COMPRESSION", "IMAGE_STRUCTURE");
  return name == nullptr ? "" : name;
}

bool is_big_tiff(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  char header[4] = {};
  file.read(header, 4);
  return header[2] == 43 || header[3] == 43;
}

bool set_options(std::vector<const char*> options) {
  return sarnum::host::set_creation_options(options.data(), static_cast<int>(options.size()));
}

TEST_F(FileLayer, CreationOptionsServeOneFile) {
  const std::string first = folder_.file("first.tif");
  const std::string second = folder_.file("second.tif");
  ASSERT_TRUE(set_options({"COMPRESS=LZW"}));
  ASSERT_TRUE(set_options({"COMPRESS=DEFLATE", "bigtiff=YES"}));
  CFileLayer layer(nullptr);
  EXPECT_NE(create_layer(layer, first, 8, 8), 0);
  EXPECT_NE(create_layer(layer, second, 8, 8), 0);
  layer.Close();
  EXPECT_EQ(compression_of(first), "DEFLATE");
  EXPECT_TRUE(is_big_tiff(first));
  EXPECT_EQ(compression_of(second), "");
  EXPECT_FALSE(is_big_tiff(second));

  ASSERT_TRUE(set_options({"COMPRESS=DEFLATE"}));
  EXPECT_EQ(create_layer(layer, folder_.file("missing/out.tif"), 8, 8), 0);
  EXPECT_NE(create_layer(layer, first, 8, 8), 0);
  layer.Close();
  EXPECT_EQ(compression_of(first), "");
}

TEST_F(FileLayer, UnknownCreationOptionIsRefusedBeforeTheFileIsTouched) {
  const std::string path = folder_.file("out.tif");
  make_raster(path, {});
  for (const char* const option : {"COMPRES=DEFLATE", "COMPRESS=UNHEARD_OF", "COMPRESS"}) {
    sarnum::host::clear_raster_failure();
    ASSERT_TRUE(set_options({option}));
    CFileLayer layer(nullptr);
    EXPECT_EQ(create_layer(layer, path, 8, 8), 0) << option;
    EXPECT_THAT(sarnum::host::raster_failure(), HasSubstr(path));
    EXPECT_THAT(sarnum::host::raster_failure(), HasSubstr("COMPRES"));
    EXPECT_NE(open_layer(layer, path), 0);
    EXPECT_EQ(layer.Width(), 10);
  }
}

// --- What lies beside the files

TEST_F(FileLayer, WritesNothingBesideItsFiles) {
  // North up: some of the formats store a raster without georeferencing upside down.
  double north_up[] = {0, 1, 0, 0, 0, -1};
  make_raster(folder_.file("a.tif"), {}, ramp,
              [&](GDALDataset& dataset) { dataset.SetGeoTransform(north_up); });
  RasterSpec envi;
  envi.driver = "ENVI";
  make_raster(folder_.file("b.img"), envi);
  const GDALDatasetUniquePtr source(GDALDataset::Open(folder_.file("a.tif").c_str()));
  for (const auto& [driver, name] : {std::pair("AAIGrid", "c.asc"), std::pair("GSBG", "d.grd")}) {
    GDALDriver* const made_by = GetGDALDriverManager()->GetDriverByName(driver);
    ASSERT_NE(made_by, nullptr) << driver;
    GDALClose(made_by->CreateCopy(folder_.file(name).c_str(), source.get(), FALSE, nullptr, nullptr,
                                  nullptr));
  }
  ASSERT_EQ(
      CPLCopyFile(("/vsigzip/" + folder_.file("e.tif.gz")).c_str(), folder_.file("a.tif").c_str()),
      0);
  const std::vector<std::string> before = folder_.names();
  for (const std::string& path :
       {folder_.file("a.tif"), folder_.file("b.img"), folder_.file("c.asc"), folder_.file("d.grd"),
        "/vsigzip/" + folder_.file("e.tif.gz")}) {
    CFileLayer layer(nullptr);
    ASSERT_NE(open_layer(layer, path), 0) << sarnum::host::raster_failure();
    ASSERT_NE(layer.SetBlockMode(256, 0, 0, 10, 7, 1), 0);
    EXPECT_EQ(row_of(layer, 6), ramp_row(10, 6)) << path;
  }
  EXPECT_EQ(folder_.names(), before);
}

TEST_F(FileLayer, ReplacedFileTakesItsSidecarsWithIt) {
  const std::string path = folder_.file("out.tif");
  make_raster(path, {});
  std::ofstream(path + ".aux.xml") << "<PAMDataset/>\n";
  CFileLayer layer(nullptr);
  ASSERT_NE(create_layer(layer, path, 4, 4), 0);
  layer.Close();
  EXPECT_THAT(folder_.names(), ElementsAre("out.tif"));
}

// --- Threads

TEST_F(FileLayer, LayersOnTwoThreadsDoNotMeet) {
  const auto work = [this](int base) {
    const std::string path = folder_.file("thread" + std::to_string(base) + ".tif");
    RasterSpec spec;
    spec.width = 200;
    spec.height = 300;
    make_raster(path, spec, [base](int column, int row) { return base + ramp(column, row); });
    for (int round = 0; round < 5; ++round) {
      CFileLayer input(nullptr);
      CFileLayer output(nullptr);
      ASSERT_NE(open_layer(input, path), 0);
      ASSERT_NE(create_layer(output, path + ".copy", 200, 300), 0);
      for (int row = 0; row < 300; ++row) {
        auto* const samples = static_cast<float*>(input.GetRowAddr(row));
        ASSERT_EQ(samples[1], static_cast<float>(base + ramp(1, row)));
        ASSERT_NE(output.WriteRow(samples, 0, row, 200, 1), 0);
        input.ShiftBlock(1, 1);
        output.ShiftBlock(1, 1);
      }
    }
    CFileLayer layer(nullptr);
    EXPECT_EQ(open_layer(layer, path + ".absent"), 0);
    EXPECT_THAT(sarnum::host::raster_failure(), HasSubstr(path + ".absent"));
  };
  std::thread other(work, 1000);
  work(2000);
  other.join();
  EXPECT_THAT(sarnum::host::raster_failure(), HasSubstr("thread2000"));
}

}  // namespace
