// SPDX-License-Identifier: Apache-2.0
// The journal's calls, and what follows from them for services.
#include <algorithm>
#include <cstdlib>
#include <map>
#include <set>

#include "program/changes.h"
#include "program/journal.h"

namespace rehearsal {
namespace {

struct Call {
  double seconds;
  std::string within;
  bool inside;
  bool refused;
  std::vector<std::string> words;  // the program first
};

Call CallOf(const Fields& record) {
  constexpr std::size_t kWords = 4;
  return {std::atof(record[1].c_str()), record[2], record[3] == "inside", record[3] == "refused",
          Fields(record.begin() + kWords, record.end())};
}

Json ToJson(const Call& call) {
  Json json{{"program", call.words.front()},
            {"arguments", Fields(call.words.begin() + 1, call.words.end())},
            {"rehearsed", call.inside}};
  change::Put(&json, "within", call.within);
  return json;
}

Json EventOf(const Fields& record) {
  constexpr std::size_t kArguments = 3;
  Json arguments = Json::object();
  for (std::size_t i = kArguments; i < record.size(); ++i) {
    const std::size_t equals = record[i].find('=');
    arguments[record[i].substr(0, equals)] = record[i].substr(equals + 1);
  }
  return {{"event", record[1]}, {"stage", record[2]}, {"arguments", arguments}};
}

// What a call does to a service, and to which; no verb for a call that does nothing to any.
struct Service {
  std::string verb;
  std::string name;
};

Service ServiceOf(const Call& call) {
  std::vector<std::string> words;
  for (const std::string& word : call.words) {
    if (!word.starts_with("-")) words.push_back(word);
  }
  std::string program = words.front().substr(words.front().rfind('/') + 1);
  words.erase(words.begin());
  if (program.starts_with("pppoe-st")) return {program.substr(6), "pppoe"};
  if (program == "rc.tun" && !words.empty()) return {words.front(), "tunnel"};
  if (program == "initctl" && !words.empty()) {
    program = words.front();
    words.erase(words.begin());
  }
  std::string name;
  for (const std::string& word : words)
    name += (name.empty() ? "" : " ") + word;
  return {program, name};
}

// A service that is stopped and started is down in between; the answers come at once, so that this
// is the least.
class Services {
 public:
  void Take(const Call& call) {
    const Service service = ServiceOf(call);
    static const std::map<std::string, const char*> kActions{{"start", "started"},
                                                             {"stop", "stopped"},
                                                             {"restart", "restarted"},
                                                             {"reload", "reloaded"}};
    const auto action = kActions.find(service.verb);
    if (action == kActions.end() || call.words.front().find("rc.network") != std::string::npos)
      return;
    Json& entry = services_[service.name];
    const auto stopped = stoppedAt_.find(service.name);
    if (service.verb == "start" && stopped != stoppedAt_.end()) {
      entry = {{"name", service.name},
               {"action", "restarted"},
               {"downAtLeastSeconds", call.seconds - stopped->second}};
    } else {
      entry = {{"name", service.name}, {"action", action->second}};
    }
    if (service.verb == "stop") stoppedAt_[service.name] = call.seconds;
  }
  [[nodiscard]] Json List() const {
    Json list = Json::array();
    for (const auto& [name, entry] : services_)
      list.push_back(entry);
    return list;
  }

 private:
  std::map<std::string, Json> services_;
  std::map<std::string, double> stoppedAt_;
};

class Remarks {
 public:
  void Add(const std::string& what, const std::string& reason) {
    if (seen_.insert(what + "\n" + reason).second)
      list_.push_back({{"what", what}, {"reason", reason}});
  }
  [[nodiscard]] const Json& List() const { return list_; }

 private:
  std::set<std::string> seen_;
  Json list_ = Json::array();
};

}  // namespace

void AddCalls(Json* plan) {
  Json programs = Json::array();
  Json events = Json::array();
  Services services;
  Remarks remarks;
  for (const Fields& record : ReadJournal()) {
    if (record.front() == kEventRecord) events.push_back(EventOf(record));
    if (record.front() == kRemarkRecord) remarks.Add(record[1], record[2]);
    if (record.front() != kProgramRecord) continue;
    const Call call = CallOf(record);
    programs.push_back(ToJson(call));
    if (!call.refused) services.Take(call);  // what does not run cannot be stopped
    if (!call.inside)
      remarks.Add(call.words.front(),
                  "it reaches out of the copy: it was not run but answered, "
                  "and what it does itself is not in this plan");
  }
  if (!events.empty())
    remarks.Add("plugins", "they were told nothing, and what they do is not in this plan");
  (*plan)["programs"] = programs;
  (*plan)["events"] = events;
  (*plan)["services"] = services.List();
  (*plan)["notRehearsed"] = remarks.List();
}

}  // namespace rehearsal
