// SPDX-License-Identifier: Apache-2.0
// zarnnetctl monitor and wait-online: what changes on the machine as it happens, and the moment
// when it can be reached.
#include <algorithm>
#include <array>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <map>
#include <poll.h>
#include <sys/inotify.h>
#include <unistd.h>

#include "commands.h"
#include "kernel_events.h"
#include "query.h"

namespace tool {
namespace {

using Clock = std::chrono::steady_clock;

// ---- plugin events

// A plugin event opens the folder of its plugins, which is all that can be seen of it from outside.
class PluginEvents {
 public:
  PluginEvents() : descriptor_(::inotify_init1(IN_CLOEXEC | IN_NONBLOCK)) {
    std::error_code none;
    for (const auto& category : std::filesystem::directory_iterator(kFolder, none)) {
      for (const auto& event : std::filesystem::directory_iterator(category.path(), none)) {
        const int watch =
            ::inotify_add_watch(descriptor_, event.path().c_str(), IN_OPEN | IN_ONLYDIR);
        if (watch >= 0) names_[watch] = {category.path().filename(), event.path().filename()};
      }
    }
  }
  ~PluginEvents() {
    if (descriptor_ >= 0) ::close(descriptor_);
  }
  PluginEvents(const PluginEvents&) = delete;
  PluginEvents& operator=(const PluginEvents&) = delete;

  [[nodiscard]] int Descriptor() const { return descriptor_; }

  std::vector<Json> Take() {
    std::vector<Json> events;
    alignas(inotify_event) std::array<char, 4096> buffer;
    ssize_t size = 0;
    while ((size = ::read(descriptor_, buffer.data(), buffer.size())) > 0) {
      for (const char* at = buffer.data(); at < buffer.data() + size;) {
        const void* const place = at;  // the kernel aligns what follows a name
        const auto& event = *static_cast<const inotify_event*>(place);
        // The folder itself, and none of its plugins.
        if ((event.mask & IN_ISDIR) != 0 && event.len == 0) AddEvent(event.wd, &events);
        at += sizeof event + event.len;
      }
    }
    return events;
  }

 private:
  struct Name {
    std::string category;
    std::string event;
  };

  void AddEvent(int watch, std::vector<Json>* events) const {
    const auto name = names_.find(watch);
    if (name == names_.end()) return;
    events->push_back({{"kind", "plugin"},
                       {"action", "fired"},
                       {"interface", ""},
                       {"category", name->second.category},
                       {"event", name->second.event}});
  }

