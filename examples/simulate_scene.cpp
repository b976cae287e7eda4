// simulate_scene: writes a single-look complex radar image to try things out on.
//
// A coast with fields, a dark sea, ships and corner reflectors, under fully developed speckle:
// each pixel is a circular complex Gaussian number whose mean intensity is the brightness of
// the ground (J. W. Goodman, "Some fundamental properties of speckle", JOSA 66, 1976). Pixels
// are independent, so over any homogeneous field the equivalent number of looks is 1, and
// averaging 4 x 4 of them gives 16. The same arguments give the same scene everywhere, but for the
// last digits of log and cosine: the standard fixes a generator's bits and not what a distribution
// makes of them, hence our own.
#include <gdal_priv.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <cmath>
#include <complex>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace {

const double pi = std::acos(-1.0);

// Mean intensities in dB: the sea, and the fields a (water meadow) to g (town).
constexpr double sea_db = -22.0;
constexpr std::array<double, 7> field_db = {-17.0, -14.5, -12.0, -10.0, -8.0, -5.5, -3.0};

// The land, an eighth of the scene's side to a letter.
constexpr std::array<std::string_view, 8> fields = {
    "ddddccff",  //
    "ddddccff",  //
    "eeaabbcc",  //
    "eeaabbcc",  //
    "bbccggdd",  //
    "bbccggdd",  //
    "aaeeccbe",  //
    "aaeeccfb",
};

// A point target: its place as a fraction of the side, and its peak intensity in dB.
struct Target {
  double row, column, peak_db;
};
constexpr std::array<Target, 9> targets = {{
    {0.120, 0.110, 18.0},  // ships
    {0.480, 0.060, 14.0},
    {0.800, 0.150, 21.0},
    {0.060, 0.620, 27.0},  // corner reflectors, one to a corner of the fields
    {0.310, 0.560, 27.0},
    {0.310, 0.940, 27.0},
    {0.640, 0.440, 27.0},
    {0.910, 0.690, 27.0},
    {0.690, 0.940, 27.0},
}};

/// The column where the sea ends in a row: both as fractions of the side.
double coastline(double row) {
  return 0.27 + 0.05 * std::sin(2.0 * pi * (0.9 * row + 0.1)) +
         0.015 * std::sin(2.0 * pi * (4.3 * row));
}

double from_db(double db) {
  return std::pow(10.0, db / 10.0);
}

/// Mean intensity of the ground, its place given as fractions of the side in [0, 1).
double mean_intensity(double row, double column) {
  if (column < coastline(row)) {
    return from_db(sea_db);
  }
  const char field =
      fields[static_cast<std::size_t>(row * 8.0)][static_cast<std::size_t>(column * 8.0)];
  return from_db(field_db[static_cast<std::size_t>(field - 'a')]);
}

/// A number uniform in (0, 1].
double uniform(std::mt19937_64& generator) {
  return static_cast<double>((generator() >> 11) + 1) * 0x1p-53;
}

/// One sample of speckle (the transform of Box and Muller, which gives the two independent
/// Gaussian parts at once).
std::complex<double> speckle(double mean, std::mt19937_64& generator) {
  const double amplitude = std::sqrt(-mean * std::log(uniform(generator)));
  return std::polar(amplitude, 2.0 * pi * uniform(generator));
}

double sinc(double x) {
  return x == 0.0 ? 1.0 : std::sin(pi * x) / (pi * x);
}

/// Adds the part of a target's response, a sinc along both axes, that falls into a row.
void add_target(const Target& target, int row, int size, std::vector<std::complex<float>>& pixels) {
  constexpr int reach = 24;
  const double center_row = target.row * size;
  const double center_column = target.column * size;
  if (std::abs(row - center_row) > reach) {
    return;
  }
  const double scale = std::sqrt(from_db(target.peak_db)) * sinc(row - center_row);
  const int first = std::max(0, static_cast<int>(center_column) - reach);
  const int last = std::min(size - 1, static_cast<int>(center_column) + reach);
  for (int column = first; column <= last; ++column) {
    pixels[static_cast<std::size_t>(column)] +=
        static_cast<float>(scale * sinc(column - center_column));
  }
}

void fill_row(int row, int size, std::mt19937_64& generator,
              std::vector<std::complex<float>>& pixels) {
  for (int column = 0; column < size; ++column) {
    const double mean =
        mean_intensity(static_cast<double>(row) / size, static_cast<double>(column) / size);
    pixels[static_cast<std::size_t>(column)] = std::complex<float>(speckle(mean, generator));
  }
  for (const Target& target : targets) {
    add_target(target, row, size, pixels);
  }
}

/// Writes the scene row by row; false when GDAL could not (it has said why).
bool write_scene(const std::string& path, int size, std::uint64_t seed) {
  GDALAllRegister();
  GDALDriver* const driver = GetGDALDriverManager()->GetDriverByName("GTiff");
  if (driver == nullptr) {
    return false;
  }
  GDALDatasetUniquePtr file(driver->Create(path.c_str(), size, size, 1, GDT_CFloat32, nullptr));
  if (!file) {
    return false;
  }
  GDALRasterBand* const band = file->GetRasterBand(1);
  std::mt19937_64 generator(seed);
  std::vector<std::complex<float>> pixels(static_cast<std::size_t>(size));
  for (int row = 0; row < size; ++row) {
    fill_row(row, size, generator, pixels);
    if (band->RasterIO(GF_Write, 0, row, size, 1, pixels.data(), size, 1, GDT_CFloat32, 0, 0,
                       nullptr) != CE_None) {
      return false;
    }
  }
  // Closing writes what GDAL still holds, and reports a failure only as an error.
  CPLErrorReset();
  file.reset();
  return CPLGetLastErrorType() != CE_Failure;
}

}  // namespace

int main(int argc, char** argv) try {
  CLI::App app("Writes a simulated single-look complex radar image (complex float GeoTIFF).");
  std::string path;
  int size = 2048;
  std::uint64_t seed = 1;
  app.add_option("OUTPUT", path, "file to write; an existing one is replaced")->required();
  app.add_option("--size", size, "rows and columns")
      ->capture_default_str()
      ->check(CLI::Range(64, 32768));
  app.add_option("--seed", seed, "another number, other speckle")->capture_default_str();
  CLI11_PARSE(app, argc, argv);

  if (!write_scene(path, size, seed)) {
    std::fprintf(stderr, "simulate_scene: cannot write %s\n", path.c_str());
    return 1;
  }
  return 0;
} catch (const std::exception& failure) {
  std::fprintf(stderr, "simulate_scene: %s\n", failure.what());
  return 1;
}
