// Which levels there are, and which of them this CPU can run.
#include "fft/kernels/level.h"

#include <algorithm>
#include <atomic>
#include <iterator>

namespace sarnum {

extern const Level level_baseline;
#if defined(__x86_64__)
extern const Level level_avx2;
extern const Level level_avx512;
#endif

namespace {

constexpr Level level_scalar = {"scalar", 0, {}, {}, {}, {}, {}, {}, {}, {}};

struct Levels {
  const Level* list[4] = {&level_scalar, &level_baseline};
  std::size_t count = 2;

  Levels() {
#if defined(__x86_64__)
    __builtin_cpu_init();
    if (__builtin_cpu_supports("avx2") != 0) {
      list[count++] = &level_avx2;
    }
    if (__builtin_cpu_supports("avx512f") != 0 && __builtin_cpu_supports("avx512dq") != 0 &&
        __builtin_cpu_supports("avx512bw") != 0 && __builtin_cpu_supports("avx512vl") != 0) {
      list[count++] = &level_avx512;
    }
#endif
  }
};

const Levels& levels() {
  static const Levels found;
  return found;
}

std::atomic<const Level*> forced_level{nullptr};

}  // namespace

std::span<const Level* const> runnable_levels() {
  return {levels().list, levels().count};
}

const Level& level_in_use() {
  const Level* const forced = forced_level.load(std::memory_order_relaxed);
  return forced != nullptr ? *forced : *levels().list[levels().count - 1];
}

void force_level(const Level* level) {
  forced_level.store(level, std::memory_order_relaxed);
}

}  // namespace sarnum
