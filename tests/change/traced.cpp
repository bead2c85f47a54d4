// SPDX-License-Identifier: Apache-2.0
#include "traced.h"

#include <csignal>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

namespace test {
namespace {

const std::set<std::string> kRun{"ip",     "ifconfig", "route", "mkdir",      "sed",
                                 "ipcalc", "cp",       "mv",    "rc.network", "dnsmasq"};
const std::set<std::string> kAnswered{
    "zarnfirewall", "tctool",      "start",        "stop",     "initctl",     "restart",
    "reload",       "status",      "arping",       "dhclient", "pppoe-start", "pppoe-stop",
    "pppoe-status", "pppoe-relay", "zarnnetdtool", "rc.tun",   "gogoc",       "ddnsd"};

// From where a process was started.
struct Origin {
  std::string within;
  bool hidden = false;  // by a program that a plan answers
};

// A script's interpreter is left out.
std::vector<std::string> WordsOf(pid_t pid) {
  std::ifstream file("/proc/" + std::to_string(pid) + "/cmdline", std::ios::binary);
  std::vector<std::string> words;
  for (std::string word; std::getline(file, word, '\0');)
    words.push_back(word);
  const bool script = words.size() > 1 && words[1].starts_with("/") &&
                      (words[0].ends_with("/sh") || words[0].ends_with("/bash"));
  if (script) words.erase(words.begin());
  return words;
}

class Tracer {
 public:
  explicit Tracer(pid_t first) : first_(first) { origins_[first]; }

  std::vector<Call> Follow(int* result) {
    constexpr int kEvents = PTRACE_O_TRACEFORK | PTRACE_O_TRACEVFORK | PTRACE_O_TRACECLONE |
                            PTRACE_O_TRACEEXEC | PTRACE_O_EXITKILL;
    int status = 0;
    ::waitpid(first_, &status, 0);
    ::ptrace(PTRACE_SETOPTIONS, first_, nullptr, kEvents);
    ::ptrace(PTRACE_CONT, first_, nullptr, nullptr);
    for (pid_t pid = 0; (pid = ::waitpid(-1, &status, __WALL)) > 0;) {
      if (WIFSTOPPED(status)) {
        Stopped(pid, status);
      } else if (pid == first_) {
        *result = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
      }
    }
    return std::move(calls_);
  }

 private:
  void Stopped(pid_t pid, int status) {
    const int event = status >> 16;
    int signal = event == 0 ? WSTOPSIG(status) : 0;
    if (event == PTRACE_EVENT_EXEC) {
      Executed(pid);
    } else if (event != 0) {
      unsigned long child = 0;
      ::ptrace(PTRACE_GETEVENTMSG, pid, nullptr, &child);
      origins_[static_cast<pid_t>(child)] = origins_[pid];
      if (early_.erase(static_cast<pid_t>(child)) > 0)
        ::ptrace(PTRACE_CONT, child, nullptr, nullptr);
    } else if (signal == SIGSTOP) {
      signal = 0;  // which begins every new process
      if (!origins_.contains(pid)) {
        early_.insert(pid);  // its parent has not told of it yet
        return;
      }
    }
    // What such a program does is its own, and what it leaves running must not be held up.
    ::ptrace(origins_[pid].hidden ? PTRACE_DETACH : PTRACE_CONT, pid, nullptr, signal);
  }

  void Executed(pid_t pid) {
    Origin& origin = origins_[pid];
    auto words = WordsOf(pid);
    if (words.empty() || origin.hidden) return;
    const std::string name = std::filesystem::path(words.front()).filename();
    // What is tried in a private copy of the machine is not done.
    origin.hidden = kAnswered.contains(name) || name == "zarnnet-rehearsal";
    if (!kAnswered.contains(name) && !kRun.contains(name)) return;
    Call call{origin.within, name};
    for (std::size_t i = 1; i < words.size(); ++i)
      call.words += " " + words[i];
    calls_.push_back(std::move(call));
    if (origin.within.empty()) origin.within = name;
  }

  pid_t first_;
  std::map<pid_t, Origin> origins_;
  std::set<pid_t> early_;
  std::vector<Call> calls_;
};

}  // namespace

std::vector<Call> TraceCalls(const std::function<int()>& call, int* result) {
  const pid_t child = ::fork();
  if (child == 0) {
    ::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
    ::raise(SIGSTOP);
    ::_exit(call());
  }
  return Tracer(child).Follow(result);
}

}  // namespace test
