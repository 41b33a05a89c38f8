// The painter of positions: what its texts say at a moment and where they stand, which part of the movie a
// frame shows, and that what it keeps between frames never shows in a pixel.
#include <cstdlib>
#include <cstring>
#include <optional>
#include <random>

#include <gmock/gmock.h>

#include "drawing/BoxTextRenderer.h"
#include "gps/painter/KVSGPSOverlayPainterPlugIn.h"
#include "overlay/resources/LoadResources.h"
#include "tests/content/MoffBytes.h"
#include "tests/drawing/Sheet.h"
#include "tests/foundation/FolderTest.h"
#include "tests/gps/GpsLogText.h"
#include "tests/overlay/ReferencePicture.h"

namespace {

using namespace vrx::gps;
using testing::AllOf;
using testing::Contains;
using testing::Not;
using vrx::drawing::PixelAt;

PainterPicture Solid(std::uint8_t red, std::uint8_t green, std::uint8_t alpha = 255) {
  auto* made = new XpPixmap32;
  PainterPicture picture(made);
  EXPECT_EQ(made->Allocate(16, 16), XpOk);
  const unsigned char pixel[] = {0, green, red, alpha};
  for (std::uint32_t i = 0; i < made->size; i += 4) std::memcpy(made->data + i, pixel, 4);
  return picture;
}

std::shared_ptr<TemplateResource> Pictures(std::uint8_t shade, std::uint8_t frames = 7) {
  auto set = std::make_shared<TemplateResource>();
  set->gpsIcon = Solid(1, shade);
  set->gpsNoPositionIcon = Solid(2, shade);
  set->meterBase = Solid(3, shade, 99);
  set->meterBaseVertical = Solid(4, shade, 99);
  set->positionMarker = Solid(5, shade);
  for (std::uint8_t i = 0; i < frames; ++i) {
    set->meterFrames.push_back(Solid(static_cast<std::uint8_t>(100 + i), shade, 200));
  }
  return set;
}

/// Boxes, with a list of what was written on the frame.
class TextRecorder : public vrx::drawing::TextRenderer {
 public:
  vrx::drawing::Size Measure(std::u16string_view text, const vrx::drawing::Font& font, std::int32_t width,
                             std::uint32_t format) override {
    return m_boxes.Measure(text, font, width, format);
  }
  void Draw(const vrx::drawing::Canvas& canvas, std::u16string_view text, const vrx::drawing::Font& font,
            vrx::drawing::ColorRef color, const vrx::drawing::Rect& rect, std::uint32_t format) override {
    if (canvas.GetClipBox().right == kFrameWidth) texts.push_back(XpString(text).ToNarrow().c_str());
    m_boxes.Draw(canvas, text, font, color, rect, format);
  }
  std::size_t CountLines(std::u16string_view text, const vrx::drawing::Font& font, std::int32_t width,
                         std::uint32_t format) override {
    return m_boxes.CountLines(text, font, width, format);
  }
  vrx::drawing::Rect DrawScaled(const vrx::drawing::Canvas& canvas, const vrx::drawing::ScaledText& text,
                                const vrx::drawing::TextInk& ink, const vrx::drawing::Rect& clip) override {
    return m_boxes.DrawScaled(canvas, text, ink, clip);
  }
  static constexpr std::int32_t kFrameWidth = 480, kFrameHeight = 270;
  std::vector<std::string> texts;

 private:
  vrx::drawing::BoxTextRenderer m_boxes;
};

struct Frame {
  std::vector<std::uint32_t> pixels;
  std::vector<std::string> texts;
  friend bool operator==(const Frame&, const Frame&) = default;

  /// Its columns, with the speed, and those of the track above the texts.
  std::vector<std::uint32_t> Graph() const { return Part(0, 108, TextRecorder::kFrameHeight); }
  std::vector<std::uint32_t> Track() const { return Part(361, 86, 225); }
  std::vector<std::uint32_t> Part(std::ptrdiff_t first, std::ptrdiff_t count, std::ptrdiff_t rows) const {
    std::vector<std::uint32_t> part;
    for (std::ptrdiff_t y = 0; y < rows; ++y) {
      const auto row = pixels.begin() + y * TextRecorder::kFrameWidth + first;
      part.insert(part.end(), row, row + count);
    }
    return part;
  }
  bool Has(std::uint32_t color) const { return std::ranges::count(pixels, color) > 0; }
};

/// A round trip whose speed changes, with a fix each second but in a gap of eight.
std::string Route(int first, int last) {
  std::string log;
  for (int s = first; s <= last; ++s) {
    if (s % 30 < 8 && s > 8) continue;
    log += Fix({.second = s,
                .latitude = 35.5 + 0.0015 * std::sin(s / 9.0),
                .longitude = 139.5 + 0.0015 * std::cos(s / 7.0),
                .knots = 20 + 15 * std::sin(s / 5.0)});
  }
  return log;
}

class GpsPainterTest : public FolderTest {
 protected:
  static constexpr std::int32_t kWidth = TextRecorder::kFrameWidth, kHeight = TextRecorder::kFrameHeight;

