// SPDX-License-Identifier: Apache-2.0
// Keeping and putting back files, kernel and DHCP clients as one.
#include "record/generation.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <unistd.h>

#include "frame/model/paths.h"
#include "record/folder.h"
#include "record/owned_files.h"
#include "record/programs.h"

namespace change {
namespace {

using Texts = std::vector<std::string>;

constexpr char kUnasked[] = "the kernel cannot be asked about its interfaces";

std::map<std::string, WholeFile> ReadFiles(std::string* problem) {
  std::map<std::string, WholeFile> files;
  for (const std::string& path : OwnedFiles(problem)) {
    if (auto file = ReadWhole(path, problem)) files.emplace(path, std::move(*file));
  }
  return files;
}

// The arguments of a process, its program's name first.
Texts ArgumentsOf(const std::string& path, bool* unread) {
  errno = 0;
  std::ifstream file(path);
  // One that has ended meanwhile has none.
  if (!file.is_open() && errno != ENOENT && errno != EACCES) *unread = true;
  Texts arguments;
  for (std::string argument; std::getline(file, argument, '\0');)
    arguments.push_back(argument);
  return arguments;
}

bool IsDhcpClient(const Texts& arguments) {
  const auto has = [&](const char* word) {
    return std::find(arguments.begin(), arguments.end(), word) != arguments.end();
  };
  // A script may stand in the program's place, and end as a program of the same name elsewhere.
  constexpr std::ptrdiff_t kInterpreterAndScript = 2;
  const auto end = arguments.begin() + std::min(std::ssize(arguments), kInterpreterAndScript);
  const bool client = std::any_of(arguments.begin(), end, [](const std::string& argument) {
    return std::filesystem::path(argument).filename() ==
           std::filesystem::path(frame::paths::kDhclient).filename();
  });
  return client && !has("-6") && !has("--zarn_test");
}

Texts NamesOnlyIn(const Kernel& here, const Kernel& other) {
  Texts names;
  for (const auto& [name, link] : here.links) {
    if (other.Link(name) == nullptr) names.push_back(name);
  }
  return names;
}

void PutBackClients(const Generation& generation) {
  const auto now = InterfacesWithDhcpClient();
  for (const std::string& ifname : now) {
    if (!generation.dhcpClients.contains(ifname)) StopDhcpClient(ifname);
  }
  for (const std::string& ifname : generation.dhcpClients) {
    if (!now.contains(ifname)) StartDhcpClient(ifname);
  }
}

std::set<std::string> ReadClients(std::string* problem) {
  std::set<std::string> ifnames;
  bool unread = false;
  const bool whole = EachNameIn("/proc", [&](const std::string& name) {
    if (name.find_first_not_of("0123456789") != std::string::npos) return;
    const Texts arguments = ArgumentsOf("/proc/" + name + "/cmdline", &unread);
    if (IsDhcpClient(arguments)) ifnames.insert(arguments.back());
  });
  if (!whole || unread) *problem = "/proc cannot be read";
  return ifnames;
}

std::optional<Generation> ReadGeneration(std::string* problem) {
  auto kernel = ReadKernel();
  if (!kernel) {
    *problem = kUnasked;
    return std::nullopt;
  }
  Generation generation{ReadFiles(problem), std::move(*kernel), ReadClients(problem)};
  return problem->empty() ? std::optional(std::move(generation)) : std::nullopt;
}

}  // namespace

std::set<std::string> InterfacesWithDhcpClient() {
  std::string unread;
  return ReadClients(&unread);
}

std::optional<Generation> KeepGeneration(std::string* problem) {
  std::string why;
  auto generation = ReadGeneration(&why);
  if (!generation && problem != nullptr) *problem = why;
  return generation;
}

std::vector<std::string> FileDifferencesFrom(const Generation& before) {
  Texts differences;
  std::string problem;
  const auto now = ReadFiles(&problem);
  if (!problem.empty()) differences.push_back(problem);
  for (const auto& [path, file] : before.files) {
    const auto found = now.find(path);
    if (found == now.end()) {
      differences.push_back(path + " is gone");
    } else if (found->second.bytes != file.bytes) {
      differences.push_back(path + " has other content");
    } else if (!(found->second == file)) {
      differences.push_back(path + " has another mode, owner or attribute");
    }
  }
  for (const auto& [path, file] : now) {
    if (!before.files.contains(path)) differences.push_back(path + " is new");
  }
  return differences;
}

std::vector<std::string> DifferencesFrom(const Generation& generation) {
  Texts differences = FileDifferencesFrom(generation);
  const auto kernel = ReadKernel();
  if (!kernel) return {"the kernel cannot be asked"};
  const Texts ofKernel = DifferencesOf(generation.kernel, *kernel);
  differences.insert(differences.end(), ofKernel.begin(), ofKernel.end());
  if (InterfacesWithDhcpClient() != generation.dhcpClients)
    differences.push_back("DHCP clients run on other interfaces");
  return differences;
}

void PutBackFile(const Generation& generation, const std::string& path) {
  const auto kept = generation.files.find(path);
  std::string unreadable;
  const auto now = ReadWhole(path, &unreadable);
  // What cannot be put back is found when all is compared.
  if (kept == generation.files.end()) {
    if (now || !unreadable.empty()) static_cast<void>(::unlink(path.c_str()));
  } else if (!now || !(*now == kept->second)) {
    static_cast<void>(WriteWhole(path, kept->second));
  }
}

void PutBackFiles(const Generation& generation) {
  std::set<std::string> paths;
  for (const auto& [path, file] : generation.files)
    paths.insert(path);
  for (const std::string& path : OwnedFiles())
    paths.insert(path);
  for (const std::string& path : paths)
    PutBackFile(generation, path);
}

void PutBack(const Generation& generation) {
  const auto changed = ReadKernel();
  if (!changed) return PutBackFiles(generation);
  const Texts made = NamesOnlyIn(*changed, generation.kernel);
  if (!made.empty()) RunStartScript("stop", made);
  PutBackFiles(generation);
  // Programs take their time, and a client waits for its lease: nobody's address waits for them.
  PutBack(generation.kernel);
  const Texts gone = NamesOnlyIn(generation.kernel, *changed);
  if (!gone.empty()) RunStartScript("start", gone);
  PutBackClients(generation);
  PutBack(generation.kernel);
  PutBackFiles(generation);  // scripts that ran meanwhile may have written
}

}  // namespace change
