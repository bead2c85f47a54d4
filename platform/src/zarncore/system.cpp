// What kind of machine this is: kernel modules, controller heads.
#include <cstring>
#include <string>
#include <unistd.h>

#include <zarncore/zarncore.h>

// Modules that are built in show in /sys only when they have parameters; the callers' modules are
// loaded ones.
int KOPACModuleIsLoad(const char* szModule) try {
  if (szModule == nullptr || *szModule == '\0' || std::strchr(szModule, '/') != nullptr) return -1;
  return ::access((std::string("/sys/module/") + szModule).c_str(), F_OK) == 0 ? 1 : 0;
} catch (...) {
  return -1;
}

int KOPACSupportDualhead(void) {
  return KOPACFileCheckKeyValue("/etc.defaults/zarninfo.conf", "support_dual_head", "yes", 0) == 1
             ? 1
             : 0;
}
