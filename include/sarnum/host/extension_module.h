/// @file
/// The host's registry of the extension modules loaded into the process.
#ifndef SARNUM_HOST_EXTENSION_MODULE_H
#define SARNUM_HOST_EXTENSION_MODULE_H

#include "sarnum/export.h"

namespace sarnum::host {

/// A library that has joined the host. The object belongs to the library and stays where it
/// is while attached.
struct ExtensionModule {
  const char* name;                 ///< valid while attached
  ExtensionModule* next = nullptr;  ///< the registry's
};

/// Enters a module at load, or takes it back at unload. Neither allocates or fails; any thread
/// may call them.
/// @{
SARNUM_HOST_API void attach_extension_module(ExtensionModule& module) noexcept;
SARNUM_HOST_API void detach_extension_module(ExtensionModule& module) noexcept;
/// @}

/// Whether a module of that name is attached now.
SARNUM_HOST_API bool is_extension_module_attached(const char* name) noexcept;

}  // namespace sarnum::host

#endif
