// The MAC address of an Ethernet port, or of the port behind a virtual interface.
#include <cstdio>
#include <optional>
#include <string>
#include <string_view>

#include <zarnnetsdk/iface.h>
#include <zarnnetsdk/virtual.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/os/kernel.h"

using namespace frame;

namespace {

// The results of the two exported functions.
enum MacResult {
  kOk = 0,
  kBadRequest = 1,  // bad arguments, no such port, or the port's own address unreadable on request
  kNoOwnAddress = 2,
  kNoSharedAddress = 3,
  kTwoHeads = 4,
};

bool ReadOwnAddress(int index, char* buffer, std::size_t size) {
  CopyText("", buffer, size);
  const InetSocket socket;
  if (!socket.IsOpen()) {
    LOG_ERROR("%s:%d Failed to open socket");
    return false;
  }
  const auto mac = socket.HardwareAddress(Format("eth%d", index));
  if (!mac) {
    LOG_ERROR("%s:%d ioctl mac failed");
    return false;
  }
  const auto& m = *mac;
  CopyText(Format("%02x:%02x:%02x:%02x:%02x:%02x", m[0], m[1], m[2], m[3], m[4], m[5]), buffer,
           size);
  return true;
}

bool ReadSharedAddress(int index, char* buffer, int size) {
  CopyText("", buffer, static_cast<std::size_t>(size));
  return ZARNHAGetMac(Format("eth%d", index).c_str(), buffer, size) >= 0 && *buffer != '\0';
}

// A VLAN answers for its parent: what stands before the first dot.
std::optional<std::string> WithoutVlan(std::string_view ifname) {
  const std::string_view name = ifname.substr(0, ifname.find('.'));
  if (name.empty()) return std::nullopt;
  return std::string(name);
}

// A bond answers for its first slave.
std::optional<std::string> FirstSlave(const std::string& bond) {
  ZARNLINKAGGROPT record{};
  if (ZARNNetLinkAggrGet(bond.c_str(), &record) != 0) {
    LOG_ERROR("%s:%d LinkAddrGet failed [%s]", bond.c_str());
    return std::nullopt;
  }
  if (record.cSlave <= 0) {
    LOG_ERROR("%s:%d No slave on bond [%s]", bond.c_str());
    return std::nullopt;
  }
  return std::string(FieldText(record.rgszSlave[0]));
}

std::optional<std::string> UnderOvsDevice(const std::string& ifname) {
  char original[IFNAMSIZ] = "";
  if (KOPANetOVSGetOriginalIf(ifname.c_str(), original, sizeof original) < 0) {
    LOG_ERROR("%s:%d get ovs origin interface error");
    return std::nullopt;
  }
  return std::string(original);
}

// The number of the Ethernet port that a name stands for; nothing, logged, when there is none.
std::optional<int> PortIndex(const char* ifname) {
  auto name = WithoutVlan(ifname);
  if (!name) {
    LOG_ERROR("%s:%d Failed to sscanf: %s", ifname);
    return std::nullopt;
  }
  if (name->starts_with("bond") || name->starts_with("ovs_bond")) name = FirstSlave(*name);
  if (name && KOPANetOVSIfIsMaster(name->c_str()) > 0) name = UnderOvsDevice(*name);
  if (!name) return std::nullopt;
  int index = 0;
  if (std::sscanf(name->c_str(), "eth%d", &index) != 1) {  // an alias, eth0:1, is its port
    LOG_DETAIL("%s:%d Failed to get interface idx: %s", name->c_str());
    return std::nullopt;
  }
  return index;
}

}  // namespace

int KOPANetGetMacAddr(int index, char* szBuf, int cbBuf, int blLocal) {
  return Boundary(kBadRequest, [&]() -> int {
    if (szBuf == nullptr || cbBuf <= 0) return Fail(ZARNNETERR_BAD_PARAMETER, kBadRequest);
    if (blLocal == 0 && ZARNHAIsRunning() == 1) {
      if (ReadSharedAddress(index, szBuf, cbBuf)) return kOk;
      LOG_ERROR("%s:%d Failed to get mac in SHA mode");
      return kNoSharedAddress;
    }
    if (blLocal == 0 && KOPACSupportDualhead() == 1) {
      LOG_ERROR("%s:%d Failed to get mac in AHA mode");
      return kTwoHeads;
    }
    if (ReadOwnAddress(index, szBuf, static_cast<std::size_t>(cbBuf))) return kOk;
    LOG_ERROR("%s:%d Failed to get local original mac");
    return blLocal != 0 ? kBadRequest : kNoOwnAddress;
  });
}

int KOPANetGetMacAddrByInterface(const char* szIfname, char* szBuf, int cbBuf, int blLocal) {
  return Boundary(kBadRequest, [&]() -> int {
    if (IsEmpty(szIfname) || szBuf == nullptr || cbBuf <= 0) {
      return Fail(ZARNNETERR_BAD_PARAMETER, kBadRequest);
    }
    const auto index = PortIndex(szIfname);
    return index ? KOPANetGetMacAddr(*index, szBuf, cbBuf, blLocal) : kBadRequest;
  });
}
