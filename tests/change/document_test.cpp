// SPDX-License-Identifier: Apache-2.0
// The document: what is read from a machine that has everything set, and its schema.
#include <cstdlib>
#include <gtest/gtest.h>
#include <zarnnetchange/change.h>

#include "support/transcript.h"
#include "wish.h"

using namespace test;
using nlohmann::json;

namespace {

void SetEverything() {
  Mask(R"(^    [-+](.*\\x[0-9a-f][0-9a-f].*)$)", "CIPHER");
  MakeCipherKey();
  WriteIfcfg("eth0",
             "DEVICE=eth0\nONBOOT=yes\nBOOTPROTO=static\nIPADDR=192.168.50.10\n"
             "NETMASK=255.255.255.0\nIPV6INIT=static\nIPV6ADDR=fd00::10\n"
             "IPV6PREFIXLENG=64\nIPV6_DEFAULTGW=fd00::1\nBLOCK_HA=yes\nBLOCK_CNT=1\n");
  WriteIfcfg("eth1", "DEVICE=eth1\nMASTER=bond0\nSLAVE=yes\n");
  WriteIfcfg("eth2", "DEVICE=eth2\nMASTER=bond0\nSLAVE=yes\n");
  WriteIfcfg("bond0",
             "DEVICE=bond0\nBOOTPROTO=dhcp\nONBOOT=yes\n"
             "BONDING_OPTS=\"mode=4 use_carrier=0 miimon=100\"\n");
  WriteIfcfg("bond0.9", "DEVICE=bond0.9\nVLAN_ROW_DEVICE=bond0\nVLAN_ID=9\nBOOTPROTO=none\n");
  WriteIfcfg("eth3", "DEVICE=eth3\nBRIDGE=br0\n");
  WriteIfcfg("br0", "DEVICE=br0\nTYPE=bridge\nPRIMARY=eth3\nLOCAL_LAN=yes\nBOOTPROTO=none\n");
  WriteFile("/etc/sysconfig/network", "GATEWAY=192.168.50.1\n");
  WriteFile("/etc/resolv.conf.static", "nameserver 192.168.50.1\n");
  WriteFile("/etc/zarninfo.conf",
            "dns_mode=\"static\"\neth0_mtu=\"1400\"\npppoe_enable=\"no\"\n"
            "net_topology=\"bridge\"\nsupport_net_topology=\"yes\"\n");
  Make(
      R"({"pppoe":{"interface":"eth0","user":"bob","password":"Hidden.1"},)"
      R"("tunnel":{"server":"broker.example","user":"bob","password":"Hidden.2"},)"
      R"("pppoe_relay":{"eth0":{"enabled":false,"server":"eth3"}},)"
      R"("dhcp_server":{"vendors":{"Example":{"43":"01:04:00"}},)"
      R"("network_boot":{"enabled":true,"remote":true,"remote_loader":"pxe.0","server":"192.168.50.2"},)"
      R"("interfaces":{"eth0":{"ipv6":{"subnets":{"0":{"mode":"stateful","start":"fd00::100",)"
      R"("end":"fd00::200","dns":["fd00::1"]}}},"ipv4":{"subnets":{"0":{"prefix":24,)"
      R"("start":"192.168.50.100","end":"192.168.50.150","router":"192.168.50.1",)"
      R"("domain":"lan.example","dns":["192.168.50.1"],"options":{"mtu":1400,)"
      R"("nis-domain":"nis.example","ntp-server":["192.168.50.2"]}}},)"
      R"("tagged":{"guests":{"prefix":24,"start":"192.168.50.200","end":"192.168.50.210",)"
      R"("router":"192.168.50.1","domain":"guests.example","dns":["192.168.50.1"]}}}}}}})");
}

std::string Schema() {
  char* text = nullptr;
  EXPECT_EQ(ZARNNetChangeSchema(&text), ZARNNETCHANGE_DONE);
  std::string schema = text != nullptr ? text : "";
  ZARNNetChangeFree(text);
  return schema + "\n";
}

}  // namespace

TEST(Document, EveryFieldIsReadAndTheSchemaKnowsIt) {
  SetEverything();
  const json state = State(R"({"view":"both","secrets":true})");
  WriteFile("/tmp/configured", state["configured"].dump());
  WriteFile("/tmp/live", state["live"].dump());
  Say(state["configured"].dump(1));
  Say(Shell(ZARNNET_VALIDATE " " ZARNNET_SCHEMA " /tmp/configured /tmp/live"));
}

TEST(Document, TheSchemaIsTheOneThatIsInstalled) {
  if (std::getenv("ZARNNET_GOLDEN") != nullptr) WriteFile(ZARNNET_SCHEMA, Schema());
  EXPECT_EQ(ReadFile(ZARNNET_SCHEMA), Schema());
}

// What was read is wished: nothing is there to do, whatever the kernel lacks.
TEST(Document, IsTakenBackAndChangesNothing) {
  WriteIfcfg("eth0",
             "DEVICE=eth0\nONBOOT=yes\nBOOTPROTO=static\nIPADDR=192.168.50.10\n"
             "NETMASK=255.255.255.0\n");
  for (const char* ifname : {"eth1", "eth2", "eth3"})
    WriteIfcfg(ifname, "BOOTPROTO=none\n");
  BringUp("eth0");
  Shell("ip address add 192.168.50.10/24 dev eth0");
  Make(R"({"host":{"name":"nas"},"dns":{"servers":["192.168.50.1"]},)"
       R"("routes":{"gateway":"192.168.50.1"},"bridges":{"br0":{"ports":["eth3"]}},)"
       R"("interfaces":{"br0":{"ipv4":{"address":"10.3.0.1","prefix":24}}}})");
  char* report = nullptr;
  EXPECT_EQ(ZARNNetChangeCompare(State().dump().c_str(), nullptr, &report), ZARNNETCHANGE_DONE)
      << report;
  ZARNNetChangeFree(report);
  Tell("the whole document", [] {
    return ZARNNetChangeApply(State().dump().c_str(), nullptr, nullptr, nullptr, nullptr);
  });
}
