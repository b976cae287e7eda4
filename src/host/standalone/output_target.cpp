// Links are followed: what a link names is written, and removed when it could not be written. The
// link is left alone.
#include "host/standalone/output_target.h"

#include <sys/stat.h>

#include <cerrno>
#include <exception>
#include <filesystem>
#include <system_error>
#include <utility>

namespace sarnum::host {

namespace {

#if defined(_WIN32)
bool get_mode(const std::string& path, unsigned& mode) {
  struct _stat64 status;
  const bool exists = _stat64(path.c_str(), &status) == 0;
  mode = exists ? status.st_mode & _S_IFMT : 0U;
  return exists;
}

constexpr auto get_mode_of_link = get_mode;
constexpr unsigned folder = _S_IFDIR, regular = _S_IFREG, link = _S_IFREG;
#else
template <int (*Stat)(const char*, struct stat*)>
bool mode_by(const std::string& path, unsigned& mode) {
  struct stat status;
  const bool exists = Stat(path.c_str(), &status) == 0;
  mode = exists ? status.st_mode & S_IFMT : 0U;
  return exists;
}

constexpr auto get_mode = mode_by<stat>;
constexpr auto get_mode_of_link = mode_by<lstat>;
constexpr unsigned folder = S_IFDIR, regular = S_IFREG, link = S_IFLNK;
#endif

}  // namespace

std::string system_reason() noexcept {
  try {
    return std::generic_category().message(errno != 0 ? errno : EIO);
  } catch (const std::exception&) {
    return "out of memory";
  }
}

std::string why_not_a_file(const std::string& path) {
  unsigned mode = 0;
  if (!get_mode(path, mode)) {
    return errno == ENOENT ? "" : system_reason();
  }
  return mode == folder    ? "it is a folder; name a file in it"
         : mode != regular ? "it is not a regular file"
                           : "";
}

std::string target_of(const std::string& path) {
#if defined(_WIN32)
  return path;  // std::filesystem would take it for another character set
#else
  std::error_code error;
  std::filesystem::path target = std::filesystem::absolute(path, error);
  constexpr int longest_chain = 40;
  for (int i = 0; i < longest_chain && std::filesystem::is_symlink(target, error); ++i) {
    target = target.parent_path() / std::filesystem::read_symlink(target, error);
  }
  return target.string();
#endif
}

std::vector<std::string> companions_of(const std::string& path) {
  std::vector<std::string> names;
  for (const std::string& place : {path, target_of(path)}) {
    for (const char* const suffix : {".aux.xml", ".ovr", ".msk"}) {
      std::string name = place + suffix;
      unsigned mode = 0;
      const bool is_known = get_mode_of_link(name, mode);
      // What this system does not know may lie in one of GDAL's own, "/vsimem/" and the like.
      if (is_known ? mode == regular || mode == link : errno == ENOENT) {
        names.push_back(std::move(name));
      }
    }
  }
  return names;
}

}  // namespace sarnum::host
