// The command line as its users meet it: a process with arguments, two outputs, a status, and its
// effects.
#include <algorithm>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include "ctl.h"

using namespace test;
using nlohmann::json;

namespace {

const char kScripts[] = "/etc/sysconfig/network-scripts";

// Without it the kernel takes a second to make sure of each IPv6 address.
void SkipDuplicateDetection(const std::string& ifname) {
  Shell("echo 0 >/proc/sys/net/ipv6/conf/" + ifname + "/dad_transmits");
}

std::string Addresses(const std::string& ifname) {
  return Shell("ip -br address show dev " + ifname);
}

bool IsUp(const std::string& ifname) {
  return Contains(Shell("ip link show " + ifname), ",UP");
}

void GiveMac(const std::string& ifname, const std::string& mac) {
  Shell("ip link set " + ifname + " down; ip link set " + ifname + " address " + mac);
}

Lines Names(const json& list) {
  Lines names;
  for (const json& entry : list)
    names.push_back(entry.at("name"));
  return names;
}

}  // namespace

TEST(IfList, TableAndJsonSayWhatTheKernelHas) {
  GiveMac("eth0", "02:00:00:00:00:10");
  GiveMac("eth1", "02:00:00:00:00:aa");
  BringUp("eth0");
  BringUp("eth1");
  Shell("ip address add 192.168.50.10/20 dev eth0");
  EXPECT_EQ(
      "NAME  LINK  FLAGS                           MAC                ADDRESS\n"
      "eth0  yes   UP,BROADCAST,RUNNING,MULTICAST  02:00:00:00:00:10  192.168.50.10/20\n"
      "eth1  yes   UP,BROADCAST,RUNNING,MULTICAST  02:00:00:00:00:aa  -\n",
      Ctl("if list").out);
  const json list = Payload("if list", "interfaces");
  const json eth0 = {{"name", "eth0"},
                     {"mac", "02:00:00:00:00:10"},
                     {"ip", "192.168.50.10"},
                     {"mask", "255.255.240.0"},
                     {"link", 2},
                     {"flags", 0x1043},
                     {"flag_names", {"UP", "BROADCAST", "RUNNING", "MULTICAST"}}};
  ASSERT_EQ(2U, list.size());
  EXPECT_EQ(eth0, list[0]);
  EXPECT_EQ(json(), list[1].at("ip"));
  EXPECT_EQ(json(), list[1].at("mask"));
}

TEST(IfList, KindsChooseWhatIsListed) {
  Shell("ip link add br0 type bridge; ip link set br0 up; ip link set eth1 master br0 up");
  Shell(
      "ip link set eth2 up; ip link set eth0 down; ip link set eth0 name eth10; ip link set eth10 "
      "up");
  EXPECT_EQ((Lines{"br0", "eth2", "eth10"}), Names(Payload("if list", "interfaces")));
  EXPECT_EQ((Lines{"eth1", "eth2", "eth10"}), Names(Payload("if list --kind eth", "interfaces")));
  EXPECT_EQ("0x0D00", Error("if list --kind 0", kFailed).value("code", ""));
  for (const char* kind : {"ethernet", "-1", "1x", "99999999999", "''"}) {
    EXPECT_EQ("usage", Error(std::string("if list --kind ") + kind, kUsage).value("what", ""))
        << kind;
  }
}

TEST(IfShow, TellsTheRoleInABridgeOrABond) {
  Shell("ip link add br0 type bridge; ip link set br0 up; ip link set eth1 master br0 up");
  Shell(
      "ip link add ovs_bond0 type veth peer name far; ip link set ovs_bond0 up; ip link set eth3 "
      "up");
  WriteIfcfg("br0", "TYPE=bridge\nPRIMARY=eth1\nLOCAL_LAN=yes\nBOOTPROTO=static\n");
  WriteIfcfg("eth1", "BRIDGE=br0\nBOOTPROTO=none\n");
  WriteIfcfg("ovs_bond0", "BOOTPROTO=dhcp\nSLAVE_LIST=eth2 eth3\nBOND_MODE=balance-slb\n");
  const json bridge = Payload("if show br0", "interface");
  EXPECT_EQ((json{{"type", "local_bridge"}, {"ref", "eth1"}, {"ports", {"eth1"}}}),
            bridge.at("bridge"));
  EXPECT_EQ(json(true), bridge.at("local_lan"));
  EXPECT_EQ(json(), bridge.at("bond"));
  const json port = Payload("if show eth1", "interface");
  EXPECT_EQ((json{{"type", "port"}, {"ref", "br0"}, {"ports", json::array()}}), port.at("bridge"));
  EXPECT_EQ("none", port.at("config").at("boot_proto"));
  EXPECT_NE(json(), port.at("flags"))
      << "a port of a bridge is in no list but that of the Ethernet ports";
  const json bond = Payload("if show ovs_bond0", "interface");
  EXPECT_EQ((json{{"mode", "balance-slb"}, {"no_partner", false}, {"slaves", {"eth2", "eth3"}}}),
            bond.at("bond"));
  EXPECT_EQ("bond", bond.at("ovs"));
  EXPECT_EQ(json(), bond.at("bridge"));
  const auto role = [](const std::string& ifname) {
    const std::string text = Ctl("if show " + ifname).out;
    const std::size_t at = text.find("\nrole ");
    return at == std::string::npos ? text : text.substr(at + 13, text.find('\n', at + 1) - at - 13);
  };
  EXPECT_EQ("bridge of eth1", role("br0"));
  EXPECT_EQ("port of bridge br0", role("eth1"));
  EXPECT_EQ("bond balance-slb of eth2 eth3, Open vSwitch bond", role("ovs_bond0"));
}

