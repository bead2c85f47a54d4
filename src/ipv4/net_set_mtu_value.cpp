// SPDX-License-Identifier: Apache-2.0
// Gives an interface an MTU: stored in the settings, applied in the kernel, and told to the
// plugins.
#include <algorithm>
#include <optional>
#include <string>

#include <zarnnetsdk/ipv4.h>
#include <zarnnetsdk/net_int.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/facts/bonds.h"
#include "frame/facts/driver.h"
#include "frame/facts/ovs.h"
#include "frame/model/mtu.h"
#include "frame/os/wait.h"
#include "ipv4/hooks.h"
#include "ipv4/mtu.h"

using namespace frame;

namespace {

bool StoreAndApply(const std::string& mtu, const std::string& slave) {
  if (!ipv4::StoreMtu(slave, mtu)) {
    LOG_ERROR("%s:%d ZARNConfSetMTUValue [%s] failed (0x%04X)", slave.c_str(), KOPACErrGet());
    return false;
  }
  if (!ipv4::ApplyMtu(slave, mtu)) {
    LOG_ERROR("%s:%d ZARNNetSetMTUEth [%s] failed (0x%04X)", slave.c_str(), KOPACErrGet());
    return false;
  }
  return true;
}

bool SetBond(const std::string& mtu, const std::string& bond) {
  if (!ipv4::StoreMtu(bond, mtu)) {
    LOG_ERROR("%s:%d Failed to ifconfig MTU Value(0x%04X)", KOPACErrGet());
    return false;
  }
  const auto slaves = facts::SlavesOf(bond);
  if (!slaves) {
    LOG_ERROR("%s:%d Failed to get OVS bond slave of %s", bond.c_str());
    return false;
  }
  return std::all_of(slaves->begin(), slaves->end(),
                     [&](const std::string& slave) { return StoreAndApply(mtu, slave); });
}

// 1500 counts as jumbo here, and is kept back from slow links too. A speed that is not known is
// fast enough.
bool IsJumboOnSlowLink(int speed, const std::string& mtu) {
  constexpr int kGigabit = 1000;
  constexpr int kLargestPlainMtu = 1499;
  return speed >= 0 && speed < kGigabit && model::MtuNumber(mtu) > kLargestPlainMtu;
}

bool SetInterface(const std::string& mtu, const std::string& ifname) {
  if (!ipv4::StoreMtu(ifname, mtu)) {
    LOG_ERROR("%s:%d Failed to ifconfig MTU Value(0x%04X)", KOPACErrGet());
    return false;
  }
  const auto driver = facts::DriverInfoOf(ifname);
  if (!driver) {
    LOG_ERROR("%s:%d Can not get EthInfo(%X).", KOPACErrGet());
    return false;
  }
  if (IsJumboOnSlowLink(driver->speed, mtu)) {
    LOG_WARN("%s:%d Skip setting Jumbo MTU %s to %s which link-speed is lower than 1Gbps.",
             mtu.c_str(), ifname.c_str());
    return true;
  }
  if (!ipv4::ApplyMtu(ifname, mtu)) {
    LOG_ERROR("%s:%d Failed to ifconfig MTU Value(0x%04X)", KOPACErrGet());
    return false;
  }
  return true;
}

void TellAfter(const std::string& mtu, const std::string& ifname) {
  constexpr unsigned kLinkUpSeconds = 5;  // links come back up before plugins act on them
  WaitSeconds(kLinkUpSeconds);
  // The change stands whatever the plugins make of it; the hook has logged its failure.
  static_cast<void>(ipv4::TellMtuChange(ZARNNETSTAGE_AFTER, ifname, mtu));
}

// What carries the traffic: of an Open vSwitch device the port under it.
std::optional<std::string> CarrierOf(const std::string& ifname, int ovsKind) {
  if (ovsKind != ZARNOVS_DEVICE) return ifname;
  auto port = facts::PortUnder(ifname);
  if (!port) LOG_ERROR("%s:%d get ovs origin interface error");
  return port;
}

int SetMtu(const std::string& mtu, const std::string& ifname) {
  if (!ipv4::TellMtuChange(ZARNNETSTAGE_BEFORE, ifname, mtu)) {
    LOG_ERROR("%s:%d Failed to send mtu change prehook");
  }
  const int kind = facts::OvsKindOf(ifname);
  if (kind == ZARNOVS_BOND) {
    const bool done = SetBond(mtu, ifname);
    TellAfter(mtu, ifname);  // also after a failure: some slaves may have changed
    return done ? 0 : -1;
  }
  const auto carrier = CarrierOf(ifname, kind);
  if (!carrier) return -1;
  if (!SetInterface(mtu, *carrier)) {
    LOG_ERROR("%s:%d Failed to set MTU %s of %s", mtu.c_str(), carrier->c_str());
    return -1;
  }
  TellAfter(mtu, ifname);
  return 0;
}

}  // namespace

int ZARNNetSetMTUValue(const char* szMTU, const char* szIfname) {
  return Boundary(-1, [&]() -> int {
    if (IsEmpty(szIfname) || szMTU == nullptr || !model::IsMtuText(szMTU))
      return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    return SetMtu(szMTU, szIfname);
  });
}
