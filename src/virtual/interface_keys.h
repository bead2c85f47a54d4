// Keys of interface files that make an interface a bond, a slave of one, or one of its own.
#pragma once

#include <string>

#include "frame/model/ifcfg_keys.h"

namespace virtual_if {

using frame::keys::kBootProto;
using frame::keys::kDevice;
using frame::keys::kOnBoot;
inline constexpr char kUserCtl[] = "USERCTL";
inline constexpr char kMaster[] = "MASTER";
inline constexpr char kSlave[] = "SLAVE";
inline constexpr char kBondingOpts[] = "BONDING_OPTS";

// A slave's file as it was before the change that is going on.
inline constexpr char kBackupSuffix[] = ".saved";
inline std::string BackupOf(const std::string& path) {
  return path + kBackupSuffix;
}

}  // namespace virtual_if
