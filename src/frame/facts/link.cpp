// SPDX-License-Identifier: Apache-2.0
// The state of an interface, of an Open vSwitch device that of what lies under it.
#include "frame/facts/link.h"

#include <cerrno>
#include <net/if.h>

#include "frame/base/log.h"
#include "frame/facts/bonds.h"
#include "frame/facts/ovs.h"
#include "frame/model/paths.h"
#include "frame/os/file.h"
#include "frame/os/kernel.h"

namespace frame::facts {
namespace {

// Its lines are known by the name of the function that asks for the link.
constexpr char kSource[] = "net_if_is_link";

std::optional<bool> CarrierOf(const char* ifname) {
  const InetSocket socket;
  if (!socket.IsOpen()) {
    LOG_ERROR_AT(Place(kSource), "%s:%d Cannot open control socket");
    return Fail(ZARNNETERR_OPEN, std::nullopt, Place(kSource));
  }
  const auto flags = socket.Flags(ifname);
  if (!flags) {
    const ZARNNETERROR code = RefusalCode();
    LOG_NOTE_AT(Place(kSource), "%s:%d Cannot get link status of the %s: %m", ifname);
    return Fail(code, std::nullopt, Place(kSource));
  }
  return (*flags & IFF_RUNNING) != 0;
}

std::optional<bool> LinkOf(const std::string& ifname) {
  const auto carrier = CarrierOf(ifname.c_str());
  if (!carrier) LOG_NOTE_AT(Place(kSource), "%s:%d get link status failed on %s", ifname.c_str());
  return carrier;
}

// The first slave with carrier, or that cannot be asked, decides.
std::optional<bool> AnySlaveLink(const std::string& bond) {
  const auto slaves = SlavesOf(bond);
  if (!slaves) {
    LOG_ERROR_AT(Place(kSource), "%s:%d Failed to get OVS bond slave of %s", bond.c_str());
    return std::nullopt;
  }
  if (slaves->empty()) return Fail(ZARNNETERR_NOT_FOUND, std::nullopt, Place(kSource));
  std::optional<bool> carrier;
  for (const std::string& slave : *slaves) {
    carrier = LinkOf(slave);
    if (!carrier || *carrier) break;
  }
  return carrier;
}

}  // namespace

std::optional<bool> HasLink(const std::string& ifname) {
  const int ovs = OvsKindOf(ifname);
  if (ovs == ZARNOVS_BOND) return AnySlaveLink(ifname);
  if (ovs == ZARNOVS_NONE) return LinkOf(ifname);
  const auto port = PortUnder(ifname);
  if (port && port->size() < IFNAMSIZ) return LinkOf(*port);
  LOG_ERROR_AT(Place(kSource), "%s:%d get ovs origin interface error");
  return Fail(ZARNNETERR_BAD_PARAMETER, std::nullopt, Place(kSource));
}

bool IsUp(const std::string& ifname) {
  constexpr Place kAt("net_if_flags");
  const File file = OpenFile(paths::SysNet(ifname, "/flags"), "r");
  if (!file) return Fail(errno == ENOENT ? ZARNNETERR_NOT_FOUND : ZARNNETERR_OPEN, false, kAt);
  unsigned int flags = 0;
  if (std::fscanf(file.get(), "0x%x", &flags) != 1) {
    LOG_ERROR_AT(kAt, "%s:%d fscanf failed. %m");
    return Fail(ZARNNETERR_READ, false, kAt);
  }
  return (flags & IFF_UP) != 0;
}

}  // namespace frame::facts
