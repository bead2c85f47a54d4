// SPDX-License-Identifier: Apache-2.0
// Measures the library beside hand-written code and the machine's other ways to the same answers,
// in one run, and holds it to limits.
//   zarnnet_bench FOLDER COMMANDLINE [TOPIC...]
// COMMANDLINE is the zarnnetctl that is measured, FOLDER where key files are written: on a disk, so
// that syncs cost what they cost. Exit status 1 when a limit is passed, 2 for wrong usage.
//
// What is compared takes turns in many short rounds, and the shortest round of each counts: a busy
// machine slows some rounds of every side, and decides nothing.
#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <benchmark/benchmark.h>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <map>
#include <string>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include <zarnnetsdk/zarnnetsdk.h>

#include "baseline.h"
#include "peers.h"

namespace {

using Clock = std::chrono::steady_clock;

std::string folder;

// ---- what is measured

// One way to do a thing. The library's ways carry no limit; of the others, the library takes at
// most so many times their time.
struct Way {
  const char* name;
  std::function<bool()> run;
  double limit = 0;  // none
  int rounds = 0;    // as many as the others
};

// A round of what is done once in it: a program or a sync that another process holds up is in no
// other's round.
constexpr double kOneRun = 1e-5;

// Ways to the same end; the first is the library's.
struct Comparison {
  std::string title;
  std::vector<Way> ways;
  double roundSeconds;
  int rounds;
};

// ---- the table

// Keeps the shortest round of every benchmark, in seconds.
class Shortest : public benchmark::BenchmarkReporter {
 public:
  bool ReportContext(const Context& /*context*/) override { return true; }
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      if (run.run_type != Run::RT_Iteration || run.error_occurred) continue;
      const double time = run.real_accumulated_time / static_cast<double>(run.iterations);
      const auto [entry, isNew] = best_.emplace(run.run_name.function_name, time);
      if (!isNew) entry->second = std::min(entry->second, time);
    }
  }
  [[nodiscard]] double Of(const std::string& name) const { return best_.at(name); }

 private:
  std::map<std::string, double> best_;
};

std::string TimeText(double seconds) {
  char text[32];
  if (seconds < 1e-6) {
    std::snprintf(text, sizeof text, "%.1f ns", seconds * 1e9);
  } else if (seconds < 1e-3) {
    std::snprintf(text, sizeof text, "%.2f us", seconds * 1e6);
  } else {
    std::snprintf(text, sizeof text, "%.2f ms", seconds * 1e3);
  }
  return text;
}

// False when the limit is passed. A limit of 0 is none.
bool PrintRow(const char* name, double seconds, const char* own, double ratio, double limit) {
  const bool ok = limit == 0 || ratio <= limit;
  std::printf("  %-26s %12s", name, TimeText(seconds).c_str());
  if (ratio != 0) std::printf("   %s takes %5.2f of it", own, ratio);
  if (limit != 0) std::printf(", at most %.2f: %s", limit, ok ? "ok" : "OVER");
  std::puts("");
  std::fflush(stdout);
  return ok;
}

// How often a way is gone in a round. Left to the first round, a machine that is busy just then
// would make it a single time, and the clock's own time a part of it.
std::int64_t RunsInRound(const Comparison& comparison, const Way& way) {
  double shortest = comparison.roundSeconds;
  for (int i = 0; i < 3; ++i) {
    const auto start = Clock::now();
    if (!way.run()) {
      std::fprintf(stderr, "zarnnet_bench: %s: wrong answer of %s\n", comparison.title.c_str(),
                   way.name);
      std::exit(1);
    }
    shortest = std::min(shortest, std::chrono::duration<double>(Clock::now() - start).count());
  }
  return static_cast<std::int64_t>(comparison.roundSeconds / shortest);
}

Shortest Measure(const Comparison& comparison) {
  benchmark::ClearRegisteredBenchmarks();
  for (const Way& way : comparison.ways) {
    const auto rounds = [&way](benchmark::State& state) {
      for (auto _ : state) {
        if (!way.run()) state.SkipWithError("failed");
      }
    };
    benchmark::RegisterBenchmark(way.name, rounds)
        ->UseRealTime()
        ->Iterations(RunsInRound(comparison, way))
        ->Repetitions(way.rounds != 0 ? way.rounds : comparison.rounds);
  }
  Shortest shortest;
  benchmark::RunSpecifiedBenchmarks(&shortest, "all");
  return shortest;
}

