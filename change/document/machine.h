// SPDX-License-Identifier: Apache-2.0
// What sections read and write with: keys of files, lists and texts of the library's records.
#pragma once

#include <algorithm>
#include <new>
#include <string>
#include <strings.h>
#include <utility>
#include <vector>

#include <zarncore/zarncore.h>

#include "json.h"
#include "texts.h"

namespace change {

// The value of a key, empty when there is none. A file that is there and cannot be read becomes
// the unread one.
std::string KeyOf(const std::string& path, const char* key, std::string* unread = nullptr);

bool IsFile(const std::string& path);
// The names in a folder that begin so, sorted, what they begin with taken off.
std::vector<std::string> NamesIn(const std::string& folder, const std::string& prefix,
                                 std::string* unread);

// The interfaces that have a file. What a change of a bond or a bridge has kept beside is none.
std::vector<std::string> ConfiguredInterfaces(std::string* unread);
std::string SavedIfcfg(const std::string& ifname);

using Keys = std::vector<std::pair<const char*, std::string>>;
// Sets keys and drops others in one write; false when that fails.
bool EditKeys(const std::string& path, const Keys& set, const std::vector<const char*>& drop);

// A list of the core library's.
class Names {
 public:
  Names() : list_(KOPACSzListAlloc(8)) {
    if (list_ == nullptr) throw std::bad_alloc();
  }
  explicit Names(const std::vector<std::string>& texts) : Names() {
    for (const std::string& text : texts) {
      if (KOPACSzListPush(&list_, text.c_str()) < 0) throw std::bad_alloc();
    }
  }
  ~Names() { KOPACSzListFree(list_); }
  Names(const Names&) = delete;
  Names& operator=(const Names&) = delete;

  [[nodiscard]] PKOPACSZLIST Get() const { return list_; }
  [[nodiscard]] PKOPACSZLIST* Out() { return &list_; }
  [[nodiscard]] std::vector<std::string> Texts() const { return TextsIn(list_); }
  static std::vector<std::string> TextsIn(const KOPACSZLIST* list) {
    std::vector<std::string> texts;
    for (int i = 0; list != nullptr && i < list->nItem; ++i)
      texts.emplace_back(KOPACSzListGet(list, i));
    return texts;
  }

 private:
  PKOPACSZLIST list_;
};

// A hash of the core library's.
class Hash {
 public:
  Hash() : hash_(KOPACSzHashAlloc(16)) {
    if (hash_ == nullptr) throw std::bad_alloc();
  }
  ~Hash() { KOPACSzHashFree(hash_); }
  Hash(const Hash&) = delete;
  Hash& operator=(const Hash&) = delete;

  void Set(const std::string& key, const std::string& value) {
    if (KOPACSzHashSetValue(&hash_, key.c_str(), value.c_str()) < 0) throw std::bad_alloc();
  }
  [[nodiscard]] PKOPACSZHASH Get() const { return hash_; }
  [[nodiscard]] PKOPACSZHASH* Out() { return &hash_; }

 private:
  PKOPACSZHASH hash_;
};

// A text that is too long for its field was refused before; the field keeps its terminator.
template <std::size_t N>
void Fill(const std::string& text, char (&field)[N]) {
  std::fill(field, field + N, '\0');
  text.copy(field, N - 1);
}

// A record with a password in it does not outlive its use.
template <class Record>
struct Wiped {
  Record record{};
  Wiped() = default;
  ~Wiped() { ::explicit_bzero(&record, sizeof record); }
  Wiped(const Wiped&) = delete;
  Wiped& operator=(const Wiped&) = delete;
};

// ---- masks
std::string MaskOf(long prefix);         // 24 is "255.255.255.0"
long PrefixOf(const std::string& mask);  // 0 for one that is none, or has holes
std::string Cidr(const std::string& address, long prefix);

}  // namespace change
