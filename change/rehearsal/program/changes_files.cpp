// SPDX-License-Identifier: Apache-2.0
// The layers over the copied folders hold what was written, and a mark for what was removed.
#include <array>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <sys/stat.h>
#include <sys/sysmacros.h>

#include "program/changes.h"
#include "record/text_diff.h"

namespace rehearsal {
namespace {

namespace fs = std::filesystem;
using change::WholeFile;
using File = std::optional<WholeFile>;

// Locks and marks are made by whoever looks at the machine, too.
bool IsPassing(const std::string& path) {
  return path.starts_with("/run/lock/") || path.starts_with("/run/zarnnet");
}

std::string Octal(mode_t mode) {
  std::array<char, 8> text{};
  std::snprintf(text.data(), text.size(), "%04o", static_cast<unsigned>(mode));
  return text.data();
}

std::string OwnerOf(const WholeFile& file) {
  return std::to_string(file.owner) + ":" + std::to_string(file.group);
}

void AddFile(const std::string& path, const File& before, const File& after, Json* files) {
  if (before == after || (!before && !after)) return;
  Json file{{"path", path},
            {"change", !before  ? "new"
                       : !after ? "gone"
                                : "changed"},
            {"diff", change::ContentDiffOf(path, before, after)}};
  const auto both = [&](const char* name, const auto& of) {
    Json sides = Json::object();
    if (before) sides["before"] = of(*before);
    if (after) sides["after"] = of(*after);
    if (!before || !after || sides["before"] != sides["after"]) file[name] = sides;
  };
  both("mode", [](const WholeFile& of) { return Octal(of.mode); });
  both("owner", OwnerOf);
  files->push_back(std::move(file));
}

bool IsRemovedMark(const fs::path& path) {
  struct stat status {};
  return ::lstat(path.c_str(), &status) == 0 && S_ISCHR(status.st_mode) &&
         status.st_rdev == makedev(0, 0);
}

}  // namespace

Json FileChanges(const change::Generation& before) {
  Json files = Json::array();
  for (const std::string folder : kCopied) {
    const std::string upper = UpperOf(folder);
    std::error_code none;
    for (auto it = fs::recursive_directory_iterator(upper, none); it != fs::end(it);
         it.increment(none)) {
      const std::string rest = it->path().string().substr(upper.size());
      const bool removed = IsRemovedMark(it->path());
      if (IsPassing(folder + rest) || (!removed && !it->is_regular_file(none))) continue;
      const auto kept = before.files.find(folder + rest);
      const File was = kept != before.files.end() ? File(kept->second)
                                                  : change::ReadWhole(LowerOf(folder) + rest);
      AddFile(folder + rest, was, removed ? File() : change::ReadWhole(folder + rest), &files);
    }
  }
  std::sort(files.begin(), files.end(),
            [](const Json& a, const Json& b) { return a["path"] < b["path"]; });
  return files;
}

}  // namespace rehearsal
