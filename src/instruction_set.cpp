#include "instruction_set.h"

namespace sarnum {

namespace {

std::size_t count_runnable() {
#if defined(SARNUM_PLAIN_FORMS)
  return 1;
#else
  std::size_t count = 2;
#if defined(__x86_64__)
  __builtin_cpu_init();
  if (__builtin_cpu_supports("avx2") != 0 && __builtin_cpu_supports("fma") != 0) {
    ++count;
    if (__builtin_cpu_supports("avx512f") != 0 && __builtin_cpu_supports("avx512dq") != 0 &&
        __builtin_cpu_supports("avx512bw") != 0 && __builtin_cpu_supports("avx512vl") != 0) {
      ++count;
    }
  }
#endif
  return count;
#endif
}

}  // namespace

std::size_t runnable_instruction_sets() {
  static const std::size_t count = count_runnable();
  return count;
}

}  // namespace sarnum