TEST(IfShow, KnowsInterfacesThatNoListHas) {
  GiveMac("eth0", "02:00:00:00:00:0f");
  WriteIfcfg("eth0",
             "ONBOOT=yes\nBOOTPROTO=static\nIPADDR=10.0.0.9\nNETMASK=255.255.255.0\nBLOCK_AHA=yes\n"
             "BLOCK_CNT=1\n");
  const json down = Payload("if show eth0", "interface");
  EXPECT_EQ(json(false), down.at("up"));
  EXPECT_EQ("02:00:00:00:00:0f", down.at("mac"));
  EXPECT_EQ(json(), down.at("flags"));
  EXPECT_EQ(json(), down.at("ip"));
  EXPECT_EQ(json(0), down.at("link"));
  EXPECT_EQ((json{{"boot_proto", "static"},
                  {"on_boot", true},
                  {"ip", "10.0.0.9"},
                  {"mask", "255.255.255.0"}}),
            down.at("config"));
  EXPECT_EQ(json({"aha"}), down.at("block"));
  const json loopback = Payload("if show lo", "interface");
  EXPECT_EQ("127.0.0.1", loopback.at("ip"));
  EXPECT_EQ(json(), loopback.at("config"));
  ExpectFailure("if show eth9", "cannot show eth9: there is no interface 'eth9' (0xBC00)");
  ExpectFailure("if show ../../eth0",
                "cannot show ../../eth0: there is no interface '../../eth0' (0xBC00)");
}

TEST(IpGet, KeepsLiveAndConfiguredApart) {
  WriteIfcfg("eth0", "BOOTPROTO=dhcp\nIPADDR=1.2.3.4\nNETMASK=255.0.0.0\n");
  WriteFile("/etc/dhclient/ipv4/dhcpcd-eth0.info",
            "IPADDR=192.168.50.100\nNETMASK=255.255.255.0\n");
  Shell("ip link set eth0 up; ip address add 10.0.0.1/8 dev eth0");
  Shell("ip -6 address flush dev eth0; ip -6 address add 2001:db8::5/64 dev eth0 nodad");
  const json ip = Payload("ip get eth0", "ip");
  EXPECT_EQ((json{{"ip", "10.0.0.1"}, {"mask", "255.0.0.0"}}), ip.at("live"));
  EXPECT_EQ("dhcp", ip.at("config").at("boot_proto"));
  EXPECT_EQ("192.168.50.100", ip.at("config").at("ip"));
  ASSERT_EQ(1U, ip.at("ipv6").size());
  EXPECT_EQ("2001:db8::5", ip.at("ipv6")[0].at("addr"));
  EXPECT_EQ(json(64), ip.at("ipv6")[0].at("prefix"));
  EXPECT_EQ(
      "live        10.0.0.1/8\nconfigured  dhcp 192.168.50.100/24\nipv6        2001:db8::5/64\n",
      Ctl("ip get eth0").out);
  RemoveFile("/etc/dhclient/ipv4/dhcpcd-eth0.info");
  EXPECT_EQ(json(), Payload("ip get eth0", "ip").at("config").at("ip")) << "no lease yet";
  RemoveFile(IfcfgPath("eth1"));
  const json bare = Payload("ip get eth1", "ip");
  EXPECT_EQ(json(), bare.at("config"));
  EXPECT_EQ((json{{"ip", nullptr}, {"mask", nullptr}}), bare.at("live"));
  EXPECT_FALSE(FileExists(IfcfgPath("eth1")));
}

TEST(IpSet, BothNotationsReachFileAndKernel) {
  WriteIfcfg("eth0", "# port\nBOOTPROTO=dhcp\nMTU=1500\n");
  ExpectDone("ip set eth0 192.168.50.10/20");
  EXPECT_EQ(
      "# port\nBOOTPROTO=static\nMTU=1500\nDEVICE=eth0\nONBOOT=yes\nIPADDR=192.168.50.10\n"
      "NETMASK=255.255.240.0\n",
      ReadIfcfg("eth0"));
  EXPECT_TRUE(Contains(Addresses("eth0"), " 192.168.50.10/20")) << Addresses("eth0");
  const json state = Payload("ip set eth1 10.1.2.3 255.255.255.128", "ip");
  EXPECT_EQ((json{{"ip", "10.1.2.3"}, {"mask", "255.255.255.128"}}), state.at("live"));
  EXPECT_EQ("static", state.at("config").at("boot_proto"));
  EXPECT_TRUE(Contains(Addresses("eth1"), " 10.1.2.3/25")) << Addresses("eth1");
}

