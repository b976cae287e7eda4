// What the tool says: one line on stderr a message, "sarnum: error: ..." or "sarnum:
// warning: ...". Messages of GDAL never reach stderr by themselves: they are kept here, and
// the code that called GDAL makes them part of a line that names the file.
#ifndef SARNUM_TOOL_MESSAGES_H
#define SARNUM_TOOL_MESSAGES_H

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace sarnum::tool {

/// A file or the work failed (exit status 1); what() tells the user which and what to do.
class Failure : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// The arguments are at fault (exit status 2).
class UsageFailure : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// The text on one line: line breaks and other control characters become single blanks.
std::string one_line(std::string_view text);

/// A file name as it stands in messages: 'name'.
std::string in_quotes(std::string_view name);

/// The text with every occurrence of `from` replaced.
std::string replaced(std::string text, std::string_view from, std::string_view to);

/// The text with every occurrence of a path, quoted or not, replaced by a name in quotes.
std::string with_name(std::string text, const std::string& path, std::string_view name);

/// Without warnings from now on.
void silence_warnings();
/// Keeps a warning until show_warnings(): a command that fails has one thing to say.
void warn(std::string_view text);
void show_warnings();
void report_error(std::string_view text);

/// A piece of the progress line. A message that comes in between starts on a new line.
void write_progress(std::string_view text, bool ends_line);

/// Keeps the messages of GDAL, from whichever thread they come.
void install_gdal_message_handler();
void forget_gdal_messages();
/// The first failure since then, on one line, or nothing.
std::string gdal_failure();
/// The warnings since then, each once.
std::vector<std::string> gdal_warnings();

/// Throws a Failure that says what was not possible, and why as far as GDAL told.
[[noreturn]] void fail_with_gdal_reason(std::string_view text);

}  // namespace sarnum::tool

#endif
