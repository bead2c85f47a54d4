// SPDX-License-Identifier: Apache-2.0
// zarnnetctl report: one page for who is to help, to be handed on.
#include <functional>
#include <iostream>
#include <nlohmann/json.hpp>
#include <sys/utsname.h>
#include <thread>

#include "change_call.h"
#include "commands.h"
#include "new_file.h"
#include "report.h"
#include "wish.h"

namespace tool {
namespace {

struct Asked {
  std::string file;
  int seconds = 3;
};

// A machine in trouble is what a report is for: what cannot be read is told in its place, and the
// rest all the same.
void AddSection(const std::string& title, const std::function<void(Page*)>& tell, Page* page) {
  Page content;
  try {
    tell(&content);
  } catch (const Failure& failure) {
    content.Say(std::string(failure.what()) + ": " + failure.Reason(), Tone::kBad);
  } catch (const Json::exception& error) {
    content.Say(std::string("cannot be told: ") + error.what(), Tone::kBad);
  }
  page->Section(title, content);
}

Json StateOrNothing(Page* page) try {
  return ReadMachine({{"view", "both"}});
} catch (const Failure& failure) {
  page->Say(std::string(failure.what()) + ": " + failure.Reason(), Tone::kBad);
  return {{"configured", Json::object()}, {"live", Json::object()}};
}

std::string Summary() {
  utsname system{};
  ::uname(&system);
  return "Made at " + Now() + " by zarnnetctl " ZARNNETCTL_VERSION " on " + system.sysname + " " +
         system.release + " (" + system.machine +
         "). No passwords are in this page; addresses, host names, names of accounts and what was "
         "changed by whom are.";
}

// What fails here fails again in the section on traffic, which tells it.
Snapshot FirstLook() try { return Take(); } catch (const Failure&) {
  return {std::chrono::steady_clock::now(), {}};
}

std::string MadePage(int seconds) {
  const Snapshot before = FirstLook();
  Page page;
  const Json state = StateOrNothing(&page);
  using Teller = void (*)(const Json&, Page*);
  const auto add = [&](const char* title, Teller tell) {
    AddSection(
        title, [&](Page* content) { tell(state, content); }, &page);
  };
  add("At a glance", TellAtAGlance);
  AddSection("Topology", TellTopology, &page);
  add("Interfaces", TellInterfaces);
  add("Names and gateway", TellNames);
  add("DHCP server", TellDhcpServer);
  add("Services", TellServices);
  add("Where files and kernel disagree", TellDrift);
  AddSection("Changes", TellChanges, &page);
  std::this_thread::sleep_until(before.time + std::chrono::seconds(seconds));
  AddSection(
      "Traffic", [&](Page* content) { TellTraffic(before, Take(), content); }, &page);
  add("The whole state", TellDocument);
  const Json host = PartOf(state, "/live/host");
  return page.Whole("Network report" + (host.is_null() ? "" : ": " + TextIn(host, "name")),
                    Summary());
}

void MakeReport(const Context& context, const Asked& asked) {
  const bool isPrinted = asked.file == "-";
  if (isPrinted && context.json)
    throw WrongUsage("the page goes to standard output: --json needs a FILE");
  if (!isPrinted) RequirePlaceFor(asked.file);
  const std::string page = MadePage(asked.seconds);
  if (isPrinted) {
    std::cout << page;
    return;
  }
  WriteNewFile(asked.file, page);
  if (context.json)
    return PrintJson("report",
                     {{"file", asked.file}, {"bytes", page.size()}, {"seconds", asked.seconds}});
  std::cout << "written: " << asked.file << ", for its owner alone to read\n";
}

}  // namespace

void AddReportCommand(const Group& app, Context& context) {
  constexpr int kMost = 60;
  const Verb report =
      AddVerb(app, context, "report", "Writes a page about the machine, to be handed to who helps",
              "  zarnnetctl report nas.html\n  zarnnetctl report --seconds 60 - >nas.html");
  auto asked = std::make_shared<Asked>();
  report.AddOption("FILE", asked->file, "The page, HTML; - is standard output").Required().File();
  report
      .AddOption("--seconds", asked->seconds,
                 "How long traffic is measured (3); nothing recorded it before")
      .Within(1, kMost);
  report.Run([asked, &context] { MakeReport(context, *asked); });
}

}  // namespace tool
