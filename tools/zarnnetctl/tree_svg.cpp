// SPDX-License-Identifier: Apache-2.0
// The tree drawn as SVG: what stands on others to the right of them, so that many interfaces make
// the picture longer and not wider.
#include <algorithm>
#include <map>
#include <numeric>
#include <set>

#include "markup.h"
#include "picture.h"

namespace tool {
namespace {

constexpr int kBoxWidth = 212;
constexpr int kColumnGap = 36;
constexpr int kRowGap = 12;
constexpr int kLine = 16;
constexpr int kPadding = 8;
constexpr int kMargin = 2;
constexpr std::size_t kLongest = 29;  // characters of a line in a box

struct Box {
  const Node* node = nullptr;
  std::size_t column = 0;
  int top = 0;
  std::vector<std::string> lines;  // below the name

  [[nodiscard]] int Height() const {
    return 2 * kPadding + kLine * (static_cast<int>(lines.size()) + 1);
  }
  [[nodiscard]] int Middle() const { return top + Height() / 2; }
  [[nodiscard]] int Left() const {
    return kMargin + static_cast<int>(column) * (kBoxWidth + kColumnGap);
  }
};

// Boxes by name, and the names in the order in which they were placed.
struct Drawing {
  std::map<std::string, Box> boxes;
  std::vector<std::string> order;
  std::vector<int> bottoms;  // of each column, where the next box may begin
};

std::string ClassOf(State state) {
  std::string word = WordOf(state);
  std::replace(word.begin(), word.end(), ' ', '-');
  return word;
}

// The longest addresses take two lines.
std::vector<std::string> LinesOf(const Node& node) {
  std::vector<std::string> lines{RoleAndState(node)};
  for (const std::string& address : node.addresses) {
    for (std::size_t begin = 0; begin < address.size(); begin += kLongest)
      lines.push_back(address.substr(begin, kLongest));
  }
  return lines;
}

// A box stands beside the middle of those below it, or further down where another is already.
const Box& Place(const Node& node, Drawing* drawing) {
  if (const auto placed = drawing->boxes.find(node.name); placed != drawing->boxes.end())
    return placed->second;
  Box box{&node, 0, 0, LinesOf(node)};
  int middles = 0;
  for (const Node& child : node.below) {
    const Box& below = Place(child, drawing);
    box.column = std::max(box.column, below.column + 1);
    middles += below.Middle();
  }
  if (box.column >= drawing->bottoms.size()) drawing->bottoms.resize(box.column + 1, kMargin);
  int& bottom = drawing->bottoms[box.column];
  const int count = static_cast<int>(node.below.size());
  const int wanted = count == 0 ? bottom : middles / count - box.Height() / 2;
  box.top = std::max(bottom, wanted);
  bottom = box.top + box.Height() + kRowGap;
  drawing->order.push_back(node.name);
  return drawing->boxes[node.name] = box;
}

std::string Attribute(const char* name, int value) {
  return std::string(" ") + name + "=\"" + std::to_string(value) + "\"";
}

std::string Text(const Box& box, int line, const std::string& text, const char* kind) {
  return "<text class=\"" + std::string(kind) + "\"" + Attribute("x", box.Left() + kPadding) +
         Attribute("y", box.top + kPadding + kLine * (line + 1) - 4) + ">" + Escaped(text) +
         "</text>";
}

std::string Drawn(const Box& box) {
  std::string svg = "<g class=\"" + ClassOf(box.node->state) + "\"><rect rx=\"6\"" +
                    Attribute("x", box.Left()) + Attribute("y", box.top) +
                    Attribute("width", kBoxWidth) + Attribute("height", box.Height()) + "/>";
  svg += Text(box, 0, box.node->name, "name");
  for (std::size_t i = 0; i < box.lines.size(); ++i)
    svg += Text(box, static_cast<int>(i) + 1, box.lines[i], i == 0 ? "role" : "address");
  return svg + "</g>\n";
}

std::string Edge(const Box& below, const Box& above) {
  const int from = below.Left() + kBoxWidth;
  const int to = above.Left();
  const int half = std::midpoint(from, to);
  const auto point = [](int x, int y) { return std::to_string(x) + " " + std::to_string(y); };
  return "<path class=\"edge\" d=\"M" + point(from, below.Middle()) + " C" +
         point(half, below.Middle()) + "," + point(half, above.Middle()) + "," +
         point(to, above.Middle()) + "\"/>\n";
}

std::string SvgOf(const Drawing& drawing) {
  std::string edges;
  std::string boxes;  // above the edges that pass behind them
  std::string names;
  for (const std::string& name : drawing.order) {
    const Box& box = drawing.boxes.at(name);
    for (const Node& child : box.node->below)
      edges += Edge(drawing.boxes.at(child.name), box);
    boxes += Drawn(box);
    names += (names.empty() ? "" : "; ") + name + ", " + RoleAndState(*box.node);
  }
  const int bottom = *std::max_element(drawing.bottoms.begin(), drawing.bottoms.end());
  const int columns = static_cast<int>(drawing.bottoms.size());
  const int width = columns * (kBoxWidth + kColumnGap) - kColumnGap + 2 * kMargin;
  const int height = bottom - kRowGap + kMargin;
  return "<svg role=\"img\"" + Attribute("width", width) + Attribute("height", height) +
         " viewBox=\"0 0 " + std::to_string(width) + " " + std::to_string(height) + "\"><title>" +
         Escaped(names) + "</title>\n" + edges + boxes + "</svg>\n";
}

// Trees that have an interface in common are one picture.
struct Group {
  std::set<std::string> names;
  std::vector<const Node*> trees;
};

bool Share(const Group& a, const Group& b) {
  return std::any_of(a.names.begin(), a.names.end(),
                     [&](const std::string& name) { return b.names.contains(name); });
}

std::vector<Group> GroupsOf(const std::vector<Node>& tree) {
  std::vector<Group> groups;
  for (const Node& root : tree) {
    const std::vector<Node> alone{root};
    Group group;
    for (const Node* node : EachOnce(alone))
      group.names.insert(node->name);
    for (const Group& other : groups) {
      if (!Share(other, group)) continue;
      group.names.insert(other.names.begin(), other.names.end());
      group.trees.insert(group.trees.end(), other.trees.begin(), other.trees.end());
    }
    std::erase_if(groups, [&](const Group& other) { return Share(other, group); });
    group.trees.push_back(&root);
    groups.push_back(std::move(group));
  }
  return groups;
}

}  // namespace

std::vector<std::string> SvgOf(const std::vector<Node>& tree) {
  std::vector<std::string> pictures;
  for (const Group& group : GroupsOf(tree)) {
    Drawing drawing;
    for (const Node* root : group.trees)
      Place(*root, &drawing);
    pictures.push_back(SvgOf(drawing));
  }
  return pictures;
}

}  // namespace tool
