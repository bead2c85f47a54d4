// SPDX-License-Identifier: Apache-2.0
// Splitting and trimming text in place.
#include <cctype>
#include <cstring>

#include <zarncore/zarncore.h>

#include "common/error.h"

using platform::Code;
using platform::FailNull;

char* KOPACStrTok(char* sz, const char* szDelim, char** pszSave) {
  if (szDelim == nullptr || pszSave == nullptr) return FailNull(Code::kArgument);
  return sz != nullptr || *pszSave != nullptr ? ::strtok_r(sz, szDelim, pszSave) : nullptr;
}

// Like strsep, with the rest of the text kept in *pszSave: a text starts anew, null goes on.
char* KOPACStrSep(char* sz, const char* szDelim, char** pszSave) {
  if (szDelim == nullptr || pszSave == nullptr) return FailNull(Code::kArgument);
  if (sz != nullptr) *pszSave = sz;
  return ::strsep(pszSave, szDelim);
}

char* KOPACStrTokIndex(char* sz, const char* szDelim, int index) {
  if (sz == nullptr || szDelim == nullptr || index < 0) return FailNull(Code::kArgument);
  char* save = nullptr;
  char* token = ::strtok_r(sz, szDelim, &save);
  for (int i = 0; i < index && token != nullptr; ++i)
    token = ::strtok_r(nullptr, szDelim, &save);
  return token;
}

char* KOPACStrTrimSpace(char* sz, int /*flags*/) {
  if (sz == nullptr) return FailNull(Code::kArgument);
  const auto isSpace = [](char c) { return std::isspace(static_cast<unsigned char>(c)) != 0; };
  std::size_t length = std::strlen(sz);
  while (length > 0 && isSpace(sz[length - 1]))
    --length;
  sz[length] = '\0';
  std::size_t skip = 0;
  while (isSpace(sz[skip]))
    ++skip;
  std::memmove(sz, sz + skip, length - skip + 1);
  return sz;
}

int KOPACILineKeyMatch(const char* szLine, const char* szKey) {
  if (szLine == nullptr || szKey == nullptr || *szKey == '\0') return 0;
  const std::size_t length = std::strlen(szKey);
  return std::strncmp(szLine, szKey, length) == 0 && szLine[length] == '=' ? 1 : 0;
}
