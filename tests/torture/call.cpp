// SPDX-License-Identifier: Apache-2.0
// A child is traced from the beginning of the call to its end: each system call of its own is seen,
// those of the C library's inside among them, and refused where the fault says so. What the
// programs that it runs do is theirs. Memory is refused by the allocator that stands in for the C
// library's.
#include <cerrno>
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/user.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <utility>

#include <zarncore/zarncore.h>

#include "support/clock.h"
#include "support/refused_memory.h"
#include "torture.h"

namespace torture {
namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;
using std::chrono::microseconds;
using Info = __ptrace_syscall_info;
constexpr int kLongestSeconds = 20;

// In the order of the kinds.
const struct {
  const char* name;
  int error = 0;
  bool changes = false;
  std::set<unsigned long> calls = {};
} kKinds[] = {
    {"open", EMFILE, true, {SYS_open, SYS_openat, SYS_pipe2}},
    {"read", EIO, false, {SYS_read, SYS_pread64, SYS_getdents64}},
    {"write", ENOSPC, true, {SYS_write, SYS_sendto, SYS_fallocate}},
    {"short write", ENOSPC},
    {"fsync", EIO, false, {SYS_fsync}},
    {"rename", EIO, true, {SYS_rename, SYS_renameat, SYS_link}},
    {"close", EIO, false, {SYS_close}},
    {"mkdir", EACCES, true, {SYS_mkdir, SYS_rmdir}},
    {"unlink", EPERM, true, {SYS_unlink, SYS_unlinkat}},
    {"ioctl", EIO, true, {SYS_ioctl, SYS_sethostname}},
    {"socket", EMFILE, false, {SYS_socket}},
    {"spawn", EAGAIN, true, {SYS_clone, SYS_clone3, SYS_vfork, SYS_fork}},
    {"owner", EPERM, true, {SYS_chmod, SYS_fchmod, SYS_chown, SYS_fchown}},
    {"lock", EAGAIN, false, {SYS_fcntl}},
    {"killed before change"},
    {"memory"},
    {"memory from"},
};

// Those of lock files stay open for the next call.
int CountDescriptors() {
  int count = 0;
  for (const auto& entry : fs::directory_iterator("/proc/self/fd")) {
    std::error_code gone;
    const std::string target = fs::read_symlink(entry.path(), gone);
    if (!gone && target.rfind("/run/lock/zarncore/", 0) != 0) ++count;
  }
  return count;
}

// The report is read by the parent when the child has stopped behind the call.
[[noreturn]] void BeChild(const std::function<int()>& call, const Fault& fault, Report* report) {
  *report = {};
  const int before = CountDescriptors();
  if (fault.kind == kLock) test::RunClockFaster(200);
  ::alarm(kLongestSeconds);
  ::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
  ::raise(SIGSTOP);
  const auto begin = Clock::now();
  if (fault.IsMemory()) test::RefuseMemory(fault.at, fault.kind == kAllMemory);
  report->result = call();
  if (fault.IsMemory()) report->reached = test::StopRefusing();
  ::raise(SIGSTOP);
  report->code = KOPACErrGet();
  report->microseconds = std::chrono::duration_cast<microseconds>(Clock::now() - begin).count();
  report->descriptors = CountDescriptors() - before;
  report->childLeft = ::waitpid(-1, nullptr, WNOHANG) != -1;
  ::_exit(0);
}

struct Tracer {
  // Until the child stops by itself or ends; its status. Other signals are passed on.
  int Follow(__ptrace_request how) {
    int status = 0;
    for (int signal = 0;;) {
      ::ptrace(how, child, nullptr, signal);
      if (::waitpid(child, &status, 0) != child || !WIFSTOPPED(status)) return status;
      signal = WSTOPSIG(status);
      if (signal == SIGSTOP) return status;
      if (signal != (SIGTRAP | 0x80)) continue;
      signal = 0;
      Info info{};
      ::ptrace(PTRACE_GET_SYSCALL_INFO, child, sizeof info, &info);
      if (info.op == PTRACE_SYSCALL_INFO_ENTRY) {
        Enter(info);
      } else if (error != 0) {
        SetRegister(&user_regs_struct::rax, static_cast<unsigned long>(-std::exchange(error, 0)));
      }
    }
  }

  void Enter(const Info& info) {
    const Kind kind = KindOf(info);
    if (kind == kNone) return;
    Count(kind, info);
    // A lock that somebody holds stays held, and a full disk full.
    const bool isShort = fault.kind == kShort && kind == kWrite;
    const long seen = outcome->counts[kind] - 1;
    const bool later = seen > fault.at && (kind == kLock || isShort);
    if ((kind != fault.kind && !isShort) || (seen != fault.at && !later)) return;
    outcome->reached = true;
    if (isShort && !later) {
      SetRegister(&user_regs_struct::rdx, (info.entry.args[2] + 1) / 2);
      return;
    }
    error = kKinds[fault.kind].error;
    if (kind != kClose)  // which has closed, whatever it says
      SetRegister(&user_regs_struct::orig_rax, static_cast<unsigned long>(-1));
  }

