// Takes the markup out of the text of a caption. The reader of subtitles uses it.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "content/subtitles/Subtitles.h"

namespace vrx::subtitles {

enum class Format { SubRip, WebVtt };

/// A caption's text and what its markup said of all of it.
struct PlainText {
  std::string text;
  bool bold = false;
  bool italic = false;
  std::optional<Place> place;
  bool hasPartStyle = false;   // a part of the text is bold or italic
  bool hasOtherStyle = false;  // fonts, colours, classes, lines through or below letters
  bool hasPosition = false;    // a place in pixels
};

/// Of lines with '\n' between them, in UTF-8. WebVTT has no text in angle brackets unless a blank or nothing
/// comes after the first one, and SubRip only markup that players know; both know the markup in braces of
/// SubStation files and the character references of HTML that subtitle files use. What is no markup stays as
/// it is.
PlainText TakeMarkupOut(std::string_view marked, Format format);

}  // namespace vrx::subtitles
