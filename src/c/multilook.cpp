// Multilooking in memory and of files.
#include <cmath>
#include <utility>

#include "c/arguments.h"
#include "c/options.h"
#include "imaging/looks.h"
#include "imaging/multilooked_file.h"
#include "numeric/pixel_layout.h"

namespace {

using sarnum::Arguments;
using sarnum::Detection;
using sarnum::Looks;

/// Reads and checks everything but whether the pixels go with the detection.
sarnum_status read_looks(const sarnum_multilook_options* given, Looks& looks) {
  constexpr sarnum::OptionsKind kind{
      "looks", "SARNUM_MULTILOOK_INIT(across, down)",
      offsetof(sarnum_multilook_options, skip_nan) + sizeof(std::int32_t)};
  sarnum_multilook_options options = SARNUM_MULTILOOK_INIT(0, 0);
  Arguments arguments;
  arguments
      .given("looks", given,
             "pass a structure that begins with SARNUM_MULTILOOK_INIT(across, down)")
      .then([&] { return sarnum::read_options(kind, given, options); })
      .that(options.looks_across >= 1, "looks->looks_across", options.looks_across,
            "pass at least 1")
      .that(options.looks_down >= 1, "looks->looks_down", options.looks_down, "pass at least 1")
      .one_of("looks->detection", options.detection,
              {SARNUM_AS_IS, SARNUM_INTENSITY, SARNUM_AMPLITUDE},
              "pass SARNUM_AS_IS, SARNUM_INTENSITY or SARNUM_AMPLITUDE")
      .one_of("looks->skip_nan", options.skip_nan, {0, 1}, "pass 0 or 1");
  looks = {options.looks_across, options.looks_down,
           options.detection == SARNUM_INTENSITY   ? Detection::intensity
           : options.detection == SARNUM_AMPLITUDE ? Detection::amplitude
                                                   : Detection::none,
           options.skip_nan == 1};
  return arguments.status();
}

/// Rows in memory.
struct Rows {
  std::uintptr_t first;
  std::ptrdiff_t row_bytes;
  std::size_t count;
  std::size_t bytes;  ///< of the pixels in a row

  std::uintptr_t at(std::size_t row) const {
    return first + row * static_cast<std::size_t>(row_bytes);
  }
  bool are_addressable() const {
    constexpr double most = 0x1p58;
    return static_cast<double>(count - 1) * std::abs(static_cast<double>(row_bytes)) +
               static_cast<double>(bytes) <
           most;
  }
  bool are_apart() const {
    const auto forward = static_cast<std::size_t>(row_bytes);
    return count == 1 || (row_bytes < 0 ? 0 - forward : forward) >= bytes;
  }
  /// The same rows from the lowest one on.
  Rows ascending() const {
    return row_bytes < 0 ? Rows{at(count - 1), -row_bytes, count, bytes} : *this;
  }
  /// Whether one of the rows has a byte of those from `begin` on. For ascending rows.
  bool overlap(std::uintptr_t begin, std::size_t size) const {
    if (begin + size <= first) {
      return false;
    }
    if (row_bytes == 0 || begin < first) {
      return begin < first + bytes;
    }
    // The last row that begins before the end, which reaches farthest.
    const std::size_t row =
        std::min((begin + size - 1 - first) / static_cast<std::size_t>(row_bytes), count - 1);
    return at(row) + bytes > begin;
  }
  bool overlap(const Rows& others) const {
    const Rows ours = ascending();
    for (std::size_t row = 0; row < others.count; ++row) {
      if (ours.overlap(others.at(row), others.bytes)) {
        return true;
      }
    }
    return false;
  }
};

/// Of a single row the distance does not matter.
Rows rows_at(const void* first, std::ptrdiff_t row_bytes, std::size_t count, std::size_t bytes) {
  return {reinterpret_cast<std::uintptr_t>(first), count == 1 ? 0 : row_bytes, count, bytes};
}

Arguments& check_reach(Arguments& arguments, const char* name, const Rows& rows) {
  return arguments.that(rows.are_addressable(), name, rows.row_bytes, "an image with ", rows.count,
                        " such rows reaches farther than memory; pass the distance in bytes from a "
                        "row to the next one");
}

}  // namespace