TEST(IpSet, WhatIsWrongIsRefusedBeforeAnythingChanges) {
  WriteIfcfg("eth0", "BOOTPROTO=dhcp\n");
  const Lines files = FolderEntries(kScripts);
  const struct {
    const char* words;
    int status;
    const char* reason;
  } cases[] = {
      {"eth0 300.1.1.1/24", kFailed, "'300.1.1.1' is not the IPv4 address of a host"},
      {"eth0 127.0.0.1/8", kFailed, "'127.0.0.1' is not the IPv4 address of a host"},
      {"eth0 010.0.0.1/8", kFailed, "'010.0.0.1' is not the IPv4 address of a host"},
      {"eth0 '10.0.0.1\nMASTER=x/8'", kFailed,
       "'10.0.0.1\nMASTER=x' is not the IPv4 address of a host"},
      {"eth0 /8", kFailed, "'' is not the IPv4 address of a host"},
      {"eth0 10.0.0.1/33", kFailed, "the prefix of 10.0.0.1/33 must be 1 to 32"},
      {"eth0 10.0.0.1/0", kFailed, "the prefix of 10.0.0.1/0 must be 1 to 32"},
      {"eth0 10.0.0.1 255.0.255.0", kFailed, "'255.0.255.0' is not a netmask"},
      {"eth0 10.0.0.1 0xff000000", kFailed, "'0xff000000' is not a netmask"},
      {"eth0 10.0.0.1", kUsage, "ADDRESS: give ADDRESS/PREFIX or ADDRESS NETMASK"},
      {"eth0 10.0.0.1/x", kUsage, "ADDRESS: the prefix must be a number"},
      {"eth0 10.0.0.1/", kUsage, "ADDRESS: the prefix must be a number"},
      {"eth0 10.0.0.1/8 255.0.0.0", kUsage, "NETMASK: give a prefix or a netmask, not both"},
  };
  for (const auto& c : cases) {
    const json error = Error(std::string("ip set ") + c.words, c.status);
    EXPECT_EQ(c.reason, error.value("reason", "")) << c.words;
    EXPECT_EQ(c.status == kFailed ? json("0x1000") : json(), error.value("code", json("?")))
        << c.words;
  }
  ExpectFailure("ip set nosuch 10.0.0.1/8",
                "cannot set the address of nosuch: there is no interface 'nosuch' (0xBC00)");
  Shell("ip link property add dev eth0 altname port-one");
  for (const char* otherName : {"eth0:1", "port-one"}) {
    const std::string words = std::string("ip set ") + otherName + " 10.0.0.1/8";
    EXPECT_EQ("0xBC00", Error(words, kFailed).value("code", "")) << words;
  }
  EXPECT_EQ("BOOTPROTO=dhcp\n", ReadIfcfg("eth0"));
  EXPECT_EQ(files, FolderEntries(kScripts)) << "a name that does not exist must not get a file";
  EXPECT_FALSE(Contains(Addresses("eth0"), "10.0.0.1"));
}

TEST(IpSet, AChangeThatCannotBeMadeIsToldAndUndone) {
  WriteIfcfg("eth0", "BOOTPROTO=dhcp\n");
  RecordTool("/sbin/ifconfig", 1);
  const Outcome outcome = Ctl("ip set eth0 10.0.0.1/8");
  EXPECT_EQ(kFailed, outcome.status);
  EXPECT_TRUE(outcome.err.starts_with("zarnnetctl: cannot set the address of eth0: "))
      << outcome.err;
  EXPECT_EQ((Lines{"/sbin/ifconfig eth0 0.0.0.0"}), RecordedCalls());
  EXPECT_EQ("BOOTPROTO=dhcp\n", ReadIfcfg("eth0"));
  // Another user id is what the program goes by; a user namespace gives it one, whoever runs the
  // test.
  EXPECT_EQ("zarnnetctl: cannot set the address of eth0: this needs root (0x8100)\n",
            Shell("unshare --user " ZARNNETCTL " ip set eth0 10.0.0.1/8"));
}

TEST(NetworkLock, IsWaitedForAndNamed) {
  WriteIfcfg("eth0", "BOOTPROTO=static\nIPADDR=10.9.9.9\nNETMASK=255.0.0.0\n");
  Shell("ip link set eth0 up; ip address add 10.9.9.9/8 dev eth0");
  const std::string file = ReadIfcfg("eth0");
  ASSERT_EQ(0, KOPACFileLock(0x106, 1));
  Shell(ZARNNETCTL " ip flush eth0 -4 2>/tmp/flush.err & " ZARNNETCTL
                   " ip set eth0 10.0.0.1/8 2>/tmp/set.err; wait");
  const std::string held = ": another process holds the network configuration (0x0400)\n";
  EXPECT_EQ("zarnnetctl: cannot set the address of eth0" + held, ReadFile("/tmp/set.err"));
  EXPECT_EQ("zarnnetctl: cannot flush the addresses of eth0" + held, ReadFile("/tmp/flush.err"));
  EXPECT_EQ(file, ReadIfcfg("eth0"));
  EXPECT_TRUE(Contains(Addresses("eth0"), " 10.9.9.9/8"));
  KOPACFileUnlock(0x100);
  ExpectDone("ip set eth0 10.0.0.1/8");
}

