// SPDX-License-Identifier: Apache-2.0
// Lock classes and named-file locks between threads and processes, also ones that die.
#include <algorithm>
#include <cstdint>
#include <ctime>
#include <optional>
#include <sys/mman.h>
#include <sys/resource.h>
#include <thread>

#include "fixture.h"
#include "support/children.h"
#include "support/clock.h"

using namespace test;

namespace {

constexpr int kRead = 0x105;
constexpr int kWrite = 0x106;
constexpr int kClass = 0x100;

// By the C library's clock, which has a stand-in; on 32 bits the C++ library asks another.
std::int64_t NowMicroseconds() {
  timespec now{};
  ::clock_gettime(CLOCK_MONOTONIC, &now);
  return std::int64_t{now.tv_sec} * 1000000 + now.tv_nsec / 1000;
}

// Can another process have the lock at once?
bool OtherCanTake(int classAndMode) {
  return ExitStatusOf(Start([=] { return KOPACFileLock(classAndMode, 0) == 0 ? 0 : 1; })) == 0;
}

}  // namespace

TEST(Locks, ReadersShareAndWritersExclude) {
  ASSERT_EQ(0, KOPACFileLock(kRead, 0));
  EXPECT_TRUE(OtherCanTake(kRead));
  EXPECT_FALSE(OtherCanTake(kWrite));
  EXPECT_TRUE(OtherCanTake(0x806)) << "another class is another lock";
  EXPECT_EQ(0, KOPACFileUnlock(kClass));
  EXPECT_TRUE(OtherCanTake(kWrite));
}

TEST(Locks, NestWithinAThreadAndNotBetweenThreads) {
  ASSERT_EQ(0, KOPACFileLock(kWrite, 0));
  ASSERT_EQ(0, KOPACFileLock(kRead, 0));
  EXPECT_EQ(0, KOPACFileUnlock(kClass));
  EXPECT_FALSE(OtherCanTake(kRead)) << "the outer hold survives the inner release";
  std::thread([] { EXPECT_GT(0, KOPACFileLock(kRead, 0)) << "a thread is another holder"; }).join();
  EXPECT_EQ(0, KOPACFileUnlock(kClass));
  EXPECT_TRUE(OtherCanTake(kWrite));
  ASSERT_EQ(0, KOPACFileLock(kRead, 0));
  ASSERT_EQ(0, KOPACFileLock(kWrite, 0)) << "the only reader becomes the writer";
  EXPECT_FALSE(OtherCanTake(kRead));
  KOPACFileUnlock(kClass);
  KOPACFileUnlock(kClass);
  std::thread([] { EXPECT_EQ(0, KOPACFileLock(kWrite, 0)); }).join();
  EXPECT_TRUE(OtherCanTake(kWrite)) << "a thread that ends lets go";
}

// Its owner could cut it short under the page that waiters share, which would end them.
TEST(Locks, ALockFileOfSomebodyElseIsLockedButNotMapped) {
  const char file[] = "/run/lock/zarncore/class-100";
  WriteFile(file, "", 0666);
  if (::chown(file, 12, 34) != 0) GTEST_SKIP() << "this user has no second owner to give a file to";
  ASSERT_EQ(0, KOPACFileLock(kWrite, 0));
  EXPECT_FALSE(OtherCanTake(kRead));
  EXPECT_EQ(std::string::npos, ReadFile("/proc/self/maps").find(file));
}

TEST(Locks, AForkedChildHoldsNothing) {
  ASSERT_EQ(0, KOPACFileLock(kWrite, 0));
  EXPECT_EQ(0, ExitStatusOf(Start([] { return KOPACFileUnlock(kClass) < 0 ? 0 : 1; })));
  Gate parentGone;
  Gate done;
  // A child that lives on must not keep the lock of the process that it was forked from.
  const pid_t middle = Start([&] {
    KOPACFileLock(0x806, 0);
    const pid_t survivor = Start([&] {
      parentGone.Wait();
      done.Open();
      ::poll(nullptr, 0, 5000);
      return 0;
    });
    return survivor > 0 ? 0 : 1;
  });
  EXPECT_EQ(0, ExitStatusOf(middle));
  parentGone.Open();
  ASSERT_TRUE(done.Wait());
  EXPECT_EQ(0, KOPACFileLock(0x806, 0));
  EXPECT_FALSE(OtherCanTake(kRead)) << "the parent's own lock is unhurt";
}

