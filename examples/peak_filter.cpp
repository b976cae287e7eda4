// peak_filter: what FilterHighSp and FilterLowSp take for the peak band, on two signals in noise.
//
// The band grows from the strongest bin outwards while the magnitude is above the mean. That finds
// a chirp, which fills a band. A pure tone fills one bin: both sides stop at their first step,
// which leaves the bounds at 0, and so the band is bin 0 alone. FilterHighSp then removes the tone,
// and FilterLowSp keeps it.
#include <sarnum/sarnum.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <cmath>
#include <complex>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <string>
#include <vector>

#include "picture.h"

namespace {

const double pi = std::acos(-1.0);

constexpr int exponent = 8;
constexpr int samples = 1 << exponent;  // a power of two: the filters then keep samples in place

/// Samples, or bins, of a signal of unit amplitude.
struct Signal {
  std::vector<double> re = std::vector<double>(samples);
  std::vector<double> im = std::vector<double>(samples);
};

/// A signal given by its phase in cycles, in noise of standard deviation 0.02 in both parts.
template <class Phase>
Signal in_noise(Phase cycles) {
  Signal signal;
  for (std::size_t n = 0; n < samples; ++n) {
    const auto value = std::polar(1.0, 2.0 * pi * cycles(static_cast<double>(n) / samples));
    signal.re[n] = Noise_normal(value.real(), 0.02 * 0.02);
    signal.im[n] = Noise_normal(value.imag(), 0.02 * 0.02);
  }
  return signal;
}

/// Magnitudes of the spectrum. A filter leaves a signal `samples` times as large as it came.
std::vector<double> spectrum(Signal signal, double scale = 1.0) {
  fft(signal.re.data(), signal.im.data(), exponent);
  std::vector<double> magnitude(samples);
  for (std::size_t k = 0; k < samples; ++k) {
    magnitude[k] = std::hypot(signal.re[k], signal.im[k]) * scale;
  }
  return magnitude;
}

/// Names the outermost bins that a filter has kept, and their share of the signal's energy.
void print(const char* name, std::vector<double> before, std::vector<double> after) {
  std::vector<int> kept;
  for (std::size_t k = 0; k < samples; ++k) {
    if (after[k] > before[k] / 2.0) {
      kept.push_back(static_cast<int>(k));
    }
  }
  const double energy = Scalar_Multiply(after.data(), after.data(), samples) /
                        Scalar_Multiply(before.data(), before.data(), samples);
  std::printf("  %-12s keeps %3zu bins, %d ... %d, and %.3f %% of the energy\n", name, kept.size(),
              kept.front(), kept.back(), 100.0 * energy);
}

constexpr int bin_width = 2;
constexpr int panel_height = 110;
constexpr int gap = 6;

/// Draws magnitudes as bars, up to 75 dB high: black above the mean of the signal's own spectrum,
/// which is a dotted line, and grey below.
void draw(Picture& picture, int column, int row, const std::vector<double>& magnitude, double peak,
          double mean) {
  const int left = column * (samples * bin_width + gap);
  const int bottom = row * (panel_height + gap) + panel_height - 1;
  const auto height = [&](double value) {
    const double db = 20.0 * std::log10(value / peak + 1e-30);
    return static_cast<int>(std::clamp((db + 75.0) / 75.0, 0.0, 1.0) * (panel_height - 1));
  };
  for (int x = 0; x < samples * bin_width; ++x) {
    const double value = magnitude[static_cast<std::size_t>(x / bin_width)];
    for (int y = 0; y < panel_height; ++y) {
      picture.at(left + x, bottom - y) = y >= height(value) ? 255 : value > mean ? 0 : 160;
    }
    if (x % 8 < 4) {
      picture.at(left + x, bottom - height(mean)) = 90;
    }
  }
}

}  // namespace

int main(int argc, char** argv) try {
  CLI::App app("Shows what the peak-band filters keep of a tone and of a chirp, both in noise.");
  std::string folder;
  app.add_option("FOLDER", folder, "where to write peak_filter.png (replaced)")
      ->required()
      ->check(CLI::ExistingDirectory);
  CLI11_PARSE(app, argc, argv);

  std::srand(1);
  const std::array signals = {
      in_noise([](double t) { return 40.0 * t; }),
      in_noise([](double t) { return 150.0 * t + 20.0 * t * t; }),
  };
  Picture picture(2 * samples * bin_width + gap, 3 * panel_height + 2 * gap, 200);
  for (int i = 0; i < 2; ++i) {
    const Signal& signal = signals[static_cast<std::size_t>(i)];
    Signal high = signal;
    FilterHighSp(high.re.data(), high.im.data(), samples);
    Signal low = signal;
    double mean_re = 0.0, mean_im = 0.0, sigma_re = 0.0, sigma_im = 0.0;
    FilterLowSp(low.re.data(), low.im.data(), samples, &mean_re, &mean_im, &sigma_re, &sigma_im);

    std::vector<double> before = spectrum(signal);
    const std::vector<double> kept = spectrum(high, 1.0 / samples);
    const std::vector<double> rest = spectrum(low, 1.0 / samples);
    std::printf("%s, strongest in bin %d\n", i == 0 ? "tone" : "chirp",
                Max_mass_index(before.data(), samples));
    print("FilterHighSp", before, kept);
    print("FilterLowSp", before, rest);
    const double peak = Max_mass(before.data(), samples);
    const double mean = Mean(before.data(), samples);
    draw(picture, i, 0, before, peak, mean);
    draw(picture, i, 1, kept, peak, mean);
    draw(picture, i, 2, rest, peak, mean);
  }
  return picture.write((std::filesystem::path(folder) / "peak_filter.png").string()) ? 0 : 1;
} catch (const std::exception& error) {
  std::fprintf(stderr, "peak_filter: %s\n", error.what());
  return 1;
}
