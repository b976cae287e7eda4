// What a file says of its pixels after a command is what they are, or it is dropped with a word.
#include <gdal_alg.h>

#include <memory>

#include "tool_run.h"

namespace {

/// Where on the ground a place in a raster lies, by whatever places that raster.
std::array<double, 2> ground(GDALDataset& dataset, double x, double y) {
  CPLStringList options(CSLTokenizeString("RPC_PIXEL_ERROR_THRESHOLD=1e-10"));
  const std::unique_ptr<void, decltype(&GDALDestroyGenImgProjTransformer)> transformer(
      GDALCreateGenImgProjTransformer2(GDALDataset::ToHandle(&dataset), nullptr, options.List()),
      GDALDestroyGenImgProjTransformer);
  double z = 0;
  int good = 0;
  EXPECT_TRUE(transformer != nullptr &&
              GDALGenImgProjTransform(transformer.get(), FALSE, 1, &x, &y, &z, &good) && good);
  return {x, y};
}

void expect_equal(const std::array<double, 2>& found, const std::array<double, 2>& wanted) {
  for (const std::size_t i : {0U, 1U}) {
    EXPECT_NEAR(found[i], wanted[i], 1e-9 * (1 + std::abs(wanted[i])));
  }
}

TEST_F(ToolTest, EveryPlaceStaysWhereItWas) {
  std::string model;
  for (const std::string item : {"LINE", "SAMP", "LAT", "LONG", "HEIGHT"}) {
    const std::string rest = " 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0</MDI>";
    model += "<MDI key='" + item + "_OFF'>9.5</MDI><MDI key='" + item + "_SCALE'>10</MDI>" +
             "<MDI key='" + item + "_NUM_COEFF'>" + (item == "LINE" ? "0 0 1" : "0 1 0") + rest +
             "<MDI key='" + item + "_DEN_COEFF'>1 0 0" + rest;
  }
  for (const std::string& place :
       {std::string("<SRS>EPSG:32631</SRS><GeoTransform>5e5, 10, 0, 4.6e6, 0, -20</GeoTransform>"),
        std::string("<SRS>EPSG:32631</SRS><GeoTransform>5e5, 10, 1, 4.6e6, -2, 20</GeoTransform>"),
        std::string("<GCPList Projection='EPSG:4326'><GCP Pixel='0.5' Line='0.5' X='3' Y='40'/>"
                    "<GCP Pixel='19' Line='1' X='4' Y='40'/><GCP Pixel='2' Line='18' X='3' Y='39'/>"
                    "</GCPList>"),
        "<Metadata domain='RPC'>" + model + "</Metadata>"}) {
    for (const std::string kind : {"Area", "Point"}) {
      make_virtual("in.vrt", 20, 20, "Float32",
                   "<Metadata><MDI key='AREA_OR_POINT'>" + kind + "</MDI></Metadata>" + place, "");
      translate("in.vrt", "in.tif");
      const struct {
        std::string command;
        const char* size;
        int across, down;
      } cases[] = {{"detect --amplitude -q ", "", 1, 1},
                   {"multilook --looks 2x5 ", "-outsize 10 4", 2, 5},
                   {"multilook --looks 2x5 --to-db -q ", "-outsize 10 4", 2, 5}};
      for (const auto& [command, size, across, down] : cases) {
        translate("in.vrt", "reference.tif", size);
        for (const std::string input : {"in.vrt", "in.tif"}) {
          SCOPED_TRACE(command + input + ", " + kind + ": " + place);
          run_silently(command + input + " out.tif --overwrite");
          const auto out = open("out.tif");
          const auto reference = open("reference.tif");
          EXPECT_STREQ(out->GetMetadataItem("AREA_OR_POINT"),
                       reference->GetMetadataItem("AREA_OR_POINT"));
          for (const auto& [x, y] : {std::pair{0.0, 0.0}, {0.5, 0.5}, {7.0, 3.0}}) {
            expect_equal(ground(*out, x, y), ground(*open("in.tif"), x * across, y * down));
            // GDAL 3.6 moves the model of an image that it resizes by half a pixel.
            if (across == 1 || place.find("RPC") == place.npos) {
              expect_equal(ground(*out, x, y), ground(*reference, x, y));
            }
          }
        }
      }
    }
  }
}

TEST_F(ToolTest, ItemsOnPixelsFollowOrGoWithAWord) {
  make_virtual("radar.vrt", 60, 60, "Float32",
               "<Metadata><MDI key='PIXEL_SPACING'>2.3</MDI><MDI key='LINE_SPACING'>13.9</MDI>"
               "<MDI key='RANGE_LOOKS'>3</MDI><MDI key='COL_SPACING_UNITS'>metres</MDI>"
               "<MDI key='TIFFTAG_XRESOLUTION'>300</MDI><MDI key='TIFFTAG_YRESOLUTION'>300</MDI>"
               "<MDI key='Azimuth_Looks'>unknown</MDI><MDI key='ROW_SPACING'>2 3</MDI>"
               "<MDI key='MISSION'>S1</MDI></Metadata>",
               "<Metadata><MDI key='range_sampling_rate'>64e6</MDI></Metadata>");
  EXPECT_EQ(run("multilook radar.vrt once.tif --looks 3x1").err,
            "sarnum: warning: the items ROW_SPACING and range_sampling_rate of 'radar.vrt' are not "
            "carried over: they may tell of its pixels, which were averaged\n");
  EXPECT_EQ(run("multilook once.tif twice.tif --square --incidence 30 --looks 4").out,
            "looks 2x2, pixels of 27.6 x 27.8 on the ground\n");
  EXPECT_THAT(
      expect_report("twice.tif",
                    {"  PIXEL_SPACING=13.8\n", "  LINE_SPACING=27.8\n", "  RANGE_LOOKS=18\n",
                     "  COL_SPACING_UNITS=metres\n", "  TIFFTAG_XRESOLUTION=50\n",
                     "  TIFFTAG_YRESOLUTION=150\n", "  Azimuth_Looks=unknown\n", "  MISSION=S1\n",
                     "  SARNUM_LOOKS=6x2\n"}),
      ::testing::Not(::testing::AnyOf(HasSubstr("ROW_"), HasSubstr("sampling"))));
}

TEST_F(ToolTest, PlacesThatAGeotiffCannotHoldGoWithAWord) {
  const auto points = [](int count) {
    std::string list = "<GCPList Projection='EPSG:4326'>";
    for (int i = 0; i < count; ++i) {
      list += "<GCP Pixel='" + std::to_string(i % 20) + "' Line='1' X='3' Y='4'/>";
    }
    return list + "</GCPList>";
  };
  const auto expect_points = [&](const std::string& xml, int count, const std::string& word) {
    make_virtual("in.vrt", 20, 20, "Float32", xml, "");
    const std::string said = run("multilook in.vrt out.tif --looks 2x2 --overwrite").err;
    EXPECT_EQ(said.empty(), word.empty()) << said;
    EXPECT_THAT(said, HasSubstr(word));
    EXPECT_EQ(open("out.tif")->GetGCPCount(), count);
  };
  expect_points(points(10922), 10922, "");
  expect_points(points(10923), 0, "10923 control points of 'in.vrt' are not carried over");
  expect_points("<GeoTransform>5, 1, 0, 7, 0, -1</GeoTransform>" + points(4), 0,
                "control points of 'in.vrt' are not carried over");
  expect_points("<GeoTransform>0, 1, 0, 0, 0, 1</GeoTransform>" + points(0), 0,
                "geotransform of 'in.vrt' merely counts pixels and is not carried over");
}

}  // namespace
