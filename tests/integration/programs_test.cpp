// SPDX-License-Identifier: Apache-2.0
// The appliance's own programs, which the library only calls: the network script with bridges,
// bonds and VLANs, the DHCP server and what a client gets from it, the address probe.
#include <cstring>

#include <zarnnetsdk/zarnnetsdk.h>

#include "support/transcript.h"

using namespace test;

namespace {

std::string StatusOf(const std::string& command) {
  return Shell("{ " + command + "; echo \"status $?\"; }");
}

int Status(const std::string& command) {
  return std::atoi(Shell("(" + command + ") >/dev/null 2>&1; echo $?").c_str());
}

int Probe(const std::string& arguments) {
  return Status("/sbin/arping -D -q -w 1 -c 1 -I eth0 " + arguments);
}

// ---- the DHCP server

void SwitchOn(const std::string& name, bool on = true) {
  WriteFile("/etc/dhcpd/" + name + ".info", on ? "enable=\"yes\"\n" : "enable=\"no\"\n");
}

void WriteFragment(const std::string& name, std::string_view text) {
  WriteFile("/etc/dhcpd/" + name + ".conf", text);
}

const std::string kSettings = "/run/dhcpd/dnsmasq.conf";
const std::string kRange =
    "interface=eth0\ndhcp-range=set:eth00,192.168.60.50,192.168.60.60,255.255.255.0,3600\n";

// The assembled fragments, without what every server has.
std::string Served() {
  return Shell("sed -n '/^# /,$p' " + kSettings + " | sed '/^$/d'");
}

std::string ServerProcess() {
  const std::string state = Shell("status dhcp-server");
  const auto process = state.find("process ");
  return process == std::string::npos ? "" : state.substr(process);
}

// The server writes down who it is, and who its machine is.
void Restart() {
  Mask("^(    [-+](duid .*|[0-9]*))$", "");
  TELL(KOPANetDHCPServerRestart());
}

void ServeOneSubnet(std::string_view options) {
  Shell("ip address add 192.168.60.1/24 dev eth0");
  BringUp("eth0");
  SwitchOn("dhcpd");
  SwitchOn("dhcpd-eth0");
  SwitchOn("dhcpd-eth0-subnet0");
  WriteFragment("dhcpd-eth0-subnet0", kRange + std::string(options));
}

// What the second host, as a client, is given: NAME='VALUE' lines.
std::string Lease() {
  WriteFile("/tmp/client.conf",
            "timeout 8;\n"
            "option routes code 121 = array of unsigned integer 8;\n"
            "option discovery code 252 = text;\n"
            "request subnet-mask, routers, domain-name, domain-name-servers, domain-search,\n"
            "  interface-mtu, ntp-servers, routes, discovery;\n");
  WriteFile("/tmp/client-script",
            "#!/bin/sh\n[ $reason != BOUND ] || {\n"
            "  set | grep ^new_ >/var/lib/dhcp/new; mv /var/lib/dhcp/new /var/lib/dhcp/lease; }\n",
            0755);
  Shell(
      "ip -n lan address flush dev lan\n"
      "ip netns exec lan /host/usr/sbin/dhclient -4 -1 -d -cf /tmp/client.conf -lf /tmp/leases"
      " -pf /tmp/client.pid -sf /tmp/client-script lan >/tmp/client.log 2>&1 & client=$!\n"
      "for try in $(seq 100); do [ -e /var/lib/dhcp/lease ] && break; sleep 0.1; done; kill "
      "$client");
  return ReadFile("/var/lib/dhcp/lease");
}

}  // namespace

