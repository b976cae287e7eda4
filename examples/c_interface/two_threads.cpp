// two_threads: compresses 512 lines of raw echo by the transmitted chirp, on two threads, and finds
// the target in each line.
#include <algorithm>
#include <cmath>
#include <complex>
#include <cstdio>
#include <exception>
#include <sarnum/cxx.hpp>
#include <vector>

int main() try {
  using Sample = std::complex<float>;
  constexpr std::size_t lines = 512, samples = 4096, pulse = 800;

  std::vector<Sample> chirp(pulse);
  for (std::size_t i = 0; i < pulse; ++i) {
    const double from_middle = static_cast<double>(i) - pulse / 2.0;
    chirp[i] = Sample(std::polar(1.0, 3.14159265358979 * from_middle * from_middle / 1000.0));
  }
  std::vector<Sample> echo(lines * samples);  // the target recedes by two samples a line
  for (std::size_t line = 0; line < lines; ++line) {
    std::copy(chirp.begin(), chirp.end(), &echo[line * samples + 1000 + 2 * line]);
  }

  const sarnum::Plan<float> plan(samples);
  sarnum::Run run;
  run.threads = 2;
  run.progress = [](double fraction) {
    std::fprintf(stderr, "\r%3.0f %%", 100.0 * fraction);
    return true;  // false stops the work: compress() throws sarnum::Cancelled
  };
  plan.compress(chirp, sarnum::rows_of(echo, samples), run);

  std::size_t found = 0;
  for (std::size_t line = 0; line < lines; ++line) {
    const auto* const begin = &echo[line * samples];
    const auto* const peak = std::max_element(
        begin, begin + samples, [](Sample a, Sample b) { return std::norm(a) < std::norm(b); });
    found += peak - begin == static_cast<std::ptrdiff_t>(1000 + 2 * line) ? 1 : 0;
  }
  std::printf("target found in %zu of %zu lines, its peak is %.0f\n", found, lines,
              static_cast<double>(std::abs(echo[1000])));
} catch (const std::exception& error) {
  std::fprintf(stderr, "two_threads: %s\n", error.what());
  return 1;
}
