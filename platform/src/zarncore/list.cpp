// SPDX-License-Identifier: Apache-2.0
// The growable list of strings. Its layout is public: callers read nItem to loop.
#include <algorithm>
#include <cstdlib>
#include <cstring>

#include <zarncore/zarncore.h>

#include "common/error.h"

using platform::Code;
using platform::Fail;
using platform::FailNull;

namespace {

bool Grow(PKOPACSZLIST list) {
  const int capacity = list->nCapacity * 2;
  void* const items =
      std::realloc(list->rgszItem, static_cast<std::size_t>(capacity) * sizeof(char*));
  if (items == nullptr) return false;
  list->rgszItem = static_cast<char**>(items);
  list->nCapacity = capacity;
  return true;
}

}  // namespace

PKOPACSZLIST KOPACSzListAlloc(int nCapacity) {
  auto* const list = static_cast<PKOPACSZLIST>(std::calloc(1, sizeof(KOPACSZLIST)));
  if (list == nullptr) return FailNull(Code::kMemory);
  list->nCapacity = std::max(nCapacity, 1);
  list->rgszItem =
      static_cast<char**>(std::calloc(static_cast<std::size_t>(list->nCapacity), sizeof(char*)));
  if (list->rgszItem != nullptr) return list;
  std::free(list);
  return FailNull(Code::kMemory);
}

int KOPACSzListPush(PKOPACSZLIST* ppList, const char* sz) {
  if (ppList == nullptr || *ppList == nullptr || sz == nullptr) return Fail(Code::kArgument);
  const PKOPACSZLIST list = *ppList;
  if (list->nItem == list->nCapacity && !Grow(list)) return Fail(Code::kMemory);
  char* const copy = ::strdup(sz);
  if (copy == nullptr) return Fail(Code::kMemory);
  list->rgszItem[list->nItem++] = copy;
  return 0;
}

const char* KOPACSzListGet(const KOPACSZLIST* pList, int index) {
  if (pList == nullptr) return FailNull(Code::kArgument);
  return index >= 0 && index < pList->nItem ? pList->rgszItem[index] : nullptr;
}

int KOPACSzListFind(const KOPACSZLIST* pList, const char* sz) {
  if (pList == nullptr || sz == nullptr) return Fail(Code::kArgument);
  for (int i = 0; i < pList->nItem; ++i) {
    if (std::strcmp(pList->rgszItem[i], sz) == 0) return i;
  }
  return -1;
}

void KOPACSzListRemoveAll(PKOPACSZLIST pList) {
  if (pList == nullptr) return;
  for (int i = 0; i < pList->nItem; ++i)
    std::free(pList->rgszItem[i]);
  pList->nItem = 0;
}

void KOPACSzListFree(PKOPACSZLIST pList) {
  if (pList == nullptr) return;
  KOPACSzListRemoveAll(pList);
  std::free(pList->rgszItem);
  std::free(pList);
}
