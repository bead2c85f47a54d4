// SPDX-License-Identifier: Apache-2.0
// What is refused before anything is touched, and with what words; a wish a line, the answers in
// the golden text.
#include <gtest/gtest.h>

#include "support/transcript.h"
#include "wish.h"

using namespace test;

namespace {

std::string Ipv4(const std::string& ifname, const std::string& fields) {
  return R"({"interfaces":{")" + ifname + R"(":{"ipv4":{)" + fields + "}}}}";
}

// eth0 and eth1 with fixed addresses, the default route over eth0.
void SetUpPorts() {
  WriteIfcfg("eth0",
             "DEVICE=eth0\nONBOOT=yes\nBOOTPROTO=static\nIPADDR=192.168.50.10\n"
             "NETMASK=255.255.255.0\n");
  WriteIfcfg("eth1",
             "DEVICE=eth1\nONBOOT=yes\nBOOTPROTO=static\nIPADDR=10.1.0.1\n"
             "NETMASK=255.255.0.0\n");
  BringUp("eth0");
  Shell(
      "ip address add 192.168.50.10/24 dev eth0; ip address add 10.1.0.1/16 dev eth1;"
      "ip link set eth1 up; ip route add default via 192.168.50.1 dev eth0");
}

}  // namespace

TEST(Rules, DocumentsThatCannotBeMeant) {
  for (const char* wish : {
           "{\"host\":",
           "[]",
           R"({"hosts":{"name":"x"}})",
           R"({"host":{"name":"a b"}})",
           R"({"host":{"name":null}})",
           R"({"interfaces":{"eth0":{"ipv4":{"metod":"dhcp"}}}})",
           R"({"interfaces":{"eth0":{"ipv4":{"method":"dhpc"}}}})",
           R"({"interfaces":{"eth0":{"ipv4":{"method":"dhcp","address":"1.2.3.4","prefix":8}}}})",
           R"({"interfaces":{"eth0":{"ipv4":{"address":"300.1.1.1","prefix":24}}}})",
           R"({"interfaces":{"eth0":{"ipv4":{"address":"10.0.0.1","prefix":0}}}})",
           R"({"interfaces":{"eth0":{"ipv4":{"address":"10.0.0.1","prefix":"24"}}}})",
           R"({"interfaces":{"eth2":{"ipv4":{"address":"10.0.0.1"}}}})",
           R"({"interfaces":{"eth0":{"mtu":18446744073709551615}}})",
           R"({"interfaces":{"eth0":{"link":{"mac":"02:00:00:00:00:99"}}}})",
           R"({"interfaces":{"a-name-that-is-too-long":{"up":true}}})",
           R"({"interfaces":{"eth0":null}})",
           R"({"bonds":{"bond0":{"mode":"balance-slb","slaves":["eth2","eth2"]}}})",
           R"({"vlans":{"eth0.7":{"parent":"eth1"}}})",
           R"({"dns":{"servers":[]}})",
           R"({"dns":{"servers":["192.168.50.1\nnameserver 6.6.6.6"]}})",
           R"({"pppoe":{"password":"longer than the thirty-one characters"}})",
       })
    Ask(wish);
  Ask("{}", R"({"insits":true})");
  Ask("{}", R"({"restart":["dhcp_server"]})");
}

