// The table of setters.
#include "setters.h"

#include <arpa/inet.h>
#include <cstring>
#include <initializer_list>

#include <zarnnetsdk/zarnnetsdk.h>

#include "platform/fixture.h"

namespace torture {
namespace {

template <std::size_t N>
void Put(char (&field)[N], const char* text) {
  if (text != nullptr) std::memcpy(field, text, ::strnlen(text, N - 1) + 1);
  field[N - 1] = text != nullptr && std::strlen(text) >= N ? 'x' : field[N - 1];  // without an end
}

class List {
 public:
  List(std::initializer_list<const char*> texts) {
    const test::MemoryForTheTest memory;
    list_ = KOPACSzListAlloc(4);
    for (const char* text : texts) {
      if (text != nullptr) KOPACSzListPush(&list_, text);
    }
  }
  ~List() { KOPACSzListFree(list_); }
  List(const List&) = delete;
  List& operator=(const List&) = delete;
  operator PKOPACSZLIST() const { return list_; }

 private:
  PKOPACSZLIST list_;
};

int SetKernelAddress(const Texts& t) {
  const uint32_t address = inet_addr("10.0.0.7");
  const uint32_t mask = inet_addr("255.0.0.0");
  return KOPANetSetIfCfg(t[0], &address, &mask);
}

int SetCard1(const Texts& t, int bootProto) {
  ZARNNETIFADDR config{};
  config.bootProto = bootProto;
  Put(config.szName, t[0]);
  Put(config.szIP, t[1]);
  Put(config.szMask, t[2]);
  return ZARNNetSetCard1(&config);
}

int SetTopology(const Texts& t) {
  KOPANETTOPOLOGY topology{};
  Put(topology.szName, t[0]);
  return KOPANETSetTopologyConfigs(&topology);
}

ZARNLINKAGGROPT Bond(const Texts& t, uint32_t mode) {
  ZARNLINKAGGROPT bond{};
  bond.mode = mode;
  bond.cSlave = 2;
  Put(bond.szName, t[0]);
  Put(bond.rgszSlave[0], t[1]);
  Put(bond.rgszSlave[1], t[2]);
  return bond;
}

int SetBond(const Texts& t, uint32_t mode) {
  ZARNLINKAGGROPT bond = Bond(t, mode);
  return ZARNNetLinkAggrSet(&bond);
}

int DeleteBondFiles(const Texts& t) {
  ZARNLINKAGGROPT bond = Bond(t, ZARNBOND_NONE);
  return ZARNNetLinkAggrConfDel(&bond);
}

ZARNNETIFSETTINGS Settings(const char* name, const char* ip, const char* mask) {
  ZARNNETIFSETTINGS settings{1, 1, {}, {}, {}};
  Put(settings.szName, name);
  Put(settings.szIP, ip);
  Put(settings.szMask, mask);
  return settings;
}

int SetBridge(const Texts& t) {
  const ZARNNETIFSETTINGS settings = Settings(t[0], t[2], t[3]);
  ZARNBRIDGEINFO info{ZARNBRIDGE_PORT, {}, {}};
  Put(info.szName, t[0]);
  Put(info.szRef, t[1]);
  return ZARNNetSetBridgeConfig(&settings, &info);
}

int DisableBridgeSlave(const Texts& t) {
  const ZARNNETIFSETTINGS settings = Settings(t[0], t[1], t[2]);
  return ZARNNetDisableBridgeSlave(&settings);
}

int CreateVlan(const Texts& t) {
  const ZARNNETIFSETTINGS settings = Settings("", t[1], t[2]);
  return KOPANetVlanCreate(t[0], 20, &settings);
}

DHCP_SUBNET_CONF Subnet(const Texts& t) {
  DHCP_SUBNET_CONF conf{};
  conf.enable = 1;
  conf.lease = 3600;
  Put(conf.interface, t[0]);
  Put(conf.start, t[1]);
  Put(conf.end, t[2]);
  Put(conf.netmask, t[3]);
  Put(conf.router, t[4]);
  Put(conf.dns1, t[5]);
  Put(conf.dns2, t[6]);
  Put(conf.dns_more, t[7]);
  Put(conf.domain, t[8]);
  Put(conf.tag, t[9]);
  Put(conf.v6mode, t[10]);
  return conf;
}
const Texts kSubnet = {"eth0",    "10.0.0.10", "10.0.0.20",   "255.0.0.0", "10.0.0.1", "10.0.0.1",
                       "8.8.8.8", "9.9.9.9",   "lab.example", "tag0",      "stateful"};

int SetSubnet(const Texts& t, int family) {
  const List values({t[5]});
  DHCP_OPTION option{42, "ntp-server", {}, values, nullptr};
  DHCP_SUBNET_CONF conf = Subnet(t);
  if (family == 0) conf.options = &option;
  return DHCPTagConfSet(t[0], 0, family, &conf);
}

int SetServedFiles(const Texts& t) {
  const DHCP_SUBNET_CONF conf = Subnet(t);
  return ZARNNetSetDhcpServerConfigFiles(&conf, 1);
}

int SetVendor(const Texts& t) {
  PKOPACSZHASH options = nullptr;
  {
    const test::MemoryForTheTest memory;
    options = KOPACSzHashAlloc(4);
    if (t[1] != nullptr && t[2] != nullptr) KOPACSzHashSetValue(&options, t[1], t[2]);
  }
  const int result = DHCPVendorSetVendor(t[0], options);
  KOPACSzHashFree(options);
  return result;
}

int SetPxe(const Texts& t, int remote) {
  DHCP_PXE_CONF conf{};
  conf.enable = 1;
  conf.is_remote_tftp = remote;
  Put(conf.local_bootloader, t[0]);
  Put(conf.remote_bootloader, t[0]);
  Put(conf.remote_tftp_server_ip, t[1]);
  return DHCPPXEConfSet(&conf);
}

int SetPppoe(const Texts& t) {
  PPPOE_CONF conf{};
  Put(conf.eth, t[0]);
  Put(conf.user, t[1]);
  Put(conf.password, t[2]);
  Put(conf.mtu, t[3]);
  return PPPoEConfigSet(&conf);
}

int SetRelay(const Texts& t) {
  PPPOE_RELAY_CONF conf{1, {}};
  Put(conf.server, t[1]);
  return ZARNNetSetPPPoERelayConfig(t[0], &conf);
}

ZARNTUNNELCONF Tunnel(const Texts& t) {
  ZARNTUNNELCONF conf{};
  Put(conf.szServer, t[0]);
  Put(conf.szUserId, t[1]);
  Put(conf.szPassword, t[2]);
  return conf;
}
int SetTunnel(const Texts& t) {
  const ZARNTUNNELCONF conf = Tunnel(t);
  return ZARNTunnelConfigSet(&conf);
}
int RunTunnel(const Texts& t, int action) {
  const ZARNTUNNELCONF conf = Tunnel(t);
  return ZARNTunnelExecute(action, &conf);
}

constexpr char kSlaves[] =
    "mount -t tmpfs torture /sys/class/net;"
    "mkdir -p /sys/class/net/bond0/bonding;"
    "echo 'eth0 eth1' >/sys/class/net/bond0/bonding/slaves;"
    "echo 'active-backup 1' >/sys/class/net/bond0/bonding/mode;"
    "printf 'DEVICE=bond0\\nBOOTPROTO=static\\nIPADDR=10.0.0.5\\nNETMASK=255.0.0.0\\n' >$I-bond0;"
    "for i in 0 1; do printf 'BOOTPROTO=dhcp\\nMASTER=bond0\\nSLAVE=yes\\n' >>$I-eth$i; done";
constexpr char kServed[] =
    "for f in dhcpd dhcpd6; do printf 'enable=\"yes\"\\n' >/etc/dhcpd/$f-eth0.info;"
    "printf 'interface=eth0\\ndhcp-range=set:eth00,10.0.0.10,10.0.0.20,255.0.0.0,60\\n'"
    " >/etc/dhcpd/$f-eth0-eth00.conf; printf 'enable=\"yes\"\\n' >/etc/dhcpd/$f-eth0-eth00.info;"
    "printf 'enable=\"no\"\\nbonding_backup_enable=\"yes\"\\n' >/etc/dhcpd/$f-bond0.info; done";
constexpr char kVlan[] =
    "mkdir -p /run/vlans; touch /run/vlans/eth1.20; printf "
    "'DEVICE=eth1.20\\nVLAN_ROW_DEVICE=eth1\\n"
    "VLAN_ID=20\\nBOOTPROTO=dhcp\\n' >$I-eth1.20; echo 'eth1.20_mtu=\"1400\"' >>/etc/zarninfo.conf";
constexpr char kStaticV6[] =
    "printf 'IPV6INIT=static\\nIPV6ADDR=fd00::9\\nIPV6PREFIXLENG=64\\n' >>$I-eth0; cat $I-eth0 "
    ">>$I-eth1";
constexpr char kRelays[] =
    "for i in 0 1; do printf 'enable=yes\\nserver=eth2\\n' >/etc/sysconfig/pppoe-relay/eth$i; done";
constexpr char kTunnel[] =
    "printf 'IPV6INIT=auto\\nSERVER=b1.example\\nLOGIN=login\\nUSERID=ann\\n' >$I-tun";

}  // namespace

#define DO(call) [](const Texts& t) -> int { return static_cast<void>(t), call; }

// One row a setter, which the formatter would make five.
// clang-format off
const std::vector<Setter>& Setters() {
  static const std::vector<Setter> setters = {
      // ---- iface
      {"IFBlockSet", {"eth0"}, DO(ZARNNetIFBlockSet(t[0], 15, 1))},
      {"SetIfCfg", {"eth2"}, SetKernelAddress},
      {"SetCard1 static", {"eth0", "10.0.0.5", "255.0.0.0"}, DO(SetCard1(t, 1))},
      {"SetCard1 dhcp", {"eth0", "", ""}, DO(SetCard1(t, 0)),
       "printf 'DEVICE=eth0\\nBOOTPROTO=static\\nIPADDR=10.0.0.9\\n' >$I-eth0"},
      {"ISetIfFlags", {"eth0"}, DO(KOPANetISetIfFlags(t[0], 0x100))},
      {"IfUp", {"eth2"}, DO(KOPANetIfUp(t[0])), "ip link set eth2 down"},
      {"IfDown", {"eth2"}, DO(KOPANetIfDown(t[0]))},
      {"ReInitIf", {"eth2"}, DO(KOPANetReInitIf(t[0]))},
      {"IfLinkUpEvent", {"eth0"}, DO(KOPANetIfLinkUpEvent(t[0]))},
      {"IfLinkDownEvent", {"eth0"}, DO(KOPANetIfLinkDownEvent(t[0]))},
      {"RenameEth", {"eth3", "lan9"}, DO(ZARNNetRenameEth(t[0], t[1])),
       "echo 'eth3_mtu=\"1400\"' >>/etc/zarninfo.conf", kOnce | kLenient},
      {"SetTopologyConfigs", {"router"}, SetTopology},
      // ---- ipv4
      {"SetIP", {"-4", "eth2", "10.0.0.5", "add"}, DO(ZARNNetSetIP(t[0], t[1], t[2], 8, t[3]))},
      {"SetIPNetmask", {"eth0", "192.168.50.10", "255.255.255.0"},
       DO(ZARNILnxSetIPNetmask(t[0], t[1], t[2]))},
      {"FlushIP", {"-4", "eth2"}, DO(ZARNNetFlushIP(t[0], t[1]))},
      {"ConfSetMTUValue", {"9000", "eth0"}, DO(ZARNConfSetMTUValue(t[0], t[1])), "", kLenient},
      {"SetMTUEth", {"1400", "eth2"}, DO(ZARNNetSetMTUEth(t[0], t[1]))},
      {"SetMTUValue", {"1400", "eth2"}, DO(ZARNNetSetMTUValue(t[0], t[1])), "", kLenient},
      {"SetHostname", {"tortured"}, DO(ZARNLnxSetHostname(t[0]))},
      {"IPChangePreHook", {"eth0", "10.0.0.1", "10.0.0.2"},
       DO(ZARNNetIPChangePreHook(0, t[0], t[1], t[2], 8))},
      {"DnsConfigChangeHook", {"eth0", "8.8.8.8"},
       DO(ZARNNetDnsConfigChangeHook(4, t[0], List({t[1]})))},
      {"DNSChangeHook", {"8.8.8.8"}, DO(ZARNNetDNSChangeHook(5, List({t[0]})))},
      {"GatewayConfigChangeHook", {"ipv4", "eth0", "10.0.0.1", "10.0.0.2"},
       DO(ZARNNetGatewayConfigChangeHook(4, t[0], t[1], t[2], t[3]))},
      {"HostnameChangeHook", {"name"}, DO(ZARNNetHostnameChangeHook(t[0]))},
      {"MTUChangeHook", {"eth0", "1400"}, DO(ZARNNetMTUChangeHook(t[0], t[1], 5))},
      {"ServicePlugin", {}, DO(KOPAServicePlugin(3, 7))},
      // ---- dns_route
      {"DNSListSet", {"8.8.8.8", "9.9.9.9"}, DO(ZARNNetDNSListSet(List({t[0], t[1]})))},
      {"DNSSet", {"8.8.8.8"}, DO(ZARNNetDNSSet(t[0]))},
      {"DNSModeSet", {"static"}, DO(ZARNNetDNSModeSet(t[0]))},
      {"DNSFileSet", {"8.8.8.8", "options x"},
       DO(ZARNNetDNSFileSet(List({t[0]}), List({t[1]})))},
      {"DNSUpdate", {}, DO(ZARNNetDNSUpdate()),
       "mkdir -p /etc/iproute2/config; echo nameserver 8.8.8.8 "
       ">/etc/iproute2/config/resolv4.conf"},
      {"DefaultGatewaySetConf", {"10.0.0.1"}, DO(ZARNNetDefaultGatewaySetConf(t[0]))},
      {"DefaultGatewaySet", {"10.0.0.1"}, DO(ZARNNetDefaultGatewaySet(t[0]))},
      {"RoutetableEdit", {"10.0.0.1", "255.0.0.0", "eth2"},
       DO(NetRoutetableEdit(0, t[0], t[1], t[2]))},
      {"RoutetableHandler", {"eth2"}, DO(NetRoutetableHandler(1, t[0])),
       "printf 'BOOTPROTO=static\\nIPADDR=10.0.0.5\\nNETMASK=255.0.0.0\\n' >$I-eth2"},
      // ---- ipv6
      {"IPv6ConfSet static", {"eth0", "fd00::5", "fe80::1"},
       DO(ZARNNetIPv6ConfSet(t[0], 3, t[1], 64, t[2]))},
      {"IPv6ConfSet dhcp", {"eth0", "", ""}, DO(ZARNNetIPv6ConfSet(t[0], 2, t[1], 0, t[2])),
       kStaticV6},
      {"Ipv6Init", {}, DO(ZARNNetIpv6Init()), kStaticV6},
      {"IPv6IPAction", {"eth2", "fd00::5", ""},
       DO(ZARNNetIPv6IPAction(0, t[0], t[1], 64, t[2]))},
      {"IPv6ProcAction", {"eth2"}, DO(ZARNLnxIPv6ProcAction(t[0], 0))},
      {"IPv6FlushAddr", {"eth2"}, DO(ZARNLnxIPv6FlushAddr(t[0]))},
      // ---- virtual
      {"LinkAggrSet create", {"bond0", "eth0", "eth1"}, DO(SetBond(t, 4)),
       "mount -t tmpfs torture /sys/class/net; echo 'interface \"eth0\"' "
       ">/tmp/dhcpv4.leases.eth0", kLenient},
      {"LinkAggrSet change", {"bond0", "eth1", "eth2"}, DO(SetBond(t, 5)), kSlaves,
       kOnce | kLenient | kNoWayOn},
      {"LinkAggrSet delete", {"bond0", "eth0", "eth1"}, DO(SetBond(t, 0)), kSlaves, kOnce},
      {"LinkAggrConfSetSlave join", {"eth2", "bond0"},
       DO(ZARNNetLinkAggrConfSetSlave(t[0], 1, t[1]))},
      {"LinkAggrConfSetSlave leave", {"eth0"}, DO(ZARNNetLinkAggrConfSetSlave(t[0], 0, nullptr)),
       kSlaves},
      {"LinkAggrConfDel", {"bond0", "eth0", "eth1"}, DeleteBondFiles, kSlaves, kOnce},
      {"SetBridgeConfig", {"eth0", "br0", "10.0.0.5", "255.0.0.0"}, SetBridge},
      {"DisableBridgeSlave", {"eth0", "10.0.0.5", "255.0.0.0"}, DisableBridgeSlave,
       "echo BRIDGE=br0 >>$I-eth0"},
      {"VlanCreate", {"eth1", "10.0.0.5", "255.0.0.0"}, CreateVlan, kStaticV6, kOnce | kLenient},
      {"VlanRemove", {"eth1.20"}, DO(KOPANetVlanRemove(t[0])), kVlan, kOnce | kLenient},
      // ---- dhcpd
      {"DHCPServerRestart", {}, DO(DHCPServerRestart())},
      {"DHCPInterfaceSetEnabled", {"eth1"}, DO(DHCPInterfaceSetEnabled(t[0], 0, 1)), "",
       kLenient},
      {"SetDhcpServerConfigFiles", kSubnet, SetServedFiles},
      {"DHCPTagConfSetEnable", {"eth0"}, DO(DHCPTagConfSetEnable(t[0], 0, 0, 0)), kServed},
      {"DHCPTagConfSet v4", kSubnet, DO(SetSubnet(t, 0))},
      {"DHCPTagConfSet v6", kSubnet, DO(SetSubnet(t, 1))},
      {"DHCPVendorSetVendor", {"Example", "60", "value"}, SetVendor,
       "echo dhcp-option=vendor:Other,1,x >/etc/dhcpd/dhcpd-vendor.conf"},
      {"DHCPVendorSetVendorOpt", {"Example", "value"},
       DO(DHCPVendorSetVendorOpt(t[0], 7, t[1]))},
      {"DHCPPXEConfSetEnable", {}, DO(DHCPPXEConfSetEnable(1))},
      {"DHCPPXEConfSet local", {"boot.img", ""}, DO(SetPxe(t, 0))},
      {"DHCPPXEConfSet remote", {"boot.img", "10.0.0.2"}, DO(SetPxe(t, 1))},
      {"DHCPDConfChangeInterface", {"eth0", "eth2"}, DO(DHCPDConfChangeInterface(t[0], t[1])),
       kServed},
      {"DHCPDLinkAggrSet join", {"bond0", "eth0"}, DO(DHCPDLinkAggrSet(1, t[0], List({t[1]}))),
       kServed},
      {"DHCPDLinkAggrSet dissolve", {"eth0", "bond0"},
       DO(DHCPDLinkAggrSet(0, t[0], List({t[1]}))), kServed, kOnce | kNoWayOn},
      {"BlZARNLnxIsDHCP", {"eth0"}, DO(BlZARNLnxIsDHCP(t[0]) < 0 ? -1 : 0),
       "echo DEVICE=eth0 >$I-eth0", kLenient},
      // ---- pppoe
      {"PPPoEConfigSet", {"eth0", "user@isp", "secret", "1492"}, SetPppoe},
      {"PPPoEService up", {}, DO(ZARNPPPoEService(1)),
       "echo 'pppoe_enable=\"no\"' >>/etc/zarninfo.conf"},
      {"PPPoEService down", {}, DO(ZARNPPPoEService(0)),
       "echo 'pppoe_enable=\"yes\"' >>/etc/zarninfo.conf"},
      {"DisablePPPoEOnIf", {"eth0"}, DO(KOPADisablePPPoEOnIf(t[0])),
       "echo ETH=eth0 >/etc/ppp/pppoe.conf; echo 'pppoe_enable=\"yes\"' >>/etc/zarninfo.conf"},
      {"SetPPPoERelayConfig", {"eth0", "eth1"}, SetRelay},
      {"ApplyPPPoERelayConfigAll", {}, DO(ZARNNetApplyPPPoERelayConfigAll()), kRelays},
      {"ClearPPPoERelayConfigAll", {}, DO(ZARNNetClearPPPoERelayConfigAll()), kRelays, kLenient},
      // ---- tunnel
      {"TunnelConfigSet", {"b2.example", "bob", "Tr0ub4dor"}, SetTunnel, kTunnel},
      {"TunnelExecute start", {"b2.example", "bob", "Tr0ub4dor"}, DO(RunTunnel(t, 0)), kTunnel},
      {"TunnelExecute stop", {"b2.example", "bob", "Tr0ub4dor"}, DO(RunTunnel(t, 1)), kTunnel},
  };
  return setters;
}
// clang-format on

const std::vector<Setter>& Readers() {
  static const Texts kAddresses = {"10.0.0.1", "10.0.0.2", "255.0.0.0"};
  static char buffer[64];
  static const std::vector<Setter> readers = {
      {"addresses", kAddresses,
       [](const Texts& t) {
         unsigned parts[4];
         char out[64];
         std::vector<char> text(2048);
         if (t[0] != nullptr) std::strncpy(text.data(), t[0], 2047);
         return BlKOPAIsIpAddr(t[0]) + BlKOPAIsIpMask(text.data()) + BlKOPAIsValidIpMask(t[0]) +
                cKOPAISepIP(t[0], parts) + ErrKOPASubnetToIpMask(text.data(), out) +
                ErrKOPAIpMaskToSubnet(text.data(), out) + ZARNNetNetmaskToPrefix(t[0]) +
                BlKOPAIsv6IpAddrValid(t[0]) + ZARNNetIsPrivateIP(t[0]) + ZARNNetGetAddrType(t[0]) +
                ZARNNetIsSameSubnet(t[0], t[1], t[2]) + KOPAIsIpInRange(t[0], t[1], t[2], AF_INET) +
                KOPAIsIpInRange(t[0], t[1], t[2], AF_INET6) +
                ZARNNetIPv6IsSameSubnet(t[0], t[1], 64) + ZARNNetCalBroadcast(t[0], out, 64) +
                ZARNNetCalNetwork(t[0], out, 64);
       }},
      {"names",
       {"eth0"},
       [](const Texts& t) {
         char out[64];
         KOPANetIfInfo info{};
         ZARNNETIFADDR config{};
         ZARNLINKAGGROPT bond{};
         KOPANETVLAN vlan{};
         ZARNBRIDGEINFO bridge{};
         return BlKOPAIsHostname(t[0]) + BlKOPAIsAtom(t[0]) + BlKOPAIsDomain(t[0]) +
                ZARNNetIFGetInfo(t[0], &info) + ZARNNetIFGetIPConfig(t[0], &config) +
                ZARNNetLinkAggrGet(t[0], &bond) + KOPANetVlanGet(t[0], &vlan) +
                KOPANetVlanGetByRowDev(t[0], 20, &vlan) + KOPANETGetBridgeInfo(t[0], &bridge) +
                ZARNILnxGetIP(t[0], out, 64) + ZARNILnxGetIPFromCfg(t[0], out, 64) +
                ZARNConfGetMTUValue(t[0], out, 64) + ZARNGetMTU(t[0]) + ZARNNetIfIsLink(t[0]) +
                KOPANetOVSGetOriginalIf(t[0], out, 64) + ZARNNetIsDevTypeMatch(t[0], 8) +
                ZARNNetIFBlockGet(t[0]) + KOPANetGetMacAddrByInterface(t[0], out, 64, 1) +
                static_cast<int>(ZARNNetLinkAggrStringToMode(t[0])) + DHCPVendorCheckOptNum(t[0]);
       }},
      {"files",
       {"eth0", "Example"},
       [](const Texts& t) {
         DHCP_SUBNET_CONF conf{};
         PPPOE_RELAY_CONF relay{};
         int on = 0;
         int type = 0;
         DHCP_RANGE* ranges = nullptr;
         const int sum = DHCPTagConfGet(t[0], 0, 0, &conf) + DHCPTagConfGetEnable(t[0], 0, 1, &on) +
                         DHCPInterfaceIsEnabled(t[0], 1) + DHCPGetInterfaceRanges(t[0], &ranges) +
                         ZARNNetGetDhcpServerConf("tag0", t[0], &conf) +
                         DHCPVendorGetVendorOpt(t[1], 7, buffer, 64) +
                         ZARNNetGetPPPoERelayConfig(t[0], &relay) +
                         ZARNNetIPv6ConfGet(t[0], &type, buffer, 64, &on, buffer, 64) +
                         ZARNIIpConflict(t[0], t[1]) + ZARNNetIP2If(t[1], buffer, 64);
         DHCPRangeFree(ranges);
         DHCPOptionFree(conf.options);
         return sum;
       }},
  };
  return readers;
}

}  // namespace torture
