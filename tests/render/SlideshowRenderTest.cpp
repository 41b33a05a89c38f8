// Photographs show on exactly their frames of the finished movie, turned as their document says, between
// bars of the right width.
#include <array>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <png.h>

#include "samples/clipmaker/FramePattern.h"
#include "tests/render/RenderFixture.h"
#include "tests/src/BasebandText.h"
#include "tests/support/MovieReader.h"

namespace {

using namespace vrx::test_support;
using testing::ElementsAre;
using testing::HasSubstr;

constexpr int kWidth = 320;
constexpr int kHeight = 192;
constexpr int kFrameMs = 40;

class SlideshowTest : public RenderFixture {
 protected:
  SlideshowTest() : RenderFixture(kWidth, kHeight) {}

  void WritePicture(const std::string& name, const RgbImage& picture) const {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = static_cast<png_uint_32>(picture.Width());
    image.height = static_cast<png_uint_32>(picture.Height());
    image.format = PNG_FORMAT_RGB;
    ASSERT_NE(
        png_image_write_to_file(&image, Path(name).c_str(), 0, picture.Row(0), 3 * picture.Width(), nullptr),
        0);
  }
  void WritePhotograph(int number, int width, int height) const {
    RgbImage pattern(width, height);
    DrawPattern(static_cast<std::uint32_t>(number), pattern);
    WritePicture(std::to_string(number) + ".png", pattern);
  }
  static std::string Stills(const std::string& document, int firstFrame, int frames) {
    return ClipText(document, std::to_string(firstFrame * kFrameMs),
                    std::to_string((firstFrame + frames) * kFrameMs),
                    "<key>SourceType</key><integer>4</integer>");
  }
};

TEST_F(SlideshowTest, EveryPictureShowsOnItsFramesTurnedAndBetweenBars) {
  constexpr std::array<std::pair<int, int>, 4> kSizes = {{{301, 201}, {199, 333}, {640, 384}, {97, 97}}};
  std::string images;
  std::vector<PatternReading> wanted;  // one a frame
  for (int i = 0; i < 8; ++i) {
    const auto& [width, height] = kSizes[static_cast<std::size_t>(i) % kSizes.size()];
    const int number = 100 + i, rotation = i / 2, frames = 1 + i * 3 % 7;
    const bool mirror = i % 2 != 0;
    WritePhotograph(number, width, height);
    const auto first = static_cast<long>(wanted.size());
    images += ImageText(number, std::to_string(number) + ".png", first, first + frames - 1, rotation, mirror);
    // The picture is turned while it is upside down, so that a quarter turn clockwise is seen as one to the
    // left; it is mirrored after the turn.
    const int seen = (mirror ? rotation : 4 - rotation) % 4 * 90;
    wanted.insert(wanted.end(), static_cast<std::size_t>(frames),
                  {.number = number, .rotation = seen, .mirrored = mirror});
  }
  folder.Write("photos.xml", BasebandText(images));
  project.videoTrack = Stills("photos.xml", 0, static_cast<int>(wanted.size()));
  MovieReader movie(Render());
  MovieFrame shown;
  for (std::size_t frame = 0; frame < wanted.size(); ++frame) {
    SCOPED_TRACE(testing::Message() << "frame " << frame);
    ASSERT_TRUE(movie.NextFrame(shown));
    const PatternReading reading = ReadPattern(shown.image);
    EXPECT_EQ(reading.number, wanted[frame].number) << reading.problem;
    EXPECT_EQ(reading.rotation, wanted[frame].rotation);
    EXPECT_EQ(reading.mirrored, wanted[frame].mirrored);
  }
  EXPECT_FALSE(movie.NextFrame(shown));
}

TEST_F(SlideshowTest, ClipsOfStillsAndOfFilmFollowEachOther) {
  WriteClip("film.mp4", {.frames = 10, .firstNumber = 500});
  for (const int number : {1, 2, 3, 4}) WritePhotograph(number, 160, 96);
  folder.Write("broken.png", "no picture");
  folder.Write("a.xml", BasebandText(ImageText(1, "1.png", 0, 4) + ImageText(2, "2.png", 5, 99)));
  folder.Write("b.xml", BasebandText(ImageText(1, "3.png", 0, 9) + ImageText(2, "broken.png", 10, 11) +
                                     ImageText(3, "4.png", 12, 15)));
  folder.Write("broken.xml", "<VRXBaseband>");
  // The first clip ends early in its pictures, the third begins late in them, the fourth has the first's
  // again. The last two cannot be read.
  project.videoTrack = Stills("a.xml", 0, 7) + ClipText("film.mp4", "0", "120") + Stills("b.xml", 8, 6) +
                       Stills("a.xml", 4, 2) + Stills("broken.xml", 0, 2) + Stills("none.xml", 0, 1);
  m_result = RunVrx({{"render", WriteProject(), "--allow-missing"}});
  EXPECT_EQ(m_result.status, 0) << m_result.errors;
  EXPECT_THAT(MovieReader(Path("out.mp4")).RemainingNumbers(),
              ElementsAre(1, 1, 1, 1, 1, 2, 2, 500, 501, 502, 3, 3, -1, -1, 4, 4, 1, 2, -1, -1, -1));
  EXPECT_THAT(m_result.errors, HasSubstr("no still picture from frame 10 on"));
  EXPECT_THAT(m_result.errors, HasSubstr("warning: " + Path("b.xml") + ":"));
  const VrxResult check = RunVrx({{"check", Path("p.vrx")}});
  EXPECT_THAT(check.output + check.errors,
              testing::AllOf(HasSubstr("broken.xml"), HasSubstr("none.xml"), HasSubstr("the clip is black")));
}

TEST_F(SlideshowTest, DamagedPictureShowsItsUpperPartAndOneWithoutAnyPartFailsTheRender) {
  WritePhotograph(1, 320, 192);
  // Of this size it is read in many pieces.
  RgbImage noise(640, 384);
  std::minstd_rand random;
  for (int y = 0; y < noise.Height(); ++y) {
    for (int x = 0; x < noise.Width(); ++x) noise.Set(x, y, {static_cast<std::uint8_t>(random()), 200, 200});
  }
  WritePicture("whole.png", noise);
  const std::string bytes = folder.Read("whole.png");
  folder.Write("part.png", bytes.substr(0, bytes.size() * 7 / 10));
  folder.Write("head.png", bytes.substr(0, 60));
  folder.Write("a.xml", BasebandText(ImageText(1, "1.png", 0, 4) + ImageText(2, "part.png", 5, 9)));
  project.videoTrack = Stills("a.xml", 0, 10);
  const std::string partial = "warning: " + Path("a.xml") + ":3: ";
  const std::string cause = "ImagePath " + Path("part.png") + " is shown only in part: ";
  VrxResult result = RunVrx({{"render", WriteProject()}});
  EXPECT_EQ(result.status, 0) << result.errors;
  EXPECT_THAT(result.errors, testing::AllOf(HasSubstr(partial), HasSubstr(cause)));
  result = RunVrx({{"check", Path("p.vrx")}});
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.output, testing::AllOf(HasSubstr(partial), HasSubstr(cause)));
  MovieReader movie(Path("out.mp4"));
  MovieFrame shown;
  for (int frame = 0; frame < 6; ++frame) ASSERT_TRUE(movie.NextFrame(shown));
  EXPECT_GT(shown.image.At(160, 20)[1], 150);
  EXPECT_LT(shown.image.At(160, 180)[1], 50);

