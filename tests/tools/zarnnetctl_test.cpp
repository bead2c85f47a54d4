// The command line itself: words, help, streams, exit status, what interfaces it shows.
#include <gtest/gtest.h>

#include "ctl.h"
#include "support/transcript.h"

using namespace test;

TEST(CommandLine, WrongUsageIsTwoAndSaysWhereHelpIs) {
  Type(R"(
ip set
ip set --json
ip --json
nosuch
</dev/null
if list eth0
ip flush eth0 -5
ip set eth0 10.0.0.1
ip set eth0 10.0.0.1/x --json
ip set eth0 10.0.0.1/8 255.0.0.0
ipv6 set eth0 sometimes
ipv6 set eth0 static
ipv6 set eth0 static fd00::1
ipv6 set eth0 auto fd00::1/64
ipv6 add eth0 fd00::1/64 --gateway fd00::2
if list --kind -1
if list --kind 99999999999
block set eth0 hax
block set eth0
mtu set eth0 67
dns mode fixed
port 0
port 9-8
port --proto sctp
card1 set dhcp 255.0.0.0
stat --count 2
bridge set eth1 port
topology set mesh
bond set bond0 eth0
bond set bond0 --mode fast eth0 eth1
vlan create eth0 4095
)");
}

TEST(CommandLine, EveryVerbHasHelpWithAnExample) {
  Mask("(6[.][0-9.]+)", "VERSION");
  Type(R"(
--version
if list --help
if show --help
ip get --help
ip set --help
mac --help
block set --help
)");
}

TEST(CommandLine, AWrongNameOrValueIsRefusedBeforeAnythingChanges) {
  Type(R"(
$ ip link property add dev eth0 altname port-one
ip set eth0 300.1.1.1/24
ip set eth0 127.0.0.1/8
ip set eth0 010.0.0.1/8
ip set eth0 "`printf '10.0.0.1\nMASTER=x/8'`"
ip set eth0 /8
ip set eth0 10.0.0.1/33
ip set eth0 10.0.0.1/0
ip set eth0 10.0.0.1 255.0.255.0
ip set eth0 10.0.0.1 0xff000000 --json
ip set nosuch 10.0.0.1/8 --json
ip set nosuch 10.0.0.1/8
ip set eth0:1 10.0.0.1/8
ip set port-one 10.0.0.1/8
ip get `printf '\377'` --json
if show eth9
if show ../../eth0
if list --kind 0
mac eth9
mac lo
ipv6 set eth0 static fd00::g/64
ipv6 set eth0 static fd00::1/129
ipv6 add eth0 10.0.0.1/24
ipv6 del eth0 --gateway 10.0.0.1
ipv6 get eth9
link up eth0 nosuch eth1
stat eth9
hostname set xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx
dns set 1.1.1.1 nas.local
gateway set 192.168.50
route add eth9
card1 set 192.168.50.300/24
wake lo 02:00:00:00:02
bridge set eth1 none --address 300.1.1.1/8
bond show bond0
bond delete bond0
bond set bond0 eth0 eth9
bond set bond0 eth0 eth0
vlan create eth9 10
vlan remove eth0.10
)");
}

TEST(CommandLine, OutputIsColouredOnATerminalAloneAndItsLossIsAFailure) {
  BringUp("eth0");
  Type(R"(
$ TERM=xterm script -qec 'zarnnetctl if list' /dev/null
$ TERM=xterm NO_COLOR=1 script -qec 'zarnnetctl if list' /dev/null
if list
if list >/dev/full
)");
}

TEST(CommandLine, AChangeThatCannotBeMadeIsToldAndUndone) {
  WriteIfcfg("eth0", "BOOTPROTO=dhcp\n");
  RecordTool("/sbin/ifconfig", 1);
  // A user namespace gives another user id, whoever runs the test.
  Type(R"(
ip set eth0 10.0.0.1/8
$ unshare --user zarnnetctl ip set eth0 10.0.0.1/8
)");
}

TEST(CommandLine, TheNetworkLockIsWaitedForAndNamed) {
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
  Type(R"(
$ bash /tmp/complete ip s
$ bash /tmp/complete if show eth
$ bash /tmp/complete block set eth0 ha q
$ bash /tmp/complete if list --kind ''
$ bash /tmp/complete link up eth0 eth1
)");
}

TEST(Interfaces, AreListedByKindInNaturalOrder) {
  Shell("ip link set eth0 name eth10; ip link add br0 type bridge; ip link set eth1 master br0");
  for (const char* ifname : {"eth1", "br0", "eth10"})
    BringUp(ifname);
  Type(R"(
$ ip link set br0 address 02:00:00:00:00:af
$ ip address add 192.168.50.10/20 dev eth10
if list
if list --json
if list --kind eth
mac eth10 --local
mac eth10 --json
)");
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
  Type(R"(
if show br0
if show br0 --json
if show eth1
if show eth1 --json
if show ovs_bond0
if show ovs_bond0 --json
if show eth0 --json
if show lo
bond show ovs_bond0
bond list
bridge list --json
bridge show br0
vlan list
vlan list --json
)");
}

TEST(Interfaces, LinksAreSwitchedAndFlagsSetByName) {
  WriteIfcfg("eth0", "DEVICE=eth0\n");
  WriteIfcfg("eth9", "DEVICE=eth9\n");
  RemoveFile(IfcfgPath("eth1"));
  Type(R"(
link up eth0 eth1
link down eth1 --json
block get eth0
block set eth0 virtual ha
block get eth0
block set eth0 ha --clear --json
block set eth9 quendar aha
block get eth9
block set eth1 ha
block get eth8
)");
}

TEST(Interfaces, StandOnWhatIsBelow) {
  Shell("ip link add br0 type bridge; ip link set eth1 master br0; ip link set eth2 master br0");
  for (const char* ifname : {"eth1", "eth2", "br0"})
    BringUp(ifname);
  WriteIfcfg("br0", "TYPE=bridge\nPRIMARY=eth1\n");
  Type(R"(
$ ip address add 192.168.60.1/24 dev br0
tree
tree --json
)");
}

TEST(Statistics, AreWhatTheKernelCounts) {
  BringUp("eth0");
  Mask("[^ ]( {2,})", " ");
  Mask("\"rx_[a-z_]*\": ([0-9]+)", "RX");
  Mask("\"tx_[a-z_]*\": ([1-9][0-9]*)", "TX");
  Mask("# 1: eth0 ([0-9]+ [0-9]+) 0 0 ", "RX");
  Mask("# 1: eth0 RX 0 0 ([1-9][0-9]* [1-9][0-9]*) ", "TX");
  Mask("lo ([0-9.]+ [kM]? ?[0-9.]+ [kM]? ?[0-9.]+ [kM]? ?[0-9.]+( [kM])?)", "RATES");
  Type(R"(
$ ip address add 192.168.50.10/24 dev eth0; ping -q -c 2 -i 0.1 -W 1 192.168.50.77 >/dev/null
stat eth0 --json
stat
$ ping -q -f -s 1000 -w 20 127.0.0.1 >/dev/null &
stat lo --watch --count 1 --interval 0.5 --json
stat lo --watch --count 2 --interval 0.1
$ script -qc 'zarnnetctl stat lo --watch --count 2 --interval 0.1' /dev/null
)");
}
