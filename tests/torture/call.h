// One call in a process of its own, with one thing going wrong in it.
#pragma once

#include <functional>
#include <set>
#include <string>
#include <vector>

namespace torture {

// What the system refuses. A write that is cut short is followed by one that finds no room.
enum Kind {
  kOpen,
  kRead,
  kWrite,
  kShort,
  kSync,
  kRename,
  kClose,
  kFolder,
  kUnlink,
  kIoctl,
  kSocket,
  kSpawn,
  kOwner,
  kLock,
  kKinds
};
const char* NameOf(Kind kind);

struct Fault {
  enum What { kNone, kRefuse, kMemory, kAllMemory, kKill, kKillLater } what = kNone;
  Kind kind = kKinds;
  long at = 0;  // which one of its kind, which change, or after how many microseconds
};

struct Outcome {
  bool reached = false;  // the fault came to pass
  bool ended = false;    // the call came back
  int result = 0;
  unsigned code = 0;
  long microseconds = 0;
  std::string left;  // what it did wrong whatever it answers: an end by a signal, what it left
  std::vector<long> counts = std::vector<long>(kKinds);
  long changes = 0;
  std::set<std::string> written;  // the files that were written to under their own names
};

// Before each change to files or kernel the watcher is called: the states in between.
Outcome Call(const std::function<int()>& call, const Fault& fault,
             const std::function<void()>& watcher = nullptr);

}  // namespace torture
