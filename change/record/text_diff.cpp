// SPDX-License-Identifier: Apache-2.0
#include "record/text_diff.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <regex>
#include <vector>

#include "frame/model/paths.h"

namespace change {
namespace {

using Lines = std::vector<std::string>;
constexpr char kSecret[] = "(secret)";

Lines LinesOf(const std::string& text) {
  Lines lines;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t end = std::min(text.find('\n', at), text.size());
    lines.push_back(text.substr(at, end - at));
    at = end + 1;
  }
  return lines;
}

// The third word of a line of secrets, the values of keys that sound like one, a file that is one.
std::string WithoutSecrets(const std::string& path, std::string line) {
  static const std::regex third(R"(^(\s*\S+\s+\S+\s+).*$)");
  static const std::regex key(R"(^(\s*\w*(?:PASS|SECRET|PSK|passw|secret)\w*\s*=).+$)");
  if (path == frame::paths::kTunnelPassword) return kSecret;
  if (path == frame::paths::kPapSecrets)
    return std::regex_replace(line, third, std::string("$1") + kSecret);
  return std::regex_replace(line, key, std::string("$1") + kSecret);
}

Lines Shown(const std::string& path, const std::optional<WholeFile>& file) {
  Lines lines = file ? LinesOf(file->bytes) : Lines();
  for (std::string& line : lines)
    line = WithoutSecrets(path, std::move(line));
  return lines;
}

struct Line {
  char mark;  // ' ', '-' or '+'
  std::string text;
};

// The longest sequence of common lines, from behind: a table of lengths.
std::vector<Line> Compared(const Lines& before, const Lines& after) {
  const std::size_t wide = after.size() + 1;
  std::vector<unsigned> common((before.size() + 1) * wide);
  const auto at = [&](std::size_t i, std::size_t j) -> unsigned& { return common[i * wide + j]; };
  for (std::size_t i = before.size(); i-- > 0;) {
    for (std::size_t j = after.size(); j-- > 0;)
      at(i, j) =
          before[i] == after[j] ? at(i + 1, j + 1) + 1 : std::max(at(i + 1, j), at(i, j + 1));
  }
  std::vector<Line> lines;
  std::size_t i = 0;
  std::size_t j = 0;
  while (i < before.size() || j < after.size()) {
    if (i < before.size() && j < after.size() && before[i] == after[j]) {
      lines.push_back({' ', before[i++]});
      ++j;
    } else if (j == after.size() || (i < before.size() && at(i + 1, j) >= at(i, j + 1))) {
      lines.push_back({'-', before[i++]});
    } else {
      lines.push_back({'+', after[j++]});
    }
  }
  return lines;
}

// Lines from one to before another, with the numbers that the heading needs.
std::string Hunk(const std::vector<Line>& lines, std::size_t from, std::size_t to) {
  const auto count = [&](std::size_t begin, std::size_t end, char without) {
    return std::count_if(lines.begin() + static_cast<long>(begin),
                         lines.begin() + static_cast<long>(end),
                         [&](const Line& line) { return line.mark != without; });
  };
  const auto heading = [&](char sign, char without) {
    const auto length = count(from, to, without);
    const auto first = count(0, from, without) + (length > 0 ? 1 : 0);
    return sign + std::to_string(first) + "," + std::to_string(length);
  };
  std::string text = "@@ " + heading('-', '+') + " " + heading('+', '-') + " @@\n";
  for (std::size_t i = from; i < to; ++i)
    text += lines[i].mark + lines[i].text + "\n";
  return text;
}

std::string Hunks(const std::vector<Line>& lines) {
  constexpr std::size_t kAround = 3;
  std::string text;
  std::size_t i = 0;
  const auto changed = [](const Line& line) { return line.mark != ' '; };
  while (true) {
    const auto first = std::find_if(lines.begin() + static_cast<long>(i), lines.end(), changed);
    if (first == lines.end()) return text;
    const auto begin = static_cast<std::size_t>(first - lines.begin());
    std::size_t last = begin;
    for (std::size_t j = begin; j < lines.size() && j <= last + 2 * kAround; ++j)
      if (changed(lines[j])) last = j;
    const std::size_t from = std::max(begin, i + kAround) - kAround;
    i = std::min(last + kAround + 1, lines.size());
    text += Hunk(lines, from, i);
  }
}

std::string OwnerOf(const WholeFile& file) {
  std::array<char, 64> text{};
  std::snprintf(text.data(), text.size(), "mode %04o, owner %u:%u", file.mode, file.owner,
                file.group);
  return text.data() + std::string(file.attributes.empty() ? "" : ", with attributes");
}

}  // namespace

std::string DiffOf(const std::string& path, const std::optional<WholeFile>& before,
                   const std::optional<WholeFile>& after) {
  constexpr std::size_t kMostLines = 4000;
  if (before == after) return {};
  std::string text =
      "--- " + (before ? path : "/dev/null") + "\n+++ " + (after ? path : "/dev/null") + "\n";
  const Lines old = Shown(path, before);
  const Lines fresh = Shown(path, after);
  if (old.size() > kMostLines || fresh.size() > kMostLines) return text + "it is too long\n";
  const std::string hunks = Hunks(Compared(old, fresh));
  text += hunks;
  if (!before || !after) return text;
  if (hunks.empty() && before->bytes != after->bytes)
    text += "a secret, or the end of the last line, is another\n";
  const bool owner = before->mode != after->mode || before->owner != after->owner ||
                     before->group != after->group || before->attributes != after->attributes;
  return owner ? text + OwnerOf(*before) + " became " + OwnerOf(*after) + "\n" : text;
}

}  // namespace change