// The library's records, the server that runs from them, and clients on both sides of the LAN.
TEST(DhcpServer, GivesClientsWhatTheRecordSays) {
  Shell("ip address add 192.168.60.1/24 dev eth0");
  BringUp("eth0");
  SwitchOn("dhcpd");
  DHCP_OPTION routes{};
  routes.number = 121;
  std::strcpy(routes.name, "classless-static-route");
  const List route({"10.0.0.0/8", "192.168.60.254"});
  routes.values = route;
  DHCP_OPTION mtu{26, "mtu", "1400", nullptr, &routes};
  const List clocks({"192.168.60.7"});
  DHCP_OPTION time{42, "ntp-server", "", clocks, &mtu};
  DHCP_SUBNET_CONF subnet{};
  subnet.enable = 1;
  subnet.lease = 3600;
  std::strcpy(subnet.start, "192.168.60.50");
  std::strcpy(subnet.end, "192.168.60.60");
  std::strcpy(subnet.netmask, "255.255.255.0");
  std::strcpy(subnet.router, "192.168.60.1");
  std::strcpy(subnet.domain, "lan.example");
  std::strcpy(subnet.dns1, "192.168.60.1");
  std::strcpy(subnet.dns2, "192.168.60.2");
  subnet.options = &time;
  WriteFragment("dhcpd-eth00-static", "dhcp-host=02:00:00:00:02:00,192.168.60.57");
  WriteFragment("wpad-eth0", "dhcp-option=tag:eth00,252,http://192.168.60.1/wpad.dat\n");
  SwitchOn("wpad-eth0");
  ASSERT_EQ(0, DHCPTagConfSet("eth0", 0, 0, &subnet));
  ASSERT_EQ(0, DHCPInterfaceSetEnabled("eth0", 0, 1));
  Restart();
  Mask("new_expiry='([0-9]*)'", "TIME");
  Say(Lease());
  Shell("for port in 0 1; do ip -n lan link set lan$port type bridge_slave isolated off; done");
  BringUp("eth1");
  ZARNNETIFADDR offered{};
  std::strcpy(offered.szName, "eth1");
  EXPECT_EQ(0, ZARNIGetDHCPTestNetInfo(&offered));
  EXPECT_EQ(1, KOPAIsIpInRange(offered.szIP, "192.168.60.50", "192.168.60.60", 2)) << offered.szIP;
}

TEST(DhcpServer, ServesWhatIsSwitchedOnAndLeavesOutWhatHasNoValue) {
  ServeOneSubnet(
      "dhcp-option=tag:eth00,option:router,\n"
      "dhcp-option=tag:eth00,option:dns-server,,192.168.60.2");
  SwitchOn("dhcpd-eth1");
  WriteFragment("dhcpd-eth1-office",
                "interface=eth1\n"
                "dhcp-range=set:office,192.168.61.50,192.168.61.60,255.255.255.0,3600\n"
                "dhcp-option=tag:office,option:dns-server,\n");
  SwitchOn("dhcpd-eth1-office");
  WriteFragment("dhcpd-eth1-subnet0", "never=looked-at\ninterface=eth1\n");
  SwitchOn("dhcpd-eth1-subnet0", false);
  WriteFragment("dhcpd-eth2-subnet0", "never=looked-at\ninterface=eth2\n");
  SwitchOn("dhcpd-eth2-subnet0");
  SwitchOn("dhcpd-eth2", false);
  SwitchOn("dhcpd6-eth0");
  SwitchOn("dhcpd6-eth0-subnet0");
  WriteFragment("dhcpd6-eth0-subnet0",
                "interface=eth0\ndhcp-range=set:eth0v60,2001:db8::10,2001:db8::20,64,3600\n"
                "dhcp-option=tag:eth0v60,option6:dns-server,[2001:db8::1]\nenable-ra\n");
  WriteFragment("dhcpd-eth1-static", "dhcp-host=02:00:00:00:00:99,192.168.61.55\n");
  WriteFragment("dhcpd-eth2-static", "never=looked-at\n");
  WriteFragment("dhcpd-vendor", "dhcp-option=vendor:Example,249,10.0.0.0/8,192.168.1.1\n");
  WriteFragment("dhcpd-pxe", "dhcp-boot=tag:pxe,pxelinux.0\ndhcp-vendorclass=set:pxe,PXEClient");
  SwitchOn("dhcpd-pxe");
  Restart();
  SwitchOn("dhcpd", false);
  Restart();
  EXPECT_EQ("", ServerProcess());
}

