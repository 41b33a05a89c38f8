#include "imaging/codecs/SpfSegment.h"

#include <cstring>
#include <optional>
#include "imaging/jpeg/JpegSegments.h"

namespace vrx::imaging {

namespace {

constexpr std::size_t kHeaderAt = 4;  // the TIFF header in the body; all offsets count from it
constexpr std::uint64_t kIfdOffsetAt = 4;
constexpr std::uint64_t kEntryBytes = 12;
constexpr std::uint64_t kEntryValueAt = 8;
constexpr std::uint16_t kKindTag = 0xB002;

/// Numbers of the index, by its own byte order.
class SpfIndex {
 public:
  explicit SpfIndex(std::span<const std::uint8_t> bytes)
      : m_bytes(bytes), m_isBig(bytes.size() >= 2 && bytes[0] == 'M' && bytes[1] == 'M') {}

  std::optional<std::uint32_t> Number(std::uint64_t at, unsigned size) const {
    if (at > m_bytes.size() || m_bytes.size() - at < size) return {};
    std::uint32_t value = 0;
    for (unsigned i = 0; i < size; ++i) {
      const unsigned shift = 8 * (m_isBig ? size - 1 - i : i);
      value |= std::uint32_t{m_bytes[at + i]} << shift;
    }
    return value;
  }

 private:
  std::span<const std::uint8_t> m_bytes;
  bool m_isBig;
};

}  // namespace

bool IsSpfSegment(const JpegSegment& segment) { return IsSegment(segment, kSpfSegment, kSpfName); }

XpResult ReadSpfKind(const JpegSegment& segment, std::uint32_t& kind) {
  kind = 0;
  if (segment.body.size() < kHeaderAt) return XpErrImageInvalid;
  const SpfIndex index(segment.body.subspan(kHeaderAt));
  const auto ifd = index.Number(kIfdOffsetAt, 4);
  const auto entries = ifd ? index.Number(*ifd, 2) : std::nullopt;
  if (!entries) return XpErrImageInvalid;
  for (std::uint64_t i = 0; i < *entries; ++i) {
    const std::uint64_t entry = std::uint64_t{*ifd} + 2 + i * kEntryBytes;
    const auto tag = index.Number(entry, 2);
    if (!tag) break;
    if (*tag != kKindTag) continue;
    const auto offset = index.Number(entry + kEntryValueAt, 4);
    const auto value = offset && *offset != 0 ? index.Number(*offset, 4) : std::nullopt;
    if (!value) break;
    kind = *value;
    return XpOk;
  }
  return XpErrImageInvalid;
}

}  // namespace vrx::imaging
