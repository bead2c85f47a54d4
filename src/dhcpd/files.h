// The files of the built-in DHCP server: their names, and the steps that every reader and writer of
// them shares. A fragment (.conf) is text for the server, an information file (.info) holds
// switches.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include <zarnnetsdk/dhcpd.h>

#include "frame/base/text.h"

namespace dhcpd {

inline constexpr char kFolder[] = "/etc/dhcpd";
inline constexpr char kStemV4[] = "/etc/dhcpd/dhcpd";
inline constexpr char kStemV6[] = "/etc/dhcpd/dhcpd6";

inline constexpr char kEnableKey[] = "enable";
inline constexpr char kInterfaceKey[] = "interface";
inline constexpr char kRangeKey[] = "dhcp-range";
inline constexpr char kOptionKey[] = "dhcp-option";

// What an option line names its option.
inline constexpr char kRouter[] = "option:router";
inline constexpr char kDomainSearch[] = "option:domain-search";
inline constexpr char kDomainName[] = "option:domain-name";
inline constexpr char kDnsServer[] = "option:dns-server";
inline constexpr char kDnsServerV6[] = "option6:dns-server";

// The family of an interface's or a subnet's files: 0 is IPv4, 1 is IPv6; null for any other.
inline const char* StemOf(int ipType) {
  if (ipType == 0) return kStemV4;
  return ipType == 1 ? kStemV6 : nullptr;
}

std::string InterfaceInfo(const char* stem, std::string_view ifname);
std::string TagConf(std::string_view ifname, std::string_view tag);
std::string TagInfo(std::string_view ifname, std::string_view tag);
std::string SubnetConf(const char* stem, std::string_view ifname, unsigned subnet);
std::string SubnetInfo(const char* stem, std::string_view ifname, unsigned subnet);

inline const char* YesOrNo(bool yes) {
  return yes ? "yes" : "no";
}

// Runs mkdir for the folder, which the appliance makes on demand.
[[nodiscard]] bool MakeFolder();

// Replaces the file by the text.
[[nodiscard]] bool ReplaceFile(const std::string& path, std::string_view text);

// The single line of a subnet's information file.
std::string SwitchLine(bool enable);

// ---- lines of a fragment
std::string InterfaceLine(std::string_view ifname);
std::string RangeLine(std::string_view tag, std::string_view start, std::string_view end,
                      std::string_view mask, int lease);
std::string OptionLine(std::string_view tag, std::string_view option, std::string_view value);

// The first line with the text in it, split at commas; empty fields stay. Empty without the line.
std::vector<std::string> ItemsOfLineWith(const std::string& path, const char* text);

// The value of the key, split the same way. Empty without the key.
std::vector<std::string> ItemsOfKey(const std::string& path, const char* key);

// ---- what is never written
// A text that would add a line to a file, or lead out of the folder, is refused with 0x0D00. That
// is the only code of this family: what is just missing or of an unknown kind is told by result and
// log.

bool HasControlCharacters(std::string_view text);
// These set the code and answer true when they refuse; an empty name is true too, without a code.
bool IsRefusedName(const char* name);
bool RefusesText(std::string_view text);
bool RefusesTexts(const DHCP_SUBNET_CONF& conf);

}  // namespace dhcpd
