// SPDX-License-Identifier: Apache-2.0
// The kernel tells of each open file which locks it holds. The lock belongs to the core library,
// which keeps it on a file of its own; another maker's may keep it elsewhere, and has no name then.
#include "steps/network_lock.h"

#include <filesystem>
#include <fstream>

namespace change {
namespace {

namespace fs = std::filesystem;
constexpr char kLock[] = "/run/lock/zarncore/class-100";

// A waiter has the file open as well, without a lock.
bool HasLockThrough(const fs::path& process, const std::string& descriptor) {
  std::ifstream info(process / "fdinfo" / descriptor);
  for (std::string line; std::getline(info, line);) {
    if (line.starts_with("lock:")) return true;
  }
  return false;
}

bool HoldsLock(const fs::path& process) {
  std::error_code none;
  for (const auto& entry : fs::directory_iterator(process / "fd", none)) {
    if (fs::read_symlink(entry.path(), none) == kLock &&
        HasLockThrough(process, entry.path().filename()))
      return true;
  }
  return false;
}

std::string ProgramOf(const fs::path& process) {
  std::ifstream file(process / "comm");
  std::string name;
  std::getline(file, name);
  return name;
}

}  // namespace

std::string NetworkLock::HolderSentence() {
  std::error_code none;
  for (const auto& entry : fs::directory_iterator("/proc", none)) {
    const std::string pid = entry.path().filename();
    if (pid.find_first_not_of("0123456789") != std::string::npos || !HoldsLock(entry.path()))
      continue;
    return ProgramOf(entry.path()) + " (process " + pid + ") holds the network configuration";
  }
  return "another process holds the network configuration";
}

}  // namespace change
