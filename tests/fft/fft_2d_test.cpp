// Two-dimensional transforms against rows-then-columns done plainly, one line after another in
// memory that may overlap.
#include <gtest/gtest.h>
#include <sarnum/sarnum.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <functional>
#include <iterator>
#include <new>
#include <random>
#include <string>
#include <vector>

#include "pixel_cases.h"
#include "plain_transform.h"

namespace {

/// Notes every call in order.
class RecordingMeter : public CMeterInfo {
 public:
  void SetRange(int lower, int upper) override {
    calls.push_back("range " + std::to_string(lower) + " " + std::to_string(upper));
  }
  int SetStep(int step) override {
    calls.push_back("step " + std::to_string(step));
    return 0;
  }
  void SetText(const char* text) override { calls.emplace_back(text); }
  void StepIt() override { calls.emplace_back("."); }
  void SetPos(int) override { calls.emplace_back("unexpected"); }
  int CancelMode() override {
    calls.emplace_back("unexpected");
    return 1;
  }

  std::vector<std::string> calls;
};

std::vector<std::string> expected_calls(int range, int label, int steps) {
  std::vector<std::string> calls = {"range 0 " + std::to_string(range), "step 1",
                                    std::string(GetResourceString(label)) + "..."};
  calls.insert(calls.end(), static_cast<std::size_t>(steps), ".");
  return calls;
}

/// Rows in one block of memory, `stride` bytes apart, downwards or upwards. What lies between and
/// around them are canaries; rows of odd lengths are unaligned.
struct Rows {
  Rows(std::size_t rows, std::size_t row_bytes, std::size_t row_stride, bool is_backwards)
      : count(rows),
        stride(row_stride),
        backwards(is_backwards),
        memory(rows * row_stride + row_bytes + 64, 0xA5) {}

  unsigned char* row(std::size_t k) {
    return memory.data() + 32 + (backwards ? count - 1 - k : k) * stride;
  }
  template <class Real>
  Real get(std::size_t k, std::size_t i) {
    Real value;
    std::memcpy(&value, row(k) + i * sizeof value, sizeof value);
    return value;
  }
  template <class Real>
  void set(std::size_t k, std::size_t i, Real value) {
    std::memcpy(row(k) + i * sizeof value, &value, sizeof value);
  }
  std::vector<void*> pointers() {
    std::vector<void*> all;
    for (std::size_t k = 0; k < count; ++k) {
      all.push_back(row(k));
    }
    return all;
  }

