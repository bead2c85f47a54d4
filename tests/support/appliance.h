// SPDX-License-Identifier: Apache-2.0
// What a test says to and asks of the appliance that it runs in: files, programs, events, the log.
#pragma once

#include <gtest/gtest.h>
#include <string>
#include <string_view>
#include <sys/resource.h>
#include <syslog.h>
#include <vector>

#include <zarncore/zarncore.h>

namespace test {

using Lines = std::vector<std::string>;

// ---- files; folders on the way to a file are made
void WriteFile(const std::string& path, std::string_view text, int mode = 0644);
std::string ReadFile(const std::string& path);  // empty when there is none
bool FileExists(const std::string& path);
int FileMode(const std::string& path);         // permission bits, -1 without the file
Lines FolderEntries(const std::string& path);  // sorted
void RemoveFile(const std::string& path);
// Hides a folder behind an empty one of at most this size (kernel tables of one's own).
void MountEmpty(const std::string& path, const std::string& size = "1m");

std::string IfcfgPath(const std::string& ifname);
void WriteIfcfg(const std::string& ifname, std::string_view text);
std::string ReadIfcfg(const std::string& ifname);

// ---- programs
// Puts a program in place that writes down how it is called, prints the output and ends with the
// status.
void RecordTool(const std::string& path, int status = 0, std::string_view output = "");
// The calls of recorded programs in order: path and arguments joined by blanks.
Lines RecordedCalls();
// Runs a real command line in the appliance; its output, standard error included.
std::string Shell(const std::string& command);

// Brings an interface up and waits until it has carrier, which the kernel tells a moment later.
void BringUp(const std::string& ifname);

// ---- events that the recorder plugin received, one line a stage
Lines Events();

// ---- the log of this process
struct LogLine {
  int priority;
  std::string text;
};
std::vector<LogLine>& Log();
// How many lines of this priority read exactly so behind their "source:line " or "function(line) "
// prefix?
int LogCount(int priority, std::string_view source, std::string_view message);
// One line of this priority reads so, or as many as are named.
void ExpectLog(int priority, std::string_view source, std::string_view message, int count = 1);
// All lines. A failing test prints them by itself.
std::string LogText();

// What forked children of this process logged, a line each: the priority and the text.
std::string ChildLog();

// Log lines, sleeps and what was set in the kernel, in order, also of children.
inline constexpr char kJournal[] = "/run/journal";
void Journal(const std::string& line);

// Another process that holds a lock class until this object goes; this process's clock runs a
// hundred times as fast until then.
class LockHolder {
 public:
  explicit LockHolder(int classAndMode);
  ~LockHolder();
  LockHolder(const LockHolder&) = delete;
  LockHolder& operator=(const LockHolder&) = delete;

 private:
  int pid_;
};

// ---- sleeps are noted and not slept
long SleptMilliseconds();
// From now on they are slept: for a kernel that needs its time.
void SleepForReal();
// From now on a sleep of seconds ends when a child of this process has ended.
void SleepUntilAChildEnds();

// ---- the core library's lists
Lines Items(const KOPACSZLIST* list);

class List {
 public:
  List(const Lines& texts = {});
  ~List() { KOPACSzListFree(list_); }
  List(const List&) = delete;
  List& operator=(const List&) = delete;
  operator PKOPACSZLIST() const { return list_; }
  PKOPACSZLIST* Out() { return &list_; }
  [[nodiscard]] Lines Texts() const { return Items(list_); }

 private:
  PKOPACSZLIST list_;
};

// While it lives no file and no socket can be opened.
struct NoDescriptors {
  NoDescriptors();
  ~NoDescriptors() { ::setrlimit(RLIMIT_NOFILE, &before); }
  rlimit before{};
};

inline bool Contains(std::string_view text, std::string_view part) {
  return text.find(part) != std::string_view::npos;
}

// ---- refusals
// The call fails with this result and this code.
template <class Call>
void Refused(int code, Call call, int result = -1) {
  KOPACErrSetEx(0, "", 0);
  const bool refused = call() == result && KOPACErrGet() == code;
  EXPECT_TRUE(refused) << "code " << std::hex << KOPACErrGet() << " in place of " << code;
}
#define REFUSED(code, call) ::test::Refused(code, [&] { return call; })

}  // namespace test
