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
using namespace std::string_literals;
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

/// A walk over the bytes, which must outlive it.
struct Walk {
  explicit Walk(const std::string& bytes, const BoxLimits& limits = {}) : file(bytes), boxes(file, limits) {}

  /// The types of the boxes on the top of the file, and the result.
  std::string Top() {
    std::string types;
    BoxList list = boxes.Boxes();
    for (vrx::mp4::Box box; list.Next(box);) types += U32(box.type) + " ";
    return types + std::to_string(boxes.GetResult());
  }
  vrx::mp4::Box First() {
    vrx::mp4::Box box;
    EXPECT_TRUE(boxes.Boxes().Next(box));
    return box;
  }

  BytesFile file;
  BoxFile boxes;
};
const std::string kGoodTop = "free " + std::to_string(XpOk);
const std::string kBadTop = "free " + std::to_string(XpErrMalformedRecord);

MovieInfo Read(const std::string& bytes, XpResult wanted = XpOk) {
  BytesFile file(bytes);
  MovieInfo info;
  EXPECT_EQ(vrx::mp4::ReadMovieInfo(file, info), wanted);
  return info;
}

/// "2024-05-01 10:11:12 120", or "none".
std::string Text(const vrx::mp4::RecordingDate& recording) {
  const XpDateTime& date = recording.date;
  if (!date.IsValid()) return "none";
  char text[64];
  std::snprintf(text, sizeof text, "%04d-%02d-%02d %02d:%02d:%02d", date.GetYear(), date.GetMonth(),
                date.GetDay(), date.GetHour(), date.GetMinute(), date.GetSecond());
  return text + (recording.offsetMinutes ? " " + std::to_string(*recording.offsetMinutes) : std::string());
}
/// That of a movie of these boxes.
std::string DateOf(const std::string& movie) { return Text(Read(Box("moov", movie)).recording); }

constexpr std::uint64_t kMovieTime = 3'797'395'272;  // 1 May 2024, 8:01:12 UTC
const char* const kCreationKey = "com.apple.quicktime.creationdate";
const char* const kZoneKey = "com.vrx.time-zone";

TEST(Mp4BoxTest, EveryFormOfSizeIsWalked) {
  const std::string userType = "0123456789abcdef";
  const std::string bytes = Box("free", "xyz") + LargeBox("wide", "12345") + Box("uuid", userType + "p") +
                            Header(1, "uuid") + U64(16 + 16 + 2) + userType + "pq" + Box("skip", "") +
                            Header(0, "mdat") + "to the end";
  Walk walk(bytes);
  BoxList list = walk.boxes.Boxes();
  std::vector<std::string> seen;
  for (vrx::mp4::Box box; list.Next(box);) {
    const std::string type = U32(box.type);
    seen.push_back(type + " " + bytes.substr(box.payload, box.PayloadSize()));
    EXPECT_EQ(std::string(box.userType.begin(), box.userType.end()),
              type == "uuid" ? userType : std::string(16, '\0'));
  }
  EXPECT_THAT(seen, ElementsAre("free xyz", "wide 12345", "uuid p", "uuid pq", "skip ", "mdat to the end"));
  EXPECT_EQ(walk.boxes.GetResult(), XpOk);
}

TEST(Mp4BoxTest, WrongSizesEndTheList) {
  const std::string good = Box("free", "");
  const std::string after = Box("free", std::string(40, 'x'));
  const std::string overs[] = {
      Header(9 + after.size(), "over"),  // one byte past the end
      Header(0xFFFFFFFF, "over"),
      Header(1, "over") + U64(~0ull),
      Header(1, "over") + U64(~0ull - 7),  // overflows with the position
      Header(1, "over") + U64(1ull << 63),
      Header(1, "over") + U64(15),  // below its own header, like those that follow
      Header(23, "uuid"),
      Header(1, "uuid") + U64(31),
      Header(2, "over"),
      Header(7, "over"),
  };
  for (const std::string& over : overs) {
    const std::string bytes = good + over + after;
    EXPECT_EQ(Walk(bytes).Top(), kBadTop) << testing::PrintToString(over);
  }
  // Fewer bytes than a header may follow, as in QuickTime's user data.
  const std::string tail = good + U32(0);
  EXPECT_EQ(Walk(tail).Top(), kGoodTop);
}

