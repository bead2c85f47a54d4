// SPDX-License-Identifier: Apache-2.0
// The words of the DHCP server's own check.
#include <algorithm>
#include <regex>
#include <sstream>

#include "program/changes.h"
#include "program/journal.h"

namespace rehearsal {
namespace {

// The line of settings that it speaks of: "... at line 12 of /run/dhcpd/dnsmasq.conf.new".
std::string SettingNamedIn(const std::string& words, const std::string& settings) {
  const std::regex place(" at line ([0-9]{1,6}) of ");
  std::smatch found;
  if (!std::regex_search(words, found, place)) return {};
  std::istringstream lines(settings);
  std::string line;
  for (int left = std::stoi(found[1].str()); left > 0; --left)
    std::getline(lines, line);
  return lines ? line : std::string();
}

std::string Trimmed(std::string words) {
  std::replace(words.begin(), words.end(), '\n', ' ');
  words.erase(0, words.find_first_not_of(' '));
  words.erase(words.find_last_not_of(' ') + 1);
  return words;
}

}  // namespace

std::string ServersRefusal() {
  for (const Fields& record : ReadJournal()) {
    if (record.front() != kRefusalRecord) continue;
    const std::string setting = SettingNamedIn(record[1], record[2]);
    const std::string words = Trimmed(record[1]);
    return setting.empty() ? words : words + ": " + setting;
  }
  return {};
}

}  // namespace rehearsal
