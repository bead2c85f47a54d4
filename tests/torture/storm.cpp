// SPDX-License-Identifier: Apache-2.0
// 32 processes and 8 threads of one more.
#include <atomic>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <fstream>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include <zarnnetsdk/zarnnetsdk.h>

#include "torture.h"

namespace torture {
namespace {

constexpr int kProcesses = 32;
constexpr int kThreads = 8;

// In memory that all share.
struct Tally {
  std::atomic<long> calls;
  std::atomic<long> faults;
  char what[256];
};

struct Caller {
  void Run(std::time_t end) const {
    for (int round = 0; std::time(nullptr) < end; ++round) {
      Keys(std::to_string(1000 + round % 8000), round);
      Files(round);
      tally->calls += 12;
    }
  }
  void Expect(bool right, const char* what) const {
    if (!right && tally->faults.fetch_add(1) == 0)
      std::snprintf(tally->what, sizeof tally->what, "%s: %s", name.c_str(), what);
  }
  // One key each in a file of all; one line each, which is there or not; a file each.
  void Keys(const std::string& value, int round) const {
    const char* const own = name.c_str();
    char read[64] = "";
    Expect(ZARNConfSetMTUValue(value.c_str(), own) == 0, "the MTU is not stored");
    Expect(ZARNConfGetMTUValue(own, read, 16) >= 0 && value == read, "a lost MTU setting");
    Expect(DHCPVendorSetVendorOpt(own, 7, value.c_str()) == 0, "the option is not stored");
    Expect(DHCPVendorGetVendorOpt(own, 7, read, sizeof read) == 1 && value == read,
           "a lost vendor option");
    const std::string key = "dhcp-option=vendor:" + name;
    if (round % 4 == 0) {
      Expect(KOPACFileRemoveKey("/etc/dhcpd/dhcpd-vendor.conf", key.c_str()) == 0,
             "the option is not removed");
      Expect(DHCPVendorGetVendorOpt(own, 7, read, sizeof read) == 0, "an option that stays");
    }
    PPPOE_RELAY_CONF conf{round % 2, "eth1"}, found{};
    Expect(ZARNNetSetPPPoERelayConfig(own, &conf) == 0, "the relay is not stored");
    Expect(ZARNNetGetPPPoERelayConfig(own, &found) == 0 && found.enable == conf.enable,
           "a lost relay setting");
  }
  // Files of all. The count goes with the flags, whoever has set them last, and the name of one
  // caller never with the password of another.
  void Files(int round) const {
    Expect(ZARNNetIFBlockSet("eth0", 1U << (number % 4), round % 2) == 0, "a flag is not stored");
    Expect(ZARNNetIFBlockGet("eth0") >= 0, "flags that cannot be read");
    PPPOE_CONF conf{"eth0", {}, {}, "1492", {}};
    for (char* text : {conf.user, conf.password})
      std::strcpy(text, name.c_str());
    Expect(PPPoEConfigSet(&conf) == 0, "the account is not stored");
    ZARNTUNNELCONF tunnel{};
    Expect(ZARNTunnelConfigGet(&tunnel) == 0, "the tunnel's settings cannot be read");
    Expect(ZARNLnxSetHostname(number % 2 == 0 ? "even" : "a-very-odd-name") == 0,
           "the host name is not set");
    std::string read;
    std::ifstream file("/etc/hostname");
    std::getline(file, read);
    Expect(read == "even" || read == "a-very-odd-name", "a host name in parts");
  }

  int number;
  Tally* tally;
  std::string name = "st" + std::to_string(number);
};

void RunThreads(std::time_t end, Tally* tally) {
  {
    std::vector<std::jthread> threads;
    for (int i = 0; i < kThreads; ++i)
      threads.emplace_back([=] { Caller{kProcesses + i, tally}.Run(end); });
  }
  if (::waitpid(-1, nullptr, WNOHANG) == -1) return;
  tally->faults++;
  std::strcpy(tally->what, "a zombie");
}

}  // namespace

long Storm(int seconds, const std::function<void(const std::string&)>& fault) {
  auto* const tally = Shared<Tally>();
  const std::time_t end = std::time(nullptr) + seconds;
  std::vector<pid_t> children;
  for (int i = 0; i <= kProcesses; ++i) {
    children.push_back(::fork());
    if (children.back() != 0) continue;
    ::alarm(static_cast<unsigned>(seconds) + 60);  // a deadlock
    i < kProcesses ? Caller{i, tally}.Run(end) : RunThreads(end, tally);
    ::_exit(0);
  }
  for (const pid_t child : children) {
    int status = 0;
    if (::waitpid(child, &status, 0) == child && status != 0)
      fault("storm: a caller ends with " + std::to_string(status));
  }
  PPPOE_CONF account{};
  if (PPPoEConfigGet(&account) != 0 || std::strcmp(account.user, account.password) != 0)
    fault(std::string("storm: ") + account.user + " has the password " + account.password);
  if (tally->faults > 0)
    fault("storm: " + std::to_string(tally->faults) + ", the first: " + tally->what);
  return tally->calls;
}

}  // namespace torture
