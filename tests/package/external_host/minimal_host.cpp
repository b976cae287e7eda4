#include "minimal_host.h"

std::map<std::string, MemoryRaster> memory_rasters;
int attached_modules = 0;

CString GetResourceString(int id) {
  return std::to_string(id).c_str();
}

int CFileLayer::Open(const char* path, unsigned long, int, unsigned long) {
  const auto found = memory_rasters.find(path);
  raster_ = found == memory_rasters.end() ? nullptr : &found->second;
  return raster_ != nullptr ? 1 : 0;
}

int CFileLayer::Create(const char* path, int width, int height, int, unsigned long, unsigned long,
                       void*, int) {
  raster_ = &memory_rasters[path];
  *raster_ = {width, height, std::vector<float>(static_cast<std::size_t>(width * height))};
  return 1;
}

namespace sarnum::host {

void attach_extension_module(ExtensionModule&) noexcept {
  ++attached_modules;
}

void detach_extension_module(ExtensionModule&) noexcept {
  --attached_modules;
}

}  // namespace sarnum::host
