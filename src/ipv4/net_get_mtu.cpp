// The MTU in force: what the kernel has, asked of the ports that carry an Open vSwitch device's
// traffic.
#include <algorithm>
#include <string>
#include <string_view>

#include <zarnnetsdk/ipv4.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/os/kernel.h"
#include "ipv4/ovs_device.h"

using namespace frame;

namespace {

int MtuOfInterface(const char* ifname) {
  const int mtu = ZARNGetMTU(ifname);
  if (mtu < 0) LOG_ERROR("%s:%d Failed to get MTU of %s", ifname);
  return mtu;
}

int MtuUnder(const char* ifname) {
  const auto port = ipv4::UnderlyingPort(ifname);
  if (!port) {
    LOG_ERROR("%s:%d get ovs origin interface error");
    return -1;
  }
  return MtuOfInterface(port->c_str());
}

// The largest of the members'; a bond without any has none.
int MtuOfBond(const char* bond) {
  const auto members = ipv4::BondMembers(bond);
  if (!members) {
    LOG_ERROR("%s:%d Failed to get OVS bond slave of %s", bond);
    return -1;
  }
  int largest = -1;
  for (const std::string& member : *members) {
    const int mtu = ZARNGetMTU(member.c_str());
    if (mtu < 0) {
      LOG_ERROR("%s:%d Failed to Get the MTU of %s", member.c_str());
      return -1;
    }
    largest = std::max(largest, mtu);
  }
  return largest;
}

}  // namespace

int ZARNGetMTU(const char* szIfname) {
  return Boundary(-1, [&]() -> int {
    constexpr std::size_t kMaxName = 16;
    if (IsEmpty(szIfname)) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    if (std::string_view(szIfname).size() > kMaxName) {
      LOG_ERROR("%s:%d interface name is too long");
      return -1;
    }
    const InetSocket socket;
    if (!socket.IsOpen()) return -1;
    return FitsKernel(szIfname) ? socket.Mtu(szIfname).value_or(0) : 0;
  });
}

int ZARNGetMTUSetting(const char* szIfname) {
  return Boundary(-1, [&]() -> int {
    if (IsEmpty(szIfname)) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    switch (ipv4::OvsKindOf(szIfname)) {
      case ipv4::OvsKind::kBond:
        return MtuOfBond(szIfname);
      case ipv4::OvsKind::kPort:
        return MtuUnder(szIfname);
      default:
        return MtuOfInterface(szIfname);
    }
  });
}
