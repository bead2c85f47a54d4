// Verbs of services: the DHCP server, PPPoE and its relay, the tunnel.
#include "ctl.h"
#include "support/transcript.h"

using namespace test;

TEST(Services, WrongUsageIsTwoAndSaysWhereHelpIs) {
  TypeSession();
}

TEST(Dhcpd, ASubnetGoesInAndOutAsOptionsAndAsJson) {
  Type(R"(
dhcpd subnet set eth0 0 --start 10.0.0.50 --end 10.0.0.60 --netmask 255.0.0.0 --router 10.0.0.1 \
  --dns 10.0.0.1 10.0.0.2 --domain lan --option mtu=1400 \
  --option classless-static-route=11.0.0.0/8,10.0.0.9
dhcpd subnet show eth0 0
$ zarnnetctl dhcpd subnet show eth0 0 --json | tee /tmp/subnet
$ mv /etc/dhcpd/dhcpd-eth0-subnet0.conf /tmp/first
dhcpd subnet set eth0 0 - </tmp/subnet
$ cmp /tmp/first /etc/dhcpd/dhcpd-eth0-subnet0.conf
dhcpd subnet set eth0 0 --start 10.0.0
dhcpd subnet set eth0 0 --netmask 255.0.255.0
dhcpd subnet set eth0 0 --dns nas.lan
dhcpd subnet set eth0 0 --option speed=1
dhcpd subnet set eth0 0 --domain "`printf 'a\nb'`"
dhcpd subnet set eth0 0 --router "10.0.0.1`printf '\r'`"
dhcpd subnet set eth0 0 --domain lan,wan
dhcpd subnet set eth0 0 --dns 10.0.0.1 10.0.0.2 junk
dhcpd subnet set eth0 0 --option 'root-path=/a"b'
dhcpd subnet set eth0 0 --end 11.0.0.60
dhcpd subnet set 'eth"0' 0 --start 10.0.0.1 --end 10.0.0.2 --netmask 255.0.0.0 --router 10.0.0.1 \
  --dns 10.0.0.1
dhcpd subnet set eth1 0 --start 10.0.0.1 --end 10.0.0.2 --netmask 255.0.0.0
$ ls /etc/dhcpd
)");
  for (const char* const document :
       {R"({"start": "10.0.0.1", "end": "10.0.0.2", "netmask": "255.0.0.0", "domain": "a\nb=c"})",
        "{", "[]", R"({"gateway": "10.0.0.1"})", R"({"lease": "long"})", R"({"interface": "eth1"})",
        R"({"start": "10.0.0.1", "end": "10.0.0.2", "netmask": "255.0.0.0", "router": "10.0.0.1",
            "dns": ["10.0.0.1"], "lease": -5})"}) {
    WriteFile("/tmp/subnet", document);
    Type("$ cat /tmp/subnet\ndhcpd subnet set eth0 0 - --json </tmp/subnet");
  }
  Type(R"(
dhcpd subnet show eth0 1
dhcpd subnet set eth0 0 --lease 600 --disable
dhcpd subnet list eth0 --json
dhcpd subnet set eth0 0 -6 --mode ra-stateless --dns 2001:db8::1
dhcpd subnet show eth0 0 -6 --json
)");
}

TEST(Dhcpd, SwitchesClassesAndNetworkBootAreStored) {
  WriteFile("/etc/dhcpd/dhcpd.info", "enable=\"yes\"\n");
  RecordTool("/etc/rc.network", 2);
  WriteIfcfg("eth1", "");
  WriteFile("/etc/dhcpd/dhcpd-eth1.info", "enable=\"yes\"\n");
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
  WriteFile("/etc/zarninfo.conf", "");
  RecordTool("/usr/sbin/pppoe-stop");
  RecordTool("/usr/sbin/pppoe-start", 19);
  Type("pppoe start\n$ echo \"'bob' * 'pass'\" >/etc/ppp/pap-secrets\npppoe start\n");
  RecordTool("/usr/sbin/pppoe-start", 1);
  Type("pppoe start\npppoe status --json");
  RecordTool("/usr/sbin/pppoe-start");
  RecordTool("/usr/sbin/pppoe-status", 0, "ppp7 Link encap:Point-to-Point Protocol\n");
  Type(R"(
$ ip link add ppp7 type bridge; ip address add 203.0.113.7/32 dev ppp7; ip link set ppp7 up
pppoe start --json
pppoe status
pppoe stop
)");
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
