// SPDX-License-Identifier: Apache-2.0
// Changes that wait, are shown, planned and undone, as they are typed.
#include <gtest/gtest.h>
#include <regex>
#include <sstream>

#include "ctl.h"
#include "support/appliance.h"
#include "support/transcript.h"

using namespace test;

namespace {

void SetUpForExamples() {
  WriteIfcfg("eth0",
             "DEVICE=eth0\nONBOOT=yes\nBOOTPROTO=static\nIPADDR=192.168.50.10\n"
             "NETMASK=255.255.255.0\n");
  BringUp("eth0");
  Shell(
      "ip address add 192.168.50.10/24 dev eth0; ip -6 address add fd00::20/64 dev eth0 nodad;"
      "mkdir /run/dhcpd");
  WriteFile("/root/secret", "Hidden.1\n", 0600);
  WriteFile("/etc/dhcpd/dhcpd.info", "enable=\"yes\"\n");
}

std::string Fingerprint() {
  return Shell(
             "find /etc /root /tmp /var/lib /run/dhcpd -type f -exec sha256sum {} + | sort;"
             "ip -br link; ip -br address; ip route; ip -6 route; hostname") +
         std::to_string(Events().size());
}

}  // namespace

TEST(History, ChangesAreConfirmedShownAndUndone) {
  Mask("([0-9]{4}-[0-9]{2}-[0-9]{2}T[0-9:]{8}Z)", "THEN");
  // Who logged in at the machine on which the tests run.
  Mask("change [0-9]+ of (.+) .zarnnetctl", "WHO");
  Mask("THEN ([^ ]+) name", "WHO");
  Mask("who +([^ ]+) by", "WHO");
  Mask("took ([0-9]+) ms", "N");
  Mask("([0-9]+) s (are left|from now|unless)", "N");
  WriteFile("/root/wish", R"({"host":{"name":"nas"}})");
  TypeSession();
}

// Of every verb the first example of its help is planned; these look, end an earlier change, or are
// planned otherwise.
TEST(Plans, AreHadOfEveryVerbThatChanges) {
  const std::regex looks(
      "(.* )?(get|show|list|status|test)|dhcpd range "
      "check|conflict|diff|lookup|mac|monitor|ping|port|"
      "report|stat|tree|wait-online|wake|apply|confirm|edit|history|plan|recover");
  SetUpForExamples();
  const std::string before = Fingerprint();
  std::istringstream synopsis(Shell("zarnnetctl __synopsis"));
  int planned = 0;
  for (std::string line; std::getline(synopsis, line);) {
    const std::string verb = line.substr(line.find(' ') + 1);
    if (!line.starts_with(".Cm ") || std::regex_match(verb, looks)) continue;
    const std::string plan =
        Shell("eval \"$(zarnnetctl " + verb +
              " --help | sed -n '/^Examples:/{n;:a;/\\\\$/{N;ba};p}') --plan\" 2>&1");
    EXPECT_TRUE(plan.starts_with("Outcome: ")) << verb << ": " << plan;
    EXPECT_EQ(Fingerprint(), before) << verb;
    ++planned;
  }
  EXPECT_GT(planned, 40);
}

TEST(Plans, ShowWhatIsDoneAndAreDoneAsShown) {
  Mask("([0-9]+) s and what it takes", "N");
  BringUp("eth0");
  Shell("ip address add 192.168.50.10/24 dev eth0");
  TypeSession();
}
