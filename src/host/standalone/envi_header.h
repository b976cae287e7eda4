// The text beside a raster of flat samples that says how they lie, as ENVI writes it.
#ifndef SARNUM_SRC_HOST_STANDALONE_ENVI_HEADER_H
#define SARNUM_SRC_HOST_STANDALONE_ENVI_HEADER_H

#include <cstdint>
#include <string>

namespace sarnum::host {

/// A type of sample: how many bytes it takes, and how samples become floats.
struct EnviSampleType {
  int code;  ///< what a header calls it
  unsigned bytes;
  bool is_complex;
  /// Converts `count` samples that lie `stride` bytes apart.
  void (*convert)(const unsigned char* from, std::uint64_t stride, bool swapped, float* to,
                  int count);
};

/// Where the samples of the first band lie; positions and strides in bytes.
struct EnviHeader {
  int width = 0;
  int height = 0;
  int bands = 1;
  std::uint64_t first = 0;
  std::uint64_t pixel_stride = 0;
  std::uint64_t line_stride = 0;
  const EnviSampleType* type = nullptr;
  bool swapped = false;  ///< the bytes of a sample stand in the other order than this machine's

  /// Whether a file of so many bytes holds the samples of all bands.
  bool fits(std::uint64_t bytes) const;
  /// Whether it holds nothing else.
  bool fills(std::uint64_t bytes) const { return fits(bytes) && !fits(bytes - 1); }
};

/// Reads a header; its strides are right where it fits a file.
/// @return why it cannot be understood, or the empty string.
std::string parse_envi_header(const std::string& text, EnviHeader& header);

/// The header of one band of floats as this machine stores them.
std::string envi_header_text(int width, int height);

}  // namespace sarnum::host

#endif
