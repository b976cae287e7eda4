// A user's program: transforms in one dimension and in two, with a meter of its own.
#include <sarnum/sarnum.h>

#include <cstdio>

static_assert(__cplusplus < 202002L, "the headers are promised to C++17 programs");

struct CountingMeter : CMeterInfo {
  void StepIt() override { ++steps; }
  int steps = 0;
};

int main() {
  float pixel = 4.0F, spectrum[2] = {};
  void *source = &pixel, *destination = spectrum;
  CountingMeter meter;
  const int status = CFFTClass().FFT_2D(&source, &destination, 1, 1, TD_FLOAT32, &meter);
  std::printf("sarnum %s\n", sarnum::build_info().version);
  return status == 1 && meter.steps == 2 && spectrum[0] == 4.0F ? 0 : 1;
}
