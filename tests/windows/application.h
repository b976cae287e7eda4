// What the applications have in common: each does its work with the library loaded, and again after
// it was unloaded.
#pragma once

#include <cstdio>

#include "loaded_library.h"

/// What an application does. Null, or what is wrong.
const char* work(const LoadedLibrary& library);

int main() {
  for (int round = 0; round < 2; ++round) {
    const char* complaint = work(LoadedLibrary("sarnum.dll"));
    for (const char* const dll : {"sarnum.dll", "sarnum_host.dll"}) {
      complaint =
          complaint == nullptr && LoadedLibrary::is_loaded(dll) ? "still loaded" : complaint;
    }
    if (complaint != nullptr) {
      std::fprintf(stderr, "%s\n", complaint);
      return 1;
    }
  }
  return 0;
}
