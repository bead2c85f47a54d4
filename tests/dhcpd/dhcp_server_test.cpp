// SPDX-License-Identifier: Apache-2.0
// The built-in DHCP server's files: whole fragments and switches, what is read back, what is
// refused before anything is written, and whether the server itself takes what was written.
#include <cstdio>
#include <memory>

#include <zarnnetsdk/dhcp_options.h>
#include <zarnnetsdk/dhcpd.h>

#include "frame/os/containers.h"
#include "support/transcript.h"

using namespace test;

namespace {

const std::string kFolder = "/etc/dhcpd/";
const char kScript[] = "/etc/rc.network";

void Write(const std::string& name, std::string_view text) {
  WriteFile(kFolder + name, text);
}

template <std::size_t N>
void Put(char (&field)[N], const std::string& text) {
  std::snprintf(field, N, "%s", text.c_str());
}

// One option; its list goes with this object.
struct Option {
  DHCP_OPTION record{};
  List list;
  Option(int number, const char* name, const std::string& value, const Lines& values = {})
      : list(values) {
    record.number = number;
    Put(record.name, name);
    Put(record.value, value);
    if (!values.empty()) record.values = list;
  }
};

DHCP_SUBNET_CONF Subnet() {
  DHCP_SUBNET_CONF conf{};
  conf.enable = 1;
  conf.lease = 3600;
  Put(conf.start, "192.168.60.50");
  Put(conf.end, "192.168.60.60");
  Put(conf.interface, "eth0");
  Put(conf.domain, "lan.example.of.long.name");
  Put(conf.dns1, "192.168.60.1");
  Put(conf.netmask, "255.255.255.0");
  Put(conf.router, "192.168.60.1");
  Put(conf.tag, "office");
  return conf;
}

std::string Text(const DHCP_SUBNET_CONF& conf) {
  std::string text = conf.enable != 0 ? "on" : "off";
  for (const char* const field :
       {conf.interface, conf.tag, conf.v6mode, conf.start, conf.end, conf.netmask, conf.router,
        conf.domain, conf.dns1, conf.dns2, conf.dns_more})
    text += std::string(" ") + (*field != 0 ? field : "-");
  text += " " + std::to_string(conf.lease);
  for (const auto* option = conf.options; option != nullptr; option = option->next) {
    text += " " + std::to_string(option->number) + "=" + option->value;
    if (option->values != nullptr) {
      for (const std::string& value : Items(option->values))
        text += "," + value;
    }
  }
  return text;
}

// The last line that is written for the option; empty when it is refused.
std::string Written(const Option& option) {
  DHCP_SUBNET_CONF conf = Subnet();
  DHCP_OPTION record = option.record;
  conf.options = &record;
  if (DHCPTagConfSetConfig("eth0", 0, 0, &conf) != 0) return "";
  const std::string text = ReadFile(kFolder + "dhcpd-eth0-subnet0.conf");
  return text.substr(text.rfind("option:"));
}

bool Accepts(const Option& option) {
  return !Written(option).empty();
}

// What the file says, in words.
void Get(const char* ifname, int number, int v6) {
  DHCP_SUBNET_CONF read{};
  TELL(DHCPTagConfGet(ifname, number, v6, &read));
  Say(Text(read));
  DHCPOptionFree(read.options);
}

}  // namespace

TEST(DhcpTagged, FragmentAndSwitchAreWrittenAndReadBackCut) {
  const auto get = [] {
    DHCP_SUBNET_CONF read{};
    TELL(ZARNNetGetDhcpServerConf("office", "eth0", &read));
    Say(Text(read));
  };
  DHCP_SUBNET_CONF conf = Subnet();
  TELL(ZARNNetSetDhcpServerConfigFiles(&conf, 1));
  get();
  Put(conf.router, "changed");
  TELL(ZARNNetSetDhcpServerConfigFiles(&conf, 0));
  Write("dhcpd-eth0-office.conf",
        "interface=eth0\ndhcp-range=set:a,1,2,3,4\nx,option:dns-server,a,b,c\nx,option:router,r\n");
  get();
  Write("dhcpd-eth0-office.conf", "interface=eth0\ndhcp-range=a,1\nx,option:dns-server,a\n");
  get();
}

