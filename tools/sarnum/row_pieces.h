// Pieces of the rows of a raster: what a look at an image needs of memory does not grow with its
// width.
#ifndef SARNUM_TOOL_ROW_PIECES_H
#define SARNUM_TOOL_ROW_PIECES_H

#include <cstddef>
#include <span>
#include <vector>

#include "raster_input.h"

namespace sarnum::tool {

/// The first pixels of parts of `size` pixels along a side: of all that fit, or of so many at most,
/// which are evenly spread.
std::vector<int> evenly_spread(int side, int size, int most);

/// Reads pieces of rows of the first band. Real pixels become what scale and offset make of their
/// samples; of those that hold no sample the real part becomes NaN.
class RowPieces {
 public:
  static constexpr int longest = 1 << 15;

  explicit RowPieces(const RasterInput& input);

  /// @param count  of pixels, at most `longest`.
  void read(int column, int row, int count);

  // Of the piece read last. Real pixels have imaginary parts of 0.
  std::span<const double> re() const { return std::span(re_).first(count_); }
  std::span<const double> im() const { return std::span(im_).first(count_); }

 private:
  const RasterInput& input_;
  double scale_;
  double offset_;
  std::size_t count_ = 0;
  std::vector<std::byte> pixels_;
  std::vector<double> re_;
  std::vector<double> im_;
};

}  // namespace sarnum::tool

#endif
