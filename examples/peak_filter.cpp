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

/// The outermost bins that a filter has kept.
struct Band {
  std::size_t count = 0, first = 0, last = 0;
};

Band kept_bins(const std::vector<double>& before, const std::vector<double>& after) {
  Band band;
  for (std::size_t k = 0; k < samples; ++k) {
    if (after[k] > before[k] / 2.0) {
      band.first = band.count == 0 ? k : band.first;
      band.last = k;
      ++band.count;
    }
  }
  return band;
}

/// Names the bins that a filter has kept, and their share of the signal's energy.
void print(const char* name, const Band& kept, std::vector<double> before,
           std::vector<double> after) {
  const double energy = Scalar_Multiply(after.data(), after.data(), samples) /
                        Scalar_Multiply(before.data(), before.data(), samples);
  std::printf("  %-12s keeps %3zu bins, %zu ... %zu, and %.3f %% of the energy\n", name, kept.count,
              kept.first, kept.last, 100.0 * energy);
}

constexpr int bin_width = 3;
constexpr int margin = 12;  // beside the bars, so that bin 0 does not lie at the edge
constexpr int bars_height = 110;
constexpr int mark_height = 10;
constexpr int mark_gap = 3;
constexpr int gap = 8;
constexpr int panel_width = samples * bin_width + 2 * margin;
constexpr int panel_height = bars_height + mark_gap + mark_height;

/// Draws magnitudes as bars, up to 75 dB high: black above the mean of the signal's own spectrum,
/// which is a dotted line, and grey below. The mark under them has the band for its upper edge; it
/// widens downwards, so that a band of one bin is seen.
void draw(Picture& picture, int column, int row, const std::vector<double>& magnitude, double peak,
          double mean, const Band& band) {
  const int left = column * (panel_width + gap) + margin;
  const int top = row * (panel_height + gap);
  const int bottom = top + bars_height - 1;
  const auto height = [&](double value) {
    const double db = 20.0 * std::log10(value / peak + 1e-30);
    return static_cast<int>(std::clamp((db + 75.0) / 75.0, 0.0, 1.0) * (bars_height - 1));
  };
  for (int x = -margin; x < samples * bin_width + margin; ++x) {
    for (int y = 0; y < panel_height; ++y) {
      picture.at(left + x, top + y) = 255;
    }
  }
  for (int x = 0; x < samples * bin_width; ++x) {
    const auto bin = static_cast<std::size_t>(x / bin_width);
    for (int y = 0; y < height(magnitude[bin]); ++y) {
      picture.at(left + x, bottom - y) = magnitude[bin] > mean ? 0 : 160;
    }
    if (x % 8 < 4) {
      picture.at(left + x, bottom - height(mean)) = 90;
    }
  }
  const auto edge = [](std::size_t bin) { return static_cast<int>(bin) * bin_width; };
  for (int y = 0; y < mark_height; ++y) {
    for (int x = edge(band.first) - y; x < edge(band.last + 1) + y; ++x) {
      picture.at(left + x, bottom + 1 + mark_gap + y) = 0;
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
  Picture picture(2 * panel_width + gap, 3 * panel_height + 2 * gap, 200);
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
    const Band band = kept_bins(before, kept);
    print("FilterHighSp", band, before, kept);
    print("FilterLowSp", kept_bins(before, rest), before, rest);
    const double peak = Max_mass(before.data(), samples);
    const double mean = Mean(before.data(), samples);
    draw(picture, i, 0, before, peak, mean, band);
    draw(picture, i, 1, kept, peak, mean, band);
    draw(picture, i, 2, rest, peak, mean, band);
  }
  return picture.write((std::filesystem::path(folder) / "peak_filter.png").string()) ? 0 : 1;
} catch (const std::exception& error) {
  std::fprintf(stderr, "peak_filter: %s\n", error.what());
  return 1;
}
