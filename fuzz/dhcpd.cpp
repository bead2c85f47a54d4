// The DHCP server's files: read as they are found, and written, read and compared.
#include <zarnnetsdk/zarnnetsdk.h>

#include "dhcpd/options.h"
#include "fuzz.h"

namespace fuzz {
namespace {

constexpr char kSubnet[] = "/etc/dhcpd/dhcpd-eth0-subnet0.conf";
constexpr char kVendors[] = "/etc/dhcpd/dhcpd-vendor.conf";

FUZZ(subnet_files) {
  const std::string text = in.Rest();
  for (const char* path : {kSubnet, "/etc/dhcpd/dhcpd6-eth0-subnet0.conf",
                           "/etc/dhcpd/dhcpd-eth0-office.conf", "/etc/dhcpd/dhcpd-eth0.info"}) {
    Put(path, text);
  }
  for (const int family : {0, 1}) {
    DHCP_SUBNET_CONF conf{};
    REQUIRE(DHCPTagConfGet("eth0", 0, family, &conf) != 0);
    for (const DHCP_OPTION* option = conf.options; option != nullptr; option = option->next)
      REQUIRE(dhcpd::IsAcceptable(*option));
    DHCPOptionFree(conf.options);
  }
  DHCP_SUBNET_CONF tagged{};
  if (ZARNNetGetDhcpServerConf("office", "eth0", &tagged) == 1)
    REQUIRE(Field(tagged.tag) == "office" && Field(tagged.domain).size() < 20);
  DHCP_RANGE* ranges = nullptr;
  const int count = DHCPGetInterfaceRanges("eth0", &ranges);
  REQUIRE((count == 1) == (ranges != nullptr));
  DHCPRangeFree(ranges);
  char other[16];
  DHCPIsRangeConflict("eth1", "10.0.0.1", "10.0.0.9", "255.0.0.0", other, sizeof other);
  List served;
  REQUIRE(DHCPInterfaceListGet(served.Out(), 0) == 1);
}

template <std::size_t N>
bool Same(const char (&a)[N], const char (&b)[N]) {
  return Field(a) == Field(b);
}

// What is plain comes back, and no text adds a line.
FUZZ(subnet_settings) {
  DHCP_SUBNET_CONF conf{}, read{};
  const int family = in.Number() & 1;
  conf.lease = in.Number();
  in.Text(conf.start);
  in.Text(conf.end);
  in.Text(conf.netmask);
  in.Text(conf.router);
  in.Text(conf.dns1);
  in.Text(conf.dns2);
  in.Text(conf.domain);
  in.Text(conf.v6mode);
  in.Text(conf.tag);
  std::strcpy(conf.interface, "eth0");
  if (ZARNNetSetDhcpServerConfigFiles(&conf, 1) == 1)
    REQUIRE(Lines(Get("/etc/dhcpd/dhcpd-eth0-" + Field(conf.tag) + ".conf")) <= 5);
  if (DHCPTagConfSet("eth0", 0, family, &conf) != 0) return;
  REQUIRE(Lines(Get(kSubnet)) <= 6 && Lines(Get("/etc/dhcpd/dhcpd6-eth0-subnet0.conf")) <= 4);
  const std::string all = Field(conf.start) + Field(conf.end) + Field(conf.netmask) +
                          Field(conf.router) + Field(conf.dns1) + Field(conf.domain);
  if (!IsPlain(all, ".") || family == 1 || Field(conf.dns1).empty()) return;
  REQUIRE(DHCPTagConfGet("eth0", 0, family, &read) == 1 && read.lease == conf.lease);
  const bool fits = Field(conf.start).size() < 20 && Field(conf.end).size() < 20 &&
                    Field(conf.netmask).size() < 20 && Field(conf.router).size() < 20;
  REQUIRE(!fits || (Same(read.start, conf.start) && Same(read.end, conf.end)));
  REQUIRE(!fits || (Same(read.netmask, conf.netmask) && Same(read.router, conf.router)));
  DHCPOptionFree(read.options);
}

// An option that is accepted comes back as it was set.
FUZZ(subnet_options) {
  DHCP_SUBNET_CONF conf{}, read{};
  DHCP_OPTION option{};
  option.number = in.Number();
  in.Text(option.name);
  List values(in.Words());
  in.Text(option.value);
  const bool list = DHCPOptionIsListValue(option.number) == 1;
  if (list) option.values = values.Get();
  conf.options = &option;
  for (char* text : {conf.start, conf.end, conf.netmask, conf.router, conf.dns1})
    std::strcpy(text, "10.0.0.1");
  if (DHCPTagConfSet("eth0", 0, 0, &conf) != 0) return;
  REQUIRE(dhcpd::IsAcceptable(option));
  const std::string text = dhcpd::ValueText(option);
  REQUIRE(DHCPTagConfGet("eth0", 0, 0, &read) == 1);
  // A value that looks like another of the subnet's options is cut at its comma.
  const bool plain = list ? text.size() < 900 : IsPlain(text, " .:_-/");
  REQUIRE(!plain || read.options != nullptr);
  REQUIRE(!plain || dhcpd::ValueText(*read.options) == text);
  DHCPOptionFree(read.options);
}

FUZZ(vendor_file) {
  const std::string vendor = in.Text();
  const int number = in.Number();
  Put(kVendors, in.Rest());
  List vendors;
  DHCPVendorEnum(vendors.Out());
  for (const std::string& name : vendors.Texts())
    REQUIRE(!name.empty() && name.find(',') == std::string::npos);
  PKOPACSZHASH options = KOPACSzHashAlloc(8);
  List numbers;
  DHCPVendorGetVendor(vendor.c_str(), &options);
  KOPACSzHashEnumKey(options, numbers.Out());
  for (const std::string& text : numbers.Texts())
    REQUIRE(DHCPVendorCheckOptNum(text.c_str()) == 1);
  KOPACSzHashFree(options);
  char value[64];
  if (DHCPVendorGetVendorOpt(vendor.c_str(), number, value, sizeof value) == 1)
    REQUIRE(Get(kVendors).find(Field(value)) != std::string::npos);
}

FUZZ(vendor_settings) {
  const std::string vendor = in.Text(), value = in.Text(), other = in.Text();
  const int number = in.Number();
  if (vendor.empty() || value.empty() || number < 1 || number > 254) return;
  if (DHCPVendorSetVendorOpt(vendor.c_str(), number, other.c_str()) != 0) return;
  if (DHCPVendorSetVendorOpt(vendor.c_str(), number, value.c_str()) != 0) return;
  REQUIRE(Lines(Get(kVendors)) == 1);
  if (vendor.find(',') != std::string::npos || vendor.size() + value.size() > 900) return;
  char read[1024];
  REQUIRE(DHCPVendorGetVendorOpt(vendor.c_str(), number, read, sizeof read) == 1);
  REQUIRE(Field(read) == value);
}

FUZZ(network_boot) {
  DHCP_PXE_CONF conf{}, read{};
  conf.enable = 1;
  conf.is_remote_tftp = in.Number() & 1;
  in.Text(conf.local_bootloader);
  in.Text(conf.remote_bootloader);
  in.Text(conf.remote_tftp_server_ip);
  Put("/etc/dhcpd/dhcpd-pxe-setting", in.Rest());
  DHCPPXEConfGet(&read);
  if (DHCPPXEConfSet(&conf) != 0) return;
  REQUIRE(DHCPPXEConfGet(&read) == 0 && read.is_remote_tftp == conf.is_remote_tftp);
  REQUIRE(Lines(Get("/etc/dhcpd/dhcpd-pxe.conf")) == 2);
  const bool remote = conf.is_remote_tftp != 0;
  REQUIRE(std::strncmp(remote ? read.remote_bootloader : read.local_bootloader,
                       remote ? conf.remote_bootloader : conf.local_bootloader, 4095) == 0);
}

}  // namespace
}  // namespace fuzz
