// Storage for the length of one call, and callers' long double matrices in the precision that the
// arithmetic has.
//
// Small counts lie on the stack: a system of a few equations is solved in less time than an
// allocation takes.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <new>
#include <type_traits>

namespace sarnum {

/// Room for `count` numbers, not initialised.
template <class Real>
class WorkStorage {
 public:
  explicit WorkStorage(std::size_t count) {
    if (count <= small_count) {
      numbers_ = small_;
    } else if (count <= PTRDIFF_MAX / sizeof(Real)) {
      large_.reset(new (std::nothrow) Real[count]);
      numbers_ = large_.get();
    }
  }
  WorkStorage(const WorkStorage&) = delete;
  WorkStorage& operator=(const WorkStorage&) = delete;

  /// Null when the storage could not be had.
  Real* get() { return numbers_; }

 private:
  static constexpr std::size_t small_count = 512;  // the inverse of a matrix of order 16
  Real small_[small_count];
  std::unique_ptr<Real[]> large_;
  Real* numbers_ = nullptr;
};

/// A caller's matrix in 64 bits for the length of one call, where long double is wider: a copy.
class NarrowedCopy {
 public:
  NarrowedCopy(long double* values, std::size_t count)
      : values_(values), count_(count), copy_(count) {
    for (std::size_t i = 0; copy_.get() != nullptr && i < count; ++i) {
      copy_.get()[i] = static_cast<double>(values[i]);
    }
  }

  /// Null when the storage of the copy could not be had.
  double* get() { return copy_.get(); }

  /// Gives the caller what became of the copy.
  void widen() { std::copy_n(copy_.get(), count_, values_); }

 private:
  long double* values_;
  std::size_t count_;
  WorkStorage<double> copy_;
};

/// The same where long double is a double under another name: the caller's own.
class NarrowedInPlace {
 public:
  NarrowedInPlace(long double* values, std::size_t) : values_(values) {}
  long double* get() { return values_; }
  void widen() {}

 private:
  long double* values_;
};

constexpr bool long_double_is_wider =
    std::numeric_limits<long double>::digits > std::numeric_limits<double>::digits;
using NarrowedMatrix = std::conditional_t<long_double_is_wider, NarrowedCopy, NarrowedInPlace>;
/// What the arithmetic on it runs on.
using Element = std::conditional_t<long_double_is_wider, double, long double>;

}  // namespace sarnum
