// SPDX-License-Identifier: Apache-2.0
// What somebody else has laid into /tmp under a name of the appliance's.
#include "frame/os/shared_folder.h"

#include <zarnnetsdk/pppoe.h>

#include "support/appliance.h"

using namespace test;

namespace {

const char kName[] = "/tmp/zarnpppoe.intf";
const char kPrivate[] = "/etc/private";

// A link, a second name, a pipe and a user's own file.
const char* const kLaid[] = {"ln -s /etc/private $n",
                             "rm -f /tmp/private; echo ppp9 >/tmp/private; ln /tmp/private $n",
                             "mkfifo $n", "echo ppp9 >$n; chown 65534:65534 $n"};

}  // namespace

TEST(SharedFolder, WhatOthersLaidThereIsNeitherBelievedNorWaitedForNorFollowed) {
  WriteFile(kPrivate, "ppp9\n", 0600);
  ASSERT_EQ("", Shell("ip link add ppp0 type veth peer name other"));
  RecordTool("/usr/sbin/pppoe-status", 0, "ppp0 Link encap:Point-to-Point Protocol\n");
  for (const std::string laid : kLaid) {
    const std::string lay = "n=" + std::string(kName) + "; rm -rf $n; " + laid;
    ASSERT_EQ("", Shell(lay));
    EXPECT_FALSE(frame::IsTrustedFile(kName));
    char ifname[16] = "";
    EXPECT_EQ(0, ZARNPPPoeIntfGet(ifname, sizeof ifname)) << LogText();
    EXPECT_STREQ("ppp0", ifname);
    EXPECT_EQ("ppp0\n", ReadFile(kName)) << "the answer has taken its place";
    ASSERT_EQ("", Shell(lay));
    EXPECT_TRUE(frame::ClaimFile(kName));
    EXPECT_TRUE(frame::IsTrustedFile(kName));
    EXPECT_EQ("", ReadFile(kName));
    EXPECT_EQ("ppp9\n", ReadFile(kPrivate));
  }
  WriteFile(kName, "kept");
  EXPECT_TRUE(frame::ClaimFile(kName));
  EXPECT_EQ("kept", ReadFile(kName));
}
