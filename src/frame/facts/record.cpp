// SPDX-License-Identifier: Apache-2.0
// The record of one interface, as the kernel has it.
#include "frame/facts/record.h"

#include <cstring>

#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/facts/link.h"
#include "frame/model/ovs.h"
#include "frame/model/paths.h"

namespace frame::facts {

bool HasCarrier(const std::string& ifname, short flags) {
  if (model::IsOvsName(ifname)) return HasLink(ifname).value_or(false);
  return (flags & IFF_RUNNING) != 0;
}

void FillRecord(const InetSocket& socket, const std::string& ifname, short flags, bool carrier,
                KOPANetIfInfo* info) {
  constexpr int kLinkUp = 2;
  CopyText(ifname, info->name);
  info->flags = flags;
  info->link = carrier ? kLinkUp : 0;
  if (const auto mac = socket.HardwareAddress(ifname)) {
    std::memcpy(info->mac, mac->data(), mac->size());
  }
  if (const auto address = socket.Address(ifname)) CopyText(DottedText(*address), info->ip);
  if (const auto mask = socket.Netmask(ifname)) CopyText(DottedText(*mask), info->mask);
}

bool IsBondingPassive(const std::string& ifname, short flags, const OvsBonds& bonds) {
  if ((flags & IFF_SLAVE) != 0) return true;
  const auto member = bonds.HaveMember(ifname);
  if (!member) {
    constexpr Place kAt("net_if_is_bonding_passive");
    LOG_ERROR_AT(kAt, "%s:%d Failed to open %s.", paths::kOvsBonds);
    SetError(ZARNNETERR_OPEN, kAt);
  }
  return member.value_or(false);
}

}  // namespace frame::facts
