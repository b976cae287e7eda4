// Whatever is wrong with the arguments or the files: one line that says so, the right exit
// status, and a folder in which nothing has changed.
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <ostream>

#include "tool_run.h"

namespace {

using ::testing::HasSubstr;
using ::testing::MatchesRegex;

struct BadCase {
  std::string name;
  int status;
  std::vector<std::string> arguments;
  std::string reason;  // part of the message
};

void PrintTo(const BadCase& bad, std::ostream* out) {
  *out << bad.name;
}

class BadRun : public ToolTest, public ::testing::WithParamInterface<BadCase> {
 protected:
  BadRun() {
    const SampleAt ramp = [](int x, int y) { return Sample(x + y, x); };
    make("real.tif", 64, 40, GDT_Float32, ramp);
    make("complex.tif", 8, 6, GDT_CInt16, ramp);
    make("short.img", 16, 16, GDT_Float32, ramp, "ENVI");
    std::filesystem::resize_file(file("short.img"), 1000);
    make("holes.tif", 64, 64, GDT_Float32, {}, "GTiff", {"SPARSE_OK=TRUE"});
    put_bytes("truncated.tif", bytes("real.tif").substr(0, 5000));
    // Cut where a strip ends, so that no read comes up short.
    make("whole.tif", 64, 512, GDT_Float32, ramp)->GetRasterBand(1)->SetNoDataValue(-1);
    std::array<const char*, 2> strips{"BLOCKYSIZE=16", nullptr};
    GDALDatasetUniquePtr(GetGDALDriverManager()->GetDriverByName("GTiff")->CreateCopy(
        file("cut.tif").c_str(), open("whole.tif").get(), FALSE, const_cast<char**>(strips.data()),
        nullptr, nullptr));
    put_bytes("cut.tif", bytes("cut.tif").substr(0, 64 * 4 * 16 * 20 + first_strip("cut.tif")));
    put_bytes("empty.tif", "");
    put_bytes("text.tif", "no raster\nat all\n");
    put_bytes("old.tif", "the old file");
    put_bytes("old.png", "the old picture");
    put_bytes("huge.vrt",
              "<VRTDataset rasterXSize='400000' rasterYSize='400000'>"
              "<VRTRasterBand dataType='Float64' band='1'><NoDataValue>0</NoDataValue>"
              "</VRTRasterBand></VRTDataset>");
    std::filesystem::create_directory(file("folder"));
    std::filesystem::create_symlink("real.tif", file("link.tif"));
    std::filesystem::create_symlink("circle.tif", file("circle.tif"));
    mkfifo(file("pipe.tif").c_str(), 0600);
  }

  std::size_t first_strip(const std::string& name) const {
    const auto dataset = open(name);
    return std::stoul(dataset->GetRasterBand(1)->GetMetadataItem("BLOCK_OFFSET_0_0", "TIFF"));
  }

