// SPDX-License-Identifier: Apache-2.0
// The parts of the sweeps: the table of setters, one call with a fault, the appliance around it,
// and many callers at once.
#pragma once

#include <functional>
#include <map>
#include <set>
#include <string>
#include <sys/mman.h>
#include <sys/stat.h>
#include <vector>

namespace torture {

// ---- every call of the library that changes something, each with what it needs around it: a new
// setter is a new row in setters.cpp, and a section in setters.txt

using Texts = std::vector<const char*>;

// What a setter does not promise.
inline constexpr unsigned kOnce = 1;     // called again after a success it answers otherwise
inline constexpr unsigned kLenient = 2;  // a success is no state: steps that fail are passed over
inline constexpr unsigned kNoWayOn = 4;  // called again after a failure it leads elsewhere
inline constexpr unsigned kLoses = 8;  // a failure takes the file of the interface that it is about

struct Setter {
  std::string name;
  std::function<int(const Texts&)> call;
  std::vector<std::string> texts;   // of the call, each of which may be replaced by a hostile one
  std::vector<std::string> around;  // what is made before the first call, as setters.txt has it
  unsigned exempt = 0;

  [[nodiscard]] bool Is(unsigned what) const { return (exempt & what) != 0; }
  [[nodiscard]] Texts Given() const {
    Texts given;
    for (const std::string& text : texts)
      given.push_back(text.c_str());
    return given;
  }
  void SetUp() const;
};

const std::vector<Setter>& Setters();
// The lines of a file in this folder.
std::vector<std::string> DataLines(const std::string& name);
void Shell(const std::string& command);

// ---- one call in a process of its own, with one thing going wrong in it

// The system calls that are refused, a write that is cut short and followed by one that finds no
// room among them; an end before a change, memory, an end at any time.
// clang-format off
enum Kind {
  kOpen, kRead, kWrite, kShort, kSync, kRename, kClose, kFolder, kUnlink, kIoctl, kSocket, kSpawn,
  kOwner, kLock, kKill, kMemory, kAllMemory, kKillLater, kNone
};
// clang-format on

struct Fault {
  Kind kind = kNone;
  long at = 0;  // which one of its kind, which change, or after how many microseconds
  [[nodiscard]] bool IsMemory() const { return kind == kMemory || kind == kAllMemory; }
  [[nodiscard]] std::string Name() const;
};

// What the call tells about itself.
struct Report {
  int result = 0;
  unsigned code = 0;
  bool reached = false;  // the fault came to pass
  int descriptors = 0;   // more than before
  bool childLeft = false;
  long microseconds = 0;
};

struct Outcome : Report {
  bool ended = false;  // the call came back
  std::string left;    // what it did wrong whatever it answers: an end by a signal, what it left
  std::vector<long> counts = std::vector<long>(kNone);  // of each kind, the changes at kKill
  std::set<std::string> written;  // the files that were written to under their own names
};

// Before each change to files or kernel the watcher is called: the states in between.
Outcome Call(const std::function<int()>& call, const Fault& fault = {},
             const std::function<void()>& watcher = nullptr);

// What parent and child both see.
template <class T>
T* Shared() {
  return static_cast<T*>(
      ::mmap(nullptr, sizeof(T), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
}

// ---- the appliance as the sweeps see it

struct State {
  // A file's mode, owner and text (of a link: where it leads; of a folder: nothing), as one text.
  std::map<std::string, std::string> files;
  std::vector<std::string> ports;  // their names, addresses, flags and MTUs
  std::string hostname;
};

// Reads what has changed since it last looked.
class Machine {
 public:
  [[nodiscard]] State Look();
  // Makes files and ports what they were.
  void PutBack(const State& state);

 private:
  struct Known {
    struct stat status;
    std::string node;
  };
  std::map<std::string, Known> known_;
};

// ---- many callers at once

// Processes and threads set, read and delete for some seconds; how many calls that was. Each owns
// one setting in files that all share: what it has written it must find again.
long Storm(int seconds, const std::function<void(const std::string&)>& fault);

}  // namespace torture
