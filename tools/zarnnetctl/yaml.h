// SPDX-License-Identifier: Apache-2.0
// The reading of YAML.
#pragma once

#include "document.h"

namespace tool {

std::optional<Document> ReadYaml(const std::string& text, Mistake* mistake);

}  // namespace tool