TEST(Locks, ARefusedWaitLastsItsTimeAndADeadHolderLetsGo) {
  std::optional<LockHolder> holder(kWrite);
  RunClockFaster(10);
  const auto before = NowMicroseconds();
  EXPECT_GT(0, KOPACFileLock(kRead, 5));
  const auto waited = NowMicroseconds() - before;
  EXPECT_LE(5000000, waited);
  EXPECT_GT(8000000, waited);
  std::thread killer([&] {
    ::poll(nullptr, 0, 1000);
    holder.reset();
  });
  EXPECT_EQ(0, KOPACFileLock(kWrite, 60)) << "a waiter is not woken by a death, and notices it";
  killer.join();
}

TEST(Locks, ACallerKilledWhileItsProgramRunsLetsGo) {
  WriteFile("/run/long", "#!/bin/sh\ntouch /run/begun\nsleep 30\n", 0755);
  for (const auto handling : {SIG_DFL, SIG_IGN}) {
    RemoveFile("/run/begun");
    const pid_t caller = Start([=] {
      std::signal(SIGCHLD, handling);
      return KOPACFileLock(kWrite, 0) + KOPACExec("/run/long", nullptr, nullptr, nullptr, nullptr);
    });
    EXPECT_TRUE(Comes([] { return FileExists("/run/begun"); }));
    EXPECT_FALSE(OtherCanTake(kWrite));
    KillAndReap(caller);
    EXPECT_TRUE(OtherCanTake(kWrite));
  }
}

TEST(Locks, AWaiterIsWokenAtOnceAndCostsNothing) {
  auto* const got = static_cast<volatile std::int64_t*>(
      ::mmap(nullptr, 4096, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
  std::vector<std::int64_t> latencies;
  std::int64_t cpu = 0;
  for (int round = 0; round < 9; ++round) {
    ASSERT_EQ(0, KOPACFileLock(kWrite, 0));
    Gate about;
    const pid_t waiter = Start([&] {
      about.Open();
      if (KOPACFileLock(kWrite, 10) != 0) return 1;
      *got = NowMicroseconds();
      struct rusage usage {};
      ::getrusage(RUSAGE_SELF, &usage);
      got[1] = std::int64_t{usage.ru_utime.tv_usec} + usage.ru_stime.tv_usec;
      return 0;
    });
    ASSERT_TRUE(about.Wait());
    ::poll(nullptr, 0, 60);
    const auto released = NowMicroseconds();
    ASSERT_EQ(0, KOPACFileUnlock(kClass));
    ASSERT_EQ(0, ExitStatusOf(waiter));
    latencies.push_back(got[0] - released);
    cpu = std::max(cpu, std::int64_t{got[1]});
  }
  std::sort(latencies.begin(), latencies.end());
  EXPECT_LT(latencies[latencies.size() / 2], 5000)
      << "microseconds; a polling waiter takes tens of thousands";
  EXPECT_LT(cpu, 50000) << "microseconds of processor time for 60 ms of waiting";
}

TEST(FileLock, OutlivesTheFileThatItNames) {
  const char path[] = "/etc/settings";
  WriteFile(path, "A=1\n");
  PKOPACFILELOCK lock = nullptr;
  ASSERT_LE(0, KOPACFileLockTimeByFile(path, 1, 0, &lock));
  EXPECT_EQ(0, KOPACFileSetKeyValue(path, "A", "2", nullptr)) << "the holder edits the file";
  const auto otherTakes = [&] {
    return ExitStatusOf(Start([&] {
      PKOPACFILELOCK other = nullptr;
      return KOPACFileLockTimeByFile(path, 1, 0, &other) >= 0 ? 0 : 1;
    }));
  };
  EXPECT_EQ(1, otherTakes()) << "the replaced file is still locked";
  EXPECT_EQ(1, KOPACFileUnlockByFile(lock));
  EXPECT_EQ(0, otherTakes());
}
