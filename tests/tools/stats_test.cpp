// sarnum stats: every pixel type against GDAL's statistics; samples that are none, or not finite.
#include <cpl_json.h>

#include <cmath>

#include "tool_run.h"

namespace {

class StatsTest : public ToolTest {
 protected:
  CPLJSONObject stats(const std::string& name) const {
    const ToolRun finished = run("stats --json '" + name + "'");
    EXPECT_EQ(std::pair(finished.status, finished.err), std::pair(0, std::string()));
    EXPECT_EQ(finished.out.find('\1'), std::string::npos);  // GDAL would read it
    CPLJSONDocument document;
    EXPECT_TRUE(document.LoadMemory(finished.out)) << finished.out;
    return document.GetRoot();
  }
};

TEST_F(StatsTest, AgreesWithGdalOnEveryType) {
  constexpr int width = 700;
  constexpr int height = 400;  // more than one block of rows; the extremes lie in the last
  for (const GDALDataType type :
       {GDT_Byte, GDT_UInt16, GDT_Int16, GDT_UInt32, GDT_Int32, GDT_UInt64, GDT_Int64, GDT_Float32,
        GDT_Float64, GDT_CInt16, GDT_CInt32, GDT_CFloat32, GDT_CFloat64}) {
    SCOPED_TRACE(GDALGetDataTypeName(type));
    const bool is_complex = GDALDataTypeIsComplex(type) != 0;
    const bool is_integer = GDALDataTypeIsInteger(type) != 0;
    // Floats vary little about a large mean.
    const double unit = is_integer ? 1 : 0x1p-4;
    const double lowest = is_integer ? (GDALDataTypeIsSigned(type) != 0 ? -100 : 0) : 1e6;
    const SampleAt stored = [&](int x, int y) {
      const int step = x * 7 + y * 31;
      return Sample(lowest + unit * (y < 395 ? 50 + step % 100 : step % 200),
                    is_complex ? unit * (x % 90) : 0);
    };
    const SampleAt detected = [&](int x, int y) {
      return is_complex ? std::sqrt(std::norm(stored(x, y))) : stored(x, y);
    };
    make("in.tif", width, height, type, stored, "TILED=YES");
    const auto reference = make("reference.tif", width, height, GDT_Float64, detected);
    double minimum = 0, maximum = 0, mean = 0, deviation = 0;
    ASSERT_EQ(reference->GetRasterBand(1)->ComputeStatistics(FALSE, &minimum, &maximum, &mean,
                                                             &deviation, nullptr, nullptr),
              CE_None);
    const CPLJSONObject found = stats("in.tif");
    EXPECT_EQ(found.GetString("quantity"), is_complex ? "amplitude" : "value");
    EXPECT_NEAR(found.GetDouble("mean"), mean, 1e-12 * std::abs(mean));
    EXPECT_NEAR(found.GetDouble("standard_deviation"), deviation, 1e-9 * deviation);
    for (const auto& [name, value] : {std::pair("min", minimum), std::pair("max", maximum)}) {
      int first = 0;
      while (detected(first % width, first / width).real() != value) {
        ++first;
      }
      const CPLJSONObject extreme = found[name];
      EXPECT_EQ(extreme.GetDouble("value"), value);
      EXPECT_EQ(extreme.GetInteger("row") * width + extreme.GetInteger("column"), first) << name;
    }
  }
}

TEST_F(StatsTest, CountsWhatIsNoSampleAndWhatIsNotFinite) {
  constexpr double nan = NAN;
  constexpr double inf = INFINITY;
  // More samples than are taken up at once: first a and b in turn, then c and d.
  const auto halves = [](double a, double b, double c, double d) {
    std::vector<Sample> row;
    for (int i = 0; i < 4096; ++i) {
      row.emplace_back(i < 2048 ? (i % 2 == 0 ? a : b) : (i % 2 == 0 ? c : d));
    }
    return row;
  };
  const struct {
    std::vector<Sample> samples;
    double nodata;
    // valid, invalid, infinite, column and value of the extremes, mean, deviation
    const char* expected;
  } cases[] = {
      {{nan, 3, 1, 1, 3}, nan, "4 1 0 2 1.0 1 3.0 2.0 1.0"},
      {{-9, 3, 1, 1, 3}, -9, "4 1 0 2 1.0 1 3.0 2.0 1.0"},
      {{-9, {3, 4}, {-9, 12}}, -9, "2 1 0 1 5.0 2 15.0 10.0 5.0"},
      {{nan, -9}, -9, "0 2 0 null null null null null null"},
      {{inf, 1, 3, -inf}, nan, "4 0 2 3 -Infinity 0 Infinity 2.0 1.0"},
      {{inf, 5, inf}, inf, "1 2 0 1 5.0 1 5.0 5.0 0.0"},
      {{inf, inf}, nan, "2 0 2 0 Infinity 0 Infinity null null"},
      {{4e12 + 1, 4e12 - 1}, nan, "2 0 0 1 3999999999999.0 0 4000000000001.0 4000000000000.0 1.0"},
      {{0, -1e308}, nan, "2 0 0 1 -1e+308 0 0.0 -5e+307 5e+307"},
      {{1, 3, -inf}, nan, "3 0 1 2 -Infinity 1 3.0 2.0 1.0"},
      {{inf, 1, 3}, nan, "3 0 1 1 1.0 0 Infinity 2.0 1.0"},
      {{1e-200, 3e-200}, nan, "2 0 0 0 1e-200 1 3e-200 2e-200 1e-200"},
      {halves(0, 4, 16, 12), nan, "4096 0 0 0 0.0 2048 16.0 8.0 6.324555320336759"},
      {halves(1, 3, -0x1p1000, 0), nan,
       "4096 0 0 2048 -1.0715086071862673e+301 1 3.0 -2.6787715179656683e+300 "
       "4.639768370984943e+300"},
      {halves(0x1p54 - 4, 0x1p54 - 2, 0x1p54 - 6, 0x1p54), nan,
       "4096 0 0 2048 1.8014398509481978e+16 2049 1.8014398509481984e+16 1.801439850948198e+16 "
       "2.23606797749979"},
      {{0, 1.1999999999999922},
       nan,
       "2 0 0 0 0.0 1 1.1999999999999922 0.5999999999999961 0.5999999999999961"},
  };
  for (const auto& [samples, nodata, expected] : cases) {
    SCOPED_TRACE(expected);
    const std::string name = "in \"\1\xe9.tif";
    const GDALDataType type = samples[1].imag() != 0 ? GDT_CFloat64 : GDT_Float64;
    make(name, static_cast<int>(samples.size()), 1, type,
         [&row = samples](int x, int) { return row[static_cast<std::size_t>(x)]; })
        ->GetRasterBand(1)
        ->SetNoDataValue(nodata);
    const CPLJSONObject found = stats(name);
    EXPECT_EQ(found.GetString("file"), "in \"\1\ufffd.tif");
    std::string text;
    for (const char* const key : {"valid", "invalid", "infinite", "min/column", "min/value",
                                  "max/column", "max/value", "mean", "standard_deviation"}) {
      text.append(found.GetString(key, "null")).append(" ");
    }
    EXPECT_EQ(text, std::string(expected) + " ");
  }
}

TEST_F(StatsTest, PrintsText) {
  make(
      "in.tif", 2, 2, GDT_Byte, [](int x, int y) { return Sample(y == 1 ? 250 + x : 3); },
      "PIXELTYPE=SIGNEDBYTE");
  EXPECT_THAT(run("stats in.tif").out,
              HasSubstr("\nQuantity:           value\nNodata:             none\n"
                        "Samples:            4 valid, 0 nodata or NaN\n"
                        "Minimum:            -6 at column 0, row 1\n"
                        "Maximum:            3 at column 0, row 0\n"
                        "Mean:               -1.25\nStandard deviation: 4.26"));
}

}  // namespace
