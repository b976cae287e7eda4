// The two-dimensional members of CFFTClass: sizes, meters and results; the transforms are in
// raster_transform.cpp.
#include <optional>

#include "fft/exponent.h"
#include "fft/raster_transform.h"
#include "sarnum/fft/fft_object.h"
#include "sarnum/numeric/pixel_types.h"

namespace {

using sarnum::Outcome;
using sarnum::PaddedSize;
using sarnum::RasterRows;
using sarnum::Run;

constexpr int forward_label = 700;
constexpr int inverse_label = 701;

std::optional<PaddedSize> padded_size(int width, int height) {
  const PaddedSize size{sarnum::ceil_power_of_two(width), sarnum::ceil_power_of_two(height)};
  if (!sarnum::is_transform_exponent(size.row_exponent) ||
      !sarnum::is_transform_exponent(size.column_exponent)) {
    return std::nullopt;
  }
  return size;
}

/// The caller's meter, if there is one, as the transforms call it.
class Meter {
 public:
  Meter(CMeterInfo* meter, const PaddedSize& size, int label_id)
      : meter_(meter), units_(size.units()), label_id_(label_id) {}

  void start() {
    if (is_started_ || meter_ == nullptr) {
      return;
    }
    is_started_ = true;
    meter_->SetRange(0, static_cast<int>(static_cast<unsigned>(units_)));
    meter_->SetStep(1);
    CString label;
    const char* text = "...";
    try {
      label = GetResourceString(label_id_) + text;
      text = label;
    } catch (...) {
      // The caption is not worth the transform, whatever a host's strings may throw.
    }
    meter_->SetText(text);
  }

  Run run() { return {1, {meter_ != nullptr ? &advance : nullptr, this}}; }

 private:
  static bool advance(void* self, std::size_t units) {
    auto& meter = *static_cast<Meter*>(self);
    meter.start();
    for (; units > 0; --units) {
      meter.meter_->StepIt();
    }
    return true;
  }

  CMeterInfo* meter_;
  std::size_t units_;
  int label_id_;
  bool is_started_ = false;
};

/// The type of what is read: of no pixels where this transform has no row pass.
int type_to_load(int type) {
  const bool is_skipped =
      type == TD_COMPLEX_UINT8 || type == TD_COMPLEX_UINT16 || type == TD_COMPLEX_UINT32;
  return is_skipped ? 0 : type;
}

/// @return false, with nothing touched, when the work storage could not be allocated.
bool forward(void** src, void** dst, int width, int height, int type, int centre,
             CMeterInfo* caller_meter) {
  const auto size = padded_size(width, height);
  if (!size.has_value()) {
    return false;
  }
  Meter meter(caller_meter, *size, forward_label);
  const RasterRows rows{src, static_cast<std::size_t>(width), static_cast<std::size_t>(height),
                        type_to_load(type), dst};
  const bool in_double = type == TD_FLOAT64 || type == TD_COMPLEX_FLOAT64;
  return (in_double ? sarnum::forward_raster<double>(rows, *size, centre, meter.run())
                    : sarnum::forward_raster<float>(rows, *size, centre, meter.run())) ==
         Outcome::complete;
}

}  // namespace

int CFFTClass::FFT_2D(void** src, void** dst, int width, int height, int TypeData,
                      CMeterInfo* meter) {
  return forward(src, dst, width, height, TypeData, 0, meter) ? 1 : 0;
}

int CFFTClass::FFT_2D_NEW(void** src, void** dst, int width, int height, int TypeData, int centre,
                          CMeterInfo* meter) {
  forward(src, dst, width, height, TypeData, centre, meter);
  return 1;
}

int CFFTClass::IFFT_2D(void** src, void** dst, int width, int height, int TypeData,
                       CMeterInfo* meter) {
  const auto size = padded_size(width, height);
  if (!size.has_value() || size->columns() != static_cast<std::size_t>(width) ||
      size->rows() != static_cast<std::size_t>(height)) {
    return 0;
  }
  Meter started(meter, *size, inverse_label);
  started.start();
  const RasterRows rows{src, size->columns(), size->rows(), TypeData, dst};
  switch (TypeData) {
    case TD_COMPLEX_FLOAT32:
      return sarnum::inverse_raster<float>(rows, *size, started.run()) == Outcome::complete ? 1 : 0;
    case TD_COMPLEX_FLOAT64:
      return sarnum::inverse_raster<double>(rows, *size, started.run()) == Outcome::complete ? 1
                                                                                             : 0;
    default:
      return 1;
  }
}
