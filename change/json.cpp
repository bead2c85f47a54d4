// SPDX-License-Identifier: Apache-2.0
// The one place where the JSON library's value is made.
#include "json.h"

template class nlohmann::basic_json<>;
