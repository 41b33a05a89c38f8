// What the system's fonts can and cannot do for a text: whether a face is there, what stands in for it, and
// which characters no font has. The check of captions asks it.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "vrx/XpString.h"

namespace vrx::drawing {

/// Installed: the face is there, or one of the system's general names for whatever it likes best, such as
/// "Sans". Alias: the font system knows which of its fonts stands in for it. Missing: it knows nothing of the
/// face, and takes what it takes for any unknown one.
enum class FontPresence { Installed, Alias, Missing };

struct FontFinding {
  FontPresence presence = FontPresence::Missing;
  XpString taken;  // the family that is drawn with; empty when the system has no font at all
};

class FontCheck {
 public:
  virtual ~FontCheck() = default;

  /// An empty `face` is the system's choice.
  virtual FontFinding FindFont(const XpString& face) = 0;
  /// The characters of `text` that no font has, each once, in their order: text renderers draw a box for
  /// them.
  virtual std::u32string MissingCharacters(std::u16string_view text, const XpString& face) = 0;
  /// The names of the families that are installed, in no particular order.
  virtual std::vector<XpString> ListFamilies() = 0;

  /// Asks the fonts that the text renderer of the movie draws with.
  static std::unique_ptr<FontCheck> OfSystem();
};

}  // namespace vrx::drawing
