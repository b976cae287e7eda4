// Each call on a file failing in turn, a full disk, a limit of size, a killed process: whatever
// happens, the old files or the new ones are there, whole, and a failure is said in one line.
#include <fcntl.h>
#include <sarnum/host/standalone.h>
#include <sarnum/sarnum.h>

#include <csignal>
#include <cstdlib>
#include <map>
#include <sstream>
#include <tuple>

#include "../tools/tool_run.h"
#include "traced_child.h"

int tool_main(int argc, char** argv);

namespace {

const std::string in_process = "library ";
const std::string detect = "detect in.tif out.tif --overwrite -q --picture out.png";
const std::string multilook_virtual = "multilook in.vrt out.tif --looks 2x2 -q";
const std::string multilook_deflated =
    "multilook in.tif out.tif --looks 2x2 --overwrite -q --co COMPRESS=DEFLATE";
const std::string multilook_valid =
    "multilook in.vrt out.tif --looks 2x2 -q --nodata skip --from-db --to-db";
const std::string spectrum =
    "spectrum in.tif out.tif --overwrite -q --co TILED=YES --picture out.png";

/// Status 0 when all went well, 1 and a line when it did not.
int multilook_in_process(const char* option) {
  std::signal(SIGXFSZ, SIG_IGN);
  sarnum::host::set_creation_options(&option, 1);
  CCustomMeterInfo meter;
  const int result = NoncoherentAccumulationR("out.tif", "in.tif", 2, 2, &meter);
  const std::string failure = sarnum::host::raster_failure();
  if (!failure.empty()) {
    dprintf(STDERR_FILENO, "sarnum: error: %s\n", failure.c_str());
  }
  return result == 1 && failure.empty() ? 0 : 1;
}

/// The tool as part of this program, which spares loading GDAL thousands of times.
int run_tool(const std::string& command) {
  std::istringstream words(command);
  std::vector<std::string> arguments{"sarnum"};
  arguments.insert(arguments.end(), std::istream_iterator<std::string>(words), {});
  std::vector<char*> argv;
  for (std::string& argument : arguments) {
    argv.push_back(argument.data());
  }
  argv.push_back(nullptr);
  return tool_main(static_cast<int>(arguments.size()), argv.data());
}

class FileFaults : public ToolTest,
                   public ::testing::WithParamInterface<std::tuple<std::string, Fault>> {
 protected:
  using Contents = std::map<std::string, std::string>;

  const std::string& command() const { return std::get<0>(GetParam()); }
  Fault fault() const { return std::get<1>(GetParam()); }
  bool is_library() const { return command().starts_with(in_process); }

  Contents contents() const {
    Contents found;
    for (const std::string& name : names()) {
      found[name] = bytes(name);
    }
    return found;
  }

  void restore(const Contents& wanted) const {
    for (const std::string& name : names()) {
      std::filesystem::remove(file(name));
    }
    for (const auto& [name, content] : wanted) {
      put_bytes(name, content);
    }
  }

  Ending run_with(Fault kind, int n) {
    const std::string folder = std::filesystem::canonical(path()).string() + '/';
    return run_with_fault(folder, kind, n, [&] {
      const int log = ::open(streams_.file("err").c_str(), O_CREAT | O_TRUNC | O_WRONLY, 0600);
      if (chdir(folder.c_str()) == 0 && dup2(log, STDERR_FILENO) == STDERR_FILENO) {
        CPLSetConfigOption("GDAL_PAM_ENABLED", nullptr);
        const int status = is_library()
                               ? multilook_in_process(command().c_str() + in_process.size())
                               : run_tool(command());
#ifdef SARNUM_COVERAGE  // an orderly end tells which branches were taken, in files of some size
        if (kind != Fault::size_limit) {
          std::exit(status);
        }
#endif
        _exit(status);
      }
    });
  }

  void expect_old_or_new(const Ending& ending, const Contents& old, const Contents& fresh) const {
    Contents now = contents();
    const std::string said = bytes(streams_.file("err"));
    if (fault() == Fault::death) {
      EXPECT_EQ(ending.status, 128 + SIGKILL);
      std::erase_if(now, [](const auto& entry) { return entry.first.starts_with(".sarnum-"); });
      for (const auto& [name, content] : now) {
        EXPECT_TRUE((old.contains(name) && content == old.at(name)) || content == fresh.at(name));
      }
      EXPECT_GE(now.size(), old.size());
    } else if (ending.status == 0) {
      EXPECT_TRUE(now == fresh && said.empty()) << said;
      EXPECT_TRUE(fault() == Fault::error || fault() == Fault::part);
    } else {
      EXPECT_EQ(ending.status, 1);
      EXPECT_THAT(said, MatchesRegex("sarnum: error: [^\n]*(in|out)\\.[^\n]+\n"));
      EXPECT_THAT(said, ::testing::Not(HasSubstr("''")));
      // The library replaces its output at once, and takes what it cannot read for missing values.
      Contents gone = old;
      gone.erase("out.tif");
      EXPECT_TRUE(now == old ||
                  (is_library() && (now == gone || said.find("in.tif") != std::string::npos)))
          << said;
    }
  }
};

TEST_P(FileFaults, LeaveTheOldFilesOrTheNewOnes) {
  const SampleAt texture = [](int x, int y) { return Sample(1 + ((x * 7) ^ (y * 5)) % 97); };
  make("in.tif", 72, 60, GDT_Float32, texture);
  const std::string source =
      "<SimpleSource><SourceFilename relativeToVRT='1'>in.tif</SourceFilename></SimpleSource>";
  make_virtual("in.vrt", 72, 60, "Float32", "",
               source + "<MaskBand><VRTRasterBand dataType='Byte'>" + source +
                   "</VRTRasterBand></MaskBand>");
  const Contents inputs = contents();
  if (run_with(Fault::none, 0).status == 127) {
    GTEST_SKIP() << "processes cannot be traced here";
  }
  const Contents fresh = contents();
  Contents old = inputs;
  if (is_library() || command().find("--overwrite") != std::string::npos) {
    for (const auto& [name, content] : fresh) {
      old.emplace(name, "old");
    }
  }
  ASSERT_GT(fresh.size(), inputs.size());
  bool met_fault = true;
  for (int n = 1; met_fault && !HasFailure(); ++n) {
    SCOPED_TRACE(testing::Message() << command() << ", at " << n);
    restore(old);
    const Ending ending = run_with(fault(), n);
    met_fault = ending.met_fault;
    if (met_fault) {
      expect_old_or_new(ending, old, fresh);
    } else {
      EXPECT_EQ(ending.status, 0);
      EXPECT_TRUE(contents() == fresh);
      EXPECT_GT(n, 1);
    }
  }
}

/// Throws at its n-th call.
class ImpatientMeter : public CCustomMeterInfo {
 public:
  explicit ImpatientMeter(int calls) : calls_(calls) {}
  void SetText(const char*) override { count(); }
  void SetPos(int) override { count(); }
  void SetRange(int, int) override { count(); }
  void StepIt() override { count(); }

