// Headers come from many programs and by hand: words are compared without regard to case and
// spaces, what is not needed for finding the samples is skipped, and nothing is taken on trust.
#include "host/standalone/envi_header.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cstring>
#include <limits>
#include <map>

namespace sarnum::host {

namespace {

using Entries = std::map<std::string, std::string>;

template <class Sample>
void convert_samples(const unsigned char* from, std::uint64_t stride, bool swapped, float* to,
                     int count) {
  for (int i = 0; i < count; ++i, from += stride) {
    std::array<unsigned char, sizeof(Sample)> bytes;
    std::memcpy(bytes.data(), from, bytes.size());
    if (swapped) {
      std::reverse(bytes.begin(), bytes.end());
    }
    to[i] = static_cast<float>(std::bit_cast<Sample>(bytes));
  }
}

template <class Sample>
constexpr EnviSampleType sample_type(int code) {
  return {code, sizeof(Sample), false, convert_samples<Sample>};
}

constexpr EnviSampleType sample_types[] = {
    sample_type<std::uint8_t>(1),  sample_type<std::int16_t>(2),   sample_type<std::int32_t>(3),
    sample_type<float>(4),         sample_type<double>(5),         {6, 8, true, nullptr},
    {9, 16, true, nullptr},        sample_type<std::uint16_t>(12), sample_type<std::uint32_t>(13),
    sample_type<std::int64_t>(14), sample_type<std::uint64_t>(15)};

constexpr bool is_big_endian = std::endian::native == std::endian::big;

/// In lower case, without spaces at the ends, and one where there are some.
std::string plain_words(const std::string& text) {
  std::string words;
  for (const char c : text) {
    const bool is_space = static_cast<unsigned char>(c) <= ' ';
    if (!is_space) {
      words += c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    } else if (!words.empty() && words.back() != ' ') {
      words += ' ';
    }
  }
  if (!words.empty() && words.back() == ' ') {
    words.pop_back();
  }
  return words;
}

/// Lines of the form "word = value", where a value in braces goes on to the closing one.
std::string read_entries(const std::string& text, Entries& entries) {
  std::size_t end = text.find('\n');
  if (plain_words(text.substr(0, end)) != "envi") {
    return "it does not begin with ENVI";
  }
  while (end != std::string::npos) {
    const std::size_t begin = end + 1;
    end = text.find('\n', begin);
    std::string value = text.substr(begin, end == std::string::npos ? end : end - begin);
    const std::size_t equals = value.find('=');
    if (value.starts_with(';') || equals == std::string::npos) {
      continue;
    }
    const std::string name = plain_words(value.substr(0, equals));
    value = plain_words(value.substr(equals + 1));
    if (value.starts_with('{') && value.find('}') == std::string::npos) {
      const std::size_t closing = text.find('}', end);
      if (end == std::string::npos || closing == std::string::npos) {
        return "a list in braces does not end";
      }
      value += text.substr(end, closing - end);
      end = text.find('\n', closing);
    }
    entries[name] = value;
  }
  return {};
}

/// Integers with their bounds, taken one after another until one of them is not lawful.
class Numbers {
 public:
  explicit Numbers(const Entries& entries) : entries_(entries) {}

  std::int64_t take(const char* name, const char* if_absent, std::int64_t least,
                    std::int64_t greatest) {
    const auto entry = entries_.find(name);
    const std::string text = entry != entries_.end() ? entry->second : if_absent;
    std::int64_t value = 0;
    const auto [rest, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    const bool is_lawful = error == std::errc() && rest == text.data() + text.size() &&
                           value >= least && value <= greatest;
    if (!is_lawful && complaint_.empty()) {
      complaint_ = text.empty() ? std::string("it does not say '") + name + "'"
                                : std::string("it says ") + name + " = " + text;
    }
    return is_lawful ? value : least;
  }

  const std::string& complaint() const { return complaint_; }

 private:
  const Entries& entries_;
  std::string complaint_;
};

}  // namespace

bool EnviHeader::fits(std::uint64_t bytes) const {
  // Divided down, because the product of what a header says may be any size.
  return first <= bytes && static_cast<std::uint64_t>(width) <=
                               (bytes - first) / type->bytes / static_cast<std::uint64_t>(bands) /
                                   static_cast<std::uint64_t>(height);
}

std::string parse_envi_header(const std::string& text, EnviHeader& header) {
  Entries entries;
  if (std::string complaint = read_entries(text, entries); !complaint.empty()) {
    return complaint;
  }
  constexpr std::int64_t most = std::numeric_limits<int>::max();
  Numbers numbers(entries);
  header.width = static_cast<int>(numbers.take("samples", "", 1, most));
  header.height = static_cast<int>(numbers.take("lines", "", 1, most));
  header.bands = static_cast<int>(numbers.take("bands", "1", 1, most));
  header.first = static_cast<std::uint64_t>(
      numbers.take("header offset", "0", 0, std::numeric_limits<std::int64_t>::max()));
  const std::int64_t code = numbers.take("data type", "", 1, 15);
  header.swapped = (numbers.take("byte order", "0", 0, 1) == 1) != is_big_endian;
  numbers.take("file compression", "0", 0, 0);
  if (!numbers.complaint().empty()) {
    return numbers.complaint();
  }
  header.type = std::find_if(std::begin(sample_types), std::end(sample_types),
                             [&](const EnviSampleType& type) { return type.code == code; });
  if (header.type == std::end(sample_types)) {
    return "it says data type = " + std::to_string(code);
  }
  if (header.type->is_complex) {
    return "its pixels are complex; make a real raster of it first";
  }
  // Such headers lie beside files of other formats too, whose samples are not flat.
  if (entries.contains("file type") && !entries["file type"].starts_with("envi")) {
    return "it says file type = " + entries["file type"];
  }
  for (const char* const name : {"major frame offsets", "minor frame offsets"}) {
    if (entries[name].find_first_of("123456789") != std::string::npos) {
      return std::string("it has ") + name + ", which are not known here";
    }
  }

  const std::uint64_t sample = header.type->bytes;
  const auto bands = static_cast<std::uint64_t>(header.bands);
  const std::string interleave = entries.contains("interleave") ? entries["interleave"] : "bsq";
  if (interleave != "bsq" && interleave != "bil" && interleave != "bip") {
    return "it says interleave = " + interleave;
  }
  header.pixel_stride = sample * (interleave == "bip" ? bands : 1);
  header.line_stride =
      sample * static_cast<std::uint64_t>(header.width) * (interleave == "bsq" ? 1 : bands);
  return {};
}

std::string envi_header_text(int width, int height) {
  return "ENVI\nsamples = " + std::to_string(width) + "\nlines = " + std::to_string(height) +
         "\nbands = 1\nheader offset = 0\nfile type = ENVI Standard\ndata type = 4\n"
         "interleave = bsq\nbyte order = " +
         (is_big_endian ? "1\n" : "0\n");
}

}  // namespace sarnum::host
