// SPDX-License-Identifier: Apache-2.0
// Settings files of KEY=value lines. Reading goes through the file once; an edit makes one pass
// over it and replaces it at once, keeping order, unknown lines, mode and owner.
#include <algorithm>
#include <bitset>
#include <cstring>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include <zarncore/zarncore.h>

#include "common/error.h"
#include "common/text.h"
#include "hash.h"
#include "whole_file.h"

namespace {

using platform::Answer;
using platform::Code;
using platform::Fail;
using platform::IsOneLine;
using platform::TakeLine;
using zarncore::FileEdit;

constexpr char kBareLine[] = "%s=%s\n";
constexpr char kQuotedLine[] = "%s=\"%s\"\n";
constexpr char kInfoPath[] = "/etc/zarninfo.conf";

// A value without its line's carriage return and without one pair of quotes around the whole of it.
std::string_view PlainValue(std::string_view value) {
  if (value.ends_with('\r')) value.remove_suffix(1);
  if (value.size() >= 2 && value.front() == '"' && value.back() == '"') {
    value = value.substr(1, value.size() - 2);
  }
  return value;
}

// The value as it stands, of the first line that begins with the key. The whole beginning of such a
// line, its forerunner's newline included, is looked for in one search: long files have no other
// place that is like it.
bool FindValue(std::string_view text, std::string_view key, std::string_view* value) {
  const std::string label = std::string("\n").append(key).append("=");
  const std::string_view firstLabel = std::string_view(label).substr(1);
  if (text.starts_with(firstLabel)) {
    text.remove_prefix(firstLabel.size());
  } else {
    const void* const found = ::memmem(text.data(), text.size(), label.data(), label.size());
    if (found == nullptr) return false;
    const auto at = static_cast<std::size_t>(static_cast<const char*>(found) - text.data());
    text.remove_prefix(at + label.size());
  }
  *value = PlainValue(TakeLine(&text));
  return true;
}

bool IsKey(const char* key) {
  return key != nullptr && *key != '\0' && IsOneLine(key);
}

// The caller's format holds "%s" for the key and "%s" for the value; it is filled in by hand, so
// that nothing else in it is taken for a conversion.
bool AppendLine(std::string_view format, std::string_view key, std::string_view value,
                std::string* out) {
  const std::size_t first = format.find("%s");
  const std::size_t second = first == std::string_view::npos ? first : format.find("%s", first + 2);
  if (second == std::string_view::npos || !format.ends_with('\n')) return false;
  out->append(format.substr(0, first)).append(key);
  out->append(format.substr(first + 2, second - first - 2)).append(value);
  out->append(format.substr(second + 2));
  return true;
}

void EndLastLine(std::string* text) {
  if (!text->empty() && text->back() != '\n') text->push_back('\n');
}

// The keys of one edit: a value sets the key, none drops it.
struct Change {
  const char* value;
  bool written = false;
};

class Changes {
 public:
  void Put(std::string_view key, const char* value) {
    changes_.insert_or_assign(key, Change{value});
    lengths_.set(key.size() % lengths_.size());
  }
  // The change that a line is the object of, if any. Most lines are none, and their key's length
  // tells.
  Change* Of(std::string_view line) {
    const std::size_t equals = line.find('=');
    if (equals == std::string_view::npos || !lengths_.test(equals % lengths_.size()))
      return nullptr;
    const auto change = changes_.find(line.substr(0, equals));
    return change == changes_.end() ? nullptr : &change->second;
  }

