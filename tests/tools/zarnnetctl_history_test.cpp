// SPDX-License-Identifier: Apache-2.0
// Changes that wait, are shown, planned and undone, as they are typed.
#include "ctl.h"
#include "support/transcript.h"

using namespace test;

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

TEST(Plans, ShowWhatIsDoneAndAreDoneAsShown) {
  Mask("([0-9]+) s and what it takes", "N");
  BringUp("eth0");
  Shell("ip address add 192.168.50.10/24 dev eth0");
  TypeSession();
}
