// range_compression: compresses the echoes of a chirp radar and measures the point response.
//
// How to use CFFTClass::SyntAlmaz for it: it conjugates the spectrum of the line, not the
// reference, so give it as reference the forward spectrum of the replica as it is, zero-padded
// to the N samples of the line and not conjugated. It leaves N·conj(y) in reversed order: sample
// j of the compressed line y is found at index (N − j) mod N, and is to be conjugated and divided
// by N (the magnitude alone needs only the index and the division).
//
// Three point targets pass through the beam of the antenna. Every line of their raw echo is
// compressed, and each target is measured where the beam points at it, against the theory of a
// flat spectrum without a window (I. G. Cumming and F. H. Wong, "Digital Processing of Synthetic
// Aperture Radar Data", 2005, chapters 2 and 3). A plain matched filter comes that close to it
// only because the product of bandwidth and pulse duration is large, here 2260.
#include <sarnum/sarnum.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <cmath>
#include <complex>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <string>
#include <vector>

#include "picture.h"

namespace {

const double pi = std::acos(-1.0);
constexpr double speed_of_light = 299792458.0;  // m/s

constexpr double carrier = 5.405e9;         // Hz
constexpr double bandwidth = 56.5e6;        // Hz
constexpr double sampling_rate = 64.35e6;   // Hz
constexpr double pulse_duration = 40.0e-6;  // s
constexpr double chirp_rate = bandwidth / pulse_duration;
constexpr double first_range = 845.0e3;  // m, slant range of a line's first sample
constexpr double antenna_length = 12.3;  // m
constexpr double line_distance = 40.0;   // m along the track: every 9th pulse, say

constexpr int lines = 256;
constexpr int exponent = 13;  // 2^13 = 8192 samples a line
constexpr std::size_t samples = std::size_t{1} << exponent;

struct Target {
  double range;      // m, slant range at closest approach
  double track;      // m along the track from the first line
  double amplitude;  // of its echo in the middle of the beam
};
constexpr std::array<Target, 3> targets = {{
    {846800.2, 3412.0, 1.0},
    {850900.7, 5127.0, 0.7},
    {856200.9, 6843.0, 0.5},
}};

/// The platform flies straight and stands still while a pulse is on its way.
double slant_range(const Target& target, int line) {
  return std::hypot(target.range, line * line_distance - target.track);
}

/// The transmitted pulse at baseband: a linear sweep from −bandwidth/2 to +bandwidth/2.
std::complex<double> pulse(double time) {
  const double from_center = time - pulse_duration / 2.0;
  return std::abs(from_center) > pulse_duration / 2.0
             ? 0.0
             : std::polar(1.0, pi * chirp_rate * from_center * from_center);
}

double sinc(double x) {
  return x == 0.0 ? 1.0 : std::sin(pi * x) / (pi * x);
}

/// What the echo is multiplied by on its way: the pattern of the antenna there and back, and the
/// carrier's phase after the delay.
std::complex<double> echo_factor(const Target& target, int line) {
  const double range = slant_range(target, line);
  const double sine = (line * line_distance - target.track) / range;
  const double one_way = sinc(antenna_length * sine * carrier / speed_of_light);
  const double cycles = std::remainder(carrier * 2.0 * range / speed_of_light, 1.0);
  return std::polar(target.amplitude * one_way * one_way, -2.0 * pi * cycles);
}

/// A line of samples as the library takes them, real and imaginary parts apart.
struct Line {
  std::vector<float> re = std::vector<float>(samples);
  std::vector<float> im = std::vector<float>(samples);

