// Work storage for lines: a line is transformed faster where its samples adjoin each other.
#pragma once

#include <cstddef>
#include <cstdlib>
#include <memory>

#include "fft/radix2.h"

namespace sarnum {

/// Memory from the C allocator, at the beginning of a cache line; null when there is none.
class LineMemory {
 public:
  static constexpr std::size_t line = 64;

  explicit LineMemory(std::size_t bytes) : memory_(std::malloc(bytes + line)) {}

  void* get() const {
    void* begin = memory_.get();
    std::size_t space = 2 * line;
    return std::align(line, line, begin, space);
  }

 private:
  struct Free {
    void operator()(void* p) const { std::free(p); }
  };

  std::unique_ptr<void, Free> memory_;
};

/// Real and imaginary parts of one line for each of some workers; unusable when there is no memory.
/// The imaginary parts begin a few cache lines later in their page, so that neither part's are
/// mistaken for the other's.
template <class Real>
class LineBuffers {
 public:
  LineBuffers(std::size_t length, unsigned workers)
      : length_(length + skew),
        re_(workers * length_ * sizeof(Real)),
        im_((workers * length_ + skew) * sizeof(Real)) {}

  explicit operator bool() const { return re_.get() != nullptr && im_.get() != nullptr; }
  SplitSamples<Real> of(unsigned worker) const {
    return {static_cast<Real*>(re_.get()) + worker * length_,
            static_cast<Real*>(im_.get()) + worker * length_ + skew};
  }

 private:
  static constexpr std::size_t skew = 4 * LineMemory::line / sizeof(Real);

  std::size_t length_;
  LineMemory re_;
  LineMemory im_;
};

}  // namespace sarnum
