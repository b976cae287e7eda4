// What creating a raster touches, whatever stores it: the file that was named, and nothing else.
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <csignal>
#include <map>

#include "raster_files.h"

namespace {

using ::testing::IsSupersetOf;
using ::testing::StartsWith;

namespace fs = std::filesystem;

class OutputTest : public LayerTest {
 protected:
  OutputTest() {
    std::signal(SIGXFSZ, SIG_IGN);
    alarm(60);  // what hangs has failed
  }
  ~OutputTest() override { alarm(0); }

  /// Creates a raster whose rows are 0 … 999, or which does not fit into the largest file allowed.
  void write(const std::string& path, bool fits) {
    rlimit unlimited;
    getrlimit(RLIMIT_FSIZE, &unlimited);
    const rlimit limit = {2000, unlimited.rlim_max};
    EXPECT_NE(create(layer_, path, 5, 1000), 0) << failure();
    if (!fits) {
      setrlimit(RLIMIT_FSIZE, &limit);
    }
    for (int i = 0; i < 1000; ++i) {
      std::vector<float> samples(5, static_cast<float>(i));
      layer_.WriteRow(samples.data(), 0, i, 5, 1);
    }
    layer_.Close();
    setrlimit(RLIMIT_FSIZE, &unlimited);
  }

  void put(const std::string& name, const std::string& content = "") const {
    std::ofstream(folder_.file(name)) << content;
  }

  std::map<fs::path, fs::file_type> kinds_of_files() const {
    std::map<fs::path, fs::file_type> kinds;
    for (const auto& entry : fs::recursive_directory_iterator(folder_.path())) {
      kinds[entry.path()] = entry.symlink_status().type();
    }
    return kinds;
  }
};

TEST_F(OutputTest, OnlyRegularFilesAreWrittenOrRemoved) {
  ASSERT_EQ(mkfifo(folder_.file("fifo").c_str(), 0600), 0);
  const std::string irregular = "it is not a regular file";
  std::map<std::string, std::string> reasons = {{"fifo", irregular},
                                                {"link to fifo", irregular},
                                                {"link to device", irregular},
                                                {"loop", ""},
                                                {"folder", "it is a folder"}};
  // A device of its own: who may remove the system's ones would do so where this test fails.
  const bool has_device = mknod(folder_.file("device").c_str(), S_IFCHR | 0600, makedev(1, 3)) == 0;
  fs::create_symlink("fifo", folder_.file("link to fifo"));
  fs::create_symlink(has_device ? "device" : "/dev/null", folder_.file("link to device"));
  fs::create_symlink("loop", folder_.file("loop"));
  fs::create_directory(folder_.file("folder"));
  if (has_device) {
    reasons["device"] = irregular;
  }
  const auto before = kinds_of_files();
  for (const auto& [name, reason] : reasons) {
    EXPECT_EQ(create(layer_, folder_.file(name), 5, 4), 0) << name;
    EXPECT_THAT(failure(), StartsWith("cannot create " + folder_.file(name) + ": " + reason));
    EXPECT_EQ(kinds_of_files(), before) << name;
  }
}

TEST_F(OutputTest, ALinkIsWrittenThroughAndStays) {
  fs::create_directory(folder_.file("sub"));
  const std::string target = folder_.file("sub/target.tif");
  fs::create_symlink("sub/target.tif", path_);
  fs::create_symlink(path_, folder_.file("chain.tif"));
  for (const std::string& path : {path_, folder_.file("chain.tif")}) {
    for (const bool target_exists : {false, true}) {
      SCOPED_TRACE(testing::Message() << path << ", " << target_exists);
      fs::remove_all(folder_.file("sub"));
      fs::create_directory(folder_.file("sub"));
      if (target_exists) {
        std::ofstream(target) << "old";
        chmod(target.c_str(), 0600);
      }
      const auto links = folder_.names();
      write(path, true);
      EXPECT_EQ(folder_.names(), links);
      EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(target)));
      if (target_exists) {
        EXPECT_EQ(fs::status(target).permissions(), fs::perms(0600));
      }
      for (const std::string& name : {path, target}) {
        ASSERT_NE(open(layer_, name) * set_band(1000), 0) << failure();
        EXPECT_EQ(row(999), std::vector<float>(5, 999.0F));
      }
      layer_.Close();

      write(path, false);
      EXPECT_THAT(failure(), StartsWith("cannot write " + path + ": "));
      EXPECT_EQ(folder_.names(), links) << "the links";
      EXPECT_TRUE(fs::is_empty(folder_.file("sub"))) << "the file";
    }
  }
}

TEST_F(OutputTest, ReplacesWhatBelongsToTheFileAloneAndNothingElse) {
  // Some of these GDAL takes for parts of the raster, others are like them: another raster's.
  const std::vector<std::string> others = {
      "raster.IMD", "raster.RPB",      "raster.tfw",    "raster.tif.bak",   "raster.tiff.ovr",
      "raster.xml", "raster2.tif.msk", "raster2.tif",   "raster.ovr",       "raster.aux.xml",
      "raster.msk", "raster_RPC.TXT",  "other.tif.ovr", "other.tif.aux.xml"};
  make_raster(path_, 5, 4);
  put("raster.IMD", "version = \"28.1\";\nEND;\n");
  put("raster.RPB", "satId = \"QB02\";\nEND;\n");
  put("raster.tfw", "1\n0\n0\n-1\n0\n0\n");
  for (const std::string& name : others) {
    std::ofstream(folder_.file(name), std::ios::app);
  }
  for (const char* const own : {".aux.xml", ".ovr", ".msk"}) {
    put("raster.tif" + std::string(own));
  }
  EXPECT_EQ(create(layer_, path_, 5, 4, {"NO=SUCH_OPTION"}), 0);
  EXPECT_TRUE(fs::exists(path_ + ".ovr")) << "nothing was created";
  write(path_, true);
  EXPECT_THAT(folder_.names(), IsSupersetOf(others));
  EXPECT_THAT(folder_.names(), IsSupersetOf({"raster.tif"}));
  for (const char* const own : {".aux.xml", ".ovr", ".msk"}) {
    EXPECT_FALSE(fs::exists(path_ + own)) << own;
  }
}

TEST_F(OutputTest, AFileThatWasNotClosedIsRemoved) {
  float value = 1;
  for (const bool anew : {false, true}) {
    {
      CFileLayer layer(nullptr);
      ASSERT_NE(create(layer, path_, 5, 1000) * layer.WriteRow(&value, 0, 0, 1, 1), 0);
      if (anew) {  // which closes the former
        ASSERT_NE(create(layer, folder_.file("new"), 5, 4), 0);
      }
    }
    const std::string lost = anew ? folder_.file("new") : path_;
    EXPECT_EQ(failure(), "cannot write " + lost + ": it was not closed");
    EXPECT_EQ(open(layer_, path_) != 0, anew);
    EXPECT_FALSE(fs::exists(lost) || fs::exists(lost + ".hdr"));
  }
}

}  // namespace
