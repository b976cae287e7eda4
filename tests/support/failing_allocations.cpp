#include "failing_allocations.h"

#include <cstddef>
#include <cstdlib>
#include <new>

namespace {

thread_local bool counting = false, stays_failing = false;
thread_local int asked = 0, failing_number = 0;

bool fails_now() {
  asked += counting ? 1 : 0;
  return counting && failing_number > 0 &&
         (asked == failing_number || (stays_failing && asked > failing_number));
}

}  // namespace

FailingAllocations::FailingAllocations(int nth, Failing failing) {
  asked = 0;
  failing_number = nth;
  stays_failing = failing == Failing::persistently;
  counting = true;
}

FailingAllocations::~FailingAllocations() {
  counting = false;
}

int FailingAllocations::count() const {
  return asked;
}

extern "C" void* __real_malloc(std::size_t size);
extern "C" void* __wrap_malloc(std::size_t size);

void* __wrap_malloc(std::size_t size) {
  return fails_now() ? nullptr : __real_malloc(size);
}

void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return fails_now() ? nullptr : __real_malloc(size > 0 ? size : 1);
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
