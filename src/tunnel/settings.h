// The settings of the tunnel as they are stored, shared by those who read, write and use them.
#pragma once

#include <algorithm>

#include <zarnnetsdk/tunnel.h>

#include "frame/base/text.h"

namespace tunnel {

inline constexpr char kIfname[] = "tun";
inline constexpr char kService[] = "zarntunnel";

// Keys of the interface's file, and the values of LOGIN.
inline constexpr char kServer[] = "SERVER";
inline constexpr char kLogin[] = "LOGIN";
inline constexpr char kUserId[] = "USERID";
inline constexpr char kAnonymous[] = "anonymous";
inline constexpr char kWithLogin[] = "login";

// Reads the stored password into the record; empty where it cannot be had.
void ReadPassword(ZARNTUNNELCONF* conf);

// A newline or another control character in a text would become a line of a file of its own.
template <std::size_t N>
bool IsOneLine(const char (&field)[N]) {
  const std::string_view text = frame::FieldText(field);
  return std::none_of(text.begin(), text.end(), [](char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte < ' ' || byte == 0x7F;
  });
}

template <std::size_t N>
bool HasEnd(const char (&field)[N]) {
  return frame::FieldText(field).size() < N;
}

// What no login uses may be anything.
inline bool IsFit(const ZARNTUNNELCONF& conf) {
  return IsOneLine(conf.szServer) && HasEnd(conf.szServer) && IsOneLine(conf.szUserId) &&
         HasEnd(conf.szUserId) && (conf.blAnonymous != 0 || IsOneLine(conf.szPassword));
}

}  // namespace tunnel
