// SPDX-License-Identifier: Apache-2.0
#include "wish.h"

#include <zarnnetchange/change.h>

#include "support/transcript.h"

namespace test {
namespace {

using nlohmann::json;

struct Text {
  char* text = nullptr;
  ~Text() { ZARNNetChangeFree(text); }
};

std::string SideOf(const json& row, const char* name) {
  return row.contains(name) ? std::string(", ") + name + " " + row[name].dump() : "";
}

void SayRows(const json& report) {
  for (const json& row : report.value("findings", json::array())) {
    const std::string words =
        row["path"].get<std::string>() + ": " + row["sentence"].get<std::string>();
    // The sentence that decides is the reason already.
    Say(row["severity"].get<std::string>() + " by " + row["rule"].get<std::string>() +
        (words == report["reason"] ? "" : ": " + words));
  }
  for (const json& row : report.value("steps", json::array())) {
    Say(row["state"].get<std::string>() + ": " + row["what"].get<std::string>() + " (" +
        row["setter"].get<std::string>() + ")" +
        (row.contains("code") ? " " + row["code"].get<std::string>() : ""));
  }
  for (const json& row : report.value("differences", json::array())) {
    Say("otherwise: " + row["path"].get<std::string>() + ": wanted " + row["wanted"].dump() +
        SideOf(row, "files") + SideOf(row, "kernel"));
  }
  for (const json& row : report.value("awaited", json::array()))
    Say("awaited: " + row["sentence"].get<std::string>());
  for (const char* list : {"repaired", "lost", "problems"}) {
    for (const json& sentence : report.value(list, json::array()))
      Say(std::string(list) + ": " + sentence.get<std::string>());
  }
  if (report.contains("restored")) Say("restored: " + report["restored"].dump());
}

void SayReport(const Text& text) {
  const json report = json::parse(text.text != nullptr ? text.text : "{}");
  Say(report.value("reason", "no report"));
  SayRows(report);
}

}  // namespace

void Make(const std::string& wish, const std::string& options) {
  Text report;
  Tell("make " + wish + (options == "{}" ? "" : " with " + options), [&] {
    return ZARNNetChangeApply(wish.c_str(), options.c_str(), nullptr, nullptr, &report.text);
  });
  SayReport(report);
}

void Ask(const std::string& wish, const std::string& options) {
  Text report;
  Tell("ask " + wish + (options == "{}" ? "" : " with " + options),
       [&] { return ZARNNetChangeCheck(wish.c_str(), options.c_str(), &report.text); });
  SayReport(report);
}

// A port as an administrator has it: a second address, the default route, an address of IPv6.
void SetUpEth0() {
  Mask("^    [-+]([0-9]+)$", "PID");
  Mask(R"(^    [-+](.*\\x[0-9a-f][0-9a-f].*)$)", "CIPHER");
  MakeCipherKey();
  WriteIfcfg("eth0",
             "DEVICE=eth0\nONBOOT=yes\nBOOTPROTO=static\nIPADDR=192.168.50.10\n"
             "NETMASK=255.255.255.0\n");
  BringUp("eth0");
  Shell(
      "echo 0 >/proc/sys/net/ipv6/conf/eth0/dad_transmits;"
      "ip address add 192.168.50.10/24 dev eth0; ip address add 10.7.0.1/16 dev eth0;"
      "ip -6 address add 2001:db8::5/64 dev eth0 nodad;"
      "ip route add default via 192.168.50.1 dev eth0; ip route add 10.99.0.0/16 via 10.7.0.9");
}

void MakeAll(const std::vector<Wish>& wishes) {
  for (const Wish& wish : wishes) {
    if (wish.before != nullptr) Say(Shell(wish.before));
    Make(wish.wish, wish.options);
    if (wish.tellsNetwork) Say(Shell("ip -br address; ip route"));
  }
}

void MakeCipherKey() {
  char text[4] = "key";
  KOPACCryptBufCrypt(text, sizeof text, text, sizeof text);
}

}  // namespace test
