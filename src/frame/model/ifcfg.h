// SPDX-License-Identifier: Apache-2.0
// The interface files: their keys, and what groups of them mean.
#pragma once

#include <string>
#include <string_view>

#include <zarnnetsdk/virtual.h>

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

// The value of IPV6INIT that keeps IPv6 off the interface.
inline constexpr char kIpv6Off[] = "off";

// A fixed address, or a leased one, which keeps no address in the file.
void SetFixedAddress(KeyEdit* edit, const char* ip, const char* netmask);
void SetLeasedAddress(KeyEdit* edit);
// Whichever of them the settings ask for; and the same as lines of a file that is written whole.
void SetAddress(const ZARNNETIFSETTINGS& settings, KeyEdit* edit);
std::string AddressLines(const ZARNNETIFSETTINGS& settings);
// False for a fixed address with a text that cannot be meant as one.
bool IsFitAddress(const ZARNNETIFSETTINGS& settings);

// "KEY=value" with its newline.
std::string Line(const char* key, std::string_view value);

// No slave of a bond any more, or a slave of this one.
void LeaveBond(KeyEdit* edit);
void JoinBond(KeyEdit* edit, const char* bond);

// Files in the folder of the interface files whose name ends so are backups, no interfaces'.
inline constexpr char kSavedSuffix[] = ".saved";
std::string SavedPath(const std::string& path);
// Copies the file there, where the copy stays. A change is made all the same without it: an
// interface that never had a file has nothing to go back to.
void KeepSaved(const std::string& path);

// The suffix of the copy that a change keeps of a file while it is under way.
std::string ChangeSuffix();

}  // namespace frame::model
