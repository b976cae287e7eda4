#include "messages.h"

#include <cpl_error.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <mutex>

namespace sarnum::tool {
namespace {

bool silent = false;
bool progress_line_is_open = false;

std::vector<std::string>& kept_warnings() {
  static std::vector<std::string> warnings;
  return warnings;
}

struct GdalMessages {
  std::mutex mutex;
  std::string failure;
  std::vector<std::string> warnings;
};

GdalMessages& gdal_messages() {
  static GdalMessages messages;
  return messages;
}

void CPL_STDCALL keep_gdal_message(CPLErr level, CPLErrorNum number, const char* text) noexcept {
  if (level == CE_Debug) {
    // Asked for with CPL_DEBUG, so it goes where its reader looks for it.
    CPLDefaultErrorHandler(level, number, text);
    return;
  }
  try {
    GdalMessages& messages = gdal_messages();
    const std::scoped_lock lock(messages.mutex);
    if (level >= CE_Failure) {
      // The first failure is the cause; what follows are its consequences.
      if (messages.failure.empty()) {
        messages.failure = one_line(text);
      }
    } else if (level == CE_Warning) {
      std::string line = one_line(text);
      if (std::find(messages.warnings.begin(), messages.warnings.end(), line) ==
          messages.warnings.end()) {
        messages.warnings.push_back(std::move(line));
      }
    }
  } catch (...) {
    // No exception may pass through GDAL. What failed is found again when the file is checked.
  }
}

void write_line(std::string_view kind, std::string_view text) {
  std::string line;
  if (progress_line_is_open) {
    line += '\n';
  }
  progress_line_is_open = false;
  line.append("sarnum: ").append(kind).append(": ").append(one_line(text)).append("\n");
  std::fwrite(line.data(), 1, line.size(), stderr);
  std::fflush(stderr);
}

}  // namespace

std::string one_line(std::string_view text) {
  std::string line;
  bool blank_due = false;
  for (const char c : text) {
    if (static_cast<unsigned char>(c) < 0x20 || c == 0x7f) {
      blank_due = true;
      continue;
    }
    if (blank_due && !line.empty() && line.back() != ' ' && c != ' ') {
      line += ' ';
    }
    blank_due = false;
    line += c;
  }
  return line;
}

std::string in_quotes(std::string_view name) {
  std::string text(1, '\'');
  text.append(name).push_back('\'');
  return text;
}

std::string replaced(std::string text, std::string_view from, std::string_view to) {
  for (std::size_t at = text.find(from); at != std::string::npos && !from.empty();
       at = text.find(from, at + to.size())) {
    text.replace(at, from.size(), to);
  }
  return text;
}

std::string with_name(std::string text, const std::string& path, std::string_view name) {
  for (const char* const quotes : {"''", "`'", "\"\""}) {
    text = replaced(text, quotes[0] + path + quotes[1], path);
  }
  return replaced(text, path, in_quotes(name));
}

void silence_warnings() {
  silent = true;
}

void warn(std::string_view text) {
  if (!silent) {
    kept_warnings().emplace_back(text);
  }
}

void show_warnings() {
  for (const std::string& warning : kept_warnings()) {
    write_line("warning", warning);
  }
  kept_warnings().clear();
}

void report_error(std::string_view text) {
  write_line("error", text);
}

void write_progress(std::string_view text, bool ends_line) {
  std::fwrite(text.data(), 1, text.size(), stderr);
  if (ends_line) {
    std::fputc('\n', stderr);
  }
  std::fflush(stderr);
  progress_line_is_open = !ends_line;
}

void install_gdal_message_handler() {
  gdal_messages();
  CPLSetErrorHandler(keep_gdal_message);
}

void forget_gdal_messages() {
  GdalMessages& messages = gdal_messages();
  const std::scoped_lock lock(messages.mutex);
  messages.failure.clear();
  messages.warnings.clear();
}

std::string gdal_failure() {
  GdalMessages& messages = gdal_messages();
  const std::scoped_lock lock(messages.mutex);
  return messages.failure;
}

std::vector<std::string> gdal_warnings() {
  GdalMessages& messages = gdal_messages();
  const std::scoped_lock lock(messages.mutex);
  return messages.warnings;
}

void fail_with_gdal_reason(std::string_view text) {
  std::string line(text);
  if (const std::string reason = gdal_failure(); !reason.empty()) {
    line.append(": ").append(reason);
  }
  throw Failure(line);
}

}  // namespace sarnum::tool
