// The built-in DHCP server's files: whole fragments and switches, what is read back, what is
// refused before anything is written, and whether the server itself takes what was written.
#include <cstdio>
#include <cstring>
#include <gtest/gtest.h>
#include <memory>
#include <syslog.h>

#include <zarnnetsdk/dhcpd.h>

#include "frame/containers.h"
#include "support/appliance.h"

using namespace test;

namespace {

const std::string kFolder = "/etc/dhcpd/";
const char kScript[] = "/etc/rc.network";
constexpr int kUnfit = 0x0D00;

std::string Read(const std::string& name) {
  return ReadFile(kFolder + name);
}

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

// What stands in the fragment of subnet 0 before the further options.
const std::string kHead =
    "interface=eth0\ndhcp-range=set:eth00,192.168.60.50,192.168.60.60,255.255.255.0,3600\n"
    "dhcp-option=tag:eth00,option:router,192.168.60.1\n"
    "dhcp-option=tag:eth00,option:domain-search,lan.example.of.long.name\n"
    "dhcp-option=tag:eth00,option:domain-name,lan.example.of.long.name\n"
    "dhcp-option=tag:eth00,option:dns-server,192.168.60.1\n";

bool Accepts(Option option) {
  DHCP_SUBNET_CONF conf = Subnet();
  conf.options = &option.record;
  return DHCPTagConfSetConfig("eth0", 0, 0, &conf) == 0;
}

struct Known {
  int number;
  const char* name;
  Lines good;
  Lines bad;
};

const std::vector<Known>& SingleOptions() {
  static const Lines kBits{"0", "1"};
  static const Lines kNoBits{"-1", "2", "", "1 ", "x"};
  static const Lines kTexts{"text"};
  static const Lines kCounts{"0", "4294967295"};
  static const Lines kNoCounts{"", "-1", "1s"};
  static const Lines kAddress{"192.168.1.1"};
  static const Lines kNoAddress{"", "192.168.1", "256.1.1.1", "192.168.1.256"};
  static const std::vector<Known> kAll{
      {13, "boot-file-size", {"0", "65536"}, {"-1", "65537"}},
      {16, "swap-server", kAddress, kNoAddress},
      {17, "root-path", kTexts, {""}},
      {18, "extension-path", kTexts, {""}},
      {19, "ip-forward-enable", kBits, kNoBits},
      {20, "non-local-source-routing", kBits, kNoBits},
      {22, "max-datagram-reassembly", {"576", "65536"}, {"575", "65537"}},
      {23, "default-ttl", {"1", "255"}, {"0", "256"}},
      {26, "mtu", {"68", "65536"}, {"67", "65537", "1500 ", ""}},
      {27, "all-subnets-local", kBits, kNoBits},
      {31, "router-discovery", kBits, kNoBits},
      {32, "router-solicitation", kAddress, kNoAddress},
      {34, "trailer-encapsulation", kBits, kNoBits},
      {35, "arp-timeout", kCounts, kNoCounts},
      {36, "ethernet-encap", kBits, kNoBits},
      {37, "tcp-ttl", {"1", "255"}, {"0", "256"}},
      {38, "tcp-keepalive", kCounts, kNoCounts},
      {40, "nis-domain", kTexts, {""}},
      {46, "netbios-nodetype", {"1", "2", "4", "8"}, {"0", "3", "16", ""}},
      {47, "netbios-scope", kTexts, {""}},
      {58, "T1", kCounts, kNoCounts},
      {59, "T2", kCounts, kNoCounts},
      {64, "nis+-domain", kTexts, {""}}};
  return kAll;
}

const std::vector<Known>& ListOptions() {
  static const Lines kGood{"192.168.1.1", "10.0.0.1"};
  static const Lines kBad{"192.168.1.1", "300.0.0.1"};
  static const std::vector<Known> kAll = [] {
    std::vector<Known> all{
        {21, "policy-filter", {"10.0.0.0", "255.0.0.0"}, {"10.0.0.0", "255.0.255.0"}},
        {121, "classless-static-route", {"10.0.0.0/8", "10.1.1.1"}, {"10.0.0.0/33", "10.1.1.1"}}};
    const std::vector<std::pair<int, const char*>> servers{
        {7, "log-server"},   {9, "lpr-server"},      {41, "nis-server"},   {42, "ntp-server"},
        {44, "netbios-ns"},  {45, "netbios-dd"},     {48, "x-windows-fs"}, {49, "x-windows-dm"},
        {65, "nis+-server"}, {68, "mobile-ip-home"}, {69, "smtp-server"},  {70, "pop3-server"},
        {71, "nntp-server"}, {74, "irc-server"},     {120, "sip-server"}};
    for (const auto& [number, name] : servers)
      all.push_back({number, name, kGood, kBad});
    return all;
  }();
  return kAll;
}

}  // namespace

