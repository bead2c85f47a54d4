// Every call of the library that changes something, each with what it needs around it. The sweeps
// go over this table: a new setter is a new row.
#pragma once

#include <functional>
#include <vector>

namespace torture {

using Texts = std::vector<const char*>;

// What a setter does not promise.
inline constexpr unsigned kOnce = 1;     // called again after a success it answers otherwise
inline constexpr unsigned kLenient = 2;  // a success is no state: steps that fail are passed over
inline constexpr unsigned kNoWayOn = 4;  // called again after a failure it leads elsewhere

struct Setter {
  const char* name;
  Texts texts;  // of the call, each of which may be replaced by a hostile one
  std::function<int(const Texts&)> call;
  const char* setup =
      "";  // run by a shell before the first call; I is the beginning of ifcfg files
  unsigned exempt = 0;

  [[nodiscard]] bool Is(unsigned what) const { return (exempt & what) != 0; }
};

const std::vector<Setter>& Setters();
// What only reads, for hostile texts.
const std::vector<Setter>& Readers();

}  // namespace torture
