// Multi-picture files show the picture that their index names, and edits reach every frame.
#include <gtest/gtest.h>

#include "imaging/codecs/MpSummary.h"
#include "imaging/codecs/XpImageIoMPO.h"
#include "imaging/tags/TagEdits.h"
#include "tests/imaging/CameraFile.h"
#include "tests/imaging/MpoFile.h"
#include "tests/support/TempFolder.h"

namespace {

using namespace jpegfiles;
using imagefiles::Smooth;
using vrx::imaging::MpPictureSummary;

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
  for (const bool isBig : {false, true}) {
    for (const Case& c :
         {Case{{0, 0, 0}, 16, {16, 24, 32}}, Case{{kMpRepresentative, 0, 0}, 16, {16, 24, 32}},
          Case{{0, 0, kMpRepresentative}, 32, {16, 24, 32}}, Case{{0, kMpChild, 0}, 16, {16, 32}},
          Case{{kMpChild, 0, 0x80020002}, 24, {24, 32}},
          Case{{0, kMpChild | kMpRepresentative, kMpRepresentative}, 24, {16, 32}},
          Case{{kMpChild, kMpChild, kMpChild}, 0, {}}}) {
      SCOPED_TRACE(testing::PrintToString(c.attributes) + (isBig ? " big-endian" : ""));
      const Bytes bytes = InContainer(MpoFile(
          {{c.attributes[0], Numbered(16)}, {c.attributes[1], Numbered(24)}, {c.attributes[2], Numbered(32)}},
          {.isBig = isBig}));
      Stream stream(bytes);
      XpImageIoMPO codec;
      EXPECT_EQ(WidthOf(codec.Read(stream, kBefore, 1, {})), c.shown);
      EXPECT_EQ(codec.status, c.shown == 0 ? XpErrImageUnusable : XpOk);
      EXPECT_EQ(WidthOf(codec.Read(stream, kBefore, 2, {})), c.shown / 2);
      EXPECT_EQ(WidthOf(codec.ReadThumbnail(stream, kBefore, {})), c.shown / 2);
      EXPECT_EQ(codec.GetFrameCount(stream, kBefore), std::ssize(c.frames));
      for (std::size_t i = 0; i < c.frames.size(); ++i) {
        EXPECT_EQ(WidthOf(codec.ReadThumbnailOfFrame(stream, kBefore, static_cast<std::int64_t>(i), {})),
                  c.frames[i] / 2);
      }
      EXPECT_EQ(codec.ReadThumbnailOfFrame(stream, kBefore, std::ssize(c.frames), {}), nullptr);
      EXPECT_EQ(codec.status, XpErrImageUnusable);
      EXPECT_EQ(codec.ReadThumbnailOfFrame(stream, kBefore, -1, {}), nullptr);
      EXPECT_EQ(codec.status, XpErrImageArgument);
      // Size and tags are those of the first picture, whichever is shown.
      XpImageSize size;
      EXPECT_EQ(codec.ReadImageSize(stream, kBefore, size, false), XpOk);
      EXPECT_EQ(size, (XpImageSize{16, 8}));
      EXPECT_EQ(codec.ReadTags(stream, kBefore)->GetIfd(0)->GetShort(0x0112, false), 1);
      EXPECT_EQ(codec.ReadIndexTags(stream, kBefore)->GetIfd(0)->GetLong(0xB001, 0, false), 3u);
    }
  }
}

TEST(MpoCodecTest, FrameThatTheFileDoesNotHoldIsNotFound) {
  const Bytes file = MpoFile({{0, Numbered(16)}, {0, Numbered(24)}});
  const auto end = static_cast<std::uint32_t>(file.size() - MpHeaderOf(file));
  struct Case {
    std::uint32_t offset;
    XpResult result;
    std::int64_t position;
    std::int32_t shown;
  };
  for (const Case& c : {Case{0, XpOk, kBefore, 16}, Case{end - 1, XpOk, kBefore + std::ssize(file) - 1, 0},
                        Case{end, XpErrPastEnd, 0, 16}, Case{end + 1, XpErrPastEnd, 0, 16},
                        Case{0xFFFFFFFF, XpErrPastEnd, 0, 16}}) {
    SCOPED_TRACE(c.offset);
    // A representative that cannot be found gives way to the first frame.
    const Bytes bytes = InContainer(WithMpField(WithMpField(file, 1, MpField::Offset, c.offset), 1,
                                                MpField::Attribute, kMpRepresentative));
    Stream stream(bytes);
    XpImageIoMPO codec;
    EXPECT_EQ(WidthOf(codec.Read(stream, kBefore, 1, {})), c.shown);
    EXPECT_EQ(codec.SeekToFrame(stream, kBefore, 1, nullptr), c.result);
    EXPECT_EQ(codec.status, c.result);
    if (c.result == XpOk) {
      EXPECT_EQ(stream.Tell(), c.position);
    }
  }
}

