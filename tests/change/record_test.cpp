// SPDX-License-Identifier: Apache-2.0
// Changes that are confirmed or go back, whoever is killed meanwhile; and those that are undone.
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <nlohmann/json.hpp>
#include <set>
#include <sys/stat.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>
#include <zarnnetchange/change.h>

#include "record/generation.h"
#include "steps/confirm_time.h"
#include "support/appliance.h"
#include "support/children.h"
#include "support/clock.h"
#include "support/session.h"
#include "wish.h"

using namespace test;

namespace {

using nlohmann::json;

const char* const kAddress =
    R"({"interfaces":{"eth0":{"mtu":1400,"ipv4":{"address":"192.168.50.12"}}}})";
const char* const kBridge = R"({"bridges":{"br0":{"ports":["eth0","eth1"]}}})";
const char* const kName = R"({"host":{"name":"nas"}})";

json Taken(const std::function<int(char**)>& call) {
  char* text = nullptr;
  const int result = call(&text);
  json report = json::parse(text != nullptr ? text : "{}");
  ZARNNetChangeFree(text);
  EXPECT_EQ(report.value("result", -1), result) << report.dump(1);
  return report;
}

json Apply(const std::string& wish, const std::string& options = "{}",
           PFNZARNNETCHANGE progress = nullptr, void* context = nullptr) {
  return Taken([&](char** text) {
    return ZARNNetChangeApply(wish.c_str(), options.c_str(), progress, context, text);
  });
}
json Confirm(const std::string& options = "{}") {
  return Taken([&](char** text) { return ZARNNetChangeConfirm(options.c_str(), text); });
}
json Recover(const std::string& options = "{}") {
  return Taken([&](char** text) { return ZARNNetChangeRecover(options.c_str(), text); });
}
json Undo(const std::string& options = "{}") {
  return Taken(
      [&](char** text) { return ZARNNetChangeUndo(options.c_str(), nullptr, nullptr, text); });
}
json History(long number) {
  const std::string options = json{{"number", number}}.dump();
  return Taken([&](char** text) { return ZARNNetChangeHistory(options.c_str(), text); });
}
// What the record itself says: to ask the library would put back.
std::string StateOf(long number) {
  const std::string path = "/var/lib/zarnnet/" + std::to_string(number) + ".json";
  return json::parse(ReadFile(path), nullptr, false).value("state", "");
}

// An administrator's port, and a file that is not root's.
void SetUpOddlyOwnedEth0() {
  SleepForReal();
  MakeCipherKey();
  WriteIfcfg("eth0",
             "DEVICE=eth0\nONBOOT=yes\nBOOTPROTO=static\nIPADDR=192.168.50.10\n"
             "NETMASK=255.255.255.0\n");
  ASSERT_EQ(::chown(IfcfgPath("eth0").c_str(), 12, 34), 0);
  ASSERT_EQ(::chmod(IfcfgPath("eth0").c_str(), 0640), 0);
  BringUp("eth0");
  Shell(
      "echo 0 >/proc/sys/net/ipv6/conf/eth0/dad_transmits;"
      "ip address add 192.168.50.10/24 dev eth0;"
      "ip route add default via 192.168.50.1 dev eth0");
}

using Since = std::chrono::steady_clock::time_point;
double SecondsFrom(Since begin) {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

void Wait(int milliseconds) {
  ::poll(nullptr, 0, milliseconds);
}

// Within the time and five seconds.
bool GoesBack(long number, double seconds) {
  const Since begin = std::chrono::steady_clock::now();
  while (StateOf(number) == "waiting" || StateOf(number) == "open") {
    if (SecondsFrom(begin) > seconds + 5) return false;
    Wait(50);
  }
  return true;
}

std::string Joined(const std::vector<std::string>& lines) {
  std::string text;
  for (const std::string& line : lines)
    text += line + "\n";
  return text;
}
#define AS_BEFORE(generation) EXPECT_EQ(Joined(change::DifferencesFrom(generation)), "")

std::vector<int> Watchers() {
  std::vector<int> pids;
  for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
    const std::string name = entry.path().filename();
    const bool process = name.find_first_not_of("0123456789") == std::string::npos;
    if (process && Contains(ReadFile((entry.path() / "cmdline").string()), "zarnnet-change-watch"))
      pids.push_back(std::stoi(name));
  }
  return pids;
}

// The change's process is killed before this step.
void KilledAtStep(int step, const std::string& wish, const std::string& options) {
  const pid_t child = ::fork();
  if (child == 0) {
    const auto progress = [](const char* text, void* context) {
      if (json::parse(text)["step"] == *static_cast<int*>(context)) ::raise(SIGKILL);
    };
    ZARNNetChangeApply(wish.c_str(), options.c_str(), progress, &step, nullptr);
    ::_exit(0);
  }
  int status = 0;
  ::waitpid(child, &status, 0);
  ASSERT_TRUE(WIFSIGNALED(status)) << "there was no step " << step;
}

// The host's name when all records are followed from the first to the last.
std::string NameByTheRecords(std::string name) {
  std::map<int, std::string> before;
  const int last = std::stoi(ReadFile("/var/lib/zarnnet/last"));
  for (int number = 1; number <= last; ++number) {
    before[number] = name;
    const std::string path = "/var/lib/zarnnet/" + std::to_string(number) + ".json";
    const json record = json::parse(ReadFile(path), nullptr, false);
    if (record["state"] != "kept") continue;
    const int undoes = record["undoes"];
    name = undoes != 0 ? before[undoes] : record["wish"]["host"]["name"].get<std::string>() + "\n";
  }
  return name;
}

// As a terminal sends it: to the programs that the change runs, too. What began for the plugins
// ends for them.
void SignalAtTenMomentsOf(const char* wish) {
  SetUpOddlyOwnedEth0();
  const auto before = change::KeepGeneration();
  const Since begin = std::chrono::steady_clock::now();
  const bool makes = Apply(wish)["result"] == ZARNNETCHANGE_DONE;
  const int milliseconds = static_cast<int>(SecondsFrom(begin) * 1000);
  if (makes) Undo(R"({"insist":true})");
  for (int moment = 0; moment < 10; ++moment) {
    const pid_t child = ::fork();
    if (child == 0) {
      ::setpgid(0, 0);
      ZARNNetChangeApply(wish, "{}", nullptr, nullptr, nullptr);
      ::_exit(0);
    }
    ::setpgid(child, child);
    Wait(milliseconds * moment / 10);
    ::kill(-child, moment % 2 == 0 ? SIGINT : SIGTERM);
    ::waitpid(child, nullptr, 0);
    const bool made = ZARNNetChangeCompare(wish, nullptr, nullptr) == ZARNNETCHANGE_DONE;
    if (made) Undo(R"({"insist":true})");
    EXPECT_EQ(Joined(change::DifferencesFrom(*before)), "") << "at " << moment << made;
  }
  std::map<std::string, int> open;
  for (const std::string& line : Events()) {
    const bool begins = Contains(line, " pre");
    open[line.substr(0, line.find(begins ? " pre" : " post"))] += begins ? 1 : -1;
  }
  for (const auto& [event, count] : open)
    EXPECT_EQ(count, 0) << event;
}

}  // namespace