bool Compare(const Comparison& comparison) {
  const Shortest shortest = Measure(comparison);
  std::printf("%s\n", comparison.title.c_str());
  const double own = shortest.Of(comparison.ways.front().name);
  bool ok = true;
  for (const Way& way : comparison.ways) {
    const double time = shortest.Of(way.name);
    const double ratio = &way == &comparison.ways.front() ? 0 : own / time;
    ok = PrintRow(way.name, time, comparison.ways.front().name, ratio, way.limit) && ok;
  }
  return ok;
}

bool CompareAll(const std::vector<Comparison>& comparisons) {
  bool ok = true;
  for (const Comparison& comparison : comparisons)
    ok = Compare(comparison) && ok;
  return ok;
}

// ---- the programs that some ways are

bool Run(const char* program, const std::vector<std::string>& arguments) {
  std::vector<const char*> argv{program};
  for (const std::string& argument : arguments)
    argv.push_back(argument.c_str());
  argv.push_back(nullptr);
  return baseline::Spawn(argv.data()) == 0;
}

// The output of a program, read to its end as a caller would.
bool Read(const char* program, const char* option, const char* object) {
  std::FILE* const output = KOPACPopen(program, "r", option, object, static_cast<char*>(nullptr));
  if (output == nullptr) return false;
  char block[65536];
  std::size_t length = 0;
  while (const std::size_t more = std::fread(block, 1, sizeof block, output))
    length += more;
  return KOPACPclose(output) == 0 && length > 0;
}

// ---- the inventory

constexpr int kInterfaces = 31;  // 32 without loopback

bool List(int max) {
  static std::vector<KOPANetIfInfo> list(32);
  return KOPANetGetInterfaceInfo(list.data(), max, ZARNNETKIND_ALL) == std::min(max, kInterfaces);
}

Comparison Listing() {
  return {"inventory of 32 interfaces",
          {{"library", [] { return List(32); }},
           {"loop by hand", [] { return baseline::Enumerate() == kInterfaces; }, 0.70},
           {"getifaddrs", [] { return peers::ByGetifaddrs() >= kInterfaces; }, 1.00},
           {"raw netlink dump", [] { return peers::ByNetlink() >= kInterfaces; }},
           {"libnl", [] { return peers::ByLibnl() >= kInterfaces; }, 1.00},
           {"ip -j addr", [] { return Read("/sbin/ip", "-j", "addr"); }, 0.20}},
          0.002,
          100};
}

// The kernel's table is read whole for each answer; from there on the second half of the records
// must cost no more than the first.
bool GrowsWithTheirNumber() {
  const Shortest shortest = Measure({"growth",
                                     {{"31 records", [] { return List(31); }},
                                      {"16 records", [] { return List(16); }},
                                      {"no record", [] { return List(0); }}},
                                     0.002,
                                     100});
  const double most = shortest.Of("31 records");
  const double half = shortest.Of("16 records");
  const double first = (half - shortest.Of("no record")) / 16;
  const double second = (most - half) / 15;
  std::puts("each further record of the inventory");
  PrintRow("of the first 16", first, "", 0, 0);
  return PrintRow("of the other 15", second, "library", second / first, 1.50);
}

bool Inventory() {
  const bool ok = Compare(Listing());
  return GrowsWithTheirNumber() && ok;
}

// ---- key files

std::string KeyFile(const std::string& kind, int lines) {
  const std::string path = folder + "/" + kind + "-" + std::to_string(lines);
  std::ofstream file(path);
  file << "[" << peers::kSection << "]\n";
  for (int i = 1; i < lines; ++i)
    file << "KEY" << i << "=value of key " << i << "\n";
  return path;
}

Comparison ReadingOf(int lines, double limit) {
  const std::string path = KeyFile("read", lines);
  const std::string key = "KEY" + std::to_string(lines - 1);
  const auto byLibrary = [=] {
    char value[64];
    return KOPACFileGetKeyValue(path.c_str(), key.c_str(), value, sizeof value, 0) > 0;
  };
  const auto byHand = [=] {
    char value[64];
    return baseline::ReadKey(path.c_str(), key.c_str(), value, sizeof value) > 0;
  };
  const auto bySed = [=] { return Run("/bin/sed", {"-n", "s/^" + key + "=//w /dev/null", path}); };
  return {"read the last key of " + std::to_string(lines) + " lines",
          {{"library", byLibrary},
           {"read and memchr", byHand, limit},
           {"GKeyFile", [=] { return peers::ReadKeyByGlib(path, key.c_str()); }, 1.00},
           {"sed", bySed, 0.50}},
          0.002,
          100};
}

bool Keys() {
  return CompareAll({ReadingOf(10, 1.20), ReadingOf(1000, 1.30), ReadingOf(10000, 1.30)});
}

// Each round changes all four values, so that every round writes.
std::string NextValue() {
  static int round = 0;
  return std::to_string(++round);
}

