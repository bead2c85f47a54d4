// SPDX-License-Identifier: Apache-2.0
// Switches IPv6 off and on for one interface, through the kernel's switch; and by that drops its
// addresses.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <strings.h>

#include <zarnnetsdk/iface.h>
#include <zarnnetsdk/ipv6.h>
#include <zarnnetsdk/net_int.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/facts/addresses.h"
#include "frame/facts/inventory.h"
#include "frame/model/ifcfg.h"
#include "frame/model/paths.h"
#include "frame/os/file.h"
#include "frame/os/key_file.h"
#include "frame/os/wait.h"
#include "ipv4/flush.h"

using namespace frame;

namespace {

bool WriteSwitch(const std::string& path, bool on) {
  const File file = OpenFile(path, "w");
  if (!file) {
    LOG_ERROR("%s:%d open file %s failed", path.c_str());
    return Fail(ZARNNETERR_OPEN, false);
  }
  const bool written =
      std::fputs(on ? "0\n" : "1\n", file.get()) >= 0 && std::fflush(file.get()) == 0;
  return written || Fail(ZARNNETERR_WRITE, false);
}

// The flag is looked for in the first two bytes of the field only.
bool IsTentative(const ZARNNETV6ADDR& address) {
  constexpr std::uint16_t kTentative = 0x40;
  std::uint16_t flags = 0;
  std::memcpy(&flags, &address.flags, sizeof flags);
  return (flags & kTentative) != 0;
}

// An interface with more addresses than this has been up for long.
bool HasTentativeLinkLocal(const std::string& ifname) {
  constexpr std::size_t kMax = 16;
  constexpr std::uint32_t kLinkLocal = 0x20;
  const auto addresses = facts::KernelV6Addresses(ifname);
  return addresses && addresses->size() <= kMax &&
         std::any_of(addresses->begin(), addresses->end(), [](const ZARNNETV6ADDR& address) {
           return (address.scope & kLinkLocal) != 0 && IsTentative(address);
         });
}

}  // namespace

bool ipv4::SwitchV6(const std::string& ifname, bool on) {
  if (!facts::IsOfKind(ifname, ZARNNETKIND_USABLE)) {
    return facts::IsOfKind(ifname, ZARNNETKIND_ALL);
  }
  if (!WriteSwitch(paths::Ipv6Switch(ifname), on)) return false;
  if (on) WaitWhile([&] { return HasTentativeLinkLocal(ifname); });
  return true;
}

bool ipv4::FlushV6(const std::string& ifname) {
  const std::string path = paths::Ifcfg(ifname);
  const KeyValue type = ReadKey(path, keys::kIpv6Type, 16);
  if (type.Unreadable()) {
    LOG_ERROR("%s:%d Failed to get key [%s] in [%s]", keys::kIpv6Type, path.c_str());
    return false;
  }
  if (!SwitchV6(ifname, false)) {
    LOG_ERROR("%s:%d Failed to disable IPv6 on [%s]", ifname.c_str());
    return false;
  }
  if (strcasecmp(type.text.c_str(), "off") == 0) return true;
  if (!SwitchV6(ifname, true)) {
    LOG_ERROR("%s:%d Failed to enable IPv6 on [%s]", ifname.c_str());
    return false;
  }
  return true;
}

int ZARNLnxIPv6ProcAction(const char* szIfname, unsigned int action) {
  return Boundary(-1, [&]() -> int {
    constexpr unsigned kDisable = 1;
    if (IsUnfitName(szIfname)) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    return ipv4::SwitchV6(szIfname, action != kDisable) ? 0 : -1;
  });
}

int ZARNLnxIPv6FlushAddr(const char* szIfname) {
  return Boundary(-1, [&]() -> int {
    if (IsUnfitName(szIfname)) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    return ipv4::FlushV6(szIfname) ? 0 : -1;
  });
}
