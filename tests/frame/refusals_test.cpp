// What every exported function makes of arguments that are null, empty or unfit: one line an
// argument, with the result and the code.
#include <tuple>

#include <zarnnetsdk/zarnnetsdk.h>

#include "support/transcript.h"

using namespace test;

namespace {

template <class T>
std::string Shown(T result) {
  if constexpr (std::is_pointer_v<T>) {
    return result == nullptr ? "null" : "not null";
  } else {
    return std::to_string(result);
  }
}

// Of a result that is no failure by itself the codes of a refusal tell that it is one.
std::string CodeOf(const std::string& result) {
  const int code = KOPACErrGet();
  if (!result.starts_with('-') && code != ZARNNETERR_BAD_PARAMETER &&
      code != ZARNNETERR_HOSTNAME_LENGTH && code != ZARNNETERR_MALFORMED_ADDRESS)
    return "";
  char text[8];
  std::snprintf(text, sizeof text, " %04X", static_cast<unsigned>(code));
  return text;
}

// A text is also no name, a path and two lines; room for a text is also none and less than none.
template <std::size_t I, class Arguments>
auto Unfit() {
  using T = std::tuple_element_t<I, Arguments>;
  std::vector<std::pair<const char*, T>> values;
  if constexpr (std::is_pointer_v<T>) values.push_back({"null", nullptr});
  if constexpr (std::is_same_v<T, const char*>) {
    values.push_back({"empty", ""});
    values.push_back({"path", "../eth0"});
    values.push_back({"lines", "eth0\nX=1"});
  }
  if constexpr (I > 0 && std::is_integral_v<T>) {
    if constexpr (std::is_same_v<std::tuple_element_t<I - 1, Arguments>, char*>) {
      values.push_back({"none", 0});
      if (std::is_signed_v<T>) values.push_back({"less", static_cast<T>(-1)});
    }
  }
  return values;
}

template <std::size_t I, class R, class... P>
std::string Answers(R (*function)(P...), const std::tuple<P...>& fit) {
  std::string line;
  for (const auto& [name, value] : Unfit<I, std::tuple<P...>>()) {
    std::tuple<P...> arguments = fit;
    std::get<I>(arguments) = value;
    KOPACErrSetEx(0, "", 0);
    const R result = std::apply(function, arguments);
    line += std::string(" ") + name + " " + Shown(result) + CodeOf(Shown(result)) + ";";
  }
  return line.empty() ? line : std::to_string(I + 1) + ":" + line + "\n";
}

template <class R, class... P>
void Sweep(const char* name, R (*function)(P...), std::type_identity_t<P>... fit) {
  std::string answers;
  Tell(name, [&] {
    [&]<std::size_t... I>(std::index_sequence<I...>) {
      ((answers += Answers<I>(function, std::tuple<P...>(fit...))), ...);
    }
    (std::index_sequence_for<P...>{});
    return 0;
  });
  Say(answers);
}
#define SWEEP(function, ...) Sweep(#function, function, __VA_ARGS__)

struct Refusals : testing::Test {
  Refusals() {
    for (const char* tool :
         {"/etc/rc.network", "/sbin/start", "/sbin/stop", "/sbin/initctl", "/usr/sbin/dhclient",
          "/sbin/arping", "/bin/ipcalc", "/sbin/ip", "/sbin/ifconfig", "/sbin/route"})
      RecordTool(tool);
    // What the kernel has come to in the meantime.
    Mask("ORIGIN_ADDRESS=([^ ]+)", "...");
    Mask("IS_LINK=([a-z]+)", "...");
  }
  char text[64] = "text";
  char other[64] = "other";
  int number = 1;
  List list;
};

}  // namespace

