// sarnum multilook: the values, and everything that must follow the pixels.
#include <algorithm>
#include <utility>

#include "tool_run.h"

namespace {

TEST_F(ToolTest, MultilookAverages) {
  make("in.tif", 37, 41, GDT_Float32, [](int x, int y) { return Sample(x + 100 * y); });
  const auto middle = [](int look, int looks, int size) {
    return (look * looks + std::min((look + 1) * looks, size) - 1) / 2.0;
  };
  for (const auto& [across, down] : {std::pair{1, 1}, {4, 3}, {5, 7}, {2, 36}, {50, 1}}) {
    const auto mean = [&, width = across, height = down](int x, int y) {
      return middle(x, width, 37) + 100 * middle(y, height, 41);
    };
    const std::string looks = std::to_string(across) + "x" + std::to_string(down);
    SCOPED_TRACE(looks);
    run_silently("multilook in.tif out.tif --overwrite --looks " + looks);
    expect_samples("out.tif", (36 + across) / across, (40 + down) / down, mean, 1e-3);
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
  run_silently("multilook placed.vrt placed.tif -q --looks 4x5");
  run_silently("multilook points.vrt points.tif --looks 2x5");
  EXPECT_THAT(
      expect_report("placed.tif",
                    {"GeoTransform =\n  500000, 40, 5\n  4600000, -8, -100\n", "ID[\"EPSG\",32631]",
                     "  MISSION=S1\n", "  POLARISATION=VV\n", "Description = sigma0\n",
                     "Unit Type: m2/m2\n", "NoData Value=-1\n", "Offset: 2,   Scale:0.5\n"}),
      ::testing::Not(HasSubstr("STATISTICS")));
  expect_report("points.tif", {"(0.5,1) -> (3.01,39.95,0)", "(9.5,3) -> (3.19,39.85,0)",
                               "ID[\"EPSG\",4326]", "  LINE_OFF=1.5\n", "  SAMP_OFF=4.5\n",
                               "  LINE_SCALE=2\n", "  SAMP_SCALE=5\n", "  HEIGHT_SCALE=10\n"});
}

}  // namespace
