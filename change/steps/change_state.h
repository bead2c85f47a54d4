// SPDX-License-Identifier: Apache-2.0
// A change under way: what is wished, what the machine is, what it shall be, and what is found.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "json.h"
#include "record/kernel.h"

namespace change {

struct Options {
  bool insist = false;
  bool keep = false;
  bool probe = true;
  bool secrets = false;
  long wait = 5;                // seconds
  std::optional<long> confirm;  // seconds; 0 for those of the settings
  long number = 0;              // of a change; 0 for the last
  long extend = 0;              // seconds
  long watch = 0;               // the number of the change to wait for
  bool rehearsing = false;      // in the copy, where the steps themselves ask the programs
  Path below;                   // only its steps are rehearsed
  bool starting = false;        // the machine, of which no interface is configured yet
  std::string view = "configured";
  std::string program = "a program";
  std::vector<std::string> sections;
  std::vector<Path> restart;
  Json plan;   // that shall hold still; null for none
  Json calls;  // that are planned in place of a wish; null for none
};

// A field that is not as wished. A side that cannot show the field has none.
struct Difference {
  Path path;
  Json wanted;
  std::optional<Json> files;
  std::optional<Json> kernel;
};

// What comes later, or what a reader shall know, about a path.
struct Remark {
  Path path;
  std::string sentence;
};

enum class Severity { kUsage, kNotFound, kRefused, kInsistable, kWarning };

struct Finding {
  std::string rule;
  Path path;
  Severity severity;
  std::string sentence;
};

class Findings {
 public:
  void Add(const char* rule, const Path& path, Severity severity, std::string sentence) {
    list_.push_back({rule, path, severity, std::move(sentence)});
  }
  void Add(Finding finding) { list_.push_back(std::move(finding)); }
  [[nodiscard]] const std::vector<Finding>& List() const { return list_; }

 private:
  std::vector<Finding> list_;
};

struct Change {
  Options options;
  Json wish;    // what is named, with what follows from it
  Json before;  // what is configured
  Json live;    // what the kernel has and what runs
  Json wanted;  // what shall be configured
  Kernel kernel;
  std::vector<Difference> differences;

  // Has the change to do something about it: a difference there, or a restart that is asked for?
  [[nodiscard]] bool Concerns(const Path& path) const;
  [[nodiscard]] bool Restarts(const Path& path) const;
  // The bonds and bridges that it is part of when all is done; one that is no mistake has one.
  [[nodiscard]] std::vector<Path> MastersOf(const std::string& ifname) const;
  [[nodiscard]] bool BecomesMember(const std::string& ifname) const {
    return !MastersOf(ifname).empty();
  }
  // The VLANs that are on it when all is done; one that is no mistake has one.
  [[nodiscard]] std::vector<std::string> VlansOver(const std::string& ifname) const;
  // Does a VLAN on it go? Whoever removes the VLAN starts it, with the VLAN's addresses.
  [[nodiscard]] bool LosesVlan(const std::string& ifname) const;
  // Who makes something of it starts it.
  [[nodiscard]] bool IsMadeOf(const std::string& ifname) const {
    return BecomesMember(ifname) || !VlansOver(ifname).empty();
  }
  // Is it a bond, VLAN or bridge that there is and shall not be?
  [[nodiscard]] bool Goes(const std::string& ifname) const;
  // The entries of a map that the wish names, wanted or not.
  [[nodiscard]] std::vector<std::string> NamedIn(const Path& map) const;
};

// When a step is taken: makes before uses, and what is removed goes in the reverse order.
enum class Phase {
  kRename,
  kFreeUses,
  kRemoveBridge,
  kRemoveVlan,
  kRemoveBond,
  kMakeBond,
  kMakeVlan,
  kMakeBridge,
  kLink,
  kMtu,
  kAddress,
  kRoute,
  kNames,
  kSettings,
  kServices,
};

struct Step {
  Phase phase;
  Path path;
  std::string what;                  // "give eth0 the address 192.168.50.10/24"
  std::string setter;                // the call
  std::vector<std::string> touches;  // files and programs
  std::function<bool()> call;
};

using Steps = std::vector<Step>;

}  // namespace change