TEST(Rules, Addresses) {
  SetUpPorts();
  Ask(R"({"interfaces":{"lo":{"ipv4":{"address":"10.0.0.1","prefix":24}}}})");
  Ask(Ipv4("eth2", R"("address":"10.9.0.1","netmask":"255.0.255.0")"));
  Ask(Ipv4("eth2", R"("address":"10.9.0.1","netmask":"0.0.0.0")"));
  Ask(Ipv4("eth2", R"("address":"10.9.0.0","prefix":24)"));
  Ask(Ipv4("eth2", R"("address":"10.9.0.255","prefix":24)"));
  Ask(Ipv4("eth2", R"("address":"10.9.0.0","prefix":31)"));
  Ask(Ipv4("eth2", R"("address":"224.0.0.5","prefix":24)"));
  Ask(Ipv4("eth2", R"("address":"10.1.0.1","prefix":16)"));
  Ask(Ipv4("eth2", R"("address":"10.1.7.7","prefix":24)"));
  Ask(Ipv4("eth2", R"("address":"10.1.7.7","prefix":24)"), R"({"insist":true})");
  Ask(Ipv4("eht2", R"("address":"10.9.0.1","prefix":24)"));
  Shell("ip route del default");
  Ask(Ipv4("eth0", R"("address":"192.168.50.1")"));
  Ask(Ipv4("eth0", R"("address":"192.168.50.1")"), R"({"probe":false})");
}

TEST(Rules, Gateways) {
  SetUpPorts();
  Ask(R"({"routes":{"gateway":"192.168.50.10"}})");
  Ask(R"({"routes":{"gateway":"172.16.0.1"}})");
  Ask(R"({"routes":{"gateway":"10.1.0.254"}})");
  Ask(Ipv4("eth0", R"("address":"172.16.0.9","prefix":24)"));
  Ask(R"({"interfaces":{"eth0":{"ipv4":{"address":"172.16.0.9","prefix":24}}},)"
      R"("routes":{"gateway":"172.16.0.1"}})",
      R"({"probe":false})");
  Ask(Ipv4("eth0", R"("method":"dhcp")"));
}

TEST(Rules, MembersParentsAndNames) {
  SetUpPorts();
  WriteIfcfg("eth2", "DEVICE=eth2\nMASTER=bond0\nSLAVE=yes\n");
  WriteIfcfg("eth3", "DEVICE=eth3\nMASTER=bond0\nSLAVE=yes\n");
  WriteIfcfg("bond0", "DEVICE=bond0\nBONDING_OPTS=\"mode=1 miimon=100\"\nBOOTPROTO=dhcp\n");
  WriteIfcfg("eth1.7", "DEVICE=eth1.7\nVLAN_ROW_DEVICE=eth1\nVLAN_ID=7\nBOOTPROTO=dhcp\n");
  Ask(Ipv4("eth2", R"("address":"10.9.0.1","prefix":24)"));
  Ask(Ipv4("eth1", R"("address":"10.9.0.1","prefix":24)"));
  Ask(R"({"bonds":{"bond1":{"mode":"802.3ad","slaves":["eth0","eth2"]}}})");
  Ask(R"({"bonds":{"bond1":{"mode":"802.3ad","slaves":["eth0","eth1"]}}})");
  Ask(R"({"bonds":{"bond1":{"mode":"802.3ad","slaves":["eth0","eth9"]}}})");
  Ask(R"({"bonds":{"bond1":{"mode":"802.3ad","slaves":["eth0"]}}})");
  Ask(R"({"bonds":{"eth3":{"mode":"802.3ad","slaves":["eth0","eth2"]}}})");
  Ask(R"({"bonds":{"bond9":null}})");
  Ask(R"({"vlans":{"eth2.8":{}}})");
  Ask(R"({"vlans":{"eth1.8":{}}})");
  Ask(R"({"vlans":{"eth1.7.8":{}}})");
  Ask(R"({"vlans":{"eth9.8":{}}})");
  Ask(R"({"vlans":{"bond0.9":{}},"bonds":{"bond0":null}})");
  Ask(R"({"bridges":{"br0":{"ports":["eth0","eth2"]}}})");
  Ask(R"({"bridges":{"br0":{"ports":["eth0"],"primary":"eth3"}}})");
  Ask(R"({"topology":{"name":"router"}})");
}

