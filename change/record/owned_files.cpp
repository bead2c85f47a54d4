// SPDX-License-Identifier: Apache-2.0
// Which files are the library's own: the setters write these and no others.
#include "record/owned_files.h"

#include <algorithm>
#include <filesystem>
#include <string_view>
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

}  // namespace

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
