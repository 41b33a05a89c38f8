#include "host/TrackPlot.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <ranges>

#include "foundation/platform/Paths.h"
#include "foundation/text/XpFormat.h"
#include "foundation/time/SerialDate.h"
#include "gps/log/GpsTime.h"
#include "gps/track/GpsUnits.h"
#include "host/Console.h"
#include "host/PlotCanvas.h"

namespace vrx::host {
namespace {

using drawing::MakeColor;

constexpr drawing::ColorRef kGround = MakeColor(0xFF, 0xFF, 0xFF);
constexpr drawing::ColorRef kPanel = MakeColor(0xF4, 0xF5, 0xF7);
constexpr drawing::ColorRef kGapBand = MakeColor(0xE3, 0xE6, 0xEA);
constexpr drawing::ColorRef kHairline = MakeColor(0xDC, 0xDF, 0xE3);
constexpr drawing::ColorRef kText = MakeColor(0x1B, 0x20, 0x26);
constexpr drawing::ColorRef kQuietText = MakeColor(0x5F, 0x67, 0x70);
constexpr drawing::ColorRef kAccent = MakeColor(0xFF, 0x73, 0x00);
constexpr drawing::ColorRef kAccentLight = MakeColor(0xFF, 0xD9, 0xB8);
constexpr drawing::ColorRef kGapLine = MakeColor(0x8A, 0x92, 0x9B);
constexpr drawing::ColorRef kMovie = MakeColor(0x2F, 0x7B, 0xFF);

constexpr PlotRect kMap{40, 120, 1560, 640};
constexpr PlotRect kWay{84, 164, 1516, 570};  // of the map, clear of its scale bar and north arrow
constexpr PlotRect kSpeed{110, 700, 1560, 930};

template <class... Args>
XpString Formatted(const char16_t* format, const Args&... args) {
  XpString text;
  XpFormat(text, format, args...);
  return text;
}

bool IsFix(const KVUGPSInfo& point) { return point.kind == GPSPointLogged && point.status == 1; }

/// 1, 2 or 5 times a power of ten, at most `value`.
double NiceBelow(double value) {
  const double power = std::pow(10.0, std::floor(std::log10(value)));
  for (const double factor : {5.0, 2.0}) {
    if (factor * power <= value) return factor * power;
  }
  return power;
}

/// The way on the ground: meters to the east and south of the track's first fix, brought into the panel in
/// one scale for both directions.
class GroundMap {
 public:
  explicit GroundMap(const KVUGPSInfoList& track) {
    const auto first = std::find_if(track.begin(), track.end(), IsFix);
    if (first == track.end()) return;
    m_hasFix = true;
    m_latitude = first->latitude;
    m_longitude = first->longitude;
    m_parallel = std::cos(m_latitude / kArcSecondsPerDegree * std::numbers::pi / 180.0);
    double left = 0, right = 0, top = 0, bottom = 0;
    for (const KVUGPSInfo& point : track) {
      if (!IsFix(point)) continue;
      const PlotPoint meters = Meters(point);
      left = std::min(left, meters.x);
      right = std::max(right, meters.x);
      top = std::min(top, meters.y);
      bottom = std::max(bottom, meters.y);
    }
    constexpr double kLeastMeters = 20.0;  // a receiver at rest wanders by some meters
    m_scale = std::min(kWay.Width() / std::max(right - left, kLeastMeters),
                       kWay.Height() / std::max(bottom - top, kLeastMeters));
    m_middle = {(left + right) / 2.0, (top + bottom) / 2.0};
  }

  bool HasFix() const { return m_hasFix; }
  double PixelsPerMeter() const { return m_scale; }
  PlotPoint Place(const KVUGPSInfo& point) const {
    const PlotPoint meters = Meters(point);
    return {(kWay.left + kWay.right) / 2.0 + (meters.x - m_middle.x) * m_scale,
            (kWay.top + kWay.bottom) / 2.0 + (meters.y - m_middle.y) * m_scale};
  }

 private:
  PlotPoint Meters(const KVUGPSInfo& point) const {
    constexpr double kMetersPerArcSecond = 30.922;  // of a meridian, rounded
    constexpr double kTurn = 1296000.0;
    return {std::remainder(point.longitude - m_longitude, kTurn) * m_parallel * kMetersPerArcSecond,
            (m_latitude - point.latitude) * kMetersPerArcSecond};
  }

