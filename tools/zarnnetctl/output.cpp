// SPDX-License-Identifier: Apache-2.0
// What the program says: tables for people, JSON for programs, failures on standard error.
#include "output.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <ctime>
#include <iostream>
#include <langinfo.h>
#include <nlohmann/json.hpp>
#include <numeric>
#include <string_view>
#include <sys/ioctl.h>
#include <unistd.h>

namespace tool {
namespace {

constexpr int kSchema = 1;
constexpr int kIndent = 2;
constexpr std::string_view kGap = "  ";

bool IsSet(const char* variable) {
  const char* const value = std::getenv(variable);
  return value != nullptr && *value != '\0';
}

bool UsesColour() {
  const char* const terminal = std::getenv("TERM");
  return ::isatty(STDOUT_FILENO) == 1 && !IsSet("NO_COLOR") &&
         (terminal == nullptr || std::string_view(terminal) != "dumb");
}

std::string_view Escape(Tone tone) {
  switch (tone) {
    case Tone::kHeading:
      return "\x1b[1m";
    case Tone::kGood:
      return "\x1b[32m";
    case Tone::kBad:
      return "\x1b[31m";
    case Tone::kPlain:
      break;
  }
  return "";
}

std::string Painted(const std::string& text, Tone tone, bool colour) {
  if (!colour || tone == Tone::kPlain || text.empty()) return text;
  return std::string(Escape(tone)).append(text).append("\x1b[0m");
}

// Bytes that begin a character; what is not UTF-8 counts as it stands.
std::size_t Width(const std::string& text) {
  return static_cast<std::size_t>(std::count_if(
      text.begin(), text.end(), [](unsigned char byte) { return (byte & 0xC0) != 0x80; }));
}

std::size_t Total(const std::vector<std::size_t>& widths) {
  return std::accumulate(widths.begin(), widths.end(), kGap.size() * (widths.size() - 1));
}

// 0 where there is no terminal, or one that does not say.
std::size_t TerminalWidth() {
  winsize size{};
  return ::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 ? size.ws_col : 0;
}

std::vector<std::size_t> ColumnWidths(const std::vector<Row>& rows) {
  constexpr std::size_t kNarrowest = 6;
  std::vector<std::size_t> widths;
  for (const Row& row : rows) {
    widths.resize(std::max(widths.size(), row.size()));
    for (std::size_t i = 0; i < row.size(); ++i)
      widths[i] = std::max({widths[i], Width(row[i].text), std::size_t{1}});
  }
  const std::size_t most = TerminalWidth();
  while (most > 0 && Total(widths) > most) {
    const auto widest = std::max_element(widths.begin(), widths.end());
    if (*widest <= kNarrowest) break;
    --*widest;
  }
  return widths;
}

// How many bytes the first characters of a text have.
std::size_t BytesOf(const std::string& text, std::size_t characters) {
  std::size_t end = 0;
  for (; end < text.size(); ++end) {
    const bool begins = (static_cast<unsigned char>(text[end]) & 0xC0U) != 0x80;
    if (begins && characters-- == 0) break;
  }
  return end;
}

// The text in at most so many columns; its end tells that something is missing.
std::string Fitted(const std::string& text, std::size_t width) {
  if (Width(text) <= width) return text;
  return text.substr(0, BytesOf(text, width - 1)) + (HasUtf8() ? "…" : "~");
}

// Names come from the command line and from the kernel and need not be UTF-8: what is not is
// replaced.
std::string Dump(const Json& json, int indent) {
  return json.dump(indent, ' ', false, Json::error_handler_t::replace);
}

void PrintError(const Json& error) {
  std::cerr << Dump({{"schema", kSchema}, {"error", error}}, -1) << '\n';
}

}  // namespace

void PrintTable(const std::vector<Row>& rows) {
  const bool colour = UsesColour();
  const std::vector<std::size_t> widths = ColumnWidths(rows);
  for (const Row& row : rows) {
    for (std::size_t i = 0; i < row.size(); ++i) {
      const std::string text = row[i].text.empty() ? "-" : Fitted(row[i].text, widths[i]);
      std::cout << Painted(text, row[i].tone, colour);
      const bool last = i + 1 == row.size();
      if (!last) std::cout << std::string(widths[i] - Width(text), ' ') << kGap;
    }
    std::cout << '\n';
  }
}

void PrintList(const std::vector<Row>& rows, const std::string& things) {
  if (rows.size() > 1) return PrintTable(rows);
  std::cout << "no " << things << '\n';
}

Row Headings(const std::vector<std::string>& names) {
  Row row;
  for (const std::string& name : names)
    row.push_back({name, Tone::kHeading});
  return row;
}

void PrintLine(const Row& cells) {
  const bool colour = UsesColour();
  for (const Cell& cell : cells)
    std::cout << Painted(cell.text, cell.tone, colour);
  std::cout << '\n';
}

void PrintJson(const std::string& name, const Json& payload) {
  std::cout << Dump({{"schema", kSchema}, {name, payload}}, kIndent) << '\n';
}

void PrintJsonLine(const std::string& name, const Json& payload) {
  std::cout << Dump({{"schema", kSchema}, {name, payload}}, -1) << '\n';
}

bool HasUtf8() {
  return std::string_view(::nl_langinfo(CODESET)) == "UTF-8";
}

ExitStatus ReportFailure(const Context& context, const Failure& failure) {
  const std::string code = failure.CodeText();
  if (context.json) {
    PrintError(
        {{"what", failure.what()}, {"code", TextOrNull(code)}, {"reason", failure.Reason()}});
  } else {
    std::cerr << "zarnnetctl: " << failure.what() << ": " << failure.Reason();
    if (!code.empty()) std::cerr << " (" << code << ")";
    std::cerr << '\n';
  }
  return failure.Status();
}

ExitStatus ReportUsage(const Context& context, const std::string& problem,
                       const std::string& verb) {
  if (context.json) {
    PrintError({{"what", "usage"}, {"code", nullptr}, {"reason", problem}});
  } else {
    std::cerr << "zarnnetctl: " << problem << "\nTry '" << verb << " --help'.\n";
  }
  return kUsage;
}

std::string Now() {
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  std::array<char, 32> text{};
  ::localtime_r(&now, &local);
  std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%S%z", &local);
  return text.data();
}

Json TextOrNull(const std::string& text) {
  return text.empty() ? Json() : Json(text);
}

std::string TextIn(const Json& object, const char* name) {
  return object.contains(name) && object[name].is_string() ? object[name].get<std::string>() : "";
}

std::string WrittenOut(const Json& value) {
  return value.dump();
}

}  // namespace tool
