// A user's program: transforms an impulse and has it reported to a meter of its own.
#include <sarnum/sarnum.h>

#include <cstdio>

#if __cplusplus >= 202002L
#error "the headers are promised to C++17 programs, so this one is compiled as C++17"
#endif

namespace {

class CountingMeter : public CMeterInfo {
 public:
  void StepIt() override { ++steps; }
  int steps = 0;
};

}  // namespace

int main() {
  float pixels[2][2] = {{4.0F, 0.0F}, {0.0F, 0.0F}};
  float spectrum[2][4] = {};
  void* source[] = {pixels[0], pixels[1]};
  void* destination[] = {spectrum[0], spectrum[1]};
  CountingMeter meter;
  CFFTClass transforms;
  const int status = transforms.FFT_2D(source, destination, 2, 2, TD_FLOAT32, &meter);
  std::printf("sarnum %s\n", sarnum::build_info().version);
  return status == 1 && meter.steps == 4 && spectrum[1][2] == 1.0F ? 0 : 1;
}
