// What a plan of pieces is known by: any change of what decides the movie makes another plan of it.
#include <chrono>
#include <functional>

#include <gtest/gtest.h>

#include "foundation/platform/Paths.h"
#include "host/pieces/PieceName.h"
#include "host/pieces/PiecePlan.h"
#include "host/pieces/PlanId.h"
#include "src/project/ProjectKeys.h"
#include "tests/support/TempFolder.h"

namespace {

using namespace vrx;
using namespace vrx::host;
namespace fs = std::filesystem;

class PlanIdTest : public testing::Test {
 protected:
  PlanIdTest() {
    for (const char* name : {"p.vrx", "painter.vrx", "pictures.xml", "a.jpg", "a.mp4", "a.wav"})
      folder.Write(name, "x");
    inputs = {{.path = Path("p.vrx")},
              {.path = Path("painter.vrx"), .key = project::kPainterEffect.name},
              {Path("pictures.xml"), u"VideoTrack", 1, project::kSourceFile.name},
              {Path("a.wav"), u"AudioTrack", 1, project::kSourceFile.name},
              {Path("a.jpg"), u"VideoTrack", 1, u"ImagePath", 3},
              {Path("a.mp4"), u"VideoTrack", 2, project::kSourceFile.name}};
    folder.Write("b.mp4", "x");
    fs::last_write_time(folder.Path() / "b.mp4", fs::last_write_time(folder.Path() / "a.mp4"));
  }
  XpString Path(const std::string& name) const {
    return platform::PathFromNative((folder.Path() / name).string());
  }
  void Age(const std::string& name) const {
    fs::last_write_time(folder.Path() / name,
                        fs::last_write_time(folder.Path() / name) - std::chrono::hours(1));
  }
  std::string Id() const { return PlanId({inputs, options, count, version}, ranges); }

  TempFolder folder;
  std::vector<project::InputFile> inputs;
  std::vector<std::string> options{"--crf", "20"};
  std::uint32_t count = 2;
  std::string version = "1.0";
  std::vector<FrameRange> ranges{{0, 10}, {10, 20}};
};

TEST_F(PlanIdTest, ChangesWithEachPartOfTheMovie) {
  const std::vector<std::pair<const char*, std::function<void()>>> changes{
      {"project", [&] { folder.Write("p.vrx", "y"); }},
      {"painter document", [&] { folder.Write("painter.vrx", "y"); }},
      {"document of pictures", [&] { folder.Write("pictures.xml", "y"); }},
      {"size of a picture", [&] { folder.Write("a.jpg", "xx"); }},
      {"time of a picture", [&] { Age("a.jpg"); }},
      {"time of a source", [&] { Age("a.mp4"); }},
      {"time of a sound beside a document of pictures", [&] { Age("a.wav"); }},
      {"time as before",
       [&] { fs::last_write_time(folder.Path() / "a.mp4", fs::last_write_time(folder.Path() / "b.mp4")); }},
      {"path", [&] { inputs.back().path = Path("b.mp4"); }},
      {"time of the other source", [&] { Age("b.mp4"); }},
      {"missing source", [&] { fs::remove(folder.Path() / "b.mp4"); }},
      {"missing project", [&] { fs::remove(folder.Path() / "p.vrx"); }},
      {"another option", [&] { options[1] = "21"; }},
      {"options split elsewhere",
       [&] {
         options = {"--cr", "f21"};
       }},
      {"count", [&] { count = 3; }},
      {"version", [&] { version = "1.1"; }},
      {"cut", [&] { ranges[0].end = ranges[1].first = 11; }}};
  std::string before = Id();
  EXPECT_TRUE(ParsePieceName("1/2:" + before));
  for (const auto& [name, change] : changes) {
    change();
    EXPECT_NE(Id(), before) << name;
    before = Id();
  }
}

TEST_F(PlanIdTest, DocumentsThatAreWrittenAgainAreTheSameAndCutsNeedNotBeKnown) {
  const std::string plan = Id();
  for (const char* name : {"p.vrx", "painter.vrx", "pictures.xml"}) Age(name);
  EXPECT_EQ(Id(), plan);
  ranges.clear();
  const PlanState state{inputs, options, count, version};
  EXPECT_TRUE(IsPlanOf(plan, state));
  EXPECT_FALSE(IsPlanOf(plan.substr(0, 32), state));
  Age("a.mp4");
  EXPECT_FALSE(IsPlanOf(plan, state));
}

TEST(PieceOptionsTest, PiecesAreMadeWithAllThatIsAskedFor) {
  EncodingArguments encoding;
  EXPECT_EQ(PieceOptions(encoding, false), std::vector<std::string>());
  encoding.size = "1280x720", encoding.rate = "30", encoding.bitrate = "5M", encoding.preset = "fast";
  encoding.quality = 20.1, encoding.codec = VRXVideoCodecHevc, encoding.hardware = true;
  encoding.smart = VRXSmartRequire;
  EXPECT_EQ(PieceOptions(encoding, true),
            (std::vector<std::string>{"--size", "1280x720", "--rate", "30", "--bitrate", "5M", "--crf",
                                      "20.1", "--preset", "fast", "--codec", "h265", "--hardware", "--smart",
                                      "require", "--allow-missing"}));
}

TEST(PieceNameTest, NamesAreReadAsTheyAreWritten) {
  const auto name = ParsePieceName("3/8:a0Z");
  ASSERT_TRUE(name);
  EXPECT_EQ(name->piece, 3u);
  EXPECT_EQ(name->count, 8u);
  EXPECT_EQ(PieceNameText(*name), "3/8:a0Z");
  EXPECT_TRUE(ParsePieceName("0/1:" + std::string(64, 'a')));
  for (const std::string wrong : {"", "3/8", "3/8:", "9/8:a", "1/0:a", "0/0:a", "-1/8:a", "3/1001:a",
                                  "3/8:a-b", "3:8/a", "3/8a:b", " 3/8:a", "99999999999/8:a", "3/8:a b"})
    EXPECT_FALSE(ParsePieceName(wrong)) << wrong;
  EXPECT_FALSE(ParsePieceName("0/1:" + std::string(65, 'a')));
}

}  // namespace
