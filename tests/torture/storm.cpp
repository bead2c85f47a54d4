// 32 processes and 8 threads of one more.
#include "storm.h"

#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <sys/mman.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include <zarnnetsdk/zarnnetsdk.h>

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

void Note(Tally* tally, const std::string& what) {
  if (tally->faults.fetch_add(1) == 0) what.copy(tally->what, sizeof tally->what - 1);
}

class Caller {
 public:
  Caller(int number, Tally* tally)
      : name_("st" + std::to_string(number)), number_(number), tally_(tally) {}

  void Run(std::time_t end) {
    for (int round = 0; std::time(nullptr) < end; ++round) {
      const std::string mtu = std::to_string(1000 + round % 8000);
      MtuSetting(mtu);
      Vendor(mtu, round);
      Relay(round);
      Flags(round);
      Account();
      Hostname();
      tally_->calls += 12;
    }
  }

 private:
  void Expect(bool right, const char* what) {
    if (!right) Note(tally_, name_ + ": " + what);
  }

  // One key each in a file of all.
  void MtuSetting(const std::string& mtu) {
    char read[16] = "";
    Expect(ZARNConfSetMTUValue(mtu.c_str(), name_.c_str()) == 0, "the MTU is not stored");
    Expect(ZARNConfGetMTUValue(name_.c_str(), read, sizeof read) >= 0 && mtu == read,
           "a lost MTU setting");
  }
  // One line each, which is there or not.
  void Vendor(const std::string& value, int round) {
    char read[64] = "";
    Expect(DHCPVendorSetVendorOpt(name_.c_str(), 7, value.c_str()) == 0,
           "the option is not stored");
    Expect(DHCPVendorGetVendorOpt(name_.c_str(), 7, read, sizeof read) == 1 && value == read,
           "a lost vendor option");
    if (round % 4 != 0) return;
    Expect(KOPACFileRemoveKey("/etc/dhcpd/dhcpd-vendor.conf",
                              ("dhcp-option=vendor:" + name_).c_str()) == 0,
           "the option is not removed");
    Expect(DHCPVendorGetVendorOpt(name_.c_str(), 7, read, sizeof read) == 0,
           "an option that stays");
  }
  void Relay(int round) {
    PPPOE_RELAY_CONF conf{round % 2, "eth1"};
    PPPOE_RELAY_CONF read{};
    Expect(ZARNNetSetPPPoERelayConfig(name_.c_str(), &conf) == 0, "the relay is not stored");
    Expect(ZARNNetGetPPPoERelayConfig(name_.c_str(), &read) == 0 && read.enable == conf.enable,
           "a lost relay setting");
  }
  // One file of all: the count goes with the flags, whoever has set them last.
  void Flags(int round) {
    Expect(ZARNNetIFBlockSet("eth0", 1U << (number_ % 4), round % 2) == 0, "a flag is not stored");
    Expect(ZARNNetIFBlockGet("eth0") >= 0, "flags that cannot be read");
  }
  // The name of one caller never goes with the password of another.
  void Account() {
    PPPOE_CONF conf{};
    std::snprintf(conf.eth, sizeof conf.eth, "eth0");
    std::snprintf(conf.user, sizeof conf.user, "%s", name_.c_str());
    std::snprintf(conf.password, sizeof conf.password, "%s", name_.c_str());
    std::snprintf(conf.mtu, sizeof conf.mtu, "1492");
    Expect(PPPoEConfigSet(&conf) == 0, "the account is not stored");
    ZARNTUNNELCONF tunnel{};
    Expect(ZARNTunnelConfigGet(&tunnel) == 0, "the tunnel's settings cannot be read");
  }
  void Hostname() {
    char read[256] = "";
    Expect(ZARNLnxSetHostname(number_ % 2 == 0 ? "even" : "a-very-odd-name") == 0,
           "the host name is not set");
    FILE* const file = std::fopen("/etc/hostname", "re");
    Expect(file != nullptr && std::fgets(read, sizeof read, file) != nullptr &&
               (std::strcmp(read, "even\n") == 0 || std::strcmp(read, "a-very-odd-name\n") == 0),
           "a host name in parts");
    if (file != nullptr) std::fclose(file);
  }

  std::string name_;
  int number_;
  Tally* tally_;
};

void RunThreads(std::time_t end, Tally* tally) {
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i)
    threads.emplace_back([=] { Caller(kProcesses + i, tally).Run(end); });
  for (std::thread& thread : threads)
    thread.join();
  if (::waitpid(-1, nullptr, WNOHANG) != -1) Note(tally, "a zombie");
}

}  // namespace

long Storm(int seconds, const std::function<void(const std::string&)>& fault) {
  auto* const tally = static_cast<Tally*>(
      ::mmap(nullptr, sizeof(Tally), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
  const std::time_t end = std::time(nullptr) + seconds;
  std::vector<pid_t> children;
  for (int i = 0; i <= kProcesses; ++i) {
    const pid_t child = ::fork();
    if (child == 0) {
      ::alarm(static_cast<unsigned>(seconds) + 60);  // a deadlock
      if (i < kProcesses) {
        Caller(i, tally).Run(end);
      } else {
        RunThreads(end, tally);
      }
      ::_exit(0);
    }
    children.push_back(child);
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
