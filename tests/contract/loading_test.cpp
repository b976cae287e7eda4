// Loading, unloading and the process's end disturb nobody: the library joins the host and leaves
// it, and what it and the host keep serves threads and global objects as long as they run.
//
// The library is loaded by the program, after the program's own global objects were made: whatever
// a library does when the process ends is then done before they are destroyed.
#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "loaded_library.h"
#include "sarnum/host/host.h"
#include "sarnum/host/standalone.h"

namespace {

constexpr int exponent = 15;
constexpr std::size_t length = std::size_t{1} << exponent;

struct Library {
  LoadedLibrary loaded{SARNUM_LIBRARY_FILE};
  int (*build)(int) = loaded.function<int(int)>("_Z10init_ibitri");
  void (*transform)(double*, double*,
                    int) = loaded.function<void(double*, double*, int)>("_Z8fft_FastPdS_i");
  void (*release)() = loaded.function<void()>("_Z12delete_ibitrv");

  std::vector<double> spectrum() const {
    std::vector<double> line(2 * length);
    for (std::size_t i = 0; i < line.size(); ++i) {
      line[i] = static_cast<double>(i * 2654435761 % 1000);
    }
    transform(line.data(), line.data() + length, exponent);
    return line;
  }
};

/// Runs what a test left to it when the process ends.
struct LastObject {
  void (*run)() = nullptr;
  ~LastObject() {
    if (run != nullptr) {
      run();
    }
  }
} last_object;

/// Processes that end run apart from the threads of this one.
class Loading : public testing::Test {
 protected:
  void SetUp() override { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

void require(bool condition) {
  if (!condition) {
    std::_Exit(1);
  }
}

const Library* library;
const std::vector<double>* expected;
std::atomic<int> transforms;

void transform_for_ever() {
  for (;; ++transforms) {
    require(library->spectrum() == *expected);
  }
}

void use_tables() {
  for (const int now = transforms; transforms < now + 3;) {
    std::this_thread::yield();
  }
  require(library->spectrum() == *expected);
}

void release_tables() {
  require(library->spectrum() == *expected);
  library->release();
  require(library->build(exponent) == 0 && library->spectrum() == *expected);
}

TEST_F(Loading, LeavesTheTablesToThreadsAndGlobalObjectsUntilTheProcessHasEnded) {
  for (auto* const last : {use_tables, release_tables}) {
    const auto end_while_tables_are_in_use = [last] {
      library = new Library;
      library->build(exponent);
      expected = new std::vector<double>(library->spectrum());
      if (last == use_tables) {
        std::thread(transform_for_ever).detach();
      }
      last_object.run = last;
      std::exit(0);
    };
    EXPECT_EXIT(end_while_tables_are_in_use(), testing::ExitedWithCode(0), "");
  }
}

std::string failure_of(const char* path) {
  sarnum::host::clear_raster_failure();
  CFileLayer layer(nullptr);
  require(layer.Open(path, 272, 0, 0x80000000UL) == 0);
  return sarnum::host::raster_failure();
}

TEST_F(Loading, LeavesTheFailuresOfRastersToGlobalObjects) {
  const auto end_after_a_failure = [] {
    require(
        !failure_of("no such file, by a name that is too long for a string's own room").empty());
    last_object.run = [] {
      require(failure_of("nor is there another one").find("another one") != std::string::npos);
    };
    std::exit(0);
  };
  EXPECT_EXIT(end_after_a_failure(), testing::ExitedWithCode(0), "");
}

/// Pages that the process has in memory; 0 where the system does not say, and where a sanitizer
/// keeps what was freed.
long resident_pages() {
#if defined(__SANITIZE_ADDRESS__)
  return 0;
#else
  long virtual_pages = 0, pages = 0;
  std::ifstream("/proc/self/statm") >> virtual_pages >> pages;
  return pages;
#endif
}

TEST_F(Loading, JoinsTheHostAndLeavesNothingWhenItIsUndone) {
  using sarnum::host::is_extension_module_attached;
  const long before = resident_pages();
  for (int round = 0; round < 1000; ++round) {
    ASSERT_FALSE(LoadedLibrary::is_loaded(SARNUM_LIBRARY_FILE));
    ASSERT_FALSE(is_extension_module_attached("sarnum"));
    const Library loaded;
    ASSERT_TRUE(loaded.loaded);
    ASSERT_TRUE(is_extension_module_attached("sarnum"));
    ASSERT_EQ(loaded.build(exponent), 0);
    loaded.release();
  }
  EXPECT_LT(resident_pages() - before, 100'000) << "a round's tables take 200";
}

}  // namespace
