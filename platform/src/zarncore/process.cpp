// Running programs: by absolute path and argument vector, with nothing of the caller's but its environment.
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>
#include <zarncore/zarncore.h>

#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstring>
#include <map>
#include <mutex>
#include <vector>

#include "descriptor.h"

extern char** environ;

namespace {

using zarncore::Descriptor;

constexpr char kNull[] = "/dev/null";
// Callers that pass this option value test for a negative result.
constexpr int kRefusalIsNegative = 187;

// What a child starts with: default signals, none blocked, no descriptor but the first three.
class SpawnSetup {
 public:
  explicit SpawnSetup(int output) {
    ::posix_spawn_file_actions_init(&actions_);
    ::posix_spawn_file_actions_addopen(&actions_, STDIN_FILENO, kNull, O_RDONLY, 0);
    if (output >= 0) {
      ::posix_spawn_file_actions_adddup2(&actions_, output, STDOUT_FILENO);
    } else {
      ::posix_spawn_file_actions_addopen(&actions_, STDOUT_FILENO, kNull, O_WRONLY, 0);
    }
    ::posix_spawn_file_actions_addopen(&actions_, STDERR_FILENO, kNull, O_WRONLY, 0);
    ::posix_spawn_file_actions_addclosefrom_np(&actions_, STDERR_FILENO + 1);
    ::posix_spawnattr_init(&attributes_);
    sigset_t signals;
    ::sigemptyset(&signals);
    ::posix_spawnattr_setsigmask(&attributes_, &signals);
    ::sigfillset(&signals);
    ::posix_spawnattr_setsigdefault(&attributes_, &signals);
    ::posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
  }
  ~SpawnSetup() {
    ::posix_spawn_file_actions_destroy(&actions_);
    ::posix_spawnattr_destroy(&attributes_);
  }
  SpawnSetup(const SpawnSetup&) = delete;
  SpawnSetup& operator=(const SpawnSetup&) = delete;

  // The child's process id, or -1 with errno.
  pid_t Start(const char* path, const char* const argv[]) {
    pid_t child = -1;
    const int error =
        ::posix_spawn(&child, path, &actions_, &attributes_, const_cast<char* const*>(argv), environ);
    if (error == 0) return child;
    errno = error;
    return -1;
  }

 private:
  posix_spawn_file_actions_t actions_;
  posix_spawnattr_t attributes_;
};

// The exit status; -1 for an end by a signal, and for a caller that has its children reaped by the kernel.
int WaitFor(pid_t child) {
  int status = 0;
  while (::waitpid(child, &status, 0) < 0) {
    if (errno != EINTR) return -1;
  }
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

bool IsAbsolute(const char* path) { return path != nullptr && *path == '/'; }

int RunAndWait(const char* path, const char* const argv[]) {
  const pid_t child = SpawnSetup(-1).Start(path, argv);
  return child < 0 ? -1 : WaitFor(child);
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
  while (const char* const arg = va_arg(args, const char*)) argv.push_back(arg);
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
              const char* szArg4) {
  if (!IsAbsolute(szPath)) return -1;
  const char* const argv[] = {szPath, szArg1, szArg2, szArg3, szArg4, nullptr};
  return RunAndWait(szPath, argv);
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
  const pid_t child = SpawnSetup(-1).Start(szPath, argv);
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
  const pid_t child = SpawnSetup(writeEnd.Get()).Start(szPath, argv.data());
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
