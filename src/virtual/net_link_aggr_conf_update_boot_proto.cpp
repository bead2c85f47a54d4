// SPDX-License-Identifier: Apache-2.0
// The boot protocol of an interface that is on its own: a slave's "none" would leave it without any
// address.
#include <strings.h>

#include <zarnnetsdk/virtual.h>

#include "frame/base/boundary.h"
#include "frame/base/error.h"
#include "frame/base/text.h"
#include "frame/model/ifcfg.h"
#include "frame/os/file.h"
#include "frame/os/key_file.h"
#include "virtual/bond_files.h"

using namespace frame;

namespace {

int SetValue(PKOPACSZHASH* keys, const char* key, const char* value) {
  const int result = KOPACSzHashSetValue(keys, key, value);
  return result < 0 ? Fail(ZARNNETERR_NO_MEMORY, result) : result;
}

}  // namespace

int virtual_if::FixBootProto(const std::string& path, PKOPACSZHASH* keysToSet) {
  constexpr std::size_t kSize = 64;
  const KeyValue value = ReadKey(path, keys::kBootProto, kSize);
  // A fixed address must not be lost to a file that could not be read.
  if (value.Unreadable() && Exists(path)) return -1;
  if (!value.Found()) return SetValue(keysToSet, keys::kBootProto, model::kDhcp);
  for (const char* kept : {model::kStatic, model::kDhcp}) {
    if (strcasecmp(kept, value.text.c_str()) == 0) return 0;
  }
  if (SetValue(keysToSet, keys::kBootProto, model::kDhcp) < 0 ||
      SetValue(keysToSet, keys::kIpAddr, "") < 0) {
    return -1;
  }
  return SetValue(keysToSet, keys::kNetmask, "");
}

int ZARNNetLinkAggrConfUpdateBootProto(const char* szPath, PKOPACSZHASH* ppSet) {
  return Boundary(-1, [&]() -> int {
    if (IsEmpty(szPath) || ppSet == nullptr || *ppSet == nullptr)
      return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    return virtual_if::FixBootProto(szPath, ppSet);
  });
}
