// Every exported routine, and how it is called: on generated data, in arrays that lie where a check
// wants them, with all that it gives recorded. A check is a loop over them.
#pragma once

#include <gtest/gtest.h>

#include <climits>
#include <cstddef>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "failing_allocations.h"

enum Data { noise, impulse, tone, huge, tiny, subnormal, not_finite, kinds_of_data };

/// What a check decides about a call.
struct Conditions {
  /// Variants from here on have an argument that headers call outside the contract, and harmless.
  static constexpr unsigned unlawful = 100;

  int size = 0;  ///< number of elements, order, or exponent of the length
  Data data = noise;
  unsigned variant = 0;                             ///< of the data and of the other arguments
  enum { anywhere, begins, ends } page = anywhere;  ///< where arrays meet an inaccessible one
  std::size_t offset = 0;  ///< of arrays that lie anywhere: bytes past a cache line
  int failing = 0;         ///< number of the allocation that fails
  FailingAllocations::Failing how = FailingAllocations::Failing::once;
};

/// What a call gave.
struct Outcome {
  std::vector<long double> values;  ///< the result, then what all arrays hold that it may change
  int exceptions = 0;     ///< of floating point that it raised, of those that end programs
  bool untouched = true;  ///< none of them was written
  bool lawful = true;     ///< all arguments but the size are
  int allocations = 0;
};

/// One call: prepares its arguments, runs it and records it. That inputs stay as they are, and
/// that nothing round the arrays is written, is checked every time.
class Call {
 public:
  /// The result of a call that threw std::bad_alloc.
  static constexpr double thrown = -999.0;

  enum Use { input, changed, output };

  explicit Call(const Conditions& given);

  const int size;
  Outcome outcome;

  /// Elements of type T (numbers, pointers, COMPLEX_FLOAT32); none for a count below 0.
  template <class T>
  T* array(Use use, std::ptrdiff_t count);

  /// Pixels to be read, of a type or of none.
  void* pixels(int type, std::ptrdiff_t count);

  template <class T>
  T number(std::size_t i = 0, std::size_t count = 1);

  /// By the variant of the call.
  int choose(const std::vector<int>& lawful, const std::vector<int>& unlawful = {});

  void run(const std::function<double()>& body);

  class Raster;
  std::shared_ptr<Raster> raster;  ///< if there is one among the arguments
  int outputs = 3;                 ///< of arrays whose size depends on another argument

 private:
  struct Block {
    std::shared_ptr<unsigned char[]> memory;
    std::size_t room, begin, bytes;
    Use use;
    void (*record)(const unsigned char* from, std::size_t bytes, std::vector<long double>& to);
  };

  unsigned char* place(std::size_t bytes, std::size_t alignment, Block block);

  Conditions given_;
  std::mt19937_64 engine_;
  std::vector<Block> blocks_;
};

/// The sizes that a routine is tried with.
struct Sizes {
  std::vector<int> lawful, unlawful;
  int typical, large;
};

struct Traits {
  int kernels_from = INT_MAX;  ///< the least size at which all levels but the scalar run kernels
  int needed = 0;              ///< allocations without which nothing is written,
  double failed = 0;           ///< and what is returned then; NaN for the number of the allocation
  bool uses_tables = false;    ///< those of the exponent, which are to be there
  bool is_shared = false;      ///< changes what all calls share
  bool repeats = true;         ///< the same arguments give the same values
  bool allocates_in_host = false;
};

struct Routine {
  std::string symbols;  ///< as the list of exported symbols has them, one a line
  const Sizes& sizes;
  std::function<void(Call&)> call;
  /// The plain definition of its values, called alike; null where a test of its part has it.
  std::function<void(Call&)> definition;
  Traits traits;

  Outcome outcome(const Conditions& conditions) const;
  Outcome defined_outcome(const Conditions& conditions) const;
};

const std::vector<Routine>& routines();
