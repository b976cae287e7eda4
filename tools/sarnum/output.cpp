#include "output.h"

#include <cpl_port.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <random>
#include <span>
#include <string_view>

#include "messages.h"

namespace sarnum::tool {
namespace {

namespace fs = std::filesystem;

constexpr std::array companion_suffixes = {".aux.xml", ".ovr", ".msk"};
// Files that GDAL takes for the place of a GeoTIFF, or of a PNG, by the name without its ending.
// Other rasters may use them too, so they are never removed.
constexpr std::array tiff_places = {".tfw", ".tifw", ".tiffw",   ".wld",
                                    ".RPB", ".rpb",  "_RPC.TXT", "_rpc.txt"};
constexpr std::array png_places = {".pgw", ".wld"};
constexpr std::array ending_signals = {SIGINT,  SIGTERM, SIGHUP,  SIGQUIT,  SIGPIPE,
                                       SIGXCPU, SIGUSR1, SIGALRM, SIGVTALRM};
// GDAL has been seen to crash after a write that failed; that too may leave nothing behind.
constexpr std::array crash_signals = {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT};

// What the signal handler removes. A handler may touch neither the heap nor a string.
constexpr int slot_count = 4;
struct Slot {
  std::atomic<bool> used;
  char path[PATH_MAX];
};
std::array<Slot, slot_count> slots;
/// The output is in place: whatever ends the program now, its work is done.
std::atomic<bool> is_done;
static_assert(std::atomic<bool>::is_always_lock_free);

bool is_crash(int signal_number) {
  return std::find(crash_signals.begin(), crash_signals.end(), signal_number) !=
         crash_signals.end();
}

extern "C" void remove_temporaries_and_end(int signal_number) {
  if (is_done.load() && !is_crash(signal_number)) {
    _exit(0);
  }
  bool is_unfinished = false;
  for (Slot& slot : slots) {
    if (slot.used.load() && !is_done.load()) {
      is_unfinished = true;
      unlink(slot.path);
    }
  }
  if (is_unfinished && is_crash(signal_number)) {
    constexpr std::string_view message = "sarnum: error: crashed; nothing was written\n";
    [[maybe_unused]] const auto written = write(STDERR_FILENO, message.data(), message.size());
  }
  // The default action is back in force (SA_RESETHAND): the parent sees what ended us.
  raise(signal_number);
}

/// No ending signal is delivered in the lifetime of an object.
class SignalsHeld {
 public:
  SignalsHeld() {
    sigset_t held;
    sigemptyset(&held);
    for (const int number : ending_signals) {
      sigaddset(&held, number);
    }
    sigprocmask(SIG_BLOCK, &held, &before_);
  }
  ~SignalsHeld() { sigprocmask(SIG_SETMASK, &before_, nullptr); }
  SignalsHeld(const SignalsHeld&) = delete;
  SignalsHeld& operator=(const SignalsHeld&) = delete;

