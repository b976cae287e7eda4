// How the tool writes: whole or not at all, nothing beside it, and saying how far it is.
#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <future>
#include <thread>
#include <tuple>
#include <utility>

#include "../tools/sarnum/progress.h"
#include "tool_run.h"

namespace {

const std::vector<std::string> commands = {"detect in.tif out.tif --overwrite ",
                                           "multilook in.tif out.tif --overwrite --looks 2x2 ",
                                           "spectrum in.tif out.tif --overwrite "};

const SampleAt texture = [](int x, int y) { return Sample(1 + (x ^ y)); };

TEST_F(ToolTest, ShowsProgressOnlyWhenAsked) {
  make("in.tif", 300, 200, GDT_Float32, texture);
  const std::string whole = "0...10...20...30...40...50...60...70...80...90...100 - done.\n";
  for (const std::string& command : commands) {
    const std::string warning = run(command).err;
    EXPECT_EQ(warning.empty(), !command.starts_with("detect"));
    EXPECT_EQ(run(command + "--progress").err, whole + warning);
    run_silently(command + "-q");
  }
}

TEST_F(ToolTest, AWarningIsOneLineOrSilenced) {
  make("large.tif", 4, 4, GDT_CFloat64, [](int x, int) { return Sample(1e30 * x, 1.0); });
  make("flat.tif", 4, 4, GDT_Float32, [](int, int) { return Sample(1); });
  make_virtual("labelled.vrt", 8, 8, "Float32", "", "<UnitType>dB</UnitType>");
  make_virtual("gaps.vrt", 8, 8, "Float32", "", "<NoDataValue>-99</NoDataValue>");
  for (const auto& [command, text] :
       {std::pair{"multilook labelled.vrt out.tif --overwrite --looks 2x2", "decibels"},
        {"multilook gaps.vrt out.tif --overwrite --looks 2x2", "nodata value -99"},
        {"detect flat.tif out.tif --overwrite --intensity", "amplitudes and squared"},
        {"detect large.tif out.tif --overwrite", "12 samples of 'out.tif'"}}) {
    EXPECT_THAT(run(command).err,
                MatchesRegex(std::string("sarnum: warning: [^\n]*") + text + "[^\n]*\n"));
    run_silently(std::string(command) + " -q");
  }
}

TEST_F(ToolTest, ClosedStandardStreamsDoNotEndInTheOutput) {
  make("in.tif", 300, 200, GDT_Float32, texture);
  const std::string detect = "detect in.tif -q --co TILED=YES ";
  EXPECT_EQ(run(detect + "open.tif",
                "\"$tool\" info in.tif >&-; [ $? = 1 ] && "
                "\"$tool\" detect in.tif closed.tif --progress --co TILED=YES >&- 2>&- <&- &&")
                .status,
            0);
  EXPECT_EQ(bytes("closed.tif"), bytes("open.tif"));
}

TEST_F(ToolTest, ReplacesAFileWithItsCompanionsAndDrawsAPicture) {
  const auto mode = std::filesystem::perms{0640};
  make("in.tif", 5000, 301, GDT_Float32, [](int x, int y) { return Sample(1 + x + y); });
  for (const std::string& command : commands) {
    for (const char* const name : {"out.tif", "out.png", "out.tif.ovr", "out.tif.aux.xml"}) {
      put_bytes(name, "old");
    }
    std::filesystem::permissions(file("out.tif"), mode);
    run_silently(command + "-q --picture out.png --co COMPRESS=DEFLATE --co TILED=YES");
    EXPECT_THAT(names(), ElementsAre("in.tif", "out.png", "out.tif"));
    expect_report("out.tif", {"COMPRESSION=DEFLATE", "=256x256"});
    EXPECT_EQ(std::filesystem::status(file("out.tif")).permissions(), mode);
    const Raster raster = read("out.tif");
    Raster picture = read("out.png");
    const int reduction = (raster.width + 2047) / 2048;
    EXPECT_EQ(picture.width, (raster.width + reduction - 1) / reduction);
    EXPECT_EQ(picture.height, (raster.height + reduction - 1) / reduction);
    if (!command.starts_with("spectrum")) {
      EXPECT_LT(picture.at(0, 0).real(), picture.at(picture.width - 1, picture.height - 1).real());
    }
  }
}

TEST_F(ToolTest, WritesThroughALinkAndNothingBesideTheInput) {
  make("in.tif", 30, 20, GDT_Float32, texture);
  put_bytes("in.tif.aux.xml",
            "<PAMDataset><GeoTransform>100, 2, 0, 200, 0, -2</GeoTransform></PAMDataset>");
  std::filesystem::create_directory(file("there"));
  std::filesystem::create_symlink("there/real.tif", file("out.tif"));
  const std::string before = bytes("in.tif");
  EXPECT_EQ(run(commands[1]).status, 0);
  EXPECT_TRUE(std::filesystem::is_symlink(file("out.tif")));
  EXPECT_THAT(run("info there/real.tif").out, HasSubstr("origin 100, 200, pixel size 4 x -4"));
  EXPECT_THAT(names(), ElementsAre("in.tif", "in.tif.aux.xml", "out.tif", "there"));
  EXPECT_EQ(bytes("in.tif"), before);
}

/// What a terminal shows that was sent these characters.
std::string screen(const std::string& characters) {
  std::string line;
  std::size_t at = 0;
  for (const char c : characters) {
    line.resize(std::max(line.size(), at + 1), ' ');
    c == '\b' ? --at : static_cast<std::size_t>(line.at(at++) = c);
  }
  return line.substr(0, line.find_last_not_of(" \n") + 1);
}

TEST(Progress, TellsTheTimeLeftOfLongWork) {
  using sarnum::tool::Progress;
  static int now = 0;
  Progress progress(true, true,
                    [] { return Progress::Clock::time_point(std::chrono::seconds(now)); });
  std::string sent;
  for (const auto& [seconds, fraction, shown] :
       {std::tuple{3, 0.05, "0.."},
        {10, 0.1, "0...10 90 s left"},
        {400, 0.11, "0...10 54 min left"},
        {401, 0.41, "0...10...20...30...40 10 min left"},
        {402, 0.99, "0...10...20...30...40...50...60...70...80...90... 4 s left"}}) {
    now = seconds;
    testing::internal::CaptureStderr();
    progress.update(fraction);
    sent += testing::internal::GetCapturedStderr();
    EXPECT_EQ(screen(sent), shown);
  }
  testing::internal::CaptureStderr();
  progress.finish();
  EXPECT_EQ(screen(sent + testing::internal::GetCapturedStderr()),
            "0...10...20...30...40...50...60...70...80...90...100 - done.");
}

TEST_F(ToolTest, AnInterruptedRunLeavesNothingBehind) {
  // Progress goes into a pipe that holds no more than its first half: the tool cannot end before
  // the pipe is read, which is when it has been interfered with.
  make("in.tif", 64, 64, GDT_Float32, texture);
  const auto is_temporary = [](const std::string& name) { return name.starts_with(".sarnum-"); };
  const auto interfere = [this](const std::string& command, int progress, int room,
                                const std::function<void(pid_t)>& act) {
    mkfifo(streams_.file("err").c_str(), 0600);
    const int pipe = ::open(streams_.file("err").c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
    const int filled = fcntl(pipe, F_GETPIPE_SZ) - room;
    std::string content(static_cast<std::size_t>(filled), '.');
    EXPECT_EQ(write(pipe, content.data(), content.size()), filled);
    auto ending = std::async(std::launch::async, [&] {
      return run(command + " in.tif out.tif --picture out.png --progress",
                 "echo $$ >\"$streams\"/pid;")
          .status;
    });
    for (int held = 0, waits = 0; held < filled + progress && waits < 60000; ++waits) {
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
      ioctl(pipe, FIONREAD, &held);
    }
    act(std::stoi(bytes(streams_.file("pid"))));
    std::filesystem::remove(streams_.file("err"));
    while (ending.wait_for(std::chrono::milliseconds(1)) != std::future_status::ready) {
      [[maybe_unused]] const auto drained = ::read(pipe, content.data(), content.size());
    }
    close(pipe);
    return ending.get();
  };
  // The first output is taken back when the second cannot be put in place.
  const auto appear = [this](pid_t) { put_bytes("out.png", "someone else's"); };
  EXPECT_EQ(interfere("spectrum", 1, 30, appear), 1);
  ASSERT_THAT(names(), ElementsAre("in.tif", "out.png"));
  EXPECT_EQ(bytes("out.png"), "someone else's");
  put_bytes("out.tif", "old");
  const auto mode = std::filesystem::perms{0600};
  std::filesystem::permissions(file("out.tif"), mode);
  std::filesystem::permissions(file("out.png"), mode);
  const std::string averaging = "multilook --looks 2x2 --nodata skip --overwrite";
  for (const auto& [number, command, progress] : {std::tuple{SIGTERM, averaging, 26},
                                                  {SIGINT, "spectrum --overwrite", 1},
                                                  {SIGINT, averaging, 26}}) {
    EXPECT_EQ(interfere(command, progress, 30,
                        [&, ending = number](pid_t tool) {
                          EXPECT_EQ(names().size(), 5U);
                          for (const std::string& name : names()) {
                            EXPECT_TRUE(!is_temporary(name) ||
                                        std::filesystem::status(file(name)).permissions() == mode);
                          }
                          kill(tool, ending);
                        }),
              128 + number);
    ASSERT_THAT(names(), ElementsAre("in.tif", "out.png", "out.tif"));
    EXPECT_EQ(bytes("out.tif"), "old");
  }
  // Once the files are in place, a signal cannot undo the work: there is room for all but "100".
  EXPECT_EQ(interfere(averaging, 48, 50,
                      [&](pid_t tool) {
                        while (is_temporary(names().front())) {
                          std::this_thread::sleep_for(std::chrono::milliseconds(1));
                        }
                        kill(tool, SIGTERM);
                      }),
            0);
  EXPECT_EQ(read("out.tif").width, 32);
}

TEST_F(ToolTest, ItsSparseOutputIsWhole) {
  make("in.tif", 300, 200, GDT_Float32, [](int, int) { return Sample(0); });
  for (const std::string& command : commands) {
    run_silently(command + "-q --co SPARSE_OK=TRUE");
    run_silently("stats out.tif");
    run_silently("info out.tif");
  }
}

}  // namespace
