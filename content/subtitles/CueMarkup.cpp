#include "content/subtitles/CueMarkup.h"

#include <algorithm>
#include <charconv>
#include <cstdint>

#include <unicode/uchar.h>
#include <unicode/unistr.h>

#include "content/subtitles/SubtitleLines.h"

namespace vrx::subtitles {
namespace {

constexpr UChar32 kLastControl = 0x1F;
constexpr UChar32 kDelete = 0x7F;
constexpr UChar32 kLastUpperControl = 0x9F;
constexpr UChar32 kByteOrderMark = 0xFEFF;
constexpr UChar32 kReplacement = 0xFFFD;
constexpr UChar32 kLastCharacter = 0x10FFFF;
constexpr std::size_t kLongestReference = 10;

enum class Tag { None, Bold, Italic, Style, Break, Reading, Silent };

struct TagName {
  std::string_view name;
  Tag tag;
};
constexpr TagName kTags[] = {
    {"b", Tag::Bold},   {"strong", Tag::Bold}, {"i", Tag::Italic},     {"em", Tag::Italic},
    {"u", Tag::Style},  {"s", Tag::Style},     {"strike", Tag::Style}, {"font", Tag::Style},
    {"c", Tag::Style},  {"br", Tag::Break},    {"rt", Tag::Reading},   {"ruby", Tag::Silent},
    {"v", Tag::Silent}, {"lang", Tag::Silent}, {"span", Tag::Style},   {"p", Tag::Silent},
};

struct Reference {
  std::string_view name;
  UChar32 character;
};
constexpr Reference kReferences[] = {
    {"amp", '&'},       {"lt", '<'},       {"gt", '>'},       {"quot", '"'},
    {"apos", '\''},     {"nbsp", 0x00A0},  {"lrm", 0x200E},   {"rlm", 0x200F},
    {"hellip", 0x2026}, {"ndash", 0x2013}, {"mdash", 0x2014},
};

bool IsLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

Tag FindTag(std::string_view name) {
  std::string small(name);
  for (char& c : small) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  const auto* found = std::ranges::find(kTags, small, &TagName::name);
  return found == std::end(kTags) ? Tag::None : found->tag;
}

void AppendCharacter(UChar32 c, std::string& text) { icu::UnicodeString(c).toUTF8String(text); }

bool IsKept(UChar32 c) {
  constexpr UChar32 kPlaneMask = 0xFFFE;
  if (c == '\t') return true;
  if (c <= kLastControl || (c >= kDelete && c <= kLastUpperControl) || c == kByteOrderMark) return false;
  return (c & kPlaneMask) != kPlaneMask;  // the last two of each plane are no characters
}

bool IsVisible(UChar32 c) { return !u_isUWhiteSpace(c) && u_charType(c) != U_FORMAT_CHAR; }

/// Lines without blanks around them, without control characters, and none that shows nothing.
std::string Tidied(std::string_view text) {
  const icu::UnicodeString characters = icu::UnicodeString::fromUTF8(text);
  std::string tidied;
  std::string line;
  bool hasVisible = false;
  const auto endLine = [&] {
    const std::string_view kept = WithoutBlanks(line);
    if (hasVisible && !tidied.empty()) tidied += '\n';
    if (hasVisible) tidied += kept;
    line.clear();
    hasVisible = false;
  };
  for (std::int32_t at = 0; at < characters.length(); at = characters.moveIndex32(at, 1)) {
    const UChar32 c = characters.char32At(at);
    if (c == '\n') endLine();
    if (!IsKept(c)) continue;
    AppendCharacter(c == '\t' ? ' ' : c, line);
    hasVisible = hasVisible || IsVisible(c);
  }
  endLine();
  return tidied;
}

class MarkupReader {
 public:
  MarkupReader(std::string_view marked, Format format) : m_rest(marked), m_format(format) {}

  PlainText Read() {
    while (!m_rest.empty()) {
      const char c = m_rest.front();
      if (c == '<' && TakeTag()) continue;
      if (c == '{' && TakeBraces()) continue;
      if (c == '&' && TakeReference()) continue;
      Append(m_rest.substr(0, 1));
      m_rest.remove_prefix(1);
    }
    m_plain.text = Tidied(m_text);
    m_plain.bold = m_visible != 0 && m_bold.visible == m_visible;
    m_plain.italic = m_visible != 0 && m_italic.visible == m_visible;
    const auto isPart = [this](const Style& style) {
      return style.visible != 0 && style.visible != m_visible;
    };
    m_plain.hasPartStyle = isPart(m_bold) || isPart(m_italic);
    return m_plain;
  }

 private:
  struct Style {
    std::size_t depth = 0;  // of tags
    bool isSet = false;     // by braces
    std::size_t visible = 0;

    bool IsOn() const { return depth != 0 || isSet; }
  };

  void Append(std::string_view bytes) {
    m_text += bytes;
    if (bytes == " " || bytes == "\n" || bytes == "\t") return;
    m_visible += bytes.size();
    if (m_bold.IsOn()) m_bold.visible += bytes.size();
    if (m_italic.IsOn()) m_italic.visible += bytes.size();
  }

  /// What is between the mark at the front and `end`; nothing when another mark comes before that.
  std::optional<std::string_view> Enclosed(char end) const {
    const char marks[] = {m_rest.front(), end};
    const std::size_t at = m_rest.find_first_of(std::string_view(marks, 2), 1);
    if (at == std::string_view::npos || m_rest[at] != end) return {};
    return m_rest.substr(1, at - 1);
  }

