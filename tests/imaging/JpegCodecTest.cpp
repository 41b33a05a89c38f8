// JPEG pictures come at the size, the way up and in the colours that were asked for.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>

#include <jpeglib.h>

#include "imaging/pixmap/XpPixmapRotate.h"
#include "imaging/resample/AdobeRgb.h"
#include "tests/imaging/JpegFiles.h"

namespace {

using namespace jpegfiles;
using imagefiles::Big;
using imagefiles::Noise;
using imagefiles::Smooth;

/// What the library itself gives at a scale, as BGR.
Bytes LibraryPixels(const Bytes& file, unsigned scale) {
  jpeg_decompress_struct decoder{};
  jpeg_error_mgr errors;
  decoder.err = jpeg_std_error(&errors);
  jpeg_create_decompress(&decoder);
  jpeg_mem_src(&decoder, reinterpret_cast<const unsigned char*>(file.data()), file.size());
  jpeg_read_header(&decoder, TRUE);
  decoder.out_color_space = JCS_RGB;
  decoder.scale_num = 1;
  decoder.scale_denom = scale;
  decoder.do_fancy_upsampling = decoder.do_block_smoothing = scale == 1;
  jpeg_start_decompress(&decoder);
  Bytes pixels;
  std::vector<unsigned char> row(decoder.output_width * std::size_t{3});
  while (decoder.output_scanline < decoder.output_height) {
    JSAMPROW target = row.data();
    jpeg_read_scanlines(&decoder, &target, 1);
    for (std::size_t x = 0; x < row.size(); x += 3) std::swap(row[x], row[x + 2]);
    pixels.append(reinterpret_cast<const char*>(row.data()), row.size());
  }
  jpeg_finish_decompress(&decoder);
  jpeg_destroy_decompress(&decoder);
  return pixels;
}

XpImageSize SizeOf(const XpImageIo::Picture& picture) {
  return picture == nullptr ? XpImageSize() : XpImageSize{picture->width, picture->height};
}

TEST(JpegCodecTest, PixelsAtEveryScaleAreThoseOfTheLibrary) {
  for (const auto& [width, height] : {std::pair{1, 1}, {1, 7}, {301, 5}, {64, 48}, {333, 270}}) {
    for (const int channels : {1, 3}) {
      for (const bool isProgressive : {false, true}) {
        const Bytes file =
            imagefiles::Jpeg(Noise(width, height, channels),
                             {.isProgressive = isProgressive, .isFromCamera = channels == 3 && width > 64});
        for (const std::int32_t scale : {1, 2, 4, 8}) {
          SCOPED_TRACE(testing::Message() << width << "x" << height << " of " << channels << " at " << scale);
          const Bytes outer = "12345" + file;  // a picture within a container
          Stream stream(outer);
          XpImageIoJpeg codec;
          const auto picture = codec.Read(stream, 5, scale, {});
          ASSERT_EQ(codec.status, XpOk);
          EXPECT_EQ(SizeOf(picture),
                    (XpImageSize{(width + scale - 1) / scale, (height + scale - 1) / scale}));
          EXPECT_EQ(Pixels(picture), LibraryPixels(file, static_cast<unsigned>(scale)));
        }
      }
    }
  }
}

TEST(JpegCodecTest, OrientationTurnsThePictureAndItsSizeOnDemand) {
  using Turn = XpImageIo::Picture (*)(const XpPixmapBase&);
  struct Case {
    int orientation;
    std::int32_t rotation;
    Turn turn;
    bool isSideways;  // by the size
  };
  const Bytes plain = imagefiles::Jpeg(Smooth(40, 24, 3));
  XpImageIoJpeg codec;
  for (const Case& c :
       {Case{0, 0, nullptr, false}, Case{1, 0, nullptr, false}, Case{2, 0, nullptr, false},
        Case{3, 2, RotatePixmap180, false}, Case{5, 0, nullptr, true}, Case{6, 3, RotatePixmap90CW, true},
        Case{7, 0, nullptr, true}, Case{9, 0, nullptr, false}, Case{8, 1, RotatePixmap90CCW, true}}) {
    SCOPED_TRACE(c.orientation);
    const Bytes file = WithSegments(plain, {Exif(Orientation(c.orientation))});
    Stream stream(file);
    std::int32_t rotation = -1;
    const auto stored = codec.Read(stream, 0, 1, {.outRotation = &rotation});
    EXPECT_EQ(rotation, c.rotation);
    EXPECT_EQ(Pixels(stored), LibraryPixels(plain, 1));
    const auto upright = codec.Read(stream, 0, 1, {.applyOrientation = true});
    EXPECT_EQ(Pixels(upright), Pixels(c.turn == nullptr ? codec.Read(stream, 0, 1, {}) : c.turn(*stored)));
    XpImageSize size, storedSize;
    EXPECT_EQ(codec.ReadImageSize(stream, 0, size, false), XpOk);
    EXPECT_EQ(codec.ReadStoredImageSize(stream, 0, storedSize, false), XpOk);
    EXPECT_EQ(size, c.isSideways ? (XpImageSize{24, 40}) : (XpImageSize{40, 24}));
    EXPECT_EQ(storedSize, (XpImageSize{40, 24}));
  }
  // Nothing is left of the last picture.
  const Bytes withThumbnail = WithSegments(plain, {Resources(plain)});
  Stream bare(withThumbnail);
  EXPECT_EQ(SizeOf(codec.Read(bare, 0, 1, {.applyOrientation = true})), (XpImageSize{40, 24}));
  codec.orientation = 8;
  EXPECT_EQ(SizeOf(codec.ReadThumbnail(bare, 0, {})), (XpImageSize{40, 24}));
}

TEST(JpegCodecTest, FittedPictureKeepsItsAspectWithinTheTarget) {
  EXPECT_EQ(FitImageSize({600, 400}, {160, 120}), (XpImageSize{160, 106}));
  EXPECT_EQ(FitImageSize({400, 600}, {160, 120}), (XpImageSize{80, 120}));
  EXPECT_EQ(FitImageSize({65500, 1}, {160, 120}), (XpImageSize{160, 0}));
  EXPECT_EQ(FitImageSize({0, 0}, {160, 120}), XpImageSize());
  const Bytes plain = imagefiles::Jpeg(Noise(640, 300, 3));
  const Bytes file = WithSegments(plain, {Exif(Orientation(6))});
  Stream stream(file);
  XpImageIoJpeg codec;
  // Shrunk by the decoder alone, shrunk further, larger than the picture, upright.
  for (const auto& [target, turned, expected] : {std::tuple{XpImageSize{80, 60}, false, XpImageSize{80, 38}},
                                                 {{100, 100}, false, {100, 46}},
                                                 {{1280, 1280}, false, {1280, 600}},
                                                 {{100, 100}, true, {46, 100}}}) {
    EXPECT_EQ(SizeOf(codec.ReadFitted(stream, 0, target, {.applyOrientation = turned})), expected);
  }
  Stream upright(plain);
  EXPECT_EQ(Pixels(codec.ReadFitted(upright, 0, {80, 60}, {})), LibraryPixels(plain, 8));
  const Bytes line = imagefiles::Jpeg(Smooth(400, 1, 3));
  Stream thin(line);
  EXPECT_EQ(codec.ReadFitted(thin, 0, {30, 30}, {}), nullptr);
  EXPECT_EQ(codec.status, XpErrFailed);
}

Bytes Stereo(int layout, int descriptorBytes = 4) {
  return App(3, "_JPSJPS_" + Big(static_cast<std::uint32_t>(descriptorBytes), 2) + Bytes(2, '\0') +
                    static_cast<char>(layout) + Bytes(1, '\0'));
}

TEST(JpegCodecTest, StereoPictureGivesItsFirstHalf) {
  struct Case {
    std::vector<Bytes> segments;
    const char16_t* name;
    bool isForced;
    XpImageSize pixels, size;
  };
  const Bytes plain = imagefiles::Jpeg(Smooth(40, 24, 3));
  const Bytes turned = Exif(Orientation(6));
  const XpImageSize whole{40, 24}, halfWidth{20, 24}, halfHeight{40, 12};
  for (const Case& c :
       {Case{{}, u"/a.jpg", false, whole, whole}, Case{{}, u"/a.jps", false, halfWidth, halfWidth},
        Case{{}, u"/a.jpg", true, halfWidth, halfWidth},
        Case{{Stereo(1)}, u"/a.jpg", true, halfHeight, halfHeight},
        Case{{Stereo(3)}, u"/a.jpg", false, halfHeight, halfHeight},
        Case{{Stereo(2)}, u"/a.jpg", false, halfWidth, halfWidth},
        Case{{Stereo(0)}, u"/a.jps", true, whole, whole},
        Case{{Stereo(1, 5)}, u"/a.jps", false, halfWidth, halfWidth},
        // The size is turned first, and what comes after the tags is not looked at.
        Case{{turned}, u"/a.JPS", false, halfWidth, {24, 20}},
        Case{{turned, Stereo(1)}, u"/a.jpg", false, halfHeight, {24, 40}},
        Case{{Stereo(1), turned}, u"/a.jpg", false, halfHeight, halfHeight}}) {
    const Bytes file = WithSegments(plain, c.segments);
    Stream stream(file, c.name);
    XpImageIoJpeg codec;
    EXPECT_EQ(SizeOf(codec.Read(stream, 0, 1, {.forceStereo = c.isForced})), c.pixels);
    XpImageSize size;
    EXPECT_EQ(codec.ReadImageSize(stream, 0, size, c.isForced), XpOk);
    EXPECT_EQ(size, c.size);
  }
}

/// IFD 1 leads to a thumbnail right after it, and IFD 0 has an orientation.
Bytes TiffWithThumbnail(const Bytes& thumbnail, int orientation) {
  const vrx::test_support::TagBytes big{.bigEndian = true};
  const auto turn = big.Entry(0x0112, 3, 1, Big(static_cast<std::uint32_t>(orientation), 2) + Bytes(2, '\0'));
  const auto length = static_cast<std::uint32_t>(thumbnail.size());
  return big.Header() + big.Ifd({turn}, 26) +
         big.Ifd({big.Entry(0x0201, 4, 1, 56), big.Entry(0x0202, 4, 1, length)}) + thumbnail;
}

TEST(JpegCodecTest, ThumbnailComesFromResourcesOrTagsUprightAndWithoutBars) {
  const Bytes inTags = imagefiles::Jpeg(Smooth(160, 120, 3));
  const Bytes inResources = imagefiles::Jpeg(Smooth(16, 8, 3));
  const Bytes wide = imagefiles::Jpeg(Smooth(300, 200, 3));
  const Bytes tall = imagefiles::Jpeg(Smooth(200, 300, 3));
  const Bytes upright = imagefiles::Jpeg(Smooth(400, 300, 3));
  struct Case {
    const Bytes& picture;
    std::vector<Bytes> segments;
    XpImageSize size;
  };
  for (const Case& c :
       {Case{upright, {Exif(TiffWithThumbnail(inTags, 1))}, {160, 120}},
        Case{wide, {Exif(TiffWithThumbnail(inTags, 6))}, {106, 160}},
        Case{wide, {Exif(TiffWithThumbnail(inTags, 1)), Resources(inResources)}, {16, 8}},
        Case{wide, {Exif(TiffWithThumbnail(inTags, 1)), Resources(inResources, 0)}, {160, 106}},
        Case{wide, {Resources("no picture"), Resources(inResources)}, {16, 8}},
        Case{wide, {Exif(Orientation(1))}, {}}}) {
    const Bytes file = WithSegments(c.picture, c.segments);
    Stream stream(file);
    XpImageIoJpeg codec;
    EXPECT_EQ(SizeOf(codec.ReadThumbnail(stream, 0, {})), c.size);
    EXPECT_EQ(codec.status, XpOk);
  }
  const Bytes whole = LibraryPixels(inTags, 1);
  for (const auto& [picture, left, top] : {std::tuple{wide, 0u, 7u}, {tall, 40u, 0u}}) {
    const Bytes file = WithSegments(picture, {Exif(TiffWithThumbnail(inTags, 1))});
    Stream stream(file);
    const std::size_t width = 160 - 2 * left, height = 120 - 2 * top;
    Bytes middle;
    for (std::size_t y = top; y < top + height; ++y) middle += whole.substr((y * 160 + left) * 3, width * 3);
    EXPECT_EQ(Pixels(XpImageIoJpeg().ReadThumbnail(stream, 0, {})), middle);
  }
  const Bytes broken = WithSegments(wide, {Resources(inResources.substr(0, 30))});
  Stream stream(broken);
  XpImageIoJpeg codec;
  EXPECT_EQ(codec.ReadThumbnail(stream, 0, {}), nullptr);
  EXPECT_EQ(codec.status, XpErrImageInvalid);
  // Resources that end anywhere give a thumbnail, which may be a part, or none.
  const Bytes resources = Resources(inResources);
  for (std::size_t length = 18; length < resources.size(); ++length) {
    const Bytes cut = WithSegments(wide, {App(13, resources.substr(4, length - 4))});
    Stream cutStream(cut);
    const auto thumbnail = codec.ReadThumbnail(cutStream, 0, {});
    EXPECT_EQ(thumbnail != nullptr,
              codec.status == XpOk && length > resources.size() - inResources.size() + 200);
  }
}

TEST(JpegCodecTest, MarkedAdobeRgbIsBroughtToSrgb) {
  const Bytes plain = imagefiles::Jpeg(Smooth(40, 24, 3));
  const auto icc = [](const Bytes& name) {
    // In two parts, as large profiles come.
    const Bytes profile = Profile(name);
    return App(2, Bytes("ICC_PROFILE\0\1\2", 14) + profile.substr(0, 100)) +
           App(2, Bytes("ICC_PROFILE\0\2\2", 14) + profile.substr(100));
  };
  struct Case {
    int colourSpace;
    Bytes profile;
    bool isConverted;
  };
  for (const Case& c :
       {Case{0xFFFF, {}, true}, Case{0xFFFF, icc("ADOBE RGB 1998 (Kelo Corporation)"), true},
        Case{0xFFFF, icc("sRGB"), false}, Case{1, icc("Adobe RGB 1998 (Kelo Corporation)"), false}}) {
    const Bytes file =
        WithSegments(plain, {Exif(Orientation(1, c.colourSpace)), c.profile, Resources(plain)});
    Stream stream(file);
    XpImageIoJpeg codec;
    const auto stored = codec.Read(stream, 0, 1, {});
    const auto shown = codec.Read(stream, 0, 1, {.toSrgb = true});
    EXPECT_NE(Pixels(stored), Bytes());
    if (c.isConverted) ConvertAdobeRgbToSrgb(*stored);
    EXPECT_EQ(Pixels(shown), Pixels(stored));
    EXPECT_EQ(Pixels(codec.ReadThumbnail(stream, 0, {})), Pixels(stored));
    const auto profile = codec.ReadIccProfile(stream, 0);
    EXPECT_EQ(profile != nullptr, !c.profile.empty());
    EXPECT_EQ(codec.status, c.profile.empty() ? XpErrImageNoData : XpOk);
  }
}

TEST(JpegCodecTest, TagsBringProfileAndXmpAlong) {
  const Bytes name("http://ns.adobe.com/xap/1.0/\0", 29);
  const Bytes file =
      WithSegments(imagefiles::Jpeg(Smooth(8, 8, 3)),
                   {App(1, name + "<x/>"), App(1, Bytes("Exif\1\0", 6) + Orientation(3, 0xFFFF)),
                    App(1, "Exif-like, but not it"), App(2, Bytes("ICC_PROFILE\0\1\1", 14) + "icc!"),
                    App(1, name + "<y/>")});
  Stream stream(file);
  XpImageIoJpeg codec;
  const auto tags = codec.ReadTags(stream, 0);
  ASSERT_NE(tags.Get(), nullptr);
  EXPECT_EQ(tags->GetIfd(0)->GetShort(0x0112, false), 3);
  EXPECT_NE(codec.Read(stream, 0, 1, {}), nullptr);
  EXPECT_FALSE(codec.isAdobeRgb);  // by a profile that cannot be read
  EXPECT_EQ(tags->GetIfd(0)->FindTag(0x8773, false)->ToString(0), "icc!");
  EXPECT_EQ(
      Bytes(static_cast<const char*>(tags->xmp.GetData()), static_cast<std::size_t>(tags->xmp.GetSize())),
      name + "<x/>" + name + "<y/>");
}

class Steps final : public XpImageProgress {
 public:
  explicit Steps(std::size_t stopAfter) : m_stopAfter(stopAfter) {}
  std::int32_t Report(std::int32_t percent) override {
    percents.push_back(percent);
    return percents.size() > m_stopAfter ? 1 : 0;
  }
  std::vector<std::int32_t> percents;

