// SPDX-License-Identifier: Apache-2.0
// The MTU of an interface: in the settings, in the kernel, and in what plugins hear.
#include <zarnnetsdk/ipv4.h>

#include "support/kernel_answers.h"
#include "support/transcript.h"

using namespace test;

namespace {

const char kInfo[] = "/etc/zarninfo.conf";

void AddOvsBond() {
  Shell("ip link add ovs_bond0 type bridge");
  WriteIfcfg("ovs_bond0", "SLAVE_LIST=eth1 eth0\nBOND_MODE=balance-slb\n");
}

void GetConf(const char* ifname, int size = 8) {
  char mtu[8] = "stale";
  TELL(ZARNConfGetMTUValue(ifname, mtu, size));
  Say(std::string(ifname) + " " + mtu);
}

}  // namespace

TEST(MtuSetting, IsKeptUnderTheNameThatCarriesTheTraffic) {
  WriteFile(kInfo, "a=\"1\"\neth0_mtu=\"1400\"\nb=\"2\"");
  Kernel().vlanParents["eth0.10"] = "eth0";
  Shell("ip link add ovs_eth2 type bridge");
  GetConf("eth1");
  TELL(ZARNConfSetMTUValue("9000", "eth0.10"));
  TELL(ZARNConfSetMTUValue("2000", "ovs_eth2"));
  TELL(ZARNConfSetMTUValue("2001", "a-name-too-long-for-the-kernel"));
  GetConf("ovs_eth2");
  GetConf("eth0", 3);
}

TEST(MtuSetting, AFailureLeavesTheFile) {
  WriteFile(kInfo, "eth0_mtu=\"1400\"\n");
  TELL(ZARNConfSetMTUValue("9000\nadmin=\"yes", "eth0"));
  TELL(ZARNConfSetMTUValue("9000", "eth0=\"1\"\nadmin"));
  {
    const LockHolder other(0x806);
    TELL(ZARNConfSetMTUValue("9000", "eth0"));
  }
  MountEmpty("/etc", "16k");
  WriteFile(kInfo, "eth0_mtu=\"1400\"\n");
  Shell("cat /dev/zero >/etc/filler");
  Kernel().vlanParents["eth0.10"] = "eth0";
  Say("a full disk: both writes are tried");
  TELL(ZARNConfSetMTUValue("9000", "eth0.10"));
  RemoveFile(kInfo);
  GetConf("eth0");
}

TEST(MtuApply, TheKernelHasTheValueAndTheInterfaceIsUp) {
  TELL(ZARNNetSetMTUEth("1400", "eth0"));
  for (const std::string mtu : {"5", "0", "-1", "4294968696", "x"})
    Tell(mtu, [&] { return ZARNNetSetMTUEth(mtu.c_str(), "eth0"); });
  TELL(ZARNNetSetMTUEth("1400", "nosuch0"));
  TELL(ZARNGetMTU("nosuch0"));
  TELL(ZARNGetMTU("eth0"));
  Shell("ip link set eth3 name fifteen-letters");
  Say("not the interface it would be if cut");
  TELL(ZARNNetSetMTUEth("1400", "fifteen-letters6"));
  TELL(ZARNGetMTU("fifteen-letters6"));
  TELL(ZARNNetSetMTUEth("1400", "eth0-of-17-letters"));
  TELL(ZARNGetMTU("eth0-of-17-letters"));
}

TEST(MtuApply, AVlanFollowsItsParent) {
  Shell("ip link add eth0.10 type bridge");
  Kernel().vlanParents = {
      {"eth0.10", "eth0"}, {"eth1", "eth1"}, {"eth2", "eth3"}, {"eth3", "eth2"}};
  TELL(ZARNNetSetMTUEth("1400", "eth0.10"));
  TELL(ZARNNetSetMTUEth("5", "eth0.10"));
  Say("endless rows of parents");
  TELL(ZARNNetSetMTUEth("1400", "eth1"));
  TELL(ZARNNetSetMTUEth("1400", "eth2"));
}

TEST(MtuApply, OpenSwitchDevicesStandForTheirPorts) {
  Shell("ip link add ovs_eth2 type bridge; ip link add ovs_ type bridge");
  TELL(ZARNNetSetMTUEth("1400", "ovs_eth2"));
  TELL(ZARNGetMTUSetting("ovs_eth2"));
  AddOvsBond();
  TELL(ZARNNetSetMTUEth("1300", "ovs_bond0"));
  TELL(ZARNNetSetMTUEth("1350", "eth1"));
  TELL(ZARNGetMTUSetting("ovs_bond0"));
  TELL(ZARNNetSetMTUEth("5", "ovs_bond0"));
  RemoveFile(IfcfgPath("ovs_bond0"));
  for (const std::string broken : {"ovs_bond0", "ovs_"}) {
    Tell("set " + broken, [&] { return ZARNNetSetMTUEth("1400", broken.c_str()); });
    Tell("get " + broken, [&] { return ZARNGetMTUSetting(broken.c_str()); });
  }
}

TEST(Mtu, IsStoredAppliedAndTold) {
  TELL(ZARNNetSetMTUValue("1400", "eth0"));
  Shell("ip link add ovs_eth2 type bridge");
  WriteFile("/usr/zarn/plugins/net/mtu_change/99-broken", "#!/bin/sh\nexit 1\n", 0755);
  TELL(ZARNNetSetMTUValue("1400", "ovs_eth2"));
}

TEST(Mtu, JumboIsKeptBackFromSlowLinksOnly) {
  const std::pair<unsigned, std::string> cases[] = {
      {100, "9000"}, {999, "1500"}, {100, "1499"}, {1000, "9000"}, {0xFFFFFFFF, "9000"}};
  for (const auto& [speed, mtu] : cases) {
    Kernel().driver = PoorDriver{speed};
    Shell("ip link set eth0 mtu 1450");
    Tell(mtu + " at " + std::to_string(speed),
         [&, &value = mtu] { return ZARNNetSetMTUValue(value.c_str(), "eth0"); });
  }
}

TEST(Mtu, AfterAFailureThereIsNoSecondEventExceptForABond) {
  TELL(ZARNNetSetMTUValue("5", "eth0"));
  TELL(ZARNNetSetMTUValue("1400", "nosuch0"));
  AddOvsBond();
  TELL(ZARNNetSetMTUValue("5", "ovs_bond0"));
  TELL(ZARNNetSetMTUValue("1400", "ovs_bond0"));
}
