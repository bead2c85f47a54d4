// SPDX-License-Identifier: Apache-2.0
// Pictures of the tree of interfaces. State is told by colour, by line and in words.
#pragma once

#include <string>
#include <vector>

#include "tree.h"

namespace tool {

// A source of Graphviz.
std::string DotOf(const std::vector<Node>& tree);

// Drawn by ourselves, as an appliance has no Graphviz: an SVG for each group of interfaces that
// hang together, for a page whose style has the classes "up", "no-link", "down" and "missing".
std::vector<std::string> SvgOf(const std::vector<Node>& tree);

// "bond 802.3ad, no link".
std::string RoleAndState(const Node& node);

}  // namespace tool
