// Multilooking of files through the C++ layer: the values of the function in memory, and that no
// output remains of what was stopped or failed.
#include <gmock/gmock.h>
#include <sarnum/host/standalone.h>
#include <sarnum/sarnum.h>
#include <sys/resource.h>

#include <cmath>
#include <csignal>
#include <fstream>
#include <sarnum/cxx.hpp>

#include "same_value.h"
#include "temporary_folder.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;

constexpr int width = 700, height = 501;

std::vector<float> read(const std::string& path) {
  CFileLayer layer(nullptr);
  EXPECT_NE(layer.Open(path.c_str(), 272, 0, 0x80000000UL), 0) << path;
  std::vector<float> samples;
  for (int row = 0; row < layer.Height(); ++row, layer.ShiftBlock(1, 1)) {
    const auto* const of_row = static_cast<const float*>(layer.GetRowAddr(row));
    samples.insert(samples.end(), of_row, of_row + layer.Width());
  }
  return samples;
}

class MultilookFile : public testing::Test {
 protected:
  MultilookFile() {
    for (std::size_t i = 0; i < samples.size(); ++i) {
      samples[i] = i % 97 == 0 ? std::nanf("") : std::sin(static_cast<float>(i * i % 1009));
    }
    write(in);
  }

  void write(const std::string& path, const char* option = nullptr) {
    sarnum::host::set_creation_options(&option, option != nullptr ? 1 : 0);
    CFileLayer layer(nullptr);
    ASSERT_NE(layer.Create(path.c_str(), width, height, TD_FLOAT32, 273, 7, nullptr, 0), 0);
    for (int row = 0; row < height; ++row) {
      layer.WriteRow(&samples[static_cast<std::size_t>(row * width)], 0, row, width, 1);
    }
    layer.Close();
  }

  /// The reason why it failed.
  static std::string failure(const std::string& from, const std::string& to) {
    try {
      sarnum::multilook_file(from, to, {4, 4});
    } catch (const sarnum::Error& error) {
      EXPECT_EQ(error.status(), SARNUM_FILE_ERROR);
      return error.what();
    }
    return "none";
  }

  TemporaryFolder folder;
  std::string in = folder.file("in.tif"), out = folder.file("out.tif");
  std::vector<float> samples = std::vector<float>(width * height);
};

TEST_F(MultilookFile, HasTheValuesOfTheFunctionInMemory) {
  for (const sarnum::Looks& looks : {sarnum::Looks{1, 1},
                                     {3, 2, sarnum::Detection::intensity},
                                     {4, 4, sarnum::Detection::amplitude, true},
                                     {5, 50, sarnum::Detection::as_is, true},
                                     {SIZE_MAX, SIZE_MAX, sarnum::Detection::as_is, true}}) {
    const std::size_t columns = (width - 1) / looks.across + 1,
                      rows = (height - 1) / looks.down + 1;
    std::vector<float> expected(columns * rows);
    sarnum::multilook(sarnum::Image(samples.data(), width, height),
                      sarnum::Image(expected.data(), columns, rows), looks);
    for (const int threads : {1, 2, 5}) {
      sarnum::multilook_file(in, out, looks, {threads});
      EXPECT_TRUE(same_values(read(out), expected, false))
          << looks.across << " x " << looks.down << " on " << threads;
      std::filesystem::remove(out);
    }
  }
}

TEST_F(MultilookFile, LeavesNothingOfWhatIsStoppedAtAnyStep) {
  for (const int threads : {1, 2}) {
    std::vector<double> told;
    std::size_t stop_at = SIZE_MAX;
    const sarnum::Run run{threads, [&](double fraction) {
                            told.push_back(fraction);
                            return told.size() <= stop_at;
                          }};
    sarnum::multilook_file(in, out, {4, 20}, run);
    const auto whole = told;
    ASSERT_GE(whole.size(), 3U);
    EXPECT_EQ(whole.front(), 0.0);
    EXPECT_EQ(whole.back(), 1.0);
    EXPECT_TRUE(std::is_sorted(whole.begin(), whole.end()));
    for (stop_at = 0; stop_at < whole.size(); ++stop_at) {
      std::filesystem::remove(out);
      told.clear();
      EXPECT_THROW(sarnum::multilook_file(in, out, {4, 20}, run), sarnum::Cancelled);
      EXPECT_EQ(told.size(), stop_at + 1);
      EXPECT_THAT(folder.names(), ElementsAre("in.tif"));
    }
    sarnum::multilook_file(in, out, {4, 20});
    std::filesystem::remove(out);
  }
}

TEST_F(MultilookFile, NamesTheFileThatCannotBeRead) {
  const std::string missing = folder.file("missing.tif");
  EXPECT_EQ(failure(missing, out), "cannot open " + missing + ": No such file or directory.");
  write(in, "COMPRESS=DEFLATE");
  std::fstream(in, std::ios::in | std::ios::out | std::ios::binary).seekp(300000)
      << std::string(2000, 'x');
  EXPECT_THAT(failure(in, out), testing::MatchesRegex("cannot read row [0-9]+ of " + in + ": .+"));
  EXPECT_THAT(folder.names(), ElementsAre("in.tif"));
}

TEST_F(MultilookFile, NamesTheFileThatCannotBeWritten) {
  EXPECT_THAT(failure(in, folder.file("no folder/out.tif")), HasSubstr("no folder/out.tif: "));
  const auto old_handler = std::signal(SIGXFSZ, SIG_IGN);
  rlimit old_limit{};
  getrlimit(RLIMIT_FSIZE, &old_limit);
  rlimit limit = old_limit;
  limit.rlim_cur = 20000;
  setrlimit(RLIMIT_FSIZE, &limit);
  EXPECT_THAT(failure(in, out), HasSubstr("cannot write " + out + ": "));
  setrlimit(RLIMIT_FSIZE, &old_limit);
  std::signal(SIGXFSZ, old_handler);
  EXPECT_THAT(folder.names(), ElementsAre("in.tif"));
}

TEST_F(MultilookFile, RefusesAnOutputThatExists) {
  const std::string link = folder.file("link.tif"), in_memory = "/vsimem/there.tif";
  std::filesystem::create_symlink("nowhere.tif", link);
  write(in_memory);
  for (const std::string& there : {in, link, in_memory, folder.path().string()}) {
    EXPECT_EQ(failure(in, there),
              "cannot create " + there + ": it exists; remove it or choose another name.");
  }
  EXPECT_TRUE(same_values(read(in), samples, false));
  EXPECT_THAT(folder.names(), ElementsAre("in.tif", "link.tif"));
}

/// A failure of a file that the caller has open is not one of the call.
TEST_F(MultilookFile, IsNotMisledByFailuresOfOthers) {
  CFileLayer others(nullptr);
  others.Open(in.c_str(), 272, 0, 0x80000000UL);
  others.WriteRow(nullptr, 0, 0, 1, 1);
  ASSERT_STRNE(sarnum::host::raster_failure(), "");
  EXPECT_EQ(failure(in, out), "none");
}

}  // namespace