TEST(Record, AConfirmedChangeStays) {
  SetUpOddlyOwnedEth0();
  const json report = Apply(kAddress, R"({"confirm":8})");
  ASSERT_EQ(report["result"], ZARNNETCHANGE_DONE) << report.dump(1);
  EXPECT_EQ(report["number"], 1);
  EXPECT_EQ(report["confirm"]["seconds"], 8);
  // A second change, whoever makes it, is told who waits and how long.
  const json second = Apply(kName, R"({"insist":true,"wait":0})");
  EXPECT_EQ(second["result"], ZARNNETCHANGE_BUSY);
  EXPECT_EQ(second["holder"]["number"], 1);
  EXPECT_EQ(Confirm(R"({"number":2})")["result"], ZARNNETCHANGE_NOT_FOUND);
  ASSERT_EQ(::seteuid(65534), 0);
  EXPECT_EQ(Confirm()["result"], ZARNNETCHANGE_NOT_ALLOWED);
  ASSERT_EQ(::seteuid(0), 0);
  EXPECT_GT(Confirm(R"({"extend":60})")["confirm"]["seconds"], 50);
  Wait(8500);
  EXPECT_EQ(StateOf(1), "waiting");
  EXPECT_EQ(Confirm()["result"], ZARNNETCHANGE_DONE);
  EXPECT_EQ(Confirm()["result"], ZARNNETCHANGE_NOT_FOUND);
  Wait(2000);
  EXPECT_EQ(StateOf(1), "kept");
  EXPECT_TRUE(Watchers().empty());
  EXPECT_TRUE(Contains(ReadIfcfg("eth0"), "192.168.50.12"));
  // One that waits is taken back at once by who undoes it.
  const auto before = change::KeepGeneration();
  Apply(kName, R"({"confirm":60})");
  EXPECT_EQ(Undo()["number"], 2);
  EXPECT_EQ(StateOf(2), "reverted");
  AS_BEFORE(*before);
  EXPECT_EQ(FileMode("/var/lib/zarnnet"), 0700);
  for (const std::string& file : FolderEntries("/var/lib/zarnnet"))
    EXPECT_EQ(FileMode("/var/lib/zarnnet/" + file), 0600) << file;
}

