// SPDX-License-Identifier: Apache-2.0
// Wishes and options of any text, judged on the machine: the answer is a report in words.
#include <nlohmann/json.hpp>
#include <zarnnetchange/change.h>

#include "frame/model/paths.h"
#include "fuzz.h"

namespace fuzz {
namespace {

using Json = nlohmann::json;

struct Report {
  char* text = nullptr;
  ~Report() { ZARNNetChangeFree(text); }
};

int ResultOf(const std::string& wish, const std::string& options) {
  Report report;
  const int result = ZARNNetChangeCheck(wish.c_str(), options.c_str(), &report.text);
  REQUIRE(report.text != nullptr);
  const Json json = Json::parse(report.text, nullptr, false);
  REQUIRE(json.is_object() && json.at("result") == result && json.at("reason") != "");
  return result;
}

// eth0 has an address, and bond0 two ports.
void FurnishMachine() {
  namespace paths = frame::paths;
  Put(paths::Ifcfg("eth0"), "BOOTPROTO=static\nIPADDR=192.168.50.10\nNETMASK=255.255.255.0\n");
  Put(paths::Ifcfg("bond0"), "BONDING_OPTS=\"mode=1 miimon=100\"\nBOOTPROTO=dhcp\n");
  for (const char* port : {"eth1", "eth2"})
    Put(paths::Ifcfg(port), "MASTER=bond0\nSLAVE=yes\n");
}

FUZZ(wishes) {
  FurnishMachine();
  const std::string wish = in.Text();
  const std::string options = in.Rest();
  // Nothing goes out to the network, and the machine can be read.
  REQUIRE(ResultOf(wish, R"({"probe":false})") != ZARNNETCHANGE_FAILED);
  // Options are read before a wish, which is none here.
  REQUIRE(ResultOf("[]", options) == ZARNNETCHANGE_USAGE);
}

}  // namespace
}  // namespace fuzz
