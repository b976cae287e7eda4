#include "json.h"

#include <cpl_conv.h>
#include <cpl_string.h>

#include <array>
#include <charconv>
#include <cmath>
#include <memory>

namespace sarnum::tool {
namespace {

std::string in_utf8(const std::string& text) {
  if (CPLIsUTF8(text.c_str(), static_cast<int>(text.size())) != 0) {
    return text;
  }
  const std::unique_ptr<char, decltype(&VSIFree)> recoded(
      CPLRecode(text.c_str(), CPL_ENC_ISO8859_1, CPL_ENC_UTF8), VSIFree);
  return recoded.get();
}

std::string quoted(const std::string& text) {
  std::string result(1, '"');
  for (const char c : in_utf8(text)) {
    if (static_cast<unsigned char>(c) < 0x20) {
      result += CPLString().Printf("\\u%04x", static_cast<unsigned>(c));
      continue;
    }
    if (c == '"' || c == '\\') {
      result += '\\';
    }
    result += c;
  }
  return result + '"';
}

}  // namespace

void JsonObject::add(std::string_view name, std::string_view value) {
  members_.push_back(quoted(std::string(name)).append(": ").append(value));
}

void JsonObject::add_text(std::string_view name, const std::string& value) {
  add(name, quoted(value));
}

void JsonObject::add_integer(std::string_view name, std::int64_t value) {
  add(name, std::to_string(value));
}

void JsonObject::add_number(std::string_view name, std::optional<double> value) {
  if (!value) {
    add(name, "null");
  } else if (std::isnan(*value)) {
    add(name, quoted("NaN"));
  } else if (std::isinf(*value)) {
    add(name, quoted(*value > 0 ? "Infinity" : "-Infinity"));
  } else {
    std::array<char, 32> digits{};
    const char* const end = std::to_chars(digits.data(), digits.data() + digits.size(), *value).ptr;
    add(name, std::string_view(digits.data(), static_cast<std::size_t>(end - digits.data())));
  }
}

void JsonObject::add_object(std::string_view name, const std::optional<JsonObject>& value) {
  add(name, value ? std::string("{").append(value->joined(", ")).append("}") : "null");
}

std::string JsonObject::text() const {
  return std::string("{\n  ").append(joined(",\n  ")).append("\n}\n");
}

std::string JsonObject::joined(std::string_view separator) const {
  std::string text;
  for (const std::string& member : members_) {
    text.append(text.empty() ? "" : separator).append(member);
  }
  return text;
}

}  // namespace sarnum::tool
