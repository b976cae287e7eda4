// Means over adjoining rectangles of pixels, as the classic routine and the C interface share them.
//
// Each sum runs in double, row after row and from left to right. Rows are added one by one to the
// sums of a block of means, which stay in the cache: the order in each sum is the stated one.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <limits>

#include "parallel.h"

namespace sarnum {

/// What is averaged for a pixel z.
enum class Detection { none, intensity, amplitude };

struct Looks {
  std::size_t across;
  std::size_t down;
  Detection detection = Detection::none;
  bool skip_nan = false;  ///< the mean of the other samples, or NaN if there are none
};

template <class Integer>
constexpr Integer divided_rounding_up(Integer size, Integer looks) {
  return size / looks + (size % looks != 0 ? 1 : 0);
}

/// Averages the rows of one look after the other.
class RowAverage {
 public:
  /// @param type  of the pixels; complex ones need a detection.
  RowAverage(int type, const Looks& looks, std::size_t width);

  std::size_t mean_count() const { return divided_rounding_up(width_, across_); }

  /// Means of the looks in `row_count` rows.
  /// @param row_of  gives the address of row k, which may be any.
  /// @param means   mean_count() numbers at any address
  template <class Real, class RowOf>
  void average(const RowOf& row_of, std::size_t row_count, void* means) const {
    const std::size_t mean_count = this->mean_count();
    const auto whole = static_cast<Real>(row_count * across_);
    for (std::size_t first = 0; first < mean_count; first += Block::size) {
      Block block;
      const std::size_t count = std::min(mean_count - first, Block::size);
      const Columns columns{first * across_, std::min((first + count) * across_, width_), across_};
      for (std::size_t k = 0; k < row_count; ++k) {
        add_(row_of(k), columns, block);
      }
      auto* const to = static_cast<unsigned char*>(means) + first * sizeof(Real);
      const auto store = [&](std::size_t i, Real samples) {
        const Real mean = samples == 0 ? std::numeric_limits<Real>::quiet_NaN()
                                       : static_cast<Real>(block.sums[i]) / samples;
        std::memcpy(to + i * sizeof(Real), &mean, sizeof(Real));
      };
      if (skips_nan_) {
        for (std::size_t i = 0; i < count; ++i) {
          store(i, static_cast<Real>(block.counts[i]));
        }
        continue;
      }
      for (std::size_t i = 0; i < count; ++i) {
        store(i, whole);
      }
      if (first + count == mean_count) {
        store(count - 1, static_cast<Real>(row_count * (width_ - (mean_count - 1) * across_)));
      }
    }
  }

 private:
  /// Sums of some means, and how many samples are in each if some are skipped.
  struct Block {
    static constexpr std::size_t size = 256;
    double sums[size] = {};
    std::size_t counts[size] = {};
  };
  struct Columns {
    std::size_t begin, end, across;
  };
  using AddRow = void (*)(const void* row, const Columns& columns, Block& block);

  template <class Layout, Detection detection, bool skip_nan>
  static void add_row(const void* row, const Columns& columns, Block& block);
  template <class Layout>
  static AddRow adder(Detection detection, bool skip_nan);

  std::size_t width_;
  std::size_t across_;
  bool skips_nan_;
  AddRow add_ = nullptr;
};

/// An image in memory. Rows begin anywhere.
struct LookedImage {
  const unsigned char* source;  ///< first row
  std::ptrdiff_t source_row_bytes;
  std::size_t width;
  std::size_t height;
  int type;
  unsigned char* target;  ///< first row
  std::ptrdiff_t target_row_bytes;
};

/// Averages an image into one of floats or doubles. Progress gets the rows of the target.
template <class Real>
Outcome multilook(const LookedImage& image, const Looks& looks, const Run& run);

}  // namespace sarnum