TEST(IpFlush, DropsTheFamiliesAskedFor) {
  SkipDuplicateDetection("eth0");
  const auto prepare = [] {
    Shell("ip link set eth0 up; ip address add 10.0.0.1/8 dev eth0");
    Shell("ip -6 address add 2001:db8::5/64 dev eth0 nodad");
  };
  const std::string file = ReadIfcfg("eth0");
  prepare();
  ExpectDone("ip flush eth0 -4");
  EXPECT_FALSE(Contains(Addresses("eth0"), "10.0.0.1"));
  EXPECT_TRUE(Contains(Addresses("eth0"), "2001:db8::5"));
  prepare();
  ExpectDone("ip flush -6 eth0");
  EXPECT_TRUE(Contains(Addresses("eth0"), "10.0.0.1"));
  EXPECT_FALSE(Contains(Addresses("eth0"), "2001:db8::5"));
  prepare();
  EXPECT_EQ(json(), Payload("ip flush eth0", "ip").at("live").at("ip"));
  EXPECT_FALSE(Contains(Addresses("eth0"), "2001:db8::5"));
  Shell("ip link set eth0 down; ip address add 10.0.0.1/8 dev eth0");
  ExpectDone("ip flush eth0");
  EXPECT_FALSE(Contains(Addresses("eth0"), "10.0.0.1"));
  EXPECT_EQ(file, ReadIfcfg("eth0"));
}

TEST(IpFlush, AnAddressThatStaysIsAFailure) {
  SkipDuplicateDetection("eth0");
  Shell("ip link set eth0 up; ip -6 address add 2001:db8::5/64 dev eth0 nodad");
  // A switch that switches nothing, as for the kinds of interface that the library leaves alone.
  Shell("echo 0 >/tmp/switch; mount --bind /tmp/switch /proc/sys/net/ipv6/conf/eth0/disable_ipv6");
  ExpectFailure("ip flush eth0 -6",
                "cannot flush the addresses of eth0: 2001:db8::5 is still there");
}

TEST(Link, SwitchesAllOrNoneOfTheNames) {
  Shell("ip link set eth0 down; ip link set eth1 down");
  ExpectFailure("link up eth0 nosuch eth1",
                "cannot bring up nosuch: there is no interface 'nosuch' (0xBC00)");
  EXPECT_FALSE(IsUp("eth0"));
  ExpectDone("link up eth0 eth1");
  EXPECT_TRUE(IsUp("eth0") && IsUp("eth1"));
  EXPECT_EQ((json{{{"name", "eth1"}, {"up", false}}}), Payload("link down eth1", "links"));
  EXPECT_TRUE(IsUp("eth0") && !IsUp("eth1"));
}

TEST(Mac, IsThatOfThePortBehind) {
  GiveMac("eth2", "02:00:00:00:00:2f");
  Shell("ip link add eth2.7 address 02:00:00:00:00:77 type veth peer name far");
  EXPECT_EQ("02:00:00:00:00:2f\n", Ctl("mac eth2.7").out);
  EXPECT_EQ((json{{"name", "eth2"}, {"mac", "02:00:00:00:00:2f"}, {"local", true}}),
            Payload("mac eth2 --local", "mac"));
  ExpectFailure(
      "mac lo",
      "cannot tell the MAC address of lo: there is no Ethernet port behind the interface, or its "
      "address cannot be read");
  EXPECT_EQ("0xBC00", Error("mac eth9", kFailed).value("code", ""));
}

TEST(Block, FlagsAreSetAndClearedByName) {
  WriteIfcfg("eth0", "DEVICE=eth0\n");
  WriteIfcfg("eth9", "DEVICE=eth9\n");
  RemoveFile(IfcfgPath("eth1"));
  EXPECT_EQ("-\n", Ctl("block get eth0").out);
  ExpectDone("block set eth0 virtual ha");
  EXPECT_EQ("DEVICE=eth0\nBLOCK_HA=yes\nBLOCK_CNT=2\nBLOCK_VIRTUAL=yes\n", ReadIfcfg("eth0"));
  EXPECT_EQ("ha virtual\n", Ctl("block get eth0").out);
  EXPECT_EQ((json{{"name", "eth0"}, {"flags", {"virtual"}}}),
            Payload("block set eth0 ha --clear", "block"));
  EXPECT_EQ("DEVICE=eth0\nBLOCK_HA=no\nBLOCK_CNT=1\nBLOCK_VIRTUAL=yes\n", ReadIfcfg("eth0"));
  ExpectDone("block set eth9 quendar aha");
  EXPECT_EQ("aha quendar\n", Ctl("block get eth9").out) << "not plugged in, but configured";
  ExpectFailure("block set eth1 ha",
                "cannot set the block flags of eth1: eth1 has no configuration file (0x0900)");
  EXPECT_FALSE(FileExists(IfcfgPath("eth1")));
  ExpectFailure("block get eth8",
                "cannot read the block flags of eth8: there is no interface 'eth8' (0xBC00)");
  EXPECT_EQ("usage", Error("block set eth0 hax", kUsage).value("what", ""));
  EXPECT_EQ("usage", Error("block set eth0", kUsage).value("what", ""));
}

TEST(CommandLine, WrongUsageIsTwoAndSaysWhereHelpIs) {
  const Outcome missing = Ctl("ip set");
  EXPECT_EQ(kUsage, missing.status);
  EXPECT_EQ("zarnnetctl: IFNAME is required\nTry 'zarnnetctl ip set --help'.\n", missing.err);
  EXPECT_EQ("IFNAME is required", Error("ip set", kUsage).value("reason", ""));
  EXPECT_EQ("A subcommand is required", Error("ip", kUsage).value("reason", ""));
  for (const char* words : {"", "ip", "nosuch", "if list eth0", "if show", "link up",
                            "mac eth0 --loca", "ip flush eth0 -5", "ip get eth0 eth1"}) {
    const Outcome outcome = Ctl(words);
    EXPECT_EQ(kUsage, outcome.status) << words;
    EXPECT_EQ("", outcome.out) << words;
    EXPECT_TRUE(Contains(outcome.err, " --help'.\n")) << words << ": " << outcome.err;
  }
  for (const char* verb : {"if list", "if show", "ip get", "ip set", "ip flush", "link up",
                           "link down", "mac", "block get", "block set"}) {
    const Outcome help = Ctl(std::string(verb) + " --help");
    EXPECT_EQ(0, help.status) << verb;
    EXPECT_TRUE(Contains(help.out, std::string("Examples:\n  zarnnetctl ") + verb)) << help.out;
    EXPECT_TRUE(Contains(help.out, "--json")) << verb;
  }
  EXPECT_EQ("zarnnetctl 6.", Ctl("--version").out.substr(0, 13));
}

