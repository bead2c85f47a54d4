// SPDX-License-Identifier: Apache-2.0
// The MTU that is configured for an interface: one key a name in the system settings file.
#include <string>

#include <zarnnetsdk/ipv4.h>
#include <zarnnetsdk/net_int.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/facts/ovs.h"
#include "frame/facts/vlans.h"
#include "frame/model/mtu.h"
#include "frame/model/paths.h"
#include "frame/os/kernel.h"
#include "frame/os/key_file.h"
#include "frame/os/lock.h"

using namespace frame;

namespace {

constexpr char kDefaultMtu[] = "1500";

// The setting of an Open vSwitch device is that of the port under it.
std::string SettingOwner(const std::string& ifname) {
  if (facts::OvsKindOf(ifname) != ZARNOVS_DEVICE) return ifname;
  const auto port = facts::PortUnder(ifname);
  if (!port) LOG_ERROR("%s:%d Failed to fetch slave interface from OVS master %s", ifname.c_str());
  return port.value_or(ifname);
}

bool Store(const std::string& ifname, const std::string& mtu) {
  if (SetKey(paths::kInfo, model::MtuKey(ifname).c_str(), mtu.c_str(), kQuotedLine)) return true;
  const InnerError inner;
  LOG_ERROR("%s:%d Failed to set %s MTU config value[0x%04X %s:%d]", ifname.c_str(), inner.code,
            inner.file, inner.line);
  return false;
}

}  // namespace

std::optional<std::string> ipv4::StoredMtu(const std::string& ifname) {
  constexpr Place kAt(__FILE__, __LINE__, "ZARNConfGetMTUValue");
  constexpr std::size_t kSize = 1024;
  const std::string owner = SettingOwner(ifname);
  const KeyValue mtu = ReadKey(paths::kInfo, model::MtuKey(owner).c_str(), kSize);
  if (mtu.Unreadable()) {
    LOG_ERROR_FUNC(kAt, "%s (%d) Failed to get %s_mtu (%X)", owner.c_str(), KOPACErrGet());
    return std::nullopt;
  }
  return mtu.Found() ? mtu.text : kDefaultMtu;
}

bool ipv4::StoreMtu(const std::string& ifname, const std::string& mtu) {
  const std::string owner = SettingOwner(ifname);
  const InetSocket socket;
  // Where the kernel cannot be asked nothing is stored and nothing is wrong: callers rely on it.
  if (!socket.IsOpen()) return true;
  const auto vlan = facts::VlanOf(socket, owner);
  Lock lock(kSettingsWrite);
  if (!lock.HeldOrLog()) return false;
  const bool parentStored = !vlan || Store(vlan->szRowDev, mtu);
  const bool stored = Store(owner, mtu);
  if (!lock.Release()) {
    const InnerError inner;
    LOG_ERROR("%s:%d Failed to unlock zarninfo[0x%04X %s:%d]", inner.code, inner.file, inner.line);
    return false;
  }
  return parentStored && stored;
}

int ZARNConfGetMTUValue(const char* szIfname, char* szBuf, int cbBuf) {
  return Boundary(-1, [&]() -> int {
    if (IsEmpty(szIfname) || szBuf == nullptr || cbBuf <= 0)
      return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    const auto mtu = ipv4::StoredMtu(szIfname);
    CopyText(mtu.value_or(""), szBuf, static_cast<std::size_t>(cbBuf));
    return mtu ? 0 : -1;
  });
}

int ZARNConfSetMTUValue(const char* szMTU, const char* szIfname) {
  return Boundary(-1, [&]() -> int {
    if (IsEmpty(szIfname) || szMTU == nullptr || !model::IsMtuText(szMTU))
      return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    return ipv4::StoreMtu(szIfname, szMTU) ? 0 : -1;
  });
}
