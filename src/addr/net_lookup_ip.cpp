// SPDX-License-Identifier: Apache-2.0
// The address behind a host's name, as the system's resolver finds it.
#include <array>
#include <string_view>
#include <sys/socket.h>

#include <zarnnetsdk/addr.h>

#include "addr/resolved.h"
#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"

using namespace frame;

namespace {

void SetCode(int error) {
  if (error == EAI_MEMORY) {
    SetError(ZARNNETERR_NO_MEMORY);
  } else if (error == EAI_NONAME || error == EAI_NODATA) {
    SetError(ZARNNETERR_NOT_FOUND);
  } else {
    SetError(ZARNNETERR_REFUSED);
  }
}

}  // namespace

addr::Addresses addr::Resolve(const char* host) {
  addrinfo hints{};
  hints.ai_socktype = SOCK_DGRAM;  // one entry an address, not one a protocol
  addrinfo* list = nullptr;
  const int error = ::getaddrinfo(host, nullptr, &hints, &list);
  if (error == 0) return Addresses(list);
  LOG_ERROR("%s:%d Failed to look up %s (%s)", host, ::gai_strerror(error));
  SetCode(error);
  return nullptr;
}

int ZARNNetLookupIP(const char* szHost, char* szIP, int cbIP) {
  return Boundary(-1, [&]() -> int {
    if (IsUnfitName(szHost) || szIP == nullptr || cbIP <= 0)
      return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    const addr::Addresses addresses = addr::Resolve(szHost);
    if (!addresses) return -1;
    for (const addrinfo* entry = addresses.get(); entry != nullptr; entry = entry->ai_next) {
      std::array<char, NI_MAXHOST> text{};
      if (::getnameinfo(entry->ai_addr, entry->ai_addrlen, text.data(), text.size(), nullptr, 0,
                        NI_NUMERICHOST) != 0) {
        continue;
      }
      const std::string_view address(text.data());
      if (address.size() >= static_cast<std::size_t>(cbIP)) continue;
      CopyText(address, szIP, static_cast<std::size_t>(cbIP));
      return 0;
    }
    LOG_ERROR("%s:%d No address of %s fits into %d bytes", szHost, cbIP);
    return Fail(ZARNNETERR_BAD_PARAMETER, -1);
  });
}
