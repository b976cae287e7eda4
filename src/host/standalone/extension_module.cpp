// Registry of extension modules: a list through the modules' own objects, so that entering and
// leaving need no storage and cannot fail while a library is being loaded or unloaded.
#include "sarnum/host/extension_module.h"

#include <cstring>
#include <mutex>

namespace sarnum::host {

namespace {

std::mutex registry_mutex;
ExtensionModule* first_module = nullptr;

}  // namespace

void attach_extension_module(ExtensionModule& module) noexcept {
  const std::scoped_lock lock(registry_mutex);
  module.next = first_module;
  first_module = &module;
}

void detach_extension_module(ExtensionModule& module) noexcept {
  const std::scoped_lock lock(registry_mutex);
  for (ExtensionModule** link = &first_module; *link != nullptr; link = &(*link)->next) {
    if (*link == &module) {
      *link = module.next;
      module.next = nullptr;
      return;
    }
  }
}

bool is_extension_module_attached(const char* name) noexcept {
  const std::scoped_lock lock(registry_mutex);
  for (const ExtensionModule* module = first_module; module != nullptr; module = module->next) {
    if (std::strcmp(module->name, name) == 0) {
      return true;
    }
  }
  return false;
}

}  // namespace sarnum::host
