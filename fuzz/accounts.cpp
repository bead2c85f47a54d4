// Accounts and their passwords: PPPoE, its relay, the tunnel.
#include <zarnnetsdk/zarnnetsdk.h>

#include "frame/model/paths.h"
#include "fuzz.h"
#include "pppoe/shell_quote.h"

namespace fuzz {
namespace {

namespace paths = frame::paths;

// No log line has the password; a short one stands in any text.
bool IsLogged(const std::string& password) {
  return password.size() > 5 && logged.find(password) != std::string::npos;
}

FUZZ(pppoe_files) {
  Put(paths::kPppoeConf, in.Text());
  Put(paths::kPapSecrets, in.Rest());
  PPPOE_CONF conf{};
  if (PPPoEConfigGet(&conf) != 0) return;
  REQUIRE(Field(conf.eth) == Key(paths::kPppoeConf, "ETH").substr(0, sizeof conf.eth - 1));
  REQUIRE(Field(conf.user).size() < sizeof conf.user);
  REQUIRE(Field(conf.password).size() < sizeof conf.password && !IsLogged(Field(conf.password)));
}

FUZZ(pppoe_settings) {
  PPPOE_CONF conf{}, read{};
  in.Text(conf.eth);
  in.Text(conf.user);
  in.Text(conf.password);
  in.Text(conf.mtu);
  conf.defaultroute = in.Number() & 1;
  Put(paths::kPppoeConf, in.Rest());
  if (PPPoEConfigSet(&conf) != 0 || Field(conf.eth).empty()) return;
  REQUIRE(!IsLogged(Field(conf.password)));
  REQUIRE(Lines(Get(paths::kPapSecrets)) == 1 && PPPoEConfigGet(&read) == 0);
  // "#" may have been guarded, and a long name with quotes in it is cut.
  const std::string user = Field(conf.user);
  if (user.find("\\#") != std::string::npos || pppoe::Quoted(user).size() > 250) return;
  REQUIRE(Field(read.user) == user && Field(read.password) == Field(conf.password));
  REQUIRE(Field(read.eth) == Field(conf.eth) && Field(read.mtu) == Field(conf.mtu));
  REQUIRE(read.defaultroute == conf.defaultroute);
}

FUZZ(shell_words) {
  const std::string text = in.Text();
  if (pppoe::Quoted(text).size() < 500) REQUIRE(pppoe::Unquoted(pppoe::Quoted(text)) == text);
  REQUIRE(pppoe::Unquoted(text).size() <= text.size());
  const auto columns = pppoe::SplitColumns(text);
  REQUIRE(!columns || columns->account.size() + columns->secret.size() < text.size());
}

FUZZ(relay_settings) {
  PPPOE_RELAY_CONF conf{}, read{};
  conf.enable = in.Number() & 1;
  in.Text(conf.server);
  const std::string path = std::string(paths::kPppoeRelayFolder) + "eth0";
  Put(path, in.Rest());
  ZARNNetGetPPPoERelayConfig("eth0", &read);
  REQUIRE(Field(read.server).size() < sizeof read.server);
  if (ZARNNetSetPPPoERelayConfig("eth0", &conf) != 0) return;
  REQUIRE(ZARNNetGetPPPoERelayConfig("eth0", &read) == 0);
  if (IsPlain(conf.server)) REQUIRE(ZARNNetIsSamePPPoERelayConfig(&conf, &read) == 1);
}

FUZZ(tunnel_files) {
  Put(paths::Ifcfg("tun"), in.Text());
  Put("/etc/zarnservice/zarntunnel.conf", in.Text());
  Put(paths::kTunnelPassword, in.Rest());
  ZARNTUNNELCONF conf{};
  if (ZARNTunnelConfigGet(&conf) < 0) return;
  REQUIRE(Field(conf.szServer).size() < sizeof conf.szServer);
  REQUIRE(Field(conf.szPassword).size() < sizeof conf.szPassword);
  REQUIRE(!IsLogged(Field(conf.szPassword)));
}

FUZZ(tunnel_settings) {
  ZARNTUNNELCONF conf{}, read{};
  in.Text(conf.szServer);
  in.Text(conf.szUserId);
  in.Text(conf.szPassword);
  Put("/etc/zarnservice/zarntunnel.conf", "run=yes\n");
  Put(paths::Ifcfg("tun"), in.Rest());
  if (ZARNTunnelConfigSet(&conf) != 0) return;
  REQUIRE(!IsLogged(Field(conf.szPassword)));
  REQUIRE(ZARNTunnelConfigGet(&read) == 1 && Field(read.szPassword) == Field(conf.szPassword));
  if (IsPlain(Field(conf.szUserId))) REQUIRE(Field(read.szUserId) == Field(conf.szUserId));
}

}  // namespace
}  // namespace fuzz
