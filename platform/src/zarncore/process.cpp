// SPDX-License-Identifier: Apache-2.0
// Running programs: by absolute path and argument vector, with nothing of the caller's but its
// environment.
#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <list>
#include <memory>
#include <mutex>
#include <new>
#include <pthread.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include <zarncore/zarncore.h>

#include "common/child.h"
#include "common/descriptor.h"
#include "common/error.h"

namespace {

using platform::ChildSetup;
using platform::Code;
using platform::CodeOf;
using platform::Descriptor;
using platform::Environment;
using platform::Fail;
using platform::FailNull;
using platform::Place;

// Callers that pass this option value test for a negative result.
constexpr int kRefusalIsNegative = 187;

// The exit status; -1 for an end by a signal, or when somebody else has taken the status.
int WaitFor(pid_t child) {
  int status = 0;
  while (::waitpid(child, &status, 0) < 0) {
    if (errno != EINTR) return -1;
  }
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

bool IsAbsolute(const char* path) {
  return path != nullptr && *path == '/';
}

int StartAndWait(const char* path, const char* const argv[], const Environment& environment) {
  const pid_t child = ChildSetup().Start(path, argv, environment);
  return child < 0 ? -1 : WaitFor(child);
}

// Does the caller ignore its children, or have a handler that may reap ours before we ask for its
// status?
bool StatusMayBeTaken() {
  struct sigaction action {};
  return ::sigaction(SIGCHLD, nullptr, &action) == 0 &&
         (action.sa_handler != SIG_DFL || (action.sa_flags & SA_NOCLDWAIT) != 0);
}

// What a go-between tells its caller, in memory that both have also where vfork() is a plain
// fork().
struct Outcome {
  int status;
  int error;
};

std::shared_ptr<Outcome> SharedOutcome() {
  void* const memory =
      ::mmap(nullptr, sizeof(Outcome), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) throw std::bad_alloc();
  return {new (memory) Outcome{-1, 0},
          [](Outcome* outcome) { ::munmap(outcome, sizeof *outcome); }};
}

// Starts and waits in a process between the caller and the program, which has none of the caller's
// children and signal settings: nobody else can take the status. Signals are held back, so that no
// handler of the caller's runs in there.
int RunBetween(const char* path, const char* const argv[], const Environment& environment) {
  const std::shared_ptr<Outcome> outcome = SharedOutcome();
  sigset_t all;
  sigset_t before;
  ::sigfillset(&all);
  ::pthread_sigmask(SIG_SETMASK, &all, &before);
  const pid_t between = ::vfork();
  if (between == 0) {
    ::signal(SIGCHLD, SIG_DFL);
    // Its copies of the caller's lock files would outlive a caller that is killed meanwhile.
    ::close_range(STDERR_FILENO + 1, ~0U, 0);
    outcome->status = StartAndWait(path, argv, environment);
    outcome->error = errno;
    ::_exit(0);
  }
  if (between < 0) outcome->error = errno;
  if (between > 0) static_cast<void>(WaitFor(between));  // reaped by somebody else is as good
  ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
  errno = outcome->error;
  return outcome->status;
}

// What is not 0 is a failure of the program's, or of its start.
int RunAndWait(const char* path, const char* const argv[], Place at = {}) {
  const Environment environment;
  errno = 0;
  const int status = StatusMayBeTaken() ? RunBetween(path, argv, environment)
                                        : StartAndWait(path, argv, environment);
  if (status != 0) Fail(CodeOf(Code::kProgram), at);
  return status;
}

// A started program that is yet to be waited for, and its stream, if it has one. Made as a list of
// one before the program is started: whatever memory does then, it is not lost.
struct Child {
  FILE* stream = nullptr;
  pid_t pid = -1;
};

class Children {
 public:
  static Children& Instance() {
    static auto* const children = new Children;
    return *children;
  }
  void Take(std::list<Child>* one) {
    const std::lock_guard guard(mutex_);
    // Those that nobody waits for are reaped when the next one is started.
    running_.remove_if([](const Child& child) {
      return child.stream == nullptr && ::waitpid(child.pid, nullptr, WNOHANG) != 0;
    });
    running_.splice(running_.end(), *one);
  }
  // The program that writes to a stream; -1 for a stream of another kind.
  pid_t GiveUp(FILE* stream) {
    const std::lock_guard guard(mutex_);
    const auto found = std::find_if(running_.begin(), running_.end(),
                                    [=](const Child& child) { return child.stream == stream; });
    if (found == running_.end()) return -1;
    const pid_t pid = found->pid;
    running_.erase(found);
    return pid;
  }

 private:
  std::mutex mutex_;
  std::list<Child> running_;
};

// Starts a program and does not wait. False with errno when it could not be started.
bool StartChild(const ChildSetup& setup, const char* path, const char* const argv[], FILE* stream) {
  Children& children = Children::Instance();
  const Environment environment;
  std::list<Child> one{{stream, -1}};
  one.front().pid = setup.Start(path, argv, environment);
  if (one.front().pid < 0) return false;
  children.Take(&one);
  return true;
}

// A null-ended argument list behind the program's name.
std::vector<const char*> ArgumentVector(const char* path, va_list args) {
  std::vector<const char*> argv{path};
  while (const char* const arg = va_arg(args, const char*))
    argv.push_back(arg);
  argv.push_back(nullptr);
  return argv;
}

// Not below the three standard streams, which the child's own set-up writes over.
Descriptor AboveStandardStreams(Descriptor fd) {
  if (!fd || fd.Get() > STDERR_FILENO) return fd;
  return Descriptor(::fcntl(fd.Get(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
}

using Stream = std::unique_ptr<FILE, int (*)(FILE*)>;

// A pipe: a stream to read from, and the end that is written to. Both, or errno.
struct Pipe {
  Stream stream{nullptr, std::fclose};
  Descriptor writeEnd;

  Pipe() {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) return;
    Descriptor readEnd(ends[0]);
    writeEnd = AboveStandardStreams(Descriptor(ends[1]));
    if (!writeEnd) return;
    stream.reset(::fdopen(readEnd.Get(), "r"));
    if (stream) static_cast<void>(readEnd.Release());
  }
};

}  // namespace

int KOPACExec(const char* szPath, const char* szArg1, const char* szArg2, const char* szArg3,
              const char* szArg4) try {
  if (!IsAbsolute(szPath)) return Fail(Code::kArgument);
  const char* const argv[] = {szPath, szArg1, szArg2, szArg3, szArg4, nullptr};
  return RunAndWait(szPath, argv);
} catch (...) {
  return Fail(Code::kMemory);
}

int KOPACExecl(const char* szPath, int options, ...) try {
  if (!IsAbsolute(szPath)) return Fail(Code::kArgument);
  va_list args;
  va_start(args, options);
  const std::vector<const char*> argv = ArgumentVector(szPath, args);
  va_end(args);
  const int status = RunAndWait(szPath, argv.data());
  return options == kRefusalIsNegative && status > 0 ? -status : status;
} catch (...) {
  return Fail(Code::kMemory);
}

int KOPACExecv(const char* szPath, const char* const argv[], int blWait) try {
  if (!IsAbsolute(szPath) || argv == nullptr || argv[0] == nullptr) return Fail(Code::kArgument);
  if (blWait != 0) return RunAndWait(szPath, argv);
  return StartChild(ChildSetup(), szPath, argv, nullptr) ? 0 : Fail(CodeOf(Code::kProgram));
} catch (...) {
  return Fail(Code::kMemory);
}

FILE* KOPACPopen(const char* szPath, const char* szMode, ...) try {
  if (!IsAbsolute(szPath) || szMode == nullptr || std::strcmp(szMode, "r") != 0)
    return FailNull(Code::kArgument);
  va_list args;
  va_start(args, szMode);
  const std::vector<const char*> argv = ArgumentVector(szPath, args);
  va_end(args);
  Pipe pipe;
  if (!pipe.stream) return FailNull(CodeOf(Code::kOpen));
  if (!StartChild(ChildSetup(pipe.writeEnd.Get()), szPath, argv.data(), pipe.stream.get()))
    return FailNull(CodeOf(Code::kProgram));
  return pipe.stream.release();
} catch (...) {
  return FailNull(Code::kMemory);
}

// A status above 0 is the program's own answer and no failure to have it.
int KOPACPclose(FILE* fp) {
  if (fp == nullptr) return Fail(Code::kArgument);
  const pid_t child = Children::Instance().GiveUp(fp);
  if (child < 0) return Fail(Code::kArgument);
  std::fclose(fp);
  const int status = WaitFor(child);
  return status >= 0 ? status : Fail(Code::kProgram);
}
