#include "tests/imaging/MpoFile.h"

namespace jpegfiles {

using vrx::test_support::TagBytes;

namespace {

constexpr std::size_t kTableAt = 38;
constexpr std::size_t kEntryBytes = 16;

/// After the APP segments that open a JPEG file.
std::size_t EndOfSegments(const Bytes& jpeg) {
  std::size_t at = 2;
  while ((jpeg[at + 1] & 0xF0) == 0xE0) at += 2u + ((jpeg[at + 2] & 0xFF) << 8 | (jpeg[at + 3] & 0xFF));
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

Bytes MpoFile(const std::vector<MpoPicture>& pictures, const MpIndexForm& form) {
  const Bytes& first = pictures.front().jpeg;
  const std::size_t at = EndOfSegments(first);
  std::vector<MpStoredEntry> entries;
  for (const MpoPicture& picture : pictures) {
    entries.push_back({picture.attribute, static_cast<std::uint32_t>(picture.jpeg.size()), 0});
  }
  std::size_t end = first.size() + MpIndexSegment(form, entries).size();
  entries.front().size = static_cast<std::uint32_t>(end);
  const std::size_t header = at + 8;
  for (std::size_t i = 1; i < pictures.size(); ++i) {
    entries[i].offset = static_cast<std::uint32_t>(end - header);
    end += pictures[i].jpeg.size();
  }
  Bytes file = Bytes(first).insert(at, MpIndexSegment(form, entries));
  for (std::size_t i = 1; i < pictures.size(); ++i) file += pictures[i].jpeg;
  return file;
}

std::vector<std::size_t> MpoStarts(const Bytes& file, const std::vector<MpoPicture>& pictures) {
  std::vector<std::size_t> starts(pictures.size());
  std::size_t end = file.size();
  for (std::size_t i = pictures.size(); i-- > 1;) starts[i] = end -= pictures[i].jpeg.size();
  return starts;
}

std::size_t MpHeaderOf(const Bytes& file) { return file.find(Bytes("MPF\0", 4)) + 4; }

Bytes WithMpField(Bytes file, std::size_t entry, MpField field, std::uint32_t value, bool isBig) {
  const std::size_t at = MpHeaderOf(file) + kTableAt + entry * kEntryBytes + static_cast<std::size_t>(field);
  return file.replace(at, 4, TagBytes{.bigEndian = isBig}.U32(value));
}

}  // namespace jpegfiles
