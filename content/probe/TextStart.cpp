#include "content/probe/TextStart.h"

#include <algorithm>
#include <cstddef>

#include "vrx/XpTextCodec.h"

namespace vrx::formats {
namespace {

constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
constexpr std::string_view kLittleMark = "\xFF\xFE";
constexpr std::string_view kBigMark = "\xFE\xFF";
constexpr std::size_t kLongestCharacter = 4;  // bytes in UTF-8
constexpr std::size_t kLongestName = 64;      // of an element that is shown

bool IsControl(char16_t c) {
  const bool isSpace = c >= u'\t' && c <= u'\r';
  return (c < u' ' && !isSpace) || c == 0x7F;
}

/// No control characters, and nothing that did not come from a character.
bool IsText(std::u16string_view text) {
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (IsControl(text[i]) || text[i] == 0xFFFE || text[i] == 0xFFFF) return false;
    if (textcodec::IsLowSurrogate(text[i])) return false;
    if (!textcodec::IsHighSurrogate(text[i])) continue;
    if (++i == text.size() || !textcodec::IsLowSurrogate(text[i])) return false;
  }
  return true;
}

/// Without the first bytes of a character whose others are missing.
std::string_view WithoutCutCharacter(std::string_view bytes) {
  char32_t ignored = 0;
  for (std::size_t length = 1; length < kLongestCharacter && length <= bytes.size(); ++length) {
    const std::size_t at = bytes.size() - length;
    if (static_cast<unsigned char>(bytes[at]) < 0xC0) continue;
    return textcodec::DecodeOne(bytes.substr(at), ignored) == 0 ? bytes.substr(0, at) : bytes;
  }
  return bytes;
}

bool DecodeUtf8(std::string_view bytes, bool isCut, std::u16string& text) {
  text = textcodec::ToUtf16(isCut ? WithoutCutCharacter(bytes) : bytes);
  return IsText(text);
}

bool DecodeUtf16(std::string_view bytes, bool isBig, bool isCut, std::u16string& text) {
  if (bytes.size() % 2 != 0 && !isCut) return false;
  for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
    const auto first = static_cast<unsigned char>(bytes[i]),
               second = static_cast<unsigned char>(bytes[i + 1]);
    text.push_back(static_cast<char16_t>(isBig ? first << 8 | second : second << 8 | first));
  }
  if (isCut && !text.empty() && textcodec::IsHighSurrogate(text.back())) text.pop_back();
  return IsText(text);
}

void SkipPast(std::u16string_view& text, std::u16string_view mark) {
  const std::size_t at = text.find(mark);
  text.remove_prefix(at == std::u16string_view::npos ? text.size() : at + mark.size());
}

void SkipSpace(std::u16string_view& text) {
  text.remove_prefix(std::min(text.find_first_not_of(u" \t\r\n"), text.size()));
}

/// Empty when the text is no XML up to there.
std::string RootElementOf(std::u16string_view text) {
  for (SkipSpace(text); text.starts_with(u"<?") || text.starts_with(u"<!"); SkipSpace(text)) {
    SkipPast(text, text.starts_with(u"<!--") ? u"-->" : text.starts_with(u"<?") ? u"?>" : u">");
  }
  if (!text.starts_with(u'<')) return {};
  text.remove_prefix(1);
  std::string name;
  for (const char16_t c : text.substr(0, text.find_first_of(u" \t\r\n/>"))) {
    if (c <= u' ' || c > u'~' || name.size() == kLongestName) return {};
    name.push_back(static_cast<char>(c));
  }
  return name;
}

}  // namespace

TextStart ReadTextStart(std::string_view start, bool isCut) {
  TextStart found;
  std::u16string text;
  const bool isLittle = start.starts_with(kLittleMark), isBig = start.starts_with(kBigMark);
  if (isLittle || isBig) {
    found.mark = isBig ? "FE FF" : "FF FE";
    if (!DecodeUtf16(start.substr(kLittleMark.size()), isBig, isCut, text)) return found;
    found.encoding = TextEncoding::Utf16;
  } else {
    if (start.starts_with(kUtf8Mark)) {
      found.mark = "EF BB BF";
      start.remove_prefix(kUtf8Mark.size());
    }
    if (!DecodeUtf8(start, isCut, text)) return found;
    found.encoding = TextEncoding::Utf8;
  }
  found.hasDeclaration = text.starts_with(u"<?xml");
  found.rootElement = RootElementOf(text);
  return found;
}

}  // namespace vrx::formats
