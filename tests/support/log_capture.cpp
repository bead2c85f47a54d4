// SPDX-License-Identifier: Apache-2.0
// Takes the place of the C library's syslog, usleep and sleep in a test program: lines are kept
// and sleeps are noted.
#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <ctime>
#include <fcntl.h>
#include <mutex>
#include <poll.h>
#include <sys/wait.h>
#include <syslog.h>
#include <unistd.h>

#include "support/appliance.h"

namespace {

const char kChildLog[] = "/run/child-log";

std::mutex mutex;
long slept = 0;
bool forReal = false;
bool untilChildEnds = false;
const pid_t owner = ::getpid();

void Append(const char* path, const std::string& line) {
  const int fd = ::open(path, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
  static_cast<void>(!::write(fd, line.data(), line.size()));
  ::close(fd);
}

void AddSleep(long milliseconds) {
  slept += milliseconds;
  test::Journal("slept " + std::to_string(milliseconds));
}

void Keep(int priority, const char* format, va_list args) {
  char text[4096];
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
  std::vsnprintf(text, sizeof text, format, args);
#pragma GCC diagnostic pop
  const std::string line = std::to_string(LOG_PRI(priority)) + " " + text;
  test::Journal("log " + line);
  // What a child logs is lost with its memory.
  if (::getpid() != owner) return Append(kChildLog, line + "\n");
  const std::lock_guard guard(mutex);
  test::Log().push_back({LOG_PRI(priority), text});
}

// "net_set_ip:83 text" or "name(83) text": the source or function, and the text.
bool Matches(std::string_view line, std::string_view source, std::string_view message) {
  if (line.size() < source.size() + message.size()) return false;
  const std::string_view place =
      line.substr(source.size(), line.size() - source.size() - message.size());
  return line.starts_with(source) && line.ends_with(message) && place.empty() == source.empty() &&
         place.find_first_not_of("0123456789:() ") == std::string_view::npos;
}

}  // namespace

// Visible to the platform libraries too, which log and wait for themselves.
#pragma GCC visibility push(default)
extern "C" {

void syslog(int priority, const char* format, ...) {
  va_list args;
  va_start(args, format);
  Keep(priority, format, args);
  va_end(args);
}

void __syslog_chk(int priority, int, const char* format, ...) {
  va_list args;
  va_start(args, format);
  Keep(priority, format, args);
  va_end(args);
}

int usleep(useconds_t microseconds) {
  AddSleep(static_cast<long>(microseconds) / 1000);
  if (forReal) ::poll(nullptr, 0, static_cast<int>(microseconds / 1000));
  return 0;
}

unsigned int sleep(unsigned int seconds) {
  AddSleep(1000L * seconds);
  ::poll(nullptr, 0, 5);  // whoever is waited for gets a moment of real time
  siginfo_t child{};
  if (untilChildEnds) ::waitid(P_ALL, 0, &child, WEXITED | WNOWAIT);
  return 0;
}

}  // extern "C"
#pragma GCC visibility pop

namespace test {

std::vector<LogLine>& Log() {
  static std::vector<LogLine> lines;
  return lines;
}

int LogCount(int priority, std::string_view source, std::string_view message) {
  const auto& lines = Log();
  return static_cast<int>(std::count_if(lines.begin(), lines.end(), [&](const LogLine& line) {
    return line.priority == priority && Matches(line.text, source, message);
  }));
}

std::string LogText() {
  std::string text;
  for (const LogLine& line : Log())
    text += std::to_string(line.priority) + " " + line.text + "\n";
  return text;
}

long SleptMilliseconds() {
  return slept;
}
void SleepForReal() {
  forReal = true;
}
void SleepUntilAChildEnds() {
  untilChildEnds = true;
}

std::string ChildLog() {
  return ReadFile(kChildLog);
}

// A message's own newlines do not end its line here.
void Journal(const std::string& line) {
  std::string text;
  for (const char c : line)
    c == '\n' ? text += "\\n" : text += c;
  Append(kJournal, text + "\n");
}

}  // namespace test
