// SPDX-License-Identifier: Apache-2.0
// What every exported function makes of arguments that are null, empty or unfit: one line an
// argument, with the result and the code.
#include <sstream>
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

// What fits by its type: the name of a port, room for a text or a record, a small number.
template <std::size_t I, class Arguments>
auto Fit() {
  using T = std::tuple_element_t<I, Arguments>;
  static List list;
  static char text[64] = "text";
  if constexpr (std::is_same_v<T, const char*>) {
    return "eth0";
  } else if constexpr (std::is_same_v<T, char*>) {
    return +text;
  } else if constexpr (std::is_same_v<T, PKOPACSZLIST>) {
    return T{list};
  } else if constexpr (std::is_same_v<T, PKOPACSZLIST*>) {
    return list.Out();
  } else if constexpr (std::is_pointer_v<T>) {
    static std::remove_const_t<std::remove_pointer_t<T>> record{};
    return &record;
  } else if constexpr (I > 0 && std::is_same_v<std::tuple_element_t<I - !!I, Arguments>, char*>) {
    return T{64};
  } else {
    return T{1};
  }
}

template <class R, class... P>
void SweepFit(const std::string& name, R (*function)(P...)) {
  [&]<std::size_t... I>(std::index_sequence<I...>) {
    Sweep(name.c_str(), function, Fit<I, std::tuple<P...>>()...);
  }
  (std::index_sequence_for<P...>{});
}

template <class... F>
void SweepEach(const char* names, F... functions) {
  std::istringstream words(names);
  std::string name;
  ((words >> std::ws, std::getline(words, name, ','), SweepFit(name, functions)), ...);
}
#define SWEEP_EACH(...) SweepEach(#__VA_ARGS__, __VA_ARGS__)

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
  int number = 1;
  List list;
};

}  // namespace

TEST_F(Refusals, Addr) {
  unsigned part[4];
  SWEEP(cKOPAISepIP, "10.0.0.1", part);
  SWEEP(ZARNNetIsSameSubnet, "10.0.0.1", "10.0.0.2", "255.0.0.0");
  SWEEP(KOPAIsIpInRange, "10.0.0.1", "10.0.0.0", "10.0.0.2", 2);
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
  SWEEP_EACH(BlKOPAIsIpAddr, cKOPAICalMask, BlKOPAIsIpMask, BlKOPAIsValidIpMask,
             ErrKOPASubnetToIpMask, ErrKOPAIpMaskToSubnet, ZARNNetNetmaskToPrefix,
             BlKOPAIsv6IpAddrValid, BlKOPAIsHostname, BlKOPAIsAtom, BlKOPAIsDomain,
             ZARNNetIsPrivateIP, ZARNNetGetAddrType);
}

TEST_F(Refusals, Iface) {
  SWEEP(ZARNNetRenameEth, "eth0", "eth7");
  SWEEP_EACH(ZARNNetIFBlockSet, ZARNNetIFBlockGet, ZARNNetIFGetInfo, ZARNNetIFGetInfoEx,
             ZARNNetIsDevTypeMatch, KOPANetGetIfCfg, KOPANetSetIfCfg, ZARNNetIfIsStaticIP,
             KOPANetIFIsLocalLan, ZARNNetIFGetIPConfig, KOPANetGetLocalLanConfig, ZARNNetGetCard1,
             ZARNNetGetCard1Ex, ZARNNetSetCard1, ZARNNetIsIFUp, KOPANetISetIfFlags, KOPANetIfUp,
             KOPANetIfDown, KOPANetReInitIf, ZARNNetIfIsLink, ZARNNetIfIsBondingPassive,
             KOPANetGetMacAddr, KOPANetGetMacAddrByInterface, ZARNNetGetEthInfo,
             KOPANetIfLinkUpEvent, KOPANetIfLinkDownEvent, KOPANetStatGetAll,
             KOPANETSetTopologyConfigs);
}

TEST_F(Refusals, Ipv4AndIpv6) {
  SWEEP(ZARNNetSetIP, "-4", "eth0", "10.0.0.1", 8, "add");
  SWEEP(ZARNILnxSetIPNetmask, "eth0", "10.0.0.1", "255.0.0.0");
  SWEEP(ZARNNetFlushIP, "-4", "eth0");
  SWEEP(ZARNConfSetMTUValue, "1400", "eth0");
  SWEEP(ZARNNetSetMTUEth, "1400", "eth0");
  SWEEP(ZARNNetSetMTUValue, "1400", "eth0");
  SWEEP(ZARNNetIPChangePreHook, 0, "eth0", "10.0.0.1", "10.0.0.2", 8);
  SWEEP(ZARNNetDnsConfigChangeHook, 4, "eth0", list);
  SWEEP(ZARNNetDNSChangeHook, 4, list);
  SWEEP(ZARNNetGatewayConfigChangeHook, 4, "ipv4", "eth0", "10.0.0.1", "10.0.0.2");
  SWEEP(ZARNNetMTUChangeHook, "eth0", "1400", 4);
  SWEEP(ZARNNetIPv6ConfSet, "eth0", 3, "fd00::1", 64, "fd00::2");
  SWEEP(ZARNNetIPv6IPAction, 0, "eth0", "fd00::1", 64, "fd00::2");
  SWEEP(ZARNNetIPv6IsSameSubnet, "fd00::1", "fd00::2", 64);
  SWEEP_EACH(ZARNILnxGetIP, ZARNILnxGetIPFromCfg, ZARNConfGetMTUValue, ZARNGetMTU,
             ZARNGetMTUSetting, ZARNLnxSetHostname, ZARNLnxGetHostname, ZARNNetHostnameChangeHook,
             ZARNNetIPv6ConfGet, ZARNLnxV6IPGet, ZARNLnxIPv6ProcAction, ZARNLnxIPv6FlushAddr);
}

