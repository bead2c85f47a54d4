// SPDX-License-Identifier: Apache-2.0
// Sweeps over the table of setters: every fault, every kill, every hostile text. To be run in the
// reference appliance; scripts/torture does.
#include "torture.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <zarncore/zarncore.h>

namespace torture {
namespace {

constexpr struct {
  const char* name;
  Kind first, last;
} kSweeps[] = {{"faults", kOpen, kLock},
               {"memory", kMemory, kAllMemory},
               {"kills", kKill, kKill},
               {"random", kKillLater, kKillLater}};
constexpr long kMostAllocations = 20000;

long cases = 0;
long faults = 0;

void Tell(const std::string& what) {
  ++faults;
  std::printf("FAULT %s\n", what.c_str());
}

void TakeDown(const State& delivered, Machine* machine) {
  Shell("umount /sys/class/net 2>/dev/null; rm -rf /run/vlans");
  machine->PutBack(delivered);
}

// ---- one setter, as it is without a fault

class Subject {
 public:
  Subject(const Setter& row, Machine* machine)
      : setter_(row), given_(row.Given()), machine_(machine), delivered_(machine->Look()) {
    setter_.SetUp();
    before_ = machine_->Look();
    Note(before_);
    reference_ = Call(bound_, {}, [&] { Note(machine_->Look()); });
    after_ = machine_->Look();
    Note(after_);
    reference_.counts[kMemory] = reference_.counts[kAllMemory] = kMostAllocations;
    if (reference_.result < 0 || !reference_.left.empty())
      Blame("without a fault: answers " + std::to_string(reference_.result) + reference_.left);
    for (const std::string& path : reference_.written) {
      if (IsIn(after_, path) && IsIn(before_, path)) Blame("writes in place: " + path);
    }
    if (!setter_.Is(kOnce | kNoWayOn) && Call(bound_).result != reference_.result)
      Blame("the second call answers otherwise");
    machine_->PutBack(before_);
  }
  ~Subject() { TakeDown(delivered_, machine_); }
  Subject(const Subject&) = delete;
  Subject& operator=(const Subject&) = delete;

  void Sweep(Kind first, Kind last, int stride) {
    for (int kind = first; kind <= last; ++kind) {
      for (long at = 0; at < reference_.counts[kind]; at += stride) {
        if (!Try({static_cast<Kind>(kind), at}) && kind >= kMemory) break;
      }
    }
  }

  // Killed again and again, with nothing put back in between: it ends well all the same.
  void KillAtRandom(int stride) {
    machine_->PutBack(before_);
    const long longest = std::min(reference_.microseconds / 2, 20000L) + 200;
    for (int i = 0; i < 100; i += stride, ++cases)
      Call(bound_, {kKillLater, std::rand() % longest});
    const State now = machine_->Look();
    if (setter_.Is(kNoWayOn) || (Difference(now) + Leftover(now)).empty()) return;
    const std::string wrong = SetsRight();
    if (!wrong.empty()) Blame("killed a hundred times:" + wrong);
  }

 private:
  void Blame(const std::string& text) const { Tell(setter_.name + ": " + text); }

  // One fault, and all that must hold behind it. False when it did not come to pass.
  bool Try(const Fault& fault) {
    machine_->PutBack(before_);
    const Outcome outcome = Call(bound_, fault);
    if (!outcome.reached) return false;
    ++cases;
    const State now = machine_->Look();
    const bool lenient = setter_.Is(kLenient);
    const bool passedOver = fault.kind == kSpawn || fault.IsMemory();
    const bool yes = outcome.ended && outcome.result == reference_.result;
    const std::string difference = Difference(now);
    std::string wrong = outcome.left + Lost(now, outcome.ended);
    if (!lenient || !passedOver) wrong += Mixed(now);
    // What could not be removed stays; what a killed call has left the next one removes.
    if (outcome.ended && fault.kind != kUnlink) wrong += Leftover(now);
    if (yes && !lenient && !difference.empty()) wrong += " says yes, and" + difference;
    if (outcome.ended && !yes && outcome.code == 0) wrong += " has no code";
    if (!difference.empty() && !setter_.Is(kNoWayOn) && !(yes && lenient)) wrong += SetsRight();
    if (!wrong.empty()) Blame(fault.Name() + ":" + wrong);
    return true;
  }

  // The call again, without a fault.
  std::string SetsRight() {
    const Outcome again = Call(bound_);
    const State now = machine_->Look();
    const std::string difference = Difference(now) + Leftover(now);
    return (again.result != reference_.result ? " again: " + std::to_string(again.result) : "") +
           (difference.empty() ? "" : " again:" + difference) + again.left;
  }