TEST(DhcpSubnet, AnIpv4SubnetIsWrittenWithItsOptionsAndReadBack) {
  DHCP_SUBNET_CONF conf = Subnet();
  Option routes(121, "classless-static-route", "", {"10.0.0.0/8", "192.168.60.9"});
  Option mtu(26, "mtu", "1500");
  Option wrong(26, "mtu", "67");
  conf.options = &routes.record;
  routes.record.next = &mtu.record;
  TELL(DHCPTagConfSet("eth0", 0, 0, &conf));
  Write("dhcpd-eth0-subnet0.conf",
        ReadFile(kFolder + "dhcpd-eth0-subnet0.conf") +
            "dhcp-option=tag:eth00\ndhcp-option=tag:eth00,,x\n"
            "dhcp-option=tag:eth00,option:tftp,x\ndhcp-option=tag:eth00,option:ntp-server,1.2.3.4,"
            "\ndhcp-option=tag:eth00,option:mtu,9,1\ndhcp-option=tag:eth00,option: ,1\n"
            "dhcp-option=tag:eth00,option: T1 ,7,8");
  Get("eth0", 0, 0);
  mtu.record.next = &wrong.record;
  TELL(DHCPTagConfSetConfig("eth0", 0, 0, &conf));
  DHCP_SUBNET_CONF bare = Subnet();
  Put(bare.dns1, "");
  TELL(DHCPTagConfSetConfig("eth0", 1, 0, &bare));
  Get("eth0", 1, 0);
  Get("eth0", 2, 0);
}

TEST(DhcpSubnet, AnIpv6SubnetHasThreeModesAndKeepsItsFragmentWhenOff) {
  DHCP_SUBNET_CONF conf{};
  conf.lease = 600;
  Put(conf.v6mode, "ra-stateless");
  Put(conf.dns1, "2001:db8::1");
  Put(conf.dns_more, "[2001:db8::3],");
  TELL(DHCPTagConfSet("eth0", 0, 1, &conf));
  Put(conf.v6mode, "off");
  TELL(DHCPTagConfSet("eth0", 0, 1, &conf));
  Get("eth0", 0, 1);
  Put(conf.v6mode, "stateful");
  Put(conf.start, "2001:db8::10");
  Put(conf.end, "2001:db8::20");
  TELL(DHCPTagConfSetConfig("eth0", 1, 1, &conf));
  Get("eth0", 1, 1);
  DHCP_SUBNET_CONF bare{};
  Put(bare.v6mode, "ra-only");
  TELL(DHCPTagConfSetConfig("eth0", 2, 1, &bare));
  Get("eth0", 2, 1);
  Put(conf.v6mode, "statefu");
  TELL(DHCPTagConfSetConfig("eth0", 3, 1, &conf));
}

