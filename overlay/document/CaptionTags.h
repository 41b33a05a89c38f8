// The tagged text of captions, found piece by piece without changing it. Used by its reader and by the check
// of painter documents.
#pragma once

#include <cstddef>
#include <string_view>

namespace vrx::overlay {

struct CaptionTag {
  std::u16string_view open;
  std::u16string_view close;
};

inline constexpr CaptionTag kCaptionTag{u"<Caption>", u"</Caption>"};

enum class TagSearch { Found, NoOpening, NoClosing };

/// The text between the first opening tag and the closing one after it. `value` stays as it is when one of
/// them is not there.
TagSearch FindTagged(std::u16string_view text, const CaptionTag& tag, std::u16string_view& value);

/// Walks over the captions of a text, of which it holds a view.
class CaptionBodies {
 public:
  explicit CaptionBodies(std::u16string_view text) : m_rest(text) {}

  /// What lies between the tags of the next caption. NoClosing: it is not complete, and the walk ends.
  TagSearch Next(std::u16string_view& body);

 private:
  std::u16string_view m_rest;
};

}  // namespace vrx::overlay
