// Sets the MTU of an interface in the running kernel: of the ports that carry an Open vSwitch
// device's traffic, and of a VLAN's parent before the VLAN.
#include <cstdlib>
#include <string>
#include <string_view>

#include <zarnnetsdk/iface.h>
#include <zarnnetsdk/ipv4.h>
#include <zarnnetsdk/virtual.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/os/kernel.h"
#include "ipv4/ovs_device.h"

using namespace frame;

namespace {

// The kernel stacks no more VLANs than this. A parent in another network namespace may bear the
// name of an interface of this one, so that the names need not end.
constexpr int kMaxParents = 8;

// Brings an interface up when its scope ends: a refused MTU must not leave it down.
class BringUpAtEnd {
 public:
  explicit BringUpAtEnd(const char* ifname) : ifname_(ifname) {}
  ~BringUpAtEnd() { KOPANetIfUp(ifname_); }  // the outcome of the MTU is what the caller asked for
  BringUpAtEnd(const BringUpAtEnd&) = delete;
  BringUpAtEnd& operator=(const BringUpAtEnd&) = delete;

 private:
  const char* ifname_;
};

bool ApplyWhileDown(const char* ifname, const char* mtu) {
  const InetSocket socket;
  if (!socket.IsOpen()) return false;
  LOG_WARN("%s:%d we temporarily do the eth up/down in sdk when setting MTU");
  KOPANetIfDown(ifname);  // an interface that stays up answers for itself when it gets the MTU
  return socket.SetMtu(ifname, std::atoi(mtu));
}

// NOLINTNEXTLINE(misc-no-recursion): from a VLAN to its parent, bounded by kMaxParents
bool Apply(const char* ifname, const char* mtu, int parentsLeft) {
  constexpr std::size_t kMaxName = 16;
  if (std::string_view(ifname).size() > kMaxName) return Fail(ZARNNETERR_BAD_PARAMETER, false);
  if (!FitsKernel(ifname)) return false;
  const BringUpAtEnd bringUp(ifname);
  KOPANETVLAN vlan{};
  const int isVlan = KOPANetVlanGet(ifname, &vlan);
  if (isVlan < 0) return false;
  if (isVlan == 1) {
    const std::string parent(FieldText(vlan.szRowDev));
    if (parent == ifname || parentsLeft == 0) return Fail(ZARNNETERR_REFUSED, false);
    if (!Apply(parent.c_str(), mtu, parentsLeft - 1)) return false;
  }
  return ApplyWhileDown(ifname, mtu);
}

bool ApplyToBond(const char* bond, const char* mtu) {
  const auto members = ipv4::BondMembers(bond);
  if (!members) {
    LOG_ERROR("%s:%d Failed to get OVS bond slave of %s", bond);
    return false;
  }
  for (const std::string& member : *members) {
    if (Apply(member.c_str(), mtu, kMaxParents)) continue;
    LOG_ERROR("%s:%d Failed to set the MTU %s to OVS bonding slave %s", mtu, member.c_str());
    return false;
  }
  return true;
}

bool ApplyToInterface(const char* ifname, const char* mtu) {
  if (Apply(ifname, mtu, kMaxParents)) return true;
  LOG_ERROR("%s:%d Failed to set MTU %s of %s", mtu, ifname);
  return false;
}

bool ApplyUnder(const char* ifname, const char* mtu) {
  const auto port = ipv4::UnderlyingPort(ifname);
  if (!port) LOG_ERROR("%s:%d get ovs origin interface error");
  return port && ApplyToInterface(port->c_str(), mtu);
}

}  // namespace

int ZARNNetSetMTUEth(const char* szMTU, const char* szIfname) {
  return Boundary(-1, [&]() -> int {
    if (AnyEmpty({szMTU, szIfname})) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    bool applied = false;
    switch (ipv4::OvsKindOf(szIfname)) {
      case ipv4::OvsKind::kBond:
        applied = ApplyToBond(szIfname, szMTU);
        break;
      case ipv4::OvsKind::kPort:
        applied = ApplyUnder(szIfname, szMTU);
        break;
      case ipv4::OvsKind::kNone:
        applied = ApplyToInterface(szIfname, szMTU);
        break;
    }
    return applied ? 0 : -1;
  });
}
