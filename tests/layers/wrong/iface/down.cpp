// SPDX-License-Identifier: Apache-2.0
// An exported function outside the boundary.
#include "iface/down.h"

extern "C" int Exported(int number) {
  if (number > 0) return 1;
  return 0;
}
