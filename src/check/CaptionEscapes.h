// Finds in the texts of captions what other programs take for line breaks, characters or styles: captions
// have no escapes, and show it as it stands.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

#include "src/check/TextReport.h"

namespace vrx::check {

class CaptionEscapes {
 public:
  /// `line` is that of the document on which the caption's text begins.
  void Look(std::u16string_view text, std::size_t caption, std::uint64_t line);
  /// Names each kind of escape once, with the first caption that has one and how many others have.
  void Report(TextReport& report) const;

 private:
  enum Kind { Break, Character, Style, Kinds };
  struct Finding {
    XpString escape;
    std::size_t caption = 0;
    std::uint64_t line = 0;
    std::size_t captions = 0;  // that have one
    std::size_t lastCaption = 0;
  };
  static Kind KindOf(std::u16string_view escape);

  std::array<Finding, Kinds> m_findings;  // the first of each kind
};

}  // namespace vrx::check
