// SPDX-License-Identifier: Apache-2.0
// Where the settings of the PPPoE relays are kept.
#include "pppoe/relay.h"

#include <cerrno>
#include <sys/stat.h>

#include "frame/base/error.h"
#include "frame/base/text.h"
#include "frame/model/paths.h"
#include "frame/os/file.h"
#include "frame/os/folder.h"
#include "frame/os/line_file.h"

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
  if (IsFolder(paths::kPppoeRelayFolder)) return true;
  if (::mkdir(paths::kPppoeRelayFolder, mode) == 0 &&
      ::chmod(paths::kPppoeRelayFolder, mode) == 0) {  // whatever the caller's umask is
    return true;
  }
  const int reason = errno;
  SetError(ZARNNETERR_OPEN);
  errno = reason;
  return false;
}

bool MakeRelayFile(const std::string& path) {
  constexpr mode_t kFolderMode = 0755;
  if (!MakeRelayFolder(kFolderMode)) return false;
  return Exists(path) || Touch(path);
}

}  // namespace pppoe
