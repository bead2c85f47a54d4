// SPDX-License-Identifier: Apache-2.0
// A page of HTML that needs nothing but itself: no script, no file, no network. It is well-formed
// XML as well.
#pragma once

#include <string>
#include <vector>

#include "output.h"

namespace tool {

// What stands in a page; every text is escaped here.
class Page {
 public:
  void Say(const std::string& sentence, Tone tone = Tone::kPlain);
  // The first row is the headings, the first cell of each other row names it.
  void Table(const std::vector<Row>& rows);
  // Rows of a name and a value.
  void Facts(const std::vector<Row>& rows);
  // Side by side as far as there is room.
  void Pictures(const std::vector<std::string>& svgs);
  // Folded up under its name.
  void Folded(const std::string& name, const std::string& text);
  void Section(const std::string& title, const Page& content);

  // The whole, with a summary below the title.
  [[nodiscard]] std::string Whole(const std::string& title, const std::string& summary) const;

 private:
  void Scrolled(const std::string& name, const std::string& content);

  std::string body_;
  int sections_ = 0;
};

}  // namespace tool