// One option of each kind of value, at both borders; that all are known shows below.
TEST(DhcpOptions, BothBordersAreTakenAndWhatLiesOutsideIsNot) {
  const struct {
    int number;
    const char* name;
    Lines good;
    Lines bad;
  } rows[] = {{13, "boot-file-size", {"0", "65536"}, {"-1", "65537"}},
              {16, "swap-server", {"192.168.1.1"}, {"", "192.168.1", "256.1.1.1", "192.168.1.256"}},
              {17, "root-path", {"text"}, {""}},
              {19, "ip-forward-enable", {"0", "1"}, {"-1", "2", "", "1 ", "x"}},
              {22, "max-datagram-reassembly", {"576", "65536"}, {"575", "65537"}},
              {23, "default-ttl", {"1", "255"}, {"0", "256"}},
              {26, "mtu", {"68", "65536"}, {"67", "65537", "1500 ", ""}},
              {35, "arp-timeout", {"0", "4294967295"}, {"", "-1", "1s"}},
              {37, "tcp-ttl", {"1", "255"}, {"0", "256"}},
              {46, "netbios-nodetype", {"1", "2", "4", "8"}, {"0", "3", "16", ""}}};
  for (const auto& row : rows) {
    for (const std::string& value : row.good)
      EXPECT_TRUE(Accepts({row.number, row.name, value})) << row.name << value;
    for (const std::string& value : row.bad)
      EXPECT_FALSE(Accepts({row.number, row.name, value})) << row.name << value;
  }
  const struct {
    int number;
    const char* name;
    Lines good;
    std::vector<Lines> bad;
  } lists[] = {{21,
                "policy-filter",
                {"10.0.0.0", "255.0.0.0"},
                {{"10.0.0.0", "255.0.255.0"}, {"10.0.0.1", "255.255.255.0x0"}}},
               {121,
                "classless-static-route",
                {"10.0.0.0/8", "10.1.1.1"},
                {{"10.0.0.0/33", "10.1.1.1"}, {"10.0.0.0", "10.1.1.1"}, {"10.0.0.0/8", "10.1.1"}}},
               {42,
                "ntp-server",
                {"192.168.1.1", "10.0.0.1"},
                {{"192.168.1.1", "300.0.0.1"}, {"10.0.0.1", "010.0.0.1"}}}};
  for (const auto& row : lists) {
    EXPECT_TRUE(Accepts({row.number, row.name, "", row.good})) << row.name;
    EXPECT_FALSE(Accepts({row.number, row.name, "1.2.3.4"})) << row.name;
    for (const Lines& bad : row.bad)
      EXPECT_FALSE(Accepts({row.number, row.name, "", bad})) << row.name << bad[0] << bad[1];
  }
  for (const int number : {0, 255, 3, 27})
    EXPECT_FALSE(Accepts({number, "mtu", "1500"})) << number;
  EXPECT_EQ("option:policy-filter,10.0.0.1,255.0.0.0\n",
            Written({21, "policy-filter", "", {"10.0.0.1", "255.0.0.0"}}));
  EXPECT_EQ("option:ntp-server,10.0.0.1\n", Written({42, "ntp-server", "unused", {"10.0.0.1"}}));
  ExpectLog(LOG_ERR, "dhcp_conf", "option list value is empty", 3);
  for (const std::string what :
       {"0-th value [10.0.0.0/33], wrong netmask number", "0-th value [10.0.0.0]",
        "1-th value [10.1.1], wrong IP", "1-th value [255.0.255.0], not mask"})
    ExpectLog(LOG_ERR, "dhcp_conf", "wrong list " + what);
}

// The names come from the server itself; a value that is taken for any option of its kind.
TEST(DhcpOptions, TheServerTakesAllOfThem) {
  DHCP_SUBNET_CONF conf = Subnet();
  std::vector<std::unique_ptr<Option>> options;
  std::istringstream names(Shell("dnsmasq --help dhcp"));
  for (std::string line; std::getline(names, line);) {
    int number = 0;
    char name[64];
    if (std::sscanf(line.c_str(), "%d %63s", &number, name) != 2) continue;
    const bool listed = DHCPOptionIsListValue(number) == 1;
    const Lines values = number == 121  ? Lines{"10.0.0.0/8", "10.1.1.1"}
                         : number == 21 ? Lines{"10.0.0.0", "255.0.0.0"}
                                        : Lines{"192.168.1.1", "10.0.0.1"};
    for (const char* const value : {"1", "576", "192.168.1.1"}) {
      if (!Accepts({number, name, listed ? "" : value, listed ? values : Lines{}})) continue;
      options.push_back(
          std::make_unique<Option>(number, name, listed ? "" : value, listed ? values : Lines{}));
      break;
    }
  }
  EXPECT_EQ(std::size(ZARNNetDhcpOptions), options.size());
  for (const auto& option : options) {
    option->record.next = conf.options;
    conf.options = &option->record;
  }
  Shell("ip address add 192.168.60.1/24 dev eth0");
  BringUp("eth0");
  Write("dhcpd.info", "enable=\"yes\"\n");
  ASSERT_EQ(0, DHCPInterfaceSetEnabled("eth0", 0, 1));
  ASSERT_EQ(0, DHCPTagConfSet("eth0", 0, 0, &conf));
  EXPECT_EQ(0, KOPANetDHCPServerRestart()) << Shell("cat /var/log/appliance/dhcp-server.log");
  const std::string settings = ReadFile("/run/dhcpd/dnsmasq.conf");
  for (const auto& option : options)
    EXPECT_NE(std::string::npos, settings.find(std::string("option:") + option->record.name + ","));
}

