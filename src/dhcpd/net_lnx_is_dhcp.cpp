// Does an interface take its address by DHCP? A file that does not say so is repaired to a fixed
// address.
#include <string>

#include <zarnnetsdk/dhcpd.h>

#include "frame/file.h"
#include "frame/ifcfg_keys.h"
#include "frame/key_file.h"
#include "frame/lock.h"
#include "frame/log.h"
#include "frame/paths.h"
#include "frame/text.h"

using namespace frame;

int BlZARNLnxIsDHCP(const char* ifname) try {
  if (IsUnfitName(ifname)) return FRAME_FAIL(kBadParameter, 0);
  const Lock lock(kNetworkRead);
  if (!lock.Held()) {
    LOG_ERROR_FUNC("%s(%d) KOPACFileLock failed.");
    return 0;
  }
  const std::string path = paths::Ifcfg(ifname);
  const KeyValue proto = ReadKey(path, keys::kBootProto, 16);
  if (proto.Found()) return proto.text == "dhcp" ? 1 : 0;
  LOG_ERROR_FUNC("%s(%d) Get BOOTPROTO failed.(%X)", KOPACErrGet());
  // Readers come by here all the time, so a file without the key is repaired on the way; an
  // interface without a file stays without one.
  if (Exists(path) &&
      KOPACFileSetKeyValue(path.c_str(), keys::kBootProto, "static", kBareLine) < 0) {
    LOG_ERROR_FUNC("%s(%d) KOPACFileSetKeyValue(%s, BOOTPROTO, static) failed.(%X)", path.c_str(),
                   KOPACErrGet());
  }
  return 0;
}
FRAME_NO_EXCEPTIONS(0)
