// A level of instructions, forced on the transforms and on linear algebra for as long as an object
// lives, with its kernels counted.
#pragma once

#include <gtest/gtest.h>
#include <sarnum/sarnum.h>

#include "fft/kernels/level.h"
#include "linalg/kernels/update.h"

class ForcedLevel {
 public:
  /// All that are compiled; a CPU may lack the last ones.
  static constexpr const char* names[] = {"scalar", "baseline", "avx2", "avx512"};

  static std::size_t runnable() { return sarnum::runnable_levels().size(); }

  explicit ForcedLevel(std::size_t number)
      : level_(*sarnum::runnable_levels()[number]),
        update_(*sarnum::runnable_update_levels()[number]) {
    inner = sarnum::runnable_levels()[number];
    inner_update = update_.update;
    level_.double_split = Counted<&sarnum::Level::double_split>::run;
    level_.float_split = Counted<&sarnum::Level::float_split>::run;
    level_.float_interleaved = Counted<&sarnum::Level::float_interleaved>::run;
    level_.double_rounded = Counted<&sarnum::Level::double_rounded>::run;
    level_.float_rounded = Counted<&sarnum::Level::float_rounded>::run;
    level_.double_raster = CountedRaster<&sarnum::Level::double_raster>::table;
    level_.double_rounded_raster = CountedRaster<&sarnum::Level::double_rounded_raster>::table;
    level_.float_rounded_raster = CountedRaster<&sarnum::Level::float_rounded_raster>::table;
    if (inner_update != nullptr) {
      update_.update = [](const sarnum::Update& update) {
        ++updates;
        inner_update(update);
      };
    }
    lines = columns = updates = 0;
    sarnum::force_level(&level_);
    sarnum::force_update_level(&update_);
    EXPECT_STREQ(sarnum::build_info().instruction_set, names[number]);
    EXPECT_STREQ(sarnum::update_level_in_use().name, names[number]);
  }
  ForcedLevel(const ForcedLevel&) = delete;
  ForcedLevel& operator=(const ForcedLevel&) = delete;
  ~ForcedLevel() {
    sarnum::force_level(nullptr);
    sarnum::force_update_level(nullptr);
  }

  /// Lines transformed, columns transformed in blocks, updates of rows.
  static inline int lines, columns, updates;

 private:
  template <auto member>
  struct Counted;
  template <class... Arguments, void (*sarnum::Level::*member)(Arguments...)>
  struct Counted<member> {
    static void run(Arguments... arguments) {
      ++lines;
      (inner->*member)(arguments...);
    }
  };
  template <auto raster>
  struct CountedRaster;
  template <class Real, sarnum::RasterKernels<Real> sarnum::Level::*raster>
  struct CountedRaster<raster> {
    static void row(Real* re, Real* im, void* to, int m, const sarnum::KernelTwiddles<double>& w,
                    Real scale) {
      ++lines;
      (inner->*raster).row(re, im, to, m, w, scale);
    }
    static void blocks(const sarnum::ColumnBlock& block, const sarnum::KernelTwiddles<double>& w,
                       Real scale) {
      columns += 1 << block.columns_exponent;
      (inner->*raster).columns(block, w, scale);
    }
    static constexpr sarnum::RasterKernels<Real> table = {row, blocks};
  };

  static inline const sarnum::Level* inner;
  static inline void (*inner_update)(const sarnum::Update&);
  sarnum::Level level_;
  sarnum::UpdateLevel update_;
};
