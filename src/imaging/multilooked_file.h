// Multilooking from a raster file to a new one, with a reason for every failure.
//
// The suite's interface of raster layers reports failures of opening and creating only. For the
// rest the host is asked after each band and after closing.
#pragma once

#include <cstddef>
#include <string>

#include "host/raster_failure.h"
#include "imaging/looks.h"

namespace sarnum {

class MultilookedFile {
 public:
  /// Opens the input; see failure().
  MultilookedFile(const char* input_path, const char* output_path, const Looks& looks);
  MultilookedFile(const MultilookedFile&) = delete;
  MultilookedFile& operator=(const MultilookedFile&) = delete;

  std::size_t width() const { return static_cast<std::size_t>(width_); }
  std::size_t height() const { return static_cast<std::size_t>(height_); }
  /// What Progress counts.
  std::size_t target_rows() const { return divided_rounding_up(height(), looks_.down); }

  /// Creates and fills the output. There is none unless it is complete.
  Outcome write(const Run& run);

  /// Why there is no output: one line that names the file, or "" where nothing failed.
  const std::string& failure() const { return failure_; }

 private:
  bool write_rows(CFileLayer& output, const Run& run);
  /// Keeps the reason that the host gives, or that it gives none.
  void fail(const char* action, const std::string& path);
  /// Whether something failed so far, by what the host says.
  bool has_failed();

  std::string input_path_;
  std::string output_path_;
  Looks looks_;
  CFileLayer input_{nullptr};
  int width_ = 0;
  int height_ = 0;
  std::string failure_;
};

}  // namespace sarnum