 private:
  std::size_t m_stopAfter;
};

TEST(JpegCodecTest, ProgressIsReportedAndCanStopTheReading) {
  const Bytes file = imagefiles::Jpeg(Smooth(16, 600, 1));
  const std::vector<std::int32_t> all{0, 42, 85, 100};
  for (std::size_t stop = 0; stop <= all.size(); ++stop) {
    Stream stream(file);
    Steps steps(stop);
    XpImageIoJpeg codec;
    const auto picture = codec.Read(stream, 0, 1, {.progress = &steps});
    EXPECT_EQ(picture != nullptr, stop == all.size());
    EXPECT_EQ(codec.status, stop == all.size() ? XpOk : XpErrImageCancelled);
    EXPECT_EQ(steps.percents, std::vector(all.begin(), all.begin() + std::min(stop + 1, all.size())));
  }
}

TEST(JpegCodecTest, PictureCutAnywhereAfterItsHeadIsFilledUp) {
  for (const bool isProgressive : {false, true}) {
    const Bytes file = WithSegments(imagefiles::Jpeg(Noise(48, 40, 3), {.isProgressive = isProgressive}),
                                    {Exif(Orientation(1)), Stereo(0)});
    const std::size_t scan = file.find("\xFF\xDA");
    for (std::size_t length = 0; length < file.size(); ++length) {
      const Bytes cut = file.substr(0, length);
      Stream stream(cut);
      XpImageIoJpeg codec;
      const auto picture = codec.Read(stream, 0, 1, {});
      EXPECT_EQ(picture != nullptr, codec.status == XpOk);
      // A table between the scans of a progressive picture that is cut is an error of the decoder.
      if (length > scan + 14 && !isProgressive) {
        EXPECT_EQ(SizeOf(picture), (XpImageSize{48, 40})) << length;
      } else if (length < scan) {
        EXPECT_NE(codec.status, XpOk) << length;
      }
    }
  }
}

TEST(JpegCodecTest, WhatCannotBeReadHasItsCode) {
  const Bytes plain = imagefiles::Jpeg(Smooth(8, 8, 3));
  const Bytes ink = imagefiles::Jpeg(Smooth(8, 8, 4));
  const Bytes huge = Bytes(plain).replace(plain.find("\xFF\xC0") + 5, 4, "\x27\x10\x27\x10");
  for (const auto& [file, scale, expected] : {std::tuple{plain, 3, XpErrImageArgument},
                                              {Bytes("\xFF\xD8no marker"), 1, XpErrImageInvalid},
                                              {Bytes("GIF89a"), 1, XpErrImageInvalid},
                                              {Bytes(), 1, XpErrEndOfFile},
                                              {ink, 1, XpErrImageInvalid},
                                              {huge, 1, XpErrImageInvalid},
                                              {Bytes("\xFF\xD8\xFF\xE1\0\1", 6), 1, XpErrImageInvalid}}) {
    Stream stream(file);
    XpImageIoJpeg codec;
    EXPECT_EQ(codec.Read(stream, 0, scale, {}), nullptr);
    EXPECT_EQ(codec.status, expected);
  }
  XpImageIoJpeg codec;
  EXPECT_EQ(codec.Load(u"/no/such/file.jpg", 1, {}), nullptr);
  EXPECT_NE(codec.status, XpOk);
}

TEST(JpegCodecTest, KindOfASpecialPictureIsFoundInItsSegment) {
  const Bytes plain = imagefiles::Jpeg(Smooth(8, 8, 3));
  for (const bool isBig : {false, true}) {
    const vrx::test_support::TagBytes order{.bigEndian = isBig};
    const auto index = [&](std::uint32_t tag, std::uint32_t offset) {
      return App(3, "SPF." + order.Header() +
                        order.Ifd({order.Entry(1, 4, 1, 7), order.Entry(tag, 4, 1, offset)}) +
                        order.U32(0x01020304));
    };
    struct Case {
      Bytes segment;
      XpResult result;
      bool found;
      std::uint32_t kind;
    };
    for (const Case& c :
         {Case{index(0xB002, 38), XpOk, true, 0x01020304},
          Case{index(0xB002, 39), XpErrImageInvalid, true, 0},
          Case{index(0xB002, 0), XpErrImageInvalid, true, 0},
          Case{index(0xB003, 38), XpErrImageInvalid, true, 0}, Case{Stereo(0), XpOk, false, 0}}) {
      const Bytes file = WithSegments(plain, {c.segment});
      Stream stream(file);
      bool found = false;
      std::uint32_t kind = 1;
      XpImageIoJpeg codec;
      EXPECT_EQ(codec.FindSpfSegment(stream, found, kind), c.result);
      EXPECT_EQ(found, c.found);
      EXPECT_EQ(kind, c.kind);
    }
  }
}

}  // namespace