 private:
  sigset_t before_;
};

std::string reason() {
  return std::strerror(errno);
}

std::string folder_of(const std::string& path) {
  const fs::path folder = fs::path(path).parent_path();
  return folder.empty() ? "." : folder.string();
}

/// Where a chain of symbolic links ends, whether or not there is a file.
std::string follow_links(const std::string& name) {
  constexpr int longest_chain = 40;
  fs::path path = name;
  std::error_code error;
  for (int i = 0; fs::is_symlink(path, error); ++i) {
    if (i == longest_chain) {
      throw Failure("cannot write " + in_quotes(name) + ": too many symbolic links");
    }
    const fs::path link = fs::read_symlink(path, error);
    path = link.is_absolute() ? link : path.parent_path() / link;
  }
  return path.string();
}

bool is_same_file(const std::string& a, const std::string& b) {
  struct stat first {};
  struct stat second {};
  return stat(a.c_str(), &first) == 0 && stat(b.c_str(), &second) == 0 &&
         first.st_dev == second.st_dev && first.st_ino == second.st_ino;
}

void check_against_inputs(const std::string& name, const std::string& target,
                          const std::vector<std::string>& inputs) {
  for (const std::string& input : inputs) {
    if (is_same_file(target, input)) {
      throw UsageFailure("the output " + in_quotes(name) +
                         " is a file being read; choose another name for it");
    }
    for (const char* const suffix : companion_suffixes) {
      if (is_same_file(target + suffix, input)) {
        throw UsageFailure("the input " + in_quotes(input) + " would be removed with the old " +
                           in_quotes(name) + "; choose another name for the output");
      }
    }
  }
}

void check_target(const std::string& name, const std::string& target, bool overwrite) {
  const std::string stem = fs::path(target).replace_extension().string();
  const bool is_png = EQUAL(fs::path(target).extension().c_str(), ".png");
  for (const char* const suffix : is_png ? std::span<const char* const>(png_places)
                                         : std::span<const char* const>(tiff_places)) {
    if (access((stem + suffix).c_str(), F_OK) == 0) {
      throw Failure(in_quotes(stem + suffix) + " exists and would be taken for the place of " +
                    in_quotes(name) + "; remove it or choose another name");
    }
  }
  struct stat status {};
  if (stat(target.c_str(), &status) != 0) {
    if (errno != ENOENT) {
      throw Failure("cannot write " + in_quotes(name) + ": " + reason());
    }
    for (const char* const suffix : companion_suffixes) {
      if (!overwrite && access((target + suffix).c_str(), F_OK) == 0) {
        throw Failure(in_quotes(name + suffix) + " exists and would be read with " +
                      in_quotes(name) + "; remove it or give --overwrite");
      }
    }
    return;
  }
  if (S_ISDIR(status.st_mode)) {
    throw Failure("cannot write " + in_quotes(name) + ": it is a folder; name a file in it");
  }
  if (!S_ISREG(status.st_mode)) {
    throw Failure("cannot write " + in_quotes(name) + ": it is not a regular file");
  }
  if (!overwrite) {
    throw Failure(in_quotes(name) + " exists; give --overwrite to replace it");
  }
}

int rename_with(const std::string& from, const std::string& to, unsigned flags) {
  return renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), flags);
}

/// Not every file system knows the flags of a rename.
bool flags_are_unknown() {
  return errno == EINVAL || errno == ENOSYS || errno == ENOTSUP;
}

void sync_folder(const std::string& folder) {
  const int handle = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (handle >= 0) {
    fsync(handle);
    close(handle);
  }
}

}  // namespace

