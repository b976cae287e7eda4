// sarnum multilook: the values, and everything that must follow the pixels.
#include <cmath>
#include <limits>
#include <utility>

#include "tool_run.h"

namespace {

constexpr double not_a_number = std::numeric_limits<double>::quiet_NaN();
bool is_gap(int x, int y) {
  return (x / 8 == 2 && y / 6 == 3) || (x * 7 + y * 13) % 5 == 0;
}

TEST_F(ToolTest, MultilookIsTheBlockAverageOfGdal) {
  const auto brightness = [](int x, int y) { return 100 + (x ^ y) + 0.1 * x; };
  make("whole.tif", 96, 72, GDT_Float32, brightness);
  make("gaps.tif", 96, 72, GDT_Float32,
       [&](int x, int y) { return is_gap(x, y) ? -1 : brightness(x, y); })
      ->GetRasterBand(1)
      ->SetNoDataValue(-1);
  for (const auto& [name, option] : {std::pair{"whole.tif", ""}, {"gaps.tif", " --nodata skip"}}) {
    const std::string gdal = std::string("average of ") + name;
    translate(name, gdal, "-r average -outsize 12 12");
    run_silently(std::string("multilook ") + name + " out.tif --overwrite --looks 8x6" + option);
    Raster reference = read(gdal);
    expect_samples(
        "out.tif", 12, 12,
        [&](int x, int y) {
          return reference.at(x, y) == -1.0 ? not_a_number : reference.at(x, y);
        },
        5e-5);
  }
}

TEST_F(ToolTest, MultilookUndoesAndMakesDecibels) {
  const auto power = [](int x, int y) { return x < 8 && y < 6 ? 0 : 1e-3 * (1 + (x ^ y)); };
  make("power.tif", 48, 36, GDT_Float32, power);
  auto decibels = make("decibels.tif", 48, 36, GDT_Float64, [&](int x, int y) {
    return is_gap(x, y) ? (x % 2 == 0 ? not_a_number : -99)
                        : (10 * std::log10(power(x, y)) - 3) * 2;
  });
  decibels->GetRasterBand(1)->SetNoDataValue(-99);
  decibels->GetRasterBand(1)->SetScale(0.5);
  decibels->GetRasterBand(1)->SetOffset(3);
  decibels.reset();
  const auto mean = [&](bool with_gaps, int column, int row) {
    double sum = 0;
    double count = 0;
    for (int i = 0; i < 48; ++i) {
      const int x = column * 8 + i % 8;
      const int y = row * 6 + i / 8;
      if (with_gaps || !is_gap(x, y)) {
        sum += power(x, y);
        ++count;
      }
    }
    return sum / count;
  };
  const struct {
    std::string arguments;
    bool with_gaps;
    bool as_decibels;
    std::vector<std::string> described;
  } cases[] = {
      {"power.tif out.tif --to-db", true, true, {"Unit Type: dB", "SARNUM_QUANTITY=decibel"}},
      {"decibels.tif out.tif --from-db --nodata skip", false, false, {"NoData Value=nan"}},
      {"decibels.tif out.tif --from-db --to-db --nodata skip", false, true, {"Unit Type: dB"}},
  };
  for (const auto& [arguments, with_gaps, as_decibels, described] : cases) {
    SCOPED_TRACE(arguments);
    EXPECT_EQ(run("multilook --looks 8x6 --overwrite " + arguments).err,
              as_decibels ? "sarnum: warning: 1 pixels of 'out.tif' have a mean of zero or less, "
                            "which has no decibels, and became nodata\n"
                          : "");
    expect_samples(
        "out.tif", 6, 6,
        [&, gaps = with_gaps, logarithm = as_decibels](int x, int y) {
          const double expected = mean(gaps, x, y);
          return !logarithm ? expected : expected > 0 ? 10 * std::log10(expected) : not_a_number;
        },
        as_decibels ? 1e-5 : 2e-8);
    EXPECT_THAT(expect_report("out.tif", described), ::testing::Not(HasSubstr("Offset")));
  }
}

TEST_F(ToolTest, MultilookTakesSignedBytesAsSigned) {
  make(
      "in.tif", 8, 6, GDT_Byte, [](int x, int) { return Sample(x < 7 ? 246 : 40); },
      "PIXELTYPE=SIGNEDBYTE");
  run_silently("multilook in.tif out.tif --looks 4x3 --nodata skip -q");
  expect_samples("out.tif", 2, 2, [](int x, int) { return x == 0 ? -10 : 2.5; });
  run_silently("multilook in.tif out.tif --looks 4x3 --from-db --overwrite");
  expect_samples("out.tif", 2, 2, [](int x, int) { return x == 0 ? 0.1F : 2500.075F; });
  EXPECT_THAT(run("info in.tif").out, HasSubstr("since it has values below zero"));
}

TEST_F(ToolTest, MultilookChoosesSquareLooks) {
  const auto placed = [this](const std::string& name, const std::string& dataset_xml) {
    make_virtual(name, 60, 60, "Float32", dataset_xml, "");
  };
  placed("plain.vrt", "");
  placed("map.vrt", "<GeoTransform>0, 6, 8, 0, -24, 18</GeoTransform>");
  placed("degrees.vrt",
         "<SRS>EPSG:4326</SRS><GeoTransform>3, .001, 0, 60.03, 0, -.001</GeoTransform>");
  const std::string noted =
      "<Metadata><MDI key='PIXEL_SPACING'>5</MDI><MDI key='LINE_SPACING'>20</MDI></Metadata>";
  placed("radar.vrt", noted);
  placed("counts.vrt", "<SRS>EPSG:4326</SRS><GeoTransform>0,1,0,0,0,-1</GeoTransform>" + noted);
  const std::string spacing = "plain.vrt --spacing 2.3x14.1 ";
  for (const auto& [arguments, printed] :
       {std::pair{spacing, "6x1, pixels of 13.8 x 14.1"},
        {spacing + "--incidence 39", "4x1, pixels of 14.62 x 14.1"},
        {spacing + "--looks 40", "12x2, pixels of 27.6 x 28.2"},
        {"plain.vrt --spacing 14x4", "2x7, pixels of 28 x 28"},
        {"map.vrt", "4x5, pixels of 98.95 x 98.49"},
        {"degrees.vrt", "2x1, pixels of 111.2 x 111.2"},
        {"radar.vrt", "4x1, pixels of 20 x 20"},
        {"counts.vrt --incidence 30", "2x1, pixels of 20 x 20"},
        {"plain.vrt --spacing 100x1 --looks 2", "1x2, pixels of 100 x 2"}}) {
    const ToolRun finished = run("multilook --overwrite --square " + arguments + " out.tif");
    EXPECT_EQ(finished.out, std::string("looks ") + printed + " on the ground\n") << arguments;
    EXPECT_EQ(finished.err.find("looks 1x2, pixels of 100 x 2 on the ground, are far from square: "
                                "one side is 50 times the other") == std::string::npos,
              arguments.find("100x1") == std::string::npos);
  }
}

TEST_F(ToolTest, MultilookCarriesOverWhatInfoShows) {
  make_virtual("placed.vrt", 20, 20, "Float32",
               "<SRS>EPSG:32631</SRS><GeoTransform>500000, 10, 1, 4600000, -2, -20</GeoTransform>"
               "<Metadata><MDI key='MISSION'>S1</MDI><MDI key='STATISTICS_MEAN'>5</MDI></Metadata>",
               "<Description>sigma0</Description><UnitType>m2/m2</UnitType>"
               "<NoDataValue>-1</NoDataValue><Scale>0.5</Scale><Offset>2</Offset><Metadata>"
               "<MDI key='POLARISATION'>VV</MDI><MDI key='STATISTICS_MAXIMUM'>5</MDI></Metadata>");
  std::string model;
  for (const std::string item : {"LINE", "SAMP", "LAT", "LONG", "HEIGHT"}) {
    const std::string polynomial = "_COEFF'>1 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0</MDI>";
    model += "<MDI key='" + item + "_OFF'>9.5</MDI><MDI key='" + item + "_SCALE'>10</MDI>" +
             "<MDI key='" + item + "_NUM" + polynomial + "<MDI key='" + item + "_DEN" + polynomial;
  }
  make_virtual("points.vrt", 20, 20, "Float32",
               "<GCPList Projection='EPSG:4326'><GCP Id='a' Pixel='1' Line='5' X='3.01' Y='39.95'/>"
               "<GCP Id='b' Pixel='19' Line='15' X='3.19' Y='39.85'/></GCPList>"
               "<Metadata domain='RPC'>" +
                   model + "</Metadata>",
               "");
  EXPECT_THAT(
      run("info placed.vrt").out,
      HasSubstr("\nSize:             20 x 20 pixels, 1 band\n"
                "Pixel type:       Float32, TypeData 7 (TD_FLOAT32)\n"
                "Georeferencing:   WGS 84 / UTM zone 31N (EPSG:32631), origin 500000, "
                "4600000, pixel size 10 x -20, rotation 1, -2\n"
                "Nodata:           -1\nUnit:             m2/m2\nEquivalent looks: not enough"));
  EXPECT_THAT(
      run("info --json placed.vrt").out,
      ::testing::AllOf(HasSubstr("\"file\": \"placed.vrt\",\n  \"driver\": \"VRT\""),
                       HasSubstr("\"authority_code\": \"EPSG:32631\",\n  \"geotransform\": "
                                 "[\n    500000.0,\n    10.0,\n    1.0,\n    4600000.0"),
                       HasSubstr("\"nodata\": -1.0,\n  \"mask\": false,\n  \"unit\": \"m2/m2\",\n  "
                                 "\"equivalent_looks\": null")));
  run_silently("multilook placed.vrt placed.tif -q --looks 4x5");
  run_silently("multilook points.vrt points.tif --looks 2x5");
  EXPECT_THAT(
      expect_report("placed.tif",
                    {"GeoTransform =\n  500000, 40, 5\n  4600000, -8, -100\n", "ID[\"EPSG\",32631]",
                     "  MISSION=S1\n", "  POLARISATION=VV\n", "Description = sigma0\n",
                     "SARNUM_LOOKS=4x5", "SARNUM_SOURCE=placed.vrt", "SARNUM_VERSION=1",
                     "Unit Type: m2/m2\n", "NoData Value=-1\n", "Offset: 2,   Scale:0.5\n"}),
      ::testing::Not(HasSubstr("STATISTICS")));
  expect_report("points.tif", {"(0.5,1) -> (3.01,39.95,0)", "(9.5,3) -> (3.19,39.85,0)",
                               "ID[\"EPSG\",4326]", "  LINE_OFF=1.5\n", "  SAMP_OFF=4.5\n",
                               "  LINE_SCALE=2\n", "  SAMP_SCALE=5\n", "  HEIGHT_SCALE=10\n"});
}

}  // namespace