bool EditByLibrary(const std::string& path) {
  const std::string value = NextValue();
  PKOPACSZHASH set = KOPACSzHashAlloc(16);
  for (const char* key : {"KEY2", "KEY4", "KEY6", "KEY8"})
    KOPACSzHashSetValue(&set, key, value.c_str());
  const bool done = KOPACFileSetKeys(path.c_str(), set, nullptr, "%s=%s\n") >= 0;
  KOPACSzHashFree(set);
  return done;
}

bool EditBySed(const std::string& path) {
  const std::string value = NextValue();
  std::vector<std::string> arguments{"-i"};
  for (const char* key : {"KEY2", "KEY4", "KEY6", "KEY8"})
    arguments.insert(arguments.end(), {"-e", std::string("s/^").append(key).append("=.*/") + key +
                                                 "=" + value + "/"});
  arguments.push_back(path);
  return Run("/bin/sed", arguments);
}

Comparison EditOf(int lines) {
  const std::string ours = KeyFile("library", lines);
  const std::string hand = KeyFile("hand", lines);
  const std::string glib = KeyFile("glib", lines);
  const std::string sed = KeyFile("sed", lines);
  return {"edit four keys of " + std::to_string(lines) + " lines, synced",
          {{"library", [=] { return EditByLibrary(ours); }},
           {"by hand", [=] { return baseline::EditFourKeys(hand, NextValue().c_str()); }, 1.15},
           {"GKeyFile (file synced)",
            [=] { return peers::EditFourKeysByGlib(glib, NextValue().c_str()); }},
           {"sed -i (not synced)", [=] { return EditBySed(sed); }}},
          kOneRun,
          150};
}

bool Edits() {
  return CompareAll({EditOf(10), EditOf(1000), EditOf(10000)});
}

// ---- programs

const char* const kTrue[] = {"/usr/bin/true", nullptr};

std::vector<Way> WaysToRun() {
  return {{"library", [] { return KOPACExecl(kTrue[0], 187, static_cast<char*>(nullptr)) == 0; }},
          {"posix_spawn", [] { return baseline::Spawn(kTrue) == 0; }, 1.10},
          {"fork", [] { return baseline::Fork(kTrue) == 0; }},
          {"system()", [] { return std::system(kTrue[0]) == 0; }, 1.00}};
}

// The second time as a large caller: every page of its heap is touched.
bool Programs() {
  bool ok = Compare({"run a program", WaysToRun(), kOneRun, 300});
  const std::vector<char> heap(std::size_t{1} << 30, 'x');
  benchmark::DoNotOptimize(heap.data());
  std::vector<Way> ways = WaysToRun();
  Way& fork = ways[2];
  fork.limit = 1.00;
  fork.rounds = 5;  // each takes as long as hundreds of the others
  return Compare({"run a program, 1 GiB of heap in use", ways, kOneRun, 300}) && ok;
}

// ---- locks

constexpr char kFlockPath[] = "/run/lock/zarnnet_bench";
constexpr int kClass = 0x100;
constexpr int kAlone = 6;

bool LockByLibrary() {
  return KOPACFileLock(kClass | kAlone, 30) == 0 && KOPACFileUnlock(kClass) == 0;
}

// What a holder and a waiter in another process say to each other.
struct Shared {
  volatile int waiting;
  volatile int got;
  volatile Clock::rep gotAt;
};

using Step = void (*)();

// The child waits for the lock, notes when it had it, lets go, and starts over.
[[noreturn]] void WaitAgainAndAgain(Shared* shared, Step take, Step release) {
  for (;;) {
    while (shared->waiting == 0)
      ::usleep(100);
    take();
    shared->gotAt = Clock::now().time_since_epoch().count();
    release();
    shared->waiting = 0;
    shared->got = 1;
  }
}

