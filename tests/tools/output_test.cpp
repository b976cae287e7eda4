// How the tool writes: whole or not at all, nothing beside it, and saying how far it is.
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <thread>

#include "tool_run.h"

namespace {

using ::testing::HasSubstr;
using ::testing::MatchesRegex;
using ::testing::StartsWith;

constexpr const char* whole_progress =
    "0...10...20...30...40...50...60...70...80...90...100 - done.\n";

const std::vector<std::vector<std::string>> commands = {
    {"detect", "in.tif", "out.tif"},
    {"multilook", "in.tif", "out.tif", "--looks", "2x2"},
    {"spectrum", "in.tif", "out.tif"}};

std::vector<std::string> with(std::vector<std::string> arguments,
                              const std::vector<std::string>& more) {
  arguments.insert(arguments.end(), more.begin(), more.end());
  return arguments;
}

class Output : public ToolTest {
 protected:
  Output() {
    make("in.tif", 300, 200, GDT_Float32, [](int x, int y) { return Sample(1 + (x ^ y)); });
  }
};

TEST_F(Output, ShowsProgressOnlyWhenAsked) {
  for (const auto& command : commands) {
    const std::string warning = command[0] == "detect"
                                    ? "sarnum: warning: 'in.tif' holds real values: they are "
                                      "taken as amplitudes and squared\n"
                                    : "";
    EXPECT_EQ(run(with(command, {"--progress", "--overwrite"})).err, whole_progress + warning);
    EXPECT_THAT(run(with(command, {"-q", "--overwrite"})), IsSilentSuccess());
  }
}

TEST_F(Output, PicturesAreSmallAndNothingElseAppears) {
  make("wide.tif", 5000, 300, GDT_Float32, [](int x, int y) { return Sample(1 + x + y); });
  for (const auto& command : commands) {
    std::vector<std::string> arguments = with(command, {"-q", "--picture", "out.png"});
    arguments[1] = "wide.tif";
    EXPECT_THAT(run(with(arguments, {"--overwrite"})), IsSilentSuccess());
    const Raster raster = read("out.tif");
    const Raster picture = read("out.png");
    const int reduction = (std::max(raster.width, raster.height) + 2047) / 2048;
    EXPECT_EQ(picture.width, (raster.width + reduction - 1) / reduction);
    EXPECT_EQ(picture.height, (raster.height + reduction - 1) / reduction);
    EXPECT_EQ(open("out.png")->GetRasterBand(1)->GetRasterDataType(), GDT_Byte);
    if (command[0] != "spectrum") {
      EXPECT_LT(picture.at(0, 0).real(), picture.at(picture.width - 1, picture.height - 1).real());
    }
  }
  EXPECT_EQ(names(), (std::vector<std::string>{"in.tif", "out.png", "out.tif", "wide.tif"}));
}

TEST_F(Output, ReplacesAFileWithItsCompanions) {
  for (const auto& command : commands) {
    put_bytes("out.tif", "old");
    put_bytes("out.png", "old");
    put_bytes("out.tif.aux.xml", "<PAMDataset/>");
    put_bytes("out.tif.ovr", "old");
    chmod(file("out.tif").c_str(), 0640);
    EXPECT_THAT(run(with(command, {"-q", "--overwrite", "--picture", "out.png"})),
                IsSilentSuccess());
    EXPECT_GT(read("out.tif").width, 0);
    EXPECT_GT(read("out.png").width, 0);
    struct stat status {};
    stat(file("out.tif").c_str(), &status);
    EXPECT_EQ(status.st_mode & 0777U, 0640U);
    EXPECT_EQ(names(), (std::vector<std::string>{"in.tif", "out.png", "out.tif"}));
  }
}

TEST_F(Output, WritesThroughALink) {
  std::filesystem::create_directory(file("there"));
  std::filesystem::create_symlink("there/real.tif", file("out.tif"));
  EXPECT_EQ(run(commands[1]).status, 0);
  EXPECT_TRUE(std::filesystem::is_symlink(file("out.tif")));
  EXPECT_EQ(read("there/real.tif").width, 150);
}

TEST_F(Output, TakesCreationOptions) {
  for (const auto& command : commands) {
    EXPECT_THAT(
        run(with(command, {"-q", "--overwrite", "--co", "COMPRESS=DEFLATE", "--co", "TILED=YES"})),
        IsSilentSuccess());
    const auto output = open("out.tif");
    EXPECT_STREQ(output->GetMetadataItem("COMPRESSION", "IMAGE_STRUCTURE"), "DEFLATE");
    int block_width = 0;
    int block_height = 0;
    output->GetRasterBand(1)->GetBlockSize(&block_width, &block_height);
    EXPECT_EQ(block_width, 256);
  }
  EXPECT_THAT(run({"detect", "in.tif", "jpeg.tif", "-q", "--co", "COMPRESS=JPEG"}).err,
              StartsWith("sarnum: error: cannot write 'jpeg.tif'"));
  EXPECT_EQ(names(), (std::vector<std::string>{"in.tif", "out.tif"}));
}

TEST_F(Output, AFailingWriteLeavesTheOldFile) {
  put_bytes("out.tif", "old");
  put_bytes("out.png", "old");
  for (const auto& command : commands) {
    for (const auto& [command_options, limit] :
         std::vector<std::pair<std::vector<std::string>, long>>{
             {{"-q", "--overwrite"}, 9000},
             {{"-q", "--overwrite", "--co", "COMPRESS=DEFLATE"}, 3000},
             {{"-q", "--overwrite", "--picture", "out.png"}, 1000}}) {
      const ToolRun finished = run(with(command, command_options), limit);
      EXPECT_EQ(finished.status, 1);
      EXPECT_THAT(finished.err, MatchesRegex("sarnum: error: [^\n]*'out[^\n]+\n"));
      EXPECT_EQ(bytes("out.tif"), "old");
      EXPECT_EQ(bytes("out.png"), "old");
      EXPECT_EQ(names(), (std::vector<std::string>{"in.tif", "out.png", "out.tif"}));
    }
  }
}

/// A run that takes about a second, interfered with once it has begun to write.
class InterruptedOutput : public Output {
 protected:
  InterruptedOutput() {
    make("in.tif", 4096, 4096, GDT_Float32, [](int x, int y) { return Sample(1 + (x ^ y)); });
  }

