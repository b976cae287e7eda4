// Two-dimensional transforms against rows-then-columns done plainly, one line after another in
// memory that may overlap.
#include <gtest/gtest.h>
#include <sarnum/sarnum.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <new>
#include <random>
#include <string>
#include <vector>

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

constexpr unsigned char canary = 0xA5;

/// Rows in separate places of one block of memory, `stride` bytes apart, in any order, with
/// canaries around each that does not meet its neighbour.
struct Rows {
  Rows(std::size_t count, std::size_t row_bytes, std::size_t row_stride, bool backwards = false)
      : bytes(row_bytes), stride(row_stride), memory(count * row_stride + row_bytes + 64, canary) {
    for (std::size_t row = 0; row < count; ++row) {
      pointers.push_back(memory.data() + 32 + (backwards ? count - 1 - row : row) * stride);
    }
  }

  /// The same content elsewhere.
  Rows(const Rows& other) : bytes(other.bytes), stride(other.stride), memory(other.memory) {
    for (void* const row : other.pointers) {
      pointers.push_back(memory.data() + (static_cast<unsigned char*>(row) - other.memory.data()));
    }
  }
  Rows& operator=(const Rows&) = delete;

  template <class Real>
  Real get(std::size_t row, std::size_t i) const {
    Real value;
    std::memcpy(&value, static_cast<unsigned char*>(pointers[row]) + i * sizeof(Real),
                sizeof(Real));
    return value;
  }
  template <class Real>
  void set(std::size_t row, std::size_t i, Real value) {
    std::memcpy(static_cast<unsigned char*>(pointers[row]) + i * sizeof(Real), &value,
                sizeof(Real));
  }

  std::size_t bytes;
  std::size_t stride;
  std::vector<unsigned char> memory;
  std::vector<void*> pointers;
};

int padded(int n) {
  int power = 1;
  while (power < n) {
    power *= 2;
  }
  return power;
}

int exponent(int power) {
  int m = 0;
  while ((1 << m) < power) {
    ++m;
  }
  return m;
}

struct TypeCase {
  int type;
  int element_size;
  bool is_complex;
  bool has_row_pass;
  double (*element)(const void* row, std::size_t i);
};

template <class Element>
double element(const void* row, std::size_t i) {
  Element value;
  std::memcpy(&value, static_cast<const unsigned char*>(row) + i * sizeof value, sizeof value);
  return static_cast<double>(value);
}

template <class Element>
TypeCase type_case(int type, bool is_complex, bool has_row_pass = true) {
  return {type, sizeof(Element), is_complex, has_row_pass, element<Element>};
}

std::vector<TypeCase> all_types() {
  return {type_case<std::uint8_t>(1, false),
          type_case<std::int8_t>(2, false),
          type_case<std::uint16_t>(3, false),
          type_case<std::int16_t>(4, false),
          type_case<std::uint32_t>(5, false),
          type_case<std::int32_t>(6, false),
          type_case<float>(7, false),
          type_case<double>(8, false),
          type_case<float>(9, true),
          type_case<double>(10, true),
          type_case<std::uint8_t>(11, true, false),
          type_case<std::int8_t>(12, true),
          type_case<std::uint16_t>(13, true, false),
          type_case<std::int16_t>(14, true),
          type_case<std::uint32_t>(15, true, false),
          type_case<std::int32_t>(16, true),
          type_case<float>(0, true, false),
          type_case<float>(17, true, false)};
}

enum class Kind { forward, centred, inverse };

/// One line: load → transform → divide → store, all in Real storage.
template <class Real>
void plain_line(std::vector<Real>& re, std::vector<Real>& im, Kind kind) {
  const int n = static_cast<int>(re.size());
  if (kind == Kind::inverse) {
    oracle::radix2<double, double, float>(re.data(), im.data(), exponent(n), true);
    return;
  }
  if (kind == Kind::centred) {
    oracle::alternate_signs(re.data(), im.data(), n);
  }
  oracle::radix2<double, double, Real>(re.data(), im.data(), exponent(n), false);
  oracle::divide_by_length(re.data(), im.data(), n);
}

