#include "tests/imaging/MpoFile.h"

namespace jpegfiles {

using vrx::test_support::TagBytes;

namespace {

constexpr std::size_t kTableAt = 38;
constexpr std::size_t kEntryBytes = 16;

/// After the APP segments that open a JPEG file.
std::size_t EndOfSegments(const Bytes& jpeg) {
  std::size_t at = 2;
  while ((jpeg[at + 1] & 0xF0) == 0xE0) {
    at += static_cast<std::size_t>(2 + ((jpeg[at + 2] & 0xFF) << 8 | (jpeg[at + 3] & 0xFF)));
  }
  return at;
}

}  // namespace

Bytes MpIndexSegment(const MpIndexForm& form, const std::vector<MpStoredEntry>& entries) {
  const TagBytes order{.bigEndian = form.isBig};
  Bytes table;
  for (const MpStoredEntry& entry : entries) {
    table += order.U32(entry.attribute) + order.U32(entry.size) + order.U32(entry.offset) + order.U32(0);
  }
  const auto count = static_cast<std::uint32_t>(entries.size());
  const auto size = static_cast<std::uint32_t>(table.size());
  std::uint32_t next = kTableAt + size;
  Bytes body = Bytes("MPF\0", 4) + order.Header() +
               order.Ifd({order.Entry(0xB001, form.countType, 1, count + form.moreEntries),
                          order.Entry(0xB002, form.tableType, size, kTableAt)},
                         form.ifds > 1 ? next : 0) +
               table;
  for (int i = 1; i < form.ifds; ++i) {
    next += 18;
    body += order.Ifd({order.Entry(0xB101, 4, 1, 1)}, i + 1 < form.ifds ? next : 0);
  }
  return App(2, body);
}

MpoFile::MpoFile(const std::vector<MpoPicture>& pictures, const MpIndexForm& form) {
  const Bytes& first = pictures.front().jpeg;
  const std::size_t at = EndOfSegments(first);
  header = at + 8;
  std::vector<MpStoredEntry> entries(pictures.size());
  starts = {0, first.size() + MpIndexSegment(form, entries).size()};
  for (std::size_t i = 0; i < pictures.size(); ++i) {
    if (i > 0) starts.push_back(starts[i] + pictures[i].jpeg.size());
    entries[i] = {pictures[i].attribute, static_cast<std::uint32_t>(starts[i + 1] - starts[i]),
                  static_cast<std::uint32_t>(i == 0 ? 0 : starts[i] - header)};
  }
  bytes = Bytes(first).insert(at, MpIndexSegment(form, entries));
  for (std::size_t i = 1; i < pictures.size(); ++i) bytes += pictures[i].jpeg;
}

MpoFile& MpoFile::Set(std::size_t entry, MpField field, std::size_t value) {
  const std::size_t at = header + kTableAt + entry * kEntryBytes + static_cast<std::size_t>(field);
  bytes.replace(at, 4, imagefiles::Little(static_cast<std::uint32_t>(value), 4));
  return *this;
}

}  // namespace jpegfiles
