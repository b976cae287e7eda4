// A JSON object (RFC 8259) as a command prints it. GDAL's own writer takes long runs of zeros or
// nines in a number for rounding and drops them; here every number reads back as it was.
#ifndef SARNUM_TOOL_JSON_H
#define SARNUM_TOOL_JSON_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace sarnum::tool {

class JsonObject {
 public:
  /// Text that is not UTF-8, as a file's name may be, is taken for ISO 8859-1.
  void add_text(std::string_view name, const std::string& value);
  void add_integer(std::string_view name, std::int64_t value);
  /// The shortest decimal that reads back as the number; null for none. For what JSON lacks, the
  /// strings "Infinity", "-Infinity" and "NaN", which conversions to a number understand.
  void add_number(std::string_view name, std::optional<double> value);
  void add_object(std::string_view name, const std::optional<JsonObject>& value);

  /// A member a line.
  std::string text() const;

 private:
  void add(std::string_view name, std::string_view value);
  std::string joined(std::string_view separator) const;

  std::vector<std::string> members_;
};

}  // namespace sarnum::tool

#endif
