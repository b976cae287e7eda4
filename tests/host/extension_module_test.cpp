// libsarnum joins the host when it is loaded and leaves no trace when it is unloaded.
#include "sarnum/host/extension_module.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

namespace {

using sarnum::host::is_extension_module_attached;

TEST(ExtensionModule, IsAttachedWhileTheLibraryIsLoaded) {
  for (int round = 0; round < 2; ++round) {
    ASSERT_EQ(dlopen(SARNUM_LIBRARY_FILE, RTLD_NOW | RTLD_NOLOAD), nullptr) << "still loaded";
    ASSERT_FALSE(is_extension_module_attached("sarnum"));
    void* const library = dlopen(SARNUM_LIBRARY_FILE, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library, nullptr) << dlerror();
    EXPECT_TRUE(is_extension_module_attached("sarnum"));
    ASSERT_EQ(dlclose(library), 0) << dlerror();
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