sarnum_status sarnum_multilook(sarnum_type type, const void* source, size_t width, size_t height,
                               ptrdiff_t source_row_bytes, sarnum_type target_type, void* target,
                               ptrdiff_t target_row_bytes, const sarnum_multilook_options* looks,
                               const sarnum_options* options) {
  constexpr std::size_t longest = std::size_t{1} << 48;
  Arguments arguments;
  sarnum::CallRun run;
  Looks how{1, 1};
  arguments.pixel_type("type", type)
      .given("source", source, "pass the address of the first row")
      .that(width >= 1 && width <= longest, "width", width, "pass 1 to ", longest)
      .that(height >= 1 && height <= longest, "height", height, "pass 1 to ", longest)
      .one_of("target_type", target_type, {SARNUM_FLOAT32, SARNUM_FLOAT64},
              "pass SARNUM_FLOAT32 or SARNUM_FLOAT64")
      .given("target", target, "pass the address of the first row")
      .then([&] { return read_looks(looks, how); });
  if (arguments.are_refused()) {
    return arguments.status();
  }
  const bool is_complex = type >= SARNUM_COMPLEX_FLOAT32;
  arguments.that(!is_complex || how.detection != Detection::none, "looks->detection",
                 sarnum_detection{SARNUM_AS_IS},
                 "pass SARNUM_INTENSITY or SARNUM_AMPLITUDE for complex pixels");
  const bool is_double = target_type == SARNUM_FLOAT64;
  const Rows from = rows_at(source, source_row_bytes, height, width * sarnum::pixel_size(type));
  const Rows to = rows_at(target, target_row_bytes, sarnum::divided_rounding_up(height, how.down),
                          sarnum::divided_rounding_up(width, how.across) *
                              (is_double ? sizeof(double) : sizeof(float)));
  check_reach(arguments, "source_row_bytes", from);
  check_reach(arguments, "target_row_bytes", to)
      .that(to.are_apart(), "target_row_bytes", target_row_bytes,
            "rows of the target would overlap; pass at least ", to.bytes);
  if (arguments.are_refused()) {
    return arguments.status();
  }
  arguments
      .that(!from.overlap(to), "target", "an image that overlaps the source",
            "pass memory of its own")
      .then([&] { return run.read(options, width * height); });
  if (arguments.are_refused()) {
    return arguments.status();
  }
  const sarnum::LookedImage image{
      static_cast<const unsigned char*>(source), source_row_bytes, width, height, type,
      static_cast<unsigned char*>(target),       target_row_bytes};
  return run.perform(to.count, [&](const sarnum::Run& of) {
    return is_double ? sarnum::multilook<double>(image, how, of)
                     : sarnum::multilook<float>(image, how, of);
  });
}

sarnum_status sarnum_multilook_file(const char* input_path, const char* output_path,
                                    const sarnum_multilook_options* looks,
                                    const sarnum_options* options) {
  Arguments arguments;
  sarnum::CallRun run;
  Looks how{1, 1};
  arguments.given("input_path", input_path, "pass the name of an image file")
      .given("output_path", output_path, "pass the name of the file to create")
      .then([&] { return read_looks(looks, how); })
      .then([&] { return run.read(options, 0); });
  if (arguments.are_refused()) {
    return arguments.status();
  }
  return sarnum::guarded([&] {
    const auto file_error = [](const sarnum::MultilookedFile& file) {
      return sarnum::failure(SARNUM_FILE_ERROR, file.failure().c_str(), ".");
    };
    sarnum::MultilookedFile file(input_path, output_path, how);
    if (!file.failure().empty()) {
      return file_error(file);
    }
    run.read(options, file.width() * file.height());
    const sarnum_status status =
        run.perform(file.target_rows(), [&](const sarnum::Run& of) { return file.write(of); });
    return file.failure().empty() ? status : file_error(file);
  });
}
