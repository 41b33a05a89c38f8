#include "tests/imaging/RawFile.h"

#include <algorithm>
#include <utility>

namespace rawfiles {

namespace {

using Ifd = std::unique_ptr<XpTiffTagIFD>;

constexpr std::uint32_t kLater = 1;  // the place of the preview, until all sizes are known

void AddIfd(XpTiffTagIFD& ifd, std::uint16_t tag, Ifd below) {
  std::vector<Ifd> one;
  one.push_back(std::move(below));
  AddIfds(ifd, tag, std::move(one));
}

void AddFractions(XpTiffTagIFD& ifd, std::uint16_t tag, std::vector<XpTiffFraction> fractions) {
  auto value = std::make_unique<XpTiffTagData<XpTiffTagTypeRational>>(
      tag, static_cast<std::uint32_t>(fractions.size()));
  std::copy(fractions.begin(), fractions.end(), value->elements.get());
  ifd.AddTag(std::move(value));
}

void AddPair(XpTiffTagIFD& ifd, std::uint16_t tag, std::uint32_t high, std::uint32_t low) {
  auto value = std::make_unique<XpTiffTagData<XpTiffTagTypeByte>>(tag, 2u);
  value->elements[0] = static_cast<std::uint8_t>(high);
  value->elements[1] = static_cast<std::uint8_t>(low);
  ifd.AddTag(std::move(value));
}

Ifd Note(const RawForm& form) {
  auto note = std::make_unique<XpTiffTagIFD>();
  note->isMakerNote = form.hasSignature;
  note->SetLong(0x2002, 1);
  AddPair(*note, 0xB000, form.version >> 8, form.version & 0xFF);
  return note;
}

Ifd Exif(const RawForm& form) {
  auto exif = std::make_unique<XpTiffTagIFD>();
  exif->SetAscii(0x9003, kDate);
  exif->SetShort(0xA001, 1);
  if (form.version != 0) AddIfd(*exif, 0x927C, Note(form));
  return exif;
}

/// 48 degrees 8 minutes 13.92 seconds north, 11 degrees 34 minutes 31.80 seconds east, 519 m.
Ifd Gps() {
  auto gps = std::make_unique<XpTiffTagIFD>();
  gps->SetAscii(1, "N");
  AddFractions(*gps, 2, {{48, 1}, {8, 1}, {1392, 100}});
  gps->SetAscii(3, "E");
  AddFractions(*gps, 4, {{11, 1}, {34, 1}, {3180, 100}});
  gps->SetByte(5, 0);
  AddFractions(*gps, 6, {{5190, 10}});
  AddFractions(*gps, 7, {{3, 1}, {4, 1}, {5, 1}});
  gps->SetAscii(8, "07");
  gps->SetAscii(9, "A");
  gps->SetAscii(18, "WGS-84");
  gps->SetUndefined(27, "ASCII\0\0\0GPS", 11);  // an odd size, so that a byte fills it up
  gps->SetUndefined(28, "ASCII\0\0\0Munich", 14);
  gps->SetAscii(29, "2020:01:02");
  gps->SetShort(30, 1);
  return gps;
}

}  // namespace

Bytes Preview() { return imagefiles::Jpeg(imagefiles::Smooth(40, 24, 3)); }

void AddIfds(XpTiffTagIFD& ifd, std::uint16_t tag, std::vector<Ifd> below) {
  auto leads = std::make_unique<XpTiffTagDataIFD>(tag, static_cast<std::uint32_t>(below.size()));
  leads->ifds = std::move(below);
  ifd.AddTag(std::move(leads));
}

Bytes RawFile(const RawForm& form) {
  XpTiffTagManager tags;
  tags.Create();
  tags.bigEndian = form.bigEndian;
  for (int i = 0; i < 2; ++i) tags.root->ifds.push_back(std::make_unique<XpTiffTagIFD>());
  XpTiffTagIFD& first = *tags.GetIfd(0);
  first.SetShort(0x0100, 3000);
  first.SetLong(0x0101, 2000);
  first.SetAscii(0x0110, "KLX-Q9");
  first.SetShort(0x0112, 1);
  first.SetAscii(0x0131, "KLX-Q9 v1.00");
  first.SetAscii(0x0132, kDate);
  AddIfd(first, 0x8769, Exif(form));
  AddIfd(first, 0x8825, Gps());
  tags.GetIfd(1)->SetShort(0x0112, 1);
  XpTiffTagIFD& previewIfd = *tags.GetIfd(form.previewIfd);
  previewIfd.SetLong(0x0201, kLater);
  previewIfd.SetLong(0x0202, static_cast<std::uint32_t>(form.preview.size()));
  if (form.change) form.change(tags);
  XpMemoryFile trial;
  const Bytes sensor(64, '\x5A');
  const auto offset =
      static_cast<std::uint32_t>(tags.Store(trial)) + static_cast<std::uint32_t>(sensor.size());
  if (previewIfd.GetLong(0x0201, 0, false) == kLater) previewIfd.SetLong(0x0201, offset);
  XpMemoryFile stored;
  tags.Store(stored);
  return Bytes(static_cast<const char*>(stored.GetData()), static_cast<std::size_t>(stored.GetSize())) +
         sensor + form.preview;
}

}  // namespace rawfiles
