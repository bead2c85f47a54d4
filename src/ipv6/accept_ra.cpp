// SPDX-License-Identifier: Apache-2.0
// The kernel's switch for router advertisements, one an interface.
#include "ipv6/accept_ra.h"

#include <cstdio>

#include "frame/base/log.h"
#include "frame/model/paths.h"
#include "frame/os/file.h"

using namespace frame;

std::optional<int> ipv6::ReadAcceptRa(const std::string& ifname) {
  const File file = OpenFile(paths::AcceptRa(ifname), "r");
  int value = 0;
  if (!file || std::fscanf(file.get(), "%d", &value) != 1) return std::nullopt;
  return value;
}

bool ipv6::WriteAcceptRa(const std::string& ifname, int value) {
  const std::string path = paths::AcceptRa(ifname);
  const File file = OpenFile(path, "w");
  if (!file) {
    LOG_ERROR("%s:%d Failed to open file [%s]", path.c_str());
    return Fail(ZARNNETERR_OPEN, false);
  }
  const bool written = std::fprintf(file.get(), "%d", value) > 0 && std::fflush(file.get()) == 0;
  return written || Fail(ZARNNETERR_WRITE, false);
}
