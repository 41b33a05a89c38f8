// Photographs stand on exactly their frames of the finished movie, turned as their document says, between
// bars of the right width.
#include <array>
#include <cstdlib>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "samples/clipmaker/FramePattern.h"
#include "samples/clipmaker/PatternClip.h"
#include "tests/render/VrxProcess.h"
#include "tests/src/BasebandText.h"
#include "tests/src/ProjectText.h"
#include "tests/support/MovieReader.h"
#include "tests/support/TempFolder.h"

namespace {

using namespace vrx::test_support;

constexpr int kWidth = 320;
constexpr int kHeight = 192;
constexpr int kFrameMs = 40;

std::string Little(std::uint32_t value, int bytes) {
  std::string out;
  for (int i = 0; i < bytes; ++i) out += static_cast<char>(value >> (8 * i));
  return out;
}

/// A BMP file, so that the pixels come through as they are.
std::string Photograph(int number, int width, int height) {
  RgbImage image(width, height);
  DrawPattern(static_cast<std::uint32_t>(number), image);
  const auto padding = static_cast<std::size_t>(width % 4);  // to rows of whole 4 bytes
  std::string pixels;
  for (int y = height - 1; y >= 0; --y) {
    for (int x = 0; x < width; ++x) {
      for (const std::size_t channel : {2u, 1u, 0u}) pixels += static_cast<char>(image.At(x, y)[channel]);
    }
    pixels.append(padding, '\0');
  }
  constexpr std::uint32_t kHeadBytes = 54;
  return "BM" + Little(kHeadBytes + static_cast<std::uint32_t>(pixels.size()), 4) + Little(0, 4) +
         Little(kHeadBytes, 4) + Little(40, 4) + Little(static_cast<std::uint32_t>(width), 4) +
         Little(static_cast<std::uint32_t>(height), 4) + Little(1, 2) + Little(24, 2) +
         std::string(24, '\0') + pixels;
}

struct Shown {
  int number;
  int width;  // of the photograph
  int height;
  int rotation;  // as the document says
  bool mirror;
  int frames;
};

/// Where the picture is seen, counted from the upper edge.
PixelRect PlaceOf(const Shown& shown) {
  const bool turned = shown.rotation % 2 != 0;
  const int width = turned ? shown.height : shown.width, height = turned ? shown.width : shown.height;
  const double scale = std::min(static_cast<double>(kWidth) / width, static_cast<double>(kHeight) / height);
  const int fitWidth = static_cast<int>(width * scale), fitHeight = static_cast<int>(height * scale);
  const int left = (kWidth - fitWidth) / 2, below = (kHeight - fitHeight) / 2;
  return {left, kHeight - below - fitHeight, left + fitWidth, kHeight - below};
}

/// Turns act on the picture lying upside down in memory, so that a quarter turn clockwise is seen as one to
/// the left; the mirror comes after the turn.
int SeenTurn(const Shown& shown) {
  constexpr std::array<int, 4> kPlain = {0, 270, 180, 90}, kMirrored = {0, 90, 180, 270};
  return (shown.mirror ? kMirrored : kPlain)[static_cast<std::size_t>(shown.rotation)];
}

class SlideshowTest : public testing::Test {
 protected:
  void Render(const std::string& videoTrack) {
    ProjectText project;
    project.videoTrack = videoTrack;
    project.video =
        "<key>Width</key><integer>" + std::to_string(kWidth) + "</integer><key>Height</key><integer>" +
        std::to_string(kHeight) +
        "</integer><key>TimeValue</key><integer>1</integer><key>TimeScale</key><integer>25</integer>"
        "<key>AverageBitrate</key><integer>3000000</integer>";
    m_result = RunVrx({{"render", folder.Write("p.vrx", project.Text()), "--progress", "none"}});
  }
  static std::string Stills(const std::string& document, int firstFrame, int frames) {
    return ClipText(document, std::to_string(firstFrame * kFrameMs),
                    std::to_string((firstFrame + frames) * kFrameMs),
                    "<key>SourceType</key><integer>4</integer>");
  }
  std::string Output() const { return (folder.Path() / "out.mp4").string(); }

