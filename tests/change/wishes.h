// SPDX-License-Identifier: Apache-2.0
// Wishes that together lead to every setter, for all tests of what wishes do.
#pragma once

#include <string>
#include <vector>

namespace test {

struct Wish {
  std::string wish;
  std::string options = "{}";
  const char* before = nullptr;  // a command line that comes first and says what it does
  bool tellsNetwork = false;     // what the network is afterwards is of interest
};

namespace wishes {

inline const std::vector<Wish> kNames{
    {R"({"host":{"name":"nas"},"dns":{"servers":["192.168.50.1","2001:db8::53"]},)"
     R"("routes":{"gateway":"192.168.50.1"}})"},
    {R"({"host":{"name":"nas"},"dns":{"mode":"static"},"routes":{"gateway":"192.168.50.1"}})"},
    {R"({"dns":null,"routes":{"gateway":null}})"}};

inline const std::vector<Wish> kLease{{R"({"interfaces":{"eth1":{"ipv4":{"method":"dhcp"}}}})"},
                                      {R"({"interfaces":{"eth1":{"ipv4":null}}})"}};

inline const std::vector<Wish> kIpv6{
    {R"({"interfaces":{"eth0":{"ipv6":{"method":"static","address":"fd00::10","prefix":64}}}})"},
    {R"({"interfaces":{"eth0":{"ipv6":{"method":"auto"}}}})"}};

// Of drivers that not every kernel has.
inline const char kBond[] =
    R"({"bonds":{"bond0":{"mode":"active-backup","slaves":["eth2","eth3"]}}})";
inline const std::vector<Wish> kBonds{{kBond},
                                      {R"({"vlans":{"eth0.7":{}}})"},
                                      {kBond, R"({"keep":true})"},
                                      {kBond},
                                      {R"({"bonds":{"bond0":null}})", R"({"keep":true})"}};

inline const std::vector<Wish> kBridge{
    {R"({"bridges":{"br0":{"ports":["eth0","eth1"]}}})", "{}", nullptr, true},
    {R"({"bridges":{"br0":{"ports":["eth0"]}}})"},
    {R"({"bridges":{"br0":null}})", "{}", nullptr, true}};

// An address goes from a port to the bridge over it with what the DHCP server has for the port, two
// bridges exchange ports, one's port becomes the other's, and all is taken apart.
inline const std::vector<Wish> kMoves{
    {R"({"dhcp_server":{"enabled":true,"interfaces":{"eth0":{"ipv4":{"subnets":{"0":{"prefix":24,)"
     R"("start":"192.168.50.100","end":"192.168.50.150","options":{"mtu":1400}}}}}}}})"},
    {R"({"dhcp_server":{"interfaces":{"eth0":{"ipv4":{"enabled":false}},"br0":{"ipv4":{"subnets":)"
     R"({"0":{"prefix":24,"start":"192.168.50.100","end":"192.168.50.150"}}}}}},)"
     R"("interfaces":{"eth0":{"ipv4":null},"br0":{"ipv4":{"address":"192.168.50.10","prefix":24}}},)"
     R"("bridges":{"br0":{"ports":["eth0","eth1"]},"a0":{"ports":["eth2","eth3"]}}})"},
    {R"({"bridges":{"br0":{"ports":["eth0","eth2"]},"a0":{"ports":["eth1","eth3"]}}})"},
    {R"({"bridges":{"br0":{"ports":["eth0"]},"a0":{"ports":["eth2","eth3"]}}})"},
    {R"({"bridges":{"br0":null,"a0":{"ports":["eth0","eth2","eth3"]}},"interfaces":{"br0":null,)"
     R"("a0":{"ipv4":{"address":"192.168.50.10","prefix":24}}},"dhcp_server":{"interfaces":)"
     R"({"br0":{"ipv4":{"enabled":false}}}}})"}};

inline const std::vector<Wish> kAddress{
    {R"({"interfaces":{"eth0":{"ipv4":{"address":"192.168.50.11"}}}})"},
    {R"({"interfaces":{"eth0":{"mtu":1400,"block":["ha"],"on_boot":false}}})"},
    {R"({"interfaces":{"eth0":{"ipv4":{"method":"none"},"block":null}}})", R"({"insist":true})"}};

inline const std::vector<Wish> kLinks{
    {R"({"interfaces":{"eth2":{"up":true}}})"},
    {R"({"interfaces":{"eth2":{"up":false}}})"},
    {"{}", R"({"restart":["/interfaces/eth0"]})"},
    {R"({"vlans":{"eth0.7":{}}})", R"({"keep":true})"},
    {R"({"vlans":{"eth0.7":null}})", R"({"keep":true})"},
    {R"({"topology":{"name":"bridge"}})", R"({"keep":true,"insist":true})",
     R"(echo 'support_net_topology="yes"' >>/etc/zarninfo.conf;)"
     R"(echo 'net_topology="router"' >>/etc/zarninfo.conf)"}};

// Settings of the DHCP server that no other wish here has.
inline const std::vector<Wish> kDhcpSettings{
    {R"({"dhcp_server":{"network_boot":{"enabled":true,"remote":true,"remote_loader":"pxe.0",)"
     R"("server":"192.168.50.2"},"interfaces":{"eth0":{"ipv4":{"tagged":{"guests":{"prefix":24,)"
     R"("start":"192.168.50.200","end":"192.168.50.210"}}}}}}})"}};

inline const std::vector<Wish> kDhcpServer{
    {R"({"dhcp_server":{"enabled":true,"vendors":{"Example":{"43":"01:04:00"}},)"
     R"("interfaces":{"eth0":{"ipv4":{"subnets":{"0":{"prefix":24,"start":"192.168.50.100",)"
     R"("end":"192.168.50.150","router":"192.168.50.1","dns":["192.168.50.1"],)"
     R"("options":{"mtu":1400,"ntp-server":["192.168.50.1","192.168.50.2"]}}}}}}}})"},
    {"{}", R"({"restart":["/dhcp_server"]})"},
    {R"({"dhcp_server":{"interfaces":{"eth0":{"ipv4":{"subnets":{"0":{"options":{"mtu":null}}}}}}}})"},
    {R"({"dhcp_server":{"enabled":false}})"}};

inline const std::vector<Wish> kServices{
    {R"({"pppoe":{"interface":"eth1","user":"bob","password":"Hidden.1","default_route":true}})"},
    {R"({"pppoe_relay":{"eth0":{"enabled":true,"server":"eth1"}}})"},
    {R"({"pppoe_relay":{"eth0":{"enabled":false}}})"},
    {R"({"tunnel":{"server":"broker.example","user":"bob","password":"Hidden.2"}})"},
    {R"({"pppoe":{"enabled":true}})"},
    {"{}", R"({"restart":["/pppoe"]})"},
    {R"({"pppoe":{"enabled":false}})"},
    {R"({"tunnel":{"enabled":true}})", "{}",
     "echo silent >/etc/gogoc/broker; echo the broker does not answer"},
    {R"({"tunnel":{"enabled":false}})"}};

}  // namespace wishes
}  // namespace test
