// SPDX-License-Identifier: Apache-2.0
// Folders: what is in them, and whether they are there.
#include "frame/os/folder.h"

#include <algorithm>
#include <cerrno>
#include <dirent.h>
#include <fnmatch.h>
#include <memory>

#include <zarncore/zarncore.h>

#include "frame/os/containers.h"

namespace frame {

bool IsFolder(const std::string& path) {
  return KOPACFileCheckDir(path.c_str()) == 1;
}

std::optional<std::vector<std::string>> EntriesOf(const std::string& folder,
                                                  const std::string& beginning) {
  StringList names(16);
  const char* const filter = beginning.empty() ? nullptr : beginning.c_str();
  if (KOPACFileEnumDir(folder.c_str(), filter, names.Out(), 0) < 0) return std::nullopt;
  return names.Texts();
}

// Not by the C library's glob(), which frees twice what it has no memory to enlarge.
std::optional<std::vector<std::string>> PathsLike(const std::string& pattern) {
  const std::size_t name = pattern.rfind('/') + 1;
  const std::string folder = pattern.substr(0, name);
  const std::unique_ptr<DIR, int (*)(DIR*)> entries(::opendir(folder.c_str()), ::closedir);
  if (!entries) return std::nullopt;
  std::vector<std::string> paths;
  errno = 0;
  while (const dirent* const entry = ::readdir(entries.get())) {
    if (::fnmatch(pattern.c_str() + name, entry->d_name, FNM_PERIOD) == 0)
      paths.push_back(folder + entry->d_name);
    errno = 0;
  }
  if (errno != 0) return std::nullopt;
  std::sort(paths.begin(), paths.end());
  return paths;
}

std::string PatternOf(const std::string& path) {
  std::string pattern = path.substr(0, path.rfind('/') + 1);
  for (const char sign : path.substr(pattern.size())) {
    if (std::string_view("*?[\\").find(sign) != std::string_view::npos) pattern += '\\';
    pattern += sign;
  }
  return pattern;
}

}  // namespace frame
