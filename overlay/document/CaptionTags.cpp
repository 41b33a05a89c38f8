#include "overlay/document/CaptionTags.h"

namespace vrx::overlay {

TagSearch FindTagged(std::u16string_view text, const CaptionTag& tag, std::u16string_view& value) {
  const std::size_t open = text.find(tag.open);
  if (open == text.npos) return TagSearch::NoOpening;
  const std::size_t start = open + tag.open.size();
  const std::size_t close = text.find(tag.close, start);
  if (close == text.npos) return TagSearch::NoClosing;
  value = text.substr(start, close - start);
  return TagSearch::Found;
}

TagSearch CaptionBodies::Next(std::u16string_view& body) {
  const TagSearch result = FindTagged(m_rest, kCaptionTag, body);
  m_rest = result == TagSearch::Found ? m_rest.substr(static_cast<std::size_t>(body.end() - m_rest.begin()))
                                      : std::u16string_view();
  return result;
}

}  // namespace vrx::overlay
