// SPDX-License-Identifier: Apache-2.0
// A plan is what happens: each wish is planned, then made under the eyes of a tracer, and the two
// are compared, both ways. A plan leaves the machine as it is, byte for byte.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <regex>
#include <unistd.h>
#include <zarnnetchange/change.h>

#include "record/generation.h"
#include "record/unified_diff.h"
#include "rehearsal/program/changes.h"
#include "support/appliance.h"
#include "support/children.h"
#include "traced.h"
#include "wish.h"

using namespace test;

namespace {

namespace fs = std::filesystem;
using change::Json;
using change::WholeFile;

struct Text {
  char* text = nullptr;
  ~Text() { ZARNNetChangeFree(text); }
};

Json PlanOf(const Wish& wish) {
  Text plan;
  const int result = ZARNNetChangePlan(wish.wish.c_str(), wish.options.c_str(), &plan.text);
  Json json = Json::parse(plan.text != nullptr ? plan.text : "{}");
  EXPECT_EQ(json.value("result", -1), result) << wish.wish;
  return json;
}

// ---- what is another each time, by name

// Locks and logs, records of changes, this test's own; and what programs write that a plan has
// answered: the numbers of processes, leases, what the DHCP server is given, what a connection is.
const std::regex kNotPlanned(
    "/run/(lock|zarnnet|jobs|dhcpd)/.*|/var/lib/zarnnet/.*|/run/(journal|child-log|mounts)|/var/"
    "log/.*|/run/.*[.]pid"
    "|/run/.*[.]pid[.]pppd|/etc/dhclient/ipv4/.*|/tmp/dhcp.*|/tmp/zarnpppoe.intf");
const std::regex kNotPlannedSettings(".*(ppp0|/tun/|tun IPv6).*");

std::string Alike(const std::string& text) {
  return std::regex_replace(text, std::regex("[.]tmp[0-9]+"), ".tmp#");
}

// ---- the machine

using Files = std::map<std::string, WholeFile>;

Files FilesNow(bool all) {
  Files files;
  for (const char* root : {"/etc", "/run", "/tmp", "/var", "/root"}) {
    for (const auto& entry : fs::recursive_directory_iterator(root)) {
      const std::string path = entry.path();
      const bool lock = path.starts_with("/run/lock/");  // which a reader takes, too
      const bool passing = lock || (!all && std::regex_match(path, kNotPlanned));
      auto file = passing ? std::nullopt : change::ReadWhole(path);
      if (file) files.emplace(path, std::move(*file));
    }
  }
  return files;
}

struct Machine {
  Files files = FilesNow(true);
  change::Generation generation = *change::KeepGeneration();
  std::string mounts = ReadFile("/proc/self/mountinfo");
  std::string links = Shell("ip address; ip -6 route; ip route show table all; ps -e -o args=");
};

// ---- both sides as lines

Lines Planned(const Json& files) {
  Lines lines;
  for (const Json& file : files) {
    if (std::regex_match(file["path"].get<std::string>(), kNotPlanned)) continue;
    lines.push_back(file["change"].get<std::string>() + " " + file["path"].get<std::string>() +
                    " " + file.value("mode", Json::object()).value("after", "") + "\n" +
                    file["diff"].get<std::string>());
  }
  return lines;
}

std::string Octal(mode_t mode) {
  char text[8];
  std::snprintf(text, sizeof text, "%04o", mode);
  return text;
}

// A plan shows no secret; that one is another is all that can be compared.
std::string Shown(const std::string& path, const std::string& text) {
  if (path == "/etc/gogoc/.tunnel_passwd") return text.empty() ? "" : "(secret)\n";
  const bool accounts = path == "/etc/ppp/pap-secrets";
  return accounts ? std::regex_replace(text, std::regex("'[^'\n]*'\n"), "(secret)\n") : text;
}

Lines Happened(const Files& before, const Files& after) {
  Lines lines;
  Files all = before;
  all.insert(after.begin(), after.end());
  for (const auto& [path, file] : all) {
    const auto was = before.find(path);
    const auto is = after.find(path);
    const bool both = was != before.end() && is != after.end();
    if (both && was->second == is->second) continue;
    const bool mode = is != after.end() && (!both || was->second.mode != is->second.mode);
    const std::string old = was != before.end() ? was->second.bytes : "";
    const std::string fresh = is != after.end() ? is->second.bytes : "";
    lines.push_back((both                  ? "changed "
                     : was == before.end() ? "new "
                                           : "gone ") +
                    path + " " + (mode ? Octal(is->second.mode) : "") + "\n" +
                    change::UnifiedDiff(was != before.end() ? path : "/dev/null", Shown(path, old),
                                        is != after.end() ? path : "/dev/null",
                                        Shown(path, fresh)));
  }
  return lines;
}

void ExpectUntouched(const Machine& before, const std::string& wish) {
  const Machine now;
  EXPECT_EQ(Happened(before.files, now.files), Lines()) << wish;
  EXPECT_EQ(DifferencesFrom(before.generation), Lines()) << wish;
  EXPECT_EQ(now.mounts, before.mounts) << wish;
  // What the kernel does a moment later: an address has its local route when nobody else has it.
  const auto stays = [](const std::string& text) {
    const std::regex passing("[^\n]*(valid_lft|ps -e|fe80:| table local )[^\n]*\n| tentative");
    return std::regex_replace(text, passing, "");
  };
  EXPECT_EQ(stays(now.links), stays(before.links)) << wish;
}

// What the library calls in its order; what a script calls side by side in any.
Lines InOrder(std::vector<Call> calls) {
  Lines direct;
  Lines within;
  for (const Call& call : calls) {
    // Asked once there is a connection, which nobody has dialled in a plan.
    if (call.words == "pppoe-status") continue;
    (call.within.empty() ? direct : within).push_back(Alike(call.within + ": " + call.words));
  }
  std::sort(within.begin(), within.end());
  direct.insert(direct.end(), within.begin(), within.end());
  return direct;
}

std::vector<Call> PlannedCalls(const Json& programs) {
  std::vector<Call> calls;
  for (const Json& program : programs) {
    std::string words = fs::path(program["program"].get<std::string>()).filename();
    for (const Json& argument : program["arguments"])
      words += " " + argument.get<std::string>();
    calls.push_back({program.value("within", ""), words});
  }
  return calls;
}

Lines PlannedEvents(const Json& events) {
  Lines lines;
  for (const Json& event : events) {
    std::string line = event["event"].get<std::string>() + " " + event["stage"].get<std::string>();
    for (const auto& [name, value] : event["arguments"].items())
      line += " " + name + "=" + value.get<std::string>();
    lines.push_back(line);
  }
  return lines;
}

Lines SettingsOf(const Json& changes) {
  Lines lines;
  for (const Json& change : changes) {
    const std::string name = change["setting"];
    if (!std::regex_match(name, kNotPlannedSettings))
      lines.push_back(name + ": " + change["before"].dump() + " -> " + change["after"].dump());
  }
  return lines;
}

void MakeAsPlanned(const Wish& wish) {
  SCOPED_TRACE(wish.wish + " " + wish.options);
  if (wish.before != nullptr) Shell(wish.before);
  const Machine machine;
  const Json plan = PlanOf(wish);
  ExpectUntouched(machine, wish.wish);
  ASSERT_TRUE(plan.contains("programs")) << plan.dump(2);
  for (const Json& step : plan["steps"])
    testing::Test::RecordProperty(step["setter"].get<std::string>(), "planned");
  const Files before = FilesNow(false);
  const std::size_t events = Events().size();
  Json options = Json::parse(wish.options);
  options["probe"] = false;
  options["plan"] = plan;
  int result = -1;
  const auto calls = TraceCalls(
      [&] {
        return ZARNNetChangeApply(wish.wish.c_str(), options.dump().c_str(), nullptr, nullptr,
                                  nullptr);
      },
      &result);
  const Lines told = Events();
  const auto after = change::KeepGeneration();
  EXPECT_EQ(plan["result"], result);
  EXPECT_EQ(Planned(plan["files"]), Happened(before, FilesNow(false)));
  EXPECT_EQ(InOrder(PlannedCalls(plan["programs"])), InOrder(calls));
  EXPECT_EQ(PlannedEvents(plan["events"]),
            Lines(told.begin() + static_cast<long>(events), told.end()));
  EXPECT_EQ(SettingsOf(plan["kernel"]),
            SettingsOf(rehearsal::KernelChanges(machine.generation.kernel, after->kernel)));
  EXPECT_EQ(plan.dump().find("Hidden"), std::string::npos);
}

// ---- a plan that is kept

int ResultOf(const char* wish, const Json& plan, std::string* reason) {
  Text report;
  const std::string options = Json{{"plan", plan}, {"probe", false}}.dump();
  const int result = ZARNNetChangeApply(wish, options.c_str(), nullptr, nullptr, &report.text);
  *reason = Json::parse(report.text).value("reason", "");
  return result;
}

}  // namespace

