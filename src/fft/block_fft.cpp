// CVeryFastFT: lays row tables over the caller's blocks and runs the raster transforms on them.
// The distance between rows, `size` floats, is half a row: what overlaps is part of the interface.
#include "sarnum/fft/block_fft.h"

#include <cstddef>
#include <limits>
#include <memory>

#include "fft/radix2.h"
#include "sarnum/fft/fft_object.h"
#include "sarnum/numeric/pixel_types.h"

namespace {

/// The side, or the least int where an int cannot hold it: as a count of pointers that is more
/// than array new can ever provide.
int side_of(int exponent) {
  return sarnum::is_transform_exponent(exponent) ? 1 << exponent : std::numeric_limits<int>::min();
}

void lay_rows(void** rows, float* block, int size) {
  for (int k = 0; k < size; ++k) {
    rows[k] = block + std::ptrdiff_t{size} * k;
  }
}

}  // namespace

CVeryFastFT::CVeryFastFT(int side_exponent)
    : exponent(side_exponent), size(side_of(side_exponent)) {
  auto source = std::make_unique_for_overwrite<void*[]>(static_cast<std::size_t>(size));
  destinationRows = new void*[static_cast<std::size_t>(size)];
  sourceRows = source.release();
}

CVeryFastFT::CVeryFastFT(const CVeryFastFT&) = default;
CVeryFastFT& CVeryFastFT::operator=(const CVeryFastFT&) = default;

CVeryFastFT::~CVeryFastFT() {
  delete[] sourceRows;
  delete[] destinationRows;
}

int CVeryFastFT::AllocateDataMemory() {
  return 1;
}

void CVeryFastFT::FreeDataMemory() {}

int CVeryFastFT::FFT_2D_Rect(float* src, float* dst) {
  lay_rows(sourceRows, src, size);
  lay_rows(destinationRows, dst, size);
  CFFTClass().FFT_2D(sourceRows, destinationRows, size, size, TD_COMPLEX_FLOAT32, nullptr);
  return 1;
}

int CVeryFastFT::IFFT_2D_Rect(float* src, float* dst) {
  lay_rows(sourceRows, src, size);
  lay_rows(destinationRows, dst, size);
  CFFTClass().IFFT_2D(sourceRows, destinationRows, size, size, TD_COMPLEX_FLOAT32, nullptr);
  return 1;
}
