// A meter that notes what it is told.
#pragma once

#include <sarnum/sarnum.h>

#include <string>
#include <string_view>

/// Notes every call in order, a step as a stroke; the few calls of a small transform without
/// allocating anything.
class RecordingMeter : public CMeterInfo {
 public:
  RecordingMeter() { calls.reserve(200); }
  void SetRange(int lower, int upper) override {
    note("range " + std::to_string(lower) + " " + std::to_string(upper));
  }
  int SetStep(int step) override { return note(" step " + std::to_string(step) + " "); }
  void SetText(const char* text) override { note(text); }
  void StepIt() override { note("|"); }
  void SetPos(int) override { note("unexpected"); }

  std::string calls;

 private:
  int note(std::string_view call) {
    calls += call;
    return 0;
  }
};

inline std::string expected_calls(std::size_t range, int label, std::size_t steps) {
  return "range 0 " + std::to_string(range) + " step 1 " + std::string(GetResourceString(label)) +
         "..." + std::string(steps, '|');
}