 private:
  void count() {
    if (--calls_ == 0) {
      throw *this;
    }
  }

  int calls_;
};

TEST_F(ToolTest, AMultilookThatItsMeterEndsLeavesNoOutput) {
  make("in.tif", 72, 60, GDT_Float32, [](int x, int y) { return Sample(x + y); });
  const std::string in = file("in.tif"), out = file("out.tif");
  std::string whole;
  for (int calls = 40; calls > 0; --calls) {
    ImpatientMeter meter(calls);
    bool was_ended = false;
    try {
      EXPECT_EQ(NoncoherentAccumulationR(out.c_str(), in.c_str(), 2, 2, &meter), 1);
    } catch (const ImpatientMeter&) {
      was_ended = true;
    }
    // The output is closed before the last call.
    constexpr int all_calls = 39;
    EXPECT_EQ(was_ended, calls <= all_calls);
    EXPECT_EQ(names().size(), calls < all_calls ? 1U : 2U) << calls;
  }
}

using ::testing::Combine;
using ::testing::Values;

constexpr auto error = Fault::error, full_disk = Fault::full_disk, size_limit = Fault::size_limit,
               part = Fault::part, death = Fault::death;

INSTANTIATE_TEST_SUITE_P(Library, FileFaults,
                         Combine(Values("library TILED=NO", "library TILED=YES",
                                        "library COMPRESS=DEFLATE"),
                                 Values(error, full_disk, size_limit, part)));
INSTANTIATE_TEST_SUITE_P(Tool, FileFaults,
                         Combine(Values(detect, multilook_deflated, spectrum),
                                 Values(full_disk, size_limit)));
INSTANTIATE_TEST_SUITE_P(Calls, FileFaults,
                         Combine(Values(multilook_virtual), Values(error, death)));
INSTANTIATE_TEST_SUITE_P(AllCalls, FileFaults,
                         Combine(Values(detect, multilook_deflated, multilook_valid, spectrum),
                                 Values(error, part, death)));

}  // namespace
