// SPDX-License-Identifier: Apache-2.0
// The arguments of the event that interfaces take other interfaces' places.
#include <zarnnetsdk/ipv4.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/model/events.h"
#include "ipv4/rename_arguments.h"

using namespace frame;

bool ipv4::SetRenameArguments(PKOPAPLUGIN event, const KOPACSZLIST* oldNames,
                              const KOPACSZLIST* newNames, int result) {
  const bool set = KOPAPluginSetArgByArray(event, events::kOriginIfname, oldNames) >= 0 &&
                   KOPAPluginSetArgByArray(event, events::kIfname, newNames) >= 0 &&
                   KOPAPluginSetArgByInt(event, events::kResult, result) >= 0;
  if (!set) LOG_ERROR("%s:%d KOPAPluginSetArg failed, event = %s", events::kIfnameChange);
  return set;
}

int KOPANetIFChgPluginSetArgs(PKOPAPLUGIN pPlugin, const KOPACSZLIST* pOldNames,
                              const KOPACSZLIST* pNewNames, int result) {
  return Boundary(-1, [&]() -> int {
    if (pPlugin == nullptr || pOldNames == nullptr || pNewNames == nullptr) {
      return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    }
    return ipv4::SetRenameArguments(pPlugin, pOldNames, pNewNames, result) ? 0 : -1;
  });
}
