// Transforms of images.
#include <algorithm>
#include <bit>
#include <memory>
#include <vector>

#include "c/options.h"
#include "c/plan.h"
#include "fft/raster_transform.h"
#include "numeric/pixel_layout.h"

namespace {

using sarnum::Arguments;
using sarnum::PaddedSize;
using sarnum::RasterRows;

sarnum_status overlap(const char* a, std::size_t i, const char* b, std::size_t j) {
  return sarnum::failure(
      SARNUM_INVALID_ARGUMENT, a, "[", i, "] overlaps ", b, "[", j,
      "]: give each row of the target memory of its own, or the beginning of the "
      "same row of the source.");
}

sarnum_status check_rows(const char* name, const void* const* rows, std::size_t count) {
  const auto* const missing = std::find(rows, rows + count, nullptr);
  return missing == rows + count
             ? SARNUM_OK
             : sarnum::failure(SARNUM_INVALID_ARGUMENT, name, "[", missing - rows,
                               "] is NULL: pass the addresses of ", count, " rows.");
}

/// Whether rows lie apart as they must. Throws std::bad_alloc.
sarnum_status check_overlaps(const RasterRows& rows, const PaddedSize& size,
                             std::size_t target_pixel) {
  struct Row {
    std::uintptr_t begin;
    std::size_t number;
  };
  const std::size_t target_bytes = size.columns() * target_pixel;
  const std::size_t source_bytes = rows.width * sarnum::pixel_size(rows.type);
  std::vector<Row> sorted(size.rows());
  for (std::size_t i = 0; i < sorted.size(); ++i) {
    sorted[i] = {reinterpret_cast<std::uintptr_t>(rows.target[i]), i};
  }
  std::sort(sorted.begin(), sorted.end(),
            [](const Row& a, const Row& b) { return a.begin < b.begin; });
  for (std::size_t i = 1; i < sorted.size(); ++i) {
    if (sorted[i].begin - sorted[i - 1].begin < target_bytes) {
      return overlap("target", sorted[i].number, "target", sorted[i - 1].number);
    }
  }
  for (std::size_t k = 0; k < rows.height; ++k) {
    const auto begin = reinterpret_cast<std::uintptr_t>(rows.source[k]);
    auto row = std::upper_bound(
        sorted.begin(), sorted.end(), begin,
        [&](std::uintptr_t at, const Row& of) { return at < of.begin + target_bytes; });
    for (; row != sorted.end() && row->begin < begin + source_bytes; ++row) {
      if (row->number != k || row->begin != begin) {
        return overlap("source", k, "target", row->number);
      }
    }
  }
  return SARNUM_OK;
}

/// The checks that both functions share, once sizes and types are known to be lawful.
sarnum_status check_raster(const RasterRows& rows, const PaddedSize& size,
                           std::size_t target_pixel) {
  Arguments arguments;
  arguments.given("source", rows.source, "pass an array of pointers to rows")
      .given("target", rows.target, "pass an array of pointers to rows")
      .then([&] { return check_rows("source", rows.source, rows.height); })
      .then([&] { return check_rows("target", rows.target, size.rows()); })
      .then([&] {
        return sarnum::guarded([&] { return check_overlaps(rows, size, target_pixel); });
      });
  return arguments.status();
}

}  // namespace

sarnum_status sarnum_transform_2d(const sarnum_plan* row_plan, const sarnum_plan* column_plan,
                                  sarnum_direction direction, sarnum_scaling scaling,
                                  sarnum_type type, const void* const* source, size_t width,
                                  size_t height, void* const* target,
                                  const sarnum_options* options) {
  Arguments arguments;
  sarnum::CallRun run;
  check_plan(check_plan(arguments, "row_plan", row_plan), "column_plan", column_plan);
  check_scaling(check_direction(arguments, direction), scaling).pixel_type("type", type);
  if (arguments.are_refused()) {
    return arguments.status();
  }
  const PaddedSize size{std::countr_zero(row_plan->n), std::countr_zero(column_plan->n)};
  const RasterRows rows{source, width, height, type, target};
  const bool is_double = row_plan->is_double();
  arguments
      .that(is_double == column_plan->is_double(), "column_plan",
            is_double ? "of SARNUM_FLOAT32" : "of SARNUM_FLOAT64", "row_plan is of ",
            is_double ? "SARNUM_FLOAT64" : "SARNUM_FLOAT32", "; pass two plans of equal precision")
      .that(width >= 1 && width <= row_plan->n, "width", width, "pass 1 to ", row_plan->n,
            ", the length of row_plan")
      .that(height >= 1 && height <= column_plan->n, "height", height, "pass 1 to ", column_plan->n,
            ", the length of column_plan")
      .then([&] { return check_raster(rows, size, 2 * row_plan->number_size()); })
      .then([&] { return run.read(options, size.columns() * size.rows()); });
  if (arguments.are_refused()) {
    return arguments.status();
  }
  return sarnum::with_plan(*row_plan, [&]<class Real>(const sarnum::Plan<Real>& of_rows) {
    const auto& of_columns = *std::get_if<sarnum::Plan<Real>>(&column_plan->of);
    return run.perform(size.units(), [&](const sarnum::Run& how) {
      return sarnum::planned_raster(rows, of_rows, of_columns, sarnum::to_direction(direction),
                                    sarnum::to_scaling(scaling), how);
    });
  });
}

sarnum_status sarnum_transform_raster(sarnum_direction direction, sarnum_type type,
                                      const void* const* source, size_t width, size_t height,
                                      void* const* target, const sarnum_options* options) {
  Arguments arguments;
  sarnum::CallRun run;
  check_direction(arguments, direction).pixel_type("type", type);
  const bool inverse = direction == SARNUM_INVERSE;
  if (inverse) {
    arguments.one_of(
        "type", type, {SARNUM_COMPLEX_FLOAT32, SARNUM_COMPLEX_FLOAT64},
        "pass SARNUM_COMPLEX_FLOAT32 or SARNUM_COMPLEX_FLOAT64 to an inverse transform");
  }
  constexpr std::size_t longest = std::size_t{1} << 30;
  for (const auto& [name, side] : {std::pair{"width", width}, std::pair{"height", height}}) {
    arguments.that(side >= 1 && side <= longest, name, side, "pass 1 to ", longest)
        .that(!inverse || std::has_single_bit(side), name, side,
              "pass a power of two to an inverse transform");
  }
  if (arguments.are_refused()) {
    return arguments.status();
  }
  const PaddedSize size{std::countr_zero(std::bit_ceil(width)),
                        std::countr_zero(std::bit_ceil(height))};
  const RasterRows rows{source, width, height, type, target};
  const bool is_double = type == SARNUM_FLOAT64 || type == SARNUM_COMPLEX_FLOAT64;
  arguments
      .then([&] {
        return check_raster(rows, size, 2 * (is_double ? sizeof(double) : sizeof(float)));
      })
      .then([&] { return run.read(options, size.columns() * size.rows()); });
  if (arguments.are_refused()) {
    return arguments.status();
  }
  return run.perform(size.units(), [&](const sarnum::Run& how) {
    if (inverse) {
      return is_double ? sarnum::inverse_raster<double>(rows, size, how)
                       : sarnum::inverse_raster<float>(rows, size, how);
    }
    return is_double ? sarnum::forward_raster<double>(rows, size, 0, how)
                     : sarnum::forward_raster<float>(rows, size, 0, how);
  });
}
