// SPDX-License-Identifier: Apache-2.0
// Settings with a record of their own, read as their files are found, and written, read and
// compared: the accounts and passwords of PPPoE and the tunnel, the DHCP server.
#include <algorithm>

#include <zarnnetsdk/zarnnetsdk.h>

#include "dhcpd/options.h"
#include "frame/model/paths.h"
#include "fuzz.h"
#include "pppoe/shell_quote.h"

namespace fuzz {
namespace {

namespace paths = frame::paths;

// No log line has the password. A short one stands in any text, and the engine takes its words from
// what it sees compared, log lines among them: only one with a byte that no line of ours has can
// be told from them.
bool IsLogged(const std::string& password) {
  const bool isOwn = std::any_of(password.begin(), password.end(), [](char c) {
    return (static_cast<unsigned char>(c) & 0x80U) != 0;
  });
  return isOwn && password.size() > 5 && logged.find(password) != std::string::npos;
}

template <std::size_t N>
bool Same(const char (&a)[N], const char (&b)[N]) {
  return Field(a) == Field(b);
}

FUZZ(pppoe_settings) {
  PPPOE_CONF conf{}, read{};
  in.Fill(conf.eth, conf.user, conf.password, conf.mtu);
  conf.defaultroute = in.Number() & 1;
  in.Files({paths::kPapSecrets, paths::kPppoeConf});
  if (PPPoEConfigGet(&read) == 0) {
    REQUIRE(Field(read.eth) == Key(paths::kPppoeConf, "ETH").substr(0, sizeof read.eth - 1));
    REQUIRE(Field(read.user).size() < sizeof read.user);
    REQUIRE(Field(read.password).size() < sizeof read.password && !IsLogged(Field(read.password)));
  }
  std::remove(paths::kPapSecrets);
  logged.clear();
  if (PPPoEConfigSet(&conf) != 0 || Field(conf.eth).empty()) return;
  const std::string user = Field(conf.user);
  REQUIRE(!IsLogged(Field(conf.password)) && pppoe::Unquoted(user).size() <= user.size());
  REQUIRE(Lines(Get(paths::kPapSecrets)) == 1 && PPPoEConfigGet(&read) == 0);
  // "#" may have been guarded, and a long name with quotes in it is cut.
  if (user.find("\\#") != std::string::npos || pppoe::Quoted(user).size() > 250) return;
  REQUIRE(Same(read.user, conf.user) && Same(read.password, conf.password));
  REQUIRE(Same(read.eth, conf.eth) && Same(read.mtu, conf.mtu));
  REQUIRE(read.defaultroute == conf.defaultroute);
}

FUZZ(relay_settings) {
  PPPOE_RELAY_CONF conf{}, read{};
  conf.enable = in.Number() & 1;
  in.Fill(conf.server);
  const std::string path = std::string(paths::kPppoeRelayFolder) + "eth0";
  Put(path, in.Rest());
  ZARNNetGetPPPoERelayConfig("eth0", &read);
  REQUIRE(Field(read.server).size() < sizeof read.server);
  if (ZARNNetSetPPPoERelayConfig("eth0", &conf) != 0) return;
  REQUIRE(ZARNNetGetPPPoERelayConfig("eth0", &read) == 0);
  if (IsPlain(conf.server)) REQUIRE(ZARNNetIsSamePPPoERelayConfig(&conf, &read) == 1);
}

FUZZ(tunnel_settings) {
  constexpr char kRuns[] = "/etc/zarnservice/zarntunnel.conf";
  ZARNTUNNELCONF conf{}, read{};
  in.Fill(conf.szServer, conf.szUserId, conf.szPassword);
  in.Files({kRuns, paths::kTunnelPassword, paths::Ifcfg("tun")});
  if (ZARNTunnelConfigGet(&read) >= 0) {
    REQUIRE(Field(read.szServer).size() < sizeof read.szServer);
    REQUIRE(Field(read.szPassword).size() < sizeof read.szPassword);
    REQUIRE(!IsLogged(Field(read.szPassword)));
  }
  Put(kRuns, "run=yes\n");
  logged.clear();
  if (ZARNTunnelConfigSet(&conf) != 0) return;
  REQUIRE(!IsLogged(Field(conf.szPassword)));
  REQUIRE(ZARNTunnelConfigGet(&read) == 1 && Same(read.szPassword, conf.szPassword));
  if (IsPlain(Field(conf.szUserId))) REQUIRE(Same(read.szUserId, conf.szUserId));
}

constexpr char kSubnet[] = "/etc/dhcpd/dhcpd-eth0-subnet0.conf";
constexpr char kVendors[] = "/etc/dhcpd/dhcpd-vendor.conf";

FUZZ(subnet_files) {
  const std::string text = in.Rest();
  for (const char* path : {kSubnet, "/etc/dhcpd/dhcpd6-eth0-subnet0.conf",
                           "/etc/dhcpd/dhcpd-eth0-office.conf", "/etc/dhcpd/dhcpd-eth0.info"}) {
    Put(path, text);
  }
  for (const int family : {0, 1}) {
    DHCP_SUBNET_CONF conf{};
    REQUIRE(DHCPTagConfGet("eth0", 0, family, &conf) != 0);
    for (const DHCP_OPTION* option = conf.options; option != nullptr; option = option->next)
      REQUIRE(dhcpd::IsAcceptable(*option));
    DHCPOptionFree(conf.options);
  }
  DHCP_SUBNET_CONF tagged{};
  if (ZARNNetGetDhcpServerConf("office", "eth0", &tagged) == 1)
    REQUIRE(Field(tagged.tag) == "office" && Field(tagged.domain).size() < 20);
  DHCP_RANGE* ranges = nullptr;
  const int count = DHCPGetInterfaceRanges("eth0", &ranges);
  REQUIRE((count == 1) == (ranges != nullptr));
  DHCPRangeFree(ranges);
  char other[16];
  DHCPIsRangeConflict("eth1", "10.0.0.1", "10.0.0.9", "255.0.0.0", other, sizeof other);
  List served;
  REQUIRE(DHCPInterfaceListGet(served.Out(), 0) == 1);
}

// What is plain comes back, and no text adds a line.
FUZZ(subnet_settings) {
  DHCP_SUBNET_CONF conf{}, read{};
  const int family = in.Number() & 1;
  conf.lease = in.Number();
  in.Fill(conf.start, conf.end, conf.netmask, conf.router, conf.dns1, conf.dns2, conf.domain,
          conf.v6mode, conf.tag);
  std::strcpy(conf.interface, "eth0");
  if (ZARNNetSetDhcpServerConfigFiles(&conf, 1) == 1)
    REQUIRE(Lines(Get("/etc/dhcpd/dhcpd-eth0-" + Field(conf.tag) + ".conf")) <= 5);
  if (DHCPTagConfSet("eth0", 0, family, &conf) != 0) return;
  REQUIRE(Lines(Get(kSubnet)) <= 6 && Lines(Get("/etc/dhcpd/dhcpd6-eth0-subnet0.conf")) <= 4);
  const std::string all = Field(conf.start) + Field(conf.end) + Field(conf.netmask) +
                          Field(conf.router) + Field(conf.dns1) + Field(conf.domain);
  if (!IsPlain(all, ".") || family == 1 || Field(conf.dns1).empty()) return;
  REQUIRE(DHCPTagConfGet("eth0", 0, family, &read) == 1 && read.lease == conf.lease);
  for (const auto field : {&DHCP_SUBNET_CONF::start, &DHCP_SUBNET_CONF::end,
                           &DHCP_SUBNET_CONF::netmask, &DHCP_SUBNET_CONF::router}) {
    REQUIRE(Field(conf.*field).size() >= 20 || Same(read.*field, conf.*field));
  }
  DHCPOptionFree(read.options);
}

// An option that is accepted comes back as it was set.
FUZZ(subnet_options) {
  DHCP_SUBNET_CONF conf{}, read{};
  DHCP_OPTION option{};
  option.number = in.Number();
  in.Fill(option.name);
  List values(in.Words());
  in.Fill(option.value);
  const bool list = DHCPOptionIsListValue(option.number) == 1;
  if (list) option.values = values.Get();
  conf.options = &option;
  for (char* text : {conf.start, conf.end, conf.netmask, conf.router, conf.dns1})
    std::strcpy(text, "10.0.0.1");
  if (DHCPTagConfSet("eth0", 0, 0, &conf) != 0) return;
  REQUIRE(dhcpd::IsAcceptable(option));
  const std::string text = dhcpd::ValueText(option);
  REQUIRE(DHCPTagConfGet("eth0", 0, 0, &read) == 1);
  // A value that looks like another of the subnet's options is cut at its comma.
  const bool plain = list ? text.size() < 900 : IsPlain(text, " .:_-/");
  REQUIRE(!plain || read.options != nullptr);
  REQUIRE(!plain || dhcpd::ValueText(*read.options) == text);
  DHCPOptionFree(read.options);
}

FUZZ(vendor_file) {
  const std::string vendor = in.Text(), wanted = in.Text(), other = in.Text();
  const int number = in.Number();
  Put(kVendors, in.Rest());
  List vendors;
  DHCPVendorEnum(vendors.Out());
  for (const std::string& name : vendors.Texts())
    REQUIRE(!name.empty() && name.find(',') == std::string::npos);
  PKOPACSZHASH options = KOPACSzHashAlloc(8);
  List numbers;
  DHCPVendorGetVendor(vendor.c_str(), &options);
  KOPACSzHashEnumKey(options, numbers.Out());
  for (const std::string& text : numbers.Texts())
    REQUIRE(DHCPVendorCheckOptNum(text.c_str()) == 1);
  KOPACSzHashFree(options);
  char read[1024];
  const auto get = [&](std::size_t size) {
    return DHCPVendorGetVendorOpt(vendor.c_str(), number, read, size) == 1;
  };
  const auto set = [&](const std::string& value) {
    return DHCPVendorSetVendorOpt(vendor.c_str(), number, value.c_str()) == 0;
  };
  if (get(64)) REQUIRE(Get(kVendors).find(Field(read)) != std::string::npos);
  std::remove(kVendors);
  if (vendor.empty() || wanted.empty() || number < 1 || number > 254) return;
  if (!set(other) || !set(wanted)) return;
  REQUIRE(Lines(Get(kVendors)) == 1);
  if (vendor.find(',') != std::string::npos || vendor.size() + wanted.size() > 900) return;
  REQUIRE(get(sizeof read) && Field(read) == wanted);
}

FUZZ(network_boot) {
  DHCP_PXE_CONF conf{}, read{};
  conf.enable = 1;
  conf.is_remote_tftp = in.Number() & 1;
  in.Fill(conf.local_bootloader, conf.remote_bootloader, conf.remote_tftp_server_ip);
  Put("/etc/dhcpd/dhcpd-pxe-setting", in.Rest());
  DHCPPXEConfGet(&read);
  if (DHCPPXEConfSet(&conf) != 0) return;
  REQUIRE(DHCPPXEConfGet(&read) == 0 && read.is_remote_tftp == conf.is_remote_tftp);
  REQUIRE(Lines(Get("/etc/dhcpd/dhcpd-pxe.conf")) == 2);
  const auto loader = conf.is_remote_tftp != 0 ? &DHCP_PXE_CONF::remote_bootloader
                                               : &DHCP_PXE_CONF::local_bootloader;
  REQUIRE(std::strncmp(read.*loader, conf.*loader, 4095) == 0);
}

}  // namespace
}  // namespace fuzz
