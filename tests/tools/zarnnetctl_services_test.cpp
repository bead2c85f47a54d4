// Verbs of services: the DHCP server, PPPoE and its relay, the tunnel.
#include <gtest/gtest.h>

#include "ctl.h"
#include "support/transcript.h"

using namespace test;

TEST(Services, WrongUsageIsTwoAndSaysWhereHelpIs) {
  Type(R"(
dhcpd vendor set Example 255=x
pppoe set
pppoe set --mtu 1501
pppoe set --default-route --no-default-route
pppoe set --password x
pppoe-relay set eth1
tunnel set --anonymous --user eve
tunnel set
tunnel set --password 'Tr0ub4dor&3'
)");
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
)");
  for (const char* const document :
       {R"({"start": "10.0.0.1", "end": "10.0.0.2", "netmask": "255.0.0.0", "domain": "a\nb=c"})",
        "{", "[]", R"({"gateway": "10.0.0.1"})", R"({"lease": "long"})",
        R"({"interface": "eth1"})"}) {
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
  Type(R"(
dhcpd enable eth0
dhcpd enable eth0 -6
dhcpd disable eth0 --json
dhcpd restart
dhcpd vendor set Example 60=x 43=1,2 --json
dhcpd vendor list
dhcpd vendor set Example
dhcpd vendor list --json
dhcpd pxe set boot.0 --server 10.0.0.9
dhcpd pxe set --off --json
dhcpd option list
dhcpd range check eth0 10.9.0.1 10.9.0.2 255.255.0.0 --json
)");
}

TEST(Pppoe, WhatIsNotNamedStaysAndThePasswordIsNeverShown) {
  WriteFile("/etc/ppp/pppoe.conf", "# kept\n");
  RemoveFile("/etc/ppp/pap-secrets");
  WriteFile("/root/secret", "Tr0ub4dor&3\nsecond line\n", 0600);
  Type(R"(
pppoe set --user bob
pppoe set --interface eth9 --user bob
pppoe set --interface eth1 --user bob@isp --password-file /root/secret --json
pppoe set --mtu 1452 --default-route
pppoe set --interface eth1
pppoe get
$ echo another >/root/secret
pppoe set --no-default-route --password-file - --json </root/secret
)");
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
  Type(R"(
pppoe-relay set eth1 --enable
pppoe-relay set eth1 --enable --server eth1
pppoe-relay get eth9
pppoe-relay set eth1 --server eth0 --enable --json
pppoe-relay apply eth1
pppoe-relay apply --json
pppoe-relay set eth1 --disable
pppoe-relay get eth1
pppoe-relay clear
)");
}

TEST(Tunnel, ThePasswordGoesInByAFileOrStandardInputAndIsNeverShown) {
  WriteFile("/root/secret", "Tr0ub4dor&3\nsecond line\n", 0600);
  WriteFile("/etc/zarncore/cipher.key", std::string(32, 'k'), 0600);
  WriteFile("/root/long", std::string(32, 'p'), 0600);
  Mask("^(  [a-z]* /run/gogoc.pid.*)$", "");
  Mask("^(    [+][0-9]*)$", "");
  Type(R"(
tunnel set --server broker.example --user bob --password-file /root/secret --json
tunnel start
tunnel get
tunnel get --json
tunnel stop
$ echo refuses >/etc/gogoc/broker
tunnel start
$ cp /etc/gogoc/.tunnel_passwd /tmp/first
tunnel set --password-file - </root/secret
$ cmp /tmp/first /etc/gogoc/.tunnel_passwd
tunnel set --password-file /root/long
tunnel set --password-file /root/none
tunnel set --anonymous --json
)");
}