  bool m_hasFix = false;
  double m_latitude = 0.0;
  double m_longitude = 0.0;
  double m_parallel = 1.0;
  double m_scale = 1.0;
  PlotPoint m_middle;
};

void DrawScaleBar(PlotCanvas& canvas, double pixelsPerMeter) {
  constexpr double kMostPixels = 220.0;
  const double meters = NiceBelow(kMostPixels / pixelsPerMeter);
  const double length = meters * pixelsPerMeter;
  const double left = kMap.left + 24, y = kMap.bottom - 24;
  canvas.Line({left, y}, {left + length, y}, 2, kText);
  for (const double x : {left, left + length}) canvas.Line({x, y - 6}, {x, y + 6}, 2, kText);
  const XpString label = meters >= 1000.0 ? Formatted(u"%.0lf km", meters / 1000.0)
                         : meters >= 1.0  ? Formatted(u"%.0lf m", meters)
                                          : Formatted(u"%.2lf m", meters);
  canvas.Text({label, {left + length / 2, y - 18}, PlotAlign::Center, 18, false, kText});
}

void DrawNorth(PlotCanvas& canvas) {
  const double x = kMap.right - 32, y = kMap.top + 28;
  canvas.FillPolygon({{x, y - 14}, {x + 8, y + 10}, {x, y + 5}, {x - 8, y + 10}}, kQuietText);
  canvas.Text({u"N", {x, y + 24}, PlotAlign::Center, 16, true, kQuietText});
}

void DrawMark(PlotCanvas& canvas, PlotPoint at, bool filled) {
  canvas.Disc(at, 11, kGround);
  canvas.Disc(at, 9, kText);
  if (!filled) canvas.Disc(at, 5, kGround);
}

/// Beside the mark, on the side that the track does not leave it by, where there is room.
void DrawMarkLabel(PlotCanvas& canvas, PlotPoint at, PlotPoint alongTrack, const XpString& label) {
  constexpr double kRoom = 160.0;
  const bool toTheLeft = (alongTrack.x > at.x && at.x > kMap.left + kRoom) || at.x > kMap.right - kRoom;
  const PlotPoint place{at.x + (toTheLeft ? -18 : 18), at.y};
  const PlotAlign align = toTheLeft ? PlotAlign::Right : PlotAlign::Left;
  canvas.Text({label, place, align, 18, true, kText, kPanel});
}

/// The first place of the track that is not close to the mark; the mark itself when there is none.
template <class Places>
PlotPoint AwayFrom(PlotPoint mark, const Places& places) {
  constexpr double kClose = 40.0;
  const auto isAway = [mark](PlotPoint place) {
    return std::hypot(place.x - mark.x, place.y - mark.y) > kClose;
  };
  const auto found = std::ranges::find_if(places, isAway);
  return found == places.end() ? mark : *found;
}

void DrawStartAndEnd(PlotCanvas& canvas, const std::vector<PlotPoint>& fixes) {
  constexpr double kLabelHeight = 24.0;
  const PlotPoint start = fixes.front(), end = fixes.back();
  DrawMark(canvas, end, true);
  DrawMark(canvas, start, false);
  const PlotPoint afterStart = AwayFrom(start, fixes);
  if (std::abs(start.y - end.y) < kLabelHeight && std::abs(start.x - end.x) < 4 * kLabelHeight) {
    DrawMarkLabel(canvas, start, afterStart, u"start and end");
    return;
  }
  DrawMarkLabel(canvas, start, afterStart, u"start");
  DrawMarkLabel(canvas, end, AwayFrom(end, fixes | std::views::reverse), u"end");
}

void DrawMap(PlotCanvas& canvas, const KVUGPSInfoList& track) {
  canvas.Fill(kMap, kPanel);
  const GroundMap map(track);
  if (!map.HasFix()) {
    canvas.Text({u"no position",
                 {(kMap.left + kMap.right) / 2, (kMap.top + kMap.bottom) / 2},
                 PlotAlign::Center,
                 24,
                 false,
                 kQuietText});
    return;
  }
  std::vector<std::vector<PlotPoint>> pieces;
  std::vector<PlotPoint> fixes;
  const KVUGPSInfo* previous = nullptr;
  for (const KVUGPSInfo& point : track) {
    if (!IsFix(point)) continue;
    const PlotPoint place = map.Place(point);
    const bool joins = previous != nullptr && previous + 1 == &point;
    if (!joins) {
      if (previous != nullptr) canvas.Dashes(fixes.back(), place, 2.5, 8, kGapLine);
      pieces.emplace_back();
    }
    pieces.back().push_back(place);
    fixes.push_back(place);
    previous = &point;
  }
  for (const auto& piece : pieces) {
    canvas.Polyline(piece, 4.5, kAccent);
    if (piece.size() == 1) canvas.Disc(piece[0], 2.5, kAccent);
  }
  DrawStartAndEnd(canvas, fixes);
  DrawScaleBar(canvas, map.PixelsPerMeter());
  DrawNorth(canvas);
}

/// Where the speed over time lies in its panel.
struct SpeedAxes {
  double seconds;  // of the whole width
  double top;      // kilometers an hour at the panel's top