TEST(DhcpTagged, FragmentAndSwitchAreWrittenAndReadBackCut) {
  DHCP_SUBNET_CONF conf = Subnet();
  ASSERT_EQ(1, ZARNNetSetDhcpServerConfigFiles(&conf, 1)) << LogText();
  const std::string text =
      "interface=eth0\ndhcp-range=set:office,192.168.60.50,192.168.60.60,255.255.255.0,3600\n"
      "dhcp-option=tag:office,option:router,192.168.60.1\n"
      "dhcp-option=tag:office,option:domain-search,lan.example.of.long.name\n"
      "dhcp-option=tag:office,option:dns-server,192.168.60.1\n";
  EXPECT_EQ(text, Read("dhcpd-eth0-office.conf"));
  EXPECT_EQ("enable=\"yes\"\n", Read("dhcpd-eth0-office.info"));
  DHCP_SUBNET_CONF read{};
  ASSERT_EQ(1, ZARNNetGetDhcpServerConf("office", "eth0", &read));
  EXPECT_STREQ("lan.example.of.long", read.domain);
  EXPECT_STREQ("192.168.60.60", read.end);
  EXPECT_STREQ("office", read.tag);
  EXPECT_EQ(1, read.enable);
  Put(conf.router, "changed");
  ASSERT_EQ(1, ZARNNetSetDhcpServerConfigFiles(&conf, 0));
  EXPECT_EQ(text, Read("dhcpd-eth0-office.conf"));
  EXPECT_EQ("enable=\"no\"\n", Read("dhcpd-eth0-office.info"));
  Write("dhcpd-eth0-office.conf",
        "interface=eth0\ndhcp-range=set:a,1,2,3,4\nx,option:dns-server,a,b,c\nx,option:router,r\n");
  ASSERT_EQ(1, ZARNNetGetDhcpServerConf("office", "eth0", &read));
  EXPECT_STREQ("", read.dns1);
  EXPECT_STREQ("", read.domain);
  EXPECT_EQ(4, read.lease);
  Write("dhcpd-eth0-office.conf", "interface=eth0\ndhcp-range=a,1\nx,option:dns-server,a\n");
  EXPECT_EQ(0, ZARNNetGetDhcpServerConf("office", "eth0", &read));
  EXPECT_EQ(1, LogCount(LOG_ERR, "net_get_dhcp_server_conf", "Failed to get key dhcp-option"));
}