TEST(MpoCodecTest, FileWithoutAUsableIndexShowsNothingAndIsNotEdited) {
  struct Case {
    const char* name;
    Bytes file;
    XpResult read;
    std::int64_t frames;
  };
  const std::vector<MpoPicture> pictures{{0, Numbered(16)}, {0, Numbered(24)}};
  const Bytes good = MpoFile(pictures);
  Bytes noHeader = good, late = Numbered(16);
  noHeader.replace(MpHeaderOf(good), 2, "XX");
  const Bytes index = good.substr(MpHeaderOf(good) - 8, 2u + (good[MpHeaderOf(good) - 5] & 0xFF));
  late.insert(late.find("\xFF\xDB") + 2u + (late[late.find("\xFF\xDB") + 3] & 0xFF), index);
  for (const Case& c : {Case{"whole", good, XpOk, 2},
                        Case{"more entries than there are", MpoFile(pictures, {.moreEntries = 9}), XpOk, 2},
                        Case{"no index", Numbered(16), XpErrImageNoData, 0},
                        Case{"index among the tables", late, XpErrImageNoData, 0},
                        Case{"no TIFF header", noHeader, XpErrImageInvalid, 0},
                        Case{"one IFD", MpoFile(pictures, {.ifds = 1}), XpErrImageUnusable, 0},
                        Case{"three IFDs", MpoFile(pictures, {.ifds = 3}), XpErrImageUnusable, 0},
                        Case{"count no LONG", MpoFile(pictures, {.countType = 9}), XpErrImageUnusable, 0},
                        Case{"table of bytes", MpoFile(pictures, {.tableType = 1}), XpErrImageUnusable, 0}}) {
    SCOPED_TRACE(c.name);
    Bytes bytes = c.file;
    Stream stream(bytes);
    XpImageIoMPO codec;
    EXPECT_EQ(WidthOf(codec.Read(stream, 0, 1, {})), c.read == XpOk ? 16 : 0);
    EXPECT_EQ(codec.status, c.read);
    EXPECT_EQ(WidthOf(codec.ReadThumbnail(stream, 0, {})), c.read == XpOk ? 8 : 0);
    EXPECT_EQ(codec.GetFrameCount(stream, 0), c.frames);
    EXPECT_EQ(codec.SeekToFrame(stream, 0, 0, nullptr), c.read);
    EXPECT_EQ(codec.WriteRotation(stream, 0, 1), c.read == XpOk ? XpOk : XpErrImageUnusable);
    EXPECT_EQ(bytes != c.file, c.read == XpOk);
  }
}

using Edit = std::function<XpResult(XpImageIo&, XpAbstractFile&, std::int64_t offset)>;
XpDateTime Date() {
  XpDateTime date;
  date.SetDateTime(2001, 2, 3, 4, 5, 6);
  return date;
}
const std::pair<const char*, Edit> kEdits[] = {
    {"rotation",
     [](XpImageIo& io, XpAbstractFile& f, std::int64_t at) { return io.WriteRotation(f, at, 1); }},
    {"modified", [](XpImageIo& io, XpAbstractFile& f,
                    std::int64_t at) { return io.WriteModifyDate(f, at, Date(), false); }},
    {"original",
     [](XpImageIo& io, XpAbstractFile& f, std::int64_t at) { return io.WriteOriginalDate(f, at, Date()); }},
    {"position",
     [](XpImageIo& io, XpAbstractFile& f, std::int64_t at) { return io.WriteStrippedGps(f, at); }}};

