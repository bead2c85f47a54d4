// Verbs that set addresses, names and routes: what was typed reaches files and kernel.
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include "ctl.h"
#include "frame/os/file.h"
#include "support/transcript.h"

using namespace test;

namespace {

// With an address of the link alone, as the kernel would give it a moment later.
void BringUpWithIpv6() {
  BringUp("eth0");
  Shell("echo 0 >/proc/sys/net/ipv6/conf/eth0/dad_transmits");
  Shell("ip -6 address add fe80::10/64 dev eth0 nodad");
}

}  // namespace

TEST(Ip, LiveAndConfiguredAreShownApart) {
  WriteIfcfg("eth0", "BOOTPROTO=dhcp\nIPADDR=1.2.3.4\nNETMASK=255.0.0.0\n");
  WriteFile("/etc/dhclient/ipv4/dhcpcd-eth0.info",
            "IPADDR=192.168.50.100\nNETMASK=255.255.255.0\n");
  RemoveFile(IfcfgPath("eth1"));
  Type(R"(
$ ip link set eth0 up; ip address add 10.0.0.1/8 dev eth0; ip -6 address flush dev eth0
$ ip -6 address add 2001:db8::5/64 dev eth0 nodad
ip get eth0
ip get eth0 --json
$ rm /etc/dhclient/ipv4/dhcpcd-eth0.info
ip get eth0
ip get eth1 --json
)");
}

TEST(Ip, IsSetInBothNotationsAndFlushedByFamily) {
  WriteIfcfg("eth0", "# port\nBOOTPROTO=dhcp\nMTU=1500\n");
  Type(R"(
ip set eth0 192.168.50.10/20
ip set eth1 10.1.2.3 255.255.255.128 --json
$ ip link set eth0 up; ip -6 address add 2001:db8::5/64 dev eth0 nodad
ip flush eth0 -4
$ ip address add 10.0.0.1/8 dev eth0
ip flush -6 eth0
$ ip -6 address add 2001:db8::5/64 dev eth0 nodad
ip flush eth0 --json
$ ip link set eth0 down; ip address add 10.0.0.1/8 dev eth0
ip flush eth0
)");
}

// A switch that switches nothing, as for the kinds of interface that the library leaves alone.
TEST(Ip, AnAddressThatStaysIsAFailure) {
  Type(R"(
$ ip link set eth0 up; ip -6 address add 2001:db8::5/64 dev eth0 nodad
$ echo 0 >/tmp/switch; mount --bind /tmp/switch /proc/sys/net/ipv6/conf/eth0/disable_ipv6
ip flush eth0 -6
)");
}

TEST(Ipv6, IsSetAddedToShownAndSwitchedOff) {
  BringUpWithIpv6();
  // The kernel lists several addresses in an order of its own.
  Shell("ip -6 address flush dev eth0 scope link");
  Type(R"(
ipv6 set eth0 static fd00::10/64 --gateway fd00::1
ipv6 get eth0
ipv6 get eth0 --json
ipv6 add eth0 fd00::20/64
ipv6 del eth0 fd00::20/64
ipv6 set eth0 off
ipv6 get eth0 --json
ipv6 init
)");
}

TEST(Ipv6, ARealDhcpClientStartsAndStops) {
  BringUpWithIpv6();
  Type(R"(
$ zarnnetctl ipv6 set eth0 dhcp; status dhcp-client6 IFACE=eth0 | sed 's/,.*//'
$ zarnnetctl ipv6 set eth0 auto; status dhcp-client6 IFACE=eth0
)");
}

TEST(System, MtuHostNameAndNameServersAreSetAndShown) {
  BringUp("eth0");
  RecordTool("/sbin/initctl");
  WriteFile("/etc/iproute2/config/resolv4.conf", "nameserver\t1.1.1.1\n");
  Type(R"(
mtu set eth0 1400
mtu get eth0
mtu get eth0 --json
hostname set nas
$ hostname
hostname get --json
dns set 9.9.9.9 2001:db8::53
dns get --json
dns mode auto --json
dns update
)");
}

TEST(Routes, GatewaysAndSubnetsAreTheKernels) {
  Type(R"(
link up eth0
ip set eth0 192.168.50.10/24
gateway set 192.168.50.1
gateway set 192.168.50.254 --saved
gateway get --json
gateway clear --saved --json
gateway clear
route del eth0
route add eth0
route check
)");
}

TEST(Net, PortsHostsAndNamesAreTheSystems) {
  const frame::Descriptor listener(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(8080);
  ASSERT_EQ(0, ::bind(listener.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof address));
  ASSERT_EQ(0, ::listen(listener.Get(), 1));
  WriteFile("/etc/hosts", "127.0.0.1 nas\n192.0.2.1 other\n");
  Type(R"(
port --json
port 8000-9000 --proto udp --json
port 8080
ping 127.0.0.1 --json
ping 192.0.2.1 --timeout 1
lookup nas --json
lookup other --json
)");
}

TEST(Net, ThePrimaryInterfaceIsSetAndAPortRenamed) {
  RecordTool("/sbin/start");
  Type(R"(
link up eth0
card1 set 192.168.50.10 255.255.255.0 --json
card1 get
card1 set dhcp
rename eth3 lan3 --json
rename eth1 lan3
)");
}

TEST(Virtual, RolesAndTopologyAreStoredAndShown) {
  Shell("ip link add br0 type bridge; ip link set br0 up; ip link set eth1 master br0 up");
  WriteFile("/etc/zarninfo.conf", "support_net_topology=\"yes\"\n");
  WriteIfcfg("br0", "");
  WriteIfcfg("eth1", "IPADDR=10.0.0.1\nNETMASK=255.0.0.0\nBOOTPROTO=static");
  Type(R"(
bridge set br0 bridge eth1 --address 192.168.60.1/24
bridge set eth1 port br0 --json
bridge show br0 --json
topology set bridge
topology get --json
)");
}
