// The trial run of the DHCP client: its arguments, its failures, and what is read from what it
// leaves.
#include <gtest/gtest.h>
#include <syslog.h>

#include <zarnnetsdk/dhcpd.h>

#include "support/appliance.h"

using namespace test;

namespace {

const char kScript[] = "/var/run/dhclient-script";
const char kClient[] = "/usr/sbin/dhclient";
const char kTrial[] =
    "/usr/sbin/dhclient -q --zarn_test -lf /tmp/dhcpv4.leases.eth0 -pf "
    "/etc/dhclient/ipv4/dhcpcd-eth0.pid -sf /var/run/dhclient-script eth0";

ZARNNETIFADDR Named(const char* ifname) {
  ZARNNETIFADDR info{};
  info.bootProto = 7;
  std::snprintf(info.szName, sizeof info.szName, "%s", ifname);
  return info;
}

}  // namespace

TEST(DhcpTrial, ReadsWhatTheClientLeaves) {
  RecordTool(kClient);
  WriteFile("/etc/dhclient/ipv4/dhcpcd-eth0.info",
            "IPADDR=192.168.50.123\nNETMASK=255.255.255.0\n");
  RemoveFile(kScript);
  ZARNNETIFADDR info = Named("eth0");
  EXPECT_EQ(0, ZARNIGetDHCPTestNetInfo(&info)) << LogText();
  EXPECT_STREQ("192.168.50.123", info.szIP);
  EXPECT_STREQ("255.255.255.0", info.szMask);
  EXPECT_EQ(7, info.bootProto);
  EXPECT_EQ(ReadFile("/etc/dhclient/dhclient-script"), ReadFile(kScript));
  WriteFile(kScript, "mine");
  EXPECT_EQ(0, ZARNIGetDHCPTestNetInfo(&info));
  EXPECT_EQ("mine", ReadFile(kScript)) << "copied once only";
  EXPECT_EQ((Lines{kTrial, kTrial}), RecordedCalls());
}

TEST(DhcpTrial, EachStepsFailureIsToldApart) {
  EXPECT_EQ(-1, ZARNIGetDHCPTestNetInfo(nullptr));
  ZARNNETIFADDR nobody = Named("");
  EXPECT_EQ(-1, ZARNIGetDHCPTestNetInfo(&nobody));
  EXPECT_EQ(0x0D00, KOPACErrGet());

  ZARNNETIFADDR info = Named("eth0");
  RecordTool(kClient, 2);
  EXPECT_EQ(-1, ZARNIGetDHCPTestNetInfo(&info));
  EXPECT_EQ(0x2A00, KOPACErrGet());
  EXPECT_NE(std::string::npos, LogText().find(std::string(kTrial) + " failed(")) << LogText();

  RecordTool(kClient);
  RemoveFile("/etc/dhclient/ipv4/dhcpcd-eth0.info");
  EXPECT_EQ(-1, ZARNIGetDHCPTestNetInfo(&info)) << "no result";
  WriteFile("/etc/dhclient/ipv4/dhcpcd-eth0.info", "IPADDR=192.168.50.123\n");
  EXPECT_EQ(-1, ZARNIGetDHCPTestNetInfo(&info)) << "no mask";
  EXPECT_NE(std::string::npos, LogText().find("ZARNIGetDHCPTestNetInfo(")) << LogText();
  EXPECT_NE(std::string::npos, LogText().find("KOPACFileGetKeyValue(NETMASK) failed("))
      << LogText();

  RemoveFile(kScript);
  RemoveFile("/etc/dhclient/dhclient-script");
  EXPECT_EQ(-1, ZARNIGetDHCPTestNetInfo(&info)) << "no script to copy";
  EXPECT_EQ(1, LogCount(LOG_ERR, "net_get_dhcp_test_net_info",
                        "copy /etc/dhclient/dhclient-script to /var/run/dhclient-script failed"));
}
