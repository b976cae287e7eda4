// Checks the host framework that the library is built on: everything that the library uses of it is
// declared, with exactly these types. Without it a parameter of another type would be converted
// silently, or an override of an application's meter would never be called. docs/embedding.md has
// the same as a table.
#include <concepts>

#include "sarnum/host/host.h"

namespace {

template <class String>
concept HostString = std::copyable<String> && std::convertible_to<const char*, String> &&
    std::convertible_to<String, const char*> && requires(const String text, const char* tail) {
  { text + tail } -> std::convertible_to<String>;
};
static_assert(HostString<CString>);

template <class Layer>
concept HostFileLayer = std::constructible_from<Layer, CMeterInfoBase*> && requires {
  static_cast<int (Layer::*)(const char*, unsigned long, int, unsigned long)>(&Layer::Open);
  static_cast<int (Layer::*)(const char*, int, int, int, unsigned long, unsigned long,
                             typename Layer::ExtraTag*, int)>(&Layer::Create);
  static_cast<int (Layer::*)()>(&Layer::Width);
  static_cast<int (Layer::*)()>(&Layer::Height);
  static_cast<int (Layer::*)(int, int, int, int, int, int)>(&Layer::SetBlockMode);
  static_cast<void* (Layer::*)(int)>(&Layer::GetRowAddr);
  static_cast<int (Layer::*)(void*, int, int, int, int)>(&Layer::WriteRow);
  static_cast<int (Layer::*)(int, int)>(&Layer::ShiftBlock);
  static_cast<void (Layer::*)()>(&Layer::Close);
};
static_assert(HostFileLayer<CFileLayer>);

/// What an application overrides is what the library calls.
template <class Meter>
struct Override : Meter {
  void SetText(const char* text) override;
  void SetPos(int pos) override;
  void SetRange(int lower, int upper) override;
  int SetStep(int step) override;
  void StepIt() override;
};
static_assert(sizeof(Override<CMeterInfo>) != 0);
static_assert(sizeof(Override<CCustomMeterInfo>) != 0);

static_assert(std::same_as<decltype(GetResourceString(700)), CString>);

#if !defined(__AFXWIN_H__)
using sarnum::host::ExtensionModule;
static_assert(requires(ExtensionModule & module) {
  ExtensionModule{"sarnum"};
  { sarnum::host::attach_extension_module(module) }
  noexcept->std::same_as<void>;
  { sarnum::host::detach_extension_module(module) }
  noexcept->std::same_as<void>;
});
#endif

}  // namespace