TEST(Output, IsColouredOnATerminalAloneAndItsLossIsAFailure) {
  Shell("ip link set eth0 up");
  const std::string onTerminal = "script -qec '" ZARNNETCTL " if list' /dev/null";
  EXPECT_TRUE(Contains(Shell("TERM=xterm " + onTerminal), "\x1b[1mNAME\x1b[0m"));
  EXPECT_FALSE(Contains(Shell("TERM=xterm NO_COLOR=1 " + onTerminal), "\x1b"));
  EXPECT_FALSE(Contains(Ctl("if list").out, "\x1b"));
  const Outcome full = Ctl("if list >/dev/full");
  EXPECT_EQ(kFailed, full.status);
  EXPECT_EQ("zarnnetctl: cannot write the output: write failed\n", full.err);
  EXPECT_EQ("0xBC00", Error("ip get $(printf '\\377')", kFailed).value("code", ""))
      << "a name that is not UTF-8";
}

TEST(Completion, OffersVerbsInterfacesAndFlags) {
  const auto complete = [](const std::string& words, int at) {
    return Shell("bash -c 'source " ZARNNETCTL_COMPLETION "; COMP_WORDS=(zarnnetctl " + words +
                 "); COMP_CWORD=" + std::to_string(at) + "; _zarnnetctl; echo ${COMPREPLY[*]}'");
  };
  EXPECT_EQ("set\n", complete("ip s", 2));
  EXPECT_EQ("eth0 eth1 eth2 eth3\n", complete("if show eth", 3));
  EXPECT_EQ("quendar\n", complete("block set eth0 ha q", 5));
  EXPECT_EQ("eth all\n", complete("if list --kind \"\"", 4));
  EXPECT_EQ("eth1\n", complete("link up eth0 eth1", 4));
}

// ---- ipv6, stat, mtu, hostname

TEST(Ipv6, WhatIsSetIsShownAndInTheKernel) {
  BringUp("eth0");
  SkipDuplicateDetection("eth0");
  ExpectDone("ipv6 set eth0 static fd00::10/64 --gateway fd00::1");
  EXPECT_TRUE(Contains(Addresses("eth0"), "fd00::10/64"));
  EXPECT_TRUE(Contains(Shell("ip -6 route show default"), "via fd00::1 dev eth0"));
  const json state = Payload("ipv6 get eth0", "ipv6");
  EXPECT_EQ("static", state["type"]);
  EXPECT_EQ("fd00::10", state["addr"]);
  EXPECT_EQ(64, state["prefix"]);
  EXPECT_EQ("fd00::1", state["gateway"]);
  ExpectDone("ipv6 add eth0 fd00::20/64");
  EXPECT_TRUE(Contains(Addresses("eth0"), "fd00::20/64"));
  ExpectDone("ipv6 del eth0 fd00::20/64");
  ExpectDone("ipv6 set eth0 off");
  EXPECT_FALSE(Contains(Addresses("eth0"), "fd00::"));
  EXPECT_EQ(json(nullptr), Payload("ipv6 get eth0", "ipv6")["addr"]);
  ExpectDone("ipv6 init");
  EXPECT_EQ("0\n", ReadFile("/proc/sys/net/ipv6/conf/eth0/accept_ra"));
}

TEST(Ipv6, NonsenseIsRefusedAndChangesNothing) {
  BringUp("eth0");
  const std::string before = ReadIfcfg("eth0");
  for (const char* words : {"ipv6 set eth0 sometimes", "ipv6 set eth0 static",
                            "ipv6 set eth0 static fd00::1", "ipv6 set eth0 auto fd00::1/64",
                            "ipv6 add eth0", "ipv6 add eth0 fd00::1/64 --gateway fd00::2"}) {
    EXPECT_EQ("usage", Error(words, kUsage)["what"]) << words;
  }
  for (const char* words : {"ipv6 set eth0 static fd00::g/64", "ipv6 set eth0 static fd00::1/129",
                            "ipv6 add eth0 10.0.0.1/24", "ipv6 del eth0 --gateway 10.0.0.1"}) {
    EXPECT_EQ("0x1000", Error(words, kFailed)["code"]) << words;
  }
  EXPECT_EQ("0xBC00", Error("ipv6 get eth9", kFailed)["code"]);
  EXPECT_EQ(before, ReadIfcfg("eth0"));
}

TEST(Ipv6, ARealDhcpClientStartsAndStops) {
  BringUp("eth0");
  ExpectDone("ipv6 set eth0 dhcp");
  EXPECT_TRUE(Contains(Shell("status dhcp-client6 IFACE=eth0"), "start/running"));
  ExpectDone("ipv6 set eth0 auto");
  EXPECT_FALSE(Contains(Shell("status dhcp-client6 IFACE=eth0"), "start/running"));
}

