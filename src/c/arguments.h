// Checks of arguments. The first one that fails decides; those after it are skipped.
#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>

#include "c/status.h"

namespace sarnum {

class Arguments {
 public:
  /// @param remedy  texts and numbers
  template <class Value, class... Remedy>
  Arguments& that(bool is_lawful, const char* name, Value value, Remedy... remedy) {
    if (!is_lawful && status_ == SARNUM_OK) {
      status_ = refused(name, value, remedy...);
    }
    return *this;
  }

  /// A pointer that must not be null.
  Arguments& given(const char* name, const void* pointer, const char* remedy) {
    return that(pointer != nullptr, name, "NULL", remedy);
  }

  /// An array of numbers of so many bytes each.
  Arguments& array(const char* name, const void* pointer, std::size_t bytes) {
    given(name, pointer, "pass the address of an array");
    const auto address = reinterpret_cast<std::uintptr_t>(pointer);
    return that(address % bytes == 0, name, "not aligned", "pass an address that is a multiple of ",
                bytes);
  }

  /// One of a few constants.
  Arguments& one_of(const char* name, std::int32_t value,
                    std::initializer_list<std::int32_t> lawful, const char* remedy) {
    bool is_lawful = false;
    for (const std::int32_t each : lawful) {
      is_lawful = is_lawful || value == each;
    }
    return that(is_lawful, name, value, remedy);
  }

  Arguments& pixel_type(const char* name, sarnum_type type) {
    return that(type >= SARNUM_UINT8 && type <= SARNUM_COMPLEX_INT32, name, type,
                "pass a type from SARNUM_UINT8 to SARNUM_COMPLEX_INT32");
  }

  /// A failure that another function has found.
  template <class Check>
  Arguments& then(const Check& check) {
    if (status_ == SARNUM_OK) {
      status_ = check();
    }
    return *this;
  }

  bool are_refused() const { return status_ != SARNUM_OK; }
  sarnum_status status() const { return status_; }

 private:
  sarnum_status status_ = SARNUM_OK;
};

/// Bytes from `begin` up to `end`.
struct Extent {
  std::uintptr_t begin;
  std::uintptr_t end;

  Extent(std::uintptr_t first, std::size_t bytes) : begin(first), end(first + bytes) {}
  Extent(const void* first, std::size_t bytes)
      : Extent(reinterpret_cast<std::uintptr_t>(first), bytes) {}

  bool overlaps(const Extent& other) const { return begin < other.end && other.begin < end; }
};

}  // namespace sarnum