  void add(std::size_t sample, std::complex<double> value) {
    re[sample] += static_cast<float>(value.real());
    im[sample] += static_cast<float>(value.imag());
  }
};

Line simulate_echo(int line) {
  Line echo;
  for (const Target& target : targets) {
    const std::complex<double> factor = echo_factor(target, line);
    const double delay = 2.0 * (slant_range(target, line) - first_range) / speed_of_light;
    const auto begin = static_cast<std::size_t>(std::ceil(delay * sampling_rate));
    const auto end = static_cast<std::size_t>((delay + pulse_duration) * sampling_rate) + 1;
    for (std::size_t n = begin; n < std::min(end, samples); ++n) {
      echo.add(n, factor * pulse(static_cast<double>(n) / sampling_rate - delay));
    }
  }
  return echo;
}

/// The reference for SyntAlmaz: the spectrum of the sampled pulse. Divided by the number of
/// samples in the pulse, it makes the compressed peak as high as the echo's amplitude.
Line reference_spectrum() {
  Line replica;
  const auto length = static_cast<std::size_t>(pulse_duration * sampling_rate) + 1;
  for (std::size_t n = 0; n < length; ++n) {
    replica.add(n, pulse(static_cast<double>(n) / sampling_rate) / static_cast<double>(length));
  }
  CFFTClass().fft(replica.re.data(), replica.im.data(), exponent);
  return replica;
}

/// Compresses a raw line with the spectrum of the replica: SyntAlmaz, and its output put right.
Line compress(Line line, Line& reference) {
  CFFTClass().SyntAlmaz(reference.re.data(), reference.im.data(), line.re.data(), line.im.data(),
                        static_cast<int>(samples), exponent);
  Line compressed;
  for (std::size_t j = 0; j < samples; ++j) {
    const std::size_t found = (samples - j) % samples;
    compressed.re[j] = line.re[found] / static_cast<float>(samples);
    compressed.im[j] = -line.im[found] / static_cast<float>(samples);
  }
  return compressed;
}

constexpr int oversampling_exponent = 4;
constexpr int oversampling = 1 << oversampling_exponent;

/// The line at 16 times its sampling rate, by padding its spectrum with zeros. A line of a
/// discrete spectrum is periodic, so any index is good.
class FineLine {
 public:
  explicit FineLine(const Line& line) : re_(samples * oversampling), im_(samples * oversampling) {
    std::vector<double> re(line.re.begin(), line.re.end());
    std::vector<double> im(line.im.begin(), line.im.end());
    fft(re.data(), im.data(), exponent);
    for (std::size_t k = 0; k < samples; ++k) {  // the upper half are the negative frequencies
      const std::size_t to = k < samples / 2 ? k : k + samples * (oversampling - 1);
      re_[to] = re[k] / static_cast<double>(samples);
      im_[to] = im[k] / static_cast<double>(samples);
    }
    ifft(re_.data(), im_.data(), exponent + oversampling_exponent);
  }

  std::complex<double> at(long index) const {
    const auto wrapped = static_cast<std::size_t>(index) % re_.size();
    return {re_[wrapped], im_[wrapped]};
  }
  double power(long index) const { return std::norm(at(index)); }

