#include "imaging/multilooked_file.h"

#include <filesystem>
#include <system_error>
#include <vector>

#include "sarnum/numeric/pixel_types.h"

namespace sarnum {

namespace {

/// Samples that one thread averages before it ends: enough to be worth its start.
constexpr std::size_t samples_of_thread = std::size_t{1} << 17;

bool open_layer(CFileLayer& layer, const std::string& path) {
  return layer.Open(path.c_str(), 272, 0, 0x80000000UL) != 0;
}

/// Whether there is a file, a link or a folder of that name, or what the host has under it in a
/// place that only the host knows.
bool exists(const std::string& path) {
  std::error_code ignored;
  CFileLayer layer(nullptr);
  return std::filesystem::exists(std::filesystem::symlink_status(path, ignored)) ||
         open_layer(layer, path);
}

/// Removes the output that is not complete, after the host has released it.
class Removal {
 public:
  explicit Removal(const std::string& path) : path_(path) {}
  Removal(const Removal&) = delete;
  Removal& operator=(const Removal&) = delete;
  ~Removal() {
    std::error_code ignored;
    if (is_due) {
      std::filesystem::remove(path_, ignored);
    }
  }

  bool is_due = false;

 private:
  std::filesystem::path path_;
};

}  // namespace

MultilookedFile::MultilookedFile(const char* input_path, const char* output_path,
                                 const Looks& looks)
    : input_path_(input_path), output_path_(output_path), looks_(looks) {
  host::clear_raster_failure();
  if (!open_layer(input_, input_path_)) {
    fail("cannot open ", input_path_);
    return;
  }
  width_ = input_.Width();
  height_ = input_.Height();
  if (width_ < 1 || height_ < 1) {
    fail("cannot read ", input_path_);
    return;
  }
  looks_.across = std::min(looks.across, width());
  looks_.down = std::min(looks.down, height());
}

void MultilookedFile::fail(const char* action, const std::string& path) {
  failure_ = host::raster_failure();
  if (failure_.empty()) {
    failure_ = action + path + ": the host gives no reason";
  }
}

bool MultilookedFile::has_failed() {
  if (failure_.empty()) {
    failure_ = host::raster_failure();
  }
  return !failure_.empty();
}

Outcome MultilookedFile::write(const Run& run) {
  if (exists(output_path_)) {
    failure_ = "cannot create " + output_path_ + ": it exists; remove it or choose another name";
    return Outcome::stopped;
  }
  host::clear_raster_failure();  // that there was nothing to open
  if (!run.begin()) {
    return Outcome::stopped;
  }
  Removal removal(output_path_);
  CFileLayer output(nullptr);
  const auto columns = static_cast<int>(divided_rounding_up(width(), looks_.across));
  if (output.Create(output_path_.c_str(), columns, static_cast<int>(target_rows()), TD_FLOAT32, 273,
                    7, nullptr, 0) == 0) {
    fail("cannot create ", output_path_);
    return Outcome::stopped;
  }
  removal.is_due = true;
  if (!write_rows(output, run)) {
    return Outcome::stopped;
  }
  input_.Close();
  if (has_failed()) {
    return Outcome::stopped;
  }
  output.Close();
  removal.is_due = has_failed();
  return removal.is_due ? Outcome::stopped : Outcome::complete;
}

/// Reads a band on this thread, averages its rows on all, and writes them on this one.
bool MultilookedFile::write_rows(CFileLayer& output, const Run& run) {
  const RowAverage row_average(TD_FLOAT32, looks_, width());
  const std::size_t down = looks_.down, mean_count = row_average.mean_count();
  std::size_t together = 1;
  if (run.threads > 1) {
    together = std::min(run.threads * std::max(samples_of_thread / width() / down, std::size_t{1}),
                        target_rows());
  }
  const auto band_rows = static_cast<int>(std::min(together * down, height()));
  input_.SetBlockMode(256, 0, 0, width_, band_rows, 1);
  output.SetBlockMode(256, 0, 0, static_cast<int>(mean_count), 1, 1);
  std::vector<const void*> rows;
  std::vector<float> means(together * mean_count);
  for (std::size_t first = 0; first < target_rows() && !has_failed(); first += together) {
    const std::size_t begin = first * down, end = std::min(begin + together * down, height());
    rows.clear();
    for (std::size_t row = begin; row < end; ++row) {
      rows.push_back(input_.GetRowAddr(static_cast<int>(row)));
      if (rows.back() == nullptr) {
        fail("cannot read ", input_path_);
        return false;
      }
    }
    const std::size_t count = divided_rounding_up(end - begin, down);
    for_each_piece({run.threads, {}}, count, 1, [&](unsigned, std::size_t r) {
      row_average.average<float>([&](std::size_t k) { return rows[r * down + k]; },
                                 std::min(down, end - begin - r * down), &means[r * mean_count]);
    });
    for (std::size_t r = 0; r < count; ++r) {
      const auto row = static_cast<int>(first + r);
      auto* const target = static_cast<float*>(output.GetRowAddr(row));
      if (target == nullptr) {
        fail("cannot write ", output_path_);
        return false;
      }
      std::copy_n(&means[r * mean_count], mean_count, target);
      output.WriteRow(target, 0, row, static_cast<int>(mean_count), 1);
      output.ShiftBlock(1, 1);
    }
    input_.ShiftBlock(band_rows, 1);
    if (run.progress.advance != nullptr && !run.progress.advance(run.progress.context, count)) {
      return false;
    }
  }
  return !has_failed();
}

}  // namespace sarnum