TEST(Record, WhatNobodyConfirmsGoesBack) {
  SetUpOddlyOwnedEth0();
  const std::string path = IfcfgPath("eth0");
  const bool attributes = ::setxattr(path.c_str(), "trusted.mark", "x", 1, 0) == 0;
  const auto before = change::KeepGeneration();
  int number = 0;
  for (const char* wish : {kAddress, kBridge, kName}) {
    const json report = Apply(wish, R"({"confirm":1})");
    ASSERT_EQ(report["result"], ZARNNETCHANGE_DONE) << report.dump(1);
    EXPECT_NE(change::DifferencesFrom(*before).size(), 0U);
    EXPECT_TRUE(GoesBack(++number, 1));
    EXPECT_EQ(StateOf(number), "reverted") << History(number).dump(1);
    AS_BEFORE(*before);
  }
  EXPECT_TRUE(Contains(Shell("stat -c %u:%g:%a " + path), "12:34:640"));
  EXPECT_TRUE(!attributes || ::getxattr(path.c_str(), "trusted.mark", nullptr, 0) == 1);
  // The wish and what it did are kept for a look.
  const json kept = History(1)["change"];
  EXPECT_EQ(kept["wish"]["interfaces"]["eth0"]["mtu"], 1400);
  EXPECT_TRUE(Contains(kept["files"].dump(), "+IPADDR=192.168.50.12"));
}

TEST(Record, TheTimeOfDayNeitherHastensNorDelays) {
  SetUpOddlyOwnedEth0();
  const auto before = change::KeepGeneration();
  Apply(kName, R"({"confirm":6})");
  for (const long ahead : {86400L, -86400L}) {
    SetWallClock(ahead);
    EXPECT_NEAR(Recover()["confirm"]["seconds"], 4, 2);
    EXPECT_EQ(StateOf(1), "waiting");
  }
  ::kill(Watchers().at(0), SIGKILL);  // whose clock is the right one
  Wait(6500);
  Recover();
  EXPECT_EQ(StateOf(1), "reverted");
  AS_BEFORE(*before);
}

TEST(Record, TheTimeToConfirmIsWhatTheMachineNeeds) {
  ASSERT_EQ(Shell("ip link add br0 type bridge stp_state 1; ip link add br1 type bridge"), "");
  const auto seconds = [](const char* wish) {
    change::Change change;
    change.wish = change.wanted = json::parse(wish);
    change.differences.push_back({change::Path("/interfaces/eth0/ipv4"), {}, {}, {}});
    return change::SecondsToConfirm(change);
  };
  for (const long set : {60, 20}) {
    if (set != 60) WriteFile("/etc/zarnnet.conf", "confirm_seconds=20\n");
    EXPECT_EQ(seconds(kName), set);
    EXPECT_EQ(seconds(R"({"bridges":{"br0":{}}})"), set + 30);
    EXPECT_EQ(seconds(R"({"bridges":{"br1":{}}})"), set);
    EXPECT_EQ(seconds(R"({"interfaces":{"eth0":{"ipv4":{"method":"dhcp"}}}})"), set + 8);
    EXPECT_EQ(seconds(R"({"bonds":{"bond0":{"mode":"802.3ad"}}})"), set + 90);
  }
}

