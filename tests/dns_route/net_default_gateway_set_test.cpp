// The default gateway: stored, in the kernel, and read back from both.
#include <gtest/gtest.h>
#include <syslog.h>

#include <zarnnetsdk/dns_route.h>

#include "support/appliance.h"

using namespace test;

namespace {

const char kNetwork[] = "/etc/sysconfig/network";
const char kRoutes[] = "/proc/net/route";

std::string DefaultRoutes() {
  return Shell("ip route show default");
}

}  // namespace

TEST(DefaultGateway, IsTheOneTheKernelShowsAndReadsBackFromBothPlaces) {
  WriteFile(kNetwork, "NETWORKING=yes\nGATEWAY=10.0.0.1\nHOSTNAME=nas");
  Shell("ip address add 192.168.50.10/24 dev eth0");
  BringUp("eth0");
  for (const std::string gateway : {"192.168.50.1", "192.168.50.254"}) {
    ASSERT_EQ(0, ZARNNetDefaultGatewaySetConf(gateway.c_str()));
    ASSERT_EQ(0, ZARNNetDefaultGatewaySet(gateway.c_str())) << LogText();
    EXPECT_EQ("default via " + gateway + " dev eth0 \n", DefaultRoutes());
    EXPECT_EQ("NETWORKING=yes\nGATEWAY=" + gateway + "\nHOSTNAME=nas", ReadFile(kNetwork));
    char stored[16] = "";
    char active[16] = "";
    char ifname[16] = "";
    EXPECT_EQ(0, ZARNNetDefaultGatewayGetConf(stored, sizeof stored));
    EXPECT_EQ(0, ZARNNetDefaultGatewayGet(active, sizeof active));
    EXPECT_EQ(0, ZARNNetDefaultGatewayInterfaceGet(ifname, sizeof ifname));
    EXPECT_EQ(gateway, stored);
    EXPECT_EQ(gateway, active);
    EXPECT_STREQ("eth0", ifname);
  }
  EXPECT_EQ(-1, ZARNNetDefaultGatewaySet("10.9.9.9"));
  EXPECT_EQ(0x2A00, KOPACErrGet());
  EXPECT_NE(std::string::npos, LogText().find("failed to set default gateway 10.9.9.9 ("))
      << LogText();
  EXPECT_EQ("", DefaultRoutes()) << "not put back";
  ASSERT_EQ(0, ZARNNetDefaultGatewaySet("192.168.50.1"));
  EXPECT_EQ(0, ZARNNetDefaultGatewaySet(nullptr));
  EXPECT_EQ("", DefaultRoutes());
  EXPECT_EQ(0, ZARNNetDefaultGatewaySet("")) << "there is none to delete";
  EXPECT_EQ(0, ZARNNetDefaultGatewaySetConf(""));
  EXPECT_EQ("NETWORKING=yes\nHOSTNAME=nas", ReadFile(kNetwork));
}

TEST(DefaultGateway, OfTheFilesThatCannotBeReadOrChanged) {
  char buffer[8] = "stale";
  WriteFile(kNetwork, "NETWORKING=yes\n");
  EXPECT_EQ(-1, ZARNNetDefaultGatewaySetConf("10.0.0.1\nHOSTNAME=evil"));
  EXPECT_EQ("NETWORKING=yes\n", ReadFile(kNetwork));
  EXPECT_EQ(0, ZARNNetDefaultGatewayGetConf(buffer, sizeof buffer));
  EXPECT_STREQ("", buffer);
  RemoveFile(kNetwork);
  EXPECT_EQ(-1, ZARNNetDefaultGatewayGetConf(buffer, sizeof buffer));
  EXPECT_EQ(1, LogCount(LOG_ERR, "ZARNNetDefaultGatewayGetConf", "Failed to get default gateway."));
  EXPECT_EQ(-1, ZARNNetDefaultGatewaySetConf(nullptr));
  KOPACErrSetEx(0, "", 0);
  EXPECT_EQ(-1, ZARNNetDefaultGatewayGetConf(buffer, 0));
  EXPECT_EQ(0x0D00, KOPACErrGet());
  EXPECT_NE(std::string::npos, LogText().find("ZARNNetDefaultGatewayGetConf (")) << LogText();
}

TEST(DefaultGateway, IsTheFirstUsableLineOfTheKernelsTable) {
  const std::string heading = "Iface\tDestination\tGateway \tFlags\tRefCnt\tUse\tMetric\tMask\n";
  char gateway[16] = "kept";
  char ifname[3] = "-";
  MountEmpty("/proc/self/net");
  WriteFile(kRoutes, heading + "eth0\t00000000\t00000000\t0001\t0\t0\t0\t00000000\t0\t0\t0\n");
  EXPECT_EQ(0, DefaultGatewayGet(gateway, sizeof gateway, ifname, sizeof ifname));
  EXPECT_STREQ("kept", gateway) << "the way out has no gateway";
  WriteFile(kRoutes, heading +
                         "eth0\t00000000\t010AA8C0\t0003\t0\t0\t0\t000000FF\t0\t0\t0\n"
                         "eth12\t00000000\t02A8A8C0\t0003\t0\t0\t9\t00000000\t0\t0\t0\n");
  EXPECT_EQ(0, DefaultGatewayGet(gateway, sizeof gateway, ifname, sizeof ifname));
  EXPECT_STREQ("192.168.168.2", gateway);
  EXPECT_STREQ("et", ifname) << "cut to its room";
  WriteFile(kRoutes, heading + "eth0\t00000000\tgateway\n");
  EXPECT_EQ(-1, DefaultGatewayGet(gateway, sizeof gateway, nullptr, 0));
  EXPECT_EQ(0x4000, KOPACErrGet());
  RemoveFile(kRoutes);
  EXPECT_EQ(-1, ZARNNetDefaultGatewayGet(gateway, sizeof gateway));
  EXPECT_EQ(1, LogCount(LOG_ERR, "DefaultGatewayGet ",
                        "Failed to open /proc/net/route, errno=[No such file or directory/2]"))
      << LogText();
  EXPECT_EQ(-1, ZARNNetDefaultGatewayGet(gateway, 0));
  EXPECT_EQ(0x0D00, KOPACErrGet());
}