  folder.Write("a.xml", BasebandText(ImageText(1, "1.png", 0, 4) + ImageText(2, "head.png", 5, 9)));
  const std::string missing = Path("a.xml") + ":3: ";
  const std::string left = "ImagePath " + Path("head.png") + " is left out: ";
  for (const char* option : {"--progress=none", "--progress=json", "--allow-missing"}) {
    std::filesystem::remove(Path("out.mp4"));
    result = RunVrx({{"render", Path("p.vrx"), option}});
    const bool isAllowed = std::string(option) == "--allow-missing";
    EXPECT_EQ(result.status, isAllowed ? 0 : 1) << option;
    EXPECT_THAT(result.errors,
                testing::AllOf(HasSubstr((isAllowed ? "warning: " : "error: ") + missing), HasSubstr(left)));
    EXPECT_THAT(MovieReader(Path("out.mp4")).RemainingNumbers(),
                ElementsAre(1, 1, 1, 1, 1, -1, -1, -1, -1, -1));
    EXPECT_EQ(result.errors.find("pictures missing in the movie: 1 (--allow-missing") == std::string::npos,
              isAllowed);
    if (std::string(option) == "--progress=json") {
      EXPECT_THAT(result.output,
                  HasSubstr(R"("problems":[{"severity":"error","file":")" + Path("a.xml") + R"(","line":3)"));
    }
  }
  EXPECT_EQ(RunVrx({{"check", Path("p.vrx")}}).status, 1);
  EXPECT_EQ(RunVrx({{"check", Path("p.vrx"), "--allow-missing"}}).status, 0);
}

}  // namespace