/// The date of the last change, which edits made now, gives way to crosses wherever `file` has it.
Bytes WithoutNow(Bytes edited, const Bytes& file) {
  for (std::size_t at = 0; (at = file.find(kCameraDate, at)) != Bytes::npos; ++at) {
    if (edited.substr(at, 4) != "2001") edited.replace(at, 19, 19, 'x');
  }
  return edited;
}

/// The picture as the codec of JPEG files edits it.
Bytes EditedAlone(Bytes jpeg, const Edit& edit) {
  Stream stream(jpeg);
  XpImageIoJpeg codec;
  EXPECT_EQ(edit(codec, stream, 0), XpOk);
  return jpeg;
}

TEST(MpoCodecTest, EditReachesEveryFrameOnceAndNoOtherByte) {
  const Bytes camera = CameraFile();
  // The third entry is part of another picture, the fourth leads to the second picture again.
  const std::vector<MpoPicture> pictures{{0, camera}, {0, camera}, {kMpChild, camera}, {0, camera}};
  Bytes file = MpoFile(pictures);
  const std::vector<std::size_t> starts = MpoStarts(file, pictures);
  file = WithMpField(file, 3, MpField::Offset, static_cast<std::uint32_t>(starts[1] - MpHeaderOf(file)));
  for (const auto& [name, edit] : kEdits) {
    SCOPED_TRACE(name);
    Bytes bytes = InContainer(file);
    Stream stream(bytes);
    XpImageIoMPO codec;
    EXPECT_EQ(edit(codec, stream, kBefore), XpOk);
    const Bytes expected = EditedAlone(file.substr(0, starts[1]), edit) +
                           EditedAlone(file.substr(starts[1], camera.size()), edit) + file.substr(starts[2]);
    EXPECT_TRUE(WithoutNow(bytes, InContainer(file)) == WithoutNow(InContainer(expected), InContainer(file)));
    EXPECT_NE(bytes.substr(kBefore + starts[1]), file.substr(starts[1]));
  }
}

TEST(MpoCodecTest, FrameThatCannotBeEditedEndsTheEditAndALostOneIsPassedOver) {
  const Bytes camera = CameraFile();
  const std::vector<MpoPicture> withBare{{0, camera}, {0, CameraPicture()}, {0, camera}};
  const Bytes damaged = WithSegments(CameraPicture(), {Exif("no TIFF header")});
  const std::vector<MpoPicture> withDamaged{{0, camera}, {0, damaged}, {0, camera}};
  const std::vector<MpoPicture> three{{0, camera}, {0, camera}, {0, camera}};
  struct Case {
    const char* name;
    std::vector<MpoPicture> pictures;
    int lost;  // entry that leads past the end; -1 for none
    XpResult result, gpsResult;
    std::size_t changed, gpsChanged;  // frames from the first on
  };
  for (const Case& c :
       {Case{"frame without tags", withBare, -1, XpErrImageNoData, XpErrImageNoData, 1, 1},
        Case{"frame with damaged tags", withDamaged, -1, XpErrImageInvalid, XpErrImageInvalid, 1, 1},
        Case{"last frame lost", three, 2, XpOk, XpErrPastEnd, 2, 2},
        Case{"middle frame lost", three, 1, XpOk, XpErrPastEnd, 3, 1},
        Case{"first frame lost", three, 0, XpErrPastEnd, XpErrPastEnd, 0, 0}}) {
    Bytes file = MpoFile(c.pictures);
    if (c.lost >= 0) file = WithMpField(file, static_cast<std::size_t>(c.lost), MpField::Offset, 1u << 30);
    std::vector<std::size_t> starts = MpoStarts(file, c.pictures);
    starts.push_back(file.size());
    for (const auto& [name, edit] : kEdits) {
      SCOPED_TRACE(testing::Message() << c.name << ", " << name);
      const bool isGps = std::string(name) == "position";
      Bytes bytes = file;
      Stream stream(bytes);
      XpImageIoMPO codec;
      EXPECT_EQ(edit(codec, stream, 0), isGps ? c.gpsResult : c.result);
      EXPECT_EQ(codec.status, isGps ? c.gpsResult : c.result);
      for (std::size_t i = 0; i + 1 < starts.size(); ++i) {
        const auto part = [&](const Bytes& b) { return b.substr(starts[i], starts[i + 1] - starts[i]); };
        const bool isChanged = i < (isGps ? c.gpsChanged : c.changed) && static_cast<int>(i) != c.lost;
        EXPECT_EQ(part(bytes) != part(file), isChanged) << i;
      }
    }
  }
}

