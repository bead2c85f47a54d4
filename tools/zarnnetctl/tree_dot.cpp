// SPDX-License-Identifier: Apache-2.0
// The tree as a source of Graphviz. Nodes have names of their own, so that a name of the kernel is
// a label and nothing else.
#include <map>

#include "markup.h"
#include "picture.h"

namespace tool {
namespace {

// A label reads backslashes, and entities as HTML has them.
std::string Label(const std::string& text) {
  std::string label;
  for (const char byte : Readable(text)) {
    if (byte == '"' || byte == '\\') label += '\\';
    label += byte == '&' ? "&amp;" : std::string(1, byte);
  }
  return label;
}

std::string ShapeOf(const Node& node) {
  if (node.role.starts_with("bond")) return "box3d";
  if (node.role.starts_with("bridge")) return "component";
  return node.role.starts_with("VLAN") ? "tab" : "box";
}

// The line tells the state as well as the colour does.
std::string StyleOf(State state) {
  switch (state) {
    case State::kUp:
      return R"(style="filled,solid", color="#1a7f37", fillcolor="#dafbe1")";
    case State::kNoLink:
      return R"(style="filled,dashed", color="#9a6700", fillcolor="#fff8c5")";
    case State::kDown:
    case State::kMissing:
      break;
  }
  return R"(style="filled,dotted", color="#cf222e", fillcolor="#ffebe9")";
}

std::string NodeLine(const std::string& id, const Node& node) {
  std::string label = Label(node.name) + "\\n" + Label(RoleAndState(node));
  for (const std::string& address : node.addresses)
    label += "\\n" + Label(address);
  return "  " + id + " [label=\"" + label + "\", shape=" + ShapeOf(node) + ", " +
         StyleOf(node.state) + "];\n";
}

}  // namespace

std::string RoleAndState(const Node& node) {
  return (node.role.empty() ? "port" : node.role) + ", " + WordOf(node.state);
}

std::string DotOf(const std::vector<Node>& tree) {
  std::string dot =
      "digraph network {\n"
      "  graph [charset=\"UTF-8\"];\n"
      "  node [fontname=\"sans-serif\", fontsize=11, penwidth=2];\n"
      "  edge [arrowhead=none];\n";
  const std::vector<const Node*> nodes = EachOnce(tree);
  std::map<std::string, std::string> ids;
  for (const Node* node : nodes) {
    const std::string& id = ids[node->name] = "n" + std::to_string(ids.size());
    dot += NodeLine(id, *node);
  }
  for (const Node* node : nodes) {
    for (const Node& child : node->below)
      dot += "  " + ids[node->name] + " -> " + ids[child.name] + ";\n";
  }
  return dot + "}\n";
}

}  // namespace tool
