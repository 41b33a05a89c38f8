// The speed graph: which record and what part of it is shown, settings and their limits, and how frames look.
// Texts are boxes and the pictures are made here, so that pixels are the same everywhere.
#include <random>
#include <set>

#include <gtest/gtest.h>

#include "drawing/BoxTextRenderer.h"
#include "foundation/registry/XpRegistry.h"
#include "gps/speedlog/KVSGPSSpeedLog.h"
#include "gps/speedlog/SpeedLogSettings.h"
#include "tests/drawing/Sheet.h"
#include "tests/foundation/ScopedVariable.h"
#include "tests/overlay/MakePicture.h"
#include "tests/overlay/ReferencePicture.h"
#include "tests/support/TempFolder.h"

namespace {

using vrx::test_support::MakePicture;
using namespace vrx::gps;
using vrx::drawing::PixelAt;
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
  EXPECT_EQ(std::pair(unknown.startMs, unknown.endMs), std::pair(0.0, 0.0));
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

TEST_F(SpeedLogTest, PositionIsKnownFromTheFirstFixOnAndAnyTimeIsSafe) {
  KVUGPSInfoList list(200, PointOf(10));
  list[0] = list[1] = PointOf(-1, GPSPointBeforeFix);
  list[60] = PointOf(10, GPSPointInterpolated);
  log.SetLinked(true);
  log.SetWholeRecord(list);
  EXPECT_FALSE(SceneAt(1999.9).isInRange || SceneAt(1999.9).position);
  EXPECT_TRUE(SceneAt(2000).isInRange);
  EXPECT_EQ(SceneAt(12000).position, (Point{211, 10}));
  EXPECT_FALSE(SceneAt(60500).position);
  EXPECT_EQ(SceneAt(61500).position, (Point{211, 10})) << "just after the gap";
  EXPECT_TRUE(SceneAt(1e18).curve.empty());
  EXPECT_FALSE(SceneAt(std::nan("")).isInRange);
  SpeedLogScene scene;
  for (const Rect& none : {Rect{}, Rect{5, 5, 5, 9}, Rect{0, 0, kMostCanvasSide + 1, 9}})
    EXPECT_FALSE(log.MakeScene(none, 0, scene));
}

TEST_F(SpeedLogTest, ASceneTakesOnlyWhatIsSeenOfALongLog) {
  KVUGPSInfoList list(12 * 3600, PointOf(10));
  log.SetLinked(true);
  log.SetWholeRecord(list);
  for (double ms = 0; ms < 12 * 3600 * 1000.0; ms += 777'777) ASSERT_LE(SceneAt(ms).curve.size(), 104u) << ms;
}

class SpeedLogFrames : public SpeedLogTest {
 protected:
  SpeedLogFrames() {
    look = {MakePicture(2, 134, 1), MakePicture(2, 10, 2),  MakePicture(40, 40, 3),
            MakePicture(40, 40, 4), MakePicture(28, 28, 5), 0xFEB3B3B3};
    log.SetFontName(u"Face");
    EXPECT_EQ(frame.Allocate(1330, 1480), XpOk);
  }
  /// Returns the length of the movie in milliseconds.
  double Start(std::uint32_t viewTime, std::uint32_t position, bool linked,
               const std::vector<KVUGPSInfoList>& clips) {
    Set(kTime, viewTime);
    Set(kPosition, position);
    log.ResetSpeedLog();
    log.SetLinked(linked);
    KVUGPSInfoList joined;
    std::int32_t id = 0;
    double accumulated = 0;
    for (const KVUGPSInfoList& clip : clips) {
      log.AddSpeedLogClip(clip, ++id, accumulated, 0, static_cast<double>(clip.size()) * 1000 - 300);
      ++accumulated;
      joined.insert(joined.end(), clip.begin(), clip.end());
    }
    log.SetWholeRecord(joined);
    return accumulated;
  }
  static Rect Cell(std::int32_t column, std::int32_t row, vrx::drawing::Size size = {kWidth, kHeight}) {
    const std::int32_t left = column * 443, top = row * 185;
    return {left, top, left + size.width, top + size.height};
  }
  void Draw(const Rect& rect, double ms) {
    ASSERT_TRUE(log.MakeScene(rect, ms, scene));
    vrx::overlay::PainterSurface surface(frame, boxes, renditions);
    log.Draw(scene, look, rect, surface);
    EXPECT_EQ(surface.GetTouched(), rect);
  }

  SpeedLogLook look;
  SpeedLogScene scene;
  XpPixmap32 frame;
  vrx::drawing::BoxTextRenderer boxes;
  vrx::overlay::PictureRenditions renditions;
};

TEST_F(SpeedLogFrames, LookAsTheyDidAtEachMomentAndSize) {
  log.SetTextResolution(vrx::overlay::TextResolution::Canvas);
  std::mt19937 random(11);
  constexpr vrx::drawing::Size kSizes[] = {{422, 175}, {281, 117}, {211, 88},
                                           {141, 59},  {422, 130}, {438, 182}};
  constexpr std::uint32_t kPositions[] = {50, 30, 100};
  constexpr double kMoments[] = {0.04, 0.45, 0.97};  // of the movie
  for (std::int32_t row = 0; row < 6; ++row) {
    std::vector<KVUGPSInfoList> clips;
    for (std::int32_t i = 0; i <= row % 3; ++i) clips.push_back(RandomList(90 + random() % 150, random));
    const double length = Start(row % 2 == 0 ? 100 : 17 + 20 * static_cast<std::uint32_t>(row),
                                kPositions[row % 3], row % 4 == 1, clips);
    for (std::int32_t column = 0; column < 3; ++column) {
      Draw(Cell(column, row, kSizes[row]), kMoments[column] * length);
    }
  }
  // Without its pictures, one after the other, and in another colour.
  Start(100, 50, true, {RandomList(90, random)});
  look.labelColor = 0x112233;
  std::int32_t drawn = 18;
  for (PainterPicture* picture :
       {&look.scale1, &look.scale2, &look.startMarker, &look.goalMarker, &look.positionMarker}) {
    Draw(Cell(drawn % 3, drawn / 3), 60000);
    *picture = {};
    ++drawn;
  }
  // The label of a minute before the strip moves.
  KVUGPSInfoList list(140, PointOf(10));
  std::fill_n(list.begin(), 80, PointOf(-1, GPSPointBeforeFix));
  Start(100, 50, true, {list});
  Draw(Cell(2, 7), 110'500);
  vrx::test_support::ExpectReference(frame, "gps-speed-graphs");
}

TEST_F(SpeedLogFrames, LabelsOfAStretchedGraphStandWhereTheStretchedOnesDo) {
  std::mt19937 random(5);
  Start(100, 50, true, {RandomList(150, random)});
  const auto labels = [&](vrx::overlay::TextResolution resolution, const Rect& rect) {
    log.SetTextResolution(resolution);
    EXPECT_EQ(frame.Allocate(460, 620), XpOk);
    EXPECT_TRUE(log.MakeScene(rect, 70'000, scene));
    vrx::overlay::PainterSurface surface(frame, boxes, renditions);
    log.Draw(scene, look, rect, surface);
    // What lies below the band.
    const auto band = static_cast<std::int32_t>(scene.BandBottom() * rect.Height() / scene.canvas.height) + 2;
    for (std::int32_t y = 0; y < rect.top + band; ++y) std::memset(frame.GetPlane(0)->Row(y), 0, 460 * 4);
    return vrx::drawing::InkOf(frame);
  };
  for (const Rect& rect : {Rect{8, 20, 430, 600}, {8, 20, 430, 120}, {3, 9, 214, 450}}) {
    const Rect sharp = labels(vrx::overlay::TextResolution::Frame, rect);
    const auto strength = [&] {
      return PixelAt(frame, (sharp.left + sharp.right) / 2, sharp.bottom - 2) >> 24;
    };
    // Of the label at the strip's end, which fades out.
    const auto endStrength = [&] {
      std::uint32_t sum = 0;
      for (std::int32_t x = rect.right - 12; x < rect.right; ++x) {
        sum += PixelAt(frame, x, sharp.bottom - 2) >> 24;
      }
      return sum / 12;
    };
    const std::uint32_t sharpStrength = strength(), sharpEnd = endStrength();
    const Rect stretched = labels(vrx::overlay::TextResolution::Canvas, rect);
    ASSERT_FALSE(sharp.IsEmpty());
    const double near = 2 + static_cast<double>(rect.Height()) / scene.canvas.height;
    EXPECT_NEAR(sharp.left, stretched.left, 2);
    EXPECT_NEAR(sharp.right, stretched.right, 2);
    EXPECT_NEAR(sharp.top, stretched.top, near);
    EXPECT_NEAR(sharp.bottom, stretched.bottom, near);
    EXPECT_NEAR(sharpStrength, strength(), 16);
    EXPECT_NEAR(sharpEnd, endStrength(), 16);
  }
  // Kept labels are drawn again in another colour.
  labels(vrx::overlay::TextResolution::Frame, {8, 20, 430, 600});
  look.labelColor = 0x445566;
  const Rect again = labels(vrx::overlay::TextResolution::Frame, {8, 20, 430, 600});
  std::set<std::uint32_t> colors;
  for (std::int32_t x = again.left; x < again.right; ++x) {
    colors.insert(PixelAt(frame, x, again.bottom - 5) & 0xFFFFFF);
  }
  EXPECT_TRUE(colors.contains(0x665544));
  // A graph that is not stretched is one picture either way.
  const Rect same = {8, 20, 430, 195};
  labels(vrx::overlay::TextResolution::Canvas, same);
  const std::vector<unsigned char> expected(frame.data, frame.data + frame.size);
  labels(vrx::overlay::TextResolution::Frame, same);
  EXPECT_TRUE(std::equal(expected.begin(), expected.end(), frame.data));
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

}  // namespace
