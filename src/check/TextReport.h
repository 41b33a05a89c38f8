// Collects the problems of one text of a painter document. The checks of captions, speed sections and tennis
// shots use it.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "src/check/ProjectReport.h"

namespace vrx::check {

/// A text of a painter document and where it stands.
struct DocumentText {
  XpString text;
  XpString file;           // native path of the document
  XpString key;            // whose value the text is
  std::uint64_t line = 0;  // on which the text begins; 0 when unknown
};

/// Line breaks in a part of such a text, and those before its first other character.
template <class Char>
std::uint64_t Breaks(std::basic_string_view<Char> text) {
  return static_cast<std::uint64_t>(std::ranges::count(text, Char{'\n'}));
}
template <class Char>
std::uint64_t LeadingBreaks(std::basic_string_view<Char> text) {
  constexpr Char kBlanks[] = {' ', '\t', '\r', '\n', 0};
  return Breaks(text.substr(0, text.find_first_not_of(kBlanks)));
}

/// Names the first problems of one text and counts the rest.
class TextReport {
 public:
  /// Both must outlive the report, whose end adds the count.
  TextReport(const DocumentText& text, std::vector<Problem>& problems) : m_text(text), m_problems(problems) {}
  TextReport(const TextReport&) = delete;
  TextReport& operator=(const TextReport&) = delete;
  ~TextReport();

  /// `line` is that of the document, 0 for the one on which the text begins.
  void Add(const XpString& message, std::uint64_t line = 0);
  /// `what` is "caption" or "record"; `number` counts from 1.
  void Add(const XpString& what, std::size_t number, const XpString& message, std::uint64_t line);

 private:
  void Push(const XpString& message, std::uint64_t line);

  const DocumentText& m_text;
  std::vector<Problem>& m_problems;
  std::size_t m_count = 0;
};

}  // namespace vrx::check