TEST_F(Refusals, Addr) {
  unsigned part[4] = {255, 255, 0, 0};
  const unsigned* const mask = part;
  SWEEP(cKOPAISepIP, "10.0.0.1", part);
  SWEEP(BlKOPAIsIpAddr, "10.0.0.1");
  SWEEP(cKOPAICalMask, mask);
  SWEEP(BlKOPAIsIpMask, text);
  SWEEP(BlKOPAIsValidIpMask, "255.0.0.0");
  SWEEP(ErrKOPASubnetToIpMask, text, other);
  SWEEP(ErrKOPAIpMaskToSubnet, text, other);
  SWEEP(ZARNNetNetmaskToPrefix, "255.0.0.0");
  SWEEP(BlKOPAIsv6IpAddrValid, "::1");
  SWEEP(BlKOPAIsHostname, "nas");
  SWEEP(BlKOPAIsAtom, "nas");
  SWEEP(BlKOPAIsDomain, "nas");
  SWEEP(ZARNNetIsSameSubnet, "10.0.0.1", "10.0.0.2", "255.0.0.0");
  SWEEP(KOPAIsIpInRange, "10.0.0.1", "10.0.0.0", "10.0.0.2", 2);
  SWEEP(ZARNNetIsPrivateIP, "10.0.0.1");
  SWEEP(ZARNNetGetAddrType, "10.0.0.1");
  SWEEP(ZARNNetCalBroadcast, "10.0.0.1/8", text, 64);
  SWEEP(ZARNNetCalNetwork, "10.0.0.1/8", text, 64);
  SWEEP(ZARNNetGetPortUsedInRange, 1, 2, "tcp", &number, 1);
  SWEEP(ZARNNetIsPortRangeUsed, 1, 2, "tcp");
  SWEEP(BlKOPAIsConnected, "127.0.0.1", 1);
  SWEEP(ZARNNetLookupIP, "127.0.0.1", text, 64);
  SWEEP(ZARNNetIP2If, "127.0.0.1", text, 64);
  SWEEP(KOPANetEtherWake, "eth0", "02:00:00:00:00:01");
  SWEEP(ZARNIIpConflict, "eth0", "10.0.0.1");
  SWEEP(ZARNNetBondIPConflict, "bond0", text, 64);
}

TEST_F(Refusals, Iface) {
  KOPANetIfInfo info{};
  ZARNNETIFADDR config{};
  ZARNNETETHINFO ethernet{};
  uint32_t value = 0;
  SWEEP(ZARNNetIFBlockSet, "eth0", 1, 1);
  SWEEP(ZARNNetIFBlockGet, "eth0");
  SWEEP(ZARNNetIFGetInfo, "eth0", &info);
  SWEEP(ZARNNetIFGetInfoEx, "eth0", &info, &config);
  SWEEP(ZARNNetIsDevTypeMatch, "eth0", 2);
  SWEEP(KOPANetStatGetAll, nullptr);
  SWEEP(KOPANetGetIfCfg, "eth0", &value, &value);
  SWEEP(KOPANetSetIfCfg, "eth0", &value, &value);
  SWEEP(ZARNNetIfIsStaticIP, "eth0");
  SWEEP(KOPANetIFIsLocalLan, "eth0");
  SWEEP(ZARNNetIFGetIPConfig, "eth0", &config);
  SWEEP(KOPANetGetLocalLanConfig, list.Out());
  SWEEP(ZARNNetGetCard1, &config);
  SWEEP(ZARNNetGetCard1Ex, &info, &config);
  SWEEP(ZARNNetSetCard1, &config);
  SWEEP(ZARNNetIsIFUp, "eth0");
  SWEEP(KOPANetISetIfFlags, "eth0", 1);
  SWEEP(KOPANetIfUp, "eth0");
  SWEEP(KOPANetIfDown, "eth0");
  SWEEP(KOPANetReInitIf, "eth0");
  SWEEP(ZARNNetIfIsLink, "eth0");
  SWEEP(ZARNNetIfIsBondingPassive, "eth0");
  SWEEP(KOPANetGetMacAddr, 0, text, 64, 1);
  SWEEP(KOPANetGetMacAddrByInterface, "eth0", text, 64, 1);
  SWEEP(ZARNNetGetEthInfo, "eth0", &ethernet);
  SWEEP(KOPANetIfLinkUpEvent, "eth0");
  SWEEP(KOPANetIfLinkDownEvent, "eth0");
  SWEEP(ZARNNetRenameEth, "eth0", "eth7");
  SWEEP(KOPANETSetTopologyConfigs, nullptr);
}

