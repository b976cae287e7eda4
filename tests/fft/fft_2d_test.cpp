// Two-dimensional transforms against rows-then-columns done plainly, one line after another in
// memory that may overlap.
#include <gtest/gtest.h>
#include <sarnum/sarnum.h>

#include <algorithm>
#include <bit>
#include <climits>
#include <cstring>
#include <new>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "forced_level.h"
#include "pixel_cases.h"
#include "transform_forms.h"

namespace {

/// Notes every call in order, a step as a stroke; the few calls of a small transform without
/// allocating anything.
class RecordingMeter : public CMeterInfo {
 public:
  RecordingMeter() { calls.reserve(200); }
  void SetRange(int lower, int upper) override {
    note("range " + std::to_string(lower) + " " + std::to_string(upper));
  }
  int SetStep(int step) override { return note(" step " + std::to_string(step) + " "); }
  void SetText(const char* text) override { note(text); }
  void StepIt() override { note("|"); }
  void SetPos(int) override { note("unexpected"); }

  std::string calls;

 private:
  int note(std::string_view call) {
    calls += call;
    return 0;
  }
};

std::string expected_calls(std::size_t range, int label, std::size_t steps) {
  return "range 0 " + std::to_string(range) + " step 1 " + std::string(GetResourceString(label)) +
         "..." + std::string(steps, '|');
}

/// Bytes of which any run is finite numbers of every floating type.
std::vector<unsigned char> noise(std::size_t size) {
  std::mt19937 engine(static_cast<unsigned>(size));
  std::vector<unsigned char> bytes(size);
  std::generate(bytes.begin(), bytes.end(), [&] {
    return static_cast<unsigned char>((0x3d + engine() % 6) | (engine() & 0x80));
  });
  return bytes;
}

/// Rows of complex numbers or other pixels in one block of memory, `stride` bytes apart, downwards
/// or upwards. What lies between and around them are canaries; rows of odd strides are unaligned.
struct Rows {
  unsigned char* row(std::size_t k) {
    return memory.data() + 32 + (backwards ? count - 1 - k : k) * stride;
  }
  template <class Real>
  Real get(std::size_t k, std::size_t i) {
    return static_cast<Real>(read_element<Real>(row(k), i));
  }
  template <class Real>
  void set(std::size_t k, std::size_t column, Real re, Real im) {
    const Real pixel[] = {re, im};
    std::memcpy(row(k) + column * sizeof pixel, pixel, sizeof pixel);
  }
  std::vector<void*> pointers() {
    std::vector<void*> all;
    for (std::size_t k = 0; k < count; ++k) {
      all.push_back(row(k));
    }
    return all;
  }

