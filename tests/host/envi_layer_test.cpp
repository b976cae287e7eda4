// What is particular to rasters of flat samples: what their headers may say, and which header is
// whose.
#include <map>

#include "raster_files.h"
#include "sarnum/host/standalone.h"

namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::StartsWith;

class EnviTest : public LayerTest {
 protected:
  /// A file of so many zero bytes and a header of its own, opened; with the line on `word` changed.
  int open_with(const std::string& word, const std::string& value, std::size_t bytes = 3 + 12 * 4) {
    std::map<std::string, std::string> lines = {
        {"samples", "4"},   {"Lines ", "3"},       {"bands", "1"},     {"header  offset", "3"},
        {"data type", "4"}, {"interleave", "bsq"}, {"byte order", "1"}};
    lines[word] = value;
    std::ofstream header(folder_.file("raster.hdr"));
    header << "ENVI\r\n; a comment = { of no meaning\nband names = {\n one = 1,\n samples = 7}\n";
    for (const auto& [name, text] : lines) {
      header << name << " = " << text << "\r\n";
    }
    header.close();
    std::ofstream(path_, std::ios::binary) << std::string(bytes, '\0');
    return open(layer_, path_);
  }
};

TEST_F(EnviTest, HeadersAreUnderstoodOrRefusedBeforeAnythingIsMade) {
  const std::string most = "2147483647", more = "2147483648", endless = "99999999999999999999";
  for (const auto& [word, values] : std::map<std::string, std::vector<std::string>>{
           {"samples", {"0", "-4", "4.5", "four", "", most, more, endless, "{4"}},
           {"Lines ", {"0", "4", most}},
           {"bands", {"0", "2", most}},
           {"header  offset", {"-1", "4", "9223372036854775807", endless}},
           {"data type", {"0", "6", "7", "9", "16", "5", "14"}},
           {"interleave", {"xyz", "{}"}},
           {"byte order", {"2"}},
           {"file compression", {"1"}},
           {"file type", {"TIFF"}},
           {"major frame offsets", {"{0, 8}"}}}) {
    for (const std::string& value : values) {
      EXPECT_EQ(open_with(word, value), 0) << word << " = " << value;
      EXPECT_THAT(failure(), StartsWith("cannot open " + path_ + ": ")) << word << " = " << value;
    }
  }
  for (const auto& [word, value] : {std::pair{"samples", " 4"},
                                    {"interleave", "BIP"},
                                    {"bands", "1"},
                                    {"data type", "2"},
                                    {"File Type", "ENVI Standard"},
                                    {"minor frame offsets", "{0, 0}"}}) {
    EXPECT_NE(open_with(word, value), 0) << failure();
    EXPECT_EQ(layer_.Width() * 10 + layer_.Height(), 43);
  }
  open_with("bands", "2");
  EXPECT_THAT(failure(), HasSubstr("is truncated: it has 51 bytes"));
  EXPECT_THAT(sarnum::host::missing_samples(path_.c_str()), HasSubstr("is truncated"));
  open_with("bands", "1");
  EXPECT_STREQ(sarnum::host::missing_samples(path_.c_str()), "");
}

TEST_F(EnviTest, BytesOfEitherOrderAreReadFromWhereTheyBegin) {
  open_with("byte order", "1");
  std::fstream(path_, std::ios::binary | std::ios::in | std::ios::out).seekp(3 + 4 * 4)
      << std::string("\x40\x49\x0f\xdb", 4) << std::string("\xc0\x00\x00\x00", 4);
  ASSERT_NE(set_band(3), 0);
  EXPECT_THAT(row(1), ElementsAre(3.14159274f, -2.0f, 0.0f, 0.0f));
}

TEST_F(EnviTest, AHeaderGoesWithItsRasterAndNoOther) {
  float value = 7;
  open_with("samples", "4");
  EXPECT_NE(create(layer_, folder_.file("raster.ml"), 2, 2), 0);
  layer_.Close();
  const std::string sharing = folder_.file("raster.re");
  std::ofstream(sharing) << "the header is that of this one too";
  EXPECT_NE(create(layer_, path_, 2, 2), 0);
  layer_.Close();
  EXPECT_TRUE(std::filesystem::exists(folder_.file("raster.hdr")));
  std::filesystem::remove(sharing);
  std::filesystem::remove(path_ + ".hdr");
  open_with("samples", "4");
  EXPECT_THAT(folder_.names(),
              ElementsAre("raster.hdr", "raster.ml", "raster.ml.hdr", "raster.tif"));
  ASSERT_NE(create(layer_, path_, 2, 2) * layer_.WriteRow(&value, 1, 0, 1, 1), 0) << failure();
  layer_.Close();
  EXPECT_THAT(folder_.names(),
              ElementsAre("raster.ml", "raster.ml.hdr", "raster.tif", "raster.tif.hdr"));
  ASSERT_NE(open(layer_, path_), 0) << failure();
  EXPECT_THAT(row(0), ElementsAre(0.0f, 7.0f));
  layer_.Close();

  std::filesystem::create_directory(folder_.file("new.hdr"));
  EXPECT_EQ(create(layer_, folder_.file("new"), 2, 2), 0);
  EXPECT_THAT(failure(), StartsWith("cannot create " + folder_.file("new") + ": its header"));
  EXPECT_THAT(folder_.names(),
              ElementsAre("new.hdr", "raster.ml", "raster.ml.hdr", "raster.tif", "raster.tif.hdr"));
}

}  // namespace
