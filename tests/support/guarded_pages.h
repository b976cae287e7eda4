// Memory between two pages that cannot be accessed.
#pragma once

#include <cstddef>
#include <memory>

#if defined(_WIN32)
#define WIN32_LEAN_AND_MEAN
#include <windows.h>
#else
#include <sys/mman.h>
#endif

constexpr std::size_t page_size = 4096;

/// @param bytes  of whole pages.
inline std::shared_ptr<unsigned char[]> guarded_pages(std::size_t bytes) {
  const std::size_t mapped = bytes + 2 * page_size;
#if defined(_WIN32)
  auto* const pages =
      static_cast<unsigned char*>(VirtualAlloc(nullptr, mapped, MEM_RESERVE, PAGE_NOACCESS));
  VirtualAlloc(pages + page_size, bytes, MEM_COMMIT, PAGE_READWRITE);
  const auto release = [](unsigned char* p) { VirtualFree(p - page_size, 0, MEM_RELEASE); };
#else
  auto* const pages = static_cast<unsigned char*>(
      mmap(nullptr, mapped, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
  mprotect(pages + page_size, bytes, PROT_READ | PROT_WRITE);
  const auto release = [mapped](unsigned char* p) { munmap(p - page_size, mapped); };
#endif
  return {pages + page_size, release};
}
