// The speed graph: records and scenes by their numbers, settings and their limits, and frames that are those
// of a drawing from scratch. Texts are boxes and the pictures are made here, so that pixels are the same
// everywhere.
#include <random>

#include <gtest/gtest.h>

#include "foundation/registry/XpRegistry.h"
#include "gps/speedlog/KVSGPSSpeedLog.h"
#include "gps/speedlog/SpeedLogSettings.h"
#include "tests/drawing/Sheet.h"
#include "tests/foundation/ScopedVariable.h"
#include "tests/gps/PlainSpeedLog.h"
#include "tests/overlay/MakePicture.h"
#include "tests/support/TempFolder.h"

namespace {

using vrx::test_support::MakePicture;
using namespace vrx::gps;
using vrx::drawing::Point;
using vrx::drawing::Rect;

constexpr std::int32_t kWidth = 422, kHeight = 175;
constexpr Rect kFullSize{8, 899, 430, 1074};

KVUGPSInfo PointOf(double speed, std::int32_t kind = GPSPointLogged) {
  KVUGPSInfo point;
  point.speed = speed;
  point.kind = kind;
  point.status = kind == GPSPointLogged ? 1 : 0;
  return point;
}

/// A drive with gaps: seconds that are held, then interpolated; nothing before the first fix and after the
/// last.
KVUGPSInfoList RandomList(std::size_t seconds, std::mt19937& random) {
  const auto upTo = [&](std::uint32_t limit) { return static_cast<std::uint32_t>(random() % limit); };
  KVUGPSInfoList list;
  const std::size_t before = upTo(2) == 0 ? 0 : upTo(30), after = upTo(20);
  double speed = upTo(40);
  for (std::size_t i = 0; i < seconds; ++i) {
    speed = std::max(0.0, speed + (static_cast<double>(upTo(100)) - 50) / 10);
    list.push_back(PointOf(upTo(50) == 0 ? kGPSNoSpeed : speed));
  }
  for (std::size_t gaps = seconds / 40; gaps > 0; --gaps) {
    const std::size_t start = upTo(static_cast<std::uint32_t>(seconds)), length = 1 + upTo(12);
    for (std::size_t i = start; i < std::min(start + length, seconds); ++i)
      list[i] = PointOf(list[i].speed, i < start + 3 ? GPSPointHeld : GPSPointInterpolated);
  }
  for (std::size_t i = 0; i < std::min(before, seconds); ++i)
    list[i] = PointOf(kGPSNoSpeed, GPSPointBeforeFix);
  for (std::size_t i = seconds - std::min(after, seconds); i < seconds; ++i)
    list[i] = PointOf(kGPSNoSpeed, GPSPointAfterFix);
  return list;
}

class SpeedLogTest : public testing::Test {
 protected:
  SpeedLogTest() { log.SetSpeedLogSize(kWidth, kHeight); }

  static void Set(const char16_t* name, std::uint32_t value) {
    const auto key = XpRegistryOpen(kKey, XpRegistryCurrentUser, XpRegistryWrite);
    ASSERT_EQ(key->SetDword(name, value), XpOk);
  }
  SpeedLogScene SceneAt(double ms, const Rect& rect = kFullSize) {
    SpeedLogScene scene;
    EXPECT_TRUE(log.MakeScene(rect, ms, scene));
    return scene;
  }

