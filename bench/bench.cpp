// Measures the library and the same work written by hand in one run, and prints how they compare.
//   zarnnet_bench FOLDER [Google Benchmark options]
// FOLDER is where key files are written: on a disk, so that syncs cost what they cost. Exit status
// 1 when a ratio is over its limit.
#include <algorithm>
#include <benchmark/benchmark.h>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <string>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include <zarnnetsdk/zarnnetsdk.h>

#include "baseline.h"

namespace {

using Clock = std::chrono::steady_clock;

std::string folder;

// ---- the inventory

void EnumerateLibrary(benchmark::State& state) {
  std::vector<KOPANetIfInfo> list(32);
  for (auto _ : state)
    benchmark::DoNotOptimize(KOPANetGetInterfaceInfo(list.data(), 32, 8));
}
BENCHMARK(EnumerateLibrary);

void EnumerateByHand(benchmark::State& state) {
  for (auto _ : state)
    benchmark::DoNotOptimize(baseline::Enumerate());
}
BENCHMARK(EnumerateByHand);

void EnumerateIpTool(benchmark::State& state) {
  for (auto _ : state) {
    std::FILE* const output =
        KOPACPopen("/sbin/ip", "r", "-j", "addr", static_cast<char*>(nullptr));
    char block[65536];
    while (std::fread(block, 1, sizeof block, output) > 0) {
    }
    KOPACPclose(output);
  }
}
BENCHMARK(EnumerateIpTool);

// ---- key files

std::string KeyFile(std::int64_t lines) {
  const std::string path = folder + "/keys-" + std::to_string(lines);
  std::ofstream file(path);
  for (std::int64_t i = 0; i < lines; ++i)
    file << "KEY" << i << "=value of key " << i << "\n";
  return path;
}

void ReadKeyLibrary(benchmark::State& state) {
  const std::string path = KeyFile(state.range(0));
  const std::string key = "KEY" + std::to_string(state.range(0) - 1);
  char value[64];
  for (auto _ : state) {
    if (KOPACFileGetKeyValue(path.c_str(), key.c_str(), value, sizeof value, 0) <= 0) std::abort();
  }
}
BENCHMARK(ReadKeyLibrary)->Arg(10)->Arg(1000)->Arg(10000);

void ReadKeyByHand(benchmark::State& state) {
  const std::string path = KeyFile(state.range(0));
  const std::string key = "KEY" + std::to_string(state.range(0) - 1);
  char value[64];
  for (auto _ : state) {
    if (baseline::ReadKey(path.c_str(), key.c_str(), value, sizeof value) <= 0) std::abort();
  }
}
BENCHMARK(ReadKeyByHand)->Arg(10)->Arg(1000)->Arg(10000);

// Each round changes all four values, so that every round writes.
void EditLibrary(benchmark::State& state) {
  const std::string path = KeyFile(state.range(0));
  int round = 0;
  for (auto _ : state) {
    const std::string value = std::to_string(++round);
    PKOPACSZHASH set = KOPACSzHashAlloc(16);
    for (const char* key : {"KEY2", "KEY4", "KEY6", "KEY8"})
      KOPACSzHashSetValue(&set, key, value.c_str());
    if (KOPACFileSetKeys(path.c_str(), set, nullptr, "%s=%s\n") < 0) std::abort();
    KOPACSzHashFree(set);
  }
}
BENCHMARK(EditLibrary)->Arg(10)->Arg(1000)->Arg(10000)->UseRealTime();

void EditByHand(benchmark::State& state) {
  const std::string path = KeyFile(state.range(0));
  int round = 0;
  for (auto _ : state) {
    if (!baseline::EditFourKeys(path, std::to_string(++round).c_str())) std::abort();
  }
}
BENCHMARK(EditByHand)->Arg(10)->Arg(1000)->Arg(10000)->UseRealTime();

// ---- programs; the argument is the caller's heap in MiB, every page of it touched

class Heap {
 public:
  explicit Heap(std::int64_t megabytes) : memory_(static_cast<std::size_t>(megabytes) << 20, 'x') {}

