// SPDX-License-Identifier: Apache-2.0
// The sections of the state document. A section is added by a file with these functions and a line
// in sections.cpp.
#pragma once

#include <functional>
#include <set>
#include <string>
#include <vector>

#include "document/shape.h"
#include "steps/change_state.h"

namespace change {

// From where a section reads.
struct View {
  const Kernel& kernel;
  bool secrets = false;
  std::set<std::string> dhcpClients;  // read for the live view alone
  // Becomes what was there and could not be read: what it holds was taken for none.
  std::string* unread = nullptr;
};

struct Section {
  const char* name;
  Shape (*shape)();
  // What the files say; null for a machine that has no such thing.
  Json (*configured)(const View& view);
  // What the kernel has and what runs: the fields that can be seen there. Of several addresses it
  // names the configured one, when it is there.
  Json (*live)(const View& view, const Json& configured);
  // What follows from the wish is added to it and to what is wanted; what it cannot mean is found.
  void (*settle)(Change* change, Findings* findings);
  void (*plan)(const Change& change, Steps* steps);
  // What of the wish comes later, in the machine as it is after the steps.
  void (*await)(const Change& change, const Json& live, std::vector<Remark>* awaited);
  // After the files were put back: what runs follows them. False when it does not.
  bool (*revive)(const Change& change);
};

const std::vector<Section>& Sections();

// ---- one file each
extern const Section kHost, kInterfaces, kBonds, kBridges, kVlans, kDns, kRoutes, kTopology,
    kDhcpServer, kPppoe, kPppoeRelay, kTunnel;

// ---- the whole document
Shape DocumentShape();
Json ReadConfigured(const View& view, const std::vector<std::string>& sections = {});
Json ReadLive(const View& view, const Json& configured,
              const std::vector<std::string>& sections = {});
Json WholeSchema();
// A map that is wished away is each of its things wished away, and judged so.
void SpellOut(const Json& before, const Shape& shape, Json* wish);

// ---- for sections that need no such function
inline void SettleNothing(Change*, Findings*) {}
inline void AwaitNothing(const Change&, const Json&, std::vector<Remark>*) {}
inline bool ReviveNothing(const Change&) {
  return true;
}

}  // namespace change
