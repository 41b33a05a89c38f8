#include "tests/imaging/TiffFile.h"

#include <algorithm>
#include <vector>

namespace tifffiles {

namespace {

constexpr std::uint32_t kAscii = 2, kShort = 3, kLong = 4, kUndefined = 7;
constexpr std::uint32_t kHeadBytes = 8, kEntryBytes = 12;

/// What stands after an IFD, and where.
class Place {
 public:
  explicit Place(std::uint32_t start) : m_start(start) {}

  std::uint32_t Put(const Bytes& bytes) {
    const auto at = m_start + static_cast<std::uint32_t>(m_bytes.size());
    m_bytes += bytes;
    if (m_bytes.size() % 2 != 0) m_bytes += '\0';
    return at;
  }
  const Bytes& Written() const { return m_bytes; }

 private:
  std::uint32_t m_start;
  Bytes m_bytes;
};

Bytes Short(const TagBytes& tag, std::uint32_t number, std::uint32_t value) {
  return tag.Entry(number, kShort, 1, tag.U16(value) + tag.U16(0));
}

/// The known signature, then an IFD.
Bytes Note(const TagBytes& tag, const PlainTiff& form) {
  std::vector<std::string> entries{tag.Entry(0x1000, kLong, 1, 7)};
  if (form.previewBytes != 0) entries.push_back(tag.Entry(0x2001, kUndefined, form.previewBytes, 8));
  if (form.hasRating) entries.push_back(tag.Entry(0x2002, kLong, 1, 1));
  return Bytes("KELO DSC \0\0\0", 12) + tag.Ifd(entries);
}

Bytes Exif(const TagBytes& tag, const PlainTiff& form, Place& place) {
  std::vector<std::string> entries{
      tag.Entry(0x9003, kAscii, 20, place.Put(Bytes("2001:01:01 01:01:01\0", 20)))};
  if (form.hasNote) {
    const Bytes note = Note(tag, form);
    entries.push_back(
        tag.Entry(0x927C, kUndefined, static_cast<std::uint32_t>(note.size()), place.Put(note)));
  }
  if (form.colourSpace != 0) entries.push_back(Short(tag, 0xA001, form.colourSpace));
  return tag.Ifd(entries);
}

}  // namespace

Bytes Ramp(std::size_t count) {
  Bytes bytes(count, '\0');
  for (std::size_t i = 0; i < count; ++i) bytes[i] = static_cast<char>(i * 37 + 11);
  return bytes;
}

Bytes Tiff(const PlainTiff& form, const Bytes& pixels) {
  const TagBytes tag{form.bigEndian};
  constexpr std::uint32_t kMostEntries = 16;
  Place place(kHeadBytes + 2 + kMostEntries * kEntryBytes + 4);
  const std::uint32_t rowBytes = form.samples * form.bits / 8 * form.width;
  const std::uint32_t strips = (form.height + form.rowsPerStrip - 1) / form.rowsPerStrip;
  std::uint32_t exif = 0;
  if (form.hasNote || form.colourSpace != 0) exif = place.Put(Exif(tag, form, place));
  const std::uint32_t date = place.Put(Bytes("2002:02:02 02:02:02\0", 20));
  const std::uint32_t profile = form.profile.empty() ? 0 : place.Put(form.profile);
  const std::uint32_t data = place.Put(Bytes(strips * 4, '\0') + Bytes(strips * 4, '\0')) + strips * 8;
  Bytes offsets, counts;
  for (std::uint32_t i = 0; i < strips; ++i) {
    const std::uint32_t rows = std::min(form.rowsPerStrip, form.height - i * form.rowsPerStrip);
    offsets += tag.U32(data + i * form.rowsPerStrip * rowBytes);
    counts += tag.U32(rows * rowBytes);
  }
  Entries entries;
  entries[0x100] = tag.Entry(0x100, kLong, 1, form.width);
  entries[0x101] = Short(tag, 0x101, form.height);
  entries[0x102] = Short(tag, 0x102, form.bits);
  entries[0x103] = Short(tag, 0x103, 1);
  entries[0x106] = Short(tag, 0x106, form.photometric);
  entries[0x111] = tag.Entry(0x111, kLong, strips, strips == 1 ? offsets : tag.U32(data - strips * 8));
  if (form.orientation != 0) entries[0x112] = Short(tag, 0x112, form.orientation);
  entries[0x115] = Short(tag, 0x115, form.samples);
  entries[0x116] = tag.Entry(0x116, kLong, 1, form.rowsPerStrip);
  entries[0x117] = tag.Entry(0x117, kLong, strips, strips == 1 ? counts : tag.U32(data - strips * 4));
  entries[0x132] = tag.Entry(0x132, kAscii, 20, date);
  if (exif != 0) entries[0x8769] = tag.Entry(0x8769, kLong, 1, exif);
  if (profile != 0) {
    entries[0x8773] = tag.Entry(0x8773, kUndefined, static_cast<std::uint32_t>(form.profile.size()), profile);
  }
  if (form.change) form.change(tag, entries);
  std::vector<std::string> list;
  for (const auto& [number, entry] : entries) list.push_back(entry);
  Bytes ifd = tag.Ifd(list, form.nextIfd);
  ifd.resize(2 + kMostEntries * kEntryBytes + 4);
  Bytes after = place.Written();
  after.replace(data - strips * 8 - (kHeadBytes + static_cast<std::uint32_t>(ifd.size())), strips * 8,
                offsets + counts);
  return tag.Header() + ifd + after + pixels;
}

}  // namespace tifffiles
