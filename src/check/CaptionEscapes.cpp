#include "src/check/CaptionEscapes.h"

#include <algorithm>
#include <array>
#include <string>

#include "foundation/text/XpFormat.h"

namespace vrx::check {
namespace {

using View = std::u16string_view;

bool IsLetter(char16_t c) { return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z'); }
bool IsDigit(char16_t c) { return c >= u'0' && c <= u'9'; }

/// `text` begins with the mark; gives the length of the escape, or 0 when it is none.
std::size_t EntityLength(View text) {
  constexpr std::size_t kLongest = 10;
  std::size_t end = 1;
  if (end < text.size() && text[end] == u'#') ++end;
  while (end < text.size() && end < kLongest && (IsLetter(text[end]) || IsDigit(text[end]))) ++end;
  return end > 2 && end < text.size() && text[end] == u';' ? end + 1 : 0;
}

std::size_t BreakLength(View text) {
  const bool isBreak = text.size() > 1 && (text[1] == u'n' || text[1] == u'N');
  return isBreak ? 2 : 0;
}

/// "{\i1}" and the like.
std::size_t OverrideLength(View text) {
  if (!text.starts_with(u"{\\")) return 0;
  const std::size_t end = text.find(u'}');
  return end == text.npos ? 0 : end + 1;
}

std::size_t MarkupLength(View text) {
  constexpr std::array<View, 8> kNames{u"b", u"i", u"u", u"s", u"br", u"font", u"em", u"strong"};
  std::size_t start = text.starts_with(u"</") ? 2 : 1;
  std::size_t end = start;
  std::u16string name;
  for (; end < text.size() && IsLetter(text[end]); ++end) {
    name.push_back(static_cast<char16_t>(text[end] | 0x20));  // lower case
  }
  if (std::ranges::find(kNames, View(name)) == kNames.end()) return 0;
  const std::size_t close = text.find(u'>', end);
  const bool isTag = close != text.npos && (close == end || text[end] == u' ' || text[end] == u'/');
  return isTag ? close + 1 : 0;
}

std::size_t EscapeLength(View text) {
  switch (text.front()) {
    case u'&':
      return EntityLength(text);
    case u'\\':
      return BreakLength(text);
    case u'{':
      return OverrideLength(text);
    case u'<':
      return MarkupLength(text);
    default:
      return 0;
  }
}

}  // namespace

CaptionEscapes::Kind CaptionEscapes::KindOf(View escape) {
  if (escape.front() == u'&') return Character;
  return escape.front() == u'\\' || escape.starts_with(u"<br") ? Break : Style;
}

void CaptionEscapes::Look(View text, std::size_t caption, std::uint64_t line) {
  // In a path of a drive a backslash divides folders.
  const bool hasPath = text.find(u":\\") != text.npos;
  while (!text.empty()) {
    const std::size_t at = text.find_first_of(u"\n&\\{<");
    if (at == text.npos) return;
    text.remove_prefix(at);
    if (text.front() == u'\n') ++line;
    const bool isFolder = hasPath && text.front() == u'\\';
    const std::size_t length = isFolder ? 0 : EscapeLength(text);
    if (length > 0) {
      const View escape = text.substr(0, length);
      Finding& finding = m_findings[KindOf(escape)];
      if (finding.captions == 0) finding = {XpString(escape), caption, line, 0, 0};
      if (finding.lastCaption != caption) ++finding.captions;
      finding.lastCaption = caption;
    }
    text.remove_prefix(std::max<std::size_t>(length, 1));
  }
}

void CaptionEscapes::Report(TextReport& report) const {
  constexpr std::int32_t kMostQuoted = 24;
  constexpr std::array<const char16_t*, Kinds> kAdvice{
      u"a line break in the text begins a new line", u"write the character itself",
      u"text has no styles; a caption has <Bold> and <Italic>"};
  for (std::size_t kind = 0; kind < m_findings.size(); ++kind) {
    const Finding& finding = m_findings[kind];
    if (finding.captions == 0) continue;
    XpString message;
    XpFormat(message, u"\"%s\" is shown as it stands: %s", finding.escape.Left(kMostQuoted),
             XpString(kAdvice[kind]));
    if (finding.captions > 1) {
      XpAppendFormat(message, u" (more captions with such: %u)",
                     static_cast<std::uint32_t>(finding.captions - 1));
    }
    report.Add(u"caption", finding.caption, message, finding.line);
  }
}

}  // namespace vrx::check
