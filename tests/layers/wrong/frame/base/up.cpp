// SPDX-License-Identifier: Apache-2.0
// What the check has to see: the base calls a change above it.
#include "iface/down.h"

int Base(int number);

int Base(int number) {
  return Exported(number);
}
