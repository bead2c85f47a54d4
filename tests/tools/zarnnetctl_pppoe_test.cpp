// zarnnetctl pppoe and pppoe-relay.
#include "ctl.h"

using namespace test;
using nlohmann::json;

namespace {

const char kSecrets[] = "/etc/ppp/pap-secrets";
const char kInfo[] = "/etc/zarninfo.conf";

}  // namespace

TEST(Pppoe, WhatIsNotNamedStaysAndThePasswordIsNeverShown) {
  const std::string secret = "Tr0ub4dor&3";
  WriteFile("/etc/ppp/pppoe.conf", "# kept\n");
  WriteFile("/root/secret", secret + "\nsecond line\n", 0600);
  RemoveFile(kSecrets);
  EXPECT_EQ("0x0D00", Error("pppoe set --user bob", kFailed)["code"]);
  EXPECT_EQ("0xBC00", Error("pppoe set --interface eth9 --user bob", kFailed)["code"]);
  EXPECT_EQ("# kept\n", ReadFile("/etc/ppp/pppoe.conf"));
  EXPECT_FALSE(FileExists(kSecrets));
  json wanted{{"interface", "eth1"},
              {"user", "bob@isp"},
              {"has_password", true},
              {"mtu", "1492"},
              {"default_route", false}};
  EXPECT_EQ(
      wanted,
      Payload("pppoe set --interface eth1 --user bob@isp --password-file /root/secret", "pppoe"));
  const std::string stored = ReadFile(kSecrets);
  EXPECT_TRUE(Contains(stored, secret));
  wanted["mtu"] = "1452";
  wanted["default_route"] = true;
  EXPECT_EQ(wanted, Payload("pppoe set --mtu 1452 --default-route", "pppoe"));
  ExpectDone("pppoe set --interface eth1");
  EXPECT_EQ(wanted, Payload("pppoe get", "pppoe"));
  EXPECT_EQ(stored, ReadFile(kSecrets));
  const Outcome shown = Ctl("pppoe get");
  EXPECT_TRUE(Contains(shown.out, "stored")) << shown.out;
  EXPECT_FALSE(Contains(shown.out + shown.err, secret));
  WriteFile("/root/secret", "another\n", 0600);
  ExpectDone("pppoe set --no-default-route --password-file - </root/secret");
  EXPECT_TRUE(Contains(ReadFile(kSecrets), "another"));
  EXPECT_EQ(json(false), Payload("pppoe get", "pppoe")["default_route"]);
  for (const char* words :
       {"", " --mtu 1501", " --default-route --no-default-route", " --password x"})
    EXPECT_EQ("usage", Error(std::string("pppoe set") + words, kUsage)["what"]) << words;
}

TEST(Pppoe, AStartThatFailsSaysWhyAndTheStatusTellsTheLink) {
  WriteFile("/etc/ppp/pppoe.conf", "ETH=eth1\nUSER='bob'\nMTU=1492\n");
  WriteFile(kSecrets, "'bob'\t*\t'pass'\n", 0600);
  WriteFile(kInfo, "");
  RecordTool("/usr/sbin/pppoe-stop");
  RecordTool("/usr/sbin/pppoe-start", 19);
  ExpectFailure("pppoe start", "cannot start PPPoE: the start script ended with status 19");
  RecordTool("/usr/sbin/pppoe-start", 1);
  ExpectFailure("pppoe start", "cannot start PPPoE: the start script failed; see the system log");
  const json down{{"enabled", false}, {"running", false}, {"interface", {}}, {"address", {}}};
  EXPECT_EQ(down, Payload("pppoe status", "pppoe_status"));
  WriteFile(kSecrets, "", 0600);
  ExpectFailure("pppoe start",
                "cannot start PPPoE: no account is stored; see zarnnetctl pppoe set");
  RecordTool("/usr/sbin/pppoe-start");
  Shell(
      "ip link add ppp7 type bridge; ip address add 203.0.113.7/32 dev ppp7; ip link set ppp7 up");
  RecordTool("/usr/sbin/pppoe-status", 0, "ppp7 Link encap:Point-to-Point Protocol\n");
  const json up{{"enabled", true},
                {"running", false},
                {"interface", "ppp7"},
                {"address", {{"ip", "203.0.113.7"}, {"mask", "255.255.255.255"}}}};
  EXPECT_EQ(up, Payload("pppoe start", "pppoe_status"));
  EXPECT_TRUE(Contains(Ctl("pppoe status").out, "203.0.113.7/32"));
  ExpectDone("pppoe stop");
  EXPECT_EQ(json(false), Payload("pppoe status", "pppoe_status")["enabled"]);
  EXPECT_EQ("/usr/sbin/pppoe-stop", RecordedCalls().back());
}

TEST(PppoeRelay, IsStoredAppliedAndCleared) {
  json wanted{{"name", "eth1"}, {"enabled", true}, {"server", "eth0"}, {"running", false}};
  EXPECT_EQ("0x0D00", Error("pppoe-relay set eth1 --enable", kFailed)["code"]);
  EXPECT_EQ("0x0D00", Error("pppoe-relay set eth1 --enable --server eth1", kFailed)["code"]);
  EXPECT_EQ("0xBC00", Error("pppoe-relay get eth9", kFailed)["code"]);
  EXPECT_EQ(wanted, Payload("pppoe-relay set eth1 --server eth0 --enable", "pppoe_relay"));
  ExpectDone("pppoe-relay apply eth1");
  EXPECT_EQ(json(), Payload("pppoe-relay apply", "pppoe_relays_applied"));
  wanted["enabled"] = false;
  EXPECT_EQ(wanted, Payload("pppoe-relay set eth1 --disable", "pppoe_relay"));
  EXPECT_EQ("usage", Error("pppoe-relay set eth1", kUsage)["what"]);
  ExpectDone("pppoe-relay clear");
  EXPECT_EQ(Lines{}, FolderEntries("/etc/sysconfig/pppoe-relay"));
}
