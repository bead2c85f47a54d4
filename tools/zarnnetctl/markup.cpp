// SPDX-License-Identifier: Apache-2.0
#include "markup.h"

#include <nlohmann/json.hpp>
#include <sstream>
#include <string_view>

namespace tool {
namespace {

constexpr char kUnreadable[] = "\xEF\xBF\xBD";  // U+FFFD
constexpr char kDelete = 0x7F;

// Characters that XML forbids or that turn the text around them, by the bytes that they begin with.
bool IsSteering(std::string_view text) {
  const auto begins = [&](const char* bytes) { return text.starts_with(bytes); };
  const auto third = static_cast<unsigned char>(text.size() > 2 ? text[2] : 0);
  const bool isBidi = (begins("\xE2\x80") && third >= 0xAA && third <= 0xAE) ||
                      (begins("\xE2\x81") && third >= 0xA6 && third <= 0xA9);
  const bool isC1 = begins("\xC2") && text.size() > 1 && static_cast<unsigned char>(text[1]) < 0xA0;
  return isBidi || isC1 || begins("\xEF\xBF\xBE") || begins("\xEF\xBF\xBF");
}

std::string ValidUtf8(const std::string& text) {
  using nlohmann::json;
  return json::parse(json(text).dump(-1, ' ', false, json::error_handler_t::replace));
}

}  // namespace

std::string Readable(const std::string& text) {
  const std::string valid = ValidUtf8(text);
  std::string readable;
  for (std::size_t i = 0; i < valid.size(); ++i) {
    const char byte = valid[i];
    if (byte == '\n' || byte == '\t' || byte == '\r') {
      readable += ' ';
    } else if (static_cast<unsigned char>(byte) < ' ' || byte == kDelete) {
      readable += kUnreadable;
    } else if (IsSteering(std::string_view(valid).substr(i))) {
      readable += kUnreadable;
      i += byte == '\xC2' ? 1 : 2;
    } else {
      readable += byte;
    }
  }
  return readable;
}

std::string Escaped(const std::string& text) {
  std::string escaped;
  for (const char byte : Readable(text)) {
    switch (byte) {
      case '&':
        escaped += "&amp;";
        break;
      case '<':
        escaped += "&lt;";
        break;
      case '>':
        escaped += "&gt;";
        break;
      case '"':
        escaped += "&quot;";
        break;
      case '\'':
        escaped += "&#39;";
        break;
      default:
        escaped += byte;
    }
  }
  return escaped;
}

std::string EscapedLines(const std::string& text) {
  std::istringstream lines(text);
  std::string escaped;
  for (std::string line; std::getline(lines, line);)
    escaped += Escaped(line) + "\n";
  return escaped;
}

}  // namespace tool
