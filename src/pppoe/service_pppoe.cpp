// SPDX-License-Identifier: Apache-2.0
// The PPPoE client: its account, and whether it is meant to be up. The password stands in the
// secrets file and in the caller's record, and nowhere else: no message may carry it.
#include <cerrno>
#include <cstring>
#include <strings.h>
#include <sys/stat.h>

#include <zarnnetsdk/pppoe.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/model/paths.h"
#include "frame/os/command.h"
#include "frame/os/file.h"
#include "frame/os/key_file.h"
#include "frame/os/lock.h"
#include "frame/os/rewrite.h"
#include "pppoe/client.h"
#include "pppoe/shell_quote.h"

using namespace frame;

namespace {

constexpr char kEth[] = "ETH";
constexpr char kDefaultRoute[] = "DEFAULTROUTE";
constexpr char kUser[] = "USER";
constexpr char kMtu[] = "MTU";
constexpr char kEnable[] = "pppoe_enable";
constexpr char kYes[] = "yes";
constexpr char kNo[] = "no";
constexpr char kConnection[] = "pppoe-connect";

// ---- reading the account

// In the stored name "#" may have been guarded against being read as a comment.
std::string AccountName(std::string_view quoted) {
  std::string name = pppoe::Unquoted(quoted);
  for (std::size_t at = 0; (at = name.find("\\#", at)) != std::string::npos; ++at)
    name.erase(at, 1);
  return name;
}

// The key is read cut to the record's size, and a long name's column has to be cut alike.
bool IsAccount(std::string_view column, const std::string& stored) {
  return column.substr(0, sizeof PPPOE_CONF::user - 1) == stored;
}

void ReadSecrets(LineReader* lines, const std::string& account, PPPOE_CONF* conf) {
  while (const auto line = lines->Next()) {
    if (line->starts_with('#')) continue;
    const auto columns = pppoe::SplitColumns(*line);
    if (!columns || !IsAccount(columns->account, account)) continue;
    CopyText(AccountName(columns->account), conf->user);
    CopyText(pppoe::Unquoted(columns->secret), conf->password);
    return;
  }
}

// ---- what may be stored

template <std::size_t N>
bool IsOneLine(const char (&field)[N]) {
  const std::string_view text = FieldText(field);
  return text.size() < N && !HasControlCharacters(text);
}

// The scripts read their settings file as a part of themselves, and these values stand in it
// without quotes: anything else in them would be run.
template <std::size_t N>
bool IsPlainWord(const char (&field)[N]) {
  constexpr std::string_view kPlain =
      "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789.:_-@+";
  const std::string_view text = FieldText(field);
  return text.size() < N && text.find_first_not_of(kPlain) == std::string_view::npos;
}

bool IsFit(const PPPOE_CONF& conf) {
  return IsPlainWord(conf.eth) && IsPlainWord(conf.mtu) && IsOneLine(conf.user) &&
         IsOneLine(conf.password);
}

// ---- writing the account

// One key after the other: what is written when one fails stays.
bool WriteSettings(const PPPOE_CONF& conf, const std::string& account) {
  const auto set = [](const char* key, const char* value) {
    return SetKey(paths::kPppoeConf, key, value);
  };
  return set(kEth, conf.eth) && set(kDefaultRoute, conf.defaultroute != 0 ? kYes : kNo) &&
         set(kUser, account.c_str()) && set(kMtu, conf.mtu);
}

// The new file is nobody else's from its first moment on. Without an answer true the old one stays.
bool WriteSecrets(const std::string& account, const std::string& secret, const Place& at) {
  Rewrite secrets(paths::kPapSecrets, Rewrite::Temporary{paths::kPapSecretsTemporary});
  if (!secrets.IsOpen()) {
    LOG_ERROR_FUNC(at, "%s (%d) Failed to open tmp file to write PPPoE setting (%s)",
                   std::strerror(errno));
    return Fail(ZARNNETERR_OPEN, false);
  }
  if (!secrets.Write(account + "\t*\t" + secret + "\n")) {
    LOG_ERROR_FUNC(at, "%s (%d) Failed to write PPPoE setting (%s)", std::strerror(errno));
    return Fail(ZARNNETERR_WRITE, false);
  }
  if (!secrets.Sync()) {
    LOG_ERROR_FUNC(at, "%s (%d) Failed to fflush PPPoE setting.(%s)", std::strerror(errno));
    return Fail(ZARNNETERR_WRITE, false);
  }
  if (!secrets.TakeEffect()) {
    LOG_ERROR("%s:%d rename %s to %s.tmp failed", paths::kPapSecrets, paths::kPapSecrets);
    return Fail(ZARNNETERR_RENAME, false);
  }
  if (!secrets.SetTargetMode(S_IRUSR | S_IWUSR)) {
    LOG_ERROR("%s:%d chmod %s failed", paths::kPapSecrets);
    return Fail(ZARNNETERR_WRITE, false);
  }
  return true;
}

// ---- the switch

bool Enable(const char* value) {
  return KOPACINFOSetKeyValue(kEnable, value) >= 0;
}

int Start() {
  constexpr int kPassedOn = 19;
  const int status = Enable(kYes) ? RunStatus(paths::kPppoeStart) : -1;
  if (status == 0) return 0;
  static_cast<void>(Enable(kNo));  // the start has failed already
  return status == kPassedOn ? kPassedOn : -1;
}

std::optional<bool> CheckStatus(bool fix) {
  const KeyValue enabled = ReadKey(paths::kInfo, kEnable, 64);
  if (enabled.Unreadable()) return std::nullopt;
  if (!enabled.Found()) return false;
  const auto connections = CountProcesses(kConnection);
  if (::strcasecmp(enabled.text.c_str(), kYes) != 0) {
    if (connections.value_or(0) > 0) static_cast<void>(RunStatus(paths::kPppoeStop));
    return false;
  }
  if (!connections) return std::nullopt;
  if (*connections > 0) return true;
  if (fix && !SetKey(paths::kInfo, kEnable, kNo, kQuotedLine)) return std::nullopt;
  return false;
}

}  // namespace

