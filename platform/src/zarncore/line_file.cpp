// Files as lines and as folder entries.
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

#include <zarncore/zarncore.h>

#include "descriptor.h"
#include "whole_file.h"

namespace {

using zarncore::FileEdit;

constexpr int kBeginsWith = 2;
constexpr int kContains = 0x402;

bool IsWanted(std::string_view line, std::string_view text, int flags) {
  return flags == kContains ? line.find(text) != std::string_view::npos : line.starts_with(text);
}

bool IsOneLine(const char* text) {
  return text != nullptr && std::strpbrk(text, "\r\n") == nullptr;
}

// The lines of a text without their newlines.
std::vector<std::string_view> Lines(std::string_view text) {
  std::vector<std::string_view> lines;
  while (!text.empty()) {
    const std::size_t end = text.find('\n');
    lines.push_back(text.substr(0, end));
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
  }
  return lines;
}

}  // namespace

int KOPACFileGetLine(const char* szPath, const char* szText, char* szBuf, size_t cbBuf,
                     int flags) try {
  if (szPath == nullptr || szText == nullptr || szBuf == nullptr || cbBuf == 0) return -1;
  *szBuf = '\0';
  if (flags != kBeginsWith && flags != kContains) return -1;
  const auto content = zarncore::ReadWhole(szPath);
  if (!content) return -1;
  for (const std::string_view line : Lines(*content)) {
    if (!IsWanted(line, szText, flags)) continue;
    const std::size_t length = std::min(line.size(), cbBuf - 1);
    std::memcpy(szBuf, line.data(), length);
    szBuf[length] = '\0';
    return static_cast<int>(length);
  }
  return 0;
} catch (...) {
  return -1;
}

// Behind the first line that begins with szAfter, or at the end when there is none.
int KOPACFileAddLine(const char* szPath, const char* szAfter, const char* szLine,
                     int /*flags*/) try {
  if (szPath == nullptr || !IsOneLine(szLine)) return -1;
  FileEdit edit(szPath);
  if (!edit.Ready()) return -1;
  std::string content(edit.Content());
  if (!content.empty() && content.back() != '\n') content += '\n';
  std::size_t at = content.size();
  if (szAfter != nullptr) {
    std::size_t position = 0;
    for (const std::string_view line : Lines(content)) {
      position += line.size() + 1;
      if (!line.starts_with(szAfter)) continue;
      at = position;
      break;
    }
  }
  content.insert(at, std::string(szLine) + "\n");
  return edit.Replace(content) ? 0 : -1;
} catch (...) {
  return -1;
}

int KOPACFileReadLines(const char* szPath, PKOPACSZLIST* ppList) try {
  if (szPath == nullptr || ppList == nullptr || *ppList == nullptr) return -1;
  const auto content = zarncore::ReadWhole(szPath);
  if (!content) return -1;
  for (const std::string_view line : Lines(*content)) {
    if (KOPACSzListPush(ppList, std::string(line).c_str()) < 0) return -1;
  }
  return 0;
} catch (...) {
  return -1;
}

int KOPACFileReplaceSubStr(const char* szPath, const char* szOld, const char* szNew) try {
  if (szPath == nullptr || szOld == nullptr || *szOld == '\0' || !IsOneLine(szNew)) return -1;
  FileEdit edit(szPath);
  if (!edit.Ready() || edit.IsNew()) return -1;
  const std::string_view old(szOld);
  std::string content;
  std::string_view rest = edit.Content();
  for (std::size_t at = rest.find(old); at != std::string_view::npos; at = rest.find(old)) {
    content.append(rest.substr(0, at)).append(szNew);
    rest.remove_prefix(at + old.size());
  }
  content.append(rest);
  return edit.Replace(content) ? 0 : -1;
} catch (...) {
  return -1;
}

FILE* KOPACFileTempFileOpen(char* szTemplate) {
  if (szTemplate == nullptr) return nullptr;
  zarncore::Descriptor fd(::mkostemp(szTemplate, O_CLOEXEC));
  if (!fd) return nullptr;
  FILE* const file = ::fdopen(fd.Get(), "w");
  if (file == nullptr) {
    ::unlink(szTemplate);
  } else {
    static_cast<void>(fd.Release());
  }
  return file;
}

int KOPACFileITmpName(const char* szPath, char* szBuf, size_t cbBuf) try {
  if (szPath == nullptr || szBuf == nullptr) return -1;
  std::string name = std::string(szPath) + ".XXXXXX";
  if (name.size() >= cbBuf) return -1;
  const zarncore::Descriptor fd(
      ::mkostemp(name.data(), O_CLOEXEC));  // made, so that the name is the caller's
  if (!fd) return -1;
  std::memcpy(szBuf, name.c_str(), name.size() + 1);
  return 0;
} catch (...) {
  return -1;
}

int KOPACFileTouch(const char* szPath) {
  if (szPath == nullptr) return -1;
  const zarncore::Descriptor fd(::open(szPath, O_WRONLY | O_CREAT | O_CLOEXEC, 0644));
  return fd && ::futimens(fd.Get(), nullptr) == 0 ? 0 : -1;
}

int KOPACFileExist(const char* szPath) {
  return szPath != nullptr && ::access(szPath, F_OK) == 0 ? 1 : 0;
}

int KOPACFileCheckDir(const char* szPath) {
  struct stat status {};
  return szPath != nullptr && ::stat(szPath, &status) == 0 && S_ISDIR(status.st_mode) ? 1 : 0;
}

// Hidden names are no entries: a rewrite that is under way, or was cut short, has one.
int KOPACFileEnumDir(const char* szDir, const char* szFilter, PKOPACSZLIST* ppList,
                     int /*flags*/) try {
  if (szDir == nullptr || ppList == nullptr || *ppList == nullptr) return -1;
  const std::unique_ptr<DIR, int (*)(DIR*)> folder(::opendir(szDir), ::closedir);
  if (!folder) return -1;
  std::vector<std::string> names;
  while (const dirent* const entry = ::readdir(folder.get())) {
    const std::string_view name = entry->d_name;
    if (name.starts_with('.') || (szFilter != nullptr && !name.starts_with(szFilter))) continue;
    names.emplace_back(name);
  }
  std::sort(names.begin(), names.end());
  for (const std::string& name : names) {
    if (KOPACSzListPush(ppList, name.c_str()) < 0) return -1;
  }
  return static_cast<int>(names.size());
} catch (...) {
  return -1;
}
