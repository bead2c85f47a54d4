// Replacing a file as a whole: readers see the old content or the new, also after a power cut.
#pragma once

#include <string>
#include <string_view>
#include <sys/types.h>

namespace frame {

// Where a rewrite stopped; the caller has a code for each.
enum class RewriteStep { kDone, kOpen, kWrite, kRename };

// Writes the content to a temporary file beside the target, syncs it and renames it over the
// target. Unless it is done the target is as it was and the temporary file is gone. errno says why.
[[nodiscard]] RewriteStep RewriteFile(const std::string& path, std::string_view content,
                                      mode_t mode);

}  // namespace frame
