// What the files of a VLAN and of its parent say while there is a VLAN and afterwards.
#include "virtual/vlan_files.h"

#include <algorithm>
#include <initializer_list>
#include <string_view>

#include "frame/base/error.h"
#include "frame/base/text.h"
#include "frame/model/ifcfg.h"
#include "frame/model/paths.h"
#include "frame/os/file.h"
#include "frame/os/key_file.h"

using namespace frame;

namespace {

using Prefixes = std::initializer_list<std::string_view>;

bool StartsWithAny(std::string_view line, const Prefixes& prefixes) {
  return std::any_of(prefixes.begin(), prefixes.end(),
                     [&](std::string_view prefix) { return line.starts_with(prefix); });
}

// The lines that begin (wanted) or do not begin with one of the prefixes, each with its newline.
std::optional<std::string> Lines(const std::string& path, const Prefixes& prefixes, bool wanted) {
  LineReader lines(path);
  if (!lines.IsOpen()) return Fail(ZARNNETERR_OPEN, std::nullopt);
  std::string text;
  while (const auto line = lines.Next()) {
    if (StartsWithAny(*line, prefixes) != wanted) continue;
    text.append(*line);
    if (!line->ends_with('\n')) text.push_back('\n');
  }
  if (lines.Failed()) return Fail(ZARNNETERR_OPEN, std::nullopt);
  return text;
}

std::string Line(const char* key, std::string_view value) {
  return std::string(key).append("=").append(value).append("\n");
}

}  // namespace

std::string vlan::FileOf(const KOPANETVLAN& vlan, const ZARNNETIFSETTINGS& settings) {
  constexpr std::size_t kValueSize = 1024;
  std::string text = Line(keys::kDevice, FieldText(vlan.szName)) +
                     Line("VLAN_ROW_DEVICE", FieldText(vlan.szRowDev)) +
                     Line("VLAN_ID", std::to_string(vlan.id)) + Line(keys::kOnBoot, "yes");
  if (settings.blStatic != 0) {
    text += Line(keys::kBootProto, "static") + Line(keys::kIpAddr, FieldText(settings.szIP)) +
            Line(keys::kNetmask, FieldText(settings.szMask));
  } else {
    text += Line(keys::kBootProto, "dhcp");
  }
  const std::string parent = paths::Ifcfg(FieldText(vlan.szRowDev));
  for (const char* key : {"IPV6INIT", "IPV6ADDR", "IPV6PREFIXLENG", "IPV6_DEFAULTGW", "IPV6DNS"}) {
    const KeyValue value = ReadKey(parent, key, kValueSize);
    if (value.Found()) text += Line(key, value.text);
  }
  return text;
}

// The static IPv6 address stays for the day the VLAN goes; IPV6INIT=off keeps it out of use.
std::optional<std::string> vlan::ParentFileUnder(const std::string& parent) {
  auto text = Lines(
      paths::Ifcfg(parent),
      {"BOOTPROTO=", "IPADDR=", "NETMASK=", "IPV6INIT=", "IPV6_DEFAULTGW=", "IPV6DNS="}, false);
  if (text) *text += Line(keys::kBootProto, "none") + Line("IPV6INIT", "off");
  return text;
}

std::optional<std::string> vlan::ParentFileWithout(const KOPANETVLAN& vlan) {
  auto text = Lines(paths::Ifcfg(FieldText(vlan.szRowDev)),
                    {"BOOTPROTO=", "IPV6INIT=", "IPV6ADDR=", "IPV6PREFIXLENG="}, false);
  if (!text) return std::nullopt;
  // Every key that begins with IPV6DNS goes along.
  const auto addresses = Lines(paths::Ifcfg(FieldText(vlan.szName)),
                               {"BOOTPROTO=", "IPADDR=", "NETMASK=", "IPV6INIT=", "IPV6ADDR=",
                                "IPV6PREFIXLENG=", "IPV6_DEFAULTGW=", "IPV6DNS"},
                               true);
  if (!addresses) return std::nullopt;
  return *text + *addresses;
}

bool vlan::Prepare(Rewrite* file, const std::string& text) {
  return (file->IsOpen() && file->Fill(text)) || Fail(ZARNNETERR_WRITE, false);
}