  std::size_t count;
  std::size_t stride;
  bool backwards;
  std::vector<unsigned char> memory;
};

void fill_bits(Rows& rows, std::size_t bytes, unsigned seed) {
  std::mt19937 engine(seed);
  for (std::size_t k = 0; k < rows.count; ++k) {
    std::generate_n(rows.row(k), bytes, [&] { return static_cast<unsigned char>(engine()); });
  }
}

/// Numbers in −1 … 1.
template <class Element>
void fill(Rows& rows, std::size_t values, unsigned seed) {
  std::mt19937 engine(seed);
  for (std::size_t k = 0; k < rows.count; ++k) {
    for (std::size_t i = 0; i < values; ++i) {
      rows.set(k, i, static_cast<Element>(std::ldexp(static_cast<double>(engine()), -31) - 1.0));
    }
  }
}

void fill_pixels(Rows& rows, const PixelType& type, std::size_t width, unsigned seed) {
  const std::size_t values = width << type.is_complex;
  if (!type.is_floating) {
    return fill_bits(rows, width * type.bytes(), seed);
  }
  type.element_size == sizeof(float) ? fill<float>(rows, values, seed)
                                     : fill<double>(rows, values, seed);
}

/// Codes without a loader: complex unsigned integers and those that are no type at all.
bool has_row_pass(const PixelType& type) {
  return !(type.is_complex && type.is_unsigned) && type.code >= 1 && type.code <= 16;
}

std::vector<PixelType> types_and_unknown_codes() {
  std::vector<PixelType> types(std::begin(pixel_types), std::end(pixel_types));
  types.push_back(pixel_type<float>(0, true));
  types.push_back(pixel_type<float>(17, true));
  return types;
}

constexpr const PixelType& complex_float = pixel_types[TD_COMPLEX_FLOAT32 - 1];

enum class Kind { forward, centred, inverse };

/// One line: transform → divide, in Real storage.
template <class Real>
void plain_line(std::vector<Real>& re, std::vector<Real>& im, Kind kind) {
  const int n = static_cast<int>(re.size());
  int m = 0;
  while (1 << m < n) {
    ++m;
  }
  if (kind == Kind::inverse) {
    oracle::radix2<double, double, float>(re.data(), im.data(), m, true);
    return;
  }
  if (kind == Kind::centred) {
    oracle::alternate_signs(re.data(), im.data(), n);
  }
  oracle::radix2<double, double, Real>(re.data(), im.data(), m, false);
  oracle::divide_by_length(re.data(), im.data(), n);
}

std::size_t padded(int size) {
  std::size_t power = 1;
  while (power < static_cast<std::size_t>(size)) {
    power *= 2;
  }
  return power;
}

template <class Real>
void plain_2d(Rows& src, Rows& dst, int width, int height, const PixelType& type, Kind kind) {
  std::vector<Real> re;
  std::vector<Real> im;
  for (std::size_t k = 0; has_row_pass(type) && k < dst.count; ++k) {
    re.assign(padded(width), Real{0});
    im.assign(padded(width), Real{0});
    if (k < static_cast<std::size_t>(height)) {
      for (std::size_t i = 0; i < static_cast<std::size_t>(width); ++i) {
        re[i] = static_cast<Real>(type.element(src.row(k), i << type.is_complex));
        im[i] = type.is_complex ? static_cast<Real>(type.element(src.row(k), 2 * i + 1)) : Real{0};
      }
      plain_line(re, im, kind);
    }
    for (std::size_t i = 0; i < re.size(); ++i) {
      dst.set(k, 2 * i, re[i]);
      dst.set(k, 2 * i + 1, im[i]);
    }
  }
  re.resize(dst.count);
  im.resize(dst.count);
  for (std::size_t column = 0; column < padded(width); ++column) {
    for (std::size_t k = 0; k < dst.count; ++k) {
      re[k] = dst.get<Real>(k, 2 * column);
      im[k] = dst.get<Real>(k, 2 * column + 1);
    }
    plain_line(re, im, kind);
    for (std::size_t k = 0; k < dst.count; ++k) {
      dst.set(k, 2 * column, re[k]);
      dst.set(k, 2 * column + 1, im[k]);
    }
  }
}

/// Everything that was written, canaries included. A zero may differ in sign.
template <class Real>
void expect_same(Rows actual, Rows expected, std::size_t values) {
  for (Rows* const rows : {&actual, &expected}) {
    for (std::size_t k = 0; k < rows->count; ++k) {
      for (std::size_t i = 0; i < values; ++i) {
        rows->set(k, i, rows->get<Real>(k, i) + Real{0});
      }
    }
  }
  EXPECT_TRUE(actual.memory == expected.memory);
}

using Run = std::function<int(void** src, void** dst, CMeterInfo* meter)>;

Run member_run(const PixelType& type, int width, int height, Kind kind) {
  return [=](void** src, void** dst, CMeterInfo* meter) {
    CFFTClass object;
    switch (kind) {
      case Kind::forward:
        return object.FFT_2D(src, dst, width, height, type.code, meter);
      case Kind::centred:
        return object.FFT_2D_NEW(src, dst, width, height, type.code, 1, meter);
      default:
        return object.IFFT_2D(src, dst, width, height, type.code, meter);
    }
  };
}

/// How the rows of both rasters lie: `gap` bytes after each, less than none where rows overlap.
struct Layout {
  std::ptrdiff_t gap = 13;
  bool backwards = true;
  bool in_place = false;
};

/// Compares a transform, with and without a meter, with the plain one.
template <class Real>
void check(const PixelType& type, int width, int height, Kind kind, const Layout& layout,
           const Run& run, bool has_meter = true) {
  SCOPED_TRACE(testing::Message() << "type " << type.code << " kind " << static_cast<int>(kind)
                                  << ", " << width << " x " << height << ", gap " << layout.gap
                                  << (layout.backwards ? " backwards" : "")
                                  << (layout.in_place ? " in place" : ""));
  const auto stride = [&layout](std::size_t bytes) {
    return static_cast<std::size_t>(static_cast<std::ptrdiff_t>(bytes) + layout.gap);
  };
  const std::size_t src_bytes = static_cast<std::size_t>(width) * type.bytes();
  const std::size_t dst_values = 2 * padded(width);
  const std::size_t dst_bytes = dst_values * sizeof(Real);
  Rows src(static_cast<std::size_t>(height), src_bytes, stride(src_bytes), layout.backwards);
  fill_pixels(src, type, static_cast<std::size_t>(width), 3);
  Rows dst(padded(height), dst_bytes, stride(dst_bytes), layout.backwards);
  fill<Real>(dst, dst_values, 4);
  if (layout.in_place && has_row_pass(type)) {
    fill_pixels(dst, type, static_cast<std::size_t>(width), 5);
  }
  Rows expected = dst;
  Rows kept = src;
  plain_2d<Real>(layout.in_place ? expected : src, expected, width, height, type, kind);

  RecordingMeter meter;
  Rows silent = dst;
  const auto run_on = [&](Rows& rows, CMeterInfo* with) {
    auto pointers = rows.pointers();
    EXPECT_EQ(run((layout.in_place ? rows : src).pointers().data(), pointers.data(), with), 1);
  };
  run_on(dst, &meter);
  run_on(silent, nullptr);
  expect_same<Real>(dst, expected, dst_values);
  EXPECT_TRUE(dst.memory == silent.memory);
  EXPECT_TRUE(src.memory == kept.memory);
  if (has_meter) {
    const std::size_t total = padded(width) + padded(height);
    const std::size_t steps = has_row_pass(type) ? total : padded(width);
    EXPECT_EQ(meter.calls,
              expected_calls(static_cast<int>(total), kind == Kind::inverse ? 701 : 700,
                             static_cast<int>(steps)));
  }
}

void check_member(const PixelType& type, int width, int height, Kind kind, const Layout& layout) {
  const Run run = member_run(type, width, height, kind);
  if (type.code == TD_FLOAT64 || type.code == TD_COMPLEX_FLOAT64) {
    check<double>(type, width, height, kind, layout, run);
  } else {
    check<float>(type, width, height, kind, layout, run);
  }
}

TEST(Fft2d, EqualsRowsThenColumnsForEveryType) {
  for (const PixelType& type : types_and_unknown_codes()) {
    for (const auto& [width, height] : {std::pair{1, 1}, {1, 5}, {20, 1}, {16, 8}, {33, 20}}) {
      for (const bool in_place : {false, true}) {
        check_member(type, width, height, Kind::forward, {.in_place = in_place});
        check_member(type, width, height, Kind::centred, {.in_place = in_place});
      }
    }
  }
}

TEST(Ifft2d, EqualsRowsThenColumns) {
  for (const int code : {TD_COMPLEX_FLOAT32, TD_COMPLEX_FLOAT64}) {
    for (const auto& [width, height] : {std::pair{1, 1}, {1, 8}, {32, 4}, {16, 16}}) {
      check_member(pixel_types[code - 1], width, height, Kind::inverse, {});
    }
  }
}

TEST(Fft2d, OverlappingRowsGiveTheResultOfOneLineAfterAnother) {
  constexpr int side = 16;
  constexpr std::ptrdiff_t row_bytes = side * sizeof(COMPLEX_FLOAT32);
  for (const Kind kind : {Kind::forward, Kind::inverse}) {
    for (const std::ptrdiff_t distance :
         {std::ptrdiff_t{0}, std::ptrdiff_t{4}, row_bytes / 2, row_bytes - 8}) {
      for (const int how : {0, 1, 2, 3}) {
        check_member(complex_float, side, side, kind,
                     {distance - row_bytes, (how & 1) != 0, (how & 2) != 0});
      }
    }
  }
}

TEST(Fft2d, CentredWithAnyOtherSwitchIsThePlainTransform) {
  for (const int centre : {0, 2, -1}) {
    check<float>(complex_float, 20, 9, Kind::forward, {},
                 [centre](void** src, void** dst, CMeterInfo* meter) {
                   return CFFTClass().FFT_2D_NEW(src, dst, 20, 9, 9, centre, meter);
                 });
  }
}

// Rows of a block begin half a row apart.
TEST(BlockFft, TransformsThroughRowsThatOverlapByHalf) {
  for (int exponent = 0; exponent <= 9; ++exponent) {
    const int side = 1 << exponent;
    CVeryFastFT block(exponent);
    EXPECT_EQ(block.AllocateDataMemory(), 1);
    for (const Kind kind : {Kind::forward, Kind::inverse}) {
      check<float>(
          complex_float, side, side, kind, {-4 * side, false, false},
          [&](void** src, void** dst, CMeterInfo*) {
            auto* const from = static_cast<float*>(src[0]);
            auto* const to = static_cast<float*>(dst[0]);
            return kind == Kind::inverse ? block.IFFT_2D_Rect(from, to)
                                         : block.FFT_2D_Rect(from, to);
          },
          false);
    }
    block.FreeDataMemory();
    EXPECT_EQ(block.exponent, exponent);
    EXPECT_EQ(block.size, side);
  }
}

TEST(BlockFft, AssignmentSharesTheTables) {
  // Neither may destroy what they share, so the one that gives up its tables is never destroyed.
  alignas(CVeryFastFT) unsigned char storage[sizeof(CVeryFastFT)];
  auto* const first = new (storage) CVeryFastFT(1);
  delete[] first->sourceRows;
  delete[] first->destinationRows;
  const CVeryFastFT second(3);
  EXPECT_EQ(&(*first = second), first);
  EXPECT_EQ(first->size, 8);
  EXPECT_EQ(first->sourceRows, second.sourceRows);
  EXPECT_EQ(first->destinationRows, second.destinationRows);
}

TEST(BlockFft, ThrowsWhereTheTablesCannotBeHad) {
  for (const int exponent : {-1, -2147483647, 31, 32, 64, 2147483647}) {
    EXPECT_THROW(CVeryFastFT block(exponent), std::bad_alloc) << exponent;
  }
}

TEST(Raster2d, SizesAndTypesOutsideTheContractTouchNothing) {
  std::vector<float> values(64, 5.0F);
  std::vector<void*> rows(4, values.data());
  RecordingMeter meter;
  CFFTClass transform;
  for (const auto& [width, height] : {std::pair{0, 4}, {4, 0}, {-1, 4}, {4, -2147483647}}) {
    EXPECT_EQ(transform.FFT_2D(rows.data(), rows.data(), width, height, 7, &meter), 0);
    EXPECT_EQ(transform.FFT_2D_NEW(rows.data(), rows.data(), width, height, 7, 1, &meter), 1);
    EXPECT_EQ(transform.IFFT_2D(rows.data(), rows.data(), width, height, 9, &meter), 0);
  }
  for (const auto& [width, height] : {std::pair{3, 4}, {4, 3}, {1000, 4}, {1 << 29, 1}}) {
    EXPECT_EQ(transform.IFFT_2D(rows.data(), rows.data(), width, height, 9, &meter), 0);
  }
  EXPECT_TRUE(meter.calls.empty());
  for (const int type : {7, 8, 0, 11, 17, -1}) {
    meter.calls.clear();
    EXPECT_EQ(transform.IFFT_2D(rows.data(), rows.data(), 4, 4, type, &meter), 1);
    EXPECT_EQ(meter.calls, expected_calls(8, 701, 0));
  }
  EXPECT_EQ(values, std::vector<float>(64, 5.0F));
}

}  // namespace
