// SPDX-License-Identifier: Apache-2.0
// The programs that copy and move files; model/paths.h names all others.
#pragma once

namespace frame::paths {

inline constexpr char kCp[] = "/bin/cp";
inline constexpr char kMv[] = "/bin/mv";

}  // namespace frame::paths
