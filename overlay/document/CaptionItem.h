// A caption and the tagged text that documents keep captions in. The caption painter shows them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "overlay/document/CaptionTags.h"
#include "vrx/XpString.h"

struct CaptionItem {
  XpString text;
  XpString fontName;
  double fontSize = 0.0;        // pixels of a 1920 by 1080 frame
  std::uint32_t fontColor = 0;  // red in the low byte, then green, blue
  std::int32_t layoutType = 0;  // 1 to 9, by rows from the top left; 0 shows nothing
  std::int32_t startMs = 0;
  std::int32_t endMs = 0;  // the last moment that shows it
  std::int32_t videoId = 0;

  // Additions that other readers of captions pass over; without them a caption looks as it always did.
  double outline = 0.0;            // width around the letters, pixels of the canvas; 0 for none
  std::uint32_t outlineColor = 0;  // as fontColor
  double boxOpacity = 0.0;         // of a dark box around the lines, percent; 0 for none
  bool isBold = false;
  bool isItalic = false;
  double margin = 0.0;      // between the text and the edges of the canvas, pixels of the canvas
  bool isBalanced = false;  // lines of about the same length
};

namespace vrx::overlay {

/// Captions beyond this number are not read.
inline constexpr std::size_t kMaxCaptions = 200'000;

/// What the text of a tag inside a caption means. The check of painter documents decides by it what is wrong.
enum class CaptionValue { Text, Name, Size, Number, Color, Integer, Length, Percent, Switch };

struct CaptionField {
  CaptionTag tag;
  CaptionValue value;
  void (*read)(std::u16string_view text, CaptionItem& item);
  bool isOptional = false;  // most captions do without it

  std::u16string_view GetName() const { return tag.open.substr(1, tag.open.size() - 2); }
};

/// "1" or "true" in any case, with blanks around it; everything else is off.
bool IsSwitchedOn(std::u16string_view text);

/// Every tag that a caption can hold: the table that its reader and its check walk.
std::span<const CaptionField> CaptionFields();

}  // namespace vrx::overlay

/// Appends one item for each <Caption>...</Caption>. A tag that a caption lacks keeps the value of the
/// caption before. A caption without its closing tag ends the reading. Numbers beyond their field stay at its
/// limit.
void ParseCaptionString(const XpString& text, std::vector<CaptionItem>& items);
