// SPDX-License-Identifier: Apache-2.0
#include "typed_words.h"

#include <cstring>

namespace tool {
namespace {

struct Replacement {
  const char* from;
  const char* to;
};

// A '*' is one name. The first that fits counts.
constexpr Replacement kWords[] = {
    {"/interfaces/*", "IFNAME"},
    {"/interfaces/*/up", "IFNAME"},
    {"/interfaces/*/mtu", "MTU"},
    {"/interfaces/*/block", "FLAG"},
    {"/interfaces/*/block/*", "FLAG"},
    {"/interfaces/*/ipv4", "ADDRESS"},
    {"/interfaces/*/ipv4/prefix", "PREFIX"},
    {"/interfaces/*/ipv4/netmask", "NETMASK"},
    {"/interfaces/*/ipv4/*", "ADDRESS"},
    {"/interfaces/*/ipv6", "TYPE"},
    {"/interfaces/*/ipv6/method", "TYPE"},
    {"/interfaces/*/ipv6/prefix", "PREFIX"},
    {"/interfaces/*/ipv6/gateway", "--gateway"},
    {"/interfaces/*/ipv6/*", "ADDRESS"},
    {"/bonds/*", "BOND"},
    {"/bonds/*/mode", "--mode"},
    {"/bonds/*/slaves", "PORT"},
    {"/bonds/*/slaves/*", "PORT"},
    {"/bridges/*", "BRIDGE"},
    {"/bridges/*/primary", "--primary"},
    {"/bridges/*/role", "--local-lan"},
    {"/bridges/*/ports", "PORT"},
    {"/bridges/*/ports/*", "PORT"},
    {"/vlans/*", "VLAN"},
    {"/vlans/*/parent", "PARENT"},
    {"/vlans/*/id", "ID"},
    {"/dns/servers", "dns"},
    {"/dns/servers/*", "dns"},
    {"/dns/mode", "MODE"},
    {"/routes/gateway", "gateway"},
    {"/host/name", "NAME"},
    {"/topology", "NAME"},
    {"/topology/name", "NAME"},
    {"/dhcp_server", "dhcpd"},
    {"/dhcp_server/interfaces/*", "IFNAME"},
    {"/dhcp_server/interfaces/*/*/subnets/*", "NUMBER"},
    {"/dhcp_server/interfaces/*/*/subnets/*/prefix", "--netmask"},
    {"/tunnel", "tunnel"},
    {"/tunnel/enabled", "tunnel"},
    {"/tunnel/password", "--password-file"},
    {"/pppoe", "pppoe"},
    {"/pppoe/enabled", "pppoe"},
    {"/pppoe/password", "--password-file"},
    {"/pppoe_relay/*/enabled", "--enable"},
    {"/pppoe_relay/*", "IFNAME"},
};

// Of these the option has the field's name.
constexpr const char* kOptionsOf[] = {"/dhcp_server/interfaces/*/*/subnets/*/*", "/pppoe/*",
                                      "/tunnel/*", "/pppoe_relay/*/*"};
constexpr char kDhcpOptions[] = "/dhcp_server/interfaces/*/*/subnets/*/options/*";

// What sentences say of the document, longer ones first.
constexpr Replacement kPhrases[] = {
    {R"(name "routes": {"gateway": ...} in the same change, or null for none)",
     "name another behind the address (gateway ADDRESS), or clear it first (gateway clear)"},
    {R"(give "prefix": 24 or a mask)", "give ADDRESS/24 or a mask"},
    {R"("enabled": true switches it on)", "switch it on first"},
    {R"("enabled": false switches it off)", "it can be switched off"},
    {R"("mode": "auto")", "dns mode auto"},
};

// Each name of the path against each of the pattern.
bool Fits(const std::string& path, const char* pattern) {
  const char* at = path.c_str();
  for (; *pattern != '\0'; ++pattern) {
    if (*pattern == '*') {
      at += std::strcspn(at, "/");
    } else if (*at++ != *pattern) {
      return false;
    }
  }
  return *at == '\0';
}

std::string LastNameOf(const std::string& path) {
  std::string name = path.substr(path.rfind('/') + 1);
  for (char& letter : name) {
    if (letter == '_') letter = '-';
  }
  return name;
}

}  // namespace

std::string TypedWordOf(const std::string& path) {
  for (const auto& [pattern, word] : kWords) {
    if (Fits(path, pattern)) return word;
  }
  if (Fits(path, kDhcpOptions)) return "--option " + LastNameOf(path);
  for (const char* const pattern : kOptionsOf) {
    if (Fits(path, pattern)) return "--" + LastNameOf(path);
  }
  return path;
}

std::string InTypedWords(std::string sentence) {
  // A path begins a sentence, or stands behind ": ", and ends before the next.
  for (std::size_t at = 0; at != std::string::npos;) {
    const std::size_t end = sentence.find(": ", at);
    if (end != std::string::npos && sentence[at] == '/')
      sentence.replace(at, end - at, TypedWordOf(sentence.substr(at, end - at)));
    at = sentence.find(": ", at);
    if (at != std::string::npos) at += 2;
  }
  for (const auto& [from, to] : kPhrases) {
    const std::size_t at = sentence.find(from);
    if (at != std::string::npos) sentence.replace(at, std::strlen(from), to);
  }
  return sentence;
}

}  // namespace tool
