// SPDX-License-Identifier: Apache-2.0
// The event "net/ifname_change" around a change that gives interfaces the places of others: a bond
// those of its slaves, a VLAN its parent's, a port those of its old name.
#include <zarnnetsdk/net_int.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/model/events.h"
#include "frame/os/containers.h"
#include "frame/os/plugin_event.h"
#include "ipv4/rename_arguments.h"

using namespace frame;

namespace {

// The lines differ by what is renamed: whoever watches the log knows them so. The parenthesis too
// many is part of its message.
void LogNotBegun(ipv4::Renamed what, const Place& at) {
  const InnerError inner;
  switch (what) {
    case ipv4::Renamed::kVlan:
      LOG_ERROR_AT(at, "%s:%d Fail to init plugin) [0x%04X %s:%d]", inner.code, inner.file,
                   inner.line);
      break;
    case ipv4::Renamed::kBond:
      LOG_ERROR_AT(at, "%s:%d plugin sdk init failed");
      break;
    case ipv4::Renamed::kPort:
      LOG_ERROR_PLAIN("KOPAPluginSDKInit failed");
      break;
  }
}

void LogFailed(ipv4::Renamed what, int stage, const Place& at) {
  const InnerError inner;
  if (what == ipv4::Renamed::kPort) {
    LOG_ERROR_PLAIN("KOPAPluginAction failed");
  } else if (stage == ZARNNETSTAGE_BEFORE) {
    LOG_ERROR_AT(at, "%s:%d Fail to execute net plugin (PRE) [0x%04X %s:%d]", inner.code,
                 inner.file, inner.line);
  } else {
    LOG_ERROR_AT(at, "%s:%d Fail to execute net plugin (POST) [0x%04X %s:%d]", inner.code,
                 inner.file, inner.line);
  }
}

}  // namespace

int ipv4::WhileRenaming(Renamed what, const std::vector<std::string>& oldNames,
                        const std::vector<std::string>& newNames, const std::function<int()>& work,
                        const Place& at) {
  StringList origin(static_cast<int>(oldNames.size()));
  StringList names(static_cast<int>(newNames.size()));
  for (const std::string& name : oldNames)
    origin.Add(name.c_str());
  for (const std::string& name : newNames)
    names.Add(name.c_str());

  PluginEvent event;
  const bool begun = event.Init(events::kNet, events::kIfnameChange);
  if (!begun) {
    LogNotBegun(what, at);
    if (what != Renamed::kPort) return -1;
  }
  const auto tell = [&](int stage, int result) {
    if (!begun) return;
    const ErrorUnchanged ofWork;
    if (SetRenameArguments(event.Handle(), origin.Get(), names.Get(), result) && event.Fire(stage))
      return;
    LogFailed(what, stage, at);
  };
  tell(ZARNNETSTAGE_BEFORE, 0);
  // Who has been told of the beginning is told of the end, also where memory runs out between.
  const int result = NoThrow(-1, work, at);
  tell(ZARNNETSTAGE_AFTER, result);
  return result;
}
