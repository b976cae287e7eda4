// The library's one act at load: it joins the host as an extension module, and leaves it when
// it is unloaded. The module object is static, so neither can fail.
#include "sarnum/host/host.h"

namespace {

class ExtensionRegistration {
 public:
  ExtensionRegistration() noexcept { sarnum::host::attach_extension_module(module_); }
  ~ExtensionRegistration() { sarnum::host::detach_extension_module(module_); }
  ExtensionRegistration(const ExtensionRegistration&) = delete;
  ExtensionRegistration& operator=(const ExtensionRegistration&) = delete;

 private:
  sarnum::host::ExtensionModule module_{"sarnum"};
};

const ExtensionRegistration registration;

}  // namespace
