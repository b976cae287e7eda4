#include "imaging/looks.h"

#include <cmath>
#include <type_traits>

#include "numeric/pixel_layout.h"

namespace sarnum {

namespace {

template <class Layout, Detection detection>
double detected(const void* row, std::size_t i) {
  using Element = typename Layout::Element;
  if constexpr (Layout::is_complex) {
    const double re = element_at<Element>(row, 2 * i);
    const double im = element_at<Element>(row, 2 * i + 1);
    const double intensity = re * re + im * im;
    return detection == Detection::amplitude ? std::sqrt(intensity) : intensity;
  } else {
    const double value = element_at<Element>(row, i);
    return detection == Detection::none        ? value
           : detection == Detection::intensity ? value * value
                                               : std::abs(value);
  }
}

/// Adds as many pixels as the compiler knows to each of some sums. It adds to several at once.
template <class Layout, Detection detection, std::size_t across>
void add_few(const void* row, std::size_t begin, double* sums, std::size_t count) {
  for (std::size_t c = 0; c < count; ++c) {
    double sum = sums[c];
    for (std::size_t k = 0; k < across; ++k) {
      sum += detected<Layout, detection>(row, begin + c * across + k);
    }
    sums[c] = sum;
  }
}

/// @return for how many sums it did.
template <class Layout, Detection detection>
std::size_t add_few(const void* row, std::size_t begin, std::size_t end, std::size_t across,
                    double* sums) {
  const std::size_t count = (end - begin) / across;
  switch (across) {
    case 1:
      add_few<Layout, detection, 1>(row, begin, sums, count);
      return count;
    case 2:
      add_few<Layout, detection, 2>(row, begin, sums, count);
      return count;
    case 3:
      add_few<Layout, detection, 3>(row, begin, sums, count);
      return count;
    case 4:
      add_few<Layout, detection, 4>(row, begin, sums, count);
      return count;
    default:
      return 0;
  }
}

}  // namespace

template <class Layout, Detection detection, bool skip_nan>
void RowAverage::add_row(const void* row, const Columns& columns, Block& block) {
  std::size_t c = 0;
  if constexpr (!skip_nan) {
    c = add_few<Layout, detection>(row, columns.begin, columns.end, columns.across, block.sums);
  }
  for (std::size_t i = columns.begin + c * columns.across; i < columns.end; ++c) {
    const std::size_t end = i + std::min(columns.across, columns.end - i);
    double sum = block.sums[c];
    for (; i < end; ++i) {
      const double value = detected<Layout, detection>(row, i);
      if constexpr (skip_nan) {
        if (!std::isnan(value)) {
          sum += value;
          ++block.counts[c];
        }
      } else {
        sum += value;
      }
    }
    block.sums[c] = sum;
  }
}

template <class Layout>
RowAverage::AddRow RowAverage::adder(Detection detection, bool skip_nan) {
  using enum Detection;
  switch (detection) {
    case intensity:
      return skip_nan ? add_row<Layout, intensity, true> : add_row<Layout, intensity, false>;
    case amplitude:
      return skip_nan ? add_row<Layout, amplitude, true> : add_row<Layout, amplitude, false>;
    default:
      if constexpr (Layout::is_complex) {
        return nullptr;
      } else {
        return skip_nan ? add_row<Layout, none, true> : add_row<Layout, none, false>;
      }
  }
}

RowAverage::RowAverage(int type, const Looks& looks, std::size_t width)
    : width_(width),
      across_(std::clamp(looks.across, std::size_t{1}, std::max(width, std::size_t{1}))),
      skips_nan_(looks.skip_nan) {
  with_pixel_layout(type, [&]<class Layout>(Layout) {
    if constexpr (std::is_integral_v<typename Layout::Element>) {
      skips_nan_ = false;
    }
    add_ = adder<Layout>(looks.detection, skips_nan_);
  });
}

template <class Real>
Outcome multilook(const LookedImage& image, const Looks& looks, const Run& run) {
  if (!run.begin()) {
    return Outcome::stopped;
  }
  constexpr std::size_t least_piece = 16384;
  const RowAverage row_average(image.type, looks, image.width);
  const std::size_t down = std::min(looks.down, image.height);
  const std::size_t rows = divided_rounding_up(image.height, down);
  const std::size_t together = std::clamp(least_piece / image.width / down, std::size_t{1}, rows);
  const auto average = [&](std::size_t r) {
    const auto row_of = [&](std::size_t k) {
      return image.source + static_cast<std::ptrdiff_t>(r * down + k) * image.source_row_bytes;
    };
    row_average.average<Real>(
        row_of, std::min(down, image.height - r * down),
        image.target + static_cast<std::ptrdiff_t>(r) * image.target_row_bytes);
  };
  const auto piece = [&](unsigned, std::size_t number) {
    const std::size_t end = std::min((number + 1) * together, rows);
    for (std::size_t r = number * together; r < end; ++r) {
      average(r);
    }
  };
  return for_each_piece(run, divided_rounding_up(rows, together), together, piece)
             ? Outcome::complete
             : Outcome::stopped;
}

template Outcome multilook<float>(const LookedImage&, const Looks&, const Run&);
template Outcome multilook<double>(const LookedImage&, const Looks&, const Run&);

}  // namespace sarnum
