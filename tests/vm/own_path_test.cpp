// SPDX-License-Identifier: Apache-2.0
// Who came over a bond or a VLAN does not saw it off: each such wish is refused with the reason,
// unless it is to be confirmed.
#include <zarnnetchange/change.h>

#include "machine.h"
#include "support/session.h"

using namespace test;

namespace {

// What of the check's findings speaks of the session; empty for nothing.
std::string OwnPathFinding(const std::string& wish, const char* options) {
  char* text = nullptr;
  const int result = ZARNNetChangeCheck(wish.c_str(), options, &text);
  const auto report = nlohmann::json::parse(text != nullptr ? text : "{}");
  ZARNNetChangeFree(text);
  for (const auto& finding : report.value("findings", nlohmann::json::array())) {
    if (finding["rule"] != "own_path") continue;
    EXPECT_EQ(result, ZARNNETCHANGE_REFUSED) << wish;
    return finding["sentence"];
  }
  return {};
}

struct Row {
  const char* wish;
  const char* cuts;  // what it is that goes; empty for a wish that leaves the session alone
};

void ExpectGuarded(const std::string& address, const std::vector<Row>& rows) {
  ASSERT_TRUE(SecondHostReaches(address)) << Shell("ip -d address");
  const NeighboursSession session(address);
  for (const Row& row : rows) {
    const std::string found = OwnPathFinding(row.wish, R"({"probe":false})");
    EXPECT_EQ(found.substr(0, found.find(',')), row.cuts) << row.wish << " " << found;
    EXPECT_EQ(OwnPathFinding(row.wish, R"({"probe":false,"confirm":60})"), "") << row.wish;
  }
}

}  // namespace

TEST(OwnPath, OverABond) {
  WriteIfcfg("bond0",
             "DEVICE=bond0\nONBOOT=yes\nBOOTPROTO=static\nIPADDR=192.168.50.10\n"
             "NETMASK=255.255.255.0\nBONDING_OPTS=\"mode=1 miimon=100\"\n");
  for (const std::string slave : {"eth0", "eth1"})
    WriteIfcfg(slave, "DEVICE=" + slave + "\nONBOOT=yes\nMASTER=bond0\nSLAVE=yes\n");
  Do("ip link add bond0 type bond miimon 100 mode active-backup;"
     "for port in eth0 eth1; do ip link set $port down; ip link set $port master bond0; done;"
     "ip link set bond0 up; ip address add 192.168.50.10/24 dev bond0");
  ExpectGuarded("192.168.50.10",
                {{R"({"bonds":{"bond0":null}})", "it removes bond0"},
                 {R"({"bonds":{"bond0":{"slaves":["eth1","eth2"]}}})", "it makes anew bond0"},
                 {R"({"bridges":{"br0":{"ports":["bond0","eth2"]}}})",
                  "it makes bond0 part of the bridge br0"},
                 {R"({"vlans":{"bond0.7":{}}})", "it makes bond0 carry a VLAN alone"},
                 {R"({"interfaces":{"bond0":{"ipv4":{"address":"192.168.50.11"}}}})",
                  "it takes away the address 192.168.50.10 of bond0"},
                 {R"({"interfaces":{"eth1":{"up":false}}})", "it takes down eth1"},
                 {R"({"interfaces":{"eth2":{"up":true}}})", ""}});
}

TEST(OwnPath, OverAVlan) {
  WriteIfcfg("eth0", "DEVICE=eth0\nONBOOT=yes\nBOOTPROTO=none\n");
  WriteIfcfg("eth0.9",
             "DEVICE=eth0.9\nONBOOT=yes\nBOOTPROTO=static\nIPADDR=192.168.9.10\n"
             "NETMASK=255.255.255.0\nVLAN_ROW_DEVICE=eth0\nVLAN_ID=9\n");
  Do("ip link set eth0 up; ip link add link eth0 name eth0.9 type vlan id 9;"
     "ip link set eth0.9 up; ip address add 192.168.9.10/24 dev eth0.9");
  MakeTaggedSide(9, "192.168.9.1/24");
  ExpectGuarded("192.168.9.10", {{R"({"vlans":{"eth0.9":null}})", "it removes eth0.9"},
                                 {R"({"interfaces":{"eth0":{"up":false}}})", "it takes down eth0"},
                                 {R"({"interfaces":{"eth0.9":{"ipv4":{"method":"none"}}}})",
                                  "it takes away the address 192.168.9.10 of eth0.9"},
                                 {R"({"bridges":{"br0":{"ports":["eth0.9","eth2"]}}})",
                                  "it makes eth0.9 part of the bridge br0"},
                                 {R"({"interfaces":{"eth1":{"up":false}}})", ""}});
}
