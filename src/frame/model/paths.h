// SPDX-License-Identifier: Apache-2.0
// Every file, folder and program of the system that the library names, in one place.
#pragma once

#include <string>
#include <string_view>

#include "frame/os/file_tools.h"

namespace frame::paths {

// ---- configuration
inline constexpr char kIfcfgFolder[] = "/etc/sysconfig/network-scripts";
inline constexpr char kIfcfgPrefix[] = "/etc/sysconfig/network-scripts/ifcfg-";
inline constexpr char kInfo[] = "/etc/zarninfo.conf";
inline constexpr char kFactoryInfo[] = "/etc.defaults/zarninfo.conf";
inline constexpr char kHostname[] = "/etc/hostname";
inline constexpr char kHosts[] = "/etc/hosts";
inline constexpr char kNetwork[] = "/etc/sysconfig/network";
inline constexpr char kResolv[] = "/etc/resolv.conf";
inline constexpr char kResolvStatic[] = "/etc/resolv.conf.static";
inline constexpr char kResolvOption[] = "/etc/resolv.conf.option";
inline constexpr char kLearnedServersV4[] = "/etc/iproute2/config/resolv4.conf";
inline constexpr char kLearnedServersV6[] = "/etc/iproute2/config/resolv6.conf";

// The tunnel broker client's folder, its settings while it starts, and the enciphered password.
inline constexpr char kGogocFolder[] = "/etc/gogoc";
inline constexpr char kGogocConf[] = "/etc/gogoc/gogoc.conf";
inline constexpr char kTunnelPassword[] = "/etc/gogoc/.tunnel_passwd";

// New content on its way into an interface file.
inline constexpr char kVlanTemplate[] = "/etc/sysconfig/network-scripts/VLAN_XXXXXX";
inline constexpr char kVlanParentTemplate[] = "/etc/sysconfig/network-scripts/DEVICE_XXXXXX";
inline constexpr char kVlanRemovedTemplate[] = "/etc/sysconfig/network-scripts/DEV_XXXXXX";
inline constexpr char kPppoeConf[] = "/etc/ppp/pppoe.conf";
inline constexpr char kPapSecrets[] = "/etc/ppp/pap-secrets";
inline constexpr char kPapSecretsTemporary[] = "/etc/ppp/pap-secrets.tmp";
inline constexpr char kPppoeRelayFolder[] = "/etc/sysconfig/pppoe-relay/";
// Beside that folder, in which nothing may stand but the files of interfaces.
inline std::string PppoeRelayTemporary(std::string_view name) {
  return std::string("/etc/sysconfig/.pppoe-relay.").append(name);
}

inline std::string Ifcfg(std::string_view ifname) {
  return std::string(kIfcfgPrefix).append(ifname);
}

// ---- leases and results of other programs
inline std::string DhcpInfo(std::string_view ifname) {
  return std::string("/etc/dhclient/ipv4/dhcpcd-").append(ifname).append(".info");
}
inline std::string DhcpPid(std::string_view ifname) {
  return std::string("/etc/dhclient/ipv4/dhcpcd-").append(ifname).append(".pid");
}
inline std::string DhcpLease(std::string_view ifname) {
  return std::string("/tmp/dhcpv4.leases.").append(ifname);
}
inline std::string Dhcp6Pid(std::string_view ifname, std::string_view action) {
  return std::string("/tmp/dhclient6-").append(ifname).append("-").append(action).append(".pid");
}
inline constexpr char kDhclientScript[] = "/etc/dhclient/dhclient-script";
inline constexpr char kDhclientScriptCopy[] = "/var/run/dhclient-script";
inline constexpr char kExternalIpResult[] = "/run/ddns/externalIP.result";
inline constexpr char kPppoeIntf[] = "/tmp/zarnpppoe.intf";
inline constexpr char kTopologyBridgeMark[] = "/tmp/net_topology_bridge";

// ---- the kernel's files
inline constexpr char kProcNetDev[] = "/proc/net/dev";
inline constexpr char kProcIfInet6[] = "/proc/net/if_inet6";
inline constexpr char kProcRoute[] = "/proc/net/route";
inline constexpr char kProcIpv6Route[] = "/proc/net/ipv6_route";
inline constexpr char kProcTcp[] = "/proc/net/tcp";
inline constexpr char kProcTcp6[] = "/proc/net/tcp6";
inline constexpr char kProcUdp[] = "/proc/net/udp";
inline constexpr char kProcUdp6[] = "/proc/net/udp6";
inline constexpr char kProcVlanConfig[] = "/proc/net/vlan/config";
inline constexpr char kInternalNetifNum[] = "/proc/sys/kernel/zarn_internal_netif_num";
inline constexpr char kBondingMasters[] = "/sys/class/net/bonding_masters";
inline constexpr char kOvsBonds[] = "/sys/class/net/zarn_ovs_bonds";

inline constexpr char kSysNet[] = "/sys/class/net";
inline std::string SysNet(std::string_view ifname, std::string_view rest) {
  return std::string("/sys/class/net/").append(ifname).append(rest);
}
inline std::string ProcBond(std::string_view bond) {
  return std::string("/proc/net/bonding/").append(bond);
}
inline std::string SysVirtualNet(std::string_view device) {
  return std::string("/sys/devices/virtual/net/").append(device);
}
inline std::string Ipv6Switch(std::string_view ifname) {
  return std::string("/proc/sys/net/ipv6/conf/").append(ifname).append("/disable_ipv6");
}
inline std::string AcceptRa(std::string_view ifname) {
  return std::string("/proc/sys/net/ipv6/conf/").append(ifname).append("/accept_ra");
}

// ---- programs
inline constexpr char kIp[] = "/sbin/ip";
inline constexpr char kIfconfig[] = "/sbin/ifconfig";
inline constexpr char kRoute[] = "/sbin/route";
inline constexpr char kFirewall[] = "/usr/zarn/bin/zarnfirewall";
inline constexpr char kTrafficControl[] = "/usr/zarn/bin/tctool";
inline constexpr char kStart[] = "/sbin/start";
inline constexpr char kInitctl[] = "/sbin/initctl";
inline constexpr char kStop[] = "/sbin/stop";
inline constexpr char kArping[] = "/sbin/arping";
inline constexpr char kMkdir[] = "/bin/mkdir";
inline constexpr char kSed[] = "/bin/sed";
inline constexpr char kNetworkScript[] = "/etc/rc.network";
inline constexpr char kDhcpServer[] = "/usr/sbin/dnsmasq";
inline constexpr char kIpcalc[] = "/bin/ipcalc";
inline constexpr char kDhclient[] = "/usr/sbin/dhclient";
inline constexpr char kPppoeStart[] = "/usr/sbin/pppoe-start";
inline constexpr char kPppoeStop[] = "/usr/sbin/pppoe-stop";
inline constexpr char kPppoeStatus[] = "/usr/sbin/pppoe-status";
inline constexpr char kPppoeRelay[] = "/usr/sbin/pppoe-relay";
inline constexpr char kNetdTool[] = "/usr/zarn/sbin/zarnnetdtool";
inline constexpr char kRcTun[] = "/etc/gogoc/rc.tun";
inline constexpr char kGogoc[] = "/usr/bin/gogoc";
inline constexpr char kDdnsd[] = "/usr/zarn/sbin/ddnsd";

}  // namespace frame::paths
