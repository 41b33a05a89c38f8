// The track view: how a route is thinned, laid out and split at a moment, what a frame shows of it, and how
// it is drawn.
#include <limits>
#include <random>

#include <gmock/gmock.h>

#include "drawing/BoxTextRenderer.h"
#include "gps/trackview/KVSGPSTrack.h"
#include "gps/trackview/TrackLayout.h"
#include "imaging/pixmap/XpPixmapBlock.h"
#include "tests/drawing/PrintGeometry.h"
#include "tests/gps/PlainTrack.h"

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

/// A segment in a view of 1000 pixels a side, whose points are canvas units.
TrackSegment Shown(std::vector<TrackPoint> points, std::uint32_t beforeFix = 0, Point origin = {}) {
  TrackSegment segment;
  segment.points = std::move(points);
  segment.beforeFixCount = beforeFix;
  LayoutSegment({1000, 1000}, segment);
  RoundCorners(segment);
  MakeLine(origin, segment);
  return segment;
}

std::vector<Point> Walked(const TrackWalk& walk) {
  std::vector<Point> points(walk.GetPassed().begin(), walk.GetPassed().end());
  if (walk.present) points.push_back(*walk.present);
  return points;
}
std::vector<Point> Ahead(const TrackWalk& walk) { return {walk.GetAhead().begin(), walk.GetAhead().end()}; }

PlainScene Plain(const TrackScene& scene) {
  PlainScene plain{{}, scene.ends, scene.position};
  for (const auto& [walk, dots] : scene.stretches)
    plain.stretches.push_back({Walked(walk), Ahead(walk), walk.isJoined, dots});
  return plain;
}

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

TEST(TrackLayoutTest, CornersAreRoundedWhereTheirLegsAreLongEnough) {
  const auto corner = [](TrackPoint a, TrackPoint b, TrackPoint c) { return Shown({a, b, c}).display[1]; };
  const TrackDisplayPoint right = corner({0, 0}, {100, 0}, {100, 100});
  ASSERT_TRUE(right.hasArc);
  EXPECT_EQ(right.arcStart.x, 85);
  EXPECT_EQ(right.arcStart.y, 0);
  EXPECT_EQ(right.arcEnd.x, 100);
  EXPECT_EQ(right.arcEnd.y, 15);
  EXPECT_NEAR(right.arcMid.x, 85 + 15 / std::sqrt(2.0), 1e-9);
  EXPECT_NEAR(right.arcMid.y, 15 - 15 / std::sqrt(2.0), 1e-9);
  EXPECT_EQ(corner({0, 0}, {100, 0}, {100, 20}).arcStart.x, 90);
  EXPECT_TRUE(corner({0, 0}, {100, 0}, {100, 5}).hasArc);
  EXPECT_FALSE(corner({0, 0}, {100, 0}, {100, 4}).hasArc);
  EXPECT_FALSE(corner({0, 0}, {50, 50}, {100, 100}).hasArc);
  EXPECT_FALSE(corner({0, 0}, {100, 0}, {20, 0}).hasArc);
  EXPECT_FALSE(corner({0, 0}, {100, 0}, {100, 0}).hasArc);
  TrackSegment segment = Shown({{500, 300, 7}});
  LayoutSegment({333, 11}, segment);
  ASSERT_EQ(segment.display.size(), 1u);
  EXPECT_EQ(segment.display[0].x, 166);
  EXPECT_EQ(segment.display[0].y, 3);
  EXPECT_EQ(segment.display[0].index, 7u);
}

