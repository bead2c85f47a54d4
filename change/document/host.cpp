// SPDX-License-Identifier: Apache-2.0
// The host's name.
#include <fstream>

#include <zarnnetsdk/ipv4.h>

#include "document/section.h"
#include "frame/model/paths.h"

namespace change {
namespace {

Shape ShapeOf() {
  return Object("The machine itself",
                {{"name", Text("Host name, its first label", Format::kHostname, 63).Both()}});
}

Json Configured(const View&) {
  std::string name;
  std::ifstream file(frame::paths::kHostname);
  std::getline(file, name);
  Json host = Json::object();
  Put(&host, "name", name);
  return host;
}

Json Live(const View& view, const Json&) {
  Json host = Json::object();
  Put(&host, "name", view.kernel.hostname.substr(0, view.kernel.hostname.find('.')));
  return host;
}

void Settle(Change* change, Findings* findings) {
  const Path path = "host" / std::string("name");
  if (change->wish.contains(path) && At(change->wish, path).is_null())
    findings->Add("host_name", path, Severity::kUsage, "a machine has a name: give another one");
}

void Plan(const Change& change, Steps* steps) {
  const Path path = "host" / std::string("name");
  if (!change.Concerns(path)) return;
  const std::string name = TextOf(At(change.wanted, path));
  steps->push_back({Phase::kNames,
                    path,
                    "name the machine " + name,
                    "ZARNLnxSetHostname",
                    {frame::paths::kHostname, frame::paths::kHosts, frame::paths::kInitctl},
                    [name] { return ZARNLnxSetHostname(name.c_str()) == 0; }});
}

}  // namespace

const Section kHost{"host", ShapeOf, Configured, Live, Settle, Plan, AwaitNothing, ReviveNothing};

}  // namespace change
