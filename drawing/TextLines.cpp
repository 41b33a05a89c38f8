#include "drawing/TextLines.h"

#include <glib.h>

#include <algorithm>

#include "drawing/TextFormat.h"
#include "drawing/TextRenderer.h"
#include "vrx/XpTextCodec.h"

namespace vrx::drawing {
namespace {

constexpr char16_t kReplacement = 0xFFFD;
constexpr char16_t kNextLine = 0x85, kLineSeparator = 0x2028, kParagraphSeparator = 0x2029;
// Code units times em size that layout is sure to count in 32 bits of 1/1024 pixel, with room for wide
// glyphs.
constexpr double kMaxLineExtent = 1 << 19;

bool IsLineBreak(char16_t c) {
  return c == u'\n' || c == u'\v' || c == u'\f' || c == kNextLine || c == kLineSeparator ||
         c == kParagraphSeparator;
}

constexpr int kMaxMarks = 30;

/// Drops what exceeds kMaxMarks combining marks in a row, in place.
void ThinMarks(std::u16string& text) {
  std::size_t out = 0;
  int marks = 0;
  for (std::size_t i = 0; i < text.size();) {
    char32_t c = text[i];
    const std::size_t units = textcodec::IsHighSurrogate(c) ? 2 : 1;
    if (units == 2) c = 0x10000 + ((c - 0xD800) << 10) + (text[i + 1] - char32_t{0xDC00});
    marks = g_unichar_ismark(c) ? marks + 1 : 0;
    for (std::size_t k = 0; k < units && marks <= kMaxMarks; ++k) text[out++] = text[i + k];
    i += units;
  }
  text.resize(out);
}

bool IsControl(char16_t c) { return c < 0x20 || (c >= 0x7F && c < 0xA0); }

}  // namespace

std::u16string_view CutText(std::u16string_view text, std::size_t limit) {
  if (text.size() <= limit) return text;
  const bool splitsPair =
      limit > 0 && textcodec::IsHighSurrogate(text[limit - 1]) && textcodec::IsLowSurrogate(text[limit]);
  return text.substr(0, splitsPair ? limit - 1 : limit);
}

std::size_t TextLimit(double emPixels) {
  return std::min(kMaxTextUnits, static_cast<std::size_t>(kMaxLineExtent / std::max(emPixels, 1.0)));
}

std::u16string CleanText(std::u16string_view text, std::uint32_t format) {
  const char16_t lineBreak = (format & DT_SINGLELINE) != 0 ? u' ' : u'\n';
  const bool hasPrefix = (format & DT_NOPREFIX) == 0;
  std::u16string clean;
  clean.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char16_t c = text[i];
    const char16_t next = i + 1 < text.size() ? text[i + 1] : char16_t{0};
    if (c == u'\r') {
      if (next != u'\n') clean.push_back(lineBreak);
    } else if (IsLineBreak(c)) {
      clean.push_back(lineBreak);
    } else if (hasPrefix && c == u'&') {
      if (next == u'&') clean.push_back(text[++i]);
    } else if (textcodec::IsHighSurrogate(c) && textcodec::IsLowSurrogate(next)) {
      clean.push_back(c);
      clean.push_back(text[++i]);
    } else if (textcodec::IsHighSurrogate(c) || textcodec::IsLowSurrogate(c)) {
      clean.push_back(kReplacement);
    } else {
      clean.push_back(IsControl(c) ? u' ' : c);
    }
  }
  if (!clean.empty() && clean.back() == u'\n') clean.pop_back();
  ThinMarks(clean);
  return clean;
}

LinePlacement PlaceLines(std::span<const Size> lines, const Rect& rect, std::uint32_t format) {
  LinePlacement placement{rect.top, lines.size()};
  const std::int64_t height = SizeOfLines(lines).height;
  if ((format & DT_SINGLELINE) != 0) {
    if ((format & DT_VCENTER) != 0) {
      placement.top += (rect.Height() - height) / 2;
    } else if ((format & DT_BOTTOM) != 0) {
      placement.top = rect.bottom - height;
    }
  }
  if ((format & DT_EDITCONTROL) != 0) {
    std::int64_t bottom = placement.top;
    for (std::size_t i = 0; i < lines.size(); ++i) {
      bottom += lines[i].height;
      if (i > 0 && bottom > rect.bottom) {
        placement.lineCount = i;
        break;
      }
    }
  }
  return placement;
}

std::int64_t LineOffset(std::int64_t lineWidth, std::int64_t rectWidth, std::uint32_t format) {
  if ((format & DT_CENTER) != 0) return (rectWidth - lineWidth) / 2;
  if ((format & DT_RIGHT) != 0) return rectWidth - lineWidth;
  return 0;
}

Size SizeOfLines(std::span<const Size> lines) {
  std::int64_t width = 0, height = 0;
  for (const Size& line : lines) {
    width = std::max<std::int64_t>(width, line.width);
    height += line.height;
  }
  return {Saturated(width), Saturated(height)};
}

}  // namespace vrx::drawing
