// Switches IPv6 off and on for one interface, through the kernel's switch; and by that drops its
// addresses.
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <strings.h>
#include <unistd.h>

#include <zarnnetsdk/iface.h>
#include <zarnnetsdk/ipv6.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/model/ifcfg.h"
#include "frame/model/paths.h"
#include "frame/os/file.h"
#include "frame/os/key_file.h"

using namespace frame;

namespace {

constexpr unsigned kEnable = 0;
constexpr unsigned kDisable = 1;
constexpr unsigned kSwitchableKind = 2;  // what can hold an address
constexpr unsigned kAnyKind = 8;

bool WriteSwitch(const std::string& path, unsigned action) {
  const File file = OpenFile(path, "w");
  if (!file) {
    LOG_ERROR("%s:%d open file %s failed", path.c_str());
    return false;
  }
  return std::fputs(action == kDisable ? "1\n" : "0\n", file.get()) >= 0 &&
         std::fflush(file.get()) == 0;
}

// The flag is looked for in the first two bytes of the field only.
bool IsTentative(const ZARNNETV6ADDR& address) {
  constexpr std::uint16_t kTentative = 0x40;
  std::uint16_t flags = 0;
  std::memcpy(&flags, &address.flags, sizeof flags);
  return (flags & kTentative) != 0;
}

bool HasTentativeLinkLocal(const char* ifname) {
  constexpr int kMax = 16;
  constexpr std::uint32_t kLinkLocal = 0x20;
  std::array<ZARNNETV6ADDR, kMax> addresses;
  const int count = ZARNLnxV6IPGet(ifname, addresses.data(), kMax);
  if (count > kMax) return false;
  for (int i = 0; i < count; ++i) {
    const ZARNNETV6ADDR& address = addresses[static_cast<std::size_t>(i)];
    if ((address.scope & kLinkLocal) != 0 && IsTentative(address)) return true;
  }
  return false;
}

void WaitForLinkLocal(const char* ifname) {
  constexpr int kTries = 10;
  constexpr useconds_t kPause = 500'000;
  for (int i = 0; i < kTries && HasTentativeLinkLocal(ifname); ++i)
    ::usleep(kPause);
}

}  // namespace

int ZARNLnxIPv6ProcAction(const char* szIfname, unsigned int action) {
  return Boundary(-1, [&]() -> int {
    if (IsUnfitName(szIfname)) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    if (ZARNNetIsDevTypeMatch(szIfname, kSwitchableKind) != 1) {
      return ZARNNetIsDevTypeMatch(szIfname, kAnyKind) == 1 ? 0 : -1;
    }
    if (!WriteSwitch(paths::Ipv6Switch(szIfname), action)) return -1;
    if (action != kDisable) WaitForLinkLocal(szIfname);
    return 0;
  });
}

int ZARNLnxIPv6FlushAddr(const char* szIfname) {
  return Boundary(-1, [&]() -> int {
    if (IsUnfitName(szIfname)) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    const std::string path = paths::Ifcfg(szIfname);
    const KeyValue mode = ReadKey(path, keys::kIpv6Type, 16);
    if (mode.Unreadable()) {
      LOG_ERROR("%s:%d Failed to get key [%s] in [%s]", keys::kIpv6Type, path.c_str());
      return -1;
    }
    if (ZARNLnxIPv6ProcAction(szIfname, kDisable) < 0) {
      LOG_ERROR("%s:%d Failed to disable IPv6 on [%s]", szIfname);
      return -1;
    }
    if (strcasecmp(mode.text.c_str(), "off") == 0) return 0;
    if (ZARNLnxIPv6ProcAction(szIfname, kEnable) < 0) {
      LOG_ERROR("%s:%d Failed to enable IPv6 on [%s]", szIfname);
      return -1;
    }
    return 0;
  });
}