template <class Real>
void plain_2d(const Rows& src, Rows& dst, int width, int height, const TypeCase& type, Kind kind) {
  const auto n1 = static_cast<std::size_t>(padded(width));
  const auto n2 = static_cast<std::size_t>(padded(height));
  std::vector<Real> re;
  std::vector<Real> im;
  for (std::size_t row = 0; type.has_row_pass && row < n2; ++row) {
    re.assign(n1, Real{0});
    im.assign(n1, Real{0});
    if (row < static_cast<std::size_t>(height)) {
      for (std::size_t i = 0; i < static_cast<std::size_t>(width); ++i) {
        const void* const pixels = src.pointers[row];
        re[i] = static_cast<Real>(type.element(pixels, type.is_complex ? 2 * i : i));
        im[i] = type.is_complex ? static_cast<Real>(type.element(pixels, 2 * i + 1)) : Real{0};
      }
      plain_line(re, im, kind);
    }
    for (std::size_t i = 0; i < n1; ++i) {
      dst.set(row, 2 * i, re[i]);
      dst.set(row, 2 * i + 1, im[i]);
    }
  }
  re.resize(n2);
  im.resize(n2);
  for (std::size_t column = 0; column < n1; ++column) {
    for (std::size_t row = 0; row < n2; ++row) {
      re[row] = dst.get<Real>(row, 2 * column);
      im[row] = dst.get<Real>(row, 2 * column + 1);
    }
    plain_line(re, im, kind);
    for (std::size_t row = 0; row < n2; ++row) {
      dst.set(row, 2 * column, re[row]);
      dst.set(row, 2 * column + 1, im[row]);
    }
  }
}

template <class Real>
void fill(Rows& rows, std::size_t values, unsigned seed) {
  std::mt19937 engine(seed);
  std::uniform_real_distribution<Real> distribution(Real{-1}, Real{1});
  for (std::size_t row = 0; row < rows.pointers.size(); ++row) {
    for (std::size_t i = 0; i < values; ++i) {
      rows.set(row, i, distribution(engine));
    }
  }
}

/// Random pixels of a type: real numbers for the floating types, any bits for integers.
void fill_pixels(Rows& rows, const TypeCase& type, int width, unsigned seed) {
  const auto values = static_cast<std::size_t>(width) * (type.is_complex ? 2 : 1);
  if (type.type == TD_FLOAT32 || type.type == TD_COMPLEX_FLOAT32) {
    return fill<float>(rows, values, seed);
  }
  if (type.type == TD_FLOAT64 || type.type == TD_COMPLEX_FLOAT64) {
    return fill<double>(rows, values, seed);
  }
  std::mt19937 engine(seed);
  for (void* const row : rows.pointers) {
    for (std::size_t i = 0; i < rows.bytes; ++i) {
      static_cast<unsigned char*>(row)[i] = static_cast<unsigned char>(engine());
    }
  }
}

/// Everything that was written, canaries included; == on numbers, since a zero may differ in sign.
template <class Real>
void expect_same(const Rows& actual, const Rows& expected, std::size_t values) {
  Rows a = actual;
  Rows b = expected;
  for (std::size_t row = 0; row < a.pointers.size(); ++row) {
    for (std::size_t i = 0; i < values; ++i) {
      ASSERT_EQ(a.get<Real>(row, i), b.get<Real>(row, i)) << "row " << row << " value " << i;
    }
  }
  for (std::size_t row = 0; row < a.pointers.size(); ++row) {
    for (std::size_t i = 0; i < values; ++i) {
      a.set(row, i, Real{0});
      b.set(row, i, Real{0});
    }
  }
  EXPECT_EQ(a.memory, b.memory) << "something beside the rows was written";
}

template <class Real>
void check_forward(const TypeCase& type, int width, int height) {
  SCOPED_TRACE("type " + std::to_string(type.type) + ", " + std::to_string(width) + " x " +
               std::to_string(height));
  const auto n1 = static_cast<std::size_t>(padded(width));
  const auto n2 = static_cast<std::size_t>(padded(height));
  const auto pixel_size = static_cast<std::size_t>(type.element_size * (type.is_complex ? 2 : 1));
  const std::size_t src_bytes = static_cast<std::size_t>(width) * pixel_size;
  Rows src(static_cast<std::size_t>(height), src_bytes, src_bytes + 13, true);
  fill_pixels(src, type, width, 3);
  const std::size_t dst_bytes = n1 * 2 * sizeof(Real);
  Rows dst(n2, dst_bytes, dst_bytes + 40, true);
  fill<Real>(dst, 2 * n1, 4);
  const Rows initial = dst;
  Rows expected = dst;
  const Rows src_before = src;
  Rows centred = dst;
  Rows expected_centred = dst;
  plain_2d<Real>(src, expected, width, height, type, Kind::forward);
  plain_2d<Real>(src, expected_centred, width, height, type, Kind::centred);

  RecordingMeter meter;
  Rows silent = dst;
  CFFTClass transform;
  EXPECT_EQ(
      transform.FFT_2D(src.pointers.data(), dst.pointers.data(), width, height, type.type, &meter),
      1);
  EXPECT_EQ(transform.FFT_2D(src.pointers.data(), silent.pointers.data(), width, height, type.type,
                             nullptr),
            1);
  expect_same<Real>(dst, expected, 2 * n1);
  EXPECT_EQ(dst.memory, silent.memory);
  EXPECT_EQ(src.memory, src_before.memory);
  const int steps = static_cast<int>(n1 + (type.has_row_pass ? n2 : 0));
  EXPECT_EQ(meter.calls, expected_calls(static_cast<int>(n1 + n2), 700, steps));

  RecordingMeter centred_meter;
  EXPECT_EQ(transform.FFT_2D_NEW(src.pointers.data(), centred.pointers.data(), width, height,
                                 type.type, 1, &centred_meter),
            1);
  expect_same<Real>(centred, expected_centred, 2 * n1);
  EXPECT_EQ(centred_meter.calls, meter.calls);
  for (const int centre : {0, 2, -1}) {
    Rows plain = initial;
    EXPECT_EQ(transform.FFT_2D_NEW(src.pointers.data(), plain.pointers.data(), width, height,
                                   type.type, centre, nullptr),
              1);
    EXPECT_EQ(plain.memory, dst.memory);
  }
}

