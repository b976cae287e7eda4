// Bytes as a raster in memory, on which the commands run: the file, after the text of an ENVI
// header and a line "--" if it has one.
#include <new>
#include <string_view>

#include "commands.h"
#include "fuzzing.h"
#include "raster_input.h"

namespace {

using namespace sarnum::tool;

constexpr std::string_view mark = "\n--\n";
constexpr const char* path = "/vsimem/in.img";

/// @return whether it ended well; what is thrown and does not tell the user what to do is a bug.
template <class Work>
bool succeeds(const Work& work) {
  try {
    work();
    return true;
  } catch (const Failure&) {
  } catch (const UsageFailure&) {
  } catch (const std::bad_alloc&) {
  }
  return false;
}

void put_file(const char* name, std::string_view bytes) {
  VSILFILE* const file = VSIFOpenL(name, "wb");
  VSIFWriteL(bytes.data(), 1, bytes.size(), file);
  VSIFCloseL(file);
}

/// Large images take long, as they should.
bool is_small() {
  const RasterInput input(path);
  constexpr int largest = 1 << 12;
  return input.width() <= largest / input.height();
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  keep_drivers({"GTiff", "ENVI", "VRT", "PNG", "MEM"});
  make_raster("/vsimem/other.tif");
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const TemporaryFolder folder;
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  const std::size_t header = bytes.find(mark);
  VSIUnlink("/vsimem/in.hdr");
  if (header != std::string_view::npos) {
    put_file("/vsimem/in.hdr", bytes.substr(0, header + 1));
  }
  put_file(path, header != std::string_view::npos ? bytes.substr(header + mark.size()) : bytes);
  bool small = false;
  if (succeeds([&] { small = is_small(); }) && small) {
    succeeds([] { run_info({path, {}}); });
    succeeds([] { run_stats({path, true, false}); });
    MultilookArguments multilook;
    multilook.input = path;
    multilook.output = folder.file("out.tif");
    multilook.picture = folder.file("out.png");
    multilook.looks = "3x2";
    clear(folder, !succeeds([&] { run_multilook(multilook); }));
  }
  return 0;
}
