// libsarnum joins the host when it is loaded and leaves no trace when it is unloaded.
#include "sarnum/host/extension_module.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

namespace {

using sarnum::host::is_extension_module_attached;

bool is_loaded() {
  void* const handle = dlopen(SARNUM_LIBRARY_FILE, RTLD_NOW | RTLD_NOLOAD);
  if (handle != nullptr) {
    dlclose(handle);
  }
  return handle != nullptr;
}

TEST(ExtensionModule, IsAttachedWhileTheLibraryIsLoaded) {
  for (int round = 0; round < 3; ++round) {
    ASSERT_FALSE(is_loaded());
    ASSERT_FALSE(is_extension_module_attached("sarnum"));
    void* const library = dlopen(SARNUM_LIBRARY_FILE, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library, nullptr) << dlerror();
    EXPECT_TRUE(is_extension_module_attached("sarnum"));
    EXPECT_FALSE(is_extension_module_attached("another"));
    ASSERT_EQ(dlclose(library), 0) << dlerror();
  }
  EXPECT_FALSE(is_extension_module_attached("sarnum"));
  EXPECT_FALSE(is_loaded());
}

TEST(ExtensionModule, LeavesInAnyOrder) {
  sarnum::host::ExtensionModule first{"first"};
  sarnum::host::ExtensionModule second{"second"};
  sarnum::host::attach_extension_module(first);
  sarnum::host::attach_extension_module(second);
  sarnum::host::detach_extension_module(first);
  sarnum::host::detach_extension_module(first);
  EXPECT_FALSE(is_extension_module_attached("first"));
  EXPECT_TRUE(is_extension_module_attached("second"));
  sarnum::host::detach_extension_module(second);
  EXPECT_FALSE(is_extension_module_attached("second"));
}

}  // namespace
