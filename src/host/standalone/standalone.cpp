// The failure memory and the creation options of a thread. A layer is used deep inside a routine
// whose interface has no room for either, so they travel beside the call.
#include "sarnum/host/standalone.h"

#include <exception>
#include <utility>

#include "host/standalone/raster_status.h"

namespace sarnum::host {

namespace {

thread_local std::string failure;
thread_local std::vector<std::string> creation_options;

bool is_space_or_control(char c) {
  return static_cast<unsigned char>(c) <= 0x20 || c == 0x7f;
}

/// Appends a text in which every run of blanks, line ends and control characters is one blank.
void append_as_one_line(std::string& line, std::string_view text) {
  bool pending_blank = false;
  for (const char c : text) {
    if (is_space_or_control(c)) {
      pending_blank = true;
      continue;
    }
    if (pending_blank && !line.empty() && line.back() != ' ') {
      line += ' ';
    }
    pending_blank = false;
    line += c;
  }
}

/// The part of a reason that tells more than the path, which many reasons begin with.
std::string_view without_leading_path(std::string_view reason, std::string_view path) {
  if (!path.empty() && reason.starts_with(path) && reason.substr(path.size()).starts_with(": ")) {
    reason.remove_prefix(path.size() + 2);
  }
  return reason;
}

}  // namespace

const char* raster_failure() noexcept {
  return failure.c_str();
}

void clear_raster_failure() noexcept {
  failure.clear();
}

bool set_creation_options(const char* const* options, int count) noexcept {
  creation_options.clear();
  try {
    std::vector<std::string> copies;
    for (int i = 0; i < count; ++i) {
      if (options[i] != nullptr) {
        copies.emplace_back(options[i]);
      }
    }
    creation_options = std::move(copies);
    return true;
  } catch (const std::exception&) {
    return false;
  }
}

void remember_raster_failure(std::string_view action, std::string_view path,
                             std::string_view reason) noexcept {
  if (!failure.empty()) {
    return;
  }
  try {
    std::string line;
    append_as_one_line(line, action);
    line += ' ';
    append_as_one_line(line, path);
    line += ": ";
    append_as_one_line(line, without_leading_path(reason, path));
    failure = std::move(line);
  } catch (const std::exception&) {
    // Short enough for the string's own storage, so that a failure is never lost.
    failure = "out of memory";
  }
}

std::vector<std::string> take_creation_options() noexcept {
  return std::exchange(creation_options, {});
}

}  // namespace sarnum::host
