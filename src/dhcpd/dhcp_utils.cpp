// SPDX-License-Identifier: Apache-2.0
// The server's switches, of all and of each interface, and its (re)start by the network script.
#include <optional>
#include <string>

#include <zarnnetsdk/dhcpd.h>
#include <zarnnetsdk/net_int.h>

#include "dhcpd/files.h"
#include "dhcpd/switches.h"
#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/model/paths.h"
#include "frame/os/command.h"
#include "frame/os/containers.h"
#include "frame/os/file.h"
#include "frame/os/folder.h"
#include "frame/os/key_file.h"

using namespace frame;
using namespace dhcpd;
using namespace frame::dhcp_files;

namespace {

constexpr char kStart[] = "nat-start-dhcp";
constexpr char kRestart[] = "nat-restart-dhcp";

// Only the script's status 1 is a failure here; callers know no other.
bool RunServer(const char* verb) {
  if (RunStatus(paths::kNetworkScript, verb) != 1) return true;
  LOG_ERROR("%s:%d Failed to restart DHCP SERVER");
  return false;
}

// What the switch of an interface needs: a name that is one, and a family that there is.
bool IsSwitch(const char* ifname, int ipType) {
  if (IsRefusedName(ifname)) {
    LOG_ERROR("%s:%d no interface is given");
    return false;
  }
  if (StemOf(ipType) == nullptr) {
    LOG_ERROR("%s:%d Wrong DHCPD ip type");
    return false;
  }
  return true;
}

// The interface of a plain switch. Files of subnets, and interfaces with "-" or "." in their names,
// fall apart into more pieces and are passed over.
std::optional<std::string> InterfaceOf(std::string_view path) {
  const auto pieces = SplitFields(path, "-.");
  if (pieces.size() < 3 || pieces[1].empty() || pieces[2] != "info") return std::nullopt;
  return std::string(pieces[1]);
}

}  // namespace

bool dhcpd::IsServed(const char* stem, std::string_view ifname) {
  return IsSwitchedOn(InterfaceInfo(stem, ifname));
}

std::optional<std::vector<std::string>> dhcpd::InterfacesWithSwitch(const char* stem) {
  std::vector<std::string> ifnames;
  if (!Exists(kFolder)) return ifnames;
  const auto paths = PathsLike(OfInterface(stem, "*", ".info"));
  if (!paths) {
    LOG_ERROR("%s:%d glob() error");
    return std::nullopt;
  }
  for (const std::string& path : *paths) {
    if (const auto ifname = InterfaceOf(path)) ifnames.push_back(*ifname);
  }
  return ifnames;
}

bool dhcpd::RestartUnlessRefused() {
  return RunServer(kRestart);
}

int DHCPIsEnabled(void) {
  return Boundary(0, [&]() -> int { return IsSwitchedOn(kServerInfo) ? 1 : 0; });
}

int DHCPServerStart(void) {
  return Boundary(-1, [&]() -> int { return RunServer(kStart) ? 0 : 1; });
}

int DHCPServerRestart(void) {
  return Boundary(-1, [&]() -> int { return RestartUnlessRefused() ? 0 : 1; });
}

bool dhcpd::RestartServer() {
  return RunStatus(paths::kNetworkScript, kRestart) == 0;
}

int KOPANetDHCPServerRestart(void) {
  return Boundary(-1, [&]() -> int { return RestartServer() ? 0 : -1; });
}

int DHCPInterfaceIsEnabled(const char* ifname, int iptype) {
  return Boundary(-1, [&]() -> int {
    if (!IsSwitch(ifname, iptype)) return -1;
    return IsServed(StemOf(iptype), ifname) ? 1 : 0;
  });
}

int DHCPInterfaceSetEnabled(const char* ifname, int iptype, int enable) {
  return Boundary(-1, [&]() -> int {
    if (!IsSwitch(ifname, iptype)) return -1;
    if (!MakeFolderOrLog()) return -1;
    const std::string path = InterfaceInfo(StemOf(iptype), ifname);
    if (!SetKey(path, kEnable, YesOrNo(enable == 1), kQuotedLine)) {
      // Callers take a switch that stays as it was for one that was set: the log alone tells.
      LOG_ERROR("%s:%d Failed to set [%s] Dhcp info file", ifname);
    }
    return 0;
  });
}

int DHCPInterfaceListGet(PKOPACSZLIST* list, int iptype) {
  return Boundary(
      -1,
      [&]() -> int {
        if (list == nullptr) {
          LOG_ERROR("%s:%d Parameter error");
          return -1;
        }
        if (StemOf(iptype) == nullptr) {
          LOG_ERROR("%s:%d Wrong DHCPD ip type");
          return -1;
        }
        const auto ifnames = InterfacesWithSwitch(StemOf(iptype));
        if (!ifnames) return -1;
        constexpr int kCapacity = 16;
        StringList found(kCapacity);
        for (const std::string& ifname : *ifnames) {
          if (KOPACSzListPush(found.Out(), ifname.c_str()) < 0) {
            LOG_ERROR("%s:%d Failed to push [%s] into interface list", ifname.c_str());
          }
        }
        if (found.Count() == 0) return 0;
        std::swap(*list, *found.Out());  // what the caller's held goes with this scope
        return (*list)->nItem;
      },
      [&] { LOG_ERROR("%s:%d Allocate interface list failed"); });
}
