// SPDX-License-Identifier: Apache-2.0
// Every failure of the inventory leaves its own code, and a name that no program may be given goes
// nowhere.
#include <zarnnetsdk/addr.h>
#include <zarnnetsdk/iface.h>

#include "support/transcript.h"

using namespace test;

namespace {

struct Codes : testing::Test {
  uint32_t address = 0;
  uint32_t mask = 0;
  char text[64] = "";
  ZARNNETIFADDR config{};
};

#define TELL_CODE(call) TellCode(#call, [&] { return call; })
// The same while no further file or socket is to be had.
#define TELL_WITHOUT_FILES(call) \
  TellCode(#call, [&] {          \
    const NoDescriptors none;    \
    return call;                 \
  })

}  // namespace

TEST_F(Codes, TellWhyTheKernelOrAFileHasNoAnswer) {
  WriteIfcfg("eth1", "BOOTPROTO=static\nIPADDR=10.0.0.1\n");
  TELL_CODE(ZARNNetIfIsLink("eth9"));
  TELL_CODE(KOPANetISetIfFlags("eth9", 1));
  TELL_CODE(KOPANetReInitIf("eth9"));
  TELL_CODE(KOPANetGetIfCfg("eth9", &address, &mask));
  TELL_CODE(KOPANetGetIfCfg("eth1", &address, &mask));
  TELL_CODE(KOPANetSetIfCfg("eth9", &address, &mask));
  TELL_CODE(ZARNNetIsIFUp("eth9"));
  TELL_CODE(ZARNNetIfIsBondingPassive("eth9"));
  TELL_CODE(KOPANetGetMacAddr(9, text, sizeof text, 0));
  TELL_CODE(KOPANetGetMacAddrByInterface("wlan0", text, sizeof text, 1));
  TELL_CODE(ZARNNetIFGetIPConfig("eth1", &config));
  TELL_CODE(ZARNNetIFGetIPConfig("eth9", &config));
  TELL_CODE(ZARNNetInternalLanNumGet());
  TELL_CODE(ZARNNetCalNetwork("junk", text, sizeof text));
}

TEST_F(Codes, TellOfASocketThatIsNotToBeHad) {
  KOPANetIfInfo info{};
  ZARNNETETHINFO ethInfo{};
  TELL_WITHOUT_FILES(ZARNNetIfIsLink("eth0"));
  TELL_WITHOUT_FILES(KOPANetIfUp("eth0"));
  TELL_WITHOUT_FILES(KOPANetReInitIf("eth0"));
  TELL_WITHOUT_FILES(KOPANetGetIfCfg("eth0", &address, &mask));
  TELL_WITHOUT_FILES(KOPANetSetIfCfg("eth0", &address, &mask));
  TELL_WITHOUT_FILES(ZARNNetIfIsBondingPassive("eth0"));
  TELL_WITHOUT_FILES(KOPANetGetMacAddr(0, text, sizeof text, 1));
  TELL_WITHOUT_FILES(ZARNNetGetEthInfo("eth0", &ethInfo));
  TELL_WITHOUT_FILES(ZARNNetIFGetInfo("eth0", &info));
}

TEST_F(Codes, RefuseWhatAProgramWouldTakeForAnOption) {
  for (const char* tool : {"/sbin/arping", "/bin/ipcalc", "/bin/cp"})
    RecordTool(tool);
  TELL_CODE(ZARNIIpConflict("-I", "10.0.0.1"));
  TELL_CODE(ZARNIIpConflict("eth0", "-h"));
  TELL_CODE(ZARNNetCalNetwork("-h", text, sizeof text));
  TELL_CODE(ZARNNetRenameEth("eth0", "-eth"));
  TELL_CODE(ZARNNetIFBlockSet("-eth", 1, 1));
  TELL_CODE(KOPANetIfLinkUpEvent("-eth"));
}
