// SPDX-License-Identifier: Apache-2.0
// The settings of the tunnel as they are stored, shared by those who read, write and use them.
#pragma once

#include <optional>

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

// The stored settings; nothing, with a code, where ZARNTunnelConfigGet() fails.
std::optional<ZARNTUNNELCONF> ReadStored();

// Reads the stored password into the record; empty where it cannot be had.
void ReadPassword(ZARNTUNNELCONF* conf);

// A newline in a text would begin a line of a file of its own.
template <std::size_t N>
bool IsOneLine(const char (&field)[N]) {
  return !frame::HasControlCharacters(frame::FieldText(field));
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
