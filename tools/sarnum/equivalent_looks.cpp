#include "equivalent_looks.h"

#include <sarnum/sarnum.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace sarnum::tool {
namespace {

constexpr std::array block_sizes = {32, 16, 8};
constexpr int enough_blocks = 64;  // to prefer a block size
constexpr int fewest_blocks = 8;
constexpr int most_block_rows = 64;

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

/// The intensities of a block of rows; NaN where a pixel holds no sample.
class IntensityReader {
 public:
  IntensityReader(const RasterInput& input, Quantity quantity, int rows)
      : input_(input),
        quantity_(quantity),
        pixels_(size(rows) * input.type().bytes()),
        re_(size(rows)),
        im_(size(rows)) {}

  const std::vector<double>& read(int first, int rows) {
    input_.read_rows(first, rows, pixels_.data());
    for (int y = 0; y < rows; ++y) {
      Transform_to_double(pixels_.data() + size(y) * input_.type().bytes(), input_.type().code,
                          re_.data() + size(y), im_.data() + size(y), input_.width());
    }
    input_.gaps().mark(0, first, input_.width(), std::span(re_).first(size(rows)), im_);
    for (std::size_t i = 0; i < size(rows); ++i) {
      re_[i] = intensity(re_[i], im_[i]);
    }
    return re_;
  }

 private:
  std::size_t size(int rows) const {
    return static_cast<std::size_t>(input_.width()) * static_cast<std::size_t>(rows);
  }

  double intensity(double re, double im) const {
    if (input_.type().is_complex()) {
      return re * re + im * im;
    }
    switch (quantity_) {
      case Quantity::amplitude:
        return re * re;
      case Quantity::decibel:
        return std::pow(10.0, re / 10.0);
      case Quantity::intensity:
        break;
    }
    return re;
  }

  const RasterInput& input_;
  Quantity quantity_;
  std::vector<std::byte> pixels_;
  std::vector<double> re_;
  std::vector<double> im_;
};

std::optional<Block> measure_block(const double* corner, std::size_t stride, int size) {
  std::array<Moments, 2> colours;
  for (int y = 0; y < size; ++y) {
    for (int x = 0; x < size; ++x) {
      const double value =
          corner[static_cast<std::size_t>(y) * stride + static_cast<std::size_t>(x)];
      if (!std::isfinite(value)) {
        return std::nullopt;
      }
      colours[static_cast<std::size_t>((x + y) % 2)].add(value);
    }
  }
  const Block block{colours[0].looks(), colours[1].looks()};
  const bool varies = colours[0].squares > 0 && colours[1].squares > 0;
  return varies && std::isfinite(block.chosen_by) && std::isfinite(block.measured)
             ? std::optional(block)
             : std::nullopt;
}

std::vector<Block> measure_blocks(const RasterInput& input, Quantity quantity, int size) {
  std::vector<Block> blocks;
  IntensityReader reader(input, quantity, size);
  const int block_rows = input.height() / size;
  const int rows_read = std::min(block_rows, most_block_rows);
  const auto stride = static_cast<std::size_t>(input.width());
  for (int k = 0; k < rows_read; ++k) {
    const auto block_row =
        static_cast<int>((2 * std::int64_t{k} + 1) * block_rows / (2 * std::int64_t{rows_read}));
    const std::vector<double>& intensities = reader.read(block_row * size, size);
    for (int x = 0; x + size <= input.width(); x += size) {
      if (const auto block =
              measure_block(&intensities[static_cast<std::size_t>(x)], stride, size)) {
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
  std::vector<Block> blocks = measure_blocks(input, quantity, size);
  if (blocks.size() < fewest_blocks) {
    return std::nullopt;
  }
  std::sort(blocks.begin(), blocks.end(),
            [](const Block& a, const Block& b) { return a.chosen_by > b.chosen_by; });
  blocks.resize((blocks.size() + 3) / 4);
  return EquivalentLooks{median_of_measured(blocks), static_cast<int>(blocks.size()), size};
}

}  // namespace sarnum::tool
