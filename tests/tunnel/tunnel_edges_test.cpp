// What a tunnel's processes leave behind when they are killed, waited for in vain or run at once.
#include <cerrno>
#include <csignal>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include <zarnnetsdk/pppoe.h>
#include <zarnnetsdk/tunnel.h>

#include "frame/base/text.h"
#include "support/appliance.h"

using namespace test;

namespace {

const char kConf[] = "/etc/gogoc/gogoc.conf";
const char kScript[] = "/etc/gogoc/rc.tun";

bool Until(bool (*holds)()) {
  for (int look = 0; look < 500 && !holds(); ++look)
    Shell("sleep 0.02");
  return holds();
}

bool ConfIsGone() {
  return !FileExists(kConf);
}

ZARNTUNNELCONF Conf(std::string_view user, std::string_view password) {
  ZARNTUNNELCONF conf{};
  frame::CopyText("b", conf.szServer);
  frame::CopyText(user, conf.szUserId);
  frame::CopyText(password, conf.szPassword);
  return conf;
}

}  // namespace

TEST(TunnelEdges, AScriptThatIsLeftRunningIsNobodysZombieAndIsTidiedUpAfter) {
  WriteFile(kScript, "#!/bin/sh\nwhile [ ! -e /run/go ]; do sleep 0.02; done\n", 0755);
  const ZARNTUNNELCONF conf = Conf("bob", "secret");
  EXPECT_EQ(0, ZARNTunnelExecute(ZARNTUNNEL_START, &conf)) << LogText();
  EXPECT_EQ(45000, SleptMilliseconds());
  EXPECT_EQ(-1, ::waitpid(-1, nullptr, WNOHANG));
  EXPECT_EQ(ECHILD, errno);
  EXPECT_TRUE(FileExists(kConf)) << "the script may read it still";
  WriteFile("/run/go", "");
  EXPECT_TRUE(Until(ConfIsGone));
  EXPECT_EQ("", ChildLog()) << "the C library's log lock may be held for good behind a fork";
}

TEST(TunnelEdges, ThePasswordGoesWhoeverIsKilledAndWithAStopAtTheLatest) {
  const ZARNTUNNELCONF conf = Conf("bob", "secret");
  SleepUntilAChildEnds();
  // The script's parent is the worker, whose parent is the caller's child.
  WriteFile(kScript, "#!/bin/sh\nkill -KILL $PPID\n", 0755);
  EXPECT_EQ(0, ZARNTunnelExecute(ZARNTUNNEL_START, &conf)) << LogText();
  EXPECT_FALSE(FileExists(kConf));
  WriteFile(kScript,
            "#!/bin/sh\nread line </proc/$PPID/stat; set -- $line; kill -KILL $4\n"
            "[ -e /etc/gogoc/gogoc.conf ] && >/run/late\n",
            0755);
  EXPECT_EQ(0, ZARNTunnelExecute(ZARNTUNNEL_START, &conf)) << LogText();
  EXPECT_TRUE(Until(ConfIsGone));
  WriteFile(kConf, "passwd=left\n");
  EXPECT_EQ(0, ZARNTunnelExecute(ZARNTUNNEL_STOP, nullptr)) << LogText();
  EXPECT_TRUE(ConfIsGone());
}

TEST(TunnelEdges, TheScriptHasNothingOfTheCallers) {
  SleepUntilAChildEnds();
  ASSERT_NE(SIG_ERR, ::signal(SIGTERM, SIG_IGN));
  ASSERT_GE(::dup(0), 0);
  WriteFile(kScript,
            "#!/bin/sh\nls -l /proc/$$/fd | grep -c /dev/null >/run/seen\n"
            "grep -E 'Sig(Blk|Ign)' /proc/$$/status | tr -d '\\t' >>/run/seen\n",
            0755);
  EXPECT_EQ(0, ZARNTunnelExecute(ZARNTUNNEL_STOP, nullptr)) << LogText();
  // The shell's own descriptor of its script, if it has one above 9, is no inherited one.
  EXPECT_EQ("SigBlk:0000000000000000\nSigIgn:0000000000000000\n", Shell("tail -n 2 /run/seen"))
      << ReadFile("/run/seen");
  EXPECT_EQ("3\n", Shell("head -n 1 /run/seen"));
}

TEST(TunnelEdges, TwoSettersAtOnceLeaveTheUserAndThePasswordOfOne) {
  WriteIfcfg("tun", "SERVER=b\nLOGIN=login\nUSERID=first\n");
  WriteFile("/etc/ppp/pppoe.conf", "ETH=eth0\n");
  const auto set = [](const std::string& name) {
    const ZARNTUNNELCONF tunnel = Conf(name, name);
    PPPOE_CONF dial{};
    frame::CopyText("eth0", dial.eth);
    frame::CopyText(name, dial.user);
    frame::CopyText(name, dial.password);
    EXPECT_EQ(0, ZARNTunnelConfigSet(&tunnel));
    EXPECT_EQ(0, PPPoEConfigSet(&dial));
  };
  for (int round = 0; round < 60; ++round) {
    const std::string names[] = {"a" + std::to_string(round), "b" + std::to_string(round)};
    std::thread other(set, names[1]);
    set(names[0]);
    other.join();
    ZARNTUNNELCONF tunnel{};
    EXPECT_EQ(0, ZARNTunnelConfigGet(&tunnel)) << LogText();
    ASSERT_STREQ(tunnel.szUserId, tunnel.szPassword) << round;
    const std::string secrets = ReadFile("/etc/ppp/pap-secrets");
    const std::string user = "USER=" + secrets.substr(0, secrets.find('\t')) + "\n";
    ASSERT_NE(std::string::npos, ReadFile("/etc/ppp/pppoe.conf").find(user)) << round << secrets;
  }
}
