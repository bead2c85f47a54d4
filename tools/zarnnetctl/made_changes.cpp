// SPDX-License-Identifier: Apache-2.0
#include "made_changes.h"

#include <nlohmann/json.hpp>

namespace tool {

std::string Who(const Json& change) {
  const Json& who = change["who"];
  return who.value("sudo", who.value("login", ""));
}

std::string What(const Json& change) {
  if (change.contains("undoes")) return "undo of " + WrittenOut(change["undoes"]);
  const Json& steps = change["steps"];
  if (steps.empty()) return change["reason"];
  const std::string more =
      steps.size() > 1 ? " and " + std::to_string(steps.size() - 1) + " more" : "";
  return steps.front().get<std::string>() + more;
}

Row RowOf(const Json& change) {
  const bool readable = change.contains("who");
  return {{WrittenOut(change["number"])},
          {change["state"]},
          {change.value("began", "")},
          {readable ? Who(change) : ""},
          {readable ? What(change) : change.value("reason", "")}};
}

}  // namespace tool
