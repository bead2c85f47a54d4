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
#include "steps/engine.h"

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

// No exception leaves: what is thrown here is memory that was not to be had.
template <class Body>
int Boundary(char** ppszText, const Body& body) noexcept {
  if (ppszText != nullptr) *ppszText = nullptr;
  try {
    return body();
  } catch (...) {
    return ZARNNETCHANGE_FAILED;
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
  } catch (const Json::parse_error& error) {
    const std::string what = error.what();  // behind the library's own "[...] "
    *problem = "this is no JSON: " + what.substr(what.find("] ") + 2);
  }
  return std::nullopt;
}

Shape OptionsShape() {
  std::vector<std::string> names;
  for (const Section& section : Sections())
    names.emplace_back(section.name);
  return Object("Options",
                {{"insist", Flag("Do what can be insisted on")},
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

std::optional<Options> OptionsOf(const char* text, std::string* problem) {
  const auto json = text != nullptr ? Parse(text, problem) : Json::object();
  if (!json) {
    *problem = "options: " + *problem;
    return std::nullopt;
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
  options.probe = json->value("probe", true);
  options.secrets = json->value("secrets", false);
  options.wait = json->value("wait", options.wait);
  options.view = json->value("view", options.view);
  options.program = json->value("program", options.program);
  options.sections = TextsOf(Member(*json, "sections"));
  if (!ReadRestarts(Member(*json, "restart"), &options, problem)) return std::nullopt;
  return options;
}

int Run(const char* szWish, const char* szOptions, char** ppszReport,
        const std::function<Report(const Json&, const Options&)>& work) {
  return Boundary(ppszReport, [&] {
    std::string problem;
    const auto options = OptionsOf(szOptions, &problem);
    if (!options) return Refuse(problem, ppszReport);
    const auto wish = Parse(szWish, &problem);
    if (!wish) return Refuse(problem, ppszReport);
    if (!wish->is_object()) return Refuse("a wish is a JSON object", ppszReport);
    const Report report = work(*wish, *options);
    return Answer(report.result, ToJson(report), ppszReport);
  });
}

Json ReadState(const Options& options, const Kernel& kernel) {
  const bool live = options.view != "configured";
  View view{kernel, options.secrets, {}};
  if (live) view.dhcpClients = InterfacesWithDhcpClient();
  const Json configured = ReadConfigured(view, options.sections);
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

int ZARNNetChangeApply(const char* szWish, const char* szOptions, PFNZARNNETCHANGE pfnProgress,
                       void* pContext, char** ppszReport) {
  const auto progress = [&](std::size_t step, std::size_t steps, const std::string& what,
                            double seconds) {
    if (pfnProgress == nullptr) return;
    const Json json{{"step", step}, {"steps", steps}, {"what", what}, {"seconds", seconds}};
    pfnProgress(json.dump(-1, ' ', false, Json::error_handler_t::replace).c_str(), pContext);
  };
  return Run(szWish, szOptions, ppszReport, [&](const Json& wish, const Options& options) {
    return Apply(wish, options, progress);
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
