// A host framework of your own: everything that sarnum asks of one, whole and no more. Rasters are
// held in memory under a name, and a meter draws a bar on the terminal.
//
// The library is built against this header (-DSARNUM_HOST=external) and calls only what is declared
// here, by exactly these signatures, which its build checks. What they do is up to the host.
#ifndef OWN_HOST_H
#define OWN_HOST_H

#include <map>
#include <string>
#include <vector>

/// Strings as the library takes and gives them.
class CString {
 public:
  CString(const char* text = "") : text_(text) {}
  operator const char*() const { return text_.c_str(); }
  bool IsEmpty() const { return text_.empty(); }
  CString operator+(const char* tail) const { return (text_ + tail).c_str(); }

 private:
  std::string text_;
};

/// Texts of progress, by number: 700 and 701 are those of a transform and of its inverse.
CString GetResourceString(int id);

/// What the library tells about its progress. A subclass overrides what it wants to see.
class CMeterInfoBase {
 public:
  virtual void SetText(const char* /*text*/) {}
  virtual void SetPos(int /*position*/) {}
  virtual void SetRange(int /*low*/, int /*high*/) {}
  virtual int SetStep(int /*step*/) { return 0; }
  virtual void StepIt() {}
};

class CMeterInfo : public CMeterInfoBase {};
class CCustomMeterInfo : public CMeterInfoBase {};

/// Draws `caption [#####.....]` on one line of the terminal.
class TerminalMeter : public CCustomMeterInfo {
 public:
  void SetText(const char* text) override;
  void SetPos(int position) override;
  void SetRange(int low, int high) override;
  void StepIt() override;

 private:
  void draw();

  std::string caption_;
  int low_ = 0;
  int high_ = 0;
  int position_ = 0;
  int drawn_ = -1;
};

struct MemoryRaster {
  int width = 0;
  int height = 0;
  std::vector<float> pixels;
};

/// The rasters that this host knows.
extern std::map<std::string, MemoryRaster> memory_rasters;

/// One raster, read or written. All rows are in memory, so that a band of rows need not be moved.
class CFileLayer {
 public:
  struct ExtraTag;

  explicit CFileLayer(CMeterInfoBase* /*meter*/) {}

  int Open(const char* path, unsigned long mode, int index, unsigned long access);
  int Create(const char* path, int width, int height, int type, unsigned long mode,
             unsigned long format, ExtraTag* extra, int flag);
  int Width() { return raster_ != nullptr ? raster_->width : 0; }
  int Height() { return raster_ != nullptr ? raster_->height : 0; }

  /// Address of the floats of a row; null when there is no such row.
  void* GetRowAddr(int row);

  /// Stores `count` floats as columns `column` … of a row. They may already be there.
  int WriteRow(void* data, int column, int row, int count, int d);

  int SetBlockMode(int, int, int, int, int, int) { return 1; }
  int ShiftBlock(int, int) { return 1; }
  void Close() { raster_ = nullptr; }

 private:
  MemoryRaster* raster_ = nullptr;
};

namespace sarnum::host {

/// sarnum tells the host that it was loaded, and that it is about to be unloaded.
struct ExtensionModule {
  const char* name;
};

void attach_extension_module(ExtensionModule& module) noexcept;
void detach_extension_module(ExtensionModule& module) noexcept;

}  // namespace sarnum::host

extern int attached_modules;

#endif
