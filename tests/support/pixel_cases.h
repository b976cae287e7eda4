// The sixteen pixel types, read one element at a time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

struct PixelType {
  int code;
  std::size_t element_size;
  bool is_complex;
  bool is_unsigned;
  bool is_floating;
  double (*element)(const void* pixels, std::size_t i);

  std::size_t bytes() const { return element_size << is_complex; }
};

template <class Element>
double read_element(const void* pixels, std::size_t i) {
  Element value;
  std::memcpy(&value, static_cast<const unsigned char*>(pixels) + i * sizeof value, sizeof value);
  return static_cast<double>(value);
}

template <class Element>
constexpr PixelType pixel_type(int code, bool is_complex) {
  return {code,
          sizeof(Element),
          is_complex,
          Element(-1) > Element(0),
          Element(0.5) != Element(0),
          read_element<Element>};
}

/// In the order of their codes.
constexpr PixelType pixel_types[] = {
    pixel_type<std::uint8_t>(1, false),  pixel_type<std::int8_t>(2, false),
    pixel_type<std::uint16_t>(3, false), pixel_type<std::int16_t>(4, false),
    pixel_type<std::uint32_t>(5, false), pixel_type<std::int32_t>(6, false),
    pixel_type<float>(7, false),         pixel_type<double>(8, false),
    pixel_type<float>(9, true),          pixel_type<double>(10, true),
    pixel_type<std::uint8_t>(11, true),  pixel_type<std::int8_t>(12, true),
    pixel_type<std::uint16_t>(13, true), pixel_type<std::int16_t>(14, true),
    pixel_type<std::uint32_t>(15, true), pixel_type<std::int32_t>(16, true)};
