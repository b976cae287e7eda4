// Runs the tool in a folder of its own, and makes and reads the rasters it works on.
#pragma once

#include <gdal_priv.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/types.h>

#include <complex>
#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "temporary_folder.h"

using Sample = std::complex<double>;
using SampleAt = std::function<Sample(int x, int y)>;

struct ToolRun {
  int status = -1;  // as a shell sees it: 128 + number after a signal
  std::string out;
  std::string err;
};

struct Raster {
  int width = 0;
  int height = 0;
  std::vector<Sample> samples;
  Sample at(int x, int y) const {
    return samples[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
                   static_cast<std::size_t>(x)];
  }
};

class ToolTest : public ::testing::Test {
 protected:
  ToolTest();

  /// Runs the tool in the folder. A file that it writes may have `largest_file` bytes, if given.
  ToolRun run(const std::vector<std::string>& arguments, long largest_file = 0) const;
  /// Starts the tool and leaves it running.
  pid_t start(const std::vector<std::string>& arguments, const std::string& out,
              const std::string& err, long largest_file = 0) const;

  std::string file(const std::string& name) const { return folder_.file(name); }
  std::vector<std::string> names() const { return folder_.names(); }
  std::string bytes(const std::string& name) const;
  void put_bytes(const std::string& name, const std::string& content) const;

  /// A raster of one band; further description may be given to it before it is let go.
  GDALDatasetUniquePtr make(const std::string& name, int width, int height, GDALDataType type,
                            const SampleAt& sample_at, const char* driver = "GTiff",
                            const std::vector<const char*>& options = {}) const;
  GDALDatasetUniquePtr open(const std::string& name) const;
  Raster read(const std::string& name) const;

 private:
  TemporaryFolder folder_;
  TemporaryFolder streams_;
};

inline void PrintTo(const ToolRun& run, std::ostream* out) {
  *out << "status " << run.status << ", stderr \"" << run.err << "\"";
}

/// The outcome that a good run of the tool has.
MATCHER(IsSilentSuccess, "") {
  return arg.status == 0 && arg.err.empty();
}
