// Sweeps over the table of setters: every fault, every kill, every hostile text. To be run in the
// reference appliance; scripts/torture does.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <zarncore/zarncore.h>

#include "call.h"
#include "machine.h"
#include "setters.h"
#include "storm.h"

namespace torture {
namespace {

struct Options {
  std::string sweeps = "faults memory kills random hostile storm";
  std::string only;
  int stride = 1;  // every so manyth case
  int part = 0;
  int parts = 1;
  int seconds = 20;  // of the storm
};

long cases = 0;
long faults = 0;

void Tell(const std::string& what) {
  ++faults;
  std::printf("FAULT %s\n", what.c_str());
}

// ---- one setter, as it is without a fault

using Versions = std::map<std::string, std::set<std::string>>;

void Shell(const std::string& script) {
  static_cast<void>(!std::system(("I=/etc/sysconfig/network-scripts/ifcfg;" + script).c_str()));
}

void TakeDown() {
  Shell("umount /sys/class/net 2>/dev/null; rm -rf /run/vlans");
}

class Subject {
 public:
  Subject(const Setter& row, Machine* machine)
      : setter(row), machine_(machine), delivered_(machine->Look()) {
    Shell(setter.setup);
    before = machine_->Look();
    Note(before);
    reference = Call(Bound(), {}, [&] { Note(machine_->Look()); });
    after = machine_->Look();
    Note(after);
    if (reference.result < 0 || !reference.left.empty())
      Tell(Name("without a fault: answers " + std::to_string(reference.result) + reference.left));
    for (const std::string& path : reference.written) {
      if (after.files.count(path) != 0 && before.files.count(path) != 0)
        Tell(Name("writes in place: " + path));
    }
    if (!setter.Is(kOnce) && !setter.Is(kNoWayOn) && Call(Bound(), {}).result != reference.result)
      Tell(Name("the second call answers otherwise"));
    machine_->PutBack(before);
  }
  ~Subject() {
    TakeDown();
    machine_->PutBack(delivered_);
  }
  Subject(const Subject&) = delete;
  Subject& operator=(const Subject&) = delete;

  [[nodiscard]] std::function<int()> Bound() const {
    return [this] { return setter.call(setter.texts); };
  }
  [[nodiscard]] std::string Name(const std::string& text) const {
    return std::string(setter.name) + ": " + text;
  }

  // One fault, and all that must hold behind it.
  Outcome Try(const Fault& fault, const std::string& name) {
    machine_->PutBack(before);
    const Outcome outcome = Call(Bound(), fault);
    if (!outcome.reached) return outcome;
    ++cases;
    const State now = machine_->Look();
    std::string wrong = outcome.left + Lost(now, outcome.ended);
    const bool passedOver =
        fault.kind == kSpawn || fault.what == Fault::kMemory || fault.what == Fault::kAllMemory;
    if (!setter.Is(kLenient) || !passedOver) wrong += Mixed(now);
    // What could not be removed stays; what a killed call has left the next one removes.
    if (outcome.ended && fault.kind != kUnlink) wrong += Leftover(now);
    const bool done = Difference(now, after).empty();
    const bool yes = outcome.ended && outcome.result == reference.result;
    if (yes && !setter.Is(kLenient)) {
      const std::string difference = Difference(now, after);
      if (!difference.empty()) wrong += " says yes, and" + difference;
    }
    if (outcome.ended && !yes && outcome.code == 0) wrong += " has no code";
    if (!done && !setter.Is(kNoWayOn) && !(yes && setter.Is(kLenient))) wrong += SetsRight();
    if (!wrong.empty()) Tell(Name(name + ":" + wrong));
    return outcome;
  }

  bool IsDone() {
    const State now = machine_->Look();
    return (Difference(now, after) + Leftover(now)).empty();
  }

  // The call again, without a fault.
  std::string SetsRight() {
    const Outcome again = Call(Bound(), {});
    const State now = machine_->Look();
    std::string wrong;
    if (again.result != reference.result) wrong += " again: " + std::to_string(again.result);
    const std::string difference = Difference(now, after) + Leftover(now);
    if (!difference.empty()) wrong += " again:" + difference;
    return wrong + again.left;
  }

