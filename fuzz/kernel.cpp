// The kernel's tables, and what programs print.
#include <zarnnetsdk/zarnnetsdk.h>

#include "frame/base/text.h"
#include "frame/facts/bridges.h"
#include "frame/facts/ovs.h"
#include "frame/model/paths.h"
#include "fuzz.h"

namespace fuzz {
namespace {

namespace paths = frame::paths;

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
  Put(paths::kProcTcp, in.Text());
  Put(paths::kProcTcp6, in.Text());
  Put(paths::kProcUdp, in.Text());
  Put(paths::kProcUdp6, in.Rest());
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
  Put(paths::kBondingMasters, in.Text());
  Put(paths::SysNet("bond0", "/bonding/slaves"), in.Text());
  Put(paths::SysNet("bond0", "/bonding/mode"), in.Text());
  Put(paths::ProcBond("bond0"), in.Rest());
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
  const auto bond = frame::facts::OvsBondOf(name);
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

}  // namespace
}  // namespace fuzz
