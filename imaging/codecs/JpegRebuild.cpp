#include "imaging/codecs/JpegRebuild.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <limits>
#include <memory>
#include <optional>
#include <vector>

#include "imaging/codecs/MpIndex.h"
#include "imaging/codecs/OpenedJpeg.h"
#include "imaging/codecs/RebuiltTags.h"
#include "imaging/codecs/SpfSegment.h"
#include "imaging/jpeg/JpegCopy.h"
#include "imaging/jpeg/JpegSegments.h"
#include "imaging/tags/TagEdits.h"
#include "imaging/tags/TagNames.h"

namespace vrx::imaging {

namespace {

constexpr std::int64_t kSegmentHeadBytes = 4;  // marker and length
constexpr std::int64_t kStartBytes = 2;        // the start marker
/// Where the TIFF header of the new file lies, since its Exif segment comes first.
constexpr std::int64_t kNewTiffHeader = kStartBytes + kSegmentHeadBytes + kExifHeadBytes;
constexpr std::int64_t kMovedChildren = 2;

/// Bytes of the source that lie after its coded picture.
struct Trailer {
  std::int64_t start = 0;
  std::int64_t size = 0;
  std::int64_t End() const { return start + size; }
};

class Rebuilder {
 public:
  Rebuilder(const JpegRebuild& rebuild, XpAbstractFile& target) : m_rebuild(rebuild), m_target(target) {}

  XpResult Run() {
    // What could not be read cannot be written again.
    if (m_rebuild.tags.HasLosses()) return XpErrImageInvalid;
    if (const XpResult result = FindCodedPicture(m_rebuild.source, 0, m_picture)) return result;
    if (const XpResult result = PrepareRebuiltTags(m_rebuild.tags, m_rebuild.rating, m_rebuild.now))
      return result;
    const XpResult built =
        BuildExifBlock(m_rebuild.source, m_rebuild.tiffHeader, m_rebuild.tags, m_exifBlock);
    if (built != XpOk) return built;
    if (const XpResult result = CopyPicture()) return result;
    return m_index ? MoveChildren() : MovePreview();
  }

 private:
  XpResult CopyPicture();
  std::vector<JpegSegment> OrderSegments(const std::vector<JpegSegment>& old);
  XpResult CheckTrailers();
  XpResult CheckPadding(std::int64_t start, std::int64_t end);
  XpResult Append(const Trailer& trailer, std::int64_t& position);
  XpResult MovePreview();
  XpResult PatchPreview(std::int64_t position);
  const MpEntry* MovedChild(std::int64_t number) const;
  XpResult MoveChildren();
  XpResult MoveChild(const MpEntry& entry, bool mayHoldPreview);
  XpResult PatchIndex(const MpEntry& entry, std::int64_t field, std::int64_t value);

  bool HasPreview() const { return m_rebuild.tags.previewOffset != 0 && m_rebuild.tags.previewSize != 0; }
  Trailer Preview() const {
    return {m_rebuild.tiffHeader + m_rebuild.tags.previewOffset, m_rebuild.tags.previewSize};
  }

