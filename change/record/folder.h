// SPDX-License-Identifier: Apache-2.0
// The names in a folder, one after the other.
#pragma once

#include <filesystem>
#include <string>
#include <system_error>

namespace change {

// False when the folder is there and could not be read to its end: what is missing then need not be
// gone. A folder that another user may not read is none.
template <class Take>
bool EachNameIn(const std::string& folder, Take take) {
  std::error_code failed;
  std::filesystem::directory_iterator entry(folder, failed);
  if (failed == std::errc::no_such_file_or_directory || failed == std::errc::not_a_directory ||
      failed == std::errc::permission_denied)
    return true;
  for (; !failed && entry != std::filesystem::directory_iterator(); entry.increment(failed))
    take(entry->path().filename().string());
  return !failed;
}

}  // namespace change
