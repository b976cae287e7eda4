// Every instruction-set level this CPU can run gives the values of the plain forms.
#include <gtest/gtest.h>
#include <sarnum/sarnum.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <span>
#include <vector>

#include "fft/kernels/level.h"
#include "transform_forms.h"

namespace {

using sarnum::Level;

const Level* inner;
int kernel_runs;
int column_runs;

template <auto member>
struct Counted;
template <class... Arguments, void (*Level::*member)(Arguments...)>
struct Counted<member> {
  static void run(Arguments... arguments) {
    ++kernel_runs;
    (inner->*member)(arguments...);
  }
};

template <auto raster>
struct CountedRaster;
template <class Real, sarnum::RasterKernels<Real> Level::*raster>
struct CountedRaster<raster> {
  static void row(Real* re, Real* im, void* to, int m, const sarnum::KernelTwiddles<double>& w,
                  Real scale) {
    ++kernel_runs;
    (inner->*raster).row(re, im, to, m, w, scale);
  }
  static void columns(const sarnum::ColumnBlock& block, const sarnum::KernelTwiddles<double>& w,
                      Real scale) {
    column_runs += 1 << block.columns_exponent;
    (inner->*raster).columns(block, w, scale);
  }
  static constexpr sarnum::RasterKernels<Real> table = {row, columns};
};

/// Forces a level, for the tables of 2^m too, and counts the kernels it runs.
class Forced {
 public:
  Forced(const Level* level, int m) : counted_(*level) {
    inner = level;
    counted_.double_split = Counted<&Level::double_split>::run;
    counted_.float_split = Counted<&Level::float_split>::run;
    counted_.float_interleaved = Counted<&Level::float_interleaved>::run;
    counted_.double_rounded = Counted<&Level::double_rounded>::run;
    counted_.float_rounded = Counted<&Level::float_rounded>::run;
    counted_.double_raster = CountedRaster<&Level::double_raster>::table;
    counted_.double_rounded_raster = CountedRaster<&Level::double_rounded_raster>::table;
    counted_.float_rounded_raster = CountedRaster<&Level::float_rounded_raster>::table;
    kernel_runs = column_runs = 0;
    sarnum::force_level(&counted_);
    EXPECT_STREQ(sarnum::build_info().instruction_set, level->name);
    EXPECT_EQ(init_ibitr(m), 0);
  }
  Forced(const Forced&) = delete;
  Forced& operator=(const Forced&) = delete;
  ~Forced() { sarnum::force_level(nullptr); }

 private:
  Level counted_;
};

/// Real parts then imaginary parts: an impulse, and noise of many sizes with and without samples
/// that are missing or infinite.
template <class Real>
std::vector<std::vector<Real>> test_lines(std::size_t n) {
  using Limits = std::numeric_limits<Real>;
  std::vector<std::vector<Real>> lines(1, std::vector<Real>(2 * n));
  lines[0][n / 3] = Real{1};
  for (const Real scale : {Real{1}, Limits::max() / 8, Limits::min(), 50 * Limits::denorm_min()}) {
    lines.push_back(oracle::random_values<Real>(2 * n, static_cast<unsigned>(n)));
    for (Real& value : lines.back()) {
      value *= scale;
    }
  }
  lines.push_back(lines[1]);
  lines.back().front() = Limits::infinity();
  lines.back().back() = Limits::quiet_NaN();
  return lines;
}

/// The values of one form for all lines, one after another, at addresses `offset` elements further.
template <class Real>
std::vector<Real> results(const forms::Form<Real>& form, std::vector<std::vector<Real>> lines,
                          int m, std::size_t offset) {
  std::vector<Real> all;
  for (auto& line : lines) {
    line.insert(line.begin(), offset, Real{7});
    form.transform(line.data() + offset, line.data() + offset + (std::size_t{1} << m), m);
    all.insert(all.end(), line.begin(), line.end());
  }
  return all;
}

template <class Real>
void check_levels(int m) {
  const auto levels = sarnum::runnable_levels();
  const auto lines = test_lines<Real>(std::size_t{1} << m);
  const auto offset = static_cast<std::size_t>(m % 4);
  for (const auto& form : forms::all<Real>()) {
    std::vector<Real> expected;
    for (const Level* const level : levels) {
      SCOPED_TRACE(testing::Message() << form.name << " m=" << m << ' ' << level->name);
      const Forced forced(level, m);
      const auto actual = results(form, lines, m, offset);
      const bool has_kernel = level->vector_bytes != 0 && m >= sarnum::least_kernel_exponent;
      ASSERT_EQ(kernel_runs, has_kernel ? static_cast<int>(lines.size()) : 0);
      if (expected.empty()) {
        expected = actual;
      }
      for (std::size_t i = 0; i < expected.size(); ++i) {
        ASSERT_TRUE(actual[i] == expected[i] || (std::isnan(actual[i]) && std::isnan(expected[i])))
            << i << ": " << actual[i] << ", expected " << expected[i];
      }
    }
  }
}

TEST(Levels, GiveTheValuesOfThePlainForms) {
  ASSERT_GE(sarnum::runnable_levels().size(), 2U);
  ASSERT_STREQ(sarnum::runnable_levels().front()->name, "scalar");
  for (const int m : {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 16}) {
    check_levels<double>(m);
    check_levels<float>(m);
  }
}

/// A transform, centred or inverse, of complex pixels in place; rows begin `distance` bytes apart,
/// every second one counted from the end.
struct Raster {
  int type;
  int centre;  ///< 2: inverse
  int width;
  int height;
  std::size_t distance;
  int columns_at_once;  ///< where vectors have no more lanes than this

