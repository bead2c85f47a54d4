// SPDX-License-Identifier: Apache-2.0
// Files of lines, and one line in them.
#include "frame/os/line_file.h"

#include <zarncore/zarncore.h>

#include "frame/os/containers.h"

namespace frame {
namespace {

constexpr int kBeginsWith = 2;
constexpr int kContains = 0x402;

std::string FirstLine(const std::string& path, const std::string& text, std::size_t size,
                      int flags) {
  std::vector<char> line(size, '\0');
  return KOPACFileGetLine(path.c_str(), text.c_str(), line.data(), size, flags) > 0 ? line.data()
                                                                                    : "";
}

}  // namespace

std::optional<std::vector<std::string>> LinesOf(const std::string& path) {
  StringList lines(512);
  if (KOPACFileReadLines(path.c_str(), lines.Out()) < 0) return std::nullopt;
  return lines.Texts();
}

std::string LineBeginningWith(const std::string& path, const std::string& text, std::size_t size) {
  return FirstLine(path, text, size, kBeginsWith);
}

std::string LineContaining(const std::string& path, const std::string& text, std::size_t size) {
  return FirstLine(path, text, size, kContains);
}

std::optional<std::string> FindLineContaining(const std::string& path, const std::string& text,
                                              std::size_t size) {
  std::vector<char> line(size, '\0');
  if (KOPACFileGetLine(path.c_str(), text.c_str(), line.data(), size, kContains) < 0)
    return std::nullopt;
  return line.data();
}

bool AddLine(const std::string& path, const std::string& line) {
  return KOPACFileAddLine(path.c_str(), nullptr, line.c_str(), 0) >= 0;
}

bool Touch(const std::string& path) {
  return KOPACFileTouch(path.c_str()) >= 0;
}

bool ReplaceInFile(const std::string& path, const std::string& text, const std::string& by) {
  return KOPACFileReplaceSubStr(path.c_str(), text.c_str(), by.c_str()) >= 0;
}

}  // namespace frame
