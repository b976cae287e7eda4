// Pixels that hold no sample, by whatever says so: every command leaves them out, or warns of them.
#include <cpl_json.h>

#include <cmath>
#include <limits>
#include <span>

#include "tool_run.h"

namespace {

constexpr double not_a_number = std::numeric_limits<double>::quiet_NaN();
constexpr int side = 64;

bool is_masked(int x, int y) {
  return x < 20 || (x < 40 && (x * 7 + y * 13) % 31 == 0);
}
bool is_nodata(int x, int y) {
  return x < 40 && (x + 3 * y) % 37 == 0;
}
bool is_gap(int x, int y) {
  return is_masked(x, y) || is_nodata(x, y);
}

class GapsTest : public ToolTest {
 protected:
  /// The image with its mask or alpha band, as a virtual raster or as a file with a second one for
  /// its mask.
  std::string make_masked(const std::string& form, GDALDataType type,
                          const SampleAt& stored) const {
    make("in.tif", side, side, type, stored);
    make("shown.tif", side, side, GDT_Byte, [](int x, int y) { return is_masked(x, y) ? 0 : 255; });
    const auto source = [](const std::string& name) {
      return "<SimpleSource><SourceFilename relativeToVRT='1'>" + name +
             "</SourceFilename></SimpleSource>";
    };
    const std::string mask = "<MaskBand><VRTRasterBand dataType='Byte'>" + source("shown.tif") +
                             "</VRTRasterBand></MaskBand>";
    const std::string alpha =
        "</VRTRasterBand><VRTRasterBand dataType='Byte' band='2'>"
        "<ColorInterp>Alpha</ColorInterp>" +
        source("shown.tif");
    make_virtual(
        " in.vrt", side, side, GDALGetDataTypeName(type), form != "alpha" ? mask : "",
        "<NoDataValue>-9</NoDataValue>" + source("in.tif") + (form == "alpha" ? alpha : ""));
    if (form != "file") {
      return " in.vrt";
    }
    translate(" in.vrt", " in.tif");
    return " in.tif";
  }

  CPLJSONObject json(const std::string& arguments) const {
    CPLJSONDocument document;
    EXPECT_TRUE(document.LoadMemory(run(arguments).out)) << arguments;
    return document.GetRoot();
  }
};

TEST_F(GapsTest, AreLeftOutByEveryCommand) {
  for (const GDALDataType type : {GDT_Float32, GDT_CFloat32}) {
    const bool is_complex = type == GDT_CFloat32;
    // What lies under the mask is large, and would be seen in any figure.
    const auto value = [&](int x, int y) {
      return Sample(7 + (is_complex ? (x * x + 5 * y * y) % 11 : 0), is_complex ? x % 5 : 0);
    };
    const auto stored = [&](int x, int y) {
      return is_masked(x, y) ? Sample(1e6) : is_nodata(x, y) ? Sample(-9) : value(x, y);
    };
    const auto filled = [&](Sample fill) {
      return [&, fill](int x, int y) { return is_gap(x, y) ? fill : value(x, y); };
    };
    make("zeros.tif", side, side, type, filled(0));
    make("nans.tif", side, side, type, filled(not_a_number));
    run_silently("spectrum zeros.tif expected.tif --overwrite");
    int gaps = 0;
    for (int i = 0; i < side * side; ++i) {
      gaps += is_gap(i % side, i / side) ? 1 : 0;
    }
    const std::vector<std::string> forms = {"virtual", "file", "alpha"};
    for (const std::string& form : std::span(forms).first(is_complex ? 1 : forms.size())) {
      SCOPED_TRACE(form + " " + GDALGetDataTypeName(type));
      const std::string input = std::string("'").append(make_masked(form, type, stored)) + "' ";
      const CPLJSONObject stats = json("stats --json " + input);
      EXPECT_EQ(stats.GetInteger("invalid"), gaps);
      EXPECT_TRUE(stats.GetBool("mask"));
      EXPECT_LE(stats.GetObj("max").GetDouble("value"), 18);
      EXPECT_EQ(json("info --json " + input).GetDouble("equivalent_looks"),
                json("info --json nans.tif").GetDouble("equivalent_looks", is_complex ? -1 : 0));

      run("detect -q --overwrite --picture out.png --amplitude " + input + "out.tif");
      expect_samples("out.tif", side, side, [&](int x, int y) {
        return is_gap(x, y) ? not_a_number : static_cast<float>(std::sqrt(std::norm(value(x, y))));
      });
      expect_report("out.tif", {"NoData Value=nan"});
      EXPECT_EQ(read("out.png").at(0, 0), 0.0);

      EXPECT_THAT(run("spectrum --overwrite " + input + "out.tif").err,
                  HasSubstr(std::to_string(gaps) + " samples of "));
      run("spectrum -q --nodata zero --overwrite " + input + "out.tif");
      Raster expected = read("expected.tif");
      expect_samples("out.tif", side, side, [&](int x, int y) { return expected.at(x, y); });
      if (is_complex) {
        continue;
      }
      EXPECT_THAT(run("multilook --looks 6x5 --overwrite " + input + "out.tif").err,
                  HasSubstr("nodata value -9 and a mask: "));
      run("multilook -q --looks 6x5 --nodata skip --overwrite " + input + "out.tif");
      // The mean of sevens is seven, of however many.
      expect_samples("out.tif", 11, 13, [](int x, int) { return x < 3 ? not_a_number : 7; });
    }
  }
}

}  // namespace
