// SPDX-License-Identifier: Apache-2.0
// What is judged by its text alone, and the core library's files, lists, events and cipher.
#include <sys/stat.h>

#include <zarnnetsdk/zarnnetsdk.h>
#include <zarnsdk/zarnsdk.h>

#include "frame/base/address.h"
#include "frame/base/text.h"
#include "fuzz.h"

namespace fuzz {
namespace {

constexpr char kFile[] = "/etc/file";

FUZZ(addresses) {
  const std::string a = in.Text(), b = in.Text(), mask = in.Text();
  if (const auto ip = frame::ParseIpv4(a)) {
    REQUIRE(frame::DottedText(*ip) == a);
    ZARNNetGetAddrType(a.c_str());
    ZARNNetIsPrivateIP(a.c_str());
  }
  if (const auto ip = frame::ParseIpv6(a)) REQUIRE(frame::ParseIpv6(frame::Ipv6Text(*ip)) == ip);
  REQUIRE(BlKOPAIsv6IpAddrValid(a.c_str()) == 0 || a.find(':') != std::string::npos);
  REQUIRE(!frame::ParseIpv4(a) || frame::ParseAddress(a));
  BlKOPAIsIpAddr(a.c_str());
  for (const int family : {2, 10}) {
    REQUIRE(KOPAIsIpInRange(a.c_str(), a.c_str(), a.c_str(), family) != 0);
    KOPAIsIpInRange(a.c_str(), b.c_str(), mask.c_str(), family);
  }
  if (ZARNNetIsSameSubnet(a.c_str(), b.c_str(), mask.c_str()) == 1)
    REQUIRE(ZARNNetIsSameSubnet(b.c_str(), a.c_str(), mask.c_str()) == 1);
  ZARNNetIPv6IsSameSubnet(a.c_str(), b.c_str(), static_cast<unsigned>(in.Number()));
  if (frame::ParseAddress(a)) REQUIRE(!frame::IsUnfitAddress(a.c_str()));
  char ifname[8];
  ZARNNetIP2If(a.c_str(), ifname, sizeof ifname);
}

FUZZ(masks) {
  const std::string mask = in.Text();
  if (BlKOPAIsValidIpMask(mask.c_str()) == 1) {
    const int prefix = ZARNNetNetmaskToPrefix(mask.c_str());
    REQUIRE(prefix >= 1 && prefix <= 32);
    REQUIRE(frame::ParseMask(mask) == frame::MaskOf(static_cast<unsigned>(prefix)));
  }
  const auto subnet = frame::ParseSubnet(mask), masked = frame::ParseSubnetWithMask(mask);
  REQUIRE(!subnet || (subnet->prefix >= 1 && subnet->prefix <= 32));
  REQUIRE(!masked || masked->prefix <= 32);
  REQUIRE(!frame::IsIpv6WithPrefix(mask) || mask.find(':') != std::string::npos);
  frame::OneBitsOf(mask);
  unsigned parts[4];
  char text[64];
  std::string room = mask;
  room.resize(2048);
  cKOPAISepIP(mask.c_str(), parts);
  ErrKOPASubnetToIpMask(room.data(), text);
  ErrKOPAIpMaskToSubnet(room.data(), text);
  BlKOPAIsIpMask(room.data());
}

// Whatever a name is, it leads to no file but its own.
void ReadByName(const char* name) {
  char out[64];
  KOPANetIfInfo info{};
  ZARNNETIFADDR config{};
  ZARNLINKAGGROPT bond{};
  KOPANETVLAN vlan{};
  ZARNBRIDGEINFO bridge{};
  DHCP_SUBNET_CONF subnet{};
  PPPOE_RELAY_CONF relay{};
  int on = 0;
  ZARNNetIFGetInfo(name, &info);
  ZARNNetIFGetIPConfig(name, &config);
  ZARNNetLinkAggrGet(name, &bond);
  KOPANetVlanGet(name, &vlan);
  KOPANetVlanGetByRowDev(name, 20, &vlan);
  KOPANETGetBridgeInfo(name, &bridge);
  ZARNILnxGetIPFromCfg(name, out, sizeof out);
  ZARNConfGetMTUValue(name, out, sizeof out);
  KOPANetOVSGetOriginalIf(name, out, sizeof out);
  KOPANetGetMacAddrByInterface(name, out, sizeof out, 1);
  DHCPTagConfGetEnable(name, 0, 1, &on);
  ZARNNetGetDhcpServerConf("tag0", name, &subnet);
  ZARNNetGetPPPoERelayConfig(name, &relay);
}

FUZZ(names) {
  const std::string a = in.Text(), b = in.Text(), c = in.Text();
  using frame::NaturalLess;
  REQUIRE(!(NaturalLess(a, b) && NaturalLess(b, a)));
  REQUIRE(!(NaturalLess(a, b) && NaturalLess(b, c)) || NaturalLess(a, c));
  REQUIRE(BlKOPAIsHostname(a.c_str()) == 0 || !frame::IsUnfitName(a.c_str()));
  if (BlKOPAIsAtom(a.c_str()) == 1 && a.size() < 512) REQUIRE(BlKOPAIsDomain(a.c_str()) == 1);
  std::string joined;
  for (const std::string_view field : frame::SplitFields(a, b))
    joined.append(field).append("#");
  REQUIRE(joined.size() == a.size() + 1);
  for (const std::string_view word : frame::SplitWords(a, b.empty() ? " " : b))
    REQUIRE(!word.empty());
  if (const auto number = frame::ToNumber(a))
    REQUIRE(frame::ToNumber(std::to_string(*number)) == number);
  REQUIRE(frame::Trimmed(a).size() <= a.size());
  ZARNNetLinkAggrStringToMode(a.c_str());
  KOPANetEtherWake("lo", a.c_str());
  ReadByName(a.c_str());
}

// A key is set and removed, and no other line is touched.
FUZZ(key_file) {
  const std::string key = in.Text(), value = in.Text(), other = in.Text(), file = in.Rest();
  Put(kFile, file);
  const bool isOther = key != other && other.find('=') == std::string::npos;
  const std::string kept = Key(kFile, other.c_str());
  const auto set = [&] {
    return KOPACFileSetKeyValue(kFile, key.c_str(), value.c_str(), "%s=\"%s\"\n") == 0;
  };
  const bool done = set();
  const std::string written = Get(kFile);
  REQUIRE(done || written == file);
  if (!done) return;
  REQUIRE(Key(kFile, key.c_str()) == value.substr(0, 8191));
  REQUIRE(KOPACFileCheckKeyValue(kFile, key.c_str(), value.c_str(), 0) == 1);
  REQUIRE(!isOther || Key(kFile, other.c_str()) == kept);
  REQUIRE(Lines(written) <= Lines(file) + 2);
  REQUIRE(set() && Get(kFile) == written);
  REQUIRE(KOPACFileRemoveKey(kFile, key.c_str()) == 0);
  REQUIRE(("\n" + Get(kFile)).find("\n" + key + "=") == std::string::npos);
  REQUIRE(!isOther || Key(kFile, other.c_str()) == kept);
}

FUZZ(line_file) {
  const std::string after = in.Text(), line = in.Text(), old = in.Text(), other = in.Text();
  const std::string file = in.Rest();
  Put(kFile, file);
  List before, behind;
  REQUIRE(KOPACFileReadLines(kFile, before.Out()) == 0);
  if (KOPACFileAddLine(kFile, after.c_str(), line.c_str(), 0) == 0) {
    REQUIRE(KOPACFileReadLines(kFile, behind.Out()) == 0);
    auto lines = behind.Texts();
    const auto added = std::find(lines.begin(), lines.end(), line);
    REQUIRE(added != lines.end());
    lines.erase(added);
    REQUIRE(lines.size() == before.Texts().size());
    char found[8192];
    REQUIRE(KOPACFileGetLine(kFile, line.c_str(), found, sizeof found, 2) >= 0);
    REQUIRE(Field(found).starts_with(line.substr(0, 8191)));
  }
  const std::string text = Get(kFile);
  if (KOPACFileReplaceSubStr(kFile, old.c_str(), other.c_str()) == 0) {
    REQUIRE(text.find(old) == std::string::npos ? Get(kFile) == text
                                                : Get(kFile).find(other) != std::string::npos);
  }
  Put(kFile, file);
  KOPACFileRemoveKey(kFile, old.c_str());
  REQUIRE(Get(kFile).size() <= file.size());
}

// A plugin gets what was set, and nothing else that was not there.
FUZZ(plugin_environment) {
  constexpr char kPlugin[] = "/usr/zarn/plugins/net/fuzz/00";
  Put(kPlugin, "");
  ::chmod(kPlugin, 0755);
  PKOPAPLUGIN event = nullptr;
  REQUIRE(KOPAPluginSDKInit("net", "fuzz", &event) == 0);
  const std::string name = in.Text(), value = in.Text(), list = in.Text();
  List values(in.Words());
  const bool set = KOPAPluginSetArg(event, name.c_str(), value.c_str()) == 0;
  const bool listed = KOPAPluginSetArgByArray(event, list.c_str(), values.Get()) == 0;
  KOPAPluginAction(4, event);
  KOPAPluginExit(event);
  REQUIRE(!environment.empty());
  const auto has = [](const std::string& variable) {
    return std::find(environment.begin(), environment.end(), variable) != environment.end();
  };
  const bool covered = name.starts_with(list) || name == "PLUGIN_ARGS" || list == "PLUGIN";
  REQUIRE(!set || covered || has(name + "=" + value));
  REQUIRE(!listed || list == "PLUGIN" || has(list + "_1=" + values.Texts()[0]));
  for (const std::string& variable : environment) {
    REQUIRE(variable.find('=') != std::string::npos && variable.front() != '=');
    REQUIRE(!variable.starts_with("LD_PRELOAD="));
  }
}

}  // namespace
}  // namespace fuzz
