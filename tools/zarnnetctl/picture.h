// SPDX-License-Identifier: Apache-2.0
// Pictures of the tree of interfaces. State is told by colour, by line and in words.
#pragma once

#include <string>
#include <vector>

#include "tree.h"

namespace tool {

// A source of Graphviz.
std::string DotOf(const std::vector<Node>& tree);

// "bond 802.3ad, no link".
std::string RoleAndState(const Node& node);

}  // namespace tool
