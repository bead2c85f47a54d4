// SPDX-License-Identifier: Apache-2.0
// Settings files of KEY=value lines: reading one key, and changing several in one rewrite.
#pragma once

#include <cstddef>
#include <string>

#include <zarncore/zarncore.h>

#include "frame/os/containers.h"

namespace frame {

inline constexpr char kBareLine[] = "%s=%s\n";        // interface files and their like
inline constexpr char kQuotedLine[] = "%s=\"%s\"\n";  // the system settings file

// What a key of a file reads as. `length` is that of the core library: above 0 found, 0 absent or
// empty, below 0 the file cannot be read.
struct KeyValue {
  int length;
  std::string text;

  [[nodiscard]] bool Found() const { return length > 0; }
  [[nodiscard]] bool Unreadable() const { return length < 0; }
};

// Reads a key into at most size bytes, terminator included: longer values are cut.
KeyValue ReadKey(const std::string& path, const char* key, std::size_t size);

// Reads a key into a field of a record. True when it was found; the field is empty otherwise.
template <std::size_t N>
bool ReadKeyInto(const std::string& path, const char* key, char (&field)[N]) {
  return KOPACFileGetKeyValue(path.c_str(), key, field, N, 0) > 0;
}

// The same for a field that stays empty without the key: false when the file cannot be read.
template <std::size_t N>
bool ReadOptionalKeyInto(const std::string& path, const char* key, char (&field)[N]) {
  return KOPACFileGetKeyValue(path.c_str(), key, field, N, 0) >= 0;
}

// Is the key there, with exactly this value?
inline bool KeyIs(const std::string& path, const char* key, const char* value) {
  return KOPACFileCheckKeyValue(path.c_str(), key, value, 0) == 1;
}

// Sets one key, or removes it; the file is made where it is missing, to set.
[[nodiscard]] inline bool SetKey(const std::string& path, const char* key, const char* value,
                                 const char* line = kBareLine) {
  return KOPACFileSetKeyValue(path.c_str(), key, value, line) >= 0;
}
// A text with "=" in it drops the lines that begin with it and end there or go on with a comma.
[[nodiscard]] inline bool DropKey(const std::string& path, const char* key) {
  return KOPACFileRemoveKey(path.c_str(), key) >= 0;
}

// Collects keys to set and keys to drop and writes them in one rewrite.
class KeyEdit {
 public:
  KeyEdit& Set(const char* key, const char* value) {
    set_.Set(key, value);
    return *this;
  }
  KeyEdit& Drop(const char* key) {
    drop_.Set(key, "");
    return *this;
  }
  PKOPACSZHASH* KeysToSet() { return set_.Out(); }  // for who adds keys by the core library's type
  [[nodiscard]] bool WriteTo(const std::string& path, const char* line = kBareLine) const {
    return KOPACFileSetKeys(path.c_str(), set_.Get(), drop_.Get(), line) >= 0;
  }

 private:
  StringHash set_;
  StringHash drop_;
};

}  // namespace frame
