// The host name: kernel, files, logger and event, and what a failing step leaves.
#include <cerrno>
#include <gtest/gtest.h>
#include <syslog.h>
#include <unistd.h>

#include <zarnnetsdk/ipv4.h>

#include "support/appliance.h"

using namespace test;

namespace {

std::string HostsOf(const std::string& name) {
  return "# Any manual change will be lost if the host name is changed or system upgrades.\n"
         "127.0.0.1\tlocalhost\n::1\t\tlocalhost\n127.0.0.1\t" +
         name + "\n::1\t\t" + name + "\n";
}

std::string KernelName() {
  char name[80] = "";
  ::gethostname(name, sizeof name);
  return name;
}

void SetKernelName(const std::string& name) {
  ASSERT_EQ(0, ::sethostname(name.data(), name.size()));
}

Lines HostFiles() {
  Lines found;
  for (const std::string& name : FolderEntries("/etc")) {
    if (name.starts_with("hostname") || name.starts_with("hosts")) found.push_back(name);
  }
  return found;
}

struct Hostname : testing::Test {
  Hostname() {
    WriteFile("/etc/hostname", "a-rather-long-old-name\n");
    WriteFile("/etc/hosts", "old hosts\n", 0600);
    RecordTool("/sbin/initctl");
    SetKernelName("old");
  }
  // Refused with this code, with nothing told to anybody and no lock kept.
  static void Fails(const char* name, int code) {
    KOPACErrSetEx(0, "", 0);
    EXPECT_EQ(-1, ZARNLnxSetHostname(name));
    EXPECT_EQ(code, KOPACErrGet());
    EXPECT_EQ(Lines{}, Events());
    const LockHolder free(0x106);
  }
};

}  // namespace

TEST_F(Hostname, IsSetEverywhere) {
  ASSERT_EQ(0, ZARNLnxSetHostname("nas")) << LogText();
  EXPECT_EQ("nas", KernelName());
  EXPECT_EQ("nas\n", ReadFile("/etc/hostname"));
  EXPECT_EQ(HostsOf("nas"), ReadFile("/etc/hosts"));
  EXPECT_EQ(0644, FileMode("/etc/hosts"));
  EXPECT_EQ((Lines{"hostname", "hosts"}), HostFiles());
  EXPECT_EQ((Lines{"/sbin/initctl reload syslog-ng"}), RecordedCalls());
  EXPECT_EQ((Lines{"net/hostname_change post HOSTNAME=nas"}), Events());
  const std::string longest(63, 'n');
  RemoveFile("/etc/hostname");
  RecordTool("/sbin/initctl", 1);
  EXPECT_EQ(0, ZARNLnxSetHostname(longest.c_str())) << "a logger that refuses is no failure";
  EXPECT_EQ(longest, KernelName());
  EXPECT_EQ(longest + "\n", ReadFile("/etc/hostname"));
}

TEST_F(Hostname, BadNamesAndTheContainerEditionChangeNothing) {
  Fails(nullptr, 0x0D00);
  Fails("", 0x0E00);
  Fails(std::string(64, 'n').c_str(), 0x0E00);
  Fails("nas\n10.0.0.1\tbank", 0x0D00);
  Fails("nas bank", 0x0D00);
  WriteFile("/etc/zarnplv.conf", "docker=\"yes\"\n");
  EXPECT_EQ(0, ZARNLnxSetHostname("nas"));
  EXPECT_EQ("old", KernelName());
  EXPECT_EQ("a-rather-long-old-name\n", ReadFile("/etc/hostname"));
  EXPECT_EQ("old hosts\n", ReadFile("/etc/hosts"));
  EXPECT_EQ(Lines{}, RecordedCalls());
  EXPECT_EQ(Lines{}, Events());
}

TEST_F(Hostname, AFailedStepStopsThereAndLeavesTheRest) {
  RemoveFile("/etc/hostname");
  WriteFile("/etc/hostname/file", "");
  Fails("one", 0x0900);
  EXPECT_EQ("one", KernelName()) << "not undone";
  EXPECT_NE(std::string::npos, LogText().find(" fopen failed: Is a directory")) << LogText();
  RemoveFile("/etc/hostname");
  ASSERT_EQ(0, ::symlink("/dev/full", "/etc/hostname"));
  Fails("two", 0x0B00);
  EXPECT_EQ("old hosts\n", ReadFile("/etc/hosts"));
  RemoveFile("/etc/hostname");
  RemoveFile("/etc/hosts");
  WriteFile("/etc/hosts/file", "");
  Fails("three", 0x2800);
  EXPECT_EQ("three\n", ReadFile("/etc/hostname"));
  EXPECT_EQ((Lines{"hostname", "hosts"}), HostFiles());
  EXPECT_EQ(Lines{}, RecordedCalls());
  RemoveFile("/etc/hosts");
  RemoveFile("/sbin/initctl");
  Fails("four", 0);
  EXPECT_EQ(HostsOf("four"), ReadFile("/etc/hosts"));
  RecordTool("/sbin/initctl");
  WriteFile("/usr/zarn/plugins/net/hostname_change/99-broken", "#!/bin/sh\nexit 1\n", 0755);
  EXPECT_EQ(-1, ZARNLnxSetHostname("five"));
  EXPECT_EQ(1U, Events().size());
}

TEST_F(Hostname, AFullDiskLeavesTheOldHosts) {
  MountEmpty("/etc", "16k");
  WriteFile("/etc/hostname", "a-rather-long-old-name\n");
  WriteFile("/etc/hosts", "old hosts\n");
  FillDisk("/etc");
  Fails("nas", 0x0B00);
  EXPECT_EQ("nas\n", ReadFile("/etc/hostname")) << "has its room already";
  EXPECT_EQ("old hosts\n", ReadFile("/etc/hosts"));
  EXPECT_EQ((Lines{"hostname", "hosts"}), HostFiles());
}

TEST_F(Hostname, IsReadWithoutItsDomain) {
  char name[64] = "stale";
  SetKernelName("nas.example.org");
  EXPECT_EQ(1, ZARNLnxGetHostname(name));
  EXPECT_STREQ("nas", name);
  SetKernelName(".example.org");
  EXPECT_EQ(0, ZARNLnxGetHostname(name));
  EXPECT_STREQ("", name);
  SetKernelName(std::string(63, 'n'));
  EXPECT_EQ(1, ZARNLnxGetHostname(name));
  EXPECT_EQ(std::string(63, 'n'), name);
  SetKernelName(std::string(64, 'm'));
  EXPECT_EQ(-1, ZARNLnxGetHostname(name));
  EXPECT_EQ(0x8100, KOPACErrGet());
  EXPECT_EQ(-1, ZARNLnxGetHostname(nullptr));
  EXPECT_EQ(0x0D00, KOPACErrGet());
  SetKernelName("nas");
  errno = ENAMETOOLONG;
  EXPECT_EQ(1, ZARNLnxGetHostname(name))
      << "what an earlier call left in errno is not about this name";
}

TEST_F(Hostname, WaitsForTheNetworkLock) {
  const LockHolder other(0x106);
  char name[64] = "stale";
  EXPECT_EQ(-1, ZARNLnxSetHostname("nas"));
  EXPECT_EQ(0x0400, KOPACErrGet());
  KOPACErrSetEx(0, "", 0);
  EXPECT_EQ(-1, ZARNLnxGetHostname(name));
  EXPECT_EQ(0x0400, KOPACErrGet());
  EXPECT_STREQ("stale", name);
  EXPECT_EQ("old", KernelName());
  EXPECT_EQ("a-rather-long-old-name\n", ReadFile("/etc/hostname"));
}
