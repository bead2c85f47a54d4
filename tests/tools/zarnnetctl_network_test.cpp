// SPDX-License-Identifier: Apache-2.0
// Verbs that set addresses, names and routes: what was typed reaches files and kernel.
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
  TypeSession();
}

TEST(Ip, IsSetInBothNotationsAndFlushedByFamily) {
  WriteIfcfg("eth0", "# port\nBOOTPROTO=dhcp\nMTU=1500\n");
  TypeSession();
}

TEST(Ip, AnAddressThatStaysIsAFailure) {
  TypeSession();
}

TEST(Ipv6, IsSetAddedToShownAndSwitchedOff) {
  BringUpWithIpv6();
  // The kernel lists several addresses in an order of its own.
  Shell("ip -6 address flush dev eth0 scope link");
  TypeSession();
}

TEST(Ipv6, ARealDhcpClientStartsAndStops) {
  BringUpWithIpv6();
  TypeSession();
}

TEST(System, MtuHostNameAndNameServersAreSetAndShown) {
  BringUp("eth0");
  RecordTool("/sbin/initctl");
  WriteFile("/etc/iproute2/config/resolv4.conf", "nameserver\t1.1.1.1\n");
  TypeSession();
}

TEST(Routes, GatewaysAndSubnetsAreTheKernels) {
  TypeSession();
}

TEST(Net, PortsHostsAndNamesAreTheSystems) {
  const frame::Descriptor listener(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(8080);
  ASSERT_EQ(0, ::bind(listener.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof address));
  ASSERT_EQ(0, ::listen(listener.Get(), 1));
  WriteFile("/etc/hosts", "127.0.0.1 nas\n192.0.2.1 other\n");
  TypeSession();
}

TEST(Net, ThePrimaryInterfaceIsSetAndAPortRenamed) {
  RecordTool("/sbin/start");
  TypeSession();
}

TEST(Virtual, RolesAndTopologyAreStoredAndShown) {
  Mask("^(    [+][0-9]*)$", "");
  Shell("ip link add br0 type bridge; ip link set br0 up; ip link set eth1 master br0 up");
  WriteFile("/etc/zarninfo.conf", "support_net_topology=\"yes\"\n");
  WriteIfcfg("br0", "");
  WriteIfcfg("eth1", "IPADDR=10.0.0.1\nNETMASK=255.0.0.0\nBOOTPROTO=static");
  TypeSession();
}

TEST(Changes, AreNeverCalledDoneWhenTheyAreNot) {
  TypeSession();
}

TEST(Changes, MistakesAreToldAndHarmNothing) {
  TypeSession();
}

TEST(Show, IsTheMachineOnOneScreen) {
  BringUp("eth0");
  BringUp("eth1");
  TypeSession();
}
