// Storage for the length of one call, and callers' long double matrices in the precision that the
// arithmetic has.
//
// Small counts lie on the stack: a system of a few equations is solved in less time than an
// allocation takes.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <new>

namespace sarnum {

static_assert(sizeof(std::size_t) >= 8, "sizes of matrices of int orders are computed unchecked");

/// Room for `count` numbers, not initialised.
class WorkStorage {
 public:
  explicit WorkStorage(std::size_t count) {
    if (count <= small_count) {
      numbers_ = small_;
    } else if (count <= PTRDIFF_MAX / sizeof(double)) {
      large_.reset(new (std::nothrow) double[count]);
      numbers_ = large_.get();
    }
  }
  WorkStorage(const WorkStorage&) = delete;
  WorkStorage& operator=(const WorkStorage&) = delete;

  /// Null when the storage could not be had.
  double* get() { return numbers_; }

 private:
  static constexpr std::size_t small_count = 528;  // the inverse of a matrix of order 16
  double small_[small_count];
  std::unique_ptr<double[]> large_;
  double* numbers_ = nullptr;
};

/// *to = value. Where long double has the 64-bit mantissa of the x87, its bits are put together by
/// integers: the x87's own store takes several times as long.
inline void widen(double value, long double* to) {
#if defined(__x86_64__) && __LDBL_MANT_DIG__ == 64
  const auto bits = std::bit_cast<std::uint64_t>(value);
  const std::uint64_t sign = bits >> 63;
  const std::uint64_t exponent = bits >> 52 & 0x7ff;
  const bool is_subnormal = exponent == 0 && bits << 1 != 0;
  if (exponent != 0x7ff && !is_subnormal) {
    // Residues of an elimination are zeros or not as chance has it: no branch on that.
    const std::uint64_t all_if_nonzero = 0 - ((exponent + 0x7ff) >> 11);
    const std::uint64_t words[] = {(std::uint64_t{1} << 63 | bits << 11) & all_if_nonzero,
                                   sign << 15 | ((exponent + 16383 - 1023) & all_if_nonzero)};
    std::memcpy(to, words, sizeof words);
    return;
  }
#endif
  *to = value;
}

inline void widen(const double* values, std::size_t count, long double* to) {
  for (std::size_t i = 0; i < count; ++i) {
    widen(values[i], to + i);
  }
}

/// A caller's matrix in 64 bits for the length of one call: a copy where its elements are wider,
/// and otherwise the matrix itself, which takes no storage.
template <class Real>
class Narrowed {
 public:
  Narrowed(Real* values, std::size_t count) : values_(values), count_(count), copy_(count) {
    for (std::size_t i = 0; has_storage() && i < count; ++i) {
      copy_.get()[i] = static_cast<double>(values[i]);
    }
  }

  /// Whether the storage of the copy could be allocated; get() is of use only then.
  bool has_storage() { return copy_.get() != nullptr; }
  double* get() { return copy_.get(); }

  /// Gives the caller what became of the copy.
  void widen_back() { widen(copy_.get(), count_, values_); }

 private:
  Real* values_;
  std::size_t count_;
  WorkStorage copy_;
};

template <class Real>
requires(std::numeric_limits<Real>::digits ==
         std::numeric_limits<double>::digits) class Narrowed<Real> {
 public:
  // For this the sources are compiled with -fno-strict-aliasing.
  Narrowed(Real* values, std::size_t /*count*/) : values_(reinterpret_cast<double*>(values)) {}

  static bool has_storage() { return true; }
  double* get() { return values_; }
  void widen_back() {}

 private:
  double* values_;
};

}  // namespace sarnum
