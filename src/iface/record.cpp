// Filling the inventory's record of one interface.
#include "iface/record.h"

#include <cstring>

#include "frame/base/text.h"

using frame::CopyText;

bool inventory::HasCarrier(const std::string& ifname, short flags) {
  if (ifname.starts_with("ovs_")) return ZARNNetIfIsLink(ifname.c_str()) == 1;
  return (flags & IFF_RUNNING) != 0;
}

void inventory::FillRecord(const frame::InetSocket& socket, const std::string& ifname, short flags,
                           bool carrier, KOPANetIfInfo* info) {
  constexpr int kLinkUp = 2;
  CopyText(ifname, info->name);
  info->flags = flags;
  info->link = carrier ? kLinkUp : 0;
  if (const auto mac = socket.HardwareAddress(ifname)) {
    std::memcpy(info->mac, mac->data(), mac->size());
  }
  if (const auto address = socket.Address(ifname)) CopyText(frame::DottedText(*address), info->ip);
  if (const auto mask = socket.Netmask(ifname)) CopyText(frame::DottedText(*mask), info->mask);
}
