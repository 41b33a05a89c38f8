#include "content/mp4/BoxFile.h"

#include <algorithm>

namespace vrx::mp4 {
namespace {

constexpr std::uint64_t kHeaderBytes = 8;     // size and type
constexpr std::uint64_t kLargeSizeBytes = 8;  // follows when the size is kLargeSizeFollows
constexpr std::uint64_t kUserTypeBytes = 16;  // follows in a "uuid" box
constexpr std::uint64_t kSizeToTheEnd = 0;    // of the parent or of the file
constexpr std::uint64_t kLargeSizeFollows = 1;
constexpr std::size_t kLongestHeader = kHeaderBytes + kLargeSizeBytes + kUserTypeBytes;

std::uint64_t BigEndian(std::span<const std::uint8_t> bytes) {
  std::uint64_t value = 0;
  for (const std::uint8_t byte : bytes) value = value << 8 | byte;
  return value;
}

}  // namespace

bool BoxList::Next(Box& box) {
  // QuickTime ends user data with four zero bytes.
  if (m_end - m_position < kHeaderBytes) return false;
  box.depth = m_depth;
  const bool found = m_file->ReadHeader(m_position, m_end, box);
  m_position = found ? box.end : m_end;
  return found;
}

bool BoxList::Next(FourCc type, Box& box) {
  while (Next(box)) {
    if (box.type == type) return true;
  }
  return false;
}

BoxFile::BoxFile(XpAbstractFile& file, const BoxLimits& limits) : m_file(file), m_limits(limits) {
  NoteProblem(m_file.Seek(0, XpSeekEnd));
  const std::int64_t end = m_result == XpOk ? m_file.Tell() : -1;
  if (end >= 0) {
    m_size = static_cast<std::uint64_t>(end);
  } else {
    NoteProblem(XpErrFileSystem);
  }
}

BoxList BoxFile::Children(const Box& parent, std::uint64_t skipped) {
  const bool fits = parent.depth < m_limits.depth && skipped <= parent.PayloadSize();
  if (!fits) NoteProblem(XpErrMalformedRecord);
  return BoxList(*this, fits ? parent.payload + skipped : parent.end, parent.end, parent.depth + 1);
}

bool BoxFile::Read(std::uint64_t position, std::span<std::uint8_t> bytes) {
  if (position > m_size || bytes.size() > m_size - position || bytes.size() > m_limits.bytes - m_bytes) {
    NoteProblem(XpErrMalformedRecord);
    return false;
  }
  if (bytes.empty()) return true;
  m_bytes += bytes.size();
  XpResult result = m_file.Seek(static_cast<std::int64_t>(position), XpSeekStart);
  std::uint64_t read = 0;
  if (result == XpOk) result = m_file.Read(bytes.data(), bytes.size(), &read);
  // A file that became shorter since it was opened.
  if (result == XpOk && read < bytes.size()) result = XpErrEndOfFile;
  NoteProblem(result);
  return result == XpOk;
}

void BoxFile::NoteProblem(XpResult problem) {
  if (m_result == XpOk) m_result = problem;
}

bool BoxFile::ReadHeader(std::uint64_t position, std::uint64_t end, Box& box) {
  const std::uint64_t space = end - position;
  std::array<std::uint8_t, kLongestHeader> bytes{};
  const std::span header = std::span(bytes).first(std::min<std::uint64_t>(space, kLongestHeader));
  if (m_boxes >= m_limits.boxes) {
    NoteProblem(XpErrMalformedRecord);
    return false;
  }
  ++m_boxes;
  if (!Read(position, header)) return false;
  std::uint64_t size = BigEndian(std::span(bytes).first(4));
  std::uint64_t headerSize = kHeaderBytes;
  box.type = static_cast<FourCc>(BigEndian(std::span(bytes).subspan(4, 4)));
  if (size == kLargeSizeFollows) {
    size = BigEndian(std::span(bytes).subspan(kHeaderBytes, kLargeSizeBytes));
    headerSize += kLargeSizeBytes;
  } else if (size == kSizeToTheEnd) {
    size = space;
  }
  box.userType = {};
  if (box.type == MakeFourCc("uuid")) {
    std::copy_n(bytes.begin() + static_cast<std::ptrdiff_t>(headerSize), kUserTypeBytes,
                box.userType.begin());
    headerSize += kUserTypeBytes;
  }
  if (size < headerSize || size > space) {
    NoteProblem(XpErrMalformedRecord);
    return false;
  }
  box.start = position;
  box.payload = position + headerSize;
  box.end = position + size;
  return true;
}

FullBoxHead BoxPayload::ReadFullBoxHead() {
  const std::uint32_t head = ReadUInt32();
  return {static_cast<std::uint8_t>(head >> 24), head & 0xFFFFFF};
}

bool BoxPayload::ReadBytes(std::span<std::uint8_t> bytes) {
  if (!m_failed && bytes.size() <= GetLeft() && m_file.Read(m_position, bytes)) {
    m_position += bytes.size();
    return true;
  }
  if (!m_failed) m_file.NoteProblem(XpErrMalformedRecord);
  m_failed = true;
  std::fill(bytes.begin(), bytes.end(), std::uint8_t{0});
  return false;
}

void BoxPayload::Skip(std::uint64_t count) {
  if (!m_failed && count <= GetLeft()) {
    m_position += count;
    return;
  }
  if (!m_failed) m_file.NoteProblem(XpErrMalformedRecord);
  m_failed = true;
}

std::uint64_t BoxPayload::ReadNumber(std::size_t bytes) {
  std::array<std::uint8_t, 8> buffer{};
  const std::span number = std::span(buffer).first(bytes);
  return ReadBytes(number) ? BigEndian(number) : 0;
}

}  // namespace vrx::mp4
