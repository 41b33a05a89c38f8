// The index of a multi-picture file, in the MPF segment of its first picture: which pictures there are and
// where they lie. Published as the Multi-Picture Format (CIPA DC-007). The codec finds its pictures by it,
// listings show it, and the rewrite of a JPEG file keeps it right.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "foundation/file/XpAbstractFile.h"
#include "imaging/tags/XpTiffTagManager.h"
#include "vrx/XpResult.h"

namespace vrx::imaging {

/// What a picture is for.
enum class MpType : std::uint32_t {
  Undefined = 0,
  LargeThumbnailVga = 0x010001,
  LargeThumbnailFullHd = 0x010002,
  Panorama = 0x020001,
  Disparity = 0x020002,
  MultiAngle = 0x020003,
  BaselinePrimary = 0x030000,
  Original = 0x040000,
  GainMap = 0x050000,
};

struct MpEntry {
  std::size_t number = 0;  // in the table, from 0
  std::uint32_t attribute = 0;
  std::uint32_t size = 0;    // bytes
  std::uint32_t offset = 0;  // from the TIFF header of the index; 0 for the first picture

  bool IsChild() const { return (attribute & 0x40000000) != 0; }  // belongs to another picture
  bool IsRepresentative() const { return (attribute & 0x20000000) != 0; }
  MpType Type() const { return static_cast<MpType>(attribute & 0x00FFFFFF); }
};

/// The entries in their order. A frame is a picture that belongs to no other. The pointers are null when
/// there is no such entry.
struct MpTable {
  std::vector<MpEntry> entries;

  const MpEntry* Primary() const;
  const MpEntry* Representative() const;
  const MpEntry* Frame(std::int64_t number) const;  // from 0
  const MpEntry* Child(std::int64_t number) const;  // from 0
  std::int64_t CountFrames() const;
};

/// Of an index that was read as tags. Only what lies in the tag of the table is believed, and of that the
/// first 1,024 entries. Empty when there is no such tag.
MpTable ReadMpTable(const XpTiffTagManager& index);
/// The same, but also empty when the index is null, and unless it has exactly two IFDs: one for the table and
/// one for what the first picture is among the others.
MpTable ReadUsableMpTable(const XpTiffTagManager* index);

/// A table with its place in an MPF segment.
struct MpIndex : MpTable {
  bool isBigEndian = false;
  std::int64_t tableAt = 0;  // from the TIFF header of the index

  std::int64_t PositionOf(const MpEntry& entry) const;  // likewise
};

/// From the body of an MPF segment. Nothing unless its index has a table of entries.
std::optional<MpIndex> ReadMpIndex(std::span<const std::uint8_t> body);

// In a stream, where the first picture begins at `offset`. All positions are those of the stream.
/// The TIFF header of the index. XpErrImageNoData when none of the segments that open the picture has one.
XpResult FindMpHeader(XpAbstractFile& stream, std::int64_t offset, std::int64_t& header);
/// XpErrPastEnd when the picture would begin at the end of the stream or past it.
XpResult FindMpPicture(XpAbstractFile& stream, std::int64_t offset, std::int64_t header, const MpEntry& entry,
                       std::int64_t& start);

/// Keeps the work on all pictures of an index within bounds. The heads of pictures lie one after another;
/// where a file makes them begin within each other, a search through each of them would take for ever.
class MpHeadBudget {
 public:
  explicit MpHeadBudget(XpAbstractFile& stream) : m_stream(stream), m_left(stream.GetSize()) {}
  /// Walks over the segments that open a picture. False when those of all pictures so far are longer than the
  /// stream.
  bool Spend(std::int64_t start);

 private:
  XpAbstractFile& m_stream;
  std::int64_t m_left;
};

/// The TIFF header of the index in the body of its segment.
inline constexpr std::int64_t kMpHeaderAt = 4;
// Fields of an entry, from its start.
inline constexpr std::int64_t kMpSizeAt = 4;
inline constexpr std::int64_t kMpOffsetAt = 8;

}  // namespace vrx::imaging