 private:
  std::unordered_map<std::string_view, Change> changes_;
  std::bitset<64> lengths_;
};

// One pass: a set key's first line is replaced, further lines of it and dropped keys go. What
// stands between is copied in one piece.
bool Rewrite(std::string_view text, const std::vector<std::string_view>& order, Changes* changes,
             std::string_view format, std::string* out) {
  out->reserve(text.size() + 256);
  const char* kept = text.data();
  while (!text.empty()) {
    const char* const begin = text.data();
    const std::string_view line = TakeLine(&text);
    Change* const change = changes->Of(line);
    if (change == nullptr) continue;
    out->append(kept, static_cast<std::size_t>(begin - kept));
    kept = text.data();
    if (change->value == nullptr || change->written) continue;
    change->written = true;
    if (!AppendLine(format, line.substr(0, line.find('=')), change->value, out)) return false;
  }
  out->append(kept, static_cast<std::size_t>(text.data() - kept));
  for (const std::string_view key : order) {
    const Change* const change = changes->Of(std::string(key) + "=");
    if (change->written) continue;
    EndLastLine(out);
    if (!AppendLine(format, key, change->value, out)) return false;
  }
  return true;
}

// Sets are applied over drops: a key in both is set.
bool Collect(const KOPACSZHASH* set, const KOPACSZHASH* drop, std::vector<std::string_view>* order,
             Changes* changes) {
  for (const auto& [key, value] : zarncore::Entries(drop)) {
    if (!IsKey(key.c_str())) return false;
    changes->Put(key, nullptr);
  }
  for (const auto& [key, value] : zarncore::Entries(set)) {
    if (!IsKey(key.c_str()) || key.find('=') != std::string::npos || !IsOneLine(value))
      return false;
    changes->Put(key, value.c_str());
    order->push_back(key);
  }
  return true;
}

// A key text that holds "=" names whole lines: those that begin with it and go on with "," or end
// there.
bool IsLineOf(std::string_view line, std::string_view key) {
  if (line.ends_with('\r')) line.remove_suffix(1);
  return line.starts_with(key) && (line.size() == key.size() || line[key.size()] == ',');
}

std::string WithoutLines(std::string_view text, std::string_view key) {
  std::string out;
  while (!text.empty()) {
    const char* const begin = text.data();
    if (!IsLineOf(TakeLine(&text), key))
      out.append(begin, static_cast<std::size_t>(text.data() - begin));
  }
  return out;
}

std::string WithoutKey(std::string_view text, std::string_view key) {
  Changes changes;
  changes.Put(key, nullptr);
  std::string out;
  static_cast<void>(Rewrite(text, {}, &changes, kBareLine, &out));  // no line to write: cannot fail
  return out;
}

}  // namespace

int KOPACFileGetKeyValue(const char* szPath, const char* szKey, char* szBuf, size_t cbBuf,
                         int /*flags*/) try {
  if (szBuf == nullptr || cbBuf == 0) return Fail(Code::kArgument);
  *szBuf = '\0';
  if (szPath == nullptr || !IsKey(szKey)) return Fail(Code::kArgument);
  const zarncore::WholeFile file = zarncore::ReadWhole(szPath);
  if (!file) return Fail(file.error);
  std::string_view value;
  if (!FindValue(file.text, szKey, &value)) return 0;
  return static_cast<int>(platform::CopyCut(value, szBuf, cbBuf));
} catch (...) {
  return Fail(Code::kMemory);
}

int KOPACFileCheckKeyValue(const char* szPath, const char* szKey, const char* szValue,
                           int /*flags*/) try {
  if (szPath == nullptr || !IsKey(szKey) || szValue == nullptr) return Fail(Code::kArgument);
  const zarncore::WholeFile file = zarncore::ReadWhole(szPath);
  if (!file) return Fail(file.error);
  std::string_view value;
  return FindValue(file.text, szKey, &value) && value == szValue ? 1 : 0;
} catch (...) {
  return Fail(Code::kMemory);
}

int KOPACFileSetKeys(const char* szPath, PKOPACSZHASH pSet, PKOPACSZHASH pRemove,
                     const char* szFormat) try {
  std::vector<std::string_view> order;
  Changes changes;
  if (szPath == nullptr || !Collect(pSet, pRemove, &order, &changes)) return Fail(Code::kArgument);
  FileEdit edit(szPath);
  if (edit.Error() != Code::kNone) return Fail(edit.Error());
  std::string out;
  if (!Rewrite(edit.Content(), order, &changes, szFormat != nullptr ? szFormat : kBareLine, &out))
    return Fail(Code::kArgument);
  return Answer(edit.Replace(out));
} catch (...) {
  return Fail(Code::kMemory);
}

int KOPACFileSetKeyValue(const char* szPath, const char* szKey, const char* szValue,
                         const char* szFormat) try {
  KOPACSZHASH set;
  if (szKey == nullptr || szValue == nullptr) return Fail(Code::kArgument);
  zarncore::Put(&set, szKey, szValue);
  return KOPACFileSetKeys(szPath, &set, nullptr, szFormat);
} catch (...) {
  return Fail(Code::kMemory);
}

int KOPACFileRemoveKey(const char* szPath, const char* szKey) try {
  if (szPath == nullptr || !IsKey(szKey)) return Fail(Code::kArgument);
  FileEdit edit(szPath, zarncore::kMustExist);
  if (edit.Error() != Code::kNone) return Fail(edit.Error());
  const bool namesLines = std::strchr(szKey, '=') != nullptr;
  return Answer(edit.Replace(namesLines ? WithoutLines(edit.Content(), szKey)
                                        : WithoutKey(edit.Content(), szKey)));
} catch (...) {
  return Fail(Code::kMemory);
}

int KOPACINFOSetKeyValue(const char* szKey, const char* szValue) {
  return KOPACFileSetKeyValue(kInfoPath, szKey, szValue, kQuotedLine);
}

int KOPACINFORemoveKey(const char* szKey) {
  return KOPACFileRemoveKey(kInfoPath, szKey);
}
