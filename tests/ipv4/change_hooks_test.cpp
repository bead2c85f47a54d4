// SPDX-License-Identifier: Apache-2.0
// What plugins are told: event, stage and arguments as a real plugin receives them.
#include <zarnnetsdk/ipv4.h>

#include "support/transcript.h"

using namespace test;

TEST(ChangeHooks, EachEventCarriesItsArguments) {
  const List two({"1.1.1.1", "8.8.8.8"});
  const List none;
  TELL(ZARNNetDnsConfigChangeHook(4, "", two));
  TELL(ZARNNetDNSChangeHook(5, none));
  TELL(ZARNNetGatewayConfigChangeHook(5, "ipv4", "eth0", "10.0.0.1", "10.0.0.2"));
  TELL(ZARNNetHostnameChangeHook("nas"));
  TELL(ZARNNetMTUChangeHook("eth0", "9000", 4));
  TELL(KOPAServicePlugin(3, 0xFD));
  const List newNames({"eth0.10", "eth1"});
  PKOPAPLUGIN plugin = nullptr;
  ASSERT_EQ(0, KOPAPluginSDKInit("net", "net/ifname_change", &plugin));
  TELL(KOPANetIFChgPluginSetArgs(plugin, List({"eth0"}), newNames, -1));
  TELL(KOPANetIFChgPluginSetArgs(plugin, nullptr, newNames, 0));
  TELL(KOPAPluginAction(5, plugin));
  KOPAPluginExit(plugin);
}

TEST(ChangeHooks, NothingIsFiredForWhatCannotChange) {
  TELL(ZARNNetIPChangePreHook(0, "eth0", "", "10.0.0.1", 33));
  TELL(ZARNNetIPChangePreHook(1, "eth0", "", "10.0.0.1", 129));
  TELL(ZARNNetIPChangePreHook(2, "eth0", "", "10.0.0.1", 24));
  TELL(ZARNNetIPChangePreHook(-1, "eth0", "", "10.0.0.1", 24));
  TELL(ZARNNetIPChangePreHook(0, "nosuch0", "", "10.0.0.1", 24));
  TELL(KOPANetIFChgPluginSetArgs(nullptr, List({"eth0"}), List({"eth1"}), 0));
}

TEST(ChangeHooks, AFailingPluginOfAnAddressIsTold) {
  WriteFile("/usr/zarn/plugins/net/ipv6_change/99-broken", "#!/bin/sh\nexit 1\n", 0755);
  TELL(ZARNNetIPChangePreHook(1, "eth0", "", "fd00::1", 64));
}

TEST(ServicePlugin, WaitsForItsLockAndLetsGoOfIt) {
  {
    const LockHolder other(0x1000006);
    TELL(KOPAServicePlugin(0, 1));
  }
  Say("the dead holder's lock is free");
  TELL(KOPAServicePlugin(0, 1));
}

TEST(ServicePlugin, AFailingPluginFailsNeitherStageNorCall) {
  WriteFile("/usr/zarn/plugins/service/service/99-broken", "#!/bin/sh\nexit 1\n", 0755);
  TELL(KOPAServicePlugin(0, 2));
}

TEST(ServicePlugin, StopsTheRelayBeforeAnAddressChange) {
  RecordTool("/sbin/stop");
  TELL(KOPAServiceStopBeforeIPChange());
  RecordTool("/sbin/stop", 1);
  TELL(KOPAServiceStopBeforeIPChange());
}
