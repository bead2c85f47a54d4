// SPDX-License-Identifier: Apache-2.0
// Stands over each program in the private copy of a machine: notes the call, then runs the real
// one, or answers in its place when that one would reach out of the copy. Under the name of a
// process that the machine has, it stands in for it until it is ended.
#include <algorithm>
#include <array>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <functional>
#include <iostream>
#include <iterator>
#include <signal.h>
#include <string_view>
#include <sys/auxv.h>
#include <sys/wait.h>

#include "program/stand_in.h"

using rehearsal::Fields;

namespace {

std::string BaseOf(const std::string& path) {
  return path.substr(path.rfind('/') + 1);
}

// Links on the way to a program lead to one folder; the program's own name decides what it is.
std::string Canonical(const std::string& path) {
  char folder[PATH_MAX];
  const std::size_t slash = path.rfind('/');
  if (slash == std::string::npos || ::realpath(path.substr(0, slash).c_str(), folder) == nullptr)
    return path;
  return std::string(folder) + path.substr(slash);
}

struct Program {
  bool inside = false;
  std::string real;
};

// One that is called by another name than is known is a part of the same file, and runs unnoted.
bool Find(const std::string& path, Program* program) {
  char own[PATH_MAX] = "";
  const std::string called = Canonical(path);
  if (::readlink("/proc/self/exe", own, sizeof own - 1) < 0) return false;
  std::ifstream table(rehearsal::kPrograms);
  bool known = false;
  for (std::string name, how, real; !known && std::getline(table, name, '\t') &&
                                    std::getline(table, how, '\t') && std::getline(table, real);) {
    known = name == called;
    const bool same = Canonical(name) == own || BaseOf(real) == BaseOf(own);
    if (known || same) *program = {how == "inside", real};
  }
  return known;
}

// ---- processes

Fields ArgumentsOf(const std::string& process) {
  std::ifstream file("/proc/" + process + "/cmdline", std::ios::binary);
  Fields arguments;
  for (std::string argument; std::getline(file, argument, '\0');)
    arguments.push_back(argument);
  return arguments;
}

// How many there were.
int EndAll(const std::function<bool(const Fields&)>& isMeant) {
  int count = 0;
  DIR* const folder = ::opendir("/proc");
  for (const dirent* entry = nullptr;
       folder != nullptr && (entry = ::readdir(folder)) != nullptr;) {
    const pid_t pid = std::atoi(entry->d_name);
    if (pid > 1 && pid != ::getpid() && isMeant(ArgumentsOf(entry->d_name)))
      count += ::kill(pid, SIGTERM) == 0 ? 1 : 0;
  }
  if (folder != nullptr) ::closedir(folder);
  return count;
}

bool HasName(const Fields& arguments, std::string_view name) {
  for (std::size_t i = 0; i < arguments.size() && i < 2; ++i) {
    if (BaseOf(arguments[i]) == name) return true;
  }
  return false;
}

// ---- answers

constexpr char kDhclient[] = "/usr/sbin/dhclient";
constexpr char kServer[] = "dnsmasq";
constexpr char kServerJob[] = "dhcp-server";

int EndNamed(const std::string& name) {
  return EndAll([&](const Fields& arguments) { return HasName(arguments, name); });
}

bool IsDhcpClient(const std::string& job) {
  return job == "dhcp-client" || job == "dhcp-client6";
}

bool IsClientOf(const Fields& arguments, bool v6, const std::string& ifname) {
  bool has6 = false;
  for (const std::string& argument : arguments)
    has6 = has6 || argument == "-6";
  return HasName(arguments, "dhclient") && has6 == v6 && arguments.back() == ifname;
}

// start JOB [VARIABLE=value...]: a job whose state is known answers as it would.
int AnswerJob(const Fields& words) {
  std::string verb;
  std::string job;
  std::string instance;
  for (const std::string& word : words) {
    if (word.starts_with("-")) continue;
    if (verb.empty()) {
      verb = word;
    } else if (job.empty()) {
      job = word;
    } else if (instance.empty()) {
      instance = word.substr(word.find('=') + 1);
    }
  }
  const std::string mark = rehearsal::kJobs + job + (instance.empty() ? "" : "-" + instance);
  const bool runs = ::access(mark.c_str(), F_OK) == 0;
  const bool v6 = job == "dhcp-client6";
  if (verb == "status") {
    if (!runs && !instance.empty()) return 1;
    std::cout << job << (instance.empty() ? "" : " (" + instance + ")")
              << (runs ? " start/running, process 1\n" : " stop/waiting\n");
    return 0;
  }
  const bool stops = verb == "stop" || verb == "restart";
  if (verb == "reload" || stops) {
    if (!runs) return 1;
    if (stops && IsDhcpClient(job))
      EndAll([&](const Fields& arguments) { return IsClientOf(arguments, v6, instance); });
    if (stops && job == kServerJob) EndNamed(kServer);
    if (verb == "stop") ::unlink(mark.c_str());
    if (verb != "restart") return 0;
  }
  if (verb == "start" && runs) return 1;
  const std::ofstream made{mark};
  if (job == "dhcp-client") rehearsal::StandIn("dhclient", {kDhclient, instance});
  if (v6) rehearsal::StandIn("dhclient", {kDhclient, "-6", instance});
  if (job == kServerJob) rehearsal::StandIn(kServer, {kServer});
  return 0;
}

int Answer(const std::string& name, const Fields& arguments) {
  const std::string verb = arguments.size() > 1 ? arguments[1] : "";
  const Fields rest(arguments.begin() + 1, arguments.end());
  if (name == "initctl") return AnswerJob(rest);
  for (const char* job : {"start", "stop", "restart", "reload", "status"}) {
    if (name != job) continue;
    Fields words{name};
    words.insert(words.end(), rest.begin(), rest.end());
    return AnswerJob(words);
  }
  if (name == kServer) rehearsal::StandIn(name, arguments);
  if (name == "pppoe-start")
    rehearsal::StandIn("pppoe-connect", {"/bin/sh", "/usr/sbin/pppoe-connect"});
  if (name == "pppoe-stop") return EndNamed("pppoe-connect") > 0 ? 0 : 1;
  if (name == "pppoe-status") return 1;
  if (name == "pppoe-relay") rehearsal::StandIn(name, arguments);
  if (name == "rc.tun") {
    if (verb != "start") EndNamed("gogoc");
    if (verb == "start")
      rehearsal::StandIn("gogoc", {"/usr/bin/gogoc", "-f", "/etc/gogoc/gogoc.conf"});
  }
  return 0;
}

// ---- what the copy cannot show

// A driver that is not there yet would be loaded into the machine's own kernel, and the one for
// bonds makes a bond there at once.
bool LoadsBondDriver(const std::string& name, const Fields& arguments) {
  if (name != "ip" || ::access("/proc/net/bonding", F_OK) == 0) return false;
  for (std::size_t i = 1; i + 1 < arguments.size(); ++i) {
    if (arguments[i] == "type" && arguments[i + 1] == "bond") return true;
  }
  return false;
}

bool ChecksSettings(const std::string& name, const Fields& arguments) {
  return name == kServer &&
         std::find(arguments.begin(), arguments.end(), "--test") != arguments.end();
}

bool RunsInside(const std::string& name, const Program& program, const Fields& arguments) {
  return program.inside && (name != kServer || ChecksSettings(name, arguments));
}

// ---- the server's check

std::string ReadAll(int fd) {
  constexpr std::size_t kMost = 4096;
  std::string text;
  std::array<char, 512> block{};
  for (ssize_t length = 0; (length = ::read(fd, block.data(), block.size())) > 0;) {
    if (text.size() < kMost) text.append(block.data(), static_cast<std::size_t>(length));
  }
  return text;
}

// The settings are others again when what failed has been put back.
std::string SettingsIn(const Fields& arguments) {
  constexpr std::string_view kOption = "--conf-file=";
  for (const std::string& argument : arguments) {
    if (!argument.starts_with(kOption)) continue;
    std::ifstream file(argument.substr(kOption.size()));
    return {std::istreambuf_iterator<char>(file), {}};
  }
  return {};
}

// Runs it, and notes what it says to settings that it refuses.
int RunCheck(const std::string& real, const Fields& arguments, char** argv) {
  std::array<int, 2> ends{};
  if (::pipe(ends.data()) != 0) return 127;
  const pid_t child = ::fork();
  if (child == 0) {
    ::dup2(ends[1], STDOUT_FILENO);
    ::dup2(ends[1], STDERR_FILENO);
    ::close(ends[0]);
    ::close(ends[1]);
    ::execv(real.c_str(), argv);
    ::_exit(127);
  }
  ::close(ends[1]);
  const std::string words = ReadAll(ends[0]);
  int status = -1;
  ::waitpid(child, &status, 0);
  const bool taken = WIFEXITED(status) && WEXITSTATUS(status) == 0;
  if (!taken) rehearsal::Note({rehearsal::kRefusalRecord, words, SettingsIn(arguments)});
  std::cerr << words;
  return taken ? 0 : 1;
}

[[noreturn]] void StayUntilEnded() {
  for (;;)
    ::pause();
}

}  // namespace

