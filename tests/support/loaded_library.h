// A library that a program loads by itself, with nothing of it linked.
#pragma once

#include <memory>

#if defined(_WIN32)
#define WIN32_LEAN_AND_MEAN
#include <windows.h>
#else
#include <dlfcn.h>
#endif

class LoadedLibrary {
 public:
#if defined(_WIN32)
  explicit LoadedLibrary(const char* path)
      : handle_(LoadLibraryA(path),
                [](void* handle) { FreeLibrary(static_cast<HMODULE>(handle)); }) {}
  static bool is_loaded(const char* path) {
    return GetModuleHandleA(path) != nullptr;
  }
  /// By its name as exported, which is that of the compiler; null if there is none.
  template <class Function>
  Function* function(const char* name) const {
    const auto address = GetProcAddress(static_cast<HMODULE>(handle_.get()), name);
    return reinterpret_cast<Function*>(reinterpret_cast<void*>(address));
  }
#else
  explicit LoadedLibrary(const char* path, int mode = RTLD_NOW | RTLD_LOCAL)
      : handle_(dlopen(path, mode), [](void* handle) { dlclose(handle); }) {}
  static bool is_loaded(const char* path) {
    return static_cast<bool>(LoadedLibrary(path, RTLD_NOW | RTLD_NOLOAD));
  }
  template <class Function>
  Function* function(const char* name) const {
    return reinterpret_cast<Function*>(dlsym(handle_.get(), name));
  }
#endif
  explicit operator bool() const {
    return handle_ != nullptr;
  }

 private:
  std::unique_ptr<void, void (*)(void*)> handle_;
};
