// SPDX-License-Identifier: Apache-2.0
// The PPPoE client: files byte for byte, the password nowhere else, real processes and a real link.
#include <csignal>
#include <cstring>
#include <sys/stat.h>

#include <zarnnetsdk/error.h>
#include <zarnnetsdk/pppoe.h>

#include "support/children.h"
#include "support/transcript.h"

using namespace test;

namespace {

const char kConf[] = "/etc/ppp/pppoe.conf";
const char kSecrets[] = "/etc/ppp/pap-secrets";
const char kTemporary[] = "/etc/ppp/pap-secrets.tmp";
const char kInfo[] = "/etc/zarninfo.conf";
const char kConcentrator[] = "/etc/ppp/concentrator";

PPPOE_CONF Account(const std::string& user, const std::string& password) {
  PPPOE_CONF conf{};
  std::strcpy(conf.eth, "eth0");
  std::strcpy(conf.mtu, "1492");
  user.copy(conf.user, sizeof conf.user - 1);
  password.copy(conf.password, sizeof conf.password - 1);
  conf.defaultroute = 1;
  return conf;
}

}  // namespace

TEST(PppoeConfig, StandsInBothFilesQuotedAndComesBack) {
  WriteFile(kConf, "# made by hand\nETH=eth9\nDNSTYPE=SERVER");
  WriteFile(kSecrets, "'a'\t*\t'1'\n'b'\t*\t'2'\n'c'\t*\t'3'\n", 0644);
  WriteFile(kTemporary, "left behind", 0644);
  const PPPOE_CONF conf = Account("o'neil", "pass word");
  TELL(PPPoEConfigSet(&conf));
}

TEST(PppoeConfig, IsReadFromWhatOthersWrote) {
  const auto get = [](const std::string& why) {
    PPPOE_CONF got{};
    Tell(why, [&] { return PPPoEConfigGet(&got); });
    Say(std::string(got.eth) + " " + got.user + " " + got.password + " " + got.mtu + " " +
        std::to_string(got.defaultroute));
  };
  WriteFile(kConf, "ETH=eth1\nDEFAULTROUTE=no");
  get("no user");
  WriteFile(kConf, "ETH=eth1\nUSER='joe'\nMTU=1400\n");
  get("no secrets");
  WriteFile(kSecrets, "# 'joe' * 'no'\n'jo'\t*\t'no'\n  'joe'   *  'yes' 10.0.0.1\n'joe' * 'late'");
  get("the first line of the user");
  WriteFile(kSecrets, "'ann' * 'x'\n");
  get("another's secret alone");
  WriteFile(kConf, "");
  get("nothing");
}

TEST(PppoeConfig, ThePasswordIsInNoLogArgumentOrReadableFileWhateverFails) {
  const std::string secret = "f1nd-me-not";
  const auto search = [&secret](const char* when) {
    EXPECT_EQ("", Shell("find /etc /run /tmp /var -xdev -type f -exec grep -slF " + secret +
                        " {} + | grep -vx " + kSecrets))
        << when;
    EXPECT_FALSE(Contains(LogText(), secret)) << when;
    EXPECT_FALSE(Contains(KOPACErrorGetFile() == nullptr ? "" : KOPACErrorGetFile(), secret))
        << when;
  };
  WriteFile(kConf, "ETH=eth0\n");
  const PPPOE_CONF bad = Account("joe", secret + "\nx");
  REFUSED(ZARNNETERR_BAD_PARAMETER, PPPoEConfigSet(&bad));
  search("refused");
  const PPPOE_CONF conf = Account("joe", secret);
  WriteFile(std::string(kSecrets) + "/folder", "");
  EXPECT_EQ(-1, PPPoEConfigSet(&conf)) << "no rename";
  search("not renamed");
  EXPECT_FALSE(FileExists(kTemporary));
  RemoveFile(kSecrets);
  WriteFile(std::string(kTemporary) + "/folder", "");
  EXPECT_EQ(-1, PPPoEConfigSet(&conf)) << "no temporary";
  RemoveFile(kTemporary);
  EXPECT_EQ(0, PPPoEConfigSet(&conf));
  EXPECT_EQ(0, ZARNPPPoEService(1));
  EXPECT_FALSE(Contains(Shell("cat /proc/[0-9]*/cmdline | tr '\\0' ' '"), secret));
  EXPECT_EQ(0, ZARNPPPoEService(0));
  search("stored");
}