  static constexpr char kFolder[] = "/usr/zarn/plugins";
  int descriptor_;
  std::map<int, Name> names_;
};

// ---- monitor

std::string ValueText(const Json& value) {
  if (value.is_string()) return value.get<std::string>();
  return value.is_null() ? "none" : WrittenOut(value);
}

void PrintEvent(const Context& context, Json event) {
  const std::string now = Now();
  if (context.json) {
    event["time"] = now;
    return PrintJsonLine("event", event);
  }
  const auto word = [&event](const char* field) { return event[field].get<std::string>(); };
  std::string rest;
  for (const auto& [field, value] : event.items()) {
    if (field == "kind" || field == "action" || field == "interface") continue;
    rest += "  " + field + " " + ValueText(value);
  }
  PrintLine({{now + "  "},
             {word("kind"), Tone::kHeading},
             {" " + word("action") + "  " + (word("interface").empty() ? "-" : word("interface"))},
             {rest}});
}

// Ends with the count, with the output that nobody reads any more, or with a signal.
void Monitor(const Context& context, int count) {
  KernelEvents kernel;
  PluginEvents plugins;
  std::array<pollfd, 3> awaited{
      {{kernel.Descriptor(), POLLIN, 0}, {plugins.Descriptor(), POLLIN, 0}, {STDOUT_FILENO, 0, 0}}};
  for (int shown = 0; count == 0 || shown < count;) {
    if (::poll(awaited.data(), awaited.size(), -1) < 0) continue;
    if ((awaited[2].revents & (POLLERR | POLLHUP)) != 0) return;
    std::vector<Json> events = kernel.Take();
    for (Json& event : plugins.Take())
      events.push_back(std::move(event));
    for (Json& event : events) {
      if (count != 0 && shown == count) break;
      PrintEvent(context, std::move(event));
      ++shown;
    }
    if (!std::cout.flush()) return;
  }
}

void AddMonitor(const Group& app, Context& context) {
  const Verb verb = AddVerb(app, context, "monitor",
                            "Shows links, addresses, routes and plugin events as they change",
                            "  zarnnetctl monitor\n  zarnnetctl monitor --json --count 10");
  auto count = std::make_shared<int>(0);
  verb.AddOption("--count", *count, "End after so many events (default: without end)")
      .Within(1, 1000000);
  verb.Run([&context, count] { Monitor(context, *count); });
}

// ---- wait-online

struct Wish {
  std::vector<std::string> ifnames;
  double timeout = 120;
  bool ipv4 = false;
  bool ipv6 = false;
  bool gateway = false;
};

// An address that others can reach, and that the kernel is done with checking.
bool HasIpv6(const std::string& ifname) {
  constexpr std::uint32_t kLinkLocal = 0x20;
  constexpr std::uint32_t kHost = 0x10;
  constexpr std::uint32_t kUnready = 0x40 | 0x08;  // tentative, or taken by another host
  const auto addresses = ReadIpv6(ifname);
  return std::any_of(addresses.begin(), addresses.end(), [](const ZARNNETV6ADDR& address) {
    return address.scope != kLinkLocal && address.scope != kHost && (address.flags & kUnready) == 0;
  });
}

// What an interface still lacks; empty when it lacks nothing.
std::string LackOf(const std::string& ifname, const Wish& wish) {
  if (!KernelHas(ifname)) return ifname + " is not there";
  if (ZARNNetIsIFUp(ifname.c_str()) != 1) return ifname + " is down";
  if (ZARNNetIfIsLink(ifname.c_str()) != 1) return ifname + " has no carrier";
  const bool ipv4 = !LiveAddress(ifname).ip.empty();
  if (wish.ipv4 && !ipv4) return ifname + " has no IPv4 address";
  if (wish.ipv6 && !HasIpv6(ifname)) return ifname + " has no IPv6 address";
  if (!wish.ipv4 && !wish.ipv6 && !ipv4 && !HasIpv6(ifname)) return ifname + " has no address";
  return {};
}

bool HasGateway() {
  std::array<char, 64> gateway{};
  std::array<char, 16> ifname{};
  return DefaultGatewayGet(gateway.data(), int{gateway.size()}, ifname.data(),
                           int{ifname.size()}) >= 0 &&
         gateway.front() != '\0';
}

// All that are named, or any one where none is.
std::string LackOfAll(const Wish& wish) {
  if (wish.gateway && !HasGateway()) return "there is no default gateway";
  for (const std::string& ifname : wish.ifnames) {
    std::string lack = LackOf(ifname, wish);
    if (!lack.empty()) return lack;
  }
  if (!wish.ifnames.empty()) return {};
  const auto all = KernelInterfaces();
  const bool one = std::any_of(all.begin(), all.end(), [&](const std::string& ifname) {
    return LackOf(ifname, wish).empty();
  });
  return one ? "" : "no interface is up with an address";
}

void WaitOnline(const Context& context, const Wish& wish) {
  KernelEvents kernel;  // before the first look, so that nothing is missed between two
  const auto end = Clock::now() + std::chrono::duration<double>(wish.timeout);
  std::string lack;
  while (!(lack = LackOfAll(wish)).empty()) {
    // Some of what is looked at is not told by the kernel: it is looked at every second, too.
    constexpr double kLook = 1;
    const double left = std::chrono::duration<double>(end - Clock::now()).count();
    if (left <= 0) throw Failure("not online", std::nullopt, lack);
    pollfd awaited{kernel.Descriptor(), POLLIN, 0};
    ::poll(&awaited, 1, static_cast<int>(std::min(left, kLook) * 1000) + 1);
    kernel.Take();
  }
  if (context.json) PrintJson("online", {{"interfaces", wish.ifnames}, {"online", true}});
}

void AddWaitOnline(const Group& app, Context& context) {
  const Verb verb = AddVerb(
      app, context, "wait-online", "Waits until interfaces are up with an address",
      "  zarnnetctl wait-online\n  zarnnetctl wait-online eth0 --ipv4 --gateway --timeout 30");
  auto wish = std::make_shared<Wish>();
  verb.AddOption("IFNAME", wish->ifnames, "All of these (default: any one but loopback)")
      .Interface();
  verb.AddOption("--timeout", wish->timeout, "Seconds to wait at most (default: 120)")
      .Within(0.0, 86400.0);
  verb.AddFlag("--ipv4", wish->ipv4, "With an IPv4 address (default: of either family)");
  verb.AddFlag("--ipv6", wish->ipv6, "With an IPv6 address that others can reach");
  verb.AddFlag("--gateway", wish->gateway, "And with a default gateway");
  verb.Run([&context, wish] { WaitOnline(context, *wish); });
}

}  // namespace

void AddMonitorCommands(const Group& app, Context& context) {
  AddMonitor(app, context);
  AddWaitOnline(app, context);
}

}  // namespace tool
