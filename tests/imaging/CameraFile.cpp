#include "tests/imaging/CameraFile.h"

#include <array>

#include "imaging/tags/XpTiffTagManager.h"

namespace jpegfiles {

namespace {

std::unique_ptr<XpTiffTagIFD> MakerNote(const CameraForm& form) {
  auto note = std::make_unique<XpTiffTagIFD>();
  note->isMakerNote = true;
  note->SetUndefined(0x2001, nullptr, 0);
  if (form.hasRating) note->SetLong(0x2002, 1);
  Bytes dates = "before" + form.noteDate + '\0' + Bytes(60, 'x');
  note->SetUndefined(0x3000, dates.data(), static_cast<std::uint32_t>(dates.size()));
  auto sub = std::make_unique<XpTiffTagIFD>();
  sub->SetLong(0x0001, 5);
  for (const auto dropped : std::to_array<std::uint16_t>({0x0002, 0x0080, 0x0088, 0x0089})) {
    sub->SetLong(dropped, 6);
  }
  auto leads = std::make_unique<XpTiffTagDataIFD>(std::uint16_t{0xB028}, 1u);
  leads->ifds.push_back(std::move(sub));
  note->AddTag(std::move(leads));
  return note;
}

void AddBelow(XpTiffTagIFD& ifd, std::uint16_t tag, std::unique_ptr<XpTiffTagIFD> below) {
  auto leads = std::make_unique<XpTiffTagDataIFD>(tag, 1u);
  leads->ifds.push_back(std::move(below));
  ifd.AddTag(std::move(leads));
}

}  // namespace

Bytes CameraThumbnail() { return imagefiles::Jpeg(imagefiles::Smooth(16, 12, 3)); }
Bytes CameraPicture() {
  static const Bytes picture = WithSegments(imagefiles::Jpeg(imagefiles::Noise(61, 47, 3)), {});
  return picture;
}

Bytes CameraFile(const CameraForm& form) {
  XpTiffTagManager tags;
  tags.Create();
  tags.bigEndian = true;
  const auto add = [&]() -> XpTiffTagIFD& {
    tags.root->ifds.push_back(std::make_unique<XpTiffTagIFD>());
    return *tags.root->ifds.back();
  };
  XpTiffTagIFD& first = add();
  first.SetShort(0x0112, 6);
  first.SetAscii(0x0132, kCameraDate);
  auto exif = std::make_unique<XpTiffTagIFD>();
  exif->SetUndefined(0x9000, "0220", 4);
  exif->SetAscii(0x9003, "2019:09:08 07:06:05");
  if (form.filling > 0) exif->SetUndefined(0x9286, nullptr, form.filling);
  if (form.hasNote) AddBelow(*exif, 0x927C, MakerNote(form));
  AddBelow(first, 0x8769, std::move(exif));
  auto gps = std::make_unique<XpTiffTagIFD>();
  gps->SetAscii(0x0001, "N");
  AddBelow(first, 0x8825, std::move(gps));
  const Bytes thumbnail = CameraThumbnail();
  if (form.hasThumbnail) {
    XpTiffTagIFD& second = add();
    second.SetAscii(0x0132, kCameraDate);
    second.SetLong(0x0201, 0);
    second.SetLong(0x0202, static_cast<std::uint32_t>(thumbnail.size()));
    add();  // a further IFD
  }
  XpMemoryFile trial;
  const auto size = static_cast<std::uint32_t>(tags.Store(trial));
  if (form.hasThumbnail) tags.GetIfd(1)->SetLong(0x0201, size);
  XpMemoryFile stored;
  tags.Store(stored);
  Bytes tiff(static_cast<const char*>(stored.GetData()), size);
  if (form.hasBrokenTag) tiff[12] = '\x7F';  // the count of the first tag
  std::vector<Bytes> segments{Exif(tiff + (form.hasThumbnail ? thumbnail : Bytes()))};
  segments.insert(segments.end(), form.segments.begin(), form.segments.end());
  Bytes file = WithSegments(CameraPicture(), segments);
  if (!form.preview.empty()) {
    // The reference to the preview in the maker note has a count of 0 so far.
    const std::size_t entry = file.find(Bytes("\x20\x01\x00\x07\x00\x00\x00\x00", 8));
    file.replace(entry + 4, 4, imagefiles::Big(static_cast<std::uint32_t>(form.preview.size()), 4));
    file.replace(entry + 8, 4, imagefiles::Big(static_cast<std::uint32_t>(file.size()) - 12, 4));
  }
  return file + form.preview + form.tail;
}

}  // namespace jpegfiles
