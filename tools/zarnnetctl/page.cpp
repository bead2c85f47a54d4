// SPDX-License-Identifier: Apache-2.0
#include "page.h"

#include "markup.h"
#include "page_style.h"

namespace tool {
namespace {

std::string ClassOf(Tone tone) {
  switch (tone) {
    case Tone::kGood:
      return " class=\"good\"";
    case Tone::kBad:
      return " class=\"bad\"";
    case Tone::kHeading:
    case Tone::kPlain:
      break;
  }
  return "";
}

std::string Element(const std::string& name, const std::string& attributes, const Cell& cell) {
  return "<" + name + attributes + ClassOf(cell.tone) + ">" +
         (cell.text.empty() ? "-" : Escaped(cell.text)) + "</" + name + ">";
}

std::string RowOf(const Row& row, bool isHeading) {
  std::string html = "<tr>";
  for (const Cell& cell : row) {
    const bool names = isHeading || &cell == &row.front();
    html += Element(names ? "th" : "td",
                    isHeading ? " scope=\"col\""
                    : names   ? " scope=\"row\""
                              : "",
                    cell);
  }
  return html + "</tr>\n";
}

}  // namespace

void Page::Say(const std::string& sentence, Tone tone) {
  body_ += Element("p", "", {sentence, tone}) + "\n";
}

// What is wider than the page scrolls by itself; the keyboard reaches it, too.
void Page::Scrolled(const std::string& name, const std::string& content) {
  body_ += "<div class=\"scroll\" role=\"region\" tabindex=\"0\" aria-label=\"" + Escaped(name) +
           "\">" + content + "</div>\n";
}

void Page::Table(const std::vector<Row>& rows) {
  std::string html = "<table>\n<thead>" + RowOf(rows.front(), true) + "</thead>\n<tbody>\n";
  for (std::size_t i = 1; i < rows.size(); ++i)
    html += RowOf(rows[i], false);
  Scrolled("Table", html + "</tbody>\n</table>");
}

void Page::Facts(const std::vector<Row>& rows) {
  std::string html = "<table class=\"facts\">\n<tbody>\n";
  for (const Row& row : rows)
    html += RowOf(row, false);
  Scrolled("Facts", html + "</tbody>\n</table>");
}

void Page::Pictures(const std::vector<std::string>& svgs) {
  body_ += "<div class=\"pictures\">\n";
  for (const std::string& svg : svgs)
    Scrolled("Picture", svg);
  body_ += "</div>\n";
}

void Page::Folded(const std::string& name, const std::string& text) {
  body_ += "<details>" + Element("summary", "", {name}) + "\n<pre tabindex=\"0\">" +
           EscapedLines(text) + "</pre></details>\n";
}

void Page::Section(const std::string& title, const Page& content) {
  const std::string id = "s" + std::to_string(++sections_);
  body_ += "<section aria-labelledby=\"" + id + "\">\n" +
           Element("h2", " id=\"" + id + "\"", {title}) + "\n" + content.body_ + "</section>\n";
}

std::string Page::Whole(const std::string& title, const std::string& summary) const {
  return std::string("<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\"/>\n") +
         "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; "
         "img-src data:; style-src 'unsafe-inline'\"/>\n"
         "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\"/>\n"
         "<meta name=\"color-scheme\" content=\"light dark\"/>\n"
         "<meta name=\"referrer\" content=\"no-referrer\"/>\n"
         "<link rel=\"icon\" href=\"data:,\"/>\n" +
         Element("title", "", {title}) + "\n<style>\n" + kPageStyle +
         "</style>\n</head>\n<body>\n<main>\n" + Element("h1", "", {title}) + "\n" +
         Element("p", " class=\"summary\"", {summary}) + "\n" + body_ +
         "</main>\n</body>\n</html>\n";
}

}  // namespace tool
