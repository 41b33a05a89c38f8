#include "foundation/file/XpWildcard.h"

#include <unicode/uchar.h>

#include <cstddef>

namespace vrx {
namespace {

bool SameCharacter(char16_t a, char16_t b) {
  return a == b || u_foldCase(a, U_FOLD_CASE_DEFAULT) == u_foldCase(b, U_FOLD_CASE_DEFAULT);
}

}  // namespace

bool MatchesWildcard(std::u16string_view name, std::u16string_view pattern) {
  if (pattern == u"*.*") return true;
  // On a mismatch only the last * is extended, so the time is at most the product of the lengths.
  constexpr std::size_t kNone = std::u16string_view::npos;
  std::size_t n = 0;
  std::size_t p = 0;
  std::size_t starPattern = kNone;
  std::size_t starName = 0;
  while (n < name.size()) {
    if (p < pattern.size() && pattern[p] == u'*') {
      starPattern = ++p;
      starName = n;
    } else if (p < pattern.size() && (pattern[p] == u'?' || SameCharacter(pattern[p], name[n]))) {
      ++p;
      ++n;
    } else if (starPattern != kNone) {
      p = starPattern;
      n = ++starName;
    } else {
      return false;
    }
  }
  while (p < pattern.size() && pattern[p] == u'*') ++p;
  return p == pattern.size();
}

}  // namespace vrx
