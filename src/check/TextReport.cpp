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
  Push(message);
}

void TextReport::Add(const XpString& message) {
  if (++m_count <= kMostProblems) Push(message);
}

void TextReport::Add(const XpString& what, std::size_t number, const XpString& message) {
  XpString place;
  XpFormat(place, u"%s %u: %s", what, static_cast<std::uint32_t>(number), message);
  Add(place);
}

void TextReport::Push(const XpString& message) {
  m_problems.push_back({Severity::Warning, m_file, XpString(), 0, m_key, message});
}

}  // namespace vrx::check
