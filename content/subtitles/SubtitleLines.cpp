#include "content/subtitles/SubtitleLines.h"

#include <unicode/unistr.h>
#include <unicode/ustring.h>

namespace vrx::subtitles {
namespace {

constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
constexpr std::string_view kBlanks = " \t";

/// The name of the converter for UTF-16; null for all other encodings.
const char* Utf16Name(std::string_view bytes) {
  if (bytes.size() < 2) return nullptr;
  const char first = bytes[0];
  const char second = bytes[1];
  if ((first == '\xFF' && second == '\xFE') || (first != '\0' && second == '\0')) return "UTF-16LE";
  if ((first == '\xFE' && second == '\xFF') || (first == '\0' && second != '\0')) return "UTF-16BE";
  return nullptr;
}

std::string Converted(std::string_view bytes, const char* encoding) {
  std::string text;
  icu::UnicodeString(bytes.data(), static_cast<std::int32_t>(bytes.size()), encoding).toUTF8String(text);
  return text;
}

bool IsUtf8(std::string_view text) {
  UErrorCode error = U_ZERO_ERROR;
  std::int32_t length = 0;
  u_strFromUTF8(nullptr, 0, &length, text.data(), static_cast<std::int32_t>(text.size()), &error);
  return error != U_INVALID_CHAR_FOUND;
}

}  // namespace

std::string_view WithoutBlanks(std::string_view text) {
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

SubtitleLines::SubtitleLines(std::span<const char> bytes) : m_rest(bytes.data(), bytes.size()) {
  if (const char* encoding = Utf16Name(m_rest)) {
    m_converted = Converted(m_rest.substr(0, m_rest.size() / 2 * 2), encoding);
    m_rest = m_converted;
  }
  Next();
}

void SubtitleLines::Next() {
  m_line = {};
  m_isAtEnd = m_rest.empty();
  if (m_isAtEnd) return;
  ++m_number;
  const std::size_t end = m_rest.find_first_of("\r\n");
  SetLine(m_rest.substr(0, end));
  if (end == std::string_view::npos) {
    m_rest = {};
    return;
  }
  m_rest.remove_prefix(end);
  for (const std::string_view ending : {"\r\r\n", "\r\n", "\r", "\n"}) {
    if (!m_rest.starts_with(ending)) continue;
    m_rest.remove_prefix(ending.size());
    return;
  }
}

void SubtitleLines::SetLine(std::string_view bytes) {
  if (!IsUtf8(bytes)) {
    if (m_foreignLines++ == 0) m_firstForeignLine = m_number;
    m_foreign = Converted(bytes, "windows-1252");
    bytes = m_foreign;
  }
  while (bytes.starts_with(kUtf8Mark)) bytes.remove_prefix(kUtf8Mark.size());
  m_line = WithoutBlanks(bytes);
}

}  // namespace vrx::subtitles