TEST(DhcpSubnet, AnIpv4SubnetIsWrittenWithItsOptionsAndReadBack) {
  DHCP_SUBNET_CONF conf = Subnet();
  Option routes(121, "classless-static-route", "", {"10.0.0.0/8", "192.168.60.9"});
  Option mtu(26, "mtu", "1500");
  Option wrong(26, "mtu", "67");
  conf.options = &routes.record;
  routes.record.next = &mtu.record;
  ASSERT_EQ(0, DHCPTagConfSet("eth0", 0, 0, &conf)) << LogText();
  const std::string options =
      "dhcp-option=tag:eth00,option:classless-static-route,10.0.0.0/8,192.168.60.9\n"
      "dhcp-option=tag:eth00,option:mtu,1500\n";
  EXPECT_EQ(kHead + options, Read("dhcpd-eth0-subnet0.conf"));
  EXPECT_EQ("enable=\"yes\"\n", Read("dhcpd-eth0-subnet0.info"));
  Write("dhcpd-eth0-subnet0.conf",
        kHead + options + "dhcp-option=tag:eth00\ndhcp-option=tag:eth00,,x\n" +
            "dhcp-option=tag:eth00,option:tftp,x\ndhcp-option=tag:eth00,option:ntp-server,1.2.3.4,"
            "\n" +
            "dhcp-option=tag:eth00,option:mtu,9,1\ndhcp-option=tag:eth00,option:T1,7,8");
  DHCP_SUBNET_CONF read{};
  ASSERT_EQ(1, DHCPTagConfGet("eth0", 0, 0, &read)) << LogText();
  EXPECT_STREQ("lan.example.of.long.name", read.domain);
  EXPECT_EQ(3600, read.lease);
  ASSERT_TRUE(read.options != nullptr && read.options->next != nullptr);
  EXPECT_EQ((Lines{"10.0.0.0/8", "192.168.60.9"}), Items(read.options->values));
  EXPECT_STREQ("1500", read.options->next->value);
  ASSERT_NE(nullptr, read.options->next->next);
  EXPECT_STREQ("7", read.options->next->next->value);
  EXPECT_EQ(nullptr, read.options->next->next->next);
  DHCPOptionFree(read.options);
  const std::string format = "Wrong user-defined dhcp option format [dhcp-option=tag:eth00";
  EXPECT_EQ(1, LogCount(LOG_WARNING, "dhcp_conf", format + "]")) << LogText();
  EXPECT_EQ(1, LogCount(LOG_WARNING, "dhcp_conf", format + ",option:mtu,9,1]"));
  EXPECT_EQ(1, LogCount(LOG_DEBUG, "dhcp_conf", "Unsupported dhcp option name [tftp]"));
  mtu.record.next = &wrong.record;
  EXPECT_EQ(-1, DHCPTagConfSetConfig("eth0", 0, 0, &conf));
  EXPECT_EQ(kHead + options, Read("dhcpd-eth0-subnet0.conf"));
  DHCP_SUBNET_CONF bare = Subnet();
  Put(bare.dns1, "");
  ASSERT_EQ(0, DHCPTagConfSetConfig("eth0", 1, 0, &bare));
  ASSERT_EQ(1, DHCPTagConfGet("eth0", 1, 0, &read));
  EXPECT_STREQ("", read.dns1);
  EXPECT_EQ(0, DHCPTagConfGet("eth0", 2, 0, &read));
}