TEST(DhcpServer, GoesOnWithItsSettingsWhenTheNewOnesAreNoGood) {
  ServeOneSubnet("dhcp-option=tag:eth00,option:router,192.168.60.1\n");
  ASSERT_EQ("status 0\n", StatusOf("/etc/rc.network nat-start-dhcp"));
  const std::string process = ServerProcess();
  const std::string served = Served();
  ASSERT_NE("", process);
  WriteFragment("dhcpd-eth0-subnet0", kRange + "dhcp-option=tag:eth00,option:no-such,1\n");
  const std::string answer = StatusOf("/etc/rc.network nat-restart-dhcp");
  EXPECT_TRUE(Contains(answer, "bad dhcp-option") && Contains(answer, "status 2\n")) << answer;
  EXPECT_EQ(process, ServerProcess());
  EXPECT_EQ(served, Served());

  // Good settings with which it nevertheless does not start: the old ones come back.
  WriteFragment("dhcpd-eth0-subnet0", kRange + "enable-tftp\ntftp-root=/no/such\n");
  const std::string failed = StatusOf("/etc/rc.network nat-restart-dhcp");
  EXPECT_TRUE(Contains(failed, "does not start") && Contains(failed, "status 1\n")) << failed;
  EXPECT_NE("", ServerProcess());
  EXPECT_EQ(served, Served());
}

// ---- the address probe

TEST(Arping, TellsAnotherHostsAddressFromAFreeOneAndFromOurOwn) {
  BringUp("eth0");
  EXPECT_EQ(1, Probe("192.168.50.1"));
  EXPECT_EQ(1, Probe("192.168.50.1 -F 020000000010 020000000011"));
  EXPECT_EQ(0, Probe("192.168.50.99 -F 020000000010"));
  EXPECT_EQ(0, Probe("192.168.50.1 -F 020000000200"));
  // Two hosts answer, and only one of them is ours.
  Shell(
      "ip -n lan link add twin address 02:00:00:00:03:00 type veth peer name plug\n"
      "ip -n lan link set plug master lan up; ip netns add twin\n"
      "ip -n lan link set twin netns twin; ip -n twin link set twin up\n"
      "ip -n twin address add 192.168.50.1/24 dev twin; sleep 0.2");
  EXPECT_EQ(1, Probe("192.168.50.1 -F 020000000200"));
  EXPECT_EQ(0, Probe("192.168.50.1 -F 020000000200 02:00:00:00:03:00"));
  for (const char* const senseless :
       {"192.168.50.1 -I none", "192.168.50.1 -I none -F 020000000200", "192.168.50.1 -F",
        "192.168.50.1 -F 02000000020", "-w 0 192.168.50.1 -F 020000000200"})
    EXPECT_EQ(2, Probe(senseless)) << senseless;
}

// ---- interfaces that are made of others

TEST(Interfaces, ABridgeTakesItsPortsAndGivesThemBack) {
  WriteIfcfg("br0",
             "DEVICE=br0\nTYPE=bridge\nPRIMARY=eth2\nBOOTPROTO=static\nIPADDR=192.168.50.20\n"
             "NETMASK=255.255.255.0\n");
  WriteIfcfg("eth1", "DEVICE=eth1\nBOOTPROTO=dhcp\nBRIDGE=br0\n");
  WriteIfcfg("eth2", "DEVICE=eth2\nBOOTPROTO=dhcp\nBRIDGE=br0\n");
  WriteIfcfg("eth3.saved", "DEVICE=eth3\nBRIDGE=br0\n");
  ASSERT_EQ("status 0\n", StatusOf("/etc/rc.network start br0 eth1 eth2"));
  EXPECT_EQ("eth1\neth2\n", Shell("ls /sys/class/net/br0/brif"));
  EXPECT_EQ("02:00:00:00:00:12\n", ReadFile("/sys/class/net/br0/address"));
  EXPECT_EQ(0, Status("ping -c 1 -w 5 192.168.50.1")) << Shell("ip address");
  EXPECT_EQ("", Shell("ip -4 address show dev eth1"));
  ASSERT_EQ("status 0\n", StatusOf("/etc/rc.network stop eth1 eth2 br0"));
  EXPECT_FALSE(FileExists("/sys/class/net/br0"));

  // A port stays one whatever its file says.
  WriteIfcfg("eth3", "DEVICE=eth3\nTYPE=bridge\nBONDING_OPTS=\"mode=1\"\n");
  EXPECT_EQ("status 0\n", StatusOf("/etc/rc.network stop eth3"));
  EXPECT_TRUE(FileExists("/sys/class/net/eth3"));

  // Without the bridge's file, and with the ports' own settings again.
  RemoveFile(IfcfgPath("br0"));
  WriteIfcfg("eth1",
             "DEVICE=eth1\nBOOTPROTO=static\nIPADDR=192.168.50.21\nNETMASK=255.255.255.0\n");
  WriteIfcfg("eth2", "DEVICE=eth2\nBOOTPROTO=dhcp\n");
  EXPECT_EQ("rc.network: br0: no such interface\nstatus 1\n",
            StatusOf("/etc/rc.network start br0 eth1 eth2"));
  EXPECT_TRUE(Contains(Shell("ip -4 address show dev eth1"), "192.168.50.21/24"));
  EXPECT_TRUE(Contains(Shell("ip -4 address show dev eth2"), "inet 192.168.50.1"));
}

