// A grey picture, written as PNG through GDAL.
#pragma once

#include <gdal_priv.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

class Picture {
 public:
  Picture(int width, int height, std::uint8_t grey)
      : width_(width),
        height_(height),
        pixels_(static_cast<std::size_t>(width) * static_cast<std::size_t>(height), grey) {}

  std::uint8_t& at(int column, int row) {
    return pixels_[static_cast<std::size_t>(row) * static_cast<std::size_t>(width_) +
                   static_cast<std::size_t>(column)];
  }

  /// Replaces what is there. False when GDAL could not write it (it has said why).
  bool write(const std::string& path) {
    GDALAllRegister();
    GDALDriver* const memory = GetGDALDriverManager()->GetDriverByName("MEM");
    GDALDriver* const png = GetGDALDriverManager()->GetDriverByName("PNG");
    if (memory == nullptr || png == nullptr) {
      std::fprintf(stderr, "this GDAL has no PNG driver\n");
      return false;
    }
    GDALDatasetUniquePtr image(memory->Create("", width_, height_, 1, GDT_Byte, nullptr));
    if (!image ||
        image->GetRasterBand(1)->RasterIO(GF_Write, 0, 0, width_, height_, pixels_.data(), width_,
                                          height_, GDT_Byte, 0, 0, nullptr) != CE_None) {
      return false;
    }
    CPLErrorReset();
    GDALDatasetUniquePtr file(
        png->CreateCopy(path.c_str(), image.get(), FALSE, nullptr, nullptr, nullptr));
    const bool created = file != nullptr;
    file.reset();
    return created && CPLGetLastErrorType() != CE_Failure;
  }

 private:
  int width_, height_;
  std::vector<std::uint8_t> pixels_;
};
