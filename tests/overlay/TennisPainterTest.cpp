// The tennis overlay at many moments, and that what was drawn before makes no difference. Texts are boxes and
// the pictures are made here, so that pixels are the same on every machine.
#include <atomic>
#include <cstring>
#include <optional>
#include <random>
#include <thread>

#include <gtest/gtest.h>

#include "drawing/BoxTextRenderer.h"
#include "imaging/pixmap/XpPixmapBlock.h"
#include "overlay/tennis/KVSTennisMetaPainterPlugIn.h"
#include "tests/drawing/Sheet.h"
#include "tests/overlay/MakePicture.h"
#include "tests/overlay/ReferencePicture.h"

namespace {

using vrx::test_support::MakePicture;
using namespace vrx::overlay;
using vrx::drawing::InkOf;
using vrx::drawing::Rect;

std::shared_ptr<TennisMetaResource> MakePictures() {
  auto set = std::make_shared<TennisMetaResource>();
  std::uint32_t seed = 0;
  for (auto* frames : {&set->racketFrames, &set->backFrames, &set->foreFrames}) {
    for (int i = 0; i < 8; ++i) frames->push_back(MakePicture(12, 9, ++seed));
  }
  for (const TennisStroke& stroke : TennisStrokes()) (*set).*(stroke.pictogram) = MakePicture(5, 5, ++seed);
  set->timeLine = MakePicture(20, 4, ++seed);
  set->timeTop = MakePicture(6, 6, ++seed);
  set->shade = MakePicture(1, 1, ++seed);
  set->yellow = MakePicture(7, 7, ++seed);
  set->blue = MakePicture(7, 7, ++seed);
  return set;
}

class TennisPainterTest : public testing::Test {
 protected:
  TennisPainterTest() {
    info.videoWidth = 320;
    info.videoHeight = 180;
    info.saveMovieMode = true;
    info.gpsUnitFromUser = 0;
    const char16_t* texts[] = {u"mph", u"", u"km/h", u"", u"kmph"};
    for (std::int32_t i = 0; i < 5; ++i) info.stringTable[i] = texts[i];
    info.stringTable[14] = u"Spin";
    info.stringTable[15] = u"Swing speed that wraps";
    info.stringTable[16] = u"Ball";
    for (std::int32_t i = 17; i < 25; ++i) {
      info.stringTable[i] = std::u16string(static_cast<std::size_t>(i - 14), u'x') + u" name";
    }
    info.stringTable[19] = u"a name that is too long for the place of one line";
    TennisMetaInfo& tennis = info.tennisMetaInfo;
    tennis.valid = true;
    tennis.layoutType = 1;
    tennis.resources = MakePictures();
    tennis.originalDateTime.SetDateTime(2024, 5, 1, 10, 11, 12);
    tennis.duration = 3723.9;
    UseShots(RandomShots(40));
  }

  /// Gaps from nothing to some seconds, values that rise and fall by little and much.
  static std::vector<TennisShot> RandomShots(std::size_t count) {
    std::mt19937 random(7);
    const auto upTo = [&](std::uint32_t limit) { return static_cast<std::int32_t>(random() % limit); };
    std::vector<TennisShot> shots(count);
    double time = 1.2345;
    for (std::size_t i = 0; i < count; ++i) {
      TennisShot& shot = shots[i];
      shot.time = time;
      time += upTo(4) == 0 ? upTo(200) / 1000.0 : upTo(3000) / 1000.0;
      shot.swingType = i == 5 ? 0x101 : 1 << upTo(8);
      shot.impactZone = upTo(28) - 1;
      shot.secondPanelSpeed = upTo(2) == 0 ? 100 + upTo(5) : upTo(2400) / 10.0;
      shot.thirdPanelSpeed = upTo(1500) / 10.0;
      shot.firstPanelValue = upTo(30) - 15;
      shot.swapSides = upTo(2) == 0;
      shot.clipStart = 0;
      shot.clipAnchor = shot.time - 0.25;
      shot.clipEnd = 1000;
    }
    BuildSearchTree(shots);
    return shots;
  }
  void UseShots(const std::vector<TennisShot>& shots) {
    m_shots = shots;
    info.tennisMetaInfo.metaData = XpNarrowString(WriteTennisMetaData(shots)).ToWide();
  }

