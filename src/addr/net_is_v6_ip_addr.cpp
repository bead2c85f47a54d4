// IPv6 addresses as an administrator types them, with or without a prefix length.
#include <algorithm>
#include <netinet/in.h>
#include <string>
#include <string_view>

#include <zarnnetsdk/addr.h>

#include "addr/address.h"
#include "frame/base/boundary.h"
#include "frame/base/error.h"
#include "frame/base/text.h"

using namespace frame;

namespace {

bool IsAddress(std::string_view text) {
  constexpr std::size_t kLongest = 46;
  if (text.size() > kLongest) return false;
  return addr::ParseAs(AF_INET6, std::string(text).c_str()).has_value();
}

bool IsPrefix(std::string_view text) {
  const bool digits =
      std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
  if (!digits || text.empty() || text.size() > 3) return false;
  return *ToNumber(text) <= 128;
}

}  // namespace

int BlKOPAIsv6IpAddrValid(const char* szIP) {
  return Boundary(0, [&]() -> int {
    if (szIP == nullptr) return Fail(ZARNNETERR_BAD_PARAMETER, 0);
    const std::string_view text(szIP);
    const std::size_t slash = text.find('/');
    if (slash == std::string_view::npos) return IsAddress(text) ? 1 : 0;
    return IsAddress(text.substr(0, slash)) && IsPrefix(text.substr(slash + 1)) ? 1 : 0;
  });
}
