// SPDX-License-Identifier: Apache-2.0
// The MTU in force: what the kernel has, asked of the ports that carry an Open vSwitch device's
// traffic.
#include <algorithm>
#include <string>

#include <zarnnetsdk/ipv4.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/facts/bonds.h"
#include "frame/facts/ovs.h"
#include "frame/os/kernel.h"

using namespace frame;

namespace {

// 0 without such an interface, -1 where the kernel cannot be asked.
int KernelMtu(const std::string& ifname) {
  constexpr std::size_t kMaxName = 16;
  if (ifname.size() > kMaxName) {
    LOG_ERROR("%s:%d interface name is too long");
    return Fail(ZARNNETERR_BAD_PARAMETER, -1);
  }
  const InetSocket socket;
  if (!socket.IsOpen()) return Fail(ZARNNETERR_OPEN, -1);
  return FitsKernel(ifname) ? socket.Mtu(ifname).value_or(0) : 0;
}

int MtuOfInterface(const std::string& ifname) {
  const int mtu = KernelMtu(ifname);
  if (mtu < 0) LOG_ERROR("%s:%d Failed to get MTU of %s", ifname.c_str());
  return mtu;
}

int MtuUnder(const std::string& ifname) {
  const auto port = facts::PortUnder(ifname);
  if (port) return MtuOfInterface(*port);
  LOG_ERROR("%s:%d get ovs origin interface error");
  return -1;
}

// The largest of the slaves'; a bond without any has none.
int MtuOfBond(const std::string& bond) {
  const auto slaves = facts::SlavesOf(bond);
  if (!slaves) {
    LOG_ERROR("%s:%d Failed to get OVS bond slave of %s", bond.c_str());
    return -1;
  }
  int largest = -1;
  for (const std::string& slave : *slaves) {
    const int mtu = KernelMtu(slave);
    if (mtu < 0) {
      LOG_ERROR("%s:%d Failed to Get the MTU of %s", slave.c_str());
      return -1;
    }
    largest = std::max(largest, mtu);
  }
  return largest >= 0 ? largest : Fail(ZARNNETERR_NOT_FOUND, -1);
}

}  // namespace

int ZARNGetMTU(const char* szIfname) {
  return Boundary(-1, [&]() -> int {
    return IsEmpty(szIfname) ? Fail(ZARNNETERR_BAD_PARAMETER, -1) : KernelMtu(szIfname);
  });
}

int ZARNGetMTUSetting(const char* szIfname) {
  return Boundary(-1, [&]() -> int {
    if (IsEmpty(szIfname)) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    switch (facts::OvsKindOf(szIfname)) {
      case ZARNOVS_BOND:
        return MtuOfBond(szIfname);
      case ZARNOVS_DEVICE:
        return MtuUnder(szIfname);
      default:
        return MtuOfInterface(szIfname);
    }
  });
}
