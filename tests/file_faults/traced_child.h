// A child process whose calls on the files of one folder are counted, and of which one fails,
// comes up short or is never made.
//
// The system calls themselves are intercepted, so that the buffers and retries of every library in
// between are part of what is tested. A filter in the kernel stops the child at these calls alone.
#pragma once

#include <linux/filter.h>
#include <linux/seccomp.h>
#include <signal.h>
#include <stddef.h>
#include <sys/prctl.h>
#include <sys/ptrace.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/user.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <functional>
#include <ostream>
#include <string>
#include <vector>

enum class Fault {
  none,
  error,       // the n-th call fails
  full_disk,   // the n-th call that needs room fails, and all later ones
  size_limit,  // no file may have more than 512 n^3 bytes
  part,        // the n-th transfer moves half of its bytes
  death        // killed before the n-th call
};

inline void PrintTo(Fault fault, std::ostream* to) {
  constexpr const char* names[] = {"none", "error", "full_disk", "size_limit", "part", "death"};
  *to << names[static_cast<int>(fault)];
}

struct Ending {
  int status;  // as a shell sees it: 128 + number after a signal
  bool met_fault;
};

struct FileCall {
  unsigned number;
  int path_argument;  // -1 when the first argument is a descriptor
  bool transfers = false, needs_room = false;
};

// Of these not all are made today: another version of a library may choose others.
inline constexpr FileCall file_calls[] = {
    {SYS_read, -1, true},
    {SYS_write, -1, true, true},
    {SYS_pread64, -1, true},
    {SYS_lseek, -1},
    {SYS_pwrite64, -1, true, true},
    {SYS_writev, -1, false, true},
    {SYS_pwritev, -1, false, true},
    {SYS_readv, -1},
    {SYS_preadv, -1},
    {SYS_fallocate, -1, false, true},
    {SYS_ftruncate, -1, false, true},
    {SYS_fstat, -1},
    {SYS_close, -1},
    {SYS_fsync, -1, false, true},
    {SYS_getdents64, -1},
    {SYS_open, 0},
    {SYS_openat, 1},
    {SYS_stat, 0},
    {SYS_lstat, 0},
    {SYS_newfstatat, 1},
    {SYS_statx, 1},
    {SYS_access, 0},
    {SYS_readlink, 0},
    {SYS_chmod, 0},
    {SYS_link, 0},
    {SYS_unlink, 0},
    {SYS_unlinkat, 1},
    {SYS_rename, 0},
    {SYS_renameat2, 1},
};

inline void stop_at_file_calls() {
  std::vector<sock_filter> filter = {
      BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr))};
  for (const FileCall& call : file_calls) {
    filter.push_back(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, call.number, 0, 1));
    filter.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_TRACE));
  }
  filter.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW));
  sock_fprog program{static_cast<unsigned short>(filter.size()), filter.data()};
  prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
  prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program);
}

/// Whether a call of the child concerns a file of the folder, in which it works.
inline bool is_in_folder(pid_t child, const user_regs_struct& state, const FileCall& call,
                         const std::string& folder) {
  const std::string process = "/proc/" + std::to_string(child);
  if (call.path_argument < 0) {
    std::error_code none;
    const auto link = process + "/fd/" + std::to_string(state.rdi);
    return std::filesystem::read_symlink(link, none).string().starts_with(folder);
  }
  std::ifstream memory(process + "/mem", std::ios::binary);
  memory.seekg(static_cast<std::streamoff>(call.path_argument == 0 ? state.rdi : state.rsi));
  std::string name;
  std::getline(memory, name, '\0');
  return name[0] == '/' ? name.starts_with(folder) : !name.empty();
}

/// Runs `work`, which ends the process or becomes another one, in a child that meets a fault at
/// the n-th call of its kind on a file of the folder.
inline Ending run_with_fault(const std::string& folder, Fault fault, int n,
                             const std::function<void()>& work) {
  const pid_t child = fork();
  if (child == 0) {
    const auto size = static_cast<rlim_t>(n), bytes = 512 * size * size * size;
    const rlimit limit{bytes, bytes};
    if (fault == Fault::size_limit) {
      setrlimit(RLIMIT_FSIZE, &limit);
    }
    alarm(20);                                    // what hangs has failed
    setenv("ASAN_OPTIONS", "detect_leaks=0", 1);  // these are found by tracing, too
    if (ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) == 0) {
      raise(SIGSTOP);
      stop_at_file_calls();
      work();
    }
    _exit(127);
  }
  int status = 0;
  int count = 0;
  waitpid(child, &status, 0);
  ptrace(PTRACE_SETOPTIONS, child, nullptr, PTRACE_O_TRACESECCOMP | PTRACE_O_EXITKILL);
  while (WIFSTOPPED(status)) {
    const int signal = WSTOPSIG(status);
    user_regs_struct state{};
    if (status >> 8 == (SIGTRAP | PTRACE_EVENT_SECCOMP << 8) &&
        ptrace(PTRACE_GETREGS, child, nullptr, &state) == 0) {
      const FileCall& call = *std::find_if(std::begin(file_calls), std::end(file_calls),
                                           [&](auto& c) { return c.number == state.orig_rax; });
      const bool can_fail = fault == Fault::part        ? call.transfers && state.rdx > 1
                            : fault == Fault::full_disk ? call.needs_room
                                                        : fault != Fault::size_limit;
      const bool is_counted = can_fail && is_in_folder(child, state, call, folder);
      count += is_counted ? 1 : 0;
      if (is_counted && count == n && fault == Fault::death) {
        kill(child, SIGKILL);
      } else if (is_counted && count == n && fault == Fault::part) {
        state.rdx /= 2;
      } else if (is_counted && (count == n || (fault == Fault::full_disk && count > n))) {
        state.orig_rax = ~0ULL;  // the call is not made, and this is what it gives
        state.rax = -static_cast<unsigned long long>(fault == Fault::error ? EIO : ENOSPC);
      }
      ptrace(PTRACE_SETREGS, child, nullptr, &state);
    }
    ptrace(PTRACE_CONT, child, nullptr, signal == SIGTRAP || signal == SIGSTOP ? 0 : signal);
    waitpid(child, &status, 0);
  }
  const int ending = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  return {ending, fault == Fault::size_limit ? ending != 0 : count >= n};
}
