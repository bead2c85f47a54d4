// SPDX-License-Identifier: Apache-2.0
// The kernel's tables, what programs print, and the files of interfaces, the system and the
// resolver.
#include <zarnnetsdk/zarnnetsdk.h>

#include "frame/base/text.h"
#include "frame/facts/bridges.h"
#include "frame/facts/ovs.h"
#include "frame/model/ifcfg.h"
#include "frame/model/paths.h"
#include "fuzz.h"
#include "virtual/bond_files.h"
#include "virtual/vlan_files.h"

namespace fuzz {
namespace {

namespace paths = frame::paths;
using frame::paths::Ifcfg;

const std::string kEth0 = Ifcfg("eth0");

FUZZ(interface_table) {
  const auto selector = static_cast<unsigned>(in.Number());
  Put(paths::kProcNetDev, in.Rest());
  KOPANetIfInfo list[32];
  const int count = KOPANetGetInterfaceInfo(list, 32, selector);
  REQUIRE(count <= 32 && KOPANetEthEnum(nullptr, 32) <= 32);
  for (int i = 0; i < count; ++i)
    REQUIRE(!Field(list[i].name).empty());
  PKOPANETSTATLIST stats = KOPANetStatInit(4);
  REQUIRE(KOPANetStatGetAll(stats) <= 4);
  KOPANetStatFree(stats);
  ZARNNetIsDevTypeMatch("eth0", selector);
}

FUZZ(route_table) {
  Put(paths::kProcRoute, in.Rest());
  char gateway[16] = "", ifname[8] = "";
  REQUIRE(DefaultGatewayGet(gateway, sizeof gateway, ifname, sizeof ifname) <= 0);
  REQUIRE(IsPlain(Field(gateway), ".") &&
          Field(ifname).find_first_of(" \t\n") == std::string::npos);
}

FUZZ(address_table) {
  Put(paths::kProcIfInet6, in.Rest());
  ZARNNETV6ADDR addresses[4];
  const int count = ZARNLnxV6IPGet("eth0", addresses, 4);
  for (int i = 0; i < count && i < 4; ++i)
    REQUIRE(BlKOPAIsv6IpAddrValid(addresses[i].szAddr) == 1);
}

FUZZ(socket_tables) {
  const int first = in.Number(), last = in.Number();
  in.Files({paths::kProcTcp, paths::kProcTcp6, paths::kProcUdp, paths::kProcUdp6});
  int ports[4];
  const int count = ZARNNetGetPortUsedInRange(first, last, "", ports, 4);
  for (int i = 0; i < count && i < 4; ++i)
    REQUIRE(first <= ports[i] && ports[i] <= last);
  REQUIRE(ZARNNetIsPortRangeUsed(first, last, "tcp") <= (count > 0 ? 1 : 0));
}

FUZZ(vlan_table) {
  Put(paths::kProcVlanConfig, in.Rest());
  KOPANETVLAN* vlans = nullptr;
  int count = 0;
  if (KOPANetVlanEnum(&vlans, &count) == 0) {
    REQUIRE(count <= Lines(Get(paths::kProcVlanConfig)));
    for (int i = 0; i < count; ++i)
      REQUIRE(Field(vlans[i].szName).size() < 16 && Field(vlans[i].szRowDev).size() < 16);
  }
  std::free(vlans);
}

FUZZ(bond_tables) {
  in.Files({paths::kBondingMasters, paths::SysNet("bond0", "/bonding/slaves"),
            paths::SysNet("bond0", "/bonding/mode"), paths::ProcBond("bond0")});
  List bonds, slaves;
  ZARNNetLinkAggrEnum(bonds.Out());
  for (const std::string& bond : bonds.Texts())
    REQUIRE(bond.find_first_of(" \t\n") == std::string::npos);
  ZARNLINKAGGROPT record{};
  if (ZARNNetLinkAggrGet("bond0", &record) == 0)
    REQUIRE(record.cSlave >= 0 && record.cSlave <= ZARNLINKAGGR_MAX_SLAVE);
  ZARNNetLinkAggrPhyGet("bond0", slaves.Out());
  REQUIRE(ZARNNetIfIsLink("bond0") <= 1);
}

FUZZ(switch_tables) {
  const std::string name = in.Text();
  Put(paths::kOvsBonds, in.Text());
  Put(paths::SysVirtualNet("ovs_bond0") + "/flags", "");
  Put(paths::SysVirtualNet("ovs_eth0") + "/flags", "");
  Put(paths::Ifcfg("ovs_bond0"), in.Rest());
  const auto bond = frame::facts::OvsBonds().Of(name);
  REQUIRE(bond && bond->find(' ') == std::string::npos);
  ZARNLINKAGGROPT record{};
  if (ZARNNetLinkAggrGet("ovs_bond0", &record) == 0)
    REQUIRE(record.cSlave >= 0 && record.cSlave <= ZARNLINKAGGR_MAX_SLAVE);
  char port[16], mac[18];
  KOPANetOVSGetOriginalIf(name.c_str(), port, sizeof port);
  KOPANetOVSIfIsSlave(name.c_str());
  KOPANetOVSIfIsMaster(name.c_str());
  KOPANetGetMacAddrByInterface(name.c_str(), mac, sizeof mac, 1);
  ZARNNetIfIsLink("ovs_bond0");
}

FUZZ(program_output) {
  Put(paths::kPppoeIntf, in.Text());
  Put(paths::kProcNetDev, in.Text());
  output = in.Rest();
  char address[20], ifname[16];
  for (auto* const cal : {ZARNNetCalBroadcast, ZARNNetCalNetwork}) {
    std::memset(address, 0, sizeof address);
    if (cal("10.0.0.1/8", address, sizeof address) == 0)
      REQUIRE(output.find(Field(address)) != std::string::npos);
  }
  const std::string texts = Get(paths::kPppoeIntf) + output;
  if (ZARNPPPoeIntfGet(ifname, sizeof ifname) == 0)
    REQUIRE(texts.find(Field(ifname)) != std::string::npos);
}

FUZZ(interface_file) {
  const std::string lease = paths::DhcpInfo("eth0");
  in.Files({kEth0, lease, paths::kExternalIpResult});
  const std::string file = Get(kEth0);
  const int dhcp = BlZARNLnxIsDHCP("eth0");
  REQUIRE(!Get(kEth0).empty());  // repaired
  char ip[16], address[46], gateway[46];
  if (ZARNILnxGetIPFromCfg("eth0", ip, sizeof ip) == 1)
    REQUIRE(Field(ip) == Key(dhcp == 1 ? lease : kEth0, "IPADDR").substr(0, 15));
  ZARNNETIFADDR config{};
  if (ZARNNetIFGetIPConfig("eth0", &config) == 0) REQUIRE(config.bootProto == 1 - dhcp);
  std::strcpy(config.szName, "eth0");
  if (ZARNIGetDHCPTestNetInfo(&config) == 0)
    REQUIRE(Field(config.szIP) == Key(lease, "IPADDR").substr(0, 19));
  REQUIRE(ZARNNetIfIsStaticIP("eth0") + dhcp <= 1);
  REQUIRE(ZARNNetIFBlockGet("eth0") >= 0);
  ZARNBRIDGEINFO bridge{};
  REQUIRE(ZARNNetGetBridgeConfig("eth0", nullptr, &bridge) == 0);
  REQUIRE(Get(kEth0).find(Field(bridge.szRef)) != std::string::npos);
  int type = 0, prefix = 0;
  ZARNNetIPv6ConfGet("eth0", &type, address, sizeof address, &prefix, gateway, sizeof gateway);
  std::free(ZARNExternalIPGet());
  // Into a bond and out of it again; what has nothing to do with that stays.
  Put(kEth0, file);
  const std::string kept = Key(kEth0, "IPV6INIT");
  REQUIRE(virtual_if::JoinBond("eth0", "bond0"));
  REQUIRE(Key(kEth0, "MASTER") == "bond0" && Key(kEth0, "SLAVE") == "yes");
  REQUIRE(virtual_if::LeaveBond("eth0"));
  REQUIRE((Key(kEth0, "MASTER") + Key(kEth0, "SLAVE")).empty() && Key(kEth0, "IPV6INIT") == kept);
}

FUZZ(block_flags) {
  const int mask = in.Number() & 0xF, value = in.Number();
  Put(kEth0, in.Rest());
  if (ZARNNetIFBlockSet("eth0", static_cast<unsigned>(mask), value) != 0) return;
  const int count = std::atoi(Key(kEth0, "BLOCK_CNT").c_str());
  const int wanted = value == 1 && count != 0 ? mask : 0;
  REQUIRE((ZARNNetIFBlockGet("eth0") & mask) == wanted || (value != 0 && value != 1) || count == 0);
}

FUZZ(bridge_settings) {
  ZARNNETIFSETTINGS settings{}, read{};
  ZARNBRIDGEINFO role{}, readRole{};
  settings.blStatic = 1;
  settings.blOnBoot = static_cast<uint32_t>(in.Number() & 1);
  role.type = static_cast<uint32_t>(in.Number() & 7);
  in.Fill(settings.szIP, settings.szMask, role.szRef);
  std::strcpy(settings.szName, "eth0");
  std::strcpy(role.szName, "eth0");
  Put(kEth0, in.Rest());
  if (ZARNNetSetBridgeConfig(&settings, &role) != 0) return;
  REQUIRE(ZARNNetGetBridgeConfig("eth0", &read, &readRole) == 0);
  const bool has = Key(kEth0, "BOOTPROTO") == "static";
  REQUIRE(!has || Field(read.szIP) == Field(settings.szIP).substr(0, 19));
  REQUIRE(!has || Field(read.szMask) == Field(settings.szMask).substr(0, 19));
}

FUZZ(vlan_files) {
  KOPANETVLAN vlan{"eth0.10", "eth0", 10};
  ZARNNETIFSETTINGS settings{};
  settings.blStatic = static_cast<uint32_t>(in.Number() & 1);
  in.Fill(settings.szIP, settings.szMask);
  Put(kEth0, in.Rest());
  if (!frame::model::IsFitAddress(settings)) return;
  const auto own = virtual_if::VlanFile(vlan, settings);
  if (!own) return;
  Put(Ifcfg("eth0.10"), *own);
  REQUIRE(Key(Ifcfg("eth0.10"), "VLAN_ROW_DEVICE") == "eth0");
  REQUIRE(settings.blStatic == 0 || Key(Ifcfg("eth0.10"), "IPADDR") == Field(settings.szIP));
  REQUIRE(Lines(*own) <= 12);
  const auto under = virtual_if::ParentFileUnder("eth0");
  REQUIRE(under && under->ends_with("BOOTPROTO=none\nIPV6INIT=off\n"));
  const auto without = virtual_if::ParentFileWithout(vlan);
  REQUIRE(without && (without->empty() || without->back() == '\n'));
}

FUZZ(system_settings) {
  const std::string mtu = in.Text();
  KOPANETTOPOLOGY topology{}, found{};
  in.Fill(topology.szName);
  const std::string name = Field(topology.szName);
  Put(paths::kInfo, in.Rest());
  char stored[32];
  if (ZARNConfSetMTUValue(mtu.c_str(), "eth0") == 0) {
    REQUIRE(ZARNConfGetMTUValue("eth0", stored, sizeof stored) == 0);
    REQUIRE(Field(stored) == mtu.substr(0, 31) && IsPlain(mtu, ""));
  }
  if (KOPANETSetTopologyConfigs(&topology) == 0) REQUIRE(Key(paths::kInfo, "net_topology") == name);
  const uint32_t current = KOPANetTopologyGet(&found);
  REQUIRE(current < 4 && (current == 0 || found.id == current));
}

FUZZ(host_name) {
  const std::string name = in.Text();
  if (ZARNLnxSetHostname(name.c_str()) == 0) {
    REQUIRE(Get(paths::kHostname) == name + "\n" && Lines(Get(paths::kHosts)) == 5);
    char kernel[64] = "";
    ZARNLnxGetHostname(kernel);
    REQUIRE(kernel == name.substr(0, name.find('.')));
  } else {
    REQUIRE(BlKOPAIsHostname(name.c_str()) == 0);
  }
}

FUZZ(resolver_files) {
  in.Files({paths::kInfo, paths::kResolvStatic, paths::kLearnedServersV4, paths::kLearnedServersV6,
            paths::kResolvOption, paths::kResolv});
  List fixed, active;
  char first[46];
  REQUIRE(ZARNNetStaticDNSListGet(fixed.Out()) == 0 && ZARNNetDNSListGet(active.Out()) == 0);
  REQUIRE(ZARNNetDNSGet(first, sizeof first) == 0);
  REQUIRE(Field(first) == (active.Texts().empty() ? "" : active.Texts()[0].substr(0, 45)));
  std::remove(paths::kResolv);
  if (ZARNNetDNSUpdate() != 0) return;
  for (std::string rest = Get(paths::kResolv); !rest.empty(); rest.erase(0, rest.find('\n') + 1))
    REQUIRE(rest.starts_with("nameserver\t") || rest.starts_with("domain\t"));
}

FUZZ(resolver_settings) {
  const auto servers = in.Words();
  List list(servers), read;
  if (ZARNNetDNSListSet(list.Get()) != 0) return;
  REQUIRE(ZARNNetStaticDNSListGet(read.Out()) == 0 && read.Texts() == servers);
  REQUIRE(ZARNNetDNSUpdate() == 0 &&
          Lines(Get(paths::kResolv)) == Lines(Get(paths::kResolvStatic)));
}

FUZZ(ipv6_settings) {
  const std::string address = in.Text(), gateway = in.Text();
  const int type = in.Number(), prefix = in.Number();
  Put(paths::kProcIpv6Route, in.Text());
  Put(kEth0, in.Rest());
  if (ZARNNetIPv6ConfSet("eth0", type, address.c_str(), prefix, gateway.c_str()) != 0) return;
  REQUIRE(Key(kEth0, "IPV6ADDR") == (type == ZARNNET_IPV6_STATIC ? address : ""));
}

}  // namespace
}  // namespace fuzz
