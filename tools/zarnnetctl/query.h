// SPDX-License-Identifier: Apache-2.0
// Questions to the library about one interface, answered in plain types and as JSON.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include <zarnnetsdk/zarnnetsdk.h>

#include "output.h"

namespace tool {

// An IPv4 address with its dotted netmask, each empty where there is none.
struct Address {
  std::string ip;
  std::string mask;
};

// What the interface's file says. The boot protocol is "dhcp", "static" or "none"; the address on
// DHCP is the lease's.
struct Configuration {
  std::string bootProto;
  bool onBoot = false;
  Address address;
};

// ---- who asks, and which interfaces there are

// The library's last refusal was for a lock that is root's, and this is another user.
bool IsRootsLock();
void RequireRoot(const std::string& what);
// The same for what acts; a plan of it is anybody's.
void RequireRootToAct(const Context& context, const std::string& what);
bool KernelHas(const std::string& ifname);
bool HasFile(const std::string& ifname);
// Throws unless the text is the IPv4 address of a host.
void RequireIpv4(const std::string& what, const std::string& text);
// Octal and hexadecimal parts pass the library, and the programs behind it read them otherwise.
bool IsPlainDotted(const std::string& text);
// Throws unless the text can be the name of an interface, whether there is one or not.
void RequireName(const std::string& what, const std::string& name);
// Throws unless the kernel has the interface.
void RequireInterface(const std::string& what, const std::string& ifname);

std::vector<std::string> KernelInterfaces();  // up or down, all but loopback
std::vector<KOPANetIfInfo> ListInterfaces(unsigned selector);
std::vector<KOPANetIfInfo> ListEthernetPorts();

// ---- one interface

Address LiveAddress(const std::string& ifname);
std::optional<Configuration> ReadConfiguration(const std::string& ifname);
std::vector<ZARNNETV6ADDR> ReadIpv6(const std::string& ifname);
std::vector<std::string> ReadBlocks(const std::string& ifname);

// The names of the block flags, and the bit of one; 0 for any other text.
const std::vector<std::string>& BlockNames();
unsigned BlockBit(const std::string& name);

// ---- as text and as JSON

std::string MacText(const unsigned char (&mac)[6]);  // empty for an address of zeros
std::string AddressText(const Address& address);     // "192.168.50.10/24", empty without an address
std::string Ipv6Text(const ZARNNETV6ADDR& address);
std::string ConfigurationText(
    const std::optional<Configuration>& configuration);  // "static 10.0.0.1/8, on boot"
std::vector<std::string> FlagNames(int flags);
std::string Join(const std::vector<std::string>& words, const std::string& between);

Json ToJson(const Address& address);
Json ToJson(const std::optional<Configuration>& configuration);
Json ToJson(const std::vector<ZARNNETV6ADDR>& addresses);

}  // namespace tool
