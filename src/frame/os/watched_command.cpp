// SPDX-License-Identifier: Apache-2.0
// A program that may take longer than its caller wants to wait. Between the two there are two
// processes: the worker runs the program and tidies up, and the watcher, which is the caller's
// child, waits for the worker. A caller that has waited long enough ends the watcher, and the
// worker goes on as a child of the system's first process. Behind fork() there are system calls
// only.
#include "frame/os/watched_command.h"

#include <array>
#include <cerrno>
#include <climits>
#include <csignal>
#include <fcntl.h>
#include <sys/wait.h>

namespace frame {
namespace {

constexpr char kTellDone = 'd';
constexpr char kTellFailed = 'f';

struct Task {
  const char* path;
  const char* argument;
  const char* leftover;
  int tell;
};

// Who asks the caller's group to end must not stop the tidying up. What a program inherits of it is
// undone for the program.
void HoldSignals() {
  sigset_t all;
  ::sigfillset(&all);
  ::sigprocmask(SIG_BLOCK, &all, nullptr);
}

void ResetSignals() {
  struct sigaction byDefault {};
  byDefault.sa_handler = SIG_DFL;  // NOLINT(cppcoreguidelines-pro-type-union-access)
  for (int number = 1; number < NSIG; ++number)
    ::sigaction(number, &byDefault, nullptr);  // refused for those that cannot be caught
  sigset_t none;
  ::sigemptyset(&none);
  ::sigprocmask(SIG_SETMASK, &none, nullptr);
}

// Whoever reads the caller's output to its end must not wait for a program that hangs.
void LetGoOfStreams() {
  const int null = ::open("/dev/null", O_RDWR | O_CLOEXEC);
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
    ::dup2(null, stream);
}

// 0 when it ended well, -1 for any other end.
int WaitFor(pid_t child) {
  int status = 0;
  while (::waitpid(child, &status, 0) < 0) {
    if (errno != EINTR) return -1;
  }
  return WIFEXITED(status) && WEXITSTATUS(status) == 0 ? 0 : -1;
}

[[noreturn]] void BeProgram(const Task& task) {
  ResetSignals();
  ::close_range(STDERR_FILENO + 1, UINT_MAX, 0);
  const char* const argv[] = {task.path, task.argument, nullptr};
  ::execv(task.path, const_cast<char* const*>(argv));  // which changes none of them
  constexpr int kNotStarted = 127;
  ::_exit(kNotStarted);
}

[[noreturn]] void BeWorker(const Task& task) {
  const pid_t program = ::fork();
  if (program == 0) BeProgram(task);
  const bool done = program > 0 && WaitFor(program) == 0;
  ::unlink(task.leftover);  // mostly it is there
  const char told = done ? kTellDone : kTellFailed;
  static_cast<void>(!::write(task.tell, &told, 1));  // nobody may be left to read it
  ::_exit(0);
}

[[noreturn]] void BeWatcher(const Task& task) {
  HoldSignals();
  LetGoOfStreams();
  if (task.path != nullptr) {
    const pid_t worker = ::fork();
    if (worker == 0) BeWorker(task);
    if (worker < 0 || WaitFor(worker) < 0) ::unlink(task.leftover);  // it could not do so itself
  }
  ::_exit(0);
}

}  // namespace

bool WatchedCommand::Start(const char* path, const char* argument, const char* leftover) {
  std::array<int, 2> ends{};
  if (::pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK) != 0) return false;
  Descriptor told(ends[0]);
  const Descriptor tell(ends[1]);
  watcher_ = ::fork();
  if (watcher_ == 0) BeWatcher({path, argument, leftover, tell.Get()});
  told_ = std::move(told);
  return watcher_ > 0;
}

WatchedCommand::~WatchedCommand() {
  if (watcher_ <= 0) return;
  ::kill(watcher_, SIGKILL);
  while (::waitpid(watcher_, nullptr, 0) < 0 && errno == EINTR) {
  }
}

// In a caller that ignores its children the watcher is nobody's once it has ended.
bool WatchedCommand::HasEnded() {
  if (watcher_ > 0 && ::waitpid(watcher_, nullptr, WNOHANG) != 0) watcher_ = -1;
  return watcher_ <= 0;
}

WatchedCommand::Outcome WatchedCommand::HowItEnded() const {
  char told = 0;
  if (::read(told_.Get(), &told, 1) != 1) return Outcome::kUnknown;
  return told == kTellDone ? Outcome::kDone : Outcome::kFailed;
}

}  // namespace frame