OutputFile::OutputFile(const std::string& name, bool overwrite,
                       const std::vector<std::string>& inputs)
    : name_(name), overwrite_(overwrite) {
  if (name.empty()) {
    throw UsageFailure("the name of an output file is empty");
  }
  if (name.starts_with("/vsi")) {
    throw Failure("cannot write " + in_quotes(name) + ": only files on disk are written");
  }
  target_ = follow_links(name);
  check_against_inputs(name, target_, inputs);
  check_target(name, target_, overwrite);

  const std::string folder = folder_of(target_);
  struct stat status {};
  if (stat(folder.c_str(), &status) != 0) {
    throw Failure("cannot write " + in_quotes(name) + ": folder " + in_quotes(folder) + ": " +
                  reason());
  }
  // Nobody may read the new file who may not read the old one; until it is whole it is written to.
  const mode_t mode =
      stat(target_.c_str(), &status) == 0 ? (status.st_mode & 0777U) | S_IRUSR | S_IWUSR : 0666;
  const SignalsHeld held;
  std::random_device random;
  int handle = -1;
  constexpr int most_tries = 8;
  for (int i = 0; i < most_tries && handle < 0; ++i) {
    temporary_ = (fs::path(folder) /
                  (".sarnum-" + std::to_string(getpid()) + "-" + std::to_string(random()) + ".tmp"))
                     .string();
    handle = open(temporary_.c_str(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, mode);
    if (handle < 0 && errno != EEXIST) {
      break;
    }
  }
  if (handle < 0) {
    throw Failure("cannot write " + in_quotes(name) + ": folder " + in_quotes(folder) + ": " +
                  reason());
  }
  close(handle);
  for (int i = 0; i < slot_count; ++i) {
    Slot& slot = slots[static_cast<std::size_t>(i)];
    if (!slot.used.load() && temporary_.size() < sizeof slot.path) {
      temporary_.copy(slot.path, temporary_.size());
      slot.path[temporary_.size()] = '\0';
      slot.used.store(true);
      signal_slot_ = i;
      break;
    }
  }
}

OutputFile::~OutputFile() {
  const SignalsHeld held;
  discard_temporary();
  if (signal_slot_ >= 0) {
    slots[static_cast<std::size_t>(signal_slot_)].used.store(false);
  }
}

void OutputFile::discard_temporary() noexcept {
  unlink(temporary_.c_str());
}

void OutputFile::flush_to_disk() const {
  struct stat old {};
  if (stat(target_.c_str(), &old) == 0) {
    chmod(temporary_.c_str(), old.st_mode & 07777U);
  }
  const int handle = open(temporary_.c_str(), O_RDONLY | O_CLOEXEC);
  bool good = handle >= 0 && fsync(handle) == 0;
  const std::string why = good ? "" : reason();
  if (handle >= 0) {
    good = close(handle) == 0 && good;
  }
  if (!good) {
    throw Failure("cannot write " + in_quotes(name_) + ": " + why);
  }
}

void OutputFile::rename_to_target(bool keep_old) {
  const auto fail = [this] {
    if (errno == EEXIST) {
      throw Failure(in_quotes(name_) + " has appeared meanwhile; give --overwrite to replace it");
    }
    throw Failure("cannot write " + in_quotes(name_) + ": " + reason());
  };
  if (!overwrite_) {
    if (rename_with(temporary_, target_, RENAME_NOREPLACE) != 0 &&
        (!flags_are_unknown() || link(temporary_.c_str(), target_.c_str()) != 0)) {
      // The last resort, on file systems without links, has a moment in which it can err.
      const bool without_links = errno == EPERM || flags_are_unknown();
      if (!without_links) {
        fail();
      }
      if (access(target_.c_str(), F_OK) == 0) {
        errno = EEXIST;
        fail();
      }
      if (std::rename(temporary_.c_str(), target_.c_str()) != 0) {
        fail();
      }
    }
    placed_ = Placed::as_new_file;
  } else if (keep_old && rename_with(temporary_, target_, RENAME_EXCHANGE) == 0) {
    placed_ = Placed::exchanged_with_old;
  } else {
    const bool replaces = access(target_.c_str(), F_OK) == 0;
    if (std::rename(temporary_.c_str(), target_.c_str()) != 0) {
      fail();
    }
    placed_ = replaces ? Placed::instead_of_old : Placed::as_new_file;
  }
}

void OutputFile::take_back() {
  if (placed_ == Placed::exchanged_with_old) {
    rename_with(temporary_, target_, RENAME_EXCHANGE);
  } else if (placed_ == Placed::as_new_file) {
    unlink(target_.c_str());
  }
  placed_ = Placed::no;
}

void OutputFile::remove_stale_companions() const noexcept {
  for (const char* const suffix : companion_suffixes) {
    try {
      unlink((target_ + suffix).c_str());
    } catch (const std::bad_alloc&) {
      return;
    }
  }
}

void put_in_place(std::initializer_list<OutputFile*> files) {
  std::vector<OutputFile*> present;
  for (OutputFile* const file : files) {
    if (file != nullptr) {
      file->flush_to_disk();
      present.push_back(file);
    }
  }
  const SignalsHeld held;
  try {
    for (OutputFile* const file : present) {
      file->rename_to_target(file != present.back());
    }
  } catch (...) {
    for (OutputFile* const file : present) {
      file->take_back();
    }
    throw;
  }
  is_done.store(true);
  for (OutputFile* const file : present) {
    if (file->overwrite_) {
      file->remove_stale_companions();
    }
    file->discard_temporary();
    sync_folder(folder_of(file->target_));
  }
}

void install_signal_handlers() {
  // A handler for a stack that has overflowed needs another one.
  static std::array<std::byte, 1 << 16> handler_stack;
  stack_t stack{};
  stack.ss_sp = handler_stack.data();
  stack.ss_size = handler_stack.size();
  sigaltstack(&stack, nullptr);
  std::vector<int> handled(ending_signals.begin(), ending_signals.end());
  handled.insert(handled.end(), crash_signals.begin(), crash_signals.end());
  for (const int number : handled) {
    struct sigaction action {};
    if (sigaction(number, nullptr, &action) == 0 && action.sa_handler == SIG_IGN) {
      continue;  // e.g. SIGHUP under nohup
    }
    action = {};
    action.sa_handler = remove_temporaries_and_end;
    action.sa_flags =
        static_cast<int>(SA_RESETHAND | static_cast<unsigned>(SA_NODEFER | SA_ONSTACK));
    sigfillset(&action.sa_mask);
    sigdelset(&action.sa_mask, number);
    sigaction(number, &action, nullptr);
  }
  std::signal(SIGXFSZ, SIG_IGN);
}

}  // namespace sarnum::tool
