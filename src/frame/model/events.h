// SPDX-License-Identifier: Apache-2.0
// The events that tell the rest of the appliance of changes: their names, and what they carry.
#pragma once

namespace frame::events {

// ---- categories
inline constexpr char kNet[] = "net";
inline constexpr char kService[] = "service";

// ---- names
inline constexpr char kIpv4Change[] = "net/ipv4_change";
inline constexpr char kIpv6Change[] = "net/ipv6_change";
inline constexpr char kDnsConfigChange[] = "net/dns_config_change";
inline constexpr char kDnsChange[] = "net/dns_change";
inline constexpr char kGatewayConfigChange[] = "net/gateway_config_change";
inline constexpr char kHostnameChange[] = "net/hostname_change";
inline constexpr char kMtuChange[] = "net/mtu_change";
inline constexpr char kIfnameChange[] = "net/ifname_change";
inline constexpr char kLinkUp[] = "net/if_link_up";
inline constexpr char kLinkDown[] = "net/if_link_down";
inline constexpr char kServiceChange[] = "service";

// ---- arguments
inline constexpr char kInterface[] = "INTERFACE";  // of the links, the name servers, the gateway
inline constexpr char kIfname[] = "IFNAME";        // of the addresses and the names
inline constexpr char kResult[] = "RESULT";

inline constexpr char kOriginAddress[] = "ORIGIN_ADDRESS";
inline constexpr char kNewAddress[] = "NEW_ADDRESS";
inline constexpr char kPrefixLength[] = "PREFIX_LENGTH";
inline constexpr char kIsLink[] = "IS_LINK";

inline constexpr char kServerCount[] = "NITEMS";
inline constexpr char kServerFormat[] = "DNS_%d";  // from 1

inline constexpr char kGatewayType[] = "TYPE";
inline constexpr char kGatewayOld[] = "GATEWAY_OLD";
inline constexpr char kGatewayNew[] = "GATEWAY_NEW";

inline constexpr char kHostname[] = "HOSTNAME";

inline constexpr char kMtuInterface[] = "IFACE";
inline constexpr char kMtuValue[] = "MTU_VALUE";

inline constexpr char kOriginIfname[] = "ORIGIN_IFNAME";

inline constexpr char kServiceIpChange[] = "SERVICE_IP_CHANGE";
inline constexpr char kServiceHostnameChange[] = "SERVICE_HOSTNAME_CHANGE";
inline constexpr char kServiceMtuChange[] = "SERVICE_MTU_CHANGE";
inline constexpr char kServiceDaemonAction[] = "SERVICE_DAEMON_ACTION";

}  // namespace frame::events