// After the last step the disk takes no record of it: it is gone back, and nothing waits for it.
TEST(Record, WhatFailsIsGoneBackAndNeverPending) {
  SetUpOddlyOwnedEth0();
  Shell("mkdir /var/lib/zarnnet; mount -t tmpfs tmpfs /var/lib/zarnnet -o mode=700");
  const auto before = change::KeepGeneration();
  const auto readOnly = [](const char* text, void*) {
    const json step = json::parse(text);
    if (step["step"] == step["steps"]) Shell("mount -o remount,ro /var/lib/zarnnet");
  };
  const json report = Apply(kAddress, R"({"confirm":60})", readOnly);
  EXPECT_EQ(report["result"], ZARNNETCHANGE_FAILED) << report.dump(1);
  EXPECT_TRUE(Contains(report["reason"].get<std::string>(), "Read-only"));
  AS_BEFORE(*before);
  Shell("mount -o remount,rw /var/lib/zarnnet");
  EXPECT_EQ(Apply(kName)["number"], 2);
  EXPECT_EQ(StateOf(1), "failed");
}

TEST(Record, WhatDoesNotGoBackIsSaid) {
  SetUpOddlyOwnedEth0();
  Apply(kAddress, R"({"confirm":60})");
  const std::string folder = "/etc/sysconfig/network-scripts";
  Shell("mount --bind " + folder + " " + folder + " && mount -o remount,ro,bind " + folder);
  EXPECT_EQ(Undo()["result"], ZARNNETCHANGE_NOT_PUT_BACK);
  const json record = History(1)["change"];
  EXPECT_EQ(record["state"], "not put back");
  EXPECT_EQ(record["problems"][0], folder + "/ifcfg-eth0 has other content");
}

TEST(Record, WhatGoesBackNeedsNoCable) {
  SetUpOddlyOwnedEth0();
  Shell("ip route replace default via 192.168.50.1 dev eth0; ip -n lan link set lan0 down");
  Wait(300);
  const auto before = change::KeepGeneration();
  Apply(kAddress, R"({"confirm":1,"insist":true})");
  EXPECT_TRUE(GoesBack(1, 1));
  EXPECT_EQ(StateOf(1), "reverted") << History(1).dump(1);
  AS_BEFORE(*before);
  EXPECT_TRUE(Contains(Shell("ip route"), "default via 192.168.50.1 dev eth0"));
}

TEST(Record, NoAddressWaitsForALease) {
  SetUpOddlyOwnedEth0();
  Apply(R"({"interfaces":{"eth1":{"ipv4":{"method":"dhcp"}}}})");
  Shell("ip -n lan link set lan1 down");
  const auto before = change::KeepGeneration();
  Apply(R"({"interfaces":{"eth0":{"ipv4":{"address":"192.168.50.12"}},"eth1":{"ipv4":null}}})",
        R"({"confirm":1,"insist":true})");
  const Since begin = std::chrono::steady_clock::now();
  while (!Contains(Shell("ip address show eth0"), "192.168.50.10/") && SecondsFrom(begin) < 10)
    Wait(20);
  Wait(1000);
  EXPECT_EQ(StateOf(2), "waiting");
  EXPECT_TRUE(GoesBack(2, 20));
  EXPECT_EQ(StateOf(2), "reverted") << History(2).dump(1);
}

TEST(Record, WithoutItsWatcherTheNextCallPutsBack) {
  SetUpOddlyOwnedEth0();
  const auto before = change::KeepGeneration();
  const int open = ::open("/root", O_RDONLY);
  Apply(kAddress, R"({"confirm":5})");
  ::close(open);
  ASSERT_EQ(Watchers().size(), 1U);
  EXPECT_NE(::getsid(Watchers()[0]), ::getsid(0));
  EXPECT_FALSE(Contains(Shell("ls -l /proc/" + std::to_string(Watchers()[0]) + "/fd"), "/root"));
  ::kill(Watchers()[0], SIGKILL);
  Wait(6000);
  EXPECT_EQ(StateOf(1), "waiting");
  EXPECT_TRUE(Contains(Confirm().dump(), "too late"));
  AS_BEFORE(*before);
  // One that is missed while there is time is started anew.
  Apply(kAddress, R"({"confirm":6})");
  ::kill(Watchers().at(0), SIGKILL);
  Wait(100);
  Recover();
  EXPECT_TRUE(GoesBack(2, 6));
  AS_BEFORE(*before);
}

