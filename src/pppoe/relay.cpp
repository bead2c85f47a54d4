// Where the settings of the PPPoE relays are kept.
#include "pppoe/relay.h"

#include <sys/stat.h>

#include <zarncore/zarncore.h>

#include "frame/base/text.h"
#include "frame/model/paths.h"

using namespace frame;

namespace pppoe {

bool CanHaveSettings(const char* ifname) {
  return !IsUnfitName(ifname) && *ifname != '.';
}

std::string RelayFile(std::string_view ifname) {
  constexpr std::size_t kMaxLength = 43;
  return std::string(paths::kPppoeRelayFolder).append(ifname).substr(0, kMaxLength);
}

bool MakeRelayFolder(mode_t mode) {
  if (KOPACFileCheckDir(paths::kPppoeRelayFolder) == 1) return true;
  return ::mkdir(paths::kPppoeRelayFolder, mode) == 0 &&
         ::chmod(paths::kPppoeRelayFolder, mode) == 0;  // whatever the caller's umask is
}

bool MakeRelayFile(const std::string& path) {
  constexpr mode_t kFolderMode = 0755;
  if (!MakeRelayFolder(kFolderMode)) return false;
  return KOPACFileExist(path.c_str()) == 1 || KOPACFileTouch(path.c_str()) >= 0;
}

}  // namespace pppoe
