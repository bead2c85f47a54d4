// SPDX-License-Identifier: Apache-2.0
// How the interfaces stand on each other: a bridge on its ports, a bond on its slaves, a VLAN on
// the interface below.
#pragma once

#include <string>
#include <vector>

#include "interfaces.h"

namespace tool {

struct Node {
  std::string name;
  std::string role;  // "bond 802.3ad", "VLAN 10"; empty for a port
  State state = State::kMissing;
  bool up = false;  // as the library answers
  std::vector<std::string> addresses;
  std::vector<Node> below;
};

// The interfaces on which no other stands, each with what lies below it.
std::vector<Node> ReadTree();

// Each interface once, though several stand on it.
std::vector<const Node*> EachOnce(const std::vector<Node>& tree);

}  // namespace tool