TEST(Mp4BoxTest, ChildrenStayInsideTheirParent) {
  // The child reaches into the box after its parent; a size of 0 ends with the parent.
  for (const std::uint64_t size : {9u, 16u, 0u}) {
    const std::string bytes = Box("moov", Header(size, "kid ")) + Box("next", "12345678");
    Walk walk(bytes);
    const vrx::mp4::Box parent = walk.First();
    vrx::mp4::Box child;
    EXPECT_EQ(walk.boxes.Children(parent).Next(child), size == 0);
    EXPECT_EQ(walk.boxes.GetResult(), size == 0 ? XpOk : XpErrMalformedRecord);
    EXPECT_EQ(child.end, size == 0 ? parent.end : 0);
    EXPECT_FALSE(walk.boxes.Children(parent, 9).Next(child)) << "more is skipped than there is";
    EXPECT_EQ(walk.boxes.GetResult(), XpErrMalformedRecord);
  }
}

TEST(Mp4BoxTest, FieldsEndWithTheirBox) {
  const std::string bytes =
      Box("full", Number(0x01000203, 4) + "\x11\x22\x33" + U64(0x1122334455667788)) + "beyond";
  Walk walk(bytes);
  const vrx::mp4::Box box = walk.First();
  vrx::mp4::BoxPayload payload(walk.boxes, box);
  const auto head = payload.ReadFullBoxHead();
  EXPECT_EQ(head.version, 1);
  EXPECT_EQ(head.flags, 0x203u);
  EXPECT_EQ(payload.ReadUInt8(), 0x11);
  EXPECT_EQ(payload.ReadUInt16(), 0x2233);
  EXPECT_EQ(payload.ReadUInt64(), 0x1122334455667788u);
  EXPECT_FALSE(payload.HasFailed());
  EXPECT_EQ(payload.ReadUInt8(), 0);
  EXPECT_TRUE(payload.HasFailed());
  EXPECT_EQ(walk.boxes.GetResult(), XpErrMalformedRecord);
  vrx::mp4::BoxPayload again(walk.boxes, box);
  again.Skip(12);
  EXPECT_EQ(again.ReadUInt32(), 0u);
  EXPECT_EQ(again.ReadUInt8(), 0) << "nothing is read after a failure";
  vrx::mp4::BoxPayload skipping(walk.boxes, box);
  skipping.Skip(~0ull);
  EXPECT_TRUE(skipping.HasFailed());
}

