// SPDX-License-Identifier: Apache-2.0
// The command line itself: words, help, streams, exit status, what interfaces it shows.
#include "ctl.h"
#include "support/transcript.h"

using namespace test;

TEST(CommandLine, WrongUsageIsTwoAndSaysWhereHelpIs) {
  TypeSession();
}

TEST(CommandLine, EveryVerbHasHelpWithAnExample) {
  Mask("(6[.][0-9.]+)", "VERSION");
  TypeSession();
}

TEST(CommandLine, TheSynopsisOfTheManualPageIsThatOfTheVerbs) {
  const std::string manual = ReadFile(ZARNNETCTL_MANUAL);
  const std::string heading = ".Sh SYNOPSIS\n";
  const std::size_t start = manual.find(heading) + heading.size();
  EXPECT_EQ(Shell("zarnnetctl __synopsis"),
            manual.substr(start, manual.find(".Sh ", start) - start));
}

TEST(CommandLine, AWrongNameOrValueIsRefusedBeforeAnythingChanges) {
  TypeSession();
}

TEST(CommandLine, OutputIsColouredOnATerminalAloneAndItsLossIsAFailure) {
  BringUp("eth0");
  TypeSession();
}

TEST(CommandLine, AChangeThatCannotBeMadeIsToldAndUndone) {
  WriteIfcfg("eth0", "BOOTPROTO=dhcp\n");
  RecordTool("/sbin/ifconfig", 1);
  // A user namespace gives another user id, whoever runs the test.
  TypeSession();
}

TEST(CommandLine, TheNetworkLockIsWaitedForAndNamed) {
  Mask("process ([0-9]+)", "PID");
  ASSERT_EQ(0, KOPACFileLock(0x106, 1));
  Type(R"(
$ ip address add 10.9.9.9/8 dev eth0
ip set eth0 10.0.0.1/8 2>/tmp/set & zarnnetctl ip flush eth0 -4; s=$?; wait; (exit $s)
)");
  KOPACFileUnlock(0x100);
  Type("ip flush eth0 -4");
}

TEST(Completion, OffersVerbsInterfacesAndFlags) {
  WriteFile("/tmp/complete", ". " ZARNNETCTL_COMPLETION R"(
COMP_WORDS=(zarnnetctl "$@"); COMP_CWORD=$#; _zarnnetctl; echo "${COMPREPLY[*]}"
)");
  TypeSession();
}

TEST(Interfaces, AreListedByKindInNaturalOrder) {
  Shell("ip link set eth0 name eth10; ip link add br0 type bridge; ip link set eth1 master br0");
  for (const char* ifname : {"eth1", "br0", "eth10"})
    BringUp(ifname);
  TypeSession();
}

TEST(Interfaces, AreShownWithRoleAndSettings) {
  Shell("ip link add br0 type bridge; ip link set br0 address 02:00:00:00:00:af");
  Shell("ip link set eth1 master br0; ip link add ovs_bond0 type veth peer name far");
  Shell("ip link set ovs_bond0 address 02:00:00:00:00:b0; ip link set far up");
  for (const char* ifname : {"eth1", "br0", "ovs_bond0", "eth3"})
    BringUp(ifname);
  WriteIfcfg("br0", "TYPE=bridge\nPRIMARY=eth1\nLOCAL_LAN=yes\nBOOTPROTO=static\n");
  WriteIfcfg("eth1", "BRIDGE=br0\nBOOTPROTO=none\n");
  WriteIfcfg("ovs_bond0", "BOOTPROTO=dhcp\nSLAVE_LIST=eth2 eth3\nBOND_MODE=balance-slb\n");
  WriteIfcfg("eth0",
             "ONBOOT=yes\nBOOTPROTO=static\nIPADDR=10.0.0.9\nNETMASK=255.255.255.0\nBLOCK_AHA=yes\n"
             "BLOCK_CNT=1\n");
  TypeSession();
}

TEST(Interfaces, LinksAreSwitchedAndFlagsSetByName) {
  WriteIfcfg("eth0", "DEVICE=eth0\n");
  WriteIfcfg("eth9", "DEVICE=eth9\n");
  RemoveFile(IfcfgPath("eth1"));
  TypeSession();
}

TEST(Interfaces, StandOnWhatIsBelow) {
  Shell("ip link add br0 type bridge; ip link set eth1 master br0; ip link set eth2 master br0");
  for (const char* ifname : {"eth1", "eth2", "br0"})
    BringUp(ifname);
  WriteIfcfg("br0", "TYPE=bridge\nPRIMARY=eth1\n");
  TypeSession();
}

TEST(Online, IsWhatAllThatAreNamedHave) {
  BringUp("eth0");
  TypeSession();
}

TEST(Monitor, TellsWhatChangesAsItHappens) {
  BringUp("eth0");
  Mask("([0-9]{4}-[0-9]{2}-[0-9T:+-]+)", "TIME");
  Shell("mkdir -p /usr/zarn/plugins/network/renamed");
  TypeSession();
}

// A neighbour that is known: one that is looked for in vain is told of by packets on lo, seconds
// later.
TEST(Statistics, AreWhatTheKernelCounts) {
  BringUp("eth0");
  Mask("[^ ]( {2,})", " ");
  Mask("\"rx_[a-z_]*\": ?([0-9]+)", "RX");
  Mask("\"tx_[a-z_]*\": ?([1-9][0-9]*)", "TX");
  Mask("# 1: eth0 ([0-9]+ [0-9]+) 0 0 ", "RX");
  Mask("# 1: eth0 RX 0 0 ([1-9][0-9]* [1-9][0-9]*) ", "TX");
  Mask("lo ([0-9.]+ [kM]? ?[0-9.]+ [kM]? ?[0-9.]+ [kM]? ?[0-9.]+( [kM])?)", "RATES");
  TypeSession();
}

// Names of the kernel can have every sign but a blank, '/' and ':'.
TEST(Interfaces, AreDrawnForGraphvizWhateverTheirNames) {
  Shell(R"sh(ip link add 'a"];<&lt;\N' type bridge)sh");
  Shell(R"sh(ip link add "$(printf '\377\001\\')" type bridge)sh");
  TypeSession();
}