TEST(DhcpRanges, AreListedToTheFirstGapAndComparedWithThoseOfOthers) {
  const auto range = [](const char* name, const std::string& start, const std::string& mask) {
    Write(name, "dhcp-range=set:x," + start + ",192.168.250.9," + mask + ",60\n");
  };
  range("dhcpd-eth1-subnet0.conf", "192.168.1.100", "255.255.0.0");
  range("dhcpd-eth1-subnet2.conf", "192.168.3.100", "255.255.255.0");
  DHCP_RANGE* ranges = nullptr;
  ASSERT_EQ(1, DHCPGetInterfaceRanges("eth1", &ranges));
  EXPECT_STREQ("192.168.1.100", ranges->start);
  EXPECT_STREQ("255.255.0.0", ranges->netmask);
  EXPECT_EQ(nullptr, ranges->next);
  EXPECT_EQ(-1, DHCPGetInterfaceRanges("eth1", &ranges));
  DHCPRangeFree(ranges);
  ranges = nullptr;
  Write("dhcpd-eth1.info", "enable=\"yes\"\n");
  WriteIfcfg("eth1", "DEVICE=eth1\n");
  const auto conflict = [](const char* ifname, const char* start, const char* mask) {
    char other[16] = "stale";
    Tell(std::string("conflict of ") + ifname + " " + start + " " + mask,
         [&] { return DHCPIsRangeConflict(ifname, start, start, mask, other, sizeof other); });
    Say(other);
  };
  conflict("eth0", "192.168.1.10", "255.255.255.0");
  conflict("eth0", "192.0.0.1", "255.0.0.0");
  conflict("eth0", "192.169.0.1", "255.255.0.0");
  conflict("eth1", "192.168.1.10", "255.255.255.0");
  WriteIfcfg("eth1", "SLAVE=yes\n");
  Say("eth1 is a slave");
  conflict("eth0", "192.168.1.10", "255.255.255.0");
  WriteIfcfg("eth1", "DEVICE=eth1\n");
  range("dhcpd-eth1-subnet1.conf", "192.168.251.1", "255.255.255.0");
  Say("a range that ends before it begins");
  conflict("eth0", "10.0.0.1", "255.0.0.0");
  TELL(DHCPGetInterfaceRanges("eth1", &ranges));
  EXPECT_EQ(nullptr, ranges);
  TELL(DHCPInterfaceSetEnabled("eth1", 0, 0));
  conflict("eth0", "192.168.1.10", "255.255.255.0");
  RemoveFile(IfcfgPath("eth1"));
  TELL(DHCPInterfaceSetEnabled("eth1", 0, 1));
  conflict("eth0", "192.168.1.10", "255.255.255.0");
}

TEST(DhcpSwitches, AreExactAndListedByPlainName) {
  List list({"former"});
  EXPECT_EQ(0, DHCPInterfaceListGet(list.Out(), 1));
  for (const char* name : {"eth0", "eth0.10", "eth1-subnet0", "pxe", "eth2-", "-eth0", "eth3.", ""})
    Write(std::string("dhcpd-") + name + ".info", "enable=\"Yes\"\n");
  EXPECT_EQ(2, DHCPInterfaceListGet(list.Out(), 0));
  EXPECT_EQ((Lines{"eth0", "pxe"}), list.Texts());
  TELL(DHCPInterfaceListGet(list.Out(), 2));
  TELL(DHCPInterfaceIsEnabled("eth0", 0));
  TELL(DHCPInterfaceSetEnabled("eth0", 1, 1));
  TELL(DHCPInterfaceIsEnabled("eth0", 1));
  TELL(DHCPInterfaceIsEnabled("eth7", 1));
  for (const std::string text : {"yes", "Yes", "yes "}) {
    Write("dhcpd.info", "enable=\"" + text + "\"\n");
    Tell(text, DHCPIsEnabled);
  }
  for (const int status : {0, 1, 2}) {
    RecordTool(kScript, status);
    TELL(DHCPServerStart());
    TELL(DHCPServerRestart());
    TELL(KOPANetDHCPServerRestart());
  }
}

