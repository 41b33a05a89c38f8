#include "imaging/codecs/GpsReplacement.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <vector>

#include "imaging/tags/StreamWindow.h"
#include "imaging/tags/TagLayout.h"
#include "imaging/tags/TagNames.h"
#include "imaging/tags/TagWriting.h"

namespace vrx::imaging {

namespace {

// They say how and in which system the position was found, which another position does not change.
constexpr std::uint16_t kTagsThatStay[] = {kTagGpsSatellites, kTagGpsMapDatum, kTagGpsProcessingMethod,
                                           kTagGpsAreaInformation};

XpResult CompareValue(const XpTiffTagDataBase& old, const XpTiffTagIFD& replacement) {
  const XpTiffTagDataBase* value = replacement.FindTag(old.tag, false);
  if (value == nullptr) return XpErrImageNoData;
  const std::uint64_t size = value->GetByteSize();
  if (value->GetType() != old.GetType() || value->count != old.count || size != old.GetByteSize()) {
    return XpErrImageMismatch;
  }
  const bool stays = std::ranges::find(kTagsThatStay, old.tag) != std::end(kTagsThatStay);
  const bool isSame = std::memcmp(value->GetData(), old.GetData(), static_cast<std::size_t>(size)) == 0;
  return stays && !isSame ? XpErrImageMismatch : XpOk;
}

/// Both are sorted.
XpResult CompareTags(const XpTiffTagIFD& old, const XpTiffTagIFD& replacement) {
  if (replacement.GetStoredSize(false) != old.GetStoredSize(false) ||
      replacement.GetTagCount() != old.GetTagCount()) {
    return XpErrImageNoData;
  }
  for (const auto& value : old.values) {
    if (const XpResult result = CompareValue(*value, replacement)) return result;
  }
  return XpOk;
}

/// The bytes from the start of a stored IFD on, and which of them are its own.
class StoredPlace {
 public:
  explicit StoredPlace(std::uint64_t size)
      : m_bytes(static_cast<std::size_t>(size)), m_isUsed(static_cast<std::size_t>(size)) {}

  std::vector<std::uint8_t>& Bytes() { return m_bytes; }

  /// Whether nothing else lies here: values may be stored anywhere, so that something else could be between
  /// them. `position` is an offset from the TIFF header, as those of the values.
  bool IsAllOwn(std::int64_t position, std::size_t tagCount, bool bigEndian) {
    if (Get16(m_bytes.data(), bigEndian) != tagCount || !Use(0, IfdHeadSize(tagCount))) return false;
    for (std::size_t i = 0; i < tagCount; ++i) {
      const std::uint8_t* entry = m_bytes.data() + kIfdCountSize + i * kEntrySize;
      const std::uint64_t size = std::uint64_t{Get32(entry + kEntryCountAt, bigEndian)} *
                                 StoredTypeSize(Get16(entry + kEntryTypeAt, bigEndian));
      const std::int64_t start = std::int64_t{Get32(entry + kEntryValueAt, bigEndian)} - position;
      if (size > kEntryValueSize && !Use(start, size)) return false;
    }
    for (std::size_t i = 0; i < m_bytes.size(); ++i) {
      if (!m_isUsed[i] && m_bytes[i] != 0) return false;  // more than what fills up an odd value
    }
    return true;
  }

 private:
  bool Use(std::int64_t start, std::uint64_t size) {
    const auto before = static_cast<std::uint64_t>(start);  // large for a start that lies in front
    if (before > m_bytes.size() || size > m_bytes.size() - before) return false;
    const auto first = m_isUsed.begin() + start, last = first + static_cast<std::ptrdiff_t>(size);
    if (std::find(first, last, true) != last) return false;
    std::fill(first, last, true);
    return true;
  }

  std::vector<std::uint8_t> m_bytes;
  std::vector<bool> m_isUsed;
};

}  // namespace

XpResult ReplaceGpsIfd(XpAbstractFile& stream, std::int64_t base, const XpTiffTagManager& tags,
                       const XpGPSRecord& record) {
  XpTiffTagIFD* old = tags.GetGpsIfd();
  if (old == nullptr) return XpErrImageNoData;
  const auto& pointer = static_cast<const XpTiffTagDataIFD&>(*tags.GetIfd(0)->FindTag(kTagGpsIfd, false));
  if (pointer.count != 1) return XpErrImageUnusable;
  const std::uint32_t position = pointer.elements[0];
  const std::uint64_t size = old->GetStoredSize(false);
  StreamWindow window(stream);
  if (!window.Holds(base + position, size)) return XpErrImageInvalid;
  XpTiffTagIFD replacement;
  if (const XpResult result = AddGpsTags(replacement, record)) return result;
  replacement.Normalize();
  old->Normalize();
  if (const XpResult result = CompareTags(*old, replacement)) return result;
  StoredPlace place(size);
  if (!window.Read(base + position, place.Bytes())) return XpErrImageUnusable;
  if (!place.IsAllOwn(position, old->GetTagCount(), tags.bigEndian)) return XpErrImageUnusable;
  if (const XpResult result = stream.Seek(base + position, XpSeekStart)) return result;
  std::int64_t written = 0;
  return WriteIfd(stream, replacement, tags.bigEndian, position, 0, written);
}

}  // namespace vrx::imaging
