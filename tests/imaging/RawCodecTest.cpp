// RAW files are shown by their preview, tell the size of their sensor data, and are edited in place where
// their kind allows it.
#include <gtest/gtest.h>

#include "imaging/codecs/UprightPicture.h"
#include "imaging/codecs/XpImageIoRAW.h"
#include "imaging/resample/AdobeRgb.h"
#include "imaging/resample/XpPixmapResample.h"
#include "tests/imaging/JpegFiles.h"
#include "tests/imaging/RawFile.h"
#include "tests/support/TempFolder.h"

namespace {

using namespace rawfiles;
using jpegfiles::Pixels;
using jpegfiles::Stream;
using vrx::test_support::TagBytes;
using Tags = XpTiffTagManager;

XpString Wide(const std::string& path) { return XpNarrowString(path.c_str()).ToWide(); }

XpImageSize SizeOf(const XpImageIo::Picture& picture) {
  return picture == nullptr ? XpImageSize() : XpImageSize{picture->width, picture->height};
}

XpImageIo::Picture Decoded(const Bytes& jpeg) {
  Stream stream(jpeg);
  return XpImageIoJpeg().Read(stream, 0, 1, {});
}

Bytes PreviewWith(int orientation, int colourSpace) {
  const Bytes tags = jpegfiles::Orientation(orientation, colourSpace);
  return jpegfiles::WithSegments(Preview(), {jpegfiles::Exif(tags)});
}

TEST(RawCodecTest, PreviewIsFoundWhereTheTagsNameIt) {
  struct Case {
    const char* name;
    std::size_t previewIfd;
    std::uint16_t tag;
    std::uint32_t type, value;  // of this tag in IFD 0
    XpResult shown, copied;
  };
  constexpr XpResult kOk = XpOk, kNone = XpErrImageNoData, kEnd = XpErrEndOfFile;
  for (const Case& c :
       {Case{"in IFD 0", 0, 0x0100, 4, 9, kOk, kOk}, Case{"in IFD 1", 1, 0x0202, 4, 9, kOk, kOk},
        Case{"not a LONG in IFD 0, but in IFD 1", 1, 0x0201, 3, 9, kOk, kOk},
        Case{"not a LONG", 0, 0x0201, 3, 9, kNone, kNone},
        Case{"0 in IFD 0, although there is one in IFD 1", 1, 0x0201, 4, 0, kNone, kNone},
        Case{"after the end", 0, 0x0201, 4, ~0u, kEnd, kEnd},
        Case{"longer than the file", 0, 0x0202, 4, ~0u, kOk, kEnd},
        Case{"without a length", 0, 0x0202, 3, 9, kOk, kNone}}) {
    SCOPED_TRACE(c.name);
    const auto change = [&](Tags& tags) {
      if (c.type == 3) tags.GetIfd(0)->SetShort(c.tag, static_cast<std::uint16_t>(c.value));
      if (c.type == 4) tags.GetIfd(0)->SetLong(c.tag, c.value);
      tags.GetExifIfd()->SetLong(0x0201, 9);  // below IFD 0 it says nothing
    };
    const Bytes file = RawFile({.previewIfd = c.previewIfd, .change = change});
    const Bytes outer = "12345678" + file;  // offsets count from the TIFF header
    Stream stream(file), within(outer);
    XpImageIoRAW codec;
    const auto picture = codec.Read(stream, 0, 1, {});
    EXPECT_EQ(codec.status, c.shown);
    EXPECT_EQ(Pixels(picture), c.shown == XpOk ? Pixels(Decoded(Preview())) : "");
    EXPECT_EQ(Pixels(codec.Read(within, 8, 1, {})), Pixels(picture));
    EXPECT_EQ(codec.ReadThumbnail(stream, 0, {}) != nullptr, c.shown == XpOk);
    XpMemoryFile out;
    EXPECT_EQ(codec.CopyPreview(stream, out), c.copied);
    EXPECT_EQ(Bytes(static_cast<const char*>(out.GetData()), static_cast<std::size_t>(out.GetSize())),
              c.copied == XpOk ? Preview() : "");
  }
  Bytes cut = RawFile({.preview = Bytes(1 << 20, 'x')});
  cut.pop_back();
  Stream stream(cut);
  XpMemoryFile out;
  EXPECT_EQ(XpImageIoRAW().CopyPreview(stream, out), XpErrEndOfFile);
  EXPECT_EQ(out.GetSize(), 0);
}

TEST(RawCodecTest, ColoursFollowTheMarkOfThePreviewAndOnDemandThatOfTheFile) {
  for (int marks = 0; marks < 4; ++marks) {
    SCOPED_TRACE(marks);
    const bool ofPreview = (marks & 1) != 0, ofFile = (marks & 2) != 0;
    const Bytes preview = PreviewWith(1, ofPreview ? 0xFFFF : 1);
    const auto mark = [&](Tags& tags) { tags.GetExifIfd()->SetShort(0xA001, ofFile ? 0xFFFF : 1); };
    const Bytes file = RawFile({.preview = preview, .change = mark});
    Stream stream(file);
    const auto expected = Decoded(preview);
    if (ofPreview) ConvertAdobeRgbToSrgb(*expected);
    EXPECT_EQ(Pixels(XpImageIoRAW().Read(stream, 0, 1, {})), Pixels(expected));
    if (ofFile) ConvertAdobeRgbToSrgb(*expected);
    EXPECT_EQ(Pixels(XpImageIoRAW().Read(stream, 0, 1, {.toSrgb = true})), Pixels(expected));
    ResizePixmap(*expected, 160, 96);
    EXPECT_EQ(Pixels(XpImageIoRAW().ReadThumbnail(stream, 0, {})), Pixels(expected));
  }
}

TEST(RawCodecTest, PictureIsTurnedByThePreviewAndOnDemandByTheFile) {
  const TempFolder folder;
  for (const auto& [orientation, rotation] :
       {std::pair{0, 0}, {2, 0}, {3, 2}, {5, 0}, {6, 3}, {8, 1}, {9, 0}}) {
    SCOPED_TRACE(orientation);
    const auto turn = static_cast<std::uint16_t>(orientation);
    const Bytes file = RawFile({.preview = PreviewWith(3, 1),
                                .change = [&](Tags& tags) { tags.GetIfd(0)->SetShort(0x0112, turn); }});
    Stream stream(file);
    XpImageIoRAW codec;
    std::int32_t given = -1;
    auto stored = codec.Read(stream, 0, 1, {.outRotation = &given});
    EXPECT_EQ(given, rotation);
    EXPECT_EQ(Pixels(stored), Pixels(vrx::imaging::TurnUpright(Decoded(Preview()), 3)));
    const auto upright =
        codec.ReadFitted(stream, 0, {99, 99}, {.applyOrientation = true, .outRotation = &given});
    EXPECT_EQ(given, rotation);
    EXPECT_EQ(Pixels(upright), Pixels(vrx::imaging::TurnUpright(std::move(stored), turn)));
    EXPECT_EQ(SizeOf(codec.ReadThumbnail(stream, 0, {.outRotation = &given})), (XpImageSize{160, 96}));
    EXPECT_EQ(given, 0);

    const bool isSideways = orientation >= 5 && orientation <= 8;
    const XpString path = Wide(folder.Write("a.krw", file));
    XpImageSize preview, whole, asStored;
    codec.GetPreviewSize(path, preview, false);
    codec.GetImageSize(path, whole, false);
    codec.GetStoredImageSize(path, asStored, false);
    EXPECT_EQ(preview, (isSideways ? XpImageSize{24, 40} : XpImageSize{40, 24}));
    EXPECT_EQ(whole, (isSideways ? XpImageSize{2000, 3000} : XpImageSize{3000, 2000}));
    EXPECT_EQ(asStored, (XpImageSize{3000, 2000}));
  }
  // The size of the preview is that in its own header, whatever its own orientation.
  const XpString path = Wide(folder.Write("b.krw", RawFile({.preview = PreviewWith(6, 1)})));
  XpImageSize preview;
  EXPECT_EQ(XpImageIoRAW().GetPreviewSize(path, preview, false), XpOk);
  EXPECT_EQ(preview, (XpImageSize{40, 24}));
}

TEST(RawCodecTest, PreviewIsScaledAndFittedButNotEnlarged) {
  struct Case {
    std::int32_t scale;  // below 0: the target instead
    XpImageSize target, size;
  };
  const Bytes file = RawFile();  // 40 by 24
  Stream stream(file);
  XpImageIoRAW codec;
  for (const Case& c : {Case{2, {}, {20, 12}}, Case{24, {}, {1, 1}}, Case{25, {}, {40, 24}}, Case{0, {}, {}},
                        Case{-1, {40, 24}, {40, 24}}, Case{-1, {99, 24}, {40, 24}},
                        Case{-1, {20, 20}, {20, 12}}, Case{-1, {99, 12}, {20, 12}}, Case{-1, {1, 1}, {}}}) {
    SCOPED_TRACE(testing::Message() << c.scale << ' ' << c.target.width);
    const auto expected = Decoded(Preview());
    ResizePixmap(*expected, c.size.width, c.size.height);
    const auto picture =
        c.scale >= 0 ? codec.Read(stream, 0, c.scale, {}) : codec.ReadFitted(stream, 0, c.target, {});
    EXPECT_EQ(Pixels(picture), c.size.width > 0 ? Pixels(expected) : "");
    EXPECT_EQ(codec.status, c.size.width > 0 ? XpOk : c.scale == 0 ? XpErrImageArgument : XpErrFailed);
  }
}

/// What the tags say of the size.
struct SizeCase {
  const char* name;
  XpImageSize size = {};    // the answer; 0 by 0 when it is unknown
  std::uint32_t first = 0;  // width in IFD 0, beside a height of 2000
  const char* model = "KLX-Q9";
  std::vector<std::uint32_t> below = {};  // widths in the IFDs below, each beside a height of 400
  std::uint16_t number = 0;
  std::vector<std::uint32_t> sensor = {};  // height and width in the maker note
};

void Describe(const SizeCase& c, Tags& tags) {
  XpTiffTagIFD& first = *tags.GetIfd(0);
  first.SetLong(0x0100, c.first);
  first.SetAscii(0x0110, c.model);
  std::vector<std::unique_ptr<XpTiffTagIFD>> ifds;
  for (const std::uint32_t width : c.below) {
    ifds.push_back(std::make_unique<XpTiffTagIFD>());
    ifds.back()->SetLong(0x0100, width);
    ifds.back()->SetShort(0x0101, 400);
  }
  if (!c.below.empty()) AddIfds(first, 0x014A, std::move(ifds));
  tags.GetMakerIfd()->SetShort(0xB001, c.number);
  const auto sides = static_cast<std::uint32_t>(c.sensor.size());
  auto sensor = std::make_unique<XpTiffTagData<XpTiffTagTypeLong>>(std::uint16_t{0xB02B}, sides);
  std::copy(c.sensor.begin(), c.sensor.end(), sensor->elements.get());
  tags.GetMakerIfd()->AddTag(std::move(sensor));
}

TEST(RawCodecTest, SizeOfTheSensorDataIsFoundInEveryPlaceThatCamerasHaveForIt) {
  const SizeCase noted{.name = "sensor of one", .size = {610, 410}, .below = {600}, .sensor = {410, 610}};
  XpImageIoRAW codec;
  for (const SizeCase& c :
       {noted, SizeCase{.name = "stated", .size = {3000, 2000}, .first = 3000, .below = {600}},
        SizeCase{.name = "first model", .size = {3264, 2448}, .first = 3000, .model = "KLX-Q201"},
        SizeCase{.name = "second model, states 0", .size = {3072, 2304}, .model = "KLX-Q2"},
        SizeCase{.name = "longer model", .size = {3000, 2000}, .first = 3000, .model = "KLX-Q2 "},
        SizeCase{.name = "nothing", .sensor = {410, 610}},
        SizeCase{.name = "one below", .size = {600, 400}, .below = {600}, .number = 3},
        SizeCase{.name = "number 2", .size = {3888, 2592}, .below = {0}, .number = 2},
        SizeCase{.name = "number 0x100", .size = {3872, 2592}, .below = {600}, .number = 0x100},
        SizeCase{.name = "several below", .below = {600, 700}, .number = 2},
        SizeCase{.name = "sensor of several", .size = {610, 410}, .below = {0, 0}, .sensor = {410, 610}},
        SizeCase{.name = "one side", .size = {600, 400}, .below = {600}, .sensor = {410}},
        SizeCase{.name = "a side of 0", .size = {600, 400}, .below = {600}, .sensor = {0, 610}},
        SizeCase{.name = "too wide", .first = 0x80000000}}) {
    for (const bool bigEndian : {false, true}) {
      SCOPED_TRACE(c.name);
      const auto describe = [&](Tags& tags) { Describe(c, tags); };
      const Bytes file = RawFile({.bigEndian = bigEndian, .hasSignature = bigEndian, .change = describe});
      Stream stream(file, u"/a.KRW");
      XpImageSize size;
      EXPECT_EQ(codec.ReadImageSize(stream, 0, size, false), c.size.width > 0 ? XpOk : XpErrImageInvalid);
      EXPECT_EQ(size, c.size);
    }
  }
  // Where the maker note is not read, its number and sizes are not seen.
  const Bytes file = RawFile({.change = [&](Tags& tags) { Describe(noted, tags); }});
  Stream stream(file, u"/a.krf");
  XpImageSize size;
  EXPECT_EQ(codec.ReadImageSize(stream, 0, size, false), XpOk);
  EXPECT_EQ(size, (XpImageSize{600, 400}));
}

XpGPSRecord RecordOf(const Bytes& file) {
  Stream stream(file);
  return vrx::imaging::ReadGpsTags(*XpImageIoRAW().ReadTags(stream, 0)->GetGpsIfd());
}

TEST(RawCodecTest, NameAndVersionDecideWhichEditsAFileTakes) {
  struct Case {
    const char* name;
    std::uint32_t stored;
    void (*change)(Tags&);
    std::uint32_t version;
    XpResult turned, rated, gps;
  };
  constexpr XpResult kOk = XpOk, kNone = XpErrImageNoData, kNot = XpErrImageNotProvided;
  const auto early = [](Tags& tags) { tags.GetIfd(0)->SetAscii(0x0131, "KLX-Q1000 v1.0"); };
  const auto later = [](Tags& tags) { tags.GetIfd(0)->SetAscii(0x0131, "KLX-Q1000 V1.0"); };
  const auto otherType = [](Tags& tags) { tags.GetMakerIfd()->SetShort(0xB000, 3); };
  const auto oneByte = [](Tags& tags) { tags.GetMakerIfd()->SetByte(0xB000, 3); };
  for (const Case& c : {Case{"a.kr2", 0x303, nullptr, 0x303, kOk, kOk, kOk},
                        Case{"a.krq", 0x302, nullptr, 0x302, kOk, kOk, kOk},
                        Case{"a.KRW", 0x301, nullptr, 0x301, kOk, kOk, kNone},
                        Case{"none.krw", 0, nullptr, 0, kOk, kNone, kNone},
                        Case{"early.krw", 0x302, early, 0x100, kNot, kOk, kNone},
                        Case{"early.kr2", 0x302, early, 0x100, kOk, kOk, kNone},
                        Case{"later.krw", 0x302, later, 0x302, kOk, kOk, kOk},
                        Case{"type.krw", 0x302, otherType, 0, kOk, kOk, kNone},
                        Case{"byte.krw", 0x302, oneByte, 0x300, kOk, kOk, kNone},
                        Case{"a.krf", 0x302, nullptr, 0x302, kNot, kNone, kOk},
                        Case{"a.tif", 0x302, nullptr, 0x302, kNot, kNone, kOk}}) {
    SCOPED_TRACE(c.name);
    const TempFolder folder;
    const Bytes file = RawFile({.version = c.stored, .change = c.change});
    const XpString path = Wide(folder.Write(c.name, file));
    XpImageIoRAW codec;
    EXPECT_EQ(codec.GetRawVersion(path), c.version);
    EXPECT_EQ(codec.IsEarlyBody(path), c.name == std::string("early.krw"));
    EXPECT_EQ(codec.LoadTags(path)->GetMakerIfd() != nullptr, c.rated == XpOk);
    XpDateTime date;
    date.SetDateTime(2024, 5, 1, 10, 11, 12);
    EXPECT_EQ(codec.SetOriginalDate(path, date), c.turned);
    EXPECT_EQ(codec.SetRotation(path, 1), c.turned);
    EXPECT_EQ(folder.Read(c.name) == file, c.turned != XpOk);
    const bool isTurned = codec.LoadTags(path)->GetIfd(1)->GetShort(0x0112, false) == 8;
    EXPECT_EQ(isTurned, c.turned == XpOk);
    EXPECT_EQ(XpImageIoRAW().SetRating(path, 4), c.rated);
    EXPECT_EQ(codec.ReplaceGps(path, RecordOf(file)), c.gps);
    EXPECT_GT(codec.LoadTags(path)->GetIfd(0)->GetAscii(0x0132).AsView(), kDate);
    EXPECT_EQ(codec.StripGps(path), c.gps);
    EXPECT_EQ(codec.LoadTags(path)->GetGpsIfd() == nullptr, c.gps == XpOk);
    EXPECT_EQ(folder.Read(c.name).size(), file.size());
  }
}

TEST(RawCodecTest, NewPositionTakesThePlaceOfTheOldOneByteForByte) {
  for (const bool bigEndian : {false, true}) {
    // Without the date of the last change, which an edit would bring up to date.
    const auto undate = [](Tags& tags) { tags.GetIfd(0)->SetShort(0x0132, 0); };
    Bytes file = RawFile({.bigEndian = bigEndian, .change = undate});
    const TempFolder folder;
    const XpString path = Wide(folder.Write("a.krw", file));
    XpGPSRecord record = RecordOf(file);
    ASSERT_EQ(XpImageIoRAW().ReplaceGps(path, record), XpOk);
    EXPECT_EQ(folder.Read("a.krw"), file);

    record.latitudeRef.text = "S";
    record.latitude.values[2] = {77, 78};
    record.dateStamp.text = "2024:05:01";
    ASSERT_EQ(XpImageIoRAW().ReplaceGps(path, record), XpOk);
    const TagBytes b{.bigEndian = bigEndian};
    for (const auto& [from, to] : {std::pair{b.Entry(1, 2, 2, "N"), b.Entry(1, 2, 2, "S")},
                                   {b.U32(1392) + b.U32(100), b.U32(77) + b.U32(78)},
                                   {Bytes("2020:01:02\0", 11), Bytes("2024:05:01\0", 11)}}) {
      ASSERT_NE(file.find(from), Bytes::npos);
      file.replace(file.find(from), from.size(), to);
    }
    EXPECT_EQ(folder.Read("a.krw"), file);

    record.dateStamp.text = "2020:01:02";
    Bytes outer = "12345678" + file;
    Stream within(outer);
    EXPECT_EQ(XpImageIoRAW().WriteGps(within, 8, record), XpOk);
    EXPECT_EQ(outer, Bytes("12345678" + file).replace(8 + file.find("2024:05:01"), 10, "2020:01:02"));
  }
  const XpString none = Wide((TempFolder().Path() / "none.krw").string());
  EXPECT_EQ(XpImageIoRAW().ReplaceGps(none, {}), XpErrFileNotFound);
  EXPECT_EQ(XpImageIoRAW().StripGps(none), XpErrFileNotFound);
}

constexpr TagBytes kLittle;
const Bytes kPointer = kLittle.U16(0x8825) + kLittle.U16(4);
const Bytes kStamp("2020:01:02\0", 11);

/// Where the value field of a position stands.
std::size_t FieldOf(const Bytes& file, std::uint32_t tag) {
  return file.find(kLittle.U16(tag) + kLittle.U16(5) + kLittle.U32(3)) + 8;
}

/// The tag has a second offset, although it leads nowhere.
void LeadToTwo(Bytes& file, XpGPSRecord&) {
  const std::size_t entry = file.find(kPointer);
  const Bytes place = file.substr(entry + 8, 4);
  file.replace(entry + 4, 8, kLittle.U32(2) + kLittle.U32(static_cast<std::uint32_t>(file.size())));
  file += place + Bytes(4, '\0');
}

TEST(RawCodecTest, PositionThatDoesNotFitItsPlaceChangesNothing) {
  using File = Bytes;
  using Record = XpGPSRecord;
  constexpr XpResult kNone = XpErrImageNoData, kDiffers = XpErrImageMismatch, kShared = XpErrImageUnusable;
  struct Case {
    const char* name;
    XpResult result;
    void (*change)(File&, Record&);
  };
  const Case cases[] = {
      {"no place", kNone, [](File& f, Record&) { f[f.find(kPointer)] = 0x24; }},
      {"two places", kShared, LeadToTwo},
      {"a tag less", kNone, [](File&, Record& r) { r.status.present = false; }},
      {"a tag more in the same size", kNone,
       [](File&, Record& r) { r.measureMode.present = true, r.dateStamp.text = "2"; }},
      {"another tag", kNone, [](File&, Record& r) { std::swap(r.status, r.measureMode); }},
      {"longer text", kNone, [](File&, Record& r) { r.dateStamp.text += "ab"; }},
      {"longer, of the same size", kDiffers, [](File&, Record& r) { r.dateStamp.text += "a"; }},
      {"other type", kDiffers, [](File& f, Record&) { f[f.find(kLittle.Entry(5, 1, 1, 0)) + 2] = 6; }},
      {"other datum", kDiffers, [](File&, Record& r) { r.mapDatum.text = "WGS-72"; }},
      {"other method", kDiffers, [](File&, Record& r) { r.processingMethod.bytes.back() = 'X'; }},
      {"other satellites", kDiffers, [](File&, Record& r) { r.satellites.text = "08"; }},
      {"other area", kDiffers, [](File&, Record& r) { r.areaInformation.bytes[0] = 'X'; }},
      {"ends in its place", XpErrImageInvalid, [](File& f, Record&) { f.resize(f.find(kStamp) + 11); }},
      {"a value elsewhere", kShared, [](File& f, Record&) { f.replace(FieldOf(f, 2), 4, kLittle.U32(8)); }},
      {"values in one place", kShared,
       [](File& f, Record&) {
         f.replace(f.find(kLittle.U32(11) + kLittle.U32(1)), 24, 24, '\0');
         f.replace(FieldOf(f, 4), 4, f, FieldOf(f, 2), 4);
       }},
      {"a byte between values", kShared, [](File& f, Record&) { f[f.find(kStamp) + 11] = 'x'; }},
      {"a text without its end", kNone,
       [](File& f, Record& r) { f[f.find(kStamp) + 10] = 'x', r = RecordOf(f); }},
      {"a tag twice", kShared,
       [](File& f, Record& r) {
         f[f.find(kLittle.Entry(3, 2, 2, "E"))] = 1, r.longitudeRef.present = false;
       }},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    Bytes file = RawFile();
    XpGPSRecord record = RecordOf(file);
    c.change(file, record);
    Bytes edited = file;
    Stream stream(edited);
    EXPECT_EQ(XpImageIoRAW().WriteGps(stream, 0, record), c.result);
    EXPECT_EQ(edited, file);
  }
}

TEST(RawCodecTest, CutFileGivesAResultEverywhereAndKeepsItsLength) {
  const Bytes whole = RawFile();
  const XpGPSRecord record = RecordOf(whole);
  for (std::size_t length = 0; length < whole.size(); ++length) {
    SCOPED_TRACE(length);
    Bytes file = whole.substr(0, length);
    Stream stream(file, u"/a.krw");
    XpImageIoRAW codec;
    const auto picture = codec.ReadFitted(stream, 0, {8, 8}, {.toSrgb = true, .applyOrientation = true});
    EXPECT_EQ(picture != nullptr, codec.status == XpOk);
    XpImageSize size;
    const XpResult sized = codec.ReadImageSize(stream, 0, size, false);
    EXPECT_EQ(sized == XpOk, size.width > 0);
    XpMemoryFile out;
    EXPECT_NE(codec.CopyPreview(stream, out), XpOk);
    EXPECT_EQ(out.GetSize(), 0);
    EXPECT_TRUE(codec.WriteGps(stream, 0, record) == XpOk || file == whole.substr(0, length));
    codec.WriteRotation(stream, 0, 1);
    codec.WriteStrippedGps(stream, 0);
    EXPECT_EQ(stream.GetSize(), static_cast<std::int64_t>(length));
  }
}

}  // namespace