  GpsPainterTest() {
    setenv("LC_ALL", "C", 1);  // of the date
    info.videoLayoutType = 1;
    info.gpsUnitFromUser = 0;
    info.videoWidth = look.width = kWidth;
    info.videoHeight = look.height = kHeight;
    const char16_t* texts[] = {u"mph", u"mi", u"km/h", u"km", u"kn", u"nm", u"Speed"};
    for (std::int32_t i = 0; i < 7; ++i) info.stringTable[i] = texts[i];
    look.scenarioType = 1;
    look.resources = Pictures(10);
    look.logData = {Clip(3, PutLog("a", Route(4, 38)), 0, 40.4),
                    Clip(5, PutLog("b", Route(50, 100)), 50, 30.2)};
  }

  XpString PutLog(const std::string& name, const std::string& log) {
    Put(name + ".moff", vrx::test_support::MoffBytes({.name = name}, {{7, {{"BINA", log}}}}));
    return Put(name, "file");
  }
  static LogDataEntry Clip(std::int32_t videoId, const XpString& log, int second, double duration) {
    LogDataEntry clip{.videoId = videoId, .endTime = duration, .duration = duration};
    clip.gpsLogFilePath = log;
    clip.originalDateTime = After(second);
    return clip;
  }

  void Configure() { ASSERT_TRUE(painter->SetPainterInfo(&info, &look)); }
  /// Over pixels that all are `ground`.
  Frame Draw(std::int32_t videoId, std::int64_t ms, unsigned char ground = 0, bool inMovie = false) {
    PixmapHolder holder(new XpPixmap32);
    EXPECT_EQ(holder->Allocate(kWidth, kHeight), XpOk);
    std::memset(holder->data, ground, holder->size);
    recorder.texts.clear();
    EXPECT_TRUE(inMovie ? painter->Draw(ms, 0, 0, holder) : painter->DrawForVideo(videoId, ms, 0, 0, holder));
    Frame frame{std::vector<std::uint32_t>(holder->size / 4), recorder.texts};
    std::memcpy(frame.pixels.data(), holder->data, holder->size);
    return frame;
  }
  Frame DrawAgain(std::int32_t videoId, std::int64_t ms, unsigned char ground = 0) {
    painter.emplace(recorder);
    Configure();
    return Draw(videoId, ms, ground);
  }
  static bool IsClear(const Frame& frame) {
    return frame.texts.empty() && std::ranges::count(frame.pixels, 0u) == std::ssize(frame.pixels);
  }

