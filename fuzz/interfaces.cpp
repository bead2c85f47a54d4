// The files of interfaces, the system's settings and names, the resolver.
#include <zarnnetsdk/zarnnetsdk.h>

#include "frame/model/ifcfg.h"
#include "frame/model/paths.h"
#include "fuzz.h"
#include "virtual/bond_files.h"
#include "virtual/vlan_files.h"

namespace fuzz {
namespace {

using frame::paths::Ifcfg;
namespace paths = frame::paths;

const std::string kEth0 = Ifcfg("eth0");

FUZZ(interface_file) {
  const std::string lease = paths::DhcpInfo("eth0");
  Put(kEth0, in.Text());
  Put(lease, in.Text());
  Put(paths::kExternalIpResult, in.Rest());
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
}

FUZZ(block_flags) {
  const int mask = in.Number() & 0xF, value = in.Number();
  Put(kEth0, in.Rest());
  if (ZARNNetIFBlockSet("eth0", static_cast<unsigned>(mask), value) != 0) return;
  const int count = std::atoi(Key(kEth0, "BLOCK_CNT").c_str());
  const int wanted = value == 1 && count != 0 ? mask : 0;
  REQUIRE((ZARNNetIFBlockGet("eth0") & mask) == wanted || (value != 0 && value != 1) || count == 0);
}

// Into a bond and out of it again; what has nothing to do with that stays.
FUZZ(bond_slave_file) {
  Put(kEth0, in.Rest());
  const std::string kept = Key(kEth0, "IPV6INIT");
  REQUIRE(virtual_if::JoinBond("eth0", "bond0"));
  REQUIRE(Key(kEth0, "MASTER") == "bond0" && Key(kEth0, "SLAVE") == "yes");
  REQUIRE(virtual_if::LeaveBond("eth0"));
  REQUIRE(Key(kEth0, "MASTER").empty() && Key(kEth0, "SLAVE").empty());
  REQUIRE(Key(kEth0, "IPV6INIT") == kept);
}

FUZZ(bridge_settings) {
  ZARNNETIFSETTINGS settings{}, read{};
  ZARNBRIDGEINFO role{}, readRole{};
  settings.blStatic = 1;
  settings.blOnBoot = static_cast<uint32_t>(in.Number() & 1);
  role.type = static_cast<uint32_t>(in.Number() & 7);
  in.Text(settings.szIP);
  in.Text(settings.szMask);
  in.Text(role.szRef);
  std::strcpy(settings.szName, "eth0");
  std::strcpy(role.szName, "eth0");
  const std::string file = in.Rest();
  Put(kEth0, file);
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
  in.Text(settings.szIP);
  in.Text(settings.szMask);
  Put(kEth0, in.Rest());
  if (!frame::model::IsFitAddress(settings)) return;
  const std::string own = virtual_if::VlanFile(vlan, settings);
  Put(Ifcfg("eth0.10"), own);
  REQUIRE(Key(Ifcfg("eth0.10"), "VLAN_ROW_DEVICE") == "eth0");
  REQUIRE(settings.blStatic == 0 || Key(Ifcfg("eth0.10"), "IPADDR") == Field(settings.szIP));
  REQUIRE(Lines(own) <= 12);
  const auto under = virtual_if::ParentFileUnder("eth0");
  REQUIRE(under && under->ends_with("BOOTPROTO=none\nIPV6INIT=off\n"));
  const auto without = virtual_if::ParentFileWithout(vlan);
  REQUIRE(without && (without->empty() || without->back() == '\n'));
}

FUZZ(system_settings) {
  const std::string mtu = in.Text();
  KOPANETTOPOLOGY topology{}, found{};
  in.Text(topology.szName);
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
  Put(paths::kInfo, in.Text());
  Put(paths::kResolvStatic, in.Text());
  Put(paths::kLearnedServersV4, in.Text());
  Put(paths::kLearnedServersV6, in.Text());
  Put(paths::kResolvOption, in.Text());
  Put(paths::kResolv, in.Rest());
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