TEST_F(Refusals, DnsAndRoutes) {
  SWEEP(NetRoutetableEdit, 0, "10.0.0.1", "255.0.0.0", "eth0");
  SWEEP_EACH(ZARNNetDNSListSet, ZARNNetDNSSet, ZARNNetDNSModeSet, ZARNNetStaticDNSListGet,
             ZARNNetDNSListGet, ZARNNetDNSGet, ZARNNetDNSFileSet, ZARNNetDefaultGatewayGetConf,
             ZARNNetDefaultGatewaySetConf, DefaultGatewayGet, ZARNNetDefaultGatewayGet,
             ZARNNetDefaultGatewayInterfaceGet, NetRoutetableHandler);
}

TEST_F(Refusals, Virtual) {
  ZARNLINKAGGROPT bond{};
  SWEEP(ZARNNetLinkAggrPhyGet, "bond0", list.Out());
  SWEEP(ZARNNetLinkAggrGet, "bond0", &bond);
  SWEEP(ZARNNetLinkAggrConfSetSlave, "eth0", 1, "bond0");
  SWEEP(ZARNNetLinkAggrConfUpdateBootProto, "/root/file", nullptr);
  SWEEP(KOPANetOVSGetOriginalIf, "ovs_eth0", text, 64);
  SWEEP_EACH(ZARNNetLinkAggrStringToMode, ZARNNetLinkAggrEnum, ZARNNetLinkAggrOptSlsaveAdd,
             ZARNNetLinkAggrSet, ZARNNetLinkAggrConfDel, KOPANetBridgeIfIsMaster,
             KOPANetBridgeIfIsSlave, KOPANetBridgeSlaveEnum, KOPANetEnumBridge,
             KOPANETGetBridgeInfo, KOPANETGetBridgeInfoByTopology, ZARNNetGetBridgeConfig,
             ZARNNetDisableBridgeSlave, ZARNNetIsIfBridgeType, KOPANetOVSIfIsMaster,
             KOPANetOVSIfIsSlave, KOPANetVlanGet, KOPANetVlanGetByRowDev, KOPANetVlanEnum,
             KOPANetVlanCreate, KOPANetVlanRemove);
}

TEST_F(Refusals, DhcpPppoeAndTunnel) {
  DHCP_SUBNET_CONF subnet{};
  SWEEP(ZARNNetGetDhcpServerConf, "tag", "eth0", &subnet);
  SWEEP(DHCPIsRangeConflict, "eth0", "10.0.0.1", "10.0.0.2", "255.0.0.0", text, 64);
  SWEEP(DHCPVendorGetVendor, "vendor", nullptr);
  SWEEP(DHCPVendorGetVendorOpt, "vendor", 1, text, 64);
  SWEEP(DHCPVendorSetVendor, "vendor", nullptr);
  SWEEP(DHCPVendorSetVendorOpt, "vendor", 1, "value");
  SWEEP(DHCPDConfChangeInterface, "eth0", "eth1");
  SWEEP(DHCPDLinkAggrSet, 1, "bond0", list);
  SWEEP_EACH(DHCPInterfaceIsEnabled, DHCPInterfaceSetEnabled, DHCPInterfaceListGet,
             ZARNNetSetDhcpServerConfigFiles, DHCPTagConfGet, DHCPTagConfGetEnable,
             DHCPTagConfSetEnable, DHCPTagConfSetConfig, DHCPTagConfSet, DHCPGetInterfaceRanges,
             DHCPVendorCheckOptNum, DHCPVendorEnum, DHCPPXEConfGetEnable, DHCPPXEConfGet,
             DHCPPXEConfSet, ZARNIGetDHCPTestNetInfo, BlZARNLnxIsDHCP, PPPoEConfigGet,
             PPPoEConfigSet, ZARNPPPoeIntfGet, KOPADisablePPPoEOnIf, ZARNNetGetPPPoERelayConfig,
             ZARNNetSetPPPoERelayConfig, ZARNNetIsSamePPPoERelayConfig,
             ZARNNetApplyPPPoERelayConfig, ZARNTunnelConfigGet, ZARNTunnelConfigSet);
}
