#include "row_pieces.h"

#include <sarnum/sarnum.h>

#include <algorithm>
#include <cstdint>

namespace sarnum::tool {

std::vector<int> evenly_spread(int side, int size, int most) {
  const std::int64_t parts = side / size;
  const std::int64_t taken = std::min<std::int64_t>(parts, most);
  std::vector<int> starts;
  for (std::int64_t k = 0; k < taken; ++k) {
    starts.push_back(size * static_cast<int>((2 * k + 1) * parts / (2 * taken)));
  }
  return starts;
}

RowPieces::RowPieces(const RasterInput& input)
    : input_(input),
      scale_(input.type().is_complex() ? 1 : input.band().GetScale()),
      offset_(input.type().is_complex() ? 0 : input.band().GetOffset()) {
  const auto most = static_cast<std::size_t>(std::min(input.width(), longest));
  pixels_.resize(most * input.type().bytes());
  re_.resize(most);
  im_.resize(most);
}

void RowPieces::read(int column, int row, int count) {
  input_.read(column, row, count, 1, pixels_.data());
  count_ = static_cast<std::size_t>(count);
  Transform_to_double(pixels_.data(), input_.type().code, re_.data(), im_.data(), count);
  input_.gaps().mark(column, row, count, std::span(re_).first(count_), im());
  for (std::size_t i = 0; i < count_; ++i) {
    re_[i] = re_[i] * scale_ + offset_;
  }
}

}  // namespace sarnum::tool
