// SPDX-License-Identifier: Apache-2.0
// What is different in a file, for a reader.
#pragma once

#include <optional>
#include <string>

#include "record/whole_file.h"

namespace change {

// The contents as a unified diff; a side that is none is /dev/null. Secrets are not shown; one that
// is another now is told of. Empty when nothing differs.
std::string ContentDiffOf(const std::string& path, const std::optional<WholeFile>& before,
                          const std::optional<WholeFile>& after);

// The same, with a line for a mode or an owner that is another.
std::string DiffOf(const std::string& path, const std::optional<WholeFile>& before,
                   const std::optional<WholeFile>& after);

}  // namespace change
