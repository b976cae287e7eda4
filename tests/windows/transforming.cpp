// An application that loads the library, transforms a raster with a meter of its own, solves a
// system of 8-byte numbers, and unloads it; twice.
#include <sarnum/sarnum.h>

#include <cstdio>
#include <vector>

#include "loaded_library.h"

class CountingMeter : public CMeterInfo {
 public:
  void SetRange(int, int upper) override { range = upper; }
  void StepIt() override { ++steps; }
  int range = 0, steps = 0;
};

int main() {
  for (int round = 0; round < 2; ++round) {
    {
      const LoadedLibrary library("sarnum.dll");
      const auto construct = library.function<void(void*)>("_ZN9CFFTClassC1Ev");
      const auto destroy = library.function<void(void*)>("_ZN9CFFTClassD1Ev");
      const auto transform =
          library.function<int(void*, void**, void**, int, int, int, CMeterInfo*)>(
              "_ZN9CFFTClass6FFT_2DEPPvS1_iiiP10CMeterInfo");
      const auto solve = library.function<void(int, void*, void*)>("_Z12Solve_SystemiPeS_");
      if (construct == nullptr || destroy == nullptr || transform == nullptr || solve == nullptr) {
        return std::puts("not loaded");
      }
      std::vector<float> samples(48, 0.0f), spectrum(2 * 64);
      samples[0] = 64;
      std::vector<void*> from, to;
      for (int row = 0; row < 8; ++row) {
        from.push_back(&samples[static_cast<std::size_t>(row % 6) * 8]);
        to.push_back(&spectrum[static_cast<std::size_t>(row) * 16]);
      }
      alignas(16) unsigned char object[sizeof(CFFTClass)];
      CountingMeter meter;
      construct(object);
      if (transform(object, from.data(), to.data(), 8, 6, TD_FLOAT32, &meter) != 1) {
        return std::puts("the transform failed");
      }
      destroy(object);
      for (std::size_t i = 0; i < 128; ++i) {
        if (spectrum[i] != (i % 2 == 0 ? 1.0f : 0.0f)) {
          return std::puts("the spectrum of an impulse is not even");
        }
      }
      if (meter.range != 16 || meter.steps != 16) {
        return std::puts("the meter was not told");
      }
      double system[] = {0, 1, 3, 2, 0, 4}, x[2] = {};
      solve(2, system, x);
      if (x[0] != 2 || x[1] != 3) {
        return std::puts("the numbers of a matrix are not 8 bytes apart");
      }
    }
    if (LoadedLibrary::is_loaded("sarnum.dll") || LoadedLibrary::is_loaded("sarnum_host.dll")) {
      return std::puts("still loaded");
    }
  }
  return 0;
}
