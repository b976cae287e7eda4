// Raster layers on files that are missing, foreign, short or cannot be written: each is refused
// or filled with NaN, and a line that names the file says so.
#include <gmock/gmock.h>
#include <sys/resource.h>

#include <algorithm>
#include <cmath>
#include <csignal>
#include <fstream>

#include "raster_files.h"
#include "sarnum/host/file_layer.h"
#include "sarnum/host/standalone.h"
#include "temporary_folder.h"

namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

class BrokenFile : public ::testing::Test {
 protected:
  BrokenFile() { sarnum::host::clear_raster_failure(); }

  std::string failure() const { return sarnum::host::raster_failure(); }
  void shorten(const std::string& path, std::uintmax_t bytes) {
    std::filesystem::resize_file(path, std::filesystem::file_size(path) - bytes);
  }
  /// Samples that no compression makes short.
  static double noise(int column, int row) {
    const unsigned mixed =
        (static_cast<unsigned>(column) * 2654435761u) ^ (static_cast<unsigned>(row) * 2246822519u);
    return (mixed * 3266489917u) >> 8;
  }

  TemporaryFolder folder_;
};

TEST_F(BrokenFile, ThatIsNoRasterIsRefusedInOneLine) {
  std::ofstream(folder_.file("text.tif")) << "not a raster\n";
  std::ofstream(folder_.file("empty.tif"));
  for (const std::string& path :
       {folder_.file("missing.tif"), folder_.file("text.tif"), folder_.file("empty.tif"),
        folder_.path().string(), folder_.file("two\nlines.tif"), std::string()}) {
    sarnum::host::clear_raster_failure();
    CFileLayer layer(nullptr);
    EXPECT_EQ(open_layer(layer, path), 0) << path;
    EXPECT_THAT(failure(), StartsWith("cannot open "));
    EXPECT_EQ(failure().find('\n'), std::string::npos) << failure();
    if (path.find('\n') == std::string::npos) {
      EXPECT_THAT(failure(), HasSubstr(path));
    }
  }
}

TEST_F(BrokenFile, FirstFailureIsKeptUntilCleared) {
  CFileLayer layer(nullptr);
  EXPECT_EQ(open_layer(layer, folder_.file("first.tif")), 0);
  EXPECT_EQ(open_layer(layer, folder_.file("second.tif")), 0);
  EXPECT_EQ(failure(), "cannot open " + folder_.file("first.tif") + ": No such file or directory");
  sarnum::host::clear_raster_failure();
  EXPECT_EQ(failure(), "");
}

TEST_F(BrokenFile, CannotBeCreatedAndLeavesNothing) {
  CFileLayer layer(nullptr);
  const std::string path = folder_.file("missing/out.tif");
  EXPECT_EQ(create_layer(layer, path, 4, 4), 0);
  EXPECT_THAT(failure(), StartsWith("cannot create " + path + ": "));
  EXPECT_EQ(failure().find('\n'), std::string::npos);
  EXPECT_EQ(create_layer(layer, folder_.path().string(), 4, 4), 0);
  const char* const too_small_a_format = "BIGTIFF=NO";
  ASSERT_TRUE(sarnum::host::set_creation_options(&too_small_a_format, 1));
  EXPECT_EQ(create_layer(layer, folder_.file("huge.tif"), 100000, 100000), 0);
  EXPECT_TRUE(folder_.names().empty());
  EXPECT_EQ(layer.Width(), 0);
}

struct Layout {
  const char* name;
  const char* driver;
  std::vector<const char*> options;

  friend void PrintTo(const Layout& layout, std::ostream* out) { *out << layout.driver; }
};

class TruncatedFile : public BrokenFile, public ::testing::WithParamInterface<Layout> {};

