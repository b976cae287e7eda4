#include "own_host.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>

std::map<std::string, MemoryRaster> memory_rasters;
int attached_modules = 0;

CString GetResourceString(int id) {
  return id == 701 ? "Inverse transform" : "Transform";
}

void TerminalMeter::SetText(const char* text) {
  if (!caption_.empty()) {
    std::printf("\n");
  }
  caption_ = text;
  low_ = high_ = position_ = 0;
  drawn_ = -1;
  draw();
}

void TerminalMeter::SetPos(int position) {
  position_ = position;
  draw();
}

void TerminalMeter::SetRange(int low, int high) {
  low_ = low;
  high_ = high;
}

void TerminalMeter::StepIt() {
  ++position_;
  draw();
}

void TerminalMeter::draw() {
  constexpr int bars = 40;
  const int range = std::max(high_ - low_, 1);
  const int filled = std::clamp((position_ - low_) * bars / range, 0, bars);
  if (filled > drawn_) {  // a terminal is slow: draw only what is to be seen
    drawn_ = filled;
    const auto width = static_cast<std::size_t>(filled);
    std::printf("\r%-20s [%s%s]", caption_.c_str(), std::string(width, '#').c_str(),
                std::string(bars - width, '.').c_str());
    std::fflush(stdout);
  }
}

int CFileLayer::Open(const char* path, unsigned long, int, unsigned long) {
  const auto found = memory_rasters.find(path);
  raster_ = found == memory_rasters.end() ? nullptr : &found->second;
  return raster_ != nullptr ? 1 : 0;
}

int CFileLayer::Create(const char* path, int width, int height, int, unsigned long, unsigned long,
                       ExtraTag*, int) {
  raster_ = &memory_rasters[path];
  const auto count = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
  *raster_ = {width, height, std::vector<float>(count)};
  return 1;
}

void* CFileLayer::GetRowAddr(int row) {
  return row >= 0 && row < Height()
             ? raster_->pixels.data() + static_cast<std::ptrdiff_t>(row) * raster_->width
             : nullptr;
}

int CFileLayer::WriteRow(void* data, int column, int row, int count, int) {
  auto* const to = static_cast<float*>(GetRowAddr(row));
  if (to == nullptr || data == nullptr || column < 0 || count < 0 || count > Width() - column) {
    return 0;
  }
  const auto* const from = static_cast<const float*>(data);
  std::copy(from, from + (to + column == from ? 0 : count), to + column);
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