  std::size_t count, bytes, stride;
  bool backwards;
  std::vector<unsigned char> memory = noise(count * stride + bytes + 64);
};

/// Codes without a loader: complex unsigned integers and those that are no type at all.
bool has_row_pass(const PixelType& type) {
  return !(type.is_complex && type.is_unsigned) && type.code >= 1 && type.code <= 16;
}

struct Transform {
  const char* name;
  bool inverse, centred;
  int (*run)(void** src, void** dst, int width, int height, int type, CMeterInfo* meter);
  bool has_meter = true;
};

template <int centre>
int fft_2d_new(void** src, void** dst, int width, int height, int type, CMeterInfo* meter) {
  return CFFTClass().FFT_2D_NEW(src, dst, width, height, type, centre, meter);
}

template <auto transform>
int block(void** src, void** dst, int side, int, int, CMeterInfo*) {
  CVeryFastFT object(std::countr_zero(static_cast<unsigned>(side)));
  EXPECT_EQ(object.AllocateDataMemory(), 1);
  const int result = (object.*transform)(static_cast<float*>(src[0]), static_cast<float*>(dst[0]));
  object.FreeDataMemory();
  EXPECT_EQ(object.size, side);
  return result;
}

constexpr Transform forward = {"FFT_2D", false, false,
                               [](auto... given) { return CFFTClass().FFT_2D(given...); }};
constexpr Transform inverse = {"IFFT_2D", true, false,
                               [](auto... given) { return CFFTClass().IFFT_2D(given...); }};
constexpr Transform centred = {"centred", false, true, fft_2d_new<1>};

template <class Real>
void plain_2d(const Transform& transform, const PixelType& type, std::size_t width,
              std::size_t height, Rows& src, Rows& dst) {
  const auto radix2 = transform.inverse ? oracle::radix2<double, double, float, Real>
                                        : oracle::radix2<double, double, Real, Real>;
  const forms::Form<Real> line = {
      "", {radix2, 0}, transform.inverse, !transform.inverse, transform.centred, nullptr};
  const std::size_t columns = std::bit_ceil(width);
  std::vector<Real> re, im;
  for (std::size_t k = 0; has_row_pass(type) && k < dst.count; ++k) {
    re.assign(columns, Real{0});
    im = re;
    for (std::size_t i = 0; k < height && i < width; ++i) {
      re[i] = static_cast<Real>(type.element(src.row(k), i << type.is_complex));
      im[i] = type.is_complex ? static_cast<Real>(type.element(src.row(k), 2 * i + 1)) : Real{0};
    }
    line.define(re.data(), im.data(), std::countr_zero(columns));
    for (std::size_t i = 0; i < columns; ++i) {
      dst.set(k, i, re[i], im[i]);
    }
  }
  re.resize(dst.count);
  im.resize(dst.count);
  for (std::size_t i = 0; i < columns; ++i) {
    for (std::size_t k = 0; k < dst.count; ++k) {
      re[k] = dst.get<Real>(k, 2 * i);
      im[k] = dst.get<Real>(k, 2 * i + 1);
    }
    line.define(re.data(), im.data(), std::countr_zero(dst.count));
    for (std::size_t k = 0; k < dst.count; ++k) {
      dst.set(k, i, re[k], im[k]);
    }
  }
}

/// The bytes of rows and canaries, with zeros of one sign.
template <class Real>
std::vector<unsigned char> written(Rows rows) {
  for (std::size_t k = 0; k < rows.count; ++k) {
    for (std::size_t i = 0; i < rows.bytes / sizeof(Real) / 2; ++i) {
      rows.set(k, i, rows.get<Real>(k, 2 * i) + Real{0}, rows.get<Real>(k, 2 * i + 1) + Real{0});
    }
  }
  return rows.memory;
}

/// How the rows of both rasters lie: `gap` bytes after each, less than none where rows overlap.
struct Layout {
  std::ptrdiff_t gap = 13;
  bool backwards = true, in_place = false;
};

/// Compares a transform, with and without a meter, with the plain one.
template <class Real>
void check_in(const Transform& transform, const PixelType& type, int width, int height,
              const Layout& layout) {
  SCOPED_TRACE(testing::Message() << transform.name << " type " << type.code << ", " << width
                                  << " x " << height << ", gap " << layout.gap
                                  << (layout.backwards ? " backwards" : "")
                                  << (layout.in_place ? " in place" : ""));
  const auto columns = static_cast<std::size_t>(width), lines = static_cast<std::size_t>(height);
  const std::size_t padded_columns = std::bit_ceil(columns), padded_lines = std::bit_ceil(lines);
  const auto rows = [&layout](std::size_t count, std::size_t bytes) {
    return Rows{count, bytes, bytes + static_cast<std::size_t>(layout.gap), layout.backwards};
  };
  Rows src = rows(lines, columns * type.bytes());
  Rows dst = rows(padded_lines, padded_columns * 2 * sizeof(Real));
  Rows expected = dst, silent = dst;
  const auto kept = src.memory;
  plain_2d<Real>(transform, type, columns, lines, layout.in_place ? expected : src, expected);

  RecordingMeter meter;
  for (Rows* const out : {&dst, &silent}) {
    auto from = (layout.in_place ? *out : src).pointers(), to = out->pointers();
    CMeterInfo* const with = out == &dst ? &meter : nullptr;
    EXPECT_EQ(transform.run(from.data(), to.data(), width, height, type.code, with), 1);
    EXPECT_TRUE(written<Real>(*out) == written<Real>(expected));
  }
  EXPECT_TRUE(src.memory == kept);
  const std::size_t total = padded_columns + padded_lines;
  EXPECT_EQ(meter.calls, transform.has_meter
                             ? expected_calls(total, transform.inverse ? 701 : 700,
                                              has_row_pass(type) ? total : padded_columns)
                             : "");
}

/// @param code  of a pixel type, or one outside of them.
void check(const Transform& transform, int code, int width, int height, const Layout& layout = {}) {
  PixelType type = pixel_types[std::clamp(code, 1, 16) - 1];
  type.code = code;
  (code == TD_FLOAT64 || code == TD_COMPLEX_FLOAT64
       ? check_in<double>
       : check_in<float>)(transform, type, width, height, layout);
}

TEST(Fft2d, EqualsRowsThenColumnsForEveryType) {
  for (int code = 0; code <= 17; ++code) {
    for (const auto& [width, height] : {std::pair{1, 1}, {1, 5}, {20, 1}, {16, 8}, {33, 20}}) {
      for (const bool in_place : {false, true}) {
        check(forward, code, width, height, {.in_place = in_place});
        check(centred, code, width, height, {.in_place = in_place});
        if (width == 16 && (code == TD_COMPLEX_FLOAT32 || code == TD_COMPLEX_FLOAT64)) {
          check(inverse, code, width, height, {.in_place = in_place});
        }
      }
    }
  }
}

TEST(Fft2d, OverlappingRowsGiveTheResultOfOneLineAfterAnother) {
  for (std::size_t level = 0; level < ForcedLevel::runnable(); ++level) {
    for (const auto& [type, pixel] : {std::pair{TD_COMPLEX_FLOAT32, 8}, {TD_COMPLEX_FLOAT64, 16}}) {
      for (const unsigned distance :
           {0U, 1U, 2U, 9U, 16U, 30U, 32U}) {  // of rows, in halves of pixels
        for (const int how : {0, 1, 2, 3}) {
          const ForcedLevel forced(level);
          const Layout layout{(static_cast<int>(distance) - 32) * pixel / 2, (how & 1) != 0,
                              (how & 2) != 0};

          check(forward, type, 16, 16, layout);
          check(centred, type, 16, 16, layout);
          check(inverse, type, 16, 16, layout);
          const int vector = level > 0 ? sarnum::level_in_use().vector_bytes : INT_MAX;
          EXPECT_EQ(ForcedLevel::columns > 0,
                    static_cast<int>(8 * std::bit_floor(distance / 2)) >= vector);
        }
      }
    }
  }
}

/// At step k of the columns column k must be in place, and not all that follow.
struct WatchingMeter : CMeterInfo {
  void StepIt() override {
    const int column = steps++ - 128;
    wrong += column >= 0 && raster[2 * column] != done[2 * column];
    wrong += column >= 0 && column < 96 && raster[2 * column + 64] == done[2 * column + 64];
  }
  const float *raster, *done;
  int steps = 0, wrong = 0;
};

TEST(Fft2d, TheMeterKeepsPaceWithTheColumns) {
  auto values = oracle::random_values<float>(2 * 128 * 128, 3), done = values;
  WatchingMeter meter;
  meter.raster = values.data();
  meter.done = done.data();
  for (auto* const raster : {&done, &values}) {
    std::vector<void*> rows;
    for (std::size_t k = 0; k < 128; ++k) {
      rows.push_back(raster->data() + 256 * k);
    }
    forward.run(rows.data(), rows.data(), 128, 128, 9, raster == &done ? nullptr : &meter);
  }
  EXPECT_EQ(meter.steps, 256);
  EXPECT_EQ(meter.wrong, 0);
}

TEST(Fft2d, CentredWithAnyOtherSwitchIsThePlainTransform) {
  check({"switch 0", false, false, fft_2d_new<0>}, TD_COMPLEX_FLOAT32, 20, 9);
  check({"switch 2", false, false, fft_2d_new<2>}, TD_COMPLEX_FLOAT32, 20, 9);
  check({"switch -1", false, false, fft_2d_new<-1>}, TD_COMPLEX_FLOAT32, 20, 9);
}

// Rows of a block begin half a row apart.
TEST(BlockFft, TransformsThroughRowsThatOverlapByHalf) {
  for (int side = 1; side <= 512; side *= 2) {
    const Layout layout = {-4 * side, false, false};
    check({"block", false, false, block<&CVeryFastFT::FFT_2D_Rect>, false}, 9, side, side, layout);
    check({"inverse block", true, false, block<&CVeryFastFT::IFFT_2D_Rect>, false}, 9, side, side,
          layout);
  }
}

TEST(BlockFft, ThrowsWhereTheTablesCannotBeHad) {
  for (const int exponent : {-1, -2147483647, 31, 32, 64, 2147483647}) {
    EXPECT_THROW(CVeryFastFT block(exponent), std::bad_alloc) << exponent;
  }
}

TEST(Raster2d, SizesAndTypesOutsideTheContractTouchNothing) {
  std::vector<float> values(64, 5.0F);
  std::vector<void*> rows(4, values.data());
  const auto run = [&rows](const Transform& transform, int width, int height, int type) {
    RecordingMeter meter;
    const int result = transform.run(rows.data(), rows.data(), width, height, type, &meter);
    return std::to_string(result) + meter.calls;
  };
  for (const auto& [width, height] : {std::pair{0, 4}, {4, 0}, {-1, 4}, {4, -2147483647}}) {
    EXPECT_EQ(run(forward, width, height, 7), "0");
    EXPECT_EQ(run(centred, width, height, 7), "1");
    EXPECT_EQ(run(inverse, width, height, 9), "0");
  }
  for (const auto& [width, height] : {std::pair{3, 4}, {4, 3}, {1000, 4}, {1 << 29, 1}}) {
    EXPECT_EQ(run(inverse, width, height, 9), "0");
  }
  for (const int type : {7, 8, 0, 11, 17, -1}) {
    EXPECT_EQ(run(inverse, 4, 4, type), std::string("1").append(expected_calls(8, 701, 0)));
  }
  EXPECT_EQ(values, std::vector<float>(64, 5.0F));
}

}  // namespace
