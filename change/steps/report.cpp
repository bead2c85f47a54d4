// SPDX-License-Identifier: Apache-2.0
// The report as JSON.
#include "steps/report.h"

#include <array>
#include <cstdio>

#include "document/section.h"
#include "steps/compare.h"

namespace change {
namespace {

const char* WordOf(Severity severity) {
  switch (severity) {
    case Severity::kUsage:
      return "usage";
    case Severity::kNotFound:
      return "not found";
    case Severity::kRefused:
      return "refused";
    case Severity::kInsistable:
      return "insisted";
    case Severity::kWarning:
      break;
  }
  return "warning";
}

std::string CodeText(unsigned code) {
  std::array<char, 8> text{};
  std::snprintf(text.data(), text.size(), "0x%04X", code & 0xFFFFU);
  return text.data();
}

Json ToJson(const Finding& finding) {
  return {{"rule", finding.rule},
          {"path", finding.path.to_string()},
          {"severity", WordOf(finding.severity)},
          {"sentence", finding.sentence}};
}

Json ToJson(const StepReport& report) {
  const char* const state = report.state == StepReport::State::kDone     ? "done"
                            : report.state == StepReport::State::kFailed ? "failed"
                                                                         : "planned";
  Json json{{"what", report.step.what},
            {"path", report.step.path.to_string()},
            {"setter", report.step.setter},
            {"touches", report.step.touches},
            {"state", state}};
  if (report.state != StepReport::State::kFailed) return json;
  if (report.code != 0) json["code"] = CodeText(report.code);
  json["reason"] = report.reason;
  Put(&json, "place", report.place);
  return json;
}

Json ToJson(const Remark& remark) {
  return {{"path", remark.path.to_string()}, {"sentence", remark.sentence}};
}

template <class Rows>
Json ListOf(const Rows& rows) {
  Json list = Json::array();
  for (const auto& row : rows)
    list.push_back(ToJson(row));
  return list;
}

}  // namespace

Json ToJson(const Report& report) {
  Json json{{"result", report.result},
            {"reason", report.reason},
            {"findings", ListOf(report.findings)},
            {"steps", ListOf(report.steps)},
            {"differences", ToJson(report.differences, DocumentShape())},
            {"awaited", ListOf(report.awaited)},
            {"repaired", report.repaired}};
  if (!report.lost.empty()) json["lost"] = report.lost;
  if (report.restored) json["restored"] = *report.restored;
  if (!report.problems.empty()) json["problems"] = report.problems;
  if (!report.holder.is_null()) json["holder"] = report.holder;
  if (report.number != 0) json["number"] = report.number;
  if (report.undoes != 0) json["undoes"] = report.undoes;
  if (!report.confirm.is_null()) json["confirm"] = report.confirm;
  Put(&json, "recovered", report.recovered);
  return json;
}

}  // namespace change
