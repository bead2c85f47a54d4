// SPDX-License-Identifier: Apache-2.0
// Records as JSON, one a file.
#include "record/record.h"

#include <algorithm>
#include <iterator>

namespace change {
namespace {

constexpr int kVersion = 1;
constexpr const char* kWords[] = {"open",     "waiting", "kept",        "failed",
                                  "reverted", "refused", "not put back"};

std::optional<RecordState> StateOf(const std::string& word) {
  const auto found = std::find(std::begin(kWords), std::end(kWords), word);
  if (found == std::end(kWords)) return std::nullopt;
  return static_cast<RecordState>(found - std::begin(kWords));
}

Json ToJson(const Deadline& deadline) {
  return {{"boot", deadline.boot},
          {"until", deadline.until},
          {"seconds", deadline.seconds},
          {"wall_time", deadline.untilWallTime}};
}

Deadline DeadlineOf(const Json& json) {
  return {json.at("boot").get<std::string>(), json.at("until").get<long long>(),
          json.at("seconds").get<long>(), TextOf(Member(json, "wall_time"))};
}

Json ToJson(const std::map<std::string, FileDigests>& files) {
  Json json = Json::object();
  for (const auto& [path, digests] : files)
    json[path] = {{"before", digests.before}, {"after", digests.after}};
  return json;
}

Json ToJson(const Runner& runner) {
  return {{"group", runner.group}, {"since", runner.since}};
}

Runner RunnerOf(const Json& json) {
  if (!json.is_object()) return {};
  return {json.at("group").get<long>(), json.at("since").get<long long>()};
}

Record Read(const Json& json) {
  Record record;
  json.at("number").get_to(record.number);
  json.at("seconds").get_to(record.seconds);
  json.at("result").get_to(record.result);
  json.at("undoes").get_to(record.undoes);
  json.at("before").get_to(record.before);
  json.at("after").get_to(record.after);
  json.at("services").get_to(record.services);
  for (const auto& [path, digests] : json.at("files").items())
    record.files[path] = {digests.at("before"), digests.at("after")};
  if (json.contains("deadline")) record.deadline = DeadlineOf(json.at("deadline"));
  record.began = TextOf(Member(json, "began"));
  record.boot = TextOf(Member(json, "boot"));
  record.runner = RunnerOf(Member(json, "runner"));
  record.program = TextOf(Member(json, "program"));
  record.who = Member(json, "who");
  record.from = TextOf(Member(json, "from"));
  record.wish = Member(json, "wish");
  record.options = Member(json, "options");
  record.steps = TextsOf(Member(json, "steps"));
  record.reason = TextOf(Member(json, "reason"));
  record.problems = TextsOf(Member(json, "problems"));
  record.settled = TextOf(Member(json, "settled"));
  record.settledBy = Member(json, "settled_by");
  return record;
}

}  // namespace

const char* WordOf(RecordState state) {
  return kWords[static_cast<std::size_t>(state)];
}

std::string BytesOf(const Record& record) {
  Json json{{"version", kVersion},
            {"number", record.number},
            {"state", WordOf(record.state)},
            {"began", record.began},
            {"boot", record.boot},
            {"seconds", record.seconds},
            {"program", record.program},
            {"who", record.who},
            {"from", record.from},
            {"wish", record.wish},
            {"options", record.options},
            {"undoes", record.undoes},
            {"steps", record.steps},
            {"services", record.services},
            {"files", ToJson(record.files)},
            {"before", record.before},
            {"after", record.after},
            {"result", record.result},
            {"reason", record.reason},
            {"problems", record.problems},
            {"settled", record.settled},
            {"settled_by", record.settledBy},
            {"runner", ToJson(record.runner)}};
  if (record.deadline) json["deadline"] = ToJson(*record.deadline);
  return json.dump(1, ' ', false, Json::error_handler_t::replace) + "\n";
}

std::optional<Record> RecordOf(const std::string& bytes, std::string* problem) {
  const Json json = Json::parse(bytes, nullptr, false);
  *problem = "it is cut or damaged";
  if (!json.is_object()) return std::nullopt;
  if (NumberOf(Member(json, "version")) > kVersion) {
    *problem = "a newer version of this library wrote it";
    return std::nullopt;
  }
  const auto state = StateOf(TextOf(Member(json, "state")));
  if (!state) return std::nullopt;
  try {
    Record record = Read(json);
    record.state = *state;
    problem->clear();
    return record;
  } catch (const Json::exception&) {
    return std::nullopt;
  }
}

}  // namespace change
