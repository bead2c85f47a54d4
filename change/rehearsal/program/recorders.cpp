// SPDX-License-Identifier: Apache-2.0
// Which programs run in the copy and which are answered, once; and the processes that the library
// asks for by name.
#include "program/recorders.h"

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <zarncore/zarncore.h>

#include "frame/model/paths.h"
#include "program/journal.h"

namespace rehearsal {
namespace {

namespace fs = std::filesystem;
namespace paths = frame::paths;

// These do all they do to files, network and host name of the copy. The start script is among them:
// what it calls is behind recorders as well. Of the DHCP server only its check of settings runs.
constexpr const char* kInside[] = {
    paths::kIp,     paths::kIfconfig, paths::kRoute, paths::kMkdir,         paths::kSed,
    paths::kIpcalc, paths::kCp,       paths::kMv,    paths::kNetworkScript, paths::kDhcpServer};
// These reach out of it: they talk to services, partners and plugins.
constexpr const char* kAnswered[] = {
    paths::kFirewall,    paths::kTrafficControl, paths::kStart,      paths::kStop,
    paths::kInitctl,     "/sbin/restart",        "/sbin/reload",     "/sbin/status",
    paths::kArping,      paths::kDhclient,       paths::kPppoeStart, paths::kPppoeStop,
    paths::kPppoeStatus, paths::kPppoeRelay,     paths::kNetdTool,   paths::kRcTun,
    paths::kGogoc,       paths::kDdnsd,
};

// The processes that make a difference to the library.
constexpr const char* kProcesses[] = {"dhclient", "dnsmasq", "pppoe-connect", "pppoe-relay",
                                      "gogoc"};

std::string RealPath(const std::string& path) {
  char real[PATH_MAX];
  return ::realpath(path.c_str(), real) != nullptr ? real : "";
}

class Covers {
 public:
  Covers() : table_(kPrograms) { ::mkdir((std::string(kFolder) + "/real").c_str(), 0755); }

  void Put(const std::string& path, const char* how) {
    const std::string target = RealPath(path);
    if (target.empty()) return;  // a machine without it: the call fails as it would
    const fs::path called(path);
    const std::string name = RealPath(called.parent_path()) + "/" + called.filename().string();
    const std::string real = Cover(target);
    if (!real.empty()) table_ << name << '\t' << how << '\t' << real << '\n';
  }

 private:
  // Several names may lead to one program, which is covered once.
  std::string Cover(const std::string& target) {
    std::string& real = covered_[target];
    if (!real.empty()) return real;
    const fs::path place = fs::path(kFolder) / "real" / std::to_string(covered_.size());
    fs::create_directory(place);
    real = place / fs::path(target).filename();
    const std::ofstream made{real};
    const bool covered = ::mount(target.c_str(), real.c_str(), nullptr, MS_BIND, nullptr) == 0 &&
                         ::mount(kRecorder, target.c_str(), nullptr, MS_BIND, nullptr) == 0;
    if (!covered) real.clear();
    return real;
  }

  std::ofstream table_;
  std::map<std::string, std::string> covered_;
};

std::vector<std::string> WordsOf(const fs::path& path, char separator) {
  std::ifstream file(path, std::ios::binary);
  std::vector<std::string> words;
  for (std::string word; std::getline(file, word, separator);)
    words.push_back(word);
  return words;
}

// "dhcp-client (eth0) start/running, process 17" or "syslog-ng stop/waiting"
void TakeJob(const std::string& line, Machine* machine) {
  machine->jobsAreKnown = true;
  if (line.find(" start/running") == std::string::npos) return;
  std::string job = line.substr(0, line.find(' '));
  const std::size_t open = line.find(" (");
  const std::size_t close = line.find(") ");
  if (open != std::string::npos && close != std::string::npos)
    job += "-" + line.substr(open + 2, close - open - 2);
  if (job.find('/') == std::string::npos) machine->jobs.push_back(job);
}

void ReadJobs(Machine* machine) {
  FILE* const output = KOPACPopen(paths::kInitctl, "r", "list", static_cast<const char*>(nullptr));
  if (output == nullptr) return;
  char line[256];
  while (std::fgets(line, sizeof line, output) != nullptr)
    TakeJob(line, machine);
  static_cast<void>(KOPACPclose(output));  // a tool without the list has printed none
}

}  // namespace

std::string RecorderPath() {
  return fs::read_symlink("/proc/self/exe").parent_path() / "zarnnet-recorder";
}

void PutRecorders() {
  Covers covers;
  for (const char* path : kInside)
    covers.Put(path, "inside");
  for (const char* path : kAnswered)
    covers.Put(path, "answered");
}

Machine ReadMachine(const change::Kernel& kernel) {
  Machine machine;
  std::error_code none;
  for (const auto& entry : fs::directory_iterator("/proc", none)) {
    const auto names = WordsOf(entry.path() / "comm", '\n');
    const bool known = !names.empty() && std::find(std::begin(kProcesses), std::end(kProcesses),
                                                   names.front()) != std::end(kProcesses);
    if (!known) continue;
    auto arguments = WordsOf(entry.path() / "cmdline", '\0');
    if (!arguments.empty()) machine.processes.push_back({names.front(), std::move(arguments)});
  }
  ReadJobs(&machine);
  for (const auto& [name, link] : kernel.links) {
    if (::access(paths::SysNet(name, "/device").c_str(), F_OK) == 0) machine.ports.insert(name);
  }
  return machine;
}

}  // namespace rehearsal