TEST(Record, ASignalAtAnyMomentLeavesABridgeOrNone) {
  SignalAtTenMomentsOf(kBridge);
}

TEST(Record, ASignalAtAnyMomentLeavesAVlanOrNone) {
  SignalAtTenMomentsOf(R"({"vlans":{"eth0.7":{}}})");
  EXPECT_FALSE(Events().empty());
}

TEST(Record, AKilledChangeIsPutBack) {
  SetUpOddlyOwnedEth0();
  const auto before = change::KeepGeneration();
  struct Row {
    int step;
    const char* wish;
    const char* options;
  };
  const Row rows[] = {{1, kAddress, "{}"},
                      {2, kAddress, "{}"},
                      {2, kAddress, R"({"confirm":60})"},
                      {1, kBridge, "{}"}};
  int number = 0;
  for (const Row& row : rows) {
    KilledAtStep(row.step, row.wish, row.options);
    ++number;
    // With a watcher nobody has to ask.
    const bool watched = row.options != std::string("{}");
    EXPECT_TRUE(!watched || GoesBack(number, 0));
    EXPECT_EQ(Recover()["result"], ZARNNETCHANGE_DONE);
    EXPECT_EQ(StateOf(number), "failed");
    AS_BEFORE(*before);
  }
}

// By a job of a terminal, and by a script that goes on.
class KilledChange : public ::testing::TestWithParam<bool> {};
INSTANTIATE_TEST_SUITE_P(Record, KilledChange, ::testing::Bool());
TEST_P(KilledChange, WhatItHadStartedIsAwaited) {
  SetUpOddlyOwnedEth0();
  Shell("sed -i '2i sleep 1' /etc/rc.network; ip link set eth1 up");
  const auto before = change::KeepGeneration();
  const pid_t child = ::fork();
  if (child == 0) {
    if (GetParam()) ::setpgid(0, 0);
    ZARNNetChangeApply(kBridge, "{}", nullptr, nullptr, nullptr);
    ::_exit(0);
  }
  for (int i = 0; i < 100 && !Contains(Shell("ps -eo args"), "rc.network"); ++i)
    Wait(20);
  ::kill(child, SIGKILL);
  ::waitpid(child, nullptr, 0);
  const std::string cut = "/etc/sysconfig/network-scripts/VLAN_a8tlxH";
  WriteFile(cut, "DEVICE=eth0\n");
  Shell("umask 077; for name in hosts.Ab3dEf hosts.backup mine.Ab3dEf; do : >/etc/$name; done");
  EXPECT_EQ(Recover()["result"], ZARNNETCHANGE_DONE);
  EXPECT_FALSE(std::filesystem::exists(cut) || std::filesystem::exists("/etc/hosts.Ab3dEf"));
  EXPECT_TRUE(std::filesystem::exists("/etc/hosts.backup"));  // somebody else's
  EXPECT_TRUE(std::filesystem::exists("/etc/mine.Ab3dEf"));
  Wait(1500);
  AS_BEFORE(*before);
}

TEST(Record, AStartOfTheMachinePutsBack) {
  SetUpOddlyOwnedEth0();
  WriteFile("/root/boot", "one\n");
  ASSERT_EQ(Shell("mount --bind /root/boot /proc/sys/kernel/random/boot_id"), "");
  const auto before = change::KeepGeneration();
  for (const bool starting : {false, true}) {
    Apply(kAddress, R"({"confirm":3600})");
    std::ofstream("/root/boot") << (starting ? "three\n" : "two\n");
    // The watcher of the run before is gone with that.
    for (const int pid : Watchers())
      ::kill(pid, SIGKILL);
    const json report = Recover(starting ? R"({"starting":true})" : "{}");
    EXPECT_EQ(report["result"], ZARNNETCHANGE_DONE) << report.dump(1);
    EXPECT_TRUE(Contains(report["reason"].get<std::string>(), "started anew"));
    EXPECT_EQ(Joined(change::FileDifferencesFrom(*before)), "");
    EXPECT_EQ(Contains(Shell("ip address show eth0"), "192.168.50.12"), starting);
  }
}

