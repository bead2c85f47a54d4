// SPDX-License-Identifier: Apache-2.0
// Sets the host name: in the kernel, in the files that hold it, and with those who are to know.
#include <cerrno>
#include <climits>
#include <cstdlib>
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

bool Replace(Rewrite* rewrite, const std::string& text, const Place& at = {}) {
  constexpr mode_t kMode = 0644;
  return PutInPlace(rewrite, rewrite->IsOpen() && rewrite->SetMode(kMode), text, at);
}

bool CannotOpen() {
  LOG_ERROR("%s:%d fopen failed: %m");
  return Fail(ZARNNETERR_OPEN, false);
}

// A link stays, and the file behind it is replaced; what is no file holds no name.
bool WriteHostnameFile(const char* hostname) {
  std::string path = paths::kHostname;
  const Descriptor present(::open(path.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC));
  if (!present && errno != ENOENT) return CannotOpen();
  if (present) {
    struct stat status {};
    if (::fstat(present.Get(), &status) != 0 || !S_ISREG(status.st_mode))
      return Fail(ZARNNETERR_WRITE, false);
    if (char real[PATH_MAX]; ::realpath(path.c_str(), real) != nullptr) path = real;
  }
  Rewrite rewrite(path);
  return rewrite.IsOpen() ? Replace(&rewrite, Format("%s\n", hostname)) : CannotOpen();
}

std::string HostsText(const char* hostname) {
  return Format(
      "# Any manual change will be lost if the host name is changed or system upgrades.\n"
      "127.0.0.1\tlocalhost\n::1\t\tlocalhost\n"
      "127.0.0.1\t%s\n::1\t\t%s\n",
      hostname, hostname);
}

bool WriteHostsFile(const char* hostname) {
  Rewrite rewrite(paths::kHosts);
  return Replace(&rewrite, HostsText(hostname));
}

// The logger writes the host name into every line. A refusal, such as that of a logger that does
// not run, is none of ours.
bool ReloadLogger() {
  return RunStatus(paths::kInitctl, "reload", "syslog-ng") >= 0 || Fail(ZARNNETERR_COMMAND, false);
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
