// SPDX-License-Identifier: Apache-2.0
// A trial of the network's DHCP server: the client that is run, and what is read from what it
// leaves.
#include <zarnnetsdk/dhcpd.h>

#include "support/transcript.h"

using namespace test;

namespace {

const char kScript[] = "/var/run/dhclient-script";
const char kClient[] = "/usr/sbin/dhclient";
const char kLease[] = "/etc/dhclient/ipv4/dhcpcd-eth0.info";

void Try(const std::string& why, const char* ifname = "eth0") {
  ZARNNETIFADDR info{};
  info.bootProto = 7;
  std::snprintf(info.szName, sizeof info.szName, "%s", ifname);
  Tell(why, [&] { return ZARNIGetDHCPTestNetInfo(&info); });
  Say(std::to_string(info.bootProto) + " " + info.szIP + " " + info.szMask);
}

}  // namespace

TEST(DhcpTrial, ReadsWhatTheClientLeaves) {
  WriteFile("/etc/dhclient/dhclient-script", "script\n", 0755);
  RecordTool(kClient);
  WriteFile(kLease, "IPADDR=192.168.50.123\nNETMASK=255.255.255.0\n");
  RemoveFile(kScript);
  Try("the script is copied");
  WriteFile(kScript, "mine");
  Try("once only");
}

TEST(DhcpTrial, EachStepsFailureIsToldApart) {
  Mask("failed\\((Invalid argument|Success|No [a-z ]*)\\)", "REASON");
  WriteFile("/etc/dhclient/dhclient-script", "script\n");
  Try("nobody", "");
  Try("an option of the client's", "-r");
  RecordTool(kClient, 2);
  Try("no server");
  RecordTool(kClient);
  RemoveFile(kLease);
  Try("no result");
  WriteFile(kLease, "IPADDR=192.168.50.123\n");
  Try("no mask");
  RemoveFile(kScript);
  RemoveFile("/etc/dhclient/dhclient-script");
  Try("no script to copy");
}