TEST(Mp4BoxTest, LimitsEndTheWalk) {
  const std::string two = Box("free", "") + Box("free", "");
  EXPECT_EQ(Walk(two, {.boxes = 2}).Top(), "free " + kGoodTop);
  EXPECT_EQ(Walk(two, {.boxes = 1}).Top(), kBadTop);
  EXPECT_EQ(Walk(two, {.bytes = 20}).Top(), kBadTop);
  std::string nested;
  for (int i = 0; i < 50; ++i) nested = Box("moov", nested);
  Walk walk(nested, {.depth = 10});
  BoxList list = walk.boxes.Boxes();
  int depth = 0;
  for (vrx::mp4::Box box; list.Next(box); list = walk.boxes.Children(box)) EXPECT_EQ(box.depth, ++depth);
  EXPECT_EQ(depth, 10);
  EXPECT_EQ(walk.boxes.GetResult(), XpErrMalformedRecord);
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
  const std::pair<std::string, std::optional<std::uint64_t>> cases[] = {
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
  for (const auto& [movie, ticks] : cases) {
    const MovieInfo info = Read(Box("moov", movie));
    EXPECT_EQ(info.duration ? std::optional(info.duration->ticks) : std::nullopt, ticks)
        << testing::PrintToString(movie);
  }
}

TEST(Mp4InfoTest, DateTextsAreRead) {
  const std::pair<const char*, const char*> cases[] = {
      {"2024-05-01T10:11:12+0200", "2024-05-01 10:11:12 120"},
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
  };
  for (const auto& [text, wanted] : cases) {
    EXPECT_EQ(DateOf(KeyedMetadata({{kCreationKey, text}})), wanted) << text;
    EXPECT_EQ(DateOf(Box("udta", DayText(text + "\0 "s) + U32(0))), wanted) << text;
  }
  EXPECT_EQ(DateOf(Box("udta", DayText(cases[0].first + std::string(41, ' ')))), "none") << "65 bytes";
}

TEST(Mp4InfoTest, DatesAreFoundInEveryPlaceInTheirOrder) {
  const auto key = [](const char* text) { return KeyedMetadata({{"x", "?"}, {kCreationKey, text}}); };
  const auto day = [](const char* text) { return Box("udta", DayText(text)); };
  const auto list = [](const std::string& type, const std::string& data) {
    return Box("meta", U32(0) + Box("ilst", Box(type, data)));
  };
  const std::string header = MovieHeader(kMovieTime), dayType = "\xA9"s + "day";
  struct Case {
    const char* what;
    std::string movie;
    const char* wanted;
  };
  const Case cases[] = {
      {"key before all", header + day("2001-01-01T01:01") + key("2002-02-02T02:02"), "2002-02-02 02:02:00"},
      {"text before header", header + day("2001-01-01T01:01:01"), "2001-01-01 01:01:01"},
      {"item of a list", header + Box("udta", list(dayType, Data("2001-01-01T01:01"))),
       "2001-01-01 01:01:00"},
      {"text before a bare day", key("2002-02-02") + day("2001-01-01T01:01"), "2001-01-01 01:01:00"},
      {"header before days", header + key("2002-02-02") + day("2001-01-01"), "2024-05-01 08:01:12"},
      {"header before what is no date", header + key("soon") + day("2001"), "2024-05-01 08:01:12"},
      {"a day alone", MovieHeader(0) + day("2001-01-01"), "2001-01-01 00:00:00"},
      {"QuickTime's metadata", KeyedMetadata({{kCreationKey, "2002-02-02"}}, true), "2002-02-02 00:00:00"},
      {"inside user data", Box("udta", key("2002-02-02T02:02")), "2002-02-02 02:02:00"},
      {"the first of two", key("2002-02-02T02:02") + key("2003-03-03T03:03"), "2002-02-02 02:02:00"},
      {"the first of two keys", KeyedMetadata({{kCreationKey, "2002-02-02"}, {kCreationKey, "2003-03-03"}}),
       "2002-02-02 00:00:00"},
      {"a number beyond the keys", list(U32(2), Data("2001-01-01T01:01")), "none"},
      {"a value that is no text", list(dayType, Data("2001-01-01", 21)), "none"},
      {"nothing", MovieHeader(0), "none"},
      {"a header past the calendar", MovieHeader(~0ull - 1, 0, 1, 1), "none"},
      {"the last second of the calendar", MovieHeader(255'485'145'599, 0, 1, 1), "9999-12-31 23:59:59"},
      {"a second after it", MovieHeader(255'485'145'600, 0, 1, 1), "none"},
  };
  for (const Case& c : cases) EXPECT_EQ(DateOf(c.movie), c.wanted) << c.what;
}

TEST(Mp4InfoTest, TimeZoneItemMakesLocalTime) {
  const char* const utc = "2024-05-01 08:01:12";  // the movie header's time
  const std::pair<const char*, const char*> items[] = {
      {"021c", "2024-05-01 17:01:12 540"},   // +9:00
      {"fe3e", "2024-05-01 00:31:12 -450"},  // -7:30
      {"0348", "2024-05-01 22:01:12 840"},
      // The low byte is missing, no place has this offset, or it is no item.
      {"0200", utc},
      {"0000", utc},
      {"fe00", utc},
      {"0349", utc},
      {"fd2f", utc},
      {"00021caf", utc},
      {"02xc", utc},
      {"", utc},
  };
  for (const auto& [item, wanted] : items) {
    const std::string zone = Box("udta", KeyedMetadata({{kZoneKey, item}}));
    EXPECT_EQ(DateOf(MovieHeader(kMovieTime) + zone), wanted) << item;
  }
  const std::pair<const char*, const char*> texts[] = {
      {"2002-02-02T23:00:00Z", "2002-02-03 08:00:00 540"},
      {"2002-02-02T23:00:00", "2002-02-02 23:00:00 540"},
      {"2002-02-02T23:00:00-0100", "2002-02-02 23:00:00 -60"},
  };
  for (const auto& [text, wanted] : texts) {
    EXPECT_EQ(DateOf(KeyedMetadata({{kCreationKey, text}, {kZoneKey, "021c"}})), wanted) << text;
  }
  EXPECT_EQ(Read(Box("moov", KeyedMetadata({{kZoneKey, "021c"}}))).recording.offsetMinutes, 540);
}

TEST(Mp4InfoTest, CutMoviesGiveWhatIsWhole) {
  const std::string header = MovieHeader(kMovieTime), brands = FileType("mp42", "isom");
  const std::string boxes = header + Box("mvex", Box("mehd", U32(0) + U32(7))) +
                            Box("udta", DayText("2001-01-01T01:01:01") + KeyedMetadata({{kZoneKey, "021c"}}));
  const std::string movie = brands + LargeBox("free", "x") + Box("moov", boxes);
  const std::string whole = movie + Box("mdat", "frames");
  for (std::size_t size = 0; size < whole.size(); ++size) {
    const bool isWhole = size >= movie.size();
    const std::string cut = whole.substr(0, size);
    BytesFile file(cut);
    MovieInfo info;
    EXPECT_EQ(vrx::mp4::ReadMovieInfo(file, info) == XpOk, isWhole) << size;
    EXPECT_EQ(Text(info.recording), isWhole ? "2001-01-01 01:01:01 540" : "none") << size;
    EXPECT_EQ(info.fileType.has_value(), size >= brands.size()) << size;
  }
  // The movie box ends where its content is cut.
  for (std::size_t size = 0; size < boxes.size(); ++size) {
    const std::string cut = Box("moov", boxes.substr(0, size));
    BytesFile file(cut);
    MovieInfo info;
    vrx::mp4::ReadMovieInfo(file, info);
    EXPECT_EQ(info.duration.has_value(), size >= header.size()) << size;
    EXPECT_EQ(info.recording.date.IsValid(), size >= header.size()) << size;
  }
  // Damage after the header keeps what the header says.
  const MovieInfo info = Read(Box("moov", header + Header(99, "udta")), XpErrMalformedRecord);
  EXPECT_EQ(Text(info.recording), "2024-05-01 08:01:12");
}

TEST(Mp4InfoTest, CountsOfTheFileAreNotBelieved) {
  const std::string keys = Box("keys", U32(0) + U32(0xFFFFFFFF) + Box("mdta", kCreationKey));
  const std::string list =
      Box("ilst", Box(U32(1), Data("2001-01-01T01:01")) + Box(U32(0xFFFFFFFF), Data("x")));
  EXPECT_EQ(DateOf(Box("meta", U32(0) + keys + list)), "2001-01-01 01:01:00");
  const MovieInfo info = Read(FileType("mp42", std::string(4001, 'b')) + Box("moov", ""));
  EXPECT_EQ(info.fileType->compatibleBrands.size(), 256u);
}

TEST(Mp4InfoTest, BrandsStandBeforeTheMovie) {
  const std::pair<std::string, XpResult> cases[] = {
      {Box("free", "") + FileType("mp42", ""), XpOk},
      {FileType("mp42", "") + Header(99, "moov"), XpOk},
      {Box("ftyp", "mp42123"), XpErrMalformedRecord},
      {Box("moov", "") + FileType("mp42", ""), XpErrInvalidFile},
      {Box("mdat", "") + FileType("mp42", ""), XpErrInvalidFile},
      {"", XpErrInvalidFile},
      {"\x89PNG\r\n\x1A\n........", XpErrMalformedRecord},
  };
  vrx::mp4::FileType type;
  for (const auto& [bytes, wanted] : cases) {
    BytesFile file(bytes);
    EXPECT_EQ(vrx::mp4::ReadFileType(file, type), wanted) << testing::PrintToString(bytes);
  }
  XpFile closed(u"/none.mp4");
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