TEST(DhcpSubnet, AnIpv6SubnetHasThreeModesAndKeepsItsFragmentWhenOff) {
  DHCP_SUBNET_CONF conf{};
  conf.lease = 600;
  Put(conf.v6mode, "ra-stateless");
  Put(conf.dns1, "2001:db8::1");
  Put(conf.dns_more, "[2001:db8::3],");
  ASSERT_EQ(0, DHCPTagConfSet("eth0", 0, 1, &conf)) << LogText();
  const std::string stateless =
      "interface=eth0\ndhcp-range=set:eth0v60,::,constructor:eth0,ra-stateless,64,600\n"
      "dhcp-option=tag:eth0v60,option6:dns-server,[2001:db8::1],[2001:db8::3]\n";
  EXPECT_EQ(stateless, Read("dhcpd6-eth0-subnet0.conf"));
  Put(conf.v6mode, "off");
  ASSERT_EQ(0, DHCPTagConfSet("eth0", 0, 1, &conf));
  EXPECT_EQ(stateless, Read("dhcpd6-eth0-subnet0.conf"));
  DHCP_SUBNET_CONF read{};
  ASSERT_EQ(1, DHCPTagConfGet("eth0", 0, 1, &read));
  EXPECT_STREQ("ra-stateless", read.v6mode);
  EXPECT_STREQ("2001:db8::1", read.dns1);
  EXPECT_STREQ("2001:db8::3", read.dns2);
  Put(conf.v6mode, "stateful");
  Put(conf.start, "2001:db8::10");
  Put(conf.end, "2001:db8::20");
  ASSERT_EQ(0, DHCPTagConfSetConfig("eth0", 1, 1, &conf));
  EXPECT_EQ(
      "interface=eth0\ndhcp-range=set:eth0v61,2001:db8::10,2001:db8::20,64,600\n"
      "dhcp-option=tag:eth0v61,option6:dns-server,[2001:db8::1],[2001:db8::3]\nenable-ra\n",
      Read("dhcpd6-eth0-subnet1.conf"));
  ASSERT_EQ(1, DHCPTagConfGet("eth0", 1, 1, &read));
  EXPECT_STREQ("2001:db8::20", read.end);
  DHCP_SUBNET_CONF bare{};
  Put(bare.v6mode, "ra-only");
  ASSERT_EQ(0, DHCPTagConfSetConfig("eth0", 2, 1, &bare));
  EXPECT_EQ("interface=eth0\ndhcp-range=set:eth0v62,::,constructor:eth0,ra-only,64,0\n",
            Read("dhcpd6-eth0-subnet2.conf"));
  EXPECT_EQ(-1, DHCPTagConfGet("eth0", 2, 1, &read));
  Put(conf.v6mode, "statefu");
  EXPECT_EQ(-1, DHCPTagConfSetConfig("eth0", 3, 1, &conf));
  EXPECT_FALSE(FileExists(kFolder + "dhcpd6-eth0-subnet3.conf"));
}

TEST(DhcpOptions, BothBordersAreTakenAndWhatLiesOutsideIsNot) {
  for (const Known& known : SingleOptions()) {
    EXPECT_EQ(0, DHCPOptionIsListValue(known.number)) << known.name;
    for (const std::string& value : known.good)
      EXPECT_TRUE(Accepts({known.number, known.name, value})) << known.name << value;
    for (const std::string& value : known.bad)
      EXPECT_FALSE(Accepts({known.number, known.name, value})) << known.name << value;
  }
  for (const Known& known : ListOptions()) {
    EXPECT_EQ(1, DHCPOptionIsListValue(known.number)) << known.name;
    EXPECT_TRUE(Accepts({known.number, known.name, "", known.good})) << known.name;
    EXPECT_FALSE(Accepts({known.number, known.name, "", known.bad})) << known.name;
    EXPECT_FALSE(Accepts({known.number, known.name, "1.2.3.4"})) << known.name;
  }
  for (const int number : {0, 255, 3, 27})
    EXPECT_FALSE(Accepts({number, "mtu", "1500"})) << number;
  EXPECT_FALSE(Accepts({121, "classless-static-route", "", {"10.0.0.0", "10.1.1.1"}}));
  EXPECT_FALSE(Accepts({121, "classless-static-route", "", {"10.0.0.0/8", "10.1.1"}}));
  for (const std::string what :
       {"0-th value [10.0.0.0/33], wrong netmask number", "0-th value [10.0.0.0]",
        "1-th value [10.1.1], wrong IP", "1-th value [255.0.255.0], not mask"})
    EXPECT_EQ(1, LogCount(LOG_ERR, "dhcp_conf", "wrong list " + what)) << what;
}

