// Multilooking without a host's work: a memcpy of the raster is the least that any reader does.
//
// This program is the host of its own rasters: the raster layer below, which hands out rows in
// memory, takes the place of the standalone host's for the library that this program loads.
#include <sarnum/c.h>
#include <sarnum/host/file_layer.h>
#include <sarnum/sarnum.h>

#include <cmath>
#include <cstddef>
#include <cstring>
#include <vector>

#include "side_by_side.h"

namespace {

constexpr int side = 8192;
constexpr int looks = 4;

std::vector<float> input(std::size_t{side} * side);
std::vector<float> output(std::size_t{side / looks} * (side / looks));

}  // namespace

class CFileLayer::Raster {
 public:
  std::vector<float>& samples;
  int width;

  float* row(int number) const {
    return &samples[static_cast<std::size_t>(number) * static_cast<std::size_t>(width)];
  }
};

CFileLayer::CFileLayer(CMeterInfoBase* /*meter*/) {}
CFileLayer::~CFileLayer() = default;
void CFileLayer::Close() {}

int CFileLayer::Open(const char* /*path*/, unsigned long, int, unsigned long) {
  raster_.reset(new Raster{input, side});
  return 1;
}

int CFileLayer::Create(const char* /*path*/, int width, int, int, unsigned long, unsigned long,
                       ExtraTag*, int) {
  raster_.reset(new Raster{output, width});
  return 1;
}

int CFileLayer::Width() {
  return raster_->width;
}

int CFileLayer::Height() {
  return static_cast<int>(raster_->samples.size()) / raster_->width;
}

void* CFileLayer::GetRowAddr(int row) {
  return raster_->row(row);
}

int CFileLayer::WriteRow(void* data, int, int row, int, int) {
  return data == raster_->row(row) ? 1 : 0;  // it is in its place
}

int CFileLayer::SetBlockMode(int, int, int, int, int, int) {
  return 1;
}

int CFileLayer::ShiftBlock(int, int) {
  return 1;
}

namespace {

/// The largest relative error of the means.
double worst_mean() {
  double worst = 0.0;
  for (int i = 0; i < static_cast<int>(output.size()); ++i) {
    const int row = i / (side / looks) * looks;
    const int column = i % (side / looks) * looks;
    double sum = 0.0;
    for (int k = 0; k < looks * looks; ++k) {
      const int position = (row + k / looks) * side + column + k % looks;
      sum += static_cast<double>(input[static_cast<std::size_t>(position)]);
    }
    const double right = sum / (looks * looks);
    const double error =
        std::abs(static_cast<double>(output[static_cast<std::size_t>(i)]) - right) / right;
    if (!(error <= worst)) {  // NaN too, which nothing takes away again
      worst = error;
      if (std::isnan(error)) {
        break;
      }
    }
  }
  return worst;
}

}  // namespace

int main(int argc, char** argv) {
  for (std::size_t i = 0; i < input.size(); ++i) {
    input[i] = 2.0F + sample<float>(i);
  }
  std::vector<float> copy(input.size()), means(output.size());
  CCustomMeterInfo meter;
  const auto multilook = [](std::vector<float>& to, std::ptrdiff_t threads) {
    sarnum_options options = SARNUM_OPTIONS_INIT;
    options.threads = threads;
    const sarnum_multilook_options how = SARNUM_MULTILOOK_INIT(looks, looks);
    sarnum_multilook(SARNUM_FLOAT32, input.data(), side, side, side * sizeof(float), SARNUM_FLOAT32,
                     to.data(), side / looks * sizeof(float), &how, &options);
  };
  return run_side_by_side(
      {{.name = "multilook 4x4 in memory/8192",
        .ours = [&] { NoncoherentAccumulationR("output", "input", looks, looks, &meter); },
        .peer = {"memcpy",
                 [&] { std::memcpy(copy.data(), input.data(), input.size() * sizeof(float)); },
                 2.0},
        .difference = worst_mean,
        .tolerance = 1e-6},
       {.name = "2 threads, multilook 4x4/8192",
        .ours = [&] { multilook(output, 2); },
        .peer = {"1 thread", [&] { multilook(means, 1); }, 0.6},
        .difference = [&] { return output == means ? worst_mean() : 1.0; },
        .tolerance = 1e-6}},
      argc, argv);
}
