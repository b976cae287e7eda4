// Headers that say what is not so: the tool and the library refuse such a file in one line and
// little memory, and the tool writes nothing.
#include <sarnum/host/standalone.h>
#include <sarnum/sarnum.h>
#include <sys/resource.h>

#include <cstring>
#include <map>

#include "../tools/tool_run.h"

namespace {

/// A TIFF with another value of a tag, or place of its values; empty when it has no such tag.
std::string with_tag(std::string tiff, std::uint32_t tag, std::uint32_t value) {
  std::uint32_t directory = 0;
  std::memcpy(&directory, &tiff[4], 4);
  for (char* entry = &tiff[directory + 2]; entry + 12 <= &tiff.back(); entry += 12) {
    if (std::memcmp(entry, &tag, 2) == 0) {
      std::memcpy(entry + 2, "\4", 2);  // 32 bits unsigned
      std::memcpy(entry + 8, &value, 4);
      return tiff;
    }
  }
  return "";
}

// Widths, heights, bits, compression, places and sizes of strips and tiles, bands, widths of tiles.
const std::map<std::uint32_t, std::vector<std::uint32_t>> tags = {
    {256, {0, 0x7fffffff, 0x80000001, 0xffffffff}},
    {257, {0, 0x80000001, 0xffffffff}},
    {258, {0, 31, 64}},
    {259, {5, 9999}},
    {273, {100000, 0xfffffff0}},
    {277, {0, 2, 1000}},
    {279, {100000, 0xfffffff0}},
    {322, {0, 0x7ffffff0}},
    {324, {100000, 0xfffffff0}},
    {325, {5, 100000, 0xfffffff0}}};

const char* const envi_headers[] = {
    "samples = 0\nlines = 40\ndata type = 4\n",
    "samples = -64\nlines = 40\ndata type = 4\n",
    "samples = 2147483647\nlines = 2147483647\ndata type = 4\n",
    "samples = 2147483648\nlines = 40\ndata type = 4\n",
    "samples = 64\nlines = 41\ndata type = 4\n",
    "samples = 64\nlines = 2147483647\ndata type = 4\n",
    "samples = 64\nlines = 40\ndata type = 5\n",
    "samples = 64\nlines = 40\ndata type = 4\nheader offset = 1\n",
    "samples = 64\nlines = 40\ndata type = 4\nheader offset = -1\n",
    "samples = 64\nlines = 40\ndata type = 4\nheader offset = 9999999999999999999\n",
    "samples = 64\nlines = 40\ndata type = 4\nbands = 2147483647\n"};

const std::array<const char*, 3> virtual_rasters[] = {
    {"0", "40", ""},
    {"64", "-1", ""},
    {"2147483648", "40", ""},
    {"64", "41", ""},
    {"2147483647", "2147483647", ""},
    {"64", "40", "<ImageOffset>1</ImageOffset>"},
    {"64", "40", "<ImageOffset>-1</ImageOffset>"},
    {"64", "40", "<LineOffset>2147483647</LineOffset>"},
    {"64", "40", "<PixelOffset>2147483647</PixelOffset>"},
    {"64", "40", "<PixelOffset>-4</PixelOffset>"}};

TEST_F(ToolTest, AFileThatLiesIsRefused) {
  std::map<std::string, std::string> lies;
  for (const char* const option : {"TILED=NO", "TILED=YES", "COMPRESS=DEFLATE"}) {
    make(
        "in.tif", 64, 40, GDT_Float32, [](int x, int y) { return Sample(1 + x + y); }, option);
    for (const auto& [tag, values] : tags) {
      for (const std::uint32_t value : values) {
        lies[CPLString().Printf("%s-%u-%u", option, tag, value)] =
            with_tag(bytes("in.tif"), tag, value);
      }
    }
    for (const std::size_t size : {4U, 8U, 100U, 500U}) {
      lies[CPLString().Printf("%s-%zu", option, size)] = bytes("in.tif").substr(0, size);
    }
  }
  std::erase_if(lies, [](const auto& lie) { return lie.second.empty(); });
  const std::string samples(64 * 40 * 4, '?');
  for (const std::string header : envi_headers) {
    const std::string name = CPLString().Printf("envi-%zu", lies.size());
    put_bytes(name + ".hdr", "ENVI\nbands = 1\n" + header);
    lies[name + ".img"] = samples;
  }
  put_bytes("raw", samples);
  for (const auto& [width, height, layout] : virtual_rasters) {
    lies[CPLString().Printf("virtual-%zu", lies.size())] =
        std::string("<VRTDataset rasterXSize='") + width + "' rasterYSize='" + height +
        "'><VRTRasterBand dataType='Float32' subClass='VRTRawRasterBand'><SourceFilename "
        "relativeToVRT='1'>raw</SourceFilename>" +
        layout + "</VRTRasterBand></VRTDataset>";
  }
  for (const auto& [name, content] : lies) {
    SCOPED_TRACE(name);
    put_bytes(name, content);
    const std::vector<std::string> before = names();
    const ToolRun finished = run("multilook '" + name + "' out.tif --looks 2x2 -q");
    EXPECT_EQ(finished.status, 1);
    // AddressSanitizer tells of allocations that fail in a line of its own.
    EXPECT_THAT(finished.err, MatchesRegex("(==[^\n]+\n)?sarnum: error: [^\n]+\n"));
    EXPECT_EQ(names(), before);
    CCustomMeterInfo meter;
    sarnum::host::clear_raster_failure();
    NoncoherentAccumulationR(file("out.tif").c_str(), file(name).c_str(), 2, 2, &meter);
    EXPECT_STRNE(sarnum::host::raster_failure(), "");
    std::filesystem::remove(file("out.tif"));
    std::filesystem::remove(file(name));
  }
  for (const int whose : {RUSAGE_SELF, RUSAGE_CHILDREN}) {
    rusage use{};
    getrusage(whose, &use);
    EXPECT_LT(use.ru_maxrss, 1 << 20) << "KiB";
  }
}

}  // namespace
