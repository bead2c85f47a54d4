// SPDX-License-Identifier: Apache-2.0
// What a report tells of the machine. It asks for no secret, so that none can be in it.
#pragma once

#include "output.h"
#include "page.h"
#include "traffic.h"

namespace tool {

// The state in both views, "configured" and "live".
void TellAtAGlance(const Json& state, Page* page);
void TellTopology(Page* page);
void TellInterfaces(const Json& state, Page* page);
void TellNames(const Json& state, Page* page);
void TellDhcpServer(const Json& state, Page* page);
void TellServices(const Json& state, Page* page);
void TellDrift(const Json& state, Page* page);
void TellChanges(Page* page);
void TellTraffic(const Snapshot& before, const Snapshot& now, Page* page);
void TellDocument(const Json& state, Page* page);

}  // namespace tool
