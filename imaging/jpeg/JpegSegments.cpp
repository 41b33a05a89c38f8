#include "imaging/jpeg/JpegSegments.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string>
#include <vector>

namespace vrx::imaging {

namespace {

constexpr std::uint8_t kMarker = 0xFF;
constexpr std::uint8_t kStartOfImage = 0xD8;
constexpr std::uint8_t kEndOfImage = 0xD9;
constexpr std::uint8_t kFirstRestart = 0xD0;  // to kStartOfImage: no segment follows
constexpr std::uint8_t kTemporary = 0x01;     // likewise
constexpr std::uint8_t kApp0 = 0xE0;
constexpr std::uint8_t kApp1 = 0xE1;
constexpr std::uint8_t kApp15 = 0xEF;
constexpr std::int64_t kLengthBytes = 2;
constexpr std::size_t kScanBytes = 256 * 1024;

std::uint16_t Big16(const std::uint8_t* bytes) {
  return static_cast<std::uint16_t>(bytes[0] << 8 | bytes[1]);
}

bool IsAppMarker(const std::uint8_t* marker) {
  return marker[0] == kMarker && marker[1] >= kApp0 && marker[1] <= kApp15;
}

/// The length of a segment whose length field is next. One below 2 would lead backwards.
XpResult ReadLength(XpAbstractFile& stream, std::uint16_t& length) {
  std::array<std::uint8_t, kLengthBytes> bytes;
  if (const XpResult result = ReadExactly(stream, bytes.data(), bytes.size())) return result;
  length = Big16(bytes.data());
  return length < kLengthBytes ? XpErrImageInvalid : XpOk;
}

/// Goes through the bytes from a position in large blocks.
class MarkerScan {
 public:
  MarkerScan(XpAbstractFile& stream, std::int64_t start)
      : m_stream(stream), m_block(kScanBytes), m_start(start) {}

  std::int64_t Position() const { return m_start + static_cast<std::int64_t>(m_at); }

  void SkipTo(std::int64_t position) {
    const std::int64_t offset = position - m_start;
    if (offset <= static_cast<std::int64_t>(m_length)) {
      m_at = static_cast<std::size_t>(offset);
      return;
    }
    m_start = position;
    m_at = m_length = 0;
  }

  /// False at the end of the stream.
  bool Next(std::uint8_t& byte) {
    if (m_at == m_length && !Fill()) return false;
    byte = m_block[m_at++];
    return true;
  }

  /// Moves to after the next marker byte.
  bool FindMarker() {
    while (m_at < m_length || Fill()) {
      const void* found = std::memchr(&m_block[m_at], kMarker, m_length - m_at);
      if (found != nullptr) {
        m_at = static_cast<std::size_t>(static_cast<const std::uint8_t*>(found) - m_block.data()) + 1;
        return true;
      }
      m_at = m_length;
    }
    return false;
  }

  XpResult Result() const { return m_result; }

 private:
  bool Fill() {
    m_start += static_cast<std::int64_t>(m_length);
    m_at = m_length = 0;
    std::uint64_t read = 0;
    XpResult result = m_stream.Seek(m_start, XpSeekStart);
    if (result == XpOk) result = m_stream.Read(m_block.data(), m_block.size(), &read);
    if (result != XpOk && result != XpErrEndOfFile) m_result = result;
    m_length = static_cast<std::size_t>(read);
    return m_length > 0;
  }