TEST(TrackWalkTest, LineIsSplitWhereTheTimeIs) {
  // Straight to a corner at 20 s, then down, and on in line at 40 s. The arc begins 15 pixels before the
  // corner; its middle is (295, 4), and the second leg is 100 pixels of 11.48 + 11.48 + 85 on the way.
  const TrackSegment segment =
      Shown({{100, 0, 0}, {200, 0, 10}, {300, 0, 20}, {300, 100, 40}, {300, 200, 50}}, 5);
  const struct {
    double seconds;
    std::vector<Point> walked, ahead;
  } cases[] = {
      {0, {}, {{100, 0}, {200, 0}, {285, 0}, {295, 4}, {300, 15}, {300, 100}, {300, 200}}},
      {5.9, {}, {{100, 0}, {200, 0}, {285, 0}, {295, 4}, {300, 15}, {300, 100}, {300, 200}}},
      {14.9, {{100, 0}}, {{200, 0}, {285, 0}, {295, 4}, {300, 15}, {300, 100}, {300, 200}}},
      {15, {{100, 0}, {200, 0}, {200, 0}}, {{285, 0}, {295, 4}, {300, 15}, {300, 100}, {300, 200}}},
      {20, {{100, 0}, {200, 0}, {242, 0}}, {{285, 0}, {295, 4}, {300, 15}, {300, 100}, {300, 200}}},
      {25, {{100, 0}, {200, 0}, {285, 0}, {285, 0}}, {{295, 4}, {300, 15}, {300, 100}, {300, 200}}},
      {26, {{100, 0}, {200, 0}, {285, 0}, {289, 2}}, {{295, 4}, {300, 15}, {300, 100}, {300, 200}}},
      {29, {{100, 0}, {200, 0}, {285, 0}, {295, 4}, {298, 13}}, {{300, 15}, {300, 100}, {300, 200}}},
      {40, {{100, 0}, {200, 0}, {285, 0}, {295, 4}, {300, 15}, {300, 73}}, {{300, 100}, {300, 200}}},
      {46, {{100, 0}, {200, 0}, {285, 0}, {295, 4}, {300, 15}, {300, 100}, {300, 110}}, {{300, 200}}},
      {99, {{100, 0}, {200, 0}, {285, 0}, {295, 4}, {300, 15}, {300, 100}, {300, 200}}, {}},
  };
  for (const auto& expected : cases) {
    SCOPED_TRACE(expected.seconds);
    const TrackWalk walk = WalkSegment(segment, {}, expected.seconds);
    EXPECT_EQ(Walked(walk), expected.walked);
    EXPECT_EQ(Ahead(walk), expected.ahead);
    EXPECT_EQ(walk.isJoined, !expected.walked.empty() && !expected.ahead.empty());
    EXPECT_EQ(walk.GetPosition(), expected.walked.empty() ? expected.ahead.front() : expected.walked.back());
  }
  const Point origin{1000, -50};
  EXPECT_EQ(WalkSegment(Shown(segment.points, 5, origin), origin, 40).GetPosition(), (Point{1300, 23}));
  EXPECT_FALSE(WalkSegment(TrackSegment(), {}, 3).GetPosition());
  // The marker stays for three seconds after the last position.
  for (const auto& [seconds, known] : {std::pair{4.999, false}, {5.0, true}, {58.0, true}, {58.001, false}})
    EXPECT_EQ(IsPositionKnown(segment, seconds), known) << seconds;
  EXPECT_FALSE(IsPositionKnown(TrackSegment(), 0));
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

TEST(TrackDotsTest, DotsFillUpWithTime) {
  TrackDisplayPoint from, to;
  from.x = 10;
  to.x = 110;
  // 100 pixels hold 7 dots of 10 and 6 gaps of 4: 6 are left, and the first dot lies 5 from the start.
  const Rect view{1000, 500, 1380, 900};
  const auto reached = [&](const TrackGap& gap) {
    std::vector<TrackDot> dots;
    MakeGapDots(from, to, view, gap, dots);
    EXPECT_EQ(dots.size(), 7u);
    EXPECT_EQ(dots[0].shadow, (Rect{1009, 494, 1021, 506}));
    EXPECT_EQ(dots[0].dot, (Rect{1011, 496, 1019, 504}));
    EXPECT_EQ(dots[6].dot, (Rect{1095, 496, 1103, 504}));
    return std::count_if(dots.begin(), dots.end(), [](const TrackDot& dot) { return dot.isReached; });
  };
  EXPECT_EQ(reached({19, 20, 30}), 0);
  EXPECT_EQ(reached({25, 20, 30}), 3);
  EXPECT_EQ(reached({29.9, 20, 30}), 6);
  EXPECT_EQ(reached({30, 20, 30}), 7);
  EXPECT_EQ(reached({29.99, 30, 30}), 0);  // a gap without time turns at once
  EXPECT_EQ(reached({30, 30, 30}), 7);
  std::vector<TrackDot> dots;
  to.x = 23;  // less than a dot and its space
  MakeGapDots(from, to, view, {}, dots);
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
  /// Some clips that begin or end anywhere in a route, join or not, and lack a fix here and there.
  void MakeRandomClips(std::mt19937& random) {
    const auto below = [&](int limit) { return static_cast<int>(random() % static_cast<unsigned>(limit)); };
    m_clips.clear();
    m_track.ResetTrack();
    const double sizes[] = {0.01, 1, 5, 60};
    const double size = sizes[below(4)];
    double x = 0, y = 0, start = 0;
    KVUGPSInfoList all;
    for (int left = below(5); left > 0; --left) {
      PlainClip clip;
      if (below(3) == 0) clip.list.assign(static_cast<std::size_t>(below(6)), At(0, 0, GPSPointBeforeFix));
      for (int count = below(3) == 0 ? below(4) : below(m_longest); count > 0; --count) {
        if (below(4) != 0) x += below(5) * size - 2 * size;
        if (below(4) != 0) y += below(5) * size - 2 * size;
        clip.list.push_back(At(x, y, below(9) == 0 ? GPSPointHeld : GPSPointLogged));
      }
      if (below(3) == 0) clip.list.resize(clip.list.size() + 3, At(0, 0, GPSPointAfterFix));
      if (below(2) == 0) x += 30 * size, y -= 3 * size;
      clip.start = start;
      start += std::max(0.0, static_cast<double>(clip.list.size()) - 1.5 + below(5) * 0.5);
      clip.end = start;
      all.insert(all.end(), clip.list.begin(), clip.list.end());
      m_clips.push_back(clip);
    }
    KVSGPSBounds whole;
    TrackBounds(all, 0, whole);
    for (PlainClip& clip : m_clips) {
      clip.bounds = whole;
      m_track.BuildTrackSegment(clip.list, whole, clip.start, clip.end, true);
      KVSGPSBounds own;
      TrackBounds(clip.list, 0, own);
      m_track.BuildTrackSegment(clip.list, own, clip.start, clip.end, false);
    }
    m_end = start;
  }
  std::vector<PlainClip> OwnBounds() const {
    std::vector<PlainClip> clips = m_clips;
    for (PlainClip& clip : clips) {
      clip.bounds = {};
      TrackBounds(clip.list, 0, clip.bounds);
      clip.keepLast = false;
    }
    return clips;
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
  std::vector<PlainClip> m_clips;
  double m_end = 0;    // seconds
  int m_longest = 60;  // clip, in positions
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

TEST_F(TrackViewTest, EveryMomentOfAnyRouteIsThePlainOne) {
  std::mt19937 random(5);
  const Rect views[] = {{1440, 560, 1794, 960}, {1550, 70, 1890, 410}, {0, 0, 1920, 1080},
                        {-40, -30, 60, 60},     {960, 373, 1196, 640}, {5, 5, 6, 6}};
  TrackScene scene;
  for (int route = 0; route < 400; ++route) {
    MakeRandomClips(random);
    const Rect view = views[random() % std::size(views)];
    const PlainTrack whole(m_clips, view), own(OwnBounds(), view);
    for (int moment = 0; moment < 30; ++moment) {
      auto ms = static_cast<std::int64_t>(random() % static_cast<unsigned>((m_end + 8) * 1000)) - 2000;
      if (moment % 3 == 0) ms = ms / 500 * 500;
      SCOPED_TRACE(testing::Message() << "route " << route << " at " << ms);
      m_track.SetPerClip(false);
      m_track.MakeScene(view, ms, scene);
      ASSERT_EQ(Plain(scene), whole.Whole(static_cast<double>(ms)));
      m_track.SetPerClip(true);
      m_track.MakeScene(view, ms, scene);
      ASSERT_EQ(Plain(scene), own.PerClip(static_cast<double>(ms)));
    }
  }
}

TEST_F(TrackViewTest, PictureIsThePlainOneAndItsAreaIsReported) {
  std::mt19937 random(11);
  TrackScene scene;
  XpPixmap32 plain;
  for (int route = 0; route < 16; ++route) {
    m_longest = route < 4 ? 60 : 600;  // from some hundred points on, maps of the lines are used
    MakeRandomClips(random);
    m_look.frameWidth = route % 2 == 0 ? 640 : 491;
    m_look.frameHeight = route % 2 == 0 ? 360 : 303;
    const Rect view = route % 4 == 3 ? Rect{-60, -50, 300, 200} : Rect{100, 20, 480, 290};
    for (int moment = 0; moment < 5; ++moment) {
      m_look.shadowWidth = moment % 2 == 0 ? 10 : 3;
      m_look.aheadWidth = moment % 3 == 0 ? 6 : 1;
      m_look.walkedWidth = moment < 3 ? 6 : 1;
      m_track.MakeScene(view, static_cast<std::int64_t>(random() % static_cast<unsigned>((m_end + 4) * 1000)),
                        scene);
      Draw(scene, view);
      ASSERT_EQ(plain.Allocate(m_look.frameWidth, m_look.frameHeight), XpOk);
      PlainTrack::Draw(Plain(scene), m_look, view, plain);
      for (std::int32_t y = 0; y < plain.height; ++y) {
        for (std::int32_t x = 0; x < plain.width; ++x) {
          const std::uint32_t pixel = Pixel(x, y);
          ASSERT_EQ(std::memcmp(&pixel, plain.GetPlane(0)->Row(y) + std::ptrdiff_t{x} * 4, 4), 0)
              << route << " at " << x << ", " << y;
          const bool isTouched =
              x >= m_touched.left && x < m_touched.right && y >= m_touched.top && y < m_touched.bottom;
          ASSERT_TRUE(isTouched || pixel == 0) << route << " at " << x << ", " << y;
        }
      }
    }
  }
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
  EXPECT_TRUE(Ahead(scene.stretches[0].walk).empty());
  EXPECT_TRUE(Walked(scene.stretches[2].walk).empty());
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
  EXPECT_EQ(Ahead(scene.stretches[2].walk).front(), (Point{430, 590}));

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

TEST_F(TrackViewTest, ShadowIsTranslucentAndLinesOfAllClipsLieAboveAllShadows) {
  TrackScene scene;
  scene.stretches.resize(2);
  scene.stretches[0].walk.line.reset(new TrackLine{{100, 100}, {200, 100}});
  scene.stretches[1].walk.line.reset(new TrackLine{{100, 107}, {200, 107}});
  scene.stretches[1].walk.passed = 2;
  Draw(scene, {0, 0, 400, 400});
  EXPECT_EQ(Pixel(150, 100), 0xFFFEFEFE);
  EXPECT_EQ(Pixel(150, 102), 0xFFFEFEFE);  // the second clip's shadow begins here
  EXPECT_EQ(Pixel(150, 95), 0x66333333u);
  EXPECT_EQ(Pixel(150, 107), 0xFFFF7300);
  EXPECT_EQ(Pixel(150, 111), 0x66333333u);
  EXPECT_EQ(Pixel(150, 120), 0u);
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
