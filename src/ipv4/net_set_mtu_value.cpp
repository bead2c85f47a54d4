// Gives an interface an MTU: stored in the settings, applied in the kernel, and told to the
// plugins.
#include <cstdlib>
#include <string>
#include <unistd.h>

#include <zarnnetsdk/iface.h>
#include <zarnnetsdk/ipv4.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/os/plugin_event.h"
#include "ipv4/ovs_device.h"

using namespace frame;

namespace {

// The links come back up before plugins act on them.
void WaitForLinks() {
  constexpr unsigned kLinkUpSeconds = 5;
  for (unsigned left = kLinkUpSeconds; left > 0;)
    left = ::sleep(left);  // a signal cuts a sleep short
}

bool StoreAndApply(const char* mtu, const char* member) {
  if (ZARNConfSetMTUValue(mtu, member) < 0) {
    LOG_ERROR("%s:%d ZARNConfSetMTUValue [%s] failed (0x%04X)", member, KOPACErrGet());
    return false;
  }
  if (ZARNNetSetMTUEth(mtu, member) < 0) {
    LOG_ERROR("%s:%d ZARNNetSetMTUEth [%s] failed (0x%04X)", member, KOPACErrGet());
    return false;
  }
  return true;
}

bool SetBond(const char* mtu, const char* bond) {
  if (ZARNConfSetMTUValue(mtu, bond) < 0) {
    LOG_ERROR("%s:%d Failed to ifconfig MTU Value(0x%04X)", KOPACErrGet());
    return false;
  }
  const auto members = ipv4::BondMembers(bond);
  if (!members) {
    LOG_ERROR("%s:%d Failed to get OVS bond slave of %s", bond);
    return false;
  }
  for (const std::string& member : *members) {
    if (!StoreAndApply(mtu, member.c_str())) return false;
  }
  return true;
}

// 1500 counts as jumbo here, and is kept back from slow links too. A speed that is not known is
// fast enough.
bool IsJumboOnSlowLink(int speed, const char* mtu) {
  constexpr int kGigabit = 1000;
  constexpr int kLargestPlainMtu = 1499;
  return speed >= 0 && speed < kGigabit && std::atoi(mtu) > kLargestPlainMtu;
}

bool SetInterface(const char* mtu, const char* ifname) {
  if (ZARNConfSetMTUValue(mtu, ifname) < 0) {
    LOG_ERROR("%s:%d Failed to ifconfig MTU Value(0x%04X)", KOPACErrGet());
    return false;
  }
  ZARNNETETHINFO info{};
  if (ZARNNetGetEthInfo(ifname, &info) < 0) {
    LOG_ERROR("%s:%d Can not get EthInfo(%X).", KOPACErrGet());
    return false;
  }
  if (IsJumboOnSlowLink(info.speed, mtu)) {
    LOG_WARN("%s:%d Skip setting Jumbo MTU %s to %s which link-speed is lower than 1Gbps.", mtu,
             ifname);
    return true;
  }
  if (ZARNNetSetMTUEth(mtu, ifname) < 0) {
    LOG_ERROR("%s:%d Failed to ifconfig MTU Value(0x%04X)", KOPACErrGet());
    return false;
  }
  return true;
}

void TellAfter(const char* mtu, const char* ifname) {
  WaitForLinks();
  // The change stands whatever the plugins make of it; the hook has logged its failure.
  ZARNNetMTUChangeHook(ifname, mtu, kStageAfter);
}

}  // namespace

int ZARNNetSetMTUValue(const char* szMTU, const char* szIfname) {
  return Boundary(-1, [&]() -> int {
    if (AnyEmpty({szMTU, szIfname})) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    if (ZARNNetMTUChangeHook(szIfname, szMTU, kStageBefore) < 0) {
      LOG_ERROR("%s:%d Failed to send mtu change prehook");
    }
    const ipv4::OvsKind kind = ipv4::OvsKindOf(szIfname);
    if (kind == ipv4::OvsKind::kBond) {
      const bool done = SetBond(szMTU, szIfname);
      TellAfter(szMTU, szIfname);  // also after a failure: some members may have changed
      return done ? 0 : -1;
    }
    std::string ifname = szIfname;
    if (kind == ipv4::OvsKind::kPort) {
      const auto port = ipv4::UnderlyingPort(szIfname);
      if (!port) {
        LOG_ERROR("%s:%d get ovs origin interface error");
        return -1;
      }
      ifname = *port;
    }
    if (!SetInterface(szMTU, ifname.c_str())) {
      LOG_ERROR("%s:%d Failed to set MTU %s of %s", szMTU, ifname.c_str());
      return -1;
    }
    TellAfter(szMTU, szIfname);
    return 0;
  });
}
