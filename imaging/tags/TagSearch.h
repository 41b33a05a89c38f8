// Finds entries of the IFDs in a stored file without reading the tree, and the way to the maker note. The
// edits of single tags stand on it.
#pragma once

#include <cstdint>
#include <optional>

#include "imaging/tags/StreamWindow.h"
#include "imaging/tags/TagEdits.h"

namespace vrx::imaging {

/// An IFD of the stream. `base` is where the offsets in it count from.
struct StoredIfd {
  std::int64_t position = 0;
  std::int64_t base = 0;
  bool bigEndian = false;

  // Positions in the stream of a part of the entry with this number.
  std::int64_t CountOf(std::uint32_t index) const;
  std::int64_t ValueFieldOf(std::uint32_t index) const;
};

struct FoundEntry {
  std::uint32_t index = 0;
  std::int64_t target = 0;  // the value field as an offset from the base
};

/// IFD 0 of the TIFF header at `base`; nothing without a header, or when the file ends at once.
std::optional<StoredIfd> FirstIfd(StreamWindow& window, std::int64_t base);
/// The IFD that follows, unless the chain ends there or leads astray.
std::optional<StoredIfd> NextIfd(StreamWindow& window, const StoredIfd& ifd);
std::optional<FoundEntry> SearchEntry(StreamWindow& window, const StoredIfd& ifd, const EntryQuery& query);

std::optional<StoredIfd> ExifIfd(StreamWindow& window, const StoredIfd& first);
/// The IFD of the maker note, which without `requireSignature` may also begin at once.
std::optional<StoredIfd> MakerIfd(StreamWindow& window, const StoredIfd& first, bool requireSignature);

}  // namespace vrx::imaging