 private:
  std::vector<char> memory_;
};

const char* const kTrue[] = {"/usr/bin/true", nullptr};

void RunLibrary(benchmark::State& state) {
  const Heap heap(state.range(0));
  for (auto _ : state) {
    if (KOPACExecl(kTrue[0], 187, static_cast<char*>(nullptr)) != 0) std::abort();
  }
}
BENCHMARK(RunLibrary)->Arg(0)->Arg(1024)->UseRealTime();

void RunSpawn(benchmark::State& state) {
  const Heap heap(state.range(0));
  for (auto _ : state) {
    if (baseline::Spawn(kTrue) != 0) std::abort();
  }
}
BENCHMARK(RunSpawn)->Arg(0)->Arg(1024)->UseRealTime();

void RunFork(benchmark::State& state) {
  const Heap heap(state.range(0));
  for (auto _ : state) {
    if (baseline::Fork(kTrue) != 0) std::abort();
  }
}
BENCHMARK(RunFork)->Arg(0)->Arg(1024)->UseRealTime();

void RunSystem(benchmark::State& state) {
  const Heap heap(state.range(0));
  for (auto _ : state) {
    if (std::system(kTrue[0]) != 0) std::abort();
  }
}
BENCHMARK(RunSystem)->Arg(0)->Arg(1024)->UseRealTime();

// ---- locks

void LockUncontended(benchmark::State& state) {
  for (auto _ : state) {
    if (KOPACFileLock(0x106, 5) != 0) std::abort();
    KOPACFileUnlock(0x100);
  }
}
BENCHMARK(LockUncontended);

// What a holder and a waiter in another process say to each other.
struct Shared {
  volatile int waiting;
  volatile int got;
  volatile Clock::rep gotAt;
};

// The child waits for the lock, notes when it had it, lets go, and starts over.
[[noreturn]] void WaitAgainAndAgain(Shared* shared) {
  for (;;) {
    while (shared->waiting == 0)
      ::usleep(100);
    if (KOPACFileLock(0x106, 30) != 0) ::_exit(1);
    shared->gotAt = Clock::now().time_since_epoch().count();
    KOPACFileUnlock(0x100);
    shared->waiting = 0;
    shared->got = 1;
  }
}

void LockWakeUp(benchmark::State& state) {
  auto* const shared = static_cast<Shared*>(
      ::mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
  const pid_t child = ::fork();
  if (child == 0) WaitAgainAndAgain(shared);
  std::vector<double> seconds;
  for (auto _ : state) {
    if (KOPACFileLock(0x106, 5) != 0) std::abort();
    shared->got = 0;
    shared->waiting = 1;
    ::usleep(20000);  // long enough for the waiter to be asleep
    const Clock::rep released = Clock::now().time_since_epoch().count();
    KOPACFileUnlock(0x100);
    while (shared->got == 0)
      ::usleep(50);
    seconds.push_back(static_cast<double>(shared->gotAt - released) * 1e-9);
    state.SetIterationTime(seconds.back());
  }
  ::kill(child, SIGKILL);
  ::waitpid(child, nullptr, 0);
  std::sort(seconds.begin(), seconds.end());
  state.counters["median_us"] = seconds[seconds.size() / 2] * 1e6;
  ::munmap(shared, sizeof(Shared));
}
BENCHMARK(LockWakeUp)->UseManualTime()->Iterations(100);

// ---- comparison

// Keeps the shortest time of every benchmark: what the machine can do when nothing else wants it.
class Collector : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override {
    ConsoleReporter::ReportRuns(runs);
    for (const Run& run : runs) {
      if (run.run_type != Run::RT_Iteration) continue;
      const std::string name =
          run.run_name.function_name + (run.run_name.args.empty() ? "" : "/" + run.run_name.args);
      const double time = run.GetAdjustedRealTime();
      const auto [entry, isNew] = best_.emplace(name, time);
      if (!isNew) entry->second = std::min(entry->second, time);
      if (const auto median = run.counters.find("median_us"); median != run.counters.end()) {
        best_[name] = median->second.value * 1e3;
      }
    }
  }
  [[nodiscard]] double Best(const std::string& name) const {
    const auto entry = best_.find(name);
    return entry == best_.end() ? 0 : entry->second;
  }

 private:
  std::map<std::string, double> best_;
};

struct Comparison {
  std::string what;
  std::string numerator;
  std::string denominator;  // empty: the number itself, in nanoseconds
  double limit;
  bool atLeast;
};

// Prints one line; false when the limit is passed.
bool Judge(const Collector& results, const Comparison& c) {
  const double value = results.Best(c.numerator);
  const double other = c.denominator.empty() ? 1 : results.Best(c.denominator);
  if (value == 0 || other == 0) return true;  // filtered out of this run
  const double ratio = value / other;
  const bool ok = c.atLeast ? ratio >= c.limit : ratio <= c.limit;
  std::printf("%-58s %10.2f  (%s %.2f) %s\n", c.what.c_str(), ratio,
              c.atLeast ? "at least" : "at most", c.limit, ok ? "ok" : "OVER");
  return ok;
}

bool JudgeAll(const Collector& results) {
  std::vector<Comparison> comparisons = {
      {"32 interfaces: library / by hand", "EnumerateLibrary", "EnumerateByHand", 1.15, false},
      {"32 interfaces: ip -j addr / library", "EnumerateIpTool", "EnumerateLibrary", 3.5, true},
      {"run a program: library / posix_spawn", "RunLibrary/0", "RunSpawn/0", 1.05, false},
      {"run a program, 1 GiB heap / no heap", "RunLibrary/1024", "RunLibrary/0", 1.10, false},
      {"run a program, 1 GiB heap: fork / library", "RunFork/1024", "RunLibrary/1024", 1, true},
      {"run a program, 1 GiB heap: system() / library", "RunSystem/1024", "RunLibrary/1024", 1,
       true},
      {"lock and unlock, ns", "LockUncontended", "", 5000, false},
      {"wake-up after a release, median, ns", "LockWakeUp", "", 1e6, false},
  };
  for (const char* lines : {"10", "1000", "10000"}) {
    const std::string size = std::string("/") + lines;
    const std::string of = std::string(lines) + " lines: ";
    comparisons.push_back({of + "read a key, library / by hand", "ReadKeyLibrary" + size,
                           "ReadKeyByHand" + size, 1.5, false});
    comparisons.push_back({of + "edit four keys, library / by hand", "EditLibrary" + size,
                           "EditByHand" + size, 1.15, false});
  }
  std::puts("");
  bool ok = true;
  for (const Comparison& c : comparisons)
    ok = Judge(results, c) && ok;
  return ok;
}

char kRepetitions[] = "--benchmark_repetitions=7";
char kInterleaving[] = "--benchmark_enable_random_interleaving=true";
char kMinTime[] = "--benchmark_min_time=0.05";

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2 || argv[1][0] == '-') {
    std::fputs("usage: zarnnet_bench FOLDER [Google Benchmark options]\n", stderr);
    return 2;
  }
  folder = argv[1];
  // Both sides of a comparison take turns, so that a busy machine slows both; options given come
  // behind and win.
  std::vector<char*> args{argv[0], kRepetitions, kInterleaving, kMinTime};
  args.insert(args.end(), argv + 2, argv + argc);
  int count = static_cast<int>(args.size());
  benchmark::Initialize(&count, args.data());
  if (benchmark::ReportUnrecognizedArguments(count, args.data())) return 2;
  Collector results;
  benchmark::RunSpecifiedBenchmarks(&results);
  return JudgeAll(results) ? 0 : 1;
}
