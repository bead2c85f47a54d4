// A child is traced from the beginning of the call to its end: each system call of its own is seen,
// those of the C library's inside among them, and refused where the fault says so. What the
// programs that it runs do is theirs. Memory is refused by the allocator that stands in for the C
// library's.
#include "call.h"

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <filesystem>
#include <map>
#include <sys/mman.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/user.h>
#include <sys/wait.h>
#include <unistd.h>

#include <zarncore/zarncore.h>

#include "platform/fixture.h"
#include "support/clock.h"

namespace torture {
namespace {

namespace fs = std::filesystem;
constexpr int kLongestSeconds = 20;

struct Refusal {
  const char* name;
  int error;
};
constexpr Refusal kRefusals[kKinds] = {
    {"open", EMFILE},  {"read", EIO},   {"write", ENOSPC},  {"short write", ENOSPC},
    {"fsync", EIO},    {"rename", EIO}, {"close", EIO},     {"mkdir", EACCES},
    {"unlink", EPERM}, {"ioctl", EIO},  {"socket", EMFILE}, {"spawn", EAGAIN},
    {"owner", EPERM},  {"lock", EAGAIN}};

// Read by the parent when the child has stopped behind the call.
struct Report {
  int result;
  unsigned code;
  bool refused;
  int descriptors;
  bool childLeft;
  long microseconds;
};

Report& Shared() {
  static auto* const report = static_cast<Report*>(
      ::mmap(nullptr, sizeof(Report), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
  return *report;
}

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

[[noreturn]] void BeChild(const std::function<int()>& call, const Fault& fault) {
  Report& report = Shared();
  report = {};
  const int before = CountDescriptors();
  if (fault.what == Fault::kRefuse && fault.kind == kLock) test::RunClockFaster(200);
  ::alarm(kLongestSeconds);
  ::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
  ::raise(SIGSTOP);
  const auto begin = std::chrono::steady_clock::now();
  const bool memory = fault.what == Fault::kMemory || fault.what == Fault::kAllMemory;
  if (memory) test::RefuseMemory(fault.at, fault.what == Fault::kAllMemory);
  report.result = call();
  if (memory) report.refused = test::StopRefusing();
  ::raise(SIGSTOP);
  report.code = KOPACErrGet();
  report.microseconds = std::chrono::duration_cast<std::chrono::microseconds>(
                            std::chrono::steady_clock::now() - begin)
                            .count();
  report.descriptors = CountDescriptors() - before;
  report.childLeft = ::waitpid(-1, nullptr, WNOHANG) != -1;
  ::_exit(0);
}

// ---- system calls

struct Entry {
  long number;
  unsigned long argument[6];
};

Entry EntryOf(pid_t child) {
  user_regs_struct r{};
  ::ptrace(PTRACE_GETREGS, child, nullptr, &r);
  return {static_cast<long>(r.orig_rax), {r.rdi, r.rsi, r.rdx, r.r10, r.r8, r.r9}};
}

Kind KindOf(const Entry& entry, pid_t child) {
  static const std::map<long, Kind> kinds = {
      {SYS_open, kOpen},         {SYS_openat, kOpen},     {SYS_pipe2, kOpen},
      {SYS_read, kRead},         {SYS_pread64, kRead},    {SYS_getdents64, kRead},
      {SYS_write, kWrite},       {SYS_sendto, kWrite},    {SYS_fsync, kSync},
      {SYS_rename, kRename},     {SYS_renameat, kRename}, {SYS_link, kRename},
      {SYS_close, kClose},       {SYS_mkdir, kFolder},    {SYS_rmdir, kFolder},
      {SYS_unlink, kUnlink},     {SYS_unlinkat, kUnlink}, {SYS_ioctl, kIoctl},
      {SYS_sethostname, kIoctl}, {SYS_socket, kSocket},   {SYS_clone, kSpawn},
      {SYS_clone3, kSpawn},      {SYS_vfork, kSpawn},     {SYS_fork, kSpawn},
      {SYS_chmod, kOwner},       {SYS_fchmod, kOwner},    {SYS_chown, kOwner},
      {SYS_fchown, kOwner},      {SYS_fallocate, kWrite}, {SYS_fcntl, kLock}};
  const auto found = kinds.find(entry.number);
  if (found == kinds.end()) return kKinds;
  if (found->second != kLock) return found->second;
  if (entry.argument[1] != F_OFD_SETLK) return kKinds;
  const long type = ::ptrace(PTRACE_PEEKDATA, child, entry.argument[2], nullptr) & 0xFFFF;
  return type == F_UNLCK ? kKinds : kLock;
}

bool IsChange(const Entry& entry, Kind kind) {
  switch (kind) {
    case kOpen:
      return entry.number == SYS_openat && (entry.argument[2] & (O_CREAT | O_TRUNC)) != 0;
    case kWrite:
    case kRename:
    case kFolder:
    case kUnlink:
    case kIoctl:
    case kSpawn:
    case kOwner:
      return true;
    default:
      return false;
  }
}

void SetRegister(pid_t child, const std::function<void(user_regs_struct*)>& set) {
  user_regs_struct registers{};
  ::ptrace(PTRACE_GETREGS, child, nullptr, &registers);
  set(&registers);
  ::ptrace(PTRACE_SETREGS, child, nullptr, &registers);
}

class Tracer {
 public:
  Tracer(pid_t child, const Fault& fault, const std::function<void()>& watcher, Outcome* outcome)
      : child_(child), fault_(fault), watcher_(watcher), outcome_(outcome) {}

  // Until the child stops by itself or ends; its status.
  int Follow() {
    int status = 0;
    for (bool entry = true;;) {
      ::ptrace(PTRACE_SYSCALL, child_, nullptr, signal_);
      if (::waitpid(child_, &status, 0) != child_ || !WIFSTOPPED(status)) return status;
      const int stop = WSTOPSIG(status);
      signal_ = 0;
      if (stop == SIGSTOP) return status;
      if (stop != (SIGTRAP | 0x80)) {
        signal_ = stop;
        continue;
      }
      if (entry) {
        if (Enter()) return ::waitpid(child_, &status, 0) == child_ ? status : -1;
      } else {
        Leave();
      }
      entry = !entry;
    }
  }

 private:
  // True when the child has been killed.
  bool Enter() {
    const Entry entry = EntryOf(child_);
    Kind kind = KindOf(entry, child_);
    if (kind == kKinds) return false;
    const long seen = outcome_->counts[kind]++;
    if (kind == kWrite) {
      ++outcome_->counts[kShort];
      NoteFile(static_cast<int>(entry.argument[0]));
    }
    if (IsChange(entry, kind)) {
      if (watcher_) watcher_();
      if (fault_.what == Fault::kKill && outcome_->changes == fault_.at) {
        outcome_->reached = true;
        ::kill(child_, SIGKILL);
        return true;
      }
      ++outcome_->changes;
    }
    if (fault_.what != Fault::kRefuse) return false;
    const bool isShort = fault_.kind == kShort && kind == kWrite;
    if (kind != fault_.kind && !isShort) return false;
    // A lock that somebody holds stays held, and a full disk full.
    const bool now = seen == fault_.at || (seen > fault_.at && (kind == kLock || isShort));
    if (!now) return false;
    outcome_->reached = true;
    if (isShort && seen == fault_.at) {
      SetRegister(child_, [](user_regs_struct* r) { r->rdx = (r->rdx + 1) / 2; });
      return false;
    }
    error_ = kRefusals[fault_.kind].error;
    if (kind != kClose) {  // which has closed, whatever it says
      SetRegister(child_,
                  [](user_regs_struct* r) { r->orig_rax = static_cast<unsigned long>(-1); });
    }
    return false;
  }

  void Leave() {
    if (error_ == 0) return;
    SetRegister(child_,
                [this](user_regs_struct* r) { r->rax = static_cast<unsigned long>(-error_); });
    error_ = 0;
  }

  void NoteFile(int fd) {
    std::error_code gone;
    outcome_->written.insert(
        fs::read_symlink("/proc/" + std::to_string(child_) + "/fd/" + std::to_string(fd), gone));
  }

  pid_t child_;
  const Fault& fault_;
  const std::function<void()>& watcher_;
  Outcome* outcome_;
  int signal_ = 0;
  int error_ = 0;
};

// ---- what a call leaves

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

// Until the child stops by itself or ends; its status. Signals are passed on.
int LetRun(pid_t child) {
  int status = 0;
  for (int signal = 0;; signal = WSTOPSIG(status)) {
    ::ptrace(PTRACE_CONT, child, nullptr, signal);
    if (::waitpid(child, &status, 0) != child || !WIFSTOPPED(status)) return status;
    if (WSTOPSIG(status) == SIGSTOP) return status;
  }
}

void ReapAll() {
  ::alarm(kLongestSeconds);
  while (::waitpid(-1, nullptr, 0) > 0) {
  }
  ::alarm(0);
}

void Read(const Report& report, bool holdsALock, Outcome* outcome) {
  outcome->ended = true;
  outcome->result = report.result;
  outcome->code = report.code;
  outcome->microseconds = report.microseconds;
  outcome->reached = outcome->reached || report.refused;
  if (report.descriptors != 0) outcome->left += " descriptors";
  if (report.childLeft) outcome->left += " a child";
  if (holdsALock) outcome->left += " a lock";
}

}  // namespace

const char* NameOf(Kind kind) {
  return kRefusals[kind].name;
}

Outcome Call(const std::function<int()>& call, const Fault& fault,
             const std::function<void()>& watcher) {
  Outcome outcome;
  Shared();
  const pid_t child = ::fork();
  if (child == 0) BeChild(call, fault);
  int status = 0;
  ::waitpid(child, &status, 0);
  ::ptrace(PTRACE_SETOPTIONS, child, nullptr, PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL);
  if (fault.what == Fault::kMemory || fault.what == Fault::kAllMemory) {
    status = LetRun(child);
  } else if (fault.what == Fault::kKillLater) {
    ::ptrace(PTRACE_DETACH, child, nullptr, nullptr);
    ::usleep(static_cast<useconds_t>(fault.at));
    ::kill(child, SIGKILL);
    ::waitpid(child, &status, 0);
    outcome.reached = true;
  } else {
    status = Tracer(child, fault, watcher, &outcome).Follow();
  }
  if (WIFSTOPPED(status) && WSTOPSIG(status) == SIGSTOP) {
    const bool holdsALock = HoldsALock();
    status = LetRun(child);
    Read(Shared(), holdsALock, &outcome);
  }
  outcome.reached = outcome.reached || !outcome.ended;
  if (WIFSIGNALED(status) && WTERMSIG(status) != SIGKILL) {
    outcome.left +=
        WTERMSIG(status) == SIGALRM ? " hangs" : " signal " + std::to_string(WTERMSIG(status));
  }
  ReapAll();
  return outcome;
}

}  // namespace torture
