// SPDX-License-Identifier: Apache-2.0
// The C interface: texts in, texts out, and no exception across.
#include <cstdlib>
#include <cstring>
#include <new>
#include <optional>
#include <strings.h>
#include <unistd.h>
#include <zarnnetchange/change.h>

#include "document/section.h"
#include "record/generation.h"
#include "rehearsal/rehearsal.h"
#include "steps/calls.h"
#include "steps/engine.h"
#include "steps/history.h"
#include "steps/pending.h"
#include "steps/undo.h"

using namespace change;

namespace {

// Deeper, longer texts are nobody's settings.
constexpr std::size_t kLongest = 4U << 20;
constexpr int kDeepest = 32;

char* Copied(const std::string& text) {
  char* const copy = static_cast<char*>(std::malloc(text.size() + 1));
  if (copy != nullptr) std::memcpy(copy, text.c_str(), text.size() + 1);
  return copy;
}

int Answer(int result, const Json& json, char** ppszText) {
  if (ppszText == nullptr) return result;
  *ppszText = Copied(json.dump(2, ' ', false, Json::error_handler_t::replace));
  return *ppszText != nullptr ? result : ZARNNETCHANGE_FAILED;
}

int Refuse(const std::string& reason, char** ppszText) {
  Report report;
  report.result = ZARNNETCHANGE_USAGE;
  report.reason = reason;
  return Answer(report.result, ToJson(report), ppszText);
}

// Of a folder that cannot be read, and the like.
int Fail(const std::exception& thrown, char** ppszText) noexcept try {
  Report report;
  report.result = ZARNNETCHANGE_FAILED;
  report.reason = thrown.what();
  return Answer(report.result, ToJson(report), ppszText);
} catch (...) {
  return ZARNNETCHANGE_FAILED;
}

// No exception leaves. Without memory there is no text, either.
template <class Body>
int Boundary(char** ppszText, const Body& body) noexcept {
  if (ppszText != nullptr) *ppszText = nullptr;
  try {
    return body();
  } catch (const std::bad_alloc&) {
    return ZARNNETCHANGE_FAILED;
  } catch (const std::exception& thrown) {
    return Fail(thrown, ppszText);
  }
}

// Asked before the text is read: a reader that asks at each level takes a time that grows with the
// square of the document.
bool IsDeep(const char* text) {
  int depth = 0;
  bool quoted = false;
  for (; *text != '\0'; ++text) {
    if (quoted && *text == '\\' && text[1] != '\0')
      ++text;
    else if (*text == '"')
      quoted = !quoted;
    else if (!quoted && (*text == '{' || *text == '['))
      ++depth;
    else if (!quoted && (*text == '}' || *text == ']'))
      --depth;
    if (depth > kDeepest) return true;
  }
  return false;
}

std::optional<Json> Parse(const char* text, std::string* problem) {
  if (text == nullptr || ::strnlen(text, kLongest + 1) > kLongest) {
    *problem = text == nullptr ? "there is no document" : "the document is too long";
    return std::nullopt;
  }
  if (IsDeep(text)) {
    *problem = "the document is nested too deeply";
    return std::nullopt;
  }
  try {
    return Json::parse(text);
  } catch (const Json::exception& error) {  // also a number that no double can be
    const std::string what = error.what();  // behind the library's own "[...] "
    *problem = "this is no JSON: " + what.substr(what.find("] ") + 2);
  }
  return std::nullopt;
}

Shape OptionsShape() {
  constexpr long kDay = 24L * 60 * 60;
  constexpr long kMostChanges = 2000000000;
  std::vector<std::string> names;
  for (const Section& section : Sections())
    names.emplace_back(section.name);
  return Object(
      "Options",
      {{"confirm", Number("Seconds to confirm the change, 0: those of the settings", 0, kDay)},
       {"extend", Number("Seconds more to confirm a change", 1, kDay)},
       {"number", Number("The change that it is about", 1, kMostChanges)},
       {"watch", Number("The change to wait for", 1, kMostChanges)},
       {"starting", Flag("No interface is configured yet")},
       {"insist", Flag("Do what can be insisted on")},
       {"keep", Flag("Keep what is stored and not in effect")},
       {"probe", Flag("Ask the network who has an address")},
       {"secrets", Flag("With passwords")},
       {"wait", Number("Seconds to wait for another change", 0, 3600)},
       {"view", Word("What to read", {"configured", "live", "both"})},
       {"program", Text("Who is making the change", Format::kAny, 64)},
       {"sections", List("Sections to read", Word("A section", names))},
       {"restart", List("Paths of what is started anew", Text("A JSON pointer"))}});
}

bool ReadRestarts(const Json& list, Options* options, std::string* problem) {
  for (const std::string& text : TextsOf(list)) {
    try {
      options->restart.emplace_back(text);
    } catch (const Json::exception&) {
      *problem = "options: restart: '" + text + "' is no JSON pointer";
      return false;
    }
  }
  return true;
}

std::optional<Options> OptionsOf(const char* text, std::string* problem, bool probes = true) {
  auto json = text != nullptr ? Parse(text, problem) : Json::object();
  if (!json) {
    *problem = "options: " + *problem;
    return std::nullopt;
  }
  // A plan is its own document, which is judged when it is used.
  const Json plan = Member(*json, "plan");
  const Json calls = Member(*json, "calls");
  for (const char* name : {"plan", "calls"}) {
    if (json->is_object()) json->erase(name);
  }
  const auto faults = FaultsOf(*json, OptionsShape());
  if (!faults.empty() || !json->is_object()) {
    *problem =
        "options" + (faults.empty() ? ": an object belongs here"
                                    : faults[0].path.to_string() + ": " + faults[0].sentence);
    return std::nullopt;
  }
  Options options;
  options.insist = json->value("insist", false);
  options.keep = json->value("keep", false);
  options.probe = json->value("probe", probes);
  options.plan = plan;
  options.calls = calls;
  if (!calls.is_null()) StepsOfCalls(calls, problem);
  if (!problem->empty()) return std::nullopt;
  options.secrets = json->value("secrets", false);
  if (json->contains("confirm")) options.confirm = json->at("confirm").get<long>();
  options.extend = json->value("extend", options.extend);
  options.number = json->value("number", options.number);
  options.watch = json->value("watch", options.watch);
  options.starting = json->value("starting", false);
  options.wait = json->value("wait", options.wait);
  options.view = json->value("view", options.view);
  options.program = json->value("program", options.program);
  options.sections = TextsOf(Member(*json, "sections"));
  if (!ReadRestarts(Member(*json, "restart"), &options, problem)) return std::nullopt;
  return options;
}

int RunFor(const char* szWish, const char* szOptions, char** ppszReport, bool probes,
           const std::function<Json(const Json&, const Options&)>& work) {
  return Boundary(ppszReport, [&] {
    std::string problem;
    const auto options = OptionsOf(szOptions, &problem, probes);
    if (!options) return Refuse(problem, ppszReport);
    const auto wish = Parse(szWish, &problem);
    if (!wish) return Refuse(problem, ppszReport);
    if (!wish->is_object()) return Refuse("a wish is a JSON object", ppszReport);
    const Json answer = work(*wish, *options);
    return Answer(static_cast<int>(NumberOf(Member(answer, "result"))), answer, ppszReport);
  });
}

int Run(const char* szWish, const char* szOptions, char** ppszReport,
        const std::function<Report(const Json&, const Options&)>& work) {
  return RunFor(szWish, szOptions, ppszReport, true, [&](const Json& wish, const Options& options) {
    return ToJson(work(wish, options));
  });
}

// What takes no wish.
int RunWithout(const char* szOptions, char** ppszReport,
               const std::function<Report(const Options&)>& work) {
  return Boundary(ppszReport, [&] {
    std::string problem;
    const auto options = OptionsOf(szOptions, &problem);
    if (!options) return Refuse(problem, ppszReport);
    const Report report = work(*options);
    return Answer(report.result, ToJson(report), ppszReport);
  });
}

Progress ProgressTo(PFNZARNNETCHANGE pfnProgress, void* pContext) {
  return [=](std::size_t step, std::size_t steps, const std::string& what, double seconds) {
    if (pfnProgress == nullptr) return;
    const Json json{{"step", step}, {"steps", steps}, {"what", what}, {"seconds", seconds}};
    pfnProgress(json.dump(-1, ' ', false, Json::error_handler_t::replace).c_str(), pContext);
  };
}

Json ReadState(const Options& options, const Kernel& kernel) {
  const bool live = options.view != "configured";
  View view{kernel, options.secrets, {}};
  if (live) view.dhcpClients = InterfacesWithDhcpClient();
  Json configured = ReadConfigured(view, options.sections);
  if (!live) return configured;
  const Json seen = ReadLive(view, configured, options.sections);
  return options.view == "live" ? seen : Json{{"configured", configured}, {"live", seen}};
}

}  // namespace

