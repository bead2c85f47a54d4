// Stores the relay settings of one interface. Every name in the folder is taken for an interface by
// whoever lists it, so the new content is made beside the folder and then takes the file's place.
#include <cstdio>
#include <sys/stat.h>
#include <unistd.h>

#include <zarnnetsdk/pppoe.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/model/paths.h"
#include "frame/os/file.h"
#include "frame/os/key_file.h"
#include "frame/os/lock.h"
#include "frame/os/rewrite.h"
#include "pppoe/relay.h"

using namespace frame;

namespace {

// A copy of a file beside the folder, gone with this object unless it has taken the file's place.
class Copy {
 public:
  explicit Copy(const std::string& path) : name_(paths::kPppoeRelayTemporary) {
    const File made(KOPACFileTempFileOpen(name_.data()));
    made_ = made != nullptr;
    ready_ = made_ && Fill(path, made.get());
  }
  ~Copy() {
    if (made_) ::unlink(name_.c_str());
  }
  Copy(const Copy&) = delete;
  Copy& operator=(const Copy&) = delete;

  [[nodiscard]] bool IsReady() const { return ready_; }
  [[nodiscard]] const std::string& Name() const { return name_; }
  [[nodiscard]] bool Replace(const std::string& path) {
    if (std::rename(name_.c_str(), path.c_str()) != 0) return false;
    made_ = false;
    SyncFolderOf(path);
    return true;
  }

 private:
  [[nodiscard]] static bool Fill(const std::string& path, std::FILE* copy) {
    LineReader lines(path);
    if (!lines.IsOpen()) return false;
    while (const auto line = lines.Next())
      std::fwrite(line->data(), 1, line->size(), copy);
    constexpr mode_t kMode = 0644;
    return !lines.Failed() && std::fflush(copy) == 0 && std::ferror(copy) == 0 &&
           ::fchmod(::fileno(copy), kMode) == 0;
  }

  std::string name_;
  bool made_ = false;
  bool ready_ = false;
};

bool Store(const KeyEdit& edit, const std::string& path) {
  const FileLock lock(path);
  if (!lock.Held()) return false;
  Copy copy(path);
  return copy.IsReady() && edit.WriteTo(copy.Name()) && copy.Replace(path);
}

bool CanBeServer(const PPPOE_RELAY_CONF& conf) {
  const std::string_view server = FieldText(conf.server);
  return server.size() < sizeof conf.server && (server.empty() || !IsUnfitName(conf.server));
}

}  // namespace

int ZARNNetSetPPPoERelayConfig(const char* ifname, const PPPOE_RELAY_CONF* conf) {
  return Boundary(-1, [&]() -> int {
    if (conf == nullptr || !pppoe::CanHaveSettings(ifname) || !CanBeServer(*conf)) {
      LOG_ERROR("%s:%d Wrong Parameter.");
      return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    }
    const std::string path = pppoe::RelayFile(ifname);
    if (!pppoe::MakeRelayFile(path)) return -1;
    KeyEdit edit;
    edit.Set(pppoe::kEnable, conf->enable == 1 ? pppoe::kYes : pppoe::kNo);
    edit.Set(pppoe::kServer, conf->server);
    return Store(edit, path) ? 0 : -1;
  });
}
