// SPDX-License-Identifier: Apache-2.0
// What the program says: tables for people, JSON for programs, failures on standard error.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <vector>

#include "failure.h"

namespace tool {

using Json = nlohmann::ordered_json;

// What the command line asks of every change alike.
struct ChangeOptions {
  bool force = false;
  bool keep = false;
  bool plan = false;
  int wait = 5;                // seconds
  std::optional<int> confirm;  // seconds
};

// What the command line asks of every verb alike.
struct Context {
  bool json = false;
  bool quiet = false;
  bool verbose = false;
  ChangeOptions change;
  int status = kDone;  // of a verb that ends well and has more to say than that
};

enum class Tone { kPlain, kHeading, kGood, kBad };

struct Cell {
  std::string text;
  Tone tone = Tone::kPlain;
};

using Row = std::vector<Cell>;

// Prints rows as aligned columns, an empty cell as "-"; coloured on a terminal, unless NO_COLOR is
// set. On a terminal rows fit its width: the widest columns are cut short.
void PrintTable(const std::vector<Row>& rows);

// Prints a table whose first row is its headings; one without another row is said to have "no
// THINGS".
void PrintList(const std::vector<Row>& rows, const std::string& things);

// The first row of a table.
Row Headings(const std::vector<std::string>& names);

// Prints cells one behind the other, as they are.
void PrintLine(const Row& cells);

// Prints {"schema": 1, name: payload}.
void PrintJson(const std::string& name, const Json& payload);

// The same on one line, for output that goes on.
void PrintJsonLine(const std::string& name, const Json& payload);

// Whether the locale can have more than ASCII.
bool HasUtf8();

// Reports on standard error, as text or as JSON, and answers the exit status.
ExitStatus ReportFailure(const Context& context, const Failure& failure);
ExitStatus ReportUsage(const Context& context, const std::string& problem, const std::string& verb);

// The time of the day for people, with its distance from UTC.
std::string Now();

// Text as JSON has it: null where there is none.
Json TextOrNull(const std::string& text);

// A member of an object; empty where it has no such text.
std::string TextIn(const Json& object, const char* name);

// A value as JSON writes it.
std::string WrittenOut(const Json& value);

}  // namespace tool