int ZARNNetChangeRead(const char* szOptions, char** ppszState) {
  return Boundary(ppszState, [&] {
    const auto refused = [&](int result, const char* reason) {
      return Answer(result, {{"result", result}, {"reason", reason}}, ppszState);
    };
    std::string problem;
    const auto options = OptionsOf(szOptions, &problem);
    if (!options) return refused(ZARNNETCHANGE_USAGE, problem.c_str());
    if (options->secrets && ::geteuid() != 0)
      return refused(ZARNNETCHANGE_NOT_ALLOWED, "only root may see passwords");
    const auto kernel = ReadKernel();
    if (!kernel)
      return refused(ZARNNETCHANGE_FAILED, "the kernel cannot be asked about its interfaces");
    return Answer(ZARNNETCHANGE_DONE, ReadState(*options, *kernel), ppszState);
  });
}

int ZARNNetChangeCompare(const char* szWish, const char* szOptions, char** ppszReport) {
  return Run(szWish, szOptions, ppszReport, Compare);
}

int ZARNNetChangeCheck(const char* szWish, const char* szOptions, char** ppszReport) {
  return Run(szWish, szOptions, ppszReport, Check);
}

int ZARNNetChangePlan(const char* szWish, const char* szOptions, char** ppszPlan) {
  if (szWish != nullptr) return RunFor(szWish, szOptions, ppszPlan, false, Plan);
  return RunFor("{}", szOptions, ppszPlan, false, [](const Json& /*none*/, const Options& options) {
    return Plan(nullptr, options);
  });
}

