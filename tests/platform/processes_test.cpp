// SPDX-License-Identifier: Apache-2.0
// Running programs and finding the ones that run.
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>

#include "fixture.h"
#include "support/children.h"
#include "support/clock.h"

using namespace test;

namespace {

constexpr char* kEnd = nullptr;

// A program under a name of its own, running until it is ended.
pid_t StartProgram(const std::string& path, const std::vector<const char*>& arguments) {
  WriteFile(path, "#!/bin/sh\nread -r line < /run/never\n", 0755);
  Shell("[ -p /run/never ] || mkfifo /run/never");
  std::vector<const char*> argv{path.c_str()};
  argv.insert(argv.end(), arguments.begin(), arguments.end());
  argv.push_back(nullptr);
  const pid_t child =
      Start([&] { return ::execv(path.c_str(), const_cast<char* const*>(argv.data())); });
  Comes([&] {
    return ReadFile("/proc/" + std::to_string(child) + "/cmdline").find(path) != std::string::npos;
  });
  return child;
}

}  // namespace

TEST(Running, ResultsTellHowAProgramEnded) {
  WriteFile("/run/three", "#!/bin/sh\nexit 3\n", 0755);
  WriteFile("/run/killed", "#!/bin/sh\nkill -9 $$\n", 0755);
  WriteFile("/run/plain", "#!/bin/sh\n", 0644);
  const char* const argv[] = {"three", nullptr};
  EXPECT_EQ(3, KOPACExec("/run/three", nullptr, nullptr, nullptr, nullptr));
  EXPECT_EQ(3, KOPACExecv("/run/three", argv, 1));
  EXPECT_EQ(-3, KOPACExecl("/run/three", 187, kEnd)) << "a refusal is negative";
  EXPECT_EQ(0, KOPACExecl("/bin/true", 187, kEnd));
  EXPECT_EQ(-1, KOPACExec("/run/killed", nullptr, nullptr, nullptr, nullptr));
  EXPECT_EQ(-1, KOPACExecl("/run/killed", 187, kEnd));
  EXPECT_EQ(-1, KOPACExec("/run/nowhere", nullptr, nullptr, nullptr, nullptr));
  EXPECT_EQ(ENOENT, errno);
  EXPECT_EQ(-1, KOPACExec("/run/plain", nullptr, nullptr, nullptr, nullptr)) << "not executable";
}

TEST(Running, ArgumentsArriveApartAndUnread) {
  WriteFile("/run/args", "#!/bin/sh\nfor a; do printf '[%s]' \"$a\"; done > /run/out\n", 0755);
  EXPECT_EQ(0, KOPACExecl("/run/args", 187, "a b", "", "$(touch /run/evil)", ";", "*", kEnd));
  EXPECT_EQ("[a b][][$(touch /run/evil)][;][*]", ReadFile("/run/out"));
  EXPECT_FALSE(FileExists("/run/evil"));
}

TEST(Running, AChildStartsClean) {
  WriteFile(
      "/run/look",
      "#!/bin/sh\nls -l /proc/$$/fd > /run/fds\ngrep Sig /proc/self/status > /run/signals\ncat\n",
      0755);
  const int leaked = ::open("/etc/passwd", 0);
  ASSERT_LE(0, ::dup2(leaked, 77));
  std::signal(SIGPIPE, SIG_IGN);
  sigset_t blocked;
  ::sigemptyset(&blocked);
  ::sigaddset(&blocked, SIGTERM);
  ::sigprocmask(SIG_BLOCK, &blocked, nullptr);
  EXPECT_EQ(0, KOPACExec("/run/look", nullptr, nullptr, nullptr, nullptr))
      << "cat reads an empty input";
  const std::string fds = ReadFile("/run/fds");
  EXPECT_EQ(std::string::npos, fds.find("passwd")) << fds;
  EXPECT_NE(std::string::npos, fds.find("0 -> /dev/null")) << fds;
  EXPECT_NE(std::string::npos, ReadFile("/run/signals").find("SigBlk:\t0000000000000000"));
  const std::string signals = ReadFile("/run/signals");
  const auto ignored = std::stoull(signals.substr(signals.find("SigIgn:") + 7), nullptr, 16);
  EXPECT_EQ(0U, ignored & 0x7fffffffU) << "but for the C library's own two: " << signals;
}

