// SPDX-License-Identifier: Apache-2.0
#include "steps/calls.h"

#include <algorithm>
#include <cstdlib>

#include <zarnnetsdk/zarnnetsdk.h>

#include "steps/journal.h"

namespace change {
namespace {

using Texts = std::vector<std::string>;

struct Call {
  const char* setter;
  std::size_t arguments;
  std::string (*what)(const Texts& arguments);
  int (*make)(const Texts& arguments);  // less than 0 when it fails
};

const char* TextOrNone(const std::string& text) {
  return text.empty() ? nullptr : text.c_str();
}

std::string AddOrDelete(const std::string& operation) {
  return operation == "0" ? "add " : "delete ";
}

const Call kCalls[] = {
    {"ZARNNetDNSUpdate", 0, [](const Texts&) { return std::string("rebuild the resolver's file"); },
     [](const Texts&) { return ZARNNetDNSUpdate(); }},
    {"ZARNNetFlushIP", 2,
     [](const Texts& texts) {
       return "flush the IPv" + std::string(texts[0] == "-6" ? "6" : "4") + " addresses of " +
              texts[1];
     },
     [](const Texts& texts) { return ZARNNetFlushIP(texts[0].c_str(), texts[1].c_str()); }},
    {"ZARNNetIPv6IPAction", 5,
     [](const Texts& texts) {
       return AddOrDelete(texts[0]) +
              (texts[4].empty() ? texts[2] + "/" + texts[3] : "the default route via " + texts[4]) +
              " at " + texts[1];
     },
     [](const Texts& texts) {
       return ZARNNetIPv6IPAction(texts[0] == "0" ? 0 : 1, texts[1].c_str(), texts[2].c_str(),
                                  static_cast<unsigned>(std::atoi(texts[3].c_str())),
                                  TextOrNone(texts[4]));
     }},
    {"ZARNNetIpv6Init", 0, [](const Texts&) { return std::string("set up router advertisements"); },
     [](const Texts&) { return ZARNNetIpv6Init(); }},
    {"ZARNNetRenameEth", 2,
     [](const Texts& texts) { return "rename " + texts[0] + " to " + texts[1]; },
     [](const Texts& texts) { return ZARNNetRenameEth(texts[0].c_str(), texts[1].c_str()); }},
    {"ZARNNetClearPPPoERelayConfigAll", 0,
     [](const Texts&) { return std::string("delete the settings of all relays"); },
     [](const Texts&) { return ZARNNetClearPPPoERelayConfigAll(); }},
    {"NetRoutetableHandler", 2,
     [](const Texts& texts) { return AddOrDelete(texts[0]) + "the subnet route of " + texts[1]; },
     [](const Texts& texts) {
       return NetRoutetableHandler(texts[0] == "0" ? 0 : 1, texts[1].c_str());
     }},
    {"NetRoutetableCheck", 0,
     [](const Texts&) { return std::string("remove subnet routes without carrier"); },
     [](const Texts&) { return NetRoutetableCheck(); }},
};

const Call* CallNamed(const std::string& setter) {
  const auto* const found = std::find_if(std::begin(kCalls), std::end(kCalls),
                                         [&](const Call& call) { return setter == call.setter; });
  return found == std::end(kCalls) ? nullptr : found;
}

}  // namespace

Steps StepsOfCalls(const Json& calls, std::string* problem) {
  Steps steps;
  if (!calls.is_array()) *problem = "options: calls: a list of calls belongs here";
  for (const Json& words : calls) {
    Texts texts = TextsOf(words);
    const Call* const call = texts.empty() ? nullptr : CallNamed(texts.front());
    if (call == nullptr || texts.size() != call->arguments + 1) {
      *problem = "options: calls: no such call can be planned: " + words.dump();
      return {};
    }
    texts.erase(texts.begin());
    steps.push_back({Phase::kSettings, Path(), call->what(texts), call->setter, {}, [=] {
                       return call->make(texts) >= 0;
                     }});
  }
  return steps;
}

Report RehearseCalls(const Json& calls, const EnterCopy& enter) {
  Report report;
  std::string problem;
  for (Step& step : StepsOfCalls(calls, &problem))
    report.steps.emplace_back().step = std::move(step);
  if (!problem.empty()) return End(report, ZARNNETCHANGE_USAGE, problem);
  return RehearseSteps(std::move(report), enter);
}

}  // namespace change