int ZARNNetChangeApply(const char* szWish, const char* szOptions, PFNZARNNETCHANGE pfnProgress,
                       void* pContext, char** ppszReport) {
  return Run(szWish, szOptions, ppszReport, [&](const Json& wish, const Options& options) {
    return Apply(wish, options, ProgressTo(pfnProgress, pContext));
  });
}

int ZARNNetChangeConfirm(const char* szOptions, char** ppszReport) {
  return RunWithout(szOptions, ppszReport, Confirm);
}

int ZARNNetChangeRecover(const char* szOptions, char** ppszReport) {
  return RunWithout(szOptions, ppszReport, Recover);
}

int ZARNNetChangeUndo(const char* szOptions, PFNZARNNETCHANGE pfnProgress, void* pContext,
                      char** ppszReport) {
  return RunWithout(szOptions, ppszReport, [&](const Options& options) {
    return Undo(options, ProgressTo(pfnProgress, pContext));
  });
}

int ZARNNetChangeHistory(const char* szOptions, char** ppszHistory) {
  return Boundary(ppszHistory, [&] {
    std::string problem;
    const auto options = OptionsOf(szOptions, &problem);
    if (!options) return Refuse(problem, ppszHistory);
    const Json history = History(*options);
    return Answer(static_cast<int>(NumberOf(history["result"])), history, ppszHistory);
  });
}

int ZARNNetChangeSchema(char** ppszSchema) {
  return Boundary(ppszSchema,
                  [&] { return Answer(ZARNNETCHANGE_DONE, WholeSchema(), ppszSchema); });
}

void ZARNNetChangeFree(char* szText) {
  if (szText == nullptr) return;
  ::explicit_bzero(szText, std::strlen(szText));
  std::free(szText);
}
