// MP4 files: how their boxes are walked, what is read of them, and what hostile ones cannot do.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "content/mp4/MovieInfo.h"
#include "foundation/file/XpFile.h"
#include "foundation/file/XpMemoryFile.h"
#include "tests/content/Mp4Boxes.h"
#include "tests/support/TempFolder.h"

namespace {

using namespace mp4boxes;
using testing::ElementsAre;
using vrx::mp4::BoxFile;
using vrx::mp4::BoxLimits;
using vrx::mp4::BoxList;
using vrx::mp4::MakeFourCc;
using vrx::mp4::MovieInfo;

/// A file over the bytes, which must outlive it.
class BytesFile : public XpMemoryFile {
 public:
  explicit BytesFile(const std::string& bytes) {
    Attach(const_cast<char*>(bytes.data()), static_cast<std::int64_t>(bytes.size()), false);
  }
};

std::string TypeText(const vrx::mp4::Box& box) { return U32(box.type); }

/// The types of the boxes on the top of the file, and the result of the walk.
struct Walk {
  std::vector<std::string> types;
  XpResult result;
};
Walk WalkTop(const std::string& bytes, const BoxLimits& limits = {}) {
  BytesFile file(bytes);
  BoxFile boxes(file, limits);
  Walk walk;
  BoxList list = boxes.Boxes();
  for (vrx::mp4::Box box; list.Next(box);) walk.types.push_back(TypeText(box));
  walk.result = boxes.GetResult();
  return walk;
}

MovieInfo Read(const std::string& bytes, XpResult wanted = XpOk) {
  BytesFile file(bytes);
  MovieInfo info;
  EXPECT_EQ(vrx::mp4::ReadMovieInfo(file, info), wanted);
  return info;
}

/// "2024-05-01 10:11:12 +120", or "none".
std::string Text(const vrx::mp4::RecordingDate& recording) {
  std::int32_t year, month, day, hour, minute, second, weekDay;
  if (!recording.date.IsValid() ||
      !recording.date.GetDateTimeFields(year, month, day, hour, minute, second, weekDay)) {
    return "none";
  }
  char text[64];
  std::snprintf(text, sizeof text, "%04d-%02d-%02d %02d:%02d:%02d", year, month, day, hour, minute, second);
  return text + (recording.offsetMinutes ? " " + std::to_string(*recording.offsetMinutes) : std::string());
}

constexpr std::uint64_t kMovieTime = 3'797'395'272;  // 1 May 2024, 8:01:12 UTC
const char* const kCreationKey = "com.apple.quicktime.creationdate";
const char* const kZoneKey = "com.vrx.time-zone";

TEST(Mp4BoxTest, EveryFormOfSizeIsWalked) {
  const std::string userType = "0123456789abcdef";
  const std::string bytes = Box("free", "xyz") + LargeBox("wide", "12345") + Box("uuid", userType + "p") +
                            Header(1, "uuid") + U64(16 + 16 + 2) + userType + "pq" + Box("skip", "") +
                            Header(0, "mdat") + "to the end";
  BytesFile file(bytes);
  BoxFile boxes(file);
  BoxList list = boxes.Boxes();
  std::vector<std::string> seen;
  for (vrx::mp4::Box box; list.Next(box);) {
    seen.push_back(TypeText(box) + " " + bytes.substr(box.payload, box.PayloadSize()));
    const std::string type(box.userType.begin(), box.userType.end());
    EXPECT_EQ(type, TypeText(box) == "uuid" ? userType : std::string(16, '\0'));
  }
  EXPECT_THAT(seen, ElementsAre("free xyz", "wide 12345", "uuid p", "uuid pq", "skip ", "mdat to the end"));
  EXPECT_EQ(boxes.GetResult(), XpOk);
}

TEST(Mp4BoxTest, WrongSizesEndTheList) {
  const std::string good = Box("free", "");
  const std::string after = Box("free", std::string(40, 'x'));
  struct Case {
    const char* what;
    std::string box;
  };
  std::vector<Case> cases{
      {"one byte past the end", Header(9 + after.size(), "over")},
      {"32 bits", Header(0xFFFFFFFF, "over")},
      {"64 bits", Header(1, "over") + U64(~0ull)},
      {"64 bits, overflowing with the position", Header(1, "over") + U64(~0ull - 7)},
      {"sign bit", Header(1, "over") + U64(1ull << 63)},
      {"large size below its header", Header(1, "over") + U64(15)},
      {"uuid below its header", Header(23, "uuid")},
      {"large uuid below its header", Header(1, "uuid") + U64(31)},
  };
  for (std::uint64_t size = 2; size < 8; ++size) cases.push_back({"below the header", Header(size, "over")});
  for (const Case& c : cases) {
    const Walk walk = WalkTop(good + c.box + after);
    EXPECT_THAT(walk.types, ElementsAre("free")) << c.what;
    EXPECT_EQ(walk.result, XpErrMalformedRecord) << c.what;
  }
  // Fewer bytes than a header may follow, as in QuickTime's user data.
  const Walk walk = WalkTop(good + U32(0));
  EXPECT_THAT(walk.types, ElementsAre("free"));
  EXPECT_EQ(walk.result, XpOk);
}

TEST(Mp4BoxTest, ChildrenStayInsideTheirParent) {
  // The child reaches into the box after its parent; a size of 0 ends with the parent.
  for (const std::uint64_t size : {9u, 16u, 0u}) {
    const std::string bytes = Box("moov", Header(size, "kid ")) + Box("next", "12345678");
    BytesFile file(bytes);
    BoxFile boxes(file);
    vrx::mp4::Box parent, child;
    ASSERT_TRUE(boxes.Boxes().Next(parent));
    EXPECT_EQ(boxes.Children(parent).Next(child), size == 0);
    EXPECT_EQ(boxes.GetResult(), size == 0 ? XpOk : XpErrMalformedRecord);
    if (size == 0) {
      EXPECT_EQ(child.end, parent.end);
    }
    EXPECT_FALSE(boxes.Children(parent, 9).Next(child)) << "more is skipped than there is";
    EXPECT_EQ(boxes.GetResult(), XpErrMalformedRecord);
  }
}

TEST(Mp4BoxTest, FieldsEndWithTheirBox) {
  const std::string bytes =
      Box("full", Number(0x01000203, 4) + "\x11\x22\x33" + U64(0x1122334455667788)) + "beyond";
  BytesFile file(bytes);
  BoxFile boxes(file);
  vrx::mp4::Box box;
  ASSERT_TRUE(boxes.Boxes().Next(box));
  vrx::mp4::BoxPayload payload(boxes, box);
  const auto head = payload.ReadFullBoxHead();
  EXPECT_EQ(head.version, 1);
  EXPECT_EQ(head.flags, 0x203u);
  EXPECT_EQ(payload.ReadUInt8(), 0x11);
  EXPECT_EQ(payload.ReadUInt16(), 0x2233);
  EXPECT_EQ(payload.ReadUInt64(), 0x1122334455667788u);
  EXPECT_FALSE(payload.HasFailed());
  EXPECT_EQ(payload.ReadUInt8(), 0);
  EXPECT_TRUE(payload.HasFailed());
  EXPECT_EQ(boxes.GetResult(), XpErrMalformedRecord);
  vrx::mp4::BoxPayload again(boxes, box);
  again.Skip(12);
  EXPECT_EQ(again.ReadUInt32(), 0u);
  EXPECT_EQ(again.ReadUInt8(), 0) << "nothing is read after a failure";
  vrx::mp4::BoxPayload skipping(boxes, box);
  skipping.Skip(~0ull);
  EXPECT_TRUE(skipping.HasFailed());
}

TEST(Mp4BoxTest, LimitsEndTheWalk) {
  std::string many;
  for (int i = 0; i < 20; ++i) many += Box("free", "");
  EXPECT_EQ(WalkTop(many, {.boxes = 20}).types.size(), 20u);
  const Walk stopped = WalkTop(many, {.boxes = 19});
  EXPECT_EQ(stopped.types.size(), 19u);
  EXPECT_EQ(stopped.result, XpErrMalformedRecord);
  const Walk read = WalkTop(many, {.bytes = 100});
  EXPECT_LT(read.types.size(), 5u);
  EXPECT_EQ(read.result, XpErrMalformedRecord);

  std::string nested;
  for (int i = 0; i < 50; ++i) nested = Box("moov", nested);
  BytesFile file(nested);
  BoxFile boxes(file, {.depth = 10});
  vrx::mp4::Box box;
  BoxList list = boxes.Boxes();
  int depth = 0;
  while (list.Next(box)) {
    EXPECT_EQ(box.depth, ++depth);
    list = boxes.Children(box);
  }
  EXPECT_EQ(depth, 10);
  EXPECT_EQ(boxes.GetResult(), XpErrMalformedRecord);
}

TEST(Mp4InfoTest, BrandsTimesAndLengthAreRead) {
  for (const int version : {0, 1}) {
    const std::uint64_t ticks = version == 1 ? 0x1'0000'0000 : 0xFFFF'FFFE;
    const MovieInfo info = Read(FileType("mp42", "isomavc1") + Header(1, "mdat") + U64(24) + "12345678" +
                                Box("moov", MovieHeader(kMovieTime, ticks, 90'000, version)));
    ASSERT_TRUE(info.fileType && info.duration);
    EXPECT_EQ(info.fileType->majorBrand, MakeFourCc("mp42"));
    EXPECT_EQ(info.fileType->minorVersion, 512u);
    EXPECT_THAT(info.fileType->compatibleBrands, ElementsAre(MakeFourCc("isom"), MakeFourCc("avc1")));
    EXPECT_EQ(info.creationTime, kMovieTime);
    EXPECT_EQ(info.duration->ticks, ticks);
    EXPECT_EQ(info.duration->timescale, 90'000u);
    EXPECT_EQ(Text(info.recording), "2024-05-01 08:01:12");
  }
}

TEST(Mp4InfoTest, LengthIsUnknownOrThatOfTheFragments) {
  const auto mehd = [](int version, std::uint64_t ticks) {
    return Box("mvex", Box("mehd", U32(static_cast<std::uint64_t>(version) << 24) +
                                       Number(ticks, version == 1 ? 8 : 4)));
  };
  struct Case {
    std::string movie;
    std::optional<std::uint64_t> ticks;
  };
  const Case cases[] = {
      {MovieHeader(0, 0xFFFFFFFF), {}},
      {MovieHeader(0, ~0ull, 1000, 1), {}},
      {MovieHeader(0, 0xFFFFFFFF, 1000, 1), 0xFFFFFFFF},
      {MovieHeader(0, 5000, 0), {}},
      {MovieHeader(0, 5000, 1000, 2), {}},
      {MovieHeader(0, 0), 0},
      {MovieHeader(0, 0) + mehd(0, 700), 700},
      {MovieHeader(0, 0) + mehd(1, 1ull << 40), 1ull << 40},
      {MovieHeader(0, 0) + Box("mvex", ""), {}},
      {MovieHeader(0, 5000) + mehd(0, 700), 5000},
      {"", {}},
  };
  for (const Case& c : cases) {
    const MovieInfo info = Read(Box("moov", c.movie));
    EXPECT_EQ(info.duration ? std::optional(info.duration->ticks) : std::nullopt, c.ticks)
        << testing::PrintToString(c.movie);
  }
}

TEST(Mp4InfoTest, DateTextsAreRead) {
  struct Case {
    const char* text;
    const char* wanted;
  };
  const Case cases[] = {
      {"2024-05-01T10:11:12+0200", "2024-05-01 10:11:12 120"},
      {"2024-05-01T10:11:12+02:00", "2024-05-01 10:11:12 120"},
      {"2024-05-01T10:11:12.345-03:30", "2024-05-01 10:11:12 -210"},
      {"2024-05-01T10:11:12,3+05", "2024-05-01 10:11:12 300"},
      {"20240501T101112-0800", "2024-05-01 10:11:12 -480"},
      {"2024-05-01 10:11", "2024-05-01 10:11:00"},
      {"2024-05-01T10:11:12Z", "2024-05-01 10:11:12"},
      {"2024-05-01T10:11:12+1400", "2024-05-01 10:11:12 840"},
      {"2024-02-29", "2024-02-29 00:00:00"},
      // Not dates:
      {"2024-05-01T10:11:12+1401", "none"},
      {"2024-05-01T10:11:12+0260", "none"},
      {"2024-05-01T10:11:12Zx", "none"},
      {"2024-05-01T10:11:1", "none"},
      {"2024-05-01T", "none"},
      {"2023-02-29", "none"},
      {"2024-05-01T24:00:00", "none"},
      {"0099-05-01T10:11:12", "none"},
      {"2024", "none"},
      {"May 1st", "none"},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(Text(Read(Box("moov", KeyedMetadata({{kCreationKey, c.text}}))).recording), c.wanted) << c.text;
    const std::string terminated = c.text + std::string("\0 ", 2);
    EXPECT_EQ(Text(Read(Box("moov", Box("udta", DayText(terminated) + U32(0)))).recording), c.wanted)
        << c.text;
  }
  const std::string padded = std::string(cases[0].text) + std::string(41, ' ');
  EXPECT_EQ(Text(Read(Box("moov", Box("udta", DayText(padded)))).recording), "none") << "65 bytes";
}

TEST(Mp4InfoTest, DatesAreFoundInEveryPlaceInTheirOrder) {
  const auto key = [](const char* text) { return KeyedMetadata({{"x", "?"}, {kCreationKey, text}}); };
  const auto day = [](const char* text) { return Box("udta", DayText(text)); };
  const std::string header = MovieHeader(kMovieTime);
  const std::string listed = Box("meta", U32(0) + Box("ilst", Box("\xA9"
                                                                  "day",
                                                                  Data("2001-01-01T01:01:01"))));
  struct Case {
    const char* what;
    std::string movie;
    const char* wanted;
  };
  const Case cases[] = {
      {"key before all", header + day("2001-01-01T01:01:01") + key("2002-02-02T02:02:02"),
       "2002-02-02 02:02:02"},
      {"text before header", header + day("2001-01-01T01:01:01"), "2001-01-01 01:01:01"},
      {"item of a list", header + Box("udta", listed), "2001-01-01 01:01:01"},
      {"text before a key without a time", key("2002-02-02") + day("2001-01-01T01:01:01"),
       "2001-01-01 01:01:01"},
      {"header before days", header + key("2002-02-02") + day("2001-01-01"), "2024-05-01 08:01:12"},
      {"header before what is no date", header + key("soon") + day("2001"), "2024-05-01 08:01:12"},
      {"a day alone", MovieHeader(0) + day("2001-01-01"), "2001-01-01 00:00:00"},
      {"QuickTime's metadata", header + KeyedMetadata({{kCreationKey, "2002-02-02T02:02"}}, true),
       "2002-02-02 02:02:00"},
      {"inside user data", Box("udta", key("2002-02-02T02:02")), "2002-02-02 02:02:00"},
      {"the first of two", key("2002-02-02T02:02") + key("2003-03-03T03:03"), "2002-02-02 02:02:00"},
      {"the first of two keys",
       KeyedMetadata({{kCreationKey, "2002-02-02T02:02"}, {kCreationKey, "2003-03-03T03:03"}}),
       "2002-02-02 02:02:00"},
      {"a number beyond the keys", Box("meta", U32(0) + Box("ilst", Box(U32(2), Data("2001-01-01T01:01")))),
       "none"},
      {"a value that is no text",
       Box("meta", U32(0) + Box("ilst", Box("\xA9"
                                            "day",
                                            Data("2001-01-01", 21)))),
       "none"},
      {"nothing", MovieHeader(0), "none"},
      {"a header past the calendar", MovieHeader(~0ull - 1, 0, 1, 1) + day("2001-01-01"),
       "2001-01-01 00:00:00"},
      {"the last second of the calendar", MovieHeader(255'485'145'599, 0, 1, 1), "9999-12-31 23:59:59"},
      {"a second after it", MovieHeader(255'485'145'600, 0, 1, 1), "none"},
  };
  for (const Case& c : cases) EXPECT_EQ(Text(Read(Box("moov", c.movie)).recording), c.wanted) << c.what;
}

TEST(Mp4InfoTest, TimeZoneItemMakesLocalTime) {
  struct Case {
    const char* item;
    const char* wanted;  // of the movie header's time
  };
  const Case cases[] = {
      {"021c", "2024-05-01 17:01:12 540"},   // +9:00
      {"fe3e", "2024-05-01 00:31:12 -450"},  // -7:30
      {"fdda", "2024-04-30 22:51:12 -550"},
      {"0348", "2024-05-01 22:01:12 840"},
      // The low byte is missing, no place has this offset, or it is no item.
      {"0200", "2024-05-01 08:01:12"},
      {"0000", "2024-05-01 08:01:12"},
      {"fe00", "2024-05-01 08:01:12"},
      {"0349", "2024-05-01 08:01:12"},
      {"fd2f", "2024-05-01 08:01:12"},
      {"00021caf", "2024-05-01 08:01:12"},
      {"02xc", "2024-05-01 08:01:12"},
      {"", "2024-05-01 08:01:12"},
  };
  for (const Case& c : cases) {
    const std::string item = KeyedMetadata({{kZoneKey, c.item}});
    EXPECT_EQ(Text(Read(Box("moov", MovieHeader(kMovieTime) + Box("udta", item))).recording), c.wanted)
        << c.item;
  }
  const std::pair<const char*, const char*> texts[] = {
      {"2002-02-02T23:00:00Z", "2002-02-03 08:00:00 540"},
      {"2002-02-02T23:00:00", "2002-02-02 23:00:00 540"},
      {"2002-02-02T23:00:00-0100", "2002-02-02 23:00:00 -60"},
  };
  for (const auto& [text, wanted] : texts) {
    const std::string both = KeyedMetadata({{kCreationKey, text}, {kZoneKey, "021c"}});
    EXPECT_EQ(Text(Read(Box("moov", both)).recording), wanted) << text;
  }
  const MovieInfo zoneAlone = Read(Box("moov", KeyedMetadata({{kZoneKey, "021c"}})));
  EXPECT_EQ(zoneAlone.recording.offsetMinutes, 540);
}

const std::string kHeaderBox = MovieHeader(kMovieTime);
const std::string kMovieBoxes =
    kHeaderBox + Box("mvex", Box("mehd", U32(0) + U32(7))) +
    Box("udta", DayText("2001-01-01T01:01:01") + KeyedMetadata({{kZoneKey, "021c"}}));
const std::string kBrands = FileType("mp42", "isom");
const std::string kWholeMovie =
    kBrands + LargeBox("free", "x") + Box("moov", kMovieBoxes) + Box("mdat", "frames");

TEST(Mp4InfoTest, CutMoviesGiveWhatIsWhole) {
  const std::size_t endOfMovie = kWholeMovie.size() - Box("mdat", "frames").size();
  for (std::size_t size = 0; size < kWholeMovie.size(); ++size) {
    const std::string cut = kWholeMovie.substr(0, size);
    BytesFile file(cut);
    MovieInfo info;
    const bool isWhole = size >= endOfMovie;
    EXPECT_EQ(vrx::mp4::ReadMovieInfo(file, info) == XpOk, isWhole) << size;
    EXPECT_EQ(Text(info.recording), isWhole ? "2001-01-01 01:01:01 540" : "none") << size;
    EXPECT_EQ(info.fileType.has_value(), size >= kBrands.size()) << size;
  }
  // The movie box ends where its content is cut.
  for (std::size_t size = 0; size < kMovieBoxes.size(); ++size) {
    const std::string cut = Box("moov", kMovieBoxes.substr(0, size));
    BytesFile file(cut);
    MovieInfo info;
    vrx::mp4::ReadMovieInfo(file, info);
    EXPECT_EQ(info.duration.has_value(), size >= kHeaderBox.size()) << size;
    EXPECT_EQ(info.recording.date.IsValid(), size >= kHeaderBox.size()) << size;
  }
  // Damage after the header keeps what the header says.
  const MovieInfo info = Read(Box("moov", kHeaderBox + Header(99, "udta")), XpErrMalformedRecord);
  EXPECT_EQ(Text(info.recording), "2024-05-01 08:01:12");
}

TEST(Mp4InfoTest, CountsOfTheFileAreNotBelieved) {
  const std::string keys = Box("keys", U32(0) + U32(0xFFFFFFFF) + Box("mdta", kCreationKey));
  const std::string list =
      Box("ilst", Box(U32(1), Data("2001-01-01T01:01")) + Box(U32(0xFFFFFFFF), Data("x")));
  EXPECT_EQ(Text(Read(Box("moov", Box("meta", U32(0) + keys + list))).recording), "2001-01-01 01:01:00");
  std::string brands;
  for (int i = 0; i < 1000; ++i) brands += "isom";
  const MovieInfo info = Read(FileType("mp42", brands + "x") + Box("moov", ""));
  EXPECT_EQ(info.fileType->compatibleBrands.size(), 256u);
}

TEST(Mp4InfoTest, BrandsStandBeforeTheMovie) {
  struct Case {
    std::string bytes;
    XpResult wanted;
  };
  const Case cases[] = {
      {Box("free", "") + FileType("mp42", ""), XpOk},
      {FileType("mp42", "") + Header(99, "moov"), XpOk},
      {Box("ftyp", "mp42123"), XpErrMalformedRecord},
      {Box("moov", "") + FileType("mp42", ""), XpErrInvalidFile},
      {Box("mdat", "") + FileType("mp42", ""), XpErrInvalidFile},
      {"", XpErrInvalidFile},
      {"\x89PNG\r\n\x1A\n........", XpErrMalformedRecord},
  };
  for (const Case& c : cases) {
    BytesFile file(c.bytes);
    vrx::mp4::FileType type;
    EXPECT_EQ(vrx::mp4::ReadFileType(file, type), c.wanted) << testing::PrintToString(c.bytes);
  }
  XpFile closed(u"/none.mp4");
  vrx::mp4::FileType type;
  EXPECT_EQ(vrx::mp4::ReadFileType(closed, type), XpErrNotAFile);
}

TEST(Mp4InfoTest, MovieBehindManyGigabytesOfFramesIsFound) {
  const TempFolder folder;
  constexpr std::uint64_t kFrames = 5ull << 30;
  const std::string start = FileType("mp42", "") + Header(1, "mdat") + U64(16 + kFrames);
  const std::string path = folder.Write("big.mp4", start);
  std::filesystem::resize_file(path, start.size() + kFrames);  // a hole, which takes no room
  std::ofstream(path, std::ios::binary | std::ios::app) << Box("moov", MovieHeader(kMovieTime));
  XpFile file;
  ASSERT_EQ(file.OpenPath(XpNarrowString(path).ToWide(), XpOpenRead, XpShareRead), XpOk);
  MovieInfo info;
  // The limit is far below the size of the frames.
  EXPECT_EQ(vrx::mp4::ReadMovieInfo(file, info, {.bytes = 1000}), XpOk);
  EXPECT_EQ(info.creationTime, kMovieTime);
}

}  // namespace
