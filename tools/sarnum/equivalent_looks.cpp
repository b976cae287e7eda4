#include "equivalent_looks.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "elementary/functions.h"
#include "row_pieces.h"

namespace sarnum::tool {
namespace {

constexpr std::array block_sizes = {32, 16, 8};
constexpr int enough_blocks = 64;  // to prefer a block size
constexpr int fewest_blocks = 8;
constexpr int most_blocks_across = 1024;
constexpr int most_blocks_down = 64;
static_assert(most_blocks_across * block_sizes.front() <= RowPieces::longest);

/// Mean and variance of a growing sample (Welford's updating, which does not cancel).
struct Moments {
  double count = 0;
  double mean = 0;
  double squares = 0;

  void add(double value) {
    count += 1;
    const double step = value - mean;
    mean += step / count;
    squares += step * (value - mean);
  }
  double looks() const { return mean * mean * (count - 1) / squares; }
};

struct Block {
  double chosen_by;
  double measured;
};

/// A block as far as it has been read. Its samples are parted like the fields of a chessboard.
struct Fields {
  std::array<Moments, 2> colours;
  bool is_whole = true;

  void add(int x, int y, double intensity) {
    is_whole = is_whole && std::isfinite(intensity);
    colours[static_cast<std::size_t>((x + y) % 2)].add(intensity);
  }

  std::optional<Block> block() const {
    const Block block{colours[0].looks(), colours[1].looks()};
    const bool varies = colours[0].squares > 0 && colours[1].squares > 0;
    return is_whole && varies && std::isfinite(block.chosen_by) && std::isfinite(block.measured)
               ? std::optional(block)
               : std::nullopt;
  }
};

double intensity(Quantity quantity, double re, double im) {
  switch (quantity) {
    case Quantity::amplitude:
      return re * re + im * im;
    case Quantity::decibel:
      return power_of_ten(re / 10.0);
    case Quantity::intensity:
      break;
  }
  return re;
}

/// Row by row, since a raster may be stored in rows: each is then read once, however wide.
std::vector<Block> measure_blocks(const RasterInput& input, Quantity quantity, int size) {
  std::vector<Block> blocks;
  RowPieces pieces(input);
  const std::vector<int> columns = evenly_spread(input.width(), size, most_blocks_across);
  for (const int row : evenly_spread(input.height(), size, most_blocks_down)) {
    std::vector<Fields> fields(columns.size());
    for (int y = 0; y < size; ++y) {
      for (std::size_t k = 0, end = 0; k < columns.size();) {
        const int first = columns[k];
        while (end < columns.size() && columns[end] - first == size * static_cast<int>(end - k)) {
          ++end;
        }
        pieces.read(first, row + y, columns[end - 1] + size - first);
        for (; k < end; ++k) {
          for (int x = 0; x < size; ++x) {
            const auto at = static_cast<std::size_t>(columns[k] - first + x);
            fields[k].add(x, y, intensity(quantity, pieces.re()[at], pieces.im()[at]));
          }
        }
      }
    }
    for (const Fields& field : fields) {
      if (const auto block = field.block()) {
        blocks.push_back(*block);
      }
    }
  }
  return blocks;
}

double median_of_measured(std::vector<Block>& blocks) {
  const auto by_measure = [](const Block& a, const Block& b) { return a.measured < b.measured; };
  const auto middle = blocks.begin() + static_cast<std::ptrdiff_t>(blocks.size() / 2);
  std::nth_element(blocks.begin(), middle, blocks.end(), by_measure);
  if (blocks.size() % 2 == 1) {
    return middle->measured;
  }
  return (middle->measured + std::max_element(blocks.begin(), middle, by_measure)->measured) / 2;
}

}  // namespace

std::optional<EquivalentLooks> equivalent_looks(const RasterInput& input, Quantity quantity) {
  int size = block_sizes.back();
  for (const int candidate : block_sizes) {
    if (std::int64_t{input.width() / candidate} * (input.height() / candidate) >= enough_blocks) {
      size = candidate;
      break;
    }
  }
  std::vector<Block> blocks =
      measure_blocks(input, input.type().is_complex() ? Quantity::amplitude : quantity, size);
  if (blocks.size() < fewest_blocks) {
    return std::nullopt;
  }
  std::sort(blocks.begin(), blocks.end(),
            [](const Block& a, const Block& b) { return a.chosen_by > b.chosen_by; });
  blocks.resize((blocks.size() + 3) / 4);
  return EquivalentLooks{median_of_measured(blocks), static_cast<int>(blocks.size()), size};
}

}  // namespace sarnum::tool
