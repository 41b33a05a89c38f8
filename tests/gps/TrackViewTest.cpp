// The track view: how a route is thinned, laid out and split at a moment, what a frame shows of it, and how
// it is drawn.
#include <limits>
#include <random>

#include <gmock/gmock.h>

#include "drawing/BoxTextRenderer.h"
#include "gps/track/TrackMetrics.h"
#include "gps/trackview/KVSGPSTrack.h"
#include "gps/trackview/TrackLayout.h"
#include "imaging/pixmap/XpPixmapBlock.h"
#include "tests/drawing/PrintGeometry.h"
#include "tests/overlay/ReferencePicture.h"

namespace {

using namespace vrx::gps;
using testing::ElementsAre;
using vrx::drawing::Point;
using vrx::drawing::Rect;
using vrx::overlay::PainterSurface;
using vrx::overlay::PictureRenditions;

KVUGPSInfo At(double x, double y, std::int32_t kind = GPSPointLogged) {
  KVUGPSInfo position;
  position.longitude = x;
  position.latitude = -y;  // so that y runs down
  position.kind = kind;
  position.status = kind == GPSPointLogged ? 1 : 0;
  return position;
}

/// One canvas unit an arc-second, from (100, 100) on.
constexpr KVSGPSBounds kSquare{0, 0, 800, 800};

TEST(TrackSegmentTest, RouteIsCentredInItsShapeAndThinned) {
  const auto route = [](KVUGPSInfoList list, const KVSGPSBounds& bounds, bool keepLast = true) {
    return MakeTrackSegment(list, bounds, 2.5, 9.5, keepLast);
  };
  // Steps are 800 / 80 across and 400 / 80 down.
  const KVUGPSInfoList wide = {At(7, 7, GPSPointBeforeFix),
                               At(0, 0),
                               At(9, 4),
                               At(10, 4),
                               At(10, 9),
                               At(800, 400),
                               At(5, 5, GPSPointAfterFix),
                               At(799, 400, GPSPointHeld)};
  const KVSGPSBounds wideBounds{0, 0, 800, 400};
  TrackSegment segment = route(wide, wideBounds);
  EXPECT_THAT(segment.points,
              ElementsAre(TrackPoint{100, 300, 0}, TrackPoint{110, 304, 2}, TrackPoint{110, 309, 3},
                          TrackPoint{900, 700, 4}, TrackPoint{899, 700, 5}));
  EXPECT_EQ(segment.beforeFixCount, 1u);
  EXPECT_EQ(segment.startTime, 2.5);
  EXPECT_EQ(segment.endTime, 9.5);
  EXPECT_EQ(route(wide, wideBounds, false).points.size(), 4u);
  // Half the odd margin is rounded towards the upper left: 800 * 5 / 6 is 666.67, the margin 333.
  EXPECT_THAT(route({At(5, 6)}, {0, 0, 5, 6}).points, ElementsAre(TrackPoint{666 + 166, 900, 0}));
  KVUGPSInfo valid = At(0, 0, GPSPointBeforeFix);
  valid.status = 1;
  EXPECT_EQ(route({valid}, kSquare).beforeFixCount, 0u);
  EXPECT_EQ(route({valid}, kSquare).points.size(), 1u);
  // A place that cannot be computed is the middle.
  const double none = std::numeric_limits<double>::quiet_NaN();
  EXPECT_THAT(route({At(3, 3), At(3, 3)}, {-3, 3, 0, 0}).points,
              ElementsAre(TrackPoint{500, 500, 0}, TrackPoint{500, 500, 1}));
  EXPECT_THAT(route({At(3, 200)}, {0, 3, 0, 400}).points, ElementsAre(TrackPoint{500, 500, 0}));
  EXPECT_THAT(route({At(none, 0)}, kSquare).points, ElementsAre(TrackPoint{500, 100, 0}));
  EXPECT_TRUE(route({}, kSquare).points.empty());
}

TEST(TrackWalkTest, MarkerStaysForThreeSecondsAfterTheLastPosition) {
  TrackSegment segment;
  segment.points = {{100, 0, 0}, {300, 0, 20}, {300, 200, 50}};
  segment.beforeFixCount = 5;
  LayoutSegment({1000, 1000}, segment);
  for (const auto& [seconds, known] : {std::pair{4.999, false}, {5.0, true}, {58.0, true}, {58.001, false}})
    EXPECT_EQ(IsPositionKnown(segment, seconds), known) << seconds;
  EXPECT_FALSE(IsPositionKnown(TrackSegment(), 0));
  EXPECT_FALSE(WalkSegment(TrackSegment(), {}, 3).GetPosition());
}

TEST(TrackLineMapTest, SplitsALineOfManyHoursAtAnyPart) {
  constexpr vrx::drawing::Size kFrame{160, 20};
  constexpr vrx::drawing::Pen kPen{0xABCDEF, 3};
  std::vector<Point> line;
  for (std::int32_t i = 0; i < 70000; ++i) line.push_back({8 + i / 500, 6 + i % 2 * 4});
  using Side = TrackLineMap::Side;
  for (const Side side : {Side::Before, Side::After}) {
    const auto map = TrackLineMap::Make(line, kPen.width, side, kFrame);
    ASSERT_TRUE(map);
    for (const std::size_t split : {0u, 1u, 260u, 65535u, 65536u, 69500u, 69999u}) {
      XpPixmap32 drawn, plain;
      for (XpPixmap32* frame : {&drawn, &plain})
        ASSERT_EQ(frame->Allocate(kFrame.width, kFrame.height), XpOk);
      map->Draw(split, kPen.color, drawn);
      const std::span all(line);
      const auto parts = side == Side::Before ? all.first(split + 1) : all.subspan(split);
      vrx::drawing::Canvas(plain.GetBitmapHandle()).DrawPolyline(parts, kPen);
      EXPECT_EQ(std::memcmp(drawn.data, plain.data, plain.size), 0) << split;
    }
  }
  EXPECT_FALSE(TrackLineMap::Make(line, kPen.width, Side::After, {148, 20}));  // leaves the frame
  EXPECT_FALSE(TrackLineMap::Make(std::span(line).first(1), kPen.width, Side::After, kFrame));
}

TEST(TrackDotsTest, NarrowGapsHaveNoDotsAndEndlessOnesNotTooMany) {
  TrackDisplayPoint from, to;
  std::vector<TrackDot> dots;
  to.x = 13;  // less than a dot and its space
  MakeGapDots(from, to, {1000, 500, 1380, 900}, {}, dots);
  EXPECT_TRUE(dots.empty());
  to.x = to.y = std::numeric_limits<std::int32_t>::max();
  MakeGapDots(from, to, {0, 0, 1, 1}, {}, dots);
  EXPECT_EQ(dots.size(), 4096u);
}

PainterPicture Solid(std::int32_t width, std::int32_t height, std::uint8_t red) {
  auto picture = std::make_unique<XpPixmap32>();
  EXPECT_EQ(picture->Allocate(width, height), XpOk);
  for (std::uint32_t i = 0; i < picture->size; i += 4) {
    picture->data[i + 2] = static_cast<unsigned char>(red + i % 7);
    picture->data[i + 3] = i % 12 == 0 ? 128 : 255;
  }
  return PainterPicture(picture.release());
}

class TrackViewTest : public testing::Test {
 protected:
  /// Some clips that begin or end anywhere in a route, join or not, and lack a fix here and there. Returns
  /// the end of the last one in milliseconds.
  std::int64_t MakeRandomClips(std::mt19937& random, std::size_t longest) {
    const auto below = [&](unsigned limit) { return static_cast<double>(random() % limit); };
    m_track.ResetTrack();
    double x = 0, y = 0, start = 0;
    std::vector<KVUGPSInfoList> clips(2 + random() % 3);
    KVUGPSInfoList all;
    for (KVUGPSInfoList& clip : clips) {
      if (random() % 3 == 0) clip.assign(random() % 6, At(0, 0, GPSPointBeforeFix));
      for (std::size_t left = longest / 4 + random() % longest; left > 0; --left) {
        if (random() % 4 != 0) x += below(5) - 2;
        if (random() % 4 != 0) y += below(5) - 2;
        clip.push_back(At(x, y, random() % 9 == 0 ? GPSPointHeld : GPSPointLogged));
      }
      if (random() % 3 == 0) clip.resize(clip.size() + 3, At(0, 0, GPSPointAfterFix));
      if (random() % 2 == 0) x += 12, y -= 3;
      all.insert(all.end(), clip.begin(), clip.end());
    }
    KVSGPSBounds whole;
    TrackBounds(all, 0, whole);
    for (const KVUGPSInfoList& clip : clips) {
      const double end = start + static_cast<double>(clip.size()) + below(5) * 0.5;
      m_track.BuildTrackSegment(clip, whole, start, end, true);
      KVSGPSBounds own;
      TrackBounds(clip, 0, own);
      m_track.BuildTrackSegment(clip, own, start, end, false);
      start = end;
    }
    return static_cast<std::int64_t>(start * 1000);
  }

