// Folders: what is in them, and whether they are there.
#include "frame/os/folder.h"

#include <glob.h>

#include <zarncore/zarncore.h>

#include "frame/os/containers.h"

namespace frame {
namespace {

class Matches {
 public:
  explicit Matches(const std::string& pattern)
      : result_(::glob(pattern.c_str(), GLOB_ERR, nullptr, &found_)) {}
  ~Matches() { ::globfree(&found_); }
  Matches(const Matches&) = delete;
  Matches& operator=(const Matches&) = delete;

  [[nodiscard]] bool Failed() const { return result_ != 0 && result_ != GLOB_NOMATCH; }
  [[nodiscard]] std::vector<std::string> Paths() const {
    return {found_.gl_pathv, found_.gl_pathv + found_.gl_pathc};
  }

 private:
  glob_t found_{};
  int result_;
};

}  // namespace

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

std::optional<std::vector<std::string>> PathsLike(const std::string& pattern) {
  const Matches matches(pattern);
  if (matches.Failed()) return std::nullopt;
  return matches.Paths();
}

}  // namespace frame