  const JpegRebuild& m_rebuild;
  XpAbstractFile& m_target;
  CodedPicture m_picture;
  std::vector<std::uint8_t> m_exifBlock;
  std::optional<MpIndex> m_index;
  std::int64_t m_oldMpHeader = 0;  // positions of the index's TIFF header in the source and the target
  std::int64_t m_newMpHeader = 0;
};

/// The new Exif segment, the index of the other pictures, then the others as they were. JFIF would have to
/// come first, where Exif has to come first as well.
std::vector<JpegSegment> Rebuilder::OrderSegments(const std::vector<JpegSegment>& old) {
  std::vector<JpegSegment> ordered{{kExifSegment, m_exifBlock}};
  std::int64_t at = kStartBytes + kSegmentHeadBytes + static_cast<std::int64_t>(m_exifBlock.size());
  for (const JpegSegment& segment : old) {
    if (!IsSegment(segment, kMpfSegment, kMpfName)) continue;
    if (!m_index) {
      m_index = ReadMpIndex(segment.body);
      m_newMpHeader = at + kSegmentHeadBytes + kMpHeaderAt;
    }
    ordered.push_back(segment);
    at += kSegmentHeadBytes + static_cast<std::int64_t>(segment.body.size());
  }
  std::ranges::copy_if(old, std::back_inserter(ordered), [](const JpegSegment& segment) {
    return !IsSegment(segment, kExifSegment, kExifName) && !IsSegment(segment, kMpfSegment, kMpfName) &&
           !IsSpfSegment(segment) && !IsSegment(segment, kJfifSegment, kJfifName);
  });
  return ordered;
}

/// All application segments lie before the coded picture in what cameras write, and its bytes are copied.
/// Where some lie among the tables of the picture, its coefficients are coded again without them.
XpResult Rebuilder::CopyPicture() {
  OpenedJpeg jpeg(m_rebuild.source, 0, kAllSegments);
  if (jpeg.Result() != XpOk) return jpeg.Result();
  std::vector<JpegSegment> old = jpeg.Segments();
  const auto isComment = [](const JpegSegment& segment) { return segment.number == kCommentSegment; };
  const auto comments = std::ranges::count_if(old, isComment);
  const bool isInOrder = m_picture.appSegments == std::ssize(old) - comments;
  if (isInOrder) std::erase_if(old, isComment);
  const std::vector<JpegSegment> ordered = OrderSegments(old);
  if (m_index) {
    if (const XpResult result = FindMpHeader(m_rebuild.source, 0, m_oldMpHeader)) return result;
  }
  if (const XpResult result = CheckTrailers()) return result;
  if (isInOrder) return CopyCodedPicture(m_rebuild.source, m_picture, ordered, m_target);
  const XpResult copied = CopyCoefficients(jpeg.Decoder(), ordered, m_target);
  return copied == XpErrInvalidFile ? jpeg.Failure() : copied;
}

/// Nothing that follows the picture may get lost, unless it is padding. With an index its children are what
/// moves along, and a preview only as a part of the first one.
XpResult Rebuilder::CheckTrailers() {
  std::vector<Trailer> known;
  if (HasPreview() && !m_index) known.push_back(Preview());
  for (std::int64_t i = 0; m_index && i < kMovedChildren; ++i) {
    if (const MpEntry* child = MovedChild(i)) known.push_back({m_oldMpHeader + child->offset, child->size});
  }
  std::ranges::sort(known, {}, &Trailer::start);
  known.push_back({m_rebuild.source.GetSize(), 0});
  std::int64_t at = m_picture.end;
  for (const Trailer& trailer : known) {
    if (const XpResult result = CheckPadding(at, trailer.start)) return result;
    at = std::max(at, trailer.End());
  }
  return XpOk;
}

XpResult Rebuilder::CheckPadding(std::int64_t start, std::int64_t end) {
  std::array<std::uint8_t, 4096> block;
  if (start >= end) return XpOk;
  if (const XpResult result = m_rebuild.source.Seek(start, XpSeekStart)) return result;
  while (start < end) {
    const auto part = static_cast<std::size_t>(std::min<std::int64_t>(end - start, std::ssize(block)));
    if (const XpResult result = ReadExactly(m_rebuild.source, block.data(), part)) return result;
    const auto isPadding = [](std::uint8_t byte) { return byte == 0 || byte == 0xFF; };
    if (!std::all_of(block.begin(), block.begin() + part, isPadding)) return XpErrImageNotProvided;
    start += static_cast<std::int64_t>(part);
  }
  return XpOk;
}

/// `position` is where the bytes begin in the target, an even place.
XpResult Rebuilder::Append(const Trailer& trailer, std::int64_t& position) {
  if (const XpResult result = m_target.Seek(0, XpSeekEnd)) return result;
  position = m_target.GetSize();
  if (position % 2 != 0) {
    constexpr std::uint8_t kFiller = 0xFF;
    if (const XpResult result = m_target.Write(&kFiller, 1, nullptr)) return result;
    ++position;
  }
  if (position + trailer.size > std::numeric_limits<std::uint32_t>::max()) return XpErrImageUnusable;
  return CopyBytes(m_rebuild.source, trailer.start, trailer.size, m_target);
}

XpResult Rebuilder::MovePreview() {
  if (!HasPreview()) return XpOk;
  std::int64_t position = 0;
  if (const XpResult result = Append(Preview(), position)) return result;
  return PatchPreview(position);
}

XpResult Rebuilder::PatchPreview(std::int64_t position) {
  return PatchPreviewRef(m_target, static_cast<std::uint32_t>(position - kNewTiffHeader),
                         m_rebuild.tags.previewSize);
}

XpResult Rebuilder::PatchIndex(const MpEntry& entry, std::int64_t field, std::int64_t value) {
  if (const XpResult result = m_target.Seek(m_newMpHeader + m_index->PositionOf(entry) + field, XpSeekStart))
    return result;
  return m_target.WriteUInt32(static_cast<std::uint32_t>(value),
                              m_index->isBigEndian ? XpBigEndian : XpLittleEndian);
}

/// Null when there is no such child, or none that has a place of its own.
const MpEntry* Rebuilder::MovedChild(std::int64_t number) const {
  const MpEntry* child = m_index->Child(number);
  return child == nullptr || child->offset == 0 || child->size == 0 ? nullptr : child;
}

XpResult Rebuilder::MoveChildren() {
  if (const MpEntry* primary = m_index->Primary()) {
    if (const XpResult result = PatchIndex(*primary, kMpSizeAt, m_target.GetSize())) return result;
  }
  for (std::int64_t i = 0; i < kMovedChildren; ++i) {
    const MpEntry* child = MovedChild(i);
    if (child == nullptr) continue;
    if (const XpResult result = MoveChild(*child, i == 0)) return result;
  }
  return XpOk;
}

/// The first child may be what the preview of the maker note lies in.
XpResult Rebuilder::MoveChild(const MpEntry& entry, bool mayHoldPreview) {
  const Trailer child{m_oldMpHeader + entry.offset, entry.size};
  std::int64_t position = 0;
  if (const XpResult result = Append(child, position)) return result;
  if (const XpResult result = PatchIndex(entry, kMpOffsetAt, position - m_newMpHeader)) return result;
  const Trailer preview = Preview();
  const bool holdsPreview = HasPreview() && preview.start > child.start && preview.End() <= child.End();
  return mayHoldPreview && holdsPreview ? PatchPreview(position + preview.start - child.start) : XpOk;
}

}  // namespace

XpResult RebuildJpeg(const JpegRebuild& rebuild, XpAbstractFile& target) {
  return Rebuilder(rebuild, target).Run();
}

}  // namespace vrx::imaging
