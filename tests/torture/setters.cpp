// SPDX-License-Identifier: Apache-2.0
// The table of setters.
#include <algorithm>
#include <arpa/inet.h>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <initializer_list>

#include <zarnnetsdk/zarnnetsdk.h>

#include "support/refused_memory.h"
#include "torture.h"

namespace torture {
namespace {

template <std::size_t N>
void Put(char (&field)[N], const char* text) {
  if (text != nullptr) std::memcpy(field, text, ::strnlen(text, N - 1) + 1);
  field[N - 1] = text != nullptr && std::strlen(text) >= N ? 'x' : field[N - 1];  // without an end
}
// A record whose fields have the texts in their order, until the next one of its kind.
template <class Record, class... Fields>
Record* With(const char* const* text, Fields Record::*... fields) {
  static Record record;
  record = {};
  (Put(record.*fields, *text++), ...);
  return &record;
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
  using Config = ZARNNETIFADDR;
  auto* const config = With(&t[0], &Config::szName, &Config::szIP, &Config::szMask);
  config->bootProto = bootProto;
  return ZARNNetSetCard1(config);
}

int WithBond(const Texts& t, uint32_t mode, decltype(ZARNNetLinkAggrSet) call) {
  auto* const bond = With(&t[0], &ZARNLINKAGGROPT::szName);
  bond->mode = mode;
  bond->cSlave = 2;
  Put(bond->rgszSlave[0], t[1]);
  Put(bond->rgszSlave[1], t[2]);
  return call(bond);
}

ZARNNETIFSETTINGS* Settings(const char* name, const char* const* address) {
  auto* const settings = With(address, &ZARNNETIFSETTINGS::szIP, &ZARNNETIFSETTINGS::szMask);
  settings->blStatic = settings->blOnBoot = 1;
  Put(settings->szName, name);
  return settings;
}

int SetBridge(const Texts& t) {
  auto* const info = With(&t[0], &ZARNBRIDGEINFO::szName, &ZARNBRIDGEINFO::szRef);
  info->type = ZARNBRIDGE_PORT;
  return ZARNNetSetBridgeConfig(Settings(t[0], &t[2]), info);
}

DHCP_SUBNET_CONF* Subnet(const Texts& t) {
  using Conf = DHCP_SUBNET_CONF;
  auto* const conf =
      With(&t[0], &Conf::interface, &Conf::start, &Conf::end, &Conf::netmask, &Conf::router,
           &Conf::dns1, &Conf::dns2, &Conf::dns_more, &Conf::domain, &Conf::tag, &Conf::v6mode);
  conf->enable = 1;
  conf->lease = 3600;
  return conf;
}

int SetSubnet(const Texts& t, int family) {
  const List values({t[5]});
  DHCP_OPTION option{42, "ntp-server", {}, values, nullptr};
  DHCP_SUBNET_CONF* const conf = Subnet(t);
  if (family == 0) conf->options = &option;
  return DHCPTagConfSet(t[0], 0, family, conf);
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
  using Conf = DHCP_PXE_CONF;
  auto* const conf = With(&t[0], &Conf::local_bootloader, &Conf::remote_tftp_server_ip);
  conf->enable = 1;
  conf->is_remote_tftp = remote;
  Put(conf->remote_bootloader, t[0]);
  return DHCPPXEConfSet(conf);
}

int SetPppoe(const Texts& t) {
  using Conf = PPPOE_CONF;
  return PPPoEConfigSet(With(&t[0], &Conf::eth, &Conf::user, &Conf::password, &Conf::mtu));
}

int SetRelay(const Texts& t) {
  auto* const conf = With(&t[1], &PPPOE_RELAY_CONF::server);
  conf->enable = 1;
  return ZARNNetSetPPPoERelayConfig(t[0], conf);
}

ZARNTUNNELCONF* Tunnel(const Texts& t) {
  using Conf = ZARNTUNNELCONF;
  return With(&t[0], &Conf::szServer, &Conf::szUserId, &Conf::szPassword);
}

#define DO(call) [](const Texts& t) -> int { return static_cast<void>(t), call; }

const struct {
  const char* name;
  int (*call)(const Texts&);
} kRows[] = {
    // ---- iface
    {"IFBlockSet", DO(ZARNNetIFBlockSet(t[0], 15, 1))},
    {"SetIfCfg", SetKernelAddress},
    {"SetCard1 static", DO(SetCard1(t, 1))},
    {"SetCard1 dhcp", DO(SetCard1(t, 0))},
    {"ISetIfFlags", DO(KOPANetISetIfFlags(t[0], 0x100))},
    {"IfUp", DO(KOPANetIfUp(t[0]))},
    {"IfDown", DO(KOPANetIfDown(t[0]))},
    {"ReInitIf", DO(KOPANetReInitIf(t[0]))},
    {"IfLinkUpEvent", DO(KOPANetIfLinkUpEvent(t[0]))},
    {"IfLinkDownEvent", DO(KOPANetIfLinkDownEvent(t[0]))},
    {"RenameEth", DO(ZARNNetRenameEth(t[0], t[1]))},
    {"SetTopologyConfigs", DO(KOPANETSetTopologyConfigs(With(&t[0], &KOPANETTOPOLOGY::szName)))},
    // ---- ipv4
    {"SetIP", DO(ZARNNetSetIP(t[0], t[1], t[2], 8, t[3]))},
    {"SetIPNetmask", DO(ZARNILnxSetIPNetmask(t[0], t[1], t[2]))},
    {"FlushIP", DO(ZARNNetFlushIP(t[0], t[1]))},
    {"ConfSetMTUValue", DO(ZARNConfSetMTUValue(t[0], t[1]))},
    {"SetMTUEth", DO(ZARNNetSetMTUEth(t[0], t[1]))},
    {"SetMTUValue", DO(ZARNNetSetMTUValue(t[0], t[1]))},
    {"SetHostname", DO(ZARNLnxSetHostname(t[0]))},
    {"IPChangePreHook", DO(ZARNNetIPChangePreHook(0, t[0], t[1], t[2], 8))},
    {"DnsConfigChangeHook", DO(ZARNNetDnsConfigChangeHook(4, t[0], List({t[1]})))},
    {"DNSChangeHook", DO(ZARNNetDNSChangeHook(5, List({t[0]})))},
    {"GatewayConfigChangeHook", DO(ZARNNetGatewayConfigChangeHook(4, t[0], t[1], t[2], t[3]))},
    {"HostnameChangeHook", DO(ZARNNetHostnameChangeHook(t[0]))},
    {"MTUChangeHook", DO(ZARNNetMTUChangeHook(t[0], t[1], 5))},
    {"ServicePlugin", DO(KOPAServicePlugin(3, 7))},
    // ---- dns_route
    {"DNSListSet", DO(ZARNNetDNSListSet(List({t[0], t[1]})))},
    {"DNSSet", DO(ZARNNetDNSSet(t[0]))},
    {"DNSModeSet", DO(ZARNNetDNSModeSet(t[0]))},
    {"DNSFileSet", DO(ZARNNetDNSFileSet(List({t[0]}), List({t[1]})))},
    {"DNSUpdate", DO(ZARNNetDNSUpdate())},
    {"DefaultGatewaySetConf", DO(ZARNNetDefaultGatewaySetConf(t[0]))},
    {"DefaultGatewaySet", DO(ZARNNetDefaultGatewaySet(t[0]))},
    {"RoutetableEdit", DO(NetRoutetableEdit(0, t[0], t[1], t[2]))},
    {"RoutetableHandler", DO(NetRoutetableHandler(1, t[0]))},
    // ---- ipv6
    {"IPv6ConfSet static", DO(ZARNNetIPv6ConfSet(t[0], 3, t[1], 64, t[2]))},
    {"IPv6ConfSet dhcp", DO(ZARNNetIPv6ConfSet(t[0], 2, t[1], 0, t[2]))},
    {"Ipv6Init", DO(ZARNNetIpv6Init())},
    {"IPv6IPAction", DO(ZARNNetIPv6IPAction(0, t[0], t[1], 64, t[2]))},
    {"IPv6ProcAction", DO(ZARNLnxIPv6ProcAction(t[0], 0))},
    {"IPv6FlushAddr", DO(ZARNLnxIPv6FlushAddr(t[0]))},
    // ---- virtual
    {"LinkAggrSet create", DO(WithBond(t, 4, ZARNNetLinkAggrSet))},
    {"LinkAggrSet change", DO(WithBond(t, 5, ZARNNetLinkAggrSet))},
    {"LinkAggrSet delete", DO(WithBond(t, 0, ZARNNetLinkAggrSet))},
    {"LinkAggrConfSetSlave join", DO(ZARNNetLinkAggrConfSetSlave(t[0], 1, t[1]))},
    {"LinkAggrConfSetSlave leave", DO(ZARNNetLinkAggrConfSetSlave(t[0], 0, nullptr))},
    {"LinkAggrConfDel", DO(WithBond(t, ZARNBOND_NONE, ZARNNetLinkAggrConfDel))},
    {"SetBridgeConfig", SetBridge},
    {"DisableBridgeSlave", DO(ZARNNetDisableBridgeSlave(Settings(t[0], &t[1])))},
    {"VlanCreate", DO(KOPANetVlanCreate(t[0], 20, Settings("", &t[1])))},
    {"VlanRemove", DO(KOPANetVlanRemove(t[0]))},
    // ---- dhcpd
    {"DHCPServerRestart", DO(DHCPServerRestart())},
    {"DHCPInterfaceSetEnabled", DO(DHCPInterfaceSetEnabled(t[0], 0, 1))},
    {"SetDhcpServerConfigFiles", DO(ZARNNetSetDhcpServerConfigFiles(Subnet(t), 1))},
    {"DHCPTagConfSetEnable", DO(DHCPTagConfSetEnable(t[0], 0, 0, 0))},
    {"DHCPTagConfSet v4", DO(SetSubnet(t, 0))},
    {"DHCPTagConfSet v6", DO(SetSubnet(t, 1))},
    {"DHCPVendorSetVendor", SetVendor},
    {"DHCPVendorSetVendorOpt", DO(DHCPVendorSetVendorOpt(t[0], 7, t[1]))},
    {"DHCPPXEConfSetEnable", DO(DHCPPXEConfSetEnable(1))},
    {"DHCPPXEConfSet local", DO(SetPxe(t, 0))},
    {"DHCPPXEConfSet remote", DO(SetPxe(t, 1))},
    {"DHCPDConfChangeInterface", DO(DHCPDConfChangeInterface(t[0], t[1]))},
    {"DHCPDLinkAggrSet join", DO(DHCPDLinkAggrSet(1, t[0], List({t[1]})))},
    {"DHCPDLinkAggrSet dissolve", DO(DHCPDLinkAggrSet(0, t[0], List({t[1]})))},
    {"BlZARNLnxIsDHCP", DO(BlZARNLnxIsDHCP(t[0]) < 0 ? -1 : 0)},
    // ---- pppoe
    {"PPPoEConfigSet", SetPppoe},
    {"PPPoEService up", DO(ZARNPPPoEService(1))},
    {"PPPoEService down", DO(ZARNPPPoEService(0))},
    {"DisablePPPoEOnIf", DO(KOPADisablePPPoEOnIf(t[0]))},
    {"SetPPPoERelayConfig", SetRelay},
    {"ApplyPPPoERelayConfigAll", DO(ZARNNetApplyPPPoERelayConfigAll())},
    {"ClearPPPoERelayConfigAll", DO(ZARNNetClearPPPoERelayConfigAll())},
    // ---- tunnel
    {"TunnelConfigSet", DO(ZARNTunnelConfigSet(Tunnel(t)))},
    {"TunnelExecute start", DO(ZARNTunnelExecute(0, Tunnel(t)))},
    {"TunnelExecute stop", DO(ZARNTunnelExecute(1, Tunnel(t)))},
};

// The sections of setters.txt, without calls.
std::map<std::string, Setter> Sections() {
  std::map<std::string, Setter> sections;
  Setter* section = nullptr;
  for (const std::string& line : DataLines("setters.txt")) {
    if (line.empty() || line[0] == '#') continue;
    const std::size_t end = line.find(']');
    if (line[0] == '[') {
      section = &sections[line.substr(1, end - 1)];
      for (std::size_t at = end + 1; at < line.size();) {
        const std::size_t comma = std::min(line.find(',', at + 1), line.size());
        section->texts.push_back(line.substr(at + 1, comma - at - 1));
        at = comma;
      }
    } else if (line.starts_with("exempt ")) {
      const auto has = [&](const char* word) { return line.find(word) != std::string::npos; };
      section->exempt = (has(" once") ? kOnce : 0) | (has(" lenient") ? kLenient : 0) |
                        (has(" no-way-on") ? kNoWayOn : 0) | (has(" loses") ? kLoses : 0);
    } else if (line.starts_with("with ")) {
      const auto& shared = sections.at(line.substr(5)).around;
      section->around.insert(section->around.end(), shared.begin(), shared.end());
    } else {
      section->around.push_back(line);
    }
  }
  return sections;
}

}  // namespace

void Shell(const std::string& command) {
  static_cast<void>(!std::system(command.c_str()));
}

std::vector<std::string> DataLines(const std::string& name) {
  std::ifstream file("tests/torture/" + name);
  std::vector<std::string> lines;
  for (std::string line; std::getline(file, line);)
    lines.push_back(line);
  return lines;
}

void Setter::SetUp() const {
  std::ofstream file;
  for (const std::string& line : around) {
    const std::size_t at = line.find('/');
    if (line.starts_with("  ")) {
      file << line.substr(2) << std::endl;
    } else if (line.starts_with("empty ")) {
      Shell("mount -t tmpfs torture " + line.substr(at));
    } else if (line.starts_with("down ")) {
      Shell("ip link set " + line.substr(5) + " down");
    } else {
      const std::filesystem::path path = line.substr(at);
      std::filesystem::create_directories(path.parent_path());
      file = std::ofstream(path, at == 0 ? std::ios::trunc : std::ios::app);
    }
  }
}

const std::vector<Setter>& Setters() {
  static const std::vector<Setter> setters = [] {
    const auto sections = Sections();
    std::vector<Setter> all;
    for (const auto& row : kRows) {
      all.push_back(sections.at(row.name));
      all.back().name = row.name;
      all.back().call = row.call;
    }
    return all;
  }();
  return setters;
}

}  // namespace torture