TEST(DhcpOptions, TheServerTakesAllOfThem) {
  DHCP_SUBNET_CONF conf = Subnet();
  std::vector<std::unique_ptr<Option>> options;
  for (const Known& known : SingleOptions())
    options.push_back(std::make_unique<Option>(known.number, known.name, known.good.back()));
  for (const Known& known : ListOptions())
    options.push_back(std::make_unique<Option>(known.number, known.name, "", known.good));
  ASSERT_EQ(40U, options.size());
  for (const auto& option : options) {
    option->record.next = conf.options;
    conf.options = &option->record;
  }
  Shell("ip address add 192.168.60.1/24 dev eth0");
  BringUp("eth0");
  Write("dhcpd.info", "enable=\"yes\"\n");
  ASSERT_EQ(0, DHCPInterfaceSetEnabled("eth0", 0, 1));
  ASSERT_EQ(0, DHCPTagConfSet("eth0", 0, 0, &conf)) << LogText();
  EXPECT_EQ(0, KOPANetDHCPServerRestart()) << Shell("cat /var/log/appliance/dhcp-server.log");
  const std::string settings = ReadFile("/run/dhcpd/dnsmasq.conf");
  for (const auto& option : options)
    EXPECT_NE(std::string::npos, settings.find(std::string("option:") + option->record.name + ","));
  EXPECT_NE(std::string::npos,
            Shell("dnsmasq --test -C /run/dhcpd/dnsmasq.conf 2>&1").find("syntax check OK"));
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
  char other[16] = "stale";
  const auto conflict = [&other](const char* ifname, const char* start, const char* mask) {
    return DHCPIsRangeConflict(ifname, start, start, mask, other, sizeof other);
  };
  EXPECT_EQ(1, conflict("eth0", "192.168.1.10", "255.255.255.0"));
  EXPECT_STREQ("eth1", other);
  EXPECT_EQ(1, conflict("eth0", "192.0.0.1", "255.0.0.0"));
  EXPECT_EQ(0, conflict("eth0", "192.169.0.1", "255.255.0.0"));
  EXPECT_STREQ("", other);
  EXPECT_EQ(0, conflict("eth1", "192.168.1.10", "255.255.255.0"));
  WriteIfcfg("eth1", "SLAVE=yes\n");
  EXPECT_EQ(0, conflict("eth0", "192.168.1.10", "255.255.255.0"));
  WriteIfcfg("eth1", "DEVICE=eth1\n");
  range("dhcpd-eth1-subnet1.conf", "192.168.251.1", "255.255.255.0");
  EXPECT_EQ(-1, conflict("eth0", "10.0.0.1", "255.0.0.0"));
  EXPECT_EQ(-1, DHCPGetInterfaceRanges("eth1", &ranges));
  EXPECT_EQ(nullptr, ranges);
  ASSERT_EQ(0, DHCPInterfaceSetEnabled("eth1", 0, 0));
  EXPECT_EQ(0, conflict("eth0", "192.168.1.10", "255.255.255.0"));
  RemoveFile(IfcfgPath("eth1"));
  ASSERT_EQ(0, DHCPInterfaceSetEnabled("eth1", 0, 1));
  EXPECT_EQ(0, conflict("eth0", "192.168.1.10", "255.255.255.0"));
}

