// Reading addresses: from the kernel, from the files, from the dynamic-DNS daemon.
#include <cstdlib>
#include <gtest/gtest.h>
#include <syslog.h>

#include <zarnnetsdk/ipv4.h>

#include "support/appliance.h"

using namespace test;

TEST(LiveAddress, IsCutToTheBufferAndZeroWithoutOne) {
  char buffer[32] = "untouched";
  EXPECT_EQ(0, ZARNILnxGetIP("eth0", buffer, sizeof buffer));
  EXPECT_STREQ("0.0.0.0", buffer);
  EXPECT_EQ(1, LogCount(LOG_INFO, "net_lnx_get_ip", "get ip failed"));
  Shell("ip address add 192.168.50.10/24 dev eth0");
  EXPECT_EQ(1, ZARNILnxGetIP("eth0", buffer, 8));
  EXPECT_STREQ("192.168", buffer);
  EXPECT_EQ(0, ZARNILnxGetIP("eth0123456789abcdef", buffer, sizeof buffer))
      << "longer than any name";
  for (const char* name : {static_cast<const char*>(nullptr), ""}) {
    KOPACErrSetEx(0, "", 0);
    EXPECT_EQ(-1, ZARNILnxGetIP(name, buffer, sizeof buffer));
    EXPECT_EQ(0x0D00, KOPACErrGet());
  }
  EXPECT_EQ(-1, ZARNILnxGetIP("eth0", buffer, 0));
  EXPECT_EQ(-1, ZARNILnxGetIP("eth0", nullptr, 16));
}

TEST(ConfiguredAddress, ComesFromTheLeaseOnDhcpAndFromTheFileOtherwise) {
  char buffer[32] = "untouched";
  RemoveFile(IfcfgPath("eth9"));
  EXPECT_EQ(0, ZARNILnxGetIPFromCfg("eth9", buffer, sizeof buffer));
  EXPECT_STREQ("untouched", buffer) << "no file";
  EXPECT_FALSE(FileExists(IfcfgPath("eth9"))) << "asking creates none";

  WriteIfcfg("eth0", "BOOTPROTO=static\nIPADDR=10.0.0.1\n");
  EXPECT_EQ(1, ZARNILnxGetIPFromCfg("eth0", buffer, sizeof buffer));
  EXPECT_STREQ("10.0.0.1", buffer);

  WriteIfcfg("eth0", "BOOTPROTO=dhcp\nIPADDR=10.0.0.1\n");
  EXPECT_EQ(0, ZARNILnxGetIPFromCfg("eth0", buffer, sizeof buffer)) << "no lease";
  WriteFile("/etc/dhclient/ipv4/dhcpcd-eth0.info", "IPADDR=192.168.50.77\n");
  EXPECT_EQ(1, ZARNILnxGetIPFromCfg("eth0", buffer, sizeof buffer));
  EXPECT_STREQ("192.168.50.77", buffer);

  WriteIfcfg("eth0", "BOOTPROTO=static\n");
  EXPECT_EQ(0, ZARNILnxGetIPFromCfg("eth0", buffer, sizeof buffer));
  EXPECT_STREQ("", buffer);
  EXPECT_EQ(1, LogCount(LOG_INFO, "net_lnx_get_ip", "IP is not found"));
}

TEST(ExternalAddress, IsTheDaemonsAnswerOrNull) {
  RecordTool("/usr/zarn/sbin/ddnsd", 7);
  EXPECT_EQ(nullptr, ZARNExternalIPGet());
  EXPECT_EQ(1, LogCount(LOG_ERR, "net_external_ip_get",
                        "Failed to get external IP by /usr/zarn/sbin/ddnsd, err=7"));
  RecordTool("/usr/zarn/sbin/ddnsd");
  EXPECT_EQ(nullptr, ZARNExternalIPGet()) << "no result file";
  WriteFile("/run/ddns/externalIP.result", "externalIP=203.0.113.250.and.more\n");
  char* const ip = ZARNExternalIPGet();
  EXPECT_STREQ("203.0.113.250.a", ip) << "15 characters and no more";
  std::free(ip);
  EXPECT_EQ((Lines(3, "/usr/zarn/sbin/ddnsd -e")), RecordedCalls());
}
