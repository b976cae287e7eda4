// An application that transforms a raster with a meter of its own, and solves a system of 8-byte
// numbers.
#include <sarnum/sarnum.h>

#include "application.h"

class CountingMeter : public CMeterInfo {
 public:
  void SetRange(int, int upper) override { range = upper; }
  void StepIt() override { ++steps; }
  int range = 0, steps = 0;
};

const char* work(const LoadedLibrary& library) {
  const auto construct = library.function<void(void*)>("_ZN9CFFTClassC1Ev");
  const auto destroy = library.function<void(void*)>("_ZN9CFFTClassD1Ev");
  const auto transform = library.function<int(void*, void**, void**, int, int, int, CMeterInfo*)>(
      "_ZN9CFFTClass6FFT_2DEPPvS1_iiiP10CMeterInfo");
  const auto solve = library.function<void(int, void*, void*)>("_Z12Solve_SystemiPeS_");
  if (construct == nullptr || destroy == nullptr || transform == nullptr || solve == nullptr) {
    return "not loaded";
  }
  float samples[6][8] = {{64}}, spectrum[8][16];
  void *from[6], *to[8];
  for (int row = 0; row < 8; ++row) {
    from[row % 6] = samples[row % 6];
    to[row] = spectrum[row];
  }
  alignas(16) unsigned char object[sizeof(CFFTClass)];
  CountingMeter meter;
  construct(object);
  const int status = transform(object, from, to, 8, 6, TD_FLOAT32, &meter);
  destroy(object);
  if (status != 1 || meter.range != 16 || meter.steps != 16) {
    return "the transform failed, or did not tell the meter";
  }
  for (int i = 0; i < 128; ++i) {
    if (spectrum[i / 16][i % 16] != (i % 2 == 0 ? 1.0f : 0.0f)) {
      return "the spectrum of an impulse is not even";
    }
  }
  double system[] = {0, 1, 3, 2, 0, 4}, x[2] = {};
  solve(2, system, x);
  return x[0] == 2 && x[1] == 3 ? nullptr : "the numbers of a matrix are not 8 bytes apart";
}
