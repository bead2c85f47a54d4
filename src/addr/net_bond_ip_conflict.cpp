// Whether a member of a bond is configured with the bond's own address.
#include <algorithm>
#include <cstring>
#include <optional>
#include <string>

#include <zarnnetsdk/addr.h>
#include <zarnnetsdk/ipv4.h>
#include <zarnnetsdk/virtual.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"

using namespace frame;

namespace {

constexpr int kOvsBond = 2;
constexpr std::size_t kAddressSize = 1025;  // 1024 characters are compared

std::optional<std::string> ConfiguredAddress(const std::string& ifname) {
  char address[kAddressSize] = "";
  if (ZARNILnxGetIPFromCfg(ifname.c_str(), address, sizeof address) < 0) return std::nullopt;
  return address;
}

// Callers have room for four characters; a longer name is cut to them.
void GiveOutPort(std::string_view port, char* out, int size) {
  constexpr std::size_t kGiven = 4;
  const std::size_t length = std::min(port.size(), kGiven);
  std::memcpy(out, port.data(), length);
  if (length < kGiven || size > static_cast<int>(kGiven)) out[length] = '\0';
}

// 1 when the port has the bond's address, 0 when not, -1 when its file cannot be read.
int Compare(std::string_view port, bool ovs, const std::string& bondAddress) {
  const std::string name = std::string(ovs ? "ovs_" : "").append(port);
  const auto address = ConfiguredAddress(name);
  if (!address) {
    LOG_ERROR("%s:%d get %s's IP from config failed", name.c_str());
    return -1;
  }
  if (address->empty()) {
    LOG_NOTE("%s:%d %s's IP is empty", name.c_str());
    return 0;
  }
  return *address == bondAddress ? 1 : 0;
}

}  // namespace

int ZARNNetBondIPConflict(const char* szBond, char* szOutPort, int cbOutPort) {
  return Boundary(-1, [&]() -> int {
    if (IsUnfitName(szBond) || szOutPort == nullptr || cbOutPort < 1) {
      return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    }
    ZARNLINKAGGROPT record{};
    if (ZARNNetLinkAggrGet(szBond, &record) != 0) {
      LOG_ERROR("%s:%d get %s information failed", szBond);
      return -1;
    }
    const auto bondAddress = ConfiguredAddress(szBond);
    if (!bondAddress) {
      LOG_ERROR("%s:%d get %s's IP failed", szBond);
      return -1;
    }
    const bool ovs = KOPANetOVSIfIsMaster(szBond) == kOvsBond;
    // A bond takes its settings from its first member, which may still show them.
    for (int i = 1; i < record.cSlave; ++i) {
      const std::string_view port = FieldText(record.rgszSlave[i]);
      const int same = Compare(port, ovs, *bondAddress);
      if (same == 1) GiveOutPort(port, szOutPort, cbOutPort);
      if (same != 0) return same;
    }
    return 0;
  });
}
