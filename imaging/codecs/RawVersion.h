// The version of the layout of a RAW file, by which edits and format checks tell the generations apart.
#pragma once

#include <cstdint>

#include "imaging/tags/XpTiffTagManager.h"

namespace vrx::imaging {

inline constexpr std::uint32_t kRawVersionEarly = 0x100;
/// From this one on, a position can be removed and replaced.
inline constexpr std::uint32_t kRawVersionWithGpsPlace = 0x302;

/// Whether the file comes from the first camera, which writes no version.
bool IsFromEarlyBody(const XpTiffTagManager& tags);
/// kRawVersionEarly for that camera, else what the maker note says, such as 0x302; 0 when it says nothing.
/// `tags` have to be read in XpTagModeAllNotes.
std::uint32_t RawVersionOf(const XpTiffTagManager& tags);

}  // namespace vrx::imaging
