// Plans, and transforms of lines.
#include "fft/lines.h"

#include <bit>
#include <cmath>
#include <new>

#include "c/options.h"
#include "c/plan.h"

namespace {

using sarnum::Arguments;
using sarnum::Extent;

constexpr std::size_t longest = std::size_t{1} << 30;

std::size_t magnitude(std::ptrdiff_t value) {
  return value < 0 ? std::size_t{0} - static_cast<std::size_t>(value)
                   : static_cast<std::size_t>(value);
}

/// The caller's lines, of n samples each.
struct GivenLines {
  std::size_t n;
  std::size_t number_size;
  void* re;
  void* im;
  std::size_t count;
  std::ptrdiff_t stride;
  std::ptrdiff_t distance;

  std::size_t sample_size() const { return im == nullptr ? 2 * number_size : number_size; }

  /// From the first to the last sample in memory, at most this far.
  std::size_t span() const {
    return (n - 1) * magnitude(stride) + (count - 1) * magnitude(distance);
  }

  /// From the first to the last sample of a line, and to the first one of the last line.
  double reach_of_line() const {
    return static_cast<double>(n - 1) * std::abs(static_cast<double>(stride));
  }
  double reach_of_lines() const {
    return static_cast<double>(count - 1) * std::abs(static_cast<double>(distance));
  }
  bool is_addressable() const { return reach_of_line() + reach_of_lines() < 0x1p58; }

  bool lines_are_apart() const {
    return count == 1 || magnitude(distance) >= (n - 1) * magnitude(stride) + 1 ||
           (distance != 0 && magnitude(stride) >= (count - 1) * magnitude(distance) + 1);
  }

  Extent extent(const void* numbers) const {
    const std::size_t below = (stride < 0 ? (n - 1) * magnitude(stride) : 0) +
                              (distance < 0 ? (count - 1) * magnitude(distance) : 0);
    return {reinterpret_cast<std::uintptr_t>(numbers) - below * sample_size(),
            (span() + 1) * sample_size()};
  }

  /// Whether no real part is an imaginary part too.
  bool parts_are_apart() const {
    if (im == nullptr || !extent(re).overlaps(extent(im))) {
      return true;
    }
    const auto gap = static_cast<std::ptrdiff_t>(reinterpret_cast<std::uintptr_t>(im) -
                                                 reinterpret_cast<std::uintptr_t>(re)) /
                     static_cast<std::ptrdiff_t>(number_size);
    const auto lines = static_cast<std::ptrdiff_t>(count);
    for (std::ptrdiff_t k = 1 - lines; k < lines; ++k) {
      const std::ptrdiff_t rest = gap - k * distance;
      if (rest % stride == 0 && magnitude(rest / stride) < n) {
        return false;
      }
    }
    return true;
  }

  template <class Real>
  sarnum::Lines<Real> as() const {
    // A single sample may be given with any stride, even one that no product can hold.
    return {static_cast<Real*>(re), static_cast<Real*>(im), count, n == 1 ? 1 : stride, distance};
  }
};

Arguments& check_apart(Arguments& arguments, bool parts_are_apart) {
  return arguments.that(parts_are_apart, "im", "an array that shares numbers with re",
                        "pass an array of its own, or NULL if samples are interleaved in re");
}

/// Names the argument that is the largest, and so most likely the wrong one.
Arguments& check_reach(Arguments& arguments, const GivenLines& lines) {
  constexpr const char* farther = " reach farther than memory; pass the ";
  const bool is_lawful = lines.is_addressable();
  if (lines.reach_of_line() >= lines.reach_of_lines()) {
    return arguments.that(is_lawful, "stride", lines.stride, lines.n, " samples of a line", farther,
                          "distance in samples from a sample to the next one");
  }
  if (magnitude(lines.distance) > lines.count) {
    return arguments.that(is_lawful, "distance", lines.distance, lines.count, " lines", farther,
                          "distance in samples from a line to the next one");
  }
  return arguments.that(is_lawful, "count", lines.count, "so many lines at distance ",
                        lines.distance, farther, "number of lines in the array");
}

Arguments& check_lines(Arguments& arguments, const GivenLines& lines) {
  if (lines.count == 0) {
    return arguments;  // an empty container may have no address, and no distances
  }
  arguments.array("re", lines.re, lines.number_size);
  if (lines.im != nullptr) {
    arguments.array("im", lines.im, lines.number_size);
  }
  arguments.that(lines.stride != 0, "stride", lines.stride,
                 "pass the distance from a sample of a line to the next one, such as 1");
  if (arguments.are_refused() || check_reach(arguments, lines).are_refused()) {
    return arguments;
  }
  const std::ptrdiff_t interleaved = lines.distance == 0 ? 1 : lines.distance;
  arguments.that(lines.lines_are_apart(), "distance", lines.distance, lines.count, " lines of ",
                 lines.n, " samples at stride ", lines.stride,
                 " may share samples; pass a distance of at least ",
                 (lines.n - 1) * magnitude(lines.stride) + 1, " in magnitude, or distance ",
                 interleaved, " with a stride of at least ",
                 (lines.count - 1) * magnitude(interleaved) + 1, " to interleave the lines");
  return check_apart(arguments, lines.parts_are_apart());
}

template <class Real>
sarnum_status create(std::size_t n, sarnum_plan** plan) {
  *plan = new sarnum_plan(std::in_place_type<Real>, n, std::countr_zero(n));
  return SARNUM_OK;
}

}  // namespace