  double X(double second) const { return kSpeed.left + second / seconds * kSpeed.Width(); }
  double Y(double speed) const { return kSpeed.bottom - speed / top * kSpeed.Height(); }
};

void DrawSpeedScale(PlotCanvas& canvas, const SpeedAxes& axes, double step) {
  for (int i = 0; i * step <= axes.top * 1.0001; ++i) {
    const double y = axes.Y(i * step);
    canvas.Line({kSpeed.left, y}, {kSpeed.right, y}, 1, kHairline);
    canvas.Text({Formatted(step < 1.0 ? u"%.1lf" : u"%.0lf", i * step),
                 {kSpeed.left - 12, y},
                 PlotAlign::Right,
                 16,
                 false,
                 kQuietText});
  }
  canvas.Text({u"km/h", {kMap.left, kSpeed.top - 22}, PlotAlign::Left, 16, false, kQuietText});
}

void DrawTimeScale(PlotCanvas& canvas, const SpeedAxes& axes, std::int64_t startSecond) {
  constexpr std::int64_t kSteps[] = {1,   2,   5,    10,   15,   30,    60,    120,   300,
                                     600, 900, 1800, 3600, 7200, 10800, 21600, 43200, 86400};
  constexpr double kMostTicks = 12.0;
  const auto* step = std::find_if(std::begin(kSteps), std::end(kSteps) - 1, [&](std::int64_t seconds) {
    return axes.seconds / static_cast<double>(seconds) <= kMostTicks;
  });
  const std::int64_t first = (startSecond + *step - 1) / *step * *step;
  for (std::int64_t tick = first; tick - startSecond <= static_cast<std::int64_t>(axes.seconds);
       tick += *step) {
    const double x = axes.X(static_cast<double>(tick - startSecond));
    canvas.Line({x, kSpeed.bottom}, {x, kSpeed.bottom + 6}, 1.5, kQuietText);
    const int ofDay = static_cast<int>(tick % serialdate::kSecondsPerDay);
    const XpString label = *step < 60
                               ? Formatted(u"%02d:%02d:%02d", ofDay / 3600, ofDay / 60 % 60, ofDay % 60)
                               : Formatted(u"%02d:%02d", ofDay / 3600, ofDay / 60 % 60);
    canvas.Text({label, {x, kSpeed.bottom + 22}, PlotAlign::Center, 16, false, kQuietText});
  }
  canvas.Text({u"UTC", {kSpeed.right, kSpeed.bottom + 46}, PlotAlign::Right, 16, false, kQuietText});
}

/// An end of the movie's bar: a stroke, or an arrow where the movie goes on beyond the log.
void DrawMovieEnd(PlotCanvas& canvas, PlotPoint end, double outwards, bool goesOn) {
  if (!goesOn) {
    canvas.Line({end.x, end.y - 6}, {end.x, end.y + 6}, 3, kMovie);
    return;
  }
  canvas.FillPolygon({{end.x + outwards * 12, end.y}, {end.x, end.y - 7}, {end.x, end.y + 7}}, kMovie);
}

/// "movie, begins 2:35 before the log".
std::string MovieLabel(const std::pair<double, double>& movie, double logSeconds) {
  std::string label = "movie";
  if (movie.first < 0.0) label += ", begins " + ClockText(-movie.first) + " before the log";
  if (movie.second > logSeconds) label += ", ends " + ClockText(movie.second - logSeconds) + " after the log";
  return label;
}

void DrawMovieSpan(PlotCanvas& canvas, const SpeedAxes& axes, const std::pair<double, double>& movie) {
  const double from = std::max(movie.first, 0.0), to = std::min(movie.second, axes.seconds);
  const double y = kSpeed.top - 10;
  if (from >= to) {
    canvas.Text(
        {u"the movie lies outside this log", {kSpeed.right, y - 12}, PlotAlign::Right, 16, true, kMovie});
    return;
  }
  const double left = axes.X(from), right = axes.X(to), middle = (left + right) / 2;
  canvas.Line({left, y}, {right, y}, 4, kMovie);
  DrawMovieEnd(canvas, {left, y}, -1.0, movie.first < 0.0);
  DrawMovieEnd(canvas, {right, y}, 1.0, movie.second > axes.seconds);
  // A long label of a short bar stays within the picture.
  constexpr double kHalfLabel = 300.0;
  const bool isLeft = middle<kSpeed.left + kHalfLabel, isRight = middle> kSpeed.right - kHalfLabel;
  const PlotAlign align = isLeft ? PlotAlign::Left : isRight ? PlotAlign::Right : PlotAlign::Center;
  const XpString label = platform::PathFromNative(MovieLabel(movie, axes.seconds));
  canvas.Text({label, {isLeft ? left : isRight ? right : middle, y - 18}, align, 16, true, kMovie});
}

void DrawSpeedPiece(PlotCanvas& canvas, const SpeedAxes& axes, const std::vector<PlotPoint>& piece) {
  if (piece.empty()) return;
  std::vector<PlotPoint> area = piece;
  area.push_back({piece.back().x, axes.Y(0)});
  area.push_back({piece.front().x, axes.Y(0)});
  canvas.FillPolygon(area, kAccentLight);
}

void DrawSpeed(PlotCanvas& canvas, const KVUGPSInfoList& track, const TrackPlotLabels& labels) {
  const auto kilometersPerHour = [](const KVUGPSInfo& point) {
    return gps::SpeedInUnit(std::max(point.speed, 0.0), gps::kGpsUnitKilometers);
  };
  double greatest = 1.0;
  for (const KVUGPSInfo& point : track) greatest = std::max(greatest, kilometersPerHour(point));
  const double step = NiceBelow(greatest / 2.0);
  const SpeedAxes axes{std::max(static_cast<double>(track.size()) - 1.0, 1.0),
                       std::ceil(greatest / step) * step};
  canvas.Fill(kSpeed, kPanel);
  std::vector<std::vector<PlotPoint>> pieces;
  bool isOpen = false;
  for (std::size_t i = 0; i < track.size(); ++i) {
    const auto second = static_cast<double>(i);
    const bool hasSpeed = IsFix(track[i]) && track[i].speed >= 0.0;
    if (!hasSpeed) {
      canvas.Fill({axes.X(std::max(second - 1, 0.0)), kSpeed.top, axes.X(std::min(second + 1, axes.seconds)),
                   kSpeed.bottom},
                  kGapBand);
    } else {
      if (!isOpen) pieces.emplace_back();
      pieces.back().push_back({axes.X(second), axes.Y(kilometersPerHour(track[i]))});
    }
    isOpen = hasSpeed;
  }
  for (const auto& piece : pieces) DrawSpeedPiece(canvas, axes, piece);
  DrawSpeedScale(canvas, axes, step);
  for (const auto& piece : pieces) {
    canvas.Polyline(piece, 2.5, kAccent);
    if (piece.size() == 1) canvas.Disc(piece[0], 2.5, kAccent);
  }
  if (!track.empty() && pieces.empty()) {
    canvas.Text({u"no speed",
                 {(kSpeed.left + kSpeed.right) / 2, (kSpeed.top + kSpeed.bottom) / 2},
                 PlotAlign::Center,
                 20,
                 false,
                 kQuietText});
  }
  if (!track.empty()) DrawTimeScale(canvas, axes, gps::WholeSeconds(track.front().time));
  if (labels.movie) DrawMovieSpan(canvas, axes, *labels.movie);
}

}  // namespace

std::vector<std::uint32_t> PlotTrack(const KVUGPSInfoList& track, const TrackPlotLabels& labels) {
  PlotCanvas canvas(kPlotWidth, kPlotHeight, kGround);
  canvas.Text({labels.title, {kMap.left, 46}, PlotAlign::Left, 30, true, kText, {}, kMap.Width()});
  canvas.Text({labels.facts, {kMap.left, 90}, PlotAlign::Left, 20, false, kQuietText});
  DrawMap(canvas, track);
  DrawSpeed(canvas, track, labels);
  return canvas.Finish();
}

}  // namespace vrx::host
