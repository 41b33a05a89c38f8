// JPEG pictures whose maker notes and segments say which kind they are. The tests of the deep check and of
// contents use them.
#pragma once

#include <algorithm>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "tests/imaging/JpegFiles.h"
#include "tests/imaging/RawFile.h"

namespace camerapictures {

using imagefiles::Big;
using imagefiles::Bytes;

struct PictureForm {
  std::uint32_t width = 640, height = 480;
  int orientation = 1;
  std::function<void(XpTiffTagIFD& note)> note = {};  // of no maker when not set
  std::vector<Bytes> segments = {};
};

/// Of a picture that states this size and is much smaller.
inline Bytes Picture(const PictureForm& form) {
  XpTiffTagManager tags;
  tags.Create();
  tags.root->ifds.push_back(std::make_unique<XpTiffTagIFD>());
  tags.GetIfd(0)->SetShort(0x0112, static_cast<std::uint16_t>(form.orientation));
  if (form.note) {
    std::vector<std::unique_ptr<XpTiffTagIFD>> exif, note;
    note.push_back(std::make_unique<XpTiffTagIFD>());
    note[0]->isMakerNote = true;
    form.note(*note[0]);
    exif.push_back(std::make_unique<XpTiffTagIFD>());
    rawfiles::AddIfds(*exif[0], 0x927C, std::move(note));
    rawfiles::AddIfds(*tags.GetIfd(0), 0x8769, std::move(exif));
  }
  XpMemoryFile tiff;
  tags.Store(tiff);
  std::vector<Bytes> segments{
      jpegfiles::Exif({static_cast<const char*>(tiff.GetData()), static_cast<std::size_t>(tiff.GetSize())})};
  segments.insert(segments.end(), form.segments.begin(), form.segments.end());
  Bytes bytes = jpegfiles::WithSegments(imagefiles::Jpeg(imagefiles::Smooth(8, 8, 3)), segments);
  const std::size_t frame = bytes.rfind("\xFF\xC0");
  return bytes.replace(frame + 5, 4, Big(form.height, 2) + Big(form.width, 2));
}

/// The segment of a picture of this kind of SPF; its index leads to the number at `valueAt`.
inline Bytes Spf(std::uint32_t kind, std::uint32_t valueAt = 26) {
  const vrx::test_support::TagBytes big{.bigEndian = true};
  return jpegfiles::App(
      3, Bytes("SPF\0", 4) + big.Header() + big.Ifd({big.Entry(0xB002, 4, 1, valueAt)}) + big.U32(kind));
}

inline void AddLongs(XpTiffTagIFD& ifd, std::uint16_t tag, const std::vector<std::uint32_t>& values) {
  auto value =
      std::make_unique<XpTiffTagData<XpTiffTagTypeLong>>(tag, static_cast<std::uint32_t>(values.size()));
  std::copy(values.begin(), values.end(), value->elements.get());
  ifd.AddTag(std::move(value));
}
/// Of a panorama, as the maker notes have it.
inline std::function<void(XpTiffTagIFD&)> Record(const std::vector<std::uint32_t>& values) {
  return [=](XpTiffTagIFD& note) { AddLongs(note, 0x1003, values); };
}

}  // namespace camerapictures