sarnum_status sarnum_plan_create(size_t n, sarnum_type precision, sarnum_plan** plan) {
  Arguments arguments;
  arguments.given("plan", plan, "pass the address of a pointer that receives the plan")
      .one_of("precision", precision, {SARNUM_FLOAT32, SARNUM_FLOAT64},
              "pass SARNUM_FLOAT32 or SARNUM_FLOAT64")
      .that(n >= 1 && n <= longest, "n", n, "pass a length from 1 to ", longest);
  if (arguments.are_refused()) {
    return arguments.status();
  }
  if (!std::has_single_bit(n)) {
    return sarnum::failure(
        SARNUM_UNSUPPORTED, "n is ", n,
        ": this version transforms powers of two; fill the line with zeros up to ",
        std::bit_ceil(n), " samples.");
  }
  return sarnum::guarded([&] {
    return precision == SARNUM_FLOAT64 ? create<double>(n, plan) : create<float>(n, plan);
  });
}

void sarnum_plan_destroy(sarnum_plan* plan) {
  delete plan;
}

size_t sarnum_plan_length(const sarnum_plan* plan) {
  return plan == nullptr ? 0 : plan->n;
}

sarnum_type sarnum_plan_precision(const sarnum_plan* plan) {
  return plan == nullptr ? 0 : plan->is_double() ? SARNUM_FLOAT64 : SARNUM_FLOAT32;
}

sarnum_status sarnum_transform(const sarnum_plan* plan, sarnum_direction direction,
                               sarnum_scaling scaling, void* re, void* im) {
  Arguments arguments;
  check_scaling(check_direction(check_plan(arguments, "plan", plan), direction), scaling);
  if (arguments.are_refused()) {
    return arguments.status();
  }
  arguments.array("re", re, plan->number_size());
  if (im != nullptr) {
    const std::size_t bytes = plan->n * plan->number_size();
    check_apart(arguments.array("im", im, plan->number_size()),
                !Extent(re, bytes).overlaps(Extent(im, bytes)));
  }
  if (arguments.are_refused()) {
    return arguments.status();
  }
  sarnum::with_plan(*plan, [&]<class Real>(const sarnum::Plan<Real>& of) {
    sarnum::transform_line(of, sarnum::to_direction(direction), sarnum::to_scaling(scaling),
                           static_cast<Real*>(re), static_cast<Real*>(im));
  });
  return SARNUM_OK;
}

sarnum_status sarnum_transform_lines(const sarnum_plan* plan, sarnum_direction direction,
                                     sarnum_scaling scaling, void* re, void* im, size_t count,
                                     ptrdiff_t stride, ptrdiff_t distance,
                                     const sarnum_options* options) {
  Arguments arguments;
  sarnum::CallRun run;
  check_scaling(check_direction(check_plan(arguments, "plan", plan), direction), scaling);
  if (arguments.are_refused()) {
    return arguments.status();
  }
  const GivenLines lines{plan->n, plan->number_size(), re, im, count, stride, distance};
  check_lines(arguments, lines).then([&] { return run.read(options, lines.n * count); });
  if (arguments.are_refused() || count == 0) {
    return arguments.status();
  }
  return sarnum::with_plan(*plan, [&]<class Real>(const sarnum::Plan<Real>& of) {
    return run.perform(count, [&](const sarnum::Run& how) {
      return sarnum::transform_lines(of, sarnum::to_direction(direction),
                                     sarnum::to_scaling(scaling), lines.as<Real>(), how);
    });
  });
}

sarnum_status sarnum_compress_lines(const sarnum_plan* plan, const void* reference_re,
                                    const void* reference_im, size_t reference_count, void* re,
                                    void* im, size_t count, ptrdiff_t stride, ptrdiff_t distance,
                                    const sarnum_options* options) {
  Arguments arguments;
  sarnum::CallRun run;
  if (check_plan(arguments, "plan", plan).are_refused()) {
    return arguments.status();
  }
  const std::size_t size = plan->number_size();
  arguments.array("reference_re", reference_re, size)
      .that(reference_count >= 1 && reference_count <= plan->n, "reference_count", reference_count,
            "pass 1 to ", plan->n, ", the length of the plan");
  if (reference_im != nullptr) {
    arguments.array("reference_im", reference_im, size);
  }
  const GivenLines lines{plan->n, size, re, im, count, stride, distance};
  check_lines(arguments, lines);
  if (!arguments.are_refused() && count > 0) {
    const std::size_t bytes = reference_count * size * (reference_im == nullptr ? 2 : 1);
    const auto is_apart = [&](const void* part) {
      return part == nullptr ||
             (!Extent(part, bytes).overlaps(lines.extent(re)) &&
              (im == nullptr || !Extent(part, bytes).overlaps(lines.extent(im))));
    };
    for (const auto& [name, part] :
         {std::pair{"reference_re", reference_re}, std::pair{"reference_im", reference_im}}) {
      arguments.that(
          is_apart(part), name, "an array within the lines",
          "pass a copy of the reference that lies outside the range of the lines, gaps included");
    }
  }
  arguments.then([&] { return run.read(options, lines.n * count); });
  if (arguments.are_refused() || count == 0) {
    return arguments.status();
  }
  return sarnum::with_plan(*plan, [&]<class Real>(const sarnum::Plan<Real>& of) {
    return run.perform(count, [&](const sarnum::Run& how) {
      return sarnum::compress_lines(of, static_cast<const Real*>(reference_re),
                                    static_cast<const Real*>(reference_im), reference_count,
                                    lines.as<Real>(), how);
    });
  });
}