TEST(Record, WhatCannotBeRecordedIsNotDone) {
  SetUpOddlyOwnedEth0();
  ASSERT_EQ(Apply(kName)["number"], 1);
  const std::string record = ReadFile("/var/lib/zarnnet/1.json");
  std::string newer = record;
  newer.replace(newer.find("\"version\": 1"), 12, "\"version\": 9");
  WriteFile("/root/whole", record);
  WriteFile("/root/cut", record.substr(0, record.size() / 2));
  WriteFile("/root/newer", newer);
  const std::string mount = "mount -t tmpfs tmpfs /var/lib/zarnnet -o mode=700,";
  struct Row {
    std::string damage;
    std::string repair;
    const char* reason;
  };
  const Row rows[] = {
      {"cp /root/cut /var/lib/zarnnet/1.json", "", "cut or damaged"},
      {"cp /root/newer /var/lib/zarnnet/1.json", "cp /root/whole /var/lib/zarnnet/1.json",
       "newer version"},
      {mount + "size=4k", "umount /var/lib/zarnnet", "No space left"},
      {mount + "ro", "umount /var/lib/zarnnet", "Read-only"},
  };
  for (const Row& row : rows) {
    Shell(row.damage);
    const json report = Apply(kAddress);
    EXPECT_NE(report["result"], ZARNNETCHANGE_DONE);
    EXPECT_TRUE(Contains(report["reason"].get<std::string>(), row.reason)) << report["reason"];
    EXPECT_FALSE(Contains(ReadIfcfg("eth0"), "192.168.50.12"));
    Shell(row.repair);
  }
  EXPECT_EQ(Apply(kAddress)["result"], ZARNNETCHANGE_DONE);
}

TEST(Record, UndoneByNumber) {
  SetUpOddlyOwnedEth0();
  const auto first = change::KeepGeneration();
  Apply(kAddress);
  const auto second = change::KeepGeneration();
  Apply(kBridge);
  const auto third = change::KeepGeneration();
  const json undone = Undo(R"({"number":1})");
  EXPECT_EQ(undone["result"], ZARNNETCHANGE_DONE) << undone.dump(1);
  EXPECT_EQ(undone["number"], 3);
  AS_BEFORE(*first);
  EXPECT_EQ(Undo()["undoes"], 3);
  AS_BEFORE(*third);
  EXPECT_EQ(Undo(R"({"number":2,"confirm":1})")["confirm"]["number"], 5);
  AS_BEFORE(*second);
  EXPECT_TRUE(GoesBack(5, 1));
  AS_BEFORE(*third);
  // What somebody wrote himself is named, and not lost unasked.
  Shell("echo '192.168.50.77 by-hand' >>/etc/hosts");
  const json refused = Undo(R"({"number":2})");
  EXPECT_EQ(refused["result"], ZARNNETCHANGE_REFUSED);
  EXPECT_TRUE(Contains(refused["reason"].get<std::string>(), "/etc/hosts"));
  EXPECT_EQ(Undo(R"({"number":2,"insist":true})")["result"], ZARNNETCHANGE_DONE);
  AS_BEFORE(*second);
}

TEST(Record, SecretsAreNotShown) {
  SetUpOddlyOwnedEth0();
  Apply(R"({"pppoe":{"interface":"eth1","user":"bob","password":"Hidden.1"}})");
  Apply(R"({"tunnel":{"server":"broker.example","user":"bob","password":"Hidden.2"}})");
  for (const int number : {1, 2}) {
    const std::string text = History(number).dump();
    EXPECT_TRUE(Contains(text, "(secret)")) << text;
    EXPECT_FALSE(Contains(text, "Hidden")) << text;
  }
}

