// SPDX-License-Identifier: Apache-2.0
// Verbs of services: the DHCP server, PPPoE and its relay, the tunnel.
#include "ctl.h"
#include "support/transcript.h"

using namespace test;

TEST(Services, WrongUsageIsTwoAndSaysWhereHelpIs) {
  TypeSession();
}

TEST(Dhcpd, ASubnetGoesInAndOutAsOptionsAndAsJson) {
  TypeSession();
}

TEST(Dhcpd, SwitchesClassesAndNetworkBootAreStored) {
  WriteFile("/etc/dhcpd/dhcpd.info", "enable=\"yes\"\n");
  RecordTool("/etc/rc.network");
  WriteIfcfg("eth1", "");
  for (const char* name : {"eth1", "eth1.7", "eth1.", ".eth1", "eth1-subnet0.7"})  // two interfaces
    WriteFile("/etc/dhcpd/dhcpd-" + std::string(name) + ".info", "enable=\"yes\"\n");
  WriteFile("/etc/dhcpd/dhcpd-eth1-subnet0.conf",
            "dhcp-range=set:eth10,10.0.0.50,10.0.0.60,255.0.0.0,3600\n");
  TypeSession();
}

TEST(Pppoe, WhatIsNotNamedStaysAndThePasswordIsNeverShown) {
  WriteFile("/etc/ppp/pppoe.conf", "# kept\n");
  RemoveFile("/etc/ppp/pap-secrets");
  WriteFile("/root/secret", "Tr0ub4dor&3\nsecond line\n", 0600);
  TypeSession();
}

TEST(Pppoe, AStartThatFailsSaysWhyAndTheStatusTellsTheLink) {
  WriteFile("/etc/ppp/pppoe.conf", "ETH=eth1\nUSER='bob'\nMTU=1492\n");
  RecordTool("/usr/sbin/pppoe-start", 1);
  RecordTool("/usr/sbin/pppoe-status", 0, "ppp7 Link encap:Point-to-Point Protocol\n");
  TypeSession();
}

TEST(PppoeRelay, IsStoredAppliedAndCleared) {
  TypeSession();
}

TEST(Tunnel, ThePasswordGoesInByAFileOrStandardInputAndIsNeverShown) {
  WriteFile("/root/secret", "Tr0ub4dor&3\nsecond line\n", 0600);
  WriteFile("/etc/zarncore/cipher.key", std::string(32, 'k'), 0600);
  WriteFile("/root/long", std::string(32, 'p'), 0600);
  Mask("^(  [a-z]* /run/gogoc.pid.*)$", "");
  Mask("^(    [+][0-9]*)$", "");
  TypeSession();
}