  void Draw(const TrackScene& scene, const Rect& rect) {
    ASSERT_EQ(m_frame.Allocate(m_look.frameWidth, m_look.frameHeight), XpOk);
    PictureRenditions renditions;
    PainterSurface surface(m_frame, m_text, renditions);
    m_track.Draw(scene, m_look, rect, surface);
    m_touched = surface.GetTouched();
  }
  std::uint32_t Pixel(std::int32_t x, std::int32_t y) const {
    const unsigned char* p = m_frame.GetPlane(0)->Row(y) + std::ptrdiff_t{x} * 4;
    return static_cast<std::uint32_t>(p[3] << 24 | p[2] << 16 | p[1] << 8 | p[0]);
  }

  KVSGPSTrack m_track;
  TrackLook m_look{.aheadWidth = 6,
                   .walkedWidth = 6,
                   .shadowWidth = 10,
                   .aheadColor = 0xFEFEFEFE,
                   .walkedColor = 0xFE0073FF,
                   .shadowColor = 0x66333333,
                   .startMarker = Solid(40, 40, 10),
                   .goalMarker = Solid(44, 30, 60),
                   .startText = Solid(88, 40, 110),
                   .goalText = Solid(70, 20, 160),
                   .positionMarker = Solid(28, 28, 210),
                   .frameWidth = 1920,
                   .frameHeight = 1080};
  vrx::drawing::BoxTextRenderer m_text;
  XpPixmap32 m_frame;
  Rect m_touched;
};

TEST_F(TrackViewTest, RoutesLookAsTheyDidAtEachMoment) {
  std::mt19937 random(5);
  TrackScene scene;
  XpPixmap32 sheet;
  ASSERT_EQ(sheet.Allocate(1920, 1080), XpOk);
  PictureRenditions renditions;
  PainterSurface surface(sheet, m_text, renditions);
  m_look.frameWidth /= 2;  // for smaller markers
  m_look.frameHeight /= 2;
  for (std::int32_t row = 0; row < 6; ++row) {
    // From some hundred points on, maps of the lines are used.
    const std::int64_t end = MakeRandomClips(random, row % 2 == 0 ? 20 : 600);
    for (std::int32_t column = 0; column < 8; ++column) {
      m_track.SetPerClip(column % 3 == 2);
      const Rect view{20 + column * 238, 15 + row * 178, 180 + column * 238, 165 + row * 178};
      m_track.MakeScene(view, end * column / 7 + 333, scene);
      m_track.Draw(scene, m_look, view, surface);
    }
  }
  vrx::test_support::ExpectReference(sheet, "gps-routes");
}

TEST_F(TrackViewTest, WholeMovieShowsAllClipsAndTheCurrentOneAloneShowsItself) {
  const auto build = [&](const KVUGPSInfoList& list, double start, double end) {
    m_track.BuildTrackSegment(list, kSquare, start, end, true);
    m_track.BuildTrackSegment(list, kSquare, start, end, false);
  };
  build({At(0, 0), At(100, 0), At(200, 0)}, 0, 10);
  build({At(0, 0, GPSPointBeforeFix)}, 10, 12);
  build({At(0, 0, GPSPointBeforeFix), At(300, 500), At(400, 500), At(400, 600)}, 12, 20);
  const Rect view{0, 0, 1000, 1000};
  TrackScene scene;
  m_track.MakeScene(view, 9000, scene);
  ASSERT_EQ(scene.stretches.size(), 3u);
  EXPECT_TRUE(scene.stretches[0].walk.GetAhead().empty());
  EXPECT_TRUE(scene.stretches[2].walk.GetPassed().empty());
  EXPECT_FALSE(scene.position);  // the first log ends at 2 s
  EXPECT_EQ(scene.ends->start, (Point{100, 100}));
  EXPECT_EQ(scene.ends->goal, (Point{500, 700}));
  // The way between runs from 3 s, after the last position, to the fix at 13 s.
  EXPECT_EQ(std::count_if(scene.stretches[2].dots.begin(), scene.stretches[2].dots.end(),
                          [](const TrackDot& dot) { return dot.isReached; }),
            static_cast<std::int64_t>(static_cast<double>(scene.stretches[2].dots.size()) * 0.6));
  m_track.MakeScene(view, 5999, scene);  // whole seconds, in the view of the whole movie
  EXPECT_EQ(scene.position, (Point{300, 100}));
  m_track.MakeScene(view, 13500, scene);
  EXPECT_EQ(scene.position, (Point{400, 600}));

  m_track.MakeScene({30, -10, 1030, 990}, 13500, scene);  // of the same size elsewhere
  EXPECT_EQ(scene.position, (Point{430, 590}));
  EXPECT_EQ(scene.stretches[2].walk.GetAhead().front(), (Point{430, 590}));

  m_track.SetPerClip(true);
  m_track.MakeScene(view, 14500, scene);
  ASSERT_EQ(scene.stretches.size(), 1u);
  EXPECT_EQ(scene.ends->start, (Point{400, 600}));
  m_track.MakeScene(view, 11000, scene);  // a clip without a line
  EXPECT_EQ(scene, TrackScene());
  m_track.MakeScene(view, 99000, scene);  // after all clips the last one stays
  EXPECT_EQ(scene.stretches.size(), 1u);
  m_track.MakeScene({5, 5, 5, 50}, 14500, scene);
  EXPECT_EQ(scene, TrackScene());
  m_track.ResetTrack();
  m_track.MakeScene(view, 14500, scene);
  EXPECT_EQ(scene, TrackScene());
}

TEST_F(TrackViewTest, TextOfAFlagGoesToTheLeftWhereTheRightHasNoRoom) {
  TrackScene scene;
  scene.ends = TrackScene::Ends{{200, 100}, {200, 300}};
  const auto red = [&](std::int32_t x, std::int32_t y) { return Pixel(x, y) >> 16 & 0xFF; };
  Draw(scene, {0, 0, 308, 400});  // 200 + 20 + 88, and 200 + 22 + 70
  EXPECT_NEAR(red(200, 100), 10, 6);
  EXPECT_NEAR(red(307, 139), 110, 6);  // from the middle of the marker down
  EXPECT_EQ(Pixel(307, 99), 0u);
  EXPECT_NEAR(red(291, 299), 160, 6);  // from the middle of the marker up
  EXPECT_EQ(Pixel(291, 300), 0u);
  Draw(scene, {0, 0, 307, 400});
  EXPECT_NEAR(red(92, 139), 110, 6);
  EXPECT_EQ(Pixel(221, 120), 0u);
  EXPECT_NEAR(red(291, 299), 160, 6);
  m_look.startMarker = m_look.goalText = m_look.positionMarker = PainterPicture();
  scene.position = Point{5, 5};
  Draw(scene, {0, 0, 307, 400});
  EXPECT_EQ(m_touched, (Rect{178, 285, 222, 315}));
}

TEST_F(TrackViewTest, AnyNumbersLeaveAScene) {
  const double infinite = std::numeric_limits<double>::infinity();
  const double numbers[] = {0,      1,        -1e300,    1e300,
                            5e-324, 1e9,      -1e9,      648000,
                            1e19,   infinite, -infinite, std::numeric_limits<double>::quiet_NaN()};
  constexpr std::int32_t kEdge = std::numeric_limits<std::int32_t>::max();
  const Rect views[] = {
      {0, 0, 1, kEdge}, {-kEdge, -kEdge, kEdge, kEdge}, {kEdge - 1, 3, kEdge, 9}, {0, 0, 320, 200}};
  std::mt19937 random(3);
  const auto number = [&] { return numbers[random() % std::size(numbers)]; };
  m_look.frameWidth = 320;
  m_look.frameHeight = 200;
  TrackScene scene;
  for (int round = 0; round < 1500; ++round) {
    m_track.ResetTrack();
    for (int clip = 0; clip < 3; ++clip) {
      KVUGPSInfoList list;
      for (int i = 0; i < 5; ++i) list.push_back(At(number(), number()));
      m_track.BuildTrackSegment(list, {number(), number(), number(), number()}, number(), number(),
                                round % 2);
    }
    m_track.SetPerClip(round % 2 == 0);
    const Rect& view = views[random() % std::size(views)];
    m_track.MakeScene(view, static_cast<std::int64_t>(random() % 9) - 4, scene);
    if (round % 20 < 2) Draw(scene, view);
    m_track.MakeScene(view, std::numeric_limits<std::int64_t>::max(), scene);
    EXPECT_LE(scene.stretches.size(), 3u);
  }
}

}  // namespace