TEST_P(TruncatedFile, IsReadAsNaNFromTheFirstBlockThatIsMissing) {
  const std::string path = folder_.file("in.tif");
  RasterSpec spec;
  spec.width = 40;
  spec.height = 61;
  spec.options = GetParam().options;
  make_raster(path, spec, noise);
  shorten(path, std::filesystem::file_size(path) / 3);
  for (const int band_rows : {1, 3, 61}) {
    sarnum::host::clear_raster_failure();
    CFileLayer layer(nullptr);
    ASSERT_NE(open_layer(layer, path), 0) << failure();
    ASSERT_NE(layer.SetBlockMode(256, 0, 0, 40, band_rows, 1), 0);
    int first_bad = -1;
    for (int row = 0; row < 61; ++row) {
      const std::vector<float> samples = row_of(layer, row);
      ASSERT_EQ(samples.size(), 40u);
      const bool bad = std::isnan(samples[0]);
      for (int column = 0; column < 40; ++column) {
        const float sample = samples[static_cast<std::size_t>(column)];
        ASSERT_TRUE(bad ? std::isnan(sample) : sample == static_cast<float>(noise(column, row)))
            << column << ", " << row;
      }
      if (bad && first_bad < 0) {
        first_bad = row;
      }
      EXPECT_EQ(bad, first_bad >= 0) << row;
      if (row % band_rows == band_rows - 1) {
        layer.ShiftBlock(band_rows, 1);
      }
    }
    EXPECT_GT(first_bad, 0);
    EXPECT_EQ(first_bad % 16, 0);
    EXPECT_THAT(failure(),
                StartsWith("cannot read row " + std::to_string(first_bad) + " of " + path + ": "));
  }
}

INSTANTIATE_TEST_SUITE_P(
    Layouts, TruncatedFile,
    ::testing::Values(Layout{"Strips", "GTiff", {"COMPRESS=DEFLATE", "BLOCKYSIZE=16"}},
                      Layout{"Tiles", "GTiff", {"TILED=YES", "BLOCKXSIZE=16", "BLOCKYSIZE=16"}}),
    [](const auto& layout) { return layout.param.name; });

class ShortFile : public BrokenFile, public ::testing::WithParamInterface<Layout> {};

TEST_P(ShortFile, IsRefusedAndACompleteOneAccepted) {
  const std::string path = folder_.file("in.img");
  RasterSpec spec;
  spec.width = 100;
  spec.height = 50;
  spec.bands = 3;
  spec.driver = GetParam().driver;
  spec.options = GetParam().options;
  make_raster(path, spec);
  CFileLayer layer(nullptr);
  ASSERT_NE(open_layer(layer, path), 0) << failure();
  ASSERT_NE(layer.SetBlockMode(256, 0, 0, 100, 50, 1), 0);
  EXPECT_EQ(row_of(layer, 49), ramp_row(100, 49));
  layer.Close();
  for (const std::uintmax_t bytes : {1u, 30000u}) {
    sarnum::host::clear_raster_failure();
    shorten(path, bytes);
    EXPECT_EQ(open_layer(layer, path), 0);
    EXPECT_EQ(failure(), "cannot open " + path + ": the file is shorter than its header says");
  }
}

INSTANTIATE_TEST_SUITE_P(Raw, ShortFile,
                         ::testing::Values(Layout{"Bsq", "ENVI", {"INTERLEAVE=BSQ"}},
                                           Layout{"Bil", "ENVI", {"INTERLEAVE=BIL"}},
                                           Layout{"Bip", "ENVI", {"INTERLEAVE=BIP"}},
                                           Layout{"EHdr", "EHdr", {}},
                                           Layout{"GTiff", "GTiff", {"INTERLEAVE=BAND"}}),
                         [](const auto& layout) { return layout.param.name; });

