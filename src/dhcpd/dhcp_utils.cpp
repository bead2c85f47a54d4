// The server's switches, of all and of each interface, and its (re)start by the network script.
#include <glob.h>
#include <optional>
#include <string>

#include <zarnnetsdk/dhcpd.h>
#include <zarnnetsdk/net_int.h>

#include "dhcpd/files.h"
#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/model/paths.h"
#include "frame/os/command.h"
#include "frame/os/containers.h"
#include "frame/os/file.h"
#include "frame/os/key_file.h"

using namespace frame;
using namespace dhcpd;

namespace {

constexpr char kStart[] = "nat-start-dhcp";
constexpr char kRestart[] = "nat-restart-dhcp";
constexpr char kGlobalInfo[] = "/etc/dhcpd/dhcpd.info";

// Only the script's status 1 is a failure here; callers know no other.
int RunServer(const char* verb) {
  if (RunStatus(paths::kNetworkScript, verb) != 1) return 0;
  LOG_ERROR("%s:%d Failed to restart DHCP SERVER");
  return 1;
}

// What the switch of an interface needs: a name that is one, and a family that there is.
bool IsSwitch(const char* ifname, int ipType) {
  if (IsRefusedName(ifname)) {
    LOG_ERROR("%s:%d no interface is given");
    return false;
  }
  if (StemOf(ipType) == nullptr) {
    LOG_ERROR("%s:%d Wrong DHCPD ip type");
    return false;
  }
  return true;
}

class InfoFiles {
 public:
  explicit InfoFiles(const char* stem)
      : result_(::glob(Format("%s-*.info", stem).c_str(), 0, nullptr, &found_)) {}
  ~InfoFiles() { ::globfree(&found_); }
  InfoFiles(const InfoFiles&) = delete;
  InfoFiles& operator=(const InfoFiles&) = delete;

  [[nodiscard]] bool Failed() const { return result_ != 0 && result_ != GLOB_NOMATCH; }
  [[nodiscard]] char** begin() const { return found_.gl_pathv; }
  [[nodiscard]] char** end() const { return found_.gl_pathv + found_.gl_pathc; }

 private:
  glob_t found_{};
  int result_;
};

// The interface of a plain switch. Files of subnets, and interfaces with "-" or "." in their names,
// fall apart into more pieces and are passed over.
std::optional<std::string> InterfaceOf(const char* path) {
  const auto pieces = SplitWords(path, "-.");
  if (pieces.size() < 3 || pieces[2] != "info") return std::nullopt;
  return std::string(pieces[1]);
}

}  // namespace

int DHCPIsEnabled(void) {
  return Boundary(0, [&]() -> int { return KeyIs(kGlobalInfo, kEnableKey, "yes") ? 1 : 0; });
}

int DHCPServerStart(void) {
  return Boundary(-1, [&]() -> int { return RunServer(kStart); });
}

int DHCPServerRestart(void) {
  return Boundary(-1, [&]() -> int { return RunServer(kRestart); });
}

bool dhcpd::RestartServer() {
  return RunStatus(paths::kNetworkScript, kRestart) == 0;
}

int KOPANetDHCPServerRestart(void) {
  return Boundary(-1, [&]() -> int { return RestartServer() ? 0 : -1; });
}

int DHCPInterfaceIsEnabled(const char* ifname, int iptype) {
  return Boundary(-1, [&]() -> int {
    if (!IsSwitch(ifname, iptype)) return -1;
    const std::string path = InterfaceInfo(StemOf(iptype), ifname);
    return Exists(path) && KeyIs(path, kEnableKey, "yes") ? 1 : 0;
  });
}

int DHCPInterfaceSetEnabled(const char* ifname, int iptype, int enable) {
  return Boundary(-1, [&]() -> int {
    if (!IsSwitch(ifname, iptype)) return -1;
    if (!MakeFolder()) {
      LOG_ERROR("%s:%d Failed to mkdir [%s]", kFolder);
      return -1;
    }
    const std::string path = InterfaceInfo(StemOf(iptype), ifname);
    if (KOPACFileSetKeyValue(path.c_str(), kEnableKey, YesOrNo(enable == 1), kQuotedLine) < 0) {
      // Callers take a switch that stays as it was for one that was set: the log alone tells.
      LOG_ERROR("%s:%d Failed to set [%s] Dhcp info file", ifname);
    }
    return 0;
  });
}

int DHCPInterfaceListGet(PKOPACSZLIST* list, int iptype) {
  return Boundary(
      -1,
      [&]() -> int {
        if (list == nullptr) {
          LOG_ERROR("%s:%d Parameter error");
          return -1;
        }
        if (StemOf(iptype) == nullptr) {
          LOG_ERROR("%s:%d Wrong DHCPD ip type");
          return -1;
        }
        const InfoFiles files(StemOf(iptype));
        if (files.Failed()) {
          LOG_ERROR("%s:%d glob() error");
          return -1;
        }
        constexpr int kCapacity = 16;
        StringList found(kCapacity);
        for (const char* path : files) {
          const auto ifname = InterfaceOf(path);
          if (ifname && KOPACSzListPush(found.Out(), ifname->c_str()) < 0) {
            LOG_ERROR("%s:%d Failed to push [%s] into interface list", ifname->c_str());
          }
        }
        if (found.Count() == 0) return 0;
        std::swap(*list, *found.Out());  // what the caller's held goes with this scope
        return (*list)->nItem;
      },
      [&] { LOG_ERROR("%s:%d Allocate interface list failed"); });
}
