// SPDX-License-Identifier: Apache-2.0
#include "steps/history.h"

#include <algorithm>

#include "record/change_lock.h"
#include "record/store.h"
#include "record/text_diff.h"
#include "steps/journal.h"
#include "steps/pending.h"

namespace change {
namespace {

Json Brief(const Record& record) {
  Json json{
      {"number", record.number},   {"state", WordOf(record.state)}, {"began", record.began},
      {"seconds", record.seconds}, {"program", record.program},     {"who", record.who},
      {"steps", record.steps},     {"result", record.result},       {"reason", record.reason}};
  Put(&json, "from", record.from);
  if (record.undoes != 0) json["undoes"] = record.undoes;
  if (record.state == RecordState::kWaiting) json["confirm"] = ConfirmOf(record);
  return json;
}

// The contents where they are kept, else what the digests say.
Json FilesOf(const Record& record) {
  std::string problem;
  const auto before = store::ReadBefore(record, &problem);
  const auto after = store::ReadAfter(record);
  Json list = Json::array();
  for (const auto& [path, digests] : record.files) {
    if (digests.before == digests.after && (!after || !after->contains(path))) continue;
    Json row{{"path", path}};
    Put(&row, "before", digests.before);
    Put(&row, "after", digests.after);
    if (before && after && after->contains(path)) {
      const auto old = before->generation.files.find(path);
      const bool was = old != before->generation.files.end();
      row["diff"] = DiffOf(path, was ? std::optional(old->second) : std::nullopt, after->at(path));
    }
    list.push_back(std::move(row));
  }
  return list;
}

Json Whole(const Record& record) {
  Json json = Brief(record);
  json["wish"] = record.wish;
  json["options"] = record.options;
  json["files"] = FilesOf(record);
  if (!record.problems.empty()) json["problems"] = record.problems;
  Put(&json, "settled", record.settled);
  Put(&json, "settled_by", record.settledBy);
  return json;
}

Json Answer(int result, const std::string& reason) {
  return {{"result", result}, {"reason", reason}};
}

Json One(long number) {
  std::string problem;
  const auto record = store::Read(number, &problem);
  if (!record) {
    const auto numbers = store::Numbers();
    const bool there = std::find(numbers.begin(), numbers.end(), number) != numbers.end();
    return Answer(there ? ZARNNETCHANGE_FAILED : ZARNNETCHANGE_NOT_FOUND, problem);
  }
  Json answer = Answer(ZARNNETCHANGE_DONE, "done");
  answer["change"] = Whole(*record);
  return answer;
}

Json All() {
  Json answer = Answer(ZARNNETCHANGE_DONE, "done");
  answer["changes"] = Json::array();
  for (const long number : store::Numbers()) {
    std::string problem;
    const auto record = store::Read(number, &problem);
    answer["changes"].push_back(
        record ? Brief(*record)
               : Json{{"number", number}, {"state", "unreadable"}, {"reason", problem}});
  }
  return answer;
}

}  // namespace

Json History(const Options& options) {
  if (const auto refused = NotRoot())
    return Answer(refused->result, "only root may see what was changed");
  {
    // Whoever is at a change settles what was left himself.
    const ChangeLock lock(options.program, 0);
    if (lock.IsHeld()) static_cast<void>(SettleLeftover(options));
  }
  return options.number != 0 ? One(options.number) : All();
}

}  // namespace change