  const Setter& setter;
  State before;
  State after;
  Outcome reference;

 private:
  void Note(const State& state) {
    for (const auto& [path, node] : before.files) {
      if (state.files.count(path) == 0) versions_[path].insert(kAbsent);
    }
    for (const auto& [path, node] : state.files)
      versions_[path].insert(node);
  }
  [[nodiscard]] std::string Mixed(const State& now) const {
    std::string wrong;
    for (const auto& [path, node] : now.files) {
      const auto known = versions_.find(path);
      if (known != versions_.end() && IsLasting(path) && known->second.count(node) == 0)
        wrong += " neither old nor new: " + path + Quoted(node);
    }
    return wrong;
  }
  [[nodiscard]] bool IsLasting(const std::string& path) const {
    return before.files.count(path) != 0 || after.files.count(path) != 0;
  }
  // A call that is killed may leave no file where it would have made a new one.
  [[nodiscard]] std::string Lost(const State& now, bool ended) const {
    std::string wrong;
    for (const auto& [path, node] : before.files) {
      if (after.files.count(path) == 0 || now.files.count(path) != 0) continue;
      if (ended || versions_.at(path).count(kAbsent) == 0) wrong += " lost: " + path;
    }
    return wrong;
  }
  [[nodiscard]] std::string Leftover(const State& now) const {
    std::string wrong;
    for (const auto& [path, node] : now.files) {
      // A VLAN's may be all that is left of its parent's settings: the next one takes it up.
      const bool stays = path.find("/VLAN_") != std::string::npos || path.ends_with(".saved");
      if (!IsLasting(path) && !stays) wrong += " left: " + path;
    }
    return wrong;
  }
  static std::string Quoted(const std::string& node) {
    std::string text = " [" + node.substr(0, 200) + "]";
    std::replace(text.begin(), text.end(), '\n', '|');
    return text;
  }
  // Of the files that last.
  [[nodiscard]] std::string Difference(const State& now, const State& wanted) const {
    std::string text;
    for (const auto& [path, node] : now.files) {
      const auto found = wanted.files.find(path);
      if (path.ends_with(".saved")) continue;  // whose failure stops nothing
      if (found != wanted.files.end() && found->second != node)
        text += " other " + path + Quoted(node);
      else if (found == wanted.files.end() && IsLasting(path))
        text += " also " + path;
    }
    for (const auto& [path, node] : wanted.files) {
      if (now.files.count(path) == 0 && !path.ends_with(".saved")) text += " not " + path;
    }
    return text;
  }