// Either caller would reap the program before its status is asked for.
TEST(Running, TheStatusIsKeptFromACallerThatReapsEverybody) {
  WriteFile("/run/three", "#!/bin/sh\nexit 3\n", 0755);
  const auto reapAll = [](int) {
    const int error = errno;
    while (::waitpid(-1, nullptr, WNOHANG) > 0) {
    }
    errno = error;
  };
  for (const auto handler : {static_cast<sighandler_t>(reapAll), SIG_IGN}) {
    std::signal(SIGCHLD, handler);
    for (int i = 0; i < 20; ++i) {
      ASSERT_EQ(3, KOPACExec("/run/three", nullptr, nullptr, nullptr, nullptr));
    }
    EXPECT_EQ(0, KOPACExecl("/bin/true", 187, kEnd));
    EXPECT_EQ(-1, KOPACExec("/run/nowhere", nullptr, nullptr, nullptr, nullptr));
    EXPECT_EQ(ENOENT, errno);
    EXPECT_EQ(handler, std::signal(SIGCHLD, SIG_DFL)) << "its handling is as it was";
    sigset_t blocked;
    ::sigprocmask(SIG_BLOCK, nullptr, &blocked);
    EXPECT_EQ(0, ::sigismember(&blocked, SIGTERM)) << "its mask is as it was";
  }
}

// A caller that has cleared its environment has none at all, not even an empty one.
TEST(Running, OutputIsReadAndACallerWithoutAPathLendsOne) {
  for (const char* kept : {"MINE=kept\n", ""}) {
    ::clearenv();
    if (*kept != '\0') ::setenv("MINE", "kept", 1);
    FILE* const output = KOPACPopen("/usr/bin/env", "r", "-u", "NONE", "env", kEnd);
    ASSERT_NE(nullptr, output);
    char text[4096];
    text[std::fread(text, 1, sizeof text - 1, output)] = '\0';
    EXPECT_EQ(0, KOPACPclose(output));
    EXPECT_EQ(std::string(kept) + "PATH=/usr/sbin:/usr/bin:/sbin:/bin\n", text);
    EXPECT_EQ(0, KOPACExec("/bin/true", nullptr, nullptr, nullptr, nullptr));
  }
}

TEST(Finding, NamesAndArgumentsAreWhole) {
  const pid_t relay = StartProgram("/run/pppoe-relay", {"-C", "eth1", "-S", "eth2"});
  const pid_t other = StartProgram("/run/pppoe-relay", {"-C", "eth10"});
  const pid_t longName = StartProgram("/run/a-name-beyond-the-kernels", {});
  EXPECT_EQ(2, KOPACPs("pppoe-relay", nullptr, 0));
  EXPECT_EQ(0, KOPACPs("pppoe", nullptr, 0));
  EXPECT_EQ(1, KOPACPs("a-name-beyond-the-kernels", nullptr, 0));
  EXPECT_EQ(0, KOPACPs("a-name-beyond-the-others", nullptr, 0)) << "the same 15 characters";
  EXPECT_EQ(1, KOPACIsProcAlive("/run/pppoe-relay -C eth1"));
  EXPECT_EQ(0, KOPACIsProcAlive("/run/pppoe-relay -C et"));
  EXPECT_EQ(0, KOPACIsProcAlive("pppoe-relay -C eth1"));
  EXPECT_EQ(0, KOPACKill("/run/pppoe-relay -C eth1", 0));
  EXPECT_EQ(-1, ExitStatusOf(relay)) << "ended by a signal";
  EXPECT_EQ(0, KOPACIsProcAlive("/run/pppoe-relay -C eth1"));
  EXPECT_EQ(1, KOPACIsProcAlive("/run/pppoe-relay -C eth10")) << "eth1 is not eth10";
  EXPECT_EQ(0, KOPACKill("/run/nobody", 1)) << "nothing to end";
  KillAndReap(other);
  KillAndReap(longName);
}

TEST(Finding, AProcessThatIgnoresTheSignalIsEndedAllTheSame) {
  WriteFile("/run/stubborn",
            "#!/bin/sh\ntrap '' TERM\ntouch /run/ready\nwhile :; do read -r x < /run/never; done\n",
            0755);
  Shell("mkfifo /run/never");
  const pid_t child = Start([] { return ::execl("/run/stubborn", "/run/stubborn", kEnd); });
  EXPECT_TRUE(Comes([] { return FileExists("/run/ready"); }));
  RunClockFaster(10);
  EXPECT_EQ(0, KOPACKill("/run/stubborn", 1));
  EXPECT_EQ(0, KOPACIsProcAlive("/run/stubborn")) << "gone when the call returns";
  EXPECT_EQ(-1, ExitStatusOf(child));
}
