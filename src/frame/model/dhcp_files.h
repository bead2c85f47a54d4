// SPDX-License-Identifier: Apache-2.0
// The files of the built-in DHCP server: a fragment (.conf) is text for the server, an information
// file (.info) holds switches.
#pragma once

#include <string>
#include <string_view>

namespace frame::dhcp_files {

inline constexpr char kFolder[] = "/etc/dhcpd";

// ---- files of the appliance
inline constexpr char kServerInfo[] = "/etc/dhcpd/dhcpd.info";
inline constexpr char kVendorConf[] = "/etc/dhcpd/dhcpd-vendor.conf";
inline constexpr char kPxeSetting[] = "/etc/dhcpd/dhcpd-pxe-setting";
inline constexpr char kPxeInfo[] = "/etc/dhcpd/dhcpd-pxe.info";
inline constexpr char kPxeConf[] = "/etc/dhcpd/dhcpd-pxe.conf";

// ---- files of an interface begin with the stem of a family
inline constexpr char kStemV4[] = "/etc/dhcpd/dhcpd";
inline constexpr char kStemV6[] = "/etc/dhcpd/dhcpd6";

// 0 is IPv4, 1 is IPv6; null for any other number.
inline const char* StemOf(int ipType) {
  if (ipType == 0) return kStemV4;
  return ipType == 1 ? kStemV6 : nullptr;
}

inline std::string OfInterface(std::string_view stem, std::string_view ifname,
                               std::string_view rest) {
  return std::string(stem).append("-").append(ifname).append(rest);
}

inline std::string InterfaceInfo(std::string_view stem, std::string_view ifname) {
  return OfInterface(stem, ifname, ".info");
}
inline std::string SubnetConf(std::string_view stem, std::string_view ifname, unsigned subnet) {
  return OfInterface(stem, ifname, "-subnet" + std::to_string(subnet) + ".conf");
}
inline std::string SubnetInfo(std::string_view stem, std::string_view ifname, unsigned subnet) {
  return OfInterface(stem, ifname, "-subnet" + std::to_string(subnet) + ".info");
}
inline std::string TagConf(std::string_view ifname, std::string_view tag) {
  return OfInterface(kStemV4, ifname, std::string("-").append(tag).append(".conf"));
}
inline std::string TagInfo(std::string_view ifname, std::string_view tag) {
  return OfInterface(kStemV4, ifname, std::string("-").append(tag).append(".info"));
}

// How the names of an interface's subnet files begin in the folder.
inline std::string SubnetNames(std::string_view ifname) {
  return std::string("dhcpd-").append(ifname).append("-subnet");
}
inline std::string InFolder(std::string_view name) {
  return std::string(kFolder).append("/").append(name);
}

// Proxy auto-discovery; its files are made by others.
inline std::string ProxyConf(std::string_view ifname) {
  return InFolder(std::string("wpad-").append(ifname).append(".conf"));
}
inline std::string ProxyInfo(std::string_view ifname) {
  return InFolder(std::string("wpad-").append(ifname).append(".info"));
}

// ---- keys of both kinds
inline constexpr char kEnable[] = "enable";
inline constexpr char kSavedEnable[] = "bonding_backup_enable";  // while the port is in a bond
inline constexpr char kInterface[] = "interface";
inline constexpr char kRange[] = "dhcp-range";
inline constexpr char kOption[] = "dhcp-option";

inline constexpr char kYes[] = "yes";
inline constexpr char kNo[] = "no";

// ---- what an option line names its option
inline constexpr char kRouter[] = "option:router";
inline constexpr char kDomainSearch[] = "option:domain-search";
inline constexpr char kDomainName[] = "option:domain-name";
inline constexpr char kDnsServer[] = "option:dns-server";
inline constexpr char kDnsServerV6[] = "option6:dns-server";

}  // namespace frame::dhcp_files
