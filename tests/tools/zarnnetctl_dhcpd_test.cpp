// zarnnetctl dhcpd: subnets in and out, switches, classes, and what is refused.
#include <gtest/gtest.h>

#include "ctl.h"

using namespace test;
using nlohmann::json;

namespace {

const char kFragment[] = "/etc/dhcpd/dhcpd-eth0-subnet0.conf";
const char kSet[] =
    "dhcpd subnet set eth0 0 --start 10.0.0.50 --end 10.0.0.60 --netmask 255.0.0.0 --router "
    "10.0.0.1 --dns 10.0.0.1 10.0.0.2 --domain lan --option mtu=1400 "
    "--option classless-static-route=11.0.0.0/8,10.0.0.9";

}  // namespace

TEST(DhcpdSubnet, GoesInAndOutAsOptionsAndAsJson) {
  ExpectDone(kSet);
  const std::string text = ReadFile(kFragment);
  EXPECT_EQ(
      "interface=eth0\ndhcp-range=set:eth00,10.0.0.50,10.0.0.60,255.0.0.0,3600\n"
      "dhcp-option=tag:eth00,option:router,10.0.0.1\n"
      "dhcp-option=tag:eth00,option:domain-search,lan\n"
      "dhcp-option=tag:eth00,option:domain-name,lan\n"
      "dhcp-option=tag:eth00,option:dns-server,10.0.0.1,10.0.0.2\n"
      "dhcp-option=tag:eth00,option:mtu,1400\n"
      "dhcp-option=tag:eth00,option:classless-static-route,11.0.0.0/8,10.0.0.9\n",
      text);
  const json shown = Payload("dhcpd subnet show eth0 0", "subnet");
  WriteFile("/tmp/subnet", Ctl("dhcpd subnet show eth0 0 --json").out);
  RemoveFile(kFragment);
  ExpectDone("dhcpd subnet set eth0 0 - </tmp/subnet");
  EXPECT_EQ(text, ReadFile(kFragment));
  ExpectDone("dhcpd subnet set eth0 0 --lease 600 --disable");
  const json changed = Payload("dhcpd subnet show eth0 0", "subnet");
  EXPECT_EQ(json(600), changed["lease"]);
  EXPECT_EQ(shown["options"], changed["options"]);
  EXPECT_EQ((json{{{"number", 0}, {"family", 4}, {"enable", false}}}),
            Payload("dhcpd subnet list eth0", "subnets"));
  ExpectDone("dhcpd subnet set eth0 0 -6 --mode ra-stateless --dns 2001:db8::1");
  EXPECT_EQ("ra-stateless", Payload("dhcpd subnet show eth0 0 -6", "subnet")["mode"]);
}

TEST(DhcpdSubnet, WhatIsWrongIsRefusedAndChangesNothing) {
  ExpectDone(kSet);
  const std::string text = ReadFile(kFragment);
  for (const char* wrong :
       {"--start 10.0.0", "--netmask 255.0.255.0", "--dns nas.lan", "--option speed=1",
        "--domain \"$(printf 'a\\nb')\"", "--router \"10.0.0.1$(printf '\\r')\""}) {
    EXPECT_EQ(1, Ctl(std::string("dhcpd subnet set eth0 0 ") + wrong).status) << wrong;
  }
  WriteFile("/tmp/subnet", R"({"start": "10.0.0.1", "end": "10.0.0.2", "netmask": "255.0.0.0",
                              "domain": "a\ndhcp-script=/tmp/x"})");
  EXPECT_EQ("0x0D00", Error("dhcpd subnet set eth0 0 - </tmp/subnet", 1)["code"]);
  for (const char* document : {"{", "[]", R"({"gateway": "10.0.0.1"})", R"({"lease": "long"})",
                               R"({"interface": "eth1"})"}) {
    WriteFile("/tmp/subnet", document);
    EXPECT_EQ("0x0D00", Error("dhcpd subnet set eth0 0 - </tmp/subnet", 1)["code"]) << document;
  }
  EXPECT_EQ(text, ReadFile(kFragment));
  EXPECT_EQ("0xBC00", Error("dhcpd subnet show eth0 1", 1)["code"]);
}

TEST(Dhcpd, SwitchesClassesAndNetworkBootAreStored) {
  WriteFile("/etc/dhcpd/dhcpd.info", "enable=\"yes\"\n");
  ExpectDone("dhcpd enable eth0");
  ExpectDone("dhcpd enable eth0 -6");
  const json interfaces{{{"name", "eth0"}, {"ipv4", false}, {"ipv6", true}}};
  EXPECT_EQ((json{{"enabled", true}, {"interfaces", interfaces}}),
            Payload("dhcpd disable eth0", "dhcpd"));
  RecordTool("/etc/rc.network", 2);
  EXPECT_EQ(1, Ctl("dhcpd restart").status);
  EXPECT_EQ((Lines{"/etc/rc.network nat-restart-dhcp"}), RecordedCalls());
  const json options{{{"number", 43}, {"value", "1,2"}}, {{"number", 60}, {"value", "x"}}};
  EXPECT_EQ((json{{"name", "Example"}, {"options", options}}),
            Payload("dhcpd vendor set Example 60=x 43=1,2", "vendor"));
  EXPECT_EQ((json{"Example"}), Payload("dhcpd vendor list", "vendors"));
  ExpectDone("dhcpd vendor set Example");
  EXPECT_EQ(json::array(), Payload("dhcpd vendor list", "vendors"));
  EXPECT_EQ(2, Ctl("dhcpd vendor set Example 255=x").status);
  ExpectDone("dhcpd pxe set boot.0 --server 10.0.0.9");
  EXPECT_EQ("dhcp-boot=tag:pxe,boot.0,bootserver,10.0.0.9\ndhcp-vendorclass=set:pxe,PXEClient\n",
            ReadFile("/etc/dhcpd/dhcpd-pxe.conf"));
  EXPECT_EQ(json(false), Payload("dhcpd pxe set --off", "pxe")["enabled"]);
  EXPECT_EQ(40U, Payload("dhcpd option list", "options").size());
  WriteIfcfg("eth1", "");
  WriteFile("/etc/dhcpd/dhcpd-eth1.info", "enable=\"yes\"\n");
  WriteFile("/etc/dhcpd/dhcpd-eth1-subnet0.conf",
            "dhcp-range=set:eth10,10.0.0.50,10.0.0.60,255.0.0.0,3600\n");
  EXPECT_EQ((json{{"conflict", true}, {"interface", "eth1"}}),
            Payload("dhcpd range check eth0 10.9.0.1 10.9.0.2 255.255.0.0", "range"));
}
