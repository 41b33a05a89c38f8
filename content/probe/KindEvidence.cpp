#include "content/probe/KindEvidence.h"

#include <algorithm>

namespace vrx::formats {
namespace {

std::string Hexadecimal(std::string_view bytes) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  std::string text;
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    if (!text.empty()) text += ' ';
    text += {kDigits[byte >> 4], kDigits[byte & 0xF]};
  }
  return text;
}

}  // namespace

const TextStart& KindEvidence::Text() const {
  const bool isCut = m_size > static_cast<std::int64_t>(m_start.size());
  if (!m_text) m_text = ReadTextStart(m_start, isCut);
  return *m_text;
}

std::string BeginsWithBytes(const KindEvidence& evidence, std::size_t count) {
  return "begins with " + Hexadecimal(evidence.Start().substr(0, count));
}

std::string BeginsWithText(std::string_view text) { return "begins with \"" + std::string(text) + '"'; }

std::string FourCharacters(std::string_view code) {
  const bool isPrintable = std::ranges::all_of(code, [](char c) { return c >= ' ' && c <= '~'; });
  if (!isPrintable) return Hexadecimal(code);
  const std::size_t last = code.find_last_not_of(' ');
  return last == std::string_view::npos ? Hexadecimal(code) : std::string(code.substr(0, last + 1));
}

}  // namespace vrx::formats