TEST(Fft2d, EqualsRowsThenColumnsForEveryType) {
  for (const TypeCase& type : all_types()) {
    for (const auto& [width, height] : {std::pair{1, 1}, {1, 5}, {20, 1}, {16, 8}, {33, 20}}) {
      if (type.type == TD_FLOAT64 || type.type == TD_COMPLEX_FLOAT64) {
        check_forward<double>(type, width, height);
      } else {
        check_forward<float>(type, width, height);
      }
    }
  }
}

template <class Real>
void check_inverse(int type, int width, int height) {
  const TypeCase pixel = type_case<Real>(type, true);
  const auto values = static_cast<std::size_t>(2 * width);
  Rows src(static_cast<std::size_t>(height), values * sizeof(Real), values * sizeof(Real) + 8);
  fill<Real>(src, values, 8);
  Rows dst(static_cast<std::size_t>(height), values * sizeof(Real), values * sizeof(Real) + 24);
  Rows expected = dst;
  plain_2d<Real>(src, expected, width, height, pixel, Kind::inverse);
  RecordingMeter meter;
  EXPECT_EQ(
      CFFTClass().IFFT_2D(src.pointers.data(), dst.pointers.data(), width, height, type, &meter),
      1);
  expect_same<Real>(dst, expected, values);
  EXPECT_EQ(meter.calls, expected_calls(width + height, 701, width + height));
}

TEST(Ifft2d, EqualsRowsThenColumns) {
  for (const auto& [width, height] : {std::pair{1, 1}, {1, 8}, {32, 4}, {16, 16}}) {
    check_inverse<float>(TD_COMPLEX_FLOAT32, width, height);
    check_inverse<double>(TD_COMPLEX_FLOAT64, width, height);
  }
}

// Rows that share memory: every combination of row distance and direction, for output rows among
// themselves and for input and output rows on the same memory.
TEST(Fft2d, OverlappingRowsGiveTheResultOfOneLineAfterAnother) {
  constexpr int side = 16;
  constexpr std::size_t row_bytes = side * sizeof(COMPLEX_FLOAT32);
  const TypeCase type = type_case<float>(TD_COMPLEX_FLOAT32, true);
  for (const bool inverse : {false, true}) {
    for (const bool backwards : {false, true}) {
      for (const std::size_t stride : {std::size_t{0}, sizeof(float), row_bytes / 2 - 4,
                                       row_bytes / 2, row_bytes - 8, row_bytes}) {
        for (const bool in_place : {false, true}) {
          SCOPED_TRACE(testing::Message() << "inverse " << inverse << " backwards " << backwards
                                          << " stride " << stride << " in place " << in_place);
          Rows src(side, row_bytes, stride, backwards);
          fill<float>(src, 2 * side, 9);
          Rows dst = src;
          Rows expected = src;
          plain_2d<float>(in_place ? expected : src, expected, side, side, type,
                          inverse ? Kind::inverse : Kind::forward);
          void** const from = in_place ? dst.pointers.data() : src.pointers.data();
          CFFTClass transform;
          EXPECT_EQ(inverse ? transform.IFFT_2D(from, dst.pointers.data(), side, side, 9, nullptr)
                            : transform.FFT_2D(from, dst.pointers.data(), side, side, 9, nullptr),
                    1);
          expect_same<float>(dst, expected, 2 * side);
        }
      }
    }
  }
}

