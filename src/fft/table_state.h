// The process-wide tables as the table-driven transforms see them.
#pragma once

#include <cstddef>
#include <new>
#include <optional>
#include <type_traits>

#include "fft/kernels/level.h"

namespace sarnum {

/// Storage of one table. It knows its size: after delete_ibitr() an array may have been
/// allocated for a shorter length than the largest one ever requested.
///
/// Only release() gives it back. The tables live until delete_ibitr(): while the process ends,
/// other threads and global objects still use them.
template <class T>
class TableArray {
 public:
  TableArray() = default;
  TableArray(const TableArray&) = delete;
  TableArray& operator=(const TableArray&) = delete;

  /// Has room for `count` entries afterwards, with the old array and its content where it is
  /// large enough.
  /// @return false, with no array left, when there is no storage.
  bool reserve(std::size_t count) {
    if (count > capacity_) {
      release();
      entries_ = new (std::nothrow) T[count];
      capacity_ = entries_ != nullptr ? count : 0;
    }
    return entries_ != nullptr;
  }

  void release() {
    delete[] entries_;
    entries_ = nullptr;
    capacity_ = 0;
  }

  std::size_t capacity() const { return capacity_; }
  const T* data() const { return entries_; }
  T& operator[](std::size_t i) { return entries_[i]; }
  const T& operator[](std::size_t i) const { return entries_[i]; }

 private:
  T* entries_ = nullptr;
  std::size_t capacity_ = 0;
};

/// The twiddles once more, in Real and in the order of the kernels. Without storage for it the
/// transforms take their plain form.
template <class Real>
class KernelTable {
 public:
  /// Makes the table for length 2^m.
  void fill(const Level& level, int m);
  void release() {
    entries_.release();
    v_ = 0;
  }

  /// What is here for a level and a length 2^m.
  std::optional<KernelTwiddles<Real>> twiddles(const Level& level, int m) const {
    if (v_ == 0 || v_ != lane_exponent<Real>(level, m)) {
      return std::nullopt;
    }
    return KernelTwiddles<Real>{entries_.data(), entries_.data() + (std::size_t{1} << m), 2, 1};
  }

 private:
  TableArray<Real> entries_;  ///< vectors, then the pairs of their first lanes, without gaps
  int v_ = 0;                 ///< lanes, as exponent; 0: nothing is here
};

struct TableState {
  int largest_exponent = 0;           ///< largest m ever given to init_ibitr(); it only grows
  int swap_count = 0;                 ///< pairs in the list, for the last m
  std::optional<int> ready_exponent;  ///< the m that the tables serve now, if any
  TableArray<int> bit_reversal;
  TableArray<double> cosine;
  TableArray<double> sine;
  TableArray<int> swap_pairs;
  KernelTable<double> double_kernels;
  KernelTable<float> float_kernels;

  template <class Real>
  const KernelTable<Real>& kernel_table() const {
    if constexpr (std::is_same_v<Real, double>) {
      return double_kernels;
    } else {
      return float_kernels;
    }
  }

  void release();
};

extern TableState table_state;

}  // namespace sarnum
