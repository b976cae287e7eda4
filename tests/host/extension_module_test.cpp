// libsarnum joins the host when it is loaded and leaves no trace when it is unloaded.
#include "sarnum/host/extension_module.h"

#include <gtest/gtest.h>

#include "loaded_library.h"

namespace {

using sarnum::host::is_extension_module_attached;

TEST(ExtensionModule, IsAttachedWhileTheLibraryIsLoaded) {
  for (int round = 0; round < 2; ++round) {
    ASSERT_FALSE(LoadedLibrary::is_loaded(SARNUM_LIBRARY_FILE));
    ASSERT_FALSE(is_extension_module_attached("sarnum"));
    const LoadedLibrary library(SARNUM_LIBRARY_FILE);
    ASSERT_TRUE(library);
    EXPECT_TRUE(is_extension_module_attached("sarnum"));
  }
}

TEST(ExtensionModule, LeavesInAnyOrder) {
  sarnum::host::ExtensionModule modules[] = {{"a"}, {"b"}, {"c"}};
  for (auto& module : modules) {
    sarnum::host::attach_extension_module(module);
  }
  for (const std::size_t leaving : {1u, 1u, 0u, 2u}) {
    sarnum::host::detach_extension_module(modules[leaving]);
    EXPECT_FALSE(is_extension_module_attached(modules[leaving].name));
    EXPECT_EQ(is_extension_module_attached("c"), leaving != 2u);
    EXPECT_EQ(is_extension_module_attached("a"), leaving == 1u);
  }
}

}  // namespace