  [[nodiscard]] Kind KindOf(const Info& info) const {
    int kind = kOpen;
    while (kind < kKill && kKinds[kind].calls.count(info.entry.nr) == 0)
      ++kind;
    if (kind == kKill) return kNone;
    if (kind != kLock) return static_cast<Kind>(kind);
    if (info.entry.args[1] != F_OFD_SETLK) return kNone;
    const long type = ::ptrace(PTRACE_PEEKDATA, child, info.entry.args[2], nullptr) & 0xFFFF;
    return type == F_UNLCK ? kNone : kLock;
  }

  void Count(Kind kind, const Info& info) {
    ++outcome->counts[kind];
    if (kind == kWrite) {
      ++outcome->counts[kShort];
      const std::string fds = "/proc/" + std::to_string(child) + "/fd/";
      std::error_code gone;
      outcome->written.insert(fs::read_symlink(fds + std::to_string(info.entry.args[0]), gone));
    }
    const bool makes =
        info.entry.nr == SYS_openat && (info.entry.args[2] & (O_CREAT | O_TRUNC)) != 0;
    if (!kKinds[kind].changes || (kind == kOpen && !makes)) return;
    if (watcher) watcher();
    if (fault.kind == kKill && outcome->counts[kKill] == fault.at) ::kill(child, SIGKILL);
    ++outcome->counts[kKill];
  }

  void SetRegister(unsigned long long user_regs_struct::*which, unsigned long value) const {
    user_regs_struct registers{};
    ::ptrace(PTRACE_GETREGS, child, nullptr, &registers);
    registers.*which = value;
    ::ptrace(PTRACE_SETREGS, child, nullptr, &registers);
  }

  pid_t child;
  const Fault& fault;
  const std::function<void()>& watcher;
  Outcome* outcome;
  int error = 0;
};

// A lock that the child still holds: nobody else can have it.
bool HoldsALock() {
  for (const auto& entry : fs::directory_iterator("/run/lock/zarncore")) {
    struct flock range {};
    range.l_type = F_WRLCK;
    const int fd = ::open(entry.path().c_str(), O_RDWR | O_CLOEXEC);
    ::fcntl(fd, F_OFD_GETLK, &range);
    ::close(fd);
    if (range.l_type != F_UNLCK) return true;
  }
  return false;
}

}  // namespace

std::string Fault::Name() const {
  return std::string(kKinds[kind].name) + " " + std::to_string(at);
}

Outcome Call(const std::function<int()>& call, const Fault& fault,
             const std::function<void()>& watcher) {
  static auto* const report = Shared<Report>();
  Outcome outcome;
  const pid_t child = ::fork();
  if (child == 0) BeChild(call, fault, report);
  int status = 0;
  ::waitpid(child, &status, 0);
  ::ptrace(PTRACE_SETOPTIONS, child, nullptr, PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL);
  Tracer tracer{child, fault, watcher, &outcome};
  if (fault.kind == kKillLater) {
    ::ptrace(PTRACE_DETACH, child, nullptr, nullptr);
    std::this_thread::sleep_for(microseconds(fault.at));
    ::kill(child, SIGKILL);
    ::waitpid(child, &status, 0);
  } else {
    status = tracer.Follow(fault.IsMemory() ? PTRACE_CONT : PTRACE_SYSCALL);
  }
  if (WIFSTOPPED(status)) {
    const bool holdsALock = HoldsALock();
    const bool refused = outcome.reached;
    status = tracer.Follow(PTRACE_CONT);
    static_cast<Report&>(outcome) = *report;
    outcome.ended = true;
    outcome.reached = outcome.reached || refused;
    if (outcome.descriptors != 0) outcome.left += " descriptors";
    if (outcome.childLeft) outcome.left += " a child";
    if (holdsALock) outcome.left += " a lock";
  }
  outcome.reached = outcome.reached || !outcome.ended;
  if (WIFSIGNALED(status) && WTERMSIG(status) != SIGKILL) {
    outcome.left +=
        WTERMSIG(status) == SIGALRM ? " hangs" : " signal " + std::to_string(WTERMSIG(status));
  }
  ::alarm(kLongestSeconds);
  while (::waitpid(-1, nullptr, 0) > 0) {
  }
  ::alarm(0);
  return outcome;
}

}  // namespace torture