bool pppoe::ReadAccount(PPPOE_CONF* conf) {
  constexpr Place kAt("service_pppoe", 0, "PPPoEConfigGet");
  *conf = {};
  const KeyValue eth = ReadKey(paths::kPppoeConf, kEth, sizeof conf->eth);
  if (!eth.Found()) {
    if (!eth.Unreadable()) SetError(ZARNNETERR_UNEXPECTED_CONTENT);
    const InnerError inner;
    LOG_ERROR("%s:%d Failed to get PPPoE ETH setting.[0x%04X %s:%d]", inner.code, inner.file,
              inner.line);
    return false;
  }
  CopyText(eth.text, conf->eth);
  conf->defaultroute = KeyIs(paths::kPppoeConf, kDefaultRoute, kYes) ? 1 : 0;
  const KeyValue account = ReadKey(paths::kPppoeConf, kUser, sizeof conf->user);
  if (!account.Found()) return true;
  const KeyValue mtu = ReadKey(paths::kPppoeConf, kMtu, sizeof conf->mtu);
  if (mtu.Unreadable()) {
    LOG_ERROR("%s:%d Failed to get PPPoE MTU setting.");
    return false;
  }
  CopyText(mtu.text, conf->mtu);
  LineReader secrets{paths::kPapSecrets};
  if (!secrets.IsOpen()) {
    LOG_ERROR_FUNC(kAt, "%s (%d) Failed to open %s", paths::kPapSecrets);
    return Fail(ZARNNETERR_OPEN, false);
  }
  ReadSecrets(&secrets, account.text, conf);
  return true;
}

std::optional<bool> pppoe::IsConnected(bool fix) {
  Lock lock(fix ? kSettingsWrite : kSettingsRead);
  if (!lock.HeldOrLog()) return std::nullopt;
  const auto connected = CheckStatus(fix);
  return lock.Release() ? connected : Fail(ZARNNETERR_LOCK, std::optional<bool>());
}

bool pppoe::HangUp() {
  if (!Enable(kNo)) {
    static_cast<void>(Enable(kYes));  // as it was, if that can be had
    return false;
  }
  static_cast<void>(RunStatus(paths::kPppoeStop));  // complains where nothing runs
  return true;
}

int PPPoEConfigGet(PPPOE_CONF* conf) {
  return Boundary(-1, [&](const Place& at) -> int {
    if (conf == nullptr) {
      LOG_ERROR_FUNC(at, "%s (%d) bad parameter PPPoEConf");
      return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    }
    return pppoe::ReadAccount(conf) ? 0 : -1;
  });
}

// Two callers at once never leave the name of one with the password of the other.
int PPPoEConfigSet(const PPPOE_CONF* conf) {
  return Boundary(-1, [&](const Place& at) -> int {
    if (conf == nullptr || !IsFit(*conf)) {
      LOG_ERROR_FUNC(at, "%s (%d) bad parameter PPPoEConf");
      return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    }
    const FileLock lock(paths::kPapSecrets);
    if (!lock.Held()) {
      LOG_ERROR("%s:%d KOPACFileLockTimeByFile failed!");
      return Fail(ZARNNETERR_LOCK, -1);
    }
    const std::string account = pppoe::Quoted(FieldText(conf->user));
    if (!WriteSettings(*conf, account)) {
      LOG_ERROR_FUNC(at, "%s (%d) Failed to edit %s", paths::kPppoeConf);
      return -1;
    }
    return WriteSecrets(account, pppoe::Quoted(FieldText(conf->password)), at) ? 0 : -1;
  });
}

int ZARNPPPoEService(int op) {
  return Boundary(-1, [&]() -> int {
    if (op != 0 && op != 1) return InvalidArgument("(op == 1 || op == 0)", -1);
    if (op == 1) return Start();
    return pppoe::HangUp() ? 0 : -1;
  });
}

int ZARNPPPoECheckStatus(int fix) {
  return Boundary(-1, [&]() -> int {
    const auto connected = pppoe::IsConnected(fix != 0);
    if (!connected) return -1;
    return *connected ? 1 : 0;
  });
}
