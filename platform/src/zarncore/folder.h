// SPDX-License-Identifier: Apache-2.0
// The names in a folder.
#pragma once

#include <cerrno>
#include <dirent.h>
#include <memory>
#include <string_view>

#include "common/error.h"

namespace zarncore {

// Shows every name to the visitor, "." and ".." too. What cannot be read to its end is a failure:
// names that are missing must not pass for ones that are not there.
template <class Visitor>
[[nodiscard]] platform::Code VisitFolder(const char* path, Visitor visit) {
  const std::unique_ptr<DIR, int (*)(DIR*)> folder(::opendir(path), ::closedir);
  if (!folder) return platform::CodeOf(platform::Code::kOpen);
  for (;;) {
    errno = 0;
    const dirent* const entry = ::readdir(folder.get());
    if (entry == nullptr)
      return errno == 0 ? platform::Code::kNone : platform::CodeOf(platform::Code::kRead);
    visit(std::string_view(entry->d_name));
  }
}

}  // namespace zarncore