TEST(DhcpChanges, FilesFollowTheInterfaceWithTheNamesInThem) {
  TELL(DHCPDConfChangeInterface("eth8", "eth9"));
  for (const char* name : {"dhcpd-eth0.info", "dhcpd6-eth0.info", "dhcpd-eth0-subnet0.info",
                           "dhcpd-eth0-static.conf", "wpad-eth0.info", "dhcpd-eth01.info"})
    Write(name, "eth0\n");
  Write("dhcpd-eth0-subnet0.conf", "interface=eth0\ndhcp-range=set:eth00,192.168.60.50\n");
  Write("wpad-eth0.conf", "dhcp-option=tag:eth00,252,x\n");
  TELL(DHCPDConfChangeInterface("eth0", "eth1"));
  RecordTool("/bin/sed", 1);
  TELL(DHCPDConfChangeInterface("eth1", "eth2"));
  TELL(DHCPDConfChangeInterface("eth1/e", "eth2"));
}

TEST(DhcpChanges, ABondTakesTheServiceAndGivesItBack) {
  RecordTool(kScript, 2);
  Write("dhcpd-eth0.info", "enable=\"yes\"\n");
  Write("dhcpd6-eth0.info", "enable=\"yes\"\n");
  Write("dhcpd-eth1.info", "enable=\"no\"\n");
  Write("dhcpd-bond0.info", "enable=\"no\"\nbonding_backup_enable=\"yes\"\n");
  const List slaves({"eth0", "eth1"});
  for (int join = 0; join < 2; ++join)
    TELL(DHCPDLinkAggrSet(1, "bond0", slaves));
  TELL(DHCPDLinkAggrSet(0, "bond0", slaves));
  Write("dhcpd-eth0.info", "other=\"x\"\n");
  TELL(DHCPDLinkAggrSet(1, "bond0", List({"eth0"})));
}

TEST(DhcpExtras, VendorOptionsAndNetworkBoot) {
  Write("dhcpd-vendor.conf",
        "# note\ndhcp-option=vendor:Examples,1,x\ndhcp-option=vendor:Example,12,twelve\n");
  char value[8] = "";
  EXPECT_EQ(1, DHCPVendorGetVendorOpt("Example", 1, value, sizeof value));
  EXPECT_STREQ("twelve", value);
  TELL(DHCPVendorSetVendorOpt("Example", 1, "10.0.0.0/8,1.1.1.1"));
  List vendors;
  ASSERT_EQ(0, DHCPVendorEnum(vendors.Out()));
  EXPECT_EQ((Lines{"Examples", "Example"}), vendors.Texts());
  PKOPACSZHASH options = KOPACSzHashAlloc(4);
  KOPACSzHashSetValue(&options, "7", "seven");
  TELL(DHCPVendorSetVendor("Example", options));
  KOPACSzHashFree(options);
  for (const auto& [text, valid] :
       {std::pair{"0", 0}, {"1", 1}, {"254", 1}, {"255", 0}, {"12a", 0}, {"", 0}})
    EXPECT_EQ(valid, DHCPVendorCheckOptNum(text)) << text;
  DHCP_PXE_CONF pxe{};
  pxe.enable = pxe.is_remote_tftp = 1;
  Put(pxe.remote_bootloader, "boot.0");
  Say("no server");
  TELL(DHCPPXEConfSet(&pxe));
  Put(pxe.remote_tftp_server_ip, "10.0.0.1");
  TELL(DHCPPXEConfSet(&pxe));
  pxe.is_remote_tftp = 0;
  Put(pxe.local_bootloader, "local.0");
  TELL(DHCPPXEConfSet(&pxe));
}

// Of each field that is a text this is so: the sweeps try all of them.
TEST(DhcpRefusals, ATextWithANewlineWritesNothing) {
  DHCP_SUBNET_CONF conf = Subnet();
  Put(conf.domain, "a\nb");
  TELL(DHCPTagConfSet("eth0", 0, 0, &conf));
  TELL(ZARNNetSetDhcpServerConfigFiles(&conf, 1));
  DHCP_PXE_CONF pxe{};
  pxe.enable = 1;
  Put(pxe.local_bootloader, "a\nb");
  TELL(DHCPPXEConfSet(&pxe));
}