  std::int64_t TimeOfShot(std::int64_t index) const {
    return static_cast<std::int64_t>(m_shots[static_cast<std::size_t>(index)].time * 1000);
  }
  void Configure() { ASSERT_TRUE(painter->SetPainterInfo(&info, &info.tennisMetaInfo)); }
  PixmapHolder Canvas(std::int32_t width, std::int32_t height) {
    PixmapHolder holder(new XpPixmap32);
    EXPECT_EQ(holder->Allocate(width, height), XpOk);
    return holder;
  }
  PixmapHolder Draw(std::int64_t ms, std::int32_t width = 320, std::int32_t height = 180) {
    PixmapHolder holder = Canvas(width, height);
    EXPECT_TRUE(painter->DrawForVideo(0, 0, ms, 0, holder));
    return holder;
  }
  static bool AreEqual(const PixmapHolder& a, const PixmapHolder& b) {
    return a->size == b->size && std::memcmp(a->data, b->data, a->size) == 0;
  }
  /// The frame at `ms`, painted over what `holder` has, is that of a painter which has drawn nothing before.
  void ExpectFresh(std::int64_t ms, PixmapHolder holder) {
    PixmapHolder fresh = Canvas(holder->width, holder->height);
    std::memcpy(fresh->data, holder->data, fresh->size);
    KVSTennisMetaPainterPlugIn other(boxes);
    other.SetPainterInfo(&info, &info.tennisMetaInfo);
    EXPECT_TRUE(other.Draw(0, ms, 0, fresh));
    EXPECT_TRUE(painter->Draw(0, ms, 0, holder));
    EXPECT_TRUE(AreEqual(holder, fresh)) << ms << " on " << holder->width;
  }

  vrx::drawing::BoxTextRenderer boxes;
  std::optional<KVSTennisMetaPainterPlugIn> painter{boxes};
  PainterInfo info;

