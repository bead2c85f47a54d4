// SPDX-License-Identifier: Apache-2.0
// A list of items as the library takes and fills it.
#pragma once

#include <new>
#include <string>
#include <vector>

#include <zarncore/zarncore.h>

namespace tool {

class NameList {
 public:
  NameList() : list_(KOPACSzListAlloc(kFirstCapacity)) {
    if (list_ == nullptr) throw std::bad_alloc();
  }
  ~NameList() { KOPACSzListFree(list_); }
  NameList(const NameList&) = delete;
  NameList& operator=(const NameList&) = delete;

  void Add(const std::string& text) {
    if (KOPACSzListPush(&list_, text.c_str()) < 0) throw std::bad_alloc();
  }
  [[nodiscard]] PKOPACSZLIST* Out() { return &list_; }  // a list that grows may move
  [[nodiscard]] PKOPACSZLIST Get() const { return list_; }
  [[nodiscard]] std::vector<std::string> Items() const {
    std::vector<std::string> items;
    items.reserve(static_cast<std::size_t>(list_->nItem));
    for (int i = 0; i < list_->nItem; ++i)
      items.emplace_back(KOPACSzListGet(list_, i));
    return items;
  }

 private:
  static constexpr int kFirstCapacity = 16;
  PKOPACSZLIST list_;
};

}  // namespace tool
