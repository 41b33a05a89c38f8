#include "foundation/text/NearestName.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>

namespace vrx {
namespace {

using View = std::u16string_view;

/// Names are no longer than this; what is longer is not compared, which bounds the work.
constexpr std::size_t kLongestName = 64;

char16_t Lower(char16_t c) { return c >= u'A' && c <= u'Z' ? static_cast<char16_t>(c - u'A' + u'a') : c; }

std::size_t Distance(View a, View b) {
  // The rows of the last two characters of `a` and of the current one.
  std::array<std::size_t, kLongestName + 1> rows[3];
  std::size_t *before = rows[0].data(), *last = rows[1].data(), *row = rows[2].data();
  for (std::size_t j = 0; j <= b.size(); ++j) row[j] = j;
  for (std::size_t i = 1; i <= a.size(); ++i) {
    std::swap(before, last);
    std::swap(last, row);
    row[0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const bool isSame = Lower(a[i - 1]) == Lower(b[j - 1]);
      row[j] = std::min({last[j] + 1, row[j - 1] + 1, last[j - 1] + (isSame ? 0 : 1)});
      const bool isExchanged =
          i > 1 && j > 1 && Lower(a[i - 1]) == Lower(b[j - 2]) && Lower(a[i - 2]) == Lower(b[j - 1]);
      if (isExchanged) row[j] = std::min(row[j], before[j - 2] + 1);
    }
  }
  return row[b.size()];
}

std::size_t AllowedMistakes(std::size_t length) {
  constexpr std::size_t kShort = 5;
  constexpr std::size_t kMiddle = 9;
  if (length <= 2) return 0;
  if (length <= kShort) return 1;
  return length <= kMiddle ? 2 : 3;
}

}  // namespace

std::optional<View> NearestName(View name, std::span<const View> names) {
  std::optional<View> nearest;
  std::size_t least = AllowedMistakes(name.size()) + 1;
  if (name.size() > kLongestName) return nearest;
  for (const View candidate : names) {
    const std::size_t longer = std::max(name.size(), candidate.size());
    // Each character more is a mistake at least.
    if (longer > kLongestName || longer - std::min(name.size(), candidate.size()) >= least) continue;
    const std::size_t distance = Distance(name, candidate);
    if (distance >= least) continue;
    least = distance;
    nearest = candidate;
  }
  return nearest;
}

}  // namespace vrx