  TextRecorder recorder;
  std::optional<KVSGPSOverlayPainterPlugIn> painter{recorder};
  PainterInfo info;
  TemplateInfo& look = info.templateInfo;
};

constexpr std::uint32_t kPositionMarker = 0xFF050A00;

TEST_F(GpsPainterTest, NothingIsDrawnWithoutLookLayoutOrClip) {
  PixmapHolder none;
  EXPECT_TRUE(IsClear(Draw(3, 5000)));
  EXPECT_FALSE(painter->SetPainterInfo(&info, &info.captionInfo));
  EXPECT_FALSE(painter->SetPainterInfo(nullptr, &look));
  EXPECT_FALSE(painter->IsDrawable());
  Configure();
  EXPECT_TRUE(painter->IsDrawable());
  EXPECT_TRUE(painter->HasTimeline());
  EXPECT_FALSE(painter->DrawForVideo(3, 0, 0, 0, none));
  EXPECT_FALSE(painter->Draw(0, 0, 0, none));
  EXPECT_FALSE(IsClear(Draw(3, 5000)));
  EXPECT_FALSE(painter->GetDrawnRows().IsEmpty());
  EXPECT_TRUE(IsClear(Draw(4, 5000)));
  EXPECT_TRUE(painter->GetDrawnRows().IsEmpty());
  EXPECT_TRUE(IsClear(Draw(3, -1)));
  for (const std::int32_t layout : {0, 16, -1}) {
    painter->SetVideoLayout(layout, 0);
    EXPECT_TRUE(IsClear(Draw(3, 5000))) << layout;
  }
  painter->SetVideoLayout(8, 0);
  EXPECT_FALSE(IsClear(Draw(3, 5000)));
  painter->SetResources(5, Pictures(10));
  for (const std::int32_t scenario : {5, 6, 0}) {
    painter->SetScenario(scenario);
    EXPECT_TRUE(IsClear(Draw(3, 5000))) << scenario;
    EXPECT_TRUE(IsClear(Draw(0, 5000, 0, true))) << scenario;
    EXPECT_FALSE(painter->IsDrawable()) << scenario;
  }
  look.logData.clear();
  Configure();
  EXPECT_FALSE(painter->HasTimeline());
  EXPECT_TRUE(IsClear(Draw(0, 5000, 0, true)));
}

TEST_F(GpsPainterTest, LookThatFoundNoPicturesIsMadeAgainWhenItIsAskedForAgain) {
  const auto shades = [&] {
    const Frame frame = Draw(3, 5000);
    return std::pair{frame.Has(kPositionMarker), frame.Has(kPositionMarker + 0x100)};
  };
  look.resources = nullptr;
  Configure();
  EXPECT_EQ(shades(), std::pair(false, false));
  painter->SetResources(1, Pictures(10));
  EXPECT_EQ(shades(), std::pair(false, false));
  painter->SetScenario(1);
  EXPECT_EQ(shades(), std::pair(true, false));
  painter->SetResources(1, Pictures(11));
  painter->SetScenario(1);
  EXPECT_EQ(shades(), std::pair(true, false)) << "the look has not changed";
  look.resources = Pictures(11);
  info.saveMovieMode = true;
  Configure();
  EXPECT_EQ(shades(), std::pair(false, true));
}

TEST_F(GpsPainterTest, DoubledPicturesServeWhereTheOthersAreTooSmall) {
  info.videoLayoutType = 7;  // whose symbol nothing covers
  look.resources->doubled[look.resources->gpsIcon.Get()] = Solid(60, 10);
  Configure();
  const Frame frame = Draw(3, 5000);
  EXPECT_TRUE(frame.Has(0xFF3C0A00));
  EXPECT_FALSE(frame.Has(0xFF010A00));
}

TEST_F(GpsPainterTest, TextsAreThoseOfTheMomentAndItsClip) {
  Configure();
  EXPECT_THAT(Draw(3, 5000).texts,
              AllOf(Contains("Speed"), Contains("--").Times(0), Contains("km/h"), Contains("00:00:05"),
                    Contains("00:00:40"), Contains("10:00:05 AM")));
  EXPECT_THAT(Draw(3, 2000).texts, AllOf(Contains("--"), Contains("0.0 km")));
  // The list ends with the clip, the clock runs on.
  Draw(3, 98'000);
  EXPECT_THAT(Draw(3, 99'000).texts, AllOf(Contains("00:01:39"), Contains("10:00:40 AM")));
  EXPECT_THAT(Draw(5, 1000).texts, AllOf(Contains("00:00:30"), Contains("10:00:51 AM")));
  // On the whole movie a clip lasts whole seconds: the second one is current from 40 to 70.
  for (const auto& [second, total] : {std::pair{39, "00:00:40"}, {40, "00:00:30"}, {69, "00:00:30"}}) {
    EXPECT_THAT(Draw(0, second * 1000, 0, true).texts, Contains(total)) << second;
  }
  const Frame last = Draw(0, 72'000, 0, true);
  look.linkGpsLog = true;
  Configure();
  EXPECT_THAT(Draw(5, 1000).texts, AllOf(Contains("00:01:10"), Not(Contains("00:00:30"))));
  EXPECT_THAT(Draw(0, 69'000, 0, true).texts, Contains("00:01:10"));
  EXPECT_EQ(Draw(0, 72'000, 0, true).texts, last.texts);
  look.linkGpsLog = false;
  look.drawTrimmedOutArea = false;
  look.logData[0].startTime = 10;
  look.logData[0].endTime = 22.9;
  Configure();
  EXPECT_THAT(Draw(3, 1000).texts, AllOf(Contains("00:00:12"), Contains("10:00:11 AM")));
}

TEST_F(GpsPainterTest, ChangesOfAClipWaitForThePreparationAndTheUnitOfTheSpeedDoesNot) {
  Configure();
  const Frame before = Draw(3, 5000);
  painter->SetClipDateTime(After(20), 9, 3);
  painter->SetClipRange(1, 5, 5);
  painter->SetClipRange(1, 5, 77);
  EXPECT_EQ(Draw(3, 5000), before);
  painter->Prepare();
  EXPECT_THAT(Draw(3, 5000).texts, AllOf(Contains("00:00:09"), Contains("10:00:25 AM")));
  look.drawTrimmedOutArea = false;
  painter->Configure(&info, &look);
  painter->SetClipRange(1, 5, 5);
  painter->Prepare();
  EXPECT_THAT(Draw(5, 1000).texts, Contains("00:00:04"));
  painter->SetMode(2);
  EXPECT_EQ(painter->GetMode(), 2u);
  const std::string knots = Draw(5, 1000).texts[1];
  painter->SetMode(0);
  EXPECT_NEAR(std::stod(Draw(5, 1000).texts[1]), std::stod(knots) * 1.852, 0.15);
  info.stringTable.clear();
  Configure();
  EXPECT_THAT(Draw(5, 1000).texts, AllOf(Contains("km/h"), Not(Contains("Speed"))));
}

TEST_F(GpsPainterTest, LogIsReadOnceUntilItIsForgotten) {
  Configure();
  const Frame before = Draw(5, 5000);
  for (const char* file : {"a.moff", "b.moff"}) std::filesystem::remove(Native(file));
  look.logData.push_back(Clip(6, look.logData[1].gpsLogFilePath, 60, 10));
  Configure();
  EXPECT_THAT(Draw(6, 9000).texts, Not(Contains("--")));
  look.logData.pop_back();
  Configure();
  EXPECT_EQ(Draw(5, 5000), before);
  painter->ClearLogs();
  painter->Prepare();
  const Frame without = Draw(5, 5000);
  EXPECT_THAT(without.texts, AllOf(Contains("--"), Contains("0.0 km")));
  EXPECT_FALSE(without.Has(kPositionMarker)) << "no track without a position";
}

TEST_F(GpsPainterTest, HeaderMarkSeparatesTextsAndGraphButNotTheTrack) {
  look.scenarioType = 4;
  const auto draw = [&](bool isLinked, const char* mark) {
    PutLog("a", mark + Route(4, 38));
    look.linkGpsLog = isLinked;
    const Frame frame = DrawAgain(5, 9000);
    EXPECT_EQ(painter->AnyLogHasHeaderMark(), *mark != '\0');
    return frame;
  };
  const Frame linked = draw(true, ""), marked = draw(true, "@Kelogps/d/wgs-84/\n"), single = draw(false, "");
  EXPECT_EQ(marked.texts, single.texts);
  EXPECT_NE(marked.texts, linked.texts);
  EXPECT_EQ(marked.Graph(), single.Graph());
  EXPECT_NE(marked.Graph(), linked.Graph());
  EXPECT_EQ(marked.Track(), linked.Track());
  EXPECT_NE(marked.Track(), single.Track());
}

TEST_F(GpsPainterTest, GraphAndTrackAreThoseOfTheTimeThatCounts) {
  look.scenarioType = 4;
  look.logData[0].videoId = 9;
  look.logData[1].gpsLogFilePath = PutLog("b", Route(50, 57));
  Configure();
  EXPECT_EQ(Draw(9, 99'000).Graph(), Draw(9, 40'000).Graph()) << "after the last point of the clip";
  EXPECT_NE(Draw(9, 40'400).Graph(), Draw(5, 0).Graph()) << "at the seam of two clips";
  look.linkGpsLog = true;
  Configure();
  const auto inMovie = [&](std::int64_t ms) { return Draw(0, ms, 0, true); };
  EXPECT_EQ(inMovie(55'000).Graph(), inMovie(71'000).Graph()) << "after the last fix";
  EXPECT_NE(inMovie(47'000).Graph(), inMovie(46'000).Graph());
  look.scenarioType = 1;
  Configure();
  EXPECT_TRUE(Draw(5, 6000).Has(kPositionMarker));
  EXPECT_NE(Draw(5, 6000).Track(), Draw(5, 7000).Track());
  // A position at the very beginning alone makes no track.
  look.logData = {Clip(3, PutLog("c", Route(0, 0)), 0, 20)};
  Configure();
  EXPECT_FALSE(Draw(3, 0).Has(kPositionMarker));
}

TEST_F(GpsPainterTest, EqualStampsAreEqualFramesAndNoStampChangesInVain) {
  std::mt19937 random(5);
  for (const std::int32_t scenario : {1, 3, 4}) {
    look.scenarioType = scenario;
    painter.emplace(recorder);
    Configure();
    std::optional<std::pair<PainterStamp, Frame>> shown;
    int kept = 0, inVain = 0;
    std::int64_t ms = 0;
    std::int32_t videoId = 3;
    for (int i = 0; i < 250; ++i) {
      const bool jumps = random() % 12 == 0;
      ms = jumps ? static_cast<std::int64_t>(random() % 45'000)
                 : ms + static_cast<std::int64_t>(random() % 120);
      if (jumps) videoId = std::array{3, 3, 5, 5, 8}[random() % 5];
      const PainterStamp stamp = painter->GetContentStamp({.videoId = videoId, .gpsMs = ms});
      const Frame frame = Draw(videoId, ms);
      ASSERT_TRUE(stamp.isKnown);
      if (shown && shown->first == stamp) {
        ASSERT_EQ(frame, shown->second) << videoId << " at " << ms;
        ++kept;
      } else if (shown && frame == shown->second) {
        ++inVain;
      }
      shown.emplace(stamp, frame);
    }
    EXPECT_GT(kept, 20) << scenario;
    EXPECT_EQ(inVain, 0) << scenario;
    painter->SetOutputSize(kWidth, kHeight);
    EXPECT_NE(painter->GetContentStamp({.videoId = videoId, .gpsMs = ms}), shown->first);
  }
}

TEST_F(GpsPainterTest, FramesOnAnyGroundAndInAnyOrderAreThoseOfANewPainter) {
  std::mt19937 random(9);
  for (const std::int32_t layout : {1, 7}) {
    info.videoLayoutType = layout;
    for (const std::int32_t scenario : {2, 4}) {
      look.scenarioType = scenario;
      KVSGPSOverlayPainterPlugIn used(recorder);
      ASSERT_TRUE(used.SetPainterInfo(&info, &look));
      for (int i = 0; i < 25; ++i) {
        const std::int32_t videoId = random() % 3 == 0 ? 5 : 3;
        const auto ms = static_cast<std::int64_t>(random() % 42'000);
        const unsigned char ground = random() % 3 == 0 ? 0x60 : 0;
        const Frame again = DrawAgain(videoId, ms, ground);
        PixmapHolder holder(new XpPixmap32);
        ASSERT_EQ(holder->Allocate(kWidth, kHeight), XpOk);
        std::memset(holder->data, ground, holder->size);
        ASSERT_TRUE(used.DrawForVideo(videoId, ms, 0, 0, holder));
        ASSERT_EQ(std::memcmp(holder->data, again.pixels.data(), holder->size), 0) << videoId << " at " << ms;
        const XpRowRange rows = used.GetDrawnRows();
        for (std::int32_t y = 0; y < kHeight; ++y) {
          if (y >= rows.first && y < rows.last) continue;
          for (std::int32_t x = 0; x < kWidth; ++x) ASSERT_EQ(PixelAt(*holder, x, y), ground * 0x01010101u);
        }
      }
    }
  }
}

TEST_F(GpsPainterTest, DashboardsLookAsTheyDid) {
  for (std::int32_t i = 0; i < 14; ++i) info.stringTable.try_emplace(i, u"Label");
  info.videoWidth = look.width = 1920;
  info.videoHeight = look.height = 1080;
  const struct {
    std::int32_t scenario, layout;
    const char* name;
  } looks[] = {{1, 1, "gps-drive"},
               {2, 1, "gps-sports"},
               {3, 1, "gps-walk"},
               {4, 1, "gps-speed"},
               {1, 7, "gps-drive-stacked"}};
  for (const auto& [scenario, layout, name] : looks) {
    look.scenarioType = scenario;
    look.resources = vrx::overlay::LoadTemplateResource(scenario);
    info.videoLayoutType = layout;
    painter.emplace(recorder);
    Configure();
    PixmapHolder frame(new XpPixmap32);
    ASSERT_EQ(frame->Allocate(1920, 1080), XpOk);
    ASSERT_TRUE(painter->DrawForVideo(3, 12'500, 0, 0, frame));
    vrx::test_support::ExpectReference(*frame, name);
  }
}

}  // namespace
