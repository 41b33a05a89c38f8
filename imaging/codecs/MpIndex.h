// The index of a multi-picture file, in the MPF segment of its first picture: where the other pictures lie.
// Published as the Multi-Picture Format. The rewrite of a JPEG file keeps it right.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "vrx/XpResult.h"

namespace vrx::imaging {

struct MpEntry {
  bool isChild = false;      // belongs to another picture
  std::uint32_t size = 0;    // bytes
  std::uint32_t offset = 0;  // from the TIFF header of the index; 0 for the first picture
  std::uint32_t at = 0;      // of the entry itself, from the TIFF header of the index
};

struct MpIndex {
  bool isBigEndian = false;
  std::vector<MpEntry> entries;

  const MpEntry* Primary() const;                  // null when there is none
  const MpEntry* Child(std::size_t number) const;  // of the children, from 0
};

/// From the body of an MPF segment. Nothing unless its index has a table of entries.
std::optional<MpIndex> ReadMpIndex(std::span<const std::uint8_t> body);

/// The TIFF header of the index in the body.
inline constexpr std::int64_t kMpHeaderAt = 4;
// Fields of an entry, from its start.
inline constexpr std::int64_t kMpSizeAt = 4;
inline constexpr std::int64_t kMpOffsetAt = 8;

}  // namespace vrx::imaging