 private:
  std::vector<TennisShot> m_shots;
};

TEST_F(TennisPainterTest, FramesLookAsTheyDidAtEachMoment) {
  std::mt19937 random(1);
  constexpr std::int32_t kWidth = 320, kHeight = 180;
  XpPixmap32 sheet;
  ASSERT_EQ(sheet.Allocate(6 * kWidth, 8 * kHeight), XpOk);
  for (std::int32_t row = 0; row < 8; ++row) {
    info.tennisMetaInfo.layoutType = 1 + row % 2;
    info.gpsUnitFromUser = row / 2;
    // Without pictures the texts remain.
    if (row == 6) info.tennisMetaInfo.resources = std::make_shared<TennisMetaResource>();
    Configure();
    for (std::int32_t column = 0; column < 6; ++column) {
      // From 300 ms before a shot until it, where the counters roll, and anywhere.
      const std::int64_t shot = 1 + static_cast<std::int64_t>(random() % 38);
      std::int64_t ms = TimeOfShot(shot) - 293 + 71 * column;
      if (column == 5) ms = static_cast<std::int64_t>(random() % 60'000);
      const PixmapHolder frame = Draw(ms, kWidth, kHeight);
      for (std::int32_t y = 0; y < kHeight; ++y) {
        std::memcpy(sheet.GetPlane(0)->Row(row * kHeight + y) + std::ptrdiff_t{column} * kWidth * 4,
                    frame->GetPlane(0)->Row(y), std::size_t{kWidth} * 4);
      }
    }
  }
  vrx::test_support::ExpectReference(sheet, "tennis-moments");
}

TEST_F(TennisPainterTest, FramesInAnyOrderAndOverAnyGroundAreThoseOfANewPainter) {
  std::mt19937 random(1);
  for (const std::int32_t layout : {1, 2}) {
    info.tennisMetaInfo.layoutType = layout;
    info.saveMovieMode = layout == 2;
    Configure();
    for (const auto& [width, height] : {std::pair{640, 360}, {480, 360}, {320, 170}}) {
      for (int i = 0; i < 20; ++i) {
        PixmapHolder ground = Canvas(width, height);
        if (i % 4 == 1) std::memset(ground->data, 77, ground->size);
        if (i % 4 == 2) ground->data[(height * width - width / 2) * 4 + 3] = 90;  // a single pixel
        ExpectFresh(static_cast<std::int64_t>(random() % 60'000) - 1000, ground);
      }
    }
  }
}

TEST_F(TennisPainterTest, EqualStampsAreEqualPicturesAndFewStampsChangeInVain) {
  std::mt19937 random(3);
  for (const std::int32_t layout : {1, 2}) {
    info.tennisMetaInfo.layoutType = layout;
    Configure();
    PixmapHolder shown = Draw(0);
    PainterStamp shownStamp = painter->GetContentStamp({.tennisMs = 0});
    int kept = 0, inVain = 0;
    std::int64_t ms = 0;
    for (int i = 0; i < 2000; ++i) {
      ms = random() % 20 == 0 ? static_cast<std::int64_t>(random() % 60000)
                              : ms + static_cast<std::int64_t>(random() % 17);
      const PainterStamp stamp = painter->GetContentStamp({.tennisMs = ms});
      const PixmapHolder drawn = Draw(ms);
      ASSERT_TRUE(stamp.isKnown);
      const bool isSame = AreEqual(drawn, shown);
      if (stamp == shownStamp) {
        ASSERT_TRUE(isSame) << ms << " in layout " << layout;
        ++kept;
      } else if (isSame) {
        ++inVain;
      }
      shown = drawn;
      shownStamp = stamp;
    }
    EXPECT_GT(kept, 100);
    EXPECT_LT(inVain, 100);  // boxes look alike: other digits may give the same pixels
    painter->SetMode(3);     // the same values without a unit
    EXPECT_NE(painter->GetContentStamp({.tennisMs = ms}), shownStamp);
    EXPECT_FALSE(AreEqual(Draw(ms), shown));
  }
}

TEST_F(TennisPainterTest, DrawnRowsHoldEverythingThatIsDrawn) {
  for (const auto& [width, height] : {std::pair{1920, 1080}, {64, 48}, {90, 61}, {33, 200}, {640, 359}}) {
    for (const std::int32_t layout : {1, 2}) {
      info.tennisMetaInfo.layoutType = layout;
      Configure();
      for (const std::int64_t ms : {0, 5000, 5200, 20000}) {
        const Rect ink = InkOf(*Draw(ms, width, height));
        const XpRowRange rows = painter->GetDrawnRows();
        EXPECT_GE(ink.top, rows.first) << layout << " on " << width << "x" << height;
        EXPECT_LE(ink.bottom, rows.last) << layout << " on " << width << "x" << height;
        EXPECT_TRUE(height < 359 || rows.first >= height / 2) << rows.first << " of " << height;
      }
    }
  }
}

TEST_F(TennisPainterTest, ShotShowsAheadOfItsTimeButItsSwingDoesNot) {
  std::vector<TennisShot> shots = RandomShots(2);
  shots[0].time = 2;
  shots[0].swingType = 1;
  shots[0].impactZone = 3;
  shots[1].time = 50;
  UseShots(shots);
  Configure();
  EXPECT_FALSE(AreEqual(Draw(1966), Draw(1967)));  // the name and the mark
  EXPECT_TRUE(AreEqual(Draw(100), Draw(100)));
  painter->SetClipDateTime(0, 0x40000000, 0);  // 2.0 seconds
  const PixmapHolder shifted = Draw(100);
  painter->SetClipDateTime(0, 0, 0);
  EXPECT_TRUE(AreEqual(shifted, Draw(2100)));
  info.tennisMetaInfo.trimedShift = 2.0;
  Configure();
  EXPECT_TRUE(AreEqual(shifted, Draw(100)));
}

TEST_F(TennisPainterTest, LargerFramesShowTheDoubledPicturesOfTheLastConfiguration) {
  const auto set = info.tennisMetaInfo.resources;
  Configure();
  const PixmapHolder nominal = Draw(5000);
  PainterPicture& doubled = set->doubled[set->shade.Get()];
  doubled = PainterPicture(MakeSolidPixmap(0, 0, 255, 255).release());
  Configure();
  EXPECT_FALSE(AreEqual(nominal, Draw(5000)));
  EXPECT_EQ(vrx::drawing::PixelAt(*Draw(5000), 319, 179), 0xFF0000FFu);
  set->doubled.clear();
  Configure();
  EXPECT_TRUE(AreEqual(nominal, Draw(5000)));
}

TEST_F(TennisPainterTest, MissingPicturesLeaveTheTexts) {
  info.tennisMetaInfo.resources = std::make_shared<TennisMetaResource>();
  for (const std::int32_t layout : {2, 1}) {
    info.tennisMetaInfo.layoutType = layout;
    Configure();
    const Rect ink = InkOf(*Draw(5000));
    EXPECT_LE(painter->GetDrawnRows().first, ink.top) << layout;
    EXPECT_GE(painter->GetDrawnRows().last, ink.bottom) << layout;
  }
  const PixmapHolder bare = Draw(5000);
  EXPECT_FALSE(InkOf(*bare).IsEmpty());
  auto clear = std::make_shared<TennisMetaResource>();
  for (auto* frames : {&clear->racketFrames, &clear->backFrames, &clear->foreFrames}) {
    for (int i = 0; i < 8; ++i) frames->emplace_back(MakeSolidPixmap(0, 0, 0, 0).release());
  }
  clear->timeLine = clear->blue = clear->yellow = clear->racketFrames[0];
  info.tennisMetaInfo.resources = clear;
  Configure();
  EXPECT_TRUE(AreEqual(bare, Draw(5000)));
  // An opaque picture without alpha covers its rectangle.
  auto* opaque = new XpPixmap24;
  clear->timeLine = PainterPicture(opaque);
  ASSERT_EQ(opaque->Allocate(3, 2), XpOk);
  Configure();
  EXPECT_EQ(vrx::drawing::PixelAt(*Draw(5000), 100, 175), 0xFF000000u);
}

TEST(TennisSceneTest, ShotRunsAlongTheTimeLineForTenSecondsAndStaysForHalfOne) {
  std::vector<TennisShot> shots(1);
  shots[0].time = 20;
  shots[0].strokeClass = 6;
  shots[0].clipEnd = -1;  // no clip: the axis of the metadata
  const auto layout = MakeTennisLayout(1, nullptr, 1920, 1080, u"");
  struct Case {
    std::int64_t ahead;
    bool isComing, wasPlayed;
  };
  for (const Case& c : {Case{10001, false, false}, Case{10000, true, false}, Case{1, true, false},
                        Case{0, false, true}, Case{-500, false, true}, Case{-501, false, false}}) {
    TennisScene scene;
    MakeTennisScene(TennisShots(shots), *layout, 0, 20000 - 33 - c.ahead, scene);
    ASSERT_EQ(scene.markers.size(), c.isComing ? 1u : 0u) << c.ahead;
    ASSERT_EQ(scene.played.has_value(), c.wasPlayed) << c.ahead;
    const Rect place = layout->GetTimeMarkerRect(c.isComing ? c.ahead : 0, 10000, 10);
    for (const TennisScene::Marker& marker : scene.markers)
      EXPECT_EQ(marker, (TennisScene::Marker{6, place}));
    EXPECT_EQ(scene.played.value_or(TennisScene::Marker{6, place}), (TennisScene::Marker{6, place}));
  }
}

TEST_F(TennisPainterTest, ConfigurationMayChangeWhileAnotherThreadDraws) {
  TennisMetaInfo light = info.tennisMetaInfo;
  light.layoutType = 2;
  Configure();
  std::atomic<int> configured = 0;
  const std::jthread host([&](const std::stop_token& stop) {
    for (; !stop.stop_requested(); ++configured) {
      painter->Configure(&info, configured % 2 == 0 ? &light : &info.tennisMetaInfo);
    }
  });
  PixmapHolder holder = Canvas(64, 48);
  for (int i = 0; i < 50 || configured < 100; ++i) ASSERT_TRUE(painter->Draw(0, 5000, 0, holder));
}

TEST_F(TennisPainterTest, NothingIsDrawnWithoutLayoutPicturesOrShots) {
  PixmapHolder empty;
  PixmapHolder holder = Canvas(320, 180);
  EXPECT_FALSE(painter->Draw(0, 5000, 0, holder));
  Configure();
  EXPECT_FALSE(painter->Draw(0, 5000, 0, empty));
  info.tennisMetaInfo.layoutType = 3;
  Configure();
  EXPECT_FALSE(painter->Draw(0, 5000, 0, holder));
  info.tennisMetaInfo.layoutType = 1;
  const auto pictures = std::exchange(info.tennisMetaInfo.resources, nullptr);
  Configure();
  EXPECT_TRUE(painter->Draw(0, 5000, 0, holder));
  info.tennisMetaInfo.resources = pictures;
  info.tennisMetaInfo.metaData = u"1,2,3|";
  Configure();
  EXPECT_TRUE(painter->Draw(0, 5000, 0, holder));
  EXPECT_TRUE(painter->GetContentStamp({.tennisMs = 5}).isKnown);
  EXPECT_TRUE(InkOf(*holder).IsEmpty());
  EXPECT_TRUE(painter->GetDrawnRows().IsEmpty());
  painter->SetPainterInfo(&info, &info.captionInfo);
  EXPECT_FALSE(painter->Draw(0, 5000, 0, holder));
}

}  // namespace
