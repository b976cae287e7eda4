// Bytes as the words of a command line, one a line, run in a folder of its own. A slash, with
// which a word could leave the folder, is none, except in the name of the one raster there is.
#include <string_view>

#include "fuzzing.h"

int run_tool(int argc, char** argv);

namespace {

constexpr std::string_view raster = "/vsimem/in.tif";

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  keep_drivers({"GTiff", "PNG", "MEM", "VRT"});
  make_raster(raster.data());
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const TemporaryFolder folder;
  std::filesystem::current_path(folder.path());
  std::vector<std::string> words{"sarnum", ""};
  for (std::size_t i = 0; i < size; ++i) {
    if (data[i] == '\n') {
      words.emplace_back();
    } else {
      words.back() += static_cast<char>(data[i]);
    }
  }
  std::vector<char*> argv;
  for (std::string& word : words) {
    if (word != raster) {
      std::replace(word.begin(), word.end(), '/', '_');
    }
    argv.push_back(word.data());
  }
  argv.push_back(nullptr);
  const int status = run_tool(static_cast<int>(words.size()), argv.data());
  if (status < 0 || status > 2) {
    std::abort();
  }
  clear(folder, status != 0);
  return 0;
}
