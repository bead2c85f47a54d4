// SPDX-License-Identifier: Apache-2.0
#include "record/link_kind.h"

#include <cstring>
#include <functional>
#include <linux/if_bonding.h>
#include <linux/if_link.h>
#include <linux/if_vlan.h>

#include "record/netlink.h"

namespace change {
namespace {

using Take = std::function<void(const nlattr*)>;

int Handle(const nlattr* setting, void* take) {
  (*static_cast<const Take*>(take))(setting);
  return MNL_CB_OK;
}

void EachIn(const nlattr* told, Take take) {
  ::mnl_attr_parse_nested(told, Handle, &take);
}

void Put(nlmsghdr* header, const nlattr* setting) {
  ::mnl_attr_put(header, setting->nla_type, ::mnl_attr_get_payload_len(setting),
                 ::mnl_attr_get_payload(setting));
}

// A VLAN's flags are told with a mask of all bits, and taken with one of those that are known:
// those that are set, and the one that is set without a word.
void PutVlanFlags(nlmsghdr* header, const nlattr* setting) {
  ifla_vlan_flags flags{};
  if (::mnl_attr_get_payload_len(setting) < sizeof flags) return;
  std::memcpy(&flags, ::mnl_attr_get_payload(setting), sizeof flags);
  flags.mask = flags.flags | VLAN_FLAG_REORDER_HDR;
  ::mnl_attr_put(header, IFLA_VLAN_FLAGS, sizeof flags, &flags);
}

bool IsTaken(int mode, std::uint16_t setting) {
  switch (setting) {
    case IFLA_BOND_MODE:
    case IFLA_BOND_MIIMON:
    case IFLA_BOND_UPDELAY:
    case IFLA_BOND_DOWNDELAY:
    case IFLA_BOND_XMIT_HASH_POLICY:
    case IFLA_BOND_MIN_LINKS:
      return true;
    case IFLA_BOND_AD_LACP_RATE:
      return mode == BOND_MODE_8023AD;
    default:
      return false;
  }
}

// A bond is told with the settings of every mode, and refused with those of another; what depends
// on its members comes with them.
void PutBond(nlmsghdr* header, const nlattr* told) {
  int mode = BOND_MODE_ROUNDROBIN;
  EachIn(told, [&](const nlattr* setting) {
    if (::mnl_attr_get_type(setting) == IFLA_BOND_MODE) mode = ::mnl_attr_get_u8(setting);
  });
  EachIn(told, [&](const nlattr* setting) {
    if (IsTaken(mode, ::mnl_attr_get_type(setting))) Put(header, setting);
  });
}

void PutVlan(nlmsghdr* header, const nlattr* told) {
  EachIn(told, [&](const nlattr* setting) {
    const bool flags = ::mnl_attr_get_type(setting) == IFLA_VLAN_FLAGS;
    flags ? PutVlanFlags(header, setting) : Put(header, setting);
  });
}

void PutSettings(nlmsghdr* header, const std::string& kind, const nlattr* told) {
  nlattr* const data = ::mnl_attr_nest_start(header, IFLA_INFO_DATA);
  if (kind == "bond") {
    PutBond(header, told);
  } else if (kind == "vlan") {
    PutVlan(header, told);
  } else {
    EachIn(told, [&](const nlattr* setting) { Put(header, setting); });
  }
  ::mnl_attr_nest_end(header, data);
}

}  // namespace

std::string KindToMake(const std::string& kind, const nlattr* told) {
  std::string bytes(kMessageSize, '\0');
  nlmsghdr* const header = ::mnl_nlmsg_put_header(bytes.data());
  ::mnl_attr_put_strz(header, IFLA_INFO_KIND, kind.c_str());
  if (told != nullptr) PutSettings(header, kind, told);
  return bytes.substr(sizeof *header, header->nlmsg_len - sizeof *header);
}

}  // namespace change
