// What transforms do at an instruction-set level beyond its values for lines: rasters whose rows
// may overlap, the pace of the meter, tables of another level.
#include <gtest/gtest.h>
#include <sarnum/sarnum.h>

#include <cstring>
#include <vector>

#include "forced_level.h"
#include "plain_transform.h"

namespace {

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
  for (std::size_t level = 0; level < ForcedLevel::runnable(); ++level) {
    for (const int type : {TD_COMPLEX_FLOAT32, TD_COMPLEX_FLOAT64}) {
      for (const int centre : {0, 1, 2}) {
        const std::size_t pixel = type == TD_COMPLEX_FLOAT32 ? 8 : 16;
        for (const Raster& raster : {Raster{type, centre, 64, 32, 64 * pixel + 4, 64},
                                     {type, centre, 16, 4, 16 * pixel, 16},
                                     {type, centre, 64, 512, 64 * pixel, 64},
                                     {type, centre, 32, 16, 9 * pixel / 2, 4},
                                     {type, centre, 32, 8, pixel, 1},
                                     {type, centre, 32, 8, 0, 0}}) {
          SCOPED_TRACE(testing::Message()
                       << ForcedLevel::names[level] << " type " << type << ' ' << centre << ", "
                       << raster.width << " x " << raster.height);
          std::vector<unsigned char> expected;
          {
            const ForcedLevel plain(0);
            expected = raster.transformed();
          }
          const ForcedLevel forced(level);
          EXPECT_TRUE(raster.transformed() == expected);
          EXPECT_EQ(ForcedLevel::lines, level > 0 ? raster.height : 0);
          const int vector_bytes = sarnum::level_in_use().vector_bytes;
          const bool has_blocks = level > 0 && vector_bytes <= 8 * raster.columns_at_once;
          EXPECT_EQ(ForcedLevel::columns, has_blocks ? raster.width : 0);
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
      late += column + 32 < 128 && raster[2 * column + 64] == done[2 * column + 64];
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
  for (std::size_t level = 0; level < ForcedLevel::runnable(); ++level) {
    auto line = oracle::random_values<double>(512, 1);
    auto expected = line;
    const ForcedLevel forced(level);
    ASSERT_EQ(init_ibitr(8), 0);
    sarnum::force_level(sarnum::runnable_levels().front());
    fft_Fast(line.data(), line.data() + 256, 8);
    fft(expected.data(), expected.data() + 256, 8);
    EXPECT_EQ(line, expected);
  }
}

}  // namespace
