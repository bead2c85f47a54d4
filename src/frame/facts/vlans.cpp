// SPDX-License-Identifier: Apache-2.0
// The VLANs that the kernel has: single ones asked of its driver, all of them read in its table.
#include "frame/facts/vlans.h"

#include <cstdio>

#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/model/paths.h"
#include "frame/model/vlan.h"
#include "frame/os/containers.h"
#include "frame/os/file.h"

namespace frame::facts {
namespace {

constexpr int kHeaderLines = 2;

// The widths bound the fields. They also let the kernel's widest name, behind which no blank
// stands, end before its bar.
bool ReadVlan(const char* line, KOPANETVLAN* vlan) {
  static_assert(sizeof vlan->szName == 16 && sizeof vlan->szRowDev == 16);
  return std::sscanf(line, "%15s | %d | %15s", vlan->szName, &vlan->id, vlan->szRowDev) == 3;
}

}  // namespace

bool HasVlanDriver() {
  return Exists(paths::kProcVlanConfig);
}

std::optional<KOPANETVLAN> VlanOf(const InetSocket& socket, std::string_view ifname) {
  // The question takes 15 characters, and a longer name must not be answered with another
  // interface's VLAN.
  if (!FitsKernel(ifname)) return std::nullopt;
  const auto parent = socket.VlanParent(ifname);
  const auto id = parent ? socket.VlanId(ifname) : std::nullopt;
  if (!id) return std::nullopt;
  KOPANETVLAN vlan{};
  CopyText(ifname, vlan.szName);
  CopyText(*parent, vlan.szRowDev);
  vlan.id = *id;
  return vlan;
}

std::optional<KOPANETVLAN> VlanOver(const InetSocket& socket, std::string_view parent,
                                    unsigned id) {
  return VlanOf(socket, model::VlanName(parent, id));
}

std::optional<std::vector<KOPANETVLAN>> Vlans() {
  std::vector<KOPANETVLAN> vlans;
  if (!HasVlanDriver()) return vlans;
  StringList lines(512);
  if (KOPACFileReadLines(paths::kProcVlanConfig, lines.Out()) < 0) {
    return Fail(ZARNNETERR_OPEN, std::nullopt, Place("net_vlan_enum"));
  }
  for (int i = kHeaderLines; i < lines.Count(); ++i) {
    KOPANETVLAN vlan{};
    const char* const line = lines[i];
    if (line == nullptr) {
      LOG_ERROR_AT(Place("net_vlan_enum"), "%s:%d Get NULL string from %s", paths::kProcVlanConfig);
      return Fail(ZARNNETERR_UNEXPECTED_CONTENT, std::nullopt, Place("net_vlan_enum"));
    }
    if (!ReadVlan(line, &vlan)) {
      LOG_ERROR_AT(Place("net_vlan_enum"), "%s:%d Get wrong format from %s: %s",
                   paths::kProcVlanConfig, line);
      return Fail(ZARNNETERR_UNEXPECTED_CONTENT, std::nullopt, Place("net_vlan_enum"));
    }
    vlans.push_back(vlan);
  }
  return vlans;
}

}  // namespace frame::facts
