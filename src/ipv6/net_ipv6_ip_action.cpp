// SPDX-License-Identifier: Apache-2.0
// One IPv6 address or default route, added to or deleted from the running kernel.
#include <zarnnetsdk/ipv6.h>
#include <zarnnetsdk/net_int.h>

#include "frame/base/address.h"
#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/model/paths.h"
#include "frame/os/command.h"
#include "ipv6/config.h"
#include "ipv6/ip_action.h"

using namespace frame;

bool ipv6::ChangeAddress(Change change, const std::string& ifname, const std::string& address,
                         unsigned prefix) {
  if (ipv4::SetV6Address(ifname, address, prefix, change == Change::kAdd)) return true;
  // The prefix stands for a netmask in IPv6; the line keeps its place for one.
  LOG_ERROR("%s:%d set IP failed. IP = %s, Netmask = %s, prefix = %d", address.c_str(), "",
            static_cast<int>(prefix));
  return false;
}

int ipv6::ChangeDefaultRoute(Change change, const std::string& ifname, const std::string& gateway) {
  const char* const action = change == Change::kAdd ? "add" : "del";
  const int status =
      RunVectorStatus(paths::kIp, "-6", "route", action, "default", "via", gateway, "dev", ifname);
  return status == 0 ? 0 : Fail(ZARNNETERR_COMMAND, status);
}

int ZARNNetIPv6IPAction(int cmd, const char* szIfname, const char* szAddr, unsigned int prefix,
                        const char* szGateway) {
  return Boundary(-1, [&]() -> int {
    if (prefix > ipv6::kMaxPrefix) {
      LOG_ERROR("%s:%d Paramter Prefix length %d out of range [0, 128] ", static_cast<int>(prefix));
      return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    }
    if (szAddr == nullptr) {
      LOG_ERROR("%s:%d Paramter szV6IPAddr can not be NULL");
      return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    }
    if (szIfname == nullptr) {
      LOG_ERROR("%s:%d Paramter szDevice can not be NULL");
      return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    }
    const auto change = static_cast<ipv6::Change>(cmd);
    if (change != ipv6::Change::kAdd && change != ipv6::Change::kDelete) {
      LOG_ERROR("%s:%d Paramter ZARNIPV6IPCMD is not a legal parameter");
      return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    }
    if (!IsEmpty(szGateway)) {
      if (IsUnfitName(szIfname) || IsUnfitAddress(szGateway))
        return Fail(ZARNNETERR_BAD_PARAMETER, -1);
      return ipv6::ChangeDefaultRoute(change, szIfname, szGateway);
    }
    return ipv6::ChangeAddress(change, szIfname, szAddr, prefix) ? 0 : -1;
  });
}