// A kernel without the drivers says so. With them the rest is the same for every kind of device: in
// the second half a stand-in for "ip" notes what is asked for and makes a bridge and a MAC VLAN.
TEST(Interfaces, ABondAndAVlanAreMadeFromTheirFiles) {
  if (FileExists("/proc/net/vlan") || FileExists("/sys/class/net/bonding_masters")) {
    GTEST_SKIP() << "this kernel has the drivers";
  }
  WriteIfcfg("bond0",
             "DEVICE=bond0\nONBOOT=yes\n"
             "BONDING_OPTS=\"mode=4 use_carrier=0 miimon=100 updelay=100 lacp_rate=fast\"\n"
             "BOOTPROTO=dhcp\n");
  WriteIfcfg("eth1", "DEVICE=eth1\nBOOTPROTO=dhcp\nUSERCTL=no\nMASTER=bond0\nSLAVE=yes");
  WriteIfcfg("eth2", "DEVICE=eth2\nBOOTPROTO=dhcp\nUSERCTL=no\nMASTER=bond0\nSLAVE=yes");
  WriteIfcfg("bond0.7",
             "DEVICE=bond0.7\nVLAN_ROW_DEVICE=bond0\nVLAN_ID=7\nONBOOT=yes\nBOOTPROTO=static\n"
             "IPADDR=192.168.70.1\nNETMASK=255.255.255.0\n");
  EXPECT_EQ("rc.network: bond0: cannot make the bond: this kernel has no driver for it\nstatus 1\n",
            StatusOf("/etc/rc.network start bond0 eth1 eth2"));
  EXPECT_EQ("rc.network: bond0.7: no interface bond0 to make the VLAN on\nstatus 1\n",
            StatusOf("/etc/rc.network start bond0.7"));
  EXPECT_EQ("status 0\n", StatusOf("/etc/rc.network stop bond0 eth1 eth2"));

  WriteFile(
      "/usr/sbin/ip",
      "#!/bin/bash\n"
      "[[ \"$1 $2\" != 'link add' ]] || echo \"$*\" >>/tmp/made\n"
      "[[ \"$*\" != *'type bond'* ]] || set -- link add name \"$4\" type bridge\n"
      "[[ \"$*\" != *'type vlan'* ]] || set -- link add link \"$4\" name \"$6\" type macvlan\n"
      "exec /host/usr/sbin/ip \"$@\"\n",
      0755);
  ASSERT_EQ("status 0\n", StatusOf("/etc/rc.network start bond0.7 bond0 eth1 eth2"));
  EXPECT_EQ(
      "link add name bond0 type bond mode 4 use_carrier 0 miimon 100 updelay 100 lacp_rate fast\n"
      "link add link bond0 name bond0.7 type vlan id 7\n",
      ReadFile("/tmp/made"));
  EXPECT_EQ("eth1\neth2\n", Shell("ls /sys/class/net/bond0/brif"));
  EXPECT_TRUE(Contains(Shell("ip -4 address show dev bond0"), "inet 192.168.50.1"));
  EXPECT_TRUE(Contains(Shell("ip -4 address show dev bond0.7"), "192.168.70.1/24"));
  EXPECT_EQ("", Shell("ip -4 address show dev eth1; ip -4 address show dev eth2"));
  ASSERT_EQ("status 0\n", StatusOf("/etc/rc.network stop bond0 eth1 eth2 bond0.7"));
  EXPECT_EQ("eth0\neth1\neth2\neth3\nlo\n", Shell("ls /sys/class/net"));
}
