// What the MP4 probe answers about files: their class by their brands, and the date of the recording.
#include <gtest/gtest.h>

#include "content/mp4/MovieInfo.h"
#include "foundation/file/XpFile.h"
#include "mp4sift/Mp4SiftExports.h"
#include "tests/content/Mp4Boxes.h"
#include "tests/engine/RenderJob.h"
#include "tests/support/TempFolder.h"

namespace {

using namespace mp4boxes;

struct Answer {
  bool found = false;
  std::uint16_t fields[6] = {};
  std::int32_t offset = -7;
  friend bool operator==(const Answer&, const Answer&) = default;
};

Answer AskDate(const std::string& path) {
  Answer a;
  auto& f = a.fields;
  a.found = GetOriginalDateTime(XpNarrowString(path).ToWide().c_str(), &f[0], &f[1], &f[2], &f[3], &f[4],
                                &f[5], &a.offset);
  return a;
}

std::int32_t AskClass(const std::string& path) {
  return GetFormatType(XpNarrowString(path).ToWide().c_str());
}

TEST(Mp4SiftTest, BrandsMakeTheClass) {
  const TempFolder folder;
  const std::tuple<const char*, const char*, std::int32_t> cases[] = {
      {"MSNV", "", 1},
      {"3gp5", "isommp42", 2},
      {"3g2a", "", 2},
      {"avc1", "", 3},
      {"QHDV", "", 4},
      {"mp41", "mp42", 5},
      {"mp42", "MSNVavc1", 6},  // the major brand decides
      {"isom", "", 6},
      {"iso6", "", 6},
      // The compatible brands count by precedence, not in their order.
      {"isom", "isomiso2avc1mp41", 3},
      {"isom", "mp41mp42", 6},
      {"isom", "isommp41", 5},
      {"isom", "mp423gp6avc1", 2},
      {"abcd", "avc1mp42QHDV", 4},
      {"M4V ", "mp42isomMSNV", 1},
      {"dash", "iso5", 6},
      {"abcd", "efgh", 0},
      {"abcd", "mp4", 0},  // cut
      {"MP42", "", 0},
      {"3h__", "", 0},
      {"qt  ", "mp42", 0},
      {"heic", "mif1isom", 0},
  };
  for (const auto& [major, compatible, wanted] : cases) {
    const std::string path = folder.Write("a.mp4", FileType(major, compatible) + Box("moov", ""));
    EXPECT_EQ(AskClass(path), wanted) << major << ' ' << compatible;
  }
  EXPECT_EQ(AskClass(folder.Write("a.mp4", Box("moov", ""))), 0);
  EXPECT_EQ(AskClass(folder.Write("a.mp4", "")), 0);
}

TEST(Mp4SiftTest, DateIsLocalAndNothingIsWrittenWithoutOne) {
  const TempFolder folder;
  const auto movie = [&](const std::string& boxes) { return folder.Write("a.mp4", Box("moov", boxes)); };
  const std::string zone = KeyedMetadata({{"com.vrx.time-zone", "021c"}});
  const std::string header = MovieHeader(3'797'395'272);  // 1 May 2024, 8:01:12 UTC
  EXPECT_EQ(AskDate(movie(header + zone)), (Answer{true, {2024, 5, 1, 17, 1, 12}, 540}));
  const Answer damaged = AskDate(movie(header + Header(99, "udta")));
  EXPECT_EQ(damaged, (Answer{true, {2024, 5, 1, 8, 1, 12}, kMp4NoTimeZone}));
  const std::string none = movie(MovieHeader(0) + zone);
  for (const std::string& path : {none, folder.Path().string(), std::string("/none/a.mp4"), std::string()}) {
    EXPECT_EQ(AskDate(path), Answer{}) << path;
    EXPECT_EQ(AskClass(path), 0) << path;
  }
  // Paths are understood in every form of the file layer.
  std::string drive =
      "Z:" + folder.Write("b.mp4", FileType("MSNV", "") + MovieOfDay("2024-05-01T10:11:12-0330"));
  std::replace(drive.begin(), drive.end(), '/', '\\');
  EXPECT_EQ(AskClass(drive), 1);
  EXPECT_EQ(AskDate(drive), (Answer{true, {2024, 5, 1, 10, 11, 12}, -210}));

  Answer a;
  auto& f = a.fields;
  EXPECT_EQ(GetFormatType(nullptr), 0);
  EXPECT_FALSE(GetOriginalDateTime(nullptr, &f[0], &f[1], &f[2], &f[3], &f[4], &f[5], &a.offset));
  EXPECT_FALSE(GetOriginalDateTime(u"a", &f[0], &f[1], &f[2], &f[3], &f[4], &f[5], nullptr));
}

TEST(Mp4SiftTest, MovieOfTheEngineIsUnderstood) {
  const TempFolder folder;
  const std::string source = folder.Path() / "source.mp4";
  vrx::test_support::WritePatternClip(source, {.frames = 5});
  for (const char* name : {"out.mp4", "out.mov"}) {
    const std::string path = folder.Path() / name;
    vrx::engine::RenderJob job(path);
    job.AddClip(source, 0, 5);
    VRXMetaData item;
    item.kind = VRXMetaData::kTimeZone;
    const std::uint8_t bytes[] = {0xFE, 0x3E};  // 450 minutes west
    item.SetData(bytes, sizeof bytes);
    job.output.metaData = new VRXMetaDataSetting;
    job.output.metaData->Add(item);
    ASSERT_EQ(job.Run(), 0) << job.log;
    EXPECT_EQ(AskClass(path), std::string_view(name) == "out.mp4" ? 3 : 0);
    XpFile file;
    ASSERT_EQ(file.OpenPath(XpNarrowString(path).ToWide(), XpOpenRead, XpShareRead), XpOk);
    vrx::mp4::MovieInfo info;
    ASSERT_EQ(vrx::mp4::ReadMovieInfo(file, info), XpOk);
    EXPECT_EQ(info.recording.offsetMinutes, -450);
    ASSERT_TRUE(info.duration);
    EXPECT_EQ(info.duration->ticks * 5, info.duration->timescale) << "5 frames of 1/25 s";
  }
}

}  // namespace