// The median time from a release to the waiter's having the lock.
double WakeUp(Step take, Step release) {
  auto* const shared = static_cast<Shared*>(
      ::mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
  const pid_t child = ::fork();
  if (child == 0) WaitAgainAndAgain(shared, take, release);
  std::array<double, 15> seconds{};
  for (double& time : seconds) {
    take();
    shared->got = 0;
    shared->waiting = 1;
    ::usleep(5000);  // long enough for the waiter to be asleep
    const Clock::rep released = Clock::now().time_since_epoch().count();
    release();
    while (shared->got == 0)
      ::usleep(50);
    time = static_cast<double>(shared->gotAt - released) * 1e-9;
  }
  ::kill(child, SIGKILL);
  ::waitpid(child, nullptr, 0);
  ::munmap(shared, sizeof(Shared));
  std::sort(seconds.begin(), seconds.end());
  return seconds[seconds.size() / 2];
}

void TakeClass() {
  if (KOPACFileLock(kClass | kAlone, 30) != 0) std::abort();
}

void ReleaseClass() {
  KOPACFileUnlock(kClass);
}

// Each process opens its own: an inherited one would be the same lock.
peers::Flock& OwnFlock() {
  static std::map<pid_t, peers::Flock> flocks;
  return flocks.try_emplace(::getpid(), kFlockPath).first->second;
}

bool LockByOpenFlock() {
  static const peers::Flock flock(kFlockPath);
  flock.Take();
  flock.Release();
  return true;
}

bool LockByFlock() {
  const peers::Flock flock(kFlockPath);
  flock.Take();
  flock.Release();
  return true;
}

// The shortest of the medians of either side.
bool Waking() {
  double library = 1;
  double flock = 1;
  for (int round = 0; round < 10; ++round) {
    library = std::min(library, WakeUp(TakeClass, ReleaseClass));
    flock = std::min(flock, WakeUp([] { OwnFlock().Take(); }, [] { OwnFlock().Release(); }));
  }
  std::puts("from a release to the waiter's having the lock, median");
  PrintRow("library", library, "", 0, 0);
  return PrintRow("flock", flock, "library", library / flock, 1.50);
}

bool Locks() {
  const bool ok = Compare({"lock and unlock",
                           {{"library", LockByLibrary},
                            {"flock, kept open", LockByOpenFlock},
                            {"flock, opened each time", LockByFlock, 0.70}},
                           0.001,
                           100});
  return Waking() && ok;
}

// ---- addresses

constexpr std::array<const char*, 6> kAddresses = {"192.168.50.10", "10.0.0.1", "172.16.254.3",
                                                   "192.168.1.254", "8.8.8.8",  "169.254.12.99"};

bool CheckByLibrary() {
  return std::all_of(kAddresses.begin(), kAddresses.end(),
                     [](const char* text) { return BlKOPAIsIpAddr(text) == 1; });
}

bool CheckByInetPton() {
  in_addr address{};
  return std::all_of(kAddresses.begin(), kAddresses.end(),
                     [&](const char* text) { return ::inet_pton(AF_INET, text, &address) == 1; });
}

bool Addresses() {
  return Compare({"check six addresses",
                  {{"library", CheckByLibrary}, {"inet_pton", CheckByInetPton, 1.30}},
                  0.001,
                  100});
}

// ---- the command line

std::string commandLine;

bool Read(const char* verb, const char* object) {
  return Read(commandLine.c_str(), verb, object);
}

bool CommandLine() {
  return CompareAll({{"list the interfaces on a terminal",
                      {{"if list", [] { return Read("if", "list"); }},
                       {"ip -br addr", [] { return Read("/sbin/ip", "-br", "addr"); }, 1.50}},
                      kOneRun,
                      300},
                     {"the machine on one screen",
                      {{"show", [] { return Read("show", nullptr); }},
                       {"ip -j addr", [] { return Read("/sbin/ip", "-j", "addr"); }, 3.00}},
                      kOneRun,
                      300}});
}

constexpr struct {
  const char* name;
  bool (*judge)();
} kTopics[] = {{"inventory", Inventory},    {"keys", Keys},   {"edits", Edits},
               {"programs", Programs},      {"locks", Locks}, {"addresses", Addresses},
               {"commandline", CommandLine}};

bool IsTopic(const std::string& name) {
  return std::any_of(std::begin(kTopics), std::end(kTopics),
                     [&](const auto& topic) { return name == topic.name; });
}

}  // namespace

int main(int argc, char** argv) {
  const std::vector<std::string> wanted(argv + std::min(argc, 3), argv + argc);
  if (argc < 3 || !std::all_of(wanted.begin(), wanted.end(), IsTopic)) {
    std::fputs(
        "usage: zarnnet_bench FOLDER COMMANDLINE "
        "[inventory|keys|edits|programs|locks|addresses|commandline...]\n",
        stderr);
    return 2;
  }
  folder = argv[1];
  commandLine = argv[2];
  char takeTurns[] = "--benchmark_enable_random_interleaving=true";
  char* options[] = {argv[0], takeTurns};
  int count = 2;
  benchmark::Initialize(&count, options);
  bool ok = true;
  for (const auto& topic : kTopics) {
    if (wanted.empty() || std::find(wanted.begin(), wanted.end(), topic.name) != wanted.end())
      ok = topic.judge() && ok;
  }
  std::puts(ok ? "every limit is kept" : "a limit is passed");
  return ok ? 0 : 1;
}
