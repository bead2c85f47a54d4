// A list of texts as the library takes and fills it.
#pragma once

#include <new>
#include <string>
#include <vector>

#include <zarncore/zarncore.h>

namespace tool {

class TextList {
 public:
  TextList() : list_(KOPACSzListAlloc(kCapacity)) {
    if (list_ == nullptr) throw std::bad_alloc();
  }
  ~TextList() { KOPACSzListFree(list_); }
  TextList(const TextList&) = delete;
  TextList& operator=(const TextList&) = delete;

  void Add(const std::string& text) {
    if (KOPACSzListPush(&list_, text.c_str()) < 0) throw std::bad_alloc();
  }
  [[nodiscard]] PKOPACSZLIST* Out() { return &list_; }
  [[nodiscard]] PKOPACSZLIST Get() const { return list_; }
  [[nodiscard]] std::vector<std::string> Texts() const {
    std::vector<std::string> texts;
    for (int i = 0; i < list_->nItem; ++i)
      texts.emplace_back(KOPACSzListGet(list_, i));
    return texts;
  }

 private:
  static constexpr int kCapacity = 512;
  PKOPACSZLIST list_;
};

}  // namespace tool
