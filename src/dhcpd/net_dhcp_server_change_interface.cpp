// SPDX-License-Identifier: Apache-2.0
// An interface gets another name: the server's files that are named after it, and name it, follow.
#include <algorithm>
#include <cstdio>
#include <string>

#include <zarnnetsdk/dhcpd.h>
#include <zarnnetsdk/net_int.h>

#include "dhcpd/files.h"
#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/model/paths.h"
#include "frame/os/command.h"
#include "frame/os/file.h"
#include "frame/os/folder.h"

using namespace frame;
using namespace dhcpd;
using namespace frame::dhcp_files;

namespace {

struct Names {
  const char* from;
  const char* to;
};

// A name becomes part of a sed expression, where these would end it or bring in other text.
bool IsUnfitForSed(const char* name) {
  const bool unfit =
      IsUnfitName(name) || std::string_view(name).find_first_of("\\&") != std::string_view::npos;
  return unfit && !Fail(ZARNNETERR_BAD_PARAMETER, false);
}

bool Rename(const std::string& from, const std::string& to) {
  if (std::rename(from.c_str(), to.c_str()) == 0) return true;
  LOG_ERROR("%s:%d Failed to rename [%s][%s]", from.c_str(), to.c_str());
  return Fail(ZARNNETERR_RENAME, false);
}

bool RenameIfThere(const std::string& from, const std::string& to) {
  return !Exists(from) || Rename(from, to);
}

// The old name is an expression as it stands: a "." in it matches any character.
bool ReplaceName(const Names& names, const std::string& path) {
  const std::string expression = Format("s/%s/%s/g", names.from, names.to);
  if (Run(paths::kSed, "-i", expression, path)) return true;
  LOG_ERROR("%s:%d Failed to sed [/bin/sed -i %s %s]", expression.c_str(), path.c_str());
  LOG_ERROR("%s:%d Failed to replace tag in [%s]", path.c_str());
  return false;
}

// ---- the switch

// That of IPv6 stays where it is.
bool MoveSwitch(const Names& names) {
  if (RenameIfThere(InterfaceInfo(kStemV4, names.from), InterfaceInfo(kStemV4, names.to)))
    return true;
  LOG_ERROR("%s:%d Failed to move interface global setting from [%s] to [%s]", names.from,
            names.to);
  return false;
}

// ---- subnets

// The entry is the prefix, the subnet up to the first ".", and the extension behind it.
bool MoveSubnet(const Names& names, std::string_view entry) {
  const std::string_view rest = entry.substr(SubnetNames(names.from).size());
  const std::size_t dot = rest.find('.');
  if (dot == 0 || dot == std::string_view::npos || dot + 1 == rest.size()) {
    LOG_ERROR("%s:%d Parsing filename error!");
    return Fail(ZARNNETERR_UNEXPECTED_CONTENT, false);
  }
  const std::string target = InFolder(SubnetNames(names.to).append(rest));
  return Rename(InFolder(entry), target) && ReplaceName(names, target);
}

bool MoveListedSubnets(const Names& names) {
  constexpr std::size_t kMostEntries = 1154;
  const std::string prefix = SubnetNames(names.from);
  auto entries = EntriesOf(kFolder, prefix);
  if (!entries) {
    LOG_ERROR("%s:%d bad enum [%s] in [%s]", prefix.c_str(), kFolder);
    return false;
  }
  if (entries->size() > kMostEntries) entries->resize(kMostEntries);
  return std::all_of(entries->begin(), entries->end(),
                     [&names](const std::string& entry) { return MoveSubnet(names, entry); });
}

bool MoveSubnets(const Names& names) {
  if (MoveListedSubnets(names)) return true;
  LOG_ERROR("%s:%d Failed to move DHCP tag conf from [%s] to [%s]", names.from, names.to);
  return false;
}

// ---- static leases, proxy auto-discovery

bool MoveStaticLeases(const Names& names) {
  if (RenameIfThere(TagConf(names.from, "static"), TagConf(names.to, "static"))) return true;
  LOG_ERROR("%s:%d Failed to move DHCP static conf from [%s] to [%s]", names.from, names.to);
  return false;
}

bool MoveProxyFiles(const Names& names) {
  const std::string from = ProxyConf(names.from);
  const std::string to = ProxyConf(names.to);
  if (Exists(from) && !(Rename(from, to) && ReplaceName(names, to))) return false;
  return RenameIfThere(ProxyInfo(names.from), ProxyInfo(names.to));
}

bool MoveProxy(const Names& names) {
  if (MoveProxyFiles(names)) return true;
  LOG_ERROR("%s:%d Failed to move DHCP WPAD conf from [%s] to [%s]", names.from, names.to);
  return false;
}

}  // namespace

bool dhcpd::MoveInterface(const std::string& oldName, const std::string& newName) {
  const Names names{oldName.c_str(), newName.c_str()};
  if (IsUnfitForSed(names.from) || IsUnfitForSed(names.to)) {
    LOG_ERROR("%s:%d Bad parameters");
    return false;
  }
  if (!IsFolder(kFolder)) return true;
  return MoveSwitch(names) && MoveSubnets(names) && MoveStaticLeases(names) && MoveProxy(names);
}

int DHCPDConfChangeInterface(const char* old_if, const char* new_if) {
  return Boundary(
      -1,
      [&]() -> int {
        // A missing name is refused as an empty one is.
        const bool moved =
            MoveInterface(old_if == nullptr ? "" : old_if, new_if == nullptr ? "" : new_if);
        return moved ? 0 : -1;
      },
      [&] { LOG_ERROR("%s:%d Can not alloc memory for string list"); });
}
