// Checks the tagged text of captions. Their reader takes from it what it can; this names what it cannot.
#pragma once

#include <cstdint>
#include <set>
#include <vector>

#include "src/check/TextReport.h"

namespace vrx::check {

/// What other checks have to know of the captions, which are counted from 1 as the reader counts them.
struct CaptionPlaces {
  std::vector<std::uint64_t> lines;  // of the document, on which each begins
  std::set<std::size_t> damaged;     // captions with a problem that can keep them from showing

  /// 0 for a caption that is not there, such as number 0.
  std::uint64_t LineOf(std::size_t number) const {
    return number >= 1 && number <= lines.size() ? lines[number - 1] : 0;
  }
};

/// Damaged captions and tags, numbers that are none, sizes and colours that cannot be meant, and escapes that
/// will be shown as letters. The first problems are named, the others counted.
CaptionPlaces CheckCaptionText(const DocumentText& text, std::vector<Problem>& problems);

}  // namespace vrx::check