TEST(Record, TheOwnPathIsKept) {
  SetUpOddlyOwnedEth0();
  const NeighboursSession session("192.168.50.10");
  struct Row {
    const char* wish;
    bool cuts;
  };
  const Row rows[] = {
      {kAddress, true},
      {R"({"interfaces":{"eth0":{"up":false}}})", true},
      {R"({"interfaces":{"eth0":{"ipv4":{"method":"dhcp"}}}})", true},
      {kBridge, true},
      {R"({"vlans":{"eth0.7":{}}})", true},
      {R"({"interfaces":{"eth0":{"mtu":1400}}})", false},
      {R"({"interfaces":{"eth1":{"up":false}}})", false},
      {R"({"interfaces":{"eth1":{"ipv4":{"address":"10.0.0.1","prefix":8}}}})", false},
  };
  for (const Row& row : rows) {
    for (const char* options : {R"({"probe":false})", R"({"probe":false,"confirm":9})"}) {
      const json report =
          Taken([&](char** text) { return ZARNNetChangeCheck(row.wish, options, text); });
      const bool found = Contains(report["findings"].dump(), "own_path");
      EXPECT_EQ(found, row.cuts && !Contains(options, "confirm")) << row.wish << report.dump(1);
    }
  }
  // A refused wish is kept, so that the mistake can be found.
  const json refused = Apply(kAddress, R"({"probe":false})");
  ASSERT_EQ(refused["result"], ZARNNETCHANGE_REFUSED);
  const json kept = History(refused["number"])["change"];
  EXPECT_EQ(kept["state"], "refused");
  EXPECT_EQ(kept["wish"]["interfaces"]["eth0"]["mtu"], 1400);
  ::setenv("SSH_CONNECTION", "192.168.50.1 1 192.168.50.10 2222", 1);  // of a session that is over
  EXPECT_FALSE(
      Contains(Taken([](char** text) { return ZARNNetChangeCheck(kAddress, "{}", text); }).dump(),
               "own_path"));
}

// Each number once, and the machine is what the last change says. ZARNNET_CHANGES=200 has 16
// processes make so many each.
TEST(Record, ManyAtOnce) {
  SetUpOddlyOwnedEth0();
  const char* const asked = std::getenv("ZARNNET_CHANGES");
  const int processes = asked != nullptr ? 16 : 8;
  const int changes = asked != nullptr ? std::stoi(asked) : 20;
  WriteFile("/etc/zarnnet.conf", "keep_records=100000\n");
  const std::string first = Shell("hostname");
  for (int process = 0; process < processes; ++process) {
    if (::fork() != 0) continue;
    for (int i = 0; i < changes; ++i) {
      const std::string name = "h" + std::to_string(process) + "-" + std::to_string(i);
      const std::string wish = json{{"host", {{"name", name}}}}.dump();
      const std::string options = json{{"wait", 60}, {"confirm", i % 4 == 0 ? 30 : 0}}.dump();
      char* text = nullptr;
      ZARNNetChangeApply(wish.c_str(), i % 2 == 0 ? options.c_str() : R"({"wait":60})", nullptr,
                         nullptr, &text);
      const json report = json::parse(text != nullptr ? text : "{}");
      ZARNNetChangeFree(text);
      const std::string number = json{{"number", report.value("number", 1)}, {"wait", 60}}.dump();
      if (report.contains("confirm")) ZARNNetChangeConfirm(number.c_str(), nullptr);
      if (i % 5 == 4) ZARNNetChangeUndo(number.c_str(), nullptr, nullptr, nullptr);
      std::ofstream("/root/numbers." + name) << report.value("number", 0) << "\n";
    }
    ::_exit(0);
  }
  while (::wait(nullptr) > 0)
    continue;
  std::set<int> numbers;
  int made = 0;
  for (const std::string& file : FolderEntries("/root")) {
    if (!file.starts_with("numbers.")) continue;
    const int number = std::stoi(ReadFile("/root/" + file));
    if (number == 0) continue;  // another one waited
    ++made;
    EXPECT_TRUE(numbers.insert(number).second) << number;
  }
  EXPECT_GT(made, processes * 2);
  EXPECT_EQ(Recover()["result"], ZARNNETCHANGE_DONE);
  EXPECT_EQ(Shell("hostname"), ReadFile("/etc/hostname"));
  EXPECT_EQ(Shell("hostname"), NameByTheRecords(first));
  if (asked != nullptr) std::cout << numbers.size() << " changes, each number once\n";
}
