// A library that a program loads by itself, with nothing of it linked.
#pragma once

#if defined(_WIN32)
#define WIN32_LEAN_AND_MEAN
#include <windows.h>
#else
#include <dlfcn.h>
#endif

class LoadedLibrary {
 public:
#if defined(_WIN32)
  explicit LoadedLibrary(const char* path) : handle_(LoadLibraryA(path)) {}
  ~LoadedLibrary() {
    FreeLibrary(static_cast<HMODULE>(handle_));
  }
  static bool is_loaded(const char* path) {
    return GetModuleHandleA(path) != nullptr;
  }
#else
  explicit LoadedLibrary(const char* path) : handle_(dlopen(path, RTLD_NOW | RTLD_LOCAL)) {}
  ~LoadedLibrary() {
    if (handle_ != nullptr) {
      dlclose(handle_);
    }
  }
  static bool is_loaded(const char* path) {
    void* const handle = dlopen(path, RTLD_NOW | RTLD_NOLOAD);
    return handle != nullptr && dlclose(handle) == 0;
  }
#endif
  LoadedLibrary(const LoadedLibrary&) = delete;
  LoadedLibrary& operator=(const LoadedLibrary&) = delete;

  explicit operator bool() const {
    return handle_ != nullptr;
  }

#if defined(_WIN32)
  /// By its name as exported, which is that of the compiler; null if there is none.
  template <class Function>
  Function* function(const char* name) const {
    void* const address =
        reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(handle_), name));
    return reinterpret_cast<Function*>(address);
  }
#endif

 private:
  void* handle_;
};