  TempFolder folder;
  VrxResult m_result;
};

TEST_F(SlideshowTest, EveryPictureStandsUprightOnItsFramesBetweenItsBars) {
  constexpr std::array<std::pair<int, int>, 4> kSizes = {{{301, 201}, {199, 333}, {640, 384}, {97, 97}}};
  std::vector<Shown> all;
  std::string images;
  long frame = 0;
  for (int rotation = 0; rotation < 4; ++rotation) {
    for (const bool mirror : {false, true}) {
      const int number = 100 + static_cast<int>(all.size());
      const auto& [width, height] = kSizes[all.size() % kSizes.size()];
      const int frames = 1 + static_cast<int>(all.size()) * 3 % 7;
      all.push_back({number, width, height, rotation, mirror, frames});
      const std::string name = std::to_string(number) + ".bmp";
      folder.Write(name, Photograph(number, width, height));
      images += ImageText(number, name, frame, frame + frames - 1, rotation, mirror ? 1 : 0);
      frame += frames;
    }
  }
  folder.Write("photos.xml", BasebandText(images));
  Render(Stills("photos.xml", 0, static_cast<int>(frame)));
  ASSERT_EQ(m_result.status, 0) << m_result.errors;

  MovieReader movie(Output());
  MovieFrame shown;
  for (const Shown& expected : all) {
    for (int i = 0; i < expected.frames; ++i) {
      SCOPED_TRACE(testing::Message() << "picture " << expected.number << " frame " << i);
      ASSERT_TRUE(movie.NextFrame(shown));
      const PixelRect place = PlaceOf(expected);
      const PatternReading reading = ReadPattern(shown.image, place);
      EXPECT_TRUE(reading.valid) << reading.problem;
      EXPECT_EQ(reading.number, expected.number);
      EXPECT_EQ(reading.rotation, SeenTurn(expected));
      EXPECT_EQ(reading.mirrored, expected.mirror);
      const PixelRect found = shown.image.FindPicture();
      constexpr int kBlur = 2;  // of the encoder at an edge, pixels
      EXPECT_NEAR(found.left, place.left, kBlur);
      EXPECT_NEAR(found.top, place.top, kBlur);
      EXPECT_NEAR(found.right, place.right, kBlur);
      EXPECT_NEAR(found.bottom, place.bottom, kBlur);
    }
  }
  EXPECT_FALSE(movie.NextFrame(shown));
}

TEST_F(SlideshowTest, ClipsOfStillsAndOfFilmFollowEachOther) {
  WritePatternClip((folder.Path() / "film.mp4").string(), {.frames = 10, .firstNumber = 500});
  for (const int number : {1, 2, 3, 4})
    folder.Write(std::to_string(number) + ".bmp", Photograph(number, 160, 96));
  folder.Write("broken.bmp", "no picture");
  folder.Write("a.xml", BasebandText(ImageText(1, "1.bmp", 0, 4) + ImageText(2, "2.bmp", 5, 99)));
  folder.Write("b.xml", BasebandText(ImageText(1, "3.bmp", 0, 9) + ImageText(2, "broken.bmp", 10, 11) +
                                     ImageText(3, "4.bmp", 12, 15)));
  // The first clip ends early in its pictures, the third begins late in them, the fourth has the first's
  // again.
  Render(Stills("a.xml", 0, 7) + ClipText("film.mp4", "0", "120") + Stills("b.xml", 8, 6) +
         Stills("a.xml", 4, 2));
  ASSERT_EQ(m_result.status, 0) << m_result.errors;
  MovieReader movie(Output());
  EXPECT_THAT(movie.RemainingNumbers(),
              testing::ElementsAre(1, 1, 1, 1, 1, 2, 2, 500, 501, 502, 3, 3, -1, -1, 4, 4, 1, 2));
  EXPECT_THAT(m_result.errors, testing::HasSubstr("no still picture from frame 10 on"));
}

TEST_F(SlideshowTest, ADocumentThatCannotBeReadLeavesItsClipBlackAndSaysSo) {
  folder.Write("a.xml", "<VRXBaseband>");
  WritePatternClip((folder.Path() / "film.mp4").string(), {.frames = 10, .firstNumber = 7});
  Render(Stills("a.xml", 0, 2) + Stills("none.xml", 0, 1) + ClipText("film.mp4", "0", "80"));
  ASSERT_EQ(m_result.status, 0) << m_result.errors;
  MovieReader movie(Output());
  EXPECT_THAT(movie.RemainingNumbers(), testing::ElementsAre(-1, -1, -1, 7, 8));
  const VrxResult check = RunVrx({{"check", (folder.Path() / "p.vrx").string()}});
  EXPECT_THAT(check.output + check.errors,
              testing::AllOf(testing::HasSubstr("a.xml"), testing::HasSubstr("none.xml"),
                             testing::HasSubstr("the clip is black")));
}

}  // namespace