  XpAbstractFile& m_stream;
  std::vector<std::uint8_t> m_block;
  std::int64_t m_start;  // of the block in the stream
  std::size_t m_length = 0;
  std::size_t m_at = 0;
  XpResult m_result = XpOk;
};

bool StandsAlone(std::uint8_t marker) {
  return marker == 0 || marker == kTemporary || (marker >= kFirstRestart && marker <= kStartOfImage);
}

/// From the first marker after the application segments. In coded data a marker byte is followed by a zero or
/// a restart marker, so only true segments are skipped.
bool FindEnd(MarkerScan& scan) {
  std::uint8_t marker = 0;
  while (scan.FindMarker()) {
    do {
      if (!scan.Next(marker)) return false;
    } while (marker == kMarker);
    if (marker == kEndOfImage) return true;
    if (StandsAlone(marker)) continue;
    std::array<std::uint8_t, kLengthBytes> length;
    const std::int64_t segment = scan.Position();
    if (!scan.Next(length[0]) || !scan.Next(length[1])) return false;
    scan.SkipTo(segment + std::max<std::int64_t>(Big16(length.data()), kLengthBytes));
  }
  return false;
}

}  // namespace

bool IsSegment(const JpegSegment& segment, int number, std::string_view name) {
  return segment.number == number && segment.body.size() >= name.size() &&
         std::memcmp(segment.body.data(), name.data(), name.size()) == 0;
}

XpResult ReadExactly(XpAbstractFile& stream, void* buffer, std::uint64_t count) {
  std::uint64_t read = 0;
  const XpResult result = stream.Read(buffer, count, &read);
  return result == XpOk && read < count ? XpErrEndOfFile : result;
}

XpResult WalkAppSegments(XpAbstractFile& stream) {
  std::array<std::uint8_t, 2> marker;
  if (const XpResult result = ReadExactly(stream, marker.data(), marker.size())) return result;
  if (marker[0] != kMarker || marker[1] != kStartOfImage) return XpErrImageInvalid;
  for (;;) {
    if (const XpResult result = ReadExactly(stream, marker.data(), marker.size())) return result;
    if (marker[0] != kMarker) return XpErrImageInvalid;
    if (!IsAppMarker(marker.data())) return XpOk;
    std::uint16_t length = 0;
    if (const XpResult result = ReadLength(stream, length)) return result;
    if (const XpResult result = stream.Seek(length - kLengthBytes, XpSeekCurrent)) return result;
  }
}

XpResult SeekToExif(XpAbstractFile& stream, std::int64_t offset) {
  if (const XpResult result = stream.Seek(offset, XpSeekStart)) return result;
  if (const XpResult result = WalkAppSegments(stream)) return result;
  if (const XpResult result = stream.Seek(offset + 2, XpSeekStart)) return result;
  for (;;) {
    std::array<std::uint8_t, 2> marker;
    if (const XpResult result = ReadExactly(stream, marker.data(), marker.size())) return result;
    if (!IsAppMarker(marker.data())) return XpErrImageNoData;
    std::uint16_t length = 0;
    if (const XpResult result = ReadLength(stream, length)) return result;
    std::int64_t left = length - kLengthBytes;
    if (marker[1] == kApp1) {
      // Four bytes decide: some writers put something else than a zero after the name.
      std::array<char, kExifHeadBytes> head;
      if (const XpResult result = ReadExactly(stream, head.data(), head.size())) return result;
      if (std::string_view(head.data(), 4) == "Exif") return XpOk;
      left -= kExifHeadBytes;
    }
    if (const XpResult result = stream.Seek(left, XpSeekCurrent)) return result;
  }
}

XpResult FindAppSegment(XpAbstractFile& stream, std::int64_t offset, int number, std::string_view name,
                        std::int64_t& body) {
  for (std::int64_t at = offset + 2;;) {
    std::array<std::uint8_t, 4> head;  // marker and length
    if (const XpResult result = stream.Seek(at, XpSeekStart)) return result;
    if (const XpResult result = ReadExactly(stream, head.data(), head.size())) return result;
    if (!IsAppMarker(head.data())) return XpErrImageNoData;
    const std::size_t length = Big16(head.data() + 2);
    std::string start(name.size(), '\0');
    if (head[1] == kApp0 + number && length >= kLengthBytes + name.size()) {
      if (const XpResult result = ReadExactly(stream, start.data(), start.size())) return result;
      if (start == name) {
        body = at + 4;
        return XpOk;
      }
    }
    at += 2 + static_cast<std::int64_t>(std::max<std::size_t>(length, kLengthBytes));
  }
}

XpResult FindCodedPicture(XpAbstractFile& stream, std::int64_t offset, CodedPicture& picture) {
  picture = {.start = offset + 2};
  for (;;) {
    std::array<std::uint8_t, 4> head;  // marker and length
    if (const XpResult result = stream.Seek(picture.start, XpSeekStart)) return result;
    if (const XpResult result = ReadExactly(stream, head.data(), head.size())) return result;
    if (!IsAppMarker(head.data())) break;
    picture.start += 2 + std::max<std::int64_t>(Big16(head.data() + 2), kLengthBytes);
    ++picture.appSegments;
  }
  MarkerScan scan(stream, picture.start);
  if (!FindEnd(scan)) return scan.Result() == XpOk ? XpErrImageInvalid : scan.Result();
  picture.end = scan.Position();
  return XpOk;
}

}  // namespace vrx::imaging