 private:
  std::vector<double> re_, im_;
};

struct Response {
  double position;    // of the peak, in samples of the line
  double width;       // between the points 3 dB below the peak, in samples
  double peak_ratio;  // dB, highest sidelobe to peak
  double area_ratio;  // dB, energy of the sidelobes to that of the main lobe
  double amplitude, phase;
};

// Sidelobes are looked at up to this many resolution cells (1/bandwidth) from the peak. Of
// sinc²(x), 90.28 % lies between the first nulls and 9.21 % from there to ±20: a ratio of
// −9.91 dB. (All the sidelobes, to infinity, would be −9.68 dB.)
constexpr double sidelobe_cells = 20.0;
constexpr double area_ratio_theory = -9.91;         // dB
constexpr double peak_ratio_theory = -13.26;        // dB
constexpr double width_theory = 0.886 / bandwidth;  // s

/// Measures the strongest response within 100 samples of where one is expected.
Response measure(const FineLine& line, double expected) {
  constexpr long search = 100L * oversampling;
  const long middle = std::lround(expected * oversampling);
  long peak = middle;
  for (long k = middle - search; k <= middle + search; ++k) {
    peak = line.power(k) > line.power(peak) ? k : peak;
  }
  // The top lies between the fine samples: a parabola through three of them.
  const double before = line.power(peak - 1), top = line.power(peak), after = line.power(peak + 1);
  const double offset = 0.5 * (before - after) / (before - 2.0 * top + after);
  const double peak_power = top - 0.25 * (before - after) * offset;

  const long reach = std::lround(sidelobe_cells * sampling_rate / bandwidth * oversampling);
  double width = 0.0, main_energy = top, side_energy = 0.0, highest_sidelobe = 0.0;
  for (const long side : {-1, 1}) {
    long k = 0;
    while (line.power(peak + side * (k + 1)) > peak_power / 2.0) {
      ++k;
    }
    const double above = line.power(peak + side * k), below = line.power(peak + side * (k + 1));
    width += static_cast<double>(k) + (above - peak_power / 2.0) / (above - below);

    long null = k;
    while (line.power(peak + side * (null + 1)) < line.power(peak + side * null)) {
      ++null;
    }
    for (k = 1; k <= reach; ++k) {
      const double power = line.power(peak + side * k);
      (k <= null ? main_energy : side_energy) += power;
      highest_sidelobe = k <= null ? highest_sidelobe : std::max(highest_sidelobe, power);
    }
  }
  return {(static_cast<double>(peak) + offset) / oversampling,
          width / oversampling,
          10.0 * std::log10(highest_sidelobe / peak_power),
          10.0 * std::log10(side_energy / main_energy),
          std::sqrt(peak_power),
          std::arg(line.at(peak))};
}

void print(std::size_t number, int line, const Response& response) {
  const Target& target = targets[number];
  const std::complex<double> factor = echo_factor(target, line);
  const double width = response.width / sampling_rate;
  const double to_metres = speed_of_light / 2.0;  // the echo goes there and back
  const double range = first_range + response.position / sampling_rate * to_metres;
  const auto row = [](const char* name, double measured, double theory) {
    std::printf("  %-26s %14.3f %14.3f\n", name, measured, theory);
  };
  std::printf("target %zu, line %-13d %14s %14s\n", number + 1, line, "measured", "theory");
  row("slant range [m]", range, slant_range(target, line));
  row("amplitude", response.amplitude, std::abs(factor));
  row("phase [deg]", response.phase * 180.0 / pi, std::arg(factor) * 180.0 / pi);
  row("width at -3 dB [ns]", width * 1e9, width_theory * 1e9);
  row("width at -3 dB [m]", width * to_metres, width_theory * to_metres);
  row("peak sidelobe [dB]", response.peak_ratio, peak_ratio_theory);
  row("integrated sidelobes [dB]", response.area_ratio, area_ratio_theory);
}

/// The lines before compression above those after it, a white bar between them. Grey is amplitude
/// from −40 dB (black) to +5 dB (white); a pixel shows the strongest of 8 samples in range.
class LinesPicture : public Picture {
 public:
  LinesPicture() : Picture(width, 2 * lines + bar, 0) {
    for (int row = lines; row < lines + bar; ++row) {
      for (int column = 0; column < width; ++column) {
        at(column, row) = 255;
      }
    }
  }

  void draw(bool compressed, int line, const Line& values) {
    const int row = compressed ? lines + bar + line : line;
    for (std::size_t n = 0; n < samples; ++n) {
      const double db = 20.0 * std::log10(std::hypot(values.re[n], values.im[n]) + 1e-30);
      const double grey = std::clamp(255.0 * (db + 40.0) / 45.0, 0.0, 255.0);
      std::uint8_t& pixel = at(static_cast<int>(n) / samples_per_pixel, row);
      pixel = std::max(pixel, static_cast<std::uint8_t>(grey));
    }
  }

 private:
  static constexpr int samples_per_pixel = 8;
  static constexpr int bar = 8;
  static constexpr int width = static_cast<int>(samples) / samples_per_pixel;
};

}  // namespace

int main(int argc, char** argv) try {
  CLI::App app("Compresses the simulated echoes of a chirp radar and measures the point response.");
  std::string folder;
  app.add_option("FOLDER", folder, "where to write range_compression.png (replaced)")
      ->required()
      ->check(CLI::ExistingDirectory);
  CLI11_PARSE(app, argc, argv);

  Line reference = reference_spectrum();
  LinesPicture picture;
  for (int line = 0; line < lines; ++line) {
    const Line raw = simulate_echo(line);
    const Line compressed = compress(raw, reference);
    picture.draw(false, line, raw);
    picture.draw(true, line, compressed);
    for (std::size_t t = 0; t < targets.size(); ++t) {
      if (line == static_cast<int>(std::lround(targets[t].track / line_distance))) {
        const double delay = 2.0 * (slant_range(targets[t], line) - first_range) / speed_of_light;
        print(t, line, measure(FineLine(compressed), delay * sampling_rate));
      }
    }
  }
  return picture.write((std::filesystem::path(folder) / "range_compression.png").string()) ? 0 : 1;
} catch (const std::exception& error) {
  std::fprintf(stderr, "range_compression: %s\n", error.what());
  return 1;
}
