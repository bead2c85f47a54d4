// SPDX-License-Identifier: Apache-2.0
// Stands in for the platform's plugin events, and for its waiting, in the program that rehearses:
// an event is noted with its arguments, and no plugin runs.
#include <algorithm>
#include <unistd.h>
#include <utility>

#include <zarnsdk/zarnsdk.h>

#include "program/journal.h"

struct KOPAPLUGIN {
  std::string event;
  std::vector<std::pair<std::string, std::string>> arguments;
};

namespace {

void Set(PKOPAPLUGIN plugin, const std::string& name, const std::string& value) {
  const auto present = std::find_if(plugin->arguments.begin(), plugin->arguments.end(),
                                    [&](const auto& argument) { return argument.first == name; });
  if (present != plugin->arguments.end()) {
    present->second = value;
  } else {
    plugin->arguments.emplace_back(name, value);
  }
}

}  // namespace

// They take the place of those in the platform's library.
#pragma GCC visibility push(default)
extern "C" {

int KOPAPluginSDKInit(const char* szCategory, const char* szEvent, PKOPAPLUGIN* ppPlugin) {
  if (szCategory == nullptr || szEvent == nullptr || ppPlugin == nullptr) return -1;
  const std::string category = std::string(szCategory) + "/";
  const std::string event = szEvent;
  *ppPlugin = new KOPAPLUGIN{event.starts_with(category) ? event : category + event, {}};
  return 0;
}

int KOPAPluginSetArg(PKOPAPLUGIN pPlugin, const char* szName, const char* szValue) {
  if (pPlugin == nullptr || szName == nullptr || szValue == nullptr) return -1;
  Set(pPlugin, szName, szValue);
  return 0;
}

int KOPAPluginSetArgByInt(PKOPAPLUGIN pPlugin, const char* szName, int value) {
  return KOPAPluginSetArg(pPlugin, szName, std::to_string(value).c_str());
}

int KOPAPluginSetArgByArray(PKOPAPLUGIN pPlugin, const char* szName, const KOPACSZLIST* pValues) {
  if (pPlugin == nullptr || szName == nullptr || pValues == nullptr) return -1;
  for (int i = 0; i < pValues->nItem; ++i)
    Set(pPlugin, szName + ("_" + std::to_string(i + 1)), KOPACSzListGet(pValues, i));
  Set(pPlugin, std::string(szName) + "_COUNT", std::to_string(pValues->nItem));
  return 0;
}

int KOPAPluginAction(int stage, PKOPAPLUGIN pPlugin) {
  constexpr int kBefore = 4;
  if (pPlugin == nullptr) return -1;
  rehearsal::Fields record{rehearsal::kEventRecord, pPlugin->event,
                           stage == kBefore ? "pre" : "post"};
  for (const auto& [name, value] : pPlugin->arguments)
    record.push_back(std::string(name).append("=").append(value));
  rehearsal::Note(record);
  return 0;
}

int KOPAPluginHasInit(PKOPAPLUGIN pPlugin) {
  return pPlugin != nullptr ? 1 : 0;
}

void KOPAPluginExit(PKOPAPLUGIN pPlugin) {
  delete pPlugin;
}

// What is waited for elsewhere is a program or a partner's; in the copy all has answered already.
unsigned sleep(unsigned seconds) {
  constexpr useconds_t kMoment = 10000;
  ::usleep(seconds > 0 ? kMoment : 0);
  return 0;
}

}  // extern "C"
#pragma GCC visibility pop
