// SPDX-License-Identifier: Apache-2.0
// The host name: kernel, files, logger and event, and what a failing step leaves.
#include <cerrno>
#include <sys/stat.h>
#include <unistd.h>

#include <zarnnetsdk/ipv4.h>

#include "support/transcript.h"

using namespace test;

namespace {

void SetKernelName(const std::string& name) {
  ASSERT_EQ(0, ::sethostname(name.data(), name.size()));
}

void Set(const std::string& name) {
  Tell("to " + name, [&] { return ZARNLnxSetHostname(name.c_str()); });
  char kernel[80] = "";
  ::gethostname(kernel, sizeof kernel);
  Say(kernel);
}

void Get() {
  char name[64] = "stale";
  TELL(ZARNLnxGetHostname(name));
  Say(name);
}

struct Hostname : testing::Test {
  Hostname() {
    WriteFile("/etc/hostname", "a-rather-long-old-name\n");
    WriteFile("/etc/hosts", "old hosts\n", 0600);
    RecordTool("/sbin/initctl");
    SetKernelName("old");
  }
};

}  // namespace

TEST_F(Hostname, IsSetEverywhere) {
  Set("nas");
  RemoveFile("/etc/hostname");
  RecordTool("/sbin/initctl", 1);
  Say("a logger that refuses is no failure");
  Set(std::string(63, 'n'));
}

TEST_F(Hostname, BadNamesAndTheContainerEditionChangeNothing) {
  for (const std::string& name : {std::string(), std::string(64, 'n'),
                                  std::string("nas\n10.0.0.1\tbank"), std::string("nas bank")})
    Set(name);
  WriteFile("/etc/zarnplv.conf", "docker=\"yes\"\n");
  Set("nas");
}

TEST_F(Hostname, AFailedStepStopsThereAndLeavesTheRest) {
  RemoveFile("/etc/hostname");
  WriteFile("/etc/hostname/file", "");
  Set("one");
  RemoveFile("/etc/hostname");
  ASSERT_EQ(0, ::symlink("/dev/full", "/etc/hostname"));
  Set("two");
  RemoveFile("/etc/hostname");
  RemoveFile("/etc/hosts");
  WriteFile("/etc/hosts/file", "");
  Set("three");
  RemoveFile("/etc/hosts");
  RemoveFile("/sbin/initctl");
  Set("four");
  RecordTool("/sbin/initctl");
  WriteFile("/usr/zarn/plugins/net/hostname_change/99-broken", "#!/bin/sh\nexit 1\n", 0755);
  Set("five");
}

TEST_F(Hostname, ALinkStaysAndItsFileIsReplaced) {
  RemoveFile("/etc/hostname");
  WriteFile("/etc/names/mine", "a-rather-long-old-name\n", 0600);
  ASSERT_EQ(0, ::symlink("names/mine", "/etc/hostname"));
  TellRewrites();
  ::umask(077);
  Set("nas");
  Say(ReadFile("/etc/hostname"));
  MountEmpty("/etc");
  Shell("mount -o remount,ro /etc");
  Set("bank");
}

TEST_F(Hostname, IsReadWithoutItsDomain) {
  for (const std::string& name : {std::string("nas.example.org"), std::string(".example.org"),
                                  std::string(63, 'n'), std::string(64, 'm'), std::string("nas")}) {
    SetKernelName(name);
    errno = ENAMETOOLONG;  // what an earlier call left is not about this name
    Get();
  }
}
