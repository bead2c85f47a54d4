// The block flags of an interface file: which parts of the appliance keep the interface for themselves.
#include <zarnnetsdk/iface.h>

#include <cstdlib>
#include <string>

#include "frame/key_file.h"
#include "frame/log.h"
#include "frame/paths.h"
#include "frame/text.h"

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

// The lock on one interface file; it is kept apart from the file, which every edit replaces.
class FileLock {
 public:
  FileLock(const std::string& path, std::string ifname) : ifname_(std::move(ifname)) {
    constexpr int kExclusive = 1;
    constexpr int kWaitSeconds = 30;
    held_ = KOPACFileLockTimeByFile(path.c_str(), kExclusive, kWaitSeconds, &lock_) >= 0;
    if (!held_) LOG_ERROR("%s:%d KOPACFileLockTimeByFile failed!");
  }
  ~FileLock() {
    if (held_ && KOPACFileUnlockByFile(lock_) != 1) {
      LOG_ERROR("%s:%d Failed to release file lock of [%s]", ifname_.c_str());
    }
  }
  FileLock(const FileLock&) = delete;
  FileLock& operator=(const FileLock&) = delete;

  [[nodiscard]] bool Held() const { return held_; }

 private:
  std::string ifname_;
  PKOPACFILELOCK lock_ = nullptr;
  bool held_ = false;
};

bool IsYes(const KeyValue& value) { return value.text.starts_with("yes"); }

// Flag and counter change in one rewrite, so that no crash leaves them apart.
bool WriteFlag(const std::string& path, const char* key, const char* value, int step) {
  const KeyValue count = ReadKey(path, kCountKey, 16);
  if (count.Unreadable()) {
    LOG_ERROR("%s:%d Failed to get key [%s]", kCountKey);
    return false;
  }
  const std::string counted = Format("%d", std::atoi(count.text.c_str()) + step);
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

}  // namespace

int ZARNNetIFBlockSet(const char* szIfname, unsigned int mask, int value) try {
  if (IsUnfitName(szIfname)) return FRAME_FAIL(kBadParameter, -1);
  const std::string path = paths::Ifcfg(szIfname);
  const FileLock lock(path, szIfname);
  if (!lock.Held()) {
    LOG_ERROR("%s:%d Failed to get lock");
    return -1;
  }
  for (const BlockFlag& flag : kBlockFlags) {
    if ((mask & flag.bit) == 0 || ChangeFlag(path, flag.key, value)) continue;
    LOG_ERROR("%s:%d Failed to set mode [%s] of [%s]", flag.key, szIfname);
    return -1;
  }
  return 0;
}
FRAME_NO_EXCEPTIONS(-1)

int ZARNNetIFBlockGet(const char* szIfname) try {
  if (IsUnfitName(szIfname)) return FRAME_FAIL(kBadParameter, -1);
  const std::string path = paths::Ifcfg(szIfname);
  const KeyValue count = ReadKey(path, kCountKey, 16);
  if (std::atoi(count.text.c_str()) == 0) return 0;
  unsigned mask = 0;
  for (const BlockFlag& flag : kBlockFlags) {
    if (IsYes(ReadKey(path, flag.key, 16))) mask |= flag.bit;
  }
  return static_cast<int>(mask);
}
FRAME_NO_EXCEPTIONS(-1)
