// SPDX-License-Identifier: Apache-2.0
// The interface of the PPPoE connection, and its address. Asking the scripts takes long, so their
// answer is remembered in a file.
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>

#include <zarnnetsdk/pppoe.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/model/paths.h"
#include "frame/os/command.h"
#include "frame/os/file.h"
#include "frame/os/kernel.h"
#include "frame/os/rewrite.h"
#include "frame/os/shared_folder.h"

using namespace frame;

namespace {

constexpr char kPppPrefix[] = "ppp";
constexpr char kMonitorPart[] = "mon.";
constexpr int kHeaderLines = 2;

// Is there a PPP interface at all? What is remembered may be that of yesterday.
bool KernelHasPpp(LineReader* lines) {
  for (int skipped = 0; skipped < kHeaderLines; ++skipped)
    static_cast<void>(lines->Next());
  while (const auto line = lines->Next()) {
    const std::size_t colon = line->find(':');
    if (colon == std::string_view::npos) {
      LOG_ERROR("%s:%d input string: %s don't contain charactor :",
                std::string(Trimmed(*line)).c_str());
      return Fail(ZARNNETERR_UNEXPECTED_CONTENT, false);
    }
    const std::string_view name = Trimmed(line->substr(0, colon));
    if (name.find(kMonitorPart) == std::string_view::npos && name.starts_with(kPppPrefix))
      return true;
  }
  return Fail(ZARNNETERR_NOT_FOUND, false);
}

std::string WithoutNewline(std::string_view line) {
  if (line.ends_with('\n')) line.remove_suffix(1);
  return std::string(line);
}

// Nothing when nothing is remembered, or somebody else has laid something there; an empty line is a
// line too.
std::optional<std::string> Remembered() {
  LineReader lines(OpenTrustedFile(paths::kPppoeIntf));
  if (!lines.IsOpen()) return std::nullopt;
  const auto line = lines.Next();
  return line ? std::optional(WithoutNewline(*line)) : std::nullopt;
}

void Forget() {
  ::unlink(paths::kPppoeIntf);  // mostly there is none
}

// The folder is everybody's: a link that somebody has laid there is replaced, not followed.
void Remember(const std::string& ifname) {
  Rewrite file(paths::kPppoeIntf);
  const bool written = file.IsOpen() && file.SetMode(S_IRUSR | S_IWUSR | S_IRGRP | S_IROTH) &&
                       file.Fill(ifname + "\n") && file.TakeEffect();
  if (!written) Forget();
}

std::string FirstWord(std::string_view line) {
  const auto words = SplitWords(line);
  return words.empty() ? "" : std::string(words.front());
}

// The rest of the output is read too: a script that writes to nobody would be ended by it.
std::string InterfaceIn(std::FILE* output) {
  std::string ifname;
  char line[1024];
  while (std::fgets(line, sizeof line, output) != nullptr) {
    if (ifname.empty() && std::strstr(line, "Point-to-Point") != nullptr) ifname = FirstWord(line);
  }
  return ifname;
}

std::optional<std::string> AskScripts() {
  const CommandOutput output = OutputOf(paths::kPppoeStatus);
  if (!output) {
    LOG_ERROR("%s:%d failed to excute cmd/usr/sbin/pppoe-status");
    return Fail(ZARNNETERR_COMMAND, std::optional<std::string>());
  }
  std::string found = InterfaceIn(output.get());
  if (!found.empty()) Remember(found);
  return found;
}

bool ConnectionMayBe() {
  LineReader devices{paths::kProcNetDev};
  if (!devices.IsOpen()) return Fail(ZARNNETERR_OPEN, false);
  return KernelHasPpp(&devices);
}

// The interface of the connection; nothing when nobody knows it.
std::optional<std::string> KnownInterface() {
  auto found = Remembered();
  if (!found) found = AskScripts();
  if (!found || !found->empty()) return found;
  LOG_DETAIL("%s:%d Failed to get real pppoe interface");
  return Fail(ZARNNETERR_NOT_FOUND, std::optional<std::string>());
}

// ---- the address

// A caller's buffer that is null or has no room is one that is not wanted.
bool CopyAddress(std::optional<in_addr> address, char* text, int size) {
  if (!address) return Fail(ZARNNETERR_REFUSED, false);
  if (text != nullptr && size > 0) CopyText(DottedText(*address), text, static_cast<size_t>(size));
  return true;
}

bool ReadAddress(char* ip, int ipSize, char* mask, int maskSize) {
  if (!ConnectionMayBe()) return false;
  const auto ifname = KnownInterface();
  if (!ifname) return false;
  const InetSocket socket;
  if (!socket.IsOpen()) return Fail(ZARNNETERR_OPEN, false);
  return CopyAddress(socket.Address(*ifname), ip, ipSize) &&
         CopyAddress(socket.Netmask(*ifname), mask, maskSize);
}

}  // namespace

int ZARNPPPoeIntfGet(char* ifname, size_t size) {
  return Boundary(-1, [&]() -> int {
    if (ifname == nullptr || size == 0) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    if (!ConnectionMayBe()) return -1;
    std::memset(ifname, 0, size);
    const auto found = KnownInterface();
    if (!found) return -1;
    CopyText(*found, ifname, size);
    return 0;
  });
}

int ZARNPPPoeNetInfoGet(char* ip, int ip_size, char* mask, int mask_size) {
  return Boundary(-1, [&]() -> int {
    const bool wanted = (ip != nullptr && ip_size > 0) || (mask != nullptr && mask_size > 0);
    if (!wanted) return 0;
    if (ReadAddress(ip, ip_size, mask, mask_size)) return 0;
    Forget();
    return -1;
  });
}
