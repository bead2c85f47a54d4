// What somebody else has laid into /tmp under a name of the appliance's.
#include "frame/os/shared_folder.h"

#include <sys/stat.h>
#include <unistd.h>

#include <zarnnetsdk/pppoe.h>

#include "support/appliance.h"

using namespace test;

namespace {

const char kName[] = "/tmp/zarnpppoe.intf";
const char kPrivate[] = "/etc/private";

void Link() {
  EXPECT_EQ(0, ::symlink(kPrivate, kName));
}
void SecondName() {
  RemoveFile("/tmp/private");
  WriteFile("/tmp/private", "ppp9\n");
  EXPECT_EQ(0, ::link("/tmp/private", kName));
}
void Pipe() {
  EXPECT_EQ(0, ::mkfifo(kName, 0666));
}
void UsersFile() {
  WriteFile(kName, "ppp9\n");
  EXPECT_EQ(0, ::chown(kName, 65534, 65534));
}

}  // namespace

TEST(SharedFolder, WhatOthersLaidThereIsNeitherBelievedNorWaitedForNorFollowed) {
  WriteFile(kPrivate, "ppp9\n", 0600);
  ASSERT_EQ("", Shell("ip link add ppp0 type veth peer name other"));
  RecordTool("/usr/sbin/pppoe-status", 0, "ppp0 Link encap:Point-to-Point Protocol\n");
  for (const auto lay : {Link, SecondName, Pipe, UsersFile}) {
    RemoveFile(kName);
    lay();
    EXPECT_FALSE(frame::IsTrustedFile(kName));
    char ifname[16] = "";
    EXPECT_EQ(0, ZARNPPPoeIntfGet(ifname, sizeof ifname)) << LogText();
    EXPECT_STREQ("ppp0", ifname);
    EXPECT_EQ("ppp0\n", ReadFile(kName)) << "the answer has taken its place";
    RemoveFile(kName);
    lay();
    EXPECT_TRUE(frame::ClaimFile(kName));
    EXPECT_TRUE(frame::IsTrustedFile(kName));
    EXPECT_EQ("", ReadFile(kName));
    EXPECT_EQ("ppp9\n", ReadFile(kPrivate));
  }
  WriteFile(kName, "kept");
  EXPECT_TRUE(frame::ClaimFile(kName));
  EXPECT_EQ("kept", ReadFile(kName));
}
