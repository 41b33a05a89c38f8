// Matching of names against patterns with * and ?, for directory listings.
#pragma once

#include <string_view>

namespace vrx {

/// * matches any text, ? one UTF-16 unit. Case is ignored. "*.*" matches every name, also one without
/// a dot.
bool MatchesWildcard(std::u16string_view name, std::u16string_view pattern);

}  // namespace vrx
