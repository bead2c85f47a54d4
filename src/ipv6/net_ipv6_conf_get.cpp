// SPDX-License-Identifier: Apache-2.0
// What an interface's file says of IPv6: type, fixed address, prefix length and gateway.
#include <arpa/inet.h>
#include <cstdio>
#include <optional>
#include <string>

#include <zarnnetsdk/iface.h>
#include <zarnnetsdk/ipv6.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/facts/inventory.h"
#include "frame/model/ifcfg.h"
#include "frame/model/paths.h"
#include "frame/os/key_file.h"
#include "ipv6/config.h"

using namespace frame;

namespace {

constexpr int kSmallestBuffer = 46;  // the longest address and its end
constexpr std::size_t kValueSize = 128;

// The text is handed out as it stands in the file; only a system without IPv6 refuses it.
bool CopyAddress(const std::string& path, const std::string& text, char* buffer, int size) {
  in6_addr address{};
  if (::inet_pton(AF_INET6, text.c_str(), &address) == -1) {
    LOG_ERROR("%s:%d not valid ipv6 address %s, %s,", text.c_str(), path.c_str());
    return false;
  }
  CopyText(text, buffer, static_cast<std::size_t>(size));
  return true;
}

bool ReadAddress(const std::string& path, char* buffer, int size) {
  const KeyValue address = ReadKey(path, keys::kIpv6Address, kValueSize);
  if (address.Unreadable()) {
    LOG_ERROR("%s:%d error when get ipv6 key value %s, %s,", keys::kIpv6Address, path.c_str());
    return false;
  }
  return !address.Found() || CopyAddress(path, address.text, buffer, size);
}

bool ReadPrefix(const std::string& path, int* prefix) {
  const KeyValue text = ReadKey(path, keys::kIpv6Prefix, kValueSize);
  if (text.Unreadable()) {
    LOG_ERROR("%s:%d error when get ipv6 key value %s, %s,", keys::kIpv6Prefix, path.c_str());
    return false;
  }
  if (text.Found() && std::sscanf(text.text.c_str(), "%d", prefix) != 1) {
    LOG_ERROR("%s:%d not valid prefix length %s, %s,", text.text.c_str(), path.c_str());
    return Fail(ZARNNETERR_UNEXPECTED_CONTENT, false);
  }
  return true;
}

bool ReadGateway(const std::string& path, char* buffer, int size) {
  const KeyValue gateway = ReadKey(path, keys::kIpv6Gateway, kValueSize);
  if (gateway.Unreadable()) {
    LOG_ERROR("%s:%d can not get ipv6 key value %s, %s,", keys::kIpv6Gateway, path.c_str());
    return false;
  }
  return !gateway.Found() || CopyAddress(path, gateway.text, buffer, size);
}

}  // namespace

int ZARNNetIPv6ConfGet(const char* szIfname, int* pType, char* szAddr, int cbAddr, int* pPrefix,
                       char* szGateway, int cbGateway) {
  return Boundary(-1, [&]() -> int {
    if (szIfname == nullptr || pType == nullptr || szAddr == nullptr || pPrefix == nullptr ||
        szGateway == nullptr || cbAddr < kSmallestBuffer || cbGateway < kSmallestBuffer) {
      return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    }
    if (IsEmpty(szIfname) || !facts::IsOfKind(szIfname, ZARNNETKIND_USABLE)) return 0;
    *pPrefix = -1;
    *pType = ZARNNET_IPV6_AUTO;
    CopyText("", szAddr, static_cast<std::size_t>(cbAddr));
    CopyText("", szGateway, static_cast<std::size_t>(cbGateway));

    const std::string path = paths::Ifcfg(szIfname);
    const KeyValue type = ReadKey(path, keys::kIpv6Type, kValueSize);
    if (type.Unreadable()) {
      LOG_ERROR("%s:%d can not get ipv6 key value %s, %s,", keys::kIpv6Type, path.c_str());
      return -1;
    }
    if (!type.Found()) {
      LOG_NOTE("%s:%d no ipv6 configtype, first time set IPv6");
      return 0;
    }
    const auto known = ipv6::TypeOf(type.text);
    if (!known) {
      LOG_ERROR("%s:%d ipv6 init type undefined %s, %s,", type.text.c_str(), path.c_str());
      return type.length;
    }
    *pType = *known;
    const bool read = ReadAddress(path, szAddr, cbAddr) && ReadPrefix(path, pPrefix) &&
                      ReadGateway(path, szGateway, cbGateway);
    return read ? 1 : -1;
  });
}
