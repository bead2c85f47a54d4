// SPDX-License-Identifier: Apache-2.0
// What a test says to and asks of the appliance that it runs in.
#include "support/appliance.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <poll.h>
#include <sstream>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include "support/children.h"
#include "support/clock.h"

namespace test {
namespace {

constexpr char kCalls[] = "/run/recorded-calls";
constexpr char kEvents[] = "/var/log/plugin-events.log";

Lines FileLines(const std::string& path) {
  Lines lines;
  std::ifstream file(path);
  for (std::string line; std::getline(file, line);)
    lines.push_back(line);
  return lines;
}

}  // namespace

void WriteFile(const std::string& path, std::string_view text, int mode) {
  std::filesystem::create_directories(std::filesystem::path(path).parent_path());
  ::unlink(path.c_str());
  std::ofstream file(path, std::ios::binary);
  file << text;
  file.close();
  if (!file) ADD_FAILURE() << "cannot write " << path;
  ::chmod(path.c_str(), static_cast<mode_t>(mode));
}

std::string ReadFile(const std::string& path) {
  std::ostringstream text;
  text << std::ifstream(path, std::ios::binary).rdbuf();
  return text.str();
}

bool FileExists(const std::string& path) {
  return ::access(path.c_str(), F_OK) == 0;
}

int FileMode(const std::string& path) {
  struct stat status {};
  return ::stat(path.c_str(), &status) == 0 ? static_cast<int>(status.st_mode & 07777) : -1;
}

Lines FolderEntries(const std::string& path) {
  Lines names;
  for (const auto& entry : std::filesystem::directory_iterator(path)) {
    names.push_back(entry.path().filename());
  }
  std::sort(names.begin(), names.end());
  return names;
}

void RemoveFile(const std::string& path) {
  std::filesystem::remove_all(path);
}

void MountEmpty(const std::string& path, const std::string& size) {
  const std::string options = "mode=755,size=" + size;
  if (::mount("test", path.c_str(), "tmpfs", 0, options.c_str()) != 0) {
    ADD_FAILURE() << "cannot mount over " << path << ": " << std::strerror(errno);
  }
}

std::string IfcfgPath(const std::string& ifname) {
  return "/etc/sysconfig/network-scripts/ifcfg-" + ifname;
}
void WriteIfcfg(const std::string& ifname, std::string_view text) {
  WriteFile(IfcfgPath(ifname), text);
}
std::string ReadIfcfg(const std::string& ifname) {
  return ReadFile(IfcfgPath(ifname));
}

void RecordTool(const std::string& path, int status, std::string_view output) {
  const std::string outputFile = path + ".output";
  WriteFile(outputFile, output);
  std::ostringstream script;
  script << "#!/bin/sh\necho \"$0${*:+ $*}\" >> " << kCalls << "\ncat " << outputFile << "\nexit "
         << status << "\n";
  WriteFile(path, script.str(), 0755);
}

Lines RecordedCalls() {
  return FileLines(kCalls);
}

std::string Shell(const std::string& command) {
  std::FILE* const pipe = ::popen((command + " 2>&1").c_str(), "re");
  std::string output;
  char block[4096];
  while (const std::size_t length = std::fread(block, 1, sizeof block, pipe)) {
    output.append(block, length);
  }
  ::pclose(pipe);
  return output;
}

void BringUp(const std::string& ifname) {
  Shell("ip link set " + ifname + " up");
  for (int i = 0; i < 300; ++i) {
    if (ReadFile("/sys/class/net/" + ifname + "/operstate") == "up\n") return;
    ::poll(nullptr, 0, 10);
  }
  ADD_FAILURE() << ifname << " has no carrier";
}

LockHolder::LockHolder(int classAndMode) {
  Gate held;
  pid_ = Start([&] {
    if (KOPACFileLock(classAndMode, 5) == 0) held.Open();
    return ::pause();
  });
  EXPECT_TRUE(held.Wait()) << "the lock is not to be had";
  RunClockFaster(100);
}

LockHolder::~LockHolder() {
  RunClockFaster(1);
  KillAndReap(pid_);
}

NoDescriptors::NoDescriptors() {
  ::getrlimit(RLIMIT_NOFILE, &before);
  const rlimit none{0, before.rlim_max};
  ::setrlimit(RLIMIT_NOFILE, &none);
}

Lines Events() {
  return FileLines(kEvents);
}

Lines Items(const KOPACSZLIST* list) {
  Lines items;
  for (int i = 0; i < list->nItem; ++i)
    items.emplace_back(KOPACSzListGet(list, i));
  return items;
}

List::List(const Lines& texts) : list_(KOPACSzListAlloc(4)) {
  for (const std::string& text : texts)
    KOPACSzListPush(&list_, text.c_str());
}

void ExpectLog(int priority, std::string_view source, std::string_view message, int count) {
  EXPECT_EQ(count, LogCount(priority, source, message)) << message;
}

}  // namespace test