struct Group {
  const char* name;
  const std::vector<Wish>& wishes;
};
class Wishes : public testing::TestWithParam<Group> {};

TEST_P(Wishes, HappenAsPlanned) {
  SetUpEth0();
  Shell("ip -6 address flush dev eth0 scope global");  // of several the kernel lists any first
  for (const Wish& wish : GetParam().wishes)
    MakeAsPlanned(wish);
}

INSTANTIATE_TEST_SUITE_P(
    Plan, Wishes,
    testing::Values(Group{"Names", wishes::kNames}, Group{"Address", wishes::kAddress},
                    Group{"Lease", wishes::kLease}, Group{"Ipv6", wishes::kIpv6},
                    Group{"Bonds", wishes::kBonds}, Group{"Bridge", wishes::kBridge},
                    Group{"Moves", wishes::kMoves}, Group{"Links", wishes::kLinks},
                    Group{"DhcpServer", wishes::kDhcpServer},
                    Group{"DhcpSettings", wishes::kDhcpSettings},
                    Group{"Services", wishes::kServices}),
    [](const auto& group) { return std::string(group.param.name); });

TEST(Plan, HoldsWhileNothingElseChanges) {
  SetUpEth0();
  const char* const wish = R"({"pppoe":{"interface":"eth1","user":"bob","password":"Hidden.1"}})";
  const Json plan = PlanOf({wish});
  std::string reason;
  EXPECT_EQ(ResultOf(R"({"host":{"name":"nas"}})", plan, &reason), ZARNNETCHANGE_REFUSED);
  EXPECT_EQ(reason, "the plan is one for another wish");
  Shell("ip link set eth3 mtu 1400");
  EXPECT_EQ(ResultOf(wish, plan, &reason), ZARNNETCHANGE_REFUSED);
  EXPECT_EQ(reason, "the interface eth3 has changed since the plan was made: make a new one");
  Shell("ip link set eth3 mtu 1500; chmod 600 /etc/hosts");
  EXPECT_EQ(ResultOf(wish, plan, &reason), ZARNNETCHANGE_REFUSED);
  EXPECT_EQ(reason, "/etc/hosts has changed since the plan was made: make a new one");
  Shell("chmod 644 /etc/hosts");
  EXPECT_EQ(ResultOf(wish, plan, &reason), ZARNNETCHANGE_DONE) << reason;
}

