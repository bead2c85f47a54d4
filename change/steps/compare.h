// SPDX-License-Identifier: Apache-2.0
// The fields that a wish names, compared with files and kernel.
#pragma once

#include <vector>

#include "document/shape.h"
#include "steps/change_state.h"

namespace change {

std::vector<Difference> DifferencesOf(const Json& wish, const Json& wanted, const Json& configured,
                                      const Json& live, const Shape& shape);

// As the report names them; secrets are not shown.
Json ToJson(const std::vector<Difference>& differences, const Shape& shape);

// The values that a step at the path sets, as they are wished: "\"start\": \"10.0.0.1\", ...".
std::string ValuesAt(const Path& path, const std::vector<Difference>& differences,
                     const Shape& shape);

}  // namespace change
