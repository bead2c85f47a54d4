// SPDX-License-Identifier: Apache-2.0
// The arguments of the event that interfaces take other interfaces' places.
#pragma once

#include <zarnsdk/zarnsdk.h>

namespace ipv4 {

// ORIGIN_IFNAME, IFNAME and RESULT, in this order. False when one is refused.
[[nodiscard]] bool SetRenameArguments(PKOPAPLUGIN event, const KOPACSZLIST* oldNames,
                                      const KOPACSZLIST* newNames, int result);

}  // namespace ipv4
