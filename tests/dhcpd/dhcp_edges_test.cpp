// The edges of the DHCP server's files: what is refused so that the server takes the rest, what is
// kept, and which failures have a code.
#include <cstring>
#include <initializer_list>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <zarnnetsdk/dhcpd.h>

#include "frame/base/text.h"
#include "frame/os/containers.h"
#include "frame/os/file.h"
#include "support/appliance.h"

using namespace test;

namespace {

const std::string kConf = "/etc/dhcpd/dhcpd-eth0-subnet0.conf";
const char kInfo[] = "/etc/dhcpd/dhcpd-eth0.info";

// The last line that is written for the option; "refused" when none is.
std::string Written(int number, const char* name, const char* value,
                    std::initializer_list<const char*> values) {
  frame::StringList list(4);
  for (const char* const text : values)
    list.Add(text);
  DHCP_OPTION option{};
  option.number = number;
  std::strcpy(option.name, name);
  std::strcpy(option.value, value);
  option.values = *list.Out();
  DHCP_SUBNET_CONF conf{};
  conf.options = &option;
  if (DHCPTagConfSetConfig("eth0", 0, 0, &conf) != 0) return "refused";
  const std::string text = ReadFile(kConf);
  return text.substr(text.find("option:" + std::string(name)));
}

}  // namespace

TEST(DhcpEdges, OptionsAreWrittenAsTheServerTakesThem) {
  EXPECT_EQ("option:policy-filter,10.0.0.1,255.0.0.0\n",
            Written(21, "policy-filter", "", {"10.0.0.1", "255.0.0.0"}));
  EXPECT_EQ("refused", Written(21, "policy-filter", "", {"10.0.0.1", "255.255.255.0x0"}));
  EXPECT_EQ("refused", Written(42, "ntp-server", "", {"010.0.0.1"}));
  EXPECT_EQ("option:ntp-server,10.0.0.1\n", Written(42, "ntp-server", "unused", {"10.0.0.1"}));
  Log().clear();
  EXPECT_EQ("refused", Written(42, "ntp-server", "10.0.0.1", {}));
  EXPECT_EQ(1, LogCount(LOG_ERR, "dhcp_conf", "option list value is empty")) << LogText();
  WriteFile(kConf,
            "interface=eth0\ndhcp-range=set:eth00,10.0.0.1,10.0.0.2,255.0.0.0,60\n"
            "dhcp-option=tag:eth00,option:router,r\ndhcp-option=tag:eth00,option:dns-server,\n"
            "dhcp-option=tag:eth00,option: mtu ,1500\ndhcp-option=tag:eth00,option: ,1\n");
  DHCP_SUBNET_CONF read{};
  ASSERT_EQ(1, DHCPTagConfGet("eth0", 0, 0, &read)) << LogText();
  ASSERT_NE(nullptr, read.options) << LogText();
  EXPECT_STREQ("mtu", read.options->name);
  EXPECT_EQ(nullptr, read.options->next);
  DHCPOptionFree(read.options);
}

TEST(DhcpEdges, NamesThatAreNoInterfacesAreNotListedAndOptionsOfProgramsRefused) {
  for (const char* const name : {"eth1", "eth2-", "-eth0", "eth3.", "", "eth4-subnet0"})
    WriteFile(std::string("/etc/dhcpd/dhcpd-") + name + ".info", "enable=\"yes\"\n");
  frame::StringList list(4);
  EXPECT_EQ(1, DHCPInterfaceListGet(list.Out(), 0));
  EXPECT_EQ(Lines{"eth1"}, Items(list.Get()));
  ZARNNETIFADDR info{};
  std::strcpy(info.szName, "-r");
  EXPECT_EQ(-1, ZARNIGetDHCPTestNetInfo(&info));
  EXPECT_EQ(0x0D00, KOPACErrGet());
  KOPACErrSetEx(0, "", 0);
  EXPECT_EQ(-1, DHCPDConfChangeInterface("eth1", nullptr));
  EXPECT_EQ(0x0D00, KOPACErrGet());
}

TEST(DhcpEdges, ABondTakesNothingOverUnderANameThatIsNone) {
  WriteFile(kInfo, "enable=\"yes\"\n");
  frame::StringList ports(4);
  ports.Add("eth0");
  for (const char* const bond : {"", "a/b", "-b", static_cast<const char*>(nullptr)}) {
    KOPACErrSetEx(0, "", 0);
    EXPECT_EQ(-1, DHCPDLinkAggrSet(1, bond, *ports.Out()));
    EXPECT_EQ(0x0D00, KOPACErrGet());
  }
  EXPECT_EQ("enable=\"yes\"\n", ReadFile(kInfo));
  for (int join = 0; join < 2; ++join)
    EXPECT_EQ(0, DHCPDLinkAggrSet(1, "bond0", *ports.Out()));
  EXPECT_EQ("enable=\"no\"\nbonding_backup_enable=\"yes\"\n", ReadFile(kInfo)) << "joined twice";
}

TEST(DhcpEdges, ASwitchKeepsItsModeAndOwnerAndAFragmentIsForEverybody) {
  const std::string info = "/etc/dhcpd/dhcpd-eth0-subnet0.info";
  WriteFile(info, "enable=\"no\"\n", 0640);
  ASSERT_EQ(0, ::chown(info.c_str(), 12, 34));
  ::umask(077);
  DHCP_SUBNET_CONF conf{};
  conf.enable = 1;
  ASSERT_EQ(0, DHCPTagConfSet("eth0", 0, 0, &conf));
  struct stat found {};
  ASSERT_EQ(0, ::stat(info.c_str(), &found));
  EXPECT_EQ("640 12:34",
            frame::Format("%o %u:%u", found.st_mode & 07777U, found.st_uid, found.st_gid));
  EXPECT_EQ(0644, FileMode(kConf));
}

TEST(DhcpEdges, AFileThatCannotBeReadIsNotRepaired) {
  WriteIfcfg("eth0", "BOOTPROTO=dhcp\n");
  rlimit limit{};
  ASSERT_EQ(0, ::getrlimit(RLIMIT_NOFILE, &limit));
  {
    std::vector<frame::Descriptor> taken;
    const rlimit few{64, limit.rlim_max};
    ASSERT_EQ(0, ::setrlimit(RLIMIT_NOFILE, &few));
    // One is left: the lock has it.
    for (int fd = 0; (fd = ::dup(0)) >= 0;)
      taken.emplace_back(fd);
    taken.pop_back();
    EXPECT_EQ(0, BlZARNLnxIsDHCP("eth0"));
    ASSERT_EQ(0, ::setrlimit(RLIMIT_NOFILE, &limit));
  }
  EXPECT_EQ("BOOTPROTO=dhcp\n", ReadIfcfg("eth0"));
  EXPECT_EQ(1, LogCount(LOG_ERR, "BlZARNLnxIsDHCP", "Get BOOTPROTO failed.(900)")) << LogText();
}
