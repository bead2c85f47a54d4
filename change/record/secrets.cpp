// SPDX-License-Identifier: Apache-2.0
// Where the secrets are: what the document's shape says, and the files that hold passwords.
#include "record/secrets.h"

#include <algorithm>
#include <regex>

#include "document/section.h"
#include "frame/model/paths.h"

namespace change {
namespace {

constexpr char kSecret[] = "(secret)";

// The third word of a line of accounts, and the values of keys that sound like a secret.
std::string LineWithoutSecrets(const std::string& path, const std::string& line) {
  static const std::regex third(R"(^(\s*\S+\s+\S+\s+).*$)");
  static const std::regex key(R"(^(\s*\w*(?:PASS|SECRET|PSK|passw|secret)\w*\s*=).+$)");
  const bool accounts = path.starts_with(frame::paths::kPapSecrets);
  return std::regex_replace(line, accounts ? third : key, std::string("$1") + kSecret);
}

}  // namespace

Json WishWithoutSecrets(Json wish) {
  const Shape shape = DocumentShape();
  const Json fields = wish.flatten();
  for (const auto& [pointer, value] : fields.items()) {
    const Path path(pointer);
    const Shape* const field = ShapeAt(shape, path);
    if (field != nullptr && field->secret && !value.is_null()) wish[path] = kSecret;
  }
  return wish;
}

std::string FileWithoutSecrets(const std::string& path, const std::string& text) {
  if (path == frame::paths::kTunnelPassword)
    return text.empty() ? text : std::string(kSecret) + "\n";
  std::string shown;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t end = std::min(text.find('\n', at), text.size());
    shown += LineWithoutSecrets(path, text.substr(at, end - at));
    if (end < text.size()) shown += '\n';
    at = end + 1;
  }
  return shown;
}

}  // namespace change
