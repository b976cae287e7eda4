// Whatever is wrong with the arguments or the files: one line that says so, the right exit
// status, and a folder in which nothing has changed.
#include <sys/stat.h>

#include <filesystem>
#include <utility>

#include "tool_run.h"

namespace {

const struct {
  int status;
  const char *arguments, *reason;
} bad_cases[] = {
    {2, "sharpen a", "no command 'sharpen'"},
    {2, "multilook real.tif out.tif --looks=4x0", "at least one"},
    {2, "multilook real.tif out.tif --looks=1x37", "at most 36"},
    {2, "multilook real.tif out.tif --looks=axb", "ACROSSxDOWN"},
    {2, "multilook real.tif out.tif --looks=99999999999x1", "too large"},
    {2, "multilook real.tif out.tif", "how many looks"},
    {2, "multilook real.tif out.tif --square", "give --spacing"},
    {2, "multilook real.tif out.tif --square --spacing 2x-3", "RANGExAZIMUTH"},
    {2, "multilook real.tif out.tif --square --spacing 1x1 --incidence 0", "degrees above 0"},
    {2, "multilook real.tif out.tif --square --spacing 1x1 --looks 4x4", "in all"},
    {2, "multilook real.tif out.tif --square --spacing 1x3 --looks 2", "at most 2 looks"},
    {2, "multilook real.tif out.tif --square --spacing 99x1", "at most 36 looks down"},
    {2, "multilook counts.vrt out.tif --square", "merely counts pixels, so"},
    {2, "multilook pole.vrt out.tif --square", "reaches to latitude 500, so"},
    {2, "multilook round.vrt out.tif --square", "spans 500 degrees of longitude, so"},
    {2, "multilook wide.vrt out.tif --square", "spans 50000 km, so"},
    {2, "multilook real.tif out.tif --looks 2x2 --spacing 1x1", "--square"},
    {2, "multilook real.tif out.tif --looks 2x2 --nodata maybe", "maybe"},
    {2, "multilook real.tif - --looks 2x2", "standard output takes none"},
    {2, "detect complex.tif out.tif --picture -", "standard output takes none"},
    {2, "info -", "/vsistdin/"},
    {2, "detect complex.tif out.tif --co COMPRESS", "NAME=VALUE"},
    {2, "detect complex.tif out.tif --co TFW=YES", "second file"},
    {2, "detect complex.tif out.tif --co PROFILE=BASELINE", "would drop"},
    {2, "multilook real.tif out.tif --look=2x2", "no option '--look"},
    {2, "info real.tif '' --look", "no option '--look'"},
    {2, "detect complex.tif a.png --picture ./a.png", "also the output"},
    {1, "detect no.tif old.tif --overwrite", "No such file"},
    {1, "detect empty.tif old.tif --overwrite", "is empty"},
    {1, "detect truncated.tif old.tif --overwrite", "truncated.tif"},
    {1, "detect cut.tif old.tif --overwrite", "truncated"},
    {1, "detect holes.tif old.tif --overwrite", "incomplete"},
    {1, "stats round_holes.vrt", "holes.tif' is incomplete"},
    {1, "stats MEM:::DATAPOINTER=8,PIXELS=8,LINES=8", "cannot open"},
    {1, "detect folder old.tif --overwrite", "is a folder"},
    {1, "info complex.zarr", "/d_image'"},
    {1, "info real.zarr", "/c_image'"},
    {1, "info old.png", "'old.png': it is not recognized"},
    {1, "multilook truncated.tif out.tif --looks 2x2", "truncated.tif"},
    {1, "detect complex.tif /proc/out.tif", "/proc"},
    {1, "detect pipe.tif old.tif --overwrite", "not a regular file"},
    {1, "multilook complex.tif out.tif --looks 2x2", "sarnum detect complex.tif"},
    {1, "multilook \"it's complex.tif\" out.tif --looks 2x2", "detect 'it'\\''s complex.tif'"},
    {1, "spectrum --inverse sides.vrt out.tif", "powers of two"},
    {1, "spectrum --inverse complex.tif out.tif", "TD_COMPLEX_INT16"},
    {1, "detect complex.tif old.tif", "--overwrite"},
    {1, "detect power.vrt old.tif --overwrite", "intensity already"},
    {1, "detect power.vrt old.tif --overwrite --amplitude", "--force"},
    {1, "detect complex.tif no/out.tif", "No such file"},
    {1, "detect complex.tif /vsimem/out.tif", "on disk"},
    {2, "detect complex.tif ./complex.tif", "being read"},
    {1, "detect complex.tif placed.tif --overwrite", "'placed.tfw' exists"},
    {2, "multilook outer.vrt real.tif --overwrite --looks 2x2", "being read"},
    {2, "multilook real.tif link.tif --overwrite --looks 2x2", "being read"},
    {1, "detect complex.tif out.tif --picture old.png", "old.png"},
};

TEST_F(ToolTest, ABadRunIsOneLineAndLeavesNoTrace) {
  const SampleAt ramp = [](int x, int y) { return Sample(x + y, x); };
  const SampleAt none = [](int, int) { return Sample(); };
  make("real.tif", 64, 40, GDT_Float32, ramp);
  make("complex.tif", 8, 6, GDT_CInt16, ramp);
  make("holes.tif", 64, 64, GDT_Float32, none, "SPARSE_OK=TRUE");
  make_virtual("sides.vrt", 48, 32, "CFloat32", "", "");
  make_virtual("round_holes.vrt", 64, 64, "Float32", "",
               "<SimpleSource><SourceFilename>holes.tif</SourceFilename></SimpleSource>");
  // Of several arrays the image is named: the complex one, or else not a table or a list.
  const auto add_array = [this](const std::string& name, const char* shape, const char* type) {
    const std::string group = name.substr(0, name.find('/'));
    std::filesystem::create_directories(file(name));
    put_bytes(group + "/.zgroup", R"({"zarr_format": 2})");
    put_bytes(name + "/.zarray",
              CPLString().Printf(R"({"zarr_format": 2, "shape": [%s], "chunks": [%s], "dtype": "%s",
                  "order": "C", "fill_value": 0, "compressor": null, "filters": null})",
                                 shape, shape, type));
  };
  for (const std::string group : {"complex.zarr", "real.zarr"}) {
    add_array(group + "/a_velocity", "90000, 3", "<f8");
    add_array(group + "/b_time", "999999", "<c8");
    add_array(group + "/c_image", "240, 180", "|u1");
  }
  add_array("complex.zarr/d_image", "60, 40", "<c8");
  for (const auto& [name, xml] :
       {std::pair{"power.vrt", "<Metadata><MDI key='SARNUM_QUANTITY'>intensity</MDI></Metadata>"},
        {"counts.vrt", "<GeoTransform>0, 1, 0, 0, 0, 1</GeoTransform>"},
        {"pole.vrt", "<SRS>EPSG:4326</SRS><GeoTransform>9, 1, 0, 0, 0, 10</GeoTransform>"},
        {"round.vrt", "<SRS>EPSG:4326</SRS><GeoTransform>0, 10, 0, 9, 0, -1</GeoTransform>"},
        {"wide.vrt", "<SRS>EPSG:3857</SRS><GeoTransform>0, 1e6, 0, 0, 0, 1</GeoTransform>"}}) {
    make_virtual(name, 50, 50, "Float32", xml, "");
  }
  put_bytes("truncated.tif", bytes("real.tif").substr(0, 5000));
  // Cut where a tile ends, so that no read comes up short.
  make("cut.tif", 64, 512, GDT_Float32, ramp, "TILED=YES");
  std::filesystem::resize_file(file("cut.tif"), bytes("cut.tif").size() - 256 * 256 * 4);
  put_bytes("empty.tif", "");
  put_bytes("placed.tfw", "");
  for (const auto& [name, source] :
       {std::pair{"inner.vrt", "real.tif"}, {"outer.vrt", "inner.vrt"}}) {
    make_virtual(name, 64, 40, "Float32", "",
                 std::string("<SimpleSource><SourceFilename>") + source +
                     "</SourceFilename></SimpleSource>");
  }
  std::filesystem::copy_file(file("complex.tif"), file("it's complex.tif"));
  put_bytes("old.tif", "the old file, ");
  put_bytes("old.png", "the old picture");
  std::filesystem::create_directory(file("folder"));
  std::filesystem::create_symlink("real.tif", file("link.tif"));
  mkfifo(file("pipe.tif").c_str(), 0600);
  const std::vector<std::string> before = names();
  for (const auto& [status, arguments, reason] : bad_cases) {
    SCOPED_TRACE(arguments);
    const ToolRun finished = run(arguments);
    EXPECT_EQ(finished.status, status);
    EXPECT_THAT(finished.err, MatchesRegex("sarnum: error: [^\n]+\n"));
    EXPECT_THAT(finished.err, HasSubstr(reason));
    EXPECT_EQ(finished.out, "");
    EXPECT_EQ(names(), before);
    EXPECT_EQ(bytes("old.tif") + bytes("old.png"), "the old file, the old picture");
  }
}

}  // namespace
