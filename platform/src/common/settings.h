// SPDX-License-Identifier: Apache-2.0
// Questions that a settings file answers with "yes".
#pragma once

#include <zarncore/zarncore.h>

namespace platform {

// An appliance without the file says no, and that is no failure.
inline bool IsYes(const char* path, const char* key) {
  return KOPACFileExist(path) == 1 && KOPACFileCheckKeyValue(path, key, "yes", 0) == 1;
}

}  // namespace platform
