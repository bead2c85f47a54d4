// The options of an IPv4 subnet beyond router, name servers and domain, by name and number.
#include "dhcp_options.h"

#include <algorithm>
#include <array>

namespace tool {
namespace {

constexpr std::array<DhcpOption, 40> kOptions{{{7, "log-server"},
                                               {9, "lpr-server"},
                                               {13, "boot-file-size"},
                                               {16, "swap-server"},
                                               {17, "root-path"},
                                               {18, "extension-path"},
                                               {19, "ip-forward-enable"},
                                               {20, "non-local-source-routing"},
                                               {21, "policy-filter"},
                                               {22, "max-datagram-reassembly"},
                                               {23, "default-ttl"},
                                               {26, "mtu"},
                                               {27, "all-subnets-local"},
                                               {31, "router-discovery"},
                                               {32, "router-solicitation"},
                                               {34, "trailer-encapsulation"},
                                               {35, "arp-timeout"},
                                               {36, "ethernet-encap"},
                                               {37, "tcp-ttl"},
                                               {38, "tcp-keepalive"},
                                               {40, "nis-domain"},
                                               {41, "nis-server"},
                                               {42, "ntp-server"},
                                               {44, "netbios-ns"},
                                               {45, "netbios-dd"},
                                               {46, "netbios-nodetype"},
                                               {47, "netbios-scope"},
                                               {48, "x-windows-fs"},
                                               {49, "x-windows-dm"},
                                               {58, "T1"},
                                               {59, "T2"},
                                               {64, "nis+-domain"},
                                               {65, "nis+-server"},
                                               {68, "mobile-ip-home"},
                                               {69, "smtp-server"},
                                               {70, "pop3-server"},
                                               {71, "nntp-server"},
                                               {74, "irc-server"},
                                               {120, "sip-server"},
                                               {121, "classless-static-route"}}};

}  // namespace

std::span<const DhcpOption> DhcpOptions() {
  return kOptions;
}

int DhcpOptionNumber(const std::string& name) {
  const auto* const found =
      std::find_if(kOptions.begin(), kOptions.end(),
                   [&name](const DhcpOption& option) { return name == option.name; });
  return found == kOptions.end() ? 0 : found->number;
}

}  // namespace tool
