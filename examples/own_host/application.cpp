// An application of the host: averages 4 x 4 looks of a raster that only this host knows.
#include <sarnum/sarnum.h>

#include <cmath>
#include <cstdio>

int main() {
  MemoryRaster& scene = memory_rasters["scene"];
  scene = {400, 300, std::vector<float>(400 * 300)};
  unsigned state = 1;  // a plain generator: exponentially distributed speckle of mean 1
  for (float& pixel : scene.pixels) {
    state = state * 1664525U + 1013904223U;
    pixel = static_cast<float>(-std::log((static_cast<double>(state) + 0.5) / 4294967296.0));
  }
  TerminalMeter meter;
  if (NoncoherentAccumulationR("looks", "scene", 4, 4, &meter) == 0) {
    std::printf("\nno such raster\n");
    return 1;
  }
  const MemoryRaster& looks = memory_rasters["looks"];
  double sum = 0.0;
  double squares = 0.0;
  for (const float pixel : looks.pixels) {
    sum += static_cast<double>(pixel);
    squares += static_cast<double>(pixel) * static_cast<double>(pixel);
  }
  const double mean = sum / static_cast<double>(looks.pixels.size());
  const double variance = squares / static_cast<double>(looks.pixels.size()) - mean * mean;
  std::printf("\n%d x %d pixels, mean %.2f, equivalent looks %.1f, modules attached: %d\n",
              looks.width, looks.height, mean, mean * mean / variance, attached_modules);
  return looks.width == 100 && looks.height == 75 && std::abs(mean - 1.0) < 0.02 ? 0 : 1;
}
