// Names the place in the sources that a log line or an error speaks of: the file without its folder
// and extension ("net_set_ip") and the line. Both are known to the compiler; nothing is computed at
// run time.
#pragma once

#include <cstddef>

namespace frame {

struct SourceStem {
  char text[64] = {};

  template <std::size_t N>
  consteval explicit SourceStem(const char (&file)[N]) {
    static_assert(N <= sizeof text);
    for (std::size_t i = 0; i + 1 < N && file[i] != '.'; ++i)
      text[i] = file[i];
  }
};

template <SourceStem Stem>
inline constexpr const char* kSourceName = Stem.text;

}  // namespace frame

#define FRAME_SOURCE ::frame::kSourceName<::frame::SourceStem(__FILE_NAME__)>