TEST(DhcpSwitches, AreExactAndListedByPlainName) {
  List list({"former"});
  EXPECT_EQ(0, DHCPInterfaceListGet(list.Out(), 1));
  EXPECT_EQ(Lines{"former"}, Items(list));
  for (const char* name : {"eth0", "eth0.10", "eth1-subnet0", "pxe"})
    Write(std::string("dhcpd-") + name + ".info", "enable=\"Yes\"\n");
  EXPECT_EQ(2, DHCPInterfaceListGet(list.Out(), 0));
  EXPECT_EQ((Lines{"eth0", "pxe"}), Items(list));
  EXPECT_EQ(-1, DHCPInterfaceListGet(list.Out(), 2));
  EXPECT_EQ(0, DHCPInterfaceIsEnabled("eth0", 0));
  ASSERT_EQ(0, DHCPInterfaceSetEnabled("eth0", 1, 1));
  EXPECT_EQ("enable=\"yes\"\n", Read("dhcpd6-eth0.info"));
  EXPECT_EQ(1, DHCPInterfaceIsEnabled("eth0", 1));
  EXPECT_EQ(0, DHCPInterfaceIsEnabled("eth7", 1));
  EXPECT_EQ(-1, DHCPInterfaceIsEnabled("", 0));
  for (const auto& [text, expected] : {std::pair{"yes", 1}, {"Yes", 0}, {"yes ", 0}}) {
    Write("dhcpd.info", std::string("enable=\"") + text + "\"\n");
    EXPECT_EQ(expected, DHCPIsEnabled()) << text;
  }
  for (const int status : {0, 1, 2}) {
    RecordTool(kScript, status);
    EXPECT_EQ(status == 1 ? 1 : 0, DHCPServerStart());
    EXPECT_EQ(status == 1 ? 1 : 0, DHCPServerRestart());
    EXPECT_EQ(status == 0 ? 0 : -1, KOPANetDHCPServerRestart());
  }
  const Lines calls = RecordedCalls();
  ASSERT_EQ(9U, calls.size());
  EXPECT_EQ("/etc/rc.network nat-start-dhcp", calls[0]);
  EXPECT_EQ("/etc/rc.network nat-restart-dhcp", calls[1]);
}

TEST(DhcpChanges, FilesFollowTheInterfaceWithTheNamesInThem) {
  EXPECT_EQ(0, DHCPDConfChangeInterface("eth8", "eth9"));
  for (const char* name : {"dhcpd-eth0.info", "dhcpd6-eth0.info", "dhcpd-eth0-subnet0.info",
                           "dhcpd-eth0-static.conf", "wpad-eth0.info", "dhcpd-eth01.info"})
    Write(name, "eth0\n");
  Write("dhcpd-eth0-subnet0.conf", kHead);
  Write("wpad-eth0.conf", "dhcp-option=tag:eth00,252,x\n");
  ASSERT_EQ(0, DHCPDConfChangeInterface("eth0", "eth1")) << LogText();
  EXPECT_EQ((Lines{"dhcpd-eth01.info", "dhcpd-eth1-static.conf", "dhcpd-eth1-subnet0.conf",
                   "dhcpd-eth1-subnet0.info", "dhcpd-eth1.info", "dhcpd6-eth0.info",
                   "wpad-eth1.conf", "wpad-eth1.info"}),
            FolderEntries("/etc/dhcpd"));
  const std::string moved = Read("dhcpd-eth1-subnet0.conf");
  EXPECT_EQ(0U, moved.find("interface=eth1\ndhcp-range=set:eth10,192.168.60.50,")) << moved;
  EXPECT_EQ(std::string::npos, moved.find("eth0"));
  EXPECT_EQ("dhcp-option=tag:eth10,252,x\n", Read("wpad-eth1.conf"));
  EXPECT_EQ("eth0\n", Read("dhcpd-eth1-static.conf"));
  RecordTool("/bin/sed", 1);
  EXPECT_EQ(-1, DHCPDConfChangeInterface("eth1", "eth2"));
  EXPECT_TRUE(FileExists(kFolder + "dhcpd-eth2.info"));
  EXPECT_TRUE(FileExists(kFolder + "dhcpd-eth1-static.conf"));
  EXPECT_EQ(-1, DHCPDConfChangeInterface("eth1/e", "eth2"));
  EXPECT_EQ(kUnfit, KOPACErrGet());
}

