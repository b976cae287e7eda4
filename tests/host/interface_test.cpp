// What applications use of the host interface: strings, texts and the registry of extension
// modules. The dump of the interface knows the order of the meters' virtual operations.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "sarnum/host/host.h"

namespace {

template <class A, class B>
std::vector<bool> comparisons(const A& a, const B& b) {
  return {a == b, a != b, a<b, a> b, a <= b, a >= b};
}

TEST(String, JoinsAndComparesByValue) {
  EXPECT_TRUE(CString(nullptr).IsEmpty());
  for (const std::string a : {"", "a", "ab", "b"}) {
    for (const std::string b : {"", "a", "ab", "abc", "b"}) {
      const CString left(a.c_str());
      const CString right(b.c_str());
      for (const CString& joined : {left + right, left + b.c_str(), a.c_str() + right}) {
        EXPECT_EQ(std::string(joined), a + b);
        EXPECT_EQ(joined.GetLength(), static_cast<int>(a.size() + b.size()));
      }
      EXPECT_EQ(comparisons(left, right), comparisons(a, b)) << a << ", " << b;
      EXPECT_EQ(comparisons(left, b.c_str()), comparisons(a, b)) << a << ", " << b;
      EXPECT_EQ(comparisons(a.c_str(), right), comparisons(a, b)) << a << ", " << b;
    }
  }
}

TEST(ExtensionModules, LeaveInAnyOrder) {
  using sarnum::host::is_extension_module_attached;
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

TEST(Resources, OnlyTheTransformsHaveTexts) {
  EXPECT_FALSE(GetResourceString(700).IsEmpty());
  EXPECT_TRUE(GetResourceString(700) != GetResourceString(701));
  EXPECT_TRUE(GetResourceString(699).IsEmpty() && GetResourceString(702).IsEmpty());
}

}  // namespace