TEST_F(Refusals, Ipv4AndIpv6) {
  ZARNNETV6ADDR address{};
  SWEEP(ZARNNetSetIP, "-4", "eth0", "10.0.0.1", 8, "add");
  SWEEP(ZARNILnxSetIPNetmask, "eth0", "10.0.0.1", "255.0.0.0");
  SWEEP(ZARNILnxGetIP, "eth0", text, 64);
  SWEEP(ZARNILnxGetIPFromCfg, "eth0", text, 64);
  SWEEP(ZARNNetFlushIP, "-4", "eth0");
  SWEEP(ZARNConfGetMTUValue, "eth0", text, 64);
  SWEEP(ZARNConfSetMTUValue, "1400", "eth0");
  SWEEP(ZARNNetSetMTUEth, "1400", "eth0");
  SWEEP(ZARNNetSetMTUValue, "1400", "eth0");
  SWEEP(ZARNGetMTU, "eth0");
  SWEEP(ZARNGetMTUSetting, "eth0");
  SWEEP(ZARNLnxSetHostname, "nas");
  SWEEP(ZARNLnxGetHostname, text);
  SWEEP(ZARNNetIPChangePreHook, 0, "eth0", "10.0.0.1", "10.0.0.2", 8);
  SWEEP(ZARNNetDnsConfigChangeHook, 4, "eth0", list);
  SWEEP(ZARNNetDNSChangeHook, 4, list);
  SWEEP(ZARNNetGatewayConfigChangeHook, 4, "ipv4", "eth0", "10.0.0.1", "10.0.0.2");
  SWEEP(ZARNNetHostnameChangeHook, "nas");
  SWEEP(ZARNNetMTUChangeHook, "eth0", "1400", 4);
  SWEEP(ZARNNetIPv6ConfGet, "eth0", &number, text, 64, &number, other, 64);
  SWEEP(ZARNNetIPv6ConfSet, "eth0", 3, "fd00::1", 64, "fd00::2");
  SWEEP(ZARNNetIPv6IPAction, 0, "eth0", "fd00::1", 64, "fd00::2");
  SWEEP(ZARNLnxV6IPGet, "eth0", &address, 1);
  SWEEP(ZARNLnxIPv6ProcAction, "eth0", 1);
  SWEEP(ZARNLnxIPv6FlushAddr, "eth0");
  SWEEP(ZARNNetIPv6IsSameSubnet, "fd00::1", "fd00::2", 64);
}

TEST_F(Refusals, DnsAndRoutes) {
  SWEEP(ZARNNetDNSListSet, list);
  SWEEP(ZARNNetDNSSet, "10.0.0.1");
  SWEEP(ZARNNetDNSModeSet, "auto");
  SWEEP(ZARNNetStaticDNSListGet, list.Out());
  SWEEP(ZARNNetDNSListGet, list.Out());
  SWEEP(ZARNNetDNSGet, text, 64);
  SWEEP(ZARNNetDNSFileSet, list, list);
  SWEEP(ZARNNetDefaultGatewayGetConf, text, 64);
  SWEEP(ZARNNetDefaultGatewaySetConf, "10.0.0.1");
  SWEEP(DefaultGatewayGet, text, 64, other, 64);
  SWEEP(ZARNNetDefaultGatewayGet, text, 64);
  SWEEP(ZARNNetDefaultGatewayInterfaceGet, text, 64);
  SWEEP(NetRoutetableEdit, 0, "10.0.0.1", "255.0.0.0", "eth0");
  SWEEP(NetRoutetableHandler, 0, "eth0");
}

TEST_F(Refusals, Virtual) {
  ZARNLINKAGGROPT bond{};
  ZARNBRIDGEINFO bridge{};
  ZARNNETIFSETTINGS settings{};
  KOPANETVLAN vlan{};
  KOPANETVLAN* vlans = nullptr;
  SWEEP(ZARNNetLinkAggrStringToMode, "balance-alb");
  SWEEP(ZARNNetLinkAggrEnum, list.Out());
  SWEEP(ZARNNetLinkAggrPhyGet, "bond0", list.Out());
  SWEEP(ZARNNetLinkAggrGet, "bond0", &bond);
  SWEEP(ZARNNetLinkAggrOptSlsaveAdd, &bond, "eth0");
  SWEEP(ZARNNetLinkAggrSet, &bond);
  SWEEP(ZARNNetLinkAggrConfSetSlave, "eth0", 1, "bond0");
  SWEEP(ZARNNetLinkAggrConfDel, &bond);
  SWEEP(ZARNNetLinkAggrConfUpdateBootProto, "/root/file", nullptr);
  SWEEP(KOPANetBridgeIfIsMaster, "eth0");
  SWEEP(KOPANetBridgeIfIsSlave, "eth0");
  SWEEP(KOPANetBridgeSlaveEnum, "eth0", list.Out());
  SWEEP(KOPANetEnumBridge, list.Out(), 2);
  SWEEP(KOPANETGetBridgeInfo, "eth0", &bridge);
  SWEEP(KOPANETGetBridgeInfoByTopology, "eth0", &bridge, 1);
  SWEEP(ZARNNetGetBridgeConfig, "eth0", &settings, &bridge);
  SWEEP(ZARNNetDisableBridgeSlave, &settings);
  SWEEP(ZARNNetIsIfBridgeType, "eth0", 1);
  SWEEP(KOPANetOVSIfIsMaster, "eth0");
  SWEEP(KOPANetOVSIfIsSlave, "eth0");
  SWEEP(KOPANetOVSGetOriginalIf, "ovs_eth0", text, 64);
  SWEEP(KOPANetVlanGet, "eth0", &vlan);
  SWEEP(KOPANetVlanGetByRowDev, "eth0", 1, &vlan);
  SWEEP(KOPANetVlanEnum, &vlans, &number);
  SWEEP(KOPANetVlanCreate, "eth0", 1, &settings);
  SWEEP(KOPANetVlanRemove, "eth0.1");
}

