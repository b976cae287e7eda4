// A level of instructions for updates, forced for as long as an object lives.
#pragma once

#include "linalg/kernels/update.h"

/// Forces a level and counts the updates that its kernel does.
class Forced {
 public:
  explicit Forced(const sarnum::UpdateLevel& level) : counted_(level) {
    inner = level.update;
    updates = 0;
    if (inner != nullptr) {
      counted_.update = [](const sarnum::Update& update) {
        ++updates;
        inner(update);
      };
    }
    sarnum::force_update_level(&counted_);
  }
  Forced(const Forced&) = delete;
  Forced& operator=(const Forced&) = delete;
  ~Forced() { sarnum::force_update_level(nullptr); }

  static inline int updates;

 private:
  static inline void (*inner)(const sarnum::Update&);
  sarnum::UpdateLevel counted_;
};