  static bool IsIn(const State& state, const std::string& path) {
    return state.files.count(path) != 0;
  }
  [[nodiscard]] bool IsLasting(const std::string& path) const {
    return IsIn(before_, path) || IsIn(after_, path);
  }
  void Note(const State& state) {
    for (const auto& [path, node] : before_.files) {
      if (!IsIn(state, path)) versions_[path].insert(kAbsent);
    }
    for (const auto& [path, node] : state.files)
      versions_[path].insert(node);
  }
  // The texts of what is wrong, of one file after the other.
  template <class Judge>
  static std::string Each(const State& state, Judge judge) {
    std::string wrong;
    for (const auto& [path, node] : state.files)
      wrong += judge(path, node);
    return wrong;
  }
  [[nodiscard]] std::string Mixed(const State& now) const {
    return Each(now, [&](const auto& path, const auto& node) {
      const auto known = versions_.find(path);
      const bool right = known == versions_.end() || known->second.count(node) != 0;
      return right || !IsLasting(path) ? "" : " neither old nor new: " + path + Quoted(node);
    });
  }
  // A call that is killed may leave no file where it would have made a new one.
  [[nodiscard]] std::string Lost(const State& now, bool ended) const {
    const std::string own = "/ifcfg-" + std::string(given_.empty() ? "" : given_[0]);
    return Each(before_, [&](const auto& path, const auto&) {
      const bool may = !IsIn(after_, path) || (setter_.Is(kLoses) && path.ends_with(own)) ||
                       (!ended && versions_.at(path).count(kAbsent) != 0);
      return may || IsIn(now, path) ? "" : " lost: " + path;
    });
  }
  // A VLAN's may be all that is left of its parent's settings: the next one takes it up.
  [[nodiscard]] std::string Leftover(const State& now) const {
    return Each(now, [&](const auto& path, const auto&) {
      const bool stays = path.find("/VLAN_") != std::string::npos || IsSaved(path);
      return stays || IsLasting(path) ? "" : " left: " + path;
    });
  }
  // From what lasts of the wanted end.
  [[nodiscard]] std::string Difference(const State& now) const {
    const auto other = Each(now, [&](const auto& path, const auto& node) -> std::string {
      const auto wanted = after_.files.find(path);
      const bool isNew = wanted == after_.files.end();
      if (IsSaved(path) || (isNew ? !IsLasting(path) : wanted->second == node)) return "";
      return isNew ? " also " + path : " other " + path + Quoted(node);
    });
    return other + Each(after_, [&](const auto& path, const auto&) {
             return IsIn(now, path) || IsSaved(path) ? "" : " not " + path;
           });
  }
  static bool IsSaved(const std::string& path) {  // whose failure stops nothing
    return path.ends_with(".saved");
  }
  static std::string Quoted(const std::string& node) {
    std::string text = " [" + node.substr(0, 200) + "]";
    std::replace(text.begin(), text.end(), '\n', '|');
    return text;
  }