TEST(Stat, CountsWhatTheKernelCounts) {
  BringUp("eth0");
  Shell("ip address add 192.168.50.10/24 dev eth0; ping -c 2 -i 0.1 -W 1 192.168.50.77");
  const json list = Payload("stat eth0", "statistics");
  ASSERT_EQ(1U, list.size());
  const std::string sent = Shell("cat /sys/class/net/eth0/statistics/tx_bytes");
  EXPECT_LT(0, list[0]["tx_packets"]);
  EXPECT_LE(list[0]["tx_bytes"], std::stoull(sent));
  EXPECT_EQ(5U, Payload("stat", "statistics").size()) << "the four ports, down too, and loopback";
  EXPECT_EQ("0xBC00", Error("stat eth9", kFailed)["code"]);
}

TEST(System, MtuAndHostNameAreTheKernels) {
  BringUp("eth0");
  ExpectDone("mtu set eth0 1400");
  EXPECT_TRUE(Contains(Shell("ip link show eth0"), "mtu 1400"));
  EXPECT_EQ((json{{"name", "eth0"}, {"mtu", 1400}, {"configured", "1400"}}),
            Payload("mtu get eth0", "mtu"));
  EXPECT_EQ("usage", Error("mtu set eth0 67", kUsage)["what"]);
  RecordTool("/sbin/initctl");
  ExpectDone("hostname set nas");
  EXPECT_EQ("nas\n", Shell("hostname"));
  EXPECT_EQ("nas", Payload("hostname get", "hostname")["hostname"]);
  EXPECT_EQ("0x0E00", Error("hostname set " + std::string(64, 'x'), kFailed)["code"]);
  EXPECT_EQ("nas\n", Shell("hostname"));
}

// ---- dns, gateway, route

TEST(Dns, WhatIsSetIsStoredUsedAndShown) {
  RecordTool("/sbin/initctl");
  ExpectDone("dns set 9.9.9.9 2001:db8::53");
  EXPECT_EQ("nameserver\t9.9.9.9\nnameserver\t2001:db8::53\n", ReadFile("/etc/resolv.conf"));
  const json servers{"9.9.9.9", "2001:db8::53"};
  const json fixed{{"mode", "static"}, {"servers", servers}, {"fixed", servers}};
  EXPECT_EQ(fixed, Payload("dns get", "dns"));
  WriteFile("/etc/iproute2/config/resolv4.conf", "nameserver\t1.1.1.1\n");
  EXPECT_EQ((json{{"mode", "auto"}, {"servers", {"1.1.1.1"}}, {"fixed", servers}}),
            Payload("dns mode auto", "dns"));
  EXPECT_EQ("0x1000", Error("dns set 1.1.1.1 nas.local", kFailed)["code"]);
  EXPECT_EQ("usage", Error("dns mode fixed", kUsage)["what"]);
  WriteFile("/etc/iproute2/config/resolv4.conf", "nameserver\t8.8.8.8\n");
  ExpectDone("dns update");
  EXPECT_EQ("nameserver\t8.8.8.8\n", ReadFile("/etc/resolv.conf"));
}

TEST(Routes, GatewaysAndSubnetsAreTheKernels) {
  ExpectDone("link up eth0");
  ExpectDone("ip set eth0 192.168.50.10/24");
  ExpectDone("gateway set 192.168.50.1");
  ExpectDone("gateway set 192.168.50.254 --saved");
  EXPECT_EQ("default via 192.168.50.1 dev eth0 \n", Shell("ip route show default"));
  EXPECT_EQ("GATEWAY=192.168.50.254\n", ReadFile("/etc/sysconfig/network"));
  EXPECT_EQ("0x1000", Error("gateway set 192.168.50", kFailed)["code"]);
  EXPECT_EQ((json{{"gateway", "192.168.50.1"}, {"interface", "eth0"}, {"saved", false}}),
            Payload("gateway get", "gateway"));
  EXPECT_EQ((json{{"gateway", nullptr}, {"saved", true}}),
            Payload("gateway clear --saved", "gateway"));
  ExpectDone("gateway clear");
  EXPECT_EQ("", Shell("ip route show default"));
  ExpectDone("route del eth0");
  EXPECT_EQ("", Shell("ip route show dev eth0"));
  ExpectDone("route add eth0");
  EXPECT_EQ("192.168.50.0/24 scope link src 192.168.50.10 \n", Shell("ip route show dev eth0"));
  ExpectDone("route check");
  EXPECT_EQ("0xBC00", Error("route add eth9", kFailed)["code"]);
}

