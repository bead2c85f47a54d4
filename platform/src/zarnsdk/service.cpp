// SPDX-License-Identifier: Apache-2.0
// Services and jobs, through the appliance's own init tools; and whether a service is meant to run.
#include <cstdio>
#include <cstring>
#include <string>
#include <string_view>

#include <zarnsdk/zarnsdk.h>

#include "common/error.h"

using platform::Code;
using platform::Fail;

namespace {

constexpr char kInitctl[] = "/sbin/initctl";
constexpr char kStop[] = "/sbin/stop";
constexpr int kRunEnabled = 1;
constexpr int kRunDisabled = 2;

bool IsServiceName(const char* name) {
  return name != nullptr && *name != '\0' && *name != '-' &&
         std::strpbrk(name, "/ \t\n") == nullptr;
}

}  // namespace

// "initctl status NAME" prints "NAME start/running ..." for a job that runs.
int KOPAServiceIsRunning(const char* szService) try {
  if (!IsServiceName(szService)) return Fail(Code::kArgument);
  FILE* const output =
      KOPACPopen(kInitctl, "r", "status", szService, static_cast<const char*>(nullptr));
  if (output == nullptr) return -1;
  char line[256] = "";
  const bool read = std::fgets(line, sizeof line, output) != nullptr;
  static_cast<void>(
      KOPACPclose(output));  // the answer is in the line; a service it does not know has none
  if (!read) return 0;
  const std::string_view text(line);
  const std::string running = std::string(szService) + " start/running";
  return text.starts_with(running) ? 1 : 0;
} catch (...) {
  return Fail(Code::kMemory);
}

int KOPAServiceReload(const char* szService) {
  if (!IsServiceName(szService)) return Fail(Code::kArgument);
  return KOPACExec(kInitctl, "reload", szService, nullptr, nullptr) == 0 ? 0 : -1;
}

int KOPAServicectlJobStop(const char* szJob) {
  if (!IsServiceName(szJob)) return Fail(Code::kArgument);
  return KOPACExec(kStop, szJob, nullptr, nullptr, nullptr) == 0 ? 0 : -1;
}

int KOPAServicecfgRunKeyGet(const char* szService, int* pRunState) try {
  if (!IsServiceName(szService) || pRunState == nullptr) return Fail(Code::kArgument);
  const std::string path = std::string("/etc/zarnservice/") + szService + ".conf";
  char value[16] = "";
  if (KOPACFileGetKeyValue(path.c_str(), "run", value, sizeof value, 0) < 0) return -1;
  const bool enabled = std::strcmp(value, "yes") == 0;
  if (!enabled && std::strcmp(value, "no") != 0) return Fail(Code::kContent);
  *pRunState = enabled ? kRunEnabled : kRunDisabled;
  return 0;
} catch (...) {
  return Fail(Code::kMemory);
}
