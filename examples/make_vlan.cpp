// SPDX-License-Identifier: Apache-2.0
// A VLAN with an address. The change is looked at first; nothing is touched that rules refuse.
//   c++ -std=c++17 make_vlan.cpp $(pkg-config --cflags --libs zarnnetchange)
#include <cstdio>
#include <memory>
#include <zarnnetchange/change.h>

struct Free {
  void operator()(char* text) const { ZARNNetChangeFree(text); }
};
using Text = std::unique_ptr<char, Free>;

int main() {
  const char* const wish = R"({"vlans": {"eth0.7": {}},
      "interfaces": {"eth0.7": {"ipv4": {"address": "10.7.0.1", "prefix": 24}}}})";
  char* text = nullptr;
  int result = ZARNNetChangeCheck(wish, nullptr, &text);
  const Text findings(text);
  if (result == ZARNNETCHANGE_DONE)
    result = ZARNNetChangeApply(wish, nullptr, nullptr, nullptr, &text);
  const Text report(text == findings.get() ? nullptr : text);
  std::puts(report ? report.get() : findings ? findings.get() : "out of memory");
  return result;
}
