// SPDX-License-Identifier: Apache-2.0
#include "record/process.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <system_error>
#include <unistd.h>

#include "record/deadline.h"

namespace change {
namespace {

constexpr long long kMilliseconds = 1000;
constexpr long kFirst = 1;
using Group = std::map<long, Process>;

long long TickLength() {
  return kMilliseconds / ::sysconf(_SC_CLK_TCK);
}

Group ProcessesOf(const Runner& runner) {
  Group group;
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator("/proc", error)) {
    const std::string id = entry.path().filename();
    if (id.find_first_not_of("0123456789") != std::string::npos) continue;
    const auto process = ReadProcess(id);
    if (process && process->group == runner.group && process->state != 'Z')
      group[process->id] = *process;
  }
  return group;
}

// One whose nearest ancestor of before the change is the machine's first process, or none of the
// group, lost who started it: the script that called, and what else that script starts, have
// theirs.
bool IsLeftBehind(Process process, const Runner& runner, const Group& group) {
  const long long since = runner.since - TickLength();  // a start is told in ticks
  while (process.started >= since) {
    const auto parent = group.find(process.parent);
    if (process.parent == kFirst || parent == group.end()) return true;
    process = parent->second;
  }
  return false;
}

std::vector<std::string> ProgramsOf(const Runner& runner) {
  std::vector<std::string> programs;
  const Group group = ProcessesOf(runner);
  const std::vector<std::string> own = OwnLine();
  for (const auto& [id, process] : group) {
    const bool isOwn = std::find(own.begin(), own.end(), std::to_string(id)) != own.end();
    if (!isOwn && IsLeftBehind(process, runner, group))
      programs.push_back(process.name + " (process " + std::to_string(id) + ")");
  }
  return programs;
}

}  // namespace

std::optional<Process> ReadProcess(const std::string& id) {
  std::ifstream file("/proc/" + id + "/stat");
  std::string text;
  std::getline(file, text);
  const std::size_t begin = text.find('(');
  const std::size_t end = text.rfind(')');  // a program's name may hold anything
  if (begin == std::string::npos || end == std::string::npos) return std::nullopt;
  Process process;
  process.id = std::stol(text);
  process.name = text.substr(begin + 1, end - begin - 1);
  std::istringstream rest(text.substr(end + 1));
  rest >> process.state >> process.parent >> process.group;
  constexpr int kBetween = 16;  // from the session to what starts anew each second
  std::string word;
  for (int i = 0; i < kBetween; ++i)
    rest >> word;
  if (!(rest >> process.started)) return std::nullopt;
  process.started *= TickLength();
  return process;
}

std::vector<std::string> OwnLine() {
  constexpr std::size_t kDeepest = 64;
  std::vector<std::string> ids{std::to_string(::getpid())};
  while (ids.size() < kDeepest) {
    const auto process = ReadProcess(ids.back());
    if (!process || process->parent == 0) break;
    ids.push_back(std::to_string(process->parent));
  }
  return ids;
}

Runner ThisRunner() {
  return {::getpgrp(), MillisecondsOfThisRun()};
}

std::vector<std::string> AwaitProgramsOf(const Runner& runner) {
  constexpr long long kLongest = 60 * kMilliseconds;
  constexpr useconds_t kPause = 20000;
  if (runner.since == 0) return {};
  const long long end = MillisecondsOfThisRun() + kLongest;
  std::vector<std::string> programs = ProgramsOf(runner);
  for (; !programs.empty() && MillisecondsOfThisRun() < end; programs = ProgramsOf(runner))
    ::usleep(kPause);
  return programs;
}

}  // namespace change