TEST_F(BrokenFile, SparseFileIsWhole) {
  const std::string path = folder_.file("in.tif");
  GDALAllRegister();
  std::vector<float> ones(300, 1.0f);
  for (const char* const tiled : {"TILED=NO", "TILED=YES"}) {
    for (const int written_row : {-1, 0, 150, 299}) {
      {
        const char* options[] = {"SPARSE_OK=TRUE", tiled, nullptr};
        const GDALDatasetUniquePtr dataset(GetGDALDriverManager()->GetDriverByName("GTiff")->Create(
            path.c_str(), 300, 300, 1, GDT_Float32, const_cast<char**>(options)));
        ASSERT_NE(dataset, nullptr);
        if (written_row >= 0) {
          ASSERT_EQ(
              dataset->GetRasterBand(1)->RasterIO(GF_Write, 0, written_row, 300, 1, ones.data(),
                                                  300, 1, GDT_Float32, 0, 0, nullptr),
              CE_None);
        }
      }
      CFileLayer layer(nullptr);
      ASSERT_NE(open_layer(layer, path), 0) << failure();
      ASSERT_NE(layer.SetBlockMode(256, 0, 0, 300, 300, 1), 0);
      for (const int row : {0, 150, 299}) {
        EXPECT_EQ(row_of(layer, row), std::vector<float>(300, row == written_row ? 1.0f : 0.0f));
      }
      EXPECT_EQ(failure(), "");
    }
  }
}

/// While it lives, no file grows past a size, as on a full disk.
class FileSizeLimit {
 public:
  explicit FileSizeLimit(rlim_t bytes) : handler_(std::signal(SIGXFSZ, SIG_IGN)) {
    getrlimit(RLIMIT_FSIZE, &former_);
    rlimit limit = former_;
    limit.rlim_cur = bytes;
    setrlimit(RLIMIT_FSIZE, &limit);
  }
  FileSizeLimit(const FileSizeLimit&) = delete;
  FileSizeLimit& operator=(const FileSizeLimit&) = delete;
  ~FileSizeLimit() {
    setrlimit(RLIMIT_FSIZE, &former_);
    std::signal(SIGXFSZ, handler_);
  }

 private:
  void (*handler_)(int);
  rlimit former_{};
};

class FullDisk : public BrokenFile, public ::testing::WithParamInterface<Layout> {
 protected:
  /// Whether the file was written without a failure that anybody could see.
  bool write_file(const std::string& path) {
    const auto& options = GetParam().options;
    sarnum::host::clear_raster_failure();
    sarnum::host::set_creation_options(options.data(), static_cast<int>(options.size()));
    CFileLayer layer(nullptr);
    bool good = create_layer(layer, path, 64, 96) != 0;
    std::vector<float> samples(64);
    for (int row = 0; good && row < 96; ++row) {
      for (int column = 0; column < 64; ++column) {
        samples[static_cast<std::size_t>(column)] = static_cast<float>(noise(column, row));
      }
      layer.WriteRow(samples.data(), 0, row, 64, 1);
      layer.ShiftBlock(1, 1);
    }
    layer.Close();
    return good && failure().empty();
  }
};

TEST_P(FullDisk, IsNeverTakenForSuccess) {
  const std::string path = folder_.file("out.tif");
  ASSERT_TRUE(write_file(path)) << failure();
  const auto size = std::filesystem::file_size(path);
  for (std::uintmax_t limit = 0; limit < size; limit += std::max<std::uintmax_t>(1, size / 60)) {
    bool good;
    {
      const FileSizeLimit full(limit);
      good = write_file(path);
    }
    EXPECT_FALSE(good) << limit << " of " << size << " bytes";
    EXPECT_THAT(failure(), HasSubstr(path));
  }
  {
    const FileSizeLimit full(size - 1);
    EXPECT_FALSE(write_file(path));
  }
  const FileSizeLimit enough(size);
  EXPECT_TRUE(write_file(path)) << failure();
}

INSTANTIATE_TEST_SUITE_P(
    Layouts, FullDisk,
    ::testing::Values(Layout{"Strips", "GTiff", {}},
                      Layout{"Deflate", "GTiff", {"COMPRESS=DEFLATE"}},
                      Layout{"Tiles", "GTiff", {"TILED=YES", "BLOCKXSIZE=16", "BLOCKYSIZE=32"}}),
    [](const auto& layout) { return layout.param.name; });

}  // namespace