  static constexpr char kAbsent[] = "";
  Machine* machine_;
  State delivered_;
  Versions versions_;
};

// ---- the sweeps

void SweepFaults(Subject* subject, int stride) {
  for (int kind = 0; kind < kKinds; ++kind) {
    for (long at = 0; at < subject->reference.counts[kind]; at += stride) {
      subject->Try({Fault::kRefuse, static_cast<Kind>(kind), at},
                   std::string(NameOf(static_cast<Kind>(kind))) + " " + std::to_string(at));
    }
  }
}

void SweepMemory(Subject* subject, int stride) {
  for (const auto what : {Fault::kMemory, Fault::kAllMemory}) {
    bool reached = true;
    for (long at = 0; reached && at < 20000; at += stride) {
      reached =
          subject
              ->Try({what, kKinds, at},
                    (what == Fault::kMemory ? "memory " : "memory from ") + std::to_string(at))
              .reached;
    }
  }
}

void SweepKills(Subject* subject, int stride) {
  for (long at = 0; at < subject->reference.changes; at += stride)
    subject->Try({Fault::kKill, kKinds, at}, "killed before change " + std::to_string(at));
}

// Killed again and again, with nothing put back in between: it ends well all the same.
void SweepRandom(Subject* subject, Machine* machine, int stride) {
  machine->PutBack(subject->before);
  const long longest = std::min(subject->reference.microseconds / 2, 20000L) + 200;
  for (int i = 0; i < 100; i += stride) {
    Call(subject->Bound(), {Fault::kKillLater, kKinds, std::rand() % longest});
    ++cases;
  }
  if (subject->setter.Is(kNoWayOn) || subject->IsDone()) return;
  const std::string wrong = subject->SetsRight();
  if (!wrong.empty()) Tell(subject->Name("killed a hundred times:" + wrong));
}

// ---- hostile texts

// None may bring a line of its own into a file, lead out of its folder, or end the process.
std::vector<std::string> HostileTexts() {
  std::vector<std::string> texts = {"",
                                    " ",
                                    "\n",
                                    "\r",
                                    "\t",
                                    ".",
                                    "..",
                                    "/",
                                    "-",
                                    "--",
                                    "-h",
                                    "--help",
                                    "=",
                                    "#",
                                    "\"",
                                    "'",
                                    "\\",
                                    "%",
                                    "%s%s%s%n",
                                    "%n",
                                    "$(reboot)",
                                    "`reboot`",
                                    "; reboot",
                                    "| reboot",
                                    "& reboot",
                                    "*",
                                    "?",
                                    "../../etc/passwd",
                                    "/etc/passwd",
                                    "eth0/../eth1",
                                    "eth0\nROOT=yes",
                                    "\nROOT=yes\n",
                                    "x\rROOT=yes",
                                    "x\" ROOT=yes",
                                    "x\"\nROOT=\"yes",
                                    "a=b",
                                    "a=b\nROOT=yes",
                                    "eth0 eth1",
                                    "eth0,eth1",
                                    "eth0:1",
                                    "eth0.10",
                                    "eth0%d",
                                    "lo",
                                    "all",
                                    "default",
                                    "0",
                                    "1",
                                    "-1",
                                    "00",
                                    "+1",
                                    "1e9",
                                    "0x10",
                                    "65536",
                                    "2147483648",
                                    "4294967296",
                                    "18446744073709551616",
                                    "99999999999999999999",
                                    "0.0.0.0",
                                    "255.255.255.255",
                                    "127.0.0.1",
                                    "1.2.3",
                                    "1.2.3.4.5",
                                    "1.2.3.256",
                                    "01.02.03.04",
                                    "1.2.3.4/33",
                                    "::",
                                    "::1",
                                    "fe80::1%eth0",
                                    "1::2::3",
                                    ":::",
                                    "ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff",
                                    "\x01",
                                    "\x7f",
                                    "\xff\xfe",
                                    "\xc3\x28",
                                    "\xf0\x9f\x98\x80",
                                    "\u202e"};
  for (const std::size_t length : {15, 16, 64, 255, 256, 4096, 100000})
    texts.emplace_back(length, 'A');
  return texts;
}

bool HasOwnLine(const std::string& node) {
  const std::size_t text = node.find('\n');
  return node.find("\nROOT=", text) != std::string::npos ||
         node.find("\rROOT=", text) != std::string::npos;
}

// The child has all texts in a row; what it was at when it ended stands in the parent's sight.
void SweepHostile(const Setter& setter, Machine* machine, int stride) {
  static auto* const at = static_cast<char*>(
      ::mmap(nullptr, 4096, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
  static auto* const count = reinterpret_cast<long*>(at + 2048);
  const State delivered = machine->Look();
  Shell(setter.setup);
  static const auto hostile = HostileTexts();
  *count = 0;
  const pid_t child = ::fork();
  if (child == 0) {
    for (std::size_t i = 0; i <= hostile.size() * setter.texts.size(); i += stride) {
      const bool isNull = i / hostile.size() >= setter.texts.size();
      Texts texts = setter.texts;
      if (!texts.empty())
        texts[isNull ? 0 : i / hostile.size()] =
            isNull ? nullptr : hostile[i % hostile.size()].c_str();
      std::snprintf(at, 2048, "text %zu is [%.80s]", i / hostile.size(),
                    isNull ? "null" : hostile[i % hostile.size()].c_str());
      ++*count;
      ::alarm(20);
      setter.call(texts);
    }
    ::_exit(0);
  }
  int status = 0;
  ::waitpid(child, &status, 0);
  while (::waitpid(-1, nullptr, 0) > 0) {
  }
  cases += *count;
  if (status != 0)
    Tell(std::string(setter.name) + ": ends with " + std::to_string(status) + ", " + at);
  for (const auto& [path, node] : machine->Look().files) {
    if (HasOwnLine(node)) Tell(std::string(setter.name) + ": a text has a line in " + path);
  }
  TakeDown();
  machine->PutBack(delivered);
}

// ---- the appliance

// Programs answer at once, but for those that do what the library relies on.
void Prepare() {
  Shell(
      "for p in ip ifconfig route arping dhclient initctl start stop pppoe-start pppoe-stop "
      "pppoe-status pppoe-relay; do ln -sf /host/usr/bin/true /usr/sbin/$p.new && mv -f "
      "/usr/sbin/$p.new /usr/sbin/$p; done;"
      "for p in /etc/rc.network /etc/gogoc/rc.tun /usr/bin/ipcalc /usr/zarn/*/*tool "
      "/usr/zarn/bin/* "
      "/usr/zarn/sbin/* /usr/zarn/plugins/*/*/*; do ln -sf /host/usr/bin/true $p; done;"
      "mkdir -p /run/lock/zarncore");
  char byte[2];
  KOPACCryptBufCrypt("x", 1, byte, 2);  // makes its key, which is another one each time
}

bool Wants(const Options& options, const char* sweep) {
  return options.sweeps.find(sweep) != std::string::npos;
}

void SweepSetter(const Setter& setter, Machine* machine, const Options& options) {
  if (Wants(options, "hostile")) SweepHostile(setter, machine, options.stride);
  if (!Wants(options, "faults") && !Wants(options, "memory") && !Wants(options, "kills") &&
      !Wants(options, "random")) {
    return;
  }
  Subject subject(setter, machine);
  if (Wants(options, "faults")) SweepFaults(&subject, options.stride);
  if (Wants(options, "memory")) SweepMemory(&subject, options.stride);
  if (Wants(options, "kills")) SweepKills(&subject, options.stride);
  if (Wants(options, "random")) SweepRandom(&subject, machine, options.stride);
}

int Run(const Options& options) {
  ::prctl(PR_SET_CHILD_SUBREAPER, 1);  // what a killed call has started is waited for
  std::setvbuf(stdout, nullptr, _IOLBF, 0);
  for (int port = 0; port < 4; ++port)
    Shell("ip link set eth" + std::to_string(port) + " up; ip link set eth2 mtu 1500");
  Prepare();
  Machine machine;
  int row = 0;
  for (const Setter& setter : Setters()) {
    const bool wanted = options.only.empty() || options.only == setter.name;
    if (wanted && row++ % options.parts == options.part) SweepSetter(setter, &machine, options);
  }
  for (const Setter& reader : Readers()) {
    if (Wants(options, "hostile") && row++ % options.parts == options.part)
      SweepHostile(reader, &machine, options.stride);
  }
  if (Wants(options, "storm")) cases += Storm(options.seconds, Tell);
  std::printf("%s: %ld cases, %ld faults\n", options.sweeps.c_str(), cases, faults);
  return faults == 0 && cases > 0 ? 0 : 1;
}

}  // namespace
}  // namespace torture

// torture [--sweeps "faults memory kills random hostile storm"] [--only NAME] [--stride N]
//         [--part N/M] [--seconds N]
int main(int argc, char** argv) {
  torture::Options options;
  for (int i = 1; i + 1 < argc; i += 2) {
    const std::string name = argv[i];
    const char* const value = argv[i + 1];
    if (name == "--sweeps") options.sweeps = value;
    if (name == "--only") options.only = value;
    if (name == "--stride") options.stride = std::atoi(value);
    if (name == "--seconds") options.seconds = std::atoi(value);
    if (name == "--part") std::sscanf(value, "%d/%d", &options.part, &options.parts);
  }
  if (::access("/etc/zarn-appliance", F_OK) != 0) {
    std::fputs("This program runs in the reference appliance alone: scripts/torture\n", stderr);
    return 2;
  }
  return torture::Run(options);
}
