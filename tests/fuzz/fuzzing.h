// What the fuzz targets share: few drivers of GDAL, and a folder that a run leaves empty or with
// finished files.
#pragma once

#include <cpl_conv.h>
#include <gdal_priv.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "messages.h"
#include "raster_input.h"
#include "temporary_folder.h"

/// What main() calls here in the place of what sets a process up.
namespace sarnum::tool {
[[gnu::used]] inline void leave_signal_handlers() {}
[[gnu::used]] inline void leave_drivers() {}
}  // namespace sarnum::tool

/// Only these drivers are there from now on, whoever registers all: GDAL's others are not ours to
/// fuzz, and some reach for the network.
inline void keep_drivers(const std::vector<std::string>& kept) {
  GDALAllRegister();
  std::string others;
  GDALDriverManager& drivers = *GetGDALDriverManager();
  for (int i = 0; i < drivers.GetDriverCount(); ++i) {
    const std::string name = drivers.GetDriver(i)->GetDescription();
    if (std::find(kept.begin(), kept.end(), name) == kept.end()) {
      others += name + ",";
    }
  }
  CPLSetConfigOption("GDAL_SKIP", others.c_str());
  sarnum::tool::register_drivers();
  sarnum::tool::install_gdal_message_handler();
  sarnum::tool::silence_warnings();
}

/// A small raster of zeros for the inputs to name.
inline void make_raster(const char* path) {
  GDALDriver& driver = *GetGDALDriverManager()->GetDriverByName("GTiff");
  const GDALDatasetUniquePtr raster(driver.Create(path, 8, 4, 1, GDT_Float32, nullptr));
}

/// Empties the folder after a run, whose failure may leave nothing there.
inline void clear(const TemporaryFolder& folder, bool failed) {
  for (const std::string& name : folder.names()) {
    if (failed || name.starts_with(".sarnum-")) {
      std::abort();
    }
    std::filesystem::remove_all(folder.path() / name);
  }
}