TEST_F(Refusals, DhcpPppoeAndTunnel) {
  DHCP_SUBNET_CONF subnet{};
  DHCP_RANGE* ranges = nullptr;
  DHCP_PXE_CONF pxe{};
  PPPOE_CONF account{};
  PPPOE_RELAY_CONF relay{};
  ZARNTUNNELCONF tunnel{};
  ZARNNETIFADDR info{};
  SWEEP(DHCPInterfaceIsEnabled, "eth0", 0);
  SWEEP(DHCPInterfaceSetEnabled, "eth0", 0, 1);
  SWEEP(DHCPInterfaceListGet, list.Out(), 0);
  SWEEP(ZARNNetGetDhcpServerConf, "tag", "eth0", &subnet);
  SWEEP(ZARNNetSetDhcpServerConfigFiles, &subnet, 1);
  SWEEP(DHCPTagConfGet, "eth0", 0, 0, &subnet);
  SWEEP(DHCPTagConfGetEnable, "eth0", 0, 0, &number);
  SWEEP(DHCPTagConfSetEnable, "eth0", 0, 0, 1);
  SWEEP(DHCPTagConfSetConfig, "eth0", 0, 0, &subnet);
  SWEEP(DHCPTagConfSet, "eth0", 0, 0, &subnet);
  SWEEP(DHCPGetInterfaceRanges, "eth0", &ranges);
  SWEEP(DHCPIsRangeConflict, "eth0", "10.0.0.1", "10.0.0.2", "255.0.0.0", text, 64);
  SWEEP(DHCPVendorCheckOptNum, "1");
  SWEEP(DHCPVendorEnum, list.Out());
  SWEEP(DHCPVendorGetVendor, "vendor", nullptr);
  SWEEP(DHCPVendorGetVendorOpt, "vendor", 1, text, 64);
  SWEEP(DHCPVendorSetVendor, "vendor", nullptr);
  SWEEP(DHCPVendorSetVendorOpt, "vendor", 1, "value");
  SWEEP(DHCPPXEConfGetEnable, &number);
  SWEEP(DHCPPXEConfGet, &pxe);
  SWEEP(DHCPPXEConfSet, &pxe);
  SWEEP(DHCPDConfChangeInterface, "eth0", "eth1");
  SWEEP(DHCPDLinkAggrSet, 1, "bond0", list);
  SWEEP(ZARNIGetDHCPTestNetInfo, &info);
  SWEEP(BlZARNLnxIsDHCP, "eth0");
  SWEEP(PPPoEConfigGet, &account);
  SWEEP(PPPoEConfigSet, &account);
  SWEEP(ZARNPPPoeIntfGet, text, 64);
  SWEEP(KOPADisablePPPoEOnIf, "eth0");
  SWEEP(ZARNNetGetPPPoERelayConfig, "eth0", &relay);
  SWEEP(ZARNNetSetPPPoERelayConfig, "eth0", &relay);
  SWEEP(ZARNNetIsSamePPPoERelayConfig, &relay, &relay);
  SWEEP(ZARNNetApplyPPPoERelayConfig, "eth0");
  SWEEP(ZARNTunnelConfigGet, &tunnel);
  SWEEP(ZARNTunnelConfigSet, &tunnel);
}