  bool TakeTag() {
    constexpr std::size_t kBrackets = 2;
    const auto enclosed = Enclosed('>');
    if (!enclosed) return false;
    std::string_view name = *enclosed;
    const bool isEnd = name.starts_with('/');
    if (isEnd) name.remove_prefix(1);
    const auto* end = std::ranges::find_if_not(name, [](char c) { return IsLetter(c); });
    name = name.substr(0, static_cast<std::size_t>(end - name.begin()));
    const Tag tag = FindTag(name);
    if (tag == Tag::None && !IsUnknownTag(*enclosed)) return false;
    m_rest.remove_prefix(enclosed->size() + kBrackets);
    Apply(tag, isEnd);
    return true;
  }

  bool IsUnknownTag(std::string_view enclosed) const {
    const bool isTime = !enclosed.empty() && IsDigit(enclosed.front()) &&
                        enclosed.find_first_not_of("0123456789:.,") == std::string_view::npos &&
                        enclosed.find(':') != std::string_view::npos;
    if (m_format == Format::SubRip) return isTime;
    return enclosed.empty() ||
           (enclosed.front() != ' ' && enclosed.front() != '\t' && enclosed.front() != '\n');
  }

  void Apply(Tag tag, bool isEnd) {
    const auto nest = [isEnd](Style& style) {
      if (!isEnd) ++style.depth;
      if (isEnd && style.depth != 0) --style.depth;
    };
    if (tag == Tag::Bold) nest(m_bold);
    if (tag == Tag::Italic) nest(m_italic);
    if (tag == Tag::Style) m_plain.hasOtherStyle = true;
    if (tag == Tag::Break) Append("\n");
    // The reading of characters is shown above them where there is room, and after them here.
    if (tag == Tag::Reading) Append(isEnd ? ")" : "(");
  }

  bool TakeBraces() {
    constexpr std::size_t kBraces = 2;
    constexpr std::string_view kOldStyles = "CcFfoPSsYy";  // as in "{Y:i}"
    const auto enclosed = Enclosed('}');
    if (!enclosed || enclosed->size() < 2) return false;
    const bool isOldStyle =
        kOldStyles.find(enclosed->front()) != std::string_view::npos && (*enclosed)[1] == ':';
    if (enclosed->front() != '\\' && !isOldStyle) return false;
    m_rest.remove_prefix(enclosed->size() + kBraces);
    if (isOldStyle) {
      m_plain.hasOtherStyle = true;
      return true;
    }
    for (std::string_view overrides = enclosed->substr(1); !overrides.empty();) {
      const std::size_t end = overrides.find('\\');
      Override(overrides.substr(0, end));
      overrides.remove_prefix(end == std::string_view::npos ? overrides.size() : end + 1);
    }
    return true;
  }

  /// One of SubStation's overrides, as "an8".
  void Override(std::string_view text) {
    const auto* digits = std::ranges::find_if_not(text, [](char c) { return IsLetter(c); });
    const std::string_view name = text.substr(0, static_cast<std::size_t>(digits - text.begin()));
    int value = 0;
    std::from_chars(text.data() + name.size(), text.data() + text.size(), value);
    if (name == "an") {
      m_plain.place = NumpadPlace(value);
    } else if (name == "a") {
      m_plain.place = OldPlace(value);
    } else if (name == "b") {
      m_bold.isSet = value > 0;
    } else if (name == "i") {
      m_italic.isSet = value > 0;
    } else if (name == "pos" || name == "move") {
      m_plain.hasPosition = true;
    } else {
      if (name == "r") m_bold.isSet = m_italic.isSet = false;
      m_plain.hasOtherStyle = true;
    }
  }

  /// By the keys of a number pad.
  static std::optional<Place> NumpadPlace(int key) {
    if (key >= 1 && key <= 3) return Place::Bottom;
    if (key >= 4 && key <= 6) return Place::Middle;
    if (key >= 7 && key <= 9) return Place::Top;
    return {};
  }
  static std::optional<Place> OldPlace(int value) {
    if (value >= 1 && value <= 3) return Place::Bottom;
    if (value >= 5 && value <= 7) return Place::Top;
    if (value >= 9 && value <= 11) return Place::Middle;
    return {};
  }

  bool TakeReference() {
    const std::size_t end = m_rest.substr(0, kLongestReference).find(';');
    if (end == std::string_view::npos) return false;
    const auto character = Referenced(m_rest.substr(1, end - 1));
    if (!character) return false;
    m_rest.remove_prefix(end + 1);
    std::string bytes;
    AppendCharacter(*character, bytes);
    Append(bytes);
    return true;
  }

  static std::optional<UChar32> Referenced(std::string_view name) {
    if (!name.starts_with('#')) {
      const auto* found = std::ranges::find(kReferences, name, &Reference::name);
      return found == std::end(kReferences) ? std::nullopt : std::optional(found->character);
    }
    name.remove_prefix(1);
    const bool isHex = name.starts_with('x') || name.starts_with('X');
    if (isHex) name.remove_prefix(1);
    constexpr int kHex = 16;
    constexpr int kDecimal = 10;
    std::uint32_t number = 0;
    const auto [end, error] =
        std::from_chars(name.data(), name.data() + name.size(), number, isHex ? kHex : kDecimal);
    if (error != std::errc() || end != name.data() + name.size()) return {};
    if (number > static_cast<std::uint32_t>(kLastCharacter)) return kReplacement;
    return static_cast<UChar32>(number);
  }

  std::string_view m_rest;
  Format m_format;
  std::string m_text;
  std::size_t m_visible = 0;  // bytes of text that are no blanks
  Style m_bold;
  Style m_italic;
  PlainText m_plain;
};

}  // namespace

PlainText TakeMarkupOut(std::string_view marked, Format format) {
  return MarkupReader(marked, format).Read();
}

}  // namespace vrx::subtitles
