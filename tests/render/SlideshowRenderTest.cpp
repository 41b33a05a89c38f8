// Photographs stand on exactly their frames of the finished movie, turned as their document says, between
// bars of the right width.
#include <array>
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
using testing::HasSubstr;

constexpr int kWidth = 320;
constexpr int kHeight = 192;
constexpr int kFrameMs = 40;

class SlideshowTest : public RenderFixture {
 protected:
  SlideshowTest() : RenderFixture(kWidth, kHeight) {}

  void WritePhotograph(int number, int width, int height) const {
    RgbImage pattern(width, height);
    DrawPattern(static_cast<std::uint32_t>(number), pattern);
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = static_cast<png_uint_32>(width);
    image.height = static_cast<png_uint_32>(height);
    image.format = PNG_FORMAT_RGB;
    const std::string path = Path(std::to_string(number) + ".png");
    ASSERT_NE(png_image_write_to_file(&image, path.c_str(), 0, pattern.Row(0), 3 * width, nullptr), 0);
  }
  static std::string Stills(const std::string& document, int firstFrame, int frames) {
    return ClipText(document, std::to_string(firstFrame * kFrameMs),
                    std::to_string((firstFrame + frames) * kFrameMs),
                    "<key>SourceType</key><integer>4</integer>");
  }
};

TEST_F(SlideshowTest, EveryPictureStandsTurnedAsItsDocumentSaysOnItsFramesBetweenBars) {
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
    // Turns act on the picture lying upside down in memory, so that a quarter turn clockwise is seen as one
    // to the left; the mirror comes after the turn.
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
  EXPECT_THAT(MovieReader(Render()).RemainingNumbers(),
              testing::ElementsAre(1, 1, 1, 1, 1, 2, 2, 500, 501, 502, 3, 3, -1, -1, 4, 4, 1, 2, -1, -1, -1));
  EXPECT_THAT(m_result.errors, HasSubstr("no still picture from frame 10 on"));
  const VrxResult check = RunVrx({{"check", Path("p.vrx")}});
  EXPECT_THAT(check.output + check.errors,
              testing::AllOf(HasSubstr("broken.xml"), HasSubstr("none.xml"), HasSubstr("the clip is black")));
}

}  // namespace