TEST(DhcpChanges, ABondTakesTheServiceAndGivesItBack) {
  RecordTool(kScript, 2);
  Write("dhcpd-eth0.info", "enable=\"yes\"\n");
  Write("dhcpd6-eth0.info", "enable=\"yes\"\n");
  Write("dhcpd-eth1.info", "enable=\"no\"\n");
  Write("dhcpd-bond0.info", "enable=\"no\"\nbonding_backup_enable=\"yes\"\n");
  ASSERT_EQ(0, DHCPDLinkAggrSet(1, "bond0", List({"eth0", "eth1"}))) << LogText();
  EXPECT_EQ("enable=\"no\"\nbonding_backup_enable=\"yes\"\n", Read("dhcpd-eth0.info"));
  EXPECT_EQ("enable=\"no\"\nbonding_backup_enable=\"yes\"\n", Read("dhcpd6-eth0.info"));
  EXPECT_EQ("enable=\"no\"\nbonding_backup_enable=\"no\"\n", Read("dhcpd-eth1.info"));
  EXPECT_EQ("enable=\"yes\"\nbonding_backup_enable=\"yes\"\n", Read("dhcpd-bond0.info"));
  ASSERT_EQ(0, DHCPDLinkAggrSet(0, "bond0", List({"eth0", "eth1"})));
  EXPECT_EQ("enable=\"no\"\nbonding_backup_enable=\"yes\"\n", Read("dhcpd-bond0.info"));
  EXPECT_EQ(1, DHCPInterfaceIsEnabled("eth0", 0));
  EXPECT_EQ(0, DHCPInterfaceIsEnabled("eth1", 0));
  EXPECT_EQ(Lines(2, "/etc/rc.network nat-restart-dhcp"), RecordedCalls());
  Write("dhcpd-eth0.info", "other=\"x\"\n");
  EXPECT_EQ(-1, DHCPDLinkAggrSet(1, "bond0", List({"eth0"})));
}

TEST(DhcpExtras, VendorOptionsAndNetworkBoot) {
  const std::string kept = "# note\ndhcp-option=vendor:Examples,1,x\n";
  Write("dhcpd-vendor.conf", kept + "dhcp-option=vendor:Example,12,twelve\n");
  char value[8] = "";
  EXPECT_EQ(1, DHCPVendorGetVendorOpt("Example", 1, value, sizeof value));
  EXPECT_STREQ("twelve", value);
  ASSERT_EQ(0, DHCPVendorSetVendorOpt("Example", 1, "10.0.0.0/8,1.1.1.1")) << LogText();
  EXPECT_EQ(kept +
                "dhcp-option=vendor:Example,12,twelve\n"
                "dhcp-option=vendor:Example,1,10.0.0.0/8,1.1.1.1\n",
            Read("dhcpd-vendor.conf"));
  List vendors;
  ASSERT_EQ(0, DHCPVendorEnum(vendors.Out()));
  EXPECT_EQ((Lines{"Examples", "Example"}), Items(vendors));
  frame::StringHash options(4);
  KOPACSzHashSetValue(options.Out(), "7", "seven");
  ASSERT_EQ(0, DHCPVendorSetVendor("Example", *options.Out()));
  EXPECT_EQ(kept + "dhcp-option=vendor:Example,7,seven\n", Read("dhcpd-vendor.conf"));
  for (const auto& [text, valid] :
       {std::pair{"0", 0}, {"1", 1}, {"254", 1}, {"255", 0}, {"12a", 0}, {"", 0}})
    EXPECT_EQ(valid, DHCPVendorCheckOptNum(text)) << text;
  DHCP_PXE_CONF pxe{};
  pxe.enable = pxe.is_remote_tftp = 1;
  Put(pxe.remote_bootloader, "boot.0");
  EXPECT_EQ(-1, DHCPPXEConfSet(&pxe));
  EXPECT_EQ("enable=\"yes\"\n", Read("dhcpd-pxe-setting"));
  EXPECT_FALSE(FileExists(kFolder + "dhcpd-pxe.conf"));
  Put(pxe.remote_tftp_server_ip, "10.0.0.1");
  ASSERT_EQ(0, DHCPPXEConfSet(&pxe));
  EXPECT_EQ("dhcp-boot=tag:pxe,boot.0,bootserver,10.0.0.1\ndhcp-vendorclass=set:pxe,PXEClient\n",
            Read("dhcpd-pxe.conf"));
  pxe.is_remote_tftp = 0;
  Put(pxe.local_bootloader, "local.0");
  ASSERT_EQ(0, DHCPPXEConfSet(&pxe));
  EXPECT_EQ("dhcp-boot=tag:pxe,local.0\ndhcp-vendorclass=set:pxe,PXEClient\n",
            Read("dhcpd-pxe.conf"));
  DHCP_PXE_CONF read{};
  ASSERT_EQ(0, DHCPPXEConfGet(&read));
  EXPECT_EQ(0, std::memcmp(&pxe, &read, sizeof read));
}

