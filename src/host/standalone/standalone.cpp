// The failure memory and the creation options of a thread. A layer is used deep inside a routine
// whose interface has no room for either, so they travel beside the call.
#include "sarnum/host/standalone.h"

#include <exception>
#include <new>
#include <utility>

#include "host/standalone/raster_status.h"

#if defined(_WIN32)
#define WIN32_LEAN_AND_MEAN
#include <windows.h>
#endif

namespace sarnum::host {

namespace {

struct ThreadState {
  std::string failure;
  std::weak_ptr<const void> file_of_failure;
  std::vector<std::string> creation_options;
  std::string text;
};

#if defined(_WIN32)
// MinGW-w64 frees what is thread_local before it destroys it. The system destroys these when their
// thread ends, and those that are left when the library is unloaded.
class ThreadStates {
 public:
  ThreadStates() noexcept
      : index_(FlsAlloc([](void* state) { delete static_cast<ThreadState*>(state); })) {}
  ThreadStates(const ThreadStates&) = delete;
  ThreadStates& operator=(const ThreadStates&) = delete;
  ~ThreadStates() { FlsFree(index_); }

  ThreadState* of_this_thread() const noexcept {
    void* state = FlsGetValue(index_);
    if (state == nullptr) {
      state = new (std::nothrow) ThreadState;
      FlsSetValue(index_, state);
    }
    return static_cast<ThreadState*>(state);
  }

 private:
  DWORD index_;
};

ThreadStates thread_states;

/// Null when storage is short.
ThreadState* thread_state() noexcept {
  return thread_states.of_this_thread();
}
#else
/// Needs no destruction: global objects still use layers when the state of the main thread has been
/// destroyed. They get another one, which lives until the process has ended.
struct StateHere {
  ThreadState* state;
  bool is_left_allocated;
};
thread_local constinit StateHere here = {nullptr, false};

/// Destroys the state when its thread ends.
struct StateOwner {
  StateOwner() noexcept = default;
  StateOwner(const StateOwner&) = delete;
  StateOwner& operator=(const StateOwner&) = delete;
  ~StateOwner() {
    delete here.state;
    here = {nullptr, true};
  }
};

/// Null when storage is short.
ThreadState* thread_state() noexcept {
  if (here.state == nullptr) {
    if (!here.is_left_allocated) {
      thread_local const StateOwner owner;
    }
    here.state = new (std::nothrow) ThreadState;
  }
  return here.state;
}
#endif

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
  const ThreadState* const state = thread_state();
  return state != nullptr ? state->failure.c_str() : "out of memory";
}

void clear_raster_failure() noexcept {
  if (ThreadState* const state = thread_state()) {
    state->failure.clear();
  }
}

void forget_past_failure(const OpenFile& own) noexcept {
  ThreadState* const state = thread_state();
  if (state == nullptr) {
    return;
  }
  const OpenFile file = state->file_of_failure.lock();
  if (file == nullptr || file == own) {
    state->failure.clear();
  }
}

bool set_creation_options(const char* const* options, int count) noexcept {
  ThreadState* const state = thread_state();
  if (state == nullptr) {
    return false;
  }
  state->creation_options.clear();
  try {
    std::vector<std::string> copies;
    for (int i = 0; i < count; ++i) {
      if (options[i] != nullptr) {
        copies.emplace_back(options[i]);
      }
    }
    state->creation_options = std::move(copies);
    return true;
  } catch (const std::exception&) {
    return false;
  }
}

void remember_raster_failure(std::string_view action, std::string_view path,
                             std::string_view reason, const OpenFile& file) noexcept {
  ThreadState* const state = thread_state();
  if (state == nullptr || !state->failure.empty()) {
    return;
  }
  state->file_of_failure = file;
  try {
    std::string line;
    append_as_one_line(line, action);
    line += ' ';
    append_as_one_line(line, path);
    line += ": ";
    append_as_one_line(line, without_leading_path(reason, path));
    state->failure = std::move(line);
  } catch (const std::exception&) {
    // Short enough for the string's own storage, so that a failure is never lost.
    state->failure = "out of memory";
  }
}

std::vector<std::string> take_creation_options() noexcept {
  ThreadState* const state = thread_state();
  return state != nullptr ? std::exchange(state->creation_options, {}) : std::vector<std::string>();
}

const char* keep_text(std::string text) noexcept {
  ThreadState* const state = thread_state();
  if (state == nullptr) {
    return "out of memory";
  }
  state->text = std::move(text);
  return state->text.c_str();
}

}  // namespace sarnum::host
