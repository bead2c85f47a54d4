// SPDX-License-Identifier: Apache-2.0
// Reading one key of a settings file.
#include "frame/os/key_file.h"

#include <vector>

namespace frame {

KeyValue ReadKey(const std::string& path, const char* key, std::size_t size) {
  std::vector<char> buffer(size, '\0');
  const int length = KOPACFileGetKeyValue(path.c_str(), key, buffer.data(), size, 0);
  return {length, buffer.data()};
}

}  // namespace frame
