// Sets the host name: in the kernel, in the files that hold it, and with those who are to know.
#include <cstring>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

#include <zarnnetsdk/ipv4.h>
#include <zarnplvcore/zarnplvcore.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/model/paths.h"
#include "frame/os/command.h"
#include "frame/os/file.h"
#include "frame/os/lock.h"
#include "frame/os/rewrite.h"
#include "ipv4/hooks.h"

using namespace frame;

namespace {

constexpr std::size_t kMaxHostname = 63;

bool SetKernelName(const char* hostname) {
  if (::sethostname(hostname, std::strlen(hostname) + 1) == 0) return true;
  return Fail(ZARNNETERR_REFUSED, false);
}

// Writes over the old name and cuts the file to length afterwards: a full disk has room for that.
bool WriteOver(int fd, const std::string& line) {
  const auto length = static_cast<ssize_t>(line.size());
  return ::write(fd, line.data(), line.size()) == length && ::ftruncate(fd, length) == 0 &&
         ::fsync(fd) == 0;
}

bool WriteHostnameFile(const char* hostname) {
  constexpr mode_t kMode = 0644;
  const Descriptor fd(::open(paths::kHostname, O_WRONLY | O_CREAT | O_CLOEXEC, kMode));
  if (!fd) {
    LOG_ERROR("%s:%d fopen failed: %m");
    return Fail(ZARNNETERR_OPEN, false);
  }
  return WriteOver(fd.Get(), Format("%s\n", hostname)) || Fail(ZARNNETERR_WRITE, false);
}

std::string HostsText(const char* hostname) {
  return Format(
      "# Any manual change will be lost if the host name is changed or system upgrades.\n"
      "127.0.0.1\tlocalhost\n::1\t\tlocalhost\n"
      "127.0.0.1\t%s\n::1\t\t%s\n",
      hostname, hostname);
}

bool WriteHostsFile(const char* hostname) {
  constexpr mode_t kMode = 0644;
  Rewrite rewrite(paths::kHosts);
  if (!rewrite.IsOpen()) return Fail(ZARNNETERR_OPEN, false);
  if (!rewrite.SetMode(kMode) || !rewrite.Fill(HostsText(hostname))) {
    return Fail(ZARNNETERR_WRITE, false);
  }
  return rewrite.TakeEffect() || Fail(ZARNNETERR_RENAME, false);
}

// The logger writes the host name into every line. A refusal, such as that of a logger that does
// not run, is none of ours.
bool ReloadLogger() {
  return RunStatus(paths::kInitctl, "reload", "syslog-ng") >= 0;
}

}  // namespace

int ZARNLnxSetHostname(const char* szHostname) {
  return Boundary(-1, [&]() -> int {
    if (szHostname == nullptr) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    const std::size_t length = std::strlen(szHostname);
    if (length == 0 || length > kMaxHostname) return Fail(ZARNNETERR_HOSTNAME_LENGTH, -1);
    if (IsUnfitName(szHostname)) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    const Lock lock(kNetworkWrite);
    if (!lock.Held()) return Fail(ZARNNETERR_LOCK, -1);
    if (ZARNIsDockerPLV() == 1) return 0;  // the name belongs to the container runtime
    const bool done = SetKernelName(szHostname) && WriteHostnameFile(szHostname) &&
                      WriteHostsFile(szHostname) && ReloadLogger() &&
                      ipv4::TellHostnameChange(szHostname);
    return done ? 0 : -1;
  });
}
