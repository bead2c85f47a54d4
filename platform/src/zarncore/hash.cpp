// SPDX-License-Identifier: Apache-2.0
// The string-to-string map.
#include "hash.h"

#include "common/error.h"

using platform::Code;
using platform::Fail;
using platform::FailNull;

void zarncore::Put(KOPACSZHASH* hash, const char* key, const char* value) {
  const auto [place, isNew] = hash->index.try_emplace(key, hash->entries.size());
  if (!isNew) {
    hash->entries[place->second].second = value;
    return;
  }
  try {
    hash->entries.emplace_back(key, value);
  } catch (...) {
    hash->index.erase(place);  // it would lead to no entry
    throw;
  }
}

const std::vector<std::pair<std::string, std::string>>& zarncore::Entries(const KOPACSZHASH* hash) {
  static const std::vector<std::pair<std::string, std::string>> none;
  return hash != nullptr ? hash->entries : none;
}

PKOPACSZHASH KOPACSzHashAlloc(int /*nCapacity*/) try { return new KOPACSZHASH; } catch (...) {
  return FailNull(Code::kMemory);
}

int KOPACSzHashSetValue(PKOPACSZHASH* ppHash, const char* szKey, const char* szValue) try {
  if (ppHash == nullptr || *ppHash == nullptr || szKey == nullptr || szValue == nullptr)
    return Fail(Code::kArgument);
  zarncore::Put(*ppHash, szKey, szValue);
  return 0;
} catch (...) {
  return Fail(Code::kMemory);
}

const char* KOPACSzHashGetValue(const KOPACSZHASH* pHash, const char* szKey) try {
  if (pHash == nullptr || szKey == nullptr) return FailNull(Code::kArgument);
  const auto place = pHash->index.find(szKey);
  return place == pHash->index.end() ? nullptr : pHash->entries[place->second].second.c_str();
} catch (...) {
  return FailNull(Code::kMemory);
}

int KOPACSzHashEnumKey(const KOPACSZHASH* pHash, PKOPACSZLIST* ppList) {
  if (pHash == nullptr || ppList == nullptr || *ppList == nullptr) return Fail(Code::kArgument);
  for (const auto& [key, value] : pHash->entries) {
    if (KOPACSzListPush(ppList, key.c_str()) < 0) return -1;
  }
  return static_cast<int>(pHash->entries.size());
}

void KOPACSzHashFree(PKOPACSZHASH pHash) {
  delete pHash;
}
