// SPDX-License-Identifier: Apache-2.0
// Owners of the core library's string lists and string hashes.
#pragma once

#include <new>
#include <string>
#include <vector>

#include <zarncore/zarncore.h>

namespace frame {

// A list of the core library that is freed with its owner. Running out of memory throws.
class StringList {
 public:
  explicit StringList(int capacity) : list_(KOPACSzListAlloc(capacity)) {
    if (list_ == nullptr) throw std::bad_alloc();
  }
  ~StringList() { KOPACSzListFree(list_); }
  StringList(const StringList&) = delete;
  StringList& operator=(const StringList&) = delete;

  PKOPACSZLIST* Out() { return &list_; }  // for operations that append and may move the list
  [[nodiscard]] const KOPACSZLIST* Get() const { return list_; }
  [[nodiscard]] int Count() const { return list_->nItem; }
  [[nodiscard]] const char* operator[](int index) const { return KOPACSzListGet(list_, index); }
  void Add(const char* text) {
    if (KOPACSzListPush(&list_, text) < 0) throw std::bad_alloc();
  }
  [[nodiscard]] std::vector<std::string> Texts() const {
    return {list_->rgszItem, list_->rgszItem + list_->nItem};
  }

 private:
  PKOPACSZLIST list_;
};

// Appends texts to a list of the caller's. False when memory ran out.
[[nodiscard]] inline bool PushTexts(const std::vector<std::string>& texts, PKOPACSZLIST* list) {
  for (const std::string& text : texts) {
    if (KOPACSzListPush(list, text.c_str()) < 0) return false;
  }
  return true;
}

// A hash of the core library; as StringList.
class StringHash {
 public:
  explicit StringHash(int capacity = 1024) : hash_(KOPACSzHashAlloc(capacity)) {
    if (hash_ == nullptr) throw std::bad_alloc();
  }
  ~StringHash() { KOPACSzHashFree(hash_); }
  StringHash(const StringHash&) = delete;
  StringHash& operator=(const StringHash&) = delete;

  void Set(const char* key, const char* value) {
    if (KOPACSzHashSetValue(&hash_, key, value) < 0) throw std::bad_alloc();
  }
  PKOPACSZHASH* Out() { return &hash_; }  // for operations that add keys and may move the hash
  [[nodiscard]] PKOPACSZHASH Get() const { return hash_; }

 private:
  PKOPACSZHASH hash_;
};

}  // namespace frame
