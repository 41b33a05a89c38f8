// TIFF files of plain rows are read by the codec's own strip reader, all others through the loader; a rating
// is stored without moving a byte of the picture.
#include <gtest/gtest.h>

#include <algorithm>

#include "imaging/codecs/XpImageIoTIFF.h"
#include "imaging/resample/AdobeRgb.h"
#include "tests/imaging/JpegFiles.h"
#include "tests/imaging/TiffFile.h"
#include "tests/support/TempFolder.h"

namespace {

using namespace tifffiles;
using jpegfiles::Pixels;
using jpegfiles::Stream;

constexpr std::uint32_t kShort = 3, kLong = 4;

struct Reading {
  XpResult status = XpOk;
  int width = 0, height = 0;
  Bytes pixels;  // BGR
  std::int64_t missing = 0;
};

Reading Read(const Bytes& file, const XpImageReading& how = {}, std::int32_t scale = 1,
             std::int64_t offset = 0) {
  const Stream stream(file);
  XpImageIoTIFF codec;
  const auto picture = codec.Read(const_cast<Stream&>(stream), offset, scale, how);
  EXPECT_EQ(picture != nullptr, codec.status == XpOk);
  Reading reading{codec.status, 0, 0, Pixels(picture), codec.missingBytes};
  if (picture != nullptr) reading.width = picture->width, reading.height = picture->height;
  return reading;
}

int At(const Bytes& bytes, std::size_t i) { return static_cast<unsigned char>(bytes[i]); }

/// By the definition of each kind of sample, one pixel at a time.
Bytes PlainPixels(const PlainTiff& form, const Bytes& data) {
  Bytes bgr;
  const int bytes = static_cast<int>(form.bits) / 8, full = form.bits == 8 ? 0xFF : 0xFFFF;
  const auto sample = [&](std::size_t pixel, std::uint32_t number) {
    const std::size_t at = (pixel * form.samples + number) * static_cast<std::size_t>(bytes);
    if (bytes == 1) return At(data, at);
    return form.bigEndian ? At(data, at) * 256 + At(data, at + 1) : At(data, at + 1) * 256 + At(data, at);
  };
  for (std::size_t i = 0; i < form.width * form.height; ++i) {
    for (std::uint32_t c = 3; c-- > 0;) {
      int value = sample(i, form.samples == 1 ? 0 : c);
      if (form.samples == 1 && form.photometric == 0) value = full - value;
      if (form.samples == 4) value = std::max(0, full - value - sample(i, 3));
      bgr += static_cast<char>(bytes == 1 ? value : value / 256);
    }
  }
  return bgr;
}

std::size_t DataBytes(const PlainTiff& form) {
  return std::size_t{form.width} * form.height * form.samples * form.bits / 8;
}

TEST(TiffCodecTest, EveryKindOfSampleBecomesItsPixel) {
  struct Kind {
    std::uint32_t samples, photometric;
  };
  for (const Kind kind : {Kind{1, 0}, Kind{1, 1}, Kind{3, 2}, Kind{4, 5}}) {
    for (const std::uint32_t bits : {8u, 16u}) {
      for (const bool bigEndian : {false, true}) {
        for (const std::uint32_t rowsPerStrip : {1u, 4u, 100u}) {
          const PlainTiff form{.width = 301,
                               .height = 5,
                               .samples = kind.samples,
                               .bits = bits,
                               .photometric = kind.photometric,
                               .bigEndian = bigEndian,
                               .rowsPerStrip = rowsPerStrip};
          const Bytes data = Ramp(DataBytes(form));
          const Reading reading = Read(Tiff(form, data));
          ASSERT_EQ(reading.status, XpOk);
          EXPECT_EQ(reading.pixels, PlainPixels(form, data))
              << kind.samples << " samples, " << bits << " bits, " << bigEndian << rowsPerStrip;
        }
      }
    }
  }
  const PlainTiff ink{.width = 2, .height = 1, .samples = 4, .photometric = 5};
  EXPECT_EQ(Read(Tiff(ink, "\xFF\x10\x20" + Bytes("\0\0\0\0\xFF", 5))).pixels, Bytes("\xDF\xEF\0\0\0\0", 6));
}

TEST(TiffCodecTest, RowsComeFromTheStripsAsFarAsTheseReach) {
  const PlainTiff form;  // 4 by 3, two rows a strip
  const Bytes data = Ramp(36), all = PlainPixels(form, data), file = Tiff(form, data);
  const auto read = [&](std::uint32_t first, std::uint32_t second) {
    PlainTiff other = form;
    other.change = [=](const TagBytes& tag, Entries& entries) {
      entries[0x117] = tag.Entry(0x117, kShort, 2, tag.U16(first) + tag.U16(second));
    };
    return Read(Tiff(other, data));
  };
  EXPECT_EQ(read(24, 12).pixels, all);
  // A row that is not whole stays unread, and the next strip's rows follow.
  EXPECT_EQ(read(23, 12).pixels, all.substr(0, 12) + all.substr(24, 12) + Bytes(12, '\0'));
  EXPECT_EQ(read(24, 11).pixels, all.substr(0, 24) + Bytes(12, '\0'));
  EXPECT_EQ(read(24, 11).missing, 0);
  EXPECT_EQ(read(36, 12).pixels, all) << "rows after the last one of the picture";
  EXPECT_EQ(read(24, 13).status, XpErrMalformedRecord);
  EXPECT_EQ(read(24, 13).missing, 1);
  EXPECT_EQ(Read(file + "x").status, XpOk) << "more bytes than the strips need";
  EXPECT_EQ(Read("12345" + file, {}, 1, 5).pixels, all) << "within a stream";
  for (std::size_t size = 0; size < file.size(); ++size) {
    const Reading cut = Read(file.substr(0, size));
    ASSERT_NE(cut.status, XpOk) << size;
    if (size >= file.size() - 36) {
      EXPECT_EQ(cut.status, XpErrMalformedRecord) << size;
    }
  }
}

TEST(TiffCodecTest, ProgressIsReportedEvery256RowsAndCanCancel) {
  struct Progress final : XpImageProgress {
    std::int32_t Report(std::int32_t percent) override {
      reports.push_back(percent);
      return static_cast<std::int32_t>(reports.size() > most);
    }
    std::vector<std::int32_t> reports;
    std::size_t most = 100;
  } progress;
  const PlainTiff form{.width = 1, .height = 600, .rowsPerStrip = 60};
  const Bytes file = Tiff(form, Ramp(DataBytes(form)));
  EXPECT_EQ(Read(file, {.progress = &progress}).status, XpOk);
  EXPECT_EQ(progress.reports, (std::vector<std::int32_t>{10, 60, 100}));
  progress = {};
  progress.most = 1;
  EXPECT_EQ(Read(file, {.progress = &progress}).status, XpErrImageCancelled);
}

TEST(TiffCodecTest, TagsDecideWhatIsReadAndWhatIsLeftToTheLoader) {
  using Change = void (*)(const TagBytes&, Entries&);
  const auto status = [](Change change) {
    PlainTiff form{.height = 2};
    form.change = change;
    return Read(Tiff(form, Ramp(24))).status;
  };
#define CHANGED(tag, ...) status([](const TagBytes& t, Entries& e) { e[tag] = t.Entry(tag, __VA_ARGS__); })
#define WITHOUT(tag) status([](const TagBytes&, Entries& e) { e.erase(tag); })
  // The loader reads no streams in memory, so that leaving a file to it shows here.
  constexpr XpResult kLeft = XpErrImageArgument;
  EXPECT_EQ(WITHOUT(0x11C), XpOk);
  EXPECT_EQ(CHANGED(0x11C, kShort, 1, t.U16(1) + t.U16(0)), XpOk);
  EXPECT_EQ(CHANGED(0x11C, kShort, 1, t.U16(2) + t.U16(0)), kLeft);
  EXPECT_EQ(CHANGED(0x11C, kLong, 1, 1u), kLeft);
  EXPECT_EQ(CHANGED(0x100, 9, 1, 4u), XpErrImageInvalid) << "a signed width";
  EXPECT_EQ(WITHOUT(0x101), XpErrImageInvalid);
  EXPECT_EQ(CHANGED(0x100, kLong, 0, 4u), XpErrImageInvalid) << "a width without a value";
  EXPECT_EQ(CHANGED(0x102, kShort, 1, t.U16(4) + t.U16(0)), kLeft);
  EXPECT_EQ(WITHOUT(0x102), kLeft);
  EXPECT_EQ(CHANGED(0x103, kShort, 1, t.U16(5) + t.U16(0)), kLeft);
  EXPECT_EQ(CHANGED(0x115, kShort, 1, t.U16(2) + t.U16(0)), kLeft);
  EXPECT_EQ(CHANGED(0x106, kShort, 1, t.U16(3) + t.U16(0)), kLeft);
  EXPECT_EQ(CHANGED(0x106, kShort, 1, t.U16(1) + t.U16(0)), kLeft) << "grey of three samples";
  EXPECT_EQ(WITHOUT(0x116), XpOk) << "one strip";
  EXPECT_EQ(CHANGED(0x116, kShort, 1, t.U16(2) + t.U16(0)), XpOk);
  EXPECT_EQ(CHANGED(0x116, kLong, 1, 0u), XpErrImageInvalid);
  EXPECT_EQ(CHANGED(0x116, kLong, 1, 1u), XpErrImageInvalid) << "strips that are not there";
  EXPECT_EQ(CHANGED(0x117, kShort, 2, t.U16(12) + t.U16(12)), XpErrImageInvalid) << "more than one strip";
  EXPECT_EQ(WITHOUT(0x111), kLeft);
  EXPECT_EQ(WITHOUT(0x117), kLeft);
  EXPECT_EQ(CHANGED(0x101, kLong, 1, 60000u), XpErrImageInvalid) << "far too few bytes for this height";
  EXPECT_EQ(CHANGED(0x100, kLong, 1, 0x7FFFFFFFu), XpErrOutOfMemory);
#undef CHANGED
#undef WITHOUT
  EXPECT_EQ(Read("").status, XpErrImageInvalid);
  EXPECT_EQ(Read("IM*\0").status, XpErrImageInvalid);
}

TEST(TiffCodecTest, OtherKindsOfFilesShowTheSamePictureThroughTheLoader) {
  TempFolder folder;
  const imagefiles::Samples colour = imagefiles::Smooth(48, 32, 3);
  const Bytes plain = Read(imagefiles::Tiff(colour)).pixels;
  ASSERT_EQ(plain.size(), 48u * 32 * 3);
  struct Case {
    const char* name;
    imagefiles::TiffForm form;
    int tolerance;
  };
  for (const Case& c : {Case{"lzw", {.compression = 5}, 0}, Case{"deflate", {.compression = 8}, 0},
                        Case{"packbits", {.compression = 32773}, 0}, Case{"jpeg", {.compression = 7}, 8},
                        Case{"tiles", {.tile = 16}, 0}, Case{"planar", {.isPlanar = true}, 0}}) {
    const std::string path = folder.Write(c.name, imagefiles::Tiff(colour, c.form));
    XpImageIoTIFF codec;
    const auto picture = codec.Load(XpNarrowString(path).ToWide(), 1, {});
    ASSERT_NE(picture, nullptr) << c.name;
    const Bytes pixels = Pixels(picture);
    ASSERT_EQ(pixels.size(), plain.size()) << c.name;
    for (std::size_t i = 0; i < plain.size(); ++i)
      ASSERT_NEAR(At(pixels, i), At(plain, i), c.tolerance) << c.name;
    const auto fitted = codec.LoadFitted(XpNarrowString(path).ToWide(), {24, 24}, {.applyOrientation = true});
    ASSERT_NE(fitted, nullptr) << c.name;
    EXPECT_EQ(fitted->width, 16) << c.name << ", stored on its side";
    EXPECT_EQ(fitted->height, 24) << c.name;
    EXPECT_EQ(codec.LoadFitted(XpNarrowString(path).ToWide(), {24, 24}, {})->width, 24) << c.name;
  }
  // A palette after the pixels, of whose tables, red first, index 1 has the red.
  PlainTiff form{.width = 2, .height = 1, .samples = 1, .photometric = 3};
  const Bytes indices("\x01\x00", 2);
  const auto size = static_cast<std::uint32_t>(Tiff(form, indices).size());
  form.change = [&](const TagBytes& tag, Entries& entries) {
    entries[0x140] = tag.Entry(0x140, kShort, 768, size);
  };
  Bytes map(768 * 2, '\0');
  map[2] = map[3] = '\xFF';
  XpImageIoTIFF codec;
  const std::string path = folder.Write("palette", Tiff(form, indices) + map);
  EXPECT_EQ(Pixels(codec.Load(XpNarrowString(path).ToWide(), 1, {})), Bytes("\0\0\xFF\0\0\0", 6));
}

TEST(TiffCodecTest, PicturesAreTurnedScaledAndBroughtToSrgbOnDemand) {
  PlainTiff form{.orientation = 6, .colourSpace = 0xFFFF, .profile = jpegfiles::Profile("Adobe RGB (1998)")};
  const Bytes data = Ramp(36), plain = PlainPixels(form, data);
  const Bytes file = Tiff(form, data);
  std::int32_t rotation = 0;
  const Reading turned = Read(file, {.applyOrientation = true, .outRotation = &rotation});
  EXPECT_EQ(turned.width, 3);
  EXPECT_EQ(turned.height, 4);
  EXPECT_EQ(rotation, 3);
  EXPECT_EQ(turned.pixels.substr(0, 3), plain.substr(24, 3))
      << "the lower left corner comes to the upper left";
  EXPECT_EQ(Read(file, {.toSrgb = true}).pixels, plain) << "colours change with the orientation only";
  const auto converted = [&](const char* name) {
    form.profile = jpegfiles::Profile(name);
    return Read(Tiff(form, data), {.toSrgb = true, .applyOrientation = true}).pixels;
  };
  XpImageIoTIFF codec;
  const Stream stream(file);
  const auto adobe = codec.Read(const_cast<Stream&>(stream), 0, 1, {.applyOrientation = true});
  ASSERT_NE(adobe, nullptr);
  EXPECT_EQ(codec.orientation, 6);
  EXPECT_TRUE(codec.isUncalibrated);
  ConvertAdobeRgbToSrgb(*adobe);
  EXPECT_EQ(converted("anything"), Pixels(adobe));
  EXPECT_NE(converted("wide gamut rgb"), Pixels(adobe));
  TempFolder folder;
  const auto fitted = [&](const Bytes& bytes) {
    const XpString path = XpNarrowString(folder.Write("a.tif", bytes)).ToWide();
    const auto picture = codec.LoadFitted(path, {3, 4}, {.toSrgb = true, .applyOrientation = true});
    EXPECT_EQ(codec.status, XpOk);
    return Pixels(picture);
  };
  EXPECT_EQ(fitted(file), Pixels(adobe));
  form.profile.clear();
  EXPECT_EQ(fitted(Tiff(form, data)), turned.pixels);
  EXPECT_EQ(Read(Tiff(form, data), {.toSrgb = true, .applyOrientation = true}).pixels, turned.pixels);
  form.colourSpace = 1;
  EXPECT_EQ(converted("Adobe RGB (1998)"), turned.pixels) << "colours that are sRGB already";

  EXPECT_EQ(Read(file, {}, 2).width, 2);
  EXPECT_EQ(Read(file, {}, 2).height, 1);
  EXPECT_EQ(Read(file, {}, 4).pixels, plain) << "nothing would be left";
  EXPECT_EQ(Read(file, {}, 3).status, XpErrImageArgument);
  XpImageSize size;
  EXPECT_EQ(codec.ReadImageSize(const_cast<Stream&>(stream), 0, size, false), XpOk);
  EXPECT_EQ(size, (XpImageSize{3, 4}));
  EXPECT_EQ(codec.ReadStoredImageSize(const_cast<Stream&>(stream), 0, size, false), XpOk);
  EXPECT_EQ(size, (XpImageSize{4, 3}));
}

TEST(TiffCodecTest, ARatingIsStoredAfterTheFileAndThenInPlace) {
  for (const bool bigEndian : {false, true}) {
    TempFolder folder;
    PlainTiff form{.width = 5, .height = 1, .bigEndian = bigEndian, .hasNote = true};
    const Bytes before = Tiff(form, Ramp(15));
    ASSERT_EQ(before.size() % 2, 1u);
    const XpString path = XpNarrowString(folder.Write("a.tif", before)).ToWide();
    XpImageIoTIFF codec;
    ASSERT_EQ(codec.SetRating(path, 4), XpOk);
    const Bytes rated = folder.Read("a.tif");
    const auto place = static_cast<std::uint32_t>(before.size()) + 1;  // an even one
    EXPECT_EQ(rated.substr(0, before.size()),
              before.substr(0, 4) + TagBytes{bigEndian}.U32(place) + before.substr(8));
    const auto tags = codec.LoadTags(path);
    ASSERT_NE(tags.Get(), nullptr);
    EXPECT_EQ(tags->GetMakerIfd()->GetLong(0x2002, 0, false), 4u);
    EXPECT_EQ(tags->GetMakerIfd()->GetLong(0x1000, 0, false), 7u);
    EXPECT_NE(tags->GetIfd(0)->GetAscii(0x132), "2002:02:02 02:02:02") << "changed now";
    EXPECT_EQ(Read(rated).pixels, Read(before).pixels);
    ASSERT_EQ(codec.SetRating(path, 2), XpOk);
    EXPECT_EQ(folder.Read("a.tif").size(), rated.size());
    EXPECT_EQ(codec.LoadTags(path)->GetMakerIfd()->GetLong(0x2002, 0, false), 2u);

    form.nextIfd = 8;
    folder.Write("a.tif", Tiff(form, Ramp(15)));
    ASSERT_EQ(codec.SetRating(path, 4), XpOk);
    ASSERT_EQ(codec.LoadTags(path)->GetIfdCount(), 2u) << "the IFDs after the first one are kept";
    EXPECT_EQ(codec.LoadTags(path)->GetIfd(1)->GetShort(0x102, false), 8);

    form.nextIfd = 0, form.previewBytes = 100'001;
    folder.Write("a.tif", Tiff(form, Ramp(100'015) + Bytes(13, '\0')));
    const std::size_t size = folder.Read("a.tif").size();
    ASSERT_TRUE(size % 2 == 0 && size % 3 != 0);
    ASSERT_EQ(codec.SetRating(path, 4), XpOk);
    EXPECT_EQ(folder.Read("a.tif").substr(4, 4), TagBytes{bigEndian}.U32(static_cast<std::uint32_t>(size)));
    EXPECT_EQ(codec.LoadTags(path)->previewSize, 100'001u) << "a preview stays where it is";
    EXPECT_EQ(codec.LoadTags(path)->previewOffset, 8u);
  }
}

TEST(TiffCodecTest, ARatingThatCannotBeStoredLeavesTheFileAlone) {
  TempFolder folder;
  const auto refused = [&](const PlainTiff& form) {
    const Bytes before = Tiff(form, Ramp(36));
    const XpString path = XpNarrowString(folder.Write("a.tif", before)).ToWide();
    const XpResult result = XpImageIoTIFF().SetRating(path, 4);
    EXPECT_EQ(folder.Read("a.tif"), before);
    return result;
  };
  EXPECT_EQ(refused({}), XpErrImageNoData);
  // What is not there would be lost: a value, after which nothing is read, and the position.
  for (const std::uint32_t number : {0x10Fu, 0x8825u}) {
    PlainTiff damaged{.hasNote = true};
    damaged.change = [number](const TagBytes& tag, Entries& entries) {
      entries[number] = tag.Entry(number, kLong, number == 0x10F ? 1000 : 1, 0xFFFFFFu);
    };
    EXPECT_EQ(refused(damaged), XpErrImageInvalid) << number;
  }
  EXPECT_EQ(XpImageIoTIFF().SetRating(XpNarrowString((folder.Path() / "none.tif").string()).ToWide(), 1),
            XpErrFileNotFound);
}

}  // namespace
