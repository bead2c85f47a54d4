// The PPPoE client: its account, and whether it is meant to be up. The password stands in the
// secrets file and in the caller's record, and nowhere else: no message may carry it.
#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <strings.h>
#include <sys/stat.h>
#include <unistd.h>

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
    const auto columns = pppoe::TakeApart(*line);
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
  return text.size() < N && std::none_of(text.begin(), text.end(), [](char c) {
           const auto byte = static_cast<unsigned char>(c);
           return byte < ' ' || byte == 0x7F;
         });
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
    return KOPACFileSetKeyValue(paths::kPppoeConf, key, value, kBareLine) >= 0;
  };
  return set(kEth, conf.eth) && set(kDefaultRoute, conf.defaultroute != 0 ? kYes : kNo) &&
         set(kUser, account.c_str()) && set(kMtu, conf.mtu);
}

// The file that is to become the secrets file: nobody else's from its first moment on, and gone
// with this object unless it has taken its place.
class NewSecrets {
 public:
  NewSecrets() {
    ::unlink(paths::kPapSecretsTemporary);  // left by a crash; mostly there is none
    const int fd = ::open(paths::kPapSecretsTemporary,
                          O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR);
    made_ = fd >= 0;
    if (!made_) return;
    file_.reset(::fdopen(fd, "w"));
    if (!file_) ::close(fd);
  }
  ~NewSecrets() {
    if (made_) ::unlink(paths::kPapSecretsTemporary);
  }
  NewSecrets(const NewSecrets&) = delete;
  NewSecrets& operator=(const NewSecrets&) = delete;

  [[nodiscard]] bool IsOpen() const { return file_ != nullptr; }
  [[nodiscard]] bool Write(const std::string& account, const std::string& secret) {
    return std::fprintf(file_.get(), "%s\t*\t%s\n", account.c_str(), secret.c_str()) > 0;
  }
  [[nodiscard]] bool Sync() {
    return std::fflush(file_.get()) == 0 && ::fsync(::fileno(file_.get())) == 0;
  }
  [[nodiscard]] bool TakeEffect() {
    file_.reset();
    if (std::rename(paths::kPapSecretsTemporary, paths::kPapSecrets) != 0) return false;
    made_ = false;
    SyncFolderOf(paths::kPapSecrets);
    return true;
  }

 private:
  bool made_ = false;
  File file_;
};

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

int Stop() {
  if (!Enable(kNo)) {
    static_cast<void>(Enable(kYes));  // as it was, if that can be had
    return -1;
  }
  static_cast<void>(RunStatus(paths::kPppoeStop));  // complains where nothing runs
  return 0;
}

int CheckStatus(bool fix) {
  const KeyValue enabled = ReadKey(paths::kInfo, kEnable, 64);
  if (enabled.Unreadable()) return -1;
  if (!enabled.Found()) return 0;
  const int connections = KOPACPs(kConnection, nullptr, 0);
  if (::strcasecmp(enabled.text.c_str(), kYes) != 0) {
    if (connections > 0) static_cast<void>(RunStatus(paths::kPppoeStop));
    return 0;
  }
  if (connections != 0) return connections > 0 ? 1 : -1;
  return fix && KOPACFileSetKeyValue(paths::kInfo, kEnable, kNo, kQuotedLine) < 0 ? -1 : 0;
}

}  // namespace

int PPPoEConfigGet(PPPOE_CONF* conf) {
  return Boundary(-1, [&](const Place& at) -> int {
    if (conf == nullptr) {
      LOG_ERROR_FUNC(at, "%s (%d) bad parameter PPPoEConf");
      return -1;
    }
    *conf = {};
    if (!ReadKeyInto(paths::kPppoeConf, kEth, conf->eth)) {
      const InnerError inner;
      LOG_ERROR("%s:%d Failed to get PPPoE ETH setting.[0x%04X %s:%d]", inner.code, inner.file,
                inner.line);
      return -1;
    }
    conf->defaultroute = KeyIs(paths::kPppoeConf, kDefaultRoute, kYes) ? 1 : 0;
    const KeyValue account = ReadKey(paths::kPppoeConf, kUser, sizeof conf->user);
    if (!account.Found()) return 0;
    const KeyValue mtu = ReadKey(paths::kPppoeConf, kMtu, sizeof conf->mtu);
    if (mtu.Unreadable()) {
      LOG_ERROR("%s:%d Failed to get PPPoE MTU setting.");
      return -1;
    }
    CopyText(mtu.text, conf->mtu);
    LineReader secrets{paths::kPapSecrets};
    if (!secrets.IsOpen()) {
      LOG_ERROR_FUNC(at, "%s (%d) Failed to open %s", paths::kPapSecrets);
      return -1;
    }
    ReadSecrets(&secrets, account.text, conf);
    return 0;
  });
}

int PPPoEConfigSet(const PPPOE_CONF* conf) {
  return Boundary(-1, [&](const Place& at) -> int {
    if (conf == nullptr || !IsFit(*conf)) {
      LOG_ERROR_FUNC(at, "%s (%d) bad parameter PPPoEConf");
      return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    }
    const std::string account = pppoe::Quoted(FieldText(conf->user));
    const std::string secret = pppoe::Quoted(FieldText(conf->password));
    if (!WriteSettings(*conf, account)) {
      LOG_ERROR_FUNC(at, "%s (%d) Failed to edit %s", paths::kPppoeConf);
      return -1;
    }
    NewSecrets secrets;
    if (!secrets.IsOpen()) {
      LOG_ERROR_FUNC(at, "%s (%d) Failed to open tmp file to write PPPoE setting (%s)",
                     std::strerror(errno));
      return -1;
    }
    if (!secrets.Write(account, secret)) {
      LOG_ERROR_FUNC(at, "%s (%d) Failed to write PPPoE setting (%s)", std::strerror(errno));
      return -1;
    }
    if (!secrets.Sync()) {
      LOG_ERROR_FUNC(at, "%s (%d) Failed to fflush PPPoE setting.(%s)", std::strerror(errno));
      return -1;
    }
    if (!secrets.TakeEffect()) {
      LOG_ERROR("%s:%d rename %s to %s.tmp failed", paths::kPapSecrets, paths::kPapSecrets);
      return -1;
    }
    if (::chmod(paths::kPapSecrets, S_IRUSR | S_IWUSR) != 0) {
      LOG_ERROR("%s:%d chmod %s failed", paths::kPapSecrets);
      return -1;
    }
    return 0;
  });
}

int ZARNPPPoEService(int op) {
  return Boundary(-1, [&]() -> int {
    if (op != 0 && op != 1) return InvalidArgument("(op == 1 || op == 0)", -1);
    return op == 1 ? Start() : Stop();
  });
}

int ZARNPPPoECheckStatus(int fix) {
  return Boundary(-1, [&]() -> int {
    Lock lock(fix != 0 ? kSettingsWrite : kSettingsRead);
    if (!lock.Held()) return -1;
    const int status = CheckStatus(fix != 0);
    return lock.Release() ? status : -1;
  });
}