  static constexpr char kAbsent[] = "";
  const Setter& setter_;
  const Texts given_;
  const std::function<int()> bound_ = [this] { return setter_.call(given_); };
  Machine* machine_;
  State delivered_;
  State before_;
  State after_;
  Outcome reference_;
  std::map<std::string, std::set<std::string>> versions_;
};

// ---- hostile texts

// None may bring a line of its own into a file, lead out of its folder, or end the process.
std::vector<std::string> HostileTexts() {
  std::vector<std::string> texts = DataLines("hostile.txt");
  for (std::string& text : texts) {
    for (std::size_t at = 0; (at = text.find("\\x", at)) != std::string::npos; ++at)
      text.replace(at, 4, 1, static_cast<char>(std::stoi(text.substr(at + 2, 2), nullptr, 16)));
  }
  for (const std::size_t length : {15, 16, 64, 255, 256, 4096, 100000})
    texts.emplace_back(length, 'A');
  return texts;
}

// In the sight of parent and child.
struct Progress {
  long count;
  char what[2048];
};

[[noreturn]] void CallWithHostileTexts(const Setter& setter, int stride, Progress* progress) {
  static const auto hostile = HostileTexts();
  const std::size_t texts = setter.texts.size();
  for (std::size_t i = 0; i <= hostile.size() * texts; i += static_cast<std::size_t>(stride)) {
    const std::size_t which = i / hostile.size();
    const char* const text = which < texts ? hostile[i % hostile.size()].c_str() : nullptr;
    Texts given = setter.Given();
    if (!given.empty()) given[which % texts] = text;
    std::snprintf(progress->what, sizeof progress->what, "text %zu is [%.80s]", which,
                  text != nullptr ? text : "null");
    ++progress->count;
    ::alarm(20);
    setter.call(given);
  }
  ::_exit(0);
}

void SweepHostile(const Setter& setter, Machine* machine, int stride) {
  static auto* const progress = Shared<Progress>();
  const State delivered = machine->Look();
  setter.SetUp();
  progress->count = 0;
  const pid_t child = ::fork();
  if (child == 0) CallWithHostileTexts(setter, stride, progress);
  int status = 0;
  ::waitpid(child, &status, 0);
  while (::waitpid(-1, nullptr, 0) > 0) {
  }
  cases += progress->count;
  if (status != 0)
    Tell(setter.name + ": ends with " + std::to_string(status) + ", " + progress->what);
  for (const auto& [path, node] : machine->Look().files) {
    const std::size_t text = node.find('\n');
    if (std::min(node.find("\nROOT=", text), node.find("\rROOT=", text)) != std::string::npos)
      Tell(setter.name + ": a text has a line in " + path);
  }
  TakeDown(delivered, machine);
}

// ---- the appliance

// Programs answer at once, but for those that do what the library relies on.
void Prepare() {
  ::prctl(PR_SET_CHILD_SUBREAPER, 1);  // what a killed call has started is waited for
  std::setvbuf(stdout, nullptr, _IOLBF, 0);
  Shell(
      "for port in eth0 eth1 eth2 eth3; do ip link set $port up; done; ip link set eth2 mtu 1500;"
      "for p in ip ifconfig route arping dhclient initctl start stop pppoe-start pppoe-stop "
      "pppoe-status pppoe-relay; do ln -sf /host/usr/bin/true /usr/sbin/$p.new && mv -f "
      "/usr/sbin/$p.new /usr/sbin/$p; done;"
      "for p in /etc/rc.network /etc/gogoc/rc.tun /usr/bin/ipcalc /usr/zarn/*/*tool "
      "/usr/zarn/bin/* /usr/zarn/sbin/* /usr/zarn/plugins/*/*/*; do "
      "ln -sf /host/usr/bin/true $p; done; mkdir -p /run/lock/zarncore");
  char byte[2];
  KOPACCryptBufCrypt("x", 1, byte, 2);  // makes its key, which is another one each time
}

int Run(std::map<std::string, std::string> options) {
  const auto wants = [&](const std::string& sweep) {
    return options["sweeps"].find(sweep) != std::string::npos;
  };
  const int stride = std::stoi(options["stride"]);
  int row = 0, part = 0, parts = 1;
  std::sscanf(options["part"].c_str(), "%d/%d", &part, &parts);
  Prepare();
  Machine machine;
  for (const Setter& setter : Setters()) {
    const bool wanted = options["only"].empty() || options["only"] == setter.name;
    if (!wanted || row++ % parts != part) continue;
    if (wants("hostile")) SweepHostile(setter, &machine, stride);
    std::optional<Subject> subject;
    for (const auto& [name, first, last] : kSweeps) {
      if (!wants(name)) continue;
      if (!subject) subject.emplace(setter, &machine);
      first == kKillLater ? subject->KillAtRandom(stride) : subject->Sweep(first, last, stride);
    }
  }
  if (wants("storm")) cases += Storm(std::stoi(options["seconds"]), Tell);
  std::printf("%s: %ld cases, %ld faults\n", options["sweeps"].c_str(), cases, faults);
  return faults == 0 && cases > 0 ? 0 : 1;
}

}  // namespace
}  // namespace torture

// torture [--sweeps "faults memory kills random hostile storm"] [--only NAME] [--stride N]
//         [--part N/M] [--seconds N]
int main(int argc, char** argv) {
  std::map<std::string, std::string> options = {
      {"sweeps", "faults memory kills random hostile storm"}, {"stride", "1"}, {"seconds", "20"}};
  for (int i = 1; i + 1 < argc; i += 2)
    options[argv[i] + std::strlen("--")] = argv[i + 1];
  if (::access("/etc/zarn-appliance", F_OK) != 0) {
    std::fputs("This program runs in the reference appliance alone: scripts/torture\n", stderr);
    return 2;
  }
  return torture::Run(options);
}
