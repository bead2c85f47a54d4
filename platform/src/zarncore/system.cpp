// SPDX-License-Identifier: Apache-2.0
// What kind of machine this is: kernel modules, controller heads.
#include <cstring>
#include <string>
#include <unistd.h>

#include <zarncore/zarncore.h>

#include "common/error.h"
#include "common/settings.h"

using platform::Code;
using platform::Fail;

// Modules that are built in show in /sys only when they have parameters; the callers' modules are
// loaded ones.
int KOPACModuleIsLoad(const char* szModule) try {
  if (szModule == nullptr || *szModule == '\0' || std::strchr(szModule, '/') != nullptr)
    return Fail(Code::kArgument);
  return ::access((std::string("/sys/module/") + szModule).c_str(), F_OK) == 0 ? 1 : 0;
} catch (...) {
  return Fail(Code::kMemory);
}

int KOPACSupportDualhead(void) {
  return platform::IsYes("/etc.defaults/zarninfo.conf", "support_dual_head") ? 1 : 0;
}
