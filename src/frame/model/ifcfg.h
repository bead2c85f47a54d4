// The interface files: their keys, and what groups of them mean.
#pragma once

#include <string>

#include "frame/os/key_file.h"

namespace frame::keys {

// ---- of every kind of interface
inline constexpr char kDevice[] = "DEVICE";
inline constexpr char kOnBoot[] = "ONBOOT";
inline constexpr char kBootProto[] = "BOOTPROTO";
inline constexpr char kIpAddr[] = "IPADDR";
inline constexpr char kNetmask[] = "NETMASK";
inline constexpr char kLocalLan[] = "LOCAL_LAN";
inline constexpr char kUserCtl[] = "USERCTL";

// ---- of bonds and their slaves
inline constexpr char kMaster[] = "MASTER";
inline constexpr char kSlave[] = "SLAVE";
inline constexpr char kBondingOpts[] = "BONDING_OPTS";
inline constexpr char kBondMode[] = "BOND_MODE";    // of an Open vSwitch bond
inline constexpr char kSlaveList[] = "SLAVE_LIST";  // of an Open vSwitch bond

// ---- of bridges and their ports
inline constexpr char kType[] = "TYPE";
inline constexpr char kPrimary[] = "PRIMARY";
inline constexpr char kBridge[] = "BRIDGE";

// ---- of VLANs
inline constexpr char kVlanParent[] = "VLAN_ROW_DEVICE";
inline constexpr char kVlanId[] = "VLAN_ID";

// ---- of IPv6
inline constexpr char kIpv6Type[] = "IPV6INIT";
inline constexpr char kIpv6Address[] = "IPV6ADDR";
inline constexpr char kIpv6Prefix[] = "IPV6PREFIXLENG";
inline constexpr char kIpv6Gateway[] = "IPV6_DEFAULTGW";
inline constexpr char kIpv6AcceptRa[] = "IPV6_ACCEPT_RA";
inline constexpr char kIpv6Dns[] = "IPV6DNS";

}  // namespace frame::keys

namespace frame::model {

// The values of BOOTPROTO.
inline constexpr char kDhcp[] = "dhcp";
inline constexpr char kStatic[] = "static";
inline constexpr char kNoAddress[] = "none";

// A fixed address, or a leased one, which keeps no address in the file.
void SetFixedAddress(KeyEdit* edit, const char* ip, const char* netmask);
void SetLeasedAddress(KeyEdit* edit);

// No slave of a bond any more, or a slave of this one.
void LeaveBond(KeyEdit* edit);
void JoinBond(KeyEdit* edit, const char* bond);

// Files in the folder of the interface files whose name ends so are backups, no interfaces'.
inline constexpr char kSavedSuffix[] = ".saved";

// The suffix of the copy that a change keeps of a file while it is under way.
std::string ChangeSuffix();

}  // namespace frame::model
