// SPDX-License-Identifier: Apache-2.0
#include "record/text_diff.h"

#include <array>
#include <cstdio>

#include "record/secrets.h"
#include "record/unified_diff.h"

namespace change {
namespace {

std::string OwnerOf(const WholeFile& file) {
  std::array<char, 64> text{};
  std::snprintf(text.data(), text.size(), "mode %04o, owner %u:%u", file.mode, file.owner,
                file.group);
  return text.data() + std::string(file.attributes.empty() ? "" : ", with attributes");
}

}  // namespace

std::string ContentDiffOf(const std::string& path, const std::optional<WholeFile>& before,
                          const std::optional<WholeFile>& after) {
  const std::string none;
  const std::string& old = before ? before->bytes : none;
  const std::string& fresh = after ? after->bytes : none;
  std::string diff = UnifiedDiff(before ? path : "/dev/null", FileWithoutSecrets(path, old),
                                 after ? path : "/dev/null", FileWithoutSecrets(path, fresh));
  if (diff.empty() && old != fresh) diff = "A secret in " + path + " differs\n";
  return diff;
}

std::string DiffOf(const std::string& path, const std::optional<WholeFile>& before,
                   const std::optional<WholeFile>& after) {
  std::string text = ContentDiffOf(path, before, after);
  if (!before || !after) return text;
  const bool owner = before->mode != after->mode || before->owner != after->owner ||
                     before->group != after->group || before->attributes != after->attributes;
  return owner ? text + OwnerOf(*before) + " became " + OwnerOf(*after) + "\n" : text;
}

}  // namespace change