// A disk that takes no writing takes none in the copy, either.
TEST(Plan, ShowsAFailureAndItsEnd) {
  SetUpEth0();
  Shell("mount --bind /etc/sysconfig /etc/sysconfig && mount -o remount,ro,bind /etc/sysconfig");
  MakeAsPlanned({R"({"interfaces":{"eth0":{"mtu":1400,"ipv4":{"address":"192.168.50.12"}}}})"});
  Shell("umount /etc/sysconfig");
}

TEST(Plan, WhatCannotBeRehearsedIsNamed) {
  SetUpEth0();
  Shell("ip tuntap add tun0 mode tun");
  const std::string named = PlanOf({R"({"pppoe":{"interface":"eth1","user":"b","password":"x"}})"})
                                .value("notRehearsed", Json())
                                .dump();
  EXPECT_TRUE(Contains(named, "a port stands in for it: the kernel makes no tun in the copy"));
  EXPECT_TRUE(Contains(named, "nobody was asked whether somebody else has them"));
}

// A plan of another user, with what he may read, in a process of his own.
TEST(Plan, OfAnotherUser) {
  SetUpEth0();
  const Wish wish{R"({"interfaces":{"eth0":{"ipv4":{"address":"192.168.50.11"}}}})"};
  WriteFile("/tmp/plan", "", 0666);
  const pid_t child = Start([&] {
    const bool other =
        ::setresgid(65534, 65534, 65534) == 0 && ::setresuid(65534, 65534, 65534) == 0;
    std::ofstream("/tmp/plan") << PlanOf(wish);
    return other ? 0 : 1;
  });
  ASSERT_EQ(ExitStatusOf(child), 0);
  const Json plan = Json::parse(ReadFile("/tmp/plan"));
  EXPECT_EQ(plan["result"], ZARNNETCHANGE_DONE) << plan.dump(2);
  EXPECT_EQ(SettingsOf(plan["kernel"]), Lines({R"(eth0 IPv4: "192.168.50.10/24 10.7.0.1/16" -> )"
                                               R"("192.168.50.11/24 10.7.0.1/16")"}));
}

// Half a second where nothing else runs; the test's own bound is wider.
TEST(Plan, TakesHalfASecondWithThirtyTwoInterfaces) {
  SetUpEth0();
  for (int i = 4; i < 32; ++i)
    Shell("ip link add eth" + std::to_string(i) + " type veth peer name far" + std::to_string(i) +
          " netns lan && ip link set up eth" + std::to_string(i));
  const Wish wish{R"({"interfaces":{"eth0":{"ipv4":{"address":"192.168.50.11"}}}})"};
  std::vector<double> seconds;
  for (int i = 0; i < 5; ++i)
    seconds.push_back(PlanOf(wish).value("seconds", 99.0));
  std::sort(seconds.begin(), seconds.end());
  RecordProperty("seconds", std::to_string(seconds[2]));
  EXPECT_LT(seconds[0], 2.0);
}