TEST(DhcpRefusals, ATextWithANewlineWritesNothing) {
  const auto refused = [](int expected, int result, const char* what) {
    EXPECT_EQ(expected, result) << what;
    EXPECT_EQ(kUnfit, KOPACErrGet()) << what;
    EXPECT_EQ(Lines{}, FolderEntries("/etc/dhcpd")) << what;
    KOPACErrSetEx(0, "", 0);
  };
  using Field = void (*)(DHCP_SUBNET_CONF&);
  const std::vector<std::pair<const char*, Field>> fields{
      {"start", [](auto& c) { Put(c.start, "a\nb"); }},
      {"end", [](auto& c) { Put(c.end, "a\nb"); }},
      {"interface", [](auto& c) { Put(c.interface, "a\nb"); }},
      {"domain", [](auto& c) { Put(c.domain, "a\nb"); }},
      {"dns1", [](auto& c) { Put(c.dns1, "a\nb"); }},
      {"dns2", [](auto& c) { Put(c.dns2, "a\nb"); }},
      {"dns_more", [](auto& c) { Put(c.dns_more, "a\nb"); }},
      {"netmask", [](auto& c) { Put(c.netmask, "a\nb"); }},
      {"router", [](auto& c) { Put(c.router, "a\nb"); }},
      {"tag", [](auto& c) { Put(c.tag, "a\nb"); }}};
  for (const auto& [name, spoil] : fields) {
    DHCP_SUBNET_CONF conf = Subnet();
    spoil(conf);
    refused(-1, DHCPTagConfSet("eth0", 0, 0, &conf), name);
    refused(0, ZARNNetSetDhcpServerConfigFiles(&conf, 1), name);
  }
  for (const bool listed : {false, true}) {
    DHCP_SUBNET_CONF conf = Subnet();
    Option option(17, "root-path", listed ? "" : "a\nb", listed ? Lines{"a\nb"} : Lines{});
    conf.options = &option.record;
    refused(-1, DHCPTagConfSet("eth0", 0, 0, &conf), "option");
  }
  refused(-1, DHCPTagConfSetEnable("e\nx", 0, 0, 1), "name");
  refused(-1, DHCPVendorSetVendorOpt("a\nb", 1, "x"), "vendor");
  refused(-1, DHCPVendorSetVendorOpt("a", 1, "x\ny"), "value");
  DHCP_PXE_CONF pxe{};
  pxe.enable = 1;
  Put(pxe.local_bootloader, "a\nb");
  refused(-1, DHCPPXEConfSet(&pxe), "pxe");
}

TEST(DhcpRefusals, AFullDiskLeavesTheFormerFiles) {
  MountEmpty("/etc/dhcpd", "64k");
  DHCP_SUBNET_CONF conf = Subnet();
  ASSERT_EQ(0, DHCPTagConfSet("eth0", 0, 0, &conf));
  FillDisk("/etc/dhcpd");
  conf.enable = 0;
  Put(conf.router, "192.168.60.2");
  EXPECT_EQ(-1, DHCPTagConfSet("eth0", 0, 0, &conf));
  EXPECT_EQ(-1, DHCPTagConfSetConfig("eth0", 0, 0, &conf));
  EXPECT_EQ(kHead, Read("dhcpd-eth0-subnet0.conf"));
  EXPECT_EQ("enable=\"yes\"\n", Read("dhcpd-eth0-subnet0.info"));
}
