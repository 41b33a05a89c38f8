// Edits of single tags in stored files: what is found, what is written, and that nothing else changes.
#include <gtest/gtest.h>

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "foundation/file/XpFile.h"
#include "foundation/file/XpMemoryFile.h"
#include "imaging/tags/TagEdits.h"
#include "imaging/tags/TagNames.h"
#include "tests/imaging/TagBytes.h"
#include "tests/support/TempFolder.h"

namespace {

using namespace vrx::imaging;
using namespace std::string_literals;
using vrx::test_support::TagBytes;

constexpr std::int64_t kBase = 12;

/// What a stored picture is like: header at 12, IFD 0, IFD 1, Exif IFD, maker note, in this order.
struct Picture {
  bool bigEndian = false;
  std::string date = "2026:01:02 03:04:05\0"s;
  std::string noteDate = date;
  std::uint32_t dateCount = 20;
  std::uint32_t orientation = 1;
  std::uint32_t exifPointer = 13;  // its type
  std::string signature = "KELO DSC \0\0\0"s;
  std::uint32_t offsetCount = 7;
  std::uint32_t noteCount = 140;
  bool second = true;
  std::map<std::string, std::size_t> places = {};  // of the texts and fields below, in the file
};

/// The bytes of `p`, whose places it fills in.
std::string Bytes(Picture& p) {
  const TagBytes b{p.bigEndian};
  const std::uint32_t ifd0 = 8, date0 = ifd0 + 6 + 48, ifd1 = date0 + 20, date1 = ifd1 + 6 + 24;
  const std::uint32_t exif = date1 + 20, original = exif + 6 + 36, offset = original + 20, note = offset + 8;
  const std::uint32_t maker = note + static_cast<std::uint32_t>(p.signature.size());
  const bool own = p.signature.size() > 10 && p.signature[10] >= 2;
  const std::uint32_t dates = maker + 6 + 36;
  const std::string orientation = b.Entry(kTagOrientation, 3, 1, b.U16(p.orientation) + "\0\0"s);
  std::string bytes = "\xFF\xD8\xFF\xE1..Exif\0\0"s + b.Header() +
                      b.Ifd({orientation, b.Entry(kTagDateTime, 2, p.dateCount, date0),
                             b.Entry(kTagExifIfd, p.exifPointer, 1, exif), b.Entry(kTagGpsIfd, 4, 1, ifd1)},
                            p.second ? ifd1 : 0) +
                      p.date + b.Ifd({orientation, b.Entry(kTagDateTime, 2, 20, date1)}) + p.date +
                      b.Ifd({b.Entry(kTagDateTimeOriginal, 2, 20, original),
                             b.Entry(kTagOffsetTime, 2, p.offsetCount, offset),
                             b.Entry(kTagMakerNote, 7, p.noteCount, note)}) +
                      "2001:01:01 01:01:01\0"s + "+00:00\0 "s + p.signature +
                      b.Ifd({b.Entry(kTagMakerPreview, 7, 9, 0x11223344), b.Entry(kTagMakerRating, 4, 1, 3),
                             b.Entry(kTagMakerDates, 7, 72, own ? dates - note : dates)}) +
                      "prefix" + p.noteDate + std::string(46, 'x') + "the picture";
  p.places = {{"orientation0", kBase + ifd0 + 10},
              {"orientation1", kBase + ifd1 + 10},
              {"date0", kBase + date0},
              {"date1", kBase + date1},
              {"original", kBase + original},
              {"offset", kBase + offset},
              {"preview", kBase + maker + 6},
              {"rating", kBase + maker + 22},
              {"noted", kBase + dates + 6}};
  return bytes;
}

/// What the file is after the edit, which must not change its size.
template <class Edit>
std::string After(const std::string& bytes, XpResult expected, Edit edit) {
  std::string block = bytes;
  XpMemoryFile file;
  file.Attach(block.data(), static_cast<std::int64_t>(block.size()), false);
  EXPECT_EQ(edit(file), expected);
  EXPECT_EQ(file.GetSize(), static_cast<std::int64_t>(bytes.size()));
  return block;
}

using Texts = std::map<std::string, std::string>;

/// `bytes` with these texts at these places of `p`.
std::string With(std::string bytes, const Picture& p, const Texts& texts) {
  for (const auto& [name, text] : texts) bytes.replace(p.places.at(name), text.size(), text);
  return bytes;
}

/// The edit of the stored picture changes these texts and nothing else.
template <class Edit>
void ExpectChanges(Picture p, const Texts& texts, Edit edit, XpResult expected = XpOk) {
  const std::string bytes = Bytes(p);
  EXPECT_EQ(After(bytes, expected, edit), With(bytes, p, texts));
}

XpDateTime Date(std::int32_t year = 1999) {
  XpDateTime date;
  date.SetDateTime(year, 12, 31, 23, 58, 7);
  return date;
}
const std::string kDate = "1999:12:31 23:58:07\0"s;

TEST(TagEdits, DateOfTheLastChangeIsWrittenWhereverItIsTheSame) {
  const auto edit = [](auto& file) { return PatchDateTime(file, kBase, Date(), true); };
  const Texts everywhere{{"date0", kDate}, {"date1", kDate}, {"noted", kDate}};
  for (const bool bigEndian : {false, true}) {
    for (const char version : {'\0', '\1', '\2', '\3'}) {
      ExpectChanges({.bigEndian = bigEndian, .signature = "KELO DSC \0"s + version + "\0"s}, everywhere,
                    edit);
    }
  }
  ExpectChanges({.date = "Friday, or so......\0"s, .noteDate = "FRIDAY, OR SO......\0"s}, everywhere, edit);
  ExpectChanges({.noteDate = "2026:01:02 03:04:06\0"s, .second = false}, {{"date0", kDate}}, edit);
  ExpectChanges({.signature = ""}, {{"date0", kDate}, {"date1", kDate}}, edit);
  ExpectChanges({.dateCount = 19}, {}, edit, XpErrImageNoData);
}

TEST(TagEdits, OriginalDateAndOffsetAreWrittenInTheExifIfd) {
  const auto date = [](auto& file) { return PatchOriginalDate(file, kBase, Date()); };
  const auto offset = [](std::int32_t minutes) {
    return [minutes](auto& file) { return PatchOffsetTime(file, kBase, minutes); };
  };
  for (const std::uint32_t type : {4u, 13u}) {
    const Picture p{.exifPointer = type};
    ExpectChanges(p, {{"original", kDate}}, date);
    ExpectChanges(p, {{"offset", "+00:00\0"s}}, offset(0));
    ExpectChanges(p, {{"offset", "-03:30\0"s}}, offset(-210));
    ExpectChanges(p, {{"offset", "+99:59\0"s}}, offset(5999));
    ExpectChanges(p, {}, offset(6000), XpErrImageArgument);
  }
  ExpectChanges({.exifPointer = 3}, {}, date);
  ExpectChanges({.exifPointer = 3}, {}, offset(60));
  ExpectChanges({.offsetCount = 6}, {}, offset(60));
}

TEST(TagEdits, DateThatIsNotValidIsRefused) {
  for (const XpDateTime& date : {XpDateTime(), XpDateTime(1e9)}) {
    const auto changed = [&](auto& file) { return PatchDateTime(file, kBase, date, true); };
    const auto original = [&](auto& file) { return PatchOriginalDate(file, kBase, date); };
    const auto touched = [&](auto& file) { return TouchDates(file, XpOk, kBase, date); };
    ExpectChanges({}, {}, changed, XpErrImageArgument);
    ExpectChanges({}, {}, original, XpErrImageArgument);
    ExpectChanges({}, {}, touched, XpErrImageArgument);
  }
  ExpectChanges({}, {{"original", "0100:12:31 23:58:07"}},
                [](auto& file) { return PatchOriginalDate(file, kBase, Date(100)); });
}

TEST(TagEdits, TurnsAddToTheOrientation) {
  struct Case {
    std::uint32_t stored, turns, turned;
  };
  for (const Case& c : {Case{1, 1, 8},
                        {8, 1, 3},
                        {3, 1, 6},
                        {6, 1, 1},
                        {1, 0, 1},
                        {6, 2, 8},
                        {2, 3, 6},
                        {5, 0, 1},
                        {8, 0xFFFFFFFF, 1},
                        {99, 2, 3}}) {
    const auto edit = [&](auto& file) { return PatchOrientation(file, kBase, c.turns); };
    for (const bool bigEndian : {false, true}) {
      const std::string value = TagBytes{bigEndian}.U16(c.turned);
      ExpectChanges({.bigEndian = bigEndian, .orientation = c.stored},
                    {{"orientation0", value}, {"orientation1", value}}, edit);
      ExpectChanges({.bigEndian = bigEndian, .orientation = c.stored, .second = false},
                    {{"orientation0", value}}, edit);
    }
  }
}

TEST(TagEdits, PictureWithoutOrientationInIfd0IsNotTurned) {
  Picture p;
  std::string bytes = Bytes(p);
  bytes[p.places["orientation0"] - 8] = 'x';
  EXPECT_EQ(After(bytes, XpErrImageNoData, [](auto& file) { return PatchOrientation(file, kBase, 1); }),
            bytes);
}

TEST(TagEdits, RatingAndPreviewAreWrittenInTheMakerNote) {
  struct Case {
    std::string signature;
    bool required;
    bool isFound;
    std::uint32_t noteCount = 140;
  };
  for (const Case& c : {Case{"KELO DSC \0\0\0"s, true, true, 5},
                        {"KELO DSC \0\0\0"s, true, true, 65536},
                        {"KELO DSC \0\0\0"s, true, false, 4},
                        {"KELO DSC \0\0\0"s, true, false, 65537},
                        {"KELO DSC \0\2\0"s, false, true},
                        {"KExxxxxxxxxx", true, true},
                        {"", false, true},
                        {"", true, false},
                        {"OTHER NOTE..", true, false},
                        {"OTHER NOTE", false, false}}) {
    const auto rate = [&](auto& file) { return PatchRating(file, kBase, 0x01020305, c.required); };
    const auto refer = [](auto& file) { return PatchPreviewRef(file, 0x0A0B0C0D, 777); };
    for (const TagBytes& b : {TagBytes{false}, TagBytes{true}}) {
      const Picture p{.bigEndian = b.bigEndian, .signature = c.signature, .noteCount = c.noteCount};
      const Texts rating{{"rating", b.U32(0x01020305)}}, preview{{"preview", b.U32(777) + b.U32(0x0A0B0C0D)}};
      ExpectChanges(p, c.isFound ? rating : Texts{}, rate, c.isFound ? XpOk : XpErrImageNoData);
      ExpectChanges(p, c.isFound && c.signature.starts_with("KE") ? preview : Texts{}, refer);
    }
  }
}

TEST(TagEdits, ChainThatLeadsToItselfIsFollowedOnce) {
  const TagBytes b;
  const auto chain = [&](std::uint32_t orientation) {
    std::vector<std::string> entries(1000, b.Entry(1, 3, 1, 0));  // more than is read at once
    entries.back() = b.Entry(kTagOrientation, 3, 1, orientation);
    return b.Header() + b.Ifd(entries, 8);
  };
  EXPECT_EQ(After(chain(1), XpOk, [](auto& file) { return PatchOrientation(file, 0, 1); }), chain(8));
}

TEST(TagEdits, DateThatOverlapsTheHeaderIsLeftAlone) {
  const TagBytes b;
  const std::string bytes = b.Header() + b.Ifd({b.Entry(kTagDateTime, 2, 20, 7)}) + "tail";
  EXPECT_EQ(After(bytes, XpErrImageNoData, [](auto& file) { return PatchDateTime(file, 0, Date(), true); }),
            bytes);
}

TEST(TagEdits, RatingOf0AtTheStartOfTheFileIsFound) {
  Picture p;
  std::string bytes = Bytes(p).substr(kBase);
  const std::size_t place = p.places["rating"] - kBase;
  bytes.replace(place, 4, "\0\0\0\0"s);
  const std::string rated = After(bytes, XpOk, [](auto& file) { return PatchRating(file, 0, 5, true); });
  EXPECT_EQ(rated, bytes.replace(place, 1, "\5"));
}

TEST(TagEdits, GpsEntriesAreCutOutOfIfd0) {
  for (const bool bigEndian : {false, true}) {
    const TagBytes b{bigEndian};
    const auto edit = [](auto& file) { return RemoveGpsPointer(file, 0); };
    const auto gps = b.Entry(kTagGpsIfd, 4, 1, 50), other = b.Entry(0x8773, 7, 4, "icc!"),
               last = b.Entry(0x9000, 7, 4, "0231");
    EXPECT_EQ(After(b.Header() + b.Ifd({gps, other, gps, last}, 77) + "tail", XpOk, edit),
              b.Header() + b.Ifd({other, last}, 77) + std::string(24, '\0') + "tail");
    EXPECT_EQ(After(b.Header() + b.Ifd({gps}, 77), XpOk, edit),
              b.Header() + b.Ifd({}, 77) + std::string(12, '\0'));
    std::vector<std::string> most(1000, other), tooMany(1001, gps);
    most[500] = gps;
    const std::string before = b.Header() + b.Ifd(most);
    most.erase(most.begin() + 500);
    EXPECT_EQ(After(before, XpOk, edit), b.Header() + b.Ifd(most) + std::string(12, '\0'));
    const std::pair<std::string, XpResult> unchanged[] = {{b.Ifd({other}), XpOk},
                                                          {b.Ifd({}), XpOk},
                                                          {b.Ifd(tooMany), XpErrImageInvalid},
                                                          {b.Ifd({gps}).substr(0, 17), XpErrImageInvalid}};
    for (const auto& [ifd, result] : unchanged) {
      EXPECT_EQ(After(b.Header() + ifd, result, edit), b.Header() + ifd);
    }
  }
}

TEST(TagEdits, EntriesAreFoundByTypeCountAndRange) {
  const TagBytes b;
  const std::string bytes = b.Header() + b.Ifd({b.Entry(1, 4, 2, 62), b.Entry(1, 7, 3, 20),
                                                b.Entry(2, 4, 1, 38), b.Entry(2, 4, 1, 70)});
  struct Case {
    EntryQuery query;
    std::int64_t target;
    std::uint32_t index;
  };
  for (const Case& c :
       {Case{{.tag = 1, .type = 7, .leastCount = 3, .greatestCount = 3}, 20, 1},
        {{.tag = 1, .type = 3, .secondType = 4, .leastCount = 0, .greatestCount = 2}, 0, 99},
        {{.tag = 1, .type = 4, .leastCount = 2, .greatestCount = 9, .noRangeCheck = true}, 62, 0},
        {{.tag = 1, .type = 7, .leastCount = 4, .greatestCount = 9}, 0, 99},
        {{.tag = 2, .type = 4}, 38, 2},
        {{.tag = 3, .type = 4}, 0, 99}}) {
    std::string block = bytes;
    XpMemoryFile file;
    file.Attach(block.data(), static_cast<std::int64_t>(block.size()), false);
    std::uint32_t index = 99;
    EXPECT_EQ(FindEntry(file, 8, false, 0, c.query, &index), c.target);
    EXPECT_EQ(index, c.index);
    EXPECT_EQ(FindEntry(file, 8, false, 0, c.query, nullptr), c.target);
    EXPECT_EQ(FindEntry(file, 900, false, 0, c.query, nullptr), 0);
  }
}

const std::pair<const char*, XpResult (*)(XpAbstractFile&)> kEdits[] = {
    {"date", [](XpAbstractFile& file) { return PatchDateTime(file, kBase, Date(), false); }},
    {"original", [](XpAbstractFile& file) { return PatchOriginalDate(file, kBase, Date()); }},
    {"offset", [](XpAbstractFile& file) { return PatchOffsetTime(file, kBase, 60); }},
    {"orientation", [](XpAbstractFile& file) { return PatchOrientation(file, kBase, 1); }},
    {"rating", [](XpAbstractFile& file) { return PatchRating(file, kBase, 5, true); }},
    {"preview", [](XpAbstractFile& file) { return PatchPreviewRef(file, 5, 5); }},
    {"gps", [](XpAbstractFile& file) { return RemoveGpsPointer(file, kBase); }},
    {"touch", [](XpAbstractFile& file) { return TouchDates(file, XpOk, kBase, Date()); }},
};

TEST(TagEdits, CutFileIsNotMadeLonger) {
  Picture p;
  const std::string bytes = Bytes(p);
  for (const auto& [name, edit] : kEdits) {
    for (std::size_t size = 0; size < bytes.size(); ++size) {
      SCOPED_TRACE(name + (" cut at " + std::to_string(size)));
      std::vector<char> block(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size));
      XpMemoryFile file;
      file.Attach(block.data(), static_cast<std::int64_t>(size), false);
      const XpResult result = edit(file);
      ASSERT_EQ(file.GetSize(), static_cast<std::int64_t>(size));
      EXPECT_EQ(result == XpErrImageInvalid, size < 23 || (name == "gps"s && size < 74));
      // Whatever cannot be done leaves the file alone.
      if (result == XpOk) continue;
      EXPECT_EQ(std::string(block.begin(), block.end()), bytes.substr(0, size));
    }
  }
}