// Rows of a block begin half a row apart; the plain model applies the same order of lines to the
// same overlapping memory.
TEST(BlockFft, TransformsThroughRowsThatOverlapByHalf) {
  const TypeCase type = type_case<float>(TD_COMPLEX_FLOAT32, true);
  for (int exponent = 0; exponent <= 9; ++exponent) {
    const auto side = std::size_t{1} << exponent;
    CVeryFastFT block(exponent);
    EXPECT_EQ(block.exponent, exponent);
    EXPECT_EQ(block.size, static_cast<int>(side));
    EXPECT_EQ(block.AllocateDataMemory(), 1);
    for (const Kind kind : {Kind::forward, Kind::inverse}) {
      SCOPED_TRACE(testing::Message() << "side " << side << " inverse " << (kind == Kind::inverse));
      Rows src(side, 2 * side * sizeof(float), side * sizeof(float));
      fill<float>(src, 2 * side, 10);
      Rows dst = src;
      fill<float>(dst, 2 * side, 11);
      Rows expected = dst;
      const Rows src_before = src;
      plain_2d<float>(src, expected, static_cast<int>(side), static_cast<int>(side), type, kind);
      auto* const from = static_cast<float*>(src.pointers[0]);
      auto* const to = static_cast<float*>(dst.pointers[0]);
      EXPECT_EQ(kind == Kind::inverse ? block.IFFT_2D_Rect(from, to) : block.FFT_2D_Rect(from, to),
                1);
      expect_same<float>(dst, expected, 2 * side);
      EXPECT_EQ(src.memory, src_before.memory);
      EXPECT_EQ(block.sourceRows[side - 1], from + side * (side - 1));
      EXPECT_EQ(block.destinationRows[side - 1], to + side * (side - 1));
    }
    block.FreeDataMemory();
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
  EXPECT_EQ(first->exponent, 3);
  EXPECT_EQ(first->size, 8);
  EXPECT_EQ(first->sourceRows, second.sourceRows);
  EXPECT_EQ(first->destinationRows, second.destinationRows);
}

TEST(BlockFft, ThrowsWhereTheTablesCannotBeHad) {
  for (const int exponent : {-1, -2147483647, 31, 32, 64, 2147483647}) {
    EXPECT_THROW(CVeryFastFT block(exponent), std::bad_alloc) << exponent;
  }
}

TEST(Ifft2d, RefusesOtherSizesAndIgnoresOtherTypes) {
  std::vector<float> values(64, 5.0F);
  std::vector<void*> rows(4, values.data());
  RecordingMeter meter;
  CFFTClass transform;
  for (const auto& [width, height] :
       {std::pair{3, 4}, {4, 3}, {1000, 4}, {0, 4}, {4, -4}, {1 << 29, 1}}) {
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

TEST(Fft2d, SizesOutsideTheContractTouchNothing) {
  std::vector<float> values(64, 5.0F);
  std::vector<void*> rows(4, values.data());
  RecordingMeter meter;
  for (const auto& [width, height] : {std::pair{0, 4}, {4, 0}, {-1, 4}, {4, -2147483647}}) {
    EXPECT_EQ(CFFTClass().FFT_2D(rows.data(), rows.data(), width, height, 7, &meter), 0);
  }
  EXPECT_TRUE(meter.calls.empty());
  EXPECT_EQ(values, std::vector<float>(64, 5.0F));
}

TEST(Fft2d, BringsAConstantToTheOriginAndBack) {
  constexpr int side = 32;
  std::vector<std::uint8_t> pixels(side * side, 200);
  std::vector<COMPLEX_FLOAT32> spectrum(side * side);
  std::vector<void*> src;
  std::vector<void*> dst;
  for (int row = 0; row < side; ++row) {
    src.push_back(pixels.data() + row * side);
    dst.push_back(spectrum.data() + row * side);
  }
  CFFTClass transform;
  transform.FFT_2D(src.data(), dst.data(), side, side, TD_UINT8, nullptr);
  EXPECT_EQ(spectrum[0].re, 200.0F);
  for (std::size_t i = 1; i < spectrum.size(); ++i) {
    EXPECT_EQ(std::hypot(spectrum[i].re, spectrum[i].im), 0.0F);
  }
  transform.IFFT_2D(dst.data(), dst.data(), side, side, TD_COMPLEX_FLOAT32, nullptr);
  for (const COMPLEX_FLOAT32& pixel : spectrum) {
    EXPECT_EQ(pixel.re, 200.0F);
    EXPECT_EQ(pixel.im, 0.0F);
  }
}

}  // namespace
