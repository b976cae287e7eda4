// A host framework as small as the library allows: what sarnum uses, and nothing more. Rasters
// live in memory under their path.
#ifndef MINIMAL_HOST_H
#define MINIMAL_HOST_H

#include <cstddef>
#include <map>
#include <string>
#include <vector>

class CString {
 public:
  CString(const char* text = "") : text_(text) {}
  operator const char*() const { return text_.c_str(); }
  bool IsEmpty() const { return text_.empty(); }
  CString operator+(const char* tail) const { return (text_ + tail).c_str(); }

 private:
  std::string text_;
};

CString GetResourceString(int id);

class CMeterInfo {
 public:
  virtual void SetText(const char*) {}
  virtual void SetPos(int) {}
  virtual void SetRange(int, int) {}
  virtual int SetStep(int) { return 0; }
  virtual void StepIt() {}
};

class CCustomMeterInfo : public CMeterInfo {};

struct MemoryRaster {
  int width = 0;
  int height = 0;
  std::vector<float> pixels;
};

extern std::map<std::string, MemoryRaster> memory_rasters;
extern int attached_modules;

class CFileLayer {
 public:
  explicit CFileLayer(CMeterInfo*) {}
  int Open(const char* path, unsigned long mode, int index, unsigned long access);
  int Create(const char* path, int width, int height, int type, unsigned long mode,
             unsigned long format, void* extra, int flag);
  int Width() { return raster_->width; }
  int Height() { return raster_->height; }
  int SetBlockMode(int, int, int, int, int, int) { return 1; }
  void* GetRowAddr(int row) {
    return raster_->pixels.data() + static_cast<std::ptrdiff_t>(row) * raster_->width;
  }
  int WriteRow(void*, int, int, int, int) { return 1; }
  int ShiftBlock(int, int) { return 1; }
  void Close() { raster_ = nullptr; }

 private:
  MemoryRaster* raster_ = nullptr;
};

namespace sarnum::host {

struct ExtensionModule {
  const char* name;
};

void attach_extension_module(ExtensionModule& module) noexcept;
void detach_extension_module(ExtensionModule& module) noexcept;

}  // namespace sarnum::host

#endif
