// SPDX-License-Identifier: Apache-2.0
// Sets the MTU of an interface in the running kernel: of the ports that carry an Open vSwitch
// device's traffic, and of a VLAN's parent before the VLAN.
#include <string>

#include <zarnnetsdk/ipv4.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/base/undo.h"
#include "frame/facts/bonds.h"
#include "frame/facts/ovs.h"
#include "frame/facts/vlans.h"
#include "frame/model/mtu.h"
#include "frame/os/kernel.h"
#include "ipv4/mtu.h"

using namespace frame;

namespace {

// The kernel stacks no more VLANs than this. A parent in another network namespace may bear the
// name of an interface of this one, so that the names need not end.
constexpr int kMaxParents = 8;

bool ApplyWhileDown(const InetSocket& socket, const std::string& ifname, const std::string& mtu) {
  LOG_WARN("%s:%d we temporarily do the eth up/down in sdk when setting MTU");
  // An interface that stays up answers for itself when it gets the MTU.
  static_cast<void>(socket.SetUp(ifname, false));
  return socket.SetMtu(ifname, model::MtuNumber(mtu)) || Fail(ZARNNETERR_REFUSED, false);
}

// NOLINTNEXTLINE(misc-no-recursion): from a VLAN to its parent, bounded by kMaxParents
bool Apply(const std::string& ifname, const std::string& mtu, int parentsLeft) {
  constexpr std::size_t kMaxName = 16;
  if (ifname.size() > kMaxName) return Fail(ZARNNETERR_BAD_PARAMETER, false);
  if (!FitsKernel(ifname)) return Fail(ZARNNETERR_NOT_FOUND, false);
  const InetSocket socket;
  if (!socket.IsOpen()) return Fail(ZARNNETERR_VLAN_QUERY, false);
  // Never kept: what the kernel makes of the MTU, the interface does not stay down.
  Undo bringUp;
  bringUp.Add([&] { static_cast<void>(socket.SetUp(ifname, true)); });
  if (const auto vlan = facts::VlanOf(socket, ifname)) {
    const std::string parent(FieldText(vlan->szRowDev));
    if (parent == ifname || parentsLeft == 0) return Fail(ZARNNETERR_REFUSED, false);
    if (!Apply(parent, mtu, parentsLeft - 1)) return false;
  }
  return ApplyWhileDown(socket, ifname, mtu);
}

bool ApplyToBond(const std::string& bond, const std::string& mtu) {
  const auto slaves = facts::SlavesOf(bond);
  if (!slaves) {
    LOG_ERROR("%s:%d Failed to get OVS bond slave of %s", bond.c_str());
    return false;
  }
  for (const std::string& slave : *slaves) {
    if (Apply(slave, mtu, kMaxParents)) continue;
    LOG_ERROR("%s:%d Failed to set the MTU %s to OVS bonding slave %s", mtu.c_str(), slave.c_str());
    return false;
  }
  return true;
}

bool ApplyToInterface(const std::string& ifname, const std::string& mtu) {
  if (Apply(ifname, mtu, kMaxParents)) return true;
  LOG_ERROR("%s:%d Failed to set MTU %s of %s", mtu.c_str(), ifname.c_str());
  return false;
}

bool ApplyUnder(const std::string& ifname, const std::string& mtu) {
  const auto port = facts::PortUnder(ifname);
  if (!port) LOG_ERROR("%s:%d get ovs origin interface error");
  return port && ApplyToInterface(*port, mtu);
}

}  // namespace

bool ipv4::ApplyMtu(const std::string& ifname, const std::string& mtu) {
  switch (facts::OvsKindOf(ifname)) {
    case ZARNOVS_BOND:
      return ApplyToBond(ifname, mtu);
    case ZARNOVS_DEVICE:
      return ApplyUnder(ifname, mtu);
    default:
      return ApplyToInterface(ifname, mtu);
  }
}

int ZARNNetSetMTUEth(const char* szMTU, const char* szIfname) {
  return Boundary(-1, [&]() -> int {
    if (IsEmpty(szIfname) || szMTU == nullptr || !model::IsMtuText(szMTU))
      return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    return ipv4::ApplyMtu(szIfname, szMTU) ? 0 : -1;
  });
}
