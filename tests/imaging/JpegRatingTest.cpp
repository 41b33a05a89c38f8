// A new rating is written by a rewrite of the file, after which everything else is as it was.
#include <gtest/gtest.h>

#include <sys/stat.h>
#include <sys/xattr.h>

#include <cstdio>
#include <cstdlib>
#include <set>

#include <jpeglib.h>

#include "imaging/codecs/JpegRebuild.h"
#include "imaging/jpeg/JpegSegments.h"
#include "imaging/tags/TagNames.h"
#include "tests/imaging/CameraFile.h"
#include "tests/imaging/MpoFile.h"
#include "tests/support/KilledChild.h"
#include "tests/support/TempFolder.h"

namespace {

using namespace jpegfiles;
using imagefiles::Big;
namespace tags = vrx::imaging;

XpString Wide(const std::string& path) { return XpNarrowString(path.c_str()).ToWide(); }

/// Rates the bytes as a file does; the result, and the new bytes, which are the old ones after a failure.
struct Rated {
  XpResult result = XpOk;
  Bytes bytes;
};
Rated Rate(const Bytes& file, std::uint32_t rating = 4) {
  const TempFolder folder;
  XpImageIoJpeg codec;
  const XpResult result = codec.SetRating(Wide(folder.Write("a.jpg", file)), rating);
  EXPECT_EQ(folder.Count(), 1);
  EXPECT_EQ(codec.status, result);
  return {result, folder.Read("a.jpg")};
}

XpSharedPtr<XpTiffTagManager> TagsOf(const Bytes& file) {
  Stream stream(file);
  return XpImageIoJpeg().ReadTags(stream, 0);
}

Bytes PixelsOf(const Bytes& file) {
  Stream stream(file);
  XpImageIoJpeg codec;
  return Pixels(codec.Read(stream, 0, 1, {}));
}

Bytes ValueOf(XpTiffTagIFD* ifd, std::uint16_t tag) {
  const XpTiffTagDataBase* value = ifd == nullptr ? nullptr : ifd->FindTag(tag, false);
  if (value == nullptr) return {};
  return {static_cast<const char*>(value->GetData()), static_cast<std::size_t>(value->GetByteSize())};
}

/// The coded picture, from the first marker that is no application segment.
Bytes CodedPart(const Bytes& file) {
  Stream stream(file);
  tags::CodedPicture picture;
  EXPECT_EQ(tags::FindCodedPicture(stream, 0, picture), XpOk);
  return file.substr(static_cast<std::size_t>(picture.start),
                     static_cast<std::size_t>(picture.end - picture.start));
}

/// "APP1", and so on, of the segments before the picture.
std::vector<std::pair<int, Bytes>> Segments(const Bytes& file) {
  std::vector<std::pair<int, Bytes>> found;
  for (std::size_t at = 2; (file[at + 1] & 0xF0) == 0xE0;) {
    const auto length = static_cast<std::size_t>((file[at + 2] & 0xFF) << 8 | (file[at + 3] & 0xFF));
    found.emplace_back(file[at + 1] & 0x0F, file.substr(at + 4, length - 2));
    at += 2 + length;
  }
  return found;
}

TEST(JpegRatingTest, RewriteSetsRatingAndDatesAndKeepsTheRest) {
  const Bytes xmp = App(1, Bytes("http://ns.adobe.com/xap/1.0/\0<x/>", 33));
  const Bytes icc = App(2, Bytes("ICC_PROFILE\0\1\1", 14) + Profile("mine"));
  const Bytes file = CameraFile({.segments = {App(0, Bytes("JFIF\0\1\1\0\0\1\0\1\0\0", 14)), xmp,
                                              App(3, "SPF. to be dropped"), icc, App(15, "of some maker")},
                                 .preview = Bytes(501, 'P')});
  const auto before = TagsOf(file);
  const auto [result, rated] = Rate(file, 4);
  ASSERT_EQ(result, XpOk);
  EXPECT_EQ(CodedPart(rated), CodedPart(file));
  EXPECT_EQ(PixelsOf(rated), PixelsOf(file));

  const auto after = TagsOf(rated);
  ASSERT_NE(after.Get(), nullptr);
  EXPECT_TRUE(after->faults.empty());
  EXPECT_EQ(after->GetMakerIfd()->GetLong(0x2002, 0, false), 4u);
  const Bytes date = ValueOf(after->GetIfd(0), 0x0132);
  EXPECT_EQ(date.size(), 20u);
  EXPECT_GT(date.substr(0, 19), kCameraDate);
  EXPECT_EQ(ValueOf(after->GetIfd(1), 0x0132), date);
  EXPECT_EQ(ValueOf(after->GetMakerIfd(), 0x3000), "before" + date + Bytes(60, 'x'));
  EXPECT_EQ(ValueOf(after->GetExifIfd(), 0x9000), "0221");
  EXPECT_EQ(ValueOf(after->GetExifIfd(), 0x9003), ValueOf(before->GetExifIfd(), 0x9003));
  EXPECT_EQ(after->GetIfd(0)->GetShort(0x0112, false), 6);
  EXPECT_EQ(after->GetMakerSubIfd()->GetTagCount(), 1u);
  EXPECT_EQ(after->GetIfdCount(), 2u);
  EXPECT_EQ(after->GetIfd(1)->GetShort(0x0103, false), 6);
  EXPECT_EQ(after->GetIfd(1)->FindTag(0x011A, false)->ToString(0), "72/1");

  Stream stream(rated);
  XpImageIoJpeg codec;
  const auto found = codec.ReadThumbnail(stream, 0, {});
  ASSERT_NE(found, nullptr);
  EXPECT_EQ(found->width, 12);  // turned upright

  ASSERT_EQ(after->previewSize, 501u);
  EXPECT_EQ(rated.substr(12 + after->previewOffset), Bytes(501, 'P'));
  EXPECT_EQ(after->previewOffset % 2, 0u);
  const auto segments = Segments(rated);
  ASSERT_EQ(segments.size(), 4u);
  EXPECT_EQ(segments[0].second.size() % 2, 0u);
  EXPECT_EQ(segments[1], (std::pair{1, xmp.substr(4)}));
  EXPECT_EQ(segments[2], (std::pair{2, icc.substr(4)}));
  EXPECT_EQ(segments[3], (std::pair{15, Bytes("of some maker")}));
  // A second rating adds nothing.
  EXPECT_EQ(Rate(rated, 2).bytes.size(), rated.size());

  const Bytes another = "2020:01:02 03:04:06";
  EXPECT_EQ(
      ValueOf(TagsOf(Rate(CameraFile({.noteDate = another})).bytes)->GetMakerIfd(), 0x3000).substr(6, 19),
      another);
  Bytes empty = CameraFile();
  empty.replace(empty.find(Bytes("\x02\x01\0\4\0\0\0\1", 8)) + 8, 4, Bytes(4, '\0'));
  EXPECT_EQ(TagsOf(Rate(empty).bytes)->GetIfdCount(), 1u);
}

/// The coefficients of all components, as the library reads them.
std::vector<short> Coefficients(const Bytes& file) {
  jpeg_decompress_struct decoder{};
  jpeg_error_mgr errors;
  decoder.err = jpeg_std_error(&errors);
  jpeg_create_decompress(&decoder);
  jpeg_mem_src(&decoder, reinterpret_cast<const unsigned char*>(file.data()), file.size());
  jpeg_read_header(&decoder, TRUE);
  jvirt_barray_ptr* arrays = jpeg_read_coefficients(&decoder);
  std::vector<short> all;
  for (int c = 0; c < decoder.num_components; ++c) {
    const jpeg_component_info& info = decoder.comp_info[c];
    for (JDIMENSION y = 0; y < info.height_in_blocks; ++y) {
      JBLOCKARRAY rows =
          decoder.mem->access_virt_barray(reinterpret_cast<j_common_ptr>(&decoder), arrays[c], y, 1, FALSE);
      for (JDIMENSION x = 0; x < info.width_in_blocks; ++x)
        all.insert(all.end(), rows[0][x], rows[0][x] + DCTSIZE2);
    }
  }
  jpeg_finish_decompress(&decoder);
  jpeg_destroy_decompress(&decoder);
  return all;
}

/// What becomes of a rewrite to a disk that has room for so many bytes.
XpResult RateOnDiskOf(std::size_t room, const Bytes& file) {
  class SmallDisk : public XpMemoryFile {
   public:
    explicit SmallDisk(std::size_t bytes) : m_room(bytes) {}
    XpResult Write(const void* buffer, std::uint64_t count, std::uint64_t* written) override {
      const bool fits = static_cast<std::uint64_t>(Tell()) + count <= m_room;
      return fits ? XpMemoryFile::Write(buffer, count, written) : XpResult{XpErrDiskFull};
    }

   private:
    std::uint64_t m_room;
  } target(room);
  Stream source(file);
  const auto tree = TagsOf(file);
  return tags::RebuildJpeg({source, 12, *tree, 4, XpDateTime::GetCurrentTime()}, target);
}

TEST(JpegRatingTest, BothWaysToCopyAPictureKeepItsCoefficients) {
  for (const int channels : {1, 3, 4}) {
    for (const bool isProgressive : {false, true}) {
      const Bytes plain = imagefiles::Jpeg(
          imagefiles::Noise(61, 47, channels),
          {.isProgressive = isProgressive, .isAdobeInk = channels == 4, .isFromCamera = channels == 3});
      const Bytes inOrder = CameraFile();
      const std::size_t coded = inOrder.find(CodedPart(inOrder));
      const Bytes head = inOrder.substr(0, coded);
      const Bytes body = CodedPart(plain);
      const Bytes adobe = channels == 4 ? Segments(plain).back().second : Bytes();
      const Bytes adobeSegment = adobe.empty() ? Bytes() : App(14, adobe);
      // A segment between the tables makes the second way necessary.
      const std::size_t frame = body.find(isProgressive ? "\xFF\xC2" : "\xFF\xC0");
      const Bytes mixed = Bytes(body).insert(frame, App(3, "SPF. among tables"));
      const Bytes comment = Bytes("\xFF\xFF\xFE\0\6abcd", 9);
      for (const Bytes& file :
           {head + adobeSegment + comment + body, head + adobeSegment + comment + mixed}) {
        const auto [result, rated] = Rate(file);
        ASSERT_EQ(result, XpOk);
        EXPECT_EQ(Coefficients(rated), Coefficients(file));
        EXPECT_EQ(TagsOf(rated)->GetMakerIfd()->GetLong(0x2002, 0, false), 4u);
        EXPECT_NE(rated.find("abcd"), Bytes::npos);
        EXPECT_EQ(rated.rfind("abcd"), rated.find("abcd"));
        EXPECT_EQ(rated.find("among tables"), Bytes::npos);
        EXPECT_EQ(Segments(rated).front().second.substr(0, 4), "Exif");
        EXPECT_EQ(rated.substr(rated.size() - 2), "\xFF\xD9");
        EXPECT_EQ(RateOnDiskOf(rated.size(), file), XpOk);
        EXPECT_EQ(RateOnDiskOf(rated.size() - 1, file), XpErrDiskFull);
      }
      // Coefficients that are missing are not made up.
      EXPECT_EQ(Rate((head + mixed).erase((head + mixed).size() - 400, 398)).result, XpErrImageInvalid);
    }
  }
}

std::uint32_t Number(const Bytes& bytes, std::size_t at, bool isBig) {
  std::uint32_t value = 0;
  for (std::size_t i = 0; i < 4; ++i) value = value << 8 | (bytes[at + (isBig ? i : 3 - i)] & 0xFF);
  return value;
}

TEST(JpegRatingTest, PicturesOfAnIndexMoveAlong) {
  const Bytes one(301, 'a'), two(200, 'b');
  enum class Preview { None, InTheFirst, BeforeThem };
  for (const bool isBig : {false, true}) {
    for (const Preview preview : {Preview::None, Preview::InTheFirst, Preview::BeforeThem}) {
      SCOPED_TRACE(testing::Message() << isBig << static_cast<int>(preview));
      const bool isTurnedRound = preview == Preview::BeforeThem;  // the second picture lies before the first
      const auto build = [&](std::size_t first, std::size_t second) {
        return CameraFile(
            {.segments = {MpIndexSegment({.isBig = isBig, .ifds = 1},
                                         {{0, 7, 0},
                                          {kMpChild, 301, static_cast<std::uint32_t>(first)},
                                          {kMpChild, 200, static_cast<std::uint32_t>(second)}})},
             .tail = isTurnedRound ? two + one : one + Bytes(1, '\xFF') + two});
      };
      Bytes file = build(0, 0);
      const std::size_t header = file.find(Bytes("MPF\0", 4)) + 4;
      const std::size_t start = file.find(one);
      file = build(start - header, file.find(two) - header);
      if (preview != Preview::None) {
        const std::size_t entry = file.find(Bytes("\x20\x01\x00\x07\x00\x00\x00\x00", 8));
        const std::size_t place = preview == Preview::InTheFirst ? start + 100 : 100;
        file.replace(entry + 4, 8, Big(50, 4) + Big(static_cast<std::uint32_t>(place) - 12, 4));
      }
      const auto [result, rated] = Rate(file);
      ASSERT_EQ(result, XpOk);
      const std::size_t newHeader = rated.find(Bytes("MPF\0", 4)) + 4;
      const std::size_t table = newHeader + 38;
      const std::size_t pictureEnd = rated.find(CodedPart(file)) + CodedPart(file).size();
      EXPECT_EQ(Number(rated, table + 4, isBig), pictureEnd);
      const std::size_t second = newHeader + Number(rated, table + 32 + 8, isBig);
      EXPECT_EQ(rated.substr(newHeader + Number(rated, table + 16 + 8, isBig), 301), one);
      EXPECT_EQ(rated.substr(second), two);
      EXPECT_EQ(second % 2, 0u);
      const auto tags = TagsOf(rated);
      EXPECT_EQ(tags->previewSize, preview == Preview::InTheFirst ? 50u : 0u);
      if (preview == Preview::InTheFirst) {
        EXPECT_EQ(12 + tags->previewOffset, rated.find(one) + 100);
      }
    }
  }
}

TEST(JpegRatingTest, FileThatCannotBeRatedStaysAsItIs) {
  const auto broken = [](Bytes file, std::size_t length) { return file.substr(0, length); };
  struct Case {
    const char* name;
    Bytes file;
    XpResult result;
  };
  const Bytes whole = CameraFile();
  for (const Case& c :
       {Case{"no maker note", CameraFile({.hasNote = false}), XpErrImageNoData},
        Case{"no tags", CameraPicture(), XpErrImageNoData},
        Case{"broken tag", CameraFile({.hasBrokenTag = true}), XpErrImageInvalid},
        Case{"cut picture", broken(whole, whole.size() - 100), XpErrImageInvalid},
        Case{"unknown data", CameraFile({.tail = "a movie"}), XpErrImageNotProvided},
        Case{"unknown data after a preview", CameraFile({.preview = "PREVIEW", .tail = "a movie"}),
             XpErrImageNotProvided},
        Case{"preview that no picture of the index holds",
             CameraFile({.segments = {MpIndexSegment({.isBig = true, .ifds = 1}, {{0, 7, 0}})},
             .preview = "PREVIEW"}),
             XpErrImageNotProvided},
        Case{"unknown data and a picture of the index without a place",
             CameraFile({.segments = {MpIndexSegment({.isBig = true, .ifds = 1},
                                                     {{0, 7, 0}, {kMpChild, 1u << 20, 0}})},
             .tail = "a movie"}),
             XpErrImageNotProvided},
        Case{"preview past the end",
             broken(CameraFile({.preview = Bytes(90, 'P')}), CameraFile().size() + 50), XpErrEndOfFile},
        Case{"no JPEG", "GIF89a", XpErrImageInvalid}}) {
    SCOPED_TRACE(c.name);
    const auto [result, bytes] = Rate(c.file);
    EXPECT_EQ(result, c.result);
    EXPECT_EQ(bytes, c.file);
  }
  EXPECT_EQ(Rate(CameraFile({.tail = Bytes(9, '\0')})).result, XpOk);  // padding is no data
  EXPECT_EQ(Rate(CameraFile({.hasRating = false})).result, XpOk);
  // An index that leads into its own header counts as none.
  const Bytes lost = App(2, Bytes("MPF\0", 4) + vrx::test_support::TagBytes().Header(4) + Bytes(40, '\0'));
  EXPECT_EQ(Rate(CameraFile({.segments = {lost}})).result, XpOk);
}

TEST(JpegRatingTest, TagsMayFillTheirSegmentToTheLastByte) {
  // The rewrite adds tags to IFD 1, so a file is looked for whose new block has an exact size.
  const std::size_t small = Segments(Rate(CameraFile({.filling = 1000})).bytes).front().second.size();
  const auto most = static_cast<std::uint32_t>(1000 + 65532 - small);
  const auto [result, rated] = Rate(CameraFile({.filling = most}));
  EXPECT_EQ(result, XpOk);
  EXPECT_EQ(Segments(rated).front().second.size(), 65532u);
  EXPECT_EQ(PixelsOf(rated), PixelsOf(CameraFile()));
  const auto [tooLarge, unchanged] = Rate(CameraFile({.filling = most + 2}));
  EXPECT_EQ(tooLarge, XpErrImageUnusable);
  EXPECT_EQ(unchanged, CameraFile({.filling = most + 2}));
}

TEST(JpegRatingTest, FileKeepsModeAndMarksAndLinksAreFollowed) {
  const TempFolder folder;
  const std::string path = folder.Write("a.jpg", CameraFile());
  chmod(path.c_str(), 0640);
  const bool hasMarks = setxattr(path.c_str(), "user.vrx.test", "mark", 4, 0) == 0;
  const std::string link = (folder.Path() / "link.jpg").string();
  ASSERT_EQ(symlink("a.jpg", link.c_str()), 0);
  XpImageIoJpeg codec;
  ASSERT_EQ(codec.SetRating(Wide(link), 3), XpOk);
  struct stat state {};
  ASSERT_EQ(lstat(link.c_str(), &state), 0);
  EXPECT_TRUE(S_ISLNK(state.st_mode));
  ASSERT_EQ(stat(path.c_str(), &state), 0);
  EXPECT_EQ(state.st_mode & 07777, 0640u);
  char mark[8];
  EXPECT_EQ(getxattr(path.c_str(), "user.vrx.test", mark, sizeof mark), hasMarks ? 4 : -1);
  EXPECT_EQ(TagsOf(folder.Read("a.jpg"))->GetMakerIfd()->GetLong(0x2002, 0, false), 3u);

  const Bytes before = folder.Read("a.jpg");
  chmod(path.c_str(), 0440);
  EXPECT_EQ(codec.SetRating(Wide(path), 5), XpErrAccessDenied);
  EXPECT_EQ(codec.SetRotation(Wide(path), 1), XpErrAccessDenied);
  EXPECT_EQ(codec.SetRating(Wide(folder.Path().string()), 5), XpErrFileNotFound);
  EXPECT_EQ(codec.SetRotation(Wide("/no/such/file.jpg"), 1), XpErrFileNotFound);
  const std::string pipe = (folder.Path() / "pipe").string();
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  EXPECT_EQ(codec.SetRotation(Wide(pipe), 1), XpErrNotAFile);
  EXPECT_EQ(folder.Read("a.jpg"), before);
}

TEST(JpegRatingTest, EditsInPlaceChangeTheirValueAndTheDatesOnly) {
  const TempFolder folder;
  const Bytes before = CameraFile({.preview = "PREVIEW", .tail = "a movie"});
  const std::string path = folder.Write("a.jpg", before);
  XpImageIoJpeg codec;
  ASSERT_EQ(codec.SetRotation(Wide(path), 1), XpOk);
  const Bytes after = folder.Read("a.jpg");
  ASSERT_EQ(after.size(), before.size());
  std::set<std::size_t> mayChange;
  for (std::size_t at = before.find(kCameraDate); at != Bytes::npos; at = before.find(kCameraDate, at + 1)) {
    for (std::size_t i = 0; i < 20; ++i) mayChange.insert(at + i);
  }
  EXPECT_EQ(mayChange.size(), 60u);
  mayChange.insert(before.find(Bytes("\x01\x12\x00\x03\x00\x00\x00\x01\x00\x06", 10)) + 9);
  for (std::size_t i = 0; i < before.size(); ++i) {
    ASSERT_TRUE(after[i] == before[i] || mayChange.contains(i)) << i;
  }
  EXPECT_EQ(TagsOf(after)->GetIfd(0)->GetShort(0x0112, false), 1);
  struct stat state {};
  XpDateTime taken;
  taken.SetDateTime(2001, 2, 3, 4, 5, 6);
  ASSERT_EQ(codec.SetModifyDate(Wide(path), taken, false), XpOk);
  stat(path.c_str(), &state);
  EXPECT_NE(state.st_mtime, taken.ToTimeT());
  ASSERT_EQ(codec.SetModifyDate(Wide(path), taken, true), XpOk);
  stat(path.c_str(), &state);
  EXPECT_EQ(state.st_mtime, taken.ToTimeT());
  const Bytes dated = Bytes("2001:02:03 04:05:06\0", 20);
  EXPECT_EQ(ValueOf(TagsOf(folder.Read("a.jpg"))->GetIfd(0), 0x0132), dated);
  ASSERT_EQ(codec.SetOriginalDate(Wide(path), taken), XpOk);
  auto tags = TagsOf(folder.Read("a.jpg"));
  EXPECT_EQ(ValueOf(tags->GetExifIfd(), 0x9003), dated);
  EXPECT_GT(ValueOf(tags->GetIfd(0), 0x0132), dated);
  EXPECT_NE(tags->GetGpsIfd(), nullptr);
  folder.Write("a.jpg", before);
  ASSERT_EQ(codec.StripGps(Wide(path)), XpOk);
  tags = TagsOf(folder.Read("a.jpg"));
  EXPECT_EQ(tags->GetGpsIfd(), nullptr);
  EXPECT_GT(ValueOf(tags->GetIfd(0), 0x0132).substr(0, 19), kCameraDate);
}

TEST(JpegRatingTest, KillAtEveryWriteLeavesAWholeFile) {
  if (!MayTrace()) GTEST_SKIP() << "needs to trace a process";
  const Bytes before = CameraFile({.preview = Bytes(300'000, 'P')});
  const Bytes coded = CodedPart(before);
  int killed = 0;
  for (int call = 1;; ++call) {
    const TempFolder folder;
    const std::string path = folder.Write("a.jpg", before);
    const auto rate = [&path] { return XpImageIoJpeg().SetRating(Wide(path), 4) == XpOk; };
    const bool isKilled = IsKilledAtCall(rate, call);
    const Bytes after = folder.Read("a.jpg");
    if (after != before) {
      const auto tags = TagsOf(after);
      ASSERT_NE(tags.Get(), nullptr) << call;
      EXPECT_EQ(tags->GetMakerIfd()->GetLong(0x2002, 0, false), 4u) << call;
      EXPECT_EQ(CodedPart(after), coded) << call;
      EXPECT_EQ(after.substr(12 + tags->previewOffset), Bytes(300'000, 'P')) << call;
    }
    if (!isKilled) break;
    ++killed;
  }
  EXPECT_GT(killed, 8);
}

}  // namespace