TEST(Tunnel, ThePasswordGoesInByAFileOrStandardInputAndIsNeverShown) {
  const std::string secret = "Tr0ub4dor&3";
  WriteFile("/root/secret", secret + "\nsecond line\n", 0600);
  const json set = Payload(
      "tunnel set --server broker.example --user bob --password-file /root/secret", "tunnel");
  const json wanted{{"enabled", false},     {"server", "broker.example"}, {"anonymous", false},
                    {"user_id", "bob"},     {"has_password", true},       {"state", "down"},
                    {"live", json::array()}};
  EXPECT_EQ(wanted, set);
  ExpectDone("tunnel start");
  json up = Payload("tunnel get", "tunnel");
  EXPECT_EQ("up", up["state"]);
  EXPECT_EQ("2001:db8:f00::2", up["live"][0]["addr"]);
  const Outcome shown = Ctl("tunnel get");
  EXPECT_TRUE(Contains(shown.out, "stored")) << shown.out;
  EXPECT_FALSE(Contains(shown.out + set.dump() + up.dump(), secret));
  ExpectDone("tunnel stop");
  WriteFile("/etc/gogoc/broker", "refuses\n");
  ExpectFailure("tunnel start",
                "cannot start the tunnel: the client has ended; see the system log");
  const std::string stored = ReadFile("/etc/gogoc/.tunnel_passwd");
  ExpectDone("tunnel set --password-file - </root/secret");
  EXPECT_EQ(stored, ReadFile("/etc/gogoc/.tunnel_passwd"));
  WriteFile("/root/secret", std::string(32, 'p'), 0600);
  EXPECT_EQ("0x0D00", Error("tunnel set --password-file /root/secret", kFailed)["code"]);
  EXPECT_EQ("0x0900", Error("tunnel set --password-file /root/none", kFailed)["code"]);
  EXPECT_EQ("usage", Error("tunnel set --anonymous --user eve", kUsage)["what"]);
  EXPECT_EQ("usage", Error("tunnel set", kUsage)["what"]);
  EXPECT_EQ("usage", Error("tunnel set --password '" + secret + "'", kUsage)["what"]);
  EXPECT_EQ(stored, ReadFile("/etc/gogoc/.tunnel_passwd"));
  EXPECT_TRUE(Payload("tunnel set --anonymous", "tunnel")["anonymous"].get<bool>());
}

// ---- port, ping, lookup, wake, card1, rename, stat --watch

TEST(Net, PortsHostsAndNamesAreTheSystems) {
  const int listener = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(8080);
  ASSERT_EQ(0, ::bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address));
  ASSERT_EQ(0, ::listen(listener, 1));
  EXPECT_EQ((json{{"protocol", nullptr}, {"used", {8080}}}), Payload("port", "ports"));
  EXPECT_EQ((json{{"protocol", "udp"}, {"used", json::array()}}),
            Payload("port 8000-9000 --proto udp", "ports"));
  EXPECT_EQ("8080\n", Ctl("port 8080").out);
  for (const char* const bad : {"port 0", "port 9-8", "port 1-", "port 65536", "port --proto sctp"})
    EXPECT_EQ("usage", Error(bad, kUsage)["what"]) << bad;
  ::close(listener);
  EXPECT_EQ((json{{"host", "127.0.0.1"}, {"connected", true}}), Payload("ping 127.0.0.1", "ping"));
  ExpectFailure("ping 192.0.2.1 --timeout 1", "no answer from 192.0.2.1: waited 1 seconds");
  WriteFile("/etc/hosts", "127.0.0.1 nas\n192.0.2.1 other\n");
  EXPECT_EQ((json{{"name", "nas"}, {"addr", "127.0.0.1"}, {"interface", "lo"}}),
            Payload("lookup nas", "lookup"));
  EXPECT_EQ(json(nullptr), Payload("lookup other", "lookup")["interface"]);
  EXPECT_EQ("0x0D00", Error("wake lo 02:00:00:00:02", kFailed)["code"]);
}

TEST(Net, ThePrimaryInterfaceIsSetAndAPortRenamed) {
  RecordTool("/sbin/start");
  ExpectDone("link up eth0");
  const json fixed{{"ip", "192.168.50.10"}, {"mask", "255.255.255.0"}};
  const json set = Payload("card1 set 192.168.50.10 255.255.255.0", "card1");
  EXPECT_EQ("eth0", set["name"]);
  EXPECT_EQ(fixed, set["live"]);
  EXPECT_EQ(set, Payload("card1 get", "card1"));
  EXPECT_EQ("0x1000", Error("card1 set 192.168.50.300/24", kFailed)["code"]);
  EXPECT_EQ("usage", Error("card1 set dhcp 255.0.0.0", kUsage)["what"]);
  ExpectDone("card1 set dhcp");
  EXPECT_EQ("DEVICE=eth0\nONBOOT=yes\nBOOTPROTO=dhcp\n", ReadIfcfg("eth0"));
  EXPECT_EQ((json{{"old", "eth3"}, {"name", "lan3"}}), Payload("rename eth3 lan3", "rename"));
  EXPECT_TRUE(FileExists("/sys/class/net/lan3"));
  EXPECT_EQ("0xBB00", Error("rename eth1 lan3", kFailed)["code"]);
}

TEST(Stat, WatchingShowsWhatPassedBetweenTwoLooks) {
  Shell("ping -q -f -s 1000 -w 3 127.0.0.1 >/dev/null &");
  const json rates = Payload("stat lo --watch --count 1 --interval 0.5", "rates");
  ASSERT_EQ((Lines{"lo"}), Names(rates));
  EXPECT_LT(1000, rates[0]["rx_bytes_per_second"].get<int>());
  EXPECT_LT(0, rates[0]["tx_packets_per_second"].get<int>());
  const Outcome twice = Ctl("stat lo --watch --count 2 --interval 0.1");
  EXPECT_EQ(2, std::count(twice.out.begin(), twice.out.end(), '/') / 4) << twice.out;
  EXPECT_FALSE(Contains(twice.out, "\x1b")) << "no terminal, nothing to write over";
  Shell("script -qc '" ZARNNETCTL " stat lo --watch --count 2 --interval 0.1' /root/typed");
  EXPECT_TRUE(Contains(ReadFile("/root/typed"), "\x1b[2F\x1b[J")) << "over the table before";
  EXPECT_EQ("usage", Error("stat --count 2", kUsage)["what"]);
}

