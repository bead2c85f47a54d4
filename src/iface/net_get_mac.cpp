// SPDX-License-Identifier: Apache-2.0
// The MAC address of an Ethernet port, or of the port behind a virtual interface.
#include <cstdio>
#include <optional>
#include <string>
#include <string_view>

#include <zarnnetsdk/iface.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/facts/bonds.h"
#include "frame/facts/ovs.h"
#include "frame/model/ovs.h"
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
    return Fail(ZARNNETERR_OPEN, false);
  }
  const auto mac = socket.HardwareAddress(Format("eth%d", index));
  if (!mac) {
    const ZARNNETERROR code = RefusalCode();
    LOG_ERROR("%s:%d ioctl mac failed");
    return Fail(code, false);
  }
  const auto& m = *mac;
  CopyText(Format("%02x:%02x:%02x:%02x:%02x:%02x", m[0], m[1], m[2], m[3], m[4], m[5]), buffer,
           size);
  return true;
}

bool ReadSharedAddress(int index, char* buffer, int size) {
  CopyText("", buffer, static_cast<std::size_t>(size));
  if (ZARNHAGetMac(Format("eth%d", index).c_str(), buffer, size) < 0) return false;
  return *buffer != '\0' || Fail(ZARNNETERR_NOT_FOUND, false);
}

// A VLAN answers for its parent: what stands before the first dot.
std::optional<std::string> WithoutVlan(std::string_view ifname) {
  const std::string_view name = ifname.substr(0, ifname.find('.'));
  if (name.empty()) return std::nullopt;
  return std::string(name);
}

// A bond answers for its first slave.
std::optional<std::string> FirstSlave(const std::string& bond) {
  const auto slaves = facts::SlavesOf(bond);
  if (!slaves) {
    LOG_ERROR("%s:%d LinkAddrGet failed [%s]", bond.c_str());
    return std::nullopt;
  }
  if (slaves->empty()) {
    LOG_ERROR("%s:%d No slave on bond [%s]", bond.c_str());
    return Fail(ZARNNETERR_NOT_FOUND, std::nullopt);
  }
  return slaves->front();
}

std::optional<std::string> UnderOvsDevice(const std::string& ifname) {
  auto port = facts::PortUnder(ifname);
  if (port && FitsKernel(*port)) return port;
  LOG_ERROR("%s:%d get ovs origin interface error");
  return Fail(ZARNNETERR_BAD_PARAMETER, std::nullopt);
}

// The number of the Ethernet port that a name stands for; nothing, logged, when there is none.
std::optional<int> PortIndex(const char* ifname) {
  auto name = WithoutVlan(ifname);
  if (!name) {
    LOG_ERROR("%s:%d Failed to sscanf: %s", ifname);
    return Fail(ZARNNETERR_BAD_PARAMETER, std::nullopt);
  }
  if (name->starts_with("bond") || name->starts_with(model::kOvsBondPrefix))
    name = FirstSlave(*name);
  if (name && facts::OvsKindOf(*name) != ZARNOVS_NONE) name = UnderOvsDevice(*name);
  if (!name) return std::nullopt;
  int index = 0;
  if (std::sscanf(name->c_str(), "eth%d", &index) != 1) {  // an alias, eth0:1, is its port
    LOG_DETAIL("%s:%d Failed to get interface idx: %s", name->c_str());
    return Fail(ZARNNETERR_NOT_FOUND, std::nullopt);
  }
  return index;
}

// The address of a port that the appliance shows, or on request its own.
MacResult ReadAddress(int index, bool local, char* buffer, int size) {
  if (!local && ZARNHAIsRunning() == 1) {
    if (ReadSharedAddress(index, buffer, size)) return kOk;
    LOG_ERROR("%s:%d Failed to get mac in SHA mode");
    return kNoSharedAddress;
  }
  if (!local && KOPACSupportDualhead() == 1) {
    LOG_ERROR("%s:%d Failed to get mac in AHA mode");
    return Fail(ZARNNETERR_REFUSED, kTwoHeads);
  }
  if (ReadOwnAddress(index, buffer, static_cast<std::size_t>(size))) return kOk;
  LOG_ERROR("%s:%d Failed to get local original mac");
  return local ? kBadRequest : kNoOwnAddress;
}

}  // namespace

int KOPANetGetMacAddr(int index, char* szBuf, int cbBuf, int blLocal) {
  return Boundary(kBadRequest, [&]() -> int {
    if (szBuf == nullptr || cbBuf <= 0) return Fail(ZARNNETERR_BAD_PARAMETER, kBadRequest);
    return ReadAddress(index, blLocal != 0, szBuf, cbBuf);
  });
}

int KOPANetGetMacAddrByInterface(const char* szIfname, char* szBuf, int cbBuf, int blLocal) {
  return Boundary(kBadRequest, [&]() -> int {
    if (IsEmpty(szIfname) || szBuf == nullptr || cbBuf <= 0) {
      return Fail(ZARNNETERR_BAD_PARAMETER, kBadRequest);
    }
    const auto index = PortIndex(szIfname);
    return index ? ReadAddress(*index, blLocal != 0, szBuf, cbBuf) : kBadRequest;
  });
}
