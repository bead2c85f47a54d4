// SPDX-License-Identifier: Apache-2.0
// A bond takes the DHCP service of its members over, and gives it back when it is dissolved.
#include <string>

#include <zarnnetsdk/dhcpd.h>

#include "dhcpd/files.h"
#include "dhcpd/switches.h"
#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/os/file.h"
#include "frame/os/key_file.h"

using namespace frame;
using namespace dhcpd;
using namespace frame::dhcp_files;

namespace {

constexpr int kJoin = 1;
constexpr std::size_t kValueSize = 64;

bool SetQuoted(const std::string& path, const char* key, const char* value) {
  return SetKey(path, key, value, kQuotedLine);
}

// A port that is off and has a saved state has joined before: it is that state that counts.
bool IsSaved(const std::string& path) {
  return KeyIs(path, kEnable, kNo) && ReadKey(path, kSavedEnable, kValueSize).Found();
}

// Switches the service off and remembers what it was.
bool SaveFile(const std::string& path) {
  const KeyValue enable = ReadKey(path, kEnable, kValueSize);
  if (!enable.Found()) {
    LOG_ERROR("%s:%d Failed to get %s key in [%s]", kEnable, path.c_str());
    return false;
  }
  if (!SetQuoted(path, kSavedEnable, enable.text.c_str())) {
    LOG_ERROR("%s:%d Failed to set %s key in [%s]", kSavedEnable, path.c_str());
    return false;
  }
  if (!SetQuoted(path, kEnable, kNo)) {
    LOG_ERROR("%s:%d Failed to set %s key to \"no\" in [%s]", kEnable, path.c_str());
    return false;
  }
  return true;
}

// Switches the service back to what was remembered, which stays in the file.
bool RestoreFile(const std::string& path) {
  const KeyValue backup = ReadKey(path, kSavedEnable, kValueSize);
  if (backup.Unreadable()) {
    LOG_ERROR("%s:%d Failed to get %s key in [%s]", kSavedEnable, path.c_str());
    return false;
  }
  if (!backup.Found() || SetQuoted(path, kEnable, backup.text.c_str())) return true;
  LOG_ERROR("%s:%d Failed to set %s key in [%s]", kEnable, path.c_str());
  return false;
}

bool SaveFileOnce(const std::string& path) {
  return IsSaved(path) || SaveFile(path);
}

// Does the step to the switches of both families, where they are.
bool ForBothFamilies(const char* ifname, bool (*step)(const std::string&)) {
  if (IsRefusedName(ifname)) {
    LOG_ERROR("%s:%d Restore interface is null");
    return Fail(ZARNNETERR_BAD_PARAMETER, false);
  }
  for (const char* stem : {kStemV4, kStemV6}) {
    const std::string path = InterfaceInfo(stem, ifname);
    if (Exists(path) && !step(path)) return false;
  }
  return true;
}

bool Join(const char* bond, const KOPACSZLIST* members) {
  for (int i = 0; members != nullptr && i < members->nItem; ++i) {
    const char* const member = KOPACSzListGet(members, i);
    if (ForBothFamilies(member, SaveFileOnce)) continue;
    LOG_ERROR("%s:%d Failed to save [%s] interface's dhcp conf", member);
    return false;
  }
  if (ForBothFamilies(bond, RestoreFile)) return true;
  LOG_ERROR("%s:%d Failed to restore [%s] interface's dhcp conf", bond);
  return false;
}

// Readers of the log know these two messages the other way round here.
bool Dissolve(const char* bond, const KOPACSZLIST* members) {
  if (!ForBothFamilies(bond, SaveFile)) {
    LOG_ERROR("%s:%d Failed to restore [%s] interface's dhcp conf", bond);
    return false;
  }
  for (int i = 0; members != nullptr && i < members->nItem; ++i) {
    const char* const member = KOPACSzListGet(members, i);
    if (ForBothFamilies(member, RestoreFile)) continue;
    LOG_ERROR("%s:%d Failed to save [%s] interface's dhcp conf", member);
    return false;
  }
  return true;
}

}  // namespace

int DHCPDLinkAggrSet(int op, const char* bond, PKOPACSZLIST members) {
  return Boundary(-1, [&]() -> int {
    if (IsUnfitName(bond)) {
      LOG_ERROR("%s:%d Bond interface is null");
      return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    }
    if (!(op == kJoin ? Join(bond, members) : Dissolve(bond, members))) return -1;
    static_cast<void>(RestartUnlessRefused());  // a server that does not start fails nothing
    return 0;
  });
}