// ---- bond, bridge, vlan, topology, tree

TEST(Bridge, TheRoleInTheFileAndTheBridgeInTheKernelAreShown) {
  Shell("ip link add br0 type bridge; ip link set br0 up; ip link set eth1 master br0 up");
  WriteIfcfg("br0", "");
  WriteIfcfg("eth1", "IPADDR=10.0.0.1\nNETMASK=255.0.0.0\nBOOTPROTO=static");
  ExpectDone("bridge set br0 bridge eth1 --address 192.168.60.1/24");
  ExpectDone("bridge set eth1 port br0");
  const json port{{"name", "eth1"}, {"role", "port"}, {"ref", "br0"}};
  EXPECT_EQ(port, Payload("bridge set eth1 port br0", "bridge"));
  const std::string file = ReadFile(std::string(kScripts) + "/ifcfg-eth1");
  EXPECT_TRUE(Contains(file, "BRIDGE=br0\n") && Contains(file, "IPADDR=10.0.0.1\n")) << file;
  const json live{{"type", "bridge"}, {"ref", "eth1"}, {"ports", {"eth1"}}};
  const json shown = Payload("bridge show br0", "bridge");
  EXPECT_EQ("bridge", shown["role"]);
  EXPECT_EQ(live, shown["live"]);
  EXPECT_EQ("br0", Payload("bridge list", "bridges")[0]["name"]);
  EXPECT_EQ("usage", Error("bridge set eth1 port", kUsage)["what"]);
  EXPECT_EQ("0x1000", Error("bridge set eth1 none --address 300.1.1.1/8", kFailed)["code"]);
  EXPECT_EQ(file, ReadFile(std::string(kScripts) + "/ifcfg-eth1"));
}

TEST(Tree, StandsOnWhatIsBelow) {
  Shell("ip link add br0 type bridge; ip link set br0 up; ip link set eth1 master br0 up");
  Shell("ip link set eth2 master br0; ip address add 192.168.60.1/24 dev br0");
  WriteIfcfg("br0", "TYPE=bridge\nPRIMARY=eth1\n");
  const std::string drawn = Ctl("tree").out;
  const std::size_t at = drawn.find("br0 (bridge)\n├─ 192.168.60.1/24\n");
  ASSERT_NE(std::string::npos, at) << drawn;
  EXPECT_TRUE(Contains(drawn.substr(at), "├─ eth1\n") && Contains(drawn.substr(at), "└─ eth2\n"))
      << drawn;
  EXPECT_FALSE(Contains(drawn, "\neth1")) << "ports stand below their bridge alone";
  const json tree = Payload("tree", "tree");
  const auto bridge = std::find_if(tree.begin(), tree.end(),
                                   [](const json& node) { return node["name"] == "br0"; });
  ASSERT_NE(tree.end(), bridge);
  EXPECT_EQ(2U, (*bridge)["below"].size());
}

TEST(Topology, IsStoredAndShown) {
  WriteFile("/etc/zarninfo.conf", "support_net_topology=\"yes\"\n");
  ExpectDone("topology set bridge");
  EXPECT_EQ("support_net_topology=\"yes\"\nnet_topology=\"bridge\"\n",
            ReadFile("/etc/zarninfo.conf"));
  const json topology = Payload("topology get", "topology");
  EXPECT_EQ(json(2), topology["id"]);
  EXPECT_EQ("br0", topology["uplink"]);
  EXPECT_EQ(3U, topology["layout"].size());
  EXPECT_EQ("usage", Error("topology set mesh", kUsage)["what"]);
}

TEST(Bond, AndVlanRefuseWhatCannotBe) {
  EXPECT_EQ(json::array(), Payload("bond list", "bonds"));
  EXPECT_EQ(json::array(), Payload("vlan list", "vlans"));
  const std::string file = ReadFile(std::string(kScripts) + "/ifcfg-eth0");
  EXPECT_EQ("0xBC00", Error("bond show bond0", kFailed)["code"]);
  EXPECT_EQ("0xBC00", Error("bond delete bond0", kFailed)["code"]);
  EXPECT_EQ("0xBC00", Error("bond set bond0 eth0 eth9", kFailed)["code"]);
  EXPECT_EQ("0xBB00", Error("bond set bond0 eth0 eth0", kFailed)["code"]);
  EXPECT_EQ("usage", Error("bond set bond0 eth0", kUsage)["what"]);
  EXPECT_EQ("usage", Error("bond set bond0 --mode fast eth0 eth1", kUsage)["what"]);
  EXPECT_EQ("0xBC00", Error("vlan create eth9 10", kFailed)["code"]);
  EXPECT_EQ("usage", Error("vlan create eth0 4095", kUsage)["what"]);
  EXPECT_EQ("0xBC00", Error("vlan remove eth0.10", kFailed)["code"]);
  EXPECT_EQ(file, ReadFile(std::string(kScripts) + "/ifcfg-eth0"));
  EXPECT_EQ(Lines{}, Events());
}
