// The first image of a GIF file is shown on its screen, and animations differ from still pictures. Files
// that the loader reads come to the wanted size.
#include <gtest/gtest.h>

#include "imaging/codecs/PictureFormats.h"
#include "imaging/codecs/XpImageIoGIF.h"
#include "imaging/codecs/XpImageIoPNG.h"
#include "tests/imaging/GifFile.h"
#include "tests/imaging/JpegFiles.h"
#include "tests/imaging/MpoFile.h"
#include "tests/imaging/TiffFile.h"
#include "tests/support/TempFolder.h"

namespace {

using namespace giffiles;
using jpegfiles::Stream;
using vrx::formats::FormatCode;

Bytes Show(const Bytes& file, std::int64_t offset = 0) {
  Stream stream(file);
  return jpegfiles::Pixels(XpImageIoGIF().Read(stream, offset, 1, {}));
}

Bytes Colours(const std::vector<int>& indices) {
  Bytes bytes;
  for (const int index : indices) bytes += Colour(index);
  return bytes;
}

TEST(GifCodecTest, FirstImageIsDrawnOnTheScreen) {
  const Bytes head = Head(3, 2, 9);
  const std::vector<int> six{1, 2, 3, 4, 5, 6};
  EXPECT_EQ(Show(head + Image({0, 0, 3, 2}, Pixels(six)) + kEnd), Colours(six));
  EXPECT_EQ(Show("123" + head + Image({0, 0, 3, 2}, Pixels(six)) + kEnd, 3), Colours(six));
  EXPECT_EQ(Show(head + Image({1, 1, 1, 1}, Pixels({7})) + kEnd), Colours({9, 9, 9, 9, 7, 9}))
      << "background";
  EXPECT_EQ(Show(head + Control(0, 2) + Control(0) + Image({0, 0, 3, 2}, Pixels(six)) + kEnd),
            Colours({1, 9, 3, 4, 5, 6}))
      << "what is transparent shows the background";
  EXPECT_EQ(Show(head + Image({2, 1, 3, 2}, Pixels(six)) + kEnd), Colours({9, 9, 9, 9, 9, 1})) << "cut off";
  EXPECT_EQ(Show(head + Image({3, 2, 3, 2}, Pixels(six)) + kEnd), Colours({9, 9, 9, 9, 9, 9})) << "outside";
  EXPECT_EQ(Show(head + Image({0, 0, 3, 2}, Pixels(six), Palette(50)) + kEnd),
            Colours({51, 52, 53, 54, 55, 56}))
      << "colours of its own";
  Bytes few = Head(3, 1, 9).substr(0, 13 + 64 * 3), full = Head(3, 1, 9) + Palette();
  few[10] = '\xF5';
  full[10] = '\xF7';
  const Bytes row = Image({0, 0, 3, 1}, Pixels({1, 64, 3})) + kEnd;
  EXPECT_EQ(Show(few + row), Colours({1, 9, 3})) << "the second has none of 64 colours";
  EXPECT_EQ(Show(full + row), Colours({1, 64, 3})) << "256 colours";
  EXPECT_EQ(Show(full + Control(0, 0) + Image({0, 0, 3, 1}, Pixels({1, 0, 3})) + kEnd), Colours({1, 9, 3}));
  EXPECT_EQ(Show(Head(1, 1, 9, false) + Image({0, 0, 1, 1}, Pixels({1})) + kEnd), Bytes(3, '\0'))
      << "no colours at all";
  EXPECT_EQ(Show(head + Image({0, 0, 3, 2}, Pixels({1, 2, 3, 4})) + kEnd), Colours({1, 2, 3, 9, 9, 9}))
      << "whole rows as far as they go";
  EXPECT_EQ(Show(head + Image({0, 0, 3, 2}, Pixels(six)) + Image({0, 0, 1, 1}, Pixels({7})) + kEnd),
            Colours(six))
      << "later images are not drawn";
  EXPECT_EQ(Show(head), Colours({9, 9, 9, 9, 9, 9})) << "no image";
  EXPECT_EQ(Show(Head(1, 5) + Image({0, 0, 1, 5, true}, Pixels({1, 2, 3, 4, 5})) + kEnd),
            Colours({1, 4, 3, 5, 2}))
      << "interlaced rows come as 0, 4, 2, 1, 3";
}

TEST(GifCodecTest, AnimationHasADelayBeforeItsSecondImage) {
  const Bytes image = Image({0, 0, 1, 1}, Pixels({1})), still = Control(0), delay = Control(256),
              head = Head(1, 1);
  struct Case {
    const char* name;
    Bytes file;
    FormatCode format;
  };
  Bytes damaged = image;
  damaged[damaged.size() - 4] = '\x7F';
  for (const Case& c :
       {Case{"one image", head + image + kEnd, 0x10000301},
        Case{"one with a delay", head + delay + image + kEnd, 0x10000301},
        Case{"two without", head + still + image + still + image + kEnd, 0x10000301},
        Case{"a delay before the first", head + delay + image + image + kEnd, 0x10000302},
        Case{"a delay, then none", head + delay + image + still + image + kEnd, 0x10000302},
        Case{"a delay before the second", head + image + delay + image + kEnd, 0x10000302},
        Case{"a delay before the third", head + image + image + delay + image + kEnd, 0x10000301},
        Case{"damage in the first", head + delay + damaged + image + kEnd, 0x10000302},
        Case{"a comment", head + "\x21\xFE\x04\x01\x01\x01\x01" + Bytes(1, '\0') + image + image + kEnd,
             0x10000301},
        Case{"no image", head + delay + kEnd, 0x10000301}, Case{"no end", head + delay + image, 0x10000301},
        Case{"cut off", head.substr(0, 20), 0x01000000}, Case{"another format", "GIF99a", 0x01000000}}) {
    Stream stream(c.file);
    FormatCode format = 0;
    EXPECT_EQ(XpImageIoGIF().ReadGif(stream, 0, true, format), nullptr) << c.name;
    EXPECT_EQ(format, c.format) << c.name;
    TempFolder folder;
    EXPECT_EQ(XpImageIoGIF().GetGifFormat(XpNarrowString(folder.Write("a", c.file)).ToWide()), c.format)
        << c.name;
  }
  XpImageIoGIF codec;
  EXPECT_EQ(codec.GetGifFormat(u"/no/such/file.gif"), 0x01000000u);
  EXPECT_NE(codec.status, XpOk);
}

TEST(GifCodecTest, SizesAreThoseOfTheScreenAndFitTheTarget) {
  const Bytes file = Head(40, 20) + Image({0, 0, 1, 1}, Pixels({1})) + kEnd;
  Stream stream(file);
  XpImageIoGIF codec;
  XpImageSize size;
  EXPECT_EQ(codec.ReadStoredImageSize(stream, 0, size, false), XpOk);
  EXPECT_EQ(size, (XpImageSize{40, 20}));
  const auto fitted = [&](XpImageSize target) {
    const auto picture = codec.ReadFitted(stream, 0, target, {});
    return picture == nullptr ? XpImageSize() : XpImageSize{picture->width, picture->height};
  };
  EXPECT_EQ(fitted({10, 10}), (XpImageSize{10, 5}));
  EXPECT_EQ(fitted({80, 80}), (XpImageSize{80, 40}));
  EXPECT_EQ(fitted({0, 10}), (XpImageSize{40, 20}));
  EXPECT_EQ(fitted({1, 1}), (XpImageSize{40, 20})) << "no row would be left";
  EXPECT_EQ(codec.ReadThumbnail(stream, 0, {}), nullptr);
  EXPECT_EQ(codec.status, XpErrImageNotProvided);
  for (const Bytes& bad : {Bytes(), Bytes("GIF89a"), Head(0, 5), Head(5, 0)}) {
    Stream damaged(bad);
    EXPECT_EQ(codec.Read(damaged, 0, 1, {}), nullptr);
    EXPECT_EQ(codec.status, XpErrImageInvalid);
  }
  const Bytes none;
  Stream noStream(none);
  EXPECT_EQ(codec.ReadImageSize(noStream, 0, size, false), XpErrImageInvalid);
  const Bytes huge = Head(20'000, 10'001);
  Stream hugeStream(huge);
  EXPECT_EQ(codec.Read(hugeStream, 0, 1, {}), nullptr);
  EXPECT_EQ(codec.status, XpErrOutOfMemory);
}

TEST(PngCodecTest, FilesAreBroughtToWholePixelsOfTheTarget) {
  TempFolder folder;
  const XpString path =
      XpNarrowString(folder.Write("a.png", imagefiles::Png(imagefiles::Smooth(30, 20, 3)))).ToWide();
  XpImageIoPNG codec;
  const auto fitted = [&](XpImageSize target) {
    const auto picture = codec.LoadFitted(path, target, {});
    return picture == nullptr ? XpImageSize() : XpImageSize{picture->width, picture->height};
  };
  EXPECT_EQ(fitted({20, 20}), (XpImageSize{20, 13}));
  EXPECT_EQ(fitted({100, 10}), (XpImageSize{15, 10}));
  EXPECT_EQ(fitted({0, 0}), (XpImageSize{30, 20}));
  EXPECT_EQ(fitted({0, 10}), (XpImageSize{30, 20}));
  EXPECT_EQ(fitted({1, 1}), XpImageSize()) << "no row would be left";
  EXPECT_EQ(codec.status, XpErrFailed);
  EXPECT_EQ(codec.Load(path, 4, {})->width, 30) << "the scale is not used";
  XpImageSize size;
  EXPECT_EQ(codec.GetImageSize(path, size, false), XpOk);
  EXPECT_EQ(size, (XpImageSize{30, 20}));
  EXPECT_EQ(codec.GetImageSize(u"/no/such/file.png", size, false), XpErrFailed);
  EXPECT_FALSE(codec.problem.IsEmpty());
  const Bytes bytes = imagefiles::Png(imagefiles::Smooth(3, 2, 3));
  Stream stream(bytes);
  EXPECT_EQ(codec.Read(stream, 0, 1, {}), nullptr) << "the loader wants a file";
  EXPECT_EQ(codec.ReadThumbnail(stream, 0, {}), nullptr);
  EXPECT_EQ(codec.status, XpErrImageNotProvided);
}

TEST(PictureFormatsTest, ContentAndNameTogetherFindTheCodec) {
  using vrx::imaging::FindPictureFormat;
  TempFolder folder;
  const Bytes jpeg = imagefiles::Jpeg(imagefiles::Smooth(16, 16, 3)),
              tiff = tifffiles::Tiff({}, Bytes(36, '\0'));
  const Bytes mpo = jpegfiles::MpoFile({{0, jpeg}, {0, jpeg}}).bytes;
  const Bytes bigTiff("II+\0\x08\0\0\0", 8);
  struct Case {
    const char* file;
    Bytes bytes;
    const char* format;  // null for none
  };
  for (const Case& c :
       {Case{"a.jpg", jpeg, "JPEG"}, Case{"a.mpo", jpeg, "JPEG"}, Case{"b.mpo", mpo, "MPO"},
        Case{"c.mpo", jpegfiles::MpoFile({{0, jpeg}}).bytes, "MPO"}, Case{"b.jpg", mpo, "JPEG"},
        Case{"b", mpo, "MPO"}, Case{"a.tif", tiff, "TIFF"}, Case{"a.krw", tiff, "RAW"},
        Case{"a.KRF", tiff, "RAW"}, Case{"a.kr2", tiff, "RAW"}, Case{"a.krq", tiff, "RAW"},
        Case{"b.krw", jpeg, "JPEG"}, Case{"b.tif", bigTiff, "BigTIFF"}, Case{"a.png", Head(1, 1), "GIF"},
        Case{"a.gif", imagefiles::Png(imagefiles::Smooth(2, 2, 3)), "PNG"}, Case{"a.bmp", "BM", "BMP"},
        Case{"a.txt", "text", nullptr}, Case{"c.jpg", "", nullptr}}) {
    XpFile file(XpNarrowString(folder.Write(c.file, c.bytes)).ToWide());
    ASSERT_EQ(file.Open(XpOpenRead, XpShareRead), XpOk);
    XpResult result = XpErrFailed;
    const auto* format = FindPictureFormat(file, result);
    EXPECT_EQ(result, XpOk) << c.file;
    EXPECT_STREQ(format == nullptr ? nullptr : format->name, c.format) << c.file;
    if (format != nullptr) {
      EXPECT_NE(format->makeCodec(), nullptr);
    }
  }
}

}  // namespace
