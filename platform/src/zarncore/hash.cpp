// The string-to-string map.
#include "hash.h"

void zarncore::Put(KOPACSZHASH* hash, const char* key, const char* value) {
  const auto [place, isNew] = hash->index.try_emplace(key, hash->entries.size());
  if (isNew) {
    hash->entries.emplace_back(key, value);
  } else {
    hash->entries[place->second].second = value;
  }
}

const std::vector<std::pair<std::string, std::string>>& zarncore::Entries(const KOPACSZHASH* hash) {
  static const std::vector<std::pair<std::string, std::string>> none;
  return hash != nullptr ? hash->entries : none;
}

PKOPACSZHASH KOPACSzHashAlloc(int /*nCapacity*/) try { return new KOPACSZHASH; } catch (...) {
  return nullptr;
}

int KOPACSzHashSetValue(PKOPACSZHASH* ppHash, const char* szKey, const char* szValue) try {
  if (ppHash == nullptr || *ppHash == nullptr || szKey == nullptr || szValue == nullptr) return -1;
  zarncore::Put(*ppHash, szKey, szValue);
  return 0;
} catch (...) {
  return -1;
}

const char* KOPACSzHashGetValue(const KOPACSZHASH* pHash, const char* szKey) try {
  if (pHash == nullptr || szKey == nullptr) return nullptr;
  const auto place = pHash->index.find(szKey);
  return place == pHash->index.end() ? nullptr : pHash->entries[place->second].second.c_str();
} catch (...) {
  return nullptr;
}

int KOPACSzHashEnumKey(const KOPACSZHASH* pHash, PKOPACSZLIST* ppList) {
  if (pHash == nullptr || ppList == nullptr || *ppList == nullptr) return -1;
  for (const auto& [key, value] : pHash->entries) {
    if (KOPACSzListPush(ppList, key.c_str()) < 0) return -1;
  }
  return static_cast<int>(pHash->entries.size());
}

void KOPACSzHashFree(PKOPACSZHASH pHash) {
  delete pHash;
}