TEST(PppoeConfig, TheSecretsAreNeverReadableForOthersWhileTheyAreWritten) {
  ::umask(0);
  const pid_t writer = Start([] {
    const PPPOE_CONF conf = Account("joe", "secret");
    while (PPPoEConfigSet(&conf) == 0) {
    }
    return 1;
  });
  // However rarely the writer runs: until the file has been seen so often while it was written.
  for (int seen = 0; seen < 20 && !HasFailure();) {
    ASSERT_EQ(0, ::waitpid(writer, nullptr, WNOHANG)) << "a write failed";
    for (const char* path : {kSecrets, kTemporary}) {
      const int mode = FileMode(path);
      EXPECT_TRUE(mode == -1 || mode == 0600) << path << " " << mode;
      seen += mode != -1 && path == kTemporary ? 1 : 0;
    }
  }
  KillAndReap(writer);
}

TEST(PppoeService, StartsStopsAndKeepsTheSwitchInStep) {
  Mask("(  slept [0-9]+ ms)", "");
  const auto link = [] {
    char ifname[16] = "";
    char ip[20] = "";
    char mask[20] = "";
    TELL(ZARNPPPoeIntfGet(ifname, sizeof ifname));
    TELL(ZARNPPPoeNetInfoGet(ip, sizeof ip, mask, sizeof mask));
    Say(std::string(ifname) + " " + ip + " " + mask);
  };
  WriteFile(kConf, "ETH=eth0\n");
  TELL(ZARNPPPoECheckStatus(0));
  TELL(ZARNPPPoEService(2));
  WriteFile(kConcentrator, "refuse\n");
  EXPECT_EQ(-1, ZARNPPPoEService(1));
  EXPECT_EQ("pppoe_enable=\"no\"\n", ReadFile(kInfo));
  WriteFile(kConcentrator, "running\n");
  EXPECT_EQ(19, ZARNPPPoEService(1));
  EXPECT_EQ("pppoe_enable=\"no\"\n", ReadFile(kInfo));
  RemoveFile(kConcentrator);
  ASSERT_EQ(0, ZARNPPPoEService(1));
  EXPECT_EQ("pppoe_enable=\"yes\"\n", ReadFile(kInfo));
  TELL(ZARNPPPoECheckStatus(0));
  link();
  EXPECT_EQ(0, ZARNPPPoeNetInfoGet(nullptr, 0, nullptr, 0));
  WriteFile("/tmp/zarnpppoe.intf", "ppp7\n");
  Say("what was remembered is wrong");
  link();
  TELL(KOPADisablePPPoEOnIf("eth1"));
  EXPECT_EQ(1, ZARNPPPoECheckStatus(0)) << "another port's";
  EXPECT_EQ(0, KOPADisablePPPoEOnIf("eth0"));
  EXPECT_EQ("pppoe_enable=\"no\"\n", ReadFile(kInfo));
  TELL(ZARNPPPoECheckStatus(0));
  link();
}

TEST(PppoeService, TheStatusSetsRightWhatIsOutOfStep) {
  WriteFile(kInfo, "pppoe_enable=\"Yes\"\n");
  TELL(ZARNPPPoECheckStatus(0));
  TELL(ZARNPPPoECheckStatus(1));
  ASSERT_EQ(0, ZARNPPPoEService(1));
  WriteFile(kInfo, "pppoe_enable=\"no\"\n");
  EXPECT_EQ(0, ZARNPPPoECheckStatus(0));
  EXPECT_EQ(0, KOPACPs("pppoe-connect", nullptr, 0)) << "one that runs although it is not meant to";
}
