// The MTU that is configured for an interface: one key a name in the system settings file.
#include <string>

#include <zarnnetsdk/ipv4.h>
#include <zarnnetsdk/virtual.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/model/mtu.h"
#include "frame/model/paths.h"
#include "frame/os/key_file.h"
#include "frame/os/lock.h"
#include "ipv4/ovs_device.h"

using namespace frame;

namespace {

constexpr char kDefaultMtu[] = "1500";

// The setting of an Open vSwitch port is that of the port under it.
std::string SettingOwner(const char* ifname) {
  if (ipv4::OvsKindOf(ifname) != ipv4::OvsKind::kPort) return ifname;
  const auto port = ipv4::UnderlyingPort(ifname);
  if (!port) LOG_ERROR("%s:%d Failed to fetch slave interface from OVS master %s", ifname);
  return port.value_or(ifname);
}

bool Store(const char* ifname, const char* mtu) {
  if (KOPACFileSetKeyValue(paths::kInfo, model::MtuKey(ifname).c_str(), mtu, kQuotedLine) >= 0)
    return true;
  const InnerError inner;
  LOG_ERROR("%s:%d Failed to set %s MTU config value[0x%04X %s:%d]", ifname, inner.code, inner.file,
            inner.line);
  return false;
}

}  // namespace

int ZARNConfGetMTUValue(const char* szIfname, char* szBuf, int cbBuf) {
  return Boundary(-1, [&](const Place& at) -> int {
    if (IsEmpty(szIfname) || szBuf == nullptr || cbBuf <= 0)
      return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    const auto size = static_cast<std::size_t>(cbBuf);
    const std::string owner = SettingOwner(szIfname);
    CopyText("", szBuf, size);
    const int length =
        KOPACFileGetKeyValue(paths::kInfo, model::MtuKey(owner).c_str(), szBuf, size, 0);
    if (length < 0) {
      LOG_ERROR_FUNC(at, "%s (%d) Failed to get %s_mtu (%X)", owner.c_str(), KOPACErrGet());
      return -1;
    }
    if (length == 0) CopyText(kDefaultMtu, szBuf, size);
    return 0;
  });
}

int ZARNConfSetMTUValue(const char* szMTU, const char* szIfname) {
  return Boundary(-1, [&]() -> int {
    if (AnyEmpty({szMTU, szIfname})) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    const std::string owner = SettingOwner(szIfname);
    KOPANETVLAN vlan{};
    const int isVlan = KOPANetVlanGet(owner.c_str(), &vlan);
    // Where the kernel cannot be asked nothing is stored and nothing is wrong: callers rely on it.
    if (isVlan < 0) return 0;
    Lock lock(kSettingsWrite);
    if (!lock.Held()) {
      const InnerError inner;
      LOG_ERROR("%s:%d Failed to lock zarninfo [0x%04X %s:%d]", inner.code, inner.file, inner.line);
      return -1;
    }
    const bool parentStored = isVlan != 1 || Store(vlan.szRowDev, szMTU);
    const bool stored = Store(owner.c_str(), szMTU);
    if (!lock.Release()) {
      const InnerError inner;
      LOG_ERROR("%s:%d Failed to unlock zarninfo[0x%04X %s:%d]", inner.code, inner.file,
                inner.line);
      return -1;
    }
    return parentStored && stored ? 0 : -1;
  });
}
