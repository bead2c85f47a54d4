// SPDX-License-Identifier: Apache-2.0
// zarnnetctl block: which parts of the appliance keep an interface for themselves.
#include "commands.h"
#include "query.h"
#include "wish.h"

namespace tool {
namespace {

// The flags stand in the file, which may wait for an interface that is not plugged in.
void RequireInterfaceOrFile(const std::string& what, const std::string& ifname) {
  if (!HasFile(ifname)) RequireInterface(what, ifname);
}

void PrintBlocks(const Context& context, const std::string& ifname) {
  const std::vector<std::string> blocks = ReadBlocks(ifname);
  if (context.json) return PrintJson("block", {{"name", ifname}, {"flags", blocks}});
  PrintTable({{{Join(blocks, " ")}}});
}

void Get(const Context& context, const std::string& ifname) {
  RequireInterfaceOrFile("cannot read the block flags of " + ifname, ifname);
  PrintBlocks(context, ifname);
}

void Set(Context& context, const std::string& ifname, const std::vector<std::string>& flags,
         bool clear) {
  std::vector<std::string> wanted = ReadBlocks(ifname);
  for (const std::string& flag : flags) {
    std::erase(wanted, flag);
    if (!clear) wanted.push_back(flag);
  }
  Json wish;
  wish["interfaces"][ifname]["block"] = wanted;
  MakeChange(context, wish);
}

void AddGet(const Group& group, Context& context) {
  const Verb verb = AddVerb(group, context, "get", "Shows the block flags that are set",
                            "  zarnnetctl block get eth0\n  zarnnetctl block get eth0 --json");
  const auto ifname = AddIfname(verb);
  verb.Run([&context, ifname] { Get(context, *ifname); });
}

void AddSet(const Group& group, Context& context) {
  const Verb verb =
      AddChange(group, context, "set", "Sets block flags, or clears them",
                "  zarnnetctl block set eth0 ha virtual\n  zarnnetctl block set eth0 ha --clear");
  const auto ifname = AddIfname(verb);
  auto flags = std::make_shared<std::vector<std::string>>();
  auto clear = std::make_shared<bool>(false);
  verb.AddOption("FLAG", *flags, "ha, aha, virtual or quendar").Required().OneOf(BlockNames());
  verb.AddFlag("--clear", *clear, "Clear the flags instead");
  verb.Run([&context, ifname, flags, clear] { Set(context, *ifname, *flags, *clear); });
}

}  // namespace

void AddBlockCommands(const Group& app, Context& context) {
  const Group group = AddGroup(app, "block", "Reads and changes who keeps an interface for itself");
  AddGet(group, context);
  AddSet(group, context);
}

}  // namespace tool