TEST(MpoCodecTest, FileIsRatedAndStrippedInPlace) {
  const Bytes camera = CameraFile();
  const std::vector<MpoPicture> pictures{{0, camera}, {0, camera}};
  const Bytes file = MpoFile(pictures);
  const TempFolder folder;
  const XpString path = XpNarrowString(folder.Write("a.mpo", file).c_str()).ToWide();
  XpImageIoMPO codec;
  EXPECT_EQ(codec.SetRating(path, 4), XpOk);
  EXPECT_EQ(codec.StripGps(path), XpOk);
  const Bytes edited = folder.Read("a.mpo");
  EXPECT_EQ(edited.size(), file.size());
  for (const std::size_t start : MpoStarts(file, pictures)) {
    Stream stream(edited);
    const auto tags = XpImageIoJpeg().ReadTags(stream, static_cast<std::int64_t>(start));
    EXPECT_EQ(tags->GetMakerIfd()->GetLong(0x2002, 0, false), 4u);
    EXPECT_EQ(tags->GetGpsIfd(), nullptr);
  }
}

TEST(MpoCodecTest, SummaryNamesDamagedEntriesAndCutsAtTheEnd) {
  const Bytes none = "no picture";
  const std::vector<MpoPicture> pictures{
      {0x20030000, Numbered(16)}, {kMpChild | 0x010001, Numbered(24)}, {0, none}, {0, Numbered(24)},
      {0, Numbered(24)},          {0x00020002, Numbered(32)}};
  Bytes file = MpoFile(pictures, {.ifds = 1});
  file = WithMpField(file, 3, MpField::Offset, 1u << 30);
  file = WithMpField(file, 4, MpField::Size, 0);
  file = WithMpField(file, 5, MpField::Size, 1u << 30);
  Stream stream(file);
  std::vector<MpPictureSummary> found;
  ASSERT_EQ(vrx::imaging::SummarizeMpFile(stream, found), XpOk);
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
    if (p.result == XpOk) {
      EXPECT_EQ(static_cast<std::size_t>(p.start), MpoStarts(file, pictures)[i]);
    }
  }
  EXPECT_EQ(found[5].start + found[5].size, std::ssize(file));
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
  ASSERT_EQ(vrx::imaging::SummarizeMpFile(stream, found), XpOk);
  EXPECT_EQ(found.size(), 1024u);
  EXPECT_EQ(found.front().storedSize.width, 8);
  EXPECT_EQ(found.back().storedSize.width, 0);
  XpImageIoMPO codec;
  EXPECT_EQ(codec.WriteStrippedGps(stream, 0), XpErrImageInvalid);
}

TEST(MpoCodecTest, TruncationAtEveryByteNeitherCrashesNorChangesTheSize) {
  const Bytes small = WithSegments(imagefiles::Jpeg(Smooth(8, 8, 1)), {Exif(Orientation(6))});
  const Bytes file = MpoFile({{0, small}, {kMpChild, small}, {kMpRepresentative, small}});
  for (std::size_t length = 0; length <= file.size(); ++length) {
    SCOPED_TRACE(length);
    Bytes bytes = file.substr(0, length);
    Stream stream(bytes);
    XpImageIoMPO codec;
    const auto picture = codec.Read(stream, 0, 1, {});
    EXPECT_EQ(picture != nullptr, codec.status == XpOk);
    const bool holdsIndex = length >= MpHeaderOf(file) + 38 + 3 * 16;
    EXPECT_EQ(codec.GetFrameCount(stream, 0), holdsIndex ? 2 : 0);
    const bool isFound = codec.SeekToFrame(stream, 0, 1, nullptr) == XpOk;
    EXPECT_EQ(isFound, length > file.size() - small.size());
    std::vector<MpPictureSummary> found;
    vrx::imaging::SummarizeMpFile(stream, found);
    for (const MpPictureSummary& p : found) EXPECT_LE(p.start + p.size, std::ssize(bytes));
    for (const auto& [name, edit] : kEdits) edit(codec, stream, 0);
    EXPECT_EQ(stream.GetSize(), std::ssize(bytes));
    EXPECT_EQ(stream.GetData(), bytes.data());
  }
}

}  // namespace
