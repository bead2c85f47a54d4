// SPDX-License-Identifier: Apache-2.0
// The copy: namespaces of its own; everything read-only, but for the folders that the library
// writes to, which have a layer of memory over them; /dev, /proc and /sys made anew; recorders over
// the programs.
#include "program/private_copy.h"

#include <array>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <linux/capability.h>
#include <map>
#include <sched.h>
#include <sstream>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

#include "program/copy_folder.h"
#include "program/journal.h"
#include "program/recorders.h"
#include "program/replica.h"
#include "program/stand_in.h"

namespace rehearsal {
namespace {

constexpr unsigned long kPlain = MS_NOSUID | MS_NODEV | MS_NOEXEC;

// A machine may be read while files of it are gone: what cannot be opened is -1 and left out.
std::map<std::string, int>& Lowers() {
  static std::map<std::string, int> lowers;
  return lowers;
}

bool Fault(const std::string& what, std::string* problem) {
  *problem = "no private copy of the machine can be made: " + what + ": " + std::strerror(errno);
  return false;
}

bool WriteTo(const char* path, const std::string& text) {
  const int fd = ::open(path, O_WRONLY | O_CLOEXEC);
  const bool written = ::write(fd, text.data(), text.size()) == static_cast<ssize_t>(text.size());
  ::close(fd);
  return written;
}

// Another user than root is root of a namespace of its own.
bool BecomeRoot() {
  const std::string user = std::to_string(::geteuid());
  const std::string group = std::to_string(::getegid());
  return ::unshare(CLONE_NEWUSER) == 0 && WriteTo("/proc/self/setgroups", "deny") &&
         WriteTo("/proc/self/uid_map", "0 " + user + " 1") &&
         WriteTo("/proc/self/gid_map", "0 " + group + " 1");
}

// ---- mounts

bool Mount(const char* source, const std::string& target, const char* type, unsigned long flags,
           const std::string& options = {}) {
  return ::mount(source, target.c_str(), type, flags,
                 options.empty() ? nullptr : options.c_str()) == 0;
}

bool Remount(const std::string& target, unsigned long flags) {
  return Mount("none", target, nullptr, MS_REMOUNT | MS_BIND | flags);
}

int CloneOf(const std::string& path) {
  return ::open_tree(AT_FDCWD, path.c_str(), OPEN_TREE_CLONE | OPEN_TREE_CLOEXEC);
}

bool MoveTo(int tree, const std::string& target) {
  const bool moved = ::move_mount(tree, "", AT_FDCWD, target.c_str(), MOVE_MOUNT_F_EMPTY_PATH) == 0;
  ::close(tree);
  return moved;
}

void MakeFile(const std::string& path, mode_t mode) {
  ::close(::open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, mode));
}

// Mounts below the copied folders, and whether they take no writing.
std::vector<std::string> ReadOnlyFolders() {
  std::vector<std::string> folders;
  for (const char* folder : kCopied) {
    struct statvfs status {};
    if (::statvfs(folder, &status) == 0 && (status.f_flag & ST_RDONLY) != 0)
      folders.emplace_back(folder);
  }
  std::ifstream table("/proc/self/mountinfo");
  for (std::string line; std::getline(table, line);) {
    std::istringstream words(line);
    std::string word;
    std::string target;
    std::string options;
    words >> word >> word >> word >> word >> target >> options;
    for (const char* folder : kCopied) {
      if (target.starts_with(std::string(folder) + "/") && options.starts_with("ro"))
        folders.push_back(target);
    }
  }
  return folders;
}

void MakeReadOnlyAgain(const std::vector<std::string>& folders) {
  for (const std::string& folder : folders) {
    if (Mount(folder.c_str(), folder, nullptr, MS_BIND)) Remount(folder, MS_RDONLY);
  }
}

// The devices that programs need, and room for the rehearsal.
bool MakeDevices(int recorder) {
  std::map<std::string, int> nodes;
  for (const char* name : {"null", "zero", "full", "random", "urandom"})
    nodes[name] = CloneOf(std::string("/dev/") + name);
  if (!Mount("rehearsal", "/dev", "tmpfs", MS_NOSUID, "mode=755")) return false;
  for (const auto& [name, tree] : nodes) {
    MakeFile("/dev/" + name, 0600);
    if (!MoveTo(tree, "/dev/" + name)) return false;
  }
  constexpr std::array<std::pair<const char*, const char*>, 4> kLinks{{{"/proc/self/fd", "/dev/fd"},
                                                                       {"fd/0", "/dev/stdin"},
                                                                       {"fd/1", "/dev/stdout"},
                                                                       {"fd/2", "/dev/stderr"}}};
  for (const auto& [target, link] : kLinks) {
    if (::symlink(target, link) != 0) return false;
  }
  for (const char* path : {"/dev/shm", kFolder, kStandIns, kJobs})
    ::mkdir(path, 0755);
  MakeFile(kRecorder, 0755);
  return MoveTo(recorder, kRecorder);
}

bool MountLayer(const std::string& folder, const std::string& lower) {
  const std::string upper = UpperOf(folder);
  const std::string options =
      "lowerdir=" + lower + ",upperdir=" + upper + ",workdir=" + upper + ".work";
  return Mount("rehearsal", folder, "overlay", 0, options) ||
         Mount("rehearsal", folder, "overlay", 0, options + ",userxattr");
}

int OpenFolder(const std::string& path) {
  return ::open(path.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC);
}

// A layer over what is there: what is written stays in memory. For another user than root, to whom
// nothing there belongs, it goes over a copy of what he may read.
bool CoverFolder(const std::string& folder, bool ofOther) {
  struct stat status {};
  const int lower = OpenFolder(folder);
  if (lower < 0) return true;  // a machine without it
  Lowers()[folder] = lower;
  const std::string upper = UpperOf(folder);
  const std::string copy = upper + ".lower";
  for (const std::string& path : {upper, upper + ".work", copy})
    ::mkdir(path.c_str(), 0755);
  if (::fstat(lower, &status) != 0 || ::chmod(upper.c_str(), status.st_mode & 07777) != 0)
    return false;
  if (!ofOther) {
    return ::chown(upper.c_str(), status.st_uid, status.st_gid) == 0 && MountLayer(folder, folder);
  }
  if (!CopyFolder(folder, copy))
    Note({kRemarkRecord, folder, "not all of it is in the copy: it has too much, or large files"});
  ::close(std::exchange(Lowers()[folder], OpenFolder(copy)));
  return MountLayer(folder, copy);
}

// The kernel's own files: of its settings only those of the copy's network can be written.
bool MountKernelFiles() {
  if (!Mount("proc", "/proc", "proc", kPlain) || !Mount("sysfs", "/sys", "sysfs", kPlain))
    return false;
  for (const char* path : {"/proc/sys/net", "/sys/class/net", "/sys/devices/virtual/net"}) {
    if (!Mount(path, path, nullptr, MS_BIND)) return false;
  }
  return Remount("/proc", kPlain | MS_RDONLY) && Remount("/sys", kPlain | MS_RDONLY);
}

bool MakeFileSystem(const change::Generation& generation, bool ofOther, std::string* problem) {
  const auto readOnly = ReadOnlyFolders();
  const int recorder = CloneOf(RecorderPath());
  if (recorder < 0) return Fault(RecorderPath(), problem);
  if (!Mount("none", "/", nullptr, MS_REC | MS_PRIVATE)) return Fault("private mounts", problem);
  mount_attr attributes{};
  attributes.attr_set = MOUNT_ATTR_RDONLY;
  if (::mount_setattr(AT_FDCWD, "/", AT_RECURSIVE, &attributes, sizeof attributes) != 0)
    return Fault("read-only mounts", problem);
  if (!MakeDevices(recorder)) return Fault("/dev", problem);
  for (const char* folder : kCopied) {
    if (!CoverFolder(folder, ofOther)) return Fault(std::string("a layer over ") + folder, problem);
  }
  if (!MountKernelFiles()) return Fault("/proc and /sys", problem);
  // What was mounted below the folders is not in their layers.
  for (const auto& [path, file] : generation.files) {
    const auto found = change::ReadWhole(path);
    if (!found || !(*found == file)) static_cast<void>(change::WriteWhole(path, file));
  }
  MakeReadOnlyAgain(readOnly);
  return true;
}

// ---- processes

void DropPrivileges() {
  for (const int capability :
       {CAP_SYS_MODULE, CAP_SYS_BOOT, CAP_SYS_TIME, CAP_SYS_RAWIO, CAP_MKNOD, CAP_SYSLOG})
    ::prctl(PR_CAPBSET_DROP, capability);
}

pid_t copysFirst = 0;

// Asked to end, it ends the copy and waits for it: nobody else would.
[[noreturn]] void EndWith(pid_t child) {
  copysFirst = child;
  std::signal(SIGTERM, [](int /*signal*/) { ::kill(copysFirst, SIGKILL); });
  int status = 0;
  while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  ::_exit(WIFEXITED(status) ? WEXITSTATUS(status) : 1);
}

bool MakeCopy(const change::Generation& generation, const Machine& machine, int cables,
              bool ofOther, std::string* problem) {
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (!MakeFileSystem(generation, ofOther, problem)) return false;
  if (ofOther)
    Note({kRemarkRecord, "files", "those that this user may not read are not in the copy"});
  MakeReplica(generation.kernel, cables);
  PutRecorders();
  for (const std::string& job : machine.jobs)
    MakeFile(kJobs + job, 0600);
  for (const Process& process : machine.processes)
    StandIn(process.name, process.arguments);
  DropPrivileges();
  return true;
}

}  // namespace

std::string UpperOf(const std::string& folder) {
  return std::string(kFolder) + folder;
}

std::string LowerOf(const std::string& folder) {
  const auto found = Lowers().find(folder);
  return found != Lowers().end() ? "/proc/self/fd/" + std::to_string(found->second) : folder;
}

bool EnterCopy(const change::Generation& generation, const Machine& machine, std::string* problem) {
  const bool ofOther = ::geteuid() != 0;
  if (ofOther && !BecomeRoot()) return Fault("a user namespace", problem);
  // The first network has the far ends of the cables, the second is the copy's own.
  constexpr int kOwn = CLONE_NEWNS | CLONE_NEWUTS | CLONE_NEWIPC | CLONE_NEWPID | CLONE_NEWNET;
  if (::unshare(kOwn) != 0) return Fault("namespaces", problem);
  const int cables = ::open("/proc/self/ns/net", O_RDONLY | O_CLOEXEC);
  if (cables < 0 || ::unshare(CLONE_NEWNET) != 0) return Fault("a network", problem);
  const pid_t child = ::fork();
  if (child < 0) return Fault("a process", problem);
  if (child > 0) EndWith(child);
  return MakeCopy(generation, machine, cables, ofOther, problem);
}

}  // namespace rehearsal
