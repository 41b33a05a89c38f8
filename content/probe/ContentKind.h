// What the bytes of a file are, whatever its name says, and how that is known. `vrx probe` shows it.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "content/formats/FormatCodes.h"
#include "vrx/XpResult.h"
#include "vrx/XpString.h"

namespace vrx::formats {

struct ContentKind {
  std::string_view name;  // such as "PNG picture"; lives as long as the program
  std::string why;        // one sentence, of printable ASCII characters
  /// What the names of such files say, as GetFormatFromName gives it; lives as long as the program.
  std::span<const FormatCode> named;

  /// Whether a file of this kind may have a name that says this. True for names of which it is not known what
  /// their files hold.
  bool Fits(FormatCode byName) const;
};

/// Looks at the first 4 KiB, and further into pictures that may be several. The results of opening and
/// reading; XpErrNotAFile for a device and its like.
XpResult FindContentKind(const XpString& path, ContentKind& kind);

}  // namespace vrx::formats
