// An application that multilooks a file with a meter of its own, which may throw.
#include <sarnum/sarnum.h>

#include <fstream>
#include <string>

#include "application.h"

class NotingMeter : public CCustomMeterInfo {
 public:
  void SetText(const char* text) override { notes += text; }
  void StepIt() override {
    notes += '|';
    if (throws) {
      throw std::string("enough");
    }
  }
  std::string notes;
  bool throws = false;
};

const char* work(const LoadedLibrary& library) {
  std::ofstream("in.hdr") << "ENVI\nsamples = 3\nlines = 3\ndata type = 1\nbands = 1\n";
  std::ofstream("in.raw", std::ios::binary) << "\1\3\5\1\3\5\1\1\1";
  const auto multilook = library.function<int(CString, CString, int, int, CCustomMeterInfo*)>(
      "_Z24NoncoherentAccumulationR7CStringS_iiP16CCustomMeterInfo");
  NotingMeter meter;
  if (multilook == nullptr || multilook("a longer name than fits", "no", 2, 2, &meter) != 0 ||
      multilook("out.raw", "in.raw", 2, 2, &meter) != 1) {
    return "multilooking failed";
  }
  if (meter.notes != "InitializationInitializationMultilooking||Statistics counting") {
    return "the meter was told something else";
  }
  std::ifstream file("out.raw", std::ios::binary);
  float means[5] = {};
  file.read(reinterpret_cast<char*>(means), sizeof means);
  if (file.gcount() != 16 || means[0] != 2 || means[1] != 5 || means[2] != 1 || means[3] != 1) {
    return "other means";
  }
  meter.throws = true;
  try {
    multilook("out.raw", "in.raw", 2, 2, &meter);
    return "the exception of the meter is lost";
  } catch (const std::string&) {
    return nullptr;
  }
}