  static constexpr char16_t kKey[] = u"Software\\Kelo Corporation\\LBR\\KorvoClipStudio\\1.0\\Settings";
  static constexpr char16_t kTime[] = u"SpeedMeter_ViewAreaTime",
                            kPosition[] = u"SpeedMeter_ViewAreaPosition";
  TempFolder m_folder;
  ScopedVariable m_registry{"VRX_REGISTRY_DIR", m_folder.Path()};
  KVSGPSSpeedLog log;
};

TEST_F(SpeedLogTest, SettingsHaveDefaultsAndLimits) {
  EXPECT_EQ(GetViewAreaTime(), 100);
  EXPECT_NE(XpRegistryOpen(kKey, XpRegistryCurrentUser, XpRegistryRead), nullptr);
  EXPECT_EQ(GetViewAreaPosition(), 50);
  for (const auto& [stored, time, position] : {std::tuple(0u, 10, 30),
                                               {10u, 10, 30},
                                               {11u, 11, 30},
                                               {31u, 31, 31},
                                               {99u, 99, 99},
                                               {100u, 100, 100},
                                               {101u, 100, 100},
                                               {0xFFFFFFFFu, 100, 100}}) {
    Set(kTime, stored);
    Set(kPosition, stored);
    EXPECT_EQ(std::pair(GetViewAreaTime(), GetViewAreaPosition()), std::pair(time, position)) << stored;
  }
  const auto key = XpRegistryOpen(kKey, XpRegistryCurrentUser, XpRegistryWrite);
  key->SetString(kTime, u"20");
  key->SetString(kPosition, u"40");
  EXPECT_EQ(std::pair(GetViewAreaTime(), GetViewAreaPosition()), std::pair(100, 50));
  const ScopedVariable blocked("VRX_REGISTRY_DIR", m_folder.Write("file", ""));
  EXPECT_EQ(std::pair(GetViewAreaTime(), GetViewAreaPosition()), std::pair(100, 50));
}

TEST_F(SpeedLogTest, ARecordHasTheSpeedsFromTheFirstFixToTheLast) {
  const KVUGPSInfoList list{PointOf(-1, GPSPointBeforeFix),
                            PointOf(-1, GPSPointBeforeFix),
                            PointOf(10),
                            PointOf(9, GPSPointHeld),
                            PointOf(40, GPSPointInterpolated),
                            PointOf(kGPSNoSpeed),
                            PointOf(24),
                            PointOf(-1, GPSPointAfterFix)};
  double accumulated = 500;
  log.AddSpeedLogClip(list, 3, accumulated, 1000, 4000);
  EXPECT_EQ(accumulated, 3500);
  double time = 600;
  const SpeedLogRecord* record = log.FindSpeedRecord(time);
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(record->samples, (std::vector<SpeedSample>{
                                 {2, 10, true}, {3, 9, true}, {4, 40, false}, {5, -1, true}, {6, 24, true}}));
  EXPECT_EQ(std::tuple(record->firstMs, record->lastMs, record->startMs, record->endMs),
            std::tuple(2000u, 6000u, 500.0, 3500.0));
  EXPECT_EQ(std::tuple(record->maxSpeed, record->speedPerPixel, record->pixelsPerSecond),
            std::tuple(24.0, 0.2, 4.22));
  // Of the samples with the numbers 1 to 4.
  EXPECT_EQ(record->points,
            (std::vector<SpeedLogPoint>{{0, 45, true}, {4, 200, false}, {8, 0, true}, {12, 120, true}}));

  Set(kTime, 10);
  log.SetLinked(true);
  log.SetWholeRecord(list);
  record = log.FindSpeedRecord(time);
  EXPECT_EQ(record->points,
            (std::vector<SpeedLogPoint>{
                {0, 50, true}, {42, 45, true}, {84, 200, false}, {126, 0, true}, {168, 120, true}}));
  EXPECT_EQ(std::pair(record->startMs, record->endMs), std::pair(0.0, 0.0));
}

TEST_F(SpeedLogTest, RecordsWithoutSpeedsAndLogsWithoutHeightLieOnTheBaseLine) {
  const auto record = [&](const KVUGPSInfoList& list) {
    log.SetWholeRecord(list);
    double time = 0;
    return *log.FindSpeedRecord(time);
  };
  log.SetLinked(true);
  using Points = std::vector<SpeedLogPoint>;
  EXPECT_EQ(record({PointOf(0), PointOf(0)}).points, (Points{{0, 0, true}, {4, 0, true}}));
  const SpeedLogRecord unknown = record({PointOf(7, GPSPointInterpolated)});
  EXPECT_EQ(unknown.maxSpeed, -1.0);
  EXPECT_EQ(unknown.points, (Points{{0, 0, false}}));
  EXPECT_TRUE(SceneAt(0).curve.empty());
  EXPECT_FALSE(SceneAt(0).start || SceneAt(0).goal);
  EXPECT_EQ(record({}).points, Points());
  for (const std::int32_t height : {55, 45, 10, 1}) {
    log.SetSpeedLogSize(kWidth, height);
    EXPECT_EQ(record({PointOf(5)}).points, (Points{{0, 0, true}})) << height;
  }
  log.SetSpeedLogSize(0, kHeight);
  EXPECT_EQ(record({PointOf(5)}).pixelsPerSecond, 0.0);
}

TEST_F(SpeedLogTest, ATimeAtASeamBelongsToOneClip) {
  double time = 5;
  EXPECT_EQ(log.FindSpeedRecord(time), nullptr);
  double accumulated = 0;
  for (const std::int32_t id : {4, 9, 2}) {
    log.AddSpeedLogClip({PointOf(id)}, id, accumulated, 0, 10000);
    accumulated += 1;
  }
  accumulated = 20002;  // where the last one begins, too
  log.AddSpeedLogClip({PointOf(7)}, 7, accumulated, 0, 0);
  for (const auto& [movie, id, own] : {std::tuple(0.0, 4, 0.0),
                                       {9999.9999, 4, 10000.0},
                                       {10000.5, 7, -10001.5},
                                       {10000.9999, 9, 0.0},
                                       {15001.0, 9, 5000.0},
                                       {20002.0, 2, 0.0},
                                       {99999.0, 7, 79997.0},
                                       {-5.0, 7, -20007.0}}) {
    time = movie;
    EXPECT_EQ(log.FindSpeedRecord(time)->maxSpeed, id) << movie;
    EXPECT_NEAR(time, own, 0.001) << movie;
  }
}

TEST_F(SpeedLogTest, TheStripStandsUntilTheCursorIsReachedAndScrollsThen) {
  KVUGPSInfoList list(200, PointOf(10));
  list[0] = list[1] = PointOf(-1, GPSPointBeforeFix);
  list[60] = PointOf(10, GPSPointInterpolated);
  list[150] = PointOf(0);
  log.SetLinked(true);
  log.SetWholeRecord(list);

  SpeedLogScene scene = SceneAt(1999.9);  // before the first fix
  EXPECT_FALSE(scene.isInRange || scene.position);
  EXPECT_EQ(std::tuple(scene.canvas.width, scene.canvas.height, scene.GraphRows(), scene.BandTop(),
                       scene.BandBottom(), scene.MinorTickTop(), scene.cursorX),
            std::tuple(422, 175, 130, 134, 140, 120, 210));
  EXPECT_EQ(std::tuple(scene.tickOffset, scene.firstSecond, scene.start), std::tuple(211, 2, Point{211, 10}));
  EXPECT_EQ(scene.strokeEnds.size(), 1u);
  EXPECT_TRUE(SceneAt(2000).isInRange);

  scene = SceneAt(12000);
  EXPECT_TRUE(scene.isInRange);
  EXPECT_EQ(std::tuple(scene.tickOffset, scene.firstSecond, scene.start, scene.position),
            std::tuple(168, 2, Point{168, 10}, Point{211, 10}));
  EXPECT_EQ(std::pair(scene.curve.front(), scene.curve.back()), std::pair(Point{168, 10}, Point{429, 10}));
  EXPECT_EQ(scene.strokeEnds, (std::vector<std::size_t>{58, 62}));
  EXPECT_FALSE(scene.goal);

  scene = SceneAt(61500);  // just after the gap
  EXPECT_EQ(scene.start, (Point{-40, 10}));
  EXPECT_EQ(scene.position, (Point{211, 10}));
  EXPECT_FALSE(SceneAt(60500).position);
  scene = SceneAt(152000);  // 150 s after the first sample
  EXPECT_EQ(std::pair(scene.tickOffset, scene.firstSecond), std::pair(0, std::int64_t{102}));
  EXPECT_EQ(scene.goal, (Point{409, 10}));
  EXPECT_TRUE(SceneAt(1e18).curve.empty());
  EXPECT_FALSE(SceneAt(std::nan("")).isInRange);

  scene = SceneAt(12000, {2, 299, 143, 358});
  EXPECT_EQ(std::tuple(scene.canvas.width, scene.canvas.height, scene.cursorX), std::tuple(141, 58, 70));
  for (const Rect& none : {Rect{}, Rect{5, 5, 5, 9}, Rect{0, 0, kMostCanvasSide + 1, 9}})
    EXPECT_FALSE(log.MakeScene(none, 0, scene));
}

TEST_F(SpeedLogTest, ASceneTakesOnlyWhatIsSeenOfALongLog) {
  KVUGPSInfoList list(12 * 3600, PointOf(10));
  log.SetLinked(true);
  log.SetWholeRecord(list);
  for (double ms = 0; ms < 12 * 3600 * 1000.0; ms += 777'777) ASSERT_LE(SceneAt(ms).curve.size(), 104u) << ms;
}

/// What a frame shows over what it had before.
class SpeedLogFrames : public SpeedLogTest {
 protected:
  SpeedLogFrames() {
    look = {MakePicture(2, 134, 1), MakePicture(2, 10, 2),  MakePicture(40, 40, 3),
            MakePicture(40, 40, 4), MakePicture(28, 28, 5), 0xFEB3B3B3};
    log.SetFontName(u"Face");
  }
  void Start(std::uint32_t viewTime, std::uint32_t position, bool linked,
             const std::vector<KVUGPSInfoList>& clips) {
    Set(kTime, viewTime);
    Set(kPosition, position);
    plain.emplace();
    plain->viewTime = static_cast<std::int32_t>(viewTime);
    plain->position = static_cast<std::int32_t>(position);
    plain->linked = linked;
    log.ResetSpeedLog();
    log.SetLinked(linked);
    KVUGPSInfoList joined;
    std::int32_t id = 0;
    double accumulated = 0, plainAccumulated = 0;
    for (const KVUGPSInfoList& clip : clips) {
      const double length = static_cast<double>(clip.size()) * 1000 - 300;
      log.AddSpeedLogClip(clip, ++id, accumulated, 0, length);
      plain->AddClip(clip, id, plainAccumulated, 0, length);
      ASSERT_EQ(++accumulated, ++plainAccumulated);
      joined.insert(joined.end(), clip.begin(), clip.end());
    }
    log.SetWholeRecord(joined);
    plain->SetWhole(joined);
    lengthMs = accumulated;
  }
  void ExpectPlain(const Rect& rect, double ms, unsigned char ground, const std::string& what) {
    XpPixmap32 drawn, wanted;
    for (XpPixmap32* frame : {&drawn, &wanted}) {
      ASSERT_EQ(frame->Allocate(rect.right + 3, rect.bottom + 2), XpOk);
      std::memset(frame->data, ground, frame->size);
    }
    plain->Draw(rect, ms, look, wanted);
    ASSERT_TRUE(log.MakeScene(rect, ms, scene));
    vrx::overlay::PainterSurface surface(drawn, boxes, renditions);
    log.Draw(scene, look, rect, surface);
    EXPECT_EQ(surface.GetTouched(), rect);
    if (std::memcmp(drawn.data, wanted.data, wanted.size) == 0) return;
    for (std::uint32_t i = 0; i < wanted.size; ++i) {
      const auto stride = static_cast<std::uint32_t>(wanted.width) * 4;
      ASSERT_EQ(drawn.data[i], wanted.data[i]) << what << " at " << ms << " ms, pixel " << i % stride / 4
                                               << ", " << i / stride << ", byte " << i % 4;
    }
  }

  SpeedLogLook look;
  std::optional<PlainSpeedLog> plain;
  double lengthMs = 0;
  SpeedLogScene scene;
  vrx::drawing::BoxTextRenderer boxes;
  vrx::overlay::PictureRenditions renditions;
};

TEST_F(SpeedLogFrames, AreThoseOfADrawingFromScratchInAnyOrder) {
  std::mt19937 random(11);
  const auto upTo = [&](std::uint32_t limit) { return static_cast<std::uint32_t>(random() % limit); };
  const Rect rects[] = {{2, 299, 143, 358}, {5, 599, 286, 716}, {4, 449, 215, 537},
                        kFullSize,          {8, 665, 430, 795}, {16, 1798, 860, 2148}};
  for (int round = 0; round < 24 && !HasFailure(); ++round) {
    std::vector<KVUGPSInfoList> clips;
    for (std::uint32_t i = 0; i <= upTo(3); ++i)
      clips.push_back(RandomList(20 + upTo(round % 8 == 0 ? 4000 : 200), random));
    const std::uint32_t position = std::array{30u, 50u, 100u}[upTo(3)];
    const bool linked = upTo(2) == 0;
    Start(upTo(2) == 0 ? 100 : 10 + upTo(90), position, linked, clips);
    const Rect& rect = rects[static_cast<std::size_t>(round) % std::size(rects)];
    const std::string what = "round " + std::to_string(round);
    double ms = 0;
    for (int i = 0; i < 8 && !HasFailure(); ++i) {
      ms = upTo(3) == 0 ? lengthMs * (upTo(1100) / 1000.0)
                        : ms + upTo(90);  // small steps leave the scene as it was
      ExpectPlain(rect, ms, static_cast<unsigned char>(upTo(2) * 131), what);
    }
  }
}

TEST_F(SpeedLogFrames, BeginWithTheTickAtTheLeftEdgeBeforeTheStripMoves) {
  KVUGPSInfoList list(140, PointOf(10));
  std::fill_n(list.begin(), 80, PointOf(-1, GPSPointBeforeFix));
  Start(100, 50, true, {list});
  for (double ms = 109500; ms < 111500; ms += 100) ExpectPlain(kFullSize, ms, 0, "label of a minute");
}

TEST_F(SpeedLogFrames, OfAnySizeStayInTheirRectangle) {
  std::mt19937 random(8);
  const KVUGPSInfoList list = RandomList(60, random);
  log.SetLinked(true);
  for (const std::int32_t width : {1, 9, 422}) {
    for (const std::int32_t height : {1, 40, 46, 54, 60, 175}) {
      log.SetSpeedLogSize(width, height);
      log.SetWholeRecord(list);
      for (const std::int32_t right : {4, 12, 150}) {
        if (right > 20 * width) continue;
        XpPixmap32 frame;
        ASSERT_EQ(frame.Allocate(200, 90), XpOk);
        const Rect rect{3, 5, right, 85};
        if (!log.MakeScene(rect, 40000, scene)) continue;
        vrx::overlay::PainterSurface surface(frame, boxes, renditions);
        log.Draw(scene, look, rect, surface);
        const Rect ink = vrx::drawing::InkOf(frame);
        EXPECT_EQ(ink.IsEmpty() ? ink : Intersect(ink, rect), ink)
            << width << " x " << height << " to " << right;
      }
    }
  }
}

TEST_F(SpeedLogFrames, FollowTheirPicturesAndColours) {
  std::mt19937 random(5);
  Start(100, 50, true, {RandomList(90, random)});
  ExpectPlain(kFullSize, 60000, 0, "all");
  look.labelColor = 0x112233;
  ExpectPlain(kFullSize, 60000, 0, "another colour");
  for (PainterPicture* picture :
       {&look.scale1, &look.scale2, &look.startMarker, &look.goalMarker, &look.positionMarker}) {
    *picture = {};
    ExpectPlain(kFullSize, 60000, 200, "without a picture");
  }
}

}  // namespace