TEST(Rules, Mtu) {
  SetUpPorts();
  WriteIfcfg("eth1.7", "DEVICE=eth1.7\nVLAN_ROW_DEVICE=eth1\nVLAN_ID=7\nBOOTPROTO=dhcp\n");
  WriteIfcfg("eth0",
             "BOOTPROTO=static\nIPADDR=192.168.50.10\nNETMASK=255.255.255.0\nIPV6INIT=auto\n");
  Ask(R"({"interfaces":{"eth0":{"mtu":67}}})");
  Ask(R"({"interfaces":{"eth0":{"mtu":1279}}})");
  Ask(R"({"interfaces":{"eth0":{"mtu":1279,"ipv6":{"method":"off"}}}})");
  Ask(R"({"interfaces":{"eth1":{"mtu":1400}}})");
  Ask(R"({"interfaces":{"eth1":{"mtu":1400},"eth1.7":{"mtu":1400}}})");
}

TEST(Rules, DhcpServer) {
  SetUpPorts();
  const auto ask = [](const std::string& ifname, const std::string& fields,
                      const std::string& options = "{}") {
    Ask(R"({"dhcp_server":{"interfaces":{")" + ifname + R"(":{"ipv4":{"subnets":{"0":{)" + fields +
            "}}}}}}}",
        options);
  };
  const std::string inside = R"("prefix":16,"start":"10.1.1.1","end":"10.1.1.99")";
  ask("eth1", inside);
  ask("nosuch", inside);
  ask("eth2", inside);
  ask("eth1", R"("prefix":24,"start":"172.16.0.5","end":"172.16.0.9")");
  ask("eth1", R"("prefix":16,"start":"10.1.1.9","end":"10.1.1.1")");
  ask("eth1", R"("prefix":16,"start":"10.1.0.1","end":"10.1.0.9")");
  ask("eth1", R"("prefix":16,"start":"10.1.255.1","end":"10.1.255.255")");
  ask("eth1", R"("start":"10.1.1.1","end":"10.1.1.99")");
  ask("eth1", inside + R"(,"router":"192.168.1.1")");
  ask("eth1", inside + R"(,"router":"10.1.1.50")");
  ask("eth1", inside + R"(,"options":{"mtu":67})");
  ask("eth1", inside + R"(,"options":{"netbios-nodetype":3})");
  ask("eth1", inside + R"(,"options":{"policy-filter":["10.0.0.0"]})");
  ask("eth1", inside + R"(,"options":{"ntp-server":[]})");
  ask("eth1", inside + R"(,"options":{"ntp-sever":["10.1.0.1"]})");
  Ask(R"({"dhcp_server":{"interfaces":{"eth1":{"ipv4":{"subnets":{"3":{}}}}}}})");
  Ask(R"({"dhcp_server":{"interfaces":{"eth1":{"ipv6":{"subnets":{"0":{}}}}}}})");
  Ask(R"({"dhcp_server":{"interfaces":{"eth1":{"ipv4":{"subnets":{"0":null}}}}}})");
  Ask("{}", R"({"restart":["/dhcp_server"]})");
  Ask("{}", R"({"restart":["/interfaces/eth9"]})");
  Ask("{}", R"({"restart":["/interfaces/eth1"]})");
}

// The server is asked in a copy of the machine, with the settings as they would be.
TEST(Rules, TheDhcpServersOwnCheckIsAsked) {
  SetUpPorts();
  WriteFile("/etc/dhcpd/dhcpd.info", "enable=\"yes\"\n");
  const auto wish = [](const std::string& domain) {
    return R"({"dhcp_server":{"interfaces":{"eth1":{"ipv4":{"subnets":{"0":{"prefix":16,)"
           R"("start":"10.1.1.1","end":"10.1.1.99","domain":")" +
           domain + R"("}}}}}}})";
  };
  const std::string refused = wish(std::string(64, 'a') + ".lan");
  Ask(wish("nas.lan"));
  Make(refused);
  Ask(wish("\\\""));
  Shell("mount --bind /dev/null /usr/sbin/dnsmasq");
  Ask(refused);
}
