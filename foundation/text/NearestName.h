// Finds the name that a mistyped one was meant to be. Checks of documents and the command line make their
// suggestions with it.
#pragma once

#include <optional>
#include <span>
#include <string_view>

namespace vrx {

/// The one of `names` that is nearest to `name`, if it is near enough to be what was meant: by inserted,
/// dropped, wrong and exchanged characters (the Damerau-Levenshtein distance in its restricted form), without
/// regard to the case of ASCII letters. Short names allow fewer mistakes. Of equally near ones the first.
std::optional<std::u16string_view> NearestName(std::u16string_view name,
                                               std::span<const std::u16string_view> names);

}  // namespace vrx
