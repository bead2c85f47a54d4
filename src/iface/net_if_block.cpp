// SPDX-License-Identifier: Apache-2.0
// The block flags of an interface file: which parts of the appliance keep the interface for
// themselves.
#include <algorithm>
#include <cstdlib>
#include <limits>
#include <string>

#include <zarnnetsdk/iface.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/model/paths.h"
#include "frame/os/file.h"
#include "frame/os/key_file.h"
#include "frame/os/lock.h"

using namespace frame;

namespace {

constexpr char kCountKey[] = "BLOCK_CNT";

struct BlockFlag {
  unsigned bit;
  const char* key;
};

constexpr BlockFlag kBlockFlags[] = {
    {ZARNNET_BLOCK_HA, "BLOCK_HA"},
    {ZARNNET_BLOCK_AHA, "BLOCK_AHA"},
    {ZARNNET_BLOCK_VIRTUAL, "BLOCK_VIRTUAL"},
    {ZARNNET_BLOCK_QUENDAR, "BLOCK_QUENDAR"},
};

bool IsYes(const KeyValue& value) {
  return value.text.starts_with("yes");
}

// Flag and counter change in one rewrite, so that no crash leaves them apart.
bool WriteFlag(const std::string& path, const char* key, const char* value, int step) {
  const KeyValue count = ReadKey(path, kCountKey, 16);
  if (count.Unreadable()) {
    LOG_ERROR("%s:%d Failed to get key [%s]", kCountKey);
    return false;
  }
  constexpr long long kMost = std::numeric_limits<int>::max();
  const long long present = std::clamp(std::atoll(count.text.c_str()), -kMost, kMost);
  const std::string counted = std::to_string(present + step);
  if (!KeyEdit().Set(key, value).Set(kCountKey, counted.c_str()).WriteTo(path)) {
    LOG_ERROR("%s:%d Failed to set key [%s] with value [%s]", key, value);
    return false;
  }
  return true;
}

// Setting with a value other than 1 writes "no" and counts all the same: callers rely on it.
bool ChangeFlag(const std::string& path, const char* key, int value) {
  const KeyValue present = ReadKey(path, key, 16);
  if (present.Unreadable()) {
    LOG_ERROR("%s:%d Failed to get key [%s]", key);
    return false;
  }
  if (value == 0) return !IsYes(present) || WriteFlag(path, key, "no", -1);
  return IsYes(present) || WriteFlag(path, key, value == 1 ? "yes" : "no", +1);
}

bool ChangeFlags(const std::string& path, const char* ifname, unsigned mask, int value) {
  for (const BlockFlag& flag : kBlockFlags) {
    if ((mask & flag.bit) == 0 || ChangeFlag(path, flag.key, value)) continue;
    LOG_ERROR("%s:%d Failed to set mode [%s] of [%s]", flag.key, ifname);
    return false;
  }
  return true;
}

}  // namespace

int ZARNNetIFBlockSet(const char* szIfname, unsigned int mask, int value) {
  return Boundary(-1, [&]() -> int {
    if (IsUnfitName(szIfname)) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    const std::string path = paths::Ifcfg(szIfname);
    FileLock lock(path);
    if (!lock.Held()) {
      LOG_ERROR("%s:%d KOPACFileLockTimeByFile failed!");
      LOG_ERROR("%s:%d Failed to get lock");
      return Fail(ZARNNETERR_LOCK, -1);
    }
    const bool changed = ChangeFlags(path, szIfname, mask, value);
    if (!lock.Release()) LOG_ERROR("%s:%d Failed to release file lock of [%s]", szIfname);
    return changed ? 0 : -1;
  });
}

int ZARNNetIFBlockGet(const char* szIfname) {
  return Boundary(-1, [&]() -> int {
    if (IsUnfitName(szIfname)) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    const std::string path = paths::Ifcfg(szIfname);
    if (!Exists(path)) return 0;
    const KeyValue count = ReadKey(path, kCountKey, 16);
    if (count.Unreadable()) return -1;
    if (std::atoi(count.text.c_str()) == 0) return 0;
    unsigned mask = 0;
    for (const BlockFlag& flag : kBlockFlags) {
      const KeyValue value = ReadKey(path, flag.key, 16);
      if (value.Unreadable()) return -1;
      if (IsYes(value)) mask |= flag.bit;
    }
    return static_cast<int>(mask);
  });
}