  std::vector<unsigned char> transformed() const {
    const auto memory_size = distance * static_cast<std::size_t>(height) + 65536;
    std::vector<unsigned char> memory(memory_size);
    const auto values = oracle::random_values<float>(memory_size / 8, 3);
    for (std::size_t i = 0; i < values.size(); ++i) {
      const double wide = values[i];
      const bool is_double = type == TD_COMPLEX_FLOAT64;
      std::memcpy(&memory[is_double ? 8 * i : 4 * i],
                  is_double ? static_cast<const void*>(&wide) : &values[i], is_double ? 8 : 4);
    }
    std::vector<void*> rows;
    for (int k = 0; k < height; ++k) {
      rows.push_back(&memory[distance * static_cast<std::size_t>(k % 2 == 0 ? k : height - k)]);
    }
    CFFTClass object;
    if (centre == 2) {
      object.IFFT_2D(rows.data(), rows.data(), width, height, type, nullptr);
    } else {
      object.FFT_2D_NEW(rows.data(), rows.data(), width, height, type, centre, nullptr);
    }
    return memory;
  }
};

TEST(Levels, GiveTheValuesOfThePlainFormsForRasters) {
  for (const Level* const level : sarnum::runnable_levels()) {
    for (const int type : {TD_COMPLEX_FLOAT32, TD_COMPLEX_FLOAT64}) {
      for (const int centre : {0, 1, 2}) {
        const std::size_t pixel = type == TD_COMPLEX_FLOAT32 ? 8 : 16;
        for (const Raster& raster : {Raster{type, centre, 64, 32, 64 * pixel + 4, 64},
                                     {type, centre, 16, 4, 16 * pixel, 16},
                                     {type, centre, 64, 512, 64 * pixel, 64},
                                     {type, centre, 32, 16, 9 * pixel / 2, 4},
                                     {type, centre, 32, 8, pixel, 1},
                                     {type, centre, 32, 8, 0, 0}}) {
          SCOPED_TRACE(testing::Message() << level->name << " type " << type << ' ' << centre
                                          << ", " << raster.width << " x " << raster.height);
          std::vector<unsigned char> expected;
          {
            const Forced plain(sarnum::runnable_levels().front(), 0);
            expected = raster.transformed();
          }
          const Forced forced(level, 0);
          EXPECT_TRUE(raster.transformed() == expected);
          const bool has_kernels = level->vector_bytes != 0;
          EXPECT_EQ(kernel_runs, has_kernels ? raster.height : 0);
          const bool has_blocks = has_kernels && level->vector_bytes <= 8 * raster.columns_at_once;
          EXPECT_EQ(column_runs, has_blocks ? raster.width : 0);
        }
      }
    }
  }
}

/// At step k of the columns column k must be in place, and not all that follow.
class WatchingMeter : public CMeterInfo {
 public:
  void StepIt() override {
    const int column = steps++ - 128;
    if (column >= 0 && raster != nullptr) {
      early += raster[2 * column] != done[2 * column];
      late += column + 64 < 128 && raster[2 * column + 128] == done[2 * column + 128];
    }
  }

  const float* raster = nullptr;
  const float* done = nullptr;
  int steps = 0;
  int early = 0;
  int late = 0;
};

TEST(Levels, TheMeterKeepsPaceWithTheColumns) {
  auto values = oracle::random_values<float>(2 * 128 * 128, 3);
  auto done = values;
  WatchingMeter meter;
  for (auto* const raster : {&done, &values}) {
    std::vector<void*> rows;
    for (std::size_t k = 0; k < 128; ++k) {
      rows.push_back(raster->data() + 256 * k);
    }
    meter.raster = raster == &done ? nullptr : values.data();
    meter.done = done.data();
    meter.steps = 0;
    CFFTClass().FFT_2D(rows.data(), rows.data(), 128, 128, TD_COMPLEX_FLOAT32, &meter);
    EXPECT_EQ(meter.steps, 256);
  }
  EXPECT_EQ(meter.early, 0);
  EXPECT_EQ(meter.late, 0);
}

TEST(Levels, TablesOfAnotherLevelServeThePlainForm) {
  for (const Level* const level : sarnum::runnable_levels()) {
    auto line = oracle::random_values<double>(512, 1);
    auto expected = line;
    const Forced forced(level, 8);
    sarnum::force_level(sarnum::runnable_levels().front());
    fft_Fast(line.data(), line.data() + 256, 8);
    fft(expected.data(), expected.data() + 256, 8);
    EXPECT_EQ(line, expected);
  }
}

}  // namespace