int main(int argc, char** argv) {
  // The kernel gives addresses as numbers.
  const auto* const called =
      reinterpret_cast<const char*>(::getauxval(AT_EXECFN));  // NOLINT(performance-no-int-to-ptr)
  const std::string path = called != nullptr ? called : argv[0];
  if (path.starts_with(rehearsal::kStandIns)) StayUntilEnded();
  Fields arguments(argv, argv + argc);
  Program program;
  const bool known = Find(path, &program);
  const std::string name = BaseOf(path);
  const bool inside = RunsInside(name, program, arguments);
  const char* const within = ::getenv(rehearsal::kWithin);
  const bool answered = known && !inside;
  const int answer = answered ? Answer(name, arguments) : 0;
  if (known) {
    Fields record{rehearsal::kProgramRecord, rehearsal::Seconds(), within != nullptr ? within : "",
                  inside        ? "inside"
                  : answer == 0 ? "answered"
                                : "refused",
                  path};
    record.insert(record.end(), arguments.begin() + 1, arguments.end());
    rehearsal::Note(record);
  }
  if (answered) return answer;
  if (known && LoadsBondDriver(name, arguments)) {
    rehearsal::Note({rehearsal::kRemarkRecord, "bond",
                     "the kernel has not loaded its driver for bonds, and a plan loads none"});
    std::cerr << "Error: Unknown device type.\n";
    return 2;
  }
  if (within == nullptr && known) ::setenv(rehearsal::kWithin, name.c_str(), 1);
  if (ChecksSettings(name, arguments)) return RunCheck(program.real, arguments, argv);
  ::execv(program.real.c_str(), argv);
  std::cerr << path << ": " << std::strerror(errno) << '\n';
  return 127;
}
