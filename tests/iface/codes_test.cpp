// Every failure of the inventory leaves its own code, and a name that no program may be given goes
// nowhere.
#include <functional>
#include <sys/resource.h>

#include <zarnnetsdk/addr.h>
#include <zarnnetsdk/error.h>
#include <zarnnetsdk/iface.h>

#include "frame/os/file.h"
#include "support/appliance.h"

using namespace test;

namespace {

uint32_t address;
uint32_t mask;
char text[64];
ZARNNETIFADDR config;
KOPANetIfInfo info;
ZARNNETETHINFO ethInfo;

struct Row {
  int code;
  int result;
  std::function<int()> call;
};

void ExpectEach(const std::vector<Row>& rows) {
  for (const Row& row : rows) {
    SCOPED_TRACE(&row - rows.data());
    Refused(row.code, row.call, row.result);
  }
}

// The same call while no further file or socket is to be had. What is expected of it comes after:
// the sanitizers need files to look at objects.
Row WithoutFiles(const Row& row) {
  rlimit before{};
  ::getrlimit(RLIMIT_NOFILE, &before);
  const frame::File next = frame::OpenFile("/dev/null", "r");
  const rlimit none{static_cast<rlim_t>(::fileno(next.get())), before.rlim_max};
  ::setrlimit(RLIMIT_NOFILE, &none);
  KOPACErrSetEx(0, "", 0);
  const int result = row.call();
  const auto code = static_cast<unsigned short>(KOPACErrGet());
  ::setrlimit(RLIMIT_NOFILE, &before);
  const auto again = [=] { return KOPACErrSetEx(code, "", 0), result; };
  return {row.code, row.result, again};
}

}  // namespace

TEST(Codes, TellWhyTheKernelOrAFileHasNoAnswer) {
  WriteIfcfg("eth1", "BOOTPROTO=static\nIPADDR=10.0.0.1\n");
  ExpectEach({
      {ZARNNETERR_NOT_FOUND, -1, [] { return ZARNNetIfIsLink("eth9"); }},
      {ZARNNETERR_NOT_FOUND, 0, [] { return KOPANetISetIfFlags("eth9", 1); }},
      {ZARNNETERR_NOT_FOUND, 0, [] { return KOPANetReInitIf("eth9"); }},
      {ZARNNETERR_NOT_FOUND, 0, [] { return KOPANetGetIfCfg("eth9", &address, &mask); }},
      {ZARNNETERR_REFUSED, 0, [] { return KOPANetGetIfCfg("eth1", &address, &mask); }},
      {ZARNNETERR_NOT_FOUND, 0, [] { return KOPANetSetIfCfg("eth9", &address, &mask); }},
      {ZARNNETERR_NOT_FOUND, 0, [] { return ZARNNetIsIFUp("eth9"); }},
      {ZARNNETERR_BAD_PARAMETER, 0, [] { return ZARNNetIsIFUp(nullptr); }},
      {ZARNNETERR_NOT_FOUND, 0, [] { return ZARNNetIfIsBondingPassive("eth9"); }},
      {ZARNNETERR_NOT_FOUND, 2, [] { return KOPANetGetMacAddr(9, text, sizeof text, 0); }},
      {ZARNNETERR_NOT_FOUND, 1,
       [] { return KOPANetGetMacAddrByInterface("wlan0", text, sizeof text, 1); }},
      {ZARNNETERR_UNEXPECTED_CONTENT, -1, [] { return ZARNNetIFGetIPConfig("eth1", &config); }},
      {ZARNNETERR_OPEN, -1, [] { return ZARNNetIFGetIPConfig("eth9", &config); }},
      {ZARNNETERR_OPEN, -1, [] { return ZARNNetInternalLanNumGet(); }},
      {ZARNNETERR_COMMAND, -1, [] { return ZARNNetCalNetwork("junk", text, sizeof text); }},
  });
}

TEST(Codes, TellOfASocketThatIsNotToBeHad) {
  std::vector<Row> rows = {
      {ZARNNETERR_OPEN, -1, [] { return ZARNNetIfIsLink("eth0"); }},
      {ZARNNETERR_OPEN, 0, [] { return KOPANetIfUp("eth0"); }},
      {ZARNNETERR_OPEN, 0, [] { return KOPANetReInitIf("eth0"); }},
      {ZARNNETERR_OPEN, 0, [] { return KOPANetGetIfCfg("eth0", &address, &mask); }},
      {ZARNNETERR_OPEN, 0, [] { return KOPANetSetIfCfg("eth0", &address, &mask); }},
      {ZARNNETERR_OPEN, 0, [] { return ZARNNetIfIsBondingPassive("eth0"); }},
      {ZARNNETERR_OPEN, 1, [] { return KOPANetGetMacAddr(0, text, sizeof text, 1); }},
      {ZARNNETERR_OPEN, -1, [] { return ZARNNetGetEthInfo("eth0", &ethInfo); }},
      {ZARNNETERR_OPEN, -1, [] { return ZARNNetIFGetInfo("eth0", &info); }},
  };
  for (Row& row : rows)
    row = WithoutFiles(row);
  ExpectEach(rows);
}

TEST(Codes, RefuseWhatAProgramWouldTakeForAnOption) {
  RecordTool("/sbin/arping");
  RecordTool("/bin/ipcalc");
  RecordTool("/bin/cp");
  ExpectEach({
      {ZARNNETERR_BAD_PARAMETER, -1, [] { return ZARNIIpConflict("-I", "10.0.0.1"); }},
      {ZARNNETERR_BAD_PARAMETER, -1, [] { return ZARNIIpConflict("eth0", "-h"); }},
      {ZARNNETERR_BAD_PARAMETER, -1, [] { return ZARNNetCalNetwork("-h", text, sizeof text); }},
      {ZARNNETERR_BAD_PARAMETER, -1, [] { return ZARNNetRenameEth("eth0", "-eth"); }},
      {ZARNNETERR_BAD_PARAMETER, -1, [] { return ZARNNetIFBlockSet("-eth", 1, 1); }},
      {ZARNNETERR_BAD_PARAMETER, -1, [] { return KOPANetIfLinkUpEvent("-eth"); }},
  });
  EXPECT_EQ(Lines{}, RecordedCalls());
}
