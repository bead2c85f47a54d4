// SPDX-License-Identifier: Apache-2.0
// Files as lines and as folder entries.
#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <vector>

#include <zarncore/zarncore.h>

#include "common/descriptor.h"
#include "common/error.h"
#include "common/text.h"
#include "folder.h"
#include "whole_file.h"

namespace {

using platform::Answer;
using platform::Code;
using platform::CodeOf;
using platform::Descriptor;
using platform::Fail;
using platform::FailNull;
using platform::TakeLine;
using zarncore::FileEdit;

constexpr int kBeginsWith = 2;
constexpr int kContains = 0x402;
constexpr mode_t kNewMode = 0644;

bool IsWanted(std::string_view line, std::string_view text, int flags) {
  return flags == kContains ? line.find(text) != std::string_view::npos : line.starts_with(text);
}

bool IsOneLine(const char* text) {
  return text != nullptr && platform::IsOneLine(text);
}

// Where a line comes to stand: behind the first one that begins so, or at the end.
std::size_t PlaceBehind(std::string_view text, const char* beginning) {
  std::string_view rest = text;
  while (beginning != nullptr && !rest.empty()) {
    if (TakeLine(&rest).starts_with(beginning)) return text.size() - rest.size();
  }
  return text.size();
}

// Makes a file, empty, with its mode whatever the umask; one that is there is opened as it is.
Descriptor OpenOrMake(const char* path) {
  Descriptor fd(::open(path, O_WRONLY | O_CLOEXEC | O_NONBLOCK));
  if (fd || errno != ENOENT) return fd;
  fd = Descriptor(::open(path, O_WRONLY | O_CREAT | O_CLOEXEC, kNewMode));
  return fd && ::fchmod(fd.Get(), kNewMode) != 0 ? Descriptor() : std::move(fd);
}

}  // namespace

int KOPACFileGetLine(const char* szPath, const char* szText, char* szBuf, size_t cbBuf,
                     int flags) try {
  if (szPath == nullptr || szText == nullptr || szBuf == nullptr || cbBuf == 0)
    return Fail(Code::kArgument);
  *szBuf = '\0';
  if (flags != kBeginsWith && flags != kContains) return Fail(Code::kArgument);
  const zarncore::WholeFile file = zarncore::ReadWhole(szPath);
  if (!file) return Fail(file.error);
  for (std::string_view rest = file.text; !rest.empty();) {
    const std::string_view line = TakeLine(&rest);
    if (IsWanted(line, szText, flags))
      return static_cast<int>(platform::CopyCut(line, szBuf, cbBuf));
  }
  return 0;
} catch (...) {
  return Fail(Code::kMemory);
}

int KOPACFileAddLine(const char* szPath, const char* szAfter, const char* szLine,
                     int /*flags*/) try {
  if (szPath == nullptr || !IsOneLine(szLine)) return Fail(Code::kArgument);
  FileEdit edit(szPath);
  if (edit.Error() != Code::kNone) return Fail(edit.Error());
  std::string content(edit.Content());
  if (!content.empty() && content.back() != '\n') content += '\n';
  content.insert(PlaceBehind(content, szAfter), std::string(szLine) + "\n");
  return Answer(edit.Replace(content));
} catch (...) {
  return Fail(Code::kMemory);
}

int KOPACFileReadLines(const char* szPath, PKOPACSZLIST* ppList) try {
  if (szPath == nullptr || ppList == nullptr || *ppList == nullptr) return Fail(Code::kArgument);
  const zarncore::WholeFile file = zarncore::ReadWhole(szPath);
  if (!file) return Fail(file.error);
  for (std::string_view rest = file.text; !rest.empty();) {
    if (KOPACSzListPush(ppList, std::string(TakeLine(&rest)).c_str()) < 0) return -1;
  }
  return 0;
} catch (...) {
  return Fail(Code::kMemory);
}

int KOPACFileReplaceSubStr(const char* szPath, const char* szOld, const char* szNew) try {
  if (szPath == nullptr || szOld == nullptr || *szOld == '\0' || !IsOneLine(szNew))
    return Fail(Code::kArgument);
  FileEdit edit(szPath, zarncore::kMustExist);
  if (edit.Error() != Code::kNone) return Fail(edit.Error());
  const std::string_view old(szOld);
  std::string content;
  std::string_view rest = edit.Content();
  for (std::size_t at = rest.find(old); at != std::string_view::npos; at = rest.find(old)) {
    content.append(rest.substr(0, at)).append(szNew);
    rest.remove_prefix(at + old.size());
  }
  content.append(rest);
  return Answer(edit.Replace(content));
} catch (...) {
  return Fail(Code::kMemory);
}

FILE* KOPACFileTempFileOpen(char* szTemplate) {
  if (szTemplate == nullptr) return FailNull(Code::kArgument);
  Descriptor fd(::mkostemp(szTemplate, O_CLOEXEC));
  if (!fd) return FailNull(errno == EINVAL ? Code::kArgument : CodeOf(Code::kOpen));
  FILE* const file = ::fdopen(fd.Get(), "w");
  if (file == nullptr) {
    const Code code = CodeOf(Code::kOpen);
    ::unlink(szTemplate);
    return FailNull(code);
  }
  static_cast<void>(fd.Release());
  return file;
}

int KOPACFileITmpName(const char* szPath, char* szBuf, size_t cbBuf) try {
  if (szPath == nullptr || szBuf == nullptr) return Fail(Code::kArgument);
  std::string name = std::string(szPath) + ".XXXXXX";
  if (name.size() >= cbBuf) return Fail(Code::kArgument);
  const Descriptor fd(
      ::mkostemp(name.data(), O_CLOEXEC));  // made, so that the name is the caller's
  if (!fd) return Fail(CodeOf(Code::kOpen));
  platform::CopyCut(name, szBuf, cbBuf);
  return 0;
} catch (...) {
  return Fail(Code::kMemory);
}

int KOPACFileTouch(const char* szPath) {
  if (szPath == nullptr) return Fail(Code::kArgument);
  const Descriptor fd = OpenOrMake(szPath);
  if (!fd) return Fail(CodeOf(Code::kOpen));
  return ::futimens(fd.Get(), nullptr) == 0 ? 0 : Fail(Code::kWrite);
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
  if (szDir == nullptr || ppList == nullptr || *ppList == nullptr) return Fail(Code::kArgument);
  const std::string_view filter(szFilter != nullptr ? szFilter : "");
  std::vector<std::string> names;
  const Code error = zarncore::VisitFolder(szDir, [&](std::string_view name) {
    if (!name.starts_with('.') && name.starts_with(filter)) names.emplace_back(name);
  });
  if (error != Code::kNone) return Fail(error);
  std::sort(names.begin(), names.end());
  for (const std::string& name : names) {
    if (KOPACSzListPush(ppList, name.c_str()) < 0) return -1;
  }
  return static_cast<int>(names.size());
} catch (...) {
  return Fail(Code::kMemory);
}
