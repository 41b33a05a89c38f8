#include "tests/imaging/JpegFiles.h"

namespace jpegfiles {

using imagefiles::Big;
using vrx::test_support::TagBytes;

Bytes App(int number, const Bytes& body) {
  return Bytes("\xFF") + static_cast<char>(0xE0 + number) +
         Big(static_cast<std::uint32_t>(body.size()) + 2, 2) + body;
}

Bytes Exif(const Bytes& tiff) { return App(1, Bytes("Exif\0\0", 6) + tiff); }

Bytes Resources(const Bytes& thumbnail, int format) {
  const auto resource = [](int id, const Bytes& name, const Bytes& data) {
    Bytes bytes = "8BIM" + Big(static_cast<std::uint32_t>(id), 2) + static_cast<char>(name.size()) + name;
    if (name.size() % 2 == 0) bytes += '\0';
    bytes += Big(static_cast<std::uint32_t>(data.size()), 4) + data;
    return data.size() % 2 == 0 ? bytes : bytes + '\0';
  };
  const Bytes head = Big(static_cast<std::uint32_t>(format), 4) + Bytes(24, '\0');
  return App(13, Bytes("Photoshop 3.0\0", 14) + resource(0x0404, "ab", "odd") +
                     resource(0x040C, "", head + thumbnail));
}

Bytes Profile(const Bytes& name) {
  Bytes text = name + '\0';
  const Bytes tag = Bytes("desc\0\0\0\0", 8) + Big(static_cast<std::uint32_t>(text.size()), 4) + text;
  return Bytes(128, '\0') + Big(1, 4) + "desc" + Big(144, 4) +
         Big(static_cast<std::uint32_t>(tag.size()), 4) + tag;
}

Bytes WithSegments(const Bytes& jpeg, const std::vector<Bytes>& segments) {
  Bytes file = jpeg.substr(0, 2);
  for (const Bytes& segment : segments) file += segment;
  const bool hasJfif = jpeg[3] == static_cast<char>(0xE0);
  const auto jfif = static_cast<std::size_t>(hasJfif ? 2 + (jpeg[4] << 8 | jpeg[5]) : 0);
  return file + jpeg.substr(2 + jfif);
}

Bytes Orientation(int orientation, int colourSpace) {
  const TagBytes big{.bigEndian = true};
  const Bytes turn =
      big.Entry(0x0112, 3, 1, Big(static_cast<std::uint32_t>(orientation), 2) + Bytes(2, '\0'));
  if (colourSpace == 0) return big.Header() + big.Ifd({turn});
  const Bytes space =
      big.Entry(0xA001, 3, 1, Big(static_cast<std::uint32_t>(colourSpace), 2) + Bytes(2, '\0'));
  return big.Header() + big.Ifd({turn, big.Entry(0x8769, 4, 1, 38)}) + big.Ifd({space});
}

Bytes Pixels(const XpImageIo::Picture& picture) {
  Bytes pixels;
  for (std::int32_t y = 0; picture != nullptr && y < picture->height; ++y) {
    const auto* row = reinterpret_cast<const char*>(picture->GetPlane(0)->Row(y));
    pixels.append(row, static_cast<std::size_t>(picture->width) * 3);
  }
  return pixels;
}

}  // namespace jpegfiles