  /// @return the status of the process
  int interfere(const std::vector<std::string>& options, const std::function<void(pid_t)>& act) {
    const pid_t tool =
        start(with({"spectrum", "in.tif", "out.tif", "--picture", "out.png"}, options),
              streams_.file("out"), streams_.file("err"));
    const auto temporaries = [this] {
      const std::vector<std::string> present = names();
      return std::count_if(present.begin(), present.end(),
                           [](const std::string& name) { return name.starts_with(".sarnum-"); });
    };
    for (int waits = 0; temporaries() < 2 && waits < 10000; ++waits) {
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    EXPECT_EQ(temporaries(), 2);
    act(tool);
    int status = 0;
    waitpid(tool, &status, 0);
    return status;
  }

 private:
  TemporaryFolder streams_;
};

TEST_F(InterruptedOutput, ASignalLeavesNothingBehind) {
  put_bytes("out.tif", "old");
  for (const int number : {SIGTERM, SIGINT, SIGHUP}) {
    const int status = interfere({"--overwrite"}, [number](pid_t tool) { kill(tool, number); });
    EXPECT_TRUE(WIFSIGNALED(status));
    EXPECT_EQ(WTERMSIG(status), number);
    EXPECT_EQ(names(), (std::vector<std::string>{"in.tif", "out.tif"}));
    EXPECT_EQ(bytes("out.tif"), "old");
  }
}

TEST_F(InterruptedOutput, AFileThatAppearsMeanwhileIsKeptAndTheOtherOutputTakenBack) {
  const int status = interfere({}, [this](pid_t) { put_bytes("out.png", "someone else's"); });
  EXPECT_EQ(WEXITSTATUS(status), 1);
  EXPECT_EQ(names(), (std::vector<std::string>{"in.tif", "out.png"}));
  EXPECT_EQ(bytes("out.png"), "someone else's");
}

TEST_F(Output, ReadsSidecarsOfTheInputAndWritesNone) {
  put_bytes("in.tif.aux.xml",
            "<PAMDataset><GeoTransform>100, 2, 0, 200, 0, -2</GeoTransform></PAMDataset>");
  const std::string before = bytes("in.tif");
  EXPECT_EQ(run(commands[1]).status, 0);
  EXPECT_THAT(run({"info", "in.tif"}).out, HasSubstr("origin 100, 200, pixel size 2 x -2"));
  EXPECT_THAT(run({"info", "out.tif"}).out, HasSubstr("origin 100, 200, pixel size 4 x -4"));
  EXPECT_EQ(names(), (std::vector<std::string>{"in.tif", "in.tif.aux.xml", "out.tif"}));
  EXPECT_EQ(bytes("in.tif"), before);
}

TEST_F(Output, HelpAndVersionGoToStandardOutput) {
  EXPECT_THAT(run({"--version"}).out, MatchesRegex("sarnum [0-9]+\\.[0-9]+\\.[0-9]+ [^\n]+\n"));
  for (const char* const command : {"detect", "multilook", "spectrum", "info"}) {
    const ToolRun help = run({command, "--help"});
    EXPECT_THAT(help, IsSilentSuccess());
    EXPECT_THAT(help.out, HasSubstr("Example:\n  sarnum " + std::string(command)));
  }
}

}  // namespace
