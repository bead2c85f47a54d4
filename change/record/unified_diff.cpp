// SPDX-License-Identifier: Apache-2.0
// The longest common lines, between a common beginning and a common end.
#include "record/unified_diff.h"

#include <algorithm>
#include <vector>

namespace change {
namespace {

using Lines = std::vector<std::string>;

constexpr std::size_t kContext = 3;
// Beyond so many pairs of lines everything in between counts as replaced.
constexpr std::size_t kMostPairs = 4U << 20;

Lines LinesOf(const std::string& text) {
  Lines lines;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t end = text.find('\n', at);
    if (end == std::string::npos) {
      lines.push_back(text.substr(at) + "\n\\ No newline at end of file");
      break;
    }
    lines.push_back(text.substr(at, end - at));
    at = end + 1;
  }
  return lines;
}

struct Edit {
  char sign;  // ' ', '-' or '+'
  std::string line;
};
using Edits = std::vector<Edit>;

// How many lines are common from each pair on.
class Table {
 public:
  Table(const Lines& a, const Lines& b) : width_(b.size() + 1), cells_((a.size() + 1) * width_) {
    for (std::size_t i = a.size(); i-- > 0;) {
      for (std::size_t j = b.size(); j-- > 0;) {
        cells_[i * width_ + j] =
            a[i] == b[j] ? At(i + 1, j + 1) + 1 : std::max(At(i + 1, j), At(i, j + 1));
      }
    }
  }
  [[nodiscard]] unsigned At(std::size_t i, std::size_t j) const { return cells_[i * width_ + j]; }

 private:
  std::size_t width_;
  std::vector<unsigned> cells_;
};

void AddMiddle(const Lines& a, const Lines& b, Edits* edits) {
  const bool tooMany = a.size() * b.size() > kMostPairs;
  const Table table(tooMany ? Lines() : a, tooMany ? Lines() : b);
  std::size_t i = 0;
  std::size_t j = 0;
  while (i < a.size() || j < b.size()) {
    const bool both = i < a.size() && j < b.size() && !tooMany;
    if (both && a[i] == b[j]) {
      edits->push_back({' ', a[i++]});
      ++j;
    } else if (i < a.size() && (!both || table.At(i + 1, j) >= table.At(i, j + 1))) {
      edits->push_back({'-', a[i++]});
    } else {
      edits->push_back({'+', b[j++]});
    }
  }
}

Edits EditsOf(Lines a, Lines b) {
  const auto differs = std::mismatch(a.begin(), a.end(), b.begin(), b.end());
  Edits edits;
  for (auto line = a.begin(); line != differs.first; ++line)
    edits.push_back({' ', *line});
  b.erase(b.begin(), differs.second);
  a.erase(a.begin(), differs.first);
  Lines end;
  while (!a.empty() && !b.empty() && a.back() == b.back()) {
    end.push_back(a.back());
    a.pop_back();
    b.pop_back();
  }
  AddMiddle(a, b, &edits);
  std::for_each(end.rbegin(), end.rend(), [&](const std::string& line) {
    edits.push_back({' ', line});
  });
  return edits;
}

// "3,4"; of no lines the number is that of the one before.
std::string Range(std::size_t first, std::size_t count) {
  const std::string start = std::to_string(count == 0 ? first : first + 1);
  return count == 1 ? start : start + "," + std::to_string(count);
}

// The edits from one to another as a hunk, behind so many lines of both texts.
std::string Hunk(const Edits& edits, std::size_t begin, std::size_t end) {
  std::size_t before[2] = {0, 0};
  std::size_t inside[2] = {0, 0};
  std::string text;
  for (std::size_t i = 0; i < end; ++i) {
    std::size_t* const count = i < begin ? before : inside;
    count[0] += edits[i].sign != '+' ? 1 : 0;
    count[1] += edits[i].sign != '-' ? 1 : 0;
    if (i >= begin) text += edits[i].sign + edits[i].line + "\n";
  }
  return "@@ -" + Range(before[0], inside[0]) + " +" + Range(before[1], inside[1]) + " @@\n" + text;
}

std::string Hunks(const Edits& edits) {
  std::string text;
  for (std::size_t i = 0; i < edits.size(); ++i) {
    if (edits[i].sign == ' ') continue;
    const std::size_t begin = i < kContext ? 0 : i - kContext;
    std::size_t last = i;
    while (i < edits.size() && i - last <= 2 * kContext) {
      if (edits[i].sign != ' ') last = i;
      ++i;
    }
    i = std::min(last + kContext, edits.size() - 1);
    text += Hunk(edits, begin, i + 1);
  }
  return text;
}

}  // namespace

std::string UnifiedDiff(const std::string& oldName, const std::string& before,
                        const std::string& newName, const std::string& after) {
  if (before == after) return {};
  if (before.find('\0') != std::string::npos || after.find('\0') != std::string::npos)
    return "Binary files " + oldName + " and " + newName + " differ\n";
  return "--- " + oldName + "\n+++ " + newName + "\n" +
         Hunks(EditsOf(LinesOf(before), LinesOf(after)));
}

}  // namespace change
