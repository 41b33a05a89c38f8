#include "bench/CameraPhoto.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <random>
#include <string>
#include <string_view>

#include <jpeglib.h>

#include "foundation/file/XpMemoryFile.h"
#include "imaging/tags/XpTiffTagManager.h"

namespace vrx::bench {
namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr char kDate[] = "2024:05:01 10:11:12";
constexpr int kTile = 1024;  // samples of a side of the texture
constexpr std::size_t kProfileBytes = 3144;
constexpr std::size_t kXmpBytes = 6000;

struct Segment {
  int marker;
  std::string body;
};

/// Noise of all scales from 256 samples down to 2, in steps that halve.
std::vector<int> Texture() {
  std::mt19937 random(1);
  std::vector<int> tile(kTile * kTile);
  for (int cell = 256; cell >= 2; cell /= 2) {
    const int cells = kTile / cell;
    std::vector<int> corners(static_cast<std::size_t>(cells * cells));
    for (int& corner : corners) corner = static_cast<int>(random() % static_cast<unsigned>(cell / 2 + 3));
    const auto corner = [&](int x, int y) {
      return corners[static_cast<std::size_t>(y % cells * cells + x % cells)];
    };
    for (int y = 0; y < kTile; ++y) {
      for (int x = 0; x < kTile; ++x) {
        const int cx = x / cell, cy = y / cell, fx = x % cell, fy = y % cell;
        const int upper = corner(cx, cy) * (cell - fx) + corner(cx + 1, cy) * fx;
        const int lower = corner(cx, cy + 1) * (cell - fx) + corner(cx + 1, cy + 1) * fx;
        tile[static_cast<std::size_t>(y * kTile + x)] += (upper * (cell - fy) + lower * fy) / (cell * cell);
      }
    }
  }
  return tile;
}

/// One row: a ramp, the texture, and grain that is stronger on the right.
void FillRow(const std::vector<int>& texture, int y, int height, std::mt19937& random,
             std::vector<std::uint8_t>& row) {
  const int width = static_cast<int>(row.size() / 3);
  for (int x = 0; x < width; ++x) {
    const int at = y % kTile * kTile + x % kTile;
    const int grain = static_cast<int>(random() % static_cast<unsigned>(2 + 30 * x / width));
    const int light = texture[static_cast<std::size_t>(at)] / 2 + y * 60 / height + grain;
    for (int c = 0; c < 3; ++c) {
      row[static_cast<std::size_t>(3 * x + c)] =
          static_cast<std::uint8_t>(std::min(light + 20 * c * x / width, 255));
    }
  }
}

Bytes Encode(int width, int height, int quality, const std::vector<Segment>& segments) {
  static const std::vector<int> texture = Texture();
  jpeg_compress_struct encoder{};
  jpeg_error_mgr errors;
  encoder.err = jpeg_std_error(&errors);
  jpeg_create_compress(&encoder);
  unsigned char* bytes = nullptr;
  unsigned long size = 0;
  jpeg_mem_dest(&encoder, &bytes, &size);
  encoder.image_width = static_cast<JDIMENSION>(width);
  encoder.image_height = static_cast<JDIMENSION>(height);
  encoder.input_components = 3;
  encoder.in_color_space = JCS_RGB;
  jpeg_set_defaults(&encoder);
  jpeg_set_quality(&encoder, quality, TRUE);
  encoder.write_JFIF_header = FALSE;
  jpeg_start_compress(&encoder, TRUE);
  for (const Segment& segment : segments) {
    jpeg_write_marker(&encoder, segment.marker, reinterpret_cast<const JOCTET*>(segment.body.data()),
                      static_cast<unsigned>(segment.body.size()));
  }
  std::mt19937 random(2);
  std::vector<std::uint8_t> row(static_cast<std::size_t>(width) * 3);
  for (int y = 0; y < height; ++y) {
    FillRow(texture, y, height, random, row);
    JSAMPROW rows = row.data();
    jpeg_write_scanlines(&encoder, &rows, 1);
  }
  jpeg_finish_compress(&encoder);
  jpeg_destroy_compress(&encoder);
  Bytes file(bytes, bytes + size);
  std::free(bytes);
  return file;
}

void AddBelow(XpTiffTagIFD& ifd, std::uint16_t tag, std::unique_ptr<XpTiffTagIFD> below) {
  auto leads = std::make_unique<XpTiffTagDataIFD>(tag, 1u);
  leads->ifds.push_back(std::move(below));
  ifd.AddTag(std::move(leads));
}

std::unique_ptr<XpTiffTagIFD> MakerNote() {
  auto note = std::make_unique<XpTiffTagIFD>();
  note->isMakerNote = true;
  note->SetLong(0x2002, 1);
  for (std::uint16_t i = 0; i < 24; ++i) note->SetShort(static_cast<std::uint16_t>(0x2010 + i), i);
  const std::string dates = std::string("before") + std::string(kDate, sizeof kDate) + std::string(60, 'x');
  note->SetUndefined(0x3000, dates.data(), static_cast<std::uint32_t>(dates.size()));
  return note;
}

std::unique_ptr<XpTiffTagIFD> ExifIfd() {
  auto exif = std::make_unique<XpTiffTagIFD>();
  exif->SetUndefined(0x9000, "0230", 4);
  exif->SetUndefined(0xA000, "0100", 4);
  exif->SetUndefined(0x9286, std::string(264, 'c').data(), 264);
  for (const int tag : {0x9003, 0x9004}) exif->SetAscii(static_cast<std::uint16_t>(tag), kDate);
  for (const int tag : {0x9010, 0x9011, 0x9012}) exif->SetAscii(static_cast<std::uint16_t>(tag), "+02:00");
  for (const int tag : {0xA430, 0xA431, 0xA433, 0xA434, 0xA435}) {
    exif->SetAscii(static_cast<std::uint16_t>(tag), "a text of some length");
  }
  for (const int tag : {0x829A, 0x829D, 0x9102, 0x9202, 0x9205, 0x920A, 0xA20E, 0xA20F, 0xA404}) {
    exif->SetRational(static_cast<std::uint16_t>(tag), 28, 10);
  }
  for (const int tag : {0x8822, 0x8827, 0x8830, 0x9207, 0x9208, 0x9209, 0xA001, 0xA217, 0xA401, 0xA402,
                        0xA403, 0xA405, 0xA406, 0xA407, 0xA408, 0xA409, 0xA40A, 0xA40C}) {
    exif->SetShort(static_cast<std::uint16_t>(tag), 1);
  }
  exif->SetLong(0xA002, kPhotoWidth);
  exif->SetLong(0xA003, kPhotoHeight);
  AddBelow(*exif, 0x927C, MakerNote());
  return exif;
}

XpTiffTagIFD& AddIfd(XpTiffTagManager& tags) {
  tags.root->ifds.push_back(std::make_unique<XpTiffTagIFD>());
  return *tags.root->ifds.back();
}

std::string ExifBody() {
  XpTiffTagManager tags;
  tags.Create();
  XpTiffTagIFD& first = AddIfd(tags);
  for (const int tag : {0x010E, 0x010F, 0x0110, 0x0131, 0x013B, 0x8298}) {
    first.SetAscii(static_cast<std::uint16_t>(tag), "a text of some length");
  }
  first.SetAscii(0x0132, kDate);
  for (const int tag : {0x0112, 0x0128, 0x0213}) first.SetShort(static_cast<std::uint16_t>(tag), 1);
  for (const int tag : {0x011A, 0x011B}) first.SetRational(static_cast<std::uint16_t>(tag), 300, 1);
  AddBelow(first, 0x8769, ExifIfd());
  auto gps = std::make_unique<XpTiffTagIFD>();
  for (const int tag : {0x0001, 0x0003, 0x0009, 0x0012, 0x001D}) {
    gps->SetAscii(static_cast<std::uint16_t>(tag), "N");
  }
  for (const int tag : {0x0006, 0x000B}) gps->SetRational(static_cast<std::uint16_t>(tag), 612, 10);
  AddBelow(first, 0x8825, std::move(gps));

  const Bytes thumbnail = Encode(160, 120, 85, {});
  XpTiffTagIFD& second = AddIfd(tags);
  second.SetShort(0x0103, 6);
  second.SetAscii(0x0132, kDate);
  second.SetLong(0x0201, 0);
  second.SetLong(0x0202, static_cast<std::uint32_t>(thumbnail.size()));
  XpMemoryFile trial;
  second.SetLong(0x0201, static_cast<std::uint32_t>(tags.Store(trial)));
  XpMemoryFile stored;
  const auto size = static_cast<std::size_t>(tags.Store(stored));
  return std::string("Exif\0\0", 6) + std::string(static_cast<const char*>(stored.GetData()), size) +
         std::string(thumbnail.begin(), thumbnail.end());
}

std::string Big32(std::size_t value) {
  std::string bytes;
  for (const int shift : {24, 16, 8, 0}) bytes.push_back(static_cast<char>(value >> shift));
  return bytes;
}

/// With nothing but its name, and as long as a usual one.
std::string ProfileBody() {
  constexpr std::string_view kName{"sRGB IEC61966-2.1", 18};
  const std::string name =
      "desc" + Big32(0) + Big32(kName.size()) + std::string(kName) + std::string(78, '\0');
  std::string profile(128, '\0');
  profile.replace(0, 4, Big32(kProfileBytes));
  profile.replace(8, 4, Big32(0x02100000));
  profile.replace(12, 12, "mntrRGB XYZ ");
  profile.replace(36, 4, "acsp");
  profile.replace(68, 12, Big32(0xF6D6) + Big32(0x10000) + Big32(0xD32D));  // the light of all profiles, D50
  profile += Big32(1) + "desc" + Big32(128 + 16) + Big32(name.size()) + name;
  profile.resize(kProfileBytes);
  return std::string("ICC_PROFILE\0\1\1", 14) + profile;
}

std::string XmpBody() {
  constexpr std::string_view kName{"http://ns.adobe.com/xap/1.0/", 29};
  std::string packet =
      "<?xpacket begin=\"\" id=\"W5M0MpCehiHzreSzNTczkc9d\"?><x:xmpmeta xmlns:x=\"adobe:ns:meta/\"><rdf:RDF "
      "xmlns:rdf=\"http://www.w3.org/1999/02/22-rdf-syntax-ns#\"><rdf:Description rdf:about=\"\" "
      "xmlns:xmp=\"http://ns.adobe.com/xap/1.0/\" xmp:Rating=\"3\"/></rdf:RDF></x:xmpmeta>";
  packet.resize(kXmpBytes, ' ');
  return std::string(kName) + packet + "<?xpacket end=\"w\"?>";
}

}  // namespace

std::vector<std::uint8_t> CameraPhoto() {
  constexpr int kQuality = 96;
  return Encode(kPhotoWidth, kPhotoHeight, kQuality,
                {{JPEG_APP0 + 1, ExifBody()}, {JPEG_APP0 + 1, XmpBody()}, {JPEG_APP0 + 2, ProfileBody()}});
}

}  // namespace vrx::bench
