// Multi-picture files show the picture that their index names, and edits reach every frame.
#include <gtest/gtest.h>

#include "imaging/codecs/MpSummary.h"
#include "imaging/codecs/XpImageIoMPO.h"
#include "tests/imaging/CameraFile.h"
#include "tests/imaging/MpoFile.h"
#include "tests/support/TempFolder.h"

namespace {

using namespace jpegfiles;
using imagefiles::Smooth;
using vrx::imaging::MpPictureSummary;
using vrx::imaging::SummarizeMpFile;

/// Known by its width; its thumbnail is half as wide.
Bytes Numbered(int width) {
  const Bytes thumbnail = imagefiles::Jpeg(Smooth(width / 2, 4, 1));
  return WithSegments(imagefiles::Jpeg(Smooth(width, 8, 1)), {Exif(Orientation(1)), Resources(thumbnail)});
}

std::int32_t WidthOf(const XpImageIo::Picture& picture) { return picture == nullptr ? 0 : picture->width; }

/// The file in the middle of a stream.
constexpr std::int64_t kBefore = 5;
Bytes InContainer(const Bytes& file) { return Bytes(kBefore, '~') + file; }

TEST(MpoCodecTest, RepresentativePictureIsShownOrElseTheFirstFrame) {
  struct Case {
    std::vector<std::uint32_t> attributes;  // of pictures of the widths 16, 24 and 32
    std::int32_t shown;
    std::vector<std::int32_t> frames;
  };
  for (const bool isBig : {false, true}) {  // the Exif tags are big-endian
    for (const Case& c :
         {Case{{0, 0, 0}, 16, {16, 24, 32}}, Case{{kMpRepresentative, 0, 0}, 16, {16, 24, 32}},
          Case{{0, 0, kMpRepresentative}, 32, {16, 24, 32}}, Case{{0, kMpChild, 0}, 16, {16, 32}},
          Case{{kMpChild, 0, 0x80020002}, 24, {24, 32}},
          Case{{0, kMpChild | kMpRepresentative, kMpRepresentative}, 24, {16, 32}},
          Case{{kMpChild, kMpChild, kMpChild}, 0, {}}}) {
      SCOPED_TRACE(testing::PrintToString(c.attributes) + (isBig ? " big-endian" : ""));
      const MpoFile file(
          {{c.attributes[0], Numbered(16)}, {c.attributes[1], Numbered(24)}, {c.attributes[2], Numbered(32)}},
          {.isBig = isBig});
      const Bytes bytes = InContainer(file.bytes);
      Stream stream(bytes);
      XpImageIoMPO codec;
      EXPECT_EQ(WidthOf(codec.Read(stream, kBefore, 1, {})), c.shown);
      EXPECT_EQ(codec.status, c.shown == 0 ? XpErrImageUnusable : XpOk);
      EXPECT_EQ(WidthOf(codec.Read(stream, kBefore, 2, {})), c.shown / 2);
      EXPECT_EQ(WidthOf(codec.ReadThumbnail(stream, kBefore, {})), c.shown / 2);
      const std::int64_t frames = std::ssize(c.frames);
      EXPECT_EQ(codec.GetFrameCount(stream, kBefore), frames);
      for (std::int64_t i = 0; i < frames; ++i) {
        EXPECT_EQ(WidthOf(codec.ReadThumbnailOfFrame(stream, kBefore, i, {})),
                  c.frames[static_cast<std::size_t>(i)] / 2);
      }
      EXPECT_EQ(codec.ReadThumbnailOfFrame(stream, kBefore, frames, {}), nullptr);
      EXPECT_EQ(codec.status, XpErrImageUnusable);
      EXPECT_EQ(codec.ReadThumbnailOfFrame(stream, kBefore, -1, {}), nullptr);
      EXPECT_EQ(codec.status, XpErrImageArgument);
      // Size and tags are those of the first picture, whichever is shown.
      XpImageSize size;
      EXPECT_EQ(codec.ReadImageSize(stream, kBefore, size, false), XpOk);
      EXPECT_EQ(size, (XpImageSize{16, 8}));
      EXPECT_EQ(codec.ReadTags(stream, kBefore)->GetIfd(0)->GetShort(0x0112, false), 1);
    }
  }
}

TEST(MpoCodecTest, PictureThatTheFileDoesNotHoldGivesWayToTheFirst) {
  MpoFile file({{0, Numbered(16)}, {kMpRepresentative, Numbered(24)}});
  const std::size_t end = file.bytes.size() - file.header;
  struct Case {
    std::size_t offset;
    XpResult result;
    std::int64_t position;
    std::int32_t shown;
  };
  for (const Case& c :
       {Case{0, XpOk, kBefore, 16}, Case{end - 1, XpOk, kBefore + std::ssize(file.bytes) - 1, 0},
        Case{end, XpErrPastEnd, 0, 16}, Case{0xFFFFFFFF, XpErrPastEnd, 0, 16}}) {
    SCOPED_TRACE(c.offset);
    const Bytes bytes = InContainer(file.Set(1, MpField::Offset, c.offset).bytes);
    Stream stream(bytes);
    XpImageIoMPO codec;
    EXPECT_EQ(WidthOf(codec.Read(stream, kBefore, 1, {})), c.shown);
    EXPECT_EQ(codec.SeekToFrame(stream, kBefore, 1, nullptr), c.result);
    EXPECT_TRUE(c.result != XpOk || stream.Tell() == c.position);
  }
}

TEST(MpoCodecTest, FileWithoutAUsableIndexShowsNothingAndIsNotEdited) {
  const std::vector<MpoPicture> pictures{{0, Numbered(16)}, {0, Numbered(24)}};
  const auto form = [&](const MpIndexForm& f) { return MpoFile(pictures, f).bytes; };
  const MpoFile good(pictures);
  const Bytes noHeader = Bytes(good.bytes).replace(good.header, 2, "XX");
  // The index among the tables of the picture.
  const Bytes late = Bytes(good.bytes).insert(good.header - 8, Bytes("\xFF\xFE\0\2", 4));
  struct Case {
    const char* name;
    Bytes file;
    XpResult result;
  };
  for (const Case& c :
       {Case{"whole", good.bytes, XpOk}, Case{"more entries than there are", form({.moreEntries = 9}), XpOk},
        Case{"no index", Numbered(16), XpErrImageNoData}, Case{"late index", late, XpErrImageNoData},
        Case{"no TIFF header", noHeader, XpErrImageInvalid},
        Case{"one IFD", form({.ifds = 1}), XpErrImageUnusable},
        Case{"three IFDs", form({.ifds = 3}), XpErrImageUnusable},
        Case{"count no LONG", form({.countType = 9}), XpErrImageUnusable},
        Case{"table of bytes", form({.tableType = 1}), XpErrImageUnusable}}) {
    SCOPED_TRACE(c.name);
    const bool isUsable = c.result == XpOk;
    Bytes bytes = c.file;
    Stream stream(bytes);
    XpImageIoMPO codec;
    EXPECT_EQ(WidthOf(codec.Read(stream, 0, 1, {})), isUsable ? 16 : 0);
    EXPECT_EQ(codec.status, c.result);
    EXPECT_EQ(WidthOf(codec.ReadThumbnail(stream, 0, {})), isUsable ? 8 : 0);
    EXPECT_EQ(codec.GetFrameCount(stream, 0), isUsable ? 2 : 0);
    EXPECT_EQ(codec.WriteRotation(stream, 0, 1), isUsable ? XpOk : XpErrImageUnusable);
    EXPECT_EQ(bytes != c.file, isUsable);
  }
}

using Edit = XpResult (*)(XpImageIo&, XpAbstractFile&, std::int64_t offset);
XpDateTime Date() {
  XpDateTime date;
  date.SetDateTime(2001, 2, 3, 4, 5, 6);
  return date;
}
constexpr Edit kEdits[] = {
    [](XpImageIo& io, XpAbstractFile& f, std::int64_t at) { return io.WriteRotation(f, at, 1); },
    [](XpImageIo& io, XpAbstractFile& f, std::int64_t at) {
      return io.WriteModifyDate(f, at, Date(), false);
    },
    [](XpImageIo& io, XpAbstractFile& f, std::int64_t at) { return io.WriteOriginalDate(f, at, Date()); },
    [](XpImageIo& io, XpAbstractFile& f, std::int64_t at) { return io.WriteStrippedGps(f, at); }};
constexpr std::size_t kGpsEdit = 3;

/// The date of the last change, which edits made now, gives way to crosses wherever `file` has it.
Bytes WithoutNow(Bytes edited, const Bytes& file) {
  for (std::size_t at = 0; (at = file.find(kCameraDate, at)) != Bytes::npos; ++at) {
    if (edited.substr(at, 4) != "2001" && edited.substr(at, 19) != kCameraDate)
      edited.replace(at, 19, 19, 'x');
  }
  return edited;
}

TEST(MpoCodecTest, EditReachesEveryFrameOnceAndNoOtherByte) {
  const Bytes camera = CameraFile(), bare = CameraPicture();
  const Bytes broken = WithSegments(bare, {Exif("no TIFF header")});
  const Bytes cut = "\xFF\xD8\xFF\xE1\xFF\xFF";  // the file ends in its head
  constexpr std::size_t kSame = 1, kLost = 2;
  struct Case {
    const char* name;
    std::vector<MpoPicture> pictures;
    std::vector<std::size_t> offsets;  // of entries: kept, that of the second picture, or past the end
    XpResult result, gpsResult;
    std::vector<std::size_t> edited, gpsEdited;  // pictures
  };
  for (const Case& c :
       {Case{"part and one picture twice",
             {{0, camera}, {0, camera}, {kMpChild, camera}, {0, camera}},
             {0, 0, 0, kSame},
             XpOk,
             XpOk,
             {0, 1},
             {0, 1}},
        Case{"no tags",
             {{0, camera}, {0, bare}, {0, camera}},
             {},
             XpErrImageNoData,
             XpErrImageNoData,
             {0},
             {0}},
        Case{"broken tags",
             {{0, camera}, {0, broken}, {0, camera}},
             {},
             XpErrImageInvalid,
             XpErrImageInvalid,
             {0},
             {0}},
        Case{"cut", {{0, camera}, {0, cut}}, {}, XpErrEndOfFile, XpErrEndOfFile, {0}, {0}},
        Case{"lost", {{0, camera}, {0, camera}, {0, camera}}, {0, kLost}, XpOk, XpErrPastEnd, {0, 2}, {0}},
        Case{"first lost",
             {{kMpChild, camera}, {0, camera}, {0, camera}},
             {0, kLost},
             XpErrPastEnd,
             XpErrPastEnd,
             {},
             {}}}) {
    MpoFile file(c.pictures);
    for (std::size_t i = 0; i < c.offsets.size(); ++i) {
      if (c.offsets[i] == 0) continue;
      file.Set(i, MpField::Offset, c.offsets[i] == kSame ? file.starts[1] - file.header : 1u << 30);
    }
    for (std::size_t e = 0; e < std::size(kEdits); ++e) {
      SCOPED_TRACE(testing::Message() << c.name << ", edit " << e);
      const XpResult result = e == kGpsEdit ? c.gpsResult : c.result;
      Bytes bytes = InContainer(file.bytes), expected = file.bytes;
      Stream stream(bytes);
      XpImageIoMPO codec;
      EXPECT_EQ(kEdits[e](codec, stream, kBefore), result);
      EXPECT_EQ(codec.status, result);
      // As the codec of JPEG files edits each.
      for (const std::size_t i : e == kGpsEdit ? c.gpsEdited : c.edited) {
        Stream whole(expected);
        XpImageIoJpeg jpeg;
        EXPECT_EQ(kEdits[e](jpeg, whole, static_cast<std::int64_t>(file.starts[i])), XpOk);
        EXPECT_NE(bytes.substr(kBefore + file.starts[i], 999), file.bytes.substr(file.starts[i], 999));
      }
      EXPECT_TRUE(WithoutNow(bytes.substr(kBefore), file.bytes) == WithoutNow(expected, file.bytes));
    }
  }
}

TEST(MpoCodecTest, FileIsRatedAndStrippedInPlace) {
  const MpoFile file({{0, CameraFile()}, {0, CameraFile()}});
  const TempFolder folder;
  const XpString path = XpNarrowString(folder.Write("a.mpo", file.bytes).c_str()).ToWide();
  XpImageIoMPO codec;
  EXPECT_EQ(codec.SetRating(path, 4), XpOk);
  EXPECT_GT(codec.LoadTags(path)->GetIfd(0)->GetAscii(0x0132).AsView(), kCameraDate);
  EXPECT_EQ(codec.StripGps(path), XpOk);
  EXPECT_EQ(codec.SetModifyDate(path, Date(), true), XpOk);
  XpDateTime written;
  XpFile(path).GetWriteTime(written);
  EXPECT_EQ(written.ToTimeT(), Date().ToTimeT());
  const Bytes edited = folder.Read("a.mpo");
  EXPECT_EQ(edited.size(), file.bytes.size());
  for (const std::size_t i : {0u, 1u}) {
    Stream stream(edited);
    const auto tags = XpImageIoJpeg().ReadTags(stream, static_cast<std::int64_t>(file.starts[i]));
    EXPECT_EQ(tags->GetMakerIfd()->GetLong(0x2002, 0, false), 4u);
    EXPECT_EQ(tags->GetGpsIfd(), nullptr);
  }
}

TEST(MpoCodecTest, ListingGetsTheTagsAfterADamagedOne) {
  const Bytes broken = CameraFile({.hasBrokenTag = true});
  Stream stream(broken);
  XpImageIoMPO codec;
  EXPECT_EQ(codec.ReadTags(stream, 0)->GetExifIfd(), nullptr);
  codec.onBadTag = vrx::imaging::OnBadTag::SkipTag;
  EXPECT_NE(codec.ReadTags(stream, 0)->GetExifIfd(), nullptr);
}

TEST(MpoCodecTest, SummaryNamesDamagedEntriesAndCutsAtTheEnd) {
  MpoFile file({{0x20030000, Numbered(16)},
                {kMpChild | 0x010001, Numbered(24)},
                {0, "no picture"},
                {0, Numbered(24)},
                {0, Numbered(24)},
                {0x00020002, Numbered(32)}},
               {.ifds = 1});
  file.Set(3, MpField::Offset, 1u << 30).Set(4, MpField::Size, 0).Set(5, MpField::Size, 1u << 30);
  Stream stream(file.bytes);
  std::vector<MpPictureSummary> found;
  ASSERT_EQ(SummarizeMpFile(stream, found), XpOk);
  ASSERT_EQ(found.size(), 6u);
  const std::tuple<int, XpResult, int, bool> expected[] = {{0, XpOk, 16, false},
                                                           {-1, XpOk, 24, false},
                                                           {1, XpErrImageInvalid, 0, false},
                                                           {2, XpErrPastEnd, 0, false},
                                                           {3, XpErrImageInvalid, 0, false},
                                                           {4, XpOk, 32, true}};
  for (std::size_t i = 0; i < found.size(); ++i) {
    const MpPictureSummary& p = found[i];
    EXPECT_EQ(std::tuple(p.frame, p.result, p.storedSize.width, p.IsCut()), expected[i]) << i;
    const auto start = static_cast<std::size_t>(p.start), size = static_cast<std::size_t>(p.size);
    EXPECT_TRUE(p.result != XpOk || (start == file.starts[i] && start + size == file.starts[i + 1])) << i;
  }
  EXPECT_EQ(found[1].entry.Type(), vrx::imaging::MpType::LargeThumbnailVga);
}

TEST(MpoCodecTest, PicturesWithinEachOthersHeadsAreNotSearchedWithoutEnd) {
  // Each small segment holds the start of a picture, whose head is all segments after it.
  std::vector<MpStoredEntry> entries(1500, MpStoredEntry{0, 6, 0});
  auto start = static_cast<std::uint32_t>(MpIndexSegment({}, entries).size() - 4);  // from the TIFF header
  Bytes segments;
  for (MpStoredEntry& entry : entries) {
    entry.offset = start;
    start += 6;
    segments += App(5, "\xFF\xD8");
  }
  const Bytes file = WithSegments(imagefiles::Jpeg(Smooth(8, 8, 1)),
                                  {MpIndexSegment({}, entries), segments, Exif(Orientation(1))});
  Stream stream(file);
  std::vector<MpPictureSummary> found;
  ASSERT_EQ(SummarizeMpFile(stream, found), XpOk);
  EXPECT_EQ(found.size(), 1024u);
  EXPECT_EQ(found.front().storedSize.width, 8);
  EXPECT_EQ(found.back().storedSize.width, 0);
  EXPECT_EQ(XpImageIoMPO().WriteStrippedGps(stream, 0), XpErrImageInvalid);
}

TEST(MpoCodecTest, TruncationAtEveryByteNeitherCrashesNorChangesTheSize) {
  const Bytes small = WithSegments(imagefiles::Jpeg(Smooth(16, 8, 1)), {Exif(Orientation(6))});
  const MpoFile file({{0, small}, {kMpChild, small}, {kMpRepresentative, small}});
  for (std::size_t length = 0; length <= file.bytes.size(); ++length) {
    SCOPED_TRACE(length);
    Bytes bytes = file.bytes.substr(0, length);
    Stream stream(bytes);
    XpImageIoMPO codec;
    const auto picture = codec.Read(stream, 0, 1, {});
    EXPECT_EQ(picture != nullptr, codec.status == XpOk);
    XpImageSize size;
    EXPECT_TRUE(codec.ReadImageSize(stream, 0, size, false) != XpOk || size == (XpImageSize{8, 16}));
    EXPECT_EQ(codec.GetFrameCount(stream, 0), length >= file.header + 38 + 3 * 16 ? 2 : 0);
    EXPECT_EQ(codec.SeekToFrame(stream, 0, 1, nullptr) == XpOk, length > file.starts[2]);
    std::vector<MpPictureSummary> found;
    SummarizeMpFile(stream, found);
    for (const MpPictureSummary& p : found) EXPECT_LE(p.start + p.size, std::ssize(bytes));
    for (const Edit edit : kEdits) edit(codec, stream, 0);
    EXPECT_EQ(stream.GetSize(), std::ssize(bytes));
    EXPECT_EQ(stream.GetData(), bytes.data());
  }
}

}  // namespace
