// SPDX-License-Identifier: Apache-2.0
// Whether the system runs as the container edition: docker=yes in the key file /etc/zarnplv.conf.
#include <zarncore/zarncore.h>
#include <zarnplvcore/zarnplvcore.h>

#include "common/settings.h"

int ZARNIsDockerPLV(void) {
  return platform::IsYes("/etc/zarnplv.conf", "docker") ? 1 : 0;
}
