// SPDX-License-Identifier: Apache-2.0
// Every setting of the kernel's networking as a name and a value, so that a change is a value that
// is another.
#include <map>
#include <sys/socket.h>

#include "program/changes.h"

namespace rehearsal {
namespace {

using Settings = std::map<std::string, std::string>;

std::string AddressesOf(const change::KernelLink& link, int family) {
  std::string text;
  for (const change::KernelAddress& address : link.addresses) {
    if (address.family != family || address.IsAutomatic()) continue;
    text += (text.empty() ? "" : " ") + address.WithPrefix();
  }
  return text;
}

void AddLink(const change::KernelLink& link, Settings* settings) {
  const auto set = [&](const char* what, const std::string& value) {
    if (!value.empty()) (*settings)[link.name + " " + what] = value;
  };
  set("state", link.IsUp() ? "up" : "down");
  set("MTU", std::to_string(link.mtu));
  set("MAC", link.mac);
  set("kind", link.kind);
  set("master", link.master);
  set("parent", link.parent);
  set("VLAN", link.vlanId != 0 ? std::to_string(link.vlanId) : "");
  set("IPv4", AddressesOf(link, AF_INET));
  set("IPv6", AddressesOf(link, AF_INET6));
}

Settings SettingsOf(const change::Kernel& kernel) {
  Settings settings{{"host name", kernel.hostname}};
  for (const auto& [name, link] : kernel.links)
    AddLink(link, &settings);
  for (const change::KernelRoute& route : kernel.routes) {
    if (!route.IsAutomatic()) settings["route " + route.Words()] = "there";
  }
  for (const auto& [path, value] : kernel.ipv6Switch)
    settings[path] = value;
  return settings;
}

Json Value(const Settings& settings, const std::string& name) {
  const auto found = settings.find(name);
  return found != settings.end() ? Json(found->second) : Json();
}

}  // namespace

Json KernelChanges(const change::Kernel& before, const change::Kernel& after) {
  const Settings was = SettingsOf(before);
  const Settings is = SettingsOf(after);
  Settings all = was;
  all.insert(is.begin(), is.end());
  Json changes = Json::array();
  for (const auto& [name, value] : all) {
    const Json old = Value(was, name);
    const Json fresh = Value(is, name);
    if (old != fresh) changes.push_back({{"setting", name}, {"before", old}, {"after", fresh}});
  }
  return changes;
}

}  // namespace rehearsal
