// Running programs: by absolute path and argument vector, with nothing of the caller's but its
// environment.
#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <map>
#include <memory>
#include <mutex>
#include <new>
#include <pthread.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include <zarncore/zarncore.h>

#include "child.h"
#include "descriptor.h"

extern char** environ;

namespace {

using zarncore::ChildSetup;
using zarncore::Descriptor;

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

// The caller's environment, with a PATH in any case.
class Environment {
 public:
  Environment() {
    if (::getenv("PATH") != nullptr) return;
    for (char** variable = environ; variable != nullptr && *variable != nullptr; ++variable) {
      variables_.push_back(*variable);
    }
    variables_.push_back(const_cast<char*>(zarncore::kDefaultPath));
    variables_.push_back(nullptr);
  }
  [[nodiscard]] char* const* Get() const {
    return variables_.empty() ? environ : variables_.data();
  }

 private:
  std::vector<char*> variables_;
};

int StartAndWait(const char* path, const char* const argv[], char* const environment[]) {
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
int RunBetween(const char* path, const char* const argv[], char* const environment[]) {
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

int RunAndWait(const char* path, const char* const argv[]) {
  const Environment environment;
  return StatusMayBeTaken() ? RunBetween(path, argv, environment.Get())
                            : StartAndWait(path, argv, environment.Get());
}

// Children that nobody waits for: those that have ended are reaped when the next one is started.
void ReapLater(pid_t child) {
  static std::mutex mutex;
  static auto* const children = new std::vector<pid_t>;
  const std::lock_guard guard(mutex);
  std::erase_if(*children, [](pid_t other) { return ::waitpid(other, nullptr, WNOHANG) != 0; });
  children->push_back(child);
}

// A null-ended argument list behind the program's name.
std::vector<const char*> ArgumentVector(const char* path, va_list args) {
  std::vector<const char*> argv{path};
  while (const char* const arg = va_arg(args, const char*))
    argv.push_back(arg);
  argv.push_back(nullptr);
  return argv;
}

// Which program writes to a stream of KOPACPopen().
struct Streams {
  std::mutex mutex;
  std::map<FILE*, pid_t> children;

  static Streams& Instance() {
    static auto* const streams = new Streams;
    return *streams;
  }
};

// Not below the three standard streams, which the child's own set-up writes over.
Descriptor AboveStandardStreams(Descriptor fd) {
  if (!fd || fd.Get() > STDERR_FILENO) return fd;
  return Descriptor(::fcntl(fd.Get(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
}

}  // namespace

int KOPACExec(const char* szPath, const char* szArg1, const char* szArg2, const char* szArg3,
              const char* szArg4) try {
  if (!IsAbsolute(szPath)) return -1;
  const char* const argv[] = {szPath, szArg1, szArg2, szArg3, szArg4, nullptr};
  return RunAndWait(szPath, argv);
} catch (...) {
  return -1;
}

int KOPACExecl(const char* szPath, int options, ...) try {
  if (!IsAbsolute(szPath)) return -1;
  va_list args;
  va_start(args, options);
  const std::vector<const char*> argv = ArgumentVector(szPath, args);
  va_end(args);
  const int status = RunAndWait(szPath, argv.data());
  return options == kRefusalIsNegative && status > 0 ? -status : status;
} catch (...) {
  return -1;
}

int KOPACExecv(const char* szPath, const char* const argv[], int blWait) try {
  if (!IsAbsolute(szPath) || argv == nullptr || argv[0] == nullptr) return -1;
  if (blWait != 0) return RunAndWait(szPath, argv);
  const pid_t child = ChildSetup().Start(szPath, argv, Environment().Get());
  if (child < 0) return -1;
  ReapLater(child);
  return 0;
} catch (...) {
  return -1;
}

FILE* KOPACPopen(const char* szPath, const char* szMode, ...) try {
  if (!IsAbsolute(szPath) || szMode == nullptr || std::strcmp(szMode, "r") != 0) return nullptr;
  va_list args;
  va_start(args, szMode);
  const std::vector<const char*> argv = ArgumentVector(szPath, args);
  va_end(args);
  int ends[2];
  if (::pipe2(ends, O_CLOEXEC) != 0) return nullptr;
  Descriptor readEnd(ends[0]);
  const Descriptor writeEnd = AboveStandardStreams(Descriptor(ends[1]));
  if (!writeEnd) return nullptr;
  const pid_t child = ChildSetup(writeEnd.Get()).Start(szPath, argv.data(), Environment().Get());
  if (child < 0) return nullptr;
  FILE* const stream = ::fdopen(readEnd.Get(), "r");
  if (stream == nullptr) {
    ReapLater(child);
    return nullptr;
  }
  static_cast<void>(readEnd.Release());
  Streams& streams = Streams::Instance();
  const std::lock_guard guard(streams.mutex);
  streams.children[stream] = child;
  return stream;
} catch (...) {
  return nullptr;
}

int KOPACPclose(FILE* fp) {
  if (fp == nullptr) return -1;
  pid_t child = -1;
  {
    Streams& streams = Streams::Instance();
    const std::lock_guard guard(streams.mutex);
    const auto found = streams.children.find(fp);
    if (found == streams.children.end()) return -1;
    child = found->second;
    streams.children.erase(found);
  }
  std::fclose(fp);
  return WaitFor(child);
}
