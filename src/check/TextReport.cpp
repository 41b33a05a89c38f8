#include "src/check/TextReport.h"

#include "foundation/text/XpFormat.h"

namespace vrx::check {
namespace {

constexpr std::size_t kMostProblems = 50;

}  // namespace

TextReport::~TextReport() {
  if (m_count <= kMostProblems) return;
  XpString message;
  XpFormat(message, u"has %I64u more problems", static_cast<std::uint64_t>(m_count - kMostProblems));
  Push(message, 0);
}

void TextReport::Add(const XpString& message, std::uint64_t line) {
  if (++m_count <= kMostProblems) Push(message, line);
}

void TextReport::Add(const XpString& what, std::size_t number, const XpString& message, std::uint64_t line) {
  XpString place;
  XpFormat(place, u"%s %u: %s", what, static_cast<std::uint32_t>(number), message);
  Add(place, line);
}

void TextReport::Push(const XpString& message, std::uint64_t line) {
  m_problems.push_back({.severity = Severity::Warning,
                        .file = m_text.file,
                        .key = m_text.key,
                        .message = message,
                        .line = line != 0 ? line : m_text.line});
}

}  // namespace vrx::check
