// What plugins are told: event, stage and arguments as a real plugin receives them.
#include <gtest/gtest.h>
#include <syslog.h>

#include <zarnnetsdk/ipv4.h>

#include "frame/os/containers.h"
#include "support/appliance.h"

using namespace test;

namespace {

struct Servers {
  frame::StringList list{4};
  Servers(std::initializer_list<const char*> servers) {
    for (const char* server : servers)
      KOPACSzListPush(list.Out(), server);
  }
};

}  // namespace

TEST(ChangeHooks, EachEventCarriesItsArguments) {
  const Servers two{"1.1.1.1", "8.8.8.8"};
  const Servers none{};
  EXPECT_EQ(0, ZARNNetDnsConfigChangeHook(4, "", two.list.Get()));
  EXPECT_EQ(0, ZARNNetDNSChangeHook(5, none.list.Get()));
  EXPECT_EQ(0, ZARNNetGatewayConfigChangeHook(5, "ipv4", "eth0", "10.0.0.1", "10.0.0.2"));
  EXPECT_EQ(0, ZARNNetHostnameChangeHook("nas"));
  EXPECT_EQ(0, ZARNNetMTUChangeHook("eth0", "9000", 4));
  EXPECT_EQ(0, KOPAServicePlugin(3, 0xFD));
  EXPECT_EQ((Lines{
                "net/dns_config_change pre DNS_1=1.1.1.1 DNS_2=8.8.8.8 INTERFACE= NITEMS=2",
                "net/dns_change post NITEMS=0",
                "net/gateway_config_change post GATEWAY_NEW=10.0.0.2 GATEWAY_OLD=10.0.0.1 "
                "INTERFACE=eth0 TYPE=ipv4",
                "net/hostname_change post HOSTNAME=nas",
                "net/mtu_change pre IFACE=eth0 MTU_VALUE=9000",
                "service/service pre RESULT=0 SERVICE_DAEMON_ACTION=3 SERVICE_HOSTNAME_CHANGE=0 "
                "SERVICE_IP_CHANGE=1 SERVICE_MTU_CHANGE=1",
                "service/service post RESULT=0 SERVICE_DAEMON_ACTION=3 SERVICE_HOSTNAME_CHANGE=0 "
                "SERVICE_IP_CHANGE=1 SERVICE_MTU_CHANGE=1",
            }),
            Events());
}

TEST(ChangeHooks, NothingIsFiredForWhatCannotChange) {
  const struct {
    int type;
    unsigned prefix;
  } cases[] = {{0, 33}, {1, 129}, {2, 24}, {-1, 24}};
  for (const auto& c : cases) {
    KOPACErrSetEx(0, "", 0);
    EXPECT_EQ(-1, ZARNNetIPChangePreHook(c.type, "eth0", "", "10.0.0.1", c.prefix));
    EXPECT_EQ(0x0D00, KOPACErrGet());
  }
  EXPECT_EQ(-1, ZARNNetIPChangePreHook(0, "nosuch0", "", "10.0.0.1", 24));
  EXPECT_EQ(1, LogCount(LOG_ERR, "net_ip_change_hook", "error on link detect"));
  EXPECT_EQ(-1, ZARNNetDNSChangeHook(4, nullptr));
  EXPECT_EQ(-1, ZARNNetHostnameChangeHook(nullptr));
  EXPECT_EQ(Lines{}, Events());
}

TEST(ChangeHooks, TheIfnameEventTakesListsAndTheResult) {
  const Servers oldNames{"eth0"};
  const Servers newNames{"eth0.10", "eth1"};
  PKOPAPLUGIN plugin = nullptr;
  ASSERT_EQ(0, KOPAPluginSDKInit("net", "net/ifname_change", &plugin));
  EXPECT_EQ(0, KOPANetIFChgPluginSetArgs(plugin, oldNames.list.Get(), newNames.list.Get(), -1));
  EXPECT_EQ(-1, KOPANetIFChgPluginSetArgs(plugin, nullptr, newNames.list.Get(), 0));
  EXPECT_EQ(0, KOPAPluginAction(5, plugin));
  KOPAPluginExit(plugin);
  EXPECT_EQ((Lines{"net/ifname_change post IFNAME_1=eth0.10 IFNAME_2=eth1 IFNAME_COUNT=2 "
                   "ORIGIN_IFNAME_1=eth0 ORIGIN_IFNAME_COUNT=1 RESULT=-1"}),
            Events());
}

TEST(ServicePlugin, WaitsForItsLockAndLetsGoOfIt) {
  {
    const LockHolder other(0x1000006);
    EXPECT_EQ(-1, KOPAServicePlugin(0, 1));
  }
  EXPECT_EQ(1, LogCount(LOG_ERR, "service_net_service_plugin", "Lock failed"));
  EXPECT_EQ(Lines{}, Events());
  EXPECT_EQ(0, KOPAServicePlugin(0, 1)) << "the dead holder's lock is free";
  EXPECT_EQ(2U, Events().size());
  EXPECT_EQ(0, KOPACFileLock(0x1000006, 0)) << "released after the call";
}

TEST(ServicePlugin, AFailingPluginFailsNeitherStageNorCall) {
  WriteFile("/usr/zarn/plugins/service/service/99-broken", "#!/bin/sh\nexit 1\n", 0755);
  EXPECT_EQ(0, KOPAServicePlugin(0, 2));
  EXPECT_EQ(
      1, LogCount(LOG_ERR, "service_net_service_plugin", "Fail to execute service plugin (PRE)"));
  EXPECT_EQ(
      1, LogCount(LOG_ERR, "service_net_service_plugin", "Fail to execute service plugin (POST)"));
  EXPECT_EQ(2U, Events().size());
}

TEST(ServicePlugin, StopsTheRelayBeforeAnAddressChange) {
  RecordTool("/sbin/stop");
  EXPECT_EQ(0, KOPAServiceStopBeforeIPChange());
  EXPECT_EQ((Lines{"/sbin/stop pppoerelay"}), RecordedCalls());
  RecordTool("/sbin/stop", 1);
  EXPECT_EQ(-1, KOPAServiceStopBeforeIPChange());
}
