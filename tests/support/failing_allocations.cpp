#include "failing_allocations.h"

#include <cstddef>
#include <cstdlib>
#include <new>

#if defined(_WIN32)
#define WIN32_LEAN_AND_MEAN
#include <windows.h>
#endif

namespace {

// The one that lives in this thread. On Windows the compiler's thread_local allocates.
#if defined(_WIN32)
DWORD slot = TLS_OUT_OF_INDEXES;

FailingAllocations* living() {
  return slot != TLS_OUT_OF_INDEXES ? static_cast<FailingAllocations*>(TlsGetValue(slot)) : nullptr;
}

void set_living(FailingAllocations* here) {
  static const DWORD made = slot = TlsAlloc();
  TlsSetValue(made, here);
}
#else
thread_local FailingAllocations* here_lives = nullptr;

FailingAllocations* living() {
  return here_lives;
}

void set_living(FailingAllocations* here) {
  here_lives = here;
}
#endif

}  // namespace

FailingAllocations::FailingAllocations(int nth, Failing failing)
    : failing_(failing), failing_number_(nth) {
  set_living(this);
}

FailingAllocations::~FailingAllocations() {
  set_living(nullptr);
}

bool FailingAllocations::one_more_fails() {
  FailingAllocations* const here = living();
  if (here == nullptr) {
    return false;
  }
  ++here->asked_;
  return here->failing_number_ > 0 &&
         (here->asked_ == here->failing_number_ ||
          (here->failing_ == Failing::persistently && here->asked_ > here->failing_number_));
}

extern "C" void* __real_malloc(std::size_t size);
extern "C" void* __wrap_malloc(std::size_t size);

#if defined(_WIN32)
// The linker replaces it in the compiler's library too, which makes a lock when it is first used
// and has no way to say that it cannot. The lock of its reserve for exceptions is made beforehand:
// by an exception that is denied storage, where a lock is not.
bool denied_to_exceptions = false;

const bool has_lock_of_reserve = [] {
  denied_to_exceptions = true;
  try {
    throw std::bad_alloc();
  } catch (const std::bad_alloc&) {
    denied_to_exceptions = false;
  }
  return true;
}();
#else
constexpr bool denied_to_exceptions = false;
#endif

void* __wrap_malloc(std::size_t size) {
  const bool fails = (denied_to_exceptions && size > 64) || FailingAllocations::one_more_fails();
  return fails ? nullptr : __real_malloc(size);
}

void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return FailingAllocations::one_more_fails() ? nullptr : __real_malloc(size > 0 ? size : 1);
}

void* operator new(std::size_t size) {
  void* const storage = operator new(size, std::nothrow);
  if (storage == nullptr) {
    throw std::bad_alloc();
  }
  return storage;
}

void* operator new[](std::size_t size) {
  return operator new(size);
}

void* operator new[](std::size_t size, const std::nothrow_t& tag) noexcept {
  return operator new(size, tag);
}

void operator delete(void* storage) noexcept {
  std::free(storage);
}

void operator delete[](void* storage) noexcept {
  std::free(storage);
}

void operator delete(void* storage, std::size_t) noexcept {
  std::free(storage);
}

void operator delete[](void* storage, std::size_t) noexcept {
  std::free(storage);
}
