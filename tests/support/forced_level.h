// A level of instructions, forced on the transforms, their twiddles and linear algebra for as long
// as an object lives, with the kernels of the first and the last counted.
#pragma once

#include <gtest/gtest.h>
#include <sarnum/sarnum.h>

#include "elementary/twiddles.h"
#include "fft/kernels/level.h"
#include "instruction_set.h"
#include "linalg/kernels/update.h"

class ForcedLevel {
 public:
  /// All that are compiled; a CPU may lack the last ones.
  static constexpr const char* names[] = {"scalar", "baseline", "avx2", "avx512"};

  static std::size_t runnable() { return sarnum::levels.runnable().size(); }

  explicit ForcedLevel(std::size_t number)
      : level_(*sarnum::levels.runnable()[number]),
        update_(*sarnum::update_levels.runnable()[number]) {
    inner = sarnum::levels.runnable()[number];
    inner_update = update_.update;
    level_.double_split = line<&Level::double_split>;
    level_.float_split = line<&Level::float_split>;
    level_.double_interleaved = line<&Level::double_interleaved>;
    level_.float_interleaved = line<&Level::float_interleaved>;
    level_.double_rounded = line<&Level::double_rounded>;
    level_.float_rounded = line<&Level::float_rounded>;
    level_.double_raster = {row<&Level::double_raster>, block<&Level::double_raster>};
    level_.float_raster = {row<&Level::float_raster>, block<&Level::float_raster>};
    level_.double_rounded_raster = {row<&Level::double_rounded_raster>,
                                    block<&Level::double_rounded_raster>};
    level_.float_rounded_raster = {row<&Level::float_rounded_raster>,
                                   block<&Level::float_rounded_raster>};
    if (inner_update != nullptr) {
      update_.update = [](const sarnum::Update& update) {
        ++updates;
        inner_update(update);
      };
    }
    lines = columns = updates = 0;
    sarnum::levels.force(&level_);
    sarnum::update_levels.force(&update_);
    sarnum::twiddle_levels.force(sarnum::twiddle_levels.runnable()[number]);
    EXPECT_STREQ(sarnum::build_info().instruction_set, names[number]);
    EXPECT_STREQ(sarnum::update_level_in_use().name, names[number]);
    EXPECT_STREQ(sarnum::twiddle_level_in_use().name, names[number]);
  }
  ForcedLevel(const ForcedLevel&) = delete;
  ForcedLevel& operator=(const ForcedLevel&) = delete;
  ~ForcedLevel() {
    sarnum::levels.force(nullptr);
    sarnum::update_levels.force(nullptr);
    sarnum::twiddle_levels.force(nullptr);
  }

  /// Lines transformed, columns transformed in blocks, updates of rows.
  static inline int lines, columns, updates;

 private:
  using Level = sarnum::Level;

  template <auto member>
  static void line(auto... arguments) {
    ++lines;
    (inner->*member)(arguments...);
  }
  template <auto raster>
  static void row(auto... arguments) {
    ++lines;
    (inner->*raster).row(arguments...);
  }
  template <auto raster>
  static void block(const sarnum::ColumnBlock& given, auto... arguments) {
    columns += 1 << given.columns_exponent;
    (inner->*raster).columns(given, arguments...);
  }

  static inline const Level* inner;
  static inline void (*inner_update)(const sarnum::Update&);
  Level level_;
  sarnum::UpdateLevel update_;
};
