// SPDX-License-Identifier: Apache-2.0
// Which files are the library's own: the setters write these and no others.
#include "record/owned_files.h"

#include <algorithm>
#include <fcntl.h>
#include <filesystem>
#include <set>
#include <string_view>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "frame/model/dhcp_files.h"
#include "frame/model/paths.h"
#include "record/folder.h"

namespace change {
namespace {

namespace paths = frame::paths;

constexpr const char* kFiles[] = {
    paths::kInfo,
    paths::kHostname,
    paths::kHosts,
    paths::kNetwork,
    paths::kResolv,
    paths::kResolvStatic,
    paths::kLearnedServersV4,
    paths::kLearnedServersV6,
    paths::kTunnelPassword,
    paths::kPppoeConf,
    paths::kPapSecrets,
    kTunnelService,
};

// Folders, and how the names of their files begin.
struct Prefixed {
  const char* folder;
  const char* prefix;
};
constexpr char kShared[] = "/tmp";
constexpr Prefixed kNames[] = {
    {paths::kIfcfgFolder, "ifcfg-"}, {frame::dhcp_files::kFolder, "dhcpd"},
    {paths::kPppoeRelayFolder, ""},  {"/etc/dhclient/ipv4", "dhcpcd-"},
    {kShared, "dhcpv4.leases."},     {kShared, "zarnpppoe.intf"},
};

// In /tmp anybody can take such a name, with any content.
bool IsOwn(const Prefixed& names, const std::string& path) {
  struct stat status {};
  return std::string_view(names.folder) != kShared ||
         (::lstat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
          status.st_uid == ::geteuid() && status.st_nlink == 1);
}

// False when some may be missing.
bool AddOwned(const Prefixed& names, std::vector<std::string>* owned) {
  return EachNameIn(names.folder, [&](const std::string& name) {
    const std::string path = std::filesystem::path(names.folder) / name;
    if (name.starts_with(names.prefix) && !name.ends_with(".pid") && IsOwn(names, path))
      owned->push_back(path);
  });
}

bool IsOwnName(const std::string& path) {
  const std::filesystem::path whole(path);
  const std::string name = whole.filename();
  return std::find(std::begin(kFiles), std::end(kFiles), path) != std::end(kFiles) ||
         std::any_of(std::begin(kNames), std::end(kNames), [&](const Prefixed& names) {
           return std::filesystem::path(names.folder) / name == whole &&
                  name.starts_with(names.prefix);
         });
}

// What new content is called until it takes its place: as the library and this one make names. A
// word behind a dot is another file's name.
bool IsLeftOver(const std::string& path) {
  constexpr std::string_view kSigns = "XXXXXX";
  constexpr std::string_view kKept = ".kept-";
  if (path.size() <= kSigns.size()) return false;
  const std::string begin = path.substr(0, path.size() - kSigns.size());
  if (begin.ends_with(kKept)) return std::filesystem::path(begin).filename().native()[0] == '.';
  for (const std::string_view known :
       {paths::kVlanTemplate, paths::kVlanParentTemplate, paths::kVlanRemovedTemplate}) {
    if (begin == known.substr(0, known.size() - kSigns.size())) return true;
  }
  // The library marks a temporary file of any other name; a moment long it is empty.
  struct stat status {};
  const bool word =
      path.find_first_not_of("abcdefghijklmnopqrstuvwxyz", begin.size()) == std::string::npos;
  if (!begin.ends_with('.') || word || !IsOwnName(begin.substr(0, begin.size() - 1)) ||
      ::lstat(path.c_str(), &status) != 0)
    return false;
  return (status.st_mode & S_ISVTX) != 0 ||
         (status.st_size == 0 && (status.st_mode & ACCESSPERMS) == (S_IRUSR | S_IWUSR));
}

void RemoveUnlessInUse(const std::string& path) {
  struct stat status {};
  const int fd = ::open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
  if (fd < 0) return;
  if (::fstat(fd, &status) == 0 && S_ISREG(status.st_mode) && status.st_uid == ::geteuid() &&
      ::flock(fd, LOCK_EX | LOCK_NB) == 0)
    ::unlink(path.c_str());
  ::close(fd);
}

std::set<std::string> OwnFolders() {
  std::set<std::string> folders;
  for (const char* file : kFiles)
    folders.insert(std::filesystem::path(file).parent_path());
  for (const Prefixed& names : kNames) {
    if (std::string_view(names.folder) != kShared)
      folders.insert(std::filesystem::path(std::string(names.folder) + "/").parent_path());
  }
  return folders;
}

}  // namespace

void RemoveAbandonedFiles() {
  for (const std::string& folder : OwnFolders()) {
    static_cast<void>(EachNameIn(folder, [&](const std::string& name) {
      const std::string path = folder + "/" + name;
      if (IsLeftOver(path)) RemoveUnlessInUse(path);
    }));
  }
}

std::vector<std::string> OwnedFiles(std::string* problem) {
  std::vector<std::string> owned(std::begin(kFiles), std::end(kFiles));
  for (const Prefixed& names : kNames) {
    if (!AddOwned(names, &owned) && problem != nullptr)
      *problem = std::string(names.folder) + " cannot be read";
  }
  std::sort(owned.begin(), owned.end());
  return owned;
}

}  // namespace change
