// SPDX-License-Identifier: Apache-2.0
// What is shown and kept of texts with secrets in them.
#pragma once

#include <string>

#include "json.h"

namespace change {

// The wish with "(secret)" in the place of each of its secrets.
Json WishWithoutSecrets(Json wish);

// The text of a file in the same way.
std::string FileWithoutSecrets(const std::string& path, const std::string& text);

}  // namespace change