TEST(TagEdits, FailedWriteIsTheResult) {
  class FullFile : public XpMemoryFile {
    XpResult Write(const void*, std::uint64_t, std::uint64_t*) override { return XpErrDiskFull; }
  };
  Picture p;
  std::string bytes = Bytes(p);
  for (const auto& [name, edit] : kEdits) {
    FullFile file;
    file.Attach(bytes.data(), static_cast<std::int64_t>(bytes.size()), false);
    EXPECT_EQ(edit(file), XpErrDiskFull) << name;
  }
}

TEST(TagEdits, TouchedFileHasTheDateInItsTagsAndAsItsTime) {
  ExpectChanges(
      {}, {}, [](auto& file) { return TouchDates(file, XpErrImageNoData, kBase, Date()); }, XpErrImageNoData);
  Picture noDate{.dateCount = 19}, p;
  After(Bytes(noDate), XpOk, [](auto& file) { return TouchDates(file, XpOk, kBase); });
  const std::string bytes = Bytes(p);
  const TempFolder folder;
  const std::string path = folder.Write("picture.jpg", bytes);
  XpFile file(XpNarrowString(path.c_str()).ToWide());
  ASSERT_EQ(file.Open(XpOpenReadWrite, XpShareRead), XpOk);
  EXPECT_EQ(TouchDates(file, XpOk, kBase, Date()), XpOk);
  ASSERT_EQ(file.Close(), XpOk);
  XpDateTime written;
  ASSERT_EQ(file.GetWriteTime(written), XpOk);
  std::int64_t seconds = 1;
  ASSERT_TRUE(written.DifferenceInSeconds(Date(), seconds));
  EXPECT_EQ(seconds, 0);
  const std::string touched = folder.Read("picture.jpg");
  const std::string offset = touched.substr(p.places["offset"], 7);
  EXPECT_EQ(touched,
            With(bytes, p, {{"date0", kDate}, {"date1", kDate}, {"noted", kDate}, {"offset", offset}}));
}

}  // namespace
