// The equivalent number of looks of an image: how smooth its speckle is.
#ifndef SARNUM_TOOL_EQUIVALENT_LOOKS_H
#define SARNUM_TOOL_EQUIVALENT_LOOKS_H

#include <optional>

#include "quantity.h"
#include "raster_input.h"

namespace sarnum::tool {

struct EquivalentLooks {
  double looks;
  int blocks;      ///< on which the figure rests
  int block_size;  ///< side of a block in pixels
};

/// Mean²/variance of intensity, which is L for L independent looks of fully developed speckle
/// (J. W. Goodman, JOSA 66, 1976), where the image is homogeneous: the median over the
/// quarter of the blocks that vary least.
///
/// Choosing the smoothest blocks and measuring them on the same samples would find too many
/// looks even in pure speckle. So the samples of a block are parted like the fields of a
/// chessboard: those of one colour choose, those of the other measure.
///
/// Scale and offset of real samples are applied. Blocks with nodata, masked samples, NaN or no
/// variance are left out. Large images are sampled in evenly spaced rows and columns of blocks.
/// @param quantity  of real samples; the intensity of complex ones is measured.
/// @return nothing when there are too few blocks.
std::optional<EquivalentLooks> equivalent_looks(const RasterInput& input, Quantity quantity);

}  // namespace sarnum::tool

#endif