  std::vector<std::string> state() const {
    std::vector<std::string> state = names();
    for (const char* const name : {"real.tif", "old.tif"}) {
      state.push_back(bytes(name));
    }
    return state;
  }
};

TEST_P(BadRun, IsOneLineAndLeavesNoTrace) {
  const std::vector<std::string> before = state();
  const ToolRun finished = run(GetParam().arguments);
  EXPECT_EQ(finished.status, GetParam().status);
  EXPECT_THAT(finished.err, MatchesRegex("sarnum: error: [^\n]+\n"));
  EXPECT_THAT(finished.err, HasSubstr(GetParam().reason));
  EXPECT_EQ(finished.out, "");
  EXPECT_EQ(state(), before);
}

BadCase looks(const std::string& name, const std::string& value, const std::string& reason) {
  return {"looks_" + name, 2, {"multilook", "real.tif", "out.tif", "--looks=" + value}, reason};
}

BadCase option(const std::string& name, const std::vector<std::string>& options,
               const std::string& reason) {
  BadCase bad{name, 2, {"detect", "complex.tif", "out.tif"}, reason};
  bad.arguments.insert(bad.arguments.end(), options.begin(), options.end());
  return bad;
}

BadCase input(const std::string& name, const std::string& path, const std::string& reason) {
  return {"input_" + name, 1, {"detect", path, "old.tif", "--overwrite"}, reason};
}

BadCase output(const std::string& name, const std::string& path, const std::string& reason,
               int status = 1) {
  return {"output_" + name, status, {"detect", "complex.tif", path}, reason};
}

std::string name_of(const ::testing::TestParamInfo<BadCase>& info) {
  return info.param.name;
}

INSTANTIATE_TEST_SUITE_P(
    Arguments, BadRun,
    ::testing::Values(
        BadCase{"none", 2, {}, "subcommand"}, BadCase{"command", 2, {"sharpen", "a"}, "sharpen"},
        BadCase{"no_output", 2, {"detect", "real.tif"}, "OUTPUT"},
        BadCase{"no_looks", 2, {"multilook", "real.tif", "out.tif"}, "--looks"},
        BadCase{"looks_minus", 2, {"multilook", "real.tif", "out.tif", "--looks", "-1"}, "-"},
        looks("zero_across", "0x4", "at least one"), looks("zero_down", "4x0", "at least one"),
        looks("negative", "-1x2", "at least one"), looks("many", "1x37", "at most 36"),
        looks("words", "axb", "ACROSSxDOWN"), looks("one", "4", "ACROSSxDOWN"),
        looks("half", "4x", "ACROSSxDOWN"), looks("three", "4x4x4", "ACROSSxDOWN"),
        looks("fraction", "1.5x2", "ACROSSxDOWN"), looks("huge", "99999999999x1", "too large"),
        option("unknown", {"--sharp"}, "--sharp"),
        option("both_quantities", {"--amplitude", "--intensity"}, "--amplitude"),
        option("quiet_progress", {"-q", "--progress"}, "--progress"),
        option("co_form", {"--co", "COMPRESS"}, "NAME=VALUE"),
        option("co_name", {"--co", "=YES"}, "NAME=VALUE"),
        option("co_unknown", {"--co", "SHARPNESS=4"}, "SHARPNESS"),
        option("co_sidecar", {"--co", "TFW=YES"}, "second file"),
        option("picture_type", {"--picture", "a.jpg"}, "PNG"),
        BadCase{"picture_is_output",
                2,
                {"detect", "complex.tif", "a.png", "--picture", "./a.png"},
                "also the output"},
        BadCase{"two_readings", 2, {"info", "real.tif", "--decibel", "--amplitude"}, "at most 1"}),
    name_of);

INSTANTIATE_TEST_SUITE_P(
    Inputs, BadRun,
    ::testing::Values(
        input("missing", "no.tif", "No such file"), input("empty", "empty.tif", "is empty"),
        input("text", "text.tif", "text.tif"), input("truncated", "truncated.tif", "truncated.tif"),
        input("cut", "cut.tif", "is truncated"), input("short_raw", "short.img", "need 1024"),
        input("holes", "holes.tif", "incomplete"), input("folder", "folder", "is a folder"),
        input("pipe", "pipe.tif", "not a regular file"),
        BadCase{
            "multilook_missing", 1, {"multilook", "no.tif", "o.tif", "--looks", "2x2"}, "no.tif"},
        BadCase{"multilook_truncated",
                1,
                {"multilook", "truncated.tif", "old.tif", "--overwrite", "--looks", "2x2"},
                "truncated.tif"},
        BadCase{"multilook_complex",
                1,
                {"multilook", "complex.tif", "out.tif", "--looks", "2x2"},
                "sarnum detect complex.tif"},
        BadCase{"info_truncated", 1, {"info", "truncated.tif"}, "truncated.tif"},
        BadCase{"spectrum_huge", 1, {"spectrum", "huge.vrt", "out.tif", "-q"}, "GiB of memory"}),
    name_of);

INSTANTIATE_TEST_SUITE_P(
    Outputs, BadRun,
    ::testing::Values(output("exists", "old.tif", "--overwrite"),
                      output("folder", "folder", "is a folder"),
                      output("no_folder", "no/out.tif", "No such file"),
                      output("below_file", "real.tif/out.tif", "Not a directory"),
                      output("unwritable", "/proc/out.tif", "/proc"),
                      output("device", "/dev/null", "not a regular file"),
                      output("circle", "circle.tif", "symbolic links"),
                      output("is_input", "./complex.tif", "being read", 2),
                      output("virtual", "/vsimem/out.tif", "on disk"),
                      BadCase{
                          "output_link_to_input",
                          2,
                          {"multilook", "real.tif", "link.tif", "--looks", "2x2", "--overwrite"},
                          "being read"},
                      BadCase{"picture_exists",
                              1,
                              {"detect", "complex.tif", "o.tif", "--picture", "old.png"},
                              "old.png"},
                      BadCase{"picture_no_folder",
                              1,
                              {"spectrum", "real.tif", "o.tif", "--picture", "no/a.png"},
                              "No such file"}),
    name_of);

}  // namespace
