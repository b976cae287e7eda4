// The library's one act at load: it joins the host as an extension module, and leaves it when
// it is unloaded. The module object is static, so neither can fail.
//
// Where the host's header brings the Windows application framework, that keeps the modules, and is
// told by the entry point of the DLL.
#include "sarnum/host/host.h"

#if defined(__AFXWIN_H__)
#include <afxdllx.h>

static AFX_EXTENSION_MODULE extension_module;

extern "C" int APIENTRY DllMain(HINSTANCE instance, DWORD reason, void* /*reserved*/) {
  if (reason == DLL_PROCESS_ATTACH) {
    if (AfxInitExtensionModule(extension_module, instance) == 0) {
      return 0;
    }
    new CDynLinkLibrary(extension_module);  // which the framework owns
  } else if (reason == DLL_PROCESS_DETACH) {
    AfxTermExtensionModule(extension_module);
  }
  return 1;
}

#else

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

#endif
